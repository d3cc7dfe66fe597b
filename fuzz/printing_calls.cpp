// Damaged records through every call of printing that takes one, from memory of their own size and
// from blocks that are cut. There is no scheduler: each printer has the common papers.
#include <cstdlib>
#include <cstring>

#include "fuzz/damaged_record.h"
#include "wexelxi.h"

namespace {

void Require(bool holds)
{
    if (!holds)
        abort();
}

// The bytes in global memory.
HGLOBAL BlockOf(const std::string &bytes)
{
    HGLOBAL block = GlobalAlloc(0, static_cast<int32_t>(bytes.size()));
    memcpy(block, bytes.data(), bytes.size());
    return block;
}

// What only reads leaves the record as it was.
void Read(const TestRecord &record)
{
    const std::string before = record.bytes();
    char name[65];
    GetPaperName(record.get(), name);
    GetBinName(record.get(), name);
    Require(*name == 0); // one bin has no name
    HGLOBAL copy = MakeDevModeHan(record.get());
    Require(GlobalSize(copy) == size_t{record->dmSize} + record->dmDriverExtra);
    GlobalFree(copy);
    UpdatePPD("printer", nullptr, record.get());
    TestRecord out(std::string(516, 'o'));
    Require(DocumentProperties(nullptr, nullptr, "printer", out.get(), record.get(),
                               DM_MODIFY | DM_COPY) == IDOK);
    Require(out->dmSize == 516 && out->dmDriverExtra == 0);
    Require(record.bytes() == before);
}

void Change(const TestRecord &record)
{
    HPRINTERPPD printer = nullptr;
    Require(OpenPrinterPPD("printer", &printer) == 0);
    GetPaperFromIndex(printer, *record.data(), record.get());
    GetBinFromIndex(printer, *record.data(), record.get());
    RestoreDefaultDevmode(record.get());
    DocumentProperties(nullptr, nullptr, "printer", nullptr, record.get(), DM_UPDATE | DM_MODIFY);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 6)
        return 0;
    setenv("CUPS_SERVER", "/nonexistent/cups.sock", 1);
    const std::string block(reinterpret_cast<const char *>(data) + 4, size - 4);
    std::string bytes = DamagedRecord(data[0], block);
    bytes[data[1] % 4] = '\0'; // a short name, so that few printers are asked about
    const TestRecord record(bytes);
    Read(record);

    const TestRecord other(DamagedRecord(data[2], block));
    strcpy(other->dmDeviceName, "other");
    HGLOBAL source = BlockOf(bytes.substr(0, size_t{data[3]} * 4));
    HGLOBAL target = BlockOf(other.bytes().substr(0, other.size() - data[3] % 200));
    CopyDevModeSettings(source, target);
    CopyDevModeSettings(target, source);
    GlobalFree(source);
    GlobalFree(target);

    Change(record);
    TermCUPS();
    return 0;
}
