// What a captured command writes: a file in the folder of the configuration file.
#pragma once

#include <string>

namespace wexelxi {

// A name at which nothing stands, not even a link that leads nowhere. The shell makes the file, for
// to make it here would have some file systems write it to the disk at once; it goes with this
// object unless it is kept.
class CaptureFile {
public:
    CaptureFile(); // may throw std::bad_alloc
    ~CaptureFile();
    CaptureFile(const CaptureFile &) = delete;
    CaptureFile &operator=(const CaptureFile &) = delete;

    // Where the command's output goes: nowhere if no name is free.
    const char *path() const { return path_.empty() ? "/dev/null" : path_.c_str(); }

    // What was written as a guarded block with a NUL behind it, null if there is nothing. Last
    // error: 0 or that of the failure.
    char *Read();
    void Keep() { isKept_ = true; }

private:
    std::string path_;
    bool isKept_ = false;
};

} // namespace wexelxi
