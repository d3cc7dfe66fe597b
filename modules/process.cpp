// Commands, and what they write.
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>

#include "core/last_error.h"
#include "core/lock.h"
#include "core/no_memory.h"
#include "core/owners.h"
#include "modules/shell_text.h"
#include "modules/spawn.h"
#include "profile/folder.h"
#include "wexelxi/files.h"
#include "wexelxi/memory.h"
#include "wexelxi/processes.h"

using namespace wexelxi;

namespace {

constexpr uint32_t kNoStatus = 0xFFFFFFFF;

// A name at which nothing stands, not even a link that leads nowhere; "" if none is free.
std::string FreeName()
{
    const std::string folder(ConfigurationFolder());
    std::string name(folder.size() + 32, '\0');
    GetTempFileName(folder.c_str(), "wexec", 0, name.data());
    return GetLastError() == ERROR_FILE_NOT_FOUND ? name.c_str() : "";
}

// What a captured command writes: a file in the folder of the configuration file. The shell makes
// it, for to make it here would have some file systems write it to the disk at once; it goes with
// this object unless it is kept.
class CaptureFile {
public:
    CaptureFile() : path_(FreeName()) {}
    ~CaptureFile()
    {
        if (!path_.empty() && !isKept_)
            unlink(path_.c_str());
    }
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

char *CaptureFile::Read()
{
    if (path_.empty())
        return nullptr;
    SetLastError(ERROR_SUCCESS);
    const Descriptor file(open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    struct stat info;
    if (!file || fstat(file.get(), &info) != 0) {
        // What cannot be opened stays, but not for want of a descriptor or memory.
        isKept_ = !file && errno != EMFILE && errno != ENFILE && errno != ENOMEM;
        FailWithErrno();
        return nullptr;
    }
    if (info.st_size == 0)
        return nullptr;
    const auto bytes = static_cast<int32_t>(std::min<off_t>(info.st_size + 1, INT32_MAX));
    HGLOBAL block = GlobalAlloc(GLOBAL_ZEROFILL, bytes); // none is as large as INT32_MAX
    if (block)
        ReadAll(file.get(), block, static_cast<size_t>(info.st_size));
    return static_cast<char *>(block);
}

uint32_t Run(const std::string &line)
{
    return ResultOfCommand(RunShell(line.c_str()));
}

uint32_t RunCaptured(const char *command, char **output)
{
    if (output)
        *output = nullptr;
    CaptureFile file;
    const uint32_t result = Run(std::string(command) + " > " + ShellWord(file.path()));
    if (output)
        *output = file.Read();
    else
        file.Keep();
    return result;
}

} // namespace

uint32_t WinExec(const char *command, uint32_t show)
{
    return WinExecEx(command, show, 0, nullptr);
}

uint32_t WinExecEx(const char *command, uint32_t, uint32_t flags, char **output)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    return OrNoMemory(kNoStatus, [&] {
        if (!(flags & WINEXEC_WAIT))
            return Run(std::string(command) + '&');
        return flags & WINEXEC_CAPTURE ? RunCaptured(command, output) : Run(command);
    });
}
