// Owners of the platform's file objects: each releases what it holds on every path.
#pragma once

#include <cstdio>
#include <dirent.h>
#include <memory>

namespace wexelxi {

struct StreamCloser {
    void operator()(FILE *stream) const { fclose(stream); }
};
using Stream = std::unique_ptr<FILE, StreamCloser>;

struct DirectoryCloser {
    void operator()(DIR *directory) const { closedir(directory); }
};
using Directory = std::unique_ptr<DIR, DirectoryCloser>;

} // namespace wexelxi
