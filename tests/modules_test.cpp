// The module chain, loading, and resources, with plug-ins that the build makes.
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "modules/module_names.h"
#include "support/library.h"
#include "wexelxi.h"

extern "C" WEXELXI_API int HostAnswer(void)
{
    return 41;
}

namespace {

using wexelxi::ModuleNameMatches;
using wexelxi::NormalisedModuleName;

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
    const uint32_t length = GetModuleFileName(module, name, 0);
    EXPECT_EQ(length, strlen(name));
    return name;
}

TEST(ModuleNames, LoseTheirSuffixAndAreMatched)
{
    const std::pair<const char *, const char *> rows[] = {
        {"report.dll", "report.so"}, {"libreport.so.1", "libreport.so.so"},
        {"/a.d/report", "/a.so"},    {"/a/b.c/r.dll", "/a/b.c/r.so"},
        {".hidden", ".hidden.so"},   {"a.", "a.so"}};
    for (const auto &[name, normalised] : rows)
        EXPECT_EQ(NormalisedModuleName(name), normalised);
    const struct {
        const char *entry, *path;
        bool matches;
    } pairs[] = {{"/a/r.so", "/a/r.so", true}, {"/a/r.so", "/b/r.so", false},
                 {"r.so", "/b/r.so", true},    {"R.so", "/b/r.so", false},
                 {"r.so", "/r.so", false},     {"b/r.so", "/b/r.so", false}};
    for (const auto &pair : pairs)
        EXPECT_EQ(ModuleNameMatches(pair.entry, pair.path), pair.matches) << pair.entry;
}

TEST_F(Modules, AreCountedAndToldOnce)
{
    gScaleFactor = -3;
    HMODULE full = Load("full.dll");
    ASSERT_NE(full, nullptr);
    EXPECT_EQ(GetLastError(), 77u) << "DllMain has the last word";
    EXPECT_EQ(TakeLog(), "DllMain 1 -3 in chain\n");
    EXPECT_EQ(gHMODULE, 1u);
    EXPECT_EQ(Load("full.so"), full);
    EXPECT_EQ(GetLastError(), 0u);
    EXPECT_EQ(TakeLog(), "");
    EXPECT_EQ(gHMODULE, 1u);
    EXPECT_EQ(NameOf(full), Path("full.so"));
    EXPECT_EQ(GetModuleHandle("full.anything"), full) << "it lies in the configuration folder";
    EXPECT_EQ(GetModuleHandle("/elsewhere/full.so"), nullptr);

    auto *answer = reinterpret_cast<int (*)()>(GetProcAddress(full, "PluginAnswer"));
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer(), 42);
    SetLastError(9);
    EXPECT_EQ(GetProcAddress(full, "NoSuchName"), nullptr);
    EXPECT_EQ(GetLastError(), 0u);

    EXPECT_EQ(FreeLibrary(full), 1);
    EXPECT_EQ(TakeLog(), "");
    EXPECT_EQ(FreeLibrary(full), 1);
    EXPECT_EQ(TakeLog(), "DllMain 0 0 in chain\n") << "no detach: its resources were never used";
    EXPECT_EQ(gHMODULE, 0u);
    EXPECT_EQ(FreeLibrary(full), 0);
    EXPECT_EQ(NameOf(full), "");
}

TEST_F(Modules, StayWhileTheSettingSaysSo)
{
    HMODULE full = Load("full");
    TakeLog();
    gNoFreeLibrary = 1;
    EXPECT_EQ(FreeLibrary(full), 1);
    EXPECT_EQ(FreeLibrary(full), 1);
    EXPECT_EQ(TakeLog(), "");
    TermModule();
    EXPECT_EQ(TakeLog(), "DllMain 0 0 in chain\n");
    EXPECT_EQ(gModChain, nullptr);
}

TEST_F(Modules, ThatAreMissingOrBrokenLeaveTheLoadersText)
{
    for (const char *name : {"broken", "missing", "deeper/none"}) {
        char text[4096] = "";
        SetLastErrorString("stale");
        EXPECT_EQ(Load(name), nullptr) << name;
        EXPECT_EQ(GetLastError(), ERROR_GEN_FAILURE);
        GetLastErrorString(text, sizeof text);
        const bool isBroken = std::string(name) == "broken";
        EXPECT_NE(strstr(text, isBroken ? "gNobodyDefinesThis" : "cannot open"), nullptr) << text;
    }
    for (const char *name : {static_cast<const char *>(nullptr), ""}) {
        SetLastError(9);
        EXPECT_EQ(LoadLibrary(name), nullptr);
        EXPECT_EQ(GetLastError(), 0u);
    }
    EXPECT_EQ(LoadLibrary(std::string(100000, 'n').c_str()), nullptr);
    EXPECT_EQ(gHMODULE, 0u);
}

