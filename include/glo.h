/** @file glo.h
 *  Shared services of SharedAnalysis: lifecycle, messages, work storage, tensors, gather, scatter and assembly.
 *
 *  CONVENTIONS
 *
 *  Calls.  Upper-case routines take every argument by reference, counts included.  Integers are signed 32-bit, reals are
 *  IEEE doubles, flags are integers of which nonzero is true.  Texts have a fixed length, are padded with blanks and end
 *  with no zero; their lengths follow all other arguments as 64-bit integers by value, in the order of the texts.
 *  Lower-case routines take scalars as they say and zero-terminated texts.
 *
 *  Layouts, all indices from 1, p(q) the q-th value behind a pointer:
 *    block     A (nblock, ncomp)      A(i,k)   = A((k-1)*nblock + i)               point fastest
 *    column    G (ld, ncomp)          G(n,k)   = G((k-1)*ld + n)                   entity fastest, ld rows
 *    record    G (ld, *)              G(k,n)   = G((n-1)*ld + k)                   component fastest, * records
 *    axes      V (nblock, 3, 3)       V(i,a,b) = V((b-1)*3*nblock + (a-1)*nblock + i)   component a of direction b
 *  Tensors hold tensor shear, not engineering shear:
 *    S33 = 11 22 33 12 23 13    S31 = 11 22 33 12    S21 = 11 22 12    S30 = the three direct components
 *
 *  Blocks.  nblock below 1 touches nothing.  Any length is taken; there is no upper limit.  Inputs and outputs do not overlap
 *  unless a declaration says so.  A result depends on the data of its own point alone, to the last bit: not on its place in
 *  the block, the length of the block, the thread or the instruction set.  NaN and infinity spoil their own point only.
 *  Kernels keep no state, allocate nothing, lock nothing, and throw nothing; they may run on any number of threads at once.
 *
 *  Argument lines read  `@param[direction] name  (shape), unit: meaning`  and are complete: tools read them.
 *    shape     (1) a scalar; else the dimensions in the order of the layouts above; * is as many as the entities used
 *    unit      a physical unit, - for a plain number, `any` where any unit carries over, or for integers and marked arrays
 *                block       number of points of this call          length   number of entries, treated as a whole
 *                count       a number of components or sets         count>=x a count that is at least x
 *                rows        leading dimension of an entity array, at least the largest entity number used
 *                stride      leading dimension of block arrays, at least nblock
 *                entity of G a number 1.. of a row or record of G   list     point numbers 1..nblock, each at most once
 *                1..x        a number from 1 to x                   code a|b the values that are told apart
 *                first,last  a range of points, ends included       unread   part of the list, never read
 *                stretch     a stretch tensor                       mask     0.0 takes part, 1.0 does not
 *                flag        0.0 or 1.0
 *    `@like X` takes the lines of X for the arguments that have none of their own.
 *
 *  CONTENTS
 *    Lifecycle                          Shared_Analysis_XP_..., glo_...                        4
 *    Frame services                     procedure names, version banner, flush                 3
 *    Messages                           writer, end of analysis                                4
 *    Work storage and addresses         GLO_UTI_ALLO..., ...POINTER...                         8
 *    Copies, fills and sums             GLO_UTI_COPYR, VADDR, BROADCAST...                     4
 *    Sorts                              GLO_UTI_INSSORT..., CHKSORTI                           3
 *    Tensor storage                     GLO_UTI_NUMTENSORCOMP, SQ2TRSTORAGE                    2
 *    Principal values and directions    GLO_UTI_PRINCS..., EIG...                             12
 *    Tensor functions                   GLO_UTI_SQRTV                                          1
 *    Gather and scatter                 GLO_UTI_...GATHER..., GLO_ASM_...                     13
 *    Assembly                           GLO_OPE_...                                            7
 */
