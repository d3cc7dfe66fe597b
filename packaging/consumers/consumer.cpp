// The smallest host in C++: the same through the CMake package.
#include <cstdio>
#include <filesystem>
#include <wexelxi.h>

int main()
{
    const std::string path =
        std::filesystem::read_symlink("/proc/self/exe"); // argv[0] may be a bare name
    if (InitLib(path.c_str(), nullptr, 0) != 0)
        return 1;
    SYSTEMTIME now;
    GetLocalTime(&now);
    std::printf("%s %04d\n", GetWinString(1), now.wYear);
    FreeLib();
    return 0;
}
