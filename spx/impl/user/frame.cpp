// Messages and checks of the built-in user materials.
#include "spx/impl/user/frame.h"

#include "glo.h"

namespace sa::user {
namespace {

constexpr int32_t kMessageFile = -6, kStatus = 1, kErrors = 20;

void write(std::string_view type, const Block& block, std::string_view text, int32_t value, const double* reals) {
  GLO_UTI_WRITE(&kMessageFile, &kStatus, type.data(), text.data(), &value, reals, block.name.data(),
                static_cast<int64_t>(type.size()), static_cast<int64_t>(text.size()),
                static_cast<int64_t>(block.name.size()));
}

} // namespace

bool refuse(const Block& block, std::string_view text, int32_t value, const double* reals) {
  write("Error", block, text, value, reals);
  GLO_UTI_EXIT(&kErrors);
  return true;
}

void warn(const Block& block, std::string_view text) {
  if (block.isDataCheck) write("Warning", block, text, 0, nullptr);
}

bool refuseValues(const Block& block, std::initializer_list<int32_t> positive) {
  for (const int32_t number : positive)
    if (!(block.props[number - 1] > 0.0))
      return refuse(block, "Property %I of material %S must be greater than zero.", number);
  return false;
}

bool refuseAbove(const Block& block, int32_t smaller, int32_t larger, std::string_view text) {
  const double given[] = {block.props[smaller - 1], block.props[larger - 1]};
  return !(given[0] <= given[1]) && refuse(block, text, 0, given);
}

bool refuseOutside(const Block& block, int32_t number, double least, double most) {
  const double x = block.props[number - 1], told[] = {least, vm::select(most < vm::kInfinity, most, x), x};
  if (x >= least && x <= most && vm::abs(x) < vm::kInfinity) return false;
  if (most < vm::kInfinity)
    return refuse(block, "Property %I of material %S must lie between %R and %R: it is %R.", number, told);
  return refuse(block, "Property %I of material %S must be finite and not less than %R: it is %R.", number, told);
}

bool refuseNegative(const Block& block, std::initializer_list<int32_t> numbers) {
  for (const int32_t number : numbers)
    if (refuseOutside(block, number, 0.0)) return true;
  return false;
}

bool refuseNotFinite(const Block& block, int32_t first, int32_t last) {
  for (int32_t number = first; number <= last && number <= block.properties; ++number)
    if (!(vm::abs(block.props[number - 1]) < vm::kInfinity))
      return refuse(block, "Property %I of material %S must be finite: it is %R.", number, &block.props[number - 1]);
  return false;
}

} // namespace sa::user
