#include "solver/model/user_stiffness.h"

#include <algorithm>
#include <cmath>

namespace sharedanalysis::solver {
namespace {

// Of rows of (stress, strain), straight between them and beyond the last.
double valueOn(const double* rows, std::size_t count, double strain) {
  if (count < 2) return rows[0];
  std::size_t r = 1;
  while (r + 1 < count && strain > rows[2 * r + 1]) ++r;
  const double *a = rows + 2 * r - 2, *b = rows + 2 * r;
  return a[0] + (b[0] - a[0]) * (strain - a[1]) / (b[1] - a[1]);
}

constexpr double kPi = 3.14159265358979323846;

} // namespace

double steepest(const double* rows, std::size_t count) {
  double slope = 0;
  for (std::size_t r = 1; r < count; ++r)
    slope = std::max(slope, (rows[2 * r] - rows[2 * r - 2]) / (rows[2 * r + 1] - rows[2 * r - 1]));
  return slope;
}

// With e = 1 - l of a direction, T its nominal stress by the slowest curve and t = T/|T|, all follow one rate r, the sum of t de/dt
// = -t l D.  Between the rates r1 and r2 the stress of a curve is T1 + (T2 - T1) ln(r/r1)/ln(r2/r1): it changes with r by
// (T2 - T1)/(r ln(r2/r1)), and not below the first rate and beyond the last.  The Cauchy stress being T l/J, stress changes with D
// by a dyad, and the norms of both vectors make its norm.  Behind the filter an increment dt moves the rate by 1 - exp(-dt/tau)
// of its change alone.
double rateSensitiveViscosity(const UserState& s) {
  const Properties& p = s.properties;
  const auto rates = static_cast<std::size_t>(p[6]);
  const double *table = &p[7], *slowest = table + 2 * rates, *low = slowest;
  const double rate = s.variables[s.stride];
  for (std::size_t k = 0; k + 1 < rates; ++k) {
    const auto rows = static_cast<std::size_t>(table[2 * k + 1]),
               rowsAbove = static_cast<std::size_t>(table[2 * k + 3]);
    const double* high = low + 2 * rows;
    if (rate > table[2 * k] && rate <= table[2 * k + 2]) {
      double changes = 0, stresses = 0, rateOfD = 0;
      for (const double l : s.stretches) {
        const double e = 1 - l, tension = p[1] > 0 ? std::max(p[0] * e, -p[1]) : p[0] * e;
        const double T = e < 0 ? tension : valueOn(slowest, static_cast<std::size_t>(table[1]), e);
        const double change = e > 0 ? l * (valueOn(high, rowsAbove, e) - valueOn(low, rows, e)) : 0;
        changes += change * change, stresses += T * T, rateOfD += l * l * T * T;
      }
      const double filtered = p[5] > 0 ? -std::expm1(-s.increment / p[5]) : 1;
      const double slope = filtered / (rate * std::log(table[2 * k + 2] / table[2 * k]));
      return stresses > 0 ? slope * std::sqrt(changes) * std::sqrt(rateOfD / stresses) / s.J : 0;
    }
    low = high;
  }
  return 0;
}

// c2 of SPX_USR_FABRIC.
double fabricStiffness(const UserState& s) {
  const Properties& p = s.properties;
  const auto rows = [&p](std::size_t k) { return static_cast<std::size_t>(p[k]); };
  const double *first = &p[14], *second = first + 2 * rows(0), *back = second + 2 * rows(1),
               *backSecond = back + 2 * rows(2);
  const double m1 = std::max(steepest(first, rows(0)), steepest(back, rows(2))),
               m2 = std::max(steepest(second, rows(1)), steepest(backSecond, rows(3)));
  const double between = p[4] == 0 && p[5] == 0 ? kPi / 2 : std::abs(p[5] - p[4]) * kPi / 180;
  const double theta = between - s.variables[7 * s.stride], sine = std::max(1e-3, std::sin(theta));
  const double l1 = 1 + s.variables[5 * s.stride], l2 = 1 + s.variables[6 * s.stride];
  const double J = std::max(1e-6, l1 * l2 * sine / std::sin(between));
  return (std::max(m1 * l1 * l1, m2 * l2 * l2) * (1 + std::abs(std::cos(theta))) + p[6] + p[8] + p[9]) / J;
}

// c2 of SPX_USR_PLYFABRIC.
double plyStiffness(const UserState& s) {
  const Properties& p = s.properties;
  return std::max(p[0], p[1]) / (1 - p[2] * p[2] * p[1] / p[0]) + p[3];
}

} // namespace sharedanalysis::solver
