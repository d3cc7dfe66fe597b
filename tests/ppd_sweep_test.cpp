// Real PPDs of many makers, and the odd ones: papers, bins, margins and records against a plain
// computation of the same, row by row and byte by byte.
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <strings.h>
#include <vector>

#include "print/paper_table.h"
#include "print/ppd.h"
#include "support/library.h"
#include "support/private_cups.h"
#include "support/record.h"
#include "wexelxi.h"

namespace {

using Bytes = std::string;

Bytes Padded(const Bytes &text, size_t width)
{
    Bytes row = text.substr(0, width);
    row.resize(width);
    return row;
}

bool Same(const char *a, const char *b)
{
    return strcasecmp(a, b) == 0;
}

int Micrometres(float points)
{
    return static_cast<int>(static_cast<double>(points) / 72.0 * 25400.0);
}

int Tenths(int micrometres)
{
    return (micrometres + 50) / 100;
}

struct Row {
    Bytes name, code, size, margins;
};

// What a printer is expected to answer.
struct Expected {
    std::vector<Row> papers;
    std::vector<Bytes> bins;
    DEVMODE head = {};
    Bytes block;
};

TestOption OptionOf(const ppd_option_t &option)
{
    TestOption node = {option.keyword, option.text, static_cast<int16_t>(option.ui), {}};
    bool chosen = option.ui == PPD_UI_PICKMANY;
    for (int i = 0; i < option.num_choices; i++) {
        const ppd_choice_t &choice = option.choices[i];
        const bool isDefault = Same(choice.choice, option.defchoice);
        chosen = chosen || isDefault;
        node.values.push_back({choice.choice, choice.text, isDefault});
    }
    if (!chosen && !node.values.empty())
        node.values[0].selected = true;
    return node;
}

Row PaperRow(const char *text, const ppd_size_t &size, DEVMODE *head)
{
    const int width = Micrometres(size.width);
    const int length = Micrometres(size.length);
    int numbers[] = {0, Tenths(width), Tenths(length)};
    for (const auto &row : wexelxi::gPaperTable) {
        const int w = static_cast<int>(row.width);
        const int l = static_cast<int>(row.length);
        if (abs(w - width) >= 500 || abs(l - length) >= 500)
            continue;
        numbers[0] = static_cast<int>(row.code);
        numbers[1] = w / 100;
        numbers[2] = l / 100;
        break;
    }
    if (head) {
        head->dmPaperSize = static_cast<int16_t>(numbers[0]);
        head->dmPaperWidth = static_cast<int16_t>(numbers[1]);
        head->dmPaperLength = static_cast<int16_t>(numbers[2]);
    }
    Row row = {Padded(text, 64), {}, {}, {}};
    row.code += Number(numbers[0], 2);
    row.size += Number(numbers[1], 4);
    row.size += Number(numbers[2], 4);
    const float top = size.length - size.top;
    const float right = size.width - size.right;
    for (const float points : {size.left, top, right, size.bottom})
        row.margins += Number(Tenths(Micrometres(points)), 4);
    return row;
}

void AddPapers(ppd_file_t *ppd, const ppd_option_t &option, Expected &expected)
{
    for (const bool first : {true, false}) {
        for (int i = 0; i < option.num_choices; i++) {
            const ppd_choice_t &choice = option.choices[i];
            const ppd_size_t *size = ppdPageSize(ppd, choice.choice);
            const bool isDefault = Same(choice.choice, option.defchoice);
            if (size && first == isDefault && size->width != 0 && size->length != 0)
                expected.papers.push_back(
                    PaperRow(choice.text, *size, isDefault ? &expected.head : nullptr));
        }
    }
}

void AddBins(const ppd_option_t &option, Expected &expected)
{
    for (const bool first : {true, false}) {
        for (int i = 0; i < option.num_choices; i++) {
            const bool isDefault = Same(option.choices[i].choice, option.defchoice);
            if (first == isDefault)
                expected.bins.push_back(Padded(option.choices[i].text, 24));
            if (isDefault)
                expected.head.dmDefaultSource = static_cast<int16_t>(256 + i);
        }
    }
}

void SetDuplex(const ppd_option_t &option, DEVMODE &head)
{
    if (Same(option.defchoice, "DuplexNoTumble"))
        head.dmDuplex = 2;
    if (Same(option.defchoice, "DuplexTumble"))
        head.dmDuplex = 3;
}

void BubbleSort(std::vector<Row> &rows)
{
    for (bool swapped = true; swapped;) {
        swapped = false;
        for (size_t i = 1; i < rows.size(); i++) {
            if (strcasecmp(rows[i - 1].name.c_str(), rows[i].name.c_str()) > 0) {
                std::swap(rows[i - 1], rows[i]);
                swapped = true;
            }
        }
    }
}

DEVMODE PlainHead(const char *name)
{
    DEVMODE head = {};
    strncpy(head.dmDeviceName, name, 127);
    strcpy(head.dmManufacturer, "Unknown");
    strcpy(head.dmModelName, "Unknown");
    head.dmSpecVersion = 0x4001;
    head.dmDriverVersion = 1;
    head.dmSize = 516;
    head.dmFields = 39711;
    head.dmOrientation = head.dmCopies = head.dmColor = head.dmDuplex = 1;
    head.dmPaperSize = 9;
    head.dmPaperLength = 2970;
    head.dmPaperWidth = 2100;
    head.dmScale = 100;
    head.dmDefaultSource = 256;
    return head;
}

void SetText(char (&field)[128], const char *text)
{
    if (text)
        memcpy(field, Padded(Padded(text, 127), 128).data(), 128);
}

Expected Compute(const char *name, ppd_file_t *ppd)
{
    Expected expected;
    expected.head = PlainHead(name);
    SetText(expected.head.dmManufacturer, ppd->manufacturer);
    SetText(expected.head.dmModelName, ppd->modelname);
    const int colours = ppd->colorspace;
    expected.head.dmColor = colours == -4 || colours == -3 || colours == 3 ? 2 : 1;
    for (int g = 0; g < ppd->num_groups; g++) {
        for (int o = 0; o < ppd->groups[g].num_options; o++) {
            const ppd_option_t &option = ppd->groups[g].options[o];
            if (Same(ppd->groups[g].name, "InstallableOptions"))
                continue;
            if (Same(option.keyword, "PageSize"))
                AddPapers(ppd, option, expected);
            else if (Same(option.keyword, "InputSlot"))
                AddBins(option, expected);
            else if (Same(option.keyword, "Duplex"))
                SetDuplex(option, expected.head);
            else if (!Same(option.keyword, "PageRegion"))
                expected.block += NodeBytes(OptionOf(option));
        }
    }
    expected.head.dmDriverExtra = static_cast<uint16_t>(expected.block.size());
    BubbleSort(expected.papers);
    return expected;
}

Bytes Ask(const char *name, uint32_t capability, size_t rowBytes)
{
    const int32_t count = DeviceCapabilities(name, nullptr, capability, nullptr, nullptr);
    Bytes rows(static_cast<size_t>(count) * rowBytes, '?');
    EXPECT_EQ(DeviceCapabilities(name, nullptr, capability, rows.data(), nullptr), count);
    return rows;
}

void ExpectPapersAndBins(const char *name, const Expected &expected)
{
    Bytes names, codes, sizes, margins, bins, binCodes;
    for (const Row &row : expected.papers) {
        names += row.name;
        codes += row.code;
        sizes += row.size;
        margins += row.margins;
    }
    for (size_t i = 0; i < expected.bins.size(); i++) {
        bins += expected.bins[i];
        binCodes += Number(static_cast<int64_t>(256 + i), 2);
    }
    if (!expected.papers.empty()) {
        EXPECT_EQ(Ask(name, DC_PAPERNAMES, 64), names);
        EXPECT_EQ(Ask(name, DC_PAPERS, 2), codes);
        EXPECT_EQ(Ask(name, DC_PAPERSIZE, 8), sizes);
        EXPECT_EQ(Ask(name, DC_PAPERMARGINS, 16), margins);
    } else {
        EXPECT_EQ(Ask(name, DC_PAPERS, 2).size(), 69u * 2);
    }
    EXPECT_EQ(Ask(name, DC_BINNAMES, 24), bins.empty() ? Padded("Default Tray", 24) : bins);
    EXPECT_EQ(Ask(name, DC_BINS, 2), bins.empty() ? Bytes("\0\1", 2) : binCodes);
}

void ExpectPrinter(const std::string &name, const std::string &ppdPath)
{
    ppd_file_t *ppd = ppdOpenFile(ppdPath.c_str());
    ASSERT_NE(ppd, nullptr);
    const Expected expected = Compute(name.c_str(), ppd);
    ppdClose(ppd);
    ExpectPapersAndBins(name.c_str(), expected);
    HPRINTERPPD printer = nullptr;
    ASSERT_EQ(OpenPrinterPPD(name.c_str(), &printer), 0);
    void *record = GetCopyOfDevmodeFromPPD(printer);
    Bytes whole(reinterpret_cast<const char *>(&expected.head), sizeof expected.head);
    whole += expected.block;
    EXPECT_EQ(Bytes(static_cast<const char *>(record), GlobalSize(record)), whole);
    GlobalFree(record);
}

// The PPDs of this folder, and as many of the sample as are installed.
std::vector<std::string> Sample(const std::string &folder)
{
    const std::string here = std::string(TEST_SOURCES) + "/";
    const std::string command = "python3 '" + here + "support/extract_ppds.py' '" + here +
                                "ppd/sample.txt' '" + folder + "'";
    EXPECT_EQ(system(command.c_str()), 0) << "without python3 only the checked-in files are swept";
    std::vector<std::string> paths = {here + "ppd/odd.ppd", here + "ppd/empty.ppd"};
    for (const auto &file : std::filesystem::directory_iterator(folder))
        paths.push_back(file.path());
    return paths;
}

TEST(Sweep, RealPPDsOfManyMakers)
{
    ScratchFolder extracted;
    StartedLibrary library;
    PrivateCups cups;
    SKIP_WITHOUT_CUPS(cups);
    const std::vector<std::string> paths = Sample(extracted.path());
    if (std::filesystem::exists("/usr/lib/cups/driver/foomatic-db-compressed-ppds") &&
        std::filesystem::exists("/usr/lib/cups/driver/openprinting-ppds")) {
        EXPECT_GE(paths.size(), 100u);
    }
    ASSERT_TRUE(cups.AddPrinter("printer", paths.front()));
    for (const std::string &path : paths) {
        SCOPED_TRACE(path);
        cups.ReplacePPD("printer", ReadWholeFile(path));
        ExpectPrinter("printer", path);
        TermCUPS(); // so that the next question fetches the next file
    }
    EXPECT_EQ(cups.TemporaryFiles(), 0u);
}

} // namespace
