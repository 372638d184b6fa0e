// Messages about marked elements, the continuum shell's test, and the material variables of threads.
#include "dia_Codes.h"
#include "spx.h"
#include "tests/support/random.h"
#include "tests/support/recording_diagnostics.h"
#include "tests/support/recording_host.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <thread>

namespace {

using namespace sharedanalysis::test;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

class Distortion : public testing::Test {
protected:
  void SetUp() override {
    resetRecordingHost();
    resetRecordingDiagnostics();
  }
  static int count(const char* beginning) {
    int number = 0;
    for (const RecordedLine& line : recordingHost().lines) number += line.text.starts_with(beginning) ? 1 : 0;
    return number;
  }
  static int recorded() {
    int number = 0;
    for (const std::string& call : recordingDiagnostics().calls) number += call.starts_with("Xpl AddError") ? 1 : 0;
    return number;
  }
};

TEST_F(Distortion, EightMessagesOfACounterAndAllOfThemCounted) {
  std::vector<int32_t> elements(12);
  std::vector<double> flags(12, 1.0);
  for (int e = 0; e < 12; ++e) elements[e] = 2001 + e;
  flags[0] = flags[5] = 0.0;
  flags[1] = -1.0, flags[2] = kNaN;
  int32_t counter = 0, n = 12;
  SPX_ERR_DISTORTED(&n, &counter, elements.data(), flags.data());
  EXPECT_EQ(counter, 10);
  EXPECT_EQ(count("***ERROR:"), 8);
  EXPECT_EQ(recorded(), 8);
  EXPECT_EQ(recordingHost().lines[0].text + recordingHost().lines[1].text, "  "); // two blank lines come first
  EXPECT_EQ(recordingHost().lines[3].text, "***ERROR: Excessive distortion of element number 2002");
  EXPECT_EQ(recordingHost().statuses.size(), 8u);
  EXPECT_EQ(recordingDiagnostics().calls[1], "Xpl AddError 42010020 0 ( ePART-1-1:2002 )");

  resetRecordingHost();
  n = 4; // the first is sound
  SPX_ERR_DISTORTED(&n, &counter, elements.data(), flags.data());
  EXPECT_EQ(counter, 13);
  EXPECT_TRUE(recordingHost().lines.empty());

  // nothing marked: the blank lines alone; the last counter is kept from overflowing
  counter = 8, n = 1;
  SPX_ERR_DISTORTED(&n, &counter, elements.data(), flags.data());
  EXPECT_EQ(recordingHost().lines.size(), 2u);
  counter = std::numeric_limits<int32_t>::max(), n = 12;
  SPX_ERR_DISTORTED(&n, &counter, elements.data(), flags.data());
  EXPECT_EQ(counter, std::numeric_limits<int32_t>::max());
}

TEST_F(Distortion, ThreadsShareACounter) {
  const std::vector<int32_t> elements(128, 2001);
  const std::vector<double> flags(elements.size(), 1.0);
  int32_t counter = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&] {
      const auto n = static_cast<int32_t>(elements.size());
      for (int call = 0; call < 1000; ++call) SPX_ERR_EXCESSROT(&n, &counter, elements.data(), flags.data());
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(counter, 4 * 1000 * 128);
  EXPECT_EQ(recorded(), 8);
}

TEST_F(Distortion, ElementsOfInstancesAreNamedByThem) {
  recordingDiagnostics().inParts = true;
  const int32_t elements[] = {2005, 9001}, n = 2;
  const double flags[] = {1, 1};
  int32_t counter = 0;
  SPX_ERR_EXCESSROT(&n, &counter, elements, flags);
  ASSERT_EQ(recordingHost().lines.size(), 7u); // two and one lines, each message between blank lines of its own
  EXPECT_EQ(recordingHost().lines[1].text, "***ERROR: Excessive incremental rotation of element number 5 of instance ");
  EXPECT_EQ(recordingHost().lines[2].text, "          Wheel-1.");
  EXPECT_EQ(recordingHost().lines[5].text, "***ERROR: Excessive incremental rotation of element number 9001.");
  EXPECT_EQ(recordingDiagnostics().calls[1], "Xpl AddError 42010040 0 ( eINST:5 )");
}

TEST_F(Distortion, FamiliesFindTheirFlagsInTheWorkArray) {
  using Writer = void (*)(const int32_t*, int32_t*, const int32_t*, const int32_t*, const double*);
  const struct {
    Writer writer;
    int field;
    const char* text;
  } cases[] = {{SPX_ELE_CDISTORTED, 7, "***ERROR: Excessive distortion of element number 11"},
               {SPX_ELE_CDISTORTEDPAC, 7, "***ERROR: Element number 11 is excessively distorted. Please check"},
               {SPX_ELE_CEXCESSROT, 7, "***ERROR: Excessive incremental rotation of element number 11."},
               {SPX_ELE_SDISTORTED, 6, "***ERROR: Excessive distortion of element number 11"},
               {SPX_ELE_SDISTORTEDPAC, 6, "***ERROR: Element number 11 is excessively distorted. Please check"},
               {SPX_ELE_SEXCESSROT, 6, "***ERROR: Excessive incremental rotation of element number 11."}};
  const int32_t elements[] = {10, 11, 12}, n = 3;
  for (const auto& c : cases) {
    resetRecordingHost();
    int32_t header[] = {99, 99, 99, 99, 99, 99, 99}, counter = 0;
    header[c.field - 1] = 5;
    const double work[] = {9, 9, 9, 9, 0, 1, 0, 9};
    c.writer(&n, &counter, elements, header, work);
    EXPECT_EQ(counter, 1);
    EXPECT_EQ(count(c.text), 1) << c.text;
  }
}

TEST_F(Distortion, LongTextsNameWhatToLookFor) {
  const int32_t element = 7, n = 1;
  const double flag = 1;
  int32_t counter = 0;
  SPX_ERR_DISTORTEDPAC(&n, &counter, &element, &flag);
  std::string text;
  for (const RecordedLine& line : recordingHost().lines)
    if (line.text != " ") text += line.text.substr(line.text.find_first_not_of(' '));
  EXPECT_TRUE(
      text.starts_with("***ERROR: Element number 7 is excessively distorted. Please check the nodal coordinates "
                       "of nodes of this element. Also, please check"));
  EXPECT_TRUE(text.ends_with("consistency, making sure that there are no common nodes between the slave and master "
                             "surfaces."));
}

// ---- continuum shell

struct Shell {
  double t[4] = {0.1, 0.1, 0.1, 0.1}, a = 1, b = 1;
  double X[8][3] = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 0.1}, {1, 0, 0.1}, {1, 1, 0.1}, {0, 1, 0.1}};
  // Whether the test marks it, in the middle of a block of sound elements.
  bool marked(double flag = 0.0) const {
    constexpr int n = 5, at = 2;
    std::vector<double> thickness(4 * n), lengths(2 * n), X8(24 * n), flags(n, 0.0);
    const Shell sound;
    for (int e = 0; e < n; ++e) {
      const Shell& s = e == at ? *this : sound;
      for (int k = 0; k < 4; ++k) thickness[k * n + e] = s.t[k];
      lengths[e] = s.a, lengths[n + e] = s.b;
      for (int c = 0; c < 3; ++c)
        for (int node = 0; node < 8; ++node) X8[(8 * c + node) * n + e] = s.X[node][c];
    }
    flags[at] = flag;
    SPX_OPE_SC3DDISTORTIONCHECK(&n, thickness.data(), lengths.data(), lengths.data() + n, X8.data(), flags.data());
    for (int e = 0; e < n; ++e) EXPECT_TRUE(e == at || flags[e] == 0.0);
    EXPECT_TRUE(flags[at] == 0.0 || flags[at] == 1.0 || flags[at] == flag);
    return flags[at] != 0.0;
  }
  template <class Map>
  Shell moved(int first, int end, Map map) const {
    Shell result = *this;
    for (int node = first; node < end; ++node) {
      const std::array<double, 3> x = map(X[node][0], X[node][1], X[node][2]);
      for (int c = 0; c < 3; ++c) result.X[node][c] = x[c];
    }
    return result;
  }
};

