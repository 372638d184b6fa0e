// Superelastic shape-memory alloy: austenite, one martensite, and a transformation that is linear in a pressure-dependent
// norm of the stress.
#include "spx.h"
#include "spx/impl/user/frame.h"

namespace sa::user {
namespace {

constexpr double kRoot = 0x1.a20bd700c2c3ep-1; // sqrt(2/3): the norm of the deviator under a uniaxial stress of one

// State variables, from 0: fraction, transformation strain of six components, equivalent stress.
constexpr int kEquivalentStress = 7;

// By the name.
enum class Kind { uniaxial, planeStress, solid, unknown };
Kind kindOf(std::string_view name) {
  if (name.starts_with("TVK_SUPER_ELASTIC_N1D")) return Kind::uniaxial;
  if (name.starts_with("TVK_SUPER_ELASTIC_N2D")) return Kind::planeStress;
  if (name.starts_with("TVK_SUPER_ELASTIC_N3D")) return Kind::solid;
  return Kind::unknown;
}

struct Superelastic {
  static constexpr int kProperties = 14, kStates = 8;
  Kind kind;
  double G, dG, K, dK, E, dE; // of austenite, and what martensite has more
  double alpha, eD, eV, eTension, eCompression;
  double startAM, finishAM, startMA, finishMA; // uniaxial stresses
  double T0, slopeAM, slopeMA;
  bool moves; // the ratio of bulk to shear modulus goes with xi
  // work of the stress on one xi under a uniaxial stress s, in tension and compression: at the start of the transformation to
  // austenite no more than a s + rising s^2, at the start of that to martensite no less than a s - falling s^2
  double workTension, workCompression, risingTension, risingCompression, fallingTension, fallingCompression;

