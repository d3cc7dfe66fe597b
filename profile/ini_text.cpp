// The walk over a profile text. All scanning is by memchr, and no byte is passed more than a few
// times however the text is made.
#include "profile/ini_text.h"

#include <cstring>

namespace wexelxi {
namespace {

constexpr std::string_view kLineEnd = "\r\n";

bool IsLineEnd(char c)
{
    return c == '\r' || c == '\n';
}

// The next header of a section, from a line's start on: the place behind its name, or kNoPlace.
// The name runs to the first ']' or the end of the text, also across lines; a '[' opens a header
// only at the start of a line, which is the start of the search or a place behind a line end.
size_t FindSection(std::string_view text, size_t from, std::string_view section)
{
    if (section.find(']') != kNoPlace)
        return kNoPlace;
    for (size_t at = text.find('[', from); at != kNoPlace; at = text.find('[', at + 1)) {
        if (at != from && !IsLineEnd(text[at - 1]))
            continue;
        const size_t end = at + 1 + section.size();
        if (text.substr(at + 1, section.size()) == section &&
            (end == text.size() || text[end] == ']'))
            return end;
    }
    return kNoPlace;
}

bool EndsSection(std::string_view text, size_t line)
{
    return line >= text.size() || static_cast<signed char>(text[line]) < 33;
}

} // namespace

size_t LineEnds::EndOfLine(size_t from)
{
    if (lf_ < from)
        lf_ = LfBehind(from);
    const size_t cr = text_.substr(0, lf_).find('\r', from);
    return std::min(cr, lf_);
}

size_t LineEnds::NextLine(size_t from)
{
    const size_t end = EndOfLine(from);
    if (end == text_.size())
        return end;
    return end + 1 < text_.size() && text_[end + 1] == '\n' ? end + 2 : end + 1;
}

bool IniKeyWalk::Next()
{
    if (isInside_)
        line_ = lines_.NextLine(equals_);
    for (;;) {
        if (!isInside_) {
            const size_t header = FindSection(text_, line_, section_);
            if (header == kNoPlace)
                return false;
            line_ = lines_.NextLine(header);
            isInside_ = true;
        }
        position_ = line_;
        if (EndsSection(text_, line_)) {
            line_ = lines_.NextLine(line_);
            isInside_ = false;
            continue;
        }
        equals_ = std::min(text_.find('=', line_), text_.size());
        if (equals_ < text_.size())
            return true;
        line_ = equals_; // no key: the name runs to the end of the text
    }
}

size_t IniRewrite::SizeOf(std::string_view old) const
{
    size_t size = keep + old.size() - resume;
    for (std::string_view piece : text)
        size += piece.size();
    return size;
}

void IniRewrite::Write(std::string_view old, char *destination) const
{
    destination += old.copy(destination, keep);
    for (std::string_view piece : text)
        destination += piece.copy(destination, piece.size());
    old.substr(resume).copy(destination, kNoPlace);
}

std::string_view ParsedPart(std::string_view file)
{
    return file.substr(0, file.find('\0'));
}

IniKeySearch SearchIniKey(std::string_view text, std::string_view section, std::string_view key)
{
    IniKeyWalk walk(text, section);
    while (walk.Next()) {
        if (walk.Key() == key)
            return {walk.Position(), walk.Value()};
    }
    return {walk.Position(), kNoPlace};
}

std::string_view IniValueAt(std::string_view text, size_t from)
{
    text.remove_prefix(from);
    return text.substr(0, LineEnds(text).EndOfLine(0));
}

uint32_t CopyIniSection(std::string_view text, std::string_view section, char *destination,
                        uint32_t size)
{
    uint32_t used = 0;
    LineEnds lines(text);
    size_t line = 0;
    for (size_t header; (header = FindSection(text, line, section)) != kNoPlace;) {
        line = lines.NextLine(header);
        for (; !EndsSection(text, line) && text[line] != '['; line = lines.NextLine(line)) {
            const size_t length = lines.EndOfLine(line) - line;
            if (length + 2 > size - used)
                return std::max(size, 2u) - 2;
            memcpy(destination + used, text.data() + line, length);
            used += static_cast<uint32_t>(length) + 1;
            destination[used - 1] = '\0';
            destination[used] = '\0';
        }
        line = lines.NextLine(line);
    }
    return used;
}

IniRewrite PlanIniRewrite(std::string_view file, std::string_view section, std::string_view key,
                          std::string_view value)
{
    const std::string_view text = ParsedPart(file);
    const IniKeySearch found = SearchIniKey(text, section, key);
    const size_t place = std::min(found.position, text.size());
    IniRewrite plan{place, {}, place};
    if (found.value != kNoPlace)
        plan.resume = place + LineEnds(text.substr(place)).NextLine(0);
    else if (found.position == kNoPlace)
        plan.text = {file.empty() ? "" : kLineEnd, "[", section, "]", kLineEnd};
    else if (place == text.size() && !IsLineEnd(text.back()))
        plan.text[0] = kLineEnd; // the last line has no end yet, and nothing may be joined to it
    plan.text[5] = key;
    plan.text[6] = "=";
    plan.text[7] = value;
    plan.text[8] = kLineEnd;
    return plan;
}

} // namespace wexelxi
