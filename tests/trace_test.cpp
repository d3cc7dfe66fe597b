// wexelxi-trace from outside: what it writes of hosts that do something wrong, or something odd.
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <regex>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "support/private_fonts.h"
#include "support/scratch.h"

namespace {

const char kHost[] = FAULTY_HOST;

class Trace : public testing::Test {
protected:
    Trace()
    {
        fonts_.Add("DejaVuSans.ttf");
        fonts_.Add("DejaVuSans-Bold.ttf");
    }

    // The status of a command, by signal as the shell tells it; its output and errors are kept.
    int Run(const std::string &command)
    {
        const std::string output = folder_.file("output");
        const int status = system((command + " >" + output + " 2>&1").c_str());
        written_ = ReadWholeFile(output);
        return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    }
    int RunHost(const std::string &options, const std::string &fault)
    {
        return Run(TRACE " " + options + " " + kHost + " " + fault + " " + folder_.path() +
                   " " PLUGIN);
    }
    size_t Count(const std::string &pattern) const
    {
        const std::regex expression(pattern, std::regex::multiline);
        return static_cast<size_t>(
            std::distance(std::sregex_iterator(written_.begin(), written_.end(), expression), {}));
    }
    PrivateFonts fonts_;
    ScratchFolder folder_;
    std::string written_;
};

struct FaultRow {
    const char *fault; // the function that is to blame
    const char *finding;
};

const FaultRow kFaults[] = {
    {"LeakThread", "never ended: thread 0x\\w+, made by CreateThread at "},
    {"LeakSemaphore", "never ended: semaphore 0x\\w+, made by CreateSemaphore at "},
    {"LeakBlock", "never ended: block 0x\\w+, made by GlobalAlloc at .*\\(3 of them\\)$"},
    {"LeakSearch", "never ended: search 0x\\w+, made by FindFirstFile at "},
    {"LeakFont", "never ended: font 0x\\w+, made by CreateFont at "},
    {"LeakContext", "never ended: device context 0x\\w+, made by CreateIC at "},
    {"LeakResource", "never ended: resource 0x\\w+, made by FindResource at "},
    {"LeakModule", "never ended: module reference 0x\\w+, made by LoadLibrary at "},
    {"LeakList", "never ended: printer list 0x\\w+, made by ListPrinters at "},
    {"LeakText", "never ended: text 0x\\w+, made by ConvertUtf8ToISO8859 at "},
    {"LeakCapture", "never ended: block 0x\\w+, made by WinExecEx at "},
    {"CloseTwice", "ended twice: file 0x\\w+, CloseHandle at .*; made by CreateFile at "
                   ".*; ended by CloseHandle at "},
    {"UseClosed", "used after its end: file 0x\\w+, FlushFileBuffers at .*; ended by CloseHandle "},
    {"WrongKind", "of the wrong kind: file 0x\\w+, ReleaseSemaphore at "},
    {"WrongContext", "of the wrong kind: device context 0x\\w+, DeleteObject at "},
    {"DamageBehind", "guard behind damaged: block 0x\\w+, GlobalFree at "},
    {"DamageFront", "guard in front damaged: block 0x\\w+, GlobalLock at "},
    {"FreeTwice", "ended twice: block 0x\\w+, GlobalFree at "},
    {"SizeOfForeign", "not from here: block 0x\\w+, GlobalSize at "},
    {"ReleaseTwice", "ended twice: module reference 0x\\w+, FreeLibrary at "},
    {"BeforeStart", "called before InitLib: DoesFileExist at "},
    {"AfterStop", "called after FreeLib: GetSysColor at "},
};

TEST_F(Trace, FindsEachFaultAndItsCaller)
{
    for (const FaultRow &row : kFaults) {
        const int status = RunHost("--check --error-exitcode=9", row.fault);
        EXPECT_EQ(status, 9) << row.fault;
        EXPECT_EQ(Count("^wexelxi-trace: "), 1u) << row.fault << "\n" << written_;
        EXPECT_EQ(Count(std::string("^wexelxi-trace: ") + row.finding), 1u) << row.fault << "\n"
                                                                            << written_;
        EXPECT_GE(Count(std::string(" at faulty_host\\(") + row.fault +
                        "\\+0x[0-9a-f]+\\)\\[\\+0x[0-9a-f]+\\]"),
                  1u)
            << row.fault << "\n"
            << written_;
    }
}

TEST_F(Trace, FindsNothingWhereNothingIsWrong)
{
    EXPECT_EQ(RunHost("--check --error-exitcode=9", "Clean"), 3);
    EXPECT_EQ(written_, "");
}

TEST_F(Trace, FindsFaultsOfALeakedFileAsJson)
{
    EXPECT_EQ(RunHost("--check --json", "LeakFile"), 3);
    EXPECT_EQ(
        Count("^\\{\"finding\":\"never ended\",\"kind\":\"file\",\"handle\":\"0x\\w+\",\"made\":"
              "\\{\"name\":\"CreateFile\",\"caller\":\"faulty_host.*\"\\},\"times\":1\\}$"),
        1u)
        << written_;
}

struct LineRow {
    const char *options;
    const char *fault;
    size_t lines;
    const char *pattern;
};

const LineRow kLines[] = {
    {"-e CreateFile", "UseClosed", 1,
     "^ +0\\.\\d{6} \\d+ 0 CreateFile\\(name=\"[^\"]*\"(\\.\\.\\.)?, access=GENERIC_WRITE, shareMode=0, "
     "security=null, disposition=CREATE_ALWAYS, flags=0, templateFile=null\\) = 0x\\w+, 0\\.\\d+ s$"},
    {"-e file-handles,!CloseHandle", "UseClosed", 2,
     "FlushFileBuffers.* = FALSE, error 0 -> 31 "
     "ERROR_GEN_FAILURE, "},
    {"-e '!*' -e CheckF*,Delete*", "Texts", 1,
     "DeleteFile\\(name=\"/no/such/file\"\\) = FALSE, error \\d+ -> 2 ERROR_FILE_NOT_FOUND"},
    {"-s 10 -e environment", "Texts", 4, R"(value="\\"q\\\\\\t\\xe4 long"\.\.\.\) = 1, )"},
    {"-s 10 -e environment", "Texts", 4,
     R"(destination="\\"q\\\\\\t\\xe4 long"\.\.\., size=64\) = 34, )"},
    {"-e FindFirstFile", "LeakSearch", 1,
     R"(name="/", data=\{cFileName="[^"]+", dwFileAttributes=0x10, nFileSizeLow=0\}\) = 0x)"},
    {"-e none", "Texts", 0, ""},
    {"-t -e DeleteFile", "Texts", 1, "^\\d\\d:\\d\\d:\\d\\d\\.\\d{6} \\d+ 0 DeleteFile"},
    {"-r -e DeleteFile", "Texts", 1, "^ +0\\.\\d{6} \\d+ 0 DeleteFile"},
    {"-e strings,LoadString,GetVersion", "Unwind", 6, " 0 LoadString.* = left by unwinding, "},
    {"-e strings,LoadString,GetVersion", "Unwind", 6,
     " 1 lstrcpy\\(dst=\"nested\", src=\"nested\"\\) = \"nested\""},
    {"-e strings,LoadString,GetVersion", "Unwind", 6,
     " 0 LoadString\\(module=0x1, id=4, .*\\) = 6, "},
    {"-e wsprintf", "Format", 1, "wsprintf\\(dst=\"1 two 3 4 5 .*\\) = \\d+, "},
    {"-e MulDiv", "Fork", 0, ""},
    {"-f -e MulDiv", "Fork", 1, "MulDiv\\(a=3, b=2, c=1\\) = 6, "},
    {"--check -e MulDiv", "Fork", 0, ""},
    {"-c -e DeleteFile,FreeLib", "Texts", 3, "^ +\\d\\.\\d+ +1 +\\d+\\.\\d+ DeleteFile$"},
    {"--json -s 4 -e DeleteFile", "Texts", 1,
     "^\\{\"time\":\\d\\.\\d+,\"thread\":\\d+,\"depth\":0,\"name\":\"DeleteFile\",\"arguments\":\\{\"name\":\"/no/...\"\\},"
     "\"result\":\"FALSE\",\"error\":\\[\\d+,2\\],\"seconds\":\\d\\.\\d+\\}$"},
    {"--json -c -e DeleteFile", "Texts", 1,
     "^\\{\"seconds\":.*,\"calls\":1,\"each\":.*,\"name\":\"DeleteFile\"\\}$"},
};

