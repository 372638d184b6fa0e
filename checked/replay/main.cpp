// sharedanalysis-replay: makes recorded calls again, compares, times, reduces and writes them down.
#include "call.h"

#include <CLI/CLI.hpp>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>
#include <map>
#include <unordered_map>

namespace {

using namespace sa::replay;
using sa::checked::Recording;

struct Options {
  std::string file, library, other, reduced, cpp, python;
  std::uint64_t call = 0;
  int times = 0;
  bool isListed = false;
};

enum Exit { exitSame = 0, exitDifferent = 1, exitInput = 2 };

std::string nameOf(const RecordedCall& call) {
  return call.routine + ", call " + std::to_string(call.number) + ", increment " + std::to_string(call.increment);
}

void printDifference(const Difference& difference, const char* first, const char* second) {
  std::cout << "  " << difference.name << difference.entry << "\n    " << first << " " << difference.first << "\n";
  if (second[0] != '\0') std::cout << "    " << second << " " << difference.second << "\n";
}

Recording opened(const std::string& file) {
  std::string fault;
  std::optional<Recording> recording = Recording::open(file, fault);
  if (!recording) throw std::runtime_error(fault);
  return std::move(*recording);
}

void tellFaults(const Recording& recording, const std::string& file) {
  for (const std::string& fault : recording.faults()) std::cerr << file << ": " << fault << "\n";
}

void write(const std::string& file, const std::string& text) {
  std::ofstream stream(file, std::ios::binary);
  if (!(stream << text).flush()) throw std::runtime_error("cannot write " + file);
}

// The first point that differs by itself, or has a result that is not finite.
std::optional<RecordedCall> reducedTo(const RecordedCall& call, void* routine, bool isDifferent) {
  const std::int64_t points = pointsOf(call);
  for (std::int64_t p = 0; p < points; ++p) {
    try {
      RecordedCall one = pointOf(call, p);
      Call again(one);
      Difference difference;
      std::string fault;
      if (!isDifferent ? firstNotFinite(one, difference)
                       : again.run(routine, fault) && firstDifference(again, difference)) {
        std::cout << "  reduced to point " << p + 1 << "\n";
        return one;
      }
    } catch (const std::runtime_error&) { // not in the list
    }
  }
  return std::nullopt;
}

double timeOf(Call& call, void* routine, int times) {
  double best = std::numeric_limits<double>::max();
  std::string fault;
  for (int n = 0; n < times; ++n) {
    call.reset();
    const auto start = std::chrono::steady_clock::now();
    std::int64_t result[2];
    call.routine().call(routine, call.addresses(), result);
    best = std::min(best, std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count());
  }
  return best;
}

struct Cost {
  std::int64_t calls = 0, points = 0;
  double time = 0, recorded = 0;
};

int replay(const Options& options) {
  Recording recording = opened(options.file);
  const Library library(options.library);
  std::map<std::string, std::int64_t> routines;
  std::map<std::string, Cost> costs;
  std::int64_t calls = 0, different = 0, refused = 0, notFinite = 0;
  bool isWritten = false;
  while (const std::optional<RecordedCall> call = recording.next()) {
    if (options.call != 0 && call->number != options.call) continue;
    ++calls;
    ++routines[call->routine];
    if (options.isListed) {
      std::cout << call->number << " " << call->routine << " increment " << call->increment << " thread "
                << call->thread << " " << call->nanoseconds << " ns\n";
      continue;
    }
    Difference difference, spoiled;
    std::string fault;
    bool isDifferent = false, isSpoiled = false;
    try {
      Call again(*call);
      if (!again.run(library.routine(call->routine), fault)) throw std::runtime_error(fault);
      isDifferent = firstDifference(again, difference);
      isSpoiled = firstNotFinite(*call, spoiled);
      if (options.times > 0) {
        Cost& cost = costs[call->routine];
        ++cost.calls;
        cost.points += pointsOf(*call);
        cost.time += timeOf(again, library.routine(call->routine), options.times);
        cost.recorded += static_cast<double>(call->nanoseconds);
      }
    } catch (const std::runtime_error& error) {
      if (++refused <= 10) std::cout << nameOf(*call) << ": cannot be made: " << error.what() << "\n";
      continue;
    }
    if (isDifferent && ++different <= 10) {
      std::cout << nameOf(*call) << " differs\n";
      printDifference(difference, "recorded", "now     ");
    }
    if (isSpoiled && ++notFinite == 1 && !isDifferent) {
      std::cout << nameOf(*call) << " has a result that is not finite\n";
      printDifference(spoiled, "recorded", "");
    }
    const bool isAsked = isDifferent || isSpoiled || options.call != 0 || options.reduced.empty();
    if (isWritten || !isAsked || (options.reduced.empty() && options.cpp.empty() && options.python.empty())) continue;
    RecordedCall kept = *call;
    if (!options.reduced.empty()) {
      std::optional<RecordedCall> one = reducedTo(*call, library.routine(call->routine), isDifferent);
      if (one)
        kept = std::move(*one);
      else
        std::cout << "  no point by itself: the call is kept whole\n";
      write(options.reduced, sa::checked::fileHead() + encode(kept));
    }
    if (!options.cpp.empty()) write(options.cpp, cppOf(kept));
    if (!options.python.empty()) write(options.python, pythonOf(kept));
    isWritten = true;
  }
  tellFaults(recording, options.file);
  if (options.call != 0 && calls == 0)
    throw std::runtime_error(options.file + " has no call " + std::to_string(options.call));
  for (const auto& [name, cost] : costs)
    std::cout << name << ": " << cost.calls << " calls, " << cost.time / static_cast<double>(cost.calls)
              << " ns a call, " << cost.time / static_cast<double>(std::max<std::int64_t>(cost.points, 1))
              << " ns a point; when recorded " << cost.recorded / static_cast<double>(cost.calls) << " ns a call\n";
  std::cout << calls << (calls == 1 ? " call of " : " calls of ") << routines.size()
            << (routines.size() == 1 ? " routine" : " routines");
  if (!options.isListed) {
    std::cout << ", " << different << (different == 1 ? " differs" : " differ");
    if (refused > 0) std::cout << ", " << refused << " cannot be made";
    if (notFinite > 0) std::cout << ", " << notFinite << " with results that are not finite";
  }
  std::cout << "\n";
  return different > 0 || refused > 0 ? exitDifferent : exitSame;
}

// What a call gets, as a number.
std::uint64_t inputsOf(const RecordedCall& call) {
  std::string text = call.routine;
  for (const RecordedArgument& a : call.arguments) {
    for (const sa::checked::Run& run : a.runs)
      text.append(std::to_string(run.first)).append("+").append(std::to_string(run.count)).append(",");
    text.append(a.before.begin(), a.before.end());
  }
  return sa::checked::checksum(text);
}

// The calls of threads come in any order: a call has its partner by what it gets.
int compare(const Options& options) {
  Recording first = opened(options.file), second = opened(options.other);
  std::unordered_map<std::uint64_t, std::vector<RecordedCall>> partners;
  std::map<std::pair<std::string, std::int64_t>, RecordedCall> byPlace; // n-th call of a routine
  std::map<std::string, std::int64_t> counts;
  std::int64_t inSecond = 0, same = 0;
  while (std::optional<RecordedCall> call = second.next()) {
    ++inSecond;
    byPlace.emplace(std::pair(call->routine, ++counts[call->routine]), *call);
    partners[inputsOf(*call)].push_back(std::move(*call));
  }
  counts.clear();
  bool hasOutputs = false, hasInputs = false;
  while (const std::optional<RecordedCall> call = first.next()) {
    const std::int64_t number = ++counts[call->routine];
    Difference difference;
    const auto found = partners.find(inputsOf(*call));
    if (found != partners.end()) {
      bool isSame = false;
      for (const RecordedCall& partner : found->second)
        isSame = isSame || !firstDifference(*call, partner, false, difference);
      same += isSame ? 1 : 0;
      if (isSame || hasOutputs) continue;
      hasOutputs = true;
      std::cout << "the first call with the same inputs and other results: " << nameOf(*call)
                << "; in the other recording " << nameOf(found->second.front()) << "\n";
      printDifference(difference, "first ", "second");
    } else if (!hasInputs) {
      hasInputs = true;
      std::cout << "the first call with other inputs: " << nameOf(*call) << "\n";
      const auto partner = byPlace.find({call->routine, number});
      if (partner == byPlace.end())
        std::cout << "  has none to be compared with\n";
      else if (firstDifference(*call, partner->second, true, difference))
        printDifference(difference, "first ", "second");
    }
  }
  tellFaults(first, options.file);
  tellFaults(second, options.other);
  std::int64_t inFirst = 0;
  for (const auto& [name, count] : counts) inFirst += count;
  std::cout << same << " calls of " << inFirst << " and " << inSecond << " are the same\n";
  return hasOutputs || hasInputs || inFirst != inSecond ? exitDifferent : exitSame;
}

} // namespace

