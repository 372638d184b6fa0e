// Materials of a case file.
#pragma once

#include "solver/input/case_table.h"

#include <optional>

namespace sharedanalysis::solver {

// Every key that a table of a material may have.
const Names& materialKeys();

// A material whose constants depend on temperature has the key `temperatures`.
bool isTabulated(const Table& table);

// Evaluates a tabulated material at a temperature in K; InputError without one.
Material readMaterial(const Table& table, std::optional<double> temperature = {});

} // namespace sharedanalysis::solver
