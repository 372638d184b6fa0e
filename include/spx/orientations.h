/** @file spx/orientations.h
 *  Output of orientations.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_SPX_ORIENTATIONS_H
#define SHAREDANALYSIS_SPX_ORIENTATIONS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * Output of orientations
 *
 * Records of unit quaternions for a results database, appended to an output buffer block by block.  The rotation turns the
 * global axes into those of the element.  A spatial record is x y z w, a plane one z w (glo.h, Quaternions).
 *
 * Plain forms write every element of the block.  The counter is the number of the buffer's element, from 1, to which the first
 * element of the block belongs, and moves on by nblock.
 *
 * ELSET forms write the members of a set.  Element e of the model is element e - (blockNumber - 1) blockSize -
 * (groupNumber - 1) groupSize of the block.  The counter is a position in the sorted set and the number of the member in
 * the buffer; members are taken from there on up to the first that lies beyond the block, which waits for its own block, or
 * up to the last position.  A member that lies before the block is passed over without a record.  A block that holds no
 * member writes nothing; its counter moves past members that lie before the block and no further.
 *
 * Interleaved forms (nsub, isub) write record isub of the nsub records of each element; the call with isub = nsub moves the
 * counter.  The order of isub and counter differs between L3 and INVERT members and is meant.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Plane elements in global axes: the identity (0, 1) for every element.
 *  @param[in]     nblock   (1), block: elements
 *  @param[in,out] counter  (1), cursor: buffer's element of the first one here, from 1
 *  @param[in]     q        (1), unread: not read; kept for one list of arguments in space and plane
 *  @param[out]    out      (2, *), record: orientations z w
 */
void SPX_ODB_ORIENT2D(const int32_t* nblock, int32_t* counter, const double* q, double* out);

/** SPX_ODB_ORIENT2D for the members of an element set.
 *  @like SPX_ODB_ORIENT2D
 *  @param[in]     blockNumber  (1), place: number of the block, from 1
 *  @param[in]     blockSize    (1), place: elements of a block
 *  @param[in]     groupNumber  (1), place: number of the group of blocks, from 1
 *  @param[in]     groupSize    (1), place: elements of a group
 *  @param[in]     last         (1), count: last position of the set to be treated
 *  @param[in]     set          (last), set: element numbers, in increasing order
 *  @param[in,out] counter      (1), cursor: next position of the set, from 1
 */
void SPX_ODB_ORIENT2DELSET(const int32_t* nblock, int32_t* counter, const int32_t* blockNumber,
                           const int32_t* blockSize, const int32_t* groupNumber, const int32_t* groupSize,
                           const int32_t* last, const int32_t* set, const double* q, double* out);

/** Straight beams in the plane: the rotation that turns axis 1 into the direction from the first to the second end point.
 *  cos = dx/L, t = 1 + 2 cos.  t >= 1: w = sqrt(t + 1)/2, z = 2 sin/(4 w); else z = sqrt((1 - t)/4 + 1/2), w = 2 sin/(4
 *  z). A beam of zero length leaves NaN.
 *  @like SPX_ODB_ORIENT2D
 *  @param[in]     coordinates  (nblock, firstColumn+3), m: x of the first and the second end, y of the first and the second,
 *                              from firstColumn on
 *  @param[in]     firstColumn  (1), count: first of the four columns, from 1
 */
void SPX_ODB_ORIENT2DBEAM(const int32_t* nblock, int32_t* counter, const double* coordinates,
                          const int32_t* firstColumn, double* out);

/** SPX_ODB_ORIENT2DBEAM for the members of an element set.
 *  @like SPX_ODB_ORIENT2DELSET
 *  @param[in]     coordinates  (nblock, firstColumn+3), m: as SPX_ODB_ORIENT2DBEAM
 *  @param[in]     firstColumn  (1), count: first of the four columns, from 1
 */
