// The common papers. The first row that matches a size wins, so the order is part of the table.
#include "print/paper_table.h"

#include <cstdlib>

namespace wexelxi {

namespace {

// Micrometres by which a size may miss a row: less than this, in each dimension.
constexpr int64_t kTolerance = 500;

bool IsNear(uint32_t row, int32_t micrometres)
{
    return std::llabs(int64_t{row} - micrometres) < kTolerance;
}

} // namespace

// clang-format off
const std::array<PaperTableRow, 69> gPaperTable = {{
    {210000,  297000,   9, 22}, // A4
    {215900,  279400,   1, 23}, // Letter
    {279400,  431800,   3, 24}, // Tabloid
    {431800,  279400,   4, 25}, // Ledger
    {215900,  355600,   5, 26}, // Legal
    {139700,  215900,   6, 27}, // Statement
    {184150,  266700,   7, 28}, // Executive
    {297000,  420000,   8, 29}, // A3
    {148000,  210000,  11, 30}, // A5
    {250000,  354000,  12, 31}, // B4
    {182000,  257000,  13, 32}, // B5
    {215900,  330200,  14, 33}, // Folio
    {215000,  275000,  15, 34}, // Quarto
    {254000,  355600,  16, 35}, // 10 by 14 inch
    {279400,  431800,  17, 36}, // 11 by 17 inch
    {215900,  279400,  18, 37}, // Note
    { 98425,  225425,  19, 38}, // #9 Envelope
    {104775,  241300,  20, 39}, // #10 Envelope
    {114300,  263525,  21, 40}, // #11 Envelope
    {120650,  279400,  22, 41}, // #12 Envelope
    {127000,  292100,  23, 42}, // #14 Envelope
    {431800,  558800,  24, 43}, // C Sheet
    {558800,  863600,  25, 44}, // D Sheet
    {863600, 1117600,  26, 45}, // E Sheet
    {110000,  220000,  27, 46}, // DL Envelope
    {162000,  229000,  28, 47}, // C5 Envelope
    {324000,  458000,  29, 48}, // C3 Envelope
    {229000,  324000,  30, 49}, // C4 Envelope
    {114000,  162000,  31, 50}, // C6 Envelope
    {114000,  229000,  32, 51}, // C65 Envelope
    {250000,  353000,  33, 52}, // B4 Envelope
    {176000,  250000,  34, 53}, // B5 Envelope
    {125000,  176000,  35, 54}, // B6 Envelope
    {110000,  230000,  36, 55}, // Italy Envelope
    { 98425,  190500,  37, 56}, // Monarch Envelope
    { 92075,  165100,  38, 57}, // 6 3/4 Envelope
    {377825,  279400,  39, 58}, // US Std Fanfold
    {215900,  304800,  40, 59}, // German Std Fanfold
    {215900,  330200,  41, 60}, // German Legal Fanfold
    {250000,  353000,  42, 61}, // B4 (ISO)
    {100000,  148000,  43, 62}, // Japanese Postcard
    {228600,  279400,  44, 63}, // 9 by 11 inch
    {254000,  279400,  45, 64}, // 10 by 11 inch
    {381000,  279400,  46, 65}, // 15 by 11 inch
    {220000,  220000,  47, 66}, // Envelope Invite
    {235585,  304800,  50, 67}, // Letter extra
    {235585,  381000,  51, 68}, // Legal Extra
    {296926,  457200,  52, 69}, // Tabloid Extra
    {235458,  322326,  53, 70}, // A4 Extra
    {210185,  279400,  54, 71}, // Letter Transverse
    {210000,  297000,  55, 72}, // A4 Transverse
    {235585,  304800,  56, 73}, // Letter Extra Transverse
    {227000,  356000,  57, 74}, // SuperA/A4
    {305000,  487000,  58, 75}, // SuperB/A3
    {215900,  322326,  59, 76}, // 8.5 by 12.69 inch
    {210000,  330000,  60, 77}, // A4 Plus
    {148000,  210000,  61, 78}, // A5 Transverse
    {182000,  257000,  62, 79}, // B5 (JIS) Transverse
    {322000,  445000,  63, 80}, // A3 Extra
    {174000,  235000,  64, 81}, // A5 Extra
    {201000,  276000,  65, 82}, // B5 (ISO) Extra
    {420000,  594000,  66, 83}, // A2
    {297000,  420000,  67, 84}, // A3 Transverse
    {322000,  445000,  68, 85}, // Extra Transverse
    {105000,  148000,  70, 87}, // A6
    {220000,  110000, 119, 88}, // DL Envelope Rotated
    {210000,  405000, 120, 89}, // A4 Long
    { 69850,  127000, 121, 90}, // Organizer J
    { 95250,  171450, 122, 91}, // Organizer K
}};
// clang-format on

const PaperTableRow *FindPaper(int32_t width, int32_t length)
{
    for (const PaperTableRow &row : gPaperTable) {
        if (IsNear(row.width, width) && IsNear(row.length, length))
            return &row;
    }
    return nullptr;
}

} // namespace wexelxi
