/** @file acd/processes.h
 *  Diagnostics of several processes, printed output.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_ACD_PROCESSES_H
#define SHAREDANALYSIS_ACD_PROCESSES_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * Processes
 * ------------------------------------------------------------------------------------------------------------------ */

/** The calling thread collects from now on, unless its process is the owner, which is rank 0.  A process has its rank by
 *  then: what it was when the thread reported before does not count. */
void acd_handler_setactive_xpl_c(void);

/** acd_handler_setactive_xpl_c. */
void ACD_HANDLER_SETACTIVE_XPL(void);

/** Brings what the calling thread of each process has collected to the owner, which files it in the explicit extractor
 *  with the rank as domain: ranks in increasing order, the records of a rank in the order of recording. Every process
 *  calls it, from one thread. Does nothing in a thread whose handler is inactive.  What is lost on the way, or does not
 *  agree with its code, becomes an internal error of the explicit solver. */
void acd_comm_blocks(void);

/* ---------------------------------------------------------------------------------------------------------------------
 * Printed output
 * ------------------------------------------------------------------------------------------------------------------ */

/** Writes one line to a unit of the host's message output; an empty text becomes a blank line.
 *  @param[in] unit  (1), -: channel, by value
 *  @param[in] text  (*), text: line
 */
void acd_write(int32_t unit, const char* text);

/** Brings a unit of the host's message output up to date.
 *  @param[in] unit  (1), -: channel, by value
 */
void acd_flush(int32_t unit);

#ifdef __cplusplus
}
#endif

#endif
