// The 8-bit code page in both directions, as tables made at compile time.
#pragma once

#include <array>
#include <cstdint>

namespace wexelxi {

// What has no form in the code page, and what an undefined byte reads as: the inverted question
// mark.
constexpr uint8_t kReplacement = 0xBF;

// The UTF-8 of each byte from 0x80 on, with its first byte lowest.
extern const std::array<uint32_t, 256> gCodePageToUtf8;

// The way back for code points below 256.
extern const std::array<uint8_t, 256> gLowCodeBytes;

// The way back for the others, in ascending order of their byte: gHighCodeBytes[i] stands for
// gHighCodePoints[i].
constexpr int32_t gHighCodeCount = 27;
extern const std::array<uint16_t, gHighCodeCount> gHighCodePoints;
extern const std::array<uint8_t, gHighCodeCount> gHighCodeBytes;

} // namespace wexelxi
