#include "solver/analysis/block_kernels.h"

#include "solver/model/clones.h"
#include "solver/model/s33.h"

#include <limits>
#include <type_traits>

namespace sharedanalysis::solver {
namespace {

constexpr int ld = kPieceLength; // from row to row of a piece

// body(n), with the length of a whole piece as a constant: a straight line of code.
template <class Body>
SOLVER_INLINE auto withLength(int n, Body body) {
  return n == kPieceLength ? body(std::integral_constant<int, kPieceLength>()) : body(n);
}

// Sum over the nodes of a nodal value times a weight: a velocity gradient, say.
SOLVER_INLINE double sumOverNodes(const double* v, const double* b) {
  return ((v[0] * b[0] + v[ld] * b[ld]) + (v[2 * ld] * b[2 * ld] + v[3 * ld] * b[3 * ld])) +
         ((v[4 * ld] * b[4 * ld] + v[5 * ld] * b[5 * ld]) + (v[6 * ld] * b[6 * ld] + v[7 * ld] * b[7 * ld]));
}

// One value of each brick of a piece, in rows.
template <int rows>
struct alignas(64) Rows {
  double row[rows][kPieceLength];
};

// The eight nodal values of one coordinate as sums with the signs of the natural coordinates and of the hourglass modes,
// differences of neighbours first: a brick far from the origin loses nothing.
struct EdgeModes {
  double p1, p2, p3, p4, q1, q2, q3, q4; // differences along xi and eta
  SOLVER_INLINE EdgeModes(const double* x)
      : p1(x[ld] - x[0]), p2(x[2 * ld] - x[3 * ld]), p3(x[5 * ld] - x[4 * ld]), p4(x[6 * ld] - x[7 * ld]),
        q1(x[3 * ld] - x[0]), q2(x[2 * ld] - x[ld]), q3(x[7 * ld] - x[4 * ld]), q4(x[6 * ld] - x[5 * ld]) {}
  SOLVER_INLINE double h1() const { return (q3 + q4) - (q1 + q2); }
  SOLVER_INLINE double h2() const { return (p3 + p4) - (p1 + p2); }
  SOLVER_INLINE double h3() const { return (p2 - p1) + (p4 - p3); }
  SOLVER_INLINE double h4() const { return (p4 - p3) - (p2 - p1); }
};

SOLVER_INLINE void storeHourglassModes(const EdgeModes& m, double* h) {
  h[0] = m.h1();
  h[ld] = m.h2();
  h[2 * ld] = m.h3();
  h[3 * ld] = m.h4();
}

SOLVER_CLONES static void hourglassModeLoops(int n, const double* x, double* h) {
  for (int i = 0; i < 3; ++i)
#pragma omp simd
    for (int e = 0; e < n; ++e) storeHourglassModes(EdgeModes(x + 8 * i * ld + e), h + 4 * i * ld + e);
}

SOLVER_INLINE void deformationGradientOf(int n, int stride, const double* x, const double* B0, double* F, double* b) {
  for (int k = 0; k < 3; ++k) {
    const double *x1 = x, *x2 = x + 8 * ld, *x3 = x + 16 * ld, *weights = B0 + 8 * k * ld;
    double *f1 = F + k * ld, *f2 = f1 + 3 * ld, *f3 = f2 + 3 * ld;
#pragma omp simd
    for (int e = 0; e < n; ++e) {
      f1[e] = sumOverNodes(x1 + e, weights + e);
      f2[e] = sumOverNodes(x2 + e, weights + e);
      f3[e] = sumOverNodes(x3 + e, weights + e);
    }
  }
#pragma omp simd
  for (int e = 0; e < n; ++e) {
    const double f11 = F[e], f12 = F[e + ld], f13 = F[e + 2 * ld];
    const double f21 = F[e + 3 * ld], f22 = F[e + 4 * ld], f23 = F[e + 5 * ld];
    const double f31 = F[e + 6 * ld], f32 = F[e + 7 * ld], f33 = F[e + 8 * ld];
    b[e] = f11 * f11 + f12 * f12 + f13 * f13;
    b[e + stride] = f21 * f21 + f22 * f22 + f23 * f23;
    b[e + 2 * stride] = f31 * f31 + f32 * f32 + f33 * f33;
    b[e + 3 * stride] = f11 * f21 + f12 * f22 + f13 * f23;
    b[e + 4 * stride] = f21 * f31 + f22 * f32 + f23 * f33;
    b[e + 5 * stride] = f11 * f31 + f12 * f32 + f13 * f33;
  }
}

SOLVER_CLONES static void deformationGradientLoops(int n, int stride, const double* x, const double* B0, double* F,
                                                   double* b) {
  withLength(n, [=](int m) SOLVER_BODY { deformationGradientOf(m, stride, x, B0, F, b); });
}

// Volume and gradient of a brick, as the operator of the library computes them and to the same bits: its volume V is a sum of
// products of the modes a1, a2, a3 (natural coordinates) and h1, h2, h3 of x, y and z; 12 dV/dx in these modes, from those of y
// and z in the rows of `y` and `z`.
struct VolumeModes {
  double a1, a2, a3, h1, h2, h3;
  SOLVER_INLINE VolumeModes(const Rows<6>& y, const Rows<6>& z, int e) {
    constexpr double k16 = 1.0 / 16.0, k3_16 = 3.0 / 16.0;
    const double ya1 = y.row[0][e], ya2 = y.row[1][e], ya3 = y.row[2][e];
    const double yh1 = y.row[3][e], yh2 = y.row[4][e], yh3 = y.row[5][e];
    const double za1 = z.row[0][e], za2 = z.row[1][e], za3 = z.row[2][e];
    const double zh1 = z.row[3][e], zh2 = z.row[4][e], zh3 = z.row[5][e];
    a1 = k3_16 * (ya2 * za3 - ya3 * za2) + k16 * (yh3 * zh2 - yh2 * zh3);
    a2 = k3_16 * (ya3 * za1 - ya1 * za3) + k16 * (yh1 * zh3 - yh3 * zh1);
    a3 = k3_16 * (ya1 * za2 - ya2 * za1) + k16 * (yh2 * zh1 - yh1 * zh2);
    h1 = k16 * ((ya3 * zh2 - yh2 * za3) + (yh3 * za2 - ya2 * zh3));
    h2 = k16 * ((yh1 * za3 - ya3 * zh1) + (ya1 * zh3 - yh3 * za1));
    h3 = k16 * ((ya2 * zh1 - yh1 * za2) + (yh2 * za1 - ya1 * zh2));
  }
  SOLVER_INLINE VolumeModes(const Rows<6>& kept, int e)
      : a1(kept.row[0][e]), a2(kept.row[1][e]), a3(kept.row[2][e]), h1(kept.row[3][e]), h2(kept.row[4][e]),
        h3(kept.row[5][e]) {}
  SOLVER_INLINE void keep(Rows<6>& kept, int e) const {
    kept.row[0][e] = a1, kept.row[1][e] = a2, kept.row[2][e] = a3;
    kept.row[3][e] = h1, kept.row[4][e] = h2, kept.row[5][e] = h3;
  }
  SOLVER_INLINE void scale(double s) { a1 *= s, a2 *= s, a3 *= s, h1 *= s, h2 *= s, h3 *= s; }
  SOLVER_INLINE double sumOfSquares() const {
    return ((a1 * a1 + a2 * a2) + a3 * a3) + ((h1 * h1 + h2 * h2) + h3 * h3);
  }
  // The derivatives by the coordinates of the nodes; antipodes have the odd part reversed.
  SOLVER_INLINE void toNodes(double* out) const {
    const double odd1 = -(a1 + a2) - a3, odd2 = (a1 - a2) - a3, odd3 = (a1 + a2) - a3, odd4 = (a2 - a1) - a3;
    const double even1 = (h1 + h2) + h3, even2 = (h1 - h2) - h3, even3 = h3 - (h1 + h2), even4 = (h2 - h1) - h3;
    out[0] = even1 + odd1;
    out[ld] = even2 + odd2;
    out[2 * ld] = even3 + odd3;
    out[3 * ld] = even4 + odd4;
    out[4 * ld] = even3 - odd3;
    out[5 * ld] = even4 - odd4;
    out[6 * ld] = even1 - odd1;
    out[7 * ld] = even2 - odd2;
  }
};

SOLVER_INLINE bool gradientOf(int n, const double* x, const double* mask, double* B, double* h, double* vol,
                              double* hgstiff) {
  Rows<6> derivatives[3], modes[3]; // a1, a2, a3, h1, h2, h3 of x, y, z
  Rows<3> sums;                     // of the hourglass modes; scale and squares of the gradient
  double *extent = sums.row[0], *scale = sums.row[1], *squares = sums.row[2];
  for (int i = 0; i < 3; ++i) {
    const double* u = x + 8 * i * ld;
    double* out = h + 4 * i * ld;
    Rows<6>& m = modes[i];
#pragma omp simd
    for (int e = 0; e < n; ++e) {
      const double* at = u + e;
      const EdgeModes edges(at);
      const double r1 = at[4 * ld] - at[0], r2 = at[5 * ld] - at[ld]; // along zeta
      const double r3 = at[6 * ld] - at[2 * ld], r4 = at[7 * ld] - at[3 * ld];
      m.row[0][e] = (edges.p1 + edges.p2) + (edges.p3 + edges.p4);
      m.row[1][e] = (edges.q1 + edges.q2) + (edges.q3 + edges.q4);
      m.row[2][e] = (r1 + r2) + (r3 + r4);
      const double h1 = edges.h1(), h2 = edges.h2(), h3 = edges.h3(), h4 = edges.h4();
      m.row[3][e] = out[e] = h1;
      m.row[4][e] = out[e + ld] = h2;
      m.row[5][e] = out[e + 2 * ld] = h3;
      out[e + 3 * ld] = h4;
      const double sum = (h1 + h2) + (h3 + h4);
      extent[e] = i == 0 ? sum : extent[e] + sum;
    }
  }
  constexpr double kLeast = 1e-100, kMost = 1e100; // beyond, and below, the operator looks closer
  uint64_t special = 0;
#pragma omp simd reduction(| : special)
  for (int e = 0; e < n; ++e) {
    const VolumeModes d(modes[1], modes[2], e);
    d.keep(derivatives[0], e);
    VolumeModes(modes[2], modes[0], e).keep(derivatives[1], e);
    VolumeModes(modes[0], modes[1], e).keep(derivatives[2], e);
    const auto& m = modes[0].row;
    const double volume12 =
        ((m[0][e] * d.a1 + m[1][e] * d.a2) + m[2][e] * d.a3) + ((m[3][e] * d.h1 + m[4][e] * d.h2) + m[5][e] * d.h3);
    const double r = 1.0 / volume12;
    scale[e] = 2.0 * r - volume12 * r * r;
    vol[e] = volume12;
    squares[e] = 0.0;
    special |= static_cast<uint64_t>(
        !(volume12 > kLeast && volume12 < kMost && mask[e] == 0.0 && __builtin_fabs(extent[e]) < kMost));
  }
  for (int i = 0; i < 3; ++i) {
    double* out = B + 8 * i * ld;
#pragma omp simd
    for (int e = 0; e < n; ++e) {
      VolumeModes d(derivatives[i], e);
      d.scale(scale[e]);
      d.toNodes(out + e);
      squares[e] += 8.0 * d.sumOfSquares();
    }
  }
#pragma omp simd reduction(| : special)
  for (int e = 0; e < n; ++e) {
    const double q = vol[e] * squares[e];
    hgstiff[e] = q / 6.0;
    vol[e] = vol[e] * 0.08333333333333333;
    special |= static_cast<uint64_t>(!(q > kLeast && q < kMost));
  }
  return special == 0;
}

SOLVER_CLONES static bool gradientLoops(int n, const double* x, const double* mask, double* B, double* h, double* vol,
                                        double* hgstiff) {
  return withLength(n, [=](int m) SOLVER_BODY { return gradientOf(m, x, mask, B, h, vol, hgstiff); });
}

// Stress that follows the logarithm of the rate is steep without limit at small rates, but moves little there: increments are not
// made shorter than a hundredth for it.
constexpr double kMostByRate = 50.0;

// Materials whose stress does not follow the rate are spared what bounds that.
template <bool kByRate>
SOLVER_INLINE double viscosityOf(int n, const ViscosityInput& in, double* stress, double* energy) {
  const double *v = in.velocity, *B = in.B, *vol = in.vol, *hgstiff = in.hgstiff, *mass = in.mass;
  const double *hourglass = in.hourglass, *bound = in.bound, *bulk = in.bulk, *mask = in.mask,
               *viscosity = in.viscosity;
  const double b1 = in.linear, b2 = in.quadratic, lastIncrement = in.lastIncrement;
  Rows<1> rates; // 1 / stable increment
  double* rate = rates.row[0];
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
    const double elastic = 4.0 * modulus * hgstiff[e], spring = 64.0 * hourglass[e];
    const double omega = __builtin_sqrt((elastic > spring ? elastic : spring) / m);
    double damping = b1 + b2 * b2 * (L / c) * closing;
    if constexpr (kByRate) {
      const double perViscosity = 0.5 * omega / modulus, byRate = viscosity[e] * perViscosity;
      damping += in.damping * perViscosity + (byRate < kMostByRate ? byRate : kMostByRate);
    }
    rate[e] = active == 0.0 ? 0.0 : 0.5 * omega * (__builtin_sqrt(1.0 + damping * damping) + damping);
  }
  double fastest = 0.0; // in order of the bricks; a NaN stays
  for (int e = 0; e < n; ++e) fastest = rate[e] > fastest || rate[e] != rate[e] ? rate[e] : fastest;
  return fastest > 0.0 ? 1.0 / fastest : (fastest == 0.0 ? std::numeric_limits<double>::infinity() : fastest);
}
SOLVER_CLONES static double viscosityLoops(const ViscosityInput& in, double* stress, double* energy) {
  return withLength(in.n, [&](int n) SOLVER_BODY { return viscosityOf<false>(n, in, stress, energy); });
}
SOLVER_CLONES static double viscosityByRateLoops(const ViscosityInput& in, double* stress, double* energy) {
  return withLength(in.n, [&](int n) SOLVER_BODY { return viscosityOf<true>(n, in, stress, energy); });
}

SOLVER_CLONES static void deviatoricRateLoops(int n, int stride, const double* v, const double* B, const double* S,
                                              double* rate, double* power) {
#pragma omp simd
  for (int e = 0; e < n; ++e) {
    const double *vx = v + e, *vy = vx + 8 * ld, *vz = vy + 8 * ld, *bx = B + e, *by = bx + 8 * ld, *bz = by + 8 * ld;
    const double xx = sumOverNodes(vx, bx), yy = sumOverNodes(vy, by), zz = sumOverNodes(vz, bz);
    const double xy = 0.5 * (sumOverNodes(vx, by) + sumOverNodes(vy, bx));
    const double yz = 0.5 * (sumOverNodes(vy, bz) + sumOverNodes(vz, by));
    const double xz = 0.5 * (sumOverNodes(vx, bz) + sumOverNodes(vz, bx));
    const double mean = (xx + yy + zz) * 0.3333333333333333, dx = xx - mean, dy = yy - mean, dz = zz - mean;
    const double shear = xy * xy + yz * yz + xz * xz;
    rate[e] = __builtin_sqrt(0.6666666666666666 * (dx * dx + dy * dy + dz * dz + 2.0 * shear));
    power[e] = S[e] * dx + S[e + stride] * dy + S[e + 2 * stride] * dz +
               2.0 * (S[e + 3 * stride] * xy + S[e + 4 * stride] * yz + S[e + 5 * stride] * xz);
  }
}

// Amplitudes of the hourglass patterns in direction i: h - F H0.
struct Amplitudes {
  double h1, h2, h3, h4;
  SOLVER_INLINE Amplitudes(const double* h, const double* H0, double f1, double f2, double f3) {
    const double *u = H0, *v = u + 4 * ld, *w = v + 4 * ld;
    h1 = h[0] - ((f1 * u[0] + f2 * v[0]) + f3 * w[0]);
    h2 = h[ld] - ((f1 * u[ld] + f2 * v[ld]) + f3 * w[ld]);
    h3 = h[2 * ld] - ((f1 * u[2 * ld] + f2 * v[2 * ld]) + f3 * w[2 * ld]);
    h4 = h[3 * ld] - ((f1 * u[3 * ld] + f2 * v[3 * ld]) + f3 * w[3 * ld]);
  }
};

SOLVER_INLINE void nodalForcesOf(int n, const ForceInput& in, double* __restrict force) {
  const int N = in.stride;
  const double *B0 = in.B0, *H0 = in.H0, *h = in.h, *F = in.F, *B = in.B, *S = in.stress;
  const double *V0 = in.V0, *hourglass = in.hourglass, *mask = in.mask, *vol = in.vol, *viscous = in.viscousStress;
  Rows<8> parts[3]; // of each direction: what multiplies B0 and B, and the amplitudes times their stiffness
#pragma omp simd
  for (int e = 0; e < n; ++e) {
    const bool active = mask[e] == 0.0;
    const double reference = V0[e], viscousPart = vol[e] * viscous[e], stiffness = hourglass[e];
    const double volume = active ? reference : 0.0, p4 = active ? viscousPart : 0.0, k = active ? stiffness : 0.0;
    const double f11 = F[e], f12 = F[e + ld], f13 = F[e + 2 * ld];
    const double f21 = F[e + 3 * ld], f22 = F[e + 4 * ld], f23 = F[e + 5 * ld];
    const double f31 = F[e + 6 * ld], f32 = F[e + 7 * ld], f33 = F[e + 8 * ld];
    const double c11 = f22 * f33 - f23 * f32, c12 = f23 * f31 - f21 * f33, c13 = f21 * f32 - f22 * f31;
    const double c21 = f32 * f13 - f33 * f12, c22 = f33 * f11 - f31 * f13, c23 = f31 * f12 - f32 * f11;
    const double c31 = f12 * f23 - f13 * f22, c32 = f13 * f21 - f11 * f23, c33 = f11 * f22 - f12 * f21;
    const double *u = H0 + e, *v = u + 4 * ld, *w = v + 4 * ld;
#pragma GCC unroll 3
    for (int i = 0; i < 3; ++i) {
      // row i of V0 sigma cof F, the first Piola-Kirchhoff stress times the volume
      const double s1 = S[e + kS33[i][0] * N], s2 = S[e + kS33[i][1] * N], s3 = S[e + kS33[i][2] * N];
      const double a1 = active ? s1 * volume : 0.0, a2 = active ? s2 * volume : 0.0, a3 = active ? s3 * volume : 0.0;
      const double p1 = a1 * c11 + a2 * c21 + a3 * c31, p2 = a1 * c12 + a2 * c22 + a3 * c32;
      const double p3 = a1 * c13 + a2 * c23 + a3 * c33;
      const Amplitudes amplitude(h + 4 * i * ld + e, H0 + e,
                                 i == 0   ? f11
                                 : i == 1 ? f21
                                          : f31,
                                 i == 0   ? f12
                                 : i == 1 ? f22
                                          : f32,
                                 i == 0   ? f13
                                 : i == 1 ? f23
                                          : f33);
      const double q1 = k * amplitude.h1, q2 = k * amplitude.h2, q3 = k * amplitude.h3, q4 = k * amplitude.h4;
      // the parts of the hourglass forces that are linear in the coordinates act like a stress
      auto& row = parts[i].row;
      row[0][e] = p1 - ((q1 * u[0] + q2 * u[ld]) + (q3 * u[2 * ld] + q4 * u[3 * ld]));
      row[1][e] = p2 - ((q1 * v[0] + q2 * v[ld]) + (q3 * v[2 * ld] + q4 * v[3 * ld]));
      row[2][e] = p3 - ((q1 * w[0] + q2 * w[ld]) + (q3 * w[2 * ld] + q4 * w[3 * ld]));
      row[3][e] = p4;
      row[4][e] = q1, row[5][e] = q2, row[6][e] = q3, row[7][e] = q4;
    }
  }
  for (int i = 0; i < 3; ++i) {
    const double* b = B + 8 * i * ld;
    double* f = force + 8 * i * ld;
    const auto& row = parts[i].row;
#pragma omp simd
    for (int e = 0; e < n; ++e) {
      const double r1 = row[0][e], r2 = row[1][e], r3 = row[2][e], p4 = row[3][e];
      const double q1 = row[4][e], q2 = row[5][e], q3 = row[6][e], q4 = row[7][e];
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
}

SOLVER_CLONES static void nodalForceLoops(const ForceInput& in, double* force) {
  withLength(in.n, [&](int n) SOLVER_BODY { nodalForcesOf(n, in, force); });
}

SOLVER_CLONES static void hourglassEnergyLoops(int n, const double* h, const double* H0, const double* F,
                                               const double* hourglass, double* energy) {
#pragma omp simd
  for (int e = 0; e < n; ++e) {
    double squares = 0.0;
#pragma GCC unroll 3
    for (int i = 0; i < 3; ++i) {
      const double* f = F + e + 3 * i * ld;
      const Amplitudes q(h + 4 * i * ld + e, H0 + e, f[0], f[ld], f[2 * ld]);
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

void deformationGradient(int n, int stride, const double* x, const double* B0, double* F, double* b) {
  deformationGradientLoops(n, stride, x, B0, F, b);
}

bool brickGradient(int n, const double* x, const double* mask, double* B, double* h, double* vol, double* hgstiff) {
  return gradientLoops(n, x, mask, B, h, vol, hgstiff);
}

double viscosityAndIncrement(const ViscosityInput& in, double* stress, double* energy) {
  return in.viscosity != nullptr ? viscosityByRateLoops(in, stress, energy) : viscosityLoops(in, stress, energy);
}

void nodalForces(const ForceInput& in, double* force) { nodalForceLoops(in, force); }

void assemble(int n, const double* force, const int32_t* records, double* f) {
  for (int e = 0; e < n; ++e)
    for (int corner = 0; corner < 8; ++corner) {
      const double* from = force + corner * ld + e;
      double* to = f + 3 * static_cast<int64_t>(records[8 * e + corner]);
      to[0] += from[0];
      to[1] += from[8 * ld];
      to[2] += from[16 * ld];
    }
}

void hourglassEnergy(int n, const double* h, const double* H0, const double* F, const double* hourglass,
                     double* energy) {
  hourglassEnergyLoops(n, h, H0, F, hourglass, energy);
}

void hourglassModes(int n, const double* x, double* h) { hourglassModeLoops(n, x, h); }

void kick(int64_t first, int64_t end, const double* f, int64_t fFirst, const double* rMass, const double (&gravity)[3],
          double duration, double* v) {
  kickLoops(end - first, f + 3 * (first - fFirst), rMass + first, gravity[0], gravity[1], gravity[2], duration,
            v + 3 * first);
}

void drift(int64_t first, int64_t end, const double* v, double duration, double* x) {
  driftLoops(3 * (end - first), v + 3 * first, duration, x + 3 * first);
}

void deviatoricRate(int n, int stride, const double* velocity, const double* B, const double* stress, double* rate,
                    double* power) {
  deviatoricRateLoops(n, stride, velocity, B, stress, rate, power);
}

} // namespace sharedanalysis::solver
