#include "solver/analysis/events.h"

#include <algorithm>
#include <iterator>
#include <tuple>

namespace sharedanalysis::solver {
namespace {

bool isBefore(const BrickEvent& a, const BrickEvent& b) {
  return std::tie(a.increment, a.element, a.kind) < std::tie(b.increment, b.element, b.kind);
}

} // namespace

BrickEvents::BrickEvents(std::vector<BrickEvent> all, std::size_t most)
    : first(std::move(all)), count(static_cast<int64_t>(first.size())) {
  std::sort(first.begin(), first.end(), isBefore);
  for (const BrickEvent& event : first)
    if (event.kind == EventKind::Failed && failures++ == 0) firstFailure = event;
  if (count > 0) last = first.back();
  if (first.size() > most) first.resize(most);
}

void BrickEvents::add(const BrickEvents& others, std::size_t most) {
  std::vector<BrickEvent> both;
  both.reserve(first.size() + others.first.size());
  std::merge(first.begin(), first.end(), others.first.begin(), others.first.end(), std::back_inserter(both), isBefore);
  if (both.size() > most) both.resize(most);
  first = std::move(both);
  if (others.failures > 0 && (failures == 0 || isBefore(others.firstFailure, firstFailure)))
    firstFailure = others.firstFailure;
  if (others.count > 0 && (count == 0 || isBefore(last, others.last))) last = others.last;
  count += others.count;
  failures += others.failures;
}

BrickEvents gatherEvents(const Ranks& ranks, std::vector<BrickEvent> own, int64_t most) {
  std::vector<int64_t> asked{most};
  ranks.broadcast(asked);
  const auto limit = static_cast<std::size_t>(std::max<int64_t>(asked[0], 0));
  BrickEvents all(std::move(own), limit);
  // rank r has those of ranks 2 r + 1 and 2 r + 2, and of theirs
  for (int64_t child = 2 * int64_t{ranks.rank()} + 1; child <= 2 * int64_t{ranks.rank()} + 2; ++child) {
    if (child >= ranks.size()) break;
    const auto source = static_cast<int32_t>(child);
    std::vector<int64_t> counts(3);
    ranks.receive(counts, source);
    if (counts[0] == 0) continue;
    std::vector<BrickEvent> sent(static_cast<std::size_t>(counts[2]) + 2);
    ranks.receive(sent, source);
    BrickEvents theirs;
    theirs.count = counts[0];
    theirs.failures = counts[1];
    theirs.last = sent.back(), sent.pop_back();
    theirs.firstFailure = sent.back(), sent.pop_back();
    theirs.first = std::move(sent);
    all.add(theirs, limit);
  }
  if (ranks.isRoot()) return all;
  const int32_t parent = (ranks.rank() - 1) / 2;
  ranks.send(std::vector<int64_t>{all.count, all.failures, static_cast<int64_t>(all.first.size())}, parent);
  if (all.count > 0) {
    all.first.push_back(all.firstFailure);
    all.first.push_back(all.last);
    ranks.send(all.first, parent);
  }
  return {};
}

} // namespace sharedanalysis::solver
