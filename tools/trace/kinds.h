// What the calls do with handles: which kind each makes, ends and uses.
#pragma once

#include <cstdint>
#include <span>

#include "tools/trace/catalogue.h"

namespace trace {

// Kinds are bits, so that a call may take several.
inline constexpr uint32_t kFile = 1, kThread = 2, kSemaphore = 4, kSearch = 8, kFont = 16,
                          kDeviceContext = 32, kPrinter = 64, kResource = 128, kModule = 256,
                          kBlock = 512, kList = 1024, kText = 2048;

// Kinds that are the library's matter, and so are to be ended before it stops.
inline constexpr uint32_t kEndedBeforeStop =
    kSearch | kFont | kDeviceContext | kPrinter | kResource | kModule | kList | kText;

const char *KindName(uint32_t kind);

enum Verb { kMakes, kEnds, kSweeps };

inline constexpr int kResult = -1;

// A call makes what its result is, or what an argument then points to; ends what an argument is;
// sweeps all of a kind.
struct Deed {
    CallIndex call;
    Verb verb;
    uint32_t kinds;
    int place;             // an argument's number, or kResult
    uintptr_t failure = 0; // the result of a call that made or ended nothing
};

std::span<const Deed> Deeds();

// The call's deed of that verb, of which there is one at most but for makers; or null.
const Deed *FindDeed(CallIndex call, Verb verb);

// The kinds that an argument may be of; 0 where it is no handle, or none that is looked at.
uint32_t KindsOfArgument(CallIndex call, size_t index);

// Whether a call stands on a library that was started.
bool NeedsStart(CallIndex call);

} // namespace trace
