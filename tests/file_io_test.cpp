// File handles: opening by disposition, positions and sizes against a model, and what failures
// leave.
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

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
        const char *content; // afterwards, with "x" written; null: absent
    };
    const Row rows[] = {
        {"old", kReadWrite, CREATE_NEW, false, 80, "12345"},
        {"folder", kReadWrite, CREATE_NEW, false, 80, nullptr},
        {"new", kReadWrite, CREATE_NEW, true, 2, "x"},
        {"old", GENERIC_READ, CREATE_ALWAYS, true, 0, "x"},
        {"new", GENERIC_WRITE, CREATE_ALWAYS, true, 0, "x"},
        {"folder", GENERIC_WRITE, CREATE_ALWAYS, false, 123, nullptr},
        {"old", GENERIC_READ, OPEN_EXISTING, true, 0, "12345"},
        {"old", GENERIC_WRITE, OPEN_EXISTING, true, 0, "x2345"},
        {"new", GENERIC_WRITE, OPEN_EXISTING, false, 2, nullptr},
        {"old/x", GENERIC_WRITE, OPEN_EXISTING, false, 123, nullptr},
        {"old", GENERIC_WRITE, OPEN_ALWAYS, true, 0, "x2345"},
        {"new", GENERIC_READ, OPEN_ALWAYS, true, 2, "x"},
        {"no/new", GENERIC_WRITE, OPEN_ALWAYS, false, 2, nullptr},
        {"old", GENERIC_WRITE, TRUNCATE_EXISTING, true, 0, "x2345"},
        {"new", GENERIC_WRITE, TRUNCATE_EXISTING, false, 2, nullptr},
        {"old", kReadWrite, 0, true, 0, "x2345"},
        {"b\xE9\xFF", GENERIC_WRITE, CREATE_NEW, true, 2, "x"},
        {"com1", GENERIC_WRITE, CREATE_NEW, true, 2, "x"},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(testing::Message() << row.name << " " << row.disposition);
        StartedLibrary library;
        ScratchFolder folder;
        WriteWholeFile(folder.file("old"), "12345");
        mkdir(folder.file("folder").c_str(), 0777);
        const size_t descriptors = OpenDescriptors();
        HANDLE handle = Open(folder.file(row.name), row.access, row.disposition);
        EXPECT_EQ(GetLastError(), row.error);
        ASSERT_EQ(handle != INVALID_HANDLE_VALUE, row.opens);
        if (row.opens) {
            WriteFile(handle, "x", 1, nullptr, nullptr);
            EXPECT_TRUE(CloseHandle(handle));
            EXPECT_EQ(GetLastError(), 0u);
        }
        if (row.content) {
            EXPECT_EQ(ReadWholeFile(folder.file(row.name)), row.content);
        }
        EXPECT_EQ(OpenDescriptors(), descriptors);
    }
}

// A file handle as a plain string with a position.
struct Model {
    std::string bytes;
    int64_t at = 0;

    std::string Read(size_t count)
    {
        if (at >= static_cast<int64_t>(bytes.size()))
            return "";
        std::string part = bytes.substr(static_cast<size_t>(at), count);
        at += static_cast<int64_t>(part.size());
        return part;
    }
    void Write(const std::string &part)
    {
        if (part.empty())
            return;
        const size_t end = static_cast<size_t>(at) + part.size();
        if (end > bytes.size())
            bytes.resize(end, '\0');
        bytes.replace(static_cast<size_t>(at), part.size(), part);
        at = static_cast<int64_t>(end);
    }
};

