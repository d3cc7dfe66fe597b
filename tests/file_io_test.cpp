// File handles: opening by disposition, any order of calls, and what failures leave.
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

#include "support/digest.h"
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
    const struct {
        const char *name;
        uint32_t access, disposition;
        bool opens;
        uint32_t error;
        const char *content; // afterwards, with "x" written
    } rows[] = {
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
        {"old/x", GENERIC_WRITE, OPEN_ALWAYS, false, ERROR_INVALID_NAME, ""},
        {"old", GENERIC_WRITE, OPEN_ALWAYS, true, ERROR_SUCCESS, "x2345"},
        {"new", GENERIC_READ, OPEN_ALWAYS, true, ERROR_FILE_NOT_FOUND, "x"},
        {"no/new", GENERIC_WRITE, OPEN_ALWAYS, false, ERROR_FILE_NOT_FOUND, ""},
        {"old", GENERIC_WRITE, TRUNCATE_EXISTING, true, ERROR_SUCCESS, "x2345"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(testing::Message() << row.name << " " << row.disposition);
        const ScratchFolder folder;
        WriteWholeFile(folder.file("old"), "12345");
        WriteWholeFile(folder.file(".a"), "12345");
        mkdir(folder.file("folder").c_str(), 0777);
        const std::string name = folder.file(row.name);
        const size_t descriptors = OpenDescriptors();
        HANDLE handle = nullptr;
        EXPECT_LAST_ERROR(handle = Open(name, row.access, row.disposition), row.error);
        ASSERT_EQ(handle != INVALID_HANDLE_VALUE, row.opens);
        WriteFile(handle, "x", 1, nullptr, nullptr);
        EXPECT_OUTCOME(_lclose(handle), row.opens ? 0 : HFILE_ERROR,
                       row.opens ? ERROR_SUCCESS : ERROR_GEN_FAILURE);
        EXPECT_EQ(OpenDescriptors(), descriptors);
        EXPECT_EQ(ReadWholeFile(name), row.content);
    }
}

TEST(CloseHandle, LeavesNothingOfAnyKind)
{
    const auto makeAndClose = [] {
        UINT_PTR id;
        HANDLE thread = CreateThread(
            nullptr, 0, [](LPVOID) -> LPVOID { return nullptr; }, nullptr, CREATE_JOINABLE, &id);
        WaitForSingleObject(thread, INFINITE);
        for (HANDLE handle : {thread, CreateSemaphore(nullptr, 0, 1, nullptr),
                              Open("/dev/null", GENERIC_READ, OPEN_EXISTING)})
            EXPECT_OUTCOME(CloseHandle(handle), TRUE, ERROR_SUCCESS);
        return HeapBytes();
    };
    size_t before = 0, bytes = makeAndClose();
    for (int round = 0; before != bytes && round < 10; round++) { // until what is kept is there
        before = bytes;
        bytes = makeAndClose();
    }
    EXPECT_EQ(bytes, before);
}

TEST(FileHandle, AnswersAnyOrderOfCallsAsJudged)
{
    const ScratchFolder folder;
    const std::string name = folder.file("f");
    HANDLE handle = Open(name, kReadWrite, CREATE_ALWAYS);
    std::mt19937 random(20);
    Digest digest;
    std::string part;
    uint32_t size = 0, count = 0;
    int64_t offset = 0, wide = 0;
    const std::function<BOOL()> calls[] = {
        [&] { return ReadFile(handle, part.data(), size, &count, nullptr); },
        [&] { return WriteFile(handle, part.data(), size, &count, nullptr); },
        [&] {
            return SetFilePointerEx(handle, offset, &wide, static_cast<uint32_t>(random() % 4));
        },
        [&] { return SetFilePointerEx(handle, 0, &wide, static_cast<uint32_t>(random() % 4)); },
        [&] { return GetFileSizeEx(handle, &wide); },
        [&] { return SetEndOfFile(handle); },
        [&] { // somebody else appends
            const BOOL flushed = FlushFileBuffers(handle);
            digest.Add(ReadWholeFile(name));
            std::ofstream(name, std::ios::app) << part;
            return flushed;
        },
    };
    for (int step = 0; step < 8000; step++) {
        const uint32_t most = random() % 4 ? 40 : 20000;
        size = static_cast<uint32_t>(random()) % most;
        offset = static_cast<int64_t>(random() % 30000) - 10000;
        part.assign(size, static_cast<char>(step));
        SetLastError(kUnchanged);
        const BOOL result = calls[random() % std::size(calls)]();
        digest.Add(result, GetLastError(), part, count, wide);
    }
    EXPECT_TRUE(CloseHandle(handle));
    digest.Add(ReadWholeFile(name));
    EXPECT_EQ(digest.hex(), "f7f49cbd1b0bb153");
}

