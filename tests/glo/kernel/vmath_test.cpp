// Vector math against 80-bit references; the bounds come from the header itself.
#include "glo/kernel/vmath.h"
#include "tests/support/random.h"
#include "tests/support/test.h"

#include <regex>

namespace {

namespace vm = sa::vm;
using namespace sharedanalysis::test;

struct Function {
  const char* name;
  double (*own)(double);
  long double (*reference)(long double);
  double lattice;                 // the reduction of the argument changes at the odd multiples of this number
  std::vector<double> hardPoints; // arguments around which errors peak or cases change
};
#define FUNCTION(name, reference)                                                                                      \
#name, [](double x) { return vm::name(x); }, [](long double x) { return std::reference(x); }

constexpr double kHalfLn2 = 0.34657359027997264, kQuarterPi = 0.78539816339744828;
constexpr double kRootHalf = 0.70710678118654752, kRootTwo = 1.4142135623730951;
const Function kFunctions[] = {
    {FUNCTION(exp, exp), kHalfLn2, {0, 709.78, -708.396, -744.4, -745.13, 1e-300}},
    {FUNCTION(expClamped, exp), kHalfLn2, {0, 709.43613930310391, 709.78, -708.3964185322637, -708.05, 1e-300}},
    {FUNCTION(expm1, expm1), kHalfLn2, {0, 709.78, 709.4361, -50, 0.34657359, -0.34657359, 1e-300}},
    {FUNCTION(log, log), 0, {1, kRootTwo, kRootHalf, 0x1p-1022, 0x1p-1074, 2, 0.5, 0x1.fffffffffffffp1023}},
    {FUNCTION(log10, log10), 0, {1, 10, 1e-5, kRootTwo, kRootHalf, 0x1p-1022, 0x1p-1074, 2, 0x1.fffffffffffffp1023}},
    {FUNCTION(logPositive, log), 0, {1, kRootTwo, kRootHalf, 0x1p-1022, 0x1.fffffffffffffp1023}},
    {FUNCTION(log2Positive, log2), 0, {1, kRootTwo, kRootHalf, 0x1p-1022, 0x1.fffffffffffffp1023}},
    {FUNCTION(exp2Clamped, exp2), 0.5, {0, 1023.5, -1021.5, -1022, 1e-300}},
    {FUNCTION(cos, cos), kQuarterPi, {0, 1.5707963267948966, 3.1415926535897931, 4.7123889803846897, 1e5, 1e-300}},
    {FUNCTION(acos, acos), 0, {-1, 1, 0.5, -0.5, 0.48, 0, kRootHalf, 1e-20}},
};

const Function& function(const std::string& name) {
  return *std::find_if(std::begin(kFunctions), std::end(kFunctions), [&](auto& f) { return f.name == name; });
}

// The lines `// bound: name ulp on [low, high]` of the header.
struct Bound {
  std::string name;
  double ulp, low, high;
};
std::vector<Bound> statedBounds() {
  std::ifstream header(SA_SOURCE_DIR "/glo/kernel/vmath.h");
  const std::regex form("// bound: (\\w+) (\\S+) ulp on \\[(\\S+), (\\S+)\\]");
  std::vector<Bound> bounds;
  std::smatch m;
  for (std::string line; std::getline(header, line);)
    if (line.starts_with("// bound:")) {
      EXPECT_TRUE(std::regex_match(line, m, form)) << line;
      const auto number = [&](size_t group) { return std::strtod(m[group].str().c_str(), nullptr); };
      bounds.push_back({m[1], number(2), number(3), number(4)});
    }
  return bounds;
}

// Distance in units of the last place of the double nearest to the exact value.
double errorInUlp(double value, long double exact) {
  const double nearest = static_cast<double>(exact);
  if (!std::isfinite(value) || std::isinf(nearest)) return value == nearest ? 0 : kInf;
  int exponent;
  std::frexp(nearest, &exponent);
  const long double ulp = std::ldexp(1.0L, std::max(exponent - 53, -1074));
  return static_cast<double>(std::abs(value - exact) / ulp);
}

// Arguments: spread over the range, over its binades, close round the hard points and round the lattice.
std::vector<double> arguments(const Function& f, const Bound& bound, int count) {
  Random random(61);
  std::vector<double> x;
  const auto neighbours = [&](double centre, int steps) {
    for (double up = centre, down = centre; steps > 0; --steps) {
      x.push_back(up);
      x.push_back(down);
      up = std::nextafter(up, kInf);
      down = std::nextafter(down, -kInf);
    }
  };
  for (int i = 0; i < count; ++i) {
    x.push_back(bound.low / 2 + random.uniform(-1, 1) * (bound.high / 2 - bound.low / 2) + bound.high / 2);
    const double sign = random.uniform(-1, 1) < 0 ? -1 : 1;
    x.push_back(sign * std::ldexp(random.uniform(1, 2), random.integer(-1074, 1023)));
    x.push_back(sign * std::ldexp(random.uniform(1, 2), random.integer(-40, 12)));
  }
  for (double hard : f.hardPoints) {
    neighbours(hard, 3000);
    for (int i = 0; i < 20000; ++i) x.push_back(hard * (1 + std::ldexp(random.uniform(-1, 1), -random.integer(0, 52))));
  }
  if (f.lattice > 0)
    for (int k = 0; k < 65000; ++k) {
      const double boundary = f.lattice * (2 * k + 1);
      if (boundary > std::max(bound.high, -bound.low)) break;
      neighbours(boundary, 3);
      neighbours(-boundary, 3);
      neighbours(f.lattice * 2 * k, 2); // where the result or the reduced argument vanishes
      x.push_back(boundary + random.uniform(-0.05, 0.05));
    }
  std::erase_if(x, [&](double v) { return !(v >= bound.low && v <= bound.high); });
  return x;
}

TEST(VectorMath, ErrorsStayWithinTheStatedBounds) {
  const auto bounds = statedBounds();
  for (const Function& f : kFunctions)
    EXPECT_TRUE(std::any_of(bounds.begin(), bounds.end(), [&](auto& b) { return b.name == f.name; })) << f.name;
  for (const Bound& bound : bounds) {
    const Function& f = function(bound.name);
    ASSERT_LE(bound.ulp, 2.0); // those of powers; the others stay below 1
    double worst = 0, at = 0;
    for (double x : arguments(f, bound, 700000)) {
      const double error = errorInUlp(f.own(x), f.reference(x));
      if (error > worst) worst = error, at = x;
    }
    EXPECT_LE(worst, bound.ulp) << bound.name << " at " << std::hexfloat << at;
    EXPECT_GT(worst, 0.85 * bound.ulp) << bound.name << ": the bound says too little";
    RecordProperty(bound.name + " from " + std::to_string(bound.low), std::to_string(worst));
  }
}

TEST(VectorMath, SpecialValues) {
  for (const Function& f : kFunctions) {
    const std::string name = f.name;
    if (name.ends_with("Positive") || name == "exp2Clamped") continue;
    EXPECT_TRUE(std::isnan(f.own(kNaN)) && std::isnan(f.own(-kNaN))) << f.name;
    EXPECT_TRUE(std::isnan(f.own(vm::fromBits(0x7ff8000000000001u)))) << f.name; // bits beside the quiet one
    EXPECT_TRUE(std::isnan(f.own(vm::fromBits(0x7ff8000000000bffu)))) << f.name;
  }
  const double largest = 0x1.62e42fefa39efp+9; // argument of exp with a finite result
  for (auto exp : {function("exp").own, function("expClamped").own}) {
    for (double x : {0.0, -0.0, 5e-324, -5e-324}) EXPECT_EQ(exp(x), 1);
    for (double x : {std::nextafter(largest, kInf), 710.0, 1e300, kInf}) EXPECT_EQ(exp(x), kInf);
    EXPECT_TRUE(std::isfinite(exp(largest)));
  }
  for (double x : {-745.2, -1e300, -kInf}) EXPECT_EQ(vm::exp(x), 0);
  EXPECT_EQ(vm::exp(-745.13), 5e-324);
  for (double x : {-708.4, -1e5, -1e300, -kInf}) EXPECT_EQ(vm::expClamped(x), vm::exp(-708.3964185322637));
  EXPECT_GE(vm::expClamped(-kInf), 0x1p-1022);

  for (double x : {1024.0, 1e9, kInf}) EXPECT_EQ(vm::exp2Clamped(x), kInf);
  for (double x : {-1022.0, -1022.4, -1e300, -kInf}) EXPECT_EQ(vm::exp2Clamped(x), 0x1p-1022);

  for (auto log : {function("log").own, function("log10").own}) {
    EXPECT_EQ(log(0.0), -kInf);
    EXPECT_EQ(log(-0.0), -kInf);
    EXPECT_EQ(log(kInf), kInf);
    for (double x : {-5e-324, -1.0, -kInf}) EXPECT_TRUE(std::isnan(log(x))) << x;
  }
  for (int power = -307; power <= 308; ++power) // what a user writes as 1e-5 has the logarithm -5
    EXPECT_EQ(vm::log10(std::strtod(("1e" + std::to_string(power)).c_str(), nullptr)), power);
  for (auto log : {function("log").own, function("logPositive").own, function("log10").own}) {
    EXPECT_EQ(log(1.0), 0);
    EXPECT_FALSE(std::signbit(log(1.0)));
  }

  for (double x : {0.0, -0.0, 5e-324, 1e-9}) EXPECT_EQ(vm::cos(x), 1);
  for (double x : {std::nextafter(1e5, kInf), -1.1e5, 1e300, kInf, -kInf}) EXPECT_TRUE(std::isnan(vm::cos(x))) << x;

  EXPECT_EQ(vm::acos(1.0), 0);
  EXPECT_EQ(vm::acos(-1.0), 0x1.921fb54442d18p+1);
  for (double x : {0.0, -0.0, 5e-324, -5e-324}) EXPECT_EQ(vm::acos(x), 0x1.921fb54442d18p+0);
  for (double x : {1.0000000000000002, -1.0000000000000002, 1e300, -kInf}) EXPECT_TRUE(std::isnan(vm::acos(x))) << x;
}

TEST(VectorMath, FormsOfAKnownRangeHaveTheBitsOfTheGeneralOnes) {
  const auto below = function("expClamped"), above = function("log");
  for (double x : arguments(below, {"", 0, -760, 709}, 100000)) EXPECT_EQ(vm::expBelow(x), below.own(x)) << x;
  for (double x : arguments(above, {"", 0, 0x1p-1022, kInf}, 100000)) EXPECT_EQ(vm::logAbove(x), above.own(x)) << x;
  for (double x : arguments(below, {"", 0, -708, 708}, 100000)) EXPECT_EQ(vm::expInside(x), below.own(x)) << x;
  EXPECT_EQ(vm::expBelow(-kInf), vm::expClamped(-kInf));
  for (double y : {vm::expBelow(kNaN), vm::logAbove(kNaN), vm::logAbove(kInf) - kInf}) EXPECT_TRUE(std::isnan(y));
}

TEST(VectorMath, PowersAreAsExactAsTheirLogarithm) {
  Random random(67);
  double worst = 0;
  for (int i = 0; i < 2000000; ++i) {
    const double x = i % 2 == 0 ? random.uniform(0.5, 2) : std::ldexp(random.uniform(1, 2), random.integer(-990, 1000)),
                 t = random.uniform(-1, 1) * std::ldexp(1.0, random.integer(-8, 9)), y = t / std::log2(x);
    if (!std::isfinite(y)) continue;
    const long double exact = std::pow(static_cast<long double>(x), static_cast<long double>(y));
    worst = std::max(worst, (errorInUlp(vm::power(x, y), exact) - 1.2) / std::abs(t));
  }
  EXPECT_LE(worst, 1.95);
  EXPECT_GT(worst, 0.85 * 1.95);
  for (double x : {0.0, -1.0, -kInf, 1e-300, 1e-310}) EXPECT_EQ(vm::power(x, 0.5), vm::power(1e-300, 0.5)) << x;
  for (double x : {0.0, 1.0, 3.0, kInf}) EXPECT_EQ(vm::power(x, 0.0), 1) << x;
  EXPECT_EQ(vm::power(2.0, 1e9), kInf);
  EXPECT_EQ(vm::power(0.5, 1e9), 0x1p-1022);
}

TEST(VectorMath, SeriesOfTheLogarithmNearOne) {
  double worst = 0;
  for (double x = -0.375; x <= 0.6; x += 1.3e-6) {
    const double s = x / (2 + x), rest = s * s * vm::polynomial(s * s, vm::kNearLogCoefficients);
    worst = std::max(worst, errorInUlp(s * (2 + rest), std::log1p(static_cast<long double>(x))));
  }
  EXPECT_LE(worst, 2.8);
}

TEST(VectorMath, LogarithmsOfAPieceAreThoseOfItsPoints) {
  constexpr double least = 0x1p-1022, most = std::numeric_limits<double>::max();
  for (double special : {0.0, -0.0, -1.0, 0x1p-1074, least, -least, most, kInf, -kInf, kNaN, -kNaN, 2.0})
    for (int n : {1, 8, 13})
      for (int place = 0; place < n; ++place) {
        std::vector<double> x(n, 3.0);
        x[place] = special;
        EXPECT_EQ(vm::logOfPiece(n, x.data()), special == 2 || special == least || special == most) << special;
        for (int i = 0; i < n; ++i) {
          const double one = vm::log(i == place ? special : 3.0);
          EXPECT_TRUE(x[i] == one || (std::isnan(x[i]) && std::isnan(one))) << special << " at " << i;
        }
      }
}

TEST(VectorMath, HelpersTreatNaNAndSignedZeroAsDocumented) {
  EXPECT_EQ(vm::max(1, 2), 2);
  EXPECT_EQ(vm::min(1, 2), 1);
  for (auto pick :
       {+[](double a, double b) { return vm::max(a, b); }, +[](double a, double b) { return vm::min(a, b); }}) {
    EXPECT_EQ(pick(kNaN, 3), 3);
    EXPECT_TRUE(std::isnan(pick(3, kNaN)));
    EXPECT_TRUE(std::signbit(pick(0.0, -0.0)));
    EXPECT_FALSE(std::signbit(pick(-0.0, 0.0)));
  }
  EXPECT_EQ(vm::copysign(-3, 0.0), 3);
  EXPECT_EQ(vm::copysign(3, -0.0), -3);
  EXPECT_TRUE(std::signbit(vm::copysign(kNaN, -1.0)));
  EXPECT_EQ(vm::toBits(vm::abs(-0.0)), 0u);
  EXPECT_EQ(vm::blend(~uint64_t{0}, 1, 2), 1);
  EXPECT_EQ(vm::blend(0, 1, 2), 2);
}

} // namespace