TEST(FileHandle, ActsAsABytesModelInAnyOrderOfCalls)
{
    ScratchFolder folder;
    HANDLE handle = Open(folder.file("f"), kReadWrite, CREATE_ALWAYS);
    Model model;
    std::mt19937 random(20);
    const auto below = [&](uint32_t limit) { return static_cast<uint32_t>(random() % limit); };
    for (int step = 0; step < 20000; step++) {
        SCOPED_TRACE(step);
        std::string buffer(below(4) ? below(40) : below(20000), static_cast<char>(random()));
        const auto size = static_cast<uint32_t>(buffer.size());
        uint32_t count = 99;
        int64_t wide = -1;
        switch (below(7)) {
        case 0: {
            // The end of the file stays seen until a seek, so that one comes first.
            SetFilePointerEx(handle, 0, nullptr, FILE_CURRENT);
            ASSERT_TRUE(ReadFile(handle, buffer.data(), size, &count, nullptr));
            ASSERT_EQ(buffer.substr(0, count), model.Read(size));
            break;
        }
        case 1:
        case 2:
            ASSERT_TRUE(WriteFile(handle, buffer.data(), size, &count, nullptr));
            ASSERT_EQ(count, size);
            model.Write(buffer);
            break;
        case 3: {
            const uint32_t method = below(4);
            const int64_t origin = method == FILE_CURRENT ? model.at
                                   : method == FILE_END   ? static_cast<int64_t>(model.bytes.size())
                                                          : 0;
            const auto offset = static_cast<int32_t>(below(30000)) - 10000;
            const bool good = origin + offset >= 0;
            const uint32_t moved = SetFilePointer(handle, offset, nullptr, method);
            ASSERT_EQ(GetLastError(), good ? 0u : 12u);
            if (good)
                model.at = origin + offset;
            ASSERT_EQ(moved, good ? static_cast<uint32_t>(model.at) : INVALID_SET_FILE_POINTER);
            break;
        }
        case 4:
            ASSERT_TRUE(GetFileSizeEx(handle, &wide));
            ASSERT_EQ(wide, static_cast<int64_t>(model.bytes.size()));
            break;
        case 5:
            ASSERT_TRUE(SetEndOfFile(handle));
            model.bytes.resize(static_cast<size_t>(model.at), '\0');
            break;
        default:
            ASSERT_TRUE(FlushFileBuffers(handle));
            ASSERT_EQ(ReadWholeFile(folder.file("f")), model.bytes);
        }
    }
    EXPECT_TRUE(CloseHandle(handle));
    EXPECT_EQ(ReadWholeFile(folder.file("f")), model.bytes);
}

TEST(FileHandle, RefusesWhatIsNone)
{
    StartedLibrary library;
    struct { // a record of another kind
        uint32_t kind = 7;
        char rest[60] = {};
    } stranger;
    HANDLE const handles[] = {nullptr, INVALID_HANDLE_VALUE, &stranger};
    for (HANDLE handle : handles) {
        uint32_t count = 77;
        int64_t wide = 77;
        char byte;
        const auto refused = [](uint32_t result, uint32_t failure, uint32_t error) {
            EXPECT_EQ(result, failure);
            EXPECT_EQ(GetLastError(), error);
            SetLastError(1234);
        };
        refused(CloseHandle(handle), FALSE, 31);
        refused(_lclose(handle), HFILE_ERROR, 31);
        refused(ReadFile(handle, &byte, 1, &count, nullptr), FALSE, 31);
        refused(WriteFile(handle, "x", 1, &count, nullptr), FALSE, 31);
        refused(SetFilePointerEx(handle, 0, &wide, FILE_BEGIN), FALSE, 6);
        refused(SetFilePointer(handle, 0, nullptr, FILE_BEGIN), INVALID_SET_FILE_POINTER, 6);
        refused(GetFileSizeEx(handle, &wide), FALSE, 6);
        refused(GetFileSize(handle, nullptr), INVALID_FILE_SIZE, 6);
        refused(SetEndOfFile(handle), FALSE, 6);
        refused(FlushFileBuffers(handle), FALSE, 31);
        refused(LockFile(handle, 0, 0, 1, 0), FALSE, 31);
        refused(UnlockFile(handle, 0, 0, 1, 0), FALSE, 31);
        refused(_lopen("x", 0) + _lread(handle, &byte, 1), 0, 0);
        EXPECT_EQ(count, 77u);
        EXPECT_EQ(wide, 77);
    }
}

