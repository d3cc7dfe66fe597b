// The matcher, searches and what they tell, and the test of existence.
#include <gtest/gtest.h>
#include <set>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include "support/digest.h"
#include "support/last_error.h"
#include "support/library.h"
#include "support/random_text.h"
#include "wexelxi.h"

namespace {

TEST(CheckFilter, TakesTheFirstPlaceThatServes)
{
    EXPECT_OUTCOME(CheckFilter("*.*", "noext", 1), 1, kUnchanged);
    EXPECT_OUTCOME(CheckFilter("*.txt", "a.b.txt", 1), 0, kUnchanged); // stops at the first dot
    EXPECT_OUTCOME(CheckFilter("a*", "a", 1), 0, kUnchanged);
    EXPECT_OUTCOME(CheckFilter("*?", "ab", 1), 0, kUnchanged); // literal behind a star
    EXPECT_OUTCOME(CheckFilter("*.TXT", "a.txt", 0), 1, kUnchanged);
    const std::string longList = std::string(100000, ',') + "*.h";
    EXPECT_OUTCOME(CheckMultiFilter(longList.c_str(), "x.h", ',', 1), 1, kUnchanged);
}

TEST(CheckFilter, AnswersASweepAsJudged)
{
    std::mt19937 random(33);
    Digest digest;
    for (int i = 0; i < 30000; i++) {
        const std::string list = RandomText(random, ";|;|*|*|?|?|.|a|A|b|*.*|\xE9|\xC9", 9);
        const std::string name = RandomText(random, ".|.|a|A|b|B|*|?|;|\xE9|\xC9", 9);
        for (const uint32_t exact : {0, 1})
            digest.Add(CheckFilter(list.c_str(), name.c_str(), exact),
                       CheckMultiFilter(list.c_str(), name.c_str(), ';', exact));
    }
    EXPECT_EQ(digest.hex(), "688e2f9a4b4ebfe4");
}

// The names that a search finds, sorted, each with a blank behind it.
std::string Search(const std::string &pattern)
{
    std::multiset<std::string> names;
    WIN32_FIND_DATA data;
    HANDLE find = FindFirstFile(pattern.c_str(), &data);
    const bool found = find != INVALID_HANDLE_VALUE;
    EXPECT_OUTCOME(DoesFileExist(pattern.c_str()), found,
                   found ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND);
    for (BOOL more = found; more; more = FindNextFile(find, &data))
        names.insert(std::string(data.cFileName) + ' ');
    if (found) {
        EXPECT_OUTCOME(FindNextFile(find, &data), FALSE, ERROR_SUCCESS); // the end, again
    }
    EXPECT_OUTCOME(FindClose(find), found, found ? ERROR_SUCCESS : ERROR_GEN_FAILURE);
    std::string all;
    for (const std::string &name : names)
        all += name;
    return all;
}

struct Find : testing::Test {
    Find()
    {
        for (const char *name : {"a.txt", "b.txt", "README", ".a", ".ab", "x*y", "\xE9\xFF"})
            WriteWholeFile(folder.file(name), "12345");
        EXPECT_EQ(mkdir(folder.file("sub").c_str(), 0777), 0);
        EXPECT_EQ(symlink("no", folder.file("link").c_str()), 0);
        EXPECT_EQ(chdir(folder.path().c_str()), 0);
    }

