// The one lock beside the global one. The zone's questions take no global lock, and the platform
// answers them from "TZ" where it stands.
#pragma once

#include <mutex>

namespace wexelxi {

// Held while the process's environment is read or written. Under it nothing is called but the
// platform, and no other lock is taken.
extern std::mutex gEnvironmentLock;

} // namespace wexelxi
