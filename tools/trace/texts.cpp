// Texts of the allocating conversions are freed with the platform's free: so that stands here too.
#include <cstdlib>
#include <dlfcn.h>

#include "tools/trace/book.h"
#include "tools/trace/settings.h"

namespace {

// The next of that name, which need not be the platform's; null while it is looked for, as dlsym
// may free on its way.
template <typename Function>
Function *Next(Function *&next, const char *name)
{
    static thread_local bool isLooking = false;
    if (!next && !isLooking) {
        isLooking = true;
        next = reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
        isLooking = false;
    }
    return next;
}

void (*gFree)(void *) = nullptr;
void *(*gRealloc)(void *, size_t) = nullptr;

} // namespace

extern "C" __attribute__((visibility("default"))) void free(void *block) noexcept
{
    if (block && trace::gSettings.check)
        trace::TextFreed(block);
    if (const auto next = Next(gFree, "free"))
        next(block);
}

extern "C" __attribute__((visibility("default"))) void *realloc(void *block, size_t size) noexcept
{
    if (block && trace::gSettings.check)
        trace::TextFreed(block);
    const auto next = Next(gRealloc, "realloc");
    return next ? next(block, size) : nullptr;
}

bool trace::SeesTextsFreed()
{
    return dlsym(RTLD_DEFAULT, "free") == reinterpret_cast<void *>(&free);
}
