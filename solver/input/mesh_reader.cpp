#include "solver/input/mesh_reader.h"

#include "solver/input/box_mesh.h"
#include "solver/input/exodus_mesh.h"
#include "solver/input/gmsh_mesh.h"
#include "solver/model/hash.h"
#include "solver/parallel/distribution.h"
#include "solver/parallel/faults.h"

#include <algorithm>
#include <fstream>
#include <optional>

namespace sharedanalysis::solver {
namespace {

// All vectors of a slice with numbers of their own for each rank, in an order.
template <class Slice, class Do>
void forAll(Slice& slice, const Do& take) {
  take(slice.nodeNumbers), take(slice.coordinates), take(slice.elementPositions), take(slice.elementNumbers);
  take(slice.connectivity);
  for (auto& group : slice.groups) take(group.nodes), take(group.elements), take(group.faces);
}

void sendSlice(const Ranks& ranks, const MeshSlice& slice, int32_t rank) {
  std::vector<int64_t> sizes{slice.nodes, slice.elements, slice.firstNode};
  forAll(slice, [&](const auto& values) { sizes.push_back(static_cast<int64_t>(values.size())); });
  ranks.send(sizes, rank);
  forAll(slice, [&](const auto& values) { ranks.send(values, rank); });
}

void receiveSlice(const Ranks& ranks, MeshSlice& slice, int32_t rank) {
  std::size_t count = 3;
  forAll(slice, [&](const auto&) { ++count; });
  std::vector<int64_t> sizes(count);
  ranks.receive(sizes, rank);
  slice.nodes = sizes[0], slice.elements = sizes[1], slice.firstNode = sizes[2];
  std::size_t next = 3;
  forAll(slice, [&](auto& values) {
    values.resize(static_cast<std::size_t>(sizes[next++]));
    ranks.receive(values, rank);
  });
}

// Names and dimensions of the root's groups everywhere.
void shareGroups(const Ranks& ranks, MeshSlice& slice) {
  std::vector<char> names;
  for (const std::string& name : slice.groupNames)
    names.insert(names.end(), name.c_str(), name.c_str() + name.size() + 1);
  names = ranks.joined(ranks.isRoot() ? names : std::vector<char>{});
  slice.groupDimensions = ranks.joined(ranks.isRoot() ? slice.groupDimensions : std::vector<int>{});
  slice.groupNames.clear();
  for (auto begin = names.begin(); begin != names.end();) {
    const auto end = std::find(begin, names.end(), '\0');
    slice.groupNames.emplace_back(begin, end);
    begin = end + 1;
  }
  slice.groups.resize(slice.groupNames.size());
}

// The root has one slice of another rank at a time: each says when it has its own.
MeshSlice handedOut(const std::filesystem::path& file, const Ranks& ranks) {
  std::optional<GmshMesh> mesh;
  Faults faults;
  try {
    if (ranks.isRoot()) mesh.emplace(file);
  } catch (const InputError& error) {
    faults.add(0, error.what());
  }
  faults.throwFirst(ranks);
  MeshSlice own;
  if (ranks.isRoot()) own = mesh->share(0, ranks.size());
  shareGroups(ranks, own);
  std::vector<int64_t> receipt(1);
  for (int32_t rank = 1; ranks.isRoot() && rank < ranks.size(); ++rank) {
    sendSlice(ranks, mesh->share(rank, ranks.size()), rank);
    ranks.receive(receipt, rank);
  }
  if (!ranks.isRoot()) {
    receiveSlice(ranks, own, 0);
    ranks.send(receipt, 0);
  }
  return own;
}

// By content: netCDF and HDF5 have words at their beginnings.
bool isDatabase(const std::filesystem::path& file) {
  std::error_code unknown;
  if (!std::filesystem::is_regular_file(file, unknown)) return false;
  std::ifstream stream(file, std::ios::binary);
  char head[4] = {};
  stream.read(head, sizeof head);
  const std::string_view text(head, sizeof head);
  return text.starts_with("CDF") || text == "\x89HDF";
}

// Of a large file its size and pieces all over it, the beginning and the end among them: what takes no time.  0 for a file that
// cannot be read, about which its reader has more to say.
uint64_t printOf(const std::filesystem::path& file) {
  constexpr uint64_t kPieces = 256, kPiece = 4096;
  std::error_code error;
  const uint64_t size = std::filesystem::file_size(file, error);
  std::ifstream stream(file, std::ios::binary);
  if (error || !stream) return 0;
  Hash hash;
  hash.add(size);
  const bool isWhole = size <= kPieces * kPiece;
  for (uint64_t k = 0; k < (isWhole ? (size + kPiece - 1) / kPiece : kPieces); ++k) {
    const uint64_t at = isWhole ? k * kPiece : (size - kPiece) / (kPieces - 1) * k;
    std::string bytes(std::min(kPiece, size - at), '\0');
    stream.seekg(static_cast<std::streamoff>(k + 1 == kPieces && !isWhole ? size - kPiece : at));
    stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    hash.addLetters(bytes);
  }
  return hash.value();
}

// Every rank opens its own path, which on disks of its own may be another file.
void expectSameFile(const std::filesystem::path& file, const Ranks& ranks) {
  const uint64_t own = printOf(file);
  if (!ranks.allAgree(own != 0)) return;
  if (const std::optional<int64_t> other = firstUnlike(ranks, own))
    throw InputError(file.string() + ": rank " + std::to_string(*other) +
                     " has another file of this name than rank 0, expected the same one for all ranks");
}

} // namespace

MeshSlice sliceOf(const MeshInput& input, const Ranks& ranks) {
  if (input.box) return shareOfBox(*input.box, ranks.rank(), ranks.size());
  std::vector<int32_t> isExodus{ranks.isRoot() && isDatabase(input.file) ? 1 : 0};
  ranks.broadcast(isExodus);
  if (isExodus[0] == 0) return handedOut(input.file, ranks);
  expectSameFile(input.file, ranks);
  return sliceOfExodus(input.file, ranks);
}

Mesh readMesh(const MeshInput& input) {
  std::vector<MeshSlice> whole;
  whole.push_back(sliceOf(input, Ranks::alone()));
  return joinedMesh(whole);
}

} // namespace sharedanalysis::solver
