// The matcher against a slow twin, searches and what they tell, and the test of existence.
#include <cctype>
#include <gtest/gtest.h>
#include <numeric>
#include <random>
#include <set>
#include <string>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include "support/last_error.h"
#include "support/library.h"
#include "wexelxi.h"

namespace {

// The twin: one rule a step, on terminated strings.
bool SlowMatch(const char *pattern, const char *name, bool exact)
{
    const auto same = [&](char a, char b) {
        return exact ? a == b
                     : toupper(static_cast<signed char>(a)) == toupper(static_cast<signed char>(b));
    };
    if (!*name)
        return !*pattern;
    if (*pattern == '*') {
        while (*pattern == '*')
            pattern++;
        if (!*pattern)
            return true;
        while (*name && !same(*name, *pattern))
            name++;
        return *name && SlowMatch(pattern + 1, name + 1, exact);
    }
    return *pattern && (*pattern == '?' || same(*pattern, *name)) &&
           SlowMatch(pattern + 1, name + 1, exact);
}

std::string RandomText(std::mt19937 &random, const char *letters, size_t longest)
{
    std::string text(random() % (longest + 1), ' ');
    for (char &c : text)
        c = letters[random() % strlen(letters)];
    return text;
}

TEST(Wildcard, AgreesWithItsTwin)
{
    std::mt19937 random(33);
    for (int i = 0; i < 300000; i++) {
        const std::string list = RandomText(random, ";;**??.aAbB\xE9\xC9", 9);
        const std::string name = RandomText(random, "..aaAbB*?;\xE9\xC9", 9);
        for (const bool exact : {true, false}) {
            bool any = false;
            for (size_t at = 0; at < list.size();) {
                const std::string piece = list.substr(at, list.find(';', at) - at);
                const bool matches =
                    piece == "*.*" || SlowMatch(piece.c_str(), name.c_str(), exact);
                ASSERT_EQ(CheckFilter(piece.c_str(), name.c_str(), exact), matches)
                    << piece << " on " << name;
                any = any || (matches && !piece.empty());
                at += piece.size() + 1;
            }
            ASSERT_EQ(CheckMultiFilter(list.c_str(), name.c_str(), ';', exact), any) << list;
        }
    }
    EXPECT_EQ(CheckMultiFilter((std::string(100000, ';') + "*.h").c_str(), "x.h", ';', 1), 1);
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
    EXPECT_EQ(FindClose(find), !names.empty());
    return std::accumulate(names.begin(), names.end(), std::string());
}

struct SearchedFolder : ScratchFolder {
    SearchedFolder()
    {
        for (const char *name : {"a.txt", "b.txt", "README", ".a", ".ab", "x*y", "\xE9\xFF"})
            WriteWholeFile(file(name), "12345");
        EXPECT_EQ(mkdir(file("sub").c_str(), 0777), 0);
        EXPECT_EQ(symlink("no", file("link").c_str()), 0);
    }
};

TEST(Find, FindsByPatternAndByPlainName)
{
    SearchedFolder searched;
    const char *const all = ".ab README a.txt b.txt link sub x*y \xE9\xFF ";
    struct Row {
        const char *pattern, *exact, *folded;
    };
    const Row rows[] = {{"*", all, all},
                        {"?.TXT", "", "a.txt b.txt "},
                        {"README", "README ", "README "},
                        {"*.*", all, all},
                        {"readme", "", "README "},
                        {".ab", ".ab ", ".ab "},
                        {".a", "", ""},
                        {"x*y", "x*y ", "x*y "},
                        {"link", "link ", "link "},
                        {"a.txt/", "", ""},
                        {"a.txt/b", "", ""},
                        {"\xE9\xFF", "\xE9\xFF ", "\xE9\xFF "},
                        {"s*/x", "", ""},
                        {"sub", ". .. ", ". .. "},
                        {"sub/", ". .. ", ". .. "},
                        {"sub/.", ". .. ", ". .. "},
                        {"link/x", "", ""},
                        {"no/x", "", ""},
                        {"a.txt/..", "", ""}};
    const size_t descriptors = OpenDescriptors();
    for (const Row &row : rows) {
        gFileMode = 0;
        EXPECT_EQ(Search(searched.file(row.pattern)), row.exact) << row.pattern;
        gFileMode = 1;
        EXPECT_EQ(Search(searched.file(row.pattern)), row.folded) << row.pattern;
    }
    ASSERT_EQ(chdir(searched.path().c_str()), 0);
    EXPECT_EQ(Search("*.txt") + Search("/us?") + Search("/usr?"), "a.txt b.txt usr ");
    EXPECT_EQ(gFINDFILE, 0);
    EXPECT_EQ(OpenDescriptors(), descriptors);
}

TEST(Find, DescribesWhatItFinds)
{
    SearchedFolder searched;
    const std::string big = searched.file("big");
    WriteWholeFile(big, "");
    ASSERT_EQ(truncate(big.c_str(), 4294967301), 0);
    chmod(big.c_str(), 0444);
    const timeval times[] = {{1000000000, 999999}, {3000000000, 1}};
    utimes(big.c_str(), times);
    WIN32_FIND_DATA data;
    memset(&data, 0x55, sizeof data);
    HANDLE find = FindFirstFile(big.c_str(), &data);
    EXPECT_EQ(GetLastError(), 0u);
    EXPECT_EQ(gFINDFILE, 1);
    EXPECT_EQ(data.dwFileAttributes, 0x21u);
    EXPECT_EQ(data.nFileSizeHigh, 1u);
    EXPECT_EQ(data.nFileSizeLow, 5u);
    EXPECT_EQ(data.dwReserved0 | data.dwReserved1, 0u);
    EXPECT_STREQ(data.cFileName, "big");
    EXPECT_EQ(std::string(data.cAlternateFileName, 2), std::string("\0\x55", 2));
    uint64_t ticks[2];
    memcpy(ticks, &data.ftLastAccessTime, sizeof ticks);
    EXPECT_EQ(ticks[0], 1000000000 * uint64_t{10000000} + 116444736000000000);
    EXPECT_EQ(ticks[1], 3000000000 * uint64_t{10000000} + 116444736000000000);
    EXPECT_TRUE(FindClose(find));

    // What cannot be examined keeps the rest of the record.
    find = FindFirstFile(searched.file("lin*").c_str(), &data);
    EXPECT_EQ(GetLastError(), 31u);
    EXPECT_EQ(data.dwFileAttributes, 0u);
    EXPECT_EQ(data.nFileSizeLow, 5u);
    FindClose(find);

    // A listing describes the directory itself, and goes on when that is removed.
    const std::string sub = searched.file("sub");
    find = FindFirstFile(sub.c_str(), &data);
    EXPECT_EQ(data.dwFileAttributes, 0x10u);
    EXPECT_EQ(data.nFileSizeHigh | data.nFileSizeLow, 0u);
    rmdir(sub.c_str());
    while (FindNextFile(find, &data))
        EXPECT_EQ(data.dwFileAttributes, 0u);
    EXPECT_TRUE(FindClose(find));
}

TEST(Find, RefusesBadHandlesAndLeavesNothingOpen)
{
    SearchedFolder searched;
    const size_t descriptors = OpenDescriptors();
    WIN32_FIND_DATA data;
    const std::string patterns[] = {searched.file("*.txt"), searched.file("none"), searched.path(),
                                    searched.file("README")};
    for (int i = 0; i < 100000; i++) {
        HANDLE find = FindFirstFile(patterns[i % 4].c_str(), &data);
        ASSERT_EQ(FindClose(find), i % 4 != 1);
    }
    EXPECT_EQ(OpenDescriptors(), descriptors);
    EXPECT_EQ(gFINDFILE, 0);
    for (HANDLE bad : {HANDLE{nullptr}, INVALID_HANDLE_VALUE}) {
        EXPECT_OUTCOME(FindNextFile(bad, &data), FALSE, ERROR_FILE_NOT_FOUND);
        EXPECT_OUTCOME(FindClose(bad), FALSE, ERROR_GEN_FAILURE);
    }
    EXPECT_OUTCOME(FindFirstFile(nullptr, &data), INVALID_HANDLE_VALUE, ERROR_FILE_NOT_FOUND);
    // A search that is ended by hand finds nothing more, and its record is the caller's.
    HANDLE find = FindFirstFile(searched.file("*").c_str(), &data);
    EXPECT_LAST_ERROR(freeFILfindData(static_cast<FILfindData *>(find)), kUnchanged);
    EXPECT_EQ(gFINDFILE, 0);
    EXPECT_EQ(OpenDescriptors(), descriptors);
    EXPECT_OUTCOME(FindNextFile(find, &data), FALSE, ERROR_SUCCESS);
    GlobalFree(find);
}

} // namespace
