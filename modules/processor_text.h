// Reading the kernel's text on the processors: a pure function of the text.
#pragma once

#include <cstdint>
#include <string_view>

namespace wexelxi {

struct ProcessorFacts {
    bool hasEntries = false; // the text says anything at all
    uint32_t type = 0;       // 386, 486 or 586; 0 if not told
    uint16_t level = 0;      // 3, 4 or 5; 0 if not told
    uint16_t stepping = 0;
};

// What the text says; of several processors the last one's values stand.
ProcessorFacts ScanProcessorText(std::string_view text);

} // namespace wexelxi
