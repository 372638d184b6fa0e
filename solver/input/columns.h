// Columns of numbers: arrays of a case, or columns of a file that it names.
#pragma once

#include "solver/input/case_table.h"
#include "solver/model/user_curves.h"

namespace sharedanalysis::solver {

// As many numbers of each column, at least one.
class Columns {
public:
  // From arrays with these keys, or from the file of the key `file`, which lies in the case's folder unless its path is
  // absolute.  Throws InputError with the place of what is wrong.
  Columns(const Table& table, const std::vector<CurveColumn>& keys);

  std::size_t rows() const { return values_.front().size(); }
  const std::vector<double>& column(std::size_t k) const { return values_[k]; }
  std::vector<double> take(std::size_t k) { return std::move(values_[k]); }

  // The numbers of a column must increase.
  void expectIncreasing(std::size_t column) const;
  // Names the place of a number.
  [[noreturn]] void fail(std::size_t column, std::size_t row, const std::string& text) const;

private:
  void readArrays();
  void readFile(const std::filesystem::path& file);

  Table table_;
  std::vector<CurveColumn> keys_;
  std::vector<std::vector<double>> values_;
  std::vector<std::vector<std::string>> places_; // of the numbers of a file
};

} // namespace sharedanalysis::solver
