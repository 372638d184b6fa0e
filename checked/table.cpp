#include "table.h"

#include "acd.h"
#include "glo.h"
#include "spx.h"

#include <algorithm>

namespace sa::checked {
namespace {

#include <calls.inc> // written from the headers

} // namespace

std::span<const Routine> routines() { return kRoutines; }

int routineNumber(std::string_view name) {
  const auto found = std::find_if(std::begin(kRoutines), std::end(kRoutines),
                                  [&](const Routine& routine) { return routine.name == name; });
  return found == std::end(kRoutines) ? -1 : static_cast<int>(found - kRoutines);
}

std::span<const Argument> argumentsOf(const Routine& routine) { return {kArguments + routine.first, routine.count}; }

std::size_t sizeOf(Type type) {
  switch (type) {
  case Type::int32:
  case Type::single:
    return 4;
  case Type::character:
    return 1;
  case Type::none:
    return 0;
  default:
    return 8;
  }
}

} // namespace sa::checked
