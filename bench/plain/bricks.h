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

} // namespace plain
