#include "solver/analysis/block.h"

#include "glo.h"
#include "solver/analysis/block_kernels.h"
#include "spx.h"

#include <algorithm>
#include <numeric>

namespace sharedanalysis::solver {
namespace {

// Leading dimension of block arrays: not a multiple of 512 bytes, where dozens of columns would share a few cache ways.
constexpr int leadingDimension(int n) { return (n + 7) / 8 * 8 + 8; }
constexpr int kLargest = leadingDimension(kBlockLength);

constexpr int32_t kThree = 3, kUnread = 0;

// Of a trilinear brick whose coordinates are (ld, 8, 3): two Gauss points a direction integrate its Jacobian exactly.
double brickVolume(const double* x, int32_t ld) {
  static constexpr double kSigns[8][3] = {{-1, -1, -1}, {1, -1, -1}, {1, 1, -1}, {-1, 1, -1},
                                          {-1, -1, 1},  {1, -1, 1},  {1, 1, 1},  {-1, 1, 1}};
  constexpr double kGauss = 0.5773502691896258;
  double volume = 0;
  for (const double(&point)[3] : kSigns) {
    double J[3][3] = {};
    for (int32_t node = 0; node < 8; ++node)
      for (int k = 0; k < 3; ++k) {
        double slope = kSigns[node][k] / 8;
        for (int c = 0; c < 3; ++c)
          if (c != k) slope *= 1 + kSigns[node][c] * kGauss * point[c];
        for (int i = 0; i < 3; ++i) J[i][k] += slope * x[(8 * i + node) * ld];
      }
    for (int i = 0; i < 3; ++i)
      volume += J[0][i] * (J[1][(i + 1) % 3] * J[2][(i + 2) % 3] - J[1][(i + 2) % 3] * J[2][(i + 1) % 3]);
  }
  return volume;
}

} // namespace

BlockWork::BlockWork()
    : x(24 * kLargest), velocity(24 * kLargest), B(24 * kLargest), gamma(32 * kLargest), hgdiag(kLargest),
      hgstiff(kLargest), vol(kLargest), rvol(kLargest), work(24 * kLargest), F(9 * kLargest), cofactors(9 * kLargest),
      b(6 * kLargest), V(6 * kLargest), bound(kLargest), bulk(kLargest), force(24 * kLargest), ratio(kLargest),
      rate(kLargest), power(kLargest), failureStrain(kLargest), inviscid(kLargest) {}

Block::Block(std::span<const int32_t> bricks, std::span<const int32_t> records, const Numbering& numbering,
             const Material& material, const Case& definition, MaterialPoints::SharedConstants& constants)
    : n_(static_cast<int32_t>(bricks.size())), ld_(leadingDimension(n_)), bricks_(bricks.begin(), bricks.end()),
      gatherMap_(8 * ld_), assemblyMap_(8 * n_), B0_(24 * ld_), H0_(12 * ld_), V0_(ld_), mass_(n_), hourglass_(n_),
      material_(&material), points_(material, n_, &constants), stress_(6 * n_), mask_(ld_), viscousStress_(n_),
      viscousEnergy_(n_), omega_(material.failure ? n_ : 0), failed_(mayFail() ? n_ : 0), lostEnergy_(failed_.size()) {
  for (int32_t e = 0; e < ld_; ++e)
    for (int corner = 0; corner < 8; ++corner) {
      // pad with the last brick, so that one gather fills the whole array
      const int32_t brick = bricks_[std::min(e, n_ - 1)];
      const int32_t node = numbering.connectivity[8 * static_cast<size_t>(brick) + corner];
      gatherMap_[corner * ld_ + e] = node + 1;
      if (e < n_) assemblyMap_[8 * e + corner] = records[static_cast<size_t>(8 * e + corner)] + 1;
    }
  std::fill(hourglass_.begin(), hourglass_.end(), definition.hourglassCoefficient);
}

void Block::setReference(const std::vector<double>& X, BlockWork& w) {
  const int32_t points = 8 * ld_;
  std::fill(mask_.begin(), mask_.end(), 0.0);
  GLO_UTI_GENGATHERR(&points, &kThree, &kThree, &kUnread, gatherMap_.data(), w.x.data(), X.data());
  SPX_OPE_C3D8ROPER2(&n_, &ld_, w.x.data(), B0_.data(), w.hgdiag.data(), w.hgstiff.data(), V0_.data(), w.rvol.data(),
                     w.gamma.data(), mask_.data());
  hourglassModes(n_, ld_, w.x.data(), H0_.data());
  const double density = material_->density, shear = material_->shearModulus();
  for (int32_t e = 0; e < n_; ++e) {
    mass_[e] = density * V0_[e];
    hourglass_[e] *= shear * w.hgstiff[e] / 16.0;
  }
}

// b = F F' and its root, the left stretch.
void Block::stretch(const std::vector<double>& x, BlockWork& w) const {
  const int32_t points = 8 * ld_;
  GLO_UTI_GENGATHERR(&points, &kThree, &kThree, &kUnread, gatherMap_.data(), w.x.data(), x.data());
  deformationGradient(n_, ld_, w.x.data(), B0_.data(), w.F.data(), w.cofactors.data(), w.b.data());
  GLO_UTI_SQRTV(&n_, w.b.data(), w.V.data());
}

Block::Outcome Block::evaluate(const std::vector<double>& x, const std::vector<double>& v, double lastIncrement,
                               const Case& definition, BlockWork& w, double* f) {
  const int32_t points = 8 * ld_, corners = 8 * n_;
  stretch(x, w);
  GLO_UTI_GENGATHERR(&points, &kThree, &kThree, &kUnread, gatherMap_.data(), w.velocity.data(), v.data());
  SPX_OPE_C3D8ROPER2(&n_, &ld_, w.x.data(), w.B.data(), w.hgdiag.data(), w.hgstiff.data(), w.vol.data(), w.rvol.data(),
                     w.gamma.data(), mask_.data());
  points_.respond(w.V.data(), w.F.data(), lastIncrement, stress_.data(), w.bound.data(), w.bulk.data(), w.material);
  if (points_.hasDamage())
    for (int32_t e = 0; e < n_; ++e)
      if (points_.damageBegins(e) && mask_[e] == 0.0)
        w.events.push_back({bricks_[e], EventKind::Damage, points_.damage(e)});
  points_.remember();
  if (material_->failure) fail(x, lastIncrement, w);
  if (material_->model->isUser()) remove(x, lastIncrement, w);
  // a brick whose mean deformation has no volume is masked like an inverted one
  const std::vector<double>& flag = points_.flag();
  for (int32_t e = 0; e < n_; ++e) mask_[e] = flag[e] != 0.0 ? 1.0 : mask_[e];
  int32_t masked = 0, failed = 0;
  SPX_OPE_ERRORCHECK(&n_, &masked, mask_.data());
  if (mayFail()) SPX_OPE_ERRORCHECK(&n_, &failed, failed_.data());
  if (masked != failed) recordDistortion(w);

  const double stable = viscosityAndIncrement(
      {n_, ld_, w.velocity.data(), w.B.data(), w.vol.data(), w.hgstiff.data(), mass_.data(), hourglass_.data(),
       w.bound.data(), w.bulk.data(), mask_.data(),
       points_.viscosity() != nullptr ? points_.viscosity() : w.inviscid.data(), definition.linearViscosity,
       definition.quadraticViscosity, points_.damping(), lastIncrement},
      viscousStress_.data(), viscousEnergy_.data());
  nodalForces({n_, ld_, w.x.data(), B0_.data(), H0_.data(), w.F.data(), w.B.data(), w.vol.data(), viscousStress_.data(),
               w.cofactors.data(), stress_.data(), V0_.data(), hourglass_.data(), mask_.data()},
              w.work.data(), w.force.data());
  GLO_OPE_GENASSEM(&corners, &kThree, &kThree, &kUnread, f, w.force.data(), assemblyMap_.data());
  return {stable, masked - failed};
}

// Adds up the strain increments of loading over the failure strain, and takes out the bricks where the sum reaches one.  The
// energy that such a brick holds leaves the model with it.
void Block::fail(const std::vector<double>& x, double lastIncrement, BlockWork& w) {
  const DuctileFailure& f = *material_->failure;
  const double d3 = -f.d3, perReference = 1 / f.referenceRate; // the kernel takes d3 with the opposite sign
  deviatoricRate(n_, ld_, w.velocity.data(), w.B.data(), stress_.data(), w.rate.data(), w.power.data());
  SPX_MAT_STRESSRATIO3DEXP(&n_, stress_.data(), w.ratio.data());
  int32_t list[kBlockLength];
  std::iota(list, list + n_, 1);
  std::vector<double>& temperature = w.material.second;
  std::fill_n(temperature.begin(), n_, f.temperature);
  SPX_MAT_JCFAILURESTRAIN(&n_, &n_, list, w.failureStrain.data(), w.rate.data(), w.ratio.data(), temperature.data(),
                          &f.d1, &f.d2, &d3, &f.d4, &f.d5, &f.melting, &f.transition, &perReference);
  for (int32_t e = 0; e < n_; ++e) w.rate[e] = w.power[e] > 0.0 ? w.rate[e] * lastIncrement : 0.0;
  SPX_MAT_DUCTSHRFAILUREEXP(&n_, &n_, list, omega_.data(), w.rate.data(), w.failureStrain.data());
  remove(x, lastIncrement, w);
}

// Takes out the bricks whose material has failed.  The force of such a brick falls to nothing in this increment: half of the
// work that it would have done is not done, and the brick does not hold it.
void Block::remove(const std::vector<double>& x, double lastIncrement, BlockWork& w) {
  const auto isFailed = [this](int32_t e) {
    return mask_[e] == 0.0 && ((material_->failure && omega_[e] >= 1.0) || points_.isDeleted(e));
  };
  bool any = false;
  for (int32_t e = 0; e < n_; ++e) any = any || isFailed(e);
  if (!any) return;
  double stored[kBlockLength], spring[kBlockLength], damage[kBlockLength];
  energies(x, w, stored, spring, damage);
  constexpr double kNoViscousStress[kBlockLength] = {};
  nodalForces({n_, ld_, w.x.data(), B0_.data(), H0_.data(), w.F.data(), w.B.data(), w.vol.data(), kNoViscousStress,
               w.cofactors.data(), stress_.data(), V0_.data(), hourglass_.data(), mask_.data()},
              w.work.data(), w.force.data());
  for (int32_t e = 0; e < n_; ++e) {
    if (!isFailed(e)) continue;
    double power = 0;
    for (int32_t c = 0; c < 3; ++c)
      for (int32_t node = 0; node < 8; ++node)
        power += w.force[static_cast<size_t>(8 * (c * n_ + e) + node)] *
                 w.velocity[static_cast<size_t>((8 * c + node) * ld_ + e)];
    lostEnergy_[e] = stored[e] * V0_[e] + spring[e] + damage[e] - 0.5 * lastIncrement * power;
  }
  for (int32_t e = 0; e < n_; ++e)
    if (isFailed(e)) {
      failed_[e] = mask_[e] = 1.0;
      w.events.push_back({bricks_[e], EventKind::Failed, material_->failure ? omega_[e] : points_.damage(e)});
    }
}

// By the ratio of volumes: of the brick where that is none, else of its mean deformation.
void Block::recordDistortion(BlockWork& w) const {
  for (int32_t e = 0; e < n_; ++e) {
    if (!isDistorted(e)) continue;
    const double brick = brickVolume(&w.x[static_cast<size_t>(e)], ld_) / V0_[e];
    double mean = 0;
    for (int32_t j = 0; j < 3; ++j) mean += w.F[j * n_ + e] * w.cofactors[j * n_ + e];
    w.events.push_back({bricks_[e], EventKind::Distorted, brick > 0 ? mean : brick});
  }
}

// The bindings name every member, so that none is forgotten.
void Block::visit(Archive& archive, int32_t e) {
  [[maybe_unused]] auto& [n, ld, bricks, gatherMap, assemblyMap, B0, H0, V0, mass, hourglass, material, points, stress,
                          mask, viscousStress, viscousEnergy, omega, failed, lostEnergy] = *this;
  archive.ofPoint(e, n, stress, viscousStress, viscousEnergy, omega, failed, lostEnergy);
  archive(mask[static_cast<std::size_t>(e)]); // with its pad behind it
  points.visit(archive, e);
}

void Block::energies(const std::vector<double>& x, BlockWork& w, double* strainDensity, double* hourglass,
                     double* damage) {
  stretch(x, w);
  points_.energies(w.V.data(), strainDensity, damage, w.material);
  hourglassEnergy(n_, ld_, w.x.data(), H0_.data(), w.F.data(), hourglass_.data(), hourglass);
  for (int32_t e = 0; e < n_; ++e) {
    const bool active = mask_[e] == 0.0;
    strainDensity[e] = active ? strainDensity[e] : 0.0;
    hourglass[e] = active ? hourglass[e] : 0.0;
    damage[e] = active ? damage[e] * V0_[e] : (mayFail() ? lostEnergy_[e] : 0.0);
  }
}

} // namespace sharedanalysis::solver
