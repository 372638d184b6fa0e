// Built-in user materials of the library behind the solver's interface of materials: what their points remember, and the axes
// that turn with them.
#pragma once

#include "solver/model/user_curves.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

class Archive;
struct Material;

struct Moduli {
  double shear, bulk;
};

using Properties = std::vector<double>;

// Where a point of a user material stands, for the bound of its stiffness.
struct UserState {
  const Properties& properties;
  double derived;           // what the model has derived from the properties
  double shortest, longest; // principal stretches
  double J;                 // volume ratio
  double compression;       // bounds the compressive stress
  const double* variables;  // state variables, `stride` apart
  std::size_t stride;
  double increment = 0;                        // the last one, s
  std::array<double, 3> stretches = {1, 1, 1}; // principal ones, the longest first
  const double* stretch = nullptr;             // U, six components, `stride` apart
};

// State variables the largest of which decides: damage that begins as it leaves 0, or a strain.
struct DamageStates {
  int32_t first = 0, count = 0;
  bool begins = true;
};

// A model that a case may name; further characters may follow the key.
struct UserModel {
  std::string key;
  int32_t states;                           // state variables of a point
  std::size_t properties;                   // numbers that a case gives, those of rows among them
  bool takesMore = false;                   // and tables or options behind them, which the library checks
  Moduli (*moduli)(const Properties&);      // upper bounds without strain
  std::optional<int32_t> statusAt = {};     // the state variable that is 0 for a point that has failed
  std::optional<std::size_t> statusBy = {}; // a property without which there is none
  DamageStates damage = {};                 // what fails the point
  double (*derived)(const UserModel&, const Properties&) = nullptr; // for UserState
  double (*bulk)(const UserState&) = nullptr;      // slope of the pressure over mu, where it grows with compression
  double (*stiffness)(const UserState&) = nullptr; // bounds density times wave speed squared in place of the moduli
  double (*damping)(const Properties&) = nullptr;  // stress over rate of deformation, Pa s
  double (*viscosity)(const UserState&) = nullptr; // bounds the change of stress with the rate of deformation, Pa s
  bool isSheet = false;                            // plane stress: for bricks with a modulus across alone
  std::vector<CurveKind> curves = {};              // that a case may give as tables
};
const std::vector<UserModel>& userModels();
// The model of a name, or null.
const UserModel* userModelOf(const std::string& name);

Moduli userModuli(const Material& material);
// A line for each curve of a user material; none of another.
std::vector<std::string> describeCurves(const Material& material);
// Asks the library whether it takes the data of a user material, as the first call of an analysis does; its warnings and errors
// go where its messages go.  Throws InputError when it ends the analysis.
void checkData(const Material& material);

// Points that keep stress, state variables and energies in the axes of their rotation R, F = R U.
class UserPoints {
public:
  UserPoints(const Material& material, int32_t n);

  // From the remembered state to left stretch V and deformation gradient F, component (i, j) at (3 i + j) n, in `increment`
  // seconds: Cauchy stress (n, 6) in the axes of space and moduli for the stable increment.
  void respond(const double* V, const double* F, double increment, double* stress, double* bound, double* bulk);
  void remember();
  // What a point remembers, and the time that all of them have.
  void visit(Archive& archive, int32_t i);
  bool isAccepted(); // the data, by a first call
  // Per undeformed volume, of the state that was computed last.
  void energies(double* stored, double* lost) const;
  bool isDeleted(int32_t i) const { return hasStatus_ && time_ > 0 && state(*model_->statusAt, i) == 0; }
  bool hasDamage() const { return model_->damage.count > 0 && model_->damage.begins; }
  double damage(int32_t i) const { return damageOf(now_, i); } // NaN without
  bool damageBegins(int32_t i) const { return damageOf(old_, i) == 0 && damageOf(now_, i) > 0; }
  double damping() const;
  const double* viscosity() const { return viscosity_.empty() ? nullptr : viscosity_.data(); }
  double state(int32_t variable, int32_t i) const { return now_.state[static_cast<std::size_t>(variable * n_ + i)]; }

private:
  // Arrays as the library takes them.
  struct State {
    std::vector<double> stretch, F, stress, state, internal, inelastic;
  };

  void call(double time);
  double damageOf(const State& state, int32_t i) const;
  void boundStiffness(double* bound, double* bulk);

  const Material* material_;
  const UserModel* model_;
  int32_t n_;
  double time_ = 0, increment_ = 0;
  std::string name_;
  State old_, now_;
  double derived_, across_;
  bool hasStatus_;
  std::vector<double> strain_, spin_, density_, temperature_, length_, rotation_, principal_, viscosity_;
};

} // namespace sharedanalysis::solver
