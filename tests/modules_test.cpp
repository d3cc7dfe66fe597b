// The module chain, loading, and resources, with plug-ins that the build makes.
#include <algorithm>
#include <dlfcn.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <random>
#include <stdexcept>
#include <thread>

#include "support/digest.h"
#include "support/last_error.h"
#include "support/library.h"
#include "wexelxi.h"

namespace {

constexpr uint32_t kLeftByPlugin = 77; // the plug-ins' own last errors
constexpr uint32_t kLeftByResources = 78;

std::string gTold;       // what the plug-in and the host were told since the last question
const char *gCalls = ""; // what the plug-in does when it is told to leave, a letter each
uint32_t gRefusal = 0;   // the last error of a load of itself that failed

std::string TakeTold()
{
    return std::exchange(gTold, "");
}

void CallBack(char call, HMODULE module)
{
    char name[4096];
    GetModuleFileName(module, name, 0);
    if (call == 'L')
        gRefusal = LoadLibrary(name) == module ? gRefusal : GetLastError();
    else if (call == 'F')
        FreeLibrary(module);
    else if (call == 'T')
        TermModule();
    else if (call == 'X')
        throw std::runtime_error("the plug-in's own");
    else
        pthread_exit(nullptr);
}

} // namespace

extern "C" {

WEXELXI_API BOOL PluginMain(HMODULE module, uint32_t reason, intptr_t reserved)
{
    gTold += "DllMain " + std::to_string(reason) + " " + std::to_string(reserved) + "\n";
    for (const char *call = reason == DLL_PROCESS_ATTACH ? "LF" : gCalls; *call; call++)
        CallBack(*call, module);
    SetLastError(kLeftByPlugin);
    return FALSE; // ignored
}

WEXELXI_API intptr_t PluginResources(uint32_t opcode, intptr_t first, intptr_t second,
                                     intptr_t third)
{
    if (opcode == WXRES_ATTACH)
        first = MODChain_findByMod(reinterpret_cast<HMODULE>(first)) != nullptr;
    if (opcode == WXRES_LOADSTRING)
        strcpy(reinterpret_cast<char *>(std::exchange(second, 0)), "a text");
    for (const int64_t number : {int64_t{opcode}, first, second, third})
        gTold += std::to_string(number) + " ";
    SetLastError(kLeftByResources);
    return opcode == WXRES_FIND && first == 5 ? 0 : static_cast<intptr_t>(0x500000000 + opcode);
}

// The host's own symbol, and none that a module without one shall have.
WEXELXI_API intptr_t WXresFunc(uint32_t, intptr_t, intptr_t, intptr_t)
{
    return 1;
}
}

namespace {

// The library, started on a folder that holds the plug-ins.
struct Modules : testing::Test {
    Modules()
    {
        for (const char *name : {"full.so", "bare.so"})
            std::filesystem::create_symlink(std::string(PLUGIN_FOLDER "/") + name, Path(name));
        gTold = gCalls = "";
        gRefusal = 0;
    }
    std::string Path(const char *name) const { return library.folder.file(name); }
    HMODULE Load(const char *name) const { return LoadLibrary(Path(name).c_str()); }
    bool IsOpen() const
    {
        void *open = dlopen(Path("full.so").c_str(), RTLD_LAZY | RTLD_NOLOAD);
        return open && dlclose(open) == 0;
    }

