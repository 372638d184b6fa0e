// Whether the header of a material table leads to a record, groups and rows that hang together.  The layout is that of
// spx/tables.h.
#include "checks.h"

#include <cmath>
#include <string_view>

namespace sa::checked {
namespace {

class Table {
public:
  Table(const Layout& layout, Memory& memory) : layout_(layout), memory_(memory) {
    for (std::size_t k = 0; k < layout.arguments().size(); ++k) {
      const Argument& a = layout.arguments()[k];
      const std::string_view name = a.name;
      if (a.is(Role::table)) (name == "header" ? header_ : a.isReal() ? reals_ : ints_) = static_cast<int>(k);
      if (name == "option") option_ = static_cast<int>(k);
      if (name == "dependencies") dependencies_ = static_cast<int>(k);
      if (name == "extra") extra_ = static_cast<int>(k);
      if (name == "fields") fields_[0] = static_cast<int>(k);
      if (name == "fieldDerivatives") fields_[1] = static_cast<int>(k);
      if (name == "states") states_ = static_cast<int>(k);
    }
  }

  std::optional<TableFault> check() {
    if (header_ < 0 || option_ < 0 || layout_.address(index(header_)) == nullptr) return std::nullopt;
    const std::int64_t option = value(option_);
    if (extra_ >= 0 && value(extra_) == 0)
      regular(option == 1 ? 1 + value(dependencies_) : value(dependencies_), value(dependencies_) > 2);
    else if (extra_ >= 0 || option == 300 || option == 500)
      general(extra_ >= 0 ? 0 : option);
    else if (option == 100)
      real(header_, 1, header(1));
    return fault_;
  }

  std::vector<TableUse> uses() {
    const std::optional<TableFault> fault = check();
    return fault && fault->isFatal ? std::vector<TableUse>() : std::move(uses_);
  }

private:
  static std::size_t index(int k) { return static_cast<std::size_t>(k); }
  std::int64_t value(int k) const { return k < 0 ? 0 : layout_.integer(index(k)); }
  std::int64_t header(int field) const { return entry(header_, field); }

  std::int64_t entry(int array, std::int64_t position) const {
    std::int32_t number;
    std::memcpy(&number, static_cast<const char*>(layout_.address(index(array))) + (position - 1) * 4, sizeof number);
    return number;
  }
  double realAt(std::int64_t position) const {
    double number;
    std::memcpy(&number, static_cast<const char*>(layout_.address(index(reals_))) + (position - 1) * 8, sizeof number);
    return number;
  }

  bool fail(int array, std::int64_t at, const std::string& text, const std::string& allowed, bool isFatal = false) {
    if (!fault_) fault_ = TableFault{index(array), at, text, allowed, isFatal};
    return false;
  }

  // Entries `first` and `count` of a pool, to which entry `at` of `from` leads.
  bool reaches(int pool, std::size_t size, int from, std::int64_t at, std::int64_t first, std::int64_t count) {
    const std::string number = std::to_string(first);
    if (first < 1) return fail(from, at, number, "a position in the pool, from 1", true);
    const auto* start = static_cast<const char*>(layout_.address(index(pool)));
    if (start == nullptr) return fail(pool, 0, "a null pointer", "the pool that the table lies in", true);
    if (count < 0 ||
        !memory_.canRead(start + static_cast<std::size_t>(first - 1) * size, static_cast<std::size_t>(count) * size))
      return fail(from, at, number + ", " + std::to_string(count) + " entries from there are no memory",
                  "a position in the pool", true);
    uses_.push_back({index(pool), first, count});
    return true;
  }
  bool integers(int from, std::int64_t at, std::int64_t first, std::int64_t count) {
    return reaches(ints_, 4, from, at, first, count);
  }
  bool real(int from, std::int64_t at, std::int64_t first, std::int64_t count = 1) {
    return reaches(reals_, 8, from, at, first, count);
  }

  void regular(std::int64_t variables, bool isUnknown) {
    if (isUnknown || variables < 1 || variables > 3) return;
    if (!real(header_, 1, header(1), 2 * variables) || !integers(header_, 2, header(2), 2 * variables)) return;
    std::int64_t last = 0;
    for (std::int64_t v = 0; v < variables; ++v) {
      const std::int64_t at = header(2) + 2 * v, points = entry(ints_, at), stride = entry(ints_, at + 1);
      if (points < 1) fail(ints_, at, std::to_string(points) + " points of a variable", "at least 1");
      if (stride < 1) fail(ints_, at + 1, "stride " + std::to_string(stride), "at least 1");
      last += (points - 1) * stride;
      const double spacing = realAt(header(1) + 2 * v + 1);
      if (!(spacing > 0.0)) fail(reals_, header(1) + 2 * v + 1, "reciprocal spacing " + textOf(spacing), "above 0");
    }
    if (!fault_) real(header_, 3, header(3), last + 1);
  }

