// Ports on real lines: pseudo-terminals stand behind COM2 and COM3, worked from the other side.
#include <atomic>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <string>
#include <termios.h>
#include <thread>
#include <unistd.h>

#include "support/library.h"
#include "wexelxi.h"

namespace {

void SetPort(const char *name, const std::string &value)
{
    ASSERT_EQ(WriteProfileString("Ports", name, value.c_str()), TRUE);
}

HANDLE OpenNamed(std::string name, uint32_t disposition = OPEN_EXISTING)
{
    return CreateFile(name.data(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, disposition, 0,
                      nullptr);
}

// A pseudo-terminal whose slave side is a port, and the open port.
struct Line {
    int master = -1;
    HANDLE port = INVALID_HANDLE_VALUE;
    std::string name;

    explicit Line(const char *portName = "COM2", const char *type = "rs232") : name(portName)
    {
        master = posix_openpt(O_RDWR | O_NOCTTY);
        char slave[64] = "";
        EXPECT_EQ(grantpt(master), 0);
        EXPECT_EQ(unlockpt(master), 0);
        EXPECT_EQ(ptsname_r(master, slave, sizeof slave), 0);
        SetPort(portName, std::string(slave) + "," + type);
        Open();
    }
    ~Line()
    {
        Close();
        HangUp();
    }
    void Open()
    {
        port = OpenNamed(name);
        ASSERT_NE(port, INVALID_HANDLE_VALUE);
    }
    void Close()
    {
        if (port != INVALID_HANDLE_VALUE) {
            EXPECT_EQ(CloseHandle(port), TRUE);
        }
        port = INVALID_HANDLE_VALUE;
    }
    void HangUp()
    {
        if (master >= 0)
            close(master);
        master = -1;
    }
    void SetRaw() const
    {
        DCB settings;
        ASSERT_EQ(BuildCommDCB("9600,n,8,1", &settings), TRUE);
        settings.fDtrControl = DTR_CONTROL_DISABLE;
        ASSERT_EQ(SetCommState(port, &settings), TRUE);
    }
    termios Termios() const
    {
        termios line;
        memset(&line, 0, sizeof line); // its gaps too, as lines are compared whole
        EXPECT_EQ(tcgetattr(master, &line), 0);
        return line;
    }
    std::string ReadPort() const
    {
        char buffer[4096];
        uint32_t count = 77;
        EXPECT_EQ(ReadFile(port, buffer, sizeof buffer, &count, nullptr), TRUE);
        EXPECT_EQ(GetLastError(), 0u);
        return std::string(buffer, count);
    }
    std::string ReadMaster() const
    {
        char buffer[4096];
        pollfd ready = {master, POLLIN, 0};
        if (poll(&ready, 1, 2000) != 1)
            return "";
        const ssize_t count = read(master, buffer, sizeof buffer);
        return std::string(buffer, static_cast<size_t>(std::max<ssize_t>(count, 0)));
    }
};

void WriteMaster(const Line &line, const std::string &bytes)
{
    EXPECT_EQ(write(line.master, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
}

void ExpectWritten(const Line &line, const std::string &bytes, BOOL result, uint32_t error)
{
    uint32_t count = 77;
    EXPECT_EQ(
        WriteFile(line.port, bytes.data(), static_cast<uint32_t>(bytes.size()), &count, nullptr),
        result);
    EXPECT_EQ(GetLastError(), error);
    EXPECT_EQ(count, result ? bytes.size() : 0);
}

// Hangs, until the test's time limit, if the calling thread still holds the lock.
void ExpectLockIsFree()
{
    std::thread([] { SetErrorMode(0); }).join();
}

double SecondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

std::string Pattern(size_t size)
{
    std::string bytes(size, '\0');
    for (size_t i = 0; i < size; i++)
        bytes[i] = static_cast<char>(i * 31 + i / 251);
    return bytes;
}

TEST(PortNames, HaveDefaultDevices)
{
    StartedLibrary library;
    const struct {
        const char *name, *after, *device;
        uint32_t type;
    } rows[] = {
        {"COM1", "COM1", "/dev/ttyS0", 1},
        {"COM1:", "COM1:", "/dev/ttyS0", 1},
        {"COM9", "COM9", "/dev/ttyS8", 1},
        {"COM12", "COM12", "/dev/ttyS0", 1},
        {"COM1.txt", "COM1.TXT", "/dev/ttyS0", 1},
        {"COM2/caf\xE9", "COM2/CAF\xC9", "/dev/ttyS1", 1},
        {"LPT3", "LPT3", "/dev/lp2", 2},
        {"EPT:", "EPT:", "/dev/lp0", 2},
        {"EPT9", "EPT9", "/dev/lp8", 2},
        {"LPT5EPT:", "LPT5EPT:", "/dev/lp0", 2},
        {"COMxEPT:", "COMXEPT:", "/dev/ttyS0", 1},
        {"EPT", "EPT", "####", 0},
        {"COM", "COM", "####", 0},
        {"COM0", "COM0", "####", 0},
        {"COM:", "COM:", "####", 0},
        {"COMx", "COMx", "####", 0},
        {"COMMAND.txt", "COMMAND.txt", "####", 0},
        {"com1", "com1", "####", 0},
        {"XCOM1", "XCOM1", "####", 0},
        {"LPT1.COM", "LPT1.COM", "####", 0},
        {"EPT1.LPT", "EPT1.LPT", "####", 0},
        {"/dev/null", "/dev/null", "####", 0},
        {"", "", "####", 0},
    };
    for (const auto &row : rows) {
        std::string name = row.name;
        char device[20] = "####";
        EXPECT_EQ(GetPortName(name.data(), device, sizeof device), row.type) << row.name;
        EXPECT_EQ(name, row.after);
        EXPECT_STREQ(device, row.device) << row.name;
        if (row.type) {
            EXPECT_EQ(std::string(device + strlen(device), device + sizeof device),
                      std::string(sizeof device - strlen(device), '\0'));
        }
    }
    char constant[] = "COM3";
    for (int32_t length : {1, 2, 3, 10, 11, -1, 0}) {
        char device[16];
        memset(device, '#', sizeof device);
        EXPECT_EQ(GetPortName(constant, device, length), length > 0 ? 1u : 0u);
        const std::string expected =
            length < 1 ? "" : std::string("/dev/ttyS2").substr(0, static_cast<size_t>(length) - 1);
        if (length > 0) {
            EXPECT_EQ(device, expected);
        }
        EXPECT_EQ(device[std::max(length, 0)], '#');
    }
    std::string name = "COM1x";
    EXPECT_EQ(GetPortName(name.data(), nullptr, 20), 0u);
    EXPECT_EQ(name, "COM1x");
}

TEST(PortNames, ComeFromTheProfile)
{
    StartedLibrary library;
    const struct {
        const char *key, *value, *name, *device;
        uint32_t type;
    } rows[] = {
        {"COM2", "/dev/ttyUSB1,RS422", "COM2", "/dev/ttyUSB1", 3},
        {"COM2", "/dev/ttyUSB1,rs232 modem", "COM2", "/dev/ttyUSB1", 6},
        {"COM2", "/dev/ttyUSB1", "COM2", "/dev/ttyUSB1", 0},
        {"COM2", "/dev/ttyUSB1,fast", "COM2", "/dev/ttyUSB1", 0},
        {"COM2", "", "COM2", "/dev/ttyS1", 1},
        {"COM2", "a,rs232", "COM2:", "/dev/ttyS1", 1}, // another key
        {"COM12", "b,rs449", "COM12", "b", 5},
        {"COM4.TXT", "c,rs423", "COM4.txt", "c", 4},
        {"LPT1", "/dev/ttyS3,Modem,x", "LPT1", "/dev/ttyS3", 6},
        {"EPT:", "/dev/usb/lp0,my parallelport", "EPT:", "/dev/usb/lp0", 2},
        {"COM5", "/dev/serial/by-id/usb-adapter-port00,rs232", "COM5",
         "/dev/serial/by-id/usb-adapter-port00", 0}, // cut before its type
    };
    for (const auto &row : rows) {
        SetPort(row.key, row.value);
        std::string name = row.name;
        char device[40];
        EXPECT_EQ(GetPortName(name.data(), device, sizeof device), row.type) << row.value;
        EXPECT_STREQ(device, row.device) << row.value;
    }
}

TEST(PortNames, EndWithAFolderThatIsNamedLikeAPort)
{
    StartedLibrary library;
    ASSERT_EQ(chdir(library.folder.path().c_str()), 0);
    SetWexelXiFolder("COM1");
    std::string name = "COM2";
    char device[20];
    EXPECT_EQ(GetPortName(name.data(), device, sizeof device), 1u);
    EXPECT_STREQ(device, "/dev/ttyS1");
}

TEST(DeviceType, SplitsItsValueInPlace)
{
    const struct {
        const char *value, *device, *text;
        uint32_t type;
    } rows[] = {
        {"/dev/a,RS232", "/dev/a", "rs232", 1},
        {"a,x PARALLELPORT y", "a", "x parallelport y", 2},
        {"a,rs422,rs423", "a", "rs422,rs423", 3},
        {"a,rs449rs423", "a", "rs449rs423", 4},
        {"a,rs449", "a", "rs449", 5},
        {",modem", "", "modem", 6},
        {"a,rs232modem", "a", "rs232modem", 6},
        {"a,\xC9 rs485", "a", "\xE9 rs485", 0},
        {"a,", "a", "", 0},
        {"RS232", "RS232", nullptr, 0},
        {"", "", nullptr, 0},
    };
    for (const auto &row : rows) {
        std::string value = row.value;
        EXPECT_EQ(GetDeviceType(value.data()), row.type) << row.value;
        EXPECT_STREQ(value.c_str(), row.device);
        if (row.text) {
            EXPECT_EQ(value.substr(strlen(row.device) + 1), row.text);
        }
    }
}

TEST(Settings, ReachTheLineToTheBit)
{
    StartedLibrary library;
    Line line;
    const termios before = line.Termios();
    DCB settings;
    ASSERT_EQ(BuildCommDCB("COM2:19200,e,7,2,x", &settings), TRUE);
    settings.XonChar = 0x11;
    settings.fDtrControl = DTR_CONTROL_DISABLE;
    settings.fOutxCtsFlow = 1;
    SetLastError(77);
    EXPECT_EQ(SetCommState(line.port, &settings), TRUE);
    EXPECT_EQ(GetLastError(), 0u);
    const termios after = line.Termios();
    EXPECT_EQ(cfgetispeed(&after), speed_t{B19200});
    EXPECT_EQ(cfgetospeed(&after), speed_t{B19200});
    EXPECT_EQ(after.c_iflag,
              ((before.c_iflag & ~tcflag_t(BRKINT | ISTRIP | INLCR | IGNCR | ICRNL)) | IGNBRK |
               INPCK | IXON | IXOFF));
    EXPECT_EQ(after.c_oflag, before.c_oflag & ~tcflag_t{OPOST});
    EXPECT_EQ(after.c_lflag, (before.c_lflag & ~tcflag_t(ISIG | ICANON | ECHO)) | NOFLSH);
    EXPECT_EQ(after.c_cflag & (CREAD | CLOCAL | HUPCL | CSTOPB | CRTSCTS),
              tcflag_t(CREAD | CLOCAL | CSTOPB));
    EXPECT_EQ(after.c_cc[VSTART], 0x11);
    EXPECT_EQ(after.c_cc[VSTOP], 0);
    EXPECT_EQ(after.c_cc[VEOF], 4);
    EXPECT_EQ(after.c_cc[VMIN] + after.c_cc[VTIME] + after.c_cc[VINTR], 0);

    DCB told;
    memset(&told, 0xA5, sizeof told);
    SetLastError(77);
    EXPECT_EQ(GetCommState(line.port, &told), TRUE);
    EXPECT_EQ(GetLastError(), 77u);
    EXPECT_EQ(told.BaudRate, 19200u);
    EXPECT_EQ(told.StopBits, TWOSTOPBITS);
    EXPECT_EQ(told.fOutX + told.fInX, 2u);
    EXPECT_EQ(told.Parity, 0xA5);
    EXPECT_EQ(told.DCBlength, 0xA5A5A5A5u);
    EXPECT_EQ(told.EofChar, 4);

    // Set, closed and opened again: the line still has them.
    line.Close();
    line.Open();
    DCB again;
    memset(&again, 0xA5, sizeof again);
    EXPECT_EQ(GetCommState(line.port, &again), TRUE);
    EXPECT_EQ(memcmp(&again, &told, sizeof told), 0);
}

TEST(Settings, ThatAreRefusedChangeNothing)
{
    StartedLibrary library;
    Line line;
    const termios before = line.Termios();
    DCB good;
    ASSERT_EQ(BuildCommDCB("9600,n,8,1", &good), TRUE);
    const auto refuse = [&](DCB settings, uint32_t error) {
        EXPECT_EQ(SetCommState(line.port, &settings), FALSE);
        EXPECT_EQ(GetLastError(), error);
        ExpectLockIsFree();
        const termios after = line.Termios();
        EXPECT_EQ(memcmp(&after, &before, sizeof after), 0);
    };
    DCB bad = good;
    bad.StopBits = ONE5STOPBITS;
    refuse(bad, IE_BYTESIZE);
    bad.BaudRate = 14400;
    refuse(bad, IE_BAUDRATE);
    EXPECT_EQ(BuildCommDCB("9600,q,8,1", &bad), FALSE);
    EXPECT_EQ(GetLastError(), IE_DEFAULT);
    SetLastError(77);
    EXPECT_EQ(BuildCommDCB("9600,n,8,1", &bad), TRUE);
    EXPECT_EQ(GetLastError(), 77u);
}

TEST(Settings, AreRefusedOnOtherHandles)
{
    StartedLibrary library;
    HANDLE file = OpenNamed(library.folder.file("f"), CREATE_ALWAYS);
    HANDLE semaphore = CreateSemaphore(nullptr, 0, 1, nullptr);
    for (HANDLE handle : {HANDLE{}, INVALID_HANDLE_VALUE, semaphore, file}) {
        DCB settings = {}, same = {};
        COMMTIMEOUTS timeouts = {};
        EXPECT_EQ(BuildCommDCB("9600,n,8,1", &settings), TRUE);
        same = settings;
        const auto refused = [](BOOL result) {
            ExpectLockIsFree();
            const uint32_t error = GetLastError();
            SetLastError(0);
            return result == FALSE && error == ERROR_GEN_FAILURE; // for a file too: ENOTTY
        };
        SetLastError(0);
        EXPECT_TRUE(refused(GetCommState(handle, &settings)));
        EXPECT_TRUE(refused(SetCommState(handle, &settings)));
        EXPECT_TRUE(refused(GetCommTimeouts(handle, &timeouts)));
        EXPECT_TRUE(refused(SetCommTimeouts(handle, &timeouts)));
        EXPECT_EQ(memcmp(&settings, &same, sizeof same), 0);

        COMMPROP properties[2] = {{9, 9}, {9, 9}};
        EXPECT_EQ(GetCommProperties(handle, properties), TRUE);
        EXPECT_EQ(GetLastError(), handle == file ? 0u : ERROR_GEN_FAILURE);
        EXPECT_EQ(properties[0].dwReserved + properties[0].dwProvSubType, 0u);
        EXPECT_EQ(properties[1].dwReserved, 9u);
        EXPECT_EQ(PurgeComm(handle, 15), 0);
        EXPECT_EQ(GetLastError(), 0u);
    }
    CloseHandle(semaphore);
    CloseHandle(file);
}

TEST(ParallelPort, IsPassedOver)
{
    StartedLibrary library;
    Line line("LPT1", "parallelport");
    const termios before = line.Termios();
    DCB settings, same;
    COMMTIMEOUTS timeouts = {{1, 2, 3, 4, 5}, 6};
    memset(&settings, 0xA5, sizeof settings);
    same = settings;
    SetLastError(77);
    EXPECT_EQ(SetCommState(line.port, &settings), TRUE);
    EXPECT_EQ(GetCommState(line.port, &settings), TRUE);
    EXPECT_EQ(SetCommTimeouts(line.port, &timeouts), TRUE);
    EXPECT_EQ(GetCommTimeouts(line.port, &timeouts), TRUE);
    EXPECT_EQ(GetLastError(), 77u);
    EXPECT_EQ(timeouts.VTimeTenths, 6u);
    EXPECT_EQ(memcmp(&settings, &same, sizeof same), 0);
    const termios after = line.Termios();
    EXPECT_EQ(memcmp(&after, &before, sizeof after), 0);
    COMMPROP properties;
    EXPECT_EQ(GetCommProperties(line.port, &properties), TRUE);
    EXPECT_EQ(properties.dwProvSubType, PST_PARALLELPORT);

    // It is written like a file: what is written leaves with the flush.
    ExpectWritten(line, "page", TRUE, 0);
    EXPECT_EQ(FlushFileBuffers(line.port), TRUE);
    EXPECT_EQ(line.ReadMaster(), "page");
}

TEST(Timeouts, LiveInTheLineAndDelayNoRead)
{
    StartedLibrary library;
    Line line("COM2", "modem");
    line.SetRaw();
    COMMTIMEOUTS timeouts = {{1, 2, 3, 4, 5}, 300};
    SetLastError(77);
    EXPECT_EQ(SetCommTimeouts(line.port, &timeouts), TRUE);
    EXPECT_EQ(line.Termios().c_cc[VTIME], 44);
    EXPECT_EQ(line.Termios().c_cc[VMIN], 0);
    EXPECT_EQ(GetCommTimeouts(line.port, &timeouts), TRUE);
    EXPECT_EQ(GetLastError(), 77u);
    const COMMTIMEOUTS expected = {{1, 2, 3, 4, 5}, 44};
    EXPECT_EQ(memcmp(&timeouts, &expected, sizeof timeouts), 0);

    timeouts.VTimeTenths = 50;
    EXPECT_EQ(SetCommTimeouts(line.port, &timeouts), TRUE);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(line.ReadPort(), "");
    WriteMaster(line, "abc");
    EXPECT_EQ(line.ReadPort(), "abc");
    EXPECT_LT(SecondsSince(start), 3) << "no read waits for the timeout";
    EXPECT_EQ(line.Termios().c_cc[VTIME], 50) << "and each puts it back";

    line.SetRaw();
    EXPECT_EQ(GetCommTimeouts(line.port, &timeouts), TRUE);
    EXPECT_EQ(timeouts.VTimeTenths, 0u);
    COMMPROP properties;
    EXPECT_EQ(GetCommProperties(line.port, &properties), TRUE);
    EXPECT_EQ(properties.dwProvSubType, PST_MODEM);
}

TEST(Line, CarriesMegabytesToASlowReader)
{
    StartedLibrary library;
    Line line;
    line.SetRaw();
    const std::string sent = Pattern(2 << 20);
    std::string received;
    std::thread reader([&] {
        while (received.size() < sent.size()) {
            const std::string piece = line.ReadMaster();
            if (piece.empty())
                break;
            received += piece;
            if (received.size() % 16 == 0)
                usleep(200);
        }
    });
    ExpectWritten(line, sent, TRUE, 0);
    reader.join();
    EXPECT_TRUE(received == sent) << received.size();
}

TEST(Line, TakesMegabytesWithoutLoss)
{
    StartedLibrary library;
    Line line;
    line.SetRaw();
    const std::string sent = Pattern(2 << 20);
    std::thread writer([&] { WriteMaster(line, sent); });
    std::string received;
    const auto start = std::chrono::steady_clock::now();
    while (received.size() < sent.size() && SecondsSince(start) < 60)
        received += line.ReadPort();
    writer.join();
    EXPECT_TRUE(received == sent) << received.size();
}

TEST(Line, TwoAtOnceDoNotMix)
{
    StartedLibrary library;
    Line second("COM2"), third("COM3", "rs485 as rs422");
    second.SetRaw();
    third.SetRaw();
    const termios before = third.Termios();
    COMMTIMEOUTS timeouts = {{}, 7};
    EXPECT_EQ(SetCommTimeouts(second.port, &timeouts), TRUE);
    const termios after = third.Termios();
    EXPECT_EQ(memcmp(&before, &after, sizeof after), 0);
    for (int i = 0; i < 50; i++) {
        ExpectWritten(second, "to second " + std::to_string(i), TRUE, 0);
        ExpectWritten(third, "to third " + std::to_string(i), TRUE, 0);
        EXPECT_EQ(third.ReadMaster(), "to third " + std::to_string(i));
        EXPECT_EQ(second.ReadMaster(), "to second " + std::to_string(i));
        WriteMaster(second, "two");
        WriteMaster(third, "three");
        EXPECT_EQ(third.ReadPort(), "three");
        EXPECT_EQ(second.ReadPort(), "two");
    }
    ExpectWritten(third, "", TRUE, 0);
}

TEST(Line, SurvivesAPeerThatHangsUp)
{
    StartedLibrary library;
    const size_t descriptors = OpenDescriptors();
    {
        Line line;
        line.SetRaw();
        SetPort("Delay", "1");
        line.HangUp();
        EXPECT_EQ(line.ReadPort(), "");
        ExpectWritten(line, "lost", FALSE, ERROR_WRITE_FAULT);
        ExpectLockIsFree();
        DCB settings;
        EXPECT_EQ(GetCommState(line.port, &settings), FALSE);
        EXPECT_EQ(GetLastError(), ERROR_GEN_FAILURE);
        ExpectLockIsFree();
        const auto start = std::chrono::steady_clock::now();
        line.Close(); // tries to drain for as long as "Delay" says, and is true all the same
        EXPECT_EQ(GetLastError(), 0u);
        EXPECT_LT(SecondsSince(start), 10);
    }
    EXPECT_EQ(OpenDescriptors(), descriptors);
}

TEST(Line, DrainsAtLeastOnceAndAtMostTheDelay)
{
    StartedLibrary library;
    const struct {
        const char *delay;
        double least, most;
    } rows[] = {{"-1", 0, 0.9}, {"2", 1, 10}, {"1s", 0, 10}};
    for (const auto &row : rows) {
        Line line;
        line.SetRaw();
        SetPort("Delay", row.delay);
        line.HangUp();
        const auto start = std::chrono::steady_clock::now();
        line.Close();
        EXPECT_GE(SecondsSince(start), row.least) << row.delay;
        EXPECT_LT(SecondsSince(start), row.most) << row.delay;
    }
}

TEST(Line, OpensOnlyWhatIsThere)
{
    StartedLibrary library;
    const size_t descriptors = OpenDescriptors();
    SetPort("COM4", library.folder.file("none") + ",rs232");
    SetPort("COM5", "/dev/null,rs232");
    SetPort("COM6", "/dev/null,no such type");
    EXPECT_EQ(OpenNamed("COM4"), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_GEN_FAILURE);
    EXPECT_EQ(OpenNamed("COM4", CREATE_ALWAYS), INVALID_HANDLE_VALUE);
    EXPECT_FALSE(FileExists(library.folder.file("none")));
    EXPECT_EQ(OpenNamed("COM5", CREATE_NEW), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_FILE_EXISTS);
    ASSERT_EQ(chdir(library.folder.path().c_str()), 0);
    HANDLE file =
        OpenNamed("COM6x", CREATE_NEW); // no entry: the device /dev/ttyS5, if there is one
    if (file != INVALID_HANDLE_VALUE)
        CloseHandle(file);
    std::string name = "COM6";
    file = OpenNamed(name, CREATE_ALWAYS); // an entry without a type: a file of that name
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    CloseHandle(file);
    EXPECT_TRUE(FileExists(library.folder.file("COM6")));
    EXPECT_EQ(OpenDescriptors(), descriptors);
    ExpectLockIsFree();
}

} // namespace
