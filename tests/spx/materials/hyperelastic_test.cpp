// Models of the invariants against their energies, typed here once more in 80 bits and differentiated numerically, against
// each other, and against published fits to Treloar's rubber.
#include "spx.h"
#include "tests/support/long_matrix.h"
#include "tests/support/rubber_1944.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>

namespace {

using namespace sharedanalysis::test;
using Arrays = std::vector<std::vector<double>>;
using Pointers = std::vector<double*>;

// A kernel by its address: every argument is a pointer to reals, behind the number of points.
template <class... Arguments, std::size_t... k>
void callOne(void (*kernel)(const int32_t*, Arguments...), const int32_t* n, const Pointers& a,
             std::index_sequence<k...>) {
  kernel(n, a[k]...);
}
template <class... Arguments>
std::function<void(int32_t, const Pointers&)> asCall(void (*kernel)(const int32_t*, Arguments...)) {
  return [kernel](int32_t n, const Pointers& a) {
    ASSERT_EQ(a.size(), sizeof...(Arguments));
    callOne(kernel, &n, a, std::index_sequence_for<Arguments...>());
  };
}
using Call = std::function<void(int32_t, const Pointers&)>;

struct Model {
  const char* name;
  int constants, volumeConstants;
  std::function<double(int constant, Random&)> draw;
  std::function<long double(const std::vector<double>& c, long double I1, long double I2)> energy;
  std::function<long double(const std::vector<double>& c, long double J)> volume; // c: all constants
  Call s33, s31, s30, solid, gpe, moduli;
};

long double power(long double x, int n) { return n == 0 ? 1 : x * power(x, n - 1); }

long double polynomial(const std::vector<double>& c, int order, long double I1, long double I2) {
  long double sum = 0;
  std::size_t k = 0;
  for (int t = 1; t <= order; ++t)
    for (int i = t; i >= 0; --i) sum += c[k++] * power(I1 - 3, i) * power(I2 - 3, t - i);
  return sum;
}
long double volumePowers(const std::vector<double>& c, std::size_t first, long double J) {
  long double sum = 0;
  for (std::size_t i = first; i < c.size(); ++i) sum += c[i] * power(J - 1, 2 * static_cast<int>(i - first + 1));
  return sum;
}
long double chains(double D, long double J) { return ((J * J - 1) / 2 - std::log(J)) / D; }

#define CALLS(code)                                                                                                    \
  asCall(SPX_MAT_HYPER##code##S33), asCall(SPX_MAT_HYPER##code##S31), asCall(SPX_MAT_HYPER##code##S30),                \
      asCall(SPX_MAT_HYPER##code##3DEXP), asCall(SPX_MAT_HYPER##code##GPEEXP), asCall(SPX_MAT_HYPER##code##MODULIEXP)

const std::vector<Model>& models() {
  static const std::vector<Model> list = {
      {"polynomial of order 2", 5, 2,
       [](int k, Random& r) { return k == 0  ? r.uniform(0.5, 2)
                                     : k > 4 ? r.uniform(1, 20)
                                             : r.uniform(-0.1, 0.3); },
       [](const std::vector<double>& c, long double I1, long double I2) { return polynomial(c, 2, I1, I2); },
       [](const std::vector<double>& c, long double J) { return volumePowers(c, 5, J); }, CALLS(POLY)},
      {"polynomial of order 6", 27, 6,
       [](int k, Random& r) { return k == 0   ? r.uniform(0.5, 2)
                                     : k > 26 ? r.uniform(1, 20)
                                              : r.uniform(-0.1, 0.3); },
       [](const std::vector<double>& c, long double I1, long double I2) { return polynomial(c, 6, I1, I2); },
       [](const std::vector<double>& c, long double J) { return volumePowers(c, 27, J); }, CALLS(POLY6)},
      {"Arruda and Boyce", 2, 1,
       [](int k, Random& r) { return k == 0   ? r.uniform(0.5, 2)
                                     : k == 1 ? r.uniform(2, 5)
                                              : r.uniform(0.1, 1); },
       [](const std::vector<double>& c, long double I1, long double) {
         const long double coefficient[] = {1.0L / 2, 1.0L / 20, 11.0L / 1050, 19.0L / 7000, 519.0L / 673750};
         long double sum = 0;
         for (int i = 1; i <= 5; ++i)
           sum +=
               coefficient[i - 1] / power(c[1] * static_cast<long double>(c[1]), i - 1) * (power(I1, i) - power(3, i));
         return c[0] * sum;
       },
       [](const std::vector<double>& c, long double J) { return chains(c[2], J); }, CALLS(AB)},
      {"Van der Waals", 4, 1,
       [](int k, Random& r) {
         return k == 0 ? r.uniform(0.5, 2) : k == 1 ? r.uniform(8, 12) : k == 4 ? r.uniform(0.1, 1) : r.uniform(0, 0.3);
       },
       [](const std::vector<double>& c, long double I1, long double I2) {
         const long double s = (1 - c[3]) * I1 + c[3] * I2 - 3, range = c[1] * static_cast<long double>(c[1]) - 3;
         const long double eta = std::sqrt(s / range);
         return c[0] * (-range * (std::log1p(-eta) + eta) - 2 * c[2] / 3.0L * std::pow(s / 2, 1.5L));
       },
       [](const std::vector<double>& c, long double J) { return chains(c[4], J); }, CALLS(VDW)}};
  return list;
}

// Random constants and stretches of either sense for a model, and what its kernels make of them.
struct Block {
  const Model& model;
  int n;
  Arrays constants;
  std::vector<double> V, energy, rJ, stress, flag, bound, bulk;

  Block(const Model& m, int points, uint64_t seed, double spread = 0.35)
      : model(m), n(points), constants(m.constants + m.volumeConstants, std::vector<double>(points)), V(6 * points),
        energy(points), rJ(points), stress(6 * points), flag(points), bound(points), bulk(points) {
    Random random(seed);
    for (int i = 0; i < n; ++i) {
      for (std::size_t k = 0; k < constants.size(); ++k) constants[k][i] = m.draw(static_cast<int>(k), random);
      Matrix R;
      randomRotation(random, R);
      const double stretches[3] = {random.uniform(1 - spread, 1 + spread), random.uniform(1 - spread, 1 + spread),
                                   random.uniform(1 - spread, 1 + spread)};
      setPrincipal(V.data(), n, i, stretches, R);
    }
  }
  std::vector<double> at(int i) const {
    std::vector<double> c;
    for (const auto& array : constants) c.push_back(array[i]);
    return c;
  }
  Pointers pointers(int count, std::initializer_list<std::vector<double>*> rest) {
    Pointers p;
    for (int k = 0; k < count; ++k) p.push_back(constants[k].data());
    for (auto* array : rest) p.push_back(array->data());
    return p;
  }
  void run() {
    model.s33(n, pointers(model.constants, {&energy, &rJ, &V}));
    runStress(model.solid, &stress);
  }
  void runStress(const Call& call, std::vector<double>* out) {
    Pointers p = pointers(model.constants + model.volumeConstants, {&V});
    if (out != nullptr) p.push_back(out->data());
    for (auto* array : {&flag, &bound, &bulk}) p.push_back(array->data());
    call(n, p);
  }
};

// First and second central differences in the invariants.
struct Derivatives {
  long double U1, U2, U11, U12, U22;
  Derivatives(const Model& m, const std::vector<double>& c, long double I1, long double I2) {
    const long double h = 1e-4L; // with errors of h^4
    const auto U = [&](int a, int b) { return m.energy(c, I1 + a * h, I2 + b * h); };
    U1 = (8 * (U(1, 0) - U(-1, 0)) - (U(2, 0) - U(-2, 0))) / (12 * h);
    U2 = (8 * (U(0, 1) - U(0, -1)) - (U(0, 2) - U(0, -2))) / (12 * h);
    U11 = (16 * (U(1, 0) + U(-1, 0)) - (U(2, 0) + U(-2, 0)) - 30 * U(0, 0)) / (12 * h * h);
    U22 = (16 * (U(0, 1) + U(0, -1)) - (U(0, 2) + U(0, -2)) - 30 * U(0, 0)) / (12 * h * h);
    const auto mixed = [&](int k) { return (U(k, k) - U(k, -k) - U(-k, k) + U(-k, -k)) / (4 * k * k * h * h); };
    U12 = (4 * mixed(1) - mixed(2)) / 3;
  }
};

TEST(Hyperelastic, EnergyStressAndModuliOfEveryModel) {
  for (const Model& model : models()) {
    SCOPED_TRACE(model.name);
    Block block(model, 50, 21);
    block.run();
    for (int i = 0; i < block.n; ++i) {
      const std::vector<double> c = block.at(i);
      const LongMatrix V = matrixOf(block.V, block.n, i);
      const long double J = determinant(V), rJ = 1 / J;
      const LongMatrix B = combination(std::pow(J, -2.0L / 3), product(V, V), 0, V), Q = product(B, B);
      const long double I1 = trace(B), I2 = (I1 * I1 - trace(Q)) / 2;
      if (I1 < 3.01L) continue; // no room for the differences
      EXPECT_NEAR(block.rJ[i], static_cast<double>(rJ), 1e-14 * static_cast<double>(rJ));
      const double U = static_cast<double>(model.energy(c, I1, I2));
      EXPECT_NEAR(block.energy[i], U, 2e-13 * (1 + std::abs(U)));

      Derivatives d(model, c, I1, I2);
      if (model.name ==
          std::string("Van der Waals")) { // 1/sqrt(s) of the second derivatives at its value where chains lock
        const long double s = (1 - c[3]) * I1 + c[3] * I2 - 3, range = c[1] * static_cast<long double>(c[1]) - 3;
        for (long double* second : {&d.U11, &d.U12, &d.U22}) *second *= std::sqrt(s / range) / 0.99999L;
      }
      const long double h = 1e-4L;
      const auto W = [&](int k) { return model.volume(c, J + k * h); };
      const long double p = (8 * (W(1) - W(-1)) - (W(2) - W(-2))) / (12 * h);
      const long double dp = (16 * (W(1) + W(-1)) - (W(2) + W(-2)) - 30 * W(0)) / (12 * h * h);
      // s = (2/J) [(U1 + I1 U2) B - U2 B B]; the stress is its deviator and p
      const LongMatrix s = combination(2 * rJ * (d.U1 + I1 * d.U2), B, -2 * rJ * d.U2, Q);
      double size = std::abs(static_cast<double>(p));
      for (const auto& row : s)
        for (const long double x : row) size = std::max(size, static_cast<double>(std::abs(x)));
      for (int a = 0; a < 3; ++a)
        for (int b = a; b < 3; ++b)
          EXPECT_NEAR(block.stress[kS33[a][b] * block.n + i],
                      static_cast<double>(s[a][b] + (a == b ? p - trace(s) / 3 : 0)), 1e-10 * (1 + size));
      EXPECT_NEAR(block.bulk[i], static_cast<double>(3 * J * (p + dp)), 1e-8 * (1 + std::abs(block.bulk[i])));
      // ds_ij/dD_ij at constant J while B moves by D B + B D, by the derivatives of the energy
      long double largest = -1e300L;
      for (int a = 0; a < 3; ++a)
        for (int b = a; b < 3; ++b) {
          LongMatrix D{};
          D[a][b] = D[b][a] = 1;
          const LongMatrix dB = combination(1, product(D, B), 1, product(B, D));
          const LongMatrix dQ = combination(1, product(dB, B), 1, product(B, dB));
          const long double dI1 = trace(dB), dI2 = I1 * dI1 - trace(dQ) / 2;
          const long double dU1 = d.U11 * dI1 + d.U12 * dI2, dU2 = d.U12 * dI1 + d.U22 * dI2;
          const long double ds = 2 * rJ *
                                 ((dU1 + dI1 * d.U2 + I1 * dU2) * B[a][b] + (d.U1 + I1 * d.U2) * dB[a][b] -
                                  dU2 * Q[a][b] - d.U2 * dQ[a][b]);
          largest = std::max(largest, ds);
        }
      EXPECT_NEAR(block.bound[i], static_cast<double>(largest), 1e-8 * (1 + std::abs(block.bound[i])));
    }
  }
}

TEST(Hyperelastic, StatesAndStoragesAgreeToTheBit) {
  for (const Model& model : models()) {
    SCOPED_TRACE(model.name);
    Block block(model, 140, 26);
    const auto bound3 = [&] {
      block.run();
      return block.bound;
    };
    const std::vector<double> expected = bound3();
    block.runStress(model.moduli, nullptr);
    EXPECT_EQ(block.bound, expected);
    for (int i = 0; i < block.n; ++i) block.V[4 * block.n + i] = block.V[5 * block.n + i] = 0;
    block.run();
    std::vector<double> energy(block.n), rJ(block.n), stress(4 * block.n), bulk = block.bulk;
    model.s31(block.n, block.pointers(model.constants, {&energy, &rJ, &block.V}));
    EXPECT_EQ(energy, block.energy);
    EXPECT_EQ(rJ, block.rJ);
    block.runStress(model.gpe, &stress);
    for (std::size_t k = 0; k < stress.size(); ++k) EXPECT_EQ(stress[k], block.stress[k]);
    EXPECT_EQ(bulk, block.bulk);
    for (int i = 0; i < block.n; ++i) block.V[3 * block.n + i] = 0;
    model.s33(block.n, block.pointers(model.constants, {&block.energy, &block.rJ, &block.V}));
    model.s30(block.n, block.pointers(model.constants, {&energy, &rJ, &block.V}));
    EXPECT_EQ(energy, block.energy);
    EXPECT_EQ(rJ, block.rJ);
  }
}

TEST(Hyperelastic, UndeformedStateAndSmallStrain) {
  for (const Model& model : models()) {
    SCOPED_TRACE(model.name);
    Block block(model, 20, 27, 0.0);
    for (int i = 0; i < block.n; ++i)
      for (int k = 0; k < 6; ++k) block.V[k * block.n + i] = k < 3 ? 1.0 : 0.0;
    block.run();
    for (int i = 0; i < block.n; ++i) {
      EXPECT_EQ(block.energy[i], 0);
      for (int k = 0; k < 6; ++k) EXPECT_EQ(block.stress[k * block.n + i], 0);
    }
    const double strain = 1e-7;
    const std::vector<double> K3 = block.bulk;
    for (int i = 0; i < block.n; ++i) block.V[i] = 1 + strain, block.V[3 * block.n + i] = strain;
    block.run();
    for (int i = 0; i < block.n; ++i) {
      const double G = block.stress[3 * block.n + i] / (2 * strain);
      const std::vector<double> c = block.at(i);
      if (model.constants == 5 || model.constants == 27) {
        EXPECT_NEAR(G, 2 * (c[0] + c[1]), 1e-5);
      }
      if (model.name == std::string("Van der Waals")) {
        EXPECT_NEAR(G, c[0], 1e-5);
      }
      EXPECT_NEAR(block.stress[i] / strain, K3[i] / 3 + 4 * G / 3, 1e-4);
      EXPECT_NEAR(block.stress[block.n + i] / strain, K3[i] / 3 - 2 * G / 3, 1e-4);
    }
  }
}

TEST(Hyperelastic, GuardsOfTheVolume) {
  Block block(models()[0], 4, 28);
  const double stretches[4][3] = {{0, 1, 1}, {-0.5, 1, 1}, {1e-10, 1, 1}, {1.1, 1, 1}};
  for (int i = 0; i < 4; ++i)
    for (int k = 0; k < 6; ++k) block.V[k * 4 + i] = k < 3 ? stretches[i][k] : 0;
  block.run();
  EXPECT_EQ(block.rJ[0], 1);
  EXPECT_EQ(block.rJ[1], 2) << "-0.5 + 1";
  EXPECT_EQ(block.rJ[2], 1 / 1e-10);
  EXPECT_EQ(block.flag, (std::vector<double>{1, 1, 1, 0}));
  EXPECT_NEAR(block.bulk[0], 6 * block.constants[5][0], 1e-12) << "J counts as 1";
  // a sound stretch does not clear the flag, and counts as isochoric
  for (int i = 0; i < 4; ++i) block.V[i] = 1.3;
  block.run();
  EXPECT_EQ(block.flag, (std::vector<double>{1, 1, 1, 0}));
  EXPECT_NEAR(block.bulk[0], 6 * block.constants[5][0], 1e-12);
  EXPECT_GT(block.stress[3], block.stress[0]);
}

// ---- any model

TEST(AnyModel, GivenDerivativesGiveTheStressOfTheModelInEveryState) {
  const Model& model = models()[1];
  Block block(model, 30, 31);
  for (int i = 0; i < block.n; ++i) block.V[4 * block.n + i] = block.V[5 * block.n + i] = 0; // all states hold it
  block.run();
  const int n = block.n;
  std::vector<double> I1(n), I2(n), rJ(n), U1(n), U2(n), p(n), U11(n), U12(n), U22(n), dp(n), zero(n);
  SPX_MAT_HYPERINVS33(&n, I1.data(), I2.data(), rJ.data(), block.V.data());
  for (int i = 0; i < n; ++i) {
    const std::vector<double> c = block.at(i);
    const LongMatrix V = matrixOf(block.V, n, i),
                     B = combination(std::pow(determinant(V), -2.0L / 3), product(V, V), 0, V);
    EXPECT_NEAR(I1[i], static_cast<double>(trace(B)), 1e-14 * I1[i]);
    EXPECT_NEAR(I2[i], static_cast<double>((trace(B) * trace(B) - trace(product(B, B))) / 2), 1e-14 * I2[i]);
    const Derivatives d(model, c, I1[i], I2[i]);
    U1[i] = static_cast<double>(d.U1), U2[i] = static_cast<double>(d.U2), U11[i] = static_cast<double>(d.U11);
    U12[i] = static_cast<double>(d.U12), U22[i] = static_cast<double>(d.U22);
    const long double J = 1 / static_cast<long double>(rJ[i]), h = 1e-4L;
    const auto W = [&](int k) { return model.volume(c, J + k * h); };
    p[i] = static_cast<double>((8 * (W(1) - W(-1)) - (W(2) - W(-2))) / (12 * h));
    dp[i] = static_cast<double>((16 * (W(1) + W(-1)) - (W(2) + W(-2)) - 30 * W(0)) / (12 * h * h));
  }
  std::vector<double> flag(n), solid(6 * n), gpe(4 * n), plane(3 * n), axial(n), bound(n), bulk(n);
  SPX_MAT_HYPER3DEXP(&n, U1.data(), U2.data(), p.data(), block.V.data(), solid.data(), flag.data());
  SPX_MAT_HYPERGPEEXP(&n, U1.data(), U2.data(), p.data(), block.V.data(), gpe.data(), flag.data());
  SPX_MAT_HYPERMODULI3DEXP(&n, U1.data(), U2.data(), p.data(), U11.data(), U12.data(), U22.data(), dp.data(),
                           block.V.data(), flag.data(), bound.data(), bulk.data());
  for (int i = 0; i < n; ++i) {
    EXPECT_NEAR(bound[i], block.bound[i], 1e-8 * (1 + std::abs(block.bound[i])));
    EXPECT_NEAR(bulk[i], block.bulk[i], 1e-8 * (1 + std::abs(block.bulk[i])));
    for (int k = 0; k < 6; ++k) EXPECT_NEAR(solid[k * n + i], block.stress[k * n + i], 1e-9 * (1 + block.bound[i]));
    for (int k = 0; k < 4; ++k) EXPECT_EQ(gpe[k * n + i], solid[k * n + i]);
  }
  // the plane states take what is left in the third direction off; a thermal strain scales the stretches
  const std::vector<double> expansion(n, 0.03);
  std::vector<double> cold = block.V, inPlane(3 * n), thickness(n), heated(6 * n);
  for (double& v : cold) v *= 1 / 1.03;
  SPX_MAT_HYPER3DEXP(&n, U1.data(), U2.data(), p.data(), cold.data(), solid.data(), flag.data());
  SPX_MAT_HYPER3DTHERMAL(&n, U1.data(), U2.data(), p.data(), expansion.data(), block.V.data(), heated.data(),
                         flag.data());
  EXPECT_EQ(heated, solid);
  SPX_MAT_HYPERGPETHERMAL(&n, U1.data(), U2.data(), p.data(), expansion.data(), block.V.data(), gpe.data(),
                          flag.data());
  for (int i = 0; i < n; ++i) {
    const int from[] = {0, 1, 3};
    for (int k = 0; k < 3; ++k) inPlane[k * n + i] = block.V[from[k] * n + i];
    thickness[i] = block.V[2 * n + i];
  }
  SPX_MAT_HYPERPSTHERMAL(&n, U1.data(), U2.data(), expansion.data(), inPlane.data(), thickness.data(), plane.data(),
                         flag.data());
  SPX_MAT_HYPERUNITHERMAL(&n, U1.data(), U2.data(), zero.data(), inPlane.data(), thickness.data(), axial.data(),
                          flag.data());
  std::vector<double> bar(6 * n), barStress(6 * n);
  for (int i = 0; i < n; ++i) bar[i] = inPlane[i], bar[n + i] = bar[2 * n + i] = thickness[i];
  SPX_MAT_HYPER3DEXP(&n, U1.data(), U2.data(), p.data(), bar.data(), barStress.data(), flag.data());
  for (int i = 0; i < n; ++i) {
    const double size = 1e-13 * (1 + std::abs(solid[i]) + std::abs(solid[2 * n + i]));
    for (int k = 0; k < 4; ++k) EXPECT_NEAR(gpe[k * n + i], solid[k * n + i], size);
    EXPECT_NEAR(plane[i], solid[i] - solid[2 * n + i], size);
    EXPECT_NEAR(plane[n + i], solid[n + i] - solid[2 * n + i], size);
    EXPECT_NEAR(plane[2 * n + i], solid[3 * n + i], size);
    EXPECT_NEAR(axial[i], barStress[i] - barStress[n + i], 1e-12 * (1 + std::abs(barStress[i])));
  }
}

// A curve of tests: U = G/2 (I1 - 3) + c (I1 - 3)^2, and a stiff volume.
struct Curve {
  double G = 0.8, c = 0.05, K = 1000;
  double U1(double I1) const { return G / 2 + 2 * c * (I1 - 3); }
  double p(double J) const { return K * (J - 1); }
};

TEST(TestCurve, ResultAndCorrectionFindTheFreeStretches) {
  const Curve curve;
  const int n = 7;
  std::vector<double> a(n), plane(3 * n), free(n), lateral(n), I1(n), I2(n), rJ(n), U1(n), U11(n, 2 * curve.c), p(n),
      dp(n, curve.K), residual(n), slope(n), stress(3 * n), bar(n);
  for (int i = 0; i < n; ++i) {
    plane[i] = 0.7 + 0.2 * i, plane[n + i] = 1.5 - 0.1 * i, plane[2 * n + i] = 0.05 * i;
    a[i] = 0.5 + 0.3 * i;
  }
  SPX_MAT_HYPERINITSTRETCHYYEXP(&n, plane.data(), free.data());
  for (int i = 0; i < n; ++i) {
    EXPECT_DOUBLE_EQ(free[i] * (plane[i] * plane[n + i] - plane[2 * n + i] * plane[2 * n + i]), 1);
    lateral[i] = 1.2;
  }
  const auto derivatives = [&](const std::vector<double>& V, int components) {
    (components == 4 ? SPX_MAT_HYPERINVS31 : SPX_MAT_HYPERINVS30)(&n, I1.data(), I2.data(), rJ.data(), V.data());
    for (int i = 0; i < n; ++i) U1[i] = curve.U1(I1[i]), p[i] = curve.p(1 / rJ[i]);
  };
  const auto planeV = [&] {
    std::vector<double> V(4 * n);
    for (int i = 0; i < n; ++i)
      V[i] = plane[i], V[n + i] = plane[n + i], V[2 * n + i] = free[i], V[3 * n + i] = plane[2 * n + i];
    return V;
  };
  const auto barV = [&] {
    std::vector<double> V(3 * n);
    for (int i = 0; i < n; ++i) V[i] = a[i], V[n + i] = V[2 * n + i] = lateral[i];
    return V;
  };
  const auto planeResult = [&] {
    derivatives(planeV(), 4);
    SPX_MAT_MARLOWPSRESULT(&n, U1.data(), p.data(), U11.data(), dp.data(), plane.data(), free.data(), residual.data(),
                           slope.data());
  };
  const auto barResult = [&] {
    derivatives(barV(), 3);
    SPX_MAT_MARLOWUNIRESULT(&n, U1.data(), p.data(), U11.data(), dp.data(), a.data(), lateral.data(), residual.data(),
                            slope.data());
  };
  // slopes are derivatives of the residuals
  const auto checkSlope = [&](const std::function<void()>& result, std::vector<double>& stretch) {
    result();
    const std::vector<double> s = slope, start = stretch;
    const double h = 1e-6;
    for (double& x : stretch) x *= std::exp(h);
    result();
    const std::vector<double> up = residual;
    for (int i = 0; i < n; ++i) stretch[i] = start[i] * std::exp(-h);
    result();
    for (int i = 0; i < n; ++i) EXPECT_NEAR(s[i], (up[i] - residual[i]) / (2 * h), 1e-6 * curve.K);
    stretch = start;
  };
  checkSlope(planeResult, free);
  checkSlope(barResult, lateral);
  for (int step = 0; step < 12; ++step) {
    planeResult();
    SPX_MAT_HYPERPSCORRECTION(&n, residual.data(), slope.data(), free.data());
    barResult();
    SPX_MAT_HYPERUNICORRECTION(&n, residual.data(), slope.data(), lateral.data());
  }
  // where nothing is left, the closed stress is that of the solid
  std::vector<double> V = planeV(), solid(4 * n), bound(n), bulk(n), bound1(n);
  derivatives(V, 4);
  SPX_MAT_HYPERMARLOWGPEEXP(&n, U1.data(), p.data(), V.data(), solid.data());
  SPX_MAT_HYPERMARLOWPSEXP(&n, U1.data(), plane.data(), free.data(), stress.data());
  SPX_MAT_MARLOWMODULI2DEXP(&n, U1.data(), p.data(), U11.data(), dp.data(), V.data(), bound.data(), bulk.data());
  for (int i = 0; i < n; ++i) {
    EXPECT_NEAR(solid[2 * n + i], 0, 1e-10);
    EXPECT_NEAR(stress[i], solid[i], 1e-10);
    EXPECT_NEAR(stress[n + i], solid[n + i], 1e-10);
    EXPECT_NEAR(stress[2 * n + i], solid[3 * n + i], 1e-10);
    EXPECT_NEAR(bulk[i], 3 / rJ[i] * (p[i] + curve.K), 1e-9);
  }
  V = barV();
  V.resize(6 * n);
  derivatives(V, 3);
  std::vector<double> solid3(6 * n);
  SPX_MAT_HYPERMARLOW3DEXP(&n, U1.data(), p.data(), V.data(), solid3.data());
  SPX_MAT_HYPERMARLOWUNIEXP(&n, U1.data(), a.data(), lateral.data(), bar.data());
  SPX_MAT_MARLOWMODULI3DEXP(&n, U1.data(), p.data(), U11.data(), dp.data(), V.data(), bound.data(), bulk.data());
  SPX_MAT_MARLOWMODULIUNIEXP(&n, U1.data(), p.data(), U11.data(), dp.data(), V.data(), bound1.data(), bulk.data());
  for (int i = 0; i < n; ++i) {
    EXPECT_NEAR(solid3[n + i], 0, 1e-10);
    EXPECT_NEAR(bar[i], solid3[i], 1e-10);
    EXPECT_EQ(bound1[i], bound[i]);
  }
}

TEST(AnyModel, InvariantsOfOtherStorages) {
  const int n = 3, count = 2, list[] = {3, 1};
  const double a[] = {1, 0.8, 2}, l[] = {1, 1.1, 0.6};
  std::vector<double> membrane{1, 1.3, 0, 1, 0.9, 0}, I1(n), I2(n), rJ(n), principal(3 * n), uni(n), solid(n),
      some(n, 7);
  SPX_MAT_HYPERINVS20(&n, I1.data(), I2.data(), rJ.data(), membrane.data());
  EXPECT_EQ(I1[0], 3);
  const double c = 1 / (1.3 * 0.9);
  EXPECT_NEAR(I1[1], 1.3 * 1.3 + 0.9 * 0.9 + c * c, 1e-14);
  EXPECT_NEAR(I2[1], 1 / (1.3 * 1.3) + 1 / (0.9 * 0.9) + 1 / (c * c), 1e-14);
  EXPECT_EQ(I1[2], 1) << "no area: the third stretch is 1";
  EXPECT_EQ(rJ, (std::vector<double>{1, 1, 1}));
  SPX_MAT_HYPERBINVRNTUNI(&n, a, l, uni.data());
  std::vector<double> V(6 * n);
  for (int i = 0; i < n; ++i) principal[i] = a[i], principal[n + i] = principal[2 * n + i] = l[i];
  std::copy(principal.begin(), principal.end(), V.begin());
  SPX_MAT_HYPERBINVRNT3D(&n, V.data(), solid.data());
  EXPECT_EQ(uni, solid);
  SPX_MAT_HYPERBINVRNTGPE(&n, V.data(), uni.data());
  EXPECT_EQ(uni, solid);
  EXPECT_NEAR(solid[2], 2 * 4 * 0.36 + 0.36 * 0.36, 1e-15);
  SPX_MAT_HYPERBINVRNT30INDX(&n, &count, list, principal.data(), some.data());
  EXPECT_EQ(some, (std::vector<double>{solid[0], 7, solid[2]}));
}

// ---- limits

TEST(ArrudaBoyce, LongChainsAreNeoHookean) {
  const int n = 1;
  const double mu = 1.7, lambdaM = 1e6, V[] = {1.4, 0.9, 1.1, 0.1, 0.05, -0.1};
  double energy = 0, rJ = 0, I1 = 0, I2 = 0;
  SPX_MAT_HYPERABS33(&n, &mu, &lambdaM, &energy, &rJ, V);
  SPX_MAT_HYPERINVS33(&n, &I1, &I2, &rJ, V);
  EXPECT_NEAR(energy, 0.5 * mu * (I1 - 3), 1e-11);
}

// ---- published fits

// Nominal stress of an incompressible bar, sheet and strip: the difference to the free direction over the stretch.
double nominal(const Call& solid, const std::vector<double>& constants, Mode mode, double stretch) {
  std::vector<double> c = constants, V(6), stress(6), flag(1), bound(1), bulk(1);
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
  std::vector<double> constants;
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
