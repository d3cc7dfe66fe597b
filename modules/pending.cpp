// Weak stand-ins, overridden where the real ones are linked.
#include "modules/pending.h"

#include <cstdlib>
#include <cstring>

extern "C" {
__attribute__((weak)) uint8_t gNoFreeLibrary = 0;
__attribute__((weak)) void GetWexelXiFolder(char *destination)
{
    const char *folder = getenv("WEXELXIDIR");
    strcpy(destination, folder ? folder : "");
}
}
