// Commands, and what they write.
#include "core/last_error.h"
#include "core/lock.h"
#include "core/no_memory.h"
#include "modules/capture_file.h"
#include "modules/shell_text.h"
#include "modules/spawn.h"
#include "wexelxi/processes.h"

using namespace wexelxi;

namespace {

constexpr uint32_t kNoStatus = 0xFFFFFFFF;

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