TEST(ContinuumShell, ThinAndTurnedOverElementsAreMarked) {
  const Shell sound;
  EXPECT_FALSE(sound.marked());
  EXPECT_TRUE(sound.marked(1.0)); // a flag is never cleared
  EXPECT_TRUE(sound.marked(-3.0));
  for (double t : {0.0011, 0.0009, 0.0, -0.1}) { // against a thousandth of the lengths
    Shell thin;
    thin.t[3] = t;
    EXPECT_EQ(thin.marked(), t < 0.001) << t;
  }
  for (double Shell::*length : {&Shell::a, &Shell::b}) {
    Shell unknown;
    unknown.*length = kNaN;
    EXPECT_TRUE(unknown.marked());
  }
  for (int corner = 0; corner < 4; ++corner) {
    Shell unknown;
    unknown.t[corner] = kNaN;
    EXPECT_TRUE(unknown.marked()) << corner;
  }
  for (int c = 0; c < 24; ++c) {
    Shell unknown;
    unknown.X[c / 3][c % 3] = kNaN;
    EXPECT_TRUE(unknown.marked()) << c;
  }
  // the top face turned over, about every axis of its plane
  for (double angle = 0; angle < 3.14; angle += 0.05)
    EXPECT_TRUE(sound
                    .moved(4, 8,
                           [=](double x, double y, double z) {
                             const double c = std::cos(2 * angle), s = std::sin(2 * angle);
                             x -= 0.5, y -= 0.5;
                             return std::array{0.5 + c * x + s * y, 0.5 + s * x - c * y, z};
                           })
                    .marked())
        << angle;
  // one corner of the top face pulled over its diagonal
  EXPECT_TRUE(sound.moved(6, 7, [](double, double, double z) { return std::array{-0.5, -0.5, z}; }).marked());
  EXPECT_TRUE(sound.moved(6, 7, [](double x, double y, double) { return std::array{x, y, kNaN}; }).marked());
}

