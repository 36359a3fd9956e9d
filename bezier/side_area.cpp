// Side of a point, signed area under a segment, and points beside the curve.

#include <cfloat>
#include <cmath>
#include <limits>

#include "QorMath/bezier.h"
#include "bezier/power_basis.h"

namespace QorMath {
namespace CubicBezier {

namespace {

using Point = vector2dT<double, 1>;
using Vector = vector2dT<double, 0>;

}  // namespace

// The sign of B′(t) × (p − nearest) at the closest point: positive is left of
// the direction of travel (y up). B′ is used as is: at zero speed, no side.
bool GetSide(const Point& a, const Point& b, const Point& c, const Point& d, const Point& p, double& t,
             Point& nearest, double& distanceSquared, Side& side) {
    if (!FindClosestPointOnBezier(a, b, c, d, p, t, nearest, distanceSquared)) return false;
    if (!(t >= 0 && t <= 1)) return false;
    const Vector T = EvaluateDerivative(PowerBasis{a, b, c, d}, t);
    const double cross = T.x * (p.y - nearest.y) - T.y * (p.x - nearest.x);
    side = cross > 0 ? Side::SideLeft : cross < 0 ? Side::SideRight : Side::SideNone;
    return true;
}

Side GetSide(const Point& a, const Point& b, const Point& c, const Point& d, const Point& p) {
    // t starts outside [0, 1]: a closest-point search whose every distance
    // overflows reports success without setting t, and must not classify.
    double t = std::numeric_limits<double>::quiet_NaN(), distanceSquared = 0;
    Point nearest{};
    Side side = Side::SideNone;
    return GetSide(a, b, c, d, p, t, nearest, distanceSquared, side) ? side : Side::SideNone;
}

// ∫₀¹ y(t)·x′(t) dt with x′ = X3·t² + X2·t + X1 and y = a.y·t³ + b.y·t² + c.y·t + d.y:
// the coefficient of each power tᵏ of the product integrates to 1/(k + 1).
double GetAreaUnderBezier(const Point& a, const Point& b, const Point& c, const Point& d) {
    const double X3 = 3 * a.x, X2 = 2 * b.x, X1 = c.x;
    return (X3 * c.y + (X2 * b.y + a.y * X1)) * 0.25 +
           ((X2 * c.y + b.y * X1 + X3 * d.y) * 0.3333333333333333 + ((X2 * d.y + c.y * X1) * 0.5 + d.y * X1)) +
           (X3 * b.y + X2 * a.y) * 0.2 + a.y * a.x * 0.5;
}

// B(t) moved by distance·scale along the left normal (−T.y, T.x) of the unit tangent.
Point MapToBezier(const Point points[4], double t, double distance, double scale) {
    const PowerBasis k = ToPowerBasis(points);
    Vector T = SafeBezierTangent(t, k.a, k.b, k.c, k.d);
    const double length2 = MagnitudeSqrd(T);
    if (length2 > DBL_EPSILON) {
        const double length = std::sqrt(length2);
        T = {T.x / length, T.y / length};
    }
    const double s = distance * scale;
    const Point B = Evaluate(k, t);
    return {B.x - s * T.y, B.y + s * T.x};
}

}  // namespace CubicBezier
}  // namespace QorMath
