#include "solver/input/exodus_file.h"

#include "solver/input/apart.h"
#include "solver/input/netcdf_size.h"
#include "solver/model/model.h"
#include "solver/model/text.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <exodusII.h>
#include <fcntl.h>
#include <map>
#include <unistd.h>

namespace sharedanalysis::solver {
namespace {

constexpr int64_t brickNodes = 8;

class Reader {
public:
  Reader(const std::filesystem::path& file, int64_t rank, int64_t size) : file_(file), rank_(rank), size_(size) {
    ex_opts(0); // errors come back as codes, nothing is printed
    int memoryWord = sizeof(double), fileWord = 0;
    float version = 0;
    id_ = ex_open(file.c_str(), EX_READ | EX_ALL_INT64_API, &memoryWord, &fileWord, &version);
    check(id_);
    if (!isWholeNetcdf(file)) fail("is cut off: it has fewer bytes than its header announces");
  }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;
  ~Reader() {
    if (id_ >= 0) ex_close(id_);
  }

  ExodusShare read() {
    char title[MAX_LINE_LENGTH + 1] = {};
    int64_t dimensions = 0, blocks = 0, nodeSets = 0, sideSets = 0;
    check(ex_get_init(id_, title, &dimensions, &share_.nodes, &share_.elements, &blocks, &nodeSets, &sideSets));
    if (dimensions != 3)
      fail("the mesh has " + counted(static_cast<std::size_t>(dimensions), "dimension") + ", expected 3");
    nameLength_ = std::max<int64_t>(ex_inquire_int(id_, EX_INQ_DB_MAX_USED_NAME_LENGTH), MAX_NAME_LENGTH);
    check(ex_set_max_name_length(id_, static_cast<int>(nameLength_)));
    const std::vector<int64_t> blockIds = collect(EX_ELEM_BLOCK, blocks, "block_", share_.blocks);
    checkBlocks(blockIds);
    readNodes();
    readElements(blockIds);
    readNodeSets(collect(EX_NODE_SET, nodeSets, "nodeset_", share_.nodeSets));
    readSideSets(collect(EX_SIDE_SET, sideSets, "sideset_", share_.sideSets));
    return std::move(share_);
  }

private:
  [[noreturn]] void fail(const std::string& text) const { throw InputError(file_.string() + ": " + text); }

  void check(int status) const {
    if (status >= 0) return;
    const char *text = "", *routine = "";
    int code = 0;
    ex_get_err(&text, &routine, &code);
    const std::string reason = code > 0 ? std::strerror(code) : text;
    fail("the Exodus II library cannot read this mesh, it is broken or not whole" +
         (reason.empty() ? std::string() : ": " + printable(reason)));
  }

  static std::size_t asSize(int64_t count) {
    if (count < 0) throw std::bad_alloc();
    return static_cast<std::size_t>(count);
  }
  int64_t firstOf(int64_t count) const { return firstOfShare(count, rank_, size_); }
  int64_t endOf(int64_t count) const { return firstOfShare(count, rank_ + 1, size_); }

  // Names of blocks or sets; returns their ids.
  std::vector<int64_t> collect(ex_entity_type type, int64_t count, const char* kind,
                               std::vector<ExodusShare::Collection>& all) {
    std::vector<int64_t> ids(asSize(count));
    if (count > 0) check(ex_get_ids(id_, type, ids.data()));
    for (const int64_t id : ids) {
      std::vector<char> name(asSize(nameLength_) + 1);
      check(ex_get_name(id_, type, id, name.data()));
      name.back() = '\0';
      all.push_back({name[0] == '\0' ? kind + std::to_string(id) : std::string(name.data())});
    }
    return ids;
  }

  static bool isBrick(const ex_block& block) {
    std::string topology = block.topology;
    for (char& letter : topology) letter = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
    return topology.starts_with("HEX") && block.num_nodes_per_entry == brickNodes;
  }

  void checkBlocks(const std::vector<int64_t>& ids) {
    std::map<std::string, int64_t> others;
    int64_t sum = 0;
    for (std::size_t b = 0; b < ids.size(); ++b) {
      ex_block block{};
      block.id = ids[b];
      block.type = EX_ELEM_BLOCK;
      check(ex_get_block_param(id_, &block));
      block.topology[sizeof block.topology - 1] = '\0';
      if (block.num_entry < 0 || block.num_entry > share_.elements - sum)
        fail("the element blocks have more elements than the mesh");
      if (block.num_entry > 0 && !isBrick(block))
        others[printable(block.topology) + "\" with " +
               counted(static_cast<std::size_t>(block.num_nodes_per_entry), "node")] += block.num_entry;
      sum += share_.blocks[b].count = block.num_entry;
    }
    std::vector<std::string> words;
    for (const auto& [type, count] : others)
      words.push_back(counted(static_cast<std::size_t>(count), "element") + " of type \"" + type);
    if (!words.empty()) fail("the mesh has " + joined(words, ", ") + "; solids must be 8-node bricks (\"HEX8\")");
    if (sum == 0) fail("the mesh has no 8-node bricks");
    if (sum != share_.elements) fail("the element blocks have fewer elements than the mesh");
  }

