// Closed form of the principal values and directions of plane tensors.
#pragma once

#include "glo/tensors/trigonometric_values.h"

namespace sa {

// Half the difference of the direct components and the radius of the circle, which carries the sign of that half, so that the
// rotation stays within 45 degrees.
struct PlaneCircle {
  double half, radius;
  bool point; // the circle is a point: nothing to rotate
};
SA_INLINE PlaneCircle planeCircle(double s11, double s22, double s12) {
  const double h = (s11 - s22) * 0.5, length = __builtin_sqrt(s12 * s12 + h * h), radius = h < 0.0 ? -length : length;
  return {h, radius, __builtin_fabs(radius) <= vm::kSmallestNormal};
}

// Cosine and sine of the rotation into principal axes, and the sine of twice its angle.
struct PlaneRotation {
  double c, s, sin2;
};
SA_INLINE PlaneRotation planeRotation(double s11, double s22, double s12) {
  const PlaneCircle m = planeCircle(s11, s22, s12);
  const double z = m.point ? 1.0 : 0.0, cos2 = m.half / (m.radius + z), sin2 = s12 / (m.radius + z);
  const double c = __builtin_sqrt(0.5 * (1.0 - z) * (cos2 + 1.0)) + z, s = (1.0 - z) * sin2 / (2.0 * c);
  return {c, s, sin2};
}

struct PlanePrincipal {
  double p1, p2, c, s;
};
SA_INLINE PlanePrincipal planePrincipal(double s11, double s22, double s12) {
  const auto [c, s, sin2] = planeRotation(s11, s22, s12);
  return {s11 * c * c + sin2 * s12 + s22 * s * s, s22 * c * c - sin2 * s12 + s11 * s * s, c, s};
}

} // namespace sa
