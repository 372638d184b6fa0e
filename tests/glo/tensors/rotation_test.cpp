// Quaternions and rotations against matrices and against each other.
#include "glo.h"
#include "tests/support/random.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>

namespace {

using namespace sharedanalysis::test;
using Quaternion = std::array<double, 4>;
constexpr double kPi = std::numbers::pi;

Quaternion randomQuaternion(Random& random) {
  Quaternion q{};
  double length = 0;
  while (length < 0.1 || length > 1) {
    length = 0;
    for (double& c : q) c = random.uniform(-1, 1), length += c * c;
    length = std::sqrt(length);
  }
  for (double& c : q) c /= length;
  return q;
}

Quaternion turn(double angle, std::array<double, 3> axis) {
  return {std::sin(angle / 2) * axis[0], std::sin(angle / 2) * axis[1], std::sin(angle / 2) * axis[2],
          std::cos(angle / 2)};
}

// The rotation matrix of a unit quaternion, by the sandwich product written out with matrices.
void matrixOf(const Quaternion& q, Matrix& R) {
  const double x = q[0], y = q[1], z = q[2], w = q[3];
  const Matrix K = {{0, -z, y}, {z, 0, -x}, {-y, x, 0}};
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) {
      double square = 0;
      for (int k = 0; k < 3; ++k) square += K[i][k] * K[k][j];
      R[i][j] = (i == j) + 2 * w * K[i][j] + 2 * square;
    }
}
void multiply(const Matrix& A, const Matrix& B, bool transposeA, bool transposeB, Matrix& C) {
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) {
      C[i][j] = 0;
      for (int k = 0; k < 3; ++k) C[i][j] += (transposeA ? A[k][i] : A[i][k]) * (transposeB ? B[j][k] : B[k][j]);
    }
}
double distance(const Matrix& A, const Matrix& B) {
  double largest = 0;
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) largest = std::max(largest, std::abs(A[i][j] - B[i][j]));
  return largest;
}

Quaternion product3D(int32_t op, const Quaternion& a, const Quaternion& b) {
  const int32_t one = 1;
  Quaternion q{};
  GLO_UTI_QUAT3DALGEBRA(&one, &op, q.data(), a.data(), b.data());
  return q;
}

TEST(Quaternions, ProductsAreThoseOfTheRotations) {
  Random random(1);
  for (int round = 0; round < 2000; ++round) {
    const Quaternion a = randomQuaternion(random), b = randomQuaternion(random);
    Matrix A, B, expected, found;
    matrixOf(a, A), matrixOf(b, B);
    const struct {
      int32_t op;
      const Matrix &first, &second;
      bool transposed;
    } cases[] = {{1, A, B, false}, {7, A, B, false}, {-1, B, A, false}, {2, A, B, true}, {-2, B, A, true}};
    for (const auto& c : cases) {
      multiply(c.first, c.second, c.transposed, false, expected);
      const Quaternion q = product3D(c.op, a, b);
      matrixOf(q, found);
      EXPECT_LT(distance(expected, found), 3e-15) << c.op;
      EXPECT_NEAR(std::hypot(std::hypot(q[0], q[1]), std::hypot(q[2], q[3])), 1, 5e-16);
      // the product of one pair, here of unit length anyway
      Quaternion single{};
      GLO_UTI_GENMULT3DQUAT(&c.op, single.data(), a.data(), b.data());
      for (std::size_t k = 0; k < 4; ++k) EXPECT_NEAR(single[k], q[k], 5e-16);
    }
    Quaternion single{};
    GLO_UTI_MULT3DQUAT(single.data(), a.data(), b.data());
    for (std::size_t k = 0; k < 4; ++k) EXPECT_NEAR(single[k], product3D(2, a, b)[k], 5e-16);
  }
  const Quaternion identity{0, 0, 0, 1};
  for (int32_t op : {1, -1, 2, -2, 3}) EXPECT_EQ(product3D(op, identity, identity), identity);
}

