#include "solver/results/digest.h"

#include "solver/input/case_table.h"
#include "solver/model/hash.h"
#include "solver/model/text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <map>
#include <optional>
#include <sstream>

namespace sharedanalysis::solver {
namespace {

constexpr const char* heading = "sharedanalysis-digest 1";
constexpr std::array<std::string_view, 3> entityNames{"model", "node", "element"};

std::string hexadecimal(uint64_t value) {
  std::array<char, 16> digits;
  digits.fill('0');
  std::array<char, 16> text;
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value, 16).ptr;
  std::copy_backward(text.data(), end, digits.end());
  return {digits.data(), digits.size()};
}

// The values that `give` puts for each index of the mesh, into the chunk's hash on the rank that takes it.
template <class T, class Give, class Take>
void stream(const Listing& listing, int components, int64_t chunk, const Give& give, const Take& take) {
  listing.order.stream<T>(
      components,
      [&](std::size_t first, std::size_t end, T* values) {
        for (std::size_t k = first; k < end; ++k, values += components) give(listing.own[k], values);
      },
      take, chunk);
}

// Words that ranks know of some places of a row, the whole row on the root.
std::vector<uint64_t> rowOf(const std::vector<std::array<uint64_t, 2>>& known, const Ranks& ranks) {
  std::vector<std::array<uint64_t, 2>> all = ranks.gathered(known); // place, word
  std::sort(all.begin(), all.end());
  std::vector<uint64_t> row;
  for (const auto& [place, word] : all) row.push_back(word);
  return row;
}

// ---- reading

// The lines of a digest, taken word by word.
class Lines {
public:
  explicit Lines(const std::filesystem::path& file) : file_(file), stream_(readText(file, "a digest")) {}

  [[noreturn]] void fail(const std::string& what) const {
    throw InputError(file_.string() + ":" + std::to_string(line_) + ": " + what);
  }

  // False at the end of the file.
  bool next() {
    if (!std::getline(stream_, text_)) return false;
    ++line_;
    if (stream_.eof()) fail("the line is cut off");
    words_.clear();
    std::istringstream words(text_);
    for (std::string word; words >> word;) words_.push_back(word);
    word_ = 0;
    return true;
  }
  void expectNext() {
    if (!next()) fail("the file is cut off here");
  }

  const std::string& text() const { return text_; }
  // The rest of the line after its first word.
  std::string rest() const { return text_.substr(std::min(text_.find(' ') + 1, text_.size())); }

  bool atEnd() const { return word_ == words_.size(); }
  bool nextIs(std::string_view word) const { return !atEnd() && words_[word_] == word; }

  std::string word() {
    if (atEnd()) fail("the line is too short");
    return words_[word_++];
  }
  void expect(std::string_view expected) {
    if (word() != expected) fail("\"" + std::string(expected) + "\" expected");
  }
  template <class Number>
  Number number(const std::string& text, int base = 10) const {
    Number value{};
    const char* const last = text.data() + text.size();
    std::from_chars_result result{};
    if constexpr (std::is_floating_point_v<Number>)
      result = std::from_chars(text.data(), last, value);
    else
      result = std::from_chars(text.data(), last, value, base);
    if (result.ec != std::errc() || result.ptr != last) fail("\"" + text + "\" is no number of the kind expected");
    return value;
  }
  template <class Number>
  Number number() {
    return number<Number>(word());
  }
  uint64_t hash() {
    const std::string text = word();
    if (text.size() != 16) fail("\"" + text + "\" is no hash");
    return number<uint64_t>(text, 16);
  }
  void expectEnd() const {
    if (!atEnd()) fail("the line is too long");
  }

private:
  std::filesystem::path file_;
  std::istringstream stream_;
  std::string text_;
  std::vector<std::string> words_;
  std::size_t word_ = 0;
  int64_t line_ = 0;
};

std::vector<Chunk> readChunks(Lines& lines, Entity entity, int64_t& count) {
  lines.expectNext();
  lines.expect(std::string(entityNames[static_cast<std::size_t>(entity)]) + "s");
  count = lines.number<int64_t>();
  if (count < 1) lines.fail("a mesh has nodes and elements");
  std::vector<Chunk> chunks;
  while (!lines.atEnd()) {
    const std::string range = lines.word();
    const std::size_t dash = range.find('-');
    if (dash == std::string::npos) lines.fail("\"" + range + "\" is no range of numbers");
    chunks.push_back({lines.number<int64_t>(range.substr(0, dash)), lines.number<int64_t>(range.substr(dash + 1))});
  }
  const int64_t length = chunkLength(count);
  if (static_cast<int64_t>(chunks.size()) != (count + length - 1) / length)
    lines.fail("the ranges do not belong to " + std::to_string(count) + " entities");
  return chunks;
}

ArrayDigest readArray(Lines& lines, const Digest& digest, const FieldName& name) {
  lines.expectNext();
  lines.expect(entityNames[static_cast<std::size_t>(name.entity)]);
  lines.expect(name.array);
  ArrayDigest array;
  array.name = &name;
  array.hash = lines.hash();
  while (!lines.atEnd()) array.chunks.push_back(lines.hash());
  const std::size_t expected = name.entity == Entity::Model ? 1 : digest.chunksOf(name.entity).size();
  if (array.chunks.size() != expected) lines.fail(std::to_string(expected) + " hashes of chunks expected");
  if (hashOf(std::span<const uint64_t>(array.chunks)) != array.hash)
    lines.fail("the hash of the array does not belong to those of its chunks");
  return array;
}

} // namespace

