#include "solver/input/case_table.h"

#include "solver/model/text.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <optional>
#include <sstream>
#include <toml++/toml.h>

namespace sharedanalysis::solver {

namespace {

std::string placeOf(const std::string& file, const toml::source_region& region) {
  if (region.begin.line == 0) return file;
  return file + ":" + std::to_string(region.begin.line) + ":" + std::to_string(region.begin.column);
}

std::string typeName(const toml::node& node) {
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

std::string in(const std::string& unit) { return unit.empty() ? "" : " in " + unit; }
std::string expectedNumber(const Range& range, const std::string& unit) { return range.expected + in(unit); }

void writeValue(std::string& text, const toml::node& node) {
  if (const toml::array* values = node.as_array()) {
    text += '[';
    for (const toml::node& value : *values) {
      if (text.back() != '[') text += ", ";
      writeValue(text, value);
    }
    text += ']';
  } else if (node.is_number()) {
    text += exactNumber(*node.value<double>());
  } else {
    std::ostringstream stream;
    stream << toml::toml_formatter{node, toml::format_flags::none};
    text += stream.str();
  }
}

using Numbers = std::map<std::string, std::vector<double>>;

// Values in the order of the file with those of `numbers` in their places, new ones behind them, then the tables below.
void write(std::string& text, const std::string& name, const std::string& header, const toml::table& table,
           const Numbers& numbers) {
  std::vector<std::pair<std::string, const toml::node*>> entries;
  for (const auto& [key, node] : table) entries.emplace_back(key.str(), &node);
  const auto place = [](const auto& entry) {
    const toml::source_position at = entry.second->source().begin;
    return std::pair(at.line, at.column);
  };
  std::stable_sort(entries.begin(), entries.end(), [&](const auto& a, const auto& b) { return place(a) < place(b); });
  const auto isTable = [](const toml::node& node) { return node.is_table() || node.is_array_of_tables(); };
  const auto writeNumbers = [&](const std::vector<double>& values) {
    for (const double& value : values) text += (&value == values.data() ? "" : ", ") + exactNumber(value);
  };
  text += header + "\n";
  for (const auto& [key, node] : entries) {
    if (isTable(*node)) continue;
    const auto found = numbers.find(key);
    text += key + " = ";
    if (found == numbers.end()) {
      writeValue(text, *node);
    } else {
      text += node->is_array() ? "[" : "";
      writeNumbers(found->second);
      text += node->is_array() ? "]" : "";
    }
    text += '\n';
  }
  for (const auto& [key, values] : numbers) {
    if (table.contains(key)) continue;
    text += key + " = ";
    writeNumbers(values);
    text += '\n';
  }
  for (const auto& [key, node] : entries) {
    const std::string below = name + "." + key;
    if (const toml::table* child = node->as_table()) write(text, below, "[" + below + "]", *child, {});
    if (node->is_array_of_tables())
      for (const toml::node& child : *node->as_array()) write(text, below, "[[" + below + "]]", *child.as_table(), {});
  }
}

std::shared_ptr<const toml::table> parse(const std::filesystem::path& file, const std::string& text) {
  try {
    return std::make_shared<const toml::table>(toml::parse(text, file.string()));
  } catch (const toml::parse_error& error) {
    throw InputError(placeOf(file.string(), error.source()) + ": " + std::string(error.description()) +
                     (file.extension() == ".toml" ? "" : "; expected a case file (TOML), which names the mesh"));
  }
}

} // namespace

struct Table::Content {
  std::string file, name; // the table of the whole file has no name
  std::shared_ptr<const toml::table> values;
  std::shared_ptr<std::vector<std::filesystem::path>> files;

  std::string inTable() const { return name.empty() ? "" : " in " + name; }

  std::string place(const char* key) const {
    const toml::node* node = key ? values->get(key) : nullptr;
    return placeOf(file, node ? node->source() : values->source());
  }

  [[noreturn]] void fail(const char* key, const std::string& text) const { throw InputError(place(key) + ": " + text); }

