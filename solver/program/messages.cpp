#include "solver/program/messages.h"

#include "glo.h"

namespace sharedanalysis::solver {

void message(const char* type, const char* text, const std::vector<std::string>& strings,
             std::initializer_list<double> reals) {
  constexpr int32_t noChannel = 0;
  std::vector<const char*> pointers;
  for (const std::string& string : strings) pointers.push_back(string.c_str());
  const bool status = std::string(type) == "Status";
  glo_uti_CWrite(status ? noChannel : GLO_UNIT_MESSAGE_FILE, 1, type, text, nullptr, reals.begin(), pointers.data());
}

void endAnalysis(int32_t code) { GLO_UTI_EXIT(&code); }

} // namespace sharedanalysis::solver
