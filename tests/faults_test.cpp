// Every family of exports, with each of the platform's calls refused in turn.
#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <stdlib.h>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

#include "faults/faults.h"
#include "support/private_cups.h"
#include "support/private_fonts.h"
#include "support/scratch.h"
#include "wexelxi.h"

namespace {

// What is given back at the end of a scope, with the last error kept.
template <auto Release>
struct Releases {
    template <typename T>
    void operator()(T *object) const
    {
        const uint32_t error = GetLastError();
        Release(object);
        SetLastError(error);
    }
};

template <auto Release, typename T = void>
using Owned = std::unique_ptr<T, Releases<Release>>;

#define TRIES(...) [] { return static_cast<bool>(__VA_ARGS__); }

thread_local char gText[5000];
thread_local uint32_t gCount;

// A path in the scenario's folder; it lasts until the next but one is made.
const char *In(const char *name)
{
    static thread_local char paths[2][100];
    static thread_local unsigned last;
    last ^= 1;
    snprintf(paths[last], sizeof paths[last], "%s/%s", gFolder, name);
    return paths[last];
}

// A handle is closed for certain: one whose bytes could not be written, a second time.
void Close(HANDLE file)
{
    if (!CloseHandle(file))
        CloseHandle(file);
}

using File = Owned<Close>;

File Open(std::string name, uint32_t access, uint32_t how) // the call may write to the name
{
    HANDLE file = CreateFile(name.data(), access, 0, nullptr, how, 0, nullptr);
    return File(file == INVALID_HANDLE_VALUE ? nullptr : file);
}

bool Closes(File &file)
{
    return CloseHandle(file.get()) && file.release();
}

bool Reads(const char *name, const char *expected)
{
    File file = Open(name, GENERIC_READ, OPEN_EXISTING);
    int64_t size = 0;
    return file && SetFilePointerEx(file.get(), 0, nullptr, FILE_BEGIN) &&
           GetFileSizeEx(file.get(), &size) &&
           ReadFile(file.get(), gText, sizeof gText, &gCount, nullptr) &&
           std::string_view(gText, gCount) == expected && Closes(file);
}

bool Writes(const char *name)
{
    File file = Open(name, GENERIC_WRITE, CREATE_NEW);
    return file && WriteFile(file.get(), "written", 7, &gCount, nullptr) && gCount == 7 &&
           FlushFileBuffers(file.get()) && SetEndOfFile(file.get()) && Closes(file);
}

// Ends the test unless a file holds a text; past the calls that are refused.
void RequireText(const char *name, const char *expected)
{
    const long file = syscall(SYS_openat, AT_FDCWD, name, O_RDONLY);
    const long count = syscall(SYS_read, file, gText, sizeof gText);
    syscall(SYS_close, file);
    if (std::string_view(gText, static_cast<size_t>(count)) != expected)
        abort();
}

bool Copies()
{
    if (!CopyFile(In("a.txt"), In("new.txt"), FALSE))
        return false;
    RequireText(In("new.txt"), "one");
    return true;
}

bool ReplacesAKey()
{
    if (!WritePrivateProfileString("s", "k", "longer", In("own.ini")) || GetLastError() != 0)
        return false;
    RequireText(In("own.ini"), "[s]\r\nk=longer\r\nother=kept\r\n");
    return true;
}

bool Searches()
{
    WIN32_FIND_DATA data;
    HANDLE find = FindFirstFile(In("*.txt"), &data);
    const Owned<FindClose> owner(find == INVALID_HANDLE_VALUE ? nullptr : find);
    return owner && FindNextFile(find, &data);
}

void PutFiles()
{
    WriteWholeFile(In("a.txt"), "one");
    WriteWholeFile(In("b.txt"), "two");
    CreateDirectory(In("folder"), nullptr);
    WriteWholeFile(In("own.ini"), "[s]\r\nk=v\r\nother=kept\r\n");
}

void PutPortFile()
{
    PutFiles();
    WriteProfileString("Ports", "COM1", "own.ini,rs232");
    WriteProfileString("Ports", "Delay", "-1");
}

void PutSettings()
{
    WriteWholeFile("wexelxi.ini", "[Setup]\r\nVersion=4\r\n");
    TermIni();
}

std::string gPort;

void MakePort()
{
    const int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    grantpt(master);
    unlockpt(master);
    gPort = ptsname(master);
    open(gPort.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC); // the line stays up between the calls
    WriteProfileString("Ports", "COM1", (gPort + ",rs232").c_str());
    WriteProfileString("Ports", "Delay", "-1");
}

bool FindsAPort()
{
    char name[] = "COM1"; // which the call may write to
    const uint32_t type = GetPortName(name, gText, sizeof gText);
    if (type != PST_UNSPECIFIED && GetLastError() == ERROR_NOT_ENOUGH_MEMORY)
        abort(); // it may be another port than the profile's
    return type == PST_RS232 && gPort == gText;
}

bool SetsUpALine()
{
    DCB settings;
    File port = Open("COM1", GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING);
    return port && GetCommState(port.get(), &settings) &&
           BuildCommDCB("COM1:9600,n,8,1", &settings) && SetCommState(port.get(), &settings) &&
           Closes(port);
}

bool FormatsADate()
{
    SYSTEMTIME time;
    GetLocalTime(&time);
    return SetLocale(nullptr) &&
           GetDateFormat(LOCALE_USER_DEFAULT, DATE_LONGDATE, &time, nullptr, gText, sizeof gText);
}

bool TakesOutSeconds()
{
    const SYSTEMTIME time = {};
    return FormatLocaleString(1033, 0, TIME_NOSECONDS, &time, "'a picture to copy':ss", gText,
                              sizeof gText) == 18;
}

// On a new thread, as it were: one that has no record.
bool StoresAnError()
{
    void *record = TlsGetValue(gLastErrorTLS);
    TlsSetValue(gLastErrorTLS, nullptr);
    SetLastErrorString("new");
    GetLastErrorString(gText, sizeof gText);
    SetLastErrorString("newer");
    SetLastError(ERROR_READ_FAULT);
    const uint32_t number = GetLastError();
    TlsSetValue(gLastErrorTLS, record);
    SetLastError(number == ERROR_READ_FAULT ? ERROR_NOT_ENOUGH_MEMORY : number); // of no record
    return strcmp(gText, "new") == 0 && number == ERROR_READ_FAULT;
}

// A block that could not be resized is whole.
bool ResizesABlock()
{
    HGLOBAL block = GlobalAlloc(0, 8);
    if (!block)
        return false;
    strcpy(static_cast<char *>(block), "kept");
    HGLOBAL larger = GlobalReAlloc(block, 100'000, 0);
    const Owned<GlobalFree> owner(larger ? larger : block);
    const auto *words = static_cast<uint64_t *>(owner.get());
    if (strcmp(static_cast<char *>(owner.get()), "kept") != 0 || words[-2] != GLOBAL_HEAD_GUARD ||
        words[GlobalSize(owner.get()) / 8 + 1] != GLOBAL_TAIL_GUARD)
        abort();
    return larger != nullptr;
}

bool ConvertsAText()
{
    SetLastError(ERROR_NOT_ENOUGH_MEMORY); // the conversions store none
    const Owned<free, char> utf8(ConvertISO8859ToUtf8("\x80"));
    const Owned<free, char> back(utf8 ? ConvertUtf8ToISO8859(utf8.get()) : nullptr);
    return back && strcmp(back.get(), "\x80") == 0;
}

bool RunsAThread()
{
    const THREAD_START_ROUTINE routine = [](LPVOID) -> LPVOID { return nullptr; };
    const Owned<CloseHandle> thread(
        CreateThread(nullptr, 0, routine, nullptr, CREATE_JOINABLE, nullptr));
    return thread && WaitForSingleObject(thread.get(), INFINITE) == WAIT_OBJECT_0;
}

bool UsesASemaphore()
{
    const Owned<CloseHandle> semaphore(CreateSemaphore(nullptr, 1, 1, nullptr));
    return semaphore && WaitForSingleObject(semaphore.get(), INFINITE) == WAIT_OBJECT_0;
}

bool LoadsAModule()
{
    const Owned<FreeLibrary> module(LoadLibrary(PLUGIN_FOLDER "/bare.dll"));
    return module && GetModuleHandle(PLUGIN_FOLDER "/bare") == module.get();
}

bool CatchesACommand()
{
    char *output = nullptr;
    const bool works = WinExecEx("echo text", 0, WINEXEC_WAIT | WINEXEC_CAPTURE, &output) == 32;
    const Owned<GlobalFree> owner(output);
    return works && output;
}

// Stands for the machine's, which takes its time.
void MakePs()
{
    static const ScratchFolder folder;
    WriteWholeFile(folder.file("ps"), "#!/bin/sh\necho COMMAND\necho sh\n");
    std::filesystem::permissions(folder.file("ps"), std::filesystem::perms::owner_all);
    setenv("PATH", folder.path().c_str(), 1);
}

bool AsksTheMachine()
{
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    gCount = 256;
    return GetComputerName(gText, &gCount) == 1;
}

bool LogsAMessage()
{
    const char *strings[] = {"a message", "in two"};
    RegisterEventSource(nullptr, "test");
    ReportEvent(nullptr, 0, 0, 0, nullptr, 2, 0, strings, nullptr);
    return DeregisterEventSource(nullptr);
}

const Scenario kScenarios[] = {
    {"read a file", TRIES(Reads(In("a.txt"), "one")), PutFiles, ERROR_GEN_FAILURE},
    {"make a file", TRIES(Writes(In("new.txt")) && DeleteFile(In("new.txt"))), PutFiles,
     ERROR_GEN_FAILURE},
    {"look for a file", TRIES(DoesFileExist(In("a.txt")) && GetFileAttributes(In("b.txt"))),
     PutFiles},
    {"search a folder", Searches, PutFiles},
    {"copy over a file", TRIES(Copies() && Copies()), PutFiles, ERROR_GEN_FAILURE},
    {"keep a target", TRIES(!CopyFile(In("a.txt"), In("b.txt"), TRUE)), PutFiles},
    {"move a file", TRIES(MoveFile(In("a.txt"), In("c.txt"))), PutFiles},
    {"make a folder", TRIES(CreateDirectory(In("made"), nullptr)), PutFiles},
    {"remove a folder", TRIES(RemoveDirectory(In("folder"))), PutFiles},
    {"delete a file", TRIES(DeleteFile(In("a.txt"))), PutFiles},
    {"name a temporary file", // whose number may be 0 just after the start
     TRIES((GetTempFileName(In(""), "new", 0, gText), GetLastError() == ERROR_FILE_NOT_FOUND)),
     PutFiles},
    {"normalise a path",
     TRIES(GetFullPathName(In("folder/../a.txt"), 4096, gText, nullptr) &&
           GetFilePath(In("folder"), 4096, gText)),
     PutFiles},
    {.name = "change the folder",
     .succeeds = TRIES(SetCurrentDirectory("folder") && GetCurrentDirectory(4096, gText)),
     .prepare = PutFiles,
     .alone = true},

    {"read a key", TRIES(GetPrivateProfileString("s", "k", "", gText, 20, In("own.ini")) == 1),
     PutFiles},
    {"list a section", TRIES(GetPrivateProfileSection("s", gText, 20, In("own.ini"))), PutFiles},
    {"replace a key", ReplacesAKey, PutFiles},
    {"add a section", TRIES(WritePrivateProfileString("t", "k", "value", In("own.ini"))), PutFiles},
    {.name = "change a key behind a port",
     .succeeds =
         TRIES(WritePrivateProfileString("s", "k", "longer", "COM1") && GetLastError() == 0),
     .prepare = PutPortFile,
     .forNoHandle = ERROR_GEN_FAILURE,
     .alone = true},
    {.name = "load the preferences",
     .succeeds = TRIES((gLoadPref(), GetLastError() == 0)),
     .prepare = PutSettings,
     .alone = true},
    {.name = "start anew",
     .succeeds = TRIES((FreeLib(), InitLib("/opt/host/bin/host", nullptr, 0) == 0)),
     .keeps = 64, // the thread's record of the last run, and its text
     .alone = true},
    {"choose a language", FormatsADate},
    {"take out seconds", TakesOutSeconds},

    {.name = "find a port", .succeeds = FindsAPort, .prepare = MakePort, .alone = true},
    {.name = "set up a line",
     .succeeds = SetsUpALine,
     .prepare = MakePort,
     .forNoHandle = ERROR_GEN_FAILURE,
     .alone = true},

    {"run a thread", RunsAThread, [] {}, ERROR_GEN_FAILURE},
    {"use a semaphore", UsesASemaphore, [] {}, ERROR_GEN_FAILURE},

    {.name = "store an error",
     .succeeds = StoresAnError,
     .keeps = 64,
     .alone = true}, // the record and its text
    {"resize a block", ResizesABlock},
    {"convert a text", ConvertsAText},

    {"load a module", LoadsAModule},
    {"find a resource",
     TRIES(Owned<FreeResource, ResourceRecord>(FindResource(WEXELXI_HOST_MODULE, "a", "b")))},
    {.name = "run a command",
     .succeeds = TRIES(WinExecEx("true", 0, WINEXEC_WAIT, nullptr) == 32),
     .alone = true},
    {.name = "catch a command",
     .succeeds = CatchesACommand,
     .prepare = PutFiles,
     .forNoHandle = ERROR_FILE_NOT_FOUND,
     .alone = true},
    {.name = "look for a program",
     .succeeds = TRIES(testForProgOpen_Unix("the sh") == 1),
     .prepare = MakePs,
     .alone = true},
    {"ask the machine", AsksTheMachine},
    {.name = "log a message", .succeeds = LogsAMessage, .alone = true},
};

struct Exports : testing::TestWithParam<Scenario> {};

TEST_P(Exports, LeaveNothingBehind)
{
    ExpectSafe(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Faults, Exports, testing::ValuesIn(kScenarios), [](const auto &row) {
    std::string name = row.param.name;
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
});

bool MeasuresAText()
{
    LOGFONT description = {};
    SIZE size;
    const Owned<DeleteDC> dc(CreateDC(nullptr, nullptr, nullptr, nullptr));
    description.lfDC = dc.get();
    description.lfHeight = 12;
    strcpy(description.lfFaceName, "DejaVu Sans");
    const Owned<DeleteObject> font(dc ? CreateFontIndirect(&description) : nullptr);
    return font && SelectObject(dc.get(), font.get()) != font.get() &&
           GetTextExtentPoint32(dc.get(), "text", 4, &size);
}

TEST(Faults, LeaveNothingBehindInFonts)
{
    PrivateFonts fonts;
    fonts.Add("DejaVuSans.ttf");
    ExpectSafe({"measure a text", MeasuresAText});
}

TEST(Faults, BearManyThreads)
{
    PrivateFonts fonts;
    fonts.Add("DejaVuSans.ttf");
    std::vector<Scenario> scenarios(std::begin(kScenarios), std::end(kScenarios));
    scenarios.push_back({"measure a text", MeasuresAText});
    ExpectSafeTogether(scenarios);
}

DEVMODE Settings(const char *printer)
{
    DEVMODE record = {};
    strcpy(record.dmDeviceName, printer);
    record.dmSize = sizeof record;
    record.dmPaperSize = DMPAPER_A4;
    record.dmDefaultSource = 256;
    record.dmCopies = 3;
    return record;
}

// A call without a result counts as failed if it leaves a last error.
bool NamesPaperAndBin()
{
    DEVMODE record = Settings("one");
    char bin[25] = "";
    GetPaperName(&record, gText);
    if (GetLastError() == 0)
        GetBinName(&record, bin);
    return GetLastError() == 0 && *gText && *bin;
}

bool TakesSettings()
{
    HPRINTERPPD printer = nullptr;
    if (OpenPrinterPPD("one", &printer))
        return false;
    const Owned<GlobalFree> record(GetCopyOfDevmodeFromPPD(printer));
    if (record)
        RestoreDefaultDevmode(static_cast<DEVMODE *>(GlobalLock(record.get())));
    return record && GetLastError() == 0;
}

bool ChangesSettings()
{
    DEVMODE record = Settings("gone");
    SetLastError(0);
    UpdatePPD("one", "a", &record);
    return GetLastError() == 0 &&
           DocumentProperties(nullptr, nullptr, "two", nullptr, &record, DM_MODIFY) == IDOK;
}

bool StartsADialog()
{
    const DEVMODE record = Settings("gone");
    const Owned<GlobalFree> mode(MakeDevModeHan(&record));
    const Owned<GlobalFree> names(mode ? MakePrinterNameHan("one") : nullptr);
    PRINTDLG dialog = {};
    dialog.hDevMode = mode.get();
    dialog.hDevNames = names.get();
    HGLOBAL name = nullptr;
    HGLOBAL settings = nullptr;
    char *list = nullptr;
    const bool works =
        names && GetDevModeAndPrinterNameForPrintDlg(&dialog, &name, &settings, &list);
    const Owned<GlobalFree> ownedName(name), ownedSettings(settings);
    const Owned<FreePrinters, char> ownedList(list);
    if (works)
        CopyDevModeSettings(dialog.hDevMode, settings);
    return works;
}

HPRINTER gPrinter;
int32_t gMargin;

// One call of printing after the other, each with new printers to be asked about.
const Scenario kPrinting[] = {
    {"list printers", TRIES(Owned<FreePrinters, char>(ListPrinters(0)))},
    {"open a printer", TRIES(OpenPrinter("one", &gPrinter) && ClosePrinter(gPrinter))},
    {"ask a printer",
     TRIES(DeviceCapabilities("one", nullptr, DC_PAPERNAMES, nullptr, nullptr) > 0)},
    {"ask for margins",
     TRIES(GetDeviceMarginInfo("one/a", DMPAPER_A4, &gMargin, &gMargin, &gMargin, &gMargin))},
    {"ask for names", NamesPaperAndBin},
    {"take a printer's settings", TakesSettings},
    {"change a printer's settings", ChangesSettings},
    {"start a print dialog", StartsADialog},
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
