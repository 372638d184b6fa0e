#include "digest.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>
#include <sstream>

namespace sharedanalysis::solver {
namespace {

constexpr const char* formatName = "sharedanalysis-digest";

uint64_t hashOf(std::span<const double> values) {
  uint64_t hash = 0xcbf29ce484222325U;
  for (const std::byte byte : std::as_bytes(values)) {
    hash ^= static_cast<uint64_t>(byte);
    hash *= 0x100000001b3U;
  }
  return hash;
}

std::string hexadecimal(uint64_t hash) {
  std::array<char, 17> text{};
  std::snprintf(text.data(), text.size(), "%016llx", static_cast<unsigned long long>(hash));
  return text.data();
}

std::string exactly(double value) {
  std::array<char, 40> text{};
  std::snprintf(text.data(), text.size(), "%a", value);
  return text.data();
}

} // namespace

DigestFile::DigestFile(const std::filesystem::path& name, const Mesh& mesh)
    : file_(name), stream_(std::fopen(file_.path().c_str(), "we")) {
  if (!stream_) throw WriteError(file_.path(), std::strerror(errno));
  put(std::string(formatName) + " 1 nodes " + std::to_string(mesh.nodes()) + " bricks " +
      std::to_string(mesh.elements()));
}

void DigestFile::put(const std::string& line) {
  errno = 0;
  const std::string text = line + '\n';
  if (std::fwrite(text.data(), 1, text.size(), stream_.get()) != text.size() || std::fflush(stream_.get()) != 0)
    throw WriteError(file_.path(), std::strerror(errno));
}

void DigestFile::array(const char* name, std::span<const double> values, std::size_t entities) {
  std::string line = std::string(name) + ' ' + hexadecimal(hashOf(values));
  const std::size_t width = entities > 0 ? values.size() / entities : 0, length = chunkLength(entities);
  for (std::size_t first = 0; first < entities; first += length)
    line += ' ' + hexadecimal(hashOf(values.subspan(first * width, std::min(length, entities - first) * width)));
  put(line);
}

void DigestFile::write(const Progress& now, const Fields& fields, const Energies& energies) {
  put("increment " + std::to_string(now.increment) + " time " + exactly(now.time));
  const std::size_t nodes = fields.displacement.size() / 3, bricks = fields.mask.size();
  array("displacement", fields.displacement, nodes);
  array("velocity", fields.velocity, nodes);
  array("reaction", fields.reaction, nodes);
  array("stress", fields.stress, bricks);
  array("strain_energy_density", fields.strainEnergy, bricks);
  array("mask", fields.mask, bricks);
  const std::array<double, 6> sums{energies.kinetic, energies.strain,   energies.hourglass,
                                   energies.viscous, energies.external, now.stableIncrement};
  array("energies", sums, sums.size());
}

void DigestFile::close() {
  if (std::fclose(stream_.release()) != 0) throw WriteError(file_.path(), std::strerror(errno));
  file_.synchronise();
}

Digest readDigest(const std::filesystem::path& file) {
  errno = 0;
  std::ifstream stream(file);
  if (!stream) throw InputError(file.string() + ": cannot be opened: " + std::strerror(errno));
  int number = 0;
  const auto fail = [&](const char* what) {
    throw InputError(file.string() + ":" + std::to_string(number) + ": " + what);
  };
  Digest digest;
  for (std::string line; std::getline(stream, line);) {
    ++number;
    std::istringstream words(line);
    std::string first, word;
    words >> first;
    if (number == 1) {
      int version = 0;
      std::string nodes, bricks;
      if (first != formatName || !(words >> version >> nodes >> digest.nodes >> bricks >> digest.bricks) ||
          version != 1)
        fail("no digest of version 1");
    } else if (first == "increment") {
      DigestOutput& output = digest.outputs.emplace_back();
      if (!(words >> output.increment >> word >> output.time) || word != "time")
        fail("an increment without number or time");
    } else {
      if (digest.outputs.empty()) fail("an array before the first increment");
      DigestArray& array = digest.outputs.back().arrays.emplace_back();
      array.name = first;
      if (!(words >> array.hash)) fail("an array without hash");
      while (words >> word) array.chunks.push_back(word);
    }
  }
  if (number == 0) fail("the file is empty");
  return digest;
}

} // namespace sharedanalysis::solver
