// Recording of diagnostics: collecting, filing, printing.
#include "acd/recording.h"

#include "acd.h"
#include "acd/printed_output.h"
#include "acd/succeeds.h"
#include "acd_block_handler.h"
#include "bcu_ErrorStatus.h"
#include "dia_Codes.h"
#include "dia_FormatUtils.h"
#include "dia_MetadataTable.h"
#include "dia_TypeCodeUtils.h"
#include "dxt_DiagnosticExtractor.h"
#include "dxt_DiagnosticExtractorXpl.h"
#include "glo/kernel/kernel.h"
#include "host_services.h"
#include "inpM_SolverPartMap.h"

#include <cstring>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace sa::acd {
namespace {

constexpr int32_t kErrorStatus = -2;
constexpr int32_t kPrinting = 1;        // execution code under which diagnostics are printed
constexpr std::size_t kErrorLines = 19; // place in CLINES
constexpr std::string_view kErrorHeader = "***ERROR: ", kWarningHeader = "***WARNING: ", kNoteHeader = "***NOTE: ";

// What both extractors have, under one name.
struct Implicit {
  static dxt_DiagnosticExtractor& extractor() { return dxt_DiagnosticExtractor::Instance(); }
  static void add(const Diagnostic& d, const dia_Values& values) {
    switch (d.kind) {
    case Kind::Error:
      return extractor().AddError(d.code, values);
    case Kind::Warning:
      return extractor().AddWarning(d.code, values);
    case Kind::Element:
      return extractor().AddElementDiagnostic(d.code, values);
    case Kind::Contact:
      return extractor().AddContactDiagnostic(d.code, values);
    }
  }
};
struct Explicit {
  static dxt_DiagnosticExtractorXpl& extractor() { return dxt_DiagnosticExtractorXpl::Instance(); }
  static void add(const Diagnostic& d, const dia_Values& values) {
    switch (d.kind) {
    case Kind::Error:
      return extractor().AddError(d.code, d.domain, values);
    case Kind::Warning:
      return extractor().AddWarning(d.code, d.domain, values);
    case Kind::Element:
      return extractor().AddElementDiagnostic(d.code, d.domain, values);
    case Kind::Contact:
      return extractor().AddContactDiagnostic(d.code, d.domain, values);
    }
  }
};

// body(Implicit or Explicit)
template <class Body>
auto with(Solver solver, Body body) {
  return solver == Solver::Implicit ? body(Implicit()) : body(Explicit());
}

const dia_MetadataTable& tableOf(acd_TypeClass typeClass) {
  return dia_MetadataTable::Instance(static_cast<int32_t>(typeClass));
}

constexpr const char* kOnlyInstance = "PART-1-1";
dia_Entity elementOf(bool inParts, int32_t number) {
  return inParts ? inpM_SolverPartMap::Instance().ConstGetInstanceElementIdPair(number)
                 : dia_Entity{kOnlyInstance, number};
}

std::string nameOf(const char* string) {
  const std::string text = string == nullptr ? "" : string;
  return text.starts_with(" L") ? inpM_SolverPartMap::Instance().GetLabelName(text) : text;
}

// `count` values of an array; zeros where it is null, as in a record on its way to the owner.
template <class Value>
std::vector<Value> listOf(const Value* values, int32_t count) {
  const auto size = static_cast<std::size_t>(count);
  return values == nullptr ? std::vector<Value>(size) : std::vector<Value>(values, values + size);
}

dia_Values valuesOf(const Diagnostic& d, bool inParts) {
  const dia_Counts counts = tableOf(d.typeClass()).GetCounts(d.code);
  const Arrays& a = d.arrays;
  dia_Values values;
  values.ints = listOf(a.ints, counts.ints);
  values.reals = listOf(a.reals, counts.reals);
  for (const char* string : listOf(a.strings, counts.strings)) values.strings.push_back(nameOf(string));
  for (int32_t node : listOf(a.nodes, counts.nodes)) values.nodes.push_back(nodeOf(inParts, node));
  for (int32_t element : listOf(a.elements, counts.elements)) values.elements.push_back(elementOf(inParts, element));
  return values;
}

std::string detailOf(acd_TypeClass typeClass, int32_t code) {
  const auto& details = tableOf(typeClass).GetDetailStrings(code);
  const int32_t variation = dia_TypeCodeUtils::GetVariationNumber(code);
  if (details.empty()) return "";
  return variation >= 0 && static_cast<std::size_t>(variation) < details.size()
             ? details[static_cast<std::size_t>(variation)]
             : details.front();
}

void tellStatusChannel(const char* type, const std::string& text) {
  const HostIdentity identity;
  const char* const string = text.c_str();
  ipm_message_c(type, "message=%s", nullptr, nullptr, &string, identity.values);
}

// What is printed while the execution code asks for it.  Only errors and warnings have a text of their own kind.
void publish(const Diagnostic& d, const dia_Values& values) {
  const bool isError = d.kind == Kind::Error;
  if (!isError && d.kind != Kind::Warning) return;
  const std::string text = dia_FormatUtils::Substitute(detailOf(d.typeClass(), d.code), values);
  if (d.print == kPrinted) {
    if (isError)
      addOne(CLINES, kErrorLines);
    else
      ACD_INC_KWARN();
    printMessage(isError ? kErrorHeader : kWarningHeader, upperCase(text), EmptyLine::Before);
  }
  if (tableOf(d.typeClass()).IsForStatusChannel(d.code)) tellStatusChannel(isError ? "Error" : "Warning", text);
}

bool collect(acd_block_handler& handler, const Diagnostic& d) {
  const int32_t print = (d.print == kPrinted ? kPrinted : 0) | (d.kind == Kind::Element ? kElementMark : 0);
  const Arrays& a = d.arrays;
  return handler.AddDiagnostic(d.code, d.typeClass(), a.ints, a.reals, a.strings, a.nodes, a.elements, print);
}

// Memory is all that can fail here.  The error status is set, the host knows; the record is lost and nothing else.
template <class Body>
void guarded(Body body) {
  if (!succeeds(body)) bcu_ErrorStatus::setErrorCode(kErrorStatus);
}

constexpr const char* kCutbackReasons[] = {
    "",
    "THE RATE OF CONVERGENCE IS VERY SLOW. CONVERGENCE IS JUDGED UNLIKELY.",
    "THE SOLUTION APPEARS TO BE DIVERGING. CONVERGENCE IS JUDGED UNLIKELY.",
    "THE SOLUTION FAILS TO CONVERGE IN THE MAXIMUM NUMBER OF EQUILIBRIUM ITERATIONS ALLOWED.",
    "CONTACT FAILS TO CONVERGE IN THE MAXIMUM NUMBER OF SEVERE DISCONTINUITY ITERATIONS ALLOWED.",
    "CONTACT FAILS TO CONVERGE IN THE MAXIMUM NUMBER OF CONTACT STRESS AUGMENTATIONS ALLOWED.",
    "THE TEMPERATURE HAS FALLEN BELOW ABSOLUTE ZERO AT ONE OR MORE POINTS.",
    "ELEMENTS ARE DISTORTING EXCESSIVELY. CONVERGENCE IS JUDGED UNLIKELY.",
    ("MATERIAL CALCULATIONS FAILED TO CONVERGE OR WERE NOT ATTEMPTED AT ONE OR MORE POINTS. "
     "CONVERGENCE IS JUDGED UNLIKELY."),
    "THE TIME INTEGRATION STABILITY LIMIT HAS BEEN EXCEEDED.",
    "THE TIME INTEGRATION ACCURACY TOLERANCE HAS BEEN EXCEEDED.",
    "SEVERE CONTACT OVERCLOSURES EXIST. CONVERGENCE IS JUDGED UNLIKELY.",
    "THE MAXIMUM SLIDE DISTANCE HAS BEEN EXCEEDED.",
    "A NEW CONTACT PATCH NEEDS TO BE DEFINED.",
    "THE CAVITY RADIATION EMISSIVITY CHANGE EXCEEDS THE MAXIMUM ALLOWED.",
    "EXCESSIVELY DISTORTED ELEMENTS REMAIN AFTER ADAPTIVE MESH SMOOTHING.",
    "DEBONDING REQUIRES A SMALLER TIME INCREMENT.",
    "USER SUBROUTINE REQUESTS A TIME INCREMENT CHANGE.",
    "A REPETITIVE SDI PATTERN OCCURS. CONVERGENCE IS JUDGED UNLIKELY.",
};

} // namespace

