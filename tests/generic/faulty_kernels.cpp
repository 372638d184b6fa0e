// Kernels that are wrong on purpose: planted_faults.cpp lists who must notice.
#include "faulty.h"

#include <cfenv>
#include <chrono>
#include <cmath>
#include <thread>

#include "glo/kernel/arithmetic.h"

#define KERNEL(name) void name(const int32_t* n, const double* x, double* y)
// y[i] is the value for each point, in the arithmetic of the library or in the caller's.
#define EACH_AS_CALLER(name, value)                                                                                    \
  KERNEL(name) {                                                                                                       \
    for (int i = 0; i < *n; ++i) y[i] = value;                                                                         \
  }
#define EACH(name, value)                                                                                              \
  KERNEL(name) {                                                                                                       \
    const sa::OwnArithmetic arithmetic;                                                                                \
    for (int i = 0; i < *n; ++i) y[i] = value;                                                                         \
  }

EACH(FAULTY_READS_PAST_END, x[i + 1] > 1e308 ? 0.0 : 2.0 * x[i])
EACH(FAULTY_CHANGES_INPUT, const_cast<double*>(x)[i] *= 2.0)
EACH(FAULTY_DEPENDS_ON_PLACE, i < *n - *n % 4 ? 0.2 * x[i] : x[i] / 5.0)
EACH(FAULTY_LEAKS_NAN, 2.0 * x[i] + 0.0 * x[i > 0 ? i - 1 : 0])
EACH(FAULTY_SWALLOWS_NAN, x[i]<0.0 || x[i]> 0.0 ? 2.0 * x[i] : 0.0)
EACH(FAULTY_NEXT_POINT, 2.0 * x[i])
EACH_AS_CALLER(FAULTY_TRAPS, 2.0 * x[i])

KERNEL(FAULTY_WRITES_PAST_END) {
  for (int i = 0; i < *n; i += 8)
    for (int k = 0; k < 8; ++k) y[i + k] = i + k < *n ? 2.0 * x[i + k] : 0.0;
}

KERNEL(FAULTY_WRITES_BEFORE) {
  if (*n > 0) y[-1] = 0.0;
  FAULTY_NEXT_POINT(n, x, y);
}

KERNEL(FAULTY_MISSES_A_POINT) {
  const int32_t even = *n - *n % 2;
  FAULTY_NEXT_POINT(&even, x, y);
}

KERNEL(FAULTY_STOPS_AT_SCRATCH) {
  const int32_t most = *n < 136 ? *n : 136;
  FAULTY_NEXT_POINT(&most, x, y);
}

KERNEL(FAULTY_WORKS_ON_EMPTY) {
  int i = 0;
  do y[i] = 2.0 * x[i];
  while (++i < *n);
}

KERNEL(FAULTY_SHARES_SCRATCH) {
  static volatile double scratch[136];
  for (int start = 0; start < *n; start += 136) {
    const int length = *n - start < 136 ? *n - start : 136;
    for (int i = 0; i < length; ++i) scratch[i] = 2.0 * x[start + i];
    if (*n == 137) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    for (int i = 0; i < length; ++i) y[start + i] = scratch[i];
    for (int i = 0; i < length; ++i) scratch[i] = 0.0;
  }
}

KERNEL(FAULTY_DOES_NOT_RETURN) {
  const sa::OwnArithmetic arithmetic;
  for (int i = 0; i < *n; ++i) {
    for (volatile double tiny = std::fabs(x[i]); tiny > 0.0 && tiny < 1e-300;)
      tiny = tiny * 1.4; // kept by the optimiser
    y[i] = 2.0 * x[i];
  }
}

KERNEL(FAULTY_LEAVES_FLAGS) {
  fenv_t callers;
  std::feholdexcept(&callers);
  std::fesetround(FE_TONEAREST);
  FAULTY_TRAPS(n, x, y);
  std::feupdateenv(&callers);
}

KERNEL(FAULTY_ROUNDS_AS_CALLER) {
  fenv_t callers;
  std::feholdexcept(&callers);
  for (int i = 0; i < *n; ++i) y[i] = 2.0 / 3.0 * x[i] * 3.0;
  std::fesetenv(&callers);
}

KERNEL(FAULTY_KEEPS_ENVIRONMENT) {
  std::fesetenv(FE_DFL_ENV);
  FAULTY_TRAPS(n, x, y);
}

void FAULTY_READS_UNREAD(const int32_t* n, const int32_t* unused, const double* x, double* y) {
  for (int i = 0; i < *n; ++i) y[i] = *unused == 12345 ? x[i] : 2.0 * x[i];
}

void FAULTY_IGNORES_LIST(const int32_t* n, const int32_t* count, const int32_t*, const double* x, double* y) {
  if (*count > 0) FAULTY_NEXT_POINT(n, x, y);
}