TEST(FileHandle, TellsShortWritesAndAFullDevice)
{
    ScratchFolder folder;
    WriteWholeFile(folder.file("f"), "abc");
    HANDLE handle = Open(folder.file("f"), GENERIC_READ, OPEN_EXISTING);
    uint32_t count = 9;
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

    handle = Open("/dev/full", GENERIC_WRITE, OPEN_EXISTING);
    const std::string much(100000, 'x');
    EXPECT_FALSE(WriteFile(handle, much.data(), 100000, &count, nullptr));
    EXPECT_EQ(GetLastError(), 29u);
    EXPECT_LT(count, 100000u);
    EXPECT_TRUE(CloseHandle(handle)); // the stream gave up what it could not write
}

TEST(FileHandle, MeasuresBeyondFourGigabytes)
{
    ScratchFolder folder;
    HANDLE handle = Open(folder.file("sparse"), kReadWrite, CREATE_ALWAYS);
    int64_t wide = 0;
    uint32_t high = 77;
    ASSERT_TRUE(SetFilePointerEx(handle, int64_t{5} << 30, &wide, FILE_BEGIN));
    ASSERT_TRUE(SetEndOfFile(handle));
    EXPECT_EQ(GetFileSize(handle, &high), 1u << 30);
    EXPECT_EQ(high, 77u);
    EXPECT_TRUE(GetFileSizeEx(handle, &wide));
    EXPECT_EQ(wide, int64_t{5} << 30);
    EXPECT_EQ(SetFilePointer(handle, -1, nullptr, FILE_END), (1u << 30) - 1);
    EXPECT_TRUE(CloseHandle(handle));
}

TEST(FileHandle, LocksRangesForOtherProcesses)
{
    ScratchFolder folder;
    HANDLE handle = Open(folder.file("f"), kReadWrite, CREATE_ALWAYS);
    const auto refusedElsewhere = [&](off_t at) {
        const pid_t child = fork();
        if (child == 0) {
            const int descriptor = open(folder.file("f").c_str(), O_RDWR);
            struct flock range = {F_WRLCK, SEEK_SET, at, 1, 0};
            _exit(fcntl(descriptor, F_SETLK, &range) == -1);
        }
        int status = 0;
        waitpid(child, &status, 0);
        return WEXITSTATUS(status) == 1;
    };
    EXPECT_TRUE(LockFile(handle, 3000000000u, 0, 10, 0));
    EXPECT_TRUE(refusedElsewhere(3000000009));
    EXPECT_FALSE(refusedElsewhere(3000000010));
    EXPECT_FALSE(UnlockFile(handle, 3000000000u, 0, 10, 1));
    EXPECT_EQ(GetLastError(), 31u);
    EXPECT_TRUE(refusedElsewhere(3000000000));
    EXPECT_TRUE(UnlockFile(handle, 3000000000u, 0, 10, 0));
    EXPECT_EQ(GetLastError(), 0u);
    EXPECT_FALSE(refusedElsewhere(3000000000));
    CloseHandle(handle);
}

TEST(FileHandle, ReadsOnAfterASignal)
{
    ScratchFolder folder;
    const std::string pipe = folder.file("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const pid_t child = fork();
    if (child == 0) {
        const int descriptor = open(pipe.c_str(), O_WRONLY);
        for (int i = 0; i < 20; i++) {
            usleep(5000);
            if (write(descriptor, "0123456789", 10) != 10)
                _exit(1);
        }
        _exit(0);
    }
    HANDLE handle = Open(pipe, GENERIC_READ, OPEN_EXISTING);
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    sigaction(SIGALRM, &action, nullptr);
    itimerval often = {{0, 1000}, {0, 1000}};
    setitimer(ITIMER_REAL, &often, nullptr);
    char bytes[300];
    uint32_t count = 0;
    EXPECT_TRUE(ReadFile(handle, bytes, sizeof bytes, &count, nullptr));
    often = {};
    setitimer(ITIMER_REAL, &often, nullptr);
    EXPECT_EQ(count, 200u);
    CloseHandle(handle);
    waitpid(child, nullptr, 0);
}

} // namespace
