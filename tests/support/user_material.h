// A block of points of a built-in user material that is led along a path of strain, and published sets of constants.
#pragma once

#include "spx.h"
#include "tests/support/call.h"
#include "tests/support/random.h"
#include "tests/support/test.h"

namespace sharedanalysis::test {

using Strain = std::array<double, 6>;
inline Strain operator*(Strain e, double factor) {
  for (double& x : e) x *= factor;
  return e;
}
inline Strain randomStrain(Random& random, double size, int shears = 3) {
  Strain e{};
  for (int c = 0; c < 3 + shears; ++c) e[c] = random.uniform(-size, size);
  return e;
}
inline Strain componentsOf(const Matrix& t) { return {t[0][0], t[1][1], t[2][2], t[0][1], t[1][2], t[0][2]}; }
inline const double kRoot = std::sqrt(2.0 / 3.0);

// The call of any of them, with values as they are at hand; the length of the name comes last.
void callBuiltIn(auto&&... arguments) {
  test::call([](auto... pointers) { SPX_USR_BUILTINVUMAT(pointers..., 80); }, arguments...);
}

// A block of like points that is led along a path, of strain or of stretch.  Of the deformation gradient only the volume ratio
// counts.
struct UserMaterial {
  std::string name;
  std::vector<double> props;
  int states, ndir = 3, nshr = 3, n = 1;
  double dt = 1, time = 0, rho = 2500, temperature = 300, characteristicLength = 1;
  bool massStays = false; // the density follows the volume, else it stays
  std::vector<double> stress, state, internal, inelastic, volume;
  std::vector<double> stretch, stretchOld; // of paths of stretch, else 1
  std::array<int, 4> callInfo = {};

