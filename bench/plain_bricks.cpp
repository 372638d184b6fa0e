#include "plain_bricks.h"

#include "plain/bricks.h"
#include "plain/filter.h"
#include "plain_kernels.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace plain {
namespace {

constexpr double kPattern[4][8] = {{+1, +1, -1, -1, -1, -1, +1, +1},
                                   {+1, -1, -1, +1, -1, +1, +1, -1},
                                   {+1, -1, +1, -1, +1, -1, +1, -1},
                                   {-1, +1, -1, +1, +1, -1, +1, -1}};

} // namespace

void c3dh8oper(const int32_t* nblock, const int32_t* ldim, const double* X, double* dVdX, double* B, double* hgdiag,
               double* hgstiff, double* vol, double* rvol, double* h, double* gamma, double* mask) {
  const int n = *nblock, ld = *ldim;
  c3d8roper2(nblock, ldim, X, B, hgdiag, hgstiff, vol, rvol, gamma, mask);
  for (int k = 0; k < 24; ++k)
    for (int e = 0; e < n; ++e) dVdX[k * ld + e] = B[k * ld + e] * vol[e];
  for (int c = 0; c < 3; ++c)
    for (int k = 0; k < 4; ++k)
      for (int e = 0; e < n; ++e) {
        double sum = 0;
        for (int node = 0; node < 8; ++node) sum += kPattern[k][node] * X[(8 * c + node) * ld + e];
        h[(4 * c + k) * ld + e] = sum;
      }
}

void c3d8ioper(const int32_t* nblock, const int32_t* ipt, const int32_t* nipt, const double* dNdxi,
               const double* dNdeta, const double* dNdzeta, const double* X, double* Bdet, double* detJ, double* rdetJ,
               double* B, double* vol, double* rvol, double* mask) {
  const int n = *nblock, points = *nipt;
  for (int e = 0; e < n; ++e) {
    double mean[3][8] = {}, volume = 0;
    for (int p = 0; p < points; ++p) {
      const double* d[3] = {dNdxi + 8 * p, dNdeta + 8 * p, dNdzeta + 8 * p};
      double J[3][3] = {}, C[3][3];
      for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
          for (int node = 0; node < 8; ++node) J[i][j] += 0.125 * d[j][node] * X[(8 * i + node) * n + e];
      for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) {
          const int i1 = (i + 1) % 3, i2 = (i + 2) % 3, j1 = (j + 1) % 3, j2 = (j + 2) % 3;
          C[i][j] = J[i1][j1] * J[i2][j2] - J[i1][j2] * J[i2][j1];
        }
      const double det = J[0][0] * C[0][0] + J[0][1] * C[0][1] + J[0][2] * C[0][2];
      if (!(det > 0)) mask[e] = 1;
      volume += det * 8 / points;
      for (int i = 0; i < 3; ++i)
        for (int node = 0; node < 8; ++node) {
          const double b = 0.125 * (C[i][0] * d[0][node] + C[i][1] * d[1][node] + C[i][2] * d[2][node]);
          mean[i][node] += b * 8 / points;
          if (p == *ipt - 1) Bdet[(8 * i + node) * n + e] = b;
        }
      if (p == *ipt - 1) detJ[e] = det;
    }
    const bool off = mask[e] != 0;
    if (off) detJ[e] = volume = 1;
    rdetJ[e] = off ? 0 : 1 / detJ[e];
    vol[e] = volume;
    rvol[e] = off ? 0 : 1 / volume;
    for (int i = 0; i < 3; ++i)
      for (int node = 0; node < 8; ++node) {
        B[(8 * i + node) * n + e] = off ? 0 : mean[i][node] * rvol[e];
        if (off) Bdet[(8 * i + node) * n + e] = 0;
      }
  }
}

void c3d8facearea(const int32_t* nblock, const int32_t* ldim, const int32_t* face, const double* X, double* area,
                  double* normal, const double* mask) {
  static constexpr int nodes[6][4] = {{0, 3, 2, 1}, {4, 5, 6, 7}, {0, 1, 5, 4},
                                      {1, 2, 6, 5}, {2, 3, 7, 6}, {3, 0, 4, 7}};
  const int n = *nblock, ld = *ldim;
  const double points[3] = {-std::sqrt(0.6), 0, std::sqrt(0.6)}, weights[3] = {5.0 / 9, 8.0 / 9, 5.0 / 9};
  for (int e = 0; e < n; ++e) {
    double p[4][3], sum = 0, vector[3] = {};
    for (int k = 0; k < 4; ++k)
      for (int c = 0; c < 3; ++c) p[k][c] = X[(8 * c + nodes[*face - 1][k]) * ld + e];
    for (int a = 0; a < 3; ++a)
      for (int b = 0; b < 3; ++b) {
        const auto cross = faceNormal(p, (1 + points[a]) / 2, (1 + points[b]) / 2);
        const double w = weights[a] * weights[b] / 4;
        sum += w * std::sqrt(cross[0] * cross[0] + cross[1] * cross[1] + cross[2] * cross[2]);
        for (int c = 0; c < 3; ++c) vector[c] += w * cross[c];
      }
    const double active = 1 - mask[e];
    area[e] = active * sum;
    for (int c = 0; c < 3; ++c) normal[c * ld + e] = active * vector[c];
  }
}

void c3dh8tgrad(const int32_t* nblock, const int32_t* ldim, const double* B, const double* T, double* gradT) {
  const int n = *nblock, ld = *ldim;
  for (int e = 0; e < n; ++e)
    for (int c = 0; c < 3; ++c) {
      double sum = 0;
      for (int node = 1; node < 8; ++node) sum += B[(8 * c + node) * ld + e] * (T[node * ld + e] - T[e]);
      gradT[c * ld + e] = sum;
    }
}

void c3d8rtdiver(const int32_t* nblock, const double* X, const double* T, const double* flux,
                 const double* conductivity, double* R, double* mask) {
  const int n = *nblock;
  std::vector<double> B(24 * n), diag(n), stiff(n), vol(n), rvol(n), gamma(32 * n);
  c3d8roper2(nblock, nblock, X, B.data(), diag.data(), stiff.data(), vol.data(), rvol.data(), gamma.data(), mask);
  for (int e = 0; e < n; ++e) {
    const double active = 1 - mask[e], c = active * conductivity[e] * 0.4 / 64 * stiff[e];
    heatFlow(n, &B[e], &gamma[e], active * vol[e], c, T + e, flux + e, R + e);
  }
}

void filterfld(const int32_t* nblock, const int32_t* ncomp, const int32_t* filterdef, double* field, const double* coef,
               double* hist) {
  const int values = *nblock * *ncomp, K = *filterdef;
  for (int i = 0; i < values; ++i) {
    double x = field[i];
    for (int k = 0; k < K; ++k) {
      double* h = hist + 2 * k * values + i;
      const double* c = coef + 5 * k;
      const double y = filterSection(c, x, h[0], h[values], h[2 * values], h[3 * values]);
      h[values] = h[0];
      h[0] = x;
      x = y;
    }
    double* last = hist + 2 * K * values + i;
    last[values] = last[0];
    last[0] = field[i] = x;
  }
}

void runningMaximum(const int32_t* nblock, const int32_t* ncomp, double* field, double* state) {
  const int values = *nblock * *ncomp;
  for (int i = 0; i < values; ++i) field[i] = state[i] = std::max(state[i], field[i]);
}

} // namespace plain
