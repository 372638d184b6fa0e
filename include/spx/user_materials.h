/** @file spx/user_materials.h
 *  Built-in user materials.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_SPX_USER_MATERIALS_H
#define SHAREDANALYSIS_SPX_USER_MATERIALS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

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
 * Energies, per mass, with psi what the point can still give back; each model says what that is.  Density is that at the end.
 *   brittle models   where an increment yields, crushes or breaks, inelastic += (stressOld + stressNew)/2 : strainInc / density
 *                    less the growth of psi/density, at least nothing; internal = inelastic + psi/density
 *   superelastic     internal += (stressOld + stressNew)/2 : strainInc / density; inelastic = max(before, internal - psi/density)
 * Inelastic energy never falls, and after a closed path that ends without stress (superelastic: without martensite, at one
 * temperature) it is the internal energy, to round-off; of brittle points for increments of any size.  In a brittle point
 * internal less inelastic energy is always psi: an elastic increment stores exactly what it can give back, however large it is,
 * and what the host gives beside it at the start is not kept.  Over closed random paths with increments of 1e-4 this differs
 * from the trapezoid of stress and strain by up to 0.02 % of the largest energy for concrete, 1.5 % for ceramics,
 * because an increment in which a ceramic fails suddenly cannot lose less than nothing.  With a density that follows the
 * volume a part of the elastic energy as large as the change of volume is neither: Cauchy stress that is linear in the strain
 * has no potential per mass.
 *   foams, honeycomb, fabrics, plastics   internal by the mean of both stresses, of the foams and the fabric by the mean of both
 *                    Kirchhoff stresses, so that large changes of volume lose nothing; inelastic = max(before, internal - psi),
 *                    but for the viscous foam, whose loss is exact.  Internal less inelastic is psi to the error of that mean,
 *                    which falls with the square of the increment; each declaration says where the model itself gives more back.
 * State variables start at 0.0; those beyond the model's own keep their values.  Warnings come in the first call alone.
 *
 * Checks come before anything is computed or written, whatever nblock is: in the order element support, number of state
 * variables, number of properties, values of properties (superelastic material: name, element support, number of properties,
 * number of state variables, values; honeycomb: properties before state variables).  The first that fails is written as an "Error" and ends the analysis by
 * GLO_UTI_EXIT with code 20.  A block is returned untouched then, in case the host goes on.  Property values that must be
 * positive are marked + below.  No property that a model reads may be infinite or no number.  docs/user-materials.md lists every
 * check, and says which test determines which property.
 * ------------------------------------------------------------------------------------------------------------------ */

