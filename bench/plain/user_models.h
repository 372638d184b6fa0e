// Built-in user materials as the author of a solver would write them, point after point: with branches, the mathematics of the C
// library, and iterations that end as soon as their point is there.  The benchmark times the kernels beside these loops, and a
// test holds both to each other.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace plain {

// The block of a material: 11 22 33 12 23 13 in solids, 11 22 33 12 in sheets; deformation gradient of nine components.
struct MaterialBlock {
  const double *props, *density, *strainInc, *defgrad, *stressOld, *stateOld, *internalOld, *inelasticOld;
  double *stress, *state, *internal, *inelastic;
  double dt;
  const double *stretchOld = nullptr, *stretchNew = nullptr, *length = nullptr;
};

// Each file that includes this has code of its own, for its own machine.
namespace {
namespace user {

inline double product(const double* a, const double* b) {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2] + 2 * (a[3] * b[3] + a[4] * b[4] + a[5] * b[5]);
}
inline void load(const double* from, int n, int i, int count, double* to) {
  for (int c = 0; c < count; ++c) to[c] = from[c * n + i];
}
inline double determinant(const double* t) {
  return t[0] * (t[1] * t[2] - t[4] * t[4]) - t[3] * (t[3] * t[2] - t[4] * t[5]) + t[5] * (t[3] * t[4] - t[1] * t[5]);
}
inline double norm(double q, double p, double f) { return std::sqrt(q * q + f * p * p); }

// The root of a rising function between two ends, by false position that halves the weight of an end that stays; the last
// argument that the function saw.
template <class Function>
inline double rootOf(Function f, double low, double high, double below, double above, double exact) {
  double x = low;
  for (int step = 0, side = 0; step < 80 && high - low > 1e-15; ++step) {
    x = (low * above - high * below) / (above - below);
    const double value = f(x);
    if (std::abs(value) < exact) break;
    if (value > 0) {
      high = x, above = value;
      if (side > 0) below *= .5;
      side = 1;
    } else {
      low = x, below = value;
      if (side < 0) above *= .5;
      side = -1;
    }
  }
  return x;
}

// Jacobi's rotations; direction a in column a of Q.
inline void eigen(const double* t, double* l, double (*Q)[3]) {
  double A[3][3] = {{t[0], t[3], t[5]}, {t[3], t[1], t[4]}, {t[5], t[4], t[2]}};
  for (int a = 0; a < 3; ++a)
    for (int b = 0; b < 3; ++b) Q[a][b] = a == b;
  for (int sweep = 0; sweep < 12; ++sweep) {
    const double off = A[0][1] * A[0][1] + A[0][2] * A[0][2] + A[1][2] * A[1][2];
    if (off < 1e-34 * (A[0][0] * A[0][0] + A[1][1] * A[1][1] + A[2][2] * A[2][2])) break;
    for (int p = 0; p < 2; ++p)
      for (int q = p + 1; q < 3; ++q) {
        if (A[p][q] == 0) continue;
        const double theta = (A[q][q] - A[p][p]) / (2 * A[p][q]);
        const double tan = (theta < 0 ? -1 : 1) / (std::abs(theta) + std::sqrt(theta * theta + 1));
        const double c = 1 / std::sqrt(tan * tan + 1), s = tan * c;
        for (int k = 0; k < 3; ++k) {
          const double x = A[k][p], y = A[k][q];
          A[k][p] = c * x - s * y, A[k][q] = s * x + c * y;
        }
        for (int k = 0; k < 3; ++k) {
          const double x = A[p][k], y = A[q][k];
          A[p][k] = c * x - s * y, A[q][k] = s * x + c * y;
          const double u = Q[k][p], v = Q[k][q];
          Q[k][p] = c * u - s * v, Q[k][q] = s * u + c * v;
        }
      }
  }
  for (int a = 0; a < 3; ++a) l[a] = A[a][a];
}
// Sum of v_a n_a n_a.
inline void compose(const double* v, const double (*Q)[3], double* t) {
  constexpr int first[] = {0, 1, 2, 0, 1, 0}, second[] = {0, 1, 2, 1, 2, 2};
  for (int c = 0; c < 6; ++c) {
    t[c] = 0;
    for (int a = 0; a < 3; ++a) t[c] += v[a] * Q[first[c]][a] * Q[second[c]][a];
  }
}

// n_a . t . n_a
inline double along(const double (*Q)[3], int a, const double* t) {
  const double x = Q[0][a], y = Q[1][a], z = Q[2][a];
  return t[0] * x * x + t[1] * y * y + t[2] * z * z + 2 * (t[3] * x * y + t[4] * y * z + t[5] * x * z);
}

// Rows of (stress, strain): the value, and the area from zero strain on; the end slopes go on.
struct Curve {
  const double* rows;
  int count;
  double operator()(double x) const {
    if (count == 1) return rows[0];
    int r = 1;
    while (r + 1 < count && x > rows[2 * r + 1]) ++r;
    const double *a = rows + 2 * r - 2, *b = rows + 2 * r;
    return a[0] + (b[0] - a[0]) * (x - a[1]) / (b[1] - a[1]);
  }
  double area(double x) const {
    double sum = 0;
    for (int r = 1; r < count && (r == 1 || x > rows[2 * r - 1]); ++r) {
      const double *a = rows + 2 * r - 2, *b = rows + 2 * r, end = r + 1 < count ? std::min(x, b[1]) : x;
      const double slope = (b[0] - a[0]) / (b[1] - a[1]), w = end - a[1];
      sum += w * (a[0] + .5 * slope * w);
    }
    return sum;
  }
  double inverse(double stress) const {
    int r = 1;
    while (r + 1 < count && stress > rows[2 * r]) ++r;
    const double *a = rows + 2 * r - 2, *b = rows + 2 * r;
    return a[1] + (b[1] - a[1]) * (stress - a[0]) / (b[0] - a[0]);
  }
};
// Curves at increasing rates, straight in the logarithm of the rate.
struct Family {
  const double* rates; // rows of rate and number of rows
  int count;
  const double* curves;
  const double* end() const {
    int rows = 0;
    for (int k = 0; k < count; ++k) rows += static_cast<int>(rates[2 * k + 1]);
    return curves + 2 * rows;
  }
  Curve slowest() const { return {curves, static_cast<int>(rates[1])}; }
  double operator()(double x, double rate) const {
    const double* at = curves;
    int k = 0;
    for (; k + 1 < count && rate > rates[2 * k + 2]; ++k) at += 2 * static_cast<int>(rates[2 * k + 1]);
    const int rows = static_cast<int>(rates[2 * k + 1]);
    const double low = Curve{at, rows}(x);
    if (k + 1 == count || rate <= rates[2 * k]) return low;
    const double high = Curve{at + 2 * rows, static_cast<int>(rates[2 * k + 3])}(x);
    return low + (high - low) * std::log(rate / rates[2 * k]) / std::log(rates[2 * k + 2] / rates[2 * k]);
  }
};
inline Family familyAt(const double* table, int count) { return {table, count, table + 2 * count}; }

// internal += (Jo so + J s)/2 : e/(density J), inelastic = max(before, internal - psi/(density J)).
inline void energies(const MaterialBlock& b, int i, double Jo, const double* so, double J, const double* s,
                     const double* e, double psi) {
  double work = 0;
  for (int c = 0; c < 6; ++c) work += (c < 3 ? .5 : 1) * (Jo * so[c] + J * s[c]) * e[c];
  b.internal[i] = b.internalOld[i] + work / (b.density[i] * J);
  b.inelastic[i] = std::max(b.inelasticOld[i], b.internal[i] - psi / (b.density[i] * J));
}

// Of brittle materials: what was lost and what can come back; an increment in which nothing yields loses nothing.
inline void settleEnergies(const MaterialBlock& b, int i, const double* so, const double* s, const double* e,
                           double elastic, bool loses) {
  energies(b, i, 1, so, 1, s, e, 0);
  const double elasticOld = b.internalOld[i] - b.inelasticOld[i];
  const double lost = b.internal[i] - b.internalOld[i] - (elastic - elasticOld);
  b.inelastic[i] = b.inelasticOld[i] + (loses ? std::max(0., lost) : 0);
  b.internal[i] = b.inelastic[i] + elastic;
}

// What a family of foams keeps: softening s and energy of hysteresis.
struct Hysteresis {
  double s, psi, largest;
};
inline Hysteresis soften(double W, double largestOld, double HU, double p) {
  const double largest = std::max(largestOld, W), keep = HU == 0 ? 1 : HU, exponent = p == 0 ? 1 : p;
  if (!(largest > 0) || W >= largest) return {1, W * (keep + (1 - keep) / (exponent + 1)), largest};
  const double f = std::pow(W / largest, exponent);
  return {keep + (1 - keep) * f, W * (keep + (1 - keep) * f / (exponent + 1)), largest};
}
// Tension by E with a plateau: stress and energy at the negative strain e.
inline double tension(double E, double cut, double e) { return cut > 0 ? std::max(E * e, -cut) : E * e; }
inline double tensionEnergy(double E, double cut, double e) {
  if (cut == 0 || e > -cut / E) return .5 * E * e * e;
  return .5 * cut * cut / E - cut * (e + cut / E);
}
inline double filtered(double before, double now, double dt, double tau) {
  return tau > 0 ? before + (now - before) * -std::expm1(-dt / tau) : now;
}

} // namespace user

