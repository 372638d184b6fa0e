// Random numbers that are the same with every standard library, and small helpers of the kernel tests.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <random>
#include <type_traits>
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

// 3 x 3 matrices; in 80 bits for truths that owe nothing to the kernels.
template <class Real>
using Square = std::array<std::array<Real, 3>, 3>;
using Matrix = Square<double>;
using LongMatrix = Square<long double>;
inline constexpr Matrix kIdentity = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};

// Of the entries f(i, j).
template <class Entry>
auto matrixBy(Entry f) {
  Square<decltype(f(0, 0))> M;
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) M[i][j] = f(i, j);
  return M;
}
template <class Real>
Square<Real> operator*(const Square<Real>& a, const Square<Real>& b) {
  return matrixBy([&](int i, int j) { return a[i][0] * b[0][j] + a[i][1] * b[1][j] + a[i][2] * b[2][j]; });
}
template <class Real>
Square<Real> operator*(std::type_identity_t<Real> factor, const Square<Real>& a) {
  return matrixBy([&](int i, int j) { return factor * a[i][j]; });
}
template <class Real>
Square<Real> operator+(const Square<Real>& a, const Square<Real>& b) {
  return matrixBy([&](int i, int j) { return a[i][j] + b[i][j]; });
}
template <class Real>
Square<Real> transposed(const Square<Real>& a) {
  return matrixBy([&](int i, int j) { return a[j][i]; });
}
template <class Real>
Real trace(const Square<Real>& a) {
  return a[0][0] + a[1][1] + a[2][2];
}
// Transposed and over the determinant they are the inverse.
template <class Real>
Square<Real> cofactors(const Square<Real>& a) {
  return matrixBy([&](int i, int j) {
    const int i1 = (i + 1) % 3, i2 = (i + 2) % 3, j1 = (j + 1) % 3, j2 = (j + 2) % 3;
    return a[i1][j1] * a[i2][j2] - a[i1][j2] * a[i2][j1];
  });
}
template <class Real>
Real determinant(const Square<Real>& a) {
  const Square<Real> c = cofactors(a);
  return a[0][0] * c[0][0] + a[0][1] * c[0][1] + a[0][2] * c[0][2];
}

// A rotation from a random unit quaternion.
inline Matrix randomRotation(Random& random) {
  double q[4], length = 0;
  for (double& component : q) {
    component = random.uniform(-1, 1);
    length += component * component;
  }
  for (double& component : q) component /= std::sqrt(length);
  const double x = q[0], y = q[1], z = q[2], w = q[3];
  return {{{1 - 2 * (y * y + z * z), 2 * (x * y - z * w), 2 * (x * z + y * w)},
           {2 * (x * y + z * w), 1 - 2 * (x * x + z * z), 2 * (y * z - x * w)},
           {2 * (x * z - y * w), 2 * (y * z + x * w), 1 - 2 * (x * x + y * y)}}};
}

// S33 components 11 22 33 12 23 13 as a matrix, and the index of component (i, j).
inline constexpr int kS33[3][3] = {{0, 3, 5}, {3, 1, 4}, {5, 4, 2}};
// The tensor whose components lie a stride apart.
template <class Real = double>
Square<Real> tensorOf(const double* components, int stride = 1) {
  return matrixBy([=](int i, int j) { return Real{components[kS33[i][j] * stride]}; });
}

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
