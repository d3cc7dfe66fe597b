// Start and stop, the lock, last error, guarded memory.
#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <netdb.h>
#include <pthread.h>
#include <string>
#include <thread>
#include <vector>

#include "support/last_error.h"
#include "support/library.h"
#include "wexelxi.h"

namespace {

uintptr_t Count()
{
    return reinterpret_cast<uintptr_t>(pthread_getspecific(gCriticalSectionTLS));
}

bool OtherThreadCanEnter()
{
    auto *mutex = static_cast<pthread_mutex_t *>(gWexelxiCriticalSection);
    bool entered = false;
    std::thread([&] {
        entered = pthread_mutex_trylock(mutex) == 0;
        if (entered)
            pthread_mutex_unlock(mutex);
    }).join();
    return entered;
}

TEST(Lock, NestsAndBlocksOthersUntilTheLastLeave)
{
    StartedLibrary library;
    for (int i = 0; i < 3; i++)
        gEnterWexelxiCriticalSection();
    EXPECT_EQ(Count(), 3u);
    lstrlen("a call nests too");
    EXPECT_EQ(Count(), 3u);
    for (int i = 0; i < 3; i++) {
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

// Where the lock is refused, the hook gives the mutex back, so that the leave is refused too.
void RecordFault(const char *word, int32_t code)
{
    gFaults += word + (" " + std::to_string(code)) + " at " + std::to_string(Count()) + ", ";
    if (code == EDEADLK)
        pthread_mutex_unlock(static_cast<pthread_mutex_t *>(gWexelxiCriticalSection));
    errno = 77; // a hook may do anything to errno
}

TEST(Lock, ReportsFaultsAndGoesOnWithItsCount)
{
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "misuses a mutex on purpose, which the thread sanitizer reports by itself";
#endif
    static char text[] = "text";
    static char copy[32];
    void (*const calls[])() = {
        [] { gEnterWexelxiCriticalSection(), gLeaveWexelxiCriticalSection(); },
        [] { SetErrorMode(0); },
        [] { itoa(1, copy, 10); },
        [] { lstrcpy(copy, text); },
        [] { lstrcat(copy, text); },
        [] { lstrcpyn(copy, text, 3); },
        [] { lstrcmp(copy, text); },
        [] { lstrcmpi(copy, text); },
        [] { lstrncmpi(copy, text, 2); },
        [] { lstrlen(text); },
        [] { AnsiUpper(text); },
        [] { AnsiUpperBuff(text, 4); },
        [] { AnsiLowerBuff(text, 4); },
        [] { OemToAnsi(text, copy); },
        [] { AnsiToOem(text, copy); },
        [] { OemToAnsiBuff(text, copy, 2); },
        [] { AnsiToOemBuff(text, copy, 2); },
        [] { wsprintf(copy, "%d", 1); },
    };
    StartedLibrary library;
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_ERRORCHECK);
    pthread_mutex_t checking;
    pthread_mutex_init(&checking, &attributes);
    void *real = std::exchange(gWexelxiCriticalSection, static_cast<void *>(&checking));
    SetCriticalSectionErrorProc(RecordFault);
    for (const auto &call : calls) {
        gFaults.clear();
        pthread_mutex_lock(&checking);
        errno = 5;
        call();
        EXPECT_EQ(errno, 5);
        EXPECT_EQ(Count(), 0u);
        EXPECT_EQ(gFaults, "enter 35 at 0, leave 1 at 1, ") << &call - calls;
    }
    gWexelxiCriticalSection = real;
    SetCriticalSectionErrorProc(nullptr);
}

TEST(Lock, SerialisesThreads)
{
    StartedLibrary library;
    int shared = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; t++) {
        threads.emplace_back([&] {
            for (int i = 0; i < 1000; i++) {
                gEnterWexelxiCriticalSection();
                SetErrorMode(SetErrorMode(7));
                shared++;
                gLeaveWexelxiCriticalSection();
            }
        });
    }
    for (auto &thread : threads)
        thread.join();
    EXPECT_EQ(shared, 4000);
}

TEST(Lifecycle, StartsStopsAndStartsAgain)
{
    SetLastError(5);
    SetLastErrorString("before");
    uint32_t firstKey = 0;
    for (int run = 0; run < 2; run++) {
        StartedLibrary library;
        EXPECT_NE(gLastErrorTLS, firstKey);
        firstKey = gLastErrorTLS;
        EXPECT_EQ(gCriticalSectionTLS + 1, gLastErrorTLS);
        EXPECT_EQ(gReady, 1);
        EXPECT_EQ(gTerminating, 0);
        EXPECT_STREQ(gWEXELfullPath, "/opt/host/bin/host");
        char text[8] = "x";
        GetLastErrorString(text, sizeof text);
        EXPECT_STREQ(text, "");
        SetLastErrorString("during");
        FreeLib();
        GetLastErrorString(text, sizeof text);
        EXPECT_STREQ(text, "");
    }
    char text[8] = "x";
    GetLastErrorString(text, sizeof text);
    EXPECT_STREQ(text, "") << "the stop forgets what the run has told";
    EXPECT_EQ(sLastErrorBeforeInit, 5u);
    EXPECT_EQ(gReady, 0);
    EXPECT_EQ(gTerminating, 1);
    EXPECT_EQ(gWEXELfullPath, nullptr);
    FreeLib();
    SetLastError(9);
    EXPECT_EQ(GetLastError(), 9u) << "the per-thread record outlives the run";
}

TEST(Lifecycle, GoesOnWithItsKeysWhenThePlatformHasNoMore)
{
    {
        StartedLibrary library;
    }
    const uint32_t key = gLastErrorTLS;
    while (TlsAlloc() != UINT32_MAX) {
    }
    StartedLibrary library;
    EXPECT_EQ(gLastErrorTLS, key);
    gEnterWexelxiCriticalSection();
    EXPECT_EQ(Count(), 1u);
    gLeaveWexelxiCriticalSection();
    EXPECT_TRUE(OtherThreadCanEnter());
}

TEST(Lifecycle, RefusesAFirstStartWithoutKeys)
{
    while (TlsAlloc() != UINT32_MAX) {
    }
    EXPECT_EQ(InitLib("/opt/host/bin/host", nullptr, 0), 8);
    EXPECT_EQ(gReady, 0);
    EXPECT_EQ(gWexelxiCriticalSection, nullptr);
}

TEST(Lifecycle, CutsAHostPathThatIsTooLong)
{
    ScratchFolder folder;
    setenv("WEXELXIDIR", folder.path().c_str(), 1);
    ASSERT_EQ(InitLib(std::string(5000, 'p').c_str(), nullptr, 0), 0);
    EXPECT_EQ(gWEXELfullPath, std::string(4095, 'p'));
    FreeLib();
}

TEST(LastError, IsPerThreadWithTextAndNumberApart)
{
    StartedLibrary library;
    SetLastError(31);
    SetLastErrorString("mine");
    SetLastError(2);
    std::thread([] {
        char text[8] = "x";
        GetLastErrorString(text, sizeof text);
        EXPECT_STREQ(text, "");
        EXPECT_EQ(GetLastError(), 0u);
        EXPECT_EQ(TlsGetValue(gLastErrorTLS), nullptr) << "asking makes no record";
        SetLastError(80);
    }).join();
    EXPECT_EQ(GetLastError(), 2u);

    const struct {
        int32_t size;
        const char *text;
    } rows[] = {{5, "mine"}, {100, "mine"}, {4, "min"}, {1, ""}, {0, "####"}, {-1, "####"}};
    for (const auto &row : rows) {
        char text[8] = "####";
        GetLastErrorString(text, row.size);
        EXPECT_STREQ(text, row.text) << row.size;
    }
    EXPECT_LAST_ERROR(SetLastErrorString(nullptr), kUnchanged);
}

TEST(LastError, TranslatesErrno)
{
    const struct {
        int error;
        uint32_t code, socket;
    } rows[] = {
        {-1, 31, 0},      {1, 19, 0},       {2, 2, 11001},    {11, 31, 10035},  {12, 8, 0},
        {13, 5, 0},       {14, 115, 0},     {15, 31, 0},      {16, 148, 0},     {17, 80, 0},
        {18, 17, 0},      {19, 31, 0},      {20, 123, 0},     {21, 123, 0},     {22, 12, 0},
        {24, 31, 0},      {28, 31, 0},      {30, 19, 0},      {36, 154, 10063}, {39, 145, 10066},
        {40, 31, 10062},  {41, 31, 0},      {66, 31, 10071},  {87, 31, 10068},  {88, 31, 10038},
        {98, 31, 10048},  {111, 31, 10061}, {112, 31, 10064}, {114, 31, 10037}, {115, 31, 10036},
        {116, 31, 10070}, {117, 31, 0},     {122, 31, 10069}, {123, 31, 0}};
    for (const auto &row : rows) {
        errno = row.error;
        SetUnixError();
        EXPECT_EQ(errno, row.error);
        EXPECT_EQ(GetLastError(), row.code) << row.error;
        errno = row.error;
        EXPECT_EQ(WSAGetLastError(), row.socket) << row.error;
    }
    for (const int resolver : {-1, 0, 1, 2, 3, 4, 5}) {
        errno = 0;
        h_errno = resolver;
        const uint32_t expected =
            resolver >= 1 && resolver <= 4 ? 11000u + static_cast<uint32_t>(resolver) : 0u;
        EXPECT_EQ(WSAGetLastError(), expected) << resolver;
    }
}

uint64_t WordAt(const void *handle, ptrdiff_t offset)
{
    uint64_t word;
    memcpy(&word, static_cast<const char *>(handle) + offset, sizeof word);
    return word;
}

TEST(Memory, GuardsStandWhereTheFormatSays)
{
    for (const int32_t size : {0, 1, 7, 8, 13, 16, 17, 1000}) {
        void *handle = nullptr;
        EXPECT_LAST_ERROR((handle = GlobalAlloc(GLOBAL_ZEROFILL, size)), ERROR_SUCCESS);
        EXPECT_EQ(WordAt(handle, -16), GLOBAL_HEAD_GUARD);
        EXPECT_EQ(WordAt(handle, -8), static_cast<uint64_t>(size));
        EXPECT_EQ(WordAt(handle, (size & ~7) + 8), GLOBAL_TAIL_GUARD);
        memset(handle, 0x55, static_cast<size_t>(size));
        handle = GlobalReAlloc(handle, size + 30, GLOBAL_ZEROFILL);
        for (int32_t i = 0; i < size + 30; i++)
            ASSERT_EQ(static_cast<char *>(handle)[i], i < size ? 0x55 : 0);
        handle = GlobalReAlloc(handle, size / 2, GLOBAL_ZEROFILL);
        EXPECT_EQ(GlobalSize(handle), static_cast<uint32_t>(size / 2));
        EXPECT_EQ(WordAt(handle, -16), GLOBAL_HEAD_GUARD);
        EXPECT_EQ(WordAt(handle, (size / 2 & ~7) + 8), GLOBAL_TAIL_GUARD);
        GlobalFree(handle);
    }
}

TEST(Memory, RefusesImpossibleSizesAndKeepsTheOldBlock)
{
    for (const int32_t size : {-1, INT32_MIN, INT32_MAX}) {
        EXPECT_OUTCOME(GlobalAlloc(0, size), nullptr, ERROR_NOT_ENOUGH_MEMORY);
        void *handle = GlobalAlloc(0, 10);
        strcpy(static_cast<char *>(handle), "whole");
        EXPECT_OUTCOME(GlobalReAlloc(handle, size, 0), nullptr, ERROR_NOT_ENOUGH_MEMORY);
        EXPECT_STREQ(static_cast<char *>(handle), "whole");
        EXPECT_EQ(WordAt(handle, -16), GLOBAL_HEAD_GUARD);
        EXPECT_EQ(WordAt(handle, 16), GLOBAL_TAIL_GUARD);
        GlobalFree(handle);
    }
}

TEST(Memory, ByteHelpers)
{
    const struct {
        int32_t a, b, c, result;
    } quotients[] = {{-7, 1, 2, -3},
                     {1, 1, 0, 0},
                     {100000, 100000, 1, 1410065408},
                     {INT32_MIN, 1, -1, INT32_MIN}};
    for (const auto &row : quotients)
        EXPECT_EQ(MulDiv(row.a, row.b, row.c), row.result) << row.a;
    EXPECT_EQ(IsBadWritePtr(nullptr, 1), TRUE);

    for (const int32_t littleEndian : {0, 1, 256}) {
        uint8_t bytes[6] = {9, 9, 9, 9, 9, 9};
        SETWORD(bytes + 1, 0xABCD, littleEndian);
        EXPECT_EQ(bytes[1], littleEndian ? 0xCD : 0xAB);
        EXPECT_EQ(bytes[2], littleEndian ? 0xAB : 0xCD);
        EXPECT_EQ(GETWORD(bytes + 1, littleEndian), 0xABCD);
        SETDWORD(bytes + 1, 0xF1223344, littleEndian);
        for (int i = 0; i < 4; i++)
            EXPECT_EQ(bytes[1 + i], 0xF1223344 >> 8 * (littleEndian ? i : 3 - i) & 0xFF);
        EXPECT_EQ(GETDWORD(bytes + 1, littleEndian), 0xF1223344u);
        EXPECT_EQ(bytes[0] | bytes[5], 9);
    }
    uint8_t bytes[6] = {1, 2, 3, 4, 5, 6};
    FillMemory(bytes, 2, 0x1FF);
    CopyMemory(bytes + 1, bytes, 4);
    CopyMemory(bytes, bytes + 5, -1);
    EXPECT_EQ(std::string(bytes, bytes + 6), "\xFF\xFF\xFF\x03\x04\x06");
    ZeroMemory(bytes, 2);
    ZeroMemory(bytes, -1);
    EXPECT_EQ(GETDWORD(bytes, 0), 0xFF03u);
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

TEST(Threads, HaveTheNumberThatThePlatformGives)
{
    EXPECT_OUTCOME(GetCurrentThreadId(), pthread_self(), kUnchanged);
}

} // namespace