void SPX_ODB_ORIENT2DBEAMELSET(const int32_t* nblock, int32_t* counter, const int32_t* blockNumber,
                               const int32_t* blockSize, const int32_t* groupNumber, const int32_t* groupSize,
                               const int32_t* last, const int32_t* set, const double* coordinates,
                               const int32_t* firstColumn, double* out);

/** Beams of several records in the plane: the identity (0, 1) in records 1 and 2 of each element.  Calls for the others
 *  write nothing; that for the last moves the counter.
 *  @like SPX_ODB_ORIENT2D
 *  @param[in]     nsub         (1), count: records of an element
 *  @param[in]     isub         (1), 1..nsub: the record written here
 *  @param[in]     coordinates  (1), unread: not read
 *  @param[in]     firstColumn  (1), unread: not read
 *  @param[out]    out          (2, nsub, *), record: orientations z w
 */
void SPX_ODB_ORIENT2DL3BEAM(const int32_t* nblock, int32_t* counter, const int32_t* nsub, const int32_t* isub,
                            const double* coordinates, const int32_t* firstColumn, double* out);

/** SPX_ODB_ORIENT2DL3BEAM for the members of an element set.
 *  @like SPX_ODB_ORIENT2DELSET
 *  @param[in]     nsub         (1), count: records of an element
 *  @param[in]     isub         (1), 1..nsub: the record written here
 *  @param[in]     coordinates  (1), unread: not read
 *  @param[in]     firstColumn  (1), unread: not read
 *  @param[out]    out          (2, nsub, *), record: orientations z w
 */
void SPX_ODB_ORIENT2DL3BEAMELSET(const int32_t* nblock, int32_t* counter, const int32_t* blockNumber,
                                 const int32_t* blockSize, const int32_t* groupNumber, const int32_t* groupSize,
                                 const int32_t* last, const int32_t* set, const int32_t* nsub, const int32_t* isub,
                                 const double* coordinates, const int32_t* firstColumn, double* out);

/** Elements in space: q r, the orientation q followed by the quarter turn r = (h, 0, 0, h) about its own axis 1, from the
 *  solver's axes to those of the database.  h is 0.70710678 with these eight digits, so records are 1.7e-9 shorter than
 *  unit quaternions; databases hold these numbers.
 *    x' = h x + h w, y' = h y + h z, z' = h z - h y, w' = h w - h x
 *  @like SPX_ODB_ORIENT2D
 *  @param[in]     q    (nblock, 4), -: orientations x y z w
 *  @param[out]    out  (4, *), record: orientations x y z w
 */
void SPX_ODB_ORIENT3D(const int32_t* nblock, int32_t* counter, const double* q, double* out);

/** SPX_ODB_ORIENT3D for the members of an element set.
 *  @like SPX_ODB_ORIENT2DELSET
 *  @param[in]     q    (nblock, 4), -: orientations x y z w
 *  @param[out]    out  (4, *), record: orientations x y z w
 */
void SPX_ODB_ORIENT3DELSET(const int32_t* nblock, int32_t* counter, const int32_t* blockNumber,
                           const int32_t* blockSize, const int32_t* groupNumber, const int32_t* groupSize,
                           const int32_t* last, const int32_t* set, const double* q, double* out);

/** SPX_ODB_ORIENT3D interleaved with other records of the elements.
 *  @like SPX_ODB_ORIENT3D
 *  @param[in]     nsub  (1), count: records of an element
 *  @param[in]     isub  (1), 1..nsub: the record written here
 *  @param[out]    out   (4, nsub, *), record: orientations x y z w
 */
void SPX_ODB_ORIENT3DL3(const int32_t* nblock, int32_t* counter, const int32_t* nsub, const int32_t* isub,
                        const double* q, double* out);

/** SPX_ODB_ORIENT3DL3 for the members of an element set.
 *  @like SPX_ODB_ORIENT3DELSET
 *  @param[in]     nblock   (1), block: elements
 *  @param[in]     nsub  (1), count: records of an element
 *  @param[in]     isub  (1), 1..nsub: the record written here
 *  @param[out]    out   (4, nsub, *), record: orientations x y z w
 */
