#include "solver/results/join.h"

#include "solver/input/apart.h"
#include "solver/input/netcdf_size.h"
#include "solver/model/model.h"
#include "solver/results/exodus_writer.h"
#include "solver/results/partial_file.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <exodusII.h>
#include <limits>
#include <memory>
#include <sys/resource.h>
#include <vector>

namespace sharedanalysis::solver {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view partialExtension = ".partial";
constexpr std::size_t brickNodes = 8;

// "JOB.exo.4.0.partial": JOB.exo, 4, .partial
struct Set {
  fs::path name;
  int32_t parts = 0;
  std::string ending;

  fs::path part(int32_t rank) const { return fileOfRank(name, rank, parts).string() + ending; }
};

std::optional<Set> parse(const fs::path& part) {
  std::string text = part.string();
  Set set;
  if (text.ends_with(partialExtension)) {
    set.ending = partialExtension;
    text.resize(text.size() - partialExtension.size());
  }
  const std::size_t second = text.rfind('.');
  const std::size_t first =
      second == std::string::npos || second == 0 ? std::string::npos : text.rfind('.', second - 1);
  if (first == std::string::npos || first == 0) return std::nullopt;
  const auto number = [&](std::size_t begin, std::size_t end, int32_t& value) {
    const auto result = std::from_chars(text.data() + begin, text.data() + end, value);
    return result.ec == std::errc() && result.ptr == text.data() + end;
  };
  int32_t rank = 0;
  if (!number(first + 1, second, set.parts) || !number(second + 1, text.size(), rank)) return std::nullopt;
  set.name = text.substr(0, first);
  if (rank < 0 || rank >= set.parts || set.part(rank) != part) return std::nullopt;
  return set;
}

// One file of a set.
class PartReader {
public:
  explicit PartReader(fs::path file) : file_(std::move(file)) {
    int memoryWord = sizeof(double), fileWord = 0;
    float version = 0;
    id_ = ex_open(file_.c_str(), EX_READ | EX_ALL_INT64_API, &memoryWord, &fileWord, &version);
    if (id_ < 0) fail("cannot be read as a file of fields");
    if (!isWholeNetcdf(file_)) fail("is damaged or cut off");
    ex_set_max_name_length(id_, static_cast<int>(std::max<int64_t>(count(EX_INQ_DB_MAX_USED_NAME_LENGTH), 1)));
    readHead();
  }
  ~PartReader() {
    if (id_ >= 0) ex_close(id_);
  }
  PartReader(const PartReader&) = delete;
  PartReader& operator=(const PartReader&) = delete;

  const FieldsHead& head() const { return head_; } // of this file alone
  int64_t times() const { return count(EX_INQ_TIME); }
  const fs::path& file() const { return file_; }
  [[noreturn]] void fail(const std::string& what) const { throw InputError(file_.string() + ": " + what); }

