// Guarded blocks, looked at from outside.
#pragma once

#include <cstdint>

namespace trace {

enum class Guards { kWhole, kHeadDamaged, kTailDamaged };

Guards LookAtGuards(uintptr_t block);

} // namespace trace
