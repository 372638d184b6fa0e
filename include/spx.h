/** @file spx.h
 *  Kernels of SharedAnalysis for the explicit solver.  Conventions, layouts and the grammar of the argument lines: glo.h.
 *
 *  Elements.  Element arrays (ld, node, component) hold the element fastest: A(e,I,c) = A(((c-1)*nodes + (I-1))*ld + e).
 *  The mask is 0.0 for an element that takes part and 1.0 for one that does not (deleted or degenerate); kernels may set it
 *  to 1.0, never back.  The 8-node brick has its nodes at (xi, eta, zeta) =
 *    1 (-,-,-)  2 (+,-,-)  3 (+,+,-)  4 (-,+,-)  5 (-,-,+)  6 (+,-,+)  7 (+,+,+)  8 (-,+,+)
 *
 *  CONTENTS
 *    Lifecycle                          spx_...                                                2
 *    Brick operators                    SPX_OPE_C3D8...                                        2
 *    Gradients                          SPX_OPE_C3DSYMGRAD                                     1
 *    Element checks                     SPX_OPE_ERRORCHECK, ...DISTORTED..., ...EXCESSROT     11
 *    Material variables                 SPX_MATVAR...                                          4
 *    Hyperelasticity, polynomial        SPX_MAT_HYPERPOLY...                                   4
 *    Output of orientations             SPX_ODB_ORIENT...                                     24
 */
#ifndef SHAREDANALYSIS_SPX_H
#define SHAREDANALYSIS_SPX_H

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

/* ---------------------------------------------------------------------------------------------------------------------
 * Brick operators
 *
 * Gradients of the shape functions in the current coordinates, and the volume.  Nothing is reported: an element whose
 * determinant or volume is zero, negative or not a number is masked and leaves finite scalars; the caller decides about it.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Fully integrated brick at one integration point: Bdet = det(dx/dxi) * dN/dx.  Divide by multiplying with rdetJ: an
 *  element that turns out degenerate here has detJ = 1 and rdetJ = 0 but keeps the products of its cofactors in Bdet; one
 *  that is masked on entry has zeros there.  The derivatives are taken as those of the trilinear brick: for the Jacobian
 *  only the entries 1, 3, 5, 7 of dNdxi, 1, 2, 5, 6 of dNdeta and 1, 2, 3, 4 of dNdzeta are read.
 *  @param[in]     nblock   (1), block: elements
 *  @param[in]     ipt      (1), 1..nipt: integration point
 *  @param[in]     nipt     (1), count: integration points of the tables
 *  @param[in]     dNdxi    (8, nipt), -: dN/dxi, node fastest
 *  @param[in]     dNdeta   (8, nipt), -: dN/deta
 *  @param[in]     dNdzeta  (8, nipt), -: dN/dzeta
 *  @param[in]     X        (nblock, 8, 3), m: nodal coordinates
 *  @param[out]    Bdet     (nblock, 8, 3), m2: gradient operator times detJ
 *  @param[out]    detJ     (nblock), m3: Jacobian determinant, 1.0 for masked elements
 *  @param[out]    rdetJ    (nblock), 1/m3: its reciprocal, 0.0 for masked elements
 *  @param[in,out] mask     (nblock), mask: set to 1.0 where the determinant is not positive
 */
void SPX_OPE_C3D8OPER(const int32_t* nblock, const int32_t* ipt, const int32_t* nipt, const double* dNdxi,
                      const double* dNdeta, const double* dNdzeta, const double* X, double* Bdet, double* detJ,
                      double* rdetJ, double* mask);

/** One-point brick: volume V, mean gradient B = (dV/dX)/V, hourglass shape vectors and two scaling factors.
 *  gamma_k = Gamma_k - sum over x,y,z of h_k B with the base vectors Gamma (by node 1..8)
 *    1: + + - - - - + +    2: + - - + - + + -    3: + - + - + - + -    4: - + - + + - + -
 *  and h_k = sum over the nodes of Gamma_k X: gamma is orthogonal to every linear field.
 *  A masked element has B = gamma = 0, vol = 1/12, rvol = 0, hgdiag = 6, hgstiff = 1/6.
 *  Source: D. P. Flanagan, T. Belytschko, Int. J. Numer. Meth. Engng 17 (1981) 679.
 *  @param[in]     nblock   (1), block: elements
 *  @param[in]     ld       (1), stride: leading dimension of all arrays
 *  @param[in]     X        (ld, 8, 3), m: nodal coordinates
 *  @param[out]    B        (ld, 8, 3), 1/m: mean gradient
 *  @param[out]    hgdiag   (ld), 1/m: 1/(2 V B.B)
 *  @param[out]    hgstiff  (ld), m: 2 V B.B
 *  @param[out]    vol      (ld), m3: volume
 *  @param[out]    rvol     (ld), 1/m3: its reciprocal
 *  @param[out]    gamma    (ld, 8, 4), -: hourglass shape vectors
 *  @param[in,out] mask     (ld), mask: set to 1.0 where the volume is not positive
 */