  double time(int64_t number) const {
    double value = 0;
    check(ex_get_time(id_, static_cast<int>(number), &value));
    return value;
  }
  std::vector<int64_t> numbers(Entity entity) const {
    std::vector<int64_t> values(sizeOf(entity == Entity::Node ? head_.nodes : head_.elements()));
    if (!values.empty()) check(ex_get_id_map(id_, entity == Entity::Node ? EX_NODE_MAP : EX_ELEM_MAP, values.data()));
    return values;
  }
  std::array<std::vector<double>, 3> coordinates() const {
    std::array<std::vector<double>, 3> values;
    for (auto& axis : values) axis.resize(sizeOf(head_.nodes));
    if (head_.nodes > 0) check(ex_get_coord(id_, values[0].data(), values[1].data(), values[2].data()));
    return values;
  }
  // From 0.
  std::vector<int64_t> corners(std::size_t block) const {
    return indices(brickNodes * sizeOf(head_.blocks[block].count), [&](int64_t* values) {
      return ex_get_conn(id_, EX_ELEM_BLOCK, static_cast<ex_entity_id>(block + 1), values, nullptr, nullptr);
    });
  }
  std::vector<int64_t> set(std::size_t set) const {
    return indices(sizeOf(head_.sets[set].count), [&](int64_t* values) {
      return ex_get_set(id_, EX_NODE_SET, static_cast<ex_entity_id>(set + 1), values, nullptr);
    });
  }
  // Of the model, of nodes (group 0) or of a block of elements.
  std::vector<double> values(int64_t number, Entity entity, int variable, std::size_t group) const {
    const bool ofModel = entity == Entity::Model;
    const int64_t size = ofModel                  ? static_cast<int64_t>(head_.variablesOf(entity).size())
                         : entity == Entity::Node ? head_.nodes
                                                  : head_.blocks[group].count;
    std::vector<double> result(sizeOf(size));
    if (!result.empty())
      check(ex_get_var(id_, static_cast<int>(number), typeOf(entity), variable + 1,
                       static_cast<ex_entity_id>(group + 1), size, result.data()));
    return result;
  }

private:
  static std::size_t sizeOf(int64_t count) { return static_cast<std::size_t>(count); }
  static ex_entity_type typeOf(Entity entity) {
    return entity == Entity::Model ? EX_GLOBAL : entity == Entity::Node ? EX_NODAL : EX_ELEM_BLOCK;
  }
  void check(int status) const {
    if (status < 0) fail("is damaged or cut off");
  }
  int64_t count(ex_inquiry what) const { return std::max<int64_t>(ex_inquire_int(id_, what), 0); }

  template <class Read>
  std::vector<int64_t> indices(std::size_t size, const Read& read) const {
    std::vector<int64_t> values(size);
    if (size > 0) check(read(values.data()));
    for (int64_t& value : values)
      if (--value < 0 || value >= head_.nodes) fail("has a number that is none of a node");
    return values;
  }

  using Text = std::vector<char>;
  std::vector<std::string> texts(int64_t howMany, int64_t length, const std::function<int(char**)>& read) const {
    if (howMany == 0) return {};
    std::vector<Text> room(sizeOf(howMany), Text(sizeOf(length) + 1));
    std::vector<char*> pointers;
    for (Text& text : room) pointers.push_back(text.data());
    check(read(pointers.data()));
    std::vector<std::string> result;
    for (const Text& text : room) result.emplace_back(text.data());
    return result;
  }

  void readHead() {
    ex_init_params sizes{};
    check(ex_get_init_ext(id_, &sizes));
    head_.title = sizes.title;
    head_.nodes = sizes.num_nodes;
    const int64_t nameLength = std::max<int64_t>(count(EX_INQ_DB_MAX_USED_NAME_LENGTH), MAX_STR_LENGTH);
    const auto named = [&](ex_entity_type type, int64_t howMany, std::vector<FieldsHead::Members>& groups) {
      for (std::string& name : texts(howMany, nameLength, [&](char** names) { return ex_get_names(id_, type, names); }))
        groups.push_back({std::move(name), 0});
    };
    named(EX_ELEM_BLOCK, sizes.num_elem_blk, head_.blocks);
    named(EX_NODE_SET, sizes.num_node_sets, head_.sets);
    for (std::size_t b = 0; b < head_.blocks.size(); ++b) {
      ex_block block{};
      block.id = static_cast<ex_entity_id>(b + 1);
      block.type = EX_ELEM_BLOCK;
      check(ex_get_block_param(id_, &block));
      if (block.num_entry > 0 && block.num_nodes_per_entry != static_cast<int64_t>(brickNodes))
        fail("has other elements than bricks of 8 nodes");
      head_.blocks[b].count = block.num_entry;
    }
    for (std::size_t s = 0; s < head_.sets.size(); ++s) {
      int64_t factors = 0;
      check(ex_get_set_param(id_, EX_NODE_SET, static_cast<ex_entity_id>(s + 1), &head_.sets[s].count, &factors));
    }
    if (head_.elements() != sizes.num_elem) fail("is damaged or cut off");
    head_.info = texts(count(EX_INQ_INFO), MAX_LINE_LENGTH, [&](char** lines) { return ex_get_info(id_, lines); });
    const std::vector<std::string> words = texts(4 * count(EX_INQ_QA), MAX_STR_LENGTH, [&](char** records) {
      return ex_get_qa(id_, reinterpret_cast<char*(*)[4]>(records));
    });
    for (std::size_t k = 0; k + 4 <= words.size(); k += 4)
      head_.programs.push_back({words[k], words[k + 1], words[k + 2], words[k + 3]});
    for (const Entity entity : {Entity::Model, Entity::Node, Entity::Element}) {
      int variables = 0;
      check(ex_get_variable_param(id_, typeOf(entity), &variables));
      head_.variables[static_cast<std::size_t>(entity)] = texts(variables, nameLength, [&](char** names) {
        return ex_get_variable_names(id_, typeOf(entity), variables, names);
      });
    }
    readPart();
  }

