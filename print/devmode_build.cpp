// Building a settings record. A node is sized and written from the same measurements.
#include "print/devmode_build.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "print/devmode.h"
#include "print/head_fields.h"
#include "print/ppd_rows.h"

namespace wexelxi {

namespace {

constexpr size_t kMostOptionBytes = 65535; // what dmDriverExtra can say

// A choice of an option that has its place in the head.
struct HeadChoice {
    const ppd_option_t &option;
    const ppd_choice_t &choice;
    ppd_file_t *ppd;
};

void StorePaper(const HeadChoice &head, DEVMODE *record)
{
    MatchPaperToDevMode(head.ppd, head.choice, record);
}

void StoreBin(const HeadChoice &head, DEVMODE *record)
{
    record->dmDefaultSource =
        static_cast<int16_t>(DMBIN_USER + (&head.choice - head.option.choices));
}

void StoreDuplex(const HeadChoice &head, DEVMODE *record)
{
    if (EqualNames(head.choice.choice, "DuplexTumble"))
        record->dmDuplex = DMDUP_HORIZONTAL;
    else if (EqualNames(head.choice.choice, "DuplexNoTumble"))
        record->dmDuplex = DMDUP_VERTICAL;
    else if (EqualNames(head.choice.choice, "None"))
        record->dmDuplex = DMDUP_SIMPLEX;
}

void StoreNothing(const HeadChoice &, DEVMODE *) {}

// The options that get no node, and how a choice of each is stored in the head.
struct HeadOption {
    const char *keyword;
    void (*store)(const HeadChoice &head, DEVMODE *record);
};
constexpr HeadOption kHeadOptions[] = {
    {"PageSize", StorePaper},
    {"PageRegion", StoreNothing}, // says again what PageSize says
    {"InputSlot", StoreBin},
    {"Duplex", StoreDuplex},
};

const HeadOption *FindHeadOption(const char *keyword)
{
    for (const HeadOption &option : kHeadOptions)
        if (EqualNames(option.keyword, keyword))
            return &option;
    return nullptr;
}

// An unknown value stores nothing.
void StoreInHead(const HeadOption &head, const ppd_option_t &option, const char *value,
                 ppd_file_t *ppd, DEVMODE *record)
{
    if (const ppd_choice_t *choice = FindChoice(option, value))
        head.store({option, *choice, ppd}, record);
}

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

struct Plan {
    std::vector<PlannedNode> nodes;
    size_t bytes = 0;
};

Plan PlanOptionBlock(const ppd_file_t *ppd)
{
    Plan plan;
    ForEachOption(ppd, [&](const ppd_option_t &option) {
        if (FindHeadOption(option.keyword))
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

bool IsColour(ppd_cs_t colorspace)
{
    return colorspace == PPD_CS_CMYK || colorspace == PPD_CS_CMY || colorspace == PPD_CS_RGB;
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
    } else if (const HeadOption *head = FindHeadOption(name)) {
        if (const ppd_option_t *option = ppdFindOption(ppd, name))
            StoreInHead(*head, *option, value, ppd, record);
    } else if (DEVMODEOPTION *option = FindOption(RecordView(record).options(), name)) {
        SelectValue(option, value);
    }
}

// A record without anything in it but zeros.
Record ZeroedRecord(size_t bytes)
{
    return Record(static_cast<DEVMODE *>(memset(operator new(bytes), 0, bytes)));
}

// A text field of the head, zeroed before, in which the last byte stays the NUL.
void StoreHeadText(char (&field)[CCHDEVICENAME], std::string_view text)
{
    FillNameRow({field, sizeof field - 1}, text);
}

} // namespace

Record CopyOfRecord(const DEVMODE *record)
{
    const size_t bytes = RecordBytes(record);
    return Record(static_cast<DEVMODE *>(memcpy(operator new(bytes), record, bytes)));
}

Record AllocDevMode(const PrinterName &name, const char *unknown, size_t optionBytes)
{
    Record record = ZeroedRecord(sizeof(DEVMODE) + optionBytes);
    std::string fullName(name.length(), '\0');
    name.WriteTo(fullName.data());
    StoreHeadText(record->dmDeviceName, fullName);
    StoreHeadText(record->dmManufacturer, unknown);
    StoreHeadText(record->dmModelName, unknown);
    for (const HeadField &field : kHeadFields)
        memcpy(reinterpret_cast<char *>(record.get()) + field.offset, &field.standard, field.width);
    record->dmDriverExtra = static_cast<uint16_t>(optionBytes);
    return record;
}

Record BuildDevMode(const PrinterName &name, const char *unknown, ppd_file_t *ppd)
{
    if (!ppd)
        return AllocDevMode(name, unknown, 0);
    const Plan plan = PlanOptionBlock(ppd);
    Record record = AllocDevMode(name, unknown, plan.bytes);
    if (ppd->manufacturer)
        StoreHeadText(record->dmManufacturer, ppd->manufacturer);
    if (ppd->modelname)
        StoreHeadText(record->dmModelName, ppd->modelname);
    if (IsColour(ppd->colorspace))
        record->dmColor = DMCOLOR_COLOR;
    ForEachOption(ppd, [&](const ppd_option_t &option) {
        if (const HeadOption *head = FindHeadOption(option.keyword))
            StoreInHead(*head, option, option.defchoice, ppd, record.get());
    });
    char *at = RecordView(record.get()).options().data();
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
