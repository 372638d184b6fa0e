#include "solver/program/path_mode.h"

#include "glo.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace sharedanalysis::solver {

const std::vector<std::string>& modeNames() {
  static const std::vector<std::string> names = {"uniaxial",   "equibiaxial", "planar",
                                                 "volumetric", "shear",       "confined"};
  return names;
}

int freeDirections(Mode mode, bool isSheet) {
  const int free = mode == Mode::Uniaxial ? 2 : mode == Mode::Equibiaxial || mode == Mode::Planar ? 1 : 0;
  return std::max(0, free - (isSheet ? 1 : 0));
}

Stretch stretchOf(Mode mode, double s, double free, bool isSheet) {
  switch (mode) {
  case Mode::Uniaxial:
    return {s, free, isSheet ? 1 : free, 0, 0, 0};
  case Mode::Equibiaxial:
    return {s, s, free, 0, 0, 0};
  case Mode::Planar:
    return {s, 1, free, 0, 0, 0};
  case Mode::Volumetric:
    return {s, s, s, 0, 0, 0};
  case Mode::Confined:
    return {s, 1, 1, 0, 0, 0};
  case Mode::Shear: {
    const int32_t one = 1;
    const double b[6] = {1 + s * s, 1, 1, s, 0, 0}; // F F'
    Stretch V;
    GLO_UTI_SQRTV(&one, b, V.data());
    return V;
  }
  }
  return {};
}

Gradient gradientOf(Mode mode, double s, const Stretch& V) {
  if (mode == Mode::Shear) return {1, s, 0, 0, 1, 0, 0, 0, 1};
  return {V[0], 0, 0, 0, V[1], 0, 0, 0, V[2]};
}

double isochoric(Mode mode, double s) {
  return mode == Mode::Uniaxial ? 1 / std::sqrt(s) : mode == Mode::Equibiaxial ? 1 / (s * s) : 1 / s;
}

double nominalStress(Mode mode, double s, double a, bool isSheet, const std::array<double, 6>& t) {
  switch (mode) {
  case Mode::Uniaxial:
    return t[0] * a * (isSheet ? 1 : a);
  case Mode::Equibiaxial:
    return t[0] * s * a;
  case Mode::Planar:
    return t[0] * a;
  case Mode::Volumetric:
    return t[0] * s * s;
  case Mode::Confined:
    return t[0];
  case Mode::Shear:
    return t[3]; // the sheared faces keep their area
  }
  return 0;
}

namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

// Up to kMostPoints stretches at once: all look for their free stretch together, by a bracket and the secant within it.
class Block {
public:
  Block(const Material& material, Mode mode, const double* s, std::size_t n)
      : mode_(mode), s_(s), n_(n), points_(material, static_cast<int32_t>(n)), V_(6 * n), t_(6 * n), x_(n), bound_(n),
        bulk_(n) {}

  void run(double* free, double* nominal) {
    const bool isFree = freeDirections(mode_, false) > 0;
    for (std::size_t i = 0; i < n_; ++i) x_[i] = !isFree ? 1 : free[i] > 0 ? free[i] : isochoric(mode_, s_[i]);
    evaluate();
    if (isFree) search();
    for (std::size_t i = 0; i < n_; ++i) {
      std::array<double, 6> t{};
      for (std::size_t c = 0; c < 6; ++c) t[c] = t_[c * n_ + i];
      const double volume = mode_ == Mode::Shear ? 1 : V_[i] * V_[n_ + i] * V_[2 * n_ + i];
      nominal[i] = volume >= kSmallestVolume ? nominalStress(mode_, s_[i], x_[i], false, t) : kNone;
      free[i] = x_[i];
    }
  }

private:
  struct Bracket {
    double below, beyond, fBelow, fBeyond; // the root is between them
    double growth;
    bool isClosed, isDone;
  };

  double left(std::size_t i) const { return t_[2 * n_ + i]; }

  void evaluate() {
    for (std::size_t i = 0; i < n_; ++i) {
      const Stretch V = stretchOf(mode_, s_[i], x_[i], false);
      for (std::size_t c = 0; c < 6; ++c) V_[c * n_ + i] = V[c];
    }
    points_.respond(V_.data(), nullptr, 1, t_.data(), bound_.data(), bulk_.data(), work_);
  }

