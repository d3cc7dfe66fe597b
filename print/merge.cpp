// Which field of a record passes to another, and when.
#include "print/merge.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "print/head_fields.h"

namespace wexelxi {

namespace {

// Those that pass under that condition and that both records hold.
void PassFields(const RecordView &source, const RecordView &target, Passing condition)
{
    const size_t head = std::min(source.headBytes(), target.headBytes());
    for (const HeadField &field : kHeadFields)
        if (field.passing == condition && field.end() <= head)
            memcpy(reinterpret_cast<char *>(target.get()) + field.offset,
                   reinterpret_cast<const char *>(source.get()) + field.offset, field.width);
}

// Index of a code, which a record holds as a signed number; codes.size() if there is none.
size_t IndexOf(std::span<const uint16_t> codes, int code)
{
    return static_cast<size_t>(std::find(codes.begin(), codes.end(), code) - codes.begin());
}

void PassPaper(const RecordView &source, const RecordView &target, const PrinterOffer &offer)
{
    if (source.headBytes() < offsetof(DEVMODE, dmPaperLength))
        return;
    if (IndexOf(offer.paperCodes, source->dmPaperSize) < offer.paperCodes.size())
        PassFields(source, target, Passing::kWithPaper);
}

void PassBin(const RecordView &source, const RecordView &target, const PrinterOffer &from,
             const PrinterOffer &to)
{
    if (std::min(source.headBytes(), target.headBytes()) < offsetof(DEVMODE, dmPrintQuality))
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

void PassOptions(const RecordView &source, const RecordView &target)
{
    const std::span<char> from = source.options();
    const std::span<char> to = target.options();
    const DEVMODEOPTION *option = nullptr;
    while ((option = NextOption(from, option)))
        if (DEVMODEOPTION *known = FindOption(to, KeywordOf(option)))
            PassOption(option, known);
}

} // namespace

void MergeSettings(const RecordView &source, const RecordView &target,
                   const PrinterOffer &sourcePrinter, const PrinterOffer &targetPrinter)
{
    if (source.get() == target.get())
        return;
    PassFields(source, target, Passing::kAlways);
    PassPaper(source, target, targetPrinter);
    PassBin(source, target, sourcePrinter, targetPrinter);
    PassOptions(source, target);
}

void RestoreDefaults(const DEVMODE *defaults, DEVMODE *record)
{
    if (record->dmSize == defaults->dmSize && record->dmDriverExtra == defaults->dmDriverExtra) {
        memcpy(record, defaults, RecordBytes(defaults));
        return;
    }
    // Around the two lengths, which tell where the record ends.
    constexpr size_t lengths = offsetof(DEVMODE, dmSize);
    constexpr size_t behind = offsetof(DEVMODE, dmFields);
    const size_t head = std::min<size_t>({record->dmSize, defaults->dmSize, sizeof(DEVMODE)});
    memcpy(record, defaults, std::min(head, lengths));
    memcpy(reinterpret_cast<char *>(record) + behind,
           reinterpret_cast<const char *>(defaults) + behind, std::max(head, behind) - behind);
    PassOptions(defaults, record);
}

} // namespace wexelxi
