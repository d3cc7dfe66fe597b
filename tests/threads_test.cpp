// Threads, semaphores, waits, critical sections and thread-local slots.
#include <atomic>
#include <csignal>
#include <gtest/gtest.h>
#include <pthread.h>
#include <string>
#include <thread>
#include <vector>

#include "support/library.h"
#include "wexelxi.h"

namespace {

constexpr uint32_t kFailure = ERROR_GEN_FAILURE;

// Hangs, until the test's time limit, if the calling thread still holds the lock.
void ExpectLockIsFree()
{
    std::thread([] { SetErrorMode(0); }).join();
}

HANDLE Semaphore(int32_t count)
{
    HANDLE semaphore = CreateSemaphore(nullptr, count, 0, nullptr);
    EXPECT_NE(semaphore, nullptr);
    EXPECT_EQ(GetLastError(), 0u);
    return semaphore;
}

void ExpectRefusedWait(HANDLE handle, uint32_t timeout)
{
    SetLastError(0);
    EXPECT_EQ(WaitForSingleObject(handle, timeout), WAIT_FAILED) << timeout;
    EXPECT_EQ(GetLastError(), kFailure);
    ExpectLockIsFree();
}

void *WaitForArgument(void *semaphore)
{
    WaitForSingleObject(semaphore, INFINITE);
    return nullptr;
}

void *RaiseFlag(void *flag)
{
    *static_cast<std::atomic<bool> *>(flag) = true;
    return nullptr;
}

TEST(Semaphore, CountsOneForEachRelease)
{
    StartedLibrary library;
    HANDLE semaphore = Semaphore(2);
    int32_t previous = 77;
    for (int i = 0; i < 2; i++)
        EXPECT_EQ(WaitForSingleObject(semaphore, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(ReleaseSemaphore(semaphore, 5, &previous), TRUE);
    EXPECT_EQ(previous, 77);
    ExpectRefusedWait(semaphore, 0);    // no poll
    ExpectRefusedWait(semaphore, 1000); // and no time limit
    SetLastError(77);
    EXPECT_EQ(WaitForSingleObject(semaphore, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(GetLastError(), 0u);

    std::atomic<bool> passed{false};
    std::thread waiter([&] { // the count is 0 again, although 5 was asked for
        WaitForSingleObject(semaphore, INFINITE);
        passed = true;
    });
    Sleep(50);
    EXPECT_FALSE(passed);
    EXPECT_EQ(ReleaseSemaphore(semaphore, 1, nullptr), TRUE); // takes the lock: the waiter has none
    waiter.join();
    EXPECT_EQ(CloseHandle(semaphore), TRUE);
}

TEST(Semaphore, RefusesWhatItIsNot)
{
    StartedLibrary library;
    int any = 0;
    EXPECT_EQ(CreateSemaphore(&any, 0, 1, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), kFailure);
    for (const char *name : {"name", ""})
        EXPECT_EQ(CreateSemaphore(nullptr, 0, 1, name), nullptr);
    for (const int32_t count : {-1, INT32_MIN})
        EXPECT_EQ(CreateSemaphore(nullptr, count, 1, nullptr), nullptr);

    HANDLE full = Semaphore(INT32_MAX);
    HANDLE thread = CreateThread(nullptr, 0, WaitForArgument, full, CREATE_JOINABLE, nullptr);
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(ReleaseSemaphore(full, 1, nullptr), TRUE);
    for (HANDLE handle : {full, thread, HANDLE{}, INVALID_HANDLE_VALUE}) {
        SetLastError(0);
        EXPECT_EQ(ReleaseSemaphore(handle, 1, nullptr), FALSE);
        EXPECT_EQ(GetLastError(), kFailure);
        ExpectLockIsFree();
    }
    CloseHandle(thread);
    CloseHandle(full);
}

TEST(Thread, RefusesAttributesAndStackSizes)
{
    StartedLibrary library;
    std::atomic<bool> ran{false};
    EXPECT_EQ(CreateThread(&ran, 0, RaiseFlag, &ran, 0, nullptr), nullptr);
    EXPECT_EQ(CreateThread(nullptr, 65536, RaiseFlag, &ran, 0, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), kFailure);
    ExpectLockIsFree();
    Sleep(20);
    EXPECT_FALSE(ran);
}

struct Gate {
    HANDLE semaphore = nullptr;
    std::atomic<bool> passed{false};
};

void *PassGate(void *argument)
{
    auto *gate = static_cast<Gate *>(argument);
    WaitForSingleObject(gate->semaphore, INFINITE);
    gate->passed = true;
    return nullptr;
}

TEST(Thread, IsWaitedForOnceIfJoinable)
{
    StartedLibrary library;
    for (const uint32_t flags : {0u, 4u, CREATE_JOINABLE, 0xFFFFFFFFu}) {
        Gate gate{Semaphore(0)};
        UINT_PTR id = 0;
        HANDLE thread = CreateThread(nullptr, 0, PassGate, &gate, flags, &id);
        ASSERT_NE(thread, nullptr);
        EXPECT_EQ(GetLastError(), 0u);
        EXPECT_NE(id, GetCurrentThreadId());
        ExpectRefusedWait(thread, 0);
        const bool joinable = flags & CREATE_JOINABLE;
        if (!joinable)
            ExpectRefusedWait(thread, INFINITE);
        ReleaseSemaphore(gate.semaphore, 1, nullptr);
        if (joinable) {
            EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
        }
        while (!gate.passed)
            SwitchToThread();
        ExpectRefusedWait(thread, INFINITE);
        EXPECT_EQ(CloseHandle(thread), TRUE);
        EXPECT_EQ(CloseHandle(gate.semaphore), TRUE);
    }
}

// A thread that waits for another handle, told to it through a gate.
struct Waiter {
    HANDLE known = nullptr;
    HANDLE other = nullptr;
    HANDLE thread = nullptr;
    uint32_t result = 77;

    Waiter() : known(Semaphore(0))
    {
        thread = CreateThread(nullptr, 0, Run, this, CREATE_JOINABLE, nullptr);
    }
    ~Waiter()
    {
        EXPECT_EQ(CloseHandle(thread), TRUE);
        EXPECT_EQ(CloseHandle(known), TRUE);
    }
    void Begin(HANDLE handle)
    {
        other = handle;
        ReleaseSemaphore(known, 1, nullptr);
    }
    static void *Run(void *argument)
    {
        auto *self = static_cast<Waiter *>(argument);
        WaitForSingleObject(self->known, INFINITE);
        self->result = WaitForSingleObject(self->other, INFINITE);
        ExpectLockIsFree();
        return nullptr;
    }
};

TEST(Thread, CanNotWaitForItself)
{
    StartedLibrary library;
    Waiter self;
    self.Begin(self.thread);
    Sleep(20);
    EXPECT_EQ(WaitForSingleObject(self.thread, INFINITE), WAIT_OBJECT_0) << "others still may";
    EXPECT_EQ(self.result, WAIT_FAILED);
}

TEST(Thread, CanNotWaitForItsWaiter)
{
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "this sanitizer aborts on a join that fails";
#endif
    StartedLibrary library;
    Waiter first, second;
    first.Begin(second.thread);
    Sleep(50);
    second.Begin(first.thread);
    EXPECT_EQ(WaitForSingleObject(first.thread, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(first.result, WAIT_OBJECT_0);
    EXPECT_EQ(second.result, WAIT_FAILED);
}

TEST(Thread, MayBeClosedWhileOneWaits)
{
    StartedLibrary library;
    HANDLE gate = Semaphore(0);
    HANDLE thread = CreateThread(nullptr, 0, WaitForArgument, gate, CREATE_JOINABLE, nullptr);
    std::atomic<uint32_t> result{77};
    std::thread waiter([&] { result = WaitForSingleObject(thread, INFINITE); });
    Sleep(50);
    EXPECT_EQ(CloseHandle(thread), TRUE);
    ReleaseSemaphore(gate, 1, nullptr);
    waiter.join();
    EXPECT_EQ(result, WAIT_OBJECT_0);
    CloseHandle(gate);
}

TEST(Wait, RefusesOtherHandles)
{
    StartedLibrary library;
    HANDLE file = CreateFile(library.folder.file("f").c_str(), GENERIC_WRITE, 0, nullptr,
                             CREATE_ALWAYS, 0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    for (HANDLE handle : {file, HANDLE{}, INVALID_HANDLE_VALUE})
        ExpectRefusedWait(handle, INFINITE);
    CloseHandle(file);
}

TEST(Wait, GivesUpOneLevelOfTheLock)
{
    StartedLibrary library;
    HANDLE semaphore = Semaphore(1);
    gEnterWexelxiCriticalSection();
    WaitForSingleObject(semaphore, INFINITE);
    std::atomic<bool> entered{false};
    std::thread other([&] {
        SetErrorMode(0);
        entered = true;
    });
    Sleep(50);
    EXPECT_FALSE(entered) << "the caller's own level stays";
    gLeaveWexelxiCriticalSection();
    other.join();
    CloseHandle(semaphore);
}

TEST(Wait, OutlastsSignals)
{
    StartedLibrary library;
    HANDLE semaphore = Semaphore(0);
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    sigaction(SIGUSR1, &action, nullptr); // without SA_RESTART
    std::atomic<bool> passed{false};
    std::thread interrupted([&] {
        EXPECT_EQ(WaitForSingleObject(semaphore, INFINITE), WAIT_OBJECT_0);
        passed = true;
    });
    for (int i = 0; i < 5; i++) {
        Sleep(10);
        pthread_kill(interrupted.native_handle(), SIGUSR1);
    }
    Sleep(20);
    EXPECT_FALSE(passed);
    ReleaseSemaphore(semaphore, 1, nullptr);
    interrupted.join();
    CloseHandle(semaphore);
}

TEST(Wait, LeavesNothingHeldWhenCancelled)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "this sanitizer does not know cancelled threads";
#endif
    StartedLibrary library;
    HANDLE semaphore = Semaphore(0);
    UINT_PTR id = 0;
    HANDLE cancelled = CreateThread(nullptr, 0, WaitForArgument, semaphore, CREATE_JOINABLE, &id);
    Sleep(20);
    pthread_cancel(id);
    EXPECT_EQ(WaitForSingleObject(cancelled, INFINITE), WAIT_OBJECT_0);
    ExpectLockIsFree();
    CloseHandle(cancelled);
    CloseHandle(semaphore);
}

TEST(Thread, ManyEndWhileOthersWait)
{
    StartedLibrary library;
    HANDLE semaphore = Semaphore(0);
    std::vector<HANDLE> threads;
    for (int i = 0; i < 40; i++)
        threads.push_back(
            CreateThread(nullptr, 0, WaitForArgument, semaphore, CREATE_JOINABLE, nullptr));
    for (size_t i = 0; i < threads.size(); i++)
        EXPECT_EQ(ReleaseSemaphore(semaphore, 1, nullptr), TRUE);
    for (HANDLE thread : threads) {
        EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
        EXPECT_EQ(CloseHandle(thread), TRUE);
    }
    CloseHandle(semaphore);
}

std::string gFaults;

void RecordFault(const char *word, int32_t code)
{
    gFaults += word + (" " + std::to_string(code)) + "\n";
}

TEST(CriticalSection, IsRecursiveAndExclusive)
{
    SetCriticalSectionErrorProc(RecordFault);
    CRITICAL_SECTION section = nullptr;
    InitializeCriticalSection(&section);
    EnterCriticalSection(&section);
    EXPECT_EQ(TryEnterCriticalSection(&section), TRUE);
    for (const bool free : {false, false, true}) {
        std::thread([&] {
            EXPECT_EQ(TryEnterCriticalSection(&section), free ? TRUE : FALSE);
            if (free)
                LeaveCriticalSection(&section);
        }).join();
        if (!free)
            LeaveCriticalSection(&section);
    }
    EXPECT_EQ(gFaults, "");
#ifndef __SANITIZE_THREAD__ // which takes the fault for one of ours
    LeaveCriticalSection(&section);
    EXPECT_EQ(gFaults, "leave 1\n") << "by a thread that does not hold it";
#endif
    DeleteCriticalSection(&section);
    EXPECT_EQ(section, nullptr);
}

TEST(CriticalSection, ReportsWhatIsNotThere)
{
    SetCriticalSectionErrorProc(RecordFault);
    CRITICAL_SECTION empty = nullptr;
    for (CRITICAL_SECTION *section : {&empty, static_cast<CRITICAL_SECTION *>(nullptr)}) {
        gFaults.clear();
        EnterCriticalSection(section);
        EXPECT_EQ(TryEnterCriticalSection(section), FALSE);
        LeaveCriticalSection(section);
        DeleteCriticalSection(section);
        EXPECT_EQ(gFaults, "badenter 0\nbadtryenter 0\nbadleave 0\n");
    }
    InitializeCriticalSection(nullptr);
    SetCriticalSectionErrorProc(nullptr);
    EnterCriticalSection(&empty);
}

TEST(ThreadLocal, BelongsToItsThread)
{
    const uint32_t key = TlsAlloc();
    int mine = 0;
    EXPECT_EQ(TlsGetValue(key), nullptr);
    EXPECT_EQ(TlsSetValue(key, &mine), TRUE);
    std::thread([&] { EXPECT_EQ(TlsGetValue(key), nullptr); }).join();
    EXPECT_EQ(TlsGetValue(key), &mine);
    EXPECT_EQ(TlsSetValue(0xFFFFFFF0u, &mine), TRUE) << "a wrong key is the caller's error";
    uint32_t last = key;
    while (last != UINT32_MAX) // until the platform has no more
        last = TlsAlloc();
}

} // namespace
