// The checks of one call, before and after it.
#pragma once

#include <optional>

#include "layout.h"
#include "memory.h"
#include "report.h"

namespace sa::checked {

constexpr std::uint64_t kPoisonReal = 0x7ff4dead0000beefULL; // a NaN that no kernel makes
constexpr std::uint32_t kPoisonInteger = 0x5ca1ab1eU;
constexpr unsigned char kPoisonCharacter = 0xa5;

struct Depth {
  bool probes = false;  // asks the kernel for every array
  bool values = false;  // looks into arrays: lists, maps, masks, results
  bool poisons = false; // fills outputs before the call, guards the inputs
};

class Checks {
public:
  Checks(const Routine& routine, const void* const* arguments, const void* place, Memory& memory, Depth depth)
      : routine_(routine), given_(arguments), place_(place), memory_(memory), depth_(depth) {}

  // False when the call must not be made: an address that it needs is no memory, or it would leave its
  // arrays.
  bool before();
  // Keeps what the call must not change, and fills what it must write.
  void keep();
  // hasEnded: the routine has ended the analysis, and may have left its outputs alone.
  void after(bool hasEnded);
  const std::optional<Layout>& layout() const { return layout_; }
  bool isEmpty() const { return layout_->isEmpty(); }

private:
  // What is kept of an array over the call.
  struct Kept {
    std::size_t argument = 0;
    std::vector<std::int64_t> lines;
    std::vector<Interval> intervals, outside; // of the lines, and the rows of the array between them
    std::vector<unsigned char> bytes;         // of the intervals, in their order
    std::vector<unsigned char> outsideBytes;
    std::uint64_t hash = 0;
    bool isPoisoned = false;
  };

  const Argument& argument(std::size_t k) const { return layout_->arguments()[k]; }
  void find(Kind kind, std::size_t k, const std::string& text, const std::string& allowed,
            const std::string& entry = "");
  bool accessible(std::size_t k, const unsigned char* begin, const unsigned char* end, bool isFirst);
  bool isIgnored(std::size_t k) const;

  bool checkScalars();
  bool checkNumbers();
  bool checkArray(std::size_t k);
  bool checkText(std::size_t k);
  bool checkReach(std::size_t k);
  bool checkList(std::size_t k);
  void checkSet(std::size_t k);
  bool checkMap(std::size_t k);
  void checkFlags(std::size_t k);
  void checkStretches(std::size_t k);
  bool checkTables();
  void checkOverlaps();

  void compareOutputs(const Kept& kept, bool hasEnded);
  void compareInputs(const Kept& kept);
  void checkFinite(const Kept& kept);
  bool hasLargeExponent() const;
  bool areInputsFinite(std::int64_t line) const;
  std::string entryOf(std::size_t k, const unsigned char* address) const;

  const Routine& routine_;
  const void* const* given_;
  const void* place_;
  Memory& memory_;
  Depth depth_;
  std::optional<Layout> layout_;
  std::vector<Kept> kept_;
  bool isUnknownCode_ = false; // what follows from it is not told as well
};

// In the words of a report.
std::string textOf(double value);
// Number of the first entry of a material table that does not hang together; see material_tables.cpp.
struct TableFault {
  std::size_t argument;
  std::int64_t entry; // from 1, 0 for none
  std::string text, allowed;
  bool isFatal = false; // leads out of the memory
};
std::optional<TableFault> faultOfTable(const Layout& layout, Memory& memory);
// Entries of the pools that a sound table leads to, and columns of the field and state variables that it names.
struct TableUse {
  std::size_t argument;
  std::int64_t first, count; // from 1
};
std::vector<TableUse> usesOfTable(const Layout& layout, Memory& memory);

} // namespace sa::checked
