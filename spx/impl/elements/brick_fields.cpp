// Nodal fields on the brick: gradients and divergences, and the flow of heat.
#include "glo/kernel/kernel.h"
#include "spx.h"
#include "spx/impl/elements/brick_family.h"

namespace sa {

using namespace brick;

namespace {

SA_INLINE double nodalSum(const double* B, const double* u, int64_t ld, int e) {
  return brick::nodalSum(B + e, ld, [=](int node) SA_POINT { return u[e + node * ld]; });
}

// Sum over the patterns of volume derivatives and of a field: the sum over the nodes of both.
SA_INLINE double modalSum(const Modes& d, const Modes& t, int e) {
  return ((d.a1[e] * t.a1[e] + d.a2[e] * t.a2[e]) + d.a3[e] * t.a3[e]) +
         ((d.h1[e] * t.h1[e] + d.h2[e] * t.h2[e]) + d.h3[e] * t.h3[e]);
}

// ---- the flow of heat through a one-point brick
//
// All sums run over the patterns instead of the nodes.  With B_i = s d_i, a temperature of the modes t has the gradient s d_i.t
// and the hourglass values g_k = t_k - h_k.gradT; the nodal flows have the modes s d.(V q + c g_k h_k), less c g_k in mode k.

struct HeatFlow {
  Lane scale, weight;  // s, and c without the hourglass values
  Lane qx, qy, qz;     // flux times volume; with the hourglass part after its pass
  Lane gx, gy, gz;     // gradient
  Lane g1, g2, g3, g4; // hourglass values times their weight
};

// Scale, weights, fluxes and gradient.  Elements without volume are masked.
SA_INLINE void heatGradient(int n, int64_t N, const OnePoint& brick, const Modes& t, const double* q, const double* k,
                            double* m, HeatFlow& h, Lane& marks) {
  forPoints(n, [=, &brick, &t, &h, &marks](int e) SA_POINT {
    const double W = brick.twelveVolumes(e, m[e]), masked = W == 0.0 ? 1.0 : m[e];
    const double s = (1.0 - masked) * refinedReciprocal(W + masked, masked), volume = W * 0.08333333333333333;
    const double sum =
        8.0 * s * s *
        ((modalSum(brick.dx, brick.dx, e) + modalSum(brick.dy, brick.dy, e)) + modalSum(brick.dz, brick.dz, e));
    m[e] = masked;
    marks[e] = __builtin_fabs(brick.patterns(e)) < kMost ? markOutside(W * sum, masked) : 1.0 - masked;
    h.scale[e] = s;
    h.weight[e] = k[e] * (W * sum * 0.06666666666666667) * 0.015625;
    h.qx[e] = volume * q[e];
    h.qy[e] = volume * q[e + N];
    h.qz[e] = volume * q[e + 2 * N];
    h.gx[e] = s * modalSum(brick.dx, t, e);
    h.gy[e] = s * modalSum(brick.dy, t, e);
    h.gz[e] = s * modalSum(brick.dz, t, e);
  });
}

// The hourglass values, and what they add to the fluxes.
SA_INLINE void heatHourglass(int n, const OnePoint& brick, const Modes& t, HeatFlow& h) {
  forPoints(n, [=, &brick, &t, &h](int e) SA_POINT {
    const Modes &x = brick.x, &y = brick.y, &z = brick.z;
    const double c = h.weight[e], x1 = x.h1[e], x2 = x.h2[e], x3 = x.h3[e], x4 = x.h4[e];
    const double y1 = y.h1[e], y2 = y.h2[e], y3 = y.h3[e], y4 = y.h4[e];
    const double z1 = z.h1[e], z2 = z.h2[e], z3 = z.h3[e], z4 = z.h4[e];
    const double u = h.gx[e], v = h.gy[e], w = h.gz[e];
    const double c1 = c * (t.h1[e] - (x1 * u + y1 * v + z1 * w)), c2 = c * (t.h2[e] - (x2 * u + y2 * v + z2 * w));
    const double c3 = c * (t.h3[e] - (x3 * u + y3 * v + z3 * w)), c4 = c * (t.h4[e] - (x4 * u + y4 * v + z4 * w));
    h.qx[e] += (c1 * x1 + c2 * x2) + (c3 * x3 + c4 * x4);
    h.qy[e] += (c1 * y1 + c2 * y2) + (c3 * y3 + c4 * y4);
    h.qz[e] += (c1 * z1 + c2 * z2) + (c3 * z3 + c4 * z4);
    h.g1[e] = c1;
    h.g2[e] = c2;
    h.g3[e] = c3;
    h.g4[e] = c4;
  });
}

// The flows into the eight nodes.  Those that are no numbers are marked.
SA_INLINE void heatFlows(int n, int64_t N, const OnePoint& brick, const HeatFlow& h, double* r, Lane& marks) {
  forPoints(n, [=, &brick, &h, &marks](int e) SA_POINT {
    const Modes &dx = brick.dx, &dy = brick.dy, &dz = brick.dz;
    const double s = h.scale[e], u = s * h.qx[e], v = s * h.qy[e], w = s * h.qz[e];
    const bool off = s == 0.0;
    const double a1 = u * dx.a1[e] + v * dy.a1[e] + w * dz.a1[e], a2 = u * dx.a2[e] + v * dy.a2[e] + w * dz.a2[e];
    const double a3 = u * dx.a3[e] + v * dy.a3[e] + w * dz.a3[e];
    const double h1 = (u * dx.h1[e] + v * dy.h1[e] + w * dz.h1[e]) - h.g1[e];
    const double h2 = (u * dx.h2[e] + v * dy.h2[e] + w * dz.h2[e]) - h.g2[e];
    const double h3 = (u * dx.h3[e] + v * dy.h3[e] + w * dz.h3[e]) - h.g3[e], h4 = -h.g4[e];
    toNodes<true>(r + e, N, off ? 0.0 : a1, off ? 0.0 : a2, off ? 0.0 : a3, off ? 0.0 : h1, off ? 0.0 : h2,
                  off ? 0.0 : h3, off ? 0.0 : h4);
    const double first = r[e], mark = marks[e]; // the sum of all modes
    marks[e] = __builtin_fabs(first) < vm::kInfinity ? mark : 1.0;
  });
}

} // namespace

SA_KERNEL(SPX_OPE_C3DH8TGRAD,
          (const int32_t* nblock, const int32_t* ld, const double* B, const double* T, double* gradT)) {
  const int64_t L = *ld;
  for (int i = 0; i < 3; ++i)
    forPoints(*nblock, [=, b = B + 8 * i * L, out = gradT + i * L](int e) SA_POINT { out[e] = nodalSum(b, T, L, e); });
}

SA_KERNEL(SPX_OPE_C3DH8DIVER, (const int32_t* nblock, const double* B, const double* u, double* divergence)) {
  const int64_t N = *nblock;
  forPoints(*nblock, [=](int e) SA_POINT {
    divergence[e] =
        (nodalSum(B, u, N, e) + nodalSum(B + 8 * N, u + 8 * N, N, e)) + nodalSum(B + 16 * N, u + 16 * N, N, e);
  });
}

SA_KERNEL(SPX_ASM_C3D8RTDIVER, (const int32_t* nblock, const double* X, const double* T, const double* flux,
                                const double* conductivity, double* R, double* mask)) {
  const int64_t N = *nblock;
  forPieces<kBrickPiece>(*nblock, [=](int start, int n) SA_POINT {
    double *m = mask + start, *r = R + start;
    const double *q = flux + start, *k = conductivity + start;
    OnePoint brick;
    Modes t;
    onePointModes(n, N, X + start, brick);
    projectModes(n, N, T + start, t);

    HeatFlow flow;
    Lane marks;
    heatGradient(n, N, brick, t, q, k, m, flow, marks);
    heatHourglass(n, brick, t, flow);
    heatFlows(n, N, brick, flow, r, marks);
    if (!anyMarked(n, marks)) return;
    // temperatures, fluxes and conductivities that are no numbers stay what they are
    forPoints(n, [=, &t, &marks](int e) SA_POINT {
      const double temperatures = ((t.a1[e] + t.a2[e]) + (t.a3[e] + t.h1[e])) + ((t.h2[e] + t.h3[e]) + t.h4[e]);
      const double data = temperatures + ((q[e] + q[e + N]) + (q[e + 2 * N] + k[e])), mark = marks[e];
      marks[e] = data - data == 0.0 ? mark : 0.0;
    });
    findInfinite(n, N, 8, r, marks);
    replaceInfinite(n, N, 8, 0.0, marks, r), replaceInfinite(n, N, 1, 1.0, marks, m);
  });
}

} // namespace sa
