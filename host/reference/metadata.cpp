// Metadata of diagnostics; properties of codes, and substitution in texts.
#include "metadata.h"

#include "dia_Codes.h"
#include "dia_FormatUtils.h"
#include "dia_MetadataTable.h"
#include "dia_TypeCodeUtils.h"
#include "diagnostic_codes.h"
#include "message_template.h"
#include "reference_host.h"

#include <array>
#include <unordered_map>

namespace sharedanalysis::host {
namespace {

constexpr int32_t kErrorBit = 0x40000000, kVariationBits = 0x1F;

static_assert(codes::InternalError == dia_Codes::InternalError);
static_assert(codes::ExcessiveDistortion == dia_Codes::ExcessiveDistortion);
static_assert(codes::ExcessiveRotation == dia_Codes::ExcessiveRotation);

struct Metadata {
  std::string_view name;
  dia_Counts counts;
  bool forStatusChannel;
  std::vector<std::string> details;
};

struct Table : dia_MetadataTable {
  explicit Table(std::unordered_map<int32_t, Metadata> known) : codes(std::move(known)) {}

  const Metadata* find(int32_t code) const {
    const auto found = codes.find(code & ~kVariationBits);
    const bool known =
        found != codes.end() && static_cast<std::size_t>(code & kVariationBits) < found->second.details.size();
    return known ? &found->second : nullptr;
  }

  std::unordered_map<int32_t, Metadata> codes;
};

const Table& tableOf(int32_t number) {
#define SA_METADATA(name, severity, family, group, number, ints, reals, strings, nodes, elements, status, ...)         \
  {codes::name, {#name, {ints, reals, strings, nodes, elements}, status, {__VA_ARGS__}}},
  // outlive the static objects of the program
  static const Table& general = *new Table({SA_HOST_GENERAL_CODES(SA_METADATA)});
  static const Table& contact = *new Table({SA_HOST_CONTACT_CODES(SA_METADATA)});
#undef SA_METADATA
  return number == kContactTable ? contact : general;
}

const Metadata* find(const dia_MetadataTable* table, int32_t code) {
  return static_cast<const Table*>(table)->find(code);
}

constexpr std::array<std::string_view, 19> kCutbackReasons = {
    "Reason not given",
    "Convergence is too slow",
    "The solution diverges",
    "Too many equilibrium iterations",
    "Too many iterations with severe discontinuities",
    "Too many augmentations of the contact stress",
    "A temperature fell below absolute zero",
    "Elements are distorted excessively",
    "Material calculations failed",
    "The stability limit of the time integration was exceeded",
    "The accuracy tolerance of the time integration was exceeded",
    "Severe contact overclosures",
    "The slide distance was exceeded",
    "A new contact patch is needed",
    "The emissivity of a cavity changed too much",
    "Distorted elements remained after mesh smoothing",
    "Debonding asked for a smaller increment",
    "A user routine asked for another increment",
    "Contact changes repeat themselves",
};

// Replaces the placeholders of one text, in order.
class Substitution {
public:
  explicit Substitution(const dia_Values& values) : values_(values), inParts_(modelIsInParts()) {}

  // Appends the next value of the kind that `code` names; false when there is none.
  bool append(std::string& text, char code) {
    char field[32];
    switch (code) {
    case 'I':
      return appendNext(text, values_.ints, nextInt_,
                        [&](int32_t value) { return formatInteger(field, sizeof field, value); });
    case 'R':
      return appendNext(text, values_.reals, nextReal_,
                        [&](double value) { return formatReal(field, sizeof field, value, 'e'); });
    case 'S':
      return appendNext(text, values_.strings, nextString_, [](const std::string& value) { return value; });
    case 'N':
      return appendEntity(text, values_.nodes, nextNode_);
    case 'E':
      return appendEntity(text, values_.elements, nextElement_);
    default:
      return false;
    }
  }

private:
  template <class Value, class Format>
  static bool appendNext(std::string& text, const std::vector<Value>& values, std::size_t& next, Format format) {
    if (next >= values.size()) return false;
    text += format(values[next++]);
    return true;
  }

  bool appendEntity(std::string& text, const std::vector<dia_Entity>& entities, std::size_t& next) const {
    if (next >= entities.size()) return false;
    const dia_Entity& entity = entities[next++];
    char field[16];
    text += formatInteger(field, sizeof field, entity.label);
    if (inParts_ && !entity.instance.empty()) text.append(" instance ").append(entity.instance);
    return true;
  }

  const dia_Values& values_;
  const bool inParts_;
  std::size_t nextInt_ = 0, nextReal_ = 0, nextString_ = 0, nextNode_ = 0, nextElement_ = 0;
};

} // namespace

std::string_view codeName(int32_t table, int32_t code) {
  const Metadata* const known = tableOf(table).find(code);
  return known == nullptr ? std::string_view() : known->name;
}

std::string_view cutbackReason(int32_t reason) {
  const auto place = static_cast<std::size_t>(reason);
  return reason >= 0 && place < kCutbackReasons.size() ? kCutbackReasons[place] : std::string_view();
}

} // namespace sharedanalysis::host

using namespace sharedanalysis::host;

const dia_MetadataTable& dia_MetadataTable::Instance(int32_t table) { return tableOf(table); }
bool dia_MetadataTable::IsValid(int32_t code) const { return find(this, code) != nullptr; }

dia_Counts dia_MetadataTable::GetCounts(int32_t code) const {
  const Metadata* const known = find(this, code);
  return known == nullptr ? dia_Counts() : known->counts;
}

int32_t dia_MetadataTable::GetNumStringValues(int32_t code) const { return GetCounts(code).strings; }

const std::vector<std::string>& dia_MetadataTable::GetDetailStrings(int32_t code) const {
  static const std::vector<std::string>& none = *new std::vector<std::string>;
  const Metadata* const known = find(this, code);
  return known == nullptr ? none : known->details;
}

bool dia_MetadataTable::IsForStatusChannel(int32_t code) const {
  const Metadata* const known = find(this, code);
  return known != nullptr && known->forStatusChannel;
}

bool dia_TypeCodeUtils::IsError(int32_t code) { return (code & kErrorBit) != 0; }
int32_t dia_TypeCodeUtils::GetVariationNumber(int32_t code) { return code & kVariationBits; }

std::string dia_FormatUtils::Substitute(const std::string& text, const dia_Values& values) {
  Substitution substitution(values);
  std::string result;
  result.reserve(text.size() + 32);
  std::size_t begin = 0;
  while (begin < text.size()) {
    const std::size_t percent = text.find('%', begin);
    if (percent == std::string::npos || percent + 1 == text.size()) break;
    result.append(text, begin, percent - begin);
    const bool replaced = substitution.append(result, text[percent + 1]);
    // not a placeholder: keep the '%' and go on behind it
    if (!replaced) result += '%';
    begin = percent + (replaced ? 2 : 1);
  }
  return result.append(text, begin);
}
