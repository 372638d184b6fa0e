// The table of kernels of rubber (Ogden) and foam in the principal stretches.
#include "spx.h"
#include "spx/impl/materials/model_tables.h"
#include "spx/impl/materials/stretch_quantities.h"
#include "spx/impl/materials/stretch_tables.h"

namespace sa {

#define SA_POWER_ENERGY(name, CONSTANTS, TERMS)                                                                        \
  SA_KERNEL(name, (const int32_t* nblock, CONSTANTS(SA_AS_PARAMETER) double* energy, double* rJ, const double* V,      \
                   double* flag)) {                                                                                    \
    powerEnergy(*nblock, TERMS, energy, rJ, V, flag);                                                                  \
  }
#define SA_POWER_DERIVATIVE(name, derivative, out, CONSTANTS, TERMS)                                                   \
  SA_KERNEL(name, (const int32_t* nblock, CONSTANTS(SA_AS_PARAMETER) double* out, const double* V, double* flag)) {    \
    derivative(*nblock, TERMS, out, V, flag);                                                                          \
  }
#define SA_POWER_RESULT(name, free, CONSTANTS, TERMS)                                                                  \
  SA_KERNEL(name, (const int32_t* nblock, CONSTANTS(SA_AS_PARAMETER) const double* V, double* flag, double* residual,  \
                   double* slope)) {                                                                                   \
    powerResult<free>(*nblock, TERMS, V, flag, residual, slope);                                                       \
  }
#define SA_POWER_CLOSED(name, free, CONSTANTS, TERMS)                                                                  \
  SA_KERNEL(name, (const int32_t* nblock, CONSTANTS(SA_AS_PARAMETER) const double* V, double* freeStretch,             \
                   double* flag, double* stress, double* bound, double* bulk)) {                                       \
    closedStress<free>(*nblock, TERMS, V, freeStretch, flag, stress, bound, bulk);                                     \
  }
#define SA_POWER_MODULI(name, CONSTANTS, TERMS)                                                                        \
  SA_KERNEL(name, (const int32_t* nblock, CONSTANTS(SA_AS_PARAMETER) const double* V, double* flag, double* bound,     \
                   double* bulk)) {                                                                                    \
    powerModuli(*nblock, TERMS, V, flag, bound, bulk);                                                                 \
  }

// clang-format off
SA_POWER_ENERGY(SPX_MAT_OGDEN,                                 SA_RUBBER3,        SA_RUBBER3_TERMS)
SA_POWER_ENERGY(SPX_MAT_OGDEN6,                                SA_RUBBER6,        SA_RUBBER6_TERMS)
SA_POWER_ENERGY(SPX_MAT_HFOAM,                                 SA_FOAM3,          SA_FOAM3_TERMS)
SA_POWER_ENERGY(SPX_MAT_HFOAM6,                                SA_FOAM6,          SA_FOAM6_TERMS)
SA_POWER_DERIVATIVE(SPX_MAT_OGDENDERIVATIVE1,     powerFirst, dU,  SA_RUBBER3,        SA_RUBBER3_TERMS)
SA_POWER_DERIVATIVE(SPX_MAT_OGDENDERIVATIVE2,     powerSecond, ddU, SA_RUBBER3,        SA_RUBBER3_TERMS)
SA_POWER_DERIVATIVE(SPX_MAT_OGDEN6DERIVATIVE1,    powerFirst, dU,  SA_RUBBER6,        SA_RUBBER6_TERMS)
SA_POWER_DERIVATIVE(SPX_MAT_OGDEN6DERIVATIVE2,    powerSecond, ddU, SA_RUBBER6,        SA_RUBBER6_TERMS)
SA_POWER_DERIVATIVE(SPX_MAT_HFOAMDERIVATIVE1,     powerFirst, dU,  SA_FOAM3,          SA_FOAM3_TERMS)
SA_POWER_DERIVATIVE(SPX_MAT_HFOAMDERIVATIVE2,     powerSecond, ddU, SA_FOAM3,          SA_FOAM3_TERMS)
SA_POWER_DERIVATIVE(SPX_MAT_HFOAM6DERIVATIVE1,    powerFirst, dU,  SA_FOAM6,          SA_FOAM6_TERMS)
SA_POWER_DERIVATIVE(SPX_MAT_HFOAM6DERIVATIVE2,    powerSecond, ddU, SA_FOAM6,          SA_FOAM6_TERMS)
SA_POWER_RESULT(SPX_MAT_OGDENPSRESULT,            1,           SA_RUBBER3_VOLUME, SA_RUBBER3_SOLID)
SA_POWER_RESULT(SPX_MAT_OGDENUNIRESULT,           2,           SA_RUBBER3_VOLUME, SA_RUBBER3_SOLID)
SA_POWER_RESULT(SPX_MAT_OGDEN6PSRESULT,           1,           SA_RUBBER6_VOLUME, SA_RUBBER6_SOLID)
SA_POWER_RESULT(SPX_MAT_OGDEN6UNIRESULT,          2,           SA_RUBBER6_VOLUME, SA_RUBBER6_SOLID)
SA_POWER_RESULT(SPX_MAT_HFOAMPSRESULT,            1,           SA_FOAM3,          SA_FOAM3_TERMS)
SA_POWER_RESULT(SPX_MAT_HFOAMUNIRESULT,           2,           SA_FOAM3,          SA_FOAM3_TERMS)
SA_POWER_CLOSED(SPX_MAT_HYPEROGDENPSEXP,          1,           SA_RUBBER3_VOLUME, SA_RUBBER3_SOLID)
SA_POWER_CLOSED(SPX_MAT_HYPEROGDENUNIEXP,         2,           SA_RUBBER3_VOLUME, SA_RUBBER3_SOLID)
SA_POWER_CLOSED(SPX_MAT_HYPERFOAMPSEXP,           1,           SA_FOAM3,          SA_FOAM3_TERMS)
SA_POWER_CLOSED(SPX_MAT_HYPERFOAMUNIEXP,          2,           SA_FOAM3,          SA_FOAM3_TERMS)
SA_POWER_MODULI(SPX_MAT_HYPERFOAMMODULIEXP,                    SA_FOAM3,          SA_FOAM3_TERMS)
SA_POWER_MODULI(SPX_MAT_HYPERFOAM6MODULIEXP,                   SA_FOAM6,          SA_FOAM6_TERMS)
// clang-format on

// ---- any model: derivatives that the caller took with respect to the principal stretches

// put(k, tau1, tau2, tau3, 1/J) stores the stress of Kirchhoff stresses without volumetric part.
template <class Put>
SA_INLINE void elasticStress(int nblock, const double* dU, const double* ddU, const double* p, const double* dp,
                             const double* V, const double* rJ, Put put, double* bound, double* bulk) {
  const int64_t N = nblock;
  forPoints(nblock, [=](int i) SA_POINT {
    const Stretches l{V[i], V[i + N], V[i + 2 * N]};
    const double t1 = l.l1 * dU[i], t2 = l.l2 * dU[i + N], t3 = l.l3 * dU[i + 2 * N], r = rJ[i];
    const VolumetricStress v{p[i], dp[i]};
    put(i, t1, t2, t3, r, v.p);
    const Moduli m = principalModuli(l.l1 * l.l1 * ddU[i] + t1, l.l2 * l.l2 * ddU[i + N] + t2,
                                     l.l3 * l.l3 * ddU[i + 2 * N] + t3, l.l1 * l.l2 * ddU[i + 3 * N],
                                     l.l2 * l.l3 * ddU[i + 4 * N], l.l1 * l.l3 * ddU[i + 5 * N], t1, t2, t3, l, r, v);
    // the largest of the terms would drop one that is NaN: the mean of all has it
    bound[i] = vm::select(m.bulk == m.bulk, m.bound, vm::kNaN);
    bulk[i] = m.bulk;
  });
}

SA_INLINE void addMean(Sym<S33>& t, double p) {
  t.s11 += p;
  t.s22 += p;
  t.s33 += p;
}

#define SA_ELASTIC(name, PUT)                                                                                          \
  SA_KERNEL(name,                                                                                                      \
            (const int32_t* nblock, const double* dU, const double* ddU, const double* p, const double* dp,            \
             const double* V, const double* axes, const double* rJ, double* stress, double* bound, double* bulk)) {    \
    const int64_t N = *nblock;                                                                                         \
    elasticStress(                                                                                                     \
        *nblock, dU, ddU, p, dp, V, rJ,                                                                                \
        [=](int64_t k, double t1, double t2, double t3, double r, double mean) SA_POINT {                              \
          Sym<S33> t = inAxes(r * t1, r * t2, r * t3, axes, N, k);                                                     \
          PUT                                                                                                          \
        },                                                                                                             \
        bound, bulk);                                                                                                  \
  }
SA_ELASTIC(SPX_MAT_HYPERELAS3D, {
  addMean(t, mean);
  storeTensor<S33>(stress, N, k, t);
})
SA_ELASTIC(SPX_MAT_HYPERELASGPE, {
  addMean(t, mean);
  storeTensor<S31>(stress, N, k, {t.s11, t.s22, t.s33, t.s12, 0.0, 0.0});
})
SA_ELASTIC(SPX_MAT_HYPERELASPS, {
  static_cast<void>(mean);
  (PlaneStressOut{stress, N}(k, {t.s11, t.s22, t.s33, t.s12, 0.0, 0.0}));
})

SA_KERNEL(SPX_MAT_HYPERELASUNI,
          (const int32_t* nblock, const double* dU, const double* ddU, const double* p, const double* dp,
           const double* V, const double* rJ, double* stress, double* bound, double* bulk)) {
  elasticStress(
      *nblock, dU, ddU, p, dp, V, rJ,
      [=](int64_t k, double t1, double t2, double, double r, double) SA_POINT { stress[k] = r * (t1 - t2); }, bound,
      bulk);
}

#undef SA_POWER_ENERGY
#undef SA_POWER_DERIVATIVE
#undef SA_POWER_RESULT
#undef SA_POWER_CLOSED
#undef SA_POWER_MODULI
#undef SA_ELASTIC

} // namespace sa
