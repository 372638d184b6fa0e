// Built-in user materials in the solver: along the paths of the driver, turned with their points, and in a bar.
#include "bench/plain/user_rows.h"
#include "reference_host.h"
#include "solver/model/text.h"
#include "solver/program/material_path.h"
#include "tests/solver/files.h"
#include "tests/support/turns.h"

namespace {

using namespace sharedanalysis;
using namespace sharedanalysis::test;

solver::Material userMaterial(const char* name, double density, std::vector<double> constants) {
  solver::Material m;
  m.name = m.userName = name;
  m.model = solver::findModel("user");
  m.density = density;
  m.constants = std::move(constants);
  return m;
}
solver::Material alloy() {
  return userMaterial("TVK_SUPER_ELASTIC_N3D", 6500,
                      {60e9, .3, 60e9, .3, .075, 520e6, 600e6, 300e6, 200e6, 754.06e6, 300, 0, 0, -1});
}
solver::Material glass(double deletionStrain) {
  return userMaterial("TVK_JH2", 2530,
                      {30.4e9, .93, .088, .003, .35, .77, 1, .15e9, .5, 5.95e9, 2.92e9, .053, .85, 45.4e9, -138e9,
                       290e9, 1, deletionStrain});
}

solver::Material sheet(solver::Material material, double across) {
  material.acrossModulus = across;
  return material;
}

using UserMaterials = SolverTest;

TEST_F(UserMaterials, DataThatTheLibraryRefusesAreInputErrors) {
  solver::checkData(alloy());
  solver::Material bad = alloy();
  bad.constants[4] = 0;
  EXPECT_EQ(
      thrown<solver::InputError>([&] { solver::checkData(bad); }),
      "material \"TVK_SUPER_ELASTIC_N3D\": Property 5 of material TVK_SUPER_ELASTIC_N3D must be greater than zero.");
  const WorkingDirectory directory;
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
      double V[6], F[9], Vt[6], Ft[9], stress[6], stressTurned[6], bound, bulk;
      const Matrix R = randomRotation(random),
                   U = matrixBy([&](int a, int b) {
                     return (a == b) + .002 * step * std::sin(round + 3 * std::min(a, b) + std::max(a, b));
                   }),
                   RU = R * U, V3 = RU * transposed(R);
      for (int a = 0; a < 3; ++a)
        for (int b = 0; b < 3; ++b) {
          V[kS33[a][b]] = F[3 * a + b] = U[a][b];
          Vt[kS33[a][b]] = V3[a][b], Ft[3 * a + b] = RU[a][b];
        }
      still.respond(V, F, 1, stress, &bound, &bulk);
      turned.respond(Vt, Ft, 1, stressTurned, &bound, &bulk);
      still.remember(), turned.remember();
      const Matrix turnedStress = R * tensorOf(stress) * transposed(R);
      for (int a = 0; a < 3; ++a)
        for (int b = 0; b < 3; ++b) EXPECT_NEAR(stressTurned[kS33[a][b]], turnedStress[a][b], 1e-2);
      EXPECT_NEAR(turned.state(0, 0), still.state(0, 0), 1e-10);
    }
    EXPECT_GT(still.state(0, 0), 0) << "martensite";
  }
}

// What the stable increment takes for viscosity is the change of the stress with the rate of deformation, at a rate of 10 /s.
TEST_F(UserMaterials, ViscosityOfAFoamIsTheSlopeOfItsStress) {
  const std::vector<double> rows = {1, 3, 100, 3, 0, 0, 2e4, .05, 2e5, .5, 0, 0, 3e4, .05, 3e5, .5};
  for (const int number : {0, 1, 2, 3, 4, 5}) {
    const double filter = number % 2 * 1e-4;
    const char* names[] = {"TVK_RATE_SENSITIVE_FOAM", "TVK_FU_CHANG_ISO_FOAM", "TVK_FU_CHANG_ANISO_FOAM"};
    std::vector<double> data[] = {
        {4e5, 0, 0, .2, 3, filter, 2}, {4e5, 0, .2, 3, filter, 2}, {4e5, 0, .2, 3, filter, 2, 0, 0, 0, 0, 0}};
    std::vector<double>& properties = data[number / 2];
    properties.insert(properties.end(), rows.begin(), rows.end());
    const solver::Material foam = userMaterial(names[number / 2], 60, properties);
    solver::UserPoints points(foam, 1);
    double stress[6], bound, bulk;
    const auto press = [&](double stretch) {
      const double c = number / 2 == 1 ? .8 : 1, s = number / 2 == 1 ? .6 : 0,
                   e = stretch - 1; // isotropic: along any axis
      const double V[6] = {1 + e * c * c, 1 + e * s * s, 1, e * c * s};
      const double F[9] = {V[0], V[3], 0, V[3], V[1], 0, 0, 0, 1};
      points.respond(V, F, 1e-5, stress, &bound, &bulk);
      return c * c * stress[0] + s * s * stress[1] + 2 * c * s * stress[3];
    };
    double stretch = 1;
    while (stretch > .7) press(stretch -= 1e-4), points.remember();
    // by component, of the longest stretch, 1
    const double more = 1e-6, slow = press(stretch - 1e-4), share = number / 2 == 2 ? stretch * stretch : 1,
                 viscosity = share * points.viscosity()[0];
    EXPECT_NEAR(viscosity, (slow - press(stretch - 1e-4 - more)) / (more / stretch / 1e-5), .05 * viscosity) << number;
    press(stretch + 1e-4);
    EXPECT_EQ(filter > 0 || points.viscosity()[0] == 0, true) << "unloading follows no rate";
  }
}

