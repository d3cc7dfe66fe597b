/* Fonts: the installed ones, font objects, and the measures of fonts and texts. */
#ifndef WEXELXI_FONTS_H
#define WEXELXI_FONTS_H

#include "device_context.h"
#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** \defgroup fonts Fonts and text metrics
 *  Fonts are picked by fontconfig and measured by Pango; nothing is drawn. All measures of a font
 *  are dots of the resolution that it was made for.
 *  @{ */

/** Bytes of lfFaceName. */
#define LF_FACESIZE 128

/** \name Font weights
 *  @{ */
/** A weight that selects a search list of its own, or none. */
#define FW_DONTCARE 0
#define FW_NORMAL 400
#define FW_SEMIBOLD 600
#define FW_BOLD 700
#define FW_EXTRABOLD 800
/** @} */

/** The one tmCharSet. */
#define DEFAULT_CHARSET 1

/** \name Pitches
 *  @{ */
/** A pitch in lfPitchAndFamily. */
#define FIXED_PITCH 1
#define VARIABLE_PITCH 2
/** @} */

/** \name Bits of tmPitchAndFamily
 *  @{ */
#define TMPF_FIXED_PITCH 1 /**< Despite its name: the pitch is variable. */
#define TMPF_VECTOR 2
#define TMPF_TRUETYPE 4
/** @} */

/** Font type that EnumFonts reports of a TrueType font. */
#define TRUETYPE_FONTTYPE 4u

typedef void *HGDIOBJ; /**< An object for SelectObject and DeleteObject: always a font. */
typedef void *HFONT;   /**< A font; ended by DeleteObject. */

/** What CreateFontIndirect is asked for. Not the published record: a device context leads it, and
 *  the face name is longer. */
typedef struct LOGFONT {
    HDC lfDC;              /**< Its resolution down is the font's; null: the screen's. */
    int32_t lfHeight;      /**< Size in points of that resolution; a negative one counts as none. */
    int32_t lfWidth;       /**< Not read. */
    int32_t lfEscapement;  /**< Not read. */
    int32_t lfOrientation; /**< Not read. */
    int32_t lfWeight;      /**< 600, 700 and 800 ask for bold fonts, any other for a normal one. */
    uint8_t lfItalic;      /**< Not 0: italic or oblique. */
    uint8_t lfUnderline;   /**< Kept for GetFontInfo. */
    uint8_t lfStrikeOut;   /**< Not read. */
    uint8_t lfCharSet;     /**< Not read. */
    uint8_t lfOutPrecision;       /**< Not read. */
    uint8_t lfClipPrecision;      /**< Not read. */
    uint8_t lfQuality;            /**< Not read. */
    uint8_t lfPitchAndFamily;     /**< Not read. */
    char lfFaceName[LF_FACESIZE]; /**< Family, UTF-8; a NUL ends it where it is shorter. */
} LOGFONT;
WEXELXI_LAYOUT(sizeof(LOGFONT) == 168);
WEXELXI_FIELD(LOGFONT, lfDC, 0);
WEXELXI_FIELD(LOGFONT, lfHeight, 8);
WEXELXI_FIELD(LOGFONT, lfWidth, 12);
WEXELXI_FIELD(LOGFONT, lfEscapement, 16);
WEXELXI_FIELD(LOGFONT, lfOrientation, 20);
WEXELXI_FIELD(LOGFONT, lfWeight, 24);
WEXELXI_FIELD(LOGFONT, lfItalic, 28);
WEXELXI_FIELD(LOGFONT, lfUnderline, 29);
WEXELXI_FIELD(LOGFONT, lfStrikeOut, 30);
WEXELXI_FIELD(LOGFONT, lfCharSet, 31);
WEXELXI_FIELD(LOGFONT, lfOutPrecision, 32);
WEXELXI_FIELD(LOGFONT, lfClipPrecision, 33);
WEXELXI_FIELD(LOGFONT, lfQuality, 34);
WEXELXI_FIELD(LOGFONT, lfPitchAndFamily, 35);
WEXELXI_FIELD(LOGFONT, lfFaceName, 36);

/** The published text metrics with 8-bit characters; the caller provides all 56 bytes. */
typedef struct TEXTMETRIC {
    int32_t tmHeight;           /**< tmAscent + tmDescent. */
    int32_t tmAscent;           /**< Rounded up to whole dots. */
    int32_t tmDescent;          /**< Rounded up to whole dots. */
    int32_t tmInternalLeading;  /**< 0. */
    int32_t tmExternalLeading;  /**< The resolution / 96. */
    int32_t tmAveCharWidth;     /**< Rounded up to whole dots. */
    int32_t tmMaxCharWidth;     /**< Width of the letter W. */
    int32_t tmWeight;           /**< 700 for a font asked for with 700 or more, else 0. */
    int32_t tmOverhang;         /**< 0. */
    int32_t tmDigitizedAspectX; /**< 0. */
    int32_t tmDigitizedAspectY; /**< 0. */
    uint8_t tmFirstChar;        /**< 0. */
    uint8_t tmLastChar;         /**< 0xFF. */
    uint8_t tmDefaultChar;      /**< 0x20. */
    uint8_t tmBreakChar;        /**< 0x20. */
    uint8_t tmItalic;           /**< lfItalic as asked for. */
    uint8_t tmUnderlined;       /**< 0. */
    uint8_t tmStruckOut;        /**< 0. */
    uint8_t tmPitchAndFamily;   /**< TMPF_ flags. */
    uint8_t tmCharSet;          /**< DEFAULT_CHARSET. */
} TEXTMETRIC;
WEXELXI_LAYOUT(sizeof(TEXTMETRIC) == 56);
WEXELXI_FIELD(TEXTMETRIC, tmHeight, 0);
WEXELXI_FIELD(TEXTMETRIC, tmAscent, 4);
WEXELXI_FIELD(TEXTMETRIC, tmDescent, 8);
WEXELXI_FIELD(TEXTMETRIC, tmInternalLeading, 12);
WEXELXI_FIELD(TEXTMETRIC, tmExternalLeading, 16);
WEXELXI_FIELD(TEXTMETRIC, tmAveCharWidth, 20);
WEXELXI_FIELD(TEXTMETRIC, tmMaxCharWidth, 24);
WEXELXI_FIELD(TEXTMETRIC, tmWeight, 28);
WEXELXI_FIELD(TEXTMETRIC, tmOverhang, 32);
WEXELXI_FIELD(TEXTMETRIC, tmDigitizedAspectX, 36);
WEXELXI_FIELD(TEXTMETRIC, tmDigitizedAspectY, 40);
WEXELXI_FIELD(TEXTMETRIC, tmFirstChar, 44);
WEXELXI_FIELD(TEXTMETRIC, tmLastChar, 45);
WEXELXI_FIELD(TEXTMETRIC, tmDefaultChar, 46);
WEXELXI_FIELD(TEXTMETRIC, tmBreakChar, 47);
WEXELXI_FIELD(TEXTMETRIC, tmItalic, 48);
WEXELXI_FIELD(TEXTMETRIC, tmUnderlined, 49);
WEXELXI_FIELD(TEXTMETRIC, tmStruckOut, 50);
WEXELXI_FIELD(TEXTMETRIC, tmPitchAndFamily, 51);
WEXELXI_FIELD(TEXTMETRIC, tmCharSet, 52);

/** Extent of a text in dots. */
typedef struct SIZE {
    int32_t cx; /**< Width. */
    int32_t cy; /**< Height. */
} SIZE;
WEXELXI_LAYOUT(sizeof(SIZE) == 8);
WEXELXI_FIELD(SIZE, cx, 0);
WEXELXI_FIELD(SIZE, cy, 4);

/** What GetFontInfo tells of a font. */
typedef struct FontInfoRecord {
    char family[128];    /**< Family asked for, cut to 127 characters. */
    char filePath[4096]; /**< Font file found, cut to 4095 characters. */
    int32_t height;      /**< ascent + descent. */
    int32_t ascent;      /**< As tmAscent. */
    int32_t descent;     /**< As tmDescent. */
    uint8_t bold;        /**< 1 if asked for with a weight of 700 or more. */
    uint8_t italic;      /**< lfItalic as asked for. */
    uint8_t reserved;    /**< Left as the caller had it. */
    uint8_t underline;   /**< lfUnderline as asked for. */
} FontInfoRecord;
WEXELXI_LAYOUT(sizeof(FontInfoRecord) == 4240);
WEXELXI_FIELD(FontInfoRecord, family, 0);
WEXELXI_FIELD(FontInfoRecord, filePath, 128);
WEXELXI_FIELD(FontInfoRecord, height, 4224);
WEXELXI_FIELD(FontInfoRecord, ascent, 4228);
WEXELXI_FIELD(FontInfoRecord, descent, 4232);
WEXELXI_FIELD(FontInfoRecord, bold, 4236);
WEXELXI_FIELD(FontInfoRecord, italic, 4237);
WEXELXI_FIELD(FontInfoRecord, reserved, 4238);
WEXELXI_FIELD(FontInfoRecord, underline, 4239);

/** Makes a font: the first outline font of exactly the asked family on the search list of lfWeight
 *  and lfItalic, a TrueType file before others. Without one, the first font that EnumFonts ever
 *  found serves.
 *  @param logfont  what is asked for; read during the call only. A lfWeight of 800, 700 or 600
 *                  walks the bold fonts, any other value the regular and the light ones. lfDC must
 *                  be null or alive.
 *  @return the font, ended by DeleteObject; null if there is none, before InitFonts, and if there
 *          is no memory. Last error: 0, or ERROR_NOT_ENOUGH_MEMORY. Lock: yes. */
WEXELXI_API HFONT CreateFontIndirect(const LOGFONT *logfont);

/** CreateFontIndirect for the screen's resolution, with the fields as arguments.
 *  @param height    size in points.
 *  @param weight    as lfWeight.
 *  @param italic    as lfItalic.
 *  @param underline as lfUnderline.
 *  @param faceName  family, at most 128 bytes of it are read; null: the empty name.
 *  The others are not used.
 *  @return as CreateFontIndirect. Last error: 0, or ERROR_NOT_ENOUGH_MEMORY. Lock: yes. */
WEXELXI_API HFONT CreateFont(int32_t height, int32_t width, int32_t escapement, int32_t orientation,
                             int32_t weight, uint8_t italic, uint8_t underline, uint8_t strikeOut,
                             uint8_t charSet, uint8_t outPrecision, uint8_t clipPrecision,
                             uint8_t quality, uint8_t pitchAndFamily, LPCSTR faceName);

/** Selects a font into a device context, which does not own it.
 *  @param hdc     the device context; must not be null.
 *  @param object  a font; null deselects. Any other pointer changes nothing, gives null, and
 *                 "Invalid HFONT passed to SelectObject" to the hook, severity 0.
 *  @return the font that was selected before, or null. Last error: unchanged. Lock: yes. */
WEXELXI_API HGDIOBJ SelectObject(HDC hdc, HGDIOBJ object);

/** Ends a font. A device context that still has it selected is not told; it measures nothing more.
 *  @param object  a font; anything else gives "Invalid HFONT passed to DeleteObject" to the hook,
 *                 severity 0.
 *  @return TRUE always. Last error: unchanged. Lock: yes. */
WEXELXI_API BOOL DeleteObject(HGDIOBJ object);

/** Tells what a font was asked for and which file it uses. Must not run beside CreateFontIndirect
 *  or DeleteObject on another thread.
 *  @param font  a font; anything else writes nothing and gives "Invalid HFONT passed to
 *               GetFontInfo" to the hook, severity 0.
 *  @param info  receives the answer.
 *  Last error: unchanged. Lock: no. */
WEXELXI_API void GetFontInfo(HFONT font, FontInfoRecord *info);

/** Measures the selected font. Without a live one the record is zero apart from its four constant
 *  bytes.
 *  @param hdc      the device context. Null gives "NULL HDC passed to GetTextMetrics" to the hook,
 *                  severity 1, and is else treated as one without a font.
 *  @param metrics  receives all 56 bytes.
 *  @return TRUE always. No selected font reports "HDC with no selected font passed to
 *          GetTextMetrics", severity 1; then, as for a deleted one, "Invalid HFONT selected into
 *          HDC passed to GetTextMetrics", severity 0. Last error: unchanged. Lock: yes. */
WEXELXI_API BOOL GetTextMetrics(HDC hdc, TEXTMETRIC *metrics);

/** Measures a text in the selected font.
 *  @param hdc    the device context; reports as GetTextMetrics, each with this function's name.
 *  @param text   UTF-8; bytes that are not are measured as Pango's sign for them. Null: empty.
 *  @param count  bytes; a NUL ends the text earlier; negative: up to the NUL.
 *  @param size   receives the width, 1 at least for an empty text, and ascent + descent; unwritten
 *                without a live font.
 *  @return TRUE always. Last error: unchanged. Lock: yes. */
WEXELXI_API BOOL GetTextExtentPoint32(HDC hdc, LPCSTR text, int32_t count, SIZE *size);

/** Draws nothing and reads no argument. The result means nothing. Last error: 0. Lock: yes. */
WEXELXI_API BOOL TextOut(HDC hdc, int32_t x, int32_t y, LPCSTR text, int32_t count);

/** @} */

/** \defgroup font_catalogue Installed fonts
 *  @{ */

/** Receives one installed font: the family in logfont->lfFaceName, the pitch in both records, the
 *  character set in metrics; all other fields are 0. The records are the library's and are reused.
 *  Called with the lock held; it may call the library.
 *  @param fontType  TRUETYPE_FONTTYPE for an outline font in a file named *.ttf, else 0.
 *  @param data      what EnumFonts was given.
 *  @return 0 ends the enumeration. */
typedef int32_t (*FONTENUMPROC)(const LOGFONT *logfont, const TEXTMETRIC *metrics,
                                uint32_t fontType, LPARAM data);

/** Starts the fonts: fontconfig, and font maps, the screen's at gLOGPIXELSY. InitLib calls it; a
 *  host may do so again, which makes the maps anew.
 *  @return 0; 3 if fontconfig cannot start. Last error: unchanged. Lock: no. */
WEXELXI_API int32_t InitFonts(void);

/** Ends the fonts: every font is freed, its handle invalid. FreeLib calls it; harmless when
 *  repeated. Last error: unchanged. Lock: no. */
WEXELXI_API void TermFonts(void);

/** Calls back for each installed font of a family. The first enumeration that finds a font makes
 *  its first one the last resort of CreateFontIndirect.
 *  @param hdc       not read.
 *  @param family    the family; null: every font.
 *  @param callback  gets the fonts.
 *  @param data      handed on.
 *  @return what the last call of callback returned; 0 without one. Last error: unchanged, or
 *          ERROR_NOT_ENOUGH_MEMORY. Lock: yes, held across the callbacks. */
WEXELXI_API int32_t EnumFonts(HDC hdc, LPCSTR family, FONTENUMPROC callback, LPARAM data);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
