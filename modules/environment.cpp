// Environment variables, under both locks, so that the library's own uses of getenv are ordered.
#include "modules/environment.h"

#include <cstdlib>
#include <cstring>

#include "core/last_error.h"
#include "core/lock.h"
#include "wexelxi/environment.h"

using namespace wexelxi;

constinit std::mutex wexelxi::gEnvironmentLock;

uint32_t GetEnvironmentVariable(const char *name, char *destination, uint32_t size)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    if (!name)
        return 0;
    const std::scoped_lock environment(gEnvironmentLock);
    const char *value = getenv(name);
    if (!value)
        return FailWith(ERROR_ENVVAR_NOT_FOUND, 0u);
    const size_t length = strlen(value);
    if (!destination || length + 1 > size)
        return static_cast<uint32_t>(length + 1);
    memcpy(destination, value, length + 1);
    return static_cast<uint32_t>(length);
}

int32_t SetEnvironmentVariable(const char *name, const char *value)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    if (!name)
        return 0;
    const std::scoped_lock environment(gEnvironmentLock);
    const int failed = value ? setenv(name, value, 1) : unsetenv(name);
    return failed ? 0 : 1;
}
