// Loads, supports and prescribed motion against closed forms; in every case the energy balance knows their work.
#include "tests/solver/models.h"

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

constexpr double kRho = 1000, kE = 1e6, kEnd = 0.02, kBulk = kE / 1.2;

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

// All nodes follow a history along x, against gravity, whose work the supports take.
std::function<void(Case&, Mesh&)> led(History history) {
  return [history](Case& c, Mesh&) {
    start(c, {3, 0, 0}), c.gravity = {-7, 0, 0};
    solver::PrescribedMotion motion{"all", {}};
    motion.velocity[0] = history;
    c.motions.push_back(motion);
  };
}
const History kSlowly{{0, 0.1}, {0, 2e5}, Curve::Smooth};
const std::vector<double> kTimes{0, kEnd}, kBeyond{-kEnd, kEnd}, kRise{0, 2}, kFall{4, 2};

// A load by the key of its table.
std::function<void(Case&, Mesh&)> loaded(const std::string& key, const std::string& group, History history,
                                         std::array<double, 3> direction = {1, 0, 0}, bool perNode = false) {
  return [=](Case& c, Mesh&) {
    for (const solver::LoadKind& kind : solver::loadKinds)
      if (kind.key == key) c.loads.push_back({&kind, key, group, history, direction, perNode});
  };
}
const auto momentumX = [](const Analysis& a) { return a.linearMomentum()[0]; };
const auto momentumZ = [](const Analysis& a) { return a.linearMomentum()[2]; };

// The pressure on the face x1 of a stiff body that turns about z by 1 rad: its force turns as well.
void pressOnTurning(Case& c, Mesh& mesh) {
  c.materials[0] = neoHooke(1e9, 0.3, kRho);
  c.initialVelocities = {{"", {}, {.1, .1, 0}, {0, 0, 1}, 1 / kEnd, {}}};
  loaded("pressure", "x1", constant(1e4))(c, mesh);
}
// The half of the box near x = 0 as a group of its own.
void pullHalf(Case& c, Mesh& mesh) {
  solver::Group half{"half", 3, mesh.groups[0].nodes, {}};
  for (int32_t e = 0; e < mesh.elements(); e += 2) half.elements.push_back(e);
  mesh.groups.push_back(half);
  loaded("local_gravity", "half", constant(2))(c, mesh);
}

// An eighth of a box under pressure, between its planes of symmetry; turned anyhow, and as it is.
void pressEighth(Case& c, Mesh& mesh) {
  c.linearViscosity = c.quadraticViscosity = 0; // its wave speed is an upper bound that depends a little on the axes
  for (const char* face : {"x1", "y1", "z1"}) loaded("pressure", face, {kTimes, {0, 2e4}, Curve::Smooth})(c, mesh);
  for (const char* face : {"x0", "y0", "z0"}) fix(c, face, std::string(1, face[0]));
}
void pressTurnedEighth(Case& c, Mesh& mesh) {
  pressEighth(c, mesh);
  c.motions.clear();
  const double turned[3][3] = {{0.48, -0.6, 0.64}, {0.36, 0.8, 0.48}, {-0.8, 0, 0.6}};
  for (int32_t i = 0; i < mesh.nodes(); ++i) {
    std::array<double, 3> x{};
    for (int a = 0; a < 3; ++a)
      for (int b = 0; b < 3; ++b) x[a] += turned[a][b] * mesh.coordinates[3 * i + b];
    std::copy(x.begin(), x.end(), &mesh.coordinates[3 * i]);
  }
  for (int b = 0; b < 3; ++b)
    c.symmetryPlanes.push_back({std::string(1, "xyz"[b]) + "0", {turned[0][b], turned[1][b], turned[2][b]}});
  c.symmetryPlanes.push_back(c.symmetryPlanes[1]); // once more
}
double strainEnergyOf(std::function<void(Case&, Mesh&)> load) {
  Mesh mesh = box({2, 2, 4}, {0.2, 0.2, 0.4});
  Case c = caseOf(neoHooke(kE, 0.3, kRho), kEnd);
  load(c, mesh);
  Analysis analysis(mesh, c, 1);
  analysis.advanceTo(kEnd);
  return analysis.energies().strain;
}
const auto strainEnergy = [](const Analysis& a) { return a.energies().strain; };
// Led along x in planes that lean by 45 degrees.
void ride(Case& c, Mesh&) {
  move(c, "all", "x", 2);
  c.symmetryPlanes = {{"all", {std::sqrt(0.5), std::sqrt(0.5), 0}}};
}
const auto shiftY = [](const Analysis& a) { return meanOf(a.fields().displacement, 1, 3); };

