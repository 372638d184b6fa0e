#include "solver/program/fit.h"

#include <algorithm>
#include <cmath>
#include <cminpack.h>

namespace sharedanalysis::solver {
namespace {

// Steps that balance the error of a central difference against that of rounding, which free stretches of stiff volumes raise.
constexpr double kStep = 3e-5;
// A direction that moves the residuals less than this part of what the strongest does counts as none.
constexpr double kRank = 1e-8;

double squares(const std::vector<double>& r) {
  double sum = 0;
  for (const double value : r) sum += value * value;
  return sum;
}

int callBack(void* problem, int m, int n, const double* x, double* r, double* J, int, int what) {
  const auto& p = *static_cast<const LeastSquares*>(problem);
  const std::vector<double> at(x, x + n);
  std::vector<double> values(static_cast<std::size_t>(m));
  if (what == 1) {
    p.evaluate(at, values);
    std::copy(values.begin(), values.end(), r);
  } else if (what == 2) {
    std::vector<double> steps(at);
    for (double& step : steps) step = kStep * std::max(1.0, std::abs(step));
    const std::vector<double> columns = p.derivatives(at, steps);
    std::copy(columns.begin(), columns.end(), J);
  }
  return 0;
}

} // namespace

double LeastSquares::minimise(std::vector<double>& x, double part, int mostEvaluations) const {
  const auto n = static_cast<std::size_t>(unknowns), m = static_cast<std::size_t>(residuals);
  std::vector<double> r(m), J(m * n), scale(n), qtf(n), w1(n), w2(n), w3(n), w4(m);
  std::vector<int> order(n);
  int evaluations = 0, derivatives = 0;
  constexpr double kFirstStep = 10;
  lmder(callBack, const_cast<LeastSquares*>(this), residuals, unknowns, x.data(), r.data(), J.data(), residuals, part,
        part, 0, mostEvaluations, scale.data(), 1, kFirstStep, 0, &evaluations, &derivatives, order.data(), qtf.data(),
        w1.data(), w2.data(), w3.data(), w4.data());
  return squares(r);
}

std::vector<double> LeastSquares::derivatives(const std::vector<double>& x, const std::vector<double>& steps) const {
  const auto m = static_cast<std::size_t>(residuals);
  std::vector<double> J, up(m), down(m), at = x;
  for (std::size_t k = 0; k < x.size(); ++k) {
    at[k] = x[k] + steps[k];
    const double above = at[k];
    evaluate(at, up);
    at[k] = x[k] - steps[k];
    const double width = above - at[k];
    evaluate(at, down);
    at[k] = x[k];
    for (std::size_t i = 0; i < m; ++i) J.push_back((up[i] - down[i]) / width);
  }
  return J;
}

std::vector<double> variances(std::vector<double> J, int residuals, int unknowns) {
  const auto n = static_cast<std::size_t>(unknowns), m = static_cast<std::size_t>(residuals);
  std::vector<int> order(n);
  std::vector<double> diagonal(n), norms(n), work(n);
  qrfac(residuals, unknowns, J.data(), residuals, 1, order.data(), unknowns, diagonal.data(), norms.data(),
        work.data());
  std::vector<double> R(n * n);
  for (std::size_t k = 0; k < n; ++k) {
    for (std::size_t i = 0; i < k; ++i) R[k * n + i] = J[k * m + i];
    R[k * n + k] = diagonal[k];
  }
  std::vector<std::size_t> lost; // by pivots, the first of which is the largest
  for (std::size_t k = 0; k < n; ++k)
    if (!(std::abs(diagonal[k]) > kRank * std::abs(diagonal[0])))
      lost.push_back(static_cast<std::size_t>(order[k] - 1));
  covar(unknowns, R.data(), unknowns, order.data(), kRank, work.data());
  std::vector<double> result(n);
  for (std::size_t k = 0; k < n; ++k) result[k] = R[k * n + k];
  for (const std::size_t k : lost) result[k] = 0;
  return result;
}

} // namespace sharedanalysis::solver
