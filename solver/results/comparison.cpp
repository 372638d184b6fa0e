#include "solver/results/comparison.h"

#include "solver/input/apart.h"
#include "solver/input/netcdf_size.h"
#include "solver/model/text.h"
#include "solver/results/digest.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <exodusII.h>
#include <numeric>
#include <optional>

namespace sharedanalysis::solver {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view digestExtension = ".digest", fieldsExtension = ".exo", partialExtension = ".partial";

// With its bits, which distinguish the two zeros and NaNs.
std::string withBits(double value) {
  std::array<char, 16> text;
  const auto end = std::to_chars(text.data(), text.data() + text.size(), std::bit_cast<uint64_t>(value), 16).ptr;
  return exactNumber(value) + " (" + std::string(text.data(), end) + ")";
}

fs::path withoutPartial(const fs::path& file) {
  return file.extension() == partialExtension ? file.parent_path() / file.stem() : file;
}

bool isDigest(const fs::path& file) { return withoutPartial(file).extension() == digestExtension; }

// The digest itself, or the only one of a directory.
fs::path findDigest(const fs::path& place) {
  std::error_code error;
  if (!fs::exists(place, error)) throw InputError(place.string() + ": there is no such file or directory");
  if (!fs::is_directory(place, error)) return place;
  std::vector<fs::path> found;
  for (fs::directory_iterator entry(place, error), end; !error && entry != end; entry.increment(error))
    if (isDigest(entry->path())) found.push_back(entry->path());
  if (error) throw InputError(place.string() + ": cannot be read: " + error.message());
  if (found.empty()) throw InputError(place.string() + ": has no digest; runs write one with --digest");
  if (found.size() > 1)
    throw InputError(place.string() + ": has " + std::to_string(found.size()) + " digests, one of them must be named");
  return found.front();
}

// The file of fields of the same run, or an empty path.
fs::path fieldsBeside(const fs::path& digest) {
  fs::path fields = withoutPartial(digest).replace_extension(fieldsExtension);
  if (fs::exists(fields)) return fields;
  fields += partialExtension;
  return fs::exists(fields) ? fields : fs::path();
}

// Finds in a file of fields the value that differs by its digest.
class FieldReader {
public:
  explicit FieldReader(const fs::path& file) {
    if (file.empty()) return;
    ex_opts(0); // errors come back as codes, nothing is printed
    int memoryWord = sizeof(double), fileWord = 0;
    float version = 0;
    id_ = ex_open(file.c_str(), EX_READ | EX_ALL_INT64_API, &memoryWord, &fileWord, &version);
    // values of single precision would have other bits, those behind the end of a file that was cut off be 0
    if (id_ >= 0 && (fileWord != sizeof(double) || !isWholeNetcdf(file))) close();
  }
  ~FieldReader() { close(); }
  FieldReader(const FieldReader&) = delete;
  FieldReader& operator=(const FieldReader&) = delete;

  // Component by component, entities in the order of the mesh; empty when the file does not have it at that time.
  std::vector<std::vector<double>> read(std::size_t output, double time, const FieldName& name) const {
    const int step = static_cast<int>(output) + 1;
    if (id_ < 0 || ex_inquire_int(id_, EX_INQ_TIME) < step) return {};
    double written = 0;
    if (ex_get_time(id_, step, &written) < 0 || written != time) return {};
    std::vector<std::vector<double>> components;
    for (int c = 0; c < name.count; ++c) {
      const std::string variable(name.components[static_cast<std::size_t>(c)]);
      components.push_back(read(step, name.entity, variable));
      if (components.back().empty()) return {};
    }
    return components;
  }

  std::vector<int64_t> numbers(Entity entity) const {
    std::vector<int64_t> sorted = inFile(entity);
    std::sort(sorted.begin(), sorted.end());
    return sorted;
  }

private:
  void close() {
    if (id_ >= 0) ex_close(id_);
    id_ = -1;
  }

  static ex_entity_type typeOf(Entity entity) {
    return entity == Entity::Model ? EX_GLOBAL : entity == Entity::Node ? EX_NODAL : EX_ELEM_BLOCK;
  }

  // Mesh numbers in the order of the file: elements stand there block by block.
  std::vector<int64_t> inFile(Entity entity) const {
    const bool nodes = entity == Entity::Node;
    std::vector<int64_t> numbers(
        static_cast<std::size_t>(std::max<int64_t>(ex_inquire_int(id_, nodes ? EX_INQ_NODES : EX_INQ_ELEM), 0)));
    ex_get_id_map(id_, nodes ? EX_NODE_MAP : EX_ELEM_MAP, numbers.data());
    return numbers;
  }

  int variableNumber(ex_entity_type type, const std::string& wanted) const {
    int count = 0;
    ex_get_variable_param(id_, type, &count);
    std::array<char, MAX_STR_LENGTH * 8 + 1> name{};
    for (int k = 1; k <= count; ++k)
      if (ex_get_variable_name(id_, type, k, name.data()) >= 0 && wanted == name.data()) return k;
    return 0;
  }

