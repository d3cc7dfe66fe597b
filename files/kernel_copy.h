// Copies between two descriptors without the bytes passing through the process.
#pragma once

#include <optional>
#include <sys/types.h>

namespace wexelxi {

// Copies one ordinary file to another, empty one as far as the kernel can, and keeps its holes.
// Gives how far that went, nothing, a part or all of it; the caller goes on from there, wherever
// the descriptors stand. Nothing if one of them is no ordinary file.
std::optional<off_t> CopyInKernel(int source, int target);

} // namespace wexelxi
