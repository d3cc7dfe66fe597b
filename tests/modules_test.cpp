// The module chain, loading, and resources, with plug-ins that the build makes.
#include <filesystem>
#include <gtest/gtest.h>
#include <random>
#include <stdexcept>
#include <string>
#include <sys/time.h>
#include <thread>

#include "modules/module_names.h"
#include "support/last_error.h"
#include "support/library.h"
#include "wexelxi.h"

extern "C" WEXELXI_API int HostAnswer(void)
{
    return 41;
}

namespace {

constexpr uint32_t kLeftByPlugin = 77; // the plug-ins' own last errors
constexpr uint32_t kLeftByResources = 78;

std::string gHostLog;

intptr_t HostResources(uint32_t opcode, intptr_t first, intptr_t second, intptr_t third)
{
    gHostLog += std::to_string(opcode) + ":" + std::to_string(first) + " ";
    if (opcode == WXRES_LOADSTRING)
        return snprintf(reinterpret_cast<char *>(second), static_cast<size_t>(third), "host");
    return 5;
}

// The library, started on a folder that holds the plug-ins.
struct Modules : testing::Test {
    Modules()
    {
        for (const char *name : {"full", "bare", "reentrant", "broken"})
            std::filesystem::create_symlink(std::string(PLUGIN_FOLDER) + "/" + name + ".so",
                                            Path(name) + ".so");
        setenv("PLUGIN_LOG", library.folder.file("log").c_str(), 1);
    }
    std::string Path(const std::string &name) const { return library.folder.file(name); }
    HMODULE Load(const std::string &name) const { return LoadLibrary(Path(name).c_str()); }

    // What the plug-in was told since the last question.
    std::string TakeLog() const
    {
        const std::string log = ReadWholeFile(Path("log"));
        std::filesystem::remove(Path("log"));
        return log;
    }

