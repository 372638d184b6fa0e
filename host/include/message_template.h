// Message templates: the placeholders that the library's writer and the receivers of status records both replace.
#pragma once

#include <charconv>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace sharedanalysis::host {

// Characters that a formatted message holds.
constexpr std::size_t kMessageCapacity = 1000;

// The text of a blank value in a message.
constexpr std::string_view kBlankValue = "        ";

inline std::string_view withoutTrailingBlanks(std::string_view text) {
  // padded fields are mostly blanks: eight at a time
  static constexpr std::string_view kBlanks = "        ";
  while (text.size() >= kBlanks.size() &&
         std::memcmp(text.data() + text.size() - kBlanks.size(), kBlanks.data(), kBlanks.size()) == 0)
    text.remove_suffix(kBlanks.size());
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

inline std::string_view withoutBlanks(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  return withoutTrailingBlanks(text);
}

// A text of fixed length; a negative length or a null pointer counts as empty.
inline std::string_view fixedText(const char* text, int64_t length) {
  if (text == nullptr || length <= 0) return {};
  return {text, static_cast<std::size_t>(length)};
}

// A zero-terminated text; a null pointer counts as empty.
inline std::string_view terminatedText(const char* text) {
  return text == nullptr ? std::string_view("") : std::string_view(text);
}

// The strings of a message: one array of equal lengths, or pointers to zero-terminated texts.
struct FixedStrings {
  const char* first;
  int64_t length;
  std::string_view operator[](int k) const {
    return length > 0 && first != nullptr ? fixedText(first + k * length, length) : std::string_view();
  }
};
struct TerminatedStrings {
  const char* const* first;
  std::string_view operator[](int k) const { return first != nullptr ? terminatedText(first[k]) : std::string_view(); }
};

// The value of "%10i" without its blanks.
inline std::string_view formatInteger(char* field, std::size_t capacity, int32_t value) {
  const char* end = std::to_chars(field, field + capacity, value).ptr;
  return {field, static_cast<std::size_t>(end - field)};
}

// The value of "%12.5e" without its blanks, with the given exponent letter: -1.23457e+00, nan, inf.
inline std::string_view formatReal(char* field, std::size_t capacity, double value, char exponentLetter) {
  const char* end = std::to_chars(field, field + capacity, value, std::chars_format::scientific, 5).ptr;
  const auto length = static_cast<std::size_t>(end - field);
  // the letter stands before the sign and the two or three digits of the exponent
  for (std::size_t k = length > 5 ? length - 5 : 0; k < length; ++k)
    if (field[k] == 'e') field[k] = exponentLetter;
  return {field, length};
}

// Messages on their way: of kMessageCapacity characters, and of any length, for receivers of status records.
struct FixedMessage {
  char* text;
  std::size_t length = 0;
  std::size_t room() const { return kMessageCapacity - length; }
  void append(std::string_view piece) {
    if (!piece.empty()) std::memcpy(text + length, piece.data(), piece.size());
    length += piece.size();
  }
};
struct GrowingMessage {
  std::string text;
  std::size_t room() const { return text.max_size() - text.size(); }
  void append(std::string_view piece) { text.append(piece); }
};

// Appends the template with its placeholders replaced to a message.  Each of the three arrays has a cursor of its own:
//   %I an integer    %R a real    %S a string    %% a percent sign    any other code, or none, ends the message
// Blanks around a value go; a value that is all blank, or that comes from an array that is not there, shows as 8 blanks.
// What does not fit ends the message.  Trailing blanks of the template do not count.
template <class Strings, class Message>
void substituteInto(Message& message, std::string_view text, const int32_t* ints, const double* reals, Strings strings,
                    char exponentLetter) {
  text = withoutTrailingBlanks(text);
  int nextInt = 0, nextReal = 0, nextString = 0;

  while (!text.empty()) {
    // ordinary characters up to the next placeholder
    const void* percent = std::memchr(text.data(), '%', text.size());
    const std::size_t ordinary =
        percent == nullptr ? text.size() : static_cast<std::size_t>(static_cast<const char*>(percent) - text.data());
    if (ordinary > message.room()) {
      message.append(text.substr(0, message.room()));
      break;
    }
    message.append(text.substr(0, ordinary));
    text.remove_prefix(ordinary);
    if (text.size() < 2) break;
    const char code = text[1];
    text.remove_prefix(2);

    char field[32];
    std::string_view value;
    if (code == 'I') {
      if (ints != nullptr) value = formatInteger(field, sizeof field, ints[nextInt++]);
    } else if (code == 'R') {
      if (reals != nullptr) value = formatReal(field, sizeof field, reals[nextReal++], exponentLetter);
    } else if (code == 'S') {
      value = withoutBlanks(strings[nextString++]);
    } else if (code == '%') {
      value = "%";
    } else {
      break;
    }
    if (value.empty()) value = kBlankValue;
    if (value.size() > message.room()) break;
    message.append(value);
  }
}

// The same into `message`, which holds kMessageCapacity characters; returns it.
template <class Strings>
std::string_view substitute(std::string_view text, const int32_t* ints, const double* reals, Strings strings,
                            char exponentLetter, char* message) {
  FixedMessage result{message};
  substituteInto(result, text, ints, reals, strings, exponentLetter);
  return {message, result.length};
}

} // namespace sharedanalysis::host
