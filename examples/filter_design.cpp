// Coefficients of an output filter and its response, as the kernels will filter: an impulse is sent through SPX_OPE_FILTERFLD.
//
//   filter_design TYPE ORDER CUTOFF INCREMENT [DB]     butterworth, chebyshev1 or chebyshev2; Hz; s; ripple or attenuation
//
// Prints the sections b0, b1, b2, a1, a2 as comments, then lines of frequency in Hz, gain and gain in dB.
#include "filter_design.h"
#include "spx.h"

#include <cmath>
#include <complex>
#include <cstdio>
#include <exception>
#include <map>
#include <stdexcept>
#include <string>

using namespace sharedanalysis;

namespace {

host::LowPass definition(int count, char** arguments) {
  const std::map<std::string, host::FilterType> types{{"butterworth", host::FilterType::butterworth},
                                                      {"chebyshev1", host::FilterType::chebyshev1},
                                                      {"chebyshev2", host::FilterType::chebyshev2}};
  if (count < 4 || types.count(arguments[0]) == 0)
    throw std::invalid_argument("usage: filter_design butterworth|chebyshev1|chebyshev2 ORDER CUTOFF INCREMENT [DB]");
  host::LowPass filter{types.at(arguments[0]), std::stoi(arguments[1]), std::stod(arguments[2])};
  if (count > 4) filter.ripple = filter.attenuation = std::stod(arguments[4]);
  return filter;
}

// What the filter makes of the signal 1, 0, 0, ...
std::vector<double> impulseResponse(const std::vector<double>& coefficients, int length) {
  const int32_t points = 1, components = 1, sections = static_cast<int32_t>(coefficients.size() / 5), spare = 0;
  const int32_t givenValue = 2;
  const double rest = 0;
  std::vector<double> history(2 * sections + 2), response;
  SPX_OPE_INIFILTERFLD(&points, &givenValue, &components, &sections, &spare, &rest, &rest, history.data());
  for (int n = 0; n < length; ++n) {
    double value = n == 0 ? 1 : 0;
    SPX_OPE_FILTERFLD(&points, &components, &spare, &sections, &value, &spare, coefficients.data(), history.data());
    response.push_back(value);
  }
  return response;
}

double gainAt(const std::vector<double>& impulse, double cyclesPerIncrement) {
  const std::complex<double> turn = std::polar(1.0, -2 * 3.141592653589793 * cyclesPerIncrement);
  std::complex<double> sum = 0;
  for (std::size_t n = impulse.size(); n-- > 0;) sum = sum * turn + impulse[n];
  return std::abs(sum);
}

} // namespace

int main(int count, char** arguments) {
  try {
    const host::LowPass filter = definition(count - 1, arguments + 1);
    const double increment = std::stod(arguments[4]);
    const std::vector<double> coefficients = host::lowPassCoefficients(filter, increment);
    for (std::size_t k = 0; k < coefficients.size(); k += 5)
      std::printf("# %.17g %.17g %.17g %.17g %.17g\n", coefficients[k], coefficients[k + 1], coefficients[k + 2],
                  coefficients[k + 3], coefficients[k + 4]);
    // long enough for the least damped section: 30 periods of the cut-off for each order
    const auto length = static_cast<int>(30.0 * filter.order / (filter.cutoff * increment));
    const std::vector<double> impulse = impulseResponse(coefficients, length);
    for (double ratio = 0.05; ratio <= 20.001 && ratio * filter.cutoff * increment < 0.5;
         ratio *= std::pow(20, 1.0 / 300)) {
      const double gain = gainAt(impulse, ratio * filter.cutoff * increment);
      std::printf("%.6g,%.6e,%.4f\n", ratio * filter.cutoff, gain, 20 * std::log10(gain + 1e-300));
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
  return 0;
}
