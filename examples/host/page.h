// The note as a page: measured with the library's fonts in tenths of a millimetre, written as SVG.
#pragma once

#include <string>

#include "job.h"
#include "note.h"
#include "paper.h"

// Lays the note out inside the paper's margins and gives the page as an SVG document.
std::string LayOutPage(const Job &job, const Report &report, const NoteWords &words,
                       const Paper &paper);
