// Printing calls that exist in name only: there is nothing to draw on and nobody to ask.
#include "core/lock.h"
#include "wexelxi/documents.h"

using namespace wexelxi;

int32_t PrinterProperties(HGLOBAL)
{
    return IDCANCEL;
}

void UpdatePPDDevMode(const char *, const char *, const DEVMODE *) {}

HDC CreateIC(LPCSTR driver, LPCSTR device, LPCSTR output, LPCVOID initData)
{
    return CreateDC(driver, device, output, initData);
}

namespace {

// What every call that does nothing does and gives.
template <typename Result>
Result Nothing()
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
    return {};
}

} // namespace

BOOL DPtoLP(HDC, LPVOID, int32_t)
{
    return Nothing<BOOL>();
}

BOOL LPtoDP(HDC, LPVOID, int32_t)
{
    return Nothing<BOOL>();
}

int32_t StartDoc(HDC, LPCVOID)
{
    return Nothing<int32_t>();
}

int32_t EndDoc(HDC)
{
    return Nothing<int32_t>();
}

int32_t StartPage(HDC)
{
    return Nothing<int32_t>();
}

int32_t EndPage(HDC)
{
    return Nothing<int32_t>();
}

int32_t Escape(HDC, int32_t, int32_t, LPCSTR, LPVOID)
{
    return Nothing<int32_t>();
}

HDC ResetDC(HDC, const DEVMODE *)
{
    return Nothing<HDC>();
}

int32_t AdvancedDocumentProperties(HWND, HPRINTER, LPCSTR, DEVMODE *, const DEVMODE *)
{
    return Nothing<int32_t>();
}
