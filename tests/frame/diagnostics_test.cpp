// The diagnostic entries against a host that records every call.
#include "acd.h"
#include "acd_TypeClass.h"
#include "dia_Codes.h"
#include "host_services.h"
#include "tests/support/recording_diagnostics.h"

namespace {

using namespace sharedanalysis::test;

class Diagnostics : public RecordedDiagnostics {
protected:
  static Calls printed() { return takeLines(7); }
};

const int32_t kInts[] = {7, -8, 9}, kNode[] = {1005}, kElement[] = {2077}, kNodes[] = {1001, 1002};
const double kReals[] = {1.5, -2.5};
const char* const kString[] = {" L12"};

TEST_F(Diagnostics, CourseAndSettingsReachTheExtractors) {
  const int32_t three = 3, zero = 0, minusOne = -1, nine[] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  const double step = 0.25, four[] = {1, 2, 3, 4};
  const char name[] = "Step-1      ";
  const int64_t length = sizeof name - 1;
  // clang-format off
  const struct {
    Calls expected;
    std::function<void()> lower, upper;
  } cases[] = {
      {{"BeginStep 3 Step-1 0 1 0"},
       [] { acd_begin_step_c(3, "Step-1", 0, -4, 0); },
       [&] { ACD_BEGIN_STEP(&three, name, &zero, &minusOne, &zero, length); }},
      {{"Xpl BeginStep 3 Step-1 0"},
       [] { acd_begin_step_xpl_c(3, "Step-1", 0); },
       [&] { ACD_BEGIN_STEP_XPL(&three, name, &zero, length); }},
      {{"EndStep", "Xpl EndStep"},
       [] { acd_end_step_c(), acd_end_step_xpl_c(); },
       [] { ACD_END_STEP(), ACD_END_STEP_XPL(); }},
      {{"Xpl BeginIncrement 3 0.25", "Xpl EndIncrement 0.25 1"},
       [] { acd_begin_increment_xpl_c(3, 0.25), acd_end_increment_xpl_c(0.25, -1); },
       [&] { ACD_BEGIN_INCREMENT_XPL(&three, &step), ACD_END_INCREMENT_XPL(&step, &minusOne); }},
      {{"BeginContactIteration", "EndContactIteration"},
       [] { acd_begin_contact_iteration_c(), acd_end_contact_iteration_c(); },
       [] { ACD_BEGIN_CONTACT_ITERATION(), ACD_END_CONTACT_ITERATION(); }},
      {{"SetIterationConverged 1", "SetContactIterationConverged 0", "SetAttemptNeedsReordering 1"},
       [] { acd_set_iter_converged_c(3), acd_set_contiter_converged_c(0), acd_set_attm_needsreordering_c(3); },
       [&] { ACD_SET_ITER_CONVERGED(&three), ACD_SET_CONTITER_CONVERGED(&zero),
               ACD_SET_ATTM_NEEDSREORDERING(&three); }},
      {{"SetIterationSevereDiscontinuity 1", "SetIterationPenetrationToleranceExceeded 1"},
       [] { acd_set_iter_severediscont_c(1), acd_set_iter_pentolexceeded_c(1); },
       [&] { ACD_SET_ITER_SEVEREDISCONT(&three), ACD_SET_ITER_PENTOLEXCEEDED(&three); }},
      {{"SetIterationSeparationToleranceTooLarge 0", "SetRenumbered 1", "Xpl SetRenumbered 0"},
       [] { acd_set_iter_septoltoolarge_c(0), acd_set_renumbered_c(1), acd_set_renumbered_xpl_c(0); },
       [&] { ACD_SET_ITER_SEPTOLTOOLARGE(&zero), ACD_SET_RENUMBERED(&three), ACD_SET_RENUMBERED_XPL(&zero); }},
      {{"SetDdbName Step-1", "Xpl SetDdbName Step-1"},
       [] { acd_set_ddbname_c("Step-1"), acd_set_ddbname_xpl_c("Step-1"); },
       [&] { ACD_SET_DDBNAME(name, length), ACD_SET_DDBNAME_XPL(name, length); }},
      {{"Xpl SetNumDomains 3", "Xpl SetXplDoublePrecision 1", "Xpl SetValid 1"},
       [] { acd_set_numdomains_xpl_c(3), acd_set_precision_xpl_c(1), acd_set_valid_xpl_c(); },
       [&] { ACD_SET_NUMDOMAINS_XPL(&three), ACD_SET_PRECISION_XPL(&three), ACD_SET_VALID_XPL(); }},
      {{"SetStepStabilizeFactor 0.25", "Xpl SetActiveXplStatus 1 9"},
       [&] { acd_set_step_stabilizefactor_c(0.25), acd_activestatus_xpl_c(nine); },
       [&] { ACD_SET_STEP_STABILIZEFACTOR(&step), ACD_ACTIVESTATUS_XPL(nine); }},
      {{"Enable", "Xpl Enable", "Disable", "Xpl Disable"},
       [] { acd_enable_c(), acd_enable_xpl_c(), acd_disable_c(), acd_disable_xpl_c(); },
       [] { ACD_ENABLE(), ACD_ENABLE_XPL(), ACD_DISABLE(), ACD_DISABLE_XPL(); }},
      {{"AddResidualDiagnostic 3 0 ( r1 r2 r3 r4 )", "AddCompatibilityDiagnostic 3 ( r1 r2 )"},
       [&] { acd_residual_diagnostic_c(3, 0, four), acd_compatibility_diagnostic_c(3, four); },
       [&] { ACD_RESIDUAL_DIAGNOSTIC(&three, &zero, four), ACD_COMPATIBILITY_DIAGNOSTIC(&three, four); }},
  };
  // clang-format on
  for (const auto& c : cases) {
    EXPECT_EQ(callsOf(c.lower), c.expected);
    EXPECT_EQ(callsOf(c.upper), c.expected);
  }
  EXPECT_EQ(acd_get_numerrors_xpl_c() * 10000 + ACD_GET_NUMWARNINGS_XPL() * 100 + acd_get_numelemdiagnostics_xpl_c(),
            111213);
  // a name keeps its first 1024 characters
  EXPECT_EQ(callsOf([] { acd_set_ddbname_c(std::string(3000, 'x').c_str()); })[0].size(), 11 + 1024u);
}

TEST_F(Diagnostics, TwinsOfTheImplicitSolverMarkTheResourceMonitor) {
  const int32_t one = 1, two = 2;
  const double time = 0.5;
  EXPECT_EQ(callsOf([&] { ACD_BEGIN_INCREMENT(&one, &time), ACD_BEGIN_ATTEMPT(&time), ACD_BEGIN_ITERATION(); }),
            (Calls{"Mark Increment-Start", "BeginIncrement 1 0.5", "Mark Attempt-Start", "BeginAttempt 0.5",
                   "Mark Iteration-Start", "BeginIteration"}));
  EXPECT_EQ(callsOf([&] { ACD_END_ITERATION(), ACD_END_ATTEMPT(), ACD_END_INCREMENT(&time, &two); }),
            (Calls{"Mark Iteration-End", "EndIteration", "Mark Attempt-End", "EndAttempt", "Mark Diagnostics-Start",
                   "EndIncrement 0.5 1", "Mark Diagnostics-End", "Mark Increment-End"}));
  EXPECT_EQ(callsOf([] {
              acd_begin_increment_c(1, 0.5), acd_begin_attempt_c(0.5), acd_begin_iteration_c();
              acd_end_iteration_c(), acd_end_attempt_c();
              for (int32_t converged : {0, -1, 1}) acd_end_increment_c(0.5, converged);
            }),
            (Calls{"BeginIncrement 1 0.5", "BeginAttempt 0.5", "BeginIteration", "EndIteration", "EndAttempt",
                   "EndIncrement 0.5 0", "EndIncrement 0.5 0", "EndIncrement 0.5 1"}));
}

TEST_F(Diagnostics, StepAttributesAreBroughtIntoRange) {
  // at and beside the ends of the ranges: what becomes of direct, user, extrapolation and solver
  const struct {
    int32_t direct, user, flag, extrapolation, solver, mode, kept, solves;
  } cases[] = {{0, 2, 0, -1, 5, 2, 1, 0}, {1, 1, 1, 2, 1, 1, 2, 1},  {0, 1, 0, 0, 0, 3, 0, 0},
               {0, 2, 0, 1, 2, 2, 1, 0},  {0, 0, 0, 3, -1, 2, 1, 0}, {0, 0, 1, 0, 0, 2, 0, 0}};
  for (const auto& c : cases) {
    Calls expected{"SetStepIncrementationControls " + std::to_string(c.mode) + " 1 2 3 4 100",
                   "SetStepSolver " + std::to_string(c.solves), "SetStepExtrapolation " + std::to_string(c.kept),
                   "SetStepCharacteristicElementLength 0.5"};
    if (c.flag != 0) expected.insert(expected.end(), {"SetStepUnsymm", "SetStepNlgeom"});
    EXPECT_EQ(callsOf([&] {
                acd_set_step_attributes_c(c.direct, c.user, c.flag, c.flag, c.extrapolation, c.solver, 1, 2, 3, 4, 100,
                                          0.5);
              }),
              expected);
  }
  // the twin makes flags of the first four
  const int32_t none = 0, seven = 7, n = 100;
  const double r[] = {1, 2, 3, 4, 0.5};
  EXPECT_EQ(callsOf([&] {
              ACD_SET_STEP_ATTRIBUTES(&none, &seven, &none, &none, &none, &none, &r[0], &r[1], &r[2], &r[3], &n, &r[4]);
            })[0],
            "SetStepIncrementationControls 3 1 2 3 4 100");
}

TEST_F(Diagnostics, ValuesAreStoredAsTheMetadataCountThem) {
  const auto error = [] { acd_error_c(codes::Error, kInts, kReals, nullptr, kNode, nullptr); };
  const auto warning = [] { acd_warning_xpl_c(codes::Warning, 4, nullptr, nullptr, kString, nullptr, kElement); };
  EXPECT_EQ(callsOf(error), (Calls{"setErrorCode -2", "AddError 41000100 ( i7 i-8 i9 r1.5 r-2.5 nPART-1-1:1005 )"}));
  EXPECT_EQ(callsOf(warning), (Calls{"Xpl AddWarning 1000200 4 ( \"< L12>\" ePART-1-1:2077 )"}));
  recordingDiagnostics().inParts = true;
  EXPECT_EQ(callsOf(error)[1], "AddError 41000100 ( i7 i-8 i9 r1.5 r-2.5 nINST:5 )");
  EXPECT_EQ(callsOf(warning)[0], "Xpl AddWarning 1000200 4 ( \"< L12>\" eINST:77 )");
  EXPECT_EQ(callsOf([] {
              acd_element_diagnostic_c(codes::Element, nullptr, nullptr, nullptr, nullptr, kElement, 0);
              acd_contact_diagnostic_xpl_c(codes::Contact, 1, nullptr, kReals, nullptr, kNodes, nullptr);
            }),
            (Calls{"AddElementDiagnostic 2000400 ( eINST:77 )",
                   "Xpl AddContactDiagnostic 3000500 1 ( r1.5 nINST:1 nINST:2 )"}));
  // twins bring texts of fixed length, trailing blanks removed
  const char texts[] = "first     second one";
  const int32_t code = codes::ErrorOfTexts;
  EXPECT_EQ(callsOf([&] { ACD_ERROR(&code, nullptr, nullptr, texts, nullptr, nullptr, 10); })[1],
            "AddError 41000300 ( \"first\" \"second one\" )");
  // a zero byte ends its own text only; without a pointer or a length texts are empty and numbers 0, collected or not
  const char zero[] = "one\0two   three     ";
  EXPECT_EQ(callsOf([&] { ACD_ERROR(&code, nullptr, nullptr, zero, nullptr, nullptr, 10); })[1],
            "AddError 41000300 ( \"one\" \"three\" )");
  for (const int64_t length : {int64_t{0}, int64_t{-5}, std::numeric_limits<int64_t>::min()})
    EXPECT_EQ(callsOf([&] { ACD_ERROR(&code, nullptr, nullptr, texts, nullptr, nullptr, length); })[1],
              "AddError 41000300 ( \"\" \"\" )");
  EXPECT_EQ(callsOf([] {
              acd_error_c(codes::Error, nullptr, nullptr, nullptr, nullptr, nullptr);
              acd_error_c(codes::ErrorOfTexts, nullptr, nullptr, nullptr, nullptr, nullptr);
              acd_compatibility_diagnostic_c(3, nullptr), acd_status_xpl_c(5, 1003, nullptr);
              acd_activestatus_xpl_c(nullptr);
            }),
            (Calls{"setErrorCode -2", "AddError 41000100 ( i0 i0 i0 r0 r0 nINST:-1000 )", "setErrorCode -2",
                   "AddError 41000300 ( \"\" \"\" )", "AddCompatibilityDiagnostic 3 ( r0 r0 )",
                   "Xpl AddXplStatus 5 3 INST 0 0", "Xpl SetActiveXplStatus 0 0"}));
  expectSilence(); // nothing is printed without execution code
}

TEST_F(Diagnostics, StatusRecordsNameTheNode) {
  const double r[] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  const int32_t status = 5, node = 1003;
  EXPECT_EQ(callsOf([&] { ACD_STATUS_XPL(&status, &node, r); })[0], "Xpl AddXplStatus 5 1003 PART-1-1 1 9");
  recordingDiagnostics().inParts = true;
  EXPECT_EQ(callsOf([&] { acd_status_xpl_c(5, 1003, r); })[0], "Xpl AddXplStatus 5 3 INST 1 9");
}

TEST_F(Diagnostics, CodesOfTheWrongKindBecomeInternalErrors) {
  const auto none = [](auto entry, auto... more) { entry(more..., nullptr, nullptr, nullptr, nullptr, nullptr); };
  const auto noneWith = [](auto entry, int32_t code, auto... more) {
    entry(code, nullptr, nullptr, nullptr, nullptr, nullptr, more...);
  };
  const int32_t unknown = codes::Unknown, error = codes::Error, one = 1;
  // clang-format off
  const std::pair<const char*, std::function<void()>> cases[] = {
      {"error code in call to acd_error", [&] { none(acd_error_c, codes::Warning); }},
      {"error code in call to acd_error", [&] { none([&](auto... n) { ACD_ERROR(n..., 8); }, &unknown); }},
      {"warning code in call to acd_warning", [&] { none([&](auto... n) { ACD_WARNING(n..., &one, 8); }, &error); }},
      {"code in call to acd_element_diagnostic", [&] { noneWith(acd_element_diagnostic_c, codes::Contact, 1); }},
      {"code in call to acd_contact_diagnostic", [&] { noneWith(acd_contact_diagnostic_c, codes::Element, 1); }},
      {"code in call to acd_error_xpl", [&] { none(acd_error_xpl_c, codes::Warning, 0); }},
      {"code in call to acd_warning_xpl", [&] { none(acd_warning_xpl_c, codes::Error, 0); }},
      {"code in call to acd_element_diagnostic_xpl", [&] { none(acd_element_diagnostic_xpl_c, codes::Unknown, 0); }},
      {"code in call to acd_contact_diagnostic_xpl", [&] { none(acd_contact_diagnostic_xpl_c, codes::Error, 0); }}};
  // clang-format on
  for (const auto& [text, call] : cases)
    EXPECT_EQ(callsOf(call), (Calls{"setErrorCode -2", (std::string(text).ends_with("_xpl") ? "Xpl " : "") +
                                                           ("AddInternalError Invalid " + std::string(text))}));
  EXPECT_TRUE(acd_PublicTypeCodeUtils::IsError(codes::Error, acd_TypeClass::General));
  EXPECT_FALSE(acd_PublicTypeCodeUtils::IsError(codes::Error, acd_TypeClass::Contact));
  EXPECT_FALSE(acd_PublicTypeCodeUtils::IsError(codes::Warning, acd_TypeClass::General));
}

TEST_F(Diagnostics, PrintedWhileTheExecutionCodeIsOne) {
  acd_set_execode_c(1);
  acd_error_c(codes::Error, kInts, kReals, nullptr, kNode, nullptr);
  EXPECT_EQ(printed(), (Calls{" ", "***ERROR: ERROR 7 OF -8"}));
  EXPECT_EQ(CLINES[18], 1);
  EXPECT_EQ(takeStatuses(), Calls{"ipm_message_c|Error|message=%s|Error 7 of -8"});
  EXPECT_EQ(recordingHost().calls, (Calls{"LFC_XUT_XPLMSGFLUSH 7"}));

  const std::string text = std::string(1, ' ').append(60, 'a').append(1, ' ').append(30, 'b');
  const char* const strings[] = {text.c_str()};
  acd_warning_c(codes::Warning, nullptr, nullptr, strings, nullptr, kElement, 1);
  // the warning header with its blank is one longer than the writer's
  EXPECT_EQ(printed(), (Calls{" ", "***WARNING: BEWARE OF  ", "            " + std::string(60, 'A') + " ",
                              "            " + std::string(30, 'B')}));
  EXPECT_EQ(CLINES[16], 1);
  EXPECT_EQ(takeStatuses().size(), 1u);

  // without the print flag, which is 1 and nothing else, the status channel still hears of it
  for (int32_t print : {0, 2, -1, 256, 257})
    acd_warning_c(codes::Warning, nullptr, nullptr, strings, nullptr, kElement, print);
  EXPECT_TRUE(recordingHost().lines.empty());
  EXPECT_EQ(takeStatuses().size(), 5u);
  // element diagnostics are not printed; an execution code other than 1 prints nothing
  acd_element_diagnostic_c(codes::Element, nullptr, nullptr, nullptr, nullptr, kElement, 1);
  acd_set_execode_c(2), acd_error_c(codes::Error, kInts, kReals, nullptr, kNode, nullptr), acd_set_execode_c(1);
  // each solver has its own execution code
  acd_error_xpl_c(codes::Error, 0, kInts, kReals, nullptr, kNode, nullptr);
  EXPECT_TRUE(recordingHost().lines.empty() && recordingHost().statuses.empty());
  // the code names its variation
  acd_error_c(codes::Error + 1, nullptr, nullptr, nullptr, nullptr, nullptr);
  EXPECT_EQ(printed(), (Calls{" ", "***ERROR: VARIATION ONE"}));
}

TEST_F(Diagnostics, InternalErrorsAreRecordedAndPrinted) {
  const char message[] = "broken   ";
  EXPECT_EQ(callsOf([&] { ACD_ERROR_INTERNAL(message, 9), acd_error_internal_xpl_c("Broken"); }),
            (Calls{"setErrorCode -2", "AddInternalError broken", "setErrorCode -2", "Xpl AddInternalError Broken"}));
  EXPECT_TRUE(recordingHost().lines.empty());
  acd_set_execode_xpl_c(1);
  ACD_ERROR_INTERNAL_XPL(message, 9);
  EXPECT_EQ(printed(), (Calls{"***ERROR: AN INTERNAL ERROR HAS OCCURRED"}));
  EXPECT_EQ(takeStatuses(), Calls{"ipm_message_c|Error|message=%s|An internal error has occurred"});
  // a message of any length arrives whole by either form
  for (std::size_t length : {0, 1, 1023, 1024, 1025, 100000}) {
    const std::string text(length, 'x'), whole = "AddInternalError " + text;
    EXPECT_EQ(callsOf([&] {
                ACD_ERROR_INTERNAL(text.data(), static_cast<int64_t>(length)), acd_error_internal_c(text.c_str());
                ACD_ERROR_INTERNAL_XPL(text.data(), static_cast<int64_t>(length));
              }),
              (Calls{"setErrorCode -2", whole, "setErrorCode -2", whole, "setErrorCode -2", "Xpl " + whole}))
        << length;
  }
  EXPECT_EQ(callsOf([] { ACD_ERROR_INTERNAL(nullptr, 5), acd_error_internal_c(nullptr); }),
            (Calls{"setErrorCode -2", "AddInternalError ", "setErrorCode -2", "AddInternalError "}));
}

TEST_F(Diagnostics, CutbackNotesAreBrokenAtTheLastBlankThatFits) {
  acd_cutback_diagnostic_c(2, 0), acd_cutback_diagnostic_c(2, -1);
  EXPECT_TRUE(recordingHost().lines.empty());
  const int32_t two = 2, one = 1, three = 3;
  ACD_CUTBACK_DIAGNOSTIC(&two, &one);
  EXPECT_EQ(printed(), (Calls{" ", "***NOTE: THE SOLUTION APPEARS TO BE DIVERGING. CONVERGENCE IS JUDGED UNLIKELY."}));
  ACD_CUTBACK_DIAGNOSTIC(&three, &one);
  EXPECT_EQ(printed(), (Calls{" ", "***NOTE: THE SOLUTION FAILS TO CONVERGE IN THE MAXIMUM NUMBER OF EQUILIBRIUM ",
                              "         ITERATIONS ALLOWED."}));
  EXPECT_EQ(recordingDiagnostics().calls, (Calls{"AddCutbackDiagnostic 2", "AddCutbackDiagnostic 2",
                                                 "AddCutbackDiagnostic 2", "AddCutbackDiagnostic 3"}));
  for (int32_t outside : {0, 19, -1}) acd_cutback_diagnostic_c(outside, 1);
  EXPECT_EQ(printed(), (Calls{" ", "***NOTE: ", " ", "***NOTE: ", " ", "***NOTE: "}));
}

TEST_F(Diagnostics, CountersOfTheHostAndPrintedLines) {
  ACD_INC_KNPSOL(), ACD_INC_KNPSOL(), ACD_INC_KNESOL(), ACD_INC_KWARN();
  EXPECT_EQ((std::array{CWARN[0], CWARN[1], CLINES[16]}), (std::array{2, 1, 1}));
  acd_write(7, "a line"), acd_write(7, ""), acd_flush(7);
  EXPECT_EQ(printed(), (Calls{"a line", " "}));
  EXPECT_EQ(recordingHost().calls, (Calls{"LFC_XUT_XPLMSGFLUSH 7"}));
}

} // namespace
