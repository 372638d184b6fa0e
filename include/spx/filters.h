/** @file spx/filters.h
 *  Output filters.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_SPX_FILTERS_H
#define SHAREDANALYSIS_SPX_FILTERS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * Output filters
 *
 * A digital low-pass filter for output that is written far more coarsely than the increments: a cascade of K second-order
 * sections, advanced by one increment for a block of values.  Each section is the difference equation
 *    y = b0 x + b1 x1 + b2 x2 - a1 y1 - a2 y2
 * of its input x and output y now and one and two increments back.  The history has 2 K + 2 slots, each a block like the field:
 * slots 2k-1 and 2k hold the inputs of section k one and two increments back, slots 2k+1 and 2k+2 its outputs, which are the
 * inputs of the next section; slot 2K+1 holds the filter's last output.
 *
 * An operator follows a running value of the signal: 1 the maximum, 2 the minimum, 3 the largest magnitude (a value of at least
 * 0); any other code takes each value as it comes.  `state` keeps it from increment to increment.  A value that is not a number
 * takes the place of the one kept and stays.  Time members also keep the time at which the operator took its value, for each
 * value of the field; the caller fills these times before the first increment.
 *
 * ELSET (and ELS) members do the same for the listed points of the block; the values, slots, states and times of other points
 * are left alone.  Coefficients for a type, an order and a cut-off: docs/output-filters.md.
 * Source of the form: A. V. Oppenheim, R. W. Schafer, Discrete-Time Signal Processing (1989), 6.3.
 * ------------------------------------------------------------------------------------------------------------------ */

/** One increment: field := the filter's output for the input field.  The history is read from the first increment on: call
 *  SPX_OPE_INIFILTERFLD with the first field before.  With K = 0 the field keeps its value and enters slot 1,
 *  what was there slot 2.
 *  @param[in]     nblock     (1), block: points
 *  @param[in]     ncomp      (1), count: components of the field
 *  @param[in]     spare      (1), unread: not used
 *  @param[in]     filterdef  (1), count: record of the filter, of which the first integer is read, K; none below 1
 *  @param[in,out] field      (nblock, ncomp), any: raw values, then filtered ones
 *  @param[in]     spare2     (1), unread: not used
 *  @param[in]     coef       (5, filterdef), -: b0, b1, b2, a1, a2 of each section
 *  @param[in,out] hist       (nblock, ncomp, 2*filterdef+2), any: history
 */
void SPX_OPE_FILTERFLD(const int32_t* nblock, const int32_t* ncomp, const int32_t* spare, const int32_t* filterdef,
                       double* field, const int32_t* spare2, const double* coef, double* hist);

/** SPX_OPE_FILTERFLD for the listed points.
 *  @like SPX_OPE_FILTERFLD
 *  @param[in]     count      (1), count: entries of the list; below 1 does nothing
 *  @param[in]     list       (count), list: point numbers
 */
void SPX_OPE_FILTERFLDELSET(const int32_t* nblock, const int32_t* count, const int32_t* list, const int32_t* ncomp,
                            const int32_t* spare, const int32_t* filterdef, double* field, const int32_t* spare2,
                            const double* coef, double* hist);

/** Fills the history with the field, or in mode 2 with given values.  A constant signal then passes unchanged from the
 *  first increment, provided that every section has unit gain at zero frequency, b0 + b1 + b2 = 1 + a1 + a2: every slot gets
 *  the same value, so it is not enough that the cascade as a whole has.  Coefficients of this project's design are scaled so.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  mode    (1), code 1|2: 2 fills with value, any other code with field
 *  @param[in]  ncomp   (1), count: components of the field
 *  @param[in]  K       (1), count: sections of the filter; none below 1
 *  @param[in]  spare   (1), unread: not used
 *  @param[in]  field   (nblock, ncomp), any: present values
 *  @param[in]  value   (nblock, ncomp), any: values of mode 2; not read in another
 *  @param[out] hist    (nblock, ncomp, 2*K+2), any: history
 */
