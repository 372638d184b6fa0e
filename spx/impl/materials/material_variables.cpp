// What a thread keeps for the kernels deep in a material's call chain.
#include "glo/frame/thread_slot.h"
#include "glo/kernel/kernel.h"
#include "spx.h"

#include <algorithm>
#include <array>

namespace sa {
namespace {

struct MaterialVariables {
  std::array<int64_t, 9> addresses;
  std::array<int32_t, 3> ints;
  double real;
};

using Slot = ThreadSlot<MaterialVariables>;

MaterialVariables& variables() { return Slot::get(Slot::release); }

} // namespace
} // namespace sa

SA_EXPORT void SPX_MATVARSETVAR(const int64_t* ptrs, const int32_t* ints, const double* real) {
  sa::MaterialVariables& record = sa::variables();
  std::copy_n(ptrs, record.addresses.size(), record.addresses.begin());
  std::copy_n(ints, record.ints.size(), record.ints.begin());
  record.real = *real;
}

SA_EXPORT int64_t* SPX_MATVARGETPTR(void) { return sa::variables().addresses.data(); }
SA_EXPORT int32_t* SPX_MATVARGETINT(void) { return sa::variables().ints.data(); }
SA_EXPORT double* SPX_MATVARGETREAL(void) { return &sa::variables().real; }