    const ScratchFolder folder;
    WIN32_FIND_DATA data;
};

TEST_F(Find, FindsByPatternAndByPlainName)
{
    const char *const all = ".ab README a.txt b.txt link sub x*y \xE9\xFF ";
    const struct {
        const char *pattern, *exact, *folded;
    } rows[] = {
        {"*", all, all},
        {"*.*", all, all},
        {"?.TXT", "", "a.txt b.txt "},
        {"readme", "", "README "},
        {".ab", ".ab ", ".ab "},
        {".a", "", ""}, // hidden, as every such name of two characters
        {"x*y", "x*y ", "x*y "},
        {"link", "link ", "link "},
        {"a.txt/", "", ""},
        {"a.txt/b", "", ""},
        {"\xE9\xFF", "\xE9\xFF ", "\xE9\xFF "},
        {"s*/x", "", ""},
        {"sub/.", ". .. ", ". .. "}, // a folder is listed
    };
    const size_t descriptors = OpenDescriptors();
    for (const auto &row : rows) {
        for (const std::string &there : {std::string(), folder.path() + "/"}) {
            gFileMode = 0;
            EXPECT_EQ(Search(there + row.pattern), row.exact) << row.pattern;
            gFileMode = 1;
            EXPECT_EQ(Search(there + row.pattern), row.folded) << row.pattern;
        }
    }
    EXPECT_EQ(Search("/us?"), "usr ");
    EXPECT_EQ(gFINDFILE, 0);
    EXPECT_EQ(OpenDescriptors(), descriptors);
}

TEST_F(Find, DescribesWhatItFinds)
{
    WriteWholeFile("big", "");
    ASSERT_EQ(truncate("big", 4294967301), 0);
    chmod("big", 0444);
    const timeval times[] = {{1000000000, 999999}, {3000000000, 1}};
    utimes("big", times);
    struct stat status = {};
    stat("big", &status);
    const struct {
        const char *pattern;
        uint32_t error, attributes;
    } rows[] = {
        {"big", ERROR_SUCCESS, FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_READONLY},
        {"lin*", ERROR_GEN_FAILURE, 0}, // what cannot be examined keeps the rest
        {"link", ERROR_GEN_FAILURE, 0},
    };
    HANDLE find = nullptr;
    memset(&data, 0x55, sizeof data);
    for (const auto &row : rows) {
        EXPECT_LAST_ERROR(find = FindFirstFile(row.pattern, &data), row.error) << row.pattern;
        EXPECT_EQ(gFINDFILE, 1);
        EXPECT_EQ(data.dwFileAttributes, row.attributes) << row.pattern;
        EXPECT_TRUE(FindClose(find));
    }
    EXPECT_EQ(data.nFileSizeHigh, 1u);
    EXPECT_EQ(data.nFileSizeLow, 5u);
    EXPECT_EQ(data.dwReserved0, 0u);
    EXPECT_EQ(data.dwReserved1, 0u);
    EXPECT_EQ(std::string(data.cAlternateFileName, 2), std::string("\0\x55", 2));
    uint64_t ticks[3];
    memcpy(ticks, &data.ftCreationTime, sizeof ticks);
    EXPECT_EQ(ticks[0], static_cast<uint64_t>(status.st_ctime) * 10000000 + 116444736000000000);
    EXPECT_EQ(ticks[1], 1000000000 * uint64_t{10000000} + 116444736000000000);
    EXPECT_EQ(ticks[2], 3000000000 * uint64_t{10000000} + 116444736000000000);

    // A listing describes the directory itself, and goes on when that is removed.
    EXPECT_LAST_ERROR(find = FindFirstFile("sub", &data), ERROR_SUCCESS);
    EXPECT_EQ(data.dwFileAttributes, FILE_ATTRIBUTE_DIRECTORY);
    EXPECT_EQ(data.nFileSizeHigh, 0u);
    EXPECT_EQ(data.nFileSizeLow, 0u);
    rmdir("sub");
    EXPECT_OUTCOME(FindNextFile(find, &data), TRUE, ERROR_GEN_FAILURE);
    EXPECT_EQ(data.dwFileAttributes, 0u);
    EXPECT_TRUE(FindClose(find));
}

TEST_F(Find, SeesWhatMayBeListed)
{
    mkdir("closed", 0777);
    WriteWholeFile("closed/f", "");
    chmod(".", 0777);
    for (const mode_t mode : {0444, 0333}) {
        chmod("closed", mode);
        ASSERT_EQ(seteuid(geteuid() == 0 ? 65534 : geteuid()), 0);
        for (const char *name : {"closed/f", "closed/?"})
            EXPECT_EQ(Search(name), mode == 0444 ? "f " : "");
        seteuid(getuid());
    }
    chmod("closed", 0777);
}

TEST_F(Find, LeavesNothingBehind)
{
    const size_t descriptors = OpenDescriptors();
    const auto searchAll = [this] {
        for (const char *pattern : {"*.txt", "none", "sub", "README", "no/x", "/us?"})
            FindClose(FindFirstFile(pattern, &data));
        return HeapBytes();
    };
    const size_t bytes = searchAll();
    EXPECT_EQ(searchAll(), bytes);
    EXPECT_EQ(OpenDescriptors(), descriptors);
    for (HANDLE bad : {HANDLE{nullptr}, INVALID_HANDLE_VALUE}) {
        EXPECT_OUTCOME(FindNextFile(bad, &data), FALSE, ERROR_FILE_NOT_FOUND);
        EXPECT_OUTCOME(FindClose(bad), FALSE, ERROR_GEN_FAILURE);
    }
    EXPECT_OUTCOME(FindFirstFile(nullptr, &data), INVALID_HANDLE_VALUE, ERROR_FILE_NOT_FOUND);
    EXPECT_OUTCOME(DoesFileExist(nullptr), FALSE, ERROR_FILE_NOT_FOUND);
    // A search that is ended by hand finds nothing more, and its record is the caller's.
    HANDLE find = FindFirstFile("*", &data);
    EXPECT_LAST_ERROR(freeFILfindData(static_cast<FILfindData *>(find)), kUnchanged);
    EXPECT_EQ(gFINDFILE, 0);
    EXPECT_EQ(OpenDescriptors(), descriptors);
    EXPECT_OUTCOME(FindNextFile(find, &data), FALSE, ERROR_SUCCESS);
    GlobalFree(find);
}

} // namespace
