#include "solver/program/diagnostics.h"

#include "acd.h"
#include "dia_Codes.h"
#include "diagnostic_codes.h"
#include "solver/program/messages.h"
#include "solver/program/problems.h"
#include "spx.h"

#include <algorithm>

namespace sharedanalysis::solver {
namespace {

constexpr int32_t oneStep = 1, explicitDynamics = 17,
                  textAlone = 1; // the variation of a code that shows its text alone
constexpr int64_t written = 8;   // messages of one call, which records the bricks that they name

} // namespace

int64_t mostOfRank(int64_t most, const Ranks& ranks) { return std::max(most / ranks.size(), written); }

DiagnosticCourse::DiagnosticCourse(const Case& definition, const Ranks& ranks) : ranks_(ranks) {
  acd_handler_setactive_xpl_c();
  if (!ranks_.isRoot()) return;
  acd_set_numdomains_xpl_c(ranks_.size());
  acd_set_precision_xpl_c(1);
  acd_begin_step_xpl_c(oneStep, definition.title.c_str(), explicitDynamics);
}

void DiagnosticCourse::increment(const Progress& now, double timeIncrement) {
  if (!ranks_.isRoot()) return;
  acd_begin_increment_xpl_c(static_cast<int32_t>(now.increment), timeIncrement);
  acd_end_increment_xpl_c(now.time, 1);
}

void DiagnosticCourse::reportDistortion(const std::vector<int64_t>& bricks) {
  if (bricks.empty()) return;
  std::vector<int32_t> numbers;
  for (const int64_t brick : bricks)
    if (const std::optional<int32_t> label = labelOf(brick)) numbers.push_back(*label);
  if (numbers.size() < bricks.size())
    message("Error", "%S distorted bricks have numbers above 2147483647, which diagnostics have no room for.",
            {std::to_string(bricks.size() - numbers.size())});
  if (numbers.empty()) return;
  const std::vector<double> flags(numbers.size(), 1.0);
  const int32_t count = static_cast<int32_t>(numbers.size());
  int32_t counter = 0;
  SPX_ERR_DISTORTED(&count, &counter, numbers.data(), flags.data());
  const auto most = static_cast<std::size_t>(mostOfRank(Problems::kMostRecorded, ranks_));
  for (std::size_t k = written; k < std::min(numbers.size(), most); ++k)
    acd_error_xpl_c(dia_Codes::ExcessiveDistortion, ranks_.rank(), nullptr, nullptr, nullptr, nullptr, &numbers[k]);
}

void DiagnosticCourse::reportEnding(Ending ending, const std::string& reason) {
  if (!ranks_.isRoot()) return;
  if (ending == Ending::Killed) acd_error_xpl_c(host::codes::Killed, 0, nullptr, nullptr, nullptr, nullptr, nullptr);
  if (ending != Ending::IncrementCollapsed && ending != Ending::NotFinite && ending != Ending::Failed) return;
  const char* const text = reason.c_str();
  constexpr int32_t ints[3] = {};
  constexpr double reals[3] = {};
  acd_error_xpl_c(host::codes::UserError + textAlone, 0, ints, reals, &text, nullptr, nullptr);
}

void DiagnosticCourse::end() {
  acd_comm_blocks();
  if (ranks_.isRoot()) acd_end_step_xpl_c();
}

} // namespace sharedanalysis::solver