TEST_F(Modules, MayCallBackFromDllMain)
{
    HMODULE module = Load("reentrant");
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(*static_cast<int *>(GetProcAddress(module, "gReentrantLoads")), 1);
    EXPECT_EQ(FreeLibrary(module), 1);
    EXPECT_EQ(MODChain_findByMod(module), nullptr);
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
    EXPECT_EQ(GetProcAddress(host, "LoadLibrary"), nullptr) << "the library's, not the host's";
    EXPECT_EQ(GetProcAddress(nullptr, "HostAnswer"), nullptr);
    EXPECT_EQ(FreeLibrary(host), 1);
    EXPECT_EQ(MODChain_findByMod(host), gModChain);
}

TEST_F(Modules, ChainCountsByHandle)
{
    HMODULE module = reinterpret_cast<HMODULE>(0x5000);
    SetLastError(9);
    MODChain_add("bare.so", module);
    EXPECT_EQ(GetLastError(), 0u);
    SetLastError(9);
    EXPECT_EQ(MODChain_findByName("bare.dll"), MODChain_findByMod(module));
    EXPECT_EQ(GetModuleHandle("/any/where/bare"), module);
    EXPECT_EQ(LoadLibrary("/any/where/bare"), module);
    SetLastError(9);
    EXPECT_EQ(MODChain_remove(module), FALSE);
    EXPECT_EQ(MODChain_remove(module), TRUE);
    EXPECT_EQ(MODChain_remove(module), FALSE);
    EXPECT_EQ(GetLastError(), 9u);
}

TEST_F(Modules, ServeResources)
{
    HMODULE full = Load("full");
    TakeLog();
    EXPECT_EQ(FindResource(full, "unknown", reinterpret_cast<void *>(10)), nullptr);
    EXPECT_EQ(TakeLog(), "9\n0\n") << "attached once, before the first call";
    ResourceRecord *record = FindResource(full, "note", reinterpret_cast<void *>(10));
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(GetLastError(), 0u);
    EXPECT_EQ(SizeofResource(nullptr, record), 9u);
    EXPECT_EQ(LoadResource(full, nullptr), nullptr);
    EXPECT_EQ(LoadResource(nullptr, record), nullptr);
    EXPECT_EQ(LoadResource(full, record), record);
    EXPECT_EQ(LoadResource(full, record), record);
    EXPECT_STREQ(static_cast<char *>(LockResource(record)), "template");
    EXPECT_EQ(UnlockResource(record), 1);
    EXPECT_EQ(FreeResource(record), TRUE);
    EXPECT_EQ(TakeLog(), "0\n5\n1\n1\n3\n4\n2\n");

    char text[16] = "untouched";
    EXPECT_EQ(LoadString(full, 4000000000u, text, 7), 15);
    EXPECT_STREQ(text, "text 4");
    EXPECT_EQ(LockResource(nullptr), nullptr);
    EXPECT_EQ(UnlockResource(nullptr), 0);
    EXPECT_EQ(FreeResource(nullptr), FALSE);
    EXPECT_EQ(SizeofResource(full, nullptr), 0u);
    TakeLog();
    FreeLibrary(full);
    EXPECT_EQ(TakeLog(), "10\nDllMain 0 0 in chain\n");
}

TEST_F(Modules, ReachTheHostsFunctionUnattached)
{
    char text[16];
    EXPECT_EQ(LoadString(WEXELXI_HOST_MODULE, 3, text, sizeof text), 4);
    ResourceRecord *record = FindResource(WEXELXI_HOST_MODULE, reinterpret_cast<void *>(8), "t");
    EXPECT_EQ(FreeResource(record), TRUE) << "also when it was never loaded";
    EXPECT_EQ(gHostLog, "6:3 0:8 2:0 ");
    MODChainEntry *host = MODChain_findByMod(WEXELXI_HOST_MODULE);
    SetLastError(9);
    EXPECT_EQ(MODChain_getResFunc(host), &HostResources);
    EXPECT_EQ(GetLastError(), 9u);
}

TEST(Resources, AreNoneWithoutAFunction)
{
    StartedLibrary library;
    for (HMODULE module : {LoadLibrary(PLUGIN_FOLDER "/bare"), WEXELXI_HOST_MODULE, HMODULE{}}) {
        char text[16] = "untouched";
        SetLastError(9);
        EXPECT_EQ(FindResource(module, "note", "type"), nullptr);
        EXPECT_EQ(GetLastError(), 0u);
        EXPECT_EQ(LoadString(module, 1, text, 16), 0);
        EXPECT_STREQ(text, "untouched");
    }
}

} // namespace
