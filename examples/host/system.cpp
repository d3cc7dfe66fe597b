#include "system.h"

#include "host.h"

std::string DescribeMachine()
{
    char computer[256] = "";
    uint32_t computerSize = sizeof computer;
    GetComputerName(computer, &computerSize);
    char user[256] = "";
    uint32_t userSize = sizeof user;
    GetUserName(user, &userSize);
    SYSTEM_INFO system;
    GetSystemInfo(&system);
    return std::string(computer) + ", " + std::to_string(system.dwNumberOfProcessors) +
           " processors, user " + user;
}

std::string RunCommand(const std::string &command)
{
    constexpr uint32_t kEndedWell = 32; // what an exit code of 0 comes back as
    char *output = nullptr;
    const uint32_t result = WinExecEx(command.c_str(), 0, WINEXEC_WAIT | WINEXEC_CAPTURE, &output);
    std::string text = output ? output : "";
    GlobalFree(output); // the block is the caller's
    if (result != kEndedWell)
        throw std::runtime_error(command + " ended with " + std::to_string(result));
    if (!text.empty() && text.back() == '\n')
        text.pop_back();
    return text;
}

void LogEvent(const std::string &text)
{
    HANDLE log = RegisterEventSource(nullptr, "example_host");
    const char *strings[] = {text.c_str()};
    ReportEvent(log, 0, 0, 0, nullptr, 1, 0, strings, nullptr);
    DeregisterEventSource(log);
}
