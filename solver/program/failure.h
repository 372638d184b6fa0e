// A failure on one rank ends all of them, with one message to the user.
#pragma once

#include "solver/parallel/ranks.h"

#include <stdexcept>
#include <string>

namespace sharedanalysis::solver {

// An error that all ranks end with.
class JobFailed : public std::runtime_error {
public:
  explicit JobFailed(RankFailure failure) : std::runtime_error(failure.text), failure_(std::move(failure)) {}
  const RankFailure& failure() const { return failure_; }

private:
  RankFailure failure_;
};

std::string withRank(int32_t rank, const std::string& text);

// "error: text" on standard error.
void reportError(const std::string& text);

// The exception that is being handled, as an exit code and a text.
RankFailure describeException();

// A signal by which the process crashes is told on standard error before it does so.
void tellCrashes(const Ranks& ranks);

// The failure that ends all ranks, for the exception that is being handled on this one.
RankFailure failureOfAll(const Ranks& ranks);

} // namespace sharedanalysis::solver
