// What a case says about a fit: the constants that are free, their bounds, weights and starts.
#pragma once

#include "solver/program/material_path.h"

namespace sharedanalysis::solver {

// A constant that a fit may change.
struct FitConstant {
  std::string name, key; // "mu[2]" of the key "mu"
  std::size_t element;   // of the key's array, 0 for a single number
  std::size_t index;     // into Material::constants
  bool isReciprocal;     // Material::constants has 1/value
  const char* unit;
  Range range;
  double low, high; // bounds of the case, or those of the range
  double start;     // the value of the case
};

struct FitCase {
  std::size_t material; // index into PathCase::materials
  std::vector<FitConstant> free;
  bool isRelative; // residuals by the measured stress, else by the largest of all
  int starts;
};

inline const Names& fitKeys() {
  static const Names names{"material", "free", "weights", "starts", "bounds"};
  return names;
}

// Throws InputError for constants that are not there, and for bounds that leave out the start.  A case without [fit] is one with
// an empty table.
FitCase fitCaseOf(const PathCase& definition);

} // namespace sharedanalysis::solver