void SPX_OPE_C3D8ROPER2(const int32_t* nblock, const int32_t* ld, const double* X, double* B, double* hgdiag,
                        double* hgstiff, double* vol, double* rvol, double* gamma, double* mask);

/* ---------------------------------------------------------------------------------------------------------------------
 * Gradients
 * ------------------------------------------------------------------------------------------------------------------ */

/** Symmetric and skew part of a gradient: sym_ij = (G_ij + G_ji)/2, skew_ij = (G_ij - G_ji)/2.
 *  @param[in]  nblock  (1), block: elements
 *  @param[in]  G       (nblock, 9), any: gradient, component (i,j) in column i + 3 (j - 1)
 *  @param[out] sym     (nblock, 6), any: symmetric part, S33
 *  @param[out] skew    (nblock, 3), any: skew part 12, 23, 13
 */
void SPX_OPE_C3DSYMGRAD(const int32_t* nblock, const double* G, double* sym, double* skew);

/* ---------------------------------------------------------------------------------------------------------------------
 * Element checks
 * ------------------------------------------------------------------------------------------------------------------ */

/** Sum of the flags of a block, as the result and, when it is not 0.0, truncated to an integer in count.  A sum that no
 *  32-bit integer holds (NaN, infinity) stores the number of marked elements, those whose flag is not exactly 0.0.
 *  @param[in]     nblock  (1), length: elements; below 1 gives 0.0
 *  @param[in,out] count   (1), -: left alone when the sum is 0.0
 *  @param[in]     flags   (nblock), flag: one flag for each element
 */
double SPX_OPE_ERRORCHECK(const int32_t* nblock, int32_t* count, const double* flags);

/** Writes "Excessive distortion of element number ..." as an "Error" for each marked element and records it with
 *  ACD_ERROR_XPL.  Every marked element raises the counter; one that finds it above 8 is neither written nor recorded here,
 *  so at most eight messages come of one counter, which ends as the number of marked elements seen.  While the counter does
 *  not exceed 8, each call begins with two blank lines, with or without a marked element.  In a model of part instances an
 *  element is named by its instance and its number there.
 *  @param[in]     nblock    (1), count: elements
 *  @param[in,out] counter   (1), -: marked elements of the analysis so far, 0 at its start
 *  @param[in]     elements  (nblock), -: internal element numbers
 *  @param[in]     flags     (nblock), any: marks an element where it is not exactly 0.0, NaN included
 */
void SPX_ERR_DISTORTED(const int32_t* nblock, int32_t* counter, const int32_t* elements, const double* flags);

/** SPX_ERR_DISTORTED with a longer text that says what to look for.
 *  @like SPX_ERR_DISTORTED
 */
void SPX_ERR_DISTORTEDPAC(const int32_t* nblock, int32_t* counter, const int32_t* elements, const double* flags);

/** "Excessive incremental rotation of element number ..."; as SPX_ERR_DISTORTED, without the blank lines.
 *  @like SPX_ERR_DISTORTED
 */
void SPX_ERR_EXCESSROT(const int32_t* nblock, int32_t* counter, const int32_t* elements, const double* flags);

/** SPX_ERR_DISTORTED for continuum elements, whose flags are a column of the work array.
 *  @like SPX_ERR_DISTORTED
 *  @param[in]     header    (7), -: header of the element family; field 7 is the position in work, from 1, of the flag of
 *                           the first element
 *  @param[in]     work      (*), any: work array of the block
 */
void SPX_ELE_CDISTORTED(const int32_t* nblock, int32_t* counter, const int32_t* elements, const int32_t* header,
                        const double* work);

