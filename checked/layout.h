// Which bytes the arrays of one call have, from its counts, leading dimensions, lists and maps.
#pragma once

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "table.h"

namespace sa::checked {

// What runs along one dimension of an array: the points of the block, or the entities that maps name.
enum class Lines : std::uint8_t { none, points, entities };

struct Array {
  const unsigned char* address = nullptr;
  std::size_t elementSize = 0;
  Lines lines = Lines::none;
  bool isOpen = false;      // some dimension is not known to the caller's numbers
  bool isAmbiguous = false; // nothing tells how much of it is used
  bool isHuge = false;      // no memory holds it
  std::int64_t before = 1, lineCount = 1, after = 1;

  std::int64_t components() const { return before * after; }
  std::int64_t elements() const { return before * lineCount * after; }
  std::int64_t index(std::int64_t line, std::int64_t component) const {
    return (component / before * lineCount + line) * before + component % before;
  }
  const unsigned char* at(std::int64_t element) const {
    return address + element * static_cast<std::int64_t>(elementSize);
  }
};

struct Interval {
  const unsigned char *begin, *end;
};

// Whether a code is among those of "code 1|2|3".
bool isCode(std::int64_t value, std::string_view unit);

// Scalars must be readable; arrays are not touched, but for lists, sets and maps where it says so.
class Layout {
public:
  Layout(const Routine& routine, const void* const* arguments);

  const Routine& routine() const { return *routine_; }
  std::span<const Argument> arguments() const { return arguments_; }
  const void* address(std::size_t k) const { return addresses_[k]; }
  std::int64_t integer(std::size_t k) const; // of a scalar
  double real(std::size_t k) const;
  std::int64_t size(const Dimension& dimension) const;
  const Array& array(std::size_t k) const { return arrays_[k]; }

  // The call has no points: it touches nothing.
  bool isEmpty() const { return isEmpty_; }
  std::int64_t firstPoint() const { return first_; } // from 0
  std::int64_t endPoint() const { return end_; }
  int list() const { return list_; } // argument, -1 for none
  int set() const { return set_; }
  bool isMapped(std::size_t k) const;
  // How many components of a record a call writes, and the first.
  void writtenComponents(std::size_t k, std::int64_t& first, std::int64_t& count) const;

  // Reads lists, sets and maps; numbers that lie outside are left out.  Lines that the call uses, from 0, as they come.
  std::vector<std::int64_t> linesOf(std::size_t k) const;
  // The bytes of these lines, sorted and joined.
  std::vector<Interval> intervals(std::size_t k, const std::vector<std::int64_t>& lines) const;
  // All points of the block, contiguous or not, without lists and maps; false where that takes a map.
  bool extent(std::size_t k, Interval& interval) const;

private:
  void shape(std::size_t k);
  bool isUsed(std::size_t k) const;
  bool isMapOfEntities(std::size_t k) const;
  std::vector<std::int64_t> entitiesOf(std::size_t map, std::int64_t most) const;

  const Routine* routine_;
  std::span<const Argument> arguments_;
  const void* const* addresses_;
  Array arrays_[kMostArguments];
  bool isEmpty_ = false;
  std::int64_t first_ = 0, end_ = 1;
  int list_ = -1, set_ = -1, cursor_ = -1;
  int stage_ = -1; // counts the points of a second stage
};

} // namespace sa::checked
