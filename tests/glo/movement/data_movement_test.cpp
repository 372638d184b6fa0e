// Gather, scatter, assembly and sorts against loops written from their definitions.
#include "bench/plain/sort.h"
#include "glo.h"
#include "tests/support/call.h"
#include "tests/support/random.h"

namespace {

using namespace sharedanalysis::test;

constexpr int32_t n = 45, unread = -99, entities = 460, rows = entities + 2, ld = 7;

template <class Number>
std::vector<Number> numbers(std::size_t count, uint64_t seed) {
  Random random(seed);
  std::vector<Number> x(count);
  for (Number& v : x) v = static_cast<Number>(random.uniform(-2e9, 2e9));
  return x;
}

// Maps with repeats, one value throughout, straight up, and straight up but for one entry.
std::vector<std::vector<int32_t>> maps(int points) {
  Random random(41);
  std::vector<std::vector<int32_t>> all(4, std::vector<int32_t>(points, 7));
  for (int32_t& e : all[0]) e = random.integer(1, entities);
  for (int k : {2, 3}) std::iota(all[k].begin(), all[k].end(), 3);
  std::swap(all[3][points / 2], all[3][points / 2 + 1]);
  return all;
}

// One number of each component for each point: from the global array, into it, added or compared there, points in their order.
enum class Does { Gather, Set, Add, Largest };
using enum Does;
template <class Number>
struct Move {
  const char* name;
  std::function<void(const int32_t* map, Number* L, Number* G)> run;
  Does does;
  int components;
  struct {
    int point, component;
  } local; // strides
  struct {
    int first, entity, component;
  } global;
  int points = n;

