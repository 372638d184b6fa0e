// The end of the analysis that a hyperelastic material asks for.
#include "spx.h"
#include "tests/support/call.h"
#include "tests/support/recording_host.h"

namespace {

using namespace sharedanalysis::test;

// Bars of chains with lambdaM = 3, stretched to eta = sqrt((I1 - 3)/6).
struct Bars {
  int n;
  std::vector<double> mu, lambdaM, a, beta, D, V, flag, energy, rJ, stress, bound, bulk;

  explicit Bars(const std::vector<double>& etas)
      : n(static_cast<int>(etas.size())), mu(n, 1), lambdaM(n, 3), a(n), beta(n), D(n, 0.1), V(6 * n), flag(n),
        energy(n), rJ(n), stress(6 * n), bound(n), bulk(n) {
    for (int i = 0; i < n; ++i) {
      const double I1 = 3 + 6 * etas[i] * etas[i];
      double s = 2.5; // s^2 + 2/s = I1
      for (int k = 0; k < 60; ++k) s -= (s * s + 2 / s - I1) / (2 * s - 2 / (s * s));
      V[i] = s, V[n + i] = V[2 * n + i] = 1 / std::sqrt(s);
    }
  }
  void run(int kernel) {
    if (kernel == 0) call(SPX_MAT_HYPERVDWS33, n, mu, lambdaM, a, beta, energy, rJ, V);
    if (kernel == 1) call(SPX_MAT_HYPERVDW3DEXP, n, mu, lambdaM, a, beta, D, V, stress, flag, bound, bulk);
    if (kernel == 2) call(SPX_MAT_HYPERVDWGPEEXP, n, mu, lambdaM, a, beta, D, V, stress, flag, bound, bulk);
    if (kernel == 3) call(SPX_MAT_HYPERVDWMODULIEXP, n, mu, lambdaM, a, beta, D, V, flag, bound, bulk);
  }
};

TEST(VanDerWaals, EndsTheAnalysisBeyondLockingAlone) {
  resetRecordingHost();
  for (int kernel = 0; kernel < 4; ++kernel) {
    SCOPED_TRACE(kernel);
    Bars sound({0.3, 0.999, 0.99998, 0.7}), locked({0.3, 0.999, 1.5, 0.7});
    sound.run(kernel);
    expectSilence();
    locked.run(kernel);
    if (kernel == 0) { // energies keep the largest eta without a word
      expectSilence();
      EXPECT_NEAR(locked.energy[1], -6 * (std::log(0.001) + 0.999), 1e-9);
      EXPECT_NEAR(locked.energy[2], -6 * (std::log(0.00001) + 0.99999), 1e-9);
    } else {
      expectEnd("The locking stretch is reached, the resulting ETA is over 0.99999, which is too close to one.");
      EXPECT_TRUE(std::isfinite(locked.bound[2]) && locked.bound[2] > sound.bound[2]) << "the block is complete";
    }
    for (auto values : {&Bars::energy, &Bars::rJ, &Bars::stress, &Bars::bound, &Bars::bulk, &Bars::flag})
      for (std::size_t k = 0; k < (sound.*values).size(); ++k)
        if (k % 4 != 2) {
          EXPECT_EQ((locked.*values)[k], (sound.*values)[k]) << k;
        }
  }
}

} // namespace
