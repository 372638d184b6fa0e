// The table of user materials, and the rotated frame in which their points are advanced.
#include "solver/model/user_materials.h"

#include "solver/model/materials.h"
#include "solver/model/s33.h"
#include "spx.h"

#include <algorithm>
#include <array>

namespace sharedanalysis::solver {
namespace {

constexpr int32_t kDirect = 3, kShear = 3, kNone = 0;
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

// ---- moduli for the stable increment, from the properties p

// The stiffer of austenite (E, nu at 0) and martensite (at 2).
Moduli superelasticModuli(const double* p) {
  const double E = std::max(p[0], p[2]), nu = p[0] > p[2] ? p[1] : p[3];
  return {E / (2 * (1 + nu)), E / (3 * (1 - 2 * nu))};
}
// G and the first coefficient of the pressure, K1.
Moduli ceramicModuli(const double* p) { return {p[0], p[13]}; }
// The stiffer of crushing begin (pressure over strain) and dense concrete, K1.
Moduli concreteModuli(const double* p) { return {p[0], std::max(p[10] / p[11], p[16])}; }

} // namespace

const std::vector<UserModel>& userModels() {
  static const std::vector<UserModel> models = {
      {"TVK_SUPER_ELASTIC_N3D", 8, 14, superelasticModuli, {}, {}},
      {"TVK_JH2", 4, 18, ceramicModuli, 2, 13},
      {"TVK_JHB", 4, 18, ceramicModuli, 2, 13},
      {"TVK_HJC_CONCRETE", 5, 21, concreteModuli, 2, 16},
  };
  return models;
}

const UserModel* userModelOf(const std::string& name) {
  for (const UserModel& model : userModels())
    if (name.starts_with(model.key)) return &model;
  return nullptr;
}

Moduli userModuli(const Material& material) {
  return userModelOf(material.userName)->moduli(material.constants.data());
}

UserPoints::UserPoints(const Material& material, int32_t n)
    : material_(&material), model_(userModelOf(material.userName)), n_(n), name_(material.userName) {
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
  length_.assign(3 * size, 1.0);
  rotation_.resize(9 * size);
}

void UserPoints::respond(const double* V, const double* F, double increment, double* stress, double* bound,
                         double* bulk) {
  const int32_t n = n_, properties = static_cast<int32_t>(material_->constants.size());
  const Moduli moduli = model_->moduli(material_->constants.data());
  for (int32_t i = 0; i < n; ++i) {
    Matrix f{};
    for (std::size_t a = 0; a < 3; ++a)
      for (std::size_t b = 0; b < 3; ++b) {
        f[a][b] = F[static_cast<std::size_t>(n) * (3 * a + b) + static_cast<std::size_t>(i)];
        now_.F[static_cast<std::size_t>(kGradient[a][b] * n + i)] = f[a][b];
      }
    const Matrix v = loadSymmetric(V, n, i), R = product(inverse(v), f), Rt = transposed(R);
    for (std::size_t a = 0; a < 3; ++a)
      for (std::size_t b = 0; b < 3; ++b) rotation_[9 * static_cast<std::size_t>(i) + 3 * a + b] = R[a][b];
    const Matrix U = product(Rt, product(v, R)), before = loadSymmetric(old_.stretch.data(), n, i);
    storeSymmetric(U, now_.stretch.data(), n, i);
    // rate of deformation in the turned axes, over the middle of the increment
    Matrix change{}, middle{};
    for (std::size_t a = 0; a < 3; ++a)
      for (std::size_t b = 0; b < 3; ++b)
        change[a][b] = U[a][b] - before[a][b], middle[a][b] = 0.5 * (U[a][b] + before[a][b]);
    storeSymmetric(product(change, inverse(middle)), strain_.data(), n, i);
    const double J = v[0][0] * (v[1][1] * v[2][2] - v[1][2] * v[1][2]) -
                     v[0][1] * (v[0][1] * v[2][2] - v[1][2] * v[0][2]) +
                     v[0][2] * (v[0][1] * v[1][2] - v[1][1] * v[0][2]);
    density_[static_cast<std::size_t>(i)] = material_->density / J;
    // slope of the pressure K1 mu + K2 mu^2 + K3 mu^3 of ceramics and dense concrete in compression
    const double mu = std::max(0.0, 1 / J - 1);
    double K = moduli.bulk;
    if (model_->pressureAt) {
      const double* k = material_->constants.data() + *model_->pressureAt;
      K = std::max(K, k[0] + mu * (2 * k[1] + 3 * mu * k[2]));
    }
    bound[i] = 4.0 / 3 * moduli.shear;
    bulk[i] = 3 * K / J;
  }
  increment_ = increment;
  const double time = time_ + increment;
  SPX_USR_BUILTINVUMAT(&kNone, &n, &kDirect, &kShear, &model_->states, &kNone, &properties, &kNone, &time, &time,
                       &increment, name_.data(), length_.data(), length_.data(), material_->constants.data(),
                       density_.data(), strain_.data(), spin_.data(), temperature_.data(), old_.stretch.data(),
                       old_.F.data(), nullptr, old_.stress.data(), old_.state.data(), old_.internal.data(),
                       old_.inelastic.data(), temperature_.data(), now_.stretch.data(), now_.F.data(), nullptr,
                       now_.stress.data(), now_.state.data(), now_.internal.data(), now_.inelastic.data(),
                       static_cast<int64_t>(name_.size()));
  for (int32_t i = 0; i < n; ++i) {
    Matrix R{};
    for (std::size_t a = 0; a < 3; ++a)
      for (std::size_t b = 0; b < 3; ++b) R[a][b] = rotation_[9 * static_cast<std::size_t>(i) + 3 * a + b];
    const Matrix s = loadSymmetric(now_.stress.data(), n, i);
    storeSymmetric(product(R, product(s, transposed(R))), stress, n, i);
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
  }
}

} // namespace sharedanalysis::solver
