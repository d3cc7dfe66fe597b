#include "support/private_cups.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>

namespace fs = std::filesystem;

PrivateCups::PrivateCups()
{
    for (const char *name : {"client", "home", "tmp"})
        fs::create_directory(folder.file(name));
    setenv("CUPS_SERVER", folder.file("socket").c_str(), 1);
    setenv("CUPS_SERVERROOT", folder.file("client").c_str(), 1);
    setenv("HOME", folder.file("home").c_str(), 1);
    setenv("TMPDIR", folder.file("tmp").c_str(), 1);
    for (const char *name : {"CUPS_USER", "CUPS_ENCRYPTION", "PRINTER", "LPDEST"})
        unsetenv(name);
    const std::string script =
        ". \"" TEST_SCRIPTS "/private-cups.sh\"; start_private_cups \"$PWD\" 2>why-not && "
        "touch ready && cat; stop_private_cups; touch ended";
    scheduler_ =
        popen(("cd '" + folder.path() + "' && bash -c '" + script + "' >/dev/null").c_str(), "we");
    while (!FileExists(folder.file("ready")) && !FileExists(folder.file("ended")))
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
}

bool PrivateCups::Run(const std::string &command) const
{
    return system(("PATH=$PATH:/usr/sbin " + command + " >/dev/null 2>&1").c_str()) == 0;
}

bool PrivateCups::AddPrinter(const std::string &name, const std::string &ppd) const
{
    const std::string description = ppd.empty() ? "" : " -P '" + ppd + "'";
    return Run("lpadmin -p " + name + " -E -v file:///dev/null" + description);
}

void PrivateCups::ReplacePPD(const std::string &name, const std::string &bytes) const
{
    WriteWholeFile(folder.file("ppd/" + name + ".ppd"), bytes);
}

void PrivateCups::Stop()
{
    if (scheduler_)
        pclose(scheduler_);
    scheduler_ = nullptr;
}

size_t PrivateCups::TemporaryFiles() const
{
    const fs::directory_iterator files(folder.file("tmp"));
    return static_cast<size_t>(std::distance(begin(files), end(files)));
}
