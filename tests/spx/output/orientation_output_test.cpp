// Records of orientations: what they turn, against rotations by axis and angle, and where they lie.
#include "spx.h"
#include "tests/support/call.h"
#include "tests/support/turns.h"

namespace {

using namespace sharedanalysis::test;
using Reals = std::vector<double>;

constexpr double kUntouched = -77, kPi = 3.141592653589793;

// Columns of a block, point fastest, from rows.
Reals columns(const std::vector<Reals>& rows) {
  Reals block;
  for (std::size_t k = 0; k < rows[0].size(); ++k)
    for (const Reals& row : rows) block.push_back(row[k]);
  return block;
}
Reals reals(const Quaternion& q) { return {q.begin(), q.end()}; }
Quaternion record(const Reals& out, int number, int length = 4) {
  const double* r = &out[(number - 1) * length];
  return length == 4 ? Quaternion{r[0], r[1], r[2], r[3]} : spatial(r[0], r[1]);
}
double unitError(const Quaternion& q) {
  return std::abs(std::hypot(std::hypot(q[0], q[1]), std::hypot(q[2], q[3])) - 1);
}

// Distance of the record's rotation from the product of the given ones, the last applied first.
double turnError(const Quaternion& found, std::initializer_list<Quaternion> turns) {
  Matrix T = kIdentity;
  for (const Quaternion& turn : turns) T = T * turnedAxes(turn);
  return distance(turnedAxes(found), T);
}

std::vector<Quaternion> manyTurns(uint64_t seed) {
  std::vector<Quaternion> turns = {{0, 0, 0, 1}, {1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}};
  for (const std::array<double, 3>& axis :
       {std::array<double, 3>{1, 1, 0}, {1, -1, 0}, {0, 1, -1}, {1, 1, 1}, {1, 2, 3}})
    for (double angle : {kPi, kPi / 2, 2 * kPi / 3, -2 * kPi / 3, kPi - 1e-7, 1e-3})
      turns.push_back(turnAbout(axis, angle));
  Random random(seed);
  while (turns.size() < 300) turns.push_back(randomTurn(random));
  return turns;
}

// ---- elements in space and in the plane

TEST(OrientationOutput, SpatialRecordsAreFollowedByAQuarterTurn) {
  const std::vector<Quaternion> turns = manyTurns(1);
  std::vector<Reals> rows;
  for (const Quaternion& q : turns) rows.push_back(reals(q));
  const Reals q = columns(rows);
  const int32_t n = static_cast<int32_t>(turns.size());
  Reals turned(4 * n), inverses(4 * n);
  int32_t counter = 1, counterOfInverses = 1;
  call(SPX_ODB_ORIENT3D, n, counter, q, turned);
  call(SPX_ODB_ORIENT3DINVERT, n, 1, 1, counterOfInverses, q, inverses);
  EXPECT_TRUE(counter == n + 1 && counterOfInverses == n + 1);
  for (int i = 0; i < n; ++i) {
    EXPECT_LT(turnError(record(turned, i + 1), {turns[i], turnAbout({1, 0, 0}, kPi / 2)}), 1e-8);
    EXPECT_NEAR(unitError(record(turned, i + 1)), 1.68e-9, 2e-11); // eight digits of the root of 1/2
    // both turns end where they began, bits and positive zeros included
    const Quaternion inverse = record(inverses, i + 1);
    EXPECT_LT(turnError({0, 0, 0, 1}, {inverse, turns[i]}), 4e-15);
    EXPECT_EQ(inverse[3], turns[i][3]);
    for (std::size_t k = 0; k < 3; ++k) EXPECT_FALSE(inverse[k] == 0 && std::signbit(inverse[k]));
  }
  EXPECT_EQ(record(turned, 1), (Quaternion{0.70710678, 0, 0, 0.70710678}));
}

TEST(OrientationOutput, BeamsLieAlongTheirAxis) {
  Random random(2);
  std::vector<std::array<double, 2>> directions = {{1, 0},     {-1, 0},     {0, 2},    {0, -3},
                                                   {-1, 1e-9}, {-1, -1e-9}, {1, 1e-12}};
  while (directions.size() < 200) directions.push_back({random.uniform(-5, 5), random.uniform(-5, 5)});
  std::vector<Reals> rows;
  for (const auto& d : directions) {
    const double x = random.integer(-8, 8), y = random.integer(-8, 8); // small integers keep differences exact enough
    const bool exact = rows.size() < 7;
    rows.push_back({9, 9, exact ? 0 : x, exact ? d[0] : x + d[0], exact ? 0 : y, exact ? d[1] : y + d[1]});
  }
  Reals out(2 * rows.size());
  int32_t counter = 1;
  call(SPX_ODB_ORIENT2DBEAM, static_cast<int32_t>(rows.size()), counter, columns(rows), 3, out);
  for (int i = 0; i < static_cast<int>(rows.size()); ++i) {
    const Matrix R = turnedAxes(record(out, i + 1, 2));
    const double length = std::hypot(directions[i][0], directions[i][1]);
    EXPECT_NEAR(R[0][0], directions[i][0] / length, 1e-14) << i;
    EXPECT_NEAR(R[1][0], directions[i][1] / length, 1e-14) << i;
    EXPECT_LT(unitError(record(out, i + 1, 2)), 1e-15);
  }
  const double h = std::sqrt(2.0) / 2;
  EXPECT_EQ(Reals(out.begin(), out.begin() + 6), (Reals{0, 1, 1, 0, 0.5 / h, h}));
}

// ---- cohesive elements

Reals cosines(const Quaternion& turn, bool isSpatial) {
  const Matrix R = turnedAxes(turn);
  if (!isSpatial) return {R[0][0], R[1][1], R[0][1], R[1][0]};
  return {R[0][0], R[1][1], R[2][2], R[0][1], R[1][2], R[2][0], R[1][0], R[2][1], R[0][2]};
}

TEST(OrientationOutput, CohesiveSidesAndTheirLocalOrientations) {
  for (const bool isSpatial : {false, true}) {
    const auto entry = isSpatial ? SPX_ODB_ORIENTCNE3D : SPX_ODB_ORIENTCNE2D;
    const int length = isSpatial ? 4 : 2;
    std::vector<Quaternion> turns;
    Random random(3);
    for (const Quaternion& q : manyTurns(4)) {
      const double angle = 2 * std::atan2(std::hypot(q[0], q[1], q[2]), q[3]);
      if (std::abs(std::sin(angle / 2)) < 0.1) continue; // small turns lose digits
      turns.push_back(isSpatial ? q : turnAbout({0, 0, 1}, angle));
    }
    const int n = static_cast<int>(turns.size() / 2), sides = 2 * length;
    std::vector<Quaternion> local;
    Reals table; // five columns a record, from x or from z on
    for (int o = 0; o < 9; ++o) {
      local.push_back(isSpatial ? randomTurn(random) : turnAbout({0, 0, 1}, random.uniform(-3, 3)));
      const Reals q = reals(local.back());
      table.insert(table.end(), q.begin(), q.end());
      table.push_back(kUntouched);
    }
    std::vector<Reals> rows;
    std::vector<int32_t> map, indices;
    for (int e = 0; e < n; ++e) {
      rows.push_back(cosines(turns[2 * e], isSpatial));
      for (double x : cosines(turns[2 * e + 1], isSpatial)) rows.back().push_back(x);
      map.push_back(n - e); // entries in another order
      for (int k = 0; k < 3; ++k) indices.push_back(random.integer(-1, 9));
    }
    // no orientations, all four reals, two indices an entry, one index for both sides
    for (const auto& [count, width] : {std::pair<int32_t, int32_t>{0, 2}, {4, 2}, {4, 3}, {4, 1}}) {
      Reals out(sides * n);
      int32_t counter = 1;
      call(entry, n, counter, width, 5, count, map, indices, table, columns(rows), out);
      EXPECT_EQ(counter, n + 1);
      for (int k = 0; k < 2 * n; ++k) {
        const int side = k % 2, index = count == 0 ? 0 : indices[(map[k / 2] - 1) * width + (width > 1 ? side : 0)];
        const Quaternion o = index > 0 ? local[index - 1] : Quaternion{0, 0, 0, 1}, found = record(out, k + 1, length);
        EXPECT_LT(turnError(found, {o, turns[k]}), 1e-13) << isSpatial << " " << k << " " << count;
        EXPECT_LT(unitError(found), 2e-14);
      }
    }
  }
}

TEST(OrientationOutput, CohesiveRecordsByTheVectorPart) {
  const double h = std::sqrt(0.5);
  const struct {
    Quaternion turn, record;
  } cases[] = {{{0, 0, 0, 1}, {0, 0, 0, 1}},                              // the guard
               {turnAbout({1, 1, 1}, 2 * kPi / 3), {0.5, 0.5, 0.5, 0.5}}, // three equal terms: the third
               {turnAbout({1, -1, 0}, kPi), {-h, h, 0, 0}},               // 1 and 2 equal: the second is positive
               {turnAbout({1, 0, -1}, kPi), {-h, 0, h, 0}},               // 1 and 3 equal: the third is
               {turnAbout({0, 0, -1}, kPi / 2), {0, 0, h, -h}}};          // positive vector, also where w is as large
  for (const auto& c : cases) {
    Reals m = cosines(c.turn, true), out(8);
    for (double& x : m) x = std::abs(x - std::round(x)) < 1e-12 ? std::round(x) + 0.0 : x; // cosines as they are stored
    m.insert(m.end(), m.begin(), m.end());
    int32_t counter = 1;
    call(SPX_ODB_ORIENTCNE3D, 1, counter, 1, 1, 0, nullptr, nullptr, nullptr, m, out);
    for (std::size_t k = 0; k < 8; ++k) EXPECT_NEAR(out[k], c.record[k % 4], 1e-15) << c.turn[0] << " " << k;
  }
  // the plane table: z and w in columns 1 and 2, or in 3 and 4 of spatial ones
  const Reals m = {1, 1, 0, 0, 0, 0, -1, 1}, plane = {0.6, 0.8}, space = {9, 9, 0.6, 0.8};
  const int32_t indices[] = {1, 0};
  for (const int count : {2, 4}) {
    Reals out(4);
    int32_t counter = 1;
    call(SPX_ODB_ORIENTCNE2D, 1, counter, 2, count, count, 1, indices, count == 2 ? plane : space, m, out);
    EXPECT_EQ(Reals(out.begin(), out.begin() + 2), (Reals{0.6, 0.8}));
    EXPECT_DOUBLE_EQ(out[2], h);
    EXPECT_DOUBLE_EQ(out[3], h);
  }
}

// ---- reinforcement

TEST(OrientationOutput, BarsLieAlongAxisOne) {
  const std::vector<Quaternion> turns = manyTurns(5);
  Random random(6);
  std::vector<Reals> axes, q, bars, ends;
  const int n = static_cast<int>(turns.size());
  for (int i = 0; i < n; ++i) {
    const Matrix R = turnedAxes(turns[i]);
    axes.emplace_back();
    for (int k = 0; k < 9; ++k)
      axes.back().push_back(R[k % 3][k / 3] * (k > 5 && i % 2 == 1 ? -1 : 1)); // every second one left-handed
    q.push_back(reals(turns[i]));
    const double angle = i < 8 ? kPi / 4 * i : random.uniform(-4, 4), slope = random.uniform(-4, 4);
    bars.push_back({3 * std::cos(angle), 3 * std::sin(angle)});
    ends.push_back({1, 1 + 2 * std::cos(slope), -1, -1 + 2 * std::sin(slope)});
  }
  Reals fromAxes(4 * n), fromShell(4 * n), fromMeridian(4 * n);
  int32_t a = 1, b = 1, c = 1;
  call(SPX_ODB_ORIENTREBAR, n, a, columns(axes), fromAxes);
  call(SPX_ODB_ORIENTREBSHELL, n, b, columns(q), columns(bars), fromShell);
  call(SPX_ODB_ORIENTREBAXSHELL, n, c, columns(ends), 1, columns(bars), fromMeridian);
  EXPECT_TRUE(a == n + 1 && b == n + 1 && c == n + 1);
  for (int i = 0; i < n; ++i) {
    const double c1 = bars[i][0] / 3, s1 = bars[i][1] / 3, cm = (ends[i][1] - 1) / 2, sm = (ends[i][3] + 1) / 2;
    EXPECT_LT(turnError(record(fromAxes, i + 1), {turns[i]}), 2e-15) << i;
    EXPECT_LT(turnError(record(fromShell, i + 1), {turns[i], turnAbout({0, 0, 1}, std::atan2(s1, c1))}), 4e-15) << i;
    for (const Reals* out : {&fromAxes, &fromShell, &fromMeridian}) EXPECT_LT(unitError(record(*out, i + 1)), 1e-15);
    // along the meridian (cm, sm, 0) and the circumference (0, 0, 1); the third axis is their vector product
    const Matrix wanted = {{{c1 * cm, -s1 * cm, sm}, {c1 * sm, -s1 * sm, -cm}, {s1, c1, 0}}};
    EXPECT_LT(distance(turnedAxes(record(fromMeridian, i + 1)), wanted), 4e-15) << i;
  }
}

// A power of two takes a direction to any length and changes no bit of it, down to the last double and up to the first.
TEST(OrientationOutput, DirectionsMayHaveAnyLength) {
  const double q[] = {0.5, -0.5, 0.5, 0.5};
  const auto records = [&](double bar, double end) {
    const Reals bars = {3 * bar, -2 * bar}, ends = {end, -2 * end, 3 * end, -2 * end};
    Reals out(10);
    int32_t a = 1, b = 1, c = 1;
    call(SPX_ODB_ORIENTREBSHELL, 1, a, q, bars, out);
    call(SPX_ODB_ORIENTREBAXSHELL, 1, b, ends, 1, bars, &out[4]);
    call(SPX_ODB_ORIENT2DBEAM, 1, c, ends, 1, &out[8]);
    return out;
  };
  const Reals expected = records(1, 1);
  EXPECT_LT(turnError(spatial(expected[8], expected[9]), {turnAbout({0, 0, 1}, std::atan2(-5, -3))}), 2e-15);
  for (const int power : {-1074, -1000, -560, -500, -499, 499, 500, 530, 1000, 1021}) {
    const double length = std::ldexp(1, power), other = std::ldexp(1, std::min(-power, 1021));
    EXPECT_EQ(records(length, 1), expected) << power;
    EXPECT_EQ(records(1, length), expected) << power;
    EXPECT_EQ(records(length, other), expected) << power;
  }
}

// ---- where records lie

// Two parts of three are defined for these beams; the last of them moves on to the next records.
TEST(OrientationRecords, PartsOfBeams) {
  const int n = 4;
  Reals out(6 * n, kUntouched);
  int32_t counter = 1;
  for (int part = 1; part <= 3; ++part) {
    EXPECT_EQ(counter, 1);
    call(SPX_ODB_ORIENT2DL3BEAM, n, counter, 3, part, nullptr, nullptr, out);
  }
  EXPECT_EQ(counter, n + 1);
  for (int k = 0; k < 6 * n; ++k) EXPECT_EQ(out[k], k % 6 > 3 ? kUntouched : k % 2) << k;
}

} // namespace