TEST(FileHandle, RefusesWhatIsNone)
{
    uint32_t stranger[16] = {7}; // a record of another kind
    for (HANDLE handle : {HANDLE{nullptr}, INVALID_HANDLE_VALUE, HANDLE{stranger}}) {
        uint32_t count = 77;
        int64_t wide = 77;
        EXPECT_OUTCOME(CloseHandle(handle), FALSE, ERROR_GEN_FAILURE);
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
    EXPECT_OUTCOME(GetFileSize(handle, nullptr), 0u, ERROR_SUCCESS);
    EXPECT_TRUE(CloseHandle(handle));

    // A refused flush drops the bytes, and only a question about the place tells.
    handle = Open("/dev/full", GENERIC_WRITE, OPEN_EXISTING);
    const size_t descriptors = OpenDescriptors();
    EXPECT_TRUE(WriteFile(handle, "x", 1, nullptr, nullptr));
    EXPECT_OUTCOME(SetEndOfFile(handle), FALSE, ERROR_GEN_FAILURE);
    EXPECT_TRUE(WriteFile(handle, "x", 1, nullptr, nullptr));
    EXPECT_OUTCOME(FlushFileBuffers(handle), TRUE, ERROR_SUCCESS);
    EXPECT_OUTCOME(SetEndOfFile(handle), FALSE, ERROR_INVALID_ACCESS); // it cannot be cut
    EXPECT_OUTCOME(WriteFile(handle, "x", 1, &count, nullptr), TRUE, ERROR_SUCCESS); // it fits
    EXPECT_OUTCOME(CloseHandle(handle), FALSE, ERROR_GEN_FAILURE);
    EXPECT_EQ(OpenDescriptors(), descriptors - 1);
    EXPECT_OUTCOME(ReadFile(handle, &count, 1, nullptr, nullptr), FALSE, ERROR_GEN_FAILURE);
    EXPECT_OUTCOME(CloseHandle(handle), TRUE, ERROR_SUCCESS); // the record was still there
}

TEST(FileHandle, MeasuresAndLocksFarOut)
{
    const ScratchFolder folder;
    const std::string name = folder.file("sparse");
    const int descriptor = dup(0); // the number that the next open gets
    close(descriptor);
    HANDLE handle = Open(name, kReadWrite, CREATE_ALWAYS);
    uint32_t high = 77;
    int64_t place = 0;
    EXPECT_OUTCOME(SetFilePointerEx(handle, int64_t{5} << 30, &place, FILE_BEGIN), TRUE, 0);
    EXPECT_EQ(place, int64_t{5} << 30);
    EXPECT_OUTCOME(SetEndOfFile(handle), TRUE, ERROR_SUCCESS);
    EXPECT_OUTCOME(GetFileSize(handle, &high), 1u << 30, ERROR_SUCCESS);
    EXPECT_EQ(high, 77u);
    EXPECT_OUTCOME(GetFileSizeEx(handle, nullptr), TRUE, ERROR_SUCCESS);
    EXPECT_OUTCOME(SetFilePointerEx(handle, INT64_MAX, nullptr, FILE_END), FALSE,
                   ERROR_INVALID_ACCESS);
    EXPECT_OUTCOME(SetFilePointer(handle, 10, nullptr, 7), 10u, ERROR_SUCCESS);
    EXPECT_OUTCOME(ReadFile(handle, &place, 8, nullptr, nullptr), TRUE, ERROR_SUCCESS);
    EXPECT_EQ(lseek(descriptor, 0, SEEK_CUR), 18) << "nothing is read ahead";

    const int other = open(name.c_str(), O_RDWR);
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

    // A file that tells no size and cannot be sought from its end.
    handle = Open("/proc/self/status", GENERIC_READ, OPEN_EXISTING);
    EXPECT_OUTCOME(GetFileSize(handle, nullptr), 0u, ERROR_SUCCESS);
    EXPECT_OUTCOME(SetFilePointer(handle, 1, nullptr, FILE_END), 1u, ERROR_SUCCESS);
    EXPECT_TRUE(CloseHandle(handle));
}

TEST(FileHandle, ReadsOnAfterASignal)
{
    const ScratchFolder folder;
    const std::string pipe = folder.file("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    struct sigaction interrupting = {};
    interrupting.sa_handler = [](int) {};
    sigaction(SIGALRM, &interrupting, nullptr);
    if (fork() == 0) {
        const int descriptor = open(pipe.c_str(), O_WRONLY);
        for (int i = 0; i < 20 && write(descriptor, "0123456789", 10) == 10; i++) {
            usleep(5000);
            kill(getppid(), SIGALRM);
        }
        _exit(0);
    }
    HANDLE handle = Open(pipe, GENERIC_READ, OPEN_EXISTING);
    char bytes[300];
    uint32_t count = 0;
    EXPECT_OUTCOME(ReadFile(handle, bytes, 5, &count, nullptr), TRUE, ERROR_SUCCESS);
    EXPECT_EQ(count, 5u);
    EXPECT_OUTCOME(ReadFile(handle, bytes, sizeof bytes, &count, nullptr), TRUE, ERROR_SUCCESS);
    EXPECT_EQ(std::string(bytes, count).substr(0, 6), "567890");
    EXPECT_EQ(count, 195u);
    EXPECT_OUTCOME(SetFilePointer(handle, 0, nullptr, FILE_CURRENT), INVALID_SET_FILE_POINTER,
                   ERROR_GEN_FAILURE);
    EXPECT_OUTCOME(GetFileSize(handle, nullptr), INVALID_FILE_SIZE, ERROR_GEN_FAILURE);
    EXPECT_TRUE(CloseHandle(handle));
}

} // namespace
