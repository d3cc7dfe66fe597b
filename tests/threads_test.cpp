// Threads, semaphores, waits, critical sections and thread-local slots.
#include <atomic>
#include <csignal>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

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

// A thread that waits for a handle once it is told which, and says how that went.
struct Waiter {
    std::atomic<HANDLE> other{nullptr};
    std::atomic<uint32_t> result{77};
    UINT_PTR id = 0;
    HANDLE thread;

    explicit Waiter(uint32_t flags = CREATE_JOINABLE)
        : thread(CreateThread(nullptr, 0, Run, this, flags, &id))
    {
        EXPECT_NE(thread, nullptr);
        EXPECT_EQ(GetLastError(), 0u);
    }
    ~Waiter()
    {
        while (result == 77)
            SwitchToThread();
        EXPECT_EQ(CloseHandle(thread), TRUE);
    }
    void WaitFor(HANDLE handle)
    {
        other = handle;
        Sleep(30);
    }
    static void *Run(void *argument)
    {
        auto *self = static_cast<Waiter *>(argument);
        while (!self->other)
            SwitchToThread();
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
    EXPECT_EQ(CloseHandle(semaphore), TRUE);
}

TEST(Handles, OfOtherKindsAndArgumentsAreRefused)
{
    StartedLibrary library;
    int any = 0;
    const auto semaphore = [](LPVOID attributes, int32_t count, const char *name) {
        EXPECT_OUTCOME(CreateSemaphore(attributes, count, 1, name), nullptr, ERROR_GEN_FAILURE);
    };
    semaphore(&any, 0, nullptr);
    semaphore(nullptr, 0, "");
    semaphore(nullptr, -1, nullptr);
    const auto thread = [](LPVOID attributes, uint32_t stackSize) {
        EXPECT_OUTCOME(CreateThread(attributes, stackSize, Waiter::Run, nullptr, 0, nullptr),
                       nullptr, ERROR_GEN_FAILURE);
    };
    thread(&any, 0);
    thread(nullptr, 65536);
    HANDLE full = CreateSemaphore(nullptr, INT32_MAX, 1, nullptr);
    HANDLE file = CreateFile(library.folder.file("f").c_str(), GENERIC_WRITE, 0, nullptr,
                             CREATE_ALWAYS, 0, nullptr);
    for (HANDLE handle : {HANDLE{}, INVALID_HANDLE_VALUE, file}) {
        ExpectWaitRefused(handle);
        EXPECT_OUTCOME(ReleaseSemaphore(handle, 1, nullptr), FALSE, ERROR_GEN_FAILURE);
    }
    EXPECT_OUTCOME(ReleaseSemaphore(full, 1, nullptr), FALSE, ERROR_GEN_FAILURE);
    CloseHandle(full);
    CloseHandle(file);
}

TEST(Thread, IsWaitedForOnceIfJoinable)
{
    StartedLibrary library;
    for (const uint32_t flags : {0u, 4u, CREATE_JOINABLE, 0xFFFFFFFFu}) {
        Waiter waiter(flags);
        ExpectWaitRefused(waiter.thread, 0);
        if (!(flags & CREATE_JOINABLE))
            ExpectWaitRefused(waiter.thread);
        waiter.WaitFor(waiter.thread); // for itself: refused, and others still may
        if (flags & CREATE_JOINABLE)
            ExpectWaited(waiter.thread);
        ExpectWaitRefused(waiter.thread);
        EXPECT_EQ(waiter.result, WAIT_FAILED);
    }
}

void *EndAtOnce(void *)
{
    return nullptr;
}

void *WaitForIt(void *handle)
{
    EXPECT_EQ(WaitForSingleObject(handle, INFINITE), WAIT_OBJECT_0);
    return nullptr;
}

HANDLE StartWaiting(HANDLE handle, UINT_PTR *id = nullptr)
{
    HANDLE thread = CreateThread(nullptr, 0, WaitForIt, handle, CREATE_JOINABLE, id);
    Sleep(30);
    return thread;
}

TEST(Thread, SecondWaitIsNotForAnotherOnTheSameStack)
{
    StartedLibrary library;
    UINT_PTR firstId = 0, id = 0;
    HANDLE first = CreateThread(nullptr, 0, EndAtOnce, nullptr, CREATE_JOINABLE, &firstId);
    ExpectWaited(first);
    HANDLE semaphore = CreateSemaphore(nullptr, 0, 1, nullptr);
    std::vector<HANDLE> others;
    while (id != firstId && others.size() < 20)
        others.push_back(StartWaiting(semaphore, &id));
    EXPECT_EQ(id, firstId);
    ExpectWaitRefused(first);
    for (size_t i = 0; i < others.size(); i++)
        ReleaseSemaphore(semaphore, 1, nullptr);
    for (HANDLE other : others) {
        ExpectWaited(other);
        EXPECT_EQ(CloseHandle(other), TRUE);
    }
    EXPECT_EQ(CloseHandle(first), TRUE);
    EXPECT_EQ(CloseHandle(semaphore), TRUE);
}

TEST(Thread, CancelledWaitIsAsIfItHadNotBeen)
{
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "the thread sanitizer's own pthread_join bears no cancellation";
#endif
    StartedLibrary library;
    HANDLE semaphore = CreateSemaphore(nullptr, 0, 1, nullptr);
    HANDLE thread = StartWaiting(semaphore);
    UINT_PTR id = 0;
    HANDLE cancelled = StartWaiting(thread, &id);
    ExpectWaitRefused(thread);
    pthread_cancel(id);
    ExpectWaited(cancelled);
    HANDLE next = StartWaiting(thread);
    ExpectWaitRefused(thread);
    EXPECT_EQ(CloseHandle(thread), TRUE); // the wait goes on without the handle
    ReleaseSemaphore(semaphore, 1, nullptr);
    ExpectWaited(next);
    for (HANDLE handle : {cancelled, next, semaphore})
        EXPECT_EQ(CloseHandle(handle), TRUE);
}

TEST(Thread, ManyEndWhileOthersWait)
{
    StartedLibrary library;
    HANDLE semaphore = CreateSemaphore(nullptr, 0, 1, nullptr);
    std::vector<Waiter> waiters(20);
    for (Waiter &waiter : waiters)
        waiter.WaitFor(semaphore);
    std::thread other([&] { ExpectWaited(waiters[0].thread); });
    for (size_t i = 0; i < waiters.size(); i++)
        ReleaseSemaphore(semaphore, 1, nullptr);
    for (size_t i = 1; i < waiters.size(); i++)
        ExpectWaited(waiters[i].thread);
    other.join();
    CloseHandle(semaphore);
}

std::string gFaults;

TEST(CriticalSection, IsRecursiveAndReportsWhatIsNotThere)
{
    SetCriticalSectionErrorProc(
        [](const char *word, int32_t code) { gFaults += word + std::to_string(code) + " "; });
    CRITICAL_SECTION section = nullptr;
    InitializeCriticalSection(&section);
    EnterCriticalSection(&section);
    EXPECT_EQ(TryEnterCriticalSection(&section), TRUE);
    for (int held = 2; held > 0; held--) {
        std::thread([&] { EXPECT_EQ(TryEnterCriticalSection(&section), FALSE); }).join();
        LeaveCriticalSection(&section);
    }
    std::thread([&] {
        EXPECT_EQ(TryEnterCriticalSection(&section), TRUE);
        LeaveCriticalSection(&section);
    }).join();
    DeleteCriticalSection(&section);
    EXPECT_EQ(section, nullptr);
    EXPECT_EQ(gFaults, "");
    for (CRITICAL_SECTION *none : {&section, static_cast<CRITICAL_SECTION *>(nullptr)}) {
        gFaults.clear();
        EnterCriticalSection(none);
        EXPECT_EQ(TryEnterCriticalSection(none), FALSE);
        LeaveCriticalSection(none);
        DeleteCriticalSection(none);
        EXPECT_EQ(gFaults, "badenter0 badtryenter0 badleave0 ");
    }
}

TEST(ThreadLocal, BelongsToItsThread)
{
    const uint32_t key = TlsAlloc();
    int mine = 0;
    EXPECT_EQ(TlsSetValue(key, &mine), TRUE);
    std::thread([&] { EXPECT_EQ(TlsGetValue(key), nullptr); }).join();
    EXPECT_EQ(TlsGetValue(key), &mine);
    uint32_t last = key;
    while (last != UINT32_MAX) // until the platform has no more
        last = TlsAlloc();
}

} // namespace
