// A hash of exact bits: of results, to compare runs, and of what ranks have read.
#pragma once

#include <bit>
#include <cstdint>
#include <string_view>

namespace sharedanalysis::solver {

// Each step is a bijection of the word and of the state: a change of one word always changes the hash.
class Hash {
public:
  void add(uint64_t word) {
    state_ = (state_ ^ word) * 0xd6e8feb86659fd93U;
    state_ ^= state_ >> 32;
  }
  void add(double value) { add(std::bit_cast<uint64_t>(value)); }
  void add(std::string_view text) {
    add(uint64_t{text.size()});
    addLetters(text);
  }
  void addLetters(std::string_view text) {
    for (const char letter : text) add(uint64_t{static_cast<unsigned char>(letter)});
  }
  uint64_t value() const { return state_; }

private:
  uint64_t state_ = 0x9e3779b97f4a7c15U;
};

} // namespace sharedanalysis::solver
