// Section fonts: the families that fontconfig knows, as EnumFonts tells them.
#include <cstring>
#include <map>

#include "tools/info_sections.h"
#include "wexelxi.h"

namespace info {

namespace {

struct Family {
    int64_t faces = 0;
    int64_t trueType = 0;
    bool isFixed = false;
};
using Families = std::map<std::string, Family>;

int32_t CountFace(const LOGFONT *font, const TEXTMETRIC *, uint32_t type, intptr_t data)
{
    auto *families = reinterpret_cast<Families *>(data);
    Family &family = (*families)[std::string(font->lfFaceName, strnlen(font->lfFaceName, 128))];
    family.faces++;
    family.trueType += type == TRUETYPE_FONTTYPE;
    family.isFixed |= font->lfPitchAndFamily == FIXED_PITCH;
    return 1;
}

Families InstalledFamilies()
{
    Families families;
    EnumFonts(nullptr, nullptr, CountFace, reinterpret_cast<intptr_t>(&families));
    return families;
}

} // namespace

Value DescribeFonts(const Session &)
{
    const Families families = InstalledFamilies();
    Value::List rows;
    int64_t faces = 0;
    for (const auto &[name, family] : families) {
        faces += family.faces;
        rows.push_back(Value::Record{{"family", name},
                                     {"faces", family.faces},
                                     {"trueType", family.trueType},
                                     {"fixedPitch", family.isFixed}});
    }
    return Value::Record{{"FONTCONFIG_FILE", VariableOrNothing("FONTCONFIG_FILE")},
                         {"FONTCONFIG_PATH", VariableOrNothing("FONTCONFIG_PATH")},
                         {"families", families.size()},
                         {"faces", faces},
                         {"list", std::move(rows)}};
}

Faults CheckFonts(const Session &)
{
    if (!InstalledFamilies().empty())
        return {};
    return {"fontconfig knows no outline font: install one (fonts-dejavu-core, say) and look at "
            "fc-list and FONTCONFIG_FILE"};
}

} // namespace info
