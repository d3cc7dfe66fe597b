// The record behind every kernel-object HANDLE: what the threads, the ports and the file operations
// may ask of it.
#pragma once

#include <cstdint>
#include <cstdio>
#include <pthread.h>
#include <semaphore.h>

#include "core/owners.h"
#include "wexelxi/types.h"

namespace wexelxi {

enum HandleKind : uint32_t {
    HANDLE_SEMAPHORE = 1,
    HANDLE_THREAD = 2,
    HANDLE_FILE = 3,
};

// Who waits for a thread, and whose the record is.
enum JoinState : uint32_t {
    JOIN_FREE = 0,    // nobody yet
    JOIN_CLAIMED = 1, // a wait lasts
    JOIN_OVER = 2,    // joined or detached
    JOIN_ORPHAN = 3, // a wait lasts, and the handle was closed meanwhile: the wait frees the record
};

// One block from malloc; the host sees its address, and CloseHandle frees it.
struct HandleRecord {
    uint32_t kind;
    union {
        sem_t sem;        // HANDLE_SEMAPHORE
        pthread_t thread; // HANDLE_THREAD
        FILE *stream;     // HANDLE_FILE; owned, null once a close has failed
    };
    uint32_t portType; // HANDLE_FILE: 0 for an ordinary file, else what GetPortName told
    uint32_t join;     // HANDLE_THREAD: a JoinState, changed in single steps without the lock
    uint32_t fileType; // HANDLE_FILE: as in a file's mode; 0 while nobody has asked
};

// A record that no host has yet.
using NewHandle = MallocBlock<HandleRecord>;

// A zeroed record of a kind; null if there is no memory.
NewHandle MakeHandle(HandleKind kind);

// Closes a file's handle for good: a close that fails keeps the record for a second one. Leaves the
// last error of the first.
void CloseForGood(HANDLE handle);

// A file's handle that the library itself works on.
using OwnedHandle = std::unique_ptr<void, ReleaseWith<CloseForGood>>;

// What CreateFile gives, with its last error; null if the file does not open. But CREATE_NEW
// searches for nothing: the name is refused, with ERROR_FILE_EXISTS, only if it is taken to the
// letter.
OwnedHandle OpenOwned(const char *name, uint32_t access, uint32_t disposition);

// The record of a handle of any kind; null for the two values that are never valid.
inline HandleRecord *HandleToRecord(HANDLE handle)
{
    return handle == INVALID_HANDLE_VALUE ? nullptr : static_cast<HandleRecord *>(handle);
}

// The stream of a file handle. On any other handle null, with last error ERROR_GEN_FAILURE.
FILE *HandleToStream(HANDLE handle);

// The port type of a file handle. On any other handle 0, with last error ERROR_GEN_FAILURE.
uint32_t GetHandlePortType(HANDLE handle);

} // namespace wexelxi
