// What mechanics demands of the explicit analysis.
#include "tests/solver/models.h"
#include "tests/support/files.h"
#include "tests/support/random.h"

#include <cfenv>

namespace {

using namespace sharedanalysis;
using namespace sharedanalysis::test;
using solver::Analysis;
using solver::Case;
using solver::Ending;
using solver::Mesh;

using Physics = SolverTest;

std::vector<bool> outsideOf(const Mesh& mesh) {
  std::vector<bool> outside(mesh.nodes());
  for (int32_t node : mesh.findGroup("surface")->nodes) outside[node] = true;
  return outside;
}

// Moves the nodes inside.
void distort(Mesh& mesh, double amount, uint64_t seed) {
  Random random(seed);
  const std::vector<bool> outside = outsideOf(mesh);
  for (int32_t i = 0; i < 3 * mesh.nodes(); ++i) {
    const double shift = random.uniform(-amount, amount);
    if (!outside[i / 3]) mesh.coordinates[i] += shift;
  }
}

// The column of 1 x 1 x 6 m that is set twisting about its axis, fixed at its base.
Case twistingColumn(double endTime) {
  Case c = caseOf(neoHooke(17e6, 0.45, 1100), endTime);
  fix(c, "z0", "xyz");
  solver::InitialVelocity spin;
  spin.origin = {0.5, 0.5, 0};
  spin.rate = 105;
  spin.profileLength = 12;
  c.initialVelocities = {spin};
  return c;
}

TEST_F(Physics, PatchTestOfDistortedBricks) {
  Mesh mesh = box({4, 3, 3}, {1, 0.8, 0.7});
  distort(mesh, 0.05, 71);
  Case c = caseOf(neoHooke(1e6, 0.3, 1000), 0.1);
  c.linearViscosity = c.quadraticViscosity = 0;
  // the boundary moves with the affine velocity L X; so must the inside, which starts with it and feels no force
  const LongMatrix L = {{{1.0, 0.5, -0.3}, {0.2, -0.8, 0.4}, {0.1, 0.6, 0.7}}};
  const std::vector<bool> outside = outsideOf(mesh);
  for (int32_t i = 0; i < mesh.nodes(); ++i) { // a group for each node
    mesh.groups.push_back({"node" + std::to_string(i), 0, {i}, {}});
    solver::PrescribedMotion motion;
    solver::InitialVelocity start;
    motion.group = start.group = mesh.groups.back().name;
    for (int a = 0; a < 3; ++a) {
      for (int b = 0; b < 3; ++b) start.velocity[a] += static_cast<double>(L[a][b]) * mesh.coordinates[3 * i + b];
      if (outside[i]) motion.velocity[a] = constant(start.velocity[a]);
    }
    c.initialVelocities.push_back(start);
    if (outside[i]) c.motions.push_back(motion);
  }
  Analysis analysis(mesh, c, 2);
  ASSERT_TRUE(runsToTheEnd(analysis, c));
  const solver::Fields fields = analysis.fields();
  for (int32_t i = 0; i < 3 * mesh.nodes(); ++i)
    EXPECT_NEAR(fields.displacement[i], c.initialVelocities[i / 3].velocity[i % 3] * c.endTime, 1e-12);
  // one stress everywhere, that of F = 1 + L t: neo-Hooke in closed form
  const LongMatrix one = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}, F = one + c.endTime * L, b = F * transposed(F);
  const double J = static_cast<double>(determinant(F)), I1 = static_cast<double>(trace(b));
  const double mu = c.materials[0].shearModulus(), K = c.materials[0].bulkModulus();
  const LongMatrix stress = mu * std::pow(J, -5.0 / 3) * (b + -I1 / 3 * one) + K * (J - 1) * one;
  for (int e = 0; e < mesh.elements(); ++e)
    for (int a = 0; a < 3; ++a)
      for (int d = a; d < 3; ++d)
        EXPECT_NEAR(fields.stress[6 * e + kS33[a][d]], static_cast<double>(stress[a][d]), 1e-12 * K);
  const double energy = mu / 2 * (std::pow(J, -2.0 / 3) * I1 - 3) + K / 2 * (J - 1) * (J - 1);
  EXPECT_NEAR(analysis.energies().strain, energy * 0.56, 1e-9 * energy);
  EXPECT_NEAR(analysis.energies().hourglass, 0, 1e-15 * K);
  EXPECT_NEAR(analysis.energies().balance(), analysis.energies().kinetic, 2e-3 * energy) << "work of the boundary";
}

