// The grammar of profile texts: lines, sections, keys, and what a write changes. Arguments in,
// values out; texts are views that end where the parser's text ends.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace wexelxi {

constexpr size_t kNoPlace = std::string_view::npos;

// Finds the line ends of a text for places that never go back. The next LF is remembered, so that a
// text whose lines end in a bare CR is searched for an LF only once.
class LineEnds {
public:
    explicit LineEnds(std::string_view text) : text_(text), lf_(LfBehind(0)) {}

    // The first CR or LF at or behind `from`, or the end of the text.
    size_t EndOfLine(size_t from);

    // The start of the next line, or the end of the text: a line end takes one LF directly behind
    // it with it.
    size_t NextLine(size_t from);

private:
    size_t LfBehind(size_t from) const { return std::min(text_.find('\n', from), text_.size()); }

    std::string_view text_;
    size_t lf_;
};

// The walk over the key lines of all sections of a name, as the search for a key meets them.
class IniKeyWalk {
public:
    IniKeyWalk(std::string_view text, std::string_view section)
        : text_(text), section_(section), lines_(text)
    {
    }

    // Goes to the next line with a key; false behind the last one.
    bool Next();

    std::string_view Key() const { return text_.substr(line_, equals_ - line_); }
    size_t Value() const { return equals_ + 1; }

    // The start of the present line; behind the last one, the place for a new key: the end of the
    // last section of that name, or kNoPlace if there is no such section.
    size_t Position() const { return position_; }

private:
    std::string_view text_;
    std::string_view section_;
    LineEnds lines_;
    size_t line_ = 0;
    size_t equals_ = 0;
    size_t position_ = kNoPlace;
    bool isInside_ = false;
};

// Where the search for a key ended.
struct IniKeySearch {
    size_t position = kNoPlace; // start of the key's line, or the place for a new key of the last
                                // section of that name; kNoPlace if there is no such section
    size_t value = kNoPlace;    // the byte behind the '=', or kNoPlace if the key is not there
};

// A write: the new file is old[0, keep), the pieces of text, old[resume, end).
struct IniRewrite {
    size_t keep;
    std::array<std::string_view, 9> text;
    size_t resume;

    size_t SizeOf(std::string_view old) const;

    // Writes the new file, that many bytes.
    void Write(std::string_view old, char *destination) const;
};

// The part of a file's bytes that the parser sees: up to the first NUL.
std::string_view ParsedPart(std::string_view file);

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
