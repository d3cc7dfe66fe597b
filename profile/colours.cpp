// The system colours, 0x00BBGGRR, and what is asked about them. They are static values: the profile
// replaces them at a start, and no display is asked.
#include <array>
#include <cstdlib>
#include <iterator>

#include "wexelxi/preferences.h"

// By index; the profile's key of an entry is one more.
// clang-format off
COLORREF WinsysColArr[] = {
    0xD8CCC0, 0x808000, 0x800000, 0x808080, 0xEFEFEF, 0xFFFFFF, 0x000000, // 0
    0x000000, 0x000000, 0xFFFFFF, 0xEFEFEF, 0xEFEFEF, 0x808080, 0xC56A31, // 7
    0xFFFFFF, 0xEFEFEF, 0x808080, 0x808080, 0x000000, 0xEFEFEF, 0xFFFFFF, // 14
    0x000000, 0xEFEFEF, 0x000000, 0xE1FFFF, 0xB99D7F, 0x000000, 0x000000, // 21
    0x000000, 0x000000, 0x000000, 0x800000, 0x008000, 0x808000, 0x000080, // 28
    0x800080, 0x008080, 0x808080, 0xFF0000, 0x00FF00, 0xFFFF00, 0x0000FF, // 35
    0xFF00FF, 0x00FFFF, 0xC0C0C0, 0xFFFFFF, 0xFFFFFF, 0x000000, 0x000000, // 42
    0x000000, 0x808000, 0xEFEFEF, 0x808080, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF, // 49
    0x800000, 0x000000, 0x000000, 0x000000, 0x000000, 0x000000, 0x000000, // 56
};
// clang-format on
static_assert(std::size(WinsysColArr) == 63);

COLORREF GetSysColor(uint32_t index)
{
    return index < std::size(WinsysColArr) ? WinsysColArr[index] : 0;
}

void GetSystemColors(COLORREF *) {}

namespace {

std::array<int, 3> ChannelsOf(COLORREF color)
{
    return {static_cast<int>(color & 0xFF), static_cast<int>(color >> 8 & 0xFF),
            static_cast<int>(color >> 16 & 0xFF)};
}

// Moves a channel to a distance of 50 from other, upwards if it stands above and there is room.
int MoveAway(int channel, int other)
{
    const int gap = 50 - abs(channel - other);
    if (channel > other)
        return channel + gap < 256 ? channel + gap : channel - gap;
    return channel - gap >= 0 ? channel - gap : channel + gap;
}

} // namespace

void gWidenColorGap(COLORREF *color, COLORREF other)
{
    const auto channels = ChannelsOf(*color);
    const auto others = ChannelsOf(other);
    bool isDark = true;
    for (size_t i = 0; i < channels.size(); i++)
        isDark = isDark && channels[i] < 80 && channels[i] >= others[i];
    if (isDark) {
        *color = 0xC0C0C0;
        return;
    }
    COLORREF moved = 0;
    for (size_t i = 0; i < channels.size(); i++) {
        if (abs(channels[i] - others[i]) > 49)
            return;
        moved |= static_cast<COLORREF>(MoveAway(channels[i], others[i])) << (8 * i);
    }
    *color = moved;
}
