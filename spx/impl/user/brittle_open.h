// Brittle points that the return to the surfaces leaves open: they break, or damage and pressure move each other.
#pragma once

#include "spx/impl/user/brittle_point.h"

namespace sa::user {

// Points that the return leaves open, side by side.
struct alignas(64) OpenPoints {
  Lane trial, factor, kind, damage, G3ef, intact, fractured, pressure, arm;
  Lane before, atMost;                   // strength at the damage before; what is left over at D = 1
  Lane x, low, high, runs;               // of the iteration
  Lane p, rise, perDamage, slope, error; // between loops: short chains, so that several vectors overlap
  Lane q, plasticStrain, end, growth;    // results; end: the damage
  int count, place[kScratchPoints];

  SA_INLINE double drop(int j) const { return intact[j] - fractured[j]; }
};

template <class Model>
SA_INLINE void gatherOpen(const Block& b, const Model& m, int start, const BrittleScratch& w, OpenPoints& a) {
  for (int j = 0; j < packedLength(a.count); ++j) {
    const int k = a.place[j];
    a.trial[j] = w.trial[k], a.factor[j] = w.rate[k], a.damage[j] = damageBefore<Model>(b, start, w, k);
    if constexpr (Model::kGradual) a.kind[j] = w.open[k], a.G3ef[j] = 3.0 * m.G * w.failureStrain[k];
    if constexpr (Model::kBulks)
      a.intact[j] = w.intact[k], a.fractured[j] = w.fractured[k], a.pressure[j] = w.pressure[k],
      a.arm[j] = armAt(m, w, k);
  }
}
template <class Model>
SA_INLINE void scatterOpen(const OpenPoints& a, int j, BrittleScratch& w) {
  const int k = a.place[j];
  w.q[k] = a.q[j], w.plasticStrain[k] = a.plasticStrain[j], w.damage[k] = a.end[j];
  if constexpr (Model::kBulks) w.growth[k] = a.growth[j];
}

// The points as if they broke: bulking takes what the whole fall sets free, and the strength is the fractured one at the pressure
// then.  What does break has these results; where no more of the trial stress is left than damage takes, `runs` is 1.
template <class Model>
SA_INLINE void breakOpen(const Model& model, OpenPoints& open, SurfaceTerms& terms) {
  const Model m = model;
  OpenPoints& a = open;
  forPack(a.count, [=, &a](int j) SA_POINT {
    a.p[j] = 0.0; // at the limit of tension that is left
    if constexpr (Model::kBulks) {
      const double before = strengthAt(m, {a.intact[j], a.fractured[j], 0.0}, a.damage[j]),
                   left = vm::max(m.none, a.fractured[j]);
      const double rise = bulking(a.arm[j], m.beta * m.K1, (before - left) * (before + left) * (0.5 * m.perG3));
      a.p[j] = vm::max(m.none, a.pressure[j] + rise);
      a.before[j] = before;
      a.growth[j] = rise;
    }
  });
  m.findBroken(packedLength(a.count), a.p, terms);
  forPack(a.count, [m, &a, &terms](int j) SA_POINT {
    const double trial = a.trial[j], D = a.damage[j];
    const double full = brokenStrength(m, m.broken(a.p[j], a.factor[j], terms.broken[j]));
    double q = vm::min(trial, full), plasticStrain = (trial - q) * m.perG3, end = 1.0;
    if constexpr (Model::kGradual) {
      const double G3ef = a.G3ef[j], atMost = full + G3ef * (1.0 - D) - trial;
      const bool breaks = (a.kind[j] == kBroken) | (atMost <= 0.0);
      a.atMost[j] = atMost;
      a.runs[j] = vm::select(breaks, 0.0, 1.0);
      if constexpr (!Model::kBulks) { // what does not break ends at the limit of tension, where it has no strength
        q = vm::select(breaks, q, 0.0);
        plasticStrain = vm::select(breaks, plasticStrain, trial * m.perG3);
        end = vm::select(breaks, 1.0, vm::min(1.0, D + trial / G3ef));
      }
    }
    a.q[j] = q;
    a.plasticStrain[j] = plasticStrain;
    a.end[j] = end;
  });
}

// What does not break: the growth d of damage solves
//   strength(P(d), D + d) + 3 G ef d = trial stress,
// P(d) with the bulking of what the damage takes at the pressure before it, or at the limit of tension that it leaves.  The
// strength grows with the pressure and the pressure with d, so that the left side rises and there is one solution.

// Only the points that go on.
SA_INLINE void keepRunning(OpenPoints& a) {
  int count = 0;
  const auto move = [&a](int from, int to) SA_POINT {
    a.trial[to] = a.trial[from], a.factor[to] = a.factor[from], a.damage[to] = a.damage[from];
    a.G3ef[to] = a.G3ef[from], a.intact[to] = a.intact[from], a.fractured[to] = a.fractured[from];
    a.pressure[to] = a.pressure[from], a.arm[to] = a.arm[from], a.before[to] = a.before[from];
    a.atMost[to] = a.atMost[from], a.x[to] = a.x[from], a.low[to] = a.low[from], a.high[to] = a.high[from];
  };
  for (int j = 0; j < a.count; ++j) {
    if (!(a.runs[j] > 0.0)) continue;
    move(j, count);
    a.place[count++] = a.place[j];
  }
  for (int j = count; count > 0 && j < packedLength(count); ++j) move(count - 1, j);
  a.count = count;
}

// Where the iteration begins, with strengths near those at the pressure before, which need no power: a parabola through d = 0
// with the slope there and 1 - D, then a cubic through its root too, then Newton's step from the root of that.  For pressures that
// rise by a tenth it is the solution to 1e-6.  What leaves the range begins on the straight line.
template <class Model>
SA_INLINE void beginDamage(const Model& model, OpenPoints& open) {
  const Model m = model;
  OpenPoints& a = open;
  // left over at d, bulking as a difference, which a beginning may be; and its slope
  struct Rest {
    double error, slope;
  };
  const auto restOf = [m, &a](int j, double d) SA_POINT {
    const double arm = a.arm[j], left = vm::max(0.0, a.before[j] - a.drop(j) * d), betaK1 = m.beta * m.K1;
    const double end = vm::sqrt(arm * arm + betaK1 * m.perG3 * ((a.before[j] - left) * (a.before[j] + left)));
    const bool isCompressed = arm >= 0.0;
    const auto near = m.near({a.intact[j], a.fractured[j], 0.0}, a.rise[j], a.perDamage[j])
                          .at(vm::select(isCompressed, end - arm, 0.0), a.damage[j] + d, end);
    const double perDamage = vm::select(isCompressed, betaK1 * m.perG3 * (left * a.drop(j)) * near.per, 0.0);
    return Rest{vm::max(0.0, near.strength) + a.G3ef[j] * d - a.trial[j],
                a.G3ef[j] - near.drop + near.slope * perDamage};
  };
  forPack(a.count, [m, &a](int j) SA_POINT {
    const double shifted = m.aboveTension(a.pressure[j]), pressure = m.aboveZero(a.pressure[j]);
    const double per = 1.0 / (shifted * pressure);
    a.rise[j] = pressure * per;
    a.perDamage[j] = shifted * per;
  });
  forPack(a.count, [&a, restOf](int j) SA_POINT {
    const double most = 1.0 - a.damage[j], atZero = a.before[j] - a.trial[j];
    const double slope = restOf(j, 0.0).slope, linear = slope * most, bend = (a.atMost[j] - atZero) - linear;
    a.slope[j] = slope;
    a.low[j] = 0.0;
    a.high[j] = most;
    a.x[j] = -2.0 * atZero * most / (linear + vm::sqrt(vm::max(0.0, linear * linear - 4.0 * bend * atZero)));
  });
  forPack(a.count, [&a, restOf](int j) SA_POINT { a.error[j] = restOf(j, a.x[j]).error; });
  forPack(a.count, [&a](int j) SA_POINT {
    const double most = a.high[j], atZero = a.before[j] - a.trial[j], slope = a.slope[j], root = a.x[j];
    // d^2 (b + c (d - root)) is the rest at root and at 1 - D
    const double atMost = a.atMost[j], restAtMost = (atMost - atZero) - slope * most,
                 rest = (a.error[j] - atZero) - slope * root;
    const double root2 = root * root, most2 = most * most, gap = most - root, per = 1.0 / (root2 * most2 * gap);
    const double b = rest * (most2 * gap * per), c = (restAtMost * root2 - rest * most2) * per;
    double d = root;
    for (int k = 0; k < 2; ++k)
      d -= (atZero + d * (slope + d * (b + c * (d - root)))) / (slope + d * (2.0 * b + c * (3.0 * d - 2.0 * root)));
    const double straight = most * (-atZero / (atMost - atZero)),
                 simple = vm::select((root > 0.0) & (root < most), root, straight);
    a.x[j] = vm::select((d > 0.0) & (d < most), d, simple);
  });
  forPack(a.count, [&a, restOf](int j) SA_POINT {
    const double d = a.x[j];
    const Rest rest = restOf(j, d);
    const double next = d - rest.error / rest.slope;
    a.x[j] = vm::select((next > 0.0) & (next < a.high[j]), next, d);
  });
}

// A step of the iteration: a parabola through d = 0 with the value and the slope of the moment gives the next d, between bounds.
template <class Model>
SA_INLINE void stepDamage(const Model& model, OpenPoints& open, SurfaceTerms& terms) {
  const Model m = model;
  OpenPoints& a = open;
  forPack(a.count, [m, &a](int j) SA_POINT { // as `bulking`, with its slope by the same division
    const double arm = a.arm[j], left = vm::max(0.0, a.before[j] - a.drop(j) * a.x[j]), betaK1 = m.beta * m.K1;
    const double gain = betaK1 * ((a.before[j] - left) * (a.before[j] + left) * m.perG3);
    const double end = vm::sqrt(arm * arm + gain), per = 1.0 / (end * (arm + end) + 1e-300);
    const double limit = -m.T * (1.0 - (a.damage[j] + a.x[j])),
                 free = a.pressure[j] + vm::select(arm >= 0.0, gain * end * per, 0.0);
    const double perDamage = vm::select(arm >= 0.0, betaK1 * m.perG3 * left * a.drop(j) * ((arm + end) * per), 0.0);
    a.p[j] = vm::max(limit, free);
    a.perDamage[j] = vm::select(free > limit, perDamage, m.T);
  });
  m.template findTerms<true>(packedLength(a.count), a.p, terms);
  forPack(a.count, [m, &a, &terms](int j) SA_POINT {
    const double d = a.x[j], D = a.damage[j] + d, p = a.p[j];
    const Strength s = m.template strength<true>(p, a.factor[j], terms[j]);
    const StrengthSlopes ds = m.slopes(p, s);
    const double fall = s.intact - s.fractured, line = s.intact - D * fall, q = strengthAt(m, s, D);
    const double withPressure = (ds.intact - D * (ds.intact - ds.fractured)) * a.perDamage[j];
    a.error[j] = q + a.G3ef[j] * d - a.trial[j];
    a.slope[j] = a.G3ef[j] + vm::select(q == line, withPressure - fall, 0.0);
  });
  forPack(a.count, [&a](int j) SA_POINT {
    const double d = a.x[j], error = a.error[j], lowOld = a.low[j], highOld = a.high[j];
    const double lower = vm::select(error < 0.0, d, lowOld), upper = vm::select(error > 0.0, d, highOld);
    // of the parabola all terms are those at d
    const double atZero = a.before[j] - a.trial[j], linear = a.slope[j] * d, bend = linear - (error - atZero),
                 linearAtZero = linear - 2.0 * bend;
    const double root =
        -2.0 * atZero * d / (linearAtZero + vm::sqrt(vm::max(0.0, linearAtZero * linearAtZero - 4.0 * bend * atZero)));
    const double next = vm::select((root >= lower) & (root <= upper), root, 0.5 * (lower + upper));
    a.x[j] = next;
    a.low[j] = lower;
    a.high[j] = upper;
    a.runs[j] = vm::select(vm::abs(next - d) > 2e-6 * next, 1.0, 0.0);
  });
  forPack(a.count, [m, &a](int j) SA_POINT {
    const double d = a.x[j], trial = a.trial[j], ef = a.G3ef[j] * m.perG3,
                 left = vm::max(0.0, a.before[j] - a.drop(j) * d);
    a.growth[j] = bulking(a.arm[j], m.beta * m.K1, (a.before[j] - left) * (a.before[j] + left) * (0.5 * m.perG3));
    a.end[j] = a.damage[j] + d;
    a.q[j] = trial - a.G3ef[j] * d;
    a.plasticStrain[j] = d * ef;
  });
}

// Steps, until no point goes on; after each those that are there leave the others.
constexpr int kDamageRounds = 60;
template <class Model>
SA_INLINE void settleOpen(const Block& b, const Model& model, int start, int length, BrittleScratch& w) {
  const Model m = model;
  OpenPoints a;
  a.count = pack(length, w.open, a.place);
  if (a.count == 0) return;
  gatherOpen(b, m, start, w, a);
  breakOpen(m, a, w.terms);
  for (int j = 0; j < a.count; ++j) scatterOpen<Model>(a, j, w); // overwritten where the point does not break
  if constexpr (Model::kGradual && Model::kBulks) {
    keepRunning(a);
    if (a.count > 0) beginDamage(m, a);
    for (int round = 0; round < kDamageRounds && a.count > 0; ++round) {
      stepDamage(m, a, w.terms);
      for (int j = 0; j < a.count; ++j) scatterOpen<Model>(a, j, w);
      keepRunning(a);
    }
  }
}

} // namespace sa::user
