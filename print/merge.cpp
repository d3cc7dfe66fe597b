// Which field of a record passes to another, and when.
#include "print/merge.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "print/devmode.h"

namespace wexelxi {

namespace {

struct HeadField {
    size_t offset;
    size_t width;
};

#define HEAD_FIELD(field)                                \
    HeadField                                            \
    {                                                    \
        offsetof(DEVMODE, field), sizeof(DEVMODE::field) \
    }

constexpr HeadField kPaper = HEAD_FIELD(dmPaperSize);
constexpr HeadField kBin = HEAD_FIELD(dmDefaultSource);
constexpr HeadField kPaperFields[] = {
    kPaper,
    HEAD_FIELD(dmPaperLength),
    HEAD_FIELD(dmPaperWidth),
};
constexpr HeadField kAlwaysPassing[] = {
    HEAD_FIELD(dmOrientation), HEAD_FIELD(dmCopies),        HEAD_FIELD(dmScale),
    HEAD_FIELD(dmColor),       HEAD_FIELD(dmDuplex),        HEAD_FIELD(dmCollate),
    HEAD_FIELD(dmFields),      HEAD_FIELD(dmJobSheetStart), HEAD_FIELD(dmJobSheetEnd),
};

#undef HEAD_FIELD

bool Has(const DEVMODE *record, HeadField field)
{
    return field.offset + field.width <= HeadBytes(record);
}

void Pass(const DEVMODE *source, DEVMODE *target, HeadField field)
{
    if (Has(source, field) && Has(target, field))
        memcpy(reinterpret_cast<char *>(target) + field.offset,
               reinterpret_cast<const char *>(source) + field.offset, field.width);
}

// Index of a code, which a record holds as a signed number; codes.size() if there is none.
size_t IndexOf(std::span<const uint16_t> codes, int code)
{
    return static_cast<size_t>(std::find(codes.begin(), codes.end(), code) - codes.begin());
}

void PassPaper(const DEVMODE *source, DEVMODE *target, const PrinterOffer &offer)
{
    if (!Has(source, kPaper) ||
        IndexOf(offer.paperCodes, source->dmPaperSize) == offer.paperCodes.size())
        return;
    for (HeadField field : kPaperFields)
        Pass(source, target, field);
}

void PassBin(const DEVMODE *source, DEVMODE *target, const PrinterOffer &from,
             const PrinterOffer &to)
{
    if (!Has(source, kBin) || !Has(target, kBin))
        return;
    const size_t bin = IndexOf(from.binCodes, source->dmDefaultSource);
    if (bin == from.binCodes.size())
        return;
    for (size_t row = 0; row < to.binCodes.size(); row++) {
        if (memcmp(to.binNames[row], from.binNames[bin], CCHBINNAME) == 0) {
            target->dmDefaultSource = static_cast<int16_t>(to.binCodes[row]);
            return;
        }
    }
}

bool HasRow(const ValueRows &rows, std::string_view name)
{
    for (size_t row = 0; row < rows.count; row++)
        if (EqualWithoutCase(rows.name(row), name))
            return true;
    return false;
}

// A setting that the target cannot express never clears the target's own choice.
bool SharesSelectedValue(const ValueRows &source, const ValueRows &target)
{
    for (size_t row = 0; row < source.count; row++)
        if (source.selected(row) && HasRow(target, source.name(row)))
            return true;
    return false;
}

// Selects the first row of a value name, or all of them.
void SelectRows(const ValueRows &rows, std::string_view name, bool all)
{
    for (size_t row = 0; row < rows.count; row++) {
        if (!EqualWithoutCase(rows.name(row), name))
            continue;
        rows.selected(row) = 1;
        if (!all)
            return;
    }
}

void PassOption(const DEVMODEOPTION *source, DEVMODEOPTION *target)
{
    const ValueRows from = RowsOf(source);
    const ValueRows to = RowsOf(target);
    if (!SharesSelectedValue(from, to))
        return;
    const bool many = source->kind == DMOPTION_PICKMANY && target->kind == DMOPTION_PICKMANY;
    DeselectAllValues(target);
    for (size_t row = 0; row < from.count; row++)
        if (from.selected(row))
            SelectRows(to, from.name(row), many);
}

void PassOptions(const DEVMODE *source, DEVMODE *target)
{
    const std::span<char> from = OptionBlock(source);
    const std::span<char> to = OptionBlock(target);
    const DEVMODEOPTION *option = nullptr;
    while ((option = NextOption(from, option)))
        if (DEVMODEOPTION *known = FindOption(to, KeywordOf(option)))
            PassOption(option, known);
}

} // namespace

void MergeSettings(const DEVMODE *source, DEVMODE *target, const PrinterOffer &sourcePrinter,
                   const PrinterOffer &targetPrinter)
{
    if (source == target)
        return;
    for (HeadField field : kAlwaysPassing)
        Pass(source, target, field);
    PassPaper(source, target, targetPrinter);
    PassBin(source, target, sourcePrinter, targetPrinter);
    PassOptions(source, target);
}

void RestoreDefaults(const DEVMODE *defaults, DEVMODE *record)
{
    const size_t size = HeadBytes(record);
    const size_t extra = record->dmDriverExtra;
    if (size == defaults->dmSize && extra == defaults->dmDriverExtra) {
        memcpy(record, defaults, RecordBytes(defaults));
        return;
    }
    // Around the two lengths, which tell where the record ends.
    constexpr size_t lengths = offsetof(DEVMODE, dmSize);
    constexpr size_t behind = offsetof(DEVMODE, dmFields);
    const size_t head = std::min({size, size_t{defaults->dmSize}, sizeof(DEVMODE)});
    memcpy(record, defaults, std::min(head, lengths));
    if (head > behind)
        memcpy(reinterpret_cast<char *>(record) + behind,
               reinterpret_cast<const char *>(defaults) + behind, head - behind);
    PassOptions(defaults, record);
}

} // namespace wexelxi
