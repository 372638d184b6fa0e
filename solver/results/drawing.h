// Curves and marks over two axes, as an SVG picture.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

class Drawing {
public:
  Drawing(std::string title, std::string xLabel, std::string yLabel)
      : title_(std::move(title)), xLabel_(std::move(xLabel)), yLabel_(std::move(yLabel)) {}

  void curve(std::string name, std::vector<double> x, std::vector<double> y);
  // In the colour of the last curve.
  void marks(std::vector<double> x, std::vector<double> y);
  void write(const std::filesystem::path& file) const;

private:
  struct Series {
    std::string name;
    std::vector<double> x, y, markX, markY;
  };
  std::string title_, xLabel_, yLabel_;
  std::vector<Series> series_;
};

} // namespace sharedanalysis::solver
