#include "block.h"

#include "block_kernels.h"
#include "glo.h"
#include "spx.h"

#include <algorithm>

namespace sharedanalysis::solver {
namespace {

// Leading dimension of block arrays: not a multiple of 512 bytes, where dozens of columns would share a few cache ways.
constexpr int leadingDimension(int n) { return (n + 7) / 8 * 8 + 8; }
constexpr int kLargest = leadingDimension(kBlockLength);

constexpr int32_t kThree = 3, kUnread = 0;

} // namespace

BlockWork::BlockWork()
    : x(24 * kLargest), velocity(24 * kLargest), B(24 * kLargest), gamma(32 * kLargest), hgdiag(kLargest),
      hgstiff(kLargest), vol(kLargest), rvol(kLargest), work(24 * kLargest), F(9 * kLargest), cofactors(9 * kLargest),
      b(6 * kLargest), V(6 * kLargest), bound(kLargest), bulk(kLargest), force(24 * kLargest), energy(kLargest),
      rJ(kLargest) {}

Block::Block(std::span<const int32_t> bricks, const Numbering& numbering, const std::vector<int32_t>& materialOfBrick,
             const Case& definition, const Domain& domain)
    : n_(static_cast<int32_t>(bricks.size())), ld_(leadingDimension(n_)), bricks_(bricks.begin(), bricks.end()),
      gatherMap_(8 * ld_), assemblyMap_(8 * n_), B0_(24 * ld_), gamma0_(32 * ld_), V0_(ld_), mass_(n_), hourglass_(n_),
      shear_(n_), density_(n_), constants_(7 * n_), stress_(6 * n_), flag_(n_), mask_(ld_), viscousStress_(n_),
      viscousEnergy_(n_) {
  for (int32_t e = 0; e < ld_; ++e)
    for (int corner = 0; corner < 8; ++corner) {
      // places behind the last brick repeat it, so that one gather fills the whole array
      const int32_t brick = bricks_[std::min(e, n_ - 1)];
      const int32_t node = numbering.connectivity[8 * static_cast<size_t>(brick) + corner];
      gatherMap_[corner * ld_ + e] = node + 1;
      if (e < n_) assemblyMap_[8 * e + corner] = domain.place(node) + 1;
    }
  for (int32_t e = 0; e < n_; ++e) {
    const Material& material = definition.materials[materialOfBrick[bricks_[e]]];
    const double values[7] = {material.C10, material.C01, material.C20, material.C11,
                              material.C02, material.rD1, material.rD2};
    for (int k = 0; k < 7; ++k) constants_[k * n_ + e] = values[k];
    shear_[e] = material.shearModulus();
    density_[e] = material.density;
    hourglass_[e] = definition.hourglassCoefficient;
  }
}

void Block::setReference(const std::vector<double>& X, BlockWork& w) {
  const int32_t points = 8 * ld_;
  std::fill(mask_.begin(), mask_.end(), 0.0);
  GLO_UTI_GENGATHERR(&points, &kThree, &kThree, &kUnread, gatherMap_.data(), w.x.data(), X.data());
  SPX_OPE_C3D8ROPER2(&n_, &ld_, w.x.data(), B0_.data(), w.hgdiag.data(), w.hgstiff.data(), V0_.data(), w.rvol.data(),
                     gamma0_.data(), mask_.data());
  for (int32_t e = 0; e < n_; ++e) {
    mass_[e] = density_[e] * V0_[e];
    hourglass_[e] *= shear_[e] * w.hgstiff[e] / 16.0;
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
  const double* c = constants_.data();
  SPX_MAT_HYPERPOLY3DEXP(&n_, c, c + n_, c + 2 * n_, c + 3 * n_, c + 4 * n_, c + 5 * n_, c + 6 * n_, w.V.data(),
                         stress_.data(), flag_.data(), w.bound.data(), w.bulk.data());
  // a mean deformation without volume takes its brick out as an inverted brick does
  for (int32_t e = 0; e < n_; ++e) mask_[e] = flag_[e] != 0.0 ? 1.0 : mask_[e];
  int32_t masked = 0;
  SPX_OPE_ERRORCHECK(&n_, &masked, mask_.data());

  const double stable =
      viscosityAndIncrement({n_, ld_, w.velocity.data(), w.B.data(), w.vol.data(), w.hgstiff.data(), mass_.data(),
                             hourglass_.data(), w.bound.data(), w.bulk.data(), mask_.data(), definition.linearViscosity,
                             definition.quadraticViscosity, lastIncrement},
                            viscousStress_.data(), viscousEnergy_.data());
  nodalForces({n_, ld_, w.x.data(), B0_.data(), gamma0_.data(), w.B.data(), w.vol.data(), viscousStress_.data(),
               w.cofactors.data(), stress_.data(), V0_.data(), hourglass_.data(), mask_.data()},
              w.work.data(), w.force.data());
  GLO_OPE_GENASSEM(&corners, &kThree, &kThree, &kUnread, f, w.force.data(), assemblyMap_.data());
  return {stable, masked};
}

void Block::energies(const std::vector<double>& x, BlockWork& w, double* strainDensity, double* hourglass) {
  stretch(x, w);
  const double* c = constants_.data();
  SPX_MAT_HYPERPOLYS33(&n_, c, c + n_, c + 2 * n_, c + 3 * n_, c + 4 * n_, strainDensity, w.rJ.data(), w.V.data());
  hourglassEnergy(n_, ld_, w.x.data(), gamma0_.data(), hourglass_.data(), hourglass);
  for (int32_t e = 0; e < n_; ++e) {
    const double d = 1.0 / w.rJ[e] - 1.0, dd = d * d, rD1 = c[5 * n_ + e], rD2 = c[6 * n_ + e];
    const bool active = mask_[e] == 0.0;
    strainDensity[e] = active ? strainDensity[e] + dd * rD1 + dd * dd * rD2 : 0.0;
    hourglass[e] = active ? hourglass[e] : 0.0;
  }
}

} // namespace sharedanalysis::solver
