// Reading families of curves from the properties of a built-in user material.
#include "spx/impl/user/curves.h"

namespace sa::user {

// As many rows of (rate, number of rows), then the curves one after another.
FamilyFault takeFamily(Tables& tables, double count, RateFamily& family) {
  if (!tables.take(count, 2, family.rates)) return FamilyFault::cutOff;
  if (family.rates.rows < 1) return FamilyFault::noCurve;
  for (int k = 0; k < family.rates.rows; ++k) {
    Table curve;
    if (!tables.take(family.rates.at(k, 1), kCurveColumns, curve)) return FamilyFault::cutOff;
    if (curve.rows < 1) return FamilyFault::noCurve;
    if (k == 0) family.curves = curve.values;
    if (!curve.isIncreasing(kStrain)) return FamilyFault::strains;
  }
  const bool hasRates = family.rates.rows < 2 || (family.rates.isIncreasing(0) && family.rates.isPositive(0));
  return hasRates ? FamilyFault::none : FamilyFault::rates;
}

} // namespace sa::user
