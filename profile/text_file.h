// Texts on disk: read whole, and changed so that at every moment the old text or the new one stands
// there. No state, no lock of the library's and no last error: errno tells.
#pragma once

#include <string_view>
#include <sys/stat.h>

#include "core/owners.h"
#include "profile/file_beside.h"

namespace wexelxi {

// The bytes of a file; none if it is missing, empty, unreadable or no ordinary file, which are all
// the same to a reader.
struct FileText {
    MallocBlock<char> bytes;
    size_t size = 0;

    // Room for a text of zeros; without bytes, and ENOMEM, if there is no such memory.
    static FileText OfSize(size_t size);

    std::string_view View() const { return {bytes.get(), size}; }
};

// Reads an open ordinary file of that size, which may be 0. False, with errno, if not all of it is
// to be had.
bool ReadFileText(int descriptor, off_t size, FileText &text);

// Reads a file. Only ordinary ones hold text, and one that could block at its open is not opened.
// Errno is 0 unless the open was refused or memory ran out.
FileText ReadFileText(const char *path);

// Puts a new text into an open ordinary file that held the old one. Room is reserved first, and
// then all that changes goes in with one write; what is cut off is NUL, which ends a text, before
// it goes. False, with errno and the old text, if the disk refuses it.
bool ChangeInPlace(int descriptor, std::string_view old, std::string_view text);

// A file that is opened for one change. Other processes' changes of it wait until this ends, for at
// most 200 ms each.
class FileChange {
public:
    explicit FileChange(const char *path);

    // False if the file cannot be opened for reading and writing, or not read; the error tells why.
    bool IsOpen() const { return error_ == 0; }
    int Error() const { return error_; }

    std::string_view Text() const { return text_.View(); }

    // Writes the new text: beside the file and then in its place, or where that would change what
    // the file is, into it. False, with errno and the old text, if the disk refuses it.
    bool Write(std::string_view text);

private:
    enum Outcome { kOpen, kAgain, kFailed };

    bool Resolve();
    bool Open();
    Outcome TryOpen(bool isLate);
    Outcome TryMake(bool isLate);
    bool Replace(std::string_view text);

    const char *path_;
    MallocBlock<char> resolved_;
    bool mayReplace_ = true;
    FileBeside beside_;
    Descriptor descriptor_;
    struct stat status_ = {};
    FileText text_;
    int error_ = 0;
    bool isDevice_ = false; // which holds no text and takes a new one in sequence
};

} // namespace wexelxi
