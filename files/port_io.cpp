// The road of a port, apart from that of files: blocking, unbuffered, and told by its port type.
#include "files/port_io.h"

#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include "core/last_error.h"
#include "wexelxi/core.h"
#include "wexelxi/profile.h"

namespace wexelxi {
namespace {

time_t DrainSeconds()
{
    constexpr time_t kDefaultSeconds = 120;
    char text[5] = "";
    GetProfileString("Ports", "Delay", "", text, sizeof text);
    const time_t seconds = strtol(text, nullptr, 10);
    return seconds == 0 ? kDefaultSeconds : seconds;
}

} // namespace

Stream OpenPort(const char *path)
{
    Descriptor descriptor(open(path, O_RDWR | O_NOCTTY | O_SYNC | O_CLOEXEC));
    if (!descriptor)
        return FailWith<Stream>(ERROR_GEN_FAILURE, nullptr);
    Stream stream(fdopen(descriptor.get(), "r+"));
    if (stream)
        descriptor.release();
    else
        SetUnixError();
    return stream;
}

uint32_t ReadLineDevice(FILE *stream, void *buffer, uint32_t count)
{
    const ssize_t received = read(fileno(stream), buffer, count);
    return received < 0 ? 0 : static_cast<uint32_t>(received);
}

uint32_t WriteLineDevice(FILE *stream, const void *buffer, uint32_t count)
{
    // A count of 0 makes its one write as well.
    if (count == 0) {
        [[maybe_unused]] const ssize_t nothing = write(fileno(stream), buffer, 0);
    }
    return static_cast<uint32_t>(WriteAll(fileno(stream), buffer, count));
}

void DrainLineDevice(FILE *stream)
{
    const time_t limit = DrainSeconds();
    const time_t start = time(nullptr);
    while (tcdrain(fileno(stream)) != 0 && time(nullptr) - start < limit) {
    }
}

LineTimeoutCleared::LineTimeoutCleared(HANDLE line) : line_(line)
{
    if (!line_ || !GetCommTimeouts(line_, &timeouts_) || timeouts_.VTimeTenths == 0)
        return;
    tenths_ = timeouts_.VTimeTenths;
    timeouts_.VTimeTenths = 0;
    SetCommTimeouts(line_, &timeouts_);
}

LineTimeoutCleared::~LineTimeoutCleared()
{
    if (tenths_ == 0)
        return;
    timeouts_.VTimeTenths = tenths_;
    SetCommTimeouts(line_, &timeouts_);
}

} // namespace wexelxi
