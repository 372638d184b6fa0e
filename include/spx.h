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
 *    Brick operators                    SPX_OPE_C3D..., SPX_ASM_C3D8RTDIVER                    8
 *    Gradients                          SPX_OPE_C3DSYMGRAD                                     1
 *    Strain output                      SPX_OPE_...STRAIN..., INVINISTRETCH3DH8                6
 *    Element checks                     SPX_OPE_ERRORCHECK, ...DISTORTED..., ...EXCESSROT     11
 *    Output filters                     SPX_OPE_...FILTER..., SPX_OPE_...OPERAT...            16
 *    Material variables                 SPX_MATVAR...                                          4
 *    Hyperelasticity                    SPX_MAT_HYPERPOLY..., AB..., VDW...                24
 *    Hyperelasticity, any model         SPX_MAT_HYPER...                                   24
 *    Hyperelasticity, test curves       SPX_MAT_...MARLOW...                                9
 *    Rubber and foam by their stretches  SPX_MAT_OGDEN..., ...FOAM...                       24
 *    Mullins effect                     SPX_MAT_...MULLINS..., SPX_OPT_...                 15
 *    Ductile and shear failure          SPX_MAT_...STRESSRATIO..., JC...                   18
 *    Output of orientations             SPX_ODB_ORIENT...                                     24
 *    Built-in user materials            SPX_USR_...                                           14
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
 * So is one whose determinant, volume or gradient no double holds (cubes with edges beyond 1e100 or below 1e-102), with the
 * results of a masked element: finite coordinates never give an infinity.  SPX_OPE_C3DH8OPER squares areas, and masks cubes
 * beyond 1e76 or below 1e-76 already.
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

/** The one-point algorithm of SPX_OPE_C3D8ROPER2 with its intermediate results: the volume derivatives themselves, in the order
 *  dV/dX = (1 - mask)/12 times the closed form, B = dV/dX / V, and the hourglass projections h.  With q the sum of the squares
 *  of dV/dX the two factors are V/(2 q) and 2 q/V, those of SPX_OPE_C3D8ROPER2; a q that is not above the smallest normal
 *  double has that and the mask added.  A masked element has dVdX = B = h = gamma = 0, rvol = 0, vol = 1 (not 1/12), hgdiag =
 *  1/2 and hgstiff = 0.
 *  @like SPX_OPE_C3D8ROPER2
 *  @param[out]    dVdX     (ld, 8, 3), m2: derivative of the volume by the nodal coordinates
 *  @param[out]    h        (ld, 4, 3), m: hourglass projections of the coordinates, by pattern and direction
 */
void SPX_OPE_C3DH8OPER(const int32_t* nblock, const int32_t* ld, const double* X, double* dVdX, double* B,
                       double* hgdiag, double* hgstiff, double* vol, double* rvol, double* h, double* gamma,
                       double* mask);

/** Average operator: that of SPX_OPE_C3D8OPER at one point and beside it the mean gradient and the volume of the element, as
 *  elements with a separate volumetric part need them:
 *    vol = 8 mean(det),   B = mean(det dN/dx) / mean(det)
 *  over the integration points of the tables, which carry no factor 1/8 (they are 8 dN/dxi ...): the products of cofactors and
 *  tables are summed with the weight 1/(8 nipt), 1/64 for eight points.  With the 2 x 2 x 2 Gauss points both are the exact
 *  integrals over the element, those of SPX_OPE_C3D8ROPER2.  B takes a constant field to 0 and a linear one to its gradient.
 *  An element is masked where the determinant is not positive at any of the points; a masked one has Bdet = B = 0, detJ = vol =
 *  1, rdetJ = rvol = 0.
 *  @like SPX_OPE_C3D8OPER
 *  @param[in]     dNdxi    (8, nipt), -: 8 dN/dxi, node fastest
 *  @param[in]     dNdeta   (8, nipt), -: 8 dN/deta
 *  @param[in]     dNdzeta  (8, nipt), -: 8 dN/dzeta
 *  @param[out]    B        (nblock, 8, 3), 1/m: mean gradient
 *  @param[out]    vol      (nblock), m3: volume
 *  @param[out]    rvol     (nblock), 1/m3: its reciprocal
 */
void SPX_OPE_C3D8IOPER(const int32_t* nblock, const int32_t* ipt, const int32_t* nipt, const double* dNdxi,
                       const double* dNdeta, const double* dNdzeta, const double* X, double* Bdet, double* detJ,
                       double* rdetJ, double* B, double* vol, double* rvol, double* mask);

/** Area and area vector of one face, which is bilinear and may be warped.  The faces 1..6 are zeta = -1, zeta = 1, eta = -1,
 *  xi = 1, eta = 1, xi = -1.  The area vector, the integral of the outward unit normal, is exact: half the cross product of
 *  the diagonals.  The area is summed over 3 x 3 Gauss points: exact for any plane convex face; on a unit square with one
 *  corner lifted by w the error is 5e-11 of the area at w = 0.1, 2e-7 at w = 0.5, 7e-6 at w = 1. A masked element has zeros, and
 *  so has a face whose area no double holds.  A face number outside 1..6 does nothing.
 *  @param[in]  nblock  (1), block: elements
 *  @param[in]  ld      (1), stride: leading dimension of all arrays
 *  @param[in]  face    (1), code 1|2|3|4|5|6: face
 *  @param[in]  X       (ld, 8, 3), m: nodal coordinates
 *  @param[out] area    (ld), m2: area
 *  @param[out] normal  (ld, 3), m2: area vector, pointing outward
 *  @param[in]  mask    (ld), mask: elements that take no part
 */
void SPX_OPE_C3D8FACEAREA(const int32_t* nblock, const int32_t* ld, const int32_t* face, const double* X, double* area,
                          double* normal, const double* mask);

/** Gradient of a nodal field, gradT_i = sum over the nodes of B_i T, with the gradient operator of any member of this family.
 *  The sum is taken over T less its value at node 1 (the rows of such an operator add to nothing): a constant field gives exactly
 *  0, at any level.  A masked element has B = 0 and so a zero gradient.
 *  @param[in]  nblock  (1), block: elements
 *  @param[in]  ld      (1), stride: leading dimension of all arrays
 *  @param[in]  B       (ld, 8, 3), 1/m: gradient operator
 *  @param[in]  T       (ld, 8), K: nodal temperatures
 *  @param[out] gradT   (ld, 3), K/m: temperature gradient
 */
void SPX_OPE_C3DH8TGRAD(const int32_t* nblock, const int32_t* ld, const double* B, const double* T, double* gradT);

/** Divergence of a nodal vector field, the sum over nodes and directions of B_i u_i: volumetric strain from displacements, its
 *  rate from velocities.  Summed as in SPX_OPE_C3DH8TGRAD: a translation gives exactly 0.
 *  @param[in]  nblock      (1), block: elements
 *  @param[in]  B           (nblock, 8, 3), 1/m: gradient operator
 *  @param[in]  u           (nblock, 8, 3), m: nodal vectors
 *  @param[out] divergence  (nblock), -: divergence
 */
void SPX_OPE_C3DH8DIVER(const int32_t* nblock, const double* B, const double* u, double* divergence);

/** Nodal heat flows of the one-point brick, ready to be assembled: the divergence of a flux that is constant in the element, and
 *  a conductance against hourglass patterns of the temperature,
 *    R = V B.q - sum over k of c gamma_k (gamma_k.T),   c = conductivity (0.4 / 64) 2 V b.b
 *  with B, gamma, V and b.b of SPX_OPE_C3D8ROPER2 (0.4 times its hgstiff is 12 V b.b / 15).  With q = -conductivity gradT the
 *  first term is exact for linear temperatures, which the second one does not see; the flows of an element add to nothing.  On
 *  a cube the hourglass conductance is 0.45 of the exact one for the first three patterns and 0.9 for the fourth: never stiffer
 *  than full integration, so the stable time increment is not shortened.  An element whose volume is not positive is masked and
 *  has zeros.
 *  @param[in]     nblock        (1), block: elements
 *  @param[in]     X             (nblock, 8, 3), m: nodal coordinates
 *  @param[in]     T             (nblock, 8), K: nodal temperatures
 *  @param[in]     flux          (nblock, 3), W/m2: heat flux
 *  @param[in]     conductivity  (nblock), W/(m K): conductivity of the hourglass patterns
 *  @param[out]    R             (nblock, 8), W: heat flow into each node
 *  @param[in,out] mask          (nblock), mask: set to 1.0 where the volume is not positive
 */
void SPX_ASM_C3D8RTDIVER(const int32_t* nblock, const double* X, const double* T, const double* flux,
                         const double* conductivity, double* R, double* mask);

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
 * Strain output
 *
 * A deformation gradient F is an element array of nine columns, component (i, j) in column i + 3 (j - 1); C = F'F.  Strains have
 * tensor shear and are functions of the principal values l of C, the squares of the stretches:
 *   selector 1      Green          (l - 1)/2
 *   selector 2      nominal        sqrt(l) - 1
 *   selector 3      logarithmic    ln(l)/2
 *   selector 4      Almansi        (1 - 1/l)/2
 * (another one counts as 2).  Green strain has the components of the reference axes.  The others are turned by a rotation vector
 * (axis times angle in radians), three columns of the element's history: with the rotation of the polar decomposition F = R U
 * they are V - 1, ln V and the Almansi tensor in the current axes, with zeros U - 1 and ln U in the reference axes.  The error
 * of a strain is that of C, about 4e-16 of its largest component; small strains lose no more.  A C that is singular has the
 * logarithm of the smallest normal double.
 * Source of the measures: B. R. Seth (1964), R. Hill, J. Mech. Phys. Solids 16 (1968) 229, with exponents 2, 1, 0, -2.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Gradient from the initial state, F := F U0^-1, for elements whose reference is already stretched by U0.  A stretch whose
 *  determinant is not above the smallest normal double, such as zeros where none was stored, leaves F as it is.
 *  @param[in]     nblock    (1), block: elements
 *  @param[in]     stretch0  (nblock, 6), stretch: initial stretch U0, S33
 *  @param[in,out] F         (nblock, 9), -: deformation gradient
 */
void SPX_OPE_INVINISTRETCH3DH8(const int32_t* nblock, const double* stretch0, double* F);

/** Green strain, (C - 1)/2: the measure of selector 1.
 *  @param[in]  nblock  (1), block: elements
 *  @param[in]  C       (nblock, 6), stretch: products of the columns of F, S33
 *  @param[out] strain  (nblock, 6), -: strain, S33
 */
void SPX_OPE_GREENSTRAIN3DH8(const int32_t* nblock, const double* C, double* strain);

/** The measures of the other selectors, turned by the rotation vector (up to 2e5 rad).
 *  @like SPX_OPE_GREENSTRAIN3DH8
 *  @param[in]  selector  (1), code 2|3|4: measure
 *  @param[in]  rotation  (nblock, 3), -: rotation vector, three columns of the element's history
 */
void SPX_OPE_STRETCHSTRAIN3DH8(const int32_t* nblock, const int32_t* selector, const double* C, const double* rotation,
                               double* strain);

/** Strain from deformation gradients, at one integration point of a call:
 *    1. for a selector above 1, a gradient whose first column has a component beyond 1.34e149 is scaled down to that;
 *    2. G = F U0^-1 as SPX_OPE_INVINISTRETCH3DH8, if there are initial stretches; C = G'G;
 *    3. the strain of the selector, its principal values, and J = det G.
 *  A masked element has zeros throughout.
 *  @param[in]  nblock      (1), block: elements
 *  @param[in]  ld          (1), stride: leading dimension of all arrays
 *  @param[in]  selector    (1), code 1|2|3|4: measure
 *  @param[in]  hasStretch  (1), code 0|1: nonzero reads stretch0
 *  @param[in]  ipt         (1), 1..nipt: integration point
 *  @param[in]  nipt        (1), count: integration points of F
 *  @param[in]  nhist       (1), count>=3: columns of the history
 *  @param[in]  irot        (1), 1..nhist-2: first of the three columns of the rotation vector in hist
 *  @param[in]  F           (ld, 9, nipt), -: deformation gradients
 *  @param[in]  stretch0    (ld, 6), stretch: initial stretch, S33
 *  @param[in]  hist        (ld, nhist), -: history record of the elements; not read for selector 1
 *  @param[out] G           (ld, 9), -: corrected gradient
 *  @param[out] C           (ld, 6), -: products of its columns, S33
 *  @param[out] J           (ld), -: its determinant
 *  @param[out] strain      (ld, 6), -: strain, S33
 *  @param[out] principal   (ld, 3), -: principal strains in decreasing order
 *  @param[in]  mask        (ld), mask: elements that take no part
 */
void SPX_OPE_C3DH8STRAINOUTPUT(const int32_t* nblock, const int32_t* ld, const int32_t* selector,
                               const int32_t* hasStretch, const int32_t* ipt, const int32_t* nipt, const int32_t* nhist,
                               const int32_t* irot, const double* F, const double* stretch0, const double* hist,
                               double* G, double* C, double* J, double* strain, double* principal, const double* mask);

/** Small-strain output: H = F U0^-1 - 1, strain (H + H')/2, spin (H - H')/2 and what follows from them.
 *  @like SPX_OPE_C3DH8STRAINOUTPUT
 *  @param[out] H           (ld, 9), -: displacement gradient
 *  @param[out] volumetric  (ld), -: trace of the strain
 *  @param[out] spin        (ld, 3), -: skew part 12, 23, 13
 *  @param[out] deviator    (ld, 6), -: strain less a third of its trace in the direct components, S33
 *  @param[out] equivalent  (ld), -: sqrt(2/3 e:e) of the deviator e
 */
void SPX_OPE_C3DH8LINSTRAINOUTPUT(const int32_t* nblock, const int32_t* ld, const int32_t* hasStretch,
                                  const int32_t* ipt, const int32_t* nipt, const double* F, const double* stretch0,
                                  double* H, double* volumetric, double* strain, double* spin, double* deviator,
                                  double* equivalent, double* principal, const double* mask);

/** Strain of the one-point brick: the deformation gradient as the mean over the reference volume,
 *    F = 1 + sum over the nodes of (x - X) B,
 *  with B the average operator of SPX_OPE_C3D8IOPER on the reference coordinates and eight integration points, then corrected
 *  and measured as in SPX_OPE_C3DH8STRAINOUTPUT.  An element whose reference has a determinant that is not positive is masked;
 *  a masked one has zeros.
 *  @like SPX_OPE_C3DH8STRAINOUTPUT
 *  @param[in]     dNdxi     (8, 8), -: 8 dN/dxi at the eight points, node fastest
 *  @param[in]     dNdeta    (8, 8), -: 8 dN/deta
 *  @param[in]     dNdzeta   (8, 8), -: 8 dN/dzeta
 *  @param[in]     X         (ld, 8, 3), m: reference coordinates
 *  @param[in]     x         (ld, 8, 3), m: current coordinates
 *  @param[in]     stretch0  (ld, 6), stretch: initial stretch, S33; zeros for none
 *  @param[in]     rotation  (ld, 3), -: rotation vector of the elements; not read for selector 1
 *  @param[out]    F         (ld, 9), -: mean deformation gradient, corrected
 *  @param[in,out] mask      (ld), mask: set to 1.0 where the reference is degenerate
 */
void SPX_OPE_C3D8RCSTRAINOUTPUT(const int32_t* nblock, const int32_t* ld, const int32_t* selector, const double* dNdxi,
                                const double* dNdeta, const double* dNdzeta, const double* X, const double* x,
                                const double* stretch0, const double* rotation, double* F, double* strain,
                                double* mask);

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
 *  so at most eight messages come of one counter, which ends as the number of marked elements seen.  Threads may share a
 *  counter: no element is lost from it.  While the counter does not exceed 8, each call begins with two blank lines, with
 *  or without a marked element.  In a model of part instances an element is named by its instance and its number there.
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
 *  A NaN in any thickness, length or coordinate marks the element.
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
 *  @like SPX_OPE_INIFILTEROPERFLDELSET
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
 *  @like SPX_OPE_OPERFILTERTIME
 *  @param[in]     count  (1), count: entries of the list; below 1 does nothing
 *  @param[in]     list   (count), list: point numbers
 */
void SPX_OPE_OPERFILTERTIMEELS(const int32_t* nblock, const int32_t* count, const int32_t* list, const int32_t* ncomp,
                               const int32_t* operation, const int32_t* filterdef, double* field, double* state,
                               const double* coef, double* hist, const double* time, double* times);

/** SPX_OPE_ONLYOPERATORFLD that also keeps when the operator took its value.
 *  @like SPX_OPE_OPERFILTERTIME
 */
