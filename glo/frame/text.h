// Texts of fixed length.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

namespace sa {

// Fills a text argument from the left: what does not fit is cut, the rest is padded with blanks.
class TextArgument {
public:
  TextArgument(char* text, int64_t length) : text_(text), room_(length > 0 ? length : 0) {}
  ~TextArgument() { blanks(room_); }
  TextArgument(const TextArgument&) = delete;
  TextArgument& operator=(const TextArgument&) = delete;

  void append(std::string_view piece) {
    const int64_t count = fitting(static_cast<int64_t>(piece.size()));
    if (count > 0) std::memcpy(text_, piece.data(), static_cast<std::size_t>(count));
    advance(count);
  }
  void blanks(int64_t wanted) {
    const int64_t count = fitting(wanted);
    if (count > 0) std::memset(text_, ' ', static_cast<std::size_t>(count));
    advance(count);
  }
  int64_t room() const { return room_; }

private:
  int64_t fitting(int64_t wanted) const { return wanted < room_ ? wanted : room_; }
  void advance(int64_t count) {
    if (count <= 0) return;
    text_ += count;
    room_ -= count;
  }

  char* text_;
  int64_t room_;
};

} // namespace sa