// Cloth without loss in a brick that is turned, sheared and pressed flat: the work of its stress is what it stores.
TEST_F(UserMaterials, SheetsInBricksStoreTheirWork) {
  const solver::Material cloth = sheet(
      userMaterial("TVK_FABRIC", 700, {2, 2, 0, 0, 0, 90, 2e6, 0, 0, 0, 0, .5, 0, 0, 0, 0, 20e6, .1, 0, 0, 30e6, .1}),
      5e7);
  const Matrix to = {{{1.15, .2, -.1}, {-.15, 1.1, .05}, {.2, .1, .85}}}, part = 1 / 2000. * (to + -1 * kIdentity);
  solver::UserPoints points(cloth, 1);
  Matrix F = kIdentity, P{};
  double work = 0, stored = 0, lost = 0;
  for (int step = 1; step <= 2000; ++step) {
    F = F + part;
    const Matrix b = F * transposed(F);
    double V[6], stress[6], bound, bulk;
    for (int i = 0; i < 3; ++i)
      for (int j = i; j < 3; ++j) V[kS33[i][j]] = b[i][j];
    const int32_t one = 1;
    GLO_UTI_SQRTV(&one, V, V);
    points.respond(V, F[0].data(), 1e-3, stress, &bound, &bulk);
    points.remember();
    const Matrix before = P;
    P = tensorOf(stress) * cofactors(F);
    work += .5 * trace(transposed(before + P) * part);
  }
  points.energies(&stored, &lost);
  EXPECT_NEAR(stored + lost, work, 1e-4 * work);
  EXPECT_LT(lost, 1e-3 * work);
}

// A bar of 4 bricks whose end moves at constant speed.
TEST_F(UserMaterials, BrokenBricksLeaveTheModel) {
  const solver::Mesh mesh = box({4, 1, 1}, {.04, .01, .01});
  solver::Case c = caseOf(glass(1e-3), 1e-4);
  for (const char* axis : {"x", "y", "z"}) fix(c, std::string(axis) + "0", axis);
  move(c, "x1", "x", 4);
  solver::Analysis analysis(mesh, c, 1);
  ASSERT_TRUE(runsToTheEnd(analysis, c));
  const solver::Fields fields = analysis.fields();
  const auto gone = 4 - std::count(fields.mask.begin(), fields.mask.end(), 0);
  EXPECT_GE(gone, 1);
  EXPECT_LT(gone, 4);
  EXPECT_NEAR(analysis.energies().balance(), 0, 2e-2 * std::abs(analysis.energies().external));
}

// Every model of solids that is not brittle: those of the benchmark, and what they leave out.
std::vector<solver::Material> everySolid() {
  std::vector<solver::Material> all;
  for (const plain::UserRow& row : plain::userRows()) {
    const double density = row.name.ends_with("FOAM") ? 60 : row.name == "TVK_HONEYCOMB" ? 80 : 1150;
    const bool isAlloy = row.name.starts_with("TVK_SUPER_ELASTIC"), isBrittle = row.props[0] > 1e10 && density > 80;
    if (!row.isSheet && (isAlloy || !isBrittle))
      all.push_back(userMaterial(row.name.c_str(), isAlloy ? 6500 : density, row.props));
    if (row.name == "TVK_THERMOPLASTIC") all.push_back(userMaterial("TVK_MOLDED_PLASTIC", density, row.props));
    if (row.name != "TVK_RATE_SENSITIVE_FOAM") continue;
    all.push_back(all.back()); // with its other damping
    all.back().constants[2] = 5e-3, all.back().constants[5] = 0;
  }
  return all;
}