#ifndef SHAREDANALYSIS_GLO_H
#define SHAREDANALYSIS_GLO_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * Lifecycle
 *
 * Each component keeps a use counter.  The first initialise and the last finalise act and move the caller's counter of
 * live components by one; every other call only moves the use counter.  Nothing is checked: a finalise too many leaves
 * the use counter at -1, and the next initialise then only brings it back to 0.  Call these from one thread, before the
 * first and after the last kernel.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Starts the library: the host's thirteen components in order, then glo, acd and spx, each with the same counter.
 *  @param[in,out] counter  (1), -: live components of the caller, raised by one for each component that starts
 */
void Shared_Analysis_XP_initialize(int32_t* counter);

/** Stops the library in the exact reverse order of Shared_Analysis_XP_initialize.
 *  @param[in,out] counter  (1), -: live components of the caller, lowered by one for each component that stops
 */
void Shared_Analysis_XP_finalize(int32_t* counter);

/** Starts the shared services alone.
 *  @like Shared_Analysis_XP_initialize
 */
void glo_initialize(int32_t* counter);

/** Stops the shared services alone.
 *  @like Shared_Analysis_XP_finalize
 */
void glo_finalize(int32_t* counter);

/* ---------------------------------------------------------------------------------------------------------------------
 * Frame services
 * ------------------------------------------------------------------------------------------------------------------ */

/** The host's step keyword of a procedure type, padded with blanks or cut to the length of the text.
 *  Ids without a procedure are reported through the host's tvkerrC (severity 1) and give "Unknown".
 *  @param[in]  procedureId  (1), -: procedure type, 1 to 98 with gaps
 *  @param[out] text         (textLength), text: keyword, padded with blanks
 *  @param[in]  textLength   (1), -: length of text, by value
 */
void GLO_GETPROCEDURETYPE(const int32_t* procedureId, char* text, int64_t textLength);

/** The host's version title and, flush right, " DATE <date>  TIME <time>".
 *  A text shorter than title and date keeps what fits, title first.
 *  @param[out] text        (textLength), text: the banner, padded with blanks
 *  @param[in]  textLength  (1), -: length of text, by value
 */
void GLO_UTI_GETVERSIONDATETIME(char* text, int64_t textLength);

/** Flushes the standard output of the process, then its standard error. */
void GLO_UTI_FLUSH(void);

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
 * Lines hold at most 79 characters and are broken at blanks; at most 20 lines are written and the rest is dropped.  A blank
 * line reaches the host as one blank.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Writes one message under a fresh message number.  The type matches as a blank-padded text ("Errors" is not "Error").
 *  @param[in] unit             (1), -: host channel, -6 is the message file; 0 writes to no channel
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
 *  the message transmitter closing.  A kill signal gives "Interrupted", 20 and 21 "Aborted", 22 "Completed", any other
 *  code a blank type.  Codes 20 and 21 also end the communication between processes (with 1 and -1) and raise the
 *  thread-error state of the host; the call returns in any case and the process goes on.
 *  @param[in] code  (1), -: 20 or 21 errors, 22 phase complete
 */
void GLO_UTI_EXIT(const int32_t* code);

/* ---------------------------------------------------------------------------------------------------------------------
 * Work storage and addresses
 *
 * A request hands out a position, counted from 1, in one large array and advances the number of elements handed out.
 * Position 134217729 is never valid: it answers an empty or a refused request.  A negative size is reported through
 * LFC_XUT_ERRMSG and LFC_XUT_ABORT; if those return, the position is 134217729 and the offset moves by the size.  An offset
 * that no 32-bit integer holds stays at the nearest one that does, and the position is 134217729.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Aligned request: the offset is rounded up to a multiple of 4, position = offset + 1, then the offset moves by size.
 *  A size of 0 gives 134217729 and leaves the offset as it is.
 *  @param[in,out] offset    (1), -: elements handed out so far
 *  @param[out]    position  (1), -: first element of the request, counted from 1
 *  @param[in]     size      (1), -: elements asked for
 */
