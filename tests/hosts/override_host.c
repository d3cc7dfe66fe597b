/* A host that is hard on a shared library: built without -fPIC, so that it holds copies of the
 * exported data, and with functions of its own under names that the library exports too. Neither
 * may change what the library does. Exits with 0, or with the number of the check that failed. */
#define _POSIX_C_SOURCE 200112L
#include <stdlib.h>
#include <string.h>

#include "wexelxi.h"

static int overridden;

char *itoa(int32_t value, char *buffer, int32_t radix)
{
    (void)value;
    (void)radix;
    overridden++;
    return buffer;
}

char *lstrcpy(char *dst, const char *src)
{
    (void)src;
    overridden++;
    return dst;
}

void Sleep(uint32_t milliseconds)
{
    (void)milliseconds;
    overridden++;
}

void SetLastError(uint32_t code)
{
    (void)code;
    overridden++;
}

uint32_t lstrlen(const char *string)
{
    (void)string;
    overridden++;
    return 0;
}

static const char *loadTime = 0;

int main(int argc, char **argv)
{
    char text[64] = "";
    char folder[4096] = "";

    if (argc != 2)
        return 1;
    setenv("WEXELXIDIR", argv[1], 1);
    loadTime = gDefaultStrings[1];
    if (gScbarwid != 17 || gUPPERBUFF['a'] != 'A' || strcmp(loadTime, "No") != 0)
        return 2;
    gScbarwid = 23;
    if (InitLib("/opt/host/host", 0, 0) != 0)
        return 3;
    if (gReady != 1 || gLOGPIXELSX != 96 || !gWexelxiCriticalSection)
        return 4;
    if (GetSystemMetrics(2) != 23)
        return 5;
    GetWexelXiFolder(folder);
    if (strcmp(folder, argv[1]) != 0)
        return 6;
    if (GetProfileString("Setup", "Color2", "", text, sizeof text) != 7 ||
        strcmp(text, "8421376") != 0)
        return 7;
    if (GetLastError() != 0 || GetEnvironmentVariable("NO_SUCH_NAME", text, 1) != 0 ||
        GetLastError() != ERROR_ENVVAR_NOT_FOUND)
        return 8;
    if (strcmp(GetWinString(0), "Yes") != 0 || gStrings[0] != GetWinString(0))
        return 9;
    WinsysColArr[3] = 0x123456;
    if (GetSysColor(3) != 0x123456)
        return 10;
    FreeLib();
    if (gReady != 0 || gStrings[0] != 0)
        return 11;
    return overridden == 0 ? 0 : 12;
}
