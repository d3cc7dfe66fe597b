// A host that does one thing wrong, by its name: faulty_host FAULT FOLDER PLUGIN. Each fault stands
// in a function of its own, which a report must name as the caller.
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <pthread.h>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include "wexelxi.h"

#define FAULT extern "C" WEXELXI_API __attribute__((noinline)) void
// Keeps a call from being the last of its function, which then would not be its caller.
#define HERE asm volatile("")

namespace {

std::string gFolder;
std::string gPlugin;
jmp_buf gBack;

HANDLE Open()
{
    return CreateFile((gFolder + "/file").c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0,
                      nullptr);
}

HFONT MakeFont()
{
    LOGFONT wanted = {};
    strcpy(wanted.lfFaceName, "DejaVu Sans");
    return CreateFontIndirect(&wanted);
}

void *Nothing(void *)
{
    return nullptr;
}

// The host's resources: one id for each way to leave a call.
intptr_t Resources(uint32_t opcode, intptr_t first, intptr_t second, intptr_t)
{
    if (opcode != WXRES_LOADSTRING)
        return opcode == WXRES_FIND;
    switch (first) {
    case 1:
        throw std::runtime_error("thrown");
    case 2:
        longjmp(gBack, 1);
    case 3:
        pthread_exit(nullptr);
    default:
        return lstrlen(lstrcpy(reinterpret_cast<char *>(second), "nested"));
    }
}

int32_t Ask(uint32_t id)
{
    char text[32];
    return LoadString(WEXELXI_HOST_MODULE, id, text, sizeof text);
}

void *AskForExit(void *)
{
    Ask(3);
    return nullptr;
}

} // namespace

