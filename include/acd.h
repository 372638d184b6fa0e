/** @file acd.h
 *  Analysis convergence diagnostics of SharedAnalysis.  Conventions and the grammar of the argument lines: glo.h.
 *
 *  The solver tells the course of an analysis and every convergence problem; the host's diagnostic extractors store them: one
 *  for the implicit solver (plain names), one for the explicit solver (names with _xpl).  Every routine exists twice: the
 *  lower-case form takes scalars by value and zero-terminated texts, the upper-case twin takes everything by reference and
 *  texts of fixed length, and calls the lower-case form.
 *
 *  Codes.  A diagnostic has a 32-bit type code of the host's metadata, which says what it is (error or not) and how many
 *  integers, reals, strings, nodes and elements it carries; the five arrays hold as many values, and an array of which a code
 *  carries none is not read.  A null pointer where values are expected counts as zeros and empty texts.  Texts of diagnostics
 *  may be of any length; the twins take them up to their trailing blanks, or to a zero byte.  A code that the metadata does
 *  not know, or that is no error in a call for errors and so on, becomes an internal error with the text "Invalid ... code in
 *  call to ..." and nothing else is recorded.
 *  Node and element numbers of the solver are stored as instance name and number in the instance, the instance being
 *  "PART-1-1" in a model without parts.  A string that begins with " L" is a label reference and is stored as its name.
 *
 *  Errors set the error status of the process to -2 before anything else happens.
 *
 *  Threads and processes.  In a distributed analysis one process, the owner (rank 0), files diagnostics.  On any other process
 *  a thread that has called acd_handler_setactive_xpl_c collects errors, warnings, element and contact diagnostics in its own
 *  handler (acd_block_handler.h) until acd_comm_blocks brings them to the owner.  The handler and its active state belong to
 *  the thread: each thread that reports calls acd_handler_setactive_xpl_c itself.  On the owner, and where the handler is
 *  inactive, diagnostics go straight to the extractor; threads may report there at once.  A handler that is deleted, at the
 *  end of its thread or by acd_finalize, takes with it what nobody has gathered: acd_block_handler::Consolidate moves the
 *  records of one thread to another.
 *
 *  Printing.  Each extractor has an execution code of its own, 0 at first: acd_set_execode_c sets that of the plain names,
 *  acd_set_execode_xpl_c that of the names with _xpl and of everything that acd_comm_blocks or Consolidate files, whichever
 *  entry has recorded it.  While it is 1, and only then,
 *    errors and warnings   are printed on unit 7 in upper case after an empty line, where the print flag is 1 (any other value
 *                          counts as 0), and go to the status channel where their metadata ask for it
 *    internal errors       are printed on unit 7, and go to the status channel, by the text of their code
 *    the others            are neither printed nor sent; the print flag of element and contact diagnostics has no effect
 *  A cutback is printed by its flag alone.  Lines are broken at blanks and hold at most 79 characters; there is no limit to
 *  their number.
 *
 *  CONTENTS
 *    Lifecycle                          acd_...                                                2
 *    Course of the analysis             ACD_BEGIN_..., ACD_END_..., acd_..._c                 28
 *    Settings                           ACD_SET_..., ACD_ENABLE, ACD_DISABLE, acd_..._c       42
 *    Counts                             ACD_GET_..., ACD_INC_..., acd_..._c                    9
 *    Diagnostics                        ACD_ERROR, ACD_WARNING, ... and acd_..._c             30
 *    Processes                          acd_comm_blocks, ACD_HANDLER_SETACTIVE_XPL             3
 *    Printed output                     acd_write, acd_flush                                   2
 */
#ifndef SHAREDANALYSIS_ACD_H
#define SHAREDANALYSIS_ACD_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * Lifecycle
 * ------------------------------------------------------------------------------------------------------------------ */

/** Starts the diagnostics; counted as Shared_Analysis_XP_initialize, which calls it.
 *  @param[in,out] counter  (1), -: live components of the caller, raised by one on the first call
 */
