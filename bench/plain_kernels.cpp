#include "plain_kernels.h"

#include "plain/bricks.h"
#include "plain/materials.h"
#include "plain/sort.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace plain {
namespace {

// One rotation; whether it turned by more than the bound.
bool rotate(Matrix<double>& A, Matrix<double>& V, int p, int q, double bound) {
  const int r = 3 - p - q;
  const double z = (std::abs(A[p][p]) + std::abs(A[q][q])) * 0x1p-53 >= std::abs(A[p][q]) ? 1 : 0;
  const double theta = (A[q][q] - A[p][p]) / (A[p][q] + z);
  const double t = (std::sqrt(theta * theta + 4) - theta) * 0.5;
  const double c = (1 - z) * std::sqrt(1 / (t * t + 1)), s = std::sqrt(1 - c * c);
  const double cr = c > s ? c : s, sr = c > s ? -s : c;
  const double pp = A[p][p], qq = A[q][q], pq = A[p][q], pr = A[p][r], qr = A[q][r];
  A[p][p] = cr * cr * pp + 2 * cr * sr * pq + sr * sr * qq;
  A[q][q] = cr * cr * qq - 2 * cr * sr * pq + sr * sr * pp;
  A[p][r] = A[r][p] = cr * pr + sr * qr;
  A[q][r] = A[r][q] = cr * qr - sr * pr;
  A[p][q] = A[q][p] = 0;
  for (int a = 0; a < 3; ++a) {
    const double x = V[a][p], y = V[a][q];
    V[a][p] = cr * x + sr * y;
    V[a][q] = cr * y - sr * x;
  }
  return std::abs(sr) > bound;
}

void diagonalise(Matrix<double>& A, Matrix<double>& V, double bound) {
  for (int a = 0; a < 3; ++a)
    for (int b = 0; b < 3; ++b) V[a][b] = a == b;
  bool moving = true;
  while (moving) {
    moving = rotate(A, V, 0, 2, bound);
    moving |= rotate(A, V, 0, 1, bound);
    moving |= rotate(A, V, 1, 2, bound);
  }
}

template <class Function>
void principalFunction(const int32_t* nblock, const double* S, double* V, Function f) {
  const int n = *nblock;
  for (int i = 0; i < n; ++i) {
    Matrix<double> A = symmetric(S + i, n), D;
    diagonalise(A, D, 1e-8);
    for (int k = 0; k < 6; ++k) {
      double sum = 0;
      for (int b = 0; b < 3; ++b) sum += D[kRow[k]][b] * f(A[b][b]) * D[kColumn[k]][b];
      V[k * n + i] = sum;
    }
  }
}

} // namespace

void princs33(const int32_t* nblock, const double* S, double* P, double* V) {
  const int n = *nblock;
  for (int i = 0; i < n; ++i) {
    Matrix<double> A = symmetric(S + i, n), D;
    diagonalise(A, D, 0.015);
    for (int b = 0; b < 3; ++b) {
      P[b * n + i] = A[b][b];
      for (int a = 0; a < 3; ++a) V[(3 * b + a) * n + i] = D[a][b];
    }
  }
}

void eig33vector(const int32_t* nblock, const double* S, double* P) {
  const int n = *nblock;
  for (int i = 0; i < n; ++i) {
    Matrix<double> A = symmetric(S + i, n), D;
    diagonalise(A, D, 0.015);
    double values[] = {A[0][0], A[1][1], A[2][2]};
    std::sort(values, values + 3);
    for (int k = 0; k < 3; ++k) P[k * n + i] = values[k];
  }
}

void sqrtv(const int32_t* nblock, const double* S, double* V) {
  principalFunction(nblock, S, V, [](double x) { return std::sqrt(x); });
}

void logarithmicStrain(const int32_t* nblock, const double* C, double* strain) {
  principalFunction(nblock, C, strain, [](double x) { return 0.5 * std::log(x); });
}

