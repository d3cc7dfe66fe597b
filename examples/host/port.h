// The serial port that the job names.
#pragma once

#include <string>

// Opens the port, sets the line up and sends the bytes. Gives the device's name back.
void SendToPort(const std::string &port, const std::string &bytes);
