// The library, started as for a host, without a trace in the host's folder.
#include "tools/info_session.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>

#include "wexelxi.h"

namespace fs = std::filesystem;

namespace info {

namespace {

// The longest folder that the library takes.
constexpr size_t kMaxFolder = 4083;

// A start looks for some two hundred keys, and each look reads the file up to its key.
constexpr std::streamsize kMaxBytes = 1 << 20;

std::string OwnProgram()
{
    std::error_code ignored;
    return fs::read_symlink("/proc/self/exe", ignored).string();
}

std::string StartIn(const std::string &folder, const Place &place)
{
    setenv("WEXELXIDIR", folder.c_str(), 1);
    const int32_t status = InitLib(place.host.c_str(), nullptr, 0);
    if (status != 0)
        return "InitLib gives " + std::to_string(status) +
               (status == 3 ? ": fontconfig cannot start" : "");
    return "";
}

// Copies the file, and of a large one its first part. No file: a first run.
void CopyFirst(const std::string &from, const std::string &to)
{
    std::ifstream in(from, std::ios::binary);
    std::string bytes(kMaxBytes, '\0');
    in.read(bytes.data(), kMaxBytes);
    if (in.gcount() > 0)
        std::ofstream(to, std::ios::binary).write(bytes.data(), in.gcount());
}

} // namespace

Value VariableOrNothing(const char *name)
{
    const char *value = getenv(name);
    return value ? Value(value) : Value();
}

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
        place.isHosts = !options.host.empty();
        place.folderFrom = options.host.empty() ? "this command's folder; a host takes its own"
                                                : "the host program's folder";
    }
    place.file = place.folder + "/wexelxi.ini";
    return place;
}

PrivateFolder::PrivateFolder()
{
    std::error_code error;
    path_ = (fs::temp_directory_path(error) / "wexelxi-info-XXXXXX").string();
    if (error || !mkdtemp(path_.data()))
        path_.clear();
}

PrivateFolder::~PrivateFolder()
{
    std::error_code ignored;
    if (!path_.empty())
        fs::remove_all(path_, ignored);
}

Session::Session(const Place &place) : place_(place)
{
    const PrivateFolder start;
    if (start.path().empty() || cut_.path().empty()) {
        failure_ = "no temporary folder for a private copy of the configuration file";
    } else if (place.folder.size() > kMaxFolder) {
        failure_ = "the configuration folder's path is too long";
    } else {
        CopyFirst(place.file, start.path() + "/wexelxi.ini");
        struct stat state = {};
        isCut_ = stat(place.file.c_str(), &state) == 0 && state.st_size > kMaxBytes;
        if (isCut_)
            CopyFirst(place.file, cut_.path() + "/wexelxi.ini");
        failure_ = StartIn(start.path(), place);
        SetWexelXiFolder((isCut_ ? cut_.path() : place.folder).c_str());
    }
}

Session::~Session()
{
    if (gReady)
        FreeLib();
}

} // namespace info
