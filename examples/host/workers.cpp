#include "workers.h"

#include <exception>
#include <vector>

#include "host.h"

namespace {

struct Shared {
    HANDLE places; // a semaphore
    const std::function<void(int)> &task;
    CRITICAL_SECTION section; // guards the next field
    std::exception_ptr failure;
};

struct Work {
    Shared *shared;
    int number;
};

void *RunOne(void *argument)
{
    const Work &work = *static_cast<Work *>(argument);
    Shared &shared = *work.shared;
    WaitForSingleObject(shared.places, INFINITE);
    try {
        shared.task(work.number);
    } catch (...) {
        EnterCriticalSection(&shared.section);
        if (!shared.failure)
            shared.failure = std::current_exception();
        LeaveCriticalSection(&shared.section);
    }
    ReleaseSemaphore(shared.places, 1, nullptr);
    return nullptr;
}

} // namespace

void RunOnWorkers(int count, int places, const std::function<void(int)> &task)
{
    Handle semaphore(CreateSemaphore(nullptr, places, places, nullptr));
    Check(semaphore.valid(), "CreateSemaphore");
    Shared shared{semaphore.get(), task, nullptr, nullptr};
    InitializeCriticalSection(&shared.section);

    std::vector<Work> work;
    for (int i = 0; i < count; i++)
        work.push_back({&shared, i});
    std::vector<Handle> threads;
    for (Work &one : work) {
        // Only a thread made with this flag can be waited for.
        threads.emplace_back(CreateThread(nullptr, 0, RunOne, &one, CREATE_JOINABLE, nullptr));
        Check(threads.back().valid(), "CreateThread");
    }
    for (const Handle &thread : threads)
        Check(WaitForSingleObject(thread.get(), INFINITE) == WAIT_OBJECT_0, "WaitForSingleObject");

    DeleteCriticalSection(&shared.section);
    if (shared.failure)
        std::rethrow_exception(shared.failure);
}
