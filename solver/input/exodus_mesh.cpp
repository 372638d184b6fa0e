#include "solver/input/exodus_mesh.h"

#include "solver/input/brick_shape.h"
#include "solver/input/exodus_file.h"
#include "solver/model/model.h"
#include "solver/parallel/faults.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>
#include <optional>
#include <span>

namespace sharedanalysis::solver {
namespace {

using Integers = std::vector<int64_t>;
constexpr int64_t nowhere = -1; // the place of what is left out

std::size_t asSize(int64_t count) { return static_cast<std::size_t>(count); }

void makeUnique(Integers& values) {
  std::sort(values.begin(), values.end());
  values.erase(std::unique(values.begin(), values.end()), values.end());
}

// Entities that the ranks have shares of.
struct Shares {
  const Ranks& ranks;
  int64_t count;

  int64_t first() const { return firstOfShare(count, ranks.rank(), ranks.size()); }
  int64_t end() const { return firstOfShare(count, ranks.rank() + 1, ranks.size()); }
  int32_t owner(int64_t place) const { return shareOf(place, count, ranks.size()); }

  // Each place once, increasing; those of the own share, which most are of, without sorting them.
  Integers once(std::span<const int64_t> places) const {
    const int64_t low = first(), high = end();
    std::vector<bool> isHere(asSize(high - low), false);
    Integers result, above;
    for (const int64_t place : places)
      if (place >= low && place < high)
        isHere[asSize(place - low)] = true;
      else
        (place < low ? result : above).push_back(place);
    makeUnique(result);
    makeUnique(above);
    for (int64_t place = low; place < high; ++place)
      if (isHere[asSize(place - low)]) result.push_back(place);
    result.insert(result.end(), above.begin(), above.end());
    return result;
  }

  // Each value to the rank that has the entity which `placeOf` says.
  template <class T, class PlaceOf>
  std::vector<T> toOwners(std::vector<T> values, const PlaceOf& placeOf) const {
    if (!ranks.areSeveral()) return values;
    std::sort(values.begin(), values.end(), [&](const T& a, const T& b) { return placeOf(a) < placeOf(b); });
    std::vector<Parcel<T>> parcels;
    for (const T& value : values) {
      const int32_t rank = owner(placeOf(value));
      if (parcels.empty() || parcels.back().rank != rank) parcels.push_back({rank});
      parcels.back().values.push_back(value);
    }
    values.clear();
    for (const Parcel<T>& parcel : ranks.exchange(parcels))
      values.insert(values.end(), parcel.values.begin(), parcel.values.end());
    return values;
  }

  // What the owners answer about entities, which are increasing.
  template <class T, class Answer>
  std::vector<T> lookUp(const Integers& places, const Answer& answer) const {
    std::vector<Parcel<int64_t>> questions;
    for (const int64_t place : places) {
      const int32_t rank = owner(place);
      if (questions.empty() || questions.back().rank != rank) questions.push_back({rank});
      questions.back().values.push_back(place);
    }
    std::vector<Parcel<T>> answers;
    for (const Parcel<int64_t>& asked : ranks.exchange(questions)) {
      Parcel<T>& parcel = answers.emplace_back(Parcel<T>{asked.rank});
      for (const int64_t place : asked.values) parcel.values.push_back(answer(place));
    }
    std::vector<T> all;
    for (const Parcel<T>& parcel : ranks.exchange(answers))
      all.insert(all.end(), parcel.values.begin(), parcel.values.end());
    return all;
  }
};

// The places of entities by their numbers.
struct Places {
  Integers own;          // of the share of the file, unless they are those of the file
  int64_t count = 0;     // of all that have one
  bool asInFile = false; // the places are those of the file
};

struct Numbered {
  int64_t number, index;
};

// Splits numbers into ranges, one for each rank, of about as many: every rank's samples are sorted together.
Integers splitters(const Ranks& ranks, const std::vector<Numbered>& sorted) {
  constexpr std::size_t samples = 32;
  Integers own;
  for (std::size_t k = 0; k < samples && !sorted.empty(); ++k)
    own.push_back(sorted[k * sorted.size() / samples].number);
  Integers all = ranks.joined(own), result;
  std::sort(all.begin(), all.end());
  for (int32_t rank = 1; rank < ranks.size(); ++rank)
    result.push_back(all[asSize(firstOfShare(static_cast<int64_t>(all.size()), rank, ranks.size()))]);
  return result;
}

class ExodusMesh {
public:
  ExodusMesh(const std::filesystem::path& file, const Ranks& ranks) : file_(file), ranks_(ranks) {}

