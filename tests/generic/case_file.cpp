#include "case_file.h"

#include <algorithm>
#include <string_view>

namespace sa::test {

Findings writeCases(GuardedMemory& memory, const Kernel& kernel, std::ostream& stream) {
  constexpr int kPoints = 9, kMostVariants = 6;
  Findings findings;
  const auto number = [&](std::uint64_t value) { stream.write(reinterpret_cast<const char*>(&value), sizeof value); };
  const auto bytes = [&](const std::vector<unsigned char>& data) {
    stream.write(reinterpret_cast<const char*>(data.data()), static_cast<std::streamsize>(data.size()));
  };
  const int variants = std::min(variantCount(*kernel.info), kMostVariants);
  for (int variant = 0; variant < variants; ++variant) {
    const KernelCase before = makeCase(*kernel.info, kPoints, variant);
    KernelCase after = before;
    memory.call(kernel.address, after, [&](const std::string& text) { findings.insert(text); });
    const std::string_view name = kernel.info->name;
    number(name.size());
    stream << name;
    number(before.arrays.size());
    number(after.result);
    for (std::size_t k = 0; k < before.arrays.size(); ++k) {
      const bool isWritten = before.arrays[k].info->isWritten();
      number(isWritten ? 1 : 0);
      number(before.arrays[k].bytes.size());
      bytes(before.arrays[k].bytes);
      if (isWritten) bytes(after.arrays[k].bytes);
    }
  }
  return findings;
}

} // namespace sa::test
