// The matcher against a slow twin, searches and what they tell, and the test of existence.
#include <cctype>
#include <climits>
#include <dirent.h>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <string>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include "files/wildcard.h"
#include "support/library.h"
#include "wexelxi.h"

using namespace wexelxi;

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
        const std::string pattern = RandomText(random, "**??.aAbB\xE9\xC9", 7);
        const std::string name = RandomText(random, "..aaAbB*?\xE9\xC9", 9);
        for (const bool exact : {true, false}) {
            const bool expected =
                pattern == "*.*" || SlowMatch(pattern.c_str(), name.c_str(), exact);
            ASSERT_EQ(CheckFilter(pattern.c_str(), name.c_str(), exact), expected)
                << pattern << " on " << name;
        }
        const std::string list = RandomText(random, ";;*?.ab", 9);
        bool any = false;
        for (size_t at = 0; at < list.size();) {
            const std::string piece = list.substr(at, list.find(';', at) - at);
            any = any || piece == "*.*" ||
                  (!piece.empty() && SlowMatch(piece.c_str(), name.c_str(), true));
            at += piece.size() + 1;
        }
        ASSERT_EQ(CheckMultiFilter(list.c_str(), name.c_str(), ';', 1), any) << list << " " << name;
    }
    std::string longList(100000, ';');
    EXPECT_EQ(CheckMultiFilter((longList + "*.h").c_str(), "x.h", ';', 1), 1);
    EXPECT_EQ(CheckFilter("*.*", "", 1), 1);
    EXPECT_EQ(CheckFilter("*.TXT", "a.txt", 0x100), 0);
    EXPECT_EQ(CheckFilter("*.TXT", "a.txt", 0), 1);
}

using Names = std::multiset<std::string>;

Names Search(const std::string &pattern)
{
    Names names;
    WIN32_FIND_DATA data;
    HANDLE find = FindFirstFile(pattern.c_str(), &data);
    if (find == INVALID_HANDLE_VALUE) {
        EXPECT_EQ(GetLastError(), 2u) << pattern;
        return names;
    }
    do
        names.insert(data.cFileName);
    while (FindNextFile(find, &data));
    EXPECT_EQ(GetLastError(), 0u);
    EXPECT_FALSE(FindNextFile(find, &data));
    EXPECT_TRUE(FindClose(find));
    return names;
}

struct SearchedFolder {
    SearchedFolder()
    {
        for (const char *name :
             {"a.txt", "b.txt", "README", ".a", ".ab", "noext", "x*y", "\xE9\xFF"})
            WriteWholeFile(folder.file(name), "12345");
        mkdir(folder.file("sub").c_str(), 0777);
        symlink("nowhere", folder.file("dangling").c_str());
    }
    ScratchFolder folder;
};

TEST(Find, FindsByPatternAndByPlainName)
{
    SearchedFolder searched;
    const Names all = {"a.txt", "b.txt",    "README", ".ab",     "noext",
                       "x*y",   "\xE9\xFF", "sub",    "dangling"};
    struct Row {
        const char *pattern;
        Names exact, folded;
    };
    const Row rows[] = {
        {"*", all, all},
        {"*.*", all, all},
        {"*.txt", {"a.txt", "b.txt"}, {"a.txt", "b.txt"}},
        {"?.TXT", {}, {"a.txt", "b.txt"}},
        {"README", {"README"}, {"README"}},
        {"readme", {}, {"README"}},
        {".a", {}, {}},
        {".ab", {".ab"}, {".ab"}},
        {"x*y", {"x*y"}, {"x*y"}},
        {"\xE9\xFF", {"\xE9\xFF"}, {"\xE9\xFF"}},
        {"dangling", {"dangling"}, {"dangling"}},
        {"a.txt/", {}, {}},
        {"a.txt/b", {}, {}},
        {"no/such", {}, {}},
        {"s*/x", {}, {}},
        {"sub", {".", ".."}, {".", ".."}},
        {"sub/", {".", ".."}, {".", ".."}},
    };
    const size_t descriptors = OpenDescriptors();
    for (const Row &row : rows) {
        for (const bool mode : {false, true}) {
            gFileMode = mode;
            SCOPED_TRACE(testing::Message() << row.pattern << " mode " << mode);
            const Names &expected = mode ? row.folded : row.exact;
            EXPECT_EQ(Search(searched.folder.file(row.pattern)), expected);
            EXPECT_EQ(DoesFileExist(searched.folder.file(row.pattern).c_str()), !expected.empty());
            EXPECT_EQ(GetLastError(), expected.empty() ? 2u : 0u);
        }
    }
    gFileMode = 0;
    chdir(searched.folder.path().c_str());
    EXPECT_EQ(Search("*.txt").size(), 2u);
    EXPECT_EQ(Search("/us?"), Names{"usr"});
    EXPECT_EQ(Search("/usr?"), Names());
    EXPECT_EQ(gFINDFILE, 0);
    EXPECT_EQ(OpenDescriptors(), descriptors);
}

