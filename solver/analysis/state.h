// What the analysis keeps, in parts: the model as it is numbered, its nodes, domains, prescribed motion, and the course of time.
#pragma once

#include "solver/analysis/analysis.h"
#include "solver/analysis/block.h"
#include "solver/analysis/numbering.h"
#include "solver/parallel/ranks.h"

#include <cstdint>
#include <limits>
#include <vector>

namespace sharedanalysis::solver {

inline constexpr double kInfinity = std::numeric_limits<double>::infinity();

// The model in the internal numbering of this rank; fixed after set-up.
struct Layout {
  const Mesh& mesh;
  const Case& definition;
  Ranks ranks;
  Numbering numbering;
  std::vector<Neighbour> neighbours;
  std::vector<int32_t> internalBricks; // of each brick of the mesh

  Layout(const Mesh& m, const Case& c)
      : mesh(m), definition(c), numbering(numberModel(m)), neighbours(findNeighbours(m, numbering, ranks)),
        internalBricks(numbering.elements.size()) {
    for (std::size_t e = 0; e < internalBricks.size(); ++e)
      internalBricks[static_cast<std::size_t>(numbering.elements[e])] = static_cast<int32_t>(e);
  }
  // Of this rank, those of others among its bricks included.
  int64_t nodes() const { return static_cast<int64_t>(numbering.nodes.size()); }
  int64_t bricks() const { return static_cast<int64_t>(numbering.elements.size()); }
  // In the mesh.
  int32_t meshNode(int64_t node) const { return numbering.nodes[static_cast<std::size_t>(node)]; }
  int32_t meshBrick(int64_t brick) const { return numbering.elements[static_cast<std::size_t>(brick)]; }
  int32_t internalNode(int32_t meshNode) const { return numbering.internalNodes[static_cast<std::size_t>(meshNode)]; }
  const double* referenceOf(int64_t node) const { // undeformed coordinates
    return &mesh.coordinates[3 * static_cast<std::size_t>(meshNode(node))];
  }
  int64_t placeOfNode(int64_t node) const { return mesh.nodePosition(meshNode(node)); }
};

// (3, nodes) and (nodes) in internal numbering.
struct NodeState {
  std::vector<double> x,
      v; // undeformed until the analysis begins; v at the last half step; those of other ranks as they were exchanged
  std::vector<double> mass, rMass;   // of other ranks' nodes in part
  std::vector<double> dampingEnergy; // of a case with damping
};

struct Course {
  double time = 0, lastIncrement = 0;
  double stable = 0, firstStable = 0; // stable increment times the safety factor
  int64_t increment = 0;
  double damping = 0; // in proportion to mass, 1/s
  double pace = 0;    // the last increment before it was shortened to meet a time of output
};

// One prescribed component of one node, and the work of its reaction.  It goes along an axis, or along the normal of a symmetry
// plane, less what the other prescribed components of the node leave of it: the directions of a node are orthogonal.
struct PrescribedComponent {
  int64_t position; // in (3, nodes), internal numbering; that of a free axis for a normal
  std::array<double, 3> direction{};
  // Its speed is the sum of these parts of histories: of its own, or of those that a normal leans on.
  struct Part {
    const History* history;
    int axis; // along which it prescribes motion
    double factor = 1;
    double start = 0; // velocity at time 0, from which accelerations go on
  };
  std::array<Part, 3> parts{};
  int partCount = 0;
  bool isAxis = true;
  double reaction = 0, work = 0;

