// Whoever holds the lock on the file that the name leads to may write, rename or remove it; so a
// file of that name that can be locked, and is not new, is one that a killed process left.
#include "profile/file_beside.h"

#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/xattr.h>

namespace wexelxi {
namespace {

constexpr std::string_view kSuffix = ".wexelxi-new";

// The suffix makes the name: nobody else's file has it.
MallocBlock<char> NameBeside(std::string_view target)
{
    MallocBlock<char> name(static_cast<char *>(malloc(target.size() + kSuffix.size() + 1)));
    if (name) {
        target.copy(name.get(), target.size());
        strcpy(name.get() + target.size(), kSuffix.data());
    }
    return name;
}

// Whether a file has access lists or attributes of the user's, or may have them.
bool HasAttributes(int descriptor)
{
    char names[1024];
    const ssize_t size = flistxattr(descriptor, names, sizeof names);
    for (const char *name = names; name < names + size; name += strlen(name) + 1) {
        if (strncmp(name, "user.", 5) == 0 || strncmp(name, "system.", 7) == 0)
            return true;
    }
    return size < 0 && errno != ENOTSUP;
}

} // namespace

bool TryLockFile(int descriptor)
{
    return flock(descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

FileBeside::Outcome FileBeside::Try(mode_t mode)
{
    constexpr int kFlags = O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    descriptor_ = Descriptor(open(name_.get(), kFlags | O_CREAT | O_EXCL, mode));
    const bool isNew = static_cast<bool>(descriptor_);
    if (!isNew && errno != EEXIST)
        return kRefused;
    if (!isNew)
        descriptor_ = Descriptor(open(name_.get(), kFlags));
    if (!descriptor_)
        return errno == ENOENT ? kBusy : kRefused;
    struct stat opened;
    struct stat named;
    if (!TryLockFile(descriptor_.get()) || fstat(descriptor_.get(), &opened) != 0 ||
        lstat(name_.get(), &named) != 0 || !IsSameInode(opened, named))
        return kBusy;
    isMade_ = isNew;
    if (isNew)
        return kMade;
    const bool isOurs =
        S_ISREG(opened.st_mode) && opened.st_nlink == 1 && opened.st_uid == geteuid();
    return isOurs && unlink(name_.get()) == 0 ? kBusy : kRefused;
}

FileBeside::Outcome FileBeside::Make(const char *target, mode_t mode)
{
    if (!name_)
        name_ = NameBeside(target);
    if (!name_)
        return kRefused;
    const Outcome outcome = Try(mode);
    return outcome == kBusy ? Try(mode) : outcome;
}

bool FileBeside::Resemble(int descriptor, const struct stat &status)
{
    const int own = descriptor_.get();
    return status.st_uid == geteuid() && fchown(own, static_cast<uid_t>(-1), status.st_gid) == 0 &&
           fchmod(own, status.st_mode) == 0 && !HasAttributes(descriptor) && !HasAttributes(own);
}

bool FileBeside::Become(const char *target, std::string_view text)
{
    if (WriteAll(descriptor_.get(), text.data(), text.size()) != text.size() ||
        rename(name_.get(), target) != 0)
        return false;
    isMade_ = false;
    return true;
}

void FileBeside::Drop()
{
    if (std::exchange(isMade_, false))
        unlink(name_.get());
    descriptor_ = Descriptor();
}

} // namespace wexelxi
