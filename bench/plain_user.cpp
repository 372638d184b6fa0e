#include "plain_user.h"

#include <algorithm>
#include <cmath>

namespace plain {
namespace {

struct Point {
  double strain[6], old[6], s[6], J, tr, q, rate; // s the trial deviator
};
double product(const double* a, const double* b) {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2] + 2 * (a[3] * b[3] + a[4] * b[4] + a[5] * b[5]);
}

Point trial(const MaterialBlock& b, int n, int i, double G) {
  Point p;
  const double* F = b.defgrad;
  for (int c = 0; c < 6; ++c) p.strain[c] = b.strainInc[c * n + i], p.old[c] = b.stressOld[c * n + i];
  const auto f = [&](int c) { return F[c * n + i]; };
  p.J = f(0) * (f(1) * f(2) - f(4) * f(7)) - f(3) * (f(6) * f(2) - f(4) * f(5)) + f(8) * (f(6) * f(7) - f(1) * f(5));
  p.tr = p.strain[0] + p.strain[1] + p.strain[2];
  const double mean = (p.old[0] + p.old[1] + p.old[2]) / 3;
  double e[6];
  for (int c = 0; c < 6; ++c) {
    e[c] = p.strain[c] - (c < 3 ? p.tr / 3 : 0);
    p.s[c] = p.old[c] - (c < 3 ? mean : 0) + 2 * G * e[c];
  }
  p.q = std::sqrt(1.5 * product(p.s, p.s));
  p.rate = std::sqrt(2. / 3 * product(e, e)) / b.dt;
  return p;
}

void finish(const MaterialBlock& b, int n, int i, const Point& p, double q, double P, double dep, double more) {
  const double keep = p.q > q ? q / p.q : 1, mean = (p.old[0] + p.old[1] + p.old[2]) / 3;
  double now[6], sOld[6];
  for (int c = 0; c < 6; ++c) {
    now[c] = keep * p.s[c] - (c < 3 ? P : 0);
    sOld[c] = p.old[c] - (c < 3 ? mean : 0);
    b.stress[c * n + i] = now[c];
  }
  const double qOld = p.q > 0 ? 1.5 * product(sOld, p.s) / p.q : 0;
  b.internal[i] = b.internalOld[i] + .5 * (product(p.old, p.strain) + product(now, p.strain)) / b.density[i];
  b.inelastic[i] = b.inelasticOld[i] + (.5 * (qOld + q) * dep + more) / b.density[i];
}

} // namespace

void jh2(int32_t n, const MaterialBlock& b) {
  const double *c = b.props, G = c[0], T = c[7], HEL = c[9], PHEL = c[10], sHEL = 1.5 * (HEL - PHEL), K1 = c[13];
  for (int i = 0; i < n; ++i) {
    const Point p = trial(b, n, i, G);
    const double mu = 1 / p.J - 1, D = b.stateOld[n + i];
    double dP = b.stateOld[3 * n + i];
    double P = (mu > 0 ? mu * (K1 + mu * (c[14] + mu * c[15])) : K1 * mu) + dP;
    const double limited = std::max(P, -T * (1 - D)), shifted = (limited + T) / PHEL;
    const double r = p.rate > c[6] ? 1 + c[3] * std::log(p.rate / c[6]) : 1;
    const double intact = sHEL * r * c[1] * std::pow(shifted, c[5]);
    const double broken = limited > 0 ? std::min(c[8] * sHEL, sHEL * r * c[2] * std::pow(limited / PHEL, c[4])) : 0;
    const double line = intact - D * (intact - broken);
    double q = p.q, dep = 0, Dnew = D;
    if (p.q > line) {
      const double ef = c[11] * std::pow(shifted, c[12]), slope = 3 * G * ef - (intact - broken);
      dep = (p.q - line) * ef / slope;
      Dnew = D + dep / ef;
      if (slope <= 0 || Dnew >= 1) dep = (p.q - broken) / (3 * G), Dnew = 1;
      q = p.q - 3 * G * dep;
      if (Dnew > D) {
        const double a = K1 * mu + dP, gain = 2 * c[16] * K1 * std::max(0., line * line - q * q) / (6 * G);
        if (a >= 0) {
          const double growth = gain / (a + std::sqrt(a * a + gain) + 1e-300);
          dP += growth, P += growth;
        }
      }
    }
    P = std::max(P, -T * (1 - Dnew));
    b.state[i] = b.stateOld[i] + dep;
    b.state[n + i] = Dnew;
    b.state[2 * n + i] = 1;
    b.state[3 * n + i] = dP;
    finish(b, n, i, p, q, P, dep, 0);
  }
}

