// Profile files through the exported functions: names, cache, writes in place, last errors.
#include <cstring>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <string>

#include "support/library.h"
#include "wexelxi.h"

namespace {

std::string Get(const char *key, const std::string &file, const char *section = "s")
{
    char value[100] = "untouched";
    GetPrivateProfileString(section, key, "default", value, sizeof value, file.c_str());
    return value;
}

TEST(Profile, SizesAndDefaults)
{
    StartedLibrary library;
    const std::string file = library.folder.file("x.ini");
    WriteWholeFile(file, "[s]\r\nk=value\r\nempty=\r\n");
    const struct {
        const char *key, *defaultValue;
        uint32_t size, length;
        const char *bytes; // what stands in 8 bytes afterwards
    } rows[] = {
        {"k", nullptr, 6, 5, "value\0**"},       {"k", "d", 5, 4, "valu\0***"},
        {"k", "d", 1, 0, "\0*******"},           {"k", "d", 0, 0, "********"},
        {"empty", "d", 8, 0, "\0*******"},       {"none", "default", 4, 3, "def\0****"},
        {"none", nullptr, 8, 0, "********"},     {"none", "", 8, 0, "\0*******"},
        {"none", "d\r\nx", 8, 4, "d\r\nx\0***"},
    };
    for (const auto &row : rows) {
        char value[8];
        memset(value, '*', sizeof value);
        EXPECT_EQ(
            GetPrivateProfileString("s", row.key, row.defaultValue, value, row.size, file.c_str()),
            row.length);
        EXPECT_EQ(memcmp(value, row.bytes, sizeof value), 0) << row.key << row.size;
    }
    char list[8] = "*";
    EXPECT_EQ(GetPrivateProfileString("s", "k", "d", list, 8, nullptr), 0u);
    EXPECT_STREQ(list, "*");
    EXPECT_EQ(GetPrivateProfileSection("s", list, 8, nullptr), 0u);
    EXPECT_STREQ(list, "");
    EXPECT_EQ(WritePrivateProfileString("s", "k", "d", nullptr), 0);
}

TEST(Profile, NamesAndFolder)
{
    char text[4096];
    GetWexelXiFolder(text);
    EXPECT_STREQ(text, "");
    GetIniName(text, "win.ini"); // no folder, no host
    EXPECT_STREQ(text, "/wexelxi.ini");
    GetWexelXiFolder(text);
    EXPECT_STREQ(text, "/wexelxi.ini"); // its first character cuts nothing
    ScratchFolder scratch;
    SetWexelXiFolder(scratch.path().c_str());
    SetWexelXiFolder(std::string(4084, 'x').c_str());
    GetWexelXiFolder(text);
    EXPECT_EQ(text, scratch.path());
    EXPECT_EQ(WriteProfileString("s", "k", "1"), 1);
    for (const char *name : {"win.ini", "wexelxi.ini"})
        EXPECT_EQ(Get("k", name), "1");
    EXPECT_EQ(Get("k", "WIN.INI"), "default");
    TermIni();
    const std::string longest(4083, 'x');
    SetWexelXiFolder(longest.c_str());
    GetIniName(text, "wexelxi.ini");
    EXPECT_EQ(text, longest + "/wexelxi.ini");
    const std::string tooLong(5000, 'y');
    GetIniName(text, tooLong.c_str());
    EXPECT_EQ(text, tooLong.substr(0, 4095));
}

TEST(Profile, FolderOfTheHost)
{
    ScratchFolder scratch;
    unsetenv("WEXELXIDIR");
    ASSERT_EQ(InitLib(scratch.file("host").c_str(), nullptr, 0), 0);
    char text[4096];
    GetWexelXiFolder(text);
    EXPECT_EQ(text, scratch.path());
    FreeLib();
    EXPECT_TRUE(FileExists(scratch.file("wexelxi.ini")));
}

TEST(Profile, CacheLivesUntilAnotherRead)
{
    StartedLibrary library;
    const std::string file = library.folder.file("x.ini");
    char list[50] = "";
    // The value after a change from outside and a call that drops the cache, or does not.
    const auto changed = [&](const char *value, auto &&call) {
        WriteWholeFile(file, std::string("[s]\nk=") + value + "\n");
        call();
        return Get("k", file);
    };
    EXPECT_EQ(changed("1", [] {}), "1");
    SetLastError(77);
    EXPECT_EQ(changed("2", [] {}), "1");
    EXPECT_EQ(GetLastError(), 77u);
    EXPECT_EQ(changed("3", [&] { Get("k", file + "2"); }), "3");
    EXPECT_EQ(GetLastError(), 0u);
    const auto enumerate = [&] { GetPrivateProfileSection("s", list, 50, file.c_str()); };
    EXPECT_EQ(changed("4", enumerate), "4");
    EXPECT_STREQ(list, "k=4");
    EXPECT_EQ(changed("5", [&] { WritePrivateProfileString("t", "l", "1", file.c_str()); }), "5");
    EXPECT_EQ(Get("l", file, "t"), "1");
}

TEST(Profile, WritesInPlaceAndWhole)
{
    StartedLibrary library;
    const std::string file = library.folder.file("x.ini");
    ASSERT_EQ(WritePrivateProfileString("s", "first", "1", file.c_str()), 1);
    const std::string longText(10000, 'v');
    const char *values[] = {"2", longText.c_str(), "short", "", "1234", "5678"};
    for (const char *value : values) {
        const size_t open = OpenDescriptors();
        EXPECT_EQ(WritePrivateProfileString("s", "k", value, file.c_str()), 1);
        EXPECT_EQ(GetLastError(), 0u);
        EXPECT_EQ(OpenDescriptors(), open);
        WritePrivateProfileString("s", "last", value, file.c_str());
        EXPECT_EQ(ReadWholeFile(file),
                  std::string("[s]\r\nfirst=1\r\nk=") + value + "\r\nlast=" + value + "\r\n");
    }
    EXPECT_EQ(WritePrivateProfileString(longText.c_str(), longText.c_str(), "x", file.c_str()), 1);
    EXPECT_EQ(Get(longText.c_str(), file, longText.c_str()), "x");
}

TEST(Profile, FilesThatCannotBeWritten)
{
    StartedLibrary library;
    const std::string file = library.folder.file("x.ini");
    const std::pair<std::string, uint32_t> rows[] = {
        {library.folder.path(), 123},
        {library.folder.file("none/x.ini"), 2},
        {library.folder.file("wexelxi.ini/x.ini"), 123},
        {"", 2},
        {std::string(5000, 'y'), 154}};
    for (const auto &[name, error] : rows) {
        EXPECT_EQ(WritePrivateProfileString("s", "k", "v", name.c_str()), 0) << name;
        EXPECT_EQ(GetLastError(), error) << name;
        EXPECT_EQ(Get("k", name), "default");
    }
    EXPECT_EQ(WritePrivateProfileString("s", "k", "v", "/dev/full"), 1);
    EXPECT_EQ(GetLastError(), ERROR_GEN_FAILURE);
    EXPECT_EQ(WritePrivateProfileString("s", "k", "v", "/dev/null"), 1);
    EXPECT_EQ(GetLastError(), 0u);
    WriteWholeFile(file, "[s]\r\nk=1\r\n");
    chmod(file.c_str(), 0444);
    if (access(file.c_str(), W_OK) != 0) {
        EXPECT_EQ(WritePrivateProfileString("s", "k", "22", file.c_str()), 0);
        EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
        EXPECT_EQ(Get("k", file), "1");
    }
}

TEST(Profile, FullDiskLosesNothing)
{
    StartedLibrary library;
    const std::string file = library.folder.file("x.ini");
    const std::string old = "[s]\r\nk=1\r\n\r\n[t]\r\n" + std::string(900, 'x') + "\r\n";
    WriteWholeFile(file, old);
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{950, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &limit);
    const std::string value(200, 'v');
    WritePrivateProfileString("s", "k", value.c_str(), file.c_str());
    EXPECT_EQ(GetLastError(), ERROR_GEN_FAILURE);
    EXPECT_EQ(ReadWholeFile(file), old);
    EXPECT_EQ(WritePrivateProfileString("s", "k", "2", file.c_str()), 1);
    EXPECT_EQ(GetLastError(), 0u);
    EXPECT_EQ(Get("k", file), "2");
}

} // namespace
