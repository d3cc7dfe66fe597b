// The mapping between DCB and termios, for the bits that a pseudo-terminal would not keep.
#include <cstring>
#include <gtest/gtest.h>

#include "comm/line_mapping.h"

namespace wexelxi {
namespace {

TEST(LineMapping, SetsSpeedSizeParityAndStopBits)
{
    const tcflag_t mapped = CBAUD | CSIZE | PARENB | PARODD | CSTOPB | CREAD | CLOCAL | HUPCL;
    const struct {
        uint32_t speed;
        int size, hasParity, parity, stop;
        uint32_t fault;
        tcflag_t control;
        int inputParity; // INPCK: set, cleared, or -1 for as it was
    } rows[] = {
        {110, 5, 0, 0, 0, 0, B110 | CS5, -1},
        {9600, 6, 0, 3, 2, 0, B9600 | CS6 | CSTOPB, -1},
        {57600, 7, 1, 2, 2, 0, 4097 | CS7 | PARENB | CSTOPB, 1},
        {115200, 8, 1, 1, 0, 0, 4098 | CS8 | PARENB | PARODD, 1},
        {230400, 8, 1, 0, 0, 0, 4099 | CS8, 0},
        {9600, 4, 0, 0, 0, IE_BYTESIZE, 0, 0},
        {9600, 9, 0, 0, 0, IE_BYTESIZE, 0, 0},
        {9600, 8, 1, 3, 0, IE_BYTESIZE, 0, 0},
        {9600, 8, 0, 0, 1, IE_BYTESIZE, 0, 0},
        {14400, 9, 0, 0, 1, IE_BAUDRATE, 0, 0}, // the speed is judged first
        {0, 8, 0, 0, 0, IE_BAUDRATE, 0, 0},
        {13, 8, 0, 0, 0, IE_BAUDRATE, 0, 0},
    };
    for (const auto &row : rows) {
        for (const int before : {0, 0xFF}) {
            DCB settings = {};
            settings.BaudRate = row.speed;
            settings.ByteSize = static_cast<uint8_t>(row.size);
            settings.fParity = row.hasParity & 1;
            settings.Parity = static_cast<uint8_t>(row.parity);
            settings.StopBits = static_cast<uint8_t>(row.stop);
            termios line;
            memset(&line, before, sizeof line);
            ASSERT_EQ(TermiosFromDcb(settings, &line), row.fault) << row.speed << " " << row.size;
            if (row.fault)
                continue;
            EXPECT_EQ(line.c_cflag & mapped, row.control | CREAD | CLOCAL);
            EXPECT_EQ(line.c_iflag & INPCK ? 1 : 0,
                      row.inputParity < 0 ? before & 1 : row.inputParity);
            for (int i = 0; i < NCCS; i++)
                EXPECT_EQ(line.c_cc[i], i == VEOF ? 4 : i <= 16 ? 0 : before) << i;
            DCB told = {};
            told.Parity = 9;
            told.fParity = 1;
            DcbFromTermios(line, &told);
            EXPECT_EQ(told.BaudRate, row.speed);
            EXPECT_EQ(told.ByteSize, settings.ByteSize);
            EXPECT_EQ(told.StopBits, settings.StopBits);
            EXPECT_EQ(told.fParity, row.control & PARENB ? 1u : 0u);
            EXPECT_EQ(told.Parity, 9);
        }
    }
}

TEST(LineMapping, SetsAndTellsFlowControl)
{
    for (unsigned bits = 0; bits < 64; bits++) {
        DCB settings = {}, told = {};
        settings.BaudRate = 9600;
        settings.ByteSize = 8;
        settings.fDtrControl = bits & 3;
        settings.fRtsControl = bits >> 2 & 3;
        settings.fOutxCtsFlow = settings.fOutX = bits >> 4 & 1;
        const bool before = bits >> 5;
        termios line;
        memset(&line, before ? 0xFF : 0, sizeof line);
        cfsetispeed(&line, B1800);
        told.BaudRate = 77;
        told.fOutxDsrFlow = told.fNull = 1;
        DcbFromTermios(line, &told);
        EXPECT_EQ(told.BaudRate, 77u);
        EXPECT_EQ(told.fOutxCtsFlow, before);
        ASSERT_EQ(TermiosFromDcb(settings, &line), 0u);
        const bool hardware =
            settings.fDtrControl != 0 && (before || settings.fOutxCtsFlow ||
                                          settings.fDtrControl == 1 || settings.fRtsControl == 1);
        EXPECT_EQ((line.c_cflag & CRTSCTS) != 0, hardware) << bits;
        told.fDtrControl = told.fRtsControl = 2;
        DcbFromTermios(line, &told);
        EXPECT_EQ(told.fDtrControl, hardware);
        EXPECT_EQ(told.fRtsControl, hardware);
        EXPECT_EQ(told.fOutX, settings.fOutX);
        EXPECT_EQ(told.fInX, 0u);
        EXPECT_TRUE(told.fBinary && !told.fNull && told.fOutxDsrFlow);
    }
}

} // namespace
} // namespace wexelxi
