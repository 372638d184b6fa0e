// Stress measures and strains of ductile and shear failure.
#include "glo/kernel/fetch.h"
#include "glo/tensors/principal.h"
#include "glo/tensors/trigonometric_values.h"
#include "spx.h"

namespace sa {
namespace {

constexpr double kThird = 0.3333333333333333;

// a > vm::kSmallestNormal b, and vm::kSmallestNormal b >= a, without a product in the subnormal range, where processors are slow.
SA_INLINE bool exceeds(double a, double b) { return a * 0x1p500 > vm::kSmallestNormal * 0x1p500 * b; }
SA_INLINE bool reaches(double b, double a) { return vm::kSmallestNormal * 0x1p500 * b >= a * 0x1p500; }

// ---- stress of point k; components that a state does not store are zero

template <class Storage>
struct StressIn {
  const double* S;
  int64_t n;
  SA_INLINE Sym<S33> operator()(int64_t k) const {
    const Sym<Storage> t = loadTensor<Storage>(S, n, k);
    return {t.s11, t.s22, t.s33, t.s12, t.s23, t.s13};
  }
};
struct PlaneStress {
  const double* S;
  int64_t n;
  SA_INLINE Sym<S33> operator()(int64_t k) const { return {S[k], S[k + n], 0.0, S[k + 2 * n], 0.0, 0.0}; }
};
struct BeamStress {
  const double* S;
  int64_t n;
  SA_INLINE Sym<S33> operator()(int64_t k) const { return {S[k], 0.0, 0.0, S[k + n], 0.0, 0.0}; }
};
struct AxialStress {
  const double* S;
  int64_t n;
  SA_INLINE Sym<S33> operator()(int64_t k) const { return {S[k], 0.0, 0.0, 0.0, 0.0, 0.0}; }
};

struct MeanAndMises {
  double mean, mises;
};
SA_INLINE MeanAndMises meanAndMises(const Sym<S33>& s) {
  const double m = (s.s11 + s.s22 + s.s33) * kThird, d1 = s.s11 - m, d2 = s.s22 - m, d3 = s.s33 - m;
  const double shear = s.s12 * s.s12 + s.s23 * s.s23 + s.s13 * s.s13;
  return {m, vm::sqrt(1.5 * (d1 * d1 + d2 * d2 + d3 * d3 + 2.0 * shear))};
}

// Mean stress over Mises stress, kept within 100 either way.
SA_INLINE double triaxiality(const Sym<S33>& s) {
  const MeanAndMises q = meanAndMises(s);
  const bool sheared = exceeds(q.mises, vm::abs(q.mean)), nothing = vm::abs(q.mean) <= vm::kSmallestNormal;
  const double ratio = q.mean / vm::select(sheared, q.mises, 1.0);
  const double inside = vm::select(vm::abs(ratio) > 100.0, vm::copysign(100.0, ratio), ratio);
  const double hydrostatic = vm::select(nothing, 0.0, vm::copysign(100.0, q.mean));
  const double value = vm::select(sheared, inside, hydrostatic);
  return vm::select(q.mises == q.mises, value, vm::kNaN);
}

// (Mises + ks pressure) over the largest shear stress; P are the principal stresses.
SA_INLINE double shearRatio(const Sym<S33>& s, double ks, double P1, double P2, double P3) {
  const MeanAndMises q = meanAndMises(s);
  const double d12 = vm::abs(P1 - P2), d23 = vm::abs(P2 - P3), d31 = vm::abs(P3 - P1);
  const double largest = 0.5 * vm::max(vm::max(d12, d23), d31), drive = q.mises - ks * q.mean;
  const bool none = reaches(vm::abs(drive), largest);
  return vm::select(none, 0.0, drive / vm::select(none, 1.0, largest));
}

} // namespace

#define SA_TRIAXIALITY(name, State)                                                                                    \
  SA_KERNEL(name, (const int32_t* nblock, const double* stress, double* ratio)) {                                      \
    const State s{stress, *nblock};                                                                                    \
    forPoints(*nblock, [=](int i) SA_POINT { ratio[i] = triaxiality(s(i)); });                                         \
  }
#define SA_TRIAXIALITY_LIST(name, State)                                                                               \
  SA_KERNEL(name,                                                                                                      \
            (const int32_t* nblock, const int32_t* count, const int32_t* list, const double* stress, double* ratio)) { \
    const State s{stress, *nblock};                                                                                    \
    forList(*nblock, *count, list, [=](auto point, int n) SA_POINT {                                                   \
      forPoints(n, [=](int i) SA_POINT { ratio[point(i)] = triaxiality(s(point(i))); });                               \
    });                                                                                                                \
  }
#define SA_SHEAR_RATIO_LIST(name, State)                                                                               \
  SA_KERNEL(name, (const int32_t* nblock, const int32_t* count, const int32_t* list, const double* stress,             \
                   const double* ks, double* P, double* ratio)) {                                                      \
    const int64_t N = *nblock;                                                                                         \
    const double factor = *ks;                                                                                         \
    const State s{stress, N};                                                                                          \
    forList(N, *count, list, [=](auto point, int n) SA_POINT {                                                         \
      trigonometricValues(point, n, s, N, P);                                                                          \
      forPoints(n, [=](int i) SA_POINT {                                                                               \
        const int64_t k = point(i);                                                                                    \
        ratio[k] = shearRatio(s(k), factor, P[k], P[k + N], P[k + 2 * N]);                                             \
      });                                                                                                              \
    });                                                                                                                \
  }

// clang-format off
SA_TRIAXIALITY(SPX_MAT_STRESSRATIO3DEXP,            StressIn<S33>)
SA_TRIAXIALITY(SPX_MAT_STRESSRATIOGPEEXP,           StressIn<S31>)
SA_TRIAXIALITY(SPX_MAT_STRESSRATIOPSEXP,            PlaneStress)
SA_TRIAXIALITY(SPX_MAT_STRESSRATIOBEAMEXP,          BeamStress)
SA_TRIAXIALITY(SPX_MAT_STRESSRATIOUNIEXP,           AxialStress)
SA_TRIAXIALITY_LIST(SPX_MAT_DUCTSTRESSRATIO3DEXP,   StressIn<S33>)
SA_TRIAXIALITY_LIST(SPX_MAT_DUCTSTRESSRATIOGPEEXP,  StressIn<S31>)
SA_TRIAXIALITY_LIST(SPX_MAT_DUCTSTRESSRATIOPSEXP,   PlaneStress)
SA_TRIAXIALITY_LIST(SPX_MAT_DUCTSTRESSRATIOBEAMEXP, BeamStress)
SA_TRIAXIALITY_LIST(SPX_MAT_DUCTSTRESSRATIOUNIEXP,  AxialStress)
SA_SHEAR_RATIO_LIST(SPX_MAT_SHRSTRESSRATIO3DEXP,    StressIn<S33>)
SA_SHEAR_RATIO_LIST(SPX_MAT_SHRSTRESSRATIOGPEEXP,   StressIn<S31>)
SA_SHEAR_RATIO_LIST(SPX_MAT_SHRSTRESSRATIOPSEXP,    PlaneStress)
SA_SHEAR_RATIO_LIST(SPX_MAT_SHRSTRESSRATIOBEAMEXP,  BeamStress)
SA_SHEAR_RATIO_LIST(SPX_MAT_SHRSTRESSRATIOUNIEXP,   AxialStress)
// clang-format on

SA_KERNEL(SPX_MAT_DUCTSHRFAILUREEXP, (const int32_t* nblock, const int32_t* count, const int32_t* list, double* omega,
                                      const double* strainIncrement, const double* failureStrain)) {
  forList(*nblock, *count, list, [=](auto point, int n) SA_POINT {
    forPoints(n, [=](int i) SA_POINT {
      const int k = point(i);
      omega[k] += strainIncrement[k] / failureStrain[k];
    });
  });
}

SA_KERNEL(SPX_MAT_JCFAILURESTRAIN,
          (const int32_t* nblock, const int32_t* count, const int32_t* list, double* failureStrain, const double* rate,
           const double* triaxiality, const double* temperature, const double* d1, const double* d2, const double* d3,
           const double* d4, const double* d5, const double* melting, const double* transition,
           const double* rateFactor)) {
  constexpr double kFloor = 2.2250738585072014e-306;
  const double c1 = *d1, c2 = *d2, c3 = *d3, c4 = *d4, c5 = *d5, hot = *melting, cold = *transition;
  const double perReference = *rateFactor, range = hot == cold ? 1.0 : hot - cold;
  const bool rated = c4 != 0.0;
  forList(*nblock, *count, list, [=](auto point, int n) SA_POINT {
    double e[kScratchPoints], rateTerm[kScratchPoints];
    fetch(point, n, rate, temperature, failureStrain);
    // with the bound first, NaN stays
    forPoints(n, [=, &e](int i) SA_POINT { e[i] = vm::expBelow(vm::min(40.0, -c3 * triaxiality[point(i)])); });
    if (rated)
      forPoints(n, [=, &rateTerm](int i) SA_POINT {
        rateTerm[i] = 1.0 + c4 * vm::logAbove(vm::max(1.0, rate[point(i)] * perReference));
      });
    else
      forPoints(n, [=, &rateTerm](int i) SA_POINT { rateTerm[i] = 1.0; });
    forPoints(n, [=, &e, &rateTerm](int i) SA_POINT {
      const int k = point(i);
      const double T = temperature[k], between = (T - cold) / range;
      const double t = vm::select(T <= cold, 0.0, vm::select(T >= hot, 1.0, between));
      failureStrain[k] = vm::max(kFloor, (c1 + c2 * e[i]) * rateTerm[i] * (1.0 + c5 * t));
    });
  });
}

SA_KERNEL(SPX_MAT_JCSHRFAILEXP, (const int32_t* nblock, const double* properties, const double* x, const double* rate,
                                 const double* y, double* rStrain)) {
  if (*nblock < 1) return;
  const double P8 = properties[7], P9 = properties[8], P10 = properties[9], P11 = properties[10];
  const double P12 = properties[11], P13 = properties[12];
  forPieces(*nblock, [=](int start, int n) SA_POINT {
    double L[kScratchPoints], e[kScratchPoints];
    fetch(n, x + start, y + start, rStrain + start);
    forPoints(n, [=, &L](int i) SA_POINT { L[i] = vm::logAbove(vm::max(1.0, rate[start + i] * P8)); });
    forPoints(n, [=, &e](int i) SA_POINT { e[i] = vm::expBelow(-vm::abs(P11 * x[start + i])); });
    forPoints(n, [=, &L, &e](int i) SA_POINT {
      const double scale = 1.0 + P12 * L[i], heat = 1.0 + P13 * y[start + i];
      const double a = P9 * scale * heat, b = P10 * scale * heat, k = P11 * x[start + i];
      const double above = b + a * e[i], below = a + b * e[i];
      // without b the exponential cancels, also where its product with a has underflowed: the limit
      const bool negative = k < 0.0, vanished = b == 0.0 && vm::abs(above) < vm::kSmallestNormal;
      const double numerator = vm::select(negative || vanished, 1.0, e[i]);
      const double denominator = vm::select(negative, below, vm::select(vanished, a, above));
      rStrain[start + i] = vm::select(negative && below <= vm::kSmallestNormal, 0.0, numerator / denominator);
    });
  });
}

#undef SA_TRIAXIALITY
#undef SA_TRIAXIALITY_LIST
#undef SA_SHEAR_RATIO_LIST

} // namespace sa