void eig33anal(const int32_t* nblock, const double* S, double* P) {
  const int n = *nblock;
  for (int i = 0; i < n; ++i) {
    double M = 0, O = 0;
    for (int k = 0; k < 6; ++k) M = std::max(M, std::abs(S[k * n + i]));
    for (int k = 3; k < 6; ++k) O = std::max(O, std::abs(S[k * n + i]));
    const double f = M <= 2.2250738585072014e-308 ? 0 : 1 / M;
    const double b11 = f * S[i], b22 = f * S[n + i], b33 = f * S[2 * n + i];
    const double b12 = f * S[3 * n + i], b23 = f * S[4 * n + i], b13 = f * S[5 * n + i];
    const double mean = (b11 + b22 + b33) / 3, d1 = b11 - mean, d2 = b22 - mean, d3 = b33 - mean;
    if (std::max({std::abs(d1), std::abs(d2), std::abs(d3)}) * 1.1102230246251565e-12 > O * f) {
      for (int k = 0; k < 3; ++k) P[k * n + i] = S[k * n + i];
      continue;
    }
    const double r = 2 * std::sqrt(((d1 * d1 + d2 * d2 + d3 * d3) * 0.5 + b12 * b12 + b23 * b23 + b13 * b13) / 3);
    const double g = r > 0x1p-53 ? 2 / r : 0;
    const double e1 = g * d1, e2 = g * d2, e3 = g * d3, e12 = g * b12, e23 = g * b23, e13 = g * b13;
    const double x = 0.5 * ((e2 * e3 - e23 * e23) * e1 - e3 * e12 * e12 - e2 * e13 * e13) + e12 * e13 * e23;
    double k1 = -0.5, k2 = -0.5, k3 = 1;
    if (x <= -0.9999999999999999) {
      k1 = -1, k2 = 0.5, k3 = 0.5;
    } else if (x < 0.9999999999999999) {
      const double angle = std::acos(x) / 3;
      k1 = std::cos(angle);
      k2 = std::cos(angle + 2.094395102393195);
      k3 = -k1 - k2;
    }
    P[i] = (mean + r * k1) * M;
    P[n + i] = (mean + r * k2) * M;
    P[2 * n + i] = (mean + r * k3) * M;
  }
}

void princs31(const int32_t* nblock, const double* S, double* P, double* V) {
  const int n = *nblock;
  for (int i = 0; i < n; ++i) {
    const double s11 = S[i], s22 = S[n + i], s12 = S[3 * n + i], h = (s11 - s22) * 0.5;
    const double R = h < 0 ? -std::sqrt(s12 * s12 + h * h) : std::sqrt(s12 * s12 + h * h);
    const double z = std::abs(R) <= 2.2250738585072014e-308 ? 1 : 0, cos2 = h / (R + z), sin2 = s12 / (R + z);
    const double c = std::sqrt(0.5 * (1 - z) * (cos2 + 1)) + z, s = (1 - z) * sin2 / (2 * c);
    P[i] = s11 * c * c + sin2 * s12 + s22 * s * s;
    P[n + i] = s22 * c * c - sin2 * s12 + s11 * s * s;
    P[2 * n + i] = S[2 * n + i];
    const double v[] = {c, s, 0, -s, c, 0, 0, 0, 1};
    for (int k = 0; k < 9; ++k) V[k * n + i] = v[k];
  }
}

void c3d8oper(const int32_t* nblock, const int32_t* ipt, const int32_t*, const double* dNdxi, const double* dNdeta,
              const double* dNdzeta, const double* X, double* Bdet, double* detJ, double* rdetJ, double* mask) {
  const int n = *nblock;
  const double* dN[] = {dNdxi + 8 * (*ipt - 1), dNdeta + 8 * (*ipt - 1), dNdzeta + 8 * (*ipt - 1)};
  for (int e = 0; e < n; ++e) {
    Matrix<double> J, C;
    for (int c = 0; c < 3; ++c)
      for (int d = 0; d < 3; ++d) {
        J[c][d] = 0;
        for (int node = 0; node < 8; ++node) J[c][d] += X[(8 * c + node) * n + e] * dN[d][node];
      }
    for (int c = 0; c < 3; ++c) {
      const int c1 = (c + 1) % 3, c2 = (c + 2) % 3;
      for (int d = 0; d < 3; ++d) {
        const int d1 = (d + 1) % 3, d2 = (d + 2) % 3;
        C[c][d] = (J[c1][d1] * J[c2][d2] - J[c1][d2] * J[c2][d1]) * (1 - mask[e]);
      }
    }
    double det = J[0][0] * C[0][0] + J[1][0] * C[1][0] + J[2][0] * C[2][0];
    if (!(det > 0)) {
      mask[e] = 1;
      det = 0;
    }
    for (int c = 0; c < 3; ++c)
      for (int node = 0; node < 8; ++node)
        Bdet[(8 * c + node) * n + e] = C[c][0] * dN[0][node] + C[c][1] * dN[1][node] + C[c][2] * dN[2][node];
    detJ[e] = det + mask[e];
    rdetJ[e] = (1 - mask[e]) / detJ[e];
  }
}

