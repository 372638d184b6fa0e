// Services that a program defines itself win over those of the host library that it links.
#include <cstdint>
#include <cstdio>
#include <string>

#include "glo.h"

namespace {
std::string line;
int threadCalls = 0;
} // namespace

extern "C" {
__attribute__((visibility("default"))) std::int32_t DSM_KER_THREADID(void) {
  ++threadCalls;
  return 7;
}
__attribute__((visibility("default"))) void LFC_XUT_XPLMSGC(const char* text, const std::int32_t*, const std::int32_t*,
                                                            const std::int32_t*, const std::int32_t*,
                                                            std::int64_t length) {
  line.append(text, static_cast<std::size_t>(length));
}
}

int main() {
  const std::int32_t unit = 6, status = 0, none = 0;
  const double noReal = 0.0;
  GLO_UTI_WRITE(&unit, &status, " ", "to the program", &none, &noReal, " ", 1, 14, 1);
  std::printf("thread asked %d times, line \"%s\"\n", threadCalls, line.c_str());
  return threadCalls > 0 && line.find("to the program") != std::string::npos ? 0 : 1;
}
