// Messages about marked elements, the continuum shell's test, and the material variables of threads.
#include "dia_Codes.h"
#include "spx.h"
#include "tests/support/random.h"
#include "tests/support/recording_diagnostics.h"
#include "tests/support/threads.h"

namespace {

using namespace sharedanalysis::test;

class Distortion : public RecordedDiagnostics {
protected:
  static int64_t recorded() {
    const Calls& calls = recordingDiagnostics().calls;
    return std::ranges::count_if(calls, [](const std::string& call) { return call.starts_with("Xpl AddError"); });
  }
};

TEST_F(Distortion, EightMessagesOfACounterAndAllOfThemCounted) {
  std::vector<int32_t> elements(12);
  std::iota(elements.begin(), elements.end(), 2001);
  const double flags[12] = {0, -1, kNaN, 1, 1, 0, 1, 1, 1, 1, 1, 1};
  int32_t counter = 0, n = 12;
  SPX_ERR_DISTORTED(&n, &counter, elements.data(), flags);
  EXPECT_EQ(counter, 10);
  EXPECT_EQ(recorded(), 8);
  EXPECT_EQ(recordingDiagnostics().calls[1], "Xpl AddError 42010020 0 ( ePART-1-1:2002 )");
  EXPECT_EQ(recordingHost().lines[0].text + recordingHost().lines[1].text, "  "); // two blank lines come first
  const Calls messages = takeMessages();
  ASSERT_EQ(messages.size(), 8u);
  EXPECT_TRUE(messages[0].starts_with("***ERROR: Excessive distortion of element number 2002")) << messages[0];
  EXPECT_EQ(recordingHost().statuses.size(), 8u);

  resetRecordingHost();
  n = 4; // the first is sound
  SPX_ERR_DISTORTED(&n, &counter, elements.data(), flags);
  EXPECT_EQ(counter, 13);
  expectSilence();

  // nothing marked: the blank lines alone; the last counter is kept from overflowing
  counter = 8, n = 1;
  SPX_ERR_DISTORTED(&n, &counter, elements.data(), flags);
  EXPECT_EQ(takeLines(), (Calls{" ", " "}));
  counter = INT32_MAX, n = 12;
  SPX_ERR_DISTORTED(&n, &counter, elements.data(), flags);
  EXPECT_EQ(counter, INT32_MAX);
}

TEST_F(Distortion, ThreadsShareACounter) {
  const std::vector<int32_t> elements(128, 2001);
  const std::vector<double> flags(elements.size(), 1.0);
  int32_t counter = 0;
  runThreads(4, [&](int) {
    const int32_t n = 128;
    for (int call = 0; call < 1000; ++call) SPX_ERR_EXCESSROT(&n, &counter, elements.data(), flags.data());
  });
  EXPECT_EQ(counter, 4 * 1000 * 128);
  EXPECT_EQ(recorded(), 8);
}

TEST_F(Distortion, ElementsOfInstancesAreNamedByThem) {
  recordingDiagnostics().inParts = true;
  const int32_t elements[] = {2005, 9001}, n = 2;
  const double flags[] = {1, 1};
  int32_t counter = 0;
  SPX_ERR_EXCESSROT(&n, &counter, elements, flags);
  // two and one lines, each message between blank lines of its own
  EXPECT_EQ(takeLines(), (Calls{" ", "***ERROR: Excessive incremental rotation of element number 5 of instance ",
                                "          Wheel-1.", " ", " ",
                                "***ERROR: Excessive incremental rotation of element number 9001.", " "}));
  EXPECT_EQ(recordingDiagnostics().calls[1], "Xpl AddError 42010040 0 ( eINST:5 )");
}

TEST_F(Distortion, FamiliesFindTheirFlagsInTheWorkArray) {
  const std::string distorted = "Excessive distortion of element number 11",
                    check = "Element number 11 is excessively distorted. Please check the nodal coordinates of nodes "
                            "of this element. Also, please check",
                    turned = "Excessive incremental rotation of element number 11.";
  const struct {
    decltype(&SPX_ELE_CDISTORTED) writer;
    int field;
    std::string text;
  } cases[] = {{SPX_ELE_CDISTORTED, 7, distorted}, {SPX_ELE_CDISTORTEDPAC, 7, check}, {SPX_ELE_CEXCESSROT, 7, turned},
               {SPX_ELE_SDISTORTED, 6, distorted}, {SPX_ELE_SDISTORTEDPAC, 6, check}, {SPX_ELE_SEXCESSROT, 6, turned}};
  const int32_t elements[] = {10, 11, 12}, n = 3;
  const double work[] = {9, 9, 9, 9, 0, 1, 0, 9};
  for (const auto& c : cases) {
    int32_t header[] = {99, 99, 99, 99, 99, 99, 99}, counter = 0;
    header[c.field - 1] = 5;
    c.writer(&n, &counter, elements, header, work);
    EXPECT_EQ(counter, 1);
    const Calls messages = takeMessages();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_TRUE(messages[0].starts_with("***ERROR: " + c.text)) << messages[0];
    EXPECT_TRUE(c.text != check ||
                messages[0].ends_with("consistency, making sure that there are no common nodes between the slave and "
                                      "master surfaces."));
  }
}

// ---- continuum shell

// Four thicknesses, two lengths and the coordinates x, y, z of eight corners.
struct Shell {
  std::array<double, 30> values = {0.1,       0.1, 0.1, 0.1, 1, 1, /* x */ 0, 1, 1,         0, 0, 1, 1,   0,
                                   /* y */ 0, 0,   1,   1,   0, 0, 1,         1, /* z */ 0, 0, 0, 0, 0.1, 0.1,
                                   0.1,       0.1};
  // Whether the test marks it, in the middle of a block of sound elements.
  bool marked(double flag = 0.0) const {
    constexpr int n = 5, at = 2;
    std::vector<double> all(30 * n), flags(n, 0.0);
    for (int k = 0; k < 30 * n; ++k) all[k] = (k % n == at ? *this : Shell()).values[k / n];
    flags[at] = flag;
    SPX_OPE_SC3DDISTORTIONCHECK(&n, &all[0], &all[4 * n], &all[5 * n], &all[6 * n], flags.data());
    for (int e = 0; e < n; ++e) EXPECT_TRUE(e == at || flags[e] == 0.0);
    EXPECT_TRUE(flags[at] == 0.0 || flags[at] == 1.0 || flags[at] == flag);
    return flags[at] != 0.0;
  }
  Shell with(int k, double value) const {
    Shell result = *this;
    result.values[k] = value;
    return result;
  }
  template <class Map>
  Shell moved(int first, int end, Map map) const {
    Shell result = *this;
    for (int node = first; node < end; ++node) {
      const std::array<double, 3> x = map(values[6 + node], values[14 + node], values[22 + node]);
      for (int c = 0; c < 3; ++c) result.values[6 + 8 * c + node] = x[c];
    }
    return result;
  }
};

TEST(ContinuumShell, ThinAndTurnedOverElementsAreMarked) {
  const Shell sound;
  EXPECT_FALSE(sound.marked());
  EXPECT_TRUE(sound.marked(1.0)); // a flag is never cleared
  EXPECT_TRUE(sound.marked(-3.0));
  for (double t : {0.0011, 0.0009, 0.0, -0.1}) // against a thousandth of the lengths
    EXPECT_EQ(sound.with(3, t).marked(), t < 0.001) << t;
  for (int k = 0; k < 30; ++k) EXPECT_TRUE(sound.with(k, kNaN).marked()) << k;
  // the top face turned over, about every axis of its plane
  for (double angle = 0; angle < 3.14; angle += 0.05) {
    const double c = std::cos(2 * angle), s = std::sin(2 * angle);
    const Shell over = sound.moved(4, 8, [=](double x, double y, double z) {
      return std::array{0.5 + c * (x - 0.5) + s * (y - 0.5), 0.5 + s * (x - 0.5) - c * (y - 0.5), z};
    });
    EXPECT_TRUE(over.marked()) << angle;
  }
  // one corner of the top face pulled over its diagonal
  EXPECT_TRUE(sound.moved(6, 7, [](double, double, double z) { return std::array{-0.5, -0.5, z}; }).marked());
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
  const auto use = [](int thread) {
    const int start = 1000 * thread;
    (void)SPX_MATVARGETREAL(); // reading before setting is allowed
    const int32_t ints[] = {start, start + 1, start + 2};
    const double real = 0.5 * start;
    for (int round = 0; round < 1000; ++round) {
      int64_t addresses[9];
      std::iota(addresses, addresses + 9, start + round);
      SPX_MATVARSETVAR(addresses, ints, &real);
      ASSERT_EQ(SPX_MATVARGETPTR()[8], start + round + 8);
      ASSERT_EQ(SPX_MATVARGETINT()[2], start + 2);
      ASSERT_EQ(*SPX_MATVARGETREAL(), real);
      *SPX_MATVARGETREAL() = 7; // the record itself, not a copy
      ASSERT_EQ(*SPX_MATVARGETREAL(), 7);
    }
  };
  for (int generation = 0; generation < 3; ++generation) runThreads(4, use); // all end; later ones begin afresh
  use(5);
}

} // namespace
