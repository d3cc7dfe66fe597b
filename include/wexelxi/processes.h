/* Commands, running programs, and what the system tells of itself; the event log. */
#ifndef WEXELXI_PROCESSES_H
#define WEXELXI_PROCESSES_H

#include "types.h"

/** \defgroup processes Processes, system information and the event log
 *  @{ */

#ifdef __cplusplus
extern "C" {
#endif

/** WinExecEx: wait until the command ends. */
#define WINEXEC_WAIT 1u
/** WinExecEx: catch the command's standard output; counts only together with WINEXEC_WAIT. */
#define WINEXEC_CAPTURE 2u

/** What GetSystemInfo tells. This is the library's own record. */
typedef struct SYSTEM_INFO {
    uint32_t dwProcessorType;      /**< 386, 486 or 586; 0 if unknown. */
    uint32_t dwNumberOfProcessors; /**< Processors online; 0 if unknown. */
    uint16_t wProcessorRevision;   /**< The stepping; 0 if unknown. */
    uint16_t wProcessorLevel;      /**< 3, 4 or 5; 0 if unknown. */
} SYSTEM_INFO;

WEXELXI_LAYOUT(sizeof(SYSTEM_INFO) == 12);
WEXELXI_FIELD(SYSTEM_INFO, dwProcessorType, 0);
WEXELXI_FIELD(SYSTEM_INFO, dwNumberOfProcessors, 4);
WEXELXI_FIELD(SYSTEM_INFO, wProcessorRevision, 8);
WEXELXI_FIELD(SYSTEM_INFO, wProcessorLevel, 10);

/** Starts a command in the background: WinExecEx with no flags and no output.
 *  @return 32 as soon as the shell has started the command, also if there is no such command; else
 *          as WinExecEx. Last error: as WinExecEx. Lock: no, but WinExecEx takes it. */
WEXELXI_API uint32_t WinExec(const char *command, uint32_t show);

/** Runs a command through /bin/sh. The command sees the host's environment, its signal mask and the
 *  descriptors that the host itself leaves inheritable; SIGINT, SIGQUIT and SIGHUP have their
 *  default effect on it. While the shell runs, SIGINT and SIGQUIT are ignored by the host. Any
 *  other child of the host that ends meanwhile is reaped, and its status is lost.
 *  @param command  text for the shell, of any length; what no argument can hold (131,071 bytes) is
 *                  not run and gives 2.
 *  @param show     not looked at.
 *  @param flags    WINEXEC_WAIT waits for the command, else "&" is put behind it and the call
 *                  returns at once. WINEXEC_WAIT with WINEXEC_CAPTURE puts " > " and a new file in
 *                  the configuration folder behind it.
 *  @param output   with a capture: receives the caught bytes with a NUL behind them, to be freed
 *                  with GlobalFree, or null if there are none; null leaves the file where it is.
 *                  Without a capture it is not touched.
 *  @return the status of wait(): exit code times 256, or the number of a signal; but 32 for a
 *          command that ended with 0, 2 for exit code 127 (no such command), 11 for status 127, and
 *          0xFFFFFFFF if the platform refuses the wait or nothing could be run.
 *  Last error: 0; with a capture that of its file: 2 if it is gone or `output` is null, 80 if no
 *  name is free; 8 if there is no memory or no process. Lock: yes, held until the shell ends. */
WEXELXI_API uint32_t WinExecEx(const char *command, uint32_t show, uint32_t flags, char **output);

/** Tells whether the name of any running program occurs in a text, such as a program's path. Runs
 *  `ps` with a file in the configuration folder; without a writable folder nothing runs.
 *  @return 1 or 0. Last error: unchanged; 8 if there is no memory. Lock: yes, held while `ps` runs.
 */
WEXELXI_API int32_t testForProgOpen_Unix(const char *text);

/** Tells what the processors are. The machine is asked once; later calls copy the same record.
 *  @param info  receives the record. Last error: 0. Lock: yes. */
WEXELXI_API void GetSystemInfo(SYSTEM_INFO *info);

/** Copies the machine's host name.
 *  @param destination  receives the name with its NUL.
 *  @param size         in: bytes at destination. Out, on success: the name's length without the
 *                     NUL.
 *  @return 1, or 0 if the name does not fit. Last error: unchanged. Lock: yes. */
WEXELXI_API int32_t GetComputerName(char *destination, uint32_t *size);

/** Copies the name of the user that the process acts for, at most 8 characters.
 *  @param destination  receives the name with its NUL, the empty text if there is no name or it
 *                      does not fit; at least 1 byte. Null gives FALSE.
 *  @param size         in: bytes at destination. Out, if the name fits: its length without the NUL.
 *                      Null gives FALSE.
 *  @return TRUE, or FALSE if there is no name or it does not fit.
 *  Last error: unchanged. Lock: yes. */
WEXELXI_API BOOL GetUserName(char *destination, uint32_t *size);

/** The version number of the configuration file, gVersion. Last error: unchanged. Lock: no. */
WEXELXI_API uint32_t GetVersion(void);

/** Opens the system log under a name, facility LOG_USER.
 *  @param server  not looked at.
 *  @param source  the name that messages carry; copied. Null takes the program's own.
 *  @return always the handle 1. Last error: unchanged. Lock: no. */
WEXELXI_API HANDLE RegisterEventSource(const char *server, const char *source);

/** Sends one message to the system log with LOG_INFO: the strings, with nothing between them. All
 *  arguments but the count and the strings are not looked at.
 *  @param count    number of strings; 0 sends an empty message.
 *  @param strings  the strings; a null among them counts as empty.
 *  @return always TRUE. Last error: unchanged; 8 if there is no memory. Lock: no. */
WEXELXI_API BOOL ReportEvent(HANDLE log, uint16_t type, uint16_t category, uint32_t eventId,
                             void *userId, uint16_t count, uint32_t dataSize,
                             const char *const *strings, void *data);

/** Closes the system log. Always TRUE. Last error: unchanged. Lock: no. */
WEXELXI_API BOOL DeregisterEventSource(HANDLE log);

/** Does nothing: no help is shown. Always 0. Last error: 0. Lock: yes. */
WEXELXI_API int32_t WinHelp(void *window, const char *file, uint32_t command, uintptr_t data);

/** Does nothing: there are no such parameters. Always 0. Last error: 0. Lock: yes. */
WEXELXI_API int32_t SystemParametersInfo(uint32_t action, uint32_t parameter, void *data,
                                         uint32_t flags);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
