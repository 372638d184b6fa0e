// The frame of every kernel: how a routine is exported, compiled for several instruction sets, and run over a block.
#pragma once

#include "glo/kernel/arithmetic.h"
#include "kernel_arguments.h" // written from the headers

#include <cstdint>

#define SA_EXPORT extern "C" __attribute__((visibility("default")))

// Everything below a clone must be inlined into it: a call would land in one body for the baseline instruction set.
#define SA_INLINE inline __attribute__((always_inline))

// One text, three instruction sets, chosen when the library is loaded.
#ifdef SA_MULTIVERSION
#define SA_CLONES __attribute__((target_clones("avx512f", "avx2", "default")))
// Of long bodies that few analyses run: half a minute of compiling for each is too much.
#define SA_FEWER_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define SA_CLONES
#define SA_FEWER_CLONES
#endif

// A kernel is a static body that is cloned and a thin exported wrapper: one compiler exports a clone under another name, and
// the dispatch must not show at the boundary.  The parameters have the names of the declaration, from which the interface tool
// writes SA_ARGUMENTS_GLO_UTI_X, the same list without types:
//   SA_KERNEL(GLO_UTI_X, (const int32_t* n, double* x)) { forPoints(*n, [=](int i) SA_POINT { ... }); }
#define SA_KERNEL(name, parameters)                                                                                    \
  SA_CLONES                                                                                                            \
  static void name##_clones parameters;                                                                                \
  SA_EXPORT void name parameters { SA_IN_OWN_ARITHMETIC(name##_clones SA_ARGUMENTS_##name); }                          \
  SA_CLONES                                                                                                            \
  static void name##_clones parameters

// A kernel that only moves bits or counts with integers: no operation of it looks at the floating-point environment or raises a
// flag, so that it is spared the guard, which would cost a short copy a sixth of its time.
#define SA_MOVE(name, parameters)                                                                                      \
  SA_CLONES                                                                                                            \
  static void name##_clones parameters;                                                                                \
  SA_EXPORT void name parameters { name##_clones SA_ARGUMENTS_##name; }                                                \
  SA_CLONES                                                                                                            \
  static void name##_clones parameters

// An argument that is part of a routine's list and that no member reads.
#define SA_UNREAD [[maybe_unused]] const int32_t*

// Marks the lambda that holds the formulas of one point.
#define SA_POINT __attribute__((always_inline))

namespace sa {

// Points that an iterative kernel, or one that works in several passes, treats at a time in its scratch.  Longer blocks are
// worked off in pieces of this length.
constexpr int kScratchPoints = 136;
using Lane = double[kScratchPoints]; // one value for each point of a piece

// body(i) for the points i = 0 .. n - 1, vectorised; numbers of more than 32 bits where n has them.
template <class Count, class Body>
SA_INLINE void forPoints(Count n, Body body) {
#pragma omp simd
  for (Count i = 0; i < n; ++i) body(i);
}

// piece(start, length) for consecutive pieces of at most kLongest points.
template <int kLongest = kScratchPoints, class Piece>
SA_INLINE void forPieces(int n, Piece piece) {
  for (int start = 0, rest = n; rest > 0;) {
    const int length = rest < kLongest ? rest : kLongest;
    piece(start, length);
    rest -= length;
    start += length; // at most n
  }
}

} // namespace sa