uint64_t hashOf(std::span<const double> values) {
  Hash hash;
  for (const double value : values) hash.add(value);
  return hash.value();
}

uint64_t hashOf(std::span<const uint64_t> words) {
  Hash hash;
  for (const uint64_t word : words) hash.add(word);
  return hash.value();
}

int64_t chunkLength(int64_t count) {
  constexpr int64_t shortest = 64, most = 16;
  return std::max(shortest, (count + most - 1) / most);
}

Digest readDigest(const std::filesystem::path& file) {
  if (std::filesystem::is_directory(file)) throw InputError(file.string() + ": is a directory");
  Lines lines(file);
  Digest digest;
  if (!lines.next() || lines.text() != heading)
    lines.fail("this is no digest: \"" + std::string(heading) + "\" expected");
  lines.expectNext();
  lines.expect("job");
  digest.job = lines.rest();
  lines.expectNext();
  lines.expect("mesh");
  digest.mesh = lines.hash();
  lines.expectEnd();
  digest.nodeChunks = readChunks(lines, Entity::Node, digest.nodes);
  digest.elementChunks = readChunks(lines, Entity::Element, digest.elements);
  for (lines.expectNext(); !lines.nextIs("end"); lines.expectNext()) {
    OutputDigest output;
    lines.expect("increment");
    output.increment = lines.number<int64_t>();
    lines.expect("time");
    output.time = lines.number<double>();
    lines.expectEnd();
    for (const FieldName& name : fieldNames) output.arrays.push_back(readArray(lines, digest, name));
    digest.outputs.push_back(std::move(output));
  }
  lines.expect("end");
  if (lines.number<std::size_t>() != digest.outputs.size()) lines.fail("outputs are missing");
  lines.expectEnd();
  if (lines.next()) lines.fail("the digest has ended above");
  return digest;
}

uint64_t meshHash(const Mesh& mesh, const Ranks& ranks) {
  Hash hash;
  const auto addWords = [&](const Listing& listing, int components, const auto& wordOf) {
    stream<int64_t>(
        listing, components, 0,
        [&](int32_t index, int64_t* words) {
          for (int c = 0; c < components; ++c) words[c] = wordOf(index, c);
        },
        [&](int64_t, std::span<const int64_t> words) {
          for (const int64_t word : words) hash.add(static_cast<uint64_t>(word));
        });
  };
  const auto addSize = [&](const Listing& listing, uint64_t components) {
    hash.add(components * static_cast<uint64_t>(listing.order.whole()));
  };
  Listing nodes = listingOf(mesh, Kind::Node, ranks), bricks = listingOf(mesh, Kind::Brick, ranks);
  addSize(nodes, 1);
  addWords(nodes, 1, [&](int32_t n, int) { return mesh.nodeNumbers[static_cast<std::size_t>(n)]; });
  addSize(bricks, 1);
  addWords(bricks, 1, [&](int32_t e, int) { return mesh.elementNumbers[static_cast<std::size_t>(e)]; });
  addSize(nodes, 3);
  addWords(nodes, 3, [&](int32_t n, int c) {
    return std::bit_cast<int64_t>(mesh.coordinates[3 * static_cast<std::size_t>(n) + static_cast<std::size_t>(c)]);
  });
  addSize(bricks, 8);
  addWords(bricks, 8, [&](int32_t e, int c) {
    return mesh.nodePosition(mesh.connectivity[8 * static_cast<std::size_t>(e) + static_cast<std::size_t>(c)]);
  });
  nodes = bricks = {{}, Ordered(0)}; // they take 12 bytes of every entity
  for (const Group& group : mesh.groups) {
    hash.add(group.name);
    const Listing ofNodes = listingsOf(mesh, Kind::Node, {&group.nodes}, ranks)[0];
    addSize(ofNodes, 1);
    addWords(ofNodes, 1, [&](int32_t n, int) { return mesh.nodePosition(n); });
    const Listing ofBricks = listingsOf(mesh, Kind::Brick, {&group.elements}, ranks)[0];
    addSize(ofBricks, 1);
    addWords(ofBricks, 1, [&](int32_t e, int) { return mesh.elementPosition(e); });
  }
  return hash.value();
}