dia_Entity nodeOf(bool inParts, int32_t number) {
  return inParts ? inpM_SolverPartMap::Instance().ConstGetInstanceNodeIdPair(number)
                 : dia_Entity{kOnlyInstance, number};
}

bool isValid(Kind kind, int32_t code) {
  const bool known = tableOf(kind == Kind::Contact ? acd_TypeClass::Contact : acd_TypeClass::General).IsValid(code);
  if (!known || kind == Kind::Element || kind == Kind::Contact) return known;
  return dia_TypeCodeUtils::IsError(code) == (kind == Kind::Error);
}

void file(Solver solver, const Diagnostic& d) {
  with(solver, [&](auto target) {
    auto& extractor = target.extractor();
    const dia_Values values = valuesOf(d, extractor.IsModelInParts());
    target.add(d, values);
    if (extractor.GetExecutionCode() == kPrinting) publish(d, values);
  });
}

void record(Solver solver, const Diagnostic& d) {
  if (d.kind == Kind::Error) bcu_ErrorStatus::setErrorCode(kErrorStatus);
  guarded([&] {
    acd_block_handler& handler = thr_ThreadSingleton<acd_block_handler>::Instance();
    if (!handler.IsCollecting()) return file(solver, d);
    if (!collect(handler, d)) bcu_ErrorStatus::setErrorCode(kErrorStatus);
    if (d.kind == Kind::Error) addOne(CLINES, kErrorLines);
  });
}

