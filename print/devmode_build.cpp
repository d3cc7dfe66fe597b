// Building a settings record.
#include "print/devmode_build.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>

#include "print/devmode.h"
#include "print/head_fields.h"
#include "print/ppd_rows.h"

namespace wexelxi {

namespace {

constexpr size_t kMostOptionBytes = 65535; // what dmDriverExtra can say

// The options that get no node; PageRegion says again what PageSize says.
bool IsHeadOption(const char *keyword)
{
    for (const char *name : {"PageSize", "PageRegion", "InputSlot", "Duplex"})
        if (EqualNames(name, keyword))
            return true;
    return false;
}

// Stores code and size; nothing if the PPD has no such size.
void StorePaper(ppd_file_t *ppd, const ppd_choice_t &choice, DEVMODE *record)
{
    const ppd_size_t *size = ppdPageSize(ppd, choice.choice);
    if (!size)
        return;
    const Paper paper = PaperOf(*size);
    record->dmPaperSize = static_cast<int16_t>(paper.code);
    record->dmPaperWidth = static_cast<int16_t>(paper.size.width);
    record->dmPaperLength = static_cast<int16_t>(paper.size.length);
}

void StoreDuplex(const ppd_choice_t &choice, DEVMODE *record)
{
    if (EqualNames(choice.choice, "DuplexTumble"))
        record->dmDuplex = DMDUP_HORIZONTAL;
    else if (EqualNames(choice.choice, "DuplexNoTumble"))
        record->dmDuplex = DMDUP_VERTICAL;
    else if (EqualNames(choice.choice, "None"))
        record->dmDuplex = DMDUP_SIMPLEX;
}

// A value of a head option; an unknown one stores nothing.
void StoreInHead(const ppd_option_t &option, const char *value, ppd_file_t *ppd, DEVMODE *record)
{
    const ppd_choice_t *choice = FindChoice(option, value);
    if (!choice)
        return;
    if (EqualNames(option.keyword, "PageSize"))
        StorePaper(ppd, *choice, record);
    else if (EqualNames(option.keyword, "InputSlot"))
        record->dmDefaultSource = static_cast<int16_t>(DMBIN_USER + (choice - option.choices));
    else if (EqualNames(option.keyword, "Duplex"))
        StoreDuplex(*choice, record);
}

// The node of an option, zero behind each text.
std::string NodeOf(const ppd_option_t &option)
{
    const std::span<ppd_choice_t> choices = ChoicesOf(option);
    size_t nameWidth = 1;
    size_t uiNameWidth = 1;
    for (const ppd_choice_t &choice : choices) {
        nameWidth = std::max(nameWidth, strlen(choice.choice) + 1);
        uiNameWidth = std::max(uiNameWidth, strlen(choice.text) + 1);
    }
    const size_t nameLength = strlen(option.keyword) + 1;
    const size_t uiNameLength = strlen(option.text) + 1;
    const size_t rowBytes = 1 + nameWidth + uiNameWidth;
    const size_t front = sizeof(DEVMODEOPTION) + nameLength + uiNameLength;
    std::string node(front + choices.size() * rowBytes, '\0');
    auto *header = reinterpret_cast<DEVMODEOPTION *>(node.data());
    header->length = static_cast<int32_t>(node.size());
    header->kind = static_cast<int16_t>(option.ui);
    header->nameLength = static_cast<int16_t>(nameLength);
    header->uiNameLength = static_cast<int16_t>(uiNameLength);
    header->valueNameWidth = static_cast<int16_t>(nameWidth);
    header->valueUINameWidth = static_cast<int16_t>(uiNameWidth);
    header->valueCount = static_cast<int16_t>(choices.size());
    strcpy(node.data() + sizeof *header, option.keyword);
    strcpy(node.data() + sizeof *header + nameLength, option.text);
    char *row = node.data() + front;
    for (const ppd_choice_t &choice : choices) {
        strcpy(row + 1, choice.choice);
        strcpy(row + 1 + nameWidth, choice.text);
        row += rowBytes;
    }
    SelectValue(header, option.defchoice);
    return node;
}

// The nodes of a PPD, as many as fit.
std::string OptionBlockOf(const ppd_file_t *ppd)
{
    std::string block;
    ForEachOption(ppd, [&](const ppd_option_t &option) {
        if (IsHeadOption(option.keyword))
            return;
        const std::string node = NodeOf(option);
        if (block.size() + node.size() <= kMostOptionBytes)
            block += node;
    });
    return block;
}

bool IsColour(ppd_cs_t colorspace)
{
    return colorspace == PPD_CS_CMYK || colorspace == PPD_CS_CMY || colorspace == PPD_CS_RGB;
}

// The DMJOBSHEET_ code of a CUPS banner, without regard to case; 0 for any other text.
int32_t JobSheetFromName(std::string_view name)
{
    constexpr std::string_view kNames[] = {"classified", "confidential", "secret",
                                           "standard",   "topsecret",    "unclassified"};
    int32_t code = DMJOBSHEET_NONE;
    for (const std::string_view known : kNames) {
        code++;
        if (EqualWithoutCase(name, known))
            return code;
    }
    return DMJOBSHEET_NONE;
}

void ApplyJobSheets(std::string_view value, DEVMODE *record)
{
    const size_t comma = std::min(value.find(','), value.size());
    record->dmJobSheetStart = JobSheetFromName(value.substr(0, comma));
    record->dmJobSheetEnd = JobSheetFromName(value.substr(std::min(comma + 1, value.size())));
}

void ApplyOrientation(std::string_view value, DEVMODE *record)
{
    if (value == "3" || value == "6")
        record->dmOrientation = DMORIENT_PORTRAIT;
    else if (value == "4" || value == "5")
        record->dmOrientation = DMORIENT_LANDSCAPE;
}

void ApplySavedOption(const char *name, const char *value, ppd_file_t *ppd, DEVMODE *record)
{
    if (EqualNames(name, "job-sheets")) {
        ApplyJobSheets(value, record);
    } else if (EqualNames(name, "orientation-requested")) {
        ApplyOrientation(value, record);
    } else if (IsHeadOption(name)) {
        if (const ppd_option_t *option = ppdFindOption(ppd, name))
            StoreInHead(*option, value, ppd, record);
    } else if (DEVMODEOPTION *option = FindOption(RecordView(record).options(), name)) {
        SelectValue(option, value);
    }
}

// A text field of the head, zeroed before, in which the last byte stays the NUL.
void StoreHeadText(char (&field)[CCHDEVICENAME], std::string_view text)
{
    FillNameRow({field, sizeof field - 1}, text);
}

// A record with the defaults in its head and that option block.
Record AllocDevMode(const PrinterName &name, const char *unknown, const std::string &block)
{
    const size_t bytes = sizeof(DEVMODE) + block.size();
    Record record(static_cast<DEVMODE *>(memset(operator new(bytes), 0, bytes)));
    StoreHeadText(record->dmDeviceName, name.text());
    StoreHeadText(record->dmManufacturer, unknown);
    StoreHeadText(record->dmModelName, unknown);
    for (const HeadField &field : kHeadFields)
        memcpy(reinterpret_cast<char *>(record.get()) + field.offset, &field.standard, field.width);
    record->dmDriverExtra = static_cast<uint16_t>(block.size());
    block.copy(RecordView(record.get()).options().data(), block.size());
    return record;
}

} // namespace

Record CopyOfRecord(const DEVMODE *record)
{
    const size_t bytes = RecordBytes(record);
    return Record(static_cast<DEVMODE *>(memcpy(operator new(bytes), record, bytes)));
}

Record BuildDevMode(const PrinterName &name, const char *unknown, ppd_file_t *ppd)
{
    if (!ppd)
        return AllocDevMode(name, unknown, "");
    Record record = AllocDevMode(name, unknown, OptionBlockOf(ppd));
    if (ppd->manufacturer)
        StoreHeadText(record->dmManufacturer, ppd->manufacturer);
    if (ppd->modelname)
        StoreHeadText(record->dmModelName, ppd->modelname);
    if (IsColour(ppd->colorspace))
        record->dmColor = DMCOLOR_COLOR;
    ForEachOption(ppd, [&](const ppd_option_t &option) {
        StoreInHead(option, option.defchoice, ppd, record.get());
    });
    return record;
}

void ApplySavedOptions(std::span<const cups_option_t> saved, ppd_file_t *ppd, DEVMODE *record)
{
    for (const cups_option_t &option : saved)
        ApplySavedOption(option.name, option.value, ppd, record);
}

} // namespace wexelxi