void SPX_ODB_ORIENT3DL3ELSET(const int32_t* nblock, int32_t* counter, const int32_t* blockNumber,
                             const int32_t* blockSize, const int32_t* groupNumber, const int32_t* groupSize,
                             const int32_t* last, const int32_t* set, const int32_t* nsub, const int32_t* isub,
                             const double* q, double* out);

/** The inverse rotations, (0 - x, 0 - y, 0 - z, w): from the element's axes back to the global ones.  Not normalised; a
 *  zero component stays a positive zero.
 *  @like SPX_ODB_ORIENT3DL3
 *  @param[in]     nblock   (1), block: elements
 *  @param[in,out] counter  (1), cursor: buffer's element of the first one here, from 1
 */
void SPX_ODB_ORIENT3DINVERT(const int32_t* nblock, const int32_t* nsub, const int32_t* isub, int32_t* counter,
                            const double* q, double* out);

/** The same contract as SPX_ODB_ORIENT3DINVERT, for elements of several layers.
 *  @like SPX_ODB_ORIENT3DL3
 *  @param[in]     nblock   (1), block: elements
 *  @param[in,out] counter  (1), cursor: buffer's element of the first one here, from 1
 */
void SPX_ODB_ORIENT3DL3INVERT(const int32_t* nblock, const int32_t* nsub, const int32_t* isub, int32_t* counter,
                              const double* q, double* out);

/** SPX_ODB_ORIENT3DINVERT for the members of an element set.
 *  @like SPX_ODB_ORIENT3DELSET
 *  @param[in]     nblock   (1), block: elements
 *  @param[in]     nsub  (1), count: records of an element
 *  @param[in]     isub  (1), 1..nsub: the record written here
 *  @param[out]    out   (4, nsub, *), record: orientations x y z w
 */
void SPX_ODB_ORIENT3DELSETINVERT(const int32_t* nblock, const int32_t* nsub, const int32_t* isub, int32_t* counter,
                                 const int32_t* blockNumber, const int32_t* blockSize, const int32_t* groupNumber,
                                 const int32_t* groupSize, const int32_t* last, const int32_t* set, const double* q,
                                 double* out);

/** The same contract as SPX_ODB_ORIENT3DELSETINVERT, for elements of several layers.
 *  @like SPX_ODB_ORIENT3DELSET
 *  @param[in]     nblock   (1), block: elements
 *  @param[in]     nsub  (1), count: records of an element
 *  @param[in]     isub  (1), 1..nsub: the record written here
 *  @param[out]    out   (4, nsub, *), record: orientations x y z w
 */
void SPX_ODB_ORIENT3DL3ELSETINVERT(const int32_t* nblock, const int32_t* nsub, const int32_t* isub, int32_t* counter,
                                   const int32_t* blockNumber, const int32_t* blockSize, const int32_t* groupNumber,
                                   const int32_t* groupSize, const int32_t* last, const int32_t* set, const double* q,
                                   double* out);

/** Plane cohesive elements, from the direction cosines R of their two sides in the order 11 22 12 21.
 *    s = 1/2 - (R11 + R22)/4, z = sqrt(s), w = (R21 - R12)/(4 z); where s is at most 2.2e-308, (z, w) = (0, 1)
 *  The root is always that of the vector part: a rotation by a small angle a is right to 1e-16/a only, and one below 1e-8
 *  may become the identity or lose its length.  Databases hold these numbers.
 *  A side whose index is above 0 has a local orientation o; its record is then o q, the local orientation followed by q.
 *  Side j of element i has index (min(j, width), map(i)), which names a record of the table.
 *  @like SPX_ODB_ORIENT2D
 *  @param[in]     width     (1), count: indices of an entry
 *  @param[in]     columns   (1), count>=4: reals of an orientation of the table, at least count
 *  @param[in]     count     (1), code 0|2|4: reals used: 4 spatial x y z w, of which z and w are taken, any other number above 0
 *                           plane z w; 0 or less: no local orientations, and map, indices and table are not read
 *  @param[in]     map       (nblock), entity of indices: entry of each element
 *  @param[in]     indices   (width, *), entity of table: orientations of each entry, 0 or less for none
 *  @param[in]     table     (columns, *), -: local orientations
 *  @param[in]     matrices  (nblock, 4, 2), -: direction cosines of both sides
 *  @param[out]    out       (2, 2, *), record: orientations z w of both sides
 */