void fly(Case& c, Mesh&) {
  start(c, {3, 0, 0});
  c.damping = 20;
}
// Brought to rest.
std::function<void(Case&, Mesh&)> still(std::function<void(Case&, Mesh&)> load, double end) {
  return [=](Case& c, Mesh& mesh) {
    load(c, mesh);
    c.quasiStatic = true;
    c.endTime = end;
  };
}
// A column on its foot under its own weight, the half above prescribed as a load of its bricks.
void stand(Case& c, Mesh& mesh) {
  fix(c, "z0", "z");
  c.gravity = {0, 0, -0.5};
  loaded("local_gravity", "all", constant(-0.5), {0, 0, 1})(c, mesh);
}
const auto shiftOfTop = [](const Analysis& a) { return a.fields().displacement.back(); };
const auto footReaction = [](const Analysis& a) { return 45 * meanOf(a.fields().reaction, 2, 3); };
const auto stressZ = [](const Analysis& a) { return meanOf(a.fields().stress, 2, 6); };

// A slender bar in front of a wall, one of them moving with 0.03 m/s: they touch for twice the way of a wave, 0.0632 s.
std::function<void(Case&, Mesh&)> bar(double body, double wall, double end) {
  return [=](Case& c, Mesh& mesh) {
    mesh = box({1, 1, 80}, {0.05, 0.05, 1});
    c.linearViscosity = 0, c.safetyFactor = 0.5;
    start(c, {0, 0, body});
    c.planes.push_back({"wall", "", {0, 0, 0}, {0, 0, 1}, 0, constant(wall), {0, 0, 1}});
    c.endTime = end;
  };
}
// On a floor with friction under gravity, sliding with 1 m/s or not.
std::function<void(Case&, Mesh&)> onFloor(double E, double friction, double speed, double end, double pull) {
  return [=](Case& c, Mesh&) {
    c.materials[0] = neoHooke(E, 0.3, kRho);
    start(c, {speed, 0, 0});
    c.gravity = {pull, 0, -5};
    c.planes.push_back({"floor", "z0", {1, 2, 0}, {0, 0, 1}, friction, {}, {0, 0, 1}});
    c.endTime = end;
  };
}
std::function<double(const Analysis&)> measured(std::size_t k) {
  return [k](const Analysis& a) { return a.measures().at(k); };
}
// Held in planes that lean by 45 degrees, it rests on a wall that does not.
void leanOnWall(Case& c, Mesh&) {
  c.symmetryPlanes = {{"all", {std::sqrt(0.5), 0, std::sqrt(0.5)}}};
  c.gravity = {0, 0, -5};
  c.planes.push_back({"wall", "x1", {0.2, 0, 0}, {-1, 0, 0}, 0, {}, {}});
}

// Means of motion and sums of reactions and energies, as groups have them in the history: those of fields and model.
void expectGroups(const Analysis& analysis, const Case& c, const Mesh& mesh) {
  const std::vector<double>& all = analysis.measures();
  ASSERT_EQ(all.size(), solver::measureNames(c).size());
  const double* of = &all[all.size() - 14];
  const solver::Fields fields = analysis.fields();
  const std::vector<int32_t>& nodes = mesh.findGroup("z1")->nodes;
  for (int k = 0; k < 9; ++k) {
    const std::span<const double> field = k < 3 ? fields.displacement : k < 6 ? fields.velocity : fields.reaction;
    double sum = 0, size = 1e-12;
    for (const int32_t node : nodes) {
      sum += field[3 * node + k % 3] / (k < 6 ? static_cast<double>(nodes.size()) : 1);
      size += std::abs(field[3 * node + k % 3]);
    }
    EXPECT_NEAR(of[k], sum, 1e-12 * size) << k;
  }
  const solver::Energies e = analysis.energies();
  const double energies[] = {e.strain, e.hourglass, e.viscous, e.damage, 0};
  for (int k = 0; k < 5; ++k) EXPECT_NEAR(of[9 + k], energies[k], 1e-12 * e.total()) << k;
}

// A quarter of a thick tube, 1 m to 2 m, in plane strain under inner pressure p: G. Lame and B. Clapeyron 1833.
constexpr double kInner = 1000;
void pressTube(Case& c, Mesh& mesh) {
  mesh = box({8, 8, 1}, {1, std::numbers::pi / 2, 0.1});
  for (std::size_t i = 0; i < mesh.coordinates.size(); i += 3) {
    const double r = 1 + mesh.coordinates[i], angle = mesh.coordinates[i + 1];
    mesh.coordinates[i] = r * std::cos(angle), mesh.coordinates[i + 1] = r * std::sin(angle);
  }
  for (const char* face : {"z0", "z1"}) fix(c, face, "z");
  c.symmetryPlanes = {{"y0", {0, 1, 0}}, {"y1", {1, 0, 0}}};
  loaded("pressure", "x0", {{0, 0.2}, {0, kInner}, Curve::Smooth})(c, mesh);
}
const auto shiftOfBore = [](const Analysis& a) { return a.fields().displacement[0]; };

