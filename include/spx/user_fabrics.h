/** @file spx/user_fabrics.h
 *  User materials: fabrics.
 *  Conventions, layouts and the grammar of the argument lines: glo.h; what all user materials share: spx/user_materials.h.
 */
#ifndef SHAREDANALYSIS_SPX_USER_FABRICS_H
#define SHAREDANALYSIS_SPX_USER_FABRICS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * User materials: fabrics
 *
 * Cloth and fabric-reinforced plies in plane stress, behind SPX_USR_BUILTINVUMAT.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Fabric: coated or dry woven cloth of two families of fibres, for plane stress (membranes).  Total in the stretch: of the
 *  past it needs the largest strains, the friction and the last angle alone.  With N a fibre's direction, v = U N:
 *    fibres   l = |v|, n = v/l, e = l - 1, em the largest e so far, at least 0; nominal force T per width and thickness
 *      e at em           T = loading curve at e, at least 0
 *      e below em        T = unloading curve at e - shift, not above the loading curve at e; shift = em - (strain at which the
 *                        unloading curve has the loading curve's T at em), at least 0; reloading goes up the same way
 *      e below shift     slack: T = factor times the first slope of the unloading curve times (e - shift)
 *      without an unloading curve the fibre is elastic along the loading curve; T = 0.0 for ever once em has reached rupture
 *    trellis  gamma = theta0 - theta, theta the angle between the fibres; tau = G0 gamma + Glock (|gamma| - lock, at least 0)
 *             with the sign of gamma + friction, which follows Gf d(gamma) between -tauy and tauy
 *    stress   sum T l/J n n + 2 tau/(J sin theta) (sym(n1 n2) - cos theta/2 (n1 n1 + n2 n2)), the forces that do the work
 *             on l and gamma; J the area ratio: thickness stays, the 33 components are not read, that of stress is 0.0
 *  Nominal stress and strain, positive in tension; rows of a curve are (stress, strain).  The way of unloading, friction,
 *  thickness, the law of slack fibres and the ramp are own choices of this library.  First call: first slopes of the loading
 *  curves, and G0 + Gf in shear.
 *    properties, 14 and the curves: rows of the curves 1 loading of fibre 1, 2 loading of fibre 2, 3 unloading of fibre 1,
 *      4 unloading of fibre 2 (0.0: elastic); 5, 6 angles of the fibres to axis 1 in degrees (both 0.0: 0 and 90), 7 G0,
 *      8 locking angle in degrees (0.0: none), 9 Glock, 10 Gf, 11 tauy (0.0: no friction), 12 factor of slack fibres, 0.0 to
 *      1.0, 13 time of the ramp, 14 fibre strain of rupture (0.0: none); then the four curves one after another
 *    state variables, 8: 1, 2 largest strain, 3, 4 shift, 5 friction, 6, 7 fibre strain, 8 gamma in radians; none is a status
 *    a name that carries _INITENER asks for 12: 9 to 11 initial stress 11 22 12, 12 time since; the first increment keeps
 *      stressOld as S0, and x x (3 - 2 x) S0, x = min(1, time/property 13), is added to the stress (property 13 of 0.0: all at
 *      once).  Without it the curves alone rule, and an initial stress is gone after one increment.
 *    energies: the work of J times the stress over the strain increment per area; psi = areas under the way back of both fibres
 *      + G0 gamma^2/2 + Glock (|gamma| - lock)^2/2 + friction^2/(2 Gf); the work of the initial stress counts as lost.
 *      Density is that at the end, initial density over J; one that counts a change of thickness shifts both energies.
 *    stable increment: sqrt(c2/density) bounds the wave speed in any state, ramped stress apart, with
 *      c2 = (max(m1 l1^2, m2 l2^2) (1 + |cos theta|) + G0 + Gf + Glock)/J, mk the steepest slope of the curves of a fibre,
 *      l = 1 + state 6 and 7, theta = theta0 - state 8, J = l1 l2 sin theta/sin theta0
 *  Take care: slack fibres with a factor of 0.0 leave cloth without stiffness in its plane, so that the host needs bending or
 *  damping against wrinkles; shear is the angle, not 2 e12 summed up: a frame of rods at 50 degrees has 0.873, its sum 1.011.
 *  Stretches below 1e-6, area ratios below 1e-6 and sin theta below 1e-3 count as these.
 *  Not in the model: rate, bending of a coating, crimp that couples the families, yarns that slip.
 *  Refused beyond the documented messages: fewer than 14 properties; curves that do not start at zero stress and strain or have
 *  one row; unloading curves whose stress does not increase; properties 7 to 14 below 0.0, 12 above 1.0; fibres that do not
 *  cross.
 *  Sources: X. Q. Peng, J. Cao, Composites A 36 (2005) 859; M. J. King, P. Jearanaisilawong, S. Socrate, Int. J. Solids
 *  Struct. 42 (2005) 3867, for cloth as two families with trellis shear.
 *  @like SPX_USR_BUILTINVUMAT
 *  @param[in]  nblock   (1), block: points
 *  @param[in]  ndir     (1), code 3: direct components
 *  @param[in]  nshr     (1), code 1: shear components
 *  @param[in]  nstatev  (1), count>=8: state variables of a point
 *  @param[in]  nprops   (1), count>=22: properties
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

/** Fabric-reinforced composite ply, for plane stress: elastic fibres in both directions that soften one by one in tension and in
 *  compression, and a matrix that yields and is damaged in shear.  Strain adds up; with nu21 = nu12 E2/E1,
 *    fibres   s11 = (1 - d1) E1 (e11 + (1 - d2) nu21 e22)/D, s22 likewise, D = 1 - (1 - d1)(1 - d2) nu12 nu21; d1 is d1t or d1c
 *             by the sign of s11; r the largest |s11/(1 - d1)|/X of that sign so far; d = 1 - exp(-A (r - 1))/r beyond r = 1,
 *             no larger than property 19; A = 2 g0 L/(Gf - g0 L), g0 = X^2/(2 E), so that an element of length L (the
 *             characteristic one) loses Gf per area, whatever its size; with Gf = 0.0 d is the largest at once
 *    shear    t = 2 G (e12 - e12p), |t| no larger than sy + C epsp^p; r12 the largest |t|/S0 so far,
 *             d12 = alpha12 ln r12, no larger than property 15; s12 = (1 - d12) t
 *  The sign is that of the stress itself, so that stress goes through zero without a jump where the damages of both signs differ.
 *  Damage and stress of both directions are settled in three sweeps: one increment and 2000 differ by 5e-5 at strains of 0.02
 *  in two directions; shear of any increment is on the curve to round-off.  First call: linear elastic, orthotropic.
 *    properties, 21: 1 E1+, 2 E2+, 3 nu12, 4 G12+, 5 X1t+, 6 X1c+, 7 X2t+, 8 X2c+ (strengths, all positive), 9 to 12 their Gf
 *      in J/m2 (0.0: brittle), 13 S0+, 14 alpha12, 15 largest d12 below 1, 16 sy+, 17 C, 18 p in (0, 1]+, 19 largest d below 1
 *      (0.0: 0.999), 20 deletion when d is the largest, 0.0 never, 1.0 in either direction, 2.0 in both, 21 plastic shear
 *      strain of deletion (0.0: none)
 *    state variables, 16: 1 to 4 d1t d1c d2t d2c, 5 d12, 6 plastic shear strain epsp (tensor), 7 to 10 r of 1 to 4, 11 r12,
 *      12 e12p, 13 to 15 strain 11 22 12, 16 status, 1.0 active and 0.0 deleted
 *    a point with 6 to 15 all 0.0 starts from the elastic strain of stressOld
 *    energies: internal += (stressOld + stressNew)/2 : strainInc/density; psi = stress : (strain - plastic strain)/2; of the
 *      initial stress no energy is known, so that loss is counted once it has grown beyond it
 *    stable increment: c2 = max(E1, E2)/(1 - nu12 nu21) + G12, in any state
 *  A deleted point has no stress and keeps its energies and state; in the increment of deletion stressOld does half its work.
 *  Take care: elements longer than Gf/g0 (a few centimetres) cannot soften slowly enough; A stays at 500 there and they lose
 *  more than Gf, about g0 L: the first call warns.  Softening belongs to one row of elements across the crack.  The host's 33
 *  components are not read, that of stress is 0.0.  nu12 nu21 is meant to be small; unidirectional plies are not meant.
 *  Not in the model: shear that weakens fibres or fibres that weaken shear, delamination, rate, kinks apart from crushing;
 *  cracks close by the sign alone, and in compression the whole stiffness is there again.
 *  Refused beyond the documented messages: fewer than 21 properties, 9 to 12, 14, 15, 17 or 19 to 21 below 0.0, nu12 nu21,
 *  15 or 19 of 1 or more, p above 1, deletion other than 0, 1, 2.  Own choices of this library: deletion, the sign that selects
 *  the damage, the start from initial stress.
 *  Sources: P. Ladeveze, E. Le Dantec, Compos. Sci. Technol. 43 (1992) 257; A. F. Johnson, Composites A 32 (2001) 1197;
 *  A. F. Johnson, A. K. Pickett, P. Rozycki, Compos. Sci. Technol. 61 (2001) 2183; A. Matzenmiller, J. Lubliner, R. L. Taylor,
 *  Mech. Mater. 20 (1995) 125 (stiffness with both damages); Z. P. Bazant, B. H. Oh, Mater. Struct. 16 (1983) 155 and P. Maimi
 *  and others, Mech. Mater. 39 (2007) 897 (softening that keeps the fracture energy).
 *  @like SPX_USR_BUILTINVUMAT
 *  @param[in]  nblock   (1), block: points
 *  @param[in]  ndir     (1), code 3: direct components
 *  @param[in]  nshr     (1), code 1: shear components
 *  @param[in]  nstatev  (1), count>=16: state variables of a point
 *  @param[in]  nprops   (1), count>=21: properties
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
