#include "solver/input/material_reader.h"

#include "material_table.h"
#include "spx.h"

namespace sharedanalysis::solver {
namespace {

std::string numbered(const char* letter, int i) { return std::string(letter).append(std::to_string(i)); }

// C10, C01, C20, ... by total order, then by falling power of the first invariant.
Names coefficientNames(int order) {
  Names names;
  for (int total = 1; total <= order; ++total)
    for (int i = total; i >= 0; --i)
      names.push_back(numbered(i == 0 ? "C0" : "C", i == 0 ? total : 10 * i + (total - i)));
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
  case Model::User:
    return {"user", "properties", "temperature"};
  }
  return {};
}

} // namespace

const Names& materialKeys() {
  static const Names names = [] {
    Names all{"name", "model", "density", "temperatures", "mullins", "failure"};
    for (std::size_t k = 0; k < modelNames().size(); ++k)
      for (std::string& key : constantKeys(static_cast<Model>(k)))
        if (std::find(all.begin(), all.end(), key) == all.end()) all.push_back(std::move(key));
    return all;
  }();
  return names;
}

namespace {

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

void readUser(const Table& table, Material& material) {
  material.userName = table.text("user");
  const UserModel* model = userModelOf(material.userName);
  if (model == nullptr) {
    Names keys;
    for (const UserModel& known : userModels()) keys.push_back(known.key);
    table.fail("user", "no user material \"" + material.userName + "\", expected a name that begins with " +
                           joined(keys, ", "));
  }
  material.constants = table.reals("properties", "");
  if (material.constants.size() != model->properties)
    table.fail("properties", "properties has " + counted(material.constants.size(), "number") + ", expected " +
                                 std::to_string(model->properties) + " for " + model->key);
  material.temperature = table.real("temperature", anyNumber, "K", 293.15);
  if (table.has("mullins")) table.fail("mullins", "mullins does not go with a user material");
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

} // namespace

namespace {

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
  const std::string model = table.text("model", modelNames().front());
  const auto known = std::find(modelNames().begin(), modelNames().end(), model);
  if (known == modelNames().end())
    table.fail("model", "no model \"" + model + "\", expected one of " + joined(modelNames(), ", "));
  material.model = static_cast<Model>(known - modelNames().begin());
  Names keys{"name", "model", "density", "temperatures", "mullins", "failure"};
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
  case Model::User:
    readUser(table, material);
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

} // namespace sharedanalysis::solver
