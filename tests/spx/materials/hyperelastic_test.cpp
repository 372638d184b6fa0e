// Models of the invariants against numerical derivatives of their energies in 80 bits, against each other, and against
// published fits to Treloar's rubber.
#include "bench/plain/materials.h"
#include "spx.h"
#include "tests/support/call.h"
#include "tests/support/differences.h"
#include "tests/support/random.h"
#include "tests/support/rubber_1944.h"

namespace {

using namespace sharedanalysis::test;
using Pointers = std::vector<double*>;

// A kernel by its address: every argument is a pointer to reals, behind the number of points.
using Call = std::function<void(int32_t, const Pointers&)>;
template <class... Arguments>
Call asCall(void (*kernel)(const int32_t*, Arguments...)) {
  return [kernel](int32_t n, const Pointers& a) {
    ASSERT_EQ(a.size(), sizeof...(Arguments));
    std::array<double*, sizeof...(Arguments)> columns;
    std::copy(a.begin(), a.end(), columns.begin());
    call(kernel, n, columns);
  };
}

struct Model {
  const char* name;
  int constants, volumeConstants;
  double first[2], second[2], others[2], volume[2]; // ranges of the constants
  std::function<long double(const Values& c, long double I1, long double I2)> energy;
  bool isChain; // energy of the volume
  Call s33, s31, s30, solid, gpe, moduli;

