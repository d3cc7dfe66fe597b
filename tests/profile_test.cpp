// Profile files through the exported functions: names, cache, last errors, and that a write loses
// nothing.
#include <csignal>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <sys/file.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

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

struct stat StatusOf(const std::string &file)
{
    struct stat status = {};
    lstat(file.c_str(), &status);
    return status;
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
    for (const auto &row : rows) {
        char value[8];
        memset(value, '*', sizeof value);
        EXPECT_OUTCOME(GetPrivateProfileString(row.section, row.key, row.defaultValue, value,
                                               row.size, file.c_str()),
                       row.length, kUnchanged);
        EXPECT_EQ(memcmp(value, row.bytes, sizeof value), 0) << row.bytes << row.size;
    }
    char list[8] = "*";
    EXPECT_OUTCOME(GetPrivateProfileString("s", "k", "d", list, 8, nullptr), 0u, kUnchanged);
    EXPECT_OUTCOME(GetPrivateProfileString("s", "k", "d", nullptr, 8, file.c_str()), 0u,
                   kUnchanged);
    EXPECT_STREQ(list, "*");
    EXPECT_OUTCOME(GetPrivateProfileSection("s", list, 8, nullptr), 0u, kUnchanged);
    EXPECT_STREQ(list, "");
    EXPECT_OUTCOME(GetPrivateProfileSection(nullptr, list, 8, file.c_str()), 0u, kUnchanged);
    EXPECT_OUTCOME(GetPrivateProfileSection("s", nullptr, 8, file.c_str()), 0u, kUnchanged);
    EXPECT_OUTCOME(GetPrivateProfileSection("s", list, 8, file.c_str()), 6u, 0u);
    const char *const nulls[][4] = {{nullptr, "k", "v", "f"},
                                    {"s", nullptr, "v", "f"},
                                    {"s", "k", nullptr, "f"},
                                    {"s", "k", "v", nullptr}};
    for (const auto &row : nulls)
        EXPECT_OUTCOME(WritePrivateProfileString(row[0], row[1], row[2], row[3]), FALSE,
                       kUnchanged);
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
    const auto name = [&](const char *file) { return library.folder.file(file); };
    const std::string longText(10000, 'v');
    const std::string values[] = {"2", longText, "short", "", "1234", "5678"};
    for (const char *kind : {"plain", "link", "linked twice", "attributes"}) {
        const std::string file = name(kind), real = file + " itself";
        const bool isLink = kind == "link"s, isReplaced = isLink || kind == "plain"s;
        if (isLink) {
            ASSERT_EQ(symlink(real.c_str(), file.c_str()), 0);
        }
        ASSERT_EQ(Put("first", "1", file), TRUE);
        if (kind == "linked twice"s) {
            ASSERT_EQ(link(file.c_str(), real.c_str()), 0);
        }
        if (kind == "attributes"s && setxattr(file.c_str(), "user.a", "b", 1, 0) != 0)
            continue; // no attributes here
        chmod(file.c_str(), 0640);
        (void)!chown(file.c_str(), geteuid(), geteuid() == 0 ? 12 : getegid());
        for (const std::string &value : values) {
            struct stat before, after;
            stat(file.c_str(), &before);
            WriteWholeFile((isLink ? real : file) + ".wexelxi-new", "left by a killed writer");
            const size_t open = OpenDescriptors();
            EXPECT_OUTCOME(Put("k", value, file), TRUE, ERROR_SUCCESS) << kind;
            EXPECT_EQ(OpenDescriptors(), open);
            stat(file.c_str(), &after);
            EXPECT_EQ(after.st_ino != before.st_ino, isReplaced) << kind;
            EXPECT_EQ(after.st_mode, before.st_mode) << kind;
            EXPECT_EQ(after.st_gid, before.st_gid) << kind;
            EXPECT_FALSE(FileExists((isLink ? real : file) + ".wexelxi-new")) << kind;
            Put("last", value, file);
            EXPECT_EQ(ReadWholeFile(file),
                      "[s]\r\nfirst=1\r\nk=" + value + "\r\nlast=" + value + "\r\n");
        }
        EXPECT_EQ(S_ISLNK(StatusOf(file).st_mode), isLink);
    }
    // Somebody else's link is not followed.
    WriteWholeFile(name("victim"), "whole");
    ASSERT_EQ(symlink("victim", name("plain.wexelxi-new").c_str()), 0);
    EXPECT_OUTCOME(Put("k", "1", name("plain")), TRUE, ERROR_SUCCESS);
    EXPECT_EQ(Get("k", name("plain")), "1");
    EXPECT_EQ(ReadWholeFile(name("victim")), "whole");
    EXPECT_EQ(
        WritePrivateProfileString(longText.c_str(), longText.c_str(), "x", name("plain").c_str()),
        TRUE);
    EXPECT_EQ(Get(longText.c_str(), name("plain"), longText.c_str()), "x");
}