void SPX_OPE_ONLYOPERFILTERTIME(const int32_t* nblock, const int32_t* ncomp, const int32_t* operation, double* field,
                                double* state, const double* time, double* times);

/** SPX_OPE_ONLYOPERFILTERTIME for the listed points.
 *  @like SPX_OPE_OPERFILTERTIMEELS
 */
void SPX_OPE_ONLYOPERFILTERTIMEELS(const int32_t* nblock, const int32_t* count, const int32_t* list,
                                   const int32_t* ncomp, const int32_t* operation, double* field, double* state,
                                   const double* time, double* times);

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
 * Hyperelasticity
 *
 * Strain energies U(I1, I2) of the isochoric left Cauchy-Green tensor Bbar = J^(-2/3) V V, volumetric energies of J, and any
 * model whose derivatives the caller takes.  Constants are given point by point.  The left stretch V is symmetric; components
 * that a storage does not hold are zero.  With x = I1 - 3, y = I2 - 3:
 *   POLY   polynomial of order 2    C10 x + C01 y + C20 x x + C11 x y + C02 y y         (J-1)^2/D1 + (J-1)^4/D2
 *          small strain: G = 2 (C10 + C01), K = 2/D1.  R. S. Rivlin, D. W. Saunders, Phil. Trans. R. Soc. A 243 (1951) 251
 *   POLY6  polynomial of order 6    sum of Cij x^i y^j, 1 <= i + j <= 6                 sum of (J-1)^(2i)/Di, i = 1..6
 *          coefficients by total order, then by falling power of x; C00 = 0
 *   AB     Arruda and Boyce         mu (x/2 + (I1^2-9)/(20 L) + 11 (I1^3-27)/(1050 L^2) + 19 (I1^4-81)/(7000 L^3)
 *          with L = lambdaM^2            + 519 (I1^5-243)/(673750 L^4))                 ((J^2-1)/2 - ln J)/D
 *          the series is 8 % low near the locking stretch.  E. M. Arruda, M. C. Boyce, J. Mech. Phys. Solids 41 (1993) 389
 *   VDW    Van der Waals            mu (-(lambdaM^2-3) (ln(1-eta) + eta) - (2/3) a (s/2)^(3/2))   ((J^2-1)/2 - ln J)/D
 *          s = (1-beta) I1 + beta I2 - 3, eta = sqrt(s/(lambdaM^2-3)), kept at 0.99999 beyond it; small strain: G = mu.
 *          H.-G. Kilian, Polymer 22 (1981) 209
 * The suffix names the state of stress: 3D (V in S33), GPE generalised plane strain (V in S31, the out-of-plane stretch in
 * V33), PS plane stress, UNI uniaxial.  Stress is
 *   p I + dev((2/J) [(U1 + I1 U2) Bbar - U2 Bbar Bbar]),  U1 = dU/dI1, U2 = dU/dI2, p = dUvol/dJ
 * A point with J < 1e-9 sets its flag; a flagged point has J = 1 now and in every later call that receives the flag.
 * Energies have no flag: a determinant below 2.2e-308 (inverted points too) is raised by 1.0.
 * In PS and UNI the directions without stress are closed by a pressure: what the given stretches leave there is taken off the
 * direct components, which is exact for incompressible material and where the free stretch is right.  Free stretches are
 * improved by the residual of a ...RESULT kernel and a ...CORRECTION step.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Isochoric energy and 1/J, polynomial of order 2.
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
 *  @param[in] V  (nblock, 4), stretch: left stretch, S31
 */
void SPX_MAT_HYPERPOLYS31(const int32_t* nblock, const double* C10, const double* C01, const double* C20,
                          const double* C11, const double* C02, double* energy, double* rJ, const double* V);

/** SPX_MAT_HYPERPOLYS33 for principal stretches.
 *  @like SPX_MAT_HYPERPOLYS33
 *  @param[in] V  (nblock, 3), stretch: principal stretches, S30
 */
void SPX_MAT_HYPERPOLYS30(const int32_t* nblock, const double* C10, const double* C01, const double* C20,
                          const double* C11, const double* C02, double* energy, double* rJ, const double* V);

/** Cauchy stress, and two moduli for the stable increment.
 *  @like SPX_MAT_HYPERPOLYS33
 *  @param[in]     rD1     (nblock), Pa: 1/D1
 *  @param[in]     rD2     (nblock), Pa: 1/D2
 *  @param[out]    stress  (nblock, 6), Pa: Cauchy stress, S33
 *  @param[in,out] flag    (nblock), flag: volume guard, never cleared here
 *  @param[out]    bound   (nblock), Pa: largest diagonal term of the isochoric tangent, 2 G at small strain
 *  @param[out]    bulk    (nblock), Pa: 3 J (p + dp/dJ), 3 K at small strain
 */
void SPX_MAT_HYPERPOLY3DEXP(const int32_t* nblock, const double* C10, const double* C01, const double* C20,
                            const double* C11, const double* C02, const double* rD1, const double* rD2, const double* V,
                            double* stress, double* flag, double* bound, double* bulk);

/** SPX_MAT_HYPERPOLY3DEXP in generalised plane strain; bound is the largest of 11, 22, 33, 12.
 *  @like SPX_MAT_HYPERPOLY3DEXP
 *  @param[in]  V       (nblock, 4), stretch: left stretch, S31
 *  @param[out] stress  (nblock, 4), Pa: Cauchy stress, S31
 */
void SPX_MAT_HYPERPOLYGPEEXP(const int32_t* nblock, const double* C10, const double* C01, const double* C20,
                             const double* C11, const double* C02, const double* rD1, const double* rD2,
                             const double* V, double* stress, double* flag, double* bound, double* bulk);

/** The moduli of SPX_MAT_HYPERPOLY3DEXP without its stress.
 *  @like SPX_MAT_HYPERPOLY3DEXP
 */
void SPX_MAT_HYPERPOLYMODULIEXP(const int32_t* nblock, const double* C10, const double* C01, const double* C20,
                                const double* C11, const double* C02, const double* rD1, const double* rD2,
                                const double* V, double* flag, double* bound, double* bulk);

/** Isochoric energy and 1/J, polynomial of order 6.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  C10     (nblock), Pa: coefficient
 *  @param[in]  C01     (nblock), Pa: coefficient
 *  @param[in]  C20     (nblock), Pa: coefficient
 *  @param[in]  C11     (nblock), Pa: coefficient
 *  @param[in]  C02     (nblock), Pa: coefficient
 *  @param[in]  C30     (nblock), Pa: coefficient
 *  @param[in]  C21     (nblock), Pa: coefficient
 *  @param[in]  C12     (nblock), Pa: coefficient
 *  @param[in]  C03     (nblock), Pa: coefficient
 *  @param[in]  C40     (nblock), Pa: coefficient
 *  @param[in]  C31     (nblock), Pa: coefficient
 *  @param[in]  C22     (nblock), Pa: coefficient
 *  @param[in]  C13     (nblock), Pa: coefficient
 *  @param[in]  C04     (nblock), Pa: coefficient
 *  @param[in]  C50     (nblock), Pa: coefficient
 *  @param[in]  C41     (nblock), Pa: coefficient
 *  @param[in]  C32     (nblock), Pa: coefficient
 *  @param[in]  C23     (nblock), Pa: coefficient
 *  @param[in]  C14     (nblock), Pa: coefficient
 *  @param[in]  C05     (nblock), Pa: coefficient
 *  @param[in]  C60     (nblock), Pa: coefficient
 *  @param[in]  C51     (nblock), Pa: coefficient
 *  @param[in]  C42     (nblock), Pa: coefficient
 *  @param[in]  C33     (nblock), Pa: coefficient
 *  @param[in]  C24     (nblock), Pa: coefficient
 *  @param[in]  C15     (nblock), Pa: coefficient
 *  @param[in]  C06     (nblock), Pa: coefficient
 *  @param[out] energy  (nblock), J/m3: isochoric strain energy per undeformed volume
 *  @param[out] rJ      (nblock), -: 1/J
 *  @param[in]  V       (nblock, 6), stretch: left stretch, S33
 */
void SPX_MAT_HYPERPOLY6S33(const int32_t* nblock, const double* C10, const double* C01, const double* C20,
                           const double* C11, const double* C02, const double* C30, const double* C21,
                           const double* C12, const double* C03, const double* C40, const double* C31,
                           const double* C22, const double* C13, const double* C04, const double* C50,
                           const double* C41, const double* C32, const double* C23, const double* C14,
                           const double* C05, const double* C60, const double* C51, const double* C42,
                           const double* C33, const double* C24, const double* C15, const double* C06, double* energy,
                           double* rJ, const double* V);

/** SPX_MAT_HYPERPOLY6S33 for stretches with 13 = 23 = 0.
 *  @like SPX_MAT_HYPERPOLY6S33
 *  @param[in] V  (nblock, 4), stretch: left stretch, S31
 */
void SPX_MAT_HYPERPOLY6S31(const int32_t* nblock, const double* C10, const double* C01, const double* C20,
                           const double* C11, const double* C02, const double* C30, const double* C21,
                           const double* C12, const double* C03, const double* C40, const double* C31,
                           const double* C22, const double* C13, const double* C04, const double* C50,
                           const double* C41, const double* C32, const double* C23, const double* C14,
                           const double* C05, const double* C60, const double* C51, const double* C42,
                           const double* C33, const double* C24, const double* C15, const double* C06, double* energy,
                           double* rJ, const double* V);

/** SPX_MAT_HYPERPOLY6S33 for principal stretches.
 *  @like SPX_MAT_HYPERPOLY6S33
 *  @param[in] V  (nblock, 3), stretch: principal stretches, S30
 */
void SPX_MAT_HYPERPOLY6S30(const int32_t* nblock, const double* C10, const double* C01, const double* C20,
                           const double* C11, const double* C02, const double* C30, const double* C21,
                           const double* C12, const double* C03, const double* C40, const double* C31,
                           const double* C22, const double* C13, const double* C04, const double* C50,
                           const double* C41, const double* C32, const double* C23, const double* C14,
                           const double* C05, const double* C60, const double* C51, const double* C42,
                           const double* C33, const double* C24, const double* C15, const double* C06, double* energy,
                           double* rJ, const double* V);

/** Cauchy stress, and two moduli for the stable increment.
 *  @like SPX_MAT_HYPERPOLY6S33
 *  @param[in]     rD1     (nblock), Pa: 1/D1
 *  @param[in]     rD2     (nblock), Pa: 1/D2
 *  @param[in]     rD3     (nblock), Pa: 1/D3
 *  @param[in]     rD4     (nblock), Pa: 1/D4
 *  @param[in]     rD5     (nblock), Pa: 1/D5
 *  @param[in]     rD6     (nblock), Pa: 1/D6
 *  @param[out]    stress  (nblock, 6), Pa: Cauchy stress, S33
 *  @param[in,out] flag    (nblock), flag: volume guard, never cleared here
 *  @param[out]    bound   (nblock), Pa: largest diagonal term of the isochoric tangent, 2 G at small strain
 *  @param[out]    bulk    (nblock), Pa: 3 J (p + dp/dJ), 3 K at small strain
 */
void SPX_MAT_HYPERPOLY63DEXP(const int32_t* nblock, const double* C10, const double* C01, const double* C20,
                             const double* C11, const double* C02, const double* C30, const double* C21,
                             const double* C12, const double* C03, const double* C40, const double* C31,
                             const double* C22, const double* C13, const double* C04, const double* C50,
                             const double* C41, const double* C32, const double* C23, const double* C14,
                             const double* C05, const double* C60, const double* C51, const double* C42,
                             const double* C33, const double* C24, const double* C15, const double* C06,
                             const double* rD1, const double* rD2, const double* rD3, const double* rD4,
                             const double* rD5, const double* rD6, const double* V, double* stress, double* flag,
                             double* bound, double* bulk);

/** SPX_MAT_HYPERPOLY63DEXP in generalised plane strain; bound is the largest of 11, 22, 33, 12.
 *  @like SPX_MAT_HYPERPOLY63DEXP
 *  @param[in]  V       (nblock, 4), stretch: left stretch, S31
 *  @param[out] stress  (nblock, 4), Pa: Cauchy stress, S31
 */
void SPX_MAT_HYPERPOLY6GPEEXP(const int32_t* nblock, const double* C10, const double* C01, const double* C20,
                              const double* C11, const double* C02, const double* C30, const double* C21,
                              const double* C12, const double* C03, const double* C40, const double* C31,
                              const double* C22, const double* C13, const double* C04, const double* C50,
                              const double* C41, const double* C32, const double* C23, const double* C14,
                              const double* C05, const double* C60, const double* C51, const double* C42,
                              const double* C33, const double* C24, const double* C15, const double* C06,
                              const double* rD1, const double* rD2, const double* rD3, const double* rD4,
                              const double* rD5, const double* rD6, const double* V, double* stress, double* flag,
                              double* bound, double* bulk);

/** The moduli of SPX_MAT_HYPERPOLY63DEXP without its stress.
 *  @like SPX_MAT_HYPERPOLY63DEXP
 */
void SPX_MAT_HYPERPOLY6MODULIEXP(const int32_t* nblock, const double* C10, const double* C01, const double* C20,
                                 const double* C11, const double* C02, const double* C30, const double* C21,
                                 const double* C12, const double* C03, const double* C40, const double* C31,
                                 const double* C22, const double* C13, const double* C04, const double* C50,
                                 const double* C41, const double* C32, const double* C23, const double* C14,
                                 const double* C05, const double* C60, const double* C51, const double* C42,
                                 const double* C33, const double* C24, const double* C15, const double* C06,
                                 const double* rD1, const double* rD2, const double* rD3, const double* rD4,
                                 const double* rD5, const double* rD6, const double* V, double* flag, double* bound,
                                 double* bulk);

/** Isochoric energy and 1/J, Arruda and Boyce.  The shear modulus at small strain is
 *  mu (1 + 3/(5 L) + 99/(175 L^2) + 513/(875 L^3) + 42039/(67375 L^4)).
 *  @param[in]  nblock   (1), block: points
 *  @param[in]  mu       (nblock), Pa: shear modulus of the series
 *  @param[in]  lambdaM  (nblock), locking stretch: stretch of a chain pulled straight
 *  @param[out] energy   (nblock), J/m3: isochoric strain energy per undeformed volume
 *  @param[out] rJ       (nblock), -: 1/J
 *  @param[in]  V        (nblock, 6), stretch: left stretch, S33
 */
void SPX_MAT_HYPERABS33(const int32_t* nblock, const double* mu, const double* lambdaM, double* energy, double* rJ,
                        const double* V);

/** SPX_MAT_HYPERABS33 for stretches with 13 = 23 = 0.
 *  @like SPX_MAT_HYPERABS33
 *  @param[in] V  (nblock, 4), stretch: left stretch, S31
 */
void SPX_MAT_HYPERABS31(const int32_t* nblock, const double* mu, const double* lambdaM, double* energy, double* rJ,
                        const double* V);

/** SPX_MAT_HYPERABS33 for principal stretches.
 *  @like SPX_MAT_HYPERABS33
 *  @param[in] V  (nblock, 3), stretch: principal stretches, S30
 */
void SPX_MAT_HYPERABS30(const int32_t* nblock, const double* mu, const double* lambdaM, double* energy, double* rJ,
                        const double* V);

/** Cauchy stress, and two moduli for the stable increment.
 *  @like SPX_MAT_HYPERABS33
 *  @param[in]     D       (nblock), 1/Pa: 2/K
 *  @param[out]    stress  (nblock, 6), Pa: Cauchy stress, S33
 *  @param[in,out] flag    (nblock), flag: volume guard, never cleared here
 *  @param[out]    bound   (nblock), Pa: largest diagonal term of the isochoric tangent, 2 G at small strain
 *  @param[out]    bulk    (nblock), Pa: 3 J (p + dp/dJ), 3 K at small strain
 */
void SPX_MAT_HYPERAB3DEXP(const int32_t* nblock, const double* mu, const double* lambdaM, const double* D,
                          const double* V, double* stress, double* flag, double* bound, double* bulk);

/** SPX_MAT_HYPERAB3DEXP in generalised plane strain; bound is the largest of 11, 22, 33, 12.
 *  @like SPX_MAT_HYPERAB3DEXP
 *  @param[in]  V       (nblock, 4), stretch: left stretch, S31
 *  @param[out] stress  (nblock, 4), Pa: Cauchy stress, S31
 */
void SPX_MAT_HYPERABGPEEXP(const int32_t* nblock, const double* mu, const double* lambdaM, const double* D,
                           const double* V, double* stress, double* flag, double* bound, double* bulk);

/** The moduli of SPX_MAT_HYPERAB3DEXP without its stress.
 *  @like SPX_MAT_HYPERAB3DEXP
 */
