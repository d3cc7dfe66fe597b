// A plug-in that does not load: nobody defines what it needs.
#include "wexelxi/types.h"

extern "C" int gNobodyDefinesThis;
extern "C" WEXELXI_API int *BrokenAnswer(void)
{
    return &gNobodyDefinesThis;
}
