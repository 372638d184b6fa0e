// sharedanalysis-compare: whether two runs have the same results, and if not, where they first differ.
#include "digest.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <exodusII.h>
#include <optional>

namespace {

using namespace sharedanalysis::solver;

enum ExitCode { exitSame = 0, exitDifferent = 1, exitUnreadable = 2 };

// A digest, given itself or as the only one of a directory.
std::filesystem::path digestOf(const std::filesystem::path& given) {
  if (!std::filesystem::is_directory(given)) return given;
  std::vector<std::filesystem::path> found;
  for (const auto& entry : std::filesystem::directory_iterator(given))
    if (entry.path().extension() == ".digest") found.push_back(entry.path());
  if (found.size() == 1) return found.front();
  throw InputError(given.string() + ": has " + std::to_string(found.size()) +
                   " digests, expected one; runs with --digest leave it");
}

// The field file beside a digest, to name an entity and its values; nothing when there is none.
class FieldFile {
public:
  explicit FieldFile(std::filesystem::path digest) {
    int memoryWord = sizeof(double), fileWord = 0;
    float version = 0;
    ex_opts(0);
    id_ = ex_open(digest.replace_extension(".exo").c_str(), EX_READ, &memoryWord, &fileWord, &version);
    if (id_ < 0) return;
    ex_init_params model{};
    ex_get_init_ext(id_, &model);
    nodes_.resize(static_cast<std::size_t>(model.num_nodes));
    bricks_.resize(static_cast<std::size_t>(model.num_elem));
    blocks_.resize(static_cast<std::size_t>(model.num_elem_blk));
    ex_get_id_map(id_, EX_NODE_MAP, nodes_.data());
    ex_get_id_map(id_, EX_ELEM_MAP, bricks_.data());
    ex_get_ids(id_, EX_ELEM_BLOCK, blocks_.data());
  }
  ~FieldFile() {
    if (id_ >= 0) ex_close(id_);
  }
  FieldFile(const FieldFile&) = delete;
  FieldFile& operator=(const FieldFile&) = delete;

  bool isOpen() const { return id_ >= 0; }
  const std::vector<int>& nodeNumbers() const { return nodes_; }
  const std::vector<int>& brickNumbers() const { return bricks_; }

  // A variable of all nodes or bricks, in the order of the file, at an output counted from 0.
  std::vector<double> variable(ex_entity_type type, const std::string& name, std::size_t output) const {
    const int step = static_cast<int>(output) + 1, number = numberOf(type, name);
    if (number == 0) return {};
    if (type == EX_NODAL) {
      std::vector<double> values(nodes_.size());
      ex_get_var(id_, step, type, number, 1, static_cast<int64_t>(values.size()), values.data());
      return values;
    }
    std::vector<double> values(bricks_.size());
    std::size_t first = 0;
    for (const int block : blocks_) {
      ex_block info{};
      info.id = block;
      info.type = EX_ELEM_BLOCK;
      ex_get_block_param(id_, &info);
      ex_get_var(id_, step, type, number, block, info.num_entry, values.data() + first);
      first += static_cast<std::size_t>(info.num_entry);
    }
    return values;
  }

private:
  int numberOf(ex_entity_type type, const std::string& wanted) const {
    int count = 0;
    ex_get_variable_param(id_, type, &count);
    for (int number = 1; number <= count; ++number) {
      char name[MAX_STR_LENGTH + 1] = {};
      ex_get_variable_name(id_, type, number, name);
      if (wanted == name) return number;
    }
    return 0;
  }

