// The picture engine: text for a date and time after a picture such as "dddd, MMMM dd, yyyy".
#pragma once

#include <cstdint>

#include "wexelxi/time.h"

namespace wexelxi {

// Where the names of days and months and the words for the halves of the day come from.
struct PictureNames {
    uintptr_t language;
    const char *(*find)(uintptr_t language, uintptr_t key); // null where there is none
};

struct PictureResult {
    int32_t count; // what FormatLocaleString returns
    bool fits;
};

// See FormatLocaleString for the flags, the picture and the count. out has size bytes, at least
// one; its first one is cleared before the picture is read.
PictureResult FormatPicture(const char *picture, uint32_t flags, const SYSTEMTIME &time,
                            const PictureNames &names, char *out, int32_t size);

} // namespace wexelxi