  void expectItsNumbers() const {
    for (const auto& map : maps(points)) {
      std::vector<Number> L = numbers<Number>(10 * points, 42), G = numbers<Number>(8 * entities, 43), l = L, g = G;
      run(map.data(), L.data(), G.data());
      for (int i = 0; i < points; ++i)
        for (int k = 0; k < components; ++k) {
          Number& inside = l[i * local.point + k * local.component];
          Number& outside = g[global.first + (map[i] - 1) * global.entity + k * global.component];
          const double sum = static_cast<double>(inside) + outside; // integers wrap around
          if (does == Gather) inside = outside;
          if (does == Set) outside = inside;
          if (does == Largest) outside = std::max(outside, inside);
          if (does == Add)
            outside = static_cast<Number>(std::is_integral_v<Number> ? std::remainder(sum, 0x1p32) : sum);
        }
      EXPECT_EQ(L, l) << name << " with " << components;
      EXPECT_EQ(G, g) << name << " with " << components;
    }
  }
};
#define MOVE(entry, ...) #entry, [=](const int32_t* map, auto* L, auto* G) { call(entry, __VA_ARGS__); }

TEST(ColumnLayout, EveryMember) {
  const int32_t ncomp = 3, comp = 2;
  // clang-format off
  const Move<double> list[] = {
      {MOVE(GLO_UTI_GATHERR, n, ncomp, rows, map, L, G), Gather, ncomp, {1, n}, {0, 1, rows}},
      {MOVE(GLO_UTI_SCATTERR, n, ncomp, rows, map, L, G), Set, ncomp, {1, n}, {0, 1, rows}},
      {MOVE(GLO_OPE_ASSEM, n, ncomp, rows, G, L, map), Add, ncomp, {1, n}, {0, 1, rows}},
      {MOVE(GLO_OPE_INITASSEM, *L, n, ncomp, rows, G, map), Set, ncomp, {0, 0}, {0, 1, rows}},
      {MOVE(GLO_OPE_HGENASSEMLASTCOMP, n, comp, unread, rows, G, L, map), Add, 1, {1, n}, {rows, 1, rows}}};
  // clang-format on
  for (const auto& move : list) move.expectItsNumbers();
  Move<int32_t>{MOVE(GLO_UTI_GATHERI, n, ncomp, rows, map, L, G), Gather, ncomp, {1, n}, {0, 1, rows}}
      .expectItsNumbers();
}

TEST(RecordLayout, EveryMember) {
  std::vector<Move<double>> list;
  // clang-format off
  for (int32_t ndim : {3, 2, 1, 0, 4, -1}) { // the first two or three components, or the last
    const int count = ndim == 2 || ndim == 3 ? ndim : 1, first = count == 1 ? ld - 1 : 0;
    list.insert(list.end(), {
        {MOVE(GLO_UTI_GENGATHERR, n, ndim, ld, unread, map, L, G), Gather, count, {1, n}, {first, ld, 1}},
        {MOVE(GLO_UTI_GENSCATTERR, n, ndim, ld, unread, map, L, G), Set, count, {1, n}, {first, ld, 1}},
        {MOVE(GLO_OPE_GENASSEM, n, ndim, ld, unread, G, L, map), Add, count, {1, n}, {first, ld, 1}}});
  }
  for (int32_t comp = 1; comp <= ld; ++comp) // one component
    list.insert(list.end(), {
        {MOVE(GLO_UTI_GENGATHER1COMP, n, comp, ld, unread, map, L, G), Gather, 1, {1, n}, {comp - 1, ld, 1}},
        {MOVE(GLO_UTI_MPCGATHERR, n, ld, comp, unread, map, L, G), Gather, 1, {1, n}, {comp - 1, ld, 1}},
        {MOVE(GLO_UTI_MPCSCATTERR, n, ld, comp, unread, map, L, G), Set, 1, {1, n}, {comp - 1, ld, 1}},
        {MOVE(GLO_OPE_GENASSEM1, n, comp, ld, unread, G, L, map), Add, 1, {1, n}, {comp - 1, ld, 1}}});
  for (int32_t c = 0; c <= 7; ++c) { // whole records, and the first components of records
    list.insert(list.end(), {
        {MOVE(GLO_ASM_GATHER, n, c, unread, L, G, map), Gather, c, {c, 1}, {0, c, 1}},
        {MOVE(GLO_ASM_SCATTER, n, c, unread, L, G, map), Set, c, {c, 1}, {0, c, 1}},
        {MOVE(GLO_OPE_GENASSEMMAX, 1, n, unread, c, unread, G, L, map), Largest, c, {c, 1}, {0, c, 1}},
        {MOVE(GLO_UTI_EXFVGATHERR, n, c, ld, map, L, G), Gather, c, {1, n}, {0, ld, 1}}});
    for (auto scatter : {GLO_UTI_INFLSCATTERR, GLO_UTI_EULINFLSCATTERR, GLO_UTI_EXCHSCATTERR})
      list.push_back({MOVE(scatter, n, c, ld, map, L, G), Set, c, {1, n}, {0, ld, 1}});
  }
  list.insert(list.end(), {
      {MOVE(GLO_UTI_GATHERLASTCOMPR, n, ld, map, L, G), Gather, 1, {1, n}, {ld - 1, ld, 1}},
      {MOVE(GLO_UTI_ROTVECTGATHERR, n, ld, map, L, G), Gather, 3, {1, n}, {3, ld, 1}},
      {MOVE(GLO_OPE_GENASSEM2, n, unread, ld, unread, G, L, map), Add, 2, {1, n}, {0, ld, 1}},
      {MOVE(GLO_OPE_GENASSEMACOINF, n, unread, ld, unread, G, L, map), Add, 1, {1, n}, {ld - 1, ld, 1}},
      {MOVE(GLO_ASM_GATHERMASS, n, unread, L, G, map), Gather, 1, {1, 1}, {0, 1, 1}},
      {MOVE(GLO_ASM_GATHERHFLUX, n, unread, L, G, map), Gather, 1, {1, 1}, {0, 1, 1}},
      {MOVE(GLO_ASM_GATHERNIR2NDMOM, n, unread, L, G, map), Gather, 6, {6, 1}, {0, 6, 1}},
      {MOVE(GLO_ASM_SCATTERNIR2NDMOM, n, unread, L, G, map), Set, 6, {6, 1}, {0, 6, 1}},
      {MOVE(GLO_ASM_SCATTERMASS1, n, unread, L, G, map), Set, 1, {1, 0}, {0, 1, 1}},
      {MOVE(GLO_ASM_SCATTERMASS2, n, unread, L, G, map), Set, 2, {1, 0}, {0, 2, 1}},
      {MOVE(GLO_ASM_SCATTERMASS3, n, unread, L, G, map), Set, 3, {1, 0}, {0, 3, 1}}});
  for (const auto& move : list) move.expectItsNumbers();
  const Move<int32_t> integers[] = {
      {MOVE(GLO_ASM_GATHERINT, n, unread, L, G, map), Gather, 1, {1, 1}, {0, 1, 1}},
      {MOVE(GLO_ASM_SCATTERINT, n, unread, L, G, map), Set, 1, {1, 1}, {0, 1, 1}},
      {MOVE(GLO_ASM_INITINT, n, unread, *L, G, map), Set, 1, {0, 0}, {0, 1, 1}},
      {MOVE(GLO_OPE_GENASSEMINT, n, 2, ld, unread, G, L, map), Add, 2, {1, n}, {0, ld, 1}}};
  // clang-format on
  for (const auto& move : integers) move.expectItsNumbers();
}

TEST(ElementRecords, AreGatheredNodeByNodeAndAddedBack) {
  const int32_t ncomp = 3;
  const auto expect = [&](auto gather, int nodes) {
    const int all = n * nodes;
    Move<double>{MOVE(gather, n, ncomp, ld, map, L, G), Gather, ncomp, {1, all}, {0, ld, 1}, all}.expectItsNumbers();
  };
  expect(GLO_UTI_C3D10MGATHER, 10);
  expect(GLO_UTI_C3D10MFACEGATHER, 6);
  expect(GLO_UTI_COH2DGATHERR, 4);
  expect(GLO_UTI_COH3DGATHEREXFV, 8);
  expect(GLO_UTI_ACOINFGATHERR, 4);
  expect(GLO_UTI_GENGATHERRCONTSHELL, 8);
  // whole numbers: the order of adding does not show
  const auto map = maps(8 * n)[0];
  Values L(3 * map.size()), sums(ld * entities), expected = sums;
  std::iota(L.begin(), L.end(), 1);
  call(GLO_OPE_GENASSEMCONTSHELL, n, ncomp, ld, unread, sums, L, map);
  for (std::size_t k = 0; k < L.size(); ++k) expected[(map[k % map.size()] - 1) * ld + k / map.size()] += L[k];
  EXPECT_EQ(sums, expected);
}

TEST(Extrema, TiesAndNaNTakeTheLocalValueAndTwoComponentsAreAll) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const int32_t map[3] = {1, 2, 3};
  const Values L = {0.0, nan, 5, 1, -0.0, 7}, start = {-0.0, 2, nan, 4, 0.0, 9, 33};
  const auto expect = [&](auto kernel, int first, int last, const Values& expected, const auto&... sizes) {
    Values G = start;
    call(kernel, first, last, unread, sizes..., unread, G, L, map);
    for (std::size_t k = 0; k < G.size(); ++k)
      EXPECT_TRUE(std::isnan(expected[k]) ? std::isnan(G[k])
                                          : G[k] == expected[k] && std::signbit(G[k]) == std::signbit(expected[k]))
          << first << " " << k << ": " << G[k];
  };
  const int32_t two = 2;
  expect(GLO_OPE_GENASSEMMAX, 1, 3, {0.0, nan, 5, 4, -0.0, 9, 33}, two);
  expect(GLO_OPE_GENASSEMMIN, 1, 3, {0.0, nan, 5, 1, -0.0, 7, 33});
  expect(GLO_OPE_GENASSEMMAX, 2, 2, {-0.0, 2, 5, 4, 0.0, 9, 33}, two);
  expect(GLO_OPE_GENASSEMMIN, 2, 2, {-0.0, 2, 5, 1, 0.0, 9, 33});
  expect(GLO_OPE_GENASSEMMAX, 3, 2, start, two);
  expect(GLO_OPE_GENASSEMMIN, 3, 2, start);
}

