// Messages about marked elements, and the material variables of threads.
#include "dia_Codes.h"
#include "spx.h"
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