void SPX_MAT_HYPERABMODULIEXP(const int32_t* nblock, const double* mu, const double* lambdaM, const double* D,
                              const double* V, double* flag, double* bound, double* bulk);

/** Isochoric energy and 1/J, Van der Waals; beyond locking the logarithm keeps the largest eta, without a report.
 *  @param[in]  nblock   (1), block: points
 *  @param[in]  mu       (nblock), Pa: shear modulus at small strain
 *  @param[in]  lambdaM  (nblock), locking stretch: above sqrt(3)
 *  @param[in]  a        (nblock), -: global interaction
 *  @param[in]  beta     (nblock), -: part of I2 in the invariant
 *  @param[out] energy   (nblock), J/m3: isochoric strain energy per undeformed volume
 *  @param[out] rJ       (nblock), -: 1/J
 *  @param[in]  V        (nblock, 6), stretch: left stretch, S33
 */
void SPX_MAT_HYPERVDWS33(const int32_t* nblock, const double* mu, const double* lambdaM, const double* a,
                         const double* beta, double* energy, double* rJ, const double* V);

/** SPX_MAT_HYPERVDWS33 for stretches with 13 = 23 = 0.
 *  @like SPX_MAT_HYPERVDWS33
 *  @param[in] V  (nblock, 4), stretch: left stretch, S31
 */
void SPX_MAT_HYPERVDWS31(const int32_t* nblock, const double* mu, const double* lambdaM, const double* a,
                         const double* beta, double* energy, double* rJ, const double* V);

/** SPX_MAT_HYPERVDWS33 for principal stretches.
 *  @like SPX_MAT_HYPERVDWS33
 *  @param[in] V  (nblock, 3), stretch: principal stretches, S30
 */
void SPX_MAT_HYPERVDWS30(const int32_t* nblock, const double* mu, const double* lambdaM, const double* a,
                         const double* beta, double* energy, double* rJ, const double* V);

/** Cauchy stress, and two moduli for the stable increment.
 *  Where eta is above 0.99999 the block is computed with that value; then an "Error" says "The locking stretch is reached,
 *  the resulting ETA is over 0.99999, which is too close to one." and the analysis ends with code 20.  The factor 1/sqrt(s)
 *  of the second derivatives is not taken above 1/(0.99999 sqrt(lambdaM^2 - 3)): away from locking bound is a lower estimate.
 *  @like SPX_MAT_HYPERVDWS33
 *  @param[in]     D       (nblock), 1/Pa: 2/K
 *  @param[out]    stress  (nblock, 6), Pa: Cauchy stress, S33
 *  @param[in,out] flag    (nblock), flag: volume guard, never cleared here
 *  @param[out]    bound   (nblock), Pa: largest diagonal term of the isochoric tangent, 2 G at small strain
 *  @param[out]    bulk    (nblock), Pa: 3 J (p + dp/dJ), 3 K at small strain
 */
void SPX_MAT_HYPERVDW3DEXP(const int32_t* nblock, const double* mu, const double* lambdaM, const double* a,
                           const double* beta, const double* D, const double* V, double* stress, double* flag,
                           double* bound, double* bulk);

/** SPX_MAT_HYPERVDW3DEXP in generalised plane strain; bound is the largest of 11, 22, 33, 12.
 *  @like SPX_MAT_HYPERVDW3DEXP
 *  @param[in]  V       (nblock, 4), stretch: left stretch, S31
 *  @param[out] stress  (nblock, 4), Pa: Cauchy stress, S31
 */
void SPX_MAT_HYPERVDWGPEEXP(const int32_t* nblock, const double* mu, const double* lambdaM, const double* a,
                            const double* beta, const double* D, const double* V, double* stress, double* flag,
                            double* bound, double* bulk);

/** The moduli of SPX_MAT_HYPERVDW3DEXP without its stress.
 *  @like SPX_MAT_HYPERVDW3DEXP
 */
void SPX_MAT_HYPERVDWMODULIEXP(const int32_t* nblock, const double* mu, const double* lambdaM, const double* a,
                               const double* beta, const double* D, const double* V, double* flag, double* bound,
                               double* bulk);

/* ---------------------------------------------------------------------------------------------------------------------
 * Hyperelasticity, any model
 *
 * For models of the caller's own: the derivatives are taken at the invariants that SPX_MAT_HYPERINV... gives and passed in.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Isochoric invariants and 1/J.
 *  @param[in]  nblock  (1), block: points
 *  @param[out] I1      (nblock), -: first invariant of Bbar
 *  @param[out] I2      (nblock), -: second invariant of Bbar
 *  @param[out] rJ      (nblock), -: 1/J
 *  @param[in]  V       (nblock, 6), stretch: left stretch, S33
 */
void SPX_MAT_HYPERINVS33(const int32_t* nblock, double* I1, double* I2, double* rJ, const double* V);

/** SPX_MAT_HYPERINVS33 for stretches with 13 = 23 = 0.
 *  @like SPX_MAT_HYPERINVS33
 *  @param[in] V  (nblock, 4), stretch: left stretch, S31
 */
void SPX_MAT_HYPERINVS31(const int32_t* nblock, double* I1, double* I2, double* rJ, const double* V);

/** SPX_MAT_HYPERINVS33 for principal stretches.
 *  @like SPX_MAT_HYPERINVS33
 *  @param[in] V  (nblock, 3), stretch: principal stretches, S30
 */
void SPX_MAT_HYPERINVS30(const int32_t* nblock, double* I1, double* I2, double* rJ, const double* V);

/** SPX_MAT_HYPERINVS33 for the two principal stretches of an incompressible membrane: the third is the reciprocal of their
 *  product (1 where the product is below 2.2e-308) and rJ is 1.
 *  @like SPX_MAT_HYPERINVS33
 *  @param[in] V  (nblock, 2), stretch: principal stretches in the plane
 */
void SPX_MAT_HYPERINVS20(const int32_t* nblock, double* I1, double* I2, double* rJ, const double* V);

/** Second invariant of B = V V, the volume not taken out.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  V       (nblock, 6), stretch: left stretch, S33
 *  @param[out] I2      (nblock), -: second invariant of B
 */
void SPX_MAT_HYPERBINVRNT3D(const int32_t* nblock, const double* V, double* I2);

/** SPX_MAT_HYPERBINVRNT3D in generalised plane strain.
 *  @like SPX_MAT_HYPERBINVRNT3D
 *  @param[in] V  (nblock, 4), stretch: left stretch, S31
 */
void SPX_MAT_HYPERBINVRNTGPE(const int32_t* nblock, const double* V, double* I2);

/** SPX_MAT_HYPERBINVRNT3D in a uniaxial state.
 *  @like SPX_MAT_HYPERBINVRNT3D
 *  @param[in] axial    (nblock), axial stretch: stretch along the axis
 *  @param[in] lateral  (nblock), axial stretch: stretch across it, the same in both directions
 */
void SPX_MAT_HYPERBINVRNTUNI(const int32_t* nblock, const double* axial, const double* lateral, double* I2);

/** SPX_MAT_HYPERBINVRNT3D for principal stretches of listed points.
 *  @like SPX_MAT_HYPERBINVRNT3D
 *  @param[in] count  (1), count: entries of the list; below 1 does nothing
 *  @param[in] list   (count), list: point numbers
 *  @param[in] V      (nblock, 3), stretch: principal stretches, S30
 */
void SPX_MAT_HYPERBINVRNT30INDX(const int32_t* nblock, const int32_t* count, const int32_t* list, const double* V,
                                double* I2);

/** Cauchy stress.
 *  @param[in]     nblock  (1), block: points
 *  @param[in]     U1      (nblock), Pa: dU/dI1
 *  @param[in]     U2      (nblock), Pa: dU/dI2
 *  @param[in]     p       (nblock), Pa: volumetric stress dUvol/dJ
 *  @param[in]     V       (nblock, 6), stretch: left stretch, S33
 *  @param[out]    stress  (nblock, 6), Pa: Cauchy stress, S33
 *  @param[in,out] flag    (nblock), flag: volume guard, never cleared here
 */
void SPX_MAT_HYPER3DEXP(const int32_t* nblock, const double* U1, const double* U2, const double* p, const double* V,
                        double* stress, double* flag);

/** SPX_MAT_HYPER3DEXP in generalised plane strain.
 *  @like SPX_MAT_HYPER3DEXP
 *  @param[in]  V       (nblock, 4), stretch: left stretch, S31
 *  @param[out] stress  (nblock, 4), Pa: Cauchy stress, S31
 */
void SPX_MAT_HYPERGPEEXP(const int32_t* nblock, const double* U1, const double* U2, const double* p, const double* V,
                         double* stress, double* flag);

/** Moduli for the stable increment.
 *  @like SPX_MAT_HYPER3DEXP
 *  @param[in]  U11    (nblock), Pa: d2U/dI1dI1
 *  @param[in]  U12    (nblock), Pa: d2U/dI1dI2
 *  @param[in]  U22    (nblock), Pa: d2U/dI2dI2
 *  @param[in]  dp     (nblock), Pa: dp/dJ
 *  @param[out] bound  (nblock), Pa: largest diagonal term of the isochoric tangent, 2 G at small strain
 *  @param[out] bulk   (nblock), Pa: 3 J (p + dp/dJ), 3 K at small strain
 */
void SPX_MAT_HYPERMODULI3DEXP(const int32_t* nblock, const double* U1, const double* U2, const double* p,
                              const double* U11, const double* U12, const double* U22, const double* dp,
                              const double* V, double* flag, double* bound, double* bulk);

/** SPX_MAT_HYPERMODULI3DEXP for stretches with 13 = 23 = 0, the plane states; bound is the largest of 11, 22, 33, 12.
 *  @like SPX_MAT_HYPERMODULI3DEXP
 *  @param[in] V  (nblock, 4), stretch: left stretch, S31
 */
void SPX_MAT_HYPERMODULI2DEXP(const int32_t* nblock, const double* U1, const double* U2, const double* p,
                              const double* U11, const double* U12, const double* U22, const double* dp,
                              const double* V, double* flag, double* bound, double* bulk);

/** SPX_MAT_HYPERMODULI3DEXP for principal stretches, as a uniaxial state has; bound is the largest of 11, 22, 33.
 *  @like SPX_MAT_HYPERMODULI3DEXP
 *  @param[in] V  (nblock, 3), stretch: principal stretches, S30
 */
void SPX_MAT_HYPERMODULIUNIEXP(const int32_t* nblock, const double* U1, const double* U2, const double* p,
                               const double* U11, const double* U12, const double* U22, const double* dp,
                               const double* V, double* flag, double* bound, double* bulk);

/** SPX_MAT_HYPER3DEXP of a body that has expanded freely: the stress is that of the elastic stretch V/(1 + expansion), with
 *  energies per volume of the free body.  The isochoric invariants are those of V; p is taken at J/(1 + expansion)^3.
 *  @like SPX_MAT_HYPER3DEXP
 *  @param[in] expansion  (nblock), expansion: free thermal strain, the same in all directions
 */
void SPX_MAT_HYPER3DTHERMAL(const int32_t* nblock, const double* U1, const double* U2, const double* p,
                            const double* expansion, const double* V, double* stress, double* flag);

/** SPX_MAT_HYPER3DTHERMAL in generalised plane strain.
 *  @like SPX_MAT_HYPER3DTHERMAL
 *  @param[in]  V       (nblock, 4), stretch: left stretch, S31
 *  @param[out] stress  (nblock, 4), Pa: Cauchy stress, S31
 */
void SPX_MAT_HYPERGPETHERMAL(const int32_t* nblock, const double* U1, const double* U2, const double* p,
                             const double* expansion, const double* V, double* stress, double* flag);

/** SPX_MAT_HYPER3DTHERMAL in plane stress, closed by a pressure.  An expansion of 0 gives the plane stress of any model.
 *  @like SPX_MAT_HYPER3DTHERMAL
 *  @param[in]  V          (nblock, 3), plane stretch: left stretch in the plane, S21
 *  @param[in]  thickness  (nblock), axial stretch: stretch of the thickness
 *  @param[out] stress     (nblock, 3), Pa: Cauchy stress in the plane, S21
 */
void SPX_MAT_HYPERPSTHERMAL(const int32_t* nblock, const double* U1, const double* U2, const double* expansion,
                            const double* V, const double* thickness, double* stress, double* flag);

/** SPX_MAT_HYPER3DTHERMAL in a uniaxial state, closed by a pressure.
 *  @like SPX_MAT_HYPER3DTHERMAL
 *  @param[in]  axial    (nblock), axial stretch: stretch along the axis
 *  @param[in]  lateral  (nblock), axial stretch: stretch across it, the same in both directions
 *  @param[out] stress   (nblock), Pa: axial Cauchy stress
 */
void SPX_MAT_HYPERUNITHERMAL(const int32_t* nblock, const double* U1, const double* U2, const double* expansion,
                             const double* axial, const double* lateral, double* stress, double* flag);

/** A step of Newton's method towards plane stress: thickness *= exp(-residual/slope), the exponent within 1/2 either way.
 *  Without a positive slope the step is a quarter, against the sign of the residual.
 *  @param[in]     nblock    (1), block: points
 *  @param[in]     residual  (nblock), Pa: Kirchhoff stress in the free direction
 *  @param[in]     slope     (nblock), Pa: its derivative by the logarithm of the free stretch
 *  @param[in,out] stretch   (nblock), axial stretch: stretch of the thickness
 */
void SPX_MAT_HYPERPSCORRECTION(const int32_t* nblock, const double* residual, const double* slope, double* stretch);

/** SPX_MAT_HYPERPSCORRECTION for the lateral stretch of a uniaxial state; the residual and its slope are those of one of the
 *  two lateral directions while both move.
 *  @like SPX_MAT_HYPERPSCORRECTION
 *  @param[in,out] stretch  (nblock), axial stretch: lateral stretch
 */
void SPX_MAT_HYPERUNICORRECTION(const int32_t* nblock, const double* residual, const double* slope, double* stretch);

/** The stretch of the thickness with which plane stress begins: 1/(V11 V22 - V12 V12), which keeps the volume; 1 where that
 *  area is below 2.2e-308.
 *  @param[in]  nblock   (1), block: points
 *  @param[in]  V        (nblock, 3), plane stretch: left stretch in the plane, S21
 *  @param[out] stretch  (nblock), axial stretch: stretch of the thickness
 */
void SPX_MAT_HYPERINITSTRETCHYYEXP(const int32_t* nblock, const double* V, double* stretch);

/** Cauchy stress of an energy U of the principal stretches: sum of (lambda dU/dlambda)/J n n, and p I, with moduli for the
 *  stable increment.  The terms of the tangent are d(tau)/d(ln lambda)/J and, for shear, (tau1 - tau2) coth(ln lambda1 -
 *  ln lambda2)/J.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  dU      (nblock, 3), Pa: dU/dlambda of the three principal stretches
 *  @param[in]  ddU     (nblock, 6), Pa: d2U/dlambda dlambda: 11 22 33 12 23 13
 *  @param[in]  p       (nblock), Pa: volumetric stress, 0.0 where U has it
 *  @param[in]  dp      (nblock), Pa: dp/dJ
 *  @param[in]  V       (nblock, 3), stretch: principal stretches, S30
 *  @param[in]  axes    (nblock, 3, 3), -: principal directions in columns, ordered as the stretches
 *  @param[in]  rJ      (nblock), -: 1/J
 *  @param[out] stress  (nblock, 6), Pa: Cauchy stress, S33
 *  @param[out] bound   (nblock), Pa: largest term of the tangent without the mean, 4/3 G to 2 G at small strain
 *  @param[out] bulk    (nblock), Pa: 3 times the mean direct term and 3 J (p + dp/dJ), 3 K at small strain
 */
void SPX_MAT_HYPERELAS3D(const int32_t* nblock, const double* dU, const double* ddU, const double* p, const double* dp,
                         const double* V, const double* axes, const double* rJ, double* stress, double* bound,
                         double* bulk);

/** SPX_MAT_HYPERELAS3D in generalised plane strain: one of the directions is axis 3.
 *  @like SPX_MAT_HYPERELAS3D
 *  @param[out] stress  (nblock, 4), Pa: Cauchy stress, S31
 */
void SPX_MAT_HYPERELASGPE(const int32_t* nblock, const double* dU, const double* ddU, const double* p, const double* dp,
                          const double* V, const double* axes, const double* rJ, double* stress, double* bound,
                          double* bulk);

/** SPX_MAT_HYPERELAS3D in plane stress: one of the directions is axis 3, and its stress is closed by a pressure.  That takes
 *  the place of p, which enters bulk alone: the stress is that of incompressible material.
 *  @like SPX_MAT_HYPERELAS3D
 *  @param[out] stress  (nblock, 3), Pa: Cauchy stress in the plane, S21
 */