  void readPart() {
    PartOfFile part;
    int inFile = 0;
    char kind[2] = {};
    int64_t blocks = 0, sets = 0, sideSets = 0;
    if (ex_get_init_info(id_, &part.parts, &inFile, kind) < 0 ||
        ex_get_init_global(id_, &part.nodes, &part.elements, &blocks, &sets, &sideSets) < 0)
      fail("is no file of a rank");
    head_.part = part;
  }

  fs::path file_;
  int id_ = -1;
  FieldsHead head_;
};

// Entities of all files by their numbers, and the places of those of each file among them.
struct Places {
  std::vector<int64_t> numbers;              // increasing
  std::vector<std::vector<int64_t>> ofParts; // by file

  explicit Places(std::vector<std::vector<int64_t>> known) : ofParts(std::move(known)) {
    std::size_t all = 0;
    for (const std::vector<int64_t>& part : ofParts) all += part.size();
    numbers.reserve(all);
    for (const std::vector<int64_t>& part : ofParts) numbers.insert(numbers.end(), part.begin(), part.end());
    std::sort(numbers.begin(), numbers.end());
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    for (std::vector<int64_t>& part : ofParts)
      for (int64_t& number : part) number = std::lower_bound(numbers.begin(), numbers.end(), number) - numbers.begin();
  }
  std::size_t count() const { return numbers.size(); }
};

class Join {
public:
  explicit Join(const Set& set) {
    raiseLimitOfFiles();
    ex_opts(0); // errors come back as codes, nothing is printed
    for (int32_t rank = 0; rank < set.parts; ++rank) parts_.push_back(std::make_unique<PartReader>(set.part(rank)));
    for (const auto& part : parts_) checkPart(*part, set.parts);
    times_ = std::numeric_limits<int64_t>::max();
    for (const auto& part : parts_) times_ = std::min(times_, part->times());
    findPlaces();
  }

  JoinedFile write(const fs::path& file) {
    const FieldsHead& first = parts_[0]->head();
    FieldsHead head = first;
    head.part.reset();
    head.nodes = static_cast<int64_t>(nodes_->count());
    for (std::size_t b = 0; b < head.blocks.size(); ++b)
      head.blocks[b].count = static_cast<int64_t>(blocks_[b].count());
    std::vector<std::vector<int64_t>> sets;
    for (std::size_t s = 0; s < head.sets.size(); ++s) {
      sets.push_back(joinedSet(s));
      head.sets[s].count = static_cast<int64_t>(sets.back().size());
    }
    for (const Places& block : blocks_)
      if (block.count() > 0) head.largestNumber = std::max(head.largestNumber, block.numbers.back());
    if (nodes_->count() > 0) head.largestNumber = std::max(head.largestNumber, nodes_->numbers.back());
    ExodusWriter writer(file, head);
    writeModel(writer, sets);
    for (int64_t number = 1; number <= times_; ++number) writeTime(writer, number);
    writer.close();
    return {file, static_cast<int64_t>(parts_.size()), times_, head.nodes, head.elements()};
  }

private:
  // Every file stays open.
  static void raiseLimitOfFiles() {
    rlimit files{};
    if (getrlimit(RLIMIT_NOFILE, &files) != 0) return;
    files.rlim_cur = files.rlim_max;
    setrlimit(RLIMIT_NOFILE, &files);
  }

