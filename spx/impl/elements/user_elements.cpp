// Checks of the mass matrices of user elements, and copies between elements and their category.
#include "glo/kernel/vmath.h"
#include "glo/movement/data_movement.h"
#include "spx.h"
#include "spx/impl/elements/element_message.h"

namespace sa {
namespace {

// ---- what is checked

enum Check { kSymmetry, kBetweenNodes, kWithinNode, kEqualMass };

// Matrices of a block, element fastest; the degrees of freedom stand node by node.
struct Matrices {
  int64_t nblock, ndof;
  int nodes;
  const int32_t* nodeDofs;
  const double* entries;

  SA_INLINE const double* at(int64_t i, int64_t j) const { return entries + (i + j * ndof) * nblock; }
};

// Entries are compared as they are; NaN differs from everything.
struct Different {
  SA_INLINE bool operator()(double a, double b) const { return a != b; }
};
struct Nonzero {
  SA_INLINE bool operator()(double a, double b) const { return (a != 0.0) | (b != 0.0); }
};

// The flags of elements become 1.0 where two entries fail, of rows and columns from .. end - 1: a(j) and b(j), two j at a time.
template <class Fails, class A, class B>
SA_INLINE void flagFailing(Fails fails, int n, int64_t from, int64_t end, A a, B b, Lane& flags) {
  for (int64_t j = from; j < end; j += 2) {
    const int64_t next = j + 1 < end ? j + 1 : j;
    forPoints(n, [=, &flags, a1 = a(j), b1 = b(j), a2 = a(next), b2 = b(next)](int e) SA_POINT {
      const double old = flags[e];
      const bool first = fails(a1[e], b1[e]), second = fails(a2[e], b2[e]);
      flags[e] = vm::select(first | second, 1.0, old);
    });
  }
}

// The elements start .. start + n - 1 of the block that fail a check.
SA_INLINE void flagFailing(Check check, const Matrices& m, int64_t start, int n, Lane& flags) {
  for (int e = 0; e < n; ++e) flags[e] = 0.0;
  int64_t first = 0;
  for (int node = 0; node < m.nodes; ++node) {
    const int64_t end = first + m.nodeDofs[node];
    for (int64_t i = first; i < end; ++i) {
      const auto inRow = [=, &m](int64_t j) SA_POINT { return m.at(i, j) + start; };
      const auto inColumn = [=, &m](int64_t j) SA_POINT { return m.at(j, i) + start; };
      // from the diagonal on: an entry that is no number differs from itself
      if (check == kSymmetry) flagFailing(Different{}, n, i, m.ndof, inRow, inColumn, flags);
      if (check == kBetweenNodes) flagFailing(Nonzero{}, n, end, m.ndof, inRow, inColumn, flags);
      if (check == kWithinNode) flagFailing(Nonzero{}, n, i + 1, end, inRow, inColumn, flags);
    }
    const auto onDiagonal = [=, &m](int64_t j) SA_POINT { return m.at(j, j) + start; };
    const auto atFirst = [=, &m](int64_t) SA_POINT { return m.at(first, first) + start; };
    if (check == kEqualMass) flagFailing(Different{}, n, first + 1, end, onDiagonal, atFirst, flags);
    first = end;
  }
}

SA_CLONES
static void massCheck_clones(Check check, const Matrices& m, int64_t start, int n, Lane& flags) {
  flagFailing(check, m, start, n, flags);
}

// ---- what is said

constexpr ElementMessage kUnsymmetric = {
    "The specified mass matrix for user element %I is unsymmetric.",
    "The specified mass matrix for user element %I of instance %S  is unsymmetric."};
constexpr ElementMessage kOffDiagonal = {
    "The specified mass matrix for user element %I has non-zero off-diagonal entries.",
    "The specified mass matrix for user element %I of instance %S has non-zero off-diagonal entries."};
constexpr ElementMessage kOffDiagonalInBlocks = {
    "The specified mass matrix for user element %I has non-zero off-diagonal entries on the "
    "diagonal blocks.",
    "The specified mass matrix for user element %I of instance %S has non-zero off-diagonal "
    "entries on the diagonal blocks."};
constexpr ElementMessage kDifferentValues = {"The specified mass matrix for user element %I has different values "
                                             "for the diagonal entries belonging to the same "
                                             "node.",
                                             "The specified mass matrix for user element %I of instance %S has "
                                             "different values "
                                             "for the diagonal entries belonging to the same "
                                             "node."};
constexpr ElementMessage kInvalidOffDiagonal = {
    "The specified mass matrix for user element %I has invalid non-zero off-diagonal entries.",
    "The specified mass matrix for user element %I of instance %S has invalid non-zero "
    "off-diagonal entries."};

// One check over all elements, with a message for each that fails.
void run(Check check, const ElementMessage& message, const Matrices& m, const int32_t* elements) {
  bool knowsModel = false, inInstances = false;
  forPieces(static_cast<int>(m.nblock), [&](int start, int n) SA_POINT {
    Lane flags;
    massCheck_clones(check, m, start, n, flags);
    for (int e = 0; e < n; ++e) {
      if (flags[e] == 0.0) continue;
      if (!knowsModel) inInstances = modelHasInstances();
      knowsModel = true;
      writeElementError(message, elements[start + e], inInstances);
    }
  });
}

} // namespace

SA_EXPORT void SPX_OPE_USERELEMPROCESSMASS(const int32_t* nblock, const int32_t* ndof, const int32_t* nnode,
                                           const int32_t* nodeDofs, const int32_t* elements, const double* mass) {
  const OwnArithmetic arithmetic;
  const Matrices m = {*nblock, *ndof, *nnode, nodeDofs, mass};
  run(kSymmetry, kUnsymmetric, m, elements);
  run(kBetweenNodes, kOffDiagonal, m, elements);
  run(kWithinNode, kOffDiagonalInBlocks, m, elements);
  run(kEqualMass, kDifferentValues, m, elements);
}

SA_EXPORT void SPX_OPE_USERELEMPROCESSROTINERT(const int32_t* nblock, const int32_t* ndof, const int32_t* nnode,
                                               const int32_t* nodeDofs, const int32_t* elements,
                                               const double* inertia) {
  const OwnArithmetic arithmetic;
  const Matrices m = {*nblock, *ndof, *nnode, nodeDofs, inertia};
  run(kSymmetry, kUnsymmetric, m, elements);
  run(kBetweenNodes, kInvalidOffDiagonal, m, elements);
}

// ---- copies

SA_MOVE(SPX_OPE_USERELEMTOCAT, (const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map,
                                const double* own, double* category)) {
  scatter<Set>(0, *nblock, *ncomp, Mapped{map}, category, Record{*ld}, Local{own, Column{*nblock}});
}

// The diagonal of a matrix of ndof columns: each entry is ndof + 1 columns after the last.
SA_MOVE(SPX_OPE_USERELEMTOCATMASS, (const int32_t* nblock, const int32_t* ndof, const int32_t* ld, const int32_t* map,
                                    const double* mass, double* category)) {
  const Column diagonal = {*nblock * (int64_t{*ndof} + 1)};
  scatter<Set>(0, *nblock, *ndof, Mapped{map}, category, Record{*ld}, Local{mass, diagonal});
}

SA_MOVE(SPX_OPE_USERELEMFROMCAT, (const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map,
                                  double* own, const double* category)) {
  gather(*nblock, *ncomp, map, own, Column{*nblock}, category, Record{*ld});
}

} // namespace sa
