#include "fonts/search_lists.h"

#include <fontconfig/fontconfig.h>

namespace wexelxi {

namespace {

constexpr int kExtra = FC_WEIGHT_EXTRABOLD;
constexpr int kBold = FC_WEIGHT_BOLD;
constexpr int kDemi = FC_WEIGHT_DEMIBOLD;
constexpr int kRegular = FC_WEIGHT_REGULAR;
constexpr int kLight = FC_WEIGHT_LIGHT;
constexpr int kRoman = FC_SLANT_ROMAN;
constexpr int kItalic = FC_SLANT_ITALIC;
constexpr int kOblique = FC_SLANT_OBLIQUE;

constexpr SearchRow kExtraRoman[] = {{kExtra, kRoman}, {kBold, kRoman}, {kDemi, kRoman}};
constexpr SearchRow kExtraItalic[] = {{kExtra, kItalic}, {kExtra, kOblique}, {kBold, kItalic},
                                      {kBold, kOblique}, {kDemi, kItalic},   {kDemi, kOblique}};
constexpr SearchRow kBoldRoman[] = {{kBold, kRoman}, {kDemi, kRoman}, {kExtra, kRoman}};
constexpr SearchRow kBoldItalic[] = {{kBold, kItalic},  {kDemi, kItalic},  {kExtra, kItalic},
                                     {kBold, kOblique}, {kDemi, kOblique}, {kExtra, kOblique}};
constexpr SearchRow kDemiRoman[] = {{kDemi, kRoman}, {kBold, kRoman}, {kExtra, kRoman}};
constexpr SearchRow kDemiItalic[] = {{kDemi, kItalic},  {kDemi, kOblique}, {kBold, kItalic},
                                     {kBold, kOblique}, {kExtra, kItalic}, {kExtra, kOblique}};
constexpr SearchRow kNormalRoman[] = {{kRegular, kRoman}, {kLight, kRoman}};
constexpr SearchRow kNormalItalic[] = {
    {kRegular, kItalic}, {kRegular, kOblique}, {kLight, kItalic}, {kLight, kOblique}};

} // namespace

std::span<const SearchRow> SearchListFor(int32_t weight, bool italic)
{
    using List = std::span<const SearchRow>;
    switch (weight) {
    case 800:
        return italic ? List(kExtraItalic) : List(kExtraRoman);
    case 700:
        return italic ? List(kBoldItalic) : List(kBoldRoman);
    case 600:
        return italic ? List(kDemiItalic) : List(kDemiRoman);
    default:
        return italic ? List(kNormalItalic) : List(kNormalRoman);
    }
}

bool HasTrueTypeName(std::string_view file)
{
    return file.size() >= 5 && file.ends_with(".ttf");
}

} // namespace wexelxi
