/** @file acd/analysis.h
 *  Course of the analysis, settings, counts.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_ACD_ANALYSIS_H
#define SHAREDANALYSIS_ACD_ANALYSIS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * Course of the analysis
 * ------------------------------------------------------------------------------------------------------------------ */

/** A step begins.
 *  @param[in] number     (1), -: step number
 *  @param[in] name       (*), text: step name, of which the first 1024 characters count
 *  @param[in] procedure  (1), -: procedure code
 *  @param[in] flag1      (1), -: handed on to the extractor as true or false
 *  @param[in] flag2      (1), -: likewise
 */
void acd_begin_step_c(int32_t number, const char* name, int32_t procedure, int32_t flag1, int32_t flag2);

/** acd_begin_step_c by reference.
 *  @like acd_begin_step_c
 *  @param[in] name        (nameLength), text: step name, up to 1024 characters, padded with blanks
 *  @param[in] nameLength  (1), -: its length, by value
 */
void ACD_BEGIN_STEP(const int32_t* number, const char* name, const int32_t* procedure, const int32_t* flag1,
                    const int32_t* flag2, int64_t nameLength);

/** A step of the explicit solver begins.
 *  @like acd_begin_step_c
 */
void acd_begin_step_xpl_c(int32_t number, const char* name, int32_t procedure);

/** acd_begin_step_xpl_c by reference.
 *  @like acd_begin_step_xpl_c
 *  @param[in] name        (nameLength), text: step name, up to 1024 characters, padded with blanks
 *  @param[in] nameLength  (1), -: its length, by value
 */
void ACD_BEGIN_STEP_XPL(const int32_t* number, const char* name, const int32_t* procedure, int64_t nameLength);

/** The step ends. */
void acd_end_step_c(void);

/** acd_end_step_c. */
void ACD_END_STEP(void);

/** The step of the explicit solver ends. */
void acd_end_step_xpl_c(void);

/** acd_end_step_xpl_c. */
void ACD_END_STEP_XPL(void);

/** An increment begins.
 *  @param[in] number         (1), -: increment number
 *  @param[in] timeIncrement  (1), s: time increment
 */
void acd_begin_increment_c(int32_t number, double timeIncrement);

/** acd_begin_increment_c by reference; marks "Increment-Start" in the resource monitor before.
 *  @like acd_begin_increment_c
 */
void ACD_BEGIN_INCREMENT(const int32_t* number, const double* timeIncrement);

/** An increment of the explicit solver begins.
 *  @like acd_begin_increment_c
 */
void acd_begin_increment_xpl_c(int32_t number, double timeIncrement);

/** acd_begin_increment_xpl_c by reference.
 *  @like acd_begin_increment_xpl_c
 */
void ACD_BEGIN_INCREMENT_XPL(const int32_t* number, const double* timeIncrement);

/** The increment ends.
 *  @param[in] time       (1), s: step time
 *  @param[in] converged  (1), -: converged when 1 or greater
 */
void acd_end_increment_c(double time, int32_t converged);

/** acd_end_increment_c by reference; marks "Diagnostics-Start" before, "Diagnostics-End" and "Increment-End" after.
 *  @like acd_end_increment_c
 */
void ACD_END_INCREMENT(const double* time, const int32_t* converged);

/** The increment of the explicit solver ends.
 *  @like acd_end_increment_c
 *  @param[in] flag  (1), -: nonzero: the increment is complete
 */
void acd_end_increment_xpl_c(double time, int32_t flag);

/** acd_end_increment_xpl_c by reference.
 *  @like acd_end_increment_xpl_c
 */
void ACD_END_INCREMENT_XPL(const double* time, const int32_t* flag);

/** An attempt at the increment begins.
 *  @param[in] timeIncrement  (1), s: attempted time increment
 */
void acd_begin_attempt_c(double timeIncrement);

/** acd_begin_attempt_c by reference; marks "Attempt-Start".
 *  @like acd_begin_attempt_c
 */
void ACD_BEGIN_ATTEMPT(const double* timeIncrement);

/** The attempt ends. */
void acd_end_attempt_c(void);

/** acd_end_attempt_c; marks "Attempt-End". */
void ACD_END_ATTEMPT(void);

/** An equilibrium iteration begins. */
void acd_begin_iteration_c(void);

/** acd_begin_iteration_c; marks "Iteration-Start". */
void ACD_BEGIN_ITERATION(void);

/** The iteration ends. */
void acd_end_iteration_c(void);

/** acd_end_iteration_c; marks "Iteration-End". */
void ACD_END_ITERATION(void);

/** A contact iteration begins. */
void acd_begin_contact_iteration_c(void);

/** acd_begin_contact_iteration_c. */
void ACD_BEGIN_CONTACT_ITERATION(void);

/** The contact iteration ends. */
void acd_end_contact_iteration_c(void);

/** acd_end_contact_iteration_c. */
void ACD_END_CONTACT_ITERATION(void);

/* ---------------------------------------------------------------------------------------------------------------------
 * Settings
 * ------------------------------------------------------------------------------------------------------------------ */