    StartedLibrary library{PluginResources}; // which serves the host too
};

HMODULE Handle(size_t number)
{
    return reinterpret_cast<HMODULE>(127 * (2 + number)); // all look for the same place
}

// Names, folders and entries of few letters, and few handles, so that most meet somewhere.
TEST_F(Modules, AreFoundFirstOfTheChain)
{
    std::mt19937 random(1);
    const auto text = [&](size_t shortest, size_t longest) {
        std::string made(shortest + random() % (longest - shortest + 1), ' ');
        for (char &c : made)
            c = "/./ab"[random() % 5];
        return made;
    };
    const auto number = [](HMODULE module) { return reinterpret_cast<uintptr_t>(module); };
    Digest digest;
    for (int i = 0; i < 20000; i++) {
        const std::string name = text(1, 4), folder = text(0, 4);
        const std::string entries[] = {text(1, 5), folder + "/" + name + ".so", name + ".so"};
        SetWexelXiFolder(folder.c_str());
        MODChain_add(entries[i % 3].c_str(), Handle(random() % 9));
        digest.Add(number(GetModuleHandle(name.c_str())), number(LoadLibrary(name.c_str())));
        for (int removals = 0; removals < 3; removals++)
            digest.Add(MODChain_remove(Handle(random() % 9)));
    }
    EXPECT_EQ(digest.hex(), "cb4cd2c853559f55");
    for (size_t i = 0; i < 9; i++) {
        while (MODChain_findByMod(Handle(i)))
            MODChain_remove(Handle(i));
    }
    EXPECT_EQ(gModChain, MODChain_findByMod(WEXELXI_HOST_MODULE));
}

TEST_F(Modules, AreCountedAndToldOnce)
{
    char name[4096];
    gScaleFactor = -3;
    HMODULE full = nullptr;
    EXPECT_LAST_ERROR(full = Load("full.dll"), kLeftByPlugin) << "DllMain has the last word";
    EXPECT_EQ(TakeTold(), "DllMain 1 -3\n");
    EXPECT_EQ(gRefusal, 0u) << "it is in the chain by then";
    EXPECT_OUTCOME(Load("full.so"), full, ERROR_SUCCESS);
    EXPECT_EQ(gHMODULE, 1u);
    uint32_t length = 0;
    EXPECT_LAST_ERROR(length = GetModuleFileName(full, name, 0), ERROR_SUCCESS);
    EXPECT_EQ(length, strlen(name));
    EXPECT_EQ(name, Path("full.so"));
    EXPECT_OUTCOME(GetProcAddress(full, "DllMain"), dlsym(full, "DllMain"), ERROR_SUCCESS);
    EXPECT_OUTCOME(GetProcAddress(full, "NoSuchName"), nullptr, ERROR_SUCCESS);

    EXPECT_OUTCOME(FreeLibrary(full), 1, ERROR_SUCCESS);
    EXPECT_EQ(TakeTold(), "");
    EXPECT_EQ(gHMODULE, 1u);
    EXPECT_OUTCOME(FreeLibrary(full), 1, kLeftByPlugin);
    EXPECT_EQ(TakeTold(), "DllMain 0 0\n") << "no detach: its resources were never used";
    EXPECT_EQ(gHMODULE, 0u);
    EXPECT_FALSE(IsOpen());
    EXPECT_OUTCOME(FreeLibrary(full), 0, ERROR_SUCCESS);
    EXPECT_OUTCOME(GetModuleFileName(full, name, 0), 0u, ERROR_SUCCESS);
    EXPECT_STREQ(name, "");
}

TEST_F(Modules, ThatAreMissingOrBrokenLeaveTheLoadersText)
{
    WriteWholeFile(Path("broken.so"), "no module");
    const std::pair<std::string, const char *> rows[] = {{Path("broken"), "too short"},
                                                         {Path("missing"), "cannot open"},
                                                         {std::string(100000, 'n'), "nnnn"}};
    for (const auto &[name, expected] : rows) {
        char text[4096] = "";
        SetLastErrorString("stale");
        EXPECT_OUTCOME(LoadLibrary(name.c_str()), nullptr, ERROR_GEN_FAILURE);
        GetLastErrorString(text, sizeof text);
        EXPECT_NE(strstr(text, expected), nullptr) << text;
    }
    for (const char *name : {static_cast<const char *>(nullptr), ""})
        EXPECT_OUTCOME(LoadLibrary(name), nullptr, ERROR_SUCCESS);
    EXPECT_EQ(gHMODULE, 0u);
}

void FreeOnce(HMODULE module)
{
    try {
        EXPECT_EQ(FreeLibrary(module), 1);
    } catch (const std::runtime_error &) {
        EXPECT_STREQ(gCalls, "X");
    }
}

void FreeAll(HMODULE)
{
    TermModule();
    EXPECT_EQ(gModChain, nullptr);
    EXPECT_EQ(gHMODULE, 0u);
}

TEST_F(Modules, MayCallBackWhenTheyLeave)
{
    const struct {
        const char *calls;
        void (*leave)(HMODULE);
        bool stays;
        int timesTold;
    } rows[] = {
        {"", FreeOnce, false, 1},    {"F", FreeOnce, false, 1},    {"LF", FreeOnce, false, 1},
        {"LFF", FreeOnce, false, 1}, {"L", FreeOnce, true, 1},     {"LLF", FreeOnce, true, 1},
        {"X", FreeOnce, true, 1},    {"E", FreeOnce, true, 1},     {"T", FreeOnce, false, 1},
        {"T", FreeAll, false, 1},    {"TL", FreeAll, false, 1001}, {"L", FreeAll, false, 1001}};
    for (const auto &[calls, leave, stays, timesTold] : rows) {
        SCOPED_TRACE(calls);
        HMODULE module = Load("full");
        TakeTold();
        gNoFreeLibrary = 1;
        EXPECT_OUTCOME(FreeLibrary(module), 1, ERROR_SUCCESS) << "it stays for now";
        gNoFreeLibrary = leave == FreeAll; // which the end takes back
        gCalls = calls;
        std::thread(leave, module).join();
        EXPECT_EQ(gNoFreeLibrary, 0);
        auto *mutex = static_cast<pthread_mutex_t *>(gWexelxiCriticalSection);
        ASSERT_EQ(pthread_mutex_trylock(mutex), 0);
        pthread_mutex_unlock(mutex);
        EXPECT_EQ(IsOpen(), stays);
        const std::string told = TakeTold();
        EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), timesTold);
        gCalls = "";
        EXPECT_EQ(FreeLibrary(module), stays);
        EXPECT_EQ(TakeTold(), stays ? "DllMain 0 0\n" : "") << "it hears of its next last release";
    }
    EXPECT_EQ(gRefusal, ERROR_GEN_FAILURE) << "of the loads without end";
}

