// The table of user materials, and the rotated frame in which their points are advanced.
#include "solver/model/user_materials.h"

#include "glo.h"
#include "reference_host.h"
#include "solver/model/archive.h"
#include "solver/model/materials.h"
#include "solver/model/model.h"
#include "solver/model/s33.h"
#include "solver/model/user_stiffness.h"
#include "spx.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>

namespace sharedanalysis::solver {
namespace {

constexpr int32_t kDirect = 3, kShear = 3, kSheetShear = 1, kNone = 0, kPlaneStress = 1;
constexpr int kGradient[3][3] = {{0, 3, 8}, {6, 1, 4}, {5, 7, 2}}; // 11 22 33 12 23 31 21 32 13

using Matrix = std::array<std::array<double, 3>, 3>;

Matrix product(const Matrix& a, const Matrix& b) {
  Matrix c{};
  for (std::size_t i = 0; i < 3; ++i)
    for (std::size_t j = 0; j < 3; ++j) c[i][j] = a[i][0] * b[0][j] + a[i][1] * b[1][j] + a[i][2] * b[2][j];
  return c;
}
Matrix transposed(const Matrix& a) {
  Matrix t{};
  for (std::size_t i = 0; i < 3; ++i)
    for (std::size_t j = 0; j < 3; ++j) t[i][j] = a[j][i];
  return t;
}
Matrix inverse(const Matrix& a) {
  Matrix r{};
  for (std::size_t i = 0; i < 3; ++i)
    for (std::size_t j = 0; j < 3; ++j) {
      const std::size_t i1 = (i + 1) % 3, i2 = (i + 2) % 3, j1 = (j + 1) % 3, j2 = (j + 2) % 3;
      r[j][i] = a[i1][j1] * a[i2][j2] - a[i1][j2] * a[i2][j1];
    }
  const double det = a[0][0] * r[0][0] + a[0][1] * r[1][0] + a[0][2] * r[2][0];
  for (auto& row : r)
    for (double& x : row) x /= det;
  return r;
}
double determinant(const Matrix& a) {
  return a[0][0] * (a[1][1] * a[2][2] - a[1][2] * a[2][1]) - a[0][1] * (a[1][0] * a[2][2] - a[1][2] * a[2][0]) +
         a[0][2] * (a[1][0] * a[2][1] - a[1][1] * a[2][0]);
}
Matrix loadSymmetric(const double* block, int32_t n, int32_t i) {
  Matrix m{};
  for (std::size_t a = 0; a < 3; ++a)
    for (std::size_t b = 0; b < 3; ++b) m[a][b] = block[kS33[a][b] * n + i];
  return m;
}
// The symmetric part.
void storeSymmetric(const Matrix& m, double* block, int32_t n, int32_t i) {
  for (std::size_t a = 0; a < 3; ++a)
    for (std::size_t b = a; b < 3; ++b) block[kS33[a][b] * n + i] = 0.5 * (m[a][b] + m[b][a]);
}

// ---- sheets in bricks

// What strains a sheet across its plane and out of it: components 33, 13, 23 of Green's strain (U U - 1)/2.
std::array<double, 3> strainAcross(const Matrix& U) {
  const Matrix C = product(U, U);
  return {0.5 * (C[2][2] - 1), 0.5 * C[0][2], 0.5 * C[1][2]};
}
// The model's stress does its work on a sheet that keeps its thickness, per area; the brick does the same work per volume.
// Across, the second Piola-Kirchhoff stress is Green's strain times the modulus k.
double areaRatio(const Matrix& U) { return U[0][0] * U[1][1] - U[0][1] * U[0][1]; }
Matrix sheetStress(const Matrix& plane, const Matrix& U, double k) {
  const std::array<double, 3> e = strainAcross(U);
  const Matrix S = {{{0, 0, k * e[1]}, {0, 0, k * e[2]}, {k * e[1], k * e[2], k * e[0]}}};
  Matrix s = product(U, product(S, U));
  const double J = determinant(U), area = areaRatio(U);
  for (std::size_t a = 0; a < 3; ++a)
    for (std::size_t b = 0; b < 3; ++b) s[a][b] = (s[a][b] + area * plane[a][b]) / J;
  return s;
}
double sheetEnergy(const Matrix& U, double k) {
  const std::array<double, 3> e = strainAcross(U);
  return k * (0.5 * e[0] * e[0] + e[1] * e[1] + e[2] * e[2]);
}

// ---- moduli for the stable increment, from the properties p

Moduli isotropic(double E, double nu) { return {E / (2 * (1 + nu)), E / (3 * (1 - 2 * nu))}; }

// The stiffer of austenite (E, nu at 0) and martensite (at 2).
Moduli superelasticModuli(const Properties& p) { return isotropic(std::max(p[0], p[2]), p[0] > p[2] ? p[1] : p[3]); }
// G and the first coefficient of the pressure, K1.
Moduli ceramicModuli(const Properties& p) { return {p[0], p[13]}; }
// The stiffer of crushing begin (pressure over strain) and dense concrete, K1.
Moduli concreteModuli(const Properties& p) { return {p[0], std::max(p[10] / p[11], p[16])}; }
Moduli plasticModuli(const Properties& p) { return isotropic(p[0], p[1]); }
// E without lateral contraction.
Moduli tabulatedFoamModuli(const Properties& p) { return isotropic(p[0], 0.0); }
// Two terms mu, alpha, beta, and the modulus of the viscous branch.
Moduli viscousFoamModuli(const Properties& p) {
  return {p[0] + p[3] + p[6] / 2, 2 * p[0] * (p[2] + 1.0 / 3) + 2 * p[3] * (p[5] + 1.0 / 3) + p[6] / 3};
}
// The stiffest of the uncoupled directions, which have no lateral contraction.
Moduli honeycombModuli(const Properties& p) {
  return {*std::max_element(&p[7], &p[10]), *std::max_element(&p[4], &p[7]) / 3};
}
// Of sheets in their plane.
Moduli fabricModuli(const Properties& p) { return {p[6] + p[9], p[6] + p[9]}; }
Moduli plyModuli(const Properties& p) { return isotropic(std::max(p[0], p[1]), p[2]); }

// ---- curves that cases give

const std::vector<CurveColumn> kStressStrain{{"stress", "Pa"}, {"strain", ""}};
const std::vector<CurveColumn> kStressVolume{{"stress", "Pa"}, {"volume_strain", ""}};
const std::vector<CurveColumn> kStressPlastic{{"stress", "Pa"}, {"plastic_strain", ""}};
const std::vector<CurveColumn> kFailure{{"strain_tension", ""}, {"strain_compression", ""}, {"rate", "1/s"}};
const std::vector<CurveColumn> kRateFactor{{"factor", ""}, {"rate", "1/s"}};

// Of the six components from one property on, of which the first must be there.
std::vector<CurveKind> componentCurves(const std::vector<CurveColumn>& columns, std::size_t countAt, bool byRate) {
  std::vector<CurveKind> kinds;
  for (const char* name : {"11", "22", "33", "12", "23", "13"})
    kinds.push_back({.name = name, .columns = columns, .countAt = countAt++, .byRate = byRate});
  kinds[0].need = 1;
  return kinds;
}
std::vector<CurveKind> honeycombCurves() {
  std::vector<CurveKind> kinds = componentCurves(kStressVolume, 11, false);
  kinds.push_back({.name = "rate factor", .columns = kRateFactor, .countAt = 17, .fewest = 1});
  return kinds;
}
std::vector<CurveKind> plasticCurves() {
  return {{.name = "tension", .columns = kStressPlastic, .countAt = 10, .need = 1, .fewest = 1},
          {.name = "compression", .columns = kStressPlastic, .countAt = 11, .need = 1, .fewest = 1},
          {.name = "ductile failure", .columns = kFailure, .countAt = 12, .fewest = 1},
          {.name = "shear failure", .columns = kFailure, .countAt = 13, .fewest = 1},
          {.name = "rate factor", .columns = kRateFactor, .countAt = 20, .fewest = 1}};
}
std::vector<CurveKind> fabricCurves() {
  return {{.name = "loading 1", .columns = kStressStrain, .countAt = 0, .need = 1},
          {.name = "loading 2", .columns = kStressStrain, .countAt = 1, .need = 2},
          {.name = "unloading 1", .columns = kStressStrain, .countAt = 2},
          {.name = "unloading 2", .columns = kStressStrain, .countAt = 3}};
}
std::vector<CurveKind> compressionCurves(std::size_t countAt) {
  return {{.name = "compression", .columns = kStressStrain, .countAt = countAt, .byRate = true, .need = 1}};
}

// beta E.
double rateSensitiveDamping(const Properties& p) { return p[2] * p[0]; }
double foamSlope(const UserModel& model, const Properties& p) { return std::max(p[0], steepestSlope(model, p)); }

// ---- stiffness where the point stands

// K1 mu + K2 mu^2 + K3 mu^3 with the coefficients from `at` on.
double cubicSlope(const Properties& p, std::size_t at, double mu) {
  return p[at] + mu * (2 * p[at + 1] + 3 * mu * p[at + 2]);
}
double compressionOf(const UserState& s) { return std::max(0.0, 1 / s.J - 1); }
double ceramicSlope(const UserState& s) { return cubicSlope(s.properties, 13, compressionOf(s)); }
double concreteSlope(const UserState& s) { return cubicSlope(s.properties, 16, compressionOf(s)); }

// With a change of phase (P1, mu2, K1' K2' K3', mu0 from property 19 on): the compression at which it begins, else none.
double phaseBegin(const UserModel&, const Properties& p) {
  if (p.size() < 24 || !(p[18] > 0)) return std::numeric_limits<double>::infinity();
  const auto pressure = [&p](double mu) { return mu * (p[13] + mu * (p[14] + mu * p[15])); };
  double low = 0, high = p[19];
  for (int k = 0; k < 60; ++k) (pressure(0.5 * (low + high)) < p[18] ? low : high) = 0.5 * (low + high);
  return high;
}
// The stiffest of both phases at the largest compression, state variable 5, and of the way between.
double phasesSlope(const UserState& s) {
  const Properties& p = s.properties;
  double slope = ceramicSlope(s);
  if (!std::isfinite(s.derived)) return slope;
  const double top = std::max(compressionOf(s), s.variables[4 * s.stride]), m = (top - p[23]) / (1 + p[23]);
  slope = std::max({slope, cubicSlope(p, 13, top), cubicSlope(p, 20, m) / (1 + p[23])});
  if (top > s.derived && top < p[19]) {
    const double end = (p[19] - p[23]) / (1 + p[23]), P2 = end * (p[20] + end * (p[21] + end * p[22]));
    slope = std::max(slope, (P2 - p[18]) / (p[19] - s.derived));
  }
  return slope;
}

// Of nominal stress over nominal strain: the spatial modulus is the slope times l^2/J.  Unloading by the hysteresis HU, p is
// steeper than the curves.
double tabulatedFoamStiffness(const UserState& s, double HU, double p) {
  const double exponent = p == 0 ? 1 : p, kept = HU == 0 ? 1 : HU;
  return s.derived * (1 + 2 * exponent * (1 - kept)) * s.longest * s.longest / s.J;
}
double rateSensitiveStiffness(const UserState& s) {
  return tabulatedFoamStiffness(s, s.properties[3], s.properties[4]);
}
double fuChangStiffness(const UserState& s) { return tabulatedFoamStiffness(s, s.properties[2], s.properties[3]); }
double orthotropicFuChangStiffness(const UserState& s) { return 2 * fuChangStiffness(s); }

double viscousFoamStiffness(const UserState& s) {
  const double* p = s.properties.data();
  double sum = p[7] > 0 ? p[6] : 0;
  for (const double* term : {p, p + 3}) {
    const double largest = std::max(std::pow(s.shortest, term[1]), std::pow(s.longest, term[1]));
    sum += 2 * term[0] * (largest + std::max(0.0, term[2]) * std::pow(s.J, -term[1] * term[2]));
  }
  return sum / s.J + s.compression;
}
// The open cells, and what compaction, state variable 1, has made of them on the way to the dense metal.
double honeycombStiffness(const UserState& s) {
  const Properties& p = s.properties;
  const Moduli dense = isotropic(p[0], p[1]);
  return std::max({p[4], p[5], p[6]}) + s.variables[0] * (dense.bulk + 4.0 / 3 * dense.shear);
}

// A status record is "message=" and its text.
std::string textOf(const std::string& record) { return record.substr(record.find('=') + 1); }

} // namespace

const std::vector<UserModel>& userModels() {
  static const std::vector<UserModel> models = {
      {.key = "TVK_SUPER_ELASTIC_N3D", .states = 8, .properties = 14, .moduli = superelasticModuli},
      {.key = "TVK_JH2",
       .states = 4,
       .properties = 18,
       .moduli = ceramicModuli,
       .statusAt = 2,
       .damage = {1, 1},
       .bulk = ceramicSlope},
      {.key = "TVK_JHB",
       .states = 5,
       .properties = 18,
       .takesMore = true,
       .moduli = ceramicModuli,
       .statusAt = 2,
       .damage = {1, 1},
       .derived = phaseBegin,
       .bulk = phasesSlope},
      {.key = "TVK_HJC_CONCRETE",
       .states = 5,
       .properties = 21,
       .moduli = concreteModuli,
       .statusAt = 2,
       .damage = {1, 1},
       .bulk = concreteSlope},
      {.key = "TVK_MOLDED_PLASTIC",
       .states = 14,
       .properties = 21,
       .takesMore = true,
       .moduli = plasticModuli,
       .statusAt = 13,
       .damage = {8, 2},
       .curves = plasticCurves()},
      {.key = "TVK_THERMOPLASTIC",
       .states = 14,
       .properties = 21,
       .takesMore = true,
       .moduli = plasticModuli,
       .statusAt = 13,
       .damage = {8, 2},
       .curves = plasticCurves()},
      {.key = "TVK_VISCOUS_FOAM",
       .states = 6,
       .properties = 10,
       .moduli = viscousFoamModuli,
       .stiffness = viscousFoamStiffness},
      {.key = "TVK_RATE_SENSITIVE_FOAM",
       .states = 8,
       .properties = 7,
       .takesMore = true,
       .moduli = tabulatedFoamModuli,
       .derived = foamSlope,
       .stiffness = rateSensitiveStiffness,
       .damping = rateSensitiveDamping,
       .viscosity = rateSensitiveViscosity,
       .curves = compressionCurves(6)},
      {.key = "TVK_FU_CHANG_ISO_FOAM",
       .states = 7,
       .properties = 6,
       .takesMore = true,
       .moduli = tabulatedFoamModuli,
       .derived = foamSlope,
       .stiffness = fuChangStiffness,
       .viscosity = fuChangViscosity,
       .curves = compressionCurves(5)},
      {.key = "TVK_FU_CHANG_ANISO_FOAM",
       .states = 12,
       .properties = 11,
       .takesMore = true,
       .moduli = tabulatedFoamModuli,
       .derived = foamSlope,
       .stiffness = orthotropicFuChangStiffness,
       .viscosity = orthotropicFuChangViscosity,
       .curves = componentCurves(kStressStrain, 5, true)},
      {.key = "TVK_HONEYCOMB",
       .states = 3,
       .properties = 18,
       .takesMore = true,
       .moduli = honeycombModuli,
       .statusAt = 2,
       .statusBy = 10,
       .damage = {.first = 1, .count = 1, .begins = false},
       .stiffness = honeycombStiffness,
       .curves = honeycombCurves()},
      {.key = "TVK_FABRIC",
       .states = 12,
       .properties = 14,
       .takesMore = true,
       .moduli = fabricModuli,
       .stiffness = fabricStiffness,
       .isSheet = true,
       .curves = fabricCurves()},
      {.key = "TVK_PLY_FABRIC",
       .states = 16,
       .properties = 21,
       .moduli = plyModuli,
       .statusAt = 15,
       .damage = {0, 5},
       .stiffness = plyStiffness,
       .isSheet = true},
  };
  return models;
}

const UserModel* userModelOf(const std::string& name) {
  for (const UserModel& model : userModels())
    if (name.starts_with(model.key)) return &model;
  return nullptr;
}

Moduli userModuli(const Material& material) { return userModelOf(material.userName)->moduli(material.constants); }

std::vector<std::string> describeCurves(const Material& material) {
  if (!material.model->isUser()) return {};
  return describeCurves(*userModelOf(material.userName), material.constants);
}

bool Material::isSheet() const { return model->isUser() && userModelOf(userName)->isSheet; }

void checkData(const Material& material) {
  if (!material.model->isUser() || UserPoints(material, 1).isAccepted()) return;
  std::string said = textOf(host::lastError());
  // curves as tables leave the numbers of rows out, where the library counts them
  const std::vector<std::size_t> scalars = scalarsOf(*userModelOf(material.userName));
  if (material.hasCurveTables && said.starts_with("Property") && scalars.back() >= scalars.size())
    said += " (counted with the numbers of rows, as the declaration does)";
  throw InputError("material \"" + material.name + "\": " + said);
}

UserPoints::UserPoints(const Material& material, int32_t n)
    : material_(&material), model_(userModelOf(material.userName)), n_(n), name_(material.userName),
      derived_(model_->derived != nullptr ? model_->derived(*model_, material.constants) : 0.0),
      across_(model_->isSheet ? material.acrossModulus : 0.0),
      hasStatus_(model_->statusAt && (!model_->statusBy || material.constants[*model_->statusBy] != 0)) {
  name_.resize(80, ' ');
  const auto size = static_cast<std::size_t>(n);
  old_.stretch.assign(6 * size, 0.0);
  old_.F.assign(9 * size, 0.0);
  for (std::size_t k = 0; k < 3 * size; ++k) old_.stretch[k] = old_.F[k] = 1.0;
  old_.stress.assign(6 * size, 0.0);
  old_.state.assign(static_cast<std::size_t>(model_->states) * size, 0.0);
  old_.internal.assign(size, 0.0);
  old_.inelastic.assign(size, 0.0);
  now_ = old_;
  strain_.resize(6 * size);
  spin_.assign(3 * size, 0.0);
  density_.resize(size);
  temperature_.assign(size, material.temperature);
  length_.assign(3 * size, material.length);
  rotation_.resize(9 * size);
  principal_.resize(3 * size);
  if (model_->viscosity != nullptr) viscosity_.assign(size, 0.0);
}

void UserPoints::respond(const double* V, const double* F, double increment, double* stress, double* bound,
                         double* bulk) {
  const auto n = static_cast<std::size_t>(n_);
  for (std::size_t i = 0; i < n; ++i) {
    Matrix f{};
    for (std::size_t a = 0; a < 3; ++a)
      for (std::size_t b = 0; b < 3; ++b) {
        f[a][b] = F[n * (3 * a + b) + i];
        now_.F[static_cast<std::size_t>(kGradient[a][b]) * n + i] = f[a][b];
      }
    if (model_->isSheet) now_.F[4 * n + i] = f[1][0]; // 11 22 33 12 21
    const Matrix v = loadSymmetric(V, n_, static_cast<int32_t>(i)), R = product(inverse(v), f), Rt = transposed(R);
    for (std::size_t a = 0; a < 3; ++a)
      for (std::size_t b = 0; b < 3; ++b) rotation_[9 * i + 3 * a + b] = R[a][b];
    const Matrix U = product(Rt, product(v, R)),
                 before = loadSymmetric(old_.stretch.data(), n_, static_cast<int32_t>(i));
    storeSymmetric(U, now_.stretch.data(), n_, static_cast<int32_t>(i));
    // rate of deformation in the turned axes, over the middle of the increment
    Matrix change{}, middle{};
    for (std::size_t a = 0; a < 3; ++a)
      for (std::size_t b = 0; b < 3; ++b)
        change[a][b] = U[a][b] - before[a][b], middle[a][b] = 0.5 * (U[a][b] + before[a][b]);
    storeSymmetric(product(change, inverse(middle)), strain_.data(), n_, static_cast<int32_t>(i));
    const double J = v[0][0] * (v[1][1] * v[2][2] - v[1][2] * v[1][2]) -
                     v[0][1] * (v[0][1] * v[2][2] - v[1][2] * v[0][2]) +
                     v[0][2] * (v[0][1] * v[1][2] - v[1][1] * v[0][2]);
    density_[i] = material_->density / J;
    if (across_ > 0) density_[i] = material_->density / areaRatio(U);
  }
  increment_ = increment;
  call(time_ + increment);
  boundStiffness(bound, bulk);
  for (int32_t i = 0; i < n_; ++i) {
    Matrix R{};
    for (std::size_t a = 0; a < 3; ++a)
      for (std::size_t b = 0; b < 3; ++b) R[a][b] = rotation_[9 * static_cast<std::size_t>(i) + 3 * a + b];
    Matrix s = loadSymmetric(now_.stress.data(), n_, i);
    if (across_ > 0) s = sheetStress(s, loadSymmetric(now_.stretch.data(), n_, i), across_);
    storeSymmetric(product(R, product(s, transposed(R))), stress, n_, i);
  }
}

// A sheet is given the first four of the six components.
void UserPoints::call(double time) {
  const int32_t properties = static_cast<int32_t>(material_->constants.size());
  SPX_USR_BUILTINVUMAT(&kPlaneStress, &n_, &kDirect, model_->isSheet ? &kSheetShear : &kShear, &model_->states, &kNone,
                       &properties, &kNone, &time, &time, &increment_, name_.data(), length_.data(), length_.data(),
                       material_->constants.data(), density_.data(), strain_.data(), spin_.data(), temperature_.data(),
                       old_.stretch.data(), old_.F.data(), nullptr, old_.stress.data(), old_.state.data(),
                       old_.internal.data(), old_.inelastic.data(), temperature_.data(), now_.stretch.data(),
                       now_.F.data(), nullptr, now_.stress.data(), now_.state.data(), now_.internal.data(),
                       now_.inelastic.data(), static_cast<int64_t>(name_.size()));
}

// What the wave speed is bounded by at the end: bound + bulk/3; and the viscosity.
void UserPoints::boundStiffness(double* bound, double* bulk) {
  const Moduli moduli = model_->moduli(material_->constants);
  const auto n = static_cast<std::size_t>(n_);
  if (model_->stiffness != nullptr) GLO_UTI_EIG33(&n_, now_.stretch.data(), principal_.data());
  for (std::size_t i = 0; i < n; ++i) {
    UserState state{material_->constants, derived_, 1, 1, material_->density / density_[i], 0, &now_.state[i], n};
    state.increment = increment_, state.stretch = &now_.stretch[i];
    if (model_->stiffness != nullptr) {
      state.stretches = {principal_[i], principal_[i + n], principal_[i + 2 * n]};
      std::sort(state.stretches.begin(), state.stretches.end(), std::greater<>());
      state.shortest = state.stretches[2], state.longest = state.stretches[0];
      const double* s = &now_.stress[i];
      state.compression =
          std::max({0.0, -s[0], -s[n], -s[2 * n]}) + std::abs(s[3 * n]) + std::abs(s[4 * n]) + std::abs(s[5 * n]);
      // of a sheet, J is its area, and the volume that of the brick
      const double l2 = state.longest * state.longest,
                   volume = state.stretches[0] * state.stretches[1] * state.stretches[2],
                   perVolume = across_ > 0 ? state.J / volume : 1;
      bound[i] = across_ > 0 ? across_ * l2 * l2 / volume + state.compression * perVolume : 0;
      bulk[i] = 3 * model_->stiffness(state) * perVolume;
      if (model_->viscosity != nullptr) viscosity_[i] = model_->viscosity(state);
    } else {
      const double K = model_->bulk != nullptr ? std::max(moduli.bulk, model_->bulk(state)) : moduli.bulk;
      bound[i] = 4.0 / 3 * moduli.shear;
      bulk[i] = 3 * K / state.J;
    }
  }
}

bool UserPoints::isAccepted() {
  std::fill(density_.begin(), density_.end(), material_->density);
  std::fill(strain_.begin(), strain_.end(), 0.0);
  call(0.0);
  now_ = old_;
  return !host::threadError();
}

double UserPoints::damageOf(const State& state, int32_t i) const {
  if (model_->damage.count == 0 || !hasStatus_) return std::numeric_limits<double>::quiet_NaN();
  double largest = 0;
  for (int32_t k = 0; k < model_->damage.count; ++k)
    largest = std::max(largest, state.state[static_cast<std::size_t>((model_->damage.first + k) * n_ + i)]);
  return largest;
}

double UserPoints::damping() const { return model_->damping != nullptr ? model_->damping(material_->constants) : 0.0; }

// The bindings name every member, so that none is forgotten.
void UserPoints::visit(Archive& archive, int32_t i) {
  [[maybe_unused]] auto& [material, model, n, time, increment, name, old, now, derived, across, hasStatus, strain, spin,
                          density, temperature, length, rotation, principal, viscosity] = *this;
  archive(time, increment);
  for (State* state : {&old, &now}) {
    auto& [stretch, F, stress, variables, internal, inelastic] = *state;
    archive.ofPoint(i, n, stretch, F, stress, variables, internal, inelastic);
  }
}

void UserPoints::remember() {
  old_ = now_;
  time_ += increment_;
}

void UserPoints::energies(double* stored, double* lost) const {
  for (std::size_t i = 0; i < now_.internal.size(); ++i) {
    lost[i] = material_->density * now_.inelastic[i];
    stored[i] = material_->density * now_.internal[i] - lost[i];
    if (across_ > 0) stored[i] += sheetEnergy(loadSymmetric(now_.stretch.data(), n_, static_cast<int32_t>(i)), across_);
  }
}

} // namespace sharedanalysis::solver
