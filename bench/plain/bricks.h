// Formulas of bricks at one element; how these headers are used: materials.h.
#pragma once

#include <array>

namespace plain {

// The vector product of the tangents of a bilinear face with the corners p, at s and t from 0 to 1: its length is the area of
// a unit square there.
template <class Corner>
std::array<double, 3> faceNormal(const Corner& p, double s, double t) {
  double u[3], v[3];
  for (int c = 0; c < 3; ++c) {
    u[c] = (1 - t) * (p[1][c] - p[0][c]) + t * (p[2][c] - p[3][c]);
    v[c] = (1 - s) * (p[3][c] - p[0][c]) + s * (p[2][c] - p[1][c]);
  }
  return {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
}

// Heat into the nodes: the flux through B and the volume, less a conductance on the four hourglass patterns.  Arrays of one
// element, whose values lie a stride apart: B (8, 3), gamma (8, 4), temperatures T (8), flux (3).
inline void heatFlow(int stride, const double* B, const double* gamma, double volume, double conductance,
                     const double* T, const double* flux, double* flow) {
  double g[4] = {};
  for (int k = 0; k < 4; ++k)
    for (int node = 0; node < 8; ++node) g[k] += gamma[(8 * k + node) * stride] * T[node * stride];
  for (int node = 0; node < 8; ++node) {
    double sum = 0;
    for (int i = 0; i < 3; ++i) sum += volume * B[(8 * i + node) * stride] * flux[i * stride];
    for (int k = 0; k < 4; ++k) sum -= conductance * gamma[(8 * k + node) * stride] * g[k];
    flow[node * stride] = sum;
  }
}

inline double select(bool condition, double a, double b) { return condition ? a : b; }

// The operator of the one-point brick, its hourglass coefficients and vectors: coordinates x(k), B and gamma by (k, value), k
// counting the eight nodes first.
template <class Real, class Coordinates, class PutB, class PutGamma>
void onePointOperator(Coordinates X, PutB B, Real& hgdiag, Real& hgstiff, Real& vol, Real& rvol, PutGamma gamma,
                      Real& mask) {
  // B_1 of a brick from the y and z of the six nodes that share an edge or a face diagonal with the node; the other nodes by
  // renumbering
  static constexpr int order[8][8] = {{0, 1, 2, 3, 4, 5, 6, 7}, {1, 2, 3, 0, 5, 6, 7, 4}, {2, 3, 0, 1, 6, 7, 4, 5},
                                      {3, 0, 1, 2, 7, 4, 5, 6}, {4, 7, 6, 5, 0, 3, 2, 1}, {5, 4, 7, 6, 1, 0, 3, 2},
                                      {6, 5, 4, 7, 2, 1, 0, 3}, {7, 6, 5, 4, 3, 2, 1, 0}};
  static constexpr double pattern[4][8] = {{+1, +1, -1, -1, -1, -1, +1, +1},
                                           {+1, -1, -1, +1, -1, +1, +1, -1},
                                           {+1, -1, +1, -1, +1, -1, +1, -1},
                                           {-1, +1, -1, +1, +1, -1, +1, -1}};
  Real x[3][8], b[3][8], W = 0;
  for (int c = 0; c < 3; ++c)
    for (int node = 0; node < 8; ++node) x[c][node] = X(8 * c + node);
  for (int c = 0; c < 3; ++c) {
    const Real *y = x[(c + 1) % 3], *z = x[(c + 2) % 3];
    for (int node = 0; node < 8; ++node) {
      const int* o = order[node];
      b[c][node] = y[o[1]] * ((z[o[5]] - z[o[2]]) - (z[o[3]] - z[o[4]])) + y[o[2]] * (z[o[1]] - z[o[3]]) +
                   y[o[3]] * ((z[o[2]] - z[o[7]]) - (z[o[4]] - z[o[1]])) +
                   y[o[4]] * ((z[o[7]] - z[o[5]]) - (z[o[1]] - z[o[3]])) + y[o[5]] * (z[o[4]] - z[o[1]]) +
                   y[o[7]] * (z[o[3]] - z[o[4]]);
    }
  }
  for (int node = 0; node < 8; ++node) W += x[0][node] * b[0][node];
  mask = select(W > Real(0), mask, Real(1));
  const Real active = 1 - mask, volume12 = select(active > Real(0), W, Real(1)), r = 1 / volume12;
  const Real reciprocal = (2 * r - volume12 * r * r) * active;
  Real squares = 0;
  for (int c = 0; c < 3; ++c)
    for (int node = 0; node < 8; ++node) {
      b[c][node] *= reciprocal * active;
      squares += b[c][node] * b[c][node];
      B(8 * c + node, b[c][node]);
    }
  const Real q = volume12 * squares + mask;
  hgdiag = 6 / q;
  hgstiff = q / 6;
  vol = volume12 / 12;
  rvol = 12 * reciprocal;
  for (int k = 0; k < 4; ++k) {
    Real h[3] = {0, 0, 0};
    for (int c = 0; c < 3; ++c)
      for (int node = 0; node < 8; ++node) h[c] += pattern[k][node] * x[c][node];
    for (int node = 0; node < 8; ++node)
      gamma(8 * k + node, active * (pattern[k][node] - (h[0] * b[0][node] + h[1] * b[1][node] + h[2] * b[2][node])));
  }
}

} // namespace plain
