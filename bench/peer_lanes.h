// Several points at a time as other packages do it: the vector types of xsimd, and vectors of the compiler with the functions of
// SLEEF.  Formulas are written once, on the type of their numbers; what a type needs beside operators is here: load and store,
// select, any and the elementary functions, found by the type of their arguments.
#pragma once

#include <cstdint>

#ifdef SA_PEER_XSIMD
#include <xsimd/xsimd.hpp>
#endif
#ifdef SA_PEER_SLEEF
#include <immintrin.h>
#include <sleef.h>
#endif

namespace peer {

template <class N>
struct Lanes;

#ifdef SA_PEER_XSIMD
using Xsimd = xsimd::batch<double>;
template <>
struct Lanes<Xsimd> {
  static constexpr int width = Xsimd::size;
  static Xsimd load(const double* p) { return Xsimd::load_unaligned(p); }
  static void store(double* p, Xsimd x) { x.store_unaligned(p); }
};
#endif

#ifdef SA_PEER_SLEEF
#if defined(__AVX512F__)
#define SA_SLEEF(function) Sleef_##function##d8_u10avx512f
#define SA_SLEEF_SQRT _mm512_sqrt_pd
constexpr int kSleefWidth = 8;
#elif defined(__AVX2__)
#define SA_SLEEF(function) Sleef_##function##d4_u10avx2
#define SA_SLEEF_SQRT _mm256_sqrt_pd
constexpr int kSleefWidth = 4;
#else
#define SA_SLEEF(function) Sleef_##function##d2_u10
#define SA_SLEEF_SQRT _mm_sqrt_pd
constexpr int kSleefWidth = 2;
#endif
struct Sleef {
  typedef double Vector __attribute__((vector_size(8 * kSleefWidth)));
  typedef int64_t Mask __attribute__((vector_size(8 * kSleefWidth)));
  Vector v;
  Sleef() = default;
  Sleef(double x) : v(x - Vector{}) {}
  static Sleef of(Vector x) {
    Sleef y;
    y.v = x;
    return y;
  }
  Sleef& operator+=(Sleef b) {
    v += b.v;
    return *this;
  }
  Sleef& operator*=(Sleef b) {
    v *= b.v;
    return *this;
  }
  friend Sleef operator+(Sleef a, Sleef b) { return of(a.v + b.v); }
  friend Sleef operator-(Sleef a, Sleef b) { return of(a.v - b.v); }
  friend Sleef operator*(Sleef a, Sleef b) { return of(a.v * b.v); }
  friend Sleef operator/(Sleef a, Sleef b) { return of(a.v / b.v); }
  friend Sleef operator-(Sleef a) { return of(-a.v); }
  friend Mask operator<(Sleef a, Sleef b) { return a.v < b.v; }
  friend Mask operator>(Sleef a, Sleef b) { return a.v > b.v; }
  friend Mask operator<=(Sleef a, Sleef b) { return a.v <= b.v; }
  friend Mask operator>=(Sleef a, Sleef b) { return a.v >= b.v; }
  friend Sleef select(Mask m, Sleef a, Sleef b) { return of(m ? a.v : b.v); }
  friend Sleef max(Sleef a, Sleef b) { return of(a.v > b.v ? a.v : b.v); }
  friend Sleef min(Sleef a, Sleef b) { return of(a.v < b.v ? a.v : b.v); }
  friend Sleef abs(Sleef a) { return max(a, -a); }
  friend Sleef sqrt(Sleef a) { return of(SA_SLEEF_SQRT(a.v)); }
  friend Sleef exp(Sleef a) { return of(SA_SLEEF(exp)(a.v)); }
  friend Sleef log(Sleef a) { return of(SA_SLEEF(log)(a.v)); }
  friend Sleef cos(Sleef a) { return of(SA_SLEEF(cos)(a.v)); }
  friend Sleef acos(Sleef a) { return of(SA_SLEEF(acos)(a.v)); }
};
template <>
struct Lanes<Sleef> {
  static constexpr int width = kSleefWidth;
  static Sleef load(const double* p) {
    Sleef x;
    __builtin_memcpy(&x.v, p, sizeof x.v);
    return x;
  }
  static void store(double* p, Sleef x) { __builtin_memcpy(p, &x.v, sizeof x.v); }
};
#endif

} // namespace peer