TEST(TwoTargets, SecondStageGoesThroughBothMaps) {
  const auto map = maps(n)[0];
  Random random(48);
  std::vector<int32_t> map2(entities);
  const int32_t targets = 20;
  for (int32_t& r : map2) r = random.integer(1, targets);
  for (int32_t K : {0, 1, 3})
    for (int32_t m : {0, 1, 30, n}) {
      const Values L = numbers<double>(n * (K + 1), 49);
      Values G1 = numbers<double>(entities, 50), G2 = numbers<double>(targets * 3, 51), first = G1, second = G2;
      call(GLO_OPE_HASSEM, n, m, unread, targets, K, map, map2, G1, G2, L);
      for (int i = 0; i < n; ++i) first[map[i] - 1] += L[i];
      for (int k = 0; k < K; ++k)
        for (int i = 0; i < m; ++i) second[k * targets + map2[map[i] - 1] - 1] += L[(k + 1) * n + i];
      EXPECT_EQ(G1, first);
      EXPECT_EQ(G2, second);
    }
}

TEST(Sorts, GiveTheOrderOfStraightInsertion) {
  Random random(54);
  const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
  for (int length : {0, 1, 2, 3, 4, 63, 64, 65, 128, 129, 200, 1000})
    for (int variety : {1, 3, 100000})
      for (bool withNaN : {false, true}) {
        std::vector<int32_t> list(length), keys(length + 5);
        Values real(length + 5);
        std::iota(list.begin(), list.end(), 4);
        std::shuffle(list.begin(), list.end(), std::mt19937(static_cast<unsigned>(length)));
        for (size_t k = 0; k < keys.size(); ++k) {
          keys[k] = random.integer(-variety, variety);
          real[k] = keys[k] == variety ? inf : keys[k] == 0 ? (k % 2 ? 0.0 : -0.0) : keys[k] / 7.0;
          if (withNaN && k % 11 == 3) real[k] = nan;
        }
        std::vector<int32_t> byInteger = list, byReal = list, expectedInteger = list, expectedReal = list;
        call(GLO_UTI_INSSORTI, byInteger, keys, length);
        call(GLO_UTI_INSSORTR, byReal, real, length);
        plain::insertionSort(expectedInteger.data(), keys.data(), length);
        plain::insertionSort(expectedReal.data(), real.data(), length);
        EXPECT_EQ(byInteger, expectedInteger) << length;
        EXPECT_EQ(byReal, expectedReal) << length;
      }
}

