// What holds for all built-in user materials: plain loops compute the same, axes do not matter, energy is not given back, the
// first call is elastic.
#include "bench/plain/user_rows.h"
#include "tests/support/user_material.h"

namespace {

using namespace sharedanalysis::test;
using Material = UserMaterial;

// Loops that were written from the equations, point after point, with the mathematics of the C library.
TEST(UserMaterials, PlainLoopsComputeTheSame) {
  Random random(41);
  const int32_t n = 300;
  const double dt = 1e-5;
  for (const plain::UserRow& row : plain::userRows()) {
    const int comps = row.isSheet ? 4 : 6;
    const Values temperature(n, 300.0), length(n, 1e-3), energy(n, 0.0);
    Values density(n), strain(6 * n), F(9 * n), stress(6 * n), state(row.states * n), Uo(6 * n), U(6 * n);
    plain::fillUserRow(row, n, density.data(), strain.data(), F.data(), stress.data(), state.data(), Uo.data(),
                       U.data(), [&](double low, double high) { return random.uniform(low, high); });
    Values out[2][4];
    for (auto& o : out) o[0].resize(comps * n), o[1].resize(row.states * n), o[2].resize(n), o[3].resize(n);
    std::string name = row.name;
    name.resize(80, ' ');
    callBuiltIn(0, n, 3, comps - 3, row.states, 0, static_cast<int32_t>(row.props.size()), 0, 1.0, 1.0, dt, name,
                nullptr, length, row.props, density, strain, nullptr, temperature, Uo, nullptr, nullptr, stress, state,
                energy, energy, temperature, U, F, nullptr, out[0][0], out[0][1], out[0][2], out[0][3]);
    row.loop(n, {row.props.data(), density.data(), strain.data(), F.data(), stress.data(), state.data(), energy.data(),
                 energy.data(), out[1][0].data(), out[1][1].data(), out[1][2].data(), out[1][3].data(), dt, Uo.data(),
                 U.data(), length.data()});
    const char* what[] = {"stress", "state", "internal", "inelastic"};
    for (int k = 0; k < 2 + row.energies; ++k)
      for (std::size_t c = 0; c < out[0][k].size() / n; ++c) {
        double size = 0, worst = 0;
        for (int i = 0; i < n; ++i) {
          const double a = out[0][k][c * n + i], b = out[1][k][c * n + i];
          size = std::max(size, std::abs(b)), worst = std::max(worst, std::abs(a - b));
          EXPECT_TRUE(a == a && b == b) << row.name << i;
        }
        EXPECT_LE(worst, 1e-9 * size) << row.name << ' ' << what[k] << ' ' << c;
      }
  }
}

// One point of a plain loop in many small increments of strain.
struct PlainPoint {
  const plain::UserRow& row;
  Values props, state = Values(row.states);
  double stress[6] = {}, internal = 0, inelastic = 0, volume = 1;