inline void viscousFoam(int32_t n, const MaterialBlock& b) {
  using namespace user;
  const double *c = b.props, E = c[6], most = c[9] > 0 ? c[9] : 1e100;
  for (int i = 0; i < n; ++i) {
    double U[6], Uo[6], e[6], so[6], l[3], Q[3][3], k[3], s[6], qo[6];
    load(b.stretchNew, n, i, 6, U), load(b.stretchOld, n, i, 6, Uo), load(b.strainInc, n, i, 6, e);
    load(b.stressOld, n, i, 6, so), load(b.stateOld, n, i, 6, qo);
    eigen(U, l, Q);
    const double J = l[0] * l[1] * l[2], Jo = determinant(Uo);
    k[0] = k[1] = k[2] = 0;
    for (const double* t : {c, c + 3}) {
      if (t[0] == 0) continue;
      const double volume = std::pow(J, -t[1] * t[2]);
      for (int a = 0; a < 3; ++a) k[a] += 2 * t[0] / t[1] * (std::pow(l[a], t[1]) - volume);
    }
    compose(k, Q, s);
    const auto eta = [&](double volume) { return std::min(c[7] * std::pow(volume, -c[8]), most); };
    const double etaA = eta(Jo), etaM = eta(std::sqrt(Jo * J)), etaB = eta(J), theta = etaM / E, x = b.dt / theta;
    const double a = std::exp(-x), gone = -std::expm1(-x), phi = gone / x;
    double steady[6], rest[6];
    for (int d = 0; d < 6; ++d) {
      const double D = e[d] / b.dt, q = etaB * D + a * (qo[d] - etaA * D) - (etaB - etaA) * phi * D;
      steady[d] = etaM * D, rest[d] = qo[d] - steady[d];
      b.state[d * n + i] = q;
      s[d] = (s[d] + q) / J;
      b.stress[d * n + i] = s[d];
    }
    const double loss = (product(steady, steady) * b.dt + 2 * product(steady, rest) * theta * gone +
                         product(rest, rest) * theta * -std::expm1(-2 * x) / 2) /
                        etaM;
    energies(b, i, Jo, so, J, s, e, 0);
    b.inelastic[i] = b.inelasticOld[i] + loss / (b.density[i] * J);
  }
}

inline void rateSensitiveFoam(int32_t n, const MaterialBlock& b) {
  using namespace user;
  const double *c = b.props, E = c[0], cut = c[1];
  const Family family = familyAt(c + 7, static_cast<int>(c[6]));
  for (int i = 0; i < n; ++i) {
    double U[6], Uo[6], e[6], so[6], l[3], Q[3][3], T[3], s[6], change[6], v[3];
    load(b.stretchNew, n, i, 6, U), load(b.stretchOld, n, i, 6, Uo), load(b.strainInc, n, i, 6, e);
    load(b.stressOld, n, i, 6, so);
    eigen(U, l, Q);
    double W = 0, size = 0, power = 0;
    for (int d = 0; d < 6; ++d) change[d] = U[d] - Uo[d];
    for (int a = 0; a < 3; ++a) {
      const double x = 1 - l[a];
      T[a] = x < 0 ? tension(E, cut, x) : family.slowest()(x);
      W += x < 0 ? tensionEnergy(E, cut, x) : family.slowest().area(x);
      size += T[a] * T[a], power -= T[a] * along(Q, a, change);
    }
    const double now = size > 0 ? std::max(0., power / b.dt) / std::sqrt(size) : 0;
    const double rate = filtered(b.stateOld[n + i], now, b.dt, c[5]);
    const Hysteresis h = soften(W, b.stateOld[i], c[3], c[4]);
    for (int a = 0; a < 3; ++a)
      v[a] = -h.s * (l[a] > 1 ? T[a] : family(1 - l[a], rate)) / (l[(a + 1) % 3] * l[(a + 2) % 3]);
    compose(v, Q, s);
    b.state[i] = h.largest, b.state[n + i] = rate;
    for (int d = 0; d < 6; ++d) b.stress[d * n + i] = s[d];
    energies(b, i, determinant(Uo), so, determinant(U), s, e, h.psi);
  }
}