void SPX_OPE_INIFILTERFLD(const int32_t* nblock, const int32_t* mode, const int32_t* ncomp, const int32_t* K,
                          const int32_t* spare, const double* field, const double* value, double* hist);

/** SPX_OPE_INIFILTERFLD for the listed points.
 *  @like SPX_OPE_INIFILTERFLD
 *  @param[in]     count  (1), count: entries of the list; below 1 does nothing
 *  @param[in]     list   (count), list: point numbers
 *  @param[in,out] hist   (nblock, ncomp, 2*K+2), any: history
 */
void SPX_OPE_INIFILTERFLDELSET(const int32_t* nblock, const int32_t* count, const int32_t* list, const int32_t* mode,
                               const int32_t* ncomp, const int32_t* K, const int32_t* spare, const double* field,
                               const double* value, double* hist);

/** SPX_OPE_FILTERFLD, then the operator on the filtered value: field and state := the operator's value.  The filtered value
 *  itself is in slot 2K+1.
 *  @like SPX_OPE_FILTERFLD
 *  @param[in]     operation  (1), code 1|2|3|0: operator
 *  @param[in,out] field      (nblock, ncomp), any: raw values, then the operator's
 *  @param[in,out] state      (nblock, ncomp), any: the operator's value so far
 */
void SPX_OPE_FILTEROPERFLD(const int32_t* nblock, const int32_t* ncomp, const int32_t* operation,
                           const int32_t* filterdef, double* field, double* state, const double* coef, double* hist);

/** SPX_OPE_FILTEROPERFLD for the listed points.
 *  @like SPX_OPE_FILTEROPERFLD
 *  @param[in]     count      (1), count: entries of the list; below 1 does nothing
 *  @param[in]     list       (count), list: point numbers
 */
void SPX_OPE_FILTEROPERFLDELSET(const int32_t* nblock, const int32_t* count, const int32_t* list, const int32_t* ncomp,
                                const int32_t* operation, const int32_t* filterdef, double* field, double* state,
                                const double* coef, double* hist);

/** SPX_OPE_INIFILTERFLD, and state := what the operator makes of the same value (its magnitude for the largest one).
 *  @like SPX_OPE_INIFILTERFLD
 *  @param[in]  operation  (1), code 1|2|3|0: operator
 *  @param[out] state      (nblock, ncomp), any: the operator's first value
 */
void SPX_OPE_INIFILTEROPERFLD(const int32_t* nblock, const int32_t* mode, const int32_t* ncomp, const int32_t* K,
                              const int32_t* operation, const double* field, const double* value, double* hist,
                              double* state);

/** SPX_OPE_INIFILTEROPERFLD for the listed points.
 *  @like SPX_OPE_INIFILTEROPERFLD
 *  @param[in]     count  (1), count: entries of the list; below 1 does nothing
 *  @param[in]     list   (count), list: point numbers
 *  @param[in,out] hist   (nblock, ncomp, 2*K+2), any: history
 *  @param[in,out] state  (nblock, ncomp), any: the operator's first value
 */
void SPX_OPE_INIFILTEROPERFLDELSET(const int32_t* nblock, const int32_t* count, const int32_t* list,
                                   const int32_t* mode, const int32_t* ncomp, const int32_t* K,
                                   const int32_t* operation, const double* field, const double* value, double* hist,
                                   double* state);

/** The operator on the raw value: field and state := its value.
 *  @param[in]     nblock     (1), block: points
 *  @param[in]     ncomp      (1), count: components of the field
 *  @param[in]     operation  (1), code 1|2|3|0: operator
 *  @param[in,out] field      (nblock, ncomp), any: raw values, then the operator's
 *  @param[in,out] state      (nblock, ncomp), any: the operator's value so far
 */
