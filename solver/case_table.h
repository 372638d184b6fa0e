// Tables of a case file, with every mistake named at its place.
#pragma once

#include "model.h"
#include "text.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <toml++/toml.h>

namespace sharedanalysis::solver {

using Names = std::vector<std::string>;

// What a number must be, in words and as a test.
struct Range {
  const char* expected;
  bool (*holds)(double);
};

inline constexpr Range anyNumber{"a finite number", [](double) { return true; }};
inline constexpr Range positive{"a positive number", [](double x) { return x > 0; }};
inline constexpr Range notNegative{"a number that is not negative", [](double x) { return x >= 0; }};
inline constexpr Range fraction{"a number above 0 and not above 1", [](double x) { return x > 0 && x <= 1; }};
inline constexpr Range aboveOne{"a number above 1", [](double x) { return x > 1; }};
inline constexpr Range aboveRootThree{"a number above 1.7321", [](double x) { return x * x > 3; }};
inline constexpr Range stepCount{"a number from 1 to 100000", [](double x) { return x >= 1 && x <= 100000; }};
inline constexpr Range zeroToOne{"a number from 0 to 1", [](double x) { return x >= 0 && x <= 1; }};

inline std::string placeOf(const std::string& file, const toml::source_region& region) {
  if (region.begin.line == 0) return file;
  return file + ":" + std::to_string(region.begin.line) + ":" + std::to_string(region.begin.column);
}

inline std::string typeName(const toml::node& node) {
  switch (node.type()) {
  case toml::node_type::table:
    return "a table";
  case toml::node_type::array:
    return "an array";
  case toml::node_type::string:
    return "a text";
  case toml::node_type::integer:
  case toml::node_type::floating_point:
    return "a number";
  case toml::node_type::boolean:
    return "true or false";
  default:
    return "a date or time";
  }
}

// One table of the file.  The constructor refuses keys that are not in the list; the readers name the place of a bad value.
class Table {
public:
  Table(std::string file, const toml::table& table, std::string name, Names keys)
      : file_(std::move(file)), table_(table), name_(std::move(name)), keys_(std::move(keys)) {
    checkKeys(keys_);
  }

  void checkKeys(const Names& keys) const {
    for (const auto& [key, node] : table_) {
      const std::string word(key.str());
      if (std::find(keys.begin(), keys.end(), word) != keys.end()) continue;
      const std::string near = suggestion(word, keys);
      throw InputError(placeOf(file_, key.source()) + ": unknown key \"" + word + "\"" + inTable() + ", " +
                       (near.empty() ? "expected one of " + joined(keys, ", ") : near));
    }
  }

  bool has(const char* key) const { return table_.contains(key); }

  // The place of a value, or of the table when the value is not there.
  std::string place(const char* key = nullptr) const {
    const toml::node* node = key ? table_.get(key) : nullptr;
    return placeOf(file_, node ? node->source() : table_.source());
  }

  [[noreturn]] void fail(const char* key, const std::string& text) const { throw InputError(place(key) + ": " + text); }

  // Lets `real` take an array of `count` numbers, of which `pick` makes one.
  void allowArrays(std::size_t count, std::function<double(const std::vector<double>&)> pick) {
    arrayLength_ = count;
    pick_ = std::move(pick);
  }

  double real(const char* key, const Range& range, const std::string& unit) const {
    if (pick_ && isArray(key)) return pick_(numbers(key, range, unit, arrayLength_));
    return number(required(key, expectedNumber(range, unit)), key, range, unit);
  }
  double real(const char* key, const Range& range, const std::string& unit, double otherwise) const {
    return has(key) ? real(key, range, unit) : otherwise;
  }

  std::string text(const char* key) const {
    const toml::node& node = required(key, "a text in quotes");
    const auto value = node.value_exact<std::string>();
    if (!value || value->empty())
      fail(key, std::string(key) + " is " + (value ? "empty" : typeName(node)) + ", expected a text in quotes");
    return *value;
  }
  std::string text(const char* key, const std::string& otherwise) const { return has(key) ? text(key) : otherwise; }

