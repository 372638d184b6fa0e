// Reports of host components on the message file.
#include "spx_WipReporter.h"

#include "glo.h"

#include <string_view>

namespace {

constexpr const char* kSource = "spx_WipReporter";
constexpr std::size_t kLongest = 475;

// What is written of a text, and whether something was left out.
struct Cut {
  std::string text;
  bool shortened;
};
Cut cut(const std::string& text) {
  if (text.size() <= kLongest) return {text, false};
  const std::string_view kept = std::string_view(text).substr(0, kLongest);
  const std::size_t blank = kept.rfind(' ');
  // blanks before the first word are no place to break: nothing would be left
  const bool breaks = blank != std::string_view::npos && blank > kept.find_first_not_of(' ');
  return {std::string(breaks ? kept.substr(0, blank) : kept), true};
}

// A text as a template: percent signs, which begin placeholders, are doubled, and a zero byte, which would end the
// text, becomes a blank.
std::string templateOf(const std::string& text) {
  std::string result;
  result.reserve(text.size());
  for (const char c : text) {
    if (c == '%') result += '%';
    result += c == '\0' ? ' ' : c;
  }
  return result;
}

void write(const char* type, int32_t status, const std::string& text) {
  glo_uti_CWrite(GLO_UNIT_MESSAGE_FILE, status, type, templateOf(text).c_str(), nullptr, nullptr, nullptr);
}

void writeCut(const char* type, const Cut& message, const char* remark) {
  write(type, 1, message.text);
  if (message.shortened) write("Warning", 1, remark);
}
void writeError(const Cut& message) { writeCut("Error", message, "Error message is too long. It has been truncated."); }

bool writes(int mode) { return mode == 0 || mode == 1; }
bool isQuiet(int mode) { return mode == 2; }

} // namespace

spx_WipReporter::spx_WipReporter(aio_ostream& stream)
    : wip_WipReporter(true, true, true, true, true), stream_(stream) {}

spx_WipReporter::~spx_WipReporter() = default;

void spx_WipReporter::Error(const std::string& text, int mode) {
  const Cut message = cut(text);
  if (!writes(mode) && !isQuiet(mode)) throw aio_TextException(message.text, kSource, __LINE__);
  writeError(message);
}

void spx_WipReporter::Warning(const std::string& text) {
  writeCut("Warning", cut(text), "Warning message is too long. It has been truncated.");
}

void spx_WipReporter::Errors(const std::vector<std::string>& texts, int mode) {
  for (const std::string& text : texts) {
    const Cut message = cut(text);
    if (!writes(mode) && !isQuiet(mode)) throw aio_TextException(message.text, kSource, __LINE__);
    if (writes(mode)) writeError(message);
  }
  if (mode != 1) throw aio_TextException("Multiple error messages.", kSource, __LINE__);
}

void spx_WipReporter::Warnings(const std::vector<std::string>& texts) {
  for (const std::string& text : texts) Warning(text);
}

void spx_WipReporter::Note(const std::string& text) { write("Note", 0, text); }

#define SA_UNIMPLEMENTED(what) throw aio_AssertionException("\"" what " is unimplemented\" == 0", kSource, __LINE__)

void spx_WipReporter::Verbose(const std::string&) { SA_UNIMPLEMENTED("Verbose"); }
void spx_WipReporter::Display(const std::string&) { SA_UNIMPLEMENTED("Display"); }
void spx_WipReporter::Interrupted() { SA_UNIMPLEMENTED("Interrupted"); }
void spx_WipReporter::CommandDone() { SA_UNIMPLEMENTED("CommandDone"); }

#undef SA_UNIMPLEMENTED