inline void fuChangFoam(int32_t n, const MaterialBlock& b) {
  using namespace user;
  const double *c = b.props, E = c[0], cut = c[1];
  const Family family = familyAt(c + 6, static_cast<int>(c[5]));
  for (int i = 0; i < n; ++i) {
    double U[6], Uo[6], e[6], so[6], l[3], Q[3][3], v[3], s[6], D[6];
    load(b.stretchNew, n, i, 6, U), load(b.stretchOld, n, i, 6, Uo), load(b.strainInc, n, i, 6, e);
    load(b.stressOld, n, i, 6, so);
    eigen(U, l, Q);
    for (int d = 0; d < 6; ++d) {
      D[d] = filtered(b.stateOld[(d + 1) * n + i], (U[d] - Uo[d]) / b.dt, b.dt, c[4]);
      b.state[(d + 1) * n + i] = D[d];
    }
    double W = 0;
    for (int a = 0; a < 3; ++a) W += l[a] > 1 ? tensionEnergy(E, cut, 1 - l[a]) : family.slowest().area(1 - l[a]);
    const Hysteresis h = soften(W, b.stateOld[i], c[2], c[3]);
    for (int a = 0; a < 3; ++a) {
      const double rate = std::max(0., -along(Q, a, D));
      v[a] = -h.s * (l[a] > 1 ? tension(E, cut, 1 - l[a]) : family(1 - l[a], rate)) / (l[(a + 1) % 3] * l[(a + 2) % 3]);
    }
    compose(v, Q, s);
    b.state[i] = h.largest;
    for (int d = 0; d < 6; ++d) b.stress[d * n + i] = s[d];
    energies(b, i, determinant(Uo), so, determinant(U), s, e, h.psi);
  }
}

inline void fuChangBlock(int32_t n, const MaterialBlock& b) {
  using namespace user;
  const double *c = b.props, E = c[0], cut = c[1];
  Family families[6];
  const double* at = c + 11;
  for (int k = 0; k < 6; ++k) {
    families[k] = c[5 + k] > 0 ? familyAt(at, static_cast<int>(c[5 + k])) : families[k - 1];
    if (c[5 + k] > 0) at = families[k].end();
  }
  constexpr int first[] = {0, 1, 2, 0, 1, 0}, second[] = {0, 1, 2, 1, 2, 2};
  for (int i = 0; i < n; ++i) {
    double U[6], Uo[6], e[6], so[6], l[3], Q[3][3], T[6], s[6], psi = 0;
    load(b.stretchNew, n, i, 6, U), load(b.stretchOld, n, i, 6, Uo), load(b.strainInc, n, i, 6, e);
    load(b.stressOld, n, i, 6, so);
    for (int k = 0; k < 6; ++k) {
      const Family& family = families[k];
      const double D = filtered(b.stateOld[(6 + k) * n + i], (U[k] - Uo[k]) / b.dt, b.dt, c[4]);
      const bool isShear = k > 2, isPulled = !isShear && U[k] > 1;
      const double x = isShear ? 2 * std::abs(U[k]) : 1 - U[k];
      const double W = isPulled ? tensionEnergy(E, cut, x) : family.slowest().area(x);
      const Hysteresis h = soften(W, b.stateOld[k * n + i], c[2], c[3]);
      const double rate = std::max(0., isShear ? (U[k] < 0 ? -2 : 2) * D : -D);
      const double stress = h.s * (isPulled ? tension(E, cut, x) : family(x, rate));
      T[k] = isShear ? (U[k] < 0 ? -stress : stress) : -stress;
      psi += h.psi;
      b.state[k * n + i] = h.largest, b.state[(6 + k) * n + i] = D;
    }
    eigen(U, l, Q);
    const double J = l[0] * l[1] * l[2], full[3][3] = {{T[0], T[3], T[5]}, {T[3], T[1], T[4]}, {T[5], T[4], T[2]}};
    double own[3][3];
    for (int a = 0; a < 3; ++a)
      for (int d = 0; d < 3; ++d) {
        double sum = 0;
        for (int r = 0; r < 3; ++r)
          for (int t = 0; t < 3; ++t) sum += Q[r][a] * full[r][t] * Q[t][d];
        own[a][d] = 2 * l[a] * l[d] / (l[a] + l[d]) * sum / J;
      }
    for (int k = 0; k < 6; ++k) {
      s[k] = 0;
      for (int a = 0; a < 3; ++a)
        for (int d = 0; d < 3; ++d) s[k] += Q[first[k]][a] * own[a][d] * Q[second[k]][d];
      b.stress[k * n + i] = s[k];
    }
    energies(b, i, determinant(Uo), so, J, s, e, psi);
  }
}

inline void honeycomb(int32_t n, const MaterialBlock& b) {
  using namespace user;
  const double *c = b.props, E = c[0], sy = c[2], G = E / (2 * (1 + c[1])), K = E / (3 * (1 - 2 * c[1]));
  Curve curves[6];
  const double* at = c + 18;
  for (int k = 0; k < 6; ++k) {
    curves[k] = c[11 + k] > 0 ? Curve{at, static_cast<int>(c[11 + k])} : curves[k - 1];
    if (c[11 + k] > 0) at += 2 * curves[k].count;
  }
  const int factors = static_cast<int>(c[17]);
  for (int i = 0; i < n; ++i) {
    double U[6], Uo[6], e[6], so[6], s[6], psi = 0;
    load(b.stretchNew, n, i, 6, U), load(b.stretchOld, n, i, 6, Uo), load(b.strainInc, n, i, 6, e);
    load(b.stressOld, n, i, 6, so);
    const double J = determinant(U), Jo = determinant(Uo), before = b.stateOld[i];
    const double now = std::max(before, std::min(1., std::max(0., (1 - J) / (1 - c[3]))));
    b.state[i] = now;
    if (before >= 1) {
      const double tr = e[0] + e[1] + e[2], mean = (so[0] + so[1] + so[2]) / 3, P = mean + K * tr;
      for (int k = 0; k < 6; ++k) s[k] = so[k] + 2 * G * e[k] - (k < 3 ? mean + 2 * G * tr / 3 : 0);
      const double q = std::sqrt(1.5 * product(s, s)), keep = q > sy ? sy / q : 1;
      for (int k = 0; k < 6; ++k) s[k] = keep * s[k] + (k < 3 ? P : 0);
      psi = std::pow(std::min(q, sy), 2) / (6 * G) + P * P / (2 * K);
    } else {
      const double rate = std::sqrt(2. / 3 * product(e, e)) / b.dt;
      double factor = 1;
      if (factors > 0) {
        int r = 0;
        while (r + 1 < factors && rate > at[2 * r + 3]) ++r;
        factor = at[2 * r];
        if (r + 1 < factors && rate > at[2 * r + 1])
          factor += (at[2 * r + 2] - factor) * std::log(rate / at[2 * r + 1]) / std::log(at[2 * r + 3] / at[2 * r + 1]);
      }
      for (int k = 0; k < 6; ++k) {
        const double loose = k < 3 ? c[4 + k] : 2 * c[4 + k], dense = k < 3 ? E : 2 * G,
                     M = loose + now * (dense - loose);
        const double Y = std::min(std::max(0., curves[k](1 - J)) * factor, k < 3 ? sy : sy / std::sqrt(3.));
        s[k] = std::clamp(so[k] + M * e[k], -Y, Y);
        psi += (k < 3 ? .5 : 1) * s[k] * s[k] / M;
      }
    }
    for (int k = 0; k < 6; ++k) b.stress[k * n + i] = s[k];
    energies(b, i, Jo, so, J, s, e, psi * J);
  }
}

