// Owners of what the platform and the library itself hand out: each gives its object back when it
// goes, on every path, and keeps errno as it was. Rooms with objects of their own add theirs.
#pragma once

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <dlfcn.h>
#include <memory>
#include <new>
#include <unistd.h>
#include <utility>

#include "wexelxi/memory.h"

namespace wexelxi {

// A deleter out of the function that releases.
template <auto Release>
struct ReleaseWith {
    template <typename T>
    void operator()(T *object) const
    {
        const int saved = errno;
        Release(object);
        errno = saved;
    }
};

using Stream = std::unique_ptr<FILE, ReleaseWith<fclose>>;
using Directory = std::unique_ptr<DIR, ReleaseWith<closedir>>;
using LibraryHandle = std::unique_ptr<void, ReleaseWith<dlclose>>;

// A block from malloc, and one from GlobalAlloc.
template <typename T>
using MallocBlock = std::unique_ptr<T, ReleaseWith<free>>;
template <typename T>
using GlobalBlock = std::unique_ptr<T, ReleaseWith<GlobalFree>>;

// A file descriptor; -1 is none.
class Descriptor {
public:
    explicit Descriptor(int number = -1) : number_(number) {}
    Descriptor(Descriptor &&other) noexcept : number_(other.release()) {}
    Descriptor &operator=(Descriptor &&other) noexcept
    {
        std::swap(number_, other.number_);
        return *this;
    }
    ~Descriptor()
    {
        const int saved = errno;
        if (number_ >= 0)
            close(number_);
        errno = saved;
    }

    explicit operator bool() const { return number_ >= 0; }
    int get() const { return number_; }
    int release() { return std::exchange(number_, -1); }

private:
    int number_;
};

// Reads until count bytes are there, the file ends or the platform fails; a signal is no failure.
// Gives the bytes read, or -1 with errno if the first read that brought nothing failed.
ssize_t ReadAll(int descriptor, void *buffer, size_t count);

// Writes until all bytes are written or the platform fails; a signal is no failure, and a count of
// 0 is one write. Gives the bytes written; where they are fewer, errno tells why.
size_t WriteAll(int descriptor, const void *buffer, size_t count);

// An object that is made at its first use and outlives the exit, at which other threads may still
// be at work: `static NeverDestroyed<T> object;` and `*object`.
template <typename T>
class NeverDestroyed {
public:
    template <typename... Arguments>
    explicit NeverDestroyed(Arguments &&...arguments)
    {
        new (storage_) T(std::forward<Arguments>(arguments)...);
    }
    NeverDestroyed(const NeverDestroyed &) = delete;
    NeverDestroyed &operator=(const NeverDestroyed &) = delete;

    T &operator*() { return *get(); }
    T *operator->() { return get(); }

private:
    T *get() { return std::launder(reinterpret_cast<T *>(storage_)); }

    alignas(T) std::byte storage_[sizeof(T)];
};

} // namespace wexelxi
