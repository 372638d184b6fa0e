#include "solver/parallel/distribution.h"

#include "communicator.h"
#include "solver/model/memory.h"

#include <algorithm>
#include <limits>
#include <map>
#include <numeric>
#include <span>
#include <utility>

namespace sharedanalysis::solver {
namespace {

using Places = std::vector<int64_t>;
constexpr std::size_t kCorners = 8;

void sortUnique(Places& places) {
  std::sort(places.begin(), places.end());
  places.erase(std::unique(places.begin(), places.end()), places.end());
}

// Place of a value among increasing ones, which have it.
int32_t indexIn(const Places& sorted, int64_t place) {
  return static_cast<int32_t>(std::lower_bound(sorted.begin(), sorted.end(), place) - sorted.begin());
}

// Answers of the ranks that hold nodes in their slices, to questions about nodes by their places.
class Directory {
public:
  Directory(const MeshSlice& slice, const Ranks& ranks) : slice_(slice), ranks_(ranks) {}

  // The parcels of increasing places, by the rank that holds them.
  std::vector<Parcel<int64_t>> sorted(const Places& places) const {
    std::vector<Parcel<int64_t>> parcels;
    for (const int64_t place : places) {
      const int32_t holder = shareOf(place, slice_.nodes, ranks_.size());
      if (parcels.empty() || parcels.back().rank != holder) parcels.push_back({holder});
      parcels.back().values.push_back(place);
    }
    return parcels;
  }
  // One answer for each of the places, which increase; `answer(asker, index)` is of the node of a rank's slice.
  template <class T, class Answer>
  std::vector<T> ask(const Places& places, Answer answer) const {
    std::vector<Parcel<T>> answers;
    for (const Parcel<int64_t>& asked : ranks_.exchange(sorted(places))) {
      answers.push_back({asked.rank});
      for (const int64_t place : asked.values)
        answers.back().values.push_back(answer(asked.rank, static_cast<std::size_t>(place - slice_.firstNode)));
    }
    std::vector<T> all;
    all.reserve(places.size());
    for (Parcel<T>& parcel : ranks_.exchange(answers)) { // by rank, and so by place
      all.insert(all.end(), parcel.values.begin(), parcel.values.end());
      release(parcel.values);
    }
    return all;
  }

private:
  const MeshSlice& slice_;
  const Ranks& ranks_;
};

// A rank for each item; the items to their ranks, each once.
template <class T, class Destinations>
std::vector<T> sendEach(const Ranks& ranks, std::size_t items, Destinations destinations) {
  std::map<int32_t, std::vector<T>> parcels;
  for (std::size_t k = 0; k < items; ++k)
    destinations(k, [&](int32_t rank) -> std::vector<T>& { return parcels[rank]; });
  std::vector<Parcel<T>> out;
  for (auto& [rank, values] : parcels) out.push_back({rank, std::move(values)});
  parcels.clear();
  std::vector<Parcel<T>> in = ranks.exchange(out);
  out.clear();
  std::vector<T> all;
  for (Parcel<T>& parcel : in) {
    all.insert(all.end(), parcel.values.begin(), parcel.values.end());
    release(parcel.values);
  }
  return all;
}

// The rank of each node of the slice.
std::vector<int32_t> ownersOf(const MeshSlice& slice, const Ranks& ranks) {
  std::vector<int32_t> owners;
  ranks.synchronise(); // the partition cannot be told of failures
  const bool isDone = host::transport()->partition(slice.coordinates, owners);
  if (!ranks.allAgree(isDone)) // ranges of equal length will do where there is no better partition
    owners.assign(slice.nodeNumbers.size(), ranks.rank());
  return owners;
}

class Distribution {
public:
  Distribution(MeshSlice slice, const Ranks& ranks)
      : slice_(std::move(slice)), ranks_(ranks), directory_(slice_, ranks), owners_(ownersOf(slice_, ranks)) {}

  Mesh run() {
    mesh_.part.emplace();
    part().rank = ranks_.rank();
    part().nodes = slice_.nodes;
    part().elements = slice_.elements;
    setBounds();
    sendBricks();
    takeNodes();
    nameGroups();
    sendGroupNodes();
    sendGroupElements();
    sendGroupFaces();
    return std::move(mesh_);
  }

private:
  struct Brick {
    int64_t place, number;
    std::array<int64_t, kCorners> corners; // places
  };
  // A member of a group, by its place.
  struct Member {
    int64_t group, place;
    bool operator<(const Member& other) const { return std::pair(group, place) < std::pair(other.group, other.place); }
  };
  struct Face {
    int64_t group;
    std::array<int64_t, 4> corners;
  };