TEST_F(Trace, WritesALineACall)
{
    for (const LineRow &row : kLines) {
        EXPECT_EQ(RunHost(row.options, row.fault), 3) << row.options;
        EXPECT_EQ(Count("^.+$"), row.lines) << row.options << "\n" << written_;
        EXPECT_GE(Count(row.pattern), 1u) << row.options << "\n" << written_;
    }
}

TEST_F(Trace, WritesJsonThatParses)
{
    EXPECT_EQ(RunHost("--json -o " + folder_.file("json"), "Clean"), 3);
    EXPECT_EQ(written_, "");
    EXPECT_EQ(Run("python3 -c 'import json,sys; [json.loads(l) for l in open(sys.argv[1])]' " +
                  folder_.file("json")),
              0)
        << written_;
}

TEST_F(Trace, EndsAsTheHost)
{
    const struct {
        const char *arguments;
        int status;
        const char *pattern;
    } rows[] = {
        {"--help", 0, "^Usage: wexelxi-trace"},
        {"--version", 0, "^wexelxi-trace \\d"},
        {"", 2, "no host to run"},
        {"--nonsense true", 2, "unknown option --nonsense"},
        {"-e", 2, "no value for -e"},
        {"-e nobody true", 2, "no family and no function nobody"},
        {"-s 1001 true", 2, "up to 1000, not 1001"},
        {"--error-exitcode=256 true", 2, "up to 255, not 256"},
        {"-o /no/such/file true", 125, "/no/such/file: No such file"},
        {"/no/such/host", 127, "/no/such/host: No such file"},
        {"/", 126, "/: Permission denied"},
        {"sh -c 'exit 77'", 77, ""},
        {"sh -c 'echo $LD_PRELOAD$WEXELXI_TRACE_FLAGS-'", 0, "^-$"},
        {"-f sh -c 'echo $LD_PRELOAD'", 0, "^.*/wexelxi-trace\\.so$"},
        {"sh -c 'kill -TERM $PPID; sleep 5'", 143, ""},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(Run(TRACE " " + std::string(row.arguments)), row.status) << row.arguments << "\n"
                                                                           << written_;
        EXPECT_GE(Count(row.pattern), 1u) << row.arguments << "\n" << written_;
    }
    EXPECT_EQ(RunHost("-e none", "Die"), 143);
}

