#include "time/time_zone_table.h"

#include <cstring>
#include <iterator>

namespace wexelxi {
namespace {

// A zone that changes its clock has, as a rule, its summer row only.
constexpr TimeZoneRow gTimeZoneTable[] = {
    {"MHT", "Dateline Standard Time", -720, 0},
    {"SST", "Samoa Standard Time", 660, 0},
    {"HST", "Hawaiian Standard Time", 600, 0},
    {"AKDT", "Alaskan Standard Time", 480, 1},
    {"PDT", "Pacific Standard Time", 420, 1},
    {"MST", "US Mountain Standard Time", 420, 0},
    {"MDT", "Mountain Standard Time", 360, 1},
    {"CST", "Central America Standard Time", 360, 0},
    {"CDT", "Central Standard Time", 300, 1},
    {"COT", "SA Pacific Standard Time", 300, 0},
    {"EDT", "Eastern Standard Time", 240, 1},
    {"EST", "US Eastern Standard Time", 300, 0},
    {"ADT", "Atlantic Standard Time", 180, 1},
    {"VET", "SA Western Standard Time", 240, 0},
    {"CLT", "Pacific SA Standard Time", 240, 0},
    {"NDT", "Newfoundland Standard Time", 150, 1},
    {"BRT", "E. South America Standard Time", 180, 0},
    {"ART", "SA Eastern Standard Time", 180, 0},
    {"WGST", "Greenland Standard Time", 120, 1},
    {"GST", "Mid-Atlantic Standard Time", 120, 0},
    {"AZOST", "Azores Standard Time", 0, 1},
    {"CVT", "Cape Verde Standard Time", 60, 0},
    {"WET", "Greenwich Standard Time", 0, 0},
    {"BST", "GMT Standard Time", -60, 1},
    {"GMT", "GMT Standard Time", 0, 0},
    {"CEST", "Central Europe Standard Time", -120, 1},
    {"WAT", "W. Central Africa Standard Time", -60, 0},
    {"EEST", "E. Europe Standard Time", -180, 1},
    {"EET", "Egypt Standard Time", -120, 0},
    {"CAT", "South Africa Standard Time", -120, 0},
    {"IST", "Israel Standard Time", -120, 0},
    {"ADT", "Arabic Standard Time", -240, 1},
    {"AST", "Arab Standard Time", -180, 0},
    {"MSD", "Russian Standard Time", -240, 1},
    {"EAT", "E. Africa Standard Time", -180, 0},
    {"IRST", "Iran Standard Time", -270, 1},
    {"GST", "Arabian Standard Time", -240, 0},
    {"AZST", "Caucasus Standard Time", -300, 1},
    {"AFT", "Afghanistan Standard Time", -270, 0},
    {"YEKST", "Ekaterinburg Standard Time", -360, 1},
    {"PKT", "West Asia Standard Time", -300, 0},
    {"IST", "India Standard Time", -330, 0},
    {"NPT", "Nepal Standard Time", -345, 0},
    {"ALMST", "N. Central Asia Standard Time", -420, 1},
    {"BDT", "Central Asia Standard Time", -360, 0},
    {"LKT", "Sri Lanka Standard Time", -360, 0},
    {"MMT", "Myanmar Standard Time", -390, 0},
    {"ICT", "SE Asia Standard Time", -420, 0},
    {"KRAST", "North Asia Standard Time", -480, 1},
    {"CST", "China Standard Time", -480, 0},
    {"IRKST", "North Asia East Standard Time", -540, 1},
    {"SGT", "Malay Peninsula Standard Time", -480, 0},
    {"WST", "W. Australia Standard Time", -480, 0},
    {"JST", "Tokyo Standard Time", -540, 0},
    {"KST", "Korea Standard Time", -540, 0},
    {"YAKST", "Yakutsk Standard Time", -600, 1},
    {"CST", "Cen. Australia Standard Time", -570, 0},
    {"EST", "E. Australia Standard Time", -600, 0},
    {"GST", "West Pacific Standard Time", -600, 0},
    {"VLAST", "Vladivostok Standard Time", -660, 1},
    {"MAGST", "Central Pacific Standard Time", -720, 1},
    {"NZST", "New Zealand Standard Time", -720, 0},
    {"FJT", "Fiji Standard Time", -720, 0},
    {"TOT", "Tonga Standard Time", -780, 0},
};
static_assert(std::size(gTimeZoneTable) == 64);

} // namespace

const TimeZoneRow *FindTimeZone(const char *abbreviation, int32_t bias, int daylight)
{
    for (const TimeZoneRow &row : gTimeZoneTable) {
        if (row.bias == bias && row.daylight == static_cast<uint32_t>(daylight) &&
            strcmp(row.abbreviation, abbreviation) == 0)
            return &row;
    }
    return nullptr;
}

} // namespace wexelxi