void GLO_UTI_ALLO(int32_t* offset, int32_t* position, const int32_t* size);

/** The same contract as GLO_UTI_ALLO, under its older name.
 *  @like GLO_UTI_ALLO
 */
void GLO_UTI_ALLOOLD(int32_t* offset, int32_t* position, const int32_t* size);

/** Request without alignment: position = offset + 1, then the offset moves by size.
 *  @like GLO_UTI_ALLO
 */
void GLO_UTI_ALLOSEQ(int32_t* offset, int32_t* position, const int32_t* size);

/** Aligned request against a limit: 134217729 when the new offset passes the limit; the offset stays advanced.
 *  @like GLO_UTI_ALLO
 *  @param[in]     limit     (1), -: elements of the work array
 */
void GLO_UTI_ALLOCHECK(const int32_t* limit, int32_t* offset, int32_t* position, const int32_t* size);

/** p = the address of an integer.
 *  @param[in]  x  (1), -: the variable; its value is not read
 *  @param[out] p  (1), address: its address, 64 bits
 */
void GLO_UTI_SETPOINTERI(const int32_t* x, int64_t* p);

/** p = the address of a real.
 *  @like GLO_UTI_SETPOINTERI
 */
void GLO_UTI_SETPOINTERR(const double* x, int64_t* p);

/** q = p, a stored address.
 *  @param[in]  p  (1), address: stored address
 *  @param[out] q  (1), address: its copy
 */
void GLO_UTI_SETPOINTER(const int64_t* p, int64_t* q);

/** The address that is stored in p.
 *  @param[in] p  (1), address: stored address
 */
void* GLO_UTI_GETPOINTER(const int64_t* p);

/* ---------------------------------------------------------------------------------------------------------------------
 * Copies, fills and sums
 * ------------------------------------------------------------------------------------------------------------------ */

/** destination = source; nothing when both are the same address.
 *  @param[in]  n            (1), block: values; below 1 does nothing
 *  @param[in]  source       (n), any: values
 *  @param[out] destination  (n), any: copy
 */
void GLO_UTI_COPYR(const int32_t* n, const double* source, double* destination);

/** result = a + b.  The result may be one of the summands.
 *  @param[in]  n       (1), block: values; below 1 does nothing
 *  @param[out] result  (n), any: sum
 *  @param[in]  a       (n), any: first summand
 *  @param[in]  b       (n), any: second summand
 */
void GLO_UTI_VADDR(const int32_t* n, double* result, const double* a, const double* b);

/** array = value.
 *  @param[in]  n      (1), block: values; below 1 does nothing
 *  @param[in]  value  (1), any: the value
 *  @param[out] array  (n), any: filled array
 */
void GLO_UTI_BROADCASTR(const int32_t* n, const double* value, double* array);

/** array = 0.
 *  @param[in]  n      (1), block: values; below 1 does nothing
 *  @param[out] array  (n), any: zeroed array
 */
void GLO_UTI_BROADCAST0D(const int32_t* n, double* array);

/* ---------------------------------------------------------------------------------------------------------------------
 * Sorts
 *
 * The result is that of straight insertion, which passes an entry only over strictly greater keys: entries of equal key
 * keep their order.  A NaN key is never passed and passes nothing.  Keys are not moved.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Reorders a list so that keys(list(k)) does not decrease.
 *  @param[in,out] list  (n), entity of keys: numbers of the entries to sort by
 *  @param[in]     keys  (*), any: one key for each entity
 *  @param[in]     n     (1), length: entries of the list; below 2 does nothing
 */
void GLO_UTI_INSSORTI(int32_t* list, const int32_t* keys, const int32_t* n);

/** The same with real keys.
 *  @like GLO_UTI_INSSORTI
 */
void GLO_UTI_INSSORTR(int32_t* list, const double* keys, const int32_t* n);

