// What the command asks of the companion: it comes through the environment.
#pragma once

#include <cstdint>
#include <string_view>

#include "tools/trace/catalogue.h"

namespace trace {

inline constexpr char kFlagsVariable[] = "WEXELXI_TRACE_FLAGS"; // letters as on the command line
inline constexpr char kLengthVariable[] = "WEXELXI_TRACE_LENGTH";
inline constexpr char kSelectVariable[] = "WEXELXI_TRACE_SELECT";
inline constexpr char kOutputVariable[] = "WEXELXI_TRACE_OUTPUT";
inline constexpr char kFindingsVariable[] = "WEXELXI_TRACE_FINDINGS"; // receives a byte a finding
inline constexpr char kPreloadVariable[] = "WEXELXI_TRACE_PRELOAD";   // LD_PRELOAD as it was

enum WatchBits : uint8_t { kShow = 1, kCount = 2, kCheck = 4 };

struct Settings {
    bool json = false;
    bool counts = false;
    bool check = false;
    bool follow = false;
    bool seesTextsFreed = false; // not where the host brings an allocator of its own
    char times = 's';            // since the start; 't' of day; 'r' since the line before
    uint32_t length = 32;
    int output = -1;
    char findings[64] = "";
    // What is to be done about each call; all 0 until the companion has started.
    uint8_t watch[kCallCount] = {};
};

extern Settings gSettings;

// Applies a list of families, names and patterns, each with or without '!', in its order. The list
// begins with everything if its first word has a '!'. Gives the first word that names nothing.
std::string_view Select(std::string_view list, bool (&chosen)[kCallCount]);

// Writes a whole line to the output.
void WriteLine(std::string_view line);

} // namespace trace
