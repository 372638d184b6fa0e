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
 *    lifecycle.h    Lifecycle               acd_...                                            2
 *    analysis.h     Course of the analysis  ACD_BEGIN_..., ACD_END_..., acd_..._c             28
 *    analysis.h     Settings                ACD_SET_..., ACD_ENABLE, ACD_DISABLE, acd_..._c   42
 *    analysis.h     Counts                  ACD_GET_..., ACD_INC_..., acd_..._c                9
 *    diagnostics.h  Diagnostics             ACD_ERROR, ACD_WARNING, ... and acd_..._c         30
 *    processes.h    Processes               acd_comm_blocks, ACD_HANDLER_SETACTIVE_XPL         3
 *    processes.h    Printed output          acd_write, acd_flush                               2
 */
#ifndef SHAREDANALYSIS_ACD_H
#define SHAREDANALYSIS_ACD_H

/* in the order of the contents */
/* clang-format off */
#include "acd/lifecycle.h"
#include "acd/analysis.h"
#include "acd/diagnostics.h"
#include "acd/processes.h"
/* clang-format on */

#endif
