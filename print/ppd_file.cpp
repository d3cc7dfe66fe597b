#include "print/ppd_file.h"

#include <fcntl.h>

#include "wexelxi/core.h"
#include "wexelxi/printers.h"

namespace wexelxi {

uint32_t OpenPPDFile(const char *path, PPDFile &file)
{
    Stream stream(fopen(path, "re"));
    if (!stream)
        return ERROR_FILE_NOT_FOUND;
    // ppdOpen would close the descriptor under the stream; ppdOpenFd closes the duplicate.
    ParsedPPD ppd(ppdOpenFd(fcntl(fileno(stream.get()), F_DUPFD_CLOEXEC, 0)));
    if (!ppd)
        return ERROR_INVALID_DATA;
    file = {std::move(stream), std::move(ppd)};
    return ERROR_SUCCESS;
}

} // namespace wexelxi
