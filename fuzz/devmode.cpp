// Two damaged records through every function that reads or changes one. Each lies in memory of its
// own size, so that a step outside it is seen.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz/damaged_record.h"
#include "print/merge.h"
#include "wexelxi/memory.h"

using namespace wexelxi;

namespace {

void Require(bool holds)
{
    if (!holds)
        abort();
}

void ChangeEveryOption(const TestRecord &record, const std::string &name)
{
    DEVMODEOPTION *option = nullptr;
    while ((option = NextDevModeOption(record.get(), option))) {
        const char *end = record.data() + RecordBytes(record.get());
        Require(reinterpret_cast<char *>(option) + option->length <= end);
        Require(FindOption(RecordView(record.get()).options(), KeywordOf(option)) != nullptr);
        SetDevModeOptionValue(option, name.c_str());
        DEVMODEVALUE *value = GetFirstDevModeOptionValue(option);
        for (int i = 0; i < option->valueCount; i++) {
            SetDevModeOptionValueSelected(value, *GetDevModeOptionValueUIName(option, value));
            value = GetNextDevModeOptionValue(option, value);
        }
        Require(reinterpret_cast<char *>(value) ==
                reinterpret_cast<char *>(option) + option->length);
        if (option->kind == 3)
            DeselectAllOptionValues(option);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 4)
        return 0;
    const std::string input(reinterpret_cast<const char *>(data), size);
    const size_t split = (data[2] + size_t{256} * data[3]) % (size - 3);
    const TestRecord first(DamagedRecord(data[0], input.substr(4, split)));
    const TestRecord second(DamagedRecord(data[1], input.substr(4 + split)));
    const std::string name = input.substr(4, 8);

    static constexpr uint16_t codes[] = {0, 9, 256, 0x0101};
    static constexpr char bins[4][CCHBINNAME] = {"A", "B", "B", "C"};
    const PrinterOffer offer{codes, codes, bins};
    const std::string before = first.bytes();
    MergeSettings(first.get(), second.get(), offer, offer);
    MergeSettings(first.get(), first.get(), offer, offer);
    Require(first.bytes() == before);
    const uint16_t lengths[] = {second->dmSize, second->dmDriverExtra};
    ChangeEveryOption(first, name);
    RestoreDefaults(first.get(), second.get());
    Require(second->dmSize == lengths[0]);
    Require(second->dmDriverExtra == lengths[1]);
    GlobalFree(MakeDevModeHan(second.get()));
    GlobalFree(MakePrinterNameHan(std::string(RecordView(second.get()).printerName()).c_str()));
    return 0;
}
