#include "support/scratch.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <malloc.h>
#include <sstream>

namespace fs = std::filesystem;

ScratchFolder::ScratchFolder()
{
    std::string name = (fs::temp_directory_path() / "wexelxi-XXXXXX").string();
    if (!mkdtemp(name.data())) {
        perror("mkdtemp");
        abort();
    }
    path_ = name;
}

ScratchFolder::~ScratchFolder()
{
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

std::string ReadWholeFile(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

void WriteWholeFile(const std::string &path, const std::string &bytes)
{
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

bool FileExists(const std::string &path)
{
    return fs::exists(fs::symlink_status(path));
}

size_t OpenDescriptors()
{
    size_t count = 0;
    for ([[maybe_unused]] const auto &entry : fs::directory_iterator("/proc/self/fd"))
        count++;
    return count - 1; // the iterator's own
}

size_t HeapBytes()
{
    return mallinfo2().uordblks;
}
