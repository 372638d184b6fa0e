// The principal frame of the right stretch U over the points of a piece, and tensors turned into it and back.
#pragma once

#include "glo/tensors/principal.h"
#include "glo/tensors/spectral.h"
#include "spx/impl/user/frame.h"

namespace sa::user {

// Smaller stretches count as this one.
constexpr double kLeastStretch = 1e-6;

// Volume ratio det U.
template <class Storage>
SA_INLINE double stretchVolume(const Sym<Storage>& U) {
  return vm::max(kLeastStretch * kLeastStretch * kLeastStretch, determinant(U));
}

// Directions of one point: n1 = (x1, y1, z1) and so on.
template <class Storage>
struct Directions {
  double x1, y1, z1, x2, y2, z2, x3, y3, z3;
};
// n1 = (c, s, 0), n2 = (-s, c, 0), n3 the third axis
template <>
struct Directions<S31> {
  double c, s;
};

// Components in the frame of its directions of the tensor that has the components t in the axes.
SA_INLINE Sym<S31> intoFrame(const Directions<S31>& n, const Sym<S31>& t) {
  const double cc = n.c * n.c, ss = n.s * n.s, cs = n.c * n.s, shear = 2.0 * cs * t.s12;
  Sym<S31> r{};
  r.s11 = cc * t.s11 + ss * t.s22 + shear;
  r.s22 = ss * t.s11 + cc * t.s22 - shear;
  r.s33 = t.s33;
  r.s12 = cs * (t.s22 - t.s11) + (cc - ss) * t.s12;
  return r;
}
SA_INLINE Sym<S33> intoFrame(const Directions<S33>& n, const Sym<S33>& t) {
  const double a1 = t.s11 * n.x1 + t.s12 * n.y1 + t.s13 * n.z1, b1 = t.s12 * n.x1 + t.s22 * n.y1 + t.s23 * n.z1,
               c1 = t.s13 * n.x1 + t.s23 * n.y1 + t.s33 * n.z1;
  const double a2 = t.s11 * n.x2 + t.s12 * n.y2 + t.s13 * n.z2, b2 = t.s12 * n.x2 + t.s22 * n.y2 + t.s23 * n.z2,
               c2 = t.s13 * n.x2 + t.s23 * n.y2 + t.s33 * n.z2;
  const double a3 = t.s11 * n.x3 + t.s12 * n.y3 + t.s13 * n.z3, b3 = t.s12 * n.x3 + t.s22 * n.y3 + t.s23 * n.z3,
               c3 = t.s13 * n.x3 + t.s23 * n.y3 + t.s33 * n.z3;
  Sym<S33> r{};
  r.s11 = n.x1 * a1 + n.y1 * b1 + n.z1 * c1;
  r.s22 = n.x2 * a2 + n.y2 * b2 + n.z2 * c2;
  r.s33 = n.x3 * a3 + n.y3 * b3 + n.z3 * c3;
  r.s12 = n.x1 * a2 + n.y1 * b2 + n.z1 * c2;
  r.s23 = n.x2 * a3 + n.y2 * b3 + n.z2 * c3;
  r.s13 = n.x1 * a3 + n.y1 * b3 + n.z1 * c3;
  return r;
}
// The other way.
SA_INLINE Sym<S31> outOfFrame(const Directions<S31>& n, const Sym<S31>& t) {
  return intoFrame(Directions<S31>{n.c, -n.s}, t);
}
SA_INLINE Sym<S33> outOfFrame(const Directions<S33>& n, const Sym<S33>& t) {
  return intoFrame(Directions<S33>{n.x1, n.x2, n.x3, n.y1, n.y2, n.y3, n.z1, n.z2, n.z3}, t);
}
// The tensor with these principal values.
SA_INLINE Sym<S31> outOfFrame(const Directions<S31>& n, double f1, double f2, double f3) {
  const double cc = n.c * n.c, ss = n.s * n.s;
  Sym<S31> r{};
  r.s11 = cc * f1 + ss * f2;
  r.s22 = ss * f1 + cc * f2;
  r.s33 = f3;
  r.s12 = n.c * n.s * (f1 - f2);
  return r;
}
SA_INLINE Sym<S33> outOfFrame(const Directions<S33>& n, double f1, double f2, double f3) {
  Sym<S33> r{};
  r.s11 = f1 * n.x1 * n.x1 + f2 * n.x2 * n.x2 + f3 * n.x3 * n.x3;
  r.s22 = f1 * n.y1 * n.y1 + f2 * n.y2 * n.y2 + f3 * n.y3 * n.y3;
  r.s33 = f1 * n.z1 * n.z1 + f2 * n.z2 * n.z2 + f3 * n.z3 * n.z3;
  r.s12 = f1 * n.x1 * n.y1 + f2 * n.x2 * n.y2 + f3 * n.x3 * n.y3;
  r.s23 = f1 * n.y1 * n.z1 + f2 * n.y2 * n.z2 + f3 * n.y3 * n.z3;
  r.s13 = f1 * n.x1 * n.z1 + f2 * n.x2 * n.z2 + f3 * n.x3 * n.z3;
  return r;
}

// Nominal strains 1 - stretch along the directions, positive in compression; near the identity they keep the digits that the
// stretches lose.  No stretch of them is below the least.
struct NominalStrains {
  Lane e1, e2, e3;
};
template <class Storage>
struct StretchFrame : NominalStrains {
  JacobiScratch<true> found;

