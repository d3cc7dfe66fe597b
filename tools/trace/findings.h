// What --check writes.
#pragma once

#include <cstdint>
#include <tuple>

#include "tools/trace/catalogue.h"

namespace trace {

// A call and the place in the host or a plug-in that it was made from.
struct Site {
    CallIndex call = kCallCount; // none
    const void *caller = nullptr;
    bool operator<(const Site &other) const
    {
        return std::tie(call, caller) < std::tie(other.call, other.caller);
    }
};

struct Finding {
    const char *what; // "ended twice"
    const char *kind; // of the handle; null where there is none
    uintptr_t handle = 0;
    Site at;            // the wrong call
    Site made = {};     // where the handle comes from
    Site ended = {};    // where it was ended
    unsigned times = 1; // handles of one maker that were left together
};

void Report(const Finding &finding);

} // namespace trace
