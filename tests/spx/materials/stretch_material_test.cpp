// Rubber and foam in the principal stretches, softening and failure, against derivatives of their energies in 80 bits,
// published fits and closed forms.
#include "bench/plain/materials.h"
#include "spx.h"
#include "tests/support/call.h"
#include "tests/support/differences.h"
#include "tests/support/random.h"
#include "tests/support/rubber_1944.h"

namespace {

using namespace sharedanalysis::test;
using Long3 = std::array<long double, 3>;

struct Terms {
  std::array<double, 3> mu, alpha;
  Values beta, rD; // foam has beta, rubber reciprocals of D
  bool isFoam() const { return !beta.empty(); }

  plain::StretchSums<long double> sums(const Long3& l) const {
    return plain::stretchSums(mu.data(), alpha.data(), isFoam() ? beta.data() : nullptr, l[0], l[1], l[2]);
  }
  long double energy(const Long3& l) const { return sums(l).U; }
  plain::Volume<long double> volume(const Long3& l) const {
    return plain::volumePowers(
        static_cast<int>(rD.size()), [&](int k) { return rD[k]; }, l[0] * l[1] * l[2]);
  }
  long double total(const Long3& l) const {
    const long double d = l[0] * l[1] * l[2] - 1;
    long double sum = energy(l), power = 1;
    for (const double r : rD) sum += r * (power *= d * d);
    return sum;
  }
};

// Constants of n points with the same terms: mu, alpha of each, then beta or the reciprocals of D.
struct Constants {
  std::vector<Values> values;
  Constants(const Terms& terms, int n) {
    for (int t = 0; t < 3; ++t) values.emplace_back(n, terms.mu[t]), values.emplace_back(n, terms.alpha[t]);
    for (const double x : terms.isFoam() ? terms.beta : terms.rD) values.emplace_back(n, x);
  }
  template <std::size_t count>
  std::array<double*, count> columns() {
    std::array<double*, count> list{};
    for (std::size_t k = 0; k < count; ++k) list[k] = k < values.size() ? values[k].data() : nullptr;
    return list;
  }
};

struct Points {
  int n;
  Terms terms;
  Constants constants;
  Values l, flag, energy, rJ, dU, ddU;

