#include <algorithm>
#include <cerrno>
#include <sys/syscall.h>
#include <unistd.h>

#include "tools/trace/counts.h"
#include "tools/trace/pass.h"
#include "tools/trace/values.h"

namespace trace {
namespace {

constexpr int kDeepest = 64;

// Where the thread's watched calls stand on its stack, outermost first.
struct Calls {
    int depth;
    const void *frames[kDeepest];
};
thread_local Calls gCalls;

// The depth of a call at this place. Calls that stand at or below it ended without telling.
int Enter(const void *frame)
{
    while (gCalls.depth > 0 && gCalls.frames[gCalls.depth - 1] <= frame)
        gCalls.depth--;
    if (gCalls.depth == kDeepest)
        return kDeepest;
    gCalls.frames[gCalls.depth] = frame;
    return gCalls.depth++;
}

uint32_t LastError()
{
    return reinterpret_cast<uint32_t (*)()>(Real(kGetLastError))();
}

timespec Now(clockid_t clock)
{
    timespec now;
    clock_gettime(clock, &now);
    return now;
}

double Seconds(const timespec &from, const timespec &to)
{
    return static_cast<double>(to.tv_sec - from.tv_sec) +
           static_cast<double>(to.tv_nsec - from.tv_nsec) * 1e-9;
}

const timespec gStart = Now(CLOCK_MONOTONIC);

// The first column: since the start, since the line before, or the time of day.
void AddTime(Line &line, const timespec &start)
{
    static timespec previous = gStart;
    if (gSettings.times == 't') {
        const timespec now = Now(CLOCK_REALTIME);
        tm day;
        localtime_r(&now.tv_sec, &day);
        line.Format(gSettings.json ? "\"%02d:%02d:%02d.%06ld\"" : "%02d:%02d:%02d.%06ld",
                    day.tm_hour, day.tm_min, day.tm_sec, now.tv_nsec / 1000);
    } else {
        line.Format(gSettings.json ? "%.6f" : "%12.6f",
                    Seconds(gSettings.times == 'r' ? previous : gStart, start));
        previous = start;
    }
}

} // namespace

CallScope::CallScope(CallIndex call, const void *caller, const uintptr_t *values)
    : call_(call), values_(values), watch_(gSettings.watch[call]),
      visit_(watch_ & kCheck ? BeforeCall(call, caller, values) : Visit{})
{
    const int saved = errno;
    depth_ = Enter(__builtin_frame_address(0));
    if (watch_ & kShow)
        KeepArguments();
    errorBefore_ = LastError();
    start_ = Now(CLOCK_MONOTONIC);
    errno = saved;
}

CallScope::~CallScope()
{
    if (!finished_)
        Finish(nullptr);
}

void CallScope::Returned(uintptr_t result)
{
    Finish(&result);
}

void CallScope::Finish(const uintptr_t *result)
{
    const int saved = errno;
    const double seconds = Seconds(start_, Now(CLOCK_MONOTONIC));
    finished_ = true;
    if (watch_ & kCheck)
        AfterCall(visit_, call_, values_, result);
    if (watch_ & kCount)
        CountCall(call_, seconds);
    if (watch_ & kShow)
        Show(result, seconds);
    gCalls.depth = std::min(depth_, kDeepest);
    errno = saved;
}

void CallScope::KeepArguments()
{
    for (size_t i = 0; i < kSignatures[call_].count; i++) {
        if (IsToldBefore(call_, i))
            AddArgument(kept_, call_, i, values_);
        ends_[i] = kept_.size();
    }
}

void CallScope::AddArguments(Line &line) const
{
    size_t from = 0;
    for (size_t i = 0; i < kSignatures[call_].count; i++) {
        if (i > 0)
            line.Add(gSettings.json ? "," : ", ");
        if (gSettings.json)
            line.Quote(kSignatures[call_].parameters[i].name);
        else
            line.Add(kSignatures[call_].parameters[i].name);
        line.Add(gSettings.json ? ":" : "=");
        if (IsToldBefore(call_, i))
            line.Add(kept_.text().substr(from, ends_[i] - from));
        else
            AddArgument(line, call_, i, values_);
        from = ends_[i];
    }
}

void CallScope::Show(const uintptr_t *result, double seconds)
{
    const bool json = gSettings.json;
    const uint32_t error = LastError();
    Line line;
    line.Add(json ? "{\"time\":" : "");
    AddTime(line, start_);
    line.Format(json ? ",\"thread\":%ld,\"depth\":%d,\"name\":\"%s\",\"arguments\":{"
                     : " %ld %d %s(",
                syscall(SYS_gettid), depth_, kSignatures[call_].name.data());
    AddArguments(line);
    line.Add(json ? "},\"result\":" : ") = ");
    if (result)
        AddResult(line, call_, *result);
    else
        line.Add(json ? "null" : "left by unwinding");
    if (error != errorBefore_) {
        line.Format(json ? ",\"error\":[%u,%u]" : ", error %u -> %u", errorBefore_, error);
        if (!json)
            AddErrorName(line, error);
    }
    line.Format(json ? ",\"seconds\":%.9f}" : ", %.6f s", seconds);
    line.Cut(std::min(line.size(), kMostLineBytes - 1));
    line.Add("\n");
    WriteLine(line.text());
}

} // namespace trace
