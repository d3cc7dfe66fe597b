// A settings record with a head of any length and with any bytes in it, in memory of its own size.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>

#include "tests/support/record.h"

// The shape tells the head's length and content; the block is the option block and whatever of it
// the head's two lengths do not take.
inline std::string DamagedRecord(uint8_t shape, const std::string &block)
{
    static constexpr uint16_t heads[] = {516, 600, 512, 393, 392, 391, 64, 0};
    const size_t head = heads[shape % 8];
    const size_t extra = std::min<size_t>(block.size(), UINT16_MAX);
    std::string bytes(std::max<size_t>(head + extra, 392), static_cast<char>(shape));
    bytes.replace(head, extra, block, 0, extra);
    bytes.replace(388, 2, Number(static_cast<int64_t>(head), 2));
    return bytes.replace(390, 2, Number(static_cast<int64_t>(extra), 2));
}
