/** @file spx/user_elements.h
 *  User elements.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_SPX_USER_ELEMENTS_H
#define SHAREDANALYSIS_SPX_USER_ELEMENTS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * User elements
 *
 * A user element brings its own mass matrix; the explicit solver takes one mass for the translational degrees of freedom of a
 * node, and the rotary inertia of each node in a block of its own.  Each element that breaks a rule is named once for each
 * check that it fails, in an "Error"; it still goes through the later checks, and nothing ends the analysis here.  Entries
 * are compared exactly; a NaN differs from every number, and from itself.  In a model of part instances an element is named
 * by its instance and its number there.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Checks translational mass matrices, each check over all elements before the next:
 *    1. an entry differs from its transposed one; NaN on the diagonal fails here, since it differs from itself
 *    2. an entry that couples two nodes is not zero
 *    3. an entry off the diagonal in the block of one node is not zero
 *    4. diagonal entries of one node differ
 *  @param[in] nblock    (1), count: elements
 *  @param[in] ndof      (1), count: degrees of freedom of an element
 *  @param[in] nnode     (1), count: nodes of an element
 *  @param[in] nodeDofs  (nnode), -: degrees of freedom of each node; their sum is ndof
 *  @param[in] elements  (nblock), -: internal element numbers
 *  @param[in] mass      (nblock, ndof, ndof), kg: mass matrices, degrees of freedom node by node
 */
void SPX_OPE_USERELEMPROCESSMASS(const int32_t* nblock, const int32_t* ndof, const int32_t* nnode,
                                 const int32_t* nodeDofs, const int32_t* elements, const double* mass);

/** Checks rotary inertia.  The block of a node may be any symmetric matrix, a tensor of inertia.
 *    1. an entry differs from its transposed one, or is NaN
 *    2. an entry that couples two nodes is not zero: an invalid one
 *  @like SPX_OPE_USERELEMPROCESSMASS
 *  @param[in] ndof      (1), count: rotational degrees of freedom of an element
 *  @param[in] nodeDofs  (nnode), -: rotational degrees of freedom of each node; their sum is ndof
 *  @param[in] inertia   (nblock, ndof, ndof), kg m2: matrices of rotary inertia, degrees of freedom node by node
 */
void SPX_OPE_USERELEMPROCESSROTINERT(const int32_t* nblock, const int32_t* ndof, const int32_t* nnode,
                                     const int32_t* nodeDofs, const int32_t* elements, const double* inertia);

/** category(k, map(e)) = own(e, k): data of elements to the records of their category, which elements of several types
 *  share; what a record holds beyond ncomp stays.
 *  @param[in]     nblock    (1), block: elements
 *  @param[in]     ncomp     (1), count: values of an element
 *  @param[in]     ld        (1), count>=ncomp: length of a record of the category
 *  @param[in]     map       (nblock), entity of category: record of each element
 *  @param[in]     own       (nblock, ncomp), any: data of the elements
 *  @param[in,out] category  (ld, *), any: records of the category
 */
void SPX_OPE_USERELEMTOCAT(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map,
                           const double* own, double* category);

/** category(k, map(e)) = mass(e, k, k): the lumped masses, which stand on the diagonals.
 *  @param[in]     nblock    (1), block: elements
 *  @param[in]     ndof      (1), count: degrees of freedom of an element
 *  @param[in]     ld        (1), count>=ndof: length of a record of the category
 *  @param[in]     map       (nblock), entity of category: record of each element
 *  @param[in]     mass      (nblock, ndof, ndof), kg: mass matrices
 *  @param[in,out] category  (ld, *), kg: records of the category
 */
void SPX_OPE_USERELEMTOCATMASS(const int32_t* nblock, const int32_t* ndof, const int32_t* ld, const int32_t* map,
                               const double* mass, double* category);

/** own(e, k) = category(k, map(e)).
 *  @like SPX_OPE_USERELEMTOCAT
 *  @param[out]    own       (nblock, ncomp), any: data of the elements
 *  @param[in]     category  (ld, *), any: records of the category
 */
void SPX_OPE_USERELEMFROMCAT(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map,
                             double* own, const double* category);

#ifdef __cplusplus
}
#endif

#endif