inline void thermoplastic(int32_t n, const MaterialBlock& b) {
  using namespace user;
  const double *c = b.props, E = c[0], G = E / (2 * (1 + c[1])), K = E / (3 * (1 - 2 * c[1]));
  const Curve tensile{c + 21, static_cast<int>(c[10])}, pressed{c + 21 + 2 * tensile.count, static_cast<int>(c[11])};
  const double* ductile = pressed.rows + 2 * pressed.count;
  const int ductileRows = static_cast<int>(c[12]), shearRows = static_cast<int>(c[13]);
  const double *shear = ductile + 3 * ductileRows, f3 = c[14], f5 = c[15], k = 1 + f3 / 9, cc = std::sqrt(1 + f5 / 9);
  // one row of failure strains; tension, compression, weights from 0 to 1 by hyperbolic sines
  const auto between = [](double plus, double minus, double x, double f) { // x from 0 (compression) to 1 (tension)
    if (f == 0) return plus * x + minus * (1 - x);
    return (plus * std::sinh(f * x) + minus * std::sinh(f * (1 - x))) / std::sinh(f);
  };
  for (int i = 0; i < n; ++i) {
    double e[6], so[6], s[6], d[6], l[3], Q[3][3];
    load(b.strainInc, n, i, 6, e), load(b.stressOld, n, i, 6, so);
    const double tr = e[0] + e[1] + e[2], mean = (so[0] + so[1] + so[2]) / 3, pt = -mean - K * tr, ep = b.stateOld[i];
    for (int a = 0; a < 6; ++a) {
      d[a] = e[a] - (a < 3 ? tr / 3 : 0);
      s[a] = so[a] - (a < 3 ? mean : 0) + 2 * G * d[a];
    }
    const double qt = std::sqrt(1.5 * product(s, s));
    const double rate = filtered(b.stateOld[7 * n + i], std::sqrt(2. / 3 * product(d, d)) / b.dt, b.dt, c[19]);
    double p = pt, dep = 0;
    const auto beyond = [&](double x) {
      const double h = (1 / x - 1) / (3 * G), q = qt * x;
      p = pt / (1 + K * f5 * h);
      dep = cc * h * norm(q, p, f5);
      const double st = std::max(1e-9 * E, tensile(ep + dep)), sc = std::max(1e-9 * E, pressed(ep + dep));
      const double inside = k * st * sc + 3 * k * (sc - st) * p;
      return norm(q, p, f3) - std::copysign(std::sqrt(std::abs(inside)), inside);
    };
    double x = 1;
    if (beyond(1) > 0) {
      const double atLow = beyond(1e-14);
      if (atLow >= 0) { // the apex of the surface
        const double st = tensile(ep), sc = pressed(ep), f1 = k * st * sc, f2 = 3 * k * (sc - st),
                     root = std::sqrt(f2 * f2 + 4 * f3 * f1);
        x = 0, p = std::max(pt, -2 * f1 / (f2 + root));
        if (f3 > 0) p = std::min(p, (f2 + root) / (2 * f3));
        dep = qt / (3 * G) + std::abs(pt - p) / (3 * K);
      } else {
        x = rootOf(beyond, 0, 1, atLow, beyond(1), 1e-13 * qt);
        beyond(x);
      }
    }
    const double q = qt * x;
    for (int a = 0; a < 6; ++a) s[a] = x * s[a] - (a < 3 ? p : 0);
    const double dp = -p - mean;
    for (int a = 0; a < 6; ++a) {
      const double elastic = (s[a] - so[a] - (a < 3 ? dp : 0)) / (2 * G) + (a < 3 ? dp / (3 * K) : 0);
      b.state[(a + 1) * n + i] = b.stateOld[(a + 1) * n + i] + e[a] - elastic;
      b.stress[a * n + i] = s[a];
    }
    double damage = b.stateOld[8 * n + i], sheared = b.stateOld[9 * n + i];
    const double eta = q > 0 ? std::clamp(-3 * p / q, -2., 2.) : (p > 0 ? -2 : 2);
    if (dep > 0 && ductileRows > 0) damage += dep / between(ductile[0], ductile[1], (eta + 2) / 4, 4 * c[16]);
    if (dep > 0 && shearRows > 0) {
      eigen(s, l, Q);
      const double tau = .5 * (std::max({l[0], l[1], l[2]}) - std::min({l[0], l[1], l[2]}));
      const double theta = (1 - c[17] * eta) / (q > 0 ? std::clamp(tau / q, .5, 1 / std::sqrt(3.)) : .5);
      const double plus = 2 - 4 * c[17], minus = 2 + 4 * c[17], f = c[18] * (plus - minus);
      sheared += dep / (c[17] == 0 ? shear[0] : between(shear[0], shear[1], (theta - minus) / (plus - minus), f));
    }
    b.state[i] = ep + dep, b.state[7 * n + i] = rate, b.state[8 * n + i] = damage, b.state[9 * n + i] = sheared;
    b.state[10 * n + i] = b.stateOld[10 * n + i], b.state[11 * n + i] = q, b.state[12 * n + i] = q > 0 ? -p / q : 0;
    b.state[13 * n + i] = damage < 1 && sheared < 1;
    energies(b, i, 1, so, 1, s, e, q * q / (6 * G) + p * p / (2 * K));
  }
}

// Both fibres with curves of unloading.
inline void fabric(int32_t n, const MaterialBlock& b) {
  using namespace user;
  const double *c = b.props, degree = std::acos(-1.) / 180, at[2] = {c[4] * degree, c[5] * degree},
               lock = c[7] * degree;
  Curve loading[2], back[2];
  const double* rows = c + 14;
  for (int k = 0; k < 4; ++k) {
    (k < 2 ? loading[k] : back[k - 2]) = {rows, static_cast<int>(c[k])};
    rows += 2 * static_cast<int>(c[k]);
  }
  for (int i = 0; i < n; ++i) {
    double U[4], Uo[4], so[6] = {}, e[6] = {}, s[6] = {}, psi = 0, direction[2][2], force[2];
    load(b.stretchNew, n, i, 4, U), load(b.stretchOld, n, i, 4, Uo), load(b.stressOld, n, i, 4, so);
    load(b.strainInc, n, i, 4, e);
    e[2] = so[2] = 0;
    const double J = U[0] * U[1] - U[3] * U[3], Jo = Uo[0] * Uo[1] - Uo[3] * Uo[3];
    for (int k = 0; k < 2; ++k) {
      const double x = U[0] * std::cos(at[k]) + U[3] * std::sin(at[k]),
                   y = U[3] * std::cos(at[k]) + U[1] * std::sin(at[k]);
      const double l = std::sqrt(x * x + y * y), strain = l - 1, largest = std::max(b.stateOld[k * n + i], strain);
      const double shift = std::max(0., largest - back[k].inverse(loading[k](largest)));
      const double slope = back[k].rows[2] / back[k].rows[3];
      double T;
      if (strain >= largest)
        T = std::max(0., loading[k](strain));
      else if (strain > shift)
        T = std::min(loading[k](strain), back[k](strain - shift));
      else
        T = c[11] * slope * (strain - shift);
      psi += strain > shift ? back[k].area(strain - shift) : .5 * c[11] * slope * std::pow(strain - shift, 2);
      direction[k][0] = x / l, direction[k][1] = y / l, force[k] = T * l / J;
      b.state[k * n + i] = largest, b.state[(2 + k) * n + i] = shift, b.state[(5 + k) * n + i] = strain;
    }
    const double *u = direction[0], *v = direction[1], cosine = std::clamp(u[0] * v[0] + u[1] * v[1], -1., 1.);
    const double theta = std::acos(cosine), gamma = std::abs(at[1] - at[0]) - theta;
    const double over = lock > 0 ? std::max(0., std::abs(gamma) - lock) : 0;
    const double rub = std::clamp(b.stateOld[4 * n + i] + c[9] * (gamma - b.stateOld[7 * n + i]), -c[10], c[10]);
    const double tau = c[6] * gamma + std::copysign(c[8] * over, gamma) + rub;
    const double f = 2 * tau / (J * std::max(1e-3, std::sin(theta)));
    const auto stress = [&](int p, int q) {
      return force[0] * u[p] * u[q] + force[1] * v[p] * v[q] +
             f * (.5 * (u[p] * v[q] + v[p] * u[q]) - .5 * cosine * (u[p] * u[q] + v[p] * v[q]));
    };
    s[0] = stress(0, 0), s[1] = stress(1, 1), s[3] = stress(0, 1);
    psi += .5 * c[6] * gamma * gamma + .5 * c[8] * over * over + .5 * rub * rub / c[9];
    for (int a = 0; a < 4; ++a) b.stress[a * n + i] = s[a];
    b.state[4 * n + i] = rub, b.state[7 * n + i] = gamma;
    energies(b, i, Jo, so, J, s, e, psi);
  }
}

