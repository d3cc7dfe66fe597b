// Ports: their names, the texts and the mapping of their settings, and real lines: pseudo-terminals
// stand behind the names, worked from the other side.
#include <array>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include "comm/line_mapping.h"
#include "support/digest.h"
#include "support/last_error.h"
#include "support/library.h"
#include "support/random_text.h"
#include "wexelxi.h"

namespace {

void SetPort(const char *name, const std::string &value)
{
    ASSERT_EQ(WriteProfileString("Ports", name, value.c_str()), TRUE);
}

HANDLE OpenNamed(std::string name, uint32_t disposition = OPEN_EXISTING)
{
    return CreateFile(name.data(), GENERIC_WRITE, 0, nullptr, disposition, 0, nullptr);
}

template <typename Record>
std::string_view BytesOf(const Record &record)
{
    return {reinterpret_cast<const char *>(&record), sizeof record};
}

// A record whose bytes are all random.
template <typename Record>
Record RandomRecord(std::mt19937 &random)
{
    Record record;
    auto *bytes = reinterpret_cast<unsigned char *>(&record);
    std::generate_n(bytes, sizeof record, [&] { return static_cast<unsigned char>(random()); });
    return record;
}

TEST(PortNames, GiveDeviceAndType)
{
    const StartedLibrary library;
    SetPort("COM2", "/dev/ttyUSB1,RS422");
    SetPort("LPT2", "/dev/serial/by-id/usb-00,rs449");
    const struct {
        const char *name, *after, *device;
        uint32_t type;
    } rows[] = {
        {"COM1:", "COM1:", "/dev/ttyS0", PST_RS232},
        {"COM2", "COM2", "/dev/ttyUSB1", PST_RS422},
        {"COM2:", "COM2:", "/dev/ttyS1", PST_RS232}, // another key
        {"COM9/caf\xE9", "COM9/CAF\xC9", "/dev/ttyS8", PST_RS232},
        {"LPT2", "LPT2", "/dev/serial/by-id/u", PST_UNSPECIFIED}, // cut before its type
        {"LPT1.COM", "LPT1.COM", "####", PST_UNSPECIFIED},        // a file
    };
    for (const auto &row : rows) {
        std::string name = row.name;
        char device[20] = "####";
        EXPECT_EQ(GetPortName(name.data(), device, sizeof device), row.type) << row.name;
        EXPECT_EQ(name, row.after);
        EXPECT_STREQ(device, row.device) << row.name;
    }
    char name[] = "COM2", device[20] = "";
    EXPECT_OUTCOME(GetPortName(nullptr, device, 20), PST_UNSPECIFIED, kUnchanged);
    EXPECT_OUTCOME(GetPortName(name, nullptr, 20), PST_UNSPECIFIED, kUnchanged);
    EXPECT_OUTCOME(GetPortName(name, device, 20), PST_RS422, kUnchanged);
    SetLastError(ERROR_NOT_ENOUGH_MEMORY); // which is none of the look-up's
    EXPECT_EQ(GetPortName(name, device, sizeof device), PST_RS422);
    ASSERT_EQ(chdir(library.folder.path().c_str()), 0);
    SetWexelXiFolder("COM1"); // is the configuration a port?
    EXPECT_EQ(GetPortName(name, device, sizeof device), PST_RS232);
}

TEST(PortNames, AnswerASweepAsJudged)
{
    const StartedLibrary library;
    std::mt19937 random(41);
    Digest digest;
    for (int i = 0; i < 5000; i++) {
        std::string device(20, '#'), name = RandomText(random, "COM|LPT|EPT|EPT:|0|1|9|:|x|/", 4);
        const int32_t length = static_cast<int32_t>(random() % 21) - 1;
        digest.Add(GetPortName(name.data(), device.data(), length), name, device);
        std::string entry =
            RandomText(random, "/dev/x|,|,|modem|RS232|rs422|rs423|Rs449|parallelport| ", 5);
        digest.Add(GetDeviceType(entry.data()), entry);
    }
    EXPECT_EQ(digest.hex(), "1c17f15008bb9291");
}

TEST(BuildCommDCB, FillsARecordFromAText)
{
    using Fields = std::array<uint32_t, 5>; // speed, flags, data bits, parity, stop bits
    const auto fill = [](const char *text) -> Fields {
        DCB settings;
        uint32_t flags = 0;
        EXPECT_OUTCOME(BuildCommDCB(text, &settings), TRUE, kUnchanged);
        memcpy(&flags, &settings.BaudRate + 1, sizeof flags);
        return {settings.BaudRate, flags, settings.ByteSize, settings.Parity, settings.StopBits};
    };
    EXPECT_EQ(fill("9600,n,8,1"), (Fields{9600, 0x1010, 8, NOPARITY, ONESTOPBIT}));
    EXPECT_EQ(fill("com9:110,O,8,1.5 p"), (Fields{110, 0x202E, 8, ODDPARITY, TWOSTOPBITS}));
    EXPECT_EQ(fill("data=5 parity=E baud=1x"), (Fields{0, 2, 5, EVENPARITY, ONESTOPBIT}));
    EXPECT_OUTCOME(BuildCommDCB(nullptr, nullptr), FALSE, IE_DEFAULT);
}

TEST(BuildCommDCB, AnswersASweepAsJudged)
{
    const char *const kPieces =
        "COM|com|1|0|:|,|,| | |=|baud=|data=|parity=|stop=|110|9600|n|E|o|M|"
        "x|P|8|5|COM1:|2|\t|\xE9|300,e|7,2|-|99999999999";
    std::mt19937 random(28);
    Digest digest;
    for (int i = 0; i < 100000; i++) {
        std::string text = RandomText(random, "|||COM2:|cOm0:|CXM1:|CON1:|KOM1:|110,n,8,", 1);
        text += RandomText(random, kPieces, 13);
        DCB settings;
        memset(&settings, 0xA5, sizeof settings);
        SetLastError(kUnchanged);
        const BOOL filled = BuildCommDCB(text.c_str(), &settings);
        digest.Add(filled, GetLastError(), BytesOf(settings));
    }
    EXPECT_EQ(digest.hex(), "eae8c7d07cfd271f");
}

// The bits that a pseudo-terminal would not keep are judged here, by both ways of random records.
TEST(LineMapping, AnswersASweepAsJudged)
{
    const uint32_t speeds[] = {110,   300,   600,    1200,   2400, 4800, 9600, 19200,
                               38400, 57600, 115200, 230400, 0,    13,   14400};
    std::mt19937 random(7);
    Digest digest;
    for (int i = 0; i < 30000; i++) {
        auto settings = RandomRecord<DCB>(random), told = RandomRecord<DCB>(random);
        auto line = RandomRecord<termios>(random);
        line.c_iflag >>= 1; // its highest bit is the platform's own
        wexelxi::DcbFromTermios(line, &told);
        digest.Add(BytesOf(told));
        settings.BaudRate = speeds[random() % std::size(speeds)];
        settings.ByteSize = static_cast<uint8_t>(4 + random() % 6);
        settings.Parity &= 3;
        settings.StopBits &= 3;
        settings.EofChar = static_cast<char>(random() % 2);
        if (const uint32_t fault = wexelxi::TermiosFromDcb(settings, &line)) {
            digest.Add(fault);
            continue;
        }
        wexelxi::DcbFromTermios(line, &told);
        digest.Add(line.c_iflag, line.c_oflag, line.c_cflag & ~CBAUD, line.c_lflag,
                   BytesOf(line.c_cc), BytesOf(told));
    }
    EXPECT_EQ(digest.hex(), "b4a646732efefc4f");
}

// A pseudo-terminal, and its slave side opened as a port.
struct Line {
    int master = posix_openpt(O_RDWR | O_NOCTTY);
    HANDLE port = INVALID_HANDLE_VALUE;

