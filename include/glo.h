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
 *  the block, the length of the block, the thread or the instruction set; all NaN count as one value, whose sign and payload
 *  may differ.  NaN and infinity spoil their own point only.
 *  Kernels keep no state, allocate nothing, lock nothing, and throw nothing; they may run on any number of threads at once.
 *
 *  Floating-point environment.  A kernel rounds to nearest, keeps subnormals and traps nothing while it runs, whatever the
 *  caller's thread does, and gives the caller's environment back: rounding, flush modes and traps as they were, and of the
 *  flags that of invalid operation, division by zero and overflow.  So a host may trap these three without being stopped in
 *  a kernel, and none of them says that results of a kernel are not finite: look for NaN and infinity in the results.
 *
 *  Argument lines read  `@param[direction] name  (shape), unit: meaning`  and are complete: tools read them.
 *    shape     (1) a scalar; else the dimensions in the order of the layouts above; * is as many as the entities used
 *              a dimension is a number or an argument, also as n+1 or 2*n+2
 *    unit      a physical unit, - for a plain number, `any` where any unit carries over, or for integers and marked arrays
 *                block       number of points of this call          length   number of entries, treated as a whole
 *                count       a number of components or sets         count>=x a count that is at least x
 *                rows        leading dimension of an entity array, at least the largest entity number used
 *                stride      leading dimension of block arrays, at least nblock
 *                entity of G a number 1.. of a row or record of G   list     point numbers 1..nblock, each at most once
 *                1..x        a number from 1 to x                   code a|b the values that are told apart
 *                first,last  a range of points, ends included       unread   part of the list, never read
 *                stretch     a stretch tensor                       mask     0.0 takes part, 1.0 does not
 *                plane stretch    one of the plane, S21             flag     0.0 or 1.0
 *                axial stretch    a single stretch                  exponent, expansion   plain numbers
 *                record      records of a results database          cursor   number of the first of them that is written
 *                set         element numbers, increasing            place    of a block in their numbering
 *                locking stretch  what a stretch stays below        strain  an increment, tensor shear
 *                deformation gradient  dx/dX, 1 when undeformed     state   what a material remembers, 0 at first
 *                properties       numbers that a material takes in its order
 *                table       pools and headers of material tables
 *    `@like X` takes the lines of X for the arguments that have none of their own.
 *
 *  CONTENTS
 *    Lifecycle                          Shared_Analysis_XP_..., glo_...                        4
 *    Frame services                     procedure names, version banner, flush                 3
 *    Messages                           writer, end of analysis                                4
 *    Work storage and addresses         GLO_UTI_ALLO..., ...POINTER...                         8
 *    Copies and fills                   GLO_UTI_COPYR, ...BROADCAST...                        14
 *    Vectors                            GLO_UTI_V..., MAX..., MIN...                          24
 *    Determinants and linear systems    GLO_UTI_DET..., INVERSER, VSOLVE...                    5
 *    Sorts                              GLO_UTI_INSSORT..., CHKSORTI                           3
 *    Tensor storage                     GLO_UTI_NUMTENSORCOMP, SQ2TRSTORAGE, ITENSORID         3
 *    Principal values and directions    GLO_UTI_PRINCS..., EIG..., GENEIG...                  24
 *    Tensor functions                   GLO_UTI_SQRTV, LOGV, EXPS...                           4
 *    Quaternions                        GLO_UTI_...QUAT..., COMPROT...                        10
 *    Rotation of tensors                GLO_UTI_ROTATES..., INITROTATIONMATRIX                 7
 *    Gather and scatter                 GLO_UTI_...GATHER..., GLO_ASM_...                     32
 *    Assembly                           GLO_OPE_...                                           12
 *    Output of tensors                  GLO_UTI_ODB...                                        56
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

/** The host's step keyword of a procedure type, padded with blanks or cut to the length of the text.  It is the
 *  constructorCmd of the host's step class:
 *    1-7     kprC_StaticStep                 62-65       kprC_SoilsStep
 *    11, 12  kprC_ImplicitDynamicsStep       71-73       kprC_CoupledTempDisplacementStep
 *    13      kprC_SubspaceDynamicsStep       74          kprC_TempDisplacementDynamicsStep
 *    17      kprC_ExplicitDynamicsStep       75-78       kprC_CoupledThermalElectricStep
 *    21-25   kprC_ViscoStep                  81          kprC_StaticLinearPerturbationStep
 *    31-33   kprC_HeatTransferStep           85, 86      kprC_SteadyStateDirectStep
 *    34-36   kprC_MassDiffusionStep          91          kprC_ResponseSpectrumStep
 *    41, 43  kprC_FrequencyStep              92          kprC_ModalDynamicsStep
 *    42, 44  kprC_BuckleStep                 93, 95, 96  kprC_SteadyStateModalStep
 *    51      kprC_StaticRiksStep             94          kprC_RandomResponseStep
 *    61      kprC_GeostaticStep              98          kprC_AnnealStep
 *  Any other id is reported through the host's tvkerrC (severity 1) and gives "Unknown".
 *  @param[in]  procedureId  (1), -: procedure type
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
 * Lines hold at most 79 characters and are broken at blanks; at most 20 lines are written and the rest is dropped.  A message
 * that is not broken is one record of up to 1000 characters.  A blank line reaches the host as one blank.  "Error", "Warning",
 * "Odb_Frame" and "StateFrame" reach the status channel as finished texts, the other types as their template with the
 * arguments.  Other characters than % are bytes that go on as they are, line breaks too; a text of fixed length may hold zero
 * bytes, and one whose length is not positive is empty.  Any thread, and several at once: lines of one message carry its
 * number.
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
 *  the message transmitter closing.  A kill signal gives "Interrupted" and job status 3, 20 and 21 "Aborted" and 2, 22
 *  "Completed" and 1, any other code status 0 and a blank type, which leaves no record on the status channel.  Codes 20
 *  and 21 also end the communication between processes (with 1 and -1) and raise the thread-error state of the host; the
 *  call returns in any case and the process goes on.
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
 * Copies and fills
 * ------------------------------------------------------------------------------------------------------------------ */

/** destination = source; nothing when both are the same address.
 *  @param[in]  n            (1), block: values; below 1 does nothing
 *  @param[in]  source       (n), any: values
 *  @param[out] destination  (n), any: copy
 */
void GLO_UTI_COPYR(const int32_t* n, const double* source, double* destination);

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

/** array = 0.0, under the name of single-length callers; reals have 64 bits here.
 *  @like GLO_UTI_BROADCAST0D
 */
void GLO_UTI_BROADCAST0R(const int32_t* n, double* array);

/** array = value; reals of double length are the reals of this library.
 *  @like GLO_UTI_BROADCASTR
 */
void GLO_UTI_BROADCASTRDBL(const int32_t* n, const double* value, double* array);

/** array = 0, integers.
 *  @like GLO_UTI_BROADCAST0D
 */
void GLO_UTI_BROADCAST0I(const int32_t* n, int32_t* array);

/** array = 0.0, reals of 32 bits.
 *  @like GLO_UTI_BROADCAST0D
 */
void GLO_UTI_BROADCAST0S(const int32_t* n, float* array);

/** array = NaN: what is read before it is written shows.
 *  @like GLO_UTI_BROADCAST0D
 */
void GLO_UTI_BROADCASTNAN(const int32_t* n, double* array);

/** array = value, integers.
 *  @like GLO_UTI_BROADCASTR
 */
void GLO_UTI_BROADCASTI(const int32_t* n, const int32_t* value, int32_t* array);

/** array = value, flags.
 *  @like GLO_UTI_BROADCASTR
 */
void GLO_UTI_BROADCASTL(const int32_t* n, const int32_t* value, int32_t* array);

/** The first n characters of a text = a character; never more than the text has.
 *  @param[in]     n            (1), -: characters; below 1 does nothing
 *  @param[in]     value        (valueLength), text: its first character is taken, a blank if there is none
 *  @param[in,out] array        (arrayLength), text: filled text
 *  @param[in]     valueLength  (1), -: length of value, by value
 *  @param[in]     arrayLength  (1), -: length of array, by value
 */
void GLO_UTI_BROADCASTC(const int32_t* n, const char* value, char* array, int64_t valueLength, int64_t arrayLength);

/** Two arrays = one value.
 *  @param[in]  n       (1), block: values of each; below 1 does nothing
 *  @param[in]  value   (1), any: the value
 *  @param[out] array1  (n), any: filled array
 *  @param[out] array2  (n), any: filled array
 */
void GLO_UTI_BROADCAST2R(const int32_t* n, const double* value, double* array1, double* array2);

/** A block of vectors = one vector.
 *  @param[in]  nblock  (1), block: points; below 1 does nothing
 *  @param[in]  value   (3), any: the vector
 *  @param[out] array   (nblock, 3), any: filled array
 */
void GLO_UTI_BROADCASTR3D(const int32_t* nblock, const double* value, double* array);

/** The first rows of an array of any number of columns = value.
 *  @param[in]  nblock  (1), block: rows that are filled; below 1 does nothing
 *  @param[in]  ncomp   (1), count: columns
 *  @param[in]  ld      (1), stride: leading dimension
 *  @param[in]  value   (1), any: the value
 *  @param[out] array   (ld, ncomp), any: filled array
 */
void GLO_UTI_GENBROADCASTR(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const double* value,
                           double* array);

/* ---------------------------------------------------------------------------------------------------------------------
 * Vectors
 *
 * Results come first, as in VADDR.  Every operation rounds by itself: a multiplication and the addition after it are two
 * roundings on every machine.  Outputs may be inputs where both have one value per entry or point.
 * ------------------------------------------------------------------------------------------------------------------ */

/** result = a + b.  The result may be one of the summands.
 *  @param[in]  n       (1), block: values; below 1 does nothing
 *  @param[out] result  (n), any: sum
 *  @param[in]  a       (n), any: first operand
 *  @param[in]  b       (n), any: second operand
 */
void GLO_UTI_VADDR(const int32_t* n, double* result, const double* a, const double* b);

/** result = a - b.
 *  @like GLO_UTI_VADDR
 *  @param[out] result  (n), any: difference
 */
void GLO_UTI_VSUBR(const int32_t* n, double* result, const double* a, const double* b);

/** result = a b, value by value.
 *  @like GLO_UTI_VADDR
 *  @param[out] result  (n), any: product
 */
void GLO_UTI_VMULTR(const int32_t* n, double* result, const double* a, const double* b);

