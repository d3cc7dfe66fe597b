// The one-entry cache, the roads of ordinary files and of ports, and runs of writes. gIniCache is
// the only state: the lock guards it, and TermIni ends it.
#include "profile/ini_cache.h"

#include <string>

#include "comm/port_text.h"
#include "core/last_error.h"
#include "core/lock.h"
#include "core/no_memory.h"
#include "files/handle.h"
#include "profile/ini_text.h"
#include "wexelxi/files.h"

namespace wexelxi {
namespace {

struct IniCache {
    std::string path;
    IniText text;
};
IniCache *gIniCache = nullptr;

void KeepInCache(const char *path, FileText file)
{
    DropIniCache();
    OrNoMemory([&] { gIniCache = new IniCache{path, IniText(std::move(file))}; });
}

// The text that the cache then holds; null if there is none.
IniText *CachedText(const char *path)
{
    AssertLockHeld();
    if (!gIniCache || gIniCache->path != path) {
        FileText file = ReadIniText(path);
        if (!file.bytes)
            return nullptr;
        KeepInCache(path, std::move(file)); // opening a port has read the configuration file
    }
    return gIniCache ? &gIniCache->text : nullptr;
}

// Whether CreateFile looks the name up among the ports.
bool MayBePort(const char *path)
{
    return ParsePortName(path).number != 0;
}

// What CreateFile gives for a port's name, which it upper-cases in place.
OwnedHandle OpenPort(const char *path, uint32_t access, uint32_t disposition)
{
    return OrNoMemory(OwnedHandle(),
                      [&] { return OpenOwned(std::string(path).data(), access, disposition); });
}

int DescriptorOf(const OwnedHandle &port)
{
    return fileno(HandleToStream(port.get()));
}

// The file behind a port, if that is what an entry of section "Ports" names.
bool ReadBehindPort(int descriptor, FileText &text, bool &isFile)
{
    struct stat status;
    if (fstat(descriptor, &status) != 0)
        return false;
    isFile = S_ISREG(status.st_mode);
    return !isFile || ReadFileText(descriptor, status.st_size, text);
}

FileText ReadPort(const char *path)
{
    FileText text;
    bool isFile;
    if (const OwnedHandle port = OpenPort(path, GENERIC_READ, OPEN_EXISTING))
        (void)ReadBehindPort(DescriptorOf(port), text, isFile);
    return text;
}

FileText Rewritten(std::string_view old, const IniRewrite &plan)
{
    FileText text = FileText::OfSize(plan.SizeOf(old));
    if (text.bytes)
        plan.Write(old, text.bytes.get());
    return text;
}

// The last error of a text that was not read or written.
uint32_t Refusal()
{
    return errno == ENOMEM ? ERROR_NOT_ENOUGH_MEMORY : ERROR_GEN_FAILURE;
}

// Writes a text, which is none if memory ran out. The disk's refusal shows as that of a buffered
// stream does: at the close, in the last error.
BOOL Write(FileChange &change, std::optional<std::string_view> text)
{
    errno = change.Error();
    if (!change.IsOpen())
        return FailWithErrno();
    if (!text)
        return Fail(ERROR_NOT_ENOUGH_MEMORY);
    SetLastError(change.Write(*text) ? ERROR_SUCCESS : Refusal());
    return TRUE;
}

// A device takes the new text in sequence, and the disk's refusal shows at the close.
BOOL WritePort(const char *path, std::string_view section, std::string_view key,
               std::string_view value)
{
    OwnedHandle port = OpenPort(path, GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS);
    if (!port)
        return FALSE;
    FileText old;
    bool isFile;
    const int descriptor = DescriptorOf(port);
    const bool isRead = ReadBehindPort(descriptor, old, isFile);
    const FileText text = Rewritten(old.View(), PlanIniRewrite(old.View(), section, key, value));
    if (!isRead || !text.bytes) {
        port.reset();
        return Fail(Refusal());
    }
    if (!isFile)
        return WriteFile(port.get(), text.bytes.get(), static_cast<uint32_t>(text.size), nullptr,
                         nullptr);
    const bool isWritten = ChangeInPlace(descriptor, old.View(), text.View());
    port.reset();
    if (!isWritten)
        SetLastError(Refusal());
    return TRUE;
}

} // namespace

IniText::IniText(FileText file) : file_(std::move(file)), parsed_(ParsedPart(file_.View())) {}

std::optional<std::string_view> IniText::ValueOf(std::string_view section, std::string_view key)
{
    size_t value;
    if (!std::exchange(wasAsked_, true) || !index_.Find(parsed_, section, key, value))
        value = SearchIniKey(parsed_, section, key).value;
    if (value == kNoPlace)
        return std::nullopt;
    return IniValueAt(parsed_, value);
}

void DropIniCache()
{
    delete std::exchange(gIniCache, nullptr);
}

std::optional<std::string_view> ReadIniKey(const char *path, std::string_view section,
                                           std::string_view key)
{
    IniText *text = CachedText(path);
    return text ? text->ValueOf(section, key) : std::nullopt;
}

FileText ReadIniText(const char *path)
{
    AssertLockHeld();
    DropIniCache();
    if (MayBePort(path))
        return ReadPort(path);
    FileText text = ReadFileText(path);
    if (errno == 0)
        SetLastError(ERROR_SUCCESS);
    else
        SetUnixError();
    return text;
}

BOOL WriteIniKey(const char *path, std::string_view section, std::string_view key,
                 std::string_view value)
{
    AssertLockHeld();
    DropIniCache();
    if (MayBePort(path))
        return WritePort(path, section, key, value);
    FileChange change(path);
    const FileText text =
        Rewritten(change.Text(), PlanIniRewrite(change.Text(), section, key, value));
    return Write(change, text.bytes ? std::optional(text.View()) : std::nullopt);
}

IniDraft::IniDraft(const char *path) : path_(path), text_(CachedText(path)) {}

std::optional<std::string_view> IniDraft::Get(std::string_view section, std::string_view key)
{
    endsInWrite_ = false;
    return text_ ? text_->ValueOf(section, key) : std::nullopt;
}

void IniDraft::Set(std::string_view section, std::string_view key, std::string_view value)
{
    const std::string_view old = text_ ? text_->Bytes() : "";
    FileText text = Rewritten(old, PlanIniRewrite(old, section, key, value));
    isChanged_ = true;
    endsInWrite_ = true;
    hasFailed_ = hasFailed_ || !text.bytes;
    if (!hasFailed_)
        text_ = &own_.emplace(std::move(text));
}

// Opens the file for the change. False if another text stands there than the one that was read;
// the draft is then empty but for that.
bool IniDraft::Open()
{
    change_.emplace(path_);
    const std::string_view read = gIniCache ? gIniCache->text.Bytes() : "";
    const std::string_view now = change_->Text();
    if (!change_->IsOpen() || now == read)
        return true;
    FileText text = FileText::OfSize(now.size());
    hasFailed_ = !text.bytes;
    if (text.bytes)
        now.copy(text.bytes.get(), now.size());
    text_ = &own_.emplace(std::move(text));
    isChanged_ = false;
    DropIniCache();
    return false;
}

bool IniDraft::Save()
{
    AssertLockHeld();
    if (!isChanged_)
        return true;
    if (!change_ && !Open())
        return false;
    DropIniCache();
    (void)Write(*change_, hasFailed_ ? std::nullopt : std::optional(own_->Bytes()));
    change_.reset();
    if (!endsInWrite_)
        CachedText(path_);
    return true;
}

} // namespace wexelxi
