// Several notes at once: worker threads that take turns at a limited number of places.
#pragma once

#include <functional>

// Runs task(0) to task(count - 1) on threads of the library's, at most `places` at a time, and
// returns when all have ended. The first exception of a task is thrown here.
void RunOnWorkers(int count, int places, const std::function<void(int)> &task);
