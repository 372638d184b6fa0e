/** @file spx/lifecycle.h
 *  Lifecycle of the explicit kernels.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_SPX_LIFECYCLE_H
#define SHAREDANALYSIS_SPX_LIFECYCLE_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * Lifecycle
 * ------------------------------------------------------------------------------------------------------------------ */

/** Starts the explicit kernels; counted as Shared_Analysis_XP_initialize, which calls it.
 *  @param[in,out] counter  (1), -: live components of the caller, raised by one on the first call
 */
void spx_initialize(int32_t* counter);

/** Stops the explicit kernels.
 *  @param[in,out] counter  (1), -: live components of the caller, lowered by one on the last call
 */
void spx_finalize(int32_t* counter);

#ifdef __cplusplus
}
#endif

#endif
