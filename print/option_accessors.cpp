// The option list of a record in the caller's memory, and copies of records and printer names in
// global memory. The accessors work on their arguments alone and take no lock.
#include <cstring>

#include "core/lock.h"
#include "print/devmode.h"
#include "print/printer_cache.h"
#include "wexelxi/memory.h"

using namespace wexelxi;

DEVMODEOPTION *NextDevModeOption(const DEVMODE *record, const DEVMODEOPTION *option)
{
    return NextOption(RecordView(record).options(), option);
}

DEVMODEOPTION *FindDevModeOption(const DEVMODE *record, const char *keyword)
{
    return FindOption(RecordView(record).options(), keyword);
}

// The accessors below read a host's records for it: they trust the node, which the walk has
// checked.

namespace {

char *Behind(const void *record, ptrdiff_t bytes)
{
    return static_cast<char *>(const_cast<void *>(record)) + bytes;
}

} // namespace

char *GetDevModeOptionName(const DEVMODEOPTION *option)
{
    return Behind(option, sizeof *option);
}

char *GetDevModeOptionUIName(const DEVMODEOPTION *option)
{
    return GetDevModeOptionName(option) + option->nameLength;
}

DEVMODEVALUE *GetFirstDevModeOptionValue(const DEVMODEOPTION *option)
{
    return reinterpret_cast<DEVMODEVALUE *>(GetDevModeOptionUIName(option) + option->uiNameLength);
}

DEVMODEVALUE *GetNextDevModeOptionValue(const DEVMODEOPTION *option, const DEVMODEVALUE *value)
{
    const ptrdiff_t rowBytes = 1 + option->valueNameWidth + option->valueUINameWidth;
    return reinterpret_cast<DEVMODEVALUE *>(Behind(value, rowBytes));
}

char *GetDevModeOptionValueName(const DEVMODEOPTION *, const DEVMODEVALUE *value)
{
    return Behind(value, 1);
}

char *GetDevModeOptionValueUIName(const DEVMODEOPTION *option, const DEVMODEVALUE *value)
{
    return Behind(value, 1 + option->valueNameWidth);
}

BOOL IsDevModeOptionValueSelected(const DEVMODEVALUE *value)
{
    return value->selected != 0;
}

uint8_t *GetDevModeOptionValueSelectedPtr(DEVMODEVALUE *value)
{
    return &value->selected;
}

BOOL SetDevModeOptionValueSelected(DEVMODEVALUE *value, int32_t selected)
{
    value->selected = selected != 0;
    return TRUE;
}

void SetDevModeOptionValue(DEVMODEOPTION *option, const char *valueName)
{
    SelectValue(option, valueName);
}

void DeselectAllOptionValues(DEVMODEOPTION *option)
{
    DeselectAllValues(option);
}

namespace {

HGLOBAL CopyToGlobalMemory(const void *bytes, size_t count)
{
    // Any flag but GLOBAL_ZEROFILL asks for a plain block; the copy fills it.
    HGLOBAL block = GlobalAlloc(16, static_cast<int32_t>(count));
    if (block)
        memcpy(block, bytes, count);
    return block;
}

} // namespace

HGLOBAL MakeDevModeHan(const DEVMODE *record)
{
    LockScope lock;
    return CopyToGlobalMemory(record, RecordBytes(record));
}

HGLOBAL GetCopyOfDevmodeFromPPD(HPRINTERPPD printer)
{
    if (!printer)
        return nullptr;
    const DEVMODE *current =
        printer->currentDevMode.get(); // the address never changes, its bytes do
    LockScope lock;
    return CopyToGlobalMemory(current, RecordBytes(current));
}

HGLOBAL MakePrinterNameHan(const char *name)
{
    LockScope lock;
    return CopyToGlobalMemory(name, strlen(name) + 1);
}
