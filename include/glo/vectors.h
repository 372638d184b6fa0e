/** @file glo/vectors.h
 *  Copies, fills, vector arithmetic, sums and extrema.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_GLO_VECTORS_H
#define SHAREDANALYSIS_GLO_VECTORS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

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

#ifdef __cplusplus
}
#endif

#endif
