// The library's vector mathematics: exp, log, log10, powers, cos and acos for loops under `#pragma omp simd`, and the few helpers
// that branch-free bodies need.
//
// Every function is a straight line of IEEE additions, multiplications, divisions and square roots on doubles and of unsigned
// 64-bit additions, shifts and masks: what SSE2, AVX2 and AVX-512 all have.  The result of a point is therefore the same to the
// last bit in a scalar call, in any lane and on any instruction set.  (A shift of signed integers or a conversion between
// integers and doubles would be emulated on the older sets.)
//
// Compile with -ffp-contract=off: the compensated sums below rely on every operation being rounded by itself.
//
// A line `bound:` above a function states its largest error and the arguments it holds for; the tests take the figures from
// there, docs/vector-math.md repeats them.  Mostly NaN gives NaN.  The coefficients are minimax fits of the error relative to the
// function's result, made by tools/vmath_coefficients.py; the tests measure them against the series.
#pragma once

#include <bit>
#include <cstdint>
#include <limits>

#include "glo/kernel/kernel.h"

namespace sa::vm {

// ---- helpers

SA_INLINE uint64_t toBits(double x) { return std::bit_cast<uint64_t>(x); }
SA_INLINE double fromBits(uint64_t bits) { return std::bit_cast<double>(bits); }

SA_INLINE double select(bool condition, double a, double b) { return condition ? a : b; }

// The second argument where either is NaN (and where they are equal: of +0 and -0 the second).
SA_INLINE double max(double a, double b) { return a > b ? a : b; }
SA_INLINE double min(double a, double b) { return a < b ? a : b; }

SA_INLINE double abs(double x) { return __builtin_fabs(x); }
SA_INLINE double sqrt(double x) { return __builtin_sqrt(x); }

constexpr uint64_t kSignBit = 0x8000000000000000u;
SA_INLINE double copysign(double magnitude, double sign) {
  return fromBits((toBits(magnitude) & ~kSignBit) | (toBits(sign) & kSignBit));
}

// a where the mask is all ones, b where it is zero.  (SSE2 cannot compare 64-bit integers.)
SA_INLINE double blend(uint64_t mask, double a, double b) { return fromBits((toBits(a) & mask) | (toBits(b) & ~mask)); }

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kSmallestNormal = std::numeric_limits<double>::min();

// ---- parts that the functions share

// x + kRoundShift is x rounded to the nearest integer, its two's complement in the low bits of the significand.
constexpr double kRoundShift = 0x1.8p52;

// x^power for a power of two.
template <int power>
SA_INLINE double powerOfTwo(double x) {
  if constexpr (power == 1)
    return x;
  else
    return powerOfTwo<power / 2>(x) * powerOfTwo<power / 2>(x);
}

// c[first] + c[first + 1] x + ... with `count` terms in Estrin's form: split at the largest power of two below count, so that
// the halves are independent and the chain of dependent operations is short.
template <int first, int count>
SA_INLINE double estrin(double x, const double* c) {
  if constexpr (count == 1)
    return c[first];
  else {
    constexpr int half = count > 8 ? 8 : count > 4 ? 4 : count > 2 ? 2 : 1;
    return estrin<first, half>(x, c) + powerOfTwo<half>(x) * estrin<first + half, count - half>(x, c);
  }
}
template <int count>
SA_INLINE double polynomial(double x, const double (&c)[count]) {
  static_assert(count <= 16);
  return estrin<0, count>(x, c);
}

// ln 2 in two parts: the first has 42 bits, so that its product with an exponent is exact.
constexpr double kLn2High = 0x1.62e42fefa3800p-1, kLn2Low = 0x1.ef35793c76730p-45;

// log10(2) and log10(e) in two parts: the first have 42 bits, for products with exponents, and 32 bits.
constexpr double kLog10Of2High = 0x1.34413509f7800p-2, kLog10Of2Low = 0x1.fef311f12b358p-46;
constexpr double kLog10OfEHigh = 0x1.bcb7b15200000p-2, kLog10OfELow = 0x1.b9438ca9aadd5p-36;

// ---- exp

// (e^r - 1 - r) / r^2 for |r| <= ln 2 / 2
constexpr double kExpCoefficients[] = {
    0x1.000000000000ap-1,  0x1.55555555554fap-3,  0x1.555555555088bp-5,  0x1.1111111127ba3p-7,  0x1.6c16c184269f3p-10,
    0x1.a01a012a685f6p-13, 0x1.a0199a165546ep-16, 0x1.71df253b4f90fp-19, 0x1.28ad692564eebp-22, 0x1.ad7f7b1170195p-26};

// x = n ln 2 + r + rLow, n the integer nearest to x / ln 2.
struct ReducedExponent {
  double shifted; // n in the low bits
  double r, rLow;
};
SA_INLINE ReducedExponent reduceExponent(double x) {
  const double shifted = x * 0x1.71547652b82fep+0 + kRoundShift, n = shifted - kRoundShift;
  // the first difference is exact
  const double high = x - n * kLn2High, low = n * kLn2Low;
  const double r = high - low;
  return {shifted, r, (high - r) - low};
}

struct ExpParts {
  uint64_t exponent;  // n in the low bits
  double significand; // e^r
};

// e^x = 2^n e^r.
SA_INLINE ExpParts expParts(double x) {
  const ReducedExponent e = reduceExponent(x);
  // 1 + r as an exact sum of two: without it the error is 0.2 ulp larger
  const double sum = 1.0 + e.r, sumLow = (1.0 - sum) + e.r;
  return {toBits(e.shifted), sum + (sumLow + (e.rLow + e.r * e.r * polynomial(e.r, kExpCoefficients)))};
}

// e^x: 0 below -745.13..., infinity above 709.78...  The larger bound is that of subnormal results, which are rounded twice.
// bound: exp 0.80 ulp on [-708.396, 709.8]
// bound: exp 0.89 ulp on [-745.2, -708.396]
SA_INLINE double exp(double x) {
  const ExpParts e = expParts(max(-750.0, min(710.0, x))); // with the bound first, NaN stays
  // 2^n = 2^(n - n/2) 2^(n/2), each a normal number; made of the biased exponents, whose sum is n + 2046
  const uint64_t sum = e.exponent + 2046;
  const uint64_t scale1 = (sum << 51) & 0xfff0000000000000u, scale2 = (sum << 52) - scale1;
  return e.significand * fromBits(scale1) * fromBits(scale2);
}

// e^x with x kept from falling below -708.3964185322637, where the result would become subnormal: scaling is one addition to
// the exponent.  Infinity above 709.78...
// bound: expClamped 0.80 ulp on [-708.3964185322637, 709.8]
SA_INLINE double expClamped(double x) {
  constexpr double lowest = -708.3964185322637, highest = 0x1.62e42fefa39efp+9; // of the finite results
  const ExpParts e = expParts(min(max(x, lowest), highest));
  const double y = fromBits(toBits(e.significand) + (e.exponent << 52));
  return select(x <= highest, y, x + kInfinity); // beyond: infinity or NaN
}

// The bits of expClamped for an x known to be at most 709, or NaN: without the largest results two blends are spared.
SA_INLINE double expBelow(double x) {
  const ExpParts e = expParts(max(-708.3964185322637, x));
  return e.significand * fromBits((e.exponent + 1023) << 52);
}

// The bits of expClamped for |x| <= 708: nothing has to be bounded.
SA_INLINE double expInside(double x) {
  const ExpParts e = expParts(x);
  return fromBits(toBits(e.significand) + (e.exponent << 52));
}

// (e^r - 1 - r - r^2/2) / r^3 for |r| <= ln 2 / 2: a fit of its own, as the one above serves e^r, whose error e^r - 1 may not
// have
constexpr double kExpm1Coefficients[] = {
    0x1.5555555555559p-3,  0x1.5555555555549p-5,  0x1.111111110f7edp-7,  0x1.6c16c16c1ccd9p-10, 0x1.a01a01af75732p-13,
    0x1.a01a01830a46ep-16, 0x1.71ddf9543a036p-19, 0x1.27e52b21ab2d6p-22, 0x1.af5d1faf5eba2p-26, 0x1.1ef535ace8009p-29};

// (e^r - 1 - r) / r^2 for |r| <= ln 2 / 2.
SA_INLINE double remainderOfExp(double r) { return 0.5 + r * polynomial(r, kExpm1Coefficients); }

// e^x - 1, exact to rounding near zero too: -1 below -50, infinity above 709.78...
// bound: expm1 0.75 ulp on [-50, 709.8]
SA_INLINE double expm1(double x) {
  const ReducedExponent e = reduceExponent(max(-50.0, min(709.8, x)));
  // (2^n - 1 + 2^n (e^r - 1))/2: by halves the largest power is finite.  e^r - 1 = r + head^2/2 + rest, where head has 26 bits
  // of r and an exact square; the leading terms are summed without loss.
  const double half = fromBits((toBits(e.shifted) + 1022) << 52);
  const double head = fromBits(toBits(e.r) & 0xfffffffff8000000u), tail = 0.5 * ((e.r - head) * (e.r + head));
  const double rest = e.rLow * (1.0 + e.r) + (tail + e.r * e.r * (e.r * polynomial(e.r, kExpm1Coefficients)));
  const double whole = half - 0.5, wholeLow = (half - whole) - 0.5;
  const double part = half * e.r, square = half * (0.5 * (head * head));
  const double sum = whole + part, sumLow = (whole - sum) + part;
  const double total = sum + square, totalLow = (sum - total) + square;
  const double y = 2.0 * (total + (totalLow + (sumLow + (wholeLow + half * rest))));
  return select(abs(x) < 0x1p-60, x, y); // halves of subnormal numbers are none
}

// ---- log

// (2 atanh(s) - 2 s) / s^3 as a polynomial in s^2, for s = f / (2 + f), sqrt(1/2) <= 1 + f < sqrt(2)
constexpr double kLogCoefficients[] = {0x1.5555555555592p-1, 0x1.999999997fee8p-2, 0x1.24924941e0cb0p-2,
                                       0x1.c71c5216485a9p-3, 0x1.74663c54201e2p-3, 0x1.39a1fb8dc2a0fp-3,
                                       0x1.2f02e64daeed8p-3};

// The same for -3/8 <= f <= 3/5, where ln(1 + f) = 2 s + s^3 times the polynomial needs no power of two.
constexpr double kNearLogCoefficients[] = {0x1.5555555555514p-1, 0x1.99999999acd78p-2, 0x1.2492491503823p-2,
                                           0x1.c71c7ded4b98ep-3, 0x1.745a7908620a9p-3, 0x1.3b67824399e32p-3,
                                           0x1.0b098b8a6b59ep-3, 0x1.2b641c66e25cbp-3};

// x = 2^k (1 + f) with sqrt(1/2) <= 1 + f < sqrt(2), for a positive normal x.  exponentBias is 1023, or 1023 + 54 for an x that
// was multiplied by 2^54.
struct LogParts {
  double k, f;
};
SA_INLINE LogParts logParts(double x, double exponentBias) {
  constexpr uint64_t one = 0x3ff0000000000000u, sqrtHalf = 0x3fe6a09e667f3bcdu, fraction = 0x000fffffffffffffu;
  const uint64_t bits = toBits(x) + (one - sqrtHalf);
  const double k = fromBits((bits >> 52) | 0x4330000000000000u) - (0x1p52 + exponentBias);
  return {k, fromBits((bits & fraction) + sqrtHalf) - 1.0};
}

// ln x for a positive normal x.
SA_INLINE double logNormal(double x, double exponentBias) {
  const auto [k, f] = logParts(x, exponentBias);
  // ln(1 + f) = f - (f^2/2 - s (f^2/2 + R)), R = s^2 times the polynomial: the leading term f is exact
  const double s = f / (2.0 + f), z = s * s, halfSquare = 0.5 * f * f;
  const double R = z * polynomial(z, kLogCoefficients);
  return k * kLn2High - ((halfSquare - (s * (halfSquare + R) + k * kLn2Low)) - f);
}

// log10 x for a positive normal x.
SA_INLINE double log10Normal(double x, double exponentBias) {
  const auto [k, f] = logParts(x, exponentBias);
  const double s = f / (2.0 + f), z = s * s, halfSquare = 0.5 * f * f;
  const double R = z * polynomial(z, kLogCoefficients);
  // ln(1 + f) = head + tail with 21 bits in the head, so that its product with the 32 bits of the upper part is exact; then
  // everything but the sum of the two leading terms is small
  const double head = fromBits(toBits(f - halfSquare) & 0xffffffff00000000u);
  const double tail = ((f - head) - halfSquare) + s * (halfSquare + R);
  const double a = k * kLog10Of2High, b = head * kLog10OfEHigh, sum = a + b;
  const double small = k * kLog10Of2Low + ((tail + head) * kLog10OfELow + tail * kLog10OfEHigh);
  return sum + (((a - sum) + b) + small);
}

// Calls evaluate(x, exponentBias) for a positive normal x and brings the results of all other x in line.
template <class Evaluate>
SA_INLINE double logarithm(double x, Evaluate evaluate) {
  const bool subnormal = x < 0x1p-1022;
  double y = evaluate(select(subnormal, x * 0x1p54, x), select(subnormal, 1023.0 + 54.0, 1023.0));
  y = select(x == kInfinity, x, y);
  y = select(x == 0.0, -kInfinity, y);
  return select(x >= 0.0, y, kNaN);
}

// ln x.  -infinity at +0 and -0, NaN below; subnormal arguments are right.
// bound: log 0.87 ulp on [0x1p-1074, 0x1.fffffffffffffp1023]
SA_INLINE double log(double x) {
  return logarithm(x, [](double y, double bias) SA_POINT { return logNormal(y, bias); });
}

// log10 x, with the special values of log.  Powers of ten in the range of normal numbers give their exponents exactly.
// bound: log10 0.71 ulp on [0x1p-1074, 0x1.fffffffffffffp1023]
SA_INLINE double log10(double x) {
  return logarithm(x, [](double y, double bias) SA_POINT { return log10Normal(y, bias); });
}

// ln x for an x known to be positive, normal and finite; anything else gives an arbitrary number.  Same bits as log.
// bound: logPositive 0.87 ulp on [0x1p-1022, 0x1.fffffffffffffp1023]
SA_INLINE double logPositive(double x) { return logNormal(x, 1023.0); }

// The bits of log for an x known to be a positive normal number, infinity or NaN.
SA_INLINE double logAbove(double x) { return select(x < kInfinity, logNormal(x, 1023.0), x); }

// Whether all of n numbers are positive, normal and finite.  The exponent is moved down and up by one: either way the bit of the
// sign shows what is not.
SA_INLINE bool arePositiveNormal(int n, const double* x) {
  constexpr uint64_t one = 0x0010000000000000u;
  uint64_t outside = 0;
#pragma omp simd reduction(| : outside)
  for (int i = 0; i < n; ++i) outside |= (toBits(x[i]) - one) | (toBits(x[i]) + one);
  return (outside & kSignBit) == 0;
}

// log of n numbers in place: the general form only for a piece that needs it, with the same bits either way.  Whether it did
// without.
SA_INLINE bool logOfPiece(int n, double* x) {
  const bool plain = arePositiveNormal(n, x);
  if (plain)
    forPoints(n, [=](int i) SA_POINT { x[i] = logPositive(x[i]); });
  else
    forPoints(n, [=](int i) SA_POINT { x[i] = log(x[i]); });
  return plain;
}

// ---- powers

// (2 atanh(s) - 2 s) / (s^3 ln 2) as a polynomial in s^2, for the s of the logarithm
constexpr double kLog2Coefficients[] = {0x1.ec709dc3a0455p-1, 0x1.2776c50ee73bep-1, 0x1.a61762d1f5c20p-2,
                                        0x1.484afcfb94fa2p-2, 0x1.0ca11d504131ap-2, 0x1.c479f5b3e18aep-3,
                                        0x1.b52726f6c9ba1p-3};
// (2^r - 1 - r ln 2) / r^2 for |r| <= 1/2
constexpr double kExp2Coefficients[] = {
    0x1.ebfbdff82c5a1p-3,  0x1.c6b08d704a046p-5,  0x1.3b2ab6fba0790p-7,  0x1.5d87fe78c374ap-10, 0x1.4309130dc5c56p-13,
    0x1.ffcbfbc7c8302p-17, 0x1.62bfc9f4ab8abp-20, 0x1.b52652d959021p-24, 0x1.e617b5f5b1119p-28, 0x1.e7c6de0337deap-32};
constexpr double kLog2E = 0x1.71547652b82fep+0, kLn2 = 0x1.62e42fefa39efp-1;

// log2 x for an x known to be positive, normal and finite; anything else gives an arbitrary number.  With ln(1 + f) =
// f - s (f - R), all of it over ln 2: without the sums of logNormal, which a product with an exponent makes worthless.
// bound: log2Positive 1.95 ulp on [0x1p-1022, 0x1.fffffffffffffp1023]
SA_INLINE double log2Positive(double x) {
  const auto [k, f] = logParts(x, 1023.0);
  const double s = f / (2.0 + f), z = s * s, first = f * kLog2E;
  return k + (first - s * (first - z * polynomial(z, kLog2Coefficients)));
}

// 2^x with x kept from falling below -1022, where the result would become subnormal; infinity from 1024 on, of a NaN any number.
// bound: exp2Clamped 1.20 ulp on [-1022, 1023.9999999999999]
SA_INLINE double exp2Clamped(double x) {
  const double inside = max(-1022.0, min(1024.0, x)), shifted = inside + kRoundShift;
  const double r = inside - (shifted - kRoundShift);
  const double significand = 1.0 + (r * kLn2 + r * r * polynomial(r, kExp2Coefficients));
  return fromBits(toBits(significand) + (toBits(shifted) << 52)); // at 1024 r is 0, and the exponent that of infinity
}

// x^y for x >= 0, no less than the smallest normal number; below 1e-300, x counts as that, so that y = 0 gives 1 also at 0.
// The error is 1.2 ulp, and 1.95 for each unit of |y log2 x|.  Infinite x counts as 2^1024; of a NaN it is any number.
SA_INLINE double power(double x, double y) { return exp2Clamped(y * log2Positive(max(1e-300, x))); }

// ---- cos

// (sin(r) / r - 1) / r^2 and (cos(r) - 1 + r^2/2) / r^4 as polynomials in r^2, |r| <= pi / 4
constexpr double kSinCoefficients[] = {-0x1.5555555555555p-3, 0x1.111111111110bp-7,   -0x1.a01a01a018a6dp-13,
                                       0x1.71de3a53308e7p-19, -0x1.ae64528d81deep-26, 0x1.61208c49dda93p-33,
                                       -0x1.aaa24807ff052p-41};
constexpr double kCosCoefficients[] = {0x1.555555555554bp-5,   -0x1.6c16c16c14f91p-10, 0x1.a01a019c84505p-16,
                                       -0x1.27e4f7eac5484p-22, 0x1.1ee9d7b52a1d0p-29,  -0x1.8fa49a225c8e7p-37};

// cos x for |x| <= 1e5, NaN beyond: the three parts of pi / 2 hold to that range.
// bound: cos 0.92 ulp on [-1e5, 1e5]
SA_INLINE double cos(double x) {
  const double shifted = x * 0x1.45f306dc9c883p-1 + kRoundShift, n = shifted - kRoundShift;
  // r + rLow = x - n pi/2; the products with the first two parts, of 33 bits each, are exact
  const double a = x - n * 0x1.921fb54400000p+0, b = n * 0x1.0b4611a600000p-34, c = n * 0x1.3198a2e037073p-69;
  const double ab = a - b, r = ab - c;
  const double rLow = ((a - ab) - b) + ((ab - r) - c);
  const double z = r * r;
  // 1 - r^2/2 with r^2 = head^2 + (r - head)(r + head): head has 26 bits, its square is exact
  const double head = fromBits(toBits(r) & 0xfffffffff8000000u);
  const double half = 0.5 * (head * head), halfLow = 0.5 * (((r - head) + rLow) * (r + head));
  const double u = 1.0 - half;
  const double cosine = u + (((1.0 - u) - half) + (z * z * polynomial(z, kCosCoefficients) - halfLow));
  // sin(r + rLow) = sin r + rLow cos r, where u is good enough for cos r
  const double sine = r + (rLow * u + r * (z * polynomial(z, kSinCoefficients)));
  // cos(r + n pi/2) = cos r, -sin r, -cos r, sin r for n mod 4 = 0, 1, 2, 3
  const uint64_t quadrant = toBits(shifted);
  const double y = blend(0u - (quadrant & 1), sine, cosine);
  return select(abs(x) <= 1e5, fromBits(toBits(y) ^ (((quadrant + 1) & 2) << 62)), kNaN);
}

// ---- acos

// (asin(s) / s - 1) / s^2 as a polynomial in s^2, |s| <= 1/2
constexpr double kAsinCoefficients[] = {
    0x1.5555555555577p-3, 0x1.333333332e102p-4,  0x1.6db6db72141f0p-5, 0x1.f1c71a946998cp-6, 0x1.6e8bdeed5664dp-6,
    0x1.1c49ef8c04c36p-6, 0x1.ca1f9f23b4abdp-7,  0x1.758504be76e19p-7, 0x1.613f3f698b811p-7, 0x1.e5cf64bce99bbp-9,
    0x1.63a75d95dfefdp-6, -0x1.580c1c42b5666p-6, 0x1.0b4b168ab3cbdp-5};

// arccos x, NaN outside [-1, 1].
// bound: acos 0.80 ulp on [-1, 1]
SA_INLINE double acos(double x) {
  constexpr double piHigh = 0x1.921fb54442d18p+1, piLow = 0x1.1a62633145c07p-53;
  const double a = abs(x);
  const bool outer = a > 0.5;
  // outer: acos a = 2 asin(sqrt((1 - a) / 2)); else acos x = pi/2 - asin x
  const double z = select(outer, (1.0 - a) * 0.5, a * a); // the difference is exact; negative beyond 1
  const double root = select(outer, sqrt(z), a);
  // the root as head + tail, head with 21 bits, so that its square is exact; the tiny number avoids 0 / 0 at |x| = 1
  const double head = select(outer, fromBits(toBits(root) & 0xffffffff00000000u), a);
  const double tail = select(outer, (z - head * head) / ((root + head) + 0x1p-500), 0.0);
  const double asinTail = root * (z * polynomial(z, kAsinCoefficients)) + tail; // asin(root) = head + asinTail
  // |x| <= 1/2: pi/2 - asin x
  const double inner = 0.5 * piHigh - (copysign(head, x) - (0.5 * piLow - select(x < 0.0, -asinTail, asinTail)));
  const double positive = 2.0 * (head + asinTail);
  // x < -1/2: pi - 2 asin(root)
  const double difference = piHigh - 2.0 * head, lost = (piHigh - difference) - 2.0 * head;
  const double negative = difference + (lost - (2.0 * asinTail - piLow));
  return select(outer, select(x < 0.0, negative, positive), inner);
}

} // namespace sa::vm
