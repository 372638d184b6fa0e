// The table of hyperelastic kernels of the invariants: model, constants and storage or stress state of each entry.
#include "glo.h"
#include "glo/kernel/kernel.h"
#include "glo/tensors/principal.h"
#include "spx.h"
#include "spx/impl/materials/hyper_quantities.h"
#include "spx/impl/materials/model_tables.h"

namespace sa {
namespace {

// The chains of a point are stretched out: the block is complete with the largest stretch that they have, and the analysis ends.
void reportLocking() {
  constexpr int32_t kStatus = 1, kErrors = GLO_EXIT_ERRORS;
  glo_uti_CWrite(GLO_UNIT_MESSAGE_FILE, kStatus, "Error",
                 "The locking stretch is reached, the resulting ETA is over 0.99999, which is too close to one.",
                 nullptr, nullptr, nullptr);
  GLO_UTI_EXIT(&kErrors);
}

} // namespace

#define SA_IN(Storage)                                                                                                 \
  StretchIn<Storage> { V, *nblock }
#define SA_OUT(Storage)                                                                                                \
  StressOut<Storage> { stress, *nblock }

// Entries of one kind share their argument list; each line below names what is particular.
#define SA_ENERGY(name, Model, CONSTANTS, Storage)                                                                     \
  SA_KERNEL(name, (const int32_t* nblock, CONSTANTS(SA_AS_PARAMETER) double* energy, double* rJ, const double* V)) {   \
    isochoricEnergy(*nblock, SA_IN(Storage), SA_MODEL(Model, CONSTANTS), energy, rJ);                                  \
  }
#define SA_STRESS(name, Model, CONSTANTS, Storage)                                                                     \
  SA_KERNEL(name, (const int32_t* nblock, CONSTANTS(SA_AS_PARAMETER) const double* V, double* stress, double* flag,    \
                   double* bound, double* bulk)) {                                                                     \
    stressAndModuli(*nblock, SA_IN(Storage), VolumeFlag{flag}, SA_MODEL(Model, CONSTANTS), SA_OUT(Storage), bound,     \
                    bulk);                                                                                             \
  }
#define SA_MODULI(name, Model, CONSTANTS, Storage)                                                                     \
  SA_KERNEL(name, (const int32_t* nblock, CONSTANTS(SA_AS_PARAMETER) const double* V, double* flag, double* bound,     \
                   double* bulk)) {                                                                                    \
    stressAndModuli(*nblock, SA_IN(Storage), VolumeFlag{flag}, SA_MODEL(Model, CONSTANTS), NoStress{}, bound, bulk);   \
  }

// The same of a model that locks: the clones say whether a point did, the wrapper reports it when the block is complete.
#define SA_LOCKING(name, parameters)                                                                                   \
  SA_CLONES                                                                                                            \
  static bool name##_clones parameters;                                                                                \
  SA_EXPORT void name parameters {                                                                                     \
    const OwnArithmetic arithmetic;                                                                                    \
    if (name##_clones SA_ARGUMENTS_##name) reportLocking();                                                            \
  }                                                                                                                    \
  SA_CLONES                                                                                                            \
  static bool name##_clones parameters
#define SA_LOCKING_STRESS(name, Model, CONSTANTS, Storage)                                                             \
  SA_LOCKING(name, (const int32_t* nblock, CONSTANTS(SA_AS_PARAMETER) const double* V, double* stress, double* flag,   \
                    double* bound, double* bulk)) {                                                                    \
    return stressAndModuli(*nblock, SA_IN(Storage), VolumeFlag{flag}, SA_MODEL(Model, CONSTANTS), SA_OUT(Storage),     \
                           bound, bulk);                                                                               \
  }
#define SA_LOCKING_MODULI(name, Model, CONSTANTS, Storage)                                                             \
  SA_LOCKING(name, (const int32_t* nblock, CONSTANTS(SA_AS_PARAMETER) const double* V, double* flag, double* bound,    \
                    double* bulk)) {                                                                                   \
    return stressAndModuli(*nblock, SA_IN(Storage), VolumeFlag{flag}, SA_MODEL(Model, CONSTANTS), NoStress{}, bound,   \
                           bulk);                                                                                      \
  }

// clang-format off
/*        entry                         model        constants                storage */
SA_ENERGY(SPX_MAT_HYPERPOLYS33,         Polynomial2, SA_POLYNOMIAL2,          S33)
SA_ENERGY(SPX_MAT_HYPERPOLYS31,         Polynomial2, SA_POLYNOMIAL2,          S31)
SA_ENERGY(SPX_MAT_HYPERPOLYS30,         Polynomial2, SA_POLYNOMIAL2,          S30)
SA_ENERGY(SPX_MAT_HYPERPOLY6S33,        Polynomial6, SA_POLYNOMIAL6,          S33)
SA_ENERGY(SPX_MAT_HYPERPOLY6S31,        Polynomial6, SA_POLYNOMIAL6,          S31)
SA_ENERGY(SPX_MAT_HYPERPOLY6S30,        Polynomial6, SA_POLYNOMIAL6,          S30)
SA_ENERGY(SPX_MAT_HYPERABS33,           ArrudaBoyce, SA_ARRUDA_BOYCE,         S33)
SA_ENERGY(SPX_MAT_HYPERABS31,           ArrudaBoyce, SA_ARRUDA_BOYCE,         S31)
SA_ENERGY(SPX_MAT_HYPERABS30,           ArrudaBoyce, SA_ARRUDA_BOYCE,         S30)
SA_ENERGY(SPX_MAT_HYPERVDWS33,          VanDerWaals, SA_VAN_DER_WAALS,        S33)
SA_ENERGY(SPX_MAT_HYPERVDWS31,          VanDerWaals, SA_VAN_DER_WAALS,        S31)
SA_ENERGY(SPX_MAT_HYPERVDWS30,          VanDerWaals, SA_VAN_DER_WAALS,        S30)
SA_STRESS(SPX_MAT_HYPERPOLY3DEXP,       Polynomial2, SA_POLYNOMIAL2_VOLUME,   S33)
SA_STRESS(SPX_MAT_HYPERPOLYGPEEXP,      Polynomial2, SA_POLYNOMIAL2_VOLUME,   S31)
SA_STRESS(SPX_MAT_HYPERPOLY63DEXP,      Polynomial6, SA_POLYNOMIAL6_VOLUME,   S33)
SA_STRESS(SPX_MAT_HYPERPOLY6GPEEXP,     Polynomial6, SA_POLYNOMIAL6_VOLUME,   S31)
SA_STRESS(SPX_MAT_HYPERAB3DEXP,         ArrudaBoyce, SA_ARRUDA_BOYCE_VOLUME,  S33)
SA_STRESS(SPX_MAT_HYPERABGPEEXP,        ArrudaBoyce, SA_ARRUDA_BOYCE_VOLUME,  S31)
SA_LOCKING_STRESS(SPX_MAT_HYPERVDW3DEXP,    VanDerWaals, SA_VAN_DER_WAALS_VOLUME, S33)
SA_LOCKING_STRESS(SPX_MAT_HYPERVDWGPEEXP,   VanDerWaals, SA_VAN_DER_WAALS_VOLUME, S31)
SA_MODULI(SPX_MAT_HYPERPOLYMODULIEXP,   Polynomial2, SA_POLYNOMIAL2_VOLUME,   S33)
SA_MODULI(SPX_MAT_HYPERPOLY6MODULIEXP,  Polynomial6, SA_POLYNOMIAL6_VOLUME,   S33)
SA_MODULI(SPX_MAT_HYPERABMODULIEXP,     ArrudaBoyce, SA_ARRUDA_BOYCE_VOLUME,  S33)
SA_LOCKING_MODULI(SPX_MAT_HYPERVDWMODULIEXP, VanDerWaals, SA_VAN_DER_WAALS_VOLUME, S33)
// clang-format on

// ---- any model: derivatives that the caller took

#define SA_PLANE                                                                                                       \
  PlaneStretchIn { V, thickness, *nblock }
#define SA_AXIAL                                                                                                       \
  AxialStretchIn { axial, lateral }
// The guard of the models that follow a test curve; they carry no flag.
constexpr AddOne kCurveGuard{1.1102230246251565e-16};

#define SA_GIVEN_STRESS(name, Storage)                                                                                 \
  SA_KERNEL(name,                                                                                                      \
            (const int32_t* nblock, SA_GIVEN_FIRST(SA_AS_PARAMETER) const double* V, double* stress, double* flag)) {  \
    isochoricStress(*nblock, SA_IN(Storage), VolumeFlag{flag}, SA_MODEL(GivenDerivatives, SA_GIVEN_FIRST),             \
                    SA_OUT(Storage));                                                                                  \
  }
#define SA_HEATED_STRESS(name, Storage)                                                                                \
  SA_KERNEL(name, (const int32_t* nblock, SA_GIVEN_FIRST(SA_AS_PARAMETER) const double* expansion, const double* V,    \
                   double* stress, double* flag)) {                                                                    \
    isochoricStress(*nblock, HeatedIn<StretchIn<Storage>>{SA_IN(Storage), expansion}, VolumeFlag{flag},                \
                    SA_MODEL(GivenDerivatives, SA_GIVEN_FIRST), SA_OUT(Storage));                                      \
  }
#define SA_CURVE_STRESS(name, Storage)                                                                                 \
  SA_KERNEL(name, (const int32_t* nblock, SA_CURVE_FIRST(SA_AS_PARAMETER) const double* V, double* stress)) {          \
    isochoricStress(*nblock, SA_IN(Storage), kCurveGuard, SA_MODEL(CurveDerivatives, SA_CURVE_FIRST),                  \
                    SA_OUT(Storage));                                                                                  \
  }
#define SA_CURVE_MODULI(name, Storage)                                                                                 \
  SA_KERNEL(name,                                                                                                      \
            (const int32_t* nblock, SA_CURVE_SECOND(SA_AS_PARAMETER) const double* V, double* bound, double* bulk)) {  \
    stressAndModuli(*nblock, SA_IN(Storage), kCurveGuard, SA_MODEL(CurveDerivatives, SA_CURVE_SECOND), NoStress{},     \
                    bound, bulk);                                                                                      \
  }

// clang-format off
SA_GIVEN_STRESS(SPX_MAT_HYPER3DEXP,         S33)
SA_GIVEN_STRESS(SPX_MAT_HYPERGPEEXP,        S31)
SA_HEATED_STRESS(SPX_MAT_HYPER3DTHERMAL,    S33)
SA_HEATED_STRESS(SPX_MAT_HYPERGPETHERMAL,   S31)
SA_CURVE_STRESS(SPX_MAT_HYPERMARLOW3DEXP,   S33)
SA_CURVE_STRESS(SPX_MAT_HYPERMARLOWGPEEXP,  S31)
SA_CURVE_MODULI(SPX_MAT_MARLOWMODULI3DEXP,  S33)
SA_CURVE_MODULI(SPX_MAT_MARLOWMODULI2DEXP,  S31)
SA_CURVE_MODULI(SPX_MAT_MARLOWMODULIUNIEXP, S30)
SA_MODULI(SPX_MAT_HYPERMODULI3DEXP,         GivenDerivatives, SA_GIVEN_SECOND, S33)
SA_MODULI(SPX_MAT_HYPERMODULI2DEXP,         GivenDerivatives, SA_GIVEN_SECOND, S31)
SA_MODULI(SPX_MAT_HYPERMODULIUNIEXP,        GivenDerivatives, SA_GIVEN_SECOND, S30)
// clang-format on

SA_KERNEL(SPX_MAT_HYPERPSTHERMAL, (const int32_t* nblock, const double* U1, const double* U2, const double* expansion,
                                   const double* V, const double* thickness, double* stress, double* flag)) {
  isochoricStress(*nblock, HeatedIn<PlaneStretchIn>{SA_PLANE, expansion}, VolumeFlag{flag},
                  SA_MODEL(GivenDerivatives, SA_GIVEN_ISOCHORIC), PlaneStressOut{stress, *nblock});
}
SA_KERNEL(SPX_MAT_HYPERUNITHERMAL, (const int32_t* nblock, const double* U1, const double* U2, const double* expansion,
                                    const double* axial, const double* lateral, double* stress, double* flag)) {
  isochoricStress(*nblock, HeatedIn<AxialStretchIn>{SA_AXIAL, expansion}, VolumeFlag{flag},
                  SA_MODEL(GivenDerivatives, SA_GIVEN_ISOCHORIC), AxialStressOut{stress});
}
SA_KERNEL(SPX_MAT_HYPERMARLOWPSEXP,
          (const int32_t* nblock, const double* U1, const double* V, const double* thickness, double* stress)) {
  isochoricStress(*nblock, SA_PLANE, kCurveGuard, SA_MODEL(CurveDerivatives, SA_CURVE_ISOCHORIC),
                  PlaneStressOut{stress, *nblock});
}
SA_KERNEL(SPX_MAT_HYPERMARLOWUNIEXP,
          (const int32_t* nblock, const double* U1, const double* axial, const double* lateral, double* stress)) {
  isochoricStress(*nblock, SA_AXIAL, kCurveGuard, SA_MODEL(CurveDerivatives, SA_CURVE_ISOCHORIC),
                  AxialStressOut{stress});
}
SA_KERNEL(SPX_MAT_MARLOWPSRESULT, (const int32_t* nblock, SA_CURVE_SECOND(SA_AS_PARAMETER) const double* V,
                                   const double* thickness, double* residual, double* slope)) {
  freeStress<1>(*nblock, SA_PLANE, kCurveGuard, SA_MODEL(CurveDerivatives, SA_CURVE_SECOND), residual, slope);
}
SA_KERNEL(SPX_MAT_MARLOWUNIRESULT, (const int32_t* nblock, SA_CURVE_SECOND(SA_AS_PARAMETER) const double* axial,
                                    const double* lateral, double* residual, double* slope)) {
  freeStress<2>(*nblock, SA_AXIAL, kCurveGuard, SA_MODEL(CurveDerivatives, SA_CURVE_SECOND), residual, slope);
}

// ---- invariants, corrections

#define SA_INVARIANTS(name, Storage)                                                                                   \
  SA_KERNEL(name, (const int32_t* nblock, double* I1, double* I2, double* rJ, const double* V)) {                      \
    isochoricInvariants(*nblock, SA_IN(Storage), AddOne{vm::kSmallestNormal}, I1, I2, rJ);                             \
  }
SA_INVARIANTS(SPX_MAT_HYPERINVS33, S33)
SA_INVARIANTS(SPX_MAT_HYPERINVS31, S31)
SA_INVARIANTS(SPX_MAT_HYPERINVS30, S30)
SA_KERNEL(SPX_MAT_HYPERINVS20, (const int32_t* nblock, double* I1, double* I2, double* rJ, const double* V)) {
  isochoricInvariants(*nblock, MembraneIn{V, *nblock}, Isochoric{}, I1, I2, rJ);
}

template <class In>
SA_INLINE double secondInvariantOfB(In stretch, int64_t k) {
  return secondInvariant(square(stretch(k)));
}
SA_KERNEL(SPX_MAT_HYPERBINVRNT3D, (const int32_t* nblock, const double* V, double* I2)) {
  const auto stretch = SA_IN(S33);
  forPoints(*nblock, [=](int i) SA_POINT { I2[i] = secondInvariantOfB(stretch, i); });
}
SA_KERNEL(SPX_MAT_HYPERBINVRNTGPE, (const int32_t* nblock, const double* V, double* I2)) {
  const auto stretch = SA_IN(S31);
  forPoints(*nblock, [=](int i) SA_POINT { I2[i] = secondInvariantOfB(stretch, i); });
}
SA_KERNEL(SPX_MAT_HYPERBINVRNTUNI, (const int32_t* nblock, const double* axial, const double* lateral, double* I2)) {
  const auto stretch = SA_AXIAL;
  forPoints(*nblock, [=](int i) SA_POINT { I2[i] = secondInvariantOfB(stretch, i); });
}
SA_KERNEL(SPX_MAT_HYPERBINVRNT30INDX,
          (const int32_t* nblock, const int32_t* count, const int32_t* list, const double* V, double* I2)) {
  const auto stretch = SA_IN(S30);
  forList(*nblock, *count, list, [=](auto point, int n) SA_POINT {
    forPoints(n, [=](int i) SA_POINT { I2[point(i)] = secondInvariantOfB(stretch, point(i)); });
  });
}

#define SA_CORRECTION(name)                                                                                            \
  SA_KERNEL(name, (const int32_t* nblock, const double* residual, const double* slope, double* stretch)) {             \
    forPoints(*nblock, [=](int i) SA_POINT { stretch[i] *= vm::expClamped(-stretchStep(residual[i], slope[i])); });    \
  }
SA_CORRECTION(SPX_MAT_HYPERPSCORRECTION)
SA_CORRECTION(SPX_MAT_HYPERUNICORRECTION)

SA_KERNEL(SPX_MAT_HYPERINITSTRETCHYYEXP, (const int32_t* nblock, const double* V, double* stretch)) {
  const int64_t N = *nblock;
  forPoints(*nblock, [=](int i) SA_POINT {
    const double v12 = V[i + 2 * N], area = V[i] * V[i + N] - v12 * v12;
    stretch[i] = isochoricThickness(area);
  });
}

#undef SA_IN
#undef SA_OUT
#undef SA_ENERGY
#undef SA_STRESS
#undef SA_MODULI
#undef SA_LOCKING
#undef SA_LOCKING_STRESS
#undef SA_LOCKING_MODULI
#undef SA_PLANE
#undef SA_AXIAL
#undef SA_GIVEN_STRESS
#undef SA_HEATED_STRESS
#undef SA_CURVE_STRESS
#undef SA_CURVE_MODULI
#undef SA_INVARIANTS
#undef SA_CORRECTION

} // namespace sa
