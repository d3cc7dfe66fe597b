// The library, started as for a host, without a trace in the host's folder.
#include "tools/info_session.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "wexelxi.h"

namespace fs = std::filesystem;

namespace info {

namespace {

// The longest folder that the library takes.
constexpr size_t kMaxFolder = 4083;

// A folder that goes away with all that is in it.
class PrivateFolder {
public:
    PrivateFolder()
    {
        std::error_code error;
        path_ = (fs::temp_directory_path(error) / "wexelxi-info-XXXXXX").string();
        if (error || !mkdtemp(path_.data()))
            path_.clear();
    }
    ~PrivateFolder()
    {
        std::error_code ignored;
        if (!path_.empty())
            fs::remove_all(path_, ignored);
    }
    PrivateFolder(const PrivateFolder &) = delete;
    PrivateFolder &operator=(const PrivateFolder &) = delete;

    const std::string &path() const { return path_; }

private:
    std::string path_;
};

std::string OwnProgram()
{
    std::error_code ignored;
    return fs::read_symlink("/proc/self/exe", ignored).string();
}

std::string StartIn(const std::string &folder, const Place &place)
{
    std::error_code error;
    fs::copy_file(place.file, folder + "/wexelxi.ini", error); // no file: a first run
    setenv("WEXELXIDIR", folder.c_str(), 1);
    const int32_t status = InitLib(place.host.c_str(), nullptr, 0);
    if (status != 0)
        return "InitLib gives " + std::to_string(status) +
               (status == 3 ? ": fontconfig cannot start" : "");
    SetWexelXiFolder(place.folder.c_str());
    return "";
}

} // namespace

Place FindPlace(const Options &options)
{
    Place place;
    std::error_code ignored;
    place.host = options.host.empty() ? OwnProgram() : fs::absolute(options.host, ignored).string();
    const char *variable = getenv("WEXELXIDIR");
    if (!options.folder.empty()) {
        place.folder = options.folder;
        place.folderFrom = "the option --folder";
    } else if (variable && *variable && strlen(variable) <= kMaxFolder) {
        place.folder = variable;
        place.folderFrom = "the variable WEXELXIDIR";
    } else {
        place.folder = place.host.substr(0, place.host.rfind('/'));
        place.folderFrom = options.host.empty() ? "this command's folder; a host takes its own"
                                                : "the host program's folder";
    }
    place.file = place.folder + "/wexelxi.ini";
    return place;
}

Session::Session(const Place &place) : place_(place)
{
    const PrivateFolder folder;
    if (folder.path().empty())
        failure_ = "no temporary folder for a private copy of the configuration file";
    else if (place.folder.size() > kMaxFolder)
        failure_ = "the configuration folder's path is too long";
    else
        failure_ = StartIn(folder.path(), place);
}

Session::~Session()
{
    if (gReady)
        FreeLib();
}

} // namespace info
