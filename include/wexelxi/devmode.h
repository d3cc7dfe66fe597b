/* The printer settings record and its option list. */
#ifndef WEXELXI_DEVMODE_H
#define WEXELXI_DEVMODE_H

#include "types.h"

/** \defgroup devmode Printer settings: the DEVMODE record
 *  A record is one contiguous piece of memory: a head of dmSize bytes and, behind it, an option
 *  block of dmDriverExtra bytes with one node for each option of the printer. Its size is always
 *  dmSize + dmDriverExtra. It is stored data: a host may keep it in a file, hand it to another
 *  process and give it back from any address, aligned or not. Numbers are little-endian.
 *
 *  The block is a run of nodes without gaps. A node is a DEVMODEOPTION, the keyword, the text for
 *  people, and valueCount rows of 1 + valueNameWidth + valueUINameWidth bytes: a selected byte, the
 *  value's name and its text for people, both padded with zeros. A node is handed out only if it
 *  lies whole inside the block and its length is that of its parts; at the first that is not so the
 *  block ends. A damaged record therefore has fewer options, and no function reads or writes
 *  outside it.
 *
 *  Pointers to nodes and rows point into the record and last as long as it stays where it is. Two
 *  threads may work on two records at once; one record belongs to one thread at a time.
 *  @{ */

