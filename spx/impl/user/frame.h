// The frame of the built-in user materials: their common argument list, the block as a model sees it, and the checks that end
// an analysis before anything is computed.
#pragma once

#include "glo/kernel/kernel.h"
#include "glo/kernel/vmath.h"
#include "glo/tensors/tensor.h"

#include <bit>
#include <cstdint>
#include <initializer_list>
#include <string_view>

namespace sa::user {

// The argument list of the dispatch and of every implementation.
#define SA_USER_PARAMETERS                                                                                             \
  ([[maybe_unused]] const int32_t* callInfo, const int32_t* nblock, const int32_t* ndir, const int32_t* nshr,          \
   const int32_t* nstatev, [[maybe_unused]] const int32_t* nfieldv, const int32_t* nprops,                             \
   [[maybe_unused]] const int32_t* annealing, const double* stepTime, const double* totalTime, const double* dt,       \
   const char* materialName, [[maybe_unused]] const double* coordinates,                                               \
   [[maybe_unused]] const double* characteristicLength, const double* props, const double* density,                    \
   const double* strainInc, [[maybe_unused]] const double* relSpinInc, const double* tempOld,                          \
   [[maybe_unused]] const double* stretchOld, [[maybe_unused]] const double* defgradOld,                               \
   [[maybe_unused]] const double* fieldOld, const double* stressOld, const double* stateOld,                           \
   const double* enerInternOld, const double* enerInelasOld, const double* tempNew,                                    \
   [[maybe_unused]] const double* stretchNew, const double* defgradNew, [[maybe_unused]] const double* fieldNew,       \
   double* stressNew, double* stateNew, double* enerInternNew, double* enerInelasNew, int64_t materialNameLength)

// What the models read and write of it.
struct Block {
  int points, ndir, nshr, states, properties;
  bool isDataCheck; // the host's first call, at time zero: it asks for the elastic answer
  double dt;
  std::string_view name;
  const int32_t* callInfo;
  const double *props, *length, *density, *strainInc, *tempOld, *tempNew, *stretchOld, *stretch, *defgrad;
  const double *stressOld, *stateOld, *internalOld, *inelasticOld;
  double *stress, *state, *internal, *inelastic;

