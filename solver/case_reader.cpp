#include "case_reader.h"

#include "text.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <toml++/toml.h>

namespace sharedanalysis::solver {
namespace {

using Names = std::vector<std::string>;

// What a number must be, in words and as a test.
struct Range {
  const char* expected;
  bool (*holds)(double);
};

constexpr Range anyNumber{"a finite number", [](double) { return true; }};
constexpr Range positive{"a positive number", [](double x) { return x > 0; }};
constexpr Range notNegative{"a number that is not negative", [](double x) { return x >= 0; }};
constexpr Range fraction{"a number above 0 and not above 1", [](double x) { return x > 0 && x <= 1; }};
constexpr Range zeroToOne{"a number from 0 to 1", [](double x) { return x >= 0 && x <= 1; }};

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

// One table of the file.  The constructor refuses keys that are not in the list; the readers name the place of a bad value.
class Table {
public:
  Table(std::string file, const toml::table& table, std::string name, Names keys)
      : file_(std::move(file)), table_(table), name_(std::move(name)), keys_(std::move(keys)) {
    for (const auto& [key, node] : table_) {
      const std::string word(key.str());
      if (std::find(keys_.begin(), keys_.end(), word) != keys_.end()) continue;
      const std::string near = suggestion(word, keys_);
      throw InputError(placeOf(file_, key.source()) + ": unknown key \"" + word + "\"" + inTable() + ", " +
                       (near.empty() ? "expected one of " + joined(keys_, ", ") : near));
    }
  }

  bool has(const char* key) const { return table_.contains(key); }

  // The place of a value, or of the table when the value is not there.
  std::string place(const char* key = nullptr) const {
    const toml::node* node = key ? table_.get(key) : nullptr;
    return placeOf(file_, node ? node->source() : table_.source());
  }

  [[noreturn]] void fail(const char* key, const std::string& text) const { throw InputError(place(key) + ": " + text); }

