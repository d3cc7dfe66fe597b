// The one road to the PPD calls and records: cupsGetPPD, ppdOpen, ppdClose, ppdFindOption,
// ppdPageSize. They are libcups' own; in newer printing stacks the ppd calls stand in a library
// apart under the same names, and the CMake variable WEXELXI_PPD_LIBRARY names it.
#pragma once

// Marked as deprecated, and nothing else gives out a PPD's options and choices.
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

#include <cups/cups.h>
#ifdef WEXELXI_PPD_LIBRARY
#include <ppd/ppd.h>
extern "C" const char *cupsGetPPD(const char *name);
#else
#include <cups/ppd.h>
#endif
