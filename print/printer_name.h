// A printer's name: that of the CUPS destination and, behind a slash, that of the instance.
#pragma once

#include <cstring>
#include <optional>
#include <string_view>

namespace wexelxi {

struct PrinterName {
    std::string_view printer;
    std::optional<std::string_view> instance; // the empty one is not the same as none

    size_t length() const { return printer.size() + (instance ? 1 + instance->size() : 0); }

    // Writes the whole name and a NUL; gives the place behind it.
    char *WriteTo(char *at) const
    {
        at = static_cast<char *>(mempcpy(at, printer.data(), printer.size()));
        if (instance) {
            *at++ = '/';
            at = static_cast<char *>(mempcpy(at, instance->data(), instance->size()));
        }
        *at++ = '\0';
        return at;
    }
};

// The first slash divides the two.
inline PrinterName SplitPrinterName(std::string_view name)
{
    const size_t slash = name.find('/');
    if (slash == name.npos)
        return {name, std::nullopt};
    return {name.substr(0, slash), name.substr(slash + 1)};
}

// The same for two texts of which the second may be null.
inline PrinterName NameFromParts(const char *printer, const char *instance)
{
    if (!instance)
        return {printer, std::nullopt};
    return {printer, instance};
}

} // namespace wexelxi
