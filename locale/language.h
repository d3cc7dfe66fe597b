// What the date and time text asks the language tables, beside their exported functions.
#pragma once

#include <cstdint>

namespace wexelxi {

// The value that GetLocaleInfo hands out, where it stands in its table; null if no table that
// serves the language has the key. Needs the global lock; sets no last error of its own.
const char *FindLocaleValue(uintptr_t language, uintptr_t key);

// The language itself, or for one of the words for it the language in force, as ValidateLCID tells
// it. Needs the global lock.
uintptr_t LanguageMeantBy(uintptr_t language);

} // namespace wexelxi
