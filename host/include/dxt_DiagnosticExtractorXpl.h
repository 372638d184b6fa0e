// Stores the course of an analysis and its diagnostics: the extractor of the explicit solver.
#pragma once

#include "dia_Values.h"
#include "host_service.h"

#include <array>
#include <cstdint>
#include <string>

// Diagnostics (Add...) and questions (Get..., Is...) come from any thread and from several at once: on the owner process,
// and where nothing is collected, every thread that reports calls them directly.  The course of the analysis and the
// settings come from one thread, while others may be reporting.  Nothing throws.  `domain` is the rank that a diagnostic comes from.
class SA_HOST_SERVICE dxt_DiagnosticExtractorXpl {
public:
  static dxt_DiagnosticExtractorXpl& Instance();

  void Enable();
  void Disable();
  void SetDdbName(const char* name);
  void SetExecutionCode(int32_t code);
  int32_t GetExecutionCode() const;
  bool IsModelInParts() const;
  void SetNumDomains(int32_t domains);
  void SetXplDoublePrecision(bool isDouble);
  void SetRenumbered(bool renumbered);
  void SetValid(bool valid);

  void BeginStep(int32_t number, const char* name, int32_t procedure);
  void EndStep();
  void BeginIncrement(int32_t number, double timeIncrement);
  void EndIncrement(double time, bool flag);

  void AddError(int32_t code, int32_t domain, const dia_Values& values);
  void AddWarning(int32_t code, int32_t domain, const dia_Values& values);
  void AddElementDiagnostic(int32_t code, int32_t domain, const dia_Values& values);
  void AddContactDiagnostic(int32_t code, int32_t domain, const dia_Values& values);
  void AddInternalError(const char* message);
  void AddXplStatus(int32_t status, int32_t node, const std::string& instance, const std::array<double, 9>& reals);
  void SetActiveXplStatus(const std::array<int32_t, 9>& active);

  int32_t GetNumberOfErrors() const;
  int32_t GetNumberOfWarnings() const;
  int32_t GetNumberOfElementDiagnostics() const;

private:
  dxt_DiagnosticExtractorXpl() = default;
};