TEST(Quaternions, PlaneFormsAreTheSpatialOnesAboutAxisThree) {
  Random random(2);
  const int32_t one = 1;
  for (int round = 0; round < 1000; ++round) {
    const double t = random.uniform(-7, 7), u = random.uniform(-7, 7);
    const double a[] = {std::sin(t / 2), std::cos(t / 2)}, b[] = {std::sin(u / 2), std::cos(u / 2)};
    for (int32_t op : {1, -1, 2, -2, 5}) {
      double q[2], single[2];
      GLO_UTI_QUAT2DALGEBRA(&one, &op, q, a, b);
      GLO_UTI_GENMULT2DQUAT(&op, single, a, b);
      const double angle = op == 2 ? u - t : op == -2 ? t - u : t + u;
      for (const double* found : {q, single}) {
        EXPECT_NEAR(found[0], std::sin(angle / 2), 2e-15) << op;
        EXPECT_NEAR(found[1], std::cos(angle / 2), 2e-15) << op;
      }
    }
    double difference[2];
    GLO_UTI_MULT2DQUAT(difference, a, b);
    EXPECT_NEAR(difference[0], std::sin((u - t) / 2), 2e-15);
    // a plane vector into the frame and back
    const double v[] = {random.uniform(-1, 1), random.uniform(-1, 1)};
    double into[2], back[2];
    const int32_t forth = 0;
    GLO_UTI_QUATROTVECT2D(&one, &forth, into, a, v);
    EXPECT_NEAR(into[0], std::cos(t) * v[0] + std::sin(t) * v[1], 2e-15);
    EXPECT_NEAR(into[1], std::cos(t) * v[1] - std::sin(t) * v[0], 2e-15);
    GLO_UTI_QUATROTVECT2D(&one, &one, back, a, into);
    for (int k = 0; k < 2; ++k) EXPECT_NEAR(back[k], v[k], 2e-15);
  }
}

TEST(Quaternions, RotationVectorsAreRightForEveryAngle) {
  Random random(3);
  const int32_t one = 1;
  const auto check = [&](double angle, double scale) {
    if (angle * std::abs(scale) < 1e-302) return; // the vector would have no digits left
    std::array<double, 3> axis{};
    const Quaternion direction = randomQuaternion(random);
    const double length = std::hypot(direction[0], direction[1], direction[2]);
    for (std::size_t k = 0; k < 3; ++k) axis[k] = direction[k] / length;
    Quaternion q = turn(angle, axis);
    for (double& c : q) c *= scale;
    double r[3];
    GLO_UTI_ANGLESFROMQUATERNIONS(&one, q.data(), r);
    for (std::size_t k = 0; k < 3; ++k) EXPECT_NEAR(r[k], angle * axis[k], 1.5e-15 * angle + 1e-320) << angle;
  };
  for (double scale : {1.0, -1.0, 3e-3, -1e5, 1e-170, 1e160, -1e300, 3e-300}) {
    for (int k = 0; k < 3000; ++k) check(random.uniform(0, kPi), scale);
    for (double angle : {1e-200, 1e-20, 1e-9, 1e-4, kPi / 3, kPi / 2, 2 * kPi / 3, kPi - 1e-9}) check(angle, scale);
  }
  // half a turn keeps the axis of the quaternion; no turn is zero
  const Quaternion half{0.6, 0, -0.8, 0}, none{0, 0, 0, -1};
  double r[3];
  GLO_UTI_ANGLESFROMQUATERNIONS(&one, half.data(), r);
  EXPECT_NEAR(r[0], 0.6 * kPi, 1e-15);
  EXPECT_NEAR(r[2], -0.8 * kPi, 1e-15);
  GLO_UTI_ANGLESFROMQUATERNIONS(&one, none.data(), r);
  EXPECT_TRUE(r[0] == 0 && r[1] == 0 && r[2] == 0);
}

TEST(Quaternions, IncrementsCarryOneOrientationToTheOther) {
  Random random(4);
  const int32_t one = 1;
  for (int round = 0; round < 2000; ++round) {
    const Quaternion a = randomQuaternion(random);
    Quaternion b = randomQuaternion(random);
    if (round % 2 == 0) // nearly the same orientation, perhaps with the other sign
      for (std::size_t k = 0; k < 4; ++k) b[k] = (round % 4 == 0 ? -1 : 1) * (a[k] + 1e-9 * b[k]);
    Quaternion q{};
    GLO_UTI_COMPROTINC(&one, q.data(), a.data(), b.data());
    EXPECT_GE(q[3], 0);
    Matrix A, B, D, carried;
    matrixOf(a, A), matrixOf(product3D(1, b, {0, 0, 0, 1}), B), matrixOf(q, D);
    multiply(D, A, false, false, carried);
    EXPECT_LT(distance(carried, B), 4e-15);
    double r[3], expected[3];
    GLO_UTI_COMPROTVEC(&one, r, a.data(), b.data());
    GLO_UTI_ANGLESFROMQUATERNIONS(&one, q.data(), expected);
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(r[k], expected[k], 2e-15);
  }
}

