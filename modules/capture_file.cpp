// What a captured command writes.
#include "modules/capture_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

#include "core/last_error.h"
#include "core/owners.h"
#include "profile/folder.h"
#include "wexelxi/files.h"
#include "wexelxi/memory.h"

namespace wexelxi {

namespace {

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
    if (info.st_size == 0)
        return nullptr;
    const auto bytes = static_cast<int32_t>(std::min<off_t>(info.st_size + 1, INT32_MAX));
    HGLOBAL block = GlobalAlloc(GLOBAL_ZEROFILL, bytes); // none is as large as INT32_MAX
    if (block)
        ReadAll(file, block, static_cast<size_t>(info.st_size));
    return static_cast<char *>(block);
}

} // namespace

CaptureFile::CaptureFile()
{
    const std::string folder(ConfigurationFolder());
    std::string name(folder.size() + 32, '\0');
    GetTempFileName(folder.c_str(), "wexec", 0, name.data());
    if (GetLastError() != ERROR_FILE_NOT_FOUND)
        return;
    name.resize(strlen(name.c_str()));
    path_ = std::move(name);
}

CaptureFile::~CaptureFile()
{
    if (!path_.empty() && !isKept_)
        unlink(path_.c_str());
}

char *CaptureFile::Read()
{
    if (path_.empty())
        return nullptr;
    SetLastError(ERROR_SUCCESS);
    const Descriptor file(open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (file)
        return ReadBlock(file.get());
    // What cannot be opened stays, but not for want of a descriptor or memory.
    isKept_ = errno != EMFILE && errno != ENFILE && errno != ENOMEM;
    return FailBlock();
}

} // namespace wexelxi
