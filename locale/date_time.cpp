// Date and time text: the exported functions around the picture engine.
#include "core/last_error.h"
#include "core/lock.h"
#include "core/no_memory.h"
#include "locale/language.h"
#include "locale/picture.h"
#include "wexelxi/locale.h"
#include "wexelxi/time.h"

using namespace wexelxi;

namespace {

// FormatLocaleString with the lock held.
int32_t Format(uintptr_t language, uint32_t flags, const SYSTEMTIME &time, const char *picture,
               char *out, int32_t size)
{
    AssertLockHeld();
    if (!out || size < 1)
        return FailWith(ERROR_INSUFFICIENT_BUFFER, 0);
    return OrNoMemory(0, [&] {
        const PictureNames names = {language, FindLocaleValue};
        const PictureResult result = FormatPicture(picture, flags, time, names, out, size);
        if (!result.fits)
            SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return result.count;
    });
}

// Formats with what the caller gave or left to the language and the clock. The last error is the
// result.
int32_t FormatWithDefaults(uintptr_t language, uint32_t flags, const SYSTEMTIME *time,
                           const char *picture, uint32_t pictureKey, char *out, int32_t size)
{
    language = LanguageMeantBy(language);
    SYSTEMTIME now;
    if (!time) {
        GetSystemTime(&now);
        time = &now;
    }
    if (!picture)
        picture = FindLocaleValue(language, pictureKey);
    const int32_t count = Format(language, flags, *time, picture, out, size);
    SetLastError(static_cast<uint32_t>(count));
    return count;
}

} // namespace

int32_t FormatLocaleString(uintptr_t language, uintptr_t, uint32_t flags, const SYSTEMTIME *time,
                           const char *picture, char *out, int32_t size)
{
    LockScope lock;
    return Format(language, flags, *time, picture, out, size);
}

int32_t GetDateFormat(uintptr_t language, uint32_t flags, const SYSTEMTIME *time,
                      const char *picture, char *out, int32_t size)
{
    LockScope lock;
    const uint32_t key = flags & DATE_LONGDATE ? LOCALE_SLONGDATE : LOCALE_SSHORTDATE;
    return FormatWithDefaults(language, 0, time, picture, key, out, size);
}

int32_t GetTimeFormat(uintptr_t language, uint32_t flags, const SYSTEMTIME *time,
                      const char *picture, char *out, int32_t size)
{
    LockScope lock;
    return FormatWithDefaults(language, flags, time, picture, LOCALE_STIMEFORMAT, out, size);
}
