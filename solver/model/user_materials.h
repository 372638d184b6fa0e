// Built-in user materials of the library behind the solver's interface of materials: what their points remember, and the axes
// that turn with them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

struct Material;

// A model that a case may name; further characters may follow the key.
struct UserModel {
  std::string key;
  int32_t states;
  std::size_t properties;
};
const std::vector<UserModel>& userModels();
// The model of a name, or null.
const UserModel* userModelOf(const std::string& name);

struct Moduli {
  double shear, bulk;
};
Moduli userModuli(const Material& material);

// Points that keep stress, state variables and energies in the axes of their rotation R, F = R U.
class UserPoints {
public:
  UserPoints(const Material& material, int32_t n);

  // From the remembered state to left stretch V and deformation gradient F, component (i, j) at (3 i + j) n, in `increment`
  // seconds: Cauchy stress (n, 6) in the axes of space and moduli for the stable increment.
  void respond(const double* V, const double* F, double increment, double* stress, double* bound, double* bulk);
  void remember();
  // Per undeformed volume, of the state that was computed last.
  void energies(double* stored, double* lost) const;
  bool isDeleted(int32_t i) const { return statusAt_ != 0 && time_ > 0 && now_.state[statusAt_ * n_ + i] == 0; }
  double state(int32_t variable, int32_t i) const { return now_.state[static_cast<std::size_t>(variable * n_ + i)]; }

private:
  // Arrays as the library takes them.
  struct State {
    std::vector<double> stretch, F, stress, state, internal, inelastic;
  };

  const Material* material_;
  int32_t n_, states_, statusAt_; // 0: no status
  double time_ = 0, increment_ = 0;
  std::string name_;
  State old_, now_;
  std::vector<double> strain_, spin_, density_, temperature_, length_, rotation_;
};

} // namespace sharedanalysis::solver
