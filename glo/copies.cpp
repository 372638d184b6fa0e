// Copies, fills and sums of arrays.
#include "glo.h"
#include "glo/kernel.h"

namespace sa {
namespace {

struct Fill {
  double value;
  double* array;
  SA_INLINE void operator()(int i) const { array[i] = value; }
};

} // namespace

SA_KERNEL(GLO_UTI_COPYR, (const int32_t* n, const double* source, double* destination), (n, source, destination)) {
  if (source == destination) return;
  forPoints(*n, [=](int i) SA_POINT { destination[i] = source[i]; });
}

SA_KERNEL(GLO_UTI_VADDR, (const int32_t* n, double* result, const double* a, const double* b), (n, result, a, b)) {
  forPoints(*n, [=](int i) SA_POINT { result[i] = a[i] + b[i]; });
}

SA_KERNEL(GLO_UTI_BROADCASTR, (const int32_t* n, const double* value, double* array), (n, value, array)) {
  forPoints(*n, Fill{*value, array});
}

SA_KERNEL(GLO_UTI_BROADCAST0D, (const int32_t* n, double* array), (n, array)) { forPoints(*n, Fill{0.0, array}); }

} // namespace sa
