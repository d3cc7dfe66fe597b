// The printer, its papers, and the settings record that is kept beside the job.
#pragma once

#include <string>
#include <vector>

#include "wexelxi.h"

struct Paper {
    std::string name;
    DCPAPERSIZE size;       // tenths of a millimetre
    DCPAPERMARGINS margins; // tenths of a millimetre
};

struct Printer {
    std::string name;
    std::vector<Paper> papers;
    std::vector<std::string> bins;
    int code; // of the paper that was chosen
    Paper chosen;
};

// The printer of that name, or the default one for an empty name, with the named paper chosen.
// Settings that an earlier run left in `settingsFile` are taken up, as far as this printer can do
// them, and the settings in force are stored there.
Printer ChoosePaper(const std::string &printer, const std::string &paper,
                    const std::string &settingsFile);
