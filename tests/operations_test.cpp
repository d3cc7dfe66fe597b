// Operations on whole files: attributes, copies, moves, temporary names, and what they leave.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/vfs.h>
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
    struct Row {
        mode_t before;
        uint32_t told, set;
        mode_t after;
    };
    const Row rows[] = {
        {0640, 0x20, 1, 0444}, {0750, 0x20, 0, 0776},   {0444, 0x21, 0x20, 0666},
        {0555, 0x21, 3, 0555}, {04711, 0x20, 1, 04555}, {0200, 0x20, 0x80, 0666},
    };
    for (const Row &row : rows) {
        chmod(file.c_str(), row.before);
        EXPECT_EQ(GetFileAttributes(file.c_str()), row.told);
        EXPECT_TRUE(SetFileAttributes(file.c_str(), row.set));
        EXPECT_EQ(ModeOf(file), row.after);
    }
    EXPECT_EQ(GetFileAttributes(folder.path().c_str()), 0x10u);
    chmod(folder.path().c_str(), 0555);
    EXPECT_EQ(GetFileAttributes(folder.path().c_str()), 0x11u);
    EXPECT_TRUE(PathIsDirectory(folder.path().c_str()));
    chmod(folder.path().c_str(), 0755);
    EXPECT_EQ(GetFileAttributes("/dev/null"), 0x20u);
    EXPECT_EQ(GetFileAttributes(folder.file("no").c_str()), 0u);
    EXPECT_EQ(GetLastError(), 31u);
    EXPECT_FALSE(SetFileAttributes(folder.file("no").c_str(), 0));
    EXPECT_EQ(GetLastError(), 2u);
}

TEST(Operations, MakeAndRemoveNames)
{
    ScratchFolder folder;
    const std::string sub = folder.file("sub"), file = folder.file("sub/f");
    EXPECT_TRUE(CreateDirectory(sub.c_str(), nullptr));
    EXPECT_FALSE(CreateDirectory(sub.c_str(), nullptr));
    EXPECT_EQ(GetLastError(), 80u);
    WriteWholeFile(file, "x");
    EXPECT_FALSE(DeleteFile(sub.c_str()));
    EXPECT_EQ(GetLastError(), 145u);
    EXPECT_FALSE(RemoveDirectory(file.c_str()));
    EXPECT_EQ(GetLastError(), 123u);
    EXPECT_TRUE(DeleteFile(file.c_str()));
    EXPECT_FALSE(DeleteFile(file.c_str()));
    EXPECT_EQ(GetLastError(), 2u);
    EXPECT_TRUE(DeleteFile(sub.c_str()));
    EXPECT_EQ(GetLastError(), 0u);
    const std::string tooLong = folder.file(std::string(300, 'x'));
    EXPECT_FALSE(RemoveDirectory(tooLong.c_str()));
    EXPECT_EQ(GetLastError(), 154u);
}

TEST(MoveFile, MovesOntoNamesAndIntoFolders)
{
    ScratchFolder folder;
    const auto move = [&](const std::string &from, const std::string &to) {
        return MoveFile(folder.file(from).c_str(), folder.file(to).c_str());
    };
    const std::string longName = "a:" + std::string(100, 'n') + "." + std::string(100, 'e');
    mkdir(folder.file("in").c_str(), 0777);
    mkdir(folder.file("closed").c_str(), 0555);
    mkdir(folder.file("moved").c_str(), 0777);
    for (const std::string &name : {std::string("a"), std::string("b"), longName})
        WriteWholeFile(folder.file(name), name);
    EXPECT_TRUE(move("a", "new"));
    EXPECT_EQ(GetLastError(), 31u);
    EXPECT_TRUE(move("new", "b"));
    EXPECT_EQ(GetLastError(), 0u);
    EXPECT_EQ(ReadWholeFile(folder.file("b")), "a");
    EXPECT_TRUE(move("b", "in/"));
    EXPECT_TRUE(move(longName, "in"));
    EXPECT_EQ(ReadWholeFile(folder.file("in/" + longName)), longName);
    EXPECT_FALSE(move("in/b", "closed")); // no target folder without the write bit
    EXPECT_EQ(GetLastError(), 123u);
    EXPECT_TRUE(move("moved", "closed")); // a writable folder does not move into another
    EXPECT_EQ(GetLastError(), 0u);
    EXPECT_TRUE(move("closed", "elsewhere"));
    EXPECT_EQ(GetLastError(), 0u);
    EXPECT_FALSE(move("absent", "x"));
    EXPECT_EQ(GetLastError(), 2u);
}

