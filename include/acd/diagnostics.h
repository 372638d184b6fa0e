/** @file acd/diagnostics.h
 *  Errors, warnings, element and contact diagnostics.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_ACD_DIAGNOSTICS_H
#define SHAREDANALYSIS_ACD_DIAGNOSTICS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

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
 *  @like acd_error_xpl_c
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
 *  @like acd_warning_c
 *  @param[in] strings       (stringLength, *), text: texts of one length, padded with blanks
 *  @param[in] print  (1), -: without effect
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
 *  @like acd_error_xpl_c
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
 *  @like acd_warning_c
 *  @param[in] strings       (stringLength, *), text: texts of one length, padded with blanks
 *  @param[in] print  (1), -: without effect
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
 *  @like acd_error_xpl_c
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

#ifdef __cplusplus
}
#endif

#endif
