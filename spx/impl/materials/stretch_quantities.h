// What the kernels of rubber and foam in the principal stretches compute, for any number of terms.
#pragma once

#include "spx/impl/materials/stretch_terms.h"

namespace sa {

// Principal stretches of point k of the block.
struct PrincipalIn {
  const double* V;
  int64_t n;
  SA_INLINE Stretches operator()(int, int64_t k) const { return {V[k], V[k + n], V[k + 2 * n]}; }
};

template <class Terms>
SA_INLINE void powerEnergy(int nblock, Terms terms, double* energy, double* rJ, const double* V, double* flag) {
  const PrincipalIn stretch{V, nblock};
  forPieces(nblock, [=](int start, int n) SA_POINT {
    StretchLogs w;
    EnergySum s;
    takeLogarithms<Terms>(start, n, stretch, flag, w);
    sumEnergy(start, n, terms, w, s);
    forPoints(n, [=, &w, &s](int i) SA_POINT {
      energy[start + i] = s.U[i];
      rJ[start + i] = 1.0 / w.J[i];
    });
  });
}

// body(i, k, logarithms, sums) for point k of the block, i of its piece.
template <class Terms, class Body>
SA_INLINE void forPowers(int nblock, Terms terms, const double* V, double* flag, Body body) {
  const PrincipalIn stretch{V, nblock};
  forPieces(nblock, [=](int start, int n) SA_POINT {
    StretchLogs w;
    StressSums s;
    takeLogarithms<Terms>(start, n, stretch, flag, w);
    sumStress(start, n, terms, w, s);
    forPoints(n, [=, &w, &s](int i) SA_POINT { body(i, start + i, w, s); });
  });
}

// dU/dlambda_k.
template <class Terms>
SA_INLINE void powerFirst(int nblock, Terms terms, double* dU, const double* V, double* flag) {
  const int64_t N = nblock;
  forPowers(nblock, terms, V, flag, [=](int i, int64_t k, const StretchLogs&, const StressSums& s) SA_POINT {
    dU[k] = PerStretch::of(V[k]).times(s.t1[i]);
    dU[k + N] = PerStretch::of(V[k + N]).times(s.t2[i]);
    dU[k + 2 * N] = PerStretch::of(V[k + 2 * N]).times(s.t3[i]);
  });
}

// d2U/dlambda_k dlambda_l = (D_kl - delta_kl tau_k)/(lambda_k lambda_l).
template <class Terms>
SA_INLINE void powerSecond(int nblock, Terms terms, double* ddU, const double* V, double* flag) {
  const int64_t N = nblock;
  forPowers(nblock, terms, V, flag, [=](int i, int64_t k, const StretchLogs&, const StressSums& s) SA_POINT {
    const Tangent<Terms> D = tangentOf<Terms>(s, i);
    const PerStretch r1 = PerStretch::of(V[k]), r2 = PerStretch::of(V[k + N]), r3 = PerStretch::of(V[k + 2 * N]);
    ddU[k] = (r1 * r1).times(D.direct(D.A1) - s.t1[i]);
    ddU[k + N] = (r2 * r2).times(D.direct(D.A2) - s.t2[i]);
    ddU[k + 2 * N] = (r3 * r3).times(D.direct(D.A3) - s.t3[i]);
    ddU[k + 3 * N] = (r1 * r2).times(D.mixed(D.A1, D.A2));
    ddU[k + 4 * N] = (r2 * r3).times(D.mixed(D.A2, D.A3));
    ddU[k + 5 * N] = (r1 * r3).times(D.mixed(D.A1, D.A3));
  });
}

template <int kFree, class Terms>
SA_INLINE void powerResult(int nblock, Terms terms, const double* V, double* flag, double* residual, double* slope) {
  forPowers(nblock, terms, V, flag, [=](int i, int64_t k, const StretchLogs& w, const StressSums& s) SA_POINT {
    const double J = w.J[i];
    const FreeStress r = freeStress<kFree, Terms>(s, i, J, terms.volumetric(static_cast<int>(k), J));
    residual[k] = r.residual;
    slope[k] = r.slope;
  });
}

template <class Terms>
SA_INLINE void powerModuli(int nblock, Terms terms, const double* V, double* flag, double* bound, double* bulk) {
  const int64_t N = nblock;
  forPowers(nblock, terms, V, flag, [=](int i, int64_t k, const StretchLogs& w, const StressSums& s) SA_POINT {
    const double J = w.J[i];
    const Moduli m =
        principalModuli<Terms>(s, i, {V[k], V[k + N], V[k + 2 * N]}, 1.0 / J, terms.volumetric(static_cast<int>(k), J));
    bound[k] = m.bound;
    bulk[k] = m.bulk;
  });
}

// ---- states with free directions

// What a free stretch begins with: the one given, or the one that keeps the volume where that is no positive number.
SA_INLINE double firstFree(double given, double isochoric) {
  const bool sound = given > 0.0 && given < vm::kInfinity;
  return vm::select(sound, given, isochoric);
}

// finish(start, n, stretches, logarithms, sums) for each piece, when the free stretches are found.
//   kFree 1, plane stress: V the stretch in the plane, free the thickness
//   kFree 2, uniaxial: V the axial stretch, free the lateral one
template <int kFree, class Terms, class Finish>
SA_INLINE void forClosedStates(int nblock, Terms terms, const double* V, double* free, double* flag, Finish finish) {
  const int64_t N = nblock;
  forPieces(nblock, [=](int start, int n) SA_POINT {
    FreeScratch f;
    StretchLogs w;
    StressSums s;
    forPoints(n, [=, &f](int i) SA_POINT {
      const int64_t k = start + i;
      const double v11 = V[k], given = free[k];
      if constexpr (kFree == 1) {
        const double v22 = V[k + N], v12 = V[k + 2 * N];
        const PlaneAngle a = PreciseRotation::angle(v11, v22, v12);
        const double l1 = v11 + a.t * v12, l2 = v22 - a.t * v12;
        f.l1[i] = l1;
        f.l2[i] = l2;
        f.c[i] = a.c;
        f.s[i] = a.s;
        f.isochoric[i] = isochoricThickness(l1 * l2);
      } else {
        f.l1[i] = v11;
        f.isochoric[i] = vm::sqrt(isochoricThickness(v11));
      }
      f.free[i] = firstFree(given, f.isochoric[i]);
    });
    closeState<kFree>(start, n, terms, flag, f, w, s);
    forPoints(n, [=, &f](int i) SA_POINT { free[start + i] = f.free[i]; });
    finish(start, n, f, w, s);
  });
}

// Cauchy stress of a closed state, moduli too where they have a place.
template <int kFree, class Terms>
SA_INLINE void storeClosed(int start, int n, int64_t N, Terms terms, const FreeScratch& f, const StretchLogs& w,
                           const StressSums& s, double* stress, double* bound, double* bulk) {
  forPoints(n, [=, &f, &w, &s](int i) SA_POINT {
    const int64_t k = start + i;
    const double J = w.J[i], rJ = 1.0 / J, p1 = rJ * s.t1[i], p2 = rJ * s.t2[i];
    const VolumetricStress v = terms.volumetric(static_cast<int>(k), J);
    if constexpr (kFree == 1) {
      const double c = f.c[i], sine = f.s[i];
      stress[k] = c * c * p1 + sine * sine * p2 + v.p;
      stress[k + N] = sine * sine * p1 + c * c * p2 + v.p;
      stress[k + 2 * N] = c * sine * (p1 - p2);
    } else {
      stress[k] = p1 + v.p;
    }
    if (bound != nullptr) {
      const double free = f.free[i], l2 = kFree == 1 ? f.l2[i] : free;
      const Moduli m = principalModuli<Terms>(s, i, {f.l1[i], l2, free}, rJ, v);
      bound[k] = m.bound;
      bulk[k] = m.bulk;
    }
  });
}

template <int kFree, class Terms>
SA_INLINE void closedStress(int nblock, Terms terms, const double* V, double* free, double* flag, double* stress,
                            double* bound, double* bulk) {
  forClosedStates<kFree>(nblock, terms, V, free, flag,
                         [=](int start, int n, const FreeScratch& f, const StretchLogs& w, const StressSums& s)
                             SA_POINT { storeClosed<kFree>(start, n, nblock, terms, f, w, s, stress, bound, bulk); });
}

} // namespace sa
