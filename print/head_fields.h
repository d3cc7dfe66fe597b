// The numbers in the head of a settings record: one row a field that is not 0 in a new record or
// that passes to another one.
#pragma once

#include <cstddef>
#include <cstdint>

#include "wexelxi/devmode.h"

namespace wexelxi {

// When a merge takes a field from its source.
enum class Passing { kNever, kAlways, kWithPaper, kByName };

struct HeadField {
    size_t offset;
    size_t width;
    int32_t standard; // in a new record
    Passing passing;

    size_t end() const { return offset + width; }
};

#define HEAD_FIELD(field, standard, passing)                                         \
    {                                                                                \
        offsetof(DEVMODE, field), sizeof(DEVMODE::field), standard, Passing::passing \
    }

// clang-format off
inline constexpr HeadField kHeadFields[] = {
    HEAD_FIELD(dmSpecVersion,   DM_SPECVERSION,      kNever),
    HEAD_FIELD(dmDriverVersion, DM_DRIVERVERSION,    kNever),
    HEAD_FIELD(dmSize,          sizeof(DEVMODE),     kNever),
    HEAD_FIELD(dmFields,        DM_ALLFIELDS,        kAlways),
    HEAD_FIELD(dmOrientation,   DMORIENT_PORTRAIT,   kAlways),
    HEAD_FIELD(dmPaperSize,     DMPAPER_A4,          kWithPaper),
    HEAD_FIELD(dmPaperLength,   2970,                kWithPaper),
    HEAD_FIELD(dmPaperWidth,    2100,                kWithPaper),
    HEAD_FIELD(dmScale,         100,                 kAlways),
    HEAD_FIELD(dmCopies,        1,                   kAlways),
    HEAD_FIELD(dmDefaultSource, DMBIN_USER,          kByName),
    HEAD_FIELD(dmColor,         DMCOLOR_MONOCHROME,  kAlways),
    HEAD_FIELD(dmDuplex,        DMDUP_SIMPLEX,       kAlways),
    HEAD_FIELD(dmCollate,       DMCOLLATE_FALSE,     kAlways),
    HEAD_FIELD(dmJobSheetStart, DMJOBSHEET_NONE,     kAlways),
    HEAD_FIELD(dmJobSheetEnd,   DMJOBSHEET_NONE,     kAlways),
};
// clang-format on

#undef HEAD_FIELD

} // namespace wexelxi
