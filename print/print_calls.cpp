// Printing calls that exist in name only: there is nothing to draw on and nobody to ask.
#include "core/last_error.h"
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

// What every call that does nothing does.
void Ignore()
{
    LockScope lock;
    SetLastError(ERROR_SUCCESS);
}

} // namespace

BOOL DPtoLP(HDC, LPVOID, int32_t)
{
    Ignore();
    return FALSE;
}

BOOL LPtoDP(HDC, LPVOID, int32_t)
{
    Ignore();
    return FALSE;
}

int32_t StartDoc(HDC, LPCVOID)
{
    Ignore();
    return 0;
}

int32_t EndDoc(HDC)
{
    Ignore();
    return 0;
}

int32_t StartPage(HDC)
{
    Ignore();
    return 0;
}

int32_t EndPage(HDC)
{
    Ignore();
    return 0;
}

int32_t Escape(HDC, int32_t, int32_t, LPCSTR, LPVOID)
{
    Ignore();
    return 0;
}

HDC ResetDC(HDC, const DEVMODE *)
{
    Ignore();
    return nullptr;
}

int32_t AdvancedDocumentProperties(HWND, HPRINTER, LPCSTR, DEVMODE *, const DEVMODE *)
{
    Ignore();
    return 0;
}
