// Checks of the flags that element kernels leave.
#include "glo/kernel.h"
#include "spx.h"

#include <limits>

// The sum runs in order of the elements, so that it has one value whatever the machine.
SA_EXPORT double SPX_OPE_ERRORCHECK(const int32_t* nblock, int32_t* count, const double* flags) {
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
