// Models made in code: boxes of bricks and the materials of the tests.
#pragma once

#include "glo.h"
#include "solver/analysis/analysis.h"
#include "tests/support/random.h"
#include "tests/support/test.h"

namespace sharedanalysis::test {

// Tests of the solver while the library is there.
class SolverTest : public testing::Test {
protected:
  void SetUp() override { Shared_Analysis_XP_initialize(&components_); }
  void TearDown() override { Shared_Analysis_XP_finalize(&components_); }

private:
  int32_t components_ = 0;
};

// A box of nx x ny x nz bricks with groups "all" and the six faces "x0", "x1", "y0", ... and "surface"; numbers count from 1.
inline solver::Mesh box(std::array<int, 3> bricks, std::array<double, 3> size) {
  solver::Mesh mesh;
  const int nx = bricks[0] + 1, ny = bricks[1] + 1, nz = bricks[2] + 1;
  std::array<solver::Group, 6> faces;
  for (int f = 0; f < 6; ++f) faces[f] = {std::string(1, "xyz"[f / 2]) + "01" [f % 2], 2, {}, {}};
  solver::Group surface{"surface", 2, {}, {}}, all{"all", 3, {}, {}};
  for (int32_t node = 0; node < nx * ny * nz; ++node) {
    const int index[3] = {node % nx, node / nx % ny, node / (nx * ny)};
    bool outside = false;
    for (int c = 0; c < 3; ++c) {
      mesh.coordinates.push_back(size[c] * index[c] / bricks[c]);
      for (const int end : {0, 1})
        if (index[c] == end * bricks[c]) faces[2 * c + end].nodes.push_back(node), outside = true;
    }
    if (outside) surface.nodes.push_back(node);
    all.nodes.push_back(node);
    mesh.nodeNumbers.push_back(node + 1);
    if (index[0] == bricks[0] || index[1] == bricks[1] || index[2] == bricks[2]) continue;
    for (const int corner : {0, 1, nx + 1, nx}) mesh.connectivity.push_back(node + corner);
    for (const int corner : {0, 1, nx + 1, nx}) mesh.connectivity.push_back(node + nx * ny + corner);
    static constexpr int corners[6][4] = {{0, 3, 7, 4}, {1, 2, 6, 5}, {0, 1, 5, 4},
                                          {3, 2, 6, 7}, {0, 1, 2, 3}, {4, 5, 6, 7}};
    const int32_t* brick = &mesh.connectivity[mesh.connectivity.size() - 8];
    for (int f = 0; f < 6; ++f)
      if (index[f / 2] == f % 2 * (bricks[f / 2] - 1))
        for (const int corner : corners[f])
          faces[f].faces.push_back(brick[corner]), surface.faces.push_back(brick[corner]);
    all.elements.push_back(static_cast<int32_t>(mesh.elementNumbers.size()));
    mesh.elementNumbers.push_back(all.elements.back() + 1);
  }
  mesh.groups = {all, surface};
  mesh.groups.insert(mesh.groups.end(), faces.begin(), faces.end());
  return mesh;
}

// Polynomial constants (C10, D1 alone) of Young's modulus and Poisson's ratio.
inline solver::Material neoHooke(double E, double nu, double density) {
  solver::Material material;
  material.name = "solid";
  material.density = density;
  material.constants = {E / (2 * (1 + nu)) / 2, 0, 0, 0, 0, E / (3 * (1 - 2 * nu)) / 2, 0};
  return material;
}

inline solver::Case caseOf(const solver::Material& material, double endTime) {
  solver::Case c;
  c.materials = {material};
  c.sections = {{"all", 0}};
  c.endTime = endTime;
  return c;
}

inline solver::History constant(double value) { return {{0.0}, {value}}; }

// All these components of a group move with a constant velocity; fixed, they do not.
inline void move(solver::Case& c, const std::string& group, const std::string& components, double velocity) {
  solver::PrescribedMotion motion;
  motion.group = group;
  for (char component : components) motion.velocity[component - 'x'] = constant(velocity);
  c.motions.push_back(motion);
}
inline void fix(solver::Case& c, const std::string& group, const std::string& components) {
  move(c, group, components, 0);
}
inline void start(solver::Case& c, std::array<double, 3> velocity) {
  solver::InitialVelocity all;
  all.velocity = velocity;
  c.initialVelocities = {all};
}
inline bool runsToTheEnd(solver::Analysis& analysis, const solver::Case& c) {
  return analysis.advanceTo(c.endTime) == solver::Ending::Complete;
}

// What an analysis of one rank needs to go on.
struct State {
  std::vector<double> course, records;
};
inline State stateOf(const solver::Analysis& analysis) {
  State state{analysis.course(), {}};
  analysis.saveRecords(
      [&](const std::vector<double>& some) { state.records.insert(state.records.end(), some.begin(), some.end()); });
  return state;
}
inline void restore(solver::Analysis& analysis, const State& state) {
  analysis.restore(state.course, [left = state.records]() mutable { return std::exchange(left, {}); });
}

} // namespace sharedanalysis::test