void acd_initialize(int32_t* counter);

/** Stops the diagnostics; the last call also deletes the block handler of the calling thread, with what it still holds.
 *  @param[in,out] counter  (1), -: live components of the caller, lowered by one on the last call
 */
void acd_finalize(int32_t* counter);

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

/* ---------------------------------------------------------------------------------------------------------------------
 * Diagnostics
 * ------------------------------------------------------------------------------------------------------------------ */

/** Records an error.  Integer 19 of the host's block CLINES rises by 1 when it is printed or collected.
 *  @param[in] code      (1), -: type code of the diagnostic
 *  @param[in] ints      (*), -: integers
 *  @param[in] reals     (*), any: reals
 *  @param[in] strings   (*), text: pointers to zero-terminated texts
 *  @param[in] nodes     (*), -: node numbers of the solver
 *  @param[in] elements  (*), -: element numbers of the solver
 */
void acd_error_c(int32_t code, const int32_t* ints, const double* reals, const char* const* strings,
                 const int32_t* nodes, const int32_t* elements);

/** acd_error_c by reference.
 *  @like acd_error_c
 *  @param[in] strings       (stringLength, *), text: texts of one length, padded with blanks
 *  @param[in] stringLength  (1), -: length of each, by value
 */
void ACD_ERROR(const int32_t* code, const int32_t* ints, const double* reals, const char* strings, const int32_t* nodes,
               const int32_t* elements, int64_t stringLength);

/** Records a warning.
 *  @like acd_error_c
 *  @param[in] print  (1), -: 1: printed as well, while the execution code is 1; any other value: not
 */
void acd_warning_c(int32_t code, const int32_t* ints, const double* reals, const char* const* strings,
                   const int32_t* nodes, const int32_t* elements, int32_t print);

/** acd_warning_c by reference.
 *  @like acd_warning_c
 *  @param[in] strings       (stringLength, *), text: texts of one length, padded with blanks
 *  @param[in] stringLength  (1), -: length of each, by value
 */
void ACD_WARNING(const int32_t* code, const int32_t* ints, const double* reals, const char* strings,
                 const int32_t* nodes, const int32_t* elements, const int32_t* print, int64_t stringLength);

/** Records an error of the explicit solver.
 *  @like acd_error_c
 *  @param[in] domain  (1), -: domain that the diagnostic comes from
 */
void acd_error_xpl_c(int32_t code, int32_t domain, const int32_t* ints, const double* reals, const char* const* strings,
                     const int32_t* nodes, const int32_t* elements);

/** acd_error_xpl_c by reference.
 *  @like acd_error_xpl_c
 *  @param[in] strings       (stringLength, *), text: texts of one length, padded with blanks
 *  @param[in] stringLength  (1), -: length of each, by value
 */
void ACD_ERROR_XPL(const int32_t* code, const int32_t* domain, const int32_t* ints, const double* reals,
                   const char* strings, const int32_t* nodes, const int32_t* elements, int64_t stringLength);

/** Records a warning of the explicit solver, printed as errors are.
 *  @like acd_error_xpl_c
 */
void acd_warning_xpl_c(int32_t code, int32_t domain, const int32_t* ints, const double* reals,
                       const char* const* strings, const int32_t* nodes, const int32_t* elements);

/** acd_warning_xpl_c by reference.
 *  @like acd_warning_xpl_c
 *  @param[in] strings       (stringLength, *), text: texts of one length, padded with blanks
 *  @param[in] stringLength  (1), -: length of each, by value
 */
void ACD_WARNING_XPL(const int32_t* code, const int32_t* domain, const int32_t* ints, const double* reals,
                     const char* strings, const int32_t* nodes, const int32_t* elements, int64_t stringLength);

/** Records a diagnostic of elements; any code of the general table.  Nothing is printed.
 *  @like acd_warning_c
 *  @param[in] print  (1), -: without effect
 */
void acd_element_diagnostic_c(int32_t code, const int32_t* ints, const double* reals, const char* const* strings,
                              const int32_t* nodes, const int32_t* elements, int32_t print);

