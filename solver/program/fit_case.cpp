#include "solver/program/fit_case.h"

#include "solver/input/material_reader.h"
#include "solver/model/text.h"

#include <algorithm>
#include <set>
#include <string_view>

namespace sharedanalysis::solver {
namespace {

using Constants = std::vector<FitConstant>;

void add(Constants& all, const ConstantKey& key, std::size_t index, double start) {
  all.push_back(
      {key.key, key.key, 0, index, key.isReciprocal, key.unit, key.range, key.range.low, key.range.high, start});
}

// One number a key: reciprocals stand behind the other constants.
Constants numbers(const Table& table, const Material& material) {
  Constants all;
  const std::vector<ConstantKey>& keys = material.model->keys;
  std::size_t direct = 0, reciprocal = 0;
  for (const ConstantKey& key : keys) reciprocal += key.isReciprocal ? 0 : 1;
  for (const ConstantKey& key : keys) {
    const double value =
        table.has(key.key.c_str()) ? table.real(key.key.c_str(), key.range, key.unit) : key.otherwise.value_or(0);
    add(all, key, key.isReciprocal ? reciprocal++ : direct++, value);
  }
  return all;
}

void addArray(Constants& all, const ConstantKey& key, const std::vector<double>& values,
              const std::function<std::size_t(std::size_t)>& index) {
  for (std::size_t k = 0; k < values.size(); ++k) {
    add(all, key, index(k), values[k]);
    all.back().name.append("[").append(std::to_string(k + 1)).append("]");
    all.back().element = k;
  }
}

Constants terms(const Table& table, const Material& material) {
  Constants all;
  for (std::size_t k = 0; k < 3; ++k) {
    ConstantKey key = material.model->keys[k];
    if (key.isReciprocal) key.range = positive;
    addArray(all, key, table.reals(key.key.c_str(), key.unit),
             [k](std::size_t t) { return k < 2 ? 2 * t + k : 2 * kMostTerms + t; });
  }
  return all;
}

// The properties as the case counts them, without numbers of rows; rows stay as they are.
Constants properties(const Table& table, const Material& material) {
  Constants all;
  const UserModel& model = *userModelOf(material.userName);
  const std::vector<std::size_t> scalars = scalarsOf(model);
  const std::vector<double> values = table.reals("properties", "");
  addArray(all, {"properties"}, values, [&](std::size_t k) { return material.hasCurveTables ? scalars[k] : k; });
  std::erase_if(all, [&](const FitConstant& c) {
    return c.index < model.properties ? std::find(scalars.begin(), scalars.end(), c.index) == scalars.end()
                                      : !model.curves.empty();
  });
  return all;
}

Constants constantsOf(const Table& table, const Material& material) {
  switch (material.model->reading) {
  case Reading::Numbers:
    return numbers(table, material);
  case Reading::Terms:
    return terms(table, material);
  case Reading::TestCurve: {
    Constants all;
    const ConstantKey& key = material.model->keys[2];
    add(all, key, 0, table.real(key.key.c_str(), key.range, key.unit));
    return all;
  }
  case Reading::User:
    return properties(table, material);
  }
  return {};
}

bool isCalled(const FitConstant& constant, const std::string& name) {
  return constant.name == name || constant.key == name;
}

// Tests that change the volume have something to say about compressibility.
bool hasVolumeTest(const PathCase& definition, std::size_t material) {
  return std::any_of(definition.paths.begin(), definition.paths.end(), [&](const MaterialPath& path) {
    return path.material == material && !path.data.stretch.empty() &&
           (path.mode == Mode::Volumetric || path.mode == Mode::Confined);
  });
}

Constants freeConstants(const Table& fit, const PathCase& definition, std::size_t index, const Constants& all) {
  const Material& material = definition.materials[index];
  const Table& table = definition.materialTables[index];
  Constants free;
  if (!fit.has("free")) {
    if (material.model->isUser())
      fit.fail(nullptr, "free is missing in fit, expected properties of user material \"" + material.name +
                            "\" by number, as free = [\"properties[1]\"]");
    const bool isCompressible = hasVolumeTest(definition, index);
    for (const FitConstant& constant : all)
      if (table.has(constant.key.c_str()) && (isCompressible || std::string_view(constant.unit) != "1/Pa"))
        free.push_back(constant);
    if (free.empty())
      fit.fail(nullptr, "no constant of material \"" + material.name + "\" depends on the data, expected free = [...]");
    return free;
  }
  std::set<std::string> taken;
  for (const std::string& name : fit.texts("free", "an array of names of constants")) {
    bool isKnown = false;
    for (const FitConstant& constant : all) {
      if (!isCalled(constant, name)) continue;
      isKnown = true;
      if (taken.insert(constant.name).second) free.push_back(constant);
    }
    Names names;
    for (const FitConstant& constant : all) names.push_back(constant.name);
    const std::string near = suggestion(name, names);
    if (!isKnown)
      fit.fail("free", "no constant \"" + name + "\" of material \"" + material.name + "\", " +
                           (near.empty() ? "expected one of " + joined(names, ", ") : near));
  }
  return free;
}

void readBounds(const Table& fit, Constants& free) {
  Names names;
  for (const FitConstant& constant : free)
    for (const std::string& name : {constant.name, constant.key})
      if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
  const Table bounds = fit.table("bounds", names);
  for (const std::string& name : names) {
    if (!bounds.has(name.c_str())) continue;
    const std::vector<double> ends = bounds.reals(name.c_str(), "");
    if (ends.size() != 2 || !(ends[0] < ends[1]))
      bounds.fail(name.c_str(), "bounds of " + name + " are no two increasing numbers, expected [lowest, largest]");
    for (FitConstant& constant : free) {
      if (!isCalled(constant, name)) continue;
      constant.low = std::max(constant.low, ends[0]);
      constant.high = std::min(constant.high, ends[1]);
      if (!(constant.start >= constant.low && constant.start <= constant.high))
        bounds.fail(name.c_str(), constant.name + " of the material is " + shortNumber(constant.start) +
                                      " and its bounds are " + shortNumber(constant.low) + " and " +
                                      shortNumber(constant.high) + ", expected a start between them");
    }
  }
}

// Of models whose sum of squares may have several minima.
int usualStarts(const Material& material) {
  if (material.model->reading == Reading::Terms) return 16;
  return material.model->reading == Reading::Numbers && material.model->halfShear == nullptr ? 12 : 1;
}

} // namespace

FitCase fitCaseOf(const PathCase& definition) {
  const Table& table = *definition.fit;
  std::size_t material = 0;
  if (table.has("material")) {
    const std::string name = table.text("material");
    while (material < definition.materials.size() && definition.materials[material].name != name) ++material;
    if (material == definition.materials.size())
      table.fail("material", "no material \"" + name + "\", expected the name of a [[material]]");
  }
  const std::string weights = table.text("weights", "relative");
  if (weights != "relative" && weights != "absolute")
    table.fail("weights", "weights is \"" + weights + R"(", expected "relative" or "absolute")");
  const Material& m = definition.materials[material];
  if (isTabulated(definition.materialTables[material]))
    table.fail("material", "material \"" + m.name + "\" depends on temperature, expected single numbers");
  FitCase result{material,
                 freeConstants(table, definition, material, constantsOf(definition.materialTables[material], m)),
                 weights == "relative", static_cast<int>(table.real("starts", stepCount, "", usualStarts(m)))};
  readBounds(table, result.free);
  return result;
}

} // namespace sharedanalysis::solver
