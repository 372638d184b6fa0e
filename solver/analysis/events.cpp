#include "solver/analysis/events.h"

#include <algorithm>
#include <bit>
#include <tuple>

namespace sharedanalysis::solver {

std::vector<BrickEvent> allEvents(const Ranks& ranks, const std::vector<BrickEvent>& own) {
  constexpr std::size_t kWords = 5;
  std::vector<int64_t> words;
  words.reserve(kWords * own.size());
  for (const BrickEvent& e : own)
    words.insert(words.end(), {e.increment, std::bit_cast<int64_t>(e.time), e.element, static_cast<int64_t>(e.kind),
                               std::bit_cast<int64_t>(e.value)});
  words = ranks.joined(words);
  std::vector<BrickEvent> all;
  all.reserve(words.size() / kWords);
  for (std::size_t k = 0; k + kWords <= words.size(); k += kWords)
    all.push_back({words[k], std::bit_cast<double>(words[k + 1]), words[k + 2], static_cast<EventKind>(words[k + 3]),
                   std::bit_cast<double>(words[k + 4])});
  std::sort(all.begin(), all.end(), [](const BrickEvent& a, const BrickEvent& b) {
    return std::tie(a.increment, a.element, a.kind) < std::tie(b.increment, b.element, b.kind);
  });
  return all;
}

} // namespace sharedanalysis::solver
