// The book of --check: which handles live, who made and ended them, and what was done wrong.
#pragma once

#include <cstdint>

#include "tools/trace/catalogue.h"

namespace trace {

// A call under way, and the handle that it is about to end.
struct Visit {
    const void *caller = nullptr;
    uintptr_t ending = 0;
    uint64_t number = 0; // of the handle's entry, which a new one at the same address replaces
};

// Judges what a call is given, before it is made.
Visit BeforeCall(CallIndex call, const void *caller, const uintptr_t *values);

// Enters what it made and ended; result is null if an exception left it.
void AfterCall(const Visit &visit, CallIndex call, const uintptr_t *values,
               const uintptr_t *result);

// Tells of what still lives when the process ends.
void ReportAtExit();

// A text that the host frees with the platform's free; texts.cpp.
void TextFreed(const void *text);
bool SeesTextsFreed();

// Around a fork.
void LockBook();
void UnlockBook();

// In a child: the handles are its parent's.
void ForgetHandles();

} // namespace trace