TEST(CopyFile, CopiesBytesAndTheReadOnlyState)
{
    ScratchFolder folder;
    const std::string source = folder.file("source"), target = folder.file("target");
    const size_t descriptors = OpenDescriptors();
    for (const size_t size : {0, 1, 4095, 65535, 65536, 65537, 1000000}) {
        std::string bytes(size, 'x');
        for (size_t i = 0; i < size; i++)
            bytes[i] = static_cast<char>(i * 7919 >> 8);
        for (const mode_t mode : {0444, 0640, 0755}) {
            unlink(target.c_str());
            WriteWholeFile(source, bytes);
            chmod(source.c_str(), mode);
            EXPECT_TRUE(CopyFile(source.c_str(), target.c_str(), TRUE));
            EXPECT_EQ(GetLastError(), 0u);
            EXPECT_TRUE(ReadWholeFile(target) == bytes);
            EXPECT_EQ(ModeOf(target), mode == 0444 ? 0444u : 0666u);
            unlink(source.c_str());
        }
    }
    // What the kernel does not copy: a file without a size, a device.
    EXPECT_TRUE(CopyFile("/proc/self/status", source.c_str(), FALSE));
    EXPECT_GT(ReadWholeFile(source).size(), 100u);
    EXPECT_TRUE(CopyFile("/dev/null", source.c_str(), FALSE));
    EXPECT_EQ(ReadWholeFile(source), "");
    EXPECT_EQ(OpenDescriptors(), descriptors);
}

TEST(CopyFile, KeepsHolesAndBytesOfASparseFile)
{
    ScratchFolder folder;
    const std::string source = folder.file("source"), target = folder.file("target");
    const off_t size = off_t{5} << 30;
    const off_t places[] = {0, 100000, off_t{3} << 30, size - 70000};
    const int from = open(source.c_str(), O_RDWR | O_CREAT, 0666);
    for (const off_t place : places)
        ASSERT_EQ(pwrite(from, &place, sizeof place, place), 8);
    ASSERT_EQ(ftruncate(from, size), 0);
    close(from);
    ASSERT_TRUE(CopyFile(source.c_str(), target.c_str(), FALSE));
    struct stat status = {};
    stat(target.c_str(), &status);
    EXPECT_EQ(status.st_size, size);
    EXPECT_LT(status.st_blocks, 10000);
    const int to = open(target.c_str(), O_RDONLY);
    for (const off_t place : places) {
        off_t got = -1;
        EXPECT_EQ(pread(to, &got, sizeof got, place), 8);
        EXPECT_EQ(got, place);
    }
    close(to);
}

TEST(CopyFile, FailsWithoutHarm)
{
    ScratchFolder folder;
    const auto name = [&](const char *part) { return folder.file(part); };
    WriteWholeFile(name("f"), "precious");
    WriteWholeFile(name("g"), "other");
    mkdir(name("folder").c_str(), 0777);
    link(name("f").c_str(), name("hard").c_str());
    symlink("f", name("soft").c_str());
    struct Row {
        std::string source, target;
        BOOL failIfExists;
        uint32_t error;
    };
    const Row rows[] = {
        {name("f"), name("g"), 1, 80},       {name("f"), name("f"), 1, 80},
        {name("f"), name("f"), 0, 32},       {name("f"), name("hard"), 0, 32},
        {name("soft"), name("f"), 0, 32},    {name("f"), name("folder/../soft"), 0, 32},
        {name("absent"), name("new"), 1, 2}, {name("absent"), name("g"), 0, 2},
        {name("f"), name("folder"), 0, 123}, {name("folder"), name("target"), 0, 30},
        {name("f"), "/dev/full", 0, 29},     {name("f"), name("no/f"), 0, 2},
    };
    const size_t descriptors = OpenDescriptors();
    for (const Row &row : rows) {
        SCOPED_TRACE(row.source + " to " + row.target);
        EXPECT_FALSE(CopyFile(row.source.c_str(), row.target.c_str(), row.failIfExists));
        EXPECT_EQ(GetLastError(), row.error);
        EXPECT_EQ(ReadWholeFile(name("f")), "precious");
        EXPECT_EQ(ReadWholeFile(name("g")), "other");
        EXPECT_FALSE(FileExists(name("new")));
        EXPECT_EQ(OpenDescriptors(), descriptors);
    }
}

