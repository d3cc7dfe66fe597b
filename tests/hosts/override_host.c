/* A host that is hard on a shared library: built without -fPIC, so that it holds copies of the
 * exported data, and with functions of its own under names that the library exports too. Neither
 * may change what the library does. */
#define _POSIX_C_SOURCE 200112L
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "wexelxi.h"

#define EXPECT(condition)               \
    if (!(condition)) {                 \
        fputs(#condition "\n", stderr); \
        return EXIT_FAILURE;            \
    }

static int overridden;

void SetLastError(uint32_t code)
{
    overridden += 1 + (int)code;
}

uint32_t lstrlen(const char *string)
{
    overridden += 1 + !string;
    return 0;
}

int main(int argc, char **argv)
{
    char text[64];

    EXPECT(argc == 2 && setenv("WEXELXIDIR", argv[1], 1) == 0);
    EXPECT(gScbarwid == 17 && gUPPERBUFF['a'] == 'A' && strcmp(gDefaultStrings[1], "No") == 0);
    gScbarwid = 23;
    EXPECT(InitLib("/opt/host/host", 0, 0) == 0);
    EXPECT(gReady == 1 && gLOGPIXELSX == 96 && gWexelxiCriticalSection);
    EXPECT(GetSystemMetrics(2) == 23);
    WinsysColArr[3] = 0x123456;
    EXPECT(GetSysColor(3) == 0x123456);
    EXPECT(gStrings[0] == GetWinString(0) && strcmp(gStrings[0], "Yes") == 0);
    EXPECT(GetProfileString("Setup", "Color2", "", text, sizeof text) == 7);
    EXPECT(GetEnvironmentVariable("NO_SUCH_NAME", text, 1) == 0);
    EXPECT(GetLastError() == ERROR_ENVVAR_NOT_FOUND);
    FreeLib();
    EXPECT(gReady == 0 && !gStrings[0]);
    EXPECT(overridden == 0);
    return EXIT_SUCCESS;
}
