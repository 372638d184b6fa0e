// Checks of the flags that element kernels leave, and the messages that name the marked elements.
#include "acd.h"
#include "dia_Codes.h"
#include "glo.h"
#include "glo/kernel/kernel.h"
#include "host_services.h"
#include "spx.h"
#include "spx/impl/elements/element_message.h"

#include <atomic>
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
    if (flags[e] == 0.0) continue;
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
SA_INLINE double smaller(double a, double b) { return a < b || a != a ? a : b; }

} // namespace

SA_KERNEL(SPX_OPE_SC3DDISTORTIONCHECK,
          (const int32_t* nblock, const double* t, const double* a, const double* b, const double* X, double* flags),
          (nblock, t, a, b, X, flags)) {
  const int64_t N = *nblock;
  forPoints(*nblock, [=](int e) SA_POINT {
    const double thinnest = smaller(smaller(t[e], t[e + N]), smaller(t[e + 2 * N], t[e + 3 * N]));
    const double h = thinnest < 0.0 ? 0.0 : thinnest;
    const Vector x1 = nodeOf(X + e, N, 1), x2 = nodeOf(X + e, N, 2), x3 = nodeOf(X + e, N, 3), x4 = nodeOf(X + e, N, 4);
    const Vector x5 = nodeOf(X + e, N, 5), x6 = nodeOf(X + e, N, 6), x7 = nodeOf(X + e, N, 7), x8 = nodeOf(X + e, N, 8);
    // edges round the faces; the corner normal is the product of the edge that comes and the one that goes
    const Vector b12 = x2 - x1, b23 = x3 - x2, b34 = x4 - x3, b41 = x1 - x4;
    const Vector t56 = x6 - x5, t67 = x7 - x6, t78 = x8 - x7, t85 = x5 - x8;
    const double diagonal13 = dot(cross(b41, b12), cross(t85, t56)) + dot(cross(b23, b34), cross(t67, t78));
    const double diagonal24 = dot(cross(b12, b23), cross(t56, t67)) + dot(cross(b34, b41), cross(t78, t85));
    const double collapsed = a[e] * b[e] * 1e-6 <= h * h ? 0.0 : 1.0;
    const double turned1 = diagonal13 > 0.0 ? 0.0 : 1.0, turned2 = diagonal24 > 0.0 ? 0.0 : 1.0;
    flags[e] = collapsed + turned1 + turned2 > 0.0 ? 1.0 : flags[e];
  });
}

} // namespace sa
