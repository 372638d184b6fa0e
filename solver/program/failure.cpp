#include "solver/program/failure.h"

#include "reference_host.h"
#include "solver/model/model.h"
#include "solver/model/text.h"
#include "solver/program/job.h"
#include "solver/results/partial_file.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <new>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace sharedanalysis::solver {
namespace {

// What a handler may do: nothing that allocates or locks.
struct Crash {
  int signal;
  struct sigaction before = {};
  std::array<char, 96> text{};
  std::size_t length = 0;
};
std::array<Crash, 5>& crashes() {
  static std::array<Crash, 5> all{Crash{SIGSEGV}, {SIGBUS}, {SIGFPE}, {SIGILL}, {SIGABRT}};
  return all;
}

void tellCrash(int signal, siginfo_t* info, void*) {
  const int error = errno;
  for (Crash& crash : crashes()) {
    if (crash.signal != signal) continue;
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, crash.text.data(), crash.length);
    sigaction(signal, &crash.before, nullptr);
  }
  // a fault comes again, with all that is known of it, when the handler returns; a signal that somebody has sent does not
  if (info->si_code <= 0) raise(signal);
  errno = error;
}

} // namespace

void tellCrashes(const Ranks& ranks) {
  static std::array<char, 1 << 16> stack; // its own is what a thread may have used up
  stack_t own = {};
  own.ss_sp = stack.data();
  own.ss_size = stack.size();
  sigaltstack(&own, nullptr);
  const std::string who = ranks.areSeveral() ? "rank " + std::to_string(ranks.rank()) : "the program";
  for (Crash& crash : crashes()) {
    std::string line = "error: " + who + " crashed: signal " + std::to_string(crash.signal);
    line.append(" (").append(strsignal(crash.signal)).append(")\n");
    crash.length = line.copy(crash.text.data(), crash.text.size());
    struct sigaction action = {};
    action.sa_sigaction = tellCrash;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigaction(crash.signal, &action, &crash.before);
  }
}

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
    std::this_thread::sleep_for(std::chrono::milliseconds(500)); // others say for whom they wait
    host::abortRanks(exitEndedEarly);
    return {ranks.rank(), exitEndedEarly, error.what()};
  }
}

void reportError(const std::string& text) {
  const std::string line = "error: " + printable(text) + '\n';
  std::fwrite(line.data(), 1, line.size(), stderr);
}

} // namespace sharedanalysis::solver
