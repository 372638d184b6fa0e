#include "peer_kernels.h"

#include <Eigen/Dense>
#include <cstring>

namespace peer {
namespace {

Eigen::Matrix3d load(const double* S, int n, int i) {
  Eigen::Matrix3d A;
  A << S[i], S[i + 3 * n], S[i + 5 * n], S[i + 3 * n], S[i + n], S[i + 4 * n], S[i + 5 * n], S[i + 4 * n], S[i + 2 * n];
  return A;
}

void store(const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d>& solver, int n, int i, double* P, double* V) {
  for (int b = 0; b < 3; ++b) {
    P[b * n + i] = solver.eigenvalues()[b];
    for (int a = 0; a < 3; ++a) V[(3 * b + a) * n + i] = solver.eigenvectors()(a, b);
  }
}

} // namespace

void eigenDirectValues(const int32_t* nblock, const double* S, double* P) {
  Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> solver;
  for (int i = 0; i < *nblock; ++i) {
    solver.computeDirect(load(S, *nblock, i), Eigen::EigenvaluesOnly);
    for (int b = 0; b < 3; ++b) P[b * *nblock + i] = solver.eigenvalues()[b];
  }
}

void eigenDirect(const int32_t* nblock, const double* S, double* P, double* V) {
  Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> solver;
  for (int i = 0; i < *nblock; ++i) store(solver.computeDirect(load(S, *nblock, i)), *nblock, i, P, V);
}

void eigenIterative(const int32_t* nblock, const double* S, double* P, double* V) {
  Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> solver;
  for (int i = 0; i < *nblock; ++i) store(solver.compute(load(S, *nblock, i)), *nblock, i, P, V);
}

void eigenQuaternions(const int32_t* nblock, const int32_t*, double* Q, const double* A, const double* B) {
  const int n = *nblock;
  for (int i = 0; i < n; ++i) {
    const Eigen::Quaterniond a(A[i + 3 * n], A[i], A[i + n], A[i + 2 * n]),
        b(B[i + 3 * n], B[i], B[i + n], B[i + 2 * n]);
    const Eigen::Quaterniond q = (a * b).normalized();
    for (int k = 0; k < 4; ++k) Q[k * n + i] = q.coeffs()[k];
  }
}

void copyBytes(int64_t bytes, const void* source, void* destination) {
  std::memcpy(destination, source, static_cast<std::size_t>(bytes));
}

} // namespace peer
