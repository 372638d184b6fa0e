// 3 x 3 matrices in 80-bit arithmetic, for truths that owe nothing to the kernels.
#pragma once

#include "random.h"

#include <array>
#include <cmath>

namespace sharedanalysis::test {

using LongMatrix = std::array<std::array<long double, 3>, 3>;

inline LongMatrix product(const LongMatrix& a, const LongMatrix& b) {
  LongMatrix c{};
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j)
      for (int k = 0; k < 3; ++k) c[i][j] += a[i][k] * b[k][j];
  return c;
}

inline LongMatrix combination(long double fa, const LongMatrix& a, long double fb, const LongMatrix& b) {
  LongMatrix c{};
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) c[i][j] = fa * a[i][j] + fb * b[i][j];
  return c;
}

inline LongMatrix identity() {
  LongMatrix one{};
  for (int i = 0; i < 3; ++i) one[i][i] = 1;
  return one;
}

inline long double trace(const LongMatrix& a) { return a[0][0] + a[1][1] + a[2][2]; }

inline long double determinant(const LongMatrix& a) {
  long double det = 0;
  for (int j = 0; j < 3; ++j) {
    const int j1 = (j + 1) % 3, j2 = (j + 2) % 3;
    det += a[0][j] * (a[1][j1] * a[2][j2] - a[1][j2] * a[2][j1]);
  }
  return det;
}

// Point i of a block of n tensors of `components` in the order 11 22 33 12 23 13.
inline LongMatrix matrixOf(const std::vector<double>& block, int n, int i, int components = 6) {
  LongMatrix m{};
  for (int a = 0; a < 3; ++a)
    for (int b = 0; b < 3; ++b)
      if (kS33[a][b] < components) m[a][b] = block[kS33[a][b] * n + i];
  return m;
}

} // namespace sharedanalysis::test
