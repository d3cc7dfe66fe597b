// How modules are named and found by name: pure functions of the names alone.
#pragma once

#include <string>
#include <string_view>

namespace wexelxi {

// The name cut at its last dot, if that is not its first character, with ".so" behind it.
std::string NormalisedModuleName(std::string_view name);

// The part behind the last '/', if that is not the first character; else empty. A normalised path
// never has an empty base name, so empty means that there is none.
std::string_view ModuleBaseName(std::string_view path);

// Whether the entry of that name is the one that a whole path means. The path is normalised.
bool ModuleNameMatches(std::string_view entryName, std::string_view path);

} // namespace wexelxi
