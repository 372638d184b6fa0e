#include "filter_design.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace sharedanalysis::host {
namespace {

constexpr double kPi = 3.14159265358979323846;

// A section of the prototype with its cut-off at 1 rad/s: m (1 + s^2/zero^2) / (s^2 + 2 a s + m), unit gain at s = 0.
struct AnalogueSection {
  double a, m, inverseZeroSquared; // 0: no zero
};

// Section k of order/2, from 0.  The poles of Butterworth lie on a circle, those of Chebyshev on an ellipse with the half axes
// sinh(mu) and cosh(mu), or are the reciprocals of such.
AnalogueSection prototype(const LowPass& filter, int k) {
  const double theta = (2 * k + 1) * kPi / (2 * filter.order), s = std::sin(theta), c = std::cos(theta);
  if (filter.type == FilterType::butterworth) return {s, 1, 0};
  const bool inverse = filter.type == FilterType::chebyshev2;
  // 10^(dB/10) - 1, without loss for a small ripple
  const double power = std::expm1((inverse ? filter.attenuation : filter.ripple) * std::log(10.0) / 10);
  const double mu = std::asinh(inverse ? std::sqrt(power) : 1 / std::sqrt(power)) / filter.order;
  const double real = std::sinh(mu) * s, imaginary = std::cosh(mu) * c, squared = real * real + imaginary * imaginary;
  if (!inverse) return {real, squared, 0};
  return {real / squared, 1 / squared, c * c};
}

// a + b and the rounding error of that sum, exactly (Knuth's two-sum).
struct Sum {
  double value, error;
};
Sum sumOf(double a, double b) {
  const double value = a + b, part = value - a;
  return {value, (a - (value - part)) + (b - part)};
}

// b1 = 1 + a1 + a2 - 2 b0, so that the gain at zero, (2 b0 + b1) / (1 + a1 + a2), is 1 for the coefficients as they are rounded.
// Rounding errors are carried: the terms nearly cancel at a low cut-off.
double numerator(double a1, double a2, double b0) {
  const Sum first = sumOf(1, a1), second = sumOf(first.value, a2), third = sumOf(second.value, -2 * b0);
  return third.value + (first.error + second.error + third.error);
}

void check(const LowPass& filter, double increment) {
  const auto require = [](bool holds, const char* text) {
    if (!holds) throw std::invalid_argument(text);
  };
  require(increment > 0 && std::isfinite(increment), "the increment is not positive");
  require(filter.order >= 2 && filter.order <= 20 && filter.order % 2 == 0, "the order is not even, or not 2 to 20");
  require(filter.cutoff > 0, "the cut-off frequency is not positive");
  require(filter.cutoff * increment < 0.5, "the cut-off frequency is not below half the rate of the increments");
  require(filter.type != FilterType::chebyshev1 || (filter.ripple > 0 && std::isfinite(filter.ripple)),
          "the ripple is not positive");
  require(filter.type != FilterType::chebyshev2 || (filter.attenuation > 0 && std::isfinite(filter.attenuation)),
          "the attenuation is not positive");
}

} // namespace

std::vector<double> lowPassCoefficients(const LowPass& filter, double increment) {
  check(filter, increment);
  constexpr double kMost = 1e100; // its square is finite; nothing passes such a filter
  const double c = std::min(1 / std::tan(kPi * filter.cutoff * increment), kMost); // s = c (1 - 1/z) / (1 + 1/z)
  std::vector<double> coefficients;
  for (int k = filter.order / 2 - 1; k >= 0; --k) {
    const AnalogueSection section = prototype(filter, k);
    const double m = section.m, high = m * section.inverseZeroSquared * c * c, scale = c * (c + 2 * section.a) + m;
    const double a1 = 2 * (m - c * c) / scale, a2 = (c * (c - 2 * section.a) + m) / scale;
    const double b0 = (m + high) / scale;
    const double b1 = numerator(a1, a2, b0);
    coefficients.insert(coefficients.end(), {b0, b1, b0, a1, a2});
  }
  return coefficients;
}

} // namespace sharedanalysis::host
