// What most tests need: a scratch folder that goes away, a started library, and a few counts.
#pragma once

#include <cstddef>
#include <string>

// A new folder under the temporary directory, removed with all that is in it.
class ScratchFolder {
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder &) = delete;
    ScratchFolder &operator=(const ScratchFolder &) = delete;

    const std::string &path() const { return path_; }
    std::string file(const std::string &name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

std::string ReadWholeFile(const std::string &path);
void WriteWholeFile(const std::string &path, const std::string &bytes);
bool FileExists(const std::string &path);

// Descriptors that this process holds open.
size_t OpenDescriptors();

// Bytes that this process has on its heap; always the same number where a sanitizer has its own.
size_t HeapBytes();