  MeshSlice slice() {
    Faults faults;
    try {
      share_ = readExodus(file_, ranks_.rank(), ranks_.size());
    } catch (const InputError& error) {
      faults.add(0, error.what());
    }
    faults.throwFirst(ranks_);
    inFile_.emplace(Shares{ranks_, share_.nodes});
    bricksInFile_.emplace(Shares{ranks_, share_.elements});
    checkNumbers();
    bricks_ = placesOf(share_.elementNumbers, std::vector<bool>(share_.elementNumbers.size(), true), *bricksInFile_,
                       "bricks");
    nodes_ = placesOf(share_.nodeNumbers, usedNodes(), *inFile_, "nodes");
    result_.nodes = nodes_.count, result_.elements = bricks_.count;
    inMesh_.emplace(Shares{ranks_, nodes_.count});
    storeNodes();
    storeBricks();
    checkTwins();
    checkCorners();
    storeGroups();
    return std::move(result_);
  }

private:
  std::string text(const std::string& what) const { return file_.string() + ": " + what; }

  // The first of own values that a test finds something wrong with.
  template <class Number>
  void expect(const std::vector<Number>& values, int64_t first, const std::function<bool(Number)>& isSound,
              const std::function<std::string(std::size_t)>& what) const {
    Faults faults;
    const auto wrong = std::find_if_not(values.begin(), values.end(), isSound);
    if (wrong != values.end())
      faults.add(first + (wrong - values.begin()), text(what(static_cast<std::size_t>(wrong - values.begin()))));
    faults.throwFirst(ranks_);
  }

  void checkNumbers() const {
    const auto isPositive = [](int64_t number) { return number > 0; };
    expect<int64_t>(share_.nodeNumbers, inFile_->first(), isPositive, [&](std::size_t k) {
      return "a node has the number " + std::to_string(share_.nodeNumbers[k]) + ", expected positive numbers";
    });
    expect<int64_t>(share_.elementNumbers, bricksInFile_->first(), isPositive, [&](std::size_t k) {
      return "a brick has the number " + std::to_string(share_.elementNumbers[k]) + ", expected positive numbers";
    });
    expect<double>(
        share_.coordinates, 3 * inFile_->first(), [](double x) { return std::isfinite(x); },
        [&](std::size_t k) {
          return "a coordinate of node " + std::to_string(share_.nodeNumbers[k / 3]) + " is not a finite number";
        });
    const auto isNode = [&](int64_t node) { return node >= 0 && node < share_.nodes; };
    const auto isBrick = [&](int64_t brick) { return brick >= 0 && brick < share_.elements; };
    expect<int64_t>(share_.connectivity, 8 * bricksInFile_->first(), isNode, [&](std::size_t k) {
      return "a corner of brick " + std::to_string(share_.elementNumbers[k / 8]) + " is not one of the " +
             std::to_string(share_.nodes) + " nodes";
    });
    const auto expectMembers = [&](const std::vector<ExodusShare::Collection>& sets,
                                   const std::function<bool(int64_t)>& isMember) {
      for (const ExodusShare::Collection& set : sets) {
        expect<int64_t>(set.entries, 0, isMember,
                        [&](std::size_t) { return "a member of set \"" + set.name + "\" is not in the mesh"; });
        expect<int64_t>(
            set.sides, 0, [](int64_t side) { return side >= 1 && side <= 6; },
            [&](std::size_t k) {
              return "set \"" + set.name + "\" has a side " + std::to_string(set.sides[k]) + ", expected 1 to 6";
            });
      }
    };
    expectMembers(share_.nodeSets, isNode);
    expectMembers(share_.sideSets, isBrick);
    Faults faults;
    for (std::size_t e = 0; e < share_.elementNumbers.size(); ++e) {
      Integers corners(share_.connectivity.begin() + static_cast<std::ptrdiff_t>(8 * e),
                       share_.connectivity.begin() + static_cast<std::ptrdiff_t>(8 * e + 8));
      makeUnique(corners);
      if (corners.size() < 8)
        faults.add(bricksInFile_->first() + static_cast<int64_t>(e),
                   text("brick " + std::to_string(share_.elementNumbers[e]) + " has the same node at two corners"));
    }
    faults.throwFirst(ranks_);
  }