void SPX_MAT_HYPERELASPS(const int32_t* nblock, const double* dU, const double* ddU, const double* p, const double* dp,
                         const double* V, const double* axes, const double* rJ, double* stress, double* bound,
                         double* bulk);

/** SPX_MAT_HYPERELAS3D in a uniaxial state, the axis first, closed by a pressure; p enters bulk alone.
 *  @like SPX_MAT_HYPERELAS3D
 *  @param[out] stress  (nblock), Pa: axial Cauchy stress
 */
void SPX_MAT_HYPERELASUNI(const int32_t* nblock, const double* dU, const double* ddU, const double* p, const double* dp,
                          const double* V, const double* rJ, double* stress, double* bound, double* bulk);

/* ---------------------------------------------------------------------------------------------------------------------
 * Hyperelasticity, test curves
 *
 * Models that follow a curve of tests (R. S. Marlow, Constitutive Models for Rubber III (2003) 157): U is a function of I1
 * alone, whose derivative the caller reads from the curve.  A determinant below 1.1e-16 is raised by 1.0; there is no flag.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Cauchy stress.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  U1      (nblock), Pa: dU/dI1
 *  @param[in]  p       (nblock), Pa: volumetric stress dUvol/dJ
 *  @param[in]  V       (nblock, 6), stretch: left stretch, S33
 *  @param[out] stress  (nblock, 6), Pa: Cauchy stress, S33
 */
void SPX_MAT_HYPERMARLOW3DEXP(const int32_t* nblock, const double* U1, const double* p, const double* V,
                              double* stress);

/** SPX_MAT_HYPERMARLOW3DEXP in generalised plane strain.
 *  @like SPX_MAT_HYPERMARLOW3DEXP
 *  @param[in]  V       (nblock, 4), stretch: left stretch, S31
 *  @param[out] stress  (nblock, 4), Pa: Cauchy stress, S31
 */
void SPX_MAT_HYPERMARLOWGPEEXP(const int32_t* nblock, const double* U1, const double* p, const double* V,
                               double* stress);

/** SPX_MAT_HYPERMARLOW3DEXP in plane stress, closed by a pressure.
 *  @like SPX_MAT_HYPERMARLOW3DEXP
 *  @param[in]  V          (nblock, 3), plane stretch: left stretch in the plane, S21
 *  @param[in]  thickness  (nblock), axial stretch: stretch of the thickness
 *  @param[out] stress     (nblock, 3), Pa: Cauchy stress in the plane, S21
 */
void SPX_MAT_HYPERMARLOWPSEXP(const int32_t* nblock, const double* U1, const double* V, const double* thickness,
                              double* stress);

/** SPX_MAT_HYPERMARLOW3DEXP in a uniaxial state, closed by a pressure.
 *  @like SPX_MAT_HYPERMARLOW3DEXP
 *  @param[in]  axial    (nblock), axial stretch: stretch along the axis
 *  @param[in]  lateral  (nblock), axial stretch: stretch across it, the same in both directions
 *  @param[out] stress   (nblock), Pa: axial Cauchy stress
 */
void SPX_MAT_HYPERMARLOWUNIEXP(const int32_t* nblock, const double* U1, const double* axial, const double* lateral,
                               double* stress);

/** Moduli for the stable increment.
 *  @like SPX_MAT_HYPERMARLOW3DEXP
 *  @param[in]  U11    (nblock), Pa: d2U/dI1dI1
 *  @param[in]  dp     (nblock), Pa: dp/dJ
 *  @param[out] bound  (nblock), Pa: largest diagonal term of the isochoric tangent, 2 G at small strain
 *  @param[out] bulk   (nblock), Pa: 3 J (p + dp/dJ), 3 K at small strain
 */
void SPX_MAT_MARLOWMODULI3DEXP(const int32_t* nblock, const double* U1, const double* p, const double* U11,
                               const double* dp, const double* V, double* bound, double* bulk);

/** SPX_MAT_MARLOWMODULI3DEXP for stretches with 13 = 23 = 0.
 *  @like SPX_MAT_MARLOWMODULI3DEXP
 *  @param[in] V  (nblock, 4), stretch: left stretch, S31
 */
void SPX_MAT_MARLOWMODULI2DEXP(const int32_t* nblock, const double* U1, const double* p, const double* U11,
                               const double* dp, const double* V, double* bound, double* bulk);

/** SPX_MAT_MARLOWMODULI3DEXP for principal stretches.
 *  @like SPX_MAT_MARLOWMODULI3DEXP
 *  @param[in] V  (nblock, 3), stretch: principal stretches, S30
 */
void SPX_MAT_MARLOWMODULIUNIEXP(const int32_t* nblock, const double* U1, const double* p, const double* U11,
                                const double* dp, const double* V, double* bound, double* bulk);

/** What is left of plane stress at a thickness, for SPX_MAT_HYPERPSCORRECTION.
 *  @like SPX_MAT_MARLOWMODULI3DEXP
 *  @param[in]  V          (nblock, 3), plane stretch: left stretch in the plane, S21
 *  @param[in]  thickness  (nblock), axial stretch: stretch of the thickness
 *  @param[out] residual   (nblock), Pa: Kirchhoff stress in the free direction
 *  @param[out] slope      (nblock), Pa: its derivative by the logarithm of the free stretch
 */
void SPX_MAT_MARLOWPSRESULT(const int32_t* nblock, const double* U1, const double* p, const double* U11,
                            const double* dp, const double* V, const double* thickness, double* residual,
                            double* slope);

/** What is left across the axis at a lateral stretch, for SPX_MAT_HYPERUNICORRECTION; both lateral stretches move.
 *  @like SPX_MAT_MARLOWPSRESULT
 *  @param[in] axial    (nblock), axial stretch: stretch along the axis
 *  @param[in] lateral  (nblock), axial stretch: stretch across it, the same in both directions
 */
void SPX_MAT_MARLOWUNIRESULT(const int32_t* nblock, const double* U1, const double* p, const double* U11,
                             const double* dp, const double* axial, const double* lateral, double* residual,
                             double* slope);

/* ---------------------------------------------------------------------------------------------------------------------
 * Rubber and foam by their stretches
 *
 * Energies that are sums of powers, with three or six terms:
 *   OGDEN  sum of 2 mu/alpha^2 (l1^alpha + l2^alpha + l3^alpha - 3), l = lambda J^(-1/3), and the sum of (J-1)^(2i)/Di
 *          small strain: G = sum of mu, K = 2/D1.  R. W. Ogden, Proc. R. Soc. A 326 (1972) 565
 *   HFOAM  sum of 2 mu/alpha^2 (l1^alpha + l2^alpha + l3^alpha - 3 + (J^(-alpha beta) - 1)/beta), l = lambda
 *          small strain: G = sum of mu, K = sum of 2 mu (1/3 + beta).  B. Storakers, J. Mech. Phys. Solids 34 (1986) 125
 * A term with alpha^2/4 below 2.2e-308 vanishes; above that a small alpha nears the limit mu (sum of ln^2 l + beta ln^2 J).
 * beta = 0 gives the limit -alpha ln J.  The rounding of the bracket leaves an error of about 1e-15 mu/alpha^2 in the energy of
 * a term with |alpha| of 1/64 and more, which counts at small strains; smaller exponents have a form without it.
 * A point whose product of stretches is below 2.2e-308 sets its flag; a flagged point has J = 1 and keeps its stretches.
 * Stresses in three dimensions: principal stretches and directions by GLO_UTI_EIG33V, the derivatives here, then
 * SPX_MAT_HYPERELAS3D.  PSEXP and UNIEXP find the free stretch themselves, by Newton's method in its logarithm from the one
 * that is given (from the one that keeps the volume when that is not positive), each point to its own convergence; what has not
 * converged in 20 steps is bracketed, between 1e-100 and 1e100, and bisected where Newton's method would not halve its steps.
 * A point without a solution there has NaN for its free stretch, stress and moduli.  Trial stretches set no flag.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Isochoric energy and 1/J, three terms.
 *  @param[in]     nblock  (1), block: points
 *  @param[in]     mu1     (nblock), Pa: shear modulus of term 1
 *  @param[in]     alpha1  (nblock), exponent: exponent of term 1
 *  @param[in]     mu2     (nblock), Pa: shear modulus of term 2
 *  @param[in]     alpha2  (nblock), exponent: exponent of term 2
 *  @param[in]     mu3     (nblock), Pa: shear modulus of term 3
 *  @param[in]     alpha3  (nblock), exponent: exponent of term 3
 *  @param[out]    energy  (nblock), J/m3: strain energy per undeformed volume; of rubber the isochoric one
 *  @param[out]    rJ      (nblock), -: 1/J
 *  @param[in]     V       (nblock, 3), stretch: principal stretches, S30
 *  @param[in,out] flag    (nblock), flag: volume guard, never cleared here
 */
void SPX_MAT_OGDEN(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                   const double* alpha2, const double* mu3, const double* alpha3, double* energy, double* rJ,
                   const double* V, double* flag);

/** Isochoric energy and 1/J, six terms.
 *  @param[in]     nblock  (1), block: points
 *  @param[in]     mu1     (nblock), Pa: shear modulus of term 1
 *  @param[in]     alpha1  (nblock), exponent: exponent of term 1
 *  @param[in]     mu2     (nblock), Pa: shear modulus of term 2
 *  @param[in]     alpha2  (nblock), exponent: exponent of term 2
 *  @param[in]     mu3     (nblock), Pa: shear modulus of term 3
 *  @param[in]     alpha3  (nblock), exponent: exponent of term 3
 *  @param[in]     mu4     (nblock), Pa: shear modulus of term 4
 *  @param[in]     alpha4  (nblock), exponent: exponent of term 4
 *  @param[in]     mu5     (nblock), Pa: shear modulus of term 5
 *  @param[in]     alpha5  (nblock), exponent: exponent of term 5
 *  @param[in]     mu6     (nblock), Pa: shear modulus of term 6
 *  @param[in]     alpha6  (nblock), exponent: exponent of term 6
 *  @param[out]    energy  (nblock), J/m3: strain energy per undeformed volume; of rubber the isochoric one
 *  @param[out]    rJ      (nblock), -: 1/J
 *  @param[in]     V       (nblock, 3), stretch: principal stretches, S30
 *  @param[in,out] flag    (nblock), flag: volume guard, never cleared here
 */
void SPX_MAT_OGDEN6(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                    const double* alpha2, const double* mu3, const double* alpha3, const double* mu4,
                    const double* alpha4, const double* mu5, const double* alpha5, const double* mu6,
                    const double* alpha6, double* energy, double* rJ, const double* V, double* flag);

/** Energy and 1/J, three terms.
 *  @param[in]     nblock  (1), block: points
 *  @param[in]     mu1     (nblock), Pa: shear modulus of term 1
 *  @param[in]     alpha1  (nblock), exponent: exponent of term 1
 *  @param[in]     mu2     (nblock), Pa: shear modulus of term 2
 *  @param[in]     alpha2  (nblock), exponent: exponent of term 2
 *  @param[in]     mu3     (nblock), Pa: shear modulus of term 3
 *  @param[in]     alpha3  (nblock), exponent: exponent of term 3
 *  @param[in]     beta1   (nblock), exponent: exponent of the volume of term 1
 *  @param[in]     beta2   (nblock), exponent: exponent of the volume of term 2
 *  @param[in]     beta3   (nblock), exponent: exponent of the volume of term 3
 *  @param[out]    energy  (nblock), J/m3: strain energy per undeformed volume; of rubber the isochoric one
 *  @param[out]    rJ      (nblock), -: 1/J
 *  @param[in]     V       (nblock, 3), stretch: principal stretches, S30
 *  @param[in,out] flag    (nblock), flag: volume guard, never cleared here
 */
void SPX_MAT_HFOAM(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                   const double* alpha2, const double* mu3, const double* alpha3, const double* beta1,
                   const double* beta2, const double* beta3, double* energy, double* rJ, const double* V, double* flag);

/** Energy and 1/J, six terms.
 *  @param[in]     nblock  (1), block: points
 *  @param[in]     mu1     (nblock), Pa: shear modulus of term 1
 *  @param[in]     alpha1  (nblock), exponent: exponent of term 1
 *  @param[in]     mu2     (nblock), Pa: shear modulus of term 2
 *  @param[in]     alpha2  (nblock), exponent: exponent of term 2
 *  @param[in]     mu3     (nblock), Pa: shear modulus of term 3
 *  @param[in]     alpha3  (nblock), exponent: exponent of term 3
 *  @param[in]     mu4     (nblock), Pa: shear modulus of term 4
 *  @param[in]     alpha4  (nblock), exponent: exponent of term 4
 *  @param[in]     mu5     (nblock), Pa: shear modulus of term 5
 *  @param[in]     alpha5  (nblock), exponent: exponent of term 5
 *  @param[in]     mu6     (nblock), Pa: shear modulus of term 6
 *  @param[in]     alpha6  (nblock), exponent: exponent of term 6
 *  @param[in]     beta1   (nblock), exponent: exponent of the volume of term 1
 *  @param[in]     beta2   (nblock), exponent: exponent of the volume of term 2
 *  @param[in]     beta3   (nblock), exponent: exponent of the volume of term 3
 *  @param[in]     beta4   (nblock), exponent: exponent of the volume of term 4
 *  @param[in]     beta5   (nblock), exponent: exponent of the volume of term 5
 *  @param[in]     beta6   (nblock), exponent: exponent of the volume of term 6
 *  @param[out]    energy  (nblock), J/m3: strain energy per undeformed volume; of rubber the isochoric one
 *  @param[out]    rJ      (nblock), -: 1/J
 *  @param[in]     V       (nblock, 3), stretch: principal stretches, S30
 *  @param[in,out] flag    (nblock), flag: volume guard, never cleared here
 */
void SPX_MAT_HFOAM6(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                    const double* alpha2, const double* mu3, const double* alpha3, const double* mu4,
                    const double* alpha4, const double* mu5, const double* alpha5, const double* mu6,
                    const double* alpha6, const double* beta1, const double* beta2, const double* beta3,
                    const double* beta4, const double* beta5, const double* beta6, double* energy, double* rJ,
                    const double* V, double* flag);

/** First derivatives of the energy of SPX_MAT_OGDEN, J being the product of the stretches (of a flagged point: 1).
 *  0 with respect to a stretch of 0.
 *  @like SPX_MAT_OGDEN
 *  @param[out] dU  (nblock, 3), Pa: dU/dlambda
 */
void SPX_MAT_OGDENDERIVATIVE1(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                              const double* alpha2, const double* mu3, const double* alpha3, double* dU,
                              const double* V, double* flag);

/** Second derivatives of the energy of SPX_MAT_OGDEN.
 *  @like SPX_MAT_OGDEN
 *  @param[out] ddU  (nblock, 6), Pa: d2U/dlambda dlambda: 11 22 33 12 23 13
 */
void SPX_MAT_OGDENDERIVATIVE2(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                              const double* alpha2, const double* mu3, const double* alpha3, double* ddU,
                              const double* V, double* flag);

/** First derivatives of the energy of SPX_MAT_OGDEN6, J being the product of the stretches (of a flagged point: 1).
 *  0 with respect to a stretch of 0.
 *  @like SPX_MAT_OGDEN6
 *  @param[out] dU  (nblock, 3), Pa: dU/dlambda
 */
void SPX_MAT_OGDEN6DERIVATIVE1(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                               const double* alpha2, const double* mu3, const double* alpha3, const double* mu4,
                               const double* alpha4, const double* mu5, const double* alpha5, const double* mu6,
                               const double* alpha6, double* dU, const double* V, double* flag);

/** Second derivatives of the energy of SPX_MAT_OGDEN6.
 *  @like SPX_MAT_OGDEN6
 *  @param[out] ddU  (nblock, 6), Pa: d2U/dlambda dlambda: 11 22 33 12 23 13
 */
void SPX_MAT_OGDEN6DERIVATIVE2(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                               const double* alpha2, const double* mu3, const double* alpha3, const double* mu4,
                               const double* alpha4, const double* mu5, const double* alpha5, const double* mu6,
                               const double* alpha6, double* ddU, const double* V, double* flag);

/** First derivatives of the energy of SPX_MAT_HFOAM, J being the product of the stretches (of a flagged point: 1).
 *  0 with respect to a stretch of 0.
 *  @like SPX_MAT_HFOAM
 *  @param[out] dU  (nblock, 3), Pa: dU/dlambda
 */
void SPX_MAT_HFOAMDERIVATIVE1(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                              const double* alpha2, const double* mu3, const double* alpha3, const double* beta1,
                              const double* beta2, const double* beta3, double* dU, const double* V, double* flag);

