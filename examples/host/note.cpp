#include "note.h"

#include "../plugin/report.h"

static void Replace(std::string &text, const std::string &mark, const std::string &value)
{
    for (size_t at = 0; (at = text.find(mark, at)) != std::string::npos; at += value.size())
        text.replace(at, mark.size(), value);
}

// Characters, not bytes: a byte 10xxxxxx continues one.
static size_t Width(const std::string &utf8)
{
    size_t width = 0;
    for (const char c : utf8)
        width += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    return width;
}

static std::string Pad(const std::string &text, size_t width, bool right)
{
    const size_t have = Width(text);
    const std::string blanks(have < width ? width - have : 0, ' ');
    return right ? blanks + text : text + blanks;
}

static std::string Line(const std::string &quantity, const std::string &article,
                        const std::string &amount)
{
    return Pad(quantity, 6, true) + "  " + Pad(article, 36, false) + Pad(amount, 12, true);
}

std::string ComposeNote(const Job &job, const Report &report, const NoteWords &words)
{
    std::string items =
        Line(report.Text(REPORT_QUANTITY), report.Text(REPORT_ARTICLE), report.Text(REPORT_AMOUNT));
    for (const Item &item : job.items) {
        items += "\n" + Line(std::to_string(item.quantity), item.article,
                             FormatAmount(item.cents, words.decimalSeparator));
    }
    items += "\n" + Line("", report.Text(REPORT_TOTAL),
                         FormatAmount(job.TotalCents(), words.decimalSeparator));

    std::string note = report.Template();
    Replace(note, "@title@", report.Text(REPORT_TITLE));
    Replace(note, "@number@", std::to_string(job.number));
    Replace(note, "@name@", job.name);
    Replace(note, "@street@", job.street);
    Replace(note, "@city@", job.city);
    Replace(note, "@date@", report.Text(REPORT_DATE) + ": " + words.date);
    Replace(note, "@items@", items);
    Replace(note, "@thanks@", report.Text(REPORT_THANKS));
    return note;
}
