// The destinations that CUPS lists, asked for anew each time and released with the scope.
#pragma once

#include <cups/cups.h>
#include <span>
#include <string>

#include "print/pipe_signal.h"
#include "print/printer_name.h"

namespace wexelxi {

class Destinations {
public:
    Destinations()
    {
        const PipeSignalScope scope;
        count_ = cupsGetDests(&list_);
    }
    ~Destinations() { cupsFreeDests(count_, list_); }
    Destinations(const Destinations &) = delete;
    Destinations &operator=(const Destinations &) = delete;

    std::span<const cups_dest_t> all() const { return {list_, static_cast<size_t>(count_)}; }
    // Null if there is none of that name.
    const cups_dest_t *find(const PrinterName &name) const
    {
        const std::string printer(name.printer);
        const std::string instance(name.instance.value_or(""));
        return cupsGetDest(printer.c_str(), name.instance ? instance.c_str() : nullptr, count_,
                           list_);
    }

private:
    cups_dest_t *list_ = nullptr;
    int count_ = 0;
};

inline PrinterName NameOf(const cups_dest_t &destination)
{
    return NameFromParts(destination.name, destination.instance);
}

} // namespace wexelxi
