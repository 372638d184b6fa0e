// The formulas of the plain loops with blends for branches, for the lane types of peer_lanes.h.  Blocks of the benchmark are
// whole vectors long.
#pragma once

#include "peer_lanes.h"
#include "plain/bricks.h"
#include "plain/materials.h"

#include <algorithm>
#include <vector>

namespace peer {

using Arrays = std::vector<double*>;

template <class N>
struct Formulas {
  using L = Lanes<N>;
  using Matrix = plain::Matrix<N>;
  static N at(const double* p) { return L::load(p); }
  static void put(double* p, N x) { L::store(p, x); }
  template <class Body>
  static void forLanes(int n, Body body) {
    for (int i = 0; i < n; i += L::width) body(i);
  }
  static Matrix symmetric(const double* S, int n) {
    Matrix A;
    for (int k = 0; k < 6; ++k)
      A[plain::kRow[k]][plain::kColumn[k]] = A[plain::kColumn[k]][plain::kRow[k]] = at(S + k * n);
    return A;
  }

  template <N (*function)(const N&)>
  static void each(int n, const Arrays& a) {
    forLanes(n, [&](int i) { put(a[1] + i, function(at(a[0] + i))); });
  }
  static N expOf(const N& x) { return exp(x); }
  static N logOf(const N& x) { return log(x); }
  static N cosOf(const N& x) { return cos(x); }
  static N acosOf(const N& x) { return acos(x); }

  // ---- tensors

