// Which printers there are, and the light printer handle, which remembers a name and nothing else.
#include "wexelxi/printers.h"

#include <cstdlib>
#include <cstring>
#include <string>

#include "core/last_error.h"
#include "core/lock.h"
#include "print/destinations.h"
#include "print/printer_cache.h"

using namespace wexelxi;

// The record behind an HPRINTER.
struct PrinterHandleRecord {
    char *printerName;
    char *instanceName; // or null
};

static std::string NameOf(const cups_dest_t &destination)
{
    return FullPrinterName(destination.name, destination.instance);
}

BOOL OpenPrinter(const char *name, HPRINTER *printer)
{
    if (!name || !printer)
        return Fail(ERROR_INVALID_PARAMETER);
    LockScope lock;
    *printer = nullptr;
    const PrinterName parts = SplitPrinterName(name);
    const std::string destination(parts.printer);
    if (!Destinations().find(destination.c_str(), parts.instance))
        return Fail(ERROR_INVALID_PRINTER_NAME);
    *printer = static_cast<HPRINTER>(malloc(sizeof(PrinterHandleRecord)));
    **printer = {strdup(destination.c_str()), parts.instance ? strdup(parts.instance) : nullptr};
    SetLastError(ERROR_SUCCESS);
    return TRUE;
}

// Writes the record and the text behind it; the buffer may stand at any address.
static void WritePrinterInfo(const std::string &name, char *buffer)
{
    char *text = buffer + sizeof(PRINTER_INFO_2);
    const PRINTER_INFO_2 info = {text};
    memcpy(buffer, &info, sizeof info);
    memcpy(text, name.c_str(), name.size() + 1);
}

BOOL GetPrinter(HPRINTER printer, int32_t level, void *buffer, uint32_t size, uint32_t *needed)
{
    if (!printer || level != 2)
        return Fail(ERROR_INVALID_PARAMETER);
    LockScope lock;
    const std::string name = FullPrinterName(printer->printerName, printer->instanceName);
    const size_t bytes = sizeof(PRINTER_INFO_2) + name.size() + 1;
    if (needed)
        *needed = static_cast<uint32_t>(bytes);
    if (buffer && bytes > size)
        return Fail(ERROR_INVALID_PARAMETER);
    if (buffer)
        WritePrinterInfo(name, static_cast<char *>(buffer));
    SetLastError(ERROR_SUCCESS);
    return TRUE;
}

BOOL ClosePrinter(HPRINTER printer)
{
    LockScope lock;
    if (!printer)
        return Fail(ERROR_INVALID_PARAMETER);
    free(printer->printerName);
    free(printer->instanceName);
    free(printer);
    SetLastError(ERROR_SUCCESS);
    return TRUE;
}

static char *CopyToHeap(const std::string &bytes)
{
    auto *copy = static_cast<char *>(malloc(bytes.size()));
    if (copy)
        memcpy(copy, bytes.data(), bytes.size());
    return copy;
}

// The destination that is flagged as the default; of several the last. Null if there is none.
static const cups_dest_t *LastDefault(const Destinations &destinations)
{
    const cups_dest_t *found = nullptr;
    for (const cups_dest_t &destination : destinations.all()) {
        if (destination.is_default)
            found = &destination;
    }
    return found;
}

// No lock: nothing of the library's is touched.
char *ListPrinters(uintptr_t selector)
{
    if (selector)
        return CopyToHeap(std::string("cups") + '\0');
    const Destinations destinations;
    const cups_dest_t *first = LastDefault(destinations);
    std::string list;
    if (first)
        list = NameOf(*first) + '\0';
    for (const cups_dest_t &destination : destinations.all()) {
        if (&destination != first)
            list += NameOf(destination) + '\0';
    }
    return CopyToHeap(list + '\0');
}

void FreePrinters(char *printers)
{
    free(printers);
}

// The first destination that is flagged as the default, or the first of all; the empty text if
// there is none.
static std::string DefaultName(const Destinations &destinations)
{
    for (const cups_dest_t &destination : destinations.all()) {
        if (destination.is_default)
            return NameOf(destination);
    }
    return destinations.all().empty() ? std::string() : NameOf(destinations.all().front());
}

uint32_t GetDefaultPrinterName(char *buffer, uint32_t size)
{
    if (size == 0)
        return ERROR_INSUFFICIENT_BUFFER;
    LockScope lock;
    const std::string name = DefaultName(Destinations());
    if (name.size() + 1 > size)
        return ERROR_INSUFFICIENT_BUFFER;
    memcpy(buffer, name.c_str(), name.size() + 1);
    return ERROR_SUCCESS;
}
