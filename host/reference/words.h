// Counts and lists in messages.
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

} // namespace sharedanalysis::host
