#include "tools/trace/kinds.h"

#include <algorithm>
#include <bit>

namespace trace {
namespace {

const char *const kNames[] = {"file",           "thread",  "semaphore", "search",           "font",
                              "device context", "printer", "resource",  "module reference", "block",
                              "printer list",   "text"};

constexpr uint32_t kHandles = kFile | kThread | kSemaphore;

const Deed kRows[] = {
    {kCreateFile, kMakes, kFile, kResult},
    {kCreateThread, kMakes, kThread, kResult},
    {kCreateSemaphore, kMakes, kSemaphore, kResult},
    {kCloseHandle, kEnds, kHandles, 0},
    {k_lclose, kEnds, kHandles, 0, 0xFFFFFFFF},
    {kFindFirstFile, kMakes, kSearch, kResult},
    {kFindClose, kEnds, kSearch, 0},
    {kCreateFontIndirect, kMakes, kFont, kResult},
    {kCreateFont, kMakes, kFont, kResult},
    {kDeleteObject, kEnds, kFont, 0},
    {kTermFonts, kSweeps, kFont, kResult},
    {kCreateDC, kMakes, kDeviceContext, kResult},
    {kCreateDC25400, kMakes, kDeviceContext, kResult},
    {kCreateIC, kMakes, kDeviceContext, kResult},
    {kGetDC, kMakes, kDeviceContext, kResult},
    {kCreateCompatibleDC, kMakes, kDeviceContext, kResult},
    {kDeleteDC, kEnds, kDeviceContext, 0},
    {kReleaseDC, kEnds, kDeviceContext, 1},
    {kOpenPrinter, kMakes, kPrinter, 1},
    {kClosePrinter, kEnds, kPrinter, 0},
    {kFindResource, kMakes, kResource, kResult},
    {kFreeResource, kEnds, kResource, 0},
    {kLoadLibrary, kMakes, kModule, kResult},
    {kFreeLibrary, kEnds, kModule, 0},
    {kTermModule, kSweeps, kModule, kResult},
    {kGlobalReAlloc, kEnds, kBlock, 0},
    {kGlobalAlloc, kMakes, kBlock, kResult},
    {kGlobalReAlloc, kMakes, kBlock, kResult},
    {kMakeDevModeHan, kMakes, kBlock, kResult},
    {kGetCopyOfDevmodeFromPPD, kMakes, kBlock, kResult},
    {kMakePrinterNameHan, kMakes, kBlock, kResult},
    {kGetDevModeAndPrinterNameForPrintDlg, kMakes, kBlock, 1},
    {kGetDevModeAndPrinterNameForPrintDlg, kMakes, kBlock, 2},
    {kGetDevModeAndPrinterNameForPrintDlg, kMakes, kList, 3},
    {kWinExecEx, kMakes, kBlock, 3, 0xFFFFFFFF},
    {kGlobalFree, kEnds, kBlock | kSearch, 0},
    {kListPrinters, kMakes, kList, kResult},
    {kFreePrinters, kEnds, kList, 0},
    {kConvertUtf8ToISO8859, kMakes, kText, kResult},
    {kConvertISO8859ToUtf8, kMakes, kText, kResult},
    {kFreeLib, kSweeps, kFont | kModule, kResult},
};

struct TypeRow {
    std::string_view type;
    uint32_t kinds;
};
const TypeRow kTypes[] = {
    {"HFONT", kFont},
    {"HGDIOBJ", kFont},
    {"HDC", kDeviceContext},
    {"HPRINTER", kPrinter},
    {"ResourceRecord", kResource},
    {"HMODULE", kModule},
    {"HGLOBAL", kBlock | kSearch},
    {"FILfindData", kSearch},
};

// A HANDLE is what its function's family works on.
uint32_t KindsOfHandle(CallIndex call)
{
    const std::string_view family = kSignatures[call].family;
    switch (call) {
    case kCloseHandle:
    case k_lclose:
        return kHandles;
    case kWaitForSingleObject:
        return kThread | kSemaphore;
    case kReleaseSemaphore:
        return kSemaphore;
    default:
        return family == "directory-search"                             ? kSearch
               : family == "file-handles" || family.starts_with("comm") ? kFile
                                                                        : 0;
    }
}

// Families that hold no state of the library's, and single calls that are made for its absence.
const std::string_view kStandAlone[] = {"lifecycle",   "error",      "memory",     "strings",
                                        "conversions", "clock",      "time-zones", "threads",
                                        "devmode",     "environment"};
const CallIndex kAlwaysAllowed[] = {kSetWinString, kCloseHandle, k_lclose, kFreePrinters,
                                    kSetWexelXiFolder};

} // namespace

std::span<const Deed> Deeds()
{
    return kRows;
}

const Deed *FindDeed(CallIndex call, Verb verb)
{
    for (const Deed &deed : kRows)
        if (deed.call == call && deed.verb == verb)
            return &deed;
    return nullptr;
}

const char *KindName(uint32_t kind)
{
    return kNames[std::countr_zero(kind)];
}

uint32_t KindsOfArgument(CallIndex call, size_t index)
{
    const Parameter &parameter = kSignatures[call].parameters[index];
    if (parameter.name == "templateFile" || parameter.type.ends_with("**") ||
        parameter.type == "HGLOBAL *" || parameter.type == "HPRINTER *")
        return 0;
    if (parameter.base() == "HANDLE")
        return KindsOfHandle(call);
    for (const TypeRow &row : kTypes)
        if (row.type == parameter.base())
            return row.kinds;
    return call == kFreePrinters ? kList : 0;
}

bool NeedsStart(CallIndex call)
{
    const std::string_view family = kSignatures[call].family;
    return std::find(std::begin(kStandAlone), std::end(kStandAlone), family) ==
               std::end(kStandAlone) &&
           std::find(std::begin(kAlwaysAllowed), std::end(kAlwaysAllowed), call) ==
               std::end(kAlwaysAllowed);
}

} // namespace trace