uint64_t inputHashOf(const Mesh& mesh, const Ranks& ranks) {
  uint64_t sum = 0;
  const auto entity = [&](uint64_t kind, int64_t place) {
    Hash hash;
    hash.add(kind);
    hash.add(static_cast<uint64_t>(place));
    return hash;
  };
  const auto speaks = [&](bool owns) { return mesh.part ? owns : ranks.isRoot(); };
  for (int32_t n = 0; n < mesh.nodes(); ++n) {
    if (!speaks(mesh.ownsNode(n))) continue;
    Hash hash = entity(0, mesh.nodePosition(n));
    hash.add(static_cast<uint64_t>(mesh.nodeNumbers[static_cast<std::size_t>(n)]));
    for (std::size_t c = 0; c < 3; ++c) hash.add(mesh.coordinates[3 * static_cast<std::size_t>(n) + c]);
    sum += hash.value();
  }
  for (int32_t e = 0; e < mesh.elements(); ++e) {
    if (!speaks(mesh.ownsElement(e))) continue;
    Hash hash = entity(1, mesh.elementPosition(e));
    hash.add(static_cast<uint64_t>(mesh.elementNumbers[static_cast<std::size_t>(e)]));
    for (std::size_t c = 0; c < 8; ++c)
      hash.add(static_cast<uint64_t>(mesh.nodePosition(mesh.connectivity[8 * static_cast<std::size_t>(e) + c])));
    sum += hash.value();
  }
  for (std::size_t g = 0; g < mesh.groups.size(); ++g) {
    const Group& group = mesh.groups[g];
    const uint64_t kind = 2 + 3 * static_cast<uint64_t>(g);
    for (const int32_t n : group.nodes)
      if (speaks(mesh.ownsNode(n))) sum += entity(kind, mesh.nodePosition(n)).value();
    for (const int32_t e : group.elements)
      if (speaks(mesh.ownsElement(e))) sum += entity(kind + 1, mesh.elementPosition(e)).value();
    // the owner of a corner has its faces, perhaps without their other corners
    for (std::size_t f = 0; f < group.faces.size(); ++f) {
      const int32_t corner = group.faces[f];
      if (corner < 0 || !speaks(mesh.ownsNode(corner))) continue;
      Hash hash = entity(kind + 2, mesh.nodePosition(corner));
      hash.add(uint64_t{f % 4});
      sum += hash.value();
    }
  }
  Hash hash;
  hash.add(static_cast<uint64_t>(ranks.sum(static_cast<int64_t>(sum))));
  hash.add(static_cast<uint64_t>(mesh.wholeNodes()));
  hash.add(static_cast<uint64_t>(mesh.wholeElements()));
  for (const Group& group : mesh.groups) hash.add(group.name);
  return hash.value();
}

void DigestFile::visit(Archive& archive) {
  if (!file_) return;
  file_->visit(archive);
  archive(outputs_);
}

DigestFile::DigestFile(const std::filesystem::path& name, const std::string& job, const Mesh& mesh, const Ranks& ranks,
                       Start start)
    : name_(name), mesh_(mesh), ranks_(ranks) {
  if (ranks.isRoot()) file_.emplace(name, start);
  if (start == Start::GoOn) return;
  const std::string lines[] = {std::string(heading), "job " + job, "mesh " + hexadecimal(meshHash(mesh, ranks)),
                               chunkLine(Entity::Node, mesh.nodeNumbers),
                               chunkLine(Entity::Element, mesh.elementNumbers)};
  for (const std::string& line : lines)
    if (file_) file_->put(line);
}

