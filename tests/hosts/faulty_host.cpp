// A host that does one thing wrong, or a rare one: faulty_host FUNCTION FOLDER PLUGIN. Each stands
// in a function of its own, which a report must name as the caller.
#include <csetjmp>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <pthread.h>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include "wexelxi.h"

#define FUNCTION extern "C" WEXELXI_API __attribute__((noinline)) void
#define ALWAYS_INLINE inline __attribute__((always_inline)) // so that its caller is the place

namespace {

std::string gFile;
const char *gPlugin;
jmp_buf gBack;
WIN32_FIND_DATA gFound;

ALWAYS_INLINE HANDLE Open()
{
    return CreateFile(gFile.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
}

ALWAYS_INLINE char *Allocate()
{
    return static_cast<char *>(GlobalAlloc(0, 5));
}

ALWAYS_INLINE HFONT MakeFont()
{
    return CreateFont(10, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, "DejaVu Sans");
}

// The host's resources: one id for each way to leave a call.
intptr_t Resources(uint32_t opcode, intptr_t first, intptr_t second, intptr_t)
{
    if (opcode != WXRES_LOADSTRING)
        return opcode == WXRES_FIND;
    if (first == 1)
        throw std::runtime_error("thrown");
    if (first == 2)
        longjmp(gBack, 1);
    if (first == 3)
        pthread_exit(nullptr);
    return lstrlen(lstrcpy(reinterpret_cast<char *>(second), "nested"));
}

void *Ask(void *id)
{
    char text[32];
    LoadString(WEXELXI_HOST_MODULE, static_cast<uint32_t>(reinterpret_cast<uintptr_t>(id)), text,
               sizeof text);
    return nullptr;
}

} // namespace

// What stands behind a call keeps it from being the last of its function, which then would not be
// its caller.
#define FAULT(name, finding, ...) \
    FUNCTION name()               \
    {                             \
        __VA_ARGS__;              \
        asm volatile("");         \
    }
#include "hosts/faults.def"

// Nothing here is wrong.
FUNCTION Clean()
{
    char text[4096];
    for (int i = 0; i < 3; i++) {
        CloseHandle(Open());
        GlobalFree(GlobalReAlloc(Allocate(), 9000, 0));
        free(ConvertUtf8ToISO8859("a"));
        free(realloc(ConvertISO8859ToUtf8("a"), 100));
        FreePrinters(ListPrinters(1));
        FreeLibrary(LoadLibrary(gPlugin));
        FreeResource(FindResource(WEXELXI_HOST_MODULE, "name", nullptr));
        DeleteDC(CreateCompatibleDC(nullptr));
        ReleaseDC(nullptr, GetDC(nullptr));
        HANDLE search = FindFirstFile("/", &gFound);
        freeFILfindData(static_cast<FILfindData *>(search));
        GlobalFree(search);
        FindClose(FindFirstFile("/", &gFound));
    }
    HMODULE module = LoadLibrary(gPlugin);
    LoadLibrary(gPlugin);
    FreeLibrary(module);
    GetModuleFileName(module, text, 0);
    FreeLibrary(module);
    GlobalSize(gWEXELfullPath); // the library's own block
    CloseHandle(nullptr);
    CloseHandle(INVALID_HANDLE_VALUE);
    DeleteObject(MakeFont());
    gGeneralFont = MakeFont(); // FreeLib ends it
}

FUNCTION Unwind()
{
    pthread_t thread;
    try {
        Ask(reinterpret_cast<void *>(1));
    } catch (const std::runtime_error &) {
        GetVersion();
    }
    if (setjmp(gBack) == 0)
        Ask(reinterpret_cast<void *>(2));
    gLeaveWexelxiCriticalSection(); // the jump left it held
    pthread_create(&thread, nullptr, Ask, reinterpret_cast<void *>(3));
    pthread_join(thread, nullptr);
    Ask(reinterpret_cast<void *>(4));
}

FUNCTION Format()
{
    char text[64];
    wsprintf(text, "%d %s %c %.1f %Lf %*d %lld", 1, "two", '3', 4.5, 6.0L, 5, 7, 8LL);
    if (strcmp(text, "1 two 3 4.5 6.000000     7 8") != 0)
        abort();
}

FUNCTION Fork()
{
    if (fork() == 0) {
        MulDiv(3, 2, 1);
        exit(0);
    }
    wait(nullptr);
}

FUNCTION Arguments()
{
    char bytes[64] = "";
    const int64_t ticks = 0;
    TIME_FIELDS fields;
    RtlTimeToTimeFields(&ticks, &fields);
    SetEnvironmentVariable("WEXELXI_TEXT", "\"q\\\t\xE4 long enough to be cut in two");
    GetEnvironmentVariable("WEXELXI_TEXT", bytes, sizeof bytes);
    DeleteFile("/no/such/file");
}

FUNCTION Die()
{
    raise(SIGTERM);
}

int main(int, char **argv)
{
    gFile = argv[2] + std::string("/file");
    gPlugin = argv[3];
    SetEnvironmentVariable("WEXELXIDIR", argv[2]);
    if (strcmp(argv[1], "BeforeStart") != 0 && InitLib(argv[0], Resources, 0) != 0)
        return 1;
    reinterpret_cast<void (*)()>(dlsym(RTLD_DEFAULT, argv[1]))();
    FreeLib();
    return 3;
}
