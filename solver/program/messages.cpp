#include "solver/program/messages.h"

#include "glo.h"

namespace sharedanalysis::solver {

void message(const char* type, const char* text, const std::vector<std::string>& strings,
             std::initializer_list<double> reals) {
  constexpr int32_t noChannel = 0, messageFile = -6;
  std::vector<const char*> pointers;
  for (const std::string& string : strings) pointers.push_back(string.c_str());
  const bool status = std::string(type) == "Status";
  glo_uti_CWrite(status ? noChannel : messageFile, 1, type, text, nullptr, reals.begin(), pointers.data());
}

void endAnalysis(EndCode code) {
  const int32_t value = code;
  GLO_UTI_EXIT(&value);
}

} // namespace sharedanalysis::solver