void SPX_OPE_ONLYOPERATORFLD(const int32_t* nblock, const int32_t* ncomp, const int32_t* operation, double* field,
                             double* state);

/** SPX_OPE_ONLYOPERATORFLD for the listed points.
 *  @like SPX_OPE_ONLYOPERATORFLD
 *  @param[in]     count      (1), count: entries of the list; below 1 does nothing
 *  @param[in]     list       (count), list: point numbers
 */
void SPX_OPE_ONLYOPERATFLDELSET(const int32_t* nblock, const int32_t* count, const int32_t* list, const int32_t* ncomp,
                                const int32_t* operation, double* field, double* state);

/** state := what the operator makes of the field, or in mode 2 of given values.
 *  @like SPX_OPE_INIFILTEROPERFLD
 */
void SPX_OPE_INIONLYOPERATORFLD(const int32_t* nblock, const int32_t* mode, const int32_t* ncomp,
                                const int32_t* operation, const double* field, const double* value, double* state);

/** SPX_OPE_INIONLYOPERATORFLD for the listed points.
 *  @like SPX_OPE_INIFILTEROPERFLD
 *  @param[in]     count  (1), count: entries of the list; below 1 does nothing
 *  @param[in]     list   (count), list: point numbers
 *  @param[in,out] state  (nblock, ncomp), any: the operator's first value
 */
void SPX_OPE_INIONLYOPERATFLDELSET(const int32_t* nblock, const int32_t* count, const int32_t* list,
                                   const int32_t* mode, const int32_t* ncomp, const int32_t* operation,
                                   const double* field, const double* value, double* state);

/** SPX_OPE_FILTEROPERFLD that also keeps when the operator took its value: times := time where the value enters now.
 *  @like SPX_OPE_FILTEROPERFLD
 *  @param[in]     time   (1), s: time at the end of this increment
 *  @param[in,out] times  (nblock, ncomp), s: time of the operator's value
 */
void SPX_OPE_OPERFILTERTIME(const int32_t* nblock, const int32_t* ncomp, const int32_t* operation,
                            const int32_t* filterdef, double* field, double* state, const double* coef, double* hist,
                            const double* time, double* times);

/** SPX_OPE_OPERFILTERTIME for the listed points.
 *  @like SPX_OPE_FILTEROPERFLD
 *  @param[in]     count  (1), count: entries of the list; below 1 does nothing
 *  @param[in]     list   (count), list: point numbers
 *  @param[in]     time   (1), s: time at the end of this increment
 *  @param[in,out] times  (nblock, ncomp), s: time of the operator's value
 */
void SPX_OPE_OPERFILTERTIMEELS(const int32_t* nblock, const int32_t* count, const int32_t* list, const int32_t* ncomp,
                               const int32_t* operation, const int32_t* filterdef, double* field, double* state,
                               const double* coef, double* hist, const double* time, double* times);

/** SPX_OPE_ONLYOPERATORFLD that also keeps when the operator took its value.
 *  @like SPX_OPE_OPERFILTERTIME
 *  @param[in]     nblock     (1), block: points
 *  @param[in]     ncomp      (1), count: components of the field
 */
void SPX_OPE_ONLYOPERFILTERTIME(const int32_t* nblock, const int32_t* ncomp, const int32_t* operation, double* field,
                                double* state, const double* time, double* times);

/** SPX_OPE_ONLYOPERFILTERTIME for the listed points.
 *  @like SPX_OPE_OPERFILTERTIMEELS
 *  @param[in]     nblock     (1), block: points
 *  @param[in]     ncomp      (1), count: components of the field
 */
void SPX_OPE_ONLYOPERFILTERTIMEELS(const int32_t* nblock, const int32_t* count, const int32_t* list,
                                   const int32_t* ncomp, const int32_t* operation, double* field, double* state,
                                   const double* time, double* times);

#ifdef __cplusplus
}
#endif

#endif
