// The exponential law of the superelastic alloy: printed course of a wire, increments of any size.
#include "tests/support/user_material.h"

namespace {

using namespace sharedanalysis::test;
using Material = UserMaterial;

TEST(SuperelasticExponential, CourseOfAWire) {
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
TEST(SuperelasticExponential, RandomPathsKeepToTheLaw) {
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
