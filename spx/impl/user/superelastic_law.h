// The transformation of one point of a superelastic alloy, whatever its dimensions.
#pragma once

#include "spx/impl/user/superelastic.h"

namespace sa::user::alloy {

// F as it depends on xi at given total strain, with |s| = n:s, which is negative where a stress against the strain is left by
// pressure alone: shear (N - eD xi) times the modulus of xi, and the like with the mean strain,
// which makes a polynomial of degree two.
struct Norm {
  double c0, c1, c2;
  SA_INLINE double operator()(double xi) const { return c0 + xi * (c1 + xi * c2); }
};
SA_INLINE Norm operator+(const Norm& a, const Norm& b) { return {a.c0 + b.c0, a.c1 + b.c1, a.c2 + b.c2}; }
// factor (M + dM xi) (strain - part xi)
SA_INLINE Norm normPart(double factor, double M, double dM, double strain, double part) {
  return {factor * M * strain, factor * (dM * strain - M * part), -factor * dM * part};
}

// Limits in terms of F at one temperature, and F at the start of the increment as it stands to them at both temperatures.
struct Limits {
  double startAM, finishAM, startMA, finishMA, beforeAM, beforeMA;
};
SA_INLINE Limits limitsAt(const Superelastic& m, double before, double tempOld, double tempNew) {
  const double factor = kRoot + m.alpha, shiftAM = m.slopeAM * (tempNew - m.T0), shiftMA = m.slopeMA * (tempNew - m.T0);
  return {factor * (m.startAM + shiftAM), factor * (m.finishAM + shiftAM), factor * (m.startMA + shiftMA),
          factor * (m.finishMA + shiftMA),
          // a change of temperature moves the limits; the old F is moved with them
          before + factor * m.slopeAM * (tempNew - tempOld), before + factor * m.slopeMA * (tempNew - tempOld)};
}

// The new fraction, and how it moves with F at fixed xi (for a solution of the strain from the outside).
struct Fraction {
  double xi, perNorm;
};

// The root at which p x^2 + q x + r falls through zero, and minus its derivative there.
SA_INLINE Fraction fallingRoot(double p, double q, double r) {
  const double D = vm::sqrt(vm::max(0.0, q * q - 4.0 * p * r));
  return {2.0 * r / (D - q), D};
}

// The way of a transformation: from F0 and xi0 to its finish, where xi is `end`; how far F had to go at first, and how far it is
// from the finish with all transformed.
struct Way {
  double xi, end, finish, width, left, weight; // weight: |xi0 - end|
  bool isToMartensite;
};

// A straight line from (F0, xi0) to (finish, end): to martensite (1 - x)(finish - F0) = (1 - xi0)(finish - F(x)), to austenite
// x (F0 - finish) = xi0 (F(x) - finish).
struct LinearLaw : Superelastic {
  static constexpr bool kIterates = false;
  explicit LinearLaw(const Superelastic& m) : Superelastic(m) {}
  SA_INLINE Fraction along(const Norm& F, const Way& w) const {
    const Fraction root =
        fallingRoot(w.weight * F.c2, w.weight * F.c1 - w.width, w.weight * (F.c0 - w.finish) + w.end * w.width);
    return {vm::select(w.left > 0.0, vm::max(0.0, vm::min(1.0, root.xi)), w.end),
            vm::select(w.left > 0.0, w.weight / root.perNorm, 0.0)};
  }
};

// Into an exponential, by steps of Newton's method over the points of a piece.
struct ExponentialLaw : Superelastic {
  static constexpr bool kIterates = true;
  explicit ExponentialLaw(const Superelastic& m) : Superelastic(m) {}
};

// The way that a point goes, if the distance is positive: how far F has gone beyond where it begins.  Otherwise it stays.
struct Move {
  Way way;
  double distance, stays;
};
SA_INLINE Move moveOf(const Norm& F, double xi, const Limits& l) {
  const double trial = F(xi);
  const double fromAM = vm::max(l.startAM, l.beforeAM), widthAM = vm::max(0.0, l.finishAM - fromAM);
  const double fromMA = vm::min(l.startMA, l.beforeMA), widthMA = vm::max(0.0, fromMA - l.finishMA);
  // what is left to transform: one of the two at most is positive
  const double toM = vm::select(xi < 1.0, trial - fromAM, 0.0), toA = vm::select(xi > 0.0, fromMA - trial, 0.0);
  const bool isToM = toM > 0.0;
  const double weight = vm::select(isToM, 1.0 - xi, xi), width = vm::select(isToM, widthAM, widthMA);
  const double finish = vm::select(isToM, l.finishAM, l.finishMA), end = vm::select(isToM, 1.0, 0.0);
  const double atEnd = F(end) - finish, left = vm::select(isToM, -atEnd, atEnd);
  const double spoiled = toM + toA; // a NaN moves nowhere, but is no state to stay in
  return {
      {xi, end, finish, width, left, weight, isToM}, vm::max(toM, toA), vm::select(spoiled == spoiled, xi, vm::kNaN)};
}

SA_INLINE Fraction transform(const LinearLaw& m, const Norm& F, double xi, const Limits& l) {
  const Move move = moveOf(F, xi, l);
  const Fraction moved = m.along(F, move.way);
  return {vm::select(move.distance > 0.0, moved.xi, move.stays), vm::select(move.distance > 0.0, moved.perNorm, 0.0)};
}

// The same over the points of a piece, by a law that iterates: those on their way go side by side, until each is there.
struct Ways {
  Lane c0, c1, c2, xi, end, width, left, weight, isToMartensite, isOpen; // of all points; then of those on their way

  // Where the point ends if it is not on its way.
  SA_INLINE double set(int k, const Norm& F, const Move& move) {
    const Way& w = move.way;
    const bool moves = move.distance > 0.0;
    c0[k] = F.c0, c1[k] = F.c1, c2[k] = F.c2;
    xi[k] = w.xi, end[k] = w.end, width[k] = w.width, left[k] = w.left, weight[k] = w.weight;
    isToMartensite[k] = vm::select(w.isToMartensite, 1.0, 0.0);
    isOpen[k] = vm::select(moves & (w.left > 0.0) & (w.width > 0.0), 1.0, 0.0);
    return vm::select(moves, w.end, move.stays);
  }
};
void goWays(const Superelastic& m, int n, Ways& ways, double* xi, double* perNorm);

// The place 0..1 on a straight path of strain where |e0 + t de| + q t is smallest, q = (3 alpha K dTheta - C dT)/(2 G): before
// it F falls to the limit that moves by C dT, behind it F rises.  From c = e0:e0, a = e0:de, b = de:de.
SA_INLINE double smallestNorm(double a, double b, double c, double q) {
  const double determinant = vm::max(0.0, b * c - a * a), rest = b - q * q;
  const double u = -q * vm::sqrt(determinant / vm::select(rest > 0.0, rest, 1.0));
  const double t = (u - a) / vm::select(b > 0.0, b, 1.0);
  // without a place inside, the path is taken in one piece
  return vm::select((rest > 0.0) & (t > 0.0) & (t < 1.0), t, 0.0);
}

} // namespace sa::user::alloy