// Nothing here is wrong.
FAULT Clean()
{
    char text[4096];
    WIN32_FIND_DATA found;
    for (int i = 0; i < 3; i++) {
        CloseHandle(Open());
        GlobalFree(GlobalReAlloc(GlobalAlloc(0, 5), 9000, 0));
        free(ConvertUtf8ToISO8859("a"));
        free(realloc(ConvertISO8859ToUtf8("a"), 100));
        FreePrinters(ListPrinters(1));
        FreeLibrary(LoadLibrary(gPlugin.c_str()));
        FreeResource(FindResource(WEXELXI_HOST_MODULE, "name", nullptr));
        DeleteDC(CreateCompatibleDC(nullptr));
        ReleaseDC(nullptr, GetDC(nullptr));
        HANDLE search = FindFirstFile("/", &found);
        freeFILfindData(static_cast<FILfindData *>(search));
        GlobalFree(search);
        FindClose(FindFirstFile("/", &found));
    }
    HMODULE module = LoadLibrary(gPlugin.c_str());
    LoadLibrary(gPlugin.c_str());
    FreeLibrary(module);
    GetModuleFileName(module, text, 0);
    FreeLibrary(module);
    GlobalSize(gWEXELfullPath); // the library's own block
    CloseHandle(nullptr);
    CloseHandle(INVALID_HANDLE_VALUE);
    DeleteObject(MakeFont());
    gGeneralFont = MakeFont(); // FreeLib ends it
}
FAULT LeakFile()
{
    Open();
    HERE;
}
FAULT LeakThread()
{
    CreateThread(nullptr, 0, Nothing, nullptr, 0, nullptr);
    HERE;
}
FAULT LeakSemaphore()
{
    CreateSemaphore(nullptr, 1, 1, nullptr);
    HERE;
}
FAULT LeakBlock()
{
    for (int i = 0; i < 3; i++)
        GlobalAlloc(0, 8);
}
FAULT LeakSearch()
{
    WIN32_FIND_DATA found;
    FindFirstFile("/", &found);
    HERE;
}
FAULT LeakFont()
{
    CreateFont(10, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, "DejaVu Sans");
    HERE;
}
FAULT LeakContext()
{
    CreateIC(nullptr, nullptr, nullptr, nullptr);
    HERE;
}
FAULT LeakResource()
{
    FindResource(WEXELXI_HOST_MODULE, "name", nullptr);
    HERE;
}
FAULT LeakModule()
{
    LoadLibrary(gPlugin.c_str());
    FreeLibrary(LoadLibrary(gPlugin.c_str()));
    HERE;
}
FAULT LeakList()
{
    ListPrinters(1);
    HERE;
}
FAULT LeakText()
{
    ConvertUtf8ToISO8859("text");
    HERE;
}
FAULT LeakCapture()
{
    char *output = nullptr;
    WinExecEx("echo caught", 0, WINEXEC_WAIT | WINEXEC_CAPTURE, &output);
    HERE;
}
FAULT CloseTwice()
{
    HANDLE file = Open();
    CloseHandle(file);
    CloseHandle(file);
    HERE;
}
FAULT UseClosed()
{
    HANDLE file = Open();
    CloseHandle(file);
    FlushFileBuffers(file);
    HERE;
}
FAULT WrongKind()
{
    HANDLE file = Open();
    ReleaseSemaphore(file, 1, nullptr);
    CloseHandle(file);
}
FAULT WrongContext()
{
    HDC context = GetDC(nullptr);
    DeleteObject(context);
    DeleteDC(context);
}
FAULT DamageBehind()
{
    char *block = static_cast<char *>(GlobalAlloc(0, 5));
    block[8] = 1;
    GlobalFree(block);
    HERE;
}
FAULT DamageFront()
{
    char *block = static_cast<char *>(GlobalAlloc(0, 5));
    block[-16] = 1;
    GlobalLock(block);
    block[-16] = '\xCD';
    GlobalFree(block);
}
FAULT FreeTwice()
{
    HGLOBAL block = GlobalAlloc(0, 5);
    GlobalFree(block);
    GlobalFree(block);
    HERE;
}
FAULT SizeOfForeign()
{
    char bytes[64] = "";
    GlobalSize(bytes + 32);
    HERE;
}
FAULT ReleaseTwice()
{
    HMODULE module = LoadLibrary(gPlugin.c_str());
    FreeLibrary(module);
    FreeLibrary(module);
    HERE;
}
FAULT BeforeStart()
{
    DoesFileExist("/");
    HERE;
}
FAULT AfterStop()
{
    GetSysColor(1);
    HERE;
}
FAULT Unwind()
{
    pthread_t thread;
    try {
        Ask(1);
    } catch (const std::runtime_error &) {
        GetVersion();
    }
    if (setjmp(gBack) == 0)
        Ask(2);
    gLeaveWexelxiCriticalSection(); // the jump left it held
    pthread_create(&thread, nullptr, AskForExit, nullptr);
    pthread_join(thread, nullptr);
    Ask(4);
}
// Every class of argument, more of each than registers hold.
FAULT Format()
{
    char text[512];
    char expected[512];
#define ARGUMENTS                                                                               \
    "%d %s %ld %c %x %f %g %f %f %f %f %f %f %f %Lf %*d %lld", 1, "two", 3L, '4', 5u, 6.0, 7.5, \
        8.0, 9.0, 10.0, 11.0, 12.0, 13.0, 14.0, 15.5L, 5, 16, 17LL
    const int length = snprintf(expected, sizeof expected, ARGUMENTS);
    if (wsprintf(text, ARGUMENTS) != length || strcmp(text, expected) != 0)
        abort();
}
FAULT Fork()
{
    const pid_t child = fork();
    if (child == 0) {
        MulDiv(3, 2, 1);
        exit(0);
    }
    waitpid(child, nullptr, 0);
}
FAULT Texts()
{
    char bytes[64] = "";
    SetEnvironmentVariable("WEXELXI_TEXT", "\"q\\\t\xE4 long enough to be cut in two");
    GetEnvironmentVariable("WEXELXI_TEXT", bytes, sizeof bytes);
    SetEnvironmentVariable(reinterpret_cast<const char *>(gFolder.empty()), nullptr);
    DeleteFile("/no/such/file");
}
FAULT Die()
{
    raise(SIGTERM);
}

int main(int argc, char **argv)
{
#define ROW(name)   \
    {               \
#name, name \
    }
    static const struct {
        const char *name;
        void (*run)();
    } rows[] = {ROW(Clean),      ROW(LeakFile),     ROW(LeakThread),    ROW(LeakSemaphore),
                ROW(LeakBlock),  ROW(LeakSearch),   ROW(LeakFont),      ROW(LeakContext),
                ROW(LeakList),   ROW(LeakResource), ROW(LeakModule),    ROW(LeakText),
                ROW(CloseTwice), ROW(LeakCapture),  ROW(UseClosed),     ROW(WrongKind),
                ROW(FreeTwice),  ROW(WrongContext), ROW(DamageBehind),  ROW(DamageFront),
                ROW(Unwind),     ROW(ReleaseTwice), ROW(SizeOfForeign), ROW(BeforeStart),
                ROW(AfterStop),  ROW(Format),       ROW(Fork),          ROW(Texts),
                ROW(Die)};
    const std::string fault = argc == 4 ? argv[1] : "";
    gFolder = argc == 4 ? argv[2] : "";
    gPlugin = argc == 4 ? argv[3] : "";
    SetEnvironmentVariable("WEXELXIDIR", gFolder.c_str());
    if (fault == "BeforeStart")
        BeforeStart();
    if (InitLib(argv[0], Resources, 0) != 0)
        return 1;
    if (fault != "BeforeStart" && fault != "AfterStop")
        for (const auto &row : rows)
            if (fault == row.name)
                row.run();
    FreeLib();
    if (fault == "AfterStop")
        AfterStop();
    return 3;
}
