/* File handles with their reads and writes, and the operations on whole files by name. */
#ifndef WEXELXI_FILES_H
#define WEXELXI_FILES_H

#include "types.h"

/** \defgroup files File handles
 *  A file handle owns a standard I/O stream, also for a port. Names are POSIX paths, used as they
 *  stand: no backslash is mapped and no case is folded. The handles 0 and INVALID_HANDLE_VALUE are
 *  refused everywhere; a search handle of FindFirstFile must not come here.
 *
 *  On a line device (a serial port) reads and writes go straight to the descriptor. All else is
 *  buffered: data reaches the file at FlushFileBuffers, at a seek, at a read or at the close.
 *
 *  Where a last error is given as "Unix", it is what SetUnixError makes of the platform's errno.
 *  The global lock is held across everything here that blocks.
 *  @{ */

#ifdef __cplusplus
extern "C" {
#endif

/** \name Access to a file
 *  @{ */
/** A bit of the access that CreateFile takes. */
#define GENERIC_READ 0x80000000u
#define GENERIC_WRITE 0x40000000u
/** @} */

/** \name Share modes
 *  @{ */
/** A share mode; not looked at. */
#define FILE_SHARE_READ 1u
#define FILE_SHARE_WRITE 2u
/** @} */

/** \name Dispositions of CreateFile
 *  @{ */
/** A disposition; TRUNCATE_EXISTING truncates nothing. */
#define CREATE_NEW 1u
#define CREATE_ALWAYS 2u
#define OPEN_EXISTING 3u
#define OPEN_ALWAYS 4u
#define TRUNCATE_EXISTING 5u
/** @} */

/** \name Origins of a seek
 *  @{ */
/** The place that an offset counts from. */
#define FILE_BEGIN 0u
#define FILE_CURRENT 1u
#define FILE_END 2u
/** @} */

/** \name Failing results
 *  @{ */
/** A failing 32-bit result. */
#define INVALID_FILE_SIZE 0xFFFFFFFFu
#define INVALID_SET_FILE_POINTER 0xFFFFFFFFu
#define HFILE_ERROR 0xFFFFFFFFu
/** @} */

/** Opens a file or a port.
 *  @param name         the name. One that starts as a port does (COM1, LPT2, EPT:) must lie in
 *                      writable memory: it is upper-cased in place.
 *  @param access       GENERIC_WRITE opens for writing too; GENERIC_READ is not looked at.
 *  @param shareMode    not read.
 *  @param security     not read.
 *  @param disposition  CREATE_NEW creates the file and never opens one that exists; CREATE_ALWAYS
 *                      empties or creates it; OPEN_ALWAYS creates an absent one; all others, among
 *                      them TRUNCATE_EXISTING, open what is there and cut nothing. A file that is
 *                      created or emptied without GENERIC_WRITE is write-only.
 *  @param flags        not read.
 *  @param templateFile not read.
 *  @return the handle, or INVALID_HANDLE_VALUE.
 *  Last error: on success 0, or 2 where CREATE_NEW or OPEN_ALWAYS found no such name, or for a port
 *  what the lookup in the profile left; 80 (CREATE_NEW of an existing name); 31 (a port that does
 *  not open, no memory for the handle); 8 (no other memory); Unix. Lock: yes. */
WEXELXI_API HANDLE CreateFile(const char *name, uint32_t access, uint32_t shareMode,
                              LPVOID security, uint32_t disposition, uint32_t flags,
                              HANDLE templateFile);

/** Ends a handle of any kind: a file, a port, a semaphore or a thread. A thread runs on. A line
 *  device is drained first, for at most the seconds in key "Delay" of section "Ports" (120 if there
 *  is none).
 *  @return TRUE. FALSE if what the stream still held could not be written, or the semaphore could
 *          not be destroyed: the record then stays, and a further call for the file frees it.
 *  Last error: 0; 31. Lock: yes. */
WEXELXI_API BOOL CloseHandle(HANDLE handle);

/** Reads from the present position. A line device gives what is waiting, and does not wait.
 *  @param buffer      receives the bytes.
 *  @param count       bytes at buffer.
 *  @param bytesRead   receives the bytes read; fewer than count at the end of the file and after a
 *                     read error alike. May be null.
 *  @param overlapped  not read.
 *  @return TRUE for every file handle. Last error: 0, on a port also what putting its timeout back
 *  left; 31 (not a file handle; bytesRead is not written). Lock: yes. */
WEXELXI_API BOOL ReadFile(HANDLE handle, LPVOID buffer, uint32_t count, uint32_t *bytesRead,
                          LPVOID overlapped);

/** Writes at the present position.
 *  @param buffer        the bytes.
 *  @param count         how many.
 *  @param bytesWritten  receives the bytes written, also when they are fewer. May be null.
 *  @param overlapped    not read.
 *  @return TRUE if all bytes were taken. Last error: 0; 29 (fewer); 31 (not a file handle;
 *  bytesWritten is not written). Lock: yes. */
WEXELXI_API BOOL WriteFile(HANDLE handle, LPCVOID buffer, uint32_t count, uint32_t *bytesWritten,
                           LPVOID overlapped);

/** Moves the position, also past the end of the file.
 *  @param offset    bytes from the origin.
 *  @param position  receives the new position from the start; may be null.
 *  @param method    FILE_CURRENT, FILE_END; every other value is FILE_BEGIN.
 *  @return TRUE if moved. Last error: 0; 6 (not a file handle); Unix (12 before the start, 31 on a
 *  port). Lock: yes. */
WEXELXI_API BOOL SetFilePointerEx(HANDLE handle, int64_t offset, int64_t *position,
                                  uint32_t method);

/** As SetFilePointerEx with a 32-bit offset.
 *  @param offsetHigh  neither read nor written.
 *  @return the low 32 bits of the new position, or INVALID_SET_FILE_POINTER, which a position of
 *          such a low half gives too. Last error: as SetFilePointerEx. Lock: no. */
WEXELXI_API uint32_t SetFilePointer(HANDLE handle, int32_t offset, int32_t *offsetHigh,
                                    uint32_t method);

/** The size in bytes, what was written and not yet flushed included. The position stays.
 *  @param size  receives the size; may be null.
 *  @return TRUE if the size could be had. Last error: as SetFilePointerEx leaves it. Lock: yes. */
WEXELXI_API BOOL GetFileSizeEx(HANDLE handle, int64_t *size);

/** As GetFileSizeEx.
 *  @param sizeHigh  neither read nor written.
 *  @return the low 32 bits of the size, or INVALID_FILE_SIZE.
 *  Last error: as GetFileSizeEx. Lock: no. */
WEXELXI_API uint32_t GetFileSize(HANDLE handle, uint32_t *sizeHigh);

/** Cuts or lengthens the file to the present position.
 *  @return TRUE if done. Last error: 0; 6 (not a file handle); Unix. Lock: yes. */
WEXELXI_API BOOL SetEndOfFile(HANDLE handle);

/** Hands what the stream holds to the platform. What that refuses is lost and not told, unlike in a
 *  question about the position and at the close.
 *  @return TRUE for every file handle. Last error: 0; 31 (not a file handle). Lock: yes. */
WEXELXI_API BOOL FlushFileBuffers(HANDLE handle);

/** Asks for an exclusive, advisory lock of the process on a range, without waiting for it.
 *  @param offsetLow   first byte.
 *  @param offsetHigh  must be 0.
 *  @param lengthLow   bytes; 0 reaches to the end of the file.
 *  @param lengthHigh  must be 0.
 *  @return TRUE, also if the platform refused the range.
 *  Last error: 0; 31 (not a file handle, or a high word set). Lock: no, but its work takes it. */
WEXELXI_API BOOL LockFile(HANDLE handle, uint32_t offsetLow, uint32_t offsetHigh,
                          uint32_t lengthLow, uint32_t lengthHigh);

/** Gives a range of LockFile back; the same arguments and result.
 *  Last error: as LockFile. Lock: no, but its work takes it. */
WEXELXI_API BOOL UnlockFile(HANDLE handle, uint32_t offsetLow, uint32_t offsetHigh,
                            uint32_t lengthLow, uint32_t lengthHigh);

/** Whether FindFirstFile finds the name: so wildcards work, a directory exists, case is folded when
 *  gFileMode is not 0, and what lies in a directory that cannot be listed does not exist.
 *  Last error: 0 (found); 2; 8 (no memory to look). Lock: yes. */
WEXELXI_API BOOL DoesFileExist(const char *name);

/** As CloseHandle. @return 0, or HFILE_ERROR. Last error: as CloseHandle. Lock: yes. */
WEXELXI_API uint32_t _lclose(HANDLE handle);

/** Does nothing; the arguments are not read. @return 0. Last error: 0. Lock: yes. */
WEXELXI_API uint32_t _lopen(const char *name, int32_t mode);

/** Does nothing; the arguments are not read. @return 0. Last error: 0. Lock: yes. */
WEXELXI_API uint32_t _lread(HANDLE handle, LPVOID buffer, uint32_t count);

/** Does nothing; the arguments are not read. @return 0. Last error: 0. Lock: yes. */
WEXELXI_API int32_t _llseek(HANDLE handle, int32_t offset, int32_t method);

/** @} */

/** \defgroup operations File operations
 *  Whole files and directories by name; names go to the platform unchanged. Attributes are a view
 *  of the platform's mode: an existing name has exactly one of FILE_ATTRIBUTE_DIRECTORY and
 *  FILE_ATTRIBUTE_ARCHIVE, and FILE_ATTRIBUTE_READONLY if the owner may not write.
 *  @{ */

/** \name File attributes
 *  @{ */
/** A bit of the file attributes. */
#define FILE_ATTRIBUTE_READONLY 0x01u
#define FILE_ATTRIBUTE_DIRECTORY 0x10u
#define FILE_ATTRIBUTE_ARCHIVE 0x20u
#define FILE_ATTRIBUTE_NORMAL 0x80u
/** @} */

/** Copies a file's bytes and its read-only state; owner, times and execute bits are not copied. The
 *  lock is held for the whole copy, and 64 KiB of the caller's stack are used.
 *  @param source        the file to read.
 *  @param target        the file to create or replace.
 *  @param failIfExists  not 0: an existing target is refused.
 *  @return TRUE if all bytes were handed to the platform. After a read or write error the target
 *          stays as far as it was written.
 *  Last error: 0, or Unix where the target's mode could not be set (both TRUE); 80 (the target
 *  exists); 32 (source and target are one file, which stays whole); 30 (read error); 29 (write
 *  error); that of CreateFile for a name that does not open. Lock: yes. */
WEXELXI_API BOOL CopyFile(const char *source, const char *target, BOOL failIfExists);

/** Renames a file or a directory; an existing target file is replaced. A file, or a read-only
 *  directory, moves into the target if that is a writable directory. Nothing crosses file systems.
 *  Last error: 0, or 31 where the new name did not exist before (both TRUE); Unix. Lock: yes. */
WEXELXI_API BOOL MoveFile(const char *oldName, const char *newName);

/** Removes a file or an empty directory. Last error: 0; Unix. Lock: yes. */
WEXELXI_API BOOL DeleteFile(const char *name);

/** Makes a directory, mode 777 less the umask.
 *  @param security  not read. Last error: 0; Unix. Lock: yes. */
WEXELXI_API BOOL CreateDirectory(const char *name, LPVOID security);

/** Removes an empty directory. Last error: 0; Unix. Lock: yes. */
WEXELXI_API BOOL RemoveDirectory(const char *name);

/** The attributes of a name, links followed.
 *  @return 0x10, 0x11, 0x20 or 0x21; 0 if it cannot be examined. Last error: 0; 31. Lock: yes. */
WEXELXI_API uint32_t GetFileAttributes(const char *name);

/** Sets or clears the read-only state: set, everybody may read and nobody write; clear, everybody
 *  may do both. Execute and special bits stay.
 *  @param attributes  only FILE_ATTRIBUTE_READONLY counts. Last error: 0; Unix. Lock: yes. */
WEXELXI_API BOOL SetFileAttributes(const char *name, uint32_t attributes);

/** The temporary directory: variable TMP, else TEMP, else the current directory; with a '/' at its
 *  end where there is room.
 *  @param size    bytes at buffer.
 *  @param buffer  receives the directory.
 *  @return its length; if it does not fit, nothing is copied and the size needed, with the NUL and
 *          without the '/', comes back; 0 if there is none. Last error: 0; 16. Lock: yes. */
WEXELXI_API uint32_t GetTempPath(uint32_t size, char *buffer);

/** Finds a name that is not taken: directory, '/', prefix, four hexadecimal digits, ".tmp". The
 *  file is not made.
 *  @param directory  the directory; null gives 0.
 *  @param prefix     used whole; null gives 0.
 *  @param unique     not read.
 *  @param name       receives the name; room for the directory, the prefix and 10 bytes more. Null
 *                    gives 0.
 *  @return the number in the name, which may be 0.
 *  Last error: 2 (found); 0 (a null argument); 80 (all 65536 names are taken); 8 (no memory).
 *  Lock: yes. */
WEXELXI_API uint32_t GetTempFileName(const char *directory, const char *prefix, uint32_t unique,
                                     char *name);

/** The room on a file system. Nothing is written if one of the four pointers is null.
 *  @param path               any name on the file system.
 *  @param sectorsPerCluster  receives 1; 0 if the path cannot be examined, as all four then.
 *  @param bytesPerSector     receives 1024.
 *  @param freeClusters       receives the file system's free blocks, low 32 bits.
 *  @param totalClusters      receives the file system's blocks, low 32 bits.
 *  @return always 0. Last error: unchanged. Lock: yes. */
WEXELXI_API BOOL GetDiskFreeSpace(const char *path, uint32_t *sectorsPerCluster,
                                  uint32_t *bytesPerSector, uint32_t *freeClusters,
                                  uint32_t *totalClusters);

/** Does nothing; the argument is not read. @return 0. Last error: 0. Lock: yes. */
WEXELXI_API uint32_t GetDriveType(const char *root);

/** Does nothing. @return 0. Last error: 0. Lock: yes. */
WEXELXI_API uint32_t GetLogicalDrives(void);

/** Does nothing; the arguments are not read. @return 0. Last error: 0. Lock: yes. */
WEXELXI_API BOOL GetVolumeInformation(const char *root, char *name, uint32_t nameSize,
                                      uint32_t *serial, uint32_t *longestComponent, uint32_t *flags,
                                      char *system, uint32_t systemSize);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
