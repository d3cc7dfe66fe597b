// Opening a PPD. ppdOpen reads from the descriptor under a stream and closes that descriptor; from
// then on its number is anyone's, and closing the stream would close whatever another thread has
// opened under it. So ppdOpen gets a second stream over a duplicate with a high number, and that
// stream is closed only once the number is known to be ours again.
#include "print/ppd_file.h"

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include "wexelxi/core.h"
#include "wexelxi/printers.h"

namespace wexelxi {

namespace {

// A number that open, which gives the lowest free one, does not reach soon.
int HighDescriptorNumber()
{
    constexpr rlim_t kHighest = 1024; // a higher number makes the kernel's table grow
    constexpr rlim_t kRoom = 64;
    rlimit limit = {};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur <= kRoom)
        return 0;
    return static_cast<int>(std::min(limit.rlim_cur, kHighest) - kRoom);
}

// A duplicate with the lowest free number from `lowest` up, or with any, or -1. Never closes a
// file that has such a number.
int Duplicate(int descriptor, int lowest)
{
    const int duplicate = fcntl(descriptor, F_DUPFD_CLOEXEC, lowest);
    return duplicate >= 0 ? duplicate : fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
}

Stream DuplicateStream(FILE *stream)
{
    const int descriptor = Duplicate(fileno(stream), HighDescriptorNumber());
    if (descriptor < 0)
        return nullptr;
    Stream duplicate(fdopen(descriptor, "r"));
    if (!duplicate)
        close(descriptor);
    return duplicate;
}

// Ends a stream whose descriptor is closed. `other` serves to take the number again; if another
// file stands there by now, the stream's memory is left, for to close it would close that file.
void EndStreamWithoutDescriptor(Stream stream, FILE *other)
{
    const int number = fileno(stream.get());
    const int taken = fcntl(fileno(other), F_DUPFD_CLOEXEC, number);
    if (taken == number)
        return; // the stream's end closes it
    if (taken >= 0)
        close(taken);
    static_cast<void>(stream.release());
}

} // namespace

uint32_t OpenPPDFile(const char *path, PPDFile &file)
{
    Stream stream(fopen(path, "re"));
    if (!stream)
        return ERROR_FILE_NOT_FOUND;
    Stream lent = DuplicateStream(stream.get());
    if (!lent)
        return ERROR_FILE_NOT_FOUND;
    ParsedPPD ppd(ppdOpen(lent.get()));
    EndStreamWithoutDescriptor(std::move(lent), stream.get());
    if (!ppd)
        return ERROR_INVALID_DATA;
    file = {std::move(stream), std::move(ppd)};
    return ERROR_SUCCESS;
}

} // namespace wexelxi
