// Where profile texts come from: the names that mean the configuration file, the one-entry cache,
// and the file's change in place. The caller holds the global lock for all but TermIni.
#pragma once

#include <memory>
#include <string_view>

#include "profile/ini_text.h"
#include "wexelxi/memory.h"
#include "wexelxi/types.h"

namespace wexelxi {

// The bytes of a profile file, with a NUL behind them. Without bytes the file is missing, empty,
// unreadable or no ordinary file, which are all the same to a reader.
struct IniFile {
    struct Free {
        void operator()(char *block) const { GlobalFree(block); }
    };
    std::unique_ptr<char, Free> bytes;
    size_t size = 0;

    std::string_view Bytes() const { return {bytes.get(), size}; }
};

// The path that a profile file name means: the configuration file's, or the name itself. The first
// call with no folder set derives the folder from the host's path.
const char *ResolveIniName(const char *name);

// The text that the parser sees, from the cache if it holds this path; it lives until the cache is
// dropped, as any read that is not served from it and any write does.
std::string_view ReadCachedIniText(const char *path);

// Drops the cache and reads the file.
IniFile ReadIniFile(const char *path);

// Drops the cache and gives a key of the file its value. TRUE unless the file cannot be opened.
BOOL WriteIniFile(const char *path, std::string_view section, std::string_view key,
                  std::string_view value);

// For a run of reads and writes under one hold of the lock: the file that is written stays open and
// its text in memory, so that the next step need not read it again. What stands in the file after
// each write, and what is cached at the end, is as without it.
class [[nodiscard]] IniBatch {
public:
    IniBatch();
    ~IniBatch();
    IniBatch(const IniBatch &) = delete;
    IniBatch &operator=(const IniBatch &) = delete;
};

} // namespace wexelxi
