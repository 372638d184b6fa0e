// Moulded plastics among the built-in user materials: closed forms, energy, failure, independence of the increment.
#include "tests/support/user_material.h"

namespace {

using namespace sharedanalysis::test;
using Material = UserMaterial;
using Rows = Values;

const Rows kTension = {40e6, 0, 50e6, .05, 55e6, .2, 80e6, 1};

// Properties behind E and nu by what they are, and the tables.
struct Plastic {
  double f3 = 0, f5 = 0, k0 = 0, kS = 0, f = 0, tau = 0, k1 = 0, k2 = 0;
  Rows tension = kTension, compression = scaled(kTension, 1.3), ductile = {}, shear = {}, factors = {};
  std::array<double, 6> ratios = {1, 1, 1, 1, 1, 1};
  double E = 2e9, nu = .38;

  static Rows scaled(Rows rows, double factor) {
    for (std::size_t k = 0; k < rows.size(); k += 2) rows[k] *= factor;
    return rows;
  }
  std::vector<double> props() const {
    const auto rows = [](const Rows& r, std::size_t columns) { return static_cast<double>(r.size() / columns); };
    std::vector<double> p = {E, nu};
    p.insert(p.end(), ratios.begin(), ratios.end());
    for (double x : {k1, k2, rows(tension, 2), rows(compression, 2), rows(ductile, 3), rows(shear, 3), f3, f5, k0, kS,
                     f, tau, rows(factors, 2)})
      p.push_back(x);
    for (const Rows& r : {tension, compression, ductile, shear, factors}) p.insert(p.end(), r.begin(), r.end());
    return p;
  }
  // shears: 3 a solid, 1 plane stress, 2 plane strain
  Material material(int shears = 3, int points = 1) const {
    Material m("TVK_THERMOPLASTIC", props(), 14, 3, shears == 3 ? 3 : 1, points);
    m.callInfo[0] = shears;
    m.dt = 1;
    return m;
  }
};
Plastic constant(double tension, double compression) {
  return {.tension = {tension, 0}, .compression = {compression, 0}};
}

TEST(Plastic, UniaxialTestsAreOnTheirCurvesInOneStepOrMany) {
  const struct {
    double strain, stress, plastic;
  } rows[] = {{.12, 51.475410, .094262}, {-.12, -66.590538, .086705}, {.05, 45.454545, 0},
              {.3, 57.230769, 0},        {-.05, -57.522124, 0},       {-.3, -74.058193, 0}};
  for (const auto& [f3, f5] : {std::pair{0., 0.}, {.5, 1.2}, {.5, 4.5}})
    for (const auto& row : rows)
      for (int shears : {1, 3})
        for (int parts : {1, 40}) {
          Material m = Plastic{f3, f5}.material(shears);
          for (int k = 0; k < parts; ++k) m.pull(row.strain / parts);
          EXPECT_NEAR(m.stress[0] / MPa, row.stress, 1e-6) << f3 << " " << shears << " " << parts;
          EXPECT_NEAR(m.at(1), row.plastic != 0 ? row.plastic : std::abs(row.strain) - std::abs(row.stress) / 2e3,
                      1e-6);
          // plastic Poisson's ratio
          const double ratio = (9 - 2 * f5) / (18 + 2 * f5);
          EXPECT_NEAR(m.at(3), -ratio * m.at(2), 1e-7);
          EXPECT_NEAR(m.at(4), -ratio * m.at(2), 1e-7);
          EXPECT_NEAR(m.at(12), std::abs(m.stress[0]), 1);
          EXPECT_NEAR(m.at(13), row.strain > 0 ? 1. / 3 : -1. / 3, 1e-7);
          if (shears == 1) {
            EXPECT_NEAR(m.at(11), m.at(4) - .38 / 2e9 * m.stress[0], 1e-7);
          }
        }
}

TEST(Plastic, SurfaceAndFlowInOtherStates) {
  const auto value = [](Plastic p, int shears, Strain e, int component) {
    Material m = p.material(shears);
    m.step(e);
    return std::array{m.stress[component] / MPa, m.at(1), m.at(11)};
  };
  const Strain shear = {0, 0, 0, .05, 0, 0}, biaxial = {.05, .05, 0, 0, 0, 0};
  const Plastic flat = constant(40e6, 52e6);
  for (int shears : {1, 2, 3}) EXPECT_NEAR(value(flat, shears, shear, 3)[0], std::sqrt(40 * 52 / 3.), 1e-9);
  EXPECT_NEAR(value(flat, 1, biaxial, 0)[0], 35.159304, 1e-6);
  for (int shears : {2, 3}) {
    EXPECT_NEAR(value(flat, shears, {.2, .2, .2, .01, 0, 0}, 0)[0], 57.777778, 1e-6) << "the apex";
    EXPECT_NEAR(value(flat, shears, {-.2, -.2, -.2, 0, 0, 0}, 1)[0], -.6 * 2e3 / (3 * .24), 1e-9) << "no end";
  }
  EXPECT_NEAR(value(Plastic{}, 3, shear, 3)[0], 30.710935, 1e-6);
  EXPECT_NEAR(value(Plastic{}, 3, shear, 3)[1], .03326629, 1e-8);
  const double rows[2][5] = {{0, 0, 44.603844, .07234562, -.08929508}, {.5, 1.2, 41.962888, .06360519, -.05132908}};
  for (const auto& row : rows) {
    const auto v = value(Plastic{row[0], row[1]}, 1, biaxial, 0);
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(v[k], row[2 + k], k == 0 ? 1e-6 : 1e-8);
    Material m = Plastic{row[0], row[1]}.material(3);
    m.pull(.05, 300, true);
    EXPECT_NEAR(m.stress[0] / MPa, row[2], 1e-5) << "a solid without stress across";
  }
  // closed caps by f3, on both sides: q = 0 and f3 p^2 = f1 + f2 p
  for (const auto& [st, sc] : {std::pair{40e6, 52e6}, {52e6, 40e6}})
    for (double sign : {1., -1.}) {
      Plastic capped = constant(st, sc);
      capped.f3 = .9;
      Material m = capped.material();
      m.step({.3 * sign, .3 * sign, .3 * sign, 1e-4, 0, 0});
      const double p = m.pressure();
      EXPECT_NEAR(.9 * p * p, 1.1 * (st * sc + 3 * (sc - st) * p), 1e-6 * st * sc);
      EXPECT_GT(-sign * p, 0);
    }
  // yield ratios in plane stress
  Plastic hill = constant(40e6, 40e6);
  hill.ratios = {1, .7, 1, .9, 1, 1};
  EXPECT_NEAR(value(hill, 1, shear, 3)[0], 40 * .9 / std::sqrt(3.), 1e-9);
  EXPECT_NEAR(value(hill, 2, shear, 3)[0], 40 / std::sqrt(3.), 1e-9) << "the ratios count as one";
  for (double along : {1., .7}) {
    hill.ratios[0] = along, hill.ratios[1] = 1.7 - along;
    Material one = hill.material(1);
    one.pull(.1);
    EXPECT_NEAR(one.stress[0] / MPa, 40 * along, 1e-6);
  }
}

TEST(Plastic, VonMisesOfLinearHardening) {
  Random random(3);
  Plastic p;
  p.tension = p.compression = {40e6, 0, 140e6, 1};
  const double G = 2e9 / 2.76;
  Material m = p.material();
  m.name.replace(0, 18, "TVK_MOLDED_PLASTIC");
  m.props[14] = m.props[15] = -7; // not read
  for (int k = 0; k < 500; ++k) {
    const Strain e = randomStrain(random, .05);
    const auto old = m.stress;
    const double mean = (e[0] + e[1] + e[2]) / 3, before = m.at(1), p0 = m.pressure();
    double trial = 0;
    for (int c = 0; c < 6; ++c)
      trial += (c < 3 ? 1.5 : 3) * std::pow(old[c] + (c < 3 ? p0 : 0) + 2 * G * (e[c] - (c < 3 ? mean : 0)), 2);
    m.step(e);
    const double expected = std::max(0., (std::sqrt(trial) - 40e6 - 100e6 * before) / (3 * G + 100e6));
    EXPECT_NEAR(m.at(1) - before, expected, 1e-9 * (1 + expected));
    EXPECT_NEAR(m.mises(), std::min(std::sqrt(trial), 40e6 + 100e6 * m.at(1)), 1);
  }
}

TEST(Plastic, RateThroughTheFilter) {
  Plastic p;
  p.factors = {1, .01, 1.4, 1, 2, 100};
  const double speeds[][2] = {{0, 1}, {1e-5, 1}, {.1, 1.2}, {1, 1.4}, {10, 1.7}, {1e5, 2}};
  for (const auto& [rate, factor] : speeds)
    for (int shears : {1, 3}) {
      Material m = p.material(shears);
      // deviator of a shear strain e: sqrt(2/3 2 e^2) = 2 e/sqrt 3
      m.time = 1;
      m.dt = rate > 0 ? 2 * .05 / std::sqrt(3.) / rate : 0;
      m.step({0, 0, 0, .05, 0, 0});
      Plastic fast;
      fast.tension = Plastic::scaled(kTension, factor), fast.compression = Plastic::scaled(kTension, 1.3 * factor);
      Material expected = fast.material(shears);
      expected.step({0, 0, 0, .05, 0, 0});
      EXPECT_NEAR(m.stress[3], expected.stress[3], 1e-6 * MPa) << rate;
      EXPECT_NEAR(m.at(8), rate, 1e-12 * rate);
    }
  p.tau = .1;
  for (int parts : {1, 10}) {
    Material m = p.material();
    m.dt = .3 / parts;
    m.steps({0, 0, 0, .15 * std::sqrt(3.), 0, 0}, parts);
    EXPECT_NEAR(m.at(8), 1 - std::exp(-3.), 1e-12);
  }
  // in plane stress with the elastic strain across, whatever the host's
  Material m = p.material(1);
  m.props[19] = 0;
  m.step({.03, .01, std::nan(""), 0, 0, 0});
  const double e33 = -.38 / .62 * .04, mean = (.04 + e33) / 3;
  EXPECT_NEAR(m.at(8),
              std::sqrt(2. / 3 * (std::pow(.03 - mean, 2) + std::pow(.01 - mean, 2) + std::pow(e33 - mean, 2))), 1e-15);
}

TEST(Plastic, FailureStrains) {
  // eta from -2 to 2 in plane stress, and the damage of a plastic strain
  Plastic p = constant(40e6, 40e6);
  p.ductile = {.3, 2, 1}, p.k0 = .5;
  p.shear = {.25, .6, 1}, p.kS = .15, p.f = 1.5;
  const auto failureStrains = [](const Plastic& plastic, const Strain& e, int shears) {
    Material m = plastic.material(shears);
    m.step(e);
    return std::array{m.at(1) / m.at(9), m.at(1) / m.at(10), 3 * m.at(13)};
  };
  const double t = .1;
  const struct {
    Strain e;
    double eta, ductile, shear;
  } rows[] = {
      {{t, t, 0, 0, 0, 0}, 2, .3, .25}, {{-t, -t, 0, 0, 0, 0}, -2, 2, .6}, {{0, 0, 0, t, 0, 0}, 0, .7452624, .250461}};
  for (const auto& row : rows) {
    const auto v = failureStrains(p, row.e, 1);
    EXPECT_NEAR(v[0], row.ductile, 1e-7) << row.eta;
    EXPECT_NEAR(v[1], row.shear, 1e-6) << row.eta;
    EXPECT_NEAR(v[2], row.eta, 1e-12);
  }
  Material wide = p.material(1); // no plastic flow along 2: stress 2 is half of stress 1
  wide.stress = {40e6 / std::sqrt(.75), 20e6 / std::sqrt(.75), 0, 0};
  wide.step({t, 0, 0, 0, 0, 0});
  EXPECT_NEAR(wide.at(1) / wide.at(10), .264614, 1e-4);
  for (const auto& [sign, ductile, shear] : {std::array{1., .4634792, .247769}, {-1., 1.2172753, .406431}})
    for (int shears : {1, 3}) {
      Material m = p.material(shears);
      m.pull(sign * .2);
      EXPECT_NEAR(m.at(1) / m.at(9), ductile, 1e-6);
      EXPECT_NEAR(m.at(1) / m.at(10), shear, 1e-6);
    }
  // rates: straight in the logarithm
  p.ductile = {.3, 2, .1, .6, 1, 10};
  Material slow = p.material();
  slow.dt = 2 * t / std::sqrt(3.);
  slow.step({0, 0, 0, t, 0, 0});
  p.ductile = {.45, 1.5, 1};
  EXPECT_NEAR(slow.at(1) / slow.at(9), failureStrains(p, {0, 0, 0, t, 0, 0}, 3)[0], 1e-9);
  // directions of plane stress
  p.ductile = {.3, 2, 1}, p.k1 = .4, p.k2 = -.2;
  const double expected[] = {1, 1, 1.4};
  for (int k = 0; k < 3; ++k) {
    const double c = k == 0 ? 1 : k == 1 ? .5 : 0, s = k == 1 ? .5 : 0, n = .38;
    Plastic plain = p;
    plain.k1 = plain.k2 = 0;
    Material m = p.material(1), same = plain.material(1);
    for (Material* one : {&m, &same}) {
      one->stress = {38e6 * c, 38e6 * (1 - c), 0, 38e6 * s};
      one->step({.01 * (c - n * (1 - c)), .01 * (1 - c - n * c), 0, .01 * (1 + n) * s, 0, 0});
    }
    EXPECT_NEAR(same.at(9) / m.at(9), expected[k], 1e-12);
  }
}

TEST(Plastic, DeletedPointsKeepWhatTheyHad) {
  Plastic p = constant(40e6, 40e6);
  p.ductile = {.3, 2, 1}, p.k0 = .5;
  for (int shears : {1, 3}) {
    Material m = p.material(shears);
    m.pull(.02 + .46348 - .0005);
    EXPECT_EQ(m.at(14), 1);
    const double internal = m.internal[0], stress = m.stress[0];
    const Strain e = {.001, -.0005, -.0005, 0, 0, 0};
    m.step(e);
    EXPECT_EQ(m.at(14), 0);
    EXPECT_GE(m.at(9), 1);
    for (double s : m.stress) EXPECT_EQ(s, 0);
    EXPECT_NEAR(m.internal[0] - internal, .5 * stress * .001 / m.rho, 1e-3 * stress * .001 / m.rho);
    EXPECT_NEAR(m.internal[0], m.inelastic[0], 1e-12 * internal) << "nothing is left";
    const Material dead = m;
    m.step({.1, .2, -.1, .3, 0, 0});
    EXPECT_EQ(m.state, dead.state);
    EXPECT_EQ(m.stress, dead.stress);
    EXPECT_EQ(m.internal, dead.internal);
    EXPECT_EQ(m.inelastic, dead.inelastic);
  }
}

std::vector<Plastic> kinds() {
  std::vector<Plastic> all(4);
  all[1] = {.5, 1.2};
  all[2] = constant(40e6, 40e6);
  all[3] = {.3, 4.5}, all[3].compression = {}, all[3].ratios = {1, .8, 1.1, .9, 1, 1};
  return all;
}

TEST(Plastic, EnergyOfPaths) {
  Material m = constant(40e6, 40e6).material(1);
  m.pull(.02), m.pull(.08);
  EXPECT_NEAR(m.internal[0] * m.rho, 3.6e6, 1);
  EXPECT_NEAR(m.inelastic[0] * m.rho, 3.2e6, 1);
  for (const Plastic& kind : kinds())
    for (int shears : {1, 2, 3}) {
      Random random(9);
      Material point = kind.material(shears);
      for (int leg = 0; leg < 6; ++leg) {
        const Strain e = randomStrain(random, 3e-4, point.nshr);
        for (int k = 0; k < 100; ++k) {
          const double before = point.inelastic[0];
          point.step(e);
          EXPECT_GE(point.inelastic[0], before);
        }
        // what is not lost is the elastic energy of the stress
        double elastic = 0, trace = 0;
        for (int c = 0; c < 3 + point.nshr; ++c) {
          elastic += (c < 3 ? .5 : 1) * point.stress[c] * point.stress[c] * 1.38 / 2e9;
          if (c < 3) trace += point.stress[c];
        }
        elastic -= .5 * .38 / 2e9 * trace * trace;
        EXPECT_NEAR((point.internal[0] - point.inelastic[0]) * point.rho, elastic, 1e-9 * elastic + 1e-6);
      }
      EXPECT_GT(point.inelastic[0], 0);
    }
}

TEST(Plastic, PlaneStressIsTheSolidWithoutStressAcross) {
  for (const Plastic& kind : kinds()) {
    if (kind.ratios[1] != 1) continue;
    Random random(5);
    Material plane = kind.material(1), solid = kind.material(3);
    for (int k = 0; k < 20; ++k) {
      Strain e = randomStrain(random, .01, 1);
      const Material start = solid;
      const double thickness = plane.at(11);
      plane.step(e);
      e[2] = plane.at(11) - thickness;
      solid = start;
      solid.step(e);
      for (int c = 0; c < 4; ++c) EXPECT_NEAR(solid.stress[c], plane.stress[c], 1e-7 * MPa) << k;
      EXPECT_NEAR(solid.at(1), plane.at(1), 1e-12);
      EXPECT_NEAR(solid.internal[0], plane.internal[0], 1e-9);
    }
  }
}

// Straight between rows, the end slopes outside.
double at(const Rows& curve, double x) {
  std::size_t r = 0;
  while (r + 4 < curve.size() && x >= curve[r + 3]) r += 2;
  return curve[r] + (curve[r + 2] - curve[r]) / (curve[r + 3] - curve[r + 1]) * (x - curve[r + 1]);
}

// Any increment and rough curves: on the surface.
TEST(Plastic, IncrementsOfAnySize) {
  Random random(11);
  for (int round = 0; round < 200; ++round) {
    Plastic p = {round % 3 * .4, round % 4 * .7, .5, .15, 1.5};
    p.ductile = {1e3, 2e3, 1}, p.shear = {1e3, 1.2e3, 1};
    p.factors = {1, .01, 2, 100};
    for (Rows* curve : {&p.tension, &p.compression}) {
      curve->clear();
      double strain = 0;
      for (int r = 0; r < 25; ++r, strain += random.uniform(.001, .1))
        curve->insert(curve->end(), {random.uniform(2e7, 9e7), strain});
    }
    for (int shears : {1, 2, 3}) {
      Material m = p.material(shears, 5);
      m.time = 1;
      for (double size : {1e-4, .01, 1., 10., 100.})
        for (double dt : {0., 1e-9, 1., 1e9}) {
          std::vector<Strain> e;
          for (int i = 0; i < 5; ++i) e.push_back(randomStrain(random, size, m.nshr));
          m.dt = dt;
          Material other = m;
          m.stepAll(e);
          for (int i = 0; i < 5; ++i) {
            for (int c = 0; c < 3 + m.nshr; ++c) EXPECT_TRUE(std::isfinite(m.stress[c * 5 + i]));
            for (int v = 0; v < 14; ++v) EXPECT_TRUE(std::isfinite(m.state[v * 5 + i])) << v;
            const double q = m.mises(i), pressure = m.pressure(i), k = 1 + p.f3 / 9, factor = dt == 1e-9 ? 2 : 1;
            const double st = std::max(2., factor * at(p.tension, m.state[i])),
                         sc = std::max(2., factor * at(p.compression, m.state[i]));
            if (m.state[i] > other.state[i] && q > 1 && dt != 1) {
              EXPECT_NEAR(p.f3 * pressure * pressure + q * q, k * (st * sc + 3 * (sc - st) * pressure),
                          1e-9 * (sc * st + q * q) + 1e-14 * q * std::abs(pressure));
            }
            EXPECT_TRUE(std::isfinite(m.internal[i]) && m.inelastic[i] >= other.inelastic[i]);
          }
        }
    }
  }
}

} // namespace