// The far end of a line that stands behind COM1 of the folder's configuration.
class Device {
public:
    explicit Device(const ScratchFolder &folder)
    {
        EXPECT_EQ(grantpt(master_) + unlockpt(master_), 0);
        WriteWholeFile(folder.file("wexelxi.ini"),
                       "[Ports]\r\nCOM1=" + std::string(ptsname(master_)) + ",rs232\r\n");
        setenv("WEXELXIDIR", folder.path().c_str(), 1);
    }
    ~Device() { close(master_); }

    // Reads up to an end, and answers.
    std::string Converse(const std::string &end, const std::string &answer) const
    {
        std::string heard;
        char byte;
        pollfd ready = {master_, POLLIN, 0};
        while (!heard.ends_with(end) && poll(&ready, 1, 5000) == 1 && read(master_, &byte, 1) == 1)
            heard += byte;
        EXPECT_EQ(write(master_, answer.data(), answer.size()),
                  static_cast<ssize_t>(answer.size()));
        return heard;
    }

private:
    const int master_ = posix_openpt(O_RDWR | O_NOCTTY);
};

TEST_F(Trace, SeesASerialClientDoItsWorkWithoutFault)
{
    const Device device(folder_);
    std::string question;
    std::thread conversation([&] { question = device.Converse("\n", "a device\n"); });
    EXPECT_EQ(Run(TRACE " --check --error-exitcode=9 " SERIAL_CLIENT " COM1"), 0);
    conversation.join();
    EXPECT_EQ(question, "*IDN?\r\n");
    EXPECT_EQ(written_, "a device\n");
}

TEST_F(Trace, FindsNothingInTheExampleHost)
{
    const Device device(folder_);
    const std::string job = folder_.file("job.ini");
    WriteWholeFile(job, ReadWholeFile(EXAMPLE_JOB));
    std::thread conversation([&] { device.Converse("Auftrag.\r\n", ""); });
    EXPECT_EQ(Run("CUPS_SERVER=/no/such/socket " TRACE " -o " + folder_.file("report") +
                  " --check --error-exitcode=9 " EXAMPLE_HOST " --job " + job + " --out " +
                  folder_.path()),
              0)
        << written_;
    conversation.join();
    EXPECT_EQ(ReadWholeFile(folder_.file("report")), "");
}

} // namespace
