// Keeps calls into CUPS from disturbing the host's SIGPIPE: libcups has the signal ignored from its
// own start on, and raises it where a scheduler goes away.
#pragma once

#include <csignal>

namespace wexelxi {

// For a scope, SIGPIPE waits; one that was raised meanwhile is taken off at the end. The host's
// disposition stays what it was.
class PipeSignalScope {
public:
    PipeSignalScope();
    ~PipeSignalScope() noexcept(false); // a cancelled thread may end there
    PipeSignalScope(const PipeSignalScope &) = delete;
    PipeSignalScope &operator=(const PipeSignalScope &) = delete;

private:
    sigset_t before_;
    bool wasPending_;
};

} // namespace wexelxi
