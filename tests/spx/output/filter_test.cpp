// Output filters: the difference equation, the responses of designed filters, operators.
#include "bench/plain/filter.h"
#include "filter_design.h"
#include "spx.h"
#include "tests/support/call.h"
#include "tests/support/random.h"

#include <complex>

namespace {

using sharedanalysis::host::FilterType;
using sharedanalysis::host::LowPass;
using sharedanalysis::host::lowPassCoefficients;
using namespace sharedanalysis::test;

constexpr double kPi = 3.14159265358979323846;

// A block with its history under the library's filter.
struct Filter {
  int32_t n, ncomp, K, unread = 0;
  Values coef, hist;

  Filter(int32_t points, int32_t components, Values coefficients)
      : n(points), ncomp(components), K(static_cast<int32_t>(coefficients.size() / 5)), coef(std::move(coefficients)),
        hist(n * ncomp * (2 * K + 2)) {}
  void start(const Values& field) { call(SPX_OPE_INIFILTERFLD, n, 1, ncomp, K, unread, field, nullptr, hist); }
  void advance(Values& field) { call(SPX_OPE_FILTERFLD, n, ncomp, unread, K, field, unread, coef, hist); }
  Values slot(int number) const { return {hist.begin() + (number - 1) * n * ncomp, hist.begin() + number * n * ncomp}; }
};

Values randomValues(Random& random, std::size_t count) {
  Values values(count);
  for (double& v : values) v = random.uniform(-1, 1);
  return values;
}

// Response of the cascade at one frequency, from its coefficients.
double gain(const Values& coef, double frequency, double increment) {
  const std::complex<double> z = std::polar(1.0, -2 * kPi * frequency * increment);
  std::complex<double> response = 1;
  for (std::size_t k = 0; k < coef.size(); k += 5)
    response *= (coef[k] + z * (coef[k + 1] + z * coef[k + 2])) / (1.0 + z * (coef[k + 3] + z * coef[k + 4]));
  return std::abs(response);
}

// The squared gain that the type promises, with the frequency warped as the bilinear transform does.
double promised(const LowPass& filter, double frequency, double increment) {
  const double w = std::tan(kPi * frequency * increment) / std::tan(kPi * filter.cutoff * increment);
  const int n = filter.order;
  const auto chebyshev = [n](double x) { return x <= 1 ? std::cos(n * std::acos(x)) : std::cosh(n * std::acosh(x)); };
  const bool isFirst = filter.type == FilterType::chebyshev1;
  if (filter.type == FilterType::butterworth) return 1 / (1 + std::pow(w, 2 * n));
  const double ratio = std::pow(10, (isFirst ? filter.ripple : filter.attenuation) / 10) - 1,
               t = chebyshev(isFirst ? w : 1 / w);
  return isFirst ? (1 + ratio) / (1 + ratio * t * t) : 1 / (1 + ratio / (t * t));
}

TEST(Filter, IsTheDifferenceEquationOfItsSectionsOneAfterAnother) {
  Random random(41);
  const int n = 150, ncomp = 3, steps = 12;
  for (const int sections : {-1, 0, 1, 3}) { // fewer than none count as none
    const int K = std::max(0, sections);
    const Values coef = randomValues(random, 5 * K), first = randomValues(random, n * ncomp);
    Filter filter(n, ncomp, coef);
    filter.K = sections;
    filter.start(first);
    // the input and the outputs, from two increments before
    std::vector<std::vector<Values>> signal(K + 1, {first, first});
    for (int step = 0; step < steps; ++step) {
      Values field = randomValues(random, n * ncomp);
      signal[0].push_back(field);
      filter.advance(field);
      for (int k = 1; k <= K; ++k) {
        const auto x = signal[k - 1].rbegin(), y = signal[k].rbegin(); // from the latest back
        Values out(n * ncomp);
        for (int i = 0; i < n * ncomp; ++i)
          out[i] = plain::filterSection(&coef[5 * (k - 1)], x[0][i], x[1][i], x[2][i], y[0][i], y[1][i]);
        signal[k].push_back(out);
      }
      EXPECT_EQ(field, signal[K].back());
    }
    for (int k = 0; k <= K; ++k) {
      EXPECT_EQ(filter.slot(2 * k + 1), signal[k].back());
      EXPECT_EQ(filter.slot(2 * k + 2), *(signal[k].end() - 2));
    }
  }
}

TEST(FilterDesign, ResponsesAreThoseOfTheirTypes) {
  const double increment = 1e-4;
  for (FilterType type : {FilterType::butterworth, FilterType::chebyshev1, FilterType::chebyshev2})
    for (int order : {2, 4, 6, 10})
      for (double cutoff : {20.0, 600.0, 4500.0}) {
        const LowPass filter{type, order, cutoff, 0.7, 35};
        const Values coef = lowPassCoefficients(filter, increment);
        ASSERT_EQ(coef.size(), 5U * order / 2);
        for (std::size_t k = 0; k < coef.size(); k += 5) {
          EXPECT_NEAR((coef[k] + coef[k + 1] + coef[k + 2]) / (1 + coef[k + 3] + coef[k + 4]), 1, 1e-11);
          EXPECT_LT(std::abs(coef[k + 4]), 1) << "stable";
          EXPECT_LT(std::abs(coef[k + 3]), 1 + coef[k + 4]);
        }
        for (double f : {0.1 * cutoff, 0.7 * cutoff, 0.97 * cutoff, cutoff, 1.05 * cutoff, 1.1 * cutoff, 4900.0}) {
          const double expected = std::sqrt(promised(filter, f, increment));
          EXPECT_NEAR(gain(coef, f, increment), expected, 1e-9 + 1e-8 * expected) << order << ' ' << cutoff << ' ' << f;
        }
      }
}

TEST(FilterDesign, PublishedSections) {
  // With the cut-off at a quarter of the rate c is 1: s^2 + 2 a s + m comes back from a1, a2.
  const auto expectSections = [](const LowPass& filter, std::vector<std::pair<double, double>> expected) {
    const Values coef = lowPassCoefficients(filter, 0.25 / filter.cutoff);
    for (std::size_t k = 0; k < expected.size(); ++k) {
      const double a1 = coef[5 * k + 3], a2 = coef[5 * k + 4], scale = 1 - a1 + a2;
      EXPECT_NEAR(2 * (1 - a2) / scale, expected[k].first, 1e-6);
      EXPECT_NEAR((1 + a1 + a2) / scale, expected[k].second, 1e-6);
    }
  };
  // L. Weinberg, Network Analysis and Synthesis (1962), tables of Butterworth and 1/2 dB Chebyshev polynomials
  expectSections({FilterType::butterworth, 4, 100}, {{1.847759, 1}, {0.765367, 1}});
  expectSections({FilterType::chebyshev1, 2, 100, 0.5}, {{1.425625, 1.516203}});
  expectSections({FilterType::chebyshev1, 4, 100, 0.5}, {{0.846680, 0.356412}, {0.350706, 1.063519}});
  for (const double one : lowPassCoefficients({FilterType::chebyshev2, 4, 1e-200}, 1e-200)) // nothing passes
    EXPECT_LE(std::abs(one), 2);
}

TEST(FilterDesign, RefusesWhatIsNoFilter) {
  const auto refuses = [](const LowPass& filter, double increment) {
    EXPECT_THROW(lowPassCoefficients(filter, increment), std::invalid_argument);
  };
  for (int order : {0, 1, 3, 22, -2}) refuses({FilterType::butterworth, order, 100}, 1e-4);
  for (double cutoff : {0.0, -1.0, 5000.0, 1e9, kNaN}) refuses({FilterType::butterworth, 2, cutoff}, 1e-4);
  for (double increment : {0.0, -1e-4, kNaN, std::numeric_limits<double>::infinity()})
    refuses({FilterType::butterworth, 2, 100}, increment);
  refuses({FilterType::chebyshev1, 2, 100, 0}, 1e-4);
  refuses({FilterType::chebyshev2, 2, 100, 1, kNaN}, 1e-4);
}

TEST(Operators, RunningMaximumMinimumMagnitudeAndTheirTimes) {
  const Values signal = {1, -3, 2, 2, -4, 3.5, 0};
  const std::vector<Values> running = {
      signal, {1, 1, 2, 2, 2, 3.5, 3.5}, {1, -3, -3, -3, -4, -4, -4}, {1, 3, 3, 3, 4, 4, 4}};
  const std::vector<Values> reached = {
      {0, 1, 2, 3, 4, 5, 6}, {0, 0, 2, 2, 2, 5, 5}, {0, 1, 1, 1, 4, 4, 4}, {0, 1, 1, 1, 4, 4, 4}};
  const Values pass = {1, 0, 0, 0, 0};
  for (int32_t operation = 0; operation < 4; ++operation) {
    // alone, behind a filter, alone with times, behind a filter with times
    double field[4], state[4], time[4] = {}, hist[2][4] = {};
    call(SPX_OPE_INIONLYOPERATORFLD, 1, 1, 1, operation, signal, nullptr, state[0]);
    call(SPX_OPE_INIFILTEROPERFLD, 1, 1, 1, 1, operation, signal, nullptr, hist[0], state[1]);
    EXPECT_EQ(state[0], state[1]);
    state[2] = state[3] = state[0];
    std::copy(hist[0], hist[0] + 4, hist[1]);
    for (std::size_t step = 0; step < signal.size(); ++step) {
      const auto now = static_cast<double>(step);
      std::fill(field, field + 4, signal[step]);
      call(SPX_OPE_ONLYOPERATORFLD, 1, 1, operation, field[0], state[0]);
      call(SPX_OPE_FILTEROPERFLD, 1, 1, operation, 1, field[1], state[1], pass, hist[0]);
      call(SPX_OPE_ONLYOPERFILTERTIME, 1, 1, operation, field[2], state[2], now, time[2]);
      call(SPX_OPE_OPERFILTERTIME, 1, 1, operation, 1, field[3], state[3], pass, hist[1], now, time[3]);
      for (int k = 0; k < 4; ++k) {
        EXPECT_TRUE(field[k] == running[operation][step] && state[k] == field[k]) << operation << " " << k;
        EXPECT_EQ(time[k], k < 2 ? 0 : reached[operation][step]) << operation;
      }
      EXPECT_EQ(hist[0][2], signal[step]) << "the filtered value";
    }
    // what is no number stays, except where each value is taken as it comes
    for (double next : {kNaN, 9.0}) call(SPX_OPE_ONLYOPERATORFLD, 1, 1, operation, next, state[0]);
    EXPECT_EQ(std::isnan(state[0]), operation != 0);
  }
}

TEST(Operators, BeginWithOtherValuesWhereThatIsAskedFor) {
  Values hist(12), state(2);
  call(SPX_OPE_INIFILTEROPERFLD, 2, 2, 1, 2, 3, Values{7, 8}, Values{-3, 4}, hist, state); // the magnitude
  EXPECT_EQ(hist, (Values{-3, 4, -3, 4, -3, 4, -3, 4, -3, 4, -3, 4}));
  EXPECT_EQ(state, (Values{3, 4}));
}

} // namespace