/** Sets the flag to 1 when some difference list(k+1) - list(k), taken modulo 2^32, is negative; else leaves it alone.
 *  @param[in,out] flag  (1), -: clear it before the call
 *  @param[in]     list  (n), any: the list
 *  @param[in]     n     (1), length: entries
 */
void GLO_UTI_CHKSORTI(int32_t* flag, const int32_t* list, const int32_t* n);

/* ---------------------------------------------------------------------------------------------------------------------
 * Tensor storage
 * ------------------------------------------------------------------------------------------------------------------ */

/** Components of a tensor and of its orientation quaternion by storage code.
 *    code 100, 200: 3 1 2    300: 3 3 4    400: 1 0 0    600: 3 1 0    700: 1 1 2    900: 1 2 4    any other: 0 0 0
 *  Family 25090 gives 3 1 0 for every code but 100, 700 and 900.
 *  @param[in]  code     (1), code 100|200|300|400|600|700|900|500: storage code
 *  @param[in]  family   (1), code 0|25090: element family
 *  @param[out] ndirect  (1), -: direct components
 *  @param[out] nshear   (1), -: shear components
 *  @param[out] nquat    (1), -: quaternion components
 */
void GLO_UTI_NUMTENSORCOMP(const int32_t* code, const int32_t* family, int32_t* ndirect, int32_t* nshear,
                           int32_t* nquat);

/** Position of entry (i, j) in the upper triangle packed by columns: min + (max*max - max)/2.
 *  @param[in] i  (1), 1..9: row
 *  @param[in] j  (1), 1..9: column
 */
int32_t GLO_UTI_SQ2TRSTORAGE(const int32_t* i, const int32_t* j);

/* ---------------------------------------------------------------------------------------------------------------------
 * Principal values and directions
 *
 * PRINCS members return each value with its unit direction: P(i,k) belongs to column k of V(i,.,.), so V turns principal
 * axes into global axes.  No member of this group sorts unless it says so: direction k is the one nearest axis k.
 * INDX members treat the listed points only and leave all others untouched; the arrays keep their full block layout.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Jacobi rotations in the planes (1,3), (1,2), (2,3) until every rotation of a sweep has a sine of at most 0.015.
 *  That bound is the contract: directions are right to about 2e-4 of the spread of the values, and rotations below about
 *  1e-8 are dropped.  Values carry the square of that error.  For directions to machine precision take another routine.
 *  A point with a NaN or an infinity leaves NaN in all its values and directions.
 *  Source: C. G. J. Jacobi, J. reine angew. Math. 30 (1846) 51.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  S       (nblock, 6), any: tensors, S33
 *  @param[out] P       (nblock, 3), any: principal values, unsorted
 *  @param[out] V       (nblock, 3, 3), -: principal directions, unit vectors in columns
 */
void GLO_UTI_PRINCS33(const int32_t* nblock, const double* S, double* P, double* V);

/** Same algorithm, constants and bits as GLO_UTI_PRINCS33.
 *  @like GLO_UTI_PRINCS33
 */
void GLO_UTI_PRINCS33DBL(const int32_t* nblock, const double* S, double* P, double* V);

/** GLO_UTI_PRINCS33 for listed points.
 *  @like GLO_UTI_PRINCS33
 *  @param[in]  count   (1), count: entries of the list; below 1 does nothing
 *  @param[in]  list    (count), list: point numbers
 */
void GLO_UTI_PRINCS33INDX(const int32_t* nblock, const int32_t* count, const int32_t* list, const double* S, double* P,
                          double* V);

/** Same algorithm, constants and bits as GLO_UTI_PRINCS33INDX.
 *  @like GLO_UTI_PRINCS33INDX
 */
void GLO_UTI_PRINCS33DBLINDX(const int32_t* nblock, const int32_t* count, const int32_t* list, const double* S,
                             double* P, double* V);