  void step(const Strain& e, double dt) {
    const double density = 2500, F[9] = {volume *= std::exp(e[0] + e[1] + e[2]), 1, 1};
    const Values before = state;
    double old[6], energies[] = {internal, inelastic};
    std::copy_n(stress, 6, old);
    row.loop(1, {props.data(), &density, e.data(), F, old, before.data(), &energies[0], &energies[1], stress,
                 state.data(), &internal, &inelastic, dt});
  }
};

// Pressed, sheared under pressure, and let go in part, at a constant rate in each leg: the equations of rate of the brittle
// materials, by many small steps of the plain loops, are met by any number of increments.
TEST(UserMaterials, BrittleOnesMeetTheirEquationsOfRate) {
  const Strain legs[] = {{-.6, -.5, -.4, .1, 0, .05}, {-.3, .1, 0, .8, -.3, .2}, {.15, .1, .05, -.4, .1, 0}};
  const std::pair<int, double> coarse[] = {{5000, 1e-3}, {400, 8e-3}, {50, .05}}; // increments, tolerance
  const auto rows = plain::userRows();
  const Material glass = jh2(kCeramics[2].props()), cement = hjc(concrete());
  Material carbide = jhb(siliconCarbide()), dense = phases(1);
  carbide.props[8] = dense.props[8] = 1; // reference rate
  for (const auto& [start, size] : {std::pair<const Material&, double>{glass, .06},
                                    {glass, .2},
                                    {carbide, .03},
                                    {carbide, .1},
                                    {dense, .1},
                                    {cement, .02},
                                    {cement, .1}}) {
    const std::string& name = start.name;
    const auto row = std::ranges::find_if(rows, [&](const auto& r) { return name.starts_with(r.name); });
    PlainPoint fine{*row, start.props};
    if (fine.props.size() == 20) { // phases at pressures that it does not reach
      fine.props.resize(18);
      fine.props.insert(fine.props.end(), {500 * GPa, 1.5, 300 * GPa, 200 * GPa, 0, .2});
    }
    std::vector<Material> all(std::size(coarse), start);
    for (const Strain& leg : legs) {
      const int steps = 40000;
      for (int k = 0; k < steps; ++k) fine.step(leg * (size / steps), 1e-3 / steps);
      const double P = -(fine.stress[0] + fine.stress[1] + fine.stress[2]) / 3;
      for (std::size_t k = 0; k < all.size(); ++k) {
        const auto& [count, tolerance] = coarse[k];
        Material& m = all[k];
        SCOPED_TRACE(m.name + std::to_string(count));
        m.dt = 1e-3 / count;
        m.steps(leg * size, count);
        const double scale = m.mises() + std::abs(P);
        for (int c = 0; c < 6; ++c) EXPECT_NEAR(m.stress[c], fine.stress[c], tolerance * scale) << c;
        EXPECT_NEAR(m.at(1), fine.state[0], tolerance * (m.at(1) + size));
        EXPECT_NEAR(m.at(2), fine.state[1], tolerance);
        EXPECT_NEAR(m.at(4), fine.state[3], tolerance * (m.name[4] == 'J' ? scale : 1)) << "bulking or compaction";
        EXPECT_NEAR(m.inelastic[0], fine.inelastic, tolerance * m.internal[0]);
      }
    }
    EXPECT_TRUE(all[0].at(2) > .05 && all[0].at(1) > 0);
  }
}

// The materials of the benchmark and those that it has not: in solids, sheets and wires.
struct Example {
  Material start;
  double size;      // of strains or of stretches beside 1
  bool isStretched; // its stress follows the stretch
  bool isIsotropic = true;
};
std::vector<Example> examples() {
  std::vector<Example> all = {{jh2(kCeramics[2].props()), .008, false},
                              {jhb(siliconCarbide()), .008, false},
                              {hjc(concrete()), .008, false},
                              {solid(nitinol(.1, 40000)), .008, false},
                              {sheet(nitinol(.1, 40000)), .03, false, false},
                              {wire(nitinol(.1, 40000)), .03, false, false}};
  for (const plain::UserRow& row : plain::userRows()) {
    const bool isStretched = row.longest > row.shortest;
    const bool isIsotropic = !row.isSheet && row.name != "TVK_HONEYCOMB" && row.name != "TVK_FU_CHANG_ANISO_FOAM";
    all.push_back(
        {{row.name, row.props, row.states, 3, row.isSheet ? 1 : 3}, isStretched ? .3 : .01, isStretched, isIsotropic});
  }
  return all;
}
// By random strains, or to random stretches.
Strain randomChange(Random& random, const Example& e, double size) {
  Strain change = randomStrain(random, size, e.start.nshr);
  for (int c = 0; c < 6 && e.isStretched; ++c) change[c] = c < 3 ? 1 + change[c] : .5 * change[c];
  return change;
}
void advance(Material& m, bool isStretched, const Strain& change) {
  if (isStretched)
    m.stretchTo(change);
  else
    m.step(change);
}

// Stages are left out where no point of a piece needs them: points at rest, that turn round, whose strains cancel or that are no
// numbers change no bit of those beside them.
TEST(UserMaterials, APointKnowsNoOther) {
  Random random(18);
  const int n = 80;
  for (const Example& e : examples()) {
    const Material& m = e.start;
    Material block(m.name, m.props, m.states, m.ndir, m.nshr, n);
    std::vector<Material> alone(n, m);
    std::vector<Strain> sum(n, Strain{});
    for (int k = 0; k < 5; ++k) {
      std::vector<Strain> increments(n);
      for (int i = 0; i < n; ++i) {
        Strain& inc = increments[i] = randomStrain(random, .3 * e.size, m.nshr);
        if (i % 16 == 3 || i >= 72) inc = Strain{};                    // at rest, and a piece of that
        if (i % 16 == 5 && k > 1) inc = sum[i] * (k == 2 ? -1 : -1.5); // back to the start, or beyond
        if (i == 37 && k == 3) inc[0] = std::numeric_limits<double>::quiet_NaN();
        for (int c = 0; c < 6; ++c) sum[i][c] += inc[c];
        alone[i].stepAll({inc});
      }
      block.stepAll(increments);
    }
    for (int i = 0; i < n; ++i) {
      const auto isSame = [&](const Values& one, const Values& all) {
        for (std::size_t c = 0; c < one.size(); ++c) {
          const double a = one[c], b = all[c * n + i];
          if (a != a ? b == b : std::memcmp(&a, &b, sizeof a) != 0) return false;
        }
        return true;
      };
      EXPECT_TRUE(isSame(alone[i].stress, block.stress) && isSame(alone[i].state, block.state) &&
                  isSame(alone[i].internal, block.internal) && isSame(alone[i].inelastic, block.inelastic))
          << m.name << i;
    }
  }
}

// The answer to a strain in other axes is the answer in other axes.
TEST(UserMaterials, AxesDoNotMatter) {
  Random random(8);
  for (const Example& e : examples())
    for (int round = 0; round < 4 && e.isIsotropic; ++round) {
      const Matrix R = randomRotation(random);
      Material plain = e.start, other = plain;
      plain.dt = other.dt = 1e-2;
      for (int k = 0; k < 40; ++k) {
        const Strain change = randomChange(random, e, e.size);
        advance(plain, e.isStretched, change), advance(other, e.isStretched, turnedBy(R, change.data()));
        const Strain s = turnedBy(R, plain.stress.data());
        const double size = plain.mises() + std::abs(plain.pressure()) + 1e-3 * plain.props[0];
        for (int c = 0; c < 6; ++c) EXPECT_NEAR(other.stress[c], s[c], 1e-8 * size) << plain.name << k;
        EXPECT_NEAR(other.internal[0], plain.internal[0], 1e-9 * (std::abs(plain.internal[0]) + size / plain.rho)) << k;
      }
    }
}

TEST(UserMaterials, AnyIncrementIsSoundAndGivesNoLossBack) {
  for (const Example& e : examples())
    for (double dt : {0., 1e-300, 1e-9, 1e-2, 1e9, 1e300})
      for (double size : {.1, 1., 10.}) {
        Random random(17);
        Material m = e.start;
        m.dt = dt, m.time = 1;
        for (int k = 0; k < 40; ++k) {
          const double lost = m.inelastic[0];
          m.volume[0] = 1;
          const double all = e.isStretched && size > .1 ? std::exp(size * random.uniform(-1.6, 1)) : 1;
          const Strain change = randomChange(random, e, e.isStretched ? .45 : size * e.size / .01) * all;
          advance(m, e.isStretched, change);
          m.expectSound(lost, std::to_string(k) + " dt " + std::to_string(dt) + " size " + std::to_string(size));
        }
      }
}

// Its stiffnesses C11, C12, C44 and, where it is another one, C22, in the first call.
TEST(UserMaterials, FirstCallIsElasticAndLeavesEnergiesAndState) {
  struct Row {
    Material m;
    double C11, C12, C44, C22 = C11;
  };
  std::vector<Row> rows;
  const auto isotropic = [&](const Material& m, double G, double K) {
    rows.push_back({m, K + 4 * G / 3, K - 2 * G / 3, 2 * G});
  };
  isotropic(jh2(kCeramics[2].props()), 30.4e9, 45.4e9), isotropic(phases(), 193e9, 201e9);
  isotropic(hjc(concrete()), 14.86e9, 16e9), isotropic(solid(nitinol()), 60000 / 2.6, 50000);
  const double plane = 60000 / (1 - .09), D = 1 - .05 * .05 * 53 / 55;
  rows.push_back({sheet(nitinol()), plane, .3 * plane, 60000 / 1.3});
  rows.push_back({wire(nitinol()), 60000, 0, 0});
  for (const Example& e : examples()) {
    const std::string name = e.start.name.substr(0, e.start.name.find(' '));
    if (name == "TVK_PLY_FABRIC") rows.push_back({e.start, 55e9 / D, .05 * 53e9 / D, 8.4e9, 53e9 / D});
    if (name == "TVK_FABRIC") rows.push_back({e.start, 1e9, 0, 2 * 5.2e6});
    if (name == "TVK_VISCOUS_FOAM") rows.push_back({e.start, 2 * 35e3 + 1e6 + 6e3, 6e3, 2 * 35e3 + 1e6});
    if (name.ends_with("FOAM") && name != "TVK_VISCOUS_FOAM") rows.push_back({e.start, 4e5, 0, 4e5});
    if (name == "TVK_HONEYCOMB") rows.push_back({e.start, 1e9, 0, .6e9, 1e8});
    if (name != "TVK_THERMOPLASTIC") continue;
    const double E = 2e9, nu = .38, G = E / (2 + 2 * nu), across = E / (1 - nu * nu);
    isotropic(e.start, G, E / (3 - 6 * nu));
    for (int shears : {1, 2}) { // plane stress, plane strain
      Material m(name, e.start.props, 14, 3, 1);
      m.callInfo[0] = shears;
      isotropic(m, G, E / (3 - 6 * nu));
      if (shears == 1) rows.back() = {m, across, nu * across, 2 * G};
    }
  }
  EXPECT_EQ(rows.size(), 16u);
  for (Row& row : rows) {
    Material& m = row.m;
    SCOPED_TRACE(m.name);
    for (Values* values : {&m.state, &m.internal}) std::fill(values->begin(), values->end(), .25);
    const Material start = m;
    m.dt = 0;
    const bool isSolid = m.nshr == 3, isOfFibers = row.C22 != row.C11;
    const Strain e = {.0005, -.0002, isSolid && !isOfFibers ? .0001 : 0, .0003, .0002, .0001};
    m.step(e);
    EXPECT_NEAR(m.stress[0], row.C11 * e[0] + (m.ndir > 1 ? row.C12 * (e[1] + e[2]) : 0), 1e-9 * row.C11);
    if (m.ndir > 1) {
      EXPECT_NEAR(m.stress[1], row.C22 * e[1] + row.C12 * (e[0] + e[2]), 1e-9 * row.C11);
      EXPECT_NEAR(m.stress[3], row.C44 * e[3], 1e-9 * row.C11);
    }
    if (isSolid && !isOfFibers) {
      EXPECT_NEAR(m.stress[4], row.C44 * e[4], 1e-9 * row.C11);
    }
    EXPECT_EQ(m.state, start.state);
    EXPECT_EQ(m.internal, start.internal);
    EXPECT_EQ(m.inelastic, start.inelastic);
  }
}

TEST(UserMaterials, PlaneStrainIsTheSolidWithoutTwoShears) {
  Random random(7);
  for (const Example& e : examples())
    if (e.start.nshr == 3) {
      Material solid = e.start, plane(solid.name, solid.props, solid.states, 3, 1);
      solid.dt = plane.dt = 1e-2, plane.callInfo[0] = 2;
      for (int k = 0; k < 300; ++k) {
        Strain change = randomChange(random, e, e.size);
        change[4] = change[5] = 0;
        advance(solid, e.isStretched, change), advance(plane, e.isStretched, change);
        const double close = e.isStretched ? 1e-9 : 0; // of principal stretches
        for (int c = 0; c < 4; ++c)
          EXPECT_NEAR(plane.stress[c], solid.stress[c], close * (solid.mises() + std::abs(solid.pressure())))
              << e.start.name;
        EXPECT_NEAR(plane.internal[0], solid.internal[0], close * std::abs(solid.internal[0])) << e.start.name;
        EXPECT_NEAR(plane.at(1), solid.at(1), close * std::abs(solid.at(1))) << e.start.name;
      }
    }
}

// Closed paths that end without stress: all work is lost, and what is lost stays so.
TEST(UserMaterials, ClosedCyclesLoseTheirWork) {
  struct {
    Material start;
    double size, trapezoid; // what the trapezoid of stress and strain differs by, in parts of the largest energy
  } rows[] = {{jh2(kCeramics[0].props(1e30)), .03, .015},
              {jh2(kCeramics[2].props(1e30)), .03, .015},
              {jhb(siliconCarbide()), .03, .02},
              {hjc(concrete()), .03, 5e-4},
              {solid(nitinol(.1)), .03, 1e-7},
              {solid(nitinol(.1, 40000)), .03, 1e-7},
              {solid(nitinol(.1, 80000)), .03, 1e-7},
              {sheet(nitinol(.1, 40000)), .03, 1e-7},
              {wire(nitinol(.1, 40000)), .05, 1e-7},
              {solid(exponential(.1, 40000), "_EXP"), .03, 1e-7},
              {phases(1), .03, .02}};
  for (const auto& row : rows)
    for (int round = 0; round < 5; ++round) {
      Random random(40 + round);
      Material m = row.start;
      const bool isAlloy = m.name[4] == 'S';
      const int comps = m.ndir == 1 ? 1 : m.ndir + m.nshr;
      double size = 0, work = 0;
      const auto go = [&](const Strain& e) {
        const Strain part = e * (1. / 300);
        for (int k = 0; k < 300; ++k) {
          const double before = m.inelastic[0];
          const auto old = m.stress;
          m.step(part);
          for (int c = 0; c < comps; ++c) work += (c < 3 ? .5 : 1) * (old[c] + m.stress[c]) * part[c] / m.rho;
          EXPECT_GE(m.inelastic[0], before);
          size = std::max(size, m.internal[0]);
        }
      };
      Strain total{};
      for (int leg = 0; leg < 4; ++leg) {
        Strain e{};
        for (int c = 0; c < comps; ++c) e[c] = leg == 3 ? 0 : random.uniform(-row.size, row.size);
        const double mean = (e[0] + e[1] + e[2]) / 3; // moderate pressure
        for (int c = 0; c < 3 && comps > 1 && leg < 3; ++c) e[c] -= isAlloy ? .9 * mean : .01;
        for (int c = 0; c < comps; ++c) std::swap(e[c], total[c]), e[c] = total[c] - e[c];
        go(e);
      }
      if (!isAlloy) { // off with the shear, then with the pressure
        Strain e{};
        for (int c = 0; c < 6; ++c) e[c] = -(m.stress[c] + (c < 3 ? m.pressure() : 0)) / (2 * m.props[0]);
        go(e);
        double low = -.3, high = .3;
        for (int k = 0; k < 100; ++k) {
          Material trial = m;
          const double x = .5 * (low + high) / 3;
          trial.step({x, x, x, 0, 0, 0});
          (trial.pressure() > 0 ? low : high) = 3 * x;
        }
        go({low / 3, low / 3, low / 3, 0, 0, 0});
      }
      EXPECT_NEAR(m.inelastic[0], m.internal[0], 1e-12 * size) << m.name << round;
      EXPECT_NEAR(work, m.internal[0], row.trapezoid * size) << m.name << round;
      EXPECT_GT(size, 0);
    }
}

} // namespace