  const toml::node& required(const char* key, const std::string& expected) const {
    const toml::node* node = values->get(key);
    if (!node) fail(key, std::string(key) + " is missing" + inTable() + ", expected " + expected);
    return *node;
  }

  const toml::array& array(const char* key, const std::string& expected) const {
    const toml::node& node = required(key, expected);
    if (!node.is_array()) fail(key, std::string(key) + " is " + typeName(node) + ", expected " + expected);
    return *node.as_array();
  }

  double number(const toml::node& node, const char* key, const Range& range, const std::string& unit) const {
    const auto value = node.is_number() ? node.value<double>() : std::nullopt;
    if (value && std::isfinite(*value) && range.holds(*value)) return *value;
    throw InputError(placeOf(file, node.source()) + ": " + key + " is " +
                     (value ? shortNumber(*value) : typeName(node)) + ", expected " + expectedNumber(range, unit));
  }

  std::vector<double> numbers(const char* key, const Range& range, const std::string& unit, std::size_t count) const {
    std::vector<double> result;
    for (const toml::node& node : array(key, "")) result.push_back(number(node, key, range, unit));
    if (result.size() != count)
      fail(key, std::string(key) + " has " + counted(result.size(), "number") + ", expected one number or " +
                    std::to_string(count));
    return result;
  }

