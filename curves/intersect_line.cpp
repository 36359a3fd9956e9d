// The implicit equation of a cubic segment, and its crossings with lines: each
// crossing is a root of one cubic in t.

#include <cmath>

#include "QorMath/bezier.h"
#include "bezier/convert.h"
#include "bezier/power_basis.h"
#include "bezier/roots.h"
#include "geometry/precision_guard.h"

namespace QorMath {
namespace CubicBezier {

namespace {

using Point = vector2dT<double, 1>;

// The cubic solver's roots of c[0]·t³ + … + c[3] in [0, 1], appended to ts.
void AppendCubicRoots(const double c[4], std::vector<double>& ts, bool includeEnds) {
    double roots[5];
    const int32_t n = FindCubicRoots(c, roots, includeEnds);
    for (int32_t i = 0; i < n; ++i) ts.push_back(roots[i]);
}

}  // namespace

// The resultant of Y(t) − y and X(t) − x is, up to sign, the determinant of
// their 3×3 Bezout matrix [[−u, −v, L1], [−v, L1 − w, L2], [L1, L2, L3]] with
// L1 = a.x·Y − a.y·X, L2 = b.x·Y − b.y·X, L3 = c.x·Y − c.y·X, X = x − d.x and
// Y = y − d.y (Sederberg, "Implicit representation of parametric curves", 1984):
//   f = L1³ − w·L1² + 2v·L1·L2 − u·L2² + u·L1·L3 + (v² − u·w)·L3.
// The coefficients e of f in X and Y are expanded first, then moved to x and y.
void ConvertBezierToImplicit(const Point& a, const Point& b, const Point& c, const Point& d, double& c1,
                             double& c2, double& c3, double& c4, double& c5, double& c6, double& c7, double& c8,
                             double& c9, double& c10) {
    PrecisionGuard guard;
    const double u = a.x * b.y - a.y * b.x;
    const double v = a.x * c.y - a.y * c.x;
    const double w = b.x * c.y - b.y * c.x;
    const double k = v * v - u * w;

    const double eXXX = -(a.y * a.y * a.y);
    const double eYYY = a.x * a.x * a.x;
    const double eXXY = 3 * a.x * a.y * a.y;
    const double eXYY = -3 * a.x * a.x * a.y;
    const double eXX = -w * a.y * a.y + 2 * v * a.y * b.y - u * b.y * b.y + u * a.y * c.y;
    const double eYY = -w * a.x * a.x + 2 * v * a.x * b.x - u * b.x * b.x + u * a.x * c.x;
    const double eXY = 2 * w * a.x * a.y - 2 * v * (a.x * b.y + a.y * b.x) + 2 * u * b.x * b.y -
                       u * (a.x * c.y + a.y * c.x);
    const double eX = -k * c.y;
    const double eY = k * c.x;

    // f(x, y) = F(x − d.x, y − d.y) with F the polynomial of the e above.
    const double dx = d.x, dy = d.y;
    c1 = eXXX;
    c2 = eYYY;
    c3 = eXXY;
    c4 = eXYY;
    c5 = eXX - 3 * dx * eXXX - dy * eXXY;
    c6 = eYY - 3 * dy * eYYY - dx * eXYY;
    c7 = eXY - 2 * dx * eXXY - 2 * dy * eXYY;
    c8 = eX + 3 * dx * dx * eXXX + 2 * dx * dy * eXXY + dy * dy * eXYY - 2 * dx * eXX - dy * eXY;
    c9 = eY + 3 * dy * dy * eYYY + dx * dx * eXXY + 2 * dx * dy * eXYY - 2 * dy * eYY - dx * eXY;
    c10 = -dx * dx * dx * eXXX - dy * dy * dy * eYYY - dx * dx * dy * eXXY - dx * dy * dy * eXYY + dx * dx * eXX +
          dy * dy * eYY + dx * dy * eXY - dx * eX - dy * eY;
}

// g(t) = (B(t) − L0) × (L1 − L0): zero where B(t) is on the line.
bool FindBezierLineIntersection(const Point points[4], const Point line[2], std::vector<double>& curveParameters,
                                std::vector<double>& lineParameters, bool includeEnds) {
    PrecisionGuard guard;
    curveParameters.clear();
    lineParameters.clear();
    const double dx = line[1].x - line[0].x, dy = line[1].y - line[0].y;
    if (dx == 0 && dy == 0) return false;

    const PowerBasis k = ToPowerBasis(points);
    const double g[4] = {dy * k.a.x - dx * k.a.y, dy * k.b.x - dx * k.b.y, dy * k.c.x - dx * k.c.y,
                         (points[0].x - line[0].x) * dy - (points[0].y - line[0].y) * dx};
    AppendCubicRoots(g, curveParameters, includeEnds);
    // s along the line's larger component; on a tie, y.
    const bool alongX = std::fabs(dx) > std::fabs(dy);
    for (const double t : curveParameters) {
        const Point q = Evaluate(k, t);
        lineParameters.push_back(alongX ? (q.x - line[0].x) * (1 / dx) : (q.y - line[0].y) * (1 / dy));
    }
    return !curveParameters.empty();
}

bool FindBezierLineIntersection(const tagPOINT points[4], const tagPOINT line[2],
                                std::vector<double>& curveParameters, std::vector<double>& lineParameters,
                                bool includeEnds) {
    Point p[4], l[2];
    ToDouble(points, p, 4);
    ToDouble(line, l, 2);
    return FindBezierLineIntersection(p, l, curveParameters, lineParameters, includeEnds);
}

bool FindBezierIntersectionsAtX(const Point points[4], double x, std::vector<double>& ts, bool includeEnds) {
    const PowerBasis k = ToPowerBasis(points);
    const double g[4] = {k.a.x, k.b.x, k.c.x, points[0].x - x};
    AppendCubicRoots(g, ts, includeEnds);
    return !ts.empty();
}

bool DoesBezierIntersectLineSegment(const Point points[4], const Point segment[2]) {
    std::vector<double> ts, ss;
    if (!FindBezierLineIntersection(points, segment, ts, ss, false)) return false;
    for (const double s : ss)
        if (s >= 0 && s <= 1) return true;
    return false;
}

bool DoesBezierIntersectLineSegment(const tagPOINT points[4], const tagPOINT segment[2]) {
    Point p[4], l[2];
    ToDouble(points, p, 4);
    ToDouble(segment, l, 2);
    return DoesBezierIntersectLineSegment(p, l);
}

}  // namespace CubicBezier
}  // namespace QorMath
