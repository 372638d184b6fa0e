// The plain loops that the library is measured against: one point after the other, written as the formulas stand, with the
// mathematics of the C library.  Arguments are those of the kernels.
#pragma once

#include <cstdint>
#include <string>

namespace plain {

void princs33(const int32_t* nblock, const double* S, double* P, double* V);
void eig33anal(const int32_t* nblock, const double* S, double* P);
void princs31(const int32_t* nblock, const double* S, double* P, double* V);
void eig33vector(const int32_t* nblock, const double* S, double* P);
void sqrtv(const int32_t* nblock, const double* S, double* V);
void logarithmicStrain(const int32_t* nblock, const double* C, double* strain);
void c3d8oper(const int32_t* nblock, const int32_t* ipt, const int32_t* nipt, const double* dNdxi, const double* dNdeta,
              const double* dNdzeta, const double* X, double* Bdet, double* detJ, double* rdetJ, double* mask);
void c3d8roper2(const int32_t* nblock, const int32_t* ld, const double* X, double* B, double* hgdiag, double* hgstiff,
                double* vol, double* rvol, double* gamma, double* mask);
void c3dsymgrad(const int32_t* nblock, const double* G, double* sym, double* skew);
void hyperpolys33(const int32_t* nblock, const double* C10, const double* C01, const double* C20, const double* C11,
                  const double* C02, double* energy, double* rJ, const double* V);
void hyperpoly3dexp(const int32_t* nblock, const double* C10, const double* C01, const double* C20, const double* C11,
                    const double* C02, const double* rD1, const double* rD2, const double* V, double* stress,
                    double* flag, double* bound, double* bulk);
void gatherr(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map, double* L,
             const double* G);
void genassem(const int32_t* nblock, const int32_t* ndim, const int32_t* ld, const int32_t* unused, double* G,
              const double* L, const int32_t* map);
void inssorti(int32_t* list, const int32_t* keys, const int32_t* n);
void copyr(const int32_t* n, const double* source, double* destination);
void vaddr(const int32_t* n, double* result, const double* a, const double* b);
void exp(const int32_t* n, const double* x, double* y);
void log(const int32_t* n, const double* x, double* y);
void cos(const int32_t* n, const double* x, double* y);
void acos(const int32_t* n, const double* x, double* y);

// A message, its numbers printed by the C library, broken at blanks into lines of 79 characters.
void write(const std::string& text, const int32_t* ints, const double* reals, const char* const* strings,
           void (*line)(const std::string&));

} // namespace plain
