/* The smallest host in C: starts the library, asks it something, stops it. */
#include <stdio.h>
#include <wexelxi.h>

int main(int argc, char **argv)
{
    char folder[4096];

    if (InitLib(argv[0], NULL, 0) != 0)
        return 1;
    GetWexelXiFolder(folder);
    printf("%d %s %s\n", argc, GetWinString(0), folder);
    FreeLib();
    return 0;
}
