// Months in minutes: several threads call every family at once, each call checked, and what the
// process holds is weighed in between.
//
//   soak SECONDS        ends with 1 and a line for each fault
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <malloc.h>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "support/scratch.h"
#include "wexelxi.h"
#ifdef __SANITIZE_ADDRESS__
extern "C" size_t __sanitizer_get_current_allocated_bytes(void);
#endif

namespace {

constexpr int kThreads = 4;
constexpr size_t kGrowthAllowed = 256 * 1024; // caches fill up; a leak passes this in seconds

std::atomic<uint64_t> gCalls{0};
std::atomic<int> gFaults{0};

#define CHECK_CALL(call)                                                             \
    do {                                                                             \
        gCalls++;                                                                    \
        if (!(call)) {                                                               \
            gFaults++;                                                               \
            printf("line %d: %s, last error %u\n", __LINE__, #call, GetLastError()); \
        }                                                                            \
    } while (false)

// One thread's own names, so that each knows what it has to find.
struct Worker {
    std::string folder, id;
    std::minstd_rand random;

    std::string Path(const char *name) const { return folder + "/" + id + name; }
    uint32_t Below(uint32_t limit) { return static_cast<uint32_t>(random()) % limit; }
};

void UseProfile(Worker &worker)
{
    const std::string value = std::to_string(worker.Below(1000000));
    const std::string key = "key" + std::to_string(worker.Below(5));
    char text[32] = "";
    CHECK_CALL(WriteProfileString(worker.id.c_str(), key.c_str(), value.c_str()));
    CHECK_CALL(GetProfileString(worker.id.c_str(), key.c_str(), "", text, sizeof text) ==
               value.size());
    CHECK_CALL(value == text);
}

void UseFiles(Worker &worker)
{
    std::string name = worker.Path(".dat");
    const std::string copy = worker.Path(".copy");
    char bytes[3000];
    char back[sizeof bytes];
    memset(bytes, static_cast<int>(worker.Below(256)), sizeof bytes);
    uint32_t count = 0;
    const HANDLE file = CreateFile(name.data(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                   CREATE_ALWAYS, 0, nullptr);
    CHECK_CALL(file != INVALID_HANDLE_VALUE);
    CHECK_CALL(WriteFile(file, bytes, sizeof bytes, &count, nullptr) && count == sizeof bytes);
    CHECK_CALL(SetFilePointer(file, 0, nullptr, FILE_BEGIN) == 0);
    CHECK_CALL(ReadFile(file, back, sizeof back, &count, nullptr) && count == sizeof back);
    CHECK_CALL(memcmp(bytes, back, sizeof bytes) == 0);
    CHECK_CALL(GetFileSize(file, nullptr) == sizeof bytes);
    CHECK_CALL(CloseHandle(file));
    CHECK_CALL(CopyFile(name.c_str(), copy.c_str(), FALSE));
    CHECK_CALL(DoesFileExist(copy.c_str()));
    WIN32_FIND_DATA found;
    const HANDLE find = FindFirstFile((worker.folder + "/*.copy").c_str(), &found);
    CHECK_CALL(find != INVALID_HANDLE_VALUE && FindClose(find));
    CHECK_CALL(DeleteFile(copy.c_str()));
}

void UseText(Worker &worker)
{
    const SYSTEMTIME time = {2024, 2, 4, 29, 13, 5, 9, 0};
    char text[64] = "";
    CHECK_CALL(GetDateFormat(1033, 0, &time, "yyyy-MM-dd", text, sizeof text) == 11);
    CHECK_CALL(strcmp(text, "2024-02-29") == 0);
    CHECK_CALL(GetLocaleInfo(1031, 31, text, sizeof text) == 9);
    char *utf8 = ConvertISO8859ToUtf8("gr\xFC\xDF");
    CHECK_CALL(utf8 && strcmp(utf8, "gr\xC3\xBC\xC3\x9F") == 0);
    free(utf8);
    const HGLOBAL block = GlobalAlloc(GLOBAL_ZEROFILL, static_cast<int32_t>(worker.Below(9000)));
    CHECK_CALL(block != nullptr);
    GlobalFree(block);
    SYSTEMTIME now = {};
    GetLocalTime(&now);
    CHECK_CALL(now.wMonth >= 1 && now.wMonth <= 12);
}

void UseFonts(Worker &worker)
{
    const HDC hdc = CreateDC(nullptr, nullptr, nullptr, nullptr);
    const HFONT font = CreateFont(static_cast<int32_t>(8 + worker.Below(30)), 0, 0, 0, 400, 0, 0, 0,
                                  0, 0, 0, 0, 0, "DejaVu Sans");
    CHECK_CALL(hdc != nullptr);
    if (font) { // a machine without fonts has none to give
        const std::string text = std::to_string(worker.Below(20)); // what is measured is remembered
        SIZE size = {};
        SelectObject(hdc, font);
        CHECK_CALL(GetTextExtentPoint32(hdc, text.c_str(), -1, &size) && size.cx > 0);
        CHECK_CALL(DeleteObject(font));
    }
    DeleteDC(hdc);
}

void UseModules(Worker &worker)
{
    const HMODULE module = LoadLibrary(SOAK_PLUGIN);
    CHECK_CALL(module != nullptr && GetProcAddress(module, "BareAnswer") != nullptr);
    CHECK_CALL(FreeLibrary(module));
    SetEnvironmentVariable(("SOAK" + worker.id).c_str(), worker.id.c_str());
    char value[32] = "";
    CHECK_CALL(GetEnvironmentVariable(("SOAK" + worker.id).c_str(), value, sizeof value) ==
               worker.id.size());
}

void *EndAtOnce(void *argument)
{
    return argument;
}

void UseThreads(Worker &)
{
    const HANDLE semaphore = CreateSemaphore(nullptr, 0, 1, nullptr);
    CHECK_CALL(ReleaseSemaphore(semaphore, 1, nullptr));
    CHECK_CALL(WaitForSingleObject(semaphore, INFINITE) == WAIT_OBJECT_0);
    CHECK_CALL(CloseHandle(semaphore));
    const HANDLE thread = CreateThread(nullptr, 0, EndAtOnce, nullptr, 0x100, nullptr);
    CHECK_CALL(thread && WaitForSingleObject(thread, INFINITE) == WAIT_OBJECT_0);
    CHECK_CALL(CloseHandle(thread));
}

void Work(Worker worker, std::chrono::steady_clock::time_point end)
{
    constexpr void (*kUses[])(Worker &) = {UseProfile, UseFiles,   UseText,
                                           UseFonts,   UseModules, UseThreads};
    while (std::chrono::steady_clock::now() < end && gFaults == 0)
        kUses[worker.Below(std::size(kUses))](worker);
}

size_t BytesInUse()
{
#ifdef __SANITIZE_ADDRESS__
    return __sanitizer_get_current_allocated_bytes();
#else
    return mallinfo2().uordblks;
#endif
}

// Runs all threads until then.
void Run(const std::string &folder, std::chrono::steady_clock::time_point end)
{
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < kThreads; i++)
        threads.emplace_back(Work, Worker{folder, "T" + std::to_string(i), std::minstd_rand(i + 1)},
                             end);
    for (std::thread &thread : threads)
        thread.join();
}

} // namespace

int main(int argc, char **argv)
{
    const std::chrono::seconds length(argc > 1 ? atoi(argv[1]) : 20);
    const auto start = std::chrono::steady_clock::now();
    const ScratchFolder folder;
    setenv("WEXELXIDIR", folder.path().c_str(), 1);
    if (InitLib("/usr/bin/soak", nullptr, 0) != 0)
        return 1;
    Run(folder.path(), start + length / 4); // caches fill up
    const size_t descriptors = OpenDescriptors();
    const size_t before = BytesInUse();
    Run(folder.path(), start + length);
    const size_t after = BytesInUse();
    if (OpenDescriptors() != descriptors || gFINDFILE != 0 || after > before + kGrowthAllowed)
        gFaults++;
    FreeLib();
    printf("%llu calls on %d threads, %d faults, memory %zu to %zu bytes, %zu descriptors\n",
           static_cast<unsigned long long>(gCalls), kThreads, gFaults.load(), before, after,
           descriptors);
    fflush(stdout); // a sanitizer may end the process in its own way
    return gFaults != 0;
}
