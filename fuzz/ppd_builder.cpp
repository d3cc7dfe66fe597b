// Damaged and odd printer descriptions through what makes rows and records of them. The input is
// text, a letter a line, each with its fields behind blanks:
//   G group   O keyword text kind default   C choice text   S size width length left bottom
//   V saved-option value
// and stands for what a parsed PPD holds, so that it is our builder that is tried and no parser.
#include <cstdlib>
#include <cstring>
#include <deque>
#include <sstream>
#include <string>
#include <vector>

#include "print/devmode.h"
#include "print/devmode_build.h"
#include "print/ppd_rows.h"

using namespace wexelxi;

namespace {

void Require(bool holds)
{
    if (!holds)
        abort();
}

template <size_t Size>
void Put(char (&field)[Size], const std::string &text)
{
    memcpy(field, text.data(), std::min(text.size(), Size - 1));
}

// A parsed PPD and a destination's saved options; the lists own what the records point to.
struct Description {
    ppd_file_t ppd = {};
    std::deque<std::vector<ppd_option_t>> options;
    std::deque<std::vector<ppd_choice_t>> choices;
    std::vector<ppd_group_t> groups;
    std::vector<ppd_size_t> sizes;
    std::vector<std::pair<std::string, std::string>> saved;

    void Add(const std::string &line);
    void Link();
};

void Description::Add(const std::string &line)
{
    std::istringstream fields(line.empty() ? "" : line.substr(1));
    std::string name, text, word;
    fields >> name >> text;
    if (line[0] == 'G' || (groups.empty() && line[0] == 'O')) {
        Put(groups.emplace_back(ppd_group_t{}).name, name);
        options.emplace_back();
    }
    if (line[0] == 'O') {
        int kind = 0;
        fields >> kind >> word;
        ppd_option_t &option = options.back().emplace_back(ppd_option_t{});
        Put(option.keyword, name);
        Put(option.text, text);
        Put(option.defchoice, word);
        option.ui = static_cast<ppd_ui_t>(kind & 3);
        choices.emplace_back();
    } else if (line[0] == 'C' && !choices.empty()) {
        ppd_choice_t &choice = choices.back().emplace_back(ppd_choice_t{});
        Put(choice.choice, name);
        Put(choice.text, text);
    } else if (line[0] == 'S') {
        ppd_size_t &size = sizes.emplace_back(ppd_size_t{});
        Put(size.name, name);
        size.width = strtof(text.c_str(), nullptr); // infinite and no number at all, too
        for (float *number : {&size.length, &size.left, &size.bottom, &size.right, &size.top}) {
            fields >> word;
            *number = strtof(word.c_str(), nullptr);
        }
    } else if (line[0] == 'V') {
        saved.emplace_back(name, text);
    }
}

void Description::Link()
{
    auto rows = choices.begin();
    auto own = options.begin();
    for (ppd_group_t &group : groups) {
        for (ppd_option_t &option : *own) {
            option.num_choices = static_cast<int>(rows->size());
            option.choices = (rows++)->data();
        }
        group.num_options = static_cast<int>(own->size());
        group.options = (own++)->data();
    }
    ppd.num_groups = static_cast<int>(groups.size());
    ppd.groups = groups.data();
    ppd.num_sizes = static_cast<int>(sizes.size());
    ppd.sizes = sizes.data();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    Description description;
    std::istringstream lines(std::string(reinterpret_cast<const char *>(data), size));
    for (std::string line; std::getline(lines, line);)
        description.Add(line);
    description.Link();
    ppd_file_t *ppd = &description.ppd;

    std::vector<PaperRow> papers = EnumPapers(ppd);
    SortPaperList(papers);
    for (size_t i = 1; i < papers.size(); i++)
        Require(strncasecmp(papers[i - 1].name, papers[i].name, CCHPAPERNAME) <= 0);
    const std::vector<BinRow> bins = EnumBins(ppd);
    Require(bins.empty() || bins.back().code == 255 + bins.size());

    const Record record = BuildDevMode(SplitPrinterName("a/printer"), "Unknown", ppd);
    std::vector<cups_option_t> saved;
    for (auto &[name, value] : description.saved)
        saved.push_back({name.data(), value.data()});
    ApplySavedOptions(saved, ppd, record.get());
    size_t bytes = 0;
    const DEVMODEOPTION *option = nullptr;
    while ((option = NextDevModeOption(record.get(), option)))
        bytes += static_cast<size_t>(option->length);
    Require(bytes == record->dmDriverExtra);
    return 0;
}
