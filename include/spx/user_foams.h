/** @file spx/user_foams.h
 *  User materials: foams, cores.
 *  Conventions, layouts and the grammar of the argument lines: glo.h; what all user materials share: spx/user_materials.h.
 */
#ifndef SHAREDANALYSIS_SPX_USER_FOAMS_H
#define SHAREDANALYSIS_SPX_USER_FOAMS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * User materials: foams, cores
 *
 * Foams and honeycomb cores that absorb energy, behind SPX_USR_BUILTINVUMAT, for solids (3, 3), and for plane strain and
 * axisymmetry (3, 1), where the stretch and the strain increment across are read like the others: in plane stress the host
 * has to find them.  Volumes and densities:
 *   stretch     what has happened so far is read from the right stretch U at both ends of the increment and not from the
 *               sum of the strain increments.  Components of U belong to axes that turn with the rotation R of F = R U, as
 *               those of stress do; a host that turns its axes otherwise by more than a few degrees, or hands over the left
 *               stretch, gets wrong results without a word.  Principal stretches below 1e-6 count as 1e-6
 *   internal    += (J_old stressOld + J stressNew)/2 : strainInc/(density J), J = det U: density must be that at the end
 *   inelastic   = max(before, internal - psi/(density J)) but for the viscous foam, psi per undeformed volume what the
 *               point can give back: it never falls, internal - inelastic is psi/(density J) to the error of the sum above,
 *               and after a closed slow path all of the internal energy is inelastic.  That sum is of second order in the
 *               increment, of first order where the stress jumps as loading turns
 *   rates       an increment of no time has rate zero; one below 1e-100 s counts as none
 *   first call  the stress of strainInc with the moduli named below, which do not bound those of later increments: the
 *               host's stable increment needs c2, the stiffness for which sqrt(c2/density) is no less than the speed of
 *               waves
 * Beyond the messages of all user materials, elements of other kinds, too few properties, tables that are cut off or not as
 * said below and properties that are not finite or outside of what is said below are refused, these with number and value.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Rate-sensitive foam: compression tests at several speeds, with hysteresis by energy, for foams without lateral effect.
 *  Along each principal direction of U, with e = 1 - stretch, positive in compression:
 *    slowest curve  T(e), its area A(e); tension T = max(E e, -cut-off) at every rate, a plateau and no rupture
 *    hysteresis     W = sum of A, Wm the largest so far, s = HU + (1 - HU) (W/Wm)^p: 1.0 beyond all that was, less in
 *                   unloading and in loading again
 *    rate           r = max(0, sum T de/dt)/sqrt(sum T^2): in uniaxial loading the nominal rate, zero in unloading; then
 *                   r_f += (r - r_f)(1 - exp(-dt/tau))
 *    stress         s times the curves at r_f: straight between them in ln r, that of the first below and of the last above
 *    Cauchy stress  -T of a direction over the stretches of the other two, the curves being of nominal stress
 *    damping        beta E strainInc/dt is added
 *  Own choices of this library: the measure of the rate, the tension, softening of reloading also at high rates.
 *    properties, 7 and tables: 1 E+ (tension, first call, damping), 2 cut-off >= 0 (0.0: none), 3 beta >= 0, s, 4 HU, 0 to
 *      1 (0.0 counts as 1.0: no hysteresis), 5 p >= 0 (0.0 counts as 1.0), 6 tau >= 0, s (0.0: no filter), 7 number of
 *      rates, at least 1; then for each rate its value and the number of rows of its curve, rates positive and increasing
 *      (one alone holds for all); then the curves, rows of stress and strain, positive in compression, strains increasing,
 *      the first row 0.0 0.0.  The last slope goes on: a table that ends before e = 1 should end steep
 *    state variables, 2: 1 Wm, per undeformed volume, 2 r_f; with damping 8: 3 to 8 damping stress 11 22 33 12 23 13
 *    energy: psi = W (HU + (1 - HU) (W/Wm)^p/(p + 1)); what faster curves add, and damping, is lost.  There is one rate for
 *      all directions: one that unloads while others load gives back a little of what the rate has added (measured 0.6 % of
 *      the largest energy on random closed paths), and with a filter the raised stress outlasts the turn; then internal
 *      less inelastic energy is less than psi until the loss has caught up
 *    first call: E without lateral effect.  c2 = k (1 + 2 p (1 - HU)) l^2/J, k the largest of E and all slopes of all
 *      curves, l the largest principal stretch: the hysteresis unloads that much more steeply than the curves, where these
 *      rise with the rate in proportion.  Damping takes the stable increment from 2/w to (sqrt(1 + x^2) - x) 2/w, with
 *      x = beta E w/(2 c2)
 *  Pitfalls: without a filter the stress drops to the slow curve the moment loading turns, and follows the noise of the
 *  host's rates; a tau of a few increments cures both.  c2 does not count that stress follows the rate, which acts like
 *  damping: in uniaxial compression by eta = (T2 - T1) l^2/(J r ln(r2/r1)) (1 - exp(-dt/tau)) between the rates r1 and r2, to
 *  be added to beta E.  Curves that fall localise.  The hysteresis remembers one number, so that compression along one direction
 *  softens the others.  A curve that carries less than that of a lower rate is a "Warning" in the first call: such a foam
 *  may give back more than it has taken.
 *  Sources: S. Kolling, P. A. Du Bois, D. J. Benson, W. W. Feng, Comput. Mech. 40 (2007) 885; P. A. Du Bois, S. Kolling, M.
 *  Koesters, T. Frank, Int. J. Impact Engrg 32 (2006) 725.
 *  @like SPX_USR_BUILTINVUMAT
 *  @param[in]  nblock   (1), block: points
 *  @param[in]  ndir     (1), code 3: direct components
 *  @param[in]  nshr     (1), code 3|1: shear components
 *  @param[in]  nstatev  (1), count>=2: state variables of a point; 8 with damping
 *  @param[in]  nprops   (1), count>=7: properties, with the tables
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