  static bool isRefused(const Block& b);
  bool isWrong(const Block&) const { return false; }
  explicit Superelastic(const Block& block) : kind(kindOf(block.name)) {
    const double* p = block.props;
    const auto shear = [](double e, double nu) { return e / (2.0 * (1.0 + nu)); };
    const auto bulk = [](double e, double nu) { return e / (3.0 * (1.0 - 2.0 * nu)); };
    E = p[0], G = shear(p[0], p[1]), K = bulk(p[0], p[1]);
    dE = p[2] - E, dG = shear(p[2], p[3]) - G, dK = bulk(p[2], p[3]) - K;
    startAM = p[5], finishAM = p[6], startMA = p[7], finishMA = p[8];
    alpha = p[9] > 0.0 ? kRoot * (p[9] - startAM) / (p[9] + startAM) : 0.0;
    T0 = p[10], slopeAM = p[11], slopeMA = p[12];
    eTension = p[4];
    // eps_L = sqrt(2/3) e_D + e_V/3
    eV = p[13] < 0.0 ? 3.0 * alpha * eTension / (kRoot + alpha) : p[13];
    eD = (eTension - eV / 3.0) / kRoot;
    eCompression = kRoot * eD - eV / 3.0;
    moves = vm::abs(dK * G - dG * K) > 1e-12 * G * K;
    // what xi itself does to the moduli: s^2/2 d(1/E)
    const auto change = [](double modulus, double dM, double sign, double at) {
      return vm::max(0.0, sign * dM) / ((modulus + at * dM) * (modulus + at * dM));
    };
    const bool isWire = kind == Kind::uniaxial;
    const double rising = isWire ? change(E, dE, -1, 1) : change(G, dG, -1, 1) / 3.0 + change(K, dK, -1, 1) / 9.0;
    const double falling = isWire ? change(E, dE, 1, 0) : change(G, dG, 1, 0) / 3.0 + change(K, dK, 1, 0) / 9.0;
    const double ratio = (kRoot + alpha) / (kRoot - alpha);
    workTension = eTension, workCompression = ratio * eCompression;
    risingTension = 0.5 * rising, risingCompression = ratio * ratio * risingTension;
    fallingTension = 0.5 * falling, fallingCompression = ratio * ratio * fallingTension;
  }
  // What one xi gives back on its way to austenite, at best: its work at the start of that way; but no more than is spent on
  // the way there.
  SA_INLINE double storedPerXi(double temperature) const {
    const double back = startMA + slopeMA * (temperature - T0), there = startAM + slopeAM * (temperature - T0);
    const double given =
        vm::max(back * (workTension + risingTension * back), back * (workCompression + risingCompression * back));
    const double spent =
        vm::min(there * (workTension - fallingTension * there), there * (workCompression - fallingCompression * there));
    return vm::select(back > 0.0, vm::max(0.0, vm::min(given, spent)), 0.0);
  }
};

// ---- the transformation of one point, whatever its dimensions

// F as it depends on xi at given total strain, with |s| = n:s, which is negative where a stress against the strain is left by
// pressure alone: shear (N - eD xi) times the modulus of xi, and the like with the mean strain,
// which makes a polynomial of degree two.
struct Norm {
  double c0, c1, c2;
  SA_INLINE double operator()(double xi) const { return c0 + xi * (c1 + xi * c2); }
};
SA_INLINE Norm operator+(const Norm& a, const Norm& b) { return {a.c0 + b.c0, a.c1 + b.c1, a.c2 + b.c2}; }
// factor (M + dM xi) (strain - part xi)
SA_INLINE Norm normPart(double factor, double M, double dM, double strain, double part) {
  return {factor * M * strain, factor * (dM * strain - M * part), -factor * dM * part};
}

// Limits in terms of F at one temperature, and F at the start of the increment as it stands to them at both temperatures.
struct Limits {
  double startAM, finishAM, startMA, finishMA, beforeAM, beforeMA;
};
SA_INLINE Limits limitsAt(const Superelastic& m, double before, double tempOld, double tempNew) {
  const double factor = kRoot + m.alpha, shiftAM = m.slopeAM * (tempNew - m.T0), shiftMA = m.slopeMA * (tempNew - m.T0);
  return {factor * (m.startAM + shiftAM), factor * (m.finishAM + shiftAM), factor * (m.startMA + shiftMA),
          factor * (m.finishMA + shiftMA),
          // a change of temperature moves the limits; the old F is moved with them
          before + factor * m.slopeAM * (tempNew - tempOld), before + factor * m.slopeMA * (tempNew - tempOld)};
}

// The new fraction, and how it moves with F at fixed xi (for a solution of the strain from the outside).
struct Fraction {
  double xi, perNorm;
};

// The root at which p x^2 + q x + r falls through zero, and minus its derivative there.
SA_INLINE Fraction fallingRoot(double p, double q, double r) {
  const double D = vm::sqrt(vm::max(0.0, q * q - 4.0 * p * r));
  return {2.0 * r / (D - q), D};
}

SA_INLINE Fraction transform(const Norm& F, double xi, const Limits& l) {
  const double trial = F(xi);
  const double fromAM = vm::max(l.startAM, l.beforeAM), widthAM = vm::max(0.0, l.finishAM - fromAM);
  const double fromMA = vm::min(l.startMA, l.beforeMA), widthMA = vm::max(0.0, fromMA - l.finishMA);
  // how far F has gone beyond where each begins, and what is left to transform: one of the two at most is positive
  const double toM = vm::select(xi < 1.0, trial - fromAM, 0.0), toA = vm::select(xi > 0.0, fromMA - trial, 0.0);
  // to martensite, on the straight line from (F0, xi) to (finish, 1): (1 - x)(finish - F0) = (1 - xi)(finish - F(x));
  // to austenite, from (F0, xi) to (finish, 0): x (F0 - finish) = xi (F(x) - finish)
  const bool isToM = toM > 0.0;
  const double weight = vm::select(isToM, 1.0 - xi, xi), width = vm::select(isToM, widthAM, widthMA);
  const double finish = vm::select(isToM, l.finishAM, l.finishMA), end = vm::select(isToM, 1.0, 0.0);
  const Fraction root = fallingRoot(weight * F.c2, weight * F.c1 - width, weight * (F.c0 - finish) + end * width);
  // what is left to the end of the line
  const double atEnd = F(end) - finish, left = vm::select(isToM, -atEnd, atEnd);
  const double x = vm::select(left > 0.0, vm::max(0.0, vm::min(1.0, root.xi)), end);
  const double slope = vm::select(left > 0.0, weight / root.perNorm, 0.0);
  const double moves = vm::max(toM, toA), spoiled = toM + toA; // a NaN moves nowhere, but is no state to stay in
  const double stays = vm::select(spoiled == spoiled, xi, vm::kNaN);
  return {vm::select(moves > 0.0, x, stays), vm::select(moves > 0.0, slope, 0.0)};
}

// The place 0..1 on a straight path of strain where |e0 + t de| + q t is smallest, q = (3 alpha K dTheta - C dT)/(2 G): before
// it F falls to the limit that moves by C dT, behind it F rises.  From c = e0:e0, a = e0:de, b = de:de.
SA_INLINE double smallestNorm(double a, double b, double c, double q) {
  const double determinant = vm::max(0.0, b * c - a * a), rest = b - q * q;
  const double u = -q * vm::sqrt(determinant / vm::select(rest > 0.0, rest, 1.0));
  const double t = (u - a) / vm::select(b > 0.0, b, 1.0);
  // without a place inside, the path is taken in one piece
  return vm::select((rest > 0.0) & (t > 0.0) & (t < 1.0), t, 0.0);
}

// ---- three dimensions and plane stress

// F at fixed total strain, N = |e|.
SA_INLINE Norm normAt(const Superelastic& m, double N, double volume) {
  return normPart(2.0, m.G, m.dG, N, m.eD) + normPart(3.0 * m.alpha, m.K, m.dK, volume, m.eV);
}

// Where a point stands: total strain, deviator and volume, fraction and F.  The strain comes from stress and transformation
// strain, so that initial stress has its strain too; F comes from the strain, as at the end: where nothing moves, both are the
// same to the bit.
template <class Storage>
struct Start {
  Sym<Storage> e;
  double volume, xi, norm;
};
template <class Storage>
SA_INLINE Start<Storage> startOf(const Superelastic& m, double xi, const Sym<Storage>& stress,
                                 const Sym<Storage>& change) {
  const Sym<Storage> e = sum(deviator(change), 1.0 / (2.0 * (m.G + xi * m.dG)), deviator(stress));
  const double volume = trace(stress) / (3.0 * (m.K + xi * m.dK)) + trace(change);
  return {e, volume, xi, normAt(m, vm::sqrt(product(e, e)), volume)(xi)};
}

struct Response {
  double xi, shearFactor, pressure; // stress = shearFactor e + pressure 1
  double changeFactor;              // deviator of the transformation strain = changeFactor e
  double norm;                      // F
  double elasticEnergy;
  double perNorm; // of xi with F
};

// Stress at total strain (e, volume).  Its direction is that of the strain deviator: s = 2 G (1 - eD xi/|e|) e.
template <class Storage>
SA_INLINE Response respond(const Superelastic& m, const Sym<Storage>& e, double volume, double xi0,
                           const Limits& limits) {
  const double N = vm::sqrt(product(e, e)), perN = 1.0 / vm::max(1e-100, N);
  const Norm F = normAt(m, N, volume);
  const Fraction f = transform(F, xi0, limits);
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
  double part[kScratchPoints];   // of the rest, to go in one step
  double across[kScratchPoints]; // strain across in that step, for plane stress
  double slope[kScratchPoints];  // of the limit with temperature that F is compared with

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

// The strain across that leaves no stress there, to the round-off of the stress, for points with active > 0; the others are
// left alone.  The stress rises with it; Newton's steps are kept between bounds that hold for any fraction, and a step that does
// not halve the stress gives way to a bisection.  From 1e-11 of the stress one more step of Newton's is all that it takes.
constexpr int kAcrossSteps = 64;
template <class Storage>
SA_INLINE void solveAcross(const Superelastic& model, int count, Points<Storage>& points, const double* active) {
  const Superelastic m = model;
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
  double running = 0.0;
  for (int k = 0; k < count; ++k) running += runs[k];
  for (int step = 0; step < kAcrossSteps && running > 0.0; ++step) {
    forPoints(count, [=, &points, &low, &high, &last, &best, &runs](int k) SA_POINT {
      const double x = points.across[k], lowOld = low[k], highOld = high[k], lastOld = last[k], bestOld = best[k],
                   ran = runs[k];
      const Start<Storage> s = points.start(k);
      const double share = points.part[k], temp0 = points.tempOld[k], temp1 = points.tempAt(k, share);
      const Sym<Storage> inc = shareOf<true>(points.rest(k), share, x), e = sum(s.e, 1.0, deviator(inc));
      const Response r = respond(m, e, s.volume + trace(inc), s.xi, limitsAt(m, s.norm, temp0, temp1));
      const double value = r.shearFactor * e.s33 + r.pressure, size = vm::abs(value);
      // d/d(strain across): of |e|, of the volume and, through F, of xi
      const double N = vm::sqrt(product(e, e)), perN = 1.0 / vm::max(1e-100, N), dN = e.s33 * perN;
      const double G2 = 2.0 * (m.G + r.xi * m.dG), K = m.K + r.xi * m.dK, elastic = 1.0 - r.changeFactor;
      const double dxi = r.perNorm * (G2 * dN + 3.0 * m.alpha * K), volume = s.volume + trace(inc);
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
    running = 0.0;
    for (int k = 0; k < count; ++k) running += runs[k];
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
template <bool kPlaneStress, class Storage>
SA_INLINE double riseOfNorm(const Superelastic& m, const Points<Storage>& points, int k) {
  const double share = points.part[k];
  const Start<Storage> s = points.start(k);
  const double temp0 = points.tempOld[k], temp1 = points.tempAt(k, share);
  const Sym<Storage> inc = shareOf<kPlaneStress>(points.rest(k), share, points.across[k]);
  const Sym<Storage> e = sum(s.e, 1.0, deviator(inc));
  const Response r = respond(m, e, s.volume + trace(inc), s.xi, limitsAt(m, s.norm, temp0, temp1));
  return riseAt<kPlaneStress>(m, points, k, e, r.xi);
}

// The share of the rest at which F turns from falling to rising, 0.0 where it does not.  While nothing transforms and the strain
// keeps its direction the place is known; where it moves with the fraction (moduli in another ratio, temperature, the strain
// across of plane stress) it is found by false position (Illinois) among those points alone.
constexpr int kTurnSteps = 40;
template <bool kPlaneStress, class Storage>
SA_INLINE void searchTurn(const Superelastic& model, int count, Points<Storage>& points, double* turn) {
  const Superelastic m = model;
  double low[kScratchPoints], high[kScratchPoints], atLow[kScratchPoints], atHigh[kScratchPoints], side[kScratchPoints],
      runs[kScratchPoints], guess[kScratchPoints];
  const auto settle = [=, &points](int k, double share) SA_POINT { // where the strain across starts from
    points.part[k] = share;
    if constexpr (kPlaneStress) points.across[k] = share * elasticAcross(m, points.xi[k], points.rest(k));
  };
  forPoints(count, [=, &points](int k) SA_POINT { settle(k, 0.0); });
  forPoints(count, [=, &points, &low, &high, &atLow, &atHigh, &side, &runs, &guess](int k) SA_POINT {
    low[k] = 0.0;
    atLow[k] = riseOfNorm<kPlaneStress>(m, points, k);
    high[k] = atHigh[k] = 1.0;
    side[k] = 0.0;
    runs[k] = 1.0;
    guess[k] = turn[k];
    settle(k, 1.0);
  });
  double running = 1.0;
  for (int step = 0; step < kTurnSteps && running > 0.0; ++step) {
    const double bisects = step % 4 == 3 ? 1.0 : 0.0,
                 isFirst = step == 0 ? 1.0 : 0.0; // the first is the end of the way
    if constexpr (kPlaneStress) solveAcross(m, count, points, runs);
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
    running = 0.0;
    for (int k = 0; k < count; ++k) running += runs[k];
  }
  forPoints(count, [=, &points](int k) SA_POINT { turn[k] = points.part[k]; });
}

template <bool kPlaneStress, class Storage>
SA_INLINE void findTurn(const Superelastic& model, int length, Points<Storage>& points, double* turn, bool isThermal) {
  const Superelastic m = model;
  forPoints(length, [=, &points](int k) SA_POINT {
    const double xi = points.xi[k];
    Sym<Storage> strain = points.rest(k);
    if constexpr (kPlaneStress) strain.s33 = elasticAcross(m, xi, strain);
    const double G2 = 2.0 * (m.G + xi * m.dG), K3 = 3.0 * (m.K + xi * m.dK);
    const Sym<Storage> e = points.start(k).e, de = deviator(strain);
    const double q = (m.alpha * K3 * trace(strain) - points.slope[k] * (points.tempNew[k] - points.tempOld[k])) / G2;
    turn[k] = smallestNorm(product(e, de), product(de, de), product(e, e), q);
  });
  if (!kPlaneStress && !m.moves && !isThermal) return;
  // F turns only where it falls at first and may rise at the end: in plane stress with the strain across of the whole rest, else
  // at whatever fraction is reached
  double may[kScratchPoints];
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
  Points<Storage> those;
  double found[kScratchPoints];
  for (int j = 0; j < count; ++j) {
    those.take(j, points, place[j]);
    found[j] = turn[place[j]];
  }
  searchTurn<kPlaneStress>(m, count, those, found);
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

// One part of the increment.  The first parts leave points that have none as they are, to the bit: then they may be left out
// where no point of a piece has one.
template <bool kFirstPart, bool kPlaneStress, class Storage>
SA_INLINE void advance(const Block& b, const Superelastic& model, const Arrays& from, int start, int length,
                       Points<Storage>& points) {
  const Superelastic m = model;
  const int64_t n = b.points;
  [[maybe_unused]] const double perFactor = 1.0 / (kRoot + m.alpha);
  const double *density = b.density, *stressOld = from.stress, *stateOld = from.state, *internalOld = from.internal,
               *inelasticOld = from.inelastic;
  double *stress = b.stress, *state = b.state, *internal = b.internal, *inelastic = b.inelastic;
  forPoints(length, [=, &points](int k) SA_POINT {
    const int i = start + k;
    const double intOld = internalOld[i], inelOld = inelasticOld[i], perDensity = 1.0 / density[i];
    const Sym<Storage> old = loadTensor<Storage>(stressOld, n, i);
    [[maybe_unused]] const Sym<Storage> change = loadTensor<Storage>(stateOld + n, n, i);
    const double share = points.part[k], temperature = points.tempAt(k, share);
    const Start<Storage> s = points.start(k);
    const double temp0 = points.tempOld[k];
    const Sym<Storage> inc = shareOf<kPlaneStress>(points.rest(k), share, points.across[k]);
    const Sym<Storage> e = sum(s.e, 1.0, deviator(inc));
    const Response r = respond(m, e, s.volume + trace(inc), s.xi, limitsAt(m, s.norm, temp0, temperature));
    Sym<Storage> now = sum(r.shearFactor * e, r.pressure);
    if constexpr (kPlaneStress) now.s33 = 0.0;
    const Sym<Storage> changeNow = sum(r.changeFactor * e, r.xi * (m.eV * (1.0 / 3.0)));
    // lost is what the stress has worked and the point can not give back
    const double internalNow = intOld + 0.5 * (product(old, inc) + product(now, inc)) * perDensity;
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
template <bool kPlaneStress, class Storage>
SA_INLINE void superelastic(const Block& b, const Superelastic& model) {
  const int64_t n = b.points;
  forPieces(b.points, [n, &b, &model](int start, int length) SA_POINT {
    const Superelastic m = model;
    const double factor = kRoot + m.alpha, slopeAM = factor * m.slopeAM, slopeMA = factor * m.slopeMA;
    const double *strainInc = b.strainInc, *tempOld = b.tempOld, *tempNew = b.tempNew;
    Points<Storage> points;
    double turn[kScratchPoints], second[kScratchPoints] = {},
                                 open[kScratchPoints]; // open: the strain across is to be found
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

// ---- one dimension

struct UniaxialState {
  double strain, xi, stress;
};

// As in three dimensions, with n fixed: the sign of the strain tells tension from compression.
struct UniaxialPart {
  double part;
  Norm norm;
};
SA_INLINE UniaxialPart uniaxialNorm(const Superelastic& m, double strain) {
  const double factor = kRoot + vm::select(strain < 0.0, -m.alpha, m.alpha);
  const double part = vm::select(strain < 0.0, m.eCompression, m.eTension);
  return {part, normPart(factor, m.E, m.dE, vm::abs(strain), part)};
}
SA_INLINE UniaxialState advance(const Superelastic& m, const UniaxialState& from, double strain, double tempOld,
                                double tempNew) {
  const double total = from.strain + strain;
  const Limits limits = limitsAt(m, uniaxialNorm(m, from.strain).norm(from.xi), tempOld, tempNew);
  const UniaxialPart now = uniaxialNorm(m, total);
  const double xi = transform(now.norm, from.xi, limits).xi;
  return {total, xi, (m.E + xi * m.dE) * vm::copysign(1.0, total) * (vm::abs(total) - now.part * xi)};
}
SA_INLINE double transformation(const Superelastic& m, const UniaxialState& s) {
  return s.xi * vm::select(s.strain < 0.0, -m.eCompression, m.eTension);
}

template <bool kHasShear>
SA_INLINE void uniaxial(const Block& b, const Superelastic& model) {
  const Superelastic m = model;
  const int64_t n = b.points;
  const double *strainInc = b.strainInc, *stressOld = b.stressOld, *stateOld = b.stateOld, *tempOld = b.tempOld,
               *tempNew = b.tempNew, *internalOld = b.internalOld, *inelasticOld = b.inelasticOld, *density = b.density;
  double *stress = b.stress, *state = b.state, *internal = b.internal, *inelastic = b.inelastic;

  forPoints(b.points, [=](int i) SA_POINT {
    const double xi = stateOld[i], change = stateOld[i + n], old = stressOld[i], strain = strainInc[i];
    const double temp0 = tempOld[i], temp1 = tempNew[i];
    const double intOld = internalOld[i], inelOld = inelasticOld[i], perDensity = 1.0 / density[i];
    const UniaxialState start{old / (m.E + xi * m.dE) + change, xi, old};
    // an increment through zero strain is taken in two
    const double crossing = -start.strain / vm::select(strain == 0.0, 1.0, strain);
    const double t = vm::select((crossing > 0.0) & (crossing < 1.0), crossing, 0.0);
    const double tempMiddle = temp0 + t * (temp1 - temp0);
    const UniaxialState middle = advance(m, start, t * strain, temp0, tempMiddle);
    const UniaxialState end = advance(m, middle, (1.0 - t) * strain, tempMiddle, temp1);
    const double changeEnd = transformation(m, end);
    const double first = 0.5 * (old + middle.stress), second = 0.5 * (middle.stress + end.stress);
    double work = first * (t * strain) + second * ((1.0 - t) * strain);
    const double elasticStrain = end.strain - transformation(m, end);
    double stored = 0.5 * end.stress * elasticStrain + end.xi * m.storedPerXi(temp1);

    stress[i] = end.stress;
    if constexpr (kHasShear) {
      // elastic, whatever the fraction
      const double oldShear = stressOld[i + n], shear = strainInc[i + n];
      const double elastic = oldShear / (m.G + xi * m.dG) + 2.0 * shear, newShear = (m.G + end.xi * m.dG) * elastic;
      work += (oldShear + newShear) * shear;
      stored += 0.5 * newShear * elastic;
      stress[i + n] = newShear;
    }
    const double lateral = 0.5 * (m.eV * end.xi - changeEnd);
    state[i] = end.xi;
    state[i + n] = changeEnd;
    state[i + 2 * n] = lateral;
    state[i + 3 * n] = lateral;
    state[i + 4 * n] = 0.0;
    state[i + 5 * n] = 0.0;
    state[i + 6 * n] = 0.0;
    state[i + kEquivalentStress * n] = uniaxialNorm(m, end.strain).norm(end.xi) / (kRoot + m.alpha);
    const double internalNow = intOld + work * perDensity;
    internal[i] = internalNow;
    // lost is what the stress has worked and the point can not give back
    inelastic[i] = grown(inelOld, internalNow - stored * perDensity);
  });
  keepStates(b, Superelastic::kStates);
}

// ---- the first call

SA_INLINE void uniaxialElasticAnswer(const Block& b, const Superelastic& m) {
  const int64_t n = b.points;
  const double E = m.E, G2 = 2.0 * m.G;
  const double *strainInc = b.strainInc, *stressOld = b.stressOld, *internalOld = b.internalOld,
               *inelasticOld = b.inelasticOld;
  double *stress = b.stress, *internal = b.internal, *inelastic = b.inelastic;
  const bool hasShear = b.nshr == 1;
  forPoints(b.points, [=](int i) SA_POINT {
    stress[i] = stressOld[i] + E * strainInc[i];
    internal[i] = internalOld[i];
    inelastic[i] = inelasticOld[i];
  });
  if (hasShear) forPoints(b.points, [=](int i) SA_POINT { stress[i + n] = stressOld[i + n] + G2 * strainInc[i + n]; });
}

// ---- checks, and the choice of the dimensions

bool isPoissonsRatio(double nu) { return nu > -1.0 && nu < 0.5; }

// Beyond, martensite in compression would be longer than austenite.
bool refuseRatio(const Block& b) {
  const double given[] = {b.props[13], b.props[4]};
  return !(given[0] < 1.5 * given[1]) &&
         refuse(b,
                "The volume change of material %S, property 14, must be less than 1.5 times its transformation "
                "strain, property 5: they are %R and %R.",
                0, given);
}

bool Superelastic::isRefused(const Block& b) {
  const Kind kind = kindOf(b.name);
  if (kind == Kind::unknown)
    return refuse(b, "The material name used with the VUMAT for superelastic materials must start with one of "
                     "the strings TVK_SUPER_ELASTIC_N1D, "
                     "TVK_SUPER_ELASTIC_N2D, or TVK_SUPER_ELASTIC_N3D");
  const bool isSupported = kind == Kind::uniaxial      ? b.ndir == 1 && (b.nshr == 0 || b.nshr == 1)
                           : kind == Kind::planeStress ? b.isPlane()
                                                       : b.isSolid() || b.isPlane();
  if (refuseUnless(b, isSupported,
                   "The elements of material %S do not have the stress components that its name asks for: "
                   "TVK_SUPER_ELASTIC_N1D needs one direct component, "
                   "TVK_SUPER_ELASTIC_N2D needs plane stress elements, and "
                   "TVK_SUPER_ELASTIC_N3D needs solid or plane strain elements."))
    return true;
  if (b.properties != kProperties)
    return refuse(b, "Subroutine VUMAT for superelastic materials should be used with 14 material  "
                     "properties.");
  return refuseStates(b, kStates,
                      "Subroutine VUMAT for superelastic materials requires the specification of %I "
                      "state variables. Check the definition of *DEPVAR "
                      "in the input file.") ||
         refuseValues(b, {1, 3, 5, 6}) ||
         refuseUnless(b, isPoissonsRatio(b.props[1]) && isPoissonsRatio(b.props[3]),
                      "Poisson's ratios of material %S, properties 2 and 4, must lie between -1 and 0.5.") ||
         refuseAbove(b, 6, 7,
                     "The start of the transformation to martensite of material %S, property 6, must not be greater "
                     "than its finish, property 7: they are %R and %R.") ||
         refuseAbove(b, 9, 8,
                     "The finish of the transformation to austenite of material %S, property 9, must not be greater "
                     "than its start, property 8: they are %R and %R.") ||
         refuseAbove(b, 9, 6,
                     "The finish of the transformation to austenite of material %S, property 9, must not be greater "
                     "than the start of that to martensite, property 6: they are %R and %R.") ||
         refuseAbove(b, 8, 7,
                     "The start of the transformation to austenite of material %S, property 8, must not be greater "
                     "than the finish of that to martensite, property 7: they are %R and %R.") ||
         refuseRatio(b);
}

SA_INLINE void compute(const Block& b, const Superelastic& m) {
  const Kind kind = m.kind;
  if (b.isDataCheck) {
    if (kind == Kind::uniaxial)
      uniaxialElasticAnswer(b, m);
    else if (kind == Kind::planeStress)
      planeStressElasticAnswer(b, m.K, m.G);
    else if (b.isSolid())
      elasticAnswer<S33>(b, m.K, m.G);
    else
      elasticAnswer<S31>(b, m.K, m.G);
    keepStates(b, 0);
  } else if (kind == Kind::uniaxial) {
    if (b.nshr == 1)
      uniaxial<true>(b, m);
    else
      uniaxial<false>(b, m);
  } else if (kind == Kind::planeStress) {
    superelastic<true, S31>(b, m);
  } else if (b.isSolid()) {
    superelastic<false, S33>(b, m);
  } else {
    superelastic<false, S31>(b, m);
  }
}

} // namespace

SA_USER_MATERIAL(SPX_USR_SUPERELASTIC, Superelastic)

} // namespace sa::user
