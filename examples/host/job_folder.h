// The folder of jobs: what is in it, and where finished notes go.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct FolderEntry {
    std::string name;
    uint64_t bytes;
    std::string changed; // local time
};

// The files of a folder that match a pattern such as "*.ini".
std::vector<FolderEntry> ListFolder(const std::string &folder, const std::string &pattern);

// Keeps a finished note: copies it to archive/NAME under the folder, making that as needed.
std::string ArchiveNote(const std::string &folder, const std::string &note);
