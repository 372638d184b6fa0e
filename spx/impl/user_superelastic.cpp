// Superelastic shape-memory alloy: austenite, one martensite, and a transformation that is linear in a pressure-dependent
// norm of the stress.
#include "spx.h"
#include "spx/impl/user_frame.h"

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

  static bool isRefused(const Block& b);
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
  const double fromAM = vm::max(l.startAM, l.beforeAM), widthAM = l.finishAM - fromAM;
  const double fromMA = vm::min(l.startMA, l.beforeMA), widthMA = fromMA - l.finishMA;
  // how far F has gone beyond where each begins, and what is left to transform: one of the two at most is positive
  const double toM = vm::select(xi < 1.0, trial - fromAM, 0.0), toA = vm::select(xi > 0.0, fromMA - trial, 0.0);
  // to martensite, on the straight line from (F0, xi) to (finish, 1): (1 - x)(finish - F0) = (1 - xi)(finish - F(x));
  // to austenite, from (F0, xi) to (finish, 0): x (F0 - finish) = xi (F(x) - finish)
  const bool isToM = toM > 0.0;
  const double weight = vm::select(isToM, 1.0 - xi, xi), width = vm::select(isToM, widthAM, widthMA);
  const double finish = vm::select(isToM, l.finishAM, l.finishMA), end = vm::select(isToM, 1.0, 0.0);
  const Fraction root = fallingRoot(weight * F.c2, weight * F.c1 - width, weight * (F.c0 - finish) + end * width);
  // what is left to the end of the line
  const double atEnd = F(end) - finish, left = vm::min(width, vm::select(isToM, -atEnd, atEnd));
  const double x = vm::select(left > 0.0, vm::max(0.0, vm::min(1.0, root.xi)), end);
  const double slope = vm::select(left > 0.0, weight / root.perNorm, 0.0);
  const double moves = vm::max(toM, toA), spoiled = toM + toA; // a NaN moves nowhere, but is no state to stay in
  const double stays = vm::select(spoiled == spoiled, xi, vm::kNaN);
  return {vm::select(moves > 0.0, x, stays), vm::select(moves > 0.0, slope, 0.0)};
}

// The place 0..1 on a straight path of strain where |e0 + t de| + q t is smallest, q = 3 alpha K dTheta/(2 G): before it F
// falls, behind it F rises.  From c = e0:e0, a = e0:de, b = de:de.
SA_INLINE double smallestNorm(double a, double b, double c, double q) {
  const double determinant = vm::max(0.0, b * c - a * a), rest = b - q * q;
  const double u = -q * vm::sqrt(determinant / vm::select(rest > 0.0, rest, 1.0));
  const double t = (u - a) / vm::select(b > 0.0, b, 1.0);
  // without a place inside, the path is taken in one piece
  return vm::select((rest > 0.0) & (t > 0.0) & (t < 1.0), t, 0.0);
}

// ---- three dimensions

// F at fixed total strain, N = |e|.
SA_INLINE Norm normAt(const Superelastic& m, double N, double volume) {
  return normPart(2.0, m.G, m.dG, N, m.eD) + normPart(3.0 * m.alpha, m.K, m.dK, volume, m.eV);
}

// Total strain at the start, deviator and volume, from stress and transformation strain, so that initial stress has its strain
// too.  F at the start comes from the strain, as at the end: where nothing moves, both are the same to the bit.
template <class Storage>
SA_INLINE Sym<Storage> deviatorAtStart(const Superelastic& m, double xi, const Sym<Storage>& stress,
                                       const Sym<Storage>& change) {
  return sum(deviator(change), 1.0 / (2.0 * (m.G + xi * m.dG)), deviator(stress));
}
template <class Storage>
SA_INLINE double volumeAtStart(const Superelastic& m, double xi, const Sym<Storage>& stress,
                               const Sym<Storage>& change) {
  return trace(stress) / (3.0 * (m.K + xi * m.dK)) + trace(change);
}