  Points(Terms t, const std::vector<std::array<double, 3>>& stretches)
      : n(static_cast<int>(stretches.size())), terms(std::move(t)), constants(terms, n), l(3 * n), flag(n), energy(n),
        rJ(n), dU(3 * n), ddU(6 * n) {
    for (int i = 0; i < n; ++i)
      for (int k = 0; k < 3; ++k) l[k * n + i] = stretches[i][k];
  }
  Long3 at(int i) const { return {l[i], l[n + i], l[2 * n + i]}; }
  Points& run() {
    const auto with = [&](auto c, auto value, auto first, auto second) {
      call(value, n, c, energy, rJ, l, flag);
      call(first, n, c, dU, l, flag);
      call(second, n, c, ddU, l, flag);
    };
    if (terms.isFoam())
      with(constants.columns<9>(), SPX_MAT_HFOAM, SPX_MAT_HFOAMDERIVATIVE1, SPX_MAT_HFOAMDERIVATIVE2);
    else
      with(constants.columns<6>(), SPX_MAT_OGDEN, SPX_MAT_OGDENDERIVATIVE1, SPX_MAT_OGDENDERIVATIVE2);
    return *this;
  }
};

// R. W. Ogden, Proc. R. Soc. A 326 (1972) 565: mu 0.63, 0.0012, -0.01 MPa with alpha 1.3, 5, -2, in the form 2 mu/alpha^2.
const Terms kRubber{{0.4095, 0.003, 0.01}, {1.3, 5.0, -2.0}, {}, {100, 20, 3}};
// B. Storakers, J. Mech. Phys. Solids 34 (1986) 125, with a term of no effect.
const Terms kFoam{{4.1625, 20.7, 0}, {1.85, -9.2, 1}, {0.92, 0.92, 0.92}, {}};
const Terms kMixedFoam{{4, 11, 2}, {1.8, -3, 4}, {0.9, 0, 0.3}, {}};

std::vector<std::array<double, 3>> randomStretches(int n, uint64_t seed) {
  Random random(seed);
  std::vector<std::array<double, 3>> list;
  for (int i = 0; i < n; ++i)
    list.push_back({random.uniform(0.6, 1.7), random.uniform(0.6, 1.7), random.uniform(0.6, 1.7)});
  list.insert(list.end(), {{1, 1, 1}, {1.2, 1.2, 1.2}, {0.9, 0.9, 1.4}});
  return list;
}

// Axes of point i of a block in the columns of a rotation.
void setAxes(Values& axes, int n, int i, const Matrix& R) {
  for (int k = 0; k < 9; ++k) axes[k * n + i] = R[k % 3][k / 3];
}

TEST(Powers, EnergyAndItsDerivatives) {
  for (const Terms& terms : {kRubber, kFoam, kMixedFoam}) {
    Points points(terms, randomStretches(30, 41));
    points.run();
    const auto expect = [&](double found, long double expected, double bound) {
      EXPECT_NEAR(found, static_cast<double>(expected), bound * (1 + std::abs(found)));
    };
    const long double h = 1e-4L;
    for (int i = 0; i < points.n; ++i) {
      const auto U = [&](int a, int fa, int b = 0, int fb = 0) {
        Long3 l = points.at(i);
        l[a] += fa * h, l[b] += fb * h;
        return terms.energy(l);
      };
      expect(points.energy[i], U(0, 0), 1e-12);
      for (int a = 0; a < 3; ++a) {
        const auto along = [&](int f) { return U(a, f); };
        const int b = (a + 1) % 3, n = points.n, mixed = a == 0 ? 3 : a == 1 ? 4 : 5;
        expect(points.dU[a * n + i], firstDifference(along, h), 1e-9);
        expect(points.ddU[a * n + i], secondDifference(along, h), 3e-6);
        expect(points.ddU[mixed * n + i], mixedDifference([&](int f, int g) { return U(a, f, b, g); }, h), 3e-6);
      }
    }
    EXPECT_EQ(points.energy[30], 0) << "undeformed";
  }
}

TEST(Powers, StressAndModuliOfTheSolid) {
  for (const Terms& terms : {kRubber, kMixedFoam}) {
    Points points(terms, randomStretches(30, 42));
    points.run();
    const int n = points.n;
    Values p(n), dp(n), axes(9 * n), expected(6 * n), stress(6 * n), bound(n), bulk(n), bound2(n), bulk2(n);
    Random random(43);
    for (int i = 0; i < n; ++i) {
      const Long3 l = points.at(i);
      const auto volume = terms.volume(l);
      p[i] = static_cast<double>(volume.p), dp[i] = static_cast<double>(volume.slope);
      const Matrix R = randomRotation(random);
      setAxes(axes, n, i, R);
      // the derivative of the whole energy by a stretch, over the area across it
      double principal[3];
      for (int k = 0; k < 3; ++k) {
        const auto total = [&](int step) {
          Long3 moved = l;
          moved[k] += step * 1e-4L;
          return terms.total(moved);
        };
        principal[k] = static_cast<double>(firstDifference(total, 1e-4L) * l[k] / (l[0] * l[1] * l[2]));
      }
      setPrincipal(expected.data(), n, i, principal, R);
    }
    call(SPX_MAT_HYPERELAS3D, n, points.dU, points.ddU, p, dp, points.l, axes, points.rJ, stress, bound, bulk);
    for (int k = 0; k < 6 * n; ++k) EXPECT_NEAR(stress[k], expected[k], 1e-9 * (1 + std::abs(bound[k % n]))) << k % n;
    // at equal stretches the moduli are those of small strain
    const int one = n - 3;
    double G = 0, K = terms.isFoam() ? 0 : 2 * terms.rD[0];
    for (std::size_t t = 0; t < 3; ++t) {
      G += terms.mu[t];
      if (terms.isFoam()) K += 2 * terms.mu[t] * (1 / 3.0 + terms.beta[t]);
    }
    EXPECT_NEAR(bound[one], 2 * G, 1e-12 * G);
    EXPECT_NEAR(bulk[one], 3 * K, 1e-12 * K);
    if (!terms.isFoam()) continue;
    call(SPX_MAT_HYPERFOAMMODULIEXP, n, points.constants.columns<9>(), points.l, points.flag, bound2, bulk2);
    for (int i = 0; i < n; ++i) {
      EXPECT_NEAR(bound2[i], bound[i], 1e-9 * bound[i]);
      EXPECT_NEAR(bulk2[i], bulk[i], 1e-11 * bulk[i]);
    }
  }
}

// The shear modulus between stretches that nearly meet is (t1 - t2) coth(x1 - x2), x = ln l: its limit may serve up to 1e-5.
TEST(Powers, ShearModulusOfStretchesThatNearlyMeet) {
  for (const double apart : {4e-6, 3e-5, 1e-3, 9e-3}) {
    Points p(Terms{{1, 0, 0}, {9, 1, 1}, {}, {}}, {{1.1 * (1 + apart), 1.1, 0.8}});
    p.run();
    const double axes[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    double stress[6], bound = 0, bulk = 0;
    call(SPX_MAT_HYPERELAS3D, 1, p.dU, p.ddU, 0.0, 0.0, p.l, axes, p.rJ, stress, bound, bulk);
    const auto [l1, l2, l3] = p.at(0);
    const long double J = l1 * l2 * l3, t = 2 * (std::pow(l1, 9.0L) - std::pow(l2, 9.0L)) / 9 / (J * J * J);
    const double coth = static_cast<double>(t * (l1 * l1 + l2 * l2) / (l1 * l1 - l2 * l2) / J);
    EXPECT_NEAR(bound, coth, (apart > 1e-5 ? 4e-15 / apart : 1e-9) * coth) << apart;
  }
}

TEST(Powers, GuardsOfTheVolumeAndOfTheExponents) {
  Points rubber(Terms{{0.4, 2, 1}, {0, 0, 2}, {}, {}}, {{1, 0, 1}, {1.3, 0.8, 1.1}, {1e-200, 1e-200, 1}});
  rubber.run();
  EXPECT_EQ(rubber.flag, (Values{1, 0, 1}));
  EXPECT_EQ(rubber.rJ[0], 1);
  EXPECT_NEAR(rubber.energy[0], 0.5 * (1 + 0 + 1 - 3), 1e-15) << "the stretches count as they are";
  EXPECT_NEAR(rubber.energy[1], static_cast<double>(rubber.terms.energy(rubber.at(1))), 1e-14)
      << "terms of alpha 0 vanish";
  Points foam(kFoam, {{1, -1, 1}, {1.1, 1.1, 1.1}});
  foam.flag[1] = 1;
  foam.run();
  EXPECT_EQ(foam.flag, (Values{1, 1}));
  // J = 1 for the volume, the stretches as they are
  long double expected = 0;
  for (int t = 0; t < 2; ++t)
    expected += 2 * kFoam.mu[t] / (kFoam.alpha[t] * kFoam.alpha[t]) *
                (3 * std::pow(1.1L, static_cast<long double>(kFoam.alpha[t])) - 3);
  EXPECT_NEAR(foam.energy[1], static_cast<double>(expected), 1e-13);
  // a negative power of a stretch of zero is infinite, and by that stretch there is no derivative
  for (const Values& beta : {Values{}, Values{0.5, 0.5, 0.5}})
    for (const double alpha : {-2.0, -0.01, -1e-154}) {
      const Points p = Points(Terms{{1, 0, 0}, {alpha, 2, 2}, beta, {}}, {{0, 1.2, 0.9}}).run();
      EXPECT_EQ(p.energy[0], alpha == -1e-154 ? 0 : kInf) << alpha;
      EXPECT_EQ((Values{p.dU[0], p.ddU[0], p.ddU[3], p.ddU[5]}), Values(4)) << alpha;
    }
  // nor does a term without modulus count where its volume part is infinite, whatever the other points of its piece are
  for (const double beside : {1.0, 0.0}) {
    const Points p = Points(Terms{{0, 0, 0}, {2, 2, 2}, {1e6, 0, 0}, {}}, {{1.2, 0.9, 0.8}, {beside, 1, 1}}).run();
    EXPECT_EQ((Values{p.energy[0], p.dU[0], p.dU[2], p.dU[4]}), Values(4)) << beside;
  }
  // tiny beta joins its limit
  const Terms limit{{4, 0, 0}, {2.5, 1, 1}, {0, 0, 0}, {}};
  for (const double beta : {1e-3, 1e-9, 1e-15, 1e-300, 0.0}) {
    const Points p = Points(Terms{limit.mu, limit.alpha, {beta, 0, 0}, {}}, {{1.2, 0.9, 1.3}}).run();
    const long double logJ = std::log(p.at(0)[0] * p.at(0)[1] * p.at(0)[2]);
    const long double wanted =
        beta == 1e-3 ? p.terms.energy(p.at(0)) : limit.energy(p.at(0)) + limit.mu[0] * beta * logJ * logJ;
    EXPECT_NEAR(p.energy[0], static_cast<double>(wanted), 1e-13) << beta;
  }
}

TEST(Powers, OgdensFitToTreloarsRubber) {
  const double at[] = {1.1, 1.5, 2, 3, 4, 5}, fit[] = {.9745, .9974, .9981};
  const double values[6][3] = {{.113335, .208387, .146855},    {.401617, .601980, .481564},
                               {.602722, .821615, .685622},    {.879926, 1.230705, .952428},
                               {1.207971, 1.897660, 1.275967}, {1.736666, 3.019015, 1.805384}};
  for (const Mode mode : {Mode::Bar, Mode::Sheet, Mode::Strip}) {
    const auto nominal = [&](double s) {
      const Points p = Points(kRubber, {stretchesOf(mode, s)}).run();
      return (p.l[0] * p.dU[0] - p.l[2] * p.dU[2]) / s;
    };
    const int m = static_cast<int>(mode);
    for (int k = 0; k < 6; ++k) EXPECT_NEAR(nominal(at[k]), values[k][m], 2e-6);
    EXPECT_NEAR(determination(mode, nominal), fit[m], 6e-5);
  }
}

// Plane stress and bars of a material by their own kernels.
struct Closed {
  Values free, flag, stress, bound, bulk;
};
Closed closed(const Terms& terms, const Values& V, const Values& start, bool isBar) {
  const int n = static_cast<int>(start.size());
  Closed r{start, Values(n), Values((isBar ? 1 : 3) * n), Values(n), Values(n)};
  Constants c(terms, n);
  const auto kernel = terms.isFoam() ? (isBar ? SPX_MAT_HYPERFOAMUNIEXP : SPX_MAT_HYPERFOAMPSEXP)
                                     : (isBar ? SPX_MAT_HYPEROGDENUNIEXP : SPX_MAT_HYPEROGDENPSEXP);
  call(kernel, n, c.columns<9>(), V, r.free, r.flag, r.stress, r.bound, r.bulk);
  return r;
}

TEST(Powers, PublishedFoamInFourModes) {
  // lateral stretch, J, and nominal stress uniaxial, equibiaxial, planar, volumetric
  const double table[6][7] = {{0.5, 1.25174758, .78343600, -5303.199799, -5321.442503, -5306.919340, -5600.662644},
                              {0.7, 1.12248232, .88197659, -173.502158, -179.583973, -175.246990, -207.484525},
                              {0.9, 1.03472001, .96358095, -10.739509, -13.118218, -11.413331, -17.284414},
                              {1.1, .96959664, 1.03412941, 4.748537, 9.201722, 5.645273, 46.674079},
                              {1.5, .87691269, 1.15346379, 13.971286, 111.885691, 22.107671, 88809.487541},
                              {2.0, .79888311, 1.27642846, 24.377913, 1021.976128, 54.667775, 0}};
  for (const auto& row : table) {
    const double l = row[0];
    const Closed bar = closed(kFoam, {l}, {0}, true);
    EXPECT_NEAR(bar.free[0], row[1], 6e-9);
    EXPECT_NEAR(l * bar.free[0] * bar.free[0], row[2], 6e-9);
    EXPECT_NEAR(bar.stress[0] * bar.free[0] * bar.free[0], row[3], 1e-6 * std::abs(row[3]));
    const Closed biaxial = closed(kFoam, {l, l, 0}, {1}, false), planar = closed(kFoam, {l, 1, 0}, {1}, false);
    EXPECT_NEAR(biaxial.stress[0] * l * biaxial.free[0], row[4], 1e-6 * std::abs(row[4]));
    EXPECT_NEAR(planar.stress[0] * planar.free[0], row[5], 1e-6 * std::abs(row[5]));
    if (row[6] != 0) {
      EXPECT_NEAR(Points(kFoam, {{l, l, l}}).run().dU[0], row[6], 1e-6 * std::abs(row[6]));
    }
  }
}

// As alpha falls to nothing a term tends to mu (sum of ln^2 l + beta ln^2 J); down to where it vanishes there is no noise.
TEST(Powers, SmallExponentsJoinTheirLimit) {
  const std::array<double, 3> stretch = {1.3, 0.7, 1.05};
  for (const bool isFoam : {false, true})
    for (double alpha = 0.1; alpha > 1e-152; alpha *= alpha < 1e-8 ? 1e-9 : 0.37)
      for (const double sign : {1.0, -1.0}) {
        const long double a = sign * alpha, beta = isFoam ? 0.8L : 0.0L;
        Terms terms{{4, 1, 0}, {sign * alpha, 2, 1}, {}, {}};
        if (isFoam) terms.beta = {0.8, 0, 0};
        Points p(terms, {stretch, {1, 1, 1}, {30, 0.2, 4}});
        p.run();
        for (int i = 0; i < p.n; ++i) {
          const Long3 l = p.at(i);
          const long double L = std::log(l[0] * l[1] * l[2]);
          Terms rest = terms;
          rest.mu[0] = 0;
          // series of (e^u - 1 - u)/u^2 and (e^u - 1)/u
          const auto series = [](long double u, int first) {
            long double sum = 0, term = 1;
            for (int k = 1; k < first; ++k) term /= k;
            for (int k = first; k < 60; ++k) sum += term /= k, term *= u;
            return sum;
          };
          long double energy = beta * L * L * series(-a * beta * L, 2), tau[3], off = 0;
          for (int k = 0; k < 3; ++k) {
            const long double x = std::log(l[k]) - (isFoam ? 0 : L / 3);
            energy += x * x * series(a * x, 2), tau[k] = x * series(a * x, 1), off += tau[k] / 3;
          }
          if (isFoam) off = -beta * L * series(-a * beta * L, 1);
          const double wanted = static_cast<double>(8 * energy + rest.energy(l)), scale = 1 + std::abs(wanted);
          EXPECT_NEAR(p.energy[i], wanted, (alpha > 0x1p-6 ? 1e-10 : 3e-14) * scale) << alpha << " " << i;
          for (int k = 0; k < 3; ++k) {
            Long3 up = l, down = l;
            up[k] += 1e-6L * l[k], down[k] -= 1e-6L * l[k];
            const long double others = (rest.energy(up) - rest.energy(down)) / (2e-6L * l[k]);
            EXPECT_NEAR(p.dU[k * p.n + i], static_cast<double>(8 * (tau[k] - off) / l[k] + others),
                        1e-9 * (1 + static_cast<double>(std::abs(others))))
                << alpha << " " << i << " " << k;
          }
        }
        EXPECT_EQ(p.energy[1], 0);
      }
}

// From any start the free stretch is found: the stress across changes its sign there, and the derivatives of the whole energy
// by the other stretches give theirs, all in 80 bits.  What has no solution is NaN, and the points beside it do not know of it.
TEST(Powers, FreeStretchesFromFarStarts) {
  Random random(47);
  for (int round = 0; round < 100; ++round) {
    const int n = 16;
    Terms terms{{}, {}, {}, {}};
    for (double& m : terms.mu) m = random.uniform(0.01, 2);
    for (double& a : terms.alpha) a = round < 10 ? 25 : random.uniform(-30, 30);
    if (round % 2 == 0)
      terms.rD = {random.uniform(1, 1000), 0, 0};
    else
      for (int t = 0; t < 3; ++t) terms.beta.push_back(random.uniform(0, 1));
    if (round > 97) terms = round == 98 ? kRubber : kMixedFoam;
    Values plane(3 * n), start(n), axial(n);
    for (int i = 0; i < n; ++i) {
      for (int k = 0; k < 2; ++k) plane[k * n + i] = random.uniform(0.5, 2);
      plane[2 * n + i] = round % 4 < 2 ? 0 : random.uniform(-0.2, 0.2), axial[i] = random.uniform(0.4, 3);
      start[i] = i == 0 ? 1e-3 : i == 1 ? 30 : i == 4 ? -1 : i == 5 ? HUGE_VAL : std::pow(10, random.uniform(-3, 3));
    }
    plane[3] = axial[3] = kNaN;
    for (const bool isBar : {false, true}) {
      const Closed found = closed(terms, isBar ? axial : plane, start, isBar);
      for (int i = 0; i < n; ++i) {
        const double half = (plane[i] - plane[n + i]) / 2, shear = plane[2 * n + i], radius = std::hypot(half, shear);
        const long double mean = (plane[i] + plane[n + i]) / 2, t = found.free[i];
        const Long3 l = isBar ? Long3{axial[i], t, t} : Long3{mean + radius, mean - radius, t};
        if (i == 3) {
          EXPECT_TRUE(std::isnan(found.free[i]) && std::isnan(found.stress[i]));
          continue;
        }
        const auto tension = [&](long double factor) { // J times the free stress
          const Long3 at = {l[0], isBar ? factor * t : l[1], factor * t};
          const auto sums = terms.sums(at);
          return sums.tau[2] + sums.J * terms.volume(at).p;
        };
        EXPECT_TRUE(tension(1 - 1e-9L) < 0 && tension(1 + 1e-9L) > 0) << round << " " << i << " " << isBar << ": " << t;
        const auto stressAlong = [&](int a) {
          const long double h = 1e-5L * l[a];
          const auto U = [&](int k) {
            Long3 at = l;
            at[a] += k * h;
            return terms.total(at);
          };
          return static_cast<double>(firstDifference(U, h) * l[a] / (l[0] * l[1] * l[2]));
        };
        const double s1 = stressAlong(0), s2 = isBar ? 0 : stressAlong(1);
        const double scale = 1e-7 * (1 + found.bulk[i] + std::abs(s1) + std::abs(s2));
        EXPECT_NEAR(found.stress[i] + (isBar ? 0 : found.stress[n + i]), s1 + s2, scale) << round << " " << i;
        if (!isBar) {
          EXPECT_NEAR((found.stress[i] - found.stress[n + i]) * half + 2 * found.stress[2 * n + i] * shear,
                      (s1 - s2) * radius, scale);
        }
      }
    }
  }
  // compression without end: the volume of this foam takes more off than any stretch adds
  const Closed none = closed(Terms{{1, 0, 0}, {2, 1, 1}, {-1, 0, 0}, {}}, {1.2, 1.1, 0}, {1}, false);
  EXPECT_TRUE(std::isnan(none.free[0]) && std::isnan(none.stress[0])) << none.free[0];
}

// ---- softening

TEST(Mullins, PublishedUnloadingOfNeoHookeanRubber) {
  // r = 3, m = 1, beta = 0.1, shear modulus 1: eta and nominal stress of a bar unloaded from a peak; the fit of the error function
  // is good to 1.2e-7
  struct Row {
    double peak, stretch, eta, stress;
  };
  const Row rows[] = {{2.5, 1, .67241372, 0},           {2.5, 1.25, .67408536, .41119207},
                      {2.5, 1.5, .68049978, .71830533}, {2.5, 2.0, .74267491, 1.29968109},
                      {3.5, 1, .66666773, 0},           {3.5, 3.0, .71154477, 2.05557378}};
  const auto energy = [](double s) { return 0.5 * (s * s + 2 / s - 3); };
  const double r = 3, m = 1, beta = 0.1, U1 = 0.5, none = 0;
  for (const Row& row : rows) {
    const double axial = row.stretch, lateral = 1 / std::sqrt(axial), V[6] = {axial, lateral, lateral, 0, 0, 0};
    double Um = energy(row.peak), U = energy(row.stretch), eta = 0, slope = 0, stress = 0, flag = 0, whole[6], soft[6];
    call(SPX_MAT_ORMULLINS, 1, r, m, beta, Um, Um, U, eta, slope);
    EXPECT_NEAR(eta, row.eta, 6e-8);
    call(SPX_MAT_HYPERUNITHERMAL, 1, U1, none, none, axial, lateral, stress, flag);
    EXPECT_NEAR(eta * stress / axial, row.stress, 2e-7);
    EXPECT_EQ(Um, energy(row.peak));
    // the slope is the derivative of eta
    const auto etaAt = [&](int step) {
      double at = U + step * 1e-4, result = 0, ignored[2];
      call(SPX_MAT_ORMULLINS, 1, r, m, beta, ignored[0], Um, at, result, ignored[1]);
      return result;
    };
    if (U > 1e-4) {
      EXPECT_NEAR(slope, (etaAt(1) - etaAt(-1)) / 2e-4, 1e-4 * slope);
    }
    // all but the mean is softened
    call(SPX_MAT_HYPER3DEXP, 1, U1, none, none, V, whole, flag);
    call(SPX_MAT_MULLINS3DEXP, 1, r, m, beta, Um, Um, U, eta, slope, U1, none, none, V, soft, flag);
    const double mean = (whole[0] + whole[1] + whole[2]) / 3;
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(soft[k], mean + eta * (whole[k] - mean), 1e-14);
  }
  // energy lost in the loop to 2.5 and back: the integral of (1 - eta) dU
  double damage = 0;
  call(SPX_MAT_MULLINSDAMAGEENER, 1, r, m, beta, energy(2.5), 1.0, 1.0, damage);
  EXPECT_NEAR(damage, .45048419, 3e-7);
}

TEST(Mullins, PrimaryPathAndGuards) {
  const int n = 5;
  const Values r(n, 2), m{1, 1, 0, 1, 1}, beta{0.2, 0.2, 0, 0.2, 0.2}, UmOld{1, 1, 1, 0, 2}, q(n, 4), modulus(n, 10);
  Values UmNew(n), U{1, 1.5, 0.5, -1e-9, 0}, eta(n), slope(n), effective(n, -1);
  call(SPX_MAT_ORMULLINS, n, r, m, beta, UmNew, UmOld, U, eta, slope);
  for (const int i : {0, 1, 2, 3}) EXPECT_EQ(eta[i], 1) << i;
  EXPECT_EQ(UmNew, (Values{1, 1.5, 1, 0, 2}));
  EXPECT_EQ(U[3], 0);
  EXPECT_EQ(slope[2], 0);
  EXPECT_NEAR(slope[1], 0.5 * 1.1283791670353622 / 1.3, 1e-15);
  EXPECT_NEAR(eta[4], 1 - std::erf(2 / 1.4) / 2, 1.2e-7);

  const struct {
    decltype(&SPX_MAT_MULLINSSTRESSDEGR3D) kernel;
    Values stress, softened;
  } states[] = {{SPX_MAT_MULLINSSTRESSDEGR3D, {3, 6, 9, 1, 2, 4}, {4.5, 6, 7.5, 0.5, 1, 2}},
                {SPX_MAT_MULLINSSTRESSDEGRGPE, {3, 6, 9, 1}, {4.5, 6, 7.5, 0.5}},
                {SPX_MAT_MULLINSSTRESSDEGRPS, {3, 6, 1}, {3, 4.5, 0.5}},
                {SPX_MAT_MULLINSSTRESSDEGRUNI, {3}, {2}}};
  for (const auto& state : states) {
    Values stress = state.stress;
    call(state.kernel, 1, 0.5, stress);
    EXPECT_EQ(stress, state.softened);
  }
  for (const int code : {100, 200, 300}) {
    call(SPX_OPT_MULLINSEFFMOD, n, code, eta, slope, q, modulus, effective);
    EXPECT_EQ(effective[1], eta[1] * 10 + (code == 200 ? slope[1] * 4 : 0)) << code;
    EXPECT_EQ(effective[4], eta[4] * 10 + (code == 100 ? 0 : slope[4] * 4)) << code;
  }
}

TEST(Mullins, FoamSoftensItsOwnStress) {
  Random random(45);
  const int n = 12;
  const Values r(n, 2), m(n, 5), beta(n, 0.1), UmOld(n, 40), zero(n);
  Values UmNew(n), U(n), eta(n), slope(n), axes(9 * n), flag(n), whole(6 * n), soft(6 * n), bound(n), bulk(n);
  Points p(kMixedFoam, randomStretches(n - 3, 46));
  p.run();
  for (int i = 0; i < n; ++i) setAxes(axes, n, i, randomRotation(random));
  const auto soften = [&](auto kernel, auto&... state) {
    call(kernel, n, r, m, beta, UmNew, UmOld, U, eta, slope, p.constants.columns<9>(), state..., flag);
  };
  call(SPX_MAT_HYPERELAS3D, n, p.dU, p.ddU, zero, zero, p.l, axes, p.rJ, whole, bound, bulk);
  soften(SPX_MAT_HFOAMMULLINS3DEXP, p.l, axes, soft);
  call(SPX_MAT_MULLINSSTRESSDEGR3D, n, eta, whole);
  for (int i = 0; i < n; ++i) {
    EXPECT_EQ(U[i], std::max(p.energy[i], 0.0));
    if (p.energy[i] < 40) {
      EXPECT_NEAR(eta[i], 1 - std::erf((40 - U[i]) / 9) / 2, 1.2e-7);
    }
    for (int k = 0; k < 6; ++k) EXPECT_NEAR(soft[k * n + i], whole[k * n + i], 1e-11 * (1 + bound[i]));
  }
  // plane stress and bar: the stress of their own kernels, softened
  for (const bool isBar : {false, true}) {
    Values V(3 * n, 0.1), free(n, 1);
    for (int i = 0; i < n; ++i) V[i] = 1 + 0.05 * i, V[n + i] = 1.1;
    Closed expected = closed(kMixedFoam, V, free, isBar);
    Values stress(expected.stress.size());
    soften(isBar ? SPX_MAT_HFOAMMULLINSUNIEXP : SPX_MAT_HFOAMMULLINSPSEXP, V, free, stress);
    call(isBar ? SPX_MAT_MULLINSSTRESSDEGRUNI : SPX_MAT_MULLINSSTRESSDEGRPS, n, eta, expected.stress);
    EXPECT_EQ(stress, expected.stress);
    EXPECT_EQ(free, expected.free);
  }
}

// ---- failure

TEST(Failure, TriaxialityOfKnownStates) {
  const int n = 8;
  // axial tension, axial compression, shear, hydrostatic tension and pressure, nothing, equibiaxial, nearly hydrostatic
  Values S(6 * n), ratio(n), P(3 * n), shear(n, -7);
  S[0] = 3, S[1] = -2;
  S[3 * n + 2] = 4;
  for (int k = 0; k < 3; ++k) S[k * n + 3] = 5, S[k * n + 4] = -5, S[k * n + 7] = k == 0 ? 1 + 1e-9 : 1;
  S[6] = S[n + 6] = 2;
  call(SPX_MAT_STRESSRATIO3DEXP, n, S, ratio);
  const double expected[] = {1.0 / 3, -1.0 / 3, 0, 100, -100, 0, 2.0 / 3, 100};
  for (int i = 0; i < n; ++i) EXPECT_NEAR(ratio[i], expected[i], 1e-15) << i;
  EXPECT_TRUE(ratio[3] == 100 && ratio[4] == -100);
  // (q + ks p)/tau_max: 2 - 2/3 ks in tension, sqrt(3) in shear; no shear stress at all gives 0
  const int list[] = {3, 1, 6};
  const double ks = 0.3;
  call(SPX_MAT_SHRSTRESSRATIO3DEXP, n, 3, list, S, ks, P, shear);
  EXPECT_NEAR(shear[0], 2 - 2 * ks / 3, 1e-14);
  EXPECT_NEAR(shear[2], std::sqrt(3.0), 1e-14);
  EXPECT_EQ(shear[5], 0);
}

TEST(Failure, StatesAreTheSolidWithoutTheirMissingComponents) {
  Random random(47);
  const int n = 20;
  std::vector<int32_t> list(n);
  for (int i = 0; i < n; ++i) list[i] = n - i;
  const auto check = [&](const std::vector<int>& components, auto plain, auto listed, auto shear) {
    Values S(6 * n), part, a(n), b(n), c(n), d(n), P(3 * n), Q(3 * n);
    for (const int k : components)
      for (int i = 0; i < n; ++i) part.push_back(S[k * n + i] = random.uniform(-1, 1));
    call(SPX_MAT_STRESSRATIO3DEXP, n, S, a);
    call(plain, n, part, b);
    EXPECT_EQ(a, b);
    call(listed, n, n, list, part, b);
    EXPECT_EQ(a, b);
    call(SPX_MAT_SHRSTRESSRATIO3DEXP, n, n, list, S, 0.2, P, c);
    call(shear, n, n, list, part, 0.2, Q, d);
    EXPECT_EQ(c, d);
    EXPECT_EQ(P, Q);
  };
#define RATIOS(state) SPX_MAT_STRESSRATIO##state, SPX_MAT_DUCTSTRESSRATIO##state, SPX_MAT_SHRSTRESSRATIO##state
  check({0, 1, 2, 3}, RATIOS(GPEEXP));
  check({0, 1, 3}, RATIOS(PSEXP));
  check({0, 3}, RATIOS(BEAMEXP));
  check({0}, RATIOS(UNIEXP));
}

TEST(Failure, JohnsonAndCook) {
  // G. R. Johnson, W. H. Cook, Eng. Fract. Mech. 21 (1985) 31 and public decks: d1..d5 with the sign of d3 of the publication,
  // strains at triaxiality -1/3, 0, 1/3, 2/3, 1, at 1/3 with rate 1000, and at 1/3 with t = 0.5
  struct Metal {
    const char* name;
    double d[5], strain[5], fast, warm;
  };
  const Metal metals[] = {
      {"OFHC copper", {.54, 4.89, -3.03, .014, 1.12}, {13.9660, 5.4300, 2.3210, 1.1887, .7763}, 2.5455, 3.6208},
      {"4340 steel", {.05, 3.44, -2.12, .002, .61}, {7.0236, 3.4900, 1.7469, .8871, .4629}, 1.7710, 2.2797},
      {"Armco iron", {-2.20, 5.43, -.47, .016, .63}, {4.1510, 3.2300, 2.4426, 1.7694, 1.1938}, 2.7126, 3.2120},
      {"Al 2024-T351", {.13, .13, -1.5, .011, 0}, {.3443, .2600, .2088, .1778, .1590}, .2247, .2088},
      {"Al 6061-T6", {-.77, 1.45, -.47, 0, 1.6}, {.9259, .6800, .4697, .2900, .1363}, .4697, .8455},
      {"Weldox 460 E", {.0705, 1.732, -.54, -.0123, 0}, {2.1441, 1.8025, 1.5172, 1.2789, 1.0798}, 1.3883, 1.5172},
      {"Al 7075-T651", {-.068, .451, -.952, .036, .697}, {.5514, .3830, .2604, .1711, .1061}, .3251, .3511}};
  const int n = 7;
  const int32_t list[] = {7, 6, 5, 4, 3, 2, 1};
  const double ratio[] = {-1.0 / 3, 0, 1.0 / 3, 2.0 / 3, 1, 1.0 / 3, 1.0 / 3}, rate[] = {2, 2, 0.1, 2, 0, 2000, 2};
  const double T[] = {300, 299, 300, 0, 300, 300, 800}, melting = 1300, transition = 300, perReference = 0.5;
  for (const Metal& metal : metals) {
    double strain[n], reciprocal[n], P[13] = {}, t[n] = {0, 0, 0, 0, 0, 0, 0.5};
    const double d3 = -metal.d[2];
    call(SPX_MAT_JCFAILURESTRAIN, n, n, list, strain, rate, ratio, T, metal.d[0], metal.d[1], d3, metal.d[3],
         metal.d[4], melting, transition, perReference);
    P[7] = perReference;
    std::copy(metal.d, metal.d + 5, P + 8);
    call(SPX_MAT_JCSHRFAILEXP, n, P, ratio, rate, t, reciprocal);
    for (int i = 0; i < n; ++i) {
      const double expected = i < 5 ? metal.strain[i] : i == 5 ? metal.fast : metal.warm;
      EXPECT_NEAR(strain[i], expected, 6e-5) << metal.name << " " << i;
      EXPECT_NEAR(reciprocal[i] * strain[i], 1, 1e-13) << metal.name << " " << i;
    }
  }
  // edges: brittle beyond its range, at and above melting, an exponent without bound, a reciprocal that would overflow
  const double s[] = {3, 0, 0, -1e6, 0}, hot[] = {300, 1300, 2000, 300, 300}, still[] = {0, 0, 0, 0, 0};
  const double d1 = -2.2, d2 = 5.43, d3 = 0.47, d4 = 0, d5 = 0.63;
  double strain[5];
  call(SPX_MAT_JCFAILURESTRAIN, 5, 5, list + 2, strain, still, s, hot, d1, d2, d3, d4, d5, melting, transition,
       perReference);
  EXPECT_EQ(strain[0], 2.2250738585072014e-306);
  EXPECT_NEAR(strain[1], (d1 + d2) * 1.63, 1e-14);
  EXPECT_EQ(strain[1], strain[2]);
  EXPECT_NEAR(strain[3], d1 + d2 * std::exp(40.0), 1e5);
  // the exponential ends at exp(-708.3964185322637), the least normal number; without b the result is 1/a at any exponent
  constexpr double least = 2.2250738585072014e-308;
  const struct {
    double a, b, k, expected;
  } edges[] = {
      {0, 2, 800, 0.5 * least}, {0, 2, -800, 0.5 / least}, {0, 0.9, -800, 0},   {0, 2, 1, 0.5 * std::exp(-1.0)},
      {4, 0, 800, 0.25},        {0.3, 0, 1e5, 1 / 0.3},    {1e-9, 0, 708, 1e9}, {4, 0, -800, 0.25},
      {1, 3, -800, 1},          {4, 1, 800, least}};
  for (const auto& c : edges) {
    const double P[13] = {0, 0, 0, 0, 0, 0, 0, 1, c.a, c.b, c.k, 0, 0};
    call(SPX_MAT_JCSHRFAILEXP, 1, P, 1.0, 0.0, 0.0, strain);
    EXPECT_NEAR(strain[0], c.expected, 1e-12 * c.expected) << c.a << " " << c.b << " " << c.k;
  }

  double omega[] = {0.1, 0.2, 0.3}, increment[] = {0.01, 0.02, 0.03}, limit[] = {0.1, 0.2, 0.3};
  const int some[] = {3, 1};
  call(SPX_MAT_DUCTSHRFAILUREEXP, 3, 2, some, omega, increment, limit);
  EXPECT_DOUBLE_EQ(omega[0], 0.2);
  EXPECT_EQ(omega[1], 0.2);
  EXPECT_DOUBLE_EQ(omega[2], 0.4);
}

} // namespace
