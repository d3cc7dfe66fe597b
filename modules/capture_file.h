// The files that commands write for the library. Their names can be foreseen and the folder may be
// shared, so each is made here before the command starts: what stands at its name already, such as
// a link to another file, is not written to.
#pragma once

#include <string>

#include "core/owners.h"

namespace wexelxi {

// Makes a new, empty file. None with errno if something stands there or it cannot be made.
Descriptor MakeCommandFile(const std::string &path);

// What a captured command writes: a new file in the folder of the configuration file, which goes
// with this object unless it is kept.
class CaptureFile {
public:
    CaptureFile(); // may throw std::bad_alloc
    ~CaptureFile();
    CaptureFile(const CaptureFile &) = delete;
    CaptureFile &operator=(const CaptureFile &) = delete;

    // Where the command's output goes: nowhere if other things stand at the names that were tried,
    // or no descriptor is left.
    const char *path() const { return path_.empty() ? "/dev/null" : path_.c_str(); }

    // What was written as a guarded block with a NUL behind it, null if there is nothing. Last
    // error: 0 or that of the failure.
    char *Read();
    void Keep() { isKept_ = true; }

private:
    std::string path_;
    Descriptor file_;
    bool isKept_ = false;
};

} // namespace wexelxi
