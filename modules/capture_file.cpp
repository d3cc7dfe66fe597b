// The files that commands write for the library.
#include "modules/capture_file.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

#include "core/last_error.h"
#include "profile/folder.h"
#include "wexelxi/files.h"
#include "wexelxi/memory.h"

namespace wexelxi {

namespace {

constexpr int kNamesTried = 16; // another process may take a name that was free

char *FailBlock()
{
    FailWithErrno();
    return nullptr;
}

char *ReadBlock(int file)
{
    struct stat info;
    if (fstat(file, &info) != 0)
        return FailBlock();
    if (info.st_nlink == 0) // the command itself removed it
        return FailWith<char *>(ERROR_FILE_NOT_FOUND, nullptr);
    if (info.st_size == 0)
        return nullptr;
    if (info.st_size >= INT32_MAX)
        return FailWith<char *>(ERROR_NOT_ENOUGH_MEMORY, nullptr);
    HGLOBAL block = GlobalAlloc(GLOBAL_ZEROFILL, static_cast<int32_t>(info.st_size) + 1);
    if (block)
        ReadAll(file, block, static_cast<size_t>(info.st_size));
    return static_cast<char *>(block);
}

} // namespace

Descriptor MakeCommandFile(const std::string &path)
{
    constexpr mode_t kAsTheShellMakesIt = 0666;
    return Descriptor(
        open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kAsTheShellMakesIt));
}

CaptureFile::CaptureFile()
{
    const std::string folder(ConfigurationFolder());
    std::string name(folder.size() + 32, '\0');
    int triesLeft = kNamesTried;
    do {
        GetTempFileName(folder.c_str(), "wexec", 0, name.data());
        if (GetLastError() != ERROR_FILE_NOT_FOUND)
            return;
        file_ = MakeCommandFile(name);
    } while (!file_ && errno == EEXIST && --triesLeft > 0);
    if (!file_ && (errno == EEXIST || errno == EMFILE || errno == ENFILE)) {
        FailWithErrno();
        return;
    }
    name.resize(strlen(name.c_str())); // what else stops us stops the shell, which tells
    path_ = std::move(name);
}

CaptureFile::~CaptureFile()
{
    if (file_ && !isKept_)
        unlink(path_.c_str());
}

char *CaptureFile::Read()
{
    if (path_.empty())
        return nullptr;
    SetLastError(ERROR_SUCCESS);
    if (!file_)
        file_ = Descriptor(open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    return file_ ? ReadBlock(file_.get()) : FailBlock();
}

} // namespace wexelxi
