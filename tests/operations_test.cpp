// Operations on whole files: attributes, copies, moves, temporary names, and what they leave.
#include <array>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include "support/last_error.h"
#include "support/library.h"
#include "wexelxi.h"

namespace {

mode_t ModeOf(const std::string &path)
{
    struct stat status = {};
    stat(path.c_str(), &status);
    return status.st_mode & 07777;
}

TEST(Attributes, ShowAndSetTheOwnersWriteBit)
{
    ScratchFolder folder;
    const std::string file = folder.file("f"), absent = folder.file("no");
    WriteWholeFile(file, "");
    const uint32_t rows[][4] = {{0640, 0x20, 1, 0444},
                                {0750, 0x20, 0, 0776},
                                {0444, 0x21, 0x20, 0666},
                                {0555, 0x21, 3, 0555},
                                {04711, 0x20, 1, 04555}};
    for (const auto &[before, told, set, after] : rows) {
        chmod(file.c_str(), before);
        EXPECT_OUTCOME(GetFileAttributes(file.c_str()), told, ERROR_SUCCESS);
        EXPECT_OUTCOME(SetFileAttributes(file.c_str(), set), TRUE, ERROR_SUCCESS);
        EXPECT_EQ(ModeOf(file), after);
    }
    EXPECT_OUTCOME(GetFileAttributes(absent.c_str()), 0u, ERROR_GEN_FAILURE);
    EXPECT_OUTCOME(SetFileAttributes(absent.c_str(), 0), FALSE, ERROR_FILE_NOT_FOUND);
    EXPECT_OUTCOME(PathIsDirectory(folder.path().c_str()), TRUE, ERROR_SUCCESS);
    EXPECT_OUTCOME(PathIsDirectory(file.c_str()), FALSE, ERROR_SUCCESS);
}

TEST(Operations, MakeMoveAndRemoveNames)
{
    ScratchFolder folder;
    ASSERT_EQ(chdir(folder.path().c_str()), 0);
    const std::string longName = "d.d/a:" + std::string(100, 'n') + "." + std::string(100, 'e');
    for (const char *name : {"in", "closed", "moved", "d.d"})
        EXPECT_OUTCOME(CreateDirectory(name, nullptr), TRUE, ERROR_SUCCESS);
    EXPECT_OUTCOME(CreateDirectory("in", nullptr), FALSE, ERROR_FILE_EXISTS);
    chmod("closed", 0555);
    EXPECT_OUTCOME(GetFileAttributes("closed"), 0x11u, ERROR_SUCCESS);
    for (const std::string &name : {std::string("a"), std::string("b"), longName})
        WriteWholeFile(name, name);
    const struct {
        const char *from, *to;
        BOOL moves;
        uint32_t error;
    } rows[] = {
        {"a", "new", TRUE, ERROR_GEN_FAILURE}, // of the question about the new name
        {"new", "b", TRUE, ERROR_SUCCESS},
        {"b", "in/", TRUE, ERROR_SUCCESS},
        {longName.c_str(), "in", TRUE, ERROR_SUCCESS},
        {"in/b", "closed", FALSE, ERROR_INVALID_NAME}, // no target without the write bit
        {"moved", "closed", TRUE, ERROR_SUCCESS},      // a writable folder moves into no other
        {"closed", "elsewhere", TRUE, ERROR_SUCCESS},
        {"absent", "x", FALSE, ERROR_FILE_NOT_FOUND},
    };
    for (const auto &row : rows)
        EXPECT_OUTCOME(MoveFile(row.from, row.to), row.moves, row.error) << row.from;
    EXPECT_EQ(ReadWholeFile("in/b"), "a");
    EXPECT_EQ(ReadWholeFile("in" + longName.substr(3)), longName);

    EXPECT_OUTCOME(DeleteFile("in"), FALSE, ERROR_DIR_NOT_EMPTY);
    EXPECT_OUTCOME(RemoveDirectory("in/b"), FALSE, ERROR_INVALID_NAME);
    EXPECT_OUTCOME(DeleteFile("in/b"), TRUE, ERROR_SUCCESS);
    EXPECT_OUTCOME(DeleteFile("d.d"), TRUE, ERROR_SUCCESS);
    EXPECT_OUTCOME(RemoveDirectory("elsewhere"), TRUE, ERROR_SUCCESS);
    EXPECT_FALSE(FileExists("elsewhere") || FileExists("in/b"));
    const std::string endless(300, 'x');
    EXPECT_OUTCOME(RemoveDirectory(endless.c_str()), FALSE, ERROR_LABEL_TOO_LONG);
}

TEST(CopyFile, CopiesBytesAndTheReadOnlyState)
{
    ScratchFolder folder;
    const std::string source = folder.file("source"), target = folder.file("target");
    const size_t descriptors = OpenDescriptors();
    for (const size_t size : {0, 1, 65535, 65536, 65537, 1000000}) {
        std::string bytes(size, 'x');
        for (size_t i = 0; i < size; i++)
            bytes[i] = static_cast<char>(i * 7919 >> 8);
        const mode_t mode = size % 2 ? 0444 : 0750;
        WriteWholeFile(source, bytes);
        chmod(source.c_str(), mode);
        EXPECT_OUTCOME(CopyFile(source.c_str(), target.c_str(), TRUE), TRUE, ERROR_SUCCESS);
        EXPECT_TRUE(ReadWholeFile(target) == bytes);
        EXPECT_EQ(ModeOf(target), mode == 0444 ? 0444u : 0666u);
        EXPECT_TRUE(DeleteFile(source.c_str()) && DeleteFile(target.c_str()));
    }
    // What the kernel does not copy: a file without a size. And what only a link stands for.
    ASSERT_EQ(symlink(source.c_str(), target.c_str()), 0);
    EXPECT_OUTCOME(CopyFile("/proc/self/status", target.c_str(), TRUE), TRUE, ERROR_SUCCESS);
    EXPECT_GT(ReadWholeFile(source).size(), 100u);
    EXPECT_EQ(OpenDescriptors(), descriptors);
}

TEST(CopyFile, KeepsHolesAndBytesOfASparseFile)
{
    ScratchFolder folder;
    const off_t size = off_t{5} << 30;
    const off_t places[] = {0, 100000, off_t{3} << 30, size - 70000};
    const int from = open(folder.file("source").c_str(), O_RDWR | O_CREAT, 0666);
    for (const off_t place : places)
        ASSERT_EQ(pwrite(from, &place, sizeof place, place), 8);
    ASSERT_EQ(ftruncate(from, size), 0);
    ASSERT_TRUE(CopyFile(folder.file("source").c_str(), folder.file("target").c_str(), FALSE));
    const int to = open(folder.file("target").c_str(), O_RDONLY);
    struct stat status = {};
    fstat(to, &status);
    EXPECT_EQ(status.st_size, size);
    EXPECT_LT(status.st_blocks, 10000);
    for (const off_t place : places) {
        off_t got = -1;
        EXPECT_EQ(pread(to, &got, sizeof got, place), 8);
        EXPECT_EQ(got, place);
    }
    close(from);
    close(to);
}

TEST(CopyFile, FailsWithoutHarm)
{
    ScratchFolder folder;
    ASSERT_EQ(chdir(folder.path().c_str()), 0);
    WriteWholeFile("f", "precious");
    WriteWholeFile("g", "other");
    mkdir("folder", 0777);
    ASSERT_EQ(link("f", "hard"), 0);
    ASSERT_EQ(symlink("f", "soft"), 0);
    ASSERT_EQ(symlink("loop", "loop"), 0);
    const struct {
        const char *source, *target;
        BOOL failIfExists;
        uint32_t error;
    } rows[] = {{"f", "g", TRUE, ERROR_FILE_EXISTS},
                {"f", "f", TRUE, ERROR_FILE_EXISTS},
                {"f", "loop", TRUE, ERROR_GEN_FAILURE},
                {"f", "loop", FALSE, ERROR_GEN_FAILURE},
                {"f", "f", FALSE, ERROR_SHARING_VIOLATION},
                {"f", "hard", FALSE, ERROR_SHARING_VIOLATION},
                {"soft", "f", FALSE, ERROR_SHARING_VIOLATION},
                {"f", "folder/../soft", FALSE, ERROR_SHARING_VIOLATION},
                {"absent", "new", TRUE, ERROR_FILE_NOT_FOUND},
                {"absent", "g", FALSE, ERROR_FILE_NOT_FOUND},
                {"f", "folder", FALSE, ERROR_INVALID_NAME},
                {"folder", "g", FALSE, ERROR_READ_FAULT},
                {"folder", "part", FALSE, ERROR_READ_FAULT},
                {"f", "/dev/full", FALSE, ERROR_WRITE_FAULT},
                {"f", "no/f", FALSE, ERROR_FILE_NOT_FOUND}};
    const size_t descriptors = OpenDescriptors();
    for (const auto &row : rows) {
        SCOPED_TRACE(std::string(row.source) + " to " + row.target);
        EXPECT_OUTCOME(CopyFile(row.source, row.target, row.failIfExists), FALSE, row.error);
        EXPECT_EQ(ReadWholeFile("f"), "precious");
        EXPECT_EQ(ReadWholeFile("g"), "other");
        EXPECT_FALSE(FileExists("new"));
        EXPECT_EQ(OpenDescriptors(), descriptors);
    }
}

TEST(CopyFile, RefusesWhatItMayNotSeeAndEmptiesNothing)
{
    ScratchFolder folder;
    ASSERT_EQ(chdir(folder.path().c_str()), 0);
    mkdir("closed", 0777);
    for (const char *name : {"f", "secret", "closed/f"}) {
        WriteWholeFile(name, name);
        chmod(name, 0666);
    }
    chmod("secret", 0222);
    chmod("closed", 0311); // to be entered, not to be listed
    chmod(".", 0777);
    ASSERT_EQ(seteuid(geteuid() == 0 ? 65534 : geteuid()), 0);
    EXPECT_OUTCOME(CopyFile("f", "secret", TRUE), FALSE, ERROR_ACCESS_DENIED);
    EXPECT_OUTCOME(CopyFile("f", "closed/f", TRUE), FALSE, ERROR_FILE_EXISTS);
    EXPECT_OUTCOME(DoesFileExist("closed/f"), FALSE, ERROR_FILE_NOT_FOUND);
    EXPECT_OUTCOME(CreateFile("closed/f", GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr),
                   INVALID_HANDLE_VALUE, ERROR_FILE_EXISTS);
    seteuid(getuid());
    chmod("secret", 0666);
    EXPECT_EQ(ReadWholeFile("secret"), "secret");
    EXPECT_EQ(ReadWholeFile("closed/f"), "closed/f");
}

TEST(CopyFile, TellsAFullDiskForFilesOfAnySize)
{
    ScratchFolder folder;
    const std::string disk = folder.file("disk"), source = folder.file("f");
    mkdir(disk.c_str(), 0777);
    // A mount of this process alone, which ends with it.
    if (unshare(CLONE_NEWNS) != 0 || mount("", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount("none", disk.c_str(), "tmpfs", 0, "size=64k") != 0)
        GTEST_SKIP() << "no right to mount";
    WriteWholeFile(disk + "/filler", std::string(60000, 'x'));
    for (const size_t size : {5000, 70000, 1000000}) {
        WriteWholeFile(source, std::string(size, 'y'));
        EXPECT_OUTCOME(CopyFile(source.c_str(), (disk + "/f").c_str(), FALSE), FALSE,
                       ERROR_WRITE_FAULT);
    }
    umount(disk.c_str());
}

TEST(Temporary, FindsTheFolderWithASlashWhereThereIsRoom)
{
    struct Row {
        const char *tmp, *temp;
        uint32_t size, result;
        const char *text;
    };
    const Row rows[] = {{"/var/tmp", "x", 10, 9, "/var/tmp/"},
                        {"/var/tmp", "x", 9, 8, "/var/tmp"},
                        {"/var/tmp", nullptr, 8, 9, "*"},
                        {"/var/tmp", "x", 0, 9, "*"},
                        {"", "t/", 64, 2, "t/"},
                        {nullptr, nullptr, 64, 5, "/usr/"}};
    ASSERT_EQ(chdir("/usr"), 0);
    for (const Row &row : rows) {
        char buffer[64] = "*";
        SetEnvironmentVariable("TMP", row.tmp);
        SetEnvironmentVariable("TEMP", row.temp);
        EXPECT_OUTCOME(GetTempPath(row.size, buffer), row.result, ERROR_SUCCESS);
        EXPECT_STREQ(buffer, row.text);
    }
}

TEST(Temporary, FindsTheOneNameThatIsFree)
{
    ScratchFolder folder;
    ASSERT_EQ(chdir(folder.path().c_str()), 0);
    char taken[16], name[32];
    for (unsigned number = 0; number <= 0xFFFF; number++) {
        snprintf(taken, sizeof taken, "./t%04x.tmp", number);
        close(open(taken, O_CREAT | O_WRONLY, 0666));
    }
    EXPECT_OUTCOME(GetTempFileName(".", "t", 7, name), 0u, ERROR_FILE_EXISTS);
    for (const uint32_t number : {0u, 0xABCDu}) {
        snprintf(taken, sizeof taken, "./t%04x.tmp", number);
        unlink(taken);
        EXPECT_OUTCOME(GetTempFileName(".", "t", 7, name), number, ERROR_FILE_NOT_FOUND);
        EXPECT_STREQ(name, taken);
        WriteWholeFile(taken, "");
    }
    EXPECT_OUTCOME(GetTempFileName(nullptr, "t", 0, name), 0u, ERROR_SUCCESS);
    EXPECT_OUTCOME(GetTempFileName(".", nullptr, 0, name), 0u, ERROR_SUCCESS);
    EXPECT_OUTCOME(GetTempFileName(".", "t", 0, nullptr), 0u, ERROR_SUCCESS);
}

TEST(Volumes, TellTheRoomOfAFileSystemAndNoDrives)
{
    using Room = std::array<uint32_t, 4>;
    Room room = {7, 7, 7, 7};
    struct statfs status;
    ASSERT_EQ(statfs("/", &status), 0);
    const auto ask = [&](const char *path, uint32_t *last) {
        return GetDiskFreeSpace(path, &room[0], &room[1], &room[2], last);
    };
    EXPECT_OUTCOME(ask("/", nullptr), FALSE, kUnchanged);
    EXPECT_EQ(room, (Room{7, 7, 7, 7}));
    EXPECT_OUTCOME(ask("/", &room[3]), FALSE, kUnchanged);
    EXPECT_EQ(room, (Room{1, 1024, room[2], static_cast<uint32_t>(status.f_blocks)}));
    EXPECT_TRUE(room[2] > 7 && room[2] < room[3]);
    room = {7, 7, 7, 7};
    EXPECT_OUTCOME(ask("/no/such", &room[3]), FALSE, kUnchanged);
    EXPECT_EQ(room, (Room{}));
    EXPECT_OUTCOME(GetLogicalDrives(), 0u, ERROR_SUCCESS);
    EXPECT_OUTCOME(GetDriveType("/"), 0u, ERROR_SUCCESS);
    EXPECT_OUTCOME(GetVolumeInformation("/", nullptr, 0, nullptr, nullptr, nullptr, nullptr, 0),
                   FALSE, ERROR_SUCCESS);
}

} // namespace
