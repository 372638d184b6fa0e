// The table of hyperelastic kernels: model, constants and storage or stress state of each entry.
#include "glo/kernel.h"
#include "spx.h"
#include "spx/impl/hyper_quantities.h"

namespace sa {

// A list of constants as parameters, as arguments and as the values of point i.
#define SA_AS_PARAMETER(c) const double *c,
#define SA_AS_ARGUMENT(c) c,
#define SA_AS_VALUE(c) c[i],

// Entries of one kind share their argument list; each line below names what is particular.
#define SA_ENERGY(name, Model, CONSTANTS, Storage)                                                                     \
  SA_KERNEL(name, (const int32_t* nblock, CONSTANTS(SA_AS_PARAMETER) double* energy, double* rJ, const double* V),     \
            (nblock, CONSTANTS(SA_AS_ARGUMENT) energy, rJ, V)) {                                                       \
    isochoricEnergy<Storage>(                                                                                          \
        *nblock, [=](int i) SA_POINT { return Model{CONSTANTS(SA_AS_VALUE)}; }, energy, rJ, V);                        \
  }
#define SA_STRESS(name, Model, CONSTANTS)                                                                              \
  SA_KERNEL(name,                                                                                                      \
            (const int32_t* nblock, CONSTANTS(SA_AS_PARAMETER) const double* V, double* stress, double* flag,          \
             double* bound, double* bulk),                                                                             \
            (nblock, CONSTANTS(SA_AS_ARGUMENT) V, stress, flag, bound, bulk)) {                                        \
    solidStress(                                                                                                       \
        *nblock, [=](int i) SA_POINT { return Model{CONSTANTS(SA_AS_VALUE)}; }, V, stress, flag, bound, bulk);         \
  }

// clang-format off
/*        entry                     model        constants              storage */
SA_ENERGY(SPX_MAT_HYPERPOLYS33,     Polynomial2, SA_POLYNOMIAL2,        S33)
SA_ENERGY(SPX_MAT_HYPERPOLYS31,     Polynomial2, SA_POLYNOMIAL2,        S31)
SA_ENERGY(SPX_MAT_HYPERPOLYS30,     Polynomial2, SA_POLYNOMIAL2,        S30)
SA_STRESS(SPX_MAT_HYPERPOLY3DEXP,   Polynomial2, SA_POLYNOMIAL2_VOLUME)
// clang-format on

} // namespace sa