TEST_F(Physics, FreeFlightAndSpinKeepTheirMomenta) {
  Mesh mesh = box({6, 5, 4}, {0.6, 0.5, 0.4});
  distort(mesh, 0.02, 72);
  Case c = caseOf(neoHooke(1e6, 0.4, 1200), 0.05);
  solver::InitialVelocity start;
  start.velocity = {3, -2, 1};
  start.axis = {1, 2, 3};
  start.rate = 40; // deforms the body well
  start.origin = {0.3, 0.2, 0.2};
  c.initialVelocities = {start};
  Analysis analysis(mesh, c, 1);
  const auto p0 = analysis.linearMomentum(), l0 = analysis.angularMomentum();
  const double size = std::hypot(p0[0], p0[1], p0[2]), turn = std::hypot(l0[0], l0[1], l0[2]);
  ASSERT_TRUE(runsToTheEnd(analysis, c));
  EXPECT_GT(analysis.progress().increment, 50);
  EXPECT_GT(analysis.energies().strain, 1e-3 * analysis.energies().kinetic);
  const auto p1 = analysis.linearMomentum(), l1 = analysis.angularMomentum();
  for (int k = 0; k < 3; ++k) {
    EXPECT_NEAR(p1[k], p0[k], 1e-12 * size);
    EXPECT_NEAR(l1[k], l0[k], 1e-12 * turn);
  }
  c.endTime = 1e-3;
  c.initialVelocities[0].rate = 0;
  Analysis flight(mesh, c, 1);
  ASSERT_TRUE(runsToTheEnd(flight, c));
  for (double stress : flight.fields().stress) EXPECT_NEAR(stress, 0, 1e-8) << "translation alone";
  EXPECT_NEAR(flight.energies().strain + flight.energies().viscous, 0, 1e-9);
  c.endTime = 0.05, c.initialVelocities = {start};
  c.linearViscosity = 0;
  Analysis quadratic(mesh, c, 1);
  ASSERT_TRUE(runsToTheEnd(quadratic, c));
  EXPECT_GT(quadratic.energies().viscous, 0) << "viscosity takes energy";
}

// Springs k of the hourglass modes of a brick of mass m make omega^2 = 64 k/m; here k = h G 3 a/16 for cubes of edge a.
TEST_F(Physics, StiffHourglassSpringsBoundTheIncrement) {
  const double G = 1e6 / 2.6, rho = 1000, a = 0.5;
  const Mesh mesh = box({2, 2, 2}, {2 * a, 2 * a, 2 * a});
  Case c = caseOf(neoHooke(1e6, 0.3, rho), 1);
  c.linearViscosity = c.quadraticViscosity = 0, c.safetyFactor = 1;
  const auto increment = [&](double h) {
    c.hourglassCoefficient = h;
    return Analysis(mesh, c, 1).progress().stableIncrement;
  };
  for (const double h : {100.0, 1000.0}) EXPECT_NEAR(increment(h) / (a * std::sqrt(rho / (3 * h * G))), 1, 1e-12) << h;
  EXPECT_EQ(increment(0.1), increment(0.2)) << "the elastic bound";
}

// A step of velocity at one end; arrival is when the far station moves with half the speed.
double arrivalSpeed(double nu, double width) {
  const double E = 1e9, rho = 1000, length = 2.2, speed = 1e-4;
  const Mesh mesh = box({2, 2, 220}, {width, width, length});
  Case c = caseOf(neoHooke(E, nu, rho), 2.2e-3);
  move(c, "z0", "z", speed);
  Analysis analysis(mesh, c, 2);
  double t = 0;
  const auto arrival = [&](int layer) {
    double before = 0, now = 0;
    for (const double step = 2e-6; t < c.endTime; before = now) {
      EXPECT_EQ(analysis.advanceTo(t += step), Ending::Running);
      now = analysis.fields().velocity[3 * (layer * 9 + 4) + 2];
      if (now >= 0.5 * speed) return t - step * (now - 0.5 * speed) / (now - before);
    }
    ADD_FAILURE() << "the wave did not arrive";
    return t;
  };
  const double first = arrival(50);
  return 1.5 / (arrival(200) - first);
}

