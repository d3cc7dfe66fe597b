/* The one header that a host includes: every family of the library. */
#ifndef WEXELXI_H
#define WEXELXI_H

#include "wexelxi/comm.h"
#include "wexelxi/core.h"
#include "wexelxi/device_context.h"
#include "wexelxi/devmode.h"
#include "wexelxi/documents.h"
#include "wexelxi/environment.h"
#include "wexelxi/files.h"
#include "wexelxi/find.h"
#include "wexelxi/fonts.h"
#include "wexelxi/locale.h"
#include "wexelxi/memory.h"
#include "wexelxi/modules.h"
#include "wexelxi/paths.h"
#include "wexelxi/preferences.h"
#include "wexelxi/printers.h"
#include "wexelxi/processes.h"
#include "wexelxi/profile.h"
#include "wexelxi/resources.h"
#include "wexelxi/text.h"
#include "wexelxi/threads.h"
#include "wexelxi/time.h"
#include "wexelxi/types.h"
#include "wexelxi/unicode.h"

#endif