    StartedLibrary library{HostResources};
};

std::string NameOf(HMODULE module)
{
    char name[4096] = "unset";
    uint32_t length = 0;
    EXPECT_LAST_ERROR(length = GetModuleFileName(module, name, 0), ERROR_SUCCESS);
    EXPECT_EQ(length, strlen(name));
    return name;
}

// How names are found, step by step on whole texts.
std::string Normalised(const std::string &name)
{
    const size_t dot = name.rfind('.');
    return (dot != name.npos && dot > 0 ? name.substr(0, dot) : name) + ".so";
}

bool PlainlyMatches(const std::string &entry, const std::string &name, const std::string &folder)
{
    const std::string path = Normalised(name[0] == '/' ? name : folder + "/" + name);
    const size_t slash = path.rfind('/');
    const bool hasBase = slash != path.npos && slash > 0;
    return entry[0] == '/' ? entry == path : hasBase && entry == path.substr(slash + 1);
}

TEST(ModuleNames, AreFoundAsByWholeTexts)
{
    using namespace wexelxi;
    std::mt19937 random(1);
    const auto text = [&](size_t shortest, size_t longest) {
        std::string made(shortest + random() % (longest - shortest + 1), ' ');
        for (char &c : made)
            c = "/./ab"[random() % 5];
        return made;
    };
    size_t matches = 0;
    for (int i = 0; i < 100000; i++) {
        const std::string name = text(1, 4), folder = text(0, 4);
        std::string entry = text(1, 5);
        if (i % 2)
            entry = (i % 4 == 1 ? folder + "/" + name : name) + ".so";
        const bool expected = PlainlyMatches(entry, name, folder);
        const ModulePath path = PathOfAnyName(name, folder);
        ASSERT_EQ(ModuleNameMatches(entry, path), expected)
            << entry << " " << name << " " << folder;
        if (expected) {
            ASSERT_EQ(ModuleNameHash(entry), ModuleNameHash(path)) << entry << " " << name;
            matches++;
        }
        const std::string loaded = Normalised(name);
        ASSERT_EQ(ModuleNameMatches(entry, PathOfModule(name, folder)),
                  PlainlyMatches(entry, loaded, folder))
            << entry << " loaded as " << name << " " << folder;
    }
    EXPECT_GT(matches, 5000u);
}

TEST_F(Modules, AreCountedAndToldOnce)
{
    gScaleFactor = -3;
    HMODULE full = nullptr;
    EXPECT_LAST_ERROR(full = Load("full.dll"), kLeftByPlugin) << "DllMain has the last word";
    ASSERT_NE(full, nullptr);
    EXPECT_EQ(TakeLog(), "DllMain 1 -3 in chain\n");
    EXPECT_OUTCOME(Load("full.so"), full, ERROR_SUCCESS);
    EXPECT_EQ(TakeLog(), "");
    EXPECT_EQ(gHMODULE, 1u);
    EXPECT_EQ(NameOf(full), Path("full.so"));
    EXPECT_OUTCOME(GetModuleHandle("full.anything"), full, ERROR_SUCCESS)
        << "it lies in the configuration folder";
    EXPECT_OUTCOME(GetModuleHandle("/elsewhere/full.so"), nullptr, ERROR_SUCCESS);

    void *answer = nullptr;
    EXPECT_LAST_ERROR(answer = GetProcAddress(full, "PluginAnswer"), ERROR_SUCCESS);
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(reinterpret_cast<int (*)()>(answer)(), 42);
    EXPECT_OUTCOME(GetProcAddress(full, "NoSuchName"), nullptr, ERROR_SUCCESS);

    EXPECT_OUTCOME(FreeLibrary(full), 1, ERROR_SUCCESS);
    EXPECT_EQ(TakeLog(), "");
    EXPECT_EQ(gHMODULE, 1u);
    EXPECT_OUTCOME(FreeLibrary(full), 1, kLeftByPlugin);
    EXPECT_EQ(TakeLog(), "DllMain 0 0 in chain\n") << "no detach: its resources were never used";
    EXPECT_EQ(gHMODULE, 0u);
    EXPECT_OUTCOME(FreeLibrary(full), 0, ERROR_SUCCESS);
    EXPECT_EQ(NameOf(full), "");
}

TEST_F(Modules, StayWhileTheSettingSaysSo)
{
    HMODULE full = Load("full");
    TakeLog();
    gNoFreeLibrary = 1;
    for (int i = 0; i < 2; i++)
        EXPECT_OUTCOME(FreeLibrary(full), 1, ERROR_SUCCESS);
    EXPECT_EQ(TakeLog(), "");
    TermModule();
    EXPECT_EQ(gNoFreeLibrary, 0);
    EXPECT_EQ(TakeLog(), "DllMain 0 0 in chain\n");
    EXPECT_EQ(gModChain, nullptr);
}

TEST_F(Modules, ThatAreMissingOrBrokenLeaveTheLoadersText)
{
    const std::pair<std::string, const char *> rows[] = {{Path("broken"), "gNobodyDefinesThis"},
                                                         {Path("missing"), "cannot open"},
                                                         {std::string(100000, 'n'), "nnnn"}};
    for (const auto &row : rows) {
        char text[4096] = "";
        SetLastErrorString("stale");
        EXPECT_OUTCOME(LoadLibrary(row.first.c_str()), nullptr, ERROR_GEN_FAILURE);
        GetLastErrorString(text, sizeof text);
        EXPECT_NE(strstr(text, row.second), nullptr) << text;
    }
    for (const char *name : {static_cast<const char *>(nullptr), ""})
        EXPECT_OUTCOME(LoadLibrary(name), nullptr, ERROR_SUCCESS);
    EXPECT_EQ(gHMODULE, 0u);
}

TEST_F(Modules, MayCallBackFromDllMain)
{
    const struct {
        const char *calls; // loads and releases of itself when it is told to leave
        bool stays;
    } rows[] = {{"F", false}, {"LF", false}, {"LFF", false}, {"L", true}, {"LLF", true}};
    for (const auto &[calls, stays] : rows) {
        setenv("PLUGIN_DOES", calls, 1);
        HMODULE module = Load("reentrant");
        ASSERT_NE(module, nullptr);
        EXPECT_EQ(*static_cast<int *>(GetProcAddress(module, "gReentrantLoads")), 1);
        EXPECT_EQ(FreeLibrary(module), 1);
        EXPECT_EQ(MODChain_findByMod(module) != nullptr, stays) << calls;
        setenv("PLUGIN_DOES", "", 1);
        EXPECT_EQ(FreeLibrary(module), stays) << "it hears of its next last release";
        EXPECT_EQ(MODChain_findByMod(module), nullptr) << calls;
    }
    // Left to the end of the library, where it loads itself again each time that it is told.
    EXPECT_NE(Load("reentrant"), nullptr);
}

TEST_F(Modules, HaveTheHostFirst)
{
    HMODULE host = WEXELXI_HOST_MODULE;
    EXPECT_EQ(MODChain_findByMod(host), gModChain);
    EXPECT_EQ(NameOf(host), "/opt/host/bin/host");
    EXPECT_EQ(GetModuleHandle("/opt/host/bin/host"), nullptr) << "asked for as host.so";
    auto *answer = reinterpret_cast<int (*)()>(GetProcAddress(host, "HostAnswer"));
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer(), 41);
    EXPECT_OUTCOME(GetProcAddress(host, "LoadLibrary"), nullptr, ERROR_SUCCESS)
        << "the library's, not the host's";
    EXPECT_OUTCOME(GetProcAddress(host, nullptr), nullptr, ERROR_SUCCESS);
    EXPECT_OUTCOME(GetProcAddress(nullptr, "HostAnswer"), nullptr, ERROR_SUCCESS);
    EXPECT_OUTCOME(FreeLibrary(host), 1, ERROR_SUCCESS);
    EXPECT_EQ(MODChain_findByMod(host), gModChain);
}