/** result = result + a b.
 *  @like GLO_UTI_VADDR
 *  @param[in,out] result  (n), any: sum
 */
void GLO_UTI_VMULTADDR(const int32_t* n, double* result, const double* a, const double* b);

/** result = result + a b + c d.
 *  @like GLO_UTI_VMULTADDR
 *  @param[in]  c       (n), any: third operand
 *  @param[in]  d       (n), any: fourth operand
 */
void GLO_UTI_V2MULTADDR(const int32_t* n, double* result, const double* a, const double* b, const double* c,
                        const double* d);

/** a = a b, in place.
 *  @param[in]     n  (1), block: values; below 1 does nothing
 *  @param[in,out] a  (n), any: operand and product
 *  @param[in]     b  (n), any: other operand
 */
void GLO_UTI_VDIRECTMULTR(const int32_t* n, double* a, const double* b);

/** result = factor a.
 *  @param[in]  n       (1), block: values; below 1 does nothing
 *  @param[out] result  (n), any: multiple
 *  @param[in]  factor  (1), any: factor
 *  @param[in]  a       (n), any: operand
 */
void GLO_UTI_VSCALER(const int32_t* n, double* result, const double* factor, const double* a);

/** result = result + factor a.
 *  @like GLO_UTI_VSCALER
 *  @param[in,out] result  (n), any: sum
 */
void GLO_UTI_VSCALEADDR(const int32_t* n, double* result, const double* factor, const double* a);

/** result = a + constant.
 *  @param[in]  n         (1), block: values; below 1 does nothing
 *  @param[out] result    (n), any: sum
 *  @param[in]  constant  (1), any: constant
 *  @param[in]  a         (n), any: operand
 */
void GLO_UTI_VADDC(const int32_t* n, double* result, const double* constant, const double* a);

/** result = alpha a + beta b.
 *  @param[in]  n       (1), block: values; below 1 does nothing
 *  @param[out] result  (n), any: combination
 *  @param[in]  alpha   (1), any: factor of a
 *  @param[in]  a       (n), any: first operand
 *  @param[in]  beta    (1), any: factor of b
 *  @param[in]  b       (n), any: second operand
 */
void GLO_UTI_VECTOREQUATION(const int32_t* n, double* result, const double* alpha, const double* a, const double* beta,
                            const double* b);

/** destination = source at the listed points; the others keep their values.
 *  @param[in]     nblock       (1), block: points
 *  @param[in]     count        (1), count: entries of the list; below 1 does nothing
 *  @param[in]     list         (count), list: point numbers
 *  @param[in]     source       (nblock), any: values
 *  @param[in,out] destination  (nblock), any: values
 */
void GLO_UTI_VCOPYRINDX(const int32_t* nblock, const int32_t* count, const int32_t* list, const double* source,
                        double* destination);

/** result(i,.) = s(i) A(i,.) for vectors.
 *  @param[in]  nblock  (1), block: points; below 1 does nothing
 *  @param[out] result  (nblock, 3), any: multiples
 *  @param[in]  s       (nblock), any: factor of each point
 *  @param[in]  A       (nblock, 3), any: vectors
 */
void GLO_UTI_VMULTR3D(const int32_t* nblock, double* result, const double* s, const double* A);

/** result(i) = A(i,.) . B(i,.) in space.
 *  @param[in]  nblock  (1), block: points; below 1 does nothing
 *  @param[out] result  (nblock), any: products
 *  @param[in]  A       (nblock, 3), any: vectors
 *  @param[in]  B       (nblock, 3), any: vectors
 */
void GLO_UTI_VECTORDOTPRODUCT3D(const int32_t* nblock, double* result, const double* A, const double* B);

/** The same in the plane.
 *  @like GLO_UTI_VECTORDOTPRODUCT3D
 *  @param[in]  A       (nblock, 2), any: vectors
 *  @param[in]  B       (nblock, 2), any: vectors
 */
void GLO_UTI_VECTORDOTPRODUCT2D(const int32_t* nblock, double* result, const double* A, const double* B);

/** Makes each vector one of unit length, whatever its length was; a zero vector (all components at most 2.2e-308) becomes 0.
 *  @param[in]     nblock  (1), block: points; below 1 does nothing
 *  @param[in,out] V       (nblock, 3), any: vectors
 */
void GLO_UTI_VNORMALIZE(const int32_t* nblock, double* V);

/** The same in the plane.
 *  @like GLO_UTI_VNORMALIZE
 *  @param[in,out] V       (nblock, 2), any: vectors
 */
void GLO_UTI_VNORMALIZE2(const int32_t* nblock, double* V);

/** sum = a(1) + ... + a(n), modulo 2^32.
 *  @param[in]     n    (1), length: values; below 1 leaves the sum alone
 *  @param[in,out] sum  (1), any: sum
 *  @param[in]     a    (n), any: values
 */
void GLO_UTI_VSUMI(const int32_t* n, int32_t* sum, const int32_t* a);

/** sum = a(1) + ... + a(n), reals.  Eight running sums take the values in turn, s1 = a(1) + a(9) + ..., and are added as
 *  ((s1 + s2) + (s3 + s4)) + ((s5 + s6) + (s7 + s8)): one result on every machine.
 *  @like GLO_UTI_VSUMI
 */
void GLO_UTI_VSUMR(const int32_t* n, double* sum, const double* a);

/** sum = sum + GLO_UTI_VSUMR, to go on from block to block.
 *  @like GLO_UTI_VSUMI
 */
void GLO_UTI_VSUMR1(const int32_t* n, double* sum, const double* a);

/** result = the greater of a and b, value by value; NaN where one of them is.
 *  @like GLO_UTI_VADDR
 *  @param[out] result  (n), any: greater value
 */
void GLO_UTI_MAXR(const int32_t* n, double* result, const double* a, const double* b);

/** result = the smaller of a and b, value by value; NaN where one of them is.
 *  @like GLO_UTI_VADDR
 *  @param[out] result  (n), any: smaller value
 */
void GLO_UTI_MINR(const int32_t* n, double* result, const double* a, const double* b);

/** The greatest value of an array; NaN when there is one.
 *  @param[in]     n       (1), length: values; below 1 leaves the result alone
 *  @param[in]     a       (n), any: values
 *  @param[in,out] result  (1), any: greatest value
 */
void GLO_UTI_MAXARRAYR(const int32_t* n, const double* a, double* result);

/** The smallest value of an array; NaN when there is one.
 *  @like GLO_UTI_MAXARRAYR
 *  @param[in,out] result  (1), any: smallest value
 */
void GLO_UTI_MINARRAYR(const int32_t* n, const double* a, double* result);

/** The smallest value that is not 0.0; NaN when there is one; the result is left alone when all are 0.0.
 *  @like GLO_UTI_MAXARRAYR
 *  @param[in,out] result  (1), any: smallest value
 */
void GLO_UTI_MINNONZEROR(const int32_t* n, const double* a, double* result);

/* ---------------------------------------------------------------------------------------------------------------------
 * Determinants and linear systems
 *
 * Matrices A (nblock, 3, 3) have the row fastest: A(i,a,b) = A((b-1)*3*nblock + (a-1)*nblock + i).  Rows are scaled by their
 * largest coefficient before pivots are compared; a system whose pivot falls below 9e-16 of its scaled rows, or with a
 * row whose coefficients are all at most 2.2e-308, is singular: its
 * flag is 1.0 and its results are 0.0.  A matrix with a NaN or an infinity has the flag 1.0 and NaN in all its results.
 * Solutions of others are those of Gaussian elimination with row pivoting: A x differs from b by a few roundings of |A| |x|.
 * Determinants are sums of products as they stand: a product of components beyond 1e308 overflows, one below 1e-308 vanishes.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Determinants of symmetric tensors.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  S       (nblock, 6), any: tensors, S33
 *  @param[out] det     (nblock), any: determinants
 */
void GLO_UTI_DET33(const int32_t* nblock, const double* S, double* det);

/** Determinants of symmetric tensors with 13 = 23 = 0.
 *  @like GLO_UTI_DET33
 *  @param[in]  S       (nblock, 4), any: tensors, S31
 */
void GLO_UTI_DET31(const int32_t* nblock, const double* S, double* det);

/** B = the inverse of A.
 *  @param[in]  nblock    (1), block: points
 *  @param[in]  A         (nblock, 3, 3), any: matrices
 *  @param[out] B         (nblock, 3, 3), any: inverses, 0.0 where the matrix is singular
 *  @param[out] singular  (nblock), flag: 1.0 where the matrix is singular or not finite
 */
void GLO_UTI_INVERSER(const int32_t* nblock, const double* A, double* B, double* singular);

/** Solves A x = b.  x may be b.
 *  @param[in]  nblock    (1), block: points
 *  @param[in]  A         (nblock, 3, 3), any: matrices
 *  @param[in]  b         (nblock, 3), any: right-hand sides
 *  @param[out] x         (nblock, 3), any: solutions, 0.0 where the matrix is singular
 *  @param[out] singular  (nblock), flag: 1.0 where the matrix is singular or not finite
 */
void GLO_UTI_VSOLVE(const int32_t* nblock, const double* A, const double* b, double* x, double* singular);

/** The same; reals have double length in both.
 *  @like GLO_UTI_VSOLVE
 */
void GLO_UTI_VSOLVEDBL(const int32_t* nblock, const double* A, const double* b, double* x, double* singular);

/* ---------------------------------------------------------------------------------------------------------------------
 * Sorts
 *
 * The result is that of straight insertion, which passes an entry only over strictly greater keys: entries of equal key
 * keep their order.  A NaN key is never passed and passes nothing: its entry keeps its place in the list, and the entries
 * before it and behind it are sorted by themselves.  Keys are not moved.
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

/** Kind of tensor of an output variable of an element: 8 in space (3 direct, 3 shear components), 9 plane with three direct
 *  components (3, 1), 10 plane with one or two (1 direct and any shear), 11 without shear or no tensor at all.  The counts are
 *  those of GLO_UTI_NUMTENSORCOMP for the element code; no procedure or variable changes them.
 *  @param[in] procedure  (1), unread: procedure code
 *  @param[in] element    (1), code 100|200|300|400|600|700|900|500: storage code of the element
 *  @param[in] variable   (1), unread: output variable code
 */
int32_t GLO_UTI_ITENSORID(const int32_t* procedure, const int32_t* element, const int32_t* variable);