/** SPX_ERR_DISTORTEDPAC for continuum elements.
 *  @like SPX_ELE_CDISTORTED
 */
void SPX_ELE_CDISTORTEDPAC(const int32_t* nblock, int32_t* counter, const int32_t* elements, const int32_t* header,
                           const double* work);

/** SPX_ERR_EXCESSROT for continuum elements.
 *  @like SPX_ELE_CDISTORTED
 */
void SPX_ELE_CEXCESSROT(const int32_t* nblock, int32_t* counter, const int32_t* elements, const int32_t* header,
                        const double* work);

/** SPX_ERR_DISTORTED for structural elements.
 *  @like SPX_ELE_CDISTORTED
 *  @param[in]     header    (6), -: header of the element family; field 6 is the position in work, from 1, of the flag of
 *                           the first element
 */
void SPX_ELE_SDISTORTED(const int32_t* nblock, int32_t* counter, const int32_t* elements, const int32_t* header,
                        const double* work);

/** SPX_ERR_DISTORTEDPAC for structural elements.
 *  @like SPX_ELE_SDISTORTED
 */
void SPX_ELE_SDISTORTEDPAC(const int32_t* nblock, int32_t* counter, const int32_t* elements, const int32_t* header,
                           const double* work);

/** SPX_ERR_EXCESSROT for structural elements.
 *  @like SPX_ELE_SDISTORTED
 */
void SPX_ELE_SEXCESSROT(const int32_t* nblock, int32_t* counter, const int32_t* elements, const int32_t* header,
                        const double* work);

/** Distortion of continuum shells with bottom face 1 2 3 4 and top face 5 6 7 8.  The flag becomes 1.0, and never 0.0 again,
 *    - where a b 1e-6 > h h with h = max(0, smallest of the four thicknesses): the element has collapsed;
 *    - where for one of the two diagonals of the faces, 1-3 with 5-7 or 2-4 with 6-8, the sum over its two corners of the
 *      product of bottom and top corner normal is not positive.  The corner normal is the product of the two edges that leave
 *      the corner: N1 = (x2 - x1) x (x4 - x1) and so on round the face, so that the sums are N1.N5 + N3.N7 and N2.N6 + N4.N8.
 *      A face that is turned over has all its corner normals reversed and both sums negative, whatever its shape; a face
 *      that is folded along a diagonal reverses the corners off the fold; stretching and turning both faces alike changes no
 *      sign.
 *  Comparisons with NaN mark the element by the second test.
 *  @param[in]     nblock  (1), block: elements
 *  @param[in]     t       (nblock, 4), m: thickness at the four corners
 *  @param[in]     a       (nblock), m: length of the element in its plane
 *  @param[in]     b       (nblock), m: length across it
 *  @param[in]     X       (nblock, 8, 3), m: nodal coordinates
 *  @param[in,out] flags   (nblock), flag: distortion flag
 */
void SPX_OPE_SC3DDISTORTIONCHECK(const int32_t* nblock, const double* t, const double* a, const double* b,
                                 const double* X, double* flags);

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

/* ---------------------------------------------------------------------------------------------------------------------
 * Hyperelasticity, polynomial of order 2
 *
 * Energy U = C10 x + C01 y + C20 x x + C11 x y + C02 y y, x = I1 - 3, y = I2 - 3, of the isochoric left Cauchy-Green tensor
 * J^(-2/3) V V, and volumetric energy (J-1)^2/D1 + (J-1)^4/D2.  Constants are given point by point.
 * The left stretch V is symmetric; components that a storage does not hold are zero.
 * Small-strain constants: shear modulus 2 (C10 + C01), bulk modulus 2/D1.
 * Source: R. S. Rivlin, D. W. Saunders, Phil. Trans. R. Soc. A 243 (1951) 251.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Isochoric energy and 1/J.  A determinant below 2.2e-308 (inverted points too) is raised by 1.0.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  C10     (nblock), Pa: coefficient
 *  @param[in]  C01     (nblock), Pa: coefficient
 *  @param[in]  C20     (nblock), Pa: coefficient
 *  @param[in]  C11     (nblock), Pa: coefficient
 *  @param[in]  C02     (nblock), Pa: coefficient
 *  @param[out] energy  (nblock), J/m3: isochoric strain energy per undeformed volume
 *  @param[out] rJ      (nblock), -: 1/J
 *  @param[in]  V       (nblock, 6), stretch: left stretch, S33
 */
