// The kernel's text on the processors, with anything in it.
#include <cstddef>
#include <cstdlib>

#include "modules/processor_text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const auto facts = wexelxi::ScanProcessorText({reinterpret_cast<const char *>(data), size});
    const bool isKnown = facts.type == facts.level * 100u + 86u && facts.level >= 3;
    if (!(isKnown || (facts.type == 0 && facts.level == 0)) || facts.level > 5)
        abort();
    return 0;
}