inline void plyFabric(int32_t n, const MaterialBlock& b) {
  using namespace user;
  const double *c = b.props, E[2] = {c[0], c[1]}, nu12 = c[2], nu21 = nu12 * E[1] / E[0], G = c[3];
  const double most = c[18] == 0 ? .999 : c[18];
  for (int i = 0; i < n; ++i) {
    double so[6] = {}, e[6] = {}, s[6] = {}, d[4], r[4], A[4];
    load(b.stressOld, n, i, 4, so), load(b.strainInc, n, i, 4, e);
    e[2] = so[2] = 0;
    const auto old = [&](int k) { return b.stateOld[(k - 1) * n + i]; };
    const double L = b.length[i], e1 = old(13) + e[0], e2 = old(14) + e[1], e12 = old(15) + e[3];
    for (int k = 0; k < 4; ++k) {
      const double X = c[4 + k], g0 = X * X / (2 * E[k / 2]), Gf = c[8 + k];
      A[k] = 2 * g0 * L / std::max(Gf - g0 * L, 2 * g0 * L / 500);
      d[k] = old(1 + k), r[k] = old(7 + k);
    }
    const auto damageOf = [&](int k, double x) {
      return x > 1 ? std::min(most, 1 - std::exp(-A[k] * (x - 1)) / x) : 0.;
    };
    double strength[2], d1, d2;
    int side[2] = {0, 0};
    for (int sweep = 0; sweep < 4; ++sweep) {
      for (int pass = 0; pass < 3; ++pass) { // the sign that belongs to the damage of its own
        d1 = d[side[0]], d2 = d[2 + side[1]];
        strength[0] = E[0] * (e1 + (1 - d2) * nu21 * e2), strength[1] = E[1] * (e2 + (1 - d1) * nu12 * e1);
        for (int k = 0; k < 2; ++k) side[k] = strength[k] < 0;
      }
      const double D = 1 - (1 - d1) * (1 - d2) * nu12 * nu21;
      s[0] = (1 - d1) * strength[0] / D, s[1] = (1 - d2) * strength[1] / D;
      if (sweep == 3) break;
      for (int k = 0; k < 2; ++k) {
        const int at = 2 * k + side[k];
        for (int sign = 2 * k; sign < 2 * k + 2; ++sign) d[sign] = old(1 + sign), r[sign] = old(7 + sign);
        r[at] = std::max(r[at], std::abs(strength[k] / D) / c[4 + at]); // each sweep begins with the past
        d[at] = std::max(d[at], damageOf(at, r[at]));
      }
    }
    const double trial = 2 * G * (e12 - old(12));
    double slip = 0;
    if (std::abs(trial) > c[15] + c[16] * std::pow(old(6), c[17])) {
      double low = 0, high = (std::abs(trial) - c[15]) / (2 * G);
      slip = .5 * high;
      for (int step = 0; step < 60; ++step) {
        const double ep = old(6) + slip, f = std::abs(trial) - 2 * G * slip - c[15] - c[16] * std::pow(ep, c[17]);
        (f > 0 ? low : high) = slip;
        const double next = slip + f / (2 * G + c[16] * c[17] * std::pow(ep, c[17] - 1));
        const double taken = next > low && next < high ? next : .5 * (low + high);
        if (std::abs(taken - slip) < 1e-15 * high) break;
        slip = taken;
      }
    }
    const double t = std::copysign(std::abs(trial) - 2 * G * slip, trial), r12 = std::max(old(11), std::abs(t) / c[12]);
    const double d12 = std::max(old(5), std::min(c[14], r12 > 1 ? c[13] * std::log(r12) : 0.));
    const double slipped = old(12) + std::copysign(slip, trial);
    s[3] = (1 - d12) * t;
    for (int a = 0; a < 4; ++a) b.stress[a * n + i] = s[a];
    const double now[16] = {d[0], d[1], d[2],    d[3], d12, old(6) + slip, r[0], r[1], r[2],
                            r[3], r12,  slipped, e1,   e2,  e12,           1};
    for (int k = 0; k < 16; ++k) b.state[k * n + i] = now[k];
    energies(b, i, 1, so, 1, s, e, .5 * (s[0] * e1 + s[1] * e2) + s[3] * (e12 - slipped));
  }
}

