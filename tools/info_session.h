// The library, started as for a host, without a trace in the host's folder.
#pragma once

#include <string>

#include "tools/info_options.h"
#include "tools/info_value.h"

namespace info {

// Where a host would find its configuration.
struct Place {
    std::string host;       // full path of the host program
    std::string folder;     // the configuration folder
    std::string folderFrom; // what decided about it
    std::string file;       // the configuration file
    bool isHosts = true;    // whether it is a host's, and not where this command stands
};

Place FindPlace(const Options &options);

// What a variable of the environment holds.
Value VariableOrNothing(const char *name);

// A folder that goes away with all that is in it.
class PrivateFolder {
public:
    PrivateFolder();
    ~PrivateFolder();
    PrivateFolder(const PrivateFolder &) = delete;
    PrivateFolder &operator=(const PrivateFolder &) = delete;

    const std::string &path() const { return path_; } // empty if it could not be made

private:
    std::string path_;
};

// Starts the library on a private copy of the configuration file, which is gone when the
// constructor ends. Then the library looks at the real folder, and nothing here writes; of a large
// file it looks at the first part, in a copy.
class Session {
public:
    explicit Session(const Place &place);
    ~Session();
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    const Place &place() const { return place_; }
    const std::string &failure() const { return failure_; } // empty if the library runs
    bool isCut() const { return isCut_; }

private:
    Place place_;
    PrivateFolder cut_; // what the library looks at in place of a large file
    std::string failure_;
    bool isCut_ = false;
};

} // namespace info
