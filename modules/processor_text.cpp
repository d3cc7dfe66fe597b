// Reading the kernel's text on the processors: lines of a key, a colon and a value.
#include "modules/processor_text.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <strings.h>

namespace wexelxi {

namespace {

// What a reader with a buffer of 4096 bytes takes for a line: a longer one counts as several.
constexpr size_t kMaxLine = 4095;

std::string_view TakeLine(std::string_view &text)
{
    const size_t end = text.find('\n');
    const size_t length =
        std::min({end == std::string_view::npos ? text.size() : end + 1, kMaxLine});
    const std::string_view line = text.substr(0, length);
    text.remove_prefix(length);
    return line;
}

bool BeginsWith(std::string_view key, std::string_view word)
{
    return key.size() >= word.size() && strncasecmp(key.data(), word.data(), word.size()) == 0;
}

// Only the first digit counts; a family that does not begin with one of these says nothing.
void NoteFamily(std::string_view value, ProcessorFacts &facts)
{
    const char digit = value.empty() ? '\0' : value.front();
    if (digit < '3' || digit > '6')
        return;
    const auto level = static_cast<uint16_t>(std::min(digit - '0', 5));
    facts.level = level;
    facts.type = level * 100u + 86u;
}

void NoteStepping(std::string_view value, ProcessorFacts &facts)
{
    const std::string text(value);
    char *end = nullptr;
    const long number = strtol(text.c_str(), &end, 10);
    if (end != text.c_str())
        facts.stepping = static_cast<uint16_t>(number);
}

} // namespace

ProcessorFacts ScanProcessorText(std::string_view text)
{
    ProcessorFacts facts;
    while (!text.empty()) {
        const std::string_view line = TakeLine(text);
        const size_t colon = line.find(':');
        if (colon == std::string_view::npos)
            continue;
        const std::string_view key = line.substr(0, colon);
        std::string_view value = line.substr(colon + 1);
        value.remove_prefix(std::min(value.find_first_not_of(' '), value.size()));
        value = value.substr(0, value.find('\n'));
        facts.hasEntries = true;
        if (BeginsWith(key, "cpu family"))
            NoteFamily(value, facts);
        if (BeginsWith(key, "stepping"))
            NoteStepping(value, facts);
    }
    return facts;
}

} // namespace wexelxi
