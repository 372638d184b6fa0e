#include "solver/parallel/faults.h"

#include "solver/model/model.h"

#include <algorithm>

namespace sharedanalysis::solver {
namespace {

int64_t smallestOf(const Ranks& ranks, int64_t value) {
  std::vector<int64_t> one{value};
  ranks.smallest(one);
  return one[0];
}

} // namespace

void Faults::throwFirst(const Ranks& ranks) const {
  const int64_t place = smallestOf(ranks, place_);
  if (place == kNowhere) return;
  const int64_t teller = smallestOf(ranks, place == place_ ? ranks.rank() : kNowhere);
  std::vector<char> text;
  if (teller == ranks.rank()) text.assign(text_.begin(), text_.end());
  text = ranks.joined(text);
  throw InputError({text.begin(), text.end()});
}

void Found::join(const Ranks& ranks) {
  constexpr int64_t kNone = std::numeric_limits<int64_t>::max();
  const int64_t first = smallestOf(ranks, place);
  number = smallestOf(ranks, first == place && count > 0 ? number : kNone);
  count = ranks.sum(count);
  place = first;
}

std::optional<int64_t> firstUnlike(const Ranks& ranks, uint64_t own) {
  std::vector<uint64_t> roots{own};
  ranks.broadcast(roots);
  const int64_t first = smallestOf(ranks, own == roots[0] ? ranks.size() : ranks.rank());
  return first < ranks.size() ? std::optional(first) : std::nullopt;
}

std::vector<int64_t> firstOfAll(const Ranks& ranks, std::vector<int64_t> own, std::size_t most) {
  const auto cut = [&](std::vector<int64_t>& numbers) {
    std::sort(numbers.begin(), numbers.end());
    if (numbers.size() > most) numbers.resize(most);
  };
  cut(own);
  std::vector<int64_t> all = ranks.joined(own);
  cut(all);
  return all;
}

} // namespace sharedanalysis::solver
