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

// The names, each with its NUL: of those flagged as the default the last, then all others.
std::string NamesOf(std::span<const cups_dest_t> destinations)
{
    const cups_dest_t *first = nullptr;
    for (const cups_dest_t &destination : destinations) {
        if (destination.is_default)
            first = &destination;
    }
    std::string names;
    if (first)
        names = NameOf(*first).text() + '\0';
    for (const cups_dest_t &destination : destinations) {
        if (&destination != first)
            names += NameOf(destination).text() + '\0';
    }
    return names;
}

// That of the first that is flagged as the default, or of the first of all; empty if there is none.
std::string DefaultName(std::span<const cups_dest_t> destinations)
{
    for (const cups_dest_t &destination : destinations) {
        if (destination.is_default)
            return NameOf(destination).text();
    }
    return destinations.empty() ? "" : NameOf(destinations.front()).text();
}

} // namespace

// No lock: nothing of the library's is touched.
char *ListPrinters(uintptr_t selector)
{
    return OrNoMemory<char *>(nullptr, [&] {
        const std::string list = selector ? "cups" : NamesOf(Destinations().all());
        void *block = malloc(list.size() + 1);
        if (!block)
            return FailWith<char *>(ERROR_NOT_ENOUGH_MEMORY, nullptr);
        return static_cast<char *>(memcpy(block, list.c_str(), list.size() + 1));
    });
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
    return OrNoMemory<uint32_t>(ERROR_NOT_ENOUGH_MEMORY, [&]() -> uint32_t {
        const std::string name = DefaultName(Destinations().all());
        if (name.size() >= size)
            return ERROR_INSUFFICIENT_BUFFER;
        strcpy(buffer, name.c_str());
        return ERROR_SUCCESS;
    });
}
