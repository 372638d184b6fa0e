// sharedanalysis-compare: whether two runs of sharedanalysis-explicit are the same to the last bit.
#include "solver/model/text.h"
#include "solver/program/command_line.h"
#include "solver/program/instruction_set.h"
#include "solver/results/comparison.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <sstream>

int main(int argc, char** argv) {
  using namespace sharedanalysis::solver;
  keepWriteErrors();
  std::filesystem::path a, b;
  bool quiet = false;
  CLI::App app("Compares two runs that have written digests, to the last bit", "sharedanalysis-compare");
  app.add_option("A", a, "Digest, or directory of results with one")->required();
  app.add_option("B", b, "Digest, or directory of results with one")->required();
  app.add_flag("-q,--quiet", quiet, "Show nothing, answer by the exit code alone");
  app.footer("Exit codes: 0 the same, 1 something is missing or cannot be read, 5 different.");
  app.set_version_flag("--version", versionText("sharedanalysis-compare"));
  constexpr int incomplete = static_cast<int>(Verdict::Incomplete);
  if (const auto code = parse(app, argc, argv)) return *code;
  try {
    const Comparison comparison = compareRuns(a, b);
    std::istringstream lines(quiet ? std::string() : comparison.text);
    for (std::string line; std::getline(lines, line);)
      (comparison.verdict == Verdict::Incomplete ? std::cerr : std::cout) << printable(line) << '\n';
    return static_cast<int>(comparison.verdict);
  } catch (const std::exception& error) {
    std::cerr << "error: " << printable(error.what()) << '\n';
    return incomplete;
  }
}
