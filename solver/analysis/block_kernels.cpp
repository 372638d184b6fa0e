#include "solver/analysis/block_kernels.h"

#include "solver/model/s33.h"

#include <limits>

// Compiled for several instruction sets and chosen at load, as the library's kernels are; no operation is fused or reordered,
// so that a run has the same bits on every machine.
#ifdef SA_MULTIVERSION
#define SOLVER_CLONES __attribute__((target_clones("avx512f", "avx2", "default")))
#else
#define SOLVER_CLONES
#endif
#define SOLVER_INLINE inline __attribute__((always_inline))

namespace sharedanalysis::solver {
namespace {

// Sum over the nodes of a nodal value times a weight: a velocity gradient, say.
SOLVER_INLINE double sumOverNodes(const double* v, const double* b, int ld) {
  return ((v[0] * b[0] + v[ld] * b[ld]) + (v[2 * ld] * b[2 * ld] + v[3 * ld] * b[3 * ld])) +
         ((v[4 * ld] * b[4 * ld] + v[5 * ld] * b[5 * ld]) + (v[6 * ld] * b[6 * ld] + v[7 * ld] * b[7 * ld]));
}

// The four hourglass modes of one coordinate, differences of neighbours first: a brick far from the origin loses nothing.
struct FourModes {
  double h1, h2, h3, h4;
};
SOLVER_INLINE FourModes modesOf(const double* x, int ld) {
  const double x1 = x[0], x2 = x[ld], x3 = x[2 * ld], x4 = x[3 * ld];
  const double x5 = x[4 * ld], x6 = x[5 * ld], x7 = x[6 * ld], x8 = x[7 * ld];
  const double p1 = x2 - x1, p2 = x3 - x4, p3 = x6 - x5, p4 = x7 - x8; // edges along xi
  const double q1 = x4 - x1, q2 = x3 - x2, q3 = x8 - x5, q4 = x7 - x6; // along eta
  return {(q3 + q4) - (q1 + q2), (p3 + p4) - (p1 + p2), (p2 - p1) + (p4 - p3), (p4 - p3) - (p2 - p1)};
}

SOLVER_CLONES static void hourglassModeLoops(int n, int ld, const double* x, double* h) {
  for (int i = 0; i < 3; ++i)
#pragma omp simd
    for (int e = 0; e < n; ++e) {
      const FourModes m = modesOf(x + 8 * i * ld + e, ld);
      double* out = h + 4 * i * ld + e;
      out[0] = m.h1;
      out[ld] = m.h2;
      out[2 * ld] = m.h3;
      out[3 * ld] = m.h4;
    }
}

// Amplitudes of the patterns in direction i: h - F H0.
SOLVER_INLINE FourModes amplitudes(int n, int ld, const double* x, const double* H0, const double* F, int i, int e) {
  const FourModes m = modesOf(x + 8 * i * ld + e, ld);
  const double f1 = F[e + 3 * i * n], f2 = F[e + (3 * i + 1) * n], f3 = F[e + (3 * i + 2) * n];
  const double *u = H0 + e, *v = u + 4 * ld, *w = v + 4 * ld;
  return {m.h1 - ((f1 * u[0] + f2 * v[0]) + f3 * w[0]), m.h2 - ((f1 * u[ld] + f2 * v[ld]) + f3 * w[ld]),
          m.h3 - ((f1 * u[2 * ld] + f2 * v[2 * ld]) + f3 * w[2 * ld]),
          m.h4 - ((f1 * u[3 * ld] + f2 * v[3 * ld]) + f3 * w[3 * ld])};
}

SOLVER_CLONES static void deformationGradientLoops(int n, int ld, const double* x, const double* B0, double* F,
                                                   double* cofactors, double* b) {
  // column by column of B0, which comes from memory: all rows while it is at hand
  for (int k = 0; k < 3; ++k) {
    const double *x1 = x, *x2 = x + 8 * ld, *x3 = x + 16 * ld, *weights = B0 + 8 * k * ld;
    double *f1 = F + k * n, *f2 = f1 + 3 * n, *f3 = f2 + 3 * n;
#pragma omp simd
    for (int e = 0; e < n; ++e) {
      f1[e] = sumOverNodes(x1 + e, weights + e, ld);
      f2[e] = sumOverNodes(x2 + e, weights + e, ld);
      f3[e] = sumOverNodes(x3 + e, weights + e, ld);
    }
  }
#pragma omp simd
  for (int e = 0; e < n; ++e) {
    const double f11 = F[e], f12 = F[e + n], f13 = F[e + 2 * n];
    const double f21 = F[e + 3 * n], f22 = F[e + 4 * n], f23 = F[e + 5 * n];
    const double f31 = F[e + 6 * n], f32 = F[e + 7 * n], f33 = F[e + 8 * n];
    cofactors[e] = f22 * f33 - f23 * f32;
    cofactors[e + n] = f23 * f31 - f21 * f33;
    cofactors[e + 2 * n] = f21 * f32 - f22 * f31;
    cofactors[e + 3 * n] = f32 * f13 - f33 * f12;
    cofactors[e + 4 * n] = f33 * f11 - f31 * f13;
    cofactors[e + 5 * n] = f31 * f12 - f32 * f11;
    cofactors[e + 6 * n] = f12 * f23 - f13 * f22;
    cofactors[e + 7 * n] = f13 * f21 - f11 * f23;
    cofactors[e + 8 * n] = f11 * f22 - f12 * f21;
    b[e] = f11 * f11 + f12 * f12 + f13 * f13;
    b[e + n] = f21 * f21 + f22 * f22 + f23 * f23;
    b[e + 2 * n] = f31 * f31 + f32 * f32 + f33 * f33;
    b[e + 3 * n] = f11 * f21 + f12 * f22 + f13 * f23;
    b[e + 4 * n] = f21 * f31 + f22 * f32 + f23 * f33;
    b[e + 5 * n] = f11 * f31 + f12 * f32 + f13 * f33;
  }
}

// Stress that follows the logarithm of the rate is steep without limit at small rates, but moves little there: increments are not
// made shorter than a hundredth for it.
constexpr double kMostByRate = 50.0;

SOLVER_CLONES static double viscosityLoops(const ViscosityInput& in, double* stress, double* energy) {
  const int n = in.n, ld = in.ld;
  const double *v = in.velocity, *B = in.B, *vol = in.vol, *hgstiff = in.hgstiff, *mass = in.mass;
  const double *hourglass = in.hourglass, *bound = in.bound, *bulk = in.bulk, *mask = in.mask,
               *viscosity = in.viscosity;
  const double b1 = in.linear, b2 = in.quadratic, lastIncrement = in.lastIncrement;
  double rate[kBlockLength]; // 1 / stable increment
#pragma omp simd
  for (int e = 0; e < n; ++e) {
    double divergence = 0.0;
#pragma GCC unroll 24
    for (int k = 0; k < 24; ++k) divergence += v[e + k * ld] * B[e + k * ld];
    const double active = mask[e] == 0.0 ? 1.0 : 0.0, V = vol[e], m = mass[e], rho = m / V;
    const double modulus = bulk[e] * 0.3333333333333333 + bound[e];
    const double c = __builtin_sqrt(modulus / rho);
    const double bb = hgstiff[e] / (2.0 * V), L = __builtin_sqrt(1.5 / bb); // the edge, for a cube
    const double closing = divergence < 0.0 ? -divergence : 0.0;
    const double s = active * rho * L * (b1 * c * divergence - b2 * b2 * L * closing * closing);
    energy[e] += lastIncrement * 0.5 * (stress[e] + s) * V * divergence;
    stress[e] = s;
    // omega^2 <= 8 M B.B / rho by the element eigenvalue inequality, or that of the hourglass springs
    const double elastic = 4.0 * modulus * hgstiff[e] / m, spring = 64.0 * hourglass[e] / m;
    const double omega = __builtin_sqrt(elastic > spring ? elastic : spring);
    const double perViscosity = 0.5 * omega / modulus, byRate = viscosity[e] * perViscosity;
    const double material = in.damping * perViscosity + (byRate < kMostByRate ? byRate : kMostByRate);
    const double damping = b1 + b2 * b2 * (L / c) * closing + material;
    rate[e] = active == 0.0 ? 0.0 : 0.5 * omega * (__builtin_sqrt(1.0 + damping * damping) + damping);
  }
  double fastest = 0.0; // in order of the bricks; a NaN stays
  for (int e = 0; e < n; ++e) fastest = rate[e] > fastest || rate[e] != rate[e] ? rate[e] : fastest;
  return fastest > 0.0 ? 1.0 / fastest : (fastest == 0.0 ? std::numeric_limits<double>::infinity() : fastest);
}

SOLVER_CLONES static void deviatoricRateLoops(int n, int ld, const double* v, const double* B, const double* S,
                                              double* rate, double* power) {
#pragma omp simd
  for (int e = 0; e < n; ++e) {
    const double *vx = v + e, *vy = vx + 8 * ld, *vz = vy + 8 * ld, *bx = B + e, *by = bx + 8 * ld, *bz = by + 8 * ld;
    const double xx = sumOverNodes(vx, bx, ld), yy = sumOverNodes(vy, by, ld), zz = sumOverNodes(vz, bz, ld);
    const double xy = 0.5 * (sumOverNodes(vx, by, ld) + sumOverNodes(vy, bx, ld));
    const double yz = 0.5 * (sumOverNodes(vy, bz, ld) + sumOverNodes(vz, by, ld));
    const double xz = 0.5 * (sumOverNodes(vx, bz, ld) + sumOverNodes(vz, bx, ld));
    const double mean = (xx + yy + zz) * 0.3333333333333333, dx = xx - mean, dy = yy - mean, dz = zz - mean;
    const double shear = xy * xy + yz * yz + xz * xz;
    rate[e] = __builtin_sqrt(0.6666666666666666 * (dx * dx + dy * dy + dz * dz + 2.0 * shear));
    power[e] = S[e] * dx + S[e + n] * dy + S[e + 2 * n] * dz +
               2.0 * (S[e + 3 * n] * xy + S[e + 4 * n] * yz + S[e + 5 * n] * xz);
  }
}

SOLVER_CLONES static void nodalForceLoops(const ForceInput& in, double* work, double* force) {
  const int n = in.n, ld = in.ld;
  const double *B0 = in.B0, *H0 = in.H0, *F = in.F, *B = in.B, *C = in.cofactors, *S = in.stress;
  const double *V0 = in.V0, *hourglass = in.hourglass, *mask = in.mask, *vol = in.vol, *viscous = in.viscousStress;
  for (int i = 0; i < 3; ++i) {
    const double* b = B + 8 * i * ld;
    const double *s1 = S + kS33[i][0] * n, *s2 = S + kS33[i][1] * n, *s3 = S + kS33[i][2] * n;
    double* f = work + 8 * i * ld;
#pragma omp simd
    for (int e = 0; e < n; ++e) {
      // row i of V0 sigma cof F, the first Piola-Kirchhoff stress times the volume
      const bool active = mask[e] == 0.0;
      const double volume = active ? V0[e] : 0.0;
      const double a1 = active ? s1[e] * volume : 0.0, a2 = active ? s2[e] * volume : 0.0;
      const double a3 = active ? s3[e] * volume : 0.0;
      const double p1 = a1 * C[e] + a2 * C[e + 3 * n] + a3 * C[e + 6 * n];
      const double p2 = a1 * C[e + n] + a2 * C[e + 4 * n] + a3 * C[e + 7 * n];
      const double p3 = a1 * C[e + 2 * n] + a2 * C[e + 5 * n] + a3 * C[e + 8 * n];
      const double p4 = active ? vol[e] * viscous[e] : 0.0;
      const double k = active ? hourglass[e] : 0.0;
      const FourModes amplitude = amplitudes(n, ld, in.x, H0, F, i, e);
      const double q1 = k * amplitude.h1, q2 = k * amplitude.h2, q3 = k * amplitude.h3, q4 = k * amplitude.h4;
      // the parts of the hourglass forces that are linear in the coordinates act like a stress
      const double *u = H0 + e, *v = u + 4 * ld, *w = v + 4 * ld;
      const double r1 = p1 - ((q1 * u[0] + q2 * u[ld]) + (q3 * u[2 * ld] + q4 * u[3 * ld]));
      const double r2 = p2 - ((q1 * v[0] + q2 * v[ld]) + (q3 * v[2 * ld] + q4 * v[3 * ld]));
      const double r3 = p3 - ((q1 * w[0] + q2 * w[ld]) + (q3 * w[2 * ld] + q4 * w[3 * ld]));
      // patterns 1 to 3 have one sign at both ends of a diagonal, the fourth has two
      const double even1 = (q1 + q2) + q3, even2 = (q1 - q2) - q3, even3 = q3 - (q1 + q2), even4 = (q2 - q1) - q3;
      const double pattern[8] = {even1 - q4, even2 + q4, even3 - q4, even4 + q4,
                                 even3 + q4, even4 - q4, even1 + q4, even2 - q4};
      const double* g = B0 + e;
#pragma GCC unroll 8
      for (int node = 0; node < 8; ++node) {
        const int at = node * ld;
        f[e + at] = ((r1 * g[at] + r2 * g[at + 8 * ld]) + (r3 * g[at + 16 * ld] + p4 * b[e + at])) + pattern[node];
      }
    }
  }
  for (int i = 0; i < 3; ++i)
    for (int e = 0; e < n; ++e) {
      const double* f = work + 8 * i * ld + e;
      double* out = force + 8 * (static_cast<int64_t>(i) * n + e);
      for (int node = 0; node < 8; ++node) out[node] = f[node * ld];
    }
}

SOLVER_CLONES static void hourglassEnergyLoops(int n, int ld, const double* x, const double* H0, const double* F,
                                               const double* hourglass, double* energy) {
#pragma omp simd
  for (int e = 0; e < n; ++e) {
    double squares = 0.0;
#pragma GCC unroll 3
    for (int i = 0; i < 3; ++i) {
      const FourModes q = amplitudes(n, ld, x, H0, F, i, e);
      squares += (q.h1 * q.h1 + q.h2 * q.h2) + (q.h3 * q.h3 + q.h4 * q.h4);
    }
    energy[e] = 0.5 * hourglass[e] * squares;
  }
}

SOLVER_CLONES static void kickLoops(int64_t n, const double* f, const double* rMass, double gx, double gy, double gz,
                                    double duration, double* v) {
#pragma omp simd
  for (int64_t i = 0; i < n; ++i) {
    const double r = rMass[i];
    v[3 * i] += (gx - f[3 * i] * r) * duration;
    v[3 * i + 1] += (gy - f[3 * i + 1] * r) * duration;
    v[3 * i + 2] += (gz - f[3 * i + 2] * r) * duration;
  }
}

SOLVER_CLONES static void driftLoops(int64_t n, const double* v, double duration, double* x) {
#pragma omp simd
  for (int64_t i = 0; i < n; ++i) x[i] += v[i] * duration;
}

} // namespace

void deformationGradient(int n, int ld, const double* x, const double* B0, double* F, double* cofactors, double* b) {
  deformationGradientLoops(n, ld, x, B0, F, cofactors, b);
}

double viscosityAndIncrement(const ViscosityInput& in, double* stress, double* energy) {
  return viscosityLoops(in, stress, energy);
}

void nodalForces(const ForceInput& in, double* work, double* force) { nodalForceLoops(in, work, force); }

void hourglassEnergy(int n, int ld, const double* x, const double* H0, const double* F, const double* hourglass,
                     double* energy) {
  hourglassEnergyLoops(n, ld, x, H0, F, hourglass, energy);
}

void hourglassModes(int n, int ld, const double* x, double* h) { hourglassModeLoops(n, ld, x, h); }

void kick(int64_t first, int64_t end, const double* f, int64_t fFirst, const double* rMass, const double (&gravity)[3],
          double duration, double* v) {
  kickLoops(end - first, f + 3 * (first - fFirst), rMass + first, gravity[0], gravity[1], gravity[2], duration,
            v + 3 * first);
}

void drift(int64_t first, int64_t end, const double* v, double duration, double* x) {
  driftLoops(3 * (end - first), v + 3 * first, duration, x + 3 * first);
}

void deviatoricRate(int n, int ld, const double* velocity, const double* B, const double* stress, double* rate,
                    double* power) {
  deviatoricRateLoops(n, ld, velocity, B, stress, rate, power);
}

} // namespace sharedanalysis::solver
