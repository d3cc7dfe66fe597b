// File handles: opening by disposition, any order of calls against a model, and what failures
// leave.
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include "support/last_error.h"
#include "support/library.h"
#include "wexelxi.h"

namespace {

constexpr uint32_t kReadWrite = GENERIC_READ | GENERIC_WRITE;

HANDLE Open(const std::string &path, uint32_t access, uint32_t disposition)
{
    return CreateFile(path.c_str(), access, 0, nullptr, disposition, 0, nullptr);
}

TEST(CreateFile, FollowsItsDispositions)
{
    struct Row {
        const char *name;
        uint32_t access, disposition;
        bool opens;
        uint32_t error;
        std::string content; // afterwards, with "x" written
    };
    const Row rows[] = {{"old", kReadWrite, CREATE_NEW, false, 80, "12345"},
                        {"folder", kReadWrite, CREATE_NEW, false, 80, ""},
                        {".a", kReadWrite, CREATE_NEW, false, 80, "12345"}, // no search finds it
                        {"new", kReadWrite, CREATE_NEW, true, 2, "x"},
                        {"old", GENERIC_READ, CREATE_ALWAYS, true, 0, "x"},
                        {"folder", GENERIC_WRITE, CREATE_ALWAYS, false, 123, ""},
                        {"old", GENERIC_READ, OPEN_EXISTING, true, 0, "12345"},
                        {"old", GENERIC_WRITE, OPEN_EXISTING, true, 0, "x2345"},
                        {"new", GENERIC_WRITE, OPEN_EXISTING, false, 2, ""},
                        {"old/x", GENERIC_WRITE, OPEN_EXISTING, false, 123, ""},
                        {"old", GENERIC_WRITE, OPEN_ALWAYS, true, 0, "x2345"},
                        {"new", GENERIC_READ, OPEN_ALWAYS, true, 2, "x"},
                        {"no/new", GENERIC_WRITE, OPEN_ALWAYS, false, 2, ""},
                        {"old", GENERIC_WRITE, TRUNCATE_EXISTING, true, 0, "x2345"},
                        {"b\xE9\xFF", GENERIC_WRITE, CREATE_NEW, true, 2, "x"}};
    for (const Row &row : rows) {
        SCOPED_TRACE(testing::Message() << row.name << " " << row.disposition);
        ScratchFolder folder;
        WriteWholeFile(folder.file("old"), "12345");
        WriteWholeFile(folder.file(".a"), "12345");
        mkdir(folder.file("folder").c_str(), 0777);
        const size_t descriptors = OpenDescriptors();
        HANDLE handle = Open(folder.file(row.name), row.access, row.disposition);
        EXPECT_EQ(GetLastError(), row.error);
        ASSERT_EQ(handle != INVALID_HANDLE_VALUE, row.opens);
        WriteFile(handle, "x", 1, nullptr, nullptr);
        EXPECT_EQ(CloseHandle(handle), row.opens);
        EXPECT_EQ(GetLastError(), row.opens ? 0u : 31u);
        EXPECT_EQ(ReadWholeFile(folder.file(row.name)), row.content);
        EXPECT_EQ(OpenDescriptors(), descriptors);
    }
}

// The twin: a stream of the platform's on a file of its own, asked step by step as the contract
// has it. Somebody else appends to both files when they are flushed.
TEST(FileHandle, ActsAsItsStreamInAnyOrderOfCalls)
{
    ScratchFolder folder;
    HANDLE handle = Open(folder.file("f"), kReadWrite, CREATE_ALWAYS);
    FILE *twin = fopen(folder.file("twin").c_str(), "w+");
    const auto append = [&folder](const char *name, const std::string &bytes) {
        std::ofstream(folder.file(name), std::ios::app) << bytes;
    };
    std::mt19937 random(20);
    for (int step = 0; step < 20000; step++) {
        SCOPED_TRACE(step);
        std::string part(random() % 4 ? random() % 40 : random() % 20000, static_cast<char>(step));
        std::string twinPart = part;
        const auto size = static_cast<uint32_t>(part.size());
        uint32_t count = 99;
        int64_t wide = -1;
        switch (random() % 7) {
        case 0:
            ASSERT_TRUE(ReadFile(handle, part.data(), size, &count, nullptr));
            fflush(twin);
            ASSERT_EQ(count, fread(twinPart.data(), 1, size, twin));
            ASSERT_TRUE(part == twinPart);
            break;
        case 1:
            ASSERT_TRUE(WriteFile(handle, part.data(), size, &count, nullptr));
            ASSERT_EQ(count, fwrite(part.data(), 1, size, twin));
            break;
        case 2: {
            const uint32_t method = random() % 4;
            const int origins[] = {SEEK_SET, SEEK_CUR, SEEK_END, SEEK_SET};
            const int32_t offset = static_cast<int32_t>(random() % 30000) - 10000;
            const bool good = fseek(twin, offset, origins[method]) == 0;
            EXPECT_OUTCOME(SetFilePointer(handle, offset, nullptr, method),
                           good ? static_cast<uint32_t>(ftell(twin)) : INVALID_SET_FILE_POINTER,
                           good ? ERROR_SUCCESS : ERROR_INVALID_ACCESS);
            break;
        }
        case 3: {
            const long place = ftell(twin);
            fseek(twin, 0, SEEK_END);
            ASSERT_TRUE(GetFileSizeEx(handle, &wide));
            ASSERT_EQ(wide, ftell(twin));
            fseek(twin, place, SEEK_SET);
            break;
        }
        case 4:
            ASSERT_TRUE(SetEndOfFile(handle));
            fseek(twin, 0, SEEK_CUR);
            ASSERT_EQ(ftruncate(fileno(twin), ftell(twin)), 0);
            break;
        case 5:
            ASSERT_TRUE(FlushFileBuffers(handle));
            fflush(twin);
            append("f", part);
            append("twin", part);
            break;
        default:
            ASSERT_TRUE(FlushFileBuffers(handle));
            fflush(twin);
            ASSERT_TRUE(ReadWholeFile(folder.file("f")) == ReadWholeFile(folder.file("twin")));
        }
    }
    fclose(twin);
    EXPECT_TRUE(CloseHandle(handle));
    EXPECT_TRUE(ReadWholeFile(folder.file("f")) == ReadWholeFile(folder.file("twin")));
}

TEST(FileHandle, RefusesWhatIsNone)
{
    uint32_t stranger[16] = {7}; // a record of another kind
    for (HANDLE handle : {HANDLE{nullptr}, INVALID_HANDLE_VALUE, HANDLE{stranger}}) {
        uint32_t count = 77;
        int64_t wide = 77;
        const auto refused = [](uint32_t result, uint32_t failure, uint32_t error) {
            EXPECT_EQ(result, failure);
            EXPECT_EQ(GetLastError(), error);
            SetLastError(1234);
        };
        refused(CloseHandle(handle), FALSE, 31);
        refused(_lclose(handle), HFILE_ERROR, 31);
        refused(ReadFile(handle, &wide, 1, &count, nullptr), FALSE, 31);
        refused(WriteFile(handle, "x", 1, &count, nullptr), FALSE, 31);
        refused(SetFilePointerEx(handle, 0, &wide, FILE_BEGIN), FALSE, 6);
        refused(GetFileSizeEx(handle, &wide), FALSE, 6);
        refused(GetFileSize(handle, nullptr), INVALID_FILE_SIZE, 6);
        refused(SetEndOfFile(handle), FALSE, 6);
        refused(FlushFileBuffers(handle), FALSE, 31);
        refused(LockFile(handle, 0, 0, 1, 0), FALSE, 31);
        refused(_lopen("x", 0) + _lread(handle, &wide, 1), 0, 0);
        EXPECT_EQ(count + wide, 154);
    }
}

TEST(FileHandle, TellsShortWritesAndAFullDevice)
{
    uint32_t count = 9;
    HANDLE handle = Open("/dev/zero", GENERIC_READ, OPEN_EXISTING);
    EXPECT_FALSE(WriteFile(handle, "x", 1, &count, nullptr));
    EXPECT_EQ(GetLastError(), 29u);
    EXPECT_EQ(count, 0u);
    EXPECT_TRUE(CloseHandle(handle));

    handle = Open("/dev/full", GENERIC_WRITE, OPEN_EXISTING);
    const size_t descriptors = OpenDescriptors();
    EXPECT_TRUE(WriteFile(handle, "x", 1, &count, nullptr)); // it fits the buffer
    EXPECT_FALSE(CloseHandle(handle));
    EXPECT_EQ(GetLastError(), 31u);
    EXPECT_EQ(OpenDescriptors(), descriptors - 1);
    EXPECT_FALSE(ReadFile(handle, &count, 1, nullptr, nullptr)); // the record is still there
    EXPECT_TRUE(CloseHandle(handle));
}

TEST(FileHandle, MeasuresAndLocksFarOut)
{
    ScratchFolder folder;
    HANDLE handle = Open(folder.file("sparse"), kReadWrite, CREATE_ALWAYS);
    uint32_t high = 77;
    ASSERT_TRUE(SetFilePointerEx(handle, int64_t{5} << 30, nullptr, FILE_BEGIN));
    ASSERT_TRUE(SetEndOfFile(handle));
    EXPECT_EQ(GetFileSize(handle, &high), 1u << 30);
    EXPECT_EQ(high, 77u);

    const int other = open(folder.file("sparse").c_str(), O_RDWR);
    const auto locked = [other](off_t place) {
        struct flock range = {F_WRLCK, SEEK_SET, place, 1, 0};
        return fcntl(other, F_OFD_GETLK, &range) == 0 && range.l_type == F_WRLCK;
    };
    EXPECT_TRUE(LockFile(handle, 3000000000u, 0, 10, 0));
    EXPECT_TRUE(locked(3000000009) && !locked(3000000010) && !locked(2999999999));
    EXPECT_FALSE(UnlockFile(handle, 3000000000u, 0, 10, 1));
    EXPECT_EQ(GetLastError(), 31u);
    EXPECT_TRUE(UnlockFile(handle, 3000000000u, 0, 9, 0));
    EXPECT_TRUE(locked(3000000009) && !locked(3000000008));
    close(other);
    EXPECT_TRUE(CloseHandle(handle));
}

TEST(FileHandle, ReadsOnAfterASignal)
{
    ScratchFolder folder;
    const std::string pipe = folder.file("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    if (fork() == 0) {
        const int descriptor = open(pipe.c_str(), O_WRONLY);
        for (int i = 0; i < 20 && write(descriptor, "0123456789", 10) == 10; i++)
            usleep(5000);
        _exit(0);
    }
    HANDLE handle = Open(pipe, GENERIC_READ, OPEN_EXISTING);
    struct sigaction interrupting = {};
    interrupting.sa_handler = [](int) {};
    sigaction(SIGALRM, &interrupting, nullptr);
    ualarm(1000, 1000);
    char bytes[300];
    uint32_t count = 0;
    EXPECT_TRUE(ReadFile(handle, bytes, sizeof bytes, &count, nullptr));
    ualarm(0, 0);
    EXPECT_EQ(count, 200u);
    EXPECT_TRUE(CloseHandle(handle));
}

} // namespace