TEST_F(Modules, HaveTheHostFirstInTheChain)
{
    char name[4096];
    HMODULE host = WEXELXI_HOST_MODULE;
    EXPECT_OUTCOME(FreeLibrary(host), 1, ERROR_SUCCESS);
    EXPECT_EQ(MODChain_findByMod(host), gModChain);
    GetModuleFileName(host, name, 0);
    EXPECT_STREQ(name, "/opt/host/bin/host");
    const struct {
        HMODULE module;
        const char *name;
        void *symbol;
    } rows[] = {{host, "WXresFunc", reinterpret_cast<void *>(WXresFunc)},
                {host, "LoadLibrary", nullptr}, // the library's own
                {host, "NoSuchName", nullptr},
                {host, nullptr, nullptr},
                {nullptr, "WXresFunc", nullptr}};
    for (const auto &row : rows)
        EXPECT_OUTCOME(GetProcAddress(row.module, row.name), row.symbol, ERROR_SUCCESS);
    EXPECT_LAST_ERROR(MODChain_add("bare.so", Handle(0)), ERROR_SUCCESS);
    EXPECT_OUTCOME(GetModuleHandle("/any/where/bare"), Handle(0), ERROR_SUCCESS);
    EXPECT_OUTCOME(MODChain_findByName("none"), nullptr, kUnchanged);
    EXPECT_OUTCOME(MODChain_remove(Handle(0)), TRUE, kUnchanged);
    EXPECT_LAST_ERROR(InitModule(), ERROR_SUCCESS);
    EXPECT_LT(GetTickCount() + 100, 10000u) << "it starts anew, in steps";
}

