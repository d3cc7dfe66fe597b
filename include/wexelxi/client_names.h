/* The names that Win32 client code uses beside those of the library: for authors who bring such
 * code along. No other header includes this one, and it adds no function: a host that does not ask
 * for it sees none of it.
 *
 * Every name means here what the library does. What would compile and then do something else is
 * left out, with its reason at the gap; docs/porting.md walks through a port. */
#ifndef WEXELXI_CLIENT_NAMES_H
#define WEXELXI_CLIENT_NAMES_H

/** \defgroup client_names Names of client code
 *  Not part of wexelxi.h: include wexelxi/client_names.h. */

#include "client_constants.h"
#include "client_functions.h"
#include "client_types.h"

#endif
