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
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <thread>
#include <tuple>
#include <unistd.h>

#include "modules/processor_text.h"
#include "modules/shell_text.h"
#include "support/last_error.h"
#include "support/library.h"
#include "wexelxi.h"

namespace fs = std::filesystem;

namespace {

constexpr uint32_t kBoth = WINEXEC_WAIT | WINEXEC_CAPTURE;
constexpr uint32_t kNoStatus = 0xFFFFFFFF;

// What a command writes, "(null)" where no block comes back.
std::string Capture(const std::string &command, uint32_t result = 32,
                    uint32_t error = ERROR_SUCCESS)
{
    char *output = const_cast<char *>("untouched");
    EXPECT_OUTCOME(WinExecEx(command.c_str(), 0, kBoth, &output), result, error) << command;
    if (!output)
        return "(null)";
    const std::string text(output, GlobalSize(output) - 1);
    EXPECT_EQ(output[text.size()], '\0');
    GlobalFree(output);
    return text;
}

size_t FilesIn(const std::string &folder)
{
    return static_cast<size_t>(std::distance(fs::directory_iterator(folder), {}));
}

TEST(Commands, GiveTheStatusThatTheShellEndsWith)
{
    StartedLibrary library;
    const struct {
        const char *command;
        uint32_t flags, result, error;
    } rows[] = {
        {"true", WINEXEC_WAIT, 32, 0},
        {"exit 3", WINEXEC_WAIT, 768, 0},
        {"exit 127", WINEXEC_WAIT, 2, 0},
        {"/no/such/command 2>&-", WINEXEC_WAIT, 2, 0},
        {"kill -9 $$", WINEXEC_WAIT, 9, 0},
        {"kill -TERM $$", kBoth, SIGTERM, ERROR_FILE_NOT_FOUND}, // from the search for a name
        {"", WINEXEC_WAIT, 32, 0},
        {"exit 3", WINEXEC_CAPTURE, 32, 0},
        {"/no/such/command 2>&-", 0, 32, 0},
    };
    for (const auto &row : rows) {
        EXPECT_OUTCOME(WinExecEx(row.command, 5, row.flags, nullptr), row.result, row.error)
            << row.command;
    }
    EXPECT_OUTCOME(WinExec("exit 3", 0), 32u, ERROR_SUCCESS);
    EXPECT_EQ(wexelxi::ResultOfCommand(0x7F), 11u);
    EXPECT_EQ(wexelxi::ResultOfCommand(-1), kNoStatus);
    char *output = const_cast<char *>("untouched");
    EXPECT_EQ(WinExecEx("true", 0, WINEXEC_CAPTURE, &output), 32u);
    EXPECT_STREQ(output, "untouched");
}

TEST(Commands, AreCaughtWholeAndLeaveNoFile)
{
    StartedLibrary library;
    const size_t files = FilesIn(library.folder.path());
    const struct {
        const char *command;
        std::string output;
        uint32_t result, error;
    } rows[] = {
        {"echo text", "text\n", 32, 0},
        {"true", "(null)", 32, 0},
        {"echo lost; exit 3", "(null)", 768, 0}, // the file is that of the last command
        {"printf 'a\\0b'", std::string("a\0b", 3), 32, 0},
        {"head -c 5000000 /dev/zero | tr '\\0' x", std::string(5000000, 'x'), 32, 0},
        {"{ echo; rm \"$WEXELXIDIR\"/wexec*; }", "(null)", 32, ERROR_FILE_NOT_FOUND},
    };
    for (const auto &row : rows)
        EXPECT_EQ(Capture(row.command, row.result, row.error), row.output) << row.command;
    EXPECT_EQ(FilesIn(library.folder.path()), files);
    EXPECT_EQ(WinExecEx("echo stays", 0, kBoth, nullptr), 32u);
    EXPECT_EQ(FilesIn(library.folder.path()), files + 1);
    SetWexelXiFolder("/no/such/folder");
    EXPECT_EQ(Capture("exec 2>&-; true", 512, ERROR_FILE_NOT_FOUND), "(null)");
}

// Links stand at the names that the next captures would have, some to a file and some to nothing.
TEST(Commands, AreNotCaughtThroughALink)
{
    StartedLibrary library;
    const std::string kept = library.folder.file("kept");
    WriteWholeFile(kept, "kept");
    const uint32_t first = GetTickCount();
    for (uint32_t i = 0; i < 3000; i++) {
        char name[20];
        snprintf(name, sizeof name, "wexec%04x.tmp", (first + i) & 0xFFFF);
        ASSERT_EQ(symlink(i % 2 ? kept.c_str() : "none", library.folder.file(name).c_str()), 0);
    }
    const size_t files = FilesIn(library.folder.path());
    EXPECT_EQ(Capture("echo text"), "text\n");
    EXPECT_EQ(ReadWholeFile(kept), "kept");
    EXPECT_EQ(FilesIn(library.folder.path()), files);
}

TEST(Commands, WorkInAnyFolder)
{
    StartedLibrary library;
    for (const std::string &name : {std::string("a b"), std::string("it's $HOME \"`ls`\""),
                                    std::string(250, 'd') + "/" + std::string(250, 'e') + "/" +
                                        std::string(250, 'f') + "/" + std::string(250, 'g')}) {
        const std::string folder = library.folder.file(name);
        fs::create_directories(folder);
        SetWexelXiFolder(folder.c_str());
        EXPECT_EQ(Capture("echo text"), "text\n") << name;
        EXPECT_EQ(testForProgOpen_Unix("neither here nor there but ps"), 1);
        EXPECT_EQ(FilesIn(folder), 0u);
    }
}

TEST(Commands, EndWith127BeyondTheLongestArgument)
{
    StartedLibrary library;
    for (const auto &[length, result] : {std::pair(131071u, 3u * 256), std::pair(131072u, 2u)}) {
        const std::string command = "exit 3 #" + std::string(length - 8, 'c');
        EXPECT_EQ(WinExecEx(command.c_str(), 0, WINEXEC_WAIT, nullptr), result) << length;
    }
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
    const auto bit = [](int number) { return uint64_t{1} << (number - 1); };
    for (const auto &[host, isIgnored] : {std::pair(SIG_DFL, false), std::pair(SIG_IGN, true)}) {
        signal(SIGPIPE, host);
        const std::string status = Capture("grep ^SigIgn: /proc/self/status");
        const uint64_t ignored = std::stoull(status.substr(8), nullptr, 16);
        EXPECT_EQ(ignored & (bit(SIGINT) | bit(SIGQUIT) | bit(SIGHUP)), 0u);
        EXPECT_EQ((ignored & bit(SIGPIPE)) != 0, isIgnored) << "as the host has chosen";
    }
    EXPECT_EQ(WinExecEx("kill -INT $PPID; kill -QUIT $PPID", 0, WINEXEC_WAIT, nullptr), 32u);
    WinExec("exit 3", 0);
    struct sigaction after = {};
    sigaction(SIGINT, nullptr, &after);
    EXPECT_EQ(after.sa_handler, &Handler);
    EXPECT_EQ(after.sa_flags & (SA_RESTART | SA_NODEFER), SA_RESTART | SA_NODEFER);
    sigaction(SIGQUIT, nullptr, &after);
    EXPECT_EQ(after.sa_handler, SIG_IGN);
}

TEST(Commands, AreWaitedForThroughSignals)
{
    StartedLibrary library;
    const size_t files = FilesIn(library.folder.path());
    struct sigaction interrupts = {};
    interrupts.sa_handler = Handler; // and no SA_RESTART
    sigaction(SIGALRM, &interrupts, nullptr);
    const itimerval often = {{0, 10000}, {0, 10000}}, never = {};
    setitimer(ITIMER_REAL, &often, nullptr);
    EXPECT_EQ(Capture("sleep 0.2; echo text"), "text\n");
    setitimer(ITIMER_REAL, &never, nullptr);
    EXPECT_EQ(FilesIn(library.folder.path()), files);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "no process is left over";
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
    EXPECT_EQ(WinExecEx("exit 4", 0, WINEXEC_WAIT, nullptr), kNoStatus);
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

// What somebody else put at the name of the list of programs is not written to.
TEST(RunningPrograms, AreAskedForInAFileOfOurOwn)
{
    StartedLibrary library;
    const std::string list = library.folder.file("psrep"), kept = library.folder.file("kept");
    WriteWholeFile(kept, "kept");
    for (const auto put : {symlink, link}) {
        ASSERT_EQ(put(kept.c_str(), list.c_str()), 0);
        EXPECT_OUTCOME(testForProgOpen_Unix("sh and ps"), 1, kUnchanged);
        EXPECT_EQ(ReadWholeFile(kept), "kept");
        EXPECT_FALSE(FileExists(list));
    }
    fs::create_directory(list);
    EXPECT_OUTCOME(testForProgOpen_Unix("sh and ps"), 0, kUnchanged);
    EXPECT_TRUE(FileExists(list));
}

TEST(RunningPrograms, AreFoundByTheirNames)
{
    StartedLibrary library;
    prctl(PR_SET_NAME, "qzjx7");
    const std::pair<const char *, int32_t> rows[] = {
        {"/opt/Qzjx7/qzjx7.exe", 1},
        {"qzj", 0},  // the text holds the name, not the other way round
        {"qzjx", 0}, // the whole name
        {"qzjx8", 0},
        {"", 0}};
    for (const auto &row : rows)
        EXPECT_OUTCOME(testForProgOpen_Unix(row.first), row.second, kUnchanged) << row.first;
    EXPECT_FALSE(FileExists(library.folder.file("psrep")));
    setenv("PATH", "/no/such/folder", 1); // nor such a ps
    EXPECT_OUTCOME(testForProgOpen_Unix("/opt/qzjx7"), 0, kUnchanged);
    SetWexelXiFolder("/no/such/folder");
    EXPECT_OUTCOME(testForProgOpen_Unix("/opt/qzjx7"), 0, kUnchanged);
}

TEST(RunningPrograms, AreListedOneALine)
{
    const std::pair<const char *, const char *> rows[] = {
        {"sh\n", "sh"}, {"sh             \n", "sh"}, {"a b \n", "a b"}, {"\n", ""}, {"", ""}};
    for (const auto &[line, name] : rows)
        EXPECT_EQ(wexelxi::ProcessName(line), name) << line;
}

TEST(ProcessorText, IsReadLineByLine)
{
    const struct {
        std::vector<const char *> lines;
        uint32_t type, level, stepping;
        bool hasEntries;
    } rows[] = {{{"no colon\n"}, 0, 0, 0, false},
                {{"model name: x\n"}, 0, 0, 0, true},
                {{"cpu family\t: 6\n", "stepping\t: 9\n"}, 586, 5, 9, true},
                {{"CPU FAMILY : 3"}, 386, 3, 0, true},
                {{"cpu family:   4\n"}, 486, 4, 0, true},
                {{"cpu family: 5\n"}, 586, 5, 0, true},
                {{"cpu family: 64\n"}, 586, 5, 0, true},
                {{"cpu family: 3\n", "cpu family: 15\n", "cpu family: 2", "cpu family: 7\n"},
                 386,
                 3,
                 0,
                 true},
                {{" cpu family: 6\n", "cpu famil: 6\n"}, 0, 0, 0, true},
                {{"cpu family:\n", "stepping: 7\n", "stepping: 65538x\n", "stepping: unknown\n"},
                 0,
                 0,
                 2,
                 true},
                {{"Steppings: -1"}, 0, 0, 65535, true}};
    for (const auto &[lines, type, level, stepping, hasEntries] : rows) {
        wexelxi::ProcessorFacts facts;
        for (const char *line : lines)
            wexelxi::NoteProcessorLine(line, facts);
        EXPECT_EQ(std::tuple(facts.type, facts.level, facts.stepping, facts.hasEntries),
                  std::tuple(type, level, stepping, hasEntries))
            << lines.front();
    }
}

TEST(SystemInformation, NamesTheMachine)
{
    char expected[256], name[256] = "";
    gethostname(expected, sizeof expected);
    uint32_t size = sizeof name;
    EXPECT_OUTCOME(GetComputerName(name, &size), 1, kUnchanged);
    EXPECT_STREQ(name, expected);
    EXPECT_EQ(size, strlen(expected));
    EXPECT_OUTCOME(GetComputerName(name, &size), 0, kUnchanged) << "no room for the NUL";
    EXPECT_EQ(size, strlen(expected));
}

TEST(SystemInformation, NamesTheUser)
{
    char name[256] = "";
    uint32_t size = sizeof name;
    ASSERT_TRUE(
        CheckOutcome("GetUserName", TRUE, kUnchanged, [&] { return GetUserName(name, &size); }));
    const std::string expected = name;
    EXPECT_EQ(size, expected.size());
    for (const auto &[room, fits] : {std::pair(size, BOOL{FALSE}), {size + 1, BOOL{TRUE}}}) {
        uint32_t given = room;
        strcpy(name, "stale");
        EXPECT_OUTCOME(GetUserName(name, &given), fits, kUnchanged);
        EXPECT_EQ(name, fits ? expected : "");
        EXPECT_EQ(given, expected.size());
    }
    EXPECT_OUTCOME(GetUserName(nullptr, &size), FALSE, kUnchanged);
    EXPECT_OUTCOME(GetUserName(name, nullptr), FALSE, kUnchanged);
}

TEST(SystemInformation, TellsTheProcessorsAndTheVersion)
{
    SYSTEM_INFO info;
    memset(&info, 0x55, sizeof info);
    EXPECT_LAST_ERROR(GetSystemInfo(&info), ERROR_SUCCESS);
    EXPECT_EQ(info.dwNumberOfProcessors, static_cast<uint32_t>(sysconf(_SC_NPROCESSORS_ONLN)));
    EXPECT_LE(info.wProcessorLevel, 5);
    gVersion = -2;
    EXPECT_OUTCOME(GetVersion(), 0xFFFFFFFEu, kUnchanged);
    EXPECT_OUTCOME(WinHelp(nullptr, "file", 1, 2), 0, ERROR_SUCCESS);
    EXPECT_OUTCOME(SystemParametersInfo(1, 2, nullptr, 3), 0, ERROR_SUCCESS);
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
    EXPECT_OUTCOME(RegisterEventSource("server", source.c_str()), reinterpret_cast<HANDLE>(1),
                   kUnchanged);
    source.assign("XXXXXX"); // the library has a copy
    const char *strings[] = {"100%s ", "done", nullptr, "beyond the count"};
    EXPECT_OUTCOME(ReportEvent(nullptr, 1, 2, 3, nullptr, 3, 0, strings, nullptr), TRUE,
                   kUnchanged);
    EXPECT_EQ(ReportEvent(nullptr, 1, 2, 3, nullptr, 0, 0, nullptr, nullptr), TRUE);
    const size_t open = OpenDescriptors();
    EXPECT_OUTCOME(DeregisterEventSource(nullptr), TRUE, kUnchanged);
    EXPECT_EQ(OpenDescriptors(), open - 1);
    for (const char *expected : {"report: 100%s done", "report: "}) {
        char message[1000] = "";
        EXPECT_GT(recv(log, message, sizeof message - 1, MSG_DONTWAIT), 0);
        EXPECT_EQ(strncmp(message, "<14>", 4), 0) << message; // the time follows
        EXPECT_STREQ(strstr(message, "report"), expected);
    }
    close(log);
}

} // namespace
