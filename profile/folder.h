// The configuration folder, and the names that mean the file in it. The caller holds the lock.
#pragma once

#include <string_view>

namespace wexelxi {

// The path that a profile file name means: the configuration file's, or the name itself. The first
// call with no folder set derives the folder from the host's path.
const char *ResolveIniName(const char *name);

// The folder that the configuration file lies in, empty for "/"; derived at need as above. It is
// good until the folder changes.
std::string_view ConfigurationFolder();

} // namespace wexelxi
