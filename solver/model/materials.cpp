// Points of one material: stress, softening by the Mullins effect, and energies.
#include "solver/model/materials.h"

#include "glo.h"
#include "solver/model/archive.h"
#include "spx.h"

#include <algorithm>

namespace sharedanalysis::solver {

MaterialWork::MaterialWork()
    : principal(3 * kMostPoints), axes(9 * kMostPoints), dU(3 * kMostPoints), ddU(6 * kMostPoints), volume(kMostPoints),
      slope(kMostPoints), U(kMostPoints), rJ(kMostPoints), eta(kMostPoints), detaDU(kMostPoints), rest(kMostPoints),
      lost(kMostPoints), first(kMostPoints, 1.0), second(kMostPoints), I1(kMostPoints), I2(kMostPoints) {}

MaterialPoints::MaterialPoints(const Material& material, int32_t n, SharedConstants* shared)
    : material_(&material), n_(n), flag_(static_cast<std::size_t>(n)), energyFlag_(static_cast<std::size_t>(n)) {
  SharedConstants own;
  auto& constants = (shared != nullptr ? *shared : own)[{&material, n}];
  if (!constants) {
    AlignedValues all;
    const auto add = [&](double value) { all.insert(all.end(), static_cast<std::size_t>(n), value); };
    for (const double value : material.constants) add(value);
    if (const auto& softening = material.mullins) add(softening->r), add(softening->m), add(softening->beta);
    constants = std::make_shared<const AlignedValues>(std::move(all));
  }
  constants_ = constants;
  if (material.model->isUser()) user_.emplace(material, n);
  if (!material.mullins) return;
  largest_.assign(static_cast<std::size_t>(n), 0.0);
  largestNow_ = largest_;
}

PointBlock MaterialPoints::block(const double* V, MaterialWork& work) {
  return {*material_, n_, constants_->data(), V, flag_.data(), energyFlag_.data(), work};
}

void MaterialPoints::remember() {
  largest_ = largestNow_;
  if (user_) user_->remember();
}

// The bindings name every member, so that none is forgotten.
void MaterialPoints::visit(Archive& archive, int32_t i) {
  [[maybe_unused]] auto& [material, n, user, constants, flag, energyFlag, largest, largestNow] = *this;
  archive.ofPoint(i, n, flag, energyFlag, largest, largestNow);
  if (user) user->visit(archive, i);
}

void MaterialPoints::respond(const double* V, const double* F, double increment, double* stress, double* bound,
                             double* bulk, MaterialWork& w) {
  const PointBlock points = block(V, w);
  if (user_) {
    user_->respond(V, F, increment, stress, bound, bulk);
    SPX_MAT_HYPERINVS33(&n_, w.I1.data(), w.I2.data(), w.rJ.data(), V);
    for (int32_t i = 0; i < n_; ++i)
      if (1 / w.rJ[i] < kSmallestVolume) flag_[i] = 1;
  } else {
    material_->model->stress(points, {stress, bound, bulk});
  }
  if (!material_->mullins) return;

  if (!user_) material_->model->energy(points);
  SPX_MAT_ORMULLINS(&n_, softening(0), softening(1), softening(2), largestNow_.data(), largest_.data(), w.U.data(),
                    w.eta.data(), w.detaDU.data());
  // An energy of shape and volume in one (foam) softens all of the stress, so that the energies close.
  const bool softensMean = material_->model->softensMean;
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
  constexpr int32_t kUnloading = 200; // the stiffest branch: the next increment may unload
  SPX_OPT_MULLINSEFFMOD(&n_, &kUnloading, w.eta.data(), w.detaDU.data(), w.rest.data(), w.lost.data(), bound);
}

void MaterialPoints::energies(const double* V, double* stored, double* lost, MaterialWork& w) {
  if (user_) return user_->energies(stored, lost);
  const PointBlock points = block(V, w);
  const bool needsLog = material_->model->needsLog();
  material_->model->energy(points);
  if (needsLog) GLO_UTI_LOGV(&n_, V, w.ddU.data()); // ln J is the trace
  for (int32_t i = 0; i < n_; ++i) {
    const double logJ = needsLog ? w.ddU[i] + w.ddU[i + n_] + w.ddU[i + 2 * n_] : 0;
    stored[i] = w.U[i] + volumetricEnergy(points, i, 1 / w.rJ[i], logJ);
    lost[i] = 0;
  }
  if (!material_->mullins) return;
  // Unloading from the largest energy Um to U: stored = U - loss(Um) + loss still to come, which is the same function of
  // Um - U with m + beta U in place of m (d = m + beta Um stays).
  std::fill_n(w.first.begin(), n_, 1.0);
  SPX_MAT_MULLINSDAMAGEENER(&n_, softening(0), softening(1), softening(2), largest_.data(), w.first.data(),
                            w.first.data(), lost);
  for (int32_t i = 0; i < n_; ++i) {
    const double U = std::clamp(w.U[i], 0.0, largest_[i]);
    w.second[i] = softening(1)[i] + softening(2)[i] * U;
    w.rest[i] = largest_[i] - U;
  }
  SPX_MAT_MULLINSDAMAGEENER(&n_, softening(0), w.second.data(), softening(2), w.rest.data(), w.first.data(),
                            w.first.data(), w.lost.data());
  for (int32_t i = 0; i < n_; ++i) stored[i] += w.lost[i] - lost[i];
}

} // namespace sharedanalysis::solver