// "nodes 7381 1-462 463-924 ...": how many there are, and the first and last number of each chunk; on the root.
std::string DigestFile::chunkLine(Entity entity, const std::vector<int64_t>& numbers) const {
  const Listing all = listing(entity);
  const int64_t whole = all.order.whole(), length = chunkLength(whole);
  std::vector<std::array<uint64_t, 2>> ends; // of chunks
  stream<int64_t>(
      all, 1, length, [&](int32_t index, int64_t* number) { *number = numbers[static_cast<std::size_t>(index)]; },
      [&](int64_t first, std::span<const int64_t> some) {
        const int64_t chunk = first / length, end = first + static_cast<int64_t>(some.size());
        const auto add = [&](int64_t place, int64_t number) {
          ends.push_back({static_cast<uint64_t>(place), static_cast<uint64_t>(number)});
        };
        if (first == chunk * length) add(2 * chunk, some.front());
        if (end == std::min(whole, (chunk + 1) * length)) add(2 * chunk + 1, some.back());
      });
  const std::vector<uint64_t> row = rowOf(ends, ranks_);
  std::string line(entityNames[static_cast<std::size_t>(entity)]);
  line += "s " + std::to_string(whole);
  for (std::size_t k = 0; k < row.size(); k += 2)
    line += ' ' + std::to_string(row[k]) + '-' + std::to_string(row[k + 1]);
  return line;
}

// The hashes of the chunks that this rank takes, with their places.
std::vector<std::array<uint64_t, 2>> DigestFile::chunksOf(const FieldName& name, std::span<const double> values,
                                                          const Listing& all) const {
  const int64_t length = chunkLength(all.order.whole());
  const std::size_t components = static_cast<std::size_t>(name.count);
  std::map<uint64_t, Hash> hashes;
  stream<double>(
      all, name.count, length,
      [&](int32_t index, double* some) {
        std::copy_n(&values[components * static_cast<std::size_t>(index)], components, some);
      },
      [&](int64_t first, std::span<const double> some) {
        Hash& hash = hashes[static_cast<uint64_t>(first / length)];
        for (const double value : some) hash.add(value);
      });
  std::vector<std::array<uint64_t, 2>> chunks;
  for (const auto& [chunk, hash] : hashes) chunks.push_back({chunk, hash.value()});
  return chunks;
}

void DigestFile::write(const Progress& progress, const FieldSource& fields, const Energies& energies) {
  const auto globals = energies.values();
  using Values = std::span<const double>;
  struct Source { // as fieldNames has them
    unsigned choice;
    Values Fields::*values;
  };
  static constexpr std::array<Source, fieldNames.size()> sources{{{0, nullptr},
                                                                  {kDisplacement, &Fields::displacement},
                                                                  {kVelocity, &Fields::velocity},
                                                                  {kReaction, &Fields::reaction},
                                                                  {kStress, &Fields::stress},
                                                                  {kStrainEnergy, &Fields::strainEnergy},
                                                                  {kMask, &Fields::mask}}};
  const auto chunksAt = [&](std::size_t k) {
    if (sources[k].choice == 0) return std::vector<uint64_t>{hashOf(globals)};
    const Values values = fields(sources[k].choice).*sources[k].values;
    return rowOf(chunksOf(fieldNames[k], values, listing(fieldNames[k].entity)), ranks_);
  };
  ++outputs_;
  std::string text = "increment " + std::to_string(progress.increment) + " time " + exactNumber(progress.time);
  for (std::size_t k = 0; k < fieldNames.size(); ++k) {
    const FieldName& name = fieldNames[k];
    const std::vector<uint64_t> chunks = chunksAt(k);
    text += '\n';
    text += entityNames[static_cast<std::size_t>(name.entity)];
    text += ' ';
    text += name.array;
    text += ' ' + hexadecimal(hashOf(std::span<const uint64_t>(chunks)));
    for (const uint64_t chunk : chunks) text += ' ' + hexadecimal(chunk);
  }
  if (file_) file_->put(text);
}

void DigestFile::close() {
  if (!file_) return;
  file_->put("end " + std::to_string(outputs_));
  file_->close();
}

void DigestFile::synchronise() const {
  if (file_) file_->synchronise();
}

void DigestFile::complete() const {
  if (file_) file_->complete();
}

} // namespace sharedanalysis::solver