/** Second derivatives of the energy of SPX_MAT_HFOAM.
 *  @like SPX_MAT_HFOAM
 *  @param[out] ddU  (nblock, 6), Pa: d2U/dlambda dlambda: 11 22 33 12 23 13
 */
void SPX_MAT_HFOAMDERIVATIVE2(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                              const double* alpha2, const double* mu3, const double* alpha3, const double* beta1,
                              const double* beta2, const double* beta3, double* ddU, const double* V, double* flag);

/** First derivatives of the energy of SPX_MAT_HFOAM6, J being the product of the stretches (of a flagged point: 1).
 *  0 with respect to a stretch of 0.
 *  @like SPX_MAT_HFOAM6
 *  @param[out] dU  (nblock, 3), Pa: dU/dlambda
 */
void SPX_MAT_HFOAM6DERIVATIVE1(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                               const double* alpha2, const double* mu3, const double* alpha3, const double* mu4,
                               const double* alpha4, const double* mu5, const double* alpha5, const double* mu6,
                               const double* alpha6, const double* beta1, const double* beta2, const double* beta3,
                               const double* beta4, const double* beta5, const double* beta6, double* dU,
                               const double* V, double* flag);

/** Second derivatives of the energy of SPX_MAT_HFOAM6.
 *  @like SPX_MAT_HFOAM6
 *  @param[out] ddU  (nblock, 6), Pa: d2U/dlambda dlambda: 11 22 33 12 23 13
 */
void SPX_MAT_HFOAM6DERIVATIVE2(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                               const double* alpha2, const double* mu3, const double* alpha3, const double* mu4,
                               const double* alpha4, const double* mu5, const double* alpha5, const double* mu6,
                               const double* alpha6, const double* beta1, const double* beta2, const double* beta3,
                               const double* beta4, const double* beta5, const double* beta6, double* ddU,
                               const double* V, double* flag);

/** What is left of plane stress in direction 3, for SPX_MAT_HYPERPSCORRECTION.
 *  @like SPX_MAT_OGDEN
 *  @param[in]  rD1       (nblock), Pa: 1/D1
 *  @param[in]  rD2       (nblock), Pa: 1/D2
 *  @param[in]  rD3       (nblock), Pa: 1/D3
 *  @param[out] residual  (nblock), Pa: Kirchhoff stress in the free direction
 *  @param[out] slope     (nblock), Pa: its derivative by the logarithm of the free stretch
 */
void SPX_MAT_OGDENPSRESULT(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                           const double* alpha2, const double* mu3, const double* alpha3, const double* rD1,
                           const double* rD2, const double* rD3, const double* V, double* flag, double* residual,
                           double* slope);

/** What is left across the axis, stretch 1, while stretches 2 and 3 move alike, for SPX_MAT_HYPERUNICORRECTION.
 *  @like SPX_MAT_OGDEN
 *  @param[in]  rD1       (nblock), Pa: 1/D1
 *  @param[in]  rD2       (nblock), Pa: 1/D2
 *  @param[in]  rD3       (nblock), Pa: 1/D3
 *  @param[out] residual  (nblock), Pa: Kirchhoff stress in the free direction
 *  @param[out] slope     (nblock), Pa: its derivative by the logarithm of the free stretch
 */
void SPX_MAT_OGDENUNIRESULT(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                            const double* alpha2, const double* mu3, const double* alpha3, const double* rD1,
                            const double* rD2, const double* rD3, const double* V, double* flag, double* residual,
                            double* slope);

/** What is left of plane stress in direction 3, for SPX_MAT_HYPERPSCORRECTION.
 *  @like SPX_MAT_OGDEN6
 *  @param[in]  rD1       (nblock), Pa: 1/D1
 *  @param[in]  rD2       (nblock), Pa: 1/D2
 *  @param[in]  rD3       (nblock), Pa: 1/D3
 *  @param[in]  rD4       (nblock), Pa: 1/D4
 *  @param[in]  rD5       (nblock), Pa: 1/D5
 *  @param[in]  rD6       (nblock), Pa: 1/D6
 *  @param[out] residual  (nblock), Pa: Kirchhoff stress in the free direction
 *  @param[out] slope     (nblock), Pa: its derivative by the logarithm of the free stretch
 */
void SPX_MAT_OGDEN6PSRESULT(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                            const double* alpha2, const double* mu3, const double* alpha3, const double* mu4,
                            const double* alpha4, const double* mu5, const double* alpha5, const double* mu6,
                            const double* alpha6, const double* rD1, const double* rD2, const double* rD3,
                            const double* rD4, const double* rD5, const double* rD6, const double* V, double* flag,
                            double* residual, double* slope);

/** What is left across the axis, stretch 1, while stretches 2 and 3 move alike, for SPX_MAT_HYPERUNICORRECTION.
 *  @like SPX_MAT_OGDEN6
 *  @param[in]  rD1       (nblock), Pa: 1/D1
 *  @param[in]  rD2       (nblock), Pa: 1/D2
 *  @param[in]  rD3       (nblock), Pa: 1/D3
 *  @param[in]  rD4       (nblock), Pa: 1/D4
 *  @param[in]  rD5       (nblock), Pa: 1/D5
 *  @param[in]  rD6       (nblock), Pa: 1/D6
 *  @param[out] residual  (nblock), Pa: Kirchhoff stress in the free direction
 *  @param[out] slope     (nblock), Pa: its derivative by the logarithm of the free stretch
 */
void SPX_MAT_OGDEN6UNIRESULT(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                             const double* alpha2, const double* mu3, const double* alpha3, const double* mu4,
                             const double* alpha4, const double* mu5, const double* alpha5, const double* mu6,
                             const double* alpha6, const double* rD1, const double* rD2, const double* rD3,
                             const double* rD4, const double* rD5, const double* rD6, const double* V, double* flag,
                             double* residual, double* slope);

/** What is left of plane stress in direction 3, for SPX_MAT_HYPERPSCORRECTION.
 *  @like SPX_MAT_HFOAM
 *  @param[out] residual  (nblock), Pa: Kirchhoff stress in the free direction
 *  @param[out] slope     (nblock), Pa: its derivative by the logarithm of the free stretch
 */
void SPX_MAT_HFOAMPSRESULT(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                           const double* alpha2, const double* mu3, const double* alpha3, const double* beta1,
                           const double* beta2, const double* beta3, const double* V, double* flag, double* residual,
                           double* slope);

/** What is left across the axis, stretch 1, while stretches 2 and 3 move alike, for SPX_MAT_HYPERUNICORRECTION.
 *  @like SPX_MAT_HFOAM
 *  @param[out] residual  (nblock), Pa: Kirchhoff stress in the free direction
 *  @param[out] slope     (nblock), Pa: its derivative by the logarithm of the free stretch
 */
void SPX_MAT_HFOAMUNIRESULT(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                            const double* alpha2, const double* mu3, const double* alpha3, const double* beta1,
                            const double* beta2, const double* beta3, const double* V, double* flag, double* residual,
                            double* slope);

/** Plane stress: stress and moduli, with the stretch of the thickness that it takes.  The free stretch given is where the
 *  search begins and is replaced by what it finds; one that is not positive and finite, NaN too, begins at the stretch that
 *  keeps the volume.  The stress includes the volumetric energy; NaN in all results of a point says that there is none.
 *  @like SPX_MAT_OGDENPSRESULT
 *  @param[in]     V            (nblock, 3), plane stretch: left stretch in the plane, S21
 *  @param[in,out] freeStretch  (nblock), axial stretch: thickness: where to begin, and what is found
 *  @param[out]    stress       (nblock, 3), Pa: Cauchy stress in the plane, S21
 *  @param[out]    bound        (nblock), Pa: largest term of the tangent without the mean, 4/3 G to 2 G at small strain
 *  @param[out]    bulk         (nblock), Pa: 3 times the mean direct term and 3 J (p + dp/dJ), 3 K at small strain
 */
void SPX_MAT_HYPEROGDENPSEXP(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                             const double* alpha2, const double* mu3, const double* alpha3, const double* rD1,
                             const double* rD2, const double* rD3, const double* V, double* freeStretch, double* flag,
                             double* stress, double* bound, double* bulk);

/** Uniaxial stress and moduli, with the lateral stretch that it takes, one for both directions; it begins and ends as in plane
 *  stress.
 *  @like SPX_MAT_HYPEROGDENPSEXP
 *  @param[in]     V            (nblock), axial stretch: stretch along the axis
 *  @param[in,out] freeStretch  (nblock), axial stretch: lateral: where to begin, and what is found
 *  @param[out]    stress       (nblock), Pa: axial Cauchy stress
 */
void SPX_MAT_HYPEROGDENUNIEXP(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                              const double* alpha2, const double* mu3, const double* alpha3, const double* rD1,
                              const double* rD2, const double* rD3, const double* V, double* freeStretch, double* flag,
                              double* stress, double* bound, double* bulk);

/** Plane stress: stress and moduli, with the stretch of the thickness that it takes.  The free stretch given is where the
 *  search begins and is replaced by what it finds; one that is not positive and finite, NaN too, begins at the stretch that
 *  keeps the volume.  The stress includes the volumetric energy; NaN in all results of a point says that there is none.
 *  @like SPX_MAT_HFOAM
 *  @param[in]     V            (nblock, 3), plane stretch: left stretch in the plane, S21
 *  @param[in,out] freeStretch  (nblock), axial stretch: thickness: where to begin, and what is found
 *  @param[out]    stress       (nblock, 3), Pa: Cauchy stress in the plane, S21
 *  @param[out]    bound        (nblock), Pa: largest term of the tangent without the mean, 4/3 G to 2 G at small strain
 *  @param[out]    bulk         (nblock), Pa: 3 times the mean direct term and 3 J (p + dp/dJ), 3 K at small strain
 */
void SPX_MAT_HYPERFOAMPSEXP(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                            const double* alpha2, const double* mu3, const double* alpha3, const double* beta1,
                            const double* beta2, const double* beta3, const double* V, double* freeStretch,
                            double* flag, double* stress, double* bound, double* bulk);

/** Uniaxial stress and moduli, with the lateral stretch that it takes, one for both directions; it begins and ends as in plane
 *  stress.
 *  @like SPX_MAT_HYPERFOAMPSEXP
 *  @param[in]     V            (nblock), axial stretch: stretch along the axis
 *  @param[in,out] freeStretch  (nblock), axial stretch: lateral: where to begin, and what is found
 *  @param[out]    stress       (nblock), Pa: axial Cauchy stress
 */
void SPX_MAT_HYPERFOAMUNIEXP(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                             const double* alpha2, const double* mu3, const double* alpha3, const double* beta1,
                             const double* beta2, const double* beta3, const double* V, double* freeStretch,
                             double* flag, double* stress, double* bound, double* bulk);

/** Moduli of foam for the stable increment, as SPX_MAT_HYPERELAS3D gives them.
 *  @like SPX_MAT_HFOAM
 *  @param[out] bound  (nblock), Pa: largest term of the tangent without the mean, 4/3 G to 2 G at small strain
 *  @param[out] bulk   (nblock), Pa: 3 times the mean direct term and 3 J (p + dp/dJ), 3 K at small strain
 */
void SPX_MAT_HYPERFOAMMODULIEXP(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                                const double* alpha2, const double* mu3, const double* alpha3, const double* beta1,
                                const double* beta2, const double* beta3, const double* V, double* flag, double* bound,
                                double* bulk);

/** SPX_MAT_HYPERFOAMMODULIEXP, six terms.
 *  @like SPX_MAT_HFOAM6
 *  @param[out] bound  (nblock), Pa: largest term of the tangent without the mean, 4/3 G to 2 G at small strain
 *  @param[out] bulk   (nblock), Pa: 3 times the mean direct term and 3 J (p + dp/dJ), 3 K at small strain
 */
void SPX_MAT_HYPERFOAM6MODULIEXP(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                                 const double* alpha2, const double* mu3, const double* alpha3, const double* mu4,
                                 const double* alpha4, const double* mu5, const double* alpha5, const double* mu6,
                                 const double* alpha6, const double* beta1, const double* beta2, const double* beta3,
                                 const double* beta4, const double* beta5, const double* beta6, const double* V,
                                 double* flag, double* bound, double* bulk);

/* ---------------------------------------------------------------------------------------------------------------------
 * Mullins effect
 *
 * Softening on unloading below the largest energy Um of the past: eta = 1 - erf((Um - U)/(m + beta Um))/r multiplies the
 * deviatoric stress.  erf is a fit with an error below 1.2e-7 and exactly 0 at 0; m + beta Um of 0 softens nothing.
 * The mean of the three direct components, absent ones counted as zero, is never softened: in plane stress and in a uniaxial
 * state a third of the direct stress, and with it the condition of the free directions, stays as it was; a caller who wants
 * the whole stress of an incompressible material softened there multiplies it by eta.
 * Source: R. W. Ogden, D. G. Roxburgh, Proc. R. Soc. A 455 (1999) 2861.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Damage variable.  U equal to Um is on the primary path.
 *  @param[in]     nblock  (1), block: points
 *  @param[in]     r       (nblock), -: parameter r, above 1
 *  @param[in]     m       (nblock), J/m3: parameter m
 *  @param[in]     beta    (nblock), -: parameter beta
 *  @param[out]    UmNew   (nblock), J/m3: largest energy, this increment included; may be UmOld itself
 *  @param[in]     UmOld   (nblock), J/m3: largest energy of the past
 *  @param[in,out] U       (nblock), J/m3: isochoric energy; a negative one becomes 0.0
 *  @param[out]    eta     (nblock), -: damage variable, 1.0 on the primary path
 *  @param[out]    slope   (nblock), m3/J: d(eta)/dU, on the primary path that of unloading
 */
void SPX_MAT_ORMULLINS(const int32_t* nblock, const double* r, const double* m, const double* beta, double* UmNew,
                       const double* UmOld, double* U, double* eta, double* slope);

/** Energy lost to damage: (erf(z) Um - d (1 - exp(-z z))/sqrt(pi))/r s/q with d = m + beta Um, z = Um/d; sqrt(pi) has ten
 *  digits.
 *  @like SPX_MAT_ORMULLINS
 *  @param[in]  Um      (nblock), J/m3: largest energy of the past
 *  @param[in]  s       (nblock), any: factor, as the volume of the point
 *  @param[in]  q       (nblock), -: divisor, as a volume ratio or a density
 *  @param[out] damage  (nblock), any: energy
 */
void SPX_MAT_MULLINSDAMAGEENER(const int32_t* nblock, const double* r, const double* m, const double* beta,
                               const double* Um, const double* s, const double* q, double* damage);

/** Softens a stress: all but its mean is multiplied by eta.
 *  @param[in]     nblock  (1), block: points
 *  @param[in]     eta     (nblock), -: damage variable
 *  @param[in,out] stress  (nblock, 6), Pa: Cauchy stress, S33
 */
void SPX_MAT_MULLINSSTRESSDEGR3D(const int32_t* nblock, const double* eta, double* stress);

/** SPX_MAT_MULLINSSTRESSDEGR3D for the components of generalised plane strain.
 *  @like SPX_MAT_MULLINSSTRESSDEGR3D
 *  @param[in,out] stress  (nblock, 4), Pa: Cauchy stress, S31
 */
void SPX_MAT_MULLINSSTRESSDEGRGPE(const int32_t* nblock, const double* eta, double* stress);

/** SPX_MAT_MULLINSSTRESSDEGR3D for the components of plane stress.
 *  @like SPX_MAT_MULLINSSTRESSDEGR3D
 *  @param[in,out] stress  (nblock, 3), Pa: Cauchy stress in the plane, S21
 */
void SPX_MAT_MULLINSSTRESSDEGRPS(const int32_t* nblock, const double* eta, double* stress);

/** SPX_MAT_MULLINSSTRESSDEGR3D for the components of a uniaxial state.
 *  @like SPX_MAT_MULLINSSTRESSDEGR3D
 *  @param[in,out] stress  (nblock), Pa: Cauchy stress along the axis
 */
void SPX_MAT_MULLINSSTRESSDEGRUNI(const int32_t* nblock, const double* eta, double* stress);

/** SPX_MAT_ORMULLINS, then the stress of SPX_MAT_HYPER3DEXP, softened.
 *  @like SPX_MAT_ORMULLINS
 *  @param[in]     U1      (nblock), Pa: dU/dI1
 *  @param[in]     U2      (nblock), Pa: dU/dI2
 *  @param[in]     p       (nblock), Pa: volumetric stress dUvol/dJ
 *  @param[in]     V       (nblock, 6), stretch: left stretch, S33
 *  @param[out]    stress  (nblock, 6), Pa: Cauchy stress, S33
 *  @param[in,out] flag    (nblock), flag: volume guard, never cleared here
 */
