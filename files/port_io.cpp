// The road of a port, apart from that of files: blocking, unbuffered, and told by its port type.
#include "files/port_io.h"

#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include "core/last_error.h"
#include "files/handle.h"
#include "wexelxi/comm.h"
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

uint32_t TimeoutOf(HANDLE line)
{
    COMMTIMEOUTS timeouts = {};
    GetCommTimeouts(line, &timeouts);
    return timeouts.VTimeTenths;
}

// A line without its timeout for the length of a read, so that the read does not wait.
class [[nodiscard]] TimeoutCleared {
public:
    explicit TimeoutCleared(HANDLE line) : line_(line), tenths_(TimeoutOf(line)) { Store(0); }
    ~TimeoutCleared() { Store(tenths_); }
    TimeoutCleared(const TimeoutCleared &) = delete;
    TimeoutCleared &operator=(const TimeoutCleared &) = delete;

private:
    void Store(uint32_t tenths) const
    {
        const COMMTIMEOUTS timeouts = {{}, tenths};
        if (tenths_ != 0)
            SetCommTimeouts(line_, &timeouts);
    }

    const HANDLE line_;
    const uint32_t tenths_;
};

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

uint32_t ReadLineDevice(HANDLE line, void *buffer, uint32_t count)
{
    const TimeoutCleared cleared(line);
    SetLastError(ERROR_SUCCESS);
    const ssize_t received = read(fileno(HandleToStream(line)), buffer, count);
    return received < 0 ? 0 : static_cast<uint32_t>(received);
}

uint32_t WriteLineDevice(FILE *stream, const void *buffer, uint32_t count)
{
    return static_cast<uint32_t>(WriteAll(fileno(stream), buffer, count));
}

void DrainLineDevice(FILE *stream)
{
    const time_t limit = DrainSeconds();
    const time_t start = time(nullptr);
    while (tcdrain(fileno(stream)) != 0 && time(nullptr) - start < limit) {
    }
}

} // namespace wexelxi
