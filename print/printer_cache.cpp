// The state of the cache: gPrinterPPDList, the entries with the newest at the front, and gBuckets,
// the same entries by their names. The global lock guards both and the entries' current records;
// what else is in an entry never changes once made. All of it ends with TermCUPS.
#include "print/printer_cache.h"

#include <algorithm>
#include <cstring>

#include "core/lock.h"
#include "core/no_memory.h"
#include "print/destinations.h"
#include "print/devmode.h"
#include "wexelxi/core.h"

using namespace wexelxi;

PrinterPPDEntry::PrinterPPDEntry(const PrinterName &name,
                                 std::shared_ptr<const PrinterDescription> described)
    : printerName(name.printer), instanceName(name.instance),
      ppdPath(described->ppd.ppd ? described->file.path : nullptr),
      ppdStream(described->ppd.stream.get()), ppd(described->ppd.ppd.get()),
      paperCount(described->paperCount), paperNames(described->paperNames.get()),
      paperCodes(described->paperCodes.get()), paperSizes(described->paperSizes.get()),
      paperMargins(described->paperMargins.get()), binCount(described->binCount),
      binNames(described->binNames.get()), binCodes(described->binCodes.get()),
      description(std::move(described))
{
}

namespace wexelxi {

namespace {

constexpr uint32_t kUnknownText = 86;

PrinterPPDEntry *gPrinterPPDList;
PrinterPPDEntry *gBuckets[256];

// Mixes a text into a hash, eight bytes at a time. The bit that tells the case of ASCII letters is
// set in all bytes; names that differ in the case of other letters meet in the list alone.
uint64_t MixIn(uint64_t hash, std::string_view text)
{
    for (; !text.empty(); text.remove_prefix(std::min<size_t>(8, text.size()))) {
        uint64_t word = 0;
        memcpy(&word, text.data(), std::min<size_t>(8, text.size()));
        hash = (hash ^ (word | 0x2020202020202020)) * 0x9E3779B97F4A7C15;
    }
    return hash;
}

uint64_t HashOf(const PrinterName &name)
{
    const uint64_t hash = MixIn(0, name.printer);
    return name.instance ? MixIn(hash, *name.instance) : hash;
}

// Where an entry of that name stands in the index.
PrinterPPDEntry *&BucketOf(uint64_t hash)
{
    return gBuckets[hash >> 56];
}

PrinterName NameOf(const PrinterPPDEntry &entry)
{
    return {entry.printerName, entry.instanceName};
}

bool IsEntryOf(const PrinterPPDEntry &entry, const PrinterName &name)
{
    const PrinterName own = NameOf(entry);
    return own.instance.has_value() == name.instance.has_value() &&
           EqualWithoutCase(own.printer, name.printer) &&
           (!name.instance || EqualWithoutCase(*own.instance, *name.instance));
}

PrinterPPDEntry *FindEntry(const PrinterName &name)
{
    const uint64_t hash = HashOf(name);
    for (auto *entry = BucketOf(hash); entry; entry = entry->nextInBucket)
        if (entry->hash == hash && IsEntryOf(*entry, name))
            return entry;
    for (auto *entry = gPrinterPPDList; entry; entry = entry->next)
        if (IsEntryOf(*entry, name))
            return entry;
    return nullptr;
}

// The settings now: the PPD's defaults, and what the user has saved for this instance.
Record BuildDevModeFromPPD(const PrinterPPDEntry &entry)
{
    Record record = BuildDevMode(NameOf(entry), TextInForce(kUnknownText), entry.ppd);
    if (!entry.ppd)
        return record;
    const Destinations destinations;
    if (const cups_dest_t *found = destinations.find(NameOf(entry)))
        ApplySavedOptions({found->options, static_cast<size_t>(found->num_options)}, entry.ppd,
                          record.get());
    return record;
}

// The printer's own description, for an instance that of its printer's entry; null as told above.
std::shared_ptr<const PrinterDescription> DescriptionFor(const PrinterName &name)
{
    if (!name.instance)
        return DescribePrinter(std::string(name.printer).c_str());
    const PrinterPPDEntry *printer = FindOrCreatePrinterPPD({name.printer, std::nullopt});
    return printer ? printer->description : nullptr;
}

PrinterPPDEntry *MakeEntry(const PrinterName &name)
{
    auto description = DescriptionFor(name);
    if (!description)
        return nullptr;
    auto entry = std::make_unique<PrinterPPDEntry>(name, std::move(description));
    entry->currentDevMode = BuildDevModeFromPPD(*entry);
    entry->defaultDevMode = CopyOfRecord(entry->currentDevMode.get());
    entry->hash = HashOf(name);
    PrinterPPDEntry *&bucket = BucketOf(entry->hash);
    entry->nextInBucket = bucket;
    entry->next = gPrinterPPDList;
    return bucket = gPrinterPPDList = entry.release();
}

} // namespace

PrinterPPDEntry *FindOrCreatePrinterPPD(const PrinterName &name)
{
    AssertLockHeld();
    PrinterPPDEntry *entry = FindEntry(name);
    return entry ? entry : MakeEntry(name);
}

PrinterPPDEntry *OpenPrinterEntry(std::string_view name)
{
    AssertLockHeld();
    SetLastError(ERROR_SUCCESS);
    return FindOrCreatePrinterPPD(SplitPrinterName(name));
}

} // namespace wexelxi

int32_t OpenPrinterPPD(const char *name, HPRINTERPPD *printer)
{
    LockScope lock;
    *printer = nullptr;
    return OrNoMemory(-1, [&] {
        *printer = OpenPrinterEntry(name);
        return *printer ? 0 : -1;
    });
}

void InitCUPS(void) {}

void TermCUPS(void)
{
    while (const std::unique_ptr<PrinterPPDEntry> first{gPrinterPPDList})
        gPrinterPPDList = first->next;
    memset(gBuckets, 0, sizeof gBuckets);
}
