// Formulas of materials at one point, written as they stand and on the type of their numbers: the loops of the benchmark take
// them with double, the tests with long double as references of the kernels.  They stand beside the loops, whose meaning and
// speed they make up; a test that has a better truth, a closed form or a numerical derivative, takes only what that needs.
#pragma once

#include <array>
#include <cmath>

namespace plain {

inline constexpr int kRow[] = {0, 1, 2, 0, 1, 0}, kColumn[] = {0, 1, 2, 1, 2, 2}; // 11 22 33 12 23 13

template <class Real>
using Matrix = std::array<std::array<Real, 3>, 3>;

// The symmetric matrix of six components that lie a stride apart.
inline Matrix<double> symmetric(const double* S, int stride) {
  Matrix<double> A;
  for (int k = 0; k < 6; ++k) A[kRow[k]][kColumn[k]] = A[kColumn[k]][kRow[k]] = S[k * stride];
  return A;
}

template <class Real>
Matrix<Real> product(const Matrix<Real>& A, const Matrix<Real>& B) {
  Matrix<Real> C;
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) C[i][j] = A[i][0] * B[0][j] + A[i][1] * B[1][j] + A[i][2] * B[2][j];
  return C;
}

template <class Real>
Real determinant(const Matrix<Real>& A) {
  return A[0][0] * (A[1][1] * A[2][2] - A[1][2] * A[2][1]) - A[0][1] * (A[1][0] * A[2][2] - A[1][2] * A[2][0]) +
         A[0][2] * (A[1][0] * A[2][1] - A[1][1] * A[2][0]);
}

// ---- models of the invariants

// B of a stretch V whose volume is taken off, and its invariants.
template <class Real>
struct Invariants {
  Real J, I1, I2;
  Matrix<Real> B;
};
template <class Real>
Invariants<Real> invariants(const Matrix<Real>& V, Real J) {
  Invariants<Real> s;
  const Real f = std::exp(-2 / Real(3) * std::log(J));
  s.J = J;
  s.B = product(V, V);
  for (auto& row : s.B)
    for (Real& value : row) value *= f;
  s.I1 = s.B[0][0] + s.B[1][1] + s.B[2][2];
  s.I2 = s.B[0][0] * s.B[1][1] + s.B[1][1] * s.B[2][2] + s.B[0][0] * s.B[2][2] - s.B[0][1] * s.B[0][1] -
         s.B[1][2] * s.B[1][2] - s.B[0][2] * s.B[0][2];
  return s;
}

// Sum of c(k) (I1 - 3)^i (I2 - 3)^j over i + j from 1 to the order.
template <int order, class Real, class Constant>
Real polynomialEnergy(Constant c, Real I1, Real I2) {
  Real sum = 0, px[order + 1] = {1}, py[order + 1] = {1};
  for (int k = 1; k <= order; ++k) px[k] = px[k - 1] * (I1 - 3), py[k] = py[k - 1] * (I2 - 3);
  for (int t = 1, k = 0; t <= order; ++t)
    for (int i = t; i >= 0; --i) sum += c(k++) * px[i] * py[t - i];
  return sum;
}

// E. M. Arruda, M. C. Boyce, J. Mech. Phys. Solids 41 (1993) 389, five terms.
template <class Real>
Real arrudaBoyceEnergy(Real mu, Real lambda, Real I) {
  const Real k = 1 / (lambda * lambda);
  return mu * ((I - 3) / 2 + k / 20 * (I * I - 9) + 11 * k * k / 1050 * (I * I * I - 27) +
               19 * k * k * k / 7000 * (I * I * I * I - 81) + 519 * k * k * k * k / 673750 * (I * I * I * I * I - 243));
}

// ---- models of the stretches

// Energy over three terms, its derivatives tau by the logarithms of the stretches, and A, b of the tangent.  R. W. Ogden,
// Proc. R. Soc. A 326 (1972) 565; with beta the foam of B. Storakers, J. Mech. Phys. Solids 34 (1986) 125.
template <class Real>
struct StretchSums {
  Real J, U = 0, tau[3] = {}, A[3] = {}, b = 0;
};
template <class Real>
StretchSums<Real> stretchSums(const double* mus, const double* alphas, const double* betas, Real l1, Real l2, Real l3) {
  const bool foam = betas != nullptr;
  StretchSums<Real> s;
  s.J = l1 * l2 * l3;
  const Real logJ = std::log(s.J), f = foam ? 1 : std::exp(-2 / Real(3) * logJ);
  const Real x[3] = {std::log(l1 * l1 * f), std::log(l2 * l2 * f), std::log(l3 * l3 * f)};
  for (int t = 0; t < 3; ++t) {
    const Real mu = mus[t], alpha = alphas[t], beta = foam ? betas[t] : 0;
    if (alpha == 0) continue;
    const Real P[3] = {std::exp(alpha / 2 * x[0]), std::exp(alpha / 2 * x[1]), std::exp(alpha / 2 * x[2])};
    const Real Q = foam ? std::exp(-alpha * beta * logJ) : 0;
    const Real volume = foam ? (beta != 0 ? (Q - 1) / beta : -alpha * logJ) : 0;
    s.U += 2 * mu / (alpha * alpha) * (P[0] + P[1] + P[2] - 3 + volume);
    const Real off = foam ? Q : (P[0] + P[1] + P[2]) / 3;
    for (int k = 0; k < 3; ++k) s.tau[k] += 2 * mu / alpha * (P[k] - off), s.A[k] += 2 * mu * P[k];
    s.b += 2 * mu * beta * Q;
  }
  return s;
}

// Pressure and its slope of the energy sum of r(k) (J - 1)^(2k).
template <class Real>
struct Volume {
  Real p = 0, slope = 0;
};
template <class Real, class Constant>
Volume<Real> volumePowers(int count, Constant r, Real J) {
  Volume<Real> v;
  const Real d = J - 1;
  Real power = 1; // d^(2k - 2)
  for (int k = 1; k <= count; ++k, power *= d * d) {
    v.p += 2 * k * r(k - 1) * power * d;
    v.slope += 2 * k * (2 * k - 1) * r(k - 1) * power;
  }
  return v;
}

} // namespace plain
