// How modules are named and found by name: pure functions of the names alone.
#pragma once

#include <cstddef>
#include <string_view>

namespace wexelxi {

// What stands behind the stem of every module's name.
constexpr std::string_view kModuleSuffix = ".so";

// The name cut at its last dot, if that is not its first character.
std::string_view ModuleStem(std::string_view name);

// A whole path in the parts that it is made of: folder, '/', stem and suffix, or where there is no
// folder, stem and suffix.
struct ModulePath {
    std::string_view folder;
    bool hasFolder;
    std::string_view stem;
};

// What a module is looked up under that is loaded by that name. The folder is that of bare names.
ModulePath PathOfModule(std::string_view name, std::string_view folder);

// The same for a name that is not normalised yet: a dot of the folder counts where it has none.
ModulePath PathOfAnyName(std::string_view name, std::string_view folder);

// Whether the entry of that name is the one that a path means.
bool ModuleNameMatches(std::string_view entryName, const ModulePath &path);

// Equal for an entry's name and every path that may mean it.
size_t ModuleNameHash(std::string_view entryName);
size_t ModuleNameHash(const ModulePath &path);

} // namespace wexelxi
