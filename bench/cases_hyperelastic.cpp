// Hyperelastic materials.
#include "bench_case.h"
#include "plain_kernels.h"
#include "spx.h"

namespace bench {

void addHyperelasticCases(std::vector<Case>& list) {
  const auto fillConstants = [](int count) {
    return [count](int n, const Arrays& a, Random& random) {
      for (int k = 0; k < count; ++k) uniform(n, a[k], random, 0.5, 1);
      fillStretch(n, a[count], random);
    };
  };
  const auto energy = [](auto call) {
    return [call](int32_t n, const Arrays& a) { call(&n, a[0], a[1], a[2], a[3], a[4], a[6], a[7], a[5]); };
  };
  list.push_back({"SPX_MAT_HYPERPOLYS33",
                  {1, 1, 1, 1, 1, 6, 1, 1},
                  fillConstants(5),
                  energy(SPX_MAT_HYPERPOLYS33),
                  energy(plain::hyperpolys33),
                  150,
                  3});
  const auto stress = [](auto call) {
    return [call](int32_t n, const Arrays& a) {
      call(&n, a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7], a[8], a[9], a[10], a[11]);
    };
  };
  list.push_back({"SPX_MAT_HYPERPOLY3DEXP",
                  {1, 1, 1, 1, 1, 1, 1, 6, 6, 1, 1, 1},
                  fillConstants(7),
                  stress(SPX_MAT_HYPERPOLY3DEXP),
                  stress(plain::hyperpoly3dexp),
                  350,
                  3});
}

} // namespace bench
