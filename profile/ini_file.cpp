// Profile files on disk: the configuration file's path, the one-entry read cache, and the change of
// a file in place, which never empties it.
#include "profile/ini_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "core/last_error.h"
#include "core/lock.h"
#include "files/handle.h"
#include "wexelxi/files.h"
#include "wexelxi/modules.h"
#include "wexelxi/profile.h"
#include "wexelxi/text.h"

using namespace wexelxi;

namespace {

constexpr size_t kPathBytes = 4096;
constexpr std::string_view kConfigurationFile = "/wexelxi.ini";
// The largest text that a guarded block holds with its NUL.
constexpr size_t kMaxFileBytes = INT32_MAX - 64;

// The configuration file's full path, or empty as long as nobody asked for it. It outlives FreeLib.
char gIniPath[kPathBytes];

struct IniCache {
    std::string path;
    IniFile file;
};
IniCache *gIniCache = nullptr;

void DropCache()
{
    delete gIniCache;
    gIniCache = nullptr;
}

// Takes a folder of any length that fits; any other is refused and the old one stays.
void StoreFolder(std::string_view folder)
{
    if (folder.size() + kConfigurationFile.size() >= kPathBytes)
        return;
    memcpy(gIniPath, folder.data(), folder.size());
    memcpy(gIniPath + folder.size(), kConfigurationFile.data(), kConfigurationFile.size());
    gIniPath[folder.size() + kConfigurationFile.size()] = '\0';
}

// The host's own folder. A host that lies in "/", or has no folder at all, gives the empty one.
void DeriveFolder()
{
    char host[kPathBytes];
    GetModuleFileName(WEXELXI_HOST_MODULE, host, sizeof host);
    const char *slash = strrchr(host, '/');
    StoreFolder(slash ? std::string_view(host, static_cast<size_t>(slash - host)) : "");
}

// A handle of CreateFile, closed at the end of its scope. A close that fails says so in the last
// error, and leaves a record that a second close frees.
class FileHandle {
public:
    FileHandle(const char *path, uint32_t access, uint32_t shareMode, uint32_t disposition)
    {
        std::string name = path; // the name of a port is upper-cased in place
        handle_ = CreateFile(name.data(), access, shareMode, nullptr, disposition,
                             FILE_ATTRIBUTE_NORMAL, nullptr);
    }
    ~FileHandle()
    {
        if (IsOpen() && !CloseHandle(handle_)) {
            CloseHandle(handle_);
            SetLastError(ERROR_GEN_FAILURE);
        }
    }
    FileHandle(const FileHandle &) = delete;
    FileHandle &operator=(const FileHandle &) = delete;

    bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
    HANDLE Get() const { return handle_; }

private:
    HANDLE handle_;
};

// An ordinary file behind a handle: its descriptor and size. Ports and other devices are none.
struct OrdinaryFile {
    int descriptor = -1;
    off_t size = 0;
    dev_t device = 0;
    ino_t inode = 0;
};

// What a batch keeps between two writes: the open file, whose text is then in the cache.
struct Batch {
    std::unique_ptr<FileHandle> handle;
    OrdinaryFile file;
    bool endsInWrite = false;

    // Whether the path still leads to that file, with the text as it was left.
    bool Continues(const char *path) const
    {
        struct stat now;
        return handle && gIniCache && gIniCache->path == path && stat(path, &now) == 0 &&
               now.st_dev == file.device && now.st_ino == file.inode &&
               now.st_size == static_cast<off_t>(gIniCache->file.size);
    }
};
Batch *gBatch = nullptr;

OrdinaryFile FindOrdinaryFile(const FileHandle &handle)
{
    const int descriptor = fileno(HandleToStream(handle.Get()));
    struct stat status;
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode))
        return {};
    return {descriptor, status.st_size, status.st_dev, status.st_ino};
}

