// Papers and bins out of a parsed PPD.
#include "print/ppd_rows.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace wexelxi {

namespace {

// Calls visit for the choices of each option of that keyword, those that are its default first.
template <typename Visit>
void ForEachChoice(const ppd_file_t *ppd, const char *keyword, Visit visit)
{
    ForEachOption(ppd, [&](const ppd_option_t &option) {
        if (!EqualNames(option.keyword, keyword))
            return;
        for (const bool visitDefault : {true, false}) {
            for (const ppd_choice_t &choice : ChoicesOf(option)) {
                if (EqualNames(choice.choice, option.defchoice) == visitDefault)
                    visit(choice);
            }
        }
    });
}

int32_t TenthsFromPoints(float points)
{
    return TenthsFromMicrometres(MicrometresFromPoints(points));
}

// The differences are formed in single precision, on the points.
DCPAPERMARGINS MarginsOf(const ppd_size_t &size)
{
    const float top = size.length - size.top;
    const float right = size.width - size.right;
    return {TenthsFromPoints(size.left), TenthsFromPoints(top), TenthsFromPoints(right),
            TenthsFromPoints(size.bottom)};
}

PaperRow RowOf(const ppd_choice_t &choice, const ppd_size_t &size)
{
    const Paper paper = PaperOf(size);
    PaperRow row;
    FillNameRow(row.name, choice.text);
    row.code = paper.code;
    row.size = paper.size;
    row.margins = MarginsOf(size);
    return row;
}

} // namespace

std::vector<PaperRow> EnumPapers(ppd_file_t *ppd)
{
    std::vector<PaperRow> papers;
    ForEachChoice(ppd, "PageSize", [&](const ppd_choice_t &choice) {
        const ppd_size_t *size = ppdPageSize(ppd, choice.choice);
        if (size && size->width != 0 && size->length != 0)
            papers.push_back(RowOf(choice, *size));
    });
    return papers;
}

std::vector<BinRow> EnumBins(const ppd_file_t *ppd)
{
    std::vector<BinRow> bins;
    ForEachChoice(ppd, "InputSlot", [&](const ppd_choice_t &choice) {
        BinRow row;
        FillNameRow(row.name, choice.text);
        row.code = static_cast<uint16_t>(DMBIN_USER + bins.size());
        bins.push_back(row);
    });
    return bins;
}

void SortPaperList(std::vector<PaperRow> &papers)
{
    std::stable_sort(papers.begin(), papers.end(), [](const PaperRow &a, const PaperRow &b) {
        return strncasecmp(a.name, b.name, sizeof a.name) < 0; // a row may lack its NUL
    });
}

int32_t MicrometresFromPoints(float points)
{
    const double micrometres = double{points} / 72.0 * 25400.0;
    using Limits = std::numeric_limits<int32_t>;
    if (!(micrometres > Limits::min())) // below, or no number at all
        return Limits::min();
    return micrometres < Limits::max() ? static_cast<int32_t>(micrometres) : Limits::max();
}

int32_t TenthsFromMicrometres(int32_t micrometres)
{
    return static_cast<int32_t>((int64_t{micrometres} + 50) / 100);
}

Paper PaperOf(const ppd_size_t &size)
{
    const int32_t width = MicrometresFromPoints(size.width);
    const int32_t length = MicrometresFromPoints(size.length);
    if (const PaperTableRow *row = FindPaper(width, length)) {
        return {static_cast<uint16_t>(row->code),
                {static_cast<int32_t>(row->width / 100), static_cast<int32_t>(row->length / 100)}};
    }
    return {0, {TenthsFromMicrometres(width), TenthsFromMicrometres(length)}};
}

void FillNameRow(std::span<char> row, std::string_view text)
{
    const size_t length = std::min(text.size(), row.size());
    memcpy(row.data(), text.data(), length);
    memset(row.data() + length, 0, row.size() - length);
}

ppd_choice_t *FindChoice(const ppd_option_t &option, const char *name)
{
    for (ppd_choice_t &choice : ChoicesOf(option)) {
        if (EqualNames(choice.choice, name))
            return &choice;
    }
    return nullptr;
}

} // namespace wexelxi
