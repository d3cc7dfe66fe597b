#include "print/pipe_signal.h"

#include <cerrno>
#include <ctime>
#include <cups/http.h>

namespace wexelxi {

namespace {

sigset_t OnlyPipe()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGPIPE);
    return set;
}

bool IsPending()
{
    sigset_t pending;
    sigpending(&pending);
    return sigismember(&pending, SIGPIPE) == 1;
}

// libcups does this once, at the first connection otherwise. What it does to the disposition is
// undone at once, and not when a scheduler has answered at last.
struct CupsStart {
    CupsStart()
    {
        struct sigaction own = {};
        sigaction(SIGPIPE, nullptr, &own);
        httpInitialize();
        sigaction(SIGPIPE, &own, nullptr);
    }
};

} // namespace

PipeSignalScope::PipeSignalScope() : wasPending_(IsPending())
{
    static const CupsStart start;
    const sigset_t pipe = OnlyPipe();
    pthread_sigmask(SIG_BLOCK, &pipe, &before_);
}

PipeSignalScope::~PipeSignalScope() noexcept(false)
{
    const int saved = errno;
    const sigset_t pipe = OnlyPipe();
    const timespec now = {};
    if (!wasPending_ && IsPending())
        sigtimedwait(&pipe, nullptr, &now); // which does not wait, so no signal can interrupt it
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    errno = saved;
}

} // namespace wexelxi