  // As the driver does for one state: a bracket grows from the start by factors, up to some 30 in all.  The first one is by
  // the stiffness somewhat beyond the root.
  void search() {
    std::vector<Bracket> b(n_);
    for (std::size_t i = 0; i < n_; ++i) {
      const double step = 1.2 * std::abs(left(i)) / (bound_[i] + bulk_[i] / 3);
      b[i] = {x_[i], x_[i], left(i), left(i), step > 1e-12 && step < 0.01 ? step : 1e-6, false, left(i) == 0};
    }
    for (int k = 0; k < 100; ++k) {
      bool isBusy = false;
      for (std::size_t i = 0; i < n_; ++i) {
        if (b[i].isClosed || b[i].isDone) continue;
        isBusy = true;
        b[i].below = b[i].beyond, b[i].fBelow = b[i].fBeyond;
        x_[i] = b[i].fBeyond < 0 ? x_[i] * (1 + b[i].growth) : x_[i] / (1 + b[i].growth);
        b[i].growth = std::min(4 * b[i].growth, 0.01 * (1 + k / 20));
      }
      if (!isBusy) break;
      evaluate();
      for (std::size_t i = 0; i < n_; ++i) {
        if (b[i].isClosed || b[i].isDone) continue;
        b[i].beyond = x_[i], b[i].fBeyond = left(i);
        b[i].isDone = !std::isfinite(left(i)) || left(i) == 0;
        b[i].isClosed = (b[i].fBelow < 0) != (b[i].fBeyond < 0);
      }
    }
    narrow(b);
  }

  // Secants, the weight of an end that stays halved each time.
  void narrow(std::vector<Bracket>& b) {
    for (std::size_t i = 0; i < n_; ++i) b[i].isDone = b[i].isDone || !b[i].isClosed;
    for (int k = 0; k < 200; ++k) {
      bool isBusy = false;
      for (std::size_t i = 0; i < n_; ++i) {
        if (b[i].isDone) continue;
        const double before = x_[i], low = std::min(b[i].below, b[i].beyond), high = std::max(b[i].below, b[i].beyond);
        double x = b[i].beyond - b[i].fBeyond * (b[i].beyond - b[i].below) / (b[i].fBeyond - b[i].fBelow);
        if (!(x > low && x < high) || k % 8 == 7) x = 0.5 * (low + high);
        x_[i] = x;
        b[i].isDone = x == before || x == low || x == high;
        isBusy = isBusy || !b[i].isDone;
      }
      evaluate();
      if (!isBusy) break;
      for (std::size_t i = 0; i < n_; ++i) {
        if (b[i].isDone) continue;
        const double f = left(i);
        b[i].isDone = !std::isfinite(f) || f == 0;
        if ((f < 0) == (b[i].fBeyond < 0))
          b[i].fBelow *= 0.5;
        else
          b[i].below = b[i].beyond, b[i].fBelow = b[i].fBeyond;
        b[i].beyond = x_[i], b[i].fBeyond = f;
      }
    }
    for (std::size_t i = 0; i < n_; ++i)
      if (!b[i].isClosed && left(i) != 0) x_[i] = kNone;
  }

  Mode mode_;
  const double* s_;
  std::size_t n_;
  MaterialPoints points_;
  MaterialWork work_;
  std::vector<double> V_, t_, x_, bound_, bulk_;
};

} // namespace

std::vector<double> nominalStresses(const Material& material, Mode mode, const std::vector<double>& stretches,
                                    std::vector<double>& free) {
  free.resize(stretches.size());
  std::vector<double> stresses(stretches.size());
  for (std::size_t at = 0; at < stretches.size(); at += kMostPoints) {
    const std::size_t count = std::min<std::size_t>(kMostPoints, stretches.size() - at);
    Block(material, mode, &stretches[at], count).run(&free[at], &stresses[at]);
  }
  return stresses;
}

} // namespace sharedanalysis::solver