TEST_F(Modules, ServeResources)
{
    void *const ten = reinterpret_cast<void *>(10);
    void *const data = reinterpret_cast<void *>(0x500000000 + WXRES_LOCK);
    HMODULE full = Load("full");
    for (HMODULE module : {WEXELXI_HOST_MODULE, full}) {
        TakeTold();
        EXPECT_OUTCOME(FindResource(module, reinterpret_cast<void *>(5), ten), nullptr,
                       kLeftByResources);
        ResourceRecord *record = nullptr;
        EXPECT_LAST_ERROR(record = FindResource(module, nullptr, ten), ERROR_SUCCESS);
        EXPECT_OUTCOME(SizeofResource(nullptr, record), WXRES_SIZE, kLeftByResources);
        EXPECT_OUTCOME(LoadResource(module, nullptr), nullptr, ERROR_SUCCESS);
        EXPECT_OUTCOME(LoadResource(nullptr, record), nullptr, ERROR_SUCCESS);
        EXPECT_OUTCOME(LoadResource(module, record), record, kLeftByResources);
        EXPECT_OUTCOME(LockResource(record), data, kLeftByResources);
        EXPECT_OUTCOME(UnlockResource(record), 1, kLeftByResources);
        EXPECT_OUTCOME(FreeResource(record), TRUE, kLeftByResources);
        FreeResource(FindResource(module, nullptr, ten)); // never loaded
        char text[16];
        EXPECT_OUTCOME(LoadString(module, 4000000000u, text, 7), 6, kLeftByResources);
        EXPECT_STREQ(text, "a text");
        EXPECT_EQ(TakeTold(), std::string(module == full ? "9 1 0 0 " : "") +
                                  "0 5 10 0 0 0 10 0 5 0 21474836480 0 1 21474836480 0 0 "
                                  "3 0 21474836481 0 4 0 21474836481 0 2 0 21474836481 0 "
                                  "0 0 10 0 2 0 0 0 6 4000000000 0 7 ");
    }
    FreeLibrary(full);
    EXPECT_EQ(TakeTold(), "10 0 0 0 DllMain 0 0\n");
    EXPECT_OUTCOME(MODChain_getResFunc(gModChain), &PluginResources, kUnchanged);
    EXPECT_OUTCOME(LockResource(nullptr), nullptr, ERROR_SUCCESS);
    EXPECT_OUTCOME(UnlockResource(nullptr), 0, ERROR_SUCCESS);
    EXPECT_OUTCOME(FreeResource(nullptr), FALSE, ERROR_SUCCESS);
    EXPECT_OUTCOME(SizeofResource(WEXELXI_HOST_MODULE, nullptr), 0u, ERROR_SUCCESS);
}

TEST(Resources, AreNoneWithoutAFunction)
{
    StartedLibrary library;
    HMODULE bare = nullptr;
    EXPECT_LAST_ERROR(bare = LoadLibrary(PLUGIN_FOLDER "/bare"), ERROR_SUCCESS);
    EXPECT_OUTCOME(MODChain_getResFunc(MODChain_findByMod(bare)), nullptr, ERROR_SUCCESS);
    MODChain_add("none", nullptr);
    for (HMODULE module : {bare, WEXELXI_HOST_MODULE, HMODULE{}, Handle(7)}) {
        char text[16] = "untouched";
        EXPECT_OUTCOME(FindResource(module, "note", "type"), nullptr, ERROR_SUCCESS);
        EXPECT_OUTCOME(LoadString(module, 1, text, 16), 0, ERROR_SUCCESS);
        EXPECT_STREQ(text, "untouched");
    }
    MODChain_remove(nullptr);
}

} // namespace
