// Every family of exports, with each of the platform's calls refused in turn.
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>

#include "faults/faults.h"
#include "support/private_cups.h"
#include "support/private_fonts.h"
#include "support/scratch.h"
#include "wexelxi.h"

namespace {

// A name that a call may write to.
struct Name {
    Name(const char *text) { strcpy(bytes, text); }
    operator char *() { return bytes; }
    char bytes[64];
};

bool Reads(const char *name, const char *expected)
{
    HANDLE file = CreateFile(Name(name), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    char text[100] = "";
    uint32_t count = 0;
    int64_t size = 0;
    const bool works = SetFilePointerEx(file, 0, nullptr, FILE_BEGIN) &&
                       GetFileSizeEx(file, &size) &&
                       ReadFile(file, text, sizeof text - 1, &count, nullptr);
    const uint32_t error = GetLastError();
    CloseHandle(file);
    SetLastError(error);
    return works && strcmp(text, expected) == 0;
}

// Ends the handle for certain: one whose bytes could not be written is closed twice.
bool Closes(HANDLE file)
{
    if (CloseHandle(file))
        return true;
    const uint32_t error = GetLastError();
    CloseHandle(file);
    SetLastError(error);
    return false;
}

bool Writes(const char *name, uint32_t how)
{
    HANDLE file = CreateFile(Name(name), GENERIC_WRITE, 0, nullptr, how, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    uint32_t count = 0;
    const bool works = WriteFile(file, "written", 7, &count, nullptr) && count == 7 &&
                       FlushFileBuffers(file) && SetEndOfFile(file);
    const uint32_t error = GetLastError();
    const bool closes = Closes(file);
    if (!works)
        SetLastError(error);
    return works && closes;
}

// Ends the test unless a file holds a text; past the calls that are refused.
void RequireText(const char *name, const char *expected)
{
    char text[100] = "";
    const long file = syscall(SYS_openat, AT_FDCWD, name, O_RDONLY);
    syscall(SYS_read, file, text, sizeof text - 1);
    syscall(SYS_close, file);
    if (strcmp(text, expected) != 0)
        abort();
}

void PutFiles()
{
    WriteWholeFile("a.txt", "one");
    WriteWholeFile("b.txt", "two");
    CreateDirectory("folder", nullptr);
    WriteWholeFile("own.ini", "[s]\r\nk=v\r\nother=kept\r\n");
}

const char *gPort = nullptr;

void MakePort()
{
    const int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    grantpt(master);
    unlockpt(master);
    gPort = ptsname(master);
    open(gPort, O_RDWR | O_NOCTTY | O_CLOEXEC); // the line stays up between the calls
    WriteProfileString("Ports", "COM1", (std::string(gPort) + ",rs232").c_str());
    WriteProfileString("Ports", "Delay", "-1");
}

// Stands for the machine's, which takes its time.
void MakePs()
{
    static const ScratchFolder folder;
    WriteWholeFile(folder.file("ps"), "#!/bin/sh\necho COMMAND\necho sh\n");
    std::filesystem::permissions(folder.file("ps"), std::filesystem::perms::owner_all);
    setenv("PATH", folder.path().c_str(), 1);
}

const Scenario kScenarios[] = {
    {"read a file", [] { return Reads("a.txt", "one"); }, PutFiles, ERROR_GEN_FAILURE},
    {"make a file", [] { return Writes("new.txt", CREATE_NEW) && DeleteFile("new.txt"); }, PutFiles,
     ERROR_GEN_FAILURE},
    {"look for a file", [] { return DoesFileExist("a.txt") && GetFileAttributes("b.txt"); },
     PutFiles},
    {"search a folder",
     [] {
         WIN32_FIND_DATA data;
         HANDLE find = FindFirstFile(Name("*.txt"), &data);
         if (find == INVALID_HANDLE_VALUE)
             return false;
         const bool works = FindNextFile(find, &data);
         const uint32_t error = GetLastError();
         FindClose(find);
         SetLastError(error);
         return works;
     },
     PutFiles},
    {"copy over a file",
     [] {
         for (int round = 0; round < 2; round++) {
             if (!CopyFile("a.txt", "new.txt", FALSE))
                 return false;
             RequireText("new.txt", "one");
         }
         return true;
     },
     PutFiles, ERROR_GEN_FAILURE},
    {"keep a target", [] { return !CopyFile("a.txt", "b.txt", TRUE); }, PutFiles},
    {"move a file", [] { return MoveFile("a.txt", "c.txt") == TRUE; }, PutFiles},
    {"make a folder", [] { return CreateDirectory("made", nullptr) == TRUE; }, PutFiles},
    {"remove a folder", [] { return RemoveDirectory("folder") == TRUE; }, PutFiles},
    {"delete a file", [] { return DeleteFile("a.txt") == TRUE; }, PutFiles},
    {"name a temporary file",
     [] {
         char name[4096];
         GetTempFileName(".", "new", 0, name); // the number may be 0 just after the start
         return GetLastError() == ERROR_FILE_NOT_FOUND;
     },
     PutFiles},
    {"normalise a path",
     [] {
         char path[4096];
         return GetFullPathName("folder/../a.txt", sizeof path, path, nullptr) &&
                GetFilePath("folder", sizeof path, path);
     },
     PutFiles},
    {"change the folder",
     [] {
         char path[4096];
         return SetCurrentDirectory("folder") && GetCurrentDirectory(sizeof path, path);
     },
     PutFiles},

    {"read a key",
     [] {
         char text[20];
         return GetPrivateProfileString("s", "k", "", text, sizeof text, "./own.ini") == 1;
     },
     PutFiles},
    {"list a section",
     [] {
         char text[20];
         return GetPrivateProfileSection("s", text, sizeof text, "./own.ini") > 0;
     },
     PutFiles},
    {"replace a key",
     [] {
         if (!WritePrivateProfileString("s", "k", "longer", "./own.ini") || GetLastError() != 0)
             return false;
         RequireText("own.ini", "[s]\r\nk=longer\r\nother=kept\r\n");
         return true;
     },
     PutFiles},
    {"add a section",
     [] { return WritePrivateProfileString("t", "k", "value", "./own.ini") == TRUE; }, PutFiles},
    {"change a key behind a port",
     [] { return WritePrivateProfileString("s", "k", "longer", "COM1") && GetLastError() == 0; },
     [] {
         PutFiles();
         WriteProfileString("Ports", "COM1", "own.ini,rs232");
         WriteProfileString("Ports", "Delay", "-1");
     },
     ERROR_GEN_FAILURE},
    {"load the preferences",
     [] {
         gLoadPref();
         return GetLastError() == 0;
     },
     [] {
         WriteWholeFile("wexelxi.ini", "[Setup]\r\nVersion=4\r\n");
         TermIni();
     }},
    {"start anew",
     [] {
         FreeLib();
         return InitLib("/opt/host/bin/host", nullptr, 0) == 0;
     }},
    {"choose a language",
     [] {
         char text[80];
         SYSTEMTIME time;
         GetLocalTime(&time);
         return SetLocale(nullptr) && GetDateFormat(LOCALE_USER_DEFAULT, DATE_LONGDATE, &time,
                                                    nullptr, text, sizeof text);
     }},

    {"take out seconds",
     [] {
         char text[40];
         const SYSTEMTIME time = {};
         const int32_t count = FormatLocaleString(1033, 0, TIME_NOSECONDS, &time,
                                                  "'a picture to copy':ss", text, sizeof text);
         if (count != 0 && count != 18)
             abort();
         return count != 0;
     }},

    {"find a port",
     [] {
         char device[64];
         const uint32_t type = GetPortName(Name("COM1"), device, sizeof device);
         if (type != PST_UNSPECIFIED && GetLastError() == ERROR_NOT_ENOUGH_MEMORY)
             abort(); // it may be another port than the profile's
         return type == PST_RS232 && strcmp(device, gPort) == 0;
     },
     MakePort},
    {"set up a line",
     [] {
         DCB settings;
         HANDLE port = CreateFile(Name("COM1"), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                  OPEN_EXISTING, 0, nullptr);
         if (port == INVALID_HANDLE_VALUE)
             return false;
         const bool works = GetCommState(port, &settings) &&
                            BuildCommDCB("COM1:9600,n,8,1", &settings) &&
                            SetCommState(port, &settings);
         const uint32_t error = GetLastError();
         const bool closes = Closes(port);
         if (!works)
             SetLastError(error);
         return works && closes;
     },
     MakePort, ERROR_GEN_FAILURE},

    {"run a thread",
     [] {
         UINT_PTR id;
         HANDLE thread = CreateThread(
             nullptr, 0, [](LPVOID) -> LPVOID { return nullptr; }, nullptr, CREATE_JOINABLE, &id);
         if (!thread)
             return false;
         const bool works = WaitForSingleObject(thread, INFINITE) == 0;
         CloseHandle(thread);
         return works;
     },
     [] {}, ERROR_GEN_FAILURE},
    {"use a semaphore",
     [] {
         HANDLE semaphore = CreateSemaphore(nullptr, 1, 1, nullptr);
         if (!semaphore)
             return false;
         const bool works = WaitForSingleObject(semaphore, INFINITE) == 0;
         CloseHandle(semaphore);
         return works;
     },
     [] {}, ERROR_GEN_FAILURE},

    {"store an error",
     [] {
         char text[8] = "";
         SetLastErrorString("new");
         GetLastErrorString(text, sizeof text);
         void *record = TlsGetValue(gLastErrorTLS);
         TlsSetValue(gLastErrorTLS, nullptr); // as on a new thread
         SetLastError(ERROR_READ_FAULT);
         const uint32_t number = GetLastError();
         TlsSetValue(gLastErrorTLS, record);
         const bool isOld = strcmp(text, "old") == 0;
         if (!isOld && strcmp(text, "new") != 0)
             abort();
         SetLastError(isOld ? ERROR_NOT_ENOUGH_MEMORY : number);
         return !isOld && number == ERROR_READ_FAULT;
     },
     [] { SetLastErrorString("old"); }},
    {"resize a block",
     [] {
         HGLOBAL block = GlobalAlloc(0, 8);
         if (!block)
             return false;
         strcpy(static_cast<char *>(block), "kept");
         HGLOBAL larger = GlobalReAlloc(block, 100000, 0);
         if (strcmp(static_cast<char *>(larger ? larger : block), "kept") != 0)
             abort();
         GlobalFree(larger ? larger : block);
         return larger != nullptr;
     }},
    {"convert a text",
     [] {
         char *utf8 = ConvertISO8859ToUtf8("\x80");
         char *back = utf8 ? ConvertUtf8ToISO8859(utf8) : nullptr;
         const bool works = back && strcmp(back, "\x80") == 0;
         if (!works)
             SetLastError(ERROR_NOT_ENOUGH_MEMORY); // the conversions store none
         free(utf8);
         free(back);
         return works;
     }},

    {"load a module",
     [] {
         HMODULE module = LoadLibrary(PLUGIN_FOLDER "/bare.dll");
         if (!module)
             return false;
         const bool isKnown = GetModuleHandle(PLUGIN_FOLDER "/bare") == module;
         const uint32_t error = GetLastError();
         FreeLibrary(module);
         SetLastError(error);
         return isKnown;
     }},
    {"find a resource",
     [] {
         ResourceRecord *record = FindResource(WEXELXI_HOST_MODULE, "a", "b");
         return record && FreeResource(record);
     }},
    {"run a command", [] { return WinExecEx("true", 0, WINEXEC_WAIT, nullptr) == 32; }},
    {"catch a command",
     [] {
         char *output = nullptr;
         const bool works =
             WinExecEx("echo text", 0, WINEXEC_WAIT | WINEXEC_CAPTURE, &output) == 32 && output;
         const uint32_t error = GetLastError();
         GlobalFree(output);
         SetLastError(error);
         return works;
     },
     PutFiles, ERROR_FILE_NOT_FOUND},
    {"look for a program", [] { return testForProgOpen_Unix("the sh") == 1; }, MakePs},
    {"ask the machine",
     [] {
         SYSTEM_INFO info;
         char name[256];
         uint32_t size = sizeof name;
         GetSystemInfo(&info);
         return GetComputerName(name, &size) == 1;
     }},
    {"log a message",
     [] {
         const char *strings[] = {"a message", "in two"};
         RegisterEventSource(nullptr, "test");
         ReportEvent(nullptr, 0, 0, 0, nullptr, 2, 0, strings, nullptr);
         return DeregisterEventSource(nullptr) == TRUE;
     }},
};

struct Exports : testing::TestWithParam<Scenario> {};

TEST_P(Exports, LeaveNothingBehind)
{
    ExpectSafe(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Faults, Exports, testing::ValuesIn(kScenarios), [](const auto &row) {
    std::string name = row.param.name;
    for (char &c : name)
        c = c == ' ' ? '_' : c;
    return name;
});

const Scenario kFonts[] = {
    {"measure a text",
     [] {
         LOGFONT description = {};
         SIZE size;
         HDC dc = CreateDC(nullptr, nullptr, nullptr, nullptr);
         if (!dc)
             return false;
         description.lfDC = dc;
         description.lfHeight = 12;
         strcpy(description.lfFaceName, "DejaVu Sans");
         HFONT font = CreateFontIndirect(&description);
         const bool works =
             font && SelectObject(dc, font) != font && GetTextExtentPoint32(dc, "text", 4, &size);
         const uint32_t error = GetLastError();
         DeleteObject(font);
         DeleteDC(dc);
         SetLastError(error);
         return works;
     }},
};

TEST(Faults, LeaveNothingBehindInFonts)
{
    PrivateFonts fonts;
    fonts.Add("DejaVuSans.ttf");
    for (const Scenario &scenario : kFonts)
        ExpectSafe(scenario);
}

// One call of printing after the other, each with new printers to be asked about. A call without a
// result counts as failed if it leaves a last error.
const Scenario kPrinting[] = {
    {"list printers",
     [] {
         char *printers = ListPrinters(0);
         FreePrinters(printers);
         return printers != nullptr;
     }},
    {"open a printer",
     [] {
         HPRINTER printer = nullptr;
         return OpenPrinter("one", &printer) && ClosePrinter(printer);
     }},
    {"ask a printer",
     [] { return DeviceCapabilities("one", nullptr, DC_PAPERNAMES, nullptr, nullptr) > 0; }},
    {"ask for margins",
     [] {
         int32_t margin;
         return GetDeviceMarginInfo("one/a", DMPAPER_A4, &margin, &margin, &margin, &margin) == 1;
     }},
    {"ask for names",
     [] {
         DEVMODE record = {};
         strcpy(record.dmDeviceName, "one");
         record.dmSize = sizeof record;
         record.dmPaperSize = DMPAPER_A4;
         record.dmDefaultSource = 256;
         char paper[65];
         char bin[25];
         GetPaperName(&record, paper);
         if (GetLastError() == 0)
             GetBinName(&record, bin);
         return GetLastError() == 0 && *paper && *bin;
     }},
    {"take a printer's settings",
     [] {
         HPRINTERPPD printer = nullptr;
         if (OpenPrinterPPD("one", &printer))
             return false;
         HGLOBAL record = GetCopyOfDevmodeFromPPD(printer);
         if (!record)
             return false;
         RestoreDefaultDevmode(static_cast<DEVMODE *>(GlobalLock(record)));
         const bool works = GetLastError() == 0;
         GlobalFree(record);
         return works;
     }},
    {"change a printer's settings",
     [] {
         DEVMODE record = {};
         strcpy(record.dmDeviceName, "gone");
         record.dmSize = sizeof record;
         record.dmCopies = 3;
         SetLastError(0);
         UpdatePPD("one", "a", &record);
         return GetLastError() == 0 &&
                DocumentProperties(nullptr, nullptr, "two", nullptr, &record, DM_MODIFY) == IDOK;
     }},
    {"start a print dialog",
     [] {
         DEVMODE record = {};
         strcpy(record.dmDeviceName, "gone");
         record.dmSize = sizeof record;
         PRINTDLG dialog = {};
         dialog.hDevMode = MakeDevModeHan(&record);
         dialog.hDevNames = dialog.hDevMode ? MakePrinterNameHan("one") : nullptr;
         HGLOBAL name = nullptr;
         HGLOBAL settings = nullptr;
         char *list = nullptr;
         const bool works = dialog.hDevNames &&
                            GetDevModeAndPrinterNameForPrintDlg(&dialog, &name, &settings, &list);
         const uint32_t error = GetLastError();
         if (works)
             CopyDevModeSettings(dialog.hDevMode, settings);
         for (HGLOBAL block : {name, settings, dialog.hDevMode, dialog.hDevNames})
             GlobalFree(block);
         FreePrinters(list);
         SetLastError(error);
         return works;
     }},
};

TEST(Faults, LeaveNothingBehindInPrinting)
{
    PrivateCups cups;
    SKIP_WITHOUT_CUPS(cups);
    ASSERT_TRUE(cups.AddPrinter("one", TEST_SOURCES "/ppd/odd.ppd"));
    for (const Scenario &scenario : kPrinting)
        ExpectSafe(scenario);
}

} // namespace
