// The picture engine.
#include "locale/picture.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

#include "wexelxi/locale.h"

namespace wexelxi {
namespace {

// The text as far as it is made. What does not fit is cut, and the text then is complete.
struct Output {
    char *at;
    char *last; // where the terminator goes at the latest
    bool fits = true;

    void Append(char c)
    {
        if (at < last)
            *at++ = c;
        else
            fits = false;
    }

    void Append(std::string_view item)
    {
        const auto room = static_cast<size_t>(last - at);
        fits = item.size() <= room;
        const size_t stored = fits ? item.size() : room;
        memcpy(at, item.data(), stored);
        at += stored;
    }

    void AppendNumber(uint32_t number, size_t digits)
    {
        if (number >= 100)
            AppendNumber(number / 100, 1);
        if (number >= 10 || digits == 2)
            Append(static_cast<char>('0' + number / 10 % 10));
        Append(static_cast<char>('0' + number % 10));
    }

    void AppendName(const PictureNames &names, uint32_t key)
    {
        if (const char *name = names.find(names.language, key))
            Append(std::string_view(name));
    }
};

// How often a letter is repeated in one item at most; 0 for what is no letter of an item.
size_t LongestItem(char c)
{
    switch (c) {
    case 'y':
    case 'M':
    case 'd':
        return 4;
    case 'g':
    case 'h':
    case 'H':
    case 'm':
    case 's':
    case 't':
        return 2;
    default:
        return 0;
    }
}

void AppendYear(Output &out, size_t count, uint32_t year)
{
    if (count == 4)
        out.AppendNumber(year, 1);
    else if (count == 3)
        out.Append(std::string_view("yyy"));
    else
        out.AppendNumber(year % 100, count);
}

// An item of a number in its short forms, and in its long ones the names from a key each.
void AppendNumberOrName(Output &out, const PictureNames &names, size_t count, uint32_t number,
                        uint32_t shortName, uint32_t longName)
{
    if (count <= 2)
        out.AppendNumber(number, count);
    else
        out.AppendName(names, count == 3 ? shortName : longName);
}

void AppendItem(Output &out, const PictureNames &names, char letter, size_t count,
                const SYSTEMTIME &time)
{
    const bool morning = time.wHour < 12;
    const uint32_t weekday = time.wDayOfWeek == 0 ? 7 : time.wDayOfWeek;
    switch (letter) {
    case 'd':
        AppendNumberOrName(out, names, count, time.wDay, LOCALE_SABBREVDAYNAME1 - 1 + weekday,
                           LOCALE_SDAYNAME1 - 1 + weekday);
        break;
    case 'M':
        AppendNumberOrName(out, names, count, time.wMonth,
                           LOCALE_SABBREVMONTHNAME1 - 1 + time.wMonth,
                           LOCALE_SMONTHNAME1 - 1 + time.wMonth);
        break;
    case 'y':
        AppendYear(out, count, time.wYear);
        break;
    case 'g':
        out.Append(count == 1 ? std::string_view("g") : "AD");
        break;
    case 'h':
        out.AppendNumber((time.wHour + 11u) % 12 + 1, count);
        break;
    case 'H':
        out.AppendNumber(time.wHour, count);
        break;
    case 'm':
        out.AppendNumber(time.wMinute, count);
        break;
    case 's':
        out.AppendNumber(time.wSecond, count);
        break;
    case 't':
        if (count == 1)
            out.Append(morning ? 'A' : 'P');
        else
            out.AppendName(names, morning ? LOCALE_S1159 : LOCALE_S2359);
        break;
    }
}

// Appends what stands at a place of the picture, outside of quotes, and gives the place behind it.
const char *AppendUnquoted(Output &out, const char *picture, const PictureNames &names,
                           const SYSTEMTIME &time)
{
    const char c = *picture;
    const size_t longest = LongestItem(c);
    if (longest == 0) {
        out.Append(c);
        return picture + 1;
    }
    size_t count = 1;
    while (count < longest && picture[count] == c)
        count++;
    AppendItem(out, names, c, count, time);
    return picture + count;
}

// Makes the text; true if the picture ends inside a quote.
bool WalkPicture(const char *picture, Output &out, const PictureNames &names,
                 const SYSTEMTIME &time)
{
    bool quoted = false;
    while (*picture && out.fits) {
        if (*picture == '\'' && !(quoted && picture[1] == '\'')) {
            quoted = !quoted;
            picture++;
        } else if (quoted) {
            out.Append(*picture);
            picture += *picture == '\'' ? 2 : 1;
        } else {
            picture = AppendUnquoted(out, picture, names, time);
        }
    }
    return quoted;
}

bool Overlap(const char *picture, const char *buffer, size_t size)
{
    if (picture >= buffer)
        return picture < buffer + size;
    const auto ahead = static_cast<size_t>(buffer - picture);
    return strnlen(picture, ahead) == ahead;
}

void TakeOut(std::string &picture, const char *piece)
{
    const size_t at = picture.find(piece);
    if (at != picture.npos)
        picture.erase(at, strlen(piece));
}

} // namespace

PictureResult FormatPicture(const char *picture, uint32_t flags, const SYSTEMTIME &time,
                            const PictureNames &names, char *buffer, int32_t size)
{
    *buffer = '\0';
    // The caller's picture is read where it stands, unless something may be taken out of it or the
    // text goes over it.
    std::string copy;
    if (flags != 0 || Overlap(picture, buffer, static_cast<size_t>(size))) {
        copy = picture;
        if (flags & TIME_NOMINUTESORSECONDS)
            TakeOut(copy, ":mm");
        if (flags & TIME_NOSECONDS)
            TakeOut(copy, ":ss");
        picture = copy.c_str();
    }
    Output out{buffer, buffer + size - 1};
    const bool quoted = WalkPicture(picture, out, names, time);
    *out.at = '\0';
    if (!out.fits)
        return {0, false};
    // The count takes in the terminator, and the open quote of a picture that ends inside one.
    char *end = std::min(out.at + 1, out.last);
    *end = '\0';
    if (quoted)
        *(end = std::min(out.at + 2, out.last)) = '\0';
    return {static_cast<int32_t>(end - buffer), true};
}

} // namespace wexelxi