// With a change of phase; what can come back is the work of the pressure on the way to where it is zero.
inline void jhbOfPhases(int32_t n, const MaterialBlock& b) {
  using namespace user;
  const double *c = b.props, G = c[0], T = c[9], K1 = c[13], P1 = c[18], mu2 = c[19], mu0 = c[23];
  const auto cubic = [](const double* k, double x) { return x > 0 ? x * (k[0] + x * (k[1] + x * k[2])) : k[0] * x; };
  const auto low = [&](double mu) { return cubic(c + 13, mu); };
  const auto dense = [&](double mu) { return cubic(c + 20, (mu - mu0) / (1 + mu0)); };
  const auto curve = [](double P, double root, double knee, double value, double most) {
    if (P < knee) return std::max(0., (P - root) * value / (knee - root));
    return value +
           (most > value ? (most - value) * (1 - std::exp(-value / (knee - root) / (most - value) * (P - knee))) : 0);
  };
  double mu1 = P1 / K1;
  for (int k = 0; k < 60; ++k) mu1 -= (low(mu1) - P1) / (K1 + mu1 * (2 * c[14] + 3 * mu1 * c[15]));
  const double rise = dense(mu2) - P1;
  for (int i = 0; i < n; ++i) {
    double e[6], so[6], s[6], d[6], F[3];
    load(b.strainInc, n, i, 6, e), load(b.stressOld, n, i, 6, so), load(b.defgrad, n, i, 3, F);
    const double mu = 1 / (F[0] * F[1] * F[2]) - 1, top = std::max({0., b.stateOld[4 * n + i], mu}),
                 tr = e[0] + e[1] + e[2];
    const double f = std::clamp((top - mu1) / (mu2 - mu1), 0., 1.), dP = b.stateOld[3 * n + i], D = b.stateOld[n + i];
    const auto mix = [&](double x) { return (1 - f) * low(x) + f * dense(x); };
    const double offset = f > 0 && f < 1 ? P1 + f * rise - mix(top) : 0;
    double P = mix(mu) + dP + offset;
    const double mean = (so[0] + so[1] + so[2]) / 3, limited = std::max(D < 1 ? -T : 0., P);
    for (int k = 0; k < 6; ++k) {
      d[k] = e[k] - (k < 3 ? tr / 3 : 0);
      s[k] = so[k] - (k < 3 ? mean : 0) + 2 * G * d[k];
    }
    const double trial = std::sqrt(1.5 * product(s, s)), rate = std::sqrt(2. / 3 * product(d, d)) / b.dt;
    const double r = rate > c[8] ? 1 + c[7] * std::log(rate / c[8]) : 1;
    const auto failed = [&](double p) { return r * curve(p, 0, c[4], c[5], c[6]); };
    const double strength = D < 1 ? r * curve(limited, -T, c[1], c[2], c[3]) : failed(limited);
    double q = trial, dep = 0, now = D, growth = 0;
    if (trial > strength + 1e-12 * G) {
      const double strain = c[10] * std::pow((limited + T) / c[3], c[11]),
                   ef = std::max(1e-30, c[12] > 0 ? std::min(c[12], strain) : strain);
      dep = (trial - strength) / (3 * G), now = std::min(1., D + dep / ef), q = strength;
      if (D < 1 && now >= 1) {
        const double broken = failed(limited), arm = K1 * (mu - f * mu0) + dP;
        const double gain = 2 * c[16] * K1 * std::max(0., strength * strength - broken * broken) / (6 * G);
        if (arm >= 0) growth = gain / (arm + std::sqrt(arm * arm + gain) + 1e-300);
        P += growth, q = std::min(trial, failed(std::max(0., P))), dep = (trial - q) / (3 * G);
      }
    }
    const double limit = now < 1 ? T : 0, constant = dP + growth + offset;
    const auto placeOf = [&](double pressure) {
      const auto slope = [](const double* k, double x) { return x > 0 ? k[0] + x * (2 * k[1] + 3 * x * k[2]) : k[0]; };
      double x = mu;
      for (int k = 0; k < 30; ++k) {
        const double step = (mix(x) + constant - pressure) /
                            ((1 - f) * slope(c + 13, x) + f / (1 + mu0) * slope(c + 20, (x - mu0) / (1 + mu0)));
        x -= step;
        if (std::abs(step) < 1e-8) break;
      }
      return x;
    };
    const double zero = placeOf(0), from = P < -limit ? placeOf(-limit) : mu;
    const auto work = [](const double* k, double x) {
      const double L = std::log1p(x), w = x / (1 + x);
      return k[0] * (L - w) + (x > 0 ? k[1] * (x - 2 * L + w) + k[2] * (x * (.5 * x - 2) + 3 * L - w) : 0);
    };
    const auto workTo = [&](double x) {
      return (f < 1 ? (1 - f) * work(c + 13, x) : 0) +
             (f > 0 ? f / (1 + mu0) * work(c + 20, (x - mu0) / (1 + mu0)) : 0);
    };
    const double back = workTo(from) - workTo(zero) + constant * (from - zero) / ((1 + from) * (1 + zero)) +
                        (P < -limit ? limit * (1 / (1 + mu) - 1 / (1 + from)) : 0);
    P = std::max(-limit, P);
    for (int k = 0; k < 6; ++k) {
      s[k] = (trial > 0 ? q / trial : 0) * s[k] - (k < 3 ? P : 0);
      b.stress[k * n + i] = s[k];
    }
    const double state[] = {b.stateOld[i] + dep, now, 1, dP + growth, top};
    for (int k = 0; k < 5; ++k) b.state[k * n + i] = state[k];
    const double fOld = std::clamp((b.stateOld[4 * n + i] - mu1) / (mu2 - mu1), 0., 1.);
    const bool loses = dep > 0 || now > D || growth > 0 || f > fOld;
    settleEnergies(b, i, so, s, e, (q * q / (6 * G) + back * (1 + mu)) / b.density[i], loses);
  }
}

inline void jh2Ceramic(int32_t n, const MaterialBlock& b) {
  using namespace user;
  const double *c = b.props, G = c[0], T = c[7], PHEL = c[10], sHEL = 1.5 * (c[9] - PHEL), K1 = c[13], beta = c[16];
  for (int i = 0; i < n; ++i) {
    double e[6], so[6], s[6], d[6], F[3];
    load(b.strainInc, n, i, 6, e), load(b.stressOld, n, i, 6, so), load(b.defgrad, n, i, 3, F);
    const double mu = 1 / (F[0] * F[1] * F[2]) - 1, tr = e[0] + e[1] + e[2], mean = (so[0] + so[1] + so[2]) / 3;
    const double D = b.stateOld[n + i], dP = b.stateOld[3 * n + i];
    double P = (mu > 0 ? mu * (K1 + mu * (c[14] + mu * c[15])) : K1 * mu) + dP;
    for (int k = 0; k < 6; ++k) {
      d[k] = e[k] - (k < 3 ? tr / 3 : 0);
      s[k] = so[k] - (k < 3 ? mean : 0) + 2 * G * d[k];
    }
    const double trial = std::sqrt(1.5 * product(s, s)), rate = std::sqrt(2. / 3 * product(d, d)) / b.dt;
    const double r = rate > c[6] ? 1 + c[3] * std::log(rate / c[6]) : 1;
    const auto intactAt = [&](double p) { return sHEL * r * c[1] * std::pow((p + T) / PHEL, c[5]); };
    const auto brokenAt = [&](double p) {
      return p > 0 ? std::min(c[8] * sHEL, sHEL * r * c[2] * std::pow(p / PHEL, c[4])) : 0;
    };
    const double limited = std::max(P, -T * (1 - D)), intact = intactAt(limited), broken = brokenAt(limited);
    const double drop = intact - broken, line = std::max(0., intact - D * drop), arm = K1 * mu + dP;
    double q = trial, dep = 0, now = D, growth = 0;
    if (trial > line + 1e-12 * G) {
      const double ef = std::max(1e-30, c[11] * std::pow((limited + T) / PHEL, c[12])), slope = 3 * G * ef - drop;
      dep = std::min(trial / (3 * G), (trial - line) * ef / slope), now = D + dep / ef;
      if (slope <= 0 || now >= 1) dep = std::max(0., (trial - broken) / (3 * G)), now = 1;
      q = trial - 3 * G * dep;
      // damage and the pressure that it leaves move each other
      const auto growthOf = [&](double more) {
        const double left = std::max(0., line - drop * more),
                     gain = 2 * beta * K1 * (line * line - left * left) / (6 * G);
        return arm >= 0 ? gain / (arm + std::sqrt(arm * arm + gain) + 1e-300) : 0;
      };
      const auto strengthAt = [&](double more) {
        const double p = std::max(-T * (1 - D - more), P + growthOf(more)), whole = intactAt(p);
        return std::max(0., whole - (D + more) * (whole - brokenAt(p)));
      };
      if (now > D && (P < -T * (1 - now) || (beta > 0 && arm >= 0 && line > q))) {
        const auto error = [&](double more) { return strengthAt(more) + 3 * G * ef * more - trial; };
        const double most = error(1 - D);
        if (slope <= 0 || most <= 0) {
          growth = growthOf(1 - D), now = 1, q = std::min(trial, brokenAt(std::max(0., P + growth)));
          dep = (trial - q) / (3 * G);
        } else {
          const double more = rootOf(error, 0, 1 - D, line - trial, most, 1e-12 * trial);
          growth = growthOf(more), now = D + more, dep = more * ef, q = trial - 3 * G * dep;
        }
      }
    }
    // what comes back: along K1 mu + dP to zero pressure and in compression the cubic, no further in tension than the limit
    const double limit = T * (1 - now), all = dP + growth, zero = std::max(-.5, -all / K1);
    const double from = std::max(mu, std::max(-.9, zero - limit / K1)), L = std::log1p(from), w = from / (1 + from);
    double back = K1 * (L - std::log1p(zero) - (from - zero) / (1 + from)) + limit * (1 / (1 + mu) - 1 / (1 + from));
    if (from > 0)
      back = K1 * (L - std::log1p(zero) - w + zero) + c[14] * (from - 2 * L + w) +
             c[15] * (from * (.5 * from - 2) + 3 * L - w) + all * w;
    P = std::max(-limit, P + growth);
    for (int k = 0; k < 6; ++k) {
      s[k] = (trial > 0 ? q / trial : 0) * s[k] - (k < 3 ? P : 0);
      b.stress[k * n + i] = s[k];
    }
    const double state[] = {b.stateOld[i] + dep, now, 1, all};
    for (int k = 0; k < 4; ++k) b.state[k * n + i] = state[k];
    settleEnergies(b, i, so, s, e, (q * q / (6 * G) + back * (1 + mu)) / b.density[i],
                   dep > 0 || now > D || growth > 0);
  }
}

