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

// Gives the child the default effect of the signals that end a command.
class ChildSignals {
public:
    ChildSignals()
    {
        sigset_t defaults;
        sigemptyset(&defaults);
        for (const int number : {SIGINT, SIGQUIT, SIGHUP})
            sigaddset(&defaults, number);
        posix_spawnattr_init(&attributes_);
        posix_spawnattr_setsigdefault(&attributes_, &defaults);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGDEF);
    }
    ~ChildSignals() { posix_spawnattr_destroy(&attributes_); }
    ChildSignals(const ChildSignals &) = delete;
    ChildSignals &operator=(const ChildSignals &) = delete;

    const posix_spawnattr_t *get() const { return &attributes_; }

private:
    posix_spawnattr_t attributes_;
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
    const ChildSignals signals;
    const char *const arguments[] = {"sh", "-c", command, nullptr};
    pid_t child = -1;
    const int error = posix_spawn(&child, "/bin/sh", nullptr, signals.get(),
                                  const_cast<char *const *>(arguments), environ);
    if (error == EAGAIN || error == ENOMEM)
        return FailWith(ERROR_NOT_ENOUGH_MEMORY, -1);
    return error == 0 ? WaitForChild(child) : kShellNotRun;
}

} // namespace wexelxi
