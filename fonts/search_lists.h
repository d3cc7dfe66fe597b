// Which fonts answer a weight and an italic flag, in order of preference. Pure.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace wexelxi {

// One question to fontconfig: fonts of exactly this weight and slant.
struct SearchRow {
    int weight;
    int slant;
};

// The rows to try from first to last.
std::span<const SearchRow> SearchListFor(int32_t weight, bool italic);

// A file name that a TrueType font bears here: one character at least, then ".ttf" in lower case.
bool HasTrueTypeName(std::string_view file);

} // namespace wexelxi
