// Materials of a case file.
#pragma once

#include "case_table.h"

namespace sharedanalysis::solver {

// Every key that a table of a material may have.
const Names& materialKeys();

Material readMaterial(const Table& table);

} // namespace sharedanalysis::solver