void fileRecord(const char* record, int32_t domain) {
  int32_t code = 0, print = 0, stringCount = 0;
  acd_TypeClass typeClass{};
  std::memcpy(&code, record, sizeof code); // which says how long the arrays are
  std::memcpy(&typeClass, record + sizeof code, sizeof typeClass);
  const dia_Counts counts = tableOf(typeClass).GetCounts(code);
  const auto room = [](int32_t count) { return static_cast<std::size_t>(count > 0 ? count : 1); };
  std::vector<int32_t> ints(room(counts.ints)), nodes(room(counts.nodes)), elements(room(counts.elements));
  std::vector<double> reals(room(counts.reals));
  struct Strings : std::vector<char*> {
    using std::vector<char*>::vector;
    ~Strings() {
      for (const char* string : *this) delete[] string;
    }
  } strings(room(counts.strings), nullptr);
  const bool sound = tableOf(typeClass).IsValid(code) &&
                     acd_block_handler::ExtractDiagnostic(record, code, ints.data(), reals.data(), strings.data(),
                                                          nodes.data(), elements.data(), print, typeClass, stringCount);
  if (!sound) return internalError(Solver::Explicit, "A received diagnostic does not agree with its code");

  print = recordFlag(print);
  Kind kind = Kind::Warning;
  if (typeClass == acd_TypeClass::Contact)
    kind = Kind::Contact;
  else if ((print & kElementMark) != 0)
    kind = Kind::Element;
  else if (dia_TypeCodeUtils::IsError(code))
    kind = Kind::Error;
  if (kind == Kind::Error) bcu_ErrorStatus::setErrorCode(kErrorStatus);
  file(Solver::Explicit, {kind,
                          code,
                          domain,
                          print & ~kElementMark,
                          {ints.data(), reals.data(), strings.data(), nodes.data(), elements.data()}});
}

void internalError(Solver solver, const char* message) {
  bcu_ErrorStatus::setErrorCode(kErrorStatus);
  guarded([&] {
    with(solver, [&](auto target) {
      target.extractor().AddInternalError(message == nullptr ? "" : message);
      if (target.extractor().GetExecutionCode() != kPrinting) return;
      const std::string detail = detailOf(acd_TypeClass::General, dia_Codes::InternalError);
      printMessage(kErrorHeader, upperCase(detail), EmptyLine::None);
      tellStatusChannel("Error", detail);
    });
  });
}

void cutback(int32_t code, bool print) {
  guarded([&] {
    dxt_DiagnosticExtractor::Instance().AddCutbackDiagnostic(code);
    const bool known = code >= 0 && static_cast<std::size_t>(code) < std::size(kCutbackReasons);
    if (print) printMessage(kNoteHeader, known ? kCutbackReasons[code] : "", EmptyLine::Before);
  });
}

} // namespace sa::acd

bool acd_PublicTypeCodeUtils::IsError(int32_t code, acd_TypeClass typeClass) {
  return sa::acd::tableOf(typeClass).IsValid(code) && dia_TypeCodeUtils::IsError(code);
}
