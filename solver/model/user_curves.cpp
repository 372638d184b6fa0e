#include "solver/model/user_curves.h"

#include "solver/model/text.h"
#include "solver/model/user_materials.h"

#include <algorithm>
#include <string_view>

namespace sharedanalysis::solver {

std::string CurveView::name() const { return kind->name + (rate ? " at " + shortNumber(*rate) + " 1/s" : ""); }

std::vector<CurveView> curvesOf(const UserModel& model, const std::vector<double>& p) {
  std::vector<CurveView> curves;
  std::size_t at = model.properties;
  const auto isRoom = [&](double rows, std::size_t width) {
    return rows >= 0 && at <= p.size() && static_cast<double>(width) * rows <= static_cast<double>(p.size() - at);
  };
  const auto add = [&](const CurveKind& kind, std::optional<double> rate, double rows) {
    const std::size_t width = kind.columns.size();
    if (!isRoom(rows, width)) return false;
    const auto count = static_cast<std::size_t>(rows);
    if (count > 0) curves.push_back({&kind, rate, &p[at], count});
    at += width * count;
    return true;
  };
  for (const CurveKind& kind : model.curves) {
    const double count = kind.countAt < p.size() ? p[kind.countAt] : 0;
    if (!kind.byRate) {
      if (!add(kind, {}, count)) return curves;
      continue;
    }
    if (!isRoom(count, 2)) return curves;
    const std::size_t rates = at;
    at += 2 * static_cast<std::size_t>(count);
    for (std::size_t k = 0; k < static_cast<std::size_t>(count); ++k)
      if (!add(kind, p[rates + 2 * k], p[rates + 2 * k + 1])) return curves;
  }
  return curves;
}

std::vector<std::size_t> scalarsOf(const UserModel& model) {
  std::vector<std::size_t> places;
  for (std::size_t k = 0; k < model.properties; ++k)
    if (std::none_of(model.curves.begin(), model.curves.end(), [k](const CurveKind& c) { return c.countAt == k; }))
      places.push_back(k);
  return places;
}

double steepestSlope(const UserModel& model, const std::vector<double>& properties) {
  double slope = 0;
  for (const CurveView& curve : curvesOf(model, properties))
    for (std::size_t r = 1; r < curve.count; ++r)
      slope = std::max(slope, (curve.at(r, 0) - curve.at(r - 1, 0)) / (curve.at(r, 1) - curve.at(r - 1, 1)));
  return slope;
}

std::vector<std::string> describeCurves(const UserModel& model, const std::vector<double>& properties) {
  std::vector<std::string> lines;
  for (const CurveView& curve : curvesOf(model, properties)) {
    std::string line = "curve " + curve.name() + ": " + counted(curve.count, "row");
    for (std::size_t c = curve.kind->columns.size(); c-- > 0;) {
      const CurveColumn& column = curve.kind->columns[c];
      double low = curve.at(0, c), high = low;
      for (std::size_t r = 1; r < curve.count; ++r) {
        low = std::min(low, curve.at(r, c));
        high = std::max(high, curve.at(r, c));
      }
      const bool isPascal = std::string_view(column.unit) == "Pa";
      const double unit = isPascal ? 1e6 : 1;
      line += std::string(", ") + column.key + " " + shortNumber(low / unit) +
              (high > low ? " to " + shortNumber(high / unit) : "");
      if (*column.unit != 0) line += isPascal ? " MPa" : std::string(" ") + column.unit;
    }
    lines.push_back(line);
  }
  return lines;
}

} // namespace sharedanalysis::solver
