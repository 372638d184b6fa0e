// Plain loops for the records of results, as plain_kernels.h.
#pragma once

#include <cstdint>

namespace plain {

void odbprinc31quat(int32_t n, const double* S, double* P, double* Q);
void odbprinc31quatelset(int32_t n, int32_t members, const int32_t* set, const double* S, double* P, double* Q);
void odbprinc33quatmult(int32_t n, const double* S, const double* O, double* P, double* Q);
void odb3dstrain(int32_t n, const double* E, double* P);
void orient3d(int32_t n, const double* q, double* out);
void orient2dbeam(int32_t n, const double* coordinates, double* out);
void orientcne3d(int32_t n, const double* matrices, double* out);
void orientrebar(int32_t n, const double* axes, double* out);

} // namespace plain