/** Whether the iteration has converged.
 *  @param[in] converged  (1), -: nonzero is true
 */
void acd_set_iter_converged_c(int32_t converged);

/** acd_set_iter_converged_c by reference.
 *  @like acd_set_iter_converged_c
 */
void ACD_SET_ITER_CONVERGED(const int32_t* converged);

/** Whether the contact iteration has converged.
 *  @param[in] converged  (1), -: nonzero is true
 */
void acd_set_contiter_converged_c(int32_t converged);

/** acd_set_contiter_converged_c by reference.
 *  @like acd_set_contiter_converged_c
 */
void ACD_SET_CONTITER_CONVERGED(const int32_t* converged);

/** Whether the attempt needs its equations reordered.
 *  @param[in] flag  (1), -: nonzero is true
 */
void acd_set_attm_needsreordering_c(int32_t flag);

/** acd_set_attm_needsreordering_c by reference.
 *  @like acd_set_attm_needsreordering_c
 */
void ACD_SET_ATTM_NEEDSREORDERING(const int32_t* flag);

/** Whether the iteration saw a severe discontinuity.
 *  @param[in] flag  (1), -: nonzero is true
 */
void acd_set_iter_severediscont_c(int32_t flag);

/** acd_set_iter_severediscont_c by reference.
 *  @like acd_set_iter_severediscont_c
 */
void ACD_SET_ITER_SEVEREDISCONT(const int32_t* flag);

/** Whether the iteration exceeded the penetration tolerance.
 *  @param[in] flag  (1), -: nonzero is true
 */
void acd_set_iter_pentolexceeded_c(int32_t flag);

/** acd_set_iter_pentolexceeded_c by reference.
 *  @like acd_set_iter_pentolexceeded_c
 */
void ACD_SET_ITER_PENTOLEXCEEDED(const int32_t* flag);

/** Whether the separation tolerance of the iteration is too large.
 *  @param[in] flag  (1), -: nonzero is true
 */
void acd_set_iter_septoltoolarge_c(int32_t flag);

/** acd_set_iter_septoltoolarge_c by reference.
 *  @like acd_set_iter_septoltoolarge_c
 */
void ACD_SET_ITER_SEPTOLTOOLARGE(const int32_t* flag);

/** Whether the model was renumbered.
 *  @param[in] flag  (1), -: nonzero is true
 */
void acd_set_renumbered_c(int32_t flag);

/** acd_set_renumbered_c by reference.
 *  @like acd_set_renumbered_c
 */
void ACD_SET_RENUMBERED(const int32_t* flag);

/** Whether the model of the explicit solver was renumbered.
 *  @like acd_set_renumbered_c
 */
void acd_set_renumbered_xpl_c(int32_t flag);

/** acd_set_renumbered_xpl_c by reference.
 *  @like acd_set_renumbered_xpl_c
 */
void ACD_SET_RENUMBERED_XPL(const int32_t* flag);

/** File name of the diagnostic database.
 *  @param[in] fileName  (*), text: file name, of which the first 1024 characters count
 */
void acd_set_ddbname_c(const char* fileName);

/** acd_set_ddbname_c by reference.
 *  @like acd_set_ddbname_c
 *  @param[in] fileName        (fileNameLength), text: file name, up to 1024 characters, padded with blanks
 *  @param[in] fileNameLength  (1), -: its length, by value
 */
void ACD_SET_DDBNAME(const char* fileName, int64_t fileNameLength);

/** File name of the diagnostic database of the explicit solver.
 *  @like acd_set_ddbname_c
 */
void acd_set_ddbname_xpl_c(const char* fileName);

/** acd_set_ddbname_xpl_c by reference.
 *  @like acd_set_ddbname_xpl_c
 *  @param[in] fileName        (fileNameLength), text: file name, up to 1024 characters, padded with blanks
 *  @param[in] fileNameLength  (1), -: its length, by value
 */
void ACD_SET_DDBNAME_XPL(const char* fileName, int64_t fileNameLength);

/** Execution code of the implicit solver; while it is 1, what the plain entries record is printed as well.  Diagnostics of
 *  the entries with _xpl need acd_set_execode_xpl_c.
 *  @param[in] code  (1), -: 1: printed; any other: not printed
 */
void acd_set_execode_c(int32_t code);

/** acd_set_execode_c by reference.
 *  @like acd_set_execode_c
 */
void ACD_SET_EXECODE(const int32_t* code);

/** Execution code of the explicit solver; while it is 1, what the entries with _xpl record and what other processes send is
 *  printed as well.
 *  @like acd_set_execode_c
 */
void acd_set_execode_xpl_c(int32_t code);

/** acd_set_execode_xpl_c by reference.
 *  @like acd_set_execode_xpl_c
 */
void ACD_SET_EXECODE_XPL(const int32_t* code);

/** Number of domains of the explicit solver.
 *  @param[in] domains  (1), -: number of domains
 */
void acd_set_numdomains_xpl_c(int32_t domains);

