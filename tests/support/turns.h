// Rotations by axis and angle, for tests of what turns what.
#pragma once

#include "tests/support/random.h"

#include <array>
#include <cmath>

namespace sharedanalysis::test {

using Quaternion = std::array<double, 4>;

// The matrix of a quaternion of any length, by Rodrigues' formula: its columns are the turned global axes.
inline Matrix turnedAxes(const Quaternion& q) {
  const double sine = std::hypot(q[0], q[1], q[2]), angle = 2 * std::atan2(sine, q[3]);
  const double x = sine > 0 ? q[0] / sine : 0, y = sine > 0 ? q[1] / sine : 0, z = sine > 0 ? q[2] / sine : 1;
  const double s = std::sin(angle), c = std::cos(angle);
  return c * kIdentity + s * Matrix{{{0, -z, y}, {z, 0, -x}, {-y, x, 0}}} +
         (1 - c) * Matrix{{{x * x, x * y, x * z}, {x * y, y * y, y * z}, {x * z, y * z, z * z}}};
}
inline Quaternion spatial(double z, double w) { return {0, 0, z, w}; }

inline Quaternion turnAbout(std::array<double, 3> axis, double angle) {
  const double f = std::sin(angle / 2) / std::hypot(axis[0], axis[1], axis[2]);
  return {f * axis[0], f * axis[1], f * axis[2], std::cos(angle / 2)};
}
inline Quaternion randomTurn(Random& random) {
  return turnAbout({random.uniform(-1, 1), random.uniform(-1, 1), random.uniform(-1, 1)}, random.uniform(-3.1, 3.1));
}

inline double distance(const Matrix& A, const Matrix& B) {
  double largest = 0;
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) {
      const double d = std::abs(A[i][j] - B[i][j]);
      largest = d <= largest ? largest : d; // NaN stays
    }
  return largest;
}

} // namespace sharedanalysis::test
