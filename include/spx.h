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
 *    Material tables                    SPX_GET_GETVALUE..., SPX_TAB_..., INTEGRATE, SEGFIND  10
 *    Nodal forces and conductivity      SPX_GET_...NFORCID, SPX_GET_CONSTCONDUCTIVITY...       6
 *    User elements                      SPX_OPE_USERELEM...                                    5
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
 * Material tables
 *
 * Properties tabulated against temperature, field variables and state variables, looked up for a block of points.  A table
 * lies in two pools, one of integers and one of reals, which any number of tables share; a header of integers says where.
 * host/tables/material_table.h lays a table out; docs/material-tables.md shows one.  All positions count from 1.
 *
 *   option  table                                    header fields, from 1
 *   100     a constant                               1 position of the constant in the reals
 *   300     general, with a logarithmic and a        1 position of the record in the integers
 *           square-root variable                     5 number of the logarithmic variable, 0 none
 *   500     general, with a logarithmic variable     6 position of its reference value in the reals
 *                                                    7 number of the square-root variable, 0 none; 300 only
 *           all of them                              2, 3, 4 numbers of field variables, state variables and temperatures
 *   400     is rejected, and so is any other: an "Error" is written, GLO_UTI_EXIT ends the analysis with code 20, and the
 *           outputs are left alone.  That does not depend on nblock.
 *
 *   record  1 rows   2 position of the rows in the reals   3 position of the groups in the integers   4 of the source codes
 *           5 variables   6 position of their columns in the integers   7 position of the running integrals in the reals, 0
 *           none   8 to 12 not read   13 position of the extrapolation flags in the reals
 *
 * Rows have 1 + (field variables + state variables + temperatures) entries and follow each other; entry 1 is the dependent
 * value.  Variable v = 1 .. variables has its abscissa in entry columns(v) of a row, a source code c(v) and two flags:
 *   c > 0   column c of the field variables; its derivative goes to that column of the field derivatives
 *   c < 0   column -c of the state variables; no derivative
 *   c = 0   the temperature; its derivative goes to the temperature derivative
 *   flags   below and above, entries 2 v - 1 and 2 v: greater than 0 continues the first or last interval as a straight line,
 *           otherwise the end value is held, with derivative 0
 *
 * One variable: rows ascend; value = (x2 - x)/(x2 - x1) f1 + (x - x1)/(x2 - x1) f2, derivative (f2 - f1)/(x2 - x1), in the
 * interval that SPX_GET_SEGFIND finds; computed as f1 + (x - x1) times the derivative.  A breakpoint returns its value exactly
 * and the derivative of the interval above it.  An interval without width gives the value of its upper row and derivative 0;
 * one row gives its value and derivative 0.
 *
 * Several variables, at most 8: rows are sorted by the last variable, within it by the last but one and so on, variable 1
 * fastest.  The rows that agree in the variables from v on are a group of v; groups need not have the same breakpoints or
 * numbers of rows.  The last variable's interval is searched among its groups, the next variable's within the two that bracket
 * it, and so on down to the rows, each as SPX_GET_SEGFIND does; the values are interpolated linearly on the way back.  On a
 * grid that is multilinear interpolation.  The groups in the integer pool are, for each variable from the last down to 2, their
 * number m and m + 1 numbers: the first member of each group, and one beyond the last.  Members are groups of variable v - 1,
 * for variable 2 rows; both are counted from 1 through the whole table.
 *
 * Transformed variables.  A logarithmic variable enters as log10 x where x > ref and as the integer part of log10 ref, toward
 * zero, where it is not: for ref = 0.05 as -1, for ref = 0.5 as 0.  ref is positive.  Its derivative is multiplied by
 * 0.43429448/x, and by 0 where x is cut off.  A square-root variable enters as its root, and its derivative is the one by the
 * root (divide it by twice the root for the one by x).  A variable that is both is first logarithmic.  Abscissas of the table
 * are those of the transformed variables.  The caller's arrays are not written: a transform leaves nothing to be put back, and
 * calls may share them.
 *
 * NaN in a variable gives NaN, except where the table is constant or the variable has one row or group only.  Nothing is
 * checked in the table itself; rows that do not ascend give one of the intervals.  Transforms and interpolation run as vector
 * loops, and so does the search in up to 32 rows of one variable; longer tables and those of several variables are searched
 * point by point.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Value of a table, and its derivatives if derivatives is 1, at all points of a block.  Only the derivatives by variables of
 *  the table are written; a constant sets as many columns of the field derivatives as its header counts field variables, and
 *  the temperature derivative, to 0.  Two variables with the same source add up their derivatives.
 *  @param[in]     derivatives            (1), code 0|1: whether derivatives are returned as well; only 1 means yes
 *  @param[in]     ints                   (*), table: integer pool
 *  @param[in]     reals                  (*), table: real pool
 *  @param[in]     header                 (7), table: header of the table
 *  @param[in]     nblock                 (1), block: points
 *  @param[in]     option                 (1), code 100|300|500: option code
 *  @param[in]     fields                 (nblock, *), any: field variables
 *  @param[in]     states                 (nblock, *), any: state variables
 *  @param[in]     temperature            (nblock), any: temperature
 *  @param[out]    value                  (nblock), any: dependent value
 *  @param[in,out] fieldDerivatives       (nblock, *), any: derivatives by the field variables
 *  @param[in,out] temperatureDerivative  (nblock), any: derivative by the temperature
 */