TEST(ContinuumShell, MotionAndStretchOfTheWholeElementMarkNothing) {
  Random random(3);
  for (int round = 0; round < 500; ++round) {
    Matrix R;
    randomRotation(random, R);
    const double sx = random.uniform(0.2, 5), sy = random.uniform(0.2, 5), shear = random.uniform(-2, 2);
    const Shell moved = Shell().moved(0, 8, [&](double x, double y, double z) {
      const double p[] = {sx * x + shear * y, sy * y, z + 0.1 * x};
      std::array<double, 3> q{};
      for (std::size_t i = 0; i < 3; ++i) q[i] = 10 + R[i][0] * p[0] + R[i][1] * p[1] + R[i][2] * p[2];
      return q;
    });
    EXPECT_FALSE(moved.marked());
  }
}

// ---- material variables

TEST(MaterialVariables, EachThreadHasItsOwn) {
  const auto use = [](int64_t start) {
    (void)SPX_MATVARGETREAL(); // reading before setting is allowed
    int64_t addresses[9];
    int32_t ints[3];
    for (int round = 0; round < 1000; ++round) {
      for (int k = 0; k < 9; ++k) addresses[k] = start + round + k;
      for (int k = 0; k < 3; ++k) ints[k] = static_cast<int32_t>(start) + k;
      const double real = 0.5 * static_cast<double>(start);
      SPX_MATVARSETVAR(addresses, ints, &real);
      ASSERT_EQ(SPX_MATVARGETPTR()[8], start + round + 8);
      ASSERT_EQ(SPX_MATVARGETINT()[2], start + 2);
      ASSERT_EQ(*SPX_MATVARGETREAL(), real);
      *SPX_MATVARGETREAL() = 7; // the record itself, not a copy
      ASSERT_EQ(*SPX_MATVARGETREAL(), 7);
    }
  };
  for (int generation = 0; generation < 3; ++generation) { // all threads end; later ones begin afresh
    std::vector<std::thread> threads;
    for (int64_t t = 0; t < 4; ++t) threads.emplace_back(use, 1000 * t);
    for (std::thread& thread : threads) thread.join();
  }
  use(5);
}

} // namespace
