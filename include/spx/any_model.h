/** @file spx/any_model.h
 *  Hyperelastic models of the caller: derivatives given, stress and moduli made.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_SPX_ANY_MODEL_H
#define SHAREDANALYSIS_SPX_ANY_MODEL_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

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

#ifdef __cplusplus
}
#endif

#endif
