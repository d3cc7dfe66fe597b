// Font objects: records that share a face, kept in buckets, reused when deleted. The global lock
// guards buckets and records.
#include "fonts/font.h"

#include <cstdio>
#include <cstring>
#include <new>
#include <utility>

#include "core/lock.h"
#include "core/no_memory.h"
#include "fonts/device_context.h"

using namespace wexelxi;

namespace {

// Heads of the chains of live fonts. There come to be more of them as fonts grow in number, for a
// check to stay one short walk.
constexpr size_t kFirstBuckets = 32;
FontRecord *gFirstBuckets[kFirstBuckets];
FontRecord **gFontBuckets = gFirstBuckets;
size_t gBuckets = kFirstBuckets; // a power of two
size_t gLiveFonts = 0;
FontRecord *gFreeFonts = nullptr; // deleted records, the latest first

FontRecord *&BucketOf(const void *record)
{
    return gFontBuckets[(reinterpret_cast<uintptr_t>(record) >> 4) & (gBuckets - 1)];
}

void Push(FontRecord *&list, FontRecord *record)
{
    record->next = std::exchange(list, record);
}

FontRecord *Pop(FontRecord *&list)
{
    FontRecord *record = list;
    if (record)
        list = std::exchange(record->next, nullptr);
    return record;
}

// Moves all fonts to so many buckets, which were allocated or are the first ones.
void MoveTo(FontRecord **buckets, size_t count)
{
    FontRecord **const old = std::exchange(gFontBuckets, buckets);
    const size_t oldCount = std::exchange(gBuckets, count);
    for (size_t i = 0; i < oldCount; i++) {
        while (FontRecord *record = Pop(old[i]))
            Push(BucketOf(record), record);
    }
    if (old != gFirstBuckets)
        delete[] old;
}

void TakeIntoBucket(FontRecord *record)
{
    if (++gLiveFonts > gBuckets) {
        // Without memory for more the chains grow longer.
        if (auto **more = new (std::nothrow) FontRecord *[2 * gBuckets]())
            MoveTo(more, 2 * gBuckets);
    }
    Push(BucketOf(record), record);
}

void TakeOffBucket(FontRecord *record)
{
    FontRecord **link = &BucketOf(record);
    while (*link != record)
        link = &(*link)->next;
    *link = std::exchange(record->next, nullptr);
    gLiveFonts--;
}

} // namespace

bool wexelxi::FontIsValid(HFONT font)
{
    if (!font)
        return false;
    const FontRecord *record = BucketOf(font);
    while (record && record != font)
        record = record->next;
    return record != nullptr;
}

void wexelxi::FreeAllFonts()
{
    while (FontRecord *record = Pop(gFreeFonts))
        delete record;
    for (size_t i = 0; i < gBuckets; i++) {
        while (FontRecord *record = Pop(gFontBuckets[i]))
            delete record;
    }
    gLiveFonts = 0;
}

HFONT CreateFontIndirect(const LOGFONT *logfont)
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    return OrNoMemory(HFONT(), [&]() -> HFONT {
        const DeviceContext *context = FromHandle(logfont->lfDC);
        FacePtr face = FaceFor(*logfont, context ? context->dpiY : 0);
        if (!face)
            return nullptr;
        FontRecord *record = Pop(gFreeFonts);
        if (!record)
            record = new FontRecord;
        const int32_t resolution = context ? context->dpiY : gLOGPIXELSY;
        record->lineHeight = resolution / 96 + face->ascent + face->descent;
        record->face = std::move(face);
        record->bold = logfont->lfWeight >= FW_BOLD;
        record->italic = logfont->lfItalic;
        record->underline = logfont->lfUnderline;
        TakeIntoBucket(record);
        return record;
    });
}

HFONT CreateFont(int32_t height, int32_t, int32_t, int32_t, int32_t weight, uint8_t italic,
                 uint8_t underline, uint8_t, uint8_t, uint8_t, uint8_t, uint8_t, uint8_t,
                 LPCSTR faceName)
{
    LOGFONT logfont = {}; // what is left out is not read
    logfont.lfHeight = height;
    logfont.lfWeight = weight;
    logfont.lfItalic = italic;
    logfont.lfUnderline = underline;
    if (faceName)
        memcpy(logfont.lfFaceName, faceName, strnlen(faceName, LF_FACESIZE));
    return CreateFontIndirect(&logfont);
}

HGDIOBJ SelectObject(HDC hdc, HGDIOBJ object)
{
    BriefLockScope lock;
    if (object && !FontIsValid(object)) {
        lock.Count();
        ReportHandle("Invalid HFONT passed to SelectObject", 0);
        return nullptr;
    }
    return std::exchange(FromHandle(hdc)->selectedFont, object);
}

BOOL DeleteObject(HGDIOBJ object)
{
    LockScope lock;
    FontRecord *record = FontFromHandle(object);
    if (!record) {
        ReportHandle("Invalid HFONT passed to DeleteObject", 0);
        return TRUE;
    }
    TakeOffBucket(record);
    record->face.reset();
    Push(gFreeFonts, record);
    return TRUE;
}

void GetFontInfo(HFONT font, FontInfoRecord *info)
{
    const FontRecord *record = FontFromHandle(font);
    if (!record) {
        ReportHandle("Invalid HFONT passed to GetFontInfo", 0);
        return;
    }
    const Face &face = *record->face;
    snprintf(info->family, sizeof info->family, "%s", face.family.c_str());
    snprintf(info->filePath, sizeof info->filePath, "%s", face.filePath.c_str());
    info->height = face.ascent + face.descent;
    info->ascent = face.ascent;
    info->descent = face.descent;
    info->bold = record->bold;
    info->italic = record->italic;
    info->underline = record->underline;
}
