// Reading the kernel's text on the processors, line by line: pure functions of the text.
#pragma once

#include <cstdint>

namespace wexelxi {

struct ProcessorFacts {
    bool hasEntries = false; // the text says anything at all
    uint32_t type = 0;       // 386, 486 or 586; 0 if not told
    uint16_t level = 0;      // 3, 4 or 5; 0 if not told
    uint16_t stepping = 0;
};

// Takes over what a line says: a key, a colon and a value, with or without a line end. Of several
// processors the last one's values stand.
void NoteProcessorLine(const char *line, ProcessorFacts &facts);

} // namespace wexelxi
