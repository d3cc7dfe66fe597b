// A printer's name: that of the CUPS destination and, behind a slash, that of the instance.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace wexelxi {

struct PrinterName {
    std::string_view printer;
    std::optional<std::string_view> instance; // the empty one is not the same as none

    std::string text() const
    {
        std::string text(printer);
        if (instance)
            text.append("/").append(*instance);
        return text;
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
