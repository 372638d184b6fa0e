// Values in the order of the mesh, slice by slice.
#include "solver/parallel/ordered.h"
#include "tests/support/files.h"

namespace {

using namespace sharedanalysis::test;
using sharedanalysis::solver::Ordered;
using sharedanalysis::solver::Ranks;

// Every slice lies in one chunk, they come in order, and each value once.
TEST(Ordered, SlicesAreWholeAndInOrder) {
  const Ranks ranks;
  for (const int64_t count : {0, 1, 64, 65, 65536, 200001})
    for (const int components : {1, 3, 20})
      for (const int64_t chunk : {0, 64, 12501}) {
        std::vector<int64_t> places(static_cast<std::size_t>(count));
        std::iota(places.begin(), places.end(), 0);
        for (const Ordered& order : {Ordered(count), Ordered(ranks, places, count)}) {
          int64_t next = 0, sliced = 0;
          bool isRight = true;
          order.stream<int64_t>(
              components,
              [&](std::size_t first, std::size_t end, int64_t* values) {
                for (std::size_t k = first * components; k < end * components; ++k) *values++ = static_cast<int64_t>(k);
              },
              [&](int64_t first, std::span<const int64_t> values) {
                isRight = isRight && first == sliced && !values.empty() && values.size() <= (1U << 18);
                sliced += static_cast<int64_t>(values.size()) / components;
                isRight = isRight && (chunk == 0 || first / chunk == (sliced - 1) / chunk);
                for (const int64_t value : values) isRight = isRight && value == next++;
              },
              chunk);
          EXPECT_TRUE(isRight && sliced == count && next == count * components) << count << " " << components;
        }
      }
}

TEST(Ordered, EntitiesOfNoRankOrOfSeveralAreErrors) {
  const struct {
    std::vector<int64_t> places;
    int64_t whole;
    const char* text;
  } rows[] = {{{0, 2}, 3, "entity 1 is of no rank"},
              {{0, 1}, 3, "entity 2 is of no rank"},
              {{1, 2}, 3, "entity 0 is of no rank"},
              {{0, 1, 1, 2}, 3, "entity 1 is of several ranks"}};
  for (const auto& row : rows) {
    const auto stream = [&] {
      const auto fill = [](std::size_t first, std::size_t end, double* values) {
        std::fill_n(values, end - first, 0.0);
      };
      Ordered(Ranks(), row.places, row.whole).stream<double>(1, fill, [](int64_t, std::span<const double>) {});
    };
    EXPECT_EQ(thrown<std::logic_error>(stream), row.text);
  }
}

} // namespace
