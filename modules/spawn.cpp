// Running the shell: the signals around it, and commands longer than an argument can be.
#include "modules/spawn.h"

#include <cerrno>
#include <csignal>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace wexelxi {

namespace {

constexpr int kShellNotRun = 0x7F00;
// The longest argument that the kernel hands to a program, without its NUL.
constexpr size_t kMaxArgument = 131071;

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

// A command that no argument can hold, in a file in memory that the shell reads instead. The child
// does not inherit the file: it opens the parent's.
class LongCommand {
public:
    explicit LongCommand(const std::string &command)
        : descriptor_(memfd_create("command", MFD_CLOEXEC))
    {
        size_t done = 0;
        while (descriptor_ >= 0 && done < command.size()) {
            const ssize_t written =
                write(descriptor_, command.data() + done, command.size() - done);
            if (written < 0 && errno != EINTR)
                break;
            done += written > 0 ? static_cast<size_t>(written) : 0;
        }
        isWhole_ = descriptor_ >= 0 && done == command.size();
    }
    ~LongCommand()
    {
        if (descriptor_ >= 0)
            close(descriptor_);
    }
    LongCommand(const LongCommand &) = delete;
    LongCommand &operator=(const LongCommand &) = delete;

    bool isWhole() const { return isWhole_; }
    std::string text() const
    {
        return ". /proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(descriptor_);
    }

private:
    int descriptor_;
    bool isWhole_ = false;
};

// The shell's process, 0 if the shell cannot be run, -1 if there is no process for it.
pid_t StartShell(const std::string &command)
{
    const ChildSignals signals;
    const char *const arguments[] = {"sh", "-c", command.c_str(), nullptr};
    pid_t child = -1;
    const int error = posix_spawn(&child, "/bin/sh", nullptr, signals.get(),
                                  const_cast<char *const *>(arguments), environ);
    if (error == 0)
        return child;
    return error == EAGAIN || error == ENOMEM ? -1 : 0;
}

// Waits until that child ends. Other children of the host are reaped on the way.
int WaitForChild(pid_t child)
{
    int status = 0;
    pid_t ended;
    do {
        ended = wait(&status);
    } while (ended != child && ended != -1);
    return ended == -1 ? -1 : status;
}

int RunShortCommand(const std::string &command)
{
    const IgnoredSignal interrupt(SIGINT);
    const IgnoredSignal quit(SIGQUIT);
    const pid_t child = StartShell(command);
    return child == 0 ? kShellNotRun : WaitForChild(child);
}

} // namespace

int RunShell(const std::string &command)
{
    if (command.size() <= kMaxArgument)
        return RunShortCommand(command);
    const LongCommand file(command);
    return file.isWhole() ? RunShortCommand(file.text()) : -1;
}

} // namespace wexelxi
