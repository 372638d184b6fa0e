// Superelastic alloy in three dimensions and in plane stress.
#pragma once

#include "spx/impl/user/superelastic_law.h"

namespace sa::user::alloy {

// F at fixed total strain, N = |e|.
SA_INLINE Norm normAt(const Superelastic& m, double N, double volume) {
  return normPart(2.0, m.G, m.dG, N, m.eD) + normPart(3.0 * m.alpha, m.K, m.dK, volume, m.eV);
}

// What is left of strains that cancel is their round-off: without a trace that is none of the volume's, and without a direction of
// its own.  Martensite may be left there, whose stress needs one: it is that from which the point has come, of next to no strain.
// From the strain deviator e, the squares of the norms of what it is made of, and the part from which the point has come.
constexpr double kCancels = 1e-8; // of the squares
template <class Storage>
SA_INLINE Sym<Storage> settled(const Sym<Storage>& e, double squares, const Sym<Storage>& from) {
  constexpr double kIsRoundOff = 1e-26; // of the squares
  constexpr double kNextToNothing = 1e-15;
  const double square = product(e, e);
  const Sym<Storage> traceless = select(square <= kCancels * squares, deviator(e), e);
  return select(square <= kIsRoundOff * squares, kNextToNothing * from, traceless);
}

// Where a point stands: total strain, deviator and volume, fraction and F.  The strain comes from stress and transformation
// strain, so that initial stress has its strain too; F comes from the strain, as at the end: where nothing moves, both are the
// same to the bit.
template <class Storage>
struct Start {
  Sym<Storage> e;
  double volume, xi, norm;
};
// kSettles: else strains are known not to cancel.  Whether they do is told by `cancels`, if it is asked for.
template <bool kSettles = true, class Storage>
SA_INLINE Start<Storage> startOf(const Superelastic& m, double xi, const Sym<Storage>& stress,
                                 const Sym<Storage>& change, bool* cancels = nullptr) {
  const Sym<Storage> transformed = deviator(change), s = deviator(stress);
  const double perG2 = 1.0 / (2.0 * (m.G + xi * m.dG));
  const double squares = product(transformed, transformed) + (perG2 * perG2) * product(s, s);
  Sym<Storage> e = sum(transformed, perG2, s);
  if constexpr (kSettles) e = settled(e, squares, transformed);
  const double volume = trace(stress) / (3.0 * (m.K + xi * m.dK)) + trace(change), square = product(e, e);
  if (cancels != nullptr) *cancels = square <= kCancels * squares;
  return {e, volume, xi, normAt(m, vm::sqrt(square), volume)(xi)};
}

struct Response {
  double xi, shearFactor, pressure; // stress = shearFactor e + pressure 1
  double changeFactor;              // deviator of the transformation strain = changeFactor e
  double norm;                      // F
  double elasticEnergy;
  double perNorm; // of xi with F
};

// Stress at total strain (e, volume).  Its direction is that of the strain deviator: s = 2 G (1 - eD xi/|e|) e.
SA_INLINE Response respond(const Superelastic& m, double volume, double N, const Norm& F, const Fraction& f) {
  const double perN = 1.0 / vm::max(1e-100, N);
  const double G2 = 2.0 * (m.G + f.xi * m.dG), K = m.K + f.xi * m.dK;
  const double part = m.eD * f.xi * perN, elastic = 1.0 - part, elasticVolume = volume - m.eV * f.xi;
  const double energy = 0.5 * (G2 * (elastic * N) * (elastic * N) + K * elasticVolume * elasticVolume);
  return {f.xi, G2 * elastic, K * elasticVolume, part, F(f.xi), energy, f.perNorm};
}

// The points of a piece: where they stand, and the rest of their increment with its temperatures.
template <class Storage>
struct Points {
  double e[6 * kScratchPoints], volume[kScratchPoints], xi[kScratchPoints], norm[kScratchPoints];
  double strain[6 * kScratchPoints], tempOld[kScratchPoints], tempNew[kScratchPoints];
  double part[kScratchPoints];                                // of the rest, to go in one step
  double across[kScratchPoints];                              // strain across in that step, for plane stress
  double slope[kScratchPoints];                               // of the limit with temperature that F is compared with
  double moved[kScratchPoints], movedPerNorm[kScratchPoints]; // the fraction after that step, by a law that iterates
  double reached[kScratchPoints];                             // norm of the strain after the step of an ordinary piece

