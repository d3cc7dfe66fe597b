// What an export does when memory runs out: its failing result with last error 8, the lock free and
// nothing half done. Containers inside throw; this is where that ends.
#pragma once

#include <new>
#include <utility>

#include "core/last_error.h"

namespace wexelxi {

// Gives what body gives, or where memory runs out the failing result with last error
// ERROR_NOT_ENOUGH_MEMORY. Whatever else passes through, a host's exception or a thread's end, goes
// on. No callback of a host is called inside body: an exception of its own is not ours to take.
template <typename Result, typename Body>
Result OrNoMemory(Result failing, Body &&body)
{
    try {
        return std::forward<Body>(body)();
    } catch (const std::bad_alloc &) {
        return FailWith(ERROR_NOT_ENOUGH_MEMORY, std::move(failing));
    }
}

// The same where there is no failing result.
template <typename Body>
void OrNoMemory(Body &&body)
{
    OrNoMemory(0, [&] { return std::forward<Body>(body)(), 0; });
}

} // namespace wexelxi
