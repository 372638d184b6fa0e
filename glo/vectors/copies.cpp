// Copies and fills of arrays.
#include "glo.h"
#include "glo/kernel/kernel.h"

#include <limits>

namespace sa {
namespace {

template <class T>
SA_INLINE void fill(int n, T value, T* array) {
  forPoints(n, [=](int i) SA_POINT { array[i] = value; });
}

} // namespace

SA_MOVE(GLO_UTI_COPYR, (const int32_t* n, const double* source, double* destination)) {
  if (source == destination) return;
  forPoints(*n, [=](int i) SA_POINT { destination[i] = source[i]; });
}

#define SA_FILL(name, T)                                                                                               \
  SA_MOVE(name, (const int32_t* n, const T* value, T* array)) { fill(*n, *value, array); }
#define SA_FILL_WITH(name, T, constant)                                                                                \
  SA_MOVE(name, (const int32_t* n, T* array)) { fill<T>(*n, constant, array); }

SA_FILL(GLO_UTI_BROADCASTR, double)
SA_FILL(GLO_UTI_BROADCASTRDBL, double)
SA_FILL(GLO_UTI_BROADCASTI, int32_t)
SA_FILL(GLO_UTI_BROADCASTL, int32_t)
SA_FILL_WITH(GLO_UTI_BROADCAST0D, double, 0.0)
SA_FILL_WITH(GLO_UTI_BROADCAST0R, double, 0.0)
SA_FILL_WITH(GLO_UTI_BROADCAST0I, int32_t, 0)
SA_FILL_WITH(GLO_UTI_BROADCAST0S, float, 0.0F)
SA_FILL_WITH(GLO_UTI_BROADCASTNAN, double, std::numeric_limits<double>::quiet_NaN())

// The character comes as a text of length one; what follows in a longer one is not used.
SA_EXPORT void GLO_UTI_BROADCASTC(const int32_t* n, const char* value, char* array, int64_t valueLength,
                                  int64_t arrayLength) {
  const int64_t count = *n < arrayLength ? *n : arrayLength;
  const char character = valueLength > 0 ? *value : ' ';
  for (int64_t i = 0; i < count; ++i) array[i] = character;
}

SA_MOVE(GLO_UTI_BROADCAST2R, (const int32_t* n, const double* value, double* array1, double* array2)) {
  fill(*n, *value, array1);
  fill(*n, *value, array2);
}

SA_MOVE(GLO_UTI_BROADCASTR3D, (const int32_t* nblock, const double* value, double* array)) {
  const int64_t N = *nblock;
  for (int k = 0; k < 3; ++k) fill(*nblock, value[k], array + k * N);
}

SA_MOVE(GLO_UTI_GENBROADCASTR,
        (const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const double* value, double* array)) {
  const int64_t L = *ld;
  for (int k = 0; k < *ncomp; ++k) fill(*nblock, *value, array + k * L);
}

} // namespace sa

#undef SA_FILL
#undef SA_FILL_WITH
