// Identifiers of nodal forces, and conductivity matrices.
#include "glo/kernel/kernel.h"
#include "spx.h"

namespace sa {

#define SA_IDENTIFIER(name, number)                                                                                    \
  SA_EXPORT void name(int32_t* id) { *id = number; }
SA_IDENTIFIER(SPX_GET_SOLIDNFORCID, 1)
SA_IDENTIFIER(SPX_GET_SHELLNFORCID, 2)
SA_IDENTIFIER(SPX_GET_BEAMNFORCID, 3)
SA_IDENTIFIER(SPX_GET_USERNFORCID, 4)

namespace {

// K of a symmetric tensor: one constant is isotropic, as many as dimensions are the direct components, more are all of them in
// storage order, the shear components after the direct ones.
template <int dimensions>
SA_INLINE void fillConductivity(int n, int ncons, const double* constants, double* K) {
  if (ncons != 1 && ncons != dimensions && ncons != dimensions * (dimensions + 1) / 2) return;
  constexpr int kShear[3][3] = {{0, 0, 2}, {0, 0, 1}, {2, 1, 0}}; // place of 13 and 23 after 12
  const int64_t N = n;
  for (int i = 0; i < dimensions; ++i)
    for (int j = 0; j < dimensions; ++j) {
      double k = 0.0;
      if (i == j)
        k = constants[ncons == 1 ? 0 : i];
      else if (ncons > dimensions)
        k = constants[dimensions + kShear[i][j]];
      double* column = K + (i + dimensions * j) * N;
      forPoints(n, [=](int e) SA_POINT { column[e] = k; });
    }
}

} // namespace

SA_KERNEL(SPX_GET_CONSTCONDUCTIVITY2D,
          (const int32_t* nblock, const int32_t* ncons, const double* constants, double* K)) {
  fillConductivity<2>(*nblock, *ncons, constants, K);
}

SA_KERNEL(SPX_GET_CONSTCONDUCTIVITY3D,
          (const int32_t* nblock, const int32_t* ncons, const double* constants, double* K)) {
  fillConductivity<3>(*nblock, *ncons, constants, K);
}

#undef SA_IDENTIFIER

} // namespace sa
