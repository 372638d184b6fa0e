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
  explicit LinearLaw(const Superelastic& m) : Superelastic(m) {}
  SA_INLINE Fraction along(const Norm& F, const Way& w) const {
    const Fraction root =
        fallingRoot(w.weight * F.c2, w.weight * F.c1 - w.width, w.weight * (F.c0 - w.finish) + w.end * w.width);
    return {vm::select(w.left > 0.0, vm::max(0.0, vm::min(1.0, root.xi)), w.end),
            vm::select(w.left > 0.0, w.weight / root.perNorm, 0.0)};
  }
  static SA_INLINE double choose(bool condition, double a, double b) { return vm::select(condition, a, b); }
};

// As often, written out: a loop inside would keep that over the points from being vectorised.
template <int kTimes, class Step>
SA_INLINE void repeat(Step step) {
  if constexpr (kTimes > 0) {
    step();
    repeat<kTimes - 1>(step);
  }
}

// With the rest y = |x - end|/|xi0 - end| and the distance u = |finish - F(x)|, u0 at F0: ln y = speed (1/u0 - 1/u).  In
// t = ln y this is u(t) = speed/(speed/u0 - t), which both sides bend the same way where F is nearly straight in xi: Newton's
// steps from above come down to the root, from where one of the two sides alone would put it.  Where they would leave the
// bounds there is a bisection.
struct ExponentialLaw : Superelastic {
  static constexpr int kSteps = 12;
  explicit ExponentialLaw(const Superelastic& m) : Superelastic(m) {}
  SA_INLINE Fraction along(const Norm& F, const Way& w) const {
    const bool isInside = (w.left > 0.0) & (w.width > 0.0);
    const double speed = choose(w.isToMartensite, speedAM, speedMA), side = choose(w.isToMartensite, 1.0, -1.0);
    const double u1 = choose(isInside, w.left, 1.0), start = speed / choose(isInside, w.width, 1.0);
    // u = u1 + y (m1 + y m2), falling in y
    const double whole = w.xi - w.end, m1 = -side * whole * (F.c1 + 2.0 * F.c2 * w.end),
                 m2 = -side * F.c2 * (whole * whole);
    const double steep = -(m1 + vm::max(0.0, m2)), ratio = u1 / vm::select(steep > u1, steep, u1);
    const double least = -745.0;
    double low = least, high = 0.0;
    double t = vm::max(least, vm::min(vm::min(0.0, start - speed / u1), vm::logPositive(vm::max(1e-300, ratio))));
    repeat<kSteps>([&]() SA_POINT {
      const double y = vm::exp(t), per = 1.0 / (start - t);
      const double error = (u1 + y * (m1 + y * m2)) - speed * per,
                   slope = y * (m1 + 2.0 * y * m2) - speed * (per * per);
      low = vm::select(error > 0.0, t, low);
      high = vm::select(error < 0.0, t, high);
      const double next = t - error / slope;
      t = vm::select((next >= low) & (next <= high), next, 0.5 * (low + high));
    });
    const double y = vm::exp(t), x = w.end + whole * y, rest = speed * (w.weight * y), u = u1 + y * (m1 + y * m2);
    return {choose(isInside, x, w.end), choose(isInside, rest / (u * u - rest * (F.c1 + 2.0 * F.c2 * x)), 0.0)};
  }
  // By factors: behind a condition the compiler would put all steps, and not vectorise them.  Both are finite.
  static SA_INLINE double choose(bool condition, double a, double b) {
    const double first = condition ? 1.0 : 0.0;
    return first * a + (1.0 - first) * b;
  }
};

template <class Law>
SA_INLINE Fraction transform(const Law& m, const Norm& F, double xi, const Limits& l) {
  const double trial = F(xi);
  const double fromAM = vm::max(l.startAM, l.beforeAM), widthAM = vm::max(0.0, l.finishAM - fromAM);
  const double fromMA = vm::min(l.startMA, l.beforeMA), widthMA = vm::max(0.0, fromMA - l.finishMA);
  // how far F has gone beyond where each begins, and what is left to transform: one of the two at most is positive
  const double toM = vm::select(xi < 1.0, trial - fromAM, 0.0), toA = vm::select(xi > 0.0, fromMA - trial, 0.0);
  const bool isToM = toM > 0.0;
  const double weight = Law::choose(isToM, 1.0 - xi, xi), width = Law::choose(isToM, widthAM, widthMA);
  const double finish = Law::choose(isToM, l.finishAM, l.finishMA), end = Law::choose(isToM, 1.0, 0.0);
  const double atEnd = F(end) - finish, left = Law::choose(isToM, -atEnd, atEnd);
  const Fraction moved = m.along(F, {xi, end, finish, width, left, weight, isToM});
  const double moves = vm::max(toM, toA), spoiled = toM + toA; // a NaN moves nowhere, but is no state to stay in
  const double stays = vm::select(spoiled == spoiled, xi, vm::kNaN);
  return {Law::choose(moves > 0.0, moved.xi, stays), Law::choose(moves > 0.0, moved.perNorm, 0.0)};
}

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