TEST(CopyFile, TellsAFullDiskForFilesOfAnySize)
{
    ScratchFolder folder;
    const std::string disk = folder.file("disk"), target = disk + "/f", source = folder.file("f");
    mkdir(disk.c_str(), 0777);
    if (mount("none", disk.c_str(), "tmpfs", 0, "size=64k") != 0)
        GTEST_SKIP() << "no right to mount";
    WriteWholeFile(disk + "/filler", std::string(60000, 'x'));
    for (const size_t size : {size_t{5000}, size_t{70000}, size_t{1} << 20}) {
        WriteWholeFile(source, std::string(size, 'y'));
        EXPECT_FALSE(CopyFile(source.c_str(), target.c_str(), FALSE)) << size;
        EXPECT_EQ(GetLastError(), 29u);
        unlink(target.c_str());
    }
    umount(disk.c_str());
}

TEST(Temporary, FindsTheFolderWithASlashWhereThereIsRoom)
{
    char buffer[64];
    SetEnvironmentVariable("TMP", "/var/tmp");
    struct Row {
        uint32_t size, result;
        const char *text;
    };
    const Row rows[] = {{64, 9, "/var/tmp/"}, {10, 9, "/var/tmp/"}, {11, 9, "/var/tmp/"},
                        {9, 8, "/var/tmp"},   {8, 9, "*"},          {0, 9, "*"}};
    for (const Row &row : rows) {
        strcpy(buffer, "*");
        EXPECT_EQ(GetTempPath(row.size, buffer), row.result) << row.size;
        EXPECT_STREQ(buffer, row.text);
        EXPECT_EQ(GetLastError(), 0u);
    }
    SetEnvironmentVariable("TMP", "");
    SetEnvironmentVariable("TEMP", "t/");
    EXPECT_EQ(GetTempPath(64, buffer), 2u);
    SetEnvironmentVariable("TEMP", nullptr);
    chdir("/usr");
    EXPECT_EQ(GetTempPath(64, buffer), 5u);
    EXPECT_STREQ(buffer, "/usr/");
    EXPECT_EQ(GetLastError(), 0u);
}

TEST(Temporary, FindsTheOneNameThatIsFree)
{
    ScratchFolder folder;
    std::string name(folder.path().size() + 20, '*');
    const auto taken = [&](unsigned number) {
        char text[16];
        snprintf(text, sizeof text, "t%04x.tmp", number);
        return folder.file(text);
    };
    const auto take = [&](unsigned number) {
        close(open(taken(number).c_str(), O_CREAT | O_WRONLY, 0666));
    };
    for (unsigned number = 0; number <= 0xFFFF; number++)
        take(number);
    EXPECT_EQ(GetTempFileName(folder.path().c_str(), "t", 7, name.data()), 0u);
    EXPECT_EQ(GetLastError(), 80u);
    for (const unsigned number : {0xABCDu, 0u}) {
        unlink(taken(number).c_str());
        EXPECT_EQ(GetTempFileName(folder.path().c_str(), "t", 7, name.data()), number);
        EXPECT_EQ(GetLastError(), 2u);
        EXPECT_EQ(name.c_str(), taken(number));
        take(number);
    }
    EXPECT_EQ(GetTempFileName(nullptr, "t", 0, name.data()), 0u);
    EXPECT_EQ(GetLastError(), 0u);
}

TEST(Volumes, TellTheRoomOfAFileSystem)
{
    uint32_t sectors = 7, bytes = 7, available = 7, total = 7;
    EXPECT_FALSE(GetDiskFreeSpace("/", &sectors, &bytes, &available, nullptr));
    EXPECT_EQ(sectors + bytes + available, 21u);
    struct statfs room = {};
    statfs("/", &room);
    SetLastError(1234);
    EXPECT_FALSE(GetDiskFreeSpace("/", &sectors, &bytes, &available, &total));
    EXPECT_EQ(GetLastError(), 1234u);
    EXPECT_EQ(sectors, 1u);
    EXPECT_EQ(bytes, 1024u);
    EXPECT_EQ(total, static_cast<uint32_t>(room.f_blocks));
    EXPECT_FALSE(GetDiskFreeSpace("/no/such", &sectors, &bytes, &available, &total));
    EXPECT_EQ(sectors + bytes + available + total, 0u);
    EXPECT_EQ(GetDriveType("/") + GetLogicalDrives(), 0u);
    EXPECT_EQ(GetLastError(), 0u);
}

} // namespace
