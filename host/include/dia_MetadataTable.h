// Properties of the codes of diagnostics.
#pragma once

#include "host_service.h"

#include <cstdint>
#include <string>
#include <vector>

// How many values of each kind a diagnostic of a code carries.
struct dia_Counts {
  int32_t ints = 0, reals = 0, strings = 0, nodes = 0, elements = 0;
};

// Any thread.  The tables do not change while an analysis runs, and every process of it has the same ones.
class SA_HOST_SERVICE dia_MetadataTable {
public:
  // Table 0 holds errors, warnings, element and general diagnostics, table 1 contact diagnostics; any other number counts
  // as 0.
  static const dia_MetadataTable& Instance(int32_t table);

  bool IsValid(int32_t code) const;
  dia_Counts GetCounts(int32_t code) const; // all 0 for a code that is not valid
  int32_t GetNumStringValues(int32_t code) const;
  // The texts of a code, one for each variation; placeholders as dia_FormatUtils has them.  Empty for an unknown code.
  const std::vector<std::string>& GetDetailStrings(int32_t code) const;
  bool IsForStatusChannel(int32_t code) const;
};
