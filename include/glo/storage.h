/** @file glo/storage.h
 *  Work storage and addresses.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_GLO_STORAGE_H
#define SHAREDANALYSIS_GLO_STORAGE_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

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

#ifdef __cplusplus
}
#endif

#endif
