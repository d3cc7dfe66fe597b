// Profile files through the exported functions: names, cache, last errors, and that a write loses
// nothing.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <vector>

#include "support/last_error.h"
#include "support/library.h"
#include "wexelxi.h"

using namespace std::string_literals;

namespace {

std::string Get(const char *key, const std::string &file, const char *section = "s")
{
    char value[100] = "untouched";
    GetPrivateProfileString(section, key, "default", value, sizeof value, file.c_str());
    return value;
}

BOOL Put(const char *key, const std::string &value, const std::string &file)
{
    return WritePrivateProfileString("s", key, value.c_str(), file.c_str());
}

TEST(Profile, SizesDefaultsAndNulls)
{
    StartedLibrary library;
    const std::string file = library.folder.file("x.ini");
    WriteWholeFile(file, "[s]\r\nk=value\r\nempty=\r\n");
    const struct {
        const char *section, *key, *defaultValue;
        uint32_t size, length;
        const char *bytes; // what stands in 8 bytes afterwards
    } rows[] = {
        {"s", "k", nullptr, 6, 5, "value\0**"},       {"s", "k", "d", 5, 4, "valu\0***"},
        {"s", "k", "d", 1, 0, "\0*******"},           {"s", "k", "d", 0, 0, "********"},
        {"s", "empty", "d", 8, 0, "\0*******"},       {"s", "none", "default", 4, 3, "def\0****"},
        {"s", "none", nullptr, 8, 0, "********"},     {"s", "none", "", 8, 0, "\0*******"},
        {"s", "none", "d\r\nx", 8, 4, "d\r\nx\0***"}, {nullptr, "k", "de", 8, 2, "de\0*****"},
        {"s", nullptr, "de", 2, 1, "d\0******"},      {nullptr, nullptr, nullptr, 8, 0, "********"},
    };
    Get("k", file);
    char value[8];
    for (const auto &row : rows) {
        memset(value, '*', sizeof value);
        EXPECT_OUTCOME(GetPrivateProfileString(row.section, row.key, row.defaultValue, value,
                                               row.size, file.c_str()),
                       row.length, kUnchanged);
        EXPECT_EQ(memcmp(value, row.bytes, sizeof value), 0) << row.bytes << row.size;
    }
    EXPECT_OUTCOME(GetPrivateProfileString("s", "k", "d", nullptr, 8, file.c_str()), 0u,
                   kUnchanged);
    EXPECT_OUTCOME(GetPrivateProfileString("s", "k", "d", value, 8, nullptr), 0u, kUnchanged);
    EXPECT_EQ(value[0], '*');
    EXPECT_OUTCOME(GetPrivateProfileSection("s", value, 8, nullptr), 0u, kUnchanged);
    EXPECT_EQ(value[0], '\0');
    EXPECT_OUTCOME(GetPrivateProfileSection(nullptr, value, 8, file.c_str()), 0u, kUnchanged);
    EXPECT_OUTCOME(GetPrivateProfileSection("s", nullptr, 8, file.c_str()), 0u, kUnchanged);
    EXPECT_OUTCOME(GetPrivateProfileSection("s", value, 8, file.c_str()), 6u, ERROR_SUCCESS);
    for (int null = 0; null < 4; null++) {
        const char *given[] = {"s", "k", "v", "f"};
        given[null] = nullptr;
        EXPECT_OUTCOME(WritePrivateProfileString(given[0], given[1], given[2], given[3]), FALSE,
                       kUnchanged);
    }
    const char *position = "untouched";
    EXPECT_EQ(findIniKey(nullptr, "s", "k", &position), -1);
    EXPECT_EQ(findIniKey("[s]\nk=", nullptr, "k", &position), -1);
    EXPECT_EQ(findIniKey("[s]\nk=", "s", nullptr, &position), -1);
    EXPECT_STREQ(position, "untouched");
}

TEST(Profile, NamesAndFolder)
{
    char text[4096];
    GetWexelXiFolder(text);
    EXPECT_STREQ(text, "");
    EXPECT_LAST_ERROR(GetIniName(text, "win.ini"), ERROR_SUCCESS); // no folder, no host
    EXPECT_STREQ(text, "/wexelxi.ini");
    ScratchFolder scratch;
    const std::string longest(4083, 'x');
    const std::pair<std::string, std::string> folders[] = {{"", "/wexelxi.ini"},
                                                           {"/", "/"},
                                                           {"a", "a"},
                                                           {longest, longest},
                                                           {longest + "x", longest},
                                                           {scratch.path(), scratch.path()}};
    for (const auto &[given, told] : folders) {
        EXPECT_LAST_ERROR(SetWexelXiFolder(given.c_str()), kUnchanged);
        EXPECT_LAST_ERROR(GetWexelXiFolder(text), kUnchanged);
        EXPECT_EQ(text, told);
    }
    EXPECT_OUTCOME(WriteProfileString("s", "k", "1"), TRUE, ERROR_SUCCESS);
    for (const char *name : {"win.ini", "wexelxi.ini"}) {
        EXPECT_EQ(Get("k", name), "1");
        EXPECT_LAST_ERROR(GetIniName(text, name), kUnchanged);
        EXPECT_EQ(text, scratch.file("wexelxi.ini"));
    }
    EXPECT_EQ(Get("k", "WIN.INI"), "default");
    EXPECT_OUTCOME(GetProfileSection("s", text, sizeof text), 4u, ERROR_SUCCESS);
    EXPECT_STREQ(text, "k=1");
    TermIni();
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
    EXPECT_EQ(changed("2", [] { EXPECT_LAST_ERROR(Get("k", "x"), ERROR_FILE_NOT_FOUND); }), "2");
    EXPECT_EQ(changed("3", [] {}), "2");
    EXPECT_EQ(changed("4", [] {}), "2") << "by the index";
    const auto enumerate = [&] { GetPrivateProfileSection("s", list, 50, file.c_str()); };
    EXPECT_EQ(changed("5", enumerate), "5");
    EXPECT_STREQ(list, "k=5");
    EXPECT_EQ(changed("6", [&] { WritePrivateProfileString("t", "l", "1", file.c_str()); }), "6");
    EXPECT_EQ(Get("l", file, "t"), "1");
    EXPECT_EQ(changed("7", TermIni), "7");
}

TEST(Profile, WritesWholeAndKeepsWhatTheFileIs)
{
    StartedLibrary library;
    const std::string longText(10000, 'v');
    for (const std::string kind : {"plain", "link", "linked twice", "attributes", "another's"}) {
        const std::string file = library.folder.file(kind), real = file + " itself";
        if (kind == "link")
            (void)!symlink(real.c_str(), file.c_str());
        Put("first", "1", file);
        if (kind == "linked twice")
            (void)!link(file.c_str(), real.c_str());
        if (kind == "attributes" && setxattr(file.c_str(), "user.a", "b", 1, 0) != 0)
            continue; // no attributes here
        if (kind == "another's" && chown(file.c_str(), 1, getegid()) != 0)
            continue;
        (void)!chown(file.c_str(), static_cast<uid_t>(-1), geteuid() == 0 ? 12 : getegid());
        chmod(file.c_str(), 0751);
        const bool isReplaced = kind == "plain" || kind == "link";
        const std::string beside = (kind == "link" ? real : file) + ".wexelxi-new";
        struct stat before = {}, after = {};
        for (const std::string &value : {"2"s, longText, "short"s, ""s, "1234"s, "5678"s}) {
            stat(file.c_str(), &before);
            WriteWholeFile(beside, "left by a killed writer");
            const size_t open = OpenDescriptors();
            EXPECT_OUTCOME(Put("k", value, file), TRUE, ERROR_SUCCESS) << kind;
            EXPECT_EQ(OpenDescriptors(), open);
            stat(file.c_str(), &after);
            EXPECT_EQ(after.st_ino != before.st_ino, isReplaced) << kind;
            EXPECT_EQ(after.st_mode, before.st_mode) << kind;
            EXPECT_EQ(after.st_gid, before.st_gid) << kind;
            EXPECT_EQ(after.st_uid, before.st_uid) << kind;
            EXPECT_FALSE(FileExists(beside)) << kind;
            Put("last", value, file);
            EXPECT_EQ(ReadWholeFile(file),
                      "[s]\r\nfirst=1\r\nk=" + value + "\r\nlast=" + value + "\r\n");
        }
        lstat(file.c_str(), &before);
        EXPECT_EQ(S_ISLNK(before.st_mode), kind == "link");
    }
    // Somebody else's link is not followed.
    const std::string file = library.folder.file("plain"), victim = library.folder.file("victim");
    WriteWholeFile(victim, "whole");
    (void)!symlink("victim", (file + ".wexelxi-new").c_str());
    EXPECT_OUTCOME(Put("k", "1", file), TRUE, ERROR_SUCCESS);
    EXPECT_EQ(Get("k", file), "1");
    EXPECT_EQ(ReadWholeFile(victim), "whole");
    WritePrivateProfileString(longText.c_str(), longText.c_str(), "x", file.c_str());
    EXPECT_EQ(Get(longText.c_str(), file, longText.c_str()), "x");
}

TEST(Profile, FilesThatCannotBeWrittenOrHoldNoText)
{
    StartedLibrary library;
    const auto name = [&](const char *file) { return library.folder.file(file); };
    ASSERT_EQ(mkfifo(name("fifo").c_str(), 0600), 0);
    ASSERT_EQ(symlink("nothing", name("link").c_str()), 0);
    ASSERT_EQ(symlink("none/nothing", name("astray").c_str()), 0);
    WriteWholeFile(name("large"), "[s]\r\nk=1\r\n");
    ASSERT_EQ(truncate(name("large").c_str(), INT32_MAX), 0);
    WriteWholeFile(name("device"), "[s]\nk=old\n");
    WriteProfileString("Ports", "COM1", (name("device") + ",rs232").c_str());
    WriteProfileString("Ports", "COM2", "/dev/null,rs232");
    WriteProfileString("Ports", "COM3", (name("large") + ",rs232").c_str());
    WriteProfileString("Ports", "Delay", "-1"); // none drains, and nobody shall wait for it
    const struct {
        std::string file;
        BOOL written;
        uint32_t error, readError;
        const char *read;
    } rows[] = {
        {library.folder.path(), FALSE, ERROR_INVALID_NAME, ERROR_SUCCESS, "default"},
        {name("none/x.ini"), FALSE, ERROR_FILE_NOT_FOUND, ERROR_FILE_NOT_FOUND, "default"},
        {name("wexelxi.ini/x"), FALSE, ERROR_INVALID_NAME, ERROR_INVALID_NAME, "default"},
        {"", FALSE, ERROR_FILE_NOT_FOUND, ERROR_FILE_NOT_FOUND, "default"},
        {name("astray"), FALSE, ERROR_FILE_NOT_FOUND, ERROR_FILE_NOT_FOUND, "default"},
        {std::string(5000, 'y'), FALSE, ERROR_LABEL_TOO_LONG, ERROR_LABEL_TOO_LONG, "default"},
        {name("fifo"), FALSE, ERROR_GEN_FAILURE, ERROR_GEN_FAILURE, "default"},
        {name("large"), FALSE, ERROR_GEN_FAILURE, ERROR_SUCCESS, "default"},
        {name("link"), TRUE, ERROR_SUCCESS, ERROR_SUCCESS, "v"},
        {"/dev/full", TRUE, ERROR_GEN_FAILURE, ERROR_SUCCESS, "default"},
        {"/dev/null", TRUE, ERROR_SUCCESS, ERROR_SUCCESS, "default"},
        {"COM1", TRUE, ERROR_SUCCESS, ERROR_SUCCESS, "v"}, // changed in place
        {"COM2", TRUE, ERROR_SUCCESS, ERROR_SUCCESS, "default"},
        {"COM3", FALSE, ERROR_GEN_FAILURE, ERROR_SUCCESS, "default"},
        {"COM9", FALSE, ERROR_GEN_FAILURE, ERROR_GEN_FAILURE, "default"},
    };
    for (const auto &row : rows) {
        EXPECT_OUTCOME(Put("k", "v", row.file), row.written, row.error) << row.file;
        EXPECT_OUTCOME(Get("k", row.file), row.read, row.readError) << row.file;
    }
    EXPECT_EQ(ReadWholeFile(name("nothing")), "[s]\r\nk=v\r\n");
    EXPECT_EQ(ReadWholeFile(name("device")), "[s]\nk=v\r\n");
    if (geteuid() != 0) {
        chmod(name("device").c_str(), 0444);
        EXPECT_OUTCOME(Put("k", "22", name("device")), FALSE, ERROR_ACCESS_DENIED);
        EXPECT_EQ(Get("k", name("device")), "v");
    }
}

TEST(Profile, FullDiskLosesNothing)
{
    StartedLibrary library;
    const std::string file = library.folder.file("x.ini");
    WriteProfileString("Ports", "COM1", (file + ",rs232").c_str());
    WriteProfileString("Ports", "Delay", "-1");
    const std::string old = "[s]\r\nk=1\r\n\r\n[t]\r\n" + std::string(900, 'x') + "\r\n";
    signal(SIGXFSZ, SIG_IGN);
    for (const std::string &name : {file, "COM1"s}) {
        for (const rlim_t limit : {950, 920}) { // room for a second text, and only for changes
            WriteWholeFile(file, old);
            const rlimit limits{limit, RLIM_INFINITY};
            setrlimit(RLIMIT_FSIZE, &limits);
            EXPECT_OUTCOME(Put("k", std::string(200, 'v'), name), TRUE, ERROR_GEN_FAILURE);
            EXPECT_EQ(ReadWholeFile(file), old);
            EXPECT_OUTCOME(Put("k", "2", name), TRUE, ERROR_SUCCESS);
            EXPECT_EQ(Get("k", file), "2");
            EXPECT_OUTCOME(Put("k", "1", library.folder.file("y") + std::string(200, 'y')), TRUE,
                           ERROR_SUCCESS);
            const rlimit none{RLIM_INFINITY, RLIM_INFINITY};
            setrlimit(RLIMIT_FSIZE, &none);
        }
    }
}

TEST(Profile, KilledWritersLeaveTheOldTextOrTheNew)
{
    ScratchFolder folder;
    std::vector<std::string> texts; // less than a page, which is written at once also in place
    for (const char *value : {"old", "new", "much longer", "n"})
        texts.push_back("[s]\r\nk=" + std::string(value) +
                        "\r\n[t]\r\nm=" + std::string(3000, '2') + "\r\n");
    for (const bool isLinked : {false, true}) {
        const std::string file = folder.file(isLinked ? "linked" : "replaced");
        WriteWholeFile(file, texts[0]);
        if (isLinked)
            (void)!link(file.c_str(), (file + "2").c_str());
        for (useconds_t time = 0; time < 100; time++) {
            const pid_t child = fork();
            while (child == 0) {
                for (const char *value : {"new", "much longer", "n", "old"})
                    Put("k", value, file);
            }
            usleep(20 * time);
            kill(child, SIGKILL);
            waitpid(child, nullptr, 0);
            const std::string left = ReadWholeFile(file).c_str(); // a NUL ends the text
            EXPECT_EQ(std::count(texts.begin(), texts.end(), left), 1) << left.substr(0, 20);
        }
        Put("k", "1", file);
        EXPECT_FALSE(FileExists(file + ".wexelxi-new"));
    }
}

TEST(Profile, ProcessesLoseNothingOfEachOthers)
{
    ScratchFolder folder;
    const std::string file = folder.file("x.ini");
    const auto number = [](const char *name, int i) { return name + std::to_string(i); };
    for (int process = 0; process < 3; process++) {
        if (fork() != 0)
            continue;
        for (int i = 0; i < 200; i++)
            Put(number("k", process * 20 + i % 20).c_str(), number("", i), file);
        _exit(0);
    }
    while (wait(nullptr) > 0) {
    }
    for (int key = 0; key < 60; key++)
        EXPECT_EQ(Get(number("k", key).c_str(), file), number("", 180 + key % 20)) << key;
}

TEST(Profile, WaitsForAnotherProcessButNotForLong)
{
    ScratchFolder folder;
    const std::string file = folder.file("x.ini");
    WriteWholeFile(file, "[s]\r\n");
    FILE *const other = fopen(file.c_str(), "r");
    ASSERT_EQ(flock(fileno(other), LOCK_EX), 0);
    const auto milliseconds = [&] {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_OUTCOME(Put("k", "1", file), TRUE, ERROR_SUCCESS);
        return (std::chrono::steady_clock::now() - start) / std::chrono::milliseconds(1);
    };
    const long waited = milliseconds();
    EXPECT_GE(waited, 199);
    EXPECT_LT(waited, 2000);
    EXPECT_EQ(Get("k", file), "1");
    EXPECT_LT(milliseconds(), 150) << "what is locked is not the file that stands there now";
    fclose(other);
}

} // namespace
