#include "tools/trace/line.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <sys/uio.h>
#include <unistd.h>

#include "tools/trace/settings.h"

namespace trace {

void Line::Add(std::string_view text)
{
    const size_t count = std::min(text.size(), sizeof bytes_ - used_);
    memcpy(bytes_ + used_, text.data(), count);
    used_ += count;
}

void Line::Format(const char *format, ...)
{
    char text[512];
    va_list arguments;
    va_start(arguments, format);
    const int length = vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    Add({text, std::min(static_cast<size_t>(length), sizeof text - 1)});
}

void Line::Quote(std::string_view bytes, bool isCut)
{
    Add("\"");
    for (const char c : bytes) {
        const auto code = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
            Format("\\%c", c);
        else if (c == '\n' || c == '\r' || c == '\t')
            Add(c == '\n' ? "\\n" : c == '\r' ? "\\r" : "\\t");
        else if (code < 0x20 || code >= 0x7F)
            Format(gSettings.json ? "\\u%04x" : "\\x%02x", code);
        else
            Add({&c, 1});
    }
    Add(!isCut ? "\"" : gSettings.json ? "...\"" : "\"...");
}

size_t ReadMemory(uintptr_t from, void *to, size_t bytes)
{
    // In two pieces, so that what stands in front of a page that is not there can be had.
    const auto page = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
    const size_t first = std::min<size_t>(bytes, page - from % page);
    iovec local = {to, bytes};
    iovec remote[2] = {{reinterpret_cast<void *>(from), first},
                       {reinterpret_cast<void *>(from + first), bytes - first}};
    const ssize_t count = process_vm_readv(getpid(), &local, 1, remote, 2, 0);
    return count > 0 ? static_cast<size_t>(count) : 0;
}

} // namespace trace
