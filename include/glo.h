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
 *  That takes 1 to 2 ns of a call; kernels that only move or count are spared it.
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
 *                1..x        1 to x, or which of x parts of records code a|b the values that are told apart
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
 *    lifecycle.h         Lifecycle                        Shared_Analysis_XP_..., glo_...                   4
 *    lifecycle.h         Frame services                   procedure names, version banner, flush            3
 *    messages.h          Messages                         writer, end of analysis                           4
 *    storage.h           Work storage and addresses       GLO_UTI_ALLO..., ...POINTER...                    8
 *    vectors.h           Copies and fills                 GLO_UTI_COPYR, ...BROADCAST...                   14
 *    vectors.h           Vectors                          GLO_UTI_V..., MAX..., MIN...                     24
 *    linear.h            Determinants and linear systems  GLO_UTI_DET..., INVERSER, VSOLVE...               5
 *    sorts.h             Sorts                            GLO_UTI_INSSORT..., CHKSORTI                      3
 *    tensors.h           Tensor storage                   GLO_UTI_NUMTENSORCOMP, SQ2TRSTORAGE, ITENSORID    3
 *    tensors.h           Tensor functions                 GLO_UTI_SQRTV, LOGV, EXPS...                      4
 *    principal.h         Principal values and directions  GLO_UTI_PRINCS..., EIG..., GENEIG...             24
 *    rotations.h         Quaternions                      GLO_UTI_...QUAT..., COMPROT...                   10
 *    rotations.h         Rotation of tensors              GLO_UTI_ROTATES..., INITROTATIONMATRIX            7
 *    movement.h          Gather and scatter               GLO_UTI_...GATHER..., GLO_ASM_...                32
 *    assembly.h          Assembly                         GLO_OPE_...                                      12
 *    output_principal.h  Output of tensors                GLO_UTI_ODB...PRINC...                           28
 *    output_copies.h     Output of copies                 GLO_UTI_ODBDIRCOPY..., ...STRAIN...              28
 */
#ifndef SHAREDANALYSIS_GLO_H
#define SHAREDANALYSIS_GLO_H

/* in the order of the contents */
/* clang-format off */
#include "glo/lifecycle.h"
#include "glo/messages.h"
#include "glo/storage.h"
#include "glo/vectors.h"
#include "glo/linear.h"
#include "glo/sorts.h"
#include "glo/tensors.h"
#include "glo/principal.h"
#include "glo/rotations.h"
#include "glo/movement.h"
#include "glo/assembly.h"
#include "glo/output_principal.h"
#include "glo/output_copies.h"
/* clang-format on */

#endif
