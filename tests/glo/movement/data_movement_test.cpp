// Gather, scatter, assembly, fills and sorts against loops written from their definitions.
#include "glo.h"
#include "tests/support/random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <numeric>

namespace {

using sharedanalysis::test::Random;

std::vector<double> numbers(size_t n, uint64_t seed) {
  Random random(seed);
  std::vector<double> x(n);
  for (double& v : x) v = random.uniform(-9, 9);
  return x;
}

// Maps with repeats, one value throughout, straight up, and straight up but for one entry.
std::vector<std::vector<int32_t>> maps(int n, int entities) {
  Random random(41);
  std::vector<std::vector<int32_t>> all(4, std::vector<int32_t>(n, 7));
  for (int32_t& e : all[0]) e = random.integer(1, entities);
  std::iota(all[2].begin(), all[2].end(), 3);
  std::iota(all[3].begin(), all[3].end(), 3);
  std::swap(all[3][n / 2], all[3][n / 2 + 1]);
  return all;
}

constexpr int32_t n = 45, entities = 60, unread = -99;

TEST(ColumnLayout, GatherScatterAndAssemble) {
  const int32_t ncomp = 3, ld = entities + 2;
  const std::vector<double> G = numbers(ld * ncomp, 42), L = numbers(n * ncomp, 43);
  std::vector<int32_t> Gi(G.size());
  for (size_t k = 0; k < G.size(); ++k) Gi[k] = static_cast<int32_t>(100 * G[k]);
  for (const auto& map : maps(n, entities)) {
    std::vector<double> gathered(n * ncomp), set = G, added = G, cleared = G, setExpected = G, addExpected = G,
                                             clearExpected = G;
    std::vector<int32_t> gatheredInt(n * ncomp);
    GLO_UTI_GATHERR(&n, &ncomp, &ld, map.data(), gathered.data(), G.data());
    GLO_UTI_GATHERI(&n, &ncomp, &ld, map.data(), gatheredInt.data(), Gi.data());
    GLO_UTI_SCATTERR(&n, &ncomp, &ld, map.data(), L.data(), set.data());
    GLO_OPE_ASSEM(&n, &ncomp, &ld, added.data(), L.data(), map.data());
    const double value = 2.5;
    GLO_OPE_INITASSEM(&value, &n, &ncomp, &ld, cleared.data(), map.data());
    for (int k = 0; k < ncomp; ++k)
      for (int i = 0; i < n; ++i) {
        const int g = k * ld + map[i] - 1, l = k * n + i;
        EXPECT_EQ(gathered[l], G[g]);
        EXPECT_EQ(gatheredInt[l], Gi[g]);
        setExpected[g] = L[l];
        addExpected[g] += L[l];
        clearExpected[g] = value;
      }
    EXPECT_EQ(set, setExpected);
    EXPECT_EQ(added, addExpected);
    EXPECT_EQ(cleared, clearExpected);
  }
  // a single component and a column of several
  const std::vector<int32_t> map = maps(n, entities)[0];
  const int32_t comp = 2;
  std::vector<double> one = G, expected = G;
  GLO_OPE_HGENASSEMLASTCOMP(&n, &comp, &unread, &ld, one.data(), L.data(), map.data());
  for (int i = 0; i < n; ++i) expected[ld + map[i] - 1] += L[i];
  EXPECT_EQ(one, expected);
}

TEST(RecordLayout, GeneralDimensionsMoveTheFirstComponentsOrTheLast) {
  const int32_t ld = 5;
  const std::vector<double> G = numbers(ld * entities, 44), L = numbers(3 * n, 45);
  const auto map = maps(n, entities)[0];
  for (int32_t ndim : {3, 2, 1, 0, 4, -1}) {
    const int count = ndim == 2 || ndim == 3 ? ndim : 1, first = count == 1 ? ld - 1 : 0;
    std::vector<double> gathered(n * count, -7), set = G, added = G, setExpected = G, addExpected = G;
    GLO_UTI_GENGATHERR(&n, &ndim, &ld, &unread, map.data(), gathered.data(), G.data());
    GLO_UTI_GENSCATTERR(&n, &ndim, &ld, &unread, map.data(), L.data(), set.data());
    GLO_OPE_GENASSEM(&n, &ndim, &ld, &unread, added.data(), L.data(), map.data());
    for (int i = 0; i < n; ++i)
      for (int k = 0; k < count; ++k) {
        const int g = (map[i] - 1) * ld + first + k;
        EXPECT_EQ(gathered[k * n + i], G[g]);
        setExpected[g] = L[k * n + i];
        addExpected[g] += L[k * n + i];
      }
    EXPECT_EQ(set, setExpected) << ndim;
    EXPECT_EQ(added, addExpected) << ndim;
  }
  for (int32_t comp = 1; comp <= ld; ++comp) {
    std::vector<double> out(n), mpc(n), set = G, expected = G;
    GLO_UTI_GENGATHER1COMP(&n, &comp, &ld, &unread, map.data(), out.data(), G.data());
    GLO_UTI_MPCGATHERR(&n, &ld, &comp, &unread, map.data(), mpc.data(), G.data());
    GLO_UTI_MPCSCATTERR(&n, &ld, &comp, &unread, map.data(), L.data(), set.data());
    for (int i = 0; i < n; ++i) {
      EXPECT_EQ(out[i], G[(map[i] - 1) * ld + comp - 1]);
      expected[(map[i] - 1) * ld + comp - 1] = L[i];
    }
    EXPECT_EQ(out, mpc);
    EXPECT_EQ(set, expected);
  }
}

TEST(RecordLayout, WholeRecordsOfEveryLength) {
  const auto map = maps(n, entities)[0];
  for (int32_t ncomp = 0; ncomp <= 7; ++ncomp) {
    const std::vector<double> G = numbers(ncomp * entities, 46), L = numbers(ncomp * n, 47);
    std::vector<double> gathered(L.size()), set = G, expected = G, largest = G, largestExpected = G;
    GLO_ASM_GATHER(&n, &ncomp, &unread, gathered.data(), G.data(), map.data());
    GLO_ASM_SCATTER(&n, &ncomp, &unread, L.data(), set.data(), map.data());
    const int32_t first = 4, last = n - 2;
    GLO_OPE_GENASSEMMAX(&first, &last, &unread, &ncomp, &unread, largest.data(), L.data(), map.data());
    for (int i = 0; i < n; ++i)
      for (int k = 0; k < ncomp; ++k) {
        const int g = (map[i] - 1) * ncomp + k, l = i * ncomp + k;
        EXPECT_EQ(gathered[l], G[g]);
        expected[g] = L[l];
        if (i >= first - 1 && i < last) largestExpected[g] = std::max(largestExpected[g], L[l]);
      }
    EXPECT_EQ(set, expected) << ncomp;
    EXPECT_EQ(largest, largestExpected) << ncomp;
  }
  std::vector<int32_t> G(entities), L(n), gathered(n);
  std::iota(G.begin(), G.end(), 1000);
  std::iota(L.begin(), L.end(), -50);
  std::vector<int32_t> set = G, zeroed = G, setExpected = G, zeroExpected = G;
  const int32_t zero = 0;
  GLO_ASM_GATHERINT(&n, &unread, gathered.data(), G.data(), map.data());
  GLO_ASM_SCATTERINT(&n, &unread, L.data(), set.data(), map.data());
  GLO_ASM_INITINT(&n, &unread, &zero, zeroed.data(), map.data());
  for (int i = 0; i < n; ++i) {
    EXPECT_EQ(gathered[i], G[map[i] - 1]);
    setExpected[map[i] - 1] = L[i];
    zeroExpected[map[i] - 1] = 0;
  }
  EXPECT_EQ(set, setExpected);
  EXPECT_EQ(zeroed, zeroExpected);
}

TEST(Extrema, TiesAndNaNTakeTheLocalValueAndTwoComponentsAreAll) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const int32_t first = 1, last = 3, two = 2;
  const int32_t map[3] = {1, 2, 3};
  const double L[6] = {0.0, nan, 5, 1, -0.0, 7};
  const double start[7] = {-0.0, 2, nan, 4, 0.0, 9, 33};
  double G[7];
  std::copy(start, start + 7, G);
  GLO_OPE_GENASSEMMAX(&first, &last, &unread, &two, &unread, G, L, map);
  EXPECT_FALSE(std::signbit(G[0])) << "a tie takes the local zero";
  EXPECT_TRUE(std::isnan(G[1])) << "a NaN on either side takes the local value";
  EXPECT_EQ(G[2], 5);
  EXPECT_EQ(G[3], 4);
  EXPECT_TRUE(std::signbit(G[4]));
  EXPECT_EQ(G[5], 9);
  std::copy(start, start + 7, G);
  GLO_OPE_GENASSEMMIN(&first, &last, &unread, &unread, G, L, map);
  EXPECT_TRUE(std::isnan(G[1]));
  EXPECT_EQ(G[2], 5);
  EXPECT_EQ(G[3], 1);
  EXPECT_EQ(G[5], 7);
  EXPECT_EQ(G[6], 33);
  std::copy(start, start + 7, G);
  const int32_t three = 3;
  GLO_OPE_GENASSEMMAX(&three, &two, &unread, &two, &unread, G, L, map);
  GLO_OPE_GENASSEMMIN(&three, &two, &unread, &unread, G, L, map);
  EXPECT_EQ(G[5], 9) << "an empty range";
}

