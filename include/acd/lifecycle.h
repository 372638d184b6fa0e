/** @file acd/lifecycle.h
 *  Lifecycle of the diagnostics.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_ACD_LIFECYCLE_H
#define SHAREDANALYSIS_ACD_LIFECYCLE_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * Lifecycle
 * ------------------------------------------------------------------------------------------------------------------ */

/** Starts the diagnostics; counted as Shared_Analysis_XP_initialize, which calls it.
 *  @param[in,out] counter  (1), -: live components of the caller, raised by one on the first call
 */
void acd_initialize(int32_t* counter);

/** Stops the diagnostics; the last call also deletes the block handler of the calling thread, with what it still holds.
 *  @param[in,out] counter  (1), -: live components of the caller, lowered by one on the last call
 */
void acd_finalize(int32_t* counter);

#ifdef __cplusplus
}
#endif

#endif
