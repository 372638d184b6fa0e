/** @file faulty.h
 *  Kernels that are wrong on purpose, one fault each, and sound ones beside them.
 *
 *  CONTENTS
 *    Faulty kernels                     FAULTY_...                                            28
 *    Sound kernels                      SOUND_...                                              4
 */
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * Faulty kernels
 *
 * Each was meant to be y = 2 x.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Stores full vectors of 8.
 *  @param[in]  n  (1), block: points
 *  @param[in]  x  (n), any: input
 *  @param[out] y  (n), any: output
 */
void FAULTY_WRITES_PAST_END(const int32_t* n, const double* x, double* y);

/** Begins one value too early.
 *  @like FAULTY_WRITES_PAST_END */
void FAULTY_WRITES_BEFORE(const int32_t* n, const double* x, double* y);

/** Reads the next value.
 *  @like FAULTY_WRITES_PAST_END */
void FAULTY_READS_PAST_END(const int32_t* n, const double* x, double* y);

/** Doubles in place first.
 *  @like FAULTY_WRITES_PAST_END */
void FAULTY_CHANGES_INPUT(const int32_t* n, const double* x, double* y);

/** Forgets the last point of odd blocks.
 *  @like FAULTY_WRITES_PAST_END */
void FAULTY_MISSES_A_POINT(const int32_t* n, const double* x, double* y);

/** Stops after 136 points.
 *  @like FAULTY_WRITES_PAST_END */
void FAULTY_STOPS_AT_SCRATCH(const int32_t* n, const double* x, double* y);

/** Tests for the end after the first point.
 *  @like FAULTY_WRITES_PAST_END */
void FAULTY_WORKS_ON_EMPTY(const int32_t* n, const double* x, double* y);

/** Rounds differently in full groups of 4 and in the rest.
 *  @like FAULTY_WRITES_PAST_END */
void FAULTY_DEPENDS_ON_PLACE(const int32_t* n, const double* x, double* y);

/** Adds nothing, but by way of the neighbour.
 *  @like FAULTY_WRITES_PAST_END */
void FAULTY_LEAKS_NAN(const int32_t* n, const double* x, double* y);

/** Works through one static scratch.
 *  @like FAULTY_WRITES_PAST_END */
void FAULTY_SHARES_SCRATCH(const int32_t* n, const double* x, double* y);

/** Reads an argument that it says it does not.
 *  @like FAULTY_WRITES_PAST_END
 *  @param[in]  unused  (1), unread: not read
 */
void FAULTY_READS_UNREAD(const int32_t* n, const int32_t* unused, const double* x, double* y);

/** Writes the points that are not listed too.
 *  @like FAULTY_WRITES_PAST_END
 *  @param[in]  count  (1), count: entries of the list
 *  @param[in]  list   (count), list: point numbers
 */
void FAULTY_IGNORES_LIST(const int32_t* n, const int32_t* count, const int32_t* list, const double* x, double* y);

/** Fills the rows beyond the block.
 *  @param[in]  n   (1), block: points
 *  @param[in]  ld  (1), stride: leading dimension
 *  @param[in]  x   (ld, 2), any: input
 *  @param[out] y   (ld, 2), any: output
 */
void FAULTY_FILLS_STRIDE(const int32_t* n, const int32_t* ld, const double* x, double* y);

/** Offsets of 32 bits.
 *  @param[in]  n   (1), block: points
 *  @param[in]  ld  (1), stride: leading dimension
 *  @param[in]  x   (ld, 3), any: input
 *  @param[out] y   (ld, 3), any: output
 */
void FAULTY_SHORT_OFFSET(const int32_t* n, const int32_t* ld, const double* x, double* y);

/** Counts entities from 0.
 *  @param[in]     n    (1), block: points
 *  @param[in]     map  (n), entity of y: entity of each point
 *  @param[in]     x    (n), any: input
 *  @param[in,out] y    (*), any: output
 */
void FAULTY_ENTITY_FROM_ZERO(const int32_t* n, const int32_t* map, const double* x, double* y);

/** Writes each record one place too late.
 *  @param[in]     n       (1), block: points
 *  @param[in,out] cursor  (1), cursor: record of the first point
 *  @param[in]     x       (n), any: input
 *  @param[out]    y       (1, *), record: output
 */
void FAULTY_RECORD_FROM_ZERO(const int32_t* n, int32_t* cursor, const double* x, double* y);

/** Moves the cursor by one, however many records it has written.
 *  @like FAULTY_RECORD_FROM_ZERO */
void FAULTY_KEEPS_CURSOR(const int32_t* n, int32_t* cursor, const double* x, double* y);

/** Takes the members of the set for points of the block without regard to its group.
 *  @like SOUND_SET */
