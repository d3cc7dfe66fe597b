// Section printers: each destination with its papers, bins and options, and why a PPD is missing.
#include <cstring>
#include <cups/cups.h>
#include <cups/ppd.h>
#include <unistd.h>

#include "tools/info_sections.h"
#include "wexelxi.h"

namespace info {

namespace {

// A text in a row of fixed width, which it may fill.
std::string RowText(const std::vector<char> &rows, size_t row, size_t width)
{
    const char *text = rows.data() + row * width;
    return {text, strnlen(text, width)};
}

// The rows of a capability, and how many there are; none for a failure.
std::vector<char> CapabilityRows(const char *name, uint32_t capability, size_t width)
{
    const int32_t count = DeviceCapabilities(name, nullptr, capability, nullptr, nullptr);
    std::vector<char> rows(count > 0 ? static_cast<size_t>(count) * width : 0);
    if (!rows.empty())
        DeviceCapabilities(name, nullptr, capability, rows.data(), nullptr);
    return rows;
}

template <typename T>
T RowAs(const std::vector<char> &rows, size_t row)
{
    T value;
    memcpy(&value, rows.data() + row * sizeof value, sizeof value);
    return value;
}

std::string Millimetres(int32_t tenths)
{
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10);
}

Value::List Papers(const char *name)
{
    const std::vector<char> names = CapabilityRows(name, DC_PAPERNAMES, CCHPAPERNAME);
    const std::vector<char> codes = CapabilityRows(name, DC_PAPERS, sizeof(uint16_t));
    const std::vector<char> sizes = CapabilityRows(name, DC_PAPERSIZE, sizeof(DCPAPERSIZE));
    Value::List papers;
    for (size_t i = 0; i < names.size() / CCHPAPERNAME; i++) {
        const auto size = RowAs<DCPAPERSIZE>(sizes, i);
        papers.push_back(Value::Record{{"paper", RowText(names, i, CCHPAPERNAME)},
                                       {"code", RowAs<uint16_t>(codes, i)},
                                       {"widthMm", Millimetres(size.width)},
                                       {"lengthMm", Millimetres(size.length)}});
    }
    return papers;
}

Value::List Bins(const char *name)
{
    const std::vector<char> names = CapabilityRows(name, DC_BINNAMES, CCHBINNAME);
    const std::vector<char> codes = CapabilityRows(name, DC_BINS, sizeof(uint16_t));
    Value::List bins;
    for (size_t i = 0; i < codes.size() / sizeof(uint16_t); i++) {
        const bool isNamed = i < names.size() / CCHBINNAME;
        bins.push_back(Value::Record{{"bin", isNamed ? RowText(names, i, CCHBINNAME) : ""},
                                     {"code", RowAs<uint16_t>(codes, i)}});
    }
    return bins;
}

Value OptionRow(const DEVMODEOPTION *option)
{
    Value::List values, selected;
    const DEVMODEVALUE *value = GetFirstDevModeOptionValue(option);
    for (int32_t i = 0; i < option->valueCount; i++) {
        const char *name = GetDevModeOptionValueName(option, value);
        values.push_back(name);
        if (IsDevModeOptionValueSelected(value))
            selected.push_back(name);
        value = GetNextDevModeOptionValue(option, value);
    }
    return Value::Record{{"option", GetDevModeOptionName(option)},
                         {"text", GetDevModeOptionUIName(option)},
                         {"selected", std::move(selected)},
                         {"values", std::move(values)}};
}

// The printer's settings as a host would get them.
void AddSettings(HPRINTERPPD printer, Value::Record &told)
{
    auto *record = static_cast<DEVMODE *>(GetCopyOfDevmodeFromPPD(printer));
    if (!record)
        return;
    Value::List options;
    for (const DEVMODEOPTION *option = NextDevModeOption(record, nullptr); option;
         option = NextDevModeOption(record, option))
        options.push_back(OptionRow(option));
    told.push_back({"manufacturer", record->dmManufacturer});
    told.push_back({"model", record->dmModelName});
    told.push_back({"paperCode", int32_t{record->dmPaperSize}});
    told.push_back(
        {"orientation", record->dmOrientation == DMORIENT_LANDSCAPE ? "landscape" : "portrait"});
    told.push_back({"options", std::move(options)});
    GlobalFree(record);
}

// Whether CUPS has a PPD for the printer, or what it says instead.
std::string PpdState(const std::string &name)
{
    const std::string destination = name.substr(0, name.find('/'));
    const char *file = cupsGetPPD(destination.c_str());
    if (!file)
        return std::string("none: ") + cupsLastErrorString();
    ppd_file_t *ppd = ppdOpenFile(file);
    int line = 0;
    const ppd_status_t status = ppdLastError(&line);
    if (ppd)
        ppdClose(ppd);
    unlink(file);
    return ppd ? "fetched and read"
               : std::string(ppdErrorString(status)) + " in line " + std::to_string(line);
}

std::string LastErrorMeaning(uint32_t code)
{
    return "last error " + std::to_string(code) +
           (code == ERROR_FILE_NOT_FOUND ? ": the PPD cannot be opened"
            : code == ERROR_INVALID_DATA ? ": the PPD does not parse"
                                         : "");
}

Value DescribePrinter(const std::string &name)
{
    HPRINTERPPD printer = nullptr;
    const bool opens = OpenPrinterPPD(name.c_str(), &printer) == 0;
    const std::string failure = opens ? "" : LastErrorMeaning(GetLastError());
    const std::string ppd = PpdState(name);
    Value::Record told = {{"name", name},
                          {"state", opens ? "opens" : failure},
                          {"ppd", ppd},
                          {"papersFrom", !opens          ? "no papers: see state"
                                         : ppd[0] == 'f' ? "its PPD"
                                                         : "the built-in list of common papers"}};
    if (opens)
        AddSettings(printer, told);
    told.push_back({"papers", Papers(name.c_str())});
    told.push_back({"bins", Bins(name.c_str())});
    return told;
}

// Why no print scheduler answers, or nothing.
std::string SchedulerFault()
{
    http_t *connection = httpConnect2(cupsServer(), ippPort(), nullptr, AF_UNSPEC, cupsEncryption(),
                                      1, 3000, nullptr);
    const std::string reason = connection ? "" : cupsLastErrorString();
    httpClose(connection);
    return reason;
}

} // namespace

Value DescribePrinters(const Session &)
{
    const std::string fault = SchedulerFault();
    char defaultName[1024] = "";
    GetDefaultPrinterName(defaultName, sizeof defaultName);
    Value::List printers;
    char *list = ListPrinters(0);
    for (const char *name = list; name && *name; name += strlen(name) + 1)
        printers.push_back(DescribePrinter(name));
    FreePrinters(list);
    return Value::Record{{"server", cupsServer()},
                         {"scheduler", fault.empty() ? "answers" : "not reachable: " + fault},
                         {"default", defaultName},
                         {"count", printers.size()},
                         {"printers", std::move(printers)}};
}

Faults CheckPrinters(const Session &)
{
    const std::string fault = SchedulerFault();
    if (fault.empty())
        return {};
    return {std::string("no scheduler answers at ") + cupsServer() + " (" + fault +
            "): start cupsd, or set CUPS_SERVER to where it listens"};
}

} // namespace info
