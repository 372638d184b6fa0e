// The record of the end of the analysis.
#include "glo.h"
#include "glo/frame/text.h"
#include "glo/kernel/kernel.h"
#include "host_services.h"
#include "ipm_MessageTransmit.h"
#include "thr_ErrorInThread.h"

#include <string_view>

namespace sa {
namespace {

constexpr int32_t kMessageFile = GLO_UNIT_MESSAGE_FILE, kSecondChannel = GLO_UNIT_SECOND_CHANNEL;

struct Ending {
  std::string_view type, message;
  int32_t jobStatus;
};

Ending endingOf(int32_t code, bool killed) {
  if (killed) return {"Interrupted", "Analysis terminated by external signal", 3};
  switch (code) {
  case GLO_EXIT_ERRORS:
  case GLO_EXIT_ERRORS_ELSEWHERE:
    return {"Aborted", "Analysis failed due to Errors", 2};
  case GLO_EXIT_PHASE_COMPLETE:
    return {"Completed", "Phase complete", 1};
  default:
    return {"", "Invalid Termination Message: Status unknown", 0};
  }
}

} // namespace
} // namespace sa

SA_EXPORT void GLO_UTI_EXIT(const int32_t* code) {
  const int32_t rank = DMPC_GETRANK();
  const sa::Ending ending = sa::endingOf(*code, ELI_GETKILLSIGNAL() != 0);
  if (rank == 0) DXT_SETJOBSTATUS_XPL(&ending.jobStatus);

  // To the status channel only.
  static constexpr int32_t kNoUnit = 0, kStatus = 1;
  static constexpr std::string_view kTemplate = "message=%S";
  char type[20], message[80];
  sa::TextArgument(type, sizeof type).append(ending.type);
  sa::TextArgument(message, sizeof message).append(ending.message);
  GLO_UTI_WRITE(&kNoUnit, &kStatus, type, kTemplate.data(), nullptr, nullptr, message, sizeof type,
                static_cast<int64_t>(kTemplate.size()), sizeof message);

  LFC_XUT_XPLMSGFLUSH(&sa::kMessageFile);
  LFC_XUT_XPLMSGFLUSH(&sa::kSecondChannel);
  ipm_MessageTransmit::Instance().SetClosing(true);

  if (*code == GLO_EXIT_ERRORS || *code == GLO_EXIT_ERRORS_ELSEWHERE) {
    const int32_t termination = *code == GLO_EXIT_ERRORS ? 1 : -1;
    DMPC_TERMINATECOMM(&termination);
    thr_ErrorInThread(1);
  }
}