/** acd_set_numdomains_xpl_c by reference.
 *  @like acd_set_numdomains_xpl_c
 */
void ACD_SET_NUMDOMAINS_XPL(const int32_t* domains);

/** Whether the explicit solver computes in double precision.
 *  @param[in] isDouble  (1), -: nonzero is true
 */
void acd_set_precision_xpl_c(int32_t isDouble);

/** acd_set_precision_xpl_c by reference.
 *  @like acd_set_precision_xpl_c
 */
void ACD_SET_PRECISION_XPL(const int32_t* isDouble);

/** Stabilisation factor of the step.
 *  @param[in] factor  (1), -: factor
 */
void acd_set_step_stabilizefactor_c(double factor);

/** acd_set_step_stabilizefactor_c by reference.
 *  @like acd_set_step_stabilizefactor_c
 */
void ACD_SET_STEP_STABILIZEFACTOR(const double* factor);

/** Marks the records of the explicit solver as valid. */
void acd_set_valid_xpl_c(void);

/** acd_set_valid_xpl_c. */
void ACD_SET_VALID_XPL(void);

/** Attributes of the step. Incrementation mode 1 when fixedIncrementation is nonzero, else 3 when directUser is 1, else
 *  2. A solver outside 0..1 counts as 0, an extrapolation outside 0..2 as 1. The four reals and n are handed on with the
 *  mode.
 *  @param[in] fixedIncrementation   (1), -: nonzero: increments of fixed size
 *  @param[in] directUser            (1), -: 1: increments chosen by the user
 *  @param[in] nlgeom                (1), -: nonzero: large displacements
 *  @param[in] unsymmetric           (1), -: nonzero: unsymmetric equations
 *  @param[in] extrapolation         (1), -: 0 none, 1 linear, 2 parabolic
 *  @param[in] solver                (1), -: 0 direct, 1 iterative
 *  @param[in] r1                    (1), any: handed on
 *  @param[in] r2                    (1), any: handed on
 *  @param[in] r3                    (1), any: handed on
 *  @param[in] r4                    (1), any: handed on
 *  @param[in] n                     (1), -: handed on
 *  @param[in] characteristicLength  (1), m: characteristic element length
 */
void acd_set_step_attributes_c(int32_t fixedIncrementation, int32_t directUser, int32_t nlgeom, int32_t unsymmetric,
                               int32_t extrapolation, int32_t solver, double r1, double r2, double r3, double r4,
                               int32_t n, double characteristicLength);

/** acd_set_step_attributes_c by reference; the first four integers count as 1 when they are nonzero.
 *  @like acd_set_step_attributes_c
 */
void ACD_SET_STEP_ATTRIBUTES(const int32_t* fixedIncrementation, const int32_t* directUser, const int32_t* nlgeom,
                             const int32_t* unsymmetric, const int32_t* extrapolation, const int32_t* solver,
                             const double* r1, const double* r2, const double* r3, const double* r4, const int32_t* n,
                             const double* characteristicLength);

/** Diagnostics are stored from now on. */
void acd_enable_c(void);

/** acd_enable_c. */
void ACD_ENABLE(void);

/** Diagnostics of the explicit solver are stored from now on. */
void acd_enable_xpl_c(void);

/** acd_enable_xpl_c. */
void ACD_ENABLE_XPL(void);

/** Diagnostics are stored no longer. */
void acd_disable_c(void);

/** acd_disable_c. */
void ACD_DISABLE(void);

/** Diagnostics of the explicit solver are stored no longer. */
void acd_disable_xpl_c(void);

/** acd_disable_xpl_c. */
void ACD_DISABLE_XPL(void);

/* ---------------------------------------------------------------------------------------------------------------------
 * Counts
 * ------------------------------------------------------------------------------------------------------------------ */

/** The errors that the explicit extractor has stored. */
int32_t acd_get_numerrors_xpl_c(void);

/** acd_get_numerrors_xpl_c. */
int32_t ACD_GET_NUMERRORS_XPL(void);

/** The warnings that the explicit extractor has stored. */
int32_t acd_get_numwarnings_xpl_c(void);

/** acd_get_numwarnings_xpl_c. */
int32_t ACD_GET_NUMWARNINGS_XPL(void);

/** The element diagnostics that the explicit extractor has stored. */
int32_t acd_get_numelemdiagnostics_xpl_c(void);

/** acd_get_numelemdiagnostics_xpl_c. */
int32_t ACD_GET_NUMELEMDIAGNOSTICS_XPL(void);

/** Adds 1 to the problems of the solver at nodes: integer 1 of the host's block CWARN.  The additions of this and the next
 *  two are atomic: threads may count at once. */
void ACD_INC_KNPSOL(void);

/** Adds 1 to the problems of the solver at elements: integer 2 of CWARN. */
void ACD_INC_KNESOL(void);

/** Adds 1 to the printed warnings: integer 17 of the host's block CLINES. */
void ACD_INC_KWARN(void);

#ifdef __cplusplus
}
#endif

#endif
