#include "tools/trace/guards.h"

#include "tools/trace/line.h"
#include "wexelxi/memory.h"

namespace trace {

Guards LookAtGuards(uintptr_t block)
{
    struct {
        uint64_t guard;
        int64_t size;
    } head;
    uint64_t tail = 0;
    if (!ReadObject(block - 16, head) || head.guard != GLOBAL_HEAD_GUARD || head.size < 0)
        return Guards::kHeadDamaged;
    const auto rounded = static_cast<uintptr_t>(head.size) & ~uintptr_t{7};
    if (!ReadObject(block + rounded + 8, tail) || tail != GLOBAL_TAIL_GUARD)
        return Guards::kTailDamaged;
    return Guards::kWhole;
}

} // namespace trace
