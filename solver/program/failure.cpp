#include "solver/program/failure.h"

#include "reference_host.h"
#include "solver/model/model.h"
#include "solver/model/text.h"
#include "solver/program/job.h"
#include "solver/results/partial_file.h"

#include <cstdio>
#include <new>
#include <system_error>

namespace sharedanalysis::solver {

RankFailure describeException() {
  try {
    throw;
  } catch (const InputError& error) {
    return {0, exitInput, error.what()};
  } catch (const WriteError& error) {
    return {0, exitNotWritten, error.what()};
  } catch (const std::system_error& error) {
    return {0, exitNotWritten, error.what()};
  } catch (const std::bad_alloc&) {
    return {0, exitEndedEarly, "the memory does not suffice for this model"};
  } catch (const std::exception& error) {
    return {0, exitEndedEarly, error.what()};
  }
}

std::string withRank(int32_t rank, const std::string& text) {
  return rank == 0 ? text : "rank " + std::to_string(rank) + ": " + text;
}

RankFailure failureOfAll(const Ranks& ranks) {
  try {
    try {
      throw;
    } catch (const RankFailed& error) {
      return ranks.settle(error.failure(), error.teller());
    } catch (const RankLost&) {
      throw;
    } catch (...) {
      const RankFailure failure = describeException();
      return ranks.settle({ranks.rank(), failure.code, withRank(ranks.rank(), failure.text)}, ranks.rank());
    }
  } catch (const RankLost& error) {
    // the other ranks cannot be reached
    reportError(error.what());
    host::abortRanks(exitEndedEarly);
    return {ranks.rank(), exitEndedEarly, error.what()};
  }
}

void reportError(const std::string& text) {
  const std::string line = "error: " + printable(text) + '\n';
  std::fwrite(line.data(), 1, line.size(), stderr);
}

} // namespace sharedanalysis::solver