/* ---------------------------------------------------------------------------------------------------------------------
 * Principal values and directions
 *
 * PRINCS members return each value with its unit direction: P(i,k) belongs to column k of V(i,.,.), so V turns principal
 * axes into global axes.  No member of this group sorts unless it says so: direction k is the one nearest axis k.
 * Directions are right-handed in every member that returns them, sorted ones too: V is a rotation and no reflection.
 * Members that rotate, that is all but the closed forms PRINCS31, PRINCS21, EIG31ANAL and the trigonometric EIG33ANAL, take
 * tensors of every scale from the smallest double, 4.9e-324, to the largest; a value beyond the largest double is infinite, a
 * value below 2.2e-308 is rounded once.  They end after 40 sweeps at the latest and keep what they then have; no
 * tensor is known to need more than five.
 * INDX members treat the listed points only and leave all others untouched; the arrays keep their full block layout.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Jacobi rotations in the planes (1,3), (1,2), (2,3) until every rotation of a sweep has a sine of at most 0.015.
 *  That bound is the contract: directions are right to about 2e-4 of the spread of the values, and rotations below about
 *  1e-8 are dropped.  Values carry the square of that error.  For values and directions to machine precision, sorted, take
 *  GLO_UTI_EIG33V.
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
 *  1e-15 of the largest component, or 1e-8 of it where two of them nearly meet.  A tensor whose components are all at most
 *  2.2e-308 has zeros for its values.
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

/** Values alone in the 1-2 plane: P1 is the one nearest axis 1, P2 the other, P3 = S33.  Squares are formed unscaled, as in
 *  GLO_UTI_PRINCS31.
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

/** Values alone in increasing order, to machine precision: errors below 1e-15 of the largest magnitude, at every scale.  Small
 *  values of tensors that are positive and nearly diagonal keep their own digits.
 *  A point with a NaN or an infinity leaves NaN.
 *  Source: J. Demmel, K. Veselic, SIAM J. Matrix Anal. Appl. 13 (1992) 1204.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  S       (nblock, 6), any: tensors, S33
 *  @param[out] P       (nblock, 3), any: principal values, P1 <= P2 <= P3
 */
void GLO_UTI_EIG33(const int32_t* nblock, const double* S, double* P);

/** The values of GLO_UTI_EIG33 in decreasing order.
 *  @like GLO_UTI_EIG33
 *  @param[out] P       (nblock, 3), any: principal values, P1 >= P2 >= P3
 */
void GLO_UTI_EIG33S(const int32_t* nblock, const double* S, double* P);

/** The values of GLO_UTI_EIG33 with their directions: |S V - V P| is below 4e-15 of the largest magnitude, and V is
 *  orthogonal to 4e-15 and right-handed.  Equal values have any orthogonal directions in their plane.
 *  @like GLO_UTI_EIG33
 *  @param[out] V       (nblock, 3, 3), -: principal directions, unit vectors in columns
 */
void GLO_UTI_EIG33V(const int32_t* nblock, const double* S, double* P, double* V);

/** The values of GLO_UTI_EIG33ANAL, bit for bit and in its order, with directions as accurate as those of GLO_UTI_EIG33V and
 *  right-handed in this order.  The directions of a tensor whose values count as zeros are in the order of GLO_UTI_EIG33V.
 *  @like GLO_UTI_EIG33V
 *  @param[out] P       (nblock, 3), any: principal values
 */
void GLO_UTI_EIG33ANALV(const int32_t* nblock, const double* S, double* P, double* V);

/** Tensors with 13 = 23 = 0: values, component 33 among them, in increasing order and to machine precision, with directions.
 *  @like GLO_UTI_EIG33V
 *  @param[in]  S       (nblock, 4), any: tensors, S31
 */
void GLO_UTI_EIG31V(const int32_t* nblock, const double* S, double* P, double* V);

/** The values of GLO_UTI_EIG31V alone.
 *  @like GLO_UTI_EIG31V
 */
void GLO_UTI_EIG31VECTOR(const int32_t* nblock, const double* S, double* P);

/** Plane tensors: values in increasing order, to machine precision, with directions; V as GLO_UTI_PRINCS21 has it.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  S       (nblock, 3), any: tensors, S21
 *  @param[out] P       (nblock, 2), any: principal values, P1 <= P2
 *  @param[out] V       (nblock, 2, 2), -: principal directions, unit vectors in columns
 */
void GLO_UTI_EIG21V(const int32_t* nblock, const double* S, double* P, double* V);

/** The values of GLO_UTI_EIG21V alone.
 *  @like GLO_UTI_EIG21V
 */
void GLO_UTI_EIG21VECTOR(const int32_t* nblock, const double* S, double* P);

/** GLO_UTI_EIG21VECTOR for listed points.
 *  @like GLO_UTI_EIG21V
 *  @param[in]  count   (1), count: entries of the list; below 1 does nothing
 *  @param[in]  list    (count), list: point numbers
 */
void GLO_UTI_EIG21VECTORINDX(const int32_t* nblock, const int32_t* count, const int32_t* list, const double* S,
                             double* P);

/** The values of GLO_UTI_EIG21V in decreasing order.
 *  @like GLO_UTI_EIG21V
 *  @param[out] P       (nblock, 2), any: principal values, P1 >= P2
 */
void GLO_UTI_EIG21S(const int32_t* nblock, const double* S, double* P);

/** Values lambda of A x = lambda B x in increasing order, with their directions x.  A is symmetric, B symmetric and positive
 *  definite; where it is not, the point has NaN.  Values are right to 1e-14 of the largest one, times the ratio of the
 *  largest to the smallest principal value of B.  Directions are unit vectors, orthogonal in the product with B, and
 *  right-handed: their triple product is positive.  Tensors may have any scale at which the values are normal numbers; values
 *  so large that A relative to B overflows leave NaN.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  A       (nblock, 6), any: tensors, S33
 *  @param[in]  B       (nblock, 6), stretch: positive definite tensors, S33
 *  @param[out] P       (nblock, 3), any: values, P1 <= P2 <= P3
 *  @param[out] V       (nblock, 3, 3), -: directions, unit vectors in columns
 */
void GLO_UTI_GENEIG33(const int32_t* nblock, const double* A, const double* B, double* P, double* V);

/** The values of GLO_UTI_GENEIG33 alone.
 *  @like GLO_UTI_GENEIG33
 */
void GLO_UTI_GENEIG33VECTOR(const int32_t* nblock, const double* A, const double* B, double* P);

/* ---------------------------------------------------------------------------------------------------------------------
 * Tensor functions
 * ------------------------------------------------------------------------------------------------------------------ */

/** Square root of symmetric tensors without negative principal values, as the left stretch V of B = F F'.
 *  V is symmetric with no negative value and V V = S.  Principal values and directions are found by Jacobi rotations
 *  to machine precision: |V V - S| is below 4e-15 |S| (largest components), at every scale of S.
 *  A value that is negative by rounding (down to -1e-14 |S|) counts as 0; one further below leaves NaN in its point.
 *  V may be S.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  S       (nblock, 6), any: tensors, S33
 *  @param[out] V       (nblock, 6), any: their square roots, S33
 */
void GLO_UTI_SQRTV(const int32_t* nblock, const double* S, double* V);

/** Logarithm of symmetric tensors with positive principal values, as the logarithmic strain ln V of a stretch V.
 *  Right to 4e-15 of its largest component plus what the condition of S demands, 2e-16 times the ratio of the largest to the
 *  smallest value; near the identity (direct components in 0.5 .. 2, shear below 0.25) small strains keep their digits: the
 *  error is 4e-15 of the largest component of the result.  A value that is not positive leaves NaN in its point.
 *  L may be S.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  S       (nblock, 6), stretch: tensors, S33
 *  @param[out] L       (nblock, 6), any: their logarithms, S33
 */
void GLO_UTI_LOGV(const int32_t* nblock, const double* S, double* L);

/** Exponential of tensors without shear: of each direct component, with an error below 0.8 units in the last place.
 *  E may be S.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  S       (nblock, 3), any: tensors, S30
 *  @param[out] E       (nblock, 3), any: their exponentials, S30
 */
void GLO_UTI_EXPS30(const int32_t* nblock, const double* S, double* E);

/** Exponential of tensors with 13 = 23 = 0.  Each plane component is right to 4e-15 of itself, times the largest magnitude of S
 *  where that is above 1, however small it is beside the others; one beyond the largest double is infinite and leaves the others
 *  alone.  E33 is right to 0.8 units in the last place.  E may be S.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  S       (nblock, 4), any: tensors, S31
 *  @param[out] E       (nblock, 4), any: their exponentials, S31
 */
void GLO_UTI_EXPS31(const int32_t* nblock, const double* S, double* E);

/* ---------------------------------------------------------------------------------------------------------------------
 * Quaternions
 *
 * A spatial quaternion is x y z w, the scalar last; a unit one with vector sin(angle/2) times the unit axis and scalar
 * cos(angle/2) stands for the rotation by that angle about that axis.  A plane quaternion, about axis 3, is z w.  Products
 * are Hamilton's.  Source: W. R. Hamilton, Phil. Mag. 25 (1844) 489.
 * ------------------------------------------------------------------------------------------------------------------ */

/** out = conj(a) b of one pair, not normalised: the rotation that carries orientation a to orientation b, in the frame of a.
 *  @param[out] out  (4), any: product
 *  @param[in]  a    (4), any: quaternion
 *  @param[in]  b    (4), any: quaternion
 */
void GLO_UTI_MULT3DQUAT(double* out, const double* a, const double* b);

/** The plane form of GLO_UTI_MULT3DQUAT.
 *  @param[out] out  (2), any: product
 *  @param[in]  a    (2), any: plane quaternion
 *  @param[in]  b    (2), any: plane quaternion
 */
void GLO_UTI_MULT2DQUAT(double* out, const double* a, const double* b);

/** The product of one pair that the code selects as in GLO_UTI_QUAT3DALGEBRA, not normalised.
 *  @like GLO_UTI_MULT3DQUAT
 *  @param[in]  op   (1), code 1|-1|2|-2|3: product, any other code as 1
 */
void GLO_UTI_GENMULT3DQUAT(const int32_t* op, double* out, const double* a, const double* b);

/** The plane form of GLO_UTI_GENMULT3DQUAT.
 *  @like GLO_UTI_MULT2DQUAT
 *  @param[in]  op   (1), code 1|-1|2|-2|3: product, any other code as 1
 */
