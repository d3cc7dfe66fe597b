// What the benchmarks share. An operation of the library, the bare platform call under it and peers
// that do the same job are timed in rounds, one batch of each in a round, so that a busy machine
// slows all of them; a row tells the medians of times and of the ratios within a round.
//
// Each program prints lines of fields between tabs, which scripts/bench makes the report of:
//   row     operation, ns, bare call, ns, ratio, best peer, ns, ratio, what bounds it
//   growth  question, few, ns, many, ns, factor
//   memory  what, bytes
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

// Has the compiler believe that a value is read and that all memory may have changed.
template <typename Value>
inline void Keep(const Value &value)
{
    asm volatile("" : : "g"(&value) : "memory");
}

using Nanoseconds = double;

inline Nanoseconds Now()
{
    return std::chrono::duration<double, std::nano>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

// Something to time: how long so many times take.
struct Work {
    std::string name;
    std::function<Nanoseconds(size_t count)> time;
};

template <typename Once>
Work Do(std::string name, Once once)
{
    return {std::move(name), [once](size_t count) mutable {
                const Nanoseconds start = Now();
                for (; count; count--) {
                    once();
                    asm volatile("" : : : "memory");
                }
                return Now() - start;
            }};
}

// The library's own side of a row has no name of its own.
template <typename Once>
Work Ours(Once once)
{
    return Do("", once);
}

void Row(const std::string &operation, const std::string &bound, const Work &ours, const Work &bare,
         const std::vector<Work> &peers = {});

// The same question while there is little and while there is much.
void Growth(const std::string &question, const std::string &few, const Work &withFew,
            const std::string &many, const Work &withMany);

// Questions that are asked in one process before and after it comes to have much.
class GrowthOf {
public:
    GrowthOf(std::string question, std::string few, Work work);
    void Then(const std::string &many); // asks again, and tells

private:
    std::string question_, few_;
    Work work_;
    Nanoseconds before_;
};

// Memory that this process has resident, in bytes, and a line about it.
double ResidentBytes();
void Memory(const std::string &what, double bytes);