TEST(TwoTargets, SecondStageGoesThroughBothMaps) {
  const auto map = maps(n, entities)[0];
  Random random(48);
  std::vector<int32_t> map2(entities);
  const int32_t rows = 20;
  for (int32_t& r : map2) r = random.integer(1, rows);
  for (int32_t K : {0, 1, 3})
    for (int32_t m : {0, 1, 30, n}) {
      const std::vector<double> L = numbers(n * (K + 1), 49);
      std::vector<double> G1 = numbers(entities, 50), G2 = numbers(rows * 3, 51), expected1 = G1, expected2 = G2;
      GLO_OPE_HASSEM(&n, &m, &unread, &rows, &K, map.data(), map2.data(), G1.data(), G2.data(), L.data());
      for (int i = 0; i < n; ++i) expected1[map[i] - 1] += L[i];
      for (int k = 0; k < K; ++k)
        for (int i = 0; i < m; ++i) expected2[k * rows + map2[map[i] - 1] - 1] += L[(k + 1) * n + i];
      EXPECT_EQ(G1, expected1);
      EXPECT_EQ(G2, expected2);
    }
}

TEST(Fills, CopiesSumsAndFills) {
  std::vector<double> a = numbers(n, 52), b = numbers(n, 53), c(n), filled(n + 1, 4);
  const double value = -0.0;
  GLO_UTI_COPYR(&n, a.data(), c.data());
  EXPECT_EQ(c, a);
  GLO_UTI_COPYR(&n, c.data(), c.data());
  EXPECT_EQ(c, a);
  GLO_UTI_VADDR(&n, c.data(), a.data(), b.data());
  GLO_UTI_VADDR(&n, a.data(), a.data(), b.data());
  EXPECT_EQ(c, a);
  EXPECT_EQ(c[7], numbers(n, 52)[7] + b[7]);
  GLO_UTI_BROADCASTR(&n, &value, filled.data());
  EXPECT_TRUE(std::signbit(filled[n - 1]));
  GLO_UTI_BROADCAST0D(&n, filled.data());
  EXPECT_FALSE(std::signbit(filled[0]));
  EXPECT_EQ(filled[n], 4);
}

