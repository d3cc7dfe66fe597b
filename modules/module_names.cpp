// How modules are named and found by name.
#include "modules/module_names.h"

#include <functional>
#include <optional>

namespace wexelxi {

namespace {

std::string_view CutSuffix(std::string_view name)
{
    return name.substr(0, name.size() - kModuleSuffix.size());
}

std::string_view BehindLastSlash(std::string_view text)
{
    return text.substr(text.rfind('/') + 1); // all of it if there is none
}

// The base name without its suffix; none if the path has no '/' but its first character.
std::optional<std::string_view> BaseStem(const ModulePath &path)
{
    const size_t slash = path.stem.rfind('/');
    const bool isInFolder = path.hasFolder && (!path.folder.empty() || slash != path.stem.npos);
    if (isInFolder || (slash != path.stem.npos && slash > 0))
        return BehindLastSlash(path.stem);
    return {};
}

} // namespace

std::string_view ModuleStem(std::string_view name)
{
    const size_t dot = name.rfind('.');
    return dot != name.npos && dot > 0 ? name.substr(0, dot) : name;
}

ModulePath PathOfModule(std::string_view name, std::string_view folder)
{
    if (name.starts_with('/'))
        return {{}, false, ModuleStem(name)};
    return {folder, true, ModuleStem(name)};
}

ModulePath PathOfAnyName(std::string_view name, std::string_view folder)
{
    if (name.starts_with('/'))
        return {{}, false, ModuleStem(name)};
    if (const size_t dot = name.rfind('.'); dot != name.npos)
        return {folder, true, name.substr(0, dot)};
    const std::string_view cut = ModuleStem(folder);
    if (cut.size() < folder.size())
        return {{}, false, cut};
    return {folder, true, name};
}

bool ModuleNameMatches(std::string_view entryName, const ModulePath &path)
{
    if (!entryName.ends_with(kModuleSuffix))
        return false;
    const std::string_view name = CutSuffix(entryName);
    if (!entryName.starts_with('/'))
        return name == BaseStem(path);
    if (!path.hasFolder)
        return name == path.stem;
    const size_t slash = path.folder.size();
    return name.size() == slash + 1 + path.stem.size() && name.starts_with(path.folder) &&
           name[slash] == '/' && name.ends_with(path.stem);
}

size_t ModuleNameHash(std::string_view entryName)
{
    const std::string_view name =
        entryName.ends_with(kModuleSuffix) ? CutSuffix(entryName) : entryName;
    return std::hash<std::string_view>{}(BehindLastSlash(name));
}

size_t ModuleNameHash(const ModulePath &path)
{
    return std::hash<std::string_view>{}(BehindLastSlash(path.stem));
}

} // namespace wexelxi
