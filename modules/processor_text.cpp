// Reading the kernel's text on the processors.
#include "modules/processor_text.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <strings.h>

namespace wexelxi {

namespace {

bool BeginsWith(const char *text, const char *word)
{
    return strncasecmp(text, word, strlen(word)) == 0;
}

// Only the first digit counts; a family that does not begin with one of these says nothing.
void NoteFamily(char digit, ProcessorFacts &facts)
{
    if (digit < '3' || digit > '6')
        return;
    const auto level = static_cast<uint16_t>(std::min(digit - '0', 5));
    facts.level = level;
    facts.type = level * 100u + 86u;
}

void NoteStepping(const char *value, ProcessorFacts &facts)
{
    char *end = nullptr;
    const long number = strtol(value, &end, 10);
    if (end != value)
        facts.stepping = static_cast<uint16_t>(number);
}

} // namespace

void NoteProcessorLine(const char *line, ProcessorFacts &facts)
{
    const char *colon = strchr(line, ':');
    if (!colon)
        return;
    const char *value = colon + 1 + strspn(colon + 1, " ");
    facts.hasEntries = true;
    if (BeginsWith(line, "cpu family"))
        NoteFamily(*value, facts);
    if (BeginsWith(line, "stepping"))
        NoteStepping(value, facts);
}

} // namespace wexelxi
