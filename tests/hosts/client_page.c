/* A page of code as third parties write it, with the one include that it needs here. It must
 * compile as C11 and as C++17 without a warning. */
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

static ULONGLONG SizeOfTree(LPCTSTR folder)
{
    TCHAR path[MAX_PATH];
    WIN32_FIND_DATAA data;
    ULARGE_INTEGER size = {{0, 0}};
    HANDLE find;

    wsprintfA(path, TEXT("%s/*.*"), folder);
    if ((find = FindFirstFileA(path, &data)) == INVALID_HANDLE_VALUE)
        return GetLastError() == ERROR_FILE_NOT_FOUND;
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

    position.QuadPart = -(LONGLONG)bytes;
    if (GetFileSizeEx(file, &size) && GetFileSizeEx(file, &plain) && size.HighPart == 0 &&
        SetFilePointerEx(file, position, NULL, FILE_END) &&
        SetFilePointerEx(file, position, &position, FILE_CURRENT) &&
        SetFilePointerEx(file, plain, &plain, FILE_BEGIN))
        ReadFile(file, buffer, bytes, &read, &none);
    return plugin->CloseHandle(file) && read == bytes;
}

BOOL ClientPage(LPCTSTR name, LPLOGFONT logfont);
BOOL ClientPage(LPCTSTR name, LPLOGFONT logfont)
{
    BYTE buffer[16];
    LPSECURITY_ATTRIBUTES security = NULL;
    LPTHREAD_START_ROUTINE routine = Worker;
    HANDLE thread = CreateThread(NULL, 0, routine, NULL, CREATE_JOINABLE, NULL);
    DWORD result = WaitForSingleObject(thread, INFINITE);
    HINSTANCE module = LoadLibraryA(name);
    HGLOBAL block = GlobalAlloc(GHND, 16);
    PLUGIN plugin = {CreateFileA, &CloseHandle, GetProcAddress(module, "Entry")};

    GlobalFree(block);
    ZeroMemory(logfont, sizeof *logfont);
    logfont->lfDC = CreateDCA("DISPLAY", NULL, NULL, NULL);
    logfont->lfCharSet = ANSI_CHARSET;
    logfont->lfOutPrecision = OUT_TT_PRECIS;
    logfont->lfPitchAndFamily = DEFAULT_PITCH | FF_SWISS;
    logfont->lfWeight = FW_MEDIUM;
    lstrcpynA(logfont->lfFaceName, _T("Sans"), LF_FACESIZE);
    DeleteObject(CreateFontIndirectA(logfont));
    SetErrorMode(SEM_FAILCRITICALERRORS);
    ReportEventA(RegisterEventSourceA(NULL, "page"), EVENTLOG_INFORMATION_TYPE, 0, 0, NULL, 0, 0,
                 NULL, NULL);
    return CreateDirectoryA(name, security) && FreeLibrary(module) &&
           FindResourceA(module, MAKEINTRESOURCE(5), NULL) == NULL && result != WAIT_FAILED &&
           result != WAIT_TIMEOUT && ReadTail(&plugin, name, buffer, sizeof buffer) &&
           SizeOfTree(name) > 0;
}
