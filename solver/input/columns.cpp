#include "solver/input/columns.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

namespace sharedanalysis::solver {
namespace {

// A cell of a line, without blanks and quotes around it.
struct Cell {
  std::string_view text;
  std::size_t at; // column of the file, from 1 on
};

std::vector<Cell> cellsOf(std::string_view line, char separator) {
  const auto isAround = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '"'; };
  std::vector<Cell> cells;
  for (std::size_t from = 0; from <= line.size();) {
    const std::size_t to = std::min(line.find(separator, from), line.size());
    std::size_t begin = from, end = to;
    while (begin < end && isAround(line[begin])) ++begin;
    while (end > begin && isAround(line[end - 1])) --end;
    cells.push_back({line.substr(begin, end - begin), begin + 1});
    from = to + 1;
  }
  return cells;
}

bool isEmpty(std::string_view line) {
  const std::size_t first = line.find_first_not_of(" \t\r");
  return first == std::string_view::npos || line[first] == '#';
}

char separatorOf(std::string_view names) {
  for (const char c : {';', '\t'})
    if (names.find(c) != std::string_view::npos) return c;
  return ',';
}

} // namespace

Columns::Columns(const Table& table, const std::vector<CurveColumn>& keys)
    : table_(table), keys_(keys), values_(keys.size()), places_(keys.size()) {
  if (!table.has("file")) {
    readArrays();
    return;
  }
  for (const CurveColumn& column : keys)
    if (table.has(column.key))
      table.fail(column.key, std::string(column.key) + " stands beside file, expected one of them");
  const std::filesystem::path file = table.besideCase(table.path("file"));
  try {
    readFile(file);
  } catch (const InputError& error) {
    throw InputError(table.place("file") + ": " + error.what());
  }
}

void Columns::readArrays() {
  for (std::size_t k = 0; k < keys_.size(); ++k) {
    values_[k] = table_.reals(keys_[k].key, keys_[k].unit);
    if (values_[k].size() != rows())
      table_.fail(keys_[k].key, std::string(keys_[k].key) + " has " + counted(values_[k].size(), "number") + " and " +
                                    keys_[0].key + " has " + std::to_string(rows()) + ", expected as many of both");
  }
}

// The first line that is not empty names the columns, in any order and among others; # begins a comment.
void Columns::readFile(const std::filesystem::path& path) {
  const std::string content = readText(path, "a table of numbers");
  std::string_view rest = content;
  if (rest.starts_with("\xEF\xBB\xBF")) rest.remove_prefix(3);
  std::vector<std::size_t> places;
  char separator = ',';
  for (std::size_t number = 1; !rest.empty(); ++number) {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    const std::string_view line = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    if (isEmpty(line)) continue;
    const auto place = [&](std::size_t at) {
      return path.string() + ":" + std::to_string(number) + ":" + std::to_string(at);
    };
    if (places.empty()) {
      separator = separatorOf(line);
      const std::vector<Cell> names = cellsOf(line, separator);
      for (const CurveColumn& key : keys_) {
        const auto isNamed = [&](const Cell& cell) { return cell.text == key.key; };
        const auto found = std::find_if(names.begin(), names.end(), isNamed);
        if (found == names.end())
          throw InputError(place(1) + ": no column " + key.key + ", expected a first line with the names of columns");
        if (const auto other = std::find_if(found + 1, names.end(), isNamed); other != names.end())
          throw InputError(place(other->at) + ": a second column " + key.key + ", expected one of them");
        places.push_back(static_cast<std::size_t>(found - names.begin()));
      }
      continue;
    }
    const std::vector<Cell> cells = cellsOf(line, separator);
    for (std::size_t k = 0; k < keys_.size(); ++k) {
      const Cell cell = places[k] < cells.size() ? cells[places[k]] : Cell{"", line.size() + 1};
      double value = 0;
      const char* begin = cell.text.data() + (cell.text.starts_with('+') ? 1 : 0);
      const char* stop = cell.text.data() + cell.text.size();
      const auto [at, error] = std::from_chars(begin, stop, value);
      if (error != std::errc() || at != stop || !std::isfinite(value))
        throw InputError(place(cell.at) + ": " + keys_[k].key + " is \"" + std::string(cell.text) +
                         "\", expected a finite number" + (*keys_[k].unit ? " in " + std::string(keys_[k].unit) : ""));
      values_[k].push_back(value);
      places_[k].push_back(place(cell.at));
    }
  }
  if (rows() == 0) throw InputError(path.string() + ": has no numbers, expected a line of names and lines of numbers");
}

void Columns::expectIncreasing(std::size_t column) const {
  const std::vector<double>& x = values_[column];
  for (std::size_t k = 1; k < x.size(); ++k)
    if (!(x[k] > x[k - 1]))
      fail(column, k,
           std::string(keys_[column].key) + " goes from " + shortNumber(x[k - 1]) + " to " + shortNumber(x[k]) +
               ", expected increasing numbers");
}

void Columns::fail(std::size_t column, std::size_t row, const std::string& text) const {
  if (places_[column].empty()) throw InputError(table_.place(keys_[column].key, row) + ": " + text);
  throw InputError(places_[column][row] + ": " + text);
}

} // namespace sharedanalysis::solver
