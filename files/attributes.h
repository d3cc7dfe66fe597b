// The attribute bits that stand for a platform mode.
#pragma once

#include <cstdint>
#include <sys/stat.h>

#include "wexelxi/files.h"

namespace wexelxi {

inline uint32_t AttributesFromMode(mode_t mode)
{
    const uint32_t type = S_ISDIR(mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_ARCHIVE;
    return mode & S_IWUSR ? type : type | FILE_ATTRIBUTE_READONLY;
}

} // namespace wexelxi
