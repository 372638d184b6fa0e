#include "solver/input/material_reader.h"

#include "material_table.h"
#include "solver/input/curve_reader.h"
#include "spx.h"

namespace sharedanalysis::solver {
namespace {

const Names kCommonKeys{"name", "model", "density", "temperatures", "mullins", "failure"};

} // namespace

const Names& materialKeys() {
  static const Names names = [] {
    Names all = kCommonKeys;
    for (const SolverModel& model : models())
      for (const ConstantKey& key : model.keys)
        if (std::find(all.begin(), all.end(), key.key) == all.end()) all.push_back(key.key);
    return all;
  }();
  return names;
}

namespace {

// 1/D of up to `count` values, 0 for a value of 0 and for those beyond the last.
void addReciprocals(const Table& table, const std::vector<double>& D, const std::string& key, std::size_t count,
                    Material& material) {
  for (std::size_t i = 0; i < count; ++i) {
    const double r = i < D.size() && D[i] > 0 ? 1 / D[i] : 0;
    if (!std::isfinite(r))
      table.fail(key.c_str(), key + " of material \"" + material.name + "\" is too small for its reciprocal");
    material.constants.push_back(r);
  }
}

double readNumber(const Table& table, const ConstantKey& key) {
  return key.otherwise ? table.real(key.key.c_str(), key.range, key.unit, *key.otherwise)
                       : table.real(key.key.c_str(), key.range, key.unit);
}

// Reciprocals stand behind the other constants.
void readNumbers(const Table& table, Material& material) {
  std::vector<double> reciprocals;
  const std::string* first = nullptr;
  for (const ConstantKey& key : material.model->keys) {
    (key.isReciprocal ? reciprocals : material.constants).push_back(readNumber(table, key));
    if (key.isReciprocal && first == nullptr) first = &key.key;
  }
  if (first != nullptr) addReciprocals(table, reciprocals, *first, reciprocals.size(), material);
}

void readTerms(const Table& table, Material& material) {
  const ConstantKey& third = material.model->keys[2];
  const std::vector<double> mu = table.reals("mu", "Pa"), alpha = table.reals("alpha", "");
  const std::vector<double> last = table.reals(third.key.c_str(), third.unit);
  const auto expectAsMany = [&](const std::string& key, const std::vector<double>& values) {
    if (values.size() != mu.size())
      table.fail(key.c_str(), key + " has " + counted(values.size(), "number") + " and mu has " +
                                  std::to_string(mu.size()) + ", expected as many of both");
  };
  if (mu.size() > kMostTerms) table.fail("mu", "mu has " + counted(mu.size(), "number") + ", expected at most 6");
  expectAsMany("alpha", alpha);
  if (!third.isReciprocal)
    expectAsMany(third.key, last);
  else if (last.size() > kMostTerms || !(last[0] > 0))
    table.fail(third.key.c_str(), third.key + " is not an array of 1 to 6 numbers in 1/Pa, the first one positive");
  for (std::size_t t = 0; t < kMostTerms; ++t) {
    material.constants.push_back(t < mu.size() ? mu[t] : 0);
    material.constants.push_back(t < mu.size() ? alpha[t] : 1);
  }
  if (third.isReciprocal) return addReciprocals(table, last, third.key, kMostTerms, material);
  for (std::size_t t = 0; t < kMostTerms; ++t) material.constants.push_back(t < last.size() ? last[t] : 0);
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
  addReciprocals(table, {readNumber(table, material.model->keys[2])}, "D", 1, material);
}

// With the rows of curves among them, where a model takes curves.
Properties readProperties(const Table& table, const UserModel& model) {
  Properties properties = table.reals("properties", "");
  const std::size_t given = properties.size();
  if (given < model.properties || (given > model.properties && !model.takesMore))
    table.fail("properties", "properties has " + counted(given, "number") + ", expected " +
                                 (model.takesMore ? "at least " : "") + std::to_string(model.properties) + " for " +
                                 model.key +
                                 (model.curves.empty()
                                      ? ""
                                      : ", or " + std::to_string(scalarsOf(model).size()) + " and [[material.curve]]"));
  return properties;
}

void readUser(const Table& table, Material& material) {
  material.userName = table.text("user");
  const UserModel* model = userModelOf(material.userName);
  if (model == nullptr) {
    Names keys;
    for (const UserModel& known : userModels()) keys.push_back(known.key);
    table.fail("user", "no user material \"" + material.userName + "\", expected a name that begins with " +
                           joined(keys, ", "));
  }
  material.hasCurveTables = table.has("curve");
  material.constants = material.hasCurveTables ? readPropertiesAndCurves(table, *model) : readProperties(table, *model);
  material.temperature = readNumber(table, material.model->keys[2]);
  material.length = readNumber(table, material.model->keys[3]);
  material.acrossModulus = readNumber(table, material.model->keys[4]);
  if (table.has("across_modulus") && !model->isSheet)
    table.fail("across_modulus", "across_modulus does not go with " + model->key + ", which is no sheet");
  if (table.has("mullins")) table.fail("mullins", "mullins does not go with a user material");
}

void readConstants(const Table& table, Material& material) {
  switch (material.model->reading) {
  case Reading::Numbers:
    return readNumbers(table, material);
  case Reading::Terms:
    return readTerms(table, material);
  case Reading::TestCurve:
    return readTestCurve(table, material);
  case Reading::User:
    return readUser(table, material);
  }
}

Mullins readMullins(const Table& table) {
  const Mullins m{table.real("r", aboveOne, ""), table.real("m", notNegative, "J/m3"),
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

// Straight lines between the temperatures, the first and last value beyond them.
double lookUp(const std::vector<double>& temperatures, const std::vector<double>& values, double temperature) {
  std::vector<tables::Row> rows;
  for (std::size_t k = 0; k < values.size(); ++k) rows.push_back({values[k], temperatures[k]});
  tables::Pools pools;
  const tables::Table table = tables::addTable(pools, {{.source = tables::kTemperature}}, rows);
  const int32_t points = 1;
  double value = 0;
  SPX_GET_GETVAL(pools.ints.data(), pools.reals.data(), table.header.data(), &points, &table.option, nullptr, nullptr,
                 &temperature, &value);
  return value;
}

// The table with its arrays over temperature read at one.
Table at(Table table, std::optional<double> temperature) {
  std::vector<double> temperatures = table.reals("temperatures", "K");
  for (std::size_t k = 1; k < temperatures.size(); ++k)
    if (!(temperatures[k] > temperatures[k - 1]))
      table.fail("temperatures", "temperatures does not increase at " + shortNumber(temperatures[k]) +
                                     ", expected each number to be above the one before");
  if (!temperature)
    table.fail("temperatures", "material \"" + table.text("name") +
                                   "\" depends on temperature and has none, expected single numbers or a section with "
                                   "temperature");
  const std::size_t count = temperatures.size();
  table.allowArrays(count, [=, abscissas = std::move(temperatures)](const std::vector<double>& values) {
    return lookUp(abscissas, values, *temperature);
  });
  return table;
}

} // namespace

bool isTabulated(const Table& table) { return table.has("temperatures"); }

Material readMaterial(const Table& given, std::optional<double> temperature) {
  const Table table = isTabulated(given) ? at(given, temperature) : given;
  Material material;
  material.name = table.text("name");
  const std::string model = table.text("model", models().front().name);
  material.model = findModel(model);
  if (material.model == nullptr) {
    Names names;
    for (const SolverModel& known : models()) names.emplace_back(known.name);
    table.fail("model", "no model \"" + model + "\", expected one of " + joined(names, ", "));
  }
  Names keys = kCommonKeys;
  for (const ConstantKey& key : material.model->keys) keys.push_back(key.key);
  table.checkKeys(keys);
  material.density = table.real("density", positive, "kg/m3");
  readConstants(table, material);
  const double G = material.shearModulus(), K = material.bulkModulus();
  if (const char* sum = material.model->halfShear; !(G > 0) && sum != nullptr) {
    const std::string& first = material.model->keys[0].key;
    table.fail(table.has(first.c_str()) ? first.c_str() : nullptr,
               std::string(sum) + " of material \"" + material.name + "\" is " + shortNumber(G / 2) +
                   ", expected a positive number in Pa (half the shear modulus)");
  }
  if (!(G > 0) || !(K > 0) || !std::isfinite(G) || !std::isfinite(K))
    table.fail(nullptr, "material \"" + material.name + "\" has a shear modulus of " + shortNumber(G) +
                            " Pa and a bulk modulus of " + shortNumber(K) +
                            " Pa without strain, expected both to be positive");
  // far beyond all solids, in any units; within these neither masses nor increments leave the range of numbers
  constexpr double kLightest = 1e-60, kHeaviest = 1e60, kSlowest = 1e-9, kFastest = 1e15;
  const double speed = material.waveSpeed();
  if (!(material.density >= kLightest && material.density <= kHeaviest && speed >= kSlowest && speed <= kFastest))
    table.fail("density", "density of material \"" + material.name + "\" is " + shortNumber(material.density) +
                              " kg/m3, its shear modulus " + shortNumber(G) + " Pa and its bulk modulus " +
                              shortNumber(K) + " Pa, which make a wave speed of " + shortNumber(speed) +
                              " m/s, expected a density of 1e-60 to 1e60 kg/m3 and a speed of 1e-9 to 1e15 m/s");
  if (table.has("mullins")) material.mullins = readMullins(table.table("mullins", {"r", "m", "beta"}));
  if (table.has("failure"))
    material.failure =
        readFailure(table.table("failure", {"d1", "d2", "d3", "d4", "d5", "temperature", "transition_temperature",
                                            "melting_temperature", "reference_rate"}));
  return material;
}

} // namespace sharedanalysis::solver
