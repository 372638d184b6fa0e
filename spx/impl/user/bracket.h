// Roots in brackets over the points of a piece, for models whose update has no closed form.
#pragma once

#include "spx/impl/user/frame.h"

namespace sa::user {

// Both ends of the bracket with the values there, which differ in sign; a point whose ends are equal has its root already.
struct Bracket {
  Lane low, high, atLow, atHigh;
  Lane root, atRoot; // the best so far: the place of the smallest value
};

// Inverse quadratic interpolation through both ends and the end before, where it leads inside, else half of the bracket (T. R.
// Chandrupatla, Adv. Eng. Softw. 28 (1997) 145), from a secant on, until the value is no larger than the tolerance or the bracket
// has no number inside.  A point that has its root stands still, so that its bits do not depend on its neighbours.
// evaluate(x, value) gives the values at x for all points.  From the ninth step on every third halves, so that the steps leave no
// bracket whatever the function is; four to six are usual.
template <class Evaluate>
SA_INLINE void solveBracketed(int n, Bracket& b, double tolerance, Evaluate evaluate) {
  constexpr int kFree = 9, kMostSteps = kFree + 3 * 54;
  // the newest end, that on the other side of the root, and the one before; share: of the way from the first to the second
  Lane a, atA, other, atOther, x, value, share, runs;
  forPoints(n, [&](int i) SA_POINT {
    const double low = b.low[i], high = b.high[i], below = b.atLow[i], above = b.atHigh[i];
    const bool isLow = vm::abs(below) < vm::abs(above);
    const double near = vm::select(isLow, low, high), atNear = vm::select(isLow, below, above),
                 atFar = vm::select(isLow, above, below), difference = atNear - atFar;
    b.root[i] = a[i] = near;
    b.atRoot[i] = atA[i] = atNear;
    other[i] = vm::select(isLow, high, low);
    atOther[i] = atFar;
    share[i] = atNear / vm::select(difference == 0.0, 1.0, difference);
  });
  for (int step = 0; step < kMostSteps; ++step) {
    const bool halves = step >= kFree && step % 3 == 2;
    forPoints(n, [&, halves](int i) SA_POINT {
      const double low = a[i], high = other[i], t = share[i], error = vm::abs(b.atRoot[i]);
      const double size = vm::abs(high - low), round = 0x1p-52 * vm::max(vm::abs(low), vm::abs(high));
      const double at = low + t * (high - low), middle = 0.5 * (low + high);
      const bool isInside = (t > 0.0) & (t < 1.0) & (at != low) & (at != high);
      x[i] = vm::select(halves, middle, vm::select(isInside, at, middle));
      runs[i] = vm::select((error > tolerance) & (size > round), 1.0, 0.0);
    });
    if (!isAnySet(n, runs)) return;
    evaluate(x, value);
    forPoints(n, [&](int i) SA_POINT {
      const double at = x[i], v = value[i], oldA = a[i], atOldA = atA[i], oldOther = other[i], atOldOther = atOther[i];
      const double root = b.root[i], atRoot = b.atRoot[i];
      const bool moves = runs[i] > 0.0, isBest = moves & (vm::abs(v) < vm::abs(atRoot));
      b.root[i] = vm::select(isBest, at, root);
      b.atRoot[i] = vm::select(isBest, v, atRoot);
      // the new place takes the end of its sign
      const bool isOnItsSide = vm::copysign(1.0, v) * atOldA > 0.0;
      const double before = vm::select(isOnItsSide, oldA, oldOther),
                   atBefore = vm::select(isOnItsSide, atOldA, atOldOther);
      const double across = vm::select(isOnItsSide, oldOther, oldA),
                   atAcross = vm::select(isOnItsSide, atOldOther, atOldA);
      a[i] = vm::select(moves, at, oldA);
      atA[i] = vm::select(moves, v, atOldA);
      other[i] = vm::select(moves, across, oldOther);
      atOther[i] = vm::select(moves, atAcross, atOldOther);
      // one division for all
      const double d1 = before - across, d2 = atBefore - atAcross, d3 = atAcross - v, d4 = atBefore - v,
                   d5 = across - at;
      const double first = d1 * d2, second = d3 * d4 * d5, per = 1.0 / (first * second), perFirst = per * second,
                   perSecond = per * first;
      const double part = -d5 * d2 * perFirst, atPart = -d3 * d1 * perFirst;
      const double t =
          v * (d1 * perFirst) * ((before - at) * atAcross * (d3 * perSecond) - atBefore * (d4 * d5 * perSecond));
      const bool isSmooth = (atPart * atPart < part) & ((1.0 - atPart) * (1.0 - atPart) < 1.0 - part);
      share[i] = vm::select(isSmooth, t, 0.5);
    });
  }
}

} // namespace sa::user