  SA_INLINE Start<Storage> start(int k) const {
    return {loadTensor<Storage>(e, kScratchPoints, k), volume[k], xi[k], norm[k]};
  }
  SA_INLINE void setStart(int k, const Start<Storage>& s) {
    storeTensor(e, kScratchPoints, k, s.e);
    volume[k] = s.volume, xi[k] = s.xi, norm[k] = s.norm;
  }
  SA_INLINE Sym<Storage> rest(int k) const { return loadTensor<Storage>(strain, kScratchPoints, k); }
  SA_INLINE double tempAt(int k, double share) const { return tempOld[k] + share * (tempNew[k] - tempOld[k]); }
  SA_INLINE void take(int k, const Points& from, int place) {
    setStart(k, from.start(place));
    storeTensor(strain, kScratchPoints, k, from.rest(place));
    tempOld[k] = from.tempOld[place], tempNew[k] = from.tempNew[place], slope[k] = from.slope[place];
  }
};

// The elastic strain across of plane stress.
template <class Storage>
SA_INLINE double elasticAcross(const Superelastic& m, double xi, const Sym<Storage>& strain) {
  const double G2 = 2.0 * (m.G + xi * m.dG), K3 = 3.0 * (m.K + xi * m.dK);
  return -(K3 - G2) / (K3 + 2.0 * G2) * (strain.s11 + strain.s22);
}

// A share of the rest, with the strain across given in plane stress.
template <bool kPlaneStress, class Storage>
SA_INLINE Sym<Storage> shareOf(const Sym<Storage>& rest, double share, double across) {
  Sym<Storage> inc = share * rest;
  if constexpr (kPlaneStress) inc.s33 = across;
  return inc;
}

// A point after its step.
template <class Storage>
struct Reached {
  Sym<Storage> inc, e;
  double volume, N;
  Norm F;
  Limits limits;
};
template <bool kPlaneStress, bool kSettles = true, class Storage>
SA_INLINE Reached<Storage> reachedBy(const Superelastic& m, const Points<Storage>& points, int k, double across) {
  const Start<Storage> s = points.start(k);
  const double share = points.part[k];
  const Sym<Storage> inc = shareOf<kPlaneStress>(points.rest(k), share, across), de = deviator(inc);
  Sym<Storage> e = sum(s.e, 1.0, de);
  if constexpr (!kPlaneStress && kSettles) e = settled(e, product(s.e, s.e) + product(de, de), s.e);
  const double volume = s.volume + trace(inc);
  const double N = kSettles ? vm::sqrt(product(e, e)) : points.reached[k];
  return {inc, e, volume, N, normAt(m, N, volume), limitsAt(m, s.norm, points.tempOld[k], points.tempAt(k, share))};
}
template <class Storage, class Law>
SA_INLINE Response responseAt(const Law& m, const Points<Storage>& points, int k, const Reached<Storage>& at) {
  if constexpr (Law::kIterates)
    return respond(m, at.volume, at.N, at.F, Fraction{points.moved[k], points.movedPerNorm[k]});
  else
    return respond(m, at.volume, at.N, at.F, transform(m, at.F, points.xi[k], at.limits));
}

// The fractions after the step of all points, before anything asks for their response.
template <bool kPlaneStress, bool kSettles = true, class Storage, class Law>
SA_INLINE void findFractions(const Law& model, int count, Points<Storage>& points) {
  if constexpr (Law::kIterates) {
    const Law m = model;
    Ways ways;
    forPoints(count, [=, &points, &ways](int k) SA_POINT {
      const Reached<Storage> at = reachedBy<kPlaneStress, kSettles>(m, points, k, points.across[k]);
      points.moved[k] = ways.set(k, at.F, moveOf(at.F, points.xi[k], at.limits));
      points.movedPerNorm[k] = 0.0;
    });
    goWays(m, count, ways, points.moved, points.movedPerNorm);
  }
}

// The strain across that leaves no stress there, to the round-off of the stress, for points with active > 0; the others are
// left alone.  The stress rises with it; Newton's steps are kept between bounds that hold for any fraction, and a step that does
// not halve the stress gives way to a bisection.  From 1e-11 of the stress one more step of Newton's is all that it takes.
constexpr int kAcrossSteps = 64;
template <class Storage, class Law>
SA_INLINE void solveAcross(const Law& model, int count, Points<Storage>& points, const double* active) {
  const Law m = model;
  double low[kScratchPoints], high[kScratchPoints], last[kScratchPoints], best[kScratchPoints], runs[kScratchPoints];
  forPoints(count, [=, &points, &low, &high, &last, &best, &runs](int k) SA_POINT {
    const Start<Storage> s = points.start(k);
    const Sym<Storage> inc = points.rest(k);
    const double bound = 4.0 * (vm::sqrt(product(s.e, s.e)) + vm::abs(s.volume) + m.eD + vm::abs(m.eV) +
                                points.part[k] * (vm::abs(inc.s11) + vm::abs(inc.s22) + vm::abs(inc.s12)));
    low[k] = -bound;
    high[k] = bound;
    last[k] = vm::kInfinity;
    best[k] = points.across[k];
    runs[k] = active[k];
  });
  bool isRunning = isAnySet(count, runs);
  for (int step = 0; step < kAcrossSteps && isRunning; ++step) {
    findFractions<true>(m, count, points);
    forPoints(count, [=, &points, &low, &high, &last, &best, &runs](int k) SA_POINT {
      const double x = points.across[k], lowOld = low[k], highOld = high[k], lastOld = last[k], bestOld = best[k],
                   ran = runs[k];
      const Reached<Storage> at = reachedBy<true>(m, points, k, x);
      const Sym<Storage> e = at.e;
      const Response r = responseAt(m, points, k, at);
      const double value = r.shearFactor * e.s33 + r.pressure, size = vm::abs(value);
      // d/d(strain across): of |e|, of the volume and, through F, of xi
      const double N = at.N, volume = at.volume, perN = 1.0 / vm::max(1e-100, N), dN = e.s33 * perN;
      const double G2 = 2.0 * (m.G + r.xi * m.dG), K = m.K + r.xi * m.dK, elastic = 1.0 - r.changeFactor;
      const double dxi = r.perNorm * (G2 * dN + 3.0 * m.alpha * K);
      const double slope = (2.0 * m.dG * dxi * elastic - G2 * m.eD * perN * (dxi - r.xi * dN * perN)) * e.s33 +
                           G2 * elastic * (2.0 / 3.0) + m.dK * dxi * (volume - m.eV * r.xi) + K * (1.0 - m.eV * dxi);
      const double next = x - value / slope;
      const double lower = vm::select(value < 0.0, x, lowOld), upper = vm::select(value > 0.0, x, highOld);
      const bool isGood = (next >= lower) & (next <= upper) & (size <= 0.5 * lastOld);
      const double scale = G2 * N + K * vm::abs(volume);
      const bool isClose = size <= 1e-11 * scale, goes = (size > 1e-11 * scale) & (upper - lower > 0.0) & (ran > 0.0);
      const double polished = vm::max(lower, vm::min(upper, next));
      const double bestNow = vm::select(isClose, polished, vm::select(size < lastOld, x, bestOld));
      points.across[k] = vm::select(goes, vm::select(isGood, next, 0.5 * (lower + upper)), x);
      low[k] = lower;
      high[k] = upper;
      last[k] = vm::select(size < lastOld, size, lastOld);
      best[k] = vm::select(ran > 0.0, bestNow, bestOld);
      runs[k] = vm::select(goes, 1.0, 0.0);
    });
    isRunning = isAnySet(count, runs);
  }
  forPoints(count, [=, &points, &best](int k) SA_POINT { points.across[k] = best[k]; });
}

// How F rises above its limit over the rest of the increment, at the strain deviator e and the fraction xi; in plane stress with
// the strain across that keeps the stress there at zero.
template <bool kPlaneStress, class Storage>
SA_INLINE double riseAt(const Superelastic& m, const Points<Storage>& points, int k, const Sym<Storage>& e, double xi) {
  const double tr0 = kPlaneStress ? points.rest(k).s11 + points.rest(k).s22 : trace(points.rest(k));
  const double perN = 1.0 / vm::max(1e-100, vm::sqrt(product(e, e)));
  const double G2 = 2.0 * (m.G + xi * m.dG), K = m.K + xi * m.dK;
  Sym<Storage> rate = points.rest(k);
  double across = 0.0, n1 = 0.0;
  if constexpr (kPlaneStress) {
    rate.s33 = 0.0;
    n1 = e.s33 * perN;
    const Sym<Storage> d = deviator(rate);
    const double part = m.eD * xi * perN, n0 = product(e, d) * perN;
    across = -(G2 * ((1.0 - part) * d.s33 + part * n0 * n1) + K * tr0) /
             (G2 * ((1.0 - part) * (2.0 / 3.0) + part * n1 * n1) + K);
  }
  const double dN = product(e, deviator(rate)) * perN + across * n1;
  return G2 * dN + 3.0 * m.alpha * K * (tr0 + across) - points.slope[k] * (points.tempNew[k] - points.tempOld[k]);
}

// The same at `points.part`, which is reached with the strain across of `points`.
template <bool kPlaneStress, class Storage, class Law>
SA_INLINE double riseOfNorm(const Law& m, const Points<Storage>& points, int k) {
  const Reached<Storage> at = reachedBy<kPlaneStress>(m, points, k, points.across[k]);
  const Sym<Storage> e = at.e;
  const Response r = responseAt(m, points, k, at);
  return riseAt<kPlaneStress>(m, points, k, e, r.xi);
}

// The share of the rest at which F turns from falling to rising, 0.0 where it does not.  While nothing transforms and the strain
// keeps its direction the place is known; where it moves with the fraction (moduli in another ratio, temperature, the strain
// across of plane stress) it is found by false position (Illinois) among those points alone.
constexpr int kTurnSteps = 64;
template <bool kPlaneStress, class Storage, class Law>
SA_INLINE void searchTurn(const Law& model, int count, Points<Storage>& points, double* turn) {
  const Law m = model;
  double low[kScratchPoints], high[kScratchPoints], atLow[kScratchPoints], atHigh[kScratchPoints], side[kScratchPoints],
      runs[kScratchPoints], guess[kScratchPoints];
  const auto settle = [=, &points](int k, double share) SA_POINT { // where the strain across starts from
    points.part[k] = share;
    if constexpr (kPlaneStress) points.across[k] = share * elasticAcross(m, points.xi[k], points.rest(k));
  };
  forPoints(count, [=, &points](int k) SA_POINT { settle(k, 0.0); });
  findFractions<kPlaneStress>(m, count, points);
  forPoints(count, [=, &points, &low, &high, &atLow, &atHigh, &side, &runs, &guess](int k) SA_POINT {
    low[k] = 0.0;
    atLow[k] = riseOfNorm<kPlaneStress>(m, points, k);
    high[k] = atHigh[k] = 1.0;
    side[k] = 0.0;
    runs[k] = 1.0;
    guess[k] = turn[k];
    settle(k, 1.0);
  });
  bool isRunning = true;
  for (int step = 0; step < kTurnSteps && isRunning; ++step) {
    const double bisects = step % 4 == 3 ? 1.0 : 0.0,
                 isFirst = step == 0 ? 1.0 : 0.0; // the first is the end of the way
    if constexpr (kPlaneStress) solveAcross(m, count, points, runs);
    findFractions<kPlaneStress>(m, count, points);
    forPoints(count, [=, &points, &low, &high, &atLow, &atHigh, &side, &runs, &guess](int k) SA_POINT {
      const double t = points.part[k], lower = low[k], upper = high[k], below = atLow[k], above = atHigh[k],
                   last = side[k], known = guess[k];
      const double value = riseOfNorm<kPlaneStress>(m, points, k);
      const double signs = vm::select(below < 0.0, value, -1.0);
      const bool turns = vm::max(1.0 - isFirst, signs) > 0.0;
      const bool isLow = value < 0.0, ran = (runs[k] > 0.0) & turns;
      const double a = vm::select(isLow, t, lower), b = vm::select(isLow, upper, t);
      const double fa = vm::select(isLow, value, below * vm::select(last < 0.0, 0.5, 1.0)),
                   fb = vm::select(isLow, above * vm::select(last > 0.0, 0.5, 1.0), value);
      const double secant = (a * fb - b * fa) / vm::select(fb > fa, fb - fa, 1e-300);
      const double inside = vm::select((secant - bisects >= a) & (secant <= b), secant, 0.5 * (a + b));
      const double next = vm::select(isFirst * known > 0.0, known, inside);
      const bool goes = ran & (vm::abs(next - t) > 1e-14) & (b - a > 1e-14) & (value != 0.0);
      low[k] = vm::select(goes, a, lower);
      high[k] = vm::select(goes, b, upper);
      atLow[k] = vm::select(goes, fa, below);
      atHigh[k] = vm::select(goes, fb, above);
      side[k] = vm::select(isLow, 1.0, -1.0) * (1.0 - isFirst);
      runs[k] = vm::select(goes, 1.0, 0.0);
      settle(k, vm::select(turns, vm::select(goes, next, t), 0.0));
    });
    isRunning = isAnySet(count, runs);
  }
  forPoints(count, [=, &points](int k) SA_POINT { turn[k] = points.part[k]; });
}

template <bool kPlaneStress, class Storage, class Law>
SA_INLINE void findTurn(const Law& model, int length, Points<Storage>& points, double* turn, bool isThermal) {
  const Law m = model;
  forPoints(length, [=, &points](int k) SA_POINT {
    const double xi = points.xi[k];
    Sym<Storage> strain = points.rest(k);
    if constexpr (kPlaneStress) strain.s33 = elasticAcross(m, xi, strain);
    const double G2 = 2.0 * (m.G + xi * m.dG), K3 = 3.0 * (m.K + xi * m.dK);
    const Sym<Storage> e = points.start(k).e, de = deviator(strain);
    const double q = (m.alpha * K3 * trace(strain) - points.slope[k] * (points.tempNew[k] - points.tempOld[k])) / G2;
    const double along = product(e, de), square = product(de, de);
    const Sym<Storage> across = sum(e, -along / vm::select(square > 0.0, square, 1.0), de);
    turn[k] = smallestNorm(along, square, product(across, across), q);
  });
  if (!kPlaneStress && !m.moves && !isThermal) return;
  // F turns only where it falls at first and may rise at the end: in plane stress with the strain across of the whole rest, else
  // at whatever fraction is reached
  double may[kScratchPoints];
  if constexpr (kPlaneStress) findFractions<true>(m, length, points);
  forPoints(length, [=, &points, &may](int k) SA_POINT {
    const double first = riseAt<kPlaneStress>(m, points, k, points.start(k).e, points.xi[k]);
    double last = 0.0;
    if constexpr (kPlaneStress) {
      last = riseOfNorm<true>(m, points, k);
    } else {
      const Sym<Storage> e = sum(points.start(k).e, 1.0, deviator(points.rest(k)));
      last = vm::max(riseAt<false>(m, points, k, e, 0.0), riseAt<false>(m, points, k, e, 1.0));
    }
    may[k] = vm::select(first < 0.0, last, 0.0);
  });
  // a point that keeps its temperature is not to know of others that do not
  int place[kScratchPoints], count = 0;
  for (int k = 0; k < length; ++k) {
    const bool isSought = points.xi[k] > 0.0 && (kPlaneStress || m.moves || points.tempNew[k] != points.tempOld[k]);
    place[count] = k;
    count += isSought && may[k] > 0.0 ? 1 : 0;
    turn[k] = isSought && !(may[k] > 0.0) ? 0.0 : turn[k];
  }
  if (count == 0) return;
  fillUp(count, place);
  Points<Storage> those;
  double found[kScratchPoints];
  for (int j = 0; j < packedLength(count); ++j) {
    those.take(j, points, place[j]);
    found[j] = turn[place[j]];
  }
  searchTurn<kPlaneStress>(m, packedLength(count), those, found);
  for (int j = 0; j < count; ++j) turn[place[j]] = found[j];
}

// Where an increment starts.
struct Arrays {
  const double *stress, *state, *internal, *inelastic;
};

template <class Storage>
SA_INLINE void findStart(const Block& b, const Superelastic& model, const Arrays& from, int start, int length,
                         Points<Storage>& points) {
  const Superelastic m = model;
  const int64_t n = b.points;
  const double *stress = from.stress, *state = from.state;
  forPoints(length, [=, &points](int k) SA_POINT {
    const int i = start + k;
    points.setStart(k, startOf(m, state[i], loadTensor<Storage>(stress, n, i), loadTensor<Storage>(state + n, n, i)));
  });
}

// Most pieces are ordinary: no strain cancels, neither at the start nor at the end, and F of no point turns from falling to rising,
// so that each takes its increment in one part.  F is convex along the path: it turns nowhere if it rises at the start or falls at
// the end, or if the volume moves it faster than the strain deviator can.  Near to either, where the place of the turn might
// still be found inside by its round-off, and where that is ill posed, a piece counts as not ordinary and is worked through
// anew; both ways give a point of an ordinary piece the same bits.
template <class Storage>
SA_INLINE bool isOrdinary(const Block& b, const Superelastic& model, const Arrays& from, int start, int length,
                          Points<Storage>& points) {
  constexpr double kNear = 1e-5 * 1e-5, kIllPosed = 1e-6;
  const Superelastic m = model;
  const int64_t n = b.points;
  const double *stress = from.stress, *state = from.state;
  Lane isOther;
  forPoints(length, [=, &points, &isOther](int k) SA_POINT {
    const int i = start + k;
    const double xi = state[i];
    bool cancels = false;
    const Start<Storage> s =
        startOf<false>(m, xi, loadTensor<Storage>(stress, n, i), loadTensor<Storage>(state + n, n, i), &cancels);
    const Sym<Storage> rest = points.rest(k), de = deviator(rest), e = sum(s.e, 1.0, de);
    const double before = product(s.e, s.e), along = product(s.e, de), square = product(de, de), now = product(e, e);
    const double N = vm::sqrt(now), G2 = 2.0 * (m.G + xi * m.dG), K3 = 3.0 * (m.K + xi * m.dK);
    // of F over the path, times |e|
    const double volume = m.alpha * K3 * trace(rest), atStart = G2 * along + volume * vm::sqrt(before),
                 atEnd = G2 * (along + square) + volume * N;
    const double size = square * (G2 * G2), rise = size - volume * volume;
    const bool risesAtOnce = (atStart > 0.0) & (atStart * atStart > kNear * (size * before)),
               fallsToTheEnd = (atEnd < 0.0) & (atEnd * atEnd > kNear * (size * now)),
               neverTurns = (rise < -kIllPosed * size) | (size == 0.0), isPosed = rise > kIllPosed * size;
    const bool isOne =
        (neverTurns | (isPosed & (risesAtOnce | fallsToTheEnd))) & !cancels & (now > kCancels * (before + square));
    points.setStart(k, s);
    points.reached[k] = N;
    points.part[k] = 1.0;
    isOther[k] = vm::select(isOne, 0.0, 1.0);
  });
  return !isAnySet(length, isOther);
}

// One part of the increment.  The first parts leave points that have none as they are, to the bit: then they may be left out
// where no point of a piece has one.
template <bool kFirstPart, bool kPlaneStress, bool kSettles = true, class Storage, class Law>
SA_INLINE void advance(const Block& b, const Law& model, const Arrays& from, int start, int length,
                       Points<Storage>& points) {
  const Law m = model;
  const int64_t n = b.points;
  [[maybe_unused]] const double perFactor = 1.0 / (kRoot + m.alpha);
  const double *density = b.density, *stressOld = from.stress, *stateOld = from.state, *internalOld = from.internal,
               *inelasticOld = from.inelastic;
  double *stress = b.stress, *state = b.state, *internal = b.internal, *inelastic = b.inelastic;
  findFractions<kPlaneStress, kSettles>(m, length, points);
  forPoints(length, [=, &points](int k) SA_POINT {
    const int i = start + k;
    const double intOld = internalOld[i], inelOld = inelasticOld[i], perDensity = 1.0 / density[i];
    const Sym<Storage> old = loadTensor<Storage>(stressOld, n, i);
    [[maybe_unused]] const Sym<Storage> change = loadTensor<Storage>(stateOld + n, n, i);
    const double share = points.part[k], temperature = points.tempAt(k, share);
    const Reached<Storage> at = reachedBy<kPlaneStress, kSettles>(m, points, k, points.across[k]);
    const Sym<Storage> inc = at.inc, e = at.e;
    const Response r = responseAt(m, points, k, at);
    Sym<Storage> now = sum(r.shearFactor * e, r.pressure);
    if constexpr (kPlaneStress) now.s33 = 0.0;
    const Sym<Storage> changeNow = sum(r.changeFactor * e, r.xi * (m.eV * (1.0 / 3.0)));
    // the stress of martensite that is left without strain turns with the strain that comes
    const Start<Storage> s = points.start(k);
    const double perN = 1.0 / vm::max(1e-100, at.N);
    const double turned = trace(old) * (1.0 / 3.0) * trace(inc) -
                          2.0 * (m.G + s.xi * m.dG) * m.eD * s.xi * (product(e, deviator(inc)) * perN);
    const double workOld =
        vm::select(!kPlaneStress & (product(s.e, s.e) <= 1e-24 * (at.N * at.N)), turned, product(old, inc));
    // lost is what the stress has worked and the point can not give back
    const double internalNow = intOld + 0.5 * (workOld + product(now, inc)) * perDensity;
    const double stored = r.elasticEnergy + r.xi * m.storedPerXi(temperature);
    const double inelasticNow = grown(inelOld, internalNow - stored * perDensity);
    if constexpr (kFirstPart) {
      const bool moves = share > 0.0;
      internal[i] = vm::select(moves, internalNow, intOld);
      inelastic[i] = vm::select(moves, inelasticNow, inelOld);
      state[i] = vm::select(moves, r.xi, points.xi[k]);
      storeTensor(stress, n, i, select(moves, now, old));
      storeTensor(state + n, n, i, select(moves, changeNow, change));
    } else {
      internal[i] = internalNow;
      inelastic[i] = inelasticNow;
      state[i] = r.xi;
      storeTensor(stress, n, i, now);
      storeTensor(state + n, n, i, changeNow);
      if constexpr (!Storage::k23and13) {
        state[i + 5 * n] = 0.0;
        state[i + 6 * n] = 0.0;
      }
      state[i + kEquivalentStress * n] = r.norm * perFactor;
    }
  });
}

// The parts of an increment, in the order in which F turns against the two limits; they turn together where both move with
// temperature alike.
template <bool kPlaneStress, class Storage, class Law>
SA_INLINE void superelastic(const Block& b, const Law& model) {
  constexpr int kPiece = Law::kIterates ? 64 : 32; // what the passes hand on stays in the first level of the cache
  const int64_t n = b.points;
  forPieces<kPiece>(b.points, [n, &b, &model](int start, int length) SA_POINT {
    const Law m = model;
    const double factor = kRoot + m.alpha, slopeAM = factor * m.slopeAM, slopeMA = factor * m.slopeMA;
    const double *strainInc = b.strainInc, *tempOld = b.tempOld, *tempNew = b.tempNew;
    Points<Storage> points;
    Arrays from{b.stressOld, b.stateOld, b.internalOld, b.inelasticOld};
    double heated = 0.0;
    for (int k = 0; k < length; ++k) heated += tempNew[start + k] != tempOld[start + k] ? 1.0 : 0.0;
    const bool isThermal = heated > 0.0 && (m.slopeAM != 0.0 || m.slopeMA != 0.0),
               turnsTwice = isThermal && slopeAM != slopeMA;

    forPoints(length, [=, &points](int k) SA_POINT {
      const int i = start + k;
      storeTensor(points.strain, kScratchPoints, k, loadTensor<Storage>(strainInc, n, i));
      points.tempOld[k] = tempOld[i];
      points.tempNew[k] = tempNew[i];
      points.slope[k] = slopeMA;
    });
    if constexpr (!kPlaneStress)
      if (!isThermal && !m.moves && isOrdinary(b, m, from, start, length, points)) {
        advance<false, false, false>(b, m, from, start, length, points);
        return;
      }
    double turn[kScratchPoints], second[kScratchPoints] = {},
                                 open[kScratchPoints]; // open: the strain across is to be found
    findStart(b, m, from, start, length, points);
    // where limits move with temperature in two ways, both turns are looked for: the nearer comes first, and then the other is
    // looked for again
    const int rounds = turnsTwice ? 3 : 1;
    for (int k = 0; k < length; ++k) open[k] = 1.0;
    for (int round = 0;; ++round) {
      forPoints(length, [=, &points, &open](int k) SA_POINT {
        points.part[k] = 1.0;
        if constexpr (kPlaneStress)
          points.across[k] =
              vm::select(open[k] > 0.0, elasticAcross(m, points.xi[k], points.rest(k)), points.across[k]);
      });
      if constexpr (kPlaneStress) solveAcross(m, length, points, open);
      if (round == rounds) break;
      for (int k = 0; k < length; ++k) open[k] = 0.0;
      double found[kScratchPoints];
      findTurn<kPlaneStress>(m, length, points, found, isThermal);
      if (round == 0 && turnsTwice) {
        for (int k = 0; k < length; ++k) second[k] = found[k], points.slope[k] = slopeAM;
        continue;
      }
      for (int k = 0; k < length; ++k) {
        const double a = second[k], c = found[k];
        if (round == 0) {
          turn[k] = c;
        } else if (round == 1) {
          const bool isOther = c > 0.0 && (a <= 0.0 || c < a);
          turn[k] = isOther ? c : a;
          second[k] = a > 0.0 && c > 0.0 && a != c ? 1.0 : 0.0;
          points.slope[k] = isOther ? slopeMA : slopeAM;
        } else {
          turn[k] = a > 0.0 ? c : 0.0;
        }
      }
      double turns = 0.0;
      for (int k = 0; k < length; ++k) turns += turn[k] > 0.0 ? 1.0 : 0.0;
      if (!(turns > 0.0)) continue;
      forPoints(length, [=, &points, &turn, &open](int k) SA_POINT {
        points.part[k] = turn[k];
        open[k] = vm::select(turn[k] > 0.0, 1.0, 0.0);
        if constexpr (kPlaneStress)
          points.across[k] =
              vm::select(turn[k] > 0.0, turn[k] * elasticAcross(m, points.xi[k], points.rest(k)), points.across[k]);
      });
      if constexpr (kPlaneStress) solveAcross(m, length, points, open);
      advance<true, kPlaneStress>(b, m, from, start, length, points);
      from = {b.stress, b.state, b.internal, b.inelastic}; // the next part goes on from there
      forPoints(length, [=, &points, &turn](int k) SA_POINT {
        const double before = points.tempOld[k],
                     temperature = vm::select(turn[k] > 0.0, points.tempAt(k, turn[k]), before);
        storeTensor(points.strain, kScratchPoints, k, (1.0 - turn[k]) * points.rest(k));
        points.tempOld[k] = temperature;
      });
      findStart(b, m, from, start, length, points);
    }
    advance<false, kPlaneStress>(b, m, from, start, length, points);
  });
  keepStates(b, Superelastic::kStates);
}

} // namespace sa::user::alloy