void GLO_UTI_GENMULT2DQUAT(const int32_t* op, double* out, const double* a, const double* b);

/** Product of each point, of unit length: 1 a b, -1 b a, 2 conj(a) b, -2 conj(b) a, any other code as 1.  A product of length
 *  zero leaves NaN or infinity.  Products and their squares are formed unscaled: lengths of a and b whose product is beyond 1e154
 *  or below 1e-154 count as infinite or zero.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  op      (1), code 1|-1|2|-2|3: product
 *  @param[out] Q       (nblock, 4), -: unit quaternions
 *  @param[in]  A       (nblock, 4), any: quaternions a
 *  @param[in]  B       (nblock, 4), any: quaternions b
 */
void GLO_UTI_QUAT3DALGEBRA(const int32_t* nblock, const int32_t* op, double* Q, const double* A, const double* B);

/** The plane form of GLO_UTI_QUAT3DALGEBRA.
 *  @like GLO_UTI_QUAT3DALGEBRA
 *  @param[out] Q       (nblock, 2), -: plane unit quaternions
 *  @param[in]  A       (nblock, 2), any: plane quaternions a
 *  @param[in]  B       (nblock, 2), any: plane quaternions b
 */
void GLO_UTI_QUAT2DALGEBRA(const int32_t* nblock, const int32_t* op, double* Q, const double* A, const double* B);

/** Turns plane vectors by plane unit quaternions, or back.  W may be V.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  flag    (1), code 0|1: 0 global to the frame that the quaternion stands for, nonzero back to global
 *  @param[out] W       (nblock, 2), any: turned vectors
 *  @param[in]  Q       (nblock, 2), -: plane unit quaternions
 *  @param[in]  V       (nblock, 2), any: vectors
 */
void GLO_UTI_QUATROTVECT2D(const int32_t* nblock, const int32_t* flag, double* W, const double* Q, const double* V);

/** Rotation vectors, angle in radians times unit axis, of quaternions of any length but zero, from 4.9e-324 on.  The angle is at most pi; of a
 *  half turn the axis is that of the quaternion.  Right to a few units in the last place for every rotation, tiny ones and
 *  half turns included.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  Q       (nblock, 4), -: quaternions
 *  @param[out] R       (nblock, 3), rad: rotation vectors
 */
void GLO_UTI_ANGLESFROMQUATERNIONS(const int32_t* nblock, const double* Q, double* R);

/** The rotation that carries orientation a to orientation b, in global axes: b conj(a), of unit length and with w >= 0, so
 *  that it turns by at most half a turn.  (GLO_UTI_MULT3DQUAT gives it in the frame of a.)
 *  Products are formed unscaled: lengths of a and b whose product is beyond 1e154 or below 1e-154 are lost.
 *  @param[in]  nblock  (1), block: points
 *  @param[out] Q       (nblock, 4), -: unit quaternions of the increments
 *  @param[in]  A       (nblock, 4), -: orientations before
 *  @param[in]  B       (nblock, 4), -: orientations after
 */
void GLO_UTI_COMPROTINC(const int32_t* nblock, double* Q, const double* A, const double* B);

/** The increment of GLO_UTI_COMPROTINC as a rotation vector.
 *  @like GLO_UTI_COMPROTINC
 *  @param[out] R       (nblock, 3), rad: rotation vectors
 */
void GLO_UTI_COMPROTVEC(const int32_t* nblock, double* R, const double* A, const double* B);

/* ---------------------------------------------------------------------------------------------------------------------
 * Rotation of tensors
 *
 * Direction 0 takes tensors from global axes to the frame whose axes are the columns of R, T = R' S R; any other direction
 * takes them back, T = R S R'.  All arrays have the leading dimension ld, which may exceed the number n of points treated.
 * T may be S where both have the same storage.
 * ------------------------------------------------------------------------------------------------------------------ */

/** R = identity, in the nine columns R11 R21 R31 R12 R22 R32 R13 R23 R33.
 *  @param[in]  nblock  (1), block: points; below 1 does nothing
 *  @param[out] R       (nblock, 3, 3), -: rotation matrices, Rab in column a + 3 (b - 1): row a fastest
 */
void GLO_UTI_INITROTATIONMATRIX(const int32_t* nblock, double* R);

/** Plane tensors.
 *  @param[in]  n     (1), block: points
 *  @param[in]  ld    (1), stride: leading dimension of all arrays
 *  @param[in]  flag  (1), code 0|1: direction
 *  @param[in]  R     (ld, 4), -: rotations, R11 R21 R12 R22
 *  @param[in]  S     (ld, 3), any: tensors, S21
 *  @param[out] T     (ld, 3), any: rotated tensors, S21
 */
void GLO_UTI_ROTATES21(const int32_t* n, const int32_t* ld, const int32_t* flag, const double* R, const double* S,
                       double* T);

/** Plane tensors whose third component is the engineering shear, twice the tensor shear.
 *  @like GLO_UTI_ROTATES21
 *  @param[in]  S     (ld, 3), any: tensors, 11 22 and engineering shear 12
 *  @param[out] T     (ld, 3), any: rotated tensors, likewise
 */
void GLO_UTI_ROTATES21E(const int32_t* n, const int32_t* ld, const int32_t* flag, const double* R, const double* S,
                        double* T);

/** About axis 3; component 33 is copied.
 *  @like GLO_UTI_ROTATES21
 *  @param[in]  S     (ld, 4), any: tensors, S31
 *  @param[out] T     (ld, 4), any: rotated tensors, S31
 */
void GLO_UTI_ROTATES31(const int32_t* n, const int32_t* ld, const int32_t* flag, const double* R, const double* S,
                       double* T);

/** Tensors without shear, as principal values, about axis 3.
 *  @like GLO_UTI_ROTATES21
 *  @param[in]  S     (ld, 3), any: direct components, S30
 *  @param[out] T     (ld, 4), any: rotated tensors, S31
 */
void GLO_UTI_ROTATES30S31(const int32_t* n, const int32_t* ld, const int32_t* flag, const double* R, const double* S,
                          double* T);

/** In space: T = R' S R for direction 0, T = R S R' for any other.
 *  @like GLO_UTI_ROTATES21
 *  @param[in]  R     (ld, 9), -: rotations, R11 R21 R31 R12 R22 R32 R13 R23 R33
 *  @param[in]  S     (ld, 6), any: tensors, S33: 11 22 33 12 23 13
 *  @param[out] T     (ld, 6), any: rotated tensors, S33: 11 22 33 12 23 13
 */
void GLO_UTI_ROTATES33(const int32_t* n, const int32_t* ld, const int32_t* flag, const double* R, const double* S,
                       double* T);

/** Tensors without shear, as principal values, in space: with direction 1 and the axes of GLO_UTI_PRINCS33 as R the tensor
 *  that has these values and axes.
 *  @like GLO_UTI_ROTATES33
 *  @param[in]  S     (ld, 3), any: direct components, S30: 11 22 33
 *  @param[out] T     (ld, 6), any: rotated tensors, S33: 11 22 33 12 23 13
 */
void GLO_UTI_ROTATES30S33(const int32_t* n, const int32_t* ld, const int32_t* flag, const double* R, const double* S,
                          double* T);

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
 *  @param[in]  ld      (1), count>=ndim: length of a record of G; 2 is enough for ndim 2, and 1 where one component is moved
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

/** Nodal records of 10-node tetrahedra: L(e,I,k) = G(k,map(e,I)).
 *  @param[in]  nblock  (1), block: elements; below 1 does nothing
 *  @param[in]  ncomp   (1), count: components moved, the first ones of a record
 *  @param[in]  ld      (1), count>=ncomp: length of a record of G
 *  @param[in]  map     (nblock, 10), entity of G: node of each element and place
 *  @param[out] L       (nblock, 10, ncomp), any: values of the elements' nodes
 *  @param[in]  G       (ld, *), any: global records
 */
void GLO_UTI_C3D10MGATHER(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map, double* L,
                          const double* G);

/** Nodal records of 6-node faces of such tetrahedra.
 *  @param[in]  nblock  (1), block: elements; below 1 does nothing
 *  @param[in]  ncomp   (1), count: components moved, the first ones of a record
 *  @param[in]  ld      (1), count>=ncomp: length of a record of G
 *  @param[in]  map     (nblock, 6), entity of G: node of each element and place
 *  @param[out] L       (nblock, 6, ncomp), any: values of the elements' nodes
 *  @param[in]  G       (ld, *), any: global records
 */
void GLO_UTI_C3D10MFACEGATHER(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map,
                              double* L, const double* G);

/** Nodal records of 4-node cohesive elements in the plane.
 *  @param[in]  nblock  (1), block: elements; below 1 does nothing
 *  @param[in]  ncomp   (1), count: components moved, the first ones of a record
 *  @param[in]  ld      (1), count>=ncomp: length of a record of G
 *  @param[in]  map     (nblock, 4), entity of G: node of each element and place
 *  @param[out] L       (nblock, 4, ncomp), any: values of the elements' nodes
 *  @param[in]  G       (ld, *), any: global records
 */
void GLO_UTI_COH2DGATHERR(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map, double* L,
                          const double* G);

/** Nodal field variables of 8-node cohesive elements in space.
 *  @param[in]  nblock  (1), block: elements; below 1 does nothing
 *  @param[in]  ncomp   (1), count: components moved, the first ones of a record
 *  @param[in]  ld      (1), count>=ncomp: length of a record of G
 *  @param[in]  map     (nblock, 8), entity of G: node of each element and place
 *  @param[out] L       (nblock, 8, ncomp), any: values of the elements' nodes
 *  @param[in]  G       (ld, *), any: global records
 */
void GLO_UTI_COH3DGATHEREXFV(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map,
                             double* L, const double* G);

/** Nodal records of 4-node acoustic infinite elements.
 *  @param[in]  nblock  (1), block: elements; below 1 does nothing
 *  @param[in]  ncomp   (1), count: components moved, the first ones of a record
 *  @param[in]  ld      (1), count>=ncomp: length of a record of G
 *  @param[in]  map     (nblock, 4), entity of G: node of each element and place
 *  @param[out] L       (nblock, 4, ncomp), any: values of the elements' nodes
 *  @param[in]  G       (ld, *), any: global records
 */
void GLO_UTI_ACOINFGATHERR(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map,
                           double* L, const double* G);

