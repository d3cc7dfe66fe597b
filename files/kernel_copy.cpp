// The kernel's own copy, data range by data range. Nothing here is an error: where the kernel
// stops, the caller reads and writes on from there and meets the cause.
#include "files/kernel_copy.h"

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace wexelxi {
namespace {

struct Range {
    off_t start, end;
};

bool IsOrdinary(int descriptor, struct stat &status)
{
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

// The next run of data from a place on; an empty one at the size if only a hole is left. Nothing if
// the file system does not tell.
std::optional<Range> NextData(int source, off_t from, off_t size)
{
    const off_t start = lseek(source, from, SEEK_DATA);
    if (start < 0)
        return errno == ENXIO ? std::optional(Range{size, size}) : std::nullopt;
    const off_t end = lseek(source, start, SEEK_HOLE);
    return end < 0 ? std::nullopt : std::optional(Range{start, end});
}

// Copies one range to the same place; gives where that ended.
off_t CopyRange(int source, int target, Range range)
{
    off_t from = range.start;
    off_t to = range.start;
    while (from < range.end) {
        const auto rest = static_cast<size_t>(range.end - from);
        const ssize_t copied = copy_file_range(source, &from, target, &to, rest, 0);
        if (copied == 0 || (copied < 0 && errno != EINTR))
            break;
    }
    return from;
}

off_t CopyRanges(int source, int target, const struct stat &status)
{
    const off_t size = status.st_size;
    if (status.st_blocks >= size / 512)
        return CopyRange(source, target, {0, size});
    off_t at = 0;
    while (at < size) {
        const std::optional<Range> data = NextData(source, at, size);
        if (!data || (data->start == size && ftruncate(target, size) != 0))
            break;
        at = CopyRange(source, target, *data);
        if (at < data->end)
            break;
    }
    return at;
}

} // namespace

std::optional<off_t> CopyInKernel(int source, int target)
{
    struct stat from;
    struct stat to;
    if (!IsOrdinary(source, from) || !IsOrdinary(target, to))
        return std::nullopt;
    return CopyRanges(source, target, from);
}

} // namespace wexelxi
