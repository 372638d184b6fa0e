// The message writer: one body for the by-reference entries and the zero-terminated one.
#include "dsm_ker_ThreadData.h"
#include "glo.h"
#include "glo/kernel/kernel.h"
#include "host_services.h"
#include "message_template.h"

#include <cstring>
#include <string_view>

namespace sa {
namespace {

using namespace sharedanalysis::host;

constexpr int32_t kLineWidth = 79;
constexpr int kMostLines = 20;

struct Identity {
  int32_t thread, message;
};

// How a message of a type is treated.
struct Treatment {
  enum Placeholders { Verbatim, Replaced, ReplacedWithoutStatus };
  std::string_view type;
  std::string_view header; // up to its last non-blank; one blank where the type has a blank header
  Placeholders placeholders;
  bool broken;       // into lines; else one record
  bool blankLines;   // before and after
  bool status;       // the caller's status flag counts
  bool finishedText; // the status channel receives the formatted message, not the template
};

constexpr std::string_view kNewLine = "NewLine";
constexpr Treatment kTreatments[] = {
    {" ", "", Treatment::Verbatim, false, false, false, false},
    {"Status", "", Treatment::ReplacedWithoutStatus, false, false, true, false},
    {"Step", "", Treatment::Replaced, false, true, true, false},
    {"Table", "", Treatment::Replaced, false, false, false, false},
    {"Info", " ", Treatment::Replaced, true, true, false, false},
    {"Error", "***ERROR:", Treatment::Replaced, true, true, true, true},
    {"Warning", "***WARNING:", Treatment::Replaced, true, true, true, true},
    {"Note", "***NOTE:", Treatment::Replaced, true, true, false, false},
    {"Odb_Frame", " ", Treatment::Replaced, true, false, true, true},
    {"StateFrame", " ", Treatment::Replaced, true, false, true, true},
};
constexpr Treatment kAnyOther = {"", " ", Treatment::Replaced, true, false, true, false};

// What the entries do differently: how types compare, the exponent letter, and the services they write through.
struct ByReference {
  using Strings = FixedStrings;
  static constexpr char kExponentLetter = 'E';

  // As blank-padded texts; the blank type is the only keyword that ends with a blank.
  static bool matches(std::string_view type, std::string_view keyword) {
    return keyword == " " ? type.empty() : type == keyword;
  }
  static std::string_view comparable(std::string_view type) { return withoutTrailingBlanks(type); }
  static Strings only(const char* const& text, std::size_t length) { return {text, static_cast<int64_t>(length)}; }
  static void line(const char* text, int64_t length, int32_t unit, const Identity& identity) {
    LFC_XUT_XPLMSGC(text, &unit, &kLineWidth, &identity.thread, &identity.message, length);
  }
  static void status(std::string_view type, std::string_view text, const int32_t* ints, const double* reals,
                     const Strings& strings, const int32_t* identity) {
    IPM_MESSAGE(type.data(), text.data(), ints, reals, strings.first, identity, static_cast<int64_t>(type.size()),
                static_cast<int64_t>(text.size()), strings.length);
  }
};

struct ByValue {
  using Strings = TerminatedStrings;
  static constexpr char kExponentLetter = 'e';

  // As many characters as the keyword has.
  static bool matches(std::string_view type, std::string_view keyword) { return type.starts_with(keyword); }
  static std::string_view comparable(std::string_view type) { return type; }
  static Strings only(const char* const& text, std::size_t) { return {&text}; }
  static void line(const char* text, int64_t length, int32_t unit, const Identity& identity) {
    lfc_xut_xplmsgC_c(text, unit, kLineWidth, identity.thread, identity.message, length);
  }
  static void status(std::string_view type, std::string_view text, const int32_t* ints, const double* reals,
                     const Strings& strings, const int32_t* identity) {
    ipm_message_c(type.data(), text.data(), ints, reals, strings.first, identity);
  }
};

template <class Entry>
class Writer {
public:
  Writer(int32_t unit, const Identity& identity) : unit_(unit), identity_(identity) {}

