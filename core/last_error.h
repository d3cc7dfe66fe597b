// Short ways to end a failing export: they store the last error and give the failing result.
#pragma once

#include "wexelxi/core.h"

namespace wexelxi {

// Stores code and gives FALSE.
inline BOOL Fail(uint32_t code)
{
    SetLastError(code);
    return FALSE;
}

// Stores the code of the current errno and gives FALSE.
inline BOOL FailWithErrno()
{
    SetUnixError();
    return FALSE;
}

// Stores code and gives a null or a value of the caller's choice.
template <typename T>
T FailWith(uint32_t code, T result)
{
    SetLastError(code);
    return result;
}

} // namespace wexelxi
