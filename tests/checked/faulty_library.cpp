// Routines that break what their declarations promise, behind the checking library.
#include <cmath>
#include <cstdint>

extern "C" {

__attribute__((visibility("default"))) void GLO_UTI_DET33(const std::int32_t* nblock, const double*, double* det) {
  for (int i = 0; i + 1 < *nblock; ++i) det[i] = 1; // forgets the last point
}

__attribute__((visibility("default"))) void GLO_UTI_DET31(const std::int32_t* nblock, const double* S, double* det) {
  for (int i = 0; i < *nblock; ++i) det[i] = 1;
  const_cast<double*>(S)[0] += 1;
}

__attribute__((visibility("default"))) void GLO_UTI_GENBROADCASTR(const std::int32_t*, const std::int32_t* ncomp,
                                                                  const std::int32_t* ld, const double* value,
                                                                  double* array) {
  for (int i = 0; i < *ncomp * *ld; ++i) array[i] = *value; // whole columns
}

__attribute__((visibility("default"))) void GLO_UTI_VADDR(const std::int32_t* n, double* result, const double* a,
                                                          const double* b) {
  for (int i = 0; i < *n; ++i) result[i] = i == 2 ? std::nan("") : a[i] + b[i];
}

__attribute__((visibility("default"))) void GLO_UTI_VMULTR(const std::int32_t* n, double* result, const double* a,
                                                           const double* b) {
  for (int i = 0; i < *n; ++i) result[i] = std::nextafter(a[i] * b[i], 1e300); // a last bit
}
}
