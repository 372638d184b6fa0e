#include "solver/results/drawing.h"

#include "solver/model/text.h"
#include "solver/results/partial_file.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>

namespace sharedanalysis::solver {
namespace {

constexpr double kWidth = 800, kHeight = 520, kLeft = 80, kRight = 20, kTop = 46, kBottom = 56;
// Distinguishable with colour-vision deficiency.
constexpr std::array<const char*, 7> kColours = {"#0072b2", "#d55e00", "#009e73", "#cc79a7",
                                                 "#e69f00", "#56b4e9", "#000000"};

std::string escaped(const std::string& text) {
  std::string result;
  for (const char c : printable(text)) { // XML has no control characters
    if (c == '<')
      result += "&lt;";
    else if (c == '&')
      result += "&amp;";
    else
      result += c;
  }
  return result;
}

template <class... Values>
std::string format(const char* form, Values... values) {
  char text[512];
  return {text, static_cast<std::size_t>(std::clamp(std::snprintf(text, sizeof text, form, values...), 0, 511))};
}

// One axis: its range in round numbers.
struct Axis {
  double low, high, step;

  Axis(double smallest, double largest) {
    if (!(smallest < largest)) smallest -= 0.5, largest += 0.5;
    const double rough = (largest - smallest) / 6, power = std::pow(10.0, std::floor(std::log10(rough)));
    step = power;
    for (const double factor : {2.0, 5.0, 10.0})
      if (rough > step * 1.0001) step = factor * power;
    low = std::floor(smallest / step) * step;
    high = std::ceil(largest / step) * step;
  }
  int ticks() const { return static_cast<int>(std::lround((high - low) / step)); }
  double tick(int k) const { return low + k * step; }
  double part(double value) const { return (value - low) / (high - low); }
};

} // namespace

void Drawing::curve(std::string name, std::vector<double> x, std::vector<double> y) {
  series_.push_back({std::move(name), std::move(x), std::move(y), {}, {}});
}
void Drawing::marks(std::vector<double> x, std::vector<double> y) {
  if (series_.empty()) return;
  series_.back().markX = std::move(x);
  series_.back().markY = std::move(y);
}

void Drawing::write(const std::filesystem::path& name) const {
  const double infinity = std::numeric_limits<double>::infinity();
  double range[4] = {infinity, -infinity, infinity, -infinity};
  for (const Series& s : series_)
    for (const auto& [values, k] : {std::pair{&s.x, 0}, {&s.markX, 0}, {&s.y, 2}, {&s.markY, 2}})
      for (const double v : *values) {
        range[k] = std::min(range[k], v);
        range[k + 1] = std::max(range[k + 1], v);
      }
  const Axis x(range[0], range[1]), y(range[2], range[3]);
  const double width = kWidth - kLeft - kRight, height = kHeight - kTop - kBottom;
  const auto atX = [&](double v) { return kLeft + width * x.part(v); };
  const auto atY = [&](double v) { return kTop + height * (1 - y.part(v)); };

  PartialTextFile file(name);
  file.put(format("<svg xmlns='http://www.w3.org/2000/svg' width='%g' height='%g' viewBox='0 0 %g %g' "
                  "font-family='sans-serif' font-size='13'>",
                  kWidth, kHeight, kWidth, kHeight));
  file.put("<rect width='100%' height='100%' fill='white'/>");
  const auto text = [&](double px, double py, const char* anchor, const std::string& words, const char* more = "") {
    file.put(format("<text x='%.1f' y='%.1f' text-anchor='%s'%s>", px, py, anchor, more) + escaped(words) + "</text>");
  };
  text(kLeft, 28, "start", title_, " font-size='16'");
  for (int k = 0; k <= x.ticks(); ++k) {
    const double px = atX(x.tick(k));
    file.put(format("<line x1='%.1f' y1='%.1f' x2='%.1f' y2='%.1f' stroke='#ddd'/>", px, kTop, px, kTop + height));
    text(px, kTop + height + 18, "middle", format("%g", std::abs(x.tick(k)) < 1e-9 * x.step ? 0 : x.tick(k)));
  }
  for (int k = 0; k <= y.ticks(); ++k) {
    const double py = atY(y.tick(k));
    file.put(format("<line x1='%.1f' y1='%.1f' x2='%.1f' y2='%.1f' stroke='#ddd'/>", kLeft, py, kLeft + width, py));
    text(kLeft - 6, py + 4, "end", format("%g", std::abs(y.tick(k)) < 1e-9 * y.step ? 0 : y.tick(k)));
  }
  file.put(format("<rect x='%.1f' y='%.1f' width='%.1f' height='%.1f' fill='none' stroke='#444'/>", kLeft, kTop, width,
                  height));
  text(kLeft + width / 2, kHeight - 14, "middle", xLabel_);
  text(0, 0, "middle", yLabel_, format(" transform='translate(22 %.1f) rotate(-90)'", kTop + height / 2).c_str());

  for (std::size_t k = 0; k < series_.size(); ++k) {
    const Series& s = series_[k];
    const char* colour = kColours[k % kColours.size()];
    std::string points;
    for (std::size_t i = 0; i < s.x.size(); ++i) points += format("%.2f,%.2f ", atX(s.x[i]), atY(s.y[i]));
    file.put(format("<polyline fill='none' stroke='%s' stroke-width='2' points='", colour) + points + "'/>");
    for (std::size_t i = 0; i < s.markX.size(); ++i)
      file.put(format("<circle cx='%.2f' cy='%.2f' r='3.5' fill='white' stroke='%s' stroke-width='1.5'/>",
                      atX(s.markX[i]), atY(s.markY[i]), colour));
    const double line = kTop + 18 + 18 * static_cast<double>(k);
    file.put(format("<line x1='%.1f' y1='%.1f' x2='%.1f' y2='%.1f' stroke='%s' stroke-width='2'/>", kLeft + 12,
                    line - 4, kLeft + 36, line - 4, colour));
    text(kLeft + 42, line, "start", s.name + (s.markX.empty() ? "" : " (circles: test)"));
  }
  file.put("</svg>");
  file.close();
  file.complete();
}

} // namespace sharedanalysis::solver
