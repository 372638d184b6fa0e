// Storage codes of tensors and the packed triangle.
#include "glo.h"
#include "glo/kernel/kernel.h"

#include <algorithm>

SA_EXPORT void GLO_UTI_NUMTENSORCOMP(const int32_t* code, const int32_t* family, int32_t* ndirect, int32_t* nshear,
                                     int32_t* nquat) {
  struct Counts {
    int32_t code, direct, shear, quaternion;
  };
  static constexpr Counts kTable[] = {{100, 3, 1, 2}, {200, 3, 1, 2}, {300, 3, 3, 4}, {400, 1, 0, 0},
                                      {600, 3, 1, 0}, {700, 1, 1, 2}, {900, 1, 2, 4}};
  static constexpr int32_t kPlaneFamily = 25090;

  Counts counts{*code, 0, 0, 0};
  for (const Counts& row : kTable)
    if (row.code == *code) counts = row;
  if (*family == kPlaneFamily && *code != 100 && *code != 700 && *code != 900) counts = {*code, 3, 1, 0};
  *ndirect = counts.direct;
  *nshear = counts.shear;
  *nquat = counts.quaternion;
}

SA_EXPORT int32_t GLO_UTI_ITENSORID(SA_UNREAD procedure, const int32_t* element, SA_UNREAD variable) {
  static constexpr int32_t kAnyFamily = 0;
  int32_t direct = 0, shear = 0, quaternion = 0;
  GLO_UTI_NUMTENSORCOMP(element, &kAnyFamily, &direct, &shear, &quaternion);
  if (shear == 0) return 11;
  if (direct == 1) return 10;
  return shear == 1 ? 9 : 8;
}

SA_EXPORT int32_t GLO_UTI_SQ2TRSTORAGE(const int32_t* i, const int32_t* j) {
  const int64_t m = std::max(*i, *j), n = std::min(*i, *j);
  return static_cast<int32_t>(n + (m * m - m) / 2); // NOLINT(counts): a position is a 32-bit integer, modulo 2^32
}