void SPX_GET_GETVALUE(const int32_t* derivatives, const int32_t* ints, const double* reals, const int32_t* header,
                      const int32_t* nblock, const int32_t* option, const double* fields, const double* states,
                      const double* temperature, double* value, double* fieldDerivatives,
                      double* temperatureDerivative);

/** SPX_GET_GETVALUE under the name of the double-sized interface; reals are doubles in both.
 *  @like SPX_GET_GETVALUE
 */
void SPX_GET_GETVALUEDBL(const int32_t* derivatives, const int32_t* ints, const double* reals, const int32_t* header,
                         const int32_t* nblock, const int32_t* option, const double* fields, const double* states,
                         const double* temperature, double* value, double* fieldDerivatives,
                         double* temperatureDerivative);

/** SPX_GET_GETVALUE at the points of a list; the others are left alone.
 *  @like SPX_GET_GETVALUE
 *  @param[in]     count  (1), count: listed points; below 1 does nothing
 *  @param[in]     list   (count), list: their numbers
 */
void SPX_GET_GETVALUEINDX(const int32_t* derivatives, const int32_t* ints, const double* reals, const int32_t* header,
                          const int32_t* nblock, const int32_t* option, const double* fields, const double* states,
                          const double* temperature, double* value, double* fieldDerivatives,
                          double* temperatureDerivative, const int32_t* count, const int32_t* list);

/** SPX_GET_GETVALUE without derivatives.
 *  @like SPX_GET_GETVALUE
 */
void SPX_GET_GETVAL(const int32_t* ints, const double* reals, const int32_t* header, const int32_t* nblock,
                    const int32_t* option, const double* fields, const double* states, const double* temperature,
                    double* value);

/** SPX_GET_GETVALUE for tables of the table objects: the same layout; only the text about unknown options differs.
 *  @like SPX_GET_GETVALUE
 */
void SPX_TAB_GETVALUE(const int32_t* derivatives, const int32_t* ints, const double* reals, const int32_t* header,
                      const int32_t* nblock, const int32_t* option, const double* fields, const double* states,
                      const double* temperature, double* value, double* fieldDerivatives,
                      double* temperatureDerivative);

/** SPX_GET_GETVALUEINDX for tables of the table objects.
 *  @like SPX_GET_GETVALUEINDX
 */
void SPX_TAB_GETVALUEINDX(const int32_t* derivatives, const int32_t* ints, const double* reals, const int32_t* header,
                          const int32_t* nblock, const int32_t* option, const double* fields, const double* states,
                          const double* temperature, double* value, double* fieldDerivatives,
                          double* temperatureDerivative, const int32_t* count, const int32_t* list);

