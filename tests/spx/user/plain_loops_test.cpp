// Kernels of user materials beside loops that were written from their equations, point after point, with the mathematics of the C
// library: bench/plain/user_models.h.
#include "bench/plain/user_rows.h"
#include "spx.h"
#include "tests/support/random.h"

#include <gtest/gtest.h>

namespace {

using sharedanalysis::test::Random;

TEST(UserMaterials, PlainLoopsComputeTheSame) {
  Random random(41);
  const int32_t n = 300, three = 3, zero = 0;
  const double dt = 1e-5, time = 1;
  for (const plain::UserRow& row : plain::userRows()) {
    const int comps = row.isSheet ? 4 : 6;
    const std::vector<double> temperature(n, 300.0), length(n, 1e-3), energy(n, 0.0);
    std::vector<double> density(n), strain(6 * n), F(9 * n), stress(6 * n), state(row.states * n), Uo(6 * n), U(6 * n);
    plain::fillUserRow(row, n, density.data(), strain.data(), F.data(), stress.data(), state.data(), Uo.data(),
                       U.data(), [&](double low, double high) { return random.uniform(low, high); });
    std::vector<double> out[2][4];
    for (auto& o : out) o[0].resize(comps * n), o[1].resize(row.states * n), o[2].resize(n), o[3].resize(n);
    std::string name = row.name;
    name.resize(80, ' ');
    const int32_t shears = comps - 3, states = row.states, props = static_cast<int32_t>(row.props.size());
    SPX_USR_BUILTINVUMAT(&zero, &n, &three, &shears, &states, &zero, &props, &zero, &time, &time, &dt, name.data(),
                         nullptr, length.data(), row.props.data(), density.data(), strain.data(), nullptr,
                         temperature.data(), Uo.data(), nullptr, nullptr, stress.data(), state.data(), energy.data(),
                         energy.data(), temperature.data(), U.data(), F.data(), nullptr, out[0][0].data(),
                         out[0][1].data(), out[0][2].data(), out[0][3].data(), 80);
    row.loop(n, {row.props.data(), density.data(), strain.data(), F.data(), stress.data(), state.data(), energy.data(),
                 energy.data(), out[1][0].data(), out[1][1].data(), out[1][2].data(), out[1][3].data(), dt, Uo.data(),
                 U.data(), length.data()});
    const char* what[] = {"stress", "state", "internal", "inelastic"};
    for (int k = 0; k < 2 + row.energies; ++k)
      for (std::size_t c = 0; c < out[0][k].size() / n; ++c) {
        double size = 0, worst = 0;
        for (int i = 0; i < n; ++i) {
          const double a = out[0][k][c * n + i], b = out[1][k][c * n + i];
          size = std::max(size, std::abs(b)), worst = std::max(worst, std::abs(a - b));
          EXPECT_TRUE(a == a && b == b) << row.name << i;
        }
        EXPECT_LE(worst, 1e-9 * size) << row.name << ' ' << what[k] << ' ' << c;
      }
  }
}

} // namespace