  double sumOfParts(double (*one)(const Part&, double, double), double time, double half) const {
    double sum = partCount > 0 ? parts[0].factor * one(parts[0], time, half) : 0.0;
    for (int k = 1; k < partCount; ++k) sum += parts[k].factor * one(parts[k], time, half);
    return sum;
  }
  // Over the increment from time - half to time + half.
  double speed(double time, double half) const {
    return sumOfParts([](const Part& p, double t, double h) { return speedAround(*p.history, t, h, p.start); }, time,
                      half);
  }
  double startSpeed() const {
    return sumOfParts([](const Part& p, double, double) { return speedAtStart(*p.history, p.start); }, 0, 0);
  }
  // The component of the vector of its node, of vectors of all nodes from `first` on.
  double of(const double* vectors, int64_t first = 0) const {
    if (isAxis) return vectors[position - 3 * first];
    const double* vector = vectors + 3 * (position / 3 - first);
    return direction[0] * vector[0] + direction[1] * vector[1] + direction[2] * vector[2];
  }
  double of(const std::array<double, 3>& vector) const {
    return isAxis ? vector[position % 3]
                  : direction[0] * vector[0] + direction[1] * vector[1] + direction[2] * vector[2];
  }
  void addTo(double* vector, double value) const {
    if (isAxis) vector[position % 3] += value;
    for (size_t c = 0; c < 3; ++c)
      if (direction[c] != 0) vector[c] += direction[c] * value;
  }
  // Makes it so among the vectors of all nodes.
  void set(double value, double* vectors) const {
    if (isAxis) {
      vectors[position] = value;
      return;
    }
    const double change = value - of(vectors);
    for (int64_t c = 0; c < 3; ++c) vectors[position / 3 * 3 + c] += direction[c] * change;
  }
  // At an output time.
  double speed(const Course& now) const {
    return now.increment > 0 ? speed(now.time, 0.5 * now.lastIncrement) : startSpeed();
  }
};
struct Prescribed {
  std::size_t firstOf(int64_t node) const; // its place, or that of the next one

  std::vector<PrescribedComponent> components; // of the own nodes, by position
};

// One node of one load: its force at the present time, and the work of it.
struct LoadedNode {
  int32_t node, load; // internal number; index into Case::loads
  double share = 0;   // of the value: a number, kg; faces have theirs
  std::array<double, 3> force{};
  double work = 0;
};
// A face that a load acts on.
struct LoadedFace {
  static constexpr std::size_t kElsewhere = static_cast<std::size_t>(-1);
  int32_t load;
  std::array<int32_t, 4> nodes;       // internal numbers, counter-clockwise as seen from outside
  std::array<double, 4> areas;        // shares of the undeformed area
  std::array<std::size_t, 4> entries; // in Loads::nodes, or kElsewhere for nodes of another domain
  std::size_t block;                  // of the domain, and the place of the brick in it
  int place;
};
struct Loads {
  std::vector<LoadedNode> nodes; // own ones, by node, then by load
};

// One node that may touch one plane: the forces on it at the present time, and what became of their work.
struct Contact {
  int32_t node, plane;                        // internal number; index into Case::planes
  std::size_t firstPrescribed, endPrescribed; // components of the node
  std::array<double, 3> normalForce{}, friction{};
  double work = 0, impactEnergy = 0, frictionEnergy = 0;
};
struct Contacts {
  std::vector<Contact> all; // of the own nodes, by node, then by plane
};

// What acts on nodes beside their bricks.
struct Outside {
  Prescribed prescribed;
  Loads loads;
  Contacts contacts;
};

// The work of one thread: a domain's blocks, its force array, its prescribed components and its loads.
struct DomainState {
  Domain domain;
  std::vector<Block> blocks;
  std::size_t innerBlocks = 0; // so many need no motion of another rank
  std::vector<double> force;   // records as Domain says: of its own nodes internal less external
  double time = 0;             // to which the forces belong
  std::size_t firstPrescribed = 0, endPrescribed = 0, firstLoaded = 0, endLoaded = 0;
  std::size_t firstContact = 0, endContact = 0;
  std::vector<LoadedFace> faces;
  std::vector<double> internal,
      internalBefore; // of its own nodes, now and an increment before, when a case is quasi-static
  BlockWork work;
  double stableIncrement = kInfinity;
  int64_t masked = 0;

  // Of bricks that several domains compute, the owner of the corner that comes first in the mesh reports.
  bool speaksFor(const Layout& layout, int32_t brick) const {
    const int32_t node = layout.internalNode(layout.mesh.firstCorner(layout.meshBrick(brick)));
    return node >= domain.firstNode && node < domain.endNode;
  }
};

// Mesh numbers of the bricks that were masked in the last increment: those that this rank speaks for; of all ranks the first and
// their number.
struct Distortion {
  std::vector<int64_t> own, first;
  int64_t count = 0;
};

} // namespace sharedanalysis::solver