  void general(std::int64_t option) {
    const std::int64_t record = header(1);
    if (!integers(header_, 1, record, 13)) return;
    const std::int64_t rows = entry(ints_, record), variables = entry(ints_, record + 4);
    std::int64_t columns = 1;
    for (int field = 2; field <= 4; ++field) {
      if (header(field) < 0) fail(header_, field, std::to_string(header(field)), "at least 0");
      columns += header(field);
    }
    if (variables < 1) { // rejected by the routine
      fail(ints_, record + 4, std::to_string(variables) + " variables", "at least 1");
      return;
    }
    if (rows < 1) fail(ints_, record, std::to_string(rows) + " rows", "at least 1");
    if (variables > columns - 1)
      fail(ints_, record + 4, std::to_string(variables) + " variables",
           "1 to " + std::to_string(columns - 1) + ", those of the header");
    if (fault_) return;
    if (!real(ints_, record + 1, entry(ints_, record + 1), rows * columns)) return;
    if (!integers(ints_, record + 3, entry(ints_, record + 3), variables)) return;
    if (!integers(ints_, record + 5, entry(ints_, record + 5), variables)) return;
    if (!real(ints_, record + 12, entry(ints_, record + 12), 2 * variables)) return;
    if (entry(ints_, record + 6) != 0 && !real(ints_, record + 6, entry(ints_, record + 6), rows)) return;
    const std::int64_t column = entry(ints_, record + 5);
    for (std::int64_t v = 0; v < variables; ++v)
      if (entry(ints_, column + v) < 2 || entry(ints_, column + v) > columns) {
        fail(ints_, column + v, "column " + std::to_string(entry(ints_, column + v)),
             "2 to " + std::to_string(columns));
        return;
      }
    for (std::int64_t v = 0; v < variables; ++v) {
      const std::int64_t source = entry(ints_, entry(ints_, record + 3) + v);
      for (const int array : {source > 0 ? fields_[0] : states_, source > 0 ? fields_[1] : -1})
        if (array >= 0 && source != 0) uses_.push_back({index(array), 1, std::abs(source)});
    }
    if (option == 300 || option == 500) transforms(option, variables);
    groups(record, rows, variables, columns);
  }

  void transforms(std::int64_t option, std::int64_t variables) {
    for (const int field : {5, 7})
      if ((field == 5 || option == 300) && (header(field) < 0 || header(field) > variables))
        fail(header_, field, std::to_string(header(field)), "0 to " + std::to_string(variables));
    if (fault_ || header(5) == 0 || !real(header_, 6, header(6))) return;
    if (!(realAt(header(6)) > 0.0)) fail(reals_, header(6), "reference value " + textOf(realAt(header(6))), "above 0");
  }

  // From the last variable down: members are counted through the whole table, and those of variable 2 are the rows.
  void groups(std::int64_t record, std::int64_t rows, std::int64_t variables, std::int64_t columns) {
    std::int64_t at = entry(ints_, record + 2), wanted = 1;
    std::vector<std::int64_t> starts = {1, rows + 1};
    for (std::int64_t v = variables; v >= 2; --v) {
      if (!integers(ints_, record + 2, at, 1)) return;
      const std::int64_t groups = entry(ints_, at);
      if (v < variables && groups != wanted) {
        fail(ints_, at, std::to_string(groups) + " groups", std::to_string(wanted) + ", as many as members above");
        return;
      }
      if (groups < 1) {
        fail(ints_, at, std::to_string(groups) + " groups", "at least 1");
        return;
      }
      if (!integers(ints_, record + 2, at, groups + 2)) return;
      for (std::int64_t g = 0; g <= groups; ++g) {
        const std::int64_t member = entry(ints_, at + 1 + g), before = g == 0 ? 0 : entry(ints_, at + g);
        if (g == 0 ? member != 1 : member <= before) {
          fail(ints_, at + 1 + g, "first member " + std::to_string(member),
               g == 0 ? "1" : "above " + std::to_string(before));
          return;
        }
      }
      wanted = entry(ints_, at + 1 + groups) - 1;
      if (v == 2) {
        starts.clear();
        for (std::int64_t g = 0; g <= groups; ++g) starts.push_back(entry(ints_, at + 1 + g));
        if (wanted != rows) {
          fail(ints_, at + 1 + groups, "the groups end at row " + std::to_string(wanted),
               std::to_string(rows) + " rows");
          return;
        }
      }
      at += groups + 2;
    }
    const std::int64_t first = entry(ints_, record + 1), column = entry(ints_, entry(ints_, record + 5));
    for (std::size_t g = 0; g + 1 < starts.size(); ++g)
      for (std::int64_t row = starts[g]; row + 1 < starts[g + 1]; ++row) {
        const std::int64_t here = first + (row - 1) * columns + column - 1;
        if (realAt(here) <= realAt(here + columns)) continue; // equal ones make a jump
        fail(reals_, here + columns, textOf(realAt(here + columns)) + " after " + textOf(realAt(here)),
             "ascending rows");
        return;
      }
  }

  const Layout& layout_;
  Memory& memory_;
  int ints_ = -1, reals_ = -1, header_ = -1, option_ = -1, dependencies_ = -1, extra_ = -1, states_ = -1;
  int fields_[2] = {-1, -1};
  std::optional<TableFault> fault_;
  std::vector<TableUse> uses_;
};

} // namespace

std::optional<TableFault> faultOfTable(const Layout& layout, Memory& memory) {
  for (const Argument& a : layout.arguments())
    if (a.is(Role::table)) return Table(layout, memory).check();
  return std::nullopt;
}

std::vector<TableUse> usesOfTable(const Layout& layout, Memory& memory) {
  for (const Argument& a : layout.arguments())
    if (a.is(Role::table)) return Table(layout, memory).uses();
  return {};
}

} // namespace sa::checked
