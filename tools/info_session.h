// The library, started as for a host, without a trace in the host's folder.
#pragma once

#include <string>

#include "tools/info_options.h"

namespace info {

// Where a host would find its configuration.
struct Place {
    std::string host;       // full path of the host program
    std::string folder;     // the configuration folder
    std::string folderFrom; // what decided about it
    std::string file;       // the configuration file
};

Place FindPlace(const Options &options);

// Starts the library on a private copy of the configuration file, which is gone when the
// constructor ends. From then on the library looks at the real folder, and nothing here writes.
class Session {
public:
    explicit Session(const Place &place);
    ~Session();
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    const Place &place() const { return place_; }
    const std::string &failure() const { return failure_; } // empty if the library runs

private:
    Place place_;
    std::string failure_;
};

} // namespace info
