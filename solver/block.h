// A block of bricks: what it keeps over the analysis, and one evaluation of its forces.
#pragma once

#include "model.h"
#include "partition.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace sharedanalysis::solver {

constexpr int kBlockLength = 128;

// Work arrays of one thread; a block needs them only while it is evaluated.
struct BlockWork {
  std::vector<double> x, velocity, B, gamma, hgdiag, hgstiff, vol, rvol, work;
  std::vector<double> F, cofactors, b, V, bound, bulk, force, energy, rJ;
  BlockWork();
};

class Block {
public:
  // `bricks` are internal numbers in increasing order; nodes are counted from 0.
  Block(std::span<const int32_t> bricks, const Numbering& numbering, const std::vector<int32_t>& materialOfBrick,
        const Case& definition, const Domain& domain);

  // Reference gradient, volume and hourglass data from the undeformed coordinates.  Marks bricks without positive volume.
  void setReference(const std::vector<double>& X, BlockWork& work);

  struct Outcome {
    double stableIncrement; // NaN when something is not a number
    int32_t masked;         // bricks that take no part
  };
  // Stress, forces into f (records of the nodes that the domain touches) and the stable increment, at positions x and velocities v.
  Outcome evaluate(const std::vector<double>& x, const std::vector<double>& v, double lastIncrement,
                   const Case& definition, BlockWork& work, double* f);

  // Strain and hourglass energy at positions x: per undeformed volume, and of the brick.
  void energies(const std::vector<double>& x, BlockWork& work, double* strainDensity, double* hourglass);

  int32_t count() const { return n_; }
  std::span<const int32_t> bricks() const { return bricks_; }
  double volume(int e) const { return V0_[e]; }
  double mass(int e) const { return mass_[e]; }
  double mask(int e) const { return mask_[e]; }
  double viscousEnergy(int e) const { return viscousEnergy_[e]; }
  double stress(int component, int e) const { return stress_[component * n_ + e]; }

private:
  void stretch(const std::vector<double>& x, BlockWork& work) const;

  int32_t n_, ld_;
  std::vector<int32_t> bricks_;
  std::vector<int32_t> gatherMap_,
      assemblyMap_; // brick fastest, counted from 1 in the model; corner fastest, from 1 in f
  std::vector<double> B0_, gamma0_, V0_, mass_, hourglass_, shear_, density_;
  std::vector<double> constants_; // C10 C01 C20 C11 C02 1/D1 1/D2, (n, 7)
  std::vector<double> stress_, flag_, mask_, viscousStress_, viscousEnergy_;
};

} // namespace sharedanalysis::solver
