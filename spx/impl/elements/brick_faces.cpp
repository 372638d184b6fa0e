// Areas and normals of the faces of the brick.
#include "glo/kernel/kernel.h"
#include "spx.h"
#include "spx/impl/elements/brick_family.h"

namespace sa {

using namespace brick;

namespace {

// Nodes of the faces zeta = -1, zeta = 1, eta = -1, xi = 1, eta = 1, xi = -1, counter-clockwise seen from outside.
constexpr int kFaceNodes[6][4] = {{1, 4, 3, 2}, {5, 6, 7, 8}, {1, 2, 6, 5}, {2, 3, 7, 6}, {3, 4, 8, 7}, {4, 1, 5, 8}};

// Edge vectors of a bilinear face with nodes 1..4, times 4, and the vector that warps or tapers it.
struct FaceEdges {
  double a, b, h;
};
SA_INLINE FaceEdges faceEdges(double u1, double u2, double u3, double u4) {
  const double p1 = u2 - u1, p2 = u3 - u4, q1 = u4 - u1, q2 = u3 - u2;
  return {p1 + p2, q1 + q2, p2 - p1};
}

// The normal at (xi, eta) is n0 + xi n1 + eta n2, times 16 here.
struct FaceTerms {
  double x0, y0, z0, x1, y1, z1, x2, y2, z2;
};
struct FaceArea {
  double area, x, y, z;
};

// First coordinates of the four nodes of a face; the others follow 8 ld and 16 ld behind.
struct FaceNodes {
  const double *X1, *X2, *X3, *X4;
  int64_t ld;

  // The terms of element e, its coordinates multiplied by a power of two.
  SA_INLINE FaceTerms terms(int64_t e, double scale) const {
    // a small face may stand far out, and a large one overflow in its differences
    const double before = scale < 1.0 ? scale : 1.0, after = scale < 1.0 ? 1.0 : scale;
    const auto edges = [=, this](int64_t at) SA_POINT {
      const FaceEdges f = faceEdges(before * X1[at], before * X2[at], before * X3[at], before * X4[at]);
      return FaceEdges{after * f.a, after * f.b, after * f.h};
    };
    const FaceEdges x = edges(e), y = edges(e + 8 * ld), z = edges(e + 16 * ld);
    return {y.a * z.b - z.a * y.b, z.a * x.b - x.a * z.b, x.a * y.b - y.a * x.b,
            y.a * z.h - z.a * y.h, z.a * x.h - x.a * z.h, x.a * y.h - y.a * x.h,
            y.h * z.b - z.h * y.b, z.h * x.b - x.h * z.b, x.h * y.b - y.h * x.b};
  }
  // A quarter of the largest difference of coordinates to node 1.
  SA_INLINE double extent(int64_t e) const {
    double largest = 0.0;
    const double* const others[] = {X2, X3, X4};
    for (int c = 0; c < 3; ++c)
      for (const double* node : others) {
        const double d = __builtin_fabs(0.25 * node[e + 8 * c * ld] - 0.25 * X1[e + 8 * c * ld]);
        largest = d > largest ? d : largest;
      }
    return largest;
  }
};

// The length of the normal, summed over 3 x 3 points, and the area vector.
SA_INLINE FaceArea faceArea(const FaceTerms& t) {
  constexpr double kPoint = 0.7745966692414834; // sqrt(3/5)
  const auto length = [=](double xi, double eta) SA_POINT {
    const double nx = t.x0 + xi * t.x1 + eta * t.x2, ny = t.y0 + xi * t.y1 + eta * t.y2,
                 nz = t.z0 + xi * t.z1 + eta * t.z2;
    return __builtin_sqrt(nx * nx + ny * ny + nz * nz);
  };
  const double middle = length(0.0, 0.0);
  const double edge = (length(-kPoint, 0.0) + length(kPoint, 0.0)) + (length(0.0, -kPoint) + length(0.0, kPoint));
  const double corner =
      (length(-kPoint, -kPoint) + length(kPoint, kPoint)) + (length(-kPoint, kPoint) + length(kPoint, -kPoint));
  // weights 64, 40 and 25 over 81, and the 16
  return {(64.0 * middle + 40.0 * edge + 25.0 * corner) * (0.0625 / 81.0), 0.25 * t.x0, 0.25 * t.y0, 0.25 * t.z0};
}

// The same where squares of areas overflow or vanish, by two powers of two: one brings the extent near 1, one the terms of a
// face that is far longer than wide.  An area beyond all doubles counts as 0.
SA_INLINE FaceArea scaledFaceArea(const FaceNodes& nodes, int64_t e) {
  const double scale = reciprocalPower(nodes.extent(e));
  FaceTerms t = nodes.terms(e, scale);
  double* const terms[] = {&t.x0, &t.y0, &t.z0, &t.x1, &t.y1, &t.z1, &t.x2, &t.y2, &t.z2};
  double largest = 0.0;
  for (const double* term : terms) largest = __builtin_fabs(*term) > largest ? __builtin_fabs(*term) : largest;
  const double raise = reciprocalPower(largest), back = 1.0 / scale, lower = 1.0 / raise;
  for (double* term : terms) *term *= raise;
  const FaceArea f = faceArea(t);
  const auto unscaled = [=](double value) SA_POINT { return value * back * lower * back; };
  if (unscaled(f.area) > 1.7976931348623157e308) return {0.0, 0.0, 0.0, 0.0};
  return {unscaled(f.area), unscaled(f.x), unscaled(f.y), unscaled(f.z)};
}

} // namespace

SA_KERNEL(SPX_OPE_C3D8FACEAREA, (const int32_t* nblock, const int32_t* ld, const int32_t* face, const double* X,
                                 double* area, double* normal, const double* mask)) {
  const int64_t L = *ld;
  const int number = *face;
  if (number < 1 || number > 6) return;
  const auto& corner = kFaceNodes[number - 1];
  const FaceNodes nodes = {X + (corner[0] - 1) * L, X + (corner[1] - 1) * L, X + (corner[2] - 1) * L,
                           X + (corner[3] - 1) * L, L};
  const auto store = [=](int64_t e, const FaceArea& f, bool off) SA_POINT {
    area[e] = off ? 0.0 : f.area;
    normal[e] = off ? 0.0 : f.x;
    normal[e + L] = off ? 0.0 : f.y;
    normal[e + 2 * L] = off ? 0.0 : f.z;
  };
  forPieces<kBrickPiece>(*nblock, [=](int start, int n) SA_POINT {
    Lane marks;
    forPoints(n, [=, &marks](int i) SA_POINT {
      const int e = start + i;
      const FaceArea f = faceArea(nodes.terms(e, 1.0));
      const bool off = mask[e] != 0.0;
      store(e, f, off);
      marks[i] = off || (f.area > 1e-140 && f.area < 1e140) ? 0.0 : 1.0;
    });
    if (!anyMarked(n, marks)) return;
    for (int i = 0; i < n; ++i)
      if (marks[i] != 0.0) store(start + i, scaledFaceArea(nodes, start + i), false);
  });
}

} // namespace sa
