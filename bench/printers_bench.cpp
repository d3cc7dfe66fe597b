// Questions about printers on a scheduler of the benchmark's own.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <strings.h>
#include <unistd.h>
#include <vector>

#include "host.h"
#include "print/ppd.h"
#include "rows.h"
#include "support/private_cups.h"
#include "support/record.h"

namespace {

constexpr char kPPD[] = "/usr/share/ppd/hp-ppd/HP/HP_ColorLaserJet_5-5M.ppd";

// What a question takes that is put to CUPS itself.
struct CupsPrinter {
    CupsPrinter()
    {
        const std::string path = cupsGetPPD("printer");
        FILE *stream = fopen(path.c_str(), "r");
        ppd = ppdOpen(stream);
        fclose(stream);
        unlink(path.c_str());
        count = cupsGetDests(&list);
    }
    ~CupsPrinter()
    {
        cupsFreeDests(count, list);
        ppdClose(ppd);
    }
    CupsPrinter(const CupsPrinter &) = delete;
    CupsPrinter &operator=(const CupsPrinter &) = delete;

    ppd_file_t *ppd;
    cups_dest_t *list = nullptr;
    int count;
};

Work Papers(const char *printer)
{
    return Ours([=] { Keep(DeviceCapabilities(printer, nullptr, DC_PAPERS, nullptr, nullptr)); });
}

void KnownPrinterRows()
{
    const CupsPrinter cups;
    static char names[300][CCHPAPERNAME];
    static uint16_t codes[300];
    const int count = DeviceCapabilities("printer", nullptr, DC_PAPERNAMES, nullptr, nullptr);
    const size_t bytes = static_cast<size_t>(count) * CCHPAPERNAME;
    static char copy[300][CCHPAPERNAME];
    const Work choices = Do("CUPS ppdFindOption, its choices copied", [&] {
        const ppd_option_t *option = ppdFindOption(cups.ppd, "PageSize");
        for (int i = 0; i < option->num_choices; i++)
            snprintf(copy[i], CCHPAPERNAME, "%.63s", option->choices[i].text);
    });
    Row("DeviceCapabilities, paper names", "lock, a look-up, the rows copied",
        Ours([&] { Keep(DeviceCapabilities("printer", nullptr, DC_PAPERNAMES, names, nullptr)); }),
        Do("memcpy of the rows", [&] { memcpy(copy, names, bytes); }), {choices});
    Row("DeviceCapabilities, paper codes", "lock, a look-up, the rows copied",
        Ours([&] { Keep(DeviceCapabilities("printer", nullptr, DC_PAPERS, codes, nullptr)); }),
        Do("memcpy of the rows", [&] { memcpy(copy, codes, static_cast<size_t>(count) * 2); }),
        {choices});
    const int32_t size = DocumentProperties(nullptr, nullptr, "printer", nullptr, nullptr, 0);
    std::vector<char> record(static_cast<size_t>(size)), other(record.size());
    Row("DocumentProperties, record copied", "lock, a look-up, a copy", Ours([&] {
            Keep(DocumentProperties(nullptr, nullptr, "printer",
                                    reinterpret_cast<DEVMODE *>(record.data()), nullptr, DM_COPY));
        }),
        Do("memcpy of the record", [&] { memcpy(other.data(), record.data(), record.size()); }));
}

void FirstQuestionRow()
{
    Row("first question about a printer", "the scheduler's answers, and the PPD's parser", Ours([] {
            Keep(DeviceCapabilities("printer", nullptr, DC_PAPERS, nullptr, nullptr));
            TermCUPS();
        }),
        Do("cupsGetPPD, ppdOpen, cupsGetDests", [] { const CupsPrinter cups; }));
}

// A large printer's stored record.
std::string HundredOptions()
{
    const std::string values = "abcdefgh";
    std::string nodes;
    for (size_t i = 0; i < 100; i++)
        nodes += Node(1, "Option" + std::to_string(i), values, values.substr(i % 8, 1));
    return nodes;
}

void StoredRecordRows()
{
    const TestRecord record(516, HundredOptions()), source(516, HundredOptions(), "one"),
        target(516, HundredOptions(), "two");
    Row("FindDevModeOption, the last of 100", "a step an option, each checked",
        Ours([&] { Keep(FindDevModeOption(record.get(), "option99")); }),
        Do("a walk that trusts the record", [&] {
            auto *option = reinterpret_cast<DEVMODEOPTION *>(record.data() + record->dmSize);
            while (strcasecmp(reinterpret_cast<char *>(option + 1), "option99") != 0)
                option = reinterpret_cast<DEVMODEOPTION *>(reinterpret_cast<char *>(option) +
                                                           option->length);
            Keep(option);
        }));
    HGLOBAL from = MakeDevModeHan(source.get()), to = MakeDevModeHan(target.get());
    std::string copy(record.size(), '\0');
    Row("CopyDevModeSettings, 100 options of 8 values", "each option found in the other record",
        Ours([&] { CopyDevModeSettings(from, to); }),
        Do("memcpy of the record", [&] { memcpy(copy.data(), record.data(), record.size()); }));
    GlobalFree(from);
    GlobalFree(to);
}

} // namespace

int main()
{
    const Host host;
    PrivateCups cups;
    if (!cups.running() || !cups.AddPrinter("printer", kPPD)) {
        fprintf(stderr, "no printers are measured: %s\n", cups.whyNot().c_str());
        return 0;
    }
    FirstQuestionRow();
    double before = ResidentBytes();
    for (const char *name : {"second", "third", "fourth", "fifth"})
        cups.AddPrinter(name, kPPD);
    for (const char *name : {"second", "third", "fourth", "fifth"})
        DeviceCapabilities(name, nullptr, DC_PAPERS, nullptr, nullptr);
    Memory("a printer with its PPD", (ResidentBytes() - before) / 4);
    KnownPrinterRows();
    StoredRecordRows();
    GrowthOf known("a question about a known printer", "1 printer", Papers("printer"));
    before = ResidentBytes();
    for (int i = 0; i < 499; i++)
        DeviceCapabilities(("other" + std::to_string(i)).c_str(), nullptr, DC_PAPERS, nullptr,
                           nullptr);
    known.Then("500 printers");
    Memory("a printer without a PPD", (ResidentBytes() - before) / 499);
}
