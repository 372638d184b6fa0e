// A measured starting point for the library's own elementary functions: plain adds, multiplies, divisions and square roots, the same bits on
// every instruction set. Largest errors seen: exp 0.77 ulp, log 0.86, acos 0.78, cos 1.005 (one more compensation brings it below 1).
// It is a prototype: dense, untested at every edge. Make it readable, state and test its bounds, and add what is missing (expm1, erf where
// accuracy asks for it, log10, sin, powers).
#pragma once
#include "glo/kernel.h"
#include <bit>
#include <cstdint>
#include <limits>
namespace sa::vm {
SA_INLINE double asd(uint64_t u) { return std::bit_cast<double>(u); }
inline uint64_t asu(double d) { return std::bit_cast<uint64_t>(d); }
constexpr double magic = 0x1.8p52;
// e^x: x = n ln2 + r, |r| <= ln2/2; scaled in two steps so that subnormal and huge results come out right
SA_INLINE double exp(double x) {
  x = x > 710.0 ? 710.0 : x;
  x = x < -750.0 ? -750.0 : x;
  double t = x * 0x1.71547652b82fep+0 + magic, n = t - magic;
  double hi = x - n * 0x1.62e42fefa2000p-1, lo = n * 0x1.9ef35793c7673p-41;
  double r = hi - lo, rl = (hi - r) - lo;
  double r2 = r * r, r4 = r2 * r2;
  double p01 = 0x1.000000000000cp-1 + r * 0x1.5555555555561p-3, p23 = 0x1.555555554ff9fp-5 + r * 0x1.111111110d5afp-7,
         p45 = 0x1.6c16c185c8be0p-10 + r * 0x1.a01a01bb11748p-13,
         p67 = 0x1.a01996355a682p-16 + r * 0x1.71dddf62d38b8p-19,
         p89 = 0x1.28b0a36be78d5p-22 + r * 0x1.af862ce0dcd7bp-26;
  double p = (p01 + r2 * p23) + r4 * ((p45 + r2 * p67) + r4 * p89);
#ifdef EXP_SIMPLE
  double y = 1.0 + (r + (rl + r2 * p));
#else
  double s = 1.0 + r, e = (1.0 - s) + r, y = s + (e + (rl + r2 * p));
#endif
  uint64_t u = asu(t) + 2046, s1 = (u << 51) & 0xfff0000000000000u, s2 = (u << 52) - s1;
  return y * asd(s1) * asd(s2);
}
// cheaper: no subnormal results (callers clamp at -708.39): one scale
SA_INLINE double expn(double x) {
  double t = x * 0x1.71547652b82fep+0 + magic, n = t - magic;
  double hi = x - n * 0x1.62e42fefa2000p-1, lo = n * 0x1.9ef35793c7673p-41;
  double r = hi - lo, rl = (hi - r) - lo;
  double r2 = r * r, r4 = r2 * r2;
  double p01 = 0x1.000000000000cp-1 + r * 0x1.5555555555561p-3, p23 = 0x1.555555554ff9fp-5 + r * 0x1.111111110d5afp-7,
         p45 = 0x1.6c16c185c8be0p-10 + r * 0x1.a01a01bb11748p-13,
         p67 = 0x1.a01996355a682p-16 + r * 0x1.71dddf62d38b8p-19,
         p89 = 0x1.28b0a36be78d5p-22 + r * 0x1.af862ce0dcd7bp-26;
  double p = (p01 + r2 * p23) + r4 * ((p45 + r2 * p67) + r4 * p89);
  double s = 1.0 + r, e = (1.0 - s) + r, y = s + (e + (rl + r2 * p));
  return y * asd((asu(t) + 1023) << 52);
}
// ln x: x = 2^k (1 + f), sqrt(1/2) <= 1 + f < sqrt 2, s = f / (2 + f)
SA_INLINE double log(double x0) {
  constexpr double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
  bool sub = x0 < 0x1p-1022;
  double x = sub ? x0 * 0x1p54 : x0, kb = sub ? -1023.0 - 54.0 : -1023.0;
  uint64_t ix = asu(x) + (0x3ff0000000000000u - 0x3fe6a09e667f3bcdu);
  double k = asd((ix >> 52) | 0x4330000000000000u) - 0x1p52 + kb;
  double m = asd((ix & 0x000fffffffffffffu) + 0x3fe6a09e667f3bcdu);
  double f = m - 1.0, s = f / (2.0 + f), z = s * s, w = z * z, h = 0.5 * f * f;
  double q01 = 0x1.5555555555592p-1 + z * 0x1.999999997fcbfp-2, q23 = 0x1.249249420554fp-2 + z * 0x1.c71c51f4e47e9p-3,
         q45 = 0x1.746643ce07791p-3 + z * 0x1.39a12ca676167p-3;
  double R = z * ((q01 + w * q23) + w * w * (q45 + w * 0x1.2f0b8961d9a20p-3));
  double y = k * 0x1.62e42fefa2000p-1 - ((h - (s * (h + R) + k * 0x1.9ef35793c7673p-41)) - f);
  y = x0 == inf ? inf : y;
  y = x0 == 0.0 ? -inf : y;
  return (x0 >= 0.0) ? y : nan;
}
// positive normal argument only
SA_INLINE double logn(double x) {
  uint64_t ix = asu(x) + (0x3ff0000000000000u - 0x3fe6a09e667f3bcdu);
  double k = asd((ix >> 52) | 0x4330000000000000u) - (0x1p52 + 1023.0);
  double m = asd((ix & 0x000fffffffffffffu) + 0x3fe6a09e667f3bcdu);
  double f = m - 1.0, s = f / (2.0 + f), z = s * s, w = z * z, h = 0.5 * f * f;
  double q01 = 0x1.5555555555592p-1 + z * 0x1.999999997fcbfp-2, q23 = 0x1.249249420554fp-2 + z * 0x1.c71c51f4e47e9p-3,
         q45 = 0x1.746643ce07791p-3 + z * 0x1.39a12ca676167p-3;
  double R = z * ((q01 + w * q23) + w * w * (q45 + w * 0x1.2f0b8961d9a20p-3));
  return k * 0x1.62e42fefa2000p-1 - ((h - (s * (h + R) + k * 0x1.9ef35793c7673p-41)) - f);
}
// cos for moderate arguments (|x| < 1e5): x = n pi/2 + r, |r| <= pi/4
SA_INLINE double cos(double x) {
  double t = x * 0x1.45f306dc9c883p-1 + magic, n = t - magic;
  double a = x - n * 0x1.921fb54400000p+0, b = n * 0x1.0b4611a600000p-34, hi = a - b,
         r = hi - n * 0x1.3198a2e037073p-69, rl = ((a - hi) - b) + ((hi - r) - n * 0x1.3198a2e037073p-69);
  double z = r * r, w = z * z;
  double ps =
      ((-0x1.5555555555549p-3 + z * 0x1.111111110f869p-7) + w * (-0x1.a01a019c0f18dp-13 + z * 0x1.71de35754fcd5p-19)) +
      w * w * (-0x1.ae5e643334178p-26 + z * 0x1.5d9260fc61ea3p-33);
  double pc =
      ((0x1.555555555554cp-5 - z * 0x1.6c16c16c15199p-10) + w * (0x1.a01a019cb38bfp-16 - z * 0x1.27e4f80ac8988p-22)) +
      w * w * (0x1.1ee9ec3c088bfp-29 - z * 0x1.8faeac0337a9cp-37);
  double s = r + (rl + r * (z * ps));
  double hz = 0.5 * z, u = 1.0 - hz, c = u + (((1.0 - u) - hz) + (w * pc - r * rl));
  uint64_t q = asu(t);
  double y = (q & 1) ? s : c;
  return asd(asu(y) ^ (((q + 1) & 2) << 62));
}
SA_INLINE double acos(double x) {
  double a = __builtin_fabs(x);
  bool big = a > 0.5;
  double z = big ? (1.0 - a) * 0.5 : a * a, s = big ? __builtin_sqrt(z) : a, w = z * z;
  double p01 = 0x1.5555555555578p-3 + z * 0x1.333333332dfa5p-4, p23 = 0x1.6db6db7224944p-5 + z * 0x1.f1c71a8e3b33dp-6,
         p45 = 0x1.6e8bdf9ad807ep-6 + z * 0x1.1c49e3760e024p-6, p67 = 0x1.ca20be234d936p-7 + z * 0x1.757bf23948476p-7,
         p89 = 0x1.61717ff1de9c2p-7 + z * 0x1.e2e1606fc90dfp-9, pab = 0x1.6488a9926c1aep-6 - z * 0x1.5947042bc1c64p-6,
         pc = 0x1.0bac5aa181102p-5;
  double w2 = w * w, p = ((p01 + w * p23) + w2 * (p45 + w * p67)) + w2 * w2 * ((p89 + w * pab) + w2 * pc);
  double d = big ? asd(asu(s) & 0xffffffff00000000u) : s, cc = big ? (z - d * d) / (s + d) : 0.0;
  double as = s * (z * p) + cc;
  s = d;
  // small: pi/2 - (x + x z p); big, x>0: 2 (s + as); big, x<0: pi - 2(s+as)
  double sx = x < 0 ? -s : s, asx = x < 0 ? -as : as;
  double small_ = 0x1.921fb54442d18p+0 - (sx - (0x1.1a62633145c07p-54 - asx));
  double bp = 2.0 * (s + as), d2 = 2.0 * d, h1 = 0x1.921fb54442d18p+1 - d2, e1 = (0x1.921fb54442d18p+1 - h1) - d2,
         bn = h1 + (e1 - (2.0 * as - 0x1.1a62633145c07p-53));
  return big ? (x < 0 ? bn : bp) : small_;
}
} // namespace sa::vm