#ifdef __cplusplus
extern "C" {
#endif

/** \name Bits of dmFields
 *  @{ */
/** A bit of dmFields. */
#define DM_ORIENTATION 0x0001u
#define DM_PAPERSIZE 0x0002u
#define DM_PAPERLENGTH 0x0004u
#define DM_PAPERWIDTH 0x0008u
#define DM_SCALE 0x0010u
#define DM_COPIES 0x0100u
#define DM_DEFAULTSOURCE 0x0200u
#define DM_COLOR 0x0800u
#define DM_DUPLEX 0x1000u
#define DM_COLLATE 0x8000u
/** @} */

/** \name Values of the head's fields
 *  @{ */
/** A value of a field of the head. */
#define DM_SPECVERSION 0x4001
#define DM_DRIVERVERSION 1
#define DM_ALLFIELDS 0x9B1Fu /**< dmFields of every record that the library makes. */
#define DMORIENT_PORTRAIT 1
#define DMORIENT_LANDSCAPE 2
#define DMCOLOR_MONOCHROME 1
#define DMCOLOR_COLOR 2
#define DMDUP_SIMPLEX 1
#define DMDUP_VERTICAL 2   /**< Long edge. */
#define DMDUP_HORIZONTAL 3 /**< Short edge. */
#define DMCOLLATE_FALSE 0
#define DMCOLLATE_TRUE 1
#define DMBIN_USER 256 /**< The first bin code. */
/** @} */

/** \name Paper codes
 *  @{ */
/** A paper code. */
#define DMPAPER_LETTER 1
#define DMPAPER_TABLOID 3
#define DMPAPER_LEDGER 4
#define DMPAPER_LEGAL 5
#define DMPAPER_STATEMENT 6
#define DMPAPER_EXECUTIVE 7
#define DMPAPER_A3 8
#define DMPAPER_A4 9
#define DMPAPER_A5 11
#define DMPAPER_B4 12
#define DMPAPER_B5 13
#define DMPAPER_FOLIO 14
#define DMPAPER_QUARTO 15
#define DMPAPER_10X14 16
#define DMPAPER_11X17 17
#define DMPAPER_NOTE 18
#define DMPAPER_ENV_9 19
#define DMPAPER_ENV_10 20
#define DMPAPER_ENV_11 21
#define DMPAPER_ENV_12 22
#define DMPAPER_ENV_14 23
#define DMPAPER_CSHEET 24
#define DMPAPER_DSHEET 25
#define DMPAPER_ESHEET 26
#define DMPAPER_ENV_DL 27
#define DMPAPER_ENV_C5 28
#define DMPAPER_ENV_C3 29
#define DMPAPER_ENV_C4 30
#define DMPAPER_ENV_C6 31
#define DMPAPER_ENV_C65 32
#define DMPAPER_ENV_B4 33
#define DMPAPER_ENV_B5 34
#define DMPAPER_ENV_B6 35
#define DMPAPER_ENV_ITALY 36
#define DMPAPER_ENV_MONARCH 37
#define DMPAPER_ENV_PERSONAL 38
#define DMPAPER_FANFOLD_US 39
#define DMPAPER_FANFOLD_STD_GERMAN 40
#define DMPAPER_FANFOLD_LGL_GERMAN 41
#define DMPAPER_ISO_B4 42
#define DMPAPER_JAPANESE_POSTCARD 43
#define DMPAPER_9X11 44
#define DMPAPER_10X11 45
#define DMPAPER_15X11 46
#define DMPAPER_ENV_INVITE 47
#define DMPAPER_LETTER_EXTRA 50
#define DMPAPER_LEGAL_EXTRA 51
#define DMPAPER_TABLOID_EXTRA 52
#define DMPAPER_A4_EXTRA 53
#define DMPAPER_LETTER_TRANSVERSE 54
#define DMPAPER_A4_TRANSVERSE 55
#define DMPAPER_LETTER_EXTRA_TRANSVERSE 56
#define DMPAPER_A_PLUS 57
#define DMPAPER_B_PLUS 58
#define DMPAPER_LETTER_PLUS 59
#define DMPAPER_A4_PLUS 60
#define DMPAPER_A5_TRANSVERSE 61
#define DMPAPER_B5_TRANSVERSE 62
#define DMPAPER_A3_EXTRA 63
#define DMPAPER_A5_EXTRA 64
#define DMPAPER_B5_EXTRA 65
#define DMPAPER_A2 66
#define DMPAPER_A3_TRANSVERSE 67
#define DMPAPER_A3_EXTRA_TRANSVERSE 68
#define DMPAPER_A6 70
/** @} */

/** \name Job sheets, the banners before and after a job
 *  @{ */
/** A job sheet. */
#define DMJOBSHEET_NONE 0
#define DMJOBSHEET_CLASSIFIED 1
#define DMJOBSHEET_CONFIDENTIAL 2
#define DMJOBSHEET_SECRET 3
#define DMJOBSHEET_STANDARD 4
#define DMJOBSHEET_TOPSECRET 5
#define DMJOBSHEET_UNCLASSIFIED 6
/** @} */

#define CCHDEVICENAME 128 /**< Bytes of a text field of the head, with its NUL. */

/** The head of a record. The text fields end in a NUL and are zero behind it. */
typedef struct __attribute__((packed)) DEVMODE {
    char dmDeviceName[CCHDEVICENAME];   /**< The printer: name, or name, "/", instance. */
    char dmManufacturer[CCHDEVICENAME]; /**< "Unknown" where the printer does not say. */
    char dmModelName[CCHDEVICENAME];    /**< "Unknown" where the printer does not say. */
    uint16_t dmSpecVersion;             /**< DM_SPECVERSION. */
    uint16_t dmDriverVersion;           /**< DM_DRIVERVERSION. */
    uint16_t dmSize;                    /**< Bytes of the head, 516; the block starts there. */
    uint16_t dmDriverExtra;             /**< Bytes of the option block. */
    uint32_t dmFields;                  /**< DM_ALLFIELDS; the library does not test it. */
    int16_t dmOrientation;              /**< DMORIENT_PORTRAIT or DMORIENT_LANDSCAPE. */
    int16_t dmPaperSize;                /**< Paper code; 0 for a size that has none. */
    int16_t dmPaperLength;              /**< Tenths of a millimetre. */
    int16_t dmPaperWidth;               /**< Tenths of a millimetre. */
    int16_t dmScale;                    /**< Percent. */
    int16_t dmCopies;                   /**< Copies. */
    int16_t dmDefaultSource;            /**< Bin code, DMBIN_USER upward. */
    int16_t dmPrintQuality;             /**< For the host. */
    int16_t dmColor;                    /**< DMCOLOR_MONOCHROME or DMCOLOR_COLOR. */
    int16_t dmDuplex;                   /**< DMDUP_SIMPLEX, DMDUP_VERTICAL or DMDUP_HORIZONTAL. */
    int16_t dmYResolution;              /**< For the host. */
    int16_t dmTTOption;                 /**< For the host. */
    int16_t dmCollate;                  /**< DMCOLLATE_FALSE or DMCOLLATE_TRUE. */
    uint8_t dmReserved[86];             /**< Zero in a new record. */
    int32_t dmJobSheetStart;            /**< DMJOBSHEET_ code of the banner before the job. */
    int32_t dmJobSheetEnd;              /**< DMJOBSHEET_ code of the banner after the job. */
} DEVMODE;
typedef DEVMODE *LPDEVMODE; /**< A record in the caller's memory. */

WEXELXI_LAYOUT(sizeof(DEVMODE) == 516);
WEXELXI_FIELD(DEVMODE, dmDeviceName, 0);
WEXELXI_FIELD(DEVMODE, dmManufacturer, 128);
WEXELXI_FIELD(DEVMODE, dmModelName, 256);
WEXELXI_FIELD(DEVMODE, dmSpecVersion, 384);
WEXELXI_FIELD(DEVMODE, dmDriverVersion, 386);
WEXELXI_FIELD(DEVMODE, dmSize, 388);
WEXELXI_FIELD(DEVMODE, dmDriverExtra, 390);
WEXELXI_FIELD(DEVMODE, dmFields, 392);
WEXELXI_FIELD(DEVMODE, dmOrientation, 396);
WEXELXI_FIELD(DEVMODE, dmPaperSize, 398);
WEXELXI_FIELD(DEVMODE, dmPaperLength, 400);
WEXELXI_FIELD(DEVMODE, dmPaperWidth, 402);
WEXELXI_FIELD(DEVMODE, dmScale, 404);
WEXELXI_FIELD(DEVMODE, dmCopies, 406);
WEXELXI_FIELD(DEVMODE, dmDefaultSource, 408);
WEXELXI_FIELD(DEVMODE, dmPrintQuality, 410);
WEXELXI_FIELD(DEVMODE, dmColor, 412);
WEXELXI_FIELD(DEVMODE, dmDuplex, 414);
WEXELXI_FIELD(DEVMODE, dmYResolution, 416);
WEXELXI_FIELD(DEVMODE, dmTTOption, 418);
WEXELXI_FIELD(DEVMODE, dmCollate, 420);
WEXELXI_FIELD(DEVMODE, dmReserved, 422);
WEXELXI_FIELD(DEVMODE, dmJobSheetStart, 508);
WEXELXI_FIELD(DEVMODE, dmJobSheetEnd, 512);

/** \name Kinds of options
 *  @{ */
/** A kind of option. */
#define DMOPTION_BOOLEAN 0
#define DMOPTION_PICKONE 1
#define DMOPTION_PICKMANY 2
/** @} */

/** The header of an option's node. No function tells the number of rows, so a host that goes
 *  through them reads valueCount here. */
typedef struct __attribute__((packed)) DEVMODEOPTION {
    int32_t length;           /**< Bytes of the whole node with this header. */
    int16_t kind;             /**< DMOPTION_BOOLEAN, DMOPTION_PICKONE or DMOPTION_PICKMANY. */
    int16_t nameLength;       /**< Bytes of the keyword with its NUL. */
    int16_t uiNameLength;     /**< Bytes of the UI name with its NUL. */
    int16_t valueNameWidth;   /**< Width of a row's value name. */
    int16_t valueUINameWidth; /**< Width of a row's value UI name. */
    int16_t valueCount;       /**< Rows. */
    int32_t reserved;         /**< Zero. */
} DEVMODEOPTION;

WEXELXI_LAYOUT(sizeof(DEVMODEOPTION) == 20);
WEXELXI_FIELD(DEVMODEOPTION, length, 0);
WEXELXI_FIELD(DEVMODEOPTION, kind, 4);
WEXELXI_FIELD(DEVMODEOPTION, nameLength, 6);
WEXELXI_FIELD(DEVMODEOPTION, uiNameLength, 8);
WEXELXI_FIELD(DEVMODEOPTION, valueNameWidth, 10);
WEXELXI_FIELD(DEVMODEOPTION, valueUINameWidth, 12);
WEXELXI_FIELD(DEVMODEOPTION, valueCount, 14);
WEXELXI_FIELD(DEVMODEOPTION, reserved, 16);

/** The first byte of a value row; its two texts follow. */
typedef struct DEVMODEVALUE {
    uint8_t selected; /**< 1 or 0. */
} DEVMODEVALUE;

WEXELXI_LAYOUT(sizeof(DEVMODEVALUE) == 1);

/** An opened printer with its PPD, as OpenPrinterPPD gives it. The library's; never freed by the
 *  host, and good until FreeLib. */
typedef struct PrinterPPDEntry *HPRINTERPPD;

/** Walks the options of a record.
 *  @param record  the record.
 *  @param option  null for the first option, else the one behind this option of the record.
 *  @return the option; null when there is none. Last error: unchanged. Lock: no. */
WEXELXI_API DEVMODEOPTION *NextDevModeOption(const DEVMODE *record, const DEVMODEOPTION *option);

/** Finds an option by its keyword, without regard to case; the first of several wins.
 *  @return the option; null when the record has none of that keyword.
 *  Last error: unchanged. Lock: no. */
WEXELXI_API DEVMODEOPTION *FindDevModeOption(const DEVMODE *record, const char *keyword);

/** The keyword, in the node. Last error: unchanged. Lock: no. */
WEXELXI_API char *GetDevModeOptionName(const DEVMODEOPTION *option);

/** The option's text for people, in the node. Last error: unchanged. Lock: no. */
WEXELXI_API char *GetDevModeOptionUIName(const DEVMODEOPTION *option);

/** The first value row. With a valueCount of 0 it is the end of the node, and no row stands there.
 *  Last error: unchanged. Lock: no. */
WEXELXI_API DEVMODEVALUE *GetFirstDevModeOptionValue(const DEVMODEOPTION *option);

/** The row behind value. The end is not tested: there are valueCount rows.
 *  Last error: unchanged. Lock: no. */
WEXELXI_API DEVMODEVALUE *GetNextDevModeOptionValue(const DEVMODEOPTION *option,
                                                    const DEVMODEVALUE *value);

/** The value's name, in the row. @param option  not used. Last error: unchanged. Lock: no. */
WEXELXI_API char *GetDevModeOptionValueName(const DEVMODEOPTION *option, const DEVMODEVALUE *value);

/** The value's text for people, in the row. Last error: unchanged. Lock: no. */
WEXELXI_API char *GetDevModeOptionValueUIName(const DEVMODEOPTION *option,
                                              const DEVMODEVALUE *value);

/** TRUE if the row is selected. Last error: unchanged. Lock: no. */
WEXELXI_API BOOL IsDevModeOptionValueSelected(const DEVMODEVALUE *value);

/** The row's selected byte, which is the row's first. Last error: unchanged. Lock: no. */
WEXELXI_API uint8_t *GetDevModeOptionValueSelectedPtr(DEVMODEVALUE *value);

/** Stores 1 for a selected other than 0, else 0. Other rows stay as they are.
 *  @return always TRUE. Last error: unchanged. Lock: no. */
WEXELXI_API BOOL SetDevModeOptionValueSelected(DEVMODEVALUE *value, int32_t selected);

/** Selects the rows of the given value name, without regard to case, and deselects all others. If
 *  there is no such row, an option that is not DMOPTION_PICKMANY keeps the last row that was
 *  selected, or gets its first row; a DMOPTION_PICKMANY option is left with none.
 *  Last error: unchanged. Lock: no. */
WEXELXI_API void SetDevModeOptionValue(DEVMODEOPTION *option, const char *valueName);

/** Deselects every row. Last error: unchanged. Lock: no. */
WEXELXI_API void DeselectAllOptionValues(DEVMODEOPTION *option);

/** Copies a record into a new block of global memory.
 *  @return the block, dmSize + dmDriverExtra bytes, freed with GlobalFree; null if there is no
 *          memory. Last error: 0; 8 with null. Lock: yes. */
WEXELXI_API HGLOBAL MakeDevModeHan(const DEVMODE *record);

/** Copies a printer's current settings into a new block of global memory.
 *  @param printer  from OpenPrinterPPD; null gives null, with the last error unchanged.
 *  @return the block, freed with GlobalFree; null if there is no memory.
 *  Last error: 0; 8 if there is no memory. Lock: yes. */
WEXELXI_API HGLOBAL GetCopyOfDevmodeFromPPD(HPRINTERPPD printer);

/** Copies a printer name into a new block of global memory.
 *  @return the block, the text's length + 1 bytes, freed with GlobalFree; null if there is no
 *          memory. Last error: 0; 8 with null. Lock: yes. */
WEXELXI_API HGLOBAL MakePrinterNameHan(const char *name);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