TEST(Profile, FilesThatCannotBeWrittenOrHoldNoText)
{
    StartedLibrary library;
    const auto name = [&](const char *file) { return library.folder.file(file); };
    ASSERT_EQ(mkfifo(name("fifo").c_str(), 0600), 0);
    ASSERT_EQ(symlink("nothing", name("link").c_str()), 0);
    WriteWholeFile(name("large"), "[s]\r\nk=1\r\n");
    ASSERT_EQ(truncate(name("large").c_str(), INT32_MAX), 0);
    const struct {
        std::string file;
        BOOL written;
        uint32_t error, readError;
    } rows[] = {
        {library.folder.path(), FALSE, ERROR_INVALID_NAME, 0},
        {name("none/x.ini"), FALSE, ERROR_FILE_NOT_FOUND, ERROR_FILE_NOT_FOUND},
        {name("wexelxi.ini/x.ini"), FALSE, ERROR_INVALID_NAME, ERROR_INVALID_NAME},
        {"", FALSE, ERROR_FILE_NOT_FOUND, ERROR_FILE_NOT_FOUND},
        {std::string(5000, 'y'), FALSE, ERROR_LABEL_TOO_LONG, ERROR_LABEL_TOO_LONG},
        {name("fifo"), FALSE, ERROR_GEN_FAILURE, ERROR_GEN_FAILURE},
        {name("large"), FALSE, ERROR_GEN_FAILURE, 0},
        {"/dev/full", TRUE, ERROR_GEN_FAILURE, 0},
        {"/dev/null", TRUE, 0, 0},
        {"COM9", FALSE, ERROR_GEN_FAILURE, ERROR_GEN_FAILURE},
    };
    for (const auto &row : rows) {
        EXPECT_OUTCOME(Put("k", "v", row.file), row.written, row.error) << row.file;
        EXPECT_OUTCOME(Get("k", row.file), "default", row.readError) << row.file;
    }
    EXPECT_OUTCOME(Put("k", "v", name("link")), TRUE, 0u);
    EXPECT_EQ(ReadWholeFile(name("nothing")), "[s]\r\nk=v\r\n");
    // A port whose device is an ordinary file, changed in place; one that is a device.
    WriteWholeFile(name("device"), "[s]\nk=old\n");
    WriteProfileString("Ports", "COM1", (name("device") + ",rs232").c_str());
    WriteProfileString("Ports", "Delay", "-1"); // neither drains, and nobody shall wait for it
    WriteProfileString("Ports", "COM2", "/dev/null,rs232");
    for (const std::string value : {"longer", "x"}) {
        EXPECT_OUTCOME(Put("k", value, "COM1"), TRUE, 0u);
        EXPECT_EQ(ReadWholeFile(name("device")), "[s]\nk=" + value + "\r\n");
        EXPECT_EQ(Get("k", "COM1"), value);
    }
    EXPECT_OUTCOME(Put("k", "v", "COM2"), TRUE, 0u);
    EXPECT_OUTCOME(Get("k", "COM2"), "default", 0u);
    if (geteuid() != 0) {
        chmod(name("device").c_str(), 0444);
        EXPECT_OUTCOME(Put("k", "22", name("device")), FALSE, ERROR_ACCESS_DENIED);
        EXPECT_EQ(Get("k", name("device")), "x");
    }
}

