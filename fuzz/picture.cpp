// Any picture, flags, time and size: nothing may be written at or beyond the size.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "locale/picture.h"

using namespace wexelxi;

static const char *NameOf(uintptr_t, uintptr_t key)
{
    return key % 3 == 0 ? nullptr : key % 3 == 1 ? "" : "a name longer than an item of thirty-nine";
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    SYSTEMTIME time;
    if (size < sizeof time + 2)
        return 0;
    memcpy(&time, data, sizeof time);
    const std::string picture(data + sizeof time + 2, data + size);
    std::vector<char> out(1 + data[sizeof time], '~');
    const auto room = static_cast<int32_t>(out.size());
    const PictureResult result =
        FormatPicture(picture.c_str(), data[sizeof time + 1], time, {0, NameOf}, out.data(), room);
    const auto length = static_cast<int32_t>(strnlen(out.data(), out.size()));
    // The terminator is there, and the count is the text's, or 0 where it did not fit.
    if (length == room || result.count >= room || (!result.fits && result.count != 0) ||
        (result.fits && (result.count < length || out[static_cast<size_t>(result.count)] != 0)))
        abort();
    return 0;
}
