#include "tools/trace/book.h"

#include <atomic>
#include <dlfcn.h>
#include <map>
#include <mutex>
#include <set>
#include <unordered_map>
#include <utility>
#include <vector>

#include "tools/trace/findings.h"
#include "tools/trace/guards.h"
#include "tools/trace/kinds.h"
#include "tools/trace/line.h"
#include "tools/trace/settings.h"

namespace trace {
namespace {

enum class State { kLives, kEnding, kEnded };

struct Entry {
    uint32_t kind;
    State state;
    unsigned references; // of a module
    uint64_t number;
    Site made;
    Site ended;
};

enum class Life { kNotStarted, kStarted, kStopped };

std::mutex gMutex; // guards the next three
uint64_t gMade = 0;
Life gLife = Life::kNotStarted;
std::vector<Finding> *gNoted = nullptr; // by the call that holds the lock
std::atomic<int> gTexts = 0;            // that live
thread_local bool gIsInside = false;    // the book's own memory is none of its business

// Made at the first use, which may come before this file's constructors, and there until the end.
auto &Entries()
{
    static auto &entries = *new std::unordered_map<uintptr_t, Entry>;
    return entries;
}

// Holds the lock. What was found is told behind it: the loader, which knows the places, has a lock
// of its own, and a module's constructors run under that.
class BookScope {
public:
    BookScope()
    {
        gIsInside = true;
        gMutex.lock();
        gNoted = &noted_;
    }
    ~BookScope()
    {
        gMutex.unlock();
        for (const Finding &finding : noted_)
            Report(finding);
        noted_ = {};
        gIsInside = false;
    }

private:
    std::vector<Finding> noted_;
};

// Each finding once a place, or a loop would fill the disk.
void Note(const Finding &finding)
{
    static auto &told = *new std::set<std::pair<const char *, std::pair<Site, Site>>>;
    if (told.insert({finding.what, {finding.at, finding.made}}).second)
        gNoted->push_back(finding);
}

// No pointer that anybody made; each function has its answer to these.
bool IsNone(uintptr_t handle)
{
    return handle < 4096 || handle == UINTPTR_MAX || handle == 0xFFFFFFFF;
}

Entry *Find(uintptr_t handle)
{
    const auto found = Entries().find(handle);
    return found == Entries().end() ? nullptr : &found->second;
}

void NoteEntry(const char *what, uintptr_t handle, const Entry &entry, const Site &at)
{
    Note({what, KindName(entry.kind), handle, at, entry.made,
          entry.state == State::kLives ? Site{} : entry.ended});
}

void CheckGuards(uintptr_t handle, const Entry &entry, const Site &at)
{
    const Guards guards = LookAtGuards(handle);
    if (guards != Guards::kWhole)
        NoteEntry(guards == Guards::kHeadDamaged ? "guard in front damaged"
                                                 : "guard behind damaged",
                  handle, entry, at);
}

// A handle that a call is given, and whether the call is to end it.
void CheckHandle(uintptr_t handle, uint32_t kinds, const Site &at, bool ends)
{
    const Entry *entry = Find(handle);
    const bool isWhole = (kinds & kBlock) && LookAtGuards(handle) == Guards::kWhole;
    if (!entry || (entry->state == State::kEnded && (isWhole || !(entry->kind & kinds)))) {
        // Nothing is known of it. A whole block is the library's own, behind an exported pointer.
        if ((kinds & kBlock) && !isWhole)
            Note({"not from here", KindName(kBlock), handle, at});
    } else if (!(entry->kind & kinds)) {
        NoteEntry("of the wrong kind", handle, *entry, at);
    } else if (entry->state == State::kEnded) {
        NoteEntry(ends ? "ended twice" : "used after its end", handle, *entry, at);
    } else if (ends && entry->state == State::kEnding && entry->kind != kModule) {
        NoteEntry("ended twice", handle, *entry, at);
    } else if (entry->kind == kBlock && entry->state == State::kLives) {
        CheckGuards(handle, *entry, at);
    }
}

void StartEnding(Visit &visit, uintptr_t handle, const Deed &deed, const Site &at)
{
    Entry *entry = Find(handle);
    if (!entry || entry->state != State::kLives || !(entry->kind & deed.kinds))
        return;
    visit.ending = handle;
    visit.number = entry->number;
    if (entry->references > 1)
        return;
    entry->state = State::kEnding;
    entry->ended = at;
}

void FinishEnding(const Visit &visit, bool failed)
{
    Entry *entry = Find(visit.ending);
    if (!entry || entry->number != visit.number)
        return;
    if (failed)
        entry->state = State::kLives;
    else if (--entry->references == 0)
        entry->state = State::kEnded;
}

void Make(uintptr_t handle, uint32_t kind, const Site &site)
{
    if (IsNone(handle) || (kind == kBlock && LookAtGuards(handle) != Guards::kWhole) ||
        (kind == kText && !gSettings.seesTextsFreed))
        return;
    Entry &entry = Entries()[handle];
    gTexts += (kind == kText) - (entry.kind == kText);
    if (kind == kModule && entry.kind == kModule && entry.references > 0 &&
        entry.state != State::kEnded)
        entry.references++;
    else
        entry = {kind, State::kLives, 1, ++gMade, site, {}};
}

void MakeAll(CallIndex call, const void *caller, const uintptr_t *values, uintptr_t result)
{
    for (const Deed &deed : Deeds()) {
        uintptr_t handle = result;
        if (deed.call != call || deed.verb != kMakes)
            continue;
        if (deed.place != kResult &&
            (result == deed.failure || !ReadObject(values[deed.place], handle)))
            continue;
        Make(handle, deed.kinds, {call, caller});
    }
}

void Sweep(uint32_t kinds, const Site &site)
{
    for (auto &[handle, entry] : Entries())
        if ((entry.kind & kinds) && entry.state == State::kLives) {
            entry.state = State::kEnded;
            entry.ended = site;
        }
}

// Notes and forgets what still lives of these kinds, one finding a maker.
void NoteLeft(uint32_t kinds)
{
    std::map<Site, Finding> left;
    for (auto next = Entries().begin(); next != Entries().end();) {
        const auto &[handle, entry] = *next;
        if (entry.kind == kBlock && entry.state == State::kLives)
            CheckGuards(handle, entry, {});
        const bool isLeft = (entry.kind & kinds) && entry.state == State::kLives;
        if (isLeft) {
            const auto [at, isNew] = left.insert(
                {entry.made, {"never ended", KindName(entry.kind), handle, {}, entry.made}});
            at->second.times += isNew ? entry.references - 1 : entry.references;
        }
        next =
            isLeft && !(entry.kind & (kFont | kModule)) ? Entries().erase(next) : std::next(next);
    }
    for (const auto &[site, finding] : left)
        Note(finding);
}

// The host's own font, which FreeLib deletes.
uintptr_t GeneralFont()
{
    const auto *font = static_cast<void *const *>(dlsym(RTLD_DEFAULT, "gGeneralFont"));
    return font ? reinterpret_cast<uintptr_t>(*font) : 0;
}

} // namespace

Visit BeforeCall(CallIndex call, const void *caller, const uintptr_t *values)
{
    const uintptr_t generalFont = call == kFreeLib ? GeneralFont() : 0;
    const BookScope scope;
    const Site at{call, caller};
    const Deed *ends = FindDeed(call, kEnds);
    Visit visit{caller};
    if (gLife != Life::kStarted && NeedsStart(call))
        Note({gLife == Life::kStopped ? "called after FreeLib" : "called before InitLib", nullptr,
              0, at});
    for (size_t i = 0; i < kSignatures[call].count; i++) {
        const uint32_t kinds = KindsOfArgument(call, i);
        if (kinds == 0 || IsNone(values[i]))
            continue;
        const bool isEnding = ends && ends->place == static_cast<int>(i);
        CheckHandle(values[i], kinds, at, isEnding);
        if (isEnding)
            StartEnding(visit, values[i], *ends, at);
    }
    if (call == kInitLib)
        gLife = Life::kStarted; // its callbacks may use the library
    Entries().erase(generalFont);
    return visit;
}

void AfterCall(const Visit &visit, CallIndex call, const uintptr_t *values, const uintptr_t *result)
{
    const BookScope scope;
    const Deed *ends = FindDeed(call, kEnds);
    const bool isVoid = kSignatures[call].result.type == "void";
    if (visit.ending)
        FinishEnding(visit, !result || (!isVoid && *result == ends->failure));
    if (!result)
        return;
    MakeAll(call, visit.caller, values, *result);
    if (call == kInitLib && *result != 0)
        gLife = Life::kStopped;
    if (call == kFreeLib) {
        gLife = Life::kStopped;
        NoteLeft(kEndedBeforeStop);
    }
    if (const Deed *sweeps = FindDeed(call, kSweeps))
        Sweep(sweeps->kinds, {call, visit.caller});
}

void ReportAtExit()
{
    const BookScope scope;
    NoteLeft(UINT32_MAX);
}

void TextFreed(const void *text)
{
    if (gIsInside || gTexts == 0)
        return;
    const BookScope scope;
    const Entry *entry = Find(reinterpret_cast<uintptr_t>(text));
    if (!entry || entry->kind != kText)
        return;
    Entries().erase(reinterpret_cast<uintptr_t>(text));
    gTexts--;
}

void LockBook()
{
    gMutex.lock();
}

void UnlockBook()
{
    gMutex.unlock();
}

void ForgetHandles()
{
    Entries().clear();
    gTexts = 0;
}

} // namespace trace
