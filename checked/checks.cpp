#include "checks.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <sys/single_threaded.h>

namespace sa::checked {
namespace {

constexpr std::size_t kMostTerminated = 1 << 16; // characters of a zero-terminated text that are looked at
constexpr std::int64_t kMostLength = 1 << 20;    // of a text; more comes from a caller that passes no lengths
constexpr std::int64_t kMostPoints = 1 << 27;    // that are looked at one by one
constexpr std::int64_t kMostOutside = 1 << 16;   // bytes beside the rows of the block that are watched

template <class T>
T load(const unsigned char* from) {
  T value;
  std::memcpy(&value, from, sizeof value);
  return value;
}

std::string range(std::int64_t low, std::int64_t high) { return std::to_string(low) + " to " + std::to_string(high); }

std::string hexadecimal(const void* address) {
  char text[32];
  std::snprintf(text, sizeof text, "%p", address);
  return address == nullptr ? "0" : text;
}

std::uint64_t hashOf(const std::vector<Interval>& intervals) {
  std::uint64_t h = 0x9e3779b97f4a7c15ULL;
  for (const Interval& i : intervals) {
    const unsigned char* at = i.begin;
    for (; i.end - at >= 8; at += 8) {
      h = (h ^ load<std::uint64_t>(at)) * 0xff51afd7ed558ccdULL;
      h ^= h >> 32;
    }
    for (; at < i.end; ++at) h = (h ^ *at) * 0xff51afd7ed558ccdULL;
  }
  return h;
}

std::vector<unsigned char> copyOf(const std::vector<Interval>& intervals) {
  std::vector<unsigned char> bytes;
  for (const Interval& i : intervals) bytes.insert(bytes.end(), i.begin, i.end);
  return bytes;
}

bool isFinite(const unsigned char* at, Type type) {
  return type == Type::single ? (load<std::uint32_t>(at) & 0x7f800000U) != 0x7f800000U
                              : (load<std::uint64_t>(at) & 0x7ff0000000000000ULL) != 0x7ff0000000000000ULL;
}

// The first value that is not finite, or null.
const unsigned char* firstNotFinite(const unsigned char* begin, const unsigned char* end, Type type) {
  const std::ptrdiff_t size = type == Type::single ? 4 : 8;
  if (type == Type::real) { // sixteen at a time: usually there is none
    constexpr std::uint64_t kExponent = 0x7ff0000000000000ULL;
    for (; end - begin >= 128; begin += 128) {
      std::uint64_t found = 0;
      for (int n = 0; n < 16; ++n)
        found |= ((load<std::uint64_t>(begin + 8 * n) & kExponent) + 0x0010000000000000ULL) >> 63;
      if (found != 0) break;
    }
  }
  for (; end - begin >= size; begin += size)
    if (!isFinite(begin, type)) return begin;
  return nullptr;
}

void poison(const std::vector<Interval>& intervals, Type type) {
  for (const Interval& i : intervals) {
    auto* to = const_cast<unsigned char*>(i.begin);
    const auto fill = [&](auto value) {
      for (; i.end - to >= static_cast<std::ptrdiff_t>(sizeof value); to += sizeof value)
        std::memcpy(to, &value, sizeof value);
    };
    if (type == Type::real || type == Type::int64) fill(kPoisonReal);
    if (type == Type::int32 || type == Type::single) fill(kPoisonInteger);
    if (type == Type::character) fill(kPoisonCharacter);
  }
}

bool isPoison(const unsigned char* at, Type type) {
  if (type == Type::character) return *at == kPoisonCharacter;
  return type == Type::real || type == Type::int64 ? load<std::uint64_t>(at) == kPoisonReal
                                                   : load<std::uint32_t>(at) == kPoisonInteger;
}

bool overlap(const std::vector<Interval>& a, const std::vector<Interval>& b, const unsigned char*& where) {
  for (std::size_t i = 0, j = 0; i < a.size() && j < b.size();) {
    if (a[i].end <= b[j].begin) {
      ++i;
    } else if (b[j].end <= a[i].begin) {
      ++j;
    } else {
      where = std::max(a[i].begin, b[j].begin);
      return true;
    }
  }
  return false;
}

} // namespace

std::string textOf(double value) {
  char text[40];
  std::snprintf(text, sizeof text, "%.17g", value);
  if (std::strtod(text, nullptr) == value) {
    char shorter[40];
    for (int digits = 1; digits < 17; ++digits) {
      std::snprintf(shorter, sizeof shorter, "%.*g", digits, value);
      if (std::strtod(shorter, nullptr) == value) return shorter;
    }
  }
  return text;
}

void Checks::find(Kind kind, std::size_t k, const std::string& text, const std::string& allowed,
                  const std::string& entry) {
  report({kind, routine_.name, argumentsOf(routine_)[k].name, entry, text, allowed}, place_);
}

// "(3,2)" of the element at an address, in the order of the declared shape.
std::string Checks::entryOf(std::size_t k, const unsigned char* address) const {
  const Argument& a = argument(k);
  if (a.has(kScalar)) return "";
  const Array& array = layout_->array(k);
  std::int64_t element = (address - array.address) / static_cast<std::int64_t>(array.elementSize);
  std::string text = "(";
  for (int d = 0; d < a.rank; ++d) {
    const std::int64_t size = a.shape[d].isOpen() ? 0 : layout_->size(a.shape[d]);
    if (d > 0) text += ",";
    text += std::to_string((size > 0 && d + 1 < a.rank ? element % size : element) + 1);
    if (size > 0) element /= size;
  }
  return text + ")";
}

bool Checks::isIgnored(std::size_t k) const {
  const Argument& a = argumentsOf(routine_)[k];
  std::int32_t count = 1;
  if (a.readIf >= 0) std::memcpy(&count, given_[a.readIf], sizeof count);
  return a.has(kByValue) || a.is(Role::unread) || count < 1 ||
         (a.has(kOptional) && (given_[k] == nullptr || !a.isWritten()));
}

bool Checks::accessible(std::size_t k, const unsigned char* begin, const unsigned char* end, bool isFirst) {
  const Argument& a = argumentsOf(routine_)[k];
  if (begin >= end) return true;
  const auto bytes = static_cast<std::size_t>(end - begin);
  const auto where = [&] {
    return isFirst ? hexadecimal(begin)
                   : hexadecimal(begin) + " to " + hexadecimal(end - 1) + ", " + std::to_string(bytes) + " bytes";
  };
  const auto isKnown = [&] { return memory_.canRead(begin, bytes); };
  bool canRead = isKnown();
  if (canRead && depth_.probes && !(memory_.probe(begin, false) && memory_.probe(end - 1, false))) {
    memory_.forget();
    canRead = false;
  }
  if (!canRead) {
    find(Kind::unreadable, k, where(), "memory that can be read");
    return false;
  }
  const bool isOwn = a.isWritten() && !a.has(kScalar); // nobody else writes it during the call
  if (a.isWritten() && (!memory_.canWrite(begin, bytes) ||
                        (depth_.probes && isOwn && !(memory_.probe(begin, true) && memory_.probe(end - 1, true))))) {
    memory_.forget();
    find(Kind::unwritable, k, where(), "memory that can be written");
    return false;
  }
  return true;
}

// Addresses of single numbers, which everything else is computed from.
bool Checks::checkScalars() {
  bool isSound = true;
  const std::span<const Argument> arguments = argumentsOf(routine_);
  for (std::size_t k = 0; k < arguments.size(); ++k) {
    const Argument& a = arguments[k];
    if (!a.has(kScalar) || isIgnored(k)) continue;
    const auto* address = static_cast<const unsigned char*>(given_[k]);
    const std::size_t size = sizeOf(a.type);
    if (address == nullptr) {
      find(Kind::nullPointer, k, "0", "an address");
      isSound = false;
    } else if (!accessible(k, address, address + size, true)) {
      isSound = false;
    } else if (reinterpret_cast<std::uintptr_t>(address) % size != 0) {
      find(Kind::misaligned, k, hexadecimal(address), "a multiple of " + std::to_string(size));
    }
  }
  return isSound;
}

bool Checks::checkNumbers() {
  bool isSound = true;
  const std::int64_t points = layout_->endPoint();
  const std::span<const Argument> all = layout_->arguments();
  const bool rejectsItself =
      std::any_of(all.begin(), all.end(), [](const Argument& a) { return a.is(Role::properties); });
  for (std::size_t k = 0; k < layout_->arguments().size(); ++k) {
    const Argument& a = argument(k);
    if (!a.has(kScalar) || a.has(kOptional) || a.type != Type::int32) continue;
    const std::int64_t value = layout_->integer(k);
    const auto text = [&] { return std::to_string(value); };
    switch (a.role) {
    case Role::count:
      if (a.has(kBounded) && value < layout_->size(a.bound) && !isUnknownCode_) {
        find(Kind::count, k, text(), "at least " + std::to_string(layout_->size(a.bound)));
        isSound = isSound && rejectsItself; // with an error of its own
      } else if (value < 0 && !a.has(kMayBeNegative)) {
        find(Kind::count, k, text(), "at least 0");
      }
      break;
    case Role::index:
      if (const std::int64_t high = layout_->size(a.bound); value < 1 || value > high) {
        find(Kind::index, k, text(), range(1, high));
        isSound = false;
      }
      break;
    case Role::code:
      if (!isCode(value, a.unit) && !a.has(kAnyCode)) {
        find(Kind::code, k, text(), a.unit + 5);
        isUnknownCode_ = true;
      }
      break;
    case Role::stride:
    case Role::rows:
      if (const std::int64_t low = a.is(Role::stride) ? points : 1; value < low) {
        find(Kind::leadingDimension, k, text(), "at least " + std::to_string(low));
        isSound = false;
      }
      break;
    case Role::cursor:
      if (value < 1) {
        find(Kind::cursor, k, text(), "at least 1");
        isSound = false;
      }
      break;
    case Role::place:
      // blocks and groups count from 1; a size is not negative
      if (value < (std::string_view(a.name).find("Number") != std::string_view::npos ? 1 : 0))
        find(Kind::place, k, text(), "at least 1");
      break;
    case Role::first:
      if (value < 1) find(Kind::index, k, text(), "at least 1");
      break;
    default:
      break;
    }
  }
  return isSound;
}

bool Checks::checkText(std::size_t k) {
  const Argument& a = argument(k);
  const auto* address = static_cast<const unsigned char*>(given_[k]);
  if (a.type == Type::texts) return address == nullptr || accessible(k, address, address + sizeof(char*), true);
  std::int64_t length = -1;
  bool isOne = a.rank == 1;
  for (int d = 0; d < a.rank; ++d)
    if (!a.shape[d].isOpen()) length = layout_->size(a.shape[d]);
  if (length < 0 && a.shape[0].isOpen()) { // ends with a zero
    if (address == nullptr) {
      find(Kind::nullPointer, k, "0", "a text");
      return false;
    }
    for (std::size_t n = 0; n < kMostTerminated; ++n) {
      if (n % 4096 == 0 || (reinterpret_cast<std::uintptr_t>(address + n) % 4096) == 0)
        if (!accessible(k, address + n, address + n + 1, true)) return false;
      if (address[n] == 0) return true;
    }
    find(Kind::textEnd, k, "no zero within " + std::to_string(kMostTerminated) + " characters", "a zero at its end");
    return true;
  }
  if (length < 0 || length > kMostLength) {
    const int of = a.shape[0].arguments[0];
    const bool isAllowed = length < 0 && (routine_.flags & kMessage) != 0;
    if (!isAllowed)
      find(Kind::textLength, of >= 0 ? static_cast<std::size_t>(of) : k, std::to_string(length), range(0, kMostLength));
    return isAllowed;
  }
  if (length == 0 || (address == nullptr && !isOne)) return true; // no texts are asked for
  if (address == nullptr) {
    find(Kind::nullPointer, k, "0", "a text");
    return false;
  }
  if (!accessible(k, address, address + length, false)) return false;
  if (isOne && a.isRead() && !a.isWritten() && depth_.values && (routine_.flags & kMessage) == 0) {
    const void* zero = std::memchr(address, 0, static_cast<std::size_t>(length));
    if (zero != nullptr)
      find(Kind::textEnd, k,
           "a zero byte at character " + std::to_string(static_cast<const unsigned char*>(zero) - address + 1) +
               " of " + std::to_string(length),
           "blanks behind the text");
  }
  return true;
}

// Address, alignment and memory of an array whose size follows from counts.
bool Checks::checkArray(std::size_t k) {
  const Argument& a = argument(k);
  if (!a.isArray() || isIgnored(k)) return true;
  if (a.is(Role::text)) return checkText(k);
  const Array& array = layout_->array(k);
  if (a.is(Role::table) && array.isOpen)
    return true; // a pool, which not every table needs: the checks of tables follow it
  Interval extent{};
  const bool isKnown = layout_->extent(k, extent) && !array.isAmbiguous;
  if (isKnown && extent.begin == extent.end) return true;
  if (array.address == nullptr) {
    find(Kind::nullPointer, k, "0", "an array");
    return false;
  }
  if (const std::size_t size = array.elementSize; reinterpret_cast<std::uintptr_t>(array.address) % size != 0)
    find(Kind::misaligned, k, hexadecimal(array.address), "a multiple of " + std::to_string(size));
  if (isKnown) return accessible(k, extent.begin, extent.end, false);
  return !array.isAmbiguous || accessible(k, array.address, array.address + array.elementSize, true);
}

// Memory of the entities that maps and cursors lead to.
bool Checks::checkReach(std::size_t k) {
  const Array& array = layout_->array(k);
  if (!argument(k).isArray() || isIgnored(k) || !layout_->isMapped(k) || array.isAmbiguous || array.components() < 1)
    return true;
  const std::vector<std::int64_t> lines = layout_->linesOf(k);
  if (lines.empty()) return true;
  if (array.address == nullptr) return false;
  std::int64_t first = 0, count = array.components();
  if (array.after == 1) layout_->writtenComponents(k, first, count);
  if (count == 0) count = 1;
  const auto size = static_cast<std::int64_t>(array.elementSize);
  return accessible(k, array.address + (array.index(lines.front(), first)) * size,
                    array.address + (array.index(lines.back(), first + count - 1) + 1) * size, false);
}

bool Checks::checkList(std::size_t k) {
  const Array& list = layout_->array(k);
  const std::int64_t points = layout_->endPoint();
  std::vector<bool> isTaken(static_cast<std::size_t>(std::max<std::int64_t>(points, 0)) + 1);
  bool isOutside = false, isRepeated = false;
  for (std::int64_t n = 0; n < list.elements(); ++n) {
    const auto point = load<std::int32_t>(list.at(n));
    if (point < 1 || point > points) {
      if (!isOutside) find(Kind::listRange, k, std::to_string(point), range(1, points), entryOf(k, list.at(n)));
      isOutside = true;
      continue;
    }
    if (isTaken[static_cast<std::size_t>(point)] && !isRepeated) {
      find(Kind::listRepeats, k, std::to_string(point) + " once more", "each at most once", entryOf(k, list.at(n)));
      isRepeated = true;
    }
    isTaken[static_cast<std::size_t>(point)] = true;
  }
  return !isOutside;
}

void Checks::checkSet(std::size_t k) {
  const Array& set = layout_->array(k);
  for (std::int64_t n = 1; n < set.elements(); ++n) {
    const auto before = load<std::int32_t>(set.at(n - 1)), now = load<std::int32_t>(set.at(n));
    if (now > before) continue;
    find(Kind::setOrder, k, std::to_string(now) + " after " + std::to_string(before), "increasing numbers",
         entryOf(k, set.at(n)));
    return;
  }
}

// Numbers below 1 and beyond known rows.
bool Checks::checkMap(std::size_t k) {
  const Argument& map = argument(k);
  const Array& array = layout_->array(k);
  const Array& target = layout_->array(static_cast<std::size_t>(map.target));
  if (array.address == nullptr || array.isAmbiguous || isIgnored(k)) return true;
  const std::int64_t high = target.isOpen ? INT32_MAX : target.lineCount, low = map.has(kMayBeNegative) ? INT32_MIN : 1;
  for (std::int64_t c = 0; c < array.components(); ++c)
    for (const std::int64_t line : layout_->linesOf(k)) {
      const unsigned char* at = array.at(array.index(line, c));
      const auto entity = load<std::int32_t>(at);
      if (entity >= low && entity <= high) continue;
      find(Kind::mapRange, k, std::to_string(entity), target.isOpen ? "at least 1" : range(1, high), entryOf(k, at));
      return false;
    }
  return true;
}

void Checks::checkFlags(std::size_t k) {
  const Argument& a = argument(k);
  const Array& array = layout_->array(k);
  for (const std::int64_t line : layout_->linesOf(k))
    for (std::int64_t c = 0; c < array.components(); ++c) {
      const unsigned char* at = array.at(array.index(line, c));
      const auto value = load<double>(at);
      if (value == 0.0 || value == 1.0) continue;
      find(a.is(Role::mask) ? Kind::mask : Kind::flag, k, textOf(value), "0.0 or 1.0", entryOf(k, at));
      return;
    }
}

void Checks::checkStretches(std::size_t k) {
  const Argument& a = argument(k);
  const Array& array = layout_->array(k);
  const std::int64_t components = array.components();
  if (array.address == nullptr || components > 6 || a.type != Type::real) return;
  int mask = -1;
  for (std::size_t other = 0; other < layout_->arguments().size(); ++other)
    if (argument(other).is(Role::mask) && layout_->array(other).lines == Lines::points) mask = static_cast<int>(other);
  for (const std::int64_t line : layout_->linesOf(k)) {
    if (mask >= 0) {
      const Array& masks = layout_->array(static_cast<std::size_t>(mask));
      if (masks.address != nullptr && load<double>(masks.at(masks.index(line, 0))) != 0.0) continue;
    }
    double v[6] = {}, largest = 0;
    bool areZeros = true, areFinite = true;
    for (std::int64_t c = 0; c < components; ++c) {
      v[c] = load<double>(array.at(array.index(line, c)));
      areZeros = areZeros && v[c] == 0.0;
      areFinite = areFinite && std::isfinite(v[c]);
      largest = std::max(largest, std::fabs(v[c]));
    }
    if (!areFinite || (areZeros && a.has(kZerosForNone))) continue;
    for (double& x : v) x /= largest > 0 ? largest : 1;
    // the principal minors, with what rounding may leave of a collapsed one
    constexpr double kRounding = -1e-9;
    const bool isPlane = a.is(Role::planeStretch);
    const int direct = a.is(Role::axialStretch) || a.has(kPrincipal) ? static_cast<int>(components)
                       : isPlane                                     ? 2
                                                                     : std::min(3, static_cast<int>(components));
    bool isSound = !areZeros;
    for (int c = 0; c < direct; ++c) isSound = isSound && v[c] > kRounding;
    const double shear = a.has(kPrincipal) || a.is(Role::axialStretch) ? 0
                         : isPlane                                     ? v[2]
                         : components >= 4                             ? v[3]
                                                                       : 0;
    if (direct >= 2) isSound = isSound && v[0] * v[1] - shear * shear > kRounding;
    if (components == 6 && !a.has(kPrincipal))
      isSound = isSound && v[0] * v[1] * v[2] + 2 * v[3] * v[4] * v[5] - v[0] * v[4] * v[4] - v[1] * v[5] * v[5] -
                                   v[2] * v[3] * v[3] >
                               kRounding;
    if (isSound) continue;
    std::string text = areZeros ? "zeros" : "components";
    for (std::int64_t c = 0; c < components && !areZeros; ++c)
      text += " " + textOf(load<double>(array.at(array.index(line, c))));
    find(Kind::stretch, k, text, "positive principal stretches", entryOf(k, array.at(array.index(line, 0))));
    return;
  }
}

bool Checks::checkTables() {
  const std::optional<TableFault> fault = faultOfTable(*layout_, memory_);
  if (!fault) return true;
  find(Kind::table, fault->argument, fault->text, fault->allowed,
       fault->entry > 0 ? "(" + std::to_string(fault->entry) + ")" : "");
  return !fault->isFatal;
}

// Outputs against everything else.  Exactly, where the outermost bytes overlap: arrays may lie row by row in one.
void Checks::checkOverlaps() {
  struct Place {
    std::size_t argument;
    Interval outer;
    std::vector<Interval> exact;
    bool isExact;
  };
  std::vector<Place> places;
  for (std::size_t k = 0; k < layout_->arguments().size(); ++k) {
    const Argument& a = argument(k);
    if (isIgnored(k) || given_[k] == nullptr || a.type == Type::texts) continue;
    const Array& array = layout_->array(k);
    Place place{k, {}, {}, false};
    if (array.isAmbiguous) {
      place.outer = {array.address, array.address + array.elementSize};
    } else if (!layout_->extent(k, place.outer)) {
      if (!depth_.values) continue; // takes the maps
      const std::vector<std::int64_t> lines = layout_->linesOf(k);
      if (lines.empty()) continue;
      place.exact = layout_->intervals(k, lines);
      if (a.is(Role::record)) { // parts of longer records may lie beside others
        std::int64_t first = 0, count = 0;
        layout_->writtenComponents(k, first, count);
        if (count == 0) continue;
        place.exact.clear();
        const auto size = static_cast<std::int64_t>(array.elementSize);
        for (const std::int64_t line : lines)
          place.exact.push_back(
              {array.at(array.index(line, first)), array.at(array.index(line, first)) + count * size});
      }
      if (place.exact.empty()) continue;
      place.isExact = true;
      place.outer = {place.exact.front().begin, place.exact.back().end};
    }
    if (place.outer.begin < place.outer.end) places.push_back(std::move(place));
  }
  const auto make = [&](Place& place) {
    if (place.isExact || layout_->array(place.argument).isAmbiguous) {
      if (!place.isExact) place.exact = {place.outer};
    } else {
      place.exact = layout_->intervals(place.argument, layout_->linesOf(place.argument));
    }
    place.isExact = true;
  };
  for (std::size_t i = 0; i < places.size(); ++i)
    for (std::size_t j = i + 1; j < places.size(); ++j) {
      const bool first = argument(places[i].argument).isWritten(), second = argument(places[j].argument).isWritten();
      if (!first && !second) continue;
      if (places[i].outer.end <= places[j].outer.begin || places[j].outer.end <= places[i].outer.begin) continue;
      make(places[i]);
      make(places[j]);
      const unsigned char* where = nullptr;
      if (!overlap(places[i].exact, places[j].exact, where)) continue;
      const bool isSame = given_[places[i].argument] == given_[places[j].argument];
      const Array &a = layout_->array(places[i].argument), &b = layout_->array(places[j].argument);
      if (isSame && (routine_.flags & kInPlace) != 0 && a.elements() == b.elements() && a.components() == 1) continue;
      const std::size_t output = first ? places[i].argument : places[j].argument;
      const std::size_t other = first ? places[j].argument : places[i].argument;
      if (isSame && argument(output).inPlaceOf == static_cast<int>(other)) continue;
      find(Kind::overlap, output, std::string("is ").append(argument(other).name).append(entryOf(other, where)),
           "memory of its own", entryOf(output, where));
    }
}

bool Checks::before() {
  memory_.beginCall();
  if (!checkScalars()) return false;
  layout_.emplace(routine_, given_);
  const bool areNumbersSound = checkNumbers();
  if (layout_->isEmpty()) return true;
  if (layout_->endPoint() - layout_->firstPoint() > kMostPoints) depth_.values = depth_.poisons = false;
  const std::size_t count = layout_->arguments().size();
  bool isSound = areNumbersSound;
  for (std::size_t k = 0; k < count; ++k)
    if (!checkArray(k)) isSound = false;
  if (!isSound) return false; // nothing below may be read
  if (depth_.values) {
    for (std::size_t k = 0; k < count; ++k) {
      if (isIgnored(k)) continue;
      if (argument(k).is(Role::list) && !checkList(k)) isSound = false;
      if (argument(k).is(Role::set)) checkSet(k);
    }
    // maps of points, maps of entities that these lead into, what all of them lead to
    for (const bool isOfPoints : {true, false})
      for (std::size_t k = 0; k < count; ++k) {
        if (argument(k).target < 0 || (layout_->array(k).lines == Lines::points) != isOfPoints) continue;
        if (!isOfPoints && !checkReach(k)) return false; // its values cannot be looked at
        if (!checkMap(k)) isSound = false;
      }
    for (std::size_t k = 0; k < count; ++k)
      if (argument(k).target < 0 && !checkReach(k)) isSound = false;
    if (!checkTables()) isSound = false;
  }
  if (!isSound) return false;
  if (depth_.values) {
    for (std::size_t k = 0; k < count; ++k) {
      const Argument& a = argument(k);
      if (isIgnored(k) || !a.isRead()) continue;
      if ((a.is(Role::mask) || a.is(Role::flag)) && a.type == Type::real) checkFlags(k);
      if (a.is(Role::stretch) || a.is(Role::planeStretch) || a.is(Role::axialStretch)) checkStretches(k);
    }
  }
  checkOverlaps();
  return true;
}

// Results with what they held, inputs with their hash.
void Checks::keep() {
  if (!depth_.values) return;
  for (std::size_t k = 0; k < layout_->arguments().size(); ++k) {
    const Argument& a = argument(k);
    const Array& array = layout_->array(k);
    if (isIgnored(k) || a.is(Role::unread) || given_[k] == nullptr || array.isAmbiguous || a.type == Type::texts)
      continue;
    if (a.has(kScalar) && a.direction == Direction::both) continue; // threads may share a counter
    if (!a.isWritten() && a.has(kScalar) && a.type != Type::real) continue;
    if (a.has(kOptional)) continue;
    Kept kept;
    kept.argument = k;
    kept.lines = layout_->linesOf(k);
    if (kept.lines.empty() || array.components() < 1) continue;
    kept.intervals = layout_->intervals(k, kept.lines);
    if (a.is(Role::record)) {
      std::int64_t first = 0, count = 0;
      layout_->writtenComponents(k, first, count);
      const auto size = static_cast<std::int64_t>(array.elementSize);
      kept.intervals.clear();
      for (const std::int64_t line : kept.lines)
        kept.intervals.push_back(
            {array.at(array.index(line, first)), array.at(array.index(line, first)) + count * size});
    }
    if (a.isWritten()) {
      kept.bytes = copyOf(kept.intervals);
      // Rows of the arrays beside those of the block: other threads may own them.
      if (depth_.poisons && __libc_single_threaded != 0 && array.lines == Lines::points && !layout_->isMapped(k)) {
        Interval extent{};
        if (layout_->extent(k, extent) && extent.end - extent.begin <= kMostOutside)
          for (std::size_t n = 1; n < kept.intervals.size(); ++n)
            kept.outside.push_back({kept.intervals[n - 1].end, kept.intervals[n].begin});
        kept.outsideBytes = copyOf(kept.outside);
      }
      kept.isPoisoned = depth_.poisons && a.direction == Direction::out && !a.is(Role::cursor);
    } else if (depth_.poisons) {
      kept.hash = hashOf(kept.intervals);
    }
    kept_.push_back(std::move(kept));
  }
  // An output that overlaps another argument has been told of; filling it would change what the routine reads.
  for (Kept& kept : kept_) {
    if (!kept.isPoisoned) continue;
    const unsigned char* where = nullptr;
    for (const Kept& other : kept_)
      if (&other != &kept && overlap(kept.intervals, other.intervals, where)) kept.isPoisoned = false;
    for (std::size_t k = 0; k < layout_->arguments().size(); ++k)
      if (argument(k).has(kScalar) && !argument(k).has(kByValue) && k != kept.argument && given_[k] != nullptr &&
          overlap(kept.intervals,
                  {{static_cast<const unsigned char*>(given_[k]), static_cast<const unsigned char*>(given_[k]) + 1}},
                  where))
        kept.isPoisoned = false;
  }
  for (const Kept& kept : kept_)
    if (kept.isPoisoned) poison(kept.intervals, argument(kept.argument).type);
}

void Checks::after(bool hasEnded) {
  for (const Kept& kept : kept_) {
    const Argument& a = argument(kept.argument);
    if (kept.isPoisoned) compareOutputs(kept, hasEnded);
    if (a.isWritten()) {
      if (kept.outsideBytes != copyOf(kept.outside))
        find(Kind::otherWritten, kept.argument, "rows behind the block have changed", "rows of the block alone");
    } else if (depth_.poisons) {
      compareInputs(kept);
    }
  }
  for (const Kept& kept : kept_)
    if (argument(kept.argument).isWritten() && argument(kept.argument).isReal()) checkFinite(kept);
}

// Puts back what was there where nothing has been written.
void Checks::compareOutputs(const Kept& kept, bool hasEnded) {
  const Argument& a = argument(kept.argument);
  const std::size_t size = layout_->array(kept.argument).elementSize;
  const unsigned char *old = kept.bytes.data(), *first = nullptr;
  std::size_t left = 0, all = 0;
  for (const Interval& i : kept.intervals)
    for (const unsigned char* at = i.begin; at < i.end; at += size, old += size, ++all) {
      if (!isPoison(at, a.type)) continue;
      std::memcpy(const_cast<unsigned char*>(at), old, size);
      if (first == nullptr) first = at;
      ++left;
    }
  if (left == 0 || hasEnded || isUnknownCode_) return;
  const bool isText = a.type == Type::character;
  if (isText && left < all) return; // the character itself
  // Materials and tables that are rejected, and parts of records that hold nothing, leave all as it was.
  const auto mayLeaveAll = [](const Argument& other) {
    return other.is(Role::properties) || other.is(Role::table) || other.is(Role::index);
  };
  const std::span<const Argument> arguments = layout_->arguments();
  if (left == all && std::any_of(arguments.begin(), arguments.end(), mayLeaveAll)) return;
  find(Kind::unwritten, kept.argument, std::to_string(left) + " of " + std::to_string(all) + " values", "all of them",
       entryOf(kept.argument, first));
}

void Checks::compareInputs(const Kept& kept) {
  if (hashOf(kept.intervals) == kept.hash) return;
  const unsigned char* where = nullptr;
  for (const Kept& other : kept_)
    if (argument(other.argument).isWritten() && overlap(kept.intervals, other.intervals, where)) return; // told already
  find(Kind::inputChanged, kept.argument, "other bytes after the call", "the same as before");
}

bool Checks::areInputsFinite(std::int64_t line) const {
  for (const Kept& kept : kept_) {
    const Argument& a = argument(kept.argument);
    if (!a.isReal() || !a.isRead()) continue;
    const Array& array = layout_->array(kept.argument);
    const auto size = static_cast<std::ptrdiff_t>(array.elementSize);
    const bool isByLine = line >= 0 && array.lines == Lines::points && !layout_->isMapped(kept.argument);
    const unsigned char* copy = kept.bytes.data();
    for (const Interval& i : kept.intervals) {
      for (const unsigned char* at = i.begin; at < i.end; at += size) {
        const unsigned char* value = a.isWritten() ? copy + (at - i.begin) : at;
        if (isFinite(value, a.type)) continue;
        if (!isByLine || (at - array.address) / size / array.before % array.lineCount == line) return false;
      }
      copy += i.end - i.begin;
    }
  }
  for (std::size_t k = 0; k < layout_->arguments().size(); ++k) { // what is read only at times
    const Argument& a = argument(k);
    if (a.type == Type::real && a.has(kByValue) && !std::isfinite(layout_->real(k))) return false;
    if (a.isReal() && a.has(kOptional) && !a.has(kScalar) && a.isRead() && !a.is(Role::unread) &&
        given_[k] != nullptr && memory_.canRead(given_[k], 8)) {
      Interval extent{};
      if (!layout_->extent(k, extent) ||
          !memory_.canRead(extent.begin, static_cast<std::size_t>(extent.end - extent.begin)))
        return false;
      if (firstNotFinite(extent.begin, extent.end, a.type) != nullptr) return false;
    }
  }
  return true;
}

// Powers of exponents that nobody means, such as a fit may try, leave the range of numbers.
bool Checks::hasLargeExponent() const {
  constexpr double kLarge = 100;
  for (const Kept& kept : kept_) {
    if (std::string_view(argument(kept.argument).unit) != "exponent") continue;
    for (const Interval& i : kept.intervals)
      for (const unsigned char* at = i.begin; at < i.end; at += sizeof(double))
        if (std::fabs(load<double>(at)) > kLarge) return true;
  }
  return false;
}

void Checks::checkFinite(const Kept& kept) {
  if ((routine_.flags & kMakesNaN) != 0) return;
  if (hasLargeExponent()) return;
  const Argument& a = argument(kept.argument);
  const Array& array = layout_->array(kept.argument);
  for (const Interval& i : kept.intervals) {
    const unsigned char* at = firstNotFinite(i.begin, i.end, a.type);
    if (at == nullptr) continue;
    const std::int64_t element = (at - array.address) / static_cast<std::ptrdiff_t>(array.elementSize);
    const bool isByLine = array.lines == Lines::points && array.lineCount > 0;
    if (isPoison(at, a.type) && kept.isPoisoned) return;
    if (areInputsFinite(isByLine ? element / array.before % array.lineCount : -1))
      find(Kind::notFinite, kept.argument,
           textOf(a.type == Type::real ? load<double>(at) : static_cast<double>(load<float>(at))),
           "finite numbers from finite inputs", entryOf(kept.argument, at));
    return;
  }
}

} // namespace sa::checked
