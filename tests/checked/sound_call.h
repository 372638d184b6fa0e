// A call of any routine with sound arguments, of zeros, ones and unit tensors, for tests that spoil one of them.
#pragma once

#include <cstdlib>
#include <cstring>
#include <deque>
#include <vector>

#include "checked/layout.h"

namespace sa::test {

class SoundCall {
public:
  static constexpr std::int32_t kPoints = 4, kEntities = 6;

  explicit SoundCall(const checked::Routine& routine) : routine_(&routine) {
    const std::span<const checked::Argument> arguments = checked::argumentsOf(routine);
    addresses_.resize(arguments.size() + 1);
    // bounds may name arguments that come later
    for (int round = 0; round < 3; ++round)
      for (std::size_t k = 0; k < arguments.size(); ++k) setScalar(k, arguments[k]);
    const checked::Layout layout(routine, addresses_.data());
    for (std::size_t k = 0; k < arguments.size(); ++k) fill(k, arguments[k], layout);
  }

  const checked::Routine& routine() const { return *routine_; }
  const void** addresses() { return addresses_.data(); }
  int argument(std::string_view name) const {
    const std::span<const checked::Argument> arguments = checked::argumentsOf(*routine_);
    for (std::size_t k = 0; k < arguments.size(); ++k)
      if (name == arguments[k].name) return static_cast<int>(k);
    return -1;
  }
  template <class T>
  T* as(std::size_t k) {
    return reinterpret_cast<T*>(memory_[k].data());
  }

private:
  using Bytes = std::vector<double>; // for its alignment
  void setScalar(std::size_t k, const checked::Argument& a) {
    if (memory_.size() <= k) memory_.resize(k + 1);
    if (memory_[k].empty()) memory_[k].resize(4096, 0.0);
    addresses_[k] = memory_[k].data();
    if (!a.has(checked::kScalar) && !a.has(checked::kByValue)) return;
    using checked::Role;
    std::int32_t value = 1;
    if (a.is(Role::block) || a.is(Role::length) || a.is(Role::stride) || a.is(Role::last) ||
        std::string_view(a.name) == "nblock" || std::string_view(a.name) == "blockSize")
      value = kPoints;
    if (a.is(Role::stride)) value = kPoints + 2;
    if (a.is(Role::rows)) value = kEntities;
    if (a.is(Role::code)) value = std::atoi(a.unit + 5);
    if (a.is(Role::count) && a.has(checked::kBounded)) value = std::max(1, sizeNow(a.bound));
    if (a.is(Role::count) && !a.has(checked::kBounded) && std::string_view(a.name) != "nblock") value = 3;
    if (a.has(checked::kTextLength)) value = 8;
    if (a.type == checked::Type::real)
      *as<double>(k) = 0.5;
    else if (a.type == checked::Type::int64)
      *as<std::int64_t>(k) = value;
    else
      *as<std::int32_t>(k) = value;
  }
  std::int32_t sizeNow(const checked::Dimension& d) {
    std::int32_t value = d.constant;
    for (int n = 0; n < 3; ++n)
      if (d.arguments[n] >= 0 && static_cast<std::size_t>(d.arguments[n]) < memory_.size())
        value += (n == 0 ? d.factor : 1) * *as<std::int32_t>(static_cast<std::size_t>(d.arguments[n]));
    return value;
  }
  void fill(std::size_t k, const checked::Argument& a, const checked::Layout& layout) {
    using checked::Role;
    if (!a.isArray()) return;
    const checked::Array& array = layout.array(k);
    const std::int64_t lines = array.lineCount > 0 ? array.lineCount : kEntities + 8;
    const std::int64_t elements = std::min<std::int64_t>(array.before * lines * array.after, 4096);
    for (std::int64_t n = 0; n < elements; ++n) {
      const std::int64_t component = array.after > 1 || array.before == 1 ? n / lines : n % array.before;
      const auto place = static_cast<std::size_t>(n);
      if (a.type == checked::Type::character) as<char>(k)[place] = ' ';
      if (a.type == checked::Type::int32)
        as<std::int32_t>(k)[place] = static_cast<std::int32_t>(a.is(Role::list) || a.is(Role::set) ? n + 1 : 1);
      if (a.type == checked::Type::real)
        as<double>(k)[place] = a.is(Role::mask) || a.is(Role::flag)               ? 0.0
                               : a.is(Role::stretch)                              ? (component < 3 ? 1.0 : 0.0)
                               : a.is(Role::planeStretch)                         ? (component < 2 ? 1.0 : 0.0)
                               : a.is(Role::axialStretch)                         ? 1.0
                               : std::string_view(a.unit) == "m" && component > 0 ? 0.25 * static_cast<double>(n % 7)
                                                                                  : 0.5;
    }
    if (a.is(Role::text) && array.isOpen && a.rank == 1) as<char>(k)[0] = 0; // a terminated text
  }

  const checked::Routine* routine_;
  std::deque<Bytes> memory_;
  std::vector<const void*> addresses_;
};

} // namespace sa::test
