// A run in words: what is run, and why it ended early.
#pragma once

#include "solver/analysis/analysis.h"
#include "solver/parallel/ranks.h"

#include <string>
#include <vector>

namespace sharedanalysis::solver {

// Lines for the terminal and for the results; `askedFor` are threads.  Every rank calls it.
std::vector<std::string> describe(const Case& definition, const Mesh& mesh, const Ranks& ranks,
                                  const Analysis& analysis, int askedFor);

// Without strain.
double poissonRatio(const Material& material);

// How still a body is that a quasi-static analysis has brought to rest.
std::string describeRest(const Analysis& analysis);

// The early end of an analysis.
std::string describeEnding(Ending ending, const Analysis& analysis, const Case& definition, double firstIncrement);

} // namespace sharedanalysis::solver