// Straight insertion as it is defined.
template <class Key>
std::vector<int32_t> insertion(std::vector<int32_t> list, const std::vector<Key>& keys) {
  for (size_t k = 1; k < list.size(); ++k)
    for (size_t j = k; j > 0 && keys[list[j - 1] - 1] > keys[list[j] - 1]; --j) std::swap(list[j - 1], list[j]);
  return list;
}

TEST(Sorts, GiveTheOrderOfStraightInsertion) {
  Random random(54);
  const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
  for (int length : {0, 1, 2, 3, 4, 63, 64, 65, 128, 129, 200, 1000})
    for (int variety : {1, 3, 100000})
      for (bool withNaN : {false, true}) {
        std::vector<int32_t> list(length), keys(length + 5);
        std::vector<double> real(length + 5);
        std::iota(list.begin(), list.end(), 4);
        std::shuffle(list.begin(), list.end(), std::mt19937(static_cast<unsigned>(length)));
        for (size_t k = 0; k < keys.size(); ++k) {
          keys[k] = random.integer(-variety, variety);
          real[k] = keys[k] == variety ? inf : keys[k] == 0 ? (k % 2 ? 0.0 : -0.0) : keys[k] / 7.0;
          if (withNaN && k % 11 == 3) real[k] = nan;
        }
        std::vector<int32_t> byInteger = list, byReal = list;
        GLO_UTI_INSSORTI(byInteger.data(), keys.data(), &length);
        GLO_UTI_INSSORTR(byReal.data(), real.data(), &length);
        EXPECT_EQ(byInteger, insertion(list, keys)) << length;
        EXPECT_EQ(byReal, insertion(list, real)) << length;
      }
  const std::vector<int32_t> keys = {3, 1, 3, 2};
  std::vector<int32_t> list = {1, 2, 3, 4};
  const int32_t four = 4;
  GLO_UTI_INSSORTI(list.data(), keys.data(), &four);
  EXPECT_EQ(list, (std::vector<int32_t>{2, 4, 1, 3}));
}

