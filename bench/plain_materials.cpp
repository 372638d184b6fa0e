#include "plain_materials.h"

#include "plain/materials.h"

#include <algorithm>
#include <cmath>

namespace plain {
namespace {

using Point = Invariants<double>;
Point invariantsOf(const double* V, int n, int i) {
  const Matrix<double> A = symmetric(V + i, n);
  const double J = determinant(A);
  return invariants(A, J < 1e-9 ? J + 1 : J);
}

void stressOf(const Point& s, const EnergyDerivatives<double>& d, int n, int i, double* stress, double* bound,
              double* bulk) {
  const StressAndModuli<double> t = stressAndModuli(s, d);
  for (int k = 0; k < 6; ++k) stress[k * n + i] = t.stress[k];
  bound[i] = t.bound;
  bulk[i] = t.bulk;
}

} // namespace

void hyperpoly6s33(int n, const Arrays& a) {
  for (int i = 0; i < n; ++i) {
    const Point s = invariantsOf(a[29], n, i);
    a[27][i] = polynomialEnergy<6>([&](int k) { return a[k][i]; }, s.I1, s.I2);
    a[28][i] = 1 / s.J;
  }
}

void hyperabs33(int n, const Arrays& a) {
  for (int i = 0; i < n; ++i) {
    const Point s = invariantsOf(a[4], n, i);
    a[2][i] = arrudaBoyceEnergy(a[0][i], a[1][i], s.I1);
    a[3][i] = 1 / s.J;
  }
}

void hyperab3dexp(int n, const Arrays& a) {
  for (int i = 0; i < n; ++i) {
    const Point s = invariantsOf(a[3], n, i);
    const double mu = a[0][i], k = 1 / (a[1][i] * a[1][i]), D = a[2][i], t = k * s.I1;
    const double U1 = mu * (0.5 + t * (0.1 + t * (11.0 / 350 + t * (19.0 / 1750 + t * 519.0 / 134750))));
    const double U11 = mu * k * (0.1 + t * (11.0 / 175 + t * (57.0 / 1750 + t * 2076.0 / 134750)));
    stressOf(s, {U1, 0, U11, 0, 0, (s.J - 1 / s.J) / D, (1 + 1 / (s.J * s.J)) / D}, n, i, a[4], a[6], a[7]);
  }
}

void hypervdw3dexp(int n, const Arrays& a) {
  for (int i = 0; i < n; ++i) {
    const Point q = invariantsOf(a[5], n, i);
    const double mu = a[0][i], l = a[1][i], g = a[2][i], beta = a[3][i], D = a[4][i];
    const double t = (1 - beta) * q.I1 + beta * q.I2 - 3, range = std::sqrt(l * l - 3);
    double eta = 0, s = 0, r = 0;
    if (t > 0) {
      s = t;
      eta = std::min(std::sqrt(s) / range, 0.99999);
      r = std::min(1 / std::sqrt(s), 1 / (0.99999 * range));
    }
    const double f = 0.5 * mu * (1 / (1 - eta) - g * std::sqrt(s / 2));
    const double h = 0.25 * mu * r * (1 / ((1 - eta) * (1 - eta)) / range - g * 0.70710678);
    stressOf(q,
             {(1 - beta) * f, beta * f, (1 - beta) * (1 - beta) * h, beta * (1 - beta) * h, beta * beta * h,
              (q.J - 1 / q.J) / D, (1 + 1 / (q.J * q.J)) / D},
             n, i, a[6], a[8], a[9]);
  }
}

void hyperinvs33(int n, const Arrays& a) {
  for (int i = 0; i < n; ++i) {
    const Point s = invariantsOf(a[3], n, i);
    a[0][i] = s.I1, a[1][i] = s.I2, a[2][i] = 1 / s.J;
  }
}

namespace {

using Sums = StretchSums<double>;
Sums sumTerms(const Arrays& a, int i, double l1, double l2, double l3, bool foam) {
  const double mu[3] = {a[0][i], a[2][i], a[4][i]}, alpha[3] = {a[1][i], a[3][i], a[5][i]};
  const double beta[3] = {a[6][i], a[7][i], a[8][i]};
  return stretchSums(mu, alpha, foam ? beta : nullptr, l1, l2, l3);
}
double shear(double t1, double t2, double l1, double l2, double A1, double A2) {
  const double d = l1 * l1 - l2 * l2, sum = l1 * l1 + l2 * l2;
  return std::abs(d) <= 1e-5 * sum ? 0.5 * (A1 + A2) : (t1 - t2) * sum / d;
}
void moduli(const Sums& s, bool foam, const double* l, double p, double slope, double& bound, double& bulk) {
  const double ninth = (s.A[0] + s.A[1] + s.A[2]) / 9, mean = foam ? ninth + s.b : 0;
  double largest = -1e300;
  for (int k = 0; k < 3; ++k) {
    const int m = (k + 1) % 3;
    largest = std::max(largest, foam ? s.A[k] - ninth : s.A[k] / 3 + ninth);
    largest = std::max(largest, shear(s.tau[k], s.tau[m], l[k], l[m], s.A[k], s.A[m]));
  }
  bound = largest / s.J;
  bulk = 3 * (mean / s.J + s.J * (p + slope));
}

} // namespace

void ogden(int n, const Arrays& a) {
  for (int i = 0; i < n; ++i) {
    const Sums s = sumTerms(a, i, a[8][i], a[8][n + i], a[8][2 * n + i], false);
    a[6][i] = s.U, a[7][i] = 1 / s.J;
  }
}
void ogdenderivative1(int n, const Arrays& a) {
  for (int i = 0; i < n; ++i) {
    const Sums s = sumTerms(a, i, a[7][i], a[7][n + i], a[7][2 * n + i], false);
    for (int k = 0; k < 3; ++k) a[6][k * n + i] = s.tau[k] / a[7][k * n + i];
  }
}
void hfoam(int n, const Arrays& a) {
  for (int i = 0; i < n; ++i) {
    const Sums s = sumTerms(a, i, a[11][i], a[11][n + i], a[11][2 * n + i], true);
    a[9][i] = s.U, a[10][i] = 1 / s.J;
  }
}
void hyperfoammoduliexp(int n, const Arrays& a) {
  for (int i = 0; i < n; ++i) {
    const double l[3] = {a[9][i], a[9][n + i], a[9][2 * n + i]};
    moduli(sumTerms(a, i, l[0], l[1], l[2], true), true, l, 0, 0, a[11][i], a[12][i]);
  }
}

void hyperogdenpsexp(int n, const Arrays& a) {
  for (int i = 0; i < n; ++i) {
    const double v11 = a[9][i], v22 = a[9][n + i], v12 = a[9][2 * n + i], mean = (v11 + v22) / 2, h = (v11 - v22) / 2;
    const double radius = std::hypot(h, v12), l1 = mean + radius, l2 = mean - radius;
    double l3 = a[10][i];
    Volume<double> v;
    Sums s;
    for (int round = 0; round < 50; ++round) {
      s = sumTerms(a, i, l1, l2, l3, false);
      v = volumePowers(
          3, [&](int k) { return a[6 + k][i]; }, s.J);
      const double stiffness = s.A[2] / 3 + (s.A[0] + s.A[1] + s.A[2]) / 9 + s.J * (v.p + s.J * v.slope);
      const double step = std::clamp((s.tau[2] + s.J * v.p) / stiffness, -0.5, 0.5);
      if (std::abs(step) < 1e-12) break;
      l3 *= std::exp(-step);
    }
    const double p1 = s.tau[0] / s.J + v.p, p2 = s.tau[1] / s.J + v.p, c = radius > 0 ? h / radius : 1;
    const double sine = radius > 0 ? v12 / radius : 0;
    a[10][i] = l3;
    a[12][i] = (p1 + p2) / 2 + (p1 - p2) / 2 * c;
    a[12][n + i] = (p1 + p2) / 2 - (p1 - p2) / 2 * c;
    a[12][2 * n + i] = (p1 - p2) / 2 * sine;
    const double l[3] = {l1, l2, l3};
    moduli(s, false, l, v.p, v.slope, a[13][i], a[14][i]);
  }
}

void ormullins(int n, const Arrays& a) {
  for (int i = 0; i < n; ++i) {
    const double r = a[0][i], m = a[1][i], beta = a[2][i], old = a[4][i], U = std::max(a[5][i], 0.0);
    const double Um = std::max(old, U), d = m + beta * Um, z = old <= U ? 0 : (old - U) / d;
    a[5][i] = U;
    a[3][i] = Um;
    a[6][i] = 1 - (1 - erfcFit(z)) / r;
    a[7][i] = 1.1283791670955126 / (r * d) * std::exp(-z * z);
  }
}
void mullinsdamageener(int n, const Arrays& a) {
  for (int i = 0; i < n; ++i) {
    const double Um = a[3][i], d = a[1][i] + a[2][i] * Um, z = Um / d;
    a[6][i] = ((1 - erfcFit(z)) * Um - d * (1 - std::exp(-z * z)) / 1.772453850905516) / a[0][i] * a[4][i] / a[5][i];
  }
}

void stressratio3dexp(int n, const Arrays& a) {
  for (int i = 0; i < n; ++i) {
    const double* s = a[0] + i;
    const double m = (s[0] + s[n] + s[2 * n]) / 3, d1 = s[0] - m, d2 = s[n] - m, d3 = s[2 * n] - m;
    const double q = std::sqrt(
        1.5 * (d1 * d1 + d2 * d2 + d3 * d3 + 2 * (s[3 * n] * s[3 * n] + s[4 * n] * s[4 * n] + s[5 * n] * s[5 * n])));
    a[1][i] = q > 0 ? std::clamp(m / q, -100.0, 100.0) : m == 0 ? 0 : std::copysign(100.0, m);
  }
}

namespace {
// d1 .. d5, melting and transition temperature, reciprocal of the reference rate.
const double* constants() {
  static double values[] = {0.05, 3.44, -2.12, 0.002, 0.61, 1800, 300, 1};
  return values;
}
double failureStrain(const double* d, double s, double rate, double t) {
  return std::max((d[0] + d[1] * std::exp(std::min(d[2] * s, 40.0))) *
                      (1 + d[3] * std::log(std::max(rate * d[7], 1.0))) * (1 + d[4] * t),
                  1e-306);
}
} // namespace

void jcfailurestrain(int n, const Arrays& a) {
  const double* d = constants();
  for (int i = 0; i < n; ++i) {
    const double T = a[3][i];
    a[0][i] = failureStrain(d, a[2][i], a[1][i], T < d[6] ? 0 : T > d[5] ? 1 : (T - d[6]) / (d[5] - d[6]));
  }
}
void jcshrfailexp(int n, const Arrays& a) {
  const double* d = constants();
  for (int i = 0; i < n; ++i) a[3][i] = 1 / failureStrain(d, a[0][i], a[1][i], a[2][i]);
}

} // namespace plain
