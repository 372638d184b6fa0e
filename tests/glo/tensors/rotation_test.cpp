// Quaternions and rotations against matrices and against each other.
#include "glo.h"
#include "tests/support/call.h"
#include "tests/support/turns.h"

namespace {

using namespace sharedanalysis::test;
using Axis = std::array<double, 3>;
constexpr double kPi = std::numbers::pi;

Quaternion product3D(int32_t op, const Quaternion& a, const Quaternion& b) {
  Quaternion q{};
  call(GLO_UTI_QUAT3DALGEBRA, 1, op, q, a, b);
  return q;
}
double length(const Quaternion& q) { return std::hypot(std::hypot(q[0], q[1]), std::hypot(q[2], q[3])); }
void expectNear(const Quaternion& a, const Quaternion& b, double bound) {
  for (std::size_t k = 0; k < 4; ++k) EXPECT_NEAR(a[k], b[k], bound);
}

TEST(Quaternions, ProductsAreThoseOfTheRotations) {
  Random random(1);
  for (int round = 0; round < 2000; ++round) {
    const Quaternion a = randomTurn(random), b = randomTurn(random);
    for (int32_t op : {1, 7, -1, 2, -2}) {
      const Matrix A = turnedAxes(op > 0 ? a : b), B = turnedAxes(op > 0 ? b : a);
      const Quaternion q = product3D(op, a, b);
      EXPECT_LT(distance((std::abs(op) == 2 ? transposed(A) : A) * B, turnedAxes(q)), 3e-15) << op;
      EXPECT_NEAR(length(q), 1, 5e-16);
      Quaternion single{}; // the product of one pair, here of unit length anyway
      call(GLO_UTI_GENMULT3DQUAT, op, single, a, b);
      expectNear(single, q, 5e-16);
    }
    Quaternion single{};
    call(GLO_UTI_MULT3DQUAT, single, a, b);
    expectNear(single, product3D(2, a, b), 5e-16);
  }
  const Quaternion identity{0, 0, 0, 1};
  for (int32_t op : {1, -1, 2, -2, 3}) EXPECT_EQ(product3D(op, identity, identity), identity);
}

TEST(Quaternions, PlaneFormsAreTheSpatialOnesAboutAxisThree) {
  Random random(2);
  for (int round = 0; round < 1000; ++round) {
    const double t = random.uniform(-7, 7), u = random.uniform(-7, 7);
    const double a[] = {std::sin(t / 2), std::cos(t / 2)}, b[] = {std::sin(u / 2), std::cos(u / 2)};
    const auto expectTurn = [](const double* found, double angle) {
      EXPECT_NEAR(found[0], std::sin(angle / 2), 2e-15);
      EXPECT_NEAR(found[1], std::cos(angle / 2), 2e-15);
    };
    double q[2], into[2], back[2];
    for (int32_t op : {1, -1, 2, -2, 5}) {
      const double angle = op == 2 ? u - t : op == -2 ? t - u : t + u;
      call(GLO_UTI_QUAT2DALGEBRA, 1, op, q, a, b);
      expectTurn(q, angle);
      call(GLO_UTI_GENMULT2DQUAT, op, q, a, b);
      expectTurn(q, angle);
    }
    call(GLO_UTI_MULT2DQUAT, q, a, b);
    expectTurn(q, u - t);
    // a plane vector into the frame and back
    const double v[] = {random.uniform(-1, 1), random.uniform(-1, 1)};
    call(GLO_UTI_QUATROTVECT2D, 1, 0, into, a, v);
    EXPECT_NEAR(into[0], std::cos(t) * v[0] + std::sin(t) * v[1], 2e-15);
    EXPECT_NEAR(into[1], std::cos(t) * v[1] - std::sin(t) * v[0], 2e-15);
    call(GLO_UTI_QUATROTVECT2D, 1, 1, back, a, into);
    for (int k = 0; k < 2; ++k) EXPECT_NEAR(back[k], v[k], 2e-15);
  }
}

TEST(Quaternions, RotationVectorsAreRightForEveryAngle) {
  Random random(3);
  const auto check = [&](double angle, double scale) {
    if (angle * std::abs(scale) < 1e-302) return; // the vector would have no digits left
    Axis axis = {random.uniform(-1, 1), random.uniform(-1, 1), random.uniform(0.1, 1)};
    const double norm = std::hypot(axis[0], axis[1], axis[2]);
    Quaternion q = turnAbout(axis, angle);
    for (double& c : q) c *= scale;
    double r[3];
    call(GLO_UTI_ANGLESFROMQUATERNIONS, 1, q, r);
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(r[k], angle * axis[k] / norm, 1.5e-15 * angle + 1e-320) << angle;
  };
  for (double scale : {1.0, -1.0, 3e-3, -1e5, 1e-170, 1e160, -1e300, 3e-300}) {
    for (int k = 0; k < 3000; ++k) check(random.uniform(0, kPi), scale);
    for (double angle : {1e-200, 1e-20, 1e-9, 1e-4, kPi / 3, kPi / 2, 2 * kPi / 3, kPi - 1e-9}) check(angle, scale);
  }
  // half a turn keeps the axis of the quaternion; no turn is zero
  Values r(3);
  call(GLO_UTI_ANGLESFROMQUATERNIONS, 1, Quaternion{0.6, 0, -0.8, 0}, r);
  EXPECT_NEAR(r[0], 0.6 * kPi, 1e-15);
  EXPECT_NEAR(r[2], -0.8 * kPi, 1e-15);
  call(GLO_UTI_ANGLESFROMQUATERNIONS, 1, Quaternion{0, 0, 0, -1}, r);
  EXPECT_EQ(r, Values(3));
}

TEST(Quaternions, IncrementsCarryOneOrientationToTheOther) {
  Random random(4);
  for (int round = 0; round < 2000; ++round) {
    const Quaternion a = randomTurn(random);
    Quaternion b = randomTurn(random), q{};
    if (round % 2 == 0) // nearly the same orientation, perhaps with the other sign
      for (std::size_t k = 0; k < 4; ++k) b[k] = (round % 4 == 0 ? -1 : 1) * (a[k] + 1e-9 * b[k]);
    call(GLO_UTI_COMPROTINC, 1, q, a, b);
    EXPECT_GE(q[3], 0);
    EXPECT_LT(distance(turnedAxes(q) * turnedAxes(a), turnedAxes(b)), 4e-15);
    double r[3], expected[3];
    call(GLO_UTI_COMPROTVEC, 1, r, a, b);
    call(GLO_UTI_ANGLESFROMQUATERNIONS, 1, q, expected);
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(r[k], expected[k], 2e-15);
  }
}

// ---- tensors

// Components 11 22 33 12 23 13, or the first four; of three the last is 12 in plane tensors and 33 in principal ones.
TEST(TensorRotations, AreTheMatrixProducts) {
  Random random(5);
  const struct {
    decltype(&GLO_UTI_ROTATES33) entry;
    int in, out, dim;
    bool isPrincipal = false, isEngineering = false;
  } cases[] = {{GLO_UTI_ROTATES33, 6, 6, 3}, {GLO_UTI_ROTATES30S33, 3, 6, 3, true},
               {GLO_UTI_ROTATES31, 4, 4, 2}, {GLO_UTI_ROTATES30S31, 3, 4, 2, true},
               {GLO_UTI_ROTATES21, 3, 3, 2}, {GLO_UTI_ROTATES21E, 3, 3, 2, false, true}};
  constexpr int kRow[] = {0, 1, 2, 0, 1, 0}, kColumn[] = {0, 1, 2, 1, 2, 2};
  const int n = 3, ld = 5, at = 1; // one tensor in a block with room
  for (const auto& c : cases)
    for (int round = 0; round < 500; ++round)
      for (int32_t flag : {0, 1, -3}) {
        Matrix tensor = {};
        const Matrix M = turnedAxes(c.dim == 3 ? randomTurn(random) : turnAbout({0, 0, 1}, random.uniform(-4, 4)));
        Values R(9 * ld, 9), S(6 * ld, 9), T(6 * ld, 7);
        for (int k = 0; k < c.dim * c.dim; ++k) R[k * ld + at] = M[k % c.dim][k / c.dim];
        for (int k = 0; k < c.in; ++k) {
          const int to = c.in == 3 && k == 2 && !c.isPrincipal ? 3 : k;
          S[k * ld + at] = random.uniform(-1, 1);
          tensor[kRow[to]][kColumn[to]] = tensor[kColumn[to]][kRow[to]] =
              S[k * ld + at] / (c.isEngineering && k == 2 ? 2 : 1);
        }
        call(c.entry, n, ld, flag, R, S, T);
        // M' S M into the frame, M S M' out of it
        const Matrix expected = flag == 0 ? transposed(M) * tensor * M : M * tensor * transposed(M);
        for (int k = 0; k < c.out; ++k) {
          const int from = c.out == 3 && k == 2 ? 3 : k;
          EXPECT_NEAR(T[k * ld + at], (c.isEngineering && k == 2 ? 2 : 1) * expected[kRow[from]][kColumn[from]], 4e-15);
        }
      }
}

TEST(TensorRotations, MatricesBeginAsTheIdentity) {
  Values R(18, 5);
  call(GLO_UTI_INITROTATIONMATRIX, 2, R);
  EXPECT_EQ(R, (Values{1, 1, 0, 0, 0, 0, 0, 0, 1, 1, 0, 0, 0, 0, 0, 0, 1, 1}));
}

} // namespace
