// How modules are named and found by name.
#include "modules/module_names.h"

namespace wexelxi {

std::string NormalisedModuleName(std::string_view name)
{
    const size_t dot = name.rfind('.');
    if (dot != std::string_view::npos && dot > 0)
        name = name.substr(0, dot);
    return std::string(name) + ".so";
}

std::string_view ModuleBaseName(std::string_view path)
{
    const size_t slash = path.rfind('/');
    if (slash == std::string_view::npos || slash == 0)
        return {};
    return path.substr(slash + 1);
}

bool ModuleNameMatches(std::string_view entryName, std::string_view path)
{
    if (entryName.starts_with('/'))
        return entryName == path;
    const std::string_view base = ModuleBaseName(path);
    return !base.empty() && entryName == base;
}

} // namespace wexelxi
