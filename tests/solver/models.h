// Models made in code: boxes of bricks and the materials of the tests.
#pragma once

#include "solver/analysis/analysis.h"
#include "tests/support/random.h"

#include <array>
#include <cmath>
#include <functional>

namespace sharedanalysis::test {

// A box of nx x ny x nz bricks with groups "all" and the six faces "x0", "x1", "y0", ... and "surface"; numbers count from 1.
inline solver::Mesh box(std::array<int, 3> bricks, std::array<double, 3> size) {
  solver::Mesh mesh;
  const int nx = bricks[0] + 1, ny = bricks[1] + 1, nz = bricks[2] + 1;
  const auto at = [=](int i, int j, int k) { return (k * ny + j) * nx + i; };
  std::array<solver::Group, 6> faces;
  for (int f = 0; f < 6; ++f) faces[f] = {std::string(1, "xyz"[f / 2]) + "01" [f % 2], 2, {}, {}};
  solver::Group surface{"surface", 2, {}, {}}, all{"all", 3, {}, {}};
  for (int k = 0; k < nz; ++k)
    for (int j = 0; j < ny; ++j)
      for (int i = 0; i < nx; ++i) {
        const int32_t node = at(i, j, k);
        const int index[3] = {i, j, k};
        bool outside = false;
        for (int c = 0; c < 3; ++c) {
          mesh.coordinates.push_back(size[c] * index[c] / bricks[c]);
          if (index[c] == 0) faces[2 * c].nodes.push_back(node);
          if (index[c] == bricks[c]) faces[2 * c + 1].nodes.push_back(node);
          outside = outside || index[c] == 0 || index[c] == bricks[c];
        }
        if (outside) surface.nodes.push_back(node);
        all.nodes.push_back(node);
        mesh.nodeNumbers.push_back(node + 1);
      }
  for (int k = 0; k + 1 < nz; ++k)
    for (int j = 0; j + 1 < ny; ++j)
      for (int i = 0; i + 1 < nx; ++i) {
        for (int32_t node : {at(i, j, k), at(i + 1, j, k), at(i + 1, j + 1, k), at(i, j + 1, k), at(i, j, k + 1),
                             at(i + 1, j, k + 1), at(i + 1, j + 1, k + 1), at(i, j + 1, k + 1)})
          mesh.connectivity.push_back(node);
        all.elements.push_back(mesh.elements());
        mesh.elementNumbers.push_back(mesh.elements() + 1);
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

inline void fix(solver::Case& c, const std::string& group, const std::string& components) {
  solver::PrescribedMotion motion;
  motion.group = group;
  for (char component : components) motion.velocity[component - 'x'] = constant(0);
  c.motions.push_back(motion);
}

} // namespace sharedanalysis::test
