// Walking and changing a settings record. All lengths come from the record and are checked first.
#include "print/devmode.h"

#include <algorithm>
#include <cstring>
#include <strings.h>

namespace wexelxi {

namespace {

size_t TextFieldsBytes(const DEVMODEOPTION *option)
{
    return static_cast<size_t>(option->nameLength) + static_cast<size_t>(option->uiNameLength);
}

size_t RowBytes(const DEVMODEOPTION *option)
{
    return 1 + static_cast<size_t>(option->valueNameWidth) +
           static_cast<size_t>(option->valueUINameWidth);
}

// Each text field has room for its NUL.
bool WidthsAreSound(const DEVMODEOPTION *option)
{
    return option->nameLength > 0 && option->uiNameLength > 0 && option->valueNameWidth > 0 &&
           option->valueUINameWidth > 0 && option->valueCount >= 0;
}

bool IsWholeNode(const DEVMODEOPTION *option, size_t available)
{
    if (available < sizeof(DEVMODEOPTION) || !WidthsAreSound(option))
        return false;
    const auto length = static_cast<size_t>(option->length); // a negative one becomes too long
    return length <= available &&
           length == sizeof(DEVMODEOPTION) + TextFieldsBytes(option) +
                         static_cast<size_t>(option->valueCount) * RowBytes(option);
}

// Null if no whole node stands at that offset of the block.
DEVMODEOPTION *NodeAt(std::span<char> block, size_t offset)
{
    auto *option = reinterpret_cast<DEVMODEOPTION *>(block.data() + offset);
    return IsWholeNode(option, block.size() - offset) ? option : nullptr;
}

// A text, ended by its NUL or by its field.
std::string_view FieldText(const char *field, size_t width)
{
    return {field, strnlen(field, width)};
}

} // namespace

std::span<char> RecordView::options() const
{
    const size_t head = headBytes();
    if (head < offsetof(DEVMODE, dmFields))
        return {};
    return {reinterpret_cast<char *>(record_) + head, bytes() - head};
}

std::string_view RecordView::printerName() const
{
    return FieldText(record_->dmDeviceName, Within(CCHDEVICENAME - 1));
}

DEVMODEOPTION *NextOption(std::span<char> block, const DEVMODEOPTION *option)
{
    if (!option)
        return NodeAt(block, 0);
    // An address in front of the block wraps to an offset behind it.
    const auto offset =
        reinterpret_cast<uintptr_t>(option) - reinterpret_cast<uintptr_t>(block.data());
    if (offset > block.size() || !NodeAt(block, offset))
        return nullptr;
    return NodeAt(block, offset + static_cast<size_t>(option->length));
}

DEVMODEOPTION *FindOption(std::span<char> block, std::string_view keyword)
{
    size_t offset = 0;
    while (DEVMODEOPTION *option = NodeAt(block, offset)) {
        if (EqualWithoutCase(KeywordOf(option), keyword))
            return option;
        offset += static_cast<size_t>(option->length);
    }
    return nullptr;
}

std::string_view KeywordOf(const DEVMODEOPTION *option)
{
    return FieldText(reinterpret_cast<const char *>(option + 1),
                     static_cast<size_t>(option->nameLength));
}

std::string_view ValueRows::name(size_t row) const
{
    return FieldText(first + row * rowBytes + 1, nameWidth);
}

ValueRows RowsOf(const DEVMODEOPTION *option)
{
    if (!WidthsAreSound(option))
        return {};
    const size_t front = sizeof(DEVMODEOPTION) + TextFieldsBytes(option);
    if (option->length < 0 || static_cast<size_t>(option->length) < front)
        return {};
    const size_t rowBytes = RowBytes(option);
    const size_t whole = (static_cast<size_t>(option->length) - front) / rowBytes;
    return {reinterpret_cast<char *>(const_cast<DEVMODEOPTION *>(option)) + front,
            std::min(whole, static_cast<size_t>(option->valueCount)), rowBytes,
            static_cast<size_t>(option->valueNameWidth)};
}

void SelectValue(DEVMODEOPTION *option, std::string_view valueName)
{
    const ValueRows rows = RowsOf(option);
    size_t fallback = 0;
    bool found = false;
    for (size_t row = 0; row < rows.count; row++) {
        if (rows.selected(row))
            fallback = row;
        const bool matches = EqualWithoutCase(rows.name(row), valueName);
        rows.selected(row) = matches;
        found |= matches;
    }
    if (!found && rows.count > 0 && option->kind != DMOPTION_PICKMANY)
        rows.selected(fallback) = 1;
}

void DeselectAllValues(DEVMODEOPTION *option)
{
    const ValueRows rows = RowsOf(option);
    for (size_t row = 0; row < rows.count; row++)
        rows.selected(row) = 0;
}

bool EqualWithoutCase(std::string_view first, std::string_view second)
{
    return first.size() == second.size() &&
           strncasecmp(first.data(), second.data(), first.size()) == 0;
}

} // namespace wexelxi
