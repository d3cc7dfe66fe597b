// The temporary directory, and names in it that are not taken.
#include <cstdio>
#include <cstring>
#include <string>

#include "core/last_error.h"
#include "core/lock.h"
#include "core/no_memory.h"
#include "wexelxi/environment.h"
#include "wexelxi/files.h"
#include "wexelxi/paths.h"
#include "wexelxi/time.h"

using namespace wexelxi;

namespace {

uint32_t FindTempDirectory(uint32_t size, char *buffer)
{
    for (const char *variable : {"TMP", "TEMP"}) {
        if (const uint32_t length = GetEnvironmentVariable(variable, buffer, size))
            return length;
    }
    return GetCurrentDirectory(size, buffer);
}

// Puts the first free number behind a stem that stands at name. A name that could not be asked for,
// since there was no memory, is not known to be free.
uint32_t NumberName(char *name, size_t stem)
{
    const uint32_t first = GetTickCount();
    for (uint32_t i = 0; i <= 0xFFFF; i++) {
        const auto tried = static_cast<uint16_t>(first + i);
        sprintf(name + stem, "%04x.tmp", static_cast<unsigned>(tried));
        if (!DoesFileExist(name))
            return GetLastError() == ERROR_NOT_ENOUGH_MEMORY ? 0 : tried;
    }
    return FailWith(ERROR_FILE_EXISTS, 0u);
}

} // namespace

uint32_t GetTempPath(uint32_t size, char *buffer)
{
    LockScope lock;
    uint32_t length = FindTempDirectory(size, buffer);
    // A length that did not fit is above the size, and nothing is at the buffer then.
    if (length != 0 && buffer && length + 1 < size && buffer[length - 1] != '/') {
        buffer[length++] = '/';
        buffer[length] = '\0';
    }
    return length;
}

uint32_t GetTempFileName(const char *directory, const char *prefix, uint32_t, char *name)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    if (!directory || !prefix || !name)
        return 0;
    return OrNoMemory(0u, [&] {
        // Both may lie where the name goes.
        const std::string stem = std::string(directory) + '/' + prefix;
        memcpy(name, stem.data(), stem.size());
        return NumberName(name, stem.size());
    });
}