void SPX_MAT_HYPERPOLYS33(const int32_t* nblock, const double* C10, const double* C01, const double* C20,
                          const double* C11, const double* C02, double* energy, double* rJ, const double* V);

/** SPX_MAT_HYPERPOLYS33 for stretches with 13 = 23 = 0.
 *  @like SPX_MAT_HYPERPOLYS33
 *  @param[in]  V       (nblock, 4), stretch: left stretch, S31
 */
void SPX_MAT_HYPERPOLYS31(const int32_t* nblock, const double* C10, const double* C01, const double* C20,
                          const double* C11, const double* C02, double* energy, double* rJ, const double* V);

/** SPX_MAT_HYPERPOLYS33 for principal stretches.
 *  @like SPX_MAT_HYPERPOLYS33
 *  @param[in]  V       (nblock, 3), stretch: principal stretches, S30
 */
void SPX_MAT_HYPERPOLYS30(const int32_t* nblock, const double* C10, const double* C01, const double* C20,
                          const double* C11, const double* C02, double* energy, double* rJ, const double* V);

/** Cauchy stress, and two moduli for the stable increment.
 *  stress = p I + dev((2/J)[(U1 + I1 U2) Bbar - U2 Bbar Bbar]), p = 2 (J-1)/D1 + 4 (J-1)^3/D2.
 *  A point with J < 1e-9 sets its flag; a flagged point has J = 1 now and in every later call that receives the flag.
 *  @like SPX_MAT_HYPERPOLYS33
 *  @param[in]     rD1     (nblock), Pa: 1/D1
 *  @param[in]     rD2     (nblock), Pa: 1/D2
 *  @param[out]    stress  (nblock, 6), Pa: Cauchy stress, S33
 *  @param[in,out] flag    (nblock), flag: volume guard, never cleared here
 *  @param[out]    bound   (nblock), Pa: largest of the six diagonal terms of the isochoric tangent
 *  @param[out]    bulk    (nblock), Pa: 3 J (p + dp/dJ)
 */
void SPX_MAT_HYPERPOLY3DEXP(const int32_t* nblock, const double* C10, const double* C01, const double* C20,
                            const double* C11, const double* C02, const double* rD1, const double* rD2, const double* V,
                            double* stress, double* flag, double* bound, double* bulk);

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
 * member writes nothing and leaves the counter alone.
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
 */
void SPX_ODB_ORIENT3DINVERT(const int32_t* nblock, const int32_t* nsub, const int32_t* isub, int32_t* counter,
                            const double* q, double* out);

/** The same contract as SPX_ODB_ORIENT3DINVERT, for elements of several layers.
 *  @like SPX_ODB_ORIENT3DL3
 */
void SPX_ODB_ORIENT3DL3INVERT(const int32_t* nblock, const int32_t* nsub, const int32_t* isub, int32_t* counter,
                              const double* q, double* out);

/** SPX_ODB_ORIENT3DINVERT for the members of an element set.
 *  @like SPX_ODB_ORIENT3DL3ELSET
 */
void SPX_ODB_ORIENT3DELSETINVERT(const int32_t* nblock, const int32_t* nsub, const int32_t* isub, int32_t* counter,
                                 const int32_t* blockNumber, const int32_t* blockSize, const int32_t* groupNumber,
                                 const int32_t* groupSize, const int32_t* last, const int32_t* set, const double* q,
                                 double* out);

/** The same contract as SPX_ODB_ORIENT3DELSETINVERT, for elements of several layers.
 *  @like SPX_ODB_ORIENT3DL3ELSET
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
 *  @param[in]     count     (1), code 0|4: above 0 there are local orientations x y z w
 *  @param[in]     matrices  (nblock, 9, 2), -: direction cosines of both sides
 *  @param[out]    out       (4, 2, *), record: orientations x y z w of both sides
 */
void SPX_ODB_ORIENTCNE3D(const int32_t* nblock, int32_t* counter, const int32_t* width, const int32_t* columns,
                         const int32_t* count, const int32_t* map, const int32_t* indices, const double* table,
                         const double* matrices, double* out);

/** SPX_ODB_ORIENTCNE3D for the members of an element set.
 *  @like SPX_ODB_ORIENTCNE2DELSET
 *  @param[in]     count     (1), code 0|4: above 0 there are local orientations x y z w
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