  SA_INLINE Directions<S33> directions(int i) const {
    return {found.v[0][i], found.v[1][i], found.v[2][i], found.v[3][i], found.v[4][i],
            found.v[5][i], found.v[6][i], found.v[7][i], found.v[8][i]};
  }
};
template <>
struct StretchFrame<S31> : NominalStrains {
  Lane c, s;

  SA_INLINE Directions<S31> directions(int i) const { return {c[i], s[i]}; }
};

SA_INLINE double limitedNominal(double e) { return vm::min(1.0 - kLeastStretch, e); }

SA_INLINE void findFrame(const double* U, int64_t N, int start, int n, StretchFrame<S33>& frame) {
  JacobiScratch<true> w;
  Lane shift;
  diagonaliseAboutOne<QuickRotation>(n, w, frame.found, shift, loadS33(AllPoints{n, start}, N, U, w));
  unscale(n, w, frame.found);
  forPoints(n, [&frame, &shift](int i) SA_POINT {
    const double from = 1.0 - shift[i];
    frame.e1[i] = limitedNominal(from - frame.found.a11[i]);
    frame.e2[i] = limitedNominal(from - frame.found.a22[i]);
    frame.e3[i] = limitedNominal(from - frame.found.a33[i]);
  });
}
SA_INLINE void findFrame(const double* U, int64_t N, int start, int n, StretchFrame<S31>& frame) {
  forPoints(n, [=, &frame](int i) SA_POINT {
    const Sym<S31> t = loadTensor<S31>(U, N, start + i);
    const double mean = 0.5 * ((1.0 - t.s11) + (1.0 - t.s22)), h = 0.5 * (t.s11 - t.s22);
    const double r = vm::sqrt(h * h + t.s12 * t.s12), perR = 1.0 / vm::select(r == 0.0, 1.0, r);
    // cosine and sine of the angle between the direction of the largest stretch and the nearer axis
    const double far = vm::sqrt(0.5 + 0.5 * vm::select(r == 0.0, 1.0, vm::abs(h) * perR)),
                 near = 0.5 * (vm::abs(t.s12) * perR) / far;
    frame.c[i] = vm::select(h >= 0.0, far, near);
    frame.s[i] = vm::copysign(vm::select(h >= 0.0, near, far), t.s12);
    frame.e1[i] = limitedNominal(mean - r);
    frame.e2[i] = limitedNominal(mean + r);
    frame.e3[i] = limitedNominal(1.0 - t.s33);
  });
}

} // namespace sa::user