/** acd_element_diagnostic_c by reference.
 *  @like acd_element_diagnostic_c
 *  @param[in] strings       (stringLength, *), text: texts of one length, padded with blanks
 *  @param[in] stringLength  (1), -: length of each, by value
 */
void ACD_ELEMENT_DIAGNOSTIC(const int32_t* code, const int32_t* ints, const double* reals, const char* strings,
                            const int32_t* nodes, const int32_t* elements, const int32_t* print, int64_t stringLength);

/** Records a diagnostic of elements of the explicit solver.
 *  @like acd_error_xpl_c
 */
void acd_element_diagnostic_xpl_c(int32_t code, int32_t domain, const int32_t* ints, const double* reals,
                                  const char* const* strings, const int32_t* nodes, const int32_t* elements);

/** acd_element_diagnostic_xpl_c by reference.
 *  @like acd_element_diagnostic_xpl_c
 *  @param[in] strings       (stringLength, *), text: texts of one length, padded with blanks
 *  @param[in] stringLength  (1), -: length of each, by value
 */
void ACD_ELEMENT_DIAGNOSTIC_XPL(const int32_t* code, const int32_t* domain, const int32_t* ints, const double* reals,
                                const char* strings, const int32_t* nodes, const int32_t* elements,
                                int64_t stringLength);

/** Records a diagnostic of contact; any code of the contact table.  Nothing is printed.
 *  @like acd_warning_c
 *  @param[in] print  (1), -: without effect
 */
void acd_contact_diagnostic_c(int32_t code, const int32_t* ints, const double* reals, const char* const* strings,
                              const int32_t* nodes, const int32_t* elements, int32_t print);

/** acd_contact_diagnostic_c by reference.
 *  @like acd_contact_diagnostic_c
 *  @param[in] strings       (stringLength, *), text: texts of one length, padded with blanks
 *  @param[in] stringLength  (1), -: length of each, by value
 */
void ACD_CONTACT_DIAGNOSTIC(const int32_t* code, const int32_t* ints, const double* reals, const char* strings,
                            const int32_t* nodes, const int32_t* elements, const int32_t* print, int64_t stringLength);

/** Records a diagnostic of contact of the explicit solver.
 *  @like acd_error_xpl_c
 */
void acd_contact_diagnostic_xpl_c(int32_t code, int32_t domain, const int32_t* ints, const double* reals,
                                  const char* const* strings, const int32_t* nodes, const int32_t* elements);

/** acd_contact_diagnostic_xpl_c by reference.
 *  @like acd_contact_diagnostic_xpl_c
 *  @param[in] strings       (stringLength, *), text: texts of one length, padded with blanks
 *  @param[in] stringLength  (1), -: length of each, by value
 */
void ACD_CONTACT_DIAGNOSTIC_XPL(const int32_t* code, const int32_t* domain, const int32_t* ints, const double* reals,
                                const char* strings, const int32_t* nodes, const int32_t* elements,
                                int64_t stringLength);

/** Records the residuals of a field.
 *  @param[in] field   (1), -: field variable
 *  @param[in] kind    (1), -: residual kind
 *  @param[in] values  (4), any: average force, largest residual, largest increment, largest correction of the field
 */
void acd_residual_diagnostic_c(int32_t field, int32_t kind, const double* values);

/** acd_residual_diagnostic_c by reference.
 *  @like acd_residual_diagnostic_c
 */
void ACD_RESIDUAL_DIAGNOSTIC(const int32_t* field, const int32_t* kind, const double* values);

/** Records how well a constraint is met.
 *  @param[in] constraint  (1), -: constraint variable
 *  @param[in] values      (2), any: largest error and the error that is allowed
 */
void acd_compatibility_diagnostic_c(int32_t constraint, const double* values);

/** acd_compatibility_diagnostic_c by reference.
 *  @like acd_compatibility_diagnostic_c
 */