// ---- tensors

// One tensor in a block with room: n points treated, ld rows.
struct Rotated {
  using Entry = void (*)(const int32_t*, const int32_t*, const int32_t*, const double*, const double*, double*);
  static void call(Entry entry, int32_t flag, const std::vector<double>& R, const std::vector<double>& S,
                   std::vector<double>& T) {
    const int32_t n = 3, ld = 5, at = 1;
    std::vector<double> blockR(R.size() * ld, 9), blockS(S.size() * ld, 9), blockT(T.size() * ld, 7);
    for (std::size_t k = 0; k < R.size(); ++k) blockR[k * ld + at] = R[k];
    for (std::size_t k = 0; k < S.size(); ++k) blockS[k * ld + at] = S[k];
    entry(&n, &ld, &flag, blockR.data(), blockS.data(), blockT.data());
    for (std::size_t k = 0; k < T.size(); ++k) {
      T[k] = blockT[k * ld + at];
      EXPECT_EQ(blockT[k * ld + 3], 7); // rows beyond n
    }
  }
};

TEST(TensorRotations, AreTheMatrixProducts) {
  Random random(5);
  constexpr int code33[] = {0, 4, 8, 1, 5, 2}; // places of 11 22 33 12 23 13 in a row-wise matrix
  const struct {
    Rotated::Entry entry;
    std::size_t in, out;
    bool inSpace, engineering;
  } cases[] = {{GLO_UTI_ROTATES33, 6, 6, true, false},  {GLO_UTI_ROTATES30S33, 3, 6, true, false},
               {GLO_UTI_ROTATES31, 4, 4, false, false}, {GLO_UTI_ROTATES30S31, 3, 4, false, false},
               {GLO_UTI_ROTATES21, 3, 3, false, false}, {GLO_UTI_ROTATES21E, 3, 3, false, true}};
  for (const auto& c : cases)
    for (int round = 0; round < 500; ++round)
      for (int32_t flag : {0, 1, -3}) {
        Matrix M;
        if (c.inSpace)
          randomRotation(random, M);
        else
          matrixOf(turn(random.uniform(-4, 4), {0, 0, 1}), M);
        std::vector<double> R;
        for (int j = 0; j < (c.inSpace ? 3 : 2); ++j)
          for (int i = 0; i < (c.inSpace ? 3 : 2); ++i) R.push_back(M[i][j]);
        std::vector<double> S(c.in), T(c.out);
        for (double& s : S) s = random.uniform(-1, 1);
        // plane storages have their shear in the third or fourth place
        const bool plane = c.out == 3;
        const auto place = [&](std::size_t k) { return plane && k == 2 ? 3u : k; };
        Matrix tensor = {}, half, expected;
        for (std::size_t k = 0; k < c.in; ++k) {
          const int at = code33[place(k)];
          const double s = c.engineering && k == 2 ? S[k] / 2 : S[k];
          tensor[at / 3][at % 3] = tensor[at % 3][at / 3] = s;
        }
        multiply(M, tensor, flag == 0, false, half);
        multiply(half, M, false, flag != 0, expected);
        Rotated::call(c.entry, flag, R, S, T);
        for (std::size_t k = 0; k < c.out; ++k) {
          const int at = code33[place(k)];
          EXPECT_NEAR(T[k], (c.engineering && k == 2 ? 2 : 1) * expected[at / 3][at % 3], 4e-15);
        }
      }
}

TEST(TensorRotations, MatricesBeginAsTheIdentity) {
  const int32_t n = 3, none = 0;
  std::vector<double> R(27, 5);
  GLO_UTI_INITROTATIONMATRIX(&none, R.data());
  EXPECT_EQ(R[0], 5);
  GLO_UTI_INITROTATIONMATRIX(&n, R.data());
  for (int k = 0; k < 9; ++k)
    for (int i = 0; i < n; ++i) EXPECT_EQ(R[k * n + i], k % 4 == 0 ? 1 : 0);
}

} // namespace
