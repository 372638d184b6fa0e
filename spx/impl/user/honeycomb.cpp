// Crushable honeycomb: six components that are crushed on their own until the cells are closed, then the dense metal.
#include "spx.h"
#include "spx/impl/user/curves.h"
#include "spx/impl/user/stretch_frame.h"

#include <type_traits>

namespace sa::user {
namespace {

struct Honeycomb {
  static constexpr int kProperties = 18, kTensileStrain = 11, kCurves = 6, kRates = 18, kStates = 1,
                       kStatesWithDeletion = 3;
  static constexpr int kFactor = 0, kRate = 1;
  double G, K, yield, shearYield, perCompaction, deletionStrain, perTime;
  Sym<S33> loose, dense; // moduli per tensor strain
  Table curve[kCurves], rates;

  // A count of 0.0 stands for the curve of the component before.
  static bool takeTables(const Block& b, Table (&curve)[kCurves], Table& rates) {
    Tables tables(b, kProperties);
    for (int c = 0; c < kCurves; ++c) {
      const double rows = b.props[kTensileStrain + c];
      if (c > 0 && rows == 0.0)
        curve[c] = curve[c - 1];
      else if (!tables.take(rows, kCurveColumns, curve[c]))
        return false;
    }
    return tables.take(b.props[kRates - 1], 2, rates);
  }
  static bool isFinite(const Table& table) {
    for (int64_t k = 0; k < int64_t{table.rows} * table.columns; ++k)
      if (!(vm::abs(table.values[k]) < vm::kInfinity)) return false;
    return true;
  }
  static bool isRefused(const Block& b) {
    if (refuseUnless(b, b.isSolid() || b.isPlane(),
                     "The honeycomb user material only supports 3D, plane strain and axisymmetric elements.") ||
        refuseProperties(b, kProperties,
                         "The honeycomb user material requires the specification of %I material "
                         "in the *USER MATERIAL option for material %S."))
      return true;
    if (b.props[kTensileStrain - 1] != 0.0) {
      if (refuseStates(b, kStatesWithDeletion,
                       "The honeycomb user material requires the specification of %I state "
                       "variables when a tensile strain for element "
                       "deletion is defined in the model. Check the "
                       "definition of *DEPVAR for material %S."))
        return true;
    } else if (refuseStates(b, kStates,
                            "The honeycomb user material requires the specification of %I state "
                            "variables. Check the definition of "
                            "*DEPVAR for material %S.")) {
      return true;
    }
    Table curve[kCurves], rates;
    if (!takeTables(b, curve, rates)) return refuse(b, kTablesCutOff);
    if (refuseUnless(b, curve[0].rows > 0, "Material %S needs a crush curve for component 11.")) return true;
    for (const Table& c : curve)
      if (refuseUnless(
              b, c.isIncreasing(kStrain) && isFinite(c),
              "The crush curves of material %S must be finite and specified using increasing values of 1 - J."))
        return true;
    return refuseUnless(
               b, rates.isPositive(kFactor) && rates.isPositive(kRate) && rates.isIncreasing(kRate) && isFinite(rates),
               "The strength factors of material %S must be positive, for positive and increasing strain "
               "rates.") ||
           refuseValues(b, {1, 3, 5, 6, 7, 8, 9, 10}) || refuseBetween(b, 2, -1.0, 0.5) ||
           refuseBetween(b, 4, 0.0, 1.0) || refuseOutside(b, kTensileStrain, 0.0) || refuseNotFinite(b, 1, 10);
  }
  static bool refuseBetween(const Block& b, int32_t number, double low, double high) {
    const double x = b.props[number - 1], told[] = {low, high, x};
    return !(x > low && x < high) &&
           refuse(b, "Property %I of material %S must be greater than %R and less than %R: it is %R.", number, told);
  }
  explicit Honeycomb(const Block& b) {
    const double *p = b.props, E = p[0];
    G = E / (2.0 * (1.0 + p[1])), K = E / (3.0 * (1.0 - 2.0 * p[1]));
    yield = p[2], shearYield = p[2] / vm::sqrt(3.0), perCompaction = 1.0 / (1.0 - p[3]);
    loose = {p[4], p[5], p[6], 2.0 * p[7], 2.0 * p[8], 2.0 * p[9]};
    dense = {E, E, E, 2.0 * G, 2.0 * G, 2.0 * G};
    deletionStrain = p[kTensileStrain - 1];
    perTime = b.dt < 1e-100 ? 0.0 : 1.0 / b.dt; // no rate in no time; that of a NaN is a NaN
    takeTables(b, curve, rates);
  }
  bool isWrong(const Block&) const { return false; }
};

struct HoneycombScratch {
  Lane crushed; // 1 - J
  Lane factor;  // of the strength
  Lane strengths[6];
  const double* strength[6]; // of the components: those that share a curve and a limit share a lane
};

// The factor of the rate, straight in its logarithm and held outside.
SA_INLINE void findFactor(const Table& rates, int n, Lane& factor) {
  if (rates.rows < 2) {
    const double only = rates.rows > 0 ? rates.at(0, Honeycomb::kFactor) : 1.0;
    forPoints(n, [=, &factor](int k) SA_POINT { factor[k] = only + (factor[k] - factor[k]); });
    return;
  }
  Lane logRate;
  const double first = rates.at(0, Honeycomb::kRate);
  forPoints(n, [=, &factor, &logRate](int k) SA_POINT {
    const double rate = factor[k];
    logRate[k] = vm::log(vm::select(rate < first, first, rate));
  });
  const double least = rates.at(0, Honeycomb::kFactor);
  forPoints(n, [=, &factor](int k) SA_POINT { factor[k] = least; });
  for (int r = 1; r < rates.rows; ++r) {
    const double from = vm::log(rates.at(r - 1, Honeycomb::kRate)), to = vm::log(rates.at(r, Honeycomb::kRate)),
                 perSpan = perSpanOf(from, to),
                 more = rates.at(r, Honeycomb::kFactor) - rates.at(r - 1, Honeycomb::kFactor);
    forPoints(n, [=, &factor, &logRate](int k) SA_POINT { factor[k] += rateWeight(logRate[k], from, perSpan) * more; });
  }
}

// Strengths of all components.
template <class Storage>
SA_INLINE void findStrengths(const Block& b, const Honeycomb& m, int start, int n, HoneycombScratch& w) {
  const int64_t N = b.points;
  const double *stretch = b.stretch, *strainInc = b.strainInc, perTime = m.perTime;
  forPoints(n, [=, &w](int k) SA_POINT {
    const Sym<Storage> strain = loadTensor<Storage>(strainInc, N, start + k);
    w.crushed[k] = 1.0 - stretchVolume(loadTensor<Storage>(stretch, N, start + k));
    w.factor[k] = vm::sqrt(2.0 / 3.0 * product(strain, strain)) * perTime;
  });
  findFactor(m.rates, n, w.factor);
  Lane onCurve;
  for (int c = 0; c < (Storage::k23and13 ? 6 : 4); ++c) {
    const bool isSame = c > 0 && m.curve[c].values == m.curve[c - 1].values && m.curve[c].rows == m.curve[c - 1].rows;
    if (isSame && c != 3) {
      w.strength[c] = w.strength[c - 1];
      continue;
    }
    if (!isSame) stressAt(m.curve[c], n, w.crushed, onCurve);
    double* strength = w.strengths[c];
    const double most = c < 3 ? m.yield : m.shearYield;
    forPoints(n, [=, &w, &onCurve](int k)
                     SA_POINT { strength[k] = vm::min(most, vm::max(0.0, onCurve[k]) * w.factor[k]); });
    w.strength[c] = strength;
  }
}

// The trial stress between the strengths; a NaN of either stays one.
SA_INLINE double crush(double strength, double trial) {
  return vm::max(-strength, vm::min(strength, trial)) + (strength - strength);
}

// a/A + b/B + c/C by one division.
SA_INLINE double sumOfRatios(double a, double A, double b, double B, double c, double C) {
  return ((a * B + b * A) * C + c * (A * B)) / (A * B * C);
}

// Without kHasDense for pieces in which no point was dense metal before.
template <class Storage, bool kDeletes, bool kHasDense>
SA_INLINE void storeCrushed(const Block& b, const Honeycomb& model, int start, int n, const HoneycombScratch& w) {
  [[maybe_unused]] const double G = model.G, K = model.K, yield = model.yield, perCompaction = model.perCompaction,
                                deletionStrain = model.deletionStrain;
  const Sym<S33> loose = model.loose, dense = model.dense;
  const int64_t N = b.points;
  const double *stretchOld = b.stretchOld, *stretch = b.stretch, *strainInc = b.strainInc, *stressOld = b.stressOld,
               *density = b.density, *internalOld = b.internalOld, *inelasticOld = b.inelasticOld,
               *stateOld = b.stateOld;
  double *stress = b.stress, *internal = b.internal, *inelastic = b.inelastic, *state = b.state;
  const double *strength11 = w.strength[0], *strength22 = w.strength[1], *strength33 = w.strength[2],
               *strength12 = w.strength[3];
  [[maybe_unused]] const double *strength23 = w.strength[Storage::k23and13 ? 4 : 3],
                                *strength13 = w.strength[Storage::k23and13 ? 5 : 3];
  forPoints(n, [=, &w](int k) SA_POINT {
    const int i = start + k;
    const Sym<Storage> U = loadTensor<Storage>(stretch, N, i), strain = loadTensor<Storage>(strainInc, N, i),
                       old = loadTensor<Storage>(stressOld, N, i);
    const double compactionOld = stateOld[i],
                 compaction = grown(compactionOld, vm::max(0.0, vm::min(1.0, w.crushed[k] * perCompaction)));
    // each component on its own
    const auto modulus = [compaction](double from, double to) SA_POINT { return from + compaction * (to - from); };
    const double M11 = modulus(loose.s11, dense.s11), M22 = modulus(loose.s22, dense.s22),
                 M33 = modulus(loose.s33, dense.s33), M12 = modulus(loose.s12, dense.s12);
    Sym<Storage> cells{};
    cells.s11 = crush(strength11[k], old.s11 + M11 * strain.s11);
    cells.s22 = crush(strength22[k], old.s22 + M22 * strain.s22);
    cells.s33 = crush(strength33[k], old.s33 + M33 * strain.s33);
    cells.s12 = crush(strength12[k], old.s12 + M12 * strain.s12);
    double cellEnergy =
        0.5 * sumOfRatios(cells.s11 * cells.s11, M11, cells.s22 * cells.s22, M22, cells.s33 * cells.s33, M33);
    if constexpr (Storage::k23and13) {
      const double M23 = modulus(loose.s23, dense.s23), M13 = modulus(loose.s13, dense.s13);
      cells.s23 = crush(strength23[k], old.s23 + M23 * strain.s23);
      cells.s13 = crush(strength13[k], old.s13 + M13 * strain.s13);
      cellEnergy += sumOfRatios(cells.s12 * cells.s12, M12, cells.s23 * cells.s23, M23, cells.s13 * cells.s13, M13);
    } else {
      cellEnergy += cells.s12 * cells.s12 / M12;
    }
    Sym<Storage> now = cells;
    double psi = cellEnergy;
    if constexpr (kHasDense) { // dense metal, from the increment after all cells have closed
      const Sym<Storage> s = sum(deviator(old), 2.0 * G, deviator(strain));
      const double mean = trace(old) * (1.0 / 3.0) + K * trace(strain), q = vm::sqrt(1.5 * product(s, s));
      const double keep = vm::select(q > yield, yield / q, 1.0), left = vm::min(yield, q);
      const bool isDense = compactionOld >= 1.0;
      now = select(isDense, sum(keep * s, mean), cells);
      psi = vm::select(isDense, left * left / (6.0 * G) + mean * mean / (2.0 * K), cellEnergy);
    }

    bool wasAlive = true, isAlive = true;
    if constexpr (kDeletes) {
      const double largestOld = stateOld[i + N],
                   largest = grown(largestOld, vm::max(vm::max(U.s11, U.s22), U.s33) - 1.0) + 0.0 * trace(U);
      wasAlive = !(largestOld >= deletionStrain), isAlive = !(largest >= deletionStrain);
      const double spoilt = largest - largest; // a NaN decides nothing
      now = select(wasAlive & isAlive, sum(now, spoilt), Sym<Storage>{});
      psi = vm::select(isAlive, psi + spoilt, 0.0);
      state[i + N] = vm::select(wasAlive, largest, largestOld);
      state[i + 2 * N] = vm::select(wasAlive & isAlive, 1.0, 0.0);
    }
    state[i] = vm::select(wasAlive, compaction, compactionOld);
    storeTensor(stress, N, i, now);
    const double rho = density[i], volume = stretchVolume(U),
                 volumeOld = stretchVolume(loadTensor<Storage>(stretchOld, N, i));
    const double intOld = internalOld[i], inelOld = inelasticOld[i];
    const double perMass = 1.0 / (rho * volume);
    const double internalNow = intOld + kirchhoffWork(volumeOld, old, volume, now, strain) * perMass;
    const double inelasticNow = grown(inelOld, internalNow - psi * volume * perMass);
    internal[i] = vm::select(wasAlive, internalNow, intOld);
    inelastic[i] = vm::select(wasAlive, inelasticNow, inelOld);
  });
}

template <class Storage>
SA_INLINE void answerFirst(const Block& b, const Honeycomb& m) {
  const int64_t N = b.points;
  const Sym<S33> M = m.loose;
  const double *strainInc = b.strainInc, *stressOld = b.stressOld, *internalOld = b.internalOld,
               *inelasticOld = b.inelasticOld;
  double *stress = b.stress, *internal = b.internal, *inelastic = b.inelastic;
  forPoints(b.points, [=](int i) SA_POINT {
    Sym<Storage> now = loadTensor<Storage>(stressOld, N, i);
    const Sym<Storage> strain = loadTensor<Storage>(strainInc, N, i);
    now.s11 += M.s11 * strain.s11, now.s22 += M.s22 * strain.s22, now.s33 += M.s33 * strain.s33;
    now.s12 += M.s12 * strain.s12;
    if constexpr (Storage::k23and13) now.s23 += M.s23 * strain.s23, now.s13 += M.s13 * strain.s13;
    storeTensor(stress, N, i, now);
    internal[i] = internalOld[i];
    inelastic[i] = inelasticOld[i];
  });
  keepStates(b, 0);
}

template <class Storage>
SA_INLINE void follow(const Block& b, const Honeycomb& model) {
  if (b.isDataCheck) return answerFirst<Storage>(b, model);
  const bool deletes = model.deletionStrain > 0.0;
  forPieces(b.points, [&b, &model, deletes](int start, int n) SA_POINT {
    HoneycombScratch w;
    findStrengths<Storage>(b, model, start, n, w);
    Lane isDense;
    const double* compaction = b.stateOld + start;
    forPoints(n, [=, &isDense](int k) SA_POINT { isDense[k] = vm::select(compaction[k] >= 1.0, 1.0, 0.0); });
    const bool hasDense = isAnySet(n, isDense);
    const auto store = [&](auto kDeletes) SA_POINT {
      if (hasDense)
        storeCrushed<Storage, kDeletes, true>(b, model, start, n, w);
      else
        storeCrushed<Storage, kDeletes, false>(b, model, start, n, w);
    };
    if (deletes)
      store(std::true_type{});
    else
      store(std::false_type{});
  });
  keepStates(b, deletes ? Honeycomb::kStatesWithDeletion : Honeycomb::kStates);
}

SA_INLINE void compute(const Block& b, const Honeycomb& model) {
  if (b.isSolid())
    follow<S33>(b, model);
  else
    follow<S31>(b, model);
}

} // namespace

SA_USER_MATERIAL(SPX_USR_HONEYCOMB, Honeycomb)

} // namespace sa::user