void SPX_MAT_MULLINS3DEXP(const int32_t* nblock, const double* r, const double* m, const double* beta, double* UmNew,
                          const double* UmOld, double* U, double* eta, double* slope, const double* U1,
                          const double* U2, const double* p, const double* V, double* stress, double* flag);

/** SPX_MAT_MULLINS3DEXP in generalised plane strain.
 *  @like SPX_MAT_MULLINS3DEXP
 *  @param[in]  V       (nblock, 4), stretch: left stretch, S31
 *  @param[out] stress  (nblock, 4), Pa: Cauchy stress, S31
 */
void SPX_MAT_MULLINSGPEEXP(const int32_t* nblock, const double* r, const double* m, const double* beta, double* UmNew,
                           const double* UmOld, double* U, double* eta, double* slope, const double* U1,
                           const double* U2, const double* p, const double* V, double* stress, double* flag);

/** SPX_MAT_MULLINS3DEXP in plane stress.
 *  @like SPX_MAT_MULLINS3DEXP
 *  @param[in]  V          (nblock, 3), plane stretch: left stretch in the plane, S21
 *  @param[in]  thickness  (nblock), axial stretch: stretch of the thickness
 *  @param[out] stress     (nblock, 3), Pa: Cauchy stress in the plane, S21
 */
void SPX_MAT_MULLINSPSEXP(const int32_t* nblock, const double* r, const double* m, const double* beta, double* UmNew,
                          const double* UmOld, double* U, double* eta, double* slope, const double* U1,
                          const double* U2, const double* V, const double* thickness, double* stress, double* flag);

/** SPX_MAT_MULLINS3DEXP in a uniaxial state.
 *  @like SPX_MAT_MULLINS3DEXP
 *  @param[in]  axial    (nblock), axial stretch: stretch along the axis
 *  @param[in]  lateral  (nblock), axial stretch: stretch across it, the same in both directions
 *  @param[out] stress   (nblock), Pa: axial Cauchy stress
 */
void SPX_MAT_MULLINSUNIEXP(const int32_t* nblock, const double* r, const double* m, const double* beta, double* UmNew,
                           const double* UmOld, double* U, double* eta, double* slope, const double* U1,
                           const double* U2, const double* axial, const double* lateral, double* stress, double* flag);

/** Foam with softening: energy, SPX_MAT_ORMULLINS, and the stress softened but for its mean.
 *  @like SPX_MAT_ORMULLINS
 *  @param[in]     mu1     (nblock), Pa: shear modulus of term 1
 *  @param[in]     alpha1  (nblock), exponent: exponent of term 1
 *  @param[in]     mu2     (nblock), Pa: shear modulus of term 2
 *  @param[in]     alpha2  (nblock), exponent: exponent of term 2
 *  @param[in]     mu3     (nblock), Pa: shear modulus of term 3
 *  @param[in]     alpha3  (nblock), exponent: exponent of term 3
 *  @param[in]     beta1   (nblock), exponent: exponent of the volume of term 1
 *  @param[in]     beta2   (nblock), exponent: exponent of the volume of term 2
 *  @param[in]     beta3   (nblock), exponent: exponent of the volume of term 3
 *  @param[out]    U       (nblock), J/m3: energy, not below 0.0
 *  @param[in]     V       (nblock, 3), stretch: principal stretches, S30
 *  @param[in]     axes    (nblock, 3, 3), -: principal directions in columns, ordered as the stretches
 *  @param[out]    stress  (nblock, 6), Pa: Cauchy stress, S33
 *  @param[in,out] flag    (nblock), flag: volume guard, never cleared here
 */
void SPX_MAT_HFOAMMULLINS3DEXP(const int32_t* nblock, const double* r, const double* m, const double* beta,
                               double* UmNew, const double* UmOld, double* U, double* eta, double* slope,
                               const double* mu1, const double* alpha1, const double* mu2, const double* alpha2,
                               const double* mu3, const double* alpha3, const double* beta1, const double* beta2,
                               const double* beta3, const double* V, const double* axes, double* stress, double* flag);

/** SPX_MAT_HFOAMMULLINS3DEXP in generalised plane strain: one of the directions is axis 3.
 *  @like SPX_MAT_HFOAMMULLINS3DEXP
 *  @param[out] stress  (nblock, 4), Pa: Cauchy stress, S31
 */
void SPX_MAT_HFOAMMULLINSGPEEXP(const int32_t* nblock, const double* r, const double* m, const double* beta,
                                double* UmNew, const double* UmOld, double* U, double* eta, double* slope,
                                const double* mu1, const double* alpha1, const double* mu2, const double* alpha2,
                                const double* mu3, const double* alpha3, const double* beta1, const double* beta2,
                                const double* beta3, const double* V, const double* axes, double* stress, double* flag);

/** SPX_MAT_HFOAMMULLINS3DEXP in plane stress; the thickness is found as in SPX_MAT_HYPERFOAMPSEXP, without softening.
 *  @like SPX_MAT_HFOAMMULLINS3DEXP
 *  @param[in]     V            (nblock, 3), plane stretch: left stretch in the plane, S21
 *  @param[in,out] freeStretch  (nblock), axial stretch: thickness: where to begin, and what is found
 *  @param[out]    stress       (nblock, 3), Pa: Cauchy stress in the plane, S21
 */
void SPX_MAT_HFOAMMULLINSPSEXP(const int32_t* nblock, const double* r, const double* m, const double* beta,
                               double* UmNew, const double* UmOld, double* U, double* eta, double* slope,
                               const double* mu1, const double* alpha1, const double* mu2, const double* alpha2,
                               const double* mu3, const double* alpha3, const double* beta1, const double* beta2,
                               const double* beta3, const double* V, double* freeStretch, double* stress, double* flag);

/** SPX_MAT_HFOAMMULLINS3DEXP in a uniaxial state.
 *  @like SPX_MAT_HFOAMMULLINSPSEXP
 *  @param[in]     V            (nblock), axial stretch: stretch along the axis
 *  @param[in,out] freeStretch  (nblock), axial stretch: lateral: where to begin, and what is found
 *  @param[out]    stress       (nblock), Pa: axial Cauchy stress
 */
void SPX_MAT_HFOAMMULLINSUNIEXP(const int32_t* nblock, const double* r, const double* m, const double* beta,
                                double* UmNew, const double* UmOld, double* U, double* eta, double* slope,
                                const double* mu1, const double* alpha1, const double* mu2, const double* alpha2,
                                const double* mu3, const double* alpha3, const double* beta1, const double* beta2,
                                const double* beta3, const double* V, double* freeStretch, double* stress,
                                double* flag);

/** Effective moduli of softened material.  By code:
 *    100  eta modulus                     the secant: reloading at constant damage
 *    200  eta modulus + slope q           the tangent of unloading, the stiffest way
 *    300  as 200, on the primary path 100 the tangent of the present way
 *  Any other code does nothing.
 *  @param[in]  nblock     (1), block: points
 *  @param[in]  code       (1), code 100|200|300: which
 *  @param[in]  eta        (nblock), -: damage variable
 *  @param[in]  slope      (nblock), m3/J: d(eta)/dU
 *  @param[in]  q          (nblock), Pa2: J s:s of the unsoftened deviatoric stress s
 *  @param[in]  modulus    (nblock), Pa: modulus without softening, as the bound of a stress kernel
 *  @param[out] effective  (nblock), Pa: effective modulus
 */
void SPX_OPT_MULLINSEFFMOD(const int32_t* nblock, const int32_t* code, const double* eta, const double* slope,
                           const double* q, const double* modulus, double* effective);

/* ---------------------------------------------------------------------------------------------------------------------
 * Ductile and shear failure
 *
 * Listed points are computed; results of the others are left alone.  Components that a state does not store are zero: BEAM
 * has 11 12, UNI 11.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Stress triaxiality, mean stress over Mises stress, positive in tension, kept within 100 either way; 100 with the sign of
 *  the mean where there is no Mises stress, 0 without stress.  Squares are formed unscaled: beyond 1e154 they overflow.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  stress  (nblock, 6), any: Cauchy stress, S33
 *  @param[out] ratio   (nblock), -: stress triaxiality, -100..100
 */
void SPX_MAT_STRESSRATIO3DEXP(const int32_t* nblock, const double* stress, double* ratio);

/** SPX_MAT_STRESSRATIO3DEXP for the stress of generalised plane strain.
 *  @like SPX_MAT_STRESSRATIO3DEXP
 *  @param[in] stress  (nblock, 4), any: Cauchy stress, S31
 */
void SPX_MAT_STRESSRATIOGPEEXP(const int32_t* nblock, const double* stress, double* ratio);

/** SPX_MAT_STRESSRATIO3DEXP for the stress of plane stress.
 *  @like SPX_MAT_STRESSRATIO3DEXP
 *  @param[in] stress  (nblock, 3), any: Cauchy stress, S21
 */
void SPX_MAT_STRESSRATIOPSEXP(const int32_t* nblock, const double* stress, double* ratio);

/** SPX_MAT_STRESSRATIO3DEXP for the stress of a beam.
 *  @like SPX_MAT_STRESSRATIO3DEXP
 *  @param[in] stress  (nblock, 2), any: Cauchy stress, 11 12
 */
void SPX_MAT_STRESSRATIOBEAMEXP(const int32_t* nblock, const double* stress, double* ratio);

/** SPX_MAT_STRESSRATIO3DEXP for the stress of a bar.
 *  @like SPX_MAT_STRESSRATIO3DEXP
 *  @param[in] stress  (nblock), any: Cauchy stress, 11
 */
void SPX_MAT_STRESSRATIOUNIEXP(const int32_t* nblock, const double* stress, double* ratio);

/** SPX_MAT_STRESSRATIO3DEXP for listed points.
 *  @like SPX_MAT_STRESSRATIO3DEXP
 *  @param[in] count  (1), count: entries of the list; below 1 does nothing
 *  @param[in] list   (count), list: point numbers
 */
void SPX_MAT_DUCTSTRESSRATIO3DEXP(const int32_t* nblock, const int32_t* count, const int32_t* list,
                                  const double* stress, double* ratio);

/** SPX_MAT_STRESSRATIOGPEEXP for listed points.
 *  @like SPX_MAT_STRESSRATIOGPEEXP
 *  @param[in] count  (1), count: entries of the list; below 1 does nothing
 *  @param[in] list   (count), list: point numbers
 */
void SPX_MAT_DUCTSTRESSRATIOGPEEXP(const int32_t* nblock, const int32_t* count, const int32_t* list,
                                   const double* stress, double* ratio);

/** SPX_MAT_STRESSRATIOPSEXP for listed points.
 *  @like SPX_MAT_STRESSRATIOPSEXP
 *  @param[in] count  (1), count: entries of the list; below 1 does nothing
 *  @param[in] list   (count), list: point numbers
 */
void SPX_MAT_DUCTSTRESSRATIOPSEXP(const int32_t* nblock, const int32_t* count, const int32_t* list,
                                  const double* stress, double* ratio);

/** SPX_MAT_STRESSRATIOBEAMEXP for listed points.
 *  @like SPX_MAT_STRESSRATIOBEAMEXP
 *  @param[in] count  (1), count: entries of the list; below 1 does nothing
 *  @param[in] list   (count), list: point numbers
 */
void SPX_MAT_DUCTSTRESSRATIOBEAMEXP(const int32_t* nblock, const int32_t* count, const int32_t* list,
                                    const double* stress, double* ratio);

/** SPX_MAT_STRESSRATIOUNIEXP for listed points.
 *  @like SPX_MAT_STRESSRATIOUNIEXP
 *  @param[in] count  (1), count: entries of the list; below 1 does nothing
 *  @param[in] list   (count), list: point numbers
 */
void SPX_MAT_DUCTSTRESSRATIOUNIEXP(const int32_t* nblock, const int32_t* count, const int32_t* list,
                                   const double* stress, double* ratio);

/** Shear stress ratio (q + ks p)/tau with Mises stress q, pressure p and the largest shear stress tau, half the largest
 *  difference of principal stresses; 0 where tau is nothing beside the numerator.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  count   (1), count: entries of the list; below 1 does nothing
 *  @param[in]  list    (count), list: point numbers
 *  @param[in]  stress  (nblock, 6), any: Cauchy stress, S33
 *  @param[in]  ks      (1), -: weight of the pressure
 *  @param[out] P       (nblock, 3), any: principal stresses, as GLO_UTI_EIG33ANALINDX orders them
 *  @param[out] ratio   (nblock), -: shear stress ratio
 */
void SPX_MAT_SHRSTRESSRATIO3DEXP(const int32_t* nblock, const int32_t* count, const int32_t* list, const double* stress,
                                 const double* ks, double* P, double* ratio);

/** SPX_MAT_SHRSTRESSRATIO3DEXP for the stress of generalised plane strain.
 *  @like SPX_MAT_SHRSTRESSRATIO3DEXP
 *  @param[in] stress  (nblock, 4), any: Cauchy stress, S31
 */
void SPX_MAT_SHRSTRESSRATIOGPEEXP(const int32_t* nblock, const int32_t* count, const int32_t* list,
                                  const double* stress, const double* ks, double* P, double* ratio);

/** SPX_MAT_SHRSTRESSRATIO3DEXP for the stress of plane stress.
 *  @like SPX_MAT_SHRSTRESSRATIO3DEXP
 *  @param[in] stress  (nblock, 3), any: Cauchy stress, S21
 */
void SPX_MAT_SHRSTRESSRATIOPSEXP(const int32_t* nblock, const int32_t* count, const int32_t* list, const double* stress,
                                 const double* ks, double* P, double* ratio);

/** SPX_MAT_SHRSTRESSRATIO3DEXP for the stress of a beam.
 *  @like SPX_MAT_SHRSTRESSRATIO3DEXP
 *  @param[in] stress  (nblock, 2), any: Cauchy stress, 11 12
 */
void SPX_MAT_SHRSTRESSRATIOBEAMEXP(const int32_t* nblock, const int32_t* count, const int32_t* list,
                                   const double* stress, const double* ks, double* P, double* ratio);

/** SPX_MAT_SHRSTRESSRATIO3DEXP for the stress of a bar.
 *  @like SPX_MAT_SHRSTRESSRATIO3DEXP
 *  @param[in] stress  (nblock), any: Cauchy stress, 11
 */
void SPX_MAT_SHRSTRESSRATIOUNIEXP(const int32_t* nblock, const int32_t* count, const int32_t* list,
                                  const double* stress, const double* ks, double* P, double* ratio);

/** Damage initiation: omega += strainIncrement/failureStrain.  A failure strain of zero gives infinity or NaN.
 *  @param[in]     nblock           (1), block: points
 *  @param[in]     count            (1), count: entries of the list; below 1 does nothing
 *  @param[in]     list             (count), list: point numbers
 *  @param[in,out] omega            (nblock), -: measure of damage initiation, 1.0 at initiation
 *  @param[in]     strainIncrement  (nblock), -: increment of equivalent plastic strain
 *  @param[in]     failureStrain    (nblock), -: strain at failure
 */
void SPX_MAT_DUCTSHRFAILUREEXP(const int32_t* nblock, const int32_t* count, const int32_t* list, double* omega,
                               const double* strainIncrement, const double* failureStrain);

/** Failure strain (d1 + d2 exp(-d3 eta)) (1 + d4 ln r) (1 + d5 t), at least 2.2e-306.  eta is positive in tension, so that a
 *  strain that falls with tension has a positive d3: the sign is the reverse of the publication's.  r is the rate times
 *  rateFactor, at least 1; t is 0 below the transition temperature, 1 above melting and linear between.
 *  The exponent -d3 eta is kept below 40.  Source: G. R. Johnson, W. H. Cook, Eng. Fract. Mech. 21 (1985) 31.
 *  @param[in]  nblock         (1), block: points
 *  @param[in]  count          (1), count: entries of the list; below 1 does nothing
 *  @param[in]  list           (count), list: point numbers
 *  @param[out] failureStrain  (nblock), -: equivalent plastic strain at failure
 *  @param[in]  rate           (nblock), 1/s: rate of equivalent plastic strain
 *  @param[in]  triaxiality    (nblock), -: mean stress over Mises stress
 *  @param[in]  temperature    (nblock), K: temperature
 *  @param[in]  d1             (1), -: constant
 *  @param[in]  d2             (1), -: constant
 *  @param[in]  d3             (1), -: constant
 *  @param[in]  d4             (1), -: constant; exactly 0.0 takes no logarithm
 *  @param[in]  d5             (1), -: constant
 *  @param[in]  melting        (1), K: melting temperature
 *  @param[in]  transition     (1), K: transition temperature
 *  @param[in]  rateFactor     (1), s: reciprocal of the reference rate
 */