/** Closed form in the 1-2 plane: one rotation about axis 3 of at most 45 degrees.  The third value is S33, its direction
 *  axis 3.  Squares are formed unscaled: components beyond 1e154 overflow, differences below 1e-154 underflow.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  S       (nblock, 4), any: tensors, S31
 *  @param[out] P       (nblock, 3), any: principal values
 *  @param[out] V       (nblock, 3, 3), -: principal directions, unit vectors in columns
 */
void GLO_UTI_PRINCS31(const int32_t* nblock, const double* S, double* P, double* V);

/** GLO_UTI_PRINCS31 for listed points.
 *  @like GLO_UTI_PRINCS31
 *  @param[in]  count   (1), count: entries of the list; below 1 does nothing
 *  @param[in]  list    (count), list: point numbers
 */
void GLO_UTI_PRINCS31INDX(const int32_t* nblock, const int32_t* count, const int32_t* list, const double* S, double* P,
                          double* V);

/** GLO_UTI_PRINCS31 for tensors that are plane only; V(i,a,b) = V((b-1)*2*nblock + (a-1)*nblock + i).
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  S       (nblock, 3), any: tensors, S21
 *  @param[out] P       (nblock, 2), any: principal values
 *  @param[out] V       (nblock, 2, 2), -: principal directions, unit vectors in columns
 */
void GLO_UTI_PRINCS21(const int32_t* nblock, const double* S, double* P, double* V);

/** Values alone, by the trigonometric solution of the characteristic equation of the scaled deviator.
 *  The general case returns the largest value first, then the smallest, then the middle one.  Two equal values below a
 *  third come out as P1 = P2 and the larger one in P3; two equal values above a third as P2 = P3 and the smaller one in
 *  P1.  A tensor whose shear is below 1.1e-12 of its deviator returns its diagonal in place.  Values are right to about
 *  1e-15 of the largest component, or 1e-8 of it where two of them nearly meet.
 *  Source: O. K. Smith, Comm. ACM 4 (1961) 168.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  S       (nblock, 6), any: tensors, S33
 *  @param[out] P       (nblock, 3), any: principal values
 */
void GLO_UTI_EIG33ANAL(const int32_t* nblock, const double* S, double* P);

/** GLO_UTI_EIG33ANAL for listed points.
 *  @like GLO_UTI_EIG33ANAL
 *  @param[in]  count   (1), count: entries of the list; below 1 does nothing
 *  @param[in]  list    (count), list: point numbers
 */
void GLO_UTI_EIG33ANALINDX(const int32_t* nblock, const int32_t* count, const int32_t* list, const double* S,
                           double* P);

/** Values alone in the 1-2 plane: P1 is the one nearest axis 1, P2 the other, P3 = S33.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  S       (nblock, 4), any: tensors, S31
 *  @param[out] P       (nblock, 3), any: principal values
 */
void GLO_UTI_EIG31ANAL(const int32_t* nblock, const double* S, double* P);

/** GLO_UTI_EIG31ANAL for listed points.
 *  @like GLO_UTI_EIG31ANAL
 *  @param[in]  count   (1), count: entries of the list; below 1 does nothing
 *  @param[in]  list    (count), list: point numbers
 */
void GLO_UTI_EIG31ANALINDX(const int32_t* nblock, const int32_t* count, const int32_t* list, const double* S,
                           double* P);

/** Values alone in increasing order, by Jacobi rotations with the same planes and the same bound as GLO_UTI_PRINCS33.
 *  Source of the rotation: J. H. Wilkinson, The Algebraic Eigenvalue Problem (1965), chapter 5, with mirrored signs.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  S       (nblock, 6), any: tensors, S33
 *  @param[out] P       (nblock, 3), any: principal values, P1 <= P2 <= P3
 */
void GLO_UTI_EIG33VECTOR(const int32_t* nblock, const double* S, double* P);

/* ---------------------------------------------------------------------------------------------------------------------
 * Tensor functions
 * ------------------------------------------------------------------------------------------------------------------ */

