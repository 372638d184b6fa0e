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

// One row of F: the derivatives of coordinate i.
SOLVER_INLINE void gradientRow(int n, int ld, const double* x, const double* B0, double* row) {
#pragma omp simd
  for (int e = 0; e < n; ++e) {
    const double x1 = x[e], x2 = x[e + ld], x3 = x[e + 2 * ld], x4 = x[e + 3 * ld];
    const double x5 = x[e + 4 * ld], x6 = x[e + 5 * ld], x7 = x[e + 6 * ld], x8 = x[e + 7 * ld];
    const double *a = B0 + e, *b = a + 8 * ld, *c = b + 8 * ld;
    row[e] = ((x1 * a[0] + x2 * a[ld]) + (x3 * a[2 * ld] + x4 * a[3 * ld])) +
             ((x5 * a[4 * ld] + x6 * a[5 * ld]) + (x7 * a[6 * ld] + x8 * a[7 * ld]));
    row[e + n] = ((x1 * b[0] + x2 * b[ld]) + (x3 * b[2 * ld] + x4 * b[3 * ld])) +
                 ((x5 * b[4 * ld] + x6 * b[5 * ld]) + (x7 * b[6 * ld] + x8 * b[7 * ld]));
    row[e + 2 * n] = ((x1 * c[0] + x2 * c[ld]) + (x3 * c[2 * ld] + x4 * c[3 * ld])) +
                     ((x5 * c[4 * ld] + x6 * c[5 * ld]) + (x7 * c[6 * ld] + x8 * c[7 * ld]));
  }
}

SOLVER_CLONES static void deformationGradientLoops(int n, int ld, const double* x, const double* B0, double* F,
                                                   double* cofactors, double* b) {
  for (int i = 0; i < 3; ++i) gradientRow(n, ld, x + 8 * i * ld, B0, F + 3 * i * n);
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

// Sum over the nodes of a nodal value times a weight: a velocity gradient, or the amplitude of an hourglass pattern.
SOLVER_INLINE double sumOverNodes(const double* v, const double* b, int ld) {
  return ((v[0] * b[0] + v[ld] * b[ld]) + (v[2 * ld] * b[2 * ld] + v[3 * ld] * b[3 * ld])) +
         ((v[4 * ld] * b[4 * ld] + v[5 * ld] * b[5 * ld]) + (v[6 * ld] * b[6 * ld] + v[7 * ld] * b[7 * ld]));
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
  const double *B0 = in.B0, *gamma0 = in.gamma0, *B = in.B, *C = in.cofactors, *S = in.stress;
  const double *V0 = in.V0, *hourglass = in.hourglass, *mask = in.mask, *vol = in.vol, *viscous = in.viscousStress;
  for (int i = 0; i < 3; ++i) {
    const double *x = in.x + 8 * i * ld, *b = B + 8 * i * ld;
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
      const double q1 = k * sumOverNodes(gamma0 + e, x + e, ld);
      const double q2 = k * sumOverNodes(gamma0 + 8 * ld + e, x + e, ld);
      const double q3 = k * sumOverNodes(gamma0 + 16 * ld + e, x + e, ld);
      const double q4 = k * sumOverNodes(gamma0 + 24 * ld + e, x + e, ld);
      const double *g = gamma0 + e, *r = B0 + e;
#pragma GCC unroll 8
      for (int node = 0; node < 8; ++node) {
        const int at = node * ld;
        f[e + at] = ((p1 * r[at] + p2 * r[at + 8 * ld]) + (p3 * r[at + 16 * ld] + p4 * b[e + at])) +
                    ((q1 * g[at] + q2 * g[at + 8 * ld]) + (q3 * g[at + 16 * ld] + q4 * g[at + 24 * ld]));
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

SOLVER_CLONES static void hourglassEnergyLoops(int n, int ld, const double* x, const double* gamma0,
                                               const double* hourglass, double* energy) {
#pragma omp simd
  for (int e = 0; e < n; ++e) {
    double squares = 0.0;
#pragma GCC unroll 4
    for (int k = 0; k < 4; ++k) {
#pragma GCC unroll 3
      for (int i = 0; i < 3; ++i) {
        const double q = sumOverNodes(gamma0 + 8 * k * ld + e, x + 8 * i * ld + e, ld);
        squares += q * q;
      }
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

void hourglassEnergy(int n, int ld, const double* x, const double* gamma0, const double* hourglass, double* energy) {
  hourglassEnergyLoops(n, ld, x, gamma0, hourglass, energy);
}

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
