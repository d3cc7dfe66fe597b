#include "support/private_cups.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>

namespace fs = std::filesystem;

namespace {

std::string Joined(const std::vector<std::string> &words)
{
    std::string line;
    for (const std::string &word : words)
        line += "'" + word + "' ";
    return line;
}

bool Run(const std::vector<std::string> &words)
{
    return system(("PATH=$PATH:/usr/sbin " + Joined(words) + ">/dev/null 2>&1").c_str()) == 0;
}

} // namespace

PrivateCups::PrivateCups()
{
    for (const char *name : {"client", "home", "tmp"})
        fs::create_directory(folder.file(name));
    const std::string command = Joined(
        {"bash", "-c",
         ". \"$0\"; start_private_cups \"$1\" 2>\"$1/why-not\" && touch \"$1/ready\" && cat; "
         "stop_private_cups; touch \"$1/ended\"",
         TEST_SCRIPTS "/private-cups.sh", folder.path()});
    setenv("CUPS_SERVER", folder.file("socket").c_str(), 1);
    setenv("CUPS_SERVERROOT", folder.file("client").c_str(), 1);
    setenv("HOME", folder.file("home").c_str(), 1);
    setenv("TMPDIR", folder.file("tmp").c_str(), 1);
    for (const char *name : {"CUPS_USER", "CUPS_ENCRYPTION", "PRINTER", "LPDEST"})
        unsetenv(name);
    scheduler_ = popen((command + ">/dev/null").c_str(), "we");
    while (!FileExists(folder.file("ready")) && !FileExists(folder.file("ended")))
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
}

bool PrivateCups::AddPrinter(const std::string &name, const std::string &ppd)
{
    std::vector<std::string> command = {"lpadmin", "-p", name, "-E", "-v", "file:///dev/null"};
    if (!ppd.empty())
        command.insert(command.end(), {"-P", ppd});
    return Run(command);
}

bool PrivateCups::SetDefault(const std::string &destination)
{
    return Run({"lpoptions", "-d", destination});
}

bool PrivateCups::SaveOptions(const std::string &destination,
                              const std::vector<std::string> &options)
{
    std::vector<std::string> command = {"lpoptions", "-p", destination};
    for (const std::string &option : options)
        command.insert(command.end(), {"-o", option});
    return Run(command);
}

bool PrivateCups::RemovePrinter(const std::string &name)
{
    return Run({"lpadmin", "-x", name});
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