  double real(const char* key, const Range& range, const std::string& unit) const {
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
};

const Names componentNames{"x", "y", "z"};

std::size_t componentNumber(const Table& table, const char* key, const std::string& name) {
  const auto found = std::find(componentNames.begin(), componentNames.end(), name);
  if (found == componentNames.end()) table.fail(key, "\"" + name + R"(" is no component, expected "x", "y" or "z")");
  return static_cast<std::size_t>(found - componentNames.begin());
}

Material readMaterial(const Table& table) {
  Material material;
  material.name = table.text("name");
  material.density = table.real("density", positive, "kg/m3");
  material.C10 = table.real("C10", anyNumber, "Pa", 0);
  material.C01 = table.real("C01", anyNumber, "Pa", 0);
  material.C20 = table.real("C20", anyNumber, "Pa", 0);
  material.C11 = table.real("C11", anyNumber, "Pa", 0);
  material.C02 = table.real("C02", anyNumber, "Pa", 0);
  material.rD1 = 1 / table.real("D1", positive, "1/Pa");
  const double D2 = table.real("D2", notNegative, "1/Pa", 0);
  material.rD2 = D2 > 0 ? 1 / D2 : 0;
  if (!(material.C10 + material.C01 > 0))
    table.fail(table.has("C10") ? "C10" : nullptr, "C10 + C01 of material \"" + material.name + "\" is " +
                                                       shortNumber(material.C10 + material.C01) +
                                                       ", expected a positive number in Pa (half the shear modulus)");
  if (!std::isfinite(material.rD1) || !std::isfinite(material.rD2))
    table.fail("D1", "D1 or D2 of material \"" + material.name + "\" is too small for its reciprocal");
  return material;
}

History readHistory(const Table& table) {
  if (!table.isArray("value")) {
    if (table.has("time")) table.fail("time", "time needs an array of values, expected value = [...]");
    return {{0.0}, {table.real("value", anyNumber, "m/s")}};
  }
  History history{table.reals("time", "s"), table.reals("value", "m/s")};
  if (history.time.size() != history.value.size())
    table.fail("value", "value has " + counted(history.value.size(), "number") + " and time has " +
                            std::to_string(history.time.size()) + ", expected as many of both");
  for (std::size_t k = 1; k < history.time.size(); ++k)
    if (!(history.time[k - 1] < history.time[k]))
      table.fail("time", "time goes from " + shortNumber(history.time[k - 1]) + " to " + shortNumber(history.time[k]) +
                             ", expected increasing times in s");
  return history;
}

InitialVelocity readInitialVelocity(const Table& table) {
  InitialVelocity initial;
  if (!table.has("velocity") && !table.has("rate"))
    table.fail(nullptr, "initial_velocity has neither velocity nor rate, expected one of them or both");
  for (const char* key : {"origin", "axis", "profile_length"})
    if (table.has(key) && !table.has("rate"))
      table.fail(key, std::string(key) + " is given without rate, expected both");
  initial.group = table.text("group", "");
  initial.velocity = table.vector("velocity", "m/s", {});
  initial.origin = table.vector("origin", "m", {});
  initial.axis = table.vector("axis", "", {0, 0, 1});
  const double length = std::hypot(initial.axis[0], initial.axis[1], initial.axis[2]);
  if (!(length > 0) || !std::isfinite(length))
    table.fail("axis", "axis has no direction, expected a vector that is not zero");
  for (double& component : initial.axis) component /= length;
  initial.rate = table.real("rate", anyNumber, "rad/s", 0);
  if (table.has("profile_length")) initial.profileLength = table.real("profile_length", positive, "m");
  return initial;
}

// An interval of output: so many records and no more.
host::LowPass readFilter(const Table& table) {
  static constexpr Range evenOrder{"an even number from 2 to 20",
                                   [](double x) { return x >= 2 && x <= 20 && std::fmod(x, 2) == 0; }};
  const std::map<std::string, host::FilterType> types{{"butterworth", host::FilterType::butterworth},
                                                      {"chebyshev1", host::FilterType::chebyshev1},
                                                      {"chebyshev2", host::FilterType::chebyshev2}};
  host::LowPass filter;
  const std::string type = table.text("filter_type", "butterworth");
  const auto found = types.find(type);
  if (found == types.end())
    table.fail("filter_type",
               "filter_type is \"" + type + R"(", expected "butterworth", "chebyshev1" or "chebyshev2")");
  filter.type = found->second;
  filter.cutoff = table.real("filter_cutoff", positive, "Hz");
  filter.order = static_cast<int>(table.real("filter_order", evenOrder, "", filter.order));
  const auto decibels = [&](const char* key, host::FilterType owner, double otherwise) {
    if (table.has(key) && filter.type != owner)
      table.fail(key, std::string(key) + " does not belong to filter_type \"" + type + "\"");
    return table.real(key, positive, "dB", otherwise);
  };
  filter.ripple = decibels("filter_ripple", host::FilterType::chebyshev1, filter.ripple);
  filter.attenuation = decibels("filter_attenuation", host::FilterType::chebyshev2, filter.attenuation);
  return filter;
}

double readInterval(const Table& table, const char* key, double endTime, int standardCount) {
  const double interval = table.real(key, positive, "s", endTime / standardCount);
  constexpr double mostRecords = 1e5;
  if (endTime / interval > mostRecords)
    table.fail(key, std::string(key) + " is " + shortNumber(interval) +
                        ", which makes more than 100000 records, expected at least " +
                        shortNumber(endTime / mostRecords) + " s");
  return interval;
}

std::string readText(const std::filesystem::path& file) {
  errno = 0;
  std::ifstream stream(file, std::ios::binary);
  if (!stream) throw InputError(file.string() + ": cannot be opened: " + std::strerror(errno));
  if (std::filesystem::is_directory(file)) throw InputError(file.string() + ": is a directory, expected a case file");
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}

class CaseBuilder {
public:
  CaseBuilder(const std::filesystem::path& file, const toml::table& root)
      : file_(file), root_(file.string(), root, "",
                           {"title", "job", "mesh", "material", "section", "fix", "velocity", "initial_velocity",
                            "gravity", "control", "output"}) {}

