// Loads, supports and prescribed motion against closed forms; in every case the energy balance knows their work.
#include "tests/solver/models.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

using namespace sharedanalysis;
using namespace sharedanalysis::test;
using solver::Analysis;
using solver::Case;
using solver::Curve;
using solver::History;
using solver::Mesh;
using solver::Quantity;

using Loads = SolverTest;

constexpr double kRho = 1000, kE = 1e6, kEnd = 0.02;

// A box of 0.2 x 0.2 x 0.4 m, 16 kg; what is done with it; what is then measured, and what it is exactly.
struct Truth {
  const char* name;
  double nu;
  std::function<void(Case&, Mesh&)> load;
  std::function<double(const Analysis&)> measure;
  double exact, tolerance; // relative
};

double meanOf(std::span<const double> field, std::size_t component, std::size_t components) {
  double sum = 0;
  for (std::size_t k = component; k < field.size(); k += components) sum += field[k];
  return sum * static_cast<double>(components) / static_cast<double>(field.size());
}
const auto shiftX = [](const Analysis& a) { return meanOf(a.fields().displacement, 0, 3); };
const auto speedX = [](const Analysis& a) { return meanOf(a.fields().velocity, 0, 3); };

// All nodes follow a history along x.
std::function<void(Case&, Mesh&)> led(History history) {
  return [history](Case& c, Mesh&) {
    start(c, {3, 0, 0});
    solver::PrescribedMotion motion{"all", {}};
    motion.velocity[0] = history;
    c.motions.push_back(motion);
  };
}
const std::vector<double> kTimes{0, kEnd}, kBeyond{-kEnd, kEnd}, kRise{0, 2}, kFall{4, 2};

TEST_F(Loads, AreThoseOfMechanics) {
  const Truth truths[] = {
      {"displacement", 0.3, led({{0, 2 * kEnd}, kRise, Curve::Linear, Quantity::Displacement}), shiftX, 1, 1e-13},
      {"its speed", 0.3, led({{0, 2 * kEnd}, kRise, Curve::Linear, Quantity::Displacement}), speedX, 1 / kEnd, 1e-12},
      // 2 (10 s^3 - 15 s^4 + 6 s^5) at s = 1/4
      {"smooth displacement", 0.3, led({{0, 4 * kEnd}, kRise, Curve::Smooth, Quantity::Displacement}), shiftX,
       2 * 0.103515625, 1e-13},
      {"smooth velocity", 0.3, led({kTimes, kRise, Curve::Smooth}), shiftX, kEnd, 1e-3},
      {"acceleration", 0.3, led({kTimes, {2, 2}, Curve::Linear, Quantity::Acceleration}), shiftX,
       3 * kEnd + kEnd * kEnd, 1e-13},
      // from the middle of a straight line on, 3 to 2
      {"linear acceleration", 0.3, led({kBeyond, kFall, Curve::Linear, Quantity::Acceleration}), speedX, 3 + 2.5 * kEnd,
       1e-13},
      {"smooth acceleration", 0.3, led({kTimes, kRise, Curve::Smooth, Quantity::Acceleration}), speedX, 3 + kEnd,
       1e-13},
      {"its way", 0.3, led({kTimes, kRise, Curve::Smooth, Quantity::Acceleration}), shiftX,
       3 * kEnd + 2 * kEnd * kEnd / 7, 1e-5},
  };
  for (const Truth& truth : truths) {
    SCOPED_TRACE(truth.name);
    Mesh mesh = box({2, 2, 4}, {0.2, 0.2, 0.4});
    Case c = caseOf(neoHooke(kE, truth.nu, kRho), kEnd);
    truth.load(c, mesh);
    Analysis analysis(mesh, c, 2);
    const double before = analysis.energies().balance();
    ASSERT_TRUE(runsToTheEnd(analysis, c));
    EXPECT_NEAR(truth.measure(analysis) / truth.exact, 1, truth.tolerance);
    const solver::Energies e = analysis.energies();
    EXPECT_NEAR(e.balance(), before, 2e-3 * (e.total() + std::abs(e.external)));
  }
}

} // namespace
