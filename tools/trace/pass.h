// The way of one call through the companion.
#pragma once

#include <cstdint>
#include <ctime>
#include <type_traits>

#include "tools/trace/book.h"
#include "tools/trace/line.h"
#include "tools/trace/settings.h"

namespace trace {

// The function behind the companion's own of that name.
void *Real(CallIndex call);

// Stands around a call that is watched. It counts the depth of the thread's calls, also where an
// exception or a longjmp leaves some of them, and keeps errno as the library and the host left it.
class CallScope {
public:
    CallScope(CallIndex call, const void *caller, const uintptr_t *values);
    ~CallScope();
    void Returned(uintptr_t result);
    CallScope(const CallScope &) = delete;
    CallScope &operator=(const CallScope &) = delete;

private:
    void Finish(const uintptr_t *result);
    void Show(const uintptr_t *result, double seconds);
    void AddArguments(Line &line) const;
    void KeepArguments();

    const CallIndex call_;
    const uintptr_t *const values_;
    const uint8_t watch_;
    int depth_ = 0;
    bool finished_ = false;
    uint32_t errorBefore_ = 0;
    const Visit visit_;
    timespec start_ = {};
    size_t ends_[kMostParameters] = {}; // of each argument's text in kept_
    Line kept_;                         // arguments as they were before the call
};

// A value as the register holds it; numbers keep their sign.
template <typename T>
uintptr_t Word(T value)
{
    if constexpr (std::is_pointer_v<T>)
        return reinterpret_cast<uintptr_t>(value);
    else if constexpr (std::is_signed_v<T>)
        return static_cast<uintptr_t>(static_cast<intptr_t>(value));
    else
        return value;
}

template <typename Function>
struct Pass;

template <typename R, typename... A>
struct Pass<R (*)(A...)> {
    const CallIndex call;
    const void *const caller;

    R operator()(A... arguments) const
    {
        const auto real = reinterpret_cast<R (*)(A...)>(Real(call));
        if (!gSettings.watch[call]) [[likely]]
            return real(arguments...);
        const uintptr_t values[] = {Word(arguments)..., 0};
        CallScope scope(call, caller, values);
        if constexpr (std::is_void_v<R>) {
            real(arguments...);
            scope.Returned(0);
        } else {
            const R result = real(arguments...);
            scope.Returned(Word(result));
            return result;
        }
    }
};

} // namespace trace
