// The speeds that a line can have, in both worlds.
#pragma once

#include <cstdint>
#include <termios.h>

namespace wexelxi {

constexpr struct {
    uint32_t baudRate; // of a DCB, in bits per second
    speed_t speed;     // of a termios
} kBaudRates[] = {
    {110, B110},     {300, B300},     {600, B600},       {1200, B1200},
    {2400, B2400},   {4800, B4800},   {9600, B9600},     {19200, B19200},
    {38400, B38400}, {57600, B57600}, {115200, B115200}, {230400, B230400},
};

} // namespace wexelxi
