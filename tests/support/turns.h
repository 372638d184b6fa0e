// Rotations by axis and angle, for tests of what turns what.
#pragma once

#include "tests/support/random.h"

#include <array>
#include <cmath>

namespace sharedanalysis::test {

using Quaternion = std::array<double, 4>;

// The matrix of a quaternion of any length, by Rodrigues' formula: its columns are the turned global axes.
inline void turnedAxes(const Quaternion& q, Matrix& R) {
  const double sine = std::hypot(q[0], q[1], q[2]), angle = 2 * std::atan2(sine, q[3]);
  const double axis[3] = {sine > 0 ? q[0] / sine : 0, sine > 0 ? q[1] / sine : 0, sine > 0 ? q[2] / sine : 1};
  const double s = std::sin(angle), c = std::cos(angle);
  const Matrix cross = {{0, -axis[2], axis[1]}, {axis[2], 0, -axis[0]}, {-axis[1], axis[0], 0}};
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) R[i][j] = c * (i == j) + (1 - c) * axis[i] * axis[j] + s * cross[i][j];
}
inline Quaternion spatial(double z, double w) { return {0, 0, z, w}; }

inline Quaternion turnAbout(std::array<double, 3> axis, double angle) {
  const double f = std::sin(angle / 2) / std::hypot(axis[0], axis[1], axis[2]);
  return {f * axis[0], f * axis[1], f * axis[2], std::cos(angle / 2)};
}
inline Quaternion randomTurn(Random& random) {
  return turnAbout({random.uniform(-1, 1), random.uniform(-1, 1), random.uniform(-1, 1)}, random.uniform(-3.1, 3.1));
}

inline void multiply(const Matrix& A, const Matrix& B, Matrix& C) {
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) C[i][j] = A[i][0] * B[0][j] + A[i][1] * B[1][j] + A[i][2] * B[2][j];
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
