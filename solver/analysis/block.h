// A block of bricks of one material: what it keeps over the analysis, and one evaluation of its forces.
#pragma once

#include "solver/analysis/block_kernels.h"
#include "solver/analysis/events.h"
#include "solver/analysis/numbering.h"
#include "solver/model/archive.h"
#include "solver/model/memory.h"
#include "solver/model/model.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace sharedanalysis::solver {

static_assert(kBlockLength <= kMostPoints && kBlockLength % kPieceLength == 0);

// Of stable increments: NaN when either is, whichever comes first.
inline double smallerOf(double a, double b) { return b < a || b != b ? b : a; }

// Work arrays of one thread, shared by its blocks.
struct BlockWork {
  AlignedValues x, velocity, gamma, hgdiag, rvol, force; // of a piece
  AlignedValues B, h, hgstiff, vol, F;                   // of the pieces
  AlignedValues wholeF, b, V, bound, bulk, ratio, rate, power, failureStrain, inviscid;
  MaterialWork material;
  std::vector<BlockEvent> events; // of the present increment
  BlockWork();
};

class Block {
public:
  // `bricks` are internal numbers in increasing order; nodes are counted from 0.
  // `records` has the places of their corners, (8, bricks), in the force array.
  Block(std::span<const int32_t> bricks, std::span<const int32_t> records, const Numbering& numbering,
        const Material& material, const Case& definition, MaterialPoints::SharedConstants& constants);

  // Reference gradient, volume and hourglass data from the undeformed coordinates.  Marks bricks without positive volume.
  void setReference(const std::vector<double>& X, BlockWork& work);

  struct Outcome {
    double stableIncrement; // NaN when something is not a number
    int32_t masked;         // bricks that take no part though their material did not fail
  };
  // Stress, forces into f (records of the nodes that the domain touches) and the stable increment, at positions x and velocities v.
  Outcome evaluate(const std::vector<double>& x, const std::vector<double>& v, double lastIncrement,
                   const Case& definition, BlockWork& work, double* f);

  // Strain energy per undeformed volume and hourglass energy of the brick at positions x, and what damage has taken of its energy.
  void energies(const std::vector<double>& x, BlockWork& work, double* strainDensity, double* hourglass,
                double* damage);

  // What a brick keeps from increment to increment.
  void visit(Archive& archive, int32_t e);

  int32_t count() const { return n_; }
  std::span<const int32_t> bricks() const { return bricks_; }
  double stableIncrement() const { return stableIncrement_; } // of the last evaluation
  double volume(int e) const { return V0_[e]; }
  double mass(int e) const { return mass_[e]; }
  const Material& material() const { return *material_; }
  double mask(int e) const { return mask_[e]; }
  bool isDistorted(int e) const { return mask_[e] != 0.0 && !(mayFail() && failed_[e] != 0.0); }
  double viscousEnergy(int e) const { return viscousEnergy_[e]; }
  double stress(int component, int e) const { return stress_[component * n_ + e]; }

private:
  // Bricks first .. first + n - 1, and where an array with so many rows has them; what is of the whole block counts as one row.
  struct Piece {
    int32_t first, n;
    template <class T>
    T* of(std::vector<T, LineAllocator<T>>& values, int32_t rows) const {
      return values.data() + rows * first;
    }
    template <class T>
    const T* of(const std::vector<T, LineAllocator<T>>& values, int32_t rows) const {
      return values.data() + rows * first;
    }
  };
  template <class Body>
  void forPieces(Body body) const {
    for (Piece piece{0, 0}; piece.first < n_; piece.first += piece.n) {
      piece.n = std::min(kPieceLength, n_ - piece.first);
      body(piece);
    }
  }
  static constexpr int32_t paddedCount(int32_t n) { return (n + kPieceLength - 1) / kPieceLength * kPieceLength; }

  bool mayFail() const { return material_->failure || material_->model->isUser(); }
  void gather(const Piece& piece, const std::vector<double>& field, AlignedValues& ofCorners) const;
  void operate(const Piece& piece, BlockWork& work, double* B, double* hgstiff, double* vol);
  template <class More>
  void stretch(const std::vector<double>& x, BlockWork& work, More more) const;
  ForceInput forceInput(const Piece& piece, const BlockWork& work, const double* viscousStress) const;
  void fail(const std::vector<double>& x, const std::vector<double>& v, double lastIncrement, BlockWork& work);
  void remove(const std::vector<double>& x, const std::vector<double>& v, double lastIncrement, BlockWork& work);
  void recordDistortion(const std::vector<double>& x, BlockWork& work) const;

  int32_t n_;
  double stableIncrement_ = 0;
  std::vector<int32_t> bricks_;
  std::vector<int32_t, LineAllocator<int32_t>> gatherMap_; // of the pieces, counted from 1 in the model
  std::vector<int32_t> assemblyMap_;                       // corner fastest, from 0 in f
  AlignedValues B0_, H0_, V0_, mass_, hourglass_;
  const Material* material_;
  MaterialPoints points_;
  AlignedValues stress_, mask_, viscousStress_, viscousEnergy_;
  // where bricks fail: damage initiation; 1 once it was reached; energy of the brick then
  AlignedValues omega_, failed_, lostEnergy_;
};

} // namespace sharedanalysis::solver
