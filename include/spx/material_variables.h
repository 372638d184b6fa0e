/** @file spx/material_variables.h
 *  Material variables of threads.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_SPX_MATERIAL_VARIABLES_H
#define SHAREDANALYSIS_SPX_MATERIAL_VARIABLES_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * Material variables
 *
 * A record of each thread: what outer code sets once, kernels deep in its call chain read without further arguments and
 * without a lock.  It is made by the first access of a thread, with undefined values, and released at the end of the thread.
 * The addresses stay the same for the life of the thread and may be written through.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Fills the record of the calling thread.
 *  @param[in] ptrs  (9), address: addresses
 *  @param[in] ints  (3), -: integers
 *  @param[in] real  (1), any: real
 */
void SPX_MATVARSETVAR(const int64_t* ptrs, const int32_t* ints, const double* real);

/** Where the 9 addresses of the calling thread's record are. */
int64_t* SPX_MATVARGETPTR(void);

/** Where its 3 integers are. */
int32_t* SPX_MATVARGETINT(void);

/** Where its real is. */
double* SPX_MATVARGETREAL(void);

#ifdef __cplusplus
}
#endif

#endif
