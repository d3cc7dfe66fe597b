// A directory and a path, a line each: a normal form is absolute, fits, and is its own normal form;
// the parts of a split make up the path.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "files/path_text.h"

using namespace wexelxi;

static void Require(bool holds)
{
    if (!holds)
        abort();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string_view text(reinterpret_cast<const char *>(data), size);
    const size_t line = text.find('\n');
    const std::string_view directory = line == text.npos ? "" : text.substr(0, line);
    const std::string_view path = line == text.npos ? text : text.substr(line + 1);
    if (const std::optional<std::string> form = NormalPath(path, directory)) {
        Require(form->starts_with('/') && form->size() <= kLongestPath);
        Require(NormalPath("/x/.." + *form, "")->size() <= form->size());
        if (path.starts_with('/'))
            Require(NormalPath(*form, directory) == form && form->find("//") == form->npos);
    }
    for (const bool wantsDrive : {false, true}) {
        for (const bool wantsDirectory : {false, true}) {
            const PathParts parts = SplitPath(path, wantsDrive, wantsDirectory);
            Require(std::string(parts.drive)
                        .append(parts.directory)
                        .append(parts.name)
                        .append(parts.extension) == path);
        }
    }
    return 0;
}
