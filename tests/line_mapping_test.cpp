// The mapping between DCB and termios, with the bits that a pseudo-terminal would not keep.
#include <cstring>
#include <gtest/gtest.h>
#include <string>

#include "comm/line_mapping.h"

namespace wexelxi {
namespace {

DCB Settings(uint32_t speed = 9600)
{
    DCB settings = {};
    settings.BaudRate = speed;
    settings.ByteSize = 8;
    return settings;
}

termios Line(unsigned char fill)
{
    termios line;
    memset(&line, fill, sizeof line);
    return line;
}

TEST(LineMapping, ForcesRawMode)
{
    for (const int fill : {0x00, 0xFF}) {
        const termios before = Line(static_cast<unsigned char>(fill));
        termios line = before;
        ASSERT_EQ(TermiosFromDcb(Settings(), &line), 0u);
        for (int i = 0; i < NCCS; i++)
            EXPECT_EQ(line.c_cc[i], i == VEOF ? 4 : i <= 16 ? 0 : fill) << i;
        // What raw mode sets, and what it and these settings clear; all other bits stay.
        const tcflag_t ones = fill ? ~tcflag_t{0} : 0;
        EXPECT_EQ(line.c_iflag & ~(BRKINT | ISTRIP | INLCR | IGNCR | ICRNL | IXON | IXOFF | IGNBRK |
                                   020000000000), // the speed calls own that bit
                  ones & ~tcflag_t(BRKINT | ISTRIP | INLCR | IGNCR | ICRNL | IXON | IXOFF | IGNBRK |
                                   020000000000));
        EXPECT_EQ(line.c_iflag & (IGNBRK | BRKINT | ISTRIP | INLCR | IGNCR | ICRNL | IXON | IXOFF),
                  tcflag_t{IGNBRK});
        EXPECT_EQ(line.c_oflag, ones & ~tcflag_t{OPOST});
        EXPECT_EQ(line.c_lflag, (ones & ~tcflag_t(ISIG | ICANON | ECHO)) | NOFLSH);
        const tcflag_t mapped =
            CREAD | CLOCAL | HUPCL | CSIZE | PARENB | PARODD | CSTOPB | CRTSCTS | CBAUD;
        EXPECT_EQ(line.c_cflag & mapped, tcflag_t(CREAD | CLOCAL | CS8 | B9600));
        EXPECT_EQ(line.c_cflag & ~mapped, ones & ~mapped);
    }
}

TEST(LineMapping, KnowsTwelveSpeedsBothWays)
{
    const struct {
        uint32_t speed;
        speed_t code;
    } rows[] = {{110, 3},    {300, 7},      {600, 8},       {1200, 9},
                {2400, 11},  {4800, 12},    {9600, 13},     {19200, 14},
                {38400, 15}, {57600, 4097}, {115200, 4098}, {230400, 4099}};
    for (const auto &row : rows) {
        termios line = Line(0);
        ASSERT_EQ(TermiosFromDcb(Settings(row.speed), &line), 0u);
        EXPECT_EQ(cfgetispeed(&line), row.code);
        EXPECT_EQ(cfgetospeed(&line), row.code);
        DCB told = Settings(1);
        DcbFromTermios(line, &told);
        EXPECT_EQ(told.BaudRate, row.speed);
    }
    for (const uint32_t speed : {0u, 50u, 1800u, 14400u, 460800u, 13u, 4097u, 0xFFFFFFFFu}) {
        termios line = Line(0);
        EXPECT_EQ(TermiosFromDcb(Settings(speed), &line), IE_BAUDRATE) << speed;
    }
    termios line = Line(0);
    cfsetispeed(&line, B1800);
    DCB told = Settings(77);
    DcbFromTermios(line, &told);
    EXPECT_EQ(told.BaudRate, 77u);
}

TEST(LineMapping, SetsSizeParityAndStopBits)
{
    const tcflag_t mapped = CSIZE | PARENB | PARODD | CSTOPB;
    const struct {
        int size, hasParity, parity, stop;
        uint32_t fault;
        tcflag_t control;
        int inputParity; // INPCK: set, cleared, or -1 for as it was
    } rows[] = {
        {5, 0, 0, 0, 0, CS5, -1},
        {6, 0, 3, 2, 0, CS6 | CSTOPB, -1},
        {7, 1, 2, 2, 0, CS7 | PARENB | CSTOPB, 1},
        {8, 1, 1, 0, 0, CS8 | PARENB | PARODD, 1},
        {8, 1, 0, 0, 0, CS8, 0},
        {4, 0, 0, 0, IE_BYTESIZE, 0, 0},
        {9, 0, 0, 0, IE_BYTESIZE, 0, 0},
        {255, 0, 0, 0, IE_BYTESIZE, 0, 0},
        {8, 1, 3, 0, IE_BYTESIZE, 0, 0},
        {8, 1, 4, 0, IE_BYTESIZE, 0, 0},
        {8, 0, 0, 1, IE_BYTESIZE, 0, 0},
        {8, 0, 0, 3, IE_BYTESIZE, 0, 0},
    };
    for (const auto &row : rows) {
        for (const uint8_t fill : {uint8_t{0}, uint8_t{0xFF}}) {
            DCB settings = Settings();
            settings.ByteSize = static_cast<uint8_t>(row.size);
            settings.fParity = row.hasParity != 0;
            settings.Parity = static_cast<uint8_t>(row.parity);
            settings.StopBits = static_cast<uint8_t>(row.stop);
            termios line = Line(fill);
            ASSERT_EQ(TermiosFromDcb(settings, &line), row.fault) << row.size << row.parity;
            if (row.fault)
                continue;
            EXPECT_EQ(line.c_cflag & mapped, row.control);
            const bool before = fill & 1;
            EXPECT_EQ((line.c_iflag & INPCK) != 0, row.inputParity < 0 ? before : row.inputParity);
            DCB told = {};
            told.Parity = 9;
            told.fParity = 1;
            DcbFromTermios(line, &told);
            EXPECT_EQ(told.ByteSize, settings.ByteSize);
            EXPECT_EQ(told.StopBits, settings.StopBits);
            EXPECT_EQ(told.fParity, (row.control & PARENB) != 0);
            EXPECT_EQ(told.Parity, 9);
        }
    }
    DCB both = Settings(14400);
    both.ByteSize = 9;
    termios line = Line(0);
    EXPECT_EQ(TermiosFromDcb(both, &line), IE_BAUDRATE) << "the speed is judged first";
}

TEST(LineMapping, SetsAndTellsFlowControl)
{
    for (unsigned bits = 0; bits < 256; bits++) {
        DCB settings = Settings();
        settings.fDtrControl = bits & 3;
        settings.fRtsControl = bits >> 2 & 3;
        settings.fOutxCtsFlow = bits >> 4 & 1;
        settings.fOutX = bits >> 5 & 1;
        settings.fInX = bits >> 6 & 1;
        const bool before = bits >> 7;
        termios line = Line(before ? 0xFF : 0);
        ASSERT_EQ(TermiosFromDcb(settings, &line), 0u);
        const bool wanted =
            settings.fOutxCtsFlow || settings.fDtrControl == 1 || settings.fRtsControl == 1;
        const bool hardware = settings.fDtrControl != 0 && (wanted || before);
        EXPECT_EQ((line.c_cflag & CRTSCTS) != 0, hardware) << bits;

        DCB told = {};
        told.fNull = told.fAbortOnError = told.fOutxDsrFlow = 1;
        told.fDtrControl = told.fRtsControl = 2;
        told.ErrorChar = told.EvtChar = 'e';
        told.XonChar = told.XoffChar = told.EofChar = 'q';
        DcbFromTermios(line, &told);
        EXPECT_EQ(told.fBinary, 1u);
        EXPECT_EQ(told.fNull, 0u);
        EXPECT_EQ(told.fAbortOnError, 1u);
        EXPECT_EQ(told.fOutxCtsFlow, hardware);
        EXPECT_EQ(told.fOutxDsrFlow, 1u);
        EXPECT_EQ(told.fDtrControl, hardware);
        EXPECT_EQ(told.fRtsControl, hardware);
        EXPECT_EQ(told.fOutX, settings.fOutX);
        EXPECT_EQ(told.fInX, settings.fInX);
        EXPECT_EQ(told.XonLim + told.XoffLim, 20);
        EXPECT_EQ(
            std::string({told.XonChar, told.XoffChar, told.ErrorChar, told.EofChar, told.EvtChar}),
            "qqe\4e");
    }
    DCB settings = Settings();
    settings.XonChar = '\x11';
    settings.XoffChar = '\x93';
    settings.EofChar = '\x1A';
    termios line = Line(0);
    ASSERT_EQ(TermiosFromDcb(settings, &line), 0u);
    EXPECT_EQ(line.c_cc[VSTART], 0x11);
    EXPECT_EQ(line.c_cc[VSTOP], 0x93);
    EXPECT_EQ(line.c_cc[VEOF], 0x1A);
}

} // namespace
} // namespace wexelxi
