// A settings record in memory: the walk of its option block and the changes to its rows. Pure, and
// safe on a damaged record: nothing here reads or writes outside the record's own bytes. Only the
// name and the two stored lengths are taken to be there.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "wexelxi/devmode.h"

namespace wexelxi {

// Bytes of the whole record, head and option block.
inline size_t RecordBytes(const DEVMODE *record)
{
    return size_t{record->dmSize} + record->dmDriverExtra;
}

// Bytes of the head. A record that tells no size at all is a plain head, such as a host makes
// itself.
inline size_t HeadBytes(const DEVMODE *record)
{
    return RecordBytes(record) == 0 ? sizeof(DEVMODE) : record->dmSize;
}

// The option block, which stands at the stored length of the head; empty if such a head does not
// hold the two lengths.
std::span<char> OptionBlock(const DEVMODE *record);

// The printer that a record names: at most 127 characters, also where the NUL is missing.
std::string PrinterNameOf(const DEVMODE *record);

// The first node, or the one behind option. Null at the first node that does not lie whole inside
// the block or whose length is not the sum of its parts; so each node given lies inside.
DEVMODEOPTION *NextOption(std::span<char> block, const DEVMODEOPTION *option);

// The first node of a keyword, without regard to case; null if there is none.
DEVMODEOPTION *FindOption(std::span<char> block, std::string_view keyword);

// The keyword, ended by its NUL or by its field.
std::string_view KeywordOf(const DEVMODEOPTION *option);

// The value rows of a node, as many as lie whole inside it.
struct ValueRows {
    char *first;
    size_t count;
    size_t rowBytes;
    size_t nameWidth;

    char &selected(size_t row) const { return first[row * rowBytes]; }
    // The value name, ended by its NUL or by its field.
    std::string_view name(size_t row) const;
};
ValueRows RowsOf(const DEVMODEOPTION *option);

// Selects the rows of that name and no others. Without such a row a single-choice option keeps its
// last selected row, or gets its first one.
void SelectValue(DEVMODEOPTION *option, std::string_view valueName);

void DeselectAllValues(DEVMODEOPTION *option);

// Equal as strcasecmp tells it.
bool EqualWithoutCase(std::string_view first, std::string_view second);

} // namespace wexelxi
