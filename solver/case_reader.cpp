#include "case_reader.h"

#include "text.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
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
constexpr Range aboveRootThree{"a number above 1.7321", [](double x) { return x * x > 3; }};
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

// ---- materials

std::string numbered(const char* letter, int i) { return std::string(letter).append(std::to_string(i)); }

// C10, C01, C20, ... by total order, then by falling power of the first invariant.
Names coefficientNames(int order) {
  Names names;
  for (int total = 1; total <= order; ++total)
    for (int i = total; i >= 0; --i) names.push_back(numbered(i == 0 ? "C0" : "C", i == 0 ? total : 10 * i + (total - i)));
  return names;
}

// The keys of the constants of a model.
Names constantKeys(Model model) {
  switch (model) {
  case Model::Polynomial:
  case Model::Polynomial6: {
    const bool isLong = model == Model::Polynomial6;
    Names names = coefficientNames(isLong ? 6 : 2);
    for (int i = 1; i <= (isLong ? 6 : 2); ++i) names.push_back(numbered("D", i));
    return names;
  }
  case Model::ArrudaBoyce:
    return {"mu", "lambda_m", "D"};
  case Model::VanDerWaals:
    return {"mu", "lambda_m", "a", "beta", "D"};
  case Model::Ogden:
    return {"mu", "alpha", "D"};
  case Model::Foam:
    return {"mu", "alpha", "beta"};
  case Model::TestCurve:
    return {"stretch", "stress", "D"};
  }
  return {};
}

const Names& materialKeys() {
  static const Names names = [] {
    Names all{"name", "model", "density", "mullins", "failure"};
    for (std::size_t k = 0; k < modelNames().size(); ++k)
      for (std::string& key : constantKeys(static_cast<Model>(k)))
        if (std::find(all.begin(), all.end(), key) == all.end()) all.push_back(std::move(key));
    return all;
  }();
  return names;
}

// 1/D for each D that is there; a missing one after the first is no stiffness.
void addReciprocals(const Table& table, const std::vector<double>& D, const char* key, std::size_t count,
                    Material& material) {
  for (std::size_t i = 0; i < count; ++i) {
    const double r = i < D.size() && D[i] > 0 ? 1 / D[i] : 0;
    if (!std::isfinite(r))
      table.fail(key, std::string(key) + " of material \"" + material.name + "\" is too small for its reciprocal");
    material.constants.push_back(r);
  }
}

void readPolynomial(const Table& table, int order, Material& material) {
  for (const std::string& key : coefficientNames(order))
    material.constants.push_back(table.real(key.c_str(), anyNumber, "Pa", 0));
  std::vector<double> D{table.real("D1", positive, "1/Pa")};
  for (int i = 2; i <= order; ++i) D.push_back(table.real(numbered("D", i).c_str(), notNegative, "1/Pa", 0));
  addReciprocals(table, D, "D1", D.size(), material);
}

// Up to six terms: the constants of each, nothing for those that are not there.
void readTerms(const Table& table, const char* third, Material& material) {
  constexpr std::size_t most = 6;
  const std::vector<double> mu = table.reals("mu", "Pa"), alpha = table.reals("alpha", "");
  const bool isFoam = material.model == Model::Foam;
  const std::vector<double> last = table.reals(third, isFoam ? "" : "1/Pa");
  if (mu.size() > most) table.fail("mu", "mu has " + counted(mu.size(), "number") + ", expected at most 6");
  if (alpha.size() != mu.size())
    table.fail("alpha", "alpha has " + counted(alpha.size(), "number") + " and mu has " + std::to_string(mu.size()) +
                            ", expected as many of both");
  if (isFoam ? last.size() != mu.size() : last.size() > most || !(last[0] > 0))
    table.fail(third, isFoam ? "beta has " + counted(last.size(), "number") + " and mu has " +
                                   std::to_string(mu.size()) + ", expected as many of both"
                             : "D is not an array of 1 to 6 numbers in 1/Pa, the first one positive");
  for (std::size_t t = 0; t < most; ++t) {
    material.constants.push_back(t < mu.size() ? mu[t] : 0);
    material.constants.push_back(t < mu.size() ? alpha[t] : 1);
  }
  if (isFoam)
    for (std::size_t t = 0; t < most; ++t) material.constants.push_back(t < last.size() ? last[t] : 0);
  else
    addReciprocals(table, last, third, most, material);
}

