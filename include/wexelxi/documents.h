/* Document properties, the data of a print dialog, and printing calls that do nothing here. */
#ifndef WEXELXI_DOCUMENTS_H
#define WEXELXI_DOCUMENTS_H

#include "device_context.h"
#include "devmode.h"
#include "printers.h"

/** \defgroup documents Document properties and the print dialog
 *  Each printer has current settings, which last until FreeLib and are stored nowhere: what a host
 *  wants kept it keeps as a record and brings back with DM_MODIFY. Records meet by being merged:
 *  the target takes what its own printer can do and drops the rest, so that a record of another
 *  printer, or of one that is gone, remains of use. Orientation, scale, copies, colour, duplex,
 *  collation, dmFields and job sheets always pass; the paper if the target's printer has its code;
 *  the bin if it has one of the same name; an option by its keyword and value names. Name, maker,
 *  model, versions, size and shape of the target stay.
 *  @{ */

#ifdef __cplusplus
extern "C" {
#endif

/** \name Modes of DocumentProperties
 *  @{ */
/** A bit of the mode. */
#define DM_UPDATE 1
#define DM_COPY 2
#define DM_PROMPT 4
#define DM_MODIFY 8
/** @} */

/** \name Results of DocumentProperties
 *  @{ */
/** A result of DocumentProperties. */
#define IDOK 1
#define IDCANCEL 2
/** @} */

/** The data of a print dialog. The library reads hDevMode and hDevNames only. */
typedef struct PRINTDLG {
    DWORD lStructSize;          /**< Not looked at. */
    HWND hwndOwner;             /**< Not looked at. */
    HGLOBAL hDevMode;           /**< A DEVMODE, or null. */
    HGLOBAL hDevNames;          /**< A printer name, as MakePrinterNameHan makes it, or null. */
    HDC hDC;                    /**< Not looked at. */
    DWORD Flags;                /**< Not looked at. */
    WORD nFromPage;             /**< Not looked at. */
    WORD nToPage;               /**< Not looked at. */
    WORD nMinPage;              /**< Not looked at. */
    WORD nMaxPage;              /**< Not looked at. */
    WORD nCopies;               /**< Not looked at. */
    HMODULE hInstance;          /**< Not looked at. */
    LPARAM lCustData;           /**< Not looked at. */
    void *lpfnPrintHook;        /**< Not looked at. */
    void *lpfnSetupHook;        /**< Not looked at. */
    LPCSTR lpPrintTemplateName; /**< Not looked at. */
    LPCSTR lpSetupTemplateName; /**< Not looked at. */
    HGLOBAL hPrintTemplate;     /**< Not looked at. */
    HGLOBAL hSetupTemplate;     /**< Not looked at. */
} PRINTDLG;

WEXELXI_LAYOUT(sizeof(PRINTDLG) == 120);
WEXELXI_FIELD(PRINTDLG, lStructSize, 0);
WEXELXI_FIELD(PRINTDLG, hwndOwner, 8);
WEXELXI_FIELD(PRINTDLG, hDevMode, 16);
WEXELXI_FIELD(PRINTDLG, hDevNames, 24);
WEXELXI_FIELD(PRINTDLG, hDC, 32);
WEXELXI_FIELD(PRINTDLG, Flags, 40);
WEXELXI_FIELD(PRINTDLG, nFromPage, 44);
WEXELXI_FIELD(PRINTDLG, nToPage, 46);
WEXELXI_FIELD(PRINTDLG, nMinPage, 48);
WEXELXI_FIELD(PRINTDLG, nMaxPage, 50);
WEXELXI_FIELD(PRINTDLG, nCopies, 52);
WEXELXI_FIELD(PRINTDLG, hInstance, 56);
WEXELXI_FIELD(PRINTDLG, lCustData, 64);
WEXELXI_FIELD(PRINTDLG, lpfnPrintHook, 72);
WEXELXI_FIELD(PRINTDLG, lpfnSetupHook, 80);
WEXELXI_FIELD(PRINTDLG, lpPrintTemplateName, 88);
WEXELXI_FIELD(PRINTDLG, lpSetupTemplateName, 96);
WEXELXI_FIELD(PRINTDLG, hPrintTemplate, 104);
WEXELXI_FIELD(PRINTDLG, hSetupTemplate, 112);

/** Asks for, takes or changes a printer's current settings. The printer is the one that name says,
 *  whatever printer the in record is of. Blocks at the first question about a printer while CUPS
 *  answers.
 *  @param window   not used.
 *  @param printer  not used.
 *  @param name     printer name.
 *  @param out      with DM_COPY receives the current settings, as many bytes as a mode of 0 tells;
 *                  it is not measured.
 *  @param in       with DM_MODIFY, a record to merge into the current settings, which stay changed
 *                  for later callers. May be out.
 *  @param mode     0 asks for the size; else bits: DM_MODIFY merges, DM_COPY copies out afterwards,
 *                  DM_UPDATE asks PrinterProperties, which accepts nothing: all changes are then
 *                  dropped. Other bits do nothing.
 *  @return with mode 0 the bytes of the printer's record; IDOK; IDCANCEL with DM_UPDATE; -1 for
 *          failure, and nothing is changed.
 *  Last error: 0; 1801 if the printer cannot be opened; 87 if in or out is null and needed; 8 if
 *  there is no memory; with DM_MODIFY 2 or 13 if the PPD of the printer of in fails, and the merge
 *  is done without its bin. Lock: yes. */
WEXELXI_API int32_t DocumentProperties(HWND window, HPRINTER printer, const char *name,
                                       DEVMODE *out, const DEVMODE *in, int32_t mode);

/** Would ask the user about a printer's settings; there is nobody to ask.
 *  @param record  global memory of a record; not used.
 *  @return IDCANCEL always. Last error: unchanged. Lock: no. */
WEXELXI_API int32_t PrinterProperties(HGLOBAL record);

/** Would store a printer's settings; does nothing. Last error: unchanged. Lock: no. */
WEXELXI_API void UpdatePPDDevMode(const char *printer, const char *instance, const DEVMODE *record);

/** Merges the settings of one record into another, which keeps its size.
 *  @param source  global memory of the record to read; unchanged.
 *  @param target  global memory of the record to change; when it is the source, nothing changes.
 *  Last error: 0; 2 or 13 if the PPD of a printer fails, and paper or bin then stay; 8 if there is
 *  no memory, and nothing is changed then; unchanged for a null handle. Lock: yes. */
WEXELXI_API void CopyDevModeSettings(HGLOBAL source, HGLOBAL target);

/** Makes a record read as its printer's settings did at the first question about that printer. A
 *  record of another size than those keeps its size, and its options change one by one as in a
 *  merge.
 *  @param record  the record; its dmDeviceName names the printer.
 *  Last error: 0; 1801 if the printer cannot be opened, 8 if there is no memory, and nothing is
 *  changed then. Lock: yes. */
WEXELXI_API void RestoreDefaultDevmode(DEVMODE *record);

/** Prepares a print dialog: the printer to start with, its settings, and the list of printers.
 *  Without hDevMode and hDevNames that is the default printer. A name, with a record of the very
 *  same name or no name at all, gives a copy of the record; its printer is not asked for. A name
 *  with no record or one of another name gives that printer's current settings, the record merged
 *  into them.
 *  @param dialog      the dialog's data; its handles stay the host's.
 *  @param outName     receives global memory of the printer name, freed with GlobalFree.
 *  @param outDevMode  receives global memory of the record, freed with GlobalFree.
 *  @param outList     receives the list of ListPrinters, freed with FreePrinters.
 *  @return TRUE; FALSE if there are no printers, and nothing is stored; FALSE if the printer cannot
 *          be opened, and only a null list is stored.
 *  Last error: 0; unchanged if there are no printers; 2 or 13 if the PPD of a printer fails; 8 if
 *  there is no memory. Lock: yes. */
WEXELXI_API BOOL GetDevModeAndPrinterNameForPrintDlg(const PRINTDLG *dialog, HGLOBAL *outName,
                                                     HGLOBAL *outDevMode, char **outList);

/** An information context is a device context: as CreateDC. Last error: unchanged. Lock: no. */
WEXELXI_API HDC CreateIC(LPCSTR driver, LPCSTR device, LPCSTR output, LPCVOID initData);

/** \name Calls that do nothing
 *  @{ */
/** Nothing is done: the arguments are not read, and the result is 0. Last error: 0. Lock: yes. */
WEXELXI_API BOOL DPtoLP(HDC hdc, LPVOID points, int32_t count);
WEXELXI_API BOOL LPtoDP(HDC hdc, LPVOID points, int32_t count);
WEXELXI_API int32_t StartDoc(HDC hdc, LPCVOID document);
WEXELXI_API int32_t EndDoc(HDC hdc);
WEXELXI_API int32_t StartPage(HDC hdc);
WEXELXI_API int32_t EndPage(HDC hdc);
WEXELXI_API int32_t Escape(HDC hdc, int32_t escape, int32_t size, LPCSTR in, LPVOID out);
WEXELXI_API HDC ResetDC(HDC hdc, const DEVMODE *record);
WEXELXI_API int32_t AdvancedDocumentProperties(HWND window, HPRINTER printer, LPCSTR name,
                                               DEVMODE *out, const DEVMODE *in);
/** @} */

/** @} */

#ifdef __cplusplus
}
#endif

#endif