  void readNodes() {
    const int64_t first = firstOf(share_.nodes), count = endOf(share_.nodes) - first;
    share_.nodeNumbers.resize(asSize(count));
    std::array<std::vector<double>, 3> coordinates;
    for (std::vector<double>& values : coordinates) values.resize(asSize(count));
    if (count > 0) {
      check(ex_get_partial_id_map(id_, EX_NODE_MAP, first + 1, count, share_.nodeNumbers.data()));
      check(ex_get_partial_coord(id_, first + 1, count, coordinates[0].data(), coordinates[1].data(),
                                 coordinates[2].data()));
    }
    share_.coordinates.reserve(asSize(3 * count));
    for (std::size_t n = 0; n < asSize(count); ++n)
      for (const std::vector<double>& values : coordinates) share_.coordinates.push_back(values[n]);
  }

  void readElements(const std::vector<int64_t>& ids) {
    const int64_t first = firstOf(share_.elements), end = endOf(share_.elements);
    share_.elementNumbers.resize(asSize(end - first));
    if (end > first)
      check(ex_get_partial_id_map(id_, EX_ELEM_MAP, first + 1, end - first, share_.elementNumbers.data()));
    share_.connectivity.resize(asSize(brickNodes * (end - first)));
    int64_t blockBegin = 0;
    for (std::size_t b = 0; b < ids.size(); ++b) {
      const int64_t blockEnd = blockBegin + share_.blocks[b].count;
      const int64_t from = std::max(first, blockBegin), to = std::min(end, blockEnd);
      if (from < to)
        check(ex_get_partial_conn(id_, EX_ELEM_BLOCK, ids[b], from - blockBegin + 1, to - from,
                                  &share_.connectivity[asSize(brickNodes * (from - first))], nullptr, nullptr));
      blockBegin = blockEnd;
    }
    for (int64_t& node : share_.connectivity) --node;
  }

  // Makes room for the share of a set; returns where it begins.
  int64_t prepare(ex_entity_type type, int64_t id, ExodusShare::Collection& set) const {
    int64_t factors = 0;
    check(ex_get_set_param(id_, type, id, &set.count, &factors));
    const int64_t first = firstOf(set.count);
    set.entries.resize(asSize(endOf(set.count) - first));
    return first + 1;
  }

  void readNodeSets(const std::vector<int64_t>& ids) {
    for (std::size_t s = 0; s < ids.size(); ++s) {
      std::vector<int64_t>& entries = share_.nodeSets[s].entries;
      const int64_t first = prepare(EX_NODE_SET, ids[s], share_.nodeSets[s]);
      if (!entries.empty())
        check(ex_get_partial_node_set(id_, ids[s], first, static_cast<int64_t>(entries.size()), entries.data()));
      for (int64_t& node : entries) --node;
    }
  }

  void readSideSets(const std::vector<int64_t>& ids) {
    for (std::size_t s = 0; s < ids.size(); ++s) {
      ExodusShare::Collection& set = share_.sideSets[s];
      const int64_t first = prepare(EX_SIDE_SET, ids[s], set);
      set.sides.resize(set.entries.size());
      if (!set.entries.empty())
        check(ex_get_partial_side_set(id_, ids[s], first, static_cast<int64_t>(set.entries.size()), set.entries.data(),
                                      set.sides.data()));
      for (int64_t& element : set.entries) --element;
    }
  }

  std::filesystem::path file_;
  int64_t rank_, size_, nameLength_ = 0;
  int id_ = -1;
  ExodusShare share_;
};

// The library below writes to standard error about files that it cannot open, whatever it was told.
void silenceErrors() {
  const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (nowhere >= 0) dup2(nowhere, STDERR_FILENO);
}

// What both sides of the hand-over do, in the same order.
template <class Share, class Do>
void forAll(Share& share, const Do& take) {
  take(share.nodeNumbers), take(share.elementNumbers), take(share.connectivity), take(share.coordinates);
  for (auto* collections : {&share.blocks, &share.nodeSets, &share.sideSets})
    for (auto& one : *collections) take(one.name), take(one.entries), take(one.sides);
}

void put(ExodusShare& share, Sink& sink) {
  std::vector<int64_t> counts{share.nodes, share.elements};
  for (const auto* collections : {&share.blocks, &share.nodeSets, &share.sideSets}) {
    counts.push_back(static_cast<int64_t>(collections->size()));
    for (const ExodusShare::Collection& one : *collections) counts.push_back(one.count);
  }
  sink.put(counts);
  forAll(share, [&](const auto& values) { sink.put(values); });
}

} // namespace

ExodusShare readExodus(const std::filesystem::path& file, int64_t rank, int64_t size) {
  const HandOver read = runApart(file, "the Exodus II library", [&](Sink& sink) {
    silenceErrors();
    ExodusShare share = Reader(file, rank, size).read();
    put(share, sink);
  });
  Source source(read);
  ExodusShare share;
  std::vector<int64_t> counts;
  source.take(counts);
  auto next = counts.begin();
  share.nodes = *next++, share.elements = *next++;
  for (auto* collections : {&share.blocks, &share.nodeSets, &share.sideSets}) {
    collections->resize(static_cast<std::size_t>(*next++));
    for (ExodusShare::Collection& one : *collections) one.count = *next++;
  }
  forAll(share, [&](auto& values) { source.take(values); });
  return share;
}

} // namespace sharedanalysis::solver
