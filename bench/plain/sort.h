// Straight insertion; how these headers are used: materials.h.
#pragma once

#include <cstdint>

namespace plain {

// Orders a list of numbers from 1 by their keys.
template <class Key>
void insertionSort(int32_t* list, const Key* keys, int n) {
  for (int k = 1; k < n; ++k) {
    const int32_t entry = list[k];
    int place = k;
    for (; place > 0 && keys[list[place - 1] - 1] > keys[entry - 1]; --place) list[place] = list[place - 1];
    list[place] = entry;
  }
}

} // namespace plain
