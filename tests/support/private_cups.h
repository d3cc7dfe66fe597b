// A print scheduler of the test's own: its configuration, socket, queues and saved options stand in
// a scratch folder, and this process and its children ask it instead of the machine's.
#pragma once

#include <cstdio>
#include <string>

#include "support/scratch.h"

class PrivateCups {
public:
    // Starts the scheduler and points the environment at it. Make it before anything asks CUPS.
    PrivateCups();
    ~PrivateCups() { Stop(); }

    bool running() const { return FileExists(folder.file("ready")); }
    std::string whyNot() const { return "no scheduler: " + ReadWholeFile(folder.file("why-not")); }

    // Runs a command of CUPS's; false if it fails.
    bool Run(const std::string &command) const;
    bool AddPrinter(const std::string &name, const std::string &ppd = "") const;

    // Puts other bytes where the scheduler keeps a queue's PPD, which it would not take itself.
    void ReplacePPD(const std::string &name, const std::string &bytes) const;

    // Goes away, as a scheduler does.
    void Stop();

    // What fetched PPDs have left in the folder for temporary files.
    size_t TemporaryFiles() const;

    const ScratchFolder folder;

private:
    FILE *scheduler_; // it runs until this pipe ends
};

// Skips the test where no scheduler can be started.
#define SKIP_WITHOUT_CUPS(cups) \
    if (!(cups).running())      \
    GTEST_SKIP() << (cups).whyNot()
