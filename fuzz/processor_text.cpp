// Lines of the kernel's text on the processors, with anything in them.
#include <cstdlib>
#include <string>

#include "modules/processor_text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string text(reinterpret_cast<const char *>(data), size);
    wexelxi::ProcessorFacts facts;
    for (size_t at = 0; at <= text.size(); at = text.find('\n', at) + 1) {
        wexelxi::NoteProcessorLine(text.c_str() + at, facts);
        if (text.find('\n', at) == std::string::npos)
            break;
    }
    const bool isKnown = facts.type == facts.level * 100u + 86u && facts.level >= 3;
    if (!(isKnown || (facts.type == 0 && facts.level == 0)) || facts.level > 5)
        abort();
    return 0;
}
