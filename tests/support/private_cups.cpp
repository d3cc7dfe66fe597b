#include "support/private_cups.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr int kNoSuchProgram = 127;

// Starts a program with its output thrown away, which ends with this thread at the latest.
pid_t Start(const std::vector<std::string> &command)
{
    std::vector<char *> arguments;
    for (const std::string &word : command)
        arguments.push_back(const_cast<char *>(word.c_str()));
    arguments.push_back(nullptr);
    const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
    const pid_t pid = vfork();
    if (pid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        dup2(null, STDOUT_FILENO);
        dup2(null, STDERR_FILENO);
        execvp(arguments[0], arguments.data());
        _exit(kNoSuchProgram);
    }
    close(null);
    return pid;
}

bool Run(const std::vector<std::string> &command)
{
    const pid_t pid = Start(command);
    int status = -1;
    while (pid > 0 && waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    return status == 0;
}

} // namespace

PrivateCups::PrivateCups()
{
    for (const char *name :
         {"etc/ppd", "run", "spool", "cache", "own-tmp", "tmp", "client", "home"})
        fs::create_directories(folder.file(name));
    WriteConfiguration();
    setenv("CUPS_SERVER", Socket().c_str(), 1);
    setenv("CUPS_SERVERROOT", folder.file("client").c_str(), 1);
    setenv("HOME", folder.file("home").c_str(), 1);
    setenv("TMPDIR", folder.file("tmp").c_str(), 1);
    setenv("PATH", (std::string(getenv("PATH")) + ":/usr/sbin:/sbin").c_str(), 1);
    for (const char *name : {"CUPS_USER", "CUPS_ENCRYPTION", "PRINTER", "LPDEST"})
        unsetenv(name);
    pid_ = Start({"cupsd", "-f", "-c", folder.file("etc/cupsd.conf"), "-s",
                  folder.file("etc/cups-files.conf")});
    if (!AwaitSocket()) {
        Stop();
        whyNot_ = "cupsd does not start here: " + ReadWholeFile(folder.file("error_log"));
    }
}

PrivateCups::~PrivateCups()
{
    Stop();
}

void PrivateCups::WriteConfiguration() const
{
    const std::string everyone = "Order allow,deny\nAllow all\n";
    WriteWholeFile(folder.file("etc/cupsd.conf"),
                   "Listen " + Socket() +
                       "\nBrowsing Off\nWebInterface No\nDefaultAuthType None\n"
                       "<Location />\n" +
                       everyone + "</Location>\n<Location /admin>\n" + everyone +
                       "</Location>\n<Policy default>\n<Limit All>\n" + everyone +
                       "</Limit>\n</Policy>\n");
    WriteWholeFile(folder.file("etc/cups-files.conf"),
                   "FileDevice Yes\nServerRoot " + folder.file("etc") + "\nStateDir " +
                       folder.file("run") + "\nRequestRoot " + folder.file("spool") +
                       "\nCacheDir " + folder.file("cache") + "\nTempDir " +
                       folder.file("own-tmp") + "\nErrorLog " + folder.file("error_log") +
                       "\nAccessLog " + folder.file("access_log") + "\nPageLog " +
                       folder.file("page_log") + "\n");
}

bool PrivateCups::HasEnded()
{
    if (pid_ > 0 && waitpid(pid_, nullptr, WNOHANG) == pid_)
        pid_ = 0;
    return pid_ <= 0;
}

bool PrivateCups::AwaitSocket()
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    strncpy(address.sun_path, Socket().c_str(), sizeof address.sun_path - 1);
    for (int tries = 0; tries < 600 && !HasEnded(); tries++) {
        const int probe = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const auto *at = reinterpret_cast<const sockaddr *>(&address);
        const bool answers = connect(probe, at, sizeof address) == 0;
        close(probe);
        if (answers)
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return false;
}

bool PrivateCups::AddPrinter(const std::string &name, const std::string &ppd)
{
    std::vector<std::string> command = {"lpadmin", "-p", name, "-E", "-v", "file:///dev/null"};
    if (!ppd.empty())
        command.insert(command.end(), {"-P", ppd});
    return Run(command);
}

bool PrivateCups::SetDefault(const std::string &destination)
{
    return Run({"lpoptions", "-d", destination});
}

bool PrivateCups::SaveOptions(const std::string &destination,
                              const std::vector<std::string> &options)
{
    std::vector<std::string> command = {"lpoptions", "-p", destination};
    for (const std::string &option : options)
        command.insert(command.end(), {"-o", option});
    return Run(command);
}

bool PrivateCups::RemovePrinter(const std::string &name)
{
    return Run({"lpadmin", "-x", name});
}

void PrivateCups::ReplacePPD(const std::string &name, const std::string &bytes) const
{
    WriteWholeFile(folder.file("etc/ppd/" + name + ".ppd"), bytes);
}

void PrivateCups::Stop()
{
    if (HasEnded())
        return;
    kill(pid_, SIGTERM);
    for (int tries = 0; tries < 250 && !HasEnded(); tries++)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    if (HasEnded())
        return;
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
    pid_ = 0;
}

size_t PrivateCups::TemporaryFiles() const
{
    const fs::directory_iterator files(folder.file("tmp"));
    return static_cast<size_t>(std::distance(begin(files), end(files)));
}