TEST(Profile, FullDiskLosesNothing)
{
    StartedLibrary library;
    const std::string file = library.folder.file("x.ini");
    const std::string old = "[s]\r\nk=1\r\n\r\n[t]\r\n" + std::string(900, 'x') + "\r\n";
    signal(SIGXFSZ, SIG_IGN);
    for (const rlim_t limit : {950, 920}) { // room for a second text, and for changes in place only
        WriteWholeFile(file, old);
        const rlimit limits{limit, RLIM_INFINITY};
        setrlimit(RLIMIT_FSIZE, &limits);
        EXPECT_OUTCOME(Put("k", std::string(200, 'v'), file), TRUE, ERROR_GEN_FAILURE);
        EXPECT_EQ(ReadWholeFile(file), old);
        EXPECT_OUTCOME(Put("k", "2", file), TRUE, ERROR_SUCCESS);
        EXPECT_EQ(Get("k", file), "2");
        EXPECT_OUTCOME(Put("k", "1", library.folder.file("y") + std::string(200, 'y')), TRUE, 0u);
        const rlimit none{RLIM_INFINITY, RLIM_INFINITY};
        setrlimit(RLIMIT_FSIZE, &none);
    }
}

// Writes in a child that is killed in front of its n-th system call; false if it ended before.
bool IsKilledAt(int n, const std::string &file, const std::string &value)
{
    const pid_t child = fork();
    if (child == 0) {
        ptrace(PTRACE_TRACEME);
        raise(SIGSTOP);
        Put("k", value, file);
        _exit(0);
    }
    int status = 0;
    for (waitpid(child, &status, 0); WIFSTOPPED(status) && n > 0; n--) {
        ptrace(PTRACE_SYSCALL, child, nullptr, nullptr); // to the call, and behind it
        waitpid(child, &status, 0);
        if (WIFSTOPPED(status) && n > 1) {
            ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
            waitpid(child, &status, 0);
        }
    }
    const bool runs = WIFSTOPPED(status);
    if (runs) {
        kill(child, SIGKILL);
        waitpid(child, &status, 0);
    }
    return runs;
}

TEST(Profile, KilledWritersLeaveTheOldTextOrTheNew)
{
    ScratchFolder folder;
    const auto text = [](const std::string &value) {
        return "[s]\r\nk=" + value + "\r\nl=1\r\n\r\n[t]\r\nm=" + std::string(9000, '2') + "\r\n";
    };
    const std::string values[] = {"new", "much longer", "n"};
    for (const bool isLinked : {false, true}) {
        for (const std::string &value : values) {
            const std::string file = folder.file("x" + value), old = text("old");
            bool runs = true;
            int n = 1;
            for (; runs; n++) {
                WriteWholeFile(file, old);
                if (isLinked && n == 1) {
                    ASSERT_EQ(link(file.c_str(), (file + "2").c_str()), 0);
                }
                runs = IsKilledAt(n, file, value);
                const std::string left = ReadWholeFile(file).c_str(); // a NUL ends the text
                EXPECT_TRUE(left == text(value) || (runs && left == old)) << n << value;
            }
            EXPECT_GT(n, 8);
            Put("k", value, file);
            EXPECT_FALSE(FileExists(file + ".wexelxi-new"));
        }
    }
    for (int n = 1; IsKilledAt(n, folder.file("none"), "1"); n++)
        EXPECT_TRUE(!FileExists(folder.file("none")) ||
                    ReadWholeFile(folder.file("none")) == "[s]\r\nk=1\r\n");
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
    const auto measure = [&] {
        timespec before, after;
        clock_gettime(CLOCK_MONOTONIC, &before);
        EXPECT_OUTCOME(Put("k", "1", file), TRUE, ERROR_SUCCESS);
        clock_gettime(CLOCK_MONOTONIC, &after);
        return (after.tv_sec - before.tv_sec) * 1000 + (after.tv_nsec - before.tv_nsec) / 1000000;
    };
    const long waited = measure();
    EXPECT_GE(waited, 199);
    EXPECT_LT(waited, 2000);
    EXPECT_EQ(Get("k", file), "1");
    EXPECT_LT(measure(), 150) << "the file that is locked is not the one that stands there now";
    fclose(other);
}

} // namespace
