#include "solver/results/results.h"

#include "solver/analysis/derived_fields.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <ctime>
#include <exodusII.h>

namespace sharedanalysis::solver {
namespace {

constexpr int brickNodes = 8;
constexpr std::size_t stressComponents = 6;

bool isChosen(const std::vector<std::string>& fields, std::string_view variable) {
  return std::any_of(fields.begin(), fields.end(),
                     [&](const std::string& field) { return variable.starts_with(field); });
}

// The variables of nodes, elements or the model with the chosen fields, in the order in which they are written.
std::vector<std::string> variablesOf(const std::vector<std::string>& fields, Entity entity) {
  std::vector<std::string> names;
  for (const FieldName& field : fieldNames)
    if (field.entity == entity && (entity == Entity::Model || isChosen(fields, field.array)))
      names.insert(names.end(), field.components.begin(), field.components.begin() + field.count);
  if (entity == Entity::Element)
    for (const std::string_view name : derivedFieldNames)
      if (isChosen(fields, name)) names.emplace_back(name);
  return names;
}

// Exodus takes arrays of pointers to texts that it does not change.
class TextPointers {
public:
  explicit TextPointers(std::vector<std::string> texts) : texts_(std::move(texts)) {
    for (std::string& text : texts_) pointers_.push_back(text.data());
  }
  char** get() { return pointers_.data(); }
  int count() const { return static_cast<int>(pointers_.size()); }
  std::size_t longest() const {
    std::size_t length = 0;
    for (const std::string& text : texts_) length = std::max(length, text.size());
    return length;
  }

private:
  std::vector<std::string> texts_;
  std::vector<char*> pointers_;
};

std::vector<int> countedFromOne(const std::vector<int32_t>& indices) {
  std::vector<int> result(indices.begin(), indices.end());
  for (int& index : result) ++index;
  return result;
}

bool isNodeSet(const Group& group) { return group.dimension < 3 && !group.nodes.empty(); }

} // namespace

double sizeOfFields(const Mesh& mesh, const Case& definition, double times) {
  const auto values = [&](Entity entity) { return static_cast<double>(variablesOf(definition.fields, entity).size()); };
  constexpr double kModelOfNode = 3 + 1, kModelOfElement = 8; // coordinates and numbers, corners
  return sizeof(double) * (mesh.nodes() * (kModelOfNode + times * values(Entity::Node)) +
                           mesh.elements() * (kModelOfElement + times * values(Entity::Element)));
}

ResultsFile::ResultsFile(const std::filesystem::path& name, const Mesh& mesh, const Case& definition,
                         const std::vector<std::string>& info, Start start)
    : file_(name, start), mesh_(mesh), fields_(definition.fields) {
  ex_opts(0); // errors come back as codes, nothing is printed
  for (const Section& section : definition.sections)
    blocks_.push_back({section.group, mesh.findGroup(section.group)->elements});
  if (start == Start::GoOn) return;
  int memoryWord = sizeof(double), fileWord = sizeof(double);
  id_ = ex_create(file_.path().c_str(), EX_CLOBBER | EX_LARGE_MODEL, &memoryWord, &fileWord);
  check(id_);
  try {
    writeModel(mesh, definition);
    writeInfo(info);
    declareVariables();
    check(ex_update(id_));
  } catch (...) {
    ex_close(id_);
    throw;
  }
}

ResultsFile::~ResultsFile() {
  if (id_ >= 0) ex_close(id_);
}

void ResultsFile::visit(Archive& archive) {
  archive(count_, lastTime_);
  if (archive.isRestoring()) reopen();
}

void ResultsFile::reopen() {
  const auto fail = [&](const char* what) { throw InputError(file_.path().string() + ": " + what); };
  int memoryWord = sizeof(double), fileWord = sizeof(double);
  float version = 0;
  id_ = ex_open(file_.path().c_str(), EX_WRITE, &memoryWord, &fileWord, &version);
  if (id_ < 0) fail("cannot be opened as a file of fields to go on with");
  const auto has = [&](ex_entity_type type, Entity entity) {
    int count = -1;
    return ex_get_variable_param(id_, type, &count) >= 0 &&
           count == static_cast<int>(variablesOf(fields_, entity).size());
  };
  double time = 0;
  const bool fits = ex_inquire_int(id_, EX_INQ_NODES) == mesh_.nodes() &&
                    ex_inquire_int(id_, EX_INQ_ELEM) == mesh_.elements() &&
                    ex_inquire_int(id_, EX_INQ_ELEM_BLK) == static_cast<int64_t>(blocks_.size()) &&
                    has(EX_GLOBAL, Entity::Model) && has(EX_NODAL, Entity::Node) &&
                    has(EX_ELEM_BLOCK, Entity::Element) && count_ > 0 && ex_inquire_int(id_, EX_INQ_TIME) >= count_ &&
                    ex_get_time(id_, static_cast<int>(count_), &time) >= 0 && time == lastTime_;
  if (!fits) fail("is not what the restart file goes on from");
}

void ResultsFile::check(int status) const {
  if (status >= 0) return;
  const char *text = "", *routine = "";
  int code = 0;
  ex_get_err(&text, &routine, &code);
  throw WriteError(file_.path(), code > 0 ? std::strerror(code) : text);
}

void ResultsFile::writeModel(const Mesh& mesh, const Case& definition) {
  const auto nodeSets = std::count_if(mesh.groups.begin(), mesh.groups.end(), isNodeSet);
  std::size_t longestName = MAX_NAME_LENGTH;
  for (const Group& group : mesh.groups) longestName = std::max(longestName, group.name.size());
  check(ex_set_max_name_length(id_, static_cast<int>(longestName)));

  const std::string title = definition.title.substr(0, MAX_LINE_LENGTH);
  check(ex_put_init(id_, title.c_str(), 3, mesh.nodes(), mesh.elements(), static_cast<int64_t>(blocks_.size()),
                    nodeSets, 0));

  const std::size_t nodes = mesh.nodeNumbers.size();
  std::array<std::vector<double>, 3> coordinates;
  for (std::size_t c = 0; c < 3; ++c) {
    coordinates[c].resize(nodes);
    for (std::size_t n = 0; n < nodes; ++n) coordinates[c][n] = mesh.coordinates[3 * n + c];
  }
  check(ex_put_coord(id_, coordinates[0].data(), coordinates[1].data(), coordinates[2].data()));
  check(ex_put_coord_names(id_, TextPointers({"x", "y", "z"}).get()));
  const std::vector<int> nodeNumbers(mesh.nodeNumbers.begin(), mesh.nodeNumbers.end());
  check(ex_put_id_map(id_, EX_NODE_MAP, nodeNumbers.data()));

  writeBlocks(mesh);
  writeNodeSets(mesh);
}

void ResultsFile::writeBlocks(const Mesh& mesh) {
  std::vector<int> elementNumbers;
  std::vector<std::string> names;
  for (const Block& block : blocks_) {
    const ex_entity_id blockId = static_cast<ex_entity_id>(names.size() + 1);
    std::vector<int> connectivity;
    connectivity.reserve(brickNodes * block.elements.size());
    for (const int32_t element : block.elements) {
      const std::size_t e = static_cast<std::size_t>(element);
      for (std::size_t k = 0; k < brickNodes; ++k) connectivity.push_back(mesh.connectivity[brickNodes * e + k] + 1);
      elementNumbers.push_back(static_cast<int>(mesh.elementNumbers[e]));
    }
    check(ex_put_block(id_, EX_ELEM_BLOCK, blockId, "HEX8", static_cast<int64_t>(block.elements.size()), brickNodes, 0,
                       0, 0));
    check(ex_put_conn(id_, EX_ELEM_BLOCK, blockId, connectivity.data(), nullptr, nullptr));
    names.push_back(block.name);
  }
  check(ex_put_names(id_, EX_ELEM_BLOCK, TextPointers(names).get()));
  check(ex_put_id_map(id_, EX_ELEM_MAP, elementNumbers.data()));
}

void ResultsFile::writeNodeSets(const Mesh& mesh) {
  std::vector<std::string> names;
  for (const Group& group : mesh.groups) {
    if (!isNodeSet(group)) continue;
    const ex_entity_id setId = static_cast<ex_entity_id>(names.size() + 1);
    check(ex_put_set_param(id_, EX_NODE_SET, setId, static_cast<int64_t>(group.nodes.size()), 0));
    check(ex_put_set(id_, EX_NODE_SET, setId, countedFromOne(group.nodes).data(), nullptr));
    names.push_back(group.name);
  }
  if (!names.empty()) check(ex_put_names(id_, EX_NODE_SET, TextPointers(names).get()));
}

void ResultsFile::writeInfo(const std::vector<std::string>& info) {
  std::vector<std::string> lines;
  for (const std::string& line : info) lines.push_back(line.substr(0, MAX_LINE_LENGTH));
  TextPointers texts(lines);
  check(ex_put_info(id_, texts.count(), texts.get()));

  std::array<char, 16> date{}, clock{};
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  std::strftime(date.data(), date.size(), "%Y-%m-%d", &local);
  std::strftime(clock.data(), clock.size(), "%H:%M:%S", &local);
  TextPointers record({"sharedanalysis-explicit", SHAREDANALYSIS_VERSION, date.data(), clock.data()});
  char* records[1][4];
  std::copy_n(record.get(), 4, records[0]);
  check(ex_put_qa(id_, 1, records));
}

void ResultsFile::declareVariables() {
  const auto declare = [&](ex_entity_type type, std::vector<std::string> names) {
    if (names.empty()) return;
    TextPointers texts(std::move(names));
    check(ex_put_variable_param(id_, type, texts.count()));
    check(ex_put_variable_names(id_, type, texts.count(), texts.get()));
  };
  declare(EX_GLOBAL, variablesOf(fields_, Entity::Model));
  declare(EX_NODAL, variablesOf(fields_, Entity::Node));
  const std::vector<std::string> elementNames = variablesOf(fields_, Entity::Element);
  declare(EX_ELEM_BLOCK, elementNames);
  if (elementNames.empty()) return;
  // every block has every variable
  std::vector<int> table(blocks_.size() * elementNames.size(), 1);
  check(ex_put_truth_table(id_, EX_ELEM_BLOCK, static_cast<int>(blocks_.size()), static_cast<int>(elementNames.size()),
                           table.data()));
}

void ResultsFile::write(double time, const Fields& fields, const Energies& energies) {
  ++count_;
  lastTime_ = time;
  nodeVariables_ = elementVariables_ = 0;
  check(ex_put_time(id_, count(), &time));
  const auto globals = energies.values();
  check(ex_put_var(id_, count(), EX_GLOBAL, 1, 1, static_cast<int64_t>(globals.size()), globals.data()));
  writeNodeVector("displacement", fields.displacement);
  writeNodeVector("velocity", fields.velocity);
  writeNodeVector("reaction", fields.reaction);
  writeElementField("stress", fields.stress, stressComponents);
  writeElementField("strain_energy_density", fields.strainEnergy, 1);
  writeElementField("mask", fields.mask, 1);
  writeDerivedFields(fields);
  check(ex_update(id_));
}

void ResultsFile::writeNodeVector(std::string_view field, std::span<const double> values) {
  if (!isChosen(fields_, field)) return;
  const std::size_t nodes = values.size() / 3;
  scratch_.resize(nodes);
  for (std::size_t c = 0; c < 3; ++c) {
    for (std::size_t n = 0; n < nodes; ++n) scratch_[n] = values[3 * n + c];
    check(ex_put_var(id_, count(), EX_NODAL, ++nodeVariables_, 1, static_cast<int64_t>(nodes), scratch_.data()));
  }
}

void ResultsFile::writeElementField(std::string_view field, std::span<const double> values, std::size_t components) {
  if (!isChosen(fields_, field)) return;
  for (std::size_t c = 0; c < components; ++c) {
    ++elementVariables_;
    for (std::size_t b = 0; b < blocks_.size(); ++b) {
      const std::vector<int32_t>& elements = blocks_[b].elements;
      scratch_.resize(elements.size());
      for (std::size_t k = 0; k < elements.size(); ++k)
        scratch_[k] = values[components * static_cast<std::size_t>(elements[k]) + c];
      check(ex_put_var(id_, count(), EX_ELEM_BLOCK, elementVariables_, static_cast<ex_entity_id>(b + 1),
                       static_cast<int64_t>(elements.size()), scratch_.data()));
    }
  }
}

void ResultsFile::writeDerivedFields(const Fields& fields) {
  if (std::none_of(derivedFieldNames.begin(), derivedFieldNames.end(),
                   [&](auto name) { return isChosen(fields_, name); }))
    return;
  for (std::size_t b = 0; b < blocks_.size(); ++b) {
    const std::size_t count = blocks_[b].elements.size();
    const std::vector<double> values = derivedFields(mesh_, blocks_[b].elements, fields);
    int variable = elementVariables_;
    for (std::size_t k = 0; k < derivedFieldNames.size(); ++k)
      if (isChosen(fields_, derivedFieldNames[k]))
        check(ex_put_var(id_, this->count(), EX_ELEM_BLOCK, ++variable, static_cast<ex_entity_id>(b + 1),
                         static_cast<int64_t>(count), values.data() + k * count));
  }
}

void ResultsFile::close() {
  const int status = ex_close(id_);
  id_ = -1;
  check(status);
  file_.synchronise();
}

} // namespace sharedanalysis::solver