    explicit Line(const char *name = "COM2", const char *type = "rs232")
    {
        char slave[64] = "";
        grantpt(master);
        unlockpt(master);
        EXPECT_EQ(ptsname_r(master, slave, sizeof slave), 0);
        SetPort(name, std::string(slave) + "," + type);
        port = OpenNamed(name);
        DCB settings;
        BuildCommDCB("9600,n,8,1", &settings);
        EXPECT_EQ(SetCommState(port, &settings), TRUE);
    }
    ~Line()
    {
        CloseHandle(port);
        close(master);
    }
    termios Termios() const
    {
        termios line;
        memset(&line, 0, sizeof line); // its gaps too, as lines are compared whole
        EXPECT_EQ(tcgetattr(master, &line), 0);
        return line;
    }
    std::string Read() const
    {
        char buffer[4096];
        uint32_t count = 77;
        EXPECT_OUTCOME(ReadFile(port, buffer, sizeof buffer, &count, nullptr), TRUE, ERROR_SUCCESS);
        return std::string(buffer, count);
    }
    void ExpectWritten(const std::string &bytes, uint32_t error = ERROR_SUCCESS) const
    {
        uint32_t count = 77;
        const auto size = static_cast<uint32_t>(bytes.size());
        EXPECT_OUTCOME(WriteFile(port, bytes.data(), size, &count, nullptr), error == 0, error);
        EXPECT_EQ(count, error ? 0 : size);
    }
    std::string ReadMaster() const
    {
        char buffer[4096];
        pollfd ready = {master, POLLIN, 0};
        const ssize_t count = poll(&ready, 1, 5000) == 1 ? read(master, buffer, sizeof buffer) : 0;
        return count > 0 ? std::string(buffer, static_cast<size_t>(count)) : "";
    }
};

TEST(Line, TakesAndTellsItsSettings)
{
    const StartedLibrary library;
    Line line;
    termios expected = line.Termios();
    DCB settings, told = {};
    ASSERT_EQ(BuildCommDCB("COM2:19200,n,8,2,x", &settings), TRUE);
    settings.StopBits = ONE5STOPBITS;
    EXPECT_OUTCOME(SetCommState(line.port, &settings), FALSE, IE_BYTESIZE);
    EXPECT_EQ(BytesOf(line.Termios()), BytesOf(expected)) << "a refusal changes nothing";
    settings.StopBits = TWOSTOPBITS;
    settings.EofChar = 0x1A;
    EXPECT_OUTCOME(SetCommState(line.port, &settings), TRUE, ERROR_SUCCESS);
    wexelxi::TermiosFromDcb(settings, &expected);
    EXPECT_EQ(BytesOf(line.Termios()), BytesOf(expected));
    EXPECT_EQ(cfgetospeed(&expected), static_cast<speed_t>(B19200));
    CloseHandle(line.port); // set, closed and opened again: the line still has them
    line.port = OpenNamed("COM2");
    EXPECT_OUTCOME(GetCommState(line.port, &told), TRUE, kUnchanged);
    EXPECT_EQ(told.BaudRate, 19200u);
    EXPECT_EQ(told.EofChar, 0x1A);
}

TEST(Line, IsAskedThroughItsOwnHandles)
{
    const StartedLibrary library;
    const Line parallel("LPT1", "parallelport");
    const termios before = parallel.Termios();
    HANDLE file = OpenNamed(library.folder.file("f"), CREATE_ALWAYS);
    HANDLE semaphore = CreateSemaphore(nullptr, 0, 1, nullptr);
    for (HANDLE handle : {HANDLE{}, INVALID_HANDLE_VALUE, semaphore, file, parallel.port}) {
        DCB settings = {};
        COMMTIMEOUTS timeouts = {{}, 6};
        COMMPROP properties[2] = {{9, 9}, {9, 9}};
        const BOOL result = handle == parallel.port; // which is passed over
        const uint32_t error = result ? kUnchanged : ERROR_GEN_FAILURE;
        EXPECT_OUTCOME(GetCommState(handle, &settings), result, error);
        EXPECT_OUTCOME(SetCommState(handle, &settings), result, error);
        EXPECT_OUTCOME(GetCommTimeouts(handle, &timeouts), result, error);
        EXPECT_OUTCOME(SetCommTimeouts(handle, &timeouts), result, error);
        EXPECT_EQ(settings.BaudRate, 0u);
        EXPECT_EQ(timeouts.VTimeTenths, 6u);
        EXPECT_OUTCOME(GetCommProperties(handle, properties), TRUE,
                       handle == file ? kUnchanged : error);
        EXPECT_EQ(properties[0].dwReserved, 0u);
        EXPECT_EQ(properties[0].dwProvSubType, result ? PST_PARALLELPORT : PST_UNSPECIFIED);
        EXPECT_EQ(properties[1].dwReserved, 9u);
        EXPECT_OUTCOME(PurgeComm(handle, 15), FALSE, ERROR_SUCCESS);
    }
    EXPECT_EQ(BytesOf(parallel.Termios()), BytesOf(before));
    parallel.ExpectWritten("page"); // like a file
    EXPECT_EQ(FlushFileBuffers(parallel.port), TRUE);
    EXPECT_EQ(parallel.ReadMaster(), "page");
    CloseHandle(semaphore);
    CloseHandle(file);
}

TEST(Line, KeepsATimeoutThatDelaysNoRead)
{
    const StartedLibrary library;
    const Line line("COM2", "modem"), other("COM3", "rs485 as rs422");
    COMMTIMEOUTS timeouts = {{1, 2, 3, 4, 5}, 300};
    const COMMTIMEOUTS expected = {{1, 2, 3, 4, 5}, 44};
    EXPECT_OUTCOME(SetCommTimeouts(line.port, &timeouts), TRUE, kUnchanged);
    EXPECT_OUTCOME(GetCommTimeouts(line.port, &timeouts), TRUE, kUnchanged);
    EXPECT_EQ(BytesOf(timeouts), BytesOf(expected));
    const time_t start = time(nullptr);
    EXPECT_EQ(line.Read(), "");
    EXPECT_EQ(write(line.master, "two", 3), 3);
    EXPECT_EQ(write(other.master, "three", 5), 5);
    EXPECT_EQ(line.Read(), "two");
    EXPECT_EQ(other.Read(), "three");
    EXPECT_LT(time(nullptr) - start, 4) << "no read waits for the timeout";
    EXPECT_EQ(line.Termios().c_cc[VTIME], 44) << "and each puts it back";
    EXPECT_EQ(other.Termios().c_cc[VTIME], 0);
    COMMPROP properties;
    EXPECT_EQ(GetCommProperties(line.port, &properties), TRUE);
    EXPECT_EQ(properties.dwProvSubType, PST_MODEM);
}

TEST(Line, TakesMegabytesWhateverSignalsCome)
{
    const StartedLibrary library;
    const Line line;
    std::string sent(1 << 20, '\0');
    for (size_t i = 0; i < sent.size(); i++)
        sent[i] = static_cast<char>(i * 31 + i / 251);
    struct sigaction interrupting = {};
    interrupting.sa_handler = [](int) {};
    sigaction(SIGALRM, &interrupting, nullptr);
    if (fork() == 0) {
        std::string received, piece = "-";
        while (received.size() < sent.size() && !piece.empty()) {
            received += piece = line.ReadMaster();
            kill(getppid(), SIGALRM);
            usleep(100);
        }
        _exit(received == sent ? 0 : 1);
    }
    line.ExpectWritten(sent);
    int status = -1;
    while (wait(&status) < 0 && errno == EINTR) {
    }
    EXPECT_EQ(status, 0);
}

TEST(Line, SurvivesAPeerThatHangsUp)
{
    const StartedLibrary library;
    const size_t descriptors = OpenDescriptors();
    const struct {
        const char *delay;
        time_t seconds;
    } rows[] = {{"-1", -1}, {"00021", 2}}; // four characters are read
    for (const auto &row : rows) {
        Line line;
        SetPort("Delay", row.delay);
        close(line.master);
        EXPECT_EQ(line.Read(), "");
        line.ExpectWritten("lost", ERROR_WRITE_FAULT);
        DCB settings;
        EXPECT_OUTCOME(GetCommState(line.port, &settings), FALSE, ERROR_GEN_FAILURE);
        const time_t start = time(nullptr);
        EXPECT_OUTCOME(CloseHandle(line.port), TRUE, ERROR_SUCCESS); // whatever the drain did
        EXPECT_GE(time(nullptr) - start, row.seconds);
        EXPECT_LT(time(nullptr) - start, row.seconds + 15);
        line.port = INVALID_HANDLE_VALUE;
        line.master = -1;
    }
    SetPort("COM4", library.folder.file("none") + ",rs232");
    EXPECT_OUTCOME(OpenNamed("COM4", CREATE_ALWAYS), INVALID_HANDLE_VALUE, ERROR_GEN_FAILURE);
    SetPort("COM4", "/dev/null,rs232");
    EXPECT_OUTCOME(OpenNamed("COM4", CREATE_NEW), INVALID_HANDLE_VALUE, ERROR_FILE_EXISTS);
    EXPECT_EQ(OpenDescriptors(), descriptors);
}

} // namespace
