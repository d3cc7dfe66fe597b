// The grammar of profile texts: lines, sections, keys, and what a write changes. Arguments in,
// values out; texts are views that end where the parser's text ends.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace wexelxi {

constexpr size_t kNoPlace = std::string_view::npos;

// Where the search for a key ended.
struct IniKeySearch {
    size_t position = kNoPlace; // start of the key's line, or the place for a new key of the last
                                // section of that name; kNoPlace if there is no such section
    size_t value = kNoPlace;    // the byte behind the '=', or kNoPlace if the key is not there
};

// A write, as the part of the old file that goes and what comes in its place: the new file is
// old[0, keep), text, old[resume, end).
struct IniRewrite {
    size_t keep;
    std::string text;
    size_t resume;
};

// The part of a file's bytes that the parser sees: up to the first NUL.
std::string_view ParsedPart(std::string_view file);

// The start of the line behind the one that `from` lies in, or the end of the text.
size_t NextLineStart(std::string_view text, size_t from);

IniKeySearch SearchIniKey(std::string_view text, std::string_view section, std::string_view key);

// The value that starts at `from`: up to the line end, untrimmed.
std::string_view IniValueAt(std::string_view text, size_t from);

// Copies the lines of all sections of a name, each with its NUL, and a last NUL. Gives the bytes
// written without the last NUL, or size - 2 (0 for a size below 2) when a line did not fit; those
// before it are there then. Stores nothing when there are no lines, or none fits.
uint32_t CopyIniSection(std::string_view text, std::string_view section, char *destination,
                        uint32_t size);

// How a file changes when key gets a value. An empty file counts as missing.
IniRewrite PlanIniRewrite(std::string_view file, std::string_view section, std::string_view key,
                          std::string_view value);

} // namespace wexelxi
