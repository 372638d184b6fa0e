#include "solver/results/results.h"

#include "solver/analysis/derived_fields.h"
#include "solver/model/text.h"

#include <algorithm>
#include <array>
#include <ctime>

namespace sharedanalysis::solver {
namespace {

constexpr int brickNodes = 8, stressComponents = 6;

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

std::array<std::string, 4> thisProgram() {
  std::array<char, 16> date{}, clock{};
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  std::strftime(date.data(), date.size(), "%Y-%m-%d", &local);
  std::strftime(clock.data(), clock.size(), "%H:%M:%S", &local);
  return {"sharedanalysis-explicit", SHAREDANALYSIS_VERSION, date.data(), clock.data()};
}

int64_t largestNumber(const Mesh& mesh, const Ranks& ranks) {
  int64_t largest = 0;
  for (const auto* numbers : {&mesh.nodeNumbers, &mesh.elementNumbers})
    for (const int64_t number : *numbers) largest = std::max(largest, number);
  std::vector<int64_t> ofAll{-largest};
  ranks.smallest(ofAll);
  return -ofAll[0];
}

// The values that `give` puts for each index of the mesh.
template <class T, class Give, class Take>
void stream(const Listing& listing, int components, const Give& give, const Take& take) {
  listing.order.stream<T>(
      components,
      [&](std::size_t first, std::size_t end, T* values) {
        for (std::size_t k = first; k < end; ++k, values += components) give(listing.own[k], values);
      },
      take);
}

Listing ofThisFile(std::vector<int32_t> indices) {
  const auto count = static_cast<int64_t>(indices.size());
  return {std::move(indices), Ordered(count)};
}

template <class Keep>
std::vector<int32_t> indicesWith(int32_t count, const Keep& keep) {
  std::vector<int32_t> indices;
  for (int32_t k = 0; k < count; ++k)
    if (keep(k)) indices.push_back(k);
  return indices;
}

// What each node of a mesh has to do with the bricks of this rank and of others.
struct Touched {
  std::vector<bool> byOwn, byOthers;