/** Integral of a table over its first variable, from the first abscissa to the point; negative below it.  Only the options
 *  300 and 500 have one; the other codes are rejected, 100 and 400 too.
 *    - The integral is that of the straight lines, and exact; beyond the table that of the continued line or held value.  A
 *      single row integrates as a constant from its abscissa.
 *    - A transformed variable is integrated as transformed: over log10 x, or over the root.  The latter is doubled:
 *      2 times the integral of f d(root x) is that of f(x)/root(x) dx.
 *    - Further variables are interpolated: the integrals of the bracketing groups, each from its own first abscissa.
 *    - The derivative by the first variable is the value of the table, with the factors of its transform; the others are the
 *      integrals of the derivatives.
 *  A table without running integrals is summed up for each point, at a cost that grows with the rows; both give the same bits.
 *  Running integrals: for each row the integral from the first row of its group of variable 1, by the trapezium rule, as
 *  0.5 (x2 - x1)(f1 + f2) added one after another.
 *  @like SPX_GET_GETVALUE
 *  @param[in]     option                 (1), code 300|500: option code
 *  @param[out]    value                  (nblock), any: integral
 */
void SPX_GET_INTEGRATE(const int32_t* derivatives, const int32_t* ints, const double* reals, const int32_t* header,
                       const int32_t* nblock, const int32_t* option, const double* fields, const double* states,
                       const double* temperature, double* value, double* fieldDerivatives,
                       double* temperatureDerivative);

/** SPX_GET_INTEGRATE at the points of a list; the others are left alone.
 *  @like SPX_GET_INTEGRATE
 *  @param[in]     count  (1), count: listed points; below 1 does nothing
 *  @param[in]     list   (count), list: their numbers
 */
void SPX_GET_INTEGRATEINDX(const int32_t* derivatives, const int32_t* ints, const double* reals, const int32_t* header,
                           const int32_t* nblock, const int32_t* option, const double* fields, const double* states,
                           const double* temperature, double* value, double* fieldDerivatives,
                           double* temperatureDerivative, const int32_t* count, const int32_t* list);

/** Lookup in regularly spaced tables, whose intervals are computed and not searched.
 *    option  dependencies  variables, first to last
 *    0       1, 2          field variables 1, or 1 and 2
 *    1       0, 1, 2       the temperature, then no, one or two field variables
 *  Any other pair returns and leaves the outputs alone.  For each variable, with s = (x - x0) rdx + 2,
 *    p = min(max(s - 1, 1), n), i1 = integer part of p, w = p - i1, i2 = integer part of min(max(s, 1), n):
 *  value = (1 - w) v(i1) + w v(i2), derivative = (v(i2) - v(i1)) rdx, one variable after the other.  The value is held beyond
 *  the ends, with derivative 0; at the last abscissa the derivative is 0 too.  A NaN gives NaN.
 *  Header: 1 position of x0 and rdx of each variable in the reals, two for each; 2 position of n and the row stride of each
 *  variable in the integers, two for each; 3 position of the values in the reals.  The value at point i of variable 1, j of
 *  variable 2 and so on is entry (i - 1) stride1 + (j - 1) stride2 + ... + 1 of the values.
 *  With a count of extra variables that is not 0 the header is that of a general table instead, which is evaluated without
 *  transforms; then all columns of the field derivatives are set, those of variables that the table does not have to 0.
 *  @like SPX_GET_GETVALUE
 *  @param[in]     header                 (7), table: header of the table
 *  @param[in]     option                 (1), code 0|1: whether the table depends on temperature
 *  @param[in]     dependencies           (1), code 1|2: field variables on which it depends, 0 to 2
 *  @param[in]     extra                  (1), code 0|1: count of extra variables
 *  @param[in]     nfields                (1), count>=dependencies: columns of the field variables; below 1 counts as 1
 *  @param[in]     nstates                (1), count: columns of the state variables; below 1 counts as 1
 *  @param[in]     fields                 (nblock, nfields), any: field variables
 *  @param[in]     states                 (nblock, nstates), any: state variables
 *  @param[in,out] fieldDerivatives       (nblock, nfields), any: derivatives by the field variables
 */
