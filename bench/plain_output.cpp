#include "plain_output.h"

#include "plain_kernels.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace plain {
namespace {

void princ31(const double* S, int n, int i, double* P, double* Q) {
  const double s11 = S[i], s22 = S[n + i], s12 = S[3 * n + i], h = (s11 - s22) / 2;
  const double R = std::copysign(std::sqrt(s12 * s12 + h * h), h);
  double c = 1, s = 0, sin2 = 0;
  if (std::abs(R) > std::numeric_limits<double>::min()) {
    sin2 = s12 / R;
    c = std::sqrt((h / R + 1) / 2);
    s = sin2 / (2 * c);
  }
  P[0] = s11 * c * c + sin2 * s12 + s22 * s * s;
  P[1] = s22 * c * c - sin2 * s12 + s11 * s * s;
  P[2] = S[2 * n + i];
  double r11 = c, r21 = s;
  if (P[1] > P[0]) {
    std::swap(P[0], P[1]);
    r11 = s, r21 = -c;
  }
  const double t = 1 + 2 * r11;
  if (t >= 1) {
    Q[1] = std::sqrt(t + 1) / 2;
    Q[0] = r21 / (2 * Q[1]);
  } else {
    Q[0] = std::sqrt((1 - t) / 4 + 0.5);
    Q[1] = r21 / (2 * Q[0]);
  }
}

// R row by row.
void quaternionOf(const double (&R)[3][3], double* q) {
  const double trace = R[0][0] + R[1][1] + R[2][2];
  int d = 0;
  for (int k = 1; k < 3; ++k)
    if (R[k][k] > R[d][d]) d = k;
  if (trace > R[d][d]) {
    q[3] = std::sqrt(1 + trace) / 2;
    for (int a = 0; a < 3; ++a) q[a] = (R[(a + 2) % 3][(a + 1) % 3] - R[(a + 1) % 3][(a + 2) % 3]) / (4 * q[3]);
  } else {
    const int e = (d + 1) % 3, f = (d + 2) % 3;
    q[d] = std::sqrt(1 + 2 * R[d][d] - trace) / 2;
    q[e] = (R[d][e] + R[e][d]) / (4 * q[d]);
    q[f] = (R[d][f] + R[f][d]) / (4 * q[d]);
    q[3] = (R[f][e] - R[e][f]) / (4 * q[d]);
  }
}

void multiply(const double* a, const double* b, double* c) {
  c[0] = a[3] * b[0] + a[0] * b[3] + a[1] * b[2] - a[2] * b[1];
  c[1] = a[3] * b[1] + a[1] * b[3] + a[2] * b[0] - a[0] * b[2];
  c[2] = a[3] * b[2] + a[2] * b[3] + a[0] * b[1] - a[1] * b[0];
  c[3] = a[3] * b[3] - a[0] * b[0] - a[1] * b[1] - a[2] * b[2];
}

} // namespace

void odbprinc31quat(int32_t n, const double* S, double* P, double* Q) {
  for (int i = 0; i < n; ++i) princ31(S, n, i, P + 3 * i, Q + 2 * i);
}

void odbprinc31quatelset(int32_t n, int32_t members, const int32_t* set, const double* S, double* P, double* Q) {
  for (int k = 0; k < members; ++k) princ31(S, n, set[k] - 1, P + 3 * k, Q + 2 * k);
}

void odbprinc33quatmult(int32_t n, const double* S, const double* O, double* P, double* Q) {
  static std::vector<double> values, axes;
  values.resize(static_cast<std::size_t>(3 * n));
  axes.resize(static_cast<std::size_t>(9 * n));
  princs33(&n, S, values.data(), axes.data());
  for (int i = 0; i < n; ++i) {
    int order[3] = {0, 1, 2};
    std::stable_sort(order, order + 3, [&](int a, int b) { return values[a * n + i] > values[b * n + i]; });
    const double sign = (order[1] - order[0] + 3) % 3 == 1 ? 1 : -1; // of the permutation
    double R[3][3], q[4];
    for (int b = 0; b < 3; ++b) {
      P[3 * i + b] = values[order[b] * n + i];
      for (int a = 0; a < 3; ++a) R[a][b] = (b == 2 ? sign : 1) * axes[(3 * order[b] + a) * n + i];
    }
    quaternionOf(R, q);
    const double o[4] = {O[i], O[n + i], O[2 * n + i], O[3 * n + i]};
    multiply(o, q, Q + 4 * i);
  }
}