  explicit Touched(const Mesh& mesh) : byOwn(mesh.nodeNumbers.size()), byOthers(mesh.nodeNumbers.size()) {
    for (int32_t e = 0; e < mesh.elements(); ++e) {
      std::vector<bool>& touched = mesh.ownsElement(e) ? byOwn : byOthers;
      for (int k = 0; k < brickNodes; ++k)
        touched[static_cast<std::size_t>(mesh.connectivity[static_cast<std::size_t>(brickNodes) * e + k])] = true;
    }
  }
};

// The owner of a node learns which files have it, and tells them.  `nodes` are those of this rank's file.
std::vector<PartOfFile::Shared> sharedNodes(const Mesh& mesh, const std::vector<int32_t>& nodes, const Touched& touched,
                                            const Ranks& ranks) {
  std::vector<std::vector<int64_t>> toOwners(static_cast<std::size_t>(ranks.size()));
  std::vector<int64_t> positions;
  for (const int32_t node : nodes) {
    positions.push_back(mesh.nodePosition(node));
    if (!mesh.ownsNode(node) || touched.byOthers[static_cast<std::size_t>(node)])
      toOwners[static_cast<std::size_t>(mesh.part->owners[static_cast<std::size_t>(node)])].push_back(positions.back());
  }
  const auto parcels = [](std::vector<std::vector<int64_t>>& lists) {
    std::vector<Parcel<int64_t>> all;
    for (std::size_t rank = 0; rank < lists.size(); ++rank)
      if (!lists[rank].empty()) all.push_back({static_cast<int32_t>(rank), std::move(lists[rank])});
    return all;
  };
  std::vector<std::pair<int64_t, int32_t>> files; // of the own nodes
  for (const Parcel<int64_t>& parcel : ranks.exchange(parcels(toOwners)))
    for (const int64_t position : parcel.values) files.emplace_back(position, parcel.rank);
  std::sort(files.begin(), files.end());
  std::vector<std::vector<int64_t>> answers(static_cast<std::size_t>(ranks.size())); // position, other file
  for (std::size_t first = 0, end = 0; first < files.size(); first = end) {
    while (end < files.size() && files[end].first == files[first].first) ++end;
    for (std::size_t a = first; a < end; ++a)
      for (std::size_t b = first; b < end; ++b)
        if (a != b) {
          auto& answer = answers[static_cast<std::size_t>(files[a].second)];
          answer.insert(answer.end(), {files[a].first, files[b].second});
        }
  }
  std::vector<std::pair<int64_t, int64_t>> found; // other file, place in this one
  for (const Parcel<int64_t>& parcel : ranks.exchange(parcels(answers)))
    for (std::size_t k = 0; k < parcel.values.size(); k += 2)
      found.emplace_back(parcel.values[k + 1], std::lower_bound(positions.begin(), positions.end(), parcel.values[k]) -
                                                   positions.begin() + 1);
  std::sort(found.begin(), found.end());
  std::vector<PartOfFile::Shared> shared;
  for (const auto& [other, place] : found) {
    if (shared.empty() || shared.back().rank != other) shared.push_back({static_cast<int32_t>(other), {}});
    shared.back().nodes.push_back(place);
  }
  return shared;
}

} // namespace

double sizeOfFields(const Mesh& mesh, const Case& definition, double times) {
  const auto values = [&](Entity entity) { return static_cast<double>(variablesOf(definition.fields, entity).size()); };
  constexpr double kModelOfNode = 3 + 1, kModelOfElement = 8; // coordinates and numbers, corners
  return sizeof(double) *
         (static_cast<double>(mesh.wholeNodes()) * (kModelOfNode + times * values(Entity::Node)) +
          static_cast<double>(mesh.wholeElements()) * (kModelOfElement + times * values(Entity::Element)));
}

ResultsFile::ResultsFile(const std::filesystem::path& name, const Mesh& mesh, const Case& definition,
                         const std::vector<std::string>& info, const Ranks& ranks, Start start)
    : mesh_(mesh), definition_(definition), ranks_(ranks) {
  if (start == Start::New) {
    if (ranks.isRoot()) {
      PartialFile::removeEarlier(name);
      removeFilesOfRanks(name);
    }
    ranks.synchronise();
  }
  if (isByRank())
    file_.emplace(fileOfRank(name, ranks.rank(), ranks.size()), start);
  else if (ranks.isRoot())
    file_.emplace(name, start);
  Contents contents = isByRank() ? contentsOfRank() : contentsOfAll();
  contents.head.title = definition.title;
  contents.head.info = info;
  contents.head.programs = {thisProgram()};
  contents.head.largestNumber = largestNumber(mesh, ranks);
  for (const Entity entity : {Entity::Model, Entity::Node, Entity::Element})
    contents.head.variables[static_cast<std::size_t>(entity)] = variablesOf(definition.fields, entity);
  if (start == Start::New) {
    if (file_) writer_ = std::make_unique<ExodusWriter>(file_->path(), contents.head);
    writeModel(contents);
  }
  if (isByRank()) nodes_ = std::move(contents.nodes);
  blocks_ = std::move(contents.blocks);
  if (start == Start::GoOn) restored_ = std::move(contents.head);
}

std::vector<const Group*> ResultsFile::groupsOf(Kind kind) const {
  std::vector<const Group*> groups;
  if (kind == Kind::Brick)
    for (const Section& section : definition_.sections) groups.push_back(mesh_.findGroup(section.group));
  else
    for (const Group& group : mesh_.groups)
      if (group.dimension < 3 && mesh_.membersOf(group).nodes > 0) groups.push_back(&group);
  return groups;
}

void ResultsFile::nameGroups(Contents& contents) const {
  const auto describe = [&](Kind kind, const std::vector<Listing>& listings, std::vector<FieldsHead::Members>& into) {
    for (const Group* group : groupsOf(kind)) into.push_back({group->name, listings[into.size()].order.whole()});
  };
  describe(Kind::Brick, contents.blocks, contents.head.blocks);
  describe(Kind::Node, contents.sets, contents.head.sets);
  contents.head.nodes = contents.nodes.order.whole();
}

// Of the file that the root writes for all.
ResultsFile::Contents ResultsFile::contentsOfAll() const {
  Contents contents{listingOf(mesh_, Kind::Node, ranks_)};
  std::vector<const std::vector<int32_t>*> elements, nodes;
  for (const Group* group : groupsOf(Kind::Brick)) elements.push_back(&group->elements);
  for (const Group* group : groupsOf(Kind::Node)) nodes.push_back(&group->nodes);
  contents.blocks = listingsOf(mesh_, Kind::Brick, elements, ranks_);
  contents.sets = listingsOf(mesh_, Kind::Node, nodes, ranks_);
  nameGroups(contents);
  return contents;
}

// Of the file of this rank: the bricks that it speaks for and their nodes, and its nodes of no brick.
ResultsFile::Contents ResultsFile::contentsOfRank() const {
  const Touched touched(mesh_);
  const auto has = [&](int32_t node) {
    const std::size_t n = static_cast<std::size_t>(node);
    return touched.byOwn[n] || (!touched.byOthers[n] && mesh_.ownsNode(node));
  };
  Contents contents{ofThisFile(indicesWith(mesh_.nodes(), has))};
  PartOfFile part{ranks_.rank(), ranks_.size(), mesh_.wholeNodes(), mesh_.wholeElements()};
  contents.nodePlaces.resize(mesh_.nodeNumbers.size());
  for (std::size_t k = 0; k < contents.nodes.own.size(); ++k)
    contents.nodePlaces[static_cast<std::size_t>(contents.nodes.own[k])] = static_cast<int64_t>(k);
  for (const Group* group : groupsOf(Kind::Brick)) {
    std::vector<int32_t> own = group->elements;
    std::erase_if(own, [&](int32_t element) { return !mesh_.ownsElement(element); });
    contents.blocks.push_back(ofThisFile(std::move(own)));
    part.blockSizes.push_back(mesh_.membersOf(*group).elements);
  }
  for (const Group* group : groupsOf(Kind::Node)) {
    std::vector<int32_t> own = group->nodes;
    std::erase_if(own, [&](int32_t node) { return !has(node); });
    contents.sets.push_back(ofThisFile(std::move(own)));
    part.setSizes.push_back(mesh_.membersOf(*group).nodes);
  }
  if (mesh_.part) part.shared = sharedNodes(mesh_, contents.nodes.own, touched, ranks_);
  std::vector<bool> isShared(contents.nodes.own.size());
  for (const PartOfFile::Shared& shared : part.shared)
    for (const int64_t node : shared.nodes) isShared[static_cast<std::size_t>(node - 1)] = true;
  int64_t number = 0; // in the file
  for (const Listing& block : contents.blocks)
    for (const int32_t element : block.own) {
      ++number;
      const auto corners = mesh_.connectivity.begin() + brickNodes * static_cast<std::ptrdiff_t>(element);
      if (std::any_of(corners, corners + brickNodes, [&](int32_t node) {
            return isShared[static_cast<std::size_t>(contents.nodePlaces[static_cast<std::size_t>(node)])];
          }))
        part.border.push_back(number);
    }
  nameGroups(contents);
  contents.head.part = std::move(part);
  return contents;
}

void ResultsFile::writeModel(const Contents& contents) {
  const auto numbered = [&](int32_t node) { // from 1
    return 1 + (isByRank() ? contents.nodePlaces[static_cast<std::size_t>(node)] : mesh_.nodePosition(node));
  };
  const auto putNumbers = [&](const Listing& listing, const std::vector<int64_t>& numbers, Entity entity,
                              int64_t before) {
    stream<int64_t>(
        listing, 1, [&](int32_t k, int64_t* number) { *number = numbers[static_cast<std::size_t>(k)]; },
        [&](int64_t first, std::span<const int64_t> some) { writer_->putNumbers(entity, before + first, some); });
  };
  putNumbers(contents.nodes, mesh_.nodeNumbers, Entity::Node, 0);
  int64_t before = 0;
  for (const Listing& block : contents.blocks) {
    putNumbers(block, mesh_.elementNumbers, Entity::Element, before);
    before += block.order.whole();
  }
  stream<double>(
      contents.nodes, 3,
      [&](int32_t node, double* x) { std::copy_n(&mesh_.coordinates[3 * static_cast<std::size_t>(node)], 3, x); },
      [&](int64_t first, std::span<const double> some) { writer_->putCoordinates(first, some); });
  for (std::size_t b = 0; b < contents.blocks.size(); ++b)
    stream<int64_t>(
        contents.blocks[b], brickNodes,
        [&](int32_t element, int64_t* corners) {
          const auto nodes = mesh_.connectivity.begin() + brickNodes * static_cast<std::ptrdiff_t>(element);
          std::transform(nodes, nodes + brickNodes, corners, numbered);
        },
        [&](int64_t first, std::span<const int64_t> some) { writer_->putConnectivity(b, first, some); });
  for (std::size_t s = 0; s < contents.sets.size(); ++s)
    stream<int64_t>(
        contents.sets[s], 1, [&](int32_t node, int64_t* number) { *number = numbered(node); },
        [&](int64_t first, std::span<const int64_t> some) { writer_->putSet(s, first, some); });
  if (writer_) writer_->flush();
}

void ResultsFile::visit(Archive& archive) {
  const int64_t files = isByRank() ? ranks_.size() : 0;
  int64_t earlier = files;
  archive(count_, lastTime_, earlier);
  if (!archive.isRestoring()) return;
  if (earlier != files)
    throw InputError(
        "the run that is to go on writes " +
        (earlier == 0 ? std::string("one file of fields")
                      : "a file of fields for each of " + counted(static_cast<std::size_t>(earlier), "rank")) +
        (isByRank() && earlier > 0 ? "; it goes on with as many ranks" : "; it goes on with the same choice of files"));
  if (!file_) return;
  writer_ = std::make_unique<ExodusWriter>(file_->path(), *restored_, count_, lastTime_);
  restored_.reset();
  if (isByRank()) checkNumbers();
}

// Other ranks may have divided the mesh otherwise.
void ResultsFile::checkNumbers() const {
  const auto check = [&](const Listing& listing, const std::vector<int64_t>& numbers, Entity entity, int64_t before) {
    stream<int64_t>(
        listing, 1, [&](int32_t k, int64_t* number) { *number = numbers[static_cast<std::size_t>(k)]; },
        [&](int64_t first, std::span<const int64_t> some) {
          if (!writer_->hasNumbers(entity, before + first, some))
            throw InputError(file_->path().string() + ": has other nodes or elements than this rank");
        });
  };
  check(nodes_, mesh_.nodeNumbers, Entity::Node, 0);
  int64_t before = 0;
  for (const Listing& block : blocks_) {
    check(block, mesh_.elementNumbers, Entity::Element, before);
    before += block.order.whole();
  }
}

void ResultsFile::write(double time, const FieldSource& fields, const Energies& energies) {
  ++count_;
  lastTime_ = time;
  nodeVariables_ = elementVariables_ = 0;
  if (writer_) writer_->beginTime(count_, time, energies.values());
  const auto has = [&](std::string_view field) { return isChosen(definition_.fields, field); };
  if (has("displacement")) writeNodeVector(fields(kDisplacement).displacement);
  if (has("velocity")) writeNodeVector(fields(kVelocity).velocity);
  if (has("reaction")) writeNodeVector(fields(kReaction).reaction);
  if (has("stress")) writeElementField(fields(kStress).stress, stressComponents);
  if (has("strain_energy_density")) writeElementField(fields(kStrainEnergy).strainEnergy, 1);
  if (has("mask")) writeElementField(fields(kMask).mask, 1);
  writeDerivedFields(fields);
  if (writer_) writer_->flush();
}

// All nodes of the rank are listed when it is time: the list would take 12 bytes of each.
void ResultsFile::writeNodeVector(std::span<const double> values) {
  stream<double>(
      isByRank() ? nodes_ : listingOf(mesh_, Kind::Node, ranks_), 3,
      [&](int32_t node, double* vector) { std::copy_n(&values[3 * static_cast<std::size_t>(node)], 3, vector); },
      [&](int64_t first, std::span<const double> some) {
        writer_->putNodeValues(count_, nodeVariables_, 3, first, some);
      });
  nodeVariables_ += 3;
}

void ResultsFile::writeElementField(std::span<const double> values, int components) {
  for (std::size_t b = 0; b < blocks_.size(); ++b)
    stream<double>(
        blocks_[b], components,
        [&](int32_t element, double* some) {
          std::copy_n(&values[static_cast<std::size_t>(components) * static_cast<std::size_t>(element)], components,
                      some);
        },
        [&](int64_t first, std::span<const double> some) {
          writer_->putElementValues(count_, elementVariables_, components, b, first, some);
        });
  elementVariables_ += components;
}

// Those of the stress, then those of the motion, a slice at a time.
void ResultsFile::writeDerivedFields(const FieldSource& source) {
  constexpr std::size_t ofMotion = 16;
  static_assert(derivedFieldNames[ofMotion] == "material_orientation_x");
  writeDerivedFields(0, ofMotion, kStress, source);
  writeDerivedFields(ofMotion, derivedFieldNames.size(), kDisplacement | kMask, source);
}

void ResultsFile::writeDerivedFields(std::size_t firstField, std::size_t endField, unsigned choice,
                                     const FieldSource& source) {
  std::vector<std::size_t> chosen;
  for (std::size_t k = firstField; k < endField; ++k)
    if (isChosen(definition_.fields, derivedFieldNames[k])) chosen.push_back(k);
  if (chosen.empty()) return;
  const Fields fields = source(choice);
  const int components = static_cast<int>(chosen.size());
  for (std::size_t b = 0; b < blocks_.size(); ++b) {
    const std::vector<int32_t>& own = blocks_[b].own;
    blocks_[b].order.stream<double>(
        components,
        [&](std::size_t first, std::size_t end, double* values) {
          const std::vector<int32_t> elements(own.begin() + static_cast<std::ptrdiff_t>(first),
                                              own.begin() + static_cast<std::ptrdiff_t>(end));
          const std::vector<double> all = derivedFields(mesh_, elements, fields);
          for (std::size_t e = 0; e < elements.size(); ++e)
            for (const std::size_t field : chosen) *values++ = all[field * elements.size() + e];
        },
        [&](int64_t first, std::span<const double> some) {
          writer_->putElementValues(count_, elementVariables_, components, b, first, some);
        });
  }
  elementVariables_ += components;
}

void ResultsFile::close() {
  if (!writer_) return;
  writer_->close();
  file_->synchronise();
}

void ResultsFile::synchronise() const {
  if (file_) file_->synchronise();
}

void ResultsFile::complete() const {
  if (isByRank()) {
    if (!ranks_.isRoot()) file_->complete();
    ranks_.synchronise();
  }
  if (ranks_.isRoot()) file_->complete();
}

} // namespace sharedanalysis::solver
