// DoesFileExist: a search and its end, but for names that the platform can tell of at once.
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <string_view>
#include <sys/stat.h>

#include "core/last_error.h"
#include "core/lock.h"
#include "core/owners.h"
#include "files/wildcard.h"
#include "wexelxi/files.h"
#include "wexelxi/find.h"

using namespace wexelxi;

namespace {

// Whether the folder of a name can be listed, as a search of it does.
bool IsFolderListable(std::string_view name)
{
    char folder[4096] = ".";
    if (const size_t slash = name.rfind('/'); slash != name.npos)
        folder[name.copy(folder, slash == 0 ? 1 : slash)] = '\0';
    return bool(Descriptor(open(folder, O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC)));
}

// What a search for a plain name with exact case would find, where one question to the platform
// tells: absent means absent however it is looked for, and what is neither a folder nor a link is
// found in a folder that can be listed.
std::optional<bool> AnswerAtOnce(const char *name)
{
    if (!name || gFileMode != 0 || !IsPlainName(name))
        return std::nullopt;
    struct stat status;
    if (lstat(name, &status) != 0)
        return errno == ENOENT ? std::optional(false) : std::nullopt;
    const char *slash = strrchr(name, '/');
    const char *leaf = slash ? slash + 1 : name;
    if (S_ISDIR(status.st_mode) || S_ISLNK(status.st_mode) || leaf[0] == '.' ||
        !IsFolderListable(name))
        return std::nullopt;
    return true;
}

} // namespace

BOOL DoesFileExist(const char *name)
{
    LockScope lock;
    if (const std::optional<bool> answer = AnswerAtOnce(name)) {
        SetLastError(*answer ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND);
        return *answer;
    }
    WIN32_FIND_DATA data;
    HANDLE find = FindFirstFile(name, &data);
    return find == INVALID_HANDLE_VALUE ? FALSE : FindClose(find);
}