void SPX_GET_GETTAB(const int32_t* derivatives, const int32_t* ints, const double* reals, const int32_t* header,
                    const int32_t* nblock, const int32_t* option, const int32_t* dependencies, const int32_t* extra,
                    const int32_t* nfields, const int32_t* nstates, const double* fields, const double* states,
                    const double* temperature, double* value, double* fieldDerivatives, double* temperatureDerivative);

/** The interval of x among the rows lo .. hi of one sorted column; the abscissa of row r is entry pos of that row.
 *    hi = lo: i1 = i2 = lo (a table without rows, hi below lo, too)
 *    below the first abscissa: (lo, lo + 1) if extrapBelow > 0, else (lo, lo)
 *    above the last abscissa: (hi - 1, hi) if extrapAbove > 0, else (hi, hi)
 *    else the interval by bisection; a breakpoint belongs to the one above it, the last abscissa to the last one
 *  @param[in]  lo           (1), -: first row, from 1
 *  @param[in]  hi           (1), -: last row
 *  @param[in]  extrapBelow  (1), -: greater than 0: extrapolate below
 *  @param[in]  extrapAbove  (1), -: greater than 0: extrapolate above
 *  @param[in]  rowlen       (1), -: entries of a row
 *  @param[in]  spare        (1), unread: not read
 *  @param[in]  table        (rowlen, *), any: the rows
 *  @param[in]  pos          (1), -: entry of the abscissa, from 1
 *  @param[in]  x            (1), any: what is searched; NaN ends in one of the intervals
 *  @param[out] i1           (1), -: lower row
 *  @param[out] i2           (1), -: upper row
 */
void SPX_GET_SEGFIND(const int32_t* lo, const int32_t* hi, const double* extrapBelow, const double* extrapAbove,
                     const int32_t* rowlen, const int32_t* spare, const double* table, const int32_t* pos,
                     const double* x, int32_t* i1, int32_t* i2);

/* ---------------------------------------------------------------------------------------------------------------------
 * Nodal forces and conductivity
 *
 * The identifiers tell the kinds of elements apart whose nodal forces are put out; the host maps them to its variables.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Identifier of the nodal forces of solid elements: 1.
 *  @param[out] id  (1), -: identifier
 */
void SPX_GET_SOLIDNFORCID(int32_t* id);

/** Identifier of the nodal forces of shells: 2.
 *  @like SPX_GET_SOLIDNFORCID
 */
void SPX_GET_SHELLNFORCID(int32_t* id);

/** Identifier of the nodal forces of beams: 3.
 *  @like SPX_GET_SOLIDNFORCID
 */
void SPX_GET_BEAMNFORCID(int32_t* id);

/** Identifier of the nodal forces of user elements: 4.
 *  @like SPX_GET_SOLIDNFORCID
 */
void SPX_GET_USERNFORCID(int32_t* id);

/** Conductivity matrix of a material without dependences, in a plane, the same at all points.
 *  @param[in]  nblock     (1), block: points
 *  @param[in]  ncons      (1), code 1|2|3: 1 isotropic; 2 orthotropic: 11 22; 3 anisotropic: 11 22 12
 *  @param[in]  constants  (3), W/(m K): as many constants as ncons says
 *  @param[out] K          (nblock, 2, 2), W/(m K): symmetric matrix
 */
void SPX_GET_CONSTCONDUCTIVITY2D(const int32_t* nblock, const int32_t* ncons, const double* constants, double* K);

/** Conductivity matrix of a material without dependences, in space.
 *  @like SPX_GET_CONSTCONDUCTIVITY2D
 *  @param[in]  ncons      (1), code 1|3|6: 1 isotropic; 3 orthotropic: 11 22 33; 6 anisotropic: 11 22 33 12 23 13
 *  @param[in]  constants  (6), W/(m K): as many constants as ncons says
 *  @param[out] K          (nblock, 3, 3), W/(m K): symmetric matrix
 */
void SPX_GET_CONSTCONDUCTIVITY3D(const int32_t* nblock, const int32_t* ncons, const double* constants, double* K);

