// wexelxi-trace from outside: what it writes of hosts that do something wrong, or something odd.
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <regex>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "support/private_fonts.h"
#include "support/scratch.h"

namespace {

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
    int RunHost(const std::string &options, const std::string &function)
    {
        return Run(TRACE " " + options + " " FAULTY_HOST " " + function + " " + folder_.path() +
                   " " PLUGIN);
    }
    bool Wrote(const std::string &pattern) const
    {
        return std::regex_search(written_, std::regex(pattern, std::regex::multiline));
    }
    PrivateFonts fonts_;
    ScratchFolder folder_;
    std::string written_;
};

TEST_F(Trace, FindsEachFaultAndItsCaller)
{
    const struct {
        std::string function;
        std::string finding;
    } faults[] = {
#define FAULT(name, finding, ...) {#name, finding},
#include "hosts/faults.def"
    };
    for (const auto &fault : faults) {
        const std::string place =
            " at faulty_host\\(" + fault.function + "\\+0x\\w+\\)\\[\\+0x\\w+\\]";
        EXPECT_EQ(RunHost("--check --error-exitcode=9", fault.function), 9);
        EXPECT_TRUE(Wrote(
            "^wexelxi-trace: " + std::regex_replace(fault.finding, std::regex("@"), place) + "\n$"))
            << fault.function << "\n"
            << written_;
    }
}

TEST_F(Trace, WritesALineACall)
{
    const struct {
        const char *options;
        const char *function;
        int lines;
        const char *pattern;
    } rows[] = {
        {"-e CreateFile", "UseClosed", 1,
         R"(^ +0\.\d{6} \d+ 0 CreateFile\(name="[^"]*"(\.\.\.)?, access=GENERIC_WRITE, shareMode=0, )"
         R"(security=null, disposition=CREATE_ALWAYS, flags=0, templateFile=null\) = 0x\w+, 0\.\d+ s$)"},
        {"-e file-handles,!CloseHandle", "UseClosed", 2,
         "FlushFileBuffers.* = FALSE, error 0 -> 31 ERROR_GEN_FAILURE, "},
        {"-e '!*' -e CheckF*,Delete*", "Arguments", 1,
         "DeleteFile\\(name=\"/no/such/file\"\\) = FALSE, error \\d+ -> 2 ERROR_FILE_NOT_FOUND"},
        {"-s 10 -e environment", "Arguments", 3,
         R"(value="\\"q\\\\\\t\\xe4 long"\.\.\.\) = 1, [^]*)"
         R"(destination="\\"q\\\\\\t\\xe4 long"\.\.\., size=64\) = 34, )"},
        {"-e clock", "Arguments", 1,
         R"(ticks=\[0\], fields=\{1601-01-01 00:00:00\.000\}\) = void, )"},
        {"-e FindFirstFile", "LeakSearch", 1,
         R"(name="/", data=\{cFileName="[^"]+", dwFileAttributes=0x10, nFileSizeLow=0\}\) = 0x)"},
        {"-e none", "Arguments", 0, ""},
        {"-t -e DeleteFile", "Arguments", 1, "^\\d\\d:\\d\\d:\\d\\d\\.\\d{6} \\d+ 0 DeleteFile"},
        {"-r -e DeleteFile", "Arguments", 1, "^ +0\\.\\d{6} \\d+ 0 DeleteFile"},
        {"-e strings,LoadString,GetVersion", "Unwind", 6,
         " 0 LoadString.* = left by unwinding, [^]* 0 GetVersion[^]*"
         " 1 lstrcpy\\(dst=\"nested\", src=\"nested\"\\) = \"nested\"[^]*"
         " 0 LoadString\\(module=0x1, id=4, .*\\) = 6, "},
        {"-e wsprintf", "Format", 1, "wsprintf\\(dst=\"1 two 3 4.5 .*\\) = 28, "},
        {"-e MulDiv", "Fork", 0, ""},
        {"-f -e MulDiv", "Fork", 1, "MulDiv\\(a=3, b=2, c=1\\) = 6, "},
        {"--check -e MulDiv", "Fork", 0, ""},
        {"--check --error-exitcode=9", "Clean", 0, ""},
        {"--check --json", "LeakFile", 1,
         R"(^\{"finding":"never ended","kind":"file","handle":"0x\w+","made":\{"name":"CreateFile",)"
         R"("caller":"faulty_host.*"\},"times":1\}$)"},
        {"-c -e DeleteFile,FreeLib", "Arguments", 3, "^ +\\d\\.\\d+ +1 +\\d+\\.\\d+ DeleteFile$"},
        {"--json -s 4 -e DeleteFile", "Arguments", 1,
         R"(^\{"time":\d\.\d+,"thread":\d+,"depth":0,"name":"DeleteFile","arguments":\{"name":"/no/..."\},)"
         R"("result":"FALSE","error":\[\d+,2\],"seconds":\d\.\d+\}$)"},
        {"--json -c -e DeleteFile", "Arguments", 1,
         R"(^\{"seconds":.*,"calls":1,"each":.*,"name":"DeleteFile"\}$)"},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(RunHost(row.options, row.function), 3) << row.options;
        EXPECT_EQ(std::count(written_.begin(), written_.end(), '\n'), row.lines) << row.options;
        EXPECT_TRUE(Wrote(row.pattern)) << row.options << "\n" << written_;
    }
}

TEST_F(Trace, WritesJsonThatParses)
{
    const std::string file = folder_.file("json");
    EXPECT_EQ(RunHost("--json -o " + file, "Clean"), 3);
    EXPECT_EQ(written_, "");
    EXPECT_EQ(
        Run("python3 -c 'import json,sys; [json.loads(l) for l in open(sys.argv[1])]' " + file), 0)
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
        EXPECT_EQ(Run(TRACE " " + std::string(row.arguments)), row.status) << row.arguments;
        EXPECT_TRUE(Wrote(row.pattern)) << row.arguments << "\n" << written_;
    }
    EXPECT_EQ(RunHost("-e none", "Die"), 143);
}

TEST_F(Trace, FindsNothingInTheExamples)
{
    const int line = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_EQ(grantpt(line), 0);
    ASSERT_EQ(unlockpt(line), 0);
    WriteWholeFile(folder_.file("wexelxi.ini"),
                   "[Ports]\r\nCOM1=" + std::string(ptsname(line)) + ",rs232\r\n");
    setenv("WEXELXIDIR", folder_.path().c_str(), 1);
    setenv("CUPS_SERVER", "/no/such/socket", 1);
    std::string question(7, '?');
    std::thread device([&] {
        EXPECT_EQ(read(line, question.data(), question.size()), 7);
        EXPECT_EQ(write(line, "a device\n", 9), 9);
    });
    EXPECT_EQ(Run(TRACE " --check --error-exitcode=9 " SERIAL_CLIENT " COM1"), 0);
    device.join();
    EXPECT_EQ(question, "*IDN?\r\n");
    EXPECT_EQ(written_, "a device\n");

    const std::string job = folder_.file("job.ini");
    WriteWholeFile(job, ReadWholeFile(EXAMPLE_JOB));
    EXPECT_EQ(Run(TRACE " -o " + folder_.file("report") +
                  " --check --error-exitcode=9 " EXAMPLE_HOST " --job " + job + " --out " +
                  folder_.path()),
              0)
        << written_;
    EXPECT_EQ(ReadWholeFile(folder_.file("report")), "");
    close(line);
}

} // namespace