void SPX_MAT_JCFAILURESTRAIN(const int32_t* nblock, const int32_t* count, const int32_t* list, double* failureStrain,
                             const double* rate, const double* triaxiality, const double* temperature, const double* d1,
                             const double* d2, const double* d3, const double* d4, const double* d5,
                             const double* melting, const double* transition, const double* rateFactor);

/** Reciprocal failure strain 1/(a + b exp(k)) without overflow: with L = ln(max(rate P8, 1)), a = P9 (1 + P12 L)(1 + P13 y),
 *  b = P10 (1 + P12 L)(1 + P13 y), k = P11 x: the law of Johnson and Cook with x the triaxiality or shear stress ratio and y
 *  the homologous temperature.  0 where a + b exp(k) is not above 2.2e-308 for a negative k.  The
 *  exponent -|k| of the exponential is kept from falling below -708.3964185322637; b = 0 gives 1/a whatever k is.
 *  @param[in]  nblock      (1), block: points
 *  @param[in]  properties  (13), -: constants; 8 reciprocal reference rate (s), 9..13 d1 d2 d3 d4 d5 of a + b exp(k)
 *  @param[in]  x           (nblock), -: stress ratio
 *  @param[in]  rate        (nblock), 1/s: rate of equivalent plastic strain
 *  @param[in]  y           (nblock), -: homologous temperature
 *  @param[out] rStrain     (nblock), -: 1/failure strain
 */
void SPX_MAT_JCSHRFAILEXP(const int32_t* nblock, const double* properties, const double* x, const double* rate,
                          const double* y, double* rStrain);

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

/* ---------------------------------------------------------------------------------------------------------------------
 * Built-in user materials
 *
 * Ready-made models behind the interface of user-written explicit materials.  SPX_USR_BUILTINVUMAT chooses one by the
 * beginning of the material's name and hands the whole argument list on; the implementations can be called directly.
 *
 *   name begins with           implementation             name begins with           implementation
 *   TVK_VISCOUS_FOAM           SPX_USR_VISCOUSFOAM        TVK_MOLDED_PLASTIC         SPX_USR_MOLDEDPLASTIC
 *   TVK_RATE_SENSITIVE_FOAM    SPX_USR_RATESENSFOAM       TVK_FABRIC                 SPX_USR_FABRIC
 *   TVK_FU_CHANG_ISO_FOAM      SPX_USR_FUCHANGISOFOAM     TVK_PLY_FABRIC             SPX_USR_PLYFABRIC
 *   TVK_FU_CHANG_ANISO_FOAM    SPX_USR_FUCHANGANISOFOAM   TVK_JH2                    SPX_USR_JH2
 *   TVK_HONEYCOMB              SPX_USR_HONEYCOMB          TVK_JHB                    SPX_USR_JHB
 *   TVK_SUPER_ELASTIC          SPX_USR_SUPERELASTIC       TVK_HJC_CONCRETE           SPX_USR_HJCCONCRETE
 *   TVK_THERMOPLASTIC          SPX_USR_THERMOPLASTIC
 *
 * Components.  Stress, stretch and strain increment: 11 22 33 12 23 13 in solids (ndir = 3, nshr = 3), 11 22 33 12 in plane
 * strain, axisymmetry and plane stress (3, 1), 11 in one dimension (1, 0), 11 12 in a beam (1, 1); shear is tensor shear.
 * Deformation gradient: 11 22 33 12 23 31 21 32 13 in solids, 11 22 33 12 21 for (3, 1).  Stress is Cauchy stress in axes
 * that turn with the material: the host turns them by the spin, and stress, strain increment and tensors among the state
 * variables hold in the same axes, so that a rigid rotation changes no component.  Pressure is positive in compression.
 *
 * Time.  Step and total time are those at the end of the increment.  A call with both exactly 0.0 is the host's check of the
 * data: it gets the linear elastic answer of the undamaged material, with energies and state variables as they were.
 *
 * Energies, per mass: internal += (stressOld + stressNew)/2 : strainInc / density, with the density at the end.  Inelastic
 * energy is max(inelastic before, internal - psi/density), psi what the point can still give back; each model says what that
 * is.  It never falls, and after a closed path that ends without stress (superelastic: without martensite) it is the internal
 * energy, to round-off where volume and density stay.  Limits: what the trapezoid of an increment lacks at a turn of the path or
 * a sudden fracture (boron carbide: 0.06 % of the loss with increments of 3e-4, 4e-6 of it with 3e-5; 5 % with 3e-3), and with a
 * density that follows the volume a part of the elastic energy as large as the change of volume: Cauchy stress that is linear in
 * the strain has no potential per mass.  Stress at the start without its energy delays the count.  State variables start at
 * 0.0; those beyond the model's own keep their values.
 *
 * Checks come before anything is computed or written, whatever nblock is: in the order element support, number of state
 * variables, number of properties, values of properties (for the superelastic material: name, element support, number of
 * properties, number of state variables, values).  The first that fails is written as an "Error" and ends the analysis by
 * GLO_UTI_EXIT with code 20.  A block is returned untouched then, in case the host goes on.  Property values that must be
 * positive are marked + below.  docs/user-materials.md lists every message, and what the checks of the materials without a
 * model read.
 * ------------------------------------------------------------------------------------------------------------------ */

/** The material of this name, for one block.  The first key of the table above, in the order of its first column and then
 *  of its second, that the name begins with selects the implementation; whatever follows the key is free.  A name without a
 *  key is an "Error" that shows it in full length and ends the analysis.
 *  @param[in]  callInfo              (*), -: of the call; passed on, read by no model of this build
 *  @param[in]  nblock                (1), count: points
 *  @param[in]  ndir                  (1), count: direct components
 *  @param[in]  nshr                  (1), count: shear components
 *  @param[in]  nstatev               (1), count: state variables of a point
 *  @param[in]  nfieldv               (1), count: field variables of a point
 *  @param[in]  nprops                (1), count: properties
 *  @param[in]  annealing             (1), -: nonzero in an annealing step; read by no model of this build
 *  @param[in]  stepTime              (1), s: time in this step at the end of the increment
 *  @param[in]  totalTime             (1), s: time in the analysis at the end of the increment
 *  @param[in]  dt                    (1), s: time increment
 *  @param[in]  materialName          (materialNameLength), text: name, padded with blanks
 *  @param[in]  coordinates           (nblock, *), m: of the points; read by no model of this build
 *  @param[in]  characteristicLength  (nblock), m: of the elements; read by no model of this build
 *  @param[in]  props                 (nprops), properties: those of the material, for the whole block
 *  @param[in]  density               (nblock), kg/m3: current density, for the energies
 *  @param[in]  strainInc             (nblock, ndir+nshr), strain: strain increment
 *  @param[in]  relSpinInc            (nblock, nshr), strain: relative spin increment; read by no model of this build
 *  @param[in]  tempOld               (nblock), K: temperature at the start of the increment
 *  @param[in]  stretchOld            (nblock, ndir+nshr), stretch: right stretch; read by no model of this build
 *  @param[in]  defgradOld            (nblock, ndir+nshr+nshr), deformation gradient: at the start; read by no model of this build
 *  @param[in]  fieldOld              (nblock, nfieldv), any: field variables; read by no model of this build
 *  @param[in]  stressOld             (nblock, ndir+nshr), Pa: stress
 *  @param[in]  stateOld              (nblock, nstatev), state: state variables
 *  @param[in]  enerInternOld         (nblock), J/kg: internal energy
 *  @param[in]  enerInelasOld         (nblock), J/kg: inelastic energy
 *  @param[in]  tempNew               (nblock), K: temperature at the end of the increment
 *  @param[in]  stretchNew            (nblock, ndir+nshr), stretch: right stretch; read by no model of this build
 *  @param[in]  defgradNew            (nblock, ndir+nshr+nshr), deformation gradient: at the end; its determinant is the volume ratio
 *  @param[in]  fieldNew              (nblock, nfieldv), any: field variables; read by no model of this build
 *  @param[out] stressNew             (nblock, ndir+nshr), Pa: stress
 *  @param[out] stateNew              (nblock, nstatev), state: state variables
 *  @param[out] enerInternNew         (nblock), J/kg: internal energy
 *  @param[out] enerInelasNew         (nblock), J/kg: inelastic energy
 *  @param[in]  materialNameLength    (1), -: length of materialName, 80, by value
 */
void SPX_USR_BUILTINVUMAT(const int32_t* callInfo, const int32_t* nblock, const int32_t* ndir, const int32_t* nshr,
                          const int32_t* nstatev, const int32_t* nfieldv, const int32_t* nprops,
                          const int32_t* annealing, const double* stepTime, const double* totalTime, const double* dt,
                          const char* materialName, const double* coordinates, const double* characteristicLength,
                          const double* props, const double* density, const double* strainInc, const double* relSpinInc,
                          const double* tempOld, const double* stretchOld, const double* defgradOld,
                          const double* fieldOld, const double* stressOld, const double* stateOld,
                          const double* enerInternOld, const double* enerInelasOld, const double* tempNew,
                          const double* stretchNew, const double* defgradNew, const double* fieldNew, double* stressNew,
                          double* stateNew, double* enerInternNew, double* enerInelasNew, int64_t materialNameLength);

/** Superelastic shape-memory alloy in austenite and one martensite.  The name goes on as _N1D (one dimension: ndir = 1), _N2D
 *  (plane stress) or _N3D (solids, plane strain, axisymmetry).
 *    F = n:s + 3 alpha p, s the deviator of the stress, p its mean (positive in tension), n:s = |s| in all but odd states
 *    austenite to martensite  R_s < F < R_f, F rising:   d xi = -(1 - xi) dF/(F - R_f)
 *    martensite to austenite  R_s > F > R_f, F falling:  d xi = xi dF/(F - R_f)
 *    transformation strain  xi (e_D n + e_V/3 1), n the direction of the deviatoric strain
 *  which is linear in F and integrated in closed form.  A plateau may be flat, start = finish: F stays there.  An increment of
 *  any size ends where many small ones do: one that passes the smallest F, or turns against a limit that moves with temperature,
 *  is taken in parts there; measured, 1 against 100 over random reversals with unlike moduli, Poisson's ratios and changing
 *  temperature: 1e-8 MPa of 600 MPa in one dimension, plane stress and solids.  R = (sqrt(2/3) + alpha) times the uniaxial stress, which moves with
 *  temperature by C (T - T0).  e_D follows from eps_L, the axial strain in tension.  Moduli: G and K (one dimension: E) are
 *  mixed linearly with xi.  Only in one dimension the turn is that at zero strain: heating that just balances loading, with
 *  unlike moduli, may turn F elsewhere.  Plane stress finds the thickness strain for which the stress across vanishes; the host's own
 *  value of it is not read.
 *  Start AM above finish AM, finish MA above start MA or start AM, start MA above finish AM, and e_V of 1.5 eps_L or more are
 *  refused, at T0; an unlike C may cross them at other temperatures.
 *    properties, exactly 14: 1 E+ and 2 nu (-1 to 0.5) of austenite, 3 E+ and 4 nu of martensite, 5 eps_L+, then the
 *      uniaxial stresses 6 start+ and 7 finish of austenite to martensite, 8 start and 9 finish of martensite to
 *      austenite, 10 start in compression (0.0: as in tension, alpha = 0), 11 T0, 12 C of austenite to martensite, 13
 *      C of martensite to austenite, 14 volume change e_V (below 0.0: that of flow normal to F, 3 alpha e_D)
 *    state variables, 8: 1 martensite fraction xi, 2 to 7 transformation strain 11 22 33 12 23 13, 8 equivalent
 *      uniaxial stress F/(sqrt(2/3) + alpha)
 *    inelastic energy: psi = elastic energy + xi w, w the larger of the works on one xi, in tension and in compression, under
 *      the stress at which it goes back to austenite, but no more than the least that is spent on the way there: over a closed
 *      cycle at one temperature the area of the hysteresis.  Heat is not counted.  With unlike moduli and a pressure of several
 *      GPa the law itself can give back more than w (3 % of a cycle with 9 % change of volume): the loss then stays too large.
 *  Sources: F. Auricchio, R. L. Taylor, Comput. Methods Appl. Mech. Engrg 143 (1997) 175; F. Auricchio, Int. J. Plasticity 17
 *  (2001) 971.
 *  @like SPX_USR_BUILTINVUMAT
 *  @param[in]  nblock   (1), block: points
 *  @param[in]  ndir     (1), code 3|1: direct components
 *  @param[in]  nshr     (1), code 3|1: shear components; 0 or 1 in one dimension
 *  @param[in]  nstatev  (1), count>=8: state variables of a point
 *  @param[in]  nprops   (1), code 14: properties
 */
void SPX_USR_SUPERELASTIC(const int32_t* callInfo, const int32_t* nblock, const int32_t* ndir, const int32_t* nshr,
                          const int32_t* nstatev, const int32_t* nfieldv, const int32_t* nprops,
                          const int32_t* annealing, const double* stepTime, const double* totalTime, const double* dt,
                          const char* materialName, const double* coordinates, const double* characteristicLength,
                          const double* props, const double* density, const double* strainInc, const double* relSpinInc,
                          const double* tempOld, const double* stretchOld, const double* defgradOld,
                          const double* fieldOld, const double* stressOld, const double* stateOld,
                          const double* enerInternOld, const double* enerInelasOld, const double* tempNew,
                          const double* stretchNew, const double* defgradNew, const double* fieldNew, double* stressNew,
                          double* stateNew, double* enerInternNew, double* enerInelasNew, int64_t materialNameLength);

/** Johnson-Holmquist ceramic (JH-2), for solids, plane strain and axisymmetry.  With P* = P/PHEL, T* = T/PHEL and the
 *  strength at the elastic limit sHEL = 1.5 (HEL - PHEL):
 *    strength  q/sHEL = i - D (i - f), i = A (P* + T*)^N r, f = min(B P*^M r, sfmax), r = 1 + C ln max(1, rate/rate0)
 *    damage    dD = dep/ef, ef = D1 (P* + T*)^D2
 *    pressure  P = K1 mu + K2 mu^2 + K3 mu^3 + dP, without K2 and K3 in tension, not below -T (1 - D);  mu = 1/det F - 1
 *    bulking   dP grows so that beta of the elastic energy lost to damage, q^2/(6 G), goes into pressure; only in compression
 *  Strength is linear in D, so return and damage are solved together in closed form.  Strength is that of the pressure at the
 *  end, with the bulking of the increment and the limit of tension that its damage leaves, found by at most 30 steps of false
 *  position; the failure strain is that of the pressure before both.  Where the strength falls faster with
 *  strain than the material unloads elastically, the limit of small increments is a sudden loss: D becomes 1 at once.
 *  Hydrostatic tension alone stops at T (1 - D) and does no damage.
 *    properties, 18: 1 G+, 2 A, 3 B, 4 C, 5 M, 6 N, 7 rate0+, 8 T+, 9 sfmax (0.0: none), 10 HEL+, 11 PHEL below HEL
 *      (0.0: found from HEL = P + 4/3 G mu/(1 + mu)), 12 D1, 13 D2, 14 K1+, 15 K2, 16 K3, 17 beta, 18 plastic strain
 *      of deletion (0.0: none)
 *    state variables, 4: 1 equivalent plastic strain, 2 damage D, 3 status, 1.0 active and 0.0 deleted, 4 bulking
 *      pressure dP
 *    inelastic energy: psi = q^2/(6 G) and the work of P on its way to zero at this dP and D, the cut tension included
 *  A deleted point has no stress and keeps its energies and state.
 *  Sources: G. R. Johnson, T. J. Holmquist, High-Pressure Science and Technology 1993, AIP Conf. Proc. 309 (1994) 981.
 *  @like SPX_USR_BUILTINVUMAT
 *  @param[in]  nblock   (1), block: points
 *  @param[in]  ndir     (1), code 3: direct components
 *  @param[in]  nshr     (1), code 3|1: shear components
 *  @param[in]  nstatev  (1), count>=4: state variables of a point
 *  @param[in]  nprops   (1), count>=18: properties
 */
void SPX_USR_JH2(const int32_t* callInfo, const int32_t* nblock, const int32_t* ndir, const int32_t* nshr,
                 const int32_t* nstatev, const int32_t* nfieldv, const int32_t* nprops, const int32_t* annealing,
                 const double* stepTime, const double* totalTime, const double* dt, const char* materialName,
                 const double* coordinates, const double* characteristicLength, const double* props,
                 const double* density, const double* strainInc, const double* relSpinInc, const double* tempOld,
                 const double* stretchOld, const double* defgradOld, const double* fieldOld, const double* stressOld,
                 const double* stateOld, const double* enerInternOld, const double* enerInelasOld,
                 const double* tempNew, const double* stretchNew, const double* defgradNew, const double* fieldNew,
                 double* stressNew, double* stateNew, double* enerInternNew, double* enerInelasNew,
                 int64_t materialNameLength);

