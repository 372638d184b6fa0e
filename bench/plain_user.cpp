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

} // namespace plain
