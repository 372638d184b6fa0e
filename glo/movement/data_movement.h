// Gather and scatter: two loops over a map of entities, for every layout, operation and type.
#pragma once

#include "glo/kernel/kernel.h"
#include "glo/kernel/shuffles.h"

#include <cstdint>
#include <type_traits>

namespace sa {

// Position of component k of entity or point n, both counted from 0.
struct Column { // entity fastest
  int64_t ld;
  static constexpr bool kRecords = false;
  SA_INLINE int64_t at(int64_t n, int64_t k) const { return k * ld + n; }
};
struct Record { // component fastest
  int64_t ld;
  static constexpr bool kRecords = true;
  SA_INLINE int64_t at(int64_t n, int64_t k) const { return n * ld + k; }
};

struct Repeated { // one value for all components
  SA_INLINE int64_t at(int64_t n, int64_t) const { return n; }
};

// What a scatter does with the global value g and the local value l, or with pairs of them.
struct Set {
  template <class T>
  SA_INLINE static T combine(T, T l) {
    return l;
  }
};
struct Add {
  template <class T>
  SA_INLINE static T combine(T g, T l) {
    return g + l;
  }
};
struct AddWrapping { // integers, modulo 2^32
  SA_INLINE static int32_t combine(int32_t g, int32_t l) {
    return static_cast<int32_t>(static_cast<uint32_t>(g) + static_cast<uint32_t>(l));
  }
};
// The extrema keep the global value only where it is strictly beyond the local one: ties and NaN take the local value.
struct Max {
  SA_INLINE static double combine(double g, double l) { return g > l ? g : l; }
};
struct Min {
  SA_INLINE static double combine(double g, double l) { return g < l ? g : l; }
};

// The entity of point i, counted from 0.
struct Mapped {
  const int32_t* map;
  SA_INLINE int64_t operator()(auto i) const { return static_cast<int64_t>(map[i]) - 1; }
};
struct MappedTwice {
  const int32_t* map;
  const int32_t* map2;
  SA_INLINE int64_t operator()(int i) const { return static_cast<int64_t>(map2[map[i] - 1]) - 1; }
};

// The local value of point i.
template <class T, class Layout>
struct Local {
  const T* values;
  Layout layout;
  SA_INLINE T operator()(int i, int k) const { return values[layout.at(i, k)]; }
};
template <class T, class Layout>
Local(const T*, Layout) -> Local<T, Layout>;
template <class T>
struct Constant {
  T value;
  SA_INLINE T operator()(int, int) const { return value; }
};
template <class T>
Constant(T) -> Constant<T>;

// body(count) with the short lengths of nodal records as compile-time constants, so that they are unrolled.
template <class Body>
SA_INLINE void forShortCounts(int count, Body body) {
  switch (count) {
  case 1:
    body(std::integral_constant<int, 1>{});
    break;
  case 2:
    body(std::integral_constant<int, 2>{});
    break;
  case 3:
    body(std::integral_constant<int, 3>{});
    break;
  case 4:
    body(std::integral_constant<int, 4>{});
    break;
  default:
    body(count);
  }
}

// Maps of neighbouring blocks often count straight up; such a gather is a copy with unit stride.
template <class Count>
SA_INLINE bool countsUp(Count n, const int32_t* map) {
  if (n < 1 || map[n - 1] - static_cast<int64_t>(map[0]) != n - 1) return false;
  const uint32_t first = static_cast<uint32_t>(map[0]);
  uint32_t gaps = 0; // modulo 2^32, as entries that jump may be far apart
#pragma omp simd reduction(| : gaps)
  for (Count i = 0; i < n; ++i) gaps |= static_cast<uint32_t>(map[i]) - static_cast<uint32_t>(i) - first;
  return gaps == 0;
}

// The gather of records of reals into columns, four points at a time.
template <class Count>
SA_INLINE void gatherRecords(Count n, auto count, const int32_t* map, double* L, Column local, const double* G,
                             Record global) {
  const Mapped entity{map};
  forFours(
      n,
      [=](Count i) SA_POINT {
        const double* records[4];
        for (int p = 0; p < 4; ++p) records[p] = G + global.at(entity(i + p), 0);
        int k = 0;
        for (int rest = count; rest > 1; rest -= 2) {
          const FourPairs pairs([&](int p) SA_POINT { return records[p]; }, k);
          storeVector(L + local.at(i, k), pairs.first);
          storeVector(L + local.at(i, k + 1), pairs.second);
          k += 2;
        }
        if (k < count)
          storeVector(L + local.at(i, k), Four{records[0][k], records[1][k], records[2][k], records[3][k]});
      },
      [=](Count i) SA_POINT {
        for (int k = 0; k < count; ++k) L[local.at(i, k)] = G[global.at(entity(i), k)];
      });
}

// L(i,k) = G(map(i),k).
template <class Count, class T, class GlobalLayout, class LocalLayout>
SA_INLINE void gather(Count n, int ncomp, const int32_t* map, T* L, LocalLayout local, const T* G,
                      GlobalLayout global) {
  if (!GlobalLayout::kRecords && countsUp(n, map)) {
    const int64_t first = map[0] - 1;
    for (int k = 0; k < ncomp; ++k)
      forPoints(n, [=](Count i) SA_POINT { L[local.at(i, k)] = G[global.at(first + i, k)]; });
    return;
  }
  const Mapped entity{map};
  if constexpr (GlobalLayout::kRecords) {
    forShortCounts(ncomp, [=](auto count) SA_POINT {
      if constexpr (std::is_same_v<T, double> && !LocalLayout::kRecords)
        gatherRecords(n, count, map, L, local, G, global);
      else
        for (Count i = 0; i < n; ++i) {
          const int64_t e = entity(i);
          for (int k = 0; k < count; ++k) L[local.at(i, k)] = G[global.at(e, k)];
        }
    });
  } else {
    for (int k = 0; k < ncomp; ++k)
      forPoints(n, [=](Count i) SA_POINT { L[local.at(i, k)] = G[global.at(entity(i), k)]; });
  }
}

// The scatter of columns of reals into records: points in their order, the components of each by pairs.
template <class Combine>
SA_INLINE void scatterRecords(int first, int end, auto count, auto entity, double* G, Record global, const double* L,
                              Column local) {
  const auto combine = [](auto* at, auto value)
                           SA_POINT { storeVector(at, Combine::combine(loadVector<decltype(value)>(at), value)); };
  forFours(
      end - first,
      [=](int j) SA_POINT {
        const int i = first + j;
        double* records[4];
        for (int p = 0; p < 4; ++p) records[p] = G + global.at(entity(i + p), 0);
        int k = 0;
        for (int rest = count; rest > 1; rest -= 2) {
          forFourPairs(loadVector<Four>(L + local.at(i, k)), loadVector<Four>(L + local.at(i, k + 1)),
                       [&](int p, Two pair) SA_POINT { combine(records[p] + k, pair); });
          k += 2;
        }
        if (k < count)
          for (int p = 0; p < 4; ++p) combine(records[p] + k, L[local.at(i + p, k)]);
      },
      [=](int j) SA_POINT {
        for (int k = 0; k < count; ++k) combine(G + global.at(entity(first + j), k), L[local.at(first + j, k)]);
      });
}

// G(entity(i),k) = combine(G(entity(i),k), L(i,k)) for the points first .. end - 1, in this order: entities may repeat, so
// these loops stay scalar over points.
template <class Combine, class T, class Entity, class GlobalLayout, class LocalValue>
SA_INLINE void scatter(int first, int end, int ncomp, Entity entity, T* G, GlobalLayout global, LocalValue local) {
  if constexpr (GlobalLayout::kRecords) {
    forShortCounts(ncomp, [=](auto count) SA_POINT {
      if constexpr (std::is_same_v<LocalValue, Local<double, Column>>)
        scatterRecords<Combine>(first, end, count, entity, G, global, local.values, local.layout);
      else
        for (int i = first; i < end; ++i) {
          const int64_t e = entity(i);
          for (int k = 0; k < count; ++k) {
            T& g = G[global.at(e, k)];
            g = Combine::combine(g, local(i, k));
          }
        }
    });
  } else {
    if constexpr (std::is_same_v<Entity, Mapped>)
      if (countsUp(end - first, entity.map + first)) { // nothing repeats
        const int64_t from = entity(first) - first;
        for (int k = 0; k < ncomp; ++k)
          forPoints(end - first, [=](int j) SA_POINT {
            T& g = G[global.at(from + first + j, k)];
            g = Combine::combine(g, local(first + j, k));
          });
        return;
      }
    for (int k = 0; k < ncomp; ++k)
      for (int i = first; i < end; ++i) {
        T& g = G[global.at(entity(i), k)];
        g = Combine::combine(g, local(i, k));
      }
  }
}

// The same for elements of several nodes, map and L having the element fastest, then the node: element by element and node by
// node, so that a block gives the same sums however it is cut.
template <class Combine, class Layout>
SA_INLINE void scatterNodes(int n, int nodes, int ncomp, const int32_t* map, double* G, Layout global,
                            const double* L) {
  const int64_t N = n, all = N * nodes;
  for (int64_t e = 0; e < N; ++e)
    for (int64_t at = e; at < all; at += N)
      for (int k = 0; k < ncomp; ++k) {
        double& g = G[global.at(static_cast<int64_t>(map[at]) - 1, k)];
        g = Combine::combine(g, L[k * all + at]);
      }
}

// The general-dimension members move the first two or three components of a record, or its last one alone.
struct GeneralComponents {
  int first, count;
  SA_INLINE GeneralComponents(int ndim, int ld)
      : first(ndim == 2 || ndim == 3 ? 0 : ld - 1), count(ndim == 2 || ndim == 3 ? ndim : 1) {}
};

} // namespace sa
