#include "solver/input/gmsh_mesh.h"

#include "solver/input/brick_shape.h"
#include "solver/input/gmsh_reader.h"
#include "solver/model/text.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <limits>
#include <numeric>
#include <sstream>
#include <string_view>

namespace sharedanalysis::solver {
namespace {

[[noreturn]] void fail(const std::filesystem::path& file, const std::string& text) {
  throw InputError(file.string() + ": " + text);
}

// How a mesh may begin; anything else that begins with $ is a picture of results or a script.
constexpr std::string_view kHeads[] = {"$MeshFormat", "$NOD", "$Comments"};
constexpr int kLongestHead = 20;

constexpr std::int64_t kLargest = std::numeric_limits<int32_t>::max(); // number of format 2

// A section of text has one line an entry, and its first line counts them: a count that is too small would hide the rest.
//   version 2      count
//   version 4      blocks, count; a line for each block; of nodes, from 4.1 on, first the numbers and then the coordinates
void checkCounts(const std::filesystem::path& file, std::istream& stream) {
  stream.clear();
  stream.seekg(0);
  double version = 0;
  int isBinary = 0;
  for (std::string line, word; std::getline(stream, line);) {
    std::istringstream words(line);
    if (!(words >> word) || word[0] != '$' || word.starts_with("$End")) continue;
    std::getline(stream, line);
    std::istringstream first(line);
    if (word == "$MeshFormat") first >> version >> isBinary;
    if (isBinary != 0 || (word != "$Nodes" && word != "$Elements")) continue;
    std::int64_t blocks = 0, count = 0, lines = 0;
    if (version >= 4) first >> blocks;
    if (!(first >> count)) continue;
    const std::string end = "$End" + word.substr(1);
    while (std::getline(stream, line) && !line.starts_with(end)) {
      lines += line.find_first_not_of(" \t\r") != line.npos;
      if (version < 4 && std::strtoll(line.c_str(), nullptr, 10) > kLargest) // Gmsh would take another number
        fail(file, word + " has the number " + std::to_string(std::strtoll(line.c_str(), nullptr, 10)) + ", above " +
                       std::to_string(kLargest) + ", the largest of format 2");
    }
    const std::int64_t expected = blocks + count * (version >= 4.1 && word == "$Nodes" ? 2 : 1);
    if (lines != expected)
      fail(file,
           word + " has " + std::to_string(lines) + " lines, its first one announces " + std::to_string(expected));
  }
}

// A section ends with $End and its name.  In a file that is cut off within the last number Gmsh reads what is left of
// the number.
void checkEnd(const std::filesystem::path& file, std::istream& stream) {
  constexpr std::streamoff longestEnd = 100;
  stream.seekg(0, std::ios::end);
  stream.seekg(-std::min<std::streamoff>(stream.tellg(), longestEnd), std::ios::end);
  std::string end{std::istreambuf_iterator<char>(stream), {}};
  end.erase(end.find_last_not_of(" \t\r\n") + 1);
  const std::string last = end.substr(end.find_last_of('\n') + 1);
  if (!last.starts_with("$End") && !last.starts_with("$END"))
    fail(file, "is cut off, its last line is no end of a section ($End...)");
}

void checkCoverage(const std::filesystem::path& file, const Mesh& mesh) {
  std::vector<bool> grouped(mesh.elementNumbers.size(), false);
  for (const Group& group : mesh.groups)
    for (const int32_t element : group.elements) grouped[static_cast<std::size_t>(element)] = true;
  const auto free = std::count(grouped.begin(), grouped.end(), false);
  if (free == 0) return;
  const auto first = static_cast<std::size_t>(std::find(grouped.begin(), grouped.end(), false) - grouped.begin());
  fail(file, counted(static_cast<std::size_t>(free), "brick") + " of " + std::to_string(grouped.size()) +
                 " in no physical volume, the first is number " + std::to_string(mesh.elementNumbers[first]));
}

// Arrays of counts, coordinates, numbers and corners; of each group its name, dimension and members.
void handOver(const Mesh& mesh, Sink& sink) {
  sink.put(std::vector<int64_t>{mesh.nodes(), mesh.elements()});
  sink.put(mesh.coordinates), sink.put(mesh.nodeNumbers), sink.put(mesh.connectivity), sink.put(mesh.elementNumbers);
  sink.put(std::vector<std::uint64_t>{mesh.groups.size()});
  for (const Group& group : mesh.groups) {
    sink.put(group.name);
    sink.put(std::vector<int>{group.dimension});
    sink.put(group.nodes), sink.put(group.elements), sink.put(group.faces);
  }
}
// Of the library that stands beside the others.
decltype(&sharedanalysis_read_gmsh) gmshReader(const std::filesystem::path& file) {
  void* const library = dlopen("libSharedAnalysisGmsh.so", RTLD_NOW | RTLD_LOCAL);
  void* const reader = library != nullptr ? dlsym(library, "sharedanalysis_read_gmsh") : nullptr;
  if (reader == nullptr) fail(file, std::string("Gmsh's files cannot be read here: ") + dlerror());
  return reinterpret_cast<decltype(&sharedanalysis_read_gmsh)>(reader);
}

// Bricks on the same eight nodes, whatever their order.
void checkTwins(const std::filesystem::path& file, const Mesh& mesh) {
  using Corners = std::array<int32_t, 8>;
  const auto bricks = static_cast<std::size_t>(mesh.elements());
  std::vector<std::pair<Corners, std::size_t>> sorted(bricks);
  for (std::size_t e = 0; e < bricks; ++e) {
    sorted[e].second = e;
    std::copy_n(mesh.connectivity.begin() + static_cast<std::ptrdiff_t>(8 * e), 8, sorted[e].first.begin());
    std::sort(sorted[e].first.begin(), sorted[e].first.end());
  }
  std::sort(sorted.begin(), sorted.end());
  const auto twin =
      std::adjacent_find(sorted.begin(), sorted.end(), [](const auto& a, const auto& b) { return a.first == b.first; });
  if (twin != sorted.end())
    fail(file, "bricks " + std::to_string(mesh.elementNumbers[twin->second]) + " and " +
                   std::to_string(mesh.elementNumbers[(twin + 1)->second]) + " have the same nodes");
}

void checkCorners(const std::filesystem::path& file, const Mesh& mesh) {
  for (std::size_t e = 0; e < mesh.elementNumbers.size(); ++e) {
    const int32_t* nodes = &mesh.connectivity[8 * e];
    BrickCorners corners;
    for (std::size_t c = 0; c < 8; ++c)
      std::copy_n(&mesh.coordinates[3 * static_cast<std::size_t>(nodes[c])], 3, corners[c].begin());
    if (const auto worst = turnedCorner(corners))
      fail(file, "brick " + std::to_string(mesh.elementNumbers[e]) + " is turned over at its node " +
                     std::to_string(mesh.nodeNumbers[static_cast<std::size_t>(nodes[*worst])]));
  }
}

} // namespace

// Gmsh takes a file that does not look like one of its formats for a script and would run it.  A pipe or a device would be
// waited for.
void checkMeshText(const std::filesystem::path& file) {
  std::error_code unknown;
  const std::filesystem::file_status status = std::filesystem::status(file, unknown);
  if (!unknown && std::filesystem::is_other(status)) fail(file, "is no file with a mesh but a pipe or a device");
  errno = 0;
  std::ifstream stream(file, std::ios::binary);
  if (!stream) fail(file, std::string("cannot be opened: ") + std::strerror(errno));
  std::string first;
  if (std::filesystem::is_directory(status) || !(stream >> std::setw(kLongestHead) >> first) ||
      std::find(std::begin(kHeads), std::end(kHeads), first) == std::end(kHeads))
    fail(file, "is neither a Gmsh mesh file (.msh), which begins with $MeshFormat, nor an Exodus II file");
  checkEnd(file, stream);
  checkCounts(file, stream);
}

GmshMesh::GmshMesh(const std::filesystem::path& file) : mesh_(read(file)) {}

HandOver GmshMesh::read(const std::filesystem::path& file) {
  checkMeshText(file);
  return runApart(file, "Gmsh", [&](Sink& sink) {
    Mesh mesh;
    gmshReader(file)(file, mesh);
    checkCoverage(file, mesh);
    checkTwins(file, mesh);
    checkCorners(file, mesh);
    handOver(mesh, sink);
  });
}

MeshSlice GmshMesh::share(int64_t rank, int64_t size) const {
  Source source(mesh_);
  MeshSlice slice;
  std::vector<int64_t> counts;
  std::vector<std::uint64_t> groups;
  std::vector<int32_t> indices;
  const auto takePlaces = [&](std::vector<int64_t>& places, int64_t numbers) {
    source.takeShare(indices, numbers, rank, size);
    places.assign(indices.begin(), indices.end());
  };
  source.take(counts);
  slice.nodes = counts.at(0), slice.elements = counts.at(1);
  slice.firstNode = firstOfShare(slice.nodes, rank, size);
  source.takeShare(slice.coordinates, 3, rank, size);
  source.takeShare(slice.nodeNumbers, 1, rank, size);
  takePlaces(slice.connectivity, 8);
  source.takeShare(slice.elementNumbers, 1, rank, size);
  slice.elementPositions.resize(slice.elementNumbers.size());
  std::iota(slice.elementPositions.begin(), slice.elementPositions.end(), firstOfShare(slice.elements, rank, size));
  source.take(groups);
  for (std::uint64_t k = 0; k < groups.at(0); ++k) {
    std::vector<int> dimension;
    source.take(slice.groupNames.emplace_back()), source.take(dimension);
    slice.groupDimensions.push_back(dimension.at(0));
    MeshSlice::Members& members = slice.groups.emplace_back();
    takePlaces(members.nodes, 1), takePlaces(members.elements, 1), takePlaces(members.faces, 4);
  }
  return slice;
}

} // namespace sharedanalysis::solver
