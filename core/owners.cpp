// Reading and writing to the end, whatever signals and short counts come between.
#include "core/owners.h"

namespace wexelxi {

ssize_t ReadAll(int descriptor, void *buffer, size_t count)
{
    auto *bytes = static_cast<char *>(buffer);
    size_t total = 0;
    while (total != count) {
        const ssize_t got = TEMP_FAILURE_RETRY(read(descriptor, bytes + total, count - total));
        if (got < 0 && total == 0)
            return -1;
        if (got <= 0)
            break;
        total += static_cast<size_t>(got);
    }
    return static_cast<ssize_t>(total);
}

size_t WriteAll(int descriptor, const void *buffer, size_t count)
{
    const auto *bytes = static_cast<const char *>(buffer);
    size_t total = 0;
    do {
        const ssize_t put = TEMP_FAILURE_RETRY(write(descriptor, bytes + total, count - total));
        if (put <= 0)
            break;
        total += static_cast<size_t>(put);
    } while (total != count);
    return total;
}

} // namespace wexelxi
