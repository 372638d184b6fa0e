// Softening on unloading, alone and round the stress of rubber and foam.
#include "spx/impl/materials/mullins.h"
#include "spx.h"
#include "spx/impl/materials/hyper_quantities.h"
#include "spx/impl/materials/model_tables.h"
#include "spx/impl/materials/stretch_quantities.h"
#include "spx/impl/materials/stretch_tables.h"

namespace sa {

#define SA_SOFTENING_PARAMETERS                                                                                        \
  const int32_t *nblock, const double *r, const double *m, const double *beta, double *UmNew, const double *UmOld,     \
      double *U, double *eta, double *slope
#define SA_SOFTENING (Softening{r, m, beta, UmNew, UmOld, U, eta, slope})

SA_KERNEL(SPX_MAT_ORMULLINS, (SA_SOFTENING_PARAMETERS)) { softenBlock(*nblock, SA_SOFTENING); }

SA_KERNEL(SPX_MAT_MULLINSDAMAGEENER, (const int32_t* nblock, const double* r, const double* m, const double* beta,
                                      const double* Um, const double* s, const double* q, double* damage)) {
  forPieces(*nblock, [=](int start, int n) SA_POINT {
    double z[kScratchPoints], bell[kScratchPoints], erf[kScratchPoints];
    fetch(n, r + start, s + start, q + start, damage + start);
    forPoints(n, [=, &z](int i) SA_POINT {
      const int k = start + i;
      z[i] = Um[k] * guardedReciprocal(m[k] + beta[k] * Um[k]);
    });
    forPoints(n, [&](int i) SA_POINT { bell[i] = vm::expBelow(-(z[i] * z[i])); });
    forPoints(n, [&](int i) SA_POINT { erf[i] = erfOf(z[i]); });
    forPoints(n, [=, &bell, &erf](int i) SA_POINT {
      const int k = start + i;
      const double d = m[k] + beta[k] * Um[k];
      damage[k] = 1.0 / r[k] * (erf[i] * Um[k] - d * (1.0 - bell[i]) / 1.772453851) * s[k] / q[k];
    });
  });
}

#define SA_DEGRADATION(name, direct, shear)                                                                            \
  SA_KERNEL(name, (const int32_t* nblock, const double* eta, double* stress)) {                                        \
    degrade<direct, shear>(0, *nblock, *nblock, eta, stress);                                                          \
  }
SA_DEGRADATION(SPX_MAT_MULLINSSTRESSDEGR3D, 3, 3)
SA_DEGRADATION(SPX_MAT_MULLINSSTRESSDEGRGPE, 3, 1)
SA_DEGRADATION(SPX_MAT_MULLINSSTRESSDEGRPS, 2, 1)
SA_DEGRADATION(SPX_MAT_MULLINSSTRESSDEGRUNI, 1, 0)

// ---- round the stress of any model of the invariants

#define SA_SOLID_STRETCH(X) X(V)
#define SA_PLANE_STRETCH(X) X(V) X(thickness)
#define SA_AXIAL_STRETCH(X) X(axial) X(lateral)
#define SA_MULLINS(name, CONSTANTS, STRETCH, In, Out, direct, shear)                                                   \
  SA_KERNEL(name, (SA_SOFTENING_PARAMETERS, CONSTANTS(SA_AS_PARAMETER) STRETCH(SA_AS_PARAMETER) double* stress,        \
                   double* flag)) {                                                                                    \
    const int64_t N = *nblock;                                                                                         \
    softenBlock(*nblock, SA_SOFTENING);                                                                                \
    isochoricStress(*nblock, In, VolumeFlag{flag}, SA_MODEL(GivenDerivatives, CONSTANTS), Out);                        \
    degrade<direct, shear>(0, *nblock, N, eta, stress);                                                                \
  }
// clang-format off
SA_MULLINS(SPX_MAT_MULLINS3DEXP,  SA_GIVEN_FIRST,     SA_SOLID_STRETCH, (StretchIn<S33>{V, N}),            (StressOut<S33>{stress, N}), 3, 3)
SA_MULLINS(SPX_MAT_MULLINSGPEEXP, SA_GIVEN_FIRST,     SA_SOLID_STRETCH, (StretchIn<S31>{V, N}),            (StressOut<S31>{stress, N}), 3, 1)
SA_MULLINS(SPX_MAT_MULLINSPSEXP,  SA_GIVEN_ISOCHORIC, SA_PLANE_STRETCH, (PlaneStretchIn{V, thickness, N}), (PlaneStressOut{stress, N}), 2, 1)
SA_MULLINS(SPX_MAT_MULLINSUNIEXP, SA_GIVEN_ISOCHORIC, SA_AXIAL_STRETCH, (AxialStretchIn{axial, lateral}),  (AxialStressOut{stress}),    1, 0)
// clang-format on

// ---- round the stress of foam

namespace {

template <class Storage>
SA_INLINE void storeFoam(double* stress, int64_t n, int64_t k, const Sym<S33>& t) {
  storeTensor<Storage>(stress, n, k, {t.s11, t.s22, t.s33, t.s12, t.s23, t.s13});
}

// Energy and softening of a piece whose stretches are known.
template <class Terms>
SA_INLINE void softenFoam(int start, int n, const Terms& terms, const StretchLogs& w, const Softening& a) {
  EnergySum sum;
  double* U = a.U;
  sumEnergy(start, n, terms, w, sum);
  forPoints(n, [=, &sum](int i) SA_POINT { U[start + i] = sum.U[i]; });
  soften(start, n, a);
}

} // namespace

#define SA_FOAM_MULLINS(name, Storage, shear)                                                                          \
  SA_KERNEL(name, (SA_SOFTENING_PARAMETERS, SA_FOAM3(SA_AS_PARAMETER) const double* V, const double* axes,             \
                   double* stress, double* flag)) {                                                                    \
    const int64_t N = *nblock;                                                                                         \
    const Softening softening = SA_SOFTENING;                                                                          \
    const auto terms = SA_FOAM3_TERMS;                                                                                 \
    const PrincipalIn stretch{V, N};                                                                                   \
    forPieces(*nblock, [=](int start, int n) SA_POINT {                                                                \
      StretchLogs w;                                                                                                   \
      StressSums s;                                                                                                    \
      takeLogarithms<FoamTerms<3>>(start, n, stretch, flag, w);                                                        \
      sumStress(start, n, terms, w, s);                                                                                \
      softenFoam(start, n, terms, w, softening);                                                                       \
      forPoints(n, [=, &w, &s](int i) SA_POINT {                                                                       \
        const double rJ = 1.0 / w.J[i];                                                                                \
        storeFoam<Storage>(stress, N, start + i,                                                                       \
                           inAxes(rJ * s.t1[i], rJ * s.t2[i], rJ * s.t3[i], axes, N, start + i));                      \
      });                                                                                                              \
      degrade<3, shear>(start, n, N, eta, stress);                                                                     \
    });                                                                                                                \
  }
SA_FOAM_MULLINS(SPX_MAT_HFOAMMULLINS3DEXP, S33, 3)
SA_FOAM_MULLINS(SPX_MAT_HFOAMMULLINSGPEEXP, S31, 1)

#define SA_FOAM_MULLINS_CLOSED(name, free, direct, shear)                                                              \
  SA_KERNEL(name, (SA_SOFTENING_PARAMETERS, SA_FOAM3(SA_AS_PARAMETER) const double* V, double* freeStretch,            \
                   double* stress, double* flag)) {                                                                    \
    const int64_t N = *nblock;                                                                                         \
    const Softening softening = SA_SOFTENING;                                                                          \
    const auto terms = SA_FOAM3_TERMS;                                                                                 \
    forClosedStates<free>(*nblock, terms, V, freeStretch, flag,                                                        \
                          [=](int start, int n, const FreeScratch& f, const StretchLogs& w, const StressSums& s)       \
                              SA_POINT {                                                                               \
                                softenFoam(start, n, terms, w, softening);                                             \
                                storeClosed<free>(start, n, N, terms, f, w, s, stress, nullptr, nullptr);              \
                                degrade<direct, shear>(start, n, N, eta, stress);                                      \
                              });                                                                                      \
  }
SA_FOAM_MULLINS_CLOSED(SPX_MAT_HFOAMMULLINSPSEXP, 1, 2, 1)
SA_FOAM_MULLINS_CLOSED(SPX_MAT_HFOAMMULLINSUNIEXP, 2, 1, 0)

// ---- effective moduli

SA_KERNEL(SPX_OPT_MULLINSEFFMOD, (const int32_t* nblock, const int32_t* code, const double* eta, const double* slope,
                                  const double* q, const double* modulus, double* effective)) {
  constexpr int32_t kSecant = 100, kUnloading = 200, kPresent = 300;
  const int32_t c = *code;
  if (c != kSecant && c != kUnloading && c != kPresent) return;
  const bool never = c == kSecant, onlyOffPrimary = c == kPresent;
  forPoints(*nblock, [=](int i) SA_POINT {
    const double e = eta[i], secant = e * modulus[i], tangent = secant + slope[i] * q[i];
    effective[i] = vm::select(never || (onlyOffPrimary && e == 1.0), secant, tangent);
  });
}

#undef SA_SOFTENING_PARAMETERS
#undef SA_SOFTENING
#undef SA_DEGRADATION
#undef SA_SOLID_STRETCH
#undef SA_PLANE_STRETCH
#undef SA_AXIAL_STRETCH
#undef SA_MULLINS
#undef SA_FOAM_MULLINS
#undef SA_FOAM_MULLINS_CLOSED

} // namespace sa
