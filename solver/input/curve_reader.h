// Curves of a user material, as tables of a case.
#pragma once

#include "solver/input/case_table.h"
#include "solver/model/user_materials.h"

namespace sharedanalysis::solver {

// Every key that a [[material.curve]] of some model may have.
const Names& curveKeys();

// The properties of a material that has curves: those that its table gives with the numbers of rows put among them, and the rows
// behind them.
Properties readPropertiesAndCurves(const Table& material, const UserModel& model);

} // namespace sharedanalysis::solver