void c3d8roper2(const int32_t* nblock, const int32_t* ldim, const double* X, double* B, double* hgdiag, double* hgstiff,
                double* vol, double* rvol, double* gamma, double* mask) {
  const int n = *nblock, ld = *ldim;
  for (int e = 0; e < n; ++e)
    onePointOperator<double>([=](int k) { return X[k * ld + e]; }, [=](int k, double value) { B[k * ld + e] = value; },
                             hgdiag[e], hgstiff[e], vol[e], rvol[e],
                             [=](int k, double value) { gamma[k * ld + e] = value; }, mask[e]);
}

void c3dsymgrad(const int32_t* nblock, const double* G, double* sym, double* skew) {
  const int n = *nblock;
  for (int e = 0; e < n; ++e) {
    for (int k = 0; k < 3; ++k) sym[k * n + e] = G[4 * k * n + e];
    sym[3 * n + e] = (G[3 * n + e] + G[n + e]) * 0.5;
    sym[4 * n + e] = (G[7 * n + e] + G[5 * n + e]) * 0.5;
    sym[5 * n + e] = (G[6 * n + e] + G[2 * n + e]) * 0.5;
    skew[e] = (G[3 * n + e] - G[n + e]) * 0.5;
    skew[n + e] = (G[7 * n + e] - G[5 * n + e]) * 0.5;
    skew[2 * n + e] = (G[6 * n + e] - G[2 * n + e]) * 0.5;
  }
}

void hyperpolys33(const int32_t* nblock, const double* C10, const double* C01, const double* C20, const double* C11,
                  const double* C02, double* energy, double* rJ, const double* V) {
  const int n = *nblock;
  for (int i = 0; i < n; ++i) {
    const Matrix<double> A = symmetric(V + i, n);
    double J = determinant(A);
    if (J < 2.2250738585072014e-308) J += 1;
    const double f = std::exp(-2.0 / 3 * std::log(J));
    Matrix<double> B = product(A, A);
    for (auto& row : B)
      for (double& value : row) value *= f;
    const double x = B[0][0] + B[1][1] + B[2][2] - 3;
    const double y = B[0][0] * B[1][1] + B[1][1] * B[2][2] + B[0][0] * B[2][2] - B[0][1] * B[0][1] - B[1][2] * B[1][2] -
                     B[0][2] * B[0][2] - 3;
    energy[i] = C10[i] * x + C01[i] * y + C20[i] * x * x + C11[i] * x * y + C02[i] * y * y;
    rJ[i] = 1 / J;
  }
}