bool ReadAt(int descriptor, char *bytes, size_t count)
{
    for (size_t done = 0; done < count;) {
        const ssize_t got = pread(descriptor, bytes + done, count - done, static_cast<off_t>(done));
        if (got <= 0 && !(got < 0 && errno == EINTR))
            return false;
        done += got > 0 ? static_cast<size_t>(got) : 0;
    }
    return true;
}

// Room for a text of that size, with its NUL; none if there is no such memory.
IniFile NewText(size_t size)
{
    IniFile text;
    if (size > kMaxFileBytes)
        return text;
    text.bytes.reset(static_cast<char *>(GlobalAlloc(0, static_cast<int32_t>(size + 1))));
    if (!text.bytes)
        return text;
    text.bytes.get()[size] = '\0';
    text.size = size;
    return text;
}

// Reads a file of at least one byte whole. Nothing comes back from one that is too large or that
// the platform does not read.
IniFile ReadWhole(const OrdinaryFile &file)
{
    IniFile text = NewText(static_cast<size_t>(file.size));
    if (text.bytes && !ReadAt(file.descriptor, text.bytes.get(), text.size))
        return {};
    return text;
}

bool WriteAt(int descriptor, std::string_view bytes, size_t place)
{
    while (!bytes.empty()) {
        const ssize_t put =
            pwrite(descriptor, bytes.data(), bytes.size(), static_cast<off_t>(place));
        if (put < 0 && errno != EINTR)
            return false;
        const size_t done = put > 0 ? static_cast<size_t>(put) : 0;
        bytes.remove_prefix(done);
        place += done;
    }
    return true;
}

std::string_view Slice(std::string_view bytes, size_t from, size_t to)
{
    from = std::min(from, bytes.size());
    return bytes.substr(from, std::max(to, from) - from);
}

// The new end of a file: a rewrite's text, and the old bytes that follow it.
struct NewEnd {
    size_t place;
    std::string_view text;
    std::string_view tail;

    size_t Size() const { return text.size() + tail.size(); }

    // Writes the bytes from one place to another, counted from the start of the new end.
    bool Write(int descriptor, size_t from, size_t to) const
    {
        const size_t split = std::min(text.size(), to);
        return WriteAt(descriptor, Slice(text, from, to), place + from) &&
               WriteAt(descriptor, Slice(tail, std::max(from, split) - split, to - split),
                       place + std::max(from, split));
    }
};

// Puts the planned bytes into the file, from the first changed one on. What the file grows by goes
// first, so that a full disk refuses the write while the old text is still whole.
bool ChangeInPlace(int descriptor, std::string_view old, const IniRewrite &plan)
{
    if (plan.text.size() == plan.resume - plan.keep)
        return WriteAt(descriptor, plan.text, plan.keep);

    const NewEnd end{plan.keep, plan.text, old.substr(plan.resume)};
    const size_t inside = std::min(old.size() - plan.keep, end.Size());
    if (!end.Write(descriptor, inside, end.Size())) {
        (void)!ftruncate(descriptor, static_cast<off_t>(old.size()));
        return false;
    }
    const size_t size = plan.keep + end.Size();
    return end.Write(descriptor, 0, inside) &&
           (size >= old.size() || ftruncate(descriptor, static_cast<off_t>(size)) == 0);
}

// The text as a rewrite leaves it.
IniFile Rewritten(std::string_view old, const IniRewrite &plan)
{
    const size_t tail = old.size() - plan.resume;
    const size_t size = plan.keep + plan.text.size() + tail;
    IniFile text = NewText(size);
    if (text.bytes) {
        char *end = std::copy_n(old.data(), plan.keep, text.bytes.get());
        end = std::copy(plan.text.begin(), plan.text.end(), end);
        std::copy_n(old.data() + plan.resume, tail, end);
    }
    return text;
}