// The case of a material with its curves as tables, every other one in a file.
std::string tabulated(const solver::Material& m) {
  const solver::UserModel& model = *solver::userModelOf(m.userName);
  std::string text =
      "[[material]]\nname = \"a\"\ndensity = 1\nmodel = \"user\"\nuser = \"" + m.userName + "\"\nproperties = [";
  for (const std::size_t k : solver::scalarsOf(model)) text += solver::exactNumber(m.constants[k]) + ", ";
  text += "]\n";
  int number = 0;
  for (const solver::CurveView& curve : solver::curvesOf(model, m.constants)) {
    const bool isFile = ++number % 2 == 0;
    std::string names = "note", rows;
    text += "[[material.curve]]\nname = \"" + curve.kind->name + "\"\n";
    if (curve.rate) text += "rate = " + solver::exactNumber(*curve.rate) + "\n";
    for (std::size_t c = 0; c < curve.kind->columns.size(); ++c) {
      if (!isFile) text += curve.kind->columns[c].key + std::string(" = [");
      for (std::size_t r = 0; r < curve.count && !isFile; ++r) text += solver::exactNumber(curve.at(r, c)) + ", ";
      if (!isFile) text += "]\n";
      names += std::string(";") + curve.kind->columns[c].key;
    }
    if (!isFile) continue;
    for (std::size_t r = 0; r < curve.count; ++r) {
      rows += "-";
      for (std::size_t c = 0; c < curve.kind->columns.size(); ++c) rows += "; +" + solver::exactNumber(curve.at(r, c));
      rows += "\r\n# comment\n";
    }
    const std::string file = "curve" + std::to_string(number) + ".csv";
    writeFile(file, names + "\n" + rows);
    text += "file = \"" + file + "\"\n";
  }
  return text + "[[path]]\nname = \"p\"\nmode = \"confined\"\nstretch = [0.9]\n";
}

TEST_F(UserMaterials, CurvesOfACaseAreThoseOfItsProperties) {
  const WorkingDirectory directory;
  std::vector<solver::Material> all = everySolid();
  all.push_back(userMaterial("TVK_FABRIC", 1, {2, 2,  3, 2, 0, 0,  1, 40, 2, 5,  1, 0,  0, .2, 0, 0,
                                               2, .1, 0, 0, 3, .1, 0, 0,  1, .1, 4, .2, 0, 0,  1, .1}));
  for (const solver::Material& material : all) {
    if (solver::userModelOf(material.userName)->curves.empty()) continue;
    writeFile("case.toml", tabulated(material));
    EXPECT_EQ(solver::readPathCase("case.toml").materials[0].constants, material.constants) << material.name;
  }
  const std::vector<std::string> said = solver::describeCurves(all[1]);
  ASSERT_EQ(said.size(), 3u);
  EXPECT_EQ(said[1], "curve compression at 1 1/s: 6 rows, strain 0 to 0.85, stress 0 to 1.4 MPa");
}

// Every model of solids in a block that is pushed together by a fifth and let go, at a speed below that of its waves: the
// increments are stable and the energies balance.
TEST_F(UserMaterials, EveryModelOfSolidsRunsInBricks) {
  std::vector<std::pair<solver::Material, double>> rows; // and the speed, in parts of that of waves
  for (const solver::Material& material : everySolid()) rows.emplace_back(material, .05);
  rows.emplace_back(
      sheet(userMaterial("TVK_PLY_FABRIC", 1600, {55e9, 53e9, .05, 4.2e9, 62e7, 57e7, 6e8, 55e7, 80e3, 1e5, 75e3,
                                                  95e3, 35e6, .22, .9,    30e6, 9e8,  .5,  0,    0,    0}),
            1e9),
      .002);
  const solver::Mesh mesh = box({3, 2, 2}, {.03, .02, .02});
  for (const auto& [material, part] : rows) {
    const double G = material.shearModulus(), K = material.bulkModulus();
    const double speed = part * std::sqrt((K + 4 * G / 3) / material.density), time = .2 * .03 / speed;
    solver::Case c = caseOf(material, 2 * time);
    fix(c, "x0", "xyz");
    solver::PrescribedMotion push{"x1", {}};
    push.velocity[0] = solver::History{{0, .2 * time, time, 1.2 * time}, {0, -speed, -speed, speed}};
    c.motions.push_back(push);
    solver::Analysis analysis(mesh, c, 1);
    double most = 0, worst = 0;
    for (int k = 1; k <= 20; ++k) {
      ASSERT_EQ(analysis.advanceTo(c.endTime * k / 20), k < 20 ? solver::Ending::Running : solver::Ending::Complete)
          << material.name;
      most = std::max(most, std::abs(analysis.energies().external));
      worst = std::max(worst, std::abs(analysis.energies().balance()));
    }
    EXPECT_LT(worst, 2e-2 * most) << material.name;
    const double least = material.name.starts_with("TVK_SUPER") ? .03 : .1; // part of the loop
    EXPECT_GT(analysis.energies().damage, least * most) << material.name;
  }
}

} // namespace