  // Of the share of nodes, those of bricks.
  std::vector<bool> usedNodes() const {
    Integers corners = inFile_->once(share_.connectivity);
    std::vector<bool> used(share_.nodeNumbers.size(), false);
    for (const int64_t node : inFile_->toOwners(std::move(corners), [](int64_t place) { return place; }))
      used[asSize(node - inFile_->first())] = true;
    return used;
  }

  // Whether the numbers of the file increase from its beginning to its end, and none is left out.
  bool isInOrder(const Integers& numbers, const std::vector<bool>& used) const {
    const bool own = std::find(used.begin(), used.end(), false) == used.end() &&
                     std::adjacent_find(numbers.begin(), numbers.end(), std::greater_equal<>()) == numbers.end();
    const Integers ends = ranks_.joined(numbers.empty() ? Integers{} : Integers{numbers.front(), numbers.back()});
    bool between = true;
    for (std::size_t k = 2; k < ends.size(); k += 2) between = between && ends[k - 1] < ends[k];
    return ranks_.allAgree(own && between);
  }

  Places placesOf(const Integers& numbers, const std::vector<bool>& used, const Shares& inFile,
                  const char* what) const {
    if (isInOrder(numbers, used)) return {{}, inFile.count, true};
    std::vector<Numbered> sorted;
    for (std::size_t k = 0; k < numbers.size(); ++k)
      if (used[k]) sorted.push_back({numbers[k], inFile.first() + static_cast<int64_t>(k)});
    const auto byNumber = [](const Numbered& a, const Numbered& b) { return a.number < b.number; };
    std::sort(sorted.begin(), sorted.end(), byNumber);
    const Integers ends = splitters(ranks_, sorted);
    std::vector<Parcel<Numbered>> parcels;
    for (const Numbered& one : sorted) {
      const auto rank = static_cast<int32_t>(std::upper_bound(ends.begin(), ends.end(), one.number) - ends.begin());
      if (parcels.empty() || parcels.back().rank != rank) parcels.push_back({rank});
      parcels.back().values.push_back(one);
    }
    sorted.clear();
    for (const Parcel<Numbered>& parcel : ranks_.exchange(parcels))
      sorted.insert(sorted.end(), parcel.values.begin(), parcel.values.end());
    std::sort(sorted.begin(), sorted.end(), byNumber);
    Faults faults;
    const auto twin = std::adjacent_find(sorted.begin(), sorted.end(),
                                         [](const Numbered& a, const Numbered& b) { return a.number == b.number; });
    if (twin != sorted.end())
      faults.add(twin->number, text(std::string("two ") + what + " have the number " + std::to_string(twin->number)));
    faults.throwFirst(ranks_);

    const Integers counts = ranks_.joined(Integers{static_cast<int64_t>(sorted.size())});
    int64_t place = std::accumulate(counts.begin(), counts.begin() + ranks_.rank(), int64_t{0});
    for (Numbered& one : sorted) one.number = place++;
    Places places{Integers(numbers.size(), nowhere), std::accumulate(counts.begin(), counts.end(), int64_t{0})};
    for (const Numbered& one : inFile.toOwners(std::move(sorted), [](const Numbered& n) { return n.index; }))
      places.own[asSize(one.index - inFile.first())] = one.number;
    return places;
  }

  // The places in the mesh of nodes of the file; `nowhere` for a node of no brick.
  void toPlaces(Integers& indices) const {
    if (nodes_.asInFile) return;
    const Integers asked = inFile_->once(indices);
    const Integers places =
        inFile_->lookUp<int64_t>(asked, [&](int64_t index) { return nodes_.own[asSize(index - inFile_->first())]; });
    for (int64_t& index : indices)
      index = places[static_cast<std::size_t>(std::lower_bound(asked.begin(), asked.end(), index) - asked.begin())];
  }