  void checkPart(const PartReader& part, int32_t parts) const {
    const FieldsHead &one = parts_[0]->head(), &other = part.head();
    const auto names = [](const std::vector<FieldsHead::Members>& groups) {
      std::vector<std::string> all;
      for (const auto& group : groups) all.push_back(group.name);
      return all;
    };
    if (other.part->parts != parts || other.part->nodes != one.part->nodes ||
        other.part->elements != one.part->elements || names(other.blocks) != names(one.blocks) ||
        names(other.sets) != names(one.sets) || other.variables != one.variables || other.info != one.info)
      part.fail("is of another run than " + parts_[0]->file().string());
  }

  void findPlaces() {
    std::vector<std::vector<int64_t>> numbers;
    for (const auto& part : parts_) numbers.push_back(part->numbers(Entity::Node));
    nodes_.emplace(std::move(numbers));
    const FieldsHead& head = parts_[0]->head();
    std::vector<std::vector<std::vector<int64_t>>> ofBlocks(head.blocks.size());
    for (const auto& part : parts_) {
      const std::vector<int64_t> all = part->numbers(Entity::Element);
      auto next = all.begin();
      for (std::size_t b = 0; b < ofBlocks.size(); ++b) {
        const auto end = next + part->head().blocks[b].count;
        ofBlocks[b].emplace_back(next, end);
        next = end;
      }
    }
    // elements of several files, and nodes or elements of none, are told here
    int64_t elements = 0;
    for (auto& block : ofBlocks) elements += static_cast<int64_t>(blocks_.emplace_back(std::move(block)).count());
    int64_t inFiles = 0;
    for (const auto& part : parts_) inFiles += part->head().elements();
    if (elements != inFiles) parts_[0]->fail("shares elements with another file of the set");
    if (elements != head.part->elements || static_cast<int64_t>(nodes_->count()) != head.part->nodes)
      parts_[0]->fail("the files of the set have " + std::to_string(nodes_->count()) + " nodes and " +
                      std::to_string(elements) + " elements, expected " + std::to_string(head.part->nodes) + " and " +
                      std::to_string(head.part->elements));
  }

  // Places from 1, increasing.
  std::vector<int64_t> joinedSet(std::size_t s) const {
    std::vector<int64_t> all;
    for (std::size_t p = 0; p < parts_.size(); ++p)
      for (const int64_t node : parts_[p]->set(s)) all.push_back(placeOf(p, node) + 1);
    std::sort(all.begin(), all.end());
    all.erase(std::unique(all.begin(), all.end()), all.end());
    return all;
  }
  int64_t placeOf(std::size_t part, int64_t node) const {
    return nodes_->ofParts[part][static_cast<std::size_t>(node)];
  }

  template <class T>
  static void scatter(const std::vector<T>& values, const std::vector<int64_t>& places, std::size_t width,
                      std::vector<T>& all) {
    for (std::size_t k = 0; k < places.size(); ++k)
      std::copy_n(values.begin() + static_cast<std::ptrdiff_t>(width * k), width,
                  all.begin() + static_cast<std::ptrdiff_t>(width) * places[k]);
  }

  void writeModel(ExodusWriter& writer, const std::vector<std::vector<int64_t>>& sets) const {
    if (nodes_->count() > 0) writer.putNumbers(Entity::Node, 0, nodes_->numbers);
    int64_t before = 0;
    for (const Places& block : blocks_) {
      if (block.count() > 0) writer.putNumbers(Entity::Element, before, block.numbers);
      before += static_cast<int64_t>(block.count());
    }
    std::vector<double> coordinates(3 * nodes_->count());
    for (std::size_t p = 0; p < parts_.size(); ++p) {
      const auto own = parts_[p]->coordinates();
      for (std::size_t k = 0; k < own[0].size(); ++k)
        for (std::size_t c = 0; c < 3; ++c)
          coordinates[3 * static_cast<std::size_t>(placeOf(p, static_cast<int64_t>(k))) + c] = own[c][k];
    }
    if (!coordinates.empty()) writer.putCoordinates(0, coordinates);
    coordinates = {};
    for (std::size_t b = 0; b < blocks_.size(); ++b) {
      std::vector<int64_t> corners(brickNodes * blocks_[b].count());
      for (std::size_t p = 0; p < parts_.size(); ++p) {
        std::vector<int64_t> own = parts_[p]->corners(b);
        for (int64_t& node : own) node = placeOf(p, node) + 1;
        scatter(own, blocks_[b].ofParts[p], brickNodes, corners);
      }
      if (!corners.empty()) writer.putConnectivity(b, 0, corners);
    }
    for (std::size_t s = 0; s < sets.size(); ++s)
      if (!sets[s].empty()) writer.putSet(s, 0, sets[s]);
    writer.flush();
  }

