// Texts of diagnostics.
#pragma once

#include "dia_Values.h"
#include "host_service.h"

#include <string>

// Any thread.
class SA_HOST_SERVICE dia_FormatUtils {
public:
  // `text` with the values in place of its placeholders: %I, %R and %S take the next integer, real and string, %N and %E
  // the next node and element as "number" or, in a model of parts, "number instance name".  A placeholder without a value
  // stays as it is.
  static std::string Substitute(const std::string& text, const dia_Values& values);
};
