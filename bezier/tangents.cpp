// Tangent directions and the parameters of vertical, horizontal and parallel
// tangents, and of tangents through a point.

#include <cfloat>
#include <cmath>

#include "QorMath/bezier.h"
#include "bezier/power_basis.h"
#include "bezier/roots.h"

namespace QorMath {
namespace CubicBezier {

namespace {

using Point = vector2dT<double, 1>;
using Vector = vector2dT<double, 0>;

// Roots of k2·t² + k1·t + k0 in (0, 1) or [0, 1], appended in ascending order.
void AppendQuadraticRoots(double k2, double k1, double k0, bool includeEnds, std::vector<double>& out) {
    const double c[3] = {k2, k1, k0};
    double roots[4];
    const int32_t n = FindQuadraticRoots(c, roots, includeEnds);
    out.insert(out.end(), roots, roots + n);
}

}  // namespace

// Where B′ vanishes (a collapsed handle), the direction the curve leaves in is
// that of a short chord toward the middle; a curve that is a point everywhere
// gets +x.
Vector SafeBezierTangent(double t, const Point& a, const Point& b, const Point& c, const Point& d) {
    const PowerBasis k{a, b, c, d};
    Vector tangent = EvaluateDerivative(k, t);
    if (MagnitudeSqrd(tangent) >= DBL_EPSILON) return tangent;
    const double h = 1e-5;
    tangent = t > 0.5 ? Evaluate(k, t) - Evaluate(k, t - h) : Evaluate(k, t + h) - Evaluate(k, t);
    if (MagnitudeSqrd(tangent) >= DBL_EPSILON) return tangent;
    const Point q0 = Evaluate(k, 1e-6), q1 = Evaluate(k, 0.999999);
    if (q0 == q1) return {1, 0};
    return q1 - q0;
}

void GetVerticalTangents(const Point& a, const Point& b, const Point& c, std::vector<double>& out) {
    AppendQuadraticRoots(3 * a.x, 2 * b.x, c.x, false, out);
}

void GetHorizontalTangents(const Point& a, const Point& b, const Point& c, std::vector<double>& out) {
    AppendQuadraticRoots(3 * a.y, 2 * b.y, c.y, false, out);
}

// B′(t) × v = A·t² + B·t + C with u × v = u.y·v.x − v.y·u.x.
void GetParallels(const Point& a, const Point& b, const Point& c, const Vector& direction, std::vector<double>& out,
                  bool& everywhereParallel) {
    const auto cross = [&direction](const Point& u) { return u.y * direction.x - direction.y * u.x; };
    const double A = 3 * cross(a), B = 2 * cross(b), C = cross(c);
    everywhereParallel = std::fabs(A) <= DBL_EPSILON && std::fabs(B) <= DBL_EPSILON && std::fabs(C) <= DBL_EPSILON;
    if (!everywhereParallel) AppendQuadraticRoots(A, B, C, true, out);
}

// The tangent line at t passes through p when (B(t) − p) × B′(t) = 0; with
// e = d − p the t⁵ terms cancel and the negated cross product is the quartic
// (a×b)t⁴ + 2(a×c)t³ + (3(a×e) + b×c)t² + 2(b×e)t + c×e, u×w = u.x·w.y − u.y·w.x.
int FindTangentsToPoint(const Point& a, const Point& b, const Point& c, const Point& d, const Point& p,
                        double* roots) {
    const Vector e = d - p;
    const double k[5] = {Cross(a, b), 2 * Cross(a, c), 3 * Cross(a, e) + Cross(b, c), 2 * Cross(b, e), Cross(c, e)};
    return FindQuarticRoots(k, roots, true);
}

}  // namespace CubicBezier
}  // namespace QorMath
