// The floating-point environment of a kernel: every kernel computes as if nobody had touched the environment, and nobody
// notices that it did.
//
// A blend computes both of its sides, so the side that is not taken may divide by zero or overflow although the result is
// finite; a host that traps such operations would be ended by it, and one that looks at the flags misled.  A host that rounds
// another way or flushes subnormals to zero would get other bits.  So the exported entry masks the traps, rounds to nearest
// and keeps subnormals while its kernel runs, and leaves control bits and the flags of invalid operation, division by zero
// and overflow as the caller had them.  Reading the register twice takes 1 to 2 ns, most of it because a read waits for what is
// under way and so parts one short call from the next; it is only written where it has to change.
#pragma once

#if defined(__SSE2__)
#include <xmmintrin.h>
#endif

namespace sa {

#if defined(__SSE2__)
namespace control {                   // of the register
constexpr unsigned kFlags = 0x3f;     // what has happened
constexpr unsigned kOrdinary = 0x32;  // of them inexact, underflow, denormal operand
constexpr unsigned kErrors = 0x0d;    // and invalid operation, division by zero, overflow
constexpr unsigned kDefault = 0x1f80; // all traps masked, round to nearest, subnormals kept
} // namespace control

class OwnArithmetic {
public:
  OwnArithmetic() : callers_(_mm_getcsr()) {
    if ((callers_ & ~control::kFlags) != control::kDefault)
      _mm_setcsr(control::kDefault | (callers_ & control::kFlags));
  }
  ~OwnArithmetic() {
    // Inexact, underflow and denormal operand are part of ordinary arithmetic and stay as they are.
    if (((_mm_getcsr() ^ callers_) & ~control::kOrdinary) != 0) _mm_setcsr(callers_);
  }
  OwnArithmetic(const OwnArithmetic&) = delete;
  OwnArithmetic& operator=(const OwnArithmetic&) = delete;

private:
  unsigned callers_;
};

// In the usual environment, with no error flagged before, nothing has to be remembered: 0.3 ns less.
inline bool isUsualArithmetic() { return (_mm_getcsr() & ~control::kOrdinary) == control::kDefault; }
inline void clearErrors() {
  if ((_mm_getcsr() & control::kErrors) != 0) [[unlikely]]
    _mm_setcsr(_mm_getcsr() & ~control::kErrors);
}
#else
// Elsewhere the caller's environment is used as it is.
struct OwnArithmetic {
  ~OwnArithmetic() {}
};
inline bool isUsualArithmetic() { return false; }
inline void clearErrors() {}
#endif

// One call in it.  No function of a lambda: clang 14 leaves clones empty that are first called in one.
#define SA_IN_OWN_ARITHMETIC(...)                                                                                      \
  if (sa::isUsualArithmetic()) [[likely]] {                                                                            \
    __VA_ARGS__;                                                                                                       \
    sa::clearErrors();                                                                                                 \
  } else {                                                                                                             \
    const sa::OwnArithmetic arithmetic;                                                                                \
    __VA_ARGS__;                                                                                                       \
  }

} // namespace sa
