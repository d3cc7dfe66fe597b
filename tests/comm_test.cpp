// Ports on real lines: pseudo-terminals stand behind the names, worked from the other side.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <string>
#include <termios.h>
#include <thread>
#include <unistd.h>

#include "support/last_error.h"
#include "support/library.h"
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

// A pseudo-terminal, and its slave side opened as a port.
struct Line {
    int master = posix_openpt(O_RDWR | O_NOCTTY);
    HANDLE port = INVALID_HANDLE_VALUE;

    explicit Line(const char *name = "COM2", const char *type = "rs232")
    {
        char slave[64] = "";
        EXPECT_EQ(grantpt(master), 0);
        EXPECT_EQ(unlockpt(master), 0);
        EXPECT_EQ(ptsname_r(master, slave, sizeof slave), 0);
        SetPort(name, std::string(slave) + "," + type);
        port = OpenNamed(name);
        EXPECT_NE(port, INVALID_HANDLE_VALUE);
    }
    ~Line()
    {
        if (port != INVALID_HANDLE_VALUE)
            CloseHandle(port);
        close(master);
    }
    void SetRaw() const
    {
        DCB settings;
        ASSERT_EQ(BuildCommDCB("9600,n,8,1", &settings), TRUE);
        ASSERT_EQ(SetCommState(port, &settings), TRUE);
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
    void WriteMaster(const std::string &bytes) const
    {
        EXPECT_EQ(write(master, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }
};

bool AreEqual(const termios &first, const termios &second)
{
    return memcmp(&first, &second, sizeof first) == 0;
}

double SecondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

TEST(PortNames, GiveDeviceAndType)
{
    StartedLibrary library;
    SetPort("COM2", "/dev/ttyUSB1,RS422");
    SetPort("COM3", "/dev/x,rs232 modem");
    SetPort("COM4", "/dev/ttyUSB1,fast");
    SetPort("COM5", "");
    SetPort("COM61.TXT", "c,rs423");
    SetPort("LPT2", "/dev/serial/by-id/usb-00,rs449");
    const struct {
        const char *name, *after, *device;
        uint32_t type;
    } rows[] = {
        {"COM1:", "COM1:", "/dev/ttyS0", 1},
        {"COM2", "COM2", "/dev/ttyUSB1", 3},
        {"COM2:", "COM2:", "/dev/ttyS1", 1}, // another key
        {"COM3", "COM3", "/dev/x", 6},
        {"COM4", "COM4", "/dev/ttyUSB1", 0},
        {"COM5", "COM5", "/dev/ttyS4", 1},
        {"COM61.txt", "COM61.TXT", "c", 4},
        {"COM9/caf\xE9", "COM9/CAF\xC9", "/dev/ttyS8", 1},
        {"LPT2", "LPT2", "/dev/serial/by-id/u", 0}, // cut before its type
        {"LPT5EPT:", "LPT5EPT:", "/dev/lp0", 2},
        {"COMxEPT:", "COMXEPT:", "/dev/ttyS0", 1},
        {"EPT9", "EPT9", "/dev/lp8", 2},
    };
    char device[20];
    for (const auto &row : rows) {
        std::string name = row.name;
        EXPECT_EQ(GetPortName(name.data(), device, sizeof device), row.type) << row.name;
        EXPECT_EQ(name, row.after);
        EXPECT_STREQ(device, row.device) << row.name;
    }
    for (const char *file : {"EPT", "COM0", "COMx", "com1", "XCOM1", "LPT1.COM", "EPT1.LPT", ""}) {
        std::string name = file;
        strcpy(device, "####");
        EXPECT_EQ(GetPortName(name.data(), device, sizeof device), 0u) << file;
        EXPECT_EQ(name + device, std::string(file) + "####");
    }
    for (const int32_t length : {-1, 0, 1, 2, 10, 11}) {
        char name[] = "COM8x", expected[] = "/dev/ttyS7";
        memset(device, '#', sizeof device);
        EXPECT_EQ(GetPortName(name, device, length), length < 1 ? 0u : 1u);
        EXPECT_STREQ(name, length < 1 ? "COM8x" : "COM8X");
        EXPECT_EQ(device[std::max(length, 0)], '#') << "nothing behind the length is written";
        if (length > 0) {
            EXPECT_EQ(std::string(expected, static_cast<size_t>(length - 1)), device);
        }
    }
    char entry[] = "/dev/x,fast,RS449 Modem", bare[] = "/dev/x";
    EXPECT_OUTCOME(GetDeviceType(entry), PST_MODEM, kUnchanged);
    EXPECT_STREQ(entry, "/dev/x");
    EXPECT_STREQ(entry + 7, "fast,rs449 modem");
    EXPECT_OUTCOME(GetDeviceType(bare), PST_UNSPECIFIED, kUnchanged);
    EXPECT_EQ(CreateFile(nullptr, 0, 0, nullptr, OPEN_EXISTING, 0, nullptr), INVALID_HANDLE_VALUE);
    ASSERT_EQ(chdir(library.folder.path().c_str()), 0);
    SetWexelXiFolder("COM1"); // is the configuration a port?
    char name[] = "COM2";
    EXPECT_EQ(GetPortName(name, device, sizeof device), 1u);
}

TEST(Settings, ReachTheLineToTheBit)
{
    StartedLibrary library;
    Line line;
    const termios before = line.Termios();
    DCB settings, told, again;
    ASSERT_EQ(BuildCommDCB("COM2:19200,e,7,2,x", &settings), TRUE);
    settings.StopBits = ONE5STOPBITS;
    EXPECT_OUTCOME(SetCommState(line.port, &settings), FALSE, IE_BYTESIZE);
    EXPECT_TRUE(AreEqual(line.Termios(), before)) << "a refusal changes nothing";
    settings.StopBits = TWOSTOPBITS;
    settings.XonChar = 0x11;
    settings.XoffChar = 0x13;
    settings.EofChar = 0x1A;
    EXPECT_OUTCOME(SetCommState(line.port, &settings), TRUE, ERROR_SUCCESS);
    termios expected = before; // but for the size and parity, which pseudo-terminals force
    expected.c_iflag &= ~tcflag_t(BRKINT | ISTRIP | INLCR | IGNCR | ICRNL);
    expected.c_iflag |= IGNBRK | INPCK | IXON | IXOFF;
    expected.c_oflag &= ~tcflag_t(OPOST);
    expected.c_cflag &= ~tcflag_t(HUPCL);
    expected.c_cflag |= CREAD | CLOCAL | CSTOPB | CRTSCTS;
    expected.c_lflag &= ~tcflag_t(ISIG | ICANON | ECHO);
    expected.c_lflag |= NOFLSH;
    memset(expected.c_cc, 0, 17);
    expected.c_cc[VEOF] = 0x1A;
    expected.c_cc[VSTART] = 0x11;
    expected.c_cc[VSTOP] = 0x13;
    cfsetispeed(&expected, B19200);
    cfsetospeed(&expected, B19200);
    EXPECT_TRUE(AreEqual(line.Termios(), expected));

    memset(&told, 0xA5, sizeof told);
    EXPECT_OUTCOME(GetCommState(line.port, &told), TRUE, kUnchanged);
    EXPECT_EQ(told.BaudRate, 19200u);
    EXPECT_EQ(told.Parity, 0xA5);
    EXPECT_EQ(told.XonChar, 0x11);
    EXPECT_EQ(told.XoffChar, 0x13);
    EXPECT_EQ(told.EofChar, 0x1A);
    EXPECT_EQ(told.XonLim, 10);
    EXPECT_EQ(told.XoffLim, 10);

    CloseHandle(line.port); // set, closed and opened again: the line still has them
    line.port = OpenNamed("COM2");
    memset(&again, 0xA5, sizeof again);
    EXPECT_EQ(GetCommState(line.port, &again), TRUE);
    EXPECT_EQ(memcmp(&again, &told, sizeof told), 0);
}

TEST(Settings, AreRefusedOnOtherHandles)
{
    StartedLibrary library;
    HANDLE file = OpenNamed(library.folder.file("f"), CREATE_ALWAYS);
    HANDLE semaphore = CreateSemaphore(nullptr, 0, 1, nullptr);
    for (HANDLE handle : {HANDLE{}, INVALID_HANDLE_VALUE, semaphore, file}) {
        DCB settings;
        COMMTIMEOUTS timeouts = {};
        COMMPROP properties[2] = {{9, 9}, {9, 9}};
        EXPECT_OUTCOME(GetCommState(handle, &settings), FALSE, ERROR_GEN_FAILURE);
        EXPECT_OUTCOME(BuildCommDCB("9600,n,8,1", &settings), TRUE, kUnchanged);
        EXPECT_OUTCOME(SetCommState(handle, &settings), FALSE, ERROR_GEN_FAILURE);
        EXPECT_OUTCOME(GetCommTimeouts(handle, &timeouts), FALSE, ERROR_GEN_FAILURE);
        EXPECT_OUTCOME(SetCommTimeouts(handle, &timeouts), FALSE, ERROR_GEN_FAILURE);
        EXPECT_OUTCOME(GetCommProperties(handle, properties), TRUE,
                       handle == file ? kUnchanged : ERROR_GEN_FAILURE);
        EXPECT_EQ(properties[0].dwReserved, 0u);
        EXPECT_EQ(properties[0].dwProvSubType, 0u);
        EXPECT_EQ(properties[1].dwReserved, 9u);
        EXPECT_OUTCOME(PurgeComm(handle, 15), FALSE, ERROR_SUCCESS);
    }
    DCB unused;
    EXPECT_OUTCOME(BuildCommDCB("9600,q,8,1", &unused), FALSE, IE_DEFAULT);
    CloseHandle(semaphore);
    CloseHandle(file);
}

TEST(ParallelPort, IsPassedOverAndWrittenLikeAFile)
{
    StartedLibrary library;
    Line line("LPT1", "parallelport");
    const termios before = line.Termios();
    DCB settings;
    COMMTIMEOUTS timeouts = {{}, 6};
    memset(&settings, 0xA5, sizeof settings);
    EXPECT_OUTCOME(SetCommState(line.port, &settings), TRUE, kUnchanged);
    EXPECT_OUTCOME(GetCommState(line.port, &settings), TRUE, kUnchanged);
    EXPECT_OUTCOME(SetCommTimeouts(line.port, &timeouts), TRUE, kUnchanged);
    EXPECT_OUTCOME(GetCommTimeouts(line.port, &timeouts), TRUE, kUnchanged);
    EXPECT_EQ(timeouts.VTimeTenths, 6u);
    EXPECT_EQ(settings.BaudRate, 0xA5A5A5A5u);
    EXPECT_TRUE(AreEqual(line.Termios(), before));
    line.ExpectWritten("page");
    EXPECT_EQ(FlushFileBuffers(line.port), TRUE);
    EXPECT_EQ(line.ReadMaster(), "page");
}

TEST(Timeouts, LiveInTheirLineAndDelayNoRead)
{
    StartedLibrary library;
    Line line("COM2", "modem"), other("COM3", "rs485 as rs422");
    line.SetRaw();
    other.SetRaw();
    COMMTIMEOUTS timeouts = {{1, 2, 3, 4, 5}, 300};
    const COMMTIMEOUTS expected = {{1, 2, 3, 4, 5}, 44};
    EXPECT_OUTCOME(SetCommTimeouts(line.port, &timeouts), TRUE, kUnchanged);
    EXPECT_OUTCOME(GetCommTimeouts(line.port, &timeouts), TRUE, kUnchanged);
    EXPECT_EQ(memcmp(&timeouts, &expected, sizeof timeouts), 0);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(line.Read(), "");
    other.WriteMaster("three");
    line.WriteMaster("two");
    EXPECT_EQ(line.Read() + other.Read(), "twothree");
    line.ExpectWritten("to line");
    other.ExpectWritten("to other");
    EXPECT_EQ(line.ReadMaster() + other.ReadMaster(), "to lineto other");
    EXPECT_LT(SecondsSince(start), 3) << "no read waits for the timeout";
    EXPECT_EQ(line.Termios().c_cc[VTIME], 44) << "and each puts it back";
    EXPECT_EQ(other.Termios().c_cc[VTIME], 0);
    line.SetRaw();
    EXPECT_EQ(GetCommTimeouts(line.port, &timeouts), TRUE);
    EXPECT_EQ(timeouts.VTimeTenths, 0u);
    COMMPROP properties;
    EXPECT_EQ(GetCommProperties(line.port, &properties), TRUE);
    EXPECT_EQ(properties.dwProvSubType, PST_MODEM);
}

TEST(Line, CarriesMegabytesBothWays)
{
    StartedLibrary library;
    Line line;
    line.SetRaw();
    std::string sent(2 << 20, '\0'), received;
    for (size_t i = 0; i < sent.size(); i++)
        sent[i] = static_cast<char>(i * 31 + i / 251);
    std::thread writer([&] { line.WriteMaster(sent); });
    const auto start = std::chrono::steady_clock::now();
    while (received.size() < sent.size() && SecondsSince(start) < 20)
        received += line.Read();
    if (received.size() < sent.size())
        abort(); // the writer would wait for ever
    writer.join();
    EXPECT_TRUE(received == sent) << received.size();

    // Signals that interrupt every call of this thread are no failure.
    received.clear();
    sigset_t alarms;
    sigemptyset(&alarms);
    sigaddset(&alarms, SIGALRM);
    pthread_sigmask(SIG_BLOCK, &alarms, nullptr);
    std::thread slowReader([&] {
        for (std::string piece = "-"; received.size() < sent.size() && !piece.empty();) {
            received += piece = line.ReadMaster();
            usleep(100);
        }
    });
    pthread_sigmask(SIG_UNBLOCK, &alarms, nullptr);
    struct sigaction interrupting = {};
    interrupting.sa_handler = [](int) {};
    sigaction(SIGALRM, &interrupting, nullptr);
    ualarm(1000, 1000);
    line.ExpectWritten(sent);
    ualarm(0, 0);
    slowReader.join();
    EXPECT_TRUE(received == sent) << received.size();
}

TEST(Line, SurvivesAPeerThatHangsUp)
{
    StartedLibrary library;
    const size_t descriptors = OpenDescriptors();
    const struct {
        const char *delay;
        double least, most;
    } rows[] = {{"-1", 0, 10}, {"2", 1, 30}};
    for (const auto &row : rows) {
        Line line;
        line.SetRaw();
        SetPort("Delay", row.delay);
        close(line.master);
        EXPECT_EQ(line.Read(), "");
        line.ExpectWritten("lost", ERROR_WRITE_FAULT);
        DCB settings;
        EXPECT_OUTCOME(GetCommState(line.port, &settings), FALSE, ERROR_GEN_FAILURE);
        const auto start = std::chrono::steady_clock::now();
        EXPECT_OUTCOME(CloseHandle(line.port), TRUE, ERROR_SUCCESS); // whatever the drain did
        EXPECT_GE(SecondsSince(start), row.least) << row.delay;
        EXPECT_LT(SecondsSince(start), row.most) << row.delay;
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
