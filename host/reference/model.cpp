// The parts of the model: numbers of the solver as the user knows them.
#include "host_services.h"
#include "inpM_SolverPartMap.h"
#include "reference_host.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <shared_mutex>
#include <stdexcept>
#include <utility>

namespace sharedanalysis::host {
namespace {

struct OwnedRange {
  NumberRange range;
  std::size_t part;
};

// The numbers of one kind, nodes or elements, sorted.
class NumberMap {
public:
  void add(std::size_t part, const std::vector<NumberRange>& ranges) {
    for (const NumberRange& range : ranges)
      if (range.count > 0) ranges_.push_back({range, part});
  }

  void sort(const char* kind) {
    std::sort(ranges_.begin(), ranges_.end(),
              [](const OwnedRange& a, const OwnedRange& b) { return a.range.first < b.range.first; });
    for (std::size_t k = 1; k < ranges_.size(); ++k)
      if (ranges_[k].range.first < end(ranges_[k - 1].range))
        throw std::invalid_argument("two parts have " + std::string(kind) + " " +
                                    std::to_string(ranges_[k].range.first));
  }

  // The range that holds a number, or null.
  const OwnedRange* find(int32_t number) const {
    const auto after = std::upper_bound(ranges_.begin(), ranges_.end(), number,
                                        [](int32_t value, const OwnedRange& r) { return value < r.range.first; });
    if (after == ranges_.begin() || number >= end((after - 1)->range)) return nullptr;
    return &*(after - 1);
  }

private:
  static int64_t end(const NumberRange& range) { return static_cast<int64_t>(range.first) + range.count; }

  std::vector<OwnedRange> ranges_;
};

struct PartMap {
  std::vector<std::string> names;
  NumberMap nodes, elements;
  std::map<std::string, std::string> labels;

  dia_Entity entityOf(const NumberMap& numbers, int32_t number) const {
    const OwnedRange* const found = numbers.find(number);
    if (found == nullptr) return {"", number};
    return {names[found->part], found->range.firstLabel + (number - found->range.first)};
  }
};

struct CurrentMap {
  std::shared_mutex mutex;
  PartMap map;
};
CurrentMap& current() {
  static CurrentMap& instance = *new CurrentMap;
  return instance;
}

std::atomic<bool> inParts{false};

template <class Query>
auto inMap(Query query) {
  const std::shared_lock lock(current().mutex);
  return query(std::as_const(current().map));
}

dia_Entity elementOf(int32_t number) {
  return inMap([=](const PartMap& map) { return map.entityOf(map.elements, number); });
}

} // namespace

std::vector<NumberRange> numberRanges(const std::vector<int32_t>& numbers, const std::vector<int32_t>& labels) {
  if (numbers.size() != labels.size()) throw std::invalid_argument("as many labels as numbers are needed");
  std::vector<NumberRange> ranges;
  for (std::size_t k = 0; k < numbers.size(); ++k) {
    NumberRange* const last = ranges.empty() ? nullptr : &ranges.back();
    const bool goesOn =
        last != nullptr && numbers[k] - last->first == last->count && labels[k] - last->firstLabel == last->count;
    if (goesOn)
      ++last->count;
    else
      ranges.push_back({numbers[k], 1, labels[k]});
  }
  return ranges;
}

void setModel(const Model& model) {
  PartMap map;
  for (const PartInstance& part : model.parts) {
    map.nodes.add(map.names.size(), part.nodes);
    map.elements.add(map.names.size(), part.elements);
    map.names.push_back(part.name);
  }
  map.nodes.sort("node");
  map.elements.sort("element");
  map.labels = model.labels;

  const std::unique_lock lock(current().mutex);
  current().map = std::move(map);
  inParts = !model.parts.empty();
}

bool modelIsInParts() { return inParts; }

} // namespace sharedanalysis::host

using namespace sharedanalysis::host;

const inpM_SolverPartMap& inpM_SolverPartMap::Instance() {
  static const inpM_SolverPartMap map;
  return map;
}

dia_Entity inpM_SolverPartMap::ConstGetInstanceNodeIdPair(int32_t solverNode) const {
  return inMap([=](const PartMap& map) { return map.entityOf(map.nodes, solverNode); });
}

dia_Entity inpM_SolverPartMap::ConstGetInstanceElementIdPair(int32_t solverElement) const {
  return elementOf(solverElement);
}

std::string inpM_SolverPartMap::GetLabelName(const std::string& reference) const {
  return inMap([&](const PartMap& map) {
    const auto found = map.labels.find(reference);
    return found == map.labels.end() ? reference : found->second;
  });
}

int32_t DSM_VAR_GETI(const int32_t* variable) {
  return *variable == SA_HOST_VARIABLE_HAS_INSTANCES && modelIsInParts() ? 1 : 0;
}

void INPM_GETPARTINFOI(const int32_t* internalElement, char* instance, int32_t* localElement, int64_t instanceLength) {
  const auto room = static_cast<std::size_t>(std::max<int64_t>(instanceLength, 0));
  std::fill_n(instance, room, ' ');
  *localElement = *internalElement;
  try {
    const dia_Entity element = elementOf(*internalElement);
    element.instance.copy(instance, room);
    *localElement = element.label;
  } catch (...) { // no memory for a name: as an element without one
  }
}
