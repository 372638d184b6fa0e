// A file of fields in the Exodus II format, written piece by piece in any order.
#pragma once

#include "solver/results/field_names.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

// One file of several that have a model between them.  Nodes and elements count from 1 in the order of the file.
struct PartOfFile {
  struct Shared { // nodes that the file of another rank has too
    int32_t rank = 0;
    std::vector<int64_t> nodes;
  };
  int32_t rank = 0, parts = 1;
  int64_t nodes = 0, elements = 0;               // of all files, each counted once
  std::vector<int64_t> blockSizes{}, setSizes{}; // the same
  std::vector<Shared> shared{};                  // by rank
  std::vector<int64_t> border{};                 // elements that have one of these nodes
};

// All that a file has beside its arrays.
struct FieldsHead {
  struct Members {
    std::string name;
    int64_t count = 0;
  };
  std::string title;
  int64_t nodes = 0;
  std::vector<Members> blocks, sets; // of bricks, of nodes
  std::vector<std::string> info;
  std::vector<std::array<std::string, 4>> programs;  // name, version, date, time
  std::array<std::vector<std::string>, 3> variables; // of the model, nodes and elements
  int64_t largestNumber = 0;                         // of nodes and elements
  std::optional<PartOfFile> part;

  const std::vector<std::string>& variablesOf(Entity entity) const {
    return variables[static_cast<std::size_t>(entity)];
  }
  int64_t elements() const;
  // Beyond what the classic format holds: 2^31 entities or numbers, arrays of 4 GB.
  bool isLarge() const;
};

// All members throw WriteError.  Blocks, sets and variables count from 0, places from 0, times from 1.
class ExodusWriter {
public:
  ExodusWriter(const std::filesystem::path& file, const FieldsHead& head);
  // Goes on in a file that has a head like this one and `times`, the last of them `lastTime`; throws InputError for others.
  ExodusWriter(const std::filesystem::path& file, const FieldsHead& head, int64_t times, double lastTime);
  ~ExodusWriter();
  ExodusWriter(const ExodusWriter&) = delete;
  ExodusWriter& operator=(const ExodusWriter&) = delete;

  void putCoordinates(int64_t first, std::span<const double> coordinates); // (3, n)
  void putNumbers(Entity entity, int64_t first, std::span<const int64_t> numbers);
  bool hasNumbers(Entity entity, int64_t first, std::span<const int64_t> numbers) const;
  void putConnectivity(std::size_t block, int64_t first, std::span<const int64_t> corners); // (8, n), from 1
  void putSet(std::size_t set, int64_t first, std::span<const int64_t> nodes);              // from 1

  void beginTime(int64_t number, double time, std::span<const double> ofModel);
  // `values` (components, n) of as many variables from `variable` on.
  void putNodeValues(int64_t number, int variable, int components, int64_t first, std::span<const double> values);
  void putElementValues(int64_t number, int variable, int components, std::size_t block, int64_t first,
                        std::span<const double> values);
  void flush();
  void close();

private:
  void check(int status) const;
  void define(const FieldsHead& head);
  void definePart(const FieldsHead& head);
  void putPart(const FieldsHead& head);
  void putValues(Entity entity, int64_t id, int64_t number, int variable, int components, int64_t first,
                 std::span<const double> values);

  std::filesystem::path file_;
  int id_ = -1;
  std::vector<double> scratch_;
};

} // namespace sharedanalysis::solver
