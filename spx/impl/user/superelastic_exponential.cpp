// The superelastic alloy by the exponential law.
#include "spx/impl/user/superelastic_run.h"

namespace sa::user::alloy {
namespace {

// With the rest y = |x - end|/|xi0 - end| and the distance u = |finish - F(x)|, u0 at F0: ln y = speed (1/u0 - 1/u).  In
// t = ln y this is u(t) = speed/(speed/u0 - t), which both sides bend the same way where F is nearly straight in xi: Newton's
// steps from above come down to the root, from where one of the two sides alone would put it.  Where they would leave the
// bounds there is a bisection.
struct RestEquation {
  double u1, m1, m2;   // u = u1 + y (m1 + y m2), falling in y
  double speed, start; // speed/u0
  double t, low, high;

  SA_INLINE double distance(double y) const { return u1 + y * (m1 + y * m2); }
  // One step; whether it was a last one: what Newton's steps leave is the square of what they went.
  SA_INLINE bool improve() {
    const double y = vm::exp(t), per = 1.0 / (start - t);
    const double error = distance(y) - speed * per, slope = y * (m1 + 2.0 * y * m2) - speed * (per * per);
    low = vm::select(error > 0.0, t, low);
    high = vm::select(error < 0.0, t, high);
    const double next = t - error / slope;
    const bool isInside = (next >= low) & (next <= high);
    const bool isLast = isInside & (vm::abs(next - t) <= 1e-8 * vm::min(1.0, start - t));
    t = vm::select(isInside, next, 0.5 * (low + high));
    return isLast;
  }
};
SA_INLINE RestEquation equation(const Superelastic& m, const Norm& F, const Way& w) {
  const double speed = vm::select(w.isToMartensite, m.speedAM, m.speedMA),
               side = vm::select(w.isToMartensite, 1.0, -1.0);
  const double u1 = w.left, start = speed / w.width;
  const double whole = w.xi - w.end, m1 = -side * whole * (F.c1 + 2.0 * F.c2 * w.end),
               m2 = -side * F.c2 * (whole * whole);
  const double steep = -(m1 + vm::max(0.0, m2)), ratio = u1 / vm::select(steep > u1, steep, u1);
  const double least = -745.0;
  const double t = vm::max(least, vm::min(vm::min(0.0, start - speed / u1), vm::logPositive(vm::max(1e-300, ratio))));
  return {u1, m1, m2, speed, start, t, least, 0.0};
}
SA_INLINE Fraction reached(const Norm& F, const Way& w, const RestEquation& q) {
  const double y = vm::exp(q.t), x = w.end + (w.xi - w.end) * y, rest = q.speed * (w.weight * y), u = q.distance(y);
  return {x, rest / (u * u - rest * (F.c1 + 2.0 * F.c2 * x))};
}

SA_INLINE void followWays(const Superelastic& model, int n, Ways& ways, double* xi, double* perNorm) {
  constexpr int kMostSteps = 100; // five are usual
  const Superelastic m = model;
  int place[kScratchPoints];
  const int open = pack(n, ways.isOpen, place), count = packedLength(open);
  if (open == 0) return;
  Lane u1, m1, m2, speed, start, t, low, high, runs, to, toPerNorm;
  for (Lane* lane :
       {&ways.c0, &ways.c1, &ways.c2, &ways.xi, &ways.end, &ways.width, &ways.left, &ways.weight, &ways.isToMartensite})
    for (int j = 0; j < count; ++j) (*lane)[j] = (*lane)[place[j]];
  const auto wayOf = [&ways](int j) SA_POINT {
    return Way{ways.xi[j], ways.end[j], 0.0, ways.width[j], ways.left[j], ways.weight[j], ways.isToMartensite[j] > 0.0};
  };
  const auto normOf = [&ways](int j) SA_POINT { return Norm{ways.c0[j], ways.c1[j], ways.c2[j]}; };
  forPoints(count, [&](int j) SA_POINT {
    const RestEquation q = equation(m, normOf(j), wayOf(j));
    u1[j] = q.u1, m1[j] = q.m1, m2[j] = q.m2, speed[j] = q.speed, start[j] = q.start;
    t[j] = q.t, low[j] = q.low, high[j] = q.high, runs[j] = 1.0;
  });
  for (int step = 0; step < kMostSteps && isAnySet(count, runs); ++step)
    forPoints(count, [&](int j) SA_POINT {
      const double before = t[j], ran = runs[j];
      RestEquation q{u1[j], m1[j], m2[j], speed[j], start[j], before, low[j], high[j]};
      const bool isLast = q.improve();
      t[j] = vm::select(ran > 0.0, q.t, before);
      low[j] = q.low, high[j] = q.high;
      runs[j] = vm::select((ran > 0.0) & !isLast, 1.0, 0.0);
    });
  forPoints(count, [&](int j) SA_POINT {
    const RestEquation q{u1[j], m1[j], m2[j], speed[j], start[j], t[j], low[j], high[j]};
    const Fraction f = reached(normOf(j), wayOf(j), q);
    to[j] = f.xi, toPerNorm[j] = f.perNorm;
  });
  for (int j = 0; j < open; ++j) xi[place[j]] = to[j], perNorm[place[j]] = toPerNorm[j];
}

} // namespace

// A body of its own: the passes over solids, sheets and wires ask for it in twenty places.
SA_CLONES
static void waysClones(const Superelastic& m, int n, Ways& ways, double* xi, double* perNorm) {
  followWays(m, n, ways, xi, perNorm);
}

void goWays(const Superelastic& m, int n, Ways& ways, double* xi, double* perNorm) {
  waysClones(m, n, ways, xi, perNorm);
}

SA_CLONES
static void exponentialClones(const Block& block, const Superelastic& model) { run(block, ExponentialLaw(model)); }

void runExponential(const Block& block, const Superelastic& model) { exponentialClones(block, model); }

} // namespace sa::user::alloy
