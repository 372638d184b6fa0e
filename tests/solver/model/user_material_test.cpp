// Built-in user materials in the solver: along the paths of the driver, turned with their points, and in a bar.
#include "reference_host.h"
#include "solver/program/material_path.h"
#include "tests/solver/models.h"

#include "glo.h"

#include <gtest/gtest.h>

namespace {

using namespace sharedanalysis;
using namespace sharedanalysis::test;

solver::Material alloy() {
  solver::Material m;
  m.name = m.userName = "TVK_SUPER_ELASTIC_N3D";
  m.model = solver::findModel("user");
  m.density = 6500;
  m.constants = {60e9, .3, 60e9, .3, .075, 520e6, 600e6, 300e6, 200e6, 754.06e6, 300, 0, 0, -1};
  return m;
}
solver::Material glass(double deletionStrain) {
  solver::Material m;
  m.name = m.userName = "TVK_JH2";
  m.model = solver::findModel("user");
  m.density = 2530;
  m.constants = {30.4e9, .93,    .088, .003, .35,    .77,    1,     .15e9, .5,
                 5.95e9, 2.92e9, .053, .85,  45.4e9, -138e9, 290e9, 1,     deletionStrain};
  return m;
}

class UserMaterials : public testing::Test {
protected:
  void SetUp() override { Shared_Analysis_XP_initialize(&counter_); }
  void TearDown() override { Shared_Analysis_XP_finalize(&counter_); }

private:
  int32_t counter_ = 0;
};

TEST_F(UserMaterials, DriverFindsThePlateaus) {
  solver::MaterialPath path;
  path.name = "tension";
  path.turns = {1.05, 1.0};
  const std::vector<solver::PathPoint> points = solver::follow(path, alloy());
  for (std::size_t k = 20; k < 100; ++k) { // on the upper plateau: strain = stress/E + 0.075 (stress - 520)/80
    const double strain = std::log(points[k].stretch), s = (strain + .075 * 520 / 80) / (1e6 / 60e9 + .075 / 80);
    EXPECT_NEAR(points[k].cauchy[0] / 1e6, s, 2e-3 * s) << k;
  }
  EXPECT_NEAR(points.back().nominal, 0, 1e4);
  // Cauchy stress that is linear in the strain gives its work back but for the change of volume
  EXPECT_NEAR(points.back().stored, 0, 5e-3 * points.back().lost);
  EXPECT_GT(points.back().lost, 0);
}

TEST_F(UserMaterials, DataThatTheLibraryRefusesAreInputErrors) {
  solver::checkData(alloy());
  solver::Material bad = alloy();
  bad.constants[4] = 0;
  try {
    solver::checkData(bad);
    ADD_FAILURE();
  } catch (const solver::InputError& error) {
    EXPECT_STREQ(error.what(),
                 "material \"TVK_SUPER_ELASTIC_N3D\": Property 5 of material TVK_SUPER_ELASTIC_N3D must be "
                 "greater than zero.");
  }
  host::openJob("next", "."); // takes the mark of the error away
  host::closeJob();
}

TEST_F(UserMaterials, StressTurnsWithItsPoint) {
  const solver::Material material = alloy();
  Random random(31);
  for (int round = 0; round < 5; ++round) {
    solver::UserPoints still(material, 1), turned(material, 1);
    for (int step = 0; step < 20; ++step) {
      // U grows along a path of its own; the other point turns anew in every step
      double U[3][3], V[6], F[9], Vt[6], Ft[9], stress[6], stressTurned[6], bound, bulk;
      for (int a = 0; a < 3; ++a)
        for (int b = a; b < 3; ++b) U[a][b] = U[b][a] = (a == b) + .002 * step * std::sin(round + 3 * a + b);
      Matrix R;
      randomRotation(random, R);
      for (int a = 0; a < 3; ++a)
        for (int b = 0; b < 3; ++b) {
          V[kS33[a][b]] = F[3 * a + b] = U[a][b];
          Ft[3 * a + b] = 0;
          double v = 0;
          for (int c = 0; c < 3; ++c) {
            Ft[3 * a + b] += R[a][c] * U[c][b];
            for (int d = 0; d < 3; ++d) v += R[a][c] * U[c][d] * R[b][d];
          }
          Vt[kS33[a][b]] = v;
        }
      still.respond(V, F, 1, stress, &bound, &bulk);
      turned.respond(Vt, Ft, 1, stressTurned, &bound, &bulk);
      still.remember(), turned.remember();
      for (int a = 0; a < 3; ++a)
        for (int b = 0; b < 3; ++b) {
          double expected = 0;
          for (int c = 0; c < 3; ++c)
            for (int d = 0; d < 3; ++d) expected += R[a][c] * stress[kS33[c][d]] * R[b][d];
          EXPECT_NEAR(stressTurned[kS33[a][b]], expected, 1e-2);
        }
      EXPECT_NEAR(turned.state(0, 0), still.state(0, 0), 1e-10);
    }
    EXPECT_GT(still.state(0, 0), 0) << "martensite";
  }
}

// A bar of 4 bricks whose end moves at constant speed.
solver::Case pulledBar(const solver::Material& material, double speed, double endTime) {
  solver::Case c = caseOf(material, endTime);
  fix(c, "x0", "x");
  fix(c, "y0", "y");
  fix(c, "z0", "z");
  solver::PrescribedMotion pull;
  pull.group = "x1";
  pull.velocity[0] = constant(speed);
  c.motions.push_back(pull);
  return c;
}

TEST_F(UserMaterials, BarOfAlloyReachesItsPlateauAndBalancesItsEnergy) {
  const solver::Mesh mesh = box({4, 1, 1}, {.04, .01, .01});
  const solver::Case c = pulledBar(alloy(), 2, .04 * .03 / 2);
  solver::Analysis analysis(mesh, c, 2);
  ASSERT_EQ(analysis.advanceTo(c.endTime), solver::Ending::Complete);
  const solver::Fields fields = analysis.fields();
  double mean = 0;
  for (int e = 0; e < 4; ++e) mean += fields.stress[6 * e] / 4;
  EXPECT_NEAR(mean / 1e6, 542, 25) << "waves run on the plateau";
  const solver::Energies e = analysis.energies();
  EXPECT_NEAR(e.balance(), 0, 5e-3 * e.external);
  EXPECT_GT(e.damage, .3 * e.external) << "work on the transformation";
}

TEST_F(UserMaterials, BrokenBricksLeaveTheModel) {
  const solver::Mesh mesh = box({4, 1, 1}, {.04, .01, .01});
  const solver::Case c = pulledBar(glass(1e-3), 4, 1e-4);
  solver::Analysis analysis(mesh, c, 1);
  ASSERT_EQ(analysis.advanceTo(c.endTime), solver::Ending::Complete);
  int gone = 0;
  const solver::Fields fields = analysis.fields();
  for (const double mask : fields.mask) gone += mask != 0 ? 1 : 0;
  EXPECT_GE(gone, 1);
  EXPECT_LT(gone, 4);
  EXPECT_NEAR(analysis.energies().balance(), 0, 2e-2 * std::abs(analysis.energies().external));
}

} // namespace
