// Start and stop, the lock, last error, guarded memory.
#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <netdb.h>
#include <pthread.h>
#include <string>
#include <thread>
#include <vector>

#include "support/library.h"
#include "wexelxi.h"

namespace {

std::string gFaults;

void RecordFault(const char *word, int32_t code)
{
    gFaults += word + (" " + std::to_string(code)) + " ";
    errno = 77; // a hook may do anything to errno
}

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

TEST(Lock, ReportsFaultsAndGoesOn)
{
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "misuses a mutex on purpose, which the thread sanitizer reports by itself";
#endif
    StartedLibrary library;
    SetCriticalSectionErrorProc(RecordFault);
    // An error-checking mutex in the slot refuses a leave by a thread that does not hold it.
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_ERRORCHECK);
    pthread_mutex_t checking;
    pthread_mutex_init(&checking, &attributes);
    void *real = gWexelxiCriticalSection;
    gWexelxiCriticalSection = &checking;

    pthread_mutex_lock(&checking);
    errno = 5;
    gEnterWexelxiCriticalSection();
    EXPECT_EQ(Count(), 1u);
    pthread_mutex_unlock(&checking);
    gLeaveWexelxiCriticalSection();
    EXPECT_EQ(errno, 5);
    EXPECT_EQ(Count(), 0u);

    gWexelxiCriticalSection = real;
    SetCriticalSectionErrorProc(nullptr);
    EXPECT_EQ(gFaults, "enter 35 leave 1 "); // EDEADLK, EPERM
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
    SetLastErrorString(nullptr);
    EXPECT_EQ(GetLastError(), 2u);
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
        SetLastError(99);
        void *handle = GlobalAlloc(GLOBAL_ZEROFILL, size);
        EXPECT_EQ(GetLastError(), 0u);
        EXPECT_EQ(WordAt(handle, -16), GLOBAL_HEAD_GUARD);
        EXPECT_EQ(WordAt(handle, -8), static_cast<uint64_t>(size));
        EXPECT_EQ(WordAt(handle, (size & ~7) + 8), GLOBAL_TAIL_GUARD);
        memset(handle, 0x55, static_cast<size_t>(size));
        handle = GlobalReAlloc(handle, size + 30, GLOBAL_ZEROFILL);
        for (int32_t i = 0; i < size + 30; i++)
            ASSERT_EQ(static_cast<char *>(handle)[i], i < size ? 0x55 : 0);
        handle = GlobalReAlloc(handle, size / 2, 0);
        EXPECT_EQ(GlobalSize(handle), static_cast<uint32_t>(size / 2));
        EXPECT_EQ(WordAt(handle, (size / 2 & ~7) + 8), GLOBAL_TAIL_GUARD);
        GlobalFree(handle);
    }
}

TEST(Memory, RefusesImpossibleSizesAndKeepsTheOldBlock)
{
    for (const int32_t size : {-1, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(GlobalAlloc(0, size), nullptr);
        EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
        void *handle = GlobalAlloc(0, 10);
        strcpy(static_cast<char *>(handle), "whole");
        EXPECT_EQ(GlobalReAlloc(handle, size, 0), nullptr);
        EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
        EXPECT_STREQ(static_cast<char *>(handle), "whole");
        EXPECT_EQ(WordAt(handle, -16), GLOBAL_HEAD_GUARD);
        EXPECT_EQ(WordAt(handle, 16), GLOBAL_TAIL_GUARD);
        GlobalFree(handle);
    }
}

TEST(Memory, ByteHelpers)
{
    EXPECT_EQ(MulDiv(-7, 1, 2) + MulDiv(1, 1, 0), -3);
    EXPECT_EQ(MulDiv(100000, 100000, 1), 1410065408);
    EXPECT_EQ(MulDiv(INT32_MIN, 1, -1), INT32_MIN);
    EXPECT_EQ(IsBadWritePtr(nullptr, 1), 1);

    uint8_t bytes[5] = {};
    SETDWORD(bytes + 1, 0x11223344, 1);
    EXPECT_EQ(GETDWORD(bytes + 1, 0), 0x44332211u);
    SETWORD(bytes + 1, 0xABCD, 0);
    EXPECT_EQ(GETWORD(bytes + 1, 0), 0xABCD);
    SETDWORD(bytes, 0xF1F2F3F4, 0);
    EXPECT_EQ(bytes[0], 0xF1);
    FillMemory(bytes, 3, 0x1FF);
    CopyMemory(bytes + 1, bytes, 4);
    EXPECT_EQ(GETDWORD(bytes, 1), 0xFFFFFFFFu);
    ZeroMemory(bytes, 5);
    ZeroMemory(bytes, -1);
    EXPECT_EQ(GETDWORD(bytes, 1), 0u);
}

} // namespace