  MeshPart& part() { return *mesh_.part; }

  void setBounds() {
    std::vector<double> bounds(6, std::numeric_limits<double>::infinity()); // low, and high with the other sign
    for (std::size_t k = 0; k < slice_.coordinates.size(); ++k) {
      bounds[k % 3] = std::min(bounds[k % 3], slice_.coordinates[k]);
      bounds[3 + k % 3] = std::min(bounds[3 + k % 3], -slice_.coordinates[k]);
    }
    ranks_.smallest(bounds);
    for (std::size_t c = 0; c < 3; ++c) {
      part().low[c] = bounds[c];
      part().high[c] = -bounds[3 + c];
    }
  }

  // Each to the owners of its corners.
  void sendBricks() {
    Places corners = slice_.connectivity;
    sortUnique(corners);
    const std::vector<int32_t> owners =
        directory_.ask<int32_t>(corners, [&](int32_t, std::size_t node) { return owners_[node]; });
    std::vector<Brick> bricks = sendEach<Brick>(ranks_, slice_.elementPositions.size(), [&](std::size_t e, auto&& to) {
      Brick brick{slice_.elementPositions[e], slice_.elementNumbers[e], {}};
      std::copy_n(slice_.connectivity.begin() + static_cast<std::ptrdiff_t>(kCorners * e), kCorners,
                  brick.corners.begin());
      std::array<int32_t, kCorners> ranks;
      for (std::size_t c = 0; c < kCorners; ++c)
        ranks[c] = owners[static_cast<std::size_t>(indexIn(corners, brick.corners[c]))];
      std::sort(ranks.begin(), ranks.end());
      for (auto rank = ranks.begin(), end = std::unique(ranks.begin(), ranks.end()); rank != end; ++rank)
        to(*rank).push_back(brick);
    });
    release(slice_.connectivity);
    std::sort(bricks.begin(), bricks.end(), [](const Brick& a, const Brick& b) { return a.place < b.place; });
    for (const Brick& brick : bricks) {
      part().elementPositions.push_back(brick.place);
      mesh_.elementNumbers.push_back(brick.number);
      part().nodePositions.insert(part().nodePositions.end(), brick.corners.begin(), brick.corners.end());
    }
    // nodes of no brick belong to somebody, too
    const Places bare = sendEach<int64_t>(ranks_, owners_.size(), [&](std::size_t node, auto&& to) {
      to(owners_[node]).push_back(slice_.firstNode + static_cast<int64_t>(node));
    });
    part().nodePositions.insert(part().nodePositions.end(), bare.begin(), bare.end());
    sortUnique(part().nodePositions);
    part().nodePositions.shrink_to_fit();
    mesh_.connectivity.reserve(kCorners * bricks.size());
    for (const Brick& brick : bricks)
      for (const int64_t corner : brick.corners) mesh_.connectivity.push_back(indexIn(part().nodePositions, corner));
  }

  // What is known of the nodes; who has them is remembered for the groups.
  void takeNodes() {
    struct Node {
      int64_t number;
      std::array<double, 3> coordinates;
      int32_t owner;
    };
    const std::vector<Node> nodes = directory_.ask<Node>(part().nodePositions, [&](int32_t asker, std::size_t node) {
      holders_.emplace_back(node, asker);
      const double* x = &slice_.coordinates[3 * node];
      return Node{slice_.nodeNumbers[node], {x[0], x[1], x[2]}, owners_[node]};
    });
    std::sort(holders_.begin(), holders_.end());
    mesh_.coordinates.reserve(3 * nodes.size());
    for (const Node& node : nodes) {
      mesh_.nodeNumbers.push_back(node.number);
      mesh_.coordinates.insert(mesh_.coordinates.end(), node.coordinates.begin(), node.coordinates.end());
      part().owners.push_back(node.owner);
    }
    release(slice_.coordinates);
    release(slice_.nodeNumbers);
  }

  void nameGroups() {
    std::vector<int64_t> counts;
    for (std::size_t g = 0; g < slice_.groupNames.size(); ++g) {
      mesh_.groups.push_back(
          {.name = slice_.groupNames[g], .dimension = slice_.groupDimensions[g], .nodes = {}, .elements = {}});
      const MeshSlice::Members& members = slice_.groups[g];
      counts.insert(counts.end(),
                    {static_cast<int64_t>(members.nodes.size()), static_cast<int64_t>(members.elements.size()),
                     static_cast<int64_t>(members.faces.size() / 4)});
    }
    ranks_.sum(counts);
    for (std::size_t g = 0; g < mesh_.groups.size(); ++g)
      part().groups.push_back({counts[3 * g], counts[3 * g + 1], counts[3 * g + 2]});
  }

