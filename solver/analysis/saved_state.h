// All that an analysis needs to go on, in the numbering of the mesh: the same words on any number of ranks and threads.
#pragma once

#include "solver/analysis/state.h"

#include <vector>

namespace sharedanalysis::solver {

// What changes from increment to increment; what follows from case and mesh alone is not among it.
struct Changing {
  const Layout& layout;
  NodeState& nodes;
  std::vector<DomainState>& domains;
  Outside& outside;
  Course& course;
};

// Where the words of the course, of each node and of each brick are.  Every rank calls all members.
class SavedState {
public:
  explicit SavedState(const Changing& state);

  std::size_t size() const { return first_.back(); }
  // Whole on the root.
  std::vector<double> save(const Changing& state) const;
  // Throws InputError for a course that no analysis has.
  void restore(const std::vector<double>& words, const Changing& state) const;

private:
  void visit(bool restores, double* words, const Changing& state) const;
  void collect(const Ranks& ranks, std::vector<double>& words) const;

  std::vector<std::size_t> first_; // course, nodes, bricks, and the end
  std::vector<int32_t> owners_;    // ranks of them
};

} // namespace sharedanalysis::solver