// The disk's refusal shows as that of a buffered stream does: at the close, in the last error.
BOOL WriteOrdinaryFile(const char *path, std::unique_ptr<FileHandle> handle,
                       const OrdinaryFile &file, const IniFile &old, const IniRewrite &plan)
{
    const bool written = ChangeInPlace(file.descriptor, old.Bytes(), plan);
    IniFile text = gBatch && written ? Rewritten(old.Bytes(), plan) : IniFile{};
    if (text.bytes) {
        gIniCache = new IniCache{path, std::move(text)};
        *gBatch = {std::move(handle), file, true};
        SetLastError(ERROR_SUCCESS);
        return TRUE;
    }
    handle.reset();
    if (!written)
        SetLastError(ERROR_GEN_FAILURE);
    return TRUE;
}

} // namespace

namespace wexelxi {

const char *ResolveIniName(const char *name)
{
    if (gIniPath[0] == '\0')
        DeriveFolder();
    const bool isConfiguration = strcmp(name, "win.ini") == 0 || strcmp(name, "wexelxi.ini") == 0;
    return isConfiguration ? gIniPath : name;
}

IniFile ReadIniFile(const char *path)
{
    DropCache();
    const FileHandle handle(path, GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
    if (!handle.IsOpen())
        return {};
    const OrdinaryFile file = FindOrdinaryFile(handle);
    return file.size > 0 ? ReadWhole(file) : IniFile{};
}

std::string_view ReadCachedIniText(const char *path)
{
    if (gBatch)
        gBatch->endsInWrite = false;
    if (!gIniCache || gIniCache->path != path) {
        IniFile file = ReadIniFile(path);
        if (!file.bytes)
            return {};
        DropCache(); // opening a port reads the configuration file
        gIniCache = new IniCache{path, std::move(file)};
    }
    return ParsedPart(gIniCache->file.Bytes());
}

BOOL WriteIniFile(const char *path, std::string_view section, std::string_view key,
                  std::string_view value)
{
    if (gBatch && gBatch->Continues(path)) {
        const IniFile old = std::move(gIniCache->file);
        DropCache();
        return WriteOrdinaryFile(path, std::move(gBatch->handle), gBatch->file, old,
                                 PlanIniRewrite(old.Bytes(), section, key, value));
    }
    if (gBatch)
        gBatch->handle.reset();
    DropCache();
    auto handle = std::make_unique<FileHandle>(path, GENERIC_READ | GENERIC_WRITE,
                                               FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_ALWAYS);
    if (!handle->IsOpen())
        return FALSE;
    const OrdinaryFile file = FindOrdinaryFile(*handle);
    if (file.descriptor < 0) {
        // A device holds no text, and takes the new one in sequence.
        const std::string text = PlanIniRewrite({}, section, key, value).text;
        return WriteFile(handle->Get(), text.data(), static_cast<uint32_t>(text.size()), nullptr,
                         nullptr);
    }
    const IniFile old = file.size > 0 ? ReadWhole(file) : IniFile{};
    if (file.size > 0 && !old.bytes) {
        handle.reset();
        return Fail(ERROR_GEN_FAILURE); // what cannot be read cannot be kept
    }
    return WriteOrdinaryFile(path, std::move(handle), file, old,
                             PlanIniRewrite(old.Bytes(), section, key, value));
}

IniBatch::IniBatch()
{
    gBatch = new Batch;
}

IniBatch::~IniBatch()
{
    if (gBatch->endsInWrite)
        DropCache();
    delete gBatch;
    gBatch = nullptr;
}

} // namespace wexelxi

void SetWexelXiFolder(const char *folder)
{
    LockScope lock;
    StoreFolder(folder);
}

void GetWexelXiFolder(char *destination)
{
    LockScope lock;
    const size_t length = strlen(gIniPath);
    const size_t folder = length - std::min(length, kConfigurationFile.size());
    memcpy(destination, gIniPath, folder);
    destination[folder] = '\0';
}

void GetIniName(char *destination, const char *name)
{
    LockScope lock;
    const char *path = ResolveIniName(name);
    lstrcpyn(destination, path, kPathBytes);
}

void TermIni(void)
{
    // No lock: FreeLib calls this when the lock is gone.
    DropCache();
}
