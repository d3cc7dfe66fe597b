// Operations on whole files: attributes, moves, copies, temporary names, and what they leave.
#include <array>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include "support/last_error.h"
#include "support/library.h"
#include "wexelxi.h"

namespace {

struct Operations : testing::Test {
    Operations() { EXPECT_EQ(chdir(folder.path().c_str()), 0); }

    const ScratchFolder folder;
};

struct stat StatusOf(const char *path)
{
    struct stat status = {};
    stat(path, &status);
    return status;
}

TEST_F(Operations, ShowAndSetTheOwnersWriteBit)
{
    WriteWholeFile("f", "");
    const struct {
        mode_t before;
        uint32_t told, set;
        mode_t after;
    } rows[] = {
        {0640, 0x20, 1, 0444}, {0750, 0x20, 0, 0776},   {0444, 0x21, 0x20, 0666},
        {0555, 0x21, 3, 0555}, {04711, 0x20, 1, 04555},
    };
    for (const auto &row : rows) {
        chmod("f", row.before);
        EXPECT_OUTCOME(GetFileAttributes("f"), row.told, ERROR_SUCCESS);
        EXPECT_OUTCOME(SetFileAttributes("f", row.set), TRUE, ERROR_SUCCESS);
        EXPECT_EQ(StatusOf("f").st_mode, S_IFREG | row.after);
    }
    EXPECT_OUTCOME(GetFileAttributes("no"), 0u, ERROR_GEN_FAILURE);
    EXPECT_OUTCOME(SetFileAttributes("no", 0), FALSE, ERROR_FILE_NOT_FOUND);
    EXPECT_OUTCOME(PathIsDirectory("."), TRUE, ERROR_SUCCESS);
    EXPECT_OUTCOME(PathIsDirectory("f"), FALSE, ERROR_SUCCESS);
}

TEST_F(Operations, MakeMoveAndRemoveNames)
{
    const std::string longName = "d.d/a:" + std::string(100, 'n') + "." + std::string(100, 'e');
    for (const char *name : {"in", "closed", "moved", "d.d"})
        EXPECT_OUTCOME(CreateDirectory(name, nullptr), TRUE, ERROR_SUCCESS);
    EXPECT_OUTCOME(CreateDirectory("in", nullptr), FALSE, ERROR_FILE_EXISTS);
    chmod("closed", 0555);
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
    EXPECT_OUTCOME(RemoveDirectory("elsewhere"), FALSE, ERROR_FILE_NOT_FOUND);
    EXPECT_OUTCOME(DeleteFile(std::string(300, 'x').c_str()), FALSE, ERROR_LABEL_TOO_LONG);
}

TEST_F(Operations, CopyBytesHolesAndTheReadOnlyState)
{
    std::string bytes(131072, 'x');
    for (size_t i = 0; i < bytes.size(); i++)
        bytes[i] = static_cast<char>(i * 7919 >> 8);
    const struct {
        size_t size; // of each of two runs of data, with a hole behind it
        off_t hole;
        mode_t mode, copied;
    } rows[] = {
        {0, 0, 0640, 0666},     {1, 0, 0444, 0444},       {32768, 0, 0750, 0666},
        {70000, 1, 0555, 0444}, {0, 1 << 24, 0666, 0666}, {70000, 1 << 24, 0666, 0666},
    };
    const size_t descriptors = OpenDescriptors();
    for (const auto &row : rows) {
        SCOPED_TRACE(testing::Message() << row.size << " and a hole of " << row.hole);
        const off_t half = static_cast<off_t>(row.size) + row.hole;
        const int source = open("source", O_WRONLY | O_CREAT, 0666);
        for (const off_t place : {off_t{0}, half})
            ASSERT_EQ(pwrite(source, bytes.data(), row.size, place),
                      static_cast<ssize_t>(row.size));
        ASSERT_EQ(ftruncate(source, 2 * half), 0);
        fchmod(source, row.mode);
        close(source);
        EXPECT_OUTCOME(CopyFile("source", "target", TRUE), TRUE, ERROR_SUCCESS);
        EXPECT_TRUE(ReadWholeFile("target") == ReadWholeFile("source"));
        EXPECT_EQ(StatusOf("target").st_mode, S_IFREG | row.copied);
        EXPECT_LT(StatusOf("target").st_blocks, 10000);
        EXPECT_TRUE(DeleteFile("source") && DeleteFile("target"));
    }
    // What the kernel does not copy, to what only a link stands for.
    ASSERT_EQ(mkfifo("pipe", 0666), 0);
    ASSERT_EQ(symlink("source", "target"), 0);
    if (fork() == 0) {
        WriteWholeFile("pipe", bytes);
        _exit(0);
    }
    EXPECT_OUTCOME(CopyFile("pipe", "target", TRUE), TRUE, ERROR_SUCCESS);
    EXPECT_TRUE(ReadWholeFile("source") == bytes);
    EXPECT_EQ(OpenDescriptors(), descriptors);
}

TEST_F(Operations, CopyWithoutHarmOrNotAtAll)
{
    for (const char *name : {"closed", "folder"})
        mkdir(name, 0777);
    const std::string big(70000, 'b');
    for (const char *name : {"f", "g", "secret", "closed/f"})
        WriteWholeFile(name, big + name);
    WriteWholeFile("small", "small");
    ASSERT_EQ(link("f", "hard"), 0);
    ASSERT_EQ(symlink("f", "soft"), 0);
    ASSERT_EQ(symlink("loop", "loop"), 0);
    for (const char *name : {".", "folder", "g", "closed/f"})
        chmod(name, 0777);
    chmod("secret", 0222);
    chmod("closed", 0311); // to be entered, not to be listed
    const struct {
        const char *source, *target;
        BOOL failIfExists;
        uint32_t error;
    } rows[] = {
        {"f", "g", TRUE, ERROR_FILE_EXISTS},
        {"f", "f", TRUE, ERROR_FILE_EXISTS},
        {"f", "closed/f", TRUE, ERROR_FILE_EXISTS},
        {"f", "secret", TRUE, ERROR_ACCESS_DENIED},
        {"f", "loop", TRUE, ERROR_GEN_FAILURE},
        {"f", "loop", FALSE, ERROR_GEN_FAILURE},
        {"f", "f", FALSE, ERROR_SHARING_VIOLATION},
        {"f", "hard", FALSE, ERROR_SHARING_VIOLATION},
        {"f", "folder/../soft", FALSE, ERROR_SHARING_VIOLATION},
        {"absent", "new", TRUE, ERROR_FILE_NOT_FOUND},
        {"absent", "g", FALSE, ERROR_FILE_NOT_FOUND},
        {"f", "folder", FALSE, ERROR_INVALID_NAME},
        {"folder", "g", FALSE, ERROR_READ_FAULT},
        {"folder", "part", FALSE, ERROR_READ_FAULT},
        {"f", "/dev/full", FALSE, ERROR_WRITE_FAULT},
        {"small", "/dev/full", FALSE, ERROR_WRITE_FAULT}, // told by its flush
        {"f", "no/f", FALSE, ERROR_FILE_NOT_FOUND},
    };
    const size_t descriptors = OpenDescriptors();
    ASSERT_EQ(seteuid(geteuid() == 0 ? 65534 : geteuid()), 0);
    size_t bytes = 0;
    for ([[maybe_unused]] const int round : {1, 2}) { // the second finds room on the heap
        bytes = HeapBytes();
        for (const auto &row : rows)
            EXPECT_OUTCOME(CopyFile(row.source, row.target, row.failIfExists), FALSE, row.error)
                << row.source << " to " << row.target;
    }
    seteuid(getuid());
    EXPECT_EQ(HeapBytes(), bytes);
    EXPECT_EQ(OpenDescriptors(), descriptors);
    EXPECT_FALSE(FileExists("new"));
    chmod("secret", 0666);
    for (const std::string name : {"f", "g", "secret", "closed/f"})
        EXPECT_TRUE(ReadWholeFile(name) == big + name) << name;
}

TEST(GetTempPath, AddsASlashWhereThereIsRoom)
{
    const struct {
        const char *tmp, *temp;
        uint32_t size, result;
        const char *text;
    } rows[] = {
        {"/var/tmp", "x", 10, 9, "/var/tmp/"},
        {"/var/tmp", "x", 9, 8, "/var/tmp"},
        {"/var/tmp", nullptr, 8, 9, "*"},
        {"/var/tmp", "x", 0, 9, "*"},
        {"", "t/", 64, 2, "t/"},
        {nullptr, nullptr, 64, 5, "/usr/"},
    };
    ASSERT_EQ(chdir("/usr"), 0);
    for (const auto &row : rows) {
        char buffer[64] = "*";
        SetEnvironmentVariable("TMP", row.tmp);
        SetEnvironmentVariable("TEMP", row.temp);
        EXPECT_OUTCOME(GetTempPath(row.size, buffer), row.result, ERROR_SUCCESS);
        EXPECT_STREQ(buffer, row.text);
    }
    EXPECT_OUTCOME(GetTempPath(64, nullptr), 5u, ERROR_SUCCESS);
}

TEST(GetTempFileName, FindsTheOneThatIsFree)
{
    if (access("/dev/shm", W_OK) == 0) // where so many names are quickly made
        setenv("TMPDIR", "/dev/shm", 1);
    const ScratchFolder folder;
    ASSERT_EQ(chdir(folder.path().c_str()), 0);
    char taken[16], name[32];
    for (unsigned number = 0; number <= 0xFFFF; number++) {
        snprintf(taken, sizeof taken, "./t%04x.tmp", number);
        mknod(taken, S_IFREG | 0666, 0);
    }
    EXPECT_OUTCOME(GetTempFileName(".", "t", 7, name), 0u, ERROR_FILE_EXISTS);
    // It counts up from the clock and on from 0, and so meets the second before the first.
    const uint32_t now = GetTickCount();
    for (const uint32_t far : {0x9000u, 0x7000u}) {
        const uint32_t number = (now + far) & 0xFFFF;
        snprintf(taken, sizeof taken, "./t%04x.tmp", number);
        unlink(taken);
        EXPECT_OUTCOME(GetTempFileName(".", "t", 7, name), number, ERROR_FILE_NOT_FOUND);
        EXPECT_STREQ(name, taken);
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
    const auto ask = [&](const char *path, size_t missing) {
        const auto at = [&](size_t i) { return i == missing ? nullptr : &room[i]; };
        return GetDiskFreeSpace(path, at(0), at(1), at(2), at(3));
    };
    for (const size_t missing : {0, 1, 2, 3})
        EXPECT_OUTCOME(ask("/", missing), FALSE, kUnchanged);
    EXPECT_EQ(room, (Room{7, 7, 7, 7}));
    EXPECT_OUTCOME(ask("/", 4), FALSE, kUnchanged);
    EXPECT_EQ(room, (Room{1, 1024, room[2], static_cast<uint32_t>(status.f_blocks)}));
    EXPECT_TRUE(room[2] > 7 && room[2] < room[3]);
    EXPECT_OUTCOME(ask("/no/such", 4), FALSE, kUnchanged);
    EXPECT_EQ(room, (Room{}));
    EXPECT_OUTCOME(GetLogicalDrives(), 0u, ERROR_SUCCESS);
    EXPECT_OUTCOME(GetDriveType("/"), 0u, ERROR_SUCCESS);
    EXPECT_OUTCOME(GetVolumeInformation("/", nullptr, 0, nullptr, nullptr, nullptr, nullptr, 0),
                   FALSE, ERROR_SUCCESS);
}

} // namespace