  int id_ = -1;
  std::vector<int> nodes_, bricks_, blocks_;
};

// Names of an array's components in the field file.
std::vector<std::string> componentsOf(const std::string& array) {
  std::vector<std::string> names;
  if (array == "stress")
    for (const char* part : {"xx", "yy", "zz", "xy", "yz", "xz"}) names.push_back(array + "_" + part);
  else if (array == "displacement" || array == "velocity" || array == "reaction")
    for (const char* part : {"x", "y", "z"}) names.push_back(array + "_" + part);
  else
    names.push_back(array);
  return names;
}

bool isNodal(const std::string& array) { return array == "displacement" || array == "velocity" || array == "reaction"; }

// The first node or brick in which an array differs, with both values, from the field files.
std::optional<std::string> firstEntity(const FieldFile& a, const FieldFile& b, const std::string& array,
                                       std::size_t output) {
  const ex_entity_type type = isNodal(array) ? EX_NODAL : EX_ELEM_BLOCK;
  const std::vector<int>& numbers = isNodal(array) ? a.nodeNumbers() : a.brickNumbers();
  std::optional<std::size_t> first;
  std::string text;
  for (const std::string& component : componentsOf(array)) {
    const std::vector<double> left = a.variable(type, component, output), right = b.variable(type, component, output);
    // bits, so that NaN equals itself and -0 differs from 0
    const auto differs = [](double x, double y) { return std::bit_cast<uint64_t>(x) != std::bit_cast<uint64_t>(y); };
    const std::size_t shared = std::min(left.size(), right.size());
    for (std::size_t k = 0; k < shared && (!first || k < *first); ++k) {
      if (!differs(left[k], right[k])) continue;
      first = k;
      char values[96];
      std::snprintf(values, sizeof values, ": %.17g and %.17g", left[k], right[k]);
      text = component + " of " + (isNodal(array) ? "node " : "brick ") + std::to_string(numbers[k]) + values;
    }
  }
  return first ? std::optional(text) : std::nullopt;
}

// The chunk of entities, as far as the digests know.
std::string chunkText(const Digest& digest, const DigestArray& a, const DigestArray& b) {
  const std::size_t entities = a.name == "energies" ? a.chunks.size() : isNodal(a.name) ? digest.nodes : digest.bricks;
  const auto [left, right] = std::mismatch(a.chunks.begin(), a.chunks.end(), b.chunks.begin(), b.chunks.end());
  const std::size_t chunk = static_cast<std::size_t>(left - a.chunks.begin()), length = chunkLength(entities);
  const std::string what = a.name == "energies" ? "value " : isNodal(a.name) ? "nodes " : "bricks ";
  const std::string from = std::to_string(chunk * length + 1),
                    to = std::to_string(std::min(entities, (chunk + 1) * length));
  return a.name + " of " + what + (from == to ? from : from + " to " + to + ", counted in the mesh file");
}

int report(const std::string& text) {
  std::printf("%s\n", text.c_str());
  return exitDifferent;
}

int compare(const std::filesystem::path& fileA, const std::filesystem::path& fileB) {
  const Digest a = readDigest(fileA), b = readDigest(fileB);
  if (a.nodes != b.nodes || a.bricks != b.bricks)
    return report("different models: " + std::to_string(a.nodes) + " and " + std::to_string(b.nodes) + " nodes, " +
                  std::to_string(a.bricks) + " and " + std::to_string(b.bricks) + " bricks");
  const std::size_t outputs = std::min(a.outputs.size(), b.outputs.size());
  for (std::size_t k = 0; k < outputs; ++k) {
    const DigestOutput &left = a.outputs[k], &right = b.outputs[k];
    char when[96];
    std::snprintf(when, sizeof when, "increment %lld, time %.9g s: ", static_cast<long long>(left.increment),
                  std::strtod(left.time.c_str(), nullptr));
    if (left.increment != right.increment || left.time != right.time)
      return report("output " + std::to_string(k + 1) + " is at increment " + std::to_string(left.increment) + " and " +
                    std::to_string(right.increment) + ", time " + left.time + " and " + right.time);
    const std::size_t arrays = std::min(left.arrays.size(), right.arrays.size());
    for (std::size_t n = 0; n < arrays; ++n) {
      if (left.arrays[n].name == right.arrays[n].name && left.arrays[n].hash == right.arrays[n].hash) continue;
      const FieldFile fieldsA(fileA), fieldsB(fileB);
      std::optional<std::string> where;
      if (fieldsA.isOpen() && fieldsB.isOpen()) where = firstEntity(fieldsA, fieldsB, left.arrays[n].name, k);
      return report(when + where.value_or(chunkText(a, left.arrays[n], right.arrays[n])));
    }
    if (left.arrays.size() != right.arrays.size()) return report(std::string(when) + "not the same arrays");
  }
  if (a.outputs.size() != b.outputs.size())
    return report("the same in " + std::to_string(outputs) + " outputs; then one has " +
                  std::to_string(a.outputs.size()) + " and the other " + std::to_string(b.outputs.size()));
  const std::size_t arrays = a.outputs.empty() ? 0 : a.outputs.front().arrays.size();
  std::printf("the same to the last bit: %zu arrays at %zu outputs, %zu nodes, %zu bricks\n", arrays, outputs, a.nodes,
              a.bricks);
  return exitSame;
}

} // namespace

int main(int argc, char** argv) {
  std::filesystem::path a, b;
  CLI::App app("Compares the digests of two runs of sharedanalysis-explicit --digest", "sharedanalysis-compare");
  app.add_option("A", a, "Digest, or directory with one")->required();
  app.add_option("B", b, "The other one")->required();
  app.set_version_flag("--version", "sharedanalysis-compare " SHAREDANALYSIS_VERSION);
  try {
    app.parse(argc, argv);
    return compare(digestOf(a), digestOf(b));
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? exitSame : exitUnreadable;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "error: %s\n", error.what());
    return exitUnreadable;
  }
}
