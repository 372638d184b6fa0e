/* A user's program in C: the headers stand alone in C11, and calls reach the library. */
#include "acd.h"
#include "glo.h"
#include "spx.h"

int main(void) {
  const int32_t n = 3;
  const double a[3] = {1.0, 2.0, 3.0}, b[3] = {0.5, 0.25, 0.125};
  double sum[3] = {0.0, 0.0, 0.0};
  GLO_UTI_VADDR(&n, sum, a, b);
  const int32_t one = 1;
  const double gradient[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  double symmetric[6], skew[3];
  SPX_OPE_C3DSYMGRAD(&one, gradient, symmetric, skew);
  return sum[0] == 1.5 && sum[2] == 3.125 && symmetric[3] == 3.0 && skew[0] == 1.0 ? 0 : 1;
}