struct Response {
  double xi, shearFactor, pressure; // stress = shearFactor e + pressure 1
  double acrossSlope;               // of the stress across with the strain across, for plane stress
  double changeFactor;              // deviator of the transformation strain = changeFactor e
  double norm;                      // F
};

// Stress at total strain (e, volume).  Its direction is that of the strain deviator: s = 2 G (1 - eD xi/|e|) e.
template <class Storage>
SA_INLINE Response respond(const Superelastic& m, const Sym<Storage>& e, double volume, double xi0,
                           const Limits& limits) {
  const double N = vm::sqrt(product(e, e)), perN = 1.0 / vm::max(1e-100, N);
  const Norm F = normAt(m, N, volume);
  const Fraction f = transform(F, xi0, limits);
  const double G2 = 2.0 * (m.G + f.xi * m.dG), K = m.K + f.xi * m.dK;
  const double elastic = 1.0 - m.eD * f.xi * perN, elasticVolume = volume - m.eV * f.xi;
  // d/d(strain across): of |e|, of the volume and, through F, of xi
  const double dN = e.s33 * perN, dxi = f.perNorm * (G2 * dN + 3.0 * m.alpha * K);
  const double slope = (2.0 * m.dG * dxi * elastic - G2 * m.eD * perN * (dxi - f.xi * dN * perN)) * e.s33 +
                       G2 * elastic * (2.0 / 3.0) + m.dK * dxi * elasticVolume + K * (1.0 - m.eV * dxi);
  return {f.xi, G2 * elastic, K * elasticVolume, slope, m.eD * f.xi * perN, F(f.xi)};
}

// Where an increment starts.
struct Arrays {
  const double *stress, *state, *internal, *inelastic;
};

// Steps towards the strain across that leaves no stress there.  The stress rises with it, so that Newton's steps are kept
// between the strains of either sign found so far.
constexpr int kAcrossSteps = 16;

// A share of the increment of each point of a piece, with its temperatures.
struct Share {
  double part[kScratchPoints], tempOld[kScratchPoints], tempNew[kScratchPoints], across[kScratchPoints];
};