TEST(Sorts, LongListsTakeNoQuadraticTime) {
  const int32_t length = 1000000;
  std::vector<int32_t> list(length), keys(length);
  Values real(length);
  for (int32_t k = 0; k < length; ++k) keys[k] = length - k / 2, real[k] = -k;
  real[length / 3] = std::numeric_limits<double>::quiet_NaN(); // both sides of it are turned round
  std::iota(list.begin(), list.end(), 1);
  std::vector<int32_t> byReal = list, expected = list;
  std::reverse(expected.begin(), expected.begin() + length / 3);
  std::reverse(expected.begin() + length / 3 + 1, expected.end());
  call(GLO_UTI_INSSORTR, byReal, real, length);
  EXPECT_EQ(byReal, expected);
  expected = list;
  std::stable_sort(expected.begin(), expected.end(), [&](int32_t a, int32_t b) { return keys[a - 1] < keys[b - 1]; });
  call(GLO_UTI_INSSORTI, list, keys, length);
  EXPECT_EQ(list, expected);
}

TEST(Sorts, OrderCheckNeverClearsItsFlagAndWrapsAround) {
  const struct {
    std::vector<int32_t> list;
    int32_t before, after;
  } cases[] = {{{1, 1, 2}, 0, 0},
               {{1, 1, 2}, 5, 5},
               {{2, 1}, 0, 1},
               {{}, 0, 0},
               {{5}, 0, 0},
               {{2000000000, -2000000000}, 0, 0}, // the difference is taken modulo 2^32
               {{-2000000000, 2000000000}, 0, 1}};
  for (const auto& c : cases) {
    int32_t flag = c.before;
    call(GLO_UTI_CHKSORTI, flag, c.list, static_cast<int32_t>(c.list.size()));
    EXPECT_EQ(flag, c.after);
  }
}

} // namespace
