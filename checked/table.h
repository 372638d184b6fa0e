// The exported routines with all their arguments, as the declarations describe them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace sa::checked {

enum class Type : std::uint8_t { none, int32, int64, real, single, character, texts, address };
enum class Role : std::uint8_t {
  value, // a physical unit, or one without a check of its own
  any,
  block,
  length,
  count,
  rows,
  stride,
  list,
  first,
  last,
  unread,
  stretch,
  planeStretch,
  axialStretch,
  mask,
  flag,
  text,
  address,
  record,
  cursor,
  place,
  set,
  table,
  entity,
  code,
  index,
  properties
};
enum class Direction : std::uint8_t { in, out, both };

// Of an argument.
enum : unsigned {
  kByValue = 1,
  kOptional = 2, // not read in every call: may be anything
  kScalar = 4,
  kBounded = 8, // has a bound in `bound`: the lowest count, or the highest number
  kTextLength = 16,
  kMayBeNegative = 32, // the declaration says what a number below 1 does
  kAnyCode = 64,       // and what another code does
  kElseFirst = 512,    // the same as the first one
  kPrincipal = 128,    // principal stretches, not a tensor
  kZerosForNone = 256  // a tensor of zeros stands for none
};
// Of a routine.
enum : unsigned {
  kInPlace = 1, // outputs may be inputs
  kMakesNaN = 2,
  kMessage = 4
};

// factor * first argument + second + third + constant; a constant below 0 stands for as many as the entities used.
struct Dimension {
  std::int32_t constant = 0;
  std::int8_t factor = 1;
  std::int8_t arguments[3] = {-1, -1, -1};
  bool isOpen() const { return constant < 0 && arguments[0] < 0; }
};

struct Argument {
  const char *name, *unit;
  Type type;
  Role role;
  Direction direction;
  unsigned flags;
  std::int8_t rank, target; // of entities: the argument that they are rows or records of
  std::int8_t inPlaceOf;    // the input whose memory an output may be, or -1
  std::int8_t readIf;       // the count without which it is not read, or -1
  Dimension bound;
  Dimension shape[4];

  bool is(Role wanted) const { return role == wanted; }
  bool has(unsigned flag) const { return (flags & flag) != 0; }
  bool isWritten() const { return direction != Direction::in; }
  bool isRead() const { return direction != Direction::out; }
  bool isArray() const { return !has(kByValue) && !has(kScalar); }
  bool isReal() const { return type == Type::real || type == Type::single; }
};

struct Routine {
  const char *name, *file;
  Type result;
  unsigned flags, first, count;
  void (*call)(void* routine, const void* const* arguments, void* result);
};

std::span<const Routine> routines();
// -1 when there is none of the name.
int routineNumber(std::string_view name);
std::span<const Argument> argumentsOf(const Routine& routine);

constexpr std::size_t kMostArguments = 64;
std::size_t sizeOf(Type type);

} // namespace sa::checked