// Damage that lowers the limit of tension is settled with the strength there, as bulking is in the ceramic.
inline void hjcConcrete(int32_t n, const MaterialBlock& b) {
  using namespace user;
  const double *c = b.props, G = c[0], fc = c[5], T = c[6], cap = c[9] * fc, Pc = c[10], muc = c[11], lock = c[13],
               K1 = c[16], Ke = Pc / muc;
  double x = c[12] / K1;
  for (int k = 0; k < 30; ++k)
    x -= (x * (K1 + x * (c[17] + x * c[18])) - c[12]) / (K1 + x * (2 * c[17] + x * 3 * c[18]));
  const double dense = lock + (1 + lock) * x;
  for (int i = 0; i < n; ++i) {
    double e[6], so[6], s[6], d[6], F[3];
    load(b.strainInc, n, i, 6, e), load(b.stressOld, n, i, 6, so), load(b.defgrad, n, i, 3, F);
    const double mu = 1 / (F[0] * F[1] * F[2]) - 1, tr = e[0] + e[1] + e[2], mean = (so[0] + so[1] + so[2]) / 3;
    const double DOld = b.stateOld[n + i], topOld = b.stateOld[3 * n + i], compactedOld = b.stateOld[4 * n + i];
    const double top = std::max(mu, topOld);
    double P = Ke * mu, zero = 0, K = Ke;
    if (top > dense) {
      const double m = (mu - lock) / (1 + lock);
      P = m > 0 ? m * (K1 + m * (c[17] + m * c[18])) : K1 * m, zero = lock, K = K1 / (1 + lock);
    } else if (top > muc) {
      const double part = (top - muc) / (dense - muc), Pt = Pc + (c[12] - Pc) * part;
      K = Ke + (K1 - Ke) * part, zero = top - Pt / K, P = Pt - K * (top - mu);
    }
    for (int k = 0; k < 6; ++k) {
      d[k] = e[k] - (k < 3 ? tr / 3 : 0);
      s[k] = so[k] - (k < 3 ? mean : 0) + 2 * G * d[k];
    }
    const double trial = std::sqrt(1.5 * product(s, s)), rate = std::sqrt(2. / 3 * product(d, d)) / b.dt;
    const double r = rate > c[7] ? 1 + c[3] * std::log(rate / c[7]) : 1, cohesion = fc * r * c[1];
    const auto brokenAt = [&](double p) { return p < 0 ? cohesion * p / T : fc * r * c[2] * std::pow(p / fc, c[4]); };
    const double limited = std::max(P, -T * (1 - DOld)), broken = brokenAt(limited);
    const double ef = std::max(c[8], c[14] * std::pow((limited + T) / fc, c[15])), slope = 3 * G * ef - cohesion;
    const double compacted = std::min(lock, zero), D = std::min(1., DOld + std::max(0., compacted - compactedOld) / ef);
    const double line = broken + cohesion * (1 - D);
    double q = trial, dep = 0, now = D;
    if (trial > std::min(cap, std::max(0., line)) + 1e-12 * G) {
      dep = (trial - cap) / (3 * G), now = D + dep / ef;
      if (broken + cohesion * (1 - std::min(1., now)) < cap) {
        dep = std::min(trial / (3 * G), (trial - line) * ef / slope), now = D + dep / ef;
        if (slope <= 0) now = 1;
      }
      if (now >= 1) dep = std::max(0., trial - std::min(cap, std::max(0., broken))) / (3 * G), now = 1;
      q = trial - 3 * G * dep;
      if (now > D && P < -T * (1 - now)) {
        const auto error = [&](double more) {
          const double p = std::max(-T * (1 - D - more), P);
          return std::min(cap, std::max(0., brokenAt(p) + cohesion * (1 - D - more))) + 3 * G * ef * more - trial;
        };
        const double most = error(1 - D);
        if (slope <= 0 || most <= 0) {
          now = 1, q = std::min(trial, std::min(cap, brokenAt(std::max(0., P)))), dep = (trial - q) / (3 * G);
        } else {
          const double more = rootOf(error, 0, 1 - D, line - trial, most, 1e-12 * trial);
          now = D + more, dep = more * ef, q = trial - 3 * G * dep;
        }
      }
    }
    // what comes back: along the line of release, in the dense material in compression the cubic, no further in tension than
    // the limit
    const double limit = T * (1 - now), from = std::max(mu, zero - limit / K), y = (from - zero) / (1 + zero);
    const double L = std::log1p(y), w = y / (1 + y);
    double back = K * (L - w) + limit * (1 / (1 + mu) - 1 / (1 + from));
    if (top > dense && y > 0) back += (c[17] * (y - 2 * L + w) + c[18] * (y * (.5 * y - 2) + 3 * L - w)) / (1 + lock);
    P = std::max(-limit, P);
    for (int k = 0; k < 6; ++k) {
      s[k] = (trial > 0 ? q / trial : 0) * s[k] - (k < 3 ? P : 0);
      b.stress[k * n + i] = s[k];
    }
    const double state[] = {b.stateOld[i] + dep, now, 1, top, std::max(compacted, compactedOld)};
    for (int k = 0; k < 5; ++k) b.state[k * n + i] = state[k];
    settleEnergies(b, i, so, s, e, (q * q / (6 * G) + back * (1 + mu)) / b.density[i],
                   dep > 0 || now > DOld || top > topOld);
  }
}

