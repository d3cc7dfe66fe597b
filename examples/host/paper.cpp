#include "paper.h"

#include <array>
#include <cstring>

#include "host.h"
#include "output.h"

namespace {

// Ask for the count first, then give room for that many rows.
template <typename Row>
std::vector<Row> Capability(const std::string &printer, uint32_t number)
{
    const int32_t count = DeviceCapabilities(printer.c_str(), nullptr, number, nullptr, nullptr);
    Check(count >= 0, "DeviceCapabilities " + printer);
    std::vector<Row> rows(static_cast<size_t>(count));
    DeviceCapabilities(printer.c_str(), nullptr, number, rows.data(), nullptr);
    return rows;
}

// Rows of text: a name that fills its row has no terminator.
template <size_t Bytes>
using NameRow = std::array<char, Bytes>;

template <size_t Bytes>
std::string NameOf(const NameRow<Bytes> &row)
{
    return std::string(row.data(), strnlen(row.data(), Bytes));
}

std::string DefaultPrinter()
{
    char name[256];
    Check(GetDefaultPrinterName(name, sizeof name) == 0, "GetDefaultPrinterName");
    return name;
}

std::vector<Paper> Papers(const std::string &printer)
{
    const auto names = Capability<NameRow<CCHPAPERNAME>>(printer, DC_PAPERNAMES);
    const auto sizes = Capability<DCPAPERSIZE>(printer, DC_PAPERSIZE);
    const auto margins = Capability<DCPAPERMARGINS>(printer, DC_PAPERMARGINS);
    std::vector<Paper> papers;
    for (size_t i = 0; i < names.size(); i++)
        papers.push_back({NameOf(names[i]), sizes[i], margins[i]});
    return papers;
}

std::vector<std::string> Bins(const std::string &printer)
{
    std::vector<std::string> bins;
    for (const auto &row : Capability<NameRow<CCHBINNAME>>(printer, DC_BINNAMES))
        bins.push_back(NameOf(row));
    return bins;
}

// A stored record describes itself: the head and the option block tell their own lengths.
bool IsWholeRecord(const std::string &bytes)
{
    if (bytes.size() < sizeof(DEVMODE))
        return false;
    const auto *record = reinterpret_cast<const DEVMODE *>(bytes.data());
    return bytes.size() == size_t{record->dmSize} + record->dmDriverExtra;
}

// Pours the settings of an earlier run into the printer's own, and gives the record in force.
std::string TakeUpSettings(const std::string &printer, const std::string &stored)
{
    char *name = const_cast<char *>(printer.c_str());
    const int32_t bytes = DocumentProperties(nullptr, nullptr, name, nullptr, nullptr, 0);
    Check(bytes > 0, "DocumentProperties");
    std::string record(static_cast<size_t>(bytes), '\0');
    auto *out = reinterpret_cast<DEVMODE *>(record.data());
    const auto *in = reinterpret_cast<const DEVMODE *>(stored.data());
    const bool usable = IsWholeRecord(stored);
    Check(DocumentProperties(nullptr, nullptr, name, out, usable ? in : nullptr,
                             usable ? DM_COPY | DM_MODIFY : DM_COPY) == 1,
          "DocumentProperties");
    return record;
}

} // namespace

Printer ChoosePaper(const std::string &printerName, const std::string &paperName,
                    const std::string &settingsFile)
{
    Printer printer;
    printer.name = printerName.empty() ? DefaultPrinter() : printerName;
    printer.papers = Papers(printer.name);
    printer.bins = Bins(printer.name);

    const bool known = DoesFileExist(settingsFile.c_str());
    std::string record =
        TakeUpSettings(printer.name, known ? ReadFileWhole(settingsFile) : std::string());

    HPRINTERPPD handle;
    Check(OpenPrinterPPD(printer.name.c_str(), &handle) == 0, "OpenPrinterPPD");
    size_t row = 0;
    while (row + 1 < printer.papers.size() && printer.papers[row].name != paperName)
        row++;
    auto *settings = reinterpret_cast<DEVMODE *>(record.data());
    GetPaperFromIndex(handle, static_cast<int32_t>(row), settings);
    printer.chosen = printer.papers.at(row);
    printer.code = settings->dmPaperSize;
    WriteFileWhole(settingsFile, record);
    return printer;
}