/** Johnson-Holmquist-Beissel ceramic, for solids, plane strain and axisymmetry.
 *    intact   q = si (P + T)/(Pi + T) to P = Pi, then si + (simax - si)(1 - exp(-ai (P - Pi))), continuous in slope
 *    failed   q = sf P/Pf to P = Pf, then sf + (sfmax - sf)(1 - exp(-af (P - Pf))), continuous in slope
 *    both times r = 1 + C ln max(1, rate/rate0); intact until D = 1, failed from then on
 *    damage   dD = dep/ef, ef = min(D1 ((P + T)/simax)^n, efmax)
 *  Pressure, bulking, deletion and energies as in SPX_USR_JH2; the change of phase of the publication is left out.
 *    properties, 18: 1 G+, 2 Pi, 3 si+, 4 simax+, 5 Pf+, 6 sf, 7 sfmax, 8 C, 9 rate0+, 10 T+, 11 D1, 12 n, 13 efmax
 *      (0.0: none), 14 K1+, 15 K2, 16 K3, 17 beta, 18 plastic strain of deletion (0.0: none)
 *    state variables, 4: as in SPX_USR_JH2
 *  Source: G. R. Johnson, T. J. Holmquist, S. R. Beissel, J. Appl. Phys. 94 (2003) 1639.
 *  @like SPX_USR_BUILTINVUMAT
 *  @param[in]  nblock   (1), block: points
 *  @param[in]  ndir     (1), code 3: direct components
 *  @param[in]  nshr     (1), code 3|1: shear components
 *  @param[in]  nstatev  (1), count>=4: state variables of a point
 *  @param[in]  nprops   (1), count>=18: properties
 */
void SPX_USR_JHB(const int32_t* callInfo, const int32_t* nblock, const int32_t* ndir, const int32_t* nshr,
                 const int32_t* nstatev, const int32_t* nfieldv, const int32_t* nprops, const int32_t* annealing,
                 const double* stepTime, const double* totalTime, const double* dt, const char* materialName,
                 const double* coordinates, const double* characteristicLength, const double* props,
                 const double* density, const double* strainInc, const double* relSpinInc, const double* tempOld,
                 const double* stretchOld, const double* defgradOld, const double* fieldOld, const double* stressOld,
                 const double* stateOld, const double* enerInternOld, const double* enerInelasOld,
                 const double* tempNew, const double* stretchNew, const double* defgradNew, const double* fieldNew,
                 double* stressNew, double* stateNew, double* enerInternNew, double* enerInelasNew,
                 int64_t materialNameLength);

/** Holmquist-Johnson-Cook concrete, for solids, plane strain and axisymmetry.  With P* = P/fc, T* = T/fc:
 *    strength  q/fc = min((A (1 - D) + B P*^N) r, Smax), r as in SPX_USR_JH2; in tension A (1 - D + P/T) r, which vanishes
 *              with the largest tension that damage leaves
 *    damage    dD = (dep + dmup)/ef, ef = max(D1 (P* + T*)^D2, EFMIN); return and damage together in closed form
 *    pressure  elastic to (muc, Pc), crushing in a straight line to Pl, then K1 m + K2 m^2 + K3 m^3, m = (mu - mul)/(1 + mul);
 *              unloading from the largest mu so far: while crushing with a modulus that goes from Pc/muc to K1 in a straight
 *              line, when dense along the cubic (K1 m in tension); not below -T (1 - D).  Of increments of any size.
 *    mul       0.0 as property 21: the permanent compaction of the fully dense material, as in the publication; Pl is reached
 *              at the larger mu where the cubic has that value.  1.0: the total compaction at Pl, with a cubic that is shifted
 *              to go through there.
 *    properties, 21: 1 G+, 2 A, 3 B, 4 C, 5 N, 6 fc+, 7 T+, 8 rate0+, 9 EFMIN+, 10 Smax+, 11 Pc+, 12 muc+, 13 Pl+
 *      above Pc, 14 mul+, 15 D1, 16 D2, 17 K1+, 18 K2, 19 K3, 20 plastic strain of deletion (0.0: none), 21 meaning
 *      of mul
 *    state variables, 5: 1 equivalent plastic strain, 2 damage D, 3 status, 4 largest mu, 5 permanent compaction mup
 *    inelastic energy: psi = q^2/(6 G) and the work of P on its line of unloading to zero; mup is no larger than that of the
 *      dense material and a function of the largest mu, whatever the increments
 *  Source: T. J. Holmquist, G. R. Johnson, W. H. Cook, 14th Int. Symp. Ballistics (1993) 591.
 *  @like SPX_USR_BUILTINVUMAT
 *  @param[in]  nblock   (1), block: points
 *  @param[in]  ndir     (1), code 3: direct components
 *  @param[in]  nshr     (1), code 3|1: shear components
 *  @param[in]  nstatev  (1), count>=5: state variables of a point
 *  @param[in]  nprops   (1), count>=21: properties
 */
void SPX_USR_HJCCONCRETE(const int32_t* callInfo, const int32_t* nblock, const int32_t* ndir, const int32_t* nshr,
                         const int32_t* nstatev, const int32_t* nfieldv, const int32_t* nprops,
                         const int32_t* annealing, const double* stepTime, const double* totalTime, const double* dt,
                         const char* materialName, const double* coordinates, const double* characteristicLength,
                         const double* props, const double* density, const double* strainInc, const double* relSpinInc,
                         const double* tempOld, const double* stretchOld, const double* defgradOld,
                         const double* fieldOld, const double* stressOld, const double* stateOld,
                         const double* enerInternOld, const double* enerInelasOld, const double* tempNew,
                         const double* stretchNew, const double* defgradNew, const double* fieldNew, double* stressNew,
                         double* stateNew, double* enerInternNew, double* enerInelasNew, int64_t materialNameLength);

/** Rate-sensitive foam; this build has its checks and no model: the call ends the analysis.
 *  @like SPX_USR_BUILTINVUMAT
 */
void SPX_USR_RATESENSFOAM(const int32_t* callInfo, const int32_t* nblock, const int32_t* ndir, const int32_t* nshr,
                          const int32_t* nstatev, const int32_t* nfieldv, const int32_t* nprops,
                          const int32_t* annealing, const double* stepTime, const double* totalTime, const double* dt,
                          const char* materialName, const double* coordinates, const double* characteristicLength,
                          const double* props, const double* density, const double* strainInc, const double* relSpinInc,
                          const double* tempOld, const double* stretchOld, const double* defgradOld,
                          const double* fieldOld, const double* stressOld, const double* stateOld,
                          const double* enerInternOld, const double* enerInelasOld, const double* tempNew,
                          const double* stretchNew, const double* defgradNew, const double* fieldNew, double* stressNew,
                          double* stateNew, double* enerInternNew, double* enerInelasNew, int64_t materialNameLength);

/** Viscous foam; no model in this build, as SPX_USR_RATESENSFOAM.
 *  @like SPX_USR_BUILTINVUMAT
 */
void SPX_USR_VISCOUSFOAM(const int32_t* callInfo, const int32_t* nblock, const int32_t* ndir, const int32_t* nshr,
                         const int32_t* nstatev, const int32_t* nfieldv, const int32_t* nprops,
                         const int32_t* annealing, const double* stepTime, const double* totalTime, const double* dt,
                         const char* materialName, const double* coordinates, const double* characteristicLength,
                         const double* props, const double* density, const double* strainInc, const double* relSpinInc,
                         const double* tempOld, const double* stretchOld, const double* defgradOld,
                         const double* fieldOld, const double* stressOld, const double* stateOld,
                         const double* enerInternOld, const double* enerInelasOld, const double* tempNew,
                         const double* stretchNew, const double* defgradNew, const double* fieldNew, double* stressNew,
                         double* stateNew, double* enerInternNew, double* enerInelasNew, int64_t materialNameLength);

/** Fu-Chang isotropic foam; no model in this build, as SPX_USR_RATESENSFOAM.
 *  @like SPX_USR_BUILTINVUMAT
 */
void SPX_USR_FUCHANGISOFOAM(const int32_t* callInfo, const int32_t* nblock, const int32_t* ndir, const int32_t* nshr,
                            const int32_t* nstatev, const int32_t* nfieldv, const int32_t* nprops,
                            const int32_t* annealing, const double* stepTime, const double* totalTime, const double* dt,
                            const char* materialName, const double* coordinates, const double* characteristicLength,
                            const double* props, const double* density, const double* strainInc,
                            const double* relSpinInc, const double* tempOld, const double* stretchOld,
                            const double* defgradOld, const double* fieldOld, const double* stressOld,
                            const double* stateOld, const double* enerInternOld, const double* enerInelasOld,
                            const double* tempNew, const double* stretchNew, const double* defgradNew,
                            const double* fieldNew, double* stressNew, double* stateNew, double* enerInternNew,
                            double* enerInelasNew, int64_t materialNameLength);

/** Fu-Chang anisotropic foam; no model in this build, as SPX_USR_RATESENSFOAM.
 *  @like SPX_USR_BUILTINVUMAT
 */
void SPX_USR_FUCHANGANISOFOAM(const int32_t* callInfo, const int32_t* nblock, const int32_t* ndir, const int32_t* nshr,
                              const int32_t* nstatev, const int32_t* nfieldv, const int32_t* nprops,
                              const int32_t* annealing, const double* stepTime, const double* totalTime,
                              const double* dt, const char* materialName, const double* coordinates,
                              const double* characteristicLength, const double* props, const double* density,
                              const double* strainInc, const double* relSpinInc, const double* tempOld,
                              const double* stretchOld, const double* defgradOld, const double* fieldOld,
                              const double* stressOld, const double* stateOld, const double* enerInternOld,
                              const double* enerInelasOld, const double* tempNew, const double* stretchNew,
                              const double* defgradNew, const double* fieldNew, double* stressNew, double* stateNew,
                              double* enerInternNew, double* enerInelasNew, int64_t materialNameLength);

/** Honeycomb; no model in this build, as SPX_USR_RATESENSFOAM.
 *  @like SPX_USR_BUILTINVUMAT
 */
void SPX_USR_HONEYCOMB(const int32_t* callInfo, const int32_t* nblock, const int32_t* ndir, const int32_t* nshr,
                       const int32_t* nstatev, const int32_t* nfieldv, const int32_t* nprops, const int32_t* annealing,
                       const double* stepTime, const double* totalTime, const double* dt, const char* materialName,
                       const double* coordinates, const double* characteristicLength, const double* props,
                       const double* density, const double* strainInc, const double* relSpinInc, const double* tempOld,
                       const double* stretchOld, const double* defgradOld, const double* fieldOld,
                       const double* stressOld, const double* stateOld, const double* enerInternOld,
                       const double* enerInelasOld, const double* tempNew, const double* stretchNew,
                       const double* defgradNew, const double* fieldNew, double* stressNew, double* stateNew,
                       double* enerInternNew, double* enerInelasNew, int64_t materialNameLength);

/** Thermoplastic, for solids, plane stress and generalised plane strain; no model in this build, as SPX_USR_RATESENSFOAM.
 *  @like SPX_USR_BUILTINVUMAT
 */
void SPX_USR_THERMOPLASTIC(const int32_t* callInfo, const int32_t* nblock, const int32_t* ndir, const int32_t* nshr,
                           const int32_t* nstatev, const int32_t* nfieldv, const int32_t* nprops,
                           const int32_t* annealing, const double* stepTime, const double* totalTime, const double* dt,
                           const char* materialName, const double* coordinates, const double* characteristicLength,
                           const double* props, const double* density, const double* strainInc,
                           const double* relSpinInc, const double* tempOld, const double* stretchOld,
                           const double* defgradOld, const double* fieldOld, const double* stressOld,
                           const double* stateOld, const double* enerInternOld, const double* enerInelasOld,
                           const double* tempNew, const double* stretchNew, const double* defgradNew,
                           const double* fieldNew, double* stressNew, double* stateNew, double* enerInternNew,
                           double* enerInelasNew, int64_t materialNameLength);

/** Molded plastic, for solids, plane stress and generalised plane strain; no model in this build, as SPX_USR_RATESENSFOAM.
 *  @like SPX_USR_BUILTINVUMAT
 */
void SPX_USR_MOLDEDPLASTIC(const int32_t* callInfo, const int32_t* nblock, const int32_t* ndir, const int32_t* nshr,
                           const int32_t* nstatev, const int32_t* nfieldv, const int32_t* nprops,
                           const int32_t* annealing, const double* stepTime, const double* totalTime, const double* dt,
                           const char* materialName, const double* coordinates, const double* characteristicLength,
                           const double* props, const double* density, const double* strainInc,
                           const double* relSpinInc, const double* tempOld, const double* stretchOld,
                           const double* defgradOld, const double* fieldOld, const double* stressOld,
                           const double* stateOld, const double* enerInternOld, const double* enerInelasOld,
                           const double* tempNew, const double* stretchNew, const double* defgradNew,
                           const double* fieldNew, double* stressNew, double* stateNew, double* enerInternNew,
                           double* enerInelasNew, int64_t materialNameLength);

/** Fabric, for plane stress; no model in this build, as SPX_USR_RATESENSFOAM.
 *  @like SPX_USR_BUILTINVUMAT
 */
void SPX_USR_FABRIC(const int32_t* callInfo, const int32_t* nblock, const int32_t* ndir, const int32_t* nshr,
                    const int32_t* nstatev, const int32_t* nfieldv, const int32_t* nprops, const int32_t* annealing,
                    const double* stepTime, const double* totalTime, const double* dt, const char* materialName,
                    const double* coordinates, const double* characteristicLength, const double* props,
                    const double* density, const double* strainInc, const double* relSpinInc, const double* tempOld,
                    const double* stretchOld, const double* defgradOld, const double* fieldOld, const double* stressOld,
                    const double* stateOld, const double* enerInternOld, const double* enerInelasOld,
                    const double* tempNew, const double* stretchNew, const double* defgradNew, const double* fieldNew,
                    double* stressNew, double* stateNew, double* enerInternNew, double* enerInelasNew,
                    int64_t materialNameLength);

/** Fabric-reinforced composite ply, for plane stress; no model in this build, as SPX_USR_RATESENSFOAM.
 *  @like SPX_USR_BUILTINVUMAT
 */
void SPX_USR_PLYFABRIC(const int32_t* callInfo, const int32_t* nblock, const int32_t* ndir, const int32_t* nshr,
                       const int32_t* nstatev, const int32_t* nfieldv, const int32_t* nprops, const int32_t* annealing,
                       const double* stepTime, const double* totalTime, const double* dt, const char* materialName,
                       const double* coordinates, const double* characteristicLength, const double* props,
                       const double* density, const double* strainInc, const double* relSpinInc, const double* tempOld,
                       const double* stretchOld, const double* defgradOld, const double* fieldOld,
                       const double* stressOld, const double* stateOld, const double* enerInternOld,
                       const double* enerInelasOld, const double* tempNew, const double* stretchNew,
                       const double* defgradNew, const double* fieldNew, double* stressNew, double* stateNew,
                       double* enerInternNew, double* enerInelasNew, int64_t materialNameLength);

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
 *   400     is rejected, and so is any other, and a general table with fewer than one variable: an "Error" is written, GLO_UTI_EXIT ends the analysis with code 20, and the
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
 * Several variables, any number: rows are sorted by the last variable, within it by the last but one and so on, variable 1
 * fastest.  The rows that agree in the variables from v on are a group of v; groups need not have the same breakpoints or
 * numbers of rows.  Up to 8 variables all points of a block descend together; of more, each point adds up the rows that bracket
 * it, as many as 2 to the number of variables, one by one.  The last variable's interval is searched among its groups, the next variable's within the two that bracket
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
 * NaN in a variable gives NaN, as value and in all derivatives, except where the table is constant or the variable has one row
 * or group only.  Nothing is checked in the table itself: among rows that do not ascend, or with a NaN for an abscissa, a
 * bisection ends in one of the intervals, the same for a point alone and in any block; outside the interval its line goes on.  Transforms and interpolation run as vector
 * loops, and so does the search in up to 32 rows of one variable; longer tables and those of several variables are searched
 * point by point.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Value of a table, and its derivatives if derivatives is 1, at all points of a block.  Only the derivatives by variables of
 *  the table are written; a constant sets as many columns of the field derivatives as its header counts field variables, and
 *  the temperature derivative, to 0.  Two variables with the same source add up their derivatives.
 *  Arrays that the table does not name may be null.
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
 *    1. an entry differs from its transposed one; NaN on the diagonal fails here, since it differs from itself
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
 *    1. an entry differs from its transposed one, or is NaN
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
