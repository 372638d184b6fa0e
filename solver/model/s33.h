// Storage of symmetric tensors: components 11 22 33 12 23 13.
#pragma once

namespace sharedanalysis::solver {

// kS33[i][j]: the place of component (i, j).
inline constexpr int kS33[3][3] = {{0, 3, 5}, {3, 1, 4}, {5, 4, 2}};

} // namespace sharedanalysis::solver
