// The models among the built-in user materials: published curves, closed forms, energy and independence of the increment.
#include "tests/support/user_material.h"

namespace {

using namespace sharedanalysis::test;
using Material = UserMaterial;

// ---- concrete

TEST(Concrete, PressureOfTheTwoMeaningsOfTheLockingStrain) {
  const double mu[] = {.0005, .001, .01, .05, .10, .12, .15, .20};
  const double expected[2][8] = {{8, 16, 80.4064, 366.6572, 724.4707, 1490.176, 3529.865, 6470.323},
                                 {8, 16, 87.2727, 404.0404, 800.0000, 2246.788, 4225.349, 7076.291}};
  for (int meaning = 0; meaning < 2; ++meaning)
    for (int k = 0; k < 8; ++k)
      for (int count : {1, 50}) {
        Material m = hjc(concrete(meaning));
        m.compress(mu[k], count);
        EXPECT_NEAR(m.pressure() / MPa, expected[meaning][k], 2e-7 * expected[meaning][k] + 6e-5);
        EXPECT_NEAR(m.at(4), mu[k], 1e-14);
      }
}

TEST(Concrete, UnloadsWithTheModulusOfItsCompaction) {
  // half way through crushing: half way from Pc/muc to K1
  const double x = .00959481, lock = .1 + 1.1 * x, half = .5 * (.001 + lock), K = .5 * (16e9 + 85e9);
  Material m = hjc(concrete());
  m.compress(half, 10);
  const double top = m.pressure(), left = m.at(5);
  EXPECT_NEAR(top, .5 * (16e6 + 800e6), 10.0 * MPa * 1e-4);
  EXPECT_NEAR(left, half - top / K, 1e-7);
  m.compress(half - 1e-3);
  EXPECT_NEAR(top - m.pressure(), 1e-3 * K, 1e-4 * 1e-3 * K);
  m.compress(half - 5e-4);
  EXPECT_NEAR(top - m.pressure(), 5e-4 * K, 1e-4 * 5e-4 * K);
  EXPECT_EQ(m.at(5), left);
  // damage by compaction alone, along the curve of the failure strain
  EXPECT_GT(m.at(2), 0);
  EXPECT_EQ(m.at(1), 0);
  m.compress(-.05);
  EXPECT_NEAR(m.pressure(), -4 * MPa * (1 - m.at(2)), 1) << "the limit of tension";
  // beyond locking nothing more is crushed
  Material dense = hjc(concrete());
  dense.compress(.2, 20);
  const double before = dense.pressure();
  dense.compress(.1);
  EXPECT_NEAR(dense.pressure(), 0, 1e-3) << "m = 0";
  dense.compress(.2);
  EXPECT_NEAR(dense.pressure(), before, 1e-12 * before);
}

TEST(Concrete, StrengthAndFractureStrain) {
  const double P[] = {1e-9, 1. / 3, 1, 2, 5, 10};
  const struct {
    double damage, rate, q[6];
  } rows[] = {{0, 1, {.79000, 1.60861, 2.39000, 3.23201, 5.06063, 7.0}},
              {1, 1, {0, .81861, 1.60000, 2.44201, 4.27063, 6.51808}},
              {0, 1000, {.82820, 1.68639, 2.50557, 3.38830, 5.30533, 7.0}}};
  const double fractureStrain[] = {.010000, .016667, .043333, .083333, .203333, .403333};
  auto props = concrete();
  props[10] = 1e12, props[11] = 1e12 / 16e9, props[12] = 2e12,
  props[13] = 100; // elastic in volume, so that nothing is crushed on the way
  for (int k = 0; k < 6; ++k) {
    for (const auto& row : rows) {
      auto tough = props;
      tough[8] = 1e9; // damage stands still
      Material m = hjc(tough);
      m.state[1] = row.damage;
      m.dt = 1e6;
      m.compress(P[k] * 48e6 / 16e9);
      m.dt = 2 / std::sqrt(3.) * .05 / row.rate;
      shear(m, .05);
      EXPECT_NEAR(m.mises() / 48e6, row.q[k], 6e-6) << P[k] << " " << row.damage << " " << row.rate;
      EXPECT_NEAR(m.at(2), row.damage, 1e-9);
    }
    Material m = hjc(props);
    m.compress(P[k] * 48e6 / 16e9);
    m.dt = 1e6;
    shear(m, k < 3 ? .006 : .02);
    EXPECT_NEAR(m.at(1) / m.at(2), fractureStrain[k], 6e-7);
  }
  // in tension down to nothing where the limit of tension is
  Material m = hjc(props);
  m.compress(-2 * MPa / (16e9));
  m.dt = 1e6;
  m.state[1] = .25;
  shear(m, .01);
  EXPECT_NEAR(m.mises(), .79 * 48e6 * std::max(0., 1 - m.at(2) - .5), 1e-6 * MPa);
}

// ---- ceramics

// The compression at which the cubic has this pressure.
double compressionAt(double P, double K1, double K2, double K3) {
  double mu = P / K1;
  for (int k = 0; k < 60; ++k) mu -= (mu * (K1 + mu * (K2 + mu * K3)) - P) / (K1 + mu * (2 * K2 + mu * 3 * K3));
  return mu;
}

TEST(CeramicJh2, SurfacesAndFailureStrainsOfPublishedMaterials) {
  const double P[] = {0, .5, 1, 2};
  for (const Ceramic& c : kCeramics)
    for (int k = 0; k < 4; ++k) {
      const double mu = compressionAt(P[k] * c.PHEL, c.K1, c.K2, c.K3);
      for (double damage : {0., 1.}) {
        if (k == 0 && damage > 0) continue;
        auto props = c.props(1e30); // every rate is below the reference
        props[11] = 1e12;           // damage stands still
        Material m = jh2(props);
        m.state[1] = damage;
        m.compress(mu);
        shear(m, 1);
        EXPECT_NEAR(m.mises() / (c.strength * GPa), damage > 0 ? c.fractured[k - 1] : c.intact[k], 2e-4)
            << c.name << P[k];
        EXPECT_NEAR(m.pressure() / (c.PHEL * GPa), P[k], 1e-5);
      }
      // a small step beyond the surface; a material of small drop damages gradually
      auto gradual = c.props(1e30);
      gradual[0] *= 1e4;
      Material m = jh2(gradual);
      m.compress(mu);
      shear(m, 1e-7);
      shear(m, .1 * c.failureStrain[k]);
      EXPECT_NEAR(m.at(1) / m.at(2), c.failureStrain[k], 6e-7) << c.name << P[k];
    }
}

TEST(CeramicJh2, UniaxialStrainToTheElasticLimit) {
  // the published curve is in terms of the strain 1 - V/V0 = mu/(1 + mu)
  const double mu[] = {.02, .05, .0807917}, P[] = {.85512, 1.96125, 2.92011}, axial[] = {1.64989, 3.89141, 5.95007};
  for (int k = 0; k < 3; ++k) {
    auto props = kCeramics[2].props(1e30);
    props[1] = 10; // does not yield
    Material m = jh2(props);
    const double strain = mu[k] / (1 + mu[k]);
    m.volume[0] = std::exp(strain) / (1 + mu[k]);
    m.step({-strain, 0, 0, 0, 0, 0});
    EXPECT_NEAR(m.pressure() / GPa, P[k], 6e-6);
    EXPECT_NEAR(-m.stress[0] / GPa, axial[k], 6e-6);
    EXPECT_EQ(m.at(2), 0);
  }
  // without PHEL it is found from HEL
  for (const Ceramic& c : kCeramics) {
    auto given = c.props(1e30), found = c.props(1e30);
    found[10] = 0;
    given[11] = found[11] = 1e12;
    Material a = jh2(given), b = jh2(found);
    for (Material* m : {&a, &b}) m->compress(c.mu), shear(*m, 1);
    EXPECT_NEAR(b.mises() / a.mises(), 1, 5e-3) << c.name;
    EXPECT_NEAR(b.mises() / (1.5 * (c.HEL * GPa - b.pressure())), c.intact[2], 1e-3) << "at mu of the limit";
  }
}

// Strength in GPa at a pressure.
double strengthOfCarbide(double P, double damage) {
  auto props = siliconCarbide();
  props[10] = 1e12;
  Material m = jhb(props);
  m.state[1] = damage;
  m.compress(compressionAt(P, 220, 361, 0));
  shear(m, 1);
  EXPECT_NEAR(m.pressure() / GPa, P, 1e-12);
  return m.mises() / GPa;
}

TEST(CeramicJhb, SurfacesWithContinuousSlope) {
  const double rows[][4] = {{4, 0, 8.764319, 1e-6}, {1.5, 0, 4.92, 1e-12}, {.3, 0, 4.92 * (.3 + .75) / 2.25, 1e-12},
                            {100, 0, 12.2, 1e-6},   {.25, 1, .1, 1e-12},   {3, 1, .2, 1e-12}};
  for (const auto& [P, damage, expected, bound] : rows) EXPECT_NEAR(strengthOfCarbide(P, damage), expected, bound) << P;
  const double h = 1e-5, knee = strengthOfCarbide(1.5, 0);
  EXPECT_NEAR((strengthOfCarbide(1.5 + h, 0) - knee) / (knee - strengthOfCarbide(1.5 - h, 0)), 1, 1e-5);
  // damage without loss, then all of it
  auto props = siliconCarbide();
  props[16] = 0;
  Material m = jhb(props);
  m.compress(compressionAt(2, 220, 361, 0));
  const double ef = .16 * (2 + .75) / 12.2, q = 4.92 + 7.28 * (1 - std::exp(-4.92 / 7.28 / 2.25 * .5));
  int step = 0;
  for (; m.at(2) < 1 && step < 1000; ++step) {
    EXPECT_NEAR(m.at(2), m.at(1) / ef, 1e-12);
    shear(m, 1e-3);
    EXPECT_TRUE(m.at(2) == 0 || m.at(2) == 1 || std::abs(m.mises() / GPa - q) < 1e-9);
  }
  EXPECT_NEAR(m.mises() / GPa, .2, 1e-12);
  EXPECT_NEAR(step * 1e-3 * 2 / std::sqrt(3.), ef + q / (3 * 193), 2e-3);
}

Material twoPhases(double beta = 0) {
  Material m = phases(beta);
  m.massStays = true;
  return m;
}

TEST(CeramicJhb, ChangeOfPhaseRaisesThePressureAndStays) {
  const double mu1 = .0727549564, middle = .5 * (mu1 + .36);
  const struct {
    double mu, P, modulus, left, lost; // modulus and mu without pressure of the release, loss per undeformed volume
  } rows[] = {{.03, 6.264, 216.6, 0, 0},
              {middle, 29.7777778, 284.0328, .1050384, 1.830939},
              {.36, 43.5555556, 294.4445, .2, 4.174956},
              {.4, 55.5555556, 305.5556, .2, 4.174956}};
  for (const auto& row : rows) {
    for (int count : {1, 50}) {
      Material m = twoPhases();
      m.compress(row.mu, count);
      EXPECT_NEAR(m.pressure() / GPa, row.P, 1e-7);
      EXPECT_NEAR(m.at(5), row.mu, 1e-14);
      const double h = 1e-7, P = m.pressure();
      m.compress(row.mu - h);
      EXPECT_NEAR((P - m.pressure()) / h / GPa, row.modulus, 1e-3);
      m.compress(row.left);
      EXPECT_NEAR(m.pressure() / GPa, 0, 2e-5);
      EXPECT_NEAR(m.at(5), row.mu, 1e-14);
      m.compress(row.mu);
      EXPECT_NEAR(m.pressure(), P, 1e-9 * P) << "the way back";
    }
    // what it holds is the work of its release; what it has lost is the rest
    Material m = twoPhases();
    m.compress(row.mu, 5000);
    const double held = (m.internal[0] - m.inelastic[0]) * m.rho;
    double work = 0, before = m.pressure();
    for (int k = 1; k <= 5000; ++k) {
      const double from = row.mu + (row.left - row.mu) * (k - 1) / 5000, to = row.mu + (row.left - row.mu) * k / 5000;
      m.compress(to);
      work += .5 * (before + m.pressure()) * (1 / (1 + to) - 1 / (1 + from));
      before = m.pressure();
    }
    EXPECT_NEAR(held / work, 1, 1e-6);
    EXPECT_NEAR(m.inelastic[0] * m.rho / GPa, row.lost, 1e-3 * row.lost + 1e-12);
    EXPECT_NEAR(m.internal[0], m.inelastic[0], 1e-6 * held / m.rho);
  }
  // bulking adds to the pressure and not to the largest compression
  for (double mu : {.05, .2, .4}) {
    Material with = twoPhases(1), without = twoPhases();
    for (Material* m : {&with, &without}) m->state[1] = .999999, m->compress(mu), shear(*m, 1);
    EXPECT_GT(with.at(4), 0);
    EXPECT_NEAR(with.pressure(), without.pressure() + with.at(4), 1e-9 * with.pressure());
    EXPECT_EQ(with.at(5), without.at(5));
    const double intact = 12.2 - 7.28 * std::exp(-4.92 / 1.5 / 7.28 * (without.pressure() / GPa - 1.5)),
                 elastic = 201 * (mu - .2 * std::clamp((mu - mu1) / (.36 - mu1), 0., 1.)), growth = with.at(4) / GPa;
    EXPECT_NEAR(growth * (growth + 2 * elastic), 2 * 201 * (intact * intact - .04) / (6 * 193), 1e-6);
    const double lost = with.inelastic[0];
    with.compress(-.1);
    EXPECT_NEAR(with.internal[0], with.inelastic[0], 1e-9 * with.internal[0]);
    EXPECT_GE(with.inelastic[0], lost);
  }
  // without P1 it is the material of one phase
  Material one = twoPhases(1), plain = jhb(siliconCarbide());
  one.props[18] = 0, plain.props = one.props, plain.massStays = true;
  for (Material* m : {&one, &plain}) m->compress(.4, 3), shear(*m, .5), m->compress(.1);
  EXPECT_EQ(one.stress, plain.stress);
  EXPECT_EQ(one.inelastic, plain.inelastic);
}

TEST(Brittle, TensionStopsAtItsLimitAndDeletedPointsStay) {
  const Material materials[] = {jh2(kCeramics[2].props()), jhb(siliconCarbide()), hjc(concrete())};
  const double T[] = {.15 * GPa, .75 * GPa, 4 * MPa};
  for (std::size_t k = 0; k < 3; ++k) {
    Material m = materials[k];
    m.compress(-.1);
    EXPECT_NEAR(m.pressure(), -T[k], 1e-12 * T[k]);
    EXPECT_LT(m.mises(), 1e-6);
    EXPECT_EQ(m.at(2), 0) << "round-off is no shear";
    m.props[k == 0 ? 17 : k == 1 ? 17 : 19] = .05;
    m = Material(m.name, m.props, m.states);
    m.step({-.05, 0, 0, 0, 0, 0});
    EXPECT_EQ(m.at(3), 1);
    shear(m, .3);
    EXPECT_EQ(m.at(3), 0);
    EXPECT_GT(m.at(1), .05);
    const Material deleted = ((m.state[1] = .4), m); // before it was broken
    m.step({-.05, .02, 0, .1, 0, 0});
    EXPECT_EQ(m.state, deleted.state);
    EXPECT_EQ(m.internal, deleted.internal);
    EXPECT_EQ(m.inelastic, deleted.inelastic);
    EXPECT_EQ(m.stress, Values(6));
  }
}

TEST(Brittle, RoundOffDoesNotDecideWhereAPointYields) {
  const std::vector<Material> materials = {jh2(kCeramics[0].props(1e30)), jh2(kCeramics[1].props(1e30)),
                                           jh2(kCeramics[2].props(1e30)), jhb(siliconCarbide()), hjc(concrete())};
  Random random(11);
  for (const Material& start : materials)
    for (int round = 0; round < 30; ++round) {
      Strain e = {};
      for (int c = 0; c < 6; ++c) e[c] = (random.uniform(-.04, .04) - (c < 3 ? .025 : 0)) / 200;
      Material plain = start, other = start;
      for (int k = 0; k < 200; ++k) {
        const double D = plain.at(2), dP = plain.at(4);
        plain.step(e), other.step(e * (k == 0 ? 1 + 1e-13 : 1));
        EXPECT_TRUE(start.name[5] != 'H' || start.name[6] != '2' || !(plain.at(2) > D) || plain.at(4) > dP)
            << "bulking";
      }
      for (int c = 0; c < 6; ++c) EXPECT_NEAR(other.stress[c], plain.stress[c], 1e-3) << start.name << round;
    }
  // permanent compaction does not hang on the increments
  for (int meaning = 0; meaning < 2; ++meaning) {
    Material one = hjc(concrete(meaning)), many = one;
    one.compress(.2), many.compress(.2, 400);
    EXPECT_NEAR(many.at(5), one.at(5), 1e-14);
  }
}

TEST(Brittle, WorkIsElasticEnergyAndDissipation) {
  for (Material m : {jh2(kCeramics[2].props(1e30)), jhb(siliconCarbide()), hjc(concrete())}) {
    if (m.states == 4) m.props[16] = 0; // bulking gives back
    // shear alone keeps the direction of flow, so that the sums are exact
    m.step({-1e-4, -1e-4, -1e-4, 0, 0, 0});
    double volumetric = 0; // counted as soon as there is a loss
    double before = 0;
    for (int k = 0; k < 60; ++k) {
      shear(m, k < 40 ? 2e-3 : -2e-3);
      const double G = m.props[0], elastic = m.mises() * m.mises() / (6 * G * m.rho);
      if (k <= 10) volumetric = m.internal[0] - m.inelastic[0] - elastic;
      EXPECT_TRUE(k == 40 || std::abs(m.internal[0] - m.inelastic[0] - volumetric - elastic) < 1e-12 * m.internal[0])
          << m.name << k;
      EXPECT_TRUE(m.inelastic[0] >= before || k == 40) << "but where the stress turns";
      before = m.inelastic[0];
    }
    EXPECT_GT(before, 0);
  }
}

// ---- superelastic

TEST(Superelastic, PlateausInOneTwoAndThreeDimensions) {
  const double ratio = (kRoot + .15) / (kRoot - .15); // 1.4501148
  for (const Material& start : {wire(nitinol()), sheet(nitinol()), solid(nitinol())})
    for (double sign : {1., -1.})
      for (int parts : {1, 7}) {
        Material m = start;
        const double scale = sign > 0 ? 1 : ratio;
        const double length = sign > 0 ? .075 : .075 * (kRoot - .15) / (kRoot + .15); // axial strain of all martensite
        double now = 0;
        const auto go = [&](double strain) {
          for (int k = 0; k < parts; ++k) m.pull((strain - now) / parts);
          now = strain;
          return sign * m.stress[0] / scale;
        };
        // strain, expected stress in tension, expected fraction
        const auto at = [&](double stress, double xi) { return sign * (scale * stress / 60000 + length * xi); };
        const double states[][2] = {{510, 0}, {540, .25}, {580, .75}, {600, 1}, {700, 1},
                                    {310, 1}, {275, .75}, {220, .2},  {200, 0}, {100, 0}};
        for (const auto& s : states) {
          EXPECT_NEAR(go(at(s[0], s[1])), s[0], 2e-5 * s[0]) << m.name << sign;
          EXPECT_NEAR(m.at(1), s[1], 2e-6) << m.name;
          EXPECT_NEAR(m.at(8), sign * m.stress[0] / scale, 1e-6) << "equivalent stress";
        }
        EXPECT_NEAR(go(0), 0, 1e-3);
        EXPECT_EQ(m.at(1), 0);
      }
}

TEST(Superelastic, FractionFollowsItsLineFromAnyState) {
  // partial loops: the law d xi = -(1 - xi) dF/(F - Rf) keeps (1 - xi)/(Rf - F), whatever the moduli
  for (double EM : {60000., 30000.}) {
    Material m = solid(nitinol(.1, EM));
    Random random(5);
    int up = 0, down = 0;
    for (int k = 0; k < 3000; ++k) {
      const double xi = m.at(1), F = m.at(8), amount = random.uniform(-1, 1) * .004 + (k % 200 < 100 ? .0008 : -.0008);
      m.step({amount, -.4 * amount, -.4 * amount, .2 * amount, 0, .1 * amount});
      const double xiNow = m.at(1), FNow = m.at(8);
      if (xiNow > xi && xi > 0 && F > 520 && xiNow < 1) {
        ++up;
        EXPECT_NEAR((1 - xiNow) * (600 - F), (1 - xi) * (600 - FNow), 1e-9 * 80);
      } else if (xiNow < xi && xi < 1 && F < 300 && xiNow > 0) {
        ++down;
        EXPECT_NEAR(xiNow * (F - 200), xi * (FNow - 200), 1e-9 * 100);
      } else if (xiNow == xi) {
        EXPECT_TRUE((xi == 0 && FNow <= 520 + 1e-9) || (xi == 1 && FNow >= 300 - 1e-9) ||
                    (FNow <= std::max(F, 520.) + 1e-9 && FNow >= std::min(F, 300.) - 1e-9));
      }
      EXPECT_TRUE(xiNow >= 0 && xiNow <= 1);
    }
    EXPECT_GT(up, 20);
    EXPECT_GT(down, 20);
  }
}

// Alike and unlike moduli, other ratios of Poisson, flat plateaus, limits that move with temperature; both laws.
std::vector<Material> alloys() {
  std::vector<Material> all;
  const auto add = [&](const Values& props, const char* law = "") {
    for (const Material& m : {solid(props, law), solid(props, law, 1), sheet(props, law), wire(props, law)})
      all.push_back(m);
  };
  std::vector<Values> linear(5, nitinol(.1, 40000));
  linear[0] = nitinol(.1), linear[3] = nitinol(.1, 70000);
  linear[2][3] = .4, linear[3][3] = .2;
  linear[4][6] = 520, linear[4][7] = linear[4][8] = 250;
  for (Values& props : linear) add(props), props[11] = 6, props[12] = 8, add(props);
  for (const Values& props : {exponential(), exponential(.1, 40000), exponential(.1, 90000), exponential(.1, 40000, 6)})
    add(props, "_EXP");
  return all;
}

TEST(Superelastic, OneLargeIncrementEndsWhereManySmallOnesDo) {
  Random random(6);
  int moved = 0;
  for (const Material& start : alloys())
    for (int round = 0; round < 40; ++round) {
      const bool isLinear = start.name[22] != 'E';
      const Strain there = randomStrain(random, .03, start.nshr),
                   onItsLine = there * (round % 2 ? -1.7 : -.6), // or to anywhere
          back = isLinear && round % 3 == 0 ? randomStrain(random, .05, start.nshr) : onItsLine;
      const double end = 300 + random.uniform(-40, 40);
      const auto run = [&](int parts) {
        Material m = start;
        m.steps(there, round % 2 ? parts : 7);
        for (int k = 1; k <= parts; ++k) m.stepAll({back * (1. / parts)}, 300 + (end - 300) * k / parts);
        return m;
      };
      const Material large = run(1), small = run(100);
      for (std::size_t c = 0; c < large.stress.size(); ++c)
        EXPECT_NEAR(large.stress[c], small.stress[c], isLinear ? 1e-8 : 1e-7) << start.name << round;
      EXPECT_NEAR(large.at(1), small.at(1), isLinear ? 1e-12 : 1e-11) << start.name << round;
      EXPECT_TRUE(start.name[19] != '2' || large.stress[2] == 0);
      moved += large.at(1) > 0 && large.at(1) < 1;
    }
  EXPECT_GT(moved, 600);
}

// Below the temperature at which all of it would go back: strain reverses onto zero and through it.
TEST(Superelastic, MartensiteThatIsLeftWithoutStrain) {
  Random random(9);
  int left = 0;
  for (Material start : alloys()) {
    const bool isLinear = start.name[22] != 'E';
    if (isLinear) start.props[13] = 0; // no change of volume of its own
    for (int round = 0; round < 12 && start.name[19] != '2' && start.props[11] > 0; ++round) {
      const Strain there = randomStrain(random, .03, start.nshr);
      const auto run = [&](int parts) {
        Material m = start;
        m.stepAll({{}}, 245);
        for (const double reversal : {1., round % 2 ? -1. : -2.1, 1.3, -.3})
          for (int k = 0; k < parts; ++k) m.stepAll({there * (reversal / parts)}, 245);
        return m;
      };
      const Material large = run(1), small = run(60);
      for (std::size_t c = 0; c < large.stress.size(); ++c)
        EXPECT_NEAR(large.stress[c], small.stress[c], 1e-8) << start.name << round;
      const double end = round % 2 ? 1. : -.1, xi = large.at(1), nu = start.props[1];
      EXPECT_NEAR(xi, small.at(1), 1e-12) << start.name << round;
      if (start.ndir == 3 && start.props[3] == nu && isLinear) {
        const double K = (start.props[0] + xi * (start.props[2] - start.props[0])) / (3 - 6 * nu);
        EXPECT_NEAR((large.stress[0] + large.stress[1] + large.stress[2]) / 3,
                    K * end * (there[0] + there[1] + there[2]), 1e-8)
            << start.name << round;
      }
      left += xi > 0 && xi < 1;
    }
  }
  EXPECT_GT(left, 100);
}

TEST(Superelastic, FlatPlateausKeepTheirStress) {
  auto props = nitinol(0);
  props[6] = 520, props[7] = props[8] = 250;
  for (const Material& start : {wire(props), sheet(props), solid(props)})
    for (int parts : {1, 9}) {
      Material m = start;
      double now = 0;
      // strain, stress and fraction: xi = (strain - stress/E)/eps_L on a plateau
      for (const auto& [strain, stress] : {std::pair{.03, 520.}, {.07, 520.}, {.1, 1500.}, {.06, 250.}, {.02, 250.}}) {
        for (int k = 0; k < parts; ++k) m.pull((strain - now) / parts);
        now = strain;
        EXPECT_NEAR(m.stress[0], stress, 1e-6 * stress) << m.name;
        EXPECT_NEAR(m.at(1), (strain - stress / 60000) / .075, 1e-9) << m.name;
      }
    }
}

TEST(Superelastic, TemperatureMovesThePlateaus) {
  auto props = nitinol(0);
  props[11] = 6, props[12] = 8;
  for (Material m : {wire(props), solid(props)}) {
    m.stepAll({Strain{}}, 310);
    m.pull(.02, 310);
    EXPECT_GT(m.at(1), 0);
    EXPECT_NEAR(m.stress[0], 520 + 60 + 80 * m.at(1), 1e-3);
    const double xi = m.at(1), stress = m.stress[0];
    m.stepAll({Strain{}}, 250); // held and cooled: austenite goes on
    EXPECT_GT(m.at(1), xi);
    EXPECT_LT(m.stress[0], stress);
    // unloaded at 290 K: back along 300 - 80 to 200 - 80
    const double part = m.at(1);
    m.stepAll({Strain{}}, 290);
    for (const double axial : {-.011, -.002}) {
      m.pull(axial, 290);
      if (m.at(1) < part && m.at(1) > 0) {
        EXPECT_NEAR(m.stress[0], 120 + 100 * m.at(1) / part, 1e-2) << m.name;
      }
    }
    EXPECT_TRUE(m.at(1) < part && m.at(1) > 0);
    m.stepAll({Strain{}}, 500); // heated: martensite goes back
    EXPECT_EQ(m.at(1), 0);
  }
}

TEST(Superelastic, VolumeChangeOfItsOwn) {
  auto props = nitinol();
  props[13] = 0;
  Material m = solid(props);
  for (int k = 0; k < 10; ++k) m.pull(.009);
  EXPECT_EQ(m.at(1), 1);
  EXPECT_NEAR(m.at(2), .075, 1e-12);
  EXPECT_NEAR(m.at(2) + m.at(3) + m.at(4), 0, 1e-12);
  Material normal = solid(nitinol());
  for (int k = 0; k < 10; ++k) normal.pull(.009);
  EXPECT_NEAR(normal.at(2), .075, 1e-9);
  EXPECT_NEAR(normal.at(2) + normal.at(3) + normal.at(4), 3 * .15 * .075 / (kRoot + .15), 1e-12);
}

TEST(Superelastic, ShearOfABeamDoesItsWork) {
  Material beam("TVK_SUPER_ELASTIC_N1D", nitinol(), 8, 1, 1);
  for (int k = 0; k < 2; ++k) beam.step({.002, .0015});
  EXPECT_NEAR(beam.stress[1], 2 * 60000 / 2.6 * .003, 1e-9);
  EXPECT_NEAR(beam.internal[0] * beam.rho, .5 * 60000 * .004 * .004 + 2 * 60000 / 2.6 * .003 * .003, 1e-12);
}

TEST(Superelastic, ExponentialCourseOfAWire) {
  // clang-format off
  const double rows[][3] = {
      {.01, .016984755, 523.56860}, {.02, .14468599, 548.91303}, {.04, .40138680, 593.75939}, {.06, .6590192, 634.41367},
      {.08, .9156088, 679.76045},   {.09, 1, 900},               {.1, 1, 1500},               {.0841667, 1, 550},
      {.08, .9709279, 430.82447},   {.06, .74300744, 256.46654}, {.04, .48322299, 225.49655}, {.02, .21939857, 212.70642},
      {.01, .08710950, 208.00726},  {0, 0, 0}};
  // clang-format on
  for (const Material& start : {wire(exponential(), "_EXP"), solid(exponential(), "_EXP")})
    for (int parts : {1, 7}) {
      Material m = start;
      double now = 0;
      for (const auto& [strain, xi, stress] : rows) {
        for (int k = 0; k < parts; ++k) m.pull((strain - now) / parts);
        now = strain;
        EXPECT_NEAR(m.at(1), xi, 6e-8) << strain;
        EXPECT_NEAR(m.stress[0], stress, 6e-6 + (strain == .0841667 ? 4e-3 : 0)) << strain;
      }
    }
  Material m = wire(exponential(), "_EXP");
  m.steps({.1}, 20000), m.steps({-.1}, 20000);
  EXPECT_NEAR(m.internal[0] * m.rho, 26.96852, 1e-5) << "the loop";
  EXPECT_NEAR(m.inelastic[0], m.internal[0], 1e-12);
}

// Widths, speeds and moduli of any size: on the law, energy lost and not given back.
TEST(Superelastic, RandomPathsKeepToTheExponentialLaw) {
  Random random(4);
  int up = 0, down = 0;
  for (int round = 0; round < 200; ++round) {
    auto props = exponential(.1 * (round % 2), 60000 * std::pow(10, random.uniform(-.7, .7)));
    props[12] = std::pow(10, random.uniform(-4, 5)), props[13] = std::pow(10, random.uniform(-4, 5));
    props[6] = 520 + std::pow(10, random.uniform(-2, 3)), props[7] = std::min(props[6], 550.);
    for (const Material& start : {wire(props, "_EXP"), solid(props, "_EXP")}) {
      Material m = start;
      double total = 0;
      for (int k = 0; k < 30; ++k) {
        const double target = random.uniform(.001, .08), amount = target - std::exchange(total, target), xi = m.at(1),
                     F = m.at(8);
        const double lost = m.inelastic[0];
        m.step({amount, -.4 * amount, -.4 * amount, .2 * amount, 0, .1 * amount});
        const double x = m.at(1), now = m.at(8);
        EXPECT_TRUE(x >= 0 && x <= 1 && std::isfinite(m.stress[0]) && m.inelastic[0] >= lost);
        if (m.ndir == 3) continue;
        if (x > xi && x < 1 && F > 520 && F < props[6] - 1e-3 && now < props[6]) {
          ++up;
          const double a = 1 / (now - props[6]), b = 1 / (F - props[6]);
          EXPECT_NEAR(1 - x, (1 - xi) * std::exp(props[12] * (a - b)), 1e-9 + 1e-11 * props[12] * (a * a + b * b)) << k;
        } else if (x < xi && x > 0 && F < props[7] && F > 200.1 && now > 200) {
          ++down;
          const double a = 1 / (now - 200), b = 1 / (F - 200);
          EXPECT_NEAR(x, xi * std::exp(-props[13] * (a - b)), 1e-9 + 1e-11 * props[13] * (a * a + b * b)) << k;
        }
      }
    }
  }
  EXPECT_GT(up, 20);
  EXPECT_GT(down, 20);
}

} // namespace
