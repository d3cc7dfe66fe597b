// Start and stop, the lock, last error, guarded memory, and what reads and writes to the end.
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <netdb.h>
#include <string>
#include <sys/time.h>
#include <thread>
#include <vector>

#include "core/owners.h"
#include "support/digest.h"
#include "support/last_error.h"
#include "support/library.h"
#include "wexelxi.h"

namespace {

uintptr_t Count()
{
    return reinterpret_cast<uintptr_t>(TlsGetValue(gCriticalSectionTLS));
}

bool OtherThreadCanEnter()
{
    BOOL entered = FALSE;
    std::thread([&] {
        entered = TryEnterCriticalSection(&gWexelxiCriticalSection);
        if (entered)
            LeaveCriticalSection(&gWexelxiCriticalSection);
    }).join();
    return entered;
}

TEST(Lock, NestsAndBlocksOthersUntilTheLastLeave)
{
    StartedLibrary library;
    for (int i = 0; i < 3; i++)
        gEnterWexelxiCriticalSection();
    for (uintptr_t left = 3; left > 0; left--) {
        EXPECT_OUTCOME(lstrlen("a call nests too"), 16, kUnchanged);
        EXPECT_EQ(Count(), left);
        EXPECT_FALSE(OtherThreadCanEnter());
        gLeaveWexelxiCriticalSection();
    }
    EXPECT_EQ(Count(), 0u);
    EXPECT_TRUE(OtherThreadCanEnter());
}

TEST(Lock, IsInactiveOutsideARun)
{
    gEnterWexelxiCriticalSection();
    EXPECT_EQ(lstrlen("abc"), 3u);
    StartedLibrary library(nullptr, 1);
    EXPECT_EQ(gWexelxiCriticalSection, nullptr);
    gEnterWexelxiCriticalSection();
    EXPECT_EQ(Count(), 0u);
}

std::string gFaults;

void RecordFault(const char *word, int32_t code)
{
    gFaults += word + (" " + std::to_string(code)) + " at " + std::to_string(Count()) + ", ";
    errno = 77; // a hook may do anything to errno
}

TEST(Lock, ReportsFaultsAndGoesOnWithItsCount)
{
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "misuses a mutex on purpose, which the thread sanitizer reports by itself";
#endif
    static char text[8];
    void (*const calls[])() = {
        [] { gEnterWexelxiCriticalSection(), gLeaveWexelxiCriticalSection(); },
        [] { SetErrorMode(0); },
        [] { itoa(1, text, 10); },
        [] { OemToAnsi("1", text); },
    };
    StartedLibrary library;
    pthread_mutex_t broken;
    memset(&broken, 0xFF, sizeof broken); // of no kind
    void *real = std::exchange(gWexelxiCriticalSection, static_cast<void *>(&broken));
    for (const auto &call : calls) {
        SetCriticalSectionErrorProc(RecordFault);
        errno = 5;
        call();
        EXPECT_EQ(errno, 5);
        EXPECT_EQ(Count(), 0u);
        EXPECT_EQ(std::exchange(gFaults, ""), "enter 22 at 0, leave 22 at 1, ") << &call - calls;
        SetCriticalSectionErrorProc(nullptr);
        call(); // nobody is told
    }
    gWexelxiCriticalSection = real;
}

using Values = std::vector<int64_t>;

Values Flags()
{
    return {gReady, gTerminating, gWexelxiCriticalSection != nullptr, gWEXELfullPath != nullptr};
}

Values Settings()
{
    return {gFileMode, gUseOverride, gPrinterXMargin, gPrinterYMargin, gLOGPIXELSX, gLOGPIXELSY};
}

Values ForTheHost()
{
    return {gHFILE,    gHMODULE,         gGAllocNum, gGAllocMem, gTraceLevel,
            gNeedNull, gUseScratchImage, gErrorMode, gScbarwid};
}

std::string ErrorText()
{
    char text[100] = "####";
    GetLastErrorString(text, sizeof text);
    return text;
}

TEST(Lifecycle, StartsStopsAndStartsAgain)
{
    constexpr size_t kLarge = 1 << 20; // has a mapping of its own
    EXPECT_EQ(Flags(), (Values{0, 0, 0, 0}));
    EXPECT_EQ(Settings(), (Values{0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(ForTheHost(), (Values{0, 0, 0, 0, 0, 0, 0, 0, 17}));
    EXPECT_EQ(GetLastError(), 0u);
    EXPECT_OUTCOME(GetLastError(), kUnchanged, kUnchanged);
    EXPECT_EQ(ErrorText(), "");
    SetLastErrorString(std::string(kLarge, 't').c_str());
    for (int run = 0; run < 2; run++) {
        const uint32_t oldKey = gLastErrorTLS;
        gHFILE = gHMODULE = gGAllocNum = gGAllocMem = 7;
        StartedLibrary library;
        EXPECT_EQ(Flags(), (Values{1, 0, 1, 1}));
        EXPECT_EQ(Settings(), (Values{0, 0, 10, 10, 96, 96}));
        EXPECT_EQ(ForTheHost(), (Values{0, 0, 0, 0, 0, 0, 0, 0, 17}));
        EXPECT_LT(mallinfo2().hblkhd, kLarge) << "the text of before is forgotten";
        EXPECT_NE(gLastErrorTLS, oldKey);
        EXPECT_EQ(gCriticalSectionTLS + 1, gLastErrorTLS);
        EXPECT_EQ(ErrorText(), "");
        SetLastErrorString("during");
        FreeLib();
        EXPECT_EQ(Flags(), (Values{0, 1, 0, 0}));
        EXPECT_EQ(ErrorText(), "") << "the stop forgets what the run has told";
    }
    EXPECT_EQ(sLastErrorBeforeInit, kUnchanged);
    EXPECT_OUTCOME(GetLastError(), kUnchanged, kUnchanged) << "the record outlives the run";
}

// With the last ones in hand: all but one are taken, or all.
pthread_key_t UseAllKeys()
{
    uint32_t last = 0;
    for (uint32_t key = 0; key != UINT32_MAX; key = TlsAlloc())
        last = key;
    return last;
}

TEST(Lifecycle, GoesOnWithItsKeysWhenThePlatformHasNoMore)
{
    EXPECT_EQ(InitLib("/host", nullptr, 0), 0);
    FreeLib();
    const uint32_t key = gLastErrorTLS;
    UseAllKeys();
    TlsSetValue(gCriticalSectionTLS, &gFaults); // what a host has left there
    StartedLibrary library;
    EXPECT_EQ(gLastErrorTLS, key);
    EXPECT_EQ(Count(), 0u);
    EXPECT_TRUE(OtherThreadCanEnter());
}

TEST(Lifecycle, RefusesAFirstStartWithoutKeys)
{
    pthread_key_delete(UseAllKeys());
    for (const char *state : {"one key is left", "none is left"}) {
        EXPECT_EQ(InitLib("/host", nullptr, 0), 8) << state;
        EXPECT_EQ(Flags(), (Values{0, 0, 0, 0})) << state;
    }
}

TEST(Lifecycle, TakesItsFolderAndCutsAHostPathThatIsTooLong)
{
    setenv("WEXELXIDIR", "/", 1);
    ASSERT_EQ(InitLib(std::string(5000, 'p').c_str(), nullptr, 0), 0);
    EXPECT_EQ(gWEXELfullPath, std::string(4095, 'p'));
    EXPECT_EQ(GlobalSize(gWEXELfullPath), 4096u);
    char folder[4096];
    GetWexelXiFolder(folder);
    EXPECT_STREQ(folder, "/");
    FreeLib();
}

TEST(LastError, IsPerThreadWithTextAndNumberApart)
{
    StartedLibrary library;
    SetLastErrorString("mine");
    SetLastError(ERROR_FILE_NOT_FOUND);
    std::thread([] {
        EXPECT_EQ(ErrorText(), "");
        EXPECT_EQ(GetLastError(), 0u);
        EXPECT_EQ(TlsGetValue(gLastErrorTLS), nullptr) << "asking makes no record";
        SetLastError(ERROR_FILE_EXISTS);
    }).join();
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);

    const struct {
        int32_t size;
        const char *text;
    } rows[] = {{5, "mine"}, {100, "mine"}, {4, "min"}, {1, ""}, {0, "####"}, {-1, "####"}};
    for (const auto &row : rows) {
        char text[8] = "####";
        EXPECT_LAST_ERROR(GetLastErrorString(text, row.size), kUnchanged);
        EXPECT_STREQ(text, row.text) << row.size;
    }
    EXPECT_LAST_ERROR(SetLastErrorString(nullptr), kUnchanged);
    EXPECT_EQ(ErrorText(), "");
    EXPECT_OUTCOME(SetErrorMode(7), 0, kUnchanged);
    EXPECT_OUTCOME(SetErrorMode(0), 7, kUnchanged);
}

TEST(LastError, TranslatesErrno)
{
    const auto codes = [](int error, int resolverError) {
        errno = error;
        SetUnixError();
        EXPECT_EQ(errno, error);
        h_errno = resolverError;
        return std::pair{GetLastError(), WSAGetLastError()};
    };
    EXPECT_EQ(codes(ENOENT, 0), std::pair(ERROR_FILE_NOT_FOUND, 11001u));
    EXPECT_EQ(codes(ENOSPC, 0), std::pair(ERROR_GEN_FAILURE, 0u)) << "no code of its own";
    EXPECT_EQ(codes(EDQUOT, 0), std::pair(ERROR_GEN_FAILURE, 10069u));
    EXPECT_EQ(codes(0, NO_DATA), std::pair(ERROR_GEN_FAILURE, 11004u));
    Digest digest;
    for (int error = -1; error < 140; error++) {
        for (int resolverError = -1; resolverError < 6; resolverError++) {
            const auto [code, socket] = codes(error, resolverError);
            digest.Add(code, socket);
        }
    }
    EXPECT_EQ(digest.hex(), "bd6ca26dbfce8717");
}

uint64_t WordAt(const void *handle, ptrdiff_t offset)
{
    uint64_t word;
    memcpy(&word, static_cast<const char *>(handle) + offset, sizeof word);
    return word;
}

void ExpectBlock(void *handle, int32_t size)
{
    const ptrdiff_t trailer = (size & ~7) + 8;
    EXPECT_EQ(WordAt(handle, -16), GLOBAL_HEAD_GUARD);
    EXPECT_EQ(WordAt(handle, -8), static_cast<uint64_t>(size));
    EXPECT_EQ(WordAt(handle, trailer), GLOBAL_TAIL_GUARD);
    EXPECT_OUTCOME(GlobalSize(handle), static_cast<uint32_t>(size), kUnchanged);
    const size_t usable = malloc_usable_size(static_cast<char *>(handle) - 16);
    EXPECT_LE(usable - static_cast<size_t>(16 + trailer + 8), 4096u) << size;
}

TEST(Memory, GuardsStandWhereTheFormatSays)
{
    for (const int32_t size : {0, 1, 7, 8, 13, 16, 17, 10'000}) {
        void *handle = nullptr;
        EXPECT_LAST_ERROR((handle = GlobalAlloc(GLOBAL_ZEROFILL, size)), ERROR_SUCCESS);
        ExpectBlock(handle, size);
        memset(handle, 0x55, static_cast<size_t>(size));
        EXPECT_LAST_ERROR((handle = GlobalReAlloc(handle, size + 24, 1)), ERROR_SUCCESS);
        ExpectBlock(handle, size + 24);
        for (int32_t i = 0; i < size + 24; i++)
            ASSERT_EQ(static_cast<char *>(handle)[i], i < size ? 0x55 : 0);
        handle = GlobalReAlloc(handle, size + 100, 0);
        EXPECT_EQ(WordAt(handle, (size & ~7) + 32), ~uint64_t{0}) << "where the trailer was";
        handle = GlobalReAlloc(handle, size / 2, 1);
        ExpectBlock(handle, size / 2);
        EXPECT_LAST_ERROR(GlobalFree(handle), kUnchanged);
    }
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    void *freed = GlobalAlloc(0, 100);
    GlobalFree(freed);
    EXPECT_EQ(WordAt(freed, 104), ~uint64_t{0}) << "for who reads a memory image";
#endif
}

TEST(Memory, RefusesImpossibleSizesAndKeepsTheOldBlock)
{
    void *handle = GlobalReAlloc(nullptr, 10, 0);
    for (const int32_t size : {-1, INT32_MIN, INT32_MAX, INT32_MAX - 31}) {
        EXPECT_OUTCOME(GlobalAlloc(0, size), nullptr, ERROR_NOT_ENOUGH_MEMORY);
        EXPECT_OUTCOME(GlobalReAlloc(handle, size, 0), nullptr, ERROR_NOT_ENOUGH_MEMORY);
        ExpectBlock(handle, 10);
    }
    GlobalFree(handle);
    handle = GlobalAlloc(0, INT32_MAX - 32);
    ExpectBlock(handle, INT32_MAX - 32);
    GlobalFree(handle);
    EXPECT_LT(mallinfo2().hblkhd, size_t{INT32_MAX}) << "given back";
}

TEST(Memory, ByteHelpers)
{
    EXPECT_OUTCOME(MulDiv(-7, 1, 2), -3, kUnchanged);
    EXPECT_OUTCOME(MulDiv(1, 1, 0), 0, kUnchanged);
    EXPECT_OUTCOME(MulDiv(100000, 100000, 1), 1410065408, kUnchanged);
    EXPECT_OUTCOME(MulDiv(INT32_MIN, 1, -1), INT32_MIN, kUnchanged);
    EXPECT_OUTCOME(IsBadWritePtr(nullptr, 0), TRUE, kUnchanged);
    EXPECT_OUTCOME(IsBadWritePtr(&gFaults, 0), FALSE, kUnchanged);

    std::string bytes = "123456"; // words stand at odd addresses
    SETWORD(&bytes[1], 0xABCD, 256);
    SETWORD(&bytes[3], 0xABCD, 0);
    EXPECT_EQ(bytes, "1\xCD\xAB\xAB\xCD\x36");
    EXPECT_OUTCOME(GETWORD(&bytes[1], -1), 0xABCD, kUnchanged);
    EXPECT_OUTCOME(GETWORD(&bytes[1], 0), 0xCDAB, kUnchanged);
    EXPECT_OUTCOME(GETDWORD(&bytes[1], 1), 0xCDABABCD, kUnchanged);
    EXPECT_OUTCOME(GETDWORD(&bytes[1], 0), 0xCDABABCD, kUnchanged);
    SETDWORD(&bytes[1], 0xF1223344, 0);
    EXPECT_EQ(bytes, "1\xF1\x22\x33\x44\x36");
    SETDWORD(&bytes[1], 0xF1223344, 1);
    EXPECT_EQ(bytes, "1\x44\x33\x22\xF1\x36");
    EXPECT_EQ(GETDWORD(&bytes[1], 1), 0xF1223344u);

    bytes = "123456";
    FillMemory(&bytes[0], 2, 0x1FF);
    CopyMemory(&bytes[1], &bytes[0], 4);
    CopyMemory(&bytes[0], &bytes[5], 0);
    CopyMemory(&bytes[0], &bytes[5], -1);
    EXPECT_EQ(bytes, "\xFF\xFF\xFF\x33\x34\x36");
    ZeroMemory(&bytes[0], 1);
    ZeroMemory(&bytes[1], 0);
    ZeroMemory(&bytes[1], -1);
    EXPECT_EQ(bytes, std::string("\0\xFF\xFF\x33\x34\x36", 6));
}

TEST(Memory, HandlesAreTheirOwnAddresses)
{
    char data[8];
    EXPECT_OUTCOME(GlobalLock(data), data, kUnchanged);
    EXPECT_LAST_ERROR(GlobalUnlock(data), kUnchanged);
    EXPECT_OUTCOME(GlobalHandle(data), data, ERROR_SUCCESS);
    EXPECT_OUTCOME(GlobalFlags(data), 0, ERROR_SUCCESS);
    EXPECT_OUTCOME(GlobalSize(nullptr), 0, kUnchanged);
    EXPECT_LAST_ERROR(GlobalFree(nullptr), kUnchanged);
}

int gPipe[2];
char gDrained[200'000];
ssize_t gCount = 0;

void Drain(int)
{
    const int saved = errno;
    gCount += read(gPipe[0], gDrained + gCount, sizeof gDrained - static_cast<size_t>(gCount));
    errno = saved;
}

// A pipe that is full until a signal comes, when a part of the bytes has gone; and one that keeps
// one write's bytes apart from the next one's.
TEST(Owners, WriteAndReadToTheEnd)
{
    std::string data;
    for (int i = 0; i < 100'000; i++)
        data += static_cast<char>(i % 251);
    struct sigaction action = {}; // without SA_RESTART
    action.sa_handler = Drain;
    sigaction(SIGALRM, &action, nullptr);
    ASSERT_EQ(pipe2(gPipe, 0), 0);
    const itimerval timer = {{0, 0}, {0, 50'000}};
    setitimer(ITIMER_REAL, &timer, nullptr);
    EXPECT_EQ(wexelxi::WriteAll(gPipe[1], data.data(), data.size()), data.size());
    Drain(0);
    EXPECT_EQ(std::string_view(gDrained, static_cast<size_t>(gCount)), data);

    ASSERT_EQ(pipe2(gPipe, O_DIRECT | O_NONBLOCK), 0);
    char text[20] = "";
    EXPECT_EQ(wexelxi::ReadAll(gPipe[0], text, 1), -1);
    for (const std::string part : {"a", "bc", "defg"})
        EXPECT_EQ(wexelxi::WriteAll(gPipe[1], part.data(), part.size()), part.size());
    EXPECT_EQ(wexelxi::ReadAll(gPipe[0], text, 5), 5) << "and no more";
    EXPECT_STREQ(text, "abcde");
    EXPECT_LT(wexelxi::WriteAll(gPipe[1], data.data(), data.size()), data.size());

    ASSERT_EQ(pipe2(gPipe, 0), 0);
    EXPECT_EQ(wexelxi::WriteAll(gPipe[1], "end", 3), 3u);
    close(gPipe[1]);
    EXPECT_EQ(wexelxi::ReadAll(gPipe[0], text, sizeof text), 3);
    EXPECT_EQ(wexelxi::ReadAll(gPipe[0], text, sizeof text), 0);
}

} // namespace
