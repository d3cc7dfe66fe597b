// Last error: a number and a text for each thread, and one process-wide pair before the start.
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <netdb.h>
#include <new>
#include <pthread.h>

#include "core/core_private.h"
#include "core/error_tables.h"
#include "core/lock.h"
#include "wexelxi/core.h"

using namespace wexelxi;

uint32_t gLastErrorTLS = 0;
uint32_t sLastErrorBeforeInit = 0;
uint32_t gErrorMode = 0;

namespace {

char *sLastErrorStringBeforeInit = nullptr;

// One per thread, made at the thread's first store. It outlives its thread and is never freed; the
// list keeps such records in sight of whoever looks for leaks.
struct LastErrorRecord {
    uint32_t errorCode;
    char *errorText;
    LastErrorRecord *next;
};

std::atomic<LastErrorRecord *> gRecords{nullptr};

// Stands for the record of a thread that there was no memory for, and is never written to.
LastErrorRecord gNoRecord = {ERROR_NOT_ENOUGH_MEMORY, nullptr, nullptr};

LastErrorRecord *FindRecord()
{
    return static_cast<LastErrorRecord *>(pthread_getspecific(gLastErrorTLS));
}

LastErrorRecord *FindOrCreateRecord()
{
    LastErrorRecord *found = FindRecord();
    if (found && found != &gNoRecord)
        return found;
    const int saved = errno;
    auto *record = new (std::nothrow) LastErrorRecord{};
    if (record) {
        record->next = gRecords.load(std::memory_order_relaxed);
        while (!gRecords.compare_exchange_weak(record->next, record, std::memory_order_release,
                                               std::memory_order_relaxed)) {
        }
    }
    pthread_setspecific(gLastErrorTLS, record ? record : &gNoRecord);
    errno = saved;
    return record;
}

// Where the calling thread's text stands, or null if there is no memory for a record.
char **TextSlot()
{
    if (gLastErrorTLS == 0)
        return &sLastErrorStringBeforeInit;
    LastErrorRecord *record = FindOrCreateRecord();
    return record ? &record->errorText : nullptr;
}

const char *CurrentText()
{
    if (gLastErrorTLS == 0)
        return sLastErrorStringBeforeInit;
    const LastErrorRecord *record = FindRecord();
    return record ? record->errorText : nullptr;
}

} // namespace

void wexelxi::ForgetErrorTextBeforeInit()
{
    free(sLastErrorStringBeforeInit);
    sLastErrorStringBeforeInit = nullptr;
}

uint32_t GetLastError(void)
{
    if (gLastErrorTLS == 0) [[unlikely]]
        return sLastErrorBeforeInit;
    const LastErrorRecord *record = FindRecord();
    return record ? record->errorCode : 0;
}

void SetLastError(uint32_t code)
{
    if (gLastErrorTLS == 0) [[unlikely]]
        sLastErrorBeforeInit = code;
    else if (LastErrorRecord *record = FindOrCreateRecord())
        record->errorCode = code;
}

void SetUnixError(void)
{
    LockScope lock;
    SetLastError(LastErrorFromErrno(errno));
}

void SetLastErrorString(const char *text)
{
    // The copy comes first: the text may be the one that it replaces.
    char *copy = strdup(text ? text : "");
    char **slot = TextSlot();
    if (!copy || !slot) {
        free(copy);
        return;
    }
    free(*slot);
    *slot = copy;
}

void GetLastErrorString(char *destination, int32_t size)
{
    if (size <= 0)
        return;
    const char *text = CurrentText();
    if (!text)
        text = "";
    const size_t length = std::min(strlen(text), static_cast<size_t>(size) - 1);
    memcpy(destination, text, length);
    destination[length] = '\0';
}

uint32_t WSAGetLastError(void)
{
    const int error = errno;
    return SocketErrorFromErrno(error, h_errno);
}

uint32_t SetErrorMode(uint32_t mode)
{
    LockScope lock;
    const uint32_t previous = gErrorMode;
    gErrorMode = mode;
    return previous;
}