void SPX_ODB_ORIENTCNE2D(const int32_t* nblock, int32_t* counter, const int32_t* width, const int32_t* columns,
                         const int32_t* count, const int32_t* map, const int32_t* indices, const double* table,
                         const double* matrices, double* out);

/** SPX_ODB_ORIENTCNE2D for the members of an element set.
 *  @like SPX_ODB_ORIENTCNE2D
 *  @param[in]     blockNumber  (1), place: number of the block, from 1
 *  @param[in]     blockSize    (1), place: elements of a block
 *  @param[in]     groupNumber  (1), place: number of the group of blocks, from 1
 *  @param[in]     groupSize    (1), place: elements of a group
 *  @param[in]     last         (1), count: last position of the set to be treated
 *  @param[in]     set          (last), set: element numbers, in increasing order
 *  @param[in,out] counter      (1), cursor: next position of the set, from 1
 */
void SPX_ODB_ORIENTCNE2DELSET(const int32_t* nblock, int32_t* counter, const int32_t* blockNumber,
                              const int32_t* blockSize, const int32_t* groupNumber, const int32_t* groupSize,
                              const int32_t* last, const int32_t* set, const int32_t* width, const int32_t* columns,
                              const int32_t* count, const int32_t* map, const int32_t* indices, const double* table,
                              const double* matrices, double* out);

/** Cohesive elements in space, from the direction cosines R of their two sides in the order 11 22 33 12 23 31 21 32 13.
 *  d is the largest diagonal term, of equal ones 33 before 22 before 11.  With s = (1 - R11 - R22 - R33)/4 + d/2 the
 *  component of d's axis is sqrt(s) and the others are sums and differences of R over 4 sqrt(s); where s is at most
 *  2.2e-308, the record is (0, 0, 0, 1).  Accuracy and local orientations as SPX_ODB_ORIENTCNE2D.
 *  @like SPX_ODB_ORIENTCNE2D
 *  @param[in]     count     (1), code 0|4: any other above 0 as 4, local orientations x y z w; 0 or less: no local
 *                           orientations, and map, indices and table are not read
 *  @param[in]     matrices  (nblock, 9, 2), -: direction cosines of both sides
 *  @param[out]    out       (4, 2, *), record: orientations x y z w of both sides
 */
void SPX_ODB_ORIENTCNE3D(const int32_t* nblock, int32_t* counter, const int32_t* width, const int32_t* columns,
                         const int32_t* count, const int32_t* map, const int32_t* indices, const double* table,
                         const double* matrices, double* out);

/** SPX_ODB_ORIENTCNE3D for the members of an element set.
 *  @like SPX_ODB_ORIENTCNE2DELSET
 *  @param[in]     nblock   (1), block: elements
 *  @param[in]     count     (1), code 0|4: any other above 0 as 4, local orientations x y z w; 0 or less: no local
 *                           orientations, and map, indices and table are not read
 *  @param[in]     matrices  (nblock, 9, 2), -: direction cosines of both sides
 *  @param[out]    out       (4, 2, *), record: orientations x y z w of both sides
 */
void SPX_ODB_ORIENTCNE3DELSET(const int32_t* nblock, int32_t* counter, const int32_t* blockNumber,
                              const int32_t* blockSize, const int32_t* groupNumber, const int32_t* groupSize,
                              const int32_t* last, const int32_t* set, const int32_t* width, const int32_t* columns,
                              const int32_t* count, const int32_t* map, const int32_t* indices, const double* table,
                              const double* matrices, double* out);

