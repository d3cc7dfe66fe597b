// Files: questions, positions, copies and searches.
#include <algorithm>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "host.h"
#include "rows.h"

namespace {

namespace fs = std::filesystem;

std::string EntryOf(const ScratchFolder &folder, int i)
{
    return folder.file("entry" + std::to_string(i) + ".dat");
}

void Fill(const ScratchFolder &folder, int entries)
{
    for (int i = 0; i < entries; i++)
        close(open(EntryOf(folder, i).c_str(), O_CREAT | O_WRONLY, 0666));
}

Work Exists(const std::string &name)
{
    return Ours([name] { Keep(DoesFileExist(name.c_str())); });
}

void ExistenceRows(const ScratchFolder &small, const ScratchFolder &large)
{
    const std::string absent = large.file("absent.dat"), present = EntryOf(large, 4999);
    for (const auto &[what, name] : {std::pair("absent", absent), std::pair("present", present)}) {
        Row(std::string("DoesFileExist, ") + what + " in a folder of 5,000",
            "questions to the platform, about the name and its spelling", Exists(name),
            Do("access", [name = name] { Keep(access(name.c_str(), F_OK)); }),
            {Do("libstdc++ exists", [name = name] { Keep(fs::exists(name)); })});
    }
    Growth("DoesFileExist of a present name", "10 files", Exists(EntryOf(small, 9)), "5,000 files",
           Exists(present));
    Row("CreateFile of an absent name", "one open", Ours([&] {
            Keep(CreateFile(absent.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        }),
        Do("open", [&] { Keep(open(absent.c_str(), O_RDONLY)); }),
        {Do("fopen", [&] { Keep(fopen(absent.c_str(), "r")); })});
    Row("CreateFile + CloseHandle", "open, fstat, close, and a stream", Ours([&] {
            CloseHandle(
                CreateFile(present.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        }),
        Do("open and close", [&] { close(open(present.c_str(), O_RDONLY)); }),
        {Do("fopen and fclose", [&] { fclose(fopen(present.c_str(), "r")); })});
}

void SearchRows(const ScratchFolder &large)
{
    const std::string pattern = large.file("*.dat");
    Row("a search through 5,000 files", "readdir and fstatat of each", Ours([&] {
            WIN32_FIND_DATA data;
            HANDLE find = FindFirstFile(pattern.c_str(), &data);
            while (FindNextFile(find, &data)) {
            }
            FindClose(find);
        }),
        Do("readdir and fstatat",
           [&] {
               struct stat status;
               DIR *directory = opendir(large.path().c_str());
               while (const dirent *entry = readdir(directory))
                   Keep(fstatat(dirfd(directory), entry->d_name, &status, 0));
               closedir(directory);
           }),
        {Do("libstdc++ directory_iterator", [&] {
            for (const auto &entry : fs::directory_iterator(large.path()))
                Keep(entry.last_write_time());
        })});
}

void StreamRows(const ScratchFolder &folder)
{
    const std::string name = folder.file("stream");
    WriteWholeFile(name, std::string(1 << 20, 'x'));
    HANDLE file = CreateFile(name.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    FILE *stream = fopen(name.c_str(), "r");
    const int descriptor = open(name.c_str(), O_RDONLY);
    Row("SetFilePointer", "one lseek", Ours([=] { Keep(SetFilePointer(file, 4096, nullptr, 0)); }),
        Do("lseek", [=] { Keep(lseek(descriptor, 4096, SEEK_SET)); }), {Do("fseek and ftell", [=] {
            fseek(stream, 4096, SEEK_SET);
            Keep(ftell(stream));
        })});
    Row("GetFileSize", "one fstat", Ours([=] { Keep(GetFileSize(file, nullptr)); }),
        Do("fstat",
           [=] {
               struct stat status;
               Keep(fstat(descriptor, &status));
           }),
        {Do("fseek to the end and back, ftell", [=] {
            const long before = ftell(stream);
            fseek(stream, 0, SEEK_END);
            Keep(ftell(stream));
            fseek(stream, before, SEEK_SET);
        })});
    char piece[64];
    const auto again = [&piece](auto read) { // from the start again at the end
        return [=, &piece] { read(piece); };
    };
    Row("ReadFile, 64 bytes", "one read and one question where the stream stands",
        Ours(again([=](char *bytes) {
            uint32_t count = 0;
            ReadFile(file, bytes, 64, &count, nullptr);
            if (count == 0)
                SetFilePointer(file, 0, nullptr, 0);
        })),
        Do("read", again([=](char *bytes) {
               if (read(descriptor, bytes, 64) == 0)
                   lseek(descriptor, 0, SEEK_SET);
           })),
        {Do("fread", again([=](char *bytes) {
                if (fread(bytes, 1, 64, stream) == 0)
                    rewind(stream);
            }))});
    fclose(stream);
    close(descriptor);
    CloseHandle(file);
}

// The plainest copy that keeps the mode.
void PlainCopy(const std::string &source, const std::string &target)
{
    static char block[64 * 1024];
    const int from = open(source.c_str(), O_RDONLY);
    const int to = open(target.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
    struct stat status;
    fstat(from, &status);
    for (ssize_t count; (count = read(from, block, sizeof block)) > 0;)
        Keep(write(to, block, static_cast<size_t>(count)));
    fchmod(to, status.st_mode);
    close(from);
    close(to);
}

void CopyRows(const ScratchFolder &folder)
{
    const struct {
        const char *size;
        size_t bytes;
    } rows[] = {{"4 KiB", 4096}, {"64 MiB", 64 << 20}};
    const std::string source = folder.file("source"), target = folder.file("target");
    for (const auto &row : rows) {
        WriteWholeFile(source, std::string(row.bytes, 'x'));
        Row(std::string("CopyFile, ") + row.size, "open, copy, close",
            Ours([&] { CopyFile(source.c_str(), target.c_str(), FALSE); }),
            Do("read and write", [&] { PlainCopy(source, target); }),
            {Do("libstdc++ copy_file",
                [&] { fs::copy_file(source, target, fs::copy_options::overwrite_existing); })});
    }
}

} // namespace

int main()
{
    const Host host;
    const ScratchFolder small, large, work;
    Fill(small, 10);
    Fill(large, 5000);
    ExistenceRows(small, large);
    SearchRows(large);
    StreamRows(work);
    CopyRows(work);
}
