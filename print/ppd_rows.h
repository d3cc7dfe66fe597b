// What a parsed PPD says about papers and bins, as rows. Pure: a PPD in, rows out.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <strings.h>
#include <vector>

#include "print/paper_table.h"
#include "print/ppd.h"
#include "wexelxi/printers.h"

namespace wexelxi {

struct PaperRow {
    char name[CCHPAPERNAME]; // zero behind the text; a text that fills it has no NUL
    uint16_t code;
    DCPAPERSIZE size;
    DCPAPERMARGINS margins;
};

struct BinRow {
    char name[CCHBINNAME]; // as PaperRow's
    uint16_t code;
};

// The papers of the option PageSize that have a size, the default choice first.
std::vector<PaperRow> EnumPapers(ppd_file_t *ppd);

// The bins of the option InputSlot, the default choice first, with codes from 256 up.
std::vector<BinRow> EnumBins(const ppd_file_t *ppd);

// Sorts by name without regard to case; equal names keep their order.
void SortPaperList(std::vector<PaperRow> &papers);

// Points to micrometres, and micrometres to tenths of a millimetre, rounded.
int32_t MicrometresFromPoints(float points);
int32_t TenthsFromMicrometres(int32_t micrometres);

// Code and size of a PPD's page size: those of the table's row, or code 0 and its own size.
struct Paper {
    uint16_t code;
    DCPAPERSIZE size;
};
Paper PaperOf(const ppd_size_t &size);

// Copies a text into a row and zeroes the rest; a text that is too long is cut.
void FillNameRow(std::span<char> row, std::string_view text);

inline bool EqualNames(const char *first, const char *second)
{
    return strcasecmp(first, second) == 0;
}

inline std::span<ppd_choice_t> ChoicesOf(const ppd_option_t &option)
{
    return {option.choices, option.num_choices > 0 ? static_cast<size_t>(option.num_choices) : 0};
}

// The first choice of that name, or null.
ppd_choice_t *FindChoice(const ppd_option_t &option, const char *name);

// Calls visit for each option of each group in order, but for what is or is not installed in the
// printer. Groups inside groups are not looked at.
template <typename Visit>
void ForEachOption(const ppd_file_t *ppd, Visit visit)
{
    for (int g = 0; g < ppd->num_groups; g++) {
        const ppd_group_t &group = ppd->groups[g];
        if (EqualNames(group.name, "InstallableOptions"))
            continue;
        for (int o = 0; o < group.num_options; o++)
            visit(group.options[o]);
    }
}

} // namespace wexelxi
