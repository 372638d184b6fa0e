// The data of one call of one kernel, made up from what the registry says about its arguments.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "registry.h"

namespace sa::test {

// What an output holds before a call: no kernel produces it from the inputs given here.
constexpr std::uint64_t kPoisonReal = 0x7ff4dead0000beefULL; // a NaN
constexpr std::uint32_t kPoisonInteger = 0x5ca1ab1eU;

// What runs along one dimension of an array: the points of the block, or the entities that maps name.
enum class Lines { none, points, entities };

struct Array {
  const ArgumentInfo* info = nullptr;
  std::size_t elementSize = 0;
  Lines lines = Lines::none;
  std::size_t before = 1, lineCount = 1, after = 1; // product of the dimensions before and after that of the lines
  std::vector<unsigned char> bytes;

  std::size_t components() const { return before * after; }
  std::size_t elements() const { return before * lineCount * after; }
  std::size_t index(std::size_t line, std::size_t component) const {
    return (component / before * lineCount + line) * before + component % before;
  }
  std::uint64_t bits(std::size_t element) const { // as stored
    std::uint64_t value = 0;
    if (elementSize == sizeof value) // the usual one, without a call
      std::memcpy(&value, &bytes[element * sizeof value], sizeof value);
    else
      std::memcpy(&value, &bytes[element * elementSize], elementSize);
    return value;
  }
  std::uint64_t canonicalBits(std::size_t element) const; // one pattern for all NaNs
  void setBits(std::size_t element, std::uint64_t value) {
    if (elementSize == sizeof value)
      std::memcpy(&bytes[element * sizeof value], &value, sizeof value);
    else
      std::memcpy(&bytes[element * elementSize], &value, elementSize);
  }
  double real(std::size_t element) const {
    double value = 0;
    std::memcpy(&value, &bytes[element * elementSize], sizeof value);
    return value;
  }
  void setReal(std::size_t element, double value) { std::memcpy(&bytes[element * elementSize], &value, sizeof value); }
  int integer(std::size_t element) const {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(bits(element)));
  }
  void setInteger(std::size_t element, int value) { setBits(element, static_cast<std::uint32_t>(value)); }
  bool isPoisoned(std::size_t element) const {
    return bits(element) == (info->isReal() ? kPoisonReal : kPoisonInteger);
  }
};

// Points are numbered from 0 here.
struct KernelCase {
  const RoutineInfo* routine = nullptr;
  int points = 0; // of this call
  int first = 0;  // first point of a range, else 0
  int cursor = 0; // where records begin, from 1
  std::vector<Array> arrays;
  std::uint64_t result = 0; // bits of the returned value

  // In the order of the arguments; every scalar is an array of one value.
  const Array* find(std::string_view name) const;
  bool isProcessed(std::size_t point) const;
  // Entities of an array that the processed points, or one point alone when given, lead to through the maps.
  std::vector<bool> reachedEntities(const Array& array, int onlyPoint = -1) const;
  bool isMapped(const Array& array) const; // some map names its entities, or they are records at the cursor
  int recordsBefore(int point) const;
  // Position of the record of each point, from 0; -1 for a point that is no member of the set.
  std::vector<int> recordsOfPoints() const;

  // Says that the block has fewer points than the arrays were made for.
  void setPoints(int n);
  // The same call for every point of the block, by a routine that has no list or by this one; lists may run backwards.
  KernelCase forAllPoints(const RoutineInfo& form, bool isReversed = false) const;
  // The points begin .. end - 1 of this call as a call of their own, and its outputs put back.
  KernelCase piece(int begin, int end) const;
  void putBack(const KernelCase& piece, int begin);
};

// Number of combinations of the values that codes, counts and the like take in turn.
int variantCount(const RoutineInfo& routine);
// Same arguments, same bits, on every machine and compiler.
KernelCase makeCase(const RoutineInfo& routine, int points, int variant);

} // namespace sa::test
