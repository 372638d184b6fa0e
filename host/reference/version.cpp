// Name of the host, date and time.
#include "utl_Version.h"
#include "utl_getDate.h"
#include "utl_getTime.h"

#include <algorithm>
#include <ctime>

#define SA_HOST_TITLE "SharedAnalysis Reference Host 1.0"

namespace {

// Two digits with leading zero.
char* twoDigits(char* text, int value) {
  *text++ = static_cast<char>('0' + value / 10 % 10);
  *text++ = static_cast<char>('0' + value % 10);
  return text;
}

std::tm localTime() {
  const std::time_t now = std::time(nullptr);
  std::tm local = {};
  localtime_r(&now, &local);
  return local;
}

int32_t copyField(const char* field, const char* end, char* text, int32_t capacity) {
  const auto length = std::clamp(static_cast<int32_t>(end - field), 0, std::max(capacity, 0));
  std::copy_n(field, length, text);
  return length;
}

} // namespace

const utl_Version& utl_Version::Instance() {
  static const utl_Version version;
  return version;
}

const char* utl_Version::Title(bool withOptionalPart) const {
  return withOptionalPart ? SA_HOST_TITLE " (compiler " __VERSION__ ")" : SA_HOST_TITLE;
}

// 21-Nov-2026, whatever the locale
int32_t utl_getDate(char* text, int32_t capacity) {
  static constexpr char kMonths[] = "JanFebMarAprMayJunJulAugSepOctNovDec";
  const std::tm now = localTime();
  char field[11];
  char* end = twoDigits(field, now.tm_mday);
  *end++ = '-';
  end = std::copy_n(kMonths + 3 * now.tm_mon, 3, end);
  *end++ = '-';
  end = twoDigits(end, (now.tm_year + 1900) / 100);
  end = twoDigits(end, now.tm_year);
  return copyField(field, end, text, capacity);
}

// 08:03:28
int32_t utl_getTime(char* text, int32_t capacity) {
  const std::tm now = localTime();
  char field[8];
  char* end = twoDigits(field, now.tm_hour);
  *end++ = ':';
  end = twoDigits(end, now.tm_min);
  *end++ = ':';
  end = twoDigits(end, now.tm_sec);
  return copyField(field, end, text, capacity);
}
