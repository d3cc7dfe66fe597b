/* A page of code as third parties write it, with the one include that it needs here. It must
 * compile as C11 and as C++17 without a warning; with TRAP set, one mistake is in it that must not.
 */
#include "wexelxi/client_names.h"

typedef struct PLUGIN {
    HANDLE(WINAPI *CreateFileA)(LPCSTR, DWORD, DWORD, LPVOID, DWORD, DWORD, HANDLE);
    BOOL(WINAPI *CloseHandle)(HANDLE);
    FARPROC entry;
} PLUGIN, *LPPLUGIN;

WEXELXI_LAYOUT(MAKEWORD(0x34, 0x12) == 0x1234 && MAKELONG(0x5678, 0x1234) == 0x12345678);
WEXELXI_LAYOUT(LOWORD(0x12345678) == 0x5678 && HIWORD(0x12345678) == 0x1234);
WEXELXI_LAYOUT(LOBYTE(0x1234) == 0x34 && HIBYTE(0x1234) == 0x12 && sizeof(LARGE_INTEGER) == 8);
WEXELXI_LAYOUT(RGB(1, 2, 3) == 0x030201 && GetRValue(0x030201u) == 1 && GetGValue(0x030201u) == 2 &&
               GetBValue(0x030201u) == 3);
WEXELXI_LAYOUT(MAKELANGID(7, 2) == 2055 && PRIMARYLANGID(2055) == 7 && SUBLANGID(2055) == 2);
WEXELXI_LAYOUT(MAKELCID(2055, SORT_DEFAULT) == 2055 && LANGIDFROMLCID(0x10407) == 1031);
WEXELXI_LAYOUT(GMEM_ZEROINIT == GLOBAL_ZEROFILL && (GHND & GLOBAL_ZEROFILL) && GMEM_FIXED == 0);
WEXELXI_LAYOUT(SETXOFF == 1 && SETRTS == 3 && CLRRTS == 4 && SETDTR == 5 && CLRDTR == 6);
WEXELXI_LAYOUT(PURGE_TXABORT == 1 && PURGE_RXABORT == 2 && PURGE_TXCLEAR == 4 &&
               PURGE_RXCLEAR == 8);
WEXELXI_LAYOUT(sizeof(TCHAR) == 1 && sizeof(WCHAR) == 4 && sizeof(DWORD_PTR) == 8 &&
               sizeof(RECT) == 16 && sizeof(OVERLAPPED) == 32 && MAX_PATH == 4096);
WEXELXI_LAYOUT(DM_OUT_BUFFER == DM_COPY && DM_IN_BUFFER == 8 && INVALID_FILE_ATTRIBUTES == 0);

static void *WINAPI Worker(LPVOID parameter)
{
    UNREFERENCED_PARAMETER(parameter);
    return NULL;
}

static BOOL RunWorker(VOID)
{
    DWORD result;
    LPTHREAD_START_ROUTINE routine = Worker;
    HANDLE thread = CreateThread(NULL, 0, routine, NULL, CREATE_JOINABLE, NULL);

    if (thread == NULL)
        return FALSE;
    result = WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
    return (BOOL)(result != WAIT_FAILED && result != WAIT_TIMEOUT);
}

static ULONGLONG SizeOfTree(LPCTSTR folder)
{
    TCHAR path[MAX_PATH];
    WIN32_FIND_DATAA data;
    ULARGE_INTEGER size = {{0, 0}};
    HANDLE find;

    wsprintfA(path, TEXT("%s/*.*"), folder);
    if ((find = FindFirstFileA(path, &data)) == INVALID_HANDLE_VALUE)
        return 0;
    do {
        if (!(data.dwFileAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_HIDDEN)))
            size.QuadPart += data.nFileSizeLow;
    } while (FindNextFileA(find, &data));
    FindClose(find);
    return size.QuadPart + size.u.LowPart;
}

