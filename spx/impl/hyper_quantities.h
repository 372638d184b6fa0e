// What hyperelastic kernels compute, for any model: energy for any storage, stress and moduli in three dimensions.
//
// Each works through a piece of the block in short passes, split at the logarithm and the exponential of J^(-2/3): their
// chains of dependent operations are long, and short bodies let several vectors overlap.
#pragma once

#include "glo/kernel.h"
#include "glo/tensor.h"
#include "glo/vmath.h"
#include "spx/impl/hyper_models.h"

namespace sa {

// J^(-2/3) for the n volume ratios of a piece.
SA_INLINE void isochoricFactors(int n, const double (&J)[kScratchPoints], double (&factor)[kScratchPoints]) {
  forPoints(n, [&](int i) SA_POINT { factor[i] = vm::log(J[i]); });
  forPoints(n, [&](int i) SA_POINT { factor[i] = vm::exp(-0.6666666666666666 * factor[i]); });
}

// Isochoric energy and 1/J.  A determinant below the smallest normal double is raised by one.
template <class Storage, class Model>
SA_INLINE void isochoricEnergy(int nblock, Model model, double* energy, double* rJ, const double* V) {
  constexpr double kTiny = 2.2250738585072014e-308;
  const int64_t N = nblock;
  forPieces(nblock, [=](int start, int n) SA_POINT {
    double J[kScratchPoints], factor[kScratchPoints];
    forPoints(n, [=, &J](int i) SA_POINT {
      const double det = determinant(loadTensor<Storage>(V, N, start + i));
      J[i] = det < kTiny ? det + 1.0 : det;
    });
    isochoricFactors(n, J, factor);
    forPoints(n, [=, &J, &factor](int i) SA_POINT {
      const Sym<Storage> Bbar = factor[i] * square(loadTensor<Storage>(V, N, start + i));
      energy[start + i] = model(start + i).energy(trace(Bbar), secondInvariant(Bbar));
      rJ[start + i] = 1.0 / J[i];
    });
  });
}

SA_INLINE double larger(double a, double b) { return a > b ? a : b; }

// Isochoric Cauchy stress of a point: dev((2/J)[(U1 + I1 U2) Bbar - U2 Q]), Q = Bbar Bbar, plus p in the direct components.
SA_INLINE Sym<S33> cauchyStress(const Sym<S33>& Bbar, const Sym<S33>& Q, double I1, double I2, double rJ,
                                const FirstDerivatives& U, double p) {
  const double a = 2.0 * U.U2 * rJ, b = 2.0 * U.U1 * rJ + I1 * a;
  const double third = (I1 * I1 - 2.0 * I2) * 0.3333333333333333, mean = I1 * 0.3333333333333333;
  return {p - (Q.s11 - third) * a + (Bbar.s11 - mean) * b,
          p - (Q.s22 - third) * a + (Bbar.s22 - mean) * b,
          p - (Q.s33 - third) * a + (Bbar.s33 - mean) * b,
          Bbar.s12 * b - Q.s12 * a,
          Bbar.s23 * b - Q.s23 * a,
          Bbar.s13 * b - Q.s13 * a};
}

// The largest of the six diagonal terms of the isochoric tangent, 11, 22, 33, 12, 13, 23.
SA_INLINE double stiffnessBound(const Sym<S33>& Bbar, const Sym<S33>& Q, double I1, double rJ,
                                const FirstDerivatives& U, const SecondDerivatives& W) {
  const double w4 = 4.0 * rJ, w2 = 2.0 * rJ;
  const double A = w4 * (W.U11 + 2.0 * I1 * W.U12 + I1 * I1 * W.U22);
  const double Bq = w4 * W.U22, Cm = -w4 * (I1 * W.U22 + W.U12);
  const double E = w2 * (U.U1 + I1 * U.U2), F = -w2 * U.U2, G = w4 * U.U2;
  const auto direct = [=](double b, double q)
                          SA_POINT { return (b * A + 2.0 * E + 2.0 * q * Cm) * b + (q * Bq + 2.0 * F) * q; };
  const auto shear = [=](double b, double q, double bi, double bj, double qi, double qj) SA_POINT {
    return (2.0 * A * b + 4.0 * Cm * q) * b + (bi + bj) * E + (qi + qj) * F + (b * b - bi * bj) * G + 2.0 * Bq * q * q;
  };
  const double d = larger(larger(direct(Bbar.s11, Q.s11), direct(Bbar.s22, Q.s22)), direct(Bbar.s33, Q.s33));
  const double s12 = shear(Bbar.s12, Q.s12, Bbar.s11, Bbar.s22, Q.s11, Q.s22);
  const double s13 = shear(Bbar.s13, Q.s13, Bbar.s11, Bbar.s33, Q.s11, Q.s33);
  const double s23 = shear(Bbar.s23, Q.s23, Bbar.s22, Bbar.s33, Q.s22, Q.s33);
  return larger(d, larger(larger(s12, s13), s23));
}

// Cauchy stress, stiffness bound and bulk term.  A determinant below 1e-9 sets the flag of its point, and a flagged point is
// undeformed in volume from then on.
template <class Model>
SA_INLINE void solidStress(int nblock, Model model, const double* V, double* stress, double* flag, double* bound,
                           double* bulk) {
  const int64_t N = nblock;
  forPieces(nblock, [=](int start, int n) SA_POINT {
    double J[kScratchPoints], factor[kScratchPoints];
    forPoints(n, [=, &J](int i) SA_POINT {
      const int k = start + i;
      const double det = determinant(loadTensor<S33>(V, N, k));
      const double guard = det < 1e-9 ? 1.0 : flag[k];
      flag[k] = guard;
      J[i] = guard + (1.0 - guard) * det;
    });
    isochoricFactors(n, J, factor);
    forPoints(n, [=, &J, &factor](int i) SA_POINT {
      const int k = start + i;
      const Sym<S33> Bbar = factor[i] * square(loadTensor<S33>(V, N, k)), Q = square(Bbar);
      const double I1 = trace(Bbar), I2 = secondInvariant(Bbar), rJ = 1.0 / J[i];
      const auto material = model(k);
      const FirstDerivatives U = material.first(I1, I2);
      const VolumetricStress volume = material.volumetric(J[i]);
      const Sym<S33> sigma = cauchyStress(Bbar, Q, I1, I2, rJ, U, volume.p);
      stress[k] = sigma.s11;
      stress[k + N] = sigma.s22;
      stress[k + 2 * N] = sigma.s33;
      stress[k + 3 * N] = sigma.s12;
      stress[k + 4 * N] = sigma.s23;
      stress[k + 5 * N] = sigma.s13;
      bound[k] = stiffnessBound(Bbar, Q, I1, rJ, U, material.second(I1, I2));
      bulk[k] = 3.0 * J[i] * (volume.p + volume.slope);
    });
  });
}

} // namespace sa
