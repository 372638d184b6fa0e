// The work-in-progress reporter against a host that records.
#include "spx_WipReporter.h"
#include "tests/support/files.h"
#include "tests/support/recording_host.h"

namespace {

using namespace sharedanalysis::test;

struct Stream : aio_ostream {
  std::string text;
  void write(std::string_view piece) override { text += piece; }
};

class Reporter : public testing::Test {
protected:
  void SetUp() override { resetRecordingHost(); }
  static std::string thrown(const auto& call) { return sharedanalysis::test::thrown<aio_TextException>(call); }

  Stream stream_;
  spx_WipReporter reporter_{stream_};
};

TEST_F(Reporter, LongTextsAreCutAtTheirLastBlank) {
  const std::string words = std::string(400, 'a') + " " + std::string(73, 'b') + " "; // 475 characters
  reporter_.Error(words.substr(0, 474) + "c", 1);
  Calls written = takeMessages();
  ASSERT_EQ(written.size(), 1u);
  EXPECT_EQ(written[0].back(), 'c');
  reporter_.Error(words + "c", 0);
  written = takeMessages();
  ASSERT_EQ(written.size(), 2u);
  EXPECT_TRUE(written[0].ends_with(std::string(73, 'b')));
  EXPECT_EQ(written[1], "***WARNING: Error message is too long. It has been truncated.");
  reporter_.Warning(std::string(600, 'x'));
  EXPECT_EQ(takeMessages(), (Calls{"***WARNING: " + std::string(475, 'x'),
                                   "***WARNING: Warning message is too long. It has been truncated."}));
  reporter_.Error("  " + std::string(600, 'y'), 0);
  EXPECT_TRUE(recordingHost().lines[1].text.starts_with("***ERROR:   ")) << "leading blanks are no place to cut";
  written = takeMessages();
  EXPECT_EQ(std::count(written[0].begin(), written[0].end(), 'y'), 473);
}

TEST_F(Reporter, ModesDecideWhetherAnErrorIsWrittenOrRaised) {
  for (int mode : {0, 1, 2}) EXPECT_EQ(thrown([&] { reporter_.Error("one", mode); }), "nothing");
  EXPECT_EQ(takeMessages(), (Calls{"***ERROR: one", "***ERROR: one", "***ERROR: one"}));
  EXPECT_EQ(recordingHost().statuses.size(), 3u);
  EXPECT_EQ(thrown([&] { reporter_.Error(std::string(500, 'y'), 3); }), std::string(475, 'y'));
  try {
    reporter_.Error("where", 3);
  } catch (const aio_TextException& error) {
    EXPECT_TRUE(error.file() == std::string("spx_WipReporter") && error.line() > 0) << error.file();
  }

  const std::vector<std::string> texts{"one", "two"};
  const std::string multiple = "Multiple error messages.";
  EXPECT_EQ(thrown([&] { reporter_.Errors(texts, 1); }), "nothing");
  EXPECT_EQ(takeMessages(), (Calls{"***ERROR: one", "***ERROR: two"}));
  EXPECT_EQ(thrown([&] { reporter_.Errors(texts, 0); }), multiple);
  EXPECT_EQ(takeMessages(), (Calls{"***ERROR: one", "***ERROR: two"}));
  EXPECT_EQ(thrown([&] { reporter_.Errors(texts, 2); }), multiple);
  EXPECT_EQ(thrown([&] { reporter_.Errors(texts, 7); }), "one");
  EXPECT_EQ(thrown([&] { reporter_.Errors({}, 7); }), multiple);
  EXPECT_EQ(takeMessages(), Calls());
}

TEST_F(Reporter, TextsAreNoTemplates) {
  reporter_.Error("100 %I of %S", 0);
  reporter_.Warnings({"50 %", "%R"});
  reporter_.Note("%%");
  EXPECT_EQ(takeMessages(), (Calls{"***ERROR: 100 %I of %S", "***WARNING: 50 %", "***WARNING: %R", "***NOTE: %%"}));
  // with percent signs texts are as without, whatever their length: leading blanks, ends, zero bytes
  const Calls texts{"  led by blanks", std::string(1200, 'n') + " end", "", "ends with ", std::string("a\0b", 3)};
  for (const std::string& text : texts) {
    reporter_.Note(text);
    const Calls plain = takeLines();
    std::string signs = text;
    std::replace(signs.begin(), signs.end(), 'n', '%');
    reporter_.Note(signs);
    Calls written = takeLines();
    for (std::string& line : written) std::replace(line.begin(), line.end(), '%', 'n');
    EXPECT_EQ(written, plain);
  }
  reporter_.Note(std::string("a\0%b", 4));
  EXPECT_EQ(takeMessages(), Calls{"***NOTE: a %b"});
  // notes do not reach the status channel
  EXPECT_EQ(takeStatuses().size(), 3u);
}

TEST_F(Reporter, OperationsOfInteractiveProgramsAreAssertions) {
  EXPECT_EQ(thrown([&] { reporter_.Verbose(""); }), "\"Verbose is unimplemented\" == 0");
  EXPECT_EQ(thrown([&] { reporter_.Display(""); }), "\"Display is unimplemented\" == 0");
  EXPECT_EQ(thrown([&] { reporter_.Interrupted(); }), "\"Interrupted is unimplemented\" == 0");
  EXPECT_EQ(thrown([&] { reporter_.CommandDone(); }), "\"CommandDone is unimplemented\" == 0");
  EXPECT_THROW(reporter_.Display(""), aio_AssertionException);
  wip_WipReporter& base = reporter_;
  base.BeginPhase("p"), base.EndPhase("p"), base.Milestone("m", 1, 2), base.Progress(0.5);
  base.FacilityMessage("solver", "started");
  EXPECT_EQ(stream_.text, "solver: started\n");
  EXPECT_EQ(takeMessages(), Calls());
}

} // namespace