  static auto rotate(Matrix& A, Matrix& V, int p, int q) {
    const int r = 3 - p - q;
    const auto none = (abs(A[p][p]) + abs(A[q][q])) * N(0x1p-53) >= abs(A[p][q]);
    const N theta = (A[q][q] - A[p][p]) / (A[p][q] + select(none, N(1), N(0)));
    const N t = (sqrt(theta * theta + 4) - theta) * 0.5;
    const N c = sqrt(N(1) / (t * t + 1)), s = sqrt(N(1) - c * c);
    const N cr = select(none, N(1), select(c > s, c, s)), sr = select(none, N(0), select(c > s, -s, c));
    const N pp = A[p][p], qq = A[q][q], pq = A[p][q], pr = A[p][r], qr = A[q][r];
    A[p][p] = cr * cr * pp + N(2) * cr * sr * pq + sr * sr * qq;
    A[q][q] = cr * cr * qq - N(2) * cr * sr * pq + sr * sr * pp;
    A[p][r] = A[r][p] = cr * pr + sr * qr;
    A[q][r] = A[r][q] = cr * qr - sr * pr;
    A[p][q] = A[q][p] = 0;
    for (int a = 0; a < 3; ++a) {
      const N x = V[a][p], y = V[a][q];
      V[a][p] = cr * x + sr * y;
      V[a][q] = cr * y - sr * x;
    }
    return abs(sr);
  }
  static void princs33(int n, const Arrays& a) {
    forLanes(n, [&](int i) {
      Matrix A = symmetric(a[0] + i, n), V;
      for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) V[r][c] = N(r == c);
      for (bool moving = true; moving;) {
        const N s1 = rotate(A, V, 0, 2), s2 = rotate(A, V, 0, 1), s3 = rotate(A, V, 1, 2);
        double sines[L::width];
        L::store(sines, max(max(s1, s2), s3));
        moving = std::any_of(sines, sines + L::width, [](double s) { return s > 0.015; });
      }
      for (int b = 0; b < 3; ++b) {
        put(a[1] + b * n + i, A[b][b]);
        for (int r = 0; r < 3; ++r) put(a[2] + (3 * b + r) * n + i, V[r][b]);
      }
    });
  }
  static void eig33anal(int n, const Arrays& a) {
    forLanes(n, [&](int i) {
      N s[6];
      for (int k = 0; k < 6; ++k) s[k] = at(a[0] + k * n + i);
      const N O = max(max(abs(s[3]), abs(s[4])), abs(s[5])), M = max(max(max(abs(s[0]), abs(s[1])), abs(s[2])), O);
      const N f = select(M <= N(2.2250738585072014e-308), N(0), N(1) / M);
      const N b12 = f * s[3], b23 = f * s[4], b13 = f * s[5], mean = (f * s[0] + f * s[1] + f * s[2]) / 3;
      const N d1 = f * s[0] - mean, d2 = f * s[1] - mean, d3 = f * s[2] - mean;
      const auto diagonal = max(max(abs(d1), abs(d2)), abs(d3)) * N(1.1102230246251565e-12) > O * f;
      const N r = N(2) * sqrt(((d1 * d1 + d2 * d2 + d3 * d3) * 0.5 + b12 * b12 + b23 * b23 + b13 * b13) / 3);
      const N g = select(r > N(0x1p-53), N(2) / r, N(0));
      const N e1 = g * d1, e2 = g * d2, e3 = g * d3, e12 = g * b12, e23 = g * b23, e13 = g * b13;
      const N x = N(0.5) * ((e2 * e3 - e23 * e23) * e1 - e3 * e12 * e12 - e2 * e13 * e13) + e12 * e13 * e23;
      const auto high = x >= N(0.9999999999999999), low = x <= N(-0.9999999999999999);
      const N angle = acos(x) / 3, c1 = cos(angle), c2 = cos(angle + 2.094395102393195);
      const N k1 = select(high, N(-0.5), select(low, N(-1), c1)), k2 = select(high, N(-0.5), select(low, N(0.5), c2));
      const N k3 = select(high, N(1), select(low, N(0.5), -c1 - c2));
      put(a[1] + i, select(diagonal, s[0], (mean + r * k1) * M));
      put(a[1] + n + i, select(diagonal, s[1], (mean + r * k2) * M));
      put(a[1] + 2 * n + i, select(diagonal, s[2], (mean + r * k3) * M));
    });
  }
  static void princs31(int n, const Arrays& a) {
    forLanes(n, [&](int i) {
      const double* S = a[0] + i;
      const N s11 = at(S), s22 = at(S + n), s12 = at(S + 3 * n), h = (s11 - s22) * 0.5, l = sqrt(s12 * s12 + h * h);
      const N R = select(h < N(0), -l, l), z = select(abs(R) <= N(2.2250738585072014e-308), N(1), N(0));
      const N cos2 = h / (R + z), sin2 = s12 / (R + z);
      const N c = sqrt(N(0.5) * (N(1) - z) * (cos2 + 1)) + z, s = (N(1) - z) * sin2 / (N(2) * c);
      put(a[1] + i, s11 * c * c + sin2 * s12 + s22 * s * s);
      put(a[1] + n + i, s22 * c * c - sin2 * s12 + s11 * s * s);
      put(a[1] + 2 * n + i, at(S + 2 * n));
      const N v[] = {c, s, N(0), -s, c, N(0), N(0), N(0), N(1)};
      for (int k = 0; k < 9; ++k) put(a[2] + k * n + i, v[k]);
    });
  }
  static void quaternions(int n, const Arrays& a) {
    forLanes(n, [&](int i) {
      const auto of = [&](const double* q, int k) { return at(q + k * n + i); };
      const N ax = of(a[1], 0), ay = of(a[1], 1), az = of(a[1], 2), aw = of(a[1], 3);
      const N bx = of(a[2], 0), by = of(a[2], 1), bz = of(a[2], 2), bw = of(a[2], 3);
      const N x = ax * bw + aw * bx + ay * bz - az * by, y = ay * bw + aw * by + az * bx - ax * bz;
      const N z = az * bw + aw * bz + ax * by - ay * bx, w = aw * bw - ax * bx - ay * by - az * bz;
      const N f = N(1) / sqrt(x * x + y * y + z * z + w * w);
      put(a[0] + i, x * f), put(a[0] + n + i, y * f), put(a[0] + 2 * n + i, z * f), put(a[0] + 3 * n + i, w * f);
    });
  }

  // ---- bricks