  CaseFile build() {
    general();
    materials();
    sections();
    motions();
    control();
    output();
    return std::move(result_);
  }

private:
  std::filesystem::path besideCase(const std::string& path) const { return file_.parent_path() / path; }

  std::string group(const Table& table, bool solid) {
    result_.groups.push_back({table.text("group"), table.place("group"), solid});
    return result_.groups.back().group;
  }

  void general() {
    case_.file = file_;
    case_.job = root_.text("job", file_.stem().string());
    if (case_.job.find('/') != std::string::npos || case_.job == "." || case_.job == "..")
      root_.fail("job", "job is \"" + case_.job + "\", expected a name for files, without directories");
    case_.title = root_.text("title", case_.job);
    case_.meshFile = besideCase(root_.text("mesh"));
  }

  void materials() {
    for (const Table& table :
         root_.tables("material", {"name", "density", "C10", "C01", "C20", "C11", "C02", "D1", "D2"})) {
      Material material = readMaterial(table);
      if (findMaterial(material.name) != case_.materials.size())
        table.fail("name", "a material \"" + material.name + "\" is there already, expected another name");
      case_.materials.push_back(std::move(material));
    }
    if (case_.materials.empty()) throw InputError(file_.string() + ": no material, expected [[material]]");
  }

  std::size_t findMaterial(const std::string& name) const {
    const auto found = std::find_if(case_.materials.begin(), case_.materials.end(),
                                    [&](const Material& material) { return material.name == name; });
    return static_cast<std::size_t>(found - case_.materials.begin());
  }

  void sections() {
    for (const Table& table : root_.tables("section", {"group", "material"})) {
      const std::string material = table.text("material");
      const std::size_t index = findMaterial(material);
      if (index == case_.materials.size()) {
        Names names;
        for (const Material& known : case_.materials) names.push_back("\"" + known.name + "\"");
        table.fail("material", "no material \"" + material + "\", expected " + joined(names, " or "));
      }
      case_.sections.push_back({group(table, true), index});
    }
    if (case_.sections.empty()) throw InputError(file_.string() + ": no section, expected [[section]]");
  }

  void motions() {
    for (const Table& table : root_.tables("fix", {"group", "components"})) {
      PrescribedMotion motion{group(table, false), {}};
      for (const std::string& name : table.texts("components", R"(an array of "x", "y" and "z")"))
        motion.velocity[componentNumber(table, "components", name)] = History{{0.0}, {0.0}};
      case_.motions.push_back(std::move(motion));
    }
    for (const Table& table : root_.tables("velocity", {"group", "component", "value", "time"})) {
      PrescribedMotion motion{group(table, false), {}};
      motion.velocity[componentNumber(table, "component", table.text("component"))] = readHistory(table);
      case_.motions.push_back(std::move(motion));
    }
    for (const Table& table :
         root_.tables("initial_velocity", {"group", "velocity", "rate", "axis", "origin", "profile_length"})) {
      case_.initialVelocities.push_back(readInitialVelocity(table));
      if (table.has("group")) group(table, false);
    }
    const Table gravity = root_.table("gravity", {"acceleration"});
    case_.gravity = gravity.vector("acceleration", "m/s2", {});
  }

