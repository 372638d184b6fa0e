// Tables of a case file, with every mistake named at its place.
#pragma once

#include "solver/model/model.h"
#include "solver/model/range.h"
#include "solver/model/text.h"

#include <array>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

using Names = std::vector<std::string>;

// One table of the file; tables share what was read.  The parser is known to the source file alone: its header takes a
// second to compile.
class Table {
public:
  // Parses the file.  Throws InputError with file:line:column of a syntax error, and of a key that is not in the list.
  Table(const std::filesystem::path& file, const std::string& text, const Names& keys);

  // Throws InputError for a key that is not in the list.
  void checkKeys(const Names& keys) const;

  bool has(const char* key) const;
  bool isArray(const char* key) const;
  bool isTable(const char* key) const;

  // The place of a value, or of the table if it has no such key.
  std::string place(const char* key = nullptr) const;
  // The place of a number of an array, from 0 on.
  std::string place(const char* key, std::size_t number) const;
  // A file that is read, as seen from the folder of the case.
  std::filesystem::path besideCase(const std::filesystem::path& path) const;
  // The case and all such files so far, of this table and of those about and within it.
  const std::vector<std::filesystem::path>& files() const;

  [[noreturn]] void fail(const char* key, const std::string& text) const;

  // Lets `real` take an array of `count` numbers, of which `pick` makes one.
  void allowArrays(std::size_t count, std::function<double(const std::vector<double>&)> pick);

  // The readers name the place of a bad value.
  double real(const char* key, const Range& range, const std::string& unit) const;
  double real(const char* key, const Range& range, const std::string& unit, double otherwise) const;
  std::vector<double> reals(const char* key, const std::string& unit) const;
  std::array<double, 3> vector(const char* key, const std::string& unit, const std::array<double, 3>& otherwise) const;
  std::array<double, 3> vector(const char* key, const std::string& unit) const;
  std::string text(const char* key) const;
  std::string text(const char* key, const std::string& otherwise) const;
  // A text that may be a path: without control characters, as the system would end it at a zero.
  std::string path(const char* key) const;
  // The name of all files of a job, by default that of the case.  No path.
  std::string job() const;
  Names texts(const char* key, const std::string& expected) const;
  bool flag(const char* key, bool otherwise) const;

  // The table as text under [[name]], without an end of its last line.  `numbers` has all numbers of arrays, or the one of a
  // key, that take the place of the table's.
  std::string written(const char* name, const std::map<std::string, std::vector<double>>& numbers) const;

  // [name]; an empty table if there is none.
  Table table(const char* key, const Names& keys) const;
  // [[name]], any number of them.
  std::vector<Table> tables(const char* key, const Names& keys) const;

private:
  struct Content;
  explicit Table(std::shared_ptr<const Content> content) : content_(std::move(content)) {}

  std::shared_ptr<const Content> content_;
  std::size_t arrayLength_ = 0;
  std::function<double(const std::vector<double>&)> pick_;
};

// The contents of a file.  Throws InputError if it cannot be read.
std::string readText(const std::filesystem::path& file, const std::string& expected = "a case file");

} // namespace sharedanalysis::solver
