// The texts of ports as pure functions: what a name says, and what an entry of the profile says.
#pragma once

#include <string>
#include <string_view>

#include "wexelxi/types.h"

namespace wexelxi {

struct PortName {
    bool isSerial;   // COM, not LPT or EPT
    uint32_t number; // 1 to 9; 0 if the name is no port
};

// What port a name means.
PortName ParsePortName(std::string_view name);

// The device of a port that the profile has no entry for.
std::string DefaultDevice(PortName port);

// The port type that a lower-cased text names, 0 if none.
uint32_t PortTypeFromText(std::string_view text);

} // namespace wexelxi
