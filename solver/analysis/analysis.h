// The explicit analysis: central differences over blocks of bricks, on any number of ranks and threads with the same bits.
#pragma once

#include "solver/analysis/events.h"
#include "solver/model/model.h"

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

struct Energies {
  double kinetic = 0, strain = 0, hourglass = 0, viscous = 0;
  double damage = 0; // taken by softening, and held by bricks when they failed
  double external = 0;
  double damping = 0; // taken by damping in proportion to mass
  double contact = 0; // taken by friction and impact on planes
  // total - external is constant in an exact integration.  Rounded to nearest, whatever the caller's mode.
  double total() const;
  // Kinetic energy over what the body holds: how far it is from rest.
  double stillness() const { return strain + hourglass > 0 ? kinetic / (strain + hourglass) : 0; }
  double balance() const { return total() - external; }
  // As results have them.
  std::array<double, 7> values() const { return {kinetic, strain, hourglass, viscous, damage, external, total()}; }
};

struct Progress {
  double time = 0, stableIncrement = 0;
  int64_t increment = 0;
};

// Bricks that are named where there are many.
inline constexpr std::size_t kMostNamed = 8;

// Fields at an output time, in the numbering of the mesh; spans stay valid until the next step, or until others are asked for.  Of a
// part of a mesh all its nodes have values, and the bricks for which this rank speaks.
struct Fields {
  std::span<const double> displacement, velocity, reaction; // (3, nodes)
  std::span<const double> stress;                           // (6, elements), S33, component fastest
  std::span<const double> strainEnergy, mask;               // (elements); J/m3 of undeformed volume, 0 or 1
};
// Which of them there are: the others are empty, and take no memory.
enum FieldChoice : unsigned {
  kDisplacement = 1,
  kVelocity = 2,
  kReaction = 4,
  kStress = 8,
  kStrainEnergy = 16,
  kMask = 32,
  kAllFields = 63
};
using FieldSource = std::function<Fields(unsigned choice)>;

// Takes records of the state, or gives further ones, a piece of bounded length at a time; nothing when there are no more.
using RecordSink = std::function<void(const std::vector<double>&)>;
using RecordSource = std::function<std::vector<double>()>;

// Stopped: a kernel reported data that it cannot go on with, and ended the analysis.  Failed: no brick carries load any more.
enum class Ending { Running, Complete, Distorted, IncrementCollapsed, NotFinite, Killed, Stopped, Failed };

class Analysis {
public:
  // Checks the model against the mesh: inverted or zero-volume bricks and unknown groups throw InputError.  With several ranks each
  // has its part of the mesh.
  Analysis(const Mesh& mesh, const Case& definition, int threads);
  ~Analysis();
  Analysis(const Analysis&) = delete;
  Analysis& operator=(const Analysis&) = delete;

  // Advances until `time` (the last increments are cut so that it is met exactly) or until the analysis ends early.
  // Afterwards displacement, stress and energies belong to the same time.  Returns after `increments` of them at the latest; going on
  // towards the same time then makes the same increments.
  // The first of them that reaches `pause` is the last one, too.
  Ending advanceTo(double time, int64_t increments = std::numeric_limits<int64_t>::max(),
                   double pause = std::numeric_limits<double>::infinity());

  // All that the analysis needs to go on after an increment that did not end it: words of its course, the same on every rank, and
  // the records of the nodes and bricks that this rank owns.  An analysis of the same case and mesh that restores them makes the
  // same increments to the last bit, whatever its ranks and threads.
  std::vector<double> course() const;
  void saveRecords(const RecordSink& put) const;
  // Every rank calls it, with any of the records; all of them must come.  Throws InputError on every rank, without the name of a
  // file, for a course that no analysis has and for other records.
  void restore(const std::vector<double>& course, const RecordSource& next);

  // The observer is called after every increment, on every rank, with its size; it must not throw.
  void setObserver(std::function<void(const Progress&, double)> observer);

  // Computes what results are made of.  Energies, momenta, measures and fields do so by themselves: every rank calls this, or
  // the first of them, at the same times, and all of them call fields().  Sums are known to every rank afterwards.
  void collect();

  // What has happened to bricks since the last call, the first `most` events in full.  Every rank calls it; the root gets them,
  // and its `most` counts.
  BrickEvents takeEvents(int64_t most);

  Progress progress() const;
  int threads() const; // that compute, of this rank
  // Of the bricks of each material of the case, as the first one of the model; infinite without bricks.
  const std::vector<double>& firstIncrements() const;
  double energyScale() const; // what a strain of one takes: energies that are vanishing beside it are rounding errors
  Energies energies() const;
  const std::vector<double>& measures() const; // those that measureNames() of the case names
  std::array<double, 3> linearMomentum() const;
  std::array<double, 3> angularMomentum() const;     // about the origin
  Fields fields(unsigned choice = kAllFields) const; // every rank calls it
  int64_t elementUpdates() const;                    // bricks times increments, for rates
  // After Distorted: how many bricks of all ranks were masked in the last increment, the first kMostNamed of their numbers in
  // the mesh, and all numbers of those that this rank speaks for.
  int64_t distortedCount() const;
  const std::vector<int64_t>& distortedElements() const;
  const std::vector<int64_t>& ownDistortedElements() const;

private:
  struct Data;
  std::unique_ptr<Data> data_;
};

} // namespace sharedanalysis::solver