/** Nodal records of 8-node continuum shells.
 *  @param[in]  nblock  (1), block: elements; below 1 does nothing
 *  @param[in]  ncomp   (1), count: components moved, the first ones of a record
 *  @param[in]  ld      (1), count>=ncomp: length of a record of G
 *  @param[in]  map     (nblock, 8), entity of G: node of each element and place
 *  @param[out] L       (nblock, 8, ncomp), any: values of the elements' nodes
 *  @param[in]  G       (ld, *), any: global records
 */
void GLO_UTI_GENGATHERRCONTSHELL(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map,
                                 double* L, const double* G);

/** Field variables of points: L(i,k) = G(k,map(i)), k = 1..ncomp.
 *  @param[in]  nblock  (1), block: points; below 1 does nothing
 *  @param[in]  ncomp   (1), count: components moved, the first ones of a record
 *  @param[in]  ld      (1), count>=ncomp: length of a record of G
 *  @param[in]  map     (nblock), entity of G: entity of each point
 *  @param[out] L       (nblock, ncomp), any: block array
 *  @param[in]  G       (ld, *), any: global records
 */
void GLO_UTI_EXFVGATHERR(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map, double* L,
                         const double* G);

/** The last component of records: L(i) = G(ld,map(i)).
 *  @param[in]  nblock  (1), block: points; below 1 does nothing
 *  @param[in]  ld      (1), count>=1: length of a record of G
 *  @param[in]  map     (nblock), entity of G: entity of each point
 *  @param[out] L       (nblock), any: values
 *  @param[in]  G       (ld, *), any: global records
 */
void GLO_UTI_GATHERLASTCOMPR(const int32_t* nblock, const int32_t* ld, const int32_t* map, double* L, const double* G);

/** Rotations, components 4 to 6 of records that begin with three translations: L(i,k) = G(k+3,map(i)).
 *  @param[in]  nblock  (1), block: points; below 1 does nothing
 *  @param[in]  ld      (1), count>=6: length of a record of G
 *  @param[in]  map     (nblock), entity of G: entity of each point
 *  @param[out] L       (nblock, 3), any: rotations
 *  @param[in]  G       (ld, *), any: global records
 */
void GLO_UTI_ROTVECTGATHERR(const int32_t* nblock, const int32_t* ld, const int32_t* map, double* L, const double* G);

/** Inflow values to records: G(k,map(i)) = L(i,k), k = 1..ncomp; of repeated entities the last point's stay.
 *  @like GLO_UTI_EXFVGATHERR
 *  @param[in]     L  (nblock, ncomp), any: block array
 *  @param[in,out] G  (ld, *), any: global records
 */
void GLO_UTI_INFLSCATTERR(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map,
                          const double* L, double* G);

/** GLO_UTI_INFLSCATTERR for the inflow of Eulerian meshes.
 *  @like GLO_UTI_INFLSCATTERR
 */
void GLO_UTI_EULINFLSCATTERR(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map,
                             const double* L, double* G);

/** GLO_UTI_INFLSCATTERR for values of exchange.
 *  @like GLO_UTI_INFLSCATTERR
 */
void GLO_UTI_EXCHSCATTERR(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map,
                          const double* L, double* G);

/** Masses: L(i) = G(map(i)).
 *  @param[in]  n       (1), block: points; below 1 does nothing
 *  @param[in]  unused  (1), unread: not read
 *  @param[out] L       (n), any: values
 *  @param[in]  G       (*), any: one value for each entity
 *  @param[in]  map     (n), entity of G: entity of each point
 */
void GLO_ASM_GATHERMASS(const int32_t* n, const int32_t* unused, double* L, const double* G, const int32_t* map);

/** Heat fluxes: L(i) = G(map(i)).
 *  @like GLO_ASM_GATHERMASS
 */
void GLO_ASM_GATHERHFLUX(const int32_t* n, const int32_t* unused, double* L, const double* G, const int32_t* map);

/** Second moments of rotary inertia: L(k,i) = G(k,map(i)), k = 1..6.
 *  @like GLO_ASM_GATHERMASS
 *  @param[out] L       (6, n), any: local records
 *  @param[in]  G       (6, *), any: global records
 */
void GLO_ASM_GATHERNIR2NDMOM(const int32_t* n, const int32_t* unused, double* L, const double* G, const int32_t* map);

/** Second moments back: G(k,map(i)) = L(k,i), k = 1..6.
 *  @like GLO_ASM_GATHERNIR2NDMOM
 *  @param[in]     L  (6, n), any: local records
 *  @param[in,out] G  (6, *), any: global records
 */
void GLO_ASM_SCATTERNIR2NDMOM(const int32_t* n, const int32_t* unused, const double* L, double* G, const int32_t* map);

/** Masses to nodes with one translation: G(1,map(i)) = L(i).
 *  @like GLO_ASM_GATHERMASS
 *  @param[in]     L  (n), any: one mass for each point
 *  @param[in,out] G  (1, *), any: global records
 */
void GLO_ASM_SCATTERMASS1(const int32_t* n, const int32_t* unused, const double* L, double* G, const int32_t* map);

/** Masses to nodes with two translations: G(k,map(i)) = L(i), k = 1, 2.
 *  @like GLO_ASM_SCATTERMASS1
 *  @param[in,out] G  (2, *), any: global records
 */
void GLO_ASM_SCATTERMASS2(const int32_t* n, const int32_t* unused, const double* L, double* G, const int32_t* map);

/** Masses to nodes with three translations: G(k,map(i)) = L(i), k = 1, 2, 3.
 *  @like GLO_ASM_SCATTERMASS1
 *  @param[in,out] G  (3, *), any: global records
 */
void GLO_ASM_SCATTERMASS3(const int32_t* n, const int32_t* unused, const double* L, double* G, const int32_t* map);

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

/** Adds to the components that GLO_UTI_GENSCATTERR would overwrite: ndim 3 to components 1 to 3, ndim 2 to 1 and 2, any
 *  other ndim to the last component ld alone.
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

/** Adds to one component of records: G(comp,map(i)) = G(comp,map(i)) + L(i).
 *  @param[in]     nblock  (1), block: points; below 1 does nothing
 *  @param[in]     comp    (1), 1..ld: component
 *  @param[in]     ld      (1), count>=1: length of a record of G
 *  @param[in]     unused  (1), unread: not read
 *  @param[in,out] G       (ld, *), any: global records
 *  @param[in]     L       (nblock), any: values
 *  @param[in]     map     (nblock), entity of G: entity of each point
 */
void GLO_OPE_GENASSEM1(const int32_t* nblock, const int32_t* comp, const int32_t* ld, const int32_t* unused, double* G,
                       const double* L, const int32_t* map);

/** Adds to the first two components of records.
 *  @like GLO_OPE_GENASSEM1
 *  @param[in]     comp    (1), unread: not read
 *  @param[in]     ld      (1), count>=2: length of a record of G
 *  @param[in]     L       (nblock, 2), any: block array
 */
void GLO_OPE_GENASSEM2(const int32_t* nblock, const int32_t* comp, const int32_t* ld, const int32_t* unused, double* G,
                       const double* L, const int32_t* map);

/** Adds to the last component of records, the pressure of acoustic infinite elements.
 *  @like GLO_OPE_GENASSEM1
 *  @param[in]     comp    (1), unread: not read
 */
void GLO_OPE_GENASSEMACOINF(const int32_t* nblock, const int32_t* comp, const int32_t* ld, const int32_t* unused,
                            double* G, const double* L, const int32_t* map);

/** Adds integers, modulo 2^32: G(k,map(i)) = G(k,map(i)) + L(i,k), k = 1..ncomp.
 *  @param[in]     nblock  (1), block: points; below 1 does nothing
 *  @param[in]     ncomp   (1), count: components, the first ones of a record
 *  @param[in]     ld      (1), count>=ncomp: length of a record of G
 *  @param[in]     unused  (1), unread: not read
 *  @param[in,out] G       (ld, *), any: global records
 *  @param[in]     L       (nblock, ncomp), any: block array
 *  @param[in]     map     (nblock), entity of G: entity of each point
 */
void GLO_OPE_GENASSEMINT(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* unused,
                         int32_t* G, const int32_t* L, const int32_t* map);

/** Adds the nodal values of 8-node continuum shells: G(k,map(e,I)) = G(k,map(e,I)) + L(e,I,k), element by element and node by
 *  node.
 *  @param[in]     nblock  (1), block: elements; below 1 does nothing
 *  @param[in]     ncomp   (1), count: components, the first ones of a record
 *  @param[in]     ld      (1), count>=ncomp: length of a record of G
 *  @param[in]     unused  (1), unread: not read
 *  @param[in,out] G       (ld, *), any: global records
 *  @param[in]     L       (nblock, 8, ncomp), any: values of the elements' nodes
 *  @param[in]     map     (nblock, 8), entity of G: node of each element and place
 */
void GLO_OPE_GENASSEMCONTSHELL(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* unused,
                               double* G, const double* L, const int32_t* map);

/* ---------------------------------------------------------------------------------------------------------------------
 * Output of tensors
 *
 * Records for a results database: P holds values, Q the unit quaternion of their directions; record k starts at
 * P((k-1)*ldp + 1) and Q((k-1)*ldq + 1).  What a record holds besides is left alone, so P and Q may be parts of one array of
 * longer records.  A quaternion turns the global axes into the principal ones: rotated by it, axis k is the direction of value
 * k.  In space it is x y z w, in the plane z w (Quaternions, above), of unit length and either sign.
 *
 * Members without a list write every point.  The cursor is the record of the block's first point and moves on by nblock.
 *
 * ELSET and EMULT members write the entries of a sorted list that lie in the block.  Entry e is point
 * e - (blockNumber - 1) blockSize - (groupNumber - 1) groupSize; its record has the number of its position in the list.  The
 * walk begins at the cursor, passes over entries below point 1, and ends with the last position or with the first entry that
 * lies beyond the block; the cursor is left at that entry, for the block that holds it.
 *
 * MULT and EMULT members take tensors in the axes of an orientation o of each point, a unit quaternion that turns the global
 * axes into them.  With q from those axes to the principal ones the record has o q, formed as MULT(conj(o), q) by
 * GLO_UTI_MULT3DQUAT, in the plane GLO_UTI_MULT2DQUAT: it turns the global axes into the principal ones, as everywhere.
 *
 * GEN members are the same routines, to the bit, for a general output whose records hold the values and the quaternion one
 * behind the other: one array R (n, *), n at least the reals of both, with P = R, Q = R + the number of values, and
 * ldp = ldq = n.  The other members may be called so as well, and GEN members with two arrays: ldp and ldq are lengths of
 * whole records, and nothing is written between the parts.  Two parts that overlap in a record are the caller's fault.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Principal values P1 >= P2 of plane tensors with their directions, by the closed form of GLO_UTI_PRINCS21, unscaled as
 *  there: it squares components, so that those beyond 1e154 leave no directions.  Equal values keep the order of the axes
 *  that they lie next to.  Exchanged values have their directions exchanged and the first of them reversed, so that the
 *  matrix R of the directions stays a rotation.  With t = 1 + R11 + R22
 *    where t >= 1:  w = sqrt(t + 1)/2,            z = (R21 - R12)/(4 w)
 *    elsewhere:     z = sqrt((1 - t)/4 + 1/2),    w = (R21 - R12)/(4 z)
 *  @param[in]     nblock  (1), block: points
 *  @param[in,out] cursor  (1), cursor: record of the first point, from 1
 *  @param[in]     S       (nblock, 3), any: tensors, S21
 *  @param[in]     ldp     (1), count>=2: length of a record of P
 *  @param[in]     ldq     (1), count>=2: length of a record of Q
 *  @param[out]    P       (ldp, *), record: principal values P1 P2
 *  @param[out]    Q       (ldq, *), record: rotations z w
 */
