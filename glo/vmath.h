// Elementary functions for vector loops.
//
// Plain IEEE additions, multiplications, divisions and square roots and a little arithmetic on bit patterns, without a
// branch, a table or a fused operation: a loop over these vectorises for every instruction set and gives the same bits on
// each.  The line `bound:` below a function states its largest error and the range in which that holds; the tests read it
// from here.  Polynomials are minimax fits of relative error far below one rounding; docs/vector-math.md tells how they were
// found and how the tests check them.
#pragma once

#include "glo/kernel.h"

#include <bit>
#include <cstdint>
#include <limits>

namespace sa::vm {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

SA_INLINE double fromBits(uint64_t bits) { return std::bit_cast<double>(bits); }
SA_INLINE uint64_t toBits(double x) { return std::bit_cast<uint64_t>(x); }

// Adding this number leaves the nearest integer in the low bits of the sum; subtracting it again gives that integer.
constexpr double kRoundToInteger = 0x1.8p52;

// ---- exponential

// x = n ln 2 + r with |r| <= (ln 2)/2, r as a sum of two, and e^r by 1 + r + r^2 p(r), p of degree 9 in Estrin's grouping.
// 1 + r is split exactly, so that only its last rounding counts.
struct ReducedExponential {
  double factor; // e^r
  uint64_t n;    // n in the low bits
};
SA_INLINE ReducedExponential reducedExponential(double x) {
  const double t = x * 0x1.71547652b82fep+0 + kRoundToInteger, n = t - kRoundToInteger;
  const double high = x - n * 0x1.62e42fefa2000p-1, low = n * 0x1.9ef35793c7673p-41; // ln 2 in two parts
  const double r = high - low, rest = (high - r) - low;
  const double r2 = r * r, r4 = r2 * r2;
  const double p01 = 0x1.000000000000cp-1 + r * 0x1.5555555555561p-3;
  const double p23 = 0x1.555555554ff9fp-5 + r * 0x1.111111110d5afp-7;
  const double p45 = 0x1.6c16c185c8be0p-10 + r * 0x1.a01a01bb11748p-13;
  const double p67 = 0x1.a01996355a682p-16 + r * 0x1.71dddf62d38b8p-19;
  const double p89 = 0x1.28b0a36be78d5p-22 + r * 0x1.af862ce0dcd7bp-26;
  const double p = (p01 + r2 * p23) + r4 * ((p45 + r2 * p67) + r4 * p89);
  const double sum = 1.0 + r, lost = (1.0 - sum) + r;
  return {sum + (lost + (rest + r2 * p)), toBits(t)};
}

// e^x.  Scaled by 2^n in two halves, so that overflow and gradual underflow come out right.
// bound: exp 0.80 ulp on [-745.2, 709.8]
SA_INLINE double exp(double x) {
  double clamped = x > 710.0 ? 710.0 : x; // a NaN passes both comparisons
  clamped = clamped < -750.0 ? -750.0 : clamped;
  const ReducedExponential e = reducedExponential(clamped);
  const uint64_t biased = e.n + 2046, first = (biased << 51) & 0xfff0000000000000u, second = (biased << 52) - first;
  return e.factor * fromBits(first) * fromBits(second);
}

// e^x for arguments that are kept above the last normal result, by one scaling.  Below -708.3964185322637 it is as there.
// bound: expClamped 0.80 ulp on [-708.3, 709.4]
SA_INLINE double expClamped(double x) {
  const ReducedExponential e = reducedExponential(x < -708.3964185322637 ? -708.3964185322637 : x);
  return e.factor * fromBits((e.n + 1023) << 52);
}

// ---- logarithm

// x = 2^k (1 + f) with sqrt(1/2) <= 1 + f < sqrt 2, given the bits of a positive normal x and the bias of k.
// ln(1 + f) = f - (h - s (h + R(s^2))) with s = f/(2 + f), h = f^2/2 and R of degree 7 in s^2.
SA_INLINE double logOfBits(uint64_t bits, double bias) {
  constexpr uint64_t kHalfRoot = 0x3fe6a09e667f3bcdu; // sqrt(1/2)
  const uint64_t shifted = bits + (0x3ff0000000000000u - kHalfRoot);
  const double k = fromBits((shifted >> 52) | 0x4330000000000000u) - 0x1p52 + bias;
  const double f = fromBits((shifted & 0x000fffffffffffffu) + kHalfRoot) - 1.0;
  const double s = f / (2.0 + f), z = s * s, w = z * z, h = 0.5 * f * f;
  const double q01 = 0x1.5555555555592p-1 + z * 0x1.999999997fcbfp-2;
  const double q23 = 0x1.249249420554fp-2 + z * 0x1.c71c51f4e47e9p-3;
  const double q45 = 0x1.746643ce07791p-3 + z * 0x1.39a12ca676167p-3;
  const double R = z * ((q01 + w * q23) + w * w * (q45 + w * 0x1.2f0b8961d9a20p-3));
  return k * 0x1.62e42fefa2000p-1 - ((h - (s * (h + R) + k * 0x1.9ef35793c7673p-41)) - f);
}

// ln x: -infinity at 0, NaN below.
// bound: log 0.87 ulp on [0x1p-1074, 0x1.fffffffffffffp1023]
SA_INLINE double log(double x) {
  const bool subnormal = x < 0x1p-1022;
  const double y = logOfBits(toBits(subnormal ? x * 0x1p54 : x), subnormal ? -1077.0 : -1023.0);
  const double atEnds = x == 0.0 ? -kInfinity : (x == kInfinity ? kInfinity : y);
  return x >= 0.0 ? atEnds : kNaN;
}

// ln x of a positive normal number; any other argument gives a number without meaning.
// bound: logPositive 0.87 ulp on [0x1p-1022, 0x1.fffffffffffffp1023]
SA_INLINE double logPositive(double x) { return logOfBits(toBits(x), -1023.0); }

// ---- cosine

// x = n pi/2 + r with |r| <= pi/4, pi/2 in three parts and r as a sum of two; sine or cosine of r by its series, fitted.
// Arguments beyond 1e5 give NaN: no angle of a kernel comes near.
// bound: cos 0.90 ulp on [-1e5, 1e5]
SA_INLINE double cos(double x) {
  const double t = x * 0x1.45f306dc9c883p-1 + kRoundToInteger, n = t - kRoundToInteger;
  const double a = x - n * 0x1.921fb54400000p+0, b = n * 0x1.0b4611a600000p-34, c = n * 0x1.3198a2e037073p-69;
  const double high = a - b, r = high - c, rest = ((a - high) - b) + ((high - r) - c);
  const double z = r * r, w = z * z;
  const double ps =
      ((-0x1.5555555555549p-3 + z * 0x1.111111110f869p-7) + w * (-0x1.a01a019c0f18dp-13 + z * 0x1.71de35754fcd5p-19)) +
      w * w * (-0x1.ae5e643334178p-26 + z * 0x1.5d9260fc61ea3p-33);
  const double pc =
      ((0x1.555555555554cp-5 - z * 0x1.6c16c16c15199p-10) + w * (0x1.a01a019cb38bfp-16 - z * 0x1.27e4f80ac8988p-22)) +
      w * w * (0x1.1ee9ec3c088bfp-29 - z * 0x1.8faeac0337a9cp-37);
  const double sine = r + (rest * (1.0 - 0.5 * z) + r * (z * ps));
  const double half = 0.5 * z, u = 1.0 - half, cosine = u + (((1.0 - u) - half) + (w * pc - r * rest));
  const uint64_t quadrant = toBits(t);
  const double y = (quadrant & 1) != 0 ? sine : cosine;
  const double result = fromBits(toBits(y) ^ (((quadrant + 1) & 2) << 62));
  return __builtin_fabs(x) <= 1e5 ? result : kNaN;
}

// ---- inverse cosine

// asin(s) = s + s z p(z), z = s^2, on |s| <= 1/2.  Beyond, s = sqrt((1 - |x|)/2) and acos x = 2 asin s, or pi less that; the
// root is carried as a sum of two.  NaN outside [-1, 1].
// bound: acos 0.80 ulp on [-1, 1]
SA_INLINE double acos(double x) {
  const double size = __builtin_fabs(x);
  const bool outer = size > 0.5;
  const double z = outer ? (1.0 - size) * 0.5 : size * size, s = outer ? __builtin_sqrt(z) : size;
  const double w = z * z, w2 = w * w;
  const double p01 = 0x1.5555555555578p-3 + z * 0x1.333333332dfa5p-4;
  const double p23 = 0x1.6db6db7224944p-5 + z * 0x1.f1c71a8e3b33dp-6;
  const double p45 = 0x1.6e8bdf9ad807ep-6 + z * 0x1.1c49e3760e024p-6;
  const double p67 = 0x1.ca20be234d936p-7 + z * 0x1.757bf23948476p-7;
  const double p89 = 0x1.61717ff1de9c2p-7 + z * 0x1.e2e1606fc90dfp-9;
  const double pab = 0x1.6488a9926c1aep-6 - z * 0x1.5947042bc1c64p-6, pc = 0x1.0bac5aa181102p-5;
  const double p = ((p01 + w * p23) + w2 * (p45 + w * p67)) + w2 * w2 * ((p89 + w * pab) + w2 * pc);
  // the root: its leading half, and what is missing
  const double lead = outer ? fromBits(toBits(s) & 0xffffffff00000000u) : s;
  const double missing = outer ? (z - lead * lead) / (s + lead + 0x1p-1000) : 0.0; // the last term: 0/0 at |x| = 1
  const double tail = s * (z * p) + missing;                                       // asin s = lead + tail
  constexpr double kPi = 0x1.921fb54442d18p+1, kPiLow = 0x1.1a62633145c07p-53;
  const bool negative = x < 0.0;
  const double signedLead = negative ? -lead : lead, signedTail = negative ? -tail : tail;
  const double inner = 0.5 * kPi - (signedLead - (0.5 * kPiLow - signedTail));
  const double twice = 2.0 * lead, fromPi = kPi - twice, lost = (kPi - fromPi) - twice;
  const double outerNegative = fromPi + (lost - (2.0 * tail - kPiLow)), outerPositive = 2.0 * (lead + tail);
  return outer ? (negative ? outerNegative : outerPositive) : inner;
}

} // namespace sa::vm
