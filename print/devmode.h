// A settings record in memory: how far it reaches, the walk of its option block and the changes to
// its rows. Pure, and safe on a damaged record: nothing here reads or writes outside it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "wexelxi/devmode.h"

namespace wexelxi {

// Bytes of the whole record, head and option block.
inline size_t RecordBytes(const DEVMODE *record)
{
    return size_t{record->dmSize} + record->dmDriverExtra;
}

// A record and how far it may be read and written: as far as its own two lengths tell, and never
// beyond its room. This is the one check of damaged records.
class RecordView {
public:
    // A record in the caller's memory, where the name and the two lengths are taken to be there; or
    // in a block of so many bytes, of which less than those hold no record but a name.
    RecordView(const DEVMODE *record, size_t room = SIZE_MAX)
        : record_(const_cast<DEVMODE *>(record)), room_(room)
    {
    }

    DEVMODE *get() const { return record_; }
    DEVMODE *operator->() const { return record_; }

    bool holdsLengths() const { return room_ >= offsetof(DEVMODE, dmFields); }
    // Bytes of the head, and of the whole record.
    size_t headBytes() const { return Within(holdsLengths() ? record_->dmSize : 0); }
    size_t bytes() const { return Within(holdsLengths() ? RecordBytes(record_) : 0); }

    // The option block, which stands at the stored length of the head; empty if such a head does
    // not hold the two lengths, which a change of the block could change then.
    std::span<char> options() const;

    // The printer that it names: at most 127 characters, also where the NUL is missing.
    std::string_view printerName() const;

private:
    size_t Within(size_t count) const { return count < room_ ? count : room_; }

    DEVMODE *record_;
    size_t room_;
};

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