int main(int argc, char** argv) {
  Options options;
  CLI::App app("Makes recorded calls of SharedAnalysis again and compares the results", "sharedanalysis-replay");
  app.option_defaults()->disable_flag_override(); // --list=no
  app.add_option("RECORDING", options.file, "File written with SHAREDANALYSIS_RECORD")->required();
  app.add_option("--library", options.library, "Another library than the installed one");
  app.add_option("--call", options.call, "Only the call of this number")
      ->check(CLI::Range(std::int64_t{1}, std::numeric_limits<std::int64_t>::max()));
  app.add_flag("--list", options.isListed, "List the calls, make none");
  app.add_option("--time", options.times, "Make each call so many times and show the shortest times")
      ->check(CLI::Range(1, 1000000));
  app.add_option("--reduce", options.reduced,
                 "Write the first call that differs or is not finite, for one of its points, to this recording");
  app.add_option("--cpp", options.cpp, "Write that call, or the first, as a C++ program");
  app.add_option("--python", options.python, "Write that call, or the first, as a Python program");
  app.add_option("--compare", options.other, "Hold the calls against those of another recording");
  app.set_version_flag("--version", "sharedanalysis-replay " SHAREDANALYSIS_VERSION);
  std::signal(SIGXFSZ, SIG_IGN); // a file-size limit is an error of the write
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);
    std::cerr << "error: " << error.what() << " (--help lists the options)\n";
    return exitInput;
  }
  try {
    for (const std::string& written : {options.reduced, options.cpp, options.python})
      for (const std::string& read : {options.file, options.other})
        if (std::error_code none; std::filesystem::equivalent(written, read, none))
          throw std::runtime_error(written + " is what is read, expected the name of another file");
    return options.other.empty() ? replay(options) : compare(options);
  } catch (const std::exception& error) {
    std::cerr << "error: " << error.what() << "\n";
    return exitInput;
  }
}
