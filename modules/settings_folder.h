// Where the commands of the library keep their files.
#pragma once

#include <string>

namespace wexelxi {

// The folder of the configuration file, without a '/' behind it.
std::string SettingsFolder();

} // namespace wexelxi