/** Square root of symmetric tensors without negative principal values, as the left stretch V of B = F F'.
 *  V is symmetric with no negative value and V V = S.  Principal values and directions are found by Jacobi rotations
 *  to machine precision: |V V - S| is below 4e-15 |S| (largest components), at every scale from 1e-300 to 1e300.
 *  A value that is negative by rounding (down to -1e-14 |S|) counts as 0; one further below leaves NaN in its point.
 *  V may be S.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  S       (nblock, 6), any: tensors, S33
 *  @param[out] V       (nblock, 6), any: their square roots, S33
 */
void GLO_UTI_SQRTV(const int32_t* nblock, const double* S, double* V);

/* ---------------------------------------------------------------------------------------------------------------------
 * Gather and scatter
 *
 * A map names for each point the entity, counted from 1, whose record it uses; entries may repeat.  Points are taken in
 * increasing order: an overwriting scatter leaves the last point's values.  Maps are not checked against the arrays.
 * Nothing synchronises: two calls that write shared entities must not run at once.
 * Orders of arguments differ from member to member; they are kept as hosts know them.
 * ------------------------------------------------------------------------------------------------------------------ */

/** L(i,k) = G(map(i),k).
 *  @param[in]  nblock  (1), block: points; below 1 does nothing
 *  @param[in]  ncomp   (1), count: components; below 1 does nothing
 *  @param[in]  ld      (1), rows: rows of G
 *  @param[in]  map     (nblock), entity of G: entity of each point
 *  @param[out] L       (nblock, ncomp), any: block array
 *  @param[in]  G       (ld, ncomp), any: global array, columns
 */
void GLO_UTI_GATHERR(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map, double* L,
                     const double* G);

/** GLO_UTI_GATHERR for integers.
 *  @like GLO_UTI_GATHERR
 */
void GLO_UTI_GATHERI(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map, int32_t* L,
                     const int32_t* G);

/** G(map(i),k) = L(i,k).
 *  @like GLO_UTI_GATHERR
 *  @param[in]     L  (nblock, ncomp), any: block array
 *  @param[in,out] G  (ld, ncomp), any: global array, columns
 */
void GLO_UTI_SCATTERR(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map,
                      const double* L, double* G);

/** From records: ndim 3 gathers components 1 to 3, ndim 2 components 1 and 2, any other ndim the one component ld, the
 *  last of the record (then L has one component).
 *  @param[in]  nblock  (1), block: points; below 1 does nothing
 *  @param[in]  ndim    (1), code 1|2|3: components moved
 *  @param[in]  ld      (1), count>=3: length of a record of G
 *  @param[in]  unused  (1), unread: not read
 *  @param[in]  map     (nblock), entity of G: entity of each point
 *  @param[out] L       (nblock, ndim), any: block array
 *  @param[in]  G       (ld, *), any: global array, records
 */
void GLO_UTI_GENGATHERR(const int32_t* nblock, const int32_t* ndim, const int32_t* ld, const int32_t* unused,
                        const int32_t* map, double* L, const double* G);

/** The copy of GLO_UTI_GENGATHERR reversed: records are overwritten, in the components that ndim names.
 *  @like GLO_UTI_GENGATHERR
 *  @param[in]     L  (nblock, ndim), any: block array
 *  @param[in,out] G  (ld, *), any: global array, records
 */
void GLO_UTI_GENSCATTERR(const int32_t* nblock, const int32_t* ndim, const int32_t* ld, const int32_t* unused,
                         const int32_t* map, const double* L, double* G);

/** out(i) = G(comp,map(i)): one component of each record.  The component stands before the record length here.
 *  @param[in]  n       (1), block: points; below 1 does nothing
 *  @param[in]  comp    (1), 1..ld: component
 *  @param[in]  ld      (1), count: length of a record of G
 *  @param[in]  unused  (1), unread: not read
 *  @param[in]  map     (n), entity of G: entity of each point
 *  @param[out] out     (n), any: gathered values
 *  @param[in]  G       (ld, *), any: global array, records
 */
