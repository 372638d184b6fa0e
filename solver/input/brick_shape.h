// Shapes of bricks that a mesh must not have.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <optional>

namespace sharedanalysis::solver {

using BrickCorners = std::array<std::array<double, 3>, 8>;

// The corner at which a brick that has a volume is turned over all the same; the kernels look at its volume alone.
inline std::optional<std::size_t> turnedCorner(const BrickCorners& points) {
  // the neighbours of each corner, so that their edges are a right-handed triple
  constexpr std::size_t kNeighbours[8][3] = {{1, 3, 4}, {2, 0, 5}, {3, 1, 6}, {0, 2, 7},
                                             {7, 5, 0}, {4, 6, 1}, {5, 7, 2}, {6, 4, 3}};
  constexpr double kRoundOff = 1e-12;
  double volume = 0, size = 0;
  std::array<double, 8> corner{};
  for (std::size_t c = 0; c < 8; ++c) {
    double edge[3][3];
    for (std::size_t k = 0; k < 3; ++k)
      for (std::size_t x = 0; x < 3; ++x) edge[k][x] = points[kNeighbours[c][k]][x] - points[c][x];
    corner[c] = edge[0][0] * (edge[1][1] * edge[2][2] - edge[1][2] * edge[2][1]) -
                edge[0][1] * (edge[1][0] * edge[2][2] - edge[1][2] * edge[2][0]) +
                edge[0][2] * (edge[1][0] * edge[2][1] - edge[1][1] * edge[2][0]);
    volume += corner[c] / 8;
    size = std::max(size, std::abs(corner[c]));
  }
  const auto worst = std::min_element(corner.begin(), corner.end());
  if (!(volume > 0 && *worst < -kRoundOff * size)) return std::nullopt;
  return static_cast<std::size_t>(worst - corner.begin());
}

} // namespace sharedanalysis::solver
