// The part of a diagnostic database that is shown.
#pragma once

#include "exit_codes.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace sharedanalysis::diagnostics {

class Failure : public std::runtime_error {
public:
  Failure(ExitCode code, const std::string& text) : std::runtime_error(text), code_(code) {}
  ExitCode code() const { return code_; }

private:
  ExitCode code_;
};

// Which increments: of one step or of all, from the first number to the last.
struct IncrementRange {
  std::optional<int64_t> step;
  int64_t first, last;
};

struct Selection {
  std::optional<std::string> code; // number, decimal or hexadecimal, or name
  std::optional<IncrementRange> increments;
  std::size_t limit = 20, places = 5;

  bool isNarrowed() const { return code || increments; }
};

struct Run {
  std::string job, host, program, started, state;
  std::optional<std::string> ended;
  int64_t process, rank, status;
  std::optional<double> elapsed;
  std::optional<int64_t> domains, doublePrecision;
  bool inParts, incomplete;
};

struct Step {
  std::string name, solver;
  std::vector<std::string> attributes; // in words
  int64_t number, procedure, increments, attempts, iterations, cutbacks, errors, warnings;
  std::optional<double> time, smallest, largest, wall;
};

// Consecutive increments of a step of which the same is to be said.
struct IncrementGroup {
  std::optional<int64_t> step;
  int64_t first, last, count = 1;
  std::optional<double> smallest, largest; // time increments
  std::optional<double> time;              // at the end of the last one that has ended
  int64_t attempts, iterations, cutbacks, errors, warnings;
  std::string state; // converged, not converged, not ended
};

struct Occurrence {
  std::optional<int64_t> step, increment;
  std::optional<double> time; // at the end of the increment
};

struct PlaceCount {
  std::string kind, instance; // kind: element, node
  int64_t label, count;
};

struct Problem {
  int64_t id, code, count;
  bool isError;
  std::string kind, name, text; // kind: the class; text: of the first
  Occurrence first, last;
  std::vector<PlaceCount> places; // the first few
  std::size_t placeCount = 0;     // how many different ones
};

struct Message {
  int64_t id;
  std::string kind, name, text;
  Occurrence where;
  std::optional<int64_t> attempt, iteration, domain;
};

struct Record {
  std::filesystem::path file;
  Run run;
  std::vector<Step> steps;
  std::vector<IncrementGroup> increments; // the last of them
  std::size_t groupCount = 0;
  std::vector<Problem> problems;
  std::size_t problemCount = 0;
  std::vector<Message> messages; // of a narrowed selection
  int64_t messageCount = 0;
};

// Reads one state of the database, also while it is being written.  Throws Failure.
Record readRecord(const std::filesystem::path& file, const Selection& selection);

// "12", "10-20", "2:12", "2:10-20".  Throws Failure.
IncrementRange incrementRange(const std::string& text);

} // namespace sharedanalysis::diagnostics
