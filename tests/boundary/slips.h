/** @file slips.h
 *  A header with one slip in each place that the interface tool looks at.
 *
 *  CONTENTS
 *    Lines                              SLIP_...                                              17
 *    Wrong count                        SLIP_...                                               2
 *    Wrong title                        SLIP_...                                               1
 */
#include <stdint.h>

/* ---------------------------------------------------------------------------------------------------------------------
 * Lines
 * ------------------------------------------------------------------------------------------------------------------ */

/** No line for y.
 *  @param[in] x  (1), -: first
 */
void SLIP_MISSING(const int32_t* x, double* y);

/** A line too many.
 *  @param[in] x  (1), -: first
 *  @param[in] z  (1), -: no argument
 */
void SLIP_EXTRA(const int32_t* x);

/** An input that may be written.
 *  @param[in] x  (1), -: first
 */
void SLIP_INPUT(int32_t* x);

/** An output that may not be written.
 *  @param[out] y  (1), -: first
 */
void SLIP_OUTPUT(const int32_t* y);

/** An output by value.
 *  @param[out] n  (1), -: first
 */
void SLIP_VALUE(int64_t n);

/** A shape that nobody knows.
 *  @param[in] x  (m+1), -: first
 */
void SLIP_SHAPE(const double* x);

/** Two that are like each other.
 *  @like SLIP_CIRCLE_B
 */
void SLIP_CIRCLE_A(const double* x);

/** Two that are like each other.
 *  @like SLIP_CIRCLE_A
 */
void SLIP_CIRCLE_B(const double* x);

/** Like nobody.
 *  @like SLIP_NOBODY
 */
void SLIP_LIKE(void);

/** A line that is three hops away, and one that is two.
 *  @like SLIP_NEAR
 */
void SLIP_FAR(const int32_t* n, const double* y);
/** On the way.
 *  @like SLIP_OUTPUT_OF_BLOCK
 */
void SLIP_NEAR(const int32_t* n);
/** The lines of both.
 *  @like SLIP_BLOCK_LENGTH
 *  @param[in] y  (1), -: second
 */
void SLIP_OUTPUT_OF_BLOCK(const int32_t* n, const double* y);
/** The first line.
 *  @param[in] n  (1), block: first
 */
void SLIP_BLOCK_LENGTH(const int32_t* n);

/** A misspelt command.
 *  @parma[in] x  (1), -: first
 *  @param[in] x  -: first
 *  @param[into] x  (1), -: first
 */
void SLIP_GRAMMAR(void);

/** Twice the same.
 *  @param[in] x  (1), -: first
 *  @param[in] x  (1), -: first
 */
void SLIP_TWICE(const double* x);

/** A map to nowhere.
 *  @param[in] map  (*), entity of H: first
 */
void SLIP_ENTITY(const int32_t* map);

/** A block of half a point.
 *  @param[in] n  (1), block: first
 */
void SLIP_BLOCK(const double* n);

/* ---------------------------------------------------------------------------------------------------------------------
 * Wrong count
 * ------------------------------------------------------------------------------------------------------------------ */

/** The only one. */
void SLIP_COUNT(void);

/* ---------------------------------------------------------------------------------------------------------------------
 * Other title
 * ------------------------------------------------------------------------------------------------------------------ */

void SLIP_NO_COMMENT(void);
