#include "job_folder.h"

#include <cstdio>

#include "host.h"

static std::string LocalTimeText(const FILETIME &instant)
{
    FILETIME local;
    SYSTEMTIME time;
    FileTimeToLocalFileTime(&instant, &local);
    FileTimeToSystemTime(&local, &time);
    char text[48];
    snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d", time.wYear, time.wMonth, time.wDay,
             time.wHour, time.wMinute);
    return text;
}

std::vector<FolderEntry> ListFolder(const std::string &folder, const std::string &pattern)
{
    std::vector<FolderEntry> entries;
    WIN32_FIND_DATA data;
    HANDLE search = FindFirstFile((folder + "/" + pattern).c_str(), &data);
    if (search == INVALID_HANDLE_VALUE)
        return entries; // nothing matches
    do {
        FILETIME changed;
        CopyMemory(&changed, &data.ftLastWriteTime, sizeof changed); // no alignment in the record
        const uint64_t bytes = uint64_t{data.nFileSizeHigh} << 32 | data.nFileSizeLow;
        entries.push_back({data.cFileName, bytes, LocalTimeText(changed)});
    } while (FindNextFile(search, &data));
    FindClose(search);
    return entries;
}

std::string ArchiveNote(const std::string &folder, const std::string &note)
{
    const std::string archive = folder + "/archive";
    if (!PathIsDirectory(archive.c_str()))
        Check(CreateDirectory(archive.c_str(), nullptr), "CreateDirectory");

    // A copy under a temporary name first, so that nobody sees half a note under the real one.
    char name[4096];
    GetTempFileName(archive.c_str(), "note", 0, name);
    Check(CopyFile(note.c_str(), name, TRUE), "CopyFile");
    const std::string target = archive + note.substr(note.rfind('/'));
    Check(MoveFile(name, target.c_str()), "MoveFile");
    return target;
}
