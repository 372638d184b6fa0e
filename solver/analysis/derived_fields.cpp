#include "solver/analysis/derived_fields.h"

#include "glo.h"
#include "solver/analysis/block_kernels.h"
#include "solver/model/s33.h"
#include "spx.h"

#include <algorithm>

namespace sharedanalysis::solver {
namespace {

constexpr int32_t kBlock = kPieceLength; // bricks of the mesh that are treated at a time
constexpr int32_t kOne = 1, kNoGroups = 0, kThree = 3, kUnread = 0;
constexpr int32_t kValues = 3, kQuaternion = 4;

// One block of consecutive bricks of the mesh.
class MeshBlock {
public:
  MeshBlock(const Mesh& mesh, int32_t first, int32_t count) : n_(count), first_(static_cast<std::size_t>(first)) {
    const std::size_t n = static_cast<std::size_t>(n_);
    map_.resize(8 * kBlock);
    for (std::size_t e = 0; e < kBlock; ++e) // the last brick fills the rows
      for (std::size_t corner = 0; corner < 8; ++corner)
        map_[corner * kBlock + e] = mesh.connectivity[8 * (first_ + std::min(e, n - 1)) + corner] + 1;
  }

  // Stresses of the fields, S33, brick fastest.
  std::vector<double> stress(const Fields& fields) const {
    const std::size_t n = static_cast<std::size_t>(n_);
    std::vector<double> S(6 * n);
    for (std::size_t e = 0; e < n; ++e)
      for (std::size_t k = 0; k < 6; ++k) S[k * n + e] = fields.stress[6 * (first_ + e) + k];
    return S;
  }

  // The axes of R = V^-1 F in columns, (n, 3, 3), with V V = F F'.
  std::vector<double> materialAxes(const Mesh& mesh, const Fields& fields) const {
    const std::size_t n = static_cast<std::size_t>(n_);
    const std::vector<double> X = gathered(mesh.coordinates), u = gathered(fields.displacement);
    std::vector<double> x(24 * kBlock), B(24 * kBlock), gamma(32 * kBlock), scalars(4 * n), mask(n);
    SPX_OPE_C3D8ROPER2(&n_, &kBlock, X.data(), B.data(), &scalars[0], &scalars[n], &scalars[2 * n], &scalars[3 * n],
                       gamma.data(), mask.data());
    for (std::size_t k = 0; k < x.size(); ++k) x[k] = X[k] + u[k];
    std::vector<double> F(9 * kBlock), b(6 * n), V(6 * n), full(9 * n), inverse(9 * n), singular(n);
    deformationGradient(n_, n_, x.data(), B.data(), F.data(), b.data());
    GLO_UTI_SQRTV(&n_, b.data(), V.data());
    for (std::size_t i = 0; i < 3; ++i)
      for (std::size_t j = 0; j < 3; ++j)
        std::copy_n(&V[static_cast<std::size_t>(kS33[i][j]) * n], n, &full[(3 * j + i) * n]);
    GLO_UTI_INVERSER(&n_, full.data(), inverse.data(), singular.data());
    std::vector<double> axes(9 * n);
    for (std::size_t i = 0; i < 3; ++i)
      for (std::size_t j = 0; j < 3; ++j)
        for (std::size_t e = 0; e < n; ++e) {
          const bool active = fields.mask[first_ + e] == 0.0 && singular[e] == 0.0;
          double r = 0;
          for (std::size_t k = 0; k < 3; ++k) r += inverse[(3 * k + i) * n + e] * F[(3 * k + j) * kBlock + e];
          axes[(3 * j + i) * n + e] = active ? r : (i == j ? 1.0 : 0.0);
        }
    return axes;
  }

private:
  // (kBlock, 8, 3) of a field of nodes.
  std::vector<double> gathered(std::span<const double> ofNodes) const {
    constexpr int32_t points = 8 * kBlock;
    std::vector<double> values(3 * static_cast<std::size_t>(points));
    GLO_UTI_GENGATHERR(&points, &kThree, &kThree, &kUnread, map_.data(), values.data(), ofNodes.data());
    return values;
  }

  int32_t n_;
  std::size_t first_;
  std::vector<int32_t> map_;
};

// Column k of the rotation that q stands for.
std::array<double, 3> turnedAxis(const double* q, int k) {
  const double x = q[0], y = q[1], z = q[2], w = q[3];
  switch (k) {
  case 0:
    return {1 - 2 * (y * y + z * z), 2 * (x * y + w * z), 2 * (x * z - w * y)};
  case 1:
    return {2 * (x * y - w * z), 1 - 2 * (x * x + z * z), 2 * (y * z + w * x)};
  default:
    return {2 * (x * z + w * y), 2 * (y * z - w * x), 1 - 2 * (x * x + y * y)};
  }
}

} // namespace

std::vector<double> derivedFields(const Mesh& mesh, const std::vector<int32_t>& elements, const Fields& fields) {
  const std::size_t count = elements.size();
  const int32_t last = static_cast<int32_t>(count);
  std::vector<int32_t> set(elements);
  for (int32_t& element : set) ++element; // numbers count from 1
  std::vector<double> P(kValues * count), Q(kQuaternion * count), orientation(kQuaternion * count);
  const bool hasStress = !fields.stress.empty(), hasMotion = !fields.displacement.empty();
  int32_t cursor = 1, counter = 1; // of the records; a block fills those of its members
  for (const int32_t& next = hasStress ? cursor : counter; next <= last;) {
    const int32_t first = (set[static_cast<std::size_t>(next - 1)] - 1) / kBlock * kBlock, number = first / kBlock + 1;
    const int32_t n = std::min(kBlock, mesh.elements() - first);
    const MeshBlock block(mesh, first, n);
    if (hasStress)
      GLO_UTI_ODBPRINC33QUATELSET(&n, &number, &kBlock, &kOne, &kNoGroups, set.data(), &cursor,
                                  block.stress(fields).data(), &kValues, &kQuaternion, P.data(), Q.data(), &last);
    if (hasMotion)
      SPX_ODB_ORIENTREBARELSET(&n, &counter, &number, &kBlock, &kOne, &kNoGroups, &last, set.data(),
                               block.materialAxes(mesh, fields).data(), orientation.data());
  }

  std::vector<double> values(derivedFieldNames.size() * count);
  for (std::size_t e = 0; e < count; ++e) {
    std::size_t field = 0;
    const auto add = [&](double value) { values[field++ * count + e] = value; };
    for (std::size_t k = 0; k < kValues; ++k) add(P[kValues * e + k]);
    const double* q = &Q[kQuaternion * e];
    for (std::size_t k = 0; k < kQuaternion; ++k) add(q[k]);
    for (int k = 0; k < 3; ++k)
      for (double component : turnedAxis(q, k)) add(component);
    for (std::size_t k = 0; k < kQuaternion; ++k) add(orientation[kQuaternion * e + k]);
  }
  return values;
}

} // namespace sharedanalysis::solver
