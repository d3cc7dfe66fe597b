// The smallest host in C++: the same through the CMake package.
#include <cstdio>
#include <wexelxi.h>

int main(int, char **argv)
{
    if (InitLib(argv[0], nullptr, 0) != 0)
        return 1;
    SYSTEMTIME now;
    GetLocalTime(&now);
    std::printf("%s %04d\n", GetWinString(1), now.wYear);
    FreeLib();
    return 0;
}