// By the linear law: equal moduli, one temperature, and increments that do not turn round.
inline void superelasticLinear(int32_t n, const MaterialBlock& b) {
  using namespace user;
  const double *c = b.props, root = std::sqrt(2. / 3), sc = c[9] > 0 ? c[9] : c[5];
  const double G = c[0] / (2 * (1 + c[1])), K = c[0] / (3 * (1 - 2 * c[1])), a = root * (sc - c[5]) / (sc + c[5]);
  const double eV = 3 * a * c[4] / (root + a), eD = (c[4] - eV / 3) / root, f = root + a;
  const double slope = -2 * G * eD - 3 * a * K * eV;
  // what one xi gives back: its work where the way to austenite starts, no more than was spent on the way there
  const double ratio = (root + a) / (root - a), other = ratio * (root * eD - eV / 3);
  const double stored =
      c[7] > 0 ? std::max(0., std::min(c[7] * std::max(c[4], other), c[5] * std::min(c[4], other))) : 0;
  for (int i = 0; i < n; ++i) {
    const double xi = b.stateOld[i];
    double old[6], inc[6], e[6], change[6], now[6], e0[6];
    load(b.stressOld, n, i, 6, old), load(b.strainInc, n, i, 6, inc), load(b.stateOld + n, n, i, 6, change);
    const double p = (old[0] + old[1] + old[2]) / 3, trC = change[0] + change[1] + change[2];
    const double tr = inc[0] + inc[1] + inc[2], volume0 = p / K + trC, volume = volume0 + tr;
    for (int k = 0; k < 6; ++k) {
      e0[k] = (old[k] - (k < 3 ? p : 0)) / (2 * G) + change[k] - (k < 3 ? trC / 3 : 0);
      e[k] = e0[k] + inc[k] - (k < 3 ? tr / 3 : 0);
    }
    const double N = std::sqrt(product(e, e));
    const double F0 = 2 * G * (std::sqrt(product(e0, e0)) - eD * xi) + 3 * a * K * (volume0 - eV * xi);
    const double base = 2 * G * N + 3 * a * K * volume, F = base + slope * xi;
    double x = xi;
    if (F > std::max(F0, f * c[5]) && xi < 1) {
      const double start = std::max(F0, f * c[5]), end = f * c[6], width = end - start;
      x = base + slope >= end || width <= 0 ? 1 : (width + (1 - xi) * (base - end)) / (width - (1 - xi) * slope);
    } else if (F < std::min(F0, f * c[7]) && xi > 0) {
      const double start = std::min(F0, f * c[7]), end = f * c[8], width = start - end;
      x = base <= end || width <= 0 ? 0 : xi * (base - end) / (width - xi * slope);
    }
    const double factor = N > 0 ? eD * x / N : 0, left = (1 - factor) * N, leftVolume = volume - eV * x;
    for (int k = 0; k < 6; ++k) {
      now[k] = 2 * G * (1 - factor) * e[k] + (k < 3 ? K * leftVolume : 0);
      b.stress[k * n + i] = now[k];
      b.state[(k + 1) * n + i] = factor * e[k] + (k < 3 ? eV * x / 3 : 0);
    }
    b.state[i] = x, b.state[7 * n + i] = (base + slope * x) / f;
    const double given = .5 * (2 * G * left * left + K * leftVolume * leftVolume) + x * stored;
    energies(b, i, 1, old, 1, now, inc, given);
  }
}

// By the exponential law: equal moduli, one temperature, and increments that do not turn round.  Without inelastic energy.
inline void superelasticExponential(int32_t n, const MaterialBlock& b) {
  using namespace user;
  const double *c = b.props, root = std::sqrt(2. / 3), sc = c[9] > 0 ? c[9] : c[5];
  const double G = c[0] / (2 * (1 + c[1])), K = c[0] / (3 * (1 - 2 * c[1])), a = root * (sc - c[5]) / (sc + c[5]);
  const double eD = c[4] / (root + a), eV = 3 * a * eD, f = root + a, slope = -2 * G * eD - 3 * a * K * eV;
  for (int i = 0; i < n; ++i) {
    const double xi = b.stateOld[i];
    double old[6], inc[6], e[6], change[6], e0[6], now[6];
    load(b.stressOld, n, i, 6, old), load(b.strainInc, n, i, 6, inc);
    for (int k = 0; k < 6; ++k) change[k] = b.stateOld[(k + 1) * n + i];
    const double p = (old[0] + old[1] + old[2]) / 3, trC = change[0] + change[1] + change[2];
    const double tr = inc[0] + inc[1] + inc[2], volume0 = p / K + trC, volume = volume0 + tr;
    for (int k = 0; k < 6; ++k) {
      e0[k] = (old[k] - (k < 3 ? p : 0)) / (2 * G) + change[k] - (k < 3 ? trC / 3 : 0);
      e[k] = e0[k] + inc[k] - (k < 3 ? tr / 3 : 0);
    }
    const double N = std::sqrt(product(e, e)),
                 F0 = 2 * G * (std::sqrt(product(e0, e0)) - eD * xi) + 3 * a * K * (volume0 - eV * xi);
    const double base = 2 * G * N + 3 * a * K * volume, F = base + slope * xi;
    double x = xi;
    const bool up = F > std::max(F0, f * c[5]) && xi < 1, down = F < std::min(F0, f * c[7]) && xi > 0;
    if (up || down) {
      const double end = f * (up ? c[6] : c[8]), beta = f * c[up ? 12 : 13];
      const double start = up ? std::max(F0, f * c[5]) : std::min(F0, f * c[7]);
      const auto missing = [&](double y) { // rises with y
        const double at = base + slope * y;
        if (up)
          return y - 1 +
                 (at >= end ? 0 : (1 - xi) * std::exp(std::min(0., beta * (1 / (at - end) - 1 / (start - end)))));
        return y - (at <= end ? 0 : xi * std::exp(std::min(0., -beta * (1 / (at - end) - 1 / (start - end)))));
      };
      const double low = up ? xi : 0, high = up ? 1 : xi;
      x = rootOf(missing, low, high, missing(low), missing(high), 1e-15);
    }
    const double factor = N > 0 ? eD * x / N : 0;
    double work = 0;
    for (int k = 0; k < 6; ++k) {
      now[k] = 2 * G * (1 - factor) * e[k] + (k < 3 ? K * (volume - eV * x) : 0);
      b.stress[k * n + i] = now[k];
      b.state[(k + 1) * n + i] = factor * e[k] + (k < 3 ? eV * x / 3 : 0);
      work += (k < 3 ? .5 : 1) * (old[k] + now[k]) * inc[k];
    }
    b.state[i] = x, b.state[7 * n + i] = (base + slope * x) / f;
    b.internal[i] = b.internalOld[i] + work / b.density[i];
    b.inelastic[i] = b.inelasticOld[i];
  }
}

} // namespace
} // namespace plain
