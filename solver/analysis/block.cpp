#include "solver/analysis/block.h"

#include "glo.h"
#include "solver/analysis/block_kernels.h"
#include "spx.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace sharedanalysis::solver {
namespace {

constexpr int32_t kThree = 3, kUnread = 0, kRow = kPieceLength;

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
    : x(24 * kPieceLength), velocity(24 * kPieceLength), gamma(32 * kPieceLength), hgdiag(kPieceLength),
      rvol(kPieceLength), force(24 * kPieceLength), B(24 * kBlockLength), h(12 * kBlockLength), hgstiff(kBlockLength),
      vol(kBlockLength), F(9 * kBlockLength), wholeF(9 * kBlockLength), b(6 * kBlockLength), V(6 * kBlockLength),
      bound(kBlockLength), bulk(kBlockLength), ratio(kBlockLength), rate(kBlockLength), power(kBlockLength),
      failureStrain(kBlockLength), inviscid(kBlockLength) {}

Block::Block(std::span<const int32_t> bricks, std::span<const int32_t> records, const Numbering& numbering,
             const Material& material, const Case& definition, MaterialPoints::SharedConstants& constants)
    : n_(static_cast<int32_t>(bricks.size())), bricks_(bricks.begin(), bricks.end()), gatherMap_(8 * paddedCount(n_)),
      assemblyMap_(records.begin(), records.end()), B0_(24 * paddedCount(n_)), H0_(12 * paddedCount(n_)), V0_(n_),
      mass_(n_), hourglass_(n_), material_(&material), points_(material, n_, &constants), stress_(6 * n_), mask_(n_),
      viscousStress_(n_), viscousEnergy_(n_), omega_(material.failure ? n_ : 0), failed_(mayFail() ? n_ : 0),
      lostEnergy_(failed_.size()) {
  forPieces([&](const Piece& piece) {
    int32_t* map = piece.of(gatherMap_, 8);
    for (int32_t e = 0; e < kPieceLength; ++e)
      for (int corner = 0; corner < 8; ++corner) {
        // pad with the last brick, so that one gather fills the whole array
        const int32_t brick = bricks_[static_cast<size_t>(piece.first + std::min(e, piece.n - 1))];
        map[corner * kPieceLength + e] = numbering.connectivity[8 * static_cast<size_t>(brick) + corner] + 1;
      }
  });
  std::fill(hourglass_.begin(), hourglass_.end(), definition.hourglassCoefficient);
}

// Of the corners of a piece, (ld, 8, 3).
void Block::gather(const Piece& piece, const std::vector<double>& field, AlignedValues& ofCorners) const {
  const int32_t points = 8 * kPieceLength;
  GLO_UTI_GENGATHERR(&points, &kThree, &kThree, &kUnread, piece.of(gatherMap_, 8), ofCorners.data(), field.data());
}

// The library's operator at the coordinates that were gathered last; marks bricks without positive volume.
void Block::operate(const Piece& piece, BlockWork& w, double* B, double* hgstiff, double* vol) {
  SPX_OPE_C3D8ROPER2(&piece.n, &kRow, w.x.data(), B, w.hgdiag.data(), hgstiff, vol, w.rvol.data(), w.gamma.data(),
                     piece.of(mask_, 1));
}

void Block::setReference(const std::vector<double>& X, BlockWork& w) {
  std::fill(mask_.begin(), mask_.end(), 0.0);
  forPieces([&](const Piece& piece) {
    gather(piece, X, w.x);
    operate(piece, w, piece.of(B0_, 24), piece.of(w.hgstiff, 1), piece.of(V0_, 1));
    hourglassModes(piece.n, w.x.data(), piece.of(H0_, 12));
  });
  const double density = material_->density, shear = material_->shearModulus();
  for (int32_t e = 0; e < n_; ++e) {
    mass_[e] = density * V0_[e];
    hourglass_[e] *= shear * w.hgstiff[e] / 16.0;
  }
}

// b = F F' and its root, the left stretch; `more` is to be done while the coordinates of a piece are at hand.
template <class More>
void Block::stretch(const std::vector<double>& x, BlockWork& w, More more) const {
  forPieces([&](const Piece& piece) {
    gather(piece, x, w.x);
    deformationGradient(piece.n, n_, w.x.data(), piece.of(B0_, 24), piece.of(w.F, 9), piece.of(w.b, 1));
    more(piece, piece.of(w.h, 12));
  });
  GLO_UTI_SQRTV(&n_, w.b.data(), w.V.data());
}

ForceInput Block::forceInput(const Piece& piece, const BlockWork& w, const double* viscousStress) const {
  return {piece.n,
          n_,
          piece.of(w.h, 12),
          piece.of(B0_, 24),
          piece.of(H0_, 12),
          piece.of(w.F, 9),
          piece.of(w.B, 24),
          piece.of(w.vol, 1),
          viscousStress + piece.first,
          piece.of(stress_, 1),
          piece.of(V0_, 1),
          piece.of(hourglass_, 1),
          piece.of(mask_, 1)};
}

Block::Outcome Block::evaluate(const std::vector<double>& x, const std::vector<double>& v, double lastIncrement,
                               const Case& definition, BlockWork& w, double* f) {
  stretch(x, w, [&](const Piece& piece, double* modes) {
    double *B = piece.of(w.B, 24), *hgstiff = piece.of(w.hgstiff, 1), *vol = piece.of(w.vol, 1);
    if (!brickGradient(piece.n, w.x.data(), piece.of(mask_, 1), B, modes, vol, hgstiff))
      operate(piece, w, B, hgstiff, vol);
  });
  if (material_->model->isUser())
    forPieces([&](const Piece& piece) {
      for (int32_t k = 0; k < 9; ++k)
        std::copy_n(piece.of(w.F, 9) + k * kPieceLength, piece.n, piece.of(w.wholeF, 1) + k * n_);
    });
  points_.respond(w.V.data(), w.wholeF.data(), lastIncrement, stress_.data(), w.bound.data(), w.bulk.data(),
                  w.material);
  if (points_.hasDamage())
    for (int32_t e = 0; e < n_; ++e)
      if (points_.damageBegins(e) && mask_[e] == 0.0)
        w.events.push_back({bricks_[e], EventKind::Damage, points_.damage(e)});
  points_.remember();
  if (material_->failure) fail(x, v, lastIncrement, w);
  if (material_->model->isUser()) remove(x, v, lastIncrement, w);
  // a brick whose mean deformation has no volume is masked like an inverted one
  const AlignedValues& flag = points_.flag();
  for (int32_t e = 0; e < n_; ++e) mask_[e] = flag[e] != 0.0 ? 1.0 : mask_[e];
  int32_t masked = 0, failed = 0;
  SPX_OPE_ERRORCHECK(&n_, &masked, mask_.data());
  if (mayFail()) SPX_OPE_ERRORCHECK(&n_, &failed, failed_.data());
  if (masked != failed) recordDistortion(x, w);

  const double* viscosity = points_.viscosity();
  if (viscosity == nullptr && points_.damping() != 0) viscosity = w.inviscid.data();
  double stable = std::numeric_limits<double>::infinity();
  forPieces([&](const Piece& piece) {
    gather(piece, v, w.velocity);
    const double ofPiece = viscosityAndIncrement(
        {piece.n, w.velocity.data(), piece.of(w.B, 24), piece.of(w.vol, 1), piece.of(w.hgstiff, 1), piece.of(mass_, 1),
         piece.of(hourglass_, 1), piece.of(w.bound, 1), piece.of(w.bulk, 1), piece.of(mask_, 1),
         viscosity != nullptr ? viscosity + piece.first : nullptr, definition.linearViscosity,
         definition.quadraticViscosity, points_.damping(), lastIncrement},
        piece.of(viscousStress_, 1), piece.of(viscousEnergy_, 1));
    stable = smallerOf(stable, ofPiece);
    nodalForces(forceInput(piece, w, viscousStress_.data()), w.force.data());
    assemble(piece.n, w.force.data(), assemblyMap_.data() + 8 * piece.first, f);
  });
  stableIncrement_ = stable;
  return {stable, masked - failed};
}

// Adds up the strain increments of loading over the failure strain, and takes out the bricks where the sum reaches one.  The
// energy that such a brick holds leaves the model with it.
void Block::fail(const std::vector<double>& x, const std::vector<double>& v, double lastIncrement, BlockWork& w) {
  const DuctileFailure& f = *material_->failure;
  const double d3 = -f.d3, perReference = 1 / f.referenceRate; // the kernel takes d3 with the opposite sign
  forPieces([&](const Piece& piece) {
    gather(piece, v, w.velocity);
    deviatoricRate(piece.n, n_, w.velocity.data(), piece.of(w.B, 24), piece.of(stress_, 1), piece.of(w.rate, 1),
                   piece.of(w.power, 1));
  });
  SPX_MAT_STRESSRATIO3DEXP(&n_, stress_.data(), w.ratio.data());
  int32_t list[kBlockLength];
  std::iota(list, list + n_, 1);
  AlignedValues& temperature = w.material.second;
  std::fill_n(temperature.begin(), n_, f.temperature);
  SPX_MAT_JCFAILURESTRAIN(&n_, &n_, list, w.failureStrain.data(), w.rate.data(), w.ratio.data(), temperature.data(),
                          &f.d1, &f.d2, &d3, &f.d4, &f.d5, &f.melting, &f.transition, &perReference);
  for (int32_t e = 0; e < n_; ++e) w.rate[e] = w.power[e] > 0.0 ? w.rate[e] * lastIncrement : 0.0;
  SPX_MAT_DUCTSHRFAILUREEXP(&n_, &n_, list, omega_.data(), w.rate.data(), w.failureStrain.data());
  remove(x, v, lastIncrement, w);
}

// Takes out the bricks whose material has failed.  The force of such a brick falls to nothing in this increment: half of the
// work that it would have done is not done, and the brick does not hold it.
void Block::remove(const std::vector<double>& x, const std::vector<double>& v, double lastIncrement, BlockWork& w) {
  const auto isFailed = [this](int32_t e) {
    return mask_[e] == 0.0 && ((material_->failure && omega_[e] >= 1.0) || points_.isDeleted(e));
  };
  bool any = false;
  for (int32_t e = 0; e < n_; ++e) any = any || isFailed(e);
  if (!any) return;
  double stored[kBlockLength], spring[kBlockLength], damage[kBlockLength];
  energies(x, w, stored, spring, damage);
  constexpr double kNoViscousStress[kBlockLength] = {};
  forPieces([&](const Piece& piece) {
    gather(piece, v, w.velocity);
    nodalForces(forceInput(piece, w, kNoViscousStress), w.force.data());
    for (int32_t k = 0; k < piece.n; ++k) {
      const int32_t e = piece.first + k;
      if (!isFailed(e)) continue;
      double power = 0;
      for (int32_t row = 0; row < 24; ++row) {
        const auto at = static_cast<size_t>(row * kPieceLength + k);
        power += w.force[at] * w.velocity[at];
      }
      lostEnergy_[e] = stored[e] * V0_[e] + spring[e] + damage[e] - 0.5 * lastIncrement * power;
    }
  });
  for (int32_t e = 0; e < n_; ++e)
    if (isFailed(e)) {
      failed_[e] = mask_[e] = 1.0;
      w.events.push_back({bricks_[e], EventKind::Failed, material_->failure ? omega_[e] : points_.damage(e)});
    }
}

// By the ratio of volumes: of the brick where that is none, else of its mean deformation.
void Block::recordDistortion(const std::vector<double>& x, BlockWork& w) const {
  forPieces([&](const Piece& piece) {
    gather(piece, x, w.x);
    for (int32_t k = 0; k < piece.n; ++k) {
      const int32_t e = piece.first + k;
      if (!isDistorted(e)) continue;
      const double brick = brickVolume(&w.x[static_cast<size_t>(k)], kPieceLength) / V0_[e];
      const auto F = [&](int32_t i, int32_t j) { return piece.of(w.F, 9)[(3 * i + j) * kPieceLength + k]; };
      double mean = 0;
      for (int32_t j = 0; j < 3; ++j) {
        const int32_t a = (j + 1) % 3, b = (j + 2) % 3;
        mean += F(0, j) * (F(1, a) * F(2, b) - F(1, b) * F(2, a));
      }
      w.events.push_back({bricks_[e], EventKind::Distorted, brick > 0 ? mean : brick});
    }
  });
}

// The bindings name every member, so that none is forgotten.
void Block::visit(Archive& archive, int32_t e) {
  [[maybe_unused]] auto& [n, stable, bricks, gatherMap, assemblyMap, B0, H0, V0, mass, hourglass, material, points,
                          stress, mask, viscousStress, viscousEnergy, omega, failed, lostEnergy] = *this;
  archive.ofPoint(e, n, stress, viscousStress, viscousEnergy, omega, failed, lostEnergy, mask);
  points.visit(archive, e);
}

void Block::energies(const std::vector<double>& x, BlockWork& w, double* strainDensity, double* hourglass,
                     double* damage) {
  stretch(x, w, [&](const Piece& piece, double* modes) { hourglassModes(piece.n, w.x.data(), modes); });
  points_.energies(w.V.data(), strainDensity, damage, w.material);
  forPieces([&](const Piece& piece) {
    hourglassEnergy(piece.n, piece.of(w.h, 12), piece.of(H0_, 12), piece.of(w.F, 9), piece.of(hourglass_, 1),
                    hourglass + piece.first);
  });
  for (int32_t e = 0; e < n_; ++e) {
    const bool active = mask_[e] == 0.0;
    strainDensity[e] = active ? strainDensity[e] : 0.0;
    hourglass[e] = active ? hourglass[e] : 0.0;
    damage[e] = active ? damage[e] * V0_[e] : (mayFail() ? lostEnergy_[e] : 0.0);
  }
}

} // namespace sharedanalysis::solver