void GLO_UTI_ODBPRINC21QUAT(const int32_t* nblock, int32_t* cursor, const double* S, const int32_t* ldp,
                            const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBPRINC21QUAT for the entries of a list.
 *  @like GLO_UTI_ODBPRINC21QUAT
 *  @param[in]     blockNumber  (1), place: number of the block, from 1
 *  @param[in]     blockSize    (1), place: points of a block
 *  @param[in]     groupNumber  (1), place: number of the group of blocks, from 1
 *  @param[in]     groupSize    (1), place: points of a group
 *  @param[in]     set          (last), set: entity numbers, in increasing order
 *  @param[in,out] cursor       (1), cursor: next position of the list, from 1
 *  @param[in]     last         (1), count: last position of the list to be treated
 */
void GLO_UTI_ODBPRINC21QUATELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                 const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                 int32_t* cursor, const double* S, const int32_t* ldp, const int32_t* ldq, double* P,
                                 double* Q, const int32_t* last);

/** GLO_UTI_ODBPRINC21QUAT for tensors in the axes of orientations.
 *  @like GLO_UTI_ODBPRINC21QUAT
 *  @param[in]     O       (nblock, 2), -: orientations z w
 */
void GLO_UTI_ODBPRINC21QUATMULT(const int32_t* nblock, int32_t* cursor, const double* S, const double* O,
                                const int32_t* ldp, const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBPRINC21QUATMULT for the entries of a list.
 *  @like GLO_UTI_ODBPRINC21QUATELSET
 *  @param[in]     O            (nblock, 2), -: orientations z w
 */
void GLO_UTI_ODBPRINC21QUATEMULT(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                 const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                 int32_t* cursor, const double* S, const double* O, const int32_t* ldp,
                                 const int32_t* ldq, double* P, double* Q, const int32_t* last);

/** Principal values P1 >= P2 of plane tensors with 22 = 0, as GLO_UTI_ODBPRINC21QUAT but for two departures.  Where t is
 *  below 1, that is where the values are exchanged and R11 is negative, the vector part is stored as its square and the
 *  scalar part has a sum: z = (1 - t)/4 + 1/2, w = (R21 + R12)/(4 z), which is 0.  That is no unit quaternion; databases
 *  hold these numbers and readers know them.
 *  @like GLO_UTI_ODBPRINC21QUAT
 *  @param[in]     S       (nblock, 2), any: tensors, 11 12
 */
void GLO_UTI_ODBPRINC11QUAT(const int32_t* nblock, int32_t* cursor, const double* S, const int32_t* ldp,
                            const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBPRINC11QUAT for the entries of a list.
 *  @like GLO_UTI_ODBPRINC21QUATELSET
 *  @param[in]     S            (nblock, 2), any: tensors, 11 12
 */
void GLO_UTI_ODBPRINC11QUATELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                 const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                 int32_t* cursor, const double* S, const int32_t* ldp, const int32_t* ldq, double* P,
                                 double* Q, const int32_t* last);

/** GLO_UTI_ODBPRINC11QUAT for tensors in the axes of orientations.
 *  @like GLO_UTI_ODBPRINC11QUAT
 *  @param[in]     O       (nblock, 2), -: orientations z w
 */
void GLO_UTI_ODBPRINC11QUATMULT(const int32_t* nblock, int32_t* cursor, const double* S, const double* O,
                                const int32_t* ldp, const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBPRINC11QUATMULT for the entries of a list.
 *  @like GLO_UTI_ODBPRINC11QUATELSET
 *  @param[in]     O            (nblock, 2), -: orientations z w
 */
void GLO_UTI_ODBPRINC11QUATEMULT(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                 const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                 int32_t* cursor, const double* S, const double* O, const int32_t* ldp,
                                 const int32_t* ldq, double* P, double* Q, const int32_t* last);

/** Principal values of tensors with 13 = 23 = 0: P1 >= P2 in the plane as GLO_UTI_ODBPRINC21QUAT, then component 33,
 *  whatever its size.
 *  @like GLO_UTI_ODBPRINC21QUAT
 *  @param[in]     S       (nblock, 4), any: tensors, S31
 *  @param[in]     ldp     (1), count>=3: length of a record of P
 *  @param[out]    P       (ldp, *), record: principal values P1 P2 and S33
 */
void GLO_UTI_ODBPRINC31QUAT(const int32_t* nblock, int32_t* cursor, const double* S, const int32_t* ldp,
                            const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBPRINC31QUAT for the entries of a list.
 *  @like GLO_UTI_ODBPRINC21QUATELSET
 *  @param[in]     S            (nblock, 4), any: tensors, S31
 *  @param[in]     ldp          (1), count>=3: length of a record of P
 *  @param[out]    P            (ldp, *), record: principal values P1 P2 and S33
 */
void GLO_UTI_ODBPRINC31QUATELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                 const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                 int32_t* cursor, const double* S, const int32_t* ldp, const int32_t* ldq, double* P,
                                 double* Q, const int32_t* last);

/** GLO_UTI_ODBPRINC31QUAT for tensors in the axes of orientations.
 *  @like GLO_UTI_ODBPRINC31QUAT
 *  @param[in]     O       (nblock, 2), -: orientations z w
 */
void GLO_UTI_ODBPRINC31QUATMULT(const int32_t* nblock, int32_t* cursor, const double* S, const double* O,
                                const int32_t* ldp, const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBPRINC31QUATMULT for the entries of a list.
 *  @like GLO_UTI_ODBPRINC31QUATELSET
 *  @param[in]     O            (nblock, 2), -: orientations z w
 */
void GLO_UTI_ODBPRINC31QUATEMULT(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                 const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                 int32_t* cursor, const double* S, const double* O, const int32_t* ldp,
                                 const int32_t* ldq, double* P, double* Q, const int32_t* last);

/** Principal values P1 >= P2 >= P3 with their directions, to machine precision as GLO_UTI_EIG33V; equal values keep the
 *  order of the axes that they lie next to.  Exchanged values have their directions exchanged and one of them reversed,
 *  so that the three stay right-handed.  The quaternion is found from its largest component and right for every rotation,
 *  half turns included.  A tensor that is not finite leaves NaN in its own record.
 *  @like GLO_UTI_ODBPRINC21QUAT
 *  @param[in]     S       (nblock, 6), any: tensors, S33
 *  @param[in]     ldp     (1), count>=3: length of a record of P
 *  @param[in]     ldq     (1), count>=4: length of a record of Q
 *  @param[out]    P       (ldp, *), record: principal values P1 P2 P3
 *  @param[out]    Q       (ldq, *), record: rotations x y z w
 */
void GLO_UTI_ODBPRINC33QUAT(const int32_t* nblock, int32_t* cursor, const double* S, const int32_t* ldp,
                            const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBPRINC33QUAT for the entries of a list.
 *  @like GLO_UTI_ODBPRINC33QUAT
 *  @param[in]     blockNumber  (1), place: number of the block, from 1
 *  @param[in]     blockSize    (1), place: points of a block
 *  @param[in]     groupNumber  (1), place: number of the group of blocks, from 1
 *  @param[in]     groupSize    (1), place: points of a group
 *  @param[in]     set          (last), set: entity numbers, in increasing order
 *  @param[in,out] cursor       (1), cursor: next position of the list, from 1
 *  @param[in]     last         (1), count: last position of the list to be treated
 */
void GLO_UTI_ODBPRINC33QUATELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                 const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                 int32_t* cursor, const double* S, const int32_t* ldp, const int32_t* ldq, double* P,
                                 double* Q, const int32_t* last);

/** GLO_UTI_ODBPRINC33QUAT for tensors in the axes of orientations.
 *  @like GLO_UTI_ODBPRINC33QUAT
 *  @param[in]     O       (nblock, 4), -: orientations x y z w
 */
void GLO_UTI_ODBPRINC33QUATMULT(const int32_t* nblock, int32_t* cursor, const double* S, const double* O,
                                const int32_t* ldp, const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBPRINC33QUATMULT for the entries of a list.
 *  @like GLO_UTI_ODBPRINC33QUATELSET
 *  @param[in]     O            (nblock, 4), -: orientations x y z w
 */
void GLO_UTI_ODBPRINC33QUATEMULT(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                 const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                 int32_t* cursor, const double* S, const double* O, const int32_t* ldp,
                                 const int32_t* ldq, double* P, double* Q, const int32_t* last);

/** GLO_UTI_ODBPRINC21QUAT in the records of a general output.
 *  @like GLO_UTI_ODBPRINC21QUAT
 */
void GLO_UTI_ODBGENPRINC21QUAT(const int32_t* nblock, int32_t* cursor, const double* S, const int32_t* ldp,
                               const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBPRINC21QUATELSET in the records of a general output.
 *  @like GLO_UTI_ODBPRINC21QUATELSET
 */
void GLO_UTI_ODBGENPRINC21QUATELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                    const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                    int32_t* cursor, const double* S, const int32_t* ldp, const int32_t* ldq, double* P,
                                    double* Q, const int32_t* last);

/** GLO_UTI_ODBPRINC21QUATMULT in the records of a general output.
 *  @like GLO_UTI_ODBPRINC21QUATMULT
 */
void GLO_UTI_ODBGENPRINC21QUATMULT(const int32_t* nblock, int32_t* cursor, const double* S, const double* O,
                                   const int32_t* ldp, const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBPRINC21QUATEMULT in the records of a general output.
 *  @like GLO_UTI_ODBPRINC21QUATEMULT
 */
void GLO_UTI_ODBGENPRINC21QUATEMULT(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                    const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                    int32_t* cursor, const double* S, const double* O, const int32_t* ldp,
                                    const int32_t* ldq, double* P, double* Q, const int32_t* last);

/** GLO_UTI_ODBPRINC31QUAT in the records of a general output.
 *  @like GLO_UTI_ODBPRINC31QUAT
 */
void GLO_UTI_ODBGENPRINC31QUAT(const int32_t* nblock, int32_t* cursor, const double* S, const int32_t* ldp,
                               const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBPRINC31QUATELSET in the records of a general output.
 *  @like GLO_UTI_ODBPRINC31QUATELSET
 */
void GLO_UTI_ODBGENPRINC31QUATELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                    const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                    int32_t* cursor, const double* S, const int32_t* ldp, const int32_t* ldq, double* P,
                                    double* Q, const int32_t* last);

/** GLO_UTI_ODBPRINC31QUATMULT in the records of a general output.
 *  @like GLO_UTI_ODBPRINC31QUATMULT
 */
void GLO_UTI_ODBGENPRINC31QUATMULT(const int32_t* nblock, int32_t* cursor, const double* S, const double* O,
                                   const int32_t* ldp, const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBPRINC31QUATEMULT in the records of a general output.
 *  @like GLO_UTI_ODBPRINC31QUATEMULT
 */
void GLO_UTI_ODBGENPRINC31QUATEMULT(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                    const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                    int32_t* cursor, const double* S, const double* O, const int32_t* ldp,
                                    const int32_t* ldq, double* P, double* Q, const int32_t* last);

/** GLO_UTI_ODBPRINC33QUAT in the records of a general output.
 *  @like GLO_UTI_ODBPRINC33QUAT
 */
void GLO_UTI_ODBGENPRINC33QUAT(const int32_t* nblock, int32_t* cursor, const double* S, const int32_t* ldp,
                               const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBPRINC33QUATELSET in the records of a general output.
 *  @like GLO_UTI_ODBPRINC33QUATELSET
 */
void GLO_UTI_ODBGENPRINC33QUATELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                    const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                    int32_t* cursor, const double* S, const int32_t* ldp, const int32_t* ldq, double* P,
                                    double* Q, const int32_t* last);

/** GLO_UTI_ODBPRINC33QUATMULT in the records of a general output.
 *  @like GLO_UTI_ODBPRINC33QUATMULT
 */
void GLO_UTI_ODBGENPRINC33QUATMULT(const int32_t* nblock, int32_t* cursor, const double* S, const double* O,
                                   const int32_t* ldp, const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBPRINC33QUATEMULT in the records of a general output.
 *  @like GLO_UTI_ODBPRINC33QUATEMULT
 */
void GLO_UTI_ODBGENPRINC33QUATEMULT(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                    const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                    int32_t* cursor, const double* S, const double* O, const int32_t* ldp,
                                    const int32_t* ldq, double* P, double* Q, const int32_t* last);

/** Directional copy of one value: it belongs to axis 1 of its frame, and is principal as it stands.  P has the values in
 *  the order given, not sorted, Q the identity (0, 1), for values along the global axes.
 *  @like GLO_UTI_ODBPRINC21QUAT
 *  @param[in]     S       (nblock, 1), any: values
 *  @param[in]     ldp     (1), count>=1: length of a record of P
 *  @param[in]     ldq     (1), count>=2: length of a record of Q
 *  @param[out]    P       (ldp, *), record: values P
 *  @param[out]    Q       (ldq, *), record: orientations z w
 */
void GLO_UTI_ODBDIRCOPY1(const int32_t* nblock, int32_t* cursor, const double* S, const int32_t* ldp,
                         const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBDIRCOPY1 for the entries of a list.
 *  @like GLO_UTI_ODBDIRCOPY1
 *  @param[in]     blockNumber  (1), place: number of the block, from 1
 *  @param[in]     blockSize    (1), place: points of a block
 *  @param[in]     groupNumber  (1), place: number of the group of blocks, from 1
 *  @param[in]     groupSize    (1), place: points of a group
 *  @param[in]     set          (last), set: entity numbers, in increasing order
 *  @param[in,out] cursor       (1), cursor: next position of the list, from 1
 *  @param[in]     last         (1), count: last position of the list to be treated
 */
void GLO_UTI_ODBDIRCOPY1ELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                              const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set, int32_t* cursor,
                              const double* S, const int32_t* ldp, const int32_t* ldq, double* P, double* Q,
                              const int32_t* last);

/** GLO_UTI_ODBDIRCOPY1 for values along the axes of plane orientations, which Q has then.
 *  @like GLO_UTI_ODBDIRCOPY1
 *  @param[in]     O       (nblock, 2), -: orientations z w
 *  @param[in]     ldq     (1), count>=2: length of a record of Q
 *  @param[out]    Q       (ldq, *), record: orientations z w
 */
void GLO_UTI_ODBDIRCOPY1MULT2D(const int32_t* nblock, int32_t* cursor, const double* S, const double* O,
                               const int32_t* ldp, const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBDIRCOPY1MULT2D for the entries of a list.
 *  @like GLO_UTI_ODBDIRCOPY1MULT2D
 *  @param[in]     blockNumber  (1), place: number of the block, from 1
 *  @param[in]     blockSize    (1), place: points of a block
 *  @param[in]     groupNumber  (1), place: number of the group of blocks, from 1
 *  @param[in]     groupSize    (1), place: points of a group
 *  @param[in]     set          (last), set: entity numbers, in increasing order
 *  @param[in,out] cursor       (1), cursor: next position of the list, from 1
 *  @param[in]     last         (1), count: last position of the list to be treated
 */
void GLO_UTI_ODBDIRCOPY1EMULT2D(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                int32_t* cursor, const double* S, const double* O, const int32_t* ldp,
                                const int32_t* ldq, double* P, double* Q, const int32_t* last);

/** GLO_UTI_ODBDIRCOPY1 for values along the axes of spatial orientations, which Q has then.
 *  @like GLO_UTI_ODBDIRCOPY1
 *  @param[in]     O       (nblock, 4), -: orientations x y z w
 *  @param[in]     ldq     (1), count>=4: length of a record of Q
 *  @param[out]    Q       (ldq, *), record: orientations x y z w
 */
void GLO_UTI_ODBDIRCOPY1MULT3D(const int32_t* nblock, int32_t* cursor, const double* S, const double* O,
                               const int32_t* ldp, const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBDIRCOPY1MULT3D for the entries of a list.
 *  @like GLO_UTI_ODBDIRCOPY1MULT3D
 *  @param[in]     blockNumber  (1), place: number of the block, from 1
 *  @param[in]     blockSize    (1), place: points of a block
 *  @param[in]     groupNumber  (1), place: number of the group of blocks, from 1
 *  @param[in]     groupSize    (1), place: points of a group
 *  @param[in]     set          (last), set: entity numbers, in increasing order
 *  @param[in,out] cursor       (1), cursor: next position of the list, from 1
 *  @param[in]     last         (1), count: last position of the list to be treated
 */
void GLO_UTI_ODBDIRCOPY1EMULT3D(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                int32_t* cursor, const double* S, const double* O, const int32_t* ldp,
                                const int32_t* ldq, double* P, double* Q, const int32_t* last);

/** Directional copy of two values, along axes 1 and 2 of their frame: principal as they stand.  P has the values in the
 *  order given, not sorted, Q the identity (0, 1), for values along the global axes.
 *  @like GLO_UTI_ODBPRINC21QUAT
 *  @param[in]     S       (nblock, 2), any: values
 *  @param[in]     ldp     (1), count>=2: length of a record of P
 *  @param[in]     ldq     (1), count>=2: length of a record of Q
 *  @param[out]    P       (ldp, *), record: values P1 P2
 *  @param[out]    Q       (ldq, *), record: orientations z w
 */
void GLO_UTI_ODBDIRCOPY2(const int32_t* nblock, int32_t* cursor, const double* S, const int32_t* ldp,
                         const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBDIRCOPY2 for the entries of a list.
 *  @like GLO_UTI_ODBDIRCOPY2
 *  @param[in]     blockNumber  (1), place: number of the block, from 1
 *  @param[in]     blockSize    (1), place: points of a block
 *  @param[in]     groupNumber  (1), place: number of the group of blocks, from 1
 *  @param[in]     groupSize    (1), place: points of a group
 *  @param[in]     set          (last), set: entity numbers, in increasing order
 *  @param[in,out] cursor       (1), cursor: next position of the list, from 1
 *  @param[in]     last         (1), count: last position of the list to be treated
 */
void GLO_UTI_ODBDIRCOPY2ELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                              const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set, int32_t* cursor,
                              const double* S, const int32_t* ldp, const int32_t* ldq, double* P, double* Q,
                              const int32_t* last);

/** GLO_UTI_ODBDIRCOPY2 for values along the axes of plane orientations, which Q has then.
 *  @like GLO_UTI_ODBDIRCOPY2
 *  @param[in]     O       (nblock, 2), -: orientations z w
 *  @param[in]     ldq     (1), count>=2: length of a record of Q
 *  @param[out]    Q       (ldq, *), record: orientations z w
 */
void GLO_UTI_ODBDIRCOPY2MULT2D(const int32_t* nblock, int32_t* cursor, const double* S, const double* O,
                               const int32_t* ldp, const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBDIRCOPY2MULT2D for the entries of a list.
 *  @like GLO_UTI_ODBDIRCOPY2MULT2D
 *  @param[in]     blockNumber  (1), place: number of the block, from 1
 *  @param[in]     blockSize    (1), place: points of a block
 *  @param[in]     groupNumber  (1), place: number of the group of blocks, from 1
 *  @param[in]     groupSize    (1), place: points of a group
 *  @param[in]     set          (last), set: entity numbers, in increasing order
 *  @param[in,out] cursor       (1), cursor: next position of the list, from 1
 *  @param[in]     last         (1), count: last position of the list to be treated
 */
void GLO_UTI_ODBDIRCOPY2EMULT2D(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                int32_t* cursor, const double* S, const double* O, const int32_t* ldp,
                                const int32_t* ldq, double* P, double* Q, const int32_t* last);

/** GLO_UTI_ODBDIRCOPY2 for values along the axes of spatial orientations, which Q has then.
 *  @like GLO_UTI_ODBDIRCOPY2
 *  @param[in]     O       (nblock, 4), -: orientations x y z w
 *  @param[in]     ldq     (1), count>=4: length of a record of Q
 *  @param[out]    Q       (ldq, *), record: orientations x y z w
 */
void GLO_UTI_ODBDIRCOPY2MULT3D(const int32_t* nblock, int32_t* cursor, const double* S, const double* O,
                               const int32_t* ldp, const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBDIRCOPY2MULT3D for the entries of a list.
 *  @like GLO_UTI_ODBDIRCOPY2MULT3D
 *  @param[in]     blockNumber  (1), place: number of the block, from 1
 *  @param[in]     blockSize    (1), place: points of a block
 *  @param[in]     groupNumber  (1), place: number of the group of blocks, from 1
 *  @param[in]     groupSize    (1), place: points of a group
 *  @param[in]     set          (last), set: entity numbers, in increasing order
 *  @param[in,out] cursor       (1), cursor: next position of the list, from 1
 *  @param[in]     last         (1), count: last position of the list to be treated
 */
void GLO_UTI_ODBDIRCOPY2EMULT3D(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                int32_t* cursor, const double* S, const double* O, const int32_t* ldp,
                                const int32_t* ldq, double* P, double* Q, const int32_t* last);

/** Directional copy of three values, along the axes of their frame, as tensors S30: principal as they stand.  P has the
 *  values in the order given, not sorted, Q the identity (0, 0, 0, 1), for values along the global axes.
 *  @like GLO_UTI_ODBPRINC21QUAT
 *  @param[in]     S       (nblock, 3), any: values
 *  @param[in]     ldp     (1), count>=3: length of a record of P
 *  @param[in]     ldq     (1), count>=4: length of a record of Q
 *  @param[out]    P       (ldp, *), record: values P1 P2 P3
 *  @param[out]    Q       (ldq, *), record: orientations x y z w
 */
void GLO_UTI_ODBDIRCOPY3(const int32_t* nblock, int32_t* cursor, const double* S, const int32_t* ldp,
                         const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBDIRCOPY3 for the entries of a list.
 *  @like GLO_UTI_ODBDIRCOPY3
 *  @param[in]     blockNumber  (1), place: number of the block, from 1
 *  @param[in]     blockSize    (1), place: points of a block
 *  @param[in]     groupNumber  (1), place: number of the group of blocks, from 1
 *  @param[in]     groupSize    (1), place: points of a group
 *  @param[in]     set          (last), set: entity numbers, in increasing order
 *  @param[in,out] cursor       (1), cursor: next position of the list, from 1
 *  @param[in]     last         (1), count: last position of the list to be treated
 */
void GLO_UTI_ODBDIRCOPY3ELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                              const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set, int32_t* cursor,
                              const double* S, const int32_t* ldp, const int32_t* ldq, double* P, double* Q,
                              const int32_t* last);

/** GLO_UTI_ODBDIRCOPY3 for values along the axes of plane orientations, which Q has then.
 *  @like GLO_UTI_ODBDIRCOPY3
 *  @param[in]     O       (nblock, 2), -: orientations z w
 *  @param[in]     ldq     (1), count>=2: length of a record of Q
 *  @param[out]    Q       (ldq, *), record: orientations z w
 */
void GLO_UTI_ODBDIRCOPY3MULT2D(const int32_t* nblock, int32_t* cursor, const double* S, const double* O,
                               const int32_t* ldp, const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBDIRCOPY3MULT2D for the entries of a list.
 *  @like GLO_UTI_ODBDIRCOPY3MULT2D
 *  @param[in]     blockNumber  (1), place: number of the block, from 1
 *  @param[in]     blockSize    (1), place: points of a block
 *  @param[in]     groupNumber  (1), place: number of the group of blocks, from 1
 *  @param[in]     groupSize    (1), place: points of a group
 *  @param[in]     set          (last), set: entity numbers, in increasing order
 *  @param[in,out] cursor       (1), cursor: next position of the list, from 1
 *  @param[in]     last         (1), count: last position of the list to be treated
 */
void GLO_UTI_ODBDIRCOPY3EMULT2D(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                int32_t* cursor, const double* S, const double* O, const int32_t* ldp,
                                const int32_t* ldq, double* P, double* Q, const int32_t* last);

/** GLO_UTI_ODBDIRCOPY3 for values along the axes of spatial orientations, which Q has then.
 *  @like GLO_UTI_ODBDIRCOPY3
 *  @param[in]     O       (nblock, 4), -: orientations x y z w
 *  @param[in]     ldq     (1), count>=4: length of a record of Q
 *  @param[out]    Q       (ldq, *), record: orientations x y z w
 */
void GLO_UTI_ODBDIRCOPY3MULT3D(const int32_t* nblock, int32_t* cursor, const double* S, const double* O,
                               const int32_t* ldp, const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBDIRCOPY3MULT3D for the entries of a list.
 *  @like GLO_UTI_ODBDIRCOPY3MULT3D
 *  @param[in]     blockNumber  (1), place: number of the block, from 1
 *  @param[in]     blockSize    (1), place: points of a block
 *  @param[in]     groupNumber  (1), place: number of the group of blocks, from 1
 *  @param[in]     groupSize    (1), place: points of a group
 *  @param[in]     set          (last), set: entity numbers, in increasing order
 *  @param[in,out] cursor       (1), cursor: next position of the list, from 1
 *  @param[in]     last         (1), count: last position of the list to be treated
 */
void GLO_UTI_ODBDIRCOPY3EMULT3D(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                int32_t* cursor, const double* S, const double* O, const int32_t* ldp,
                                const int32_t* ldq, double* P, double* Q, const int32_t* last);

/** Copy of a scalar, which has no directions, for the entries of a list.
 *  @like GLO_UTI_ODBDIRCOPY1ELSET
 */
void GLO_UTI_ODBDIRCOPYSCALARELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                   const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                   int32_t* cursor, const double* S, const int32_t* ldp, double* P,
                                   const int32_t* last);

/** GLO_UTI_ODBDIRCOPYSCALARELSET in the records of a general output.
 *  @like GLO_UTI_ODBDIRCOPYSCALARELSET
 */
void GLO_UTI_ODBGENDIRCPSCALARELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                    const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                    int32_t* cursor, const double* S, const int32_t* ldp, double* P,
                                    const int32_t* last);

/** Strains as databases keep them: direct components as they are, tensor shear doubled to engineering shear.
 *  @like GLO_UTI_ODBPRINC21QUAT
 *  @param[in]     S       (nblock, 4), -: strains, S31
 *  @param[in]     ldp     (1), count>=4: length of a record of P
 *  @param[out]    P       (ldp, *), record: 11 22 33 and engineering shear 12
 */
void GLO_UTI_ODB2DSTRAIN(const int32_t* nblock, int32_t* cursor, const double* S, const int32_t* ldp, double* P);

/** GLO_UTI_ODB2DSTRAIN for the entries of a list.
 *  @like GLO_UTI_ODB2DSTRAIN
 *  @param[in]     blockNumber  (1), place: number of the block, from 1
 *  @param[in]     blockSize    (1), place: points of a block
 *  @param[in]     groupNumber  (1), place: number of the group of blocks, from 1
 *  @param[in]     groupSize    (1), place: points of a group
 *  @param[in]     set          (last), set: entity numbers, in increasing order
 *  @param[in,out] cursor       (1), cursor: next position of the list, from 1
 *  @param[in]     last         (1), count: last position of the list to be treated
 */
void GLO_UTI_ODB2DSTRAINELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                              const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set, int32_t* cursor,
                              const double* S, const int32_t* ldp, double* P, const int32_t* last);

/** GLO_UTI_ODB2DSTRAIN in the records of a general output.
 *  @like GLO_UTI_ODB2DSTRAIN
 */
void GLO_UTI_ODBGEN2DSTRAIN(const int32_t* nblock, int32_t* cursor, const double* S, const int32_t* ldp, double* P);

/** GLO_UTI_ODB2DSTRAINELSET in the records of a general output.
 *  @like GLO_UTI_ODB2DSTRAINELSET
 */
void GLO_UTI_ODBGEN2DSTRAINELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                 const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                 int32_t* cursor, const double* S, const int32_t* ldp, double* P, const int32_t* last);

/** Strains as databases keep them: direct components as they are, tensor shear doubled to engineering shear.
 *  @like GLO_UTI_ODBPRINC21QUAT
 *  @param[in]     S       (nblock, 6), -: strains, S33
 *  @param[in]     ldp     (1), count>=6: length of a record of P
 *  @param[out]    P       (ldp, *), record: 11 22 33 and engineering shear 12 23 13
 */
void GLO_UTI_ODB3DSTRAIN(const int32_t* nblock, int32_t* cursor, const double* S, const int32_t* ldp, double* P);

/** GLO_UTI_ODB3DSTRAIN for the entries of a list.
 *  @like GLO_UTI_ODB3DSTRAIN
 *  @param[in]     blockNumber  (1), place: number of the block, from 1
 *  @param[in]     blockSize    (1), place: points of a block
 *  @param[in]     groupNumber  (1), place: number of the group of blocks, from 1
 *  @param[in]     groupSize    (1), place: points of a group
 *  @param[in]     set          (last), set: entity numbers, in increasing order
 *  @param[in,out] cursor       (1), cursor: next position of the list, from 1
 *  @param[in]     last         (1), count: last position of the list to be treated
 */
void GLO_UTI_ODB3DSTRAINELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                              const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set, int32_t* cursor,
                              const double* S, const int32_t* ldp, double* P, const int32_t* last);

/** GLO_UTI_ODB3DSTRAIN in the records of a general output.
 *  @like GLO_UTI_ODB3DSTRAIN
 */
void GLO_UTI_ODBGEN3DSTRAIN(const int32_t* nblock, int32_t* cursor, const double* S, const int32_t* ldp, double* P);

/** GLO_UTI_ODB3DSTRAINELSET in the records of a general output.
 *  @like GLO_UTI_ODB3DSTRAINELSET
 */
void GLO_UTI_ODBGEN3DSTRAINELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                 const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                 int32_t* cursor, const double* S, const int32_t* ldp, double* P, const int32_t* last);

#ifdef __cplusplus
}
#endif

#endif
