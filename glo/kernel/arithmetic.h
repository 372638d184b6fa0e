// The floating-point environment of a kernel: every kernel computes as if nobody had touched the environment, and nobody
// notices that it did.
//
// A blend computes both of its sides, so the side that is not taken may divide by zero or overflow although the result is
// finite; a host that traps such operations would be ended by it, and one that looks at the flags misled.  A host that rounds
// another way or flushes subnormals to zero would get other bits.  So the exported entry masks the traps, rounds to nearest
// and keeps subnormals while its kernel runs, and leaves control bits and the flags of invalid operation, division by zero
// and overflow as the caller had them.  Reading the register twice takes about a nanosecond; it is only written where it
// has to change.
#pragma once

#if defined(__SSE2__)
#include <xmmintrin.h>
#endif

namespace sa {

#if defined(__SSE2__)
class OwnArithmetic {
public:
  OwnArithmetic() : callers_(_mm_getcsr()) {
    if ((callers_ & ~kFlags) != kDefault) _mm_setcsr(kDefault | (callers_ & kFlags));
  }
  ~OwnArithmetic() {
    // Inexact, underflow and denormal operand are part of ordinary arithmetic and stay as they are.
    if (((_mm_getcsr() ^ callers_) & ~kOrdinary) != 0) _mm_setcsr(callers_);
  }
  OwnArithmetic(const OwnArithmetic&) = delete;
  OwnArithmetic& operator=(const OwnArithmetic&) = delete;

private:
  static constexpr unsigned kFlags = 0x3f;     // what has happened
  static constexpr unsigned kOrdinary = 0x32;  // inexact, underflow, denormal operand
  static constexpr unsigned kDefault = 0x1f80; // all traps masked, round to nearest, subnormals kept
  unsigned callers_;
};
#else
// Elsewhere the caller's environment is used as it is.
struct OwnArithmetic {
  ~OwnArithmetic() {}
};
#endif

} // namespace sa
