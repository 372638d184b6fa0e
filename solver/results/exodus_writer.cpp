#include "solver/results/exodus_writer.h"

#include "solver/model/model.h"
#include "solver/results/partial_file.h"

#include <algorithm>
#include <cstring>
#include <exodusII.h>
#include <limits>

namespace sharedanalysis::solver {
namespace {

constexpr std::size_t brickNodes = 8;

// Exodus takes arrays of pointers to texts that it does not change.
class TextPointers {
public:
  explicit TextPointers(std::vector<std::string> texts) : texts_(std::move(texts)) {
    for (std::string& text : texts_) pointers_.push_back(text.data());
  }
  char** get() { return pointers_.data(); }
  int count() const { return static_cast<int>(pointers_.size()); }

private:
  std::vector<std::string> texts_;
  std::vector<char*> pointers_;
};

std::vector<std::string> namesOf(const std::vector<FieldsHead::Members>& groups) {
  std::vector<std::string> names;
  for (const FieldsHead::Members& group : groups) names.push_back(group.name);
  return names;
}

ex_entity_type typeOf(Entity entity) {
  return entity == Entity::Model ? EX_GLOBAL : entity == Entity::Node ? EX_NODAL : EX_ELEM_BLOCK;
}

std::vector<int64_t> countedFromOne(std::size_t count) {
  std::vector<int64_t> numbers(count);
  for (std::size_t k = 0; k < count; ++k) numbers[k] = static_cast<int64_t>(k) + 1;
  return numbers;
}

std::vector<int64_t> allShared(const PartOfFile& part) {
  std::vector<int64_t> nodes;
  for (const PartOfFile::Shared& shared : part.shared)
    nodes.insert(nodes.end(), shared.nodes.begin(), shared.nodes.end());
  std::sort(nodes.begin(), nodes.end());
  nodes.erase(std::unique(nodes.begin(), nodes.end()), nodes.end());
  return nodes;
}

// Those from 1 to `count` that are not among the listed ones, which increase.
std::vector<int64_t> others(const std::vector<int64_t>& listed, int64_t count) {
  const std::vector<int64_t> all = countedFromOne(static_cast<std::size_t>(count));
  std::vector<int64_t> rest;
  std::set_difference(all.begin(), all.end(), listed.begin(), listed.end(), std::back_inserter(rest));
  return rest;
}

} // namespace

int64_t FieldsHead::elements() const {
  int64_t sum = 0;
  for (const Members& block : blocks) sum += block.count;
  return sum;
}

bool FieldsHead::isLarge() const {
  constexpr int64_t mostOfArray = (int64_t{1} << 32) - 8, mostNumber = std::numeric_limits<int32_t>::max();
  int64_t longest = nodes, mostCorners = 0;
  for (const Members& block : blocks) {
    longest = std::max(longest, block.count);
    mostCorners = std::max(mostCorners, static_cast<int64_t>(brickNodes) * block.count);
  }
  return std::max({largestNumber, nodes, elements()}) > mostNumber ||
         static_cast<int64_t>(sizeof(double)) * longest > mostOfArray ||
         static_cast<int64_t>(sizeof(int32_t)) * mostCorners > mostOfArray;
}

ExodusWriter::ExodusWriter(const std::filesystem::path& file, const FieldsHead& head) : file_(file) {
  ex_opts(0); // errors come back as codes, nothing is printed
  int memoryWord = sizeof(double), fileWord = sizeof(double);
  const int form = head.isLarge() ? EX_NETCDF4 | EX_ALL_INT64_DB : EX_LARGE_MODEL;
  id_ = ex_create(file_.c_str(), EX_CLOBBER | form | EX_ALL_INT64_API, &memoryWord, &fileWord);
  check(id_);
  try {
    define(head);
    flush();
  } catch (...) {
    ex_close(id_);
    throw;
  }
}

ExodusWriter::ExodusWriter(const std::filesystem::path& file, const FieldsHead& head, int64_t times, double lastTime)
    : file_(file) {
  ex_opts(0);
  const auto fail = [&](const char* what) { throw InputError(file_.string() + ": " + what); };
  int memoryWord = sizeof(double), fileWord = sizeof(double);
  float version = 0;
  id_ = ex_open(file_.c_str(), EX_WRITE | EX_ALL_INT64_API, &memoryWord, &fileWord, &version);
  if (id_ < 0) fail("cannot be opened as a file of fields to go on with");
  const auto has = [&](Entity entity) {
    int count = -1;
    return ex_get_variable_param(id_, typeOf(entity), &count) >= 0 &&
           count == static_cast<int>(head.variablesOf(entity).size());
  };
  double time = 0;
  const bool fits =
      ex_inquire_int(id_, EX_INQ_NODES) == head.nodes && ex_inquire_int(id_, EX_INQ_ELEM) == head.elements() &&
      ex_inquire_int(id_, EX_INQ_ELEM_BLK) == static_cast<int64_t>(head.blocks.size()) && has(Entity::Model) &&
      has(Entity::Node) && has(Entity::Element) && times > 0 && ex_inquire_int(id_, EX_INQ_TIME) >= times &&
      ex_get_time(id_, static_cast<int>(times), &time) >= 0 && time == lastTime;
  if (fits) return;
  ex_close(id_);
  fail("is not what the restart file goes on from");
}

ExodusWriter::~ExodusWriter() {
  if (id_ >= 0) ex_close(id_);
}

void ExodusWriter::check(int status) const {
  if (status >= 0) return;
  const char *text = "", *routine = "";
  int code = 0;
  ex_get_err(&text, &routine, &code);
  throw WriteError(file_, code > 0 ? std::strerror(code) : text);
}

// Everything that has a name or a size comes before the arrays: they would be moved for it.
void ExodusWriter::define(const FieldsHead& head) {
  std::size_t longestName = MAX_NAME_LENGTH;
  for (const auto* groups : {&head.blocks, &head.sets})
    for (const FieldsHead::Members& group : *groups) longestName = std::max(longestName, group.name.size());
  check(ex_set_max_name_length(id_, static_cast<int>(longestName)));
  const std::string title = head.title.substr(0, MAX_LINE_LENGTH);
  check(ex_put_init(id_, title.c_str(), 3, head.nodes, head.elements(), static_cast<int64_t>(head.blocks.size()),
                    static_cast<int64_t>(head.sets.size()), 0));
  if (head.part) definePart(head);

  for (std::size_t b = 0; b < head.blocks.size(); ++b)
    check(ex_put_block(id_, EX_ELEM_BLOCK, static_cast<ex_entity_id>(b + 1), "HEX8", head.blocks[b].count, brickNodes,
                       0, 0, 0));
  for (std::size_t s = 0; s < head.sets.size(); ++s)
    check(ex_put_set_param(id_, EX_NODE_SET, static_cast<ex_entity_id>(s + 1), head.sets[s].count, 0));
  check(ex_put_coord_names(id_, TextPointers({"x", "y", "z"}).get()));
  check(ex_put_names(id_, EX_ELEM_BLOCK, TextPointers(namesOf(head.blocks)).get()));
  if (!head.sets.empty()) check(ex_put_names(id_, EX_NODE_SET, TextPointers(namesOf(head.sets)).get()));

  std::vector<std::string> lines;
  for (const std::string& line : head.info) {
    lines.push_back(line.substr(0, MAX_LINE_LENGTH));
    lines.back().erase(lines.back().find_last_not_of(' ') + 1); // as readers have them
  }
  TextPointers info(std::move(lines));
  check(ex_put_info(id_, info.count(), info.get()));
  std::vector<std::string> words;
  for (const auto& program : head.programs)
    for (const std::string& word : program) words.push_back(word.substr(0, MAX_STR_LENGTH));
  TextPointers records(std::move(words));
  check(ex_put_qa(id_, static_cast<int>(head.programs.size()), reinterpret_cast<char*(*)[4]>(records.get())));

  for (const Entity entity : {Entity::Model, Entity::Node, Entity::Element}) {
    if (head.variablesOf(entity).empty()) continue;
    TextPointers names(head.variablesOf(entity));
    check(ex_put_variable_param(id_, typeOf(entity), names.count()));
    check(ex_put_variable_names(id_, typeOf(entity), names.count(), names.get()));
  }
  const std::size_t variables = head.variablesOf(Entity::Element).size();
  // every block has every variable
  std::vector<int> table(head.blocks.size() * variables, 1);
  if (variables > 0)
    check(ex_put_truth_table(id_, EX_ELEM_BLOCK, static_cast<int>(head.blocks.size()), static_cast<int>(variables),
                             table.data()));
  if (head.part) putPart(head);
}

// As the readers of files by rank know them: counts of the whole model, and how nodes and elements of this file meet others.
void ExodusWriter::definePart(const FieldsHead& head) {
  const PartOfFile& part = *head.part;
  char kind[] = "p"; // of parallel
  check(ex_put_init_info(id_, part.parts, 1, kind));
  check(ex_put_init_global(id_, part.nodes, part.elements, static_cast<int64_t>(head.blocks.size()),
                           static_cast<int64_t>(head.sets.size()), 0));
  const int64_t shared = static_cast<int64_t>(allShared(part).size()),
                border = static_cast<int64_t>(part.border.size());
  check(ex_put_loadbal_param(id_, head.nodes - shared, shared, 0, head.elements() - border, border,
                             static_cast<int64_t>(part.shared.size()), 0, part.rank));
  std::vector<int64_t> ids, counts;
  for (const PartOfFile::Shared& other : part.shared) {
    ids.push_back(other.rank + int64_t{1});
    counts.push_back(static_cast<int64_t>(other.nodes.size()));
  }
  if (!ids.empty()) check(ex_put_cmap_params(id_, ids.data(), counts.data(), nullptr, nullptr, part.rank));
}

void ExodusWriter::putPart(const FieldsHead& head) {
  const PartOfFile& part = *head.part;
  std::vector<int64_t> sizes = part.blockSizes, ids = countedFromOne(sizes.size());
  check(ex_put_eb_info_global(id_, ids.data(), sizes.data()));
  sizes = part.setSizes;
  ids = countedFromOne(sizes.size());
  std::vector<int64_t> factors(sizes.size());
  if (!sizes.empty()) check(ex_put_ns_param_global(id_, ids.data(), sizes.data(), factors.data()));
  std::vector<int64_t> border = allShared(part), inner = others(border, head.nodes);
  check(ex_put_processor_node_maps(id_, inner.data(), border.data(), nullptr, part.rank));
  border = part.border;
  inner = others(border, head.elements());
  check(ex_put_processor_elem_maps(id_, inner.data(), border.data(), part.rank));
  for (const PartOfFile::Shared& other : part.shared) {
    std::vector<int64_t> nodes = other.nodes, ranks(nodes.size(), other.rank);
    check(ex_put_node_cmap(id_, other.rank + int64_t{1}, nodes.data(), ranks.data(), part.rank));
  }
}

void ExodusWriter::putCoordinates(int64_t first, std::span<const double> coordinates) {
  const std::size_t count = coordinates.size() / 3;
  scratch_.resize(3 * count);
  for (std::size_t n = 0; n < count; ++n)
    for (std::size_t c = 0; c < 3; ++c) scratch_[c * count + n] = coordinates[3 * n + c];
  check(ex_put_partial_coord(id_, first + 1, static_cast<int64_t>(count), &scratch_[0], &scratch_[count],
                             &scratch_[2 * count]));
}

void ExodusWriter::putNumbers(Entity entity, int64_t first, std::span<const int64_t> numbers) {
  check(ex_put_partial_id_map(id_, entity == Entity::Node ? EX_NODE_MAP : EX_ELEM_MAP, first + 1,
                              static_cast<int64_t>(numbers.size()), numbers.data()));
}

bool ExodusWriter::hasNumbers(Entity entity, int64_t first, std::span<const int64_t> numbers) const {
  std::vector<int64_t> written(numbers.size());
  return ex_get_partial_id_map(id_, entity == Entity::Node ? EX_NODE_MAP : EX_ELEM_MAP, first + 1,
                               static_cast<int64_t>(written.size()), written.data()) >= 0 &&
         std::equal(written.begin(), written.end(), numbers.begin());
}

void ExodusWriter::putConnectivity(std::size_t block, int64_t first, std::span<const int64_t> corners) {
  check(ex_put_partial_elem_conn(id_, static_cast<ex_entity_id>(block + 1), first + 1,
                                 static_cast<int64_t>(corners.size() / brickNodes), corners.data()));
}

void ExodusWriter::putSet(std::size_t set, int64_t first, std::span<const int64_t> nodes) {
  check(ex_put_partial_set(id_, EX_NODE_SET, static_cast<ex_entity_id>(set + 1), first + 1,
                           static_cast<int64_t>(nodes.size()), nodes.data(), nullptr));
}

void ExodusWriter::beginTime(int64_t number, double time, std::span<const double> ofModel) {
  const int step = static_cast<int>(number);
  check(ex_put_time(id_, step, &time));
  check(ex_put_var(id_, step, EX_GLOBAL, 1, 1, static_cast<int64_t>(ofModel.size()), ofModel.data()));
}

void ExodusWriter::putNodeValues(int64_t number, int variable, int components, int64_t first,
                                 std::span<const double> values) {
  putValues(Entity::Node, 1, number, variable, components, first, values);
}

void ExodusWriter::putElementValues(int64_t number, int variable, int components, std::size_t block, int64_t first,
                                    std::span<const double> values) {
  putValues(Entity::Element, static_cast<int64_t>(block) + 1, number, variable, components, first, values);
}

void ExodusWriter::putValues(Entity entity, int64_t id, int64_t number, int variable, int components, int64_t first,
                             std::span<const double> values) {
  const std::size_t width = static_cast<std::size_t>(components), count = values.size() / width;
  scratch_.resize(count);
  for (std::size_t c = 0; c < width; ++c) {
    for (std::size_t k = 0; k < count; ++k) scratch_[k] = values[width * k + c];
    check(ex_put_partial_var(id_, static_cast<int>(number), typeOf(entity), variable + 1 + static_cast<int>(c), id,
                             first + 1, static_cast<int64_t>(count), scratch_.data()));
  }
}

void ExodusWriter::flush() { check(ex_update(id_)); }

void ExodusWriter::close() {
  const int status = ex_close(id_);
  id_ = -1;
  check(status);
}

} // namespace sharedanalysis::solver
