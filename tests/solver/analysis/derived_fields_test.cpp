// Principal stresses and material orientations of a body of many blocks, against the tensors and the motion they come from.
#include "solver/analysis/derived_fields.h"
#include "tests/solver/models.h"
#include "tests/support/turns.h"

namespace {

using namespace sharedanalysis;
using namespace sharedanalysis::test;
using Reals = std::vector<double>;

TEST(DerivedFields, PrincipalStressesAndOrientationsOfSomeBricks) {
  const solver::Mesh mesh = box({5, 6, 10}, {1, 2, 3}); // 300 bricks
  Random random(1);
  // one deformation of the whole body: F = V R with V's axes off those of R
  const Quaternion turn = turnAbout({1, -2, 3}, 2.5);
  const Matrix R = turnedAxes(turn), A = turnedAxes(randomTurn(random)),
               F = A * Matrix{{{0.7, 0, 0}, {0, 1.1, 0}, {0, 0, 1.6}}} * transposed(A) * R;
  Reals displacement(mesh.coordinates.size());
  for (std::size_t n = 0; n < mesh.nodeNumbers.size(); ++n)
    for (std::size_t i = 0; i < 3; ++i) {
      displacement[3 * n + i] = 7 - mesh.coordinates[3 * n + i];
      for (std::size_t j = 0; j < 3; ++j) displacement[3 * n + i] += F[i][j] * mesh.coordinates[3 * n + j];
    }
  const std::size_t bricks = mesh.elements();
  Reals stress(6 * bricks), energy(bricks), mask(bricks);
  for (double& s : stress) s = random.uniform(-1e6, 1e6);
  // bricks of every block, one of them masked
  std::vector<int32_t> elements;
  for (int32_t e = 3; e < mesh.elements(); ++e)
    if (e < 60 || e > 255 || e % 7 == 0) elements.push_back(e);
  const std::size_t masked = 40;
  mask[elements[masked]] = 1;

  const solver::Fields fields{displacement, {}, {}, stress, energy, mask};
  const Reals values = solver::derivedFields(mesh, elements, fields);
  ASSERT_EQ(values.size(), solver::derivedFieldNames.size() * elements.size());
  for (std::size_t e = 0; e < elements.size(); ++e) {
    const auto value = [&](std::size_t field) { return values[field * elements.size() + e]; };
    const double* S = &stress[6 * elements[e]];
    const double p[] = {value(0), value(1), value(2)};
    EXPECT_TRUE(p[0] >= p[1] && p[1] >= p[2]);
    EXPECT_NEAR(p[0] + p[1] + p[2], S[0] + S[1] + S[2], 1e-8);
    const Matrix axes = turnedAxes({value(3), value(4), value(5), value(6)});
    EXPECT_LT(distance(matrixBy([&](int a, int k) { return value(7 + 3 * k + a); }), axes), 2e-15);
    EXPECT_LT(distance(tensorOf(S) * axes, matrixBy([&](int a, int k) { return p[k] * axes[a][k]; })), 1e-8)
        << "brick " << elements[e];
    const Matrix orientation = turnedAxes({value(16), value(17), value(18), value(19)});
    EXPECT_LT(distance(orientation, e == masked ? kIdentity : R), 1e-13) << "brick " << elements[e];
  }
}

} // namespace
