/* The smallest host in C: starts the library, asks it something, stops it. */
#include <stdio.h>
#include <stdlib.h>
#include <wexelxi.h>

#if WEXELXI_VERSION_NUMBER < 10000
#error "this host needs 1.0.0"
#endif

int main(int argc, char **argv)
{
    char folder[4096];
    char *path = realpath("/proc/self/exe", NULL); /* argv[0] may be a bare name */

    (void)argv;
    if (!path || InitLib(path, NULL, 0) != 0)
        return 1;
    free(path);
    GetWexelXiFolder(folder);
    printf("%d %s %s\n", argc, GetWinString(0), folder);
    FreeLib();
    return 0;
}