  // A table within this one; all share the file.
  Table child(const char* key, const toml::table& table, const Names& keys) const {
    Table result(
        std::make_shared<const Content>(Content{file, key, std::shared_ptr<const toml::table>(values, &table), files}));
    result.checkKeys(keys);
    return result;
  }
};

Table::Table(const std::filesystem::path& file, const std::string& text, const Names& keys)
    : content_(std::make_shared<const Content>(Content{
          file.string(), "", parse(file, text), std::make_shared<std::vector<std::filesystem::path>>(1, file)})) {
  checkKeys(keys);
}

void Table::checkKeys(const Names& keys) const {
  for (const auto& [key, node] : *content_->values) {
    const std::string word(key.str());
    if (std::find(keys.begin(), keys.end(), word) != keys.end()) continue;
    const std::string near = suggestion(word, keys);
    throw InputError(placeOf(content_->file, key.source()) + ": unknown key \"" + word + "\"" + content_->inTable() +
                     ", " + (near.empty() ? "expected one of " + joined(keys, ", ") : near));
  }
}

bool Table::has(const char* key) const { return content_->values->contains(key); }

bool Table::isArray(const char* key) const {
  const toml::node* node = content_->values->get(key);
  return node && node->is_array();
}

bool Table::isTable(const char* key) const {
  const toml::node* node = content_->values->get(key);
  return node && node->is_table();
}

std::string Table::place(const char* key) const { return content_->place(key); }

std::string Table::place(const char* key, std::size_t number) const {
  const toml::node* node = content_->array(key, "").get(number);
  return node ? placeOf(content_->file, node->source()) : place(key);
}

std::filesystem::path Table::besideCase(const std::filesystem::path& path) const {
  content_->files->push_back(std::filesystem::path(content_->file).parent_path() / path);
  return content_->files->back();
}

const std::vector<std::filesystem::path>& Table::files() const { return *content_->files; }

void Table::fail(const char* key, const std::string& text) const { content_->fail(key, text); }

void Table::allowArrays(std::size_t count, std::function<double(const std::vector<double>&)> pick) {
  arrayLength_ = count;
  pick_ = std::move(pick);
}

double Table::real(const char* key, const Range& range, const std::string& unit) const {
  if (pick_ && isArray(key)) return pick_(content_->numbers(key, range, unit, arrayLength_));
  return content_->number(content_->required(key, expectedNumber(range, unit)), key, range, unit);
}

double Table::real(const char* key, const Range& range, const std::string& unit, double otherwise) const {
  return has(key) ? real(key, range, unit) : otherwise;
}

std::vector<double> Table::reals(const char* key, const std::string& unit) const {
  const std::string expected = "an array of numbers" + in(unit);
  std::vector<double> values;
  for (const toml::node& node : content_->array(key, expected))
    values.push_back(content_->number(node, key, anyNumber, unit));
  if (values.empty()) fail(key, std::string(key) + " is empty, expected " + expected);
  return values;
}

std::array<double, 3> Table::vector(const char* key, const std::string& unit,
                                    const std::array<double, 3>& otherwise) const {
  return has(key) ? vector(key, unit) : otherwise;
}

std::array<double, 3> Table::vector(const char* key, const std::string& unit) const {
  const std::vector<double> values = reals(key, unit);
  if (values.size() != 3)
    fail(key, std::string(key) + " has " + counted(values.size(), "number") + ", expected 3 (x, y, z)" + in(unit));
  return {values[0], values[1], values[2]};
}

std::string Table::text(const char* key) const {
  const toml::node& node = content_->required(key, "a text in quotes");
  const auto value = node.value_exact<std::string>();
  if (!value || value->empty())
    fail(key, std::string(key) + " is " + (value ? "empty" : typeName(node)) + ", expected a text in quotes");
  return *value;
}

std::string Table::text(const char* key, const std::string& otherwise) const {
  return has(key) ? text(key) : otherwise;
}

std::string Table::path(const char* key) const {
  std::string value = text(key);
  if (value != printable(value))
    fail(key, std::string(key) + " is \"" + printable(value) + "\", expected a name without control characters");
  return value;
}

std::string Table::job() const {
  std::string name = has("job") ? path("job") : std::filesystem::path(content_->file).stem().string();
  if (name.find('/') != std::string::npos || name == "." || name == "..")
    fail("job", "job is \"" + name + "\", expected a name for files, without directories");
  return name;
}

bool Table::flag(const char* key, bool otherwise) const {
  const toml::node* node = content_->values->get(key);
  if (node && !node->is_boolean()) fail(key, std::string(key) + " is " + typeName(*node) + ", expected true or false");
  return node ? *node->value<bool>() : otherwise;
}

Names Table::texts(const char* key, const std::string& expected) const {
  Names values;
  for (const toml::node& node : content_->array(key, expected)) {
    const auto value = node.value_exact<std::string>();
    if (!value)
      throw InputError(placeOf(content_->file, node.source()) + ": " + key + " has " + typeName(node) + ", expected " +
                       expected);
    values.push_back(*value);
  }
  if (values.empty()) fail(key, std::string(key) + " is empty, expected " + expected);
  return values;
}

std::string Table::written(const char* name, const std::map<std::string, std::vector<double>>& numbers) const {
  std::string text;
  write(text, name, "[[" + std::string(name) + "]]", *content_->values, numbers);
  text.pop_back(); // the end of the last line
  return text;
}

Table Table::table(const char* key, const Names& keys) const {
  static const toml::table none;
  const toml::node* node = content_->values->get(key);
  if (node && !node->is_table()) fail(key, std::string(key) + " is " + typeName(*node) + ", expected [" + key + "]");
  return content_->child(key, node ? *node->as_table() : none, keys);
}

std::vector<Table> Table::tables(const char* key, const Names& keys) const {
  std::vector<Table> result;
  if (!has(key)) return result;
  const std::string expected = "[[" + std::string(key) + "]]";
  for (const toml::node& node : content_->array(key, expected)) {
    if (!node.is_table())
      throw InputError(placeOf(content_->file, node.source()) + ": " + key + " has " + typeName(node) + ", expected " +
                       expected);
    result.push_back(content_->child(key, *node.as_table(), keys));
  }
  return result;
}

std::string readText(const std::filesystem::path& file, const std::string& expected) {
  std::error_code unknown;
  const std::filesystem::file_status status = std::filesystem::status(file, unknown);
  if (!unknown && std::filesystem::is_other(status)) // it would be waited for
    throw InputError(file.string() + ": is a pipe or a device, expected " + expected);
  errno = 0;
  std::ifstream stream(file, std::ios::binary);
  if (!stream) throw InputError(file.string() + ": cannot be opened: " + std::strerror(errno));
  if (std::filesystem::is_directory(file)) throw InputError(file.string() + ": is a directory, expected " + expected);
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}

} // namespace sharedanalysis::solver
