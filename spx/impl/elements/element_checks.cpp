// Checks of the flags that element kernels leave, and the messages that name the marked elements.
#include "acd.h"
#include "dia_Codes.h"
#include "glo.h"
#include "glo/kernel/kernel.h"
#include "host_services.h"
#include "spx.h"
#include "spx/impl/elements/brick_family.h"
#include "spx/impl/elements/element_message.h"

#include <atomic>
#include <bit>
#include <limits>

// The sum runs in order of the elements, so that it has one value whatever the machine.
SA_EXPORT double SPX_OPE_ERRORCHECK(const int32_t* nblock, int32_t* count, const double* flags) {
  const sa::OwnArithmetic arithmetic;
  constexpr double kLowest = std::numeric_limits<int32_t>::min(), kHighest = std::numeric_limits<int32_t>::max();
  double sum = 0.0;
  for (int32_t e = 0; e < *nblock; ++e) sum += flags[e];
  if (sum == 0.0) return sum;
  if (sum > kLowest - 1.0 && sum < kHighest + 1.0) {
    *count = static_cast<int32_t>(sum);
    return sum;
  }
  int32_t marked = 0;
  for (int32_t e = 0; e < *nblock; ++e) marked += flags[e] != 0.0 ? 1 : 0;
  *count = marked;
  return sum;
}

