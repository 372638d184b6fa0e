// A call for one of its points: block arrays shrink to a row, lists to an entry, leading dimensions of blocks to one.
#include "call.h"

#include <algorithm>
#include <stdexcept>

namespace sa::replay {
namespace {

using checked::Argument;
using checked::Direction;
using checked::Role;

std::int32_t integerOf(const RecordedArgument& a) {
  std::int32_t value = 0;
  if (a.before.size() >= 4) std::memcpy(&value, a.before.data(), 4);
  return value;
}
void setInteger(RecordedArgument& a, std::int32_t value) {
  if (a.before.size() >= 4) std::memcpy(a.before.data(), &value, 4);
}

bool isPointCount(const Argument& a) {
  return a.is(Role::block) || a.is(Role::last) || std::string_view(a.name) == "nblock";
}

std::span<const Argument> declared(const RecordedCall& call) {
  return checked::argumentsOf(checked::routines()[static_cast<std::size_t>(checked::routineNumber(call.routine))]);
}

// The elements of some rows of an array as an array of their own; those that were not recorded stay out.
RecordedArgument rowsOf(const RecordedArgument& a, const checked::Array& shape, std::int64_t row) {
  RecordedArgument result = a;
  result.runs.clear();
  result.before.clear();
  result.after.clear();
  const std::size_t size = checked::sizeOf(a.type);
  std::uint64_t position = 0;
  const auto before = static_cast<std::uint64_t>(shape.before), lines = static_cast<std::uint64_t>(shape.lineCount);
  if (lines == 0 || before == 0) return result;
  for (const checked::Run& run : a.runs)
    for (std::uint64_t n = run.first; n < run.end(); ++n, ++position) {
      if (n / before % lines != static_cast<std::uint64_t>(row)) continue;
      const std::uint64_t place = n / (before * lines) * before + n % before;
      if (!result.runs.empty() && result.runs.back().end() == place)
        ++result.runs.back().count;
      else
        result.runs.push_back({place, 1});
      const auto from = static_cast<std::ptrdiff_t>(position * size), to = from + static_cast<std::ptrdiff_t>(size);
      if (a.isRead()) result.before.insert(result.before.end(), a.before.begin() + from, a.before.begin() + to);
      if (a.isWritten()) result.after.insert(result.after.end(), a.after.begin() + from, a.after.begin() + to);
    }
  if (result.runs.empty()) result.state = RecordedArgument::State::notKept;
  return result;
}

} // namespace

std::int64_t pointsOf(const RecordedCall& call) {
  const std::span<const Argument> arguments = declared(call);
  std::int64_t first = 1, last = 0;
  for (std::size_t k = 0; k < arguments.size(); ++k) {
    if (arguments[k].is(Role::first)) first = integerOf(call.arguments[k]);
    if (isPointCount(arguments[k])) last = integerOf(call.arguments[k]);
    if (arguments[k].is(Role::length) || arguments[k].is(Role::set)) return 0; // treated as a whole
  }
  return std::max<std::int64_t>(0, last - first + 1);
}

RecordedCall pointOf(const RecordedCall& call, std::int64_t point) {
  const std::span<const Argument> arguments = declared(call);
  if (pointsOf(call) == 0) throw std::runtime_error(call.routine + " does not work point by point");
  const Call memory(call); // for the shapes
  const_cast<Call&>(memory).reset();
  const checked::Layout layout(memory.routine(), memory.addresses());
  RecordedCall result = call;
  result.result.clear(); // of all points
  int list = -1;
  for (std::size_t k = 0; k < arguments.size(); ++k) {
    const Argument& a = arguments[k];
    RecordedArgument& kept = result.arguments[k];
    if (isPointCount(a) || a.is(Role::first) || a.is(Role::stride)) setInteger(kept, 1);
    if (a.is(Role::cursor)) { // its record; where the cursor ends up is another matter
      setInteger(kept, integerOf(kept) + static_cast<std::int32_t>(point));
      kept.after = kept.before;
      setInteger(kept, integerOf(kept));
    }
    if (a.is(Role::list)) list = static_cast<int>(k);
    if (kept.state != RecordedArgument::State::kept || !a.isArray()) continue;
    if (layout.array(k).lines == checked::Lines::points && !a.is(Role::list))
      kept = rowsOf(kept, layout.array(k), point);
  }
  if (list >= 0) {
    RecordedArgument& entries = result.arguments[static_cast<std::size_t>(list)];
    bool isListed = false;
    for (std::size_t at = 0; at + 4 <= entries.before.size(); at += 4) {
      std::int32_t entry;
      std::memcpy(&entry, &entries.before[at], 4);
      isListed = isListed || entry == point + 1;
    }
    if (!isListed) throw std::runtime_error("the point is not in the list");
    entries.runs = {{0, 1}};
    entries.before.resize(4);
    setInteger(entries, 1);
    const int count = arguments[static_cast<std::size_t>(list)].shape[0].arguments[0];
    if (count >= 0) setInteger(result.arguments[static_cast<std::size_t>(count)], 1);
  }
  return result;
}

} // namespace sa::replay
