// The hyperelastic models of a case file, a row each: what a case gives, moduli at small strain, stress and energy of points.
#pragma once

#include "solver/model/range.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

struct Material;
struct MaterialWork;

// A key of a material and the constants that it gives.
struct ConstantKey {
  std::string key;
  Range range = anyNumber;
  const char* unit = "";
  std::optional<double> otherwise = {}; // the value when a case has none; without one the key is required
  bool isReciprocal = false;            // the constant is 1/value, and 0 for 0
};

// How the keys become constants.
enum class Reading {
  Numbers,   // one number a key
  Terms,     // arrays of one to six terms: mu, alpha and a third; mu and alpha take turns, the third follows
  TestCurve, // stretch and stress of a test, and one number
  User       // the properties of a user material
};

// Part of the energy that depends on the volume ratio J alone.
struct VolumeLaw {
  enum Form {
    None,
    Powers,     // sum over k of c_k (J - 1)^2k
    Logarithmic // ((J^2 - 1)/2 - ln J) / c
  } form = None;
  std::size_t at = 0, terms = 1; // of the constants
};

// n points at left stretches V (n, 6); constant k of point i at k n + i.
struct PointBlock {
  const Material& material;
  int32_t n;
  const double *constants, *V;
  double *flag, *energyFlag; // guards of the volume, of stress and energy
  MaterialWork& work;
};

struct BlockStress {
  double* stress;       // Cauchy, (n, 6)
  double *bound, *bulk; // moduli for the stable increment
};

struct SolverModel {
  const char* name;
  Reading reading;
  std::vector<ConstantKey> keys;
  VolumeLaw volume;
  double (*shearModulus)(const Material&);
  void (*stress)(const PointBlock&, const BlockStress&) = nullptr; // null: a user material
  void (*energy)(const PointBlock&) = nullptr;                     // without `volume`, to work.U; and 1/J to work.rJ
  double (*bulkModulus)(const Material&) = nullptr;                // null: that of `volume`
  bool softensMean = false;        // the Mullins effect takes the mean stress as well: `energy` holds the volume
  const char* halfShear = nullptr; // the sum of keys that is half the shear modulus, for a message

  bool isUser() const { return reading == Reading::User; }
  bool needsLog() const { return volume.form == VolumeLaw::Logarithmic; }
};

// In the order in which a message lists them; the first is that of a case that names none.
const std::vector<SolverModel>& models();
// Null when there is no such model.
const SolverModel* findModel(const std::string& name);

inline constexpr std::size_t kMostTerms = 6; // of Reading::Terms

// Volumetric energy of point i.  logJ is read where the model needs it.
double volumetricEnergy(const PointBlock& block, int32_t i, double J, double logJ);

} // namespace sharedanalysis::solver