/** The material of this name, for one block.  The first key of the table above, in the order of its first column and then
 *  of its second, that the name begins with selects the implementation; whatever follows the key is free.  A name without a
 *  key is an "Error" that shows it in full length and ends the analysis.
 *  @param[in]  callInfo              (*), -: of the call; its first number is read by the plastics of plane elements, nothing else
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
 *  @param[in]  characteristicLength  (nblock), m: of the elements; read by the ply fabric
 *  @param[in]  props                 (nprops), properties: those of the material, for the whole block
 *  @param[in]  density               (nblock), kg/m3: current density, for the energies
 *  @param[in]  strainInc             (nblock, ndir+nshr), strain: strain increment
 *  @param[in]  relSpinInc            (nblock, nshr), strain: relative spin increment; read by no model of this build
 *  @param[in]  tempOld               (nblock), K: temperature at the start of the increment
 *  @param[in]  stretchOld            (nblock, ndir+nshr), stretch: right stretch U; read by foams, honeycomb and fabric
 *  @param[in]  defgradOld            (nblock, ndir+nshr+nshr), deformation gradient: at the start; read by no model of this build
 *  @param[in]  fieldOld              (nblock, nfieldv), any: field variables; read by no model of this build
 *  @param[in]  stressOld             (nblock, ndir+nshr), Pa: stress
 *  @param[in]  stateOld              (nblock, nstatev), state: state variables
 *  @param[in]  enerInternOld         (nblock), J/kg: internal energy
 *  @param[in]  enerInelasOld         (nblock), J/kg: inelastic energy
 *  @param[in]  tempNew               (nblock), K: temperature at the end of the increment
 *  @param[in]  stretchNew            (nblock, ndir+nshr), stretch: right stretch U; read by foams, honeycomb and fabric
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
 *  Where it is so cold that finish MA is negative, martensite is left at zero strain, and the stress there, which turns with the
 *  strain, jumps: a strain that comes to rest at zero, to round-off, keeps the direction from which it came, and in solids
 *  and one dimension the rest of the path is that of small increments.  In plane stress several thickness strains may then leave no
 *  stress across; which of them is found depends on the increments, by up to the size of that jump.
 *  Start AM above finish AM, finish MA above start MA or start AM, start MA above finish AM, and e_V of 1.5 eps_L or more are
 *  refused, at T0; an unlike C may cross them at other temperatures.
 *    properties, exactly 14: 1 E+ and 2 nu (-1 to 0.5) of austenite, 3 E+ and 4 nu of martensite, 5 eps_L+, then the
 *      uniaxial stresses 6 start+ and 7 finish of austenite to martensite, 8 start and 9 finish of martensite to
 *      austenite, 10 start in compression (0.0: as in tension, alpha = 0), 11 T0, 12 C of austenite to martensite, 13
 *      C of martensite to austenite, 14 volume change e_V (below 0.0: that of flow normal to F, 3 alpha e_D)
 *    state variables, 8: 1 martensite fraction xi, 2 to 7 transformation strain 11 22 33 12 23 13, 8 equivalent
 *      uniaxial stress F/(sqrt(2/3) + alpha)
 *  Exponential law: a name that carries the word _EXP (TVK_SUPER_ELASTIC_N3D_EXP, _N1D_STENT_EXP), not followed by a letter or a
 *  digit, has, with C of both directions as property 12,
 *    austenite to martensite  d xi = bAM (1 - xi) dF/(F - R_f)^2,  martensite to austenite  d xi = bMA xi dF/(F - R_f)^2
 *  instead, from 13 bAM+ and 14 bMA+ as uniaxial stresses; e_V is that of flow normal to F.  Integrated in closed form too, so
 *  that all that is said of increments holds; xi from one equation by Newton's steps between bounds until each point is there,
 *  100 at most and five as a rule.  All is transformed only where F reaches R_f.  Start = finish is refused: it would be a
 *  jump.  In solids it takes 1.7 times the time of the linear law.
 *    inelastic energy: psi = elastic energy + xi w, w the larger of the works on one xi, in tension and in compression, under
 *      the stress at which it goes back to austenite, but no more than the least that is spent on the way there: over a closed
 *      cycle at one temperature the area of the hysteresis.  Heat is not counted.  With unlike moduli and a pressure of several
 *      GPa the law itself can give back more than w (3 % of a cycle with 9 % change of volume): the loss then stays too large.
 *  Sources: F. Auricchio, R. L. Taylor, Comput. Methods Appl. Mech. Engrg 143 (1997) 175; F. Auricchio, R. L. Taylor, J.
 *  Lubliner, same journal 146 (1997) 281; F. Auricchio, Int. J. Plasticity 17 (2001) 971.
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
 *  end, with the bulking of the increment and the limit of tension that its damage leaves: one rising equation for the growth of
 *  damage, solved to round-off, or in closed form where the point breaks.  The failure strain and the energy that bulking takes
 *  are those of the damage at the pressure before both.  Where the strength falls faster with
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
 *  Pi must be greater than -T.  Pressure, bulking, deletion and energies as in SPX_USR_JH2.  Change of phase, with property 19
 *  and on a path of its own choice of this library, where the publication has two phases with a pressure curve each:
 *    top  the largest mu so far; f = (top - mu1)/(mu2 - mu1) between 0 and 1 is dense and stays so; the curve of JH2 has P1 at mu1
 *    P    to mu1 that curve, low; from mu2 on dense, K1' m + K2' m^2 + K3' m^3, m = (mu - mu0)/(1 + mu0), K1' m in tension;
 *         between them a straight line in top from P1 to P2, dense at mu2; release and return P(top) + (1 - f) (low(mu) -
 *         low(top)) + f (dense(mu) - dense(top)); the limit of tension cuts it, so that release does not reach mu = 0
 *    bulking adds to P and does not enter top; its K1 mu + dP is that of mu - f mu0
 *    psi is the work of P along this way to zero, so that a closed cycle loses what it has cost
 *    properties, 18: 1 G+, 2 Pi, 3 si+, 4 simax+, 5 Pf+, 6 sf, 7 sfmax, 8 C, 9 rate0+, 10 T+, 11 D1, 12 n, 13 efmax
 *      (0.0: none), 14 K1+, 15 K2, 16 K3, 17 beta, 18 plastic strain of deletion (0.0: none)
 *      and with a change of phase 24: 19 P1 (0.0 or not given: none), 20 mu2 above mu1, 21 K1'+, 22 K2', 23 K3', 24 mu0
 *    state variables, 4: as in SPX_USR_JH2; with a change of phase 5 top
 *    stable increment with phases: c2 = (1 + mu) times the largest of low'(top), dense'(top) and, between mu1 and mu2, (P2 -
 *      P1)/(mu2 - mu1), the slopes per mu, + 4/3 G, where both curves get steeper with mu
 *    the phases do not change the strength and have no rate; f never falls.  Refused beyond the checks of single values: a
 *      curve that never reaches P1, mu2 not above mu1, P2 not above P1, mu0 below 0.0
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
 *    refused beyond the checks of single values: a cubic that never reaches Pl, and Pl at a compression that is not above muc
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

#ifdef __cplusplus
}
#endif

#endif
