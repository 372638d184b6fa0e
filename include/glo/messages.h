/** @file glo/messages.h
 *  Message writer and end of analysis.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_GLO_MESSAGES_H
#define SHAREDANALYSIS_GLO_MESSAGES_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * Messages
 *
 * A message is a template and three argument arrays, each with a cursor of its own: %I takes the next integer, %R the
 * next real (1.00000E+00), %S the next string, %% is a percent sign; any other code, or % as the last character, ends
 * the text without a report.  Values lose their surrounding blanks; a blank value shows as 8 blanks, and so does one whose
 * array is a null pointer.  A message holds 1000 characters: a value that does not fit ends it.  Trailing blanks of the
 * template do not count.
 *
 *   type                header         %-codes        broken into lines   blank line before, after   status channel
 *   " "                 none           no             no                  no                         never
 *   "NewLine"           writes one blank line to the unit and returns
 *   "Status"            none           if flag is 0   no                  no                         if flag
 *   "Step"              none           yes            no                  yes                        if flag
 *   "Table"             none           yes            no                  no                         never
 *   "Info"              blank          yes            yes                 yes                        never
 *   "Error"             "***ERROR:"    yes            yes                 yes                        if flag
 *   "Warning"           "***WARNING:"  yes            yes                 yes                        if flag
 *   "Note"              "***NOTE:"     yes            yes                 yes                        never
 *   any other           blank          yes            yes                 no                         if flag
 *
 * Lines hold at most 79 characters and are broken at blanks; at most 20 lines are written and the rest is dropped.  A message
 * that is not broken is one record of up to 1000 characters.  A blank line reaches the host as one blank.  "Error", "Warning",
 * "Odb_Frame" and "StateFrame" reach the status channel as finished texts, the other types as their template with the
 * arguments.  Other characters than % are bytes that go on as they are, line breaks too; a text of fixed length may hold zero
 * bytes, and one whose length is not positive is empty.  Any thread, and several at once: lines of one message carry its
 * number.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Channels that the library names to the writer and to the host; other numbers are the caller's own. */
enum {
  GLO_UNIT_MESSAGE_FILE = -6,  /* the message file */
  GLO_UNIT_SECOND_CHANNEL = -7 /* flushed with it at the end of the analysis */
};

/** Codes of GLO_UTI_EXIT. */
enum {
  GLO_EXIT_ERRORS = 20,           /* errors in this process */
  GLO_EXIT_ERRORS_ELSEWHERE = 21, /* errors in another process */
  GLO_EXIT_PHASE_COMPLETE = 22
};

/** Writes one message under a fresh message number.  The type matches as a blank-padded text ("Errors" is not "Error").
 *  @param[in] unit             (1), -: host channel, such as GLO_UNIT_MESSAGE_FILE; 0 writes to no channel
 *  @param[in] statusFlag       (1), -: nonzero also sends the message to the host's status channel
 *  @param[in] type             (typeLength), text: message type, padded with blanks
 *  @param[in] messageTemplate  (templateLength), text: the message with its %-codes
 *  @param[in] ints             (*), -: integers for %I
 *  @param[in] reals            (*), -: reals for %R
 *  @param[in] strings          (stringLength, *), text: strings for %S, all of one length
 *  @param[in] typeLength       (1), -: length of type, by value
 *  @param[in] templateLength   (1), -: length of messageTemplate, by value
 *  @param[in] stringLength     (1), -: length of each string, by value
 */
void GLO_UTI_WRITE(const int32_t* unit, const int32_t* statusFlag, const char* type, const char* messageTemplate,
                   const int32_t* ints, const double* reals, const char* strings, int64_t typeLength,
                   int64_t templateLength, int64_t stringLength);

/** Continues the last message of this thread: as GLO_UTI_WRITE, under the message number that was given out last.
 *  @like GLO_UTI_WRITE
 */
void GLO_UTI_WRITECONT(const int32_t* unit, const int32_t* statusFlag, const char* type, const char* messageTemplate,
                       const int32_t* ints, const double* reals, const char* strings, int64_t typeLength,
                       int64_t templateLength, int64_t stringLength);

/** The writer for zero-terminated texts.  The type matches by its beginning: "Errors" counts as "Error" here, and reals
 *  carry a lower-case exponent (1.00000e+00).  Thread and message number come from the host's record of this thread.
 *  @param[in] unit             (1), -: host channel, by value; 0 writes to no channel
 *  @param[in] statusFlag       (1), -: nonzero also sends to the status channel, by value
 *  @param[in] type             (*), text: message type
 *  @param[in] messageTemplate  (*), text: the message with its %-codes
 *  @param[in] ints             (*), -: integers for %I
 *  @param[in] reals            (*), -: reals for %R
 *  @param[in] strings          (*), text: pointers to the strings for %S
 */
void glo_uti_CWrite(int32_t unit, int32_t statusFlag, const char* type, const char* messageTemplate,
                    const int32_t* ints, const double* reals, const char* const* strings);

/** Records the end of the analysis: job status on rank 0, a record on the status channel, channels -6 and -7 flushed,
 *  the message transmitter closing.  A kill signal gives "Interrupted" and job status 3, 20 and 21 "Aborted" and 2, 22
 *  "Completed" and 1, any other code status 0 and a blank type, which leaves no record on the status channel.  Codes 20
 *  and 21 also end the communication between processes (with 1 and -1) and raise the thread-error state of the host; the
 *  call returns in any case and the process goes on.
 *  @param[in] code  (1), -: GLO_EXIT_ERRORS, GLO_EXIT_ERRORS_ELSEWHERE, GLO_EXIT_PHASE_COMPLETE
 */
void GLO_UTI_EXIT(const int32_t* code);

#ifdef __cplusplus
}
#endif

#endif
