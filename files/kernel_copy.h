// Copies between two descriptors without the bytes passing through the process.
#pragma once

namespace wexelxi {

// Copies one ordinary file to another, empty one as far as the kernel can, and keeps its holes.
// Leaves both descriptors behind what was copied: nothing, a part or all of it.
void CopyInKernel(int source, int target);

} // namespace wexelxi
