// How a change keeps what stands on the disk whole: docs/choices.md tells the cases.
#include "profile/text_file.h"

#include <algorithm>
#include <chrono>
#include <fcntl.h>
#include <thread>

namespace wexelxi {
namespace {

using namespace std::chrono_literals;

constexpr int kOpenFlags = O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
constexpr mode_t kNewFileMode = 0666; // what fopen gives, less the umask
constexpr auto kPatience = 200ms;
constexpr auto kPause = 100us;

// Opening a FIFO would wait for its other end, or end the wait of somebody else's.
bool MayBeOpened(const struct stat &status)
{
    return !S_ISFIFO(status.st_mode) && !S_ISSOCK(status.st_mode) && !S_ISBLK(status.st_mode);
}

bool PutAt(int descriptor, std::string_view bytes, size_t place)
{
    const ssize_t put = pwrite(descriptor, bytes.data(), bytes.size(), static_cast<off_t>(place));
    return put == static_cast<ssize_t>(bytes.size());
}

// Room on the disk for a file to grow, whose size stays. Where the file system cannot tell, the
// write does.
bool Reserve(int descriptor, size_t size)
{
    return fallocate(descriptor, FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(size)) == 0 ||
           errno == EOPNOTSUPP || errno == EINTR;
}

bool PutNewEnd(int descriptor, size_t keep, std::string_view newEnd, size_t size)
{
    return PutAt(descriptor, newEnd, keep) &&
           (keep + newEnd.size() == size || ftruncate(descriptor, static_cast<off_t>(size)) == 0);
}

} // namespace

FileText FileText::OfSize(size_t size)
{
    FileText text;
    text.bytes.reset(static_cast<char *>(calloc(size + 1, 1)));
    text.size = text.bytes ? size : 0;
    return text;
}

bool ReadFileText(int descriptor, off_t size, FileText &text)
{
    if (size >= INT32_MAX) {
        errno = EFBIG;
        return false;
    }
    FileText whole = FileText::OfSize(static_cast<size_t>(size));
    if (!whole.bytes)
        return false;
    const ssize_t got = ReadAll(descriptor, whole.bytes.get(), whole.size);
    if (got != size) {
        errno = got < 0 ? errno : EIO;
        return false;
    }
    text = size > 0 ? std::move(whole) : FileText();
    return true;
}

FileText ReadFileText(const char *path)
{
    FileText text;
    struct stat status;
    if (stat(path, &status) == 0 && !MayBeOpened(status)) {
        errno = ENXIO;
        return text;
    }
    const Descriptor descriptor(open(path, O_RDONLY | kOpenFlags));
    if (!descriptor)
        return text;
    const bool isText = fstat(descriptor.get(), &status) == 0 && S_ISREG(status.st_mode);
    if (!isText || ReadFileText(descriptor.get(), status.st_size, text) || errno != ENOMEM)
        errno = 0;
    return text;
}

bool ChangeInPlace(int descriptor, std::string_view old, std::string_view text)
{
    const auto [oldEnd, textEnd] = std::mismatch(old.begin(), old.end(), text.begin(), text.end());
    const auto keep = static_cast<size_t>(textEnd - text.begin());
    const FileText newEnd = FileText::OfSize(std::max(old.size(), text.size()) - keep);
    if (!newEnd.bytes || !Reserve(descriptor, text.size()))
        return false;
    std::copy(textEnd, text.end(), newEnd.bytes.get());
    if (PutNewEnd(descriptor, keep, newEnd.View(), text.size()))
        return true;
    const int refusal = errno;
    PutAt(descriptor, old.substr(keep), keep);
    (void)!ftruncate(descriptor, static_cast<off_t>(old.size()));
    errno = refusal;
    return false;
}

FileChange::FileChange(const char *path) : path_(path)
{
    error_ = Resolve() && Open() ? 0 : errno;
}

// A symbolic link stays, and what it leads to is changed; one to nothing is left to the platform.
bool FileChange::Resolve()
{
    struct stat named;
    if (lstat(path_, &named) != 0) {
        mayReplace_ = path_[0] != '\0'; // the empty name has no folder
        return errno == ENOENT;
    }
    if (!S_ISLNK(named.st_mode))
        return true;
    resolved_.reset(realpath(path_, nullptr));
    mayReplace_ = resolved_ != nullptr;
    if (resolved_)
        path_ = resolved_.get();
    return resolved_ || errno == ENOENT;
}

bool FileChange::Open()
{
    const auto end = std::chrono::steady_clock::now() + kPatience;
    for (int lateTries = 0; lateTries < 3;) {
        const bool isLate = std::chrono::steady_clock::now() > end;
        const Outcome outcome = TryOpen(isLate);
        if (outcome != kAgain)
            return outcome == kOpen;
        lateTries += isLate;
        std::this_thread::sleep_for(kPause);
    }
    errno = EAGAIN;
    return false;
}

FileChange::Outcome FileChange::TryOpen(bool isLate)
{
    struct stat named;
    if (stat(path_, &named) != 0)
        return errno == ENOENT ? TryMake(isLate) : kFailed;
    if (!MayBeOpened(named)) {
        errno = ENXIO;
        return kFailed;
    }
    descriptor_ = Descriptor(open(path_, O_RDWR | kOpenFlags));
    if (!descriptor_)
        return errno == ENOENT ? kAgain : kFailed;
    const bool isLocked = TryLockFile(descriptor_.get()) || isLate;
    if (fstat(descriptor_.get(), &status_) != 0)
        return kFailed;
    isDevice_ = !S_ISREG(status_.st_mode);
    if (isDevice_)
        return kOpen;
    // The file that was locked may have lost its place to a new one meanwhile.
    if (!isLocked || stat(path_, &named) != 0 || !IsSameInode(named, status_))
        return kAgain;
    return ReadFileText(descriptor_.get(), status_.st_size, text_) ? kOpen : kFailed;
}

// Whoever holds the file beside it makes a file that is missing; so nothing but a whole one is
// seen.
FileChange::Outcome FileChange::TryMake(bool isLate)
{
    descriptor_ = Descriptor();
    const FileBeside::Outcome beside =
        mayReplace_ ? beside_.Make(path_, kNewFileMode) : FileBeside::kRefused;
    if (beside == FileBeside::kMade) {
        struct stat named;
        if (stat(path_, &named) != 0 && errno == ENOENT)
            return kOpen;
        beside_.Drop();
    } else if (beside == FileBeside::kRefused || isLate) {
        const Descriptor made(open(path_, O_RDWR | O_CREAT | kOpenFlags, kNewFileMode));
        return made ? kAgain : kFailed;
    }
    return kAgain;
}

bool FileChange::Replace(std::string_view text)
{
    // Made in any case: what a killed process left goes.
    const bool replaced = mayReplace_ &&
                          beside_.Make(path_, status_.st_mode) == FileBeside::kMade &&
                          status_.st_nlink == 1 && beside_.Resemble(descriptor_.get(), status_) &&
                          beside_.Become(path_, text);
    beside_.Drop(); // and its lock: who waits shall have a turn
    return replaced;
}

bool FileChange::Write(std::string_view text)
{
    if (isDevice_)
        return WriteAll(descriptor_.get(), text.data(), text.size()) == text.size();
    if (!descriptor_)
        return beside_.Become(path_, text);
    return Replace(text) || ChangeInPlace(descriptor_.get(), text_.View(), text);
}

} // namespace wexelxi
