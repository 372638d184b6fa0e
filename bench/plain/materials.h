// Formulas of materials at one point, written as they stand and on the type of their numbers: the loops of the benchmark take
// them with double, the tests with long double as references of the kernels.  They stand beside the loops, whose meaning and
// speed they make up; a test that has a better truth, a closed form or a numerical derivative, takes only what that needs.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <type_traits>

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
  using std::exp, std::log;
  Invariants<Real> s;
  const Real f = exp(Real(-2) / Real(3) * log(J));
  s.J = J;
  s.B = product(V, V);
  for (auto& row : s.B)
    for (Real& value : row) value *= f;
  s.I1 = s.B[0][0] + s.B[1][1] + s.B[2][2];
  s.I2 = s.B[0][0] * s.B[1][1] + s.B[1][1] * s.B[2][2] + s.B[0][0] * s.B[2][2] - s.B[0][1] * s.B[0][1] -
         s.B[1][2] * s.B[1][2] - s.B[0][2] * s.B[0][2];
  return s;
}

template <class Real>
struct EnergyDerivatives {
  Real U1, U2, U11, U12, U22, p, slope; // by I1 and I2; volumetric stress and its slope
};
// Cauchy stress, the largest diagonal term of the isochoric tangent, and the bulk term.
template <class Real>
struct StressAndModuli {
  Real stress[6], bound, bulk;
};
template <class Real>
StressAndModuli<Real> stressAndModuli(const Invariants<Real>& s, const EnergyDerivatives<Real>& d) {
  using std::max;
  StressAndModuli<Real> result;
  const Matrix<Real> Q = product(s.B, s.B);
  const Real rJ = 1 / s.J, a = 2 * d.U2 * rJ, b = 2 * d.U1 * rJ + s.I1 * a, third = (s.I1 * s.I1 - 2 * s.I2) / 3;
  const Real w4 = 4 * rJ, w2 = 2 * rJ, c1 = w4 * (d.U11 + 2 * s.I1 * d.U12 + s.I1 * s.I1 * d.U22), c2 = w4 * d.U22;
  const Real c3 = -w4 * (s.I1 * d.U22 + d.U12), E = w2 * (d.U1 + s.I1 * d.U2), F = -w2 * d.U2, G = w4 * d.U2;
  for (int k = 0; k < 6; ++k) {
    const int r = kRow[k], c = kColumn[k];
    const Real q = Q[r][c], g = s.B[r][c];
    result.stress[k] = k < 3 ? d.p - (q - third) * a + (g - s.I1 / 3) * b : g * b - q * a;
    const Real term = k < 3 ? (g * c1 + 2 * E + 2 * q * c3) * g + (q * c2 + 2 * F) * q
                            : (2 * c1 * g + 4 * c3 * q) * g + (s.B[r][r] + s.B[c][c]) * E + (Q[r][r] + Q[c][c]) * F +
                                  (g * g - s.B[r][r] * s.B[c][c]) * G + 2 * c2 * q * q;
    result.bound = k == 0 ? term : max(result.bound, term);
  }
  result.bulk = 3 * s.J * (d.p + d.slope);
  return result;
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

// erfc(|z|) by the fit of W. H. Press et al., Numerical Recipes (1992), that the kernel has.
template <class Real>
Real erfcFit(Real z) {
  using std::abs, std::exp, std::max;
  const Real t = 1 / (1 + 0.5 * abs(z));
  const double c[] = {-1.26551223, 1.00002368,  0.37409196, 0.09678418,  -0.18628806,
                      0.27886807,  -1.13520398, 1.48851587, -0.82215223, 0.17087277};
  Real P = 0;
  for (int k = 9; k >= 0; --k) P = c[k] + t * P;
  return t * exp(max(P - z * z, Real(-708.3964185322637)));
}

// ---- models of the stretches

// Energy over three terms, its derivatives tau by the logarithms of the stretches, and A, b of the tangent.  R. W. Ogden,
// Proc. R. Soc. A 326 (1972) 565; with beta the foam of B. Storakers, J. Mech. Phys. Solids 34 (1986) 125.
template <class Real>
struct StretchSums {
  Real J, U = 0, tau[3] = {}, A[3] = {}, b = 0;
};
// Numbers of several points at a time have no term without an exponent or a volume.
template <class Real, class Constant>
StretchSums<Real> stretchSums(const Constant* mus, const Constant* alphas, const Constant* betas, Real l1, Real l2,
                              Real l3) {
  using std::exp, std::log;
  constexpr bool isOne = std::is_floating_point_v<Real>;
  const bool foam = betas != nullptr;
  StretchSums<Real> s;
  s.J = l1 * l2 * l3;
  const Real logJ = log(s.J), f = foam ? Real(1) : exp(Real(-2) / Real(3) * logJ);
  const Real x[3] = {log(l1 * l1 * f), log(l2 * l2 * f), log(l3 * l3 * f)};
  for (int t = 0; t < 3; ++t) {
    const Real mu = mus[t], alpha = alphas[t], beta = foam ? Real(betas[t]) : Real(0), half = alpha / 2;
    if constexpr (isOne)
      if (alpha == 0) continue;
    const Real P[3] = {exp(half * x[0]), exp(half * x[1]), exp(half * x[2])};
    const Real Q = foam ? exp(-alpha * beta * logJ) : Real(0);
    Real volume = 0;
    if (foam) volume = (Q - 1) / beta;
    if constexpr (isOne)
      if (foam && beta == 0) volume = -alpha * logJ;
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
