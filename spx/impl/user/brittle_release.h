// What the pressure of a brittle point gives back: where release ends, and its work on the way.
#pragma once

#include "spx/impl/user/brittle_point.h"

namespace sa::user {

// A pressure and what bulking adds.
template <class Model>
SA_INLINE double withGrowth(const BrittleScratch& w, int k, double pressure) {
  if constexpr (Model::kBulks)
    return pressure + w.growth[k];
  else
    return pressure;
}

// Where the pressure that release leaves would be that which `constant` takes to zero.  The straight lines of both curves lead
// near it, and Householder's steps of the fourth order to it, between bounds; every fourth halves them, which few points live to
// see.  What can come back is smallest there, so that a place good to 1e-8 leaves no trace in it: the step that leads so far is
// the last.  Mostly it is the first.
template <class Model>
SA_INLINE void findOnWay(const Model& model, int length, const Lane& fraction, const Lane& constant,
                         const Lane& largest, const Lane& mu, double* root) {
  constexpr int kMostSteps = 4 * 54;
  constexpr double kLeast = -0.9;
  const Model m = model;
  Lane low, high, runs;
  struct Place {
    double x, lower, upper, runs;
  };
  const auto stepFrom = [m](double x, double lowOld, double highOld, double f, double c, bool halves) SA_POINT {
    const Curve at = m.mixed(x, f);
    const double value = at.value + c, slope = at.slope, square = slope * slope, bend = value * at.bend;
    const double lower = vm::select(value < 0.0, x, lowOld), upper = vm::select(value > 0.0, x, highOld);
    const double twist = value * (value * at.twist);
    const double next = x - value * (square - bend) / (slope * (square - 2.0 * bend) + twist);
    const double middle = 0.5 * (lower + upper);
    const bool isInside = (next >= lower) & (next <= upper);
    // no corner of the curves between
    const bool isSmooth = (x * next >= 0.0) & ((x - m.mu0) * (next - m.mu0) >= 0.0);
    const bool isLow = vm::abs(value) <= 0.01 * m.K1, isStraight = vm::abs(bend) <= 0.01 * square,
               isEven = vm::abs(twist) <= 5e-5 * (square * slope),
               isLast = isLow & isStraight & isEven & isSmooth & isInside;
    const double far = vm::select(halves, middle, vm::select(isInside, next, middle));
    return Place{vm::select(isLast, next, far), lower, upper,
                 vm::select(isLast, 0.0, vm::select(upper - lower > 1e-15, 1.0, 0.0))};
  };
  forPoints(length, [=, &fraction, &constant, &largest, &mu, &low, &high, &runs](int k) SA_POINT {
    const double f = fraction[k], c = constant[k], most = vm::max(mu[k], largest[k]);
    const Place to = stepFrom(vm::max(kLeast, vm::min(most, m.straightRoot(f, c))), kLeast, most, f, c, false);
    root[k] = to.x;
    low[k] = to.lower;
    high[k] = to.upper;
    runs[k] = to.runs;
  });
  for (int step = 1; step < kMostSteps && isAnySet(length, runs); ++step) {
    const bool halves = step % 4 == 3;
    forPoints(length, [=, &fraction, &constant, &low, &high, &runs](int k) SA_POINT {
      const double x = root[k], ran = runs[k];
      const Place to = stepFrom(x, low[k], high[k], fraction[k], constant[k], halves);
      root[k] = vm::select(ran > 0.0, to.x, x);
      low[k] = to.lower;
      high[k] = to.upper;
      runs[k] = vm::select(ran > 0.0, to.runs, 0.0);
    });
  }
}

// Where release ends: at zero pressure, and where tension reaches its limit, if the point is beyond.
template <class Model>
SA_INLINE void findWayBack(const Model& model, int length, BrittleScratch& w) {
  const Model m = model;
  Lane isCut;
  forPoints(length, [m, &w, &isCut](int k) SA_POINT {
    w.offset[k] = w.offset[k] + withGrowth<Model>(w, k, w.history[k]);
    w.from[k] = w.mu[k];
    isCut[k] = vm::select(withGrowth<Model>(w, k, w.pressure[k]) < -tensionLimit(m, w.damage[k]), 1.0, 0.0);
  });
  findOnWay(m, length, w.fraction, w.offset, w.compaction, w.mu, w.zero);
  int place[kScratchPoints];
  const int count = pack(length, isCut, place);
  if (count > 0) {
    Lane fraction, top, mu, here, from;
    for (int j = 0; j < packedLength(count); ++j) {
      const int k = place[j];
      fraction[j] = w.fraction[k], top[j] = w.compaction[k], mu[j] = w.mu[k];
      here[j] = w.offset[k] + tensionLimit(m, w.damage[k]);
    }
    findOnWay(m, packedLength(count), fraction, here, top, mu, from);
    for (int j = 0; j < count; ++j) w.from[place[j]] = vm::max(mu[j], from[j]);
  }
}

// What the pressure gives back on the way to zero: body(of, ...) with the arguments of the model's functions for it.
template <class Model, class Body>
SA_INLINE auto onRelease(const Model& m, const BrittleScratch& w, int k, Body body) {
  const double limit = tensionLimit(m, w.damage[k]), history = withGrowth<Model>(w, k, w.history[k]);
  if constexpr (Model::kTransforms)
    return body(w.mu[k], Release{w.fraction[k], w.offset[k]}, Way{w.zero[k], w.from[k], w.logZero[k], w.logFrom[k]},
                limit);
  else if constexpr (Model::kCompacts)
    return body(w.mu[k], history, Unloading{w.zero[k], w.modulus[k], w.perModulus[k]}, limit);
  else
    return body(w.mu[k], history, limit);
}
template <bool kNear, class Model>
SA_INLINE void findRecoverable(const Model& model, int length, BrittleScratch& w) {
  const Model m = model;
  if constexpr (Model::kTransforms) // with four energies the logarithms are a pass of their own
    forPoints(length, [&w](int k) SA_POINT {
      const double from = w.from[k], zero = w.zero[k], both = 2.0 + from, bothZero = 2.0 + zero,
                   per = 1.0 / (both * bothZero);
      w.logFrom[k] = logNear<kNear>(from, from * (per * bothZero));
      w.logZero[k] = logNear<kNear>(zero, zero * (per * both));
    });
  forPoints(length, [m, &w](int k) SA_POINT {
    w.recoverable[k] =
        onRelease(m, w, k, [&m](auto... release) SA_POINT { return m.template recoverable<kNear>(release...); });
  });
}
// Pieces without large changes of volume do without the general logarithm, with the same bits either way.
template <class Model>
SA_INLINE void findRecoverable(const Model& model, int length, BrittleScratch& w) {
  const Model m = model;
  double far = 0.0;
#pragma omp simd reduction(+ : far)
  for (int k = 0; k < length; ++k)
    far += onRelease(m, w, k, [&m](auto... release) SA_POINT { return m.isNear(release...); }) ? 0.0 : 1.0;
  if (far == 0.0)
    findRecoverable<true>(m, length, w);
  else
    findRecoverable<false>(m, length, w);
}

} // namespace sa::user
