// Where the commands of the library keep their files.
#include "modules/settings_folder.h"

#include "wexelxi/profile.h"

std::string wexelxi::SettingsFolder()
{
    char path[4096];
    GetIniName(path, "win.ini");
    const std::string whole = path;
    return whole.substr(0, whole.rfind('/'));
}
