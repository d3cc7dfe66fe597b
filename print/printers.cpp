// Which printers there are, and the light printer handle, which remembers a name and nothing else.
#include "wexelxi/printers.h"

#include <cstdlib>
#include <cstring>
#include <string>

#include "core/lock.h"
#include "core/no_memory.h"
#include "print/destinations.h"
#include "print/printer_cache.h"

using namespace wexelxi;

// The record behind an HPRINTER.
struct PrinterHandleRecord {
    std::string name;
};

BOOL OpenPrinter(const char *name, HPRINTER *printer)
{
    if (!name || !printer)
        return Fail(ERROR_INVALID_PARAMETER);
    LockScope lock;
    *printer = nullptr;
    return OrNoMemory<BOOL>(FALSE, [&]() -> BOOL {
        if (!Destinations().find(SplitPrinterName(name)))
            return Fail(ERROR_INVALID_PRINTER_NAME);
        *printer = new PrinterHandleRecord{name};
        SetLastError(ERROR_SUCCESS);
        return TRUE;
    });
}

BOOL GetPrinter(HPRINTER printer, int32_t level, void *buffer, uint32_t size, uint32_t *needed)
{
    if (!printer || level != 2)
        return Fail(ERROR_INVALID_PARAMETER);
    LockScope lock;
    const size_t bytes = sizeof(PRINTER_INFO_2) + printer->name.size() + 1;
    if (needed)
        *needed = static_cast<uint32_t>(bytes);
    if (buffer && bytes > size)
        return Fail(ERROR_INVALID_PARAMETER);
    if (buffer) { // at any address
        char *const text = static_cast<char *>(buffer) + sizeof(PRINTER_INFO_2);
        const PRINTER_INFO_2 info = {text};
        memcpy(buffer, &info, sizeof info);
        strcpy(text, printer->name.c_str());
    }
    SetLastError(ERROR_SUCCESS);
    return TRUE;
}

BOOL ClosePrinter(HPRINTER printer)
{
    LockScope lock;
    if (!printer)
        return Fail(ERROR_INVALID_PARAMETER);
    delete printer;
    SetLastError(ERROR_SUCCESS);
    return TRUE;
}

namespace {

// The destination that is flagged as the default; of several the last. Null if there is none.
const cups_dest_t *LastDefault(const Destinations &destinations)
{
    const cups_dest_t *found = nullptr;
    for (const cups_dest_t &destination : destinations.all()) {
        if (destination.is_default)
            found = &destination;
    }
    return found;
}

// The first destination that is flagged as the default, or the first of all; the empty name if
// there is none.
PrinterName DefaultName(const Destinations &destinations)
{
    for (const cups_dest_t &destination : destinations.all()) {
        if (destination.is_default)
            return NameOf(destination);
    }
    return destinations.all().empty() ? PrinterName{"", {}} : NameOf(destinations.all().front());
}

// A heap block that the host frees with FreePrinters.
char *AllocList(size_t bytes)
{
    auto *list = static_cast<char *>(malloc(bytes));
    return list ? list : FailWith<char *>(ERROR_NOT_ENOUGH_MEMORY, nullptr);
}

} // namespace

// No lock: nothing of the library's is touched.
char *ListPrinters(uintptr_t selector)
{
    if (selector) {
        char *const word = AllocList(sizeof "cups");
        return word ? strcpy(word, "cups") : nullptr;
    }
    const Destinations destinations;
    size_t bytes = 1;
    for (const cups_dest_t &destination : destinations.all())
        bytes += NameOf(destination).length() + 1;
    char *const list = AllocList(bytes);
    if (!list)
        return nullptr;
    const cups_dest_t *first = LastDefault(destinations);
    char *at = first ? NameOf(*first).WriteTo(list) : list;
    for (const cups_dest_t &destination : destinations.all()) {
        if (&destination != first)
            at = NameOf(destination).WriteTo(at);
    }
    *at = '\0';
    return list;
}

void FreePrinters(char *printers)
{
    free(printers);
}

uint32_t GetDefaultPrinterName(char *buffer, uint32_t size)
{
    if (size == 0)
        return ERROR_INSUFFICIENT_BUFFER;
    LockScope lock;
    const Destinations destinations;
    const PrinterName name = DefaultName(destinations);
    if (name.length() >= size)
        return ERROR_INSUFFICIENT_BUFFER;
    name.WriteTo(buffer);
    return ERROR_SUCCESS;
}