  void write(bool status, std::string_view type, std::string_view text, const int32_t* ints, const double* reals,
             typename Entry::Strings strings) const {
    const std::string_view comparable = Entry::comparable(type);
    if (Entry::matches(comparable, kNewLine)) {
      if (unit_ != 0) blankLine();
      return;
    }
    const Treatment& treatment = treatmentOf(comparable);
    const bool verbatim = treatment.placeholders == Treatment::Verbatim ||
                          (treatment.placeholders == Treatment::ReplacedWithoutStatus && status);
    char buffer[kMessageCapacity + 1];
    const std::string_view message =
        verbatim ? copied(text, buffer) : substitute(text, ints, reals, strings, Entry::kExponentLetter, buffer);
    buffer[message.size()] = '\0';

    if (unit_ != 0) {
      if (treatment.blankLines) blankLine();
      if (treatment.broken) {
        lines(treatment.header, message);
      } else {
        record(message);
      }
      if (treatment.blankLines) blankLine();
    }
    if (!status || !treatment.status) return;
    const int32_t identity[] = {identity_.thread, identity_.message};
    if (treatment.finishedText) {
      const char* const finished = buffer;
      Entry::status(type, "message=%S", ints, reals, Entry::only(finished, message.size()), identity);
    } else {
      Entry::status(type, text, ints, reals, strings, identity);
    }
  }

private:
  static const Treatment& treatmentOf(std::string_view type) {
    for (const Treatment& treatment : kTreatments)
      if (Entry::matches(type, treatment.type)) return treatment;
    return kAnyOther;
  }

  static std::string_view copied(std::string_view text, char* message) {
    const std::string_view kept = withoutTrailingBlanks(text).substr(0, kMessageCapacity);
    if (!kept.empty()) std::memcpy(message, kept.data(), kept.size());
    return {message, kept.size()};
  }

  // A blank line is a single blank: hosts need not take empty lines.
  void blankLine() const { Entry::line(" ", 1, unit_, identity_); }

  void record(std::string_view message) const {
    if (message.empty()) {
      blankLine();
    } else {
      Entry::line(message.data(), static_cast<int64_t>(message.size()), unit_, identity_);
    }
  }

  // Lines of the header (blank from the second on), one blank and a piece of the message, broken after its last blank or,
  // where it has none, at the full width.  An empty message still shows its header.
  void lines(std::string_view header, std::string_view message) const {
    char line[kLineWidth + 1];
    const std::size_t indent = header.size() + 1;
    std::memcpy(line, header.data(), header.size());
    line[header.size()] = ' ';
    int count = 0;
    do {
      std::string_view piece = message.substr(0, kLineWidth - indent);
      if (piece.size() < message.size()) {
        const std::size_t blank = piece.rfind(' ');
        if (blank != std::string_view::npos) piece = piece.substr(0, blank + 1);
      }
      if (count == 1) std::memset(line, ' ', indent);
      const std::size_t end = indent + piece.size();
      std::memcpy(line + indent, piece.data(), piece.size());
      line[end] = '\0';
      Entry::line(line, static_cast<int64_t>(end), unit_, identity_);
      message.remove_prefix(piece.size());
    } while (++count < kMostLines && !message.empty());
  }

  int32_t unit_;
  Identity identity_;
};

// The by-reference entries differ in the message number alone.
void writeByReference(const Identity& identity, const int32_t* unit, const int32_t* statusFlag, const char* type,
                      const char* messageTemplate, const int32_t* ints, const double* reals, const char* strings,
                      int64_t typeLength, int64_t templateLength, int64_t stringLength) {
  const FixedStrings texts{strings, stringLength > 0 ? stringLength : 0};
  Writer<ByReference>(*unit, identity)
      .write(*statusFlag != 0, fixedText(type, typeLength), fixedText(messageTemplate, templateLength), ints, reals,
             texts);
}

} // namespace
} // namespace sa

SA_EXPORT void GLO_UTI_WRITE(const int32_t* unit, const int32_t* statusFlag, const char* type,
                             const char* messageTemplate, const int32_t* ints, const double* reals, const char* strings,
                             int64_t typeLength, int64_t templateLength, int64_t stringLength) {
  const int32_t thread = DSM_KER_THREADID();
  sa::writeByReference({thread, DSM_KER_MESSAGEID()}, unit, statusFlag, type, messageTemplate, ints, reals, strings,
                       typeLength, templateLength, stringLength);
}

SA_EXPORT void GLO_UTI_WRITECONT(const int32_t* unit, const int32_t* statusFlag, const char* type,
                                 const char* messageTemplate, const int32_t* ints, const double* reals,
                                 const char* strings, int64_t typeLength, int64_t templateLength,
                                 int64_t stringLength) {
  const int32_t thread = DSM_KER_THREADID();
  sa::writeByReference({thread, DSM_KER_LASTMESSAGEID()}, unit, statusFlag, type, messageTemplate, ints, reals, strings,
                       typeLength, templateLength, stringLength);
}

SA_EXPORT void glo_uti_CWrite(int32_t unit, int32_t statusFlag, const char* type, const char* messageTemplate,
                              const int32_t* ints, const double* reals, const char* const* strings) {
  dsm_ker_ThreadData& thread = thr_ThreadSingleton<dsm_ker_ThreadData>::Instance();
  const sa::Identity identity{thread.threadNumber, thread.messageNumber++};
  sa::Writer<sa::ByValue>(unit, identity)
      .write(statusFlag != 0, sa::terminatedText(type), sa::terminatedText(messageTemplate), ints, reals, {strings});
}