TEST(Sorts, LongListsTakeNoQuadraticTime) {
  const int32_t length = 1000000;
  {
    std::vector<double> keys(length);
    std::vector<int32_t> list(length), expected(length);
    for (int32_t k = 0; k < length; ++k) keys[k] = -k; // falling, with one NaN: both sides of it are turned round
    std::iota(list.begin(), list.end(), 1);
    keys[length / 3] = std::numeric_limits<double>::quiet_NaN();
    expected = list;
    std::reverse(expected.begin(), expected.begin() + length / 3);
    std::reverse(expected.begin() + length / 3 + 1, expected.end());
    GLO_UTI_INSSORTR(list.data(), keys.data(), &length);
    EXPECT_EQ(list, expected);
  }
  std::vector<int32_t> list(length), keys(length);
  std::iota(list.begin(), list.end(), 1);
  for (int32_t k = 0; k < length; ++k) keys[k] = length - k / 2;
  GLO_UTI_INSSORTI(list.data(), keys.data(), &length);
  EXPECT_TRUE(std::is_sorted(list.begin(), list.end(), [&](int32_t a, int32_t b) {
    return keys[a - 1] != keys[b - 1] ? keys[a - 1] < keys[b - 1] : a < b;
  }));
}

TEST(Sorts, OrderCheckNeverClearsItsFlagAndWrapsAround) {
  const auto check = [](std::vector<int32_t> list, int32_t flag) {
    const int32_t length = static_cast<int32_t>(list.size());
    GLO_UTI_CHKSORTI(&flag, list.data(), &length);
    return flag;
  };
  EXPECT_EQ(check({1, 1, 2}, 0), 0);
  EXPECT_EQ(check({1, 1, 2}, 5), 5);
  EXPECT_EQ(check({2, 1}, 0), 1);
  EXPECT_EQ(check({}, 0), 0);
  EXPECT_EQ(check({5}, 0), 0);
  EXPECT_EQ(check({2000000000, -2000000000}, 0), 0) << "the difference is taken modulo 2^32";
  EXPECT_EQ(check({-2000000000, 2000000000}, 0), 1);
}

} // namespace
