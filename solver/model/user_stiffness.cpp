#include "solver/model/user_stiffness.h"

#include "glo.h"

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

// A family of curves: rows of (rate, number of rows), then the rows.
struct Family {
  const double* table = nullptr;
  std::size_t rates = 0;

  std::size_t rowsOf(std::size_t k) const { return static_cast<std::size_t>(table[2 * k + 1]); }
  const double* curves() const { return table + 2 * rates; }
  const double* end() const {
    const double* at = curves();
    for (std::size_t k = 0; k < rates; ++k) at += 2 * rowsOf(k);
    return at;
  }
  double slowest(double strain) const { return valueOn(curves(), rowsOf(0), strain); }
  // Change of the stress with the rate.  Between the rates r1 and r2 it is T1 + (T2 - T1) ln(r/r1)/ln(r2/r1), whose slope is
  // (T2 - T1)/(r ln(r2/r1)); it is held below the first rate and beyond the last.
  double perRate(double strain, double rate) const {
    const double* low = curves();
    for (std::size_t k = 0; k + 1 < rates; ++k) {
      const double *high = low + 2 * rowsOf(k), from = table[2 * k], to = table[2 * k + 2];
      if (rate > from && rate <= to)
        return (valueOn(high, rowsOf(k + 1), strain) - valueOn(low, rowsOf(k), strain)) / (rate * std::log(to / from));
      low = high;
    }
    return 0;
  }
};

// Behind the filter an increment dt moves the rate by 1 - exp(-dt/tau) of its change alone.
double filtered(const UserState& s, double tau) { return tau > 0 ? -std::expm1(-s.increment / tau) : 1; }

} // namespace

double steepest(const double* rows, std::size_t count) {
  double slope = 0;
  for (std::size_t r = 1; r < count; ++r)
    slope = std::max(slope, (rows[2 * r] - rows[2 * r - 2]) / (rows[2 * r + 1] - rows[2 * r - 1]));
  return slope;
}

// With e = 1 - l of a direction, T its nominal stress by the slowest curve and t = T/|T|, all follow one rate r, the sum of t de/dt
// = -t l D.  The Cauchy stress being T l/J, stress changes with D by a dyad, and the norms of both vectors make its norm.
double rateSensitiveViscosity(const UserState& s) {
  const Properties& p = s.properties;
  const Family family{&p[7], static_cast<std::size_t>(p[6])};
  const double rate = s.variables[s.stride];
  double changes = 0, stresses = 0, rateOfD = 0;
  for (const double l : s.stretches) {
    const double e = 1 - l, tension = p[1] > 0 ? std::max(p[0] * e, -p[1]) : p[0] * e;
    const double T = e < 0 ? tension : family.slowest(e), change = e > 0 ? l * family.perRate(e, rate) : 0;
    changes += change * change, stresses += T * T, rateOfD += l * l * T * T;
  }
  return stresses > 0 ? filtered(s, p[5]) * std::sqrt(changes) * std::sqrt(rateOfD / stresses) / s.J : 0;
}

// Each principal direction follows its own rate, r = -+ l D: the Cauchy stress T l/J changes by l^2/J of the slope.
double fuChangViscosity(const UserState& s) {
  const Properties& p = s.properties;
  const Family family{&p[6], static_cast<std::size_t>(p[5])};
  const int32_t one = 1;
  double U[6], values[3], axes[9], largest = 0;
  for (std::size_t c = 0; c < 6; ++c) U[c] = s.stretch[c * s.stride];
  GLO_UTI_EIG33V(&one, U, values, axes);
  const bool hasTension = family.curves()[1] < 0;
  for (std::size_t a = 0; a < 3; ++a) {
    const double l = values[a], e = 1 - l, x = axes[3 * a], y = axes[3 * a + 1], z = axes[3 * a + 2];
    if (e < 0 && !hasTension) continue;
    const auto D = [&s](std::size_t c) { return s.variables[(1 + c) * s.stride]; };
    const double along = D(0) * x * x + D(1) * y * y + D(2) * z * z + 2 * (D(3) * x * y + D(4) * y * z + D(5) * x * z);
    largest = std::max(largest, std::abs(family.perRate(e, e < 0 ? along : -along)) * l * l);
  }
  return filtered(s, p[4]) * largest / s.J;
}

// By component of U, each with its own rate: T_ii and, with 2 U_ij for a strain, T_ij.
double orthotropicFuChangViscosity(const UserState& s) {
  const Properties& p = s.properties;
  Family family;
  const double* table = &p[11];
  double largest = 0;
  for (std::size_t c = 0; c < 6; ++c) {
    if (p[5 + c] > 0) family = {table, static_cast<std::size_t>(p[5 + c])}, table = family.end();
    const double u = s.stretch[c * s.stride], rate = s.variables[(6 + c) * s.stride];
    const double x = c < 3 ? 1 - u : 2 * std::abs(u), factor = c < 3 ? 1 : 2;
    const double loading = c < 3 ? (x < 0 ? rate : -rate) : 2 * std::copysign(rate, rate * u);
    if (x < 0 && !(family.curves()[1] < 0)) continue;
    largest = std::max(largest, factor * std::abs(family.perRate(x, loading)));
  }
  return filtered(s, p[4]) * largest * s.longest * s.longest / s.J;
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
