// One kernel as it should be and two that are slow without any other sign.
#include "glo/kernel/kernel.h"

#define SA_ARGUMENTS_TOY_SOUND (n, x, y)
#define SA_ARGUMENTS_TOY_CALLS (n, x, y)
#define SA_ARGUMENTS_TOY_SCALAR (n, x, y)

namespace sa {

// Not inlined: one body serves all instruction sets.
__attribute__((noinline)) static double shared(double x) { return 2.0 * x + 1.0 / x; }

SA_KERNEL(TOY_SOUND, (const int32_t* n, const double* x, double* y)) {
  forPoints(*n, [=](int i) SA_POINT { y[i] = 2.0 * x[i] + 1.0 / x[i]; });
}

SA_KERNEL(TOY_CALLS, (const int32_t* n, const double* x, double* y)) {
  for (int i = 0; i < *n; ++i) y[i] = shared(x[i]);
}

// Each value waits for the one before.
SA_KERNEL(TOY_SCALAR, (const int32_t* n, const double* x, double* y)) {
  double sum = 0.0;
  for (int i = 0; i < *n; ++i) y[i] = sum = 0.5 * sum + x[i];
}

} // namespace sa
