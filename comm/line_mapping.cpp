#include "comm/line_mapping.h"

#include <iterator>

#include "comm/baud_rates.h"
#include "wexelxi/core.h"

namespace wexelxi {

namespace {

constexpr tcflag_t kDataBits[] = {CS5, CS6, CS7, CS8}; // of ByteSize 5 to 8
constexpr uint8_t kFewestDataBits = 5;
constexpr uint16_t kXonXoffLimit = 10;
constexpr int kRawControlCharacters = 17; // those that raw mode clears
constexpr cc_t kEndOfFile = 4;

void SetTo(tcflag_t *flags, tcflag_t bits, bool on)
{
    *flags = on ? *flags | bits : *flags & ~bits;
}

void TellFlowControl(const termios &line, DCB *settings)
{
    const bool hardware = line.c_cflag & CRTSCTS;
    if (hardware)
        settings->fOutxCtsFlow = settings->fOutxDsrFlow = 1;
    settings->fDtrControl = hardware ? DTR_CONTROL_ENABLE : DTR_CONTROL_DISABLE;
    settings->fRtsControl = hardware ? RTS_CONTROL_ENABLE : RTS_CONTROL_DISABLE;
    settings->fOutX = (line.c_iflag & IXON) != 0;
    settings->fInX = (line.c_iflag & IXOFF) != 0;
    settings->XonLim = settings->XoffLim = kXonXoffLimit;
}

void TellCharacter(cc_t character, char *field)
{
    if (character != 0)
        *field = static_cast<char>(character);
}

void ForceRawMode(termios *line)
{
    for (int i = 0; i < kRawControlCharacters; i++)
        line->c_cc[i] = 0;
    line->c_cc[VEOF] = kEndOfFile;
    line->c_iflag |= IGNBRK;
    line->c_iflag &= ~static_cast<tcflag_t>(BRKINT | ISTRIP | INLCR | IGNCR | ICRNL);
    line->c_oflag &= ~static_cast<tcflag_t>(OPOST);
    line->c_cflag |= CREAD | CLOCAL;
    line->c_cflag &= ~static_cast<tcflag_t>(HUPCL);
    line->c_lflag &= ~static_cast<tcflag_t>(ISIG | ICANON | ECHO);
    line->c_lflag |= NOFLSH;
}

bool SetSpeed(uint32_t baudRate, termios *line)
{
    for (const auto &row : kBaudRates) {
        if (row.baudRate == baudRate)
            return cfsetispeed(line, row.speed) == 0 && cfsetospeed(line, row.speed) == 0;
    }
    return false;
}

bool SetDataBits(uint8_t byteSize, termios *line)
{
    if (byteSize < kFewestDataBits || byteSize > 8)
        return false;
    line->c_cflag &= ~static_cast<tcflag_t>(CSIZE);
    line->c_cflag |= kDataBits[byteSize - kFewestDataBits];
    return true;
}

bool SetParity(const DCB &settings, termios *line)
{
    line->c_cflag &= ~static_cast<tcflag_t>(PARENB | PARODD);
    if (!settings.fParity)
        return true;
    if (settings.Parity > EVENPARITY)
        return false;
    SetTo(&line->c_cflag, PARENB, settings.Parity != NOPARITY);
    SetTo(&line->c_cflag, PARODD, settings.Parity == ODDPARITY);
    SetTo(&line->c_iflag, INPCK, settings.Parity != NOPARITY);
    return true;
}

bool SetStopBits(uint8_t stopBits, termios *line)
{
    if (stopBits != ONESTOPBIT && stopBits != TWOSTOPBITS)
        return false;
    SetTo(&line->c_cflag, CSTOPB, stopBits == TWOSTOPBITS);
    return true;
}

void SetFlowControl(const DCB &settings, termios *line)
{
    if (settings.fDtrControl == DTR_CONTROL_DISABLE)
        line->c_cflag &= ~CRTSCTS;
    else if (settings.fOutxCtsFlow || settings.fDtrControl == DTR_CONTROL_ENABLE ||
             settings.fRtsControl == RTS_CONTROL_ENABLE)
        line->c_cflag |= CRTSCTS;
    SetTo(&line->c_iflag, IXON, settings.fOutX);
    SetTo(&line->c_iflag, IXOFF, settings.fInX);
}

void SetCharacter(char field, cc_t *character)
{
    if (field != 0)
        *character = static_cast<cc_t>(field);
}

} // namespace

void DcbFromTermios(const termios &line, DCB *settings)
{
    const speed_t speed = cfgetispeed(&line);
    for (const auto &row : kBaudRates) {
        if (row.speed == speed)
            settings->BaudRate = row.baudRate;
    }
    for (uint8_t i = 0; i < std::size(kDataBits); i++) {
        if ((line.c_cflag & CSIZE) == kDataBits[i])
            settings->ByteSize = static_cast<uint8_t>(kFewestDataBits + i);
    }
    if (!(line.c_cflag & (PARENB | PARODD)))
        settings->fParity = 0;
    settings->StopBits = line.c_cflag & CSTOPB ? TWOSTOPBITS : ONESTOPBIT;
    settings->fBinary = 1;
    settings->fNull = 0;
    TellFlowControl(line, settings);
    TellCharacter(line.c_cc[VSTART], &settings->XonChar);
    TellCharacter(line.c_cc[VSTOP], &settings->XoffChar);
    TellCharacter(line.c_cc[VEOF], &settings->EofChar);
}

uint32_t TermiosFromDcb(const DCB &settings, termios *line)
{
    ForceRawMode(line);
    if (!SetSpeed(settings.BaudRate, line))
        return IE_BAUDRATE;
    if (!SetDataBits(settings.ByteSize, line) || !SetParity(settings, line) ||
        !SetStopBits(settings.StopBits, line))
        return IE_BYTESIZE;
    SetFlowControl(settings, line);
    SetCharacter(settings.XonChar, &line->c_cc[VSTART]);
    SetCharacter(settings.XoffChar, &line->c_cc[VSTOP]);
    SetCharacter(settings.EofChar, &line->c_cc[VEOF]);
    return ERROR_SUCCESS;
}

} // namespace wexelxi
