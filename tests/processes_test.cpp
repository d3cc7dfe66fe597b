// Commands through the real shell, the list of programs, the processor text, and the system log.
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <sys/wait.h>
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

struct Outcome {
    std::string command;
    uint32_t flags = kBoth, result = 32, error = ERROR_SUCCESS;
};

// What a command writes, "(null)" where no block comes back.
std::string OutputOf(const Outcome &row)
{
    char *output = const_cast<char *>("untouched");
    EXPECT_OUTCOME(WinExecEx(row.command.c_str(), 5, row.flags, &output), row.result, row.error)
        << row.command;
    if (!output || row.flags != kBoth)
        return output ? output : "(null)";
    const std::string text(output, GlobalSize(output) - 1);
    EXPECT_EQ(output[text.size()], '\0');
    GlobalFree(output);
    return text;
}

size_t FilesIn(const std::string &folder)
{
    return static_cast<size_t>(std::distance(fs::directory_iterator(folder), {}));
}

TEST(Commands, GiveTheirStatusAndWhatTheyWrite)
{
    StartedLibrary library;
    const std::string kept = library.folder.file("kept");
    WriteWholeFile(kept, "kept");
    const size_t files = FilesIn(library.folder.path());
    const std::string none = "(null)", longest = "exit 3 #" + std::string(131063, 'c');
    const std::string many(5000000, 'x'), atFiles = "for f in $WEXELXIDIR/wexec*; do ";
    const struct {
        Outcome outcome;
        std::string output;
    } rows[] = {
        {{"true", WINEXEC_WAIT}, "untouched"},
        {{"", WINEXEC_WAIT}, "untouched"},
        {{"exit 3", WINEXEC_WAIT, 768}, "untouched"},
        {{"exit 127", WINEXEC_WAIT, 2}, "untouched"},
        {{"/no/such/command 2>&-", WINEXEC_WAIT, 2}, "untouched"},
        {{"kill -9 $$", WINEXEC_WAIT, SIGKILL}, "untouched"},
        {{longest, WINEXEC_WAIT, 768}, "untouched"}, // as long as an argument can be
        {{longest + "c", WINEXEC_WAIT, 2}, "untouched"},
        {{"exit 3", 0}, "untouched"},
        {{"/no/such/command 2>&-", 0}, "untouched"},
        {{"true", WINEXEC_CAPTURE}, "untouched"},
        {{"echo text"}, "text\n"},
        {{"true"}, none},
        {{"echo lost; exit 3", kBoth, 768}, none}, // the file is the last command's
        {{"printf 'a\\0b'"}, std::string("a\0b", 3)},
        {{"head -c 5000000 /dev/zero | tr '\\0' x"}, many},
        {{"truncate -s 2G /dev/stdout", kBoth, 32, ERROR_NOT_ENOUGH_MEMORY}, none},
        {{atFiles + "rm $f; done", kBoth, 32, ERROR_FILE_NOT_FOUND}, none},
        {{atFiles + "rm $f; mkfifo $f; done"}, none},
    };
    for (const auto &[outcome, output] : rows)
        EXPECT_EQ(OutputOf(outcome), output) << outcome.command;
    EXPECT_EQ(FilesIn(library.folder.path()), files);
    // What cannot be opened or is not asked for stays.
    EXPECT_EQ(OutputOf({atFiles + "ln -sf kept $f; done", kBoth, 32, ERROR_GEN_FAILURE}), none);
    EXPECT_OUTCOME(WinExecEx("kill -TERM $$", 0, kBoth, nullptr), SIGTERM, ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(FilesIn(library.folder.path()), files + 2);
    EXPECT_EQ(ReadWholeFile(kept), "kept");
    EXPECT_OUTCOME(WinExec("exit 3", 0), 32u, ERROR_SUCCESS);
    EXPECT_EQ(wexelxi::ResultOfCommand(0x7F), 11u);
    SetWexelXiFolder("/no/such/folder");
    EXPECT_EQ(OutputOf({"exec 2>&-; true", kBoth, 512, ERROR_FILE_NOT_FOUND}), none);
}

TEST(Commands, WorkInAnyFolder)
{
    StartedLibrary library;
    const std::string longName(250, 'd');
    for (const std::string &name : {std::string("a b"), std::string("it's $HOME \"`ls`\""),
                                    longName + "/" + longName + "/" + longName}) {
        const std::string folder = library.folder.file(name);
        fs::create_directories(folder);
        SetWexelXiFolder(folder.c_str());
        EXPECT_EQ(OutputOf({"echo text"}), "text\n") << name;
        EXPECT_OUTCOME(testForProgOpen_Unix("neither here nor there but ps"), 1, kUnchanged);
        EXPECT_EQ(FilesIn(folder), 0u);
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
        const std::string status = OutputOf({"grep ^SigIgn: /proc/self/status"});
        const uint64_t ignored = std::stoull(status.substr(8), nullptr, 16);
        EXPECT_EQ(ignored & (bit(SIGINT) | bit(SIGQUIT) | bit(SIGHUP)), 0u);
        EXPECT_EQ((ignored & bit(SIGPIPE)) != 0, isIgnored) << "as the host has chosen";
    }
    mine.sa_flags = 0; // and no SA_RESTART
    sigaction(SIGALRM, &mine, nullptr);
    const itimerval often = {{0, 10000}, {0, 10000}}, never = {};
    setitimer(ITIMER_REAL, &often, nullptr);
    EXPECT_EQ(OutputOf({"kill -INT $PPID; kill -QUIT $PPID; sleep 0.2; echo text"}), "text\n");
    setitimer(ITIMER_REAL, &never, nullptr);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "no process is left over";
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
    const size_t before = OpenDescriptors();
    const std::string plain = OutputOf({"ls /proc/self/fd"});
    EXPECT_NE(plain.find("\n" + std::to_string(hosts) + "\n"), std::string::npos) << plain;
    HANDLE file = CreateFile(library.folder.file("held").data(), GENERIC_WRITE, 0, nullptr,
                             CREATE_ALWAYS, 0, nullptr);
    RegisterEventSource(nullptr, "test");
    EXPECT_EQ(OutputOf({"ls /proc/self/fd"}), plain);
    DeregisterEventSource(nullptr);
    CloseHandle(file);
    EXPECT_EQ(OpenDescriptors(), before);
}

TEST(Commands, ReapTheHostsOtherChildren)
{
    StartedLibrary library;
    const pid_t ended = fork();
    if (ended == 0)
        _exit(5);
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

// A `ps` of our own, in the only folder that is searched.
void PutPs(const ScratchFolder &folder, const std::string &names)
{
    WriteWholeFile(folder.file("names"), "COMMAND\n" + names);
    WriteWholeFile(folder.file("ps"),
                   "#!/bin/sh\n[ \"$*\" = '-eo %c' ] && exec /bin/cat $WEXELXIDIR/names\n");
    chmod(folder.file("ps").c_str(), 0700);
    setenv("PATH", folder.path().c_str(), 1);
}

TEST(RunningPrograms, AreFoundByTheirNames)
{
    StartedLibrary library;
    const std::string list = library.folder.file("psrep");
    const std::string longest(251, 'l'); // of a line, its end and the NUL
    WriteWholeFile(library.folder.file("kept"), "kept");
    PutPs(library.folder, "sh\n\nqzjx7   \na b \n  \n" + longest + "\nlast");
    const std::pair<std::string, int32_t> rows[] = {
        {"/opt/Qzjx7/qzjx7.exe", 1},
        {"qzjx", 0}, // the text holds the whole name, not the other way round
        {"qzjx7", 1},
        {"a b", 1},
        {"a ", 0},
        {"COMMAND", 0},
        {"las", 1}, // the last line's end is missing
        {longest, 1},
        {longest.substr(1), 0},
        {"", 0}};
    for (const auto &[text, isFound] : rows) {
        (void)!symlink("kept", list.c_str()); // somebody else's, which is not written to
        EXPECT_OUTCOME(testForProgOpen_Unix(text.c_str()), isFound, kUnchanged) << text;
        EXPECT_FALSE(FileExists(list));
    }
    EXPECT_EQ(ReadWholeFile(library.folder.file("kept")), "kept");
    fs::create_directory(list);
    EXPECT_OUTCOME(testForProgOpen_Unix("qzjx7"), 0, kUnchanged);
    fs::remove(list);
    setenv("PATH", "/no/such/folder", 1); // nor such a ps
    EXPECT_OUTCOME(testForProgOpen_Unix("qzjx7"), 0, kUnchanged);
    SetWexelXiFolder("/no/such/folder");
    EXPECT_OUTCOME(testForProgOpen_Unix("qzjx7"), 0, kUnchanged);
}

TEST(ProcessorText, IsReadLineByLine)
{
    const struct {
        const char *text;
        wexelxi::ProcessorFacts expected;
    } rows[] = {
        {"no colon\n", {.hasEntries = false}},
        {"model name: x\n", {.hasEntries = true}},
        {"cpu family\t: 6\nstepping\t: 9\n", {true, 586, 5, 9}},
        {"CPU FAMILY : 3", {true, 386, 3}},
        {"cpu family:   4\n", {true, 486, 4}},
        {"cpu family: 5\n", {true, 586, 5}},
        {"cpu family: 64\n", {true, 586, 5}},
        {"cpu family: 3\ncpu family: 15\ncpu family: 2\ncpu family: 7\n", {true, 386, 3}},
        {" cpu family: 6\ncpu famil: 6\n", {.hasEntries = true}},
        {"cpu family:\nstepping: 7\nstepping: 65538x\nstepping: unknown\n", {true, 0, 0, 2}},
        {"Steppings: -1", {true, 0, 0, 65535}},
    };
    for (const auto &[text, expected] : rows) {
        wexelxi::ProcessorFacts facts;
        for (const char *line = text; *line; line = nextLine(line))
            wexelxi::NoteProcessorLine(std::string(line, nextLine(line)).c_str(), facts);
        EXPECT_EQ(facts.hasEntries, expected.hasEntries) << text;
        EXPECT_EQ(facts.type, expected.type) << text;
        EXPECT_EQ(facts.level, expected.level) << text;
        EXPECT_EQ(facts.stepping, expected.stepping) << text;
    }
}

TEST(SystemInformation, NamesTheMachineAndTheUser)
{
    char host[256], name[256] = "";
    gethostname(host, sizeof host);
    uint32_t size = sizeof name;
    EXPECT_OUTCOME(GetComputerName(name, &size), 1, kUnchanged);
    EXPECT_STREQ(name, host);
    EXPECT_EQ(size, strlen(host));
    EXPECT_OUTCOME(GetComputerName(name, &size), 0, kUnchanged) << "no room for the NUL";
    EXPECT_EQ(size, strlen(host));

    const std::string user = cuserid(nullptr);
    const auto length = static_cast<uint32_t>(user.size());
    for (const auto &[room, fits] : {std::pair(length, BOOL{FALSE}), {length + 1, BOOL{TRUE}}}) {
        size = room;
        strcpy(name, "stale");
        EXPECT_OUTCOME(GetUserName(name, &size), fits, kUnchanged);
        EXPECT_EQ(name, fits ? user : "");
        EXPECT_EQ(size, length);
    }
    EXPECT_OUTCOME(GetUserName(nullptr, &size), FALSE, kUnchanged);
    EXPECT_OUTCOME(GetUserName(name, nullptr), FALSE, kUnchanged);
    if (seteuid(54321) == 0) { // whom nobody knows
        EXPECT_OUTCOME(GetUserName(name, &size), FALSE, kUnchanged);
        EXPECT_EQ(size, 0u);
        seteuid(0);
    }
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
    const sockaddr_un address = {AF_UNIX, "/dev/log"};
    return bind(log, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0 ? log : -1;
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
}

} // namespace
