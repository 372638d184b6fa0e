// Plain loops of the brick family and of the output filters; see plain_kernels.h.
#pragma once

#include <cstdint>

namespace plain {

void c3dh8oper(const int32_t* nblock, const int32_t* ld, const double* X, double* dVdX, double* B, double* hgdiag,
               double* hgstiff, double* vol, double* rvol, double* h, double* gamma, double* mask);
void c3d8ioper(const int32_t* nblock, const int32_t* ipt, const int32_t* nipt, const double* dNdxi,
               const double* dNdeta, const double* dNdzeta, const double* X, double* Bdet, double* detJ, double* rdetJ,
               double* B, double* vol, double* rvol, double* mask);
void c3d8facearea(const int32_t* nblock, const int32_t* ld, const int32_t* face, const double* X, double* area,
                  double* normal, const double* mask);
void c3dh8tgrad(const int32_t* nblock, const int32_t* ld, const double* B, const double* T, double* gradT);
void c3d8rtdiver(const int32_t* nblock, const double* X, const double* T, const double* flux,
                 const double* conductivity, double* R, double* mask);
void filterfld(const int32_t* nblock, const int32_t* ncomp, const int32_t* filterdef, double* field, const double* coef,
               double* hist);
void runningMaximum(const int32_t* nblock, const int32_t* ncomp, double* field, double* state);

} // namespace plain
