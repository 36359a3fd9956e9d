// De Casteljau subdivision of a cubic segment: at a parameter, at the midpoint,
// into three pieces, and the piece between two parameters.

#include "QorMath/bezier.h"
#include "bezier/convert.h"
#include "geometry/wrap.h"

namespace QorMath {
namespace CubicBezier {

namespace {

using Point = vector2dT<double, 1>;

// (b − a)·s + a: the one interpolation form of the whole family, so that split
// points computed by different routes agree to the bit.
Point Lerp(const Point& a, const Point& b, double s) {
    return {(b.x - a.x) * s + a.x, (b.y - a.y) * s + a.y};
}

Point Midpoint(const Point& a, const Point& b) { return {(a.x + b.x) * 0.5, (a.y + b.y) * 0.5}; }

// The six points of the de Casteljau triangle below the control polygon:
// first level A, M, C; second D, E; the point on the curve S.
struct Triangle {
    Point A, M, C, D, E, S;
};

template <typename Mix>
Triangle Casteljau(const Point p[4], Mix mix) {
    Triangle k;
    k.A = mix(p[0], p[1]);
    k.M = mix(p[1], p[2]);
    k.C = mix(p[2], p[3]);
    k.D = mix(k.A, k.M);
    k.E = mix(k.M, k.C);
    k.S = mix(k.D, k.E);
    return k;
}

Triangle CasteljauAt(double t, const Point p[4]) {
    return Casteljau(p, [t](const Point& a, const Point& b) { return Lerp(a, b, t); });
}

void WriteLeft(const Point p[4], const Triangle& k, Point out[4]) {
    const Point p0 = p[0];
    out[0] = p0;
    out[1] = k.A;
    out[2] = k.D;
    out[3] = k.S;
}

// Reads P3 before writing, so out may be p itself.
void WriteRight(const Point p[4], const Triangle& k, Point out[4]) {
    const Point p3 = p[3];
    out[0] = k.S;
    out[1] = k.E;
    out[2] = k.C;
    out[3] = p3;
}

// (a + b) / 2 with the int32 sum wrapping and the division truncating toward zero.
tagPOINT IntegerMidpoint(const tagPOINT& a, const tagPOINT& b) {
    return {WrappingAdd(a.x, b.x) / 2, WrappingAdd(a.y, b.y) / 2};
}

}  // namespace

// ---- double -------------------------------------------------------------------

void LeftOf(double t, const Point points[4], Point out[4]) { WriteLeft(points, CasteljauAt(t, points), out); }

void RightOf(double t, const Point points[4], Point out[4]) { WriteRight(points, CasteljauAt(t, points), out); }

void Split(double t, const Point points[4], Point left[4], Point right[4]) {
    const Triangle k = CasteljauAt(t, points);
    WriteLeft(points, k, left);
    WriteRight(points, k, right);
}

void Split(const Point points[4], Point left[4], Point right[4]) {
    const Triangle k = Casteljau(points, Midpoint);
    WriteLeft(points, k, left);
    WriteRight(points, k, right);
}

void Split(double t, const Point points[4], Point out[7]) {
    const Triangle k = CasteljauAt(t, points);
    WriteLeft(points, k, out);
    WriteRight(points, k, out + 3);
}

// Below t0 the piece starts at P0 and above t1 it ends at P3; otherwise the
// left piece up to t1 is cut again at t0 measured in its own parameter, t0/t1.
void Subsection(double t0, double t1, const Point points[4], Point out[4]) {
    if (t0 <= 0) {
        LeftOf(t1, points, out);
    } else if (t1 >= 1) {
        RightOf(t0, points, out);
    } else {
        LeftOf(t1, points, out);
        RightOf(t0 / t1, out, out);
    }
}

void Split(double t0, double t1, const Point points[4], Point out[10]) {
    LeftOf(t0, points, out);
    Subsection(t0, t1, points, out + 3);
    RightOf(t1, points, out + 6);
}

// ---- tagPOINT -----------------------------------------------------------------

// Integer forms: the double computation on converted points, each output
// coordinate rounded once at the end.
void LeftOf(double t, const tagPOINT points[4], tagPOINT out[4]) {
    Point p[4], piece[4];
    ToDouble(points, p, 4);
    LeftOf(t, p, piece);
    Rounded(piece, out, 4);
}

void RightOf(double t, const tagPOINT points[4], tagPOINT out[4]) {
    Point p[4], piece[4];
    ToDouble(points, p, 4);
    RightOf(t, p, piece);
    Rounded(piece, out, 4);
}

void Split(double t, const tagPOINT points[4], tagPOINT left[4], tagPOINT right[4]) {
    Point p[4], pieces[7];
    ToDouble(points, p, 4);
    Split(t, p, pieces);
    Rounded(pieces, left, 4);
    Rounded(pieces + 3, right, 4);
}

void Split(double t, const tagPOINT points[4], tagPOINT out[7]) {
    Point p[4], pieces[7];
    ToDouble(points, p, 4);
    Split(t, p, pieces);
    Rounded(pieces, out, 7);
}

void Split(double t0, double t1, const tagPOINT points[4], tagPOINT out[10]) {
    Point p[4], pieces[10];
    ToDouble(points, p, 4);
    Split(t0, t1, p, pieces);
    Rounded(pieces, out, 10);
}

void Subsection(double t0, double t1, const tagPOINT points[4], tagPOINT out[4]) {
    Point p[4], piece[4];
    ToDouble(points, p, 4);
    Subsection(t0, t1, p, piece);
    Rounded(piece, out, 4);
}

// Each level halves the already truncated values of the level before.
void Split(const tagPOINT points[4], tagPOINT left[4], tagPOINT right[4]) {
    const tagPOINT A = IntegerMidpoint(points[0], points[1]);
    const tagPOINT M = IntegerMidpoint(points[1], points[2]);
    const tagPOINT C = IntegerMidpoint(points[2], points[3]);
    const tagPOINT D = IntegerMidpoint(A, M);
    const tagPOINT E = IntegerMidpoint(M, C);
    const tagPOINT S = IntegerMidpoint(D, E);
    const tagPOINT p0 = points[0], p3 = points[3];
    left[0] = p0;
    left[1] = A;
    left[2] = D;
    left[3] = S;
    right[0] = S;
    right[1] = E;
    right[2] = C;
    right[3] = p3;
}

}  // namespace CubicBezier
}  // namespace QorMath
