#include "solver/program/job_input.h"

#include "solver/input/mesh_reader.h"
#include "solver/results/hash.h"

#include <algorithm>
#include <cstdlib>
#include <omp.h>

namespace sharedanalysis::solver {

namespace {

// Of the input, which must be the same on all ranks.
uint64_t inputHash(const CaseFile& caseFile, const Mesh& mesh) {
  Hash hash;
  for (const std::string& line : caseFile.lines) hash.add(line);
  hash.add(mesh);
  for (const Group& group : mesh.groups)
    for (const int32_t corner : group.faces) hash.add(static_cast<uint64_t>(corner));
  return hash.value();
}

// Called before the mesh is read: Gmsh sets OpenMP to one thread.  Several ranks share a machine: one thread each
// unless set otherwise.
int threadsOf(const JobOptions& options, const Ranks& ranks) {
  if (options.threads > 0) return options.threads;
  if (ranks.areSeveral() && !std::getenv("OMP_NUM_THREADS")) return 1;
  return std::min(omp_get_max_threads(), 1024);
}

CaseFile readInput(const JobOptions& options) {
  CaseFile caseFile = readCase(options.caseFile);
  if (options.outputDirectory) caseFile.definition.outputDirectory = *options.outputDirectory;
  return caseFile;
}

void checkSame(const JobInput& input, const Ranks& ranks) {
  if (!ranks.areSeveral()) return;
  const std::vector<int64_t> hashes = ranks.joined({static_cast<int64_t>(inputHash(input.caseFile, input.mesh))});
  for (std::size_t rank = 1; rank < hashes.size(); ++rank)
    if (hashes[rank] != hashes[0])
      throw InputError("rank " + std::to_string(rank) + " has read another case or mesh than rank 0 from " +
                       input.caseFile.definition.file.string() + " and " + input.caseFile.definition.meshFile.string());
}

} // namespace

JobInput::JobInput(const JobOptions& options, const Ranks& ranks)
    : threads(threadsOf(options, ranks)), caseFile(readInput(options)), mesh(readMesh(caseFile.definition.meshFile)) {
  checkGroups(caseFile, mesh);
  for (const Material& material : caseFile.definition.materials) checkData(material);
  checkSame(*this, ranks);
}

} // namespace sharedanalysis::solver