  long double volumeEnergy(const Values& c, long double J) const {
    if (isChain) return ((J * J - 1) / 2 - std::log(J)) / c.back();
    long double sum = 0, power = 1;
    for (int k = 0; k < volumeConstants; ++k) sum += c[constants + k] * (power *= (J - 1) * (J - 1));
    return sum;
  }
  // Its first two derivatives.
  plain::Volume<long double> volumeAt(const Values& c, long double J) const {
    const long double h = 1e-4L;
    const auto W = [&](int k) { return volumeEnergy(c, J + k * h); };
    return {firstDifference(W, h), secondDifference(W, h)};
  }
};

// Chains that lock: the range of the interaction, taken off.
long double locking(const Values& c) { return c[1] * static_cast<long double>(c[1]) - 3; }
long double vanDerWaals(const Values& c, long double I1, long double I2) {
  const long double s = (1 - c[3]) * I1 + c[3] * I2 - 3, eta = std::sqrt(s / locking(c));
  return c[0] * (-locking(c) * (std::log1p(-eta) + eta) - 2 * c[2] / 3.0L * std::pow(s / 2, 1.5L));
}

#define CALLS(code)                                                                                                    \
  asCall(SPX_MAT_HYPER##code##S33), asCall(SPX_MAT_HYPER##code##S31), asCall(SPX_MAT_HYPER##code##S30),                \
      asCall(SPX_MAT_HYPER##code##3DEXP), asCall(SPX_MAT_HYPER##code##GPEEXP), asCall(SPX_MAT_HYPER##code##MODULIEXP)

template <int order>
long double polynomial(const Values& c, long double I1, long double I2) {
  return plain::polynomialEnergy<order>([&](int k) { return c[k]; }, I1, I2);
}
long double arrudaBoyce(const Values& c, long double I1, long double) {
  return plain::arrudaBoyceEnergy<long double>(c[0], c[1], I1);
}
// clang-format off
const Model kModels[] = {
    {"polynomial of order 2", 5, 2, {0.5, 2}, {-0.1, 0.3}, {-0.1, 0.3}, {1, 20}, polynomial<2>, false, CALLS(POLY)},
    {"polynomial of order 6", 27, 6, {0.5, 2}, {-0.1, 0.3}, {-0.1, 0.3}, {1, 20}, polynomial<6>, false, CALLS(POLY6)},
    {"Arruda and Boyce", 2, 1, {0.5, 2}, {2, 5}, {}, {0.1, 1}, arrudaBoyce, true, CALLS(AB)},
    {"Van der Waals", 4, 1, {0.5, 2}, {8, 12}, {0, 0.3}, {0.1, 1}, vanDerWaals, true, CALLS(VDW)}};
// clang-format on
const Model& kVanDerWaals = kModels[3];

// Random constants and stretches of either sense for a model, and what its kernels make of them.
struct Block {
  const Model& model;
  int n;
  std::vector<Values> constants;
  Values V, energy, rJ, stress, flag, bound, bulk;

  Block(const Model& m, int points, uint64_t seed, double spread = 0.35)
      : model(m), n(points), constants(m.constants + m.volumeConstants, Values(points)), V(6 * points), energy(points),
        rJ(points), stress(6 * points), flag(points), bound(points), bulk(points) {
    Random random(seed);
    for (int i = 0; i < n; ++i) {
      for (int k = 0; k < static_cast<int>(constants.size()); ++k) {
        const auto& range = k == 0 ? m.first : k >= m.constants ? m.volume : k == 1 ? m.second : m.others;
        constants[k][i] = random.uniform(range[0], range[1]);
      }
      const Matrix R = randomRotation(random);
      const double stretches[3] = {random.uniform(1 - spread, 1 + spread), random.uniform(1 - spread, 1 + spread),
                                   random.uniform(1 - spread, 1 + spread)};
      setPrincipal(V.data(), n, i, stretches, R);
    }
  }
  Values at(int i) const {
    Values c;
    for (const auto& array : constants) c.push_back(array[i]);
    return c;
  }
  plain::Invariants<long double> invariantsAt(int i) const {
    const LongMatrix v = tensorOf<long double>(&V[i], n);
    return plain::invariants(v, determinant(v));
  }
  Pointers pointers(int count, std::initializer_list<Values*> rest) {
    Pointers p;
    for (int k = 0; k < count; ++k) p.push_back(constants[k].data());
    for (auto* array : rest) p.push_back(array->data());
    return p;
  }
  void run() {
    model.s33(n, pointers(model.constants, {&energy, &rJ, &V}));
    model.solid(n, pointers(model.constants + model.volumeConstants, {&V, &stress, &flag, &bound, &bulk}));
  }
};

// First and second central differences in the invariants.
struct Derivatives {
  long double U1, U2, U11, U12, U22;
  Derivatives(const Model& m, const Values& c, long double I1, long double I2) {
    const long double h = 1e-4L; // with errors of h^4
    const auto U = [&](int a, int b) { return m.energy(c, I1 + a * h, I2 + b * h); };
    const auto along1 = [&](int a) { return U(a, 0); };
    const auto along2 = [&](int b) { return U(0, b); };
    U1 = firstDifference(along1, h), U11 = secondDifference(along1, h);
    U2 = firstDifference(along2, h), U22 = secondDifference(along2, h);
    const auto twice = [&](int a, int b) { return U(2 * a, 2 * b); };
    U12 = (4 * mixedDifference(U, h) - mixedDifference(twice, 2 * h)) / 3;
  }
};

TEST(Hyperelastic, EnergyStressAndModuliOfEveryModel) {
  for (const Model& model : kModels) {
    SCOPED_TRACE(model.name);
    Block block(model, 50, 21);
    block.run();
    for (int i = 0; i < block.n; ++i) {
      const Values c = block.at(i);
      const auto [J, I1, I2, B] = block.invariantsAt(i);
      const LongMatrix Q = B * B;
      const long double rJ = 1 / J;
      if (I1 < 3.01L) continue; // no room for the differences
      const auto expect = [](double found, long double expected, double bound) {
        EXPECT_NEAR(found, static_cast<double>(expected), bound);
      };
      expect(block.rJ[i], rJ, 1e-14 * block.rJ[i]);
      expect(block.energy[i], model.energy(c, I1, I2), 2e-13 * (1 + std::abs(block.energy[i])));

      Derivatives d(model, c, I1, I2);
      if (&model == &kVanDerWaals) // 1/sqrt(s) of the second derivatives at its value where chains lock
        for (long double* second : {&d.U11, &d.U12, &d.U22})
          *second *= std::sqrt(((1 - c[3]) * I1 + c[3] * I2 - 3) / locking(c)) / 0.99999L;
      const auto volume = model.volumeAt(c, J);
      // s = (2/J) [(U1 + I1 U2) B - U2 B B]; the stress is its deviator and p
      const LongMatrix s = 2 * rJ * (d.U1 + I1 * d.U2) * B + -2 * rJ * d.U2 * Q;
      long double size = std::abs(volume.p), largest = -1e300L;
      for (const auto& row : s)
        for (const long double x : row) size = std::max(size, std::abs(x));
      for (int a = 0; a < 3; ++a)
        for (int b = a; b < 3; ++b) {
          expect(block.stress[kS33[a][b] * block.n + i], s[a][b] + (a == b ? volume.p - trace(s) / 3 : 0),
                 1e-10 * (1 + static_cast<double>(size)));
          // ds_ij/dD_ij at constant J while B moves by D B + B D, by the derivatives of the energy
          LongMatrix D{};
          D[a][b] = D[b][a] = 1;
          const LongMatrix dB = D * B + B * D;
          const LongMatrix dQ = dB * B + B * dB;
          const long double dI1 = trace(dB), dI2 = I1 * dI1 - trace(dQ) / 2;
          const long double dU1 = d.U11 * dI1 + d.U12 * dI2, dU2 = d.U12 * dI1 + d.U22 * dI2;
          largest = std::max(largest, 2 * rJ *
                                          ((dU1 + dI1 * d.U2 + I1 * dU2) * B[a][b] + (d.U1 + I1 * d.U2) * dB[a][b] -
                                           dU2 * Q[a][b] - d.U2 * dQ[a][b]));
        }
      expect(block.bulk[i], 3 * J * (volume.p + volume.slope), 1e-8 * (1 + std::abs(block.bulk[i])));
      expect(block.bound[i], largest, 1e-8 * (1 + std::abs(block.bound[i])));
    }
  }
}

TEST(Hyperelastic, StatesAndStoragesAgreeToTheBit) {
  for (const Model& model : kModels) {
    SCOPED_TRACE(model.name);
    Block block(model, 140, 26);
    const int n = block.n, all = model.constants + model.volumeConstants;
    Values energy(n), rJ(n), stress(4 * n), bound(n), bulk(n);
    block.run();
    model.moduli(n, block.pointers(all, {&block.V, &block.flag, &bound, &bulk}));
    EXPECT_EQ(bound, block.bound);
    std::fill(block.V.begin() + 4 * n, block.V.end(), 0.0);
    block.run();
    model.s31(n, block.pointers(model.constants, {&energy, &rJ, &block.V}));
    EXPECT_EQ(energy, block.energy);
    EXPECT_EQ(rJ, block.rJ);
    model.gpe(n, block.pointers(all, {&block.V, &stress, &block.flag, &bound, &bulk}));
    EXPECT_TRUE(std::equal(stress.begin(), stress.end(), block.stress.begin()));
    EXPECT_EQ(bulk, block.bulk);
    std::fill(block.V.begin() + 3 * n, block.V.end(), 0.0);
    block.run();
    model.s30(n, block.pointers(model.constants, {&energy, &rJ, &block.V}));
    EXPECT_EQ(energy, block.energy);
    EXPECT_EQ(rJ, block.rJ);
  }
}

TEST(Hyperelastic, UndeformedStateAndSmallStrain) {
  for (const Model& model : kModels) {
    SCOPED_TRACE(model.name);
    Block block(model, 20, 27, 0.0);
    const int n = block.n;
    for (int k = 0; k < 6 * n; ++k) block.V[k] = k < 3 * n ? 1.0 : 0.0;
    block.run();
    EXPECT_EQ(block.energy, Values(n));
    EXPECT_EQ(block.stress, Values(6 * n));
    const double strain = 1e-7;
    const Values K3 = block.bulk;
    for (int i = 0; i < n; ++i) block.V[i] = 1 + strain, block.V[3 * n + i] = strain;
    block.run();
    for (int i = 0; i < n; ++i) {
      const Values c = block.at(i);
      const double G = block.stress[3 * n + i] / (2 * strain);
      if (!model.isChain || &model == &kVanDerWaals) {
        EXPECT_NEAR(G, model.isChain ? c[0] : 2 * (c[0] + c[1]), 1e-5);
      }
      EXPECT_NEAR(block.stress[i] / strain, K3[i] / 3 + 4 * G / 3, 1e-4);
      EXPECT_NEAR(block.stress[n + i] / strain, K3[i] / 3 - 2 * G / 3, 1e-4);
    }
  }
}

TEST(Hyperelastic, GuardsOfTheVolume) {
  const int n = 5;
  Block block(kModels[0], n, 28);
  for (int k = n; k < 6 * n; ++k) block.V[k] = k < 3 * n ? 1 : 0;
  const Values first = {0, -0.5, 1e-10, 1e-8, 1.1}, flags = {1, 1, 1, 0, 0};
  std::copy(first.begin(), first.end(), block.V.begin());
  block.run();
  EXPECT_EQ(block.rJ[0], 1);
  EXPECT_EQ(block.rJ[1], 2) << "-0.5 + 1";
  EXPECT_EQ(block.rJ[2], 1 / 1e-10);
  EXPECT_EQ(block.flag, flags);
  EXPECT_NEAR(block.bulk[0], 6 * block.constants[5][0], 1e-12) << "J counts as 1";
  // a sound stretch does not clear the flag, and counts as isochoric
  std::fill(block.V.begin(), block.V.begin() + n, 1.3);
  block.run();
  EXPECT_EQ(block.flag, flags);
  EXPECT_NEAR(block.bulk[0], 6 * block.constants[5][0], 1e-12);
  EXPECT_GT(block.stress[4], block.stress[0]);
}

// ---- any model

TEST(AnyModel, GivenDerivativesGiveTheStressOfTheModelInEveryState) {
  const Model& model = kModels[1];
  Block block(model, 30, 31);
  const int n = block.n;
  std::fill(block.V.begin() + 4 * n, block.V.end(), 0.0); // all states hold it
  block.run();
  Values I1(n), I2(n), rJ(n), U1(n), U2(n), p(n), U11(n), U12(n), U22(n), dp(n), zero(n);
  call(SPX_MAT_HYPERINVS33, n, I1, I2, rJ, block.V);
  for (int i = 0; i < n; ++i) {
    const auto exact = block.invariantsAt(i);
    EXPECT_NEAR(I1[i], static_cast<double>(exact.I1), 1e-14 * I1[i]);
    EXPECT_NEAR(I2[i], static_cast<double>(exact.I2), 1e-14 * I2[i]);
    const Derivatives d(model, block.at(i), I1[i], I2[i]);
    const auto volume = model.volumeAt(block.at(i), 1 / static_cast<long double>(rJ[i]));
    const std::pair<Values*, long double> given[] = {{&U1, d.U1},   {&U2, d.U2},    {&U11, d.U11},      {&U12, d.U12},
                                                     {&U22, d.U22}, {&p, volume.p}, {&dp, volume.slope}};
    for (const auto& [array, value] : given) (*array)[i] = static_cast<double>(value);
  }
  Values flag(n), solid(6 * n), gpe(4 * n), plane(3 * n), axial(n), bound(n), bulk(n);
  call(SPX_MAT_HYPER3DEXP, n, U1, U2, p, block.V, solid, flag);
  call(SPX_MAT_HYPERGPEEXP, n, U1, U2, p, block.V, gpe, flag);
  call(SPX_MAT_HYPERMODULI3DEXP, n, U1, U2, p, U11, U12, U22, dp, block.V, flag, bound, bulk);
  EXPECT_TRUE(std::equal(gpe.begin(), gpe.end(), solid.begin()));
  for (int i = 0; i < n; ++i) {
    EXPECT_NEAR(bound[i], block.bound[i], 1e-8 * (1 + std::abs(block.bound[i])));
    EXPECT_NEAR(bulk[i], block.bulk[i], 1e-8 * (1 + std::abs(block.bulk[i])));
    for (int k = 0; k < 6; ++k) EXPECT_NEAR(solid[k * n + i], block.stress[k * n + i], 1e-9 * (1 + block.bound[i]));
  }
  // the plane states take what is left in the third direction off; a thermal strain scales the stretches
  const Values expansion(n, 0.03);
  Values cold = block.V, inPlane(3 * n), thickness(n), heated(6 * n), bar(6 * n), barStress(6 * n);
  for (double& v : cold) v *= 1 / 1.03;
  for (int i = 0; i < n; ++i) {
    inPlane[i] = bar[i] = block.V[i], inPlane[n + i] = block.V[n + i], inPlane[2 * n + i] = block.V[3 * n + i];
    thickness[i] = bar[n + i] = bar[2 * n + i] = block.V[2 * n + i];
  }
  call(SPX_MAT_HYPER3DEXP, n, U1, U2, p, cold, solid, flag);
  call(SPX_MAT_HYPER3DEXP, n, U1, U2, p, bar, barStress, flag);
  call(SPX_MAT_HYPER3DTHERMAL, n, U1, U2, p, expansion, block.V, heated, flag);
  call(SPX_MAT_HYPERGPETHERMAL, n, U1, U2, p, expansion, block.V, gpe, flag);
  call(SPX_MAT_HYPERPSTHERMAL, n, U1, U2, expansion, inPlane, thickness, plane, flag);
  call(SPX_MAT_HYPERUNITHERMAL, n, U1, U2, zero, inPlane, thickness, axial, flag);
  EXPECT_EQ(heated, solid);
  for (int i = 0; i < n; ++i) {
    const double size = 1e-13 * (1 + std::abs(solid[i]) + std::abs(solid[2 * n + i]));
    for (int k = 0; k < 4; ++k) EXPECT_NEAR(gpe[k * n + i], solid[k * n + i], size);
    EXPECT_NEAR(plane[i], solid[i] - solid[2 * n + i], size);
    EXPECT_NEAR(plane[n + i], solid[n + i] - solid[2 * n + i], size);
    EXPECT_NEAR(plane[2 * n + i], solid[3 * n + i], size);
    EXPECT_NEAR(axial[i], barStress[i] - barStress[n + i], 1e-12 * (1 + std::abs(barStress[i])));
  }
}

// Sheets and bars of a material whose curve of tests is U = G/2 (I1 - 3) + c (I1 - 3)^2, with a stiff volume.
TEST(TestCurve, ResultAndCorrectionFindTheFreeStretches) {
  const double G = 0.8, c = 0.05, K = 1000;
  const int n = 7;
  Values a(n), plane(3 * n), free(n), lateral(n, 1.2), I1(n), I2(n), rJ(n), U1(n), p(n), residual(n), slope(n),
      stress(3 * n), bar(n), V;
  const Values U11(n, 2 * c), dp(n, K);
  for (int i = 0; i < n; ++i) {
    plane[i] = 0.7 + 0.2 * i, plane[n + i] = 1.5 - 0.1 * i, plane[2 * n + i] = 0.05 * i;
    a[i] = 0.5 + 0.3 * i;
  }
  call(SPX_MAT_HYPERINITSTRETCHYYEXP, n, plane, free);
  for (int i = 0; i < n; ++i)
    EXPECT_DOUBLE_EQ(free[i] * (plane[i] * plane[n + i] - plane[2 * n + i] * plane[2 * n + i]), 1);
  // the whole stretch of a sheet or a bar, and the derivatives there
  const auto derivatives = [&](bool isBar) {
    V.assign(6 * n, 0);
    for (int i = 0; i < n; ++i) {
      V[i] = isBar ? a[i] : plane[i], V[n + i] = isBar ? lateral[i] : plane[n + i];
      V[2 * n + i] = isBar ? lateral[i] : free[i], V[3 * n + i] = isBar ? 0 : plane[2 * n + i];
    }
    call(isBar ? SPX_MAT_HYPERINVS30 : SPX_MAT_HYPERINVS31, n, I1, I2, rJ, V);
    for (int i = 0; i < n; ++i) U1[i] = G / 2 + 2 * c * (I1[i] - 3), p[i] = K * (1 / rJ[i] - 1);
  };
  const auto result = [&](bool isBar) {
    derivatives(isBar);
    if (isBar)
      call(SPX_MAT_MARLOWUNIRESULT, n, U1, p, U11, dp, a, lateral, residual, slope);
    else
      call(SPX_MAT_MARLOWPSRESULT, n, U1, p, U11, dp, plane, free, residual, slope);
  };
  for (const bool isBar : {false, true}) {
    Values& stretch = isBar ? lateral : free;
    result(isBar);
    const Values slopes = slope, start = stretch;
    // slopes are derivatives of the residuals
    const double h = 1e-6;
    for (double& x : stretch) x *= std::exp(h);
    result(isBar);
    const Values up = residual;
    for (int i = 0; i < n; ++i) stretch[i] = start[i] * std::exp(-h);
    result(isBar);
    for (int i = 0; i < n; ++i) EXPECT_NEAR(slopes[i], (up[i] - residual[i]) / (2 * h), 1e-6 * K);
    stretch = start;
    for (int step = 0; step < 12; ++step) {
      result(isBar);
      call(isBar ? SPX_MAT_HYPERUNICORRECTION : SPX_MAT_HYPERPSCORRECTION, n, residual, slope, stretch);
    }
  }
  // where nothing is left, the closed stress is that of the solid
  Values solid(6 * n), bound(n), bulk(n), bound1(n);
  derivatives(false);
  call(SPX_MAT_HYPERMARLOWGPEEXP, n, U1, p, V, solid);
  call(SPX_MAT_HYPERMARLOWPSEXP, n, U1, plane, free, stress);
  call(SPX_MAT_MARLOWMODULI2DEXP, n, U1, p, U11, dp, V, bound, bulk);
  for (int i = 0; i < n; ++i) {
    EXPECT_NEAR(solid[2 * n + i], 0, 1e-10);
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(stress[k * n + i], solid[(k == 2 ? 3 : k) * n + i], 1e-10);
    EXPECT_NEAR(bulk[i], 3 / rJ[i] * (p[i] + K), 1e-9);
  }
  derivatives(true);
  call(SPX_MAT_HYPERMARLOW3DEXP, n, U1, p, V, solid);
  call(SPX_MAT_HYPERMARLOWUNIEXP, n, U1, a, lateral, bar);
  call(SPX_MAT_MARLOWMODULI3DEXP, n, U1, p, U11, dp, V, bound, bulk);
  call(SPX_MAT_MARLOWMODULIUNIEXP, n, U1, p, U11, dp, V, bound1, bulk);
  for (int i = 0; i < n; ++i) {
    EXPECT_NEAR(solid[n + i], 0, 1e-10);
    EXPECT_NEAR(bar[i], solid[i], 1e-10);
  }
  EXPECT_EQ(bound1, bound);
}

TEST(AnyModel, InvariantsOfOtherStorages) {
  const int n = 3, list[] = {3, 1};
  const Values membrane{1, 1.3, 0, 1, 0.9, 0}, a{1, 0.8, 2}, l{1, 1.1, 0.6};
  Values I1(n), I2(n), rJ(n), uni(n), solid(n), some(n, 7), V = a;
  call(SPX_MAT_HYPERINVS20, n, I1, I2, rJ, membrane);
  const double c = 1 / (1.3 * 0.9);
  EXPECT_EQ(I1[0], 3);
  EXPECT_NEAR(I1[1], 1.3 * 1.3 + 0.9 * 0.9 + c * c, 1e-14);
  EXPECT_NEAR(I2[1], 1 / (1.3 * 1.3) + 1 / (0.9 * 0.9) + 1 / (c * c), 1e-14);
  EXPECT_EQ(I1[2], 1) << "no area: the third stretch is 1";
  EXPECT_EQ(rJ, (Values{1, 1, 1}));
  for (const Values& part : {l, l, Values(9)}) V.insert(V.end(), part.begin(), part.end());
  call(SPX_MAT_HYPERBINVRNT3D, n, V, solid);
  EXPECT_NEAR(solid[2], 2 * 4 * 0.36 + 0.36 * 0.36, 1e-15);
  call(SPX_MAT_HYPERBINVRNTUNI, n, a, l, uni);
  EXPECT_EQ(uni, solid);
  call(SPX_MAT_HYPERBINVRNTGPE, n, V, uni);
  EXPECT_EQ(uni, solid);
  call(SPX_MAT_HYPERBINVRNT30INDX, n, 2, list, V, some);
  EXPECT_EQ(some, (Values{solid[0], 7, solid[2]}));
}

// ---- limits

TEST(ArrudaBoyce, LongChainsAreNeoHookean) {
  const double mu = 1.7, V[] = {1.4, 0.9, 1.1, 0.1, 0.05, -0.1};
  double energy = 0, rJ = 0, I1 = 0, I2 = 0;
  call(SPX_MAT_HYPERABS33, 1, mu, 1e6, energy, rJ, V);
  call(SPX_MAT_HYPERINVS33, 1, I1, I2, rJ, V);
  EXPECT_NEAR(energy, 0.5 * mu * (I1 - 3), 1e-11);
}

// ---- published fits

// Nominal stress of an incompressible bar, sheet and strip: the difference to the free direction over the stretch.
double nominal(const Call& solid, const Values& constants, Mode mode, double stretch) {
  Values c = constants, V(6), stress(6), flag(1), bound(1), bulk(1);
  const Stretches s = stretchesOf(mode, stretch);
  V = {s[0], s[1], s[2], 0, 0, 0};
  Pointers p;
  for (double& x : c) p.push_back(&x);
  for (auto* x : {&V, &stress, &flag, &bound, &bulk}) p.push_back(x->data());
  solid(1, p);
  return (stress[0] - stress[2]) / stretch;
}

struct Published {
  const char* name;
  Call solid;
  Values constants;
  double fit[3];       // coefficient of determination for bar, sheet and strip
  double values[6][3]; // nominal stress at 1.1 1.5 2 3 4 5, MPa
};

TEST(TreloarsRubber, PublishedFitsComeOut) {
  // clang-format off
  const Published list[] = {
      // E. M. Arruda, M. C. Boyce, J. Mech. Phys. Solids 41 (1993) 389: nkT = 0.27 MPa, N = 26.5; five terms of the series
      {"Arruda and Boyce", asCall(SPX_MAT_HYPERAB3DEXP), {0.27, std::sqrt(26.5), 1e-3}, {0.8895, 0.8607, 0.9793},
       {{.075611, .132497, .096383}, {.293051, .383320, .334479}, {.491461, .567361, .527649},
        {.844358, .949187, .869464}, {1.228224, 1.498516, 1.250006}, {1.707571, 2.490134, 1.731984}}},
      // fitted to the three sets with equal weight
      {"Van der Waals", asCall(SPX_MAT_HYPERVDW3DEXP), {0.417, 10.66, 0.284, 0.007, 1e-3}, {0.9966, 0.9886, 0.9984},
       {{.112006, .193468, .142515}, {.406194, .506209, .461134}, {.633733, .687054, .676400},
        {.967617, 1.065084, .993528}, {1.304700, 1.838811, 1.330817}, {1.781813, 0, 1.822446}}}};
  // clang-format on
  const double at[] = {1.1, 1.5, 2, 3, 4, 5};
  for (const Published& p : list)
    for (const Mode mode : {Mode::Bar, Mode::Sheet, Mode::Strip}) {
      SCOPED_TRACE(p.name);
      const int m = static_cast<int>(mode);
      for (int k = 0; k < 6; ++k)
        if (p.values[k][m] > 0) {
          EXPECT_NEAR(nominal(p.solid, p.constants, mode, at[k]), p.values[k][m], 2e-6);
        }
      EXPECT_NEAR(determination(mode, [&](double s) { return nominal(p.solid, p.constants, mode, s); }), p.fit[m],
                  6e-5);
    }
  // Mooney-Rivlin constants fitted to one set each; the first two have a negative one
  const Call poly = asCall(SPX_MAT_HYPERPOLY3DEXP);
  const auto fit = [&](double C10, double C01, Mode mode) {
    return determination(mode, [&](double s) { return nominal(poly, {C10, C01, 0, 0, 0, 1e3, 0}, mode, s); });
  };
  EXPECT_NEAR(fit(0.2588, -0.0449, Mode::Bar), 0.8045, 1e-3);
  EXPECT_NEAR(fit(0.2348, -0.065, Mode::Strip), 0.9926, 1e-3);
  EXPECT_NEAR(fit(0.1713, 0.0047, Mode::Sheet), 0.9945, 1e-3);
}

} // namespace
