// Hyperelastic materials in the solver and in the driver: closed forms of tests, work and energy, cases of every model.
#include "reference_host.h"
#include "solver/input/case_reader.h"
#include "solver/model/text.h"
#include "solver/program/material_path.h"
#include "solver/results/drawing.h"
#include "tests/solver/files.h"
#include "tests/solver/models.h"

namespace {

using namespace sharedanalysis;
using namespace sharedanalysis::test;
using solver::Material;
using solver::MaterialPath;
using solver::PathPoint;

Material material(const char* model, std::vector<double> constants) {
  Material m;
  m.name = "rubber";
  m.model = solver::findModel(model);
  m.density = 1000;
  m.constants = std::move(constants);
  return m;
}
// Six terms of rubber or foam from the first ones.
Material powers(const char* model, const std::vector<std::array<double, 3>>& terms, double rD) {
  Material m = material(model, {0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 0, 0, 0, 0, 0});
  for (std::size_t t = 0; t < terms.size(); ++t)
    m.constants[2 * t] = terms[t][0], m.constants[2 * t + 1] = terms[t][1], m.constants[12 + t] = terms[t][2];
  if (rD > 0) m.constants[12] = rD;
  return m;
}

// The same rubber, nearly, by every model; G about 0.4 MPa, K = 200 MPa.
std::vector<Material> everyModel() {
  std::vector<double> long6(33, 0.0);
  long6[0] = 0.15e6, long6[1] = 0.05e6, long6[2] = 1e3, long6[27] = 1e8;
  Material curve = material("marlow", {1e8});
  curve.curveStretch = {1, 1.2, 1.5, 2, 3, 4};
  curve.curveStress = {0, 0.2e6, 0.4e6, 0.65e6, 1.0e6, 1.4e6};
  return {material("polynomial", {0.15e6, 0.05e6, 0, 0, 0, 1e8, 0}),
          material("polynomial6", long6),
          material("arruda-boyce", {0.4e6, 5, 1e-8}),
          material("van-der-waals", {0.4e6, 10, 0.2, 0.01, 1e-8}),
          powers("ogden", {{0.4095e6, 1.3, 0}, {0.003e6, 5, 0}, {0.01e6, -2, 0}}, 1e8),
          powers("hyperfoam", {{0.3e6, 4, 0.5}, {0.1e6, -2, 0.2}}, 0),
          curve};
}

class Materials : public SolverTest {
  WorkingDirectory directory_;
};

MaterialPath path(solver::Mode mode, std::vector<double> turns, int steps, bool byStress = false) {
  MaterialPath p;
  p.name = "path";
  p.mode = mode;
  p.turns = std::move(turns);
  p.byStress = byStress;
  p.steps = steps;
  return p;
}
std::vector<PathPoint> pathOf(const Material& m, solver::Mode mode, std::vector<double> turns, bool byStress = false,
                              int steps = 400) {
  return solver::follow(path(mode, std::move(turns), steps, byStress), m);
}
// What ends a path.
std::string failureOf(const Material& m, const MaterialPath& p) {
  return thrown<solver::InputError>([&] { solver::follow(p, m); });
}

// Work of the nominal stress up to each point, by the rule of trapezoids.
std::vector<double> workAlong(const std::vector<PathPoint>& points, double directions) {
  std::vector<double> work{0};
  for (std::size_t k = 1; k < points.size(); ++k)
    work.push_back(work.back() + directions * 0.5 * (points[k].nominal + points[k - 1].nominal) *
                                     (points[k].stretch - points[k - 1].stretch));
  return work;
}

TEST_F(Materials, WorkOfEveryModelIsItsEnergyInEveryMode) {
  for (const Material& m : everyModel())
    for (const auto& [mode, end, directions] : {std::tuple{solver::Mode::Uniaxial, 2.0, 1},
                                                {solver::Mode::Uniaxial, 0.6, 1},
                                                {solver::Mode::Equibiaxial, 1.6, 2},
                                                {solver::Mode::Planar, 1.8, 1},
                                                {solver::Mode::Volumetric, 1.02, 3},
                                                {solver::Mode::Shear, 0.8, 1}}) {
      if (m.model->reading == solver::Reading::TestCurve && end == 0.6) continue; // its tests are in tension
      const std::vector<PathPoint> points = pathOf(m, mode, {end, mode == solver::Mode::Shear ? 0.0 : 1.0});
      const std::vector<double> work = workAlong(points, directions);
      const double most = points[400].stored;
      EXPECT_GT(most, 0);
      for (const std::size_t k : {200U, 400U, 700U})
        EXPECT_NEAR(work[k], points[k].stored, 3e-3 * most) << m.model->name;
      EXPECT_NEAR(points.back().stored, 0, 1e-9 * most);
    }
}

TEST_F(Materials, SmallStrainAndTestsComeBack) {
  for (const Material& m : everyModel()) {
    const double G = m.shearModulus(), K = m.bulkModulus(), E = 9 * K * G / (3 * K + G);
    const std::vector<PathPoint> points = pathOf(m, solver::Mode::Uniaxial, {1.0001}, false, 1);
    EXPECT_NEAR(points[1].nominal / 1e-4, E, 2e-3 * E);
    EXPECT_NEAR(points[1].J, 1.0001 * points[1].free * points[1].free, 1e-12);
    EXPECT_NEAR((1 - points[1].free) / 1e-4, (3 * K - 2 * G) / (2 * (3 * K + G)), 1e-3);
  }
  const Material curve = everyModel().back();
  for (std::size_t k = 1; k < curve.curveStretch.size(); ++k) {
    const PathPoint p = pathOf(curve, solver::Mode::Uniaxial, {curve.curveStretch[k]}, false, 1)[1];
    EXPECT_NEAR(p.nominal, curve.curveStress[k], 1e-2 * curve.curveStress[k]) << "a bar gives its own test back";
  }
}

TEST_F(Materials, SofteningLosesWhatTheLoopEncloses) {
  for (Material m : everyModel()) {
    m.mullins = solver::Mullins{2, 0.1e6, 0.1};
    const std::vector<PathPoint> points = pathOf(m, solver::Mode::Uniaxial, {1.8, 1.0, 1.8});
    const std::vector<double> work = workAlong(points, 1);
    EXPECT_NEAR(work[400], points[400].stored + points[400].lost, 3e-3 * work[400]) << "on the primary path";
    EXPECT_NEAR(work[600], points[600].stored + points[600].lost, 3e-3 * work[400]) << "half way back";
    EXPECT_NEAR(points[800].stored, 0, 1e-3 * work[400]);
    EXPECT_NEAR(work[800], points[800].lost, 5e-3 * work[400]);
    EXPECT_GT(points[800].lost, 0.05 * work[400]);
    EXPECT_LT(points[600].nominal, points[200].nominal);
    EXPECT_NEAR(points[1000].nominal, points[600].nominal, 1e-6 * points[400].nominal) << "reloading as unloading";
    EXPECT_NEAR(points[1200].nominal, points[400].nominal, 1e-6 * points[400].nominal);
  }
}

TEST_F(Materials, StressIsReachedOrTheProgramSaysSo) {
  const Material m = everyModel()[0];
  const std::vector<PathPoint> points = pathOf(m, solver::Mode::Uniaxial, {0.5e6, -0.5e6}, true, 10);
  EXPECT_NEAR(points[10].nominal, 0.5e6, 1);
  EXPECT_NEAR(points[20].nominal, -0.5e6, 1);
  const PathPoint back = pathOf(m, solver::Mode::Uniaxial, {points[10].stretch}, false, 1)[1];
  EXPECT_NEAR(back.nominal, 0.5e6, 10);
  const std::string never = failureOf(material("polynomial", {0.2e6, 0, -0.05e6, 0, 0, 1e8, 0}),
                                      path(solver::Mode::Uniaxial, {5e6}, 10, true));
  EXPECT_TRUE(contains(never, "is not reached")) << never;
  // powers of 400 overflow
  const std::string far = failureOf(powers("ogden", {{1e6, 400, 0}}, 1e9), path(solver::Mode::Confined, {2, 100}, 2));
  EXPECT_TRUE(contains(far, "no finite number")) << far;
}

// ---- on a mesh

TEST_F(Materials, TwistedBlocksOfEveryModelKeepTheirEnergy) {
  const solver::Mesh mesh = box({3, 3, 6}, {0.1, 0.1, 0.2});
  for (Material m : everyModel()) {
    for (const bool softens : {false, true}) {
      if (softens) m.mullins = solver::Mullins{2, 0.05e6, 0.1};
      solver::Case c = caseOf(m, 0.03);
      fix(c, "z0", "xyz");
      solver::InitialVelocity spin;
      spin.rate = 60, spin.origin = {0.05, 0.05, 0}, spin.profileLength = 0.4;
      c.initialVelocities = {spin};
      solver::Analysis analysis(mesh, c, 2);
      const double start = analysis.energies().total();
      ASSERT_TRUE(runsToTheEnd(analysis, c));
      const solver::Energies e = analysis.energies();
      EXPECT_NEAR(e.total(), start, 0.01 * start) << m.model->name;
      EXPECT_GT(e.kinetic + e.strain, 0.2 * start);
      if (softens) {
        EXPECT_GT(e.damage, 0.01 * start);
      } else {
        EXPECT_EQ(e.damage, 0);
      }
    }
  }
}

TEST_F(Materials, FailedBricksLeaveAndTheirEnergyIsCounted) {
  const solver::Mesh mesh = box({2, 2, 8}, {0.02, 0.02, 0.08});
  Material m = everyModel()[0];
  m.failure = solver::DuctileFailure{.d1 = 0.3, .d2 = 0.4, .d3 = -1.5};
  solver::Case c = caseOf(m, 0.009);
  fix(c, "z0", "xyz");
  move(c, "z1", "z", 5);
  solver::Analysis one(mesh, c, 1), two(mesh, c, 2);
  const double start = one.energies().balance();
  ASSERT_TRUE(runsToTheEnd(one, c));
  ASSERT_TRUE(runsToTheEnd(two, c));
  const solver::Fields fields = one.fields();
  int failed = 0;
  for (std::size_t e = 0; e < fields.mask.size(); ++e)
    if (fields.mask[e] != 0) {
      ++failed;
      for (int k = 0; k < 6; ++k) EXPECT_EQ(fields.stress[6 * e + k], 0);
    }
  EXPECT_GT(failed, 0);
  EXPECT_LT(failed, 32);
  const solver::Energies e = one.energies();
  EXPECT_GT(e.damage, 0);
  EXPECT_NEAR(e.balance(), start, 4e-4 * e.external);
  EXPECT_EQ(two.energies().values(), e.values()) << "the same on two threads";
  // a brick fails at the same shear in all planes
  const solver::Mesh cube = box({1, 1, 1}, {0.02, 0.02, 0.02});
  double held[3];
  for (int axis = 0; axis < 3; ++axis) {
    const std::string face(1, "xyz"[axis]), along(1, "xyz"[(axis + 2) % 3]);
    solver::Case shear = caseOf(m, 0.009);
    fix(shear, face + "0", "xyz");
    move(shear, face + "1", along, 5);
    solver::Analysis brick(cube, shear, 1);
    brick.advanceTo(shear.endTime); // or until no brick is left
    held[axis] = brick.energies().damage;
    EXPECT_NEAR(held[axis] / held[0], 1, 1e-3);
  }
}

TEST_F(Materials, LockingEndsTheAnalysis) {
  host::openJob("locking", ".");
  const solver::Mesh mesh = box({1, 1, 2}, {0.01, 0.01, 0.02});
  solver::Case c = caseOf(material("van-der-waals", {0.4e6, 2.0, 0, 0, 1e-8}), 0.05);
  fix(c, "z0", "z");
  move(c, "z1", "z", 200); // an increment goes from below the locking stretch to beyond it
  solver::Analysis analysis(mesh, c, 1);
  EXPECT_EQ(analysis.advanceTo(c.endTime), solver::Ending::Stopped);
  EXPECT_LT(analysis.progress().time, c.endTime);
  host::closeJob();
  EXPECT_TRUE(contains(readFile("locking.msg"), "The locking stretch is reached"));
  host::openJob("next", "."); // takes the mark of the error away
  host::closeJob();
}

// ---- cases

std::string answer(const std::string& text) {
  writeFile("paths.toml", text);
  std::string sound;
  const std::string error = thrown<solver::InputError>([&] {
    const Material m = solver::readPathCase("paths.toml").materials[0];
    sound = "sound: G " + solver::shortNumber(m.shearModulus()) + ", K " + solver::shortNumber(m.bulkModulus());
  });
  return error == "nothing" ? sound : error;
}

TEST_F(Materials, CasesOfEveryModelAndTheirMistakes) {
  const auto with = [](const std::string& lines) {
    return answer("[[material]]\nname = \"a\"\ndensity = 1.0\n" + lines +
                  "\n[[path]]\nname = \"p\"\nmode = \"shear\"\nstretch = [0.1]\n");
  };
  writeFile("bad.csv", "stress;strain\n1;0,1\n");
  writeFile("two.csv", "stress,strain,stress\n1,0,2\n");
  // "user NAME" begins a user material, and "foam" one with a curve
  for (const Row& row : tableOf(R"(
C10 = 1.0; D1 = 0.1 => sound: G 2, K 20
model = "polynomial6"; C10 = 1.0; C33 = 2.0; D1 = 0.1; D6 = 1.0 => sound: G 2, K 20
model = "van-der-waals"; mu = 3.0; lambda_m = 8.0; D = 0.1 => sound: G 3, K 20
model = "arruda-boyce"; mu = 1.0; lambda_m = 2.0; D = 0.1 => sound: G 1.197, K 20
model = "ogden"; mu = [1.0, 2.0]; alpha = [2.0, -2.0]; D = [0.1] => sound: G 3, K 20
model = "hyperfoam"; mu = [3.0]; alpha = [2.0]; beta = [1.0] => sound: G 3, K 8
model = "marlow"; stretch = [1.5]; stress = [3.0]; D = 0.1 => sound: G 2, K 20
model = "ogden"; mu = [1.0, 2.0]; alpha = [2.0]; D = [0.1] => paths.toml:6:9: alpha has 1 number and mu has 2,
    expected as many of both
model = "ogdn"; D1 = 0.1 => paths.toml:4:9: no model "ogdn", expected one of polynomial, polynomial6, arruda-boyce,
    van-der-waals, ogden, hyperfoam, marlow, user
model = "arruda-boyce"; mu = 1.0; lambda_m = 3.0; D1 = 0.1 => paths.toml:7:1: unknown key "
model = "ogden"; mu = [1.0, -2.0]; alpha = [2.0, 2.0]; D = [0.1] => paths.toml:1:1: material "a" has a shear modulu
C10 = 1.0; D1 = 0.1; [[material.curve]]; strain = [0.0] => paths.toml:6:12: unknown key "curve" in material
user JH2 [1.0]; [[material.curve]]; strain = [0.0] => paths.toml:7:1: TVK_JH2 takes no curves
user HONEYCOMB [1.0] => paths.toml:6:14: properties has 1 number, expected at least 18 for TVK_HONEYCOMB, or 11 and [[
foam; rate = 1.0; strain = [0.0, 0.2, 0.2]; stress = [0.0, 1.0, 2.0] => paths.toml:9:21: strain goes from 0.2 to 0.2,
    expected increasing numbers
foam; rate = 1.0; strain = [0.0, 0.2]; stress = [0.0] => paths.toml:9:10: strain has 2 numbers and stress has 1
foam; strain = [0.0]; stress = [0.0] => paths.toml:8:10: curve "compression" has 1 row, expected at least 2
foam; rate = 2.0; strain = [0.0, 0.2]; stress = [0.0, 1.0]; [[material.curve]]; rate = 2.0; strain = [0.0, 0.2];
    stress = [0.0, 1.0] => paths.toml:12:8: rate goes from 2 to 2, expected the curves "compression" in the order of
    their rates
foam; strain = [0.0, 0.2]; stress = [0.0, 1.0]; [[material.curve]]; rate = 2.0; strain = [0.0, 0.2]; stress = [0.0,
    1.0] => paths.toml:7:1: rate is missing in curve
foam; name = "11"; strain = [0.0, 0.2]; stress = [0.0, 1.0] => paths.toml:8:8: no curve "11" of
    TVK_RATE_SENSITIVE_FOAM, expected "compression"
user MOLDED_PLASTIC [1.0, 0.3, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0]; [[material.curve]]; name = "rate factor";
    factor = [1.0]; rate = [1.0] => paths.toml:7:1: no curve "tension" or "compression" of TVK_MOLDED_PLASTIC,
    expected one
foam; file = "none.csv" => paths.toml:8:8: none.csv: cannot be opened: No such file or directory
foam; file = "two.csv" => paths.toml:8:8: two.csv:1:15: a second column stress, expected one of them
foam; file = "bad.csv" => paths.toml:8:8: bad.csv:2:3: strain is "0,1", expected a finite number
C10 = 1.0; D1 = 0.1; [material.mullins]; r = 2.0; m = 0.0 => paths.toml:8:5: m and beta are both 0, expected one of
    them to be positive
C10 = 1.0; D1 = 0.1; [material.failure]; d1 = 2.0; transition_temperature = 5.0; melting_temperature = 4.0 =>
    paths.toml:9:23: melting_temperature is not above transition_temperature, expected K above it
C10 = 1.0; D1 = 0.1; [material.failure]; d1 = 2.0; transition_temperature = 5.0; melting_temperature = 5.0 =>
    paths.toml:9:23: melting_temperature is not above transition_temperature, expected K above it)")) {
    std::string lines = row[0];
    if (lines.starts_with("foam"))
      lines.replace(0, 4, "user RATE_SENSITIVE_FOAM [1, 0, 0, 1, 1, 0]\n[[material.curve]]");
    if (lines.starts_with("user ")) {
      lines.replace(0, 5, "model = \"user\"\nuser = \"TVK_");
      lines.replace(lines.find(" ["), 1, "\"\nproperties = ");
    }
    EXPECT_EQ(with(lines).substr(0, row[1].size()), row[1]) << lines;
  }
  for (const char* r : {"0.5", "1.0", "-2.0"}) { // more than all the stress would be taken
    const std::string said = with("C10 = 1.0\nD1 = 0.1\n[material.mullins]\nr = " + std::string(r) + "\nm = 1.0");
    EXPECT_TRUE(said.starts_with("paths.toml:7:5: ") && contains(said, "expected a number above 1")) << said;
  }
}

TEST_F(Materials, ProgramWritesTableAndPicture) {
  solver::PathCase c;
  c.title = "Rubber & steel <test>";
  c.materials = {everyModel()[0]};
  c.paths = {path(solver::Mode::Uniaxial, {2}, 4), path(solver::Mode::Shear, {-0.5}, 2)};
  c.paths[0].name = "tension", c.paths[0].data = {{1.5, 2}, {0.3e6, 0.5e6}};
  std::vector<std::vector<PathPoint>> results;
  for (const MaterialPath& path : c.paths) results.push_back(solver::follow(path, c.materials[0]));
  solver::writeTable("t.csv", c, results);
  solver::writeDrawing("t.svg", c, results);
  const std::string table = readFile("t.csv"), picture = readFile("t.svg");
  EXPECT_EQ(linesOf(table).size(), 1u + 5 + 3);
  EXPECT_TRUE(table.starts_with("path,stretch,free_stretch,volume_ratio,nominal_stress")) << table;
  EXPECT_TRUE(contains(picture, "Rubber &amp; steel &lt;test>") && contains(picture, "tension (circles: test)"));
  EXPECT_EQ(countOf("<circle", picture), 2);
}

} // namespace