  std::vector<double> read(int step, Entity entity, const std::string& variable) const {
    const ex_entity_type type = typeOf(entity);
    const int number = variableNumber(type, variable);
    if (number == 0) return {};
    if (entity == Entity::Model) return readGlobal(step, number);
    std::vector<double> values;
    if (entity == Entity::Node) {
      values.resize(static_cast<std::size_t>(ex_inquire_int(id_, EX_INQ_NODES)));
      if (ex_get_var(id_, step, type, number, 1, static_cast<int64_t>(values.size()), values.data()) < 0) return {};
      return inMeshOrder(values, entity);
    }
    std::vector<int64_t> blocks(static_cast<std::size_t>(ex_inquire_int(id_, EX_INQ_ELEM_BLK)));
    ex_get_ids(id_, EX_ELEM_BLOCK, blocks.data());
    for (const int64_t block : blocks) {
      ex_block description{};
      description.id = block;
      description.type = EX_ELEM_BLOCK;
      if (ex_get_block_param(id_, &description) < 0) return {};
      std::vector<double> part(static_cast<std::size_t>(description.num_entry));
      if (ex_get_var(id_, step, type, number, block, description.num_entry, part.data()) < 0) return {};
      values.insert(values.end(), part.begin(), part.end());
    }
    return inMeshOrder(values, entity);
  }

  std::vector<double> readGlobal(int step, int number) const {
    int count = 0;
    ex_get_variable_param(id_, EX_GLOBAL, &count);
    std::vector<double> all(static_cast<std::size_t>(count));
    if (ex_get_var(id_, step, EX_GLOBAL, 1, 1, count, all.data()) < 0) return {};
    return {all[static_cast<std::size_t>(number) - 1]};
  }

  // Meshes are sorted by entity number.
  std::vector<double> inMeshOrder(const std::vector<double>& values, Entity entity) const {
    const std::vector<int64_t> numbers = inFile(entity);
    if (numbers.size() != values.size()) return {};
    std::vector<std::size_t> order(numbers.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return numbers[a] < numbers[b]; });
    std::vector<double> sorted;
    sorted.reserve(order.size());
    for (const std::size_t k : order) sorted.push_back(values[k]);
    return sorted;
  }

  int id_ = -1;
};

struct Run {
  fs::path digestFile;
  Digest digest;

  explicit Run(const fs::path& place) : digestFile(findDigest(place)), digest(readDigest(digestFile)) {}
  std::string name() const { return digestFile.string(); }
};

std::string entityWord(Entity entity) { return entity == Entity::Node ? "node" : "element"; }

std::string placeOf(std::size_t output, const OutputDigest& digest) {
  return "output " + std::to_string(output + 1) + ", increment " + std::to_string(digest.increment) + ", time " +
         exactNumber(digest.time) + " s";
}

// The first value of an array that differs, from the fields of both runs: "displacement_z of node 17 is 1 (...) in a and
// 2 (...) in b".  Empty when they do not show it.
std::string findValue(const Run& a, const Run& b, std::size_t output, const FieldName& name) {
  const FieldReader readers[2] = {FieldReader(fieldsBeside(a.digestFile)), FieldReader(fieldsBeside(b.digestFile))};
  const auto mine = readers[0].read(output, a.digest.outputs[output].time, name);
  const auto theirs = readers[1].read(output, b.digest.outputs[output].time, name);
  if (mine.empty() || theirs.empty() || mine[0].size() != theirs[0].size()) return {};
  for (std::size_t entity = 0; entity < mine[0].size(); ++entity)
    for (std::size_t c = 0; c < mine.size(); ++c) {
      const double one = mine[c][entity], other = theirs[c][entity];
      if (std::bit_cast<uint64_t>(one) == std::bit_cast<uint64_t>(other)) continue;
      std::string text(name.components[c]);
      if (name.entity != Entity::Model)
        text += " of " + entityWord(name.entity) + " " + std::to_string(readers[0].numbers(name.entity)[entity]);
      return text + " is " + withBits(one) + " in " + a.name() + " and " + withBits(other) + " in " + b.name();
    }
  return {};
}

// Fields may be damaged in ways that their library does not bear: they are read by a process of its own.
std::optional<std::string> firstValue(const Run& a, const Run& b, std::size_t output, const FieldName& name) {
  const fs::path mine = fieldsBeside(a.digestFile), theirs = fieldsBeside(b.digestFile);
  if (mine.empty() || theirs.empty()) return std::nullopt;
  try {
    const HandOver found = runApart(mine, "Exodus II", [&](Sink& sink) { sink.put(findValue(a, b, output, name)); });
    std::string text;
    Source(found).take(text);
    return text.empty() ? std::nullopt : std::optional(text);
  } catch (const InputError&) {
    return std::nullopt;
  }
}

// Says so where the fields stand in files of ranks.
std::string ofRanks(const Run& a, const Run& b) {
  for (const Run* run : {&a, &b}) {
    const std::vector<fs::path> files =
        filesOfRanks(withoutPartial(run->digestFile).replace_extension(fieldsExtension));
    if (!files.empty() && fieldsBeside(run->digestFile).empty())
      return "; sharedanalysis-join makes one file of " + files.front().string() + " and the others";
  }
  return {};
}

