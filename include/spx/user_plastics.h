/** @file spx/user_plastics.h
 *  User materials: plastics.
 *  Conventions, layouts and the grammar of the argument lines: glo.h; what all user materials share: spx/user_materials.h.
 */
#ifndef SHAREDANALYSIS_SPX_USER_PLASTICS_H
#define SHAREDANALYSIS_SPX_USER_PLASTICS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * User materials: plastics
 *
 * Injection-moulded parts, behind SPX_USR_BUILTINVUMAT.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Thermoplastic, for solids, plane stress, generalised plane strain, plane strain and axisymmetry: yield stresses st in
 *  tension and sc in compression, a plastic change of volume, ductile failure and failure by shear.  With q the von Mises stress,
 *  p the pressure, positive in compression, and eta = -3 p/q between -2 and 2 (equibiaxial compression and tension):
 *    surface   sqrt(q^2 + f3 p^2) = root(f1 + f2 p), root(x) = sign(x) sqrt|x|, f1 = k st sc, f2 = 3 k (sc - st), k = 1 + f3/9:
 *              uniaxial stress is on the curves whatever f3 is; f3 = 0 and one curve is von Mises.  Shear yields at
 *              sqrt(st sc/3) with f3 = 0; f3 > 0 lets pressure yield as well
 *    flow      along the derivative of q^2 + f5 p^2 by the stress; plastic Poisson's ratio (9 - 2 f5)/(18 + 2 f5).  The plastic
 *              strain ep is the axial one of a uniaxial test
 *    curves    st and sc at ep times the factor of the rate; end slopes go on outside the rows, and no yield stress is below
 *              1e-9 E.  The rate is sqrt(2/3 d:d)/dt, d the deviator of the strain increment, through r += (rate - r)
 *              (1 - exp(-dt/tau)); factors and failure strains go straight in ln r between their rows and are held outside
 *    plane stress  q^2 is Hill's with the ratios R of yield stresses to the curve: q = s11/R11, s22/R22, sqrt(3) s12/R12 under
 *              one stress; the strain across is found, the host's own is not read.  R13 and R23 are checked and not used.
 *    ductile   eps_D = [eps_T+ sh(k0 (eta + 2)) + eps_T- sh(k0 (2 - eta))]/sh(4 k0), straight in eta where k0 = 0; in plane
 *              stress times max(0.001, 1 + k1 sin^2 a + k2 sin^2 2a), a from axis 1 to the larger stress
 *    shear     eps_S = [eps_S+ sh(f (t - t-)) + eps_S- sh(f (t+ - t))]/sh(f (t+ - t-)), t = (1 - kS eta)/(tau_max/q),
 *              t+ = 2 - 4 kS and t- = 2 + 4 kS its values in equibiaxial tension and compression; eps_S+ alone where kS = 0
 *    deletion  the sum of dep/eps_D or that of dep/eps_S reaches 1: at once, so that failure depends on the mesh
 *  The return is implicit: one unknown between 0 and 1, found to round-off for curves of any shape and increments of any size.
 *  Proportional paths end where many small increments do.  Beyond the apex of the surface, which f5 = 0 leaves open in
 *  tension, stress becomes that of the apex at the plastic strain before.  A curve that falls faster than 3 G unloads has several answers;
 *  one of them is taken.
 *  What (ndir, nshr) = (3, 1) is says the first number of callInfo: 2 is generalised plane strain, plane strain or axisymmetry,
 *  ANY OTHER VALUE IS PLANE STRESS.  Only that number is read.  Where it is 2, and in solids, ratios other than one, k1 and
 *  k2 count for nothing, with a warning in the first call.
 *  Own choices of this library: the meaning of callInfo, k1, k2, f3 and f5, the rate factors and their filter, the apex.
 *    properties, 21 and the tables: 1 E+, 2 nu (-1 to 0.5), 3 to 8 R11+ R22+ R33+ R12+ R13+ R23+, 9 k1, 10 k2, rows of: 11
 *      tension curve, 12 compression curve (either may be 0: as the other), 13 ductile failure, 14 shear failure (0: none),
 *      15 f3 and 16 f5 (0 or greater), 17 k0 (0 or greater), 18 kS, 19 f (0 or greater), 20 tau (0.0: no filter), 21 rows of
 *      rate factors (0: none).  Behind them these tables one after another: curves in rows of (stress+, plastic strain), which
 *      begin at plastic strain 0.0 to mean a first yield stress; failure in rows of (eps+, eps-, rate); (factor+, rate).  One
 *      row with a rate holds for every rate
 *    state variables, 14: 1 plastic strain ep, 2 to 7 plastic strain 11 22 33 12 23 13, 8 filtered rate, 9 ductile and 10
 *      shear damage, 11 strain across (plane stress), 12 von Mises stress, 13 triaxiality -p/q, 0.0 where there is no shear, 14
 *      status, 1.0 active and 0.0 deleted.  A deleted point has no stress and keeps its energies and other state; 12 and 13
 *      are those at failure.  Status follows from 9 and 10 and is never read
 *    energies  internal += (stressOld + stressNew)/2 : strainInc/density, without the strain across of plane stress; inelastic =
 *      max(before, internal - psi/density), psi = q^2/(6 G) + p^2/(2 K)
 *    stable increment  by the elastic stiffness, K + 4 G/3, at any state
 *    refused beyond the documented checks: curves whose plastic strains do not increase or whose stresses are not positive, rate
 *      factors likewise, ratios that give no closed surface in plane stress (R12 alone is free: R11 = R33 = 1 needs R22 > 0.5),
 *      kS and f that make eps_S negative at a stress that exists
 *  Limits: isotropic hardening, no loss of stiffness, no temperature.
 *  Sources: R. Raghava, R. M. Caddell, G. S. Y. Yeh, J. Mater. Sci. 8 (1973) 225; P. A. Du Bois, S. Kolling, M. Koesters, T.
 *  Frank, Int. J. Impact Eng. 32 (2006) 725; R. Hill, Proc. R. Soc. A 193 (1948) 281; J. C. Simo, R. L. Taylor, Int. J.
 *  Numer. Methods Eng. 22 (1986) 649; H. Hooputra, H. Gese, H. Dell, H. Werner, Int. J. Crashworthiness 9 (2004) 449.
 *  @like SPX_USR_BUILTINVUMAT
 *  @param[in]  callInfo (1), code 1|2: what elements with one shear are; 2 not plane stress
 *  @param[in]  nblock   (1), block: points
 *  @param[in]  ndir     (1), code 3: direct components
 *  @param[in]  nshr     (1), code 3|1: shear components
 *  @param[in]  nstatev  (1), count>=14: state variables of a point
 *  @param[in]  nprops   (1), count>=23: properties
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

/** Molded plastic: SPX_USR_THERMOPLASTIC with f3 = f5 = 0, whose properties 15 and 16 are not read.  Plastic flow keeps the
 *  volume; a material that is stronger in compression has an apex in tension, at the pressure -st sc/(3 (sc - st)).
 *  @like SPX_USR_THERMOPLASTIC
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

#ifdef __cplusplus
}
#endif

#endif
