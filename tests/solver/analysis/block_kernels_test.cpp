// The solver's own gradient of bricks against the library's operator, whose place it takes.
#include "solver/analysis/block_kernels.h"
#include "spx.h"
#include "tests/support/bricks.h"
#include "tests/support/test.h"

namespace {

using namespace sharedanalysis;
using namespace sharedanalysis::test;
using Reals = std::vector<double>;

TEST(BlockKernels, GradientHasTheBitsOfTheOperatorOrLeavesItToIt) {
  constexpr int32_t kMost = solver::kPieceLength;
  Random random(3);
  int left = 0, all = 0;
  for (int round = 0; round < 600; ++round) {
    const int32_t n = random.integer(1, kMost), ld = kMost;
    std::vector<Brick> bricks;
    Reals mask(ld, 0.0);
    for (int32_t e = 0; e < n; ++e) bricks.push_back(distorted(random, 0.2));
    Reals x = coordinates(bricks, ld);
    for (int row = 0; row < 24; ++row)
      for (int32_t e = 0; e < n; ++e) x[row * ld + e] = 10 * (row / 8) + 0.1 * x[row * ld + e];
    // every second piece has one brick, at any place, of which the operator alone knows what to do
    const bool special = round % 2 != 0;
    const int32_t at = random.integer(0, n - 1);
    static constexpr double kFactors[] = {1, -1, 1e-40, 1e60, 0, std::numeric_limits<double>::quiet_NaN()};
    const std::size_t fault = static_cast<std::size_t>(round / 2 % 6);
    if (special) mask[at] = fault == 0 ? 1 : 0;
    for (int row = 0; row < 24; ++row) x[row * ld + at] *= special ? kFactors[fault] : 1;
    Reals B(24 * ld), h(12 * ld), modes(12 * ld), vol(ld), stiff(ld);
    const bool own = solver::brickGradient(n, x.data(), mask.data(), B.data(), h.data(), vol.data(), stiff.data());
    EXPECT_EQ(own, !special) << round;
    left += own ? 0 : 1;
    solver::hourglassModes(n, x.data(), modes.data());
    Reals B2(24 * ld), gamma(32 * ld), diag(ld), stiff2(ld), vol2(ld), rvol(ld);
    SPX_OPE_C3D8ROPER2(&n, &ld, x.data(), B2.data(), diag.data(), stiff2.data(), vol2.data(), rvol.data(), gamma.data(),
                       mask.data());
    const auto same = [&](const Reals& a, const Reals& b, int rows) {
      for (int k = 0; k < rows * ld; ++k)
        if (const int32_t e = k % ld; e < n && !(special && e == at)) {
          EXPECT_EQ(std::bit_cast<uint64_t>(a[k]), std::bit_cast<uint64_t>(b[k])) << round << ' ' << k;
        }
    };
    same(B, B2, 24), same(vol, vol2, 1), same(stiff, stiff2, 1), same(h, modes, 12);
    all += n;
  }
  EXPECT_EQ(left, 300);
  EXPECT_GT(all, 2000);
}

} // namespace
