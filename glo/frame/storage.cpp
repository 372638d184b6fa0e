// Work storage by offsets, and addresses through the by-reference interface.
#include "glo.h"
#include "glo/kernel/kernel.h"
#include "host_services.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string_view>

namespace sa {
namespace {

constexpr int32_t kNoPosition = 134217729;
constexpr int32_t kLargest = std::numeric_limits<int32_t>::max();

// The two texts differ by an article; hosts know both.
constexpr std::string_view kNegative = "A negative storage request value is not allowed.";
constexpr std::string_view kNegativeChecked = "Negative storage request value is not allowed.";

// An offset that no 32-bit integer holds stays at the end of their range, so that it refuses what follows.
int32_t saturated(int64_t offset) {
  return static_cast<int32_t>(std::clamp<int64_t>(offset, std::numeric_limits<int32_t>::min(), kLargest));
}

// One request: the offset is rounded up to a multiple of `alignment`, and a new offset beyond the limit is refused.
void request(int64_t alignment, int32_t limit, std::string_view negative, int32_t* offset, int32_t* position,
             int32_t size) {
  *position = kNoPosition;
  if (size == 0) return;
  if (size < 0) {
    LFC_XUT_ERRMSG(negative.data(), static_cast<int64_t>(negative.size()));
    LFC_XUT_ABORT();
    *offset = saturated(static_cast<int64_t>(*offset) + size);
    return;
  }
  const int64_t start = (*offset + alignment - 1) & -alignment;
  const int64_t end = start + size;
  if (end <= limit) *position = static_cast<int32_t>(start + 1);
  *offset = saturated(end);
}

// Addresses travel as 64-bit integers.
int64_t address(const void* x) { return static_cast<int64_t>(reinterpret_cast<std::intptr_t>(x)); }

} // namespace
} // namespace sa

SA_EXPORT void GLO_UTI_ALLO(int32_t* offset, int32_t* position, const int32_t* size) {
  sa::request(4, sa::kLargest, sa::kNegative, offset, position, *size);
}
SA_EXPORT void GLO_UTI_ALLOOLD(int32_t* offset, int32_t* position, const int32_t* size) {
  sa::request(4, sa::kLargest, sa::kNegative, offset, position, *size);
}
SA_EXPORT void GLO_UTI_ALLOSEQ(int32_t* offset, int32_t* position, const int32_t* size) {
  sa::request(1, sa::kLargest, sa::kNegative, offset, position, *size);
}
SA_EXPORT void GLO_UTI_ALLOCHECK(const int32_t* limit, int32_t* offset, int32_t* position, const int32_t* size) {
  sa::request(4, *limit, sa::kNegativeChecked, offset, position, *size);
}

SA_EXPORT void GLO_UTI_SETPOINTERI(const int32_t* x, int64_t* p) { *p = sa::address(x); }
SA_EXPORT void GLO_UTI_SETPOINTERR(const double* x, int64_t* p) { *p = sa::address(x); }
SA_EXPORT void GLO_UTI_SETPOINTER(const int64_t* p, int64_t* q) { *q = *p; }
SA_EXPORT void* GLO_UTI_GETPOINTER(const int64_t* p) {
  return reinterpret_cast<void*>(static_cast<std::intptr_t>(*p)); // NOLINT(performance-no-int-to-ptr): stored above
}
