/** @file glo/sorts.h
 *  Sorts.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_GLO_SORTS_H
#define SHAREDANALYSIS_GLO_SORTS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * Sorts
 *
 * The result is that of straight insertion, which passes an entry only over strictly greater keys: entries of equal key
 * keep their order.  A NaN key is never passed and passes nothing: its entry keeps its place in the list, and the entries
 * before it and behind it are sorted by themselves.  Keys are not moved.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Reorders a list so that keys(list(k)) does not decrease.
 *  @param[in,out] list  (n), entity of keys: numbers of the entries to sort by
 *  @param[in]     keys  (*), any: one key for each entity
 *  @param[in]     n     (1), length: entries of the list; below 2 does nothing
 */
void GLO_UTI_INSSORTI(int32_t* list, const int32_t* keys, const int32_t* n);

/** The same with real keys.
 *  @like GLO_UTI_INSSORTI
 */
void GLO_UTI_INSSORTR(int32_t* list, const double* keys, const int32_t* n);

/** Sets the flag to 1 when some difference list(k+1) - list(k), taken modulo 2^32, is negative; else leaves it alone.
 *  @param[in,out] flag  (1), -: clear it before the call
 *  @param[in]     list  (n), any: the list
 *  @param[in]     n     (1), length: entries
 */
void GLO_UTI_CHKSORTI(int32_t* flag, const int32_t* list, const int32_t* n);

#ifdef __cplusplus
}
#endif

#endif
