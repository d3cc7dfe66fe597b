// Profile files as their readers and writers see them: one text is kept in memory. The caller holds
// the lock for all but DropIniCache. A file's name is a path, as ResolveIniName gives it.
#pragma once

#include <optional>
#include <string_view>

#include "profile/ini_index.h"
#include "profile/text_file.h"
#include "wexelxi/types.h"

namespace wexelxi {

// The value of a key. The text comes from the cache if it holds this path, and else from the file,
// into the cache. The view is good until the next call here.
std::optional<std::string_view> ReadIniKey(const char *path, std::string_view section,
                                           std::string_view key);

// Drops the cache and reads the file.
FileText ReadIniText(const char *path);

// Drops the cache and gives a key of the file its value. TRUE unless the file cannot be opened.
BOOL WriteIniKey(const char *path, std::string_view section, std::string_view key,
                 std::string_view value);

void DropIniCache();

// A profile's text in memory, with what lookups have learned about it.
class IniText {
public:
    explicit IniText(FileText file);

    std::string_view Bytes() const { return file_.View(); }
    std::optional<std::string_view> ValueOf(std::string_view section, std::string_view key);

private:
    FileText file_;
    std::string_view parsed_;
    IniIndex index_;
    bool wasAsked_ = false;
};

// A run of reads and writes of one file that reaches the disk once. What stands in the file and in
// the cache at the end is as with a write for each.
class IniDraft {
public:
    explicit IniDraft(const char *path);

    std::optional<std::string_view> Get(std::string_view section, std::string_view key);
    void Set(std::string_view section, std::string_view key, std::string_view value);

    // Writes what was set. False if others have changed the file since it was read: nothing is
    // written then, and the run is to be made once more on what they left. A file that cannot be
    // written is no failure; the last error tells.
    bool Save();

private:
    bool Open();

    const char *path_;
    IniText *text_; // the cache's, or own_
    std::optional<IniText> own_;
    std::optional<FileChange> change_;
    bool isChanged_ = false;
    bool endsInWrite_ = false;
    bool hasFailed_ = false;
};

} // namespace wexelxi