void odb3dstrain(int32_t n, const double* E, double* P) {
  for (int i = 0; i < n; ++i)
    for (int k = 0; k < 6; ++k) P[6 * i + k] = (k < 3 ? 1 : 2) * E[k * n + i];
}

void orient3d(int32_t n, const double* q, double* out) {
  constexpr double h = 0.70710678;
  for (int i = 0; i < n; ++i) {
    const double x = h * q[i], y = h * q[n + i], z = h * q[2 * n + i], w = h * q[3 * n + i];
    out[4 * i] = x + w;
    out[4 * i + 1] = y + z;
    out[4 * i + 2] = z - y;
    out[4 * i + 3] = w - x;
  }
}

void orient2dbeam(int32_t n, const double* c, double* out) {
  for (int i = 0; i < n; ++i) {
    const double dx = c[n + i] - c[i], dy = c[3 * n + i] - c[2 * n + i], length = std::sqrt(dx * dx + dy * dy);
    const double t = 1 + 2 * (dx / length), sine = dy / length;
    double *z = out + 2 * i, *w = z + 1;
    if (t < 1) {
      *z = std::sqrt((1 - t) / 4 + 0.5);
      *w = sine / 2 / *z;
    } else {
      *w = std::sqrt(t + 1) / 2;
      *z = sine / 2 / *w;
    }
  }
}

void orientcne3d(int32_t n, const double* m, double* out) {
  for (int i = 0; i < n; ++i)
    for (int side = 0; side < 2; ++side) {
      const double* a = m + 9 * side * n + i;
      double* q = out + 8 * i + 4 * side;
      int d = 2;
      if (a[n] > a[2 * n]) d = 1;
      if (a[0] > a[d * n]) d = 0;
      const double s = (1 - a[0] - a[n] - a[2 * n]) / 4 + a[d * n] / 2;
      if (s <= std::numeric_limits<double>::min()) {
        q[0] = q[1] = q[2] = 0, q[3] = 1;
        continue;
      }
      const double r = std::sqrt(s), f = 1 / (4 * r);
      // 12 23 31 in columns 4 to 6, 21 32 13 after them
      const double xy = (a[3 * n] + a[6 * n]) * f, yz = (a[4 * n] + a[7 * n]) * f, xz = (a[5 * n] + a[8 * n]) * f;
      const double sums[3][3] = {{r, xy, xz}, {xy, r, yz}, {xz, yz, r}};
      for (int k = 0; k < 3; ++k) q[k] = sums[d][k];
      q[3] = (d == 0 ? a[7 * n] - a[4 * n] : d == 1 ? a[8 * n] - a[5 * n] : a[6 * n] - a[3 * n]) * f;
    }
}

void orientrebar(int32_t n, const double* axes, double* out) {
  for (int i = 0; i < n; ++i) {
    double R[3][3];
    for (int b = 0; b < 3; ++b)
      for (int a = 0; a < 3; ++a) R[a][b] = axes[(3 * b + a) * n + i];
    const double volume = R[0][2] * (R[1][0] * R[2][1] - R[2][0] * R[1][1]) +
                          R[1][2] * (R[2][0] * R[0][1] - R[0][0] * R[2][1]) +
                          R[2][2] * (R[0][0] * R[1][1] - R[1][0] * R[0][1]);
    if (volume < 0)
      for (auto& row : R) row[2] = -row[2];
    quaternionOf(R, out + 4 * i);
  }
}

} // namespace plain