  // A variable at a time.
  void writeTime(ExodusWriter& writer, int64_t number) const {
    const FieldsHead& head = parts_[0]->head();
    const double time = parts_[0]->time(number);
    for (const auto& part : parts_)
      if (std::bit_cast<uint64_t>(part->time(number)) != std::bit_cast<uint64_t>(time))
        part->fail("has other times than " + parts_[0]->file().string());
    writer.beginTime(number, time, parts_[0]->values(number, Entity::Model, 0, 0));
    std::vector<double> all;
    const auto gather = [&](Entity entity, std::size_t variable, std::size_t group, const Places& places) {
      all.assign(places.count(), 0.0);
      for (std::size_t p = 0; p < parts_.size(); ++p)
        scatter(parts_[p]->values(number, entity, static_cast<int>(variable), group), places.ofParts[p], 1, all);
      return !all.empty();
    };
    for (std::size_t k = 0; k < head.variablesOf(Entity::Node).size(); ++k)
      if (gather(Entity::Node, k, 0, *nodes_)) writer.putNodeValues(number, static_cast<int>(k), 1, 0, all);
    for (std::size_t k = 0; k < head.variablesOf(Entity::Element).size(); ++k)
      for (std::size_t b = 0; b < blocks_.size(); ++b)
        if (gather(Entity::Element, k, b, blocks_[b]))
          writer.putElementValues(number, static_cast<int>(k), 1, b, 0, all);
    writer.flush();
  }

  std::vector<std::unique_ptr<PartReader>> parts_;
  int64_t times_ = 0;
  std::optional<Places> nodes_;
  std::vector<Places> blocks_;
};

} // namespace

std::optional<fs::path> setOf(const fs::path& part) {
  const std::optional<Set> set = parse(part);
  return set ? std::optional(set->name) : std::nullopt;
}

JoinedFile joinFiles(const fs::path& part, const std::optional<fs::path>& file) {
  const std::optional<Set> set = parse(part);
  if (!set) throw InputError(part.string() + ": is no name of a file of one of several ranks, as job.exo.4.0 is");
  std::uintmax_t bytes = 0;
  for (int32_t rank = 0; rank < set->parts; ++rank) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(set->part(rank), error);
    if (error) throw InputError(set->part(rank).string() + ": " + error.message());
    bytes += size;
  }
  // an earlier result stays until this one is whole
  const PartialFile result(file.value_or(set->name.string() + set->ending), Start::GoOn);
  if (setOf(result.name()) == set->name)
    throw InputError(result.name().string() + ": is the name of a file of the set, expected another one");
  std::string failure;
  std::vector<int64_t> counts;
  try {
    // files may be damaged in ways that their library does not bear
    const HandOver told = runApart(
        part, "Exodus II",
        [&](Sink& sink) {
          try {
            const JoinedFile done = Join(*set).write(result.path());
            sink.put(std::string());
            sink.put(std::vector<int64_t>{done.parts, done.times, done.nodes, done.elements});
          } catch (const WriteError& error) {
            sink.put(std::string(error.what()));
          }
        },
        bytes);
    Source source(told);
    source.take(failure);
    if (!failure.empty()) throw std::runtime_error(failure);
    source.take(counts);
    result.synchronise();
    result.complete();
  } catch (...) {
    std::error_code error;
    fs::remove(result.path(), error);
    throw;
  }
  return {result.name(), counts.at(0), counts.at(1), counts.at(2), counts.at(3)};
}

} // namespace sharedanalysis::solver
