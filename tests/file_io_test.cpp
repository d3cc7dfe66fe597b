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
    const Row rows[] = {
        {"old", kReadWrite, CREATE_NEW, false, ERROR_FILE_EXISTS, "12345"},
        {".a", kReadWrite, CREATE_NEW, false, ERROR_FILE_EXISTS, "12345"}, // no search finds it
        {"folder", kReadWrite, CREATE_NEW, false, ERROR_FILE_EXISTS, ""},
        {"new", kReadWrite, CREATE_NEW, true, ERROR_FILE_NOT_FOUND, "x"},
        {"b\xE9\xFF", GENERIC_READ, CREATE_NEW, true, ERROR_FILE_NOT_FOUND, "x"},
        {"no/new", kReadWrite, CREATE_NEW, false, ERROR_FILE_NOT_FOUND, ""},
        {"old", GENERIC_READ, CREATE_ALWAYS, true, ERROR_SUCCESS, "x"},
        {"folder", GENERIC_WRITE, CREATE_ALWAYS, false, ERROR_INVALID_NAME, ""},
        {"old", GENERIC_READ, OPEN_EXISTING, true, ERROR_SUCCESS, "12345"},
        {"old", GENERIC_WRITE, OPEN_EXISTING, true, ERROR_SUCCESS, "x2345"},
        {"new", GENERIC_WRITE, OPEN_EXISTING, false, ERROR_FILE_NOT_FOUND, ""},
        {"old/x", GENERIC_WRITE, OPEN_EXISTING, false, ERROR_INVALID_NAME, ""},
        {"old", GENERIC_WRITE, OPEN_ALWAYS, true, ERROR_SUCCESS, "x2345"},
        {"new", GENERIC_READ, OPEN_ALWAYS, true, ERROR_FILE_NOT_FOUND, "x"},
        {"no/new", GENERIC_WRITE, OPEN_ALWAYS, false, ERROR_FILE_NOT_FOUND, ""},
        {"old", GENERIC_WRITE, TRUNCATE_EXISTING, true, ERROR_SUCCESS, "x2345"}};
    for (const Row &row : rows) {
        SCOPED_TRACE(testing::Message() << row.name << " " << row.disposition);
        ScratchFolder folder;
        WriteWholeFile(folder.file("old"), "12345");
        WriteWholeFile(folder.file(".a"), "12345");
        mkdir(folder.file("folder").c_str(), 0777);
        const size_t descriptors = OpenDescriptors();
        HANDLE handle = nullptr;
        EXPECT_LAST_ERROR(handle = Open(folder.file(row.name), row.access, row.disposition),
                          row.error);
        ASSERT_EQ(handle != INVALID_HANDLE_VALUE, row.opens);
        WriteFile(handle, "x", 1, nullptr, nullptr);
        EXPECT_OUTCOME(_lclose(handle), row.opens ? 0 : HFILE_ERROR,
                       row.opens ? ERROR_SUCCESS : ERROR_GEN_FAILURE);
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
            const int32_t offset =
                random() % 4 ? static_cast<int32_t>(random() % 30000) - 10000 : 0;
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
        EXPECT_OUTCOME(CloseHandle(handle), FALSE, ERROR_GEN_FAILURE);
        EXPECT_OUTCOME(_lclose(handle), HFILE_ERROR, ERROR_GEN_FAILURE);
        EXPECT_OUTCOME(ReadFile(handle, &wide, 1, &count, nullptr), FALSE, ERROR_GEN_FAILURE);
        EXPECT_OUTCOME(WriteFile(handle, "x", 1, &count, nullptr), FALSE, ERROR_GEN_FAILURE);
        EXPECT_OUTCOME(SetFilePointerEx(handle, 0, &wide, FILE_BEGIN), FALSE, ERROR_INVALID_HANDLE);
        EXPECT_OUTCOME(GetFileSizeEx(handle, &wide), FALSE, ERROR_INVALID_HANDLE);
        EXPECT_OUTCOME(GetFileSize(handle, nullptr), INVALID_FILE_SIZE, ERROR_INVALID_HANDLE);
        EXPECT_OUTCOME(SetEndOfFile(handle), FALSE, ERROR_INVALID_HANDLE);
        EXPECT_OUTCOME(FlushFileBuffers(handle), FALSE, ERROR_GEN_FAILURE);
        EXPECT_OUTCOME(LockFile(handle, 0, 0, 1, 0), FALSE, ERROR_GEN_FAILURE);
        EXPECT_OUTCOME(_lopen("x", 0), 0u, ERROR_SUCCESS);
        EXPECT_OUTCOME(_lread(handle, &wide, 1), 0u, ERROR_SUCCESS);
        EXPECT_OUTCOME(_llseek(handle, 1, 0), 0, ERROR_SUCCESS);
        EXPECT_EQ(count, 77u);
        EXPECT_EQ(wide, 77);
    }
}

