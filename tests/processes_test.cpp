// Commands through the real shell, the real `ps`, the processor text, and the system log.
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <thread>
#include <tuple>
#include <unistd.h>

#include "modules/processor_text.h"
#include "modules/shell_text.h"
#include "support/library.h"
#include "wexelxi.h"

namespace {

using wexelxi::ProcessorFacts;
using wexelxi::ResultOfCommand;
using wexelxi::ScanProcessorText;

constexpr uint32_t kBoth = WINEXEC_WAIT | WINEXEC_CAPTURE;

// What a command writes, "(null)" where no block comes back.
std::string Capture(const std::string &command, uint32_t result = 32)
{
    char *output = const_cast<char *>("untouched");
    EXPECT_EQ(WinExecEx(command.c_str(), 0, kBoth, &output), result);
    if (!output)
        return "(null)";
    const std::string text(output, GlobalSize(output) - 1);
    EXPECT_EQ(output[text.size()], '\0');
    GlobalFree(output);
    return text;
}

size_t FilesIn(const std::string &folder)
{
    return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

TEST(Commands, GiveTheStatusThatTheShellEndsWith)
{
    StartedLibrary library;
    const struct {
        const char *command;
        uint32_t flags, result;
    } rows[] = {
        {"true", WINEXEC_WAIT, 32},       {"exit 3", WINEXEC_WAIT, 768},
        {"exit 127", WINEXEC_WAIT, 2},    {"/no/such/command 2>&-", WINEXEC_WAIT, 2},
        {"kill -9 $$", WINEXEC_WAIT, 9},  {"kill -TERM $$", kBoth, SIGTERM},
        {"", WINEXEC_WAIT, 32},           {"exit 3", WINEXEC_CAPTURE, 32},
        {"/no/such/command 2>&-", 0, 32},
    };
    for (const auto &row : rows) {
        SetLastError(9);
        EXPECT_EQ(WinExecEx(row.command, 5, row.flags, nullptr), row.result) << row.command;
        EXPECT_EQ(GetLastError(), row.flags == kBoth ? 2u : 0u) << row.command;
    }
    EXPECT_EQ(ResultOfCommand(0x7F), 11u);
    EXPECT_EQ(ResultOfCommand(-1), 0xFFFFFFFFu);
    char *output = const_cast<char *>("untouched");
    EXPECT_EQ(WinExecEx("true", 0, WINEXEC_CAPTURE, &output), 32u);
    EXPECT_STREQ(output, "untouched");
}

TEST(Commands, AreCaughtWholeAndLeaveNoFile)
{
    StartedLibrary library;
    const size_t files = FilesIn(library.folder.path());
    EXPECT_EQ(Capture("echo text"), "text\n");
    EXPECT_EQ(GetLastError(), 0u);
    EXPECT_EQ(Capture("true"), "(null)");
    EXPECT_EQ(Capture("echo lost; exit 3", 768), "(null)")
        << "the file is that of the last command";
    EXPECT_EQ(Capture("printf 'a\\0b'"), std::string("a\0b", 3));
    const std::string many = Capture("head -c 5000000 /dev/zero | tr '\\0' x");
    EXPECT_EQ(many, std::string(5000000, 'x'));
    EXPECT_EQ(FilesIn(library.folder.path()), files);
    EXPECT_EQ(WinExecEx("echo stays", 0, kBoth, nullptr), 32u);
    EXPECT_EQ(FilesIn(library.folder.path()), files + 1);
    SetWexelXiFolder("/no/such/folder");
    char *output = const_cast<char *>("untouched");
    EXPECT_EQ(WinExecEx("exec 2>&-; true", 0, kBoth, &output), 512u);
    EXPECT_EQ(output, nullptr);
}

TEST(Commands, WorkInAnyFolderAtAnyLength)
{
    StartedLibrary library;
    for (const std::string &name : {std::string("a b"), std::string("it's $HOME \"`ls`\""),
                                    std::string(250, 'd') + "/" + std::string(250, 'e') + "/" +
                                        std::string(250, 'f') + "/" + std::string(250, 'g')}) {
        const std::string folder = library.folder.file(name);
        std::filesystem::create_directories(folder);
        SetWexelXiFolder(folder.c_str());
        EXPECT_EQ(Capture("echo text"), "text\n") << name;
        EXPECT_EQ(testForProgOpen_Unix("neither here nor there but ps"), 1);
        EXPECT_EQ(FilesIn(folder), 0u);
    }
    for (const size_t length : {131060u, 131071u, 131072u, 1000000u, 3000000u}) {
        const std::string start = "x=1; echo $0 $# $x #";
        const std::string command = start + std::string(length - start.size(), 'c');
        EXPECT_EQ(Capture(command + "\necho"), "\n") << length;
        EXPECT_EQ(WinExecEx((command + "\nexit 7").c_str(), 0, WINEXEC_WAIT, nullptr), 7u * 256);
    }
    EXPECT_EQ(Capture("printf '" + std::string(1000000, 'y') + "%s' \"$0$#\""),
              std::string(1000000, 'y') + "sh0");
}

void Handler(int) {}

TEST(Commands, GiveTheSignalsBackAndResetThemInTheChild)
{
    StartedLibrary library;
    struct sigaction mine = {};
    mine.sa_handler = Handler;
    mine.sa_flags = SA_RESTART | SA_NODEFER;
    sigaction(SIGINT, &mine, nullptr);
    signal(SIGQUIT, SIG_IGN);
    signal(SIGHUP, SIG_IGN);
    const std::string status = Capture("grep ^SigIgn: /proc/self/status");
    const uint64_t ignored = std::stoull(status.substr(8), nullptr, 16);
    EXPECT_EQ(ignored & (1u << (SIGINT - 1) | 1u << (SIGQUIT - 1) | 1u << (SIGHUP - 1)), 0u);
    EXPECT_EQ(WinExecEx("kill -INT $PPID; kill -QUIT $PPID", 0, WINEXEC_WAIT, nullptr), 32u);
    WinExec("exit 3", 0);
    struct sigaction after = {};
    sigaction(SIGINT, nullptr, &after);
    EXPECT_EQ(after.sa_handler, &Handler);
    EXPECT_EQ(after.sa_flags & (SA_RESTART | SA_NODEFER), SA_RESTART | SA_NODEFER);
    sigaction(SIGQUIT, nullptr, &after);
    EXPECT_EQ(after.sa_handler, SIG_IGN);
}

TEST(Commands, InheritTheHostsDescriptorsOnly)
{
    StartedLibrary library;
    const int hosts = open("/dev/null", O_RDONLY);
    ASSERT_GE(hosts, 0);
    const size_t before = OpenDescriptors();
    const std::string plain = Capture("ls /proc/self/fd");
    EXPECT_NE(plain.find("\n" + std::to_string(hosts) + "\n"), std::string::npos) << plain;
    HANDLE file = CreateFile(const_cast<char *>(library.folder.file("held").c_str()), GENERIC_WRITE,
                             0, nullptr, CREATE_ALWAYS, 0, nullptr);
    RegisterEventSource(nullptr, "test");
    EXPECT_EQ(Capture("ls /proc/self/fd"), plain);
    EXPECT_EQ(Capture("ls /proc/self/fd #" + std::string(200000, 'c') + "\n true | cat"), "(null)");
    DeregisterEventSource(nullptr);
    CloseHandle(file);
    EXPECT_EQ(OpenDescriptors(), before);
    close(hosts);
}

TEST(Commands, ReapTheHostsOtherChildren)
{
    StartedLibrary library;
    const pid_t ended = fork();
    if (ended == 0)
        _exit(5);
    siginfo_t unused;
    waitid(P_PID, static_cast<id_t>(ended), &unused, WEXITED | WNOWAIT);
    const pid_t living = fork();
    if (living == 0) {
        pause();
        _exit(0);
    }
    EXPECT_EQ(WinExecEx("sleep 0.1; exit 4", 0, WINEXEC_WAIT, nullptr), 1024u);
    EXPECT_EQ(waitpid(ended, nullptr, WNOHANG), -1) << "its status is lost";
    EXPECT_EQ(waitpid(living, nullptr, WNOHANG), 0);
    kill(living, SIGKILL);
    waitpid(living, nullptr, 0);
    signal(SIGCHLD, SIG_IGN); // the platform reaps for itself
    EXPECT_EQ(WinExecEx("exit 4", 0, WINEXEC_WAIT, nullptr), 0xFFFFFFFFu);
}

TEST(Commands, HoldTheLockUntilTheyEnd)
{
    StartedLibrary library;
    const std::string started = library.folder.file("started");
    std::thread command([&] {
        EXPECT_EQ(
            WinExecEx(("touch '" + started + "'; sleep 0.3").c_str(), 0, WINEXEC_WAIT, nullptr),
            32u);
    });
    while (!FileExists(started))
        usleep(1000);
    EXPECT_EQ(pthread_mutex_trylock(static_cast<pthread_mutex_t *>(gWexelxiCriticalSection)),
              EBUSY);
    command.join();
}

TEST(RunningPrograms, AreFoundByTheirNames)
{
    StartedLibrary library;
    prctl(PR_SET_NAME, "qzjx7");
    SetLastError(9);
    EXPECT_EQ(testForProgOpen_Unix("/opt/Qzjx7/qzjx7.exe"), 1);
    EXPECT_EQ(testForProgOpen_Unix("qzj"), 0) << "the text holds the name, not the other way round";
    EXPECT_EQ(testForProgOpen_Unix(""), 0);
    EXPECT_EQ(GetLastError(), 9u);
    EXPECT_FALSE(FileExists(library.folder.file("psrep")));
    SetWexelXiFolder("/no/such/folder");
    EXPECT_EQ(testForProgOpen_Unix("/opt/qzjx7"), 0);
}

TEST(ProcessorText, IsReadLineByLine)
{
    const struct {
        std::string text;
        uint32_t type, level, stepping;
        bool hasEntries;
    } rows[] = {{"no colon\n", 0, 0, 0, false},
                {"model name: x\n", 0, 0, 0, true},
                {"cpu family\t: 6\nstepping\t: 9\n", 586, 5, 9, true},
                {"CPU FAMILY : 3", 386, 3, 0, true},
                {"cpu family: 4\n", 486, 4, 0, true},
                {"cpu family: 64\n", 586, 5, 0, true},
                {"cpu family: 3\ncpu family: 15\ncpu family: 23\ncpu family: 7\n", 386, 3, 0, true},
                {" cpu family: 6\n", 0, 0, 0, true},
                {"cpu family:\nstepping: 7\nstepping: 65538x\nstepping: unknown\n", 0, 0, 2, true},
                {"Steppings: -1", 0, 0, 65535, true},
                // A line that no buffer of 4096 bytes takes goes on as a line of its own.
                {std::string(4095, 'x') + "cpu family: 6\n", 586, 5, 0, true},
                {std::string(4094, 'x') + "cpu family: 6\n", 0, 0, 0, true}};
    for (const auto &[text, type, level, stepping, hasEntries] : rows) {
        const ProcessorFacts facts = ScanProcessorText(text);
        EXPECT_EQ(std::tuple(facts.type, facts.level, facts.stepping, facts.hasEntries),
                  std::tuple(type, level, stepping, hasEntries))
            << text;
    }
}

TEST(SystemInformation, NamesMachineUserAndProcessors)
{
    SetLastError(9);
    char expected[256], name[256] = "";
    gethostname(expected, sizeof expected);
    uint32_t size = sizeof name;
    EXPECT_EQ(GetComputerName(name, &size), 1);
    EXPECT_STREQ(name, expected);
    EXPECT_EQ(size, strlen(expected));
    EXPECT_EQ(GetComputerName(name, &size), 0) << "no room for the NUL";
    EXPECT_EQ(size, strlen(expected));

    size = sizeof name;
    ASSERT_EQ(GetUserName(name, &size), 1);
    EXPECT_EQ(size, strlen(name));
    EXPECT_EQ(GetUserName(name, &size), 0);
    EXPECT_STREQ(name, "");
    EXPECT_EQ(GetUserName(nullptr, &size) + GetUserName(name, nullptr), 0);
    EXPECT_EQ(GetLastError(), 9u);

    SYSTEM_INFO info;
    memset(&info, 0x55, sizeof info);
    GetSystemInfo(&info);
    EXPECT_EQ(GetLastError(), 0u);
    EXPECT_EQ(info.dwNumberOfProcessors, static_cast<uint32_t>(sysconf(_SC_NPROCESSORS_ONLN)));
    EXPECT_LE(info.wProcessorLevel, 5);
}

// A datagram socket at /dev/log, in a mount namespace that ends with this test's process; -1 where
// the machine forbids that.
int OpenPrivateLog()
{
    if (unshare(CLONE_NEWNS) != 0 && unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
        return -1;
    if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount("log", "/dev", "tmpfs", 0, nullptr) != 0)
        return -1;
    const int log = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    strcpy(address.sun_path, "/dev/log");
    return bind(log, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0 ? log : -1;
}

TEST(EventLog, ReachesTheSystemLog)
{
    const int log = OpenPrivateLog();
    if (log < 0)
        GTEST_SKIP() << "this machine gives no private mount namespace";
    std::string source = "report";
    SetLastError(9);
    EXPECT_EQ(RegisterEventSource("server", source.c_str()), reinterpret_cast<HANDLE>(1));
    source.assign("XXXXXX"); // the library has a copy
    const char *strings[] = {"100%s ", "done", nullptr};
    EXPECT_EQ(ReportEvent(nullptr, 1, 2, 3, nullptr, 3, 0, strings, nullptr), 1);
    EXPECT_EQ(ReportEvent(nullptr, 1, 2, 3, nullptr, 0, 0, nullptr, nullptr), 1);
    EXPECT_EQ(DeregisterEventSource(nullptr), 1);
    EXPECT_EQ(GetLastError(), 9u);
    for (const char *expected : {"report: 100%s done", "report: "}) {
        char message[1000] = "";
        EXPECT_GT(recv(log, message, sizeof message - 1, MSG_DONTWAIT), 0);
        EXPECT_EQ(strncmp(message, "<14>", 4), 0) << message; // the time follows
        EXPECT_STREQ(strstr(message, "report"), expected);
    }
    close(log);
}

} // namespace