  // Members that any rank may give, at the ranks that hold their places in their slices; there `to` gets the rank of each that has it.
  template <class Visit>
  std::vector<Member> byHolder(Visit visit, int64_t whole) const {
    return sendEach<Member>(ranks_, slice_.groups.size(), [&](std::size_t g, auto&& to) {
      for (const int64_t place : visit(slice_.groups[g]))
        to(shareOf(place, whole, ranks_.size())).push_back({static_cast<int64_t>(g), place});
    });
  }

  void sendGroupNodes() {
    const std::vector<Member> held =
        byHolder([](const MeshSlice::Members& m) -> const Places& { return m.nodes; }, slice_.nodes);
    std::vector<Member> own = sendEach<Member>(ranks_, held.size(), [&](std::size_t k, auto&& to) {
      const auto node = static_cast<std::size_t>(held[k].place - slice_.firstNode);
      auto holder = std::lower_bound(holders_.begin(), holders_.end(), std::pair(node, int32_t{0}));
      for (; holder != holders_.end() && holder->first == node; ++holder) to(holder->second).push_back(held[k]);
    });
    std::sort(own.begin(), own.end());
    for (const Member& member : own) group(member.group).nodes.push_back(indexIn(part().nodePositions, member.place));
  }

  // Bricks stay by their places: the ranks that have them ask for their groups.
  void sendGroupElements() {
    std::vector<Member> held =
        byHolder([](const MeshSlice::Members& m) -> const Places& { return m.elements; }, slice_.elements);
    std::sort(held.begin(), held.end(), [](const Member& a, const Member& b) { return a.place < b.place; });
    const Places asked = part().elementPositions;
    std::vector<Parcel<int64_t>> questions;
    for (const int64_t place : asked) {
      const int32_t holder = shareOf(place, slice_.elements, ranks_.size());
      if (questions.empty() || questions.back().rank != holder) questions.push_back({holder});
      questions.back().values.push_back(place);
    }
    std::vector<Parcel<Member>> answers;
    for (const Parcel<int64_t>& question : ranks_.exchange(questions)) {
      answers.push_back({question.rank});
      for (const int64_t place : question.values) {
        auto member = std::lower_bound(held.begin(), held.end(), place,
                                       [](const Member& one, int64_t wanted) { return one.place < wanted; });
        for (; member != held.end() && member->place == place; ++member) answers.back().values.push_back(*member);
      }
    }
    for (const Parcel<Member>& answer : ranks_.exchange(answers))
      for (const Member& member : answer.values)
        group(member.group).elements.push_back(indexIn(part().elementPositions, member.place));
  }

  // To the owners of their corners; faces with a corner of no brick to the root.
  void sendGroupFaces() {
    std::vector<Face> faces;
    Places corners;
    for (std::size_t g = 0; g < slice_.groups.size(); ++g)
      for (std::size_t k = 0; k + 4 <= slice_.groups[g].faces.size(); k += 4) {
        Face& face = faces.emplace_back();
        face.group = static_cast<int64_t>(g);
        std::copy_n(slice_.groups[g].faces.begin() + static_cast<std::ptrdiff_t>(k), 4, face.corners.begin());
        for (const int64_t corner : face.corners)
          if (corner >= 0) corners.push_back(corner);
      }
    sortUnique(corners);
    const std::vector<int32_t> owners =
        directory_.ask<int32_t>(corners, [&](int32_t, std::size_t node) { return owners_[node]; });
    const std::vector<Face> own = sendEach<Face>(ranks_, faces.size(), [&](std::size_t k, auto&& to) {
      std::array<int32_t, 4> ranks{};
      for (std::size_t c = 0; c < 4; ++c)
        if (faces[k].corners[c] >= 0)
          ranks[c] = owners[static_cast<std::size_t>(indexIn(corners, faces[k].corners[c]))];
      std::sort(ranks.begin(), ranks.end());
      for (auto rank = ranks.begin(), end = std::unique(ranks.begin(), ranks.end()); rank != end; ++rank)
        to(*rank).push_back(faces[k]);
    });
    for (const Face& face : own)
      for (const int64_t corner : face.corners) {
        const Places& places = part().nodePositions;
        const bool isHere = corner >= 0 && std::binary_search(places.begin(), places.end(), corner);
        group(face.group).faces.push_back(isHere ? indexIn(places, corner) : -1);
      }
  }

