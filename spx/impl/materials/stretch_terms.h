// Strain energies that are sums of powers of the principal stretches: the isochoric one of rubber and the compressible one of
// foam.  A term of either is worked through in a pass of its own over a piece, so that the many exponentials of a point make
// short bodies.
//
//   rubber   U = sum of 2 mu/alpha^2 (l1^alpha + l2^alpha + l3^alpha - 3),  l = lambda J^(-1/3), and the sum of (J-1)^(2i)/Di
//   foam     U = sum of 2 mu/alpha^2 (l1^alpha + l2^alpha + l3^alpha - 3 + (J^(-alpha beta) - 1)/beta),  l = lambda
//
// Stresses and tangents come as principal values of the Kirchhoff stress tau_k = dU/d(ln lambda_k) and its derivatives
// D_kl = dtau_k/d(ln lambda_l), both without the volumetric energy of rubber.
#pragma once

#include "glo/kernel/kernel.h"
#include "glo/kernel/vmath.h"
#include "glo/tensors/jacobi.h"
#include "spx/impl/materials/hyper_models.h"
#include "spx/impl/materials/hyper_states.h"

#include <type_traits>

namespace sa {

// ---- constants

SA_INLINE void packLane(int n, const int* places, const double* from, double* to) {
  for (int j = 0; j < n; ++j) to[j] = from[places[j]];
}
template <int count>
SA_INLINE void packLists(int n, const int* places, const double* const (&from)[count], const double* (&to)[count],
                         Lane* lanes) {
  for (int t = 0; t < count; ++t) {
    packLane(n, places, from[t], lanes[t]);
    to[t] = lanes[t];
  }
}

template <int terms>
struct RubberTerms {
  static constexpr int kTerms = terms;
  static constexpr bool kFoam = false;
  const double *mu[terms], *alpha[terms];
  const double* rD[terms] = {}; // kernels of the isochoric energy leave them out

  // those of the points from `start` on; those of the points at `places`, side by side in the lanes
  SA_INLINE RubberTerms from(int start) const {
    RubberTerms own;
    for (int t = 0; t < terms; ++t)
      own.mu[t] = mu[t] + start, own.alpha[t] = alpha[t] + start, own.rD[t] = rD[t] + start;
    return own;
  }
  SA_INLINE RubberTerms packed(int n, const int* places, Lane (&lanes)[3 * terms]) const {
    RubberTerms own;
    packLists(n, places, mu, own.mu, lanes);
    packLists(n, places, alpha, own.alpha, lanes + terms);
    packLists(n, places, rD, own.rD, lanes + 2 * terms);
    return own;
  }

  SA_INLINE VolumetricStress volumetric(int k, double J) const {
    const double d = J - 1.0, e = d * d;
    double p = 0.0, slope = 0.0; // by the rule of Horner
#pragma GCC unroll 6
    for (int i = terms; i > 0; --i) {
      const double r = rD[i - 1][k];
      p = i * r + e * p;
      slope = 2 * i * (2 * i - 1) * r + e * slope;
    }
    return {2.0 * d * p, slope};
  }
};
template <int terms>
struct FoamTerms {
  static constexpr int kTerms = terms;
  static constexpr bool kFoam = true;
  const double *mu[terms], *alpha[terms], *beta[terms];

