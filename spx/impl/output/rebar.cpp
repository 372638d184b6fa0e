// Orientations of reinforcement: axis 1 lies along the bars.
#include "spx.h"
#include "spx/impl/output/orientation.h"

namespace sa {
namespace {

// The bars' own axes, given as a matrix.
struct BarAxes {
  const double* axes;

  SA_INLINE Quaternion operator()(int64_t n, int64_t k) const {
    const double* a = axes + k;
    const Axes given{a[0], a[n], a[2 * n], a[3 * n], a[4 * n], a[5 * n], a[6 * n], a[7 * n], a[8 * n]};
    return quaternionOf(rightHanded(given));
  }
};

// The shell's orientation and on to the bars in its plane.
struct BarsInShell {
  const double *q, *direction;

  SA_INLINE Quaternion operator()(int64_t n, int64_t k) const {
    const Quaternion shell = load<Quaternion>(q, n, k);
    const PlaneQuaternion bar = turnTo(direction[k], direction[k + n]);
    return {shell.x * bar.w + shell.y * bar.z, difference(shell.y * bar.w, shell.x * bar.z),
            shell.z * bar.w + shell.w * bar.z, difference(shell.w * bar.w, shell.z * bar.z)};
  }
};

// The meridian in the plane 1-2, then the turn about it that lays axis 2 along the circumference, global axis 3, then on to the
// bars in the surface.
struct BarsInAxisymmetricShell {
  PlaneDirection meridian;
  const double* direction;

  SA_INLINE Quaternion operator()(int64_t n, int64_t k) const {
    constexpr double kRootHalf = 0x1.6a09e667f3bcdp-1;
    const PlaneQuaternion m = meridian(n, k);
    const PlaneQuaternion bar = turnTo(direction[k], direction[k + n]);
    // (0, 0, m.z, m.w) times the quarter turn about axis 1
    const double xw = kRootHalf * m.w, yz = kRootHalf * m.z;
    return {xw * bar.w + yz * bar.z, difference(yz * bar.w, xw * bar.z), yz * bar.w + xw * bar.z,
            difference(xw * bar.w, yz * bar.z)};
  }
};

} // namespace

SA_ORIENTATIONS(SPX_ODB_ORIENTREBAR, (const double* axes), BarAxes{axes})
SA_ORIENTATIONS(SPX_ODB_ORIENTREBSHELL, (const double* q, const double* direction), BarsInShell{q, direction})
SA_ORIENTATIONS(SPX_ODB_ORIENTREBAXSHELL,
                (const double* coordinates, const int32_t* firstColumn, const double* direction),
                BarsInAxisymmetricShell{PlaneDirection(coordinates, firstColumn, nblock), direction})

} // namespace sa
