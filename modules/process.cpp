// Commands, and what they write.
#include "core/last_error.h"
#include "core/lock.h"
#include "modules/shell_text.h"
#include "modules/spawn.h"
#include "profile/folder.h"
#include "wexelxi/files.h"
#include "wexelxi/memory.h"
#include "wexelxi/processes.h"

using namespace wexelxi;

namespace {

// A free name in the folder of the configuration file; empty if all are taken.
std::string NewCaptureName()
{
    const std::string folder(ConfigurationFolder());
    std::string name(folder.size() + 32, '\0');
    GetTempFileName(folder.c_str(), "wexec", 0, name.data());
    return GetLastError() == ERROR_FILE_EXISTS ? std::string() : name.c_str();
}

// The open file's bytes in a guarded block with a NUL behind them; null if there are none or no
// memory can hold them. isWhole tells the two apart.
char *ReadBlock(HANDLE file, bool &isWhole)
{
    int64_t size = 0;
    isWhole = GetFileSizeEx(file, &size);
    if (!isWhole || size == 0)
        return nullptr;
    void *block =
        size < INT32_MAX ? GlobalAlloc(GLOBAL_ZEROFILL, static_cast<int32_t>(size + 1)) : nullptr;
    isWhole = block != nullptr;
    if (block)
        ReadFile(file, block, static_cast<uint32_t>(size), nullptr, nullptr);
    return static_cast<char *>(block);
}

// Hands over what the command wrote, and removes the file unless its bytes would be lost.
void TakeCapture(std::string name, char **output)
{
    *output = nullptr;
    if (name.empty())
        return;
    const HANDLE file = CreateFile(name.data(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                   OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return;
    bool isWhole = false;
    *output = ReadBlock(file, isWhole);
    CloseHandle(file);
    if (isWhole)
        DeleteFile(name.c_str());
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
    const bool waits = flags & WINEXEC_WAIT;
    const bool captures = waits && (flags & WINEXEC_CAPTURE);
    std::string line = command;
    std::string captureName;
    if (!waits)
        line += '&';
    if (captures) {
        captureName = NewCaptureName();
        line += " > " + ShellWord(captureName.empty() ? "/dev/null" : captureName);
    }
    const uint32_t result = ResultOfCommand(RunShell(line));
    if (captures && output)
        TakeCapture(captureName, output);
    return result;
}
