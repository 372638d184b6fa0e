// Materials of the solver: their constants as a case gives them, and the response of a block of points to their left stretch.
#pragma once

#include "solver/model/user_materials.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

enum class Model { Polynomial, Polynomial6, ArrudaBoyce, VanDerWaals, Ogden, Foam, TestCurve, User };

// Softening on unloading: SPX_MAT_ORMULLINS.
struct Mullins {
  double r = 0, m = 0, beta = 0; // m in J/m3
};

// Ductile failure: a brick is taken out when the sum of its strain increments over the failure strain of Johnson and Cook
// reaches one.  d3 as published: negative where the strain falls with tension.
struct DuctileFailure {
  double d1 = 0, d2 = 0, d3 = 0, d4 = 0, d5 = 0;
  double melting = 1, transition = 0, temperature = 0; // K
  double referenceRate = 1;                            // 1/s
};

struct Material {
  std::string name;
  double density = 0;
  Model model = Model::Polynomial;
  // In the order of the arguments of the stress kernel of the model, reciprocals of D where it takes them.  Rubber and foam in
  // the stretches have six terms, the unused ones nothing.  A test curve has D alone.  Of a user material the properties.
  std::vector<double> constants;
  std::vector<double> curveStretch, curveStress; // nominal stress of a bar in tension, from (1, 0) on
  std::string userName;                          // of a user material: the key that selects it, and what may follow
  double temperature = 0;                        // of a user material, K
  std::optional<Mullins> mullins;
  std::optional<DuctileFailure> failure;

  double shearModulus() const; // at small strain
  double bulkModulus() const;
};

// One name of a case file for each model, in the order of Model.
const std::vector<std::string>& modelNames();

// Work arrays for the response of up to 136 points.
struct MaterialWork {
  std::vector<double> principal, axes, dU, ddU, volume, slope, U, rJ, eta, detaDU, rest, lost, first, second, I1, I2;
  MaterialWork();
};

// n points of one material with what they remember.
class MaterialPoints {
public:
  MaterialPoints(const Material& material, int32_t n);

  // Cauchy stress (n, 6) and the two moduli for the stable increment at left stretches V (n, 6); updates the guard of the
  // volume.  What the points remember changes with `remember` alone.  Deformation gradient F, component (i, j) at (3 i + j) n,
  // and time since the remembered state are for materials that remember more than softening.
  void respond(const double* V, const double* F, double increment, double* stress, double* bound, double* bulk,
               MaterialWork& work);
  void remember();
  // Energies per undeformed volume: what the stretch would give back, and what softening has taken.
  void energies(const double* V, double* stored, double* lost, MaterialWork& work);

  const std::vector<double>& flag() const { return flag_; }
  // A user material that keeps a status has given the point up.
  bool isDeleted(int32_t i) const { return user_ && user_->isDeleted(i); }

private:
  void principalStress(const double* V, double* stress, double* bound, double* bulk, MaterialWork& work);
  void curveStress(const double* V, double* stress, double* bound, double* bulk, MaterialWork& work);
  void isochoricEnergy(const double* V, MaterialWork& work);
  double volumetricEnergy(int32_t i, double J, double logJ) const;

  const Material* material_;
  int32_t n_;
  std::optional<UserPoints> user_;
  std::vector<double> constants_; // (n, constants)
  std::vector<double> flag_, energyFlag_, r_, m_, beta_, largest_, largestNow_;
};

} // namespace sharedanalysis::solver