TEST_F(Modules, StartTheTickCount)
{
    const auto milliseconds = [] {
        timeval now;
        gettimeofday(&now, nullptr);
        return static_cast<uint32_t>(now.tv_sec * 1000 + now.tv_usec / 1000);
    };
    const uint32_t before = milliseconds();
    EXPECT_LAST_ERROR(InitModule(), ERROR_SUCCESS);
    EXPECT_LE(gTickStart - before, milliseconds() - before);
}

TEST_F(Modules, ChainCountsByHandle)
{
    HMODULE module = reinterpret_cast<HMODULE>(0x5000);
    EXPECT_LAST_ERROR(MODChain_add("bare.so", module), ERROR_SUCCESS);
    MODChainEntry *entry = nullptr;
    EXPECT_LAST_ERROR(entry = MODChain_findByMod(module), kUnchanged);
    EXPECT_OUTCOME(MODChain_findByName("bare.dll"), entry, kUnchanged);
    EXPECT_EQ(GetModuleHandle("/any/where/bare"), module);
    EXPECT_EQ(LoadLibrary("/any/where/bare"), module);
    EXPECT_OUTCOME(MODChain_remove(module), FALSE, kUnchanged);
    EXPECT_OUTCOME(MODChain_remove(module), TRUE, kUnchanged);
    EXPECT_OUTCOME(MODChain_remove(module), FALSE, kUnchanged);
}

// Of many entries the first of the chain is found, by handle and by name, whichever are removed.
TEST_F(Modules, AreFoundInTheOrderOfTheChain)
{
    const auto handle = [](size_t i) { return reinterpret_cast<HMODULE>(0x1000 + 0x10 * i); };
    for (size_t i = 0; i < 300; i++)
        MODChain_add(("m" + std::to_string(i % 100) + ".so").c_str(), handle(i % 150));
    for (size_t round = 0; round < 3; round++) {
        // Entry i has name i mod 100 and handle i mod 150; those of the first 100 go in each round.
        for (size_t i = 0; i < 100; i++) {
            const std::string name = "m" + std::to_string(i);
            ASSERT_EQ(GetModuleHandle(name.c_str()), handle((100 * round + i) % 150)) << name;
            ASSERT_EQ(NameOf(handle((100 * round + i) % 150)), name + ".so");
            ASSERT_EQ(MODChain_remove(handle((100 * round + i) % 150)), TRUE);
        }
    }
    EXPECT_EQ(GetModuleHandle("m7"), nullptr);
    EXPECT_EQ(gModChain, MODChain_findByMod(WEXELXI_HOST_MODULE));
}

