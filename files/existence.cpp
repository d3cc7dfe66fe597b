// DoesFileExist: a search and its end, but for names that the platform can tell of at once.
#include <cerrno>
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

// What a search for a plain name with exact case would find, where one question to the platform
// tells: absent means absent however it is looked for, and what is there is found in a folder that
// can be listed, unless a dot hides it.
std::optional<bool> AnswerAtOnce(const char *name)
{
    if (!name || gFileMode != 0 || !IsPlainName(name))
        return std::nullopt;
    struct stat status;
    if (lstat(name, &status) != 0)
        return errno == ENOENT ? std::optional(false) : std::nullopt;
    char folder[4096] = "./";
    std::string_view leaf = name;
    if (const size_t slash = leaf.rfind('/'); slash != leaf.npos) {
        folder[leaf.copy(folder, slash + 1)] = '\0';
        leaf.remove_prefix(slash + 1);
    }
    if (leaf.starts_with('.') || !Descriptor(open(folder, O_RDONLY | O_CLOEXEC)))
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
