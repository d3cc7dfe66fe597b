/* Serial and parallel ports: names, line settings, the read timeout. */
#ifndef WEXELXI_COMM_H
#define WEXELXI_COMM_H

#include "types.h"

/** \defgroup comm Ports
 *  A port is opened by its name with CreateFile. Serial lines are types 1 and 3 to 6; a parallel
 *  port, type 2, is written like a file, and the calls on line settings pass over it.
 *
 *  Where a last error is given as "Unix", it is what SetUnixError makes of the platform's errno.
 *  @{ */

#ifdef __cplusplus
extern "C" {
#endif

/** \name Port types
 *  @{ */
/** A port type, as GetPortName tells it. */
#define PST_UNSPECIFIED 0u
#define PST_RS232 1u
#define PST_PARALLELPORT 2u
#define PST_RS422 3u
#define PST_RS423 4u
#define PST_RS449 5u
#define PST_MODEM 6u
/** @} */

/** \name Values of DCB.Parity
 *  @{ */
/** A parity. */
#define NOPARITY 0
#define ODDPARITY 1
#define EVENPARITY 2
#define MARKPARITY 3
#define SPACEPARITY 4
/** @} */

/** \name Values of DCB.StopBits
 *  @{ */
/** A number of stop bits. */
#define ONESTOPBIT 0
#define ONE5STOPBITS 1
#define TWOSTOPBITS 2
/** @} */

/** \name Values of DCB.fDtrControl
 *  @{ */
/** Use of the DTR line. */
#define DTR_CONTROL_DISABLE 0u
#define DTR_CONTROL_ENABLE 1u
#define DTR_CONTROL_HANDSHAKE 2u
/** @} */

/** \name Values of DCB.fRtsControl
 *  @{ */
/** Use of the RTS line. */
#define RTS_CONTROL_DISABLE 0u
#define RTS_CONTROL_ENABLE 1u
#define RTS_CONTROL_HANDSHAKE 2u
/** @} */

/** \name Last errors of line settings
 *  @{ */
/** A last error, negative as 32 bits. */
#define IE_DEFAULT ((uint32_t)-5)
#define IE_BYTESIZE ((uint32_t)-11)
#define IE_BAUDRATE ((uint32_t)-12)
/** @} */

/** The settings of a serial line. */
typedef struct {
    uint32_t DCBlength;   /**< 28 from BuildCommDCB; not read. */
    uint32_t BaudRate;    /**< 110, 300, 600, 1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200 or
                               230400. */
    uint32_t fBinary : 1; /**< Set by GetCommState; not read. */
    uint32_t fParity : 1; /**< Parity is read. */
    uint32_t fOutxCtsFlow : 1;      /**< Hardware flow control. */
    uint32_t fOutxDsrFlow : 1;      /**< Told with fOutxCtsFlow; not read. */
    uint32_t fDtrControl : 2;       /**< 0 turns hardware flow control off, 1 on. */
    uint32_t fDsrSensitivity : 1;   /**< Not used. */
    uint32_t fTXContinueOnXoff : 1; /**< Not used. */
    uint32_t fOutX : 1;             /**< XON/XOFF on output. */
    uint32_t fInX : 1;              /**< XON/XOFF on input. */
    uint32_t fErrorChar : 1;        /**< Not used. */
    uint32_t fNull : 1;             /**< Cleared by GetCommState; not read. */
    uint32_t fRtsControl : 2;       /**< 1 turns hardware flow control on. */
    uint32_t fAbortOnError : 1;     /**< Not used. */
    uint32_t fDummy2 : 17;          /**< Not used. */
    uint16_t wReserved;             /**< Not used. */
    uint16_t XonLim;                /**< Told as 10; not read. */
    uint16_t XoffLim;               /**< Told as 10; not read. */
    uint8_t ByteSize;               /**< 5 to 8. */
    uint8_t Parity;                 /**< NOPARITY, ODDPARITY or EVENPARITY; never told. */
    uint8_t StopBits;               /**< ONESTOPBIT or TWOSTOPBITS. */
    char XonChar;                   /**< 0 leaves none set. */
    char XoffChar;                  /**< 0 leaves none set. */
    char ErrorChar;                 /**< Not used. */
    char EofChar;                   /**< 0 stands for 4. */
    char EvtChar;                   /**< Not used. */
    uint16_t wReserved1;            /**< Not used. */
} DCB;

WEXELXI_LAYOUT(sizeof(DCB) == 28);
WEXELXI_FIELD(DCB, BaudRate, 4);
WEXELXI_FIELD(DCB, wReserved, 12);
WEXELXI_FIELD(DCB, XonLim, 14);
WEXELXI_FIELD(DCB, XoffLim, 16);
WEXELXI_FIELD(DCB, ByteSize, 18);
WEXELXI_FIELD(DCB, Parity, 19);
WEXELXI_FIELD(DCB, StopBits, 20);
WEXELXI_FIELD(DCB, XonChar, 21);
WEXELXI_FIELD(DCB, XoffChar, 22);
WEXELXI_FIELD(DCB, ErrorChar, 23);
WEXELXI_FIELD(DCB, EofChar, 24);
WEXELXI_FIELD(DCB, EvtChar, 25);
WEXELXI_FIELD(DCB, wReserved1, 26);

/** The read timeout of a line: six words, of which the last counts. */
typedef struct {
    uint32_t reserved[5]; /**< Neither read nor written. */
    uint32_t VTimeTenths; /**< Tenths of a second, 0 to 255. */
} COMMTIMEOUTS;

WEXELXI_LAYOUT(sizeof(COMMTIMEOUTS) == 24);
WEXELXI_FIELD(COMMTIMEOUTS, VTimeTenths, 20);

/** What a port is. A longer record of the caller's is not touched behind these words. */
typedef struct {
    uint32_t dwReserved;    /**< Receives 0. */
    uint32_t dwProvSubType; /**< Receives the port type, PST_... */
} COMMPROP;

WEXELXI_LAYOUT(sizeof(COMMPROP) == 8);
WEXELXI_FIELD(COMMPROP, dwProvSubType, 4);

/** Tells whether a name is a port, and which device stands behind it: key `name` of section "Ports"
 *  in the profile, else /dev/ttyS0 for COM1 and so on, /dev/lp0 for LPT1, EPT1 and "EPT:".
 *  @param name    the name; upper-cased in place if it is a port. Only upper-case names with a
 *                 digit from 1 to 9 behind COM, LPT or EPT are.
 *  @param device  receives the device path; cleared and written only if the name is a port.
 *  @param length  bytes at device; a longer path is cut.
 *  @return the port type. 0 if the name is null or no port, if device is null or length below 1, if
 *          the profile's entry names no type (its path is at device then), or without memory to
 *          read it. Last error: unchanged, or as the lookup in the profile left it; 8 (no memory).
 *          Lock: yes. */
WEXELXI_API uint32_t GetPortName(char *name, char *device, int32_t length);

/** Splits an entry of section "Ports", such as "/dev/ttyUSB0,rs232".
 *  @param value  the entry. Its first comma becomes a NUL, which leaves the device, and the text
 *                behind it is lower-cased. Without a comma nothing changes.
 *  @return the type whose keyword the text behind the comma holds: modem, parallelport, rs232,
 *          rs422, rs423, rs449, in this order; else 0.
 *  Last error: unchanged. Lock: yes. */
WEXELXI_API uint32_t GetDeviceType(char *value);

/** Reads the settings of a line into a record; what the line has no counterpart for, Parity among
 *  it, stays as the caller had it. A parallel port changes nothing.
 *  @return TRUE if the line could be asked. Last error: unchanged; 31 (not a file handle); Unix (no
 *  line, as an ordinary file). Lock: yes. */
WEXELXI_API BOOL GetCommState(HANDLE port, DCB *settings);

/** Puts a line into raw mode with these settings, once its output has left; resets the timeout to
 *  0. On failure nothing has changed. A parallel port is passed over.
 *  Blocks while output is pending, with the lock held.
 *  @return TRUE if set. Last error: 0; unchanged (a parallel port); 31 (not a file handle); -12 (a
 *  speed that is not one of the twelve); -11 (a bad ByteSize, Parity or StopBits); Unix. Lock: yes.
 */
WEXELXI_API BOOL SetCommState(HANDLE port, const DCB *settings);

/** Fills a record from a text of 5 to 50 characters, with or without "COM1:" in front: the comma
 *  form "9600,n,8,1,x", whose last two fields may be missing, or, without any comma, the keyword
 *  form "baud=9600 parity=n data=8 stop=1".
 *  @param text      the text; null is refused.
 *  @param settings  set to zero first, but not touched if the length or the prefix is refused; on
 *                   another failure left as far as it was filled. Speeds are not judged.
 *  @return TRUE if understood. Last error: unchanged; -5 (the text); -12 (no speed); 31 (the
 *  length). Lock: yes. */
WEXELXI_API BOOL BuildCommDCB(const char *text, DCB *settings);

/** Reads a line's timeout. A parallel port changes nothing.
 *  @param timeouts  receives the sixth word only.
 *  @return TRUE if the line could be asked. Last error: unchanged; 31 (not a file handle); Unix.
 *  Lock: yes. */
WEXELXI_API BOOL GetCommTimeouts(HANDLE port, COMMTIMEOUTS *timeouts);

/** Stores a line's timeout, the low 8 bits of VTimeTenths, in the line itself. SetCommState resets
 *  it, and ReadFile never waits for it. Blocks while output is pending, with the lock held.
 *  @return TRUE if set. Last error: unchanged; 31 (not a file handle); Unix. Lock: yes. */
WEXELXI_API BOOL SetCommTimeouts(HANDLE port, const COMMTIMEOUTS *timeouts);

/** Tells the type of a port, 0 for an ordinary file and for a bad handle. Always TRUE.
 *  Last error: unchanged; 31 (not a file handle). Lock: yes. */
WEXELXI_API BOOL GetCommProperties(HANDLE port, COMMPROP *properties);

/** Does nothing; the arguments are not read. @return 0. Last error: 0. Lock: yes. */
WEXELXI_API BOOL PurgeComm(HANDLE port, uint32_t flags);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
