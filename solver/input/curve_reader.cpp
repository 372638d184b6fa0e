#include "solver/input/curve_reader.h"

#include "solver/input/columns.h"

#include <algorithm>

namespace sharedanalysis::solver {
namespace {

// A curve of a case.
struct CurveRows {
  Table table;
  const CurveKind* kind;
  double rate;
  Columns rows;
};

Names namesOf(const UserModel& model) {
  Names names;
  for (const CurveKind& kind : model.curves) names.push_back("\"" + kind.name + "\"");
  return names;
}

// A model with curves of one kind needs no name.
const CurveKind& kindOf(const Table& table, const UserModel& model) {
  if (model.curves.size() == 1 && !table.has("name")) return model.curves.front();
  if (!table.has("name")) table.fail(nullptr, "name is missing in curve, expected " + joined(namesOf(model), " or "));
  const std::string name = table.text("name");
  for (const CurveKind& kind : model.curves)
    if (kind.name == name) return kind;
  table.fail("name", "no curve \"" + name + "\" of " + model.key + ", expected " + joined(namesOf(model), " or "));
}

CurveRows readCurve(const Table& table, const UserModel& model, bool isAlone) {
  const CurveKind& kind = kindOf(table, model);
  Names keys{"name", "file"};
  const std::vector<CurveColumn>& columns = kind.columns;
  for (const CurveColumn& column : columns) keys.emplace_back(column.key);
  if (kind.byRate) keys.emplace_back("rate");
  table.checkKeys(keys);
  // one curve alone holds for all rates
  const double rate = !kind.byRate || (isAlone && !table.has("rate")) ? 1 : table.real("rate", positive, "1/s");
  CurveRows curve{table, &kind, rate, Columns(table, columns)};
  if (curve.rows.rows() < kind.fewest)
    table.fail(columns.back().key, "curve \"" + kind.name + "\" has " + counted(curve.rows.rows(), "row") +
                                       ", expected at least " + std::to_string(kind.fewest));
  curve.rows.expectIncreasing(columns.size() - 1);
  return curve;
}

// Of curves of one kind: one, or one for each rate.
void checkOrder(const CurveRows& before, const CurveRows& curve) {
  if (!curve.kind->byRate) curve.table.fail("name", "there is a curve \"" + curve.kind->name + "\" already");
  if (!(curve.rate > before.rate))
    curve.table.fail("rate", "rate goes from " + shortNumber(before.rate) + " to " + shortNumber(curve.rate) +
                                 ", expected the curves \"" + curve.kind->name + "\" in the order of their rates");
}

void checkMissing(const Table& table, const UserModel& model, const std::vector<std::vector<CurveRows>>& curves) {
  for (const CurveKind& kind : model.curves) {
    Names names;
    bool isThere = kind.need == 0;
    for (std::size_t k = 0; k < curves.size(); ++k) {
      if (model.curves[k].need != kind.need) continue;
      names.push_back("\"" + model.curves[k].name + "\"");
      isThere = isThere || !curves[k].empty();
    }
    if (!isThere) table.fail("curve", "no curve " + joined(names, " or ") + " of " + model.key + ", expected one");
  }
}

} // namespace

const Names& curveKeys() {
  static const Names names = [] {
    Names all{"name", "file", "rate"};
    for (const UserModel& model : userModels())
      for (const CurveKind& kind : model.curves)
        for (const CurveColumn& column : kind.columns)
          if (std::find(all.begin(), all.end(), column.key) == all.end()) all.emplace_back(column.key);
    return all;
  }();
  return names;
}

Properties readPropertiesAndCurves(const Table& material, const UserModel& model) {
  if (model.curves.empty()) material.fail("curve", model.key + " takes no curves, expected properties alone");
  const std::vector<std::size_t> places = scalarsOf(model);
  const Properties scalars = material.reals("properties", "");
  if (scalars.size() != places.size())
    material.fail("properties", "properties has " + counted(scalars.size(), "number") + ", expected " +
                                    std::to_string(places.size()) + " for " + model.key +
                                    " with curves: the numbers of rows are left out");
  const std::vector<Table> tables = material.tables("curve", curveKeys());
  std::vector<std::vector<CurveRows>> curves(model.curves.size());
  for (const Table& table : tables) {
    CurveRows curve = readCurve(table, model, tables.size() == 1);
    std::vector<CurveRows>& ofKind = curves[static_cast<std::size_t>(curve.kind - model.curves.data())];
    if (!ofKind.empty()) checkOrder(ofKind.back(), curve);
    ofKind.push_back(std::move(curve));
  }
  checkMissing(material, model, curves);

  Properties p(model.properties);
  for (std::size_t k = 0; k < places.size(); ++k) p[places[k]] = scalars[k];
  for (std::size_t k = 0; k < curves.size(); ++k) {
    const CurveKind& kind = model.curves[k];
    if (!curves[k].empty())
      p[kind.countAt] = static_cast<double>(kind.byRate ? curves[k].size() : curves[k].front().rows.rows());
    if (kind.byRate)
      for (const CurveRows& curve : curves[k]) p.insert(p.end(), {curve.rate, static_cast<double>(curve.rows.rows())});
    for (const CurveRows& curve : curves[k])
      for (std::size_t row = 0; row < curve.rows.rows(); ++row)
        for (std::size_t c = 0; c < kind.columns.size(); ++c) p.push_back(curve.rows.column(c)[row]);
  }
  return p;
}

} // namespace sharedanalysis::solver
