// Loops over arrays that are compiled for several instruction sets.
#pragma once

// Compiled for several instruction sets and chosen at load, as the library's kernels are; no operation is fused or reordered,
// so that a run has the same bits on every machine.
#ifdef SA_MULTIVERSION
#define SOLVER_CLONES __attribute__((target_clones("avx512f", "avx2", "default")))
#else
#define SOLVER_CLONES
#endif
#define SOLVER_INLINE inline __attribute__((always_inline))
#define SOLVER_BODY __attribute__((always_inline)) // of a lambda
