// The system around the host: its machine, a command run through the shell, and the event log.
#pragma once

#include <string>

// Such as "mill, 4 processors, user anna".
std::string DescribeMachine();

// Runs a command to its end and gives what it printed, without the last line end.
std::string RunCommand(const std::string &command);

// Leaves a line in the system's log.
void LogEvent(const std::string &text);
