#include "port.h"

#include "host.h"

void SendToPort(const std::string &port, const std::string &bytes)
{
    std::string name = port; // upper-cased in place when it is a port
    Handle line(CreateFile(name.data(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0,
                           nullptr));
    Check(line.valid(), "CreateFile " + port);

    DCB settings;
    Check(BuildCommDCB("115200,n,8,1", &settings), "BuildCommDCB");
    settings.fDtrControl = DTR_CONTROL_DISABLE; // no hardware flow control on a three-wire line
    Check(SetCommState(line.get(), &settings), "SetCommState");

    uint32_t written = 0;
    Check(
        WriteFile(line.get(), bytes.data(), static_cast<uint32_t>(bytes.size()), &written, nullptr),
        "WriteFile " + port);
    Check(line.close(), "CloseHandle " + port); // waits until the line has drained
}