  static void c3d8oper(int n, const double* const dN[3], const Arrays& a) {
    forLanes(n, [&](int e) {
      Matrix J, C;
      for (int c = 0; c < 3; ++c)
        for (int d = 0; d < 3; ++d) {
          J[c][d] = 0;
          for (int node = 0; node < 8; ++node) J[c][d] += at(a[0] + (8 * c + node) * n + e) * dN[d][node];
        }
      const N active = N(1) - at(a[4] + e);
      for (int c = 0; c < 3; ++c)
        for (int d = 0; d < 3; ++d) {
          const int c1 = (c + 1) % 3, c2 = (c + 2) % 3, d1 = (d + 1) % 3, d2 = (d + 2) % 3;
          C[c][d] = (J[c1][d1] * J[c2][d2] - J[c1][d2] * J[c2][d1]) * active;
        }
      const N product = J[0][0] * C[0][0] + J[1][0] * C[1][0] + J[2][0] * C[2][0];
      const N mask = select(product > N(0), at(a[4] + e), N(1)), det = select(product > N(0), product, N(0));
      for (int c = 0; c < 3; ++c)
        for (int node = 0; node < 8; ++node)
          put(a[1] + (8 * c + node) * n + e, C[c][0] * dN[0][node] + C[c][1] * dN[1][node] + C[c][2] * dN[2][node]);
      put(a[4] + e, mask), put(a[2] + e, det + mask), put(a[3] + e, (N(1) - mask) / (det + mask));
    });
  }

  static void c3d8roper2(int n, const Arrays& a) {
    forLanes(n, [&](int e) {
      N diag, stiff, volume, reciprocal, mask = at(a[7] + e);
      plain::onePointOperator<N>([&](int k) { return at(a[0] + k * n + e); },
                                 [&](int k, N value) { put(a[1] + k * n + e, value); }, diag, stiff, volume, reciprocal,
                                 [&](int k, N value) { put(a[6] + k * n + e, value); }, mask);
      put(a[2] + e, diag), put(a[3] + e, stiff), put(a[4] + e, volume), put(a[5] + e, reciprocal), put(a[7] + e, mask);
    });
  }

  // ---- materials