void hjcConcrete(int32_t n, const MaterialBlock& b) {
  const double *c = b.props, G = c[0], fc = c[5], T = c[6], Pc = c[10], muc = c[11], lock = c[13], K1 = c[16];
  double x = c[12] / K1;
  for (int k = 0; k < 30; ++k)
    x -= (x * (K1 + x * (c[17] + x * c[18])) - c[12]) / (K1 + x * (2 * c[17] + x * 3 * c[18]));
  const double from = lock + (1 + lock) * x, Ke = Pc / muc;
  for (int i = 0; i < n; ++i) {
    const Point p = trial(b, n, i, G);
    const double mu = 1 / p.J - 1, top = std::max(mu, b.stateOld[3 * n + i]), old = b.stateOld[4 * n + i];
    double P, left = 0;
    if (top <= muc) {
      P = Ke * mu;
    } else if (top <= from) {
      const double K = Ke + (K1 - Ke) * (top - muc) / (from - muc), Pt = Pc + (c[12] - Pc) * (top - muc) / (from - muc);
      P = Pt - K * (top - mu), left = top - Pt / K;
    } else {
      const double m = (mu - lock) / (1 + lock);
      P = m > 0 ? m * (K1 + m * (c[17] + m * c[18])) : K1 * m, left = lock;
    }
    double D = b.stateOld[n + i];
    const double limited = std::max(P, -T * (1 - D)), crushed = std::max(0., left - old);
    const double r = p.rate > c[7] ? 1 + c[3] * std::log(p.rate / c[7]) : 1;
    const double ef = std::max(c[8], c[14] * std::pow((limited + T) / fc, c[15]));
    D = std::min(1., D + crushed / ef);
    const double broken = limited < 0 ? fc * r * c[1] * limited / T : fc * r * c[2] * std::pow(limited / fc, c[4]);
    const double cohesion = fc * r * c[1], cap = c[9] * fc, line = broken + cohesion * (1 - D);
    double q = p.q, dep = 0;
    if (p.q > std::min(cap, line)) {
      dep = (p.q - cap) / (3 * G);
      if (broken + cohesion * (1 - std::min(1., D + dep / ef)) < cap) {
        const double slope = 3 * G * ef - cohesion;
        dep = (p.q - line) * ef / slope;
        if (slope <= 0 || D + dep / ef >= 1) dep = (p.q - std::max(0., broken)) / (3 * G), D = 1;
      }
      q = p.q - 3 * G * dep;
      D = std::min(1., D + dep / ef);
    }
    P = std::max(P, -T * (1 - D));
    b.state[i] = b.stateOld[i] + dep;
    b.state[n + i] = D;
    b.state[2 * n + i] = 1;
    b.state[3 * n + i] = top;
    b.state[4 * n + i] = old + crushed;
    const double POld = -(p.old[0] + p.old[1] + p.old[2]) / 3;
    finish(b, n, i, p, q, P, dep, .5 * (POld + P) * crushed / (1 + mu));
  }
}

// Equal moduli, no change of temperature, and increments that do not turn round.
void superelastic(int32_t n, const MaterialBlock& b) {
  const double *c = b.props, root = std::sqrt(2. / 3);
  const double G = c[0] / (2 * (1 + c[1])), K = c[0] / (3 * (1 - 2 * c[1])), a = root * (c[9] - c[5]) / (c[9] + c[5]);
  const double eV = 3 * a * c[4] / (root + a), eD = (c[4] - eV / 3) / root, f = root + a;
  for (int i = 0; i < n; ++i) {
    const double xi = b.stateOld[i];
    double old[6], inc[6], e[6], change[6], now[6], changeNow[6], e0[6];
    for (int k = 0; k < 6; ++k)
      old[k] = b.stressOld[k * n + i], inc[k] = b.strainInc[k * n + i], change[k] = b.stateOld[(k + 1) * n + i];
    const double p = (old[0] + old[1] + old[2]) / 3, trC = change[0] + change[1] + change[2];
    const double tr = inc[0] + inc[1] + inc[2], volume0 = p / K + trC, volume = volume0 + tr;
    for (int k = 0; k < 6; ++k) {
      e0[k] = (old[k] - (k < 3 ? p : 0)) / (2 * G) + change[k] - (k < 3 ? trC / 3 : 0);
      e[k] = e0[k] + inc[k] - (k < 3 ? tr / 3 : 0);
    }
    const double N = std::sqrt(product(e, e)), slope = -2 * G * eD - 3 * a * K * eV;
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
    const double factor = N > 0 ? eD * x / N : 0;
    for (int k = 0; k < 6; ++k) {
      now[k] = 2 * G * (1 - factor) * e[k] + (k < 3 ? K * (volume - eV * x) : 0);
      changeNow[k] = factor * e[k] + (k < 3 ? eV * x / 3 : 0);
      b.stress[k * n + i] = now[k];
      b.state[(k + 1) * n + i] = changeNow[k];
    }
    b.state[i] = x;
    b.state[7 * n + i] = (base + slope * x) / f;
    double work = 0, spent = 0;
    for (int k = 0; k < 6; ++k) {
      const double mean = (k < 3 ? .5 : 1) * (old[k] + now[k]);
      work += mean * inc[k], spent += mean * (changeNow[k] - change[k]);
    }
    b.internal[i] = b.internalOld[i] + work / b.density[i];
    b.inelastic[i] = b.inelasticOld[i] + spent / b.density[i];
  }
}

} // namespace plain
