// Curves of user materials: what a case gives as tables, and where the numbers stand among the properties.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

struct UserModel;

struct CurveColumn {
  const char* key;
  const char* unit;
};

// Curves of one kind.  Their rows stand behind the properties, in the order of the kinds of a model.
struct CurveKind {
  std::string name;
  std::vector<CurveColumn> columns; // as they stand in a row; the last one increases
  std::size_t countAt;              // the property that counts the rows or, by rate, the curves
  bool byRate = false;              // several curves, each at a rate; rates and numbers of rows stand before the rows
  int need = 0;           // other than 0: a material has a curve of one kind at least that has the same number
  std::size_t fewest = 2; // rows
};

// A curve among properties.
struct CurveView {
  const CurveKind* kind;
  std::optional<double> rate; // 1/s
  const double* rows;
  std::size_t count; // of rows

  double at(std::size_t row, std::size_t column) const { return rows[row * kind->columns.size() + column]; }
  std::string name() const;
};

// The curves of the properties; those that end too early, which the library refuses, are left out.
std::vector<CurveView> curvesOf(const UserModel& model, const std::vector<double>& properties);

// The properties of a model that are no numbers of rows, by their places.
std::vector<std::size_t> scalarsOf(const UserModel& model);

// The steepest slope of all curves of (stress, strain).
double steepestSlope(const UserModel& model, const std::vector<double>& properties);

// A line for each curve: name, rows, ranges of its columns.
std::vector<std::string> describeCurves(const UserModel& model, const std::vector<double>& properties);

} // namespace sharedanalysis::solver
