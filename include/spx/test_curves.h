/** @file spx/test_curves.h
 *  Hyperelastic models that follow test curves.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_SPX_TEST_CURVES_H
#define SHAREDANALYSIS_SPX_TEST_CURVES_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

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
 *  @like SPX_MAT_MARLOWMODULI3DEXP
 *  @param[in] axial    (nblock), axial stretch: stretch along the axis
 *  @param[in] lateral  (nblock), axial stretch: stretch across it, the same in both directions
 *  @param[out] residual   (nblock), Pa: Kirchhoff stress in the free direction
 *  @param[out] slope      (nblock), Pa: its derivative by the logarithm of the free stretch
 */
void SPX_MAT_MARLOWUNIRESULT(const int32_t* nblock, const double* U1, const double* p, const double* U11,
                             const double* dp, const double* axial, const double* lateral, double* residual,
                             double* slope);

#ifdef __cplusplus
}
#endif

#endif
