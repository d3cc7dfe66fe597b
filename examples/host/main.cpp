// A small headless application: it reads a delivery note's job, writes the note as text and as a
// page, sends it to a port, and keeps its counter. Each file beside this one shows one subject.
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "host.h"
#include "job.h"
#include "job_folder.h"
#include "language.h"
#include "note.h"
#include "output.h"
#include "page.h"
#include "paper.h"
#include "port.h"
#include "system.h"
#include "workers.h"

namespace {

struct Arguments {
    std::string job;    // a win.ini-style file; its counter is written back
    std::string out;    // folder for what the host writes
    std::string config; // configuration folder; empty: WEXELXIDIR, or the host's own
    std::string printer;
};

Arguments ParseArguments(int argc, char **argv)
{
    Arguments arguments;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string name = argv[i];
        std::string *target = name == "--job"       ? &arguments.job
                              : name == "--out"     ? &arguments.out
                              : name == "--config"  ? &arguments.config
                              : name == "--printer" ? &arguments.printer
                                                    : nullptr;
        if (!target)
            throw std::runtime_error("unknown argument " + name);
        *target = argv[i + 1];
    }
    if (arguments.job.empty() || arguments.out.empty())
        throw std::runtime_error(
            "usage: example_host --job FILE --out FOLDER [--config FOLDER] [--printer NAME]");
    return arguments;
}

// Starts the library for the life of this object.
class Library {
public:
    Library(const char *hostPath, const std::string &config)
    {
        if (!config.empty())
            SetEnvironmentVariable("WEXELXIDIR", config.c_str());
        const int32_t status = InitLib(hostPath, nullptr, 0);
        if (status != 0)
            throw std::runtime_error("InitLib gave " + std::to_string(status));
    }
    ~Library() { FreeLib(); }
    Library(const Library &) = delete;
    Library &operator=(const Library &) = delete;
};

// This program's full path. The first argument would not do: it is a bare name when the program was
// found through PATH, and the library takes the path's folder for the configuration.
std::string OwnPath()
{
    return std::filesystem::read_symlink("/proc/self/exe");
}

void ShowStart()
{
    char folder[4096];
    GetWexelXiFolder(folder);
    Say("configuration", folder);
    Say("machine", DescribeMachine());
}

Printer ShowPrinter(const Arguments &arguments, const Job &job)
{
    const Printer printer =
        ChoosePaper(arguments.printer, job.paper, arguments.out + "/settings.devmode");
    Say("printer", printer.name + ", " + std::to_string(printer.papers.size()) + " papers, " +
                       std::to_string(printer.bins.size()) + " bins");
    Say("paper", printer.chosen.name + ", " + std::to_string(printer.chosen.size.width / 10) +
                     " x " + std::to_string(printer.chosen.size.length / 10) + " mm");
    return printer;
}

// Every copy is written by a worker of its own; two may write at a time.
void WriteCopies(const Job &job, const std::string &folder, const std::string &text)
{
    RunOnWorkers(job.copies, 2, [&](int number) {
        WriteFileWhole(folder + "/note-copy-" + std::to_string(number + 1) + ".txt", text);
    });
    for (const FolderEntry &entry : ListFolder(folder, "note*"))
        Say("wrote", entry.name + ", " + std::to_string(entry.bytes) + " bytes, " + entry.changed);
}

void Run(const Arguments &arguments)
{
    ShowStart();
    const Job job = LoadJob(arguments.job);
    Say("job", job.name + ", " + std::to_string(job.items.size()) + " items");
    const Language language = ChooseLanguage();
    Say("language", language.name);

    const Report report(language.german);
    const NoteWords words{DateAndTime(language), language.decimalSeparator};
    const std::string note = ComposeNote(job, report, words);

    // Files are in the code page of a Windows application; here they go there and back.
    const std::string file = arguments.out + "/note.txt";
    WriteFileWhole(file, ToWindows1252(note));
    const std::string readBack = ToUtf8(ReadFileWhole(file));
    Say("note", "");
    printf("\n%s\n", readBack.c_str());
    Say("archived", ArchiveNote(arguments.out, file));

    const Printer printer = ShowPrinter(arguments, job);
    WriteFileWhole(arguments.out + "/note.svg", LayOutPage(job, report, words, printer.chosen));
    WriteCopies(job, arguments.out, ToWindows1252(note));

    if (!job.port.empty()) {
        SendToPort(job.port, ToWindows1252(note));
        Say("port", job.port + " took the note");
    }
    Say("longest line", RunCommand("wc -L < '" + file + "'") + " characters");
    LogEvent("delivery note " + std::to_string(job.number) + " written");
    SaveNextNumber(job);
    Say("counter", "the next note is " + std::to_string(job.number + 1));
}

} // namespace

void Say(const std::string &topic, const std::string &text)
{
    printf("%-14s %s\n", topic.c_str(), text.c_str());
}

int main(int argc, char **argv)
{
    try {
        const Arguments arguments = ParseArguments(argc, argv);
        const Library library(OwnPath().c_str(), arguments.config);
        Run(arguments);
        return EXIT_SUCCESS;
    } catch (const std::exception &error) {
        fprintf(stderr, "example_host: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
