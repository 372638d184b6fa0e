// Values that the ranks have of nodes and bricks, brought into the order of the whole mesh a slice at a time: no rank needs room
// for all of them.
#pragma once

#include "solver/model/model.h"
#include "solver/parallel/ranks.h"

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace sharedanalysis::solver {

class Ordered {
public:
  // Entities of this process alone: nothing is sent.
  explicit Ordered(int64_t count) : whole_(count), isAlone_(true) {}
  // `places` of the own entities, increasing.  Each of the places from 0 to `whole` belongs to exactly one rank.
  Ordered(const Ranks& ranks, std::vector<int64_t> places, int64_t whole);

  int64_t whole() const { return whole_; }
  // Without `places` an entity has its own place.
  std::size_t own() const { return isAlone_ ? static_cast<std::size_t>(whole_) : places_.size(); }
  int64_t place(std::size_t k) const { return isAlone_ ? static_cast<int64_t>(k) : places_[k]; }

  // Puts the values of the own entities from `first` to `end`, component fastest.
  template <class T>
  using Give = std::function<void(std::size_t first, std::size_t end, T* values)>;
  // Gets those of the entities from place `first` on.
  template <class T>
  using Take = std::function<void(int64_t first, std::span<const T> values)>;

  // T is double or int64_t.  Chunk c of `chunk` entities, one chunk of all without it, is taken by rank c modulo their number,
  // its slices in their order.  A slice has up to 0.5 MB, and one for each taker is under way.  Throws std::logic_error for entities
  // of no rank or of several.  Every rank calls it.
  template <class T>
  void stream(int components, const Give<T>& give, const Take<T>& take, int64_t chunk = 0) const;

  // Entities of a slice.
  static int64_t sliceOf(int components);

private:
  template <class T>
  void streamSlices(int components, const Give<T>& give, const Take<T>& take, int64_t firstChunk, int64_t chunk) const;

  Ranks ranks_;
  std::vector<int64_t> places_;
  int64_t whole_;
  bool isAlone_ = false;
};

// The nodes or bricks that this rank speaks for, in the order of the mesh.
struct Listing {
  std::vector<int32_t> own; // indices of the mesh
  Ordered order;
};

enum class Kind { Node, Brick };
Listing listingOf(const Mesh& mesh, Kind kind, const Ranks& ranks);
// Members of groups and their places among the members of each: lists of indices, increasing, those of other ranks left out.
std::vector<Listing> listingsOf(const Mesh& mesh, Kind kind, const std::vector<const std::vector<int32_t>*>& members,
                                const Ranks& ranks);

} // namespace sharedanalysis::solver