/** Reinforcement of solids and membranes, from its axes: 1 along the bars, 2 across them in their layer, 3 the normal of
 *  the layer, orthogonal unit vectors.  Of left-handed axes the third is reversed.  Right to a few units in the last place
 *  for every rotation, half turns included.
 *  @like SPX_ODB_ORIENT2D
 *  @param[in]     axes  (nblock, 3, 3), -: axes in columns
 *  @param[out]    out   (4, *), record: orientations x y z w
 */
void SPX_ODB_ORIENTREBAR(const int32_t* nblock, int32_t* counter, const double* axes, double* out);

/** SPX_ODB_ORIENTREBAR for the members of an element set.
 *  @like SPX_ODB_ORIENT2DELSET
 *  @param[in]     axes  (nblock, 3, 3), -: axes in columns
 *  @param[out]    out   (4, *), record: orientations x y z w
 */
void SPX_ODB_ORIENTREBARELSET(const int32_t* nblock, int32_t* counter, const int32_t* blockNumber,
                              const int32_t* blockSize, const int32_t* groupNumber, const int32_t* groupSize,
                              const int32_t* last, const int32_t* set, const double* axes, double* out);

/** Reinforcement of axisymmetric shells.  Global axes are radius, axis of revolution and circumference.  The shell's axes
 *  are the meridian from the first to the second end point, the circumference (global axis 3) and their vector product;
 *  the record is their rotation, followed by the turn about the third of them that takes the meridian to the bars.  A
 *  meridian or a direction of length zero leaves NaN.
 *  @like SPX_ODB_ORIENT2DBEAM
 *  @param[in]     direction  (nblock, 2), -: direction of the bars along meridian and circumference, of any length
 *  @param[out]    out        (4, *), record: orientations x y z w
 */
void SPX_ODB_ORIENTREBAXSHELL(const int32_t* nblock, int32_t* counter, const double* coordinates,
                              const int32_t* firstColumn, const double* direction, double* out);

/** SPX_ODB_ORIENTREBAXSHELL for the members of an element set.
 *  @like SPX_ODB_ORIENT2DBEAMELSET
 *  @param[in]     nblock   (1), block: elements
 *  @param[in]     direction  (nblock, 2), -: direction of the bars along meridian and circumference, of any length
 *  @param[out]    out        (4, *), record: orientations x y z w
 */
void SPX_ODB_ORIENTREBAXSHELLELSET(const int32_t* nblock, int32_t* counter, const int32_t* blockNumber,
                                   const int32_t* blockSize, const int32_t* groupNumber, const int32_t* groupSize,
                                   const int32_t* last, const int32_t* set, const double* coordinates,
                                   const int32_t* firstColumn, const double* direction, double* out);

/** Reinforcement of shells: the shell's orientation, followed by the turn about its normal, axis 3, that takes axis 1 to
 *  the bars.  A direction of length zero leaves NaN.
 *  @like SPX_ODB_ORIENT3D
 *  @param[in]     direction  (nblock, 2), -: direction of the bars along the shell's axes 1 and 2, of any length
 */
void SPX_ODB_ORIENTREBSHELL(const int32_t* nblock, int32_t* counter, const double* q, const double* direction,
                            double* out);

/** SPX_ODB_ORIENTREBSHELL for the members of an element set.
 *  @like SPX_ODB_ORIENT3DELSET
 *  @param[in]     nblock   (1), block: elements
 *  @param[in]     direction  (nblock, 2), -: direction of the bars along the shell's axes 1 and 2, of any length
 */
void SPX_ODB_ORIENTREBSHELLELSET(const int32_t* nblock, int32_t* counter, const int32_t* blockNumber,
                                 const int32_t* blockSize, const int32_t* groupNumber, const int32_t* groupSize,
                                 const int32_t* last, const int32_t* set, const double* q, const double* direction,
                                 double* out);

#ifdef __cplusplus
}
#endif

#endif