TEST(Find, DescribesWhatItFinds)
{
    SearchedFolder searched;
    const std::string big = searched.folder.file("big");
    WriteWholeFile(big, "");
    truncate(big.c_str(), 4294967301);
    chmod(big.c_str(), 0444);
    const timeval times[] = {{1000000000, 999999}, {2000000000, 1}};
    utimes(big.c_str(), times);
    WIN32_FIND_DATA data;
    memset(&data, 0x55, sizeof data);
    HANDLE find = FindFirstFile(big.c_str(), &data);
    ASSERT_NE(find, INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), 0u);
    EXPECT_EQ(gFINDFILE, 1);
    EXPECT_EQ(data.dwFileAttributes, 0x21u);
    EXPECT_EQ(data.nFileSizeHigh, 1u);
    EXPECT_EQ(data.nFileSizeLow, 5u);
    EXPECT_EQ(data.dwReserved0 | data.dwReserved1, 0u);
    EXPECT_STREQ(data.cFileName, "big");
    EXPECT_EQ(data.cAlternateFileName[0], '\0');
    EXPECT_EQ(data.cAlternateFileName[1], 0x55);
    uint64_t ticks[2];
    memcpy(ticks, &data.ftLastAccessTime, sizeof ticks);
    EXPECT_EQ(ticks[0], 1000000000 * uint64_t{10000000} + 116444736000000000);
    EXPECT_EQ(ticks[1], 2000000000 * uint64_t{10000000} + 116444736000000000);
    EXPECT_FALSE(FindNextFile(find, &data));
    EXPECT_TRUE(FindClose(find));

    // What cannot be examined keeps the rest of the record.
    find = FindFirstFile(searched.folder.file("dang*").c_str(), &data);
    EXPECT_EQ(GetLastError(), 31u);
    EXPECT_EQ(data.dwFileAttributes, 0u);
    EXPECT_EQ(data.nFileSizeLow, 5u);
    FindClose(find);
    find = FindFirstFile(searched.folder.path().c_str(), &data);
    EXPECT_EQ(data.dwFileAttributes, 0x10u);
    EXPECT_EQ(data.nFileSizeHigh + data.nFileSizeLow, 0u);

    // Removed while it is listed: the search goes on to its end.
    ScratchFolder other;
    const std::string gone = other.file("gone");
    mkdir(gone.c_str(), 0777);
    HANDLE listing = FindFirstFile(gone.c_str(), &data);
    rmdir(gone.c_str());
    while (FindNextFile(listing, &data))
        EXPECT_EQ(data.dwFileAttributes, 0u);
    FindClose(listing);
    EXPECT_TRUE(FindClose(find));
    for (HANDLE bad : {HANDLE{nullptr}, INVALID_HANDLE_VALUE}) {
        EXPECT_FALSE(FindNextFile(bad, &data));
        EXPECT_EQ(GetLastError(), 2u);
        EXPECT_FALSE(FindClose(bad));
        EXPECT_EQ(GetLastError(), 31u);
    }
    EXPECT_EQ(FindFirstFile(nullptr, &data), INVALID_HANDLE_VALUE);
    EXPECT_EQ(gFINDFILE, 0);
}

TEST(Find, LeavesNothingOpenAfterManySearches)
{
    SearchedFolder searched;
    const size_t descriptors = OpenDescriptors();
    WIN32_FIND_DATA data;
    const std::string patterns[] = {searched.folder.file("*.txt"), searched.folder.file("none"),
                                    searched.folder.path(), searched.folder.file("README")};
    for (int i = 0; i < 100000; i++) {
        HANDLE find = FindFirstFile(patterns[i % 4].c_str(), &data);
        if (find != INVALID_HANDLE_VALUE)
            FindClose(find);
    }
    EXPECT_EQ(OpenDescriptors(), descriptors);
    EXPECT_EQ(gFINDFILE, 0);
}

} // namespace
