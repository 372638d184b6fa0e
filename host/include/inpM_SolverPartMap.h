// Numbers of the solver as the user knows them.
#pragma once

#include "dia_Values.h"
#include "host_service.h"

#include <cstdint>
#include <string>

// Any thread; the map does not change while an analysis runs.
class SA_HOST_SERVICE inpM_SolverPartMap {
public:
  static const inpM_SolverPartMap& Instance();

  // Instance name and local label of a node or element of the solver; a number that the model does not have keeps itself
  // and has an empty name.
  dia_Entity ConstGetInstanceNodeIdPair(int32_t solverNode) const;
  dia_Entity ConstGetInstanceElementIdPair(int32_t solverElement) const;

  // The external name behind a label reference, a text that begins with " L"; the text itself when nothing is known of it.
  std::string GetLabelName(const std::string& reference) const;
};
