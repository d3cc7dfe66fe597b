// Texts of line settings: what comes out depends on the text alone, and 28 bytes are all.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "comm/dcb_text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string text(reinterpret_cast<const char *>(data), size);
    DCB first, second;
    memset(&first, 0x00, sizeof first);
    memset(&second, 0xFF, sizeof second);
    const uint32_t fault = wexelxi::ParseDcbText(text.c_str(), &first);
    if (fault != wexelxi::ParseDcbText(text.c_str(), &second))
        abort();
    const bool touched = second.DCBlength == sizeof(DCB);
    if ((touched && memcmp(&first, &second, sizeof first) != 0) || (fault == 0 && !touched))
        abort();
    return 0;
}
