// Records of tensors: tensors are rebuilt from the written values and quaternions; lists begin and end where they should.
#include "glo.h"
#include "tests/support/call.h"
#include "tests/support/turns.h"

namespace {

using namespace sharedanalysis::test;
using Reals = std::vector<double>;

constexpr double kUntouched = -77;

// The two argument lists of a code for whole blocks.
using Whole = void (*)(const int32_t*, int32_t*, const double*, const int32_t*, const int32_t*, double*, double*);
using Oriented = void (*)(const int32_t*, int32_t*, const double*, const double*, const int32_t*, const int32_t*,
                          double*, double*);

// A code: its members, components, values and reals of its quaternion; where component (a, b) lies, -1 where there is none.
struct Code {
  const char* name;
  Whole whole;
  Oriented oriented;
  int components, values, quaternion;
  int place[3][3];
};
#define MEMBERS(stem) #stem, GLO_UTI_##stem##QUAT, GLO_UTI_##stem##QUATMULT
const Code kCodes[] = {
    {MEMBERS(ODBPRINC11), 2, 2, 2, {{0, 1, -1}, {1, -1, -1}, {-1, -1, -1}}},
    {MEMBERS(ODBPRINC21), 3, 2, 2, {{0, 2, -1}, {2, 1, -1}, {-1, -1, -1}}},
    {MEMBERS(ODBPRINC31), 4, 3, 2, {{0, 3, -1}, {3, 1, -1}, {-1, -1, 2}}},
    {MEMBERS(ODBPRINC33), 6, 3, 4, {{0, 3, 5}, {3, 1, 4}, {5, 4, 2}}},
    {MEMBERS(ODBGENPRINC21), 3, 2, 2, {{0, 2, -1}, {2, 1, -1}, {-1, -1, -1}}},
    {MEMBERS(ODBGENPRINC31), 4, 3, 2, {{0, 3, -1}, {3, 1, -1}, {-1, -1, 2}}},
    {MEMBERS(ODBGENPRINC33), 6, 3, 4, {{0, 3, 5}, {3, 1, 4}, {5, 4, 2}}},
};
// Directional copies of n values: no shear, the identity or the orientation itself.
#define COPIES(n, dim) "ODBDIRCOPY" #n #dim, GLO_UTI_ODBDIRCOPY##n, GLO_UTI_ODBDIRCOPY##n##MULT##dim
struct Copy {
  Code members;
  bool isPlain; // its plain forms have a quaternion of the same kind
};
const Copy kCopies[] = {
    {{COPIES(1, 2D), 1, 1, 2, {{0, -1, -1}, {-1, -1, -1}, {-1, -1, -1}}}, true},
    {{COPIES(2, 2D), 2, 2, 2, {{0, -1, -1}, {-1, 1, -1}, {-1, -1, -1}}}, true},
    {{COPIES(3, 2D), 3, 3, 2, {{0, -1, -1}, {-1, 1, -1}, {-1, -1, 2}}}, false},
    {{COPIES(1, 3D), 1, 1, 4, {{0, -1, -1}, {-1, -1, -1}, {-1, -1, -1}}}, false},
    {{COPIES(2, 3D), 2, 2, 4, {{0, -1, -1}, {-1, 1, -1}, {-1, -1, -1}}}, false},
    {{COPIES(3, 3D), 3, 3, 4, {{0, -1, -1}, {-1, 1, -1}, {-1, -1, 2}}}, true},
};

// Records that are longer than what is written, and a margin.
struct Output {
  int32_t ldp = 5, ldq = 6, cursor;
  Reals P, Q;
  explicit Output(int records, int first = 1)
      : cursor(first), P(ldp * records, kUntouched), Q(ldq * records, kUntouched) {}
  const double* p(int record) const { return P.data() + (record - 1) * ldp; }
  const double* q(int record) const { return Q.data() + (record - 1) * ldq; }
  Quaternion quaternion(int record, const Code& code) const {
    const double* x = q(record);
    return code.quaternion == 4 ? Quaternion{x[0], x[1], x[2], x[3]} : spatial(x[0], x[1]);
  }
};

// R D R' for a diagonal or full D.
Matrix rotated(const Quaternion& turn, const Matrix& D) {
  const Matrix R = turnedAxes(turn);
  return R * D * transposed(R);
}
// The tensor of a record against one of components S, that a turn may have been applied to.
double error(const Output& out, int record, const Code& code, const double* S, int stride, const Quaternion& turn) {
  const Matrix given = matrixBy([&](int a, int b) {
    const int place = code.place[a][b];
    return place < 0 ? 0.0 : S[place * stride];
  });
  const double* P = out.p(record);
  const Matrix D = matrixBy([&](int a, int b) { return a == b && a < code.values ? P[a] : 0.0; });
  return distance(rotated(turn, given), rotated(out.quaternion(record, code), D));
}
const Quaternion kNoTurn{0, 0, 0, 1};

// Component-wise random tensors with some diagonal and equal ones, and orientations, point fastest; and what the two members
// of a code for whole blocks make of them.
struct Block {
  const Code& code;
  int32_t n;
  Reals S, O;
  Output plain, oriented;
  Block(const Code& of, int points, uint64_t seed, int first)
      : code(of), n(points), S(n * code.components), O(n * code.quaternion), plain(n + first, first),
        oriented(n + first, first) {
    Random random(seed);
    for (int i = 0; i < n; ++i) {
      const int kind = random.integer(0, 9);
      for (int k = 0; k < code.components; ++k)
        S[k * n + i] = kind == 0 ? random.integer(-1, 1) : random.uniform(-3, 3);
      const Quaternion o = code.quaternion == 4 ? randomTurn(random) : turnAbout({0, 0, 1}, random.uniform(-3.1, 3.1));
      for (int k = 0; k < code.quaternion; ++k) O[k * n + i] = o[code.quaternion == 4 ? k : k + 2];
    }
  }
  void run() {
    Output &a = plain, &b = oriented;
    call(code.whole, n, a.cursor, S, a.ldp, a.ldq, a.P, a.Q);
    call(code.oriented, n, b.cursor, S, O, b.ldp, b.ldq, b.P, b.Q);
    EXPECT_EQ(std::memcmp(a.P.data(), b.P.data(), 8 * a.P.size()), 0);
  }
  Quaternion orientation(int i) const {
    return code.quaternion == 4 ? Quaternion{O[i], O[i + n], O[i + 2 * n], O[i + 3 * n]} : spatial(O[i], O[i + n]);
  }
};

// The unit length fails for code 11 where it stores a square.
bool isSquared(const Code& code, const Output& out, int record) {
  const double* q = out.q(record);
  return code.components == 2 && code.place[0][1] == 1 && q[1] == 0 && q[0] != 1;
}

TEST(PrincipalOutput, QuaternionsTurnGlobalAxesIntoPrincipalOnes) {
  for (const Code& code : kCodes) {
    Block block(code, 500, 7, 4);
    block.S[30] = std::numeric_limits<double>::quiet_NaN(), block.S[40] = std::numeric_limits<double>::infinity();
    block.run();
    EXPECT_TRUE(block.plain.cursor == 504 && block.oriented.cursor == 504);
    int squared = 0;
    for (int i = 0; i < block.n; ++i) {
      const int record = 4 + i;
      const double *p = block.plain.p(record), *q = block.plain.q(record);
      const bool isBad = i == 30 || i == 40;
      EXPECT_EQ(std::isnan(p[0]), isBad) << code.name;
      EXPECT_EQ(std::isnan(q[1]), isBad) << code.name;
      const bool isSquare = isSquared(code, block.plain, record);
      squared += isSquare ? 1 : 0;
      if (isBad || isSquare) continue;
      EXPECT_TRUE(p[0] >= p[1] && (code.quaternion == 2 || p[1] >= p[2])) << code.name;
      EXPECT_LT(error(block.plain, record, code, &block.S[i], block.n, kNoTurn), 1e-14) << code.name << " " << i;
      EXPECT_LT(error(block.oriented, record, code, &block.S[i], block.n, block.orientation(i)), 1e-14) << code.name;
      for (const Output* out : {&block.plain, &block.oriented}) {
        const Quaternion unit = out->quaternion(record, code);
        EXPECT_NEAR(std::hypot(std::hypot(unit[0], unit[1]), std::hypot(unit[2], unit[3])), 1, 1e-15);
      }
      for (int k = code.values; k < block.plain.ldp; ++k) EXPECT_EQ(p[k], kUntouched);
      for (int k = code.quaternion; k < block.plain.ldq; ++k) EXPECT_EQ(q[k], kUntouched);
    }
    EXPECT_EQ(squared > 0, code.components == 2) << code.name;
    for (int record : {3, 504}) EXPECT_EQ(block.plain.p(record)[0], kUntouched);
  }
}

TEST(PrincipalOutput, PlaneValuesAsTheyAreDefined) {
  const double h = std::sqrt(0.5);
  const struct {
    const Code& code;
    Reals S, P, Q;
  } cases[] = {
      {kCodes[2], {2, 1, 5, 0}, {2, 1, 5}, {0, 1}},
      {kCodes[2], {1, 2, -4, 0}, {2, 1, -4}, {-h, h}}, // exchanged: minus 90 degrees
      {kCodes[2], {3, 3, 9, 0}, {3, 3, 9}, {0, 1}},    // ties keep their order
      {kCodes[1], {1, 1, 1}, {2, 0}, {std::sin(M_PI / 8), std::cos(M_PI / 8)}},
      {kCodes[0], {2, 0}, {2, 0}, {0, 1}},
      {kCodes[0], {-2, 0}, {0, -2}, {-h, h}},
      // R = (-0.6 0.8; -0.8 -0.6) would be z = sqrt(0.8), w = -sqrt(0.2): the square is stored and the sum of 0.8 and -0.8
      {kCodes[0], {-7, 12}, {9, -16}, {0.8, 0}},
  };
  for (const auto& c : cases) {
    Output out(1);
    call(c.code.whole, 1, out.cursor, c.S, out.ldp, out.ldq, out.P, out.Q);
    for (std::size_t k = 0; k < c.P.size(); ++k) EXPECT_NEAR(out.P[k], c.P[k], 4e-15) << c.code.name;
    for (std::size_t k = 0; k < 2; ++k) EXPECT_NEAR(out.Q[k], c.Q[k], 2e-16) << c.code.name << " " << c.S[0];
  }
}

TEST(PrincipalOutput, SpatialOnesOfEveryOrderScaleAndSymmetry) {
  const Code& code = kCodes[3];
  const auto check = [&](const Quaternion& turn, std::array<double, 3> values, double scale) {
    Reals S(6), scaled(6);
    setPrincipal(S.data(), 1, 0, {values[0], values[1], values[2]}, turnedAxes(turn));
    for (int k = 0; k < 6; ++k) scaled[k] = S[k] * scale;
    Output out(1);
    call(code.whole, 1, out.cursor, scaled, out.ldp, out.ldq, out.P, out.Q);
    std::sort(values.begin(), values.end(), std::greater<>());
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(out.P[k] /= scale, values[k], 1e-14);
    EXPECT_LT(error(out, 1, code, S.data(), 1, kNoTurn), 2e-14) << values[0] << values[1] << values[2] << " " << scale;
  };
  Random random(8);
  std::array<std::array<double, 3>, 5> patterns = {{{-2, 1, 5}, {1, 1, 2}, {-3, 2, 2}, {4, 4, 4}, {0, 1e-9, 1}}};
  for (auto values : patterns) do
      for (double scale : {1.0, 1e-300, 1e300})
        for (const Quaternion& turn :
             {kNoTurn, turnAbout({1, 0, 0}, M_PI),
              turnAbout({1, 1, 0}, M_PI), // half turns: axes exchanged and reversed
              turnAbout({1, -1, 1}, M_PI), turnAbout({1, 1, 1}, 2 * M_PI / 3), turnAbout({0, 1, 0}, 1e-9),
              turnAbout({3, -1, 2}, M_PI - 1e-9), randomTurn(random)})
          check(turn, values, scale);
    while (std::next_permutation(values.begin(), values.end()));
}

// ---- element lists

TEST(OutputLists, EndAtTheLastPositionAndBeginAtTheCursor) {
  const Reals S(40, 1.0);
  const int32_t list[] = {2, 4, 6, 8, 10};
  const struct {
    int32_t first, last, block, after;
    std::vector<int> written;
  } cases[] = {{3, 2, 1, 3, {}}, // an empty range
               {4, 5, 0, 4, {}}, // the block before
               {2, 4, 1, 5, {2, 3, 4}},
               {2, 4, 2, 5, {}}}; // entries whose block has passed are passed over
  for (const auto& c : cases) {
    Output out(6, c.first);
    call(GLO_UTI_ODBPRINC31QUATELSET, 10, c.block, 10, 1, 10, list, out.cursor, S, out.ldp, out.ldq, out.P, out.Q,
         c.last);
    EXPECT_EQ(out.cursor, c.after);
    std::vector<int> written;
    for (int record = 1; record <= 6; ++record)
      if (out.p(record)[0] != kUntouched) written.push_back(record);
    EXPECT_EQ(written, c.written) << c.block;
  }
}

// ---- copies and strains

TEST(OutputCopies, KeepValuesAndOrientations) {
  for (const Copy& copy : kCopies) {
    const Code& code = copy.members;
    Block block(code, 300, 13, 1);
    block.run();
    for (int i = 0; i < block.n; ++i) {
      const double* S = &block.S[i];
      EXPECT_LT(error(block.oriented, i + 1, code, S, block.n, block.orientation(i)), 1e-14) << code.name;
      for (int k = 0; k < code.values; ++k) EXPECT_EQ(block.oriented.p(i + 1)[k], S[k * block.n]);
      if (copy.isPlain) {
        EXPECT_EQ(error(block.plain, i + 1, code, S, block.n, kNoTurn), 0) << code.name;
      }
    }
  }
}

// Members 1, 2, 3, 5, 6, 7, 9 ... of a block in records of seven; shear strains are doubled.
TEST(OutputCopies, ScalarsAndStrains) {
  const int n = 200, ldp = 7, last = 150;
  Random random(17);
  std::vector<int32_t> list;
  for (int32_t e = 1; e <= last; ++e) list.push_back(e + e / 4);
  const auto expect = [&](int components, const Reals& E, const Reals& records, const auto& points) {
    for (std::size_t r = 0; r < points.size(); ++r)
      for (int k = 0; k < ldp; ++k)
        EXPECT_EQ(records[r * ldp + k], k >= components ? kUntouched : (k < 3 ? 1 : 2) * E[k * n + points[r] - 1]);
  };
  const auto check = [&](int components, auto set, auto... whole) {
    Reals E(n * components), P(ldp * n, kUntouched), L = P;
    for (double& e : E) e = random.uniform(-1, 1);
    int32_t cursor = 1;
    call(set, n, 1, n, 1, n, list, cursor, E, ldp, L, last);
    EXPECT_EQ(cursor, last + 1);
    EXPECT_EQ(L[last * ldp], kUntouched);
    expect(components, E, L, list);
    std::vector<int32_t> all(n);
    std::iota(all.begin(), all.end(), 1);
    cursor = 1;
    (call(whole, n, cursor, E, ldp, P), ...);
    if (sizeof...(whole) > 0) expect(components, E, P, all);
  };
  check(1, GLO_UTI_ODBDIRCOPYSCALARELSET);
  check(1, GLO_UTI_ODBGENDIRCPSCALARELSET);
  check(4, GLO_UTI_ODB2DSTRAINELSET, GLO_UTI_ODB2DSTRAIN);
  check(6, GLO_UTI_ODB3DSTRAINELSET, GLO_UTI_ODB3DSTRAIN);
  check(4, GLO_UTI_ODBGEN2DSTRAINELSET, GLO_UTI_ODBGEN2DSTRAIN);
  check(6, GLO_UTI_ODBGEN3DSTRAINELSET, GLO_UTI_ODBGEN3DSTRAIN);
}

} // namespace