void FAULTY_IGNORES_PLACE(const int32_t* n, const int32_t* blockNumber, const int32_t* blockSize,
                          const int32_t* groupNumber, const int32_t* groupSize, const int32_t* last, const int32_t* set,
                          int32_t* cursor, const double* x, double* y);

/** Writes the first part of each record, whichever is meant.
 *  @like SOUND_PART */
void FAULTY_FIRST_PART(const int32_t* n, const int32_t* parts, const int32_t* part, int32_t* cursor, const double* x,
                       double* y);

/** Sound: FAULTY_NEXT_POINTINDX is held against it.
 *  @like FAULTY_WRITES_PAST_END */
void FAULTY_NEXT_POINT(const int32_t* n, const double* x, double* y);

/** Gives listed points the values of their neighbours.
 *  @like FAULTY_IGNORES_LIST */
void FAULTY_NEXT_POINTINDX(const int32_t* n, const int32_t* count, const int32_t* list, const double* x, double* y);

/** Gives members the values of the first points.
 *  @like SOUND_SET */
void FAULTY_COUNTS_MEMBERS(const int32_t* n, const int32_t* blockNumber, const int32_t* blockSize,
                           const int32_t* groupNumber, const int32_t* groupSize, const int32_t* last,
                           const int32_t* set, int32_t* cursor, const double* x, double* y);

/** Scales up what is tiny, the smallest number for ever.
 *  @like FAULTY_WRITES_PAST_END */
void FAULTY_DOES_NOT_RETURN(const int32_t* n, const double* x, double* y);

/** Doubles in the environment of the caller: a huge number traps where he traps overflow.
 *  @like FAULTY_WRITES_PAST_END */
void FAULTY_TRAPS(const int32_t* n, const double* x, double* y);

/** Masks traps and gives them back, but not the flags.
 *  @like FAULTY_WRITES_PAST_END */
void FAULTY_LEAVES_FLAGS(const int32_t* n, const double* x, double* y);

/** Rounds as the caller does.
 *  @like FAULTY_WRITES_PAST_END */
void FAULTY_ROUNDS_AS_CALLER(const int32_t* n, const double* x, double* y);

/** Leaves an environment of its own behind.
 *  @like FAULTY_WRITES_PAST_END */
void FAULTY_KEEPS_ENVIRONMENT(const int32_t* n, const double* x, double* y);

/** Takes a NaN for zero.
 *  @like FAULTY_WRITES_PAST_END */
void FAULTY_SWALLOWS_NAN(const int32_t* n, const double* x, double* y);

/* ---------------------------------------------------------------------------------------------------------------------
 * Sound kernels
 * ------------------------------------------------------------------------------------------------------------------ */

/** y = 2 x for listed points.
 *  @like FAULTY_IGNORES_LIST */
void SOUND_LIST(const int32_t* n, const int32_t* count, const int32_t* list, const double* x, double* y);

/** y(r) += x by way of two maps, for a range of points.
 *  @param[in]     first  (1), first: first point
 *  @param[in]     last   (1), last: last point
 *  @param[in]     map    (last), entity of z: entity of each point
 *  @param[in]     map2   (*), entity of y: entity of y for each entity of z
 *  @param[in]     x      (2, last), any: input
 *  @param[in]     z      (*), any: factor
 *  @param[in,out] y      (*), any: sums
 */
void SOUND_RANGE(const int32_t* first, const int32_t* last, const int32_t* map, const int32_t* map2, const double* x,
                 const double* z, double* y);

/** y = 2 x for the members of a set, in records.
 *  @like FAULTY_RECORD_FROM_ZERO
 *  @param[in]     blockNumber  (1), place: number of the block
 *  @param[in]     blockSize    (1), place: its size
 *  @param[in]     groupNumber  (1), place: number of the group
 *  @param[in]     groupSize    (1), place: its size
 *  @param[in]     last         (1), count: members
 *  @param[in]     set          (last), set: members
 */
void SOUND_SET(const int32_t* n, const int32_t* blockNumber, const int32_t* blockSize, const int32_t* groupNumber,
               const int32_t* groupSize, const int32_t* last, const int32_t* set, int32_t* cursor, const double* x,
               double* y);

/** y = 2 x in one part of each record.
 *  @like FAULTY_RECORD_FROM_ZERO
 *  @param[in]     parts  (1), count: parts of a record
 *  @param[in]     part   (1), 1..parts: the part written here
 *  @param[out]    y      (1, parts, *), record: output
 */
void SOUND_PART(const int32_t* n, const int32_t* parts, const int32_t* part, int32_t* cursor, const double* x,
                double* y);

#ifdef __cplusplus
}
#endif
