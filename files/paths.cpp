// The path functions around the text ones, and the current directory, which belongs to the process.
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <unistd.h>

#include "core/last_error.h"
#include "core/lock.h"
#include "core/no_memory.h"
#include "files/path_text.h"
#include "wexelxi/files.h"
#include "wexelxi/paths.h"
#include "wexelxi/text.h"

using namespace wexelxi;

namespace {

constexpr uint32_t kPathBytes = kLongestPath + 1;

void StorePart(char *buffer, std::string_view part)
{
    if (!buffer)
        return;
    part.copy(buffer, part.size());
    buffer[part.size()] = '\0';
}

} // namespace

uint32_t GetCurrentDirectory(uint32_t size, char *buffer)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    char directory[kPathBytes];
    if (!getcwd(directory, sizeof directory))
        return FailWith(ERROR_CURRENT_DIRECTORY, 0u);
    const auto length = static_cast<uint32_t>(strlen(directory));
    if (!buffer || length + 1 > size)
        return length + 1;
    memcpy(buffer, directory, length + 1);
    return length;
}

BOOL SetCurrentDirectory(const char *path)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    return chdir(path) == 0 ? BOOL{TRUE} : FailWithErrno();
}

BOOL PathIsDirectory(const char *path)
{
    return (GetFileAttributes(path) & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

uint32_t GetFilePath(const char *path, uint32_t size, char *output)
{
    LockScope lock;
    char directory[kPathBytes] = "";
    errno = 0;
    const bool tooLong = !GetCurrentDirectory(kPathBytes, directory) && errno == ERANGE;
    if (!path || !output || (tooLong && *path != '/'))
        return 0;
    return OrNoMemory(0u, [&]() -> uint32_t {
        const std::optional<std::string> form = NormalPath(path, directory);
        if (!form || size == 0)
            return 0;
        lstrcpyn(output, form->c_str(), static_cast<int32_t>(std::min(size, kPathBytes)));
        return lstrlen(output);
    });
}

uint32_t GetFullPathName(const char *path, uint32_t size, char *output, char **filePart)
{
    LockScope lock;
    const uint32_t length = GetFilePath(path, size, output);
    if (filePart && length != 0)
        *filePart = strrchr(output, '/') + 1;
    return length;
}

void splitpath(const char *path, char *drive, char *directory, char *name, char *extension)
{
    LockScope lock;
    const PathParts parts = SplitPath(path, drive != nullptr, directory != nullptr);
    StorePart(drive, parts.drive);
    StorePart(directory, parts.directory);
    StorePart(name, parts.name);
    if (name)
        StorePart(extension, parts.extension);
}
