// What a host's print dialog starts with.
#include <memory>

#include "core/lock.h"
#include "core/owners.h"
#include "print/devmode.h"
#include "print/document.h"
#include "print/global_block.h"
#include "wexelxi/documents.h"

using namespace wexelxi;

namespace {

struct FreePrinterList {
    void operator()(char *list) const { FreePrinters(list); }
};
using PrinterList = std::unique_ptr<char, FreePrinterList>;

// A printer and its settings; either null for failure.
struct Choice {
    GlobalBlock<void> name;
    GlobalBlock<void> record;
};

Choice ChooseRecord(const DEVMODE *record)
{
    return {GlobalBlock<void>(MakePrinterNameHan(PrinterNameOf(record).c_str())),
            GlobalBlock<void>(MakeDevModeHan(record))};
}

// The printer's current settings, with those of another record, if there is one, as far as the
// printer allows them.
Choice ChoosePrinter(const char *name, const DEVMODE *other)
{
    HPRINTERPPD printer = nullptr;
    if (OpenPrinterPPD(name, &printer) != 0)
        return {};
    Choice choice{GlobalBlock<void>(MakePrinterNameHan(name)),
                  GlobalBlock<void>(GetCopyOfDevmodeFromPPD(printer))};
    if (choice.record && other)
        MergeDevModeSettings(other, static_cast<DEVMODE *>(choice.record.get()));
    return choice;
}

Choice Choose(const char *name, const DEVMODE *record, const char *defaultName)
{
    if (!name && !record)
        return ChoosePrinter(defaultName, nullptr);
    if (!name || (record && PrinterNameOf(record) == name))
        return ChooseRecord(record);
    return ChoosePrinter(name, record);
}

} // namespace

BOOL GetDevModeAndPrinterNameForPrintDlg(const PRINTDLG *dialog, HGLOBAL *outName,
                                         HGLOBAL *outDevMode, char **outList)
{
    LockScope lock;
    PrinterList list(ListPrinters(0));
    if (!list || !*list)
        return FALSE;
    const LockedGlobal<const DEVMODE> record(dialog->hDevMode);
    const LockedGlobal<const char> name(dialog->hDevNames);
    Choice choice = Choose(name.get(), record.get(), list.get());
    if (!choice.name || !choice.record) {
        *outList = nullptr;
        return FALSE;
    }
    *outName = choice.name.release();
    *outDevMode = choice.record.release();
    *outList = list.release();
    return TRUE;
}