  SA_INLINE FoamTerms from(int start) const {
    FoamTerms own;
    for (int t = 0; t < terms; ++t)
      own.mu[t] = mu[t] + start, own.alpha[t] = alpha[t] + start, own.beta[t] = beta[t] + start;
    return own;
  }
  SA_INLINE FoamTerms packed(int n, const int* places, Lane (&lanes)[3 * terms]) const {
    FoamTerms own;
    packLists(n, places, mu, own.mu, lanes);
    packLists(n, places, alpha, own.alpha, lanes + terms);
    packLists(n, places, beta, own.beta, lanes + 2 * terms);
    return own;
  }
  SA_INLINE VolumetricStress volumetric(int, double) const { return {0.0, 0.0}; }
};

// ---- the stretches of a piece

// For each point the volume ratio, its logarithm (foam), and ln l^2 for the three stretches that enter the powers.
struct StretchLogs {
  double J[kScratchPoints], L[kScratchPoints], guard[kScratchPoints]; // guard: the flag
  double x1[kScratchPoints], x2[kScratchPoints], x3[kScratchPoints];
  double reach; // a bound of |ln l^2| in the piece; infinity where one is no finite number
};

struct Stretches {
  double l1, l2, l3;
};

// A bound of three lists of logarithms of normal numbers: 8, 64, or that of all such.
SA_INLINE double boundOf(int n, const double* x1, const double* x2, const double* x3) {
  uint64_t beyond8 = 0, beyond64 = 0;
#pragma omp simd reduction(| : beyond8, beyond64)
  for (int i = 0; i < n; ++i) {
    const double x = vm::max(vm::max(vm::abs(x1[i]), vm::abs(x2[i])), vm::abs(x3[i]));
    beyond8 |= vm::toBits(x > 8.0 ? 1.0 : 0.0), beyond64 |= vm::toBits(x > 64.0 ? 1.0 : 0.0);
  }
  return beyond64 != 0 ? 745.0 : beyond8 != 0 ? 64.0 : 8.0;
}

// stretch(i, k) gives the stretches of point i of the piece, k of the block.  A product below the smallest normal number sets
// the flag; a flagged point has J = 1 and keeps its stretches.
template <class Terms, class Stretch>
SA_INLINE void takeLogarithms(int start, int n, Stretch stretch, double* flag, StretchLogs& w) {
  forPoints(n, [=, &w](int i) SA_POINT {
    const int k = start + i;
    const Stretches s = stretch(i, k);
    const double product = s.l1 * s.l2 * s.l3, old = flag[k], guard = product < vm::kSmallestNormal ? 1.0 : old;
    flag[k] = guard;
    w.guard[i] = guard;
    w.J[i] = guard + (1.0 - guard) * product;
  });
  if constexpr (Terms::kFoam) {
    forPoints(n, [=, &w](int i) SA_POINT { w.L[i] = w.J[i]; });
    vm::logOfPiece(n, w.L);
    forPoints(n, [=, &w](int i) SA_POINT {
      const Stretches s = stretch(i, start + i);
      w.x1[i] = s.l1 * s.l1;
      w.x2[i] = s.l2 * s.l2;
      w.x3[i] = s.l3 * s.l3;
    });
  } else {
    forPoints(n, [=, &w](int i) SA_POINT { w.L[i] = vm::abs(w.J[i]); });
    const bool plain = vm::logOfPiece(n, w.L);
    const auto isochoric = [=, &w](int i, double factor) SA_POINT {
      const Stretches s = stretch(i, start + i);
      w.x1[i] = s.l1 * s.l1 * factor;
      w.x2[i] = s.l2 * s.l2 * factor;
      w.x3[i] = s.l3 * s.l3 * factor;
    };
    if (plain) // logarithms of at most 710
      forPoints(n, [=, &w](int i) SA_POINT { isochoric(i, vm::expInside(-0.6666666666666666 * w.L[i])); });
    else
      forPoints(n, [=, &w](int i) SA_POINT { isochoric(i, vm::expClamped(-0.6666666666666666 * w.L[i])); });
  }
  const bool plain1 = vm::logOfPiece(n, w.x1), plain2 = vm::logOfPiece(n, w.x2), plain3 = vm::logOfPiece(n, w.x3);
  w.reach = plain1 && plain2 && plain3 ? boundOf(n, w.x1, w.x2, w.x3) : vm::kInfinity;
}

// ---- sums over the terms

// l^alpha from ln l^2; one where the term vanishes, whatever the stretch.  In a piece whose products are known to be small the
// exponential has neither ends nor a stretch without a logarithm.
template <bool kSmall>
SA_INLINE double power(double half, double x) {
  if constexpr (kSmall)
    return vm::expInside(half * x);
  else {
    const double p = vm::expClamped(half * x);
    return vm::select(half * half < vm::kSmallestNormal, 1.0, p);
  }
}
// A factor of zero leaves nothing of a bracket, nor of an infinite one: a stretch of zero has no finite negative power.
template <bool kFinite>
SA_INLINE double scaled(double factor, double bracket) {
  const double product = factor * bracket;
  if constexpr (kFinite)
    return product;
  else
    return vm::select((factor == 0.0) & (vm::abs(bracket) == vm::kInfinity), 0.0, product);
}
SA_INLINE bool haveSmallPowers(int n, const double* alpha, double reach) {
  uint64_t outside = 0;
#pragma omp simd reduction(| : outside)
  for (int i = 0; i < n; ++i) outside |= vm::toBits(vm::abs(0.5 * alpha[i]) * reach <= 708.0 ? 0.0 : 1.0);
  return outside == 0;
}

// Where alpha is small the brackets are differences of powers that nearly meet: 2 mu/alpha^2 times their rounding would be
// noise.  Such terms have a form of their own, whose limit for alpha = 0 is that of the logarithms.
constexpr double kSmallAlpha = 0x1p-6;
SA_INLINE double isSmallTerm(double alpha) { return vm::abs(alpha) < kSmallAlpha ? 1.0 : 0.0; }

// A term whose alpha^2/4 is below the smallest normal number vanishes.
SA_INLINE double termIsOn(double alpha) {
  const double half = 0.5 * alpha;
  return vm::abs(half * half) < vm::kSmallestNormal ? 0.0 : 1.0;
}

struct TermFactors {
  double half, energy, first,
      second; // alpha/2; factors of the brackets of the energy, of tau (0 for a small alpha) and of D
};
SA_INLINE TermFactors termFactors(double mu, double alpha) {
  const double half = 0.5 * alpha, square = half * half, g = isSmallTerm(alpha);
  const double energy = 0.5 * mu / (square + g) * (1.0 - g);
  return {half, energy, energy * alpha, 2.0 * mu * termIsOn(alpha)};
}

SA_INLINE bool anySmallTerm(int n, const double* alpha) {
  uint64_t any = 0;
#pragma omp simd reduction(| : any)
  for (int i = 0; i < n; ++i) any |= vm::toBits(isSmallTerm(alpha[i]));
  return any != 0;
}

// (e^u - 1 - u)/u^2, by the series near 0.
SA_INLINE double remainderOfExp(double u) {
  const bool near = vm::abs(u) < 0.34;
  const double v = near ? 1.0 : u, far = (vm::expm1(v) - v) / (v * v);
  return near ? vm::remainderOfExp(near ? u : 0.0) : far;
}

struct EnergySum {
  double U[kScratchPoints];
};
// tau_k, A_k = the sum of 2 mu l_k^alpha, and b = the sum of 2 mu beta J^(-alpha beta): all that D is made of.
struct StressSums {
  double t1[kScratchPoints], t2[kScratchPoints], t3[kScratchPoints];
  double A1[kScratchPoints], A2[kScratchPoints], A3[kScratchPoints], b[kScratchPoints];
};

// add(i, factors, P1, P2, P3, volume, beta, finite) for each term in turn: powers of the stretches, and whether none of what it
// is given can be infinite; for foam volume is (J^(-alpha beta) - 1)/beta, continuous in beta.  addSmall(term) follows where a point
// of the piece has a small alpha.
template <class Terms, class Add, class AddSmall>
SA_INLINE void forTerms(int start, int n, const Terms& terms, const StretchLogs& w, Add add, AddSmall addSmall) {
  for (int t = 0; t < Terms::kTerms; ++t) {
    const double *mu = terms.mu[t] + start, *alpha = terms.alpha[t] + start;
    double volume[kScratchPoints]; // foam
    if constexpr (Terms::kFoam) {
      const double* beta = terms.beta[t] + start;
      forPoints(n, [=, &w, &volume](int i) SA_POINT {
        const double b = beta[i], g = vm::abs(b) < vm::kSmallestNormal ? 1.0 : 0.0, exponent = alpha[i] * w.L[i];
        volume[i] = vm::expm1(-(exponent * b)) * (1.0 - g) / (b + g) - g * exponent;
      });
    }
    const auto addTerm = [=, &w, &volume](int i, auto small) SA_POINT {
      const TermFactors f = termFactors(mu[i], alpha[i]);
      const double P1 = power<small>(f.half, w.x1[i]), P2 = power<small>(f.half, w.x2[i]),
                   P3 = power<small>(f.half, w.x3[i]);
      if constexpr (Terms::kFoam) // whose volume may be beyond the doubles where the powers are not
        add(i, f, P1, P2, P3, volume[i], terms.beta[t][start + i], std::false_type{});
      else
        add(i, f, P1, P2, P3, 0.0, 0.0, small);
    };
    if (haveSmallPowers(n, alpha, w.reach))
      forPoints(n, [=](int i) SA_POINT { addTerm(i, std::true_type{}); });
    else
      forPoints(n, [=](int i) SA_POINT { addTerm(i, std::false_type{}); });
    if (anySmallTerm(n, alpha)) addSmall(t);
  }
}

// The energy of a term with a small alpha: with u = alpha ln l the bracket is the sum of u, which is ln J in rubber (0) and
// what the volume takes off in foam, and of the remainders of e^u; only a flagged point, whose J is not that of its stretches,
// keeps the former.
template <class Terms>
SA_INLINE void addSmallEnergy(int start, int n, const Terms& terms, int t, const StretchLogs& w, EnergySum& s) {
  const double *mu = terms.mu[t] + start, *alpha = terms.alpha[t] + start, *beta = nullptr;
  if constexpr (Terms::kFoam) beta = terms.beta[t] + start;
  forPoints(n, [=, &w, &s](int i) SA_POINT {
    const double a = alpha[i], x1 = 0.5 * w.x1[i], x2 = 0.5 * w.x2[i], x3 = 0.5 * w.x3[i];
    const auto square = [a](double x) SA_POINT { return x * x * remainderOfExp(a * x); };
    const auto difference = [a](double x) SA_POINT { return vm::expm1(a * x) / a; };
    double bracket = square(x1) + square(x2) + square(x3);
    if constexpr (Terms::kFoam) bracket += beta[i] * (w.L[i] * w.L[i] * remainderOfExp(-(a * w.L[i] * beta[i])));
    const double flagged = (difference(x1) + difference(x2) + difference(x3)) / a;
    const double sum = vm::select(w.guard[i] == 0.0, bracket, flagged);
    const bool isSmall = isSmallTerm(a) * termIsOn(a) != 0.0;
    s.U[i] += vm::select(isSmall, 2.0 * mu[i] * sum, 0.0);
  });
}

template <class Terms>
SA_INLINE void sumEnergy(int start, int n, const Terms& terms, const StretchLogs& w, EnergySum& s) {
  forPoints(n, [=, &s](int i) SA_POINT { s.U[i] = 0.0; });
  forTerms(
      start, n, terms, w,
      [&s](int i, const TermFactors& f, double P1, double P2, double P3, double volume, double, auto finite)
          SA_POINT { s.U[i] += scaled<finite>(f.energy, P1 + P2 + P3 - 3.0 + volume); },
      [=, &terms, &w, &s](int t) SA_POINT { addSmallEnergy(start, n, terms, t, w, s); });
}

// The stresses of a term with a small alpha: (l^alpha - 1)/alpha instead of powers.
template <class Terms>
SA_INLINE void addSmallStress(int start, int n, const Terms& terms, int t, const StretchLogs& w, StressSums& s) {
  const double *mu = terms.mu[t] + start, *alpha = terms.alpha[t] + start, *beta = nullptr;
  if constexpr (Terms::kFoam) beta = terms.beta[t] + start;
  forPoints(n, [=, &w, &s](int i) SA_POINT {
    const double a = alpha[i];
    const auto difference = [a](double x) SA_POINT { return vm::expm1(a * x) / a; };
    const double d1 = difference(0.5 * w.x1[i]), d2 = difference(0.5 * w.x2[i]), d3 = difference(0.5 * w.x3[i]);
    double off = (d1 + d2 + d3) * 0.3333333333333333;
    if constexpr (Terms::kFoam) off = difference(-(w.L[i] * beta[i]));
    const bool isSmall = isSmallTerm(a) * termIsOn(a) != 0.0;
    const double m = 2.0 * mu[i];
    s.t1[i] += vm::select(isSmall, m * (d1 - off), 0.0);
    s.t2[i] += vm::select(isSmall, m * (d2 - off), 0.0);
    s.t3[i] += vm::select(isSmall, m * (d3 - off), 0.0);
  });
}

template <class Terms>
SA_INLINE void sumStress(int start, int n, const Terms& terms, const StretchLogs& w, StressSums& s) {
  forPoints(n, [=, &s](int i) SA_POINT {
    s.t1[i] = s.t2[i] = s.t3[i] = 0.0;
    s.A1[i] = s.A2[i] = s.A3[i] = s.b[i] = 0.0;
  });
  forTerms(
      start, n, terms, w,
      [&s](int i, const TermFactors& f, double P1, double P2, double P3, double volume, double beta, auto finite)
          SA_POINT {
            // foam: what the volume takes off, J^(-alpha beta); rubber: the mean
            const double Q = volume * beta + 1.0, off = Terms::kFoam ? Q : (P1 + P2 + P3) * 0.3333333333333333;
            s.t1[i] += scaled<finite>(f.first, P1 - off);
            s.t2[i] += scaled<finite>(f.first, P2 - off);
            s.t3[i] += scaled<finite>(f.first, P3 - off);
            s.A1[i] += f.second * P1;
            s.A2[i] += f.second * P2;
            s.A3[i] += f.second * P3;
            if constexpr (Terms::kFoam) s.b[i] += f.second * beta * Q;
          },
      [=, &terms, &w, &s](int t) SA_POINT { addSmallStress(start, n, terms, t, w, s); });
}

// D_kk and D_kl of a point.
template <class Terms>
struct Tangent {
  double A1, A2, A3, b;
  SA_INLINE double ninth() const { return (A1 + A2 + A3) * 0.1111111111111111; }
  SA_INLINE double direct(double A) const { return Terms::kFoam ? A + b : A * 0.3333333333333333 + ninth(); }
  SA_INLINE double mixed(double Ak, double Al) const {
    return Terms::kFoam ? b : ninth() - (Ak + Al) * 0.3333333333333333;
  }
};
template <class Terms>
SA_INLINE Tangent<Terms> tangentOf(const StressSums& s, int i) {
  return {s.A1[i], s.A2[i], s.A3[i], s.b[i]};
}

// What a derivative by logarithms of stretches is divided by; nothing is left of one by a stretch of zero, where the powers
// have lost their meaning and a negative one is infinite.
struct PerStretch {
  double r;
  uint64_t kept; // all bits, or none for a stretch of zero

