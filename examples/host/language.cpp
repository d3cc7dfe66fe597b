#include "language.h"

#include <cstdlib>

#include "host.h"

// A value of the language's table, in UTF-8 (the tables keep Windows code pages).
static std::string Info(uint32_t language, uint32_t key)
{
    char value[128];
    if (GetLocaleInfo(language, key, value, sizeof value) == 0)
        return "";
    return ToUtf8(value);
}

Language ChooseLanguage()
{
    const uint32_t number = GetUserDefaultLangID();
    return {number, Info(number, LOCALE_SLANGUAGE), Info(number, LOCALE_SDECIMAL),
            (number & 0x3FF) == 0x07};
}

std::string DateAndTime(const Language &language)
{
    SYSTEMTIME now;
    GetLocalTime(&now);
    char date[128];
    char time[64];
    Check(GetDateFormat(language.number, DATE_LONGDATE, &now, nullptr, date, sizeof date) != 0,
          "GetDateFormat");
    Check(GetTimeFormat(language.number, 0, &now, "H:mm", time, sizeof time) != 0, "GetTimeFormat");
    return ToUtf8(date) + ", " + time;
}

// The conversions without "WithDest" give a string of malloc's, which the caller frees.
static std::string TakeText(char *text)
{
    const std::string result = text ? text : "";
    free(text);
    return result;
}

std::string ToWindows1252(const std::string &utf8)
{
    return TakeText(ConvertUtf8ToISO8859(utf8.c_str()));
}

std::string ToUtf8(const std::string &windows1252)
{
    return TakeText(ConvertISO8859ToUtf8(windows1252.c_str()));
}