void ACD_COMPATIBILITY_DIAGNOSTIC(const int32_t* constraint, const double* values);

/** Records a cutback and, when asked, prints "***NOTE: " and the reason on unit 7 after an empty line, in lines of at
 *  most 79 characters, whatever the execution code.
 *  @param[in] code   (1), -: reason 0 to 18, not checked; 0 and any other code have no text
 *  @param[in] print  (1), -: 1: prints the reason; any other value: not
 */
void acd_cutback_diagnostic_c(int32_t code, int32_t print);

/** acd_cutback_diagnostic_c by reference.
 *  @like acd_cutback_diagnostic_c
 */
void ACD_CUTBACK_DIAGNOSTIC(const int32_t* code, const int32_t* print);

/** Records the status of the explicit solver at a node.
 *  @param[in] status  (1), -: status code
 *  @param[in] node    (1), -: node number of the solver
 *  @param[in] reals   (9), any: values of the record
 */
void acd_status_xpl_c(int32_t status, int32_t node, const double* reals);

/** acd_status_xpl_c by reference.
 *  @like acd_status_xpl_c
 */
void ACD_STATUS_XPL(const int32_t* status, const int32_t* node, const double* reals);

/** Which of the nine status values are in use.
 *  @param[in] active  (9), -: nonzero: in use
 */
void acd_activestatus_xpl_c(const int32_t* active);

/** acd_activestatus_xpl_c by reference.
 *  @like acd_activestatus_xpl_c
 */
void ACD_ACTIVESTATUS_XPL(const int32_t* active);

/** Records an error of the program itself, in any thread and without being collected. The error status becomes -2.  The
 *  message is stored; what is printed while the execution code is 1 is the text of the code 0x41010020.
 *  @param[in] message  (*), text: what went wrong, of any length
 */
void acd_error_internal_c(const char* message);

/** acd_error_internal_c by reference.
 *  @like acd_error_internal_c
 *  @param[in] message        (messageLength), text: what went wrong, padded with blanks
 *  @param[in] messageLength  (1), -: its length, by value
 */
void ACD_ERROR_INTERNAL(const char* message, int64_t messageLength);

/** Records an error of the explicit solver itself.
 *  @like acd_error_internal_c
 */
void acd_error_internal_xpl_c(const char* message);

/** acd_error_internal_xpl_c by reference.
 *  @like acd_error_internal_xpl_c
 *  @param[in] message        (messageLength), text: what went wrong, padded with blanks
 *  @param[in] messageLength  (1), -: its length, by value
 */
void ACD_ERROR_INTERNAL_XPL(const char* message, int64_t messageLength);

/* ---------------------------------------------------------------------------------------------------------------------
 * Processes
 * ------------------------------------------------------------------------------------------------------------------ */

/** The calling thread collects from now on, unless its process is the owner, which is rank 0.  A process has its rank by
 *  then: what it was when the thread reported before does not count. */
void acd_handler_setactive_xpl_c(void);

/** acd_handler_setactive_xpl_c. */
void ACD_HANDLER_SETACTIVE_XPL(void);

/** Brings what the calling thread of each process has collected to the owner, which files it in the explicit extractor
 *  with the rank as domain: ranks in increasing order, the records of a rank in the order of recording. Every process
 *  calls it, from one thread. Does nothing in a thread whose handler is inactive.  What is lost on the way, or does not
 *  agree with its code, becomes an internal error of the explicit solver. */
void acd_comm_blocks(void);

/* ---------------------------------------------------------------------------------------------------------------------
 * Printed output
 * ------------------------------------------------------------------------------------------------------------------ */

/** Writes one line to a unit of the host's message output; an empty text becomes a blank line.
 *  @param[in] unit  (1), -: channel, by value
 *  @param[in] text  (*), text: line
 */
void acd_write(int32_t unit, const char* text);

/** Brings a unit of the host's message output up to date.
 *  @param[in] unit  (1), -: channel, by value
 */
void acd_flush(int32_t unit);

#ifdef __cplusplus
}
#endif

#endif