void GLO_UTI_GENGATHER1COMP(const int32_t* n, const int32_t* comp, const int32_t* ld, const int32_t* unused,
                            const int32_t* map, double* out, const double* G);

/** As GLO_UTI_GENGATHER1COMP, for multi-point constraints: the record length stands before the component.
 *  @like GLO_UTI_GENGATHER1COMP
 */
void GLO_UTI_MPCGATHERR(const int32_t* n, const int32_t* ld, const int32_t* comp, const int32_t* unused,
                        const int32_t* map, double* out, const double* G);

/** G(comp,map(i)) = in(i), the reverse of GLO_UTI_MPCGATHERR.
 *  @like GLO_UTI_GENGATHER1COMP
 *  @param[in]     in  (n), any: values
 *  @param[in,out] G   (ld, *), any: global array, records
 */
void GLO_UTI_MPCSCATTERR(const int32_t* n, const int32_t* ld, const int32_t* comp, const int32_t* unused,
                         const int32_t* map, const double* in, double* G);

/** L(k,i) = G(k,map(i)): whole records to records.
 *  @param[in]  n       (1), block: points; below 1 does nothing
 *  @param[in]  ncomp   (1), count: length of a record; below 1 does nothing
 *  @param[in]  unused  (1), unread: not read
 *  @param[out] L       (ncomp, n), any: local records
 *  @param[in]  G       (ncomp, *), any: global records
 *  @param[in]  map     (n), entity of G: entity of each point
 */
void GLO_ASM_GATHER(const int32_t* n, const int32_t* ncomp, const int32_t* unused, double* L, const double* G,
                    const int32_t* map);

/** G(k,map(i)) = L(k,i): whole records overwritten.
 *  @like GLO_ASM_GATHER
 *  @param[in]     L  (ncomp, n), any: local records
 *  @param[in,out] G  (ncomp, *), any: global records
 */
void GLO_ASM_SCATTER(const int32_t* n, const int32_t* ncomp, const int32_t* unused, const double* L, double* G,
                     const int32_t* map);

/** L(i) = G(map(i)), one integer for each entity.
 *  @param[in]  n       (1), block: points; below 1 does nothing
 *  @param[in]  unused  (1), unread: not read
 *  @param[out] L       (n), any: local values
 *  @param[in]  G       (*), any: global values
 *  @param[in]  map     (n), entity of G: entity of each point
 */
void GLO_ASM_GATHERINT(const int32_t* n, const int32_t* unused, int32_t* L, const int32_t* G, const int32_t* map);

/** G(map(i)) = L(i), one integer for each entity.
 *  @like GLO_ASM_GATHERINT
 *  @param[in]     L  (n), any: local values
 *  @param[in,out] G  (*), any: global values
 */
void GLO_ASM_SCATTERINT(const int32_t* n, const int32_t* unused, const int32_t* L, int32_t* G, const int32_t* map);

/** G(map(i)) = value for the listed entities.
 *  @like GLO_ASM_GATHERINT
 *  @param[in]     value  (1), any: the value
 *  @param[in,out] G      (*), any: global values
 */
void GLO_ASM_INITINT(const int32_t* n, const int32_t* unused, const int32_t* value, int32_t* G, const int32_t* map);

/* ---------------------------------------------------------------------------------------------------------------------
 * Assembly
 *
 * Contributions are combined in increasing point order, so that repeated entities give one result.  Global arrays stand
 * before local ones here.  Nothing synchronises.
 * ------------------------------------------------------------------------------------------------------------------ */

/** G(map(i),k) += L(i,k).
 *  @like GLO_UTI_SCATTERR
 */
void GLO_OPE_ASSEM(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, double* G, const double* L,
                   const int32_t* map);

