// wexelxi-trace: runs a host with the companion in front of the library.
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tools/trace/options.h"
#include "tools/trace/settings.h"

using namespace trace;

namespace {

enum Exit { kUsage = 2, kCannotTrace = 125, kCannotRun = 126, kNotFound = 127 };

int Fail(Exit status, const std::string &what)
{
    fprintf(stderr, "wexelxi-trace: %s\n", what.c_str());
    return status;
}

// The companion: beside this program in a build, in the library's folder where it is installed.
std::string FindCompanion()
{
    char self[PATH_MAX] = "";
    if (readlink("/proc/self/exe", self, sizeof self - 1) < 0)
        return "";
    const std::string folder(self, strrchr(self, '/') + 1);
    for (const char *place : {"", "../" WEXELXI_LIBDIR "/wexelxi/"}) {
        const std::string path = folder + place + "wexelxi-trace.so";
        if (access(path.c_str(), R_OK) == 0)
            return path;
    }
    return "";
}

void SetVariables(const Options &options, const std::string &companion, int findings)
{
    const char *before = getenv("LD_PRELOAD");
    const std::string preload = companion + (before && *before ? ":" + std::string(before) : "");
    setenv(kPreloadVariable, before ? before : "", 1);
    setenv("LD_PRELOAD", preload.c_str(), 1);
    setenv(kFlagsVariable, options.flags.c_str(), 1);
    setenv(kLengthVariable, options.length.c_str(), 1);
    setenv(kSelectVariable, options.select.c_str(), 1);
    setenv(kOutputVariable, options.output.c_str(), 1);
    const std::string place =
        "/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(findings);
    setenv(kFindingsVariable, place.c_str(), 1);
}

// The whole path, as the host may change its folder; the file is empty then.
bool PrepareOutput(std::string &path)
{
    if (path.empty())
        return true;
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    char whole[PATH_MAX];
    if (file < 0 || !realpath(path.c_str(), whole))
        return false;
    close(file);
    path = whole;
    return true;
}

pid_t gHost = 0;

void PassOn(int number)
{
    if (gHost > 0)
        kill(gHost, number);
}

[[noreturn]] void Become(char **host)
{
    execvp(host[0], host);
    const int error = errno;
    exit(Fail(error == ENOENT ? kNotFound : kCannotRun,
              std::string(host[0]) + ": " + strerror(error)));
}

// Waits for the host. What the terminal sends reaches the host too; the rest is passed on.
int AwaitHost()
{
    int status = 0;
    while (waitpid(gHost, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

// Ends as the host did, by its signal too, but with no core of its own.
int EndAs(int status)
{
    if (WIFEXITED(status))
        return WEXITSTATUS(status);
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
    signal(WTERMSIG(status), SIG_DFL);
    raise(WTERMSIG(status));
    return 128 + WTERMSIG(status);
}

int Trace(Options &options)
{
    const std::string companion = FindCompanion();
    const int findings = memfd_create("findings", MFD_CLOEXEC);
    if (companion.empty() || companion.find_first_of(": ") != companion.npos)
        return Fail(kCannotTrace, "no companion library in a path that can be preloaded");
    if (findings < 0 || !PrepareOutput(options.output))
        return Fail(kCannotTrace, options.output + ": " + strerror(errno));
    SetVariables(options, companion, findings);
    gHost = fork();
    if (gHost == 0)
        Become(options.host);
    if (gHost < 0)
        return Fail(kCannotTrace, strerror(errno));
    signal(SIGINT, SIG_IGN);
    signal(SIGQUIT, SIG_IGN);
    signal(SIGTERM, PassOn);
    signal(SIGHUP, PassOn);
    const int status = AwaitHost();
    struct stat found = {};
    fstat(findings, &found);
    return options.errorExitCode >= 0 && found.st_size > 0 ? options.errorExitCode : EndAs(status);
}

} // namespace

int main(int count, char **arguments)
{
    Options options = ReadOptions(count, arguments);
    if (!options.mistake.empty())
        return Fail(kUsage, options.mistake + "\nTry 'wexelxi-trace --help'.");
    if (options.help)
        fputs(kHelp, stdout);
    else if (options.version)
        puts("wexelxi-trace " WEXELXI_VERSION);
    else
        return Trace(options);
    return EXIT_SUCCESS;
}
