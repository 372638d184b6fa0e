/** @file spx/elements.h
 *  8-node brick, gradients, strain output, element checks.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_SPX_ELEMENTS_H
#define SHAREDANALYSIS_SPX_ELEMENTS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

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
 *  has zeros; so is one of finite data whose flows, or the products that they are made of, no double holds, like some warped
 *  bricks whose edges lie 150 powers of ten apart.
 *  @param[in]     nblock        (1), block: elements
 *  @param[in]     X             (nblock, 8, 3), m: nodal coordinates
 *  @param[in]     T             (nblock, 8), K: nodal temperatures
 *  @param[in]     flux          (nblock, 3), W/m2: heat flux
 *  @param[in]     conductivity  (nblock), W/(m K): conductivity of the hourglass patterns
 *  @param[out]    R             (nblock, 8), W: heat flow into each node
 *  @param[in,out] mask          (nblock), mask: set to 1.0 where an element is masked
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
 *  determinant is not above the smallest normal double, such as zeros where none was stored, or is above the largest leaves F as
 *  it is.
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
 *  @param[in]  selector  (1), code 2|3|4: measure, any other as 2
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
 *  @param[in]  selector    (1), code 1|2|3|4: measure, any other as 2
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
 *  @like SPX_ELE_CDISTORTED
 *  @param[in]     header    (6), -: header of the element family; field 6 is the position in work, from 1, of the flag of
 */
void SPX_ELE_SDISTORTEDPAC(const int32_t* nblock, int32_t* counter, const int32_t* elements, const int32_t* header,
                           const double* work);

/** SPX_ERR_EXCESSROT for structural elements.
 *  @like SPX_ELE_CDISTORTED
 *  @param[in]     header    (6), -: header of the element family; field 6 is the position in work, from 1, of the flag of
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
 *  Elements of any size: products that overflow or vanish are formed with exponents of their own.  The answer means nothing
 *  where one component of an edge is more than 1e300 times another.  A NaN in any thickness, length or coordinate marks the
 *  element.
 *  @param[in]     nblock  (1), block: elements
 *  @param[in]     t       (nblock, 4), m: thickness at the four corners
 *  @param[in]     a       (nblock), m: length of the element in its plane
 *  @param[in]     b       (nblock), m: length across it
 *  @param[in]     X       (nblock, 8, 3), m: nodal coordinates
 *  @param[in,out] flags   (nblock), flag: distortion flag
 */
void SPX_OPE_SC3DDISTORTIONCHECK(const int32_t* nblock, const double* t, const double* a, const double* b,
                                 const double* X, double* flags);

#ifdef __cplusplus
}
#endif

#endif
