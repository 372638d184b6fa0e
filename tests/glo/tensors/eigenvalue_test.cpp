// Principal values and directions, and the functions made of them, by what they must fulfil in 80 bits.
#include "glo.h"
#include "glo/tensors/trigonometric_values.h"
#include "tests/support/call.h"
#include "tests/support/random.h"

namespace {

using namespace sharedanalysis::test;
using Real = long double;

// A block of tensors of 6, 4 or 3 components: S33, S31, S21.
struct Tensors {
  int components, n = 0;
  Values S;
  // The place of a component, -1 where there is none.
  int place(int a, int b) const {
    const int k = components == 3 && a != b ? 2 : kS33[a][b];
    return k < components ? k : -1;
  }
  Real at(int i, int a, int b) const { return place(a, b) < 0 ? 0 : S[place(a, b) * n + i]; }
  Real size(int i) const {
    Real largest = 0;
    for (int k = 0; k < components; ++k) largest = std::max(largest, std::abs(Real{S[k * n + i]}));
    return largest;
  }
};

// All tensors whose components are -2 .. 2, times 2^power.
Tensors integerTensors(int components, int power) {
  Tensors t{components, static_cast<int>(std::pow(5, components)), {}};
  t.S.resize(components * t.n);
  for (int i = 0; i < t.n; ++i)
    for (int k = 0, digits = i; k < components; ++k, digits /= 5) t.S[k * t.n + i] = std::ldexp(digits % 5 - 2, power);
  return t;
}

// Tensors that are hard in some way; where squares are formed unscaled, none is near the ends of the range.
Tensors hardTensors(int components, bool isScaled) {
  Random random(6);
  std::vector<std::array<double, 6>> list = {{1, 2, 3, 0, 0, 0},
                                             {3, 3, 3, 0, 0, 0},
                                             {0, 0, 0, 0, 0, 0},
                                             {0, 0, 0, 1, 1, 1},
                                             {1, 1, 1, 1, 1, 1},
                                             {1, 1, 1, 1e-16, 1e-16, 0},
                                             {1, 1 + 1e-15, 1, 1e-9, 0, 0},
                                             {1, 1e-8, 1e-16, 1e-4, 1e-12, 1e-8},
                                             {1e16, 1, 1e-16, 1, 1, 1},
                                             {-1, -1, -1, 1e-8, 1e-8, 1e-8}};
  if (isScaled)
    list.insert(
        list.end(),
        {{1e300, -1e300, 1, 1e299, 1, 5}, {1e-300, 2e-300, 3e-300, 1e-300, 0, 1e-301}, {0, 0, 0, 1e-160, 1e-170, 0}});
  for (int k = 0; k < 3000; ++k) {
    list.emplace_back();
    const Matrix R = randomRotation(random);
    const double scale = std::ldexp(1, random.integer(-300, 300));
    double values[3] = {random.uniform(-1, 1), random.uniform(-1, 1), random.uniform(-1, 1)};
    if (k % 3 == 0) values[1] = values[0] * (1 + std::ldexp(random.uniform(-1, 1), -random.integer(20, 52)));
    if (k % 5 == 0) values[2] *= std::ldexp(1, -random.integer(0, 60));
    setPrincipal(list.back().data(), 1, 0, values, R);
    for (double& entry : list.back()) entry *= scale;
    if (k % 4 == 0) list.back()[4] = list.back()[5] = 0; // of the plane 1-2
  }
  Tensors t{components, static_cast<int>(list.size()), {}};
  for (int k = 0; k < components; ++k)
    for (const auto& tensor : list) t.S.push_back(tensor[components == 3 && k == 2 ? 3 : k]);
  return t;
}

// The unit tensor in the same block layout as the second tensor of a pair.
void pairsWithUnit(const int32_t* n, const double* S, double* P, double* V) {
  Values unit(6 * *n, 0.0);
  std::fill(unit.begin(), unit.begin() + 3 * *n, 1.0);
  GLO_UTI_GENEIG33(n, S, unit.data(), P, V);
}

using ValuesAlone = void (*)(const int32_t*, const double*, double*);
enum class Order { NearestAxis, Rising, Any };
struct Routine {
  const char* name;
  void (*run)(const int32_t*, const double*, double*, double*);
  int components;
  double residual; // |S V - V P| in units of the largest component, at most
  Order order;
  int most = 1022;                               // scales 2^k with |k| at most this
  ValuesAlone same = nullptr, falling = nullptr; // members that give the same values, and those in falling order
};
const Routine kRoutines[] = {
    {"PRINCS33", GLO_UTI_PRINCS33, 6, 1e-3, Order::NearestAxis},
    {"PRINCS33DBL", GLO_UTI_PRINCS33DBL, 6, 1e-3, Order::NearestAxis},
    {"PRINCS31", GLO_UTI_PRINCS31, 4, 4e-15, Order::NearestAxis, 500},
    {"PRINCS21", GLO_UTI_PRINCS21, 3, 4e-15, Order::NearestAxis, 500},
    {"EIG33V", GLO_UTI_EIG33V, 6, 4e-15, Order::Rising, 1022, GLO_UTI_EIG33, GLO_UTI_EIG33S},
    {"EIG33ANALV", GLO_UTI_EIG33ANALV, 6, 1e-7, Order::Any, 1018, GLO_UTI_EIG33ANAL},
    {"EIG31V", GLO_UTI_EIG31V, 4, 4e-15, Order::Rising, 1022, GLO_UTI_EIG31VECTOR},
    {"EIG21V", GLO_UTI_EIG21V, 3, 4e-15, Order::Rising, 1022, GLO_UTI_EIG21VECTOR, GLO_UTI_EIG21S},
    {"GENEIG33", pairsWithUnit, 6, 4e-15, Order::Rising},
};

void expectRotationsThatDiagonalise(const Routine& routine, const Tensors& t) {
  const int dim = t.components == 3 ? 2 : 3, n = t.n;
  Values P(dim * n), V(dim * dim * n), alone(dim * n);
  call(routine.run, n, t.S, P, V);
  Real residual = 0, planeResidual = 0, product = 0, volume = 2, nearest = 1;
  for (int i = 0; i < n; ++i) {
    const auto v = [&](int a, int b) -> Real { return a < dim && b < dim ? V[(dim * b + a) * n + i] : a == b; };
    const Real size = t.size(i) == 0 ? 1 : t.size(i);
    const bool isPlane = t.at(i, 1, 2) == 0 && t.at(i, 0, 2) == 0;
    // the trigonometric values of tensors below the normal numbers are zeros; their directions are none
    const bool isLost = routine.run == GLO_UTI_EIG33ANALV && size < 0x1p-1018L;
    for (int a = 0; a < dim; ++a)
      for (int b = 0; b < dim; ++b) {
        Real r = -v(a, b) * P[b * n + i] / size, o = a == b ? -1 : 0;
        for (int k = 0; k < dim; ++k) r += t.at(i, a, k) / size * v(k, b), o += v(k, a) * v(k, b);
        EXPECT_FALSE(std::isnan(P[b * n + i]));
        product = std::max(product, std::abs(o));
        if (!std::isfinite(P[b * n + i]) || isLost) continue;
        // half a unit of the smallest double is lost in a value that is subnormal
        Real& worst = isPlane ? planeResidual : residual;
        worst = std::max(worst, std::abs(r) - 0x1p-1075L / size);
      }
    for (int b = 1; b < dim && routine.order == Order::Rising; ++b) EXPECT_LE(P[(b - 1) * n + i], P[b * n + i]);
    if (isPlane) nearest = std::min(nearest, v(0, 0));
    volume = std::min(volume, determinant(matrixBy(v)));
  }
  EXPECT_LE(residual, routine.residual);
  const double once = routine.run == GLO_UTI_EIG33ANALV ? 1e-7 : 4e-15;
  EXPECT_LE(planeResidual, once) << "one rotation is enough";
  EXPECT_LE(product, 4e-15);
  EXPECT_GT(volume, 0.999) << "a reflection";
  if (routine.order == Order::NearestAxis) {
    EXPECT_GE(nearest, std::sqrt(0.5) * (1 - 1e-15)) << "not nearest its axis";
  }
  if (routine.same != nullptr) {
    call(routine.same, n, t.S, alone);
    EXPECT_EQ(alone, P);
  }
  if (routine.falling == nullptr) return;
  call(routine.falling, n, t.S, alone);
  for (int k = 0; k < dim * n; ++k) EXPECT_EQ(alone[k], P[(dim - 1 - k / n) * n + k % n]);
}

TEST(Directions, AreRotationsThatDiagonaliseAtEveryScale) {
  for (const Routine& routine : kRoutines) {
    SCOPED_TRACE(routine.name);
    expectRotationsThatDiagonalise(routine, hardTensors(routine.components, routine.most > 1000));
    for (const int power : {-1074, -1073, -1060, -1020, -600, -499, 0, 499, 1000, 1018, 1022}) {
      if (std::abs(power) > routine.most && (power > 0 || routine.most < 1000)) continue;
      SCOPED_TRACE(power);
      expectRotationsThatDiagonalise(routine, integerTensors(routine.components, power));
    }
  }
}

TEST(Directions, ListsAsLongAsTheBlockMayLeaveAPointOut) {
  const int32_t list[] = {2, 2, 1};
  Values P(9, -7), V(27, -7);
  call(GLO_UTI_PRINCS33INDX, 3, 3, list, Values(18, 1.0), P, V);
  EXPECT_TRUE(P[0] != -7 && P[1] != -7 && P[2] == -7);
}

// ---- values of looser members

// Against accurate ones, in units of the largest component.
TEST(Eigenvalues, OfLooserMembersAndTheirOrder) {
  const Tensors t = hardTensors(6, true);
  Values P(3 * t.n), sorted(3 * t.n), exact(3 * t.n);
  call(GLO_UTI_EIG33ANAL, t.n, t.S, P);
  call(GLO_UTI_EIG33VECTOR, t.n, t.S, sorted);
  call(GLO_UTI_EIG33, t.n, t.S, exact);
  for (int i = 0; i < t.n; ++i) {
    for (int k = 0; k < 3; ++k) {
      EXPECT_NEAR(sorted[k * t.n + i], exact[k * t.n + i], static_cast<double>(5e-7L * t.size(i)));
      EXPECT_LE(sorted[std::max(0, k - 1) * t.n + i], sorted[k * t.n + i]);
    }
    const double size = static_cast<double>(t.size(i)), low = exact[i], middle = exact[t.n + i],
                 high = exact[2 * t.n + i];
    double found[] = {P[t.n + i], P[2 * t.n + i], P[i]}; // largest, smallest, middle where they are apart
    const bool isDiagonal = t.at(i, 0, 1) == 0 && t.at(i, 1, 2) == 0 && t.at(i, 0, 2) == 0;
    const bool isApart = !isDiagonal && middle - low > 1e-4 * size && high - middle > 1e-4 * size;
    if (!isApart) std::sort(found, found + 3);
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(found[k], exact[k * t.n + i], (isApart ? 4e-12 : 4e-8) * size) << i;
  }
}

// The three cosines of a third of acos(x), at the ends of its range and near the middle too, where the third is small.
TEST(Trigonometric, CosinesOfThirds) {
  Random random(8);
  for (int k = 0; k < 100000; ++k) {
    const double u = random.uniform(-1, 1), small = std::ldexp(u, -random.integer(0, 50));
    const double x = k % 3 == 0 ? u : k % 3 == 1 ? small : std::copysign(1 - std::abs(small), u);
    const sa::ThirdsOfTurn found = sa::thirdsOfTurn(sa::thirdOfArcsine(x));
    const Real a = std::acos(Real{x}) / 3, third = -std::sin(std::asin(Real{x}) / 3);
    EXPECT_LE(std::abs(found.k1 - std::cos(a)), 2.5e-16L);
    EXPECT_LE(std::abs(found.k2 - std::cos(a + 2 * std::acos(Real{-1}) / 3)), 2.5e-16L);
    EXPECT_LE(std::abs(found.k3 - third), 8e-16L * std::abs(third)) << x;
  }
}

TEST(Trigonometric, EndCasesDiagonalsAndZeros) {
  // uniaxial states along (1,1,1)/sqrt 3, exact in binary up to scaling by 3
  const struct {
    std::array<double, 6> S;
    std::array<double, 3> P;
  } cases[] = {{{1, 1, 1, 1, 1, 1}, {0, 0, 3}},
               {{-1, -1, -1, -1, -1, -1}, {-3, 0, 0}},
               {{5, -1, 3, 0, 0, 0}, {5, -1, 3}}, // diagonal
               {{2, 2, 2, 0, 0, 0}, {2, 2, 2}},   // hydrostatic: the values are equal
               {{0, 0, 0, 0, 0, 0}, {0, 0, 0}},
               {{1e-320, 0, 0, 1e-320, 0, 1e-320}, {0, 0, 0}}}; // below the normal numbers counts as zero
  for (const auto& c : cases) {
    double P[3];
    call(GLO_UTI_EIG33ANAL, 1, c.S, P);
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(P[k], c.P[k], 1e-15) << c.S[0] << ' ' << k;
    EXPECT_EQ(P[0] == P[1], c.P[0] == c.P[1]) << "double value first";
    EXPECT_EQ(P[1] == P[2], c.P[1] == c.P[2]) << "double value last";
  }
}

// The other closed forms of the plane give the values of PRINCS31, PRINCS21 its bits; a diagonal stays as it is.
TEST(Plane, ClosedForms) {
  const Tensors t = hardTensors(4, false), plane = hardTensors(3, false);
  Values P(3 * t.n), V(9 * t.n), alone(3 * t.n), P21(2 * t.n), V21(4 * t.n);
  call(GLO_UTI_PRINCS31, t.n, t.S, P, V);
  call(GLO_UTI_PRINCS21, t.n, plane.S, P21, V21);
  call(GLO_UTI_EIG31ANAL, t.n, t.S, alone);
  for (int k = 0; k < 3 * t.n; ++k) {
    EXPECT_NEAR(alone[k], P[k], static_cast<double>(4e-15L * t.size(k % t.n)));
    EXPECT_EQ(k < 2 * t.n ? P21[k] : t.S[k], P[k]);
  }
  const double upright[4] = {0, 1, 9, 0};
  double p[3], v[9];
  call(GLO_UTI_PRINCS31, 1, upright, p, v);
  EXPECT_TRUE(p[0] == 0 && p[1] == 1 && v[0] == 1);
}

// Small values of positive tensors that are nearly diagonal after scaling keep their own digits.
TEST(Eigenvalues, SmallValuesOfPositiveTensorsKeepTheirDigits) {
  const double S[] = {1, 1e-10, 1e-20, 0.5e-5, 0.5e-15, 0.5e-10};
  // exact to first order: Schur complements of the scaled tensor with ones on its diagonal and 1/2 beside it
  double P[3];
  call(GLO_UTI_EIG33, 1, S, P);
  EXPECT_NEAR(P[1] / 0.75e-10, 1, 1e-9);
  EXPECT_NEAR(P[0] / (1e-20 * (1 - (0.25 + 0.25 - 0.25) / 0.75)), 1, 1e-9);
  const double T[] = {1, 1e-32, 2, 0.5e-16, 0, 0}; // its shear is nothing beside 1, and much beside the small value
  call(GLO_UTI_EIG33, 1, T, P);
  EXPECT_NEAR(P[0] / 0.75e-32, 1, 1e-9);
}

TEST(Eigenvalues, OfPairsOfTensors) {
  Random random(8);
  for (int round = 0; round < 2000; ++round) {
    double A[6], B[6], P[3], V[9], alone[3];
    const Matrix R = randomRotation(random);
    setPrincipal(B, 1, 0, {random.uniform(0.1, 2), random.uniform(0.1, 2), random.uniform(0.1, 2)}, R);
    for (double& entry : A) entry = random.uniform(-1, 1);
    call(GLO_UTI_GENEIG33, 1, A, B, P, V);
    call(GLO_UTI_GENEIG33VECTOR, 1, A, B, alone);
    EXPECT_GT(determinant(matrixBy([&](int a, int b) { return V[3 * b + a]; })), 0) << "left-handed";
    // powers of two change the values by theirs and no direction
    const bool isTiny = round % 2 == 0; // both among the smallest normal numbers, or anywhere
    const int powerA = isTiny ? -960 : random.integer(-500, 500),
              powerB = isTiny ? -960 : 2 * random.integer(-250, 250);
    double scaledA[6], scaledB[6], scaledP[3], scaledV[9];
    for (int k = 0; k < 6; ++k) scaledA[k] = std::ldexp(A[k], powerA), scaledB[k] = std::ldexp(B[k], powerB);
    call(GLO_UTI_GENEIG33, 1, scaledA, scaledB, scaledP, scaledV);
    for (int k = 0; k < 9; ++k) EXPECT_EQ(scaledV[k], V[k]);
    for (int k = 0; k < 3; ++k) {
      EXPECT_EQ(scaledP[k], std::ldexp(P[k], powerA - powerB));
      EXPECT_EQ(alone[k], P[k]);
      for (int i = 0; i < 3; ++i) {
        Real residual = 0;
        for (int j = 0; j < 3; ++j) residual += (Real{A[kS33[i][j]]} - Real{P[k]} * B[kS33[i][j]]) * V[3 * k + j];
        EXPECT_NEAR(static_cast<double>(residual), 0, 4e-13);
      }
      EXPECT_NEAR(V[3 * k] * V[3 * k] + V[3 * k + 1] * V[3 * k + 1] + V[3 * k + 2] * V[3 * k + 2], 1, 2e-15);
    }
    EXPECT_TRUE(P[0] <= P[1] && P[1] <= P[2]);
  }
  // B is not positive definite
  double P[3], V[9];
  call(GLO_UTI_GENEIG33, 1, Values{1, 2, 3, 0, 0, 0}, Values{1, 1, 1, 1, 0, 0}, P, V);
  EXPECT_TRUE(std::all_of(P, P + 3, [](double x) { return std::isnan(x); }));
  EXPECT_TRUE(std::all_of(V, V + 9, [](double x) { return std::isnan(x); }));
}

// In full tensors and in diagonal ones.
TEST(Eigenvalues, NumbersThatAreNoneSpoilAllOfTheirPoint) {
  for (double bad : {kNaN, kInf, -kInf})
    for (double shear : {1.0, 0.0})
      for (int place = 0; place < 6; ++place) {
        double S[6] = {4, 5, 6, 0.8 * shear, 0.9 * shear, shear}, results[36];
        S[place] = bad;
        call(GLO_UTI_PRINCS33, 1, S, results, results + 3);
        call(GLO_UTI_EIG33V, 1, S, results + 12, results + 15);
        call(GLO_UTI_EIG33VECTOR, 1, S, results + 24);
        call(GLO_UTI_SQRTV, 1, S, results + 27);
        call(GLO_UTI_EIG33ANAL, 1, S, results + 33);
        for (double value : results) EXPECT_TRUE(std::isnan(value)) << place << " " << bad << " " << shear;
      }
}

// ---- functions

// Positive tensors of whole numbers at every scale: V V = S, and ln(2^k S) = ln S + k ln 2.
TEST(TensorFunctions, AtEveryScale) {
  const Tensors A = integerTensors(6, 0);
  Tensors S = A;
  const int n = A.n;
  for (int i = 0; i < n; ++i) {
    const Matrix one = tensorOf(&A.S[i], n), square = one * one + kIdentity;
    for (int a = 0; a < 3; ++a)
      for (int b = a; b < 3; ++b) S.S[kS33[a][b] * n + i] = square[a][b];
  }
  Tensors V = S, L = S, logs = S, scaled = S;
  call(GLO_UTI_LOGV, n, S.S, L.S);
  for (int power = -1074; power <= 1017; power += power < -1060 ? 12 : 18) {
    for (std::size_t k = 0; k < S.S.size(); ++k) scaled.S[k] = std::ldexp(S.S[k], power);
    call(GLO_UTI_SQRTV, n, scaled.S, V.S);
    call(GLO_UTI_LOGV, n, scaled.S, logs.S);
    call(GLO_UTI_SQRTV, n, scaled.S, scaled.S);
    EXPECT_EQ(scaled.S, V.S) << "in place";
    Real root = 0, logarithm = 0;
    for (int i = 0; i < n; ++i) {
      const LongMatrix one = tensorOf<Real>(&V.S[i], n), square = one * one;
      for (int a = 0; a < 3; ++a)
        for (int b = a; b < 3; ++b) {
          root = std::max(root, std::abs(std::ldexp(square[a][b], -power) - S.at(i, a, b)) / 25);
          const Real expected = L.at(i, a, b) + (a == b ? power * 0.693147180559945309417232L : 0);
          logarithm = std::max(logarithm, std::abs(logs.at(i, a, b) - expected));
        }
    }
    EXPECT_LE(root, 4e-15) << power;
    EXPECT_LE(logarithm, 2e-15 * std::abs(power)) << power;
  }
  const double graded[6] = {0x1p+1020, 1, 0x1p-1074, 0, 0, 0}; // a diagonal tensor keeps its smallest value
  double values[6];
  call(GLO_UTI_LOGV, 1, graded, values);
  for (int k = 0; k < 3; ++k) EXPECT_NEAR(values[k], std::log(graded[k]), 1e-13);
}

// Every component to its own digits, over the whole range in which it is a double.
TEST(TensorFunctions, ExponentialsInThePlaneKeepEveryComponent) {
  Random random(12);
  std::vector<std::array<double, 3>> list = {
      {710, 0, 0},    {0, 710, 0},         {-700, 700, 0},      {700, -700, 0},  {2000, 1, 0},    {-2000, 1, 0},
      {700, 0, 1e-3}, {0, 700, -1e-3},     {600, -600, 1e-200}, {1, 1, 1e-12},   {300, 300, 200}, {1e-170, 0, 1e-170},
      {800, 800, 0},  {709.81, 709.77, 0}, {710, 710, 1e-3},    {1500, 1450, 1}, {1500, 1430, 0}};
  for (int k = 0; k < 5000; ++k) {
    const double size = std::ldexp(1, random.integer(-10, 9));
    list.push_back({size * random.uniform(-1, 1), size * random.uniform(-1, 1),
                    size * random.uniform(-1, 1) * std::ldexp(1, -random.integer(0, 80))});
    const double near = random.uniform(0.02, 0.08); // where the series ends
    list.push_back({1 + near, 1 - near, near * random.uniform(-0.1, 0.1)});
  }
  for (const auto& [s11, s22, s12] : list) {
    const double S[4] = {s11, s22, 0.5, s12};
    double E[4], direct[3];
    call(GLO_UTI_EXPS31, 1, S, E);
    call(GLO_UTI_EXPS30, 1, S, direct);
    for (int k = 0; k < 3; ++k)
      if (std::abs(S[k]) < 700) {
        EXPECT_NEAR(direct[k], std::exp(S[k]), 2.3e-16 * std::exp(S[k]));
      }
    const Real m = (Real{s11} + s22) / 2, h = (Real{s11} - s22) / 2;
    const Real r = std::hypot(h, Real{s12}), cc = r == 0 ? 1 : (1 + std::abs(h) / r) / 2;
    const Real ss = r == 0 ? 0 : Real{s12} * s12 / (4 * cc * r * r);
    const Real large = std::exp(m + r), little = std::exp(m - r);
    const Real near = large * cc + little * ss, far = little * cc + large * ss;
    const Real shear = r == 0 ? std::exp(m) * s12 : std::exp(m) * std::sinh(r) / r * s12;
    const Real expected[4] = {h >= 0 ? near : far, h >= 0 ? far : near, std::exp(Real{0.5}), shear};
    for (int k = 0; k < 4; ++k) {
      const double bound = 4e-15 * std::max({1.0, std::abs(s11), std::abs(s22), std::abs(s12)});
      if (std::abs(expected[k]) > std::numeric_limits<double>::max())
        EXPECT_TRUE(std::isinf(E[k])) << k;
      else
        EXPECT_LE(std::abs(E[k] - expected[k]), bound * std::abs(expected[k]) + 1e-323)
            << s11 << ' ' << s22 << ' ' << s12 << ' ' << k;
    }
  }
}

TEST(TensorFunctions, LogarithmsOfStretches) {
  Random random(9);
  for (int round = 0; round < 5000; ++round) {
    const Matrix R = randomRotation(random);
    const double size = std::ldexp(1, -random.integer(0, 30));
    double strain[3], values[3], V[6], L[6], expected[6];
    for (int k = 0; k < 3; ++k) {
      strain[k] = size * random.uniform(-1, 1) * (round % 3 == 0 ? 3 : 0.4);
      values[k] = std::exp(strain[k]);
    }
    setPrincipal(V, 1, 0, values, R);
    call(GLO_UTI_LOGV, 1, V, L);
    setPrincipal(expected, 1, 0, strain, R);
    // V itself carries half a unit of rounding in each component, which its smallest value magnifies
    const double smallest = *std::min_element(values, values + 3), largest = *std::max_element(values, values + 3);
    for (int k = 0; k < 6; ++k)
      EXPECT_NEAR(L[k], expected[k],
                  2e-15 * largest / smallest +
                      4e-15 * std::max({std::abs(strain[0]), std::abs(strain[1]), std::abs(strain[2])}));
  }
  // a tensor whose entries are exact: ln of 1 + 1e-10 in a direction, to all digits
  const double e = 0x1p-33, near[6] = {1 + e, 1, 1, 0, 0, 0};
  double L[6];
  call(GLO_UTI_LOGV, 1, near, L);
  EXPECT_NEAR(L[0] / std::log1p(e), 1, 1e-15);
  const double sheared[6] = {1, 1, 1, e, 0, 0}; // values 1 + e and 1 - e
  call(GLO_UTI_LOGV, 1, sheared, L);
  EXPECT_NEAR(L[3] / std::atanh(e), 1, 2e-15);
  EXPECT_NEAR(L[0] / (0.5 * std::log1p(-e * e)), 1, 1e-5); // second order: lost in rounding of the first
  for (double bad : {0.0, -1.0}) {
    const double S[6] = {1, bad, 1, 0, 0, 0};
    call(GLO_UTI_LOGV, 1, S, L);
    for (double value : L) EXPECT_TRUE(std::isnan(value));
  }
}

TEST(SquareRoot, OfNegativeValues) {
  for (int small = 0; small < 3; ++small) {
    double tensors[12] = {2, 2, 2, 2, 2, 2}, roots[12];
    tensors[2 * small] = -1e-16;
    tensors[2 * small + 1] = -1e-12;
    call(GLO_UTI_SQRTV, 2, tensors, roots);
    for (int k = 0; k < 3; ++k)
      EXPECT_NEAR(roots[2 * k], k == small ? 0 : std::sqrt(2), 1e-15) << "negative by rounding";
    for (int k = 0; k < 6; ++k) EXPECT_TRUE(std::isnan(roots[2 * k + 1]));
  }
  double two[6] = {-1, -1, 10}; // of two, with a positive determinant
  call(GLO_UTI_SQRTV, 1, two, two);
  for (double value : two) EXPECT_TRUE(std::isnan(value));
  constexpr double kSmall = 0x1p-30; // x x' + kSmall has the root x x' / |x| but for the small values
  double graded[6] = {1 + kSmall, 4 + kSmall, 9 + kSmall, 2, 6, 3}, V[6];
  call(GLO_UTI_SQRTV, 1, graded, V);
  EXPECT_NEAR(V[0] * V[0] + V[3] * V[3] + V[5] * V[5], graded[0], 9 * 4e-15);
  EXPECT_NEAR(V[3] * V[5] + V[1] * V[4] + V[4] * V[2], graded[4], 9 * 4e-15);
}

TEST(TensorStorage, CountsAndPackedTriangle) {
  const auto counts = [](int32_t code, int32_t family) {
    std::array<int32_t, 3> c{-7, -7, -7};
    call(GLO_UTI_NUMTENSORCOMP, code, family, c[0], c[1], c[2]);
    return c;
  };
  using Counts = std::array<int32_t, 3>;
  const std::pair<int32_t, Counts> table[] = {{100, {3, 1, 2}}, {200, {3, 1, 2}}, {300, {3, 3, 4}}, {400, {1, 0, 0}},
                                              {500, {0, 0, 0}}, {600, {3, 1, 0}}, {700, {1, 1, 2}}, {800, {0, 0, 0}},
                                              {900, {1, 2, 4}}, {-1, {0, 0, 0}}};
  for (const auto& [code, expected] : table) {
    EXPECT_EQ(counts(code, 0), expected) << code;
    const bool kept = code == 100 || code == 700 || code == 900;
    EXPECT_EQ(counts(code, 25090), kept ? expected : (Counts{3, 1, 0})) << code;
  }
  int32_t expected = 0;
  for (int32_t j = 1; j <= 6; ++j)
    for (int32_t i = 1; i <= j; ++i) {
      ++expected;
      EXPECT_EQ(GLO_UTI_SQ2TRSTORAGE(&i, &j), expected);
      EXPECT_EQ(GLO_UTI_SQ2TRSTORAGE(&j, &i), expected);
    }
}

} // namespace