namespace sa {
namespace {

constexpr int32_t kMostMessages = 8;
struct DistortionMessage {
  ElementMessage text;
  int32_t code;
  bool blankLines; // before the messages of a block
};

#define SA_ADVICE                                                                                                      \
  "is excessively distorted. "                                                                                         \
  "Please check the nodal coordinates of nodes of this element. "                                                      \
  "Also, please check if these nodes are slave nodes in a *TIE definition. "                                           \
  "Adjusting the slave node coordinates of improperly defined *TIE definitions "                                       \
  "may cause excessive distortions of the underlying elements resulting in collapsed facets. "                         \
  "If the nodes are slave nodes in a *TIE definition, "                                                                \
  "please check the *TIE definition for consistency, "                                                                 \
  "making sure that there are no common nodes between the slave and master surfaces."

constexpr DistortionMessage kDistorted = {
    {"Excessive distortion of element number %I", "Excessive distortion of element number %I of instance %S"},
    dia_Codes::ExcessiveDistortion,
    true};
constexpr DistortionMessage kDistortedWithAdvice = {
    {"Element number %I " SA_ADVICE, "Element number %I of instance %S " SA_ADVICE},
    dia_Codes::ExcessiveDistortion,
    true};
constexpr DistortionMessage kRotated = {{"Excessive incremental rotation of element number %I.",
                                         "Excessive incremental rotation of element number %I of instance %S."},
                                        dia_Codes::ExcessiveRotation,
                                        false};
static_assert(kDistortedWithAdvice.text.plain.size() == 525 && kDistortedWithAdvice.text.withInstance.size() == 540);

void reportElement(const DistortionMessage& message, int32_t element, bool inInstances) {
  writeElementError(message.text, element, inInstances);
  const int32_t domain = DMPC_GETRANK();
  ACD_ERROR_XPL(&message.code, &domain, nullptr, nullptr, nullptr, nullptr, &element, 0);
}

// Raises the counter, which threads may share, and answers it; at its largest value it stays.
int32_t raised(std::atomic_ref<int32_t> counter) {
  constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
  int32_t before = counter.load(std::memory_order_relaxed);
  while (before < kMost && !counter.compare_exchange_weak(before, before + 1, std::memory_order_relaxed)) continue;
  return before < kMost ? before + 1 : kMost;
}

void reportMarked(const DistortionMessage& message, int32_t nblock, int32_t* counter, const int32_t* elements,
                  const double* flags) {
  const std::atomic_ref shared(*counter);
  if (message.blankLines && shared.load(std::memory_order_relaxed) <= kMostMessages)
    for (int line = 0; line < 2; ++line) writeMessage("NewLine", " ");
  const bool inInstances = modelHasInstances();
  for (int32_t e = 0; e < nblock; ++e) {
    // 0.0 or -0.0, also where the caller counts subnormals as such
    if (std::bit_cast<uint64_t>(flags[e]) << 1 == 0) continue;
    if (raised(shared) <= kMostMessages) reportElement(message, elements[e], inInstances);
  }
}

// Fields of the family headers that hold the position of the flags.
constexpr int kContinuumField = 7, kStructuralField = 6;

} // namespace

#define SA_REPORT(name, message)                                                                                       \
  SA_EXPORT void name(const int32_t* nblock, int32_t* counter, const int32_t* elements, const double* flags) {         \
    reportMarked(message, *nblock, counter, elements, flags);                                                          \
  }
#define SA_FAMILY_REPORT(name, field, writer)                                                                          \
  SA_EXPORT void name(const int32_t* nblock, int32_t* counter, const int32_t* elements, const int32_t* header,         \
                      const double* work) {                                                                            \
    writer(nblock, counter, elements, work + header[(field)-1] - 1);                                                   \
  }

SA_REPORT(SPX_ERR_DISTORTED, kDistorted)
SA_REPORT(SPX_ERR_DISTORTEDPAC, kDistortedWithAdvice)
SA_REPORT(SPX_ERR_EXCESSROT, kRotated)
SA_FAMILY_REPORT(SPX_ELE_CDISTORTED, kContinuumField, SPX_ERR_DISTORTED)
SA_FAMILY_REPORT(SPX_ELE_CDISTORTEDPAC, kContinuumField, SPX_ERR_DISTORTEDPAC)
SA_FAMILY_REPORT(SPX_ELE_CEXCESSROT, kContinuumField, SPX_ERR_EXCESSROT)
SA_FAMILY_REPORT(SPX_ELE_SDISTORTED, kStructuralField, SPX_ERR_DISTORTED)
SA_FAMILY_REPORT(SPX_ELE_SDISTORTEDPAC, kStructuralField, SPX_ERR_DISTORTEDPAC)
SA_FAMILY_REPORT(SPX_ELE_SEXCESSROT, kStructuralField, SPX_ERR_EXCESSROT)

// ---- continuum shell

namespace {

struct Vector {
  double x, y, z;
};
SA_INLINE Vector operator-(const Vector& a, const Vector& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
SA_INLINE Vector cross(const Vector& a, const Vector& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
SA_INLINE double dot(const Vector& a, const Vector& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
// Node 1..8 of the element whose first coordinate x points to.
SA_INLINE Vector nodeOf(const double* x, int64_t ld, int node) {
  return {x[(node - 1) * ld], x[(node + 7) * ld], x[(node + 15) * ld]};
}
// The smaller one; NaN where either is.
SA_INLINE double smaller(double a, double b) { return ((a < b) | (a != a)) ? a : b; }

SA_INLINE double thickness(const double* t, int64_t ld) {
  const double thinnest = smaller(smaller(t[0], t[ld]), smaller(t[2 * ld], t[3 * ld]));
  return thinnest < 0.0 ? 0.0 : thinnest;
}

// Edges round a face; the corner normal is the product of the edge that comes and the one that goes.
struct ShellFace {
  Vector e12, e23, e34, e41;
};
SA_INLINE ShellFace edgesOf(const double* x, int64_t ld, int first) {
  const Vector x1 = nodeOf(x, ld, first), x2 = nodeOf(x, ld, first + 1), x3 = nodeOf(x, ld, first + 2),
               x4 = nodeOf(x, ld, first + 3);
  return {x2 - x1, x3 - x2, x4 - x3, x1 - x4};
}

// ---- the same where the products of four lengths overflow or vanish: numbers and vectors with an exponent of their own

struct Scaled {
  double value; // near 1, or 0, or not finite
  int exponent;
};
SA_INLINE Scaled scaled(double x) {
  const double factor = brick::reciprocalPower(__builtin_fabs(x));
  return {x * factor, 1023 - static_cast<int>(__builtin_bit_cast(uint64_t, factor) >> 52)};
}
SA_INLINE Scaled operator*(const Scaled& a, const Scaled& b) {
  const Scaled product = scaled(a.value * b.value);
  return {product.value, product.exponent + a.exponent + b.exponent};
}
// x 2^n for n <= 0; what is smaller than any double by far is 0.
SA_INLINE double lowered(double x, int n) {
  return n < -1000 ? 0.0 * x : x * __builtin_bit_cast(double, static_cast<uint64_t>(1023 + n) << 52);
}
// A number with the sign of a + b.
SA_INLINE double signOfSum(const Scaled& a, const Scaled& b) {
  if (a.value == 0.0 || b.value == 0.0) return a.value + b.value;
  const int highest = a.exponent > b.exponent ? a.exponent : b.exponent;
  return lowered(a.value, a.exponent - highest) + lowered(b.value, b.exponent - highest);
}

struct ScaledVector {
  Vector v;
  int exponent;
};
SA_INLINE ScaledVector scaled(const Vector& v, int exponent = 0) {
  double largest = __builtin_fabs(v.x);
  largest = __builtin_fabs(v.y) > largest ? __builtin_fabs(v.y) : largest;
  largest = __builtin_fabs(v.z) > largest ? __builtin_fabs(v.z) : largest;
  const double factor = brick::reciprocalPower(largest);
  return {{v.x * factor, v.y * factor, v.z * factor},
          exponent + 1023 - static_cast<int>(__builtin_bit_cast(uint64_t, factor) >> 52)};
}
SA_INLINE ScaledVector normalOf(const Vector& comes, const Vector& goes) {
  const ScaledVector a = scaled(comes), b = scaled(goes);
  return scaled(cross(a.v, b.v), a.exponent + b.exponent);
}
SA_INLINE Scaled dot(const ScaledVector& a, const ScaledVector& b) {
  const Scaled product = scaled(dot(a.v, b.v));
  return {product.value, product.exponent + a.exponent + b.exponent};
}

// Whether the shell whose first coordinate X points to, with the thickness h, is distorted.
SA_INLINE bool isDistortedShell(const double* X, int64_t ld, double h, double a, double b) {
  // quarters, whose differences are finite, where coordinates are that large
  double quarters[24], largest = 0.0;
  for (int c = 0; c < 24; ++c) largest = __builtin_fabs(X[c * ld]) > largest ? __builtin_fabs(X[c * ld]) : largest;
  for (int c = 0; c < 24; ++c) quarters[c] = largest > 1e300 ? 0.25 * X[c * ld] : X[c * ld];
  const ShellFace bottom = edgesOf(quarters, 1, 1), top = edgesOf(quarters, 1, 5);
  const auto product = [](const Vector& comes, const Vector& goes, const Vector& comesAbove, const Vector& goesAbove)
                           SA_POINT { return dot(normalOf(comes, goes), normalOf(comesAbove, goesAbove)); };
  const double diagonal13 =
      signOfSum(product(bottom.e41, bottom.e12, top.e41, top.e12), product(bottom.e23, bottom.e34, top.e23, top.e34));
  const double diagonal24 =
      signOfSum(product(bottom.e12, bottom.e23, top.e12, top.e23), product(bottom.e34, bottom.e41, top.e34, top.e41));
  const Scaled square = scaled(h) * scaled(h), area = scaled(a) * scaled(b) * scaled(1e-6);
  const double excess = signOfSum({-area.value, area.exponent}, square);
  return !(excess >= 0.0 && diagonal13 > 0.0 && diagonal24 > 0.0);
}

} // namespace

SA_KERNEL(SPX_OPE_SC3DDISTORTIONCHECK,
          (const int32_t* nblock, const double* t, const double* a, const double* b, const double* X, double* flags)) {
  const int64_t N = *nblock;
  forPieces(*nblock, [=](int start, int n) SA_POINT {
    Lane marks, diagonal13, diagonal24;
    forPoints(n, [=, &diagonal13, &diagonal24](int i) SA_POINT {
      const double* x = X + start + i;
      const Vector x1 = nodeOf(x, N, 1), x2 = nodeOf(x, N, 2), x3 = nodeOf(x, N, 3), x4 = nodeOf(x, N, 4);
      const Vector x5 = nodeOf(x, N, 5), x6 = nodeOf(x, N, 6), x7 = nodeOf(x, N, 7), x8 = nodeOf(x, N, 8);
      const Vector b12 = x2 - x1, b23 = x3 - x2, b34 = x4 - x3, b41 = x1 - x4;
      const Vector t56 = x6 - x5, t67 = x7 - x6, t78 = x8 - x7, t85 = x5 - x8;
      diagonal13[i] = dot(cross(b41, b12), cross(t85, t56)) + dot(cross(b23, b34), cross(t67, t78));
      diagonal24[i] = dot(cross(b12, b23), cross(t56, t67)) + dot(cross(b34, b41), cross(t78, t85));
    });
    forPoints(n, [=, &marks, &diagonal13, &diagonal24](int i) SA_POINT {
      const int e = start + i;
      const double d13 = diagonal13[i], d24 = diagonal24[i], area = a[e] * b[e], h = thickness(t + e, N),
                   old = flags[e];
      const double collapsed = area * 1e-6 <= h * h ? 0.0 : 1.0;
      const double turned1 = d13 > 0.0 ? 0.0 : 1.0, turned2 = d24 > 0.0 ? 0.0 : 1.0;
      const double outside = brick::markOutside(__builtin_fabs(d13), 0.0) +
                             brick::markOutside(__builtin_fabs(d24), 0.0) + brick::markOutside(area, 0.0);
      const double distorted = outside == 0.0 ? collapsed + turned1 + turned2 : 0.0;
      marks[i] = outside;
      flags[e] = distorted > 0.0 ? 1.0 : old;
    });
    if (!brick::anyMarked(n, marks)) return;
    for (int i = 0; i < n; ++i)
      if (marks[i] != 0.0 &&
          isDistortedShell(X + start + i, N, thickness(t + start + i, N), a[start + i], b[start + i]))
        flags[start + i] = 1.0;
  });
}

#undef SA_ADVICE
#undef SA_REPORT
#undef SA_FAMILY_REPORT

} // namespace sa
