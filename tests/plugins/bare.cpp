// A plug-in that exports neither DllMain nor a resource function.
#include "wexelxi/types.h"

extern "C" WEXELXI_API int BareAnswer(void)
{
    return 1;
}
