// Path arithmetic on text alone.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace wexelxi {

constexpr size_t kLongestPath = 4095;             // without the NUL
constexpr size_t kLongestWorkingDirectory = 4092; // what a relative path may start from

// The normal form of a path, which is relative to a directory unless it begins with '/'. Nothing if
// the form does not fit kLongestPath on the way.
std::optional<std::string> NormalPath(std::string_view path, std::string_view directory);

// The parts of a path, all of them pieces of it.
struct PathParts {
    std::string_view drive, directory, name, extension;
};

// Cuts a path. A part that is not wanted stays in the part behind it.
PathParts SplitPath(std::string_view path, bool wantsDrive, bool wantsDirectory);

} // namespace wexelxi