/** Adds to the components that GLO_UTI_GENSCATTERR would overwrite.
 *  @like GLO_UTI_GENSCATTERR
 */
void GLO_OPE_GENASSEM(const int32_t* nblock, const int32_t* ndim, const int32_t* ld, const int32_t* unused, double* G,
                      const double* L, const int32_t* map);

/** G(map(i),k) = value, before contributions arrive.
 *  @like GLO_UTI_SCATTERR
 *  @param[in] value  (1), any: the value
 */
void GLO_OPE_INITASSEM(const double* value, const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, double* G,
                       const int32_t* map);

/** G(k,map(i)) = max(G(k,map(i)), L(k,i)) for the points first to last.  The global value stays only where it is strictly
 *  greater: ties and NaN take the local value.
 *  @param[in]     first    (1), first: first point
 *  @param[in]     last     (1), last: last point; below first does nothing
 *  @param[in]     unused1  (1), unread: not read
 *  @param[in]     ncomp    (1), count: length of a record
 *  @param[in]     unused2  (1), unread: not read
 *  @param[in,out] G        (ncomp, *), any: global records
 *  @param[in]     L        (ncomp, last), any: local records
 *  @param[in]     map      (last), entity of G: entity of each point
 */
void GLO_OPE_GENASSEMMAX(const int32_t* first, const int32_t* last, const int32_t* unused1, const int32_t* ncomp,
                         const int32_t* unused2, double* G, const double* L, const int32_t* map);

/** G(k,map(i)) = min(G(k,map(i)), L(k,i)) for k = 1, 2: records of exactly two components, stride 2, whatever the
 *  caller's record length.  The global value stays only where it is strictly smaller.
 *  @like GLO_OPE_GENASSEMMAX
 *  @param[in,out] G  (2, *), any: global records
 *  @param[in]     L  (2, last), any: local records
 */
void GLO_OPE_GENASSEMMIN(const int32_t* first, const int32_t* last, const int32_t* unused1, const int32_t* unused2,
                         double* G, const double* L, const int32_t* map);

/** G(map(i),comp) += L(i): one column.
 *  @param[in]     n       (1), block: points; below 1 does nothing
 *  @param[in]     comp    (1), count: column, counted from 1
 *  @param[in]     unused  (1), unread: not read
 *  @param[in]     ld      (1), rows: rows of G
 *  @param[in,out] G       (ld, comp), any: global array, columns
 *  @param[in]     L       (n), any: contributions
 *  @param[in]     map     (n), entity of G: entity of each point
 */
void GLO_OPE_HGENASSEMLASTCOMP(const int32_t* n, const int32_t* comp, const int32_t* unused, const int32_t* ld,
                               double* G, const double* L, const int32_t* map);

/** Two targets.  First G1(map(i)) += L(i,1) for all points; then, for the first m points and with r = map2(map(i)),
 *  G2(r,k) += L(i,k+1), k = 1..K.
 *  @param[in]     n       (1), block: points; below 1 does nothing
 *  @param[in]     m       (1), count: points of the second stage, at most n
 *  @param[in]     unused  (1), unread: not read
 *  @param[in]     ld      (1), rows: rows of G2
 *  @param[in]     K       (1), count: columns of G2; below 1 skips the second stage
 *  @param[in]     map     (n), entity of G1: entity of each point
 *  @param[in]     map2    (*), entity of G2: row of G2 for each entity of G1
 *  @param[in,out] G1      (*), any: first target
 *  @param[in,out] G2      (ld, K), any: second target, columns
 *  @param[in]     L       (n, K+1), any: contributions
 */
void GLO_OPE_HASSEM(const int32_t* n, const int32_t* m, const int32_t* unused, const int32_t* ld, const int32_t* K,
                    const int32_t* map, const int32_t* map2, double* G1, double* G2, const double* L);

#ifdef __cplusplus
}
#endif

#endif