void hyperpoly3dexp(const int32_t* nblock, const double* C10, const double* C01, const double* C20, const double* C11,
                    const double* C02, const double* rD1, const double* rD2, const double* V, double* stress,
                    double* flag, double* bound, double* bulk) {
  const int n = *nblock;
  for (int i = 0; i < n; ++i) {
    const Matrix<double> A = symmetric(V + i, n);
    double J = determinant(A);
    if (J < 1e-9) flag[i] = 1;
    J = flag[i] + (1 - flag[i]) * J;
    const double f = std::exp(-2.0 / 3 * std::log(J)), rJ = 1 / J;
    Matrix<double> B = product(A, A);
    for (auto& row : B)
      for (double& value : row) value *= f;
    const Matrix<double> Q = product(B, B);
    const double I1 = B[0][0] + B[1][1] + B[2][2];
    const double I2 = B[0][0] * B[1][1] + B[1][1] * B[2][2] + B[0][0] * B[2][2] - B[0][1] * B[0][1] -
                      B[1][2] * B[1][2] - B[0][2] * B[0][2];
    const double x = I1 - 3, y = I2 - 3, e = J - 1;
    const double U1 = C10[i] + 2 * C20[i] * x + C11[i] * y, U2 = C01[i] + C11[i] * x + 2 * C02[i] * y;
    const double U11 = 2 * C20[i], U12 = C11[i], U22 = 2 * C02[i];
    const double p = 2 * e * rD1[i] + 4 * e * e * e * rD2[i], slope = 2 * rD1[i] + 12 * e * e * rD2[i];
    const double a = 2 * U2 * rJ, b = 2 * U1 * rJ + I1 * a, third = (I1 * I1 - 2 * I2) / 3;
    for (int k = 0; k < 6; ++k) {
      const double q = Q[kRow[k]][kColumn[k]], g = B[kRow[k]][kColumn[k]];
      stress[k * n + i] = k < 3 ? p - (q - third) * a + (g - I1 / 3) * b : g * b - q * a;
    }
    const double w4 = 4 * rJ, w2 = 2 * rJ, c1 = w4 * (U11 + 2 * I1 * U12 + I1 * I1 * U22), c2 = w4 * U22;
    const double c3 = -w4 * (I1 * U22 + U12), E = w2 * (U1 + I1 * U2), F = -w2 * U2, G = w4 * U2;
    double largest = 0;
    for (int k = 0; k < 6; ++k) {
      const int r = kRow[k], c = kColumn[k];
      const double g = B[r][c], q = Q[r][c];
      const double term = k < 3 ? (g * c1 + 2 * E + 2 * q * c3) * g + (q * c2 + 2 * F) * q
                                : (2 * c1 * g + 4 * c3 * q) * g + (B[r][r] + B[c][c]) * E + (Q[r][r] + Q[c][c]) * F +
                                      (g * g - B[r][r] * B[c][c]) * G + 2 * c2 * q * q;
      largest = k == 0 ? term : std::max(largest, term);
    }
    bound[i] = largest;
    bulk[i] = 3 * J * (p + slope);
  }
}

void gatherr(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map, double* L,
             const double* G) {
  const int n = *nblock;
  for (int i = 0; i < n; ++i)
    for (int k = 0; k < *ncomp; ++k) L[k * n + i] = G[k * *ld + map[i] - 1];
}

void genassem(const int32_t* nblock, const int32_t* ndim, const int32_t* ld, const int32_t*, double* G, const double* L,
              const int32_t* map) {
  const int n = *nblock;
  for (int i = 0; i < n; ++i)
    for (int k = 0; k < *ndim; ++k) G[(map[i] - 1) * *ld + k] += L[k * n + i];
}

void inssorti(int32_t* list, const int32_t* keys, const int32_t* n) { insertionSort(list, keys, *n); }

void copyr(const int32_t* n, const double* source, double* destination) {
  for (int i = 0; i < *n; ++i) destination[i] = source[i];
}

void vaddr(const int32_t* n, double* result, const double* a, const double* b) {
  for (int i = 0; i < *n; ++i) result[i] = a[i] + b[i];
}

void exp(const int32_t* n, const double* x, double* y) {
  for (int i = 0; i < *n; ++i) y[i] = std::exp(x[i]);
}
void log(const int32_t* n, const double* x, double* y) {
  for (int i = 0; i < *n; ++i) y[i] = std::log(x[i]);
}
void cos(const int32_t* n, const double* x, double* y) {
  for (int i = 0; i < *n; ++i) y[i] = std::cos(x[i]);
}
void acos(const int32_t* n, const double* x, double* y) {
  for (int i = 0; i < *n; ++i) y[i] = std::acos(x[i]);
}

void write(const std::string& text, const int32_t* ints, const double* reals, const char* const* strings,
           void (*line)(const std::string&)) {
  std::string message;
  char number[32];
  for (size_t k = 0; k < text.size(); ++k) {
    const char code = text[k] == '%' && k + 1 < text.size() ? text[k + 1] : ' ';
    if (code == 'I') {
      std::snprintf(number, sizeof number, "%d", *ints++);
      message += number;
    } else if (code == 'R') {
      std::snprintf(number, sizeof number, "%.5E", *reals++);
      message += number;
    } else if (code == 'S') {
      message += *strings++;
    } else {
      message += text[k];
      continue;
    }
    ++k;
  }
  line(" ");
  while (!message.empty()) {
    std::string piece = message.substr(0, 77);
    if (piece.size() < message.size() && piece.rfind(' ') != std::string::npos) piece.resize(piece.rfind(' ') + 1);
    line("  " + piece);
    message.erase(0, piece.size());
  }
  line(" ");
}

} // namespace plain
