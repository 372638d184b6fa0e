// Stores the course of an analysis and its diagnostics: the extractor of the implicit solver.
#pragma once

#include "dia_Values.h"
#include "host_service.h"

#include <cstdint>

// Diagnostics (Add...) and questions (Get..., Is...) come from any thread and from several at once: on the owner process,
// and where nothing is collected, every thread that reports calls them directly.  The course of the analysis and the
// settings come from one thread, while others may be reporting.  Nothing throws.  A call out of place (an increment without a step, an end
// without a beginning) is stored where it makes sense and else ignored.
class SA_HOST_SERVICE dxt_DiagnosticExtractor {
public:
  static dxt_DiagnosticExtractor& Instance();

  void Enable();                     // stores from now on, as at the start
  void Disable();                    // ignores everything but setters
  void SetDdbName(const char* name); // file name of the database
  void SetExecutionCode(int32_t code);
  int32_t GetExecutionCode() const; // 0 until set; 1: diagnostics are printed as well
  bool IsModelInParts() const;

  void BeginStep(int32_t number, const char* name, int32_t procedure, bool flag1, bool flag2);
  void EndStep();
  void BeginIncrement(int32_t number, double timeIncrement);
  void EndIncrement(double time, bool converged);
  void BeginAttempt(double timeIncrement);
  void EndAttempt();
  void BeginIteration();
  void EndIteration();
  void BeginContactIteration();
  void EndContactIteration();

  void SetIterationConverged(bool converged);
  void SetContactIterationConverged(bool converged);
  void SetAttemptNeedsReordering(bool needs);
  void SetIterationSevereDiscontinuity(bool flag);
  void SetIterationPenetrationToleranceExceeded(bool flag);
  void SetIterationSeparationToleranceTooLarge(bool flag);
  void SetRenumbered(bool renumbered);

  void SetStepIncrementationControls(int32_t mode, double r1, double r2, double r3, double r4, int32_t n);
  void SetStepSolver(int32_t solver);               // 0 or 1
  void SetStepExtrapolation(int32_t extrapolation); // 0 to 2
  void SetStepCharacteristicElementLength(double length);
  void SetStepUnsymm();
  void SetStepNlgeom();
  void SetStepStabilizeFactor(double factor);

  void AddError(int32_t code, const dia_Values& values);
  void AddWarning(int32_t code, const dia_Values& values);
  void AddElementDiagnostic(int32_t code, const dia_Values& values);
  void AddContactDiagnostic(int32_t code, const dia_Values& values);
  void AddResidualDiagnostic(int32_t field, int32_t kind, const dia_Values& values);
  void AddCompatibilityDiagnostic(int32_t constraint, const dia_Values& values);
  void AddCutbackDiagnostic(int32_t code);
  void AddInternalError(const char* message);

private:
  dxt_DiagnosticExtractor() = default;
};