  Group& group(int64_t index) { return mesh_.groups[static_cast<std::size_t>(index)]; }

  MeshSlice slice_;
  const Ranks& ranks_;
  Directory directory_;
  std::vector<int32_t> owners_;                          // of the nodes of the slice
  std::vector<std::pair<std::size_t, int32_t>> holders_; // nodes of the slice, and the ranks that have them
  Mesh mesh_;
};

} // namespace

Mesh joinedMesh(const std::vector<MeshSlice>& slices) {
  const int64_t nodes = slices.at(0).nodes, elements = slices.at(0).elements;
  // 3 * nodes and 16 * bricks are counted in 32 bits
  constexpr int64_t most = std::numeric_limits<int32_t>::max();
  if (nodes > most / 3 || elements > most / 16)
    throw InputError("a mesh of " + std::to_string(nodes) + " nodes and " + std::to_string(elements) +
                     " bricks is more than one rank can count");
  const auto asSize = [](int64_t count) { return static_cast<std::size_t>(count); };
  Mesh mesh;
  mesh.nodeNumbers.resize(asSize(nodes)), mesh.coordinates.resize(asSize(3 * nodes));
  mesh.elementNumbers.resize(asSize(elements)), mesh.connectivity.resize(asSize(8 * elements));
  for (std::size_t g = 0; g < slices[0].groupNames.size(); ++g)
    mesh.groups.push_back({slices[0].groupNames[g], slices[0].groupDimensions[g], {}, {}});
  const auto append = [](std::vector<int32_t>& to, const std::vector<int64_t>& from) {
    for (const int64_t place : from) to.push_back(static_cast<int32_t>(place));
  };
  for (const MeshSlice& slice : slices) {
    std::copy(slice.nodeNumbers.begin(), slice.nodeNumbers.end(), mesh.nodeNumbers.begin() + slice.firstNode);
    std::copy(slice.coordinates.begin(), slice.coordinates.end(), mesh.coordinates.begin() + 3 * slice.firstNode);
    for (std::size_t e = 0; e < slice.elementPositions.size(); ++e) {
      const std::size_t at = asSize(slice.elementPositions[e]);
      mesh.elementNumbers[at] = slice.elementNumbers[e];
      for (std::size_t k = 0; k < 8; ++k)
        mesh.connectivity[8 * at + k] = static_cast<int32_t>(slice.connectivity[8 * e + k]);
    }
    for (std::size_t g = 0; g < mesh.groups.size(); ++g) {
      append(mesh.groups[g].nodes, slice.groups[g].nodes);
      append(mesh.groups[g].elements, slice.groups[g].elements);
      append(mesh.groups[g].faces, slice.groups[g].faces);
    }
  }
  for (Group& group : mesh.groups) {
    std::sort(group.nodes.begin(), group.nodes.end());
    std::sort(group.elements.begin(), group.elements.end());
  }
  return mesh;
}

Mesh distribute(MeshSlice slice, const Ranks& ranks) {
  Mesh mesh;
  if (ranks.areSeveral()) {
    mesh = Distribution(std::move(slice), ranks).run();
  } else {
    std::vector<MeshSlice> whole;
    whole.push_back(std::move(slice));
    mesh = joinedMesh(whole);
  }
  const auto shrink = [](auto&... values) { (values.shrink_to_fit(), ...); }; // they have grown without a plan
  shrink(mesh.coordinates, mesh.nodeNumbers, mesh.connectivity, mesh.elementNumbers);
  for (Group& group : mesh.groups) shrink(group.nodes, group.elements, group.faces);
  if (mesh.part) shrink(mesh.part->nodePositions, mesh.part->elementPositions, mesh.part->owners);
  return mesh;
}

Balance balanceOf(const Mesh& mesh, const Ranks& ranks) {
  int64_t others = 0;
  std::vector<int32_t> neighbours;
  for (int32_t node = 0; node < mesh.nodes(); ++node)
    if (!mesh.ownsNode(node)) {
      ++others;
      neighbours.push_back(mesh.part->owners[static_cast<std::size_t>(node)]);
    }
  std::sort(neighbours.begin(), neighbours.end());
  neighbours.erase(std::unique(neighbours.begin(), neighbours.end()), neighbours.end());
  std::vector<int64_t> extremes{mesh.elements(), -mesh.elements(), -static_cast<int64_t>(neighbours.size())};
  ranks.smallest(extremes);
  std::vector<int64_t> sums{mesh.elements(), others};
  ranks.sum(sums);
  return {extremes[0], -extremes[1], sums[0], sums[1], -extremes[2]};
}

} // namespace sharedanalysis::solver
