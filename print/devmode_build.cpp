// Building a settings record. A node is sized and written from the same measurements.
#include "print/devmode_build.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "print/devmode.h"
#include "print/ppd_rows.h"

namespace wexelxi {

namespace {

constexpr size_t kMostOptionBytes = 65535; // what dmDriverExtra can say

// An option and the lengths in its node, each with its NUL.
struct PlannedNode {
    const ppd_option_t *option;
    size_t nameLength;
    size_t uiNameLength;
    size_t valueNameWidth;
    size_t valueUINameWidth;

    size_t rowBytes() const { return 1 + valueNameWidth + valueUINameWidth; }
    size_t length() const
    {
        return sizeof(DEVMODEOPTION) + nameLength + uiNameLength +
               ChoicesOf(*option).size() * rowBytes();
    }
};

PlannedNode PlanNode(const ppd_option_t &option)
{
    PlannedNode node = {&option, strlen(option.keyword) + 1, strlen(option.text) + 1, 1, 1};
    for (const ppd_choice_t &choice : ChoicesOf(option)) {
        node.valueNameWidth = std::max(node.valueNameWidth, strlen(choice.choice) + 1);
        node.valueUINameWidth = std::max(node.valueUINameWidth, strlen(choice.text) + 1);
    }
    return node;
}

// These four have their place in the head, or none.
bool StandsInHead(const ppd_option_t &option)
{
    for (const char *keyword : {"PageSize", "PageRegion", "InputSlot", "Duplex"}) {
        if (EqualNames(option.keyword, keyword))
            return true;
    }
    return false;
}

struct Plan {
    std::vector<PlannedNode> nodes;
    size_t bytes = 0;
};

Plan PlanOptionBlock(const ppd_file_t *ppd)
{
    Plan plan;
    ForEachOption(ppd, [&](const ppd_option_t &option) {
        if (StandsInHead(option))
            return;
        const PlannedNode node = PlanNode(option);
        if (node.length() > kMostOptionBytes - plan.bytes)
            return;
        plan.nodes.push_back(node);
        plan.bytes += node.length();
    });
    return plan;
}

// The block is zeroed, so texts need no padding and no NUL.
void WriteRows(const PlannedNode &node, char *row)
{
    const ppd_option_t &option = *node.option;
    const std::span<ppd_choice_t> choices = ChoicesOf(option);
    bool anySelected = false;
    char *const first = row;
    for (const ppd_choice_t &choice : choices) {
        *row = EqualNames(choice.choice, option.defchoice);
        anySelected |= *row != 0;
        memcpy(row + 1, choice.choice, strlen(choice.choice));
        memcpy(row + 1 + node.valueNameWidth, choice.text, strlen(choice.text));
        row += node.rowBytes();
    }
    if (!anySelected && !choices.empty() && option.ui != PPD_UI_PICKMANY)
        *first = 1;
}

void WriteNode(const PlannedNode &node, char *at)
{
    const ppd_option_t &option = *node.option;
    const DEVMODEOPTION header = {
        .length = static_cast<int32_t>(node.length()),
        .kind = static_cast<int16_t>(option.ui),
        .nameLength = static_cast<int16_t>(node.nameLength),
        .uiNameLength = static_cast<int16_t>(node.uiNameLength),
        .valueNameWidth = static_cast<int16_t>(node.valueNameWidth),
        .valueUINameWidth = static_cast<int16_t>(node.valueUINameWidth),
        .valueCount = static_cast<int16_t>(ChoicesOf(option).size()),
        .reserved = 0,
    };
    memcpy(at, &header, sizeof header);
    at += sizeof header;
    memcpy(at, option.keyword, node.nameLength);
    at += node.nameLength;
    memcpy(at, option.text, node.uiNameLength);
    at += node.uiNameLength;
    WriteRows(node, at);
}

void StoreText(char (&field)[CCHDEVICENAME], std::string_view text)
{
    const size_t length = std::min(text.size(), sizeof field - 1);
    memcpy(field, text.data(), length);
    memset(field + length, 0, sizeof field - length);
}

bool IsColour(ppd_cs_t colorspace)
{
    return colorspace == PPD_CS_CMYK || colorspace == PPD_CS_CMY || colorspace == PPD_CS_RGB;
}

void StoreBin(const ppd_option_t &option, const ppd_choice_t &choice, DEVMODE *record)
{
    record->dmDefaultSource = static_cast<int16_t>(DMBIN_USER + (&choice - option.choices));
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

// Sets the head's field for a value of PageSize, InputSlot or Duplex; an unknown value sets
// nothing.
void StoreInHead(const ppd_option_t &option, const char *value, ppd_file_t *ppd, DEVMODE *record)
{
    const ppd_choice_t *choice = FindChoice(option, value);
    if (!choice)
        return;
    if (EqualNames(option.keyword, "PageSize"))
        MatchPaperToDevMode(ppd, *choice, record);
    else if (EqualNames(option.keyword, "InputSlot"))
        StoreBin(option, *choice, record);
    else if (EqualNames(option.keyword, "Duplex"))
        StoreDuplex(*choice, record);
}

void ApplyJobSheets(std::string_view value, DEVMODE *record)
{
    const size_t comma = std::min(value.find(','), value.size());
    record->dmJobSheetStart = JobSheetFromName(value.substr(0, comma));
    value.remove_prefix(std::min(comma + 1, value.size()));
    record->dmJobSheetEnd = JobSheetFromName(value);
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
    } else if (EqualNames(name, "InputSlot") || EqualNames(name, "PageSize") ||
               EqualNames(name, "Duplex")) {
        if (const ppd_option_t *option = ppdFindOption(ppd, name))
            StoreInHead(*option, value, ppd, record);
    } else if (DEVMODEOPTION *option = FindOption(OptionBlock(record), name)) {
        SelectValue(option, value);
    }
}

} // namespace

std::string FullPrinterName(std::string_view printer, const char *instance)
{
    std::string name(printer);
    if (instance)
        name.append("/").append(instance);
    return name;
}

Record AllocDevMode(std::string_view name, const char *unknown, size_t optionBytes)
{
    Record record(static_cast<DEVMODE *>(calloc(1, sizeof(DEVMODE) + optionBytes)));
    StoreText(record->dmDeviceName, name);
    StoreText(record->dmManufacturer, unknown);
    StoreText(record->dmModelName, unknown);
    record->dmSpecVersion = DM_SPECVERSION;
    record->dmDriverVersion = DM_DRIVERVERSION;
    record->dmSize = sizeof(DEVMODE);
    record->dmDriverExtra = static_cast<uint16_t>(optionBytes);
    record->dmFields = DM_ALLFIELDS;
    record->dmOrientation = DMORIENT_PORTRAIT;
    record->dmPaperSize = DMPAPER_A4;
    record->dmPaperLength = 2970;
    record->dmPaperWidth = 2100;
    record->dmScale = 100;
    record->dmCopies = 1;
    record->dmDefaultSource = DMBIN_USER;
    record->dmColor = DMCOLOR_MONOCHROME;
    record->dmDuplex = DMDUP_SIMPLEX;
    return record;
}

Record BuildDevMode(std::string_view name, const char *unknown, ppd_file_t *ppd)
{
    if (!ppd)
        return AllocDevMode(name, unknown, 0);
    const Plan plan = PlanOptionBlock(ppd);
    Record record = AllocDevMode(name, unknown, plan.bytes);
    if (ppd->manufacturer)
        StoreText(record->dmManufacturer, ppd->manufacturer);
    if (ppd->modelname)
        StoreText(record->dmModelName, ppd->modelname);
    if (IsColour(ppd->colorspace))
        record->dmColor = DMCOLOR_COLOR;
    ForEachOption(ppd, [&](const ppd_option_t &option) {
        StoreInHead(option, option.defchoice, ppd, record.get());
    });
    char *at = OptionBlock(record.get()).data();
    for (const PlannedNode &node : plan.nodes) {
        WriteNode(node, at);
        at += node.length();
    }
    return record;
}

void ApplySavedOptions(std::span<const cups_option_t> saved, ppd_file_t *ppd, DEVMODE *record)
{
    for (const cups_option_t &option : saved) {
        if (option.name && option.value)
            ApplySavedOption(option.name, option.value, ppd, record);
    }
}

void MatchPaperToDevMode(ppd_file_t *ppd, const ppd_choice_t &choice, DEVMODE *record)
{
    const ppd_size_t *size = ppdPageSize(ppd, choice.choice);
    if (!size)
        return;
    const Paper paper = PaperOf(*size);
    record->dmPaperSize = static_cast<int16_t>(paper.code);
    record->dmPaperWidth = static_cast<int16_t>(paper.size.width);
    record->dmPaperLength = static_cast<int16_t>(paper.size.length);
}

int32_t JobSheetFromName(std::string_view name)
{
    constexpr std::string_view kNames[] = {"none",     "classified", "confidential", "secret",
                                           "standard", "topsecret",  "unclassified"};
    for (size_t code = 0; code < std::size(kNames); code++) {
        if (EqualWithoutCase(name, kNames[code]))
            return static_cast<int32_t>(code);
    }
    return DMJOBSHEET_NONE;
}

} // namespace wexelxi
