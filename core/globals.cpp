// The plain exported objects that no other room owns, with their values at load. The host reads and
// writes them directly; none is guarded by the lock.
#include "wexelxi/core.h"

HEADLESSERRORPROC gHDerrorProc = nullptr;
uint8_t gReady = 0;
uint8_t gTerminating = 0;
char *gWEXELfullPath = nullptr;
WXRESFUNC gWexelResFunc = nullptr;
uint8_t gFileMode = 0;
uint8_t gUseOverride = 0;
int32_t gPrinterXMargin = 0;
int32_t gPrinterYMargin = 0;
int32_t gLOGPIXELSX = 0;
int32_t gLOGPIXELSY = 0;
void *gGeneralFont = nullptr;
int32_t gScbarwid = 17;
uint32_t gHFILE = 0;
uint32_t gGAllocNum = 0;
uint32_t gGAllocMem = 0;
uint8_t gUseScratchImage = 0;
uint8_t gNeedNull = 0;
int32_t gTraceLevel = 0;

void SetHeadlessErrorProc(HEADLESSERRORPROC proc)
{
    gHDerrorProc = proc;
}
