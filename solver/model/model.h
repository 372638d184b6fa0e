// What is analysed: mesh and case, as the readers leave them and the analysis takes them.  SI units throughout.
#pragma once

#include "filter_design.h"
#include "solver/model/group_history.h"
#include "solver/model/histories.h"
#include "solver/model/loads.h"
#include "solver/model/materials.h"
#include "solver/model/mesh_input.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

// An error that a user can mend: the text names the file and line, the group or the number it is about.
class InputError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

// A named group of the mesh.  Nodes and elements are counted from 0 in the order of the mesh.
struct Group {
  std::string name;
  int dimension = 0;             // 3: bricks, 2: faces, 1: edges, 0: points
  std::vector<int32_t> nodes;    // increasing
  std::vector<int32_t> elements; // increasing; dimension 3 only
  std::vector<int32_t> faces{};  // (4, faces), dimension 2 only; -1 for a node of no brick and for other shapes
};

// What makes a mesh the part that one rank has of a larger one: the bricks that touch a node which the rank owns, and the nodes of
// these bricks, both in the order of the whole mesh.  Every node is owned by one rank.
struct MeshPart {
  // Of a group in the whole mesh.
  struct Members {
    int64_t nodes = 0, elements = 0, faces = 0;
  };
  int32_t rank = 0;
  int64_t nodes = 0, elements = 0;                      // of the whole mesh
  std::vector<int64_t> nodePositions, elementPositions; // places in the whole mesh, increasing
  std::vector<int32_t> owners;                          // the rank of each node
  std::vector<Members> groups;                          // as the mesh has them
  std::array<double, 3> low{}, high{};                  // of all coordinates
};

struct Mesh {
  std::vector<double> coordinates;     // record layout (3, nodes)
  std::vector<int64_t> nodeNumbers;    // numbers of the mesh file
  std::vector<int32_t> connectivity;   // (8, elements), nodes counted from 0
  std::vector<int64_t> elementNumbers; // numbers of the mesh file
  std::vector<Group> groups;
  std::optional<MeshPart> part{}; // nothing: the mesh is whole, and this rank owns it

  int32_t nodes() const { return static_cast<int32_t>(nodeNumbers.size()); }
  int32_t elements() const { return static_cast<int32_t>(elementNumbers.size()); }
  const Group* findGroup(const std::string& name) const;

  int64_t wholeNodes() const { return part ? part->nodes : nodes(); }
  int64_t wholeElements() const { return part ? part->elements : elements(); }
  int64_t nodePosition(int32_t node) const { return part ? part->nodePositions[static_cast<std::size_t>(node)] : node; }
  int64_t elementPosition(int32_t element) const {
    return part ? part->elementPositions[static_cast<std::size_t>(element)] : element;
  }
  bool ownsNode(int32_t node) const { return !part || part->owners[static_cast<std::size_t>(node)] == part->rank; }
  // The corner of a brick that comes first in the mesh: its owner speaks for the brick, which several ranks may compute.
  int32_t firstCorner(int32_t element) const {
    const auto corners = connectivity.begin() + 8 * static_cast<std::ptrdiff_t>(element);
    return *std::min_element(corners, corners + 8);
  }
  bool ownsElement(int32_t element) const { return ownsNode(firstCorner(element)); }
  // In the whole mesh.
  MeshPart::Members membersOf(const Group& group) const;
};

// Prescribed motion of a group: the velocity of component c comes from velocity[c], which says what its values are; a fixed
// component is a history of zero.
struct PrescribedMotion {
  std::string group;
  std::array<std::optional<History>, 3> velocity;
};

// The nodes of a group stay in planes with this normal.
struct SymmetryPlane {
  std::string group;
  std::array<double, 3> normal{}; // unit vector
};

// A plane that bodies hit, slide and rub on.
struct RigidPlane {
  std::string name, group;                 // of the nodes that may touch it, the whole model when it is empty
  std::array<double, 3> point{}, normal{}; // at time 0; unit vector to the side of the body
  double friction = 0;                     // coefficient of Coulomb
  History velocity;                        // along the direction
  std::array<double, 3> direction{};       // unit vector
};

// v = velocity + omega(s) axis x (X - origin), where s is the distance of X from origin along the axis and
// omega(s) = rate, or rate * sin(pi s / length) when a length is given.
struct InitialVelocity {
  std::string group; // empty: the whole model
  std::array<double, 3> velocity{};
  std::array<double, 3> origin{}, axis{0, 0, 1};
  double rate = 0;                     // rad/s
  std::optional<double> profileLength; // m
};

struct Section {
  std::string group;    // of dimension 3
  std::size_t material; // index into Case::materials
};

// Fields of nodes and bricks that a case can choose for its results; their variables have these names or begin with them.
inline constexpr std::array<const char*, 10> outputFields{"displacement",
                                                          "velocity",
                                                          "reaction",
                                                          "stress",
                                                          "strain_energy_density",
                                                          "mask",
                                                          "principal_stress",
                                                          "principal_rotation",
                                                          "principal_direction",
                                                          "material_orientation"};

struct Case {
  std::filesystem::path file, outputDirectory;
  MeshInput mesh;
  std::string job, title;
  std::vector<Material> materials;
  std::vector<Section> sections; // cover every brick exactly once
  std::vector<PrescribedMotion> motions;
  std::vector<InitialVelocity> initialVelocities;
  std::vector<Load> loads;
  std::vector<SymmetryPlane> symmetryPlanes;
  std::vector<RigidPlane> planes;
  std::array<double, 3> gravity{}; // m/s2
  double endTime = 0;              // s
  double safetyFactor = 0.9;       // of the stable increment
  double hourglassCoefficient = 0.1;
  double linearViscosity = 0.06, quadraticViscosity = 1.2;
  double damping = 0;       // in proportion to mass, 1/s
  bool quasiStatic = false; // damping is chosen so that the body comes to rest
  bool isDamped() const { return quasiStatic || damping > 0; }
  double outputInterval = 0, historyInterval = 0; // s
  std::optional<double> restartInterval;          // s, between states from which a run can go on
  std::optional<host::LowPass> historyFilter;
  std::vector<GroupHistory> groupHistories;
  std::vector<std::string> fields{outputFields.begin(), outputFields.end()};
  bool filesByRank = false;             // one file of fields of each rank
  double smallestIncrementRatio = 1e-3; // of the first stable increment; below it the analysis ends with an error
};

} // namespace sharedanalysis::solver