  void storeNodes() {
    result_.firstNode = inMesh_->first();
    if (nodes_.asInFile) {
      result_.nodeNumbers = std::move(share_.nodeNumbers);
      result_.coordinates = std::move(share_.coordinates);
      return;
    }
    struct Node {
      int64_t place, number;
      std::array<double, 3> x;
    };
    std::vector<Node> nodes;
    for (std::size_t k = 0; k < nodes_.own.size(); ++k)
      if (nodes_.own[k] != nowhere)
        nodes.push_back({nodes_.own[k],
                         share_.nodeNumbers[k],
                         {share_.coordinates[3 * k], share_.coordinates[3 * k + 1], share_.coordinates[3 * k + 2]}});
    nodes = inMesh_->toOwners(std::move(nodes), [](const Node& node) { return node.place; });
    std::sort(nodes.begin(), nodes.end(), [](const Node& a, const Node& b) { return a.place < b.place; });
    for (const Node& node : nodes) {
      result_.nodeNumbers.push_back(node.number);
      result_.coordinates.insert(result_.coordinates.end(), node.x.begin(), node.x.end());
    }
  }

  void storeBricks() {
    result_.elementNumbers = std::move(share_.elementNumbers);
    result_.connectivity = std::move(share_.connectivity);
    toPlaces(result_.connectivity);
    result_.elementPositions = bricks_.own;
    if (!bricks_.asInFile) return;
    result_.elementPositions.resize(result_.elementNumbers.size());
    std::iota(result_.elementPositions.begin(), result_.elementPositions.end(), bricksInFile_->first());
  }

  // Bricks on the same eight nodes, whatever their order.
  void checkTwins() const {
    struct Brick {
      std::array<int64_t, 8> corners;
      int64_t number;
      bool operator<(const Brick& b) const { return corners != b.corners ? corners < b.corners : number < b.number; }
    };
    std::vector<Brick> bricks(result_.elementNumbers.size());
    for (std::size_t e = 0; e < bricks.size(); ++e) {
      bricks[e].number = result_.elementNumbers[e];
      std::copy_n(&result_.connectivity[8 * e], 8, bricks[e].corners.begin());
      std::sort(bricks[e].corners.begin(), bricks[e].corners.end());
    }
    bricks = inMesh_->toOwners(std::move(bricks), [](const Brick& brick) { return brick.corners[0]; });
    std::sort(bricks.begin(), bricks.end());
    Faults faults;
    for (std::size_t k = 1; k < bricks.size(); ++k)
      if (bricks[k].corners == bricks[k - 1].corners)
        faults.add(bricks[k - 1].number, text("bricks " + std::to_string(bricks[k - 1].number) + " and " +
                                              std::to_string(bricks[k].number) + " have the same nodes"));
    faults.throwFirst(ranks_);
  }

  void checkCorners() const {
    struct Node {
      int64_t number;
      std::array<double, 3> x;
    };
    const Integers places = inMesh_->once(result_.connectivity);
    const std::vector<Node> nodes = inMesh_->lookUp<Node>(places, [&](int64_t place) {
      const std::size_t k = asSize(place - result_.firstNode);
      const double* x = &result_.coordinates[3 * k];
      return Node{result_.nodeNumbers[k], {x[0], x[1], x[2]}};
    });
    Faults faults;
    for (std::size_t e = 0; e < result_.elementNumbers.size(); ++e) {
      BrickCorners corners;
      std::array<int64_t, 8> numbers{};
      for (std::size_t c = 0; c < 8; ++c) {
        const auto found = std::lower_bound(places.begin(), places.end(), result_.connectivity[8 * e + c]);
        const Node& node = nodes[static_cast<std::size_t>(found - places.begin())];
        corners[c] = node.x, numbers[c] = node.number;
      }
      const std::optional<std::size_t> turned = turnedCorner(corners);
      if (turned)
        faults.add(result_.elementPositions[e],
                   text("brick " + std::to_string(result_.elementNumbers[e]) + " is turned over at its node " +
                        std::to_string(numbers[*turned])));
    }
    faults.throwFirst(ranks_);
  }

  struct GroupNode {
    std::size_t group;
    int64_t place;
    bool operator<(const GroupNode& b) const { return group != b.group ? group < b.group : place < b.place; }
    bool operator==(const GroupNode& b) const { return group == b.group && place == b.place; }
  };

