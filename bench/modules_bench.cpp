// Modules, strings, threads and commands.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <glib.h>
#include <semaphore.h>
#include <string>
#include <thread>
#include <vector>

#include "host.h"
#include "rows.h"

namespace {

intptr_t Strings(uint32_t opcode, intptr_t, intptr_t destination, intptr_t)
{
    if (opcode != WXRES_LOADSTRING)
        return 0;
    memcpy(reinterpret_cast<char *>(destination), "a string", 9);
    return 8;
}

std::string CopyOf(const ScratchFolder &folder, int i)
{
    const std::string path = folder.file("module" + std::to_string(i) + ".so");
    std::filesystem::copy_file(BENCH_PLUGIN, path);
    return path;
}

Work LoadAndFree(const std::string &path)
{
    return Ours([path] { FreeLibrary(LoadLibrary(path.c_str())); });
}

void ModuleRows(const ScratchFolder &folder)
{
    std::vector<std::string> paths;
    for (int i = 0; i < 20; i++) {
        paths.push_back(CopyOf(folder, i));
        LoadLibrary(paths[static_cast<size_t>(i)].c_str());
    }
    for (const size_t which : {size_t{0}, size_t{19}}) {
        const std::string path = paths[which];
        Row(std::string("LoadLibrary + FreeLibrary of a loaded module, ") +
                (which == 0 ? "the 1st of 20" : "the 20th of 20"),
            "lock, dlopen and dlclose", LoadAndFree(path),
            Do("dlopen and dlclose", [path] { dlclose(dlopen(path.c_str(), RTLD_LAZY)); }));
    }
    char text[32];
    Row("LoadString from the host", "lock, the host's function",
        Ours([&] { Keep(LoadString(WEXELXI_HOST_MODULE, 7, text, sizeof text)); }),
        Do("the function alone",
           [&] { Keep(Strings(WXRES_LOADSTRING, 7, reinterpret_cast<intptr_t>(text), 32)); }));
    for (const std::string &path : paths)
        FreeLibrary(GetModuleHandle(path.c_str()));
}

void ModuleGrowth(const ScratchFolder &folder)
{
    std::string path = CopyOf(folder, 100); // the one that was loaded last
    HMODULE module = LoadLibrary(path.c_str());
    GrowthOf questions[] = {
        {"LoadLibrary + FreeLibrary of a loaded module", "1 module",
         Ours([&] { FreeLibrary(LoadLibrary(path.c_str())); })},
        {"GetModuleHandle", "1 module", Ours([&] { Keep(GetModuleHandle(path.c_str())); })},
        {"LoadString from a module", "1 module", Ours([&] {
             char text[32];
             Keep(LoadString(module, 7, text, sizeof text));
         })}};
    const double before = ResidentBytes();
    for (int i = 101; i < 300; i++) {
        path = CopyOf(folder, i);
        module = LoadLibrary(path.c_str());
    }
    Memory("a module, with what dlopen takes", (ResidentBytes() - before) / 199);
    for (GrowthOf &question : questions)
        question.Then("200 modules");
}

void *Idle(void *semaphore)
{
    WaitForSingleObject(semaphore, 0xFFFFFFFF);
    return nullptr;
}

void ThreadRows()
{
    const auto nothing = [](void *) -> void * { return nullptr; };
    Row("CreateThread, wait, CloseHandle", "a thread of the platform", Ours([=] {
            UINT_PTR id = 0;
            HANDLE thread = CreateThread(nullptr, 0, nothing, nullptr, CREATE_JOINABLE, &id);
            WaitForSingleObject(thread, 0xFFFFFFFF);
            CloseHandle(thread);
        }),
        Do("pthread_create and pthread_join",
           [=] {
               pthread_t thread;
               pthread_create(&thread, nullptr, nothing, nullptr);
               pthread_join(thread, nullptr);
           }),
        {Do("libstdc++ thread", [] { std::thread([] {}).join(); })});
    HANDLE semaphore = CreateSemaphore(nullptr, 0, 0, nullptr);
    sem_t platform;
    sem_init(&platform, 0, 0);
    Row("ReleaseSemaphore + WaitForSingleObject", "lock, the platform's semaphore", Ours([=] {
            ReleaseSemaphore(semaphore, 1, nullptr);
            WaitForSingleObject(semaphore, 0xFFFFFFFF);
        }),
        Do("sem_post and sem_wait", [&] {
            sem_post(&platform);
            sem_wait(&platform);
        }));
    constexpr int kThreads = 100;
    std::vector<HANDLE> threads;
    const double before = ResidentBytes();
    for (int i = 0; i < kThreads; i++) {
        UINT_PTR id = 0;
        threads.push_back(CreateThread(nullptr, 0, Idle, semaphore, CREATE_JOINABLE, &id));
    }
    Sleep(100); // all of them wait
    Memory("a thread that waits", (ResidentBytes() - before) / kThreads);
    for (int i = 0; i < kThreads; i++) // by one, whatever the count says
        ReleaseSemaphore(semaphore, 1, nullptr);
    for (HANDLE thread : threads) {
        WaitForSingleObject(thread, 0xFFFFFFFF);
        CloseHandle(thread);
    }
    CloseHandle(semaphore);
}

void CommandRow()
{
    Row("WinExecEx with capture", "a shell, and its output through a file", Ours([] {
            char *output = nullptr;
            WinExecEx("echo captured", 0, WINEXEC_WAIT | WINEXEC_CAPTURE, &output);
            GlobalFree(output);
        }),
        Do("popen",
           [] {
               char line[64];
               FILE *pipe = popen("echo captured", "r");
               Keep(fgets(line, sizeof line, pipe));
               pclose(pipe);
           }),
        {Do("GLib g_spawn_command_line_sync", [] {
            char *output = nullptr;
            g_spawn_command_line_sync("sh -c 'echo captured'", &output, nullptr, nullptr, nullptr);
            g_free(output);
        })});
}

} // namespace

int main()
{
    const Host host(Strings);
    const ScratchFolder folder;
    CommandRow(); // first: a child of a small process
    ThreadRows();
    ModuleRows(folder);
    ModuleGrowth(folder);
}