/** Viscous foam: slow-recovering flexible foam, for padding.  An elastic skeleton, and air and polymer that resist the
 *  more, the denser the foam is.  With the principal stretches l_a, J their product and D = strainInc/dt:
 *    skeleton  J sigma_a = sum of (2 mu/alpha)(l_a^alpha - J^(-alpha beta)) over one or two terms, with the energy W, the
 *              sum of (2 mu/alpha^2)(l_1^alpha + l_2^alpha + l_3^alpha - 3 + (J^(-alpha beta) - 1)/beta)
 *    branch    J sigma += q, dq/dt = E_v D - q/theta, theta = eta/E_v, eta = min(eta0 J^(-m), largest): a spring and a
 *              dashpot in series without lateral effect, in closed form for increments of any size; of no time, elastic
 *    loss      q:q/eta over the increment, with eta in the middle, in closed form: exact for m = 0.0.  This is what
 *              inelastic energy grows by, and psi = W + q:q/(2 E_v); with m of 2.0 and 100 increments to a stretch of 0.4
 *              both are right to 0.3 %, and the error falls with the square of the increment
 *    properties, 10: 1 mu1+, 2 alpha1, 3 beta1 above -1/3, 4 mu2 >= 0 (0.0: one term), 5 alpha2, 6 beta2 above -1/3, 7 E_v
 *      >= 0, 8 eta0 >= 0, stress by time (E_v or eta0 of 0.0: no branch), 9 m >= 0, 10 largest eta >= 0 (0.0: 1e100); no
 *      alpha of 0.0
 *    state variables, 6: q, a Kirchhoff stress, 11 22 33 12 23 13; kept where there is no branch
 *    first call: G = mu1 + mu2 + E_v/2, K = sum of 2 mu (beta + 1/3) + E_v/3, the branch being a spring at once.
 *      c2 = ((largest over a of the sum of 2 mu (l_a^alpha + beta J^(-alpha beta))) + E_v)/J + largest compressive stress
 *  Own choices of this library: the power of J, a branch without lateral effect, negative mu2 refused.
 *  Pitfalls: without a largest eta J^(-m) is huge in elements that are pressed flat.  One time of relaxation at a given J;
 *  no plateau, which two terms only imitate; tension is as stiff as the terms say.
 *  Sources: R. Hill, Adv. Appl. Mech. 18 (1978) 1; B. Storakers, J. Mech. Phys. Solids 34 (1986) 125; viscosity that rises
 *  with compaction: A. N. Gent, K. C. Rusch, Rubber Chem. Technol. 39 (1966) 389.
 *  @like SPX_USR_RATESENSFOAM
 *  @param[in]  nstatev  (1), count>=6: state variables of a point
 *  @param[in]  nprops   (1), count>=10: properties
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

/** Fu-Chang isotropic foam: as SPX_USR_RATESENSFOAM, but each principal direction has its own rate, curves may have tension
 *  of their own, and there is no damping.  The unified equations of the source take the rate of strain to be exponential in
 *  stress; this is the family of curves to which their constants are fitted, straight in the logarithm of the rate, and not
 *  those constants.
 *    rate    D_f += ((U_new - U_old)/dt - D_f)(1 - exp(-dt/tau)), a tensor; of direction n: max(0, -n.D_f.n) where the
 *            slowest curve is in compression there, max(0, n.D_f.n) in tension
 *  Curves that begin with a negative strain hold for tension too, stress and strain negative; they must have zero stress at
 *  zero strain.  All or none of the curves begin so.  Where none does, tension is that of SPX_USR_RATESENSFOAM.
 *    properties, 6 and tables: 1 E+, 2 cut-off, 3 HU, 4 p, 5 tau, 6 number of rates, and the tables, all as there
 *    state variables, 7: 1 Wm, 2 to 7 D_f, 11 22 33 12 23 13, tensor shear
 *    energy, first call, pitfalls: as there, c2 too.  Stress that follows the rate acts like damping by the largest over the
 *      directions of eta = (T2 - T1) l^2/(J r ln(r2/r1)) (1 - exp(-dt/tau)), with the l and the r of each.  On random closed
 *      paths the loss is the internal energy but for the error of the increments
 *  Own choices: interpolation in place of the equations, the measure of the rate, hysteresis by one energy for all
 *  directions.
 *  Sources: F. S. Chang, thesis, Wayne State University (1995); F. S. Chang, Y. Song, D. X. Lu, C. N. DeSilva, J. Engrg
 *  Mater. Technol. 120 (1998) 212.
 *  @like SPX_USR_RATESENSFOAM
 *  @param[in]  nstatev  (1), count>=7: state variables of a point
 *  @param[in]  nprops   (1), count>=6: properties, with the tables
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

/** Fu-Chang anisotropic foam: blocks with a rise direction, laminated foams.  As SPX_USR_FUCHANGISOFOAM, but by component
 *  of U in the material axes, each with a family of curves, a rate and a hysteresis of its own:
 *    axes    x = 1 - U_ii, T_ii = -s f_ii(x);  shear  x = 2 |U_ij|, T_ij = s f_ij(x) with the sign of U_ij
 *    rate    of U by component, filtered; loading as there;  s from the energy of the component, W and Wm of it
 *    stress  that which does the work T:dU, sigma = U S U/J with (S U + U S)/2 = T, exact
 *  The six components do not move each other.  Own choice of this library: the form by component of U.
 *    properties, 11 and tables: 1 to 5 as there, 6 to 11 number of rates of 11 22 33 12 23 13, where 0.0 takes the family
 *      of the component before and 11 must be given; then the tables of those that are given, family after family, as
 *      there. Curves that are given for a shear are of T_ij over 2 |U_ij| and begin with 0.0 0.0
 *    state variables, 12: 1 to 6 Wm of 11 22 33 12 23 13, 7 to 12 filtered rate of U
 *    first call: E for each axis, without lateral effect, shear 2 G = E.  c2 twice that of
 *      SPX_USR_RATESENSFOAM, an estimate: shear moves direct stress; eta that of SPX_USR_FUCHANGISOFOAM of each component,
 *      twice it for a shear, with the longest l
 *  Pitfalls: large shear gives direct Cauchy stress, which is geometry; an orientation given wrongly exchanges the axes.
 *  @like SPX_USR_RATESENSFOAM
 *  @param[in]  nblock   (1), block: points
 *  @param[in]  ndir     (1), code 3: direct components
 *  @param[in]  nshr     (1), code 3|1: shear components
 *  @param[in]  nstatev  (1), count>=12: state variables of a point
 *  @param[in]  nprops   (1), count>=11: properties, with the tables
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

/** Honeycomb: crushable cores and barriers.  The six components of stress are crushed on their own until the cells are
 *  closed, then the block is a dense metal.
 *    compaction  b = largest so far of (1 - J)/(1 - Vf), 0 to 1, J = det U
 *    cells       sigma = sigmaOld + M strainInc, no larger than Y; M from the loose moduli (E_ii, 2 G_ij) to the dense ones
 *                (E, 2 G) in a straight line with b; Y = min(curve(1 - J) factor, sy), shear sy/sqrt(3), with the factor of
 *                the rate sqrt(2/3 strainInc:strainInc)/dt, straight in its logarithm and held outside; a curve below zero
 *                counts as zero
 *    metal       from the increment after b has reached 1.0: isotropic, von Mises with sy, elastic in volume; for good
 *    deletion    where the largest U_ii - 1 has ever reached property 11: no stress from then on, energies and states kept,
 *                half of J_old stressOld : strainInc being counted in the increment of deletion
 *    properties, 18 and tables: 1 E+, 2 nu, -1 to 0.5, 3 sy+ of the dense metal, 4 Vf, 0 to 1, the relative volume when
 *      dense, 5 to 7 E11+ E22+ E33+ and 8 to 10 G12+ G23+ G13+ of the loose cells, 11 strain of deletion >= 0 (0.0: none),
 *      12 to 17 number of rows of the curves 11 22 33 12 23 13, where 0.0 takes the curve of the component before and 11
 *      must be given, 18 number of rows of the factors (0.0: none); then the tables: rows of stress and 1 - J, which
 *      increases, and whose negative values are tension, the end slopes going on; rows of factor+ and rate+, which
 *      increases
 *    state variables, 1: b; with deletion 3: 2 largest U_ii - 1, 3 status, 1.0 active and 0.0 deleted, never read
 *    energy: psi = sum of sigma^2/(2 M), shear sigma^2/M, per volume; of the metal q^2/(6 G) + p^2/(2 K)
 *    first call: the loose moduli, uncoupled.  c2 = largest of E11, E22, E33 + b (K + 4/3 G), K and G of the dense metal
 *  Too few state variables are told after too few properties.  Own choices of this library: mixing of the moduli, psi, the
 *  strain of deletion.
 *  Pitfalls: curves must rise to about sy before 1 - J = 1 - Vf, else locking is a jump; the stable increment falls as b
 *  grows; the axes are those of the cells, and a wrong orientation is a factor of 10 or more.  Crush modes do not move each
 *  other, where real blocks are weaker in combined loading.  What is dense stays metal, also when it is pulled apart.
 *  Sources: R. K. McFarland, AIAA J. 1 (1963) 1380; T. Wierzbicki, Int. J. Impact Engrg 1 (1983) 157; D. Mohr, M. Doyoyo,
 *  Int. J. Solids Struct. 41 (2004) 4435.
 *  @like SPX_USR_RATESENSFOAM
 *  @param[in]  nstatev  (1), count>=1: state variables of a point; 3 with deletion
 *  @param[in]  nprops   (1), count>=18: properties, with the tables
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

#ifdef __cplusplus
}
#endif

#endif
