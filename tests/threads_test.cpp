// Threads, semaphores, waits, critical sections and thread-local slots.
#include <atomic>
#include <csignal>
#include <cstring>
#include <gtest/gtest.h>
#include <list>
#include <malloc.h>
#include <string>
#include <thread>
#include <utility>

#include "support/last_error.h"
#include "support/library.h"
#include "wexelxi.h"

namespace {

void ExpectWaitRefused(HANDLE handle, uint32_t timeout = INFINITE)
{
    EXPECT_OUTCOME(WaitForSingleObject(handle, timeout), WAIT_FAILED, ERROR_GEN_FAILURE);
}

void ExpectWaited(HANDLE handle)
{
    EXPECT_OUTCOME(WaitForSingleObject(handle, INFINITE), WAIT_OBJECT_0, ERROR_SUCCESS);
}

void ExpectClosed(HANDLE handle)
{
    EXPECT_OUTCOME(CloseHandle(handle), TRUE, ERROR_SUCCESS);
}

// A thread that waits for a handle once it is told which, and says how that went.
struct Waiter {
    std::atomic<HANDLE> other{nullptr};
    std::atomic<uint32_t> result{77};
    UINT_PTR id = 0;
    HANDLE thread = nullptr;

    explicit Waiter(uint32_t flags = CREATE_JOINABLE)
    {
        EXPECT_LAST_ERROR((thread = CreateThread(nullptr, 0, Run, this, flags, &id)),
                          ERROR_SUCCESS);
    }
    ~Waiter()
    {
        Result();
        if (thread)
            ExpectClosed(thread);
    }
    void WaitFor(HANDLE handle)
    {
        other = handle;
        Sleep(30);
    }
    uint32_t Result()
    {
        while (result == 77)
            EXPECT_EQ(SwitchToThread(), TRUE);
        return result;
    }
    static void *Run(void *argument)
    {
        auto *self = static_cast<Waiter *>(argument);
        while (!self->other)
            SwitchToThread();
        EXPECT_EQ(GetCurrentThreadId(), self->id);
        self->result = WaitForSingleObject(self->other, INFINITE);
        return nullptr;
    }
};

TEST(Semaphore, CountsOneForEachRelease)
{
    StartedLibrary library;
    HANDLE semaphore = CreateSemaphore(nullptr, 2, 0, nullptr);
    ExpectWaited(semaphore);
    ExpectWaited(semaphore);
    EXPECT_OUTCOME(ReleaseSemaphore(semaphore, 5, nullptr), TRUE, ERROR_SUCCESS);
    ExpectWaitRefused(semaphore, 0); // no poll, and nothing is taken
    ExpectWaitRefused(semaphore, 1000);
    ExpectWaited(semaphore);

    struct sigaction action = {}; // without SA_RESTART
    action.sa_handler = [](int) {};
    sigaction(SIGUSR1, &action, nullptr);
    Waiter waiter;
    waiter.WaitFor(semaphore); // the count is 0 again, although 5 was asked for
    pthread_kill(waiter.id, SIGUSR1);
    Sleep(30);
    EXPECT_EQ(waiter.result, 77u) << "a signal ends no wait";
    gEnterWexelxiCriticalSection();
    ReleaseSemaphore(semaphore, 2, nullptr); // its lock is this thread's: the waiter needs none
    ExpectWaited(waiter.thread);
    std::atomic<bool> entered{false};
    std::thread locker([&] {
        SetErrorMode(0);
        entered = true;
    });
    Sleep(50);
    EXPECT_FALSE(entered) << "a wait gives back its own level of the lock only";
    gLeaveWexelxiCriticalSection();
    locker.join();
    ExpectClosed(semaphore);
}

TEST(Handles, OfOtherKindsAndArgumentsAreRefused)
{
    StartedLibrary library;
    int any = 0;
    const struct {
        LPVOID attributes;
        int32_t number; // initial count, or stack size
        const char *name;
    } rows[] = {{&any, 0, nullptr}, {nullptr, 0, ""}, {nullptr, -1, nullptr}};
    for (const auto &row : rows) {
        EXPECT_OUTCOME(CreateSemaphore(row.attributes, row.number, 1, row.name), nullptr,
                       ERROR_GEN_FAILURE);
        const uint32_t stackSize = row.name ? 1 : static_cast<uint32_t>(row.number);
        EXPECT_OUTCOME(CreateThread(row.attributes, stackSize, Waiter::Run, nullptr, 0, nullptr),
                       nullptr, ERROR_GEN_FAILURE);
    }
    HANDLE full = nullptr;
    EXPECT_LAST_ERROR((full = CreateSemaphore(nullptr, INT32_MAX, 1, nullptr)), ERROR_SUCCESS);
    EXPECT_OUTCOME(ReleaseSemaphore(full, 1, nullptr), FALSE, ERROR_GEN_FAILURE);
    HANDLE file = CreateFile(library.folder.file("f").c_str(), GENERIC_WRITE, 0, nullptr,
                             CREATE_ALWAYS, 0, nullptr);
    for (HANDLE handle : {HANDLE{}, INVALID_HANDLE_VALUE, file}) {
        ExpectWaitRefused(handle);
        EXPECT_OUTCOME(ReleaseSemaphore(handle, 1, nullptr), FALSE, ERROR_GEN_FAILURE);
    }
    ExpectClosed(full);
    ExpectClosed(file);
}

TEST(Thread, IsWaitedForOnceIfJoinable)
{
    StartedLibrary library;
    for (const uint32_t flags : {0u, 4u, CREATE_JOINABLE, 0xFFFFFFFFu}) {
        const bool isJoinable = flags & CREATE_JOINABLE;
        Waiter waiter(flags);
        pthread_attr_t attributes;
        int state = -1;
        pthread_getattr_np(waiter.id, &attributes);
        pthread_attr_getdetachstate(&attributes, &state);
        pthread_attr_destroy(&attributes);
        EXPECT_EQ(state, isJoinable ? PTHREAD_CREATE_JOINABLE : PTHREAD_CREATE_DETACHED);
        ExpectWaitRefused(waiter.thread, 0);
        if (!isJoinable)
            ExpectWaitRefused(waiter.thread);
        waiter.WaitFor(waiter.thread); // for itself: refused, and others still may
        if (isJoinable)
            ExpectWaited(waiter.thread);
        ExpectWaitRefused(waiter.thread);
        EXPECT_EQ(waiter.Result(), WAIT_FAILED);
    }
}

TEST(Thread, SecondWaitIsNotForAnotherOnTheSameStack)
{
    StartedLibrary library;
    HANDLE semaphore = CreateSemaphore(nullptr, 20, 1, nullptr);
    Waiter first;
    first.WaitFor(semaphore);
    ExpectWaited(first.thread);
    std::list<Waiter> others;
    while (others.size() < 10 && (others.empty() || others.back().id != first.id))
        others.emplace_back();
    EXPECT_EQ(others.back().id, first.id);
    ExpectWaitRefused(first.thread);
    for (Waiter &other : others) {
        other.WaitFor(semaphore);
        ExpectWaited(other.thread);
    }
    ExpectClosed(semaphore);
}

TEST(Thread, CancelledWaitIsAsIfItHadNotBeen)
{
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "the thread sanitizer's own pthread_join bears no cancellation";
#endif
    StartedLibrary library;
    HANDLE semaphore = CreateSemaphore(nullptr, 0, 1, nullptr);
    Waiter one, cancelled, next;
    one.WaitFor(semaphore);
    cancelled.WaitFor(one.thread);
    ExpectWaitRefused(one.thread);
    pthread_cancel(cancelled.id);
    ExpectWaited(cancelled.thread);
    cancelled.result = WAIT_FAILED;
    next.WaitFor(one.thread);
    ExpectWaitRefused(one.thread);
    ExpectClosed(std::exchange(one.thread, nullptr)); // the wait goes on without the handle
    ReleaseSemaphore(semaphore, 1, nullptr);
    ExpectWaited(next.thread);
    EXPECT_EQ(next.Result(), WAIT_OBJECT_0);
    ExpectClosed(semaphore);

    Waiter detached;
    pthread_detach(detached.id); // the host's own doing, which the platform refuses to wait for
    ExpectWaitRefused(detached.thread);
    detached.WaitFor(detached.thread);
}

std::string gFaults;

TEST(CriticalSection, IsRecursiveAndReportsWhatIsNotThere)
{
    SetCriticalSectionErrorProc(
        [](const char *word, int32_t code) { gFaults += word + std::to_string(code) + " "; });
    CRITICAL_SECTION section = nullptr;
    InitializeCriticalSection(&section);
    InitializeCriticalSection(nullptr);
    EnterCriticalSection(&section);
    EXPECT_OUTCOME(TryEnterCriticalSection(&section), TRUE, kUnchanged);
    for (int held = 2; held >= 0; held--) {
        std::thread([&] {
            const BOOL entered = TryEnterCriticalSection(&section);
            EXPECT_EQ(entered, held == 0);
            if (entered)
                LeaveCriticalSection(&section);
        }).join();
        if (held > 0)
            LeaveCriticalSection(&section);
    }
    DeleteCriticalSection(&section);
    EXPECT_EQ(section, nullptr);
    EXPECT_EQ(gFaults, "");

    const auto faults = [](CRITICAL_SECTION *none) {
        gFaults.clear();
        EnterCriticalSection(none);
        EXPECT_OUTCOME(TryEnterCriticalSection(none), FALSE, kUnchanged);
        LeaveCriticalSection(none);
        return gFaults;
    };
    DeleteCriticalSection(&section);
    DeleteCriticalSection(nullptr);
    EXPECT_EQ(faults(&section), "badenter0 badtryenter0 badleave0 ");
    EXPECT_EQ(faults(nullptr), "badenter0 badtryenter0 badleave0 ");
#ifndef __SANITIZE_THREAD__
    pthread_mutex_t broken;
    memset(&broken, 0xFF, sizeof broken);
    section = &broken;
    EXPECT_EQ(faults(&section), "enter22 tryenter22 leave22 ");
#endif
}

TEST(CriticalSection, GivesItsMutexBack)
{
    const size_t before = mallinfo2().uordblks;
    for (int round = 0; round < 1000; round++) {
        CRITICAL_SECTION section;
        InitializeCriticalSection(&section);
        DeleteCriticalSection(&section);
    }
    EXPECT_LT(mallinfo2().uordblks, before + 10'000);
}

TEST(ThreadLocal, BelongsToItsThread)
{
    const uint32_t key = TlsAlloc();
    int mine = 0;
    EXPECT_OUTCOME(TlsSetValue(key, &mine), TRUE, kUnchanged);
    std::thread([&] { EXPECT_EQ(TlsGetValue(key), nullptr); }).join();
    EXPECT_OUTCOME(TlsGetValue(key), &mine, kUnchanged);
}

} // namespace
