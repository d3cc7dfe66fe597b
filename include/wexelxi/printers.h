/* Printers: which there are, how to open one, what papers and bins it has. */
#ifndef WEXELXI_PRINTERS_H
#define WEXELXI_PRINTERS_H

#include "devmode.h"

/** \defgroup printers Printers
 *  A printer is a CUPS destination. It is named by one text: the destination's name, or the name,
 *  a slash and the instance; the first slash divides them. "name/" names the instance with the
 *  empty name, which is not the same as no instance.
 *
 *  There are two ways to open one. OpenPrinter asks CUPS whether the destination is there and
 *  remembers its name. OpenPrinterPPD answers for any name: at the first question about a printer
 *  its PPD is fetched and read, and papers, bins and settings are kept until FreeLib; a printer
 *  without a PPD, or one that CUPS does not know, has 69 common papers and one bin. The first
 *  question blocks while CUPS answers, and nothing is asked again for that name, of which the case
 *  does not matter.
 *  @{ */

#ifdef __cplusplus
extern "C" {
#endif

/** \name Last errors of printing
 *  @{ */
/** A last error number. */
#define ERROR_INVALID_DATA 13u
#define ERROR_INVALID_PRINTER_NAME 1801u
/** @} */

/** A destination as OpenPrinter gives it; ended by ClosePrinter. HPRINTERPPD is another thing. */
typedef struct PrinterHandleRecord *HPRINTER;

/** What GetPrinter stores at level 2; the text follows in the same block. */
typedef struct PRINTER_INFO_2 {
    char *pPrinterName; /**< Points right behind this record. */
} PRINTER_INFO_2;

WEXELXI_LAYOUT(sizeof(PRINTER_INFO_2) == 8);
WEXELXI_FIELD(PRINTER_INFO_2, pPrinterName, 0);

/** \name Capabilities, for DeviceCapabilities
 *  @{ */
#define DC_FIELDS 1        /**< The number DM_ALLFIELDS. */
#define DC_PAPERS 2        /**< 2-byte rows: paper code, 0 for a size that has none. */
#define DC_PAPERSIZE 3     /**< 8-byte rows: DCPAPERSIZE. */
#define DC_BINS 6          /**< 2-byte rows: bin code. */
#define DC_BINNAMES 12     /**< 24-byte rows: bin name. */
#define DC_PAPERNAMES 16   /**< 64-byte rows: paper name. */
#define DC_COPIES 18       /**< The number 100. */
#define DC_PAPERMARGINS 36 /**< 16-byte rows: DCPAPERMARGINS. */
/** @} */

#define CCHPAPERNAME 64 /**< Bytes of a paper name row; a name may fill it without a NUL. */
#define CCHBINNAME 24   /**< Bytes of a bin name row; a name may fill it without a NUL. */

/** A row of DC_PAPERSIZE, in tenths of a millimetre. */
typedef struct DCPAPERSIZE {
    int32_t width;  /**< Width. */
    int32_t length; /**< Length. */
} DCPAPERSIZE;

WEXELXI_LAYOUT(sizeof(DCPAPERSIZE) == 8);
WEXELXI_FIELD(DCPAPERSIZE, width, 0);
WEXELXI_FIELD(DCPAPERSIZE, length, 4);

/** A row of DC_PAPERMARGINS, in tenths of a millimetre. */
typedef struct DCPAPERMARGINS {
    int32_t left;   /**< Left margin. */
    int32_t top;    /**< Top margin. */
    int32_t right;  /**< Right margin. */
    int32_t bottom; /**< Bottom margin. */
} DCPAPERMARGINS;

WEXELXI_LAYOUT(sizeof(DCPAPERMARGINS) == 16);
WEXELXI_FIELD(DCPAPERMARGINS, left, 0);
WEXELXI_FIELD(DCPAPERMARGINS, top, 4);
WEXELXI_FIELD(DCPAPERMARGINS, right, 8);
WEXELXI_FIELD(DCPAPERMARGINS, bottom, 12);

/** Opens a destination that CUPS lists. Blocks while CUPS answers.
 *  @param name     printer name; copied.
 *  @param printer  receives the handle, ended by ClosePrinter; null on failure.
 *  @return TRUE; FALSE for a null argument or if there is no such destination and instance.
 *  Last error: 0; 87 for a null argument; 1801 for no such destination; 8 if there is no memory.
 *  Lock: yes, but not for a null argument. */
WEXELXI_API BOOL OpenPrinter(const char *name, HPRINTER *printer);

/** Tells the name of an opened destination. CUPS is not asked.
 *  @param printer  from OpenPrinter.
 *  @param level    2; there is no other.
 *  @param buffer   receives a PRINTER_INFO_2 and the text, at any address; null only asks for the
 *                  size.
 *  @param size     bytes at buffer.
 *  @param needed   receives the bytes needed, also if the buffer is too small; or null.
 *  @return TRUE; FALSE for a null handle, another level, or a buffer that is too small, into which
 *          nothing is written.
 *  Last error: 0; 87 with FALSE. Lock: yes, but not for a null handle or another level. */
WEXELXI_API BOOL GetPrinter(HPRINTER printer, int32_t level, void *buffer, uint32_t size,
                            uint32_t *needed);

/** Ends a handle of OpenPrinter.
 *  @return TRUE; FALSE for null. Last error: 0; 87 for null. Lock: yes. */
WEXELXI_API BOOL ClosePrinter(HPRINTER printer);

/** Lists the printers, the default first. Blocks while CUPS answers.
 *  @param selector  0 for the printers; anything else gives a list of the one word "cups", without
 *                   asking CUPS.
 *  @return printer names one straight behind the other, each with its NUL, and one further NUL;
 *          freed with FreePrinters. Null if there is no memory.
 *  Last error: unchanged; 8 with null. Lock: no. */
WEXELXI_API char *ListPrinters(uintptr_t selector);

/** Frees a list; null does nothing. Last error: unchanged. Lock: no. */
WEXELXI_API void FreePrinters(char *printers);

/** Tells the default printer's name; the first printer's if none is the default, and the empty text
 *  if there is no printer at all. Blocks while CUPS answers.
 *  @param buffer  receives the name.
 *  @param size    bytes at buffer with the NUL.
 *  @return 0; 122 if the name does not fit, 8 if there is no memory, and nothing is written then.
 *  Last error: unchanged; 8 with 8. Lock: yes, but not for a size of 0. */
WEXELXI_API uint32_t GetDefaultPrinterName(char *buffer, uint32_t size);

/** Opens a printer with all that is known about it. Blocks at the first question about a printer
 *  while CUPS answers. A printer that CUPS does not know opens too.
 *  @param name     printer name; copied.
 *  @param printer  receives the handle, which is the library's and good until FreeLib; null on
 *                  failure. One name gives one handle.
 *  @return 0; -1 for failure.
 *  Last error: 0; 2 if the printer's PPD cannot be opened; 13 if it does not parse; 8 if there is
 * no memory. Lock: yes. */
WEXELXI_API int32_t OpenPrinterPPD(const char *name, HPRINTERPPD *printer);

/** Does nothing; InitLib calls it. Last error: unchanged. Lock: no. */
WEXELXI_API void InitCUPS(void);

/** Drops all that is known about printers: closes every PPD and removes its temporary file. Every
 *  HPRINTERPPD ends here. FreeLib calls it. Last error: unchanged. Lock: no. */
WEXELXI_API void TermCUPS(void);

/** Answers a question about a printer. A null buffer asks for the number of rows; the buffer then
 *  has to hold that many, for it is not measured. Row i of every paper capability describes one
 *  paper, row i of both bin capabilities one bin. Papers are sorted by name.
 *  @param name        printer name.
 *  @param port        not used.
 *  @param capability  a DC_ number; its low 16 bits count.
 *  @param buffer      receives the rows, at any address; or null.
 *  @param record      not used.
 *  @return the number of rows, or the number itself for DC_FIELDS and DC_COPIES; -1 for failure.
 *  Last error: unchanged for DC_FIELDS and DC_COPIES; else 0, 87 for an unknown capability, 2, 13
 *  or 8 as OpenPrinterPPD. Lock: yes, but not for DC_FIELDS and DC_COPIES. */
WEXELXI_API int32_t DeviceCapabilities(const char *name, const char *port, uint32_t capability,
                                       void *buffer, const DEVMODE *record);

/** Puts a paper's code and size into a record.
 *  @param printer  from OpenPrinterPPD; null does nothing.
 *  @param row      a row of the paper capabilities; any other stands for row 0.
 *  @param record   the record to change.
 *  Last error: unchanged. Lock: yes. */
WEXELXI_API void GetPaperFromIndex(HPRINTERPPD printer, int32_t row, DEVMODE *record);

/** Puts a bin's code into a record.
 *  @param printer  from OpenPrinterPPD; null does nothing.
 *  @param row      a row of the bin capabilities; any other stands for row 0.
 *  @param record   the record to change.
 *  Last error: unchanged. Lock: yes. */
WEXELXI_API void GetBinFromIndex(HPRINTERPPD printer, int32_t row, DEVMODE *record);

/** Tells the name of a record's paper: that of the printer's first paper with the same code.
 *  @param record  the record; its dmDeviceName names the printer.
 *  @param name    receives the text, 65 bytes; the empty text if the printer has no such paper.
 *  Last error: as OpenPrinterPPD. Lock: while the printer is opened. */
WEXELXI_API void GetPaperName(const DEVMODE *record, char *name);

/** Tells the name of a record's bin. A printer with one bin has no bin names.
 *  @param record  the record; its dmDeviceName names the printer.
 *  @param name    receives the text, 25 bytes; the empty text if the printer has no such bin.
 *  Last error: as OpenPrinterPPD. Lock: while the printer is opened. */
WEXELXI_API void GetBinName(const DEVMODE *record, char *name);

/** Tells the margins of a paper, in tenths of a millimetre.
 *  @param name       printer name.
 *  @param paperCode  a paper code; its low 16 bits count.
 *  @param left,top,right,bottom  receive the margins; untouched with FALSE.
 *  @return TRUE; FALSE if the printer fails or has no such paper.
 *  Last error: unchanged; 2, 13 or 8 as OpenPrinterPPD. Lock: yes. */
WEXELXI_API BOOL GetDeviceMarginInfo(const char *name, int32_t paperCode, int32_t *left,
                                     int32_t *top, int32_t *right, int32_t *bottom);

/** Makes a record the printer's current settings. A record of another size than the printer's has
 *  its settings and options passed on one by one, as far as the printer has them.
 *  @param name      the destination's name, taken whole.
 *  @param instance  the instance, or null.
 *  @param record    the record.
 *  Last error: unchanged; 2, 13 or 8 as OpenPrinterPPD. Lock: yes. */
WEXELXI_API void UpdatePPD(const char *name, const char *instance, const DEVMODE *record);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
