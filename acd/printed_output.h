// What the diagnostics print on unit 7.
#pragma once

#include "dsm_ker_ThreadData.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace sa::acd {

constexpr int32_t kPrintedUnit = 7;

// Thread number and a fresh message number of the calling thread.
struct HostIdentity {
  HostIdentity() {
    dsm_ker_ThreadData& thread = thr_ThreadSingleton<dsm_ker_ThreadData>::Instance();
    values[0] = thread.threadNumber;
    values[1] = thread.messageNumber++;
  }
  int32_t values[2];
};

enum class EmptyLine { None, Before };

// Header and text in lines of at most 79 characters, broken after the last blank that fits; later lines are indented by the
// header's length.  Then the unit is brought up to date.
void printMessage(std::string_view header, std::string_view text, EmptyLine emptyLine);

std::string upperCase(std::string text);

} // namespace sa::acd