// Without fields: the first chunk whose hashes differ.
std::string firstChunk(const Run& a, const Run& b, const ArrayDigest& one, const ArrayDigest& other) {
  const Entity entity = one.name->entity;
  if (entity == Entity::Model) return "one of its values differs";
  const auto at = std::mismatch(one.chunks.begin(), one.chunks.end(), other.chunks.begin()).first - one.chunks.begin();
  const Chunk& chunk = a.digest.chunksOf(entity)[static_cast<std::size_t>(at)];
  return "a value of " + entityWord(entity) + "s " + std::to_string(chunk.first) + " to " + std::to_string(chunk.last) +
         " differs; the fields that would show it are not beside both digests or cannot be read" + ofRanks(a, b);
}

std::vector<std::string> differingArrays(const OutputDigest& a, const OutputDigest& b) {
  std::vector<std::string> names;
  for (std::size_t k = 0; k < a.arrays.size(); ++k)
    if (a.arrays[k].hash != b.arrays[k].hash) names.emplace_back(a.arrays[k].name->array);
  return names;
}

Comparison differentArrays(const Run& a, const Run& b, std::size_t output) {
  const OutputDigest &one = a.digest.outputs[output], &other = b.digest.outputs[output];
  const std::vector<std::string> names = differingArrays(one, other);
  std::size_t first = 0;
  while (one.arrays[first].hash == other.arrays[first].hash) ++first;
  // sums over the model follow from fields: these tell more
  if (one.arrays[first].name->entity == Entity::Model && names.size() > 1) do
      ++first;
    while (one.arrays[first].hash == other.arrays[first].hash);
  const FieldName& name = *one.arrays[first].name;
  const std::string where =
      firstValue(a, b, output, name).value_or(firstChunk(a, b, one.arrays[first], other.arrays[first]));
  return {Verdict::Different, "different: " + placeOf(output, one) + ", array " + std::string(name.array) + "\n" +
                                  where + "\n" + "arrays that differ in this output: " + joined(names, ", ")};
}

std::optional<Comparison> compareModels(const Run& a, const Run& b) {
  const Digest &one = a.digest, &other = b.digest;
  const auto size = [](const Digest& d) {
    return std::to_string(d.nodes) + " nodes and " + std::to_string(d.elements) + " elements";
  };
  if (one.nodes != other.nodes || one.elements != other.elements)
    return Comparison{Verdict::Different, "different: the mesh has " + size(one) + " in " + a.name() + ", " +
                                              size(other) + " in " + b.name()};
  if (one.mesh != other.mesh)
    return Comparison{Verdict::Different,
                      "different: the meshes have other numbers, coordinates, connectivity or groups"};
  return std::nullopt;
}

Comparison compare(const Run& a, const Run& b) {
  if (const auto difference = compareModels(a, b)) return *difference;
  const auto &mine = a.digest.outputs, &theirs = b.digest.outputs;
  const std::size_t common = std::min(mine.size(), theirs.size());
  for (std::size_t k = 0; k < common; ++k) {
    const bool sameTime = std::bit_cast<uint64_t>(mine[k].time) == std::bit_cast<uint64_t>(theirs[k].time);
    if (mine[k].increment != theirs[k].increment || !sameTime)
      return {Verdict::Different, "different: " + placeOf(k, mine[k]) + " in " + a.name() + "\n" +
                                      placeOf(k, theirs[k]) + " in " + b.name()};
    if (!differingArrays(mine[k], theirs[k]).empty()) return differentArrays(a, b, k);
  }
  if (mine.size() != theirs.size()) {
    const bool mineIsLonger = mine.size() > common;
    return {Verdict::Incomplete, "incomplete: " + placeOf(common, (mineIsLonger ? mine : theirs)[common]) +
                                     " is missing in " + (mineIsLonger ? b : a).name() + "; the " +
                                     counted(common, "output") + " before are the same"};
  }
  if (mine.empty()) return {Verdict::Incomplete, "incomplete: there is no output to compare"};
  std::vector<std::string> names;
  for (const FieldName& name : fieldNames) names.emplace_back(name.array);
  return {Verdict::Same,
          "the same: " + counted(common, "output") + " from increment " + std::to_string(mine.front().increment) +
              ", time " + exactNumber(mine.front().time) + " s, to increment " + std::to_string(mine.back().increment) +
              ", time " + exactNumber(mine.back().time) + " s\neach with " + joined(names, ", ") + " of " +
              std::to_string(a.digest.nodes) + " nodes and " + std::to_string(a.digest.elements) + " elements"};
}

} // namespace

Comparison compareRuns(const fs::path& a, const fs::path& b) {
  try {
    const Run first(a), second(b);
    return compare(first, second);
  } catch (const InputError& error) {
    return {Verdict::Incomplete, std::string("incomplete: ") + error.what()};
  } catch (const fs::filesystem_error& error) {
    return {Verdict::Incomplete, std::string("incomplete: ") + error.what()};
  }
}

} // namespace sharedanalysis::solver
