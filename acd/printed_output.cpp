// Printed diagnostics.
#include "acd/printed_output.h"

#include "acd.h"
#include "acd/succeeds.h"
#include "glo/kernel/kernel.h"
#include "host_services.h"

namespace sa::acd {
namespace {

constexpr int32_t kLineWidth = 79;

void writeLine(int32_t unit, const std::string& line, const HostIdentity& identity) {
  const std::string& shown = line.empty() ? " " : line;
  lfc_xut_xplmsgC_c(shown.c_str(), unit, kLineWidth, identity.values[0], identity.values[1],
                    static_cast<int64_t>(shown.size()));
}

} // namespace

std::string upperCase(std::string text) {
  for (char& c : text)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return text;
}

void printMessage(std::string_view header, std::string_view text, EmptyLine emptyLine) {
  const HostIdentity identity; // one message, one number
  if (emptyLine == EmptyLine::Before) writeLine(kPrintedUnit, "", identity);
  const std::size_t span = kLineWidth - header.size();
  std::string start(header);
  do {
    std::string_view piece = text.substr(0, span);
    if (piece.size() < text.size()) {
      const std::size_t blank = piece.rfind(' ');
      if (blank != std::string_view::npos) piece = piece.substr(0, blank + 1);
    }
    writeLine(kPrintedUnit, start + std::string(piece), identity);
    text.remove_prefix(piece.size());
    start.assign(header.size(), ' ');
  } while (!text.empty());
  acd_flush(kPrintedUnit);
}

} // namespace sa::acd

SA_EXPORT void acd_write(int32_t unit, const char* text) {
  // without memory for a line nothing is written
  sa::acd::succeeds([=] { sa::acd::writeLine(unit, text == nullptr ? "" : text, {}); });
}

SA_EXPORT void acd_flush(int32_t unit) { LFC_XUT_XPLMSGFLUSH(&unit); }
