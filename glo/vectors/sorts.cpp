// Stable sorts of index lists by key, with the result of straight insertion.
#include "glo.h"
#include "glo/kernel/kernel.h"

#include <algorithm>
#include <type_traits>

namespace sa {
namespace {

constexpr int kRun = 128;  // entries that are ranked by counting
constexpr int kChunk = 16; // of them at a time

template <class Key>
SA_INLINE Key keyOf(const Key* keys, int32_t entity) {
  return keys[entity - 1];
}

// The place of an entry is the number of smaller keys, and of equal keys before it.  Every entry in turn is compared with
// all of a chunk of places, which are counted up in vectors: n*n comparisons and no branch that depends on a key.
template <class Key>
SA_INLINE void rankSort(int32_t* list, const Key* keys, int n) {
  using Count = std::conditional_t<sizeof(Key) == 4, int32_t, int64_t>; // as wide as a key, for vectors of one kind
  Key key[kRun];
  int32_t entry[kRun];
  for (int k = 0; k < n; ++k) {
    entry[k] = list[k];
    key[k] = keyOf(keys, entry[k]);
  }
  for (int k = n; k < kRun; ++k) key[k] = Key{}; // the rest of the last chunk is counted and not used
  forPieces<kChunk>(n, [=, &key, &entry](int chunk, int length) SA_POINT {
    Count place[kChunk] = {};
    const Key* own = key + chunk;
    const auto count = [&place, own](Key other, auto precedes) SA_POINT {
#pragma omp simd
      for (int j = 0; j < kChunk; ++j) place[j] += precedes(other, own[j], j) ? 1 : 0;
    };
    for (int k = 0; k < chunk; ++k) count(key[k], [](Key other, Key mine, int) SA_POINT { return other <= mine; });
    const int last = chunk + length;
    for (int k = chunk; k < last; ++k)
      count(key[k], [k, chunk](Key other, Key mine, int j) SA_POINT {
        return static_cast<int>(other < mine) | (static_cast<int>(other == mine) & static_cast<int>(k < chunk + j));
      });
    for (int k = last; k < n; ++k) count(key[k], [](Key other, Key mine, int) SA_POINT { return other < mine; });
    for (int j = 0; j < length; ++j) list[place[j]] = entry[chunk + j];
  });
}

// Merges the sorted ranges [first, middle) and [middle, last) in place: the longer one is cut in half, the cut is looked up
// in the other one, and the inner parts change places.  Needs no storage of its own.
template <class Key>
void mergeRuns(int32_t* list, const Key* keys, int first, int middle, int last) {
  while (first < middle && middle < last && keyOf(keys, list[middle - 1]) > keyOf(keys, list[middle])) {
    int cutLeft, cutRight;
    const auto less = [keys](int32_t a, int32_t b) { return keyOf(keys, a) < keyOf(keys, b); };
    if (middle - first > last - middle) {
      cutLeft = first + (middle - first) / 2;
      cutRight = static_cast<int>(std::lower_bound(list + middle, list + last, list[cutLeft], less) - list);
    } else {
      cutRight = middle + (last - middle + 1) / 2; // its last entry is the pivot
      cutLeft = static_cast<int>(std::upper_bound(list + first, list + middle, list[cutRight - 1], less) - list);
    }
    const int newMiddle = static_cast<int>(std::rotate(list + cutLeft, list + middle, list + cutRight) - list);
    mergeRuns(list, keys, first, cutLeft, newMiddle);
    first = newMiddle;
    middle = cutRight;
  }
}

// The number of entries before the first one whose key is NaN.
template <class Key>
SA_INLINE int countNumbers(const int32_t* list, const Key* keys, int n) {
  if constexpr (std::is_floating_point_v<Key>)
    for (int k = 0; k < n; ++k)
      if (keyOf(keys, list[k]) != keyOf(keys, list[k])) return k;
  return n;
}

template <class Key>
SA_INLINE void sortNumbers(int32_t* list, const Key* keys, int n) {
  forPieces<kRun>(n, [=](int first, int length) SA_POINT { rankSort(list + first, keys, length); });
  for (int64_t run = kRun; run < n; run *= 2)
    for (int64_t first = 0; first + run < n; first += 2 * run)
      mergeRuns(list, keys, static_cast<int>(first), static_cast<int>(first + run),
                static_cast<int>(std::min<int64_t>(first + run + run, n)));
}

// A NaN compares as neither greater nor less than any key: insertion stops at it and leaves it in its place, so that the
// stretches between such keys are sorted by themselves.
template <class Key>
SA_INLINE void sortByKey(int32_t* list, const Key* keys, int n) {
  for (int rest = n; rest > 0;) {
    const int length = countNumbers(list, keys, rest);
    if (length > 1) sortNumbers(list, keys, length);
    if (length == rest) break;
    list += length + 1;
    rest -= length + 1;
  }
}

} // namespace

SA_MOVE(GLO_UTI_INSSORTI, (int32_t * list, const int32_t* keys, const int32_t* n)) { sortByKey(list, keys, *n); }

SA_KERNEL(GLO_UTI_INSSORTR, (int32_t * list, const double* keys, const int32_t* n)) { sortByKey(list, keys, *n); }

SA_MOVE(GLO_UTI_CHKSORTI, (int32_t * flag, const int32_t* list, const int32_t* n)) {
  int32_t falls = 0;
#pragma omp simd reduction(| : falls)
  for (int k = 1; k < *n; ++k)
    falls |= static_cast<int32_t>(static_cast<uint32_t>(list[k]) - static_cast<uint32_t>(list[k - 1]));
  if (falls < 0) *flag = 1;
}

} // namespace sa
