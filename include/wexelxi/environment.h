/* Environment variables. */
#ifndef WEXELXI_ENVIRONMENT_H
#define WEXELXI_ENVIRONMENT_H

#include "types.h"

/** \defgroup environment Environment variables
 *  @{ */

#ifdef __cplusplus
extern "C" {
#endif

/** Copies a variable's value.
 *  @param name         the variable; null gives 0 with last error 0.
 *  @param destination  receives the value with its NUL; null only asks for the size.
 *  @param size         bytes at destination.
 *  @return the value's length; if it does not fit, nothing is copied and the size needed, with
 *          the NUL, comes back; 0 if there is no such variable.
 *  Last error: 0; 203 (ERROR_ENVVAR_NOT_FOUND). Lock: yes. */
WEXELXI_API uint32_t GetEnvironmentVariable(const char *name, char *destination, uint32_t size);

/** Sets or removes a variable of the process.
 *  @param name   the variable; null gives 0.
 *  @param value  the value, copied; null removes the variable.
 *  @return 1, or 0 if the platform refused. Last error: 0. Lock: yes. */
WEXELXI_API int32_t SetEnvironmentVariable(const char *name, const char *value);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
