/** @file spx.h
 *  Kernels of SharedAnalysis for the explicit solver.  Conventions, layouts and the grammar of the argument lines: glo.h.
 *
 *  Elements.  Element arrays (ld, node, component) hold the element fastest: A(e,I,c) = A(((c-1)*nodes + (I-1))*ld + e).
 *  The mask is 0.0 for an element that takes part and 1.0 for one that does not (deleted or degenerate); kernels may set it
 *  to 1.0, never back.  The 8-node brick has its nodes at (xi, eta, zeta) =
 *    1 (-,-,-)  2 (+,-,-)  3 (+,+,-)  4 (-,+,-)  5 (-,-,+)  6 (+,-,+)  7 (+,+,+)  8 (-,+,+)
 *
 *  CONTENTS
 *    lifecycle.h           Lifecycle                           spx_...                                                 2
 *    elements.h            Brick operators                     SPX_OPE_C3D..., SPX_ASM_C3D8RTDIVER                     8
 *    elements.h            Gradients                           SPX_OPE_C3DSYMGRAD                                      1
 *    elements.h            Strain output                       SPX_OPE_...STRAIN..., INVINISTRETCH3DH8                 6
 *    elements.h            Element checks                      SPX_OPE_ERRORCHECK, ...DISTORTED..., ...EXCESSROT      11
 *    filters.h             Output filters                      SPX_OPE_...FILTER..., SPX_OPE_...OPERAT...             16
 *    material_variables.h  Material variables                  SPX_MATVAR...                                           4
 *    hyperelastic.h        Hyperelasticity                     SPX_MAT_HYPERPOLY..., AB..., VDW...                    24
 *    any_model.h           Hyperelasticity, any model          SPX_MAT_HYPER...                                       24
 *    test_curves.h         Hyperelasticity, test curves        SPX_MAT_...MARLOW...                                    9
 *    stretch_materials.h   Rubber and foam by their stretches  SPX_MAT_OGDEN..., ...FOAM...                           24
 *    softening.h           Mullins effect                      SPX_MAT_...MULLINS..., SPX_OPT_...                     15
 *    failure.h             Ductile and shear failure           SPX_MAT_...STRESSRATIO..., JC...                       18
 *    orientations.h        Output of orientations              SPX_ODB_ORIENT...                                      24
 *    user_materials.h      Built-in user materials             SPX_USR_...                                             5
 *    user_foams.h          User materials: foams, cores         SPX_USR_...FOAM, SPX_USR_HONEYCOMB                      5
 *    user_plastics.h       User materials: plastics            SPX_USR_...PLASTIC                                      2
 *    user_fabrics.h        User materials: fabrics             SPX_USR_...FABRIC                                       2
 *    tables.h              Material tables                     SPX_GET_GETVALUE..., SPX_TAB_..., INTEGRATE, SEGFIND   10
 *    tables.h              Nodal forces and conductivity       SPX_GET_...NFORCID, SPX_GET_CONSTCONDUCTIVITY...        6
 *    user_elements.h       User elements                       SPX_OPE_USERELEM...                                     5
 */
#ifndef SHAREDANALYSIS_SPX_H
#define SHAREDANALYSIS_SPX_H

/* in the order of the contents */
/* clang-format off */
#include "spx/lifecycle.h"
#include "spx/elements.h"
#include "spx/filters.h"
#include "spx/material_variables.h"
#include "spx/hyperelastic.h"
#include "spx/any_model.h"
#include "spx/test_curves.h"
#include "spx/stretch_materials.h"
#include "spx/softening.h"
#include "spx/failure.h"
#include "spx/orientations.h"
#include "spx/user_materials.h"
#include "spx/user_foams.h"
#include "spx/user_plastics.h"
#include "spx/user_fabrics.h"
#include "spx/tables.h"
#include "spx/user_elements.h"
/* clang-format on */

#endif
