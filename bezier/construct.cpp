// Integer cubic segments built from three points.

#include <cfloat>
#include <cmath>

#include "QorMath/bezier.h"
#include "bezier/convert.h"

namespace QorMath {
namespace CubicBezier {

namespace {

using Point = vector2dT<double, 1>;
using Vector = vector2dT<double, 0>;


bool Coincide(const Point& p, const Point& q) {
    return std::fabs(p.x - q.x) <= DBL_EPSILON && std::fabs(p.y - q.y) <= DBL_EPSILON;
}

// v / |v|, or v itself when it is too short to have a direction.
Vector Normalised(const Vector& v) {
    if (!(MagnitudeSqrd(v) > DBL_EPSILON)) return v;
    const double length = Magnitude(v);
    return {v.x / length, v.y / length};
}

// The foot of p on the line through m with direction d.
Point Projected(const Point& p, const Point& m, const Vector& d, double dd) {
    return m + d * (Dot(p - m, d) / dd);
}

// The control point of the quadratic from A to B through M. With the midpoint
// rule, B(½) = (A + 2Q + B)/4 = M gives Q = (M − (A + B)/4)·2. Otherwise the
// curve's tangent at M is perpendicular to the outward bisector n of the angle
// A–M–B, and Q sits on that bisector at the geometric mean of the distances of
// A and B from the tangent line.
Point QuadraticControl(const Point& A, const Point& M, const Point& B, bool midpointAtHalf) {
    if (midpointAtHalf || Coincide(M, A) || Coincide(B, A))
        return {(M.x - (A.x + B.x) * 0.25) * 2, (M.y - (A.y + B.y) * 0.25) * 2};
    const Vector u = Normalised(M - B), w = Normalised(M - A);
    const Vector n = Normalised(w + u);
    const Vector d{-n.y, n.x};
    const double dd = MagnitudeSqrd(d);
    const Point a = dd > 0 ? Projected(A, M, d, dd) : M;
    const Point b = dd > 0 ? Projected(B, M, d, dd) : M;
    const double k = std::sqrt(Magnitude(a - A) * Magnitude(b - B));
    return M + n * k;
}

}  // namespace

// Degree raise of A, Q, B: P1 = A + ⅔(Q − A), P2 = Q + ⅓(B − Q).
void From3Points(tagPOINT out[4], const Point& A, const Point& M, const Point& B, bool midpointAtHalf) {
    const Point Q = QuadraticControl(A, M, B, midpointAtHalf);
    out[0] = Rounded(A);
    out[1] = Rounded({(Q.x - A.x) * 0.6666666666666666 + A.x, (Q.y - A.y) * 0.6666666666666666 + A.y});
    out[2] = Rounded({(B.x - Q.x) * 0.3333333333333333 + Q.x, (B.y - Q.y) * 0.3333333333333333 + Q.y});
    out[3] = Rounded(B);
}

// With P1 = A + α·s and P2 = B + β·e, B(½) = (P0 + 3P1 + 3P2 + P3)/8 = M reads
// α·s + β·e = r = (8M − 4(A + B))/3, a 2×2 system solved by Cramer's rule.
bool From3Points(tagPOINT out[4], const Point& A, const Vector& s, const Point& M, const Point& B,
                 const Vector& e) {
    const double den = e.y * s.x - s.y * e.x;
    if (std::fabs(den) <= DBL_EPSILON) return false;
    const Vector r{(8 * M.x - 4 * (A.x + B.x)) / 3, (8 * M.y - 4 * (A.y + B.y)) / 3};
    const double alpha = (r.x * e.y - r.y * e.x) / den;
    const double beta = (r.y * s.x - r.x * s.y) / den;
    out[0] = Rounded(A);
    out[1] = Rounded(A + s * alpha);
    out[2] = Rounded(B + e * beta);
    out[3] = Rounded(B);
    return true;
}

}  // namespace CubicBezier
}  // namespace QorMath
