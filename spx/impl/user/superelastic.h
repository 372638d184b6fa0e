// Superelastic shape-memory alloy: austenite, one martensite, and a transformation that follows a pressure-dependent norm of the
// stress, by a linear or by an exponential law.
#pragma once

#include "spx/impl/user/frame.h"

namespace sa::user::alloy {

constexpr double kRoot = 0x1.a20bd700c2c3ep-1; // sqrt(2/3): the norm of the deviator under a uniaxial stress of one

// State variables, from 0: fraction, transformation strain of six components, equivalent stress.
constexpr int kEquivalentStress = 7;

// By the name.
enum class Kind { uniaxial, planeStress, solid, unknown };
inline Kind kindOf(std::string_view name) {
  if (name.starts_with("TVK_SUPER_ELASTIC_N1D")) return Kind::uniaxial;
  if (name.starts_with("TVK_SUPER_ELASTIC_N2D")) return Kind::planeStress;
  if (name.starts_with("TVK_SUPER_ELASTIC_N3D")) return Kind::solid;
  return Kind::unknown;
}

// What follows that may carry _EXP, as a word of its own.
bool isExponentialOf(std::string_view name);

struct Superelastic {
  static constexpr int kProperties = 14, kStates = 8;
  Kind kind;
  double G, dG, K, dK, E, dE; // of austenite, and what martensite has more
  double alpha, eD, eV, eTension, eCompression;
  double startAM, finishAM, startMA, finishMA; // uniaxial stresses
  double T0, slopeAM, slopeMA;
  bool isExponential;
  double speedAM, speedMA; // of the exponential law, in terms of F
  bool moves;              // the ratio of bulk to shear modulus goes with xi
  // work of the stress on one xi under a uniaxial stress s, in tension and compression: at the start of the transformation to
  // austenite no more than a s + rising s^2, at the start of that to martensite no less than a s - falling s^2
  double workTension, workCompression, risingTension, risingCompression, fallingTension, fallingCompression;

  static bool isRefused(const Block& b);
  bool isWrong(const Block&) const { return false; }
  explicit Superelastic(const Block& block);
  // What one xi gives back on its way to austenite, at best: its work at the start of that way; but no more than is spent on
  // the way there.
  SA_INLINE double storedPerXi(double temperature) const {
    const double back = startMA + slopeMA * (temperature - T0), there = startAM + slopeAM * (temperature - T0);
    const double given =
        vm::max(back * (workTension + risingTension * back), back * (workCompression + risingCompression * back));
    const double spent =
        vm::min(there * (workTension - fallingTension * there), there * (workCompression - fallingCompression * there));
    return vm::select(back > 0.0, vm::max(0.0, vm::min(given, spent)), 0.0);
  }
};

// A block by the exponential law.
void runExponential(const Block& block, const Superelastic& model);

} // namespace sa::user::alloy
