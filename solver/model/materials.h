// Materials of the solver: their constants as a case gives them, and the response of a block of points to their left stretch.
#pragma once

#include "solver/model/memory.h"
#include "solver/model/models.h"
#include "solver/model/user_materials.h"

#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace sharedanalysis::solver {

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

class Archive;

struct Material {
  std::string name;
  double density = 0;
  const SolverModel* model = &models().front();
  // In the order of the arguments of the stress kernel, reciprocals of D where it takes them.  Ogden and foam: six terms, unused
  // ones 0 (exponent 1).  Test curve: 1/D only.  User material: its properties.
  std::vector<double> constants;
  std::vector<double> curveStretch, curveStress; // nominal stress of a bar in tension, from (1, 0) on
  std::string userName;                          // of a user material: the key that selects it, and what may follow
  double temperature = 0;                        // of a user material, K
  double length = 1;                             // of a user material: characteristic length of the elements, m
  bool hasCurveTables = false;                   // of a user material: its case left out the numbers of rows
  double acrossModulus = 0;                      // of a sheet in bricks: stiffness across and out of its plane, Pa
  std::optional<Mullins> mullins;
  std::optional<DuctileFailure> failure;

  double shearModulus() const; // at small strain
  double bulkModulus() const;
  double waveSpeed() const; // of dilatation, m/s
  bool isSheet() const;     // a model of plane stress
};

// A point whose volume ratio falls below it is marked, and its brick taken out.
inline constexpr double kSmallestVolume = 1e-9;

// Points of one call at most.
inline constexpr int kMostPoints = 136;

// Work arrays for the response of up to kMostPoints points.
struct MaterialWork {
  AlignedValues principal, axes, dU, ddU, volume, slope, U, rJ, eta, detaDU, rest, lost, first, second, I1, I2;
  MaterialWork();
};

// n points of one material with their history.
class MaterialPoints {
public:
  // Points of one material that are as many have one copy of its constants.
  using SharedConstants = std::map<std::pair<const Material*, int32_t>, std::shared_ptr<const AlignedValues>>;
  MaterialPoints(const Material& material, int32_t n, SharedConstants* shared = nullptr);

  // Cauchy stress (n, 6) and the two moduli for the stable increment at left stretches V (n, 6); sets the flag
  // of points without volume.  The history changes with `remember` only.  Deformation gradient F, component (i, j) at
  // (3 i + j) n, and the time since the remembered state are read by user materials only.
  void respond(const double* V, const double* F, double increment, double* stress, double* bound, double* bulk,
               MaterialWork& work);
  void remember();
  // Energies per undeformed volume: recoverable, and lost to softening or inelastic strain.
  void energies(const double* V, double* stored, double* lost, MaterialWork& work);

  // What a point remembers.
  void visit(Archive& archive, int32_t i);

  const AlignedValues& flag() const { return flag_; }
  // For the stable increment, Pa s: viscosity by which stress follows the rate, null for materials without, and damping.
  const double* viscosity() const { return user_ ? user_->viscosity() : nullptr; }
  double damping() const { return user_ ? user_->damping() : 0.0; }
  // The status of a user material says that the point has failed.
  bool isDeleted(int32_t i) const { return user_ && user_->isDeleted(i); }
  // The damage of a user material that has one, NaN of others, and whether the response to be remembered is the first with some.
  bool hasDamage() const { return user_ && user_->hasDamage(); }
  double damage(int32_t i) const { return user_ ? user_->damage(i) : std::numeric_limits<double>::quiet_NaN(); }
  bool damageBegins(int32_t i) const { return user_ && user_->damageBegins(i); }

private:
  PointBlock block(const double* V, MaterialWork& work);
  // r, m and beta of softening by their places, for every point.
  const double* softening(std::size_t which) const {
    return constants_->data() + (material_->constants.size() + which) * static_cast<std::size_t>(n_);
  }

  const Material* material_;
  int32_t n_;
  std::optional<UserPoints> user_;
  std::shared_ptr<const AlignedValues> constants_; // (n, constants and softening), of all points alike
  AlignedValues flag_, energyFlag_, largest_, largestNow_;
};

} // namespace sharedanalysis::solver
