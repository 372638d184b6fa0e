// Bricks as numbers: distorted ones, and the exact quadrature of what the trilinear brick is.
#pragma once

#include "tests/support/random.h"

#include <array>
#include <vector>

namespace sharedanalysis::test {

inline constexpr int kSigns[8][3] = {{-1, -1, -1}, {1, -1, -1}, {1, 1, -1}, {-1, 1, -1},
                                     {-1, -1, 1},  {1, -1, 1},  {1, 1, 1},  {-1, 1, 1}};
inline constexpr double kPatterns[4][8] = {{1, 1, -1, -1, -1, -1, 1, 1},
                                           {1, -1, -1, 1, -1, 1, 1, -1},
                                           {1, -1, 1, -1, 1, -1, 1, -1},
                                           {-1, 1, -1, 1, 1, -1, 1, -1}};

using Brick = std::array<std::array<double, 3>, 8>;

inline Brick unitCube() {
  Brick brick;
  for (int node = 0; node < 8; ++node)
    for (int c = 0; c < 3; ++c) brick[node][c] = 0.5 * (1 + kSigns[node][c]);
  return brick;
}

inline Brick distorted(Random& random, double amount) {
  Brick brick = unitCube();
  for (auto& node : brick)
    for (double& x : node) x += random.uniform(-amount, amount);
  return brick;
}

// dN/dxi, dN/deta, dN/dzeta of the trilinear brick.
inline std::array<std::array<double, 3>, 8> shapeDerivatives(double xi, double eta, double zeta) {
  std::array<std::array<double, 3>, 8> d;
  for (int node = 0; node < 8; ++node) {
    const auto& s = kSigns[node];
    d[node] = {0.125 * s[0] * (1 + s[1] * eta) * (1 + s[2] * zeta), 0.125 * s[1] * (1 + s[0] * xi) * (1 + s[2] * zeta),
               0.125 * s[2] * (1 + s[0] * xi) * (1 + s[1] * eta)};
  }
  return d;
}

struct Jacobian {
  double det;
  double gradient[8][3]; // det * dN/dx
};

inline Jacobian jacobian(const Brick& brick, const std::array<std::array<double, 3>, 8>& d) {
  Matrix J{}; // dx_i/dxi_j
  for (int node = 0; node < 8; ++node) J = J + matrixBy([&](int i, int j) { return brick[node][i] * d[node][j]; });
  const Matrix cof = cofactors(J);
  Jacobian result{determinant(J), {}};
  for (int node = 0; node < 8; ++node)
    for (int i = 0; i < 3; ++i)
      for (int j = 0; j < 3; ++j) result.gradient[node][i] += cof[i][j] * d[node][j];
  return result;
}

// Volume and its nodal derivatives by three Gauss points a direction, which are exact here.
inline Jacobian integrate(const Brick& brick) {
  const double points[3] = {-std::sqrt(0.6), 0, std::sqrt(0.6)}, weights[3] = {5.0 / 9, 8.0 / 9, 5.0 / 9};
  Jacobian sum{};
  for (int a = 0; a < 3; ++a)
    for (int b = 0; b < 3; ++b)
      for (int c = 0; c < 3; ++c) {
        const Jacobian point = jacobian(brick, shapeDerivatives(points[a], points[b], points[c]));
        const double w = weights[a] * weights[b] * weights[c];
        sum.det += w * point.det;
        for (int node = 0; node < 8; ++node)
          for (int i = 0; i < 3; ++i) sum.gradient[node][i] += w * point.gradient[node][i];
      }
  return sum;
}

// Element arrays (ld, 8, 3).
inline std::vector<double> coordinates(const std::vector<Brick>& bricks, int ld) {
  std::vector<double> X(24 * ld);
  for (int e = 0; e < static_cast<int>(bricks.size()); ++e)
    for (int node = 0; node < 8; ++node)
      for (int c = 0; c < 3; ++c) X[(c * 8 + node) * ld + e] = bricks[e][node][c];
  return X;
}

} // namespace sharedanalysis::test