  void control() {
    const Table table = root_.table("control", {"end_time", "safety_factor", "hourglass", "linear_viscosity",
                                                "quadratic_viscosity", "smallest_increment_ratio"});
    case_.endTime = table.real("end_time", positive, "s");
    case_.safetyFactor = table.real("safety_factor", fraction, "", case_.safetyFactor);
    case_.hourglassCoefficient = table.real("hourglass", zeroToOne, "", case_.hourglassCoefficient);
    case_.linearViscosity = table.real("linear_viscosity", notNegative, "", case_.linearViscosity);
    case_.quadraticViscosity = table.real("quadratic_viscosity", notNegative, "", case_.quadraticViscosity);
    case_.smallestIncrementRatio = table.real("smallest_increment_ratio", fraction, "", case_.smallestIncrementRatio);
  }

  void output() {
    const Table table = root_.table("output", {"interval", "history_interval", "directory", "filter_cutoff",
                                               "filter_type", "filter_order", "filter_ripple", "filter_attenuation"});
    case_.outputInterval = readInterval(table, "interval", case_.endTime, 20);
    case_.historyInterval = readInterval(table, "history_interval", case_.endTime, 200);
    case_.outputDirectory = table.has("directory") ? besideCase(table.text("directory")) : ".";
    if (table.has("filter_cutoff")) case_.historyFilter = readFilter(table);
    for (const char* key : {"filter_type", "filter_order", "filter_ripple", "filter_attenuation"})
      if (table.has(key) && !case_.historyFilter)
        table.fail(key, std::string(key) + " belongs to a filter, and filter_cutoff is missing in output");
  }

  std::filesystem::path file_;
  Table root_;
  CaseFile result_;
  Case& case_ = result_.definition;
};

} // namespace

CaseFile readCase(const std::filesystem::path& file) {
  const std::string text = readText(file);
  toml::table root;
  try {
    root = toml::parse(text, file.string());
  } catch (const toml::parse_error& error) {
    throw InputError(placeOf(file.string(), error.source()) + ": " + std::string(error.description()));
  }
  CaseFile result = CaseBuilder(file, root).build();
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) result.lines.push_back(line);
  return result;
}

void checkGroups(const CaseFile& caseFile, const Mesh& mesh) {
  for (const GroupReference& reference : caseFile.groups) {
    const Group* group = mesh.findGroup(reference.group);
    if (!group || (reference.solid && group->dimension != 3)) {
      Names names;
      for (const Group& known : mesh.groups)
        if (!reference.solid || known.dimension == 3) names.push_back("\"" + known.name + "\"");
      throw InputError(reference.place + ": " +
                       (group ? "group \"" + reference.group + "\" is not one of bricks"
                              : "the mesh has no group \"" + reference.group + "\"") +
                       ", expected one of " + joined(names, ", "));
    }
    if (group->nodes.empty())
      throw InputError(reference.place + ": group \"" + reference.group + "\" has no node of a brick");
  }

  // the sections come first among the references
  const std::vector<Section>& sections = caseFile.definition.sections;
  std::vector<const Section*> owner(mesh.elementNumbers.size(), nullptr);
  for (std::size_t s = 0; s < sections.size(); ++s) {
    for (const int32_t element : mesh.findGroup(sections[s].group)->elements) {
      const Section*& holder = owner[static_cast<std::size_t>(element)];
      if (holder)
        throw InputError(caseFile.groups[s].place + ": brick " +
                         std::to_string(mesh.elementNumbers[static_cast<std::size_t>(element)]) + " of group \"" +
                         sections[s].group + "\" has a section already, by group \"" + holder->group + "\"");
      holder = &sections[s];
    }
  }
  const auto without = std::count(owner.begin(), owner.end(), nullptr);
  if (without > 0) {
    const auto first = static_cast<std::size_t>(std::find(owner.begin(), owner.end(), nullptr) - owner.begin());
    throw InputError(caseFile.definition.file.string() + ": " + counted(static_cast<std::size_t>(without), "brick") +
                     " without a section, the first is number " + std::to_string(mesh.elementNumbers[first]) +
                     ", expected a [[section]] for every brick");
  }
}

} // namespace sharedanalysis::solver
