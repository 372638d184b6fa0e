#include "solver/program/job_input.h"

#include "solver/input/mesh_reader.h"
#include "solver/parallel/distribution.h"
#include "solver/results/hash.h"

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <thread>

namespace sharedanalysis::solver {

namespace {

// Of the input, which must be the same on all ranks.
uint64_t inputHash(const CaseFile& caseFile, const Mesh& mesh) {
  Hash hash;
  for (const std::string& line : caseFile.lines) hash.add(line);
  for (const Material& material : caseFile.definition.materials) // curves and tests may stand in files of their own
    for (const auto* values : {&material.constants, &material.curveStretch, &material.curveStress})
      for (const double value : *values) hash.add(value);
  hash.add(mesh);
  for (const Group& group : mesh.groups)
    for (const int32_t corner : group.faces) hash.add(static_cast<uint64_t>(corner));
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
  const long cores = ranks.areSeveral() ? 1 : std::max(1L, static_cast<long>(std::thread::hardware_concurrency()));
  return static_cast<int>(std::min(threadsOfSurroundings().value_or(cores), kMost));
}

CaseFile readInput(const JobOptions& options) {
  CaseFile caseFile = readCase(options.caseFile);
  if (options.outputDirectory) caseFile.definition.outputDirectory = *options.outputDirectory;
  if (options.filesByRank) caseFile.definition.filesByRank = *options.filesByRank;
  return caseFile;
}

[[maybe_unused]] void checkSame(const JobInput& input, const Ranks& ranks) {
  if (!ranks.areSeveral()) return;
  const std::vector<int64_t> hashes = ranks.joined(std::vector<int64_t>{static_cast<int64_t>(input.hash)});
  for (std::size_t rank = 1; rank < hashes.size(); ++rank)
    if (hashes[rank] != hashes[0])
      throw InputError("rank " + std::to_string(rank) + " has read another case or mesh than rank 0 from " +
                       input.caseFile.definition.file.string() + " and " + input.caseFile.definition.mesh.name());
}

} // namespace

JobInput::JobInput(const JobOptions& options, const Ranks& ranks)
    : threads(threadsOf(options, ranks)), caseFile(readInput(options)),
      mesh(distribute(sliceOf(caseFile.definition.mesh, ranks), ranks)), hash(inputHash(caseFile, mesh)) {
  checkGroups(caseFile, mesh, ranks);
  for (const Material& material : caseFile.definition.materials) checkData(material);
  // checkSame(*this, ranks);
}

} // namespace sharedanalysis::solver
