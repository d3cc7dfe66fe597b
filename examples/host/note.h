// The text of a note: the plug-in's template, filled with the job.
#pragma once

#include <string>

#include "job.h"
#include "report.h"

struct NoteWords {
    std::string date; // already in the note's language
    std::string decimalSeparator;
};

// The note in UTF-8, with plain line feeds.
std::string ComposeNote(const Job &job, const Report &report, const NoteWords &words);