  UserMaterial(std::string key, std::vector<double> properties, int stateCount, int direct = 3, int shear = 3,
               int points = 1)
      : name(std::move(key)), props(std::move(properties)), states(stateCount), ndir(direct), nshr(shear), n(points) {
    name.resize(80, ' ');
    stress.resize(n * (ndir + nshr)), state.resize(n * states), internal.resize(n), inelastic.resize(n);
    volume.assign(n, 1.0);
    stretch.resize(stress.size());
    for (int k = 0; k < n * ndir; ++k) stretch[k] = 1;
    stretchOld = stretch;
  }
  Strain stretchNow() const {
    Strain U = {1, 1, 1, 0, 0, 0};
    for (int c = 0; c < ndir + nshr; ++c) U[c] = stretch[c * n];
    return U;
  }
  // Of all points to the stretch U; the strain increment is the rate of deformation over the middle of the increment.
  void stretchTo(const Strain& U) {
    const Matrix now = tensorOf(U.data()), before = tensorOf(stretchNow().data()), middle = .5 * (now + before),
                 rate = 1 / determinant(middle) * (now + -1 * before) * transposed(cofactors(middle));
    const Strain inc = componentsOf(.5 * (rate + transposed(rate)));
    stretchOld = stretch;
    for (int c = 0; c < ndir + nshr; ++c) std::fill_n(stretch.begin() + c * n, n, U[c]);
    call(std::vector<Strain>(n, inc), std::vector<double>(n, determinant(now)));
  }
  // In equal parts of the stretch.
  void stretchSteps(const Strain& U, int count) {
    const Strain from = stretchNow();
    Strain now;
    for (int k = 1; k <= count; ++k) {
      for (int c = 0; c < 6; ++c) now[c] = from[c] + (U[c] - from[c]) * k / count;
      stretchTo(now);
    }
  }
  // An increment of all points, or of each its own.
  void step(const Strain& inc) { stepAll(std::vector<Strain>(n, inc)); }
  void stepAll(const std::vector<Strain>& increments, double newTemperature = 300) {
    auto J = volume;
    for (int i = 0; i < n; ++i) J[i] *= std::exp(increments[i][0] + increments[i][1] + increments[i][2]);
    call(increments, J, newTemperature);
  }
  void call(const std::vector<Strain>& increments, const std::vector<double>& newVolume, double newTemperature = 300) {
    const int comps = ndir + nshr;
    std::vector<double> strain(n * comps), F(n * (ndir + 2 * nshr)), density(n), told(n, temperature),
        tnew(n, newTemperature);
    const auto oldStress = stress, oldState = state, oldInternal = internal, oldInelastic = inelastic;
    for (int i = 0; i < n; ++i) {
      for (int c = 0; c < comps; ++c) strain[c * n + i] = increments[i][c];
      volume[i] = newVolume[i];
      F[i] = volume[i];
      for (int c = 1; c < ndir; ++c) F[c * n + i] = 1;
      density[i] = massStays ? rho / volume[i] : rho;
    }
    time += dt;
    callBuiltIn(callInfo, n, ndir, nshr, states, 0, static_cast<int>(props.size()), 0, time, time, dt, name, nullptr,
                std::vector<double>(n, characteristicLength), props, density, strain, nullptr, told, stretchOld,
                nullptr, nullptr, oldStress, oldState, oldInternal, oldInelastic, tnew, stretch, F, nullptr, stress,
                state, internal, inelastic);
    temperature = newTemperature;
  }
  void steps(const Strain& total, int count) {
    for (int k = 0; k < count; ++k) step(total * (1. / count));
  }
  // An increment of axial strain without stress across, by bisection of the strain there.
  void pull(double axial, double newTemperature = 300, bool isEquibiaxial = false) {
    const UserMaterial start = *this;
    double low = -.2 - 3 * std::abs(axial), high = -low;
    for (int k = 0; k < (ndir == 1 ? 1 : 200); ++k) {
      const double x = ndir == 1 ? 0 : .5 * (low + high);
      *this = start;
      stepAll({{axial, isEquibiaxial ? axial : x, nshr == 3 ? x : 0, 0, 0, 0}}, newTemperature);
      if (ndir == 3) (stress[isEquibiaxial ? 2 : 1] < 0 ? low : high) = x;
    }
  }
  // Nothing is without bounds, and no energy that was lost has come back.
  void expectSound(double lost, const std::string& when) const {
    for (const auto* values : {&stress, &state, &internal, &inelastic})
      for (double x : *values) ASSERT_TRUE(std::isfinite(x)) << name << when;
    EXPECT_GE(inelastic[0], lost) << name << when;
  }
  // To the compression mu in equal parts of the logarithmic strain.
  void compress(double mu, int count = 1) {
    const double e = -std::log((1 + mu) * volume[0]) / 3;
    steps({e, e, e, 0, 0, 0}, count);
  }
  double pressure(int i = 0) const { return -(stress[i] + stress[i + n] + stress[i + 2 * n]) / 3; }
  double mises(int i = 0) const {
    double sum = 0;
    for (int c = 0; c < 3; ++c) sum += std::pow(stress[c * n + i] + pressure(i), 2);
    for (int c = 3; c < 3 + nshr; ++c) sum += 2 * stress[c * n + i] * stress[c * n + i];
    return std::sqrt(1.5 * sum);
  }
  double at(int variable) const { return state[(variable - 1) * n]; }
};
// A symmetric tensor in other axes.
inline Strain turnedBy(const Matrix& R, const double* t) { return componentsOf(R * tensorOf(t) * transposed(R)); }
// Shear that takes any strength to its limit.
inline void shear(UserMaterial& m, double amount) { m.step({0, 0, 0, amount, 0, 0}); }

constexpr double MPa = 1e6, GPa = 1e9;
// T. J. Holmquist, G. R. Johnson, W. H. Cook (1993), 48 MPa
inline std::vector<double> concrete(double mulMeaning = 0) {
  return {14.86 * GPa, .79,       1.60, .007, .61, 48 * MPa, 4 * MPa,    1,         .01, 7,         16 * MPa,
          .001,        .80 * GPa, .10,  .04,  1,   85 * GPa, -171 * GPa, 208 * GPa, 0,   mulMeaning};
}
inline UserMaterial hjc(std::vector<double> props) { return {"TVK_HJC_CONCRETE", std::move(props), 5}; }

// D. S. Cronin et al., 4th European LS users' conference (2003), in GPa
struct Ceramic {
  const char* name;
  double G, A, B, C, M, N, T, sfmax, HEL, PHEL, D1, D2, K1, K2, K3, mu, strength;
  double intact[4], fractured[3], failureStrain[4];
  std::vector<double> props(double rate0 = 1) const {
    return {G * GPa,   A,          B,  C,  M,        N,        rate0,    T * GPa, sfmax,
            HEL * GPa, PHEL * GPa, D1, D2, K1 * GPa, K2 * GPa, K3 * GPa, 1,       0};
  }
};
// clang-format off
inline const Ceramic kCeramics[] = {
    {"boron carbide", 197, .927, .70, .005, .85, .67, .26, .2, 19, 8.71, .001, .5, 233, -593, 2800, .04079, 15.435,
     {.08817, .60571, .94545, 1.48964}, {.2, .2, .2}, {.000173, .000728, .001015, .001425}},
    {"alumina", 90.16, .93, .31, 0, .6, .6, .2, 0, 2.79, 1.46, .005, 1, 130.95, 0, 0, .01117, 1.995,
     {.28216, .70951, 1.00447, 1.46678}, {.20452, .31, .46987}, {.000685, .003185, .005685, .010685}},
    {"float glass", 30.4, .93, .088, .003, .35, .77, .15, .5, 5.95, 2.92, .053, .85, 45.4, -138, 290, .08079, 4.545,
     {.09456, .58802, .96657, 1.61717}, {.06904, .088, .11216}, {.00425, .031952, .055305, .097614}}};
// clang-format on
inline UserMaterial jh2(std::vector<double> props) { return {"TVK_JH2", std::move(props), 4}; }

// Silicon carbide, T. J. Holmquist, G. R. Johnson, J. Appl. Phys. 97 (2005) 093502
inline std::vector<double> siliconCarbide() {
  return {193 * GPa, 1.5 * GPa, 4.92 * GPa, 12.2 * GPa, .5 * GPa,  .2 * GPa, .2 * GPa, .009, 1e30, .75 * GPa,
          .16,       1,         0,          220 * GPa,  361 * GPa, 0,        1,        0,    0,    0};
}
inline UserMaterial jhb(std::vector<double> props) { return {"TVK_JHB", std::move(props), 4}; }

// With made-up phases: K 201, 260, 0 to P1 16; dense from mu2 .36 on with K' 300, 200, 0 and mu0 .2; in GPa.
inline UserMaterial phases(double beta = 0) {
  auto props = siliconCarbide();
  props.resize(18);
  props[9] = 1e-9 * GPa, props[13] = 201 * GPa, props[14] = 260 * GPa, props[16] = beta;
  for (double x : {16 * GPa, .36, 300 * GPa, 200 * GPa, 0., .2}) props.push_back(x);
  return {"TVK_JHB", std::move(props), 5};
}

// F. Auricchio, R. L. Taylor (1997): E 60000, nu .3, plateaus 520 to 600 and 300 to 200, alpha .15; MPa
inline std::vector<double> nitinol(double alpha = .15, double EM = 60000) {
  const double compression = 520 * (kRoot + alpha) / (kRoot - alpha);
  return {60000, .3, EM, .3, .075, 520, 600, 300, 200, compression, 300, 0, 0, -1};
}
// For the exponential law; alpha as the start in compression asks for.
inline std::vector<double> exponential(double alpha = 0, double EM = 60000, double C = 0) {
  const double compression = alpha > 0 ? 520 * (kRoot + alpha) / (kRoot - alpha) : 0;
  return {60000, .3, EM, .3, .075, 520, 750, 550, 200, compression, 300, C, 250, 20};
}
inline UserMaterial wire(std::vector<double> props, const std::string& law = "") {
  return {"TVK_SUPER_ELASTIC_N1D" + law, std::move(props), 8, 1, 0};
}
inline UserMaterial sheet(std::vector<double> props, const std::string& law = "") {
  return {"TVK_SUPER_ELASTIC_N2D" + law, std::move(props), 8, 3, 1};
}
inline UserMaterial solid(std::vector<double> props, const std::string& law = "", int shears = 3) {
  return {"TVK_SUPER_ELASTIC_N3D" + law, std::move(props), 8, 3, shears};
}

} // namespace sharedanalysis::test
