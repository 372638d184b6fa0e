// Random numbers that are the same with every standard library, and small helpers of the kernel tests.
#pragma once

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

namespace sharedanalysis::test {

class Random {
public:
  explicit Random(uint64_t seed) : engine_(seed) {}
  double uniform(double low, double high) {
    return low + (high - low) * (static_cast<double>(engine_() >> 11) * 0x1p-53);
  }
  int integer(int low, int high) { return low + static_cast<int>(engine_() % static_cast<uint64_t>(high - low + 1)); }

private:
  std::mt19937_64 engine_;
};

using Matrix = double[3][3];

// A rotation from a random unit quaternion.
inline void randomRotation(Random& random, Matrix& R) {
  double q[4], length = 0;
  for (double& component : q) {
    component = random.uniform(-1, 1);
    length += component * component;
  }
  for (double& component : q) component /= std::sqrt(length);
  const double x = q[0], y = q[1], z = q[2], w = q[3];
  const Matrix M = {{1 - 2 * (y * y + z * z), 2 * (x * y - z * w), 2 * (x * z + y * w)},
                    {2 * (x * y + z * w), 1 - 2 * (x * x + z * z), 2 * (y * z - x * w)},
                    {2 * (x * z - y * w), 2 * (y * z + x * w), 1 - 2 * (x * x + y * y)}};
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) R[i][j] = M[i][j];
}

// S33 components 11 22 33 12 23 13 as a matrix, and the index of component (i, j).
inline constexpr int kS33[3][3] = {{0, 3, 5}, {3, 1, 4}, {5, 4, 2}};

// Writes R diag(values) R' to point i of an S33 block of n points.
inline void setPrincipal(double* block, int n, int i, const double (&values)[3], const Matrix& R) {
  for (int a = 0; a < 3; ++a)
    for (int b = a; b < 3; ++b) {
      long double sum = 0;
      for (int k = 0; k < 3; ++k) sum += static_cast<long double>(R[a][k]) * values[k] * R[b][k];
      block[kS33[a][b] * n + i] = static_cast<double>(sum);
    }
}

} // namespace sharedanalysis::test
