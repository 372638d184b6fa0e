#include "solver/input/agreement.h"

#include "solver/model/model.h"

namespace sharedanalysis::solver {

void agree(const Ranks& ranks, const Fault& own) {
  constexpr int64_t none = std::numeric_limits<int64_t>::max();
  std::vector<int64_t> first{own.position};
  ranks.smallest(first);
  if (first[0] == none) return;
  std::vector<int64_t> speaker{own.position == first[0] ? ranks.rank() : none};
  ranks.smallest(speaker);
  std::vector<char> text;
  if (speaker[0] == ranks.rank()) text.assign(own.text.begin(), own.text.end());
  text = ranks.joined(text);
  throw InputError({text.begin(), text.end()});
}

} // namespace sharedanalysis::solver
