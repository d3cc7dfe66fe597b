// For the language tables: the check that counts their rows when they are compiled.
#pragma once

#include <cstddef>

#include "wexelxi/locale.h"

namespace wexelxi {

// Rows in front of the end row. One end row must be there, as the last row.
template <size_t Size>
consteval size_t RowsBeforeEnd(const LANGUAGEROW (&rows)[Size])
{
    size_t count = 0;
    while (rows[count].key != 0)
        count++;
    return count == Size - 1 && rows[count].value[0] == '\0' ? count : 0;
}

template <size_t Size>
consteval size_t EntriesBeforeEnd(const LANGUAGEENTRY (&entries)[Size])
{
    size_t count = 0;
    while (entries[count].name)
        count++;
    return count == Size - 1 && !entries[count].code && entries[count].language == 0 ? count : 0;
}

} // namespace wexelxi
