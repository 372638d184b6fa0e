// Roots in brackets over the points of a piece, for models whose update has no closed form.
#pragma once

#include "spx/impl/user/frame.h"

namespace sa::user {

// Both ends of the bracket with the values there, which differ in sign; a point whose ends are equal has its root already.
struct Bracket {
  Lane low, high, atLow, atHigh;
  Lane root, atRoot; // the best so far: the place of the smallest value
};

// False position that halves the weight of an end that stays, and every third step the bracket itself, until the value is no
// larger than the tolerance or the bracket has no number inside.  A point that has its root stands still, so that its bits do
// not depend on its neighbours.  evaluate(x, value) gives the values at x for all points.  Every third step halves, so 3 * 54
// steps leave no bracket whatever the function is; ten are usual.
template <class Evaluate>
SA_INLINE void solveBracketed(int n, Bracket& b, double tolerance, Evaluate evaluate) {
  constexpr int kMostSteps = 3 * 54;
  Lane x, value, side, runs;
  forPoints(n, [&](int i) SA_POINT {
    const bool isLow = vm::abs(b.atLow[i]) < vm::abs(b.atHigh[i]);
    b.root[i] = vm::select(isLow, b.low[i], b.high[i]);
    b.atRoot[i] = vm::select(isLow, b.atLow[i], b.atHigh[i]);
    side[i] = 0.0;
  });
  for (int step = 0; step < kMostSteps; ++step) {
    const bool halves = step % 3 == 2;
    forPoints(n, [&, halves](int i) SA_POINT {
      const double low = b.low[i], high = b.high[i], below = b.atLow[i], above = b.atHigh[i];
      const double middle = 0.5 * (low + high), difference = above - below;
      const double secant = (low * above - high * below) / vm::select(difference == 0.0, 1.0, difference);
      const double least = vm::min(low, high), most = vm::max(low, high);
      const bool isInside = (secant > least) & (secant < most);
      x[i] = vm::select(halves, middle, vm::select(isInside, secant, middle));
      const double size = vm::abs(high - low), round = 0x1p-52 * vm::max(vm::abs(low), vm::abs(high));
      const double error = vm::abs(b.atRoot[i]);
      runs[i] = vm::select((error > tolerance) & (size > round), 1.0, 0.0);
    });
    if (!isAnySet(n, runs)) return;
    evaluate(x, value);
    forPoints(n, [&](int i) SA_POINT {
      const double low = b.low[i], high = b.high[i], below = b.atLow[i], above = b.atHigh[i], at = x[i], v = value[i];
      const double lastSide = side[i], root = b.root[i], atRoot = b.atRoot[i];
      const bool moves = runs[i] > 0.0;
      const double size = vm::abs(v), least = vm::abs(atRoot);
      const bool isBest = moves & (size < least);
      b.root[i] = vm::select(isBest, at, root);
      b.atRoot[i] = vm::select(isBest, v, atRoot);
      // the new place takes the end of its sign; the other end, where it stays twice, counts half
      const bool isLow = vm::copysign(1.0, v) * below > 0.0, takesLow = moves & isLow, takesHigh = moves & !isLow;
      b.low[i] = vm::select(takesLow, at, low);
      b.high[i] = vm::select(takesHigh, at, high);
      const double halfBelow = vm::select(takesHigh & (lastSide > 0.0), 0.5 * below, below);
      const double halfAbove = vm::select(takesLow & (lastSide < 0.0), 0.5 * above, above);
      b.atLow[i] = vm::select(takesLow, v, halfBelow);
      b.atHigh[i] = vm::select(takesHigh, v, halfAbove);
      side[i] = vm::select(takesHigh, 1.0, vm::select(takesLow, -1.0, lastSide));
    });
  }
}

} // namespace sa::user
