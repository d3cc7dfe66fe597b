// The two translations of platform error numbers, as pure functions.
#pragma once

#include <cstdint>

namespace wexelxi {

// The last error that stands for an errno; ERROR_GEN_FAILURE where none does.
uint32_t LastErrorFromErrno(int error);

// The socket error that stands for an errno, or for a resolver error where the errno is 0; 0 where
// none does.
uint32_t SocketErrorFromErrno(int error, int resolverError);

} // namespace wexelxi
