// One cubic segment to a polyline: a line count from the curve's size, uniform
// evaluation, and adaptive midpoint subdivision.

#include <algorithm>
#include <cfloat>
#include <cmath>

#include "QorMath/bezier.h"
#include "bezier/convert.h"
#include "bezier/power_basis.h"
#include "geometry/grow.h"
#include "geometry/wrap.h"

namespace QorMath {

namespace {

using Point = vector2dT<double, 1>;

// |v| in int32, wrapping like the subtraction before it (|INT32_MIN| stays negative).
int32_t WrappingAbs(int32_t v) { return v < 0 ? WrappingSub(0, v) : v; }

// max(|height|, width) of a box; only the height is made absolute.
int32_t BoxSize(int32_t left, int32_t top, int32_t right, int32_t bottom) {
    return std::max(WrappingAbs(WrappingSub(top, bottom)), WrappingSub(right, left));
}

int LinesForSize(int32_t size, int maximum) {
    if (size >= 650) return maximum;
    if (size >= 160) return maximum / 2;
    if (size >= 30) return maximum / 4;
    return maximum / 8;
}

// Total travel of the control polygon along x and along y.
double Travel(double p0, double p1, double p2, double p3) {
    return std::fabs(p1 - p0) + std::fabs(p2 - p1) + std::fabs(p3 - p2);
}
double Travel(int32_t p0, int32_t p1, int32_t p2, int32_t p3) {
    return std::fabs(double(WrappingSub(p1, p0))) + std::fabs(double(WrappingSub(p2, p1))) +
           std::fabs(double(WrappingSub(p3, p2)));
}
template <typename P>
double PolygonTravel(const P p[4]) {
    return std::max(Travel(p[0].x, p[1].x, p[2].x, p[3].x), Travel(p[0].y, p[1].y, p[2].y, p[3].y));
}

// floor(log2(m)) − 1: the depth at which 2^(depth+1) lines still fit in m.
int MaximumDepth(int maximum) {
    int shifts = 0;
    for (int m = maximum >> 1; m != 0; m >>= 1) ++shifts;
    return shifts - 1;
}

bool AtLeast(double r, double threshold) { return r > threshold || std::fabs(r - threshold) <= DBL_EPSILON; }

// Forced subdivision depth from the curve's size against the tolerance:
// L/√tol >= 30, 150, 700 (tol being a squared distance) give depths 1, 2, 3.
int MinimumDepth(double travel, double tolerance) {
    if (tolerance == 0) return 0;
    const double r = travel * travel / tolerance;
    if (AtLeast(r, 490000)) return 3;
    if (AtLeast(r, 22500)) return 2;
    if (AtLeast(r, 900)) return 1;
    return 0;
}

// The midpoint is within √tol of the chord through q0 and q1: the cross product
// of the chord with qm − q1 is |chord| times that distance. A degenerate chord
// passes.
bool IsFlat(const Point& q0, const Point& qm, const Point& q1, double tolerance) {
    const double dx = q0.x - q1.x, dy = q0.y - q1.y;
    if (dx == 0 && dy == 0) return true;
    const double cross = (qm.y - q1.y) * dx - (qm.x - q1.x) * dy;
    return (dx * dx + dy * dy) * tolerance > cross * cross;
}

Point Stored(const Point& p, const Point*) { return p; }
tagPOINT Stored(const Point& p, const tagPOINT*) { return {RoundToInt(p.x), RoundToInt(p.y)}; }

// Deepest maximum depth an int allows: floor(log2(2³¹ − 1)) − 1.
constexpr int kDeepest = 29;

// Depth-first midpoint subdivision of [0, 1], lower half first. The stack holds
// the pending intervals' upper ends; the current lower end is the last point
// appended. At depth k there are at most k + 1 pending entries.
template <typename P>
int Subdivide(const PowerBasis& k, const Point& start, const Point& end, P* out, double tolerance,
              int minDepth, int maxDepth) {
    struct Pending {
        Point point;
        double t;
        int depth;
    };
    Pending stack[kDeepest + 3];
    int top = 0;
    stack[0] = {end, 1.0, 0};
    Point q0 = start;
    double t0 = 0.0;
    int count = 0;
    for (;;) {
        Pending& upper = stack[top];
        const double tm = (t0 + upper.t) * 0.5;
        const Point qm = Evaluate(k, tm);
        const bool split = upper.depth < minDepth ||
                           (upper.depth != maxDepth && !IsFlat(q0, qm, upper.point, tolerance));
        if (split) {
            upper.depth += 1;
            stack[++top] = {qm, tm, upper.depth};
            continue;
        }
        out[++count] = Stored(qm, out);
        out[++count] = Stored(upper.point, out);
        q0 = upper.point;
        t0 = upper.t;
        if (top == 0) return count;
        --top;
    }
}

template <typename P>
int AdaptiveToLines(const P points[4], const PowerBasis& k, P* out, double tolerance, int maximum) {
    if (maximum < 1) return 0;
    if (maximum == 1) {
        out[0] = points[0];
        out[1] = points[3];
        return 1;
    }
    const int maxDepth = MaximumDepth(maximum);
    const int minDepth = std::min(MinimumDepth(PolygonTravel(points), tolerance), maxDepth);
    // A closed curve would offer a zero chord to the first test: aim at a
    // point beside P3 instead. It never reaches the output.
    const Point p0 = ToDouble(points[0]), p3 = ToDouble(points[3]);
    const Point end = p0 == p3 ? Point{p3.x - 1, p3.y - 1} : p3;
    const int count = Subdivide(k, p0, end, out, tolerance, minDepth, maxDepth);
    out[0] = points[0];
    out[count] = points[3];
    return count;
}

template <typename P>
void UniformToLines(const P points[4], const PowerBasis& k, P* out, int n) {
    if (n < 0) return;
    out[0] = points[0];
    for (int i = 1; i < n; ++i) out[i] = Stored(Evaluate(k, double(i) / double(n)), out);
    out[n] = points[3];
}

}  // namespace

int CalculateNumBezierLines(const tagRECT& box, int maximum) {
    return LinesForSize(BoxSize(box.left, box.top, box.right, box.bottom), maximum);
}

int CalculateNumBezierLines(const tagPOINT points[4], int maximum) {
    int32_t minX = points[0].x, maxX = minX, minY = points[0].y, maxY = minY;
    for (int i = 1; i < 4; ++i) {
        minX = std::min(minX, points[i].x);
        maxX = std::max(maxX, points[i].x);
        minY = std::min(minY, points[i].y);
        maxY = std::max(maxY, points[i].y);
    }
    return LinesForSize(BoxSize(minX, maxY, maxX, minY), maximum);
}

// The control points' box grown outward to whole units.
int CalculateNumBezierLines(const vector2dT<double, 1> points[4], int maximum) {
    const Point& p0 = points[0];
    OutwardBox box({RoundToInt(std::floor(p0.x)), RoundToInt(std::ceil(p0.y)), RoundToInt(std::ceil(p0.x)),
                    RoundToInt(std::floor(p0.y))});
    for (int i = 1; i < 4; ++i) box.Add(points[i].x, points[i].y);
    const tagRECT& r = box.Rect();
    return LinesForSize(BoxSize(r.left, r.top, r.right, r.bottom), maximum);
}

void BezierToLines(const tagPOINT points[4], tagPOINT* out, int n) {
    UniformToLines(points, ToPowerBasis(points), out, n);
}

void BezierToLines(const vector2dT<double, 1> points[4], vector2dT<double, 1>* out, int n) {
    UniformToLines(points, ToPowerBasis(points), out, n);
}

int AdaptiveBezierToLines(const tagPOINT points[4], tagPOINT* out, double tolerance, int maximum) {
    return AdaptiveToLines(points, ToPowerBasis(points), out, tolerance, maximum);
}

int AdaptiveBezierToLines(const vector2dT<double, 1> points[4], vector2dT<double, 1>* out, double tolerance,
                          int maximum) {
    return AdaptiveToLines(points, ToPowerBasis(points), out, tolerance, maximum);
}

}  // namespace QorMath
