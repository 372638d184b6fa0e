// Lifecycle, frame services, end of the analysis and work storage against a recording host.
#include "acd.h"
#include "glo.h"
#include "spx.h"
#include "tests/support/recording_host.h"

namespace {

using namespace sharedanalysis::test;
class Frame : public testing::Test {
protected:
  void SetUp() override { resetRecordingHost(); }
};

// clang-format off
const char* const kComponents[] = {
    "QRLBasCoreUtils", "QRLAbuBasicUtils", "UTI_CaeUtils", "DDB_Communications", "UTI_RfmInterface", "DDB_ROM",
    "DDB_DiagnosticExtractor", "UTI_DMP_Core", "DDB_AnalysisSupport", "DDB_CoreGeometry", "DDB_GeometricAttributes",
    "DDB_Core", "Shared_Analysis_SubComp"};
// clang-format on

TEST_F(Frame, StartsOnceInOrderAndStopsInReverse) {
  // The recorded number is the counter that the component found: 10 before, one more for each live component.
  Calls starts, stops;
  for (int32_t k = 0; k < 13; ++k) {
    starts.push_back(std::string(kComponents[k]) + "_initialize " + std::to_string(10 + 1 + k));
    stops.insert(stops.begin(), std::string(kComponents[k]) + "_finalize " + std::to_string(10 + 1 + k));
  }

  int32_t counter = 10;
  Shared_Analysis_XP_initialize(&counter);
  EXPECT_EQ(counter, 10 + 1 + 13 + 3);
  EXPECT_EQ(takeCalls(), starts);

  Shared_Analysis_XP_initialize(&counter);
  Shared_Analysis_XP_finalize(&counter);
  EXPECT_EQ(counter, 27) << "a nested pair moves nothing";
  EXPECT_TRUE(takeCalls().empty());

  Shared_Analysis_XP_finalize(&counter);
  EXPECT_EQ(counter, 10);
  EXPECT_EQ(takeCalls(), stops);
}

TEST_F(Frame, AnUnbalancedFinaliseSwallowsTheNextInitialise) {
  const std::tuple<void (*)(int32_t*), void (*)(int32_t*), int32_t> pairs[] = {
      {glo_initialize, glo_finalize, 1},
      {acd_initialize, acd_finalize, 1},
      {spx_initialize, spx_finalize, 1},
      {Shared_Analysis_XP_initialize, Shared_Analysis_XP_finalize, 17}};
  for (const auto& [initialize, finalize, components] : pairs) {
    int32_t counter = 0;
    finalize(&counter), initialize(&counter);
    EXPECT_EQ(counter, 0);
    EXPECT_TRUE(takeCalls().empty());
    initialize(&counter);
    EXPECT_EQ(counter, components);
    finalize(&counter);
    EXPECT_EQ(counter, 0);
    takeCalls();
  }
}

TEST_F(Frame, ComponentsInUseElsewhereKeepRunning) {
  int32_t own = 0, counter = 0;
  glo_initialize(&own);
  Shared_Analysis_XP_initialize(&counter);
  EXPECT_EQ(counter, 16) << "glo was started before";
  Shared_Analysis_XP_finalize(&counter);
  EXPECT_EQ(counter, 0);
  EXPECT_EQ(own, 1);
  glo_finalize(&own);
  EXPECT_EQ(own, 0);
}

std::string procedureType(int32_t id, std::size_t length = 40) {
  std::string text(length, '#');
  GLO_GETPROCEDURETYPE(&id, text.data(), static_cast<int64_t>(length));
  while (!text.empty() && text.back() == ' ') text.pop_back();
  return text;
}

TEST_F(Frame, ProcedureTypes) {
  // clang-format off
  const std::map<std::string, std::vector<int32_t>> ids = {
      {"Static", {1, 2, 3, 4, 5, 6, 7}}, {"ImplicitDynamics", {11, 12}}, {"SubspaceDynamics", {13}},
      {"ExplicitDynamics", {17}}, {"Visco", {21, 22, 23, 24, 25}}, {"HeatTransfer", {31, 32, 33}},
      {"MassDiffusion", {34, 35, 36}}, {"Frequency", {41, 43}}, {"Buckle", {42, 44}}, {"StaticRiks", {51}},
      {"Geostatic", {61}}, {"Soils", {62, 63, 64, 65}}, {"CoupledTempDisplacement", {71, 72, 73}},
      {"TempDisplacementDynamics", {74}}, {"CoupledThermalElectric", {75, 76, 77, 78}},
      {"StaticLinearPerturbation", {81}}, {"SteadyStateDirect", {85, 86}}, {"ResponseSpectrum", {91}},
      {"ModalDynamics", {92}}, {"SteadyStateModal", {93, 95, 96}}, {"RandomResponse", {94}}, {"Anneal", {98}}};
  // clang-format on
  std::map<int32_t, std::string> expected;
  for (const auto& [step, list] : ids)
    for (int32_t id : list) expected[id] = "kprC_" + step + "Step";

  for (int32_t id = -3; id <= 120; ++id) {
    const bool known = expected.contains(id);
    EXPECT_EQ(procedureType(id), known ? expected[id] : "Unknown") << id;
    const Calls report = {"tvkerrC 1 UNKNOWN PROCEDURE TYPE ID: %I " + std::to_string(id)};
    EXPECT_EQ(takeCalls(), known ? Calls{} : report) << id;
  }
  EXPECT_EQ(procedureType(INT32_MIN), "Unknown");
  EXPECT_EQ(procedureType(17, 9), "kprC_Expl") << "cut";
  EXPECT_EQ(procedureType(17, 0), "");
}

TEST_F(Frame, VersionBanner) {
  const auto banner = [](std::size_t length) {
    std::string text(length, '#');
    GLO_UTI_GETVERSIONDATETIME(text.data(), static_cast<int64_t>(length));
    return text;
  };
  const std::string title = "Recorder 2", date = " DATE 21-Nov-2026  TIME 08:03:28";
  EXPECT_EQ(banner(80), title + std::string(80 - title.size() - date.size(), ' ') + date);
  EXPECT_EQ(banner(title.size() + date.size()), title + date);
  EXPECT_EQ(banner(title.size() + 9), title + date.substr(0, 9));
  EXPECT_EQ(banner(5), "Recor");
  EXPECT_EQ(banner(0), "");
  char untouched = '#';
  GLO_UTI_GETVERSIONDATETIME(&untouched, -1);
  EXPECT_EQ(untouched, '#');
}

TEST_F(Frame, EndOfAnalysis) {
  const std::string errors = "Aborted|Analysis failed due to Errors", none,
                    signal = "Interrupted|Analysis terminated by external signal";
  // clang-format off
  const struct {
    int32_t code, kill, rank;
    std::string record; // type and message
    int32_t jobStatus, termination;
  } cases[] = {{20, 0, 0, errors, 2, 1}, {21, 0, 0, errors, 2, -1}, {22, 0, 0, "Completed|Phase complete", 1, 0},
               {22, 1, 0, signal, 3, 0}, {20, 1, 0, signal, 3, 1},  {0, 0, 0, none, 0, 0},
               {23, 1, 0, signal, 3, 0}, {21, 0, 2, errors, 2, -1}};
  // clang-format on
  for (const auto& c : cases) {
    SCOPED_TRACE(c.code);
    recordingHost().killSignal = c.kill;
    recordingHost().rank = c.rank;
    GLO_UTI_EXIT(&c.code);
    EXPECT_TRUE(recordingHost().lines.empty());
    Calls expected, records;
    if (c.rank == 0) expected.push_back("DXT_SETJOBSTATUS_XPL " + std::to_string(c.jobStatus));
    if (c.record != none) {
      std::string type = c.record.substr(0, c.record.find('|')), message = c.record.substr(type.size() + 1);
      type.resize(20, ' ');
      message.resize(80, ' ');
      records = {"IPM_MESSAGE|" + type + "|message=%S|" + message};
      expected.emplace_back("IPM_MESSAGE");
    }
    EXPECT_EQ(takeStatuses(), records);
    expected.insert(expected.end(), {"LFC_XUT_XPLMSGFLUSH -6", "LFC_XUT_XPLMSGFLUSH -7", "SetClosing true"});
    if (c.termination != 0)
      expected.insert(expected.end(), {"DMPC_TERMINATECOMM " + std::to_string(c.termination), "thr_ErrorInThread 1"});
    EXPECT_EQ(takeCalls(), expected);
  }
}

TEST_F(Frame, StorageRequests) {
  constexpr int32_t kNone = 134217729;
  using Result = std::pair<int32_t, int32_t>; // position, and the offset afterwards
  using Request = decltype(&GLO_UTI_ALLO);
  const auto ask = [](Request request, int32_t offset, int32_t size) {
    int32_t position = -1;
    request(&offset, &position, &size);
    return Result{position, offset};
  };
  const auto check = [](int32_t limit, int32_t offset, int32_t size) {
    int32_t position = -1;
    GLO_UTI_ALLOCHECK(&limit, &offset, &position, &size);
    return Result{position, offset};
  };
  // aligned, and beyond the numbers there are
  const std::tuple<int32_t, int32_t, Result> requests[] = {{5, 10, {9, 18}},
                                                           {8, 1, {9, 9}},
                                                           {5, 0, {kNone, 5}},
                                                           {INT32_MAX - 4, 4, {kNone, INT32_MAX}},
                                                           {INT32_MAX, 1, {kNone, INT32_MAX}}};
  for (const auto& [offset, size, expected] : requests)
    for (Request aligned : {GLO_UTI_ALLO, GLO_UTI_ALLOOLD}) EXPECT_EQ(ask(aligned, offset, size), expected) << size;
  EXPECT_EQ(ask(GLO_UTI_ALLOSEQ, 5, 10), Result(6, 15));
  EXPECT_EQ(ask(GLO_UTI_ALLOSEQ, 5, 0), Result(kNone, 5));
  EXPECT_EQ(check(18, 5, 10), Result(9, 18));
  for (int32_t limit : {17, 16}) EXPECT_EQ(check(limit, 5, 10), Result(kNone, 18)) << "refused, the offset advanced";
  EXPECT_EQ(check(0, 5, 0), Result(kNone, 5));
  EXPECT_EQ(check(INT32_MAX, INT32_MAX, 1), Result(kNone, INT32_MAX));
  expectSilence();

  for (Request request : {GLO_UTI_ALLO, GLO_UTI_ALLOOLD, GLO_UTI_ALLOSEQ}) {
    EXPECT_EQ(ask(request, 5, -3), Result(kNone, 2));
    EXPECT_EQ(takeCalls(), (Calls{"LFC_XUT_ERRMSG A negative storage request value is not allowed.", "LFC_XUT_ABORT"}));
  }
  EXPECT_EQ(check(100, 5, -3), Result(kNone, 2));
  EXPECT_EQ(takeCalls(), (Calls{"LFC_XUT_ERRMSG Negative storage request value is not allowed.", "LFC_XUT_ABORT"}));
}

TEST_F(Frame, Addresses) {
  const int32_t integer = 0;
  const double real = 0;
  int64_t p = 0, q = 0;
  GLO_UTI_SETPOINTERI(&integer, &p);
  EXPECT_EQ(GLO_UTI_GETPOINTER(&p), &integer);
  GLO_UTI_SETPOINTERR(&real, &p);
  GLO_UTI_SETPOINTER(&p, &q);
  EXPECT_EQ(GLO_UTI_GETPOINTER(&q), &real);
}

} // namespace
