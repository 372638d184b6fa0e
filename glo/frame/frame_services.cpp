// Names of procedures, the version banner, and the flush of the standard streams.
#include "glo.h"
#include "glo/frame/text.h"
#include "glo/kernel/kernel.h"
#include "host_services.h"
#include "kprC_Step.h"
#include "utl_Version.h"
#include "utl_getDate.h"
#include "utl_getTime.h"

#include <algorithm>
#include <cstdio>

namespace sa {
namespace {

struct Procedures {
  int32_t first, last; // ids
  const char* (*keyword)();
};

template <class Step>
const char* keyword() {
  return Step::constructorCmd();
}

constexpr Procedures kProcedures[] = {
    {1, 7, keyword<kprC_StaticStep>},
    {11, 12, keyword<kprC_ImplicitDynamicsStep>},
    {13, 13, keyword<kprC_SubspaceDynamicsStep>},
    {17, 17, keyword<kprC_ExplicitDynamicsStep>},
    {21, 25, keyword<kprC_ViscoStep>},
    {31, 33, keyword<kprC_HeatTransferStep>},
    {34, 36, keyword<kprC_MassDiffusionStep>},
    {41, 41, keyword<kprC_FrequencyStep>},
    {42, 42, keyword<kprC_BuckleStep>},
    {43, 43, keyword<kprC_FrequencyStep>},
    {44, 44, keyword<kprC_BuckleStep>},
    {51, 51, keyword<kprC_StaticRiksStep>},
    {61, 61, keyword<kprC_GeostaticStep>},
    {62, 65, keyword<kprC_SoilsStep>},
    {71, 73, keyword<kprC_CoupledTempDisplacementStep>},
    {74, 74, keyword<kprC_TempDisplacementDynamicsStep>},
    {75, 78, keyword<kprC_CoupledThermalElectricStep>},
    {81, 81, keyword<kprC_StaticLinearPerturbationStep>},
    {85, 86, keyword<kprC_SteadyStateDirectStep>},
    {91, 91, keyword<kprC_ResponseSpectrumStep>},
    {92, 92, keyword<kprC_ModalDynamicsStep>},
    {93, 93, keyword<kprC_SteadyStateModalStep>},
    {94, 94, keyword<kprC_RandomResponseStep>},
    {95, 96, keyword<kprC_SteadyStateModalStep>},
    {98, 98, keyword<kprC_AnnealStep>},
};

const char* procedureKeyword(int32_t id) {
  for (const Procedures& procedures : kProcedures)
    if (procedures.first <= id && id <= procedures.last) return procedures.keyword();
  tvkerrC(1, "UNKNOWN PROCEDURE TYPE ID: %I ", &id, nullptr, nullptr);
  return "Unknown";
}

} // namespace
} // namespace sa

SA_EXPORT void GLO_GETPROCEDURETYPE(const int32_t* procedureId, char* text, int64_t textLength) {
  sa::TextArgument(text, textLength).append(sa::procedureKeyword(*procedureId));
}

SA_EXPORT void GLO_UTI_GETVERSIONDATETIME(char* text, int64_t textLength) {
  static constexpr int32_t kLongest = 64; // characters of a date or a time
  char date[kLongest], time[kLongest];
  const auto field = [](const char* characters, int32_t length) {
    return std::string_view(characters, static_cast<std::size_t>(std::clamp(length, 0, kLongest)));
  };
  const std::string_view parts[] = {" DATE ", field(date, utl_getDate(date, kLongest)), "  TIME ",
                                    field(time, utl_getTime(time, kLongest))};
  std::size_t dateAndTime = 0;
  for (std::string_view part : parts) dateAndTime += part.size();

  sa::TextArgument banner(text, textLength);
  banner.append(utl_Version::Instance().Title(false));
  banner.blanks(banner.room() - static_cast<int64_t>(dateAndTime));
  for (std::string_view part : parts) banner.append(part);
}

SA_EXPORT void GLO_UTI_FLUSH(void) {
  std::fflush(stdout);
  std::fflush(stderr);
}