void readTestCurve(const Table& table, Material& material) {
  material.curveStretch = table.reals("stretch", "");
  material.curveStress = table.reals("stress", "Pa");
  if (material.curveStress.size() != material.curveStretch.size())
    table.fail("stress", "stress has " + counted(material.curveStress.size(), "number") + " and stretch has " +
                             std::to_string(material.curveStretch.size()) + ", expected as many of both");
  if (material.curveStretch[0] != 1) {
    material.curveStretch.insert(material.curveStretch.begin(), 1.0);
    material.curveStress.insert(material.curveStress.begin(), 0.0);
  }
  bool isSound = material.curveStretch.size() > 1 && material.curveStress[0] == 0;
  for (std::size_t k = 1; k < material.curveStretch.size(); ++k)
    isSound = isSound && material.curveStretch[k] > material.curveStretch[k - 1] &&
              material.curveStress[k] > material.curveStress[k - 1];
  if (!isSound)
    table.fail("stretch", "stretch and stress of material \"" + material.name +
                              "\" are no test in tension, expected both to increase from stretch 1 and stress 0");
  addReciprocals(table, {table.real("D", positive, "1/Pa")}, "D", 1, material);
}

Mullins readMullins(const Table& table) {
  const Mullins m{table.real("r", positive, ""), table.real("m", notNegative, "J/m3"),
                  table.real("beta", notNegative, "", 0)};
  if (!(m.m + m.beta > 0)) table.fail("m", "m and beta are both 0, expected one of them to be positive");
  return m;
}

DuctileFailure readFailure(const Table& table) {
  DuctileFailure f;
  f.d1 = table.real("d1", anyNumber, "");
  f.d2 = table.real("d2", anyNumber, "", 0);
  f.d3 = table.real("d3", anyNumber, "", 0);
  f.d4 = table.real("d4", anyNumber, "", 0);
  f.d5 = table.real("d5", anyNumber, "", 0);
  f.temperature = table.real("temperature", anyNumber, "K", 0);
  f.transition = table.real("transition_temperature", anyNumber, "K", f.temperature);
  f.melting = table.real("melting_temperature", anyNumber, "K", f.transition + 1);
  f.referenceRate = table.real("reference_rate", positive, "1/s", 1);
  if (!(f.melting > f.transition))
    table.fail("melting_temperature", "melting_temperature is not above transition_temperature, expected K above it");
  return f;
}

Material readMaterial(const Table& table) {
  Material material;
  material.name = table.text("name");
  const std::string model = table.text("model", modelNames().front());
  const auto known = std::find(modelNames().begin(), modelNames().end(), model);
  if (known == modelNames().end())
    table.fail("model", "no model \"" + model + "\", expected one of " + joined(modelNames(), ", "));
  material.model = static_cast<Model>(known - modelNames().begin());
  Names keys{"name", "model", "density", "mullins", "failure"};
  for (const std::string& key : constantKeys(material.model)) keys.push_back(key);
  table.checkKeys(keys);
  material.density = table.real("density", positive, "kg/m3");
  switch (material.model) {
  case Model::Polynomial:
    readPolynomial(table, 2, material);
    break;
  case Model::Polynomial6:
    readPolynomial(table, 6, material);
    break;
  case Model::ArrudaBoyce:
    material.constants = {table.real("mu", positive, "Pa"), table.real("lambda_m", positive, ""),
                          table.real("D", positive, "1/Pa")};
    break;
  case Model::VanDerWaals:
    material.constants = {table.real("mu", positive, "Pa"), table.real("lambda_m", aboveRootThree, ""),
                          table.real("a", anyNumber, "", 0), table.real("beta", zeroToOne, "", 0),
                          table.real("D", positive, "1/Pa")};
    break;
  case Model::Ogden:
    readTerms(table, "D", material);
    break;
  case Model::Foam:
    readTerms(table, "beta", material);
    break;
  case Model::TestCurve:
    readTestCurve(table, material);
    break;
  }
  const double G = material.shearModulus(), K = material.bulkModulus();
  const bool isPolynomial = material.model == Model::Polynomial || material.model == Model::Polynomial6;
  if (!(G > 0) && isPolynomial)
    table.fail(table.has("C10") ? "C10" : nullptr, "C10 + C01 of material \"" + material.name + "\" is " +
                                                       shortNumber(G / 2) +
                                                       ", expected a positive number in Pa (half the shear modulus)");
  if (!(G > 0) || !(K > 0) || !std::isfinite(G) || !std::isfinite(K))
    table.fail(nullptr, "material \"" + material.name + "\" has a shear modulus of " + shortNumber(G) +
                            " Pa and a bulk modulus of " + shortNumber(K) +
                            " Pa without strain, expected both to be positive");
  if (table.has("mullins")) material.mullins = readMullins(table.table("mullins", {"r", "m", "beta"}));
  if (table.has("failure"))
    material.failure =
        readFailure(table.table("failure", {"d1", "d2", "d3", "d4", "d5", "temperature", "transition_temperature",
                                            "melting_temperature", "reference_rate"}));
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
    for (const Table& table : root_.tables("material", materialKeys())) {
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
    const Table table = root_.table("output", {"interval", "history_interval", "directory"});
    case_.outputInterval = readInterval(table, "interval", case_.endTime, 20);
    case_.historyInterval = readInterval(table, "history_interval", case_.endTime, 200);
    case_.outputDirectory = table.has("directory") ? besideCase(table.text("directory")) : ".";
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
