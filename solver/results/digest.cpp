#include "solver/results/digest.h"

#include "solver/model/text.h"
#include "solver/results/hash.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>
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

ArrayDigest digestOf(const FieldName& name, std::span<const double> values) {
  ArrayDigest digest;
  digest.name = &name;
  const std::size_t components = static_cast<std::size_t>(name.count), entities = values.size() / components;
  const std::size_t length = static_cast<std::size_t>(chunkLength(static_cast<int64_t>(entities)));
  for (std::size_t first = 0; first < entities; first += length)
    digest.chunks.push_back(
        hashOf(values.subspan(components * first, components * std::min(length, entities - first))));
  digest.hash = hashOf(std::span<const uint64_t>(digest.chunks));
  return digest;
}

uint64_t meshHash(const Mesh& mesh) {
  Hash hash;
  hash.add(mesh);
  return hash.value();
}

// "nodes 7381 1-462 463-924 ...": how many there are, and the first and last number of each chunk.
std::string chunkLine(Entity entity, const std::vector<int64_t>& numbers) {
  std::string line(entityNames[static_cast<std::size_t>(entity)]);
  line += "s " + std::to_string(numbers.size());
  const std::size_t length = static_cast<std::size_t>(chunkLength(static_cast<int64_t>(numbers.size())));
  for (std::size_t first = 0; first < numbers.size(); first += length)
    line += ' ' + std::to_string(numbers[first]) + '-' +
            std::to_string(numbers[std::min(first + length, numbers.size()) - 1]);
  return line;
}

// ---- reading

// The lines of a digest, taken word by word.
class Lines {
public:
  explicit Lines(const std::filesystem::path& file) : file_(file), stream_(file, std::ios::binary) {
    if (!stream_) throw InputError(file.string() + ": cannot be opened: " + std::strerror(errno));
  }

  [[noreturn]] void fail(const std::string& what) const {
    throw InputError(file_.string() + ":" + std::to_string(line_) + ": " + what);
  }

  // False at the end of the file.
  bool next() {
    if (!std::getline(stream_, text_)) {
      if (stream_.bad() || !stream_.eof()) fail("cannot be read");
      return false;
    }
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
  std::ifstream stream_;
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

void DigestFile::visit(Archive& archive) {
  auto& [file, outputs] = *this;
  file.visit(archive);
  archive(outputs);
}

DigestFile::DigestFile(const std::filesystem::path& name, const std::string& job, const Mesh& mesh, Start start)
    : file_(name, start) {
  if (start == Start::GoOn) return;
  file_.put(heading);
  file_.put("job " + job);
  file_.put("mesh " + hexadecimal(meshHash(mesh)));
  file_.put(chunkLine(Entity::Node, mesh.nodeNumbers));
  file_.put(chunkLine(Entity::Element, mesh.elementNumbers));
}

void DigestFile::write(const Progress& progress, const Fields& fields, const Energies& energies) {
  const auto globals = energies.values();
  const std::array<std::span<const double>, fieldNames.size()> values{
      globals, fields.displacement, fields.velocity, fields.reaction, fields.stress, fields.strainEnergy, fields.mask};
  ++outputs_;
  std::string text = "increment " + std::to_string(progress.increment) + " time " + exactNumber(progress.time);
  for (std::size_t k = 0; k < fieldNames.size(); ++k) {
    const FieldName& name = fieldNames[k];
    const ArrayDigest array = digestOf(name, values[k]);
    text += '\n';
    text += entityNames[static_cast<std::size_t>(name.entity)];
    text += ' ';
    text += name.array;
    text += ' ' + hexadecimal(array.hash);
    for (const uint64_t chunk : array.chunks) text += ' ' + hexadecimal(chunk);
  }
  file_.put(text);
}

void DigestFile::close() {
  file_.put("end " + std::to_string(outputs_));
  file_.close();
}

} // namespace sharedanalysis::solver
