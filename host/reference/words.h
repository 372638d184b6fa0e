// Counts, lists and foreign text in messages.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace sharedanalysis::host {

// "1 brick", "12 bricks"
template <class Integer>
std::string counted(Integer count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

inline std::string joined(const std::vector<std::string>& parts, std::string_view separator = ", ") {
  std::string text;
  for (const std::string& part : parts) {
    if (!text.empty()) text += separator;
    text += part;
  }
  return text;
}

// Replaces control characters: a text from elsewhere must neither control a terminal nor begin a line.
inline std::string printable(std::string text) {
  const auto code = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
  for (std::size_t k = 0; k < text.size(); ++k) {
    // U+0080 to U+009F, which UTF-8 writes as C2 80 to C2 9F, are control characters as well
    const bool isSecond = k > 0 && code(k - 1) == 0xC2 && code(k) >= 0x80 && code(k) < 0xA0;
    if (isSecond) text[k - 1] = ' ';
    if (isSecond || code(k) < ' ' || code(k) == 127) text[k] = ' ';
  }
  return text;
}

} // namespace sharedanalysis::host
