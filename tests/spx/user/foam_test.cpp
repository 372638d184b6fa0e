// Foams and honeycomb among the built-in user materials: closed forms, rates, hysteresis, energy, independence of increments.
#include "tests/support/user_material.h"

namespace {

using namespace sharedanalysis::test;
using Material = UserMaterial;

constexpr Strain kRest = {1, 1, 1, 0, 0, 0};
constexpr double kSlow = 1e9; // an increment of time in which no rate counts

void append(Values& to, const Values& more) { to.insert(to.end(), more.begin(), more.end()); }
// A family: rows of (rate, rows), then (stress, strain) in kPa times a factor for each rate; those of tension have their own.
Values family(const Values& rows, const Values& rates, const Values& factors, const Values& inTension = {1, 1, 1}) {
  Values all;
  for (double rate : rates) append(all, {rate, static_cast<double>(rows.size() / 2)});
  for (std::size_t k = 0; k < rates.size(); ++k)
    for (std::size_t r = 0; r < rows.size(); r += 2)
      append(all, {rows[r] * 1e3 * (rows[r] < 0 ? inTension : factors)[k], rows[r + 1]});
  return all;
}
const Values kCrush = {0, 0, 20, .05, 40, .4, 80, .6, 250, .75, 1000, .85}, kRates = {.01, 1, 100};
Values withTension(double part = 1) {
  Values rows = {-100, -.5, -50, -.1};
  append(rows, kCrush);
  for (std::size_t r = 0; r < rows.size(); r += 2) rows[r] *= part;
  return family(rows, kRates, {1, 1.4, 2}, {1, 1.2, 1.5});
}
Material finished(const char* name, Values props, const Values& tables, int states, int shears, double dt) {
  append(props, tables);
  Material m(name, props, states, 3, shears);
  m.massStays = true;
  m.dt = dt;
  return m;
}
Material sensitive(double dt, double HU = .2, double tau = 0, double beta = 0, int shears = 3) {
  return finished("TVK_RATE_SENSITIVE_FOAM", {400e3, 50e3, beta, HU, 3, tau, 3}, family(kCrush, kRates, {1, 1.4, 2}),
                  beta > 0 ? 8 : 2, shears, dt);
}
Material isotropic(double dt, double HU = .2, double tau = 0, int shears = 3) {
  return finished("TVK_FU_CHANG_ISO_FOAM", {400e3, 0, HU, 3, tau, 3}, withTension(), 7, shears, dt);
}
// The axes 1, .6, .3 times the family, shear of its own.
Material anisotropic(double dt, double HU = .2, double tau = 0, int shears = 3) {
  Values tables;
  for (double part : {1., .6, .3}) append(tables, withTension(part));
  append(tables, family({0, 0, 10, .1, 15, .5, 100, 1}, {1}, {1}));
  return finished("TVK_FU_CHANG_ANISO_FOAM", {400e3, 0, HU, 3, tau, 3, 3, 3, 1, 0, 0}, tables, 12, shears, dt);
}
// All foams that follow curves, and how many shears their elements have.
template <class Body>
void forTabulated(double dt, double HU, double tau, Body body) {
  for (int shears : {3, 1}) {
    body(sensitive(dt, HU, tau, 0, shears));
    body(isotropic(dt, HU, tau, shears));
    body(anisotropic(dt, HU, tau, shears));
  }
}
Strain stretchOf(int axis, double l) {
  Strain U = kRest;
  U[static_cast<std::size_t>(axis)] = l;
  return U;
}
double perVolume(const Values& energy) { return energy[0] * 2500; } // undeformed
double psi(const Material& m) { return perVolume(m.internal) - perVolume(m.inelastic); }

TEST(Foams, StressOfEachRate) {
  // along an axis that is taken to a stretch in one increment, sides held
  // clang-format off
  const struct {
    int foam, axis;
    double l, rate, stress;
  } rows[] = {
      {0, 0, .5, 1e-5, -60e3}, {0, 1, .5, .01, -60e3}, {0, 2, .5, .1, -72e3}, {0, 0, .5, 1, -84e3}, {0, 0, .5, 10, -102e3},
      {0, 0, .5, 100, -120e3}, {0, 0, .5, 1e5, -120e3}, {0, 0, 1.05, 1, 20e3}, {0, 1, 1.125, 1, 50e3}, {0, 2, 1.5, 1, 50e3},
      {1, 0, .5, .01, -60e3}, {1, 1, .5, .1, -72e3}, {1, 2, .5, 10, -102e3}, {1, 0, 1.1, .01, 50e3}, {1, 1, 1.1, 1, 60e3},
      {1, 2, 1.1, 10, 67.5e3}, {1, 0, 1.1, 1e4, 75e3}, {1, 0, 1.3, .01, 75e3},
      {2, 0, .5, .01, -60e3}, {2, 0, .5, .1, -72e3}, {2, 0, .5, 100, -120e3}, {2, 1, .5, .01, -36e3}, {2, 1, .5, .1, -43.2e3},
      {2, 1, .5, 100, -72e3}, {2, 2, .5, .01, -18e3}, {2, 2, .5, .1, -21.6e3}, {2, 2, .5, 100, -36e3}};
  // clang-format on
  for (const auto& row : rows) {
    int number = 0;
    forTabulated(std::abs(row.l - 1) / row.rate, .2, 0, [&](Material m) {
      if (number++ % 3 != row.foam) return;
      m.stretchTo(stretchOf(row.axis, row.l));
      for (int c = 0; c < 3 + m.nshr; ++c)
        EXPECT_NEAR(m.stress[c], c == row.axis ? row.stress : 0, 1e-9 * std::abs(row.stress)) << row.l << row.rate;
    });
  }
  // several directions at once: one rate for all, or each its own; shear by component
  const struct {
    Material m;
    Strain U, stress;
  } more[] = {{sensitive(.5), {.5, .8, 1.1}, {-95665.45334, -72887.96445, 100000}},
              {isotropic(.1), {.5, .9, 1}, {-107312.733, -64000, 0}},
              {anisotropic(kSlow), {1, 1, 1, .15}, {1918.15857, 1918.15857, 0, 12787.72379}},
              {anisotropic(kSlow, .2, 0, 1), {1, 1, 1, -.15}, {1918.15857, 1918.15857, 0, -12787.72379}}};
  for (const auto& row : more) {
    Material m = row.m;
    m.stretchTo(row.U);
    for (int c = 0; c < 3 + m.nshr; ++c) EXPECT_NEAR(m.stress[c], row.stress[c], 1e-3);
  }
}

TEST(Foams, SlowLoopLosesWhatTheHysteresisTakes) {
  const struct {
    Material m;
    int axis;
    double end, largest, lost;
    int state;
  } rows[] = {
      {sensitive(kSlow), 0, .3, 36666.6667, 22000, 1}, {sensitive(kSlow, .2, 0, 0, 1), 1, .3, 36666.6667, 22000, 1},
      {isotropic(kSlow), 2, .4, 23000, 13800, 1},      {anisotropic(kSlow), 0, .4, 23000, 13800, 1},
      {anisotropic(kSlow), 1, .4, 13800, 8280, 2},     {anisotropic(kSlow, .2, 0, 1), 2, .4, 6900, 4140, 3}};
  for (const auto& row : rows) {
    Material m = row.m;
    m.stretchSteps(stretchOf(row.axis, row.end), 1000);
    EXPECT_NEAR(m.at(row.state), row.largest, 1e-7 * row.largest);
    EXPECT_NEAR(perVolume(m.internal), row.largest, 2e-6 * row.largest);
    if (row.end < .35) {
      m.stretchSteps(stretchOf(row.axis, .5), 500);
      EXPECT_NEAR(m.stress[row.axis], -15988.29, .01);
    }
    m.stretchSteps(kRest, 1000);
    EXPECT_NEAR(perVolume(m.inelastic), row.lost, 1e-5 * row.lost);
    EXPECT_NEAR(psi(m), 0, 1e-6 * row.largest);
  }
  // all of it in the first loop: tension after compression is softened and loses nothing more
  Material m = isotropic(kSlow);
  for (double l : {.4, 1., 1.3, 1.}) m.stretchSteps(stretchOf(0, l), 1000);
  EXPECT_NEAR(perVolume(m.inelastic), 13800, .5);
  // stored in tension; work at a high rate, of which the slowest curve is stored
  for (const auto& [l, rate, work] :
       {std::array{1.05, 1e-9, 500.}, {1.125, 1e-9, 3125}, {1.5, 1e-9, 21875}, {.4, 50, 43922.893}}) {
    Material t = sensitive(std::abs(l - 1) / rate / 4000, 1);
    t.stretchSteps(stretchOf(0, l), 4000);
    EXPECT_NEAR(perVolume(t.internal), work, 1e-5 * work);
    EXPECT_NEAR(psi(t), l < 1 ? 23000 : work, 1e-5 * work);
  }
}

TEST(Foams, FilterAndDamping) {
  for (int count : {1, 10}) {
    Material one = sensitive(.3 / count, .2, .1), each = isotropic(.3 / count, .2, .1);
    for (Material* m : {&one, &each}) m->stretchSteps(stretchOf(0, .7), count);
    EXPECT_NEAR(one.at(2), 1 - std::exp(-3.), 1e-12);
    EXPECT_NEAR(each.at(2), -(1 - std::exp(-3.)), 1e-12);
  }
  Material m = sensitive(.01, .2, 0, 1e-3);
  m.stretchTo(stretchOf(0, .99));
  EXPECT_NEAR(m.at(3), -402.01005, 1e-5);
  Material free = sensitive(.01);
  free.stretchTo(stretchOf(0, .99));
  EXPECT_EQ(m.stress[0], free.stress[0] + m.at(3));
  EXPECT_NEAR(psi(m), psi(free), 1e-12) << "damping stores nothing";
}

TEST(Foams, SimpleShearOfTheIsotropicOne) {
  // F = 1 + .5 e1 e2; in the axes that turn with R
  const double g = .5, t = std::sqrt(4 + g * g);
  for (int count : {1, 2000}) {
    Material m = isotropic(kSlow, 1);
    m.stretchSteps({2 / t, (2 + g * g) / t, 1, g / t, 0, 0}, count);
    const double expected[] = {20822.717, 48992.299, 0, 56339.165};
    for (int c = 0; c < 4; ++c) EXPECT_NEAR(m.stress[c], expected[c], .01);
    EXPECT_NEAR(psi(m), 18283.988, count > 1 ? .05 : 5e3) << "the energy is a sum over increments";
  }
}

Strain randomStretch(Random& random, double size, int shears) {
  Strain U = kRest;
  for (int c = 0; c < 3 + shears; ++c) U[c] += size * (c < 3 ? 1 : .5) * random.uniform(-1, 1);
  return U;
}

TEST(Foams, EnergyOnClosedRandomPaths) {
  Random random(11);
  for (double HU : {1., .3})
    forTabulated(HU < 1 ? .00125 : kSlow, HU, 0, [&](Material m) {
      double most = 0;
      for (int turn = 0; turn < 6; ++turn) {
        m.stretchSteps(turn < 5 ? randomStretch(random, .3, m.nshr) : kRest, 400);
        most = std::max(most, m.internal[0]);
      }
      // work is psi without hysteresis
      EXPECT_LT(HU == 1 ? std::abs(m.internal[0]) : 0, 2e-4 * most) << m.name;
      // at rates, the stress falls where loading turns; foams of one rate for all directions give a part of what it adds back
      const double left = HU == 1 ? 1e-5 : m.states == 2 ? 1e-2 : 5e-4;
      EXPECT_NEAR(m.internal[0], m.inelastic[0], left * most) << m.name;
    });
}

TEST(Foams, OneSlowStepIsManyAndUnloadingIsStifferThanTheCurves) {
  const double slope = 750e3 / .1, factor = 1 + 2 * 3 * (1 - .2); // as the declarations give c2
  forTabulated(kSlow, .2, 0, [=](const Material& make) {
    double largest = 0;
    for (double l : {.97, .8, .5, .3, .2, .15, .12}) {
      Material m = make;
      m.stretchTo(stretchOf(0, l));
      const double before = m.stress[0];
      m.stretchTo(stretchOf(0, l + 1e-7));
      largest = std::max(largest, (m.stress[0] - before) / 1e-7);
    }
    EXPECT_GT(largest, 3.9 * slope);
    EXPECT_LT(largest, factor * slope);
    Material one = make, many = make; // a proportional path to the largest work
    one.stretchTo({.6, .8, 1.1, .1, 0, 0}), many.stretchSteps({.6, .8, 1.1, .1, 0, 0}, 100);
    for (std::size_t c = 0; c < one.stress.size(); ++c) EXPECT_NEAR(one.stress[c], many.stress[c], 1e-6);
  });
}

// ---- viscous foam: mu 20 kPa, alpha 8, beta 0

Material viscous(double E = 1e6, double eta = 2e3, double exponent = 0, double largest = 0, int shears = 3) {
  return finished("TVK_VISCOUS_FOAM", {20e3, 8, 0, 0, 0, 0, E, eta, exponent, largest}, {}, 6, shears, 1);
}
// Uniaxial, to a stretch in an increment of logarithmic strain.
void logarithmicTo(Material& m, double l) {
  const double before = m.stretch[0];
  m.stretchOld = m.stretch;
  m.stretch[0] = l;
  m.call({{std::log(l / before), 0, 0, 0, 0, 0}}, {l});
}
void logarithmicSteps(Material& m, double l, double rate, int count) {
  const double from = m.stretch[0], part = std::log(l / from) / count;
  m.dt = std::abs(part / rate);
  for (int k = 1; k <= count; ++k) logarithmicTo(m, from * std::exp(part * k));
}

TEST(ViscousFoam, ClosedPathsLoseTheirWork) {
  Random random(21);
  Material m = viscous(1e6, 2e3, 2);
  double most = 0;
  m.dt = 1e-4;
  for (int leg = 0; leg < 6; ++leg) {
    m.stretchSteps(leg < 5 ? randomStretch(random, .3, 3) : kRest, 400);
    most = std::max(most, m.internal[0]);
  }
  m.dt = 1e3; // held until the branch is at rest
  m.stretchTo(kRest);
  EXPECT_NEAR(m.internal[0], m.inelastic[0], 1e-3 * most);
  EXPECT_GT(m.inelastic[0], .1 * most);
}

TEST(ViscousFoam, SkeletonAndBranch) {
  for (int shears : {3, 1})
    for (const auto& [l, stress] :
         {std::pair{.9, -3164.07106}, {.7, -6731.08564}, {.5, -9960.93750}, {.3, -16665.57317}}) {
      Material m = viscous(0, 0, 0, 0, shears);
      m.stretchTo(stretchOf(0, l));
      EXPECT_NEAR(m.stress[0], stress, 1e-5);
      EXPECT_NEAR(m.stress[1], 2 * 20e3 / 8 * (1 - 1) / l, 1e-9);
    }
  // two terms with beta: the stress is the slope of an energy
  Material two("TVK_VISCOUS_FOAM", {20e3, 8, .3, 5e3, -3, 1e-9, 0, 0, 0, 0}, 6);
  two.massStays = true;
  two.stretchSteps({.6, 1.2, .9, .1, .05, -.2}, 2000);
  const double energy = two.internal[0];
  two.stretchSteps({1.1, .8, .7, 0, .1, 0}, 2000);
  EXPECT_GT(std::abs(two.internal[0] - energy), .1 * energy);
  two.stretchSteps({.6, 1.2, .9, .1, .05, -.2}, 2000);
  EXPECT_NEAR(two.internal[0], energy, 1e-5 * energy);
  two.stretchSteps(kRest, 2000);
  EXPECT_NEAR(two.internal[0], 0, 1e-5 * energy);
  for (int count : {1, 7, 1000}) {
    Material m = viscous();
    logarithmicSteps(m, std::exp(-.5), 10, count);
    EXPECT_NEAR(m.at(1), -20e3 * -std::expm1(-25.), 1e-8);
    EXPECT_NEAR(perVolume(m.inelastic), 9400, 1e-7);
    m.dt = .003; // held
    logarithmicTo(m, m.stretch[0]);
    EXPECT_NEAR(m.at(1), -20e3 * -std::expm1(-25.) * std::exp(-1.5), 1e-8);
  }
}

TEST(ViscousFoam, ViscosityThatGrowsWithCompaction) {
  const struct {
    double rate, stress, q, internal, inelastic;
  } rows[] = {{.1, -15609.03, -1246.8905, 4481.064, 523.425},
              {1, -42996.95, -12202.058, 9129.196, 5097.888},
              {10, -270423.87, -103172.825, 50178.75, 40899.57},
              {100, -1275815.96, -505329.66, 245971.70, 114335.81}};
  for (const auto& row : rows)
    for (int count : {100, 4000}) {
      Material m = viscous(1e6, 2e3, 2);
      logarithmicSteps(m, .4, row.rate, count);
      const double close = count == 100 ? 3e-3 : 3e-5;
      EXPECT_NEAR(m.stress[0], row.stress, close * std::abs(row.stress));
      EXPECT_NEAR(m.at(1), row.q, close * std::abs(row.q));
      EXPECT_NEAR(perVolume(m.internal), row.internal, close * row.internal);
      EXPECT_NEAR(perVolume(m.inelastic), row.inelastic, close * row.inelastic);
    }
  Material held = viscous(1e6, 2e3, 2, 3e3); // no larger than
  held.dt = 1e3;
  logarithmicTo(held, .4);
  EXPECT_NEAR(held.at(1), 3e3 * std::log(.4) / 1e3, 1e-5);
}

// ---- honeycomb

Material honeycomb(double deletion = 0, const Values& rates = {}, int shears = 3) {
  return finished("TVK_HONEYCOMB",
                  {70e9,  .33,      200e6, .2,   1e9, .1e9, .1e9, .3e9, .05e9,
                   .15e9, deletion, 5,     0,    0,   3,    0,    0,    static_cast<double>(rates.size() / 2),
                   5e6,   0,        1e6,   .05,  1e6, .6,   4e6,  .7,   60e6,
                   .8,    .8e6,     0,     .8e6, .6,  30e6, .8},
                  rates, deletion > 0 ? 3 : 1, shears, 1);
}

TEST(Honeycomb, CrushesAndLocks) {
  for (int shears : {3, 1}) {
    Material m = honeycomb(0, {}, shears);
    for (const auto& [v, stress] : {std::pair{.0501, -1.}, {.3502, -1.}, {.600075, -1.00225}, {.7, -4.}}) {
      m.stretchSteps(stretchOf(0, 1 - v), 2000);
      EXPECT_NEAR(m.stress[0] / MPa, stress, 1e-9);
      EXPECT_NEAR(m.at(1), v / .8, 1e-12);
    }
    EXPECT_NEAR(perVolume(m.internal), .93957239e6, 15) << "the area less the corner of elastic loading";
    for (const auto& [l, modulus] : {std::pair{.8, 18.25e9}, {.5, 44.125e9}}) {
      Material u = honeycomb(0, {}, shears);
      u.stretchSteps(stretchOf(0, l), 100);
      const double before = u.stress[0];
      u.stretchTo(stretchOf(0, l * (1 + 1e-6)));
      EXPECT_NEAR((u.stress[0] - before) / 1e-6, modulus, 1e-5 * modulus);
    }
    for (int count : {1, 100}) {
      Material s = honeycomb(0, {}, shears);
      s.stretchSteps({.5, 1, 1, .1, 0, 0}, count);
      EXPECT_NEAR(s.stress[0] / MPa, -1, 1e-9);
      EXPECT_NEAR(s.stress[3] / MPa, .8, 1e-9);
    }
  }
  Material closing = honeycomb();
  closing.stretchSteps(stretchOf(0, 1 - .79985), 2000);
  EXPECT_NEAR(closing.stress[0] / MPa, -59.916, 1e-6) << "on the curve to the end";
  // dense metal, for good
  Material m = honeycomb();
  m.stretchSteps(stretchOf(0, .19), 400);
  EXPECT_EQ(m.at(1), 1);
  m.stretchSteps(stretchOf(0, .15), 100);
  EXPECT_NEAR(m.mises() / MPa, 200, 1e-6);
  const double before = m.pressure();
  for (double change : {-1e-5, 1e-5}) m.step({change, change, change});
  EXPECT_NEAR(m.pressure(), before, 1e-3);
  m.step({1e-5, 1e-5, 1e-5});
  EXPECT_NEAR((before - m.pressure()) / 3e-5, 68.627451e9, 1e3);
  m.step({-.2, .1, .1, .05, .02, .01});
  EXPECT_NEAR(m.mises() / MPa, 200, 1e-6);
}

TEST(Honeycomb, RateAndDeletion) {
  for (const auto& [rate, factor] : {std::pair{.1, 1.}, {1., 1.}, {10., 1.5}, {1e4, 2.}}) {
    Material m = honeycomb(0, {1, 1, 2, 100});
    m.dt = std::sqrt(2. / 3) * .5 / rate; // .4 over a mean length of .8
    m.stretchTo(stretchOf(0, .6));
    EXPECT_NEAR(m.stress[0] / MPa, -factor, 1e-9) << rate;
  }
  Material m = honeycomb(.5);
  m.stretchTo(stretchOf(1, 1.49));
  EXPECT_EQ(m.at(3), 1);
  EXPECT_NEAR(m.at(2), .49, 1e-15);
  const double stress = m.stress[1], energy = m.internal[0];
  EXPECT_GT(stress, 0);
  m.stretchTo(stretchOf(1, 1.51));
  EXPECT_EQ(m.at(3), 0);
  EXPECT_EQ(m.stress[1], 0);
  EXPECT_NEAR(perVolume(m.internal), energy * 2500 + .5 * 1.49 * stress * .02 / 1.5, 1e-6 * stress);
  EXPECT_EQ(m.inelastic[0], m.internal[0]);
  const auto kept = m.state;
  m.stretchTo(kRest);
  EXPECT_EQ(m.state, kept) << "for good";
  EXPECT_EQ(m.stress[1], 0);
}

} // namespace