  bool isSolid() const { return ndir == 3 && nshr == 3; }
  // Plane stress, plane strain and axisymmetric points all come so.
  bool isPlane() const { return ndir == 3 && nshr == 1; }
};
#define SA_USER_BLOCK                                                                                                  \
  sa::user::Block {                                                                                                    \
    *nblock, *ndir, *nshr, *nstatev, *nprops, *stepTime == 0.0 && *totalTime == 0.0, *dt,                              \
        sa::user::nameOf(materialName, materialNameLength), callInfo, props, characteristicLength, density, strainInc, \
        tempOld, tempNew, stretchOld, stretchNew, defgradNew, stressOld, stateOld, enerInternOld, enerInelasOld,       \
        stressNew, stateNew, enerInternNew, enerInelasNew                                                              \
  }

inline std::string_view nameOf(const char* text, int64_t length) {
  return {text, static_cast<std::size_t>(length > 0 ? length : 0)};
}

// ---- messages; the template may hold one %I, for `value`, one %S, for the name of the material, and a %R for each of `reals`

// Writes an "Error" and ends the analysis; true, so that a check can return it.  The host may return from the end of the
// analysis, so the caller leaves at once.
bool refuse(const Block& block, std::string_view text, int32_t value = 0, const double* reals = nullptr);
// Only in the host's first call: the block of every increment would repeat it.
void warn(const Block& block, std::string_view text);

// ---- checks: true when the analysis was ended

inline bool refuseUnless(const Block& block, bool isRight, std::string_view text) {
  return !isRight && refuse(block, text);
}
inline bool refuseStates(const Block& block, int32_t needed, std::string_view text) {
  return block.states < needed && refuse(block, text, needed);
}
inline bool refuseProperties(const Block& block, int32_t needed, std::string_view text) {
  return block.properties < needed && refuse(block, text, needed);
}
// The first property of the list, numbered from 1, that is not a positive number.
bool refuseValues(const Block& block, std::initializer_list<int32_t> positive);

// A property that is greater than another, or either of them not a number.
bool refuseAbove(const Block& block, int32_t smaller, int32_t larger, std::string_view text);

// A property, numbered from 1, that is less than the least, more than the most or not a number; `most` may be infinite.
bool refuseOutside(const Block& block, int32_t number, double least, double most = vm::kInfinity);
// The first of the list that is negative, infinite or not a number.
bool refuseNegative(const Block& block, std::initializer_list<int32_t> numbers);
// The first from `first` to `last` that is infinite or not a number.
bool refuseNotFinite(const Block& block, int32_t first, int32_t last);

// ---- tensors of one point, with the components that its elements have

template <class Storage>
SA_INLINE Sym<Storage> select(bool condition, const Sym<Storage>& a, const Sym<Storage>& b) {
  Sym<Storage> r{};
  r.s11 = vm::select(condition, a.s11, b.s11);
  r.s22 = vm::select(condition, a.s22, b.s22);
  r.s33 = vm::select(condition, a.s33, b.s33);
  r.s12 = vm::select(condition, a.s12, b.s12);
  if constexpr (Storage::k23and13) {
    r.s23 = vm::select(condition, a.s23, b.s23);
    r.s13 = vm::select(condition, a.s13, b.s13);
  }
  return r;
}
// a + f b
template <class Storage>
SA_INLINE Sym<Storage> sum(const Sym<Storage>& a, double f, const Sym<Storage>& b) {
  Sym<Storage> r{};
  r.s11 = a.s11 + f * b.s11;
  r.s22 = a.s22 + f * b.s22;
  r.s33 = a.s33 + f * b.s33;
  r.s12 = a.s12 + f * b.s12;
  if constexpr (Storage::k23and13) {
    r.s23 = a.s23 + f * b.s23;
    r.s13 = a.s13 + f * b.s13;
  }
  return r;
}
// a + f 1
template <class Storage>
SA_INLINE Sym<Storage> sum(const Sym<Storage>& a, double f) {
  Sym<Storage> r{};
  r.s11 = a.s11 + f;
  r.s22 = a.s22 + f;
  r.s33 = a.s33 + f;
  r.s12 = a.s12;
  if constexpr (Storage::k23and13) {
    r.s23 = a.s23;
    r.s13 = a.s13;
  }
  return r;
}
template <class Storage>
SA_INLINE Sym<Storage> deviator(const Sym<Storage>& a) {
  return sum(a, trace(a) * (-1.0 / 3.0));
}
// a : b
template <class Storage>
SA_INLINE double product(const Sym<Storage>& a, const Sym<Storage>& b) {
  const double direct = a.s11 * b.s11 + a.s22 * b.s22 + a.s33 * b.s33;
  if constexpr (Storage::k23and13)
    return direct + 2.0 * (a.s12 * b.s12 + a.s23 * b.s23 + a.s13 * b.s13);
  else
    return direct + 2.0 * (a.s12 * b.s12);
}

// Determinant of the deformation gradient: 11 22 33 12 23 31 21 32 13, or 11 22 33 12 21.
template <class Storage>
SA_INLINE double volumeRatio(const double* F, int64_t n, int64_t i) {
  const double F11 = F[i], F22 = F[i + n], F33 = F[i + 2 * n], F12 = F[i + 3 * n];
  if constexpr (Storage::k23and13) {
    const double F23 = F[i + 4 * n], F31 = F[i + 5 * n], F21 = F[i + 6 * n], F32 = F[i + 7 * n], F13 = F[i + 8 * n];
    return F11 * (F22 * F33 - F23 * F32) - F12 * (F21 * F33 - F23 * F31) + F13 * (F21 * F32 - F22 * F31);
  } else {
    const double F21 = F[i + 4 * n];
    return F33 * (F11 * F22 - F12 * F21);
  }
}

// Work of the stress per undeformed volume over an increment, from the Kirchhoff stresses at both ends; for models with large
// changes of volume.  Per mass it is that over density and volume ratio at the end.
template <class Storage>
SA_INLINE double kirchhoffWork(double volumeOld, const Sym<Storage>& old, double volume, const Sym<Storage>& now,
                               const Sym<Storage>& strain) {
  return 0.5 * (volumeOld * product(old, strain) + volume * product(now, strain));
}

// Whether one of n flags, each 0 or 1, is set.  As a sum in any order: one point after the other would wait for the last.
SA_INLINE bool isAnySet(int n, const double* flags) {
  double count = 0.0;
#pragma omp simd reduction(+ : count)
  for (int i = 0; i < n; ++i) count += flags[i];
  return count > 0.0;
}

// ---- points of a piece that go on to passes of their own, side by side

// Up to a multiple of the longest vector the last point of such a pack is repeated, so that no loop over it has a rest.
constexpr int kVector = 8, kWord = 64;
static_assert(kScratchPoints % kVector == 0);
SA_INLINE int packedLength(int count) { return (count + kVector - 1) / kVector * kVector; }
SA_INLINE void fillUp(int count, int* place) {
  for (int j = count; count > 0 && j < packedLength(count); ++j) place[j] = place[count - 1];
}
struct Bits {
  uint64_t of[kWord];
  constexpr Bits() : of() {
    for (int k = 0; k < kWord; ++k) of[k] = uint64_t{1} << k;
  }
};
constexpr Bits kBits;
// The points whose flag is above zero, side by side.  A word of bits at a time, of which vectors tell most often that there
// are none.
SA_INLINE int pack(int length, const double* flags, int* place) {
  int count = 0;
  for (int64_t start = 0; start < length; start += kWord) {
    const int64_t rest = length - start, end = rest < kWord ? rest : kWord;
    uint64_t bits = 0;
#pragma omp simd reduction(| : bits)
    for (int64_t k = 0; k < end; ++k) bits |= flags[start + k] > 0.0 ? kBits.of[k] : uint64_t{0};
    for (; bits != 0; bits &= bits - 1) place[count++] = static_cast<int>(start) + std::countr_zero(bits);
  }
  fillUp(count, place);
  return count;
}
// body(j) for the points of a pack.
template <class Body>
SA_INLINE void forPack(int count, Body body) {
  forPoints(packedLength(count), body);
}

// What never falls; a NaN of either stays one.
SA_INLINE double grown(double old, double now) { return vm::select(now < old, old, now + (old - old)); }

// The answer of the first call: linear elastic, from the bulk and the shear modulus; energies stay.
template <class Storage>
SA_INLINE void elasticAnswer(const Block& b, double K, double G) {
  const int64_t N = b.points;
  const double *strainInc = b.strainInc, *stressOld = b.stressOld, *internalOld = b.internalOld,
               *inelasticOld = b.inelasticOld;
  double *stress = b.stress, *internal = b.internal, *inelastic = b.inelastic;
  forPoints(b.points, [=](int i) SA_POINT {
    const Sym<Storage> strain = loadTensor<Storage>(strainInc, N, i), old = loadTensor<Storage>(stressOld, N, i);
    storeTensor(stress, N, i, sum(sum(old, 2.0 * G, strain), (K - 2.0 / 3.0 * G) * trace(strain)));
    internal[i] = internalOld[i];
    inelastic[i] = inelasticOld[i];
  });
}

// Plane stress has the modulus K - 2/3 G lowered to lambda' = lambda 2 G/(lambda + 2 G), and no stress across.
SA_INLINE void planeStressElasticAnswer(const Block& b, double K, double G) {
  const int64_t n = b.points;
  const double lambda = K - 2.0 / 3.0 * G, G2 = 2.0 * G, reduced = lambda * G2 / (lambda + G2);
  const double *strainInc = b.strainInc, *stressOld = b.stressOld, *internalOld = b.internalOld,
               *inelasticOld = b.inelasticOld;
  double *stress = b.stress, *internal = b.internal, *inelastic = b.inelastic;
  forPoints(b.points, [=](int i) SA_POINT {
    const double e11 = strainInc[i], e22 = strainInc[i + n], e12 = strainInc[i + 3 * n], volume = e11 + e22;
    const double s11 = stressOld[i], s22 = stressOld[i + n], s12 = stressOld[i + 3 * n];
    stress[i] = s11 + G2 * e11 + reduced * volume;
    stress[i + n] = s22 + G2 * e22 + reduced * volume;
    stress[i + 2 * n] = 0.0;
    stress[i + 3 * n] = s12 + G2 * e12;
    internal[i] = internalOld[i];
    inelastic[i] = inelasticOld[i];
  });
}

// State variables from `first` (counted from 0) to before `end` that a model does not use keep their values.
SA_INLINE void keepStates(const Block& b, int first, int end) {
  const int64_t N = b.points, from = first * N, count = (end - first) * N;
  const double* old = b.stateOld;
  double* now = b.state;
  if (count <= 0) return;
#pragma omp simd
  for (int64_t k = from; k < from + count; ++k) now[k] = old[k];
}
// All from `first` on.
SA_INLINE void keepStates(const Block& b, int first) { keepStates(b, first, b.states); }

// An implementation: checks, also of constants that follow from the properties, then the block with the constants.  Those of
// one body share its clones.
#define SA_USER_ENTRY(name, Model, clones)                                                                             \
  SA_EXPORT void name SA_USER_PARAMETERS {                                                                             \
    const OwnArithmetic arithmetic;                                                                                    \
    const Block block = SA_USER_BLOCK;                                                                                 \
    if (Model::isRefused(block)) return;                                                                               \
    const Model model(block);                                                                                          \
    if (model.isWrong(block) || block.points < 1) return;                                                              \
    clones(block, model);                                                                                              \
  }
#define SA_USER_MATERIAL(name, Model)                                                                                  \
  SA_CLONES                                                                                                            \
  static void name##_clones(const Block& block, const Model& model) { compute(block, model); }                         \
  SA_USER_ENTRY(name, Model, name##_clones)

} // namespace sa::user
