// Tables among the properties of a built-in user material: they stand one after another behind the constants, and a constant
// counts the rows of each.
#pragma once

#include "spx/impl/user/frame.h"

namespace sa::user {

// Property `number`, counted from 1; one that is not given counts as zero.
inline double property(const Block& block, int number) {
  return number <= block.properties ? block.props[number - 1] : 0.0;
}

struct Table {
  const double* values = nullptr;
  int rows = 0, columns = 0;

  double at(int row, int column) const { return values[int64_t{row} * columns + column]; }
  bool isIncreasing(int column) const {
    for (int r = 1; r < rows; ++r)
      if (!(at(r, column) > at(r - 1, column))) return false;
    return true;
  }
  bool isPositive(int column) const {
    for (int r = 0; r < rows; ++r)
      if (!(at(r, column) > 0.0)) return false;
    return true;
  }
};

class Tables {
public:
  Tables(const Block& block, int constants)
      : block_(block), next_(constants < block.properties ? constants : block.properties) {}

  // The table of as many rows; false when that is no count, or the properties end before it does.
  bool take(double rows, int columns, Table& table) {
    const double room = static_cast<double>(block_.properties - next_);
    if (!(rows >= 0.0 && rows * static_cast<double>(columns) <= room)) return false;
    table = {block_.props + next_, static_cast<int>(rows), columns};
    next_ += int64_t{table.rows} * columns;
    return true;
  }

  // The number, from 1, of the last property taken.
  int32_t last() const { return static_cast<int32_t>(next_); }

private:
  const Block& block_;
  int64_t next_;
};

constexpr std::string_view kTablesCutOff = "The properties of material %S end before its tables do.";

} // namespace sa::user
