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

MeshSlice temporary(const Mesh& m, const Ranks& ranks) {
  MeshSlice s;
  s.nodes = m.nodes(), s.elements = m.elements();
  const auto f = [&](int64_t n, int d) { return firstOfShare(n, ranks.rank() + d, ranks.size()); };
  s.firstNode = f(s.nodes, 0);
  for (int64_t i = s.firstNode; i < f(s.nodes, 1); ++i) {
    s.nodeNumbers.push_back(m.nodeNumbers[i]);
    for (int c = 0; c < 3; ++c) s.coordinates.push_back(m.coordinates[3 * i + c]);
  }
  for (int64_t i = f(s.elements, 0); i < f(s.elements, 1); ++i) {
    s.elementPositions.push_back(i);
    s.elementNumbers.push_back(m.elementNumbers[i]);
    for (int c = 0; c < 8; ++c) s.connectivity.push_back(m.connectivity[8 * i + c]);
  }
  for (const Group& g : m.groups) {
    s.groupNames.push_back(g.name), s.groupDimensions.push_back(g.dimension);
    MeshSlice::Members& q = s.groups.emplace_back();
    for (int64_t i = f(g.nodes.size(), 0); i < f(g.nodes.size(), 1); ++i) q.nodes.push_back(g.nodes[i]);
    for (int64_t i = f(g.elements.size(), 0); i < f(g.elements.size(), 1); ++i) q.elements.push_back(g.elements[i]);
    for (int64_t i = 4 * f(g.faces.size() / 4, 0); i < 4 * f(g.faces.size() / 4, 1); ++i) q.faces.push_back(g.faces[i]);
  }
  return s;
}

CaseFile readInput(const JobOptions& options) {
  CaseFile caseFile = readCase(options.caseFile);
  if (options.outputDirectory) caseFile.definition.outputDirectory = *options.outputDirectory;
  return caseFile;
}

[[maybe_unused]] void checkSame(const JobInput& input, const Ranks& ranks) {
  if (!ranks.areSeveral()) return;
  const std::vector<int64_t> hashes = ranks.joined(std::vector<int64_t>{static_cast<int64_t>(input.hash)});
  for (std::size_t rank = 1; rank < hashes.size(); ++rank)
    if (hashes[rank] != hashes[0])
      throw InputError("rank " + std::to_string(rank) + " has read another case or mesh than rank 0 from " +
                       input.caseFile.definition.file.string() + " and " + input.caseFile.definition.meshFile.string());
}

} // namespace

JobInput::JobInput(const JobOptions& options, const Ranks& ranks)
    : threads(threadsOf(options, ranks)), caseFile(readInput(options)),
      mesh(distribute(temporary(readMesh(caseFile.definition.meshFile), ranks), ranks)),
      hash(inputHash(caseFile, mesh)) {
  checkGroups(caseFile, mesh, ranks);
  for (const Material& material : caseFile.definition.materials) checkData(material);
  // checkSame(*this, ranks);
}

} // namespace sharedanalysis::solver
