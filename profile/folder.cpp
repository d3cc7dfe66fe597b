// Where the configuration file lies. The path is the only state: it is guarded by the lock, empty
// as long as nobody asked for it, and outlives FreeLib.
#include "profile/folder.h"

#include <cstring>

#include "core/lock.h"
#include "wexelxi/modules.h"
#include "wexelxi/profile.h"
#include "wexelxi/text.h"

using namespace wexelxi;

namespace {

constexpr size_t kPathBytes = 4096;
constexpr std::string_view kFileInFolder = "/wexelxi.ini";

char gIniPath[kPathBytes];

// Takes a folder of any length that fits; any other is refused and the old one stays.
void StoreFolder(std::string_view folder)
{
    AssertLockHeld();
    if (folder.size() + kFileInFolder.size() >= kPathBytes)
        return;
    memmove(gIniPath, folder.data(), folder.size());
    memcpy(gIniPath + folder.size(), kFileInFolder.data(), kFileInFolder.size() + 1);
}

// The host's own folder; the empty one for a host that lies in "/", or has no folder at all.
void DeriveFolder()
{
    char host[kPathBytes];
    GetModuleFileName(WEXELXI_HOST_MODULE, host, sizeof host);
    const char *slash = strrchr(host, '/');
    StoreFolder(slash ? std::string_view(host, static_cast<size_t>(slash - host)) : "");
}

} // namespace

namespace wexelxi {

const char *ResolveIniName(const char *name)
{
    AssertLockHeld();
    if (gIniPath[0] == '\0')
        DeriveFolder();
    const bool isConfiguration = strcmp(name, "win.ini") == 0 || strcmp(name, "wexelxi.ini") == 0;
    return isConfiguration ? gIniPath : name;
}

std::string_view ConfigurationFolder()
{
    std::string_view path = ResolveIniName("win.ini");
    path.remove_suffix(kFileInFolder.size());
    return path;
}

} // namespace wexelxi

void SetWexelXiFolder(const char *folder)
{
    LockScope lock;
    StoreFolder(folder);
}

void GetWexelXiFolder(char *destination)
{
    LockScope lock;
    const std::string_view path = gIniPath;
    const size_t slash = path.rfind('/');
    // A '/' that is the first character cuts nothing.
    destination[path.copy(destination, slash == 0 ? path.size() : slash)] = '\0';
}

void GetIniName(char *destination, const char *name)
{
    LockScope lock;
    lstrcpyn(destination, ResolveIniName(name), kPathBytes);
}
