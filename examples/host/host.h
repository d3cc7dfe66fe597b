// What the files of the example share: reporting, errors, and the owner of a handle.
#pragma once

#include <stdexcept>
#include <string>

#include "wexelxi.h"

// Prints one line of the account: what was done, and with what result.
void Say(const std::string &topic, const std::string &text);

// A call of the library that failed, with the last error that it left.
struct CallFailed : std::runtime_error {
    explicit CallFailed(const std::string &call)
        : std::runtime_error(call + " failed, last error " + std::to_string(GetLastError()))
    {
    }
};

// Throws CallFailed unless the result of a call is good.
inline void Check(bool good, const std::string &call)
{
    if (!good)
        throw CallFailed(call);
}

// Owns a handle of CreateFile, CreateThread or CreateSemaphore.
class Handle {
public:
    explicit Handle(HANDLE handle) : handle_(handle) {}
    ~Handle()
    {
        if (valid())
            CloseHandle(handle_);
    }
    Handle(Handle &&other) noexcept : handle_(other.handle_) { other.handle_ = nullptr; }
    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;

    bool valid() const { return handle_ && handle_ != INVALID_HANDLE_VALUE; }
    HANDLE get() const { return handle_; }

    // Closes it now, for the result: a buffered write may fail only here.
    bool close()
    {
        HANDLE handle = handle_;
        handle_ = nullptr;
        return CloseHandle(handle);
    }

private:
    HANDLE handle_;
};
