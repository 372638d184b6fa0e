// Symmetric tensors of one point, by storage code.  Components that a storage does not hold are zero and cost nothing: under
// IEEE rules a compiler may not drop 0 * x or x + 0, so they are left out here.
#pragma once

#include "glo/kernel/kernel.h"

#include <cstdint>

namespace sa {

// A storage says which components exist and where component k of a block array lies.
struct S33 {
  static constexpr bool k12 = true, k23and13 = true;
};
struct S31 {
  static constexpr bool k12 = true, k23and13 = false;
};
struct S30 {
  static constexpr bool k12 = false, k23and13 = false;
};

template <class Storage>
struct Sym {
  double s11, s22, s33, s12, s23, s13; // those that Storage does not hold are never read
};

// Point i of a block array of n points.
template <class Storage>
SA_INLINE Sym<Storage> loadTensor(const double* block, int64_t n, int64_t i) {
  Sym<Storage> t{};
  t.s11 = block[i];
  t.s22 = block[i + n];
  t.s33 = block[i + 2 * n];
  if constexpr (Storage::k12) t.s12 = block[i + 3 * n];
  if constexpr (Storage::k23and13) {
    t.s23 = block[i + 4 * n];
    t.s13 = block[i + 5 * n];
  }
  return t;
}

template <class Storage>
SA_INLINE void storeTensor(double* block, int64_t n, int64_t i, const Sym<Storage>& t) {
  block[i] = t.s11;
  block[i + n] = t.s22;
  block[i + 2 * n] = t.s33;
  if constexpr (Storage::k12) block[i + 3 * n] = t.s12;
  if constexpr (Storage::k23and13) {
    block[i + 4 * n] = t.s23;
    block[i + 5 * n] = t.s13;
  }
}

template <class Storage>
SA_INLINE double determinant(const Sym<Storage>& t) {
  if constexpr (Storage::k23and13)
    return t.s11 * (t.s22 * t.s33 - t.s23 * t.s23) - t.s12 * (t.s12 * t.s33 - t.s23 * t.s13) +
           t.s13 * (t.s12 * t.s23 - t.s22 * t.s13);
  else if constexpr (Storage::k12)
    return t.s11 * (t.s22 * t.s33) - t.s12 * (t.s12 * t.s33);
  else
    return t.s11 * (t.s22 * t.s33);
}

template <class Storage>
SA_INLINE double trace(const Sym<Storage>& t) {
  return t.s11 + t.s22 + t.s33;
}

// Second invariant: the sum of the principal 2 x 2 minors.
template <class Storage>
SA_INLINE double secondInvariant(const Sym<Storage>& t) {
  const double direct = t.s11 * t.s22 + t.s22 * t.s33 + t.s33 * t.s11;
  if constexpr (Storage::k23and13)
    return direct - t.s12 * t.s12 - t.s13 * t.s13 - t.s23 * t.s23;
  else if constexpr (Storage::k12)
    return direct - t.s12 * t.s12;
  else
    return direct;
}

// T T.
template <class Storage>
SA_INLINE Sym<Storage> square(const Sym<Storage>& t) {
  Sym<Storage> q{};
  q.s11 = t.s11 * t.s11;
  q.s22 = t.s22 * t.s22;
  q.s33 = t.s33 * t.s33;
  if constexpr (Storage::k12) {
    q.s11 += t.s12 * t.s12;
    q.s22 += t.s12 * t.s12;
    q.s12 = (t.s11 + t.s22) * t.s12;
  }
  if constexpr (Storage::k23and13) {
    q.s11 += t.s13 * t.s13;
    q.s22 += t.s23 * t.s23;
    q.s33 += t.s23 * t.s23 + t.s13 * t.s13;
    q.s12 += t.s13 * t.s23;
    q.s13 = (t.s11 + t.s33) * t.s13 + t.s12 * t.s23;
    q.s23 = (t.s22 + t.s33) * t.s23 + t.s12 * t.s13;
  }
  return q;
}

template <class Storage>
SA_INLINE Sym<Storage> operator*(double f, const Sym<Storage>& t) {
  Sym<Storage> r{};
  r.s11 = f * t.s11;
  r.s22 = f * t.s22;
  r.s33 = f * t.s33;
  if constexpr (Storage::k12) r.s12 = f * t.s12;
  if constexpr (Storage::k23and13) {
    r.s23 = f * t.s23;
    r.s13 = f * t.s13;
  }
  return r;
}

} // namespace sa
