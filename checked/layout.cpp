#include "layout.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>

namespace sa::checked {
namespace {

constexpr std::int64_t kFar = std::int64_t{1} << 40; // no product of two of these overflows with an element's size

bool isPointCount(const Argument& argument) {
  return argument.is(Role::block) || argument.is(Role::length) || argument.is(Role::last) ||
         argument.is(Role::stride) || std::string_view(argument.name) == "nblock";
}

} // namespace

Layout::Layout(const Routine& routine, const void* const* arguments)
    : routine_(&routine), arguments_(argumentsOf(routine)), addresses_(arguments) {
  bool hasPoints = false;
  for (std::size_t k = 0; k < arguments_.size(); ++k) {
    const Argument& argument = arguments_[k];
    if (argument.is(Role::list)) list_ = static_cast<int>(k);
    if (argument.is(Role::set)) set_ = static_cast<int>(k);
    if (argument.is(Role::cursor)) cursor_ = static_cast<int>(k);
    if (argument.is(Role::first)) first_ = integer(k) - 1;
    const bool counts = isPointCount(argument) && !argument.is(Role::stride);
    if (counts && argument.has(kScalar)) {
      end_ = integer(k);
      hasPoints = true;
    }
  }
  isEmpty_ = hasPoints && end_ <= first_;
  for (std::size_t k = 0; k < arguments_.size(); ++k) {
    const Argument& a = arguments_[k];
    if (a.is(Role::count) && a.has(kScalar) && !a.has(kBounded) && !isUsed(k) && !isPointCount(a))
      stage_ = static_cast<int>(k);
  }
  for (const int k : {list_, set_})
    if (k >= 0 && size(arguments_[static_cast<std::size_t>(k)].shape[0]) < 1) isEmpty_ = true;
  for (std::size_t k = 0; k < arguments_.size(); ++k) shape(k);
}

bool isCode(std::int64_t value, std::string_view unit) {
  const std::string codes = "|" + std::string(unit.substr(5)) + "|";
  return codes.find("|" + std::to_string(value) + "|") != std::string::npos;
}

// Whether some dimension or bound is counted by the argument.
bool Layout::isUsed(std::size_t k) const {
  const auto counts = [&](const Dimension& dimension) {
    return std::find(std::begin(dimension.arguments), std::end(dimension.arguments), static_cast<int>(k)) !=
           std::end(dimension.arguments);
  };
  return std::any_of(arguments_.begin(), arguments_.end(), [&](const Argument& a) {
    return (a.has(kBounded) && counts(a.bound)) || std::any_of(a.shape, a.shape + a.rank, counts);
  });
}

std::int64_t Layout::integer(std::size_t k) const {
  if (arguments_[k].type == Type::int64) {
    std::int64_t value;
    std::memcpy(&value, addresses_[k], sizeof value);
    return value;
  }
  std::int32_t value = 0;
  if (arguments_[k].type == Type::int32) std::memcpy(&value, addresses_[k], sizeof value);
  return value;
}

double Layout::real(std::size_t k) const {
  double value;
  std::memcpy(&value, addresses_[k], sizeof value);
  return value;
}

std::int64_t Layout::size(const Dimension& dimension) const {
  std::int64_t value = dimension.constant;
  for (int n = 0; n < 3; ++n) {
    const int k = dimension.arguments[n];
    if (k < 0) break;
    const Argument& argument = arguments_[static_cast<std::size_t>(k)];
    std::int64_t count = std::clamp(integer(static_cast<std::size_t>(k)), -kFar, kFar);
    if (argument.has(kElseFirst) && !isCode(count, argument.unit)) count = std::atoi(argument.unit + 5);
    value += (n == 0 ? dimension.factor : 1) * count;
  }
  return value;
}

void Layout::shape(std::size_t k) {
  const Argument& argument = arguments_[k];
  Array& array = arrays_[k];
  array.address = static_cast<const unsigned char*>(addresses_[k]);
  array.elementSize = sizeOf(argument.type);
  for (int d = 0; d < argument.rank; ++d) {
    const Dimension& dimension = argument.shape[d];
    const int counting =
        dimension.factor == 1 && dimension.constant == 0 && dimension.arguments[1] < 0 ? dimension.arguments[0] : -1;
    Lines kind = Lines::none;
    if (dimension.isOpen())
      kind = Lines::entities;
    else if (counting >= 0 && isPointCount(arguments_[static_cast<std::size_t>(counting)]))
      kind = Lines::points;
    else if (counting >= 0 && arguments_[static_cast<std::size_t>(counting)].is(Role::rows))
      kind = Lines::entities;
    const std::int64_t size = dimension.isOpen() ? 0 : std::clamp<std::int64_t>(this->size(dimension), 0, kFar);
    if (dimension.isOpen()) array.isOpen = true;
    if (kind != Lines::none && array.lines == Lines::none) {
      array.lines = kind;
      array.lineCount = size;
    } else if (array.lines == Lines::none) {
      array.before = std::min(array.before * size, kFar);
    } else if (dimension.isOpen()) {
      array.isAmbiguous = true; // as many columns as some header says: the first at least
    } else {
      array.after = std::min(array.after * size, kFar);
    }
  }
  if (array.lines == Lines::entities && array.isOpen && !isMapped(k)) array.isAmbiguous = true;
  array.isHuge = static_cast<double>(array.before) * static_cast<double>(std::max<std::int64_t>(array.lineCount, 1)) *
                     static_cast<double>(array.after) >
                 static_cast<double>(kFar);
}

// A map that nothing names: it is entered with the entities that the maps of points lead to.
bool Layout::isMapOfEntities(std::size_t k) const {
  const auto names = [&](const Argument& map) { return map.target == static_cast<int>(k); };
  return arguments_[k].target >= 0 && arrays_[k].lines == Lines::entities && arrays_[k].isOpen &&
         std::none_of(arguments_.begin(), arguments_.end(), names);
}

bool Layout::isMapped(std::size_t k) const {
  if (arguments_[k].is(Role::record) || isMapOfEntities(k)) return true;
  return std::any_of(arguments_.begin(), arguments_.end(),
                     [&](const Argument& map) { return map.target == static_cast<int>(k); });
}

void Layout::writtenComponents(std::size_t k, std::int64_t& first, std::int64_t& count) const {
  first = 0;
  count = arrays_[k].components();
  const Argument& argument = arguments_[k];
  if (!argument.is(Role::record) || argument.rank < 1) return;
  const int length = argument.shape[0].arguments[0];
  if (argument.rank == 2 && length >= 0 && arguments_[static_cast<std::size_t>(length)].has(kBounded)) {
    count = std::min(count, size(arguments_[static_cast<std::size_t>(length)].bound));
    return;
  }
  // one of several parts of a record: an index runs over the last dimension but one
  const int parts = argument.rank >= 2 ? argument.shape[argument.rank - 2].arguments[0] : -1;
  for (std::size_t other = 0; parts >= 0 && other < arguments_.size(); ++other) {
    if (!arguments_[other].is(Role::index) || arguments_[other].bound.arguments[0] != parts) continue;
    const std::int64_t number = std::max<std::int64_t>(1, integer(static_cast<std::size_t>(parts)));
    count /= number;
    first = std::clamp<std::int64_t>(integer(other) - 1, 0, number - 1) * count;
    return;
  }
  if (length >= 0) count = 0; // nothing says how much of a record is written
}

// Numbers from 0 that a map names at the points of the call, or at the entities that its own points lead to.
std::vector<std::int64_t> Layout::entitiesOf(std::size_t map, std::int64_t most) const {
  const Array& array = arrays_[map];
  const std::int64_t components = array.components();
  std::vector<std::int64_t> lines = linesOf(map), entities;
  if (most >= 0 && static_cast<std::int64_t>(lines.size()) > most) lines.resize(static_cast<std::size_t>(most));
  entities.reserve(lines.size() * static_cast<std::size_t>(components));
  for (std::int64_t c = 0; c < components; ++c)
    for (const std::int64_t line : lines) {
      std::int32_t entity;
      std::memcpy(&entity, array.at(array.index(line, c)), sizeof entity);
      entities.push_back(std::int64_t{entity} - 1);
    }
  return entities;
}

std::vector<std::int64_t> Layout::linesOf(std::size_t k) const {
  const Array& array = arrays_[k];
  std::vector<std::int64_t> lines;
  if (isEmpty_ || array.address == nullptr) return lines;
  if (array.lines == Lines::none) return {0};
  if (array.lines == Lines::points) {
    const bool isList = static_cast<int>(k) == list_ || static_cast<int>(k) == set_;
    if (list_ < 0 || isList || arrays_[static_cast<std::size_t>(list_)].address == nullptr) {
      const std::int64_t end = std::min(end_, array.lineCount);
      for (std::int64_t line = first_; line < end; ++line) lines.push_back(line);
      return lines;
    }
    const Array& list = arrays_[static_cast<std::size_t>(list_)];
    for (std::int64_t n = 0; n < list.elements(); ++n) {
      std::int32_t point;
      std::memcpy(&point, list.at(n), sizeof point);
      if (point >= 1 && point <= array.lineCount) lines.push_back(point - 1);
    }
    return lines;
  }
  if (arguments_[k].is(Role::record) && cursor_ >= 0) {
    const std::int64_t first = integer(static_cast<std::size_t>(cursor_)) - 1;
    if (set_ < 0) {
      for (std::int64_t p = 0; p < end_; ++p) lines.push_back(first + p);
    } else {
      // members of this block, from the cursor on
      const Array& set = arrays_[static_cast<std::size_t>(set_)];
      std::int64_t offset = 0, factor = 1;
      int places = 0;
      std::int64_t place[4] = {1, 0, 1, 0};
      for (std::size_t n = 0; n < arguments_.size(); ++n)
        if (arguments_[n].is(Role::place) && places < 4) place[places++] = integer(n);
      for (int n = 0; n + 1 < places; n += 2) offset += factor * (place[n] - 1) * place[n + 1];
      for (std::int64_t n = std::max<std::int64_t>(first, 0); n < set.elements(); ++n) {
        std::int32_t member;
        std::memcpy(&member, set.at(n), sizeof member);
        const std::int64_t point = member - offset;
        if (point > end_) break;
        if (point >= 1) lines.push_back(n);
      }
    }
  } else {
    const bool isEntered = isMapOfEntities(k);
    const std::int64_t most =
        isEntered ? std::max<std::int64_t>(0, stage_ < 0 ? end_ : integer(static_cast<std::size_t>(stage_))) : -1;
    for (std::size_t map = 0; map < arguments_.size(); ++map) {
      const bool leads = isEntered ? arguments_[map].target >= 0 && arrays_[map].lines == Lines::points
                                   : arguments_[map].target == static_cast<int>(k);
      if (!leads || map == k || arrays_[map].address == nullptr || arrays_[map].isAmbiguous) continue;
      const std::vector<std::int64_t> named = entitiesOf(map, most);
      lines.insert(lines.end(), named.begin(), named.end());
    }
    if (!isMapped(k) && !isEntered && !array.isOpen) {
      lines.resize(static_cast<std::size_t>(array.lineCount));
      std::iota(lines.begin(), lines.end(), 0);
    }
  }
  std::sort(lines.begin(), lines.end());
  lines.erase(std::unique(lines.begin(), lines.end()), lines.end());
  std::erase_if(lines, [&](std::int64_t line) {
    return line < 0 || (!array.isOpen && line >= array.lineCount) || (array.isOpen && array.after != 1 && line > 0);
  });
  return lines;
}

std::vector<Interval> Layout::intervals(std::size_t k, const std::vector<std::int64_t>& lines) const {
  const Array& array = arrays_[k];
  std::vector<Interval> result;
  const auto bytes = static_cast<std::int64_t>(array.elementSize) * array.before;
  for (std::int64_t a = 0; a < array.after && array.before > 0; ++a) {
    for (std::size_t n = 0; n < lines.size();) {
      std::size_t end = n + 1;
      while (end < lines.size() && lines[end] == lines[end - 1] + 1) ++end;
      const std::int64_t first = (a * array.lineCount + lines[n]) * bytes;
      result.push_back({array.address + first, array.address + first + static_cast<std::int64_t>(end - n) * bytes});
      n = end;
    }
  }
  std::sort(result.begin(), result.end(), [](const Interval& x, const Interval& y) { return x.begin < y.begin; });
  std::size_t kept = 0;
  for (std::size_t n = 1; n < result.size(); ++n) {
    if (result[n].begin <= result[kept].end)
      result[kept].end = std::max(result[kept].end, result[n].end);
    else
      result[++kept] = result[n];
  }
  if (!result.empty()) result.resize(kept + 1);
  return result;
}

bool Layout::extent(std::size_t k, Interval& interval) const {
  const Array& array = arrays_[k];
  std::int64_t first = 0, last = array.lineCount - 1;
  if (array.isHuge) {
    interval = {array.address, array.address + kFar * 8};
    return true;
  }
  if (array.lines == Lines::entities && (array.isOpen || isMapped(k))) return false;
  if (array.lines == Lines::points) {
    const bool isList = static_cast<int>(k) == list_ || static_cast<int>(k) == set_;
    if (!isList) {
      first = first_;
      last = std::min(end_, array.lineCount) - 1;
    }
  }
  if (array.components() < 1 || last < first) {
    interval = {array.address, array.address};
    return true;
  }
  const auto size = static_cast<std::int64_t>(array.elementSize);
  interval = {array.address + array.index(first, 0) * size,
              array.address + (array.index(last, array.components() - 1) + 1) * size};
  return true;
}

} // namespace sa::checked
