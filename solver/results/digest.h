// Digests of runs: hashes of everything that is written, by which two runs are compared to the last bit.
#pragma once

#include "solver/analysis/analysis.h"
#include "solver/parallel/ordered.h"
#include "solver/results/field_names.h"
#include "solver/results/partial_file.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

// Of the exact bits: 0 and -0 differ, and so do NaNs of different bits.  A change of one value always changes the hash.
uint64_t hashOf(std::span<const double> values);
uint64_t hashOf(std::span<const uint64_t> words);

// Arrays are hashed in chunks of entities, in the order of the mesh.
struct Chunk {
  int64_t first = 0, last = 0; // numbers of the mesh
};

struct ArrayDigest {
  const FieldName* name = nullptr;
  uint64_t hash = 0;            // of the hashes of the chunks
  std::vector<uint64_t> chunks; // one for an array of the model
};

struct OutputDigest {
  int64_t increment = 0;
  double time = 0;
  std::vector<ArrayDigest> arrays; // as fieldNames has them
};

struct Digest {
  std::string job;
  uint64_t mesh = 0; // numbers, coordinates, connectivity and groups
  int64_t nodes = 0, elements = 0;
  std::vector<Chunk> nodeChunks, elementChunks;
  std::vector<OutputDigest> outputs;

  const std::vector<Chunk>& chunksOf(Entity entity) const {
    return entity == Entity::Node ? nodeChunks : elementChunks;
  }
};

// Entities of one chunk but the last one of `count` entities.
int64_t chunkLength(int64_t count);

// Throws InputError "file:line: what is wrong": unreadable, no digest, cut off, hashes that do not belong together.
Digest readDigest(const std::filesystem::path& file);

// Of numbers, coordinates, connectivity and groups in the order of the mesh, as a digest has it; known to the root.  Every rank
// calls it.
uint64_t meshHash(const Mesh& mesh, const Ranks& ranks);
// Of the same and the faces of groups, without an order: no rank sees more than its part.  The sum of a hash of each node, brick,
// member and corner of a face with its place in the whole mesh; the same on every rank, and for any number of them.  Every rank
// calls it.
uint64_t inputHashOf(const Mesh& mesh, const Ranks& ranks);

// The digest of a run that goes on; the mesh outlives it; docs/ranks-and-reproducibility.md describes the file.  The root writes it, every rank calls
// the members: chunk c of an array is hashed by rank c modulo their number.
class DigestFile {
public:
  DigestFile(const std::filesystem::path& name, const std::string& job, const Mesh& mesh, const Ranks& ranks,
             Start start = Start::New);

  void visit(Archive& archive); // how far it has come; on the root

  void write(const Progress& progress, const FieldSource& fields, const Energies& energies);
  // The last call.  A file without its end line counts as cut off.
  void close();
  void synchronise() const;
  void complete() const;
  const std::filesystem::path& name() const { return name_; }

private:
  std::vector<std::array<uint64_t, 2>> chunksOf(const FieldName& name, std::span<const double> values,
                                                const Listing& all) const;
  std::string chunkLine(Entity entity, const std::vector<int64_t>& numbers) const;
  // Made when it is read: it would take 12 bytes of every entity all the time.
  Listing listing(Entity entity) const {
    return listingOf(mesh_, entity == Entity::Node ? Kind::Node : Kind::Brick, ranks_);
  }

  std::filesystem::path name_;
  const Mesh& mesh_;
  Ranks ranks_;
  std::optional<PartialTextFile> file_; // of the root
  int64_t outputs_ = 0;
};

} // namespace sharedanalysis::solver
