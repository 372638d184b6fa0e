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
 *    Built-in user materials            SPX_USR_...                                           14
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
 * Energies, per mass: internal += (stressOld + stressNew)/2 : strainInc / density; inelastic: the like of what each model
 * says.  State variables start at 0.0; those beyond the model's own keep their values.
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
 *  @param[in]  props                 (nprops), any: properties of the material, for the whole block
 *  @param[in]  density               (nblock), kg/m3: current density, for the energies
 *  @param[in]  strainInc             (nblock, *), -: strain increment, ndir + nshr components
 *  @param[in]  relSpinInc            (nblock, *), -: relative spin increment, nshr components; read by no model
 *  @param[in]  tempOld               (nblock), K: temperature at the start of the increment
 *  @param[in]  stretchOld            (nblock, *), stretch: ndir + nshr components; read by no model of this build
 *  @param[in]  defgradOld            (nblock, *), -: deformation gradient, ndir + 2 nshr components; read by no model
 *  @param[in]  fieldOld              (nblock, *), any: field variables; read by no model of this build
 *  @param[in]  stressOld             (nblock, *), Pa: stress, ndir + nshr components
 *  @param[in]  stateOld              (nblock, nstatev), any: state variables
 *  @param[in]  enerInternOld         (nblock), J/kg: internal energy
 *  @param[in]  enerInelasOld         (nblock), J/kg: inelastic energy
 *  @param[in]  tempNew               (nblock), K: temperature at the end of the increment
 *  @param[in]  stretchNew            (nblock, *), stretch: ndir + nshr components; read by no model of this build
 *  @param[in]  defgradNew            (nblock, *), -: deformation gradient at the end; its determinant is the volume ratio
 *  @param[in]  fieldNew              (nblock, *), any: field variables; read by no model of this build
 *  @param[out] stressNew             (nblock, *), Pa: stress, ndir + nshr components
 *  @param[out] stateNew              (nblock, nstatev), any: state variables
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
 *  which is linear in F and integrated in closed form: a monotone increment of any size ends where many small ones do, and
 *  one that passes the smallest F is taken in two parts.  R = (sqrt(2/3) + alpha) times the uniaxial stress, which moves with
 *  temperature by C (T - T0).  e_D follows from eps_L, the axial strain in tension.  Moduli: G and K (one dimension: E) are
 *  mixed linearly with xi.  Plane stress finds the thickness strain for which the stress across vanishes; the host's own
 *  value of it is not read.
 *    properties, exactly 14: 1 E+ and 2 nu of austenite, 3 E+ and 4 nu of martensite, 5 eps_L+, then the uniaxial stresses
 *      6 start+ and 7 finish of austenite to martensite, 8 start and 9 finish of martensite to austenite, 10 start in
 *      compression (0.0: as in tension, alpha = 0), 11 T0, 12 C of austenite to martensite, 13 C of martensite to austenite,
 *      14 volume change e_V (below 0.0: that of flow normal to F, 3 alpha e_D)
 *    state variables, 8: 1 martensite fraction xi, 2 to 7 transformation strain 11 22 33 12 23 13, 8 equivalent uniaxial
 *      stress F/(sqrt(2/3) + alpha)
 *    inelastic energy: work on the transformation strain; over a closed cycle the area of the hysteresis
 *  Sources: F. Auricchio, R. L. Taylor, Comput. Methods Appl. Mech. Engrg 143 (1997) 175; F. Auricchio, Int. J. Plasticity 17
 *  (2001) 971.
 *  @like SPX_USR_BUILTINVUMAT
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
 *  Strength is linear in D, so return and damage are solved together in closed form.  Where the strength falls faster with
 *  strain than the material unloads elastically, the limit of small increments is a sudden loss: D becomes 1 at once.
 *  Hydrostatic tension alone stops at T (1 - D) and does no damage.
 *    properties, 18: 1 G+, 2 A, 3 B, 4 C, 5 M, 6 N, 7 rate0+, 8 T+, 9 sfmax (0.0: none), 10 HEL+, 11 PHEL (0.0: found from HEL
 *      = P + 4/3 G mu/(1 + mu)), 12 D1, 13 D2, 14 K1+, 15 K2, 16 K3, 17 beta, 18 plastic strain of deletion (0.0: none)
 *    state variables, 4: 1 equivalent plastic strain, 2 damage D, 3 status, 1.0 active and 0.0 deleted, 4 bulking pressure dP
 *    inelastic energy: (stressOld + stressNew)/2 : plastic strain increment / density
 *  A deleted point has no stress and keeps its energies and state.
 *  Sources: G. R. Johnson, T. J. Holmquist, High-Pressure Science and Technology 1993, AIP Conf. Proc. 309 (1994) 981.
 *  @like SPX_USR_BUILTINVUMAT
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
 *    properties, 20: 1 G+, 2 Pi, 3 si+, 4 simax+, 5 Pf+, 6 sf, 7 sfmax, 8 C, 9 rate0+, 10 T+, 11 D1, 12 n, 13 efmax (0.0: none),
 *      14 K1+, 15 K2, 16 K3, 17 beta, 18 plastic strain of deletion (0.0: none)
 *    state variables, 4: as in SPX_USR_JH2
 *  Source: G. R. Johnson, T. J. Holmquist, S. R. Beissel, J. Appl. Phys. 94 (2003) 1639.
 *  @like SPX_USR_BUILTINVUMAT
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
 *    properties, 21: 1 G+, 2 A, 3 B, 4 C, 5 N, 6 fc+, 7 T+, 8 rate0+, 9 EFMIN+, 10 Smax+, 11 Pc+, 12 muc+, 13 Pl+, 14 mul+,
 *      15 D1, 16 D2, 17 K1+, 18 K2, 19 K3, 20 plastic strain of deletion (0.0: none), 21 meaning of mul
 *    state variables, 5: 1 equivalent plastic strain, 2 damage D, 3 status, 4 largest mu, 5 permanent compaction mup
 *    inelastic energy: the plastic work and P dmup/(1 + mu), per density
 *  Source: T. J. Holmquist, G. R. Johnson, W. H. Cook, 14th Int. Symp. Ballistics (1993) 591.
 *  @like SPX_USR_BUILTINVUMAT
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

#ifdef __cplusplus
}
#endif

#endif
