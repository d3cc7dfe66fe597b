// Any bytes in front of a first start's configuration file, read by everybody who reads it: no
// answer passes its room, each is a whole text, and a key that is written is kept with all that
// stood around it.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <unistd.h>

#include "wexelxi.h"

namespace {

std::string gFolder;
std::string gFirstStart; // what it writes, so that few inputs make every key be written anew

void Check(bool holds)
{
    if (!holds)
        abort();
}

void RemoveFolder()
{
    unlink((gFolder + "/wexelxi.ini").c_str());
    rmdir(gFolder.c_str());
}

void UseFolderOfOurOwn()
{
    char name[] = "/tmp/wexelxi-fuzz-XXXXXX";
    Check(mkdtemp(name) != nullptr);
    gFolder = name;
    SetWexelXiFolder(name);
    atexit(RemoveFolder);
    gLoadPref();
    gFreePref();
    std::ifstream file(gFolder + "/wexelxi.ini", std::ios::binary);
    gFirstStart.assign(std::istreambuf_iterator<char>(file), {});
    Check(!gFirstStart.empty());
}

void PutConfiguration(const char *data, size_t size)
{
    std::ofstream file(gFolder + "/wexelxi.ini", std::ios::binary);
    file << std::string_view(data, size) << "\r\n" << gFirstStart;
}

void ReadKeys()
{
    for (const char *section : {"Setup", "Ports", "Localize", "German"}) {
        char text[300];
        for (const uint32_t size : {1u, 2u, 9u, 300u}) {
            const uint32_t length = GetProfileString(section, "COM1", "default", text, size);
            Check(length < size && strlen(text) == length);
            Check(GetProfileSection(section, text, size) <= size);
        }
    }
}

void ReadPorts()
{
    for (const char *name : {"COM1", "LPT2:", "COM12.x"}) {
        for (const int32_t size : {1, 5, 64}) {
            char port[10], device[64];
            strcpy(port, name);
            Check(GetPortName(port, device, size) <= PST_MODEM);
            Check(strnlen(device, static_cast<size_t>(size)) < static_cast<size_t>(size));
        }
    }
}

void ReadSettings()
{
    for (uint32_t i = 0; i < 135; i++)
        Check(GetWinString(i) && strlen(GetWinString(i)) <= strlen(GetWinStringUtf8(i)));
    for (uint32_t i = 0; i < 63; i++)
        Check((GetSysColor(i) & 0xFF000000) == 0);
    char text[80];
    const SYSTEMTIME time = {2024, 2, 4, 29, 1, 2, 3, 4};
    SetLocale(nullptr);
    Check(GetLocaleInfo(LOCALE_USER_DEFAULT, 31, text, sizeof text) <= 80);
    GetDateFormat(LOCALE_USER_DEFAULT, DATE_LONGDATE, &time, nullptr, text, sizeof text);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (gFolder.empty())
        UseFolderOfOurOwn();
    PutConfiguration(reinterpret_cast<const char *>(data), size);
    TermIni();
    ReadKeys();
    ReadPorts();
    gLoadPref();
    ReadSettings();
    gFreePref();
    return 0;
}
