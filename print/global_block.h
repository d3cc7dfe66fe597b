// A guard around GlobalLock.
#pragma once

#include "wexelxi/memory.h"

namespace wexelxi {

// The data of a handle for a scope; null for a null handle.
template <typename T>
class LockedGlobal {
public:
    explicit LockedGlobal(HGLOBAL handle)
        : handle_(handle), data_(handle ? static_cast<T *>(GlobalLock(handle)) : nullptr)
    {
    }
    ~LockedGlobal()
    {
        if (handle_)
            GlobalUnlock(handle_);
    }
    LockedGlobal(const LockedGlobal &) = delete;
    LockedGlobal &operator=(const LockedGlobal &) = delete;

    T *get() const { return data_; }

private:
    HGLOBAL handle_;
    T *data_;
};

} // namespace wexelxi
