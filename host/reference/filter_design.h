// Coefficients of low-pass filters for SPX_OPE_FILTERFLD, from type, order and cut-off frequency.
#pragma once

#include "host_service.h"

#include <vector>

namespace sharedanalysis::host {

// Analogue prototypes, taken to increments by the bilinear transform with the cut-off kept exactly (prewarped).
//   butterworth  flat; the gain at the cut-off is -3 dB (1/sqrt 2)
//   chebyshev1   ripples below the cut-off, where the gain is 1 for the last time; steeper
//   chebyshev2   flat below, ripples above the cut-off, where the attenuation is reached for the first time
// Every section has unit gain at zero frequency.  The gain of chebyshev1 is therefore 1 at zero and swings between 1 and
// +ripple, instead of -ripple and 1 as the tables of filters of even order have it.
// Source: T. W. Parks, C. S. Burrus, Digital Filter Design (1987), chapter 7.
enum class FilterType { butterworth, chebyshev1, chebyshev2 };

struct LowPass {
  FilterType type = FilterType::butterworth;
  int order = 4;           // even, 2 to 20
  double cutoff = 0;       // Hz, above 0 and below half the rate of the increments
  double ripple = 0.5;     // dB, of chebyshev1
  double attenuation = 40; // dB, of chebyshev2
};

// b0, b1, b2, a1, a2 of order/2 sections, for increments of that many seconds.  The section with the least damped poles is the
// last one, which keeps intermediate values small.
// Throws std::invalid_argument that says what is wrong with the definition.
SA_HOST_SERVICE std::vector<double> lowPassCoefficients(const LowPass& filter, double increment);

} // namespace sharedanalysis::host
