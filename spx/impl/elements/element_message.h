// Error messages about single elements.
#pragma once

#include "glo.h"
#include "host_services.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace sa {

inline void writeMessage(std::string_view type, std::string_view text, const int32_t* ints = nullptr,
                         const char* strings = nullptr, int64_t stringLength = 0) {
  constexpr int32_t kMessageFile = GLO_UNIT_MESSAGE_FILE, kStatus = 1;
  GLO_UTI_WRITE(&kMessageFile, &kStatus, type.data(), text.data(), ints, nullptr, strings,
                static_cast<int64_t>(type.size()), static_cast<int64_t>(text.size()), stringLength);
}

// An error that names an element, by its internal number or by its instance and its number there.  A long text is kept in
// pieces, each with its blank at the end; it is one text.
struct ElementMessage {
  std::string_view plain, withInstance;
};

inline bool modelHasInstances() {
  constexpr int32_t kVariable = SA_HOST_VARIABLE_HAS_INSTANCES;
  return DSM_VAR_GETI(&kVariable) == 1;
}

inline void writeElementError(const ElementMessage& message, int32_t element, bool inInstances) {
  constexpr int64_t kInstanceLength = 80;
  char instance[kInstanceLength];
  int32_t number = element;
  std::fill_n(instance, kInstanceLength, ' ');
  if (inInstances) INPM_GETPARTINFOI(&element, instance, &number, kInstanceLength);
  const bool named = std::any_of(instance, instance + kInstanceLength, [](char c) { return c != ' '; });
  if (named)
    writeMessage("Error", message.withInstance, &number, instance, kInstanceLength);
  else
    writeMessage("Error", message.plain, &element);
}

} // namespace sa
