// Natural rubber in three modes of test: L. R. G. Treloar, Trans. Faraday Soc. 40 (1944) 59, digitised from the diagrams;
// copies of the readings differ by up to 0.03 MPa.
#pragma once

#include <array>
#include <cmath>
#include <utility>
#include <vector>

namespace sharedanalysis::test {

enum class Mode { Bar, Sheet, Strip }; // uniaxial, equibiaxial, planar tension

// Stretch and nominal stress, in kg/cm2 for bar and sheet and MPa for the strip.
inline const std::vector<std::pair<double, double>>& treloar(Mode mode) {
  // clang-format off
  static const std::vector<std::pair<double, double>> data[] = {
      {{1.02, .26}, {1.125, 1.37}, {1.24, 2.30}, {1.39, 3.23}, {1.585, 4.16}, {1.90, 5.10}, {2.18, 6.00},
       {2.42, 6.90}, {3.02, 8.80}, {3.57, 10.7}, {4.03, 12.5}, {4.76, 16.2}, {5.36, 19.9}, {5.75, 23.6}, {6.15, 27.4},
       {6.40, 31.0}, {6.60, 34.8}, {6.85, 38.5}, {7.05, 42.1}, {7.15, 45.8}, {7.25, 49.6}, {7.40, 53.3}, {7.50, 57.0},
       {7.60, 64.4}},
      {{1.03, .95}, {1.07, 1.60}, {1.12, 2.42}, {1.14, 2.62}, {1.20, 3.32}, {1.31, 4.43}, {1.42, 5.18}, {1.68, 6.60},
       {1.94, 7.78}, {2.49, 9.79}, {3.03, 12.6}, {3.43, 14.7}, {3.75, 17.4}, {4.07, 20.1}, {4.26, 22.5},
       {4.45, 24.7}},
      {{1.03, .0667}, {1.12, .1589}, {1.19, .2452}, {1.31, .3326}, {1.46, .4189}, {1.84, .5925}, {2.38, .7652},
       {2.97, .9418}, {3.47, 1.1183}, {3.95, 1.2851}, {4.37, 1.4617}, {4.69, 1.6285}, {4.97, 1.8050}}};
  // clang-format on
  return data[static_cast<int>(mode)];
}
inline double inMegapascal(Mode mode) { return mode == Mode::Strip ? 1.0 : 0.0980665; }

using Stretches = std::array<double, 3>;
// Without change of volume; the third direction is free.
inline Stretches stretchesOf(Mode mode, double s) {
  if (mode == Mode::Bar) return {s, 1 / std::sqrt(s), 1 / std::sqrt(s)};
  if (mode == Mode::Sheet) return {s, s, 1 / (s * s)};
  return {s, 1, 1 / s};
}

// Coefficient of determination of a curve of nominal stress in MPa.
template <class Curve>
double determination(Mode mode, Curve curve) {
  double mean = 0, rest = 0, spread = 0;
  for (const auto& [stretch, stress] : treloar(mode)) mean += stress * inMegapascal(mode);
  mean /= static_cast<double>(treloar(mode).size());
  for (const auto& [stretch, reading] : treloar(mode)) {
    const double stress = reading * inMegapascal(mode), error = curve(stretch) - stress;
    rest += error * error;
    spread += (stress - mean) * (stress - mean);
  }
  return 1 - rest / spread;
}

} // namespace sharedanalysis::test
