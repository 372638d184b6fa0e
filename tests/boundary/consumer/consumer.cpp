// A user's program in C++20.
#include "acd.h"
#include "glo.h"
#include "spx.h"

int main() {
  int32_t live = 0;
  glo_initialize(&live);
  const int32_t n = 2;
  const double S[] = {1.0, 4.0, 2.0, 9.0, 3.0, 16.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0}; // diag(1,2,3), diag(4,9,16)
  double V[12];
  GLO_UTI_SQRTV(&n, S, V);
  glo_finalize(&live);
  return V[1] == 2.0 && V[3] == 3.0 && V[5] == 4.0 && live == 0 ? 0 : 1;
}