TEST(FileHandle, TellsShortWritesAndAFullDevice)
{
    uint32_t count = 9;
    HANDLE handle = Open("/dev/zero", GENERIC_READ, OPEN_EXISTING);
    EXPECT_OUTCOME(WriteFile(handle, "x", 1, &count, nullptr), FALSE, ERROR_WRITE_FAULT);
    EXPECT_EQ(count, 0u);
    EXPECT_TRUE(CloseHandle(handle));

    handle = Open("/dev/full", GENERIC_WRITE, OPEN_EXISTING);
    const size_t descriptors = OpenDescriptors();
    EXPECT_OUTCOME(WriteFile(handle, "x", 1, &count, nullptr), TRUE, ERROR_SUCCESS); // it fits
    EXPECT_OUTCOME(CloseHandle(handle), FALSE, ERROR_GEN_FAILURE);
    EXPECT_EQ(OpenDescriptors(), descriptors - 1);
    EXPECT_OUTCOME(ReadFile(handle, &count, 1, nullptr, nullptr), FALSE, ERROR_GEN_FAILURE);
    EXPECT_OUTCOME(CloseHandle(handle), TRUE, ERROR_SUCCESS); // the record was still there

    // A refused flush drops the bytes, and only a question about the place tells.
    handle = Open("/dev/full", GENERIC_WRITE, OPEN_EXISTING);
    for (const bool asks : {true, false}) {
        EXPECT_TRUE(WriteFile(handle, "x", 1, nullptr, nullptr));
        if (asks) {
            EXPECT_OUTCOME(SetEndOfFile(handle), FALSE, ERROR_GEN_FAILURE);
        } else {
            EXPECT_OUTCOME(FlushFileBuffers(handle), TRUE, ERROR_SUCCESS);
        }
    }
    EXPECT_OUTCOME(CloseHandle(handle), TRUE, ERROR_SUCCESS);
}

TEST(FileHandle, MeasuresAndLocksFarOut)
{
    ScratchFolder folder;
    HANDLE handle = Open(folder.file("sparse"), kReadWrite, CREATE_ALWAYS);
    uint32_t high = 77;
    int64_t place = 0;
    EXPECT_OUTCOME(SetFilePointerEx(handle, int64_t{5} << 30, &place, FILE_BEGIN), TRUE, 0);
    EXPECT_EQ(place, int64_t{5} << 30);
    EXPECT_OUTCOME(SetEndOfFile(handle), TRUE, ERROR_SUCCESS);
    EXPECT_OUTCOME(GetFileSize(handle, &high), 1u << 30, ERROR_SUCCESS);
    EXPECT_EQ(high, 77u);
    EXPECT_OUTCOME(SetFilePointerEx(handle, INT64_MAX, nullptr, FILE_END), FALSE,
                   ERROR_INVALID_ACCESS);

    const int other = open(folder.file("sparse").c_str(), O_RDWR);
    const auto locked = [other](off_t byte) {
        struct flock range = {F_WRLCK, SEEK_SET, byte, 1, 0};
        return fcntl(other, F_OFD_GETLK, &range) == 0 && range.l_type == F_WRLCK;
    };
    EXPECT_OUTCOME(LockFile(handle, 3000000000u, 0, 10, 0), TRUE, ERROR_SUCCESS);
    EXPECT_TRUE(locked(3000000009) && !locked(3000000010) && !locked(2999999999));
    EXPECT_OUTCOME(UnlockFile(handle, 3000000000u, 0, 10, 1), FALSE, ERROR_GEN_FAILURE);
    EXPECT_OUTCOME(UnlockFile(handle, 3000000000u, 1, 10, 0), FALSE, ERROR_GEN_FAILURE);
    EXPECT_OUTCOME(UnlockFile(handle, 3000000000u, 0, 9, 0), TRUE, ERROR_SUCCESS);
    EXPECT_TRUE(locked(3000000009) && !locked(3000000008));
    close(other);
    EXPECT_TRUE(CloseHandle(handle));

    // A file that tells no size and cannot be sought from its end, and one that has no places.
    handle = Open("/proc/self/status", GENERIC_READ, OPEN_EXISTING);
    EXPECT_OUTCOME(GetFileSize(handle, nullptr), 0u, ERROR_SUCCESS);
    EXPECT_OUTCOME(SetFilePointer(handle, 1, nullptr, FILE_END), 1u, ERROR_SUCCESS);
    EXPECT_TRUE(CloseHandle(handle));
    handle = Open("/dev/zero", GENERIC_READ, OPEN_EXISTING);
    EXPECT_OUTCOME(GetFileSize(handle, nullptr), 0u, ERROR_SUCCESS);
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
    EXPECT_OUTCOME(ReadFile(handle, bytes, sizeof bytes, &count, nullptr), TRUE, ERROR_SUCCESS);
    ualarm(0, 0);
    EXPECT_EQ(count, 200u);
    EXPECT_OUTCOME(SetFilePointer(handle, 0, nullptr, FILE_CURRENT), INVALID_SET_FILE_POINTER,
                   ERROR_GEN_FAILURE);
    EXPECT_TRUE(CloseHandle(handle));
}

} // namespace
