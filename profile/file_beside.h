// The file that is written beside another one to take its place.
#pragma once

#include <string_view>
#include <sys/stat.h>

#include "core/owners.h"

namespace wexelxi {

// Tries to lock an open file against other processes' changes; a platform that has no such locks
// grants it. These locks are not those of LockFile.
bool TryLockFile(int descriptor);

inline bool IsSameInode(const struct stat &first, const struct stat &second)
{
    return first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

class FileBeside {
public:
    enum Outcome {
        kMade,
        kBusy,    // another process is at work on it
        kRefused, // this folder takes no such file, or not now
    };

    FileBeside() = default;
    FileBeside(const FileBeside &) = delete;
    FileBeside &operator=(const FileBeside &) = delete;
    ~FileBeside() { Drop(); }

    // Makes the file, empty and locked. One that a killed process left is taken away first.
    Outcome Make(const char *target, mode_t mode);

    // Gives it mode, owner and group of a file. False if it cannot have them, or if one of the two
    // has access lists or attributes, which are not carried over.
    bool Resemble(int descriptor, const struct stat &status);

    // Writes the text and puts the file in the target's place. False, with errno, if the platform
    // refuses either; the target is as it was.
    bool Become(const char *target, std::string_view text);

    void Drop();

private:
    Outcome Try(mode_t mode);

    MallocBlock<char> name_;
    Descriptor descriptor_;
    bool isMade_ = false;
};

} // namespace wexelxi
