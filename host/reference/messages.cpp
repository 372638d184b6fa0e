// Message channels, status channel and error reports.
#include "guarded.h"
#include "host_services.h"
#include "ipm_MessageTransmit.h"
#include "job.h"
#include "listener.h"
#include "message_template.h"
#include "threads.h"

#include <algorithm>
#include <string>

namespace sharedanalysis::host {
namespace {

constexpr int32_t kAborted = 2;

// Strips trailing blanks.
void writeLine(int32_t unit, int32_t message, std::string_view line) {
  guarded([&] { thisThread().addLine(unit, message, withoutTrailingBlanks(line)); });
  tell(SA_HOST_EVENT_LINE, unit, message, withoutTrailingBlanks(line));
}

// A message of the host itself.
void reportError(std::string_view text) {
  const int32_t message = DSM_KER_MESSAGEID();
  guarded([&] {
    writeLine(kMessageFile, message, "");
    writeLine(kMessageFile, message, "***ERROR: " + std::string(text));
    writeLine(kMessageFile, message, "");
  });
}

// Diagnostics send the template "message=%s"; the writer knows its codes in upper case only.
std::string_view templateOf(std::string_view text) {
  return withoutTrailingBlanks(text) == "message=%s" ? "message=%S" : text;
}

template <class Strings>
void writeStatus(std::string_view type, std::string_view text, const int32_t* ints, const double* reals,
                 Strings strings, char exponentLetter) {
  guarded([&] {
    GrowingMessage message;
    substituteInto(message, templateOf(text), ints, reals, strings, exponentLetter);
    std::string line(withoutTrailingBlanks(type));
    line += ' ';
    line += withoutTrailingBlanks(message.text);
    std::replace(line.begin(), line.end(), '\n', ' ');
    line += '\n';
    thisThread().deliver();
    job().writeStatus(line);
    tell(SA_HOST_EVENT_STATUS, 0, 0, line);
  });
}

} // namespace
} // namespace sharedanalysis::host

using namespace sharedanalysis::host;

void LFC_XUT_XPLMSGC(const char* line, const int32_t* unit, const int32_t*, const int32_t*, const int32_t* message,
                     int64_t lineLength) {
  writeLine(*unit, *message, fixedText(line, lineLength));
}

void lfc_xut_xplmsgC_c(const char* line, int32_t unit, int32_t, int32_t, int32_t message, int64_t lineLength) {
  writeLine(unit, message, fixedText(line, lineLength));
}

void LFC_XUT_XPLMSGFLUSH(const int32_t* unit) {
  guarded([&] {
    deliverAll();
    job().flush(*unit);
  });
}

void IPM_MESSAGE(const char* type, const char* text, const int32_t* ints, const double* reals, const char* strings,
                 const int32_t*, int64_t typeLength, int64_t textLength, int64_t stringLength) {
  writeStatus(fixedText(type, typeLength), fixedText(text, textLength), ints, reals,
              FixedStrings{strings, stringLength}, 'E');
}

void ipm_message_c(const char* type, const char* text, const int32_t* ints, const double* reals,
                   const char* const* strings, const int32_t*) {
  writeStatus(terminatedText(type), terminatedText(text), ints, reals, TerminatedStrings{strings}, 'e');
}

void tvkerrC(int32_t, const char* text, const int32_t* ints, const double* reals, const char* const* strings) {
  guarded([&] {
    GrowingMessage message;
    substituteInto(message, terminatedText(text), ints, reals, TerminatedStrings{strings}, 'e');
    reportError(message.text);
  });
}

void LFC_XUT_ERRMSG(const char* text, int64_t textLength) { reportError(fixedText(text, textLength)); }

void LFC_XUT_ABORT(void) {
  DXT_SETJOBSTATUS_XPL(&kAborted);
  job().threadError = true;
  tell(SA_HOST_EVENT_ABORT);
}

ipm_MessageTransmit& ipm_MessageTransmit::Instance() {
  static ipm_MessageTransmit transmit;
  return transmit;
}

void ipm_MessageTransmit::SetClosing(bool closing) {
  job().transmitterClosing = closing;
  if (closing) tell(SA_HOST_EVENT_END, job().status);
}
