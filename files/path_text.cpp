// The lexical normaliser and the splitter. A relative path starts behind a second slash; it counts
// against the limit and goes at the end.
#include "files/path_text.h"

#include <algorithm>

namespace wexelxi {
namespace {

void SkipSlashes(std::string_view &path)
{
    path.remove_prefix(std::min(path.find_first_not_of('/'), path.size()));
}

// The next component, taken off the path with all slashes behind it.
std::string_view TakeComponent(std::string_view &path)
{
    const std::string_view component = path.substr(0, path.find('/'));
    path.remove_prefix(component.size());
    SkipSlashes(path);
    return component;
}

void RemoveLastComponent(std::string &form)
{
    const size_t slash = form.rfind('/');
    form.resize(slash == std::string::npos ? 0 : slash);
}

} // namespace

std::optional<std::string> NormalPath(std::string_view path, std::string_view directory)
{
    std::string form;
    const bool relative = !path.starts_with('/');
    if (relative && directory.size() > kLongestWorkingDirectory)
        return std::nullopt;
    if (relative)
        form.append("/").append(directory);
    SkipSlashes(path);
    if (path.empty())
        form += '/';
    while (!path.empty()) {
        const std::string_view component = TakeComponent(path);
        if (component == ".")
            continue;
        if (component == "..") {
            RemoveLastComponent(form);
            continue;
        }
        if (form.size() + 1 + component.size() > kLongestPath)
            return std::nullopt;
        form.append("/").append(component);
    }
    // Any run of slashes in front becomes one.
    form.erase(0, std::min(form.find_first_not_of('/'), form.size()));
    return form.insert(0, 1, '/');
}

PathParts SplitPath(std::string_view path, bool wantsDrive, bool wantsDirectory)
{
    constexpr size_t kNone = std::string_view::npos;
    PathParts parts;
    const size_t slash = path.rfind('/');
    const size_t colon = path.find(':');
    size_t cursor = 0;
    if (wantsDrive && colon != kNone && (slash == kNone || colon < slash)) {
        cursor = colon + 1;
        parts.drive = path.substr(0, cursor);
    }
    if (wantsDirectory && slash != kNone) {
        parts.directory = path.substr(cursor, slash + 1 - cursor);
        cursor = slash + 1;
    }
    size_t dot = path.rfind('.');
    if (dot == kNone || dot < cursor || (slash != kNone && dot < slash))
        dot = path.size();
    parts.name = path.substr(cursor, dot - cursor);
    parts.extension = path.substr(dot);
    return parts;
}

} // namespace wexelxi
