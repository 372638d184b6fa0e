#include "solver/program/job_input.h"

#include "solver/input/mesh_reader.h"
#include "solver/model/hash.h"
#include "solver/model/memory.h"
#include "solver/parallel/cores.h"
#include "solver/parallel/distribution.h"
#include "solver/parallel/faults.h"
#include "solver/program/output.h"
#include "solver/results/digest.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

namespace sharedanalysis::solver {

namespace {

// Of the case, with curves and tests that may stand in files of their own.
uint64_t hashOf(const CaseFile& caseFile) {
  Hash hash;
  for (const std::string& line : caseFile.lines) hash.add(line);
  for (const Material& material : caseFile.definition.materials)
    for (const auto* values : {&material.constants, &material.curveStretch, &material.curveStress})
      for (const double value : *values) hash.add(value);
  return hash.value();
}

// What batch systems tell a program of threads; of a list the first number.
std::optional<long> threadsOfSurroundings() {
  const char* text = std::getenv("OMP_NUM_THREADS");
  char* end = nullptr;
  const long threads = text ? std::strtol(text, &end, 10) : 0;
  return threads > 0 ? std::optional(threads) : std::nullopt;
}

// Several ranks share a machine: one thread each unless set otherwise; one rank takes the cores that it may run on.
int threadsOf(const JobOptions& options, const Ranks& ranks) {
  if (options.threads > 0) return options.threads;
  constexpr long kMost = 1024;
  const long cores = ranks.areSeveral() ? 1 : usableCores();
  return static_cast<int>(std::min(threadsOfSurroundings().value_or(cores), kMost));
}

CaseFile readInput(const JobOptions& options) {
  CaseFile caseFile = readCase(options.caseFile);
  if (options.outputDirectory) caseFile.definition.outputDirectory = *options.outputDirectory;
  if (options.filesByRank) caseFile.definition.filesByRank = *options.filesByRank;
  const Case& definition = caseFile.definition;
  expectOtherNames(caseFile.files, definition.outputDirectory, definition.job, resultExtensions);
  return caseFile;
}

// Before anything else is done together.
CaseFile readSameCase(const JobOptions& options, const Ranks& ranks) {
  CaseFile caseFile = readInput(options);
  if (const std::optional<int64_t> other = firstUnlike(ranks, hashOf(caseFile)))
    throw InputError("rank " + std::to_string(*other) + " has read another case than rank 0 from " +
                     caseFile.definition.file.string());
  return caseFile;
}

} // namespace

JobInput::JobInput(const JobOptions& options, const Ranks& ranks)
    : threads(threadsOf(options, ranks)), caseFile(readSameCase(options, ranks)),
      mesh(distribute(sliceOf(caseFile.definition.mesh, ranks), ranks)) {
  Hash all;
  all.add(hashOf(caseFile));
  all.add(inputHashOf(mesh, ranks));
  hash = all.value();
  returnFreeMemory();
  checkGroups(caseFile, mesh, ranks);
  for (const Material& material : caseFile.definition.materials) checkData(material);
}

} // namespace sharedanalysis::solver
