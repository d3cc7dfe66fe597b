// What a host's print dialog starts with.
#include <cstring>
#include <optional>
#include <string>

#include "core/lock.h"
#include "core/no_memory.h"
#include "core/owners.h"
#include "print/document.h"
#include "wexelxi/documents.h"

using namespace wexelxi;

namespace {

using PrinterList = std::unique_ptr<char, ReleaseWith<FreePrinters>>;

// What the dialog record says; a block that is too small for a record counts as none.
struct Wish {
    std::optional<RecordView> record;
    std::optional<std::string> name;
};

Wish WishOf(const PRINTDLG *dialog)
{
    Wish wish;
    if (dialog->hDevMode && RecordInBlock(dialog->hDevMode).holdsLengths())
        wish.record = RecordInBlock(dialog->hDevMode);
    if (const auto *name = static_cast<const char *>(GlobalLock(dialog->hDevNames)))
        wish.name.emplace(name, strnlen(name, GlobalSize(dialog->hDevNames)));
    return wish;
}

// A printer and its settings; either null for failure, and then the last error tells of the first.
struct Choice {
    GlobalBlock<void> name;
    GlobalBlock<void> record;
};

Choice NameAlone(const char *name)
{
    return {GlobalBlock<void>(MakePrinterNameHan(name)), nullptr};
}

// The record as it is. The copy is as long as its two lengths tell, also where the block is not.
Choice ChooseRecord(const RecordView &record)
{
    Choice choice = NameAlone(std::string(record.printerName()).c_str());
    if (choice.name)
        choice.record.reset(
            GlobalAlloc(GLOBAL_ZEROFILL, static_cast<int32_t>(RecordBytes(record.get()))));
    if (choice.record)
        memcpy(choice.record.get(), record.get(), record.bytes());
    return choice;
}

// The printer's current settings, with those of another record, if there is one, as far as the
// printer allows them.
Choice ChoosePrinter(const char *name, const std::optional<RecordView> &other)
{
    PrinterPPDEntry *printer = OpenPrinterEntry(name);
    if (!printer)
        return {};
    Choice choice = NameAlone(name);
    if (choice.name)
        choice.record.reset(GetCopyOfDevmodeFromPPD(printer));
    if (choice.record && other)
        MergeDevModeSettings(*other, static_cast<DEVMODE *>(choice.record.get()));
    return choice;
}

Choice Choose(const Wish &wish, const char *defaultName)
{
    if (wish.record && (!wish.name || wish.record->printerName() == *wish.name))
        return ChooseRecord(*wish.record);
    return ChoosePrinter(wish.name ? wish.name->c_str() : defaultName, wish.record);
}

} // namespace

BOOL GetDevModeAndPrinterNameForPrintDlg(const PRINTDLG *dialog, HGLOBAL *outName,
                                         HGLOBAL *outDevMode, char **outList)
{
    LockScope lock;
    PrinterList list(ListPrinters(0));
    if (!list || !*list)
        return FALSE;
    *outList = nullptr;
    return OrNoMemory<BOOL>(FALSE, [&]() -> BOOL {
        Choice choice = Choose(WishOf(dialog), list.get());
        if (!choice.name || !choice.record)
            return FALSE;
        *outName = choice.name.release();
        *outDevMode = choice.record.release();
        *outList = list.release();
        return TRUE;
    });
}
