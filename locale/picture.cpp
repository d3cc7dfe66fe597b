// The picture engine. It reads a long picture where it stands and writes the text where it goes.
#include "locale/picture.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string_view>

#include "wexelxi/locale.h"

namespace wexelxi {
namespace {

// Bytes of a name that count.
constexpr size_t kNameLimit = 39;

// Bytes of the longest picture that is copied first, with its end: such a one may stand where the
// text goes.
constexpr size_t kCopiedPictureBytes = 40;

// A picture with up to two pieces of three characters taken out of it. Positions count what is
// left: the piece that was taken out last is stepped over first.
class Picture {
public:
    explicit Picture(const char *text) : text_(text) {}

    // The character at a position, zero at the end and behind it.
    char operator[](size_t position) const
    {
        if (position >= second_)
            position += 3;
        if (position >= first_)
            position += 3;
        return position < text_.size() ? text_[position] : '\0';
    }

    // Takes out the first occurrence, if there is one.
    void TakeOut(const char *piece)
    {
        for (size_t i = 0; (*this)[i]; i++) {
            if ((*this)[i] == piece[0] && (*this)[i + 1] == piece[1] &&
                (*this)[i + 2] == piece[2]) {
                (first_ == kNone ? first_ : second_) = i;
                return;
            }
        }
    }

private:
    static constexpr size_t kNone = SIZE_MAX / 2;
    std::string_view text_;
    size_t first_ = kNone;
    size_t second_ = kNone;
};

// The text as far as it is made. What does not fit is cut, and the text then is complete.
struct Output {
    char *text;
    size_t size;
    size_t length = 0;
    bool fits = true;

    void Append(std::string_view item)
    {
        const size_t room = size - length - 1;
        fits = item.size() <= room;
        const size_t stored = fits ? item.size() : room;
        memcpy(text + length, item.data(), stored);
        length += stored;
    }

    void AppendNumber(uint32_t number, size_t digits)
    {
        char item[12] = "0";
        char *start = item + (digits == 2 && number < 10 ? 1 : 0);
        const char *end = std::to_chars(start, std::end(item), number).ptr;
        Append({item, static_cast<size_t>(end - item)});
    }

    void AppendName(const PictureNames &names, uint32_t key)
    {
        if (const char *name = names.find(names.language, key))
            Append({name, strnlen(name, kNameLimit)});
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
        out.Append("yyy");
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
        out.Append(count == 1 ? "g" : "AD");
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
            out.Append(morning ? "A" : "P");
        else
            out.AppendName(names, morning ? LOCALE_S1159 : LOCALE_S2359);
        break;
    }
}

// Appends the character of a quote, and tells how many characters of the picture it took.
size_t AppendQuoted(Output &out, const Picture &picture, size_t position, bool &quoted)
{
    const char c = picture[position];
    if (c == '\'' && picture[position + 1] != '\'') {
        quoted = false;
        return 1;
    }
    out.Append({&c, 1});
    return c == '\'' ? 2 : 1;
}

// The same for an item, a literal character, or the start of a quote.
size_t AppendUnquoted(Output &out, const Picture &picture, size_t position, bool &quoted,
                      const PictureNames &names, const SYSTEMTIME &time)
{
    const char c = picture[position];
    if (const size_t longest = LongestItem(c)) {
        size_t count = 1;
        while (count < longest && picture[position + count] == c)
            count++;
        AppendItem(out, names, c, count, time);
        return count;
    }
    if (c == '\'')
        quoted = true;
    else
        out.Append({&c, 1});
    return 1;
}

} // namespace

PictureResult FormatPicture(const char *text, uint32_t flags, const SYSTEMTIME &time,
                            const PictureNames &names, char *buffer, int32_t size)
{
    *buffer = '\0';
    char copy[kCopiedPictureBytes];
    if (const size_t length = strnlen(text, sizeof copy); length < sizeof copy)
        text = static_cast<char *>(memcpy(copy, text, length + 1));
    Picture picture(text);
    if (flags & TIME_NOMINUTESORSECONDS)
        picture.TakeOut(":mm");
    if (flags & TIME_NOSECONDS)
        picture.TakeOut(":ss");

    Output out{buffer, static_cast<size_t>(size)};
    bool quoted = false;
    for (size_t i = 0; picture[i] && out.fits;) {
        i += quoted ? AppendQuoted(out, picture, i, quoted)
                    : AppendUnquoted(out, picture, i, quoted, names, time);
    }
    const size_t last = out.size - 1;
    out.text[out.length] = '\0';
    if (!out.fits)
        return {0, false};
    // The count takes in the terminator, and the open quote of a picture that ends inside one.
    const size_t count = std::min(out.length + (quoted ? 2 : 1), last);
    memset(out.text + out.length, 0, count + 1 - out.length);
    return {static_cast<int32_t>(count), true};
}

} // namespace wexelxi
