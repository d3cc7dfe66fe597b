// The offset of the zone in force.
#pragma once

#include <cstdint>
#include <ctime>

namespace wexelxi {

// Seconds east of UTC at a moment, of which local time is `local`.
int32_t SecondsEast(time_t now, const tm &local);

} // namespace wexelxi