// A pressure all around neither moves nor turns a body of any shape, only with exact shares of its warped faces.
TEST_F(Loads, PressureOnAClosedSurfaceTurnsNothing) {
  Mesh mesh = box({2, 2, 3}, {0.2, 0.2, 0.3});
  Random random(5);
  for (double& x : mesh.coordinates) x += random.uniform(-0.02, 0.02);
  Case c = caseOf(neoHooke(kE, 0.3, kRho), kEnd);
  loaded("pressure", "surface", constant(5e4))(c, mesh);
  Analysis analysis(mesh, c, 2);
  ASSERT_TRUE(runsToTheEnd(analysis, c));
  const double size = std::sqrt(2 * analysis.energies().kinetic * 12);
  for (int k = 0; k < 3; ++k) {
    EXPECT_NEAR(analysis.linearMomentum()[k], 0, 1e-11 * size);
    EXPECT_NEAR(analysis.angularMomentum()[k], 0, 1e-11 * size);
  }
}

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
      {"force", 0.3, loaded("force", "x1", constant(-7)), momentumX, -7 * kEnd, 1e-12},
      {"force on each node", 0.3, loaded("force", "x1", constant(-7), {0.6, 0, 0.8}, true), momentumZ,
       -7 * 15 * 0.8 * kEnd, 1e-12},
      {"smooth force", 0.3, loaded("force", "x1", {kTimes, kRise, Curve::Smooth}), momentumX, kEnd, 1e-3},
      {"local gravity", 0.3, loaded("local_gravity", "all", constant(2)), shiftX, kEnd * kEnd, 1e-12},
      {"its work", 0.3, loaded("local_gravity", "all", constant(2)), measured(0), 16 * 2 * kEnd * kEnd, 1e-12},
      {"gravity of a half", 0.3, pullHalf, momentumX, 8 * 2 * kEnd, 1e-12},
      {"traction", 0.3, loaded("traction", "x1", constant(50)), momentumX, 50 * 0.08 * kEnd, 1e-12},
      {"pressure", 0.3, loaded("pressure", "x1", constant(50)), momentumX, -50 * 0.08 * kEnd, 1e-3},
      {"damping", 0.3, fly, speedX, 3 * std::exp(-20 * kEnd), 1e-4},
      {"its energy", 0.3, fly, measured(0), 72 * (1 - std::exp(-40 * kEnd)), 1e-3},
      {"weight at rest", 0, still(stand, 0.4), shiftOfTop, -kRho * 0.16 / (2 * kE), 1e-3},
      {"its reaction", 0, still(stand, 0.4), footReaction, 16, 1e-6},
      {"pressure at rest", 0.3, still(loaded("pressure", "surface", kSlowly), 0.2), stressZ, -2e5, 1e-6},
      {"its energy", 0.3, still(loaded("pressure", "surface", kSlowly), 0.2), strainEnergy,
       0.016 * 0.5 * kBulk * 0.24 * 0.24, 1e-5},
      {"impact", 0, bar(-0.03, 0, 0.03), measured(3), 0.03 * std::sqrt(kRho * kE) * 0.0025, 0.02},
      {"rebound", 0, bar(-0.03, 0, 0.08), momentumZ, 0.03 * 2.5, 0.02},
      {"push", 0, bar(0, 0.03, 0.08), measured(0), 2.5 / 2 * 0.06 * 0.06, 0.02},
      {"sliding", 0.3, onFloor(1e8, 0.3, 1, 0.1, 0), speedX, 0.85, 0.002},
      {"its friction", 0.3, onFloor(1e8, 0.3, 1, 0.1, 0), measured(4), 8 * (1 - 0.85 * 0.85), 0.005},
      {"sticking", 0.3, still(onFloor(kE, 1, 0, 1, 2), 1), measured(1), -2 * 16, 1e-4},
      {"its pressure", 0.3, still(onFloor(kE, 1, 0, 1, 2), 1), measured(3), 5 * 16, 1e-4},
      {"wall at an angle", 0.3, still(leanOnWall, 0.3), measured(1), -5 * 16, 1e-4},
      {"tube", 0.3, still(pressTube, 0.6), shiftOfBore, 1.3 / kE * kInner / 3 * (0.4 + 4), 1e-2},
      {"symmetry", 0.3, pressTurnedEighth, strainEnergy, strainEnergyOf(pressEighth), 1e-4},
      {"symmetry of what is led", 0.3, ride, shiftY, -2 * kEnd, 1e-12},
      {"pressure that turns", 0.3, pressOnTurning, momentumX, -1e4 * 0.08 * kEnd * std::sin(1), 2e-3},
  };
  for (const Truth& truth : truths) {
    SCOPED_TRACE(truth.name);
    Mesh mesh = box({2, 2, 4}, {0.2, 0.2, 0.4});
    Case c = caseOf(neoHooke(kE, truth.nu, kRho), kEnd);
    truth.load(c, mesh);
    const auto& values = solver::groupQuantities;
    c.groupHistories = {{"top", "z1", {&values[0], &values[1], &values[2]}}, {"body", "all", {&values[3]}}};
    Analysis analysis(mesh, c, 2);
    const double before = analysis.energies().balance();
    ASSERT_TRUE(runsToTheEnd(analysis, c));
    EXPECT_NEAR(truth.measure(analysis) / truth.exact, 1, truth.tolerance);
    const solver::Energies e = analysis.energies();
    expectGroups(analysis, c, mesh);
    EXPECT_LT(c.quasiStatic ? e.stillness() : 0, 1e-6);
    EXPECT_NEAR(e.balance(), before, 4e-3 * (e.total() + std::abs(e.external)));
  }
}

} // namespace