/* ---------------------------------------------------------------------------------------------------------------------
 * User elements
 *
 * A user element brings its own mass matrix; the explicit solver takes one mass for the translational degrees of freedom of a
 * node, and the rotary inertia of each node in a block of its own.  Each element that breaks a rule is named once for each
 * check that it fails, in an "Error"; it still goes through the later checks, and nothing ends the analysis here.  Entries
 * are compared exactly; a NaN differs from every number, and from itself.  In a model of part instances an element is named
 * by its instance and its number there.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Checks translational mass matrices, each check over all elements before the next:
 *    1. an entry differs from its transposed one
 *    2. an entry that couples two nodes is not zero
 *    3. an entry off the diagonal in the block of one node is not zero
 *    4. diagonal entries of one node differ
 *  @param[in] nblock    (1), count: elements
 *  @param[in] ndof      (1), count: degrees of freedom of an element
 *  @param[in] nnode     (1), count: nodes of an element
 *  @param[in] nodeDofs  (nnode), -: degrees of freedom of each node; their sum is ndof
 *  @param[in] elements  (nblock), -: internal element numbers
 *  @param[in] mass      (nblock, ndof, ndof), kg: mass matrices, degrees of freedom node by node
 */
void SPX_OPE_USERELEMPROCESSMASS(const int32_t* nblock, const int32_t* ndof, const int32_t* nnode,
                                 const int32_t* nodeDofs, const int32_t* elements, const double* mass);

/** Checks rotary inertia.  The block of a node may be any symmetric matrix, a tensor of inertia.
 *    1. an entry differs from its transposed one
 *    2. an entry that couples two nodes is not zero: an invalid one
 *  @like SPX_OPE_USERELEMPROCESSMASS
 *  @param[in] ndof      (1), count: rotational degrees of freedom of an element
 *  @param[in] nodeDofs  (nnode), -: rotational degrees of freedom of each node; their sum is ndof
 *  @param[in] inertia   (nblock, ndof, ndof), kg m2: matrices of rotary inertia, degrees of freedom node by node
 */
void SPX_OPE_USERELEMPROCESSROTINERT(const int32_t* nblock, const int32_t* ndof, const int32_t* nnode,
                                     const int32_t* nodeDofs, const int32_t* elements, const double* inertia);

/** category(k, map(e)) = own(e, k): data of elements to the records of their category, which elements of several types
 *  share; what a record holds beyond ncomp stays.
 *  @param[in]     nblock    (1), block: elements
 *  @param[in]     ncomp     (1), count: values of an element
 *  @param[in]     ld        (1), count>=ncomp: length of a record of the category
 *  @param[in]     map       (nblock), entity of category: record of each element
 *  @param[in]     own       (nblock, ncomp), any: data of the elements
 *  @param[in,out] category  (ld, *), any: records of the category
 */
void SPX_OPE_USERELEMTOCAT(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map,
                           const double* own, double* category);

/** category(k, map(e)) = mass(e, k, k): the lumped masses, which stand on the diagonals.
 *  @param[in]     nblock    (1), block: elements
 *  @param[in]     ndof      (1), count: degrees of freedom of an element
 *  @param[in]     ld        (1), count>=ndof: length of a record of the category
 *  @param[in]     map       (nblock), entity of category: record of each element
 *  @param[in]     mass      (nblock, ndof, ndof), kg: mass matrices
 *  @param[in,out] category  (ld, *), kg: records of the category
 */
void SPX_OPE_USERELEMTOCATMASS(const int32_t* nblock, const int32_t* ndof, const int32_t* ld, const int32_t* map,
                               const double* mass, double* category);

/** own(e, k) = category(k, map(e)).
 *  @like SPX_OPE_USERELEMTOCAT
 *  @param[out]    own       (nblock, ncomp), any: data of the elements
 *  @param[in]     category  (ld, *), any: records of the category
 */
void SPX_OPE_USERELEMFROMCAT(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map,
                             double* own, const double* category);

#ifdef __cplusplus
}
#endif

#endif
