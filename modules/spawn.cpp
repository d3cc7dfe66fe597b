// Running the shell, and the signals around it.
#include "modules/spawn.h"

#include <cerrno>
#include <csignal>
#include <initializer_list>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "core/last_error.h"
#include "core/lock.h"

namespace wexelxi {

namespace {

constexpr int kShellNotRun = 0x7F00;

// Ignores a signal for a scope, and puts everything back as it was.
class IgnoredSignal {
public:
    explicit IgnoredSignal(int number) : number_(number)
    {
        struct sigaction ignore = {};
        ignore.sa_handler = SIG_IGN;
        sigaction(number_, &ignore, &previous_);
    }
    ~IgnoredSignal() { sigaction(number_, &previous_, nullptr); }
    IgnoredSignal(const IgnoredSignal &) = delete;
    IgnoredSignal &operator=(const IgnoredSignal &) = delete;

private:
    int number_;
    struct sigaction previous_ = {};
};

// Waits until that child ends; a signal is no end. Other children of the host are reaped on the
// way.
int WaitForChild(pid_t child)
{
    int status = 0;
    pid_t ended;
    do {
        ended = wait(&status);
    } while (ended != child && (ended != -1 || errno == EINTR));
    return ended == -1 ? -1 : status;
}

} // namespace

int RunShell(const char *command)
{
    AssertLockHeld();
    const IgnoredSignal interrupt(SIGINT);
    const IgnoredSignal quit(SIGQUIT);
    sigset_t defaults = {}; // the signals that end a command
    for (const int number : {SIGINT, SIGQUIT, SIGHUP})
        sigaddset(&defaults, number);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    const char *const arguments[] = {"sh", "-c", command, nullptr};
    pid_t child = -1;
    const int error = posix_spawn(&child, "/bin/sh", nullptr, &attributes,
                                  const_cast<char *const *>(arguments), environ);
    posix_spawnattr_destroy(&attributes);
    if (error == EAGAIN || error == ENOMEM)
        return FailWith(ERROR_NOT_ENOUGH_MEMORY, -1);
    return error == 0 ? WaitForChild(child) : kShellNotRun;
}

} // namespace wexelxi