TEST_F(Modules, ServeResources)
{
    HMODULE full = Load("full");
    TakeLog();
    void *const ten = reinterpret_cast<void *>(10);
    EXPECT_OUTCOME(FindResource(full, "unknown", ten), nullptr, kLeftByResources);
    EXPECT_EQ(TakeLog(), "9\n0\n") << "attached once, before the first call";
    ResourceRecord *record = nullptr;
    EXPECT_LAST_ERROR(record = FindResource(full, "note", ten), ERROR_SUCCESS);
    ASSERT_NE(record, nullptr);
    EXPECT_OUTCOME(SizeofResource(nullptr, record), 9u, kLeftByResources);
    EXPECT_OUTCOME(LoadResource(full, nullptr), nullptr, ERROR_SUCCESS);
    EXPECT_OUTCOME(LoadResource(nullptr, record), nullptr, ERROR_SUCCESS);
    EXPECT_EQ(LoadResource(full, record), record);
    EXPECT_EQ(LoadResource(full, record), record);
    EXPECT_STREQ(static_cast<char *>(LockResource(record)), "template");
    EXPECT_EQ(UnlockResource(record), 1);
    EXPECT_EQ(FreeResource(record), TRUE);
    EXPECT_EQ(TakeLog(), "0\n5\n1\n1\n3\n4\n2\n");

    char text[16] = "untouched";
    EXPECT_OUTCOME(LoadString(full, 4000000000u, text, 7), 15, kLeftByResources);
    EXPECT_STREQ(text, "text 4");
    EXPECT_OUTCOME(LockResource(nullptr), nullptr, ERROR_SUCCESS);
    EXPECT_OUTCOME(UnlockResource(nullptr), 0, ERROR_SUCCESS);
    EXPECT_OUTCOME(FreeResource(nullptr), FALSE, ERROR_SUCCESS);
    EXPECT_OUTCOME(SizeofResource(full, nullptr), 0u, ERROR_SUCCESS);
    TakeLog();
    FreeLibrary(full);
    EXPECT_EQ(TakeLog(), "10\nDllMain 0 0 in chain\n");
}

TEST_F(Modules, ReachTheHostsFunctionUnattached)
{
    char text[16];
    EXPECT_OUTCOME(LoadString(WEXELXI_HOST_MODULE, 3, text, sizeof text), 4, ERROR_SUCCESS);
    EXPECT_STREQ(text, "host");
    ResourceRecord *record = FindResource(WEXELXI_HOST_MODULE, reinterpret_cast<void *>(8), "t");
    EXPECT_EQ(FreeResource(record), TRUE) << "also when it was never loaded";
    EXPECT_EQ(gHostLog, "6:3 0:8 2:0 ");
    MODChainEntry *host = MODChain_findByMod(WEXELXI_HOST_MODULE);
    EXPECT_OUTCOME(MODChain_getResFunc(host), &HostResources, kUnchanged);
}

TEST(Resources, MayEndByTheHostsExceptionOrItsThreads)
{
    StartedLibrary library{[](uint32_t, intptr_t id, intptr_t, intptr_t) -> intptr_t {
        if (id == 1)
            throw std::runtime_error("the host's own");
        pthread_exit(nullptr);
    }};
    EXPECT_THROW(LoadString(WEXELXI_HOST_MODULE, 1, nullptr, 0), std::runtime_error);
    EXPECT_EQ(TlsGetValue(gCriticalSectionTLS), nullptr);
    std::thread([] { LoadString(WEXELXI_HOST_MODULE, 2, nullptr, 0); }).join();
    auto *mutex = static_cast<pthread_mutex_t *>(gWexelxiCriticalSection);
    ASSERT_EQ(pthread_mutex_trylock(mutex), 0);
    pthread_mutex_unlock(mutex);
}

TEST(Resources, AreNoneWithoutAFunction)
{
    StartedLibrary library;
    HMODULE bare = LoadLibrary(PLUGIN_FOLDER "/bare");
    EXPECT_OUTCOME(MODChain_getResFunc(MODChain_findByMod(bare)), nullptr, ERROR_SUCCESS);
    for (HMODULE module : {bare, WEXELXI_HOST_MODULE, HMODULE{}}) {
        char text[16] = "untouched";
        EXPECT_OUTCOME(FindResource(module, "note", "type"), nullptr, ERROR_SUCCESS);
        EXPECT_OUTCOME(LoadString(module, 1, text, 16), 0, ERROR_SUCCESS);
        EXPECT_STREQ(text, "untouched");
    }
}

} // namespace
