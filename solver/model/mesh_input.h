// Where the mesh of a case comes from: a file, or a box that the case describes.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

// A box of bricks between planes across the axes.
struct BoxMesh {
  // Between two planes of an axis; the last brick is `grading` times as thick as the first, and thicknesses between them are in
  // arithmetic progression.
  struct Layer {
    int64_t bricks = 1;
    double size = 1; // m
    double grading = 1;
    std::string volume{}; // the group, along the axis that has volumes
  };
  std::array<double, 3> origin{};             // the smallest coordinates
  std::array<std::vector<Layer>, 3> layers{}; // of each axis, one at least
  std::size_t axis = 2;                       // the one along which volumes follow each other
  std::array<std::string, 6> faces{"x0", "x1", "y0", "y1", "z0", "z1"};

  int64_t bricks(std::size_t along) const {
    int64_t sum = 0;
    for (const Layer& layer : layers[along]) sum += layer.bricks;
    return sum;
  }
};

struct MeshInput {
  std::filesystem::path file;
  std::optional<BoxMesh> box; // in place of a file

  // For messages.
  std::string name() const {
    if (!box) return file.string();
    return "box of " + std::to_string(box->bricks(0)) + " x " + std::to_string(box->bricks(1)) + " x " +
           std::to_string(box->bricks(2)) + " bricks";
  }
};

} // namespace sharedanalysis::solver
