// Locale values, date and time text, and the conversions.
#include <cstring>
#include <ctime>
#include <glib.h>
#include <iconv.h>
#include <langinfo.h>
#include <string>
#include <unicode/ucnv.h>
#include <unicode/udat.h>
#include <unicode/ustring.h>
#include <vector>

#include "host.h"
#include "rows.h"

namespace {

constexpr size_t kBytes = 1 << 20;
const SYSTEMTIME kTime = {2005, 3, 1, 7, 13, 5, 9, 0};

void ValueRows()
{
    const struct {
        const char *which;
        uint32_t key;
    } rows[] = {{"first", LOCALE_ILANGUAGE},
                {"middle", LOCALE_SABBREVDAYNAME3},
                {"last", LOCALE_SISO3166CTRYNAME}};
    for (const auto &row : rows) {
        Row(std::string("GetLocaleInfo, a ") + row.which + " row", "lock, a look-up, a copy",
            Ours([=] {
                char text[64];
                Keep(GetLocaleInfo(1053, row.key, text, sizeof text));
            }),
            Do("memcpy of the value",
               [] {
                   char text[64];
                   memcpy(text, "Svenska", 8);
                   Keep(text);
               }),
            {Do("nl_langinfo and strcpy", [] {
                char text[64];
                strcpy(text, nl_langinfo(DAY_1));
                Keep(text);
            })});
    }
}

Work Icu(const char16_t *picture)
{
    UErrorCode status = U_ZERO_ERROR;
    UDateFormat *format =
        udat_open(UDAT_PATTERN, UDAT_PATTERN, "en_US", u"UTC", -1, picture, -1, &status);
    return Do("ICU udat_format", [=] {
        UErrorCode failed = U_ZERO_ERROR;
        UChar text[64];
        char utf8[64];
        const int32_t length = udat_format(format, 1110200709000.0, text, 64, nullptr, &failed);
        u_strToUTF8(utf8, 64, nullptr, text, length, &failed);
        Keep(utf8);
    });
}

void PictureRows()
{
    GDateTime *glib = g_date_time_new_utc(2005, 3, 7, 13, 5, 9);
    tm fields = {};
    fields.tm_year = 105, fields.tm_mon = 2, fields.tm_mday = 7, fields.tm_wday = 1;
    fields.tm_hour = 13, fields.tm_min = 5, fields.tm_sec = 9;
    const Work date = Do("strftime", [&] {
        char text[64];
        Keep(strftime(text, sizeof text, "%A, %B %d, %Y", &fields));
    });
    const Work time = Do("strftime", [&] {
        char text[64];
        Keep(strftime(text, sizeof text, "%I:%M:%S %p", &fields));
    });
    const auto peer = [&](const char *format) {
        return Do("GLib g_date_time_format", [=] { g_free(g_date_time_format(glib, format)); });
    };
    Row("GetDateFormat, long", "lock, one walk through the picture", Ours([] {
            char text[64];
            Keep(GetDateFormat(1033, DATE_LONGDATE, &kTime, nullptr, text, sizeof text));
        }),
        date, {peer("%A, %B %d, %Y"), Icu(u"EEEE, MMMM dd, yyyy")});
    Row("GetTimeFormat", "lock, one walk through the picture", Ours([] {
            char text[64];
            Keep(GetTimeFormat(1033, 0, &kTime, nullptr, text, sizeof text));
        }),
        time, {peer("%l:%M:%S %p"), Icu(u"h:mm:ss a")});
    g_date_time_unref(glib);
}

// A text in the form that a conversion reads, and its end at any width.
std::vector<char> Converted(const char *to, const std::string &utf8)
{
    std::vector<char> result(utf8.size() * 4 + 4);
    iconv_t handle = iconv_open(to, "UTF-8");
    char *in = const_cast<char *>(utf8.data()), *out = result.data();
    size_t left = utf8.size(), room = result.size() - 4;
    iconv(handle, &in, &left, &out, &room);
    iconv_close(handle);
    result.resize(static_cast<size_t>(out - result.data()));
    result.resize(result.size() + 4);
    return result;
}

std::string Repeated(const char *sentence, size_t bytes)
{
    std::string text;
    while (text.size() + strlen(sentence) <= bytes)
        text += sentence;
    return text;
}

struct Conversion {
    const char *name, *from, *to;
    uint32_t (*convert)(const void *source, void *destination);
};

template <auto Convert, typename From, typename To>
uint32_t Call(const void *source, void *destination)
{
    return Convert(static_cast<const From *>(source), static_cast<To *>(destination));
}

const Conversion kConversions[] = {
    {"Windows-1252 to UTF-8", "CP1252", "UTF-8", Call<ConvertISO8859ToUtf8WithDest, char, char>},
    {"UTF-8 to Windows-1252", "UTF-8", "CP1252", Call<ConvertUtf8ToISO8859WithDest, char, char>},
    {"UTF-8 to wide", "UTF-8", "UTF-32LE", Call<ConvertUtf8ToWideCharWithDest, char, uint32_t>},
    {"wide to UTF-8", "UTF-32LE", "UTF-8", Call<ConvertWideCharToUtf8WithDest, uint32_t, char>},
    {"wide to UTF-16", "UTF-32LE", "UTF-16LE",
     Call<ConvertWideCharToUtf16WithDest, uint32_t, uint16_t>},
};

void ConversionRow(const Conversion &row, const char *kind, const std::string &utf8)
{
    const std::vector<char> source = Converted(row.from, utf8);
    std::vector<char> target(source.size() * 4);
    const size_t bytes = source.size() - 4;
    UErrorCode status = U_ZERO_ERROR;
    UConverter *from = ucnv_open(row.from, &status), *to = ucnv_open(row.to, &status);
    iconv_t handle = iconv_open(row.to, row.from);
    std::vector<UChar> pivot(4096);
    Row(std::string(row.name) + ", " + kind + ", 1 MiB", "loads and stores, runs apart",
        Ours([&] { Keep(row.convert(source.data(), target.data())); }),
        Do("memcpy of the source", [&] { memcpy(target.data(), source.data(), bytes); }),
        {Do("iconv",
            [&] {
                char *in = const_cast<char *>(source.data()), *out = target.data();
                size_t left = bytes, room = target.size();
                Keep(iconv(handle, &in, &left, &out, &room));
            }),
         Do("ICU ucnv_convertEx", [&] {
             const char *in = source.data();
             char *out = target.data();
             UChar *pivotIn = pivot.data(), *pivotOut = pivot.data();
             UErrorCode failed = U_ZERO_ERROR;
             ucnv_convertEx(to, from, &out, target.data() + target.size(), &in, in + bytes,
                            pivot.data(), &pivotIn, &pivotOut, pivot.data() + pivot.size(), 1, 1,
                            &failed);
         })});
    iconv_close(handle);
    ucnv_close(from);
    ucnv_close(to);
}

} // namespace

int main()
{
    const Host host;
    ValueRows();
    PictureRows();
    const struct {
        const char *kind, *sentence;
    } texts[] = {
        {"ASCII", "The printer on the second floor is out of paper, 14 pages are left. "},
        {"Latin",
         "L'\u00e9t\u00e9 o\u00f9 l'imprimante \u00e9tait \u00e0 c\u00f4t\u00e9, 14 pages, disait le gar\u00e7on. "},
        {"mixed",
         "L\u2019\u00e9t\u00e9 o\u00f9 l\u2019imprimante \u00e9tait \u00e0 c\u00f4t\u00e9 \u2014 14 pages, 3 \u20ac, pas de quoi. "}};
    for (const auto &text : texts) {
        for (const Conversion &row : kConversions)
            ConversionRow(row, text.kind, Repeated(text.sentence, kBytes));
    }
}