  void storeGroups() {
    for (const auto& [sets, dimension] :
         {std::pair(&share_.nodeSets, 0), std::pair(&share_.sideSets, 2), std::pair(&share_.blocks, 3)})
      for (const ExodusShare::Collection& one : *sets) {
        if (std::find(result_.groupNames.begin(), result_.groupNames.end(), one.name) != result_.groupNames.end())
          throw InputError(text("two groups have the name \"" + one.name + "\"")); // on all ranks
        result_.groupNames.push_back(one.name);
        result_.groupDimensions.push_back(dimension);
      }
    result_.groups.resize(result_.groupNames.size());
    std::vector<GroupNode> nodes;
    std::size_t group = 0;
    for (ExodusShare::Collection& set : share_.nodeSets) {
      toPlaces(set.entries);
      makeUnique(set.entries);
      for (const int64_t place : set.entries)
        if (place != nowhere) nodes.push_back({group, place});
      ++group;
    }
    storeSides(group, nodes);
    group += share_.sideSets.size();
    storeBlocks(group, nodes);
    // the owner of a node gives it once
    nodes = inMesh_->toOwners(std::move(nodes), [](const GroupNode& node) { return node.place; });
    std::sort(nodes.begin(), nodes.end());
    nodes.erase(std::unique(nodes.begin(), nodes.end()), nodes.end());
    for (const GroupNode& node : nodes) result_.groups[node.group].nodes.push_back(node.place);
  }

  // The rank that has a brick knows the corners of its sides.
  void storeSides(std::size_t group, std::vector<GroupNode>& nodes) {
    static constexpr std::size_t corners[6][4] = {{0, 1, 5, 4}, {1, 2, 6, 5}, {2, 3, 7, 6},
                                                  {0, 4, 7, 3}, {0, 3, 2, 1}, {4, 5, 6, 7}};
    struct Side {
      std::size_t group;
      int64_t brick, side;
      auto key() const { return std::tuple(group, brick, side); }
    };
    std::vector<Side> sides;
    for (const ExodusShare::Collection& set : share_.sideSets) {
      for (std::size_t k = 0; k < set.entries.size(); ++k) sides.push_back({group, set.entries[k], set.sides[k] - 1});
      ++group;
    }
    sides = bricksInFile_->toOwners(std::move(sides), [](const Side& side) { return side.brick; });
    std::sort(sides.begin(), sides.end(), [](const Side& a, const Side& b) { return a.key() < b.key(); });
    sides.erase(
        std::unique(sides.begin(), sides.end(), [](const Side& a, const Side& b) { return a.key() == b.key(); }),
        sides.end());
    for (const Side& side : sides)
      for (const std::size_t corner : corners[side.side]) {
        const int64_t place = result_.connectivity[8 * asSize(side.brick - bricksInFile_->first()) + corner];
        result_.groups[side.group].faces.push_back(place);
        nodes.push_back({side.group, place});
      }
  }

  void storeBlocks(std::size_t group, std::vector<GroupNode>& nodes) {
    const int64_t first = bricksInFile_->first(), end = first + static_cast<int64_t>(result_.elementNumbers.size());
    int64_t begin = 0;
    for (const ExodusShare::Collection& block : share_.blocks) {
      const int64_t from = std::clamp(begin, first, end), to = std::clamp(begin + block.count, first, end);
      const auto own = std::span(result_.elementPositions).subspan(asSize(from - first), asSize(to - from));
      result_.groups[group].elements.assign(own.begin(), own.end());
      const auto corners = std::span(result_.connectivity).subspan(8 * asSize(from - first), 8 * asSize(to - from));
      if (from < to)
        for (const int64_t place : inMesh_->once(corners)) nodes.push_back({group, place});
      begin += block.count;
      ++group;
    }
  }

  std::filesystem::path file_;
  const Ranks& ranks_;
  ExodusShare share_;
  std::optional<Shares> inFile_, bricksInFile_, inMesh_; // who has what
  Places nodes_, bricks_;
  MeshSlice result_;
};

} // namespace

MeshSlice sliceOfExodus(const std::filesystem::path& file, const Ranks& ranks) {
  return ExodusMesh(file, ranks).slice();
}

} // namespace sharedanalysis::solver
