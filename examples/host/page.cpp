#include "page.h"

#include <algorithm>
#include <memory>

#include "../plugin/report.h"
#include "host.h"

namespace {

// A font at the page's resolution, for as long as this lives.
class Font {
public:
    Font(HDC page, const std::string &family, int points, int weight) : points_(points)
    {
        LOGFONT description = {};
        description.lfDC = page;
        description.lfHeight = points;
        description.lfWeight = weight;
        lstrcpyn(description.lfFaceName, family.c_str(), sizeof description.lfFaceName);
        handle_ = CreateFontIndirect(&description);
        Check(handle_ != nullptr, "CreateFontIndirect " + family);
    }
    ~Font() { DeleteObject(handle_); }
    Font(const Font &) = delete;
    Font &operator=(const Font &) = delete;

    HFONT get() const { return handle_; }
    double size() const { return points_ * 254.0 / 72.0; } // in the page's unit

private:
    HFONT handle_;
    int points_;
};

// What the note keeps clear inside the paper's own margins, in tenths of a millimetre.
constexpr int kInset = 150;

class Page {
public:
    Page(const Paper &paper, const std::string &family)
        : paper_(paper), family_(family),
          dc_(CreateDC(nullptr, nullptr, nullptr, nullptr), DeleteDC),
          body_(dc_.get(), family, 10, 400), title_(dc_.get(), family, 16, 700),
          y_(paper.margins.top + kInset)
    {
    }

    enum class Style { Body, Title };

    int Left() const { return paper_.margins.left + kInset; }
    int Right() const { return paper_.size.width - paper_.margins.right - kInset; }

    void PutLeft(const std::string &text, int x, Style style = Style::Body)
    {
        Put(text, x, Measure(text, style).cx, style);
    }
    void PutRight(const std::string &text, int right)
    {
        const int width = Measure(text, Style::Body).cx;
        Put(text, right - width, width, Style::Body);
    }
    void NextLine(Style style = Style::Body)
    {
        y_ += Metrics(style).tmHeight + Metrics(style).tmExternalLeading;
    }
    void Rule()
    {
        marks_ += "<line x1='" + std::to_string(Left()) + "' x2='" + std::to_string(Right()) +
                  "' y1='" + std::to_string(y_) + "' y2='" + std::to_string(y_) +
                  "' stroke='black' stroke-width='3'/>\n";
        y_ += 12;
    }

    std::string Svg() const
    {
        const std::string width = std::to_string(paper_.size.width);
        const std::string length = std::to_string(paper_.size.length);
        return "<svg xmlns='http://www.w3.org/2000/svg' width='" + Millimetres(paper_.size.width) +
               "' height='" + Millimetres(paper_.size.length) + "' viewBox='0 0 " + width + " " +
               length + "'>\n<rect width='" + width + "' height='" + length + "' fill='white'/>\n" +
               marks_ + "</svg>\n";
    }

private:
    const Font &Of(Style style) const { return style == Style::Title ? title_ : body_; }

    SIZE Measure(const std::string &text, Style style)
    {
        SIZE size = {};
        SelectObject(dc_.get(), Of(style).get());
        GetTextExtentPoint32(dc_.get(), text.c_str(), static_cast<int32_t>(text.size()), &size);
        return size;
    }
    TEXTMETRIC Metrics(Style style)
    {
        TEXTMETRIC metrics;
        SelectObject(dc_.get(), Of(style).get());
        GetTextMetrics(dc_.get(), &metrics);
        return metrics;
    }

    static std::string Millimetres(int tenths)
    {
        return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + "mm";
    }

    static std::string Escape(const std::string &text)
    {
        std::string escaped;
        for (const char c : text)
            escaped += c == '<' ? "&lt;" : c == '&' ? "&amp;" : std::string(1, c);
        return escaped;
    }

    // Every word stands where the measured text in front of it ends, so that a viewer's own idea of
    // the widths does not add up along the line.
    std::string Words(const std::string &text, int x, Style style)
    {
        std::string words;
        for (size_t from = 0; from < text.size();) {
            const size_t end = std::min(text.find(' ', from), text.size());
            const int before = from == 0 ? 0 : Measure(text.substr(0, from), style).cx;
            words += "<tspan x='" + std::to_string(x + before) + "'>" +
                     Escape(text.substr(from, end - from)) + "</tspan>";
            from = end + 1;
        }
        return words;
    }

    // The measured box, thin and grey, and the text on its base line.
    void Put(const std::string &text, int x, int width, Style style)
    {
        const TEXTMETRIC metrics = Metrics(style);
        marks_ += "<rect x='" + std::to_string(x) + "' y='" + std::to_string(y_) + "' width='" +
                  std::to_string(width) + "' height='" + std::to_string(metrics.tmHeight) +
                  "' fill='none' stroke='#ccc' stroke-width='1'/>\n<text y='" +
                  std::to_string(y_ + metrics.tmAscent) + "' font-family='" + Escape(family_) +
                  "' font-size='" + std::to_string(Of(style).size()) + "'" +
                  (style == Style::Title ? " font-weight='bold'" : "") + ">" +
                  Words(text, x, style) + "</text>\n";
    }

    const Paper &paper_;
    std::string family_;
    std::unique_ptr<void, decltype(&DeleteDC)> dc_; // ends also when a font fails
    Font body_, title_;
    int y_;
    std::string marks_;
};

void PutItem(Page &page, const std::string &quantity, const std::string &article,
             const std::string &amount)
{
    if (!quantity.empty())
        page.PutRight(quantity, page.Left() + 150);
    page.PutLeft(article, page.Left() + 200);
    page.PutRight(amount, page.Right());
    page.NextLine();
}

} // namespace

std::string LayOutPage(const Job &job, const Report &report, const NoteWords &words,
                       const Paper &paper)
{
    Page page(paper, job.font);
    page.PutLeft(report.Text(REPORT_TITLE) + " " + std::to_string(job.number), page.Left(),
                 Page::Style::Title);
    page.NextLine(Page::Style::Title);
    page.NextLine();
    for (const std::string &line : {job.name, job.street, job.city}) {
        page.PutLeft(line, page.Left());
        page.NextLine();
    }
    page.NextLine();
    page.PutRight(report.Text(REPORT_DATE) + ": " + words.date, page.Right());
    page.NextLine();
    page.NextLine();

    PutItem(page, report.Text(REPORT_QUANTITY), report.Text(REPORT_ARTICLE),
            report.Text(REPORT_AMOUNT));
    page.Rule();
    for (const Item &item : job.items)
        PutItem(page, std::to_string(item.quantity), item.article,
                FormatAmount(item.cents, words.decimalSeparator));
    page.Rule();
    PutItem(page, "", report.Text(REPORT_TOTAL),
            FormatAmount(job.TotalCents(), words.decimalSeparator));
    page.NextLine();
    page.PutLeft(report.Text(REPORT_THANKS), page.Left());
    return page.Svg();
}
