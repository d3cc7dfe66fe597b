// Sections language and timezone: which tables answer, and what the clock is taken to be.
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "tools/info_sections.h"
#include "wexelxi.h"

namespace info {

namespace {

std::string CodeInFile()
{
    char code[256] = "";
    GetProfileString("Localize", "Locale", "", code, sizeof code);
    return code;
}

bool IsKnown(const std::string &code)
{
    for (const LANGUAGEENTRY *row = gLanguageTable; row->name; row++)
        if (!code.empty() && code == row->code)
            return true;
    return false;
}

// Which of the places that a language can come from has a code, and that code.
std::pair<std::string, std::string> LanguageSource()
{
    const char *variable = getenv("WEXELLOCALE");
    if (variable && *variable)
        return {"the variable WEXELLOCALE", variable};
    const std::string inFile = CodeInFile();
    if (!inFile.empty())
        return {"key Locale of section Localize", inFile};
    return {"the default", "en-us"};
}

Value LocaleText(uint32_t language, uint32_t key)
{
    char text[256] = "";
    return GetLocaleInfo(language, key, text, sizeof text) ? Value(text) : Value();
}

// The name and the code of a language number.
Value::Record LanguageNames(uint32_t language)
{
    for (const LANGUAGEENTRY *row = gLanguageTable; row->name; row++)
        if (row->language == language)
            return {{"name", row->name}, {"code", row->code}};
    return {{"name", Value()}, {"code", Value()}};
}

Value Samples(uint32_t language)
{
    static const struct {
        const char *name;
        uint32_t key;
    } samples[] = {
        {"table", LOCALE_SLANGUAGE},    {"ansiCodePage", LOCALE_IDEFAULTANSICODEPAGE},
        {"decimal", LOCALE_SDECIMAL},   {"thousands", LOCALE_STHOUSAND},
        {"currency", LOCALE_SCURRENCY}, {"shortDate", LOCALE_SSHORTDATE},
        {"longDate", LOCALE_SLONGDATE}, {"time", LOCALE_STIMEFORMAT},
        {"firstDay", LOCALE_SDAYNAME1},
    };
    Value::Record record;
    for (const auto &sample : samples)
        record.push_back({sample.name, LocaleText(language, sample.key)});
    return record;
}

std::string Minutes(int32_t minutes)
{
    char text[32];
    snprintf(text, sizeof text, "%s%02d:%02d", minutes > 0 ? "-" : "+", abs(minutes) / 60,
             abs(minutes) % 60);
    return text;
}

} // namespace

Value DescribeLanguage(const Session &)
{
    const auto [source, code] = LanguageSource();
    const uint32_t language = GetUserDefaultLCID();
    Value::Record told = LanguageNames(language);
    told.insert(told.begin(),
                {{"number", language},
                 {"from", source + (IsKnown(code) ? "" : ", whose code is unknown")}});
    told.push_back({"WEXELLOCALE", VariableOrNothing("WEXELLOCALE")});
    told.push_back({"inFile", CodeInFile()});
    told.push_back({"answers", Samples(language)});
    return told;
}

Value DescribeTimeZone(const Session &)
{
    TIME_ZONE_INFORMATION zone = {};
    RtlQueryTimeZoneInformation(&zone);
    SYSTEMTIME local = {};
    GetLocalTime(&local);
    char now[40];
    snprintf(now, sizeof now, "%04u-%02u-%02u %02u:%02u:%02u", local.wYear, local.wMonth,
             local.wDay, local.wHour, local.wMinute, local.wSecond);
    return Value::Record{{"TZ", VariableOrNothing("TZ")},     {"name", zone.StandardName},
                         {"fromUtc", Minutes(zone.Bias)},     {"bias", zone.Bias},
                         {"standardBias", zone.StandardBias}, {"daylightName", zone.DaylightName},
                         {"daylightBias", zone.DaylightBias}, {"localTime", now}};
}

Faults CheckLanguage(const Session &)
{
    const auto [source, code] = LanguageSource();
    if (IsKnown(code))
        return {};
    return {"\"" + code + "\" of " + source +
            " is no language code, and US English answers: " + "write one such as de, fr or pt-br"};
}

} // namespace info
