// A function under the name of each export, out of the table of calls. The compiler holds each row
// against the public header's declaration.
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>

#include "tools/trace/pass.h"
#include "wexelxi.h"

namespace trace {
namespace {

void *gReal[kCallCount];

void *FindReal(CallIndex call)
{
    const char *name = kSignatures[call].name.data();
    if (void *next = dlsym(RTLD_NEXT, name))
        return next;
    // A library that was opened later stands behind nobody.
    if (void *library = dlopen("hwexelxi.so", RTLD_LAZY | RTLD_NOLOAD))
        if (void *found = dlsym(library, name))
            return found;
    fprintf(stderr, "wexelxi-trace: there is no %s behind the companion\n", name);
    abort();
}

} // namespace

void *Real(CallIndex call)
{
    void *real = __atomic_load_n(&gReal[call], __ATOMIC_RELAXED);
    if (!real) [[unlikely]] {
        real = FindReal(call);
        __atomic_store_n(&gReal[call], real, __ATOMIC_RELAXED);
    }
    return real;
}

} // namespace trace

// NOLINTBEGIN(bugprone-macro-parentheses)
#define CALL(family, result, name, parameters, arguments)                             \
    result name parameters                                                            \
    {                                                                                 \
        return trace::Pass<decltype(&::name)>{trace::k##name,                         \
                                              __builtin_return_address(0)} arguments; \
    }
// NOLINTEND(bugprone-macro-parentheses)
#define VARIADIC(...)
#include "tools/trace/calls.def"

// No function can pass the arguments of another on. This does what the contract of wsprintf says:
// vsprintf, under the global lock.
int32_t wsprintf(char *dst, const char *format, ...)
{
    using namespace trace;
    const uintptr_t values[] = {Word(dst), Word(format)};
    va_list arguments;
    va_start(arguments, format);
    const auto enter = reinterpret_cast<void (*)()>(Real(kgEnterWexelxiCriticalSection));
    const auto leave = reinterpret_cast<void (*)()>(Real(kgLeaveWexelxiCriticalSection));
    const auto write = [&] {
        enter();
        const int32_t length = vsprintf(dst, format, arguments);
        leave();
        va_end(arguments);
        return length;
    };
    if (!gSettings.watch[kwsprintf])
        return write();
    CallScope scope(kwsprintf, __builtin_return_address(0), values);
    const int32_t length = write();
    scope.Returned(Word(length));
    return length;
}