// The first part of an increment leaves points that have none as they are, to the bit: then it may be left out where no point
// of a piece has one.
template <bool kFirstPart, bool kPlaneStress, class Storage>
SA_INLINE void advance(const Block& b, const Superelastic& model, const Arrays& from, int start, int length,
                       Share& share) {
  const Superelastic m = model;
  const int64_t n = b.points;
  [[maybe_unused]] const double perFactor = 1.0 / (kRoot + m.alpha);
  const double *strainInc = b.strainInc, *density = b.density, *stressOld = from.stress, *stateOld = from.state,
               *internalOld = from.internal, *inelasticOld = from.inelastic;
  double *stress = b.stress, *state = b.state, *internal = b.internal, *inelastic = b.inelastic;

  if constexpr (kPlaneStress) {
    double low[kScratchPoints], high[kScratchPoints];
    forPoints(length, [=, &low, &high](int k) SA_POINT {
      low[k] = -vm::kInfinity;
      high[k] = vm::kInfinity;
    });
    for (int step = 0; step < kAcrossSteps; ++step)
      forPoints(length, [=, &low, &high, &share](int k) SA_POINT {
        const int i = start + k;
        const double x = share.across[k];
        const double xi = stateOld[i];
        const Sym<Storage> old = loadTensor<Storage>(stressOld, n, i), change = loadTensor<Storage>(stateOld + n, n, i);
        const Sym<Storage> e0 = deviatorAtStart(m, xi, old, change);
        const double volume = volumeAtStart(m, xi, old, change),
                     norm = normAt(m, vm::sqrt(product(e0, e0)), volume)(xi);
        Sym<Storage> inc = share.part[k] * loadTensor<Storage>(strainInc, n, i);
        inc.s33 = x;
        const Sym<Storage> e = sum(e0, 1.0, deviator(inc));
        const Response r =
            respond(m, e, volume + trace(inc), xi, limitsAt(m, norm, share.tempOld[k], share.tempNew[k]));
        const double value = r.shearFactor * e.s33 + r.pressure, next = x - value / r.acrossSlope;
        const double lower = vm::select(value < 0.0, x, low[k]), upper = vm::select(value > 0.0, x, high[k]);
        low[k] = lower;
        high[k] = upper;
        // where a step leads astray: to the middle, or outward in growing steps while there is none
        const double middle = 0.5 * (lower + upper), outward = x - vm::copysign(vm::max(0.01, 2.0 * vm::abs(x)), value);
        const bool isInside = (next >= lower) & (next <= upper) & (vm::abs(next) < vm::kInfinity);
        const double other = vm::select(vm::abs(middle) < vm::kInfinity, middle, outward);
        share.across[k] = vm::select(isInside, next, other);
      });
  }

  forPoints(length, [=, &share](int k) SA_POINT {
    const int i = start + k;
    const double intOld = internalOld[i], inelOld = inelasticOld[i], perDensity = 1.0 / density[i];
    const Sym<Storage> old = loadTensor<Storage>(stressOld, n, i), change = loadTensor<Storage>(stateOld + n, n, i);
    const double xi = stateOld[i], volume = volumeAtStart(m, xi, old, change);
    const Sym<Storage> e0 = deviatorAtStart(m, xi, old, change);
    const double norm = normAt(m, vm::sqrt(product(e0, e0)), volume)(xi);
    Sym<Storage> inc = share.part[k] * loadTensor<Storage>(strainInc, n, i);
    if constexpr (kPlaneStress) inc.s33 = share.across[k];
    const Sym<Storage> e = sum(e0, 1.0, deviator(inc));
    const Response r = respond(m, e, volume + trace(inc), xi, limitsAt(m, norm, share.tempOld[k], share.tempNew[k]));

    Sym<Storage> now = sum(r.shearFactor * e, r.pressure);
    if constexpr (kPlaneStress) now.s33 = 0.0;
    const Sym<Storage> changeNow = sum(r.changeFactor * e, r.xi * (m.eV * (1.0 / 3.0)));
    const Sym<Storage> mean = 0.5 * sum(old, 1.0, now);
    const double internalNow = intOld + product(mean, inc) * perDensity;
    const double inelasticNow = inelOld + product(mean, sum(changeNow, -1.0, change)) * perDensity;
    if constexpr (kFirstPart) {
      const bool moves = share.part[k] > 0.0;
      internal[i] = vm::select(moves, internalNow, intOld);
      inelastic[i] = vm::select(moves, inelasticNow, inelOld);
      state[i] = vm::select(moves, r.xi, xi);
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

template <bool kPlaneStress, class Storage>
SA_INLINE void superelastic(const Block& b, const Superelastic& model) {
  const Superelastic m = model;
  const int64_t n = b.points;
  const double *strainInc = b.strainInc, *tempOld = b.tempOld, *tempNew = b.tempNew, *stressOld = b.stressOld,
               *stateOld = b.stateOld;
  forPieces(b.points, [=, &b, &model](int start, int length) SA_POINT {
    Share share;
    double across[kScratchPoints];
    // an increment that leads through the smallest F is taken in two
    forPoints(length, [=, &share, &across](int k) SA_POINT {
      const int i = start + k;
      const double xi = stateOld[i], temp0 = tempOld[i], temp1 = tempNew[i];
      const Sym<Storage> e0 =
          deviatorAtStart(m, xi, loadTensor<Storage>(stressOld, n, i), loadTensor<Storage>(stateOld + n, n, i));
      Sym<Storage> strain = loadTensor<Storage>(strainInc, n, i);
      const double G2 = 2.0 * (m.G + xi * m.dG), K3 = 3.0 * (m.K + xi * m.dK);
      // plane stress: with the strain across of an elastic increment
      if constexpr (kPlaneStress) strain.s33 = -(K3 - G2) / (K3 + 2.0 * G2) * (strain.s11 + strain.s22);
      const Sym<Storage> de = deviator(strain);
      const double t =
          smallestNorm(product(e0, de), product(de, de), product(e0, e0), m.alpha * K3 * trace(strain) / G2);
      const double middle = temp0 + t * (temp1 - temp0);
      share.part[k] = t;
      share.tempOld[k] = temp0;
      share.tempNew[k] = middle;
      share.across[k] = t * strain.s33;
      across[k] = strain.s33;
    });
    double turns = 0.0;
    for (int k = 0; k < length; ++k) turns += share.part[k] > 0.0 ? 1.0 : 0.0;
    Arrays from{b.stressOld, b.stateOld, b.internalOld, b.inelasticOld};
    if (turns > 0.0) {
      advance<true, kPlaneStress, Storage>(b, model, from, start, length, share);
      from = {b.stress, b.state, b.internal, b.inelastic}; // the second part goes on from there
    }
    forPoints(length, [=, &share, &across](int k) SA_POINT {
      const double rest = 1.0 - share.part[k], middle = share.tempNew[k], end = tempNew[start + k];
      share.part[k] = rest;
      share.tempOld[k] = middle;
      share.tempNew[k] = end;
      share.across[k] = rest * across[k];
    });
    advance<false, kPlaneStress, Storage>(b, model, from, start, length, share);
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
    const double changeMiddle = transformation(m, middle), changeEnd = transformation(m, end);
    const double first = 0.5 * (old + middle.stress), second = 0.5 * (middle.stress + end.stress);
    double work = first * (t * strain) + second * ((1.0 - t) * strain);

    stress[i] = end.stress;
    if constexpr (kHasShear) {
      // elastic, whatever the fraction
      const double oldShear = stressOld[i + n], shear = strainInc[i + n];
      const double elastic = oldShear / (m.G + xi * m.dG) + 2.0 * shear, newShear = (m.G + end.xi * m.dG) * elastic;
      work += (oldShear + newShear) * shear;
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
    internal[i] = intOld + work * perDensity;
    inelastic[i] = inelOld + (first * (changeMiddle - change) + second * (changeEnd - changeMiddle)) * perDensity;
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

// Plane stress has the modulus K - 2/3 G lowered to lambda' = lambda 2 G/(lambda + 2 G), and no stress across.
SA_INLINE void planeStressElasticAnswer(const Block& b, const Superelastic& m) {
  const int64_t n = b.points;
  const double lambda = m.K - 2.0 / 3.0 * m.G, G2 = 2.0 * m.G, reduced = lambda * G2 / (lambda + G2);
  const double *strainInc = b.strainInc, *stressOld = b.stressOld, *internalOld = b.internalOld,
               *inelasticOld = b.inelasticOld;
  double *stress = b.stress, *internal = b.internal, *inelastic = b.inelastic;
  forPoints(b.points, [=](int i) SA_POINT {
    const double e11 = strainInc[i], e22 = strainInc[i + n], e12 = strainInc[i + 3 * n], volume = e11 + e22;
    const double s11 = stressOld[i], s22 = stressOld[i + n], s12 = stressOld[i + 3 * n];
    stress[i] = s11 + G2 * e11 + reduced * volume;
    stress[i + n] = s22 + G2 * e22 + reduced * volume;
    stress[i + 2 * n] = 0.0;
    stress[i + 3 * n] = s12 + G2 * e12;
    internal[i] = internalOld[i];
    inelastic[i] = inelasticOld[i];
  });
}

// ---- checks, and the choice of the dimensions

bool isPoissonsRatio(double nu) { return nu > -1.0 && nu < 0.5; }

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
                      "Poisson's ratios of material %S, properties 2 and 4, must lie between -1 and 0.5.");
}

SA_INLINE void compute(const Block& b, const Superelastic& m) {
  const Kind kind = m.kind;
  if (b.isDataCheck) {
    if (kind == Kind::uniaxial)
      uniaxialElasticAnswer(b, m);
    else if (kind == Kind::planeStress)
      planeStressElasticAnswer(b, m);
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