  static plain::Invariants<N> invariantsOf(const double* V, int n, double least) {
    const Matrix A = symmetric(V, n);
    const N J = plain::determinant(A);
    return plain::invariants(A, select(J < N(least), J + 1, J));
  }
  static void hyperpolys33(int n, const Arrays& a) {
    forLanes(n, [&](int i) {
      const auto s = invariantsOf(a[5] + i, n, 2.2250738585072014e-308);
      const N x = s.I1 - 3, y = s.I2 - 3;
      put(a[6] + i,
          at(a[0] + i) * x + at(a[1] + i) * y + at(a[2] + i) * x * x + at(a[3] + i) * x * y + at(a[4] + i) * y * y);
      put(a[7] + i, N(1) / s.J);
    });
  }
  static void hyperabs33(int n, const Arrays& a) {
    forLanes(n, [&](int i) {
      const auto s = invariantsOf(a[4] + i, n, 1e-9);
      put(a[2] + i, plain::arrudaBoyceEnergy(at(a[0] + i), at(a[1] + i), s.I1));
      put(a[3] + i, N(1) / s.J);
    });
  }
  static void stressOf(const plain::Invariants<N>& s, const plain::EnergyDerivatives<N>& d, int n, double* stress,
                       double* bound, double* bulk) {
    const auto t = plain::stressAndModuli(s, d);
    for (int k = 0; k < 6; ++k) put(stress + k * n, t.stress[k]);
    put(bound, t.bound), put(bulk, t.bulk);
  }
  static void hyperpoly3dexp(int n, const Arrays& a) {
    forLanes(n, [&](int i) {
      const Matrix A = symmetric(a[7] + i, n);
      const N det = plain::determinant(A), flag = select(det < N(1e-9), N(1), at(a[9] + i));
      const auto s = plain::invariants(A, flag + (N(1) - flag) * det);
      const N C10 = at(a[0] + i), C01 = at(a[1] + i), C20 = at(a[2] + i), C11 = at(a[3] + i), C02 = at(a[4] + i);
      const N r1 = at(a[5] + i), r2 = at(a[6] + i), x = s.I1 - 3, y = s.I2 - 3, e = s.J - 1;
      put(a[9] + i, flag);
      stressOf(s,
               {C10 + N(2) * C20 * x + C11 * y, C01 + C11 * x + N(2) * C02 * y, N(2) * C20, C11, N(2) * C02,
                N(2) * e * r1 + N(4) * e * e * e * r2, N(2) * r1 + N(12) * e * e * r2},
               n, a[8] + i, a[10] + i, a[11] + i);
    });
  }
  static void hypervdw3dexp(int n, const Arrays& a) {
    forLanes(n, [&](int i) {
      const auto q = invariantsOf(a[5] + i, n, 1e-9);
      const N mu = at(a[0] + i), l = at(a[1] + i), g = at(a[2] + i), beta = at(a[3] + i), D = at(a[4] + i);
      const N t = (N(1) - beta) * q.I1 + beta * q.I2 - 3, range = sqrt(l * l - 3);
      const auto deformed = t > N(0);
      const N s = select(deformed, t, N(0)), root = sqrt(s), eta = min(root / range, N(0.99999));
      const N r = select(deformed, min(N(1) / root, N(1) / (N(0.99999) * range)), N(0));
      const N f = N(0.5) * mu * (N(1) / (N(1) - eta) - g * sqrt(s / 2)), rest = N(1) - beta;
      const N h = N(0.25) * mu * r * (N(1) / ((N(1) - eta) * (N(1) - eta)) / range - g * 0.70710678);
      stressOf(q,
               {rest * f, beta * f, rest * rest * h, beta * rest * h, beta * beta * h, (q.J - N(1) / q.J) / D,
                (N(1) + N(1) / (q.J * q.J)) / D},
               n, a[6] + i, a[8] + i, a[9] + i);
    });
  }
  static void stretchEnergy(int n, const Arrays& a, bool foam) {
    const double* l = a[foam ? 11 : 8];
    forLanes(n, [&](int i) {
      N mu[3], alpha[3], beta[3];
      for (int t = 0; t < 3; ++t) mu[t] = at(a[2 * t] + i), alpha[t] = at(a[2 * t + 1] + i), beta[t] = at(a[6 + t] + i);
      const auto s =
          plain::stretchSums<N>(mu, alpha, foam ? beta : nullptr, at(l + i), at(l + n + i), at(l + 2 * n + i));
      put(a[foam ? 9 : 6] + i, s.U), put(a[foam ? 10 : 7] + i, N(1) / s.J);
    });
  }
  static void ogden(int n, const Arrays& a) { stretchEnergy(n, a, false); }
  static void hfoam(int n, const Arrays& a) { stretchEnergy(n, a, true); }
  static void ormullins(int n, const Arrays& a) {
    forLanes(n, [&](int i) {
      const N r = at(a[0] + i), old = at(a[4] + i), U = max(at(a[5] + i), N(0)), Um = max(old, U);
      const N d = at(a[1] + i) + at(a[2] + i) * Um, z = select(old <= U, N(0), (old - U) / d);
      put(a[5] + i, U), put(a[3] + i, Um);
      put(a[6] + i, N(1) - (N(1) - plain::erfcFit(z)) / r);
      put(a[7] + i, N(1.1283791670955126) / (r * d) * exp(-z * z));
    });
  }
  static void stressratio3dexp(int n, const Arrays& a) {
    forLanes(n, [&](int i) {
      N s[6];
      for (int k = 0; k < 6; ++k) s[k] = at(a[0] + k * n + i);
      const N m = (s[0] + s[1] + s[2]) / 3, d1 = s[0] - m, d2 = s[1] - m, d3 = s[2] - m;
      const N q = sqrt(N(1.5) * (d1 * d1 + d2 * d2 + d3 * d3 + N(2) * (s[3] * s[3] + s[4] * s[4] + s[5] * s[5])));
      const N ends = select(m < N(0), N(-100), select(m > N(0), N(100), N(0)));
      put(a[1] + i, select(q > N(0), max(N(-100), min(N(100), m / q)), ends));
    });
  }
  static void jcfailurestrain(int n, const Arrays& a) {
    constexpr double d[] = {0.05, 3.44, -2.12, 0.002, 0.61, 1800, 300, 1};
    forLanes(n, [&](int i) {
      const N T = at(a[3] + i), t = max(N(0), min(N(1), (T - d[6]) / (d[5] - d[6])));
      put(a[0] + i, max(N(1e-306), (N(d[0]) + N(d[1]) * exp(min(N(d[2]) * at(a[2] + i), N(40)))) *
                                       (N(1) + N(d[3]) * log(max(at(a[1] + i) * d[7], N(1)))) * (N(1) + N(d[4]) * t)));
    });
  }
};

} // namespace peer