void SOUND_LIST(const int32_t* n, const int32_t* count, const int32_t* list, const double* x, double* y) {
  const sa::OwnArithmetic arithmetic;
  for (int k = 0; *n > 0 && k < *count; ++k) y[list[k] - 1] = 2.0 * x[list[k] - 1];
}

void FAULTY_NEXT_POINTINDX(const int32_t* n, const int32_t* count, const int32_t* list, const double* x, double* y) {
  for (int k = 0; *n > 0 && k < *count; ++k) y[list[k] - 1] = 2.0 * x[list[k] % *n];
}

void FAULTY_FILLS_STRIDE(const int32_t* n, const int32_t* ld, const double* x, double* y) {
  const auto all = static_cast<int32_t>(2 * static_cast<uint32_t>(*ld)); // a leading dimension may be large
  if (*n > 0) FAULTY_NEXT_POINT(&all, x, y);
}

void FAULTY_SHORT_OFFSET(const int32_t* n, const int32_t* ld, const double* x, double* y) {
  const sa::OwnArithmetic arithmetic;
  for (uint32_t c = 0; c < 3; ++c)
    for (int i = 0; i < *n; ++i) {
      const auto at = static_cast<int32_t>(c * static_cast<uint32_t>(*ld)) + i;
      y[at] = 2.0 * x[at];
    }
}

void FAULTY_ENTITY_FROM_ZERO(const int32_t* n, const int32_t* map, const double* x, double* y) {
  for (int i = 0; i < *n; ++i) y[map[i] > 1 ? map[i] - 2 : 0] = 2.0 * x[i];
}

void SOUND_RANGE(const int32_t* first, const int32_t* last, const int32_t* map, const int32_t* map2, const double* x,
                 const double* z, double* y) {
  const sa::OwnArithmetic arithmetic;
  for (int i = *first - 1; i < *last; ++i) y[map2[map[i] - 1] - 1] += x[2 * i] * z[map[i] - 1] + x[2 * i + 1];
}

void FAULTY_RECORD_FROM_ZERO(const int32_t* n, int32_t* cursor, const double* x, double* y) {
  for (int i = 0; i < *n; ++i) y[(*cursor)++] = 2.0 * x[i];
}

void FAULTY_KEEPS_CURSOR(const int32_t* n, int32_t* cursor, const double* x, double* y) {
  FAULTY_NEXT_POINT(n, x, y + *cursor - 1);
  if (*n > 0) ++*cursor;
}

void FAULTY_FIRST_PART(const int32_t* n, const int32_t* parts, const int32_t*, int32_t* cursor, const double* x,
                       double* y) {
  for (int i = 0; i < *n; ++i) y[(*cursor)++ * *parts - *parts] = 2.0 * x[i];
}

void SOUND_PART(const int32_t* n, const int32_t* parts, const int32_t* part, int32_t* cursor, const double* x,
                double* y) {
  const sa::OwnArithmetic arithmetic;
  for (int i = 0; i < *n; ++i) y[(*cursor - 1 + i) * *parts + *part - 1] = 2.0 * x[i];
  if (*part == *parts && *n > 0) *cursor += *n;
}

namespace {

// With the values of the members' points, or of the first points in their place.
void writeMembers(int before, int n, int last, const int32_t* set, int32_t* cursor, const double* x, double* y,
                  bool ofFirst = false) {
  const sa::OwnArithmetic arithmetic;
  for (int first = 0; n > 0 && *cursor <= last && set[*cursor - 1] - before <= n; ++*cursor) {
    const int point = set[*cursor - 1] - before;
    if (point >= 1) y[*cursor - 1] = 2.0 * x[ofFirst ? first++ : point - 1];
  }
}

} // namespace

#define SET(name)                                                                                                      \
  void name(const int32_t* n, const int32_t* blockNumber, const int32_t* blockSize,                                    \
            [[maybe_unused]] const int32_t* groupNumber, [[maybe_unused]] const int32_t* groupSize,                    \
            const int32_t* last, const int32_t* set, int32_t* cursor, const double* x, double* y)
SET(FAULTY_IGNORES_PLACE) { writeMembers((*blockNumber - 1) * *blockSize, *n, *last, set, cursor, x, y); }

SET(FAULTY_COUNTS_MEMBERS) {
  writeMembers((*blockNumber - 1) * *blockSize + (*groupNumber - 1) * *groupSize, *n, *last, set, cursor, x, y, true);
}

SET(SOUND_SET) {
  writeMembers((*blockNumber - 1) * *blockSize + (*groupNumber - 1) * *groupSize, *n, *last, set, cursor, x, y);
}
