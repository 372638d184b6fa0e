#include "solver/model/materials.h"

#include "glo.h"
#include "spx.h"

#include <algorithm>
#include <cmath>

namespace sharedanalysis::solver {
namespace {

constexpr int kMost = 136;
constexpr std::size_t kRubberTerms = 6;

// ---- kernels whose arguments are all arrays, behind the number of points

template <class... Arguments, std::size_t... k>
void call(void (*kernel)(const int32_t*, Arguments...), int32_t n, double* const* a, std::index_sequence<k...>) {
  kernel(&n, a[k]...);
}
// Constants of the points, then the other arrays.
template <class... Arguments>
void call(void (*kernel)(const int32_t*, Arguments...), int32_t n, const std::vector<double>& constants,
          std::size_t count, std::initializer_list<const double*> rest) {
  double* a[64];
  std::size_t k = 0;
  for (; k < count; ++k) a[k] = const_cast<double*>(constants.data()) + k * static_cast<std::size_t>(n);
  for (const double* array : rest) a[k++] = const_cast<double*>(array);
  call(kernel, n, a, std::index_sequence_for<Arguments...>());
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

double sumOf(const std::vector<double>& c, std::size_t first, std::size_t step, std::size_t count) {
  double sum = 0;
  for (std::size_t k = 0; k < count; ++k) sum += c[first + step * k];
  return sum;
}

// Energy, stress and slope of the volume by powers of (J-1)^2.
struct Volume {
  double energy, p, slope;
};
Volume volumeOf(const double* rD, int32_t n, std::size_t terms, double J) {
  const double d = J - 1, e = d * d;
  Volume v{};
  double power = 1; // e^(i-1)
  for (std::size_t i = 1; i <= terms; ++i) {
    const double r = rD[(i - 1) * static_cast<std::size_t>(n)], k = static_cast<double>(2 * i);
    v.energy += r * power * e;
    v.p += k * r * power * d;
    v.slope += k * (k - 1) * r * power;
    power *= e;
  }
  return v;
}

} // namespace

const std::vector<std::string>& modelNames() {
  static const std::vector<std::string> names = {"polynomial", "polynomial6", "arruda-boyce", "van-der-waals",
                                                 "ogden",      "hyperfoam",   "marlow",       "user"};
  return names;
}

double Material::shearModulus() const {
  switch (model) {
  case Model::Polynomial:
  case Model::Polynomial6:
    return 2 * (constants[0] + constants[1]);
  case Model::ArrudaBoyce: {
    const double t = 1 / (constants[1] * constants[1]);
    return constants[0] * (1 + t * (0.6 + t * (99.0 / 175 + t * (513.0 / 875 + t * 42039.0 / 67375))));
  }
  case Model::VanDerWaals:
    return constants[0];
  case Model::Ogden:
  case Model::Foam:
    return sumOf(constants, 0, 2, kRubberTerms);
  case Model::TestCurve:
    return curveDerivatives(*this, 3).first * 2;
  case Model::User:
    return userModuli(*this).shear;
  }
  return 0;
}

double Material::bulkModulus() const {
  switch (model) {
  case Model::Polynomial:
    return 2 * constants[5];
  case Model::Polynomial6:
    return 2 * constants[27];
  case Model::ArrudaBoyce:
  case Model::VanDerWaals:
    return 2 / constants.back();
  case Model::Ogden:
    return 2 * constants[12];
  case Model::Foam: {
    double K = 0;
    for (std::size_t t = 0; t < kRubberTerms; ++t) K += 2 * constants[2 * t] * (1.0 / 3 + constants[12 + t]);
    return K;
  }
  case Model::TestCurve:
    return 2 * constants[0];
  case Model::User:
    return userModuli(*this).bulk;
  }
  return 0;
}

MaterialWork::MaterialWork()
    : principal(3 * kMost), axes(9 * kMost), dU(3 * kMost), ddU(6 * kMost), volume(kMost), slope(kMost), U(kMost),
      rJ(kMost), eta(kMost), detaDU(kMost), rest(kMost), lost(kMost), first(kMost, 1.0), second(kMost), I1(kMost),
      I2(kMost) {}

MaterialPoints::MaterialPoints(const Material& material, int32_t n)
    : material_(&material), n_(n), constants_(material.constants.size() * static_cast<std::size_t>(n)),
      flag_(static_cast<std::size_t>(n)), energyFlag_(static_cast<std::size_t>(n)) {
  for (std::size_t k = 0; k < material.constants.size(); ++k)
    std::fill_n(constants_.begin() + static_cast<std::ptrdiff_t>(k) * n, n, material.constants[k]);
  if (material.model == Model::User) user_.emplace(material, n);
  if (!material.mullins) return;
  const auto size = static_cast<std::size_t>(n);
  r_.assign(size, material.mullins->r);
  m_.assign(size, material.mullins->m);
  beta_.assign(size, material.mullins->beta);
  largest_.assign(size, 0.0);
  largestNow_ = largest_;
}

void MaterialPoints::remember() {
  largest_ = largestNow_;
  if (user_) user_->remember();
}

void MaterialPoints::respond(const double* V, const double* F, double increment, double* stress, double* bound,
                             double* bulk, MaterialWork& w) {
  const auto invariants = [&](auto kernel) {
    call(kernel, n_, constants_, material_->constants.size(), {V, stress, flag_.data(), bound, bulk});
  };
  switch (material_->model) {
  case Model::Polynomial:
    invariants(SPX_MAT_HYPERPOLY3DEXP);
    break;
  case Model::Polynomial6:
    invariants(SPX_MAT_HYPERPOLY63DEXP);
    break;
  case Model::ArrudaBoyce:
    invariants(SPX_MAT_HYPERAB3DEXP);
    break;
  case Model::VanDerWaals:
    invariants(SPX_MAT_HYPERVDW3DEXP);
    break;
  case Model::Ogden:
  case Model::Foam:
    principalStress(V, stress, bound, bulk, w);
    break;
  case Model::TestCurve:
    curveStress(V, stress, bound, bulk, w);
    break;
  case Model::User:
    user_->respond(V, F, increment, stress, bound, bulk);
    SPX_MAT_HYPERINVS33(&n_, w.I1.data(), w.I2.data(), w.rJ.data(), V);
    for (int32_t i = 0; i < n_; ++i)
      if (1 / w.rJ[i] < 1e-9) flag_[i] = 1;
    break;
  }
  if (!material_->mullins) return;

  isochoricEnergy(V, w);
  SPX_MAT_ORMULLINS(&n_, r_.data(), m_.data(), beta_.data(), largestNow_.data(), largest_.data(), w.U.data(),
                    w.eta.data(), w.detaDU.data());
  // Foam has one energy for shape and volume: all of its stress is softened, so that the energies close.
  const bool softensMean = material_->model == Model::Foam;
  for (int32_t i = 0; i < n_; ++i) { // J s:s of the stress that is to be softened
    double* s = stress + i;
    const double mean = softensMean ? 0 : (s[0] + s[n_] + s[2 * n_]) / 3;
    const double d1 = s[0] - mean, d2 = s[n_] - mean, d3 = s[2 * n_] - mean;
    w.rest[i] =
        (d1 * d1 + d2 * d2 + d3 * d3 + 2 * (s[3 * n_] * s[3 * n_] + s[4 * n_] * s[4 * n_] + s[5 * n_] * s[5 * n_])) /
        w.rJ[i];
    w.lost[i] = bound[i];
    if (softensMean)
      for (int c = 0; c < 6; ++c) s[c * n_] *= w.eta[i];
  }
  if (!softensMean) SPX_MAT_MULLINSSTRESSDEGR3D(&n_, w.eta.data(), stress);
  constexpr int32_t kUnloading = 200; // the stiffest way: any increment may turn
  SPX_OPT_MULLINSEFFMOD(&n_, &kUnloading, w.eta.data(), w.detaDU.data(), w.rest.data(), w.lost.data(), bound);
}

void MaterialPoints::principalStress(const double* V, double* stress, double* bound, double* bulk, MaterialWork& w) {
  const bool isFoam = material_->model == Model::Foam;
  const std::size_t isochoric = isFoam ? 18 : 12;
  const auto kernels = [&](auto energy, auto first, auto second) {
    call(energy, n_, constants_, isochoric, {w.U.data(), w.rJ.data(), w.principal.data(), flag_.data()});
    call(first, n_, constants_, isochoric, {w.dU.data(), w.principal.data(), flag_.data()});
    call(second, n_, constants_, isochoric, {w.ddU.data(), w.principal.data(), flag_.data()});
  };
  GLO_UTI_EIG33V(&n_, V, w.principal.data(), w.axes.data());
  // the kernels guard against no volume at all; a brick is given up before
  for (int32_t i = 0; i < n_; ++i)
    if (w.principal[i] * w.principal[i + n_] * w.principal[i + 2 * n_] < 1e-9) flag_[i] = 1;
  if (isFoam)
    kernels(SPX_MAT_HFOAM6, SPX_MAT_HFOAM6DERIVATIVE1, SPX_MAT_HFOAM6DERIVATIVE2);
  else
    kernels(SPX_MAT_OGDEN6, SPX_MAT_OGDEN6DERIVATIVE1, SPX_MAT_OGDEN6DERIVATIVE2);
  for (int32_t i = 0; i < n_; ++i) {
    const Volume v = isFoam ? Volume{} : volumeOf(&constants_[12 * n_ + i], n_, 6, 1 / w.rJ[i]);
    w.volume[i] = v.p;
    w.slope[i] = v.slope;
  }
  SPX_MAT_HYPERELAS3D(&n_, w.dU.data(), w.ddU.data(), w.volume.data(), w.slope.data(), w.principal.data(),
                      w.axes.data(), w.rJ.data(), stress, bound, bulk);
}

void MaterialPoints::curveStress(const double* V, double* stress, double* bound, double* bulk, MaterialWork& w) {
  SPX_MAT_HYPERINVS33(&n_, w.I1.data(), w.I2.data(), w.rJ.data(), V);
  for (int32_t i = 0; i < n_; ++i) {
    const double J = 1 / w.rJ[i];
    if (!(J >= 1e-9)) flag_[i] = J == J ? 1 : flag_[i];
    const auto [U1, U11] = curveDerivatives(*material_, w.I1[i]);
    const Volume v = volumeOf(&constants_[i], n_, 1, J);
    w.first[i] = U1;
    w.second[i] = U11;
    w.volume[i] = v.p;
    w.slope[i] = v.slope;
  }
  SPX_MAT_HYPERMARLOW3DEXP(&n_, w.first.data(), w.volume.data(), V, stress);
  SPX_MAT_MARLOWMODULI3DEXP(&n_, w.first.data(), w.volume.data(), w.second.data(), w.slope.data(), V, bound, bulk);
}

// Isochoric energy (of foam the whole) and 1/J.
void MaterialPoints::isochoricEnergy(const double* V, MaterialWork& w) {
  const auto energy = [&](auto kernel, std::size_t count) {
    call(kernel, n_, constants_, count, {w.U.data(), w.rJ.data(), V});
  };
  const auto powers = [&](auto kernel, std::size_t count) {
    GLO_UTI_EIG33(&n_, V, w.principal.data());
    call(kernel, n_, constants_, count, {w.U.data(), w.rJ.data(), w.principal.data(), energyFlag_.data()});
  };
  switch (material_->model) {
  case Model::Polynomial:
    return energy(SPX_MAT_HYPERPOLYS33, 5);
  case Model::Polynomial6:
    return energy(SPX_MAT_HYPERPOLY6S33, 27);
  case Model::ArrudaBoyce:
    return energy(SPX_MAT_HYPERABS33, 2);
  case Model::VanDerWaals:
    return energy(SPX_MAT_HYPERVDWS33, 4);
  case Model::Ogden:
    return powers(SPX_MAT_OGDEN6, 12);
  case Model::Foam:
    return powers(SPX_MAT_HFOAM6, 18);
  case Model::TestCurve:
    SPX_MAT_HYPERINVS33(&n_, w.I1.data(), w.I2.data(), w.rJ.data(), V);
    for (int32_t i = 0; i < n_; ++i) w.U[i] = onCurve(*material_, barStretch(w.I1[i])).work;
    return;
  case Model::User:
    return; // it keeps its energies
  }
}

// logJ is read where the model has it.
double MaterialPoints::volumetricEnergy(int32_t i, double J, double logJ) const {
  const double* c = &constants_[static_cast<std::size_t>(i)];
  switch (material_->model) {
  case Model::Polynomial:
    return volumeOf(c + 5 * n_, n_, 2, J).energy;
  case Model::Polynomial6:
    return volumeOf(c + 27 * n_, n_, 6, J).energy;
  case Model::ArrudaBoyce:
    return ((J * J - 1) / 2 - logJ) / c[2 * n_];
  case Model::VanDerWaals:
    return ((J * J - 1) / 2 - logJ) / c[4 * n_];
  case Model::Ogden:
    return volumeOf(c + 12 * n_, n_, 6, J).energy;
  case Model::Foam:
    return 0;
  case Model::TestCurve:
    return volumeOf(c, n_, 1, J).energy;
  case Model::User:
    return 0;
  }
  return 0;
}

void MaterialPoints::energies(const double* V, double* stored, double* lost, MaterialWork& w) {
  if (user_) return user_->energies(stored, lost);
  isochoricEnergy(V, w);
  const bool needsLog = material_->model == Model::ArrudaBoyce || material_->model == Model::VanDerWaals;
  if (needsLog) GLO_UTI_LOGV(&n_, V, w.ddU.data()); // ln J is the trace
  for (int32_t i = 0; i < n_; ++i) {
    const double logJ = needsLog ? w.ddU[i] + w.ddU[i + n_] + w.ddU[i + 2 * n_] : 0;
    stored[i] = w.U[i] + volumetricEnergy(i, 1 / w.rJ[i], logJ);
    lost[i] = 0;
  }
  if (!material_->mullins) return;
  // Down from the largest energy Um the path gives back U less the loss of all of Um, and more what it would still lose from here
  // on: the same function of Um - U at the same d = m + beta Um.
  std::fill_n(w.first.begin(), n_, 1.0);
  SPX_MAT_MULLINSDAMAGEENER(&n_, r_.data(), m_.data(), beta_.data(), largest_.data(), w.first.data(), w.first.data(),
                            lost);
  for (int32_t i = 0; i < n_; ++i) {
    const double U = std::clamp(w.U[i], 0.0, largest_[i]);
    w.second[i] = m_[i] + beta_[i] * U;
    w.rest[i] = largest_[i] - U;
  }
  SPX_MAT_MULLINSDAMAGEENER(&n_, r_.data(), w.second.data(), beta_.data(), w.rest.data(), w.first.data(),
                            w.first.data(), w.lost.data());
  for (int32_t i = 0; i < n_; ++i) stored[i] += w.lost[i] - lost[i];
}

} // namespace sharedanalysis::solver
