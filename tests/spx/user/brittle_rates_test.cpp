// The equations of rate of the brittle materials as their publications have them, by many small explicit steps in long double:
// G. R. Johnson, T. J. Holmquist (1994), the same and S. R. Beissel (2003), T. J. Holmquist, G. R. Johnson, W. H. Cook (1993).
#include "tests/support/user_material.h"

namespace {

using namespace sharedanalysis::test;
using Real = long double;

struct Surface {
  Real intact, fractured, failureStrain;
};

// What the three have in common: elastic shear, return to the surface of the moment, damage by plastic strain.
struct Rates {
  Real s[6] = {}, volume = 0, D = 0, strain = 0, bulking = 0, top = 0, compaction = 0;

  Real mu() const { return std::exp(-volume) - 1; }
  virtual ~Rates() = default;
  virtual Real shearModulus() const = 0;
  virtual Real tension() const = 0;      // that damage leaves
  virtual Real freePressure() const = 0; // before the limit of tension
  virtual Surface surface(Real P, Real rate) const = 0;
  virtual Real strength(const Surface& y) const = 0;
  virtual void crush(Real, Real) {}
  virtual void bulk(Real, Real) {} // of the strength before and behind a growth of damage

  Real pressure() const { return std::max(-tension(), freePressure()); }
  void step(const Strain& e, Real part, Real rate) {
    const Real G = shearModulus(), tr = (e[0] + e[1] + e[2]) * part, before = compaction;
    volume += tr;
    for (int c = 0; c < 6; ++c) s[c] += 2 * G * (e[c] * part - (c < 3 ? tr / 3 : 0));
    const Real P = pressure();
    const Surface y = surface(P, rate);
    crush(y.failureStrain, before);
    Real square = 0;
    for (int c = 0; c < 6; ++c) square += (c < 3 ? 1.5L : 3) * s[c] * s[c];
    const Real q = std::sqrt(square), limit = strength(y);
    if (q <= limit) return;
    const Real plastic = (q - limit) / (3 * G);
    for (Real& x : s) x *= limit / q;
    strain += plastic;
    D = std::min<Real>(1, D + plastic / y.failureStrain);
    bulk(limit, strength(y));
  }
};

Real cubic(const std::vector<double>& p, std::size_t at, Real m) {
  return m > 0 ? m * (p[at] + m * (p[at + 1] + m * p[at + 2])) : p[at] * m;
}
Real rateFactor(Real C, Real rate) { return 1 + C * std::log(std::max<Real>(1, rate)); }

struct Ceramics : Rates {
  std::vector<double> p;
  explicit Ceramics(std::vector<double> props) : p(std::move(props)) {}
  Real shearModulus() const override { return p[0]; }
  Real freePressure() const override { return cubic(p, 13, mu()) + bulking; }
  void bulk(Real before, Real behind) override {
    const Real arm = p[13] * mu() + bulking, energy = (before * before - behind * behind) / (6 * shearModulus());
    if (arm >= 0) bulking += std::sqrt(arm * arm + 2 * p[16] * p[13] * energy) - arm;
  }
};
struct Jh2Rates : Ceramics {
  using Ceramics::Ceramics;
  Real tension() const override { return p[7] * (1 - D); }
  Surface surface(Real P, Real rate) const override {
    const Real sHEL = 1.5L * (p[9] - p[10]), r = rateFactor(p[3], rate / p[6]),
               x = std::max<Real>(0, (P + p[7]) / p[10]);
    const Real broken = P > 0 ? std::min<Real>(p[8], p[2] * std::pow(P / p[10], p[4]) * r) : 0;
    return {sHEL * p[1] * std::pow(x, p[5]) * r, sHEL * broken, p[11] * std::pow(x, p[12])};
  }
  Real strength(const Surface& y) const override { return y.intact - D * (y.intact - y.fractured); }
};
struct JhbRates : Ceramics {
  using Ceramics::Ceramics;
  Real tension() const override { return D < 1 ? p[9] : 0; }
  static Real curve(Real P, Real root, Real knee, Real value, Real most) {
    if (P < knee) return std::max<Real>(0, (P - root) * value / (knee - root));
    return most > value ? value + (most - value) * (1 - std::exp(-value / (knee - root) / (most - value) * (P - knee)))
                        : value;
  }
  Surface surface(Real P, Real rate) const override {
    const Real r = rateFactor(p[7], rate / p[8]);
    return {r * curve(P, -p[9], p[1], p[2], p[3]), r * curve(P, 0, p[4], p[5], p[6]),
            p[10] * std::pow(std::max<Real>(0, (P + p[9]) / p[3]), p[11])};
  }
  Real strength(const Surface& y) const override { return D < 1 ? y.intact : y.fractured; }
};
struct HjcRates : Rates {
  std::vector<double> p = concrete();
  Real lock, K1;
  HjcRates() : K1(p[16]) {
    Real low = 0, high = 1;
    for (int k = 0; k < 200; ++k) (cubic(p, 16, .5L * (low + high)) < p[12] ? low : high) = .5L * (low + high);
    lock = p[13] + (1 + p[13]) * low;
  }
  Real shearModulus() const override { return p[0]; }
  Real tension() const override { return p[6] * (1 - D); }
  // Elastic, crushing with unloading between, dense.
  Real freePressure() const override {
    const Real Ke = p[10] / p[11], top1 = std::max(top, mu());
    if (top1 <= p[11]) return Ke * mu();
    if (top1 >= lock) return cubic(p, 16, (mu() - p[13]) / (1 + p[13]));
    const Real part = (top1 - p[11]) / (lock - p[11]), K = Ke + (K1 - Ke) * part;
    return p[10] + (p[12] - p[10]) * part - K * (top1 - mu());
  }
  void crush(Real failureStrain, Real before) override {
    top = std::max(top, mu());
    if (top >= lock) {
      compaction = p[13];
    } else if (top > p[11]) {
      const Real part = (top - p[11]) / (lock - p[11]), Ke = p[10] / p[11];
      compaction =
          std::min<Real>(p[13], top - (p[10] + (p[12] - p[10]) * part) / (Ke + (K1 - Ke) * part)); // of dense matter
    }
    D = std::min<Real>(1, D + std::max<Real>(0, compaction - before) / failureStrain);
  }
  Surface surface(Real P, Real rate) const override {
    const Real x = P / p[5], r = rateFactor(p[3], rate / p[7]);
    const Real broken = x > 0 ? p[2] * std::pow(x, p[4]) : p[1] * P / p[6];
    return {p[5] * r * (p[1] + broken), p[5] * r * broken,
            std::max<Real>(p[8], p[14] * std::pow(std::max<Real>(0, (P + p[6]) / p[5]), p[15]))};
  }
  Real strength(const Surface& y) const override {
    return std::clamp<Real>(y.intact - D * (y.intact - y.fractured), 0, p[9] * p[5]);
  }
};

// Pressed, sheared under pressure, and let go in part, at a constant rate in each leg; in many increments and in few.
void compare(Rates&& fine, const UserMaterial& start, double size) {
  const Strain legs[] = {{-.6, -.5, -.4, .1, 0, .05}, {-.3, .1, 0, .8, -.3, .2}, {.15, .1, .05, -.4, .1, 0}};
  const std::pair<int, double> coarse[] = {{5000, 1e-3}, {400, 8e-3}, {50, .05}}; // increments, tolerance
  std::vector<UserMaterial> all(std::size(coarse), start);
  for (const Strain& leg : legs) {
    const Strain e = leg * size;
    const int steps = 40000;
    const double tr = e[0] + e[1] + e[2];
    double square = 0;
    for (int c = 0; c < 6; ++c) square += (c < 3 ? 1 : 2) * std::pow(e[c] - (c < 3 ? tr / 3 : 0), 2);
    for (int k = 0; k < steps; ++k) fine.step(e, Real{1} / steps, std::sqrt(2. / 3 * square) / 1e-3);
    const double P = static_cast<double>(fine.pressure());
    for (std::size_t k = 0; k < all.size(); ++k) {
      const auto& [count, tolerance] = coarse[k];
      UserMaterial& m = all[k];
      SCOPED_TRACE(m.name + std::to_string(count));
      m.dt = 1e-3 / count;
      m.steps(e, count);
      const double scale = m.mises() + std::abs(P);
      EXPECT_NEAR(m.pressure(), P, tolerance * scale);
      for (int c = 0; c < 6; ++c)
        EXPECT_NEAR(m.stress[c], static_cast<double>(fine.s[c]) - (c < 3 ? P : 0), tolerance * scale) << c;
      EXPECT_NEAR(m.at(1), static_cast<double>(fine.strain), tolerance * (m.at(1) + size));
      EXPECT_NEAR(m.at(2), static_cast<double>(fine.D), tolerance);
      EXPECT_NEAR(m.name[4] == 'J' ? m.at(4) : 0, static_cast<double>(fine.bulking), tolerance * scale);
    }
  }
  EXPECT_TRUE(all[0].at(2) > .05 && all[0].at(1) > 0);
}

TEST(Brittle, RateEquationsByManySmallSteps) {
  const auto glass = kCeramics[2].props();
  auto carbide = siliconCarbide();
  carbide[8] = 1; // reference rate
  for (double size : {.06, .2}) compare(Jh2Rates(glass), jh2(glass), size);
  for (double size : {.03, .1}) compare(JhbRates(carbide), jhb(carbide), size);
  for (double size : {.02, .1}) compare(HjcRates(), hjc(concrete()), size);
}

} // namespace
