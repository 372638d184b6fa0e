// Output filters: cascades of second-order sections over a block of output values, and the running operators behind them.
#include "glo/kernel/kernel.h"
#include "glo/tensors/principal.h"
#include "spx.h"

namespace sa {
namespace {

enum Operation { kMaximum = 1, kMinimum = 2, kAbsoluteMaximum = 3 };
constexpr int kGivenValue = 2; // initialisation mode

// Slots 1, 2, ... of one component; each slot is a block of nblock * ncomp values.
struct History {
  double* first;
  int64_t slotSize;
  SA_INLINE double* slot(int64_t number) const { return first + (number - 1) * slotSize; }
};

// One increment of all sections for n points of one component.  Each reads its output history, which the next one, whose input
// history it is, moves on.
template <class Points>
SA_INLINE void advance(Points point, int n, int sections, const double* coef, double* field, History history) {
  for (int64_t k = 1; k <= sections; ++k) {
    const double* c = coef + 5 * (k - 1);
    const double b0 = c[0], b1 = c[1], b2 = c[2], a1 = c[3], a2 = c[4];
    double *in1 = history.slot(2 * k - 1), *in2 = history.slot(2 * k);
    const double *out1 = history.slot(2 * k + 1), *out2 = history.slot(2 * k + 2);
    forPoints(n, [=](int i) SA_POINT {
      const int p = point(i);
      const double x = field[p], x1 = in1[p], x2 = in2[p], y1 = out1[p], y2 = out2[p];
      in2[p] = x1;
      in1[p] = x;
      field[p] = b0 * x + b1 * x1 + b2 * x2 - a1 * y1 - a2 * y2;
    });
  }
  double *last1 = history.slot(int64_t{2} * sections + 1), *last2 = history.slot(int64_t{2} * sections + 2);
  forPoints(n, [=](int i) SA_POINT {
    const int p = point(i);
    const double x = field[p], x1 = last1[p];
    last2[p] = x1;
    last1[p] = x;
  });
}

template <class Points>
SA_INLINE void fill(Points point, int n, int sections, const double* value, History history) {
  for (int64_t s = 1; s <= int64_t{2} * sections + 2; ++s)
    forPoints(n, [=, slot = history.slot(s)](int i) SA_POINT {
      const int p = point(i);
      slot[p] = value[p];
    });
}

// ---- operators: what a value is to the operator, and whether it takes the place of the one kept.  A value that is no number
// does, and stays.

struct Maximum {
  SA_INLINE static double of(double x) { return x; }
  SA_INLINE static bool takes(double x, double kept) { return x > kept || x != x; }
};
struct Minimum {
  SA_INLINE static double of(double x) { return x; }
  SA_INLINE static bool takes(double x, double kept) { return x < kept || x != x; }
};
struct AbsoluteMaximum {
  SA_INLINE static double of(double x) { return __builtin_fabs(x); }
  SA_INLINE static bool takes(double x, double kept) { return x > kept || x != x; }
};
struct Latest {
  SA_INLINE static double of(double x) { return x; }
  SA_INLINE static bool takes(double /*x*/, double /*kept*/) { return true; }
};

// use(operator) for an operation code; an unknown one is none.
template <class Use>
SA_INLINE void withOperator(int operation, Use use) {
  if (operation == kMaximum)
    use(Maximum{});
  else if (operation == kMinimum)
    use(Minimum{});
  else if (operation == kAbsoluteMaximum)
    use(AbsoluteMaximum{});
  else
    use(Latest{});
}

// field and state := the operator's value; times, if any, := now where it has changed.
template <bool kTimes, class Points>
SA_INLINE void operate(Points point, int n, int operation, double* field, double* state, [[maybe_unused]] double now,
                       [[maybe_unused]] double* times) {
  withOperator(operation, [=](auto op) SA_POINT {
    forPoints(n, [=](int i) SA_POINT {
      const int p = point(i);
      const double x = op.of(field[p]), kept = state[p];
      const bool taken = op.takes(x, kept);
      const double value = taken ? x : kept;
      state[p] = value;
      field[p] = value;
      if constexpr (kTimes) {
        const double before = times[p];
        times[p] = taken ? now : before;
      }
    });
  });
}

template <class Points>
SA_INLINE void startOperator(Points point, int n, int operation, const double* value, double* state) {
  withOperator(operation, [=](auto op) SA_POINT {
    forPoints(n, [=](int i) SA_POINT {
      const int p = point(i);
      state[p] = op.of(value[p]);
    });
  });
}

// ---- members: each treats n points of a block, component by component

SA_INLINE int sectionsOf(const int32_t* K) { return *K > 0 ? *K : 0; }

template <class Points>
SA_INLINE void filter(Points point, int n, int64_t N, const int32_t* ncomp, const int32_t* filterdef, double* field,
                      const double* coef, double* hist) {
  const int components = *ncomp, sections = sectionsOf(filterdef);
  for (int c = 0; c < components; ++c)
    advance(point, n, sections, coef, field + c * N, History{hist + c * N, N * components});
}

template <class Points>
SA_INLINE void startFilter(Points point, int n, int64_t N, const int32_t* mode, const int32_t* ncomp, const int32_t* K,
                           const double* field, const double* value, double* hist) {
  const int components = *ncomp, sections = sectionsOf(K);
  const double* first = *mode == kGivenValue ? value : field;
  for (int c = 0; c < components; ++c) fill(point, n, sections, first + c * N, History{hist + c * N, N * components});
}

template <bool kTimes, class Points>
SA_INLINE void operateField(Points point, int n, int64_t N, const int32_t* ncomp, const int32_t* operation,
                            double* field, double* state, const double* time = nullptr, double* times = nullptr) {
  const int components = *ncomp;
  const double now = kTimes ? *time : 0.0;
  for (int c = 0; c < components; ++c)
    operate<kTimes>(point, n, *operation, field + c * N, state + c * N, now, kTimes ? times + c * N : nullptr);
}

template <class Points>
SA_INLINE void startField(Points point, int n, int64_t N, const int32_t* mode, const int32_t* ncomp,
                          const int32_t* operation, const double* field, const double* value, double* state) {
  const int components = *ncomp;
  const double* first = *mode == kGivenValue ? value : field;
  for (int c = 0; c < components; ++c) startOperator(point, n, *operation, first + c * N, state + c * N);
}

} // namespace

// The member of the whole block and the one of a list of its points; `body` sees the points of a piece as (point, n).
#define SA_LIST(...) __VA_ARGS__
#define SA_FIELD(plain, listed, parameters, body)                                                                      \
  SA_KERNEL(plain, (const int32_t* nblock, SA_LIST parameters)) {                                                      \
    const int64_t N = *nblock;                                                                                         \
    forBlock(N, [=](auto point, int n) SA_POINT { SA_LIST body });                                                     \
  }                                                                                                                    \
  SA_KERNEL(listed, (const int32_t* nblock, const int32_t* count, const int32_t* list, SA_LIST parameters)) {          \
    const int64_t N = *nblock;                                                                                         \
    forList(N, *count, list, [=](auto point, int n) SA_POINT { SA_LIST body });                                        \
  }

SA_FIELD(SPX_OPE_FILTERFLD, SPX_OPE_FILTERFLDELSET,
         (const int32_t* ncomp, SA_UNREAD spare, const int32_t* filterdef, double* field, SA_UNREAD spare2,
          const double* coef, double* hist),
         (filter(point, n, N, ncomp, filterdef, field, coef, hist);))

SA_FIELD(SPX_OPE_INIFILTERFLD, SPX_OPE_INIFILTERFLDELSET,
         (const int32_t* mode, const int32_t* ncomp, const int32_t* K, SA_UNREAD spare, const double* field,
          const double* value, double* hist),
         (startFilter(point, n, N, mode, ncomp, K, field, value, hist);))

SA_FIELD(SPX_OPE_FILTEROPERFLD, SPX_OPE_FILTEROPERFLDELSET,
         (const int32_t* ncomp, const int32_t* operation, const int32_t* filterdef, double* field, double* state,
          const double* coef, double* hist),
         (filter(point, n, N, ncomp, filterdef, field, coef, hist);
          operateField<false>(point, n, N, ncomp, operation, field, state);))

SA_FIELD(SPX_OPE_INIFILTEROPERFLD, SPX_OPE_INIFILTEROPERFLDELSET,
         (const int32_t* mode, const int32_t* ncomp, const int32_t* K, const int32_t* operation, const double* field,
          const double* value, double* hist, double* state),
         (startFilter(point, n, N, mode, ncomp, K, field, value, hist);
          startField(point, n, N, mode, ncomp, operation, field, value, state);))

SA_FIELD(SPX_OPE_ONLYOPERATORFLD, SPX_OPE_ONLYOPERATFLDELSET,
         (const int32_t* ncomp, const int32_t* operation, double* field, double* state),
         (operateField<false>(point, n, N, ncomp, operation, field, state);))

SA_FIELD(SPX_OPE_INIONLYOPERATORFLD, SPX_OPE_INIONLYOPERATFLDELSET,
         (const int32_t* mode, const int32_t* ncomp, const int32_t* operation, const double* field, const double* value,
          double* state),
         (startField(point, n, N, mode, ncomp, operation, field, value, state);))

SA_FIELD(SPX_OPE_OPERFILTERTIME, SPX_OPE_OPERFILTERTIMEELS,
         (const int32_t* ncomp, const int32_t* operation, const int32_t* filterdef, double* field, double* state,
          const double* coef, double* hist, const double* time, double* times),
         (filter(point, n, N, ncomp, filterdef, field, coef, hist);
          operateField<true>(point, n, N, ncomp, operation, field, state, time, times);))

SA_FIELD(SPX_OPE_ONLYOPERFILTERTIME, SPX_OPE_ONLYOPERFILTERTIMEELS,
         (const int32_t* ncomp, const int32_t* operation, double* field, double* state, const double* time,
          double* times),
         (operateField<true>(point, n, N, ncomp, operation, field, state, time, times);))

#undef SA_LIST
#undef SA_FIELD

} // namespace sa
