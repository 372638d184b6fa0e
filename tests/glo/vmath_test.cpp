// Vector math against 80-bit and 128-bit references; the bounds come from the header itself.
#include "glo/vmath.h"
#include "tests/support/random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

namespace {

using sharedanalysis::test::Random;
constexpr double kInf = std::numeric_limits<double>::infinity(), kNaN = std::numeric_limits<double>::quiet_NaN();

struct Bound {
  double ulp, low, high;
};

// The lines `// bound: name ulp on [low, high]` of the header.
std::map<std::string, Bound> statedBounds() {
  std::ifstream header(SA_SOURCE_DIR "/glo/vmath.h");
  std::map<std::string, Bound> bounds;
  for (std::string line; std::getline(header, line);) {
    const size_t at = line.find("// bound: ");
    if (at == std::string::npos) continue;
    std::string text = line.substr(at + 10), name, ulp, ulpWord, on, low, high;
    for (char& c : text)
      if (c == '[' || c == ']' || c == ',') c = ' ';
    std::istringstream words(text);
    words >> name >> ulp >> ulpWord >> on >> low >> high;
    bounds[name] = {std::strtod(ulp.c_str(), nullptr), std::strtod(low.c_str(), nullptr),
                    std::strtod(high.c_str(), nullptr)};
  }
  return bounds;
}

// Distance in units of the last place of the double nearest to the exact value.
double errorInUlp(double value, long double exact) {
  const double nearest = static_cast<double>(exact);
  if (std::isnan(value) || std::isinf(nearest)) return value == nearest ? 0 : 1e9;
  int exponent;
  std::frexp(nearest, &exponent);
  const long double ulp = std::ldexp(1.0L, std::max(exponent - 53, -1074));
  return static_cast<double>(std::abs(value - exact) / ulp);
}

struct Function {
  const char* name;
  double (*own)(double);
  long double (*reference)(long double);
  std::vector<double> hardPoints; // arguments around which errors peak
};

const Function kFunctions[] = {
    {"exp",
     [](double x) { return sa::vm::exp(x); },
     [](long double x) { return std::exp(x); },
     {0, 0.34657359027997264, -0.34657359027997264, 1.0397207708399179, 709.78, -708.39, -744.4, -745.13, 1e-300}},
    {"expClamped",
     [](double x) { return sa::vm::expClamped(x); },
     [](long double x) { return std::exp(x); },
     {0, 0.34657359027997264, -1.0397207708399179, 709.3, -708.2}},
    {"log",
     [](double x) { return sa::vm::log(x); },
     [](long double x) { return std::log(x); },
     {1, 1.4142135623730951, 0.70710678118654752, 0x1p-1022, 0x1p-1074, 2, 0.5, 0x1.fffffffffffffp1023}},
    {"logPositive",
     [](double x) { return sa::vm::logPositive(x); },
     [](long double x) { return std::log(x); },
     {1, 1.4142135623730951, 0.70710678118654752, 0x1p-1022}},
    {"cos",
     [](double x) { return sa::vm::cos(x); },
     [](long double x) { return std::cos(x); },
     {0, 0.78539816339744828, 1.5707963267948966, 3.1415926535897931, 4.7123889803846897, 2.0943951023931953, 1e5}},
    {"acos",
     [](double x) { return sa::vm::acos(x); },
     [](long double x) { return std::acos(x); },
     {-1, 1, 0.5, -0.5, 0, 0.70710678118654757, 1e-20}},
};

// Arguments: spread over the range, over its binades, and close round the hard points.
std::vector<double> arguments(const Function& f, const Bound& bound, int count) {
  Random random(61);
  std::vector<double> x;
  for (int i = 0; i < count; ++i) {
    x.push_back(random.uniform(bound.low, bound.high));
    const double sign = random.uniform(-1, 1) < 0 ? -1 : 1;
    x.push_back(sign * std::ldexp(random.uniform(1, 2), random.integer(-1074, 1023)));
    x.push_back(sign * std::ldexp(random.uniform(1, 2), random.integer(-40, 12)));
  }
  for (double hard : f.hardPoints) {
    double up = hard, down = hard;
    for (int step = 0; step < 3000; ++step) {
      x.push_back(up);
      x.push_back(down);
      up = std::nextafter(up, kInf);
      down = std::nextafter(down, -kInf);
    }
    for (int step = 0; step < 3000; ++step) x.push_back(hard * (1 + random.uniform(-1e-3, 1e-3)));
  }
  std::erase_if(x, [&](double v) { return !(v >= bound.low && v <= bound.high); });
  return x;
}

TEST(VectorMath, ErrorsStayWithinTheStatedBounds) {
  const auto bounds = statedBounds();
  EXPECT_EQ(bounds.size(), std::size(kFunctions));
  for (const Function& f : kFunctions) {
    ASSERT_TRUE(bounds.contains(f.name)) << f.name;
    const Bound& bound = bounds.at(f.name);
    ASSERT_LE(bound.ulp, 1.0);
    double worst = 0, at = 0;
    for (double x : arguments(f, bound, 400000)) {
      const double error = errorInUlp(f.own(x), f.reference(x));
      if (error > worst) worst = error, at = x;
    }
    EXPECT_LE(worst, bound.ulp) << f.name << " at " << std::hexfloat << at;
    EXPECT_GT(worst, 0.5 * bound.ulp) << f.name << ": the bound says nothing";
  }
}

TEST(VectorMath, SpecialValues) {
  namespace vm = sa::vm;
  for (const Function& f : kFunctions) {
    if (std::string(f.name) == "logPositive") continue;
    EXPECT_TRUE(std::isnan(f.own(kNaN))) << f.name;
  }
  EXPECT_EQ(vm::exp(kInf), kInf);
  EXPECT_EQ(vm::exp(-kInf), 0);
  EXPECT_EQ(vm::exp(710.0), kInf);
  EXPECT_EQ(vm::exp(1e300), kInf);
  EXPECT_EQ(vm::exp(-745.2), 0);
  EXPECT_EQ(vm::exp(-1e300), 0);
  EXPECT_EQ(vm::exp(0.0), 1);
  EXPECT_EQ(vm::exp(-0.0), 1);
  EXPECT_EQ(vm::exp(5e-324), 1);
  EXPECT_EQ(vm::expClamped(-1e5), vm::expClamped(-708.3964185322637));
  EXPECT_EQ(vm::expClamped(-kInf), vm::expClamped(-708.3964185322637));
  EXPECT_EQ(vm::log(0.0), -kInf);
  EXPECT_EQ(vm::log(-0.0), -kInf);
  EXPECT_EQ(vm::log(kInf), kInf);
  EXPECT_EQ(vm::log(1.0), 0);
  EXPECT_TRUE(std::isnan(vm::log(-5e-324)));
  EXPECT_TRUE(std::isnan(vm::log(-kInf)));
  EXPECT_EQ(vm::cos(0.0), 1);
  EXPECT_TRUE(std::isnan(vm::cos(kInf)));
  EXPECT_TRUE(std::isnan(vm::cos(1.1e5)));
  EXPECT_EQ(vm::acos(1.0), 0);
  EXPECT_EQ(vm::acos(-1.0), 0x1.921fb54442d18p+1);
  EXPECT_TRUE(std::isnan(vm::acos(1.0000000000000002)));
  EXPECT_TRUE(std::isnan(vm::acos(-kInf)));
}

// The same argument gives the same bits in every lane of a vector loop and beside any neighbours.
TEST(VectorMath, LoopsGiveTheBitsOfSingleCalls) {
  Random random(62);
  for (const Function& f : kFunctions)
    for (int n = 1; n <= 40; ++n) {
      std::vector<double> x(n), y(n);
      for (double& v : x) v = random.uniform(1e-3, 1);
      const double* in = x.data();
      double* out = y.data();
      const std::string name = f.name;
      if (name == "exp") sa::forPoints(n, [=](int i) SA_POINT { out[i] = sa::vm::exp(in[i]); });
      if (name == "expClamped") sa::forPoints(n, [=](int i) SA_POINT { out[i] = sa::vm::expClamped(in[i]); });
      if (name == "log") sa::forPoints(n, [=](int i) SA_POINT { out[i] = sa::vm::log(in[i]); });
      if (name == "logPositive") sa::forPoints(n, [=](int i) SA_POINT { out[i] = sa::vm::logPositive(in[i]); });
      if (name == "cos") sa::forPoints(n, [=](int i) SA_POINT { out[i] = sa::vm::cos(in[i]); });
      if (name == "acos") sa::forPoints(n, [=](int i) SA_POINT { out[i] = sa::vm::acos(in[i]); });
      for (int i = 0; i < n; ++i) EXPECT_EQ(y[i], f.own(x[i])) << f.name;
    }
}

} // namespace
