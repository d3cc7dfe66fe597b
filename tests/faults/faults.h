// Refuses the platform's calls one after the other as the library makes them, and looks at what is
// left. For programs that link the library's objects, in which the linker puts these calls between.
#pragma once

#include <cstdint>
#include <ostream>
#include <span>

#include "wexelxi/core.h"

// Where the files of the thread's scenario are; the current folder too, where a thread is alone.
inline thread_local const char *gFolder = ".";

// What is tried: one call of the library, or a few. It gives back all that it opens.
struct Scenario {
    const char *name;
    bool (*succeeds)();        // false with the last error of the export that failed
    void (*prepare)() = [] {}; // what stands before the calls are refused
    // The last error that its contract has for want of a handle's record.
    uint32_t forNoHandle = ERROR_NOT_ENOUGH_MEMORY;
    unsigned keeps = 0; // bytes that each round keeps, by contract
    bool alone = false; // it touches what is the whole process's
};

inline void PrintTo(const Scenario &scenario, std::ostream *out)
{
    *out << scenario.name;
}

// Runs a scenario with the first, the second, ... call of every family refused, once and from then
// on, each time in a process of its own, until none is refused any more. Whatever is refused:
// nothing crashes or hangs, no exception comes out, the lock is free, no descriptor, no search and
// no memory stays, a refused allocation that fails the call is told as such (8, or the number of
// the row), the files are as they were or as they should become (those whose names begin with "new"
// excepted), and the same call then works.
void ExpectSafe(const Scenario &scenario);

// Runs the scenarios from several threads at once, each in a folder of its own, for a second or for
// the seconds that SOAK_SECONDS says. All of them succeed, and no more is in use behind them.
void ExpectSafeTogether(std::span<const Scenario> scenarios);