TEST_F(Physics, LongitudinalWavesTravelWithTheSpeedOfTheBar) {
  EXPECT_NEAR(arrivalSpeed(0.0, 0.02) / 1000, 1, 0.002) << "sqrt(E/rho) is the exact speed here";
  EXPECT_NEAR(arrivalSpeed(0.3, 0.02) / 1000, 1, 0.005) << "slender: lateral motion is free";
}

TEST_F(Physics, KineticEnergyAtTheStartConvergesToTheContinuum) {
  double last = 1e300;
  for (int n : {2, 4, 8}) {
    const Mesh mesh = box({n, n, 6 * n}, {1, 1, 6});
    const Case c = twistingColumn(0.1);
    const double error = std::abs(Analysis(mesh, c, 1).energies().kinetic / 3031875.0 - 1);
    EXPECT_LT(error, 0.3 * last);
    last = error;
  }
  EXPECT_LT(last, 0.035);
}

// Largest departure of the energy balance from its start, relative to it.
double worstBalance(const Mesh& mesh, const Case& c, int stops) {
  Analysis analysis(mesh, c, 2);
  const double start = analysis.energies().balance();
  double worst = 0;
  for (int k = 1; k <= stops; ++k) {
    const Ending ending = analysis.advanceTo(c.endTime * k / stops);
    EXPECT_EQ(ending, k == stops ? Ending::Complete : Ending::Running);
    worst = std::max(worst, std::abs(analysis.energies().balance() / start - 1));
  }
  return worst;
}

TEST_F(Physics, EnergyIsBalancedAndItsErrorFallsWithTheSquareOfTheIncrement) {
  const Mesh mesh = box({4, 4, 24}, {1, 1, 6});
  EXPECT_LT(worstBalance(mesh, twistingColumn(0.1), 40), 0.01);
  Case c = twistingColumn(0.02);
  c.linearViscosity = c.quadraticViscosity = 0;
  c.safetyFactor = 0.8;
  const double coarse = worstBalance(mesh, c, 10);
  c.safetyFactor = 0.4;
  const double fine = worstBalance(mesh, c, 10);
  EXPECT_LT(coarse, 0.005);
  EXPECT_LT(fine, 0.35 * coarse);
}

// Times of output, in stable increments, that come one after the other.
TEST_F(Physics, EachOutputCostsAtMostOneIncrementMore) {
  const Mesh mesh = box({1, 1, 1}, {1, 1, 1});
  const Case c = caseOf(neoHooke(1e6, 0.3, 1000), 1e3);
  for (const std::vector<double>& gaps : std::vector<std::vector<double>>{
           {0.7}, {0.99}, {1.01}, {1.3}, {1.9}, {2.1}, {2.5}, {5.3}, {20.5}, {1.95, 0.05}, {3.3, 1e-6, 0.6, 7.7}}) {
    Analysis analysis(mesh, c, 1);
    const double stable = analysis.progress().stableIncrement;
    double last = 0, longest = 0, time = 0, most = 8; // until it is as long as it may be
    analysis.setObserver([&](const auto&, double step) { longest = std::max(longest, last = step / stable); });
    for (std::size_t k = 0; k < 60; ++k) {
      const double gap = gaps[k % gaps.size()];
      most += std::ceil(gap) + (gaps.size() > 1);
      analysis.advanceTo(time += gap * stable);
      EXPECT_EQ(analysis.progress().time, time);
      if (gaps.size() == 1 && k > 40) {
        EXPECT_NEAR(last, gap / std::ceil(gap), 1e-9) << "all of one length";
      }
    }
    EXPECT_LE(static_cast<double>(analysis.progress().increment), most) << testing::PrintToString(gaps);
    EXPECT_LE(longest, 1) << testing::PrintToString(gaps);
  }
}