  std::vector<double> reals(const char* key, const std::string& unit) const {
    const std::string expected = "an array of numbers" + in(unit);
    std::vector<double> values;
    for (const toml::node& node : array(key, expected)) values.push_back(number(node, key, anyNumber, unit));
    if (values.empty()) fail(key, std::string(key) + " is empty, expected " + expected);
    return values;
  }

  std::array<double, 3> vector(const char* key, const std::string& unit, const std::array<double, 3>& otherwise) const {
    if (!has(key)) return otherwise;
    const std::vector<double> values = reals(key, unit);
    if (values.size() != 3)
      fail(key, std::string(key) + " has " + counted(values.size(), "number") + ", expected 3 (x, y, z)" + in(unit));
    return {values[0], values[1], values[2]};
  }

  Names texts(const char* key, const std::string& expected) const {
    Names values;
    for (const toml::node& node : array(key, expected)) {
      const auto value = node.value_exact<std::string>();
      if (!value)
        throw InputError(placeOf(file_, node.source()) + ": " + key + " has " + typeName(node) + ", expected " +
                         expected);
      values.push_back(*value);
    }
    if (values.empty()) fail(key, std::string(key) + " is empty, expected " + expected);
    return values;
  }

  bool isArray(const char* key) const { return table_.get(key) && table_.get(key)->is_array(); }

  // [name]; an empty table when it is not there.
  Table table(const char* key, Names keys) const {
    static const toml::table none;
    const toml::node* node = table_.get(key);
    if (node && !node->is_table()) fail(key, std::string(key) + " is " + typeName(*node) + ", expected [" + key + "]");
    return {file_, node ? *node->as_table() : none, key, std::move(keys)};
  }

  // [[name]], any number of them.
  std::vector<Table> tables(const char* key, const Names& keys) const {
    std::vector<Table> result;
    if (!has(key)) return result;
    const std::string expected = "[[" + std::string(key) + "]]";
    for (const toml::node& node : array(key, expected)) {
      if (!node.is_table())
        throw InputError(placeOf(file_, node.source()) + ": " + key + " has " + typeName(node) + ", expected " +
                         expected);
      result.emplace_back(file_, *node.as_table(), key, keys);
    }
    return result;
  }

private:
  static std::string in(const std::string& unit) { return unit.empty() ? "" : " in " + unit; }
  static std::string expectedNumber(const Range& range, const std::string& unit) { return range.expected + in(unit); }
  std::string inTable() const { return name_.empty() ? "" : " in " + name_; }

  const toml::node& required(const char* key, const std::string& expected) const {
    const toml::node* node = table_.get(key);
    if (!node) fail(key, std::string(key) + " is missing" + inTable() + ", expected " + expected);
    return *node;
  }

  const toml::array& array(const char* key, const std::string& expected) const {
    const toml::node& node = required(key, expected);
    if (!node.is_array()) fail(key, std::string(key) + " is " + typeName(node) + ", expected " + expected);
    return *node.as_array();
  }

  std::vector<double> numbers(const char* key, const Range& range, const std::string& unit, std::size_t count) const {
    std::vector<double> values;
    for (const toml::node& node : array(key, "")) values.push_back(number(node, key, range, unit));
    if (values.size() != count)
      fail(key, std::string(key) + " has " + counted(values.size(), "number") + ", expected one number or " +
                    std::to_string(count));
    return values;
  }

  double number(const toml::node& node, const char* key, const Range& range, const std::string& unit) const {
    const auto value = node.is_number() ? node.value<double>() : std::nullopt;
    if (value && std::isfinite(*value) && range.holds(*value)) return *value;
    throw InputError(placeOf(file_, node.source()) + ": " + key + " is " +
                     (value ? shortNumber(*value) : typeName(node)) + ", expected " + expectedNumber(range, unit));
  }

  std::string file_;
  const toml::table& table_;
  std::string name_;
  Names keys_;
  std::size_t arrayLength_ = 0;
  std::function<double(const std::vector<double>&)> pick_;
};

// The whole file.  Throws InputError where it cannot be read.
std::string readText(const std::filesystem::path& file);
// Its tables.  Throws InputError with the place of what is no TOML.
toml::table parseCase(const std::filesystem::path& file, const std::string& text);

} // namespace sharedanalysis::solver
