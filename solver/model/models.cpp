// The table of models and the formulas behind its rows.
#include "solver/model/models.h"

#include "glo.h"
#include "solver/model/materials.h"
#include "spx.h"

#include <algorithm>
#include <cmath>

namespace sharedanalysis::solver {
namespace {

// ---- kernels that take the number of points, arrays of constants, and further arrays

template <class... Arguments>
constexpr std::size_t arityOf(void (*)(Arguments...)) {
  return sizeof...(Arguments);
}

template <class Kernel, std::size_t... k, class... Rest>
void callAt(std::index_sequence<k...>, Kernel kernel, const PointBlock& p, Rest... rest) {
  kernel(&p.n, (p.constants + k * static_cast<std::size_t>(p.n))..., rest...);
}
// The kernel's arguments that are not among the rest are its constants.
template <auto kernel, class... Rest>
void call(const PointBlock& p, Rest... rest) {
  callAt(std::make_index_sequence<arityOf(kernel) - 1 - sizeof...(Rest)>(), kernel, p, rest...);
}

// ---- a curve of tests

// The stretch above one of an incompressible bar whose first invariant is I1: the largest root of s^3 - I1 s + 2.
double barStretch(double I1) {
  double s = std::sqrt(std::max(I1, 3.0));
  for (int k = 0; k < 100; ++k) { // from above, so that every step is a decrease until rounding
    const double slope = 3 * s * s - I1, next = slope > 0 ? s - (s * s * s - I1 * s + 2) / slope : s;
    if (!(next < s)) break;
    s = std::max(next, 1.0);
  }
  return s;
}

struct CurvePoint {
  double stress, slope, work; // nominal stress, its derivative, and the integral from 1 on
};
CurvePoint onCurve(const Material& m, double stretch) {
  CurvePoint p{};
  for (std::size_t k = 0; k + 1 < m.curveStretch.size(); ++k) {
    const double a = m.curveStretch[k], fa = m.curveStress[k], b = m.curveStretch[k + 1];
    p.slope = (m.curveStress[k + 1] - fa) / (b - a);
    const bool isLast = k + 2 == m.curveStretch.size(), inside = stretch <= b || isLast;
    const double end = inside ? stretch : b;
    p.stress = fa + p.slope * (end - a);
    p.work += 0.5 * (fa + p.stress) * (end - a);
    if (inside) break;
  }
  return p;
}

// dU/dI1 and its derivative.
std::pair<double, double> curveDerivatives(const Material& m, double I1) {
  const double s = barStretch(I1);
  const CurvePoint p = onCurve(m, s);
  if (s - 1 < 1e-6) return {p.slope / 6, 0}; // the limit
  const double g = s - 1 / (s * s), dg = 1 + 2 / (s * s * s), U1 = p.stress / (2 * g);
  return {U1, s - 1 < 1e-3 ? 0.0 : (p.slope * g - p.stress * dg) / (4 * g * g * g)};
}

// ---- the volume

// Energy, stress and slope by powers of (J-1)^2.
struct Volume {
  double energy, p, slope;
};
Volume volumeOf(const PointBlock& p, int32_t i, double J) {
  const VolumeLaw& law = p.material.model->volume;
  const auto n = static_cast<std::size_t>(p.n);
  const double* rD = p.constants + law.at * n + i;
  const double d = J - 1, e = d * d;
  Volume v{};
  double power = 1; // e^(i-1)
  for (std::size_t t = 1; t <= law.terms; ++t) {
    const double r = rD[(t - 1) * n], k = static_cast<double>(2 * t);
    v.energy += r * power * e;
    v.p += k * r * power * d;
    v.slope += k * (k - 1) * r * power;
    power *= e;
  }
  return v;
}

// ---- models in the invariants

template <auto kernel>
void invariantStress(const PointBlock& p, const BlockStress& s) {
  call<kernel>(p, p.V, s.stress, p.flag, s.bound, s.bulk);
}
template <auto kernel>
void invariantEnergy(const PointBlock& p) {
  call<kernel>(p, p.work.U.data(), p.work.rJ.data(), p.V);
}

// ---- models in the stretches

// Energy kernel and the kernels of its first and second derivatives.
template <auto energy, auto first, auto second>
void stretchStress(const PointBlock& p, const BlockStress& s) {
  MaterialWork& w = p.work;
  const VolumeLaw& law = p.material.model->volume;
  GLO_UTI_EIG33V(&p.n, p.V, w.principal.data(), w.axes.data());
  // a brick is given up at a volume ratio of 1e-9; the kernels guard against 0 alone
  for (int32_t i = 0; i < p.n; ++i)
    if (w.principal[i] * w.principal[i + p.n] * w.principal[i + 2 * p.n] < kSmallestVolume) p.flag[i] = 1;
  const double* principal = w.principal.data();
  call<energy>(p, w.U.data(), w.rJ.data(), principal, p.flag);
  call<first>(p, w.dU.data(), principal, p.flag);
  call<second>(p, w.ddU.data(), principal, p.flag);
  for (int32_t i = 0; i < p.n; ++i) {
    const Volume v = law.form == VolumeLaw::None ? Volume{} : volumeOf(p, i, 1 / w.rJ[i]);
    w.volume[i] = v.p;
    w.slope[i] = v.slope;
  }
  SPX_MAT_HYPERELAS3D(&p.n, w.dU.data(), w.ddU.data(), w.volume.data(), w.slope.data(), w.principal.data(),
                      w.axes.data(), w.rJ.data(), s.stress, s.bound, s.bulk);
}
template <auto kernel>
void stretchEnergy(const PointBlock& p) {
  MaterialWork& w = p.work;
  GLO_UTI_EIG33(&p.n, p.V, w.principal.data());
  call<kernel>(p, w.U.data(), w.rJ.data(), static_cast<const double*>(w.principal.data()), p.energyFlag);
}

// ---- the model that follows a test curve

void curveStress(const PointBlock& p, const BlockStress& s) {
  MaterialWork& w = p.work;
  SPX_MAT_HYPERINVS33(&p.n, w.I1.data(), w.I2.data(), w.rJ.data(), p.V);
  for (int32_t i = 0; i < p.n; ++i) {
    const double J = 1 / w.rJ[i];
    if (!(J >= kSmallestVolume)) p.flag[i] = J == J ? 1 : p.flag[i];
    const auto [U1, U11] = curveDerivatives(p.material, w.I1[i]);
    const Volume v = volumeOf(p, i, J);
    w.first[i] = U1;
    w.second[i] = U11;
    w.volume[i] = v.p;
    w.slope[i] = v.slope;
  }
  SPX_MAT_HYPERMARLOW3DEXP(&p.n, w.first.data(), w.volume.data(), p.V, s.stress);
  SPX_MAT_MARLOWMODULI3DEXP(&p.n, w.first.data(), w.volume.data(), w.second.data(), w.slope.data(), p.V, s.bound,
                            s.bulk);
}
void curveEnergy(const PointBlock& p) {
  MaterialWork& w = p.work;
  SPX_MAT_HYPERINVS33(&p.n, w.I1.data(), w.I2.data(), w.rJ.data(), p.V);
  for (int32_t i = 0; i < p.n; ++i) w.U[i] = onCurve(p.material, barStretch(w.I1[i])).work;
}

// ---- moduli at small strain

double firstConstant(const Material& m) { return m.constants[0]; }
double polynomialShear(const Material& m) { return 2 * (m.constants[0] + m.constants[1]); }
double arrudaBoyceShear(const Material& m) {
  const std::vector<double>& constants = m.constants;
  const double t = 1 / (constants[1] * constants[1]);
  return constants[0] * (1 + t * (0.6 + t * (99.0 / 175 + t * (513.0 / 875 + t * 42039.0 / 67375))));
}
double sumOfTerms(const Material& m) {
  double sum = 0;
  for (std::size_t t = 0; t < kMostTerms; ++t) sum += m.constants[2 * t];
  return sum;
}
double foamBulk(const Material& m) {
  const std::vector<double>&constants = m.constants, beta(constants.begin() + 2 * kMostTerms, constants.end());
  double K = 0;
  for (std::size_t t = 0; t < kMostTerms; ++t) K += 2 * constants[2 * t] * (1.0 / 3 + beta[t]);
  return K;
}
double curveShear(const Material& m) { return curveDerivatives(m, 3).first * 2; }
double userShear(const Material& m) { return userModuli(m).shear; }
double userBulk(const Material& m) { return userModuli(m).bulk; }

// ---- keys

// C10, C01, C20, ... by total order, then by falling power of the first invariant; D1 to the order.
std::vector<ConstantKey> polynomialKeys(int order) {
  const auto numbered = [](const char* letter, int i) { return std::string(letter).append(std::to_string(i)); };
  std::vector<ConstantKey> keys;
  for (int total = 1; total <= order; ++total)
    for (int i = total; i >= 0; --i)
      keys.push_back({numbered(i == 0 ? "C0" : "C", i == 0 ? total : 10 * i + (total - i)), anyNumber, "Pa", 0});
  keys.push_back({"D1", positive, "1/Pa", {}, true});
  for (int i = 2; i <= order; ++i) keys.push_back({numbered("D", i), notNegative, "1/Pa", 0, true});
  return keys;
}

} // namespace

const std::vector<SolverModel>& models() {
  static const ConstantKey kMu{"mu", positive, "Pa"}, kD{"D", positive, "1/Pa"},
      kReciprocalOfD{"D", positive, "1/Pa", {}, true};
  static const ConstantKey kMuTerms{"mu", anyNumber, "Pa"}, kAlphaTerms{"alpha"};
  static const std::vector<SolverModel> rows = {
      {.name = "polynomial",
       .reading = Reading::Numbers,
       .keys = polynomialKeys(2),
       .volume = {VolumeLaw::Powers, 5, 2},
       .shearModulus = polynomialShear,
       .stress = invariantStress<SPX_MAT_HYPERPOLY3DEXP>,
       .energy = invariantEnergy<SPX_MAT_HYPERPOLYS33>,
       .halfShear = "C10 + C01"},
      {.name = "polynomial6",
       .reading = Reading::Numbers,
       .keys = polynomialKeys(6),
       .volume = {VolumeLaw::Powers, 27, 6},
       .shearModulus = polynomialShear,
       .stress = invariantStress<SPX_MAT_HYPERPOLY63DEXP>,
       .energy = invariantEnergy<SPX_MAT_HYPERPOLY6S33>,
       .halfShear = "C10 + C01"},
      {.name = "arruda-boyce",
       .reading = Reading::Numbers,
       .keys = {kMu, {"lambda_m", positive}, kD},
       .volume = {VolumeLaw::Logarithmic, 2},
       .shearModulus = arrudaBoyceShear,
       .stress = invariantStress<SPX_MAT_HYPERAB3DEXP>,
       .energy = invariantEnergy<SPX_MAT_HYPERABS33>},
      {.name = "van-der-waals",
       .reading = Reading::Numbers,
       .keys = {kMu, {"lambda_m", aboveRootThree}, {"a", anyNumber, "", 0}, {"beta", zeroToOne, "", 0}, kD},
       .volume = {VolumeLaw::Logarithmic, 4},
       .shearModulus = firstConstant,
       .stress = invariantStress<SPX_MAT_HYPERVDW3DEXP>,
       .energy = invariantEnergy<SPX_MAT_HYPERVDWS33>},
      {.name = "ogden",
       .reading = Reading::Terms,
       .keys = {kMuTerms, kAlphaTerms, kReciprocalOfD},
       .volume = {VolumeLaw::Powers, 2 * kMostTerms, kMostTerms},
       .shearModulus = sumOfTerms,
       .stress = stretchStress<SPX_MAT_OGDEN6, SPX_MAT_OGDEN6DERIVATIVE1, SPX_MAT_OGDEN6DERIVATIVE2>,
       .energy = stretchEnergy<SPX_MAT_OGDEN6>},
      {.name = "hyperfoam",
       .reading = Reading::Terms,
       .keys = {kMuTerms, kAlphaTerms, {"beta"}},
       .volume = {},
       .shearModulus = sumOfTerms,
       .stress = stretchStress<SPX_MAT_HFOAM6, SPX_MAT_HFOAM6DERIVATIVE1, SPX_MAT_HFOAM6DERIVATIVE2>,
       .energy = stretchEnergy<SPX_MAT_HFOAM6>,
       .bulkModulus = foamBulk,
       .softensMean = true},
      {.name = "marlow",
       .reading = Reading::TestCurve,
       .keys = {{"stretch"}, {"stress", anyNumber, "Pa"}, kReciprocalOfD},
       .volume = {VolumeLaw::Powers, 0},
       .shearModulus = curveShear,
       .stress = curveStress,
       .energy = curveEnergy},
      {.name = "user",
       .reading = Reading::User,
       .keys = {{"user"},
                {"properties"},
                {"temperature", anyNumber, "K", 293.15},
                {"length", positive, "m", 1e-3},
                {"across_modulus", positive, "Pa", 0.0},
                {"curve"}},
       .volume = {},
       .shearModulus = userShear,
       .bulkModulus = userBulk}};
  return rows;
}

const SolverModel* findModel(const std::string& name) {
  const auto found =
      std::find_if(models().begin(), models().end(), [&](const SolverModel& m) { return name == m.name; });
  return found == models().end() ? nullptr : &*found;
}

double volumetricEnergy(const PointBlock& p, int32_t i, double J, double logJ) {
  const VolumeLaw& law = p.material.model->volume;
  switch (law.form) {
  case VolumeLaw::None:
    return 0;
  case VolumeLaw::Powers:
    return volumeOf(p, i, J).energy;
  case VolumeLaw::Logarithmic:
    return ((J * J - 1) / 2 - logJ) / p.constants[law.at * static_cast<std::size_t>(p.n) + static_cast<std::size_t>(i)];
  }
  return 0;
}

double Material::shearModulus() const { return model->shearModulus(*this); }

double Material::bulkModulus() const {
  if (model->bulkModulus != nullptr) return model->bulkModulus(*this);
  const double c = constants[model->volume.at];
  return model->volume.form == VolumeLaw::Logarithmic ? 2 / c : 2 * c;
}

double Material::waveSpeed() const { return std::sqrt((bulkModulus() + 4 * shearModulus() / 3) / density); }

} // namespace sharedanalysis::solver
