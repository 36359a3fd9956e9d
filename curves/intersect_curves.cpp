// Intersections of two cubic segments. The second curve's parametric form is
// substituted into the first one's implicit equation, giving a polynomial of
// degree 9 whose roots in [0, 1] are the crossings on the second curve; each
// crossing is then inverted onto the first. A nearly straight curve has a
// degenerate implicit form and is intersected as a line instead.

#include <utility>

#include "QorMath/bezier.h"
#include "QorMath/bounds.h"
#include "bezier/convert.h"
#include "bezier/polynomial.h"
#include "bezier/power_basis.h"
#include "bezier/roots.h"
#include "geometry/precision_guard.h"

namespace QorMath {
namespace CubicBezier {

namespace {

using Point = vector2dT<double, 1>;
using Vector = vector2dT<double, 0>;

// Within this squared distance of a line a curve counts as straight, and a
// crossing found on that line must lie as near to the curve itself.
constexpr double kStraightTolerance = 4.0;

// The crossings of `other` with the straight curve `line`, taken as the line
// through its end points and mapped back onto it by closest point. Appended;
// true when at least one was accepted.
bool AppendStraightCrossings(const Point line[4], const Point other[4], std::vector<double>& lineParameters,
                             std::vector<double>& otherParameters, std::vector<Point>& points) {
    if (!AreCollinear(line, 4, kStraightTolerance)) return false;
    const Point chord[2] = {line[0], line[3]};
    std::vector<double> ts, ss;
    FindBezierLineIntersection(other, chord, ts, ss, false);
    const PowerBasis l = ToPowerBasis(line);
    const PowerBasis k = ToPowerBasis(other);
    bool accepted = false;
    for (const double t : ts) {
        const Point q = Evaluate(k, t);
        double tl = 0, d2 = 0;
        Point nearest{};
        if (FindClosestPointOnBezier(l.a, l.b, l.c, l.d, q, tl, nearest, d2) && d2 < kStraightTolerance &&
            tl > 0 && tl < 1) {
            lineParameters.push_back(tl);
            otherParameters.push_back(t);
            points.push_back(q);
            accepted = true;
        }
    }
    return accepted;
}

// g(t) = f(S(t)) for the implicit cubic f = c[0]·x³ + c[1]·y³ + c[2]·x²y +
// c[3]·xy² + c[4]·x² + c[5]·y² + c[6]·xy + c[7]·x + c[8]·y + c[9].
Poly<9> Substitute(const double c[10], const PowerBasis& s) {
    const Poly<3> x{s.a.x, s.b.x, s.c.x, s.d.x};
    const Poly<3> y{s.a.y, s.b.y, s.c.y, s.d.y};
    const Poly<6> xx = Multiply<3, 3>(x, x), yy = Multiply<3, 3>(y, y), xy = Multiply<3, 3>(x, y);
    Poly<9> g{};
    AddScaled<9, 9>(g, c[0], Multiply<6, 3>(xx, x));
    AddScaled<9, 9>(g, c[1], Multiply<6, 3>(yy, y));
    AddScaled<9, 9>(g, c[2], Multiply<6, 3>(xx, y));
    AddScaled<9, 9>(g, c[3], Multiply<3, 6>(x, yy));
    AddScaled<9, 6>(g, c[4], xx);
    AddScaled<9, 6>(g, c[5], yy);
    AddScaled<9, 6>(g, c[6], xy);
    AddScaled<9, 3>(g, c[7], x);
    AddScaled<9, 3>(g, c[8], y);
    g[9] += c[9];
    return g;
}

bool IsZero(const Point& p) { return p.x == 0 && p.y == 0; }
bool operator==(const Point& p, const Point& q) { return p.x == q.x && p.y == q.y; }

}  // namespace

void FindBezierIntersections(const Point first[4], const Point second[4], std::vector<double>& firstParameters,
                             std::vector<double>& secondParameters, std::vector<Point>& points) {
    if (AppendStraightCrossings(first, second, firstParameters, secondParameters, points)) return;
    if (AppendStraightCrossings(second, first, secondParameters, firstParameters, points)) return;

    // Both in coordinates with the first curve's start at the origin.
    const Point origin = first[0];
    PowerBasis p = ToPowerBasis(first), q = ToPowerBasis(second);
    p.d = {0.0, 0.0};
    q.d = {second[0].x - origin.x, second[0].y - origin.y};
    // A curve without a t³ term has an identically vanishing implicit form.
    const bool exchanged = IsZero(p.a);
    const PowerBasis& implicit = exchanged ? q : p;
    const PowerBasis& substituted = exchanged ? p : q;

    Poly<9> g;
    {
        PrecisionGuard guard;
        double c[10];
        ConvertBezierToImplicit(implicit.a, implicit.b, implicit.c, implicit.d, c[0], c[1], c[2], c[3], c[4], c[5],
                                c[6], c[7], c[8], c[9]);
        g = Substitute(c, substituted);
    }

    firstParameters.clear();
    secondParameters.clear();
    points.clear();
    double roots[11];
    const int32_t n = FindDegree9Roots(g.data(), roots);
    std::vector<double> inverted;
    for (int32_t i = 0; i < n; ++i) {
        const double t = roots[i];
        if (!(t >= 0 && t <= 1)) continue;
        const Point at = Evaluate(substituted, t);
        inverted.clear();
        if (!Invert(implicit.a, implicit.b, implicit.c, implicit.d, at, inverted)) continue;
        points.push_back(at);
        secondParameters.push_back(t);
        firstParameters.push_back(inverted.front());
    }
    if (exchanged && &firstParameters != &secondParameters) std::swap(firstParameters, secondParameters);
    for (Point& at : points) at = {at.x + origin.x, at.y + origin.y};
}

void FindBezierIntersections(const tagPOINT first[4], const tagPOINT second[4], std::vector<double>& firstParameters,
                             std::vector<double>& secondParameters, std::vector<Point>& points) {
    Point p[4], q[4];
    ToDouble(first, p, 4);
    ToDouble(second, q, 4);
    FindBezierIntersections(p, q, firstParameters, secondParameters, points);
}

bool DoBeziersIntersect(const Point first[4], const Point second[4]) {
    if (first[0] == second[0] || first[3] == second[0] || first[0] == second[3] || first[3] == second[3])
        return true;
    std::vector<double> s, t;
    std::vector<Point> points;
    FindBezierIntersections(first, second, s, t, points);
    return !s.empty();
}

bool DoBeziersIntersect(const tagPOINT first[4], const tagPOINT second[4]) {
    Point p[4], q[4];
    ToDouble(first, p, 4);
    ToDouble(second, q, 4);
    return DoBeziersIntersect(p, q);
}

namespace {

double DistanceSquared(const Point& p, const Point& q) {
    const double dx = p.x - q.x, dy = p.y - q.y;
    return dx * dx + dy * dy;
}

// The foot of p on the segment a–b, when it falls within the segment.
bool FootOnSegment(const Point& p, const Point& a, const Point& b, Point& foot) {
    const Vector ab{b.x - a.x, b.y - a.y};
    const double length2 = ab.x * ab.x + ab.y * ab.y;
    if (!(length2 > 0)) return false;
    const double u = ((p.x - a.x) * ab.x + (p.y - a.y) * ab.y) / length2;
    if (!(u >= 0 && u <= 1)) return false;
    foot = {a.x + u * ab.x, a.y + u * ab.y};
    return true;
}

bool IsEndNearSegment(const Point& p, const Point& a, const Point& b, double w2) {
    Point foot{};
    return FootOnSegment(p, a, b, foot) && DistanceSquared(foot, p) < w2;
}

// x within [left, right]; y within top and bottom in either order.
bool IsInside(const BoundsT<double>& box, const Point& p) {
    const bool inY = (box.bottom <= p.y && p.y <= box.top) || (box.top <= p.y && p.y <= box.bottom);
    return box.left <= p.x && p.x <= box.right && inY;
}

bool IsNearCurve(const PowerBasis& k, const Point& p, double w2) {
    double t = 0, d2 = 0;
    Point nearest{};
    return FindClosestPointOnBezier(k.a, k.b, k.c, k.d, p, t, nearest, d2) && d2 < w2;
}

}  // namespace

bool DoesFatlineIntersectBezier(const Point points[4], const Point& a, const Point& b, double w) {
    // A null curve has the empty box and nothing to touch.
    if (points == nullptr) return false;
    BoundsT<double> box{points[0].x, points[0].y, points[0].x, points[0].y};
    for (int i = 1; i < 4; ++i) {
        if (points[i].x < box.left) box.left = points[i].x;
        if (points[i].x > box.right) box.right = points[i].x;
        if (points[i].y > box.top) box.top = points[i].y;
        if (points[i].y < box.bottom) box.bottom = points[i].y;
    }
    box = {box.left - w, box.top + w, box.right + w, box.bottom - w};
    if (!IsInside(box, a) && !IsInside(box, b)) return false;

    const double w2 = w * w;
    const Point& p0 = points[0];
    const Point& p3 = points[3];
    if (DistanceSquared(p0, a) < w2 || DistanceSquared(p3, a) < w2 || DistanceSquared(p0, b) < w2 ||
        DistanceSquared(p3, b) < w2)
        return true;
    if (IsEndNearSegment(p0, a, b, w2) || IsEndNearSegment(p3, a, b, w2)) return true;
    const Point segment[2] = {a, b};
    if (DoesBezierIntersectLineSegment(points, segment)) return true;
    const PowerBasis k = ToPowerBasis(points);
    return IsNearCurve(k, a, w2) || IsNearCurve(k, b, w2);
}

}  // namespace CubicBezier

namespace {

// (p − q0) × (q1 − q0), in the sign convention of the fat-line test.
double SideOf(const vector2dT<double, 1>& p, const vector2dT<double, 1>& q0, const vector2dT<double, 1>& q1) {
    return (p.y - q0.y) * (q1.x - q0.x) - (p.x - q0.x) * (q1.y - q0.y);
}

}  // namespace

bool DoesFatlineIntersectLine(const vector2dT<double, 1>& p0, const vector2dT<double, 1>& p1,
                              const vector2dT<double, 1>& q0, const vector2dT<double, 1>& q1, double w) {
    const double w2 = w * w;
    if (w2 > DistanceToLineSegmentSqrd(p0, p1, q0) || w2 > DistanceToLineSegmentSqrd(p0, p1, q1) ||
        w2 > DistanceToLineSegmentSqrd(q0, q1, p0) || w2 > DistanceToLineSegmentSqrd(q0, q1, p1))
        return true;
    if (SideOf(p1, q0, q1) * SideOf(p0, q0, q1) > 0) return false;
    return SideOf(q0, p0, p1) * SideOf(q1, p0, p1) < 0;
}

}  // namespace QorMath
