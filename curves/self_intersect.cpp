// Loops of a cubic segment: a closed-form test for the existence of a double
// point with an interval around each of its two parameters, and a bounded box
// subdivision of the two pieces to locate it.

#include <cfloat>
#include <cmath>
#include <utility>

#include "QorMath/bezier.h"
#include "bezier/convert.h"
#include "bezier/power_basis.h"

namespace QorMath {
namespace CubicBezier {

namespace {

using Point = vector2dT<double, 1>;

double Cross(const Point& u, const Point& v) { return u.x * v.y - u.y * v.x; }

// The roots of a·x² + b·x + c, −b − √D first; the caller has checked D >= 0.
void QuadraticRoots(double a, double b, double c, double& r0, double& r1) {
    const double root = std::sqrt(b * b - 4 * a * c);
    r0 = (-b - root) * (0.5 / a);
    r1 = (root - b) * (0.5 / a);
}

double Clamped(double t) { return t < 0 ? 0.0 : (t > 1 ? 1.0 : t); }

void Ascending(double& lo, double& hi) {
    if (hi < lo) std::swap(lo, hi);
}

bool BothAbove1(double a, double b) { return a > 1 && b > 1; }
bool BothBelow0(double a, double b) { return a < 0 && b < 0; }

// ---- Box subdivision search ---------------------------------------------------

constexpr int kMaxDepth = 8;
constexpr int kMaxHits = 9;
// Pieces smaller than this in both directions are abandoned before full depth.
constexpr double kSmallestBox = 1.00000001;

struct Piece {
    Point p[4];
    double lo, hi;  // parameter range on the curve the search started from
};

struct Hits {
    double u[kMaxHits];
    double x[kMaxHits];
    double y[kMaxHits];
    int count = 0;
};

struct Box {
    double left, right, bottom, top;
};

Box ControlBox(const Piece& k) {
    Box b{k.p[0].x, k.p[0].x, k.p[0].y, k.p[0].y};
    for (int i = 1; i < 4; ++i) {
        if (k.p[i].x < b.left) b.left = k.p[i].x;
        if (k.p[i].x > b.right) b.right = k.p[i].x;
        if (k.p[i].y < b.bottom) b.bottom = k.p[i].y;
        if (k.p[i].y > b.top) b.top = k.p[i].y;
    }
    return b;
}

// Touching boxes overlap.
bool Overlap(const Box& a, const Box& b) {
    return !(a.right < b.left || b.right < a.left || a.top < b.bottom || b.top < a.bottom);
}

bool IsTiny(const Box& b) { return b.right - b.left < kSmallestBox && b.top - b.bottom < kSmallestBox; }

// Parameter of the point q on the chord from p along d, from d's larger component.
double ChordParameter(const Point& q, const Point& p, const Point& d) {
    return std::fabs(d.x) > std::fabs(d.y) ? (q.x - p.x) / d.x : (q.y - p.y) / d.y;
}

// At full depth the pieces are taken as their chords: a hit where the chords,
// as infinite lines, cross within both.
void RecordChordCrossing(const Piece& k1, const Piece& k2, Hits& hits) {
    const Point d1{k1.p[3].x - k1.p[0].x, k1.p[3].y - k1.p[0].y};
    const Point d2{k2.p[3].x - k2.p[0].x, k2.p[3].y - k2.p[0].y};
    const double det = Cross(d1, d2);
    if (det == 0) return;
    const Point e{k2.p[0].x - k1.p[0].x, k2.p[0].y - k1.p[0].y};
    const double along1 = Cross(e, d2) / det;
    const Point crossing{k1.p[0].x + along1 * d1.x, k1.p[0].y + along1 * d1.y};
    const double u = ChordParameter(crossing, k1.p[0], d1);
    const double v = ChordParameter(crossing, k2.p[0], d2);
    if (!(u >= 0 && u <= 1 && v >= 0 && v <= 1)) return;
    const Point at = Evaluate(ToPowerBasis(k1.p), u);
    hits.u[hits.count] = k1.lo + (k1.hi - k1.lo) * u;
    hits.x[hits.count] = at.x;
    hits.y[hits.count] = at.y;
    ++hits.count;
}

void Halve(const Piece& k, Piece& first, Piece& second) {
    Split(k.p, first.p, second.p);
    const double mid = (k.lo + k.hi) / 2;
    first.lo = k.lo;
    first.hi = mid;
    second.lo = mid;
    second.hi = k.hi;
}

// Depth-first over the four pairs of halves; at most 4⁸ leaf pairs, 9 hits.
void Search(const Piece& k1, const Piece& k2, Hits& hits, int depth) {
    if (hits.count >= kMaxHits) return;
    if (depth >= kMaxDepth) {
        RecordChordCrossing(k1, k2, hits);
        return;
    }
    const Box b1 = ControlBox(k1), b2 = ControlBox(k2);
    if (IsTiny(b1) || IsTiny(b2)) return;
    if (!Overlap(b1, b2)) return;
    Piece halves1[2], halves2[2];
    Halve(k1, halves1[0], halves1[1]);
    Halve(k2, halves2[0], halves2[1]);
    for (const Piece& h1 : halves1)
        for (const Piece& h2 : halves2)
            if (Overlap(ControlBox(h1), ControlBox(h2))) Search(h1, h2, hits, depth + 1);
}

// The piece of the curve over [lo, hi], an interval within [0, 1].
Piece Cut(const Point points[4], double lo, double hi) {
    Piece k{};
    k.lo = 0;
    k.hi = 1;
    if (lo <= 0)
        LeftOf(hi, points, k.p);
    else if (hi >= 1)
        RightOf(lo, points, k.p);
    else
        Subsection(lo, hi, points, k.p);
    return k;
}

}  // namespace

// A loop exists where 12·[A, B]·[B, C] > 9·[A, C]² (power-basis a, b, c). The
// intervals come from the quadratics [A, B]·t² + 2·[A, C]·t + [B, C] of the
// curve and of its reverse.
bool DoesBezierSelfIntersect(const Point points[4], double& t1a, double& t1b, double& t2a, double& t2b,
                             bool closedCurve) {
    const Point &p0 = points[0], &p1 = points[1], &p2 = points[2], &p3 = points[3];
    if (!closedCurve && std::fabs(p0.x - p3.x) <= DBL_EPSILON && std::fabs(p0.y - p3.y) <= DBL_EPSILON)
        return false;
    const PowerBasis k = ToPowerBasis(points);
    const double ax = k.a.x, ay = k.a.y, bx = k.b.x, by = k.b.y, cx = k.c.x, cy = k.c.y;
    const double acScaled = (ay * cx - cy * ax) * 3;
    if (!((ay * bx - by * ax) * 3 * 4 * (by * cx - cy * bx) > acScaled * acScaled)) return false;

    const Point ar{-k.a.x, -k.a.y};
    const Point br{3 * (p1.x - 2 * p2.x + p3.x), 3 * (p1.y - 2 * p2.y + p3.y)};
    const Point cr{3 * (p2.x - p3.x), 3 * (p2.y - p3.y)};
    const double a1 = Cross(k.a, k.b), b1 = 2 * Cross(k.a, k.c), c1 = Cross(k.b, k.c);
    const double a2 = Cross(ar, br), b2 = 2 * Cross(ar, cr), c2 = Cross(br, cr);
    if (a1 == 0 || a2 == 0) return false;
    if (b1 * b1 < 4 * a1 * c1 || b2 * b2 < 4 * a2 * c2) return false;

    double u2a = 0, u2b = 0;
    QuadraticRoots(a1, b1, c1, t1a, t1b);
    QuadraticRoots(a2, b2, c2, u2a, u2b);
    t2a = 1 - u2a;
    t2b = 1 - u2b;
    if (BothAbove1(t1a, t1b) || BothAbove1(t2a, t2b) || BothBelow0(t1a, t1b) || BothBelow0(t2a, t2b))
        return false;
    t1a = Clamped(t1a);
    t1b = Clamped(t1b);
    t2a = Clamped(t2a);
    t2b = Clamped(t2b);
    Ascending(t1a, t1b);
    Ascending(t2a, t2b);
    return true;
}

bool DoesBezierSelfIntersect(const tagPOINT points[4], double& t1a, double& t1b, double& t2a, double& t2b,
                             bool closedCurve) {
    Point p[4];
    ToDouble(points, p, 4);
    return DoesBezierSelfIntersect(p, t1a, t1b, t2a, t2b, closedCurve);
}

bool FindBezierSelfIntersection(const Point points[4], double& s, double& t, Point& point) {
    double t1a = 0, t1b = 0, t2a = 0, t2b = 0;
    if (!DoesBezierSelfIntersect(points, t1a, t1b, t2a, t2b, true)) return false;
    const bool firstCollapsed = std::fabs(t1a - t1b) <= DBL_EPSILON;
    const bool secondCollapsed = std::fabs(t2a - t2b) <= DBL_EPSILON;
    if (firstCollapsed) {
        s = 0;
        t = secondCollapsed ? 1.0 : t1a;
        point = points[0];
        return true;
    }
    if (secondCollapsed) {
        s = t2a;
        t = 1;
        point = points[3];
        return true;
    }

    const Piece first = Cut(points, t1a, t1b);
    const Piece second = Cut(points, t2a, t2b);
    Hits hits;
    Search(first, second, hits, 0);
    if (hits.count == 0) return false;
    point = {hits.x[0], hits.y[0]};
    s = t1a + (t1b - t1a) * hits.u[0];

    hits.count = 0;
    Search(second, first, hits, 0);
    if (hits.count == 0) return false;
    t = t2a + (t2b - t2a) * hits.u[0];
    return true;
}

bool FindBezierSelfIntersection(const tagPOINT points[4], double& s, double& t, Point& point) {
    Point p[4];
    ToDouble(points, p, 4);
    return FindBezierSelfIntersection(p, s, t, point);
}

}  // namespace CubicBezier
}  // namespace QorMath