static BOOL ReadTail(LPPLUGIN plugin, LPCSTR name, PBYTE buffer, DWORD bytes)
{
    LARGE_INTEGER size, position;
    OVERLAPPED none = {0, 0, 0, 0, NULL};
    DWORD read = 0;
    int64_t plain = 0;
    HANDLE file = plugin->CreateFileA(name, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, NULL,
                                      OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, NULL);

    if (file == INVALID_HANDLE_VALUE)
        return GetLastError() == ERROR_ALREADY_EXISTS;
    position.QuadPart = -(LONGLONG)bytes;
    if (GetFileSizeEx(file, &size) && GetFileSizeEx(file, &plain) && size.QuadPart == plain &&
        size.HighPart == 0 && SetFilePointerEx(file, position, NULL, FILE_END) &&
        SetFilePointerEx(file, position, &position, FILE_CURRENT) &&
        SetFilePointerEx(file, plain, &plain, FILE_BEGIN))
        ReadFile(file, buffer, bytes, &read, &none);
    return plugin->CloseHandle(file) && read == bytes;
}

static BOOL LoadPlugin(LPPLUGIN plugin, LPCTSTR name)
{
    HINSTANCE module = LoadLibraryA(name);
    LPSECURITY_ATTRIBUTES security = NULL;

    plugin->CreateFileA = CreateFileA;
    plugin->CloseHandle = &CloseHandle;
    plugin->entry = GetProcAddress(module, "Entry");
    return (BOOL)(CreateDirectoryA(name, security) && plugin->entry != NULL &&
                  FindResourceA(module, MAKEINTRESOURCE(5), NULL) == NULL && FreeLibrary(module));
}

static HFONT MakeFont(HDC dc, LPLOGFONT logfont)
{
    logfont->lfDC = dc;
    logfont->lfCharSet = ANSI_CHARSET;
    logfont->lfOutPrecision = OUT_TT_PRECIS;
    logfont->lfPitchAndFamily = DEFAULT_PITCH | FF_SWISS;
    logfont->lfWeight = FW_MEDIUM;
    lstrcpynA(logfont->lfFaceName, _T("Sans"), LF_FACESIZE);
    return CreateFontIndirectA(logfont);
}

#if TRAP == 1
void Trap(void);
void Trap(void)
{
    CreateFileA("lost", 0, 0, NULL, OPEN_EXISTING, 0, NULL);
}
#elif TRAP == 2
HMODULE Trap(void);
HMODULE Trap(void)
{
    return GetModuleHandle(NULL);
}
#elif TRAP == 3
BOOL Trap(HWND window);
BOOL Trap(HWND window)
{
    BOOL result = DeleteDC(window);
    return result == -1;
}
#elif TRAP == 4
LONG Trap(COMMTIMEOUTS *timeouts);
LONG Trap(COMMTIMEOUTS *timeouts)
{
    return (LONG)timeouts->ReadIntervalTimeout;
}
#elif TRAP == 5
SIZE_T Trap(void);
SIZE_T Trap(void)
{
    return sizeof(SECURITY_ATTRIBUTES);
}
#elif TRAP == 6
void Trap(HANDLE file, int *size);
void Trap(HANDLE file, int *size)
{
    GetFileSizeEx(file, size);
}
#elif TRAP == 7
DWORD Trap(void);
DWORD Trap(void)
{
    return FILE_FLAG_DELETE_ON_CLOSE;
}
#endif

int ClientPage(int argc, char **argv);
int ClientPage(int argc, char **argv)
{
    PLUGIN plugin;
    LOGFONTA logfont;
    BYTE buffer[16];
    HGLOBAL block = GlobalAlloc(GHND, 16);

    ZeroMemory(&logfont, sizeof logfont);
    GlobalFree(block);
    if (argc < 2 || !RunWorker() || !LoadPlugin(&plugin, argv[1]))
        return 1;
    SetErrorMode(SEM_FAILCRITICALERRORS);
    ReportEventA(RegisterEventSourceA(NULL, "page"), EVENTLOG_INFORMATION_TYPE, 0, 0, NULL, 0, 0,
                 NULL, NULL);
    DeleteObject(MakeFont(CreateDCA("DISPLAY", NULL, NULL, NULL), &logfont));
    return ReadTail(&plugin, argv[1], buffer, sizeof buffer) && SizeOfTree(argv[1]) > 0 ? 0 : 2;
}