// A caller that rounds upwards gets the same bits, and its mode back.
TEST_F(Physics, TheCallersFloatingPointModeChangesNothing) {
  const Mesh mesh = box({4, 4, 24}, {1, 1, 6});
  const Case c = twistingColumn(0.01);
  const auto results = [&](int threads) {
    Analysis analysis(mesh, c, threads);
    analysis.advanceTo(0.01);
    const auto fields = analysis.fields();
    std::vector<double> all(fields.stress.begin(), fields.stress.end());
    all.insert(all.end(), fields.displacement.begin(), fields.displacement.end());
    for (const double energy : analysis.energies().values()) all.push_back(energy);
    for (const double momentum : analysis.angularMomentum()) all.push_back(momentum);
    return all;
  };
  const std::vector<double> plain = results(1);
  for (const int threads : {1, 2}) {
    std::fesetround(FE_UPWARD);
    const std::vector<double> other = results(threads);
    EXPECT_EQ(std::fegetround(), FE_UPWARD);
    std::fesetround(FE_TONEAREST);
    EXPECT_EQ(other, plain);
  }
}

TEST_F(Physics, ModelsThatCannotStart) {
  const auto expect = [](const Mesh& mesh, const Case& c, const std::string& words) {
    const std::string text = thrown<solver::InputError>([&] { Analysis analysis(mesh, c, 1); });
    EXPECT_TRUE(contains(text, words)) << text;
  };
  const Mesh good = box({2, 2, 2}, {1, 1, 1});
  const Case c = caseOf(neoHooke(1e6, 0.3, 1000), 1);
  Case twice = c, leaving = c, stiff = c, bare = c;
  fix(twice, "x0", "x");
  fix(twice, "y0", "xy");
  expect(good, twice, "nothing"); // the same motion twice
  move(leaving, "x0", "xy", 2);
  leaving.symmetryPlanes = {{"all", {0.6, 0.8, 0}}};
  expect(good, leaving, "node 1 is moved out of the symmetry plane of group \"all\"");
  expect(good, caseOf(neoHooke(1e6, 0.3, 1e-320), 1), "brick 1 of material \"solid\" has a mass of ");
  stiff.linearViscosity = 1e300;
  expect(good, stiff, "brick 1 of material \"solid\" has a stable increment of 0 s");
  bare.sections.clear();
  expect(good, bare, "belongs to no section");
}

TEST_F(Physics, CollapseAndInvertedBricksEndTheAnalysis) {
  // a plate that is driven through its opposite face
  const Mesh mesh = box({2, 2, 2}, {1, 1, 1});
  Case c = caseOf(neoHooke(1e5, 0.0, 1000), 1);
  fix(c, "z0", "xyz");
  move(c, "z1", "z", -50);
  Analysis analysis(mesh, c, 1);
  const Ending ending = analysis.advanceTo(c.endTime);
  EXPECT_TRUE(ending == Ending::Distorted || ending == Ending::IncrementCollapsed);
  EXPECT_EQ(ending == Ending::Distorted, !analysis.distortedElements().empty());
  EXPECT_EQ(analysis.advanceTo(c.endTime), ending);
  EXPECT_LT(analysis.progress().time, c.endTime);
  // a top that goes down through its foot in one increment, and nearly a quarter turn about: the volume is not that of the mean
  Mesh one = box({1, 1, 1}, {1, 1, 1});
  constexpr double end = 1e-6, way = 0.9, height = 1 - 1.25 * way;
  Case turned = caseOf(neoHooke(1e5, 0.0, 1000), end);
  turned.linearViscosity = turned.quadraticViscosity = 0;
  fix(turned, "z0", "xyz");
  move(turned, "z1", "z", (height - 1) / end);
  for (const auto& [node, axis, speed] : {std::tuple{4, "x", way}, {5, "y", way}, {7, "x", -way}, {6, "y", -way}}) {
    one.groups.push_back({"top" + std::to_string(node), 0, {node}, {}});
    move(turned, one.groups.back().name, axis, speed / end);
  }
  Analysis press(one, turned, 1);
  EXPECT_EQ(press.advanceTo(end), Ending::Distorted);
  EXPECT_NEAR(press.takeEvents(1).first.at(0).value, height * (1 - way + way * way * 2 / 3), 1e-12);
}

} // namespace
