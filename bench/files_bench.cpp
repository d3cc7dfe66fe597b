// Files and searches, each beside what it must not cost much more than: one question to the
// platform, a bare listing, and cp.
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "support/library.h"
#include "wexelxi.h"

namespace {

// A folder of the given number of entries, and the name of its last one.
struct FullFolder {
    explicit FullFolder(int64_t entries)
    {
        for (int64_t i = 0; i < entries; i++)
            close(open(name(i).c_str(), O_CREAT | O_WRONLY, 0666));
        last = name(entries - 1);
    }
    std::string name(int64_t i) const { return folder.file("entry" + std::to_string(i) + ".dat"); }
    ScratchFolder folder;
    std::string last;
};

// Made once for all benchmarks: 50,000 files take their time.
const FullFolder &FolderOf(int64_t entries)
{
    static const FullFolder small(10);
    static const FullFolder middle(5000);
    static const FullFolder large(50000);
    return entries == 10 ? small : entries == 5000 ? middle : large;
}

void Access(benchmark::State &state)
{
    const FullFolder &full = FolderOf(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(access(full.last.c_str(), F_OK));
}
BENCHMARK(Access)->Arg(10)->Arg(50000);

void ExistenceOfTheLastName(benchmark::State &state)
{
    StartedLibrary library;
    const FullFolder &full = FolderOf(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(DoesFileExist(full.last.c_str()));
}
BENCHMARK(ExistenceOfTheLastName)->Arg(10)->Arg(50000);

void SearchForTheLastName(benchmark::State &state)
{
    StartedLibrary library;
    const FullFolder &full = FolderOf(state.range(0));
    WIN32_FIND_DATA data;
    for (auto _ : state)
        FindClose(FindFirstFile(full.last.c_str(), &data));
}
BENCHMARK(SearchForTheLastName)->Arg(10)->Arg(50000);

void TempFileName(benchmark::State &state)
{
    StartedLibrary library;
    const FullFolder &full = FolderOf(state.range(0));
    char name[4096];
    for (auto _ : state)
        benchmark::DoNotOptimize(GetTempFileName(full.folder.path().c_str(), "t", 0, name));
}
BENCHMARK(TempFileName)->Arg(10)->Arg(50000);

void CreateNewOfATakenName(benchmark::State &state)
{
    StartedLibrary library;
    const FullFolder &full = FolderOf(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(
            CreateFile(full.last.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
}
BENCHMARK(CreateNewOfATakenName)->Arg(10)->Arg(50000);

void ListByReaddirAndFstatat(benchmark::State &state)
{
    const FullFolder &full = FolderOf(state.range(0));
    struct stat status;
    for (auto _ : state) {
        DIR *directory = opendir(full.folder.path().c_str());
        while (const dirent *entry = readdir(directory))
            benchmark::DoNotOptimize(fstatat(dirfd(directory), entry->d_name, &status, 0));
        closedir(directory);
    }
}
BENCHMARK(ListByReaddirAndFstatat)->Arg(5000);

void ListBySearch(benchmark::State &state)
{
    StartedLibrary library;
    const FullFolder &full = FolderOf(state.range(0));
    const std::string pattern = full.folder.file("*.dat");
    WIN32_FIND_DATA data;
    for (auto _ : state) {
        HANDLE find = FindFirstFile(pattern.c_str(), &data);
        while (FindNextFile(find, &data)) {
        }
        FindClose(find);
    }
}
BENCHMARK(ListBySearch)->Arg(5000);

// 256 MiB in the page cache, copied onto an existing file.
struct BigFile {
    BigFile()
    {
        WriteWholeFile(source, std::string(256u << 20, 'x'));
        WriteWholeFile(target, "");
    }
    ScratchFolder folder;
    std::string source = folder.file("source"), target = folder.file("target");
};

void CopyByCp(benchmark::State &state)
{
    const BigFile big;
    const std::string command = "cp " + big.source + " " + big.target;
    for (auto _ : state)
        benchmark::DoNotOptimize(system(command.c_str()));
}
BENCHMARK(CopyByCp)->UseRealTime()->Unit(benchmark::kMillisecond)->Iterations(5);

void CopyByCopyFile(benchmark::State &state)
{
    StartedLibrary library;
    const BigFile big;
    for (auto _ : state)
        benchmark::DoNotOptimize(CopyFile(big.source.c_str(), big.target.c_str(), FALSE));
}
BENCHMARK(CopyByCopyFile)->UseRealTime()->Unit(benchmark::kMillisecond)->Iterations(5);

} // namespace