  SA_INLINE static PerStretch of(double lambda) {
    return {1.0 / lambda, vm::abs(lambda) < vm::kSmallestNormal ? uint64_t{0} : ~uint64_t{0}};
  }
  SA_INLINE PerStretch operator*(const PerStretch& other) const { return {r * other.r, kept & other.kept}; }
  SA_INLINE double times(double x) const { return vm::fromBits(vm::toBits(x * r) & kept); }
};

// ---- stress and moduli of a point in the principal axes

struct Moduli {
  double bound, bulk;
};
// The shear term of the tangent between two principal directions, (t1 - t2) coth(x1 - x2) with x = ln lambda; where the
// stretches nearly meet, half the derivative of t1 - t2 with respect to x1 - x2 on either side.
SA_INLINE double shearTerm(double t1, double t2, double l1, double l2, double limit) {
  const double s1 = l1 * l1, s2 = l2 * l2, difference = s1 - s2;
  const bool meet = vm::abs(difference) <= 1e-5 * (s1 + s2);
  const double far = (t1 - t2) * (s1 + s2) / vm::select(meet, 1.0, difference);
  return vm::select(meet, limit, far);
}

// D11, D22, D33, D12, D23, D13 and the stretches, without volumetric energy: the largest of the direct terms, less the mean
// of all nine, and the shear terms; and 3/J times that mean with 3 J (p + dp/dJ).
SA_INLINE Moduli principalModuli(double D11, double D22, double D33, double D12, double D23, double D13, double t1,
                                 double t2, double t3, const Stretches& l, double rJ, const VolumetricStress& v) {
  const double mean = (D11 + D22 + D33 + 2.0 * (D12 + D23 + D13)) * 0.1111111111111111;
  const double direct = vm::max(vm::max(D11, D22), D33) - mean;
  const double shear = vm::max(vm::max(shearTerm(t1, t2, l.l1, l.l2, 0.5 * (D11 + D22) - D12),
                                       shearTerm(t2, t3, l.l2, l.l3, 0.5 * (D22 + D33) - D23)),
                               shearTerm(t1, t3, l.l1, l.l3, 0.5 * (D11 + D33) - D13));
  return {rJ * vm::max(direct, shear), 3.0 * (rJ * mean + (v.p + v.slope) / rJ)};
}
template <class Terms>
SA_INLINE Moduli principalModuli(const StressSums& s, int i, const Stretches& l, double rJ, const VolumetricStress& v) {
  const Tangent<Terms> D = tangentOf<Terms>(s, i);
  return principalModuli(D.direct(D.A1), D.direct(D.A2), D.direct(D.A3), D.mixed(D.A1, D.A2), D.mixed(D.A2, D.A3),
                         D.mixed(D.A1, D.A3), s.t1[i], s.t2[i], s.t3[i], l, rJ, v);
}

// The tensor with the principal values t1, t2, t3 in the axes of point k.
SA_INLINE Sym<S33> inAxes(double t1, double t2, double t3, const double* V, int64_t n, int64_t k) {
  const double x1 = V[k], y1 = V[k + n], z1 = V[k + 2 * n];
  const double x2 = V[k + 3 * n], y2 = V[k + 4 * n], z2 = V[k + 5 * n];
  const double x3 = V[k + 6 * n], y3 = V[k + 7 * n], z3 = V[k + 8 * n];
  return {t1 * x1 * x1 + t2 * x2 * x2 + t3 * x3 * x3, t1 * y1 * y1 + t2 * y2 * y2 + t3 * y3 * y3,
          t1 * z1 * z1 + t2 * z2 * z2 + t3 * z3 * z3, t1 * x1 * y1 + t2 * x2 * y2 + t3 * x3 * y3,
          t1 * y1 * z1 + t2 * y2 * z2 + t3 * y3 * z3, t1 * x1 * z1 + t2 * x2 * z2 + t3 * x3 * z3};
}

// ---- states with free directions

// Residual and slope of the free directions: the Kirchhoff stress there, with that of the volume, and its derivative with
// respect to the logarithm of the free stretch.  kFree is 1 (direction 3) or 2 (2 and 3 alike).
struct FreeStress {
  double residual, slope;
};
template <int kFree, class Terms>
SA_INLINE FreeStress freeStress(const StressSums& s, int i, double J, const VolumetricStress& v) {
  const Tangent<Terms> D = tangentOf<Terms>(s, i);
  const double isochoric = kFree == 1 ? D.direct(D.A3) : D.direct(D.A3) + D.mixed(D.A2, D.A3);
  return {s.t3[i] + J * v.p, isochoric + kFree * J * (v.p + J * v.slope)};
}

// Where a free stretch is sought: the fixed stretches of the points of a piece and the present free ones; the flags on entry,
// which trial stretches must not set; and what the search remembers.
struct FreeScratch {
  double l1[kScratchPoints], l2[kScratchPoints], free[kScratchPoints], moving[kScratchPoints];
  double c[kScratchPoints], s[kScratchPoints]; // axes of the stretch in the plane
  double isochoric[kScratchPoints], flag[kScratchPoints];
  double y[kScratchPoints], low[kScratchPoints], high[kScratchPoints]; // ln of the stretch; in compression, in tension
  double lowNumber[kScratchPoints], highNumber[kScratchPoints];        // 0 where an end is no number, but an overflow
  double last[kScratchPoints], before[kScratchPoints], stride[kScratchPoints]; // lengths of steps
};

// What the search needs of some of the points, side by side.
SA_INLINE void packPoints(int n, const int* places, const FreeScratch& f, FreeScratch& packed) {
  const auto move = [=](const double* from, double* to) SA_POINT { packLane(n, places, from, to); };
  move(f.l1, packed.l1), move(f.l2, packed.l2), move(f.free, packed.free), move(f.moving, packed.moving);
  move(f.isochoric, packed.isochoric), move(f.flag, packed.flag), move(f.y, packed.y);
  move(f.low, packed.low), move(f.high, packed.high);
  move(f.lowNumber, packed.lowNumber), move(f.highNumber, packed.highNumber);
  move(f.last, packed.last), move(f.before, packed.before), move(f.stride, packed.stride);
}

// Steps of Newton's method alone, enough for any rubber from a stretch near its own; then at most as many within a bracket.
constexpr int kNewtonSteps = 20, kBracketedSteps = 300;
constexpr double kMostLogOfStretch = 230.0; // 1e-100 to 1e100

// Newton's method in the logarithm.  What overflows begins anew at the stretch that keeps the volume, once.
SA_INLINE void newtonSteps(int n, FreeScratch& f, const double (&residual)[kScratchPoints],
                           const double (&slope)[kScratchPoints]) {
  forPoints(n, [&](int i) SA_POINT {
    const double r = residual[i], D = slope[i], now = f.free[i], start = f.isochoric[i], moving = f.moving[i];
    // without && and ||: a branch would keep the loop from being vectorised
    const bool isMoving = moving != 0.0, hasResidual = vm::abs(r) < vm::kInfinity,
               hasSlope = vm::abs(D) < vm::kInfinity;
    const bool isNumber = hasResidual & hasSlope;
    const double newton = stretchStep(r, D), step = vm::select(isMoving, newton, 0.0);
    const double next = vm::select(isMoving, now * vm::expClamped(-step), now);
    const bool returns = isMoving & !isNumber, isLong = vm::abs(step) > 1e-8, ends = !returns & !isLong;
    const bool fails = returns & !(now != start);
    f.free[i] = vm::select(fails, vm::kNaN, vm::select(returns, start, next));
    f.moving[i] = vm::select(isMoving & !ends & !fails, 1.0, 0.0);
  });
}

// What is left after that is bracketed: a direction in tension contracts.  Steps double away from the residual until its sign
// turns; between the ends a step of Newton's method counts if it stays inside and is at most half of the last but one,
// otherwise the bracket is halved.  An overflow is an end of the bracket too, but no place to stay: a bracket that shrinks to
// it, like one that does not close, has no solution.
SA_INLINE void beginBrackets(int n, FreeScratch& f) {
  forPoints(n, [&](int i) SA_POINT {
    const double y = vm::log(f.free[i]), bounded = vm::max(-kMostLogOfStretch, vm::min(kMostLogOfStretch, y));
    f.y[i] = bounded;
    f.free[i] = f.moving[i] != 0.0 && y != bounded ? vm::expClamped(bounded) : f.free[i];
    f.low[i] = -vm::kInfinity, f.high[i] = vm::kInfinity;
    f.lowNumber[i] = f.highNumber[i] = 1.0;
    f.last[i] = f.before[i] = vm::kInfinity;
    f.stride[i] = 0.5;
  });
}
SA_INLINE void bracketedSteps(int n, FreeScratch& f, const double (&residual)[kScratchPoints],
                              const double (&slope)[kScratchPoints]) {
  forPoints(n, [&](int i) SA_POINT {
    const double r = residual[i], D = slope[i], y = f.y[i], now = f.free[i], moving = f.moving[i];
    double low = f.low[i], high = f.high[i], lowNumber = f.lowNumber[i], highNumber = f.highNumber[i];
    const bool isNumber = vm::abs(r) < vm::kInfinity && vm::abs(D) < vm::kInfinity;
    // an overflow takes the place of the end that is open, or of the one that overflowed before
    const bool highIsOpen = high == vm::kInfinity || highNumber == 0.0,
               lost = !isNumber && low == -vm::kInfinity && high == vm::kInfinity;
    const bool isLow = isNumber ? r < 0.0 : !lost && !(low != -vm::kInfinity && highIsOpen);
    const bool isHigh = isNumber ? r > 0.0 : !lost && !isLow;
    low = isLow ? y : low, lowNumber = isLow ? (isNumber ? 1.0 : 0.0) : lowNumber;
    high = isHigh ? y : high, highNumber = isHigh ? (isNumber ? 1.0 : 0.0) : highNumber;

    const double stride = f.stride[i], width = high - low;
    const bool isClosed = width < vm::kInfinity, stiff = isNumber && D > vm::kSmallestNormal;
    const double step = stiff ? r / (stiff ? D : 1.0) : vm::kInfinity, inside = y - step;
    const bool newton = stiff && inside > low && inside < high && vm::abs(step) <= 0.5 * f.before[i];
    const double outward = vm::max(-kMostLogOfStretch, vm::min(kMostLogOfStretch, y + (isLow ? stride : -stride)));
    const double middle = 0.5 * (isClosed ? low + high : 0.0);
    const double next = isClosed ? (newton ? inside : middle) : lost ? vm::log(f.isochoric[i]) : outward;

    const bool found = isNumber && (r == 0.0 || (stiff && vm::abs(step) <= 1e-8));
    const bool isNarrow = isClosed && width <= 4e-16 * vm::max(1.0, vm::abs(y)), isMoving = moving != 0.0;
    const bool fails = !found && ((isNarrow && lowNumber * highNumber == 0.0) || (!isClosed && next == y));
    const double length = vm::abs(next - y);
    f.low[i] = low, f.high[i] = high, f.lowNumber[i] = lowNumber, f.highNumber[i] = highNumber;
    f.before[i] = f.last[i], f.last[i] = length;
    f.stride[i] = isClosed ? stride : 2.0 * stride;
    const double to = found ? (r == 0.0 ? y : inside) : next;
    f.y[i] = to;
    f.free[i] = !isMoving ? now : fails ? vm::kNaN : vm::expClamped(to);
    f.moving[i] = isMoving && !found && !isNarrow && !fails ? 1.0 : 0.0;
  });
}

// One round of the search: sums and logarithms at the present stretches, and a step of the points that move.  Leaves in `open`
// the points for which this was not the last: those that still move, and those that are not where they were evaluated.
template <int kFree, class Terms>
SA_INLINE int closingRound(int round, int n, const Terms& terms, double* flag, FreeScratch& f, StretchLogs& w,
                           StressSums& s, int* open) {
  const auto stretch = [&f](int i, int) SA_POINT {
    return Stretches{f.l1[i], kFree == 1 ? f.l2[i] : f.free[i], f.free[i]};
  };
  forPoints(n, [=, &f](int i) SA_POINT { flag[i] = f.flag[i]; });
  takeLogarithms<Terms>(0, n, stretch, flag, w);
  sumStress(0, n, terms, w, s);
  double residual[kScratchPoints], slope[kScratchPoints], evaluated[kScratchPoints];
  forPoints(n, [=, &f, &w, &s, &terms, &residual, &slope, &evaluated](int i) SA_POINT {
    const double J = w.J[i];
    const FreeStress r = freeStress<kFree, Terms>(s, i, J, terms.volumetric(i, J));
    residual[i] = r.residual;
    slope[i] = r.slope;
    evaluated[i] = f.free[i];
  });
  if (round < kNewtonSteps)
    newtonSteps(n, f, residual, slope);
  else if (round == kNewtonSteps)
    beginBrackets(n, f);
  else
    bracketedSteps(n, f, residual, slope);
  if (round == kNewtonSteps + kBracketedSteps)
    forPoints(n, [&f](int i) SA_POINT { f.free[i] = f.moving[i] != 0.0 ? vm::kNaN : f.free[i], f.moving[i] = 0.0; });
  int count = 0;
  for (int i = 0; i < n; ++i) {
    open[count] = i;
    count += f.moving[i] != 0.0 || vm::toBits(f.free[i]) != vm::toBits(evaluated[i]) ? 1 : 0;
  }
  return count;
}

// Free stretches of a piece without stress, each point until its own step is below 1e-8 (the error is then the square of it);
// NaN where there is none.  Leaves sums and logarithms at the result.  When two thirds of the points are there, those that go on
// do so side by side.
template <int kFree, class Terms>
SA_INLINE void closeState(int start, int n, Terms terms, double* flag, FreeScratch& f, StretchLogs& w, StressSums& s) {
  forPoints(n, [=, &f](int i) SA_POINT { f.moving[i] = 1.0, f.flag[i] = flag[start + i]; });
  FreeScratch packed;
  StretchLogs packedLogs;
  StressSums packedSums;
  Lane constants[3 * Terms::kTerms], packedFlags;
  int places[kScratchPoints], open[kScratchPoints];

  FreeScratch* now = &f;
  StretchLogs* logs = &w;
  StressSums* sums = &s;
  double* flags = flag + start;
  Terms own = terms.from(start);
  int count = n;
  for (int round = 0, left = n; left > 0; ++round) {
    left = closingRound<kFree>(round, count, own, flags, *now, *logs, *sums, open);
    if (now != &f || left == 0 || left > n / 3) continue;
    count = left;
    for (int j = 0; j < count; ++j) places[j] = open[j];
    packPoints(count, places, f, packed);
    own = own.packed(count, places, constants);
    now = &packed, logs = &packedLogs, sums = &packedSums, flags = packedFlags;
  }
  if (now == &f) return;
  for (int j = 0; j < count; ++j) {
    const int i = places[j];
    flag[start + i] = packedFlags[j], f.free[i] = packed.free[j];
    w.J[i] = packedLogs.J[j], w.L[i] = packedLogs.L[j], w.guard[i] = packedLogs.guard[j];
    w.x1[i] = packedLogs.x1[j], w.x2[i] = packedLogs.x2[j], w.x3[i] = packedLogs.x3[j];
    s.t1[i] = packedSums.t1[j], s.t2[i] = packedSums.t2[j], s.t3[i] = packedSums.t3[j];
    s.A1[i] = packedSums.A1[j], s.A2[i] = packedSums.A2[j], s.A3[i] = packedSums.A3[j], s.b[i] = packedSums.b[j];
  }
}

} // namespace sa
