// Operations on whole files: attributes, copies, moves, temporary names, and what they leave.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

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
    const std::string file = folder.file("f");
    WriteWholeFile(file, "");
    const uint32_t rows[][4] = {{0640, 0x20, 1, 0444},
                                {0750, 0x20, 0, 0776},
                                {0444, 0x21, 0x20, 0666},
                                {0555, 0x21, 3, 0555},
                                {04711, 0x20, 1, 04555}};
    for (const auto &[before, told, set, after] : rows) {
        chmod(file.c_str(), before);
        EXPECT_EQ(GetFileAttributes(file.c_str()), told);
        EXPECT_TRUE(SetFileAttributes(file.c_str(), set));
        EXPECT_EQ(ModeOf(file), after);
    }
    EXPECT_EQ(GetFileAttributes(folder.file("no").c_str()), 0u);
    EXPECT_EQ(GetLastError(), 31u);
    EXPECT_FALSE(SetFileAttributes(folder.file("no").c_str(), 0));
    EXPECT_EQ(GetLastError(), 2u);
}

TEST(Operations, MakeMoveAndRemoveNames)
{
    ScratchFolder folder;
    ASSERT_EQ(chdir(folder.path().c_str()), 0);
    const std::string longName = "d.d/a:" + std::string(100, 'n') + "." + std::string(100, 'e');
    const auto leaves = [](BOOL result, BOOL expected, uint32_t error) {
        EXPECT_EQ(result, expected);
        EXPECT_EQ(GetLastError(), error);
    };
    for (const char *name : {"in", "closed", "moved", "d.d"})
        leaves(CreateDirectory(name, nullptr), TRUE, 0);
    leaves(CreateDirectory("in", nullptr), FALSE, 80);
    chmod("closed", 0555);
    EXPECT_EQ(GetFileAttributes("closed"), 0x11u);
    EXPECT_TRUE(PathIsDirectory("closed"));
    for (const std::string &name : {std::string("a"), std::string("b"), longName})
        WriteWholeFile(name, name);
    leaves(MoveFile("a", "new"), TRUE, 31);
    leaves(MoveFile("new", "b"), TRUE, 0);
    EXPECT_EQ(ReadWholeFile("b"), "a");
    leaves(MoveFile("b", "in/"), TRUE, 0);
    leaves(MoveFile(longName.c_str(), "in"), TRUE, 0);
    EXPECT_EQ(ReadWholeFile("in" + longName.substr(3)), longName);
    leaves(MoveFile("in/b", "closed"), FALSE, 123); // no target without the write bit
    leaves(MoveFile("moved", "closed"), TRUE, 0);   // a writable folder moves into no other
    leaves(MoveFile("closed", "elsewhere"), TRUE, 0);
    leaves(MoveFile("absent", "x"), FALSE, 2);

    leaves(DeleteFile("in"), FALSE, 145);
    leaves(RemoveDirectory("in/b"), FALSE, 123);
    leaves(DeleteFile("in/b"), TRUE, 0);
    leaves(DeleteFile("elsewhere"), TRUE, 0);
    leaves(RemoveDirectory(std::string(300, 'x').c_str()), FALSE, 154);
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
        EXPECT_TRUE(CopyFile(source.c_str(), target.c_str(), TRUE));
        EXPECT_EQ(GetLastError(), 0u);
        EXPECT_TRUE(ReadWholeFile(target) == bytes);
        EXPECT_EQ(ModeOf(target), mode == 0444 ? 0444u : 0666u);
        EXPECT_TRUE(DeleteFile(source.c_str()) && DeleteFile(target.c_str()));
    }
    // What the kernel does not copy: a file without a size.
    EXPECT_TRUE(CopyFile("/proc/self/status", source.c_str(), FALSE));
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
    ASSERT_EQ(link("f", "hard") + symlink("f", "soft"), 0);
    struct Row {
        const char *source, *target;
        BOOL failIfExists;
        uint32_t error;
    };
    const Row rows[] = {
        {"f", "g", 1, 80},         {"f", "f", 1, 80},          {"f", "f", 0, 32},
        {"f", "hard", 0, 32},      {"soft", "f", 0, 32},       {"f", "folder/../soft", 0, 32},
        {"absent", "new", 1, 2},   {"absent", "g", 0, 2},      {"f", "folder", 0, 123},
        {"folder", "part", 0, 30}, {"f", "/dev/full", 0, 29},  {"f", "no/f", 0, 2},
        {"folder", "g", 0, 30},    {"folder", "folder", 0, 32}};
    const size_t descriptors = OpenDescriptors();
    for (const Row &row : rows) {
        SCOPED_TRACE(std::string(row.source) + " to " + row.target);
        EXPECT_FALSE(CopyFile(row.source, row.target, row.failIfExists));
        EXPECT_EQ(GetLastError(), row.error);
        EXPECT_EQ(ReadWholeFile("f") + ReadWholeFile("g"), "preciousother");
        EXPECT_FALSE(FileExists("new"));
        EXPECT_EQ(OpenDescriptors(), descriptors);
    }
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
        EXPECT_FALSE(CopyFile(source.c_str(), (disk + "/f").c_str(), FALSE)) << size;
        EXPECT_EQ(GetLastError(), 29u);
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
        EXPECT_EQ(GetTempPath(row.size, buffer), row.result);
        EXPECT_STREQ(buffer, row.text);
        EXPECT_EQ(GetLastError(), 0u);
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
    EXPECT_EQ(GetTempFileName(".", "t", 7, name), 0u);
    EXPECT_EQ(GetLastError(), 80u);
    for (const char *free : {"./t0000.tmp", "./tabcd.tmp"}) {
        unlink(free);
        const uint32_t number = GetTempFileName(".", "t", 7, name);
        EXPECT_EQ(number, strtoul(free + 3, nullptr, 16));
        EXPECT_STREQ(name, free);
        EXPECT_EQ(GetLastError(), 2u);
        WriteWholeFile(free, "");
    }
    EXPECT_EQ(GetTempFileName(nullptr, "t", 0, name) + GetLastError(), 0u);
}

TEST(Volumes, TellTheRoomOfAFileSystem)
{
    uint32_t room[4] = {7, 7, 7, 7};
    EXPECT_FALSE(GetDiskFreeSpace("/", &room[0], &room[1], &room[2], nullptr));
    EXPECT_EQ(room[0] + room[1] + room[2], 21u);
    EXPECT_FALSE(GetDiskFreeSpace("/", &room[0], &room[1], &room[2], &room[3]));
    EXPECT_EQ(room[0] * room[1], 1024u);
    EXPECT_LT(room[2], room[3]);
    EXPECT_FALSE(GetDiskFreeSpace("/no/such", &room[0], &room[1], &room[2], &room[3]));
    EXPECT_EQ(room[0] + room[1] + room[2] + room[3], 0u);
}

} // namespace
