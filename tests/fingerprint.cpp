// Prints one hash per family over the exact bits of many results on fixed
// pseudo-random inputs. Two builds (Debug, Release -march=native) must print the
// same lines: results may not depend on optimisation or on FMA availability.

#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include <QorMath/QorMath.h>

#include "bezier/roots.h"

using namespace QorMath;

namespace {

class Fingerprint {
public:
    // Records hash by their bytes: all of them are doubles or int32 without padding.
    template <typename T>
    void Add(const T& v) {
        AddBytes(&v, sizeof v);
    }
    unsigned long long Value() const { return hash_; }

private:
    void AddBytes(const void* data, size_t n) {  // FNV-1a, 64 bits
        const auto* p = static_cast<const unsigned char*>(data);
        for (size_t i = 0; i < n; ++i) hash_ = (hash_ ^ p[i]) * 1099511628211ULL;
    }
    unsigned long long hash_ = 14695981039346656037ULL;
};

std::mt19937_64 rng(20261121);
double Real() { return std::uniform_real_distribution<double>(-100, 100)(rng); }
vector2dT<double, 1> P() { return {Real(), Real()}; }
vector2dT<double, 0> V() { return {Real(), Real()}; }
MATRIX M() { return {Real(), Real(), Real(), Real(), Real(), Real()}; }
tagPOINT IP() { return {static_cast<int32_t>(Real() * 1000), static_cast<int32_t>(Real() * 1000)}; }

void Matrices(Fingerprint& f) {
    for (int i = 0; i < 2000; ++i) {
        MATRIX m = M();
        const MATRIX n = M();
        f.Add(m(P())), f.Add(m(V())), f.Add(m * n), f.Add(m.GetMaximumMatrixVectorScale());
        f.Add(m.GetTransformedRadians(Real())), f.Add(m.GetUntransformedRadians(Real()));
        vector2dT<double, 1> c{}, p2{};
        f.Add(m.GetCenterOfTransformation(c)), f.Add(c);
        tagPOINT pts[3] = {IP(), IP(), IP()};
        m.TransformPoints(pts, 3);
        f.Add(pts[0]), f.Add(pts[1]), f.Add(pts[2]);
        MATRIX r = m;
        r.RotateAroundPoint(Real(), P());
        r.ScaleMatrix(V(), P());
        r.TransformAroundPoint(n, P());
        f.Add(r), f.Add(r.Invert(1e-12)), f.Add(r);
        r.RemoveScaling();
        f.Add(r);
        AFF_TRANSFORM t{};
        f.Add(DecomposeAffineTransform(t, m)), f.Add(t.scaleX), f.Add(t.scaleY), f.Add(t.skew), f.Add(t.rotation);
        f.Add(ComposeAffineTransform(r, t)), f.Add(r);
        vector2dT<double, 0> s{};
        f.Add(TransformMatrixAndSeparateScale(m, n, s)), f.Add(s);
        f.Add(ConstructSkewAroundMatrix(Real() / 100, Real() / 100, P()));
        f.Add(ConstructRotateAroundMatrix(Real(), P())), f.Add(ConstructVectorTransformMatrix(V(), V()));
        f.Add(ConstructLineSegmentTransformMatrix(P(), P(), P(), P()));
        f.Add(ConstructRectTransformMatrix({Real(), Real(), Real(), Real()}, {Real(), Real(), Real(), Real()},
                                           static_cast<MapMode>(i % 3)));
        UTLRotateMatrixAround(&m, static_cast<int32_t>(Real() * 1e6), 3, 4);
        UTLSkewMatrix(&m, static_cast<int32_t>(Real() * 1e5), static_cast<int32_t>(Real() * 1e5), 1, 2);
        UTLStretchMatrix(&m, Real(), Real(), 5, 6);
        f.Add(m);
        f.Add(m.GetLineOfTransformation(c, p2)), f.Add(c), f.Add(p2);
    }
}

void Angles(Fingerprint& f) {
    for (int i = 0; i < 5000; ++i) {
        f.Add(Radians::VectorToAngle(V())), f.Add(Radians::GetAngle(V(), V()));
        f.Add(Radians::NormalizeFineAngle(Real())), f.Add(Radians::Constrain(Real(), i % 13 - 6, Real()));
        f.Add(Radians::RotatePoint(P(), Real(), P())), f.Add(Degrees::GetFineAngle(V(), V()));
        f.Add(TURNANGLE::GetAngle(P(), P(), P())), f.Add(TURNANGLE::NormalizeAngle(static_cast<int32_t>(Real() * 1e7)));
        const tagSIZE s = Degrees::GetRotatedSize({static_cast<int32_t>(Real()), static_cast<int32_t>(Real())}, Real());
        f.Add(s.cx), f.Add(s.cy);
        tagPOINT pts[2] = {IP(), IP()};
        Degrees::RotatePoints(pts, 2, Real(), P());
        f.Add(pts[0]), f.Add(pts[1]);
    }
}

void Bounds(Fingerprint& f) {
    for (int i = 0; i < 2000; ++i) {
        const MATRIX m = M();
        const tagRECT r{IP().x, IP().y, IP().x, IP().y};
        f.Add(GetTransformedBBox(r, m)), f.Add(GetUntransformedBBox(r, m));
        f.Add(GetTransformedBBox(BoundsT<double>{Real(), Real(), Real(), Real()}, m));
        const tagPOINT ipts[4] = {IP(), IP(), IP(), IP()};
        const vector2dT<double, 1> dpts[4] = {P(), P(), P(), P()};
        f.Add(GetTransformedPointsBBox(ipts, 4, m)), f.Add(GetTransformedPointsBBox(dpts, 4, m));
        f.Add(GetTransformedCircleBBox(m, Real(), P()));
        double major = 0, minor = 0;
        GetTransformedCircleAxisLengths(m, major, minor);
        vector2dT<double, 0> a{}, b{};
        GetTransformedCircleAxes(m, a, b);
        f.Add(major), f.Add(minor), f.Add(a), f.Add(b);
        f.Add(GetNormalOnTransformedCircle(m, P())), f.Add(FindPointOnEllipseThatHasNormal(V(), Real(), Real()));
        f.Add(DistanceToLineSegmentSqrd(P(), P(), P())), f.Add(AreCollinear(dpts, 4, std::fabs(Real())));
        vector2dT<double, 1> o{};
        vector2dT<double, 0> d{};
        GetLeastSquaresLines(dpts, 4, o, d);
        f.Add(o), f.Add(d);
        tagPOINT refl[4];
        std::memcpy(refl, ipts, sizeof refl);
        ReflectAcross({ipts[0].x % 100, ipts[0].y % 100 + 101}, ipts[1], refl, 4);
        f.Add(refl[2]), f.Add(refl[3]);
    }
}

// The curve families draw from their own engine through an explicit mapping of its
// raw output (which the standard fixes), so their inputs do not depend on how a
// standard library implements its distributions. Every draw is its own statement:
// the order in which a call's arguments are evaluated is unspecified.
class Draw {
public:
    double Unit() { return double(engine_() >> 11) * 0x1p-53; }  // [0, 1)
    double In(double lo, double hi) { return lo + (hi - lo) * Unit(); }
    vector2dT<double, 1> Point(double r) {
        const double x = In(-r, r);
        return {x, In(-r, r)};
    }
    tagPOINT IntPoint(double r) {
        const auto x = static_cast<int32_t>(In(-r, r));
        return {x, static_cast<int32_t>(In(-r, r))};
    }
    template <typename T, typename F>
    void Four(T (&p)[4], F draw) {
        for (T& q : p) q = draw();
    }

private:
    std::mt19937_64 engine_{20260301};
};

void Bezier(Fingerprint& f) {
    using namespace CubicBezier;
    Draw d;
    for (int i = 0; i < 3000; ++i) {
        const double r = i % 3 ? 100 : 1e6;
        vector2dT<double, 1> p[4], o[10], l[4], q[4];
        tagPOINT ip[4], io[10], il[4], iq[4];
        d.Four(p, [&] { return d.Point(r); });
        d.Four(ip, [&] { return d.IntPoint(i % 5 ? 1e5 : 2147483647.0); });
        const double t = d.In(-0.25, 1.25), t0 = d.In(-0.25, 1.25), t1 = d.In(-0.25, 1.25);
        Split(t, p, l, q), f.Add(l), f.Add(q);
        Split(p, l, q), f.Add(l), f.Add(q);
        Split(t, p, o);
        for (int k = 0; k < 7; ++k) f.Add(o[k]);
        Split(t0, t1, p, o), f.Add(o);
        LeftOf(t, p, l), RightOf(t0, p, q), f.Add(l), f.Add(q);
        Subsection(t0, t1, p, l), f.Add(l);
        Split(t, ip, il, iq), f.Add(il), f.Add(iq);
        Split(ip, il, iq), f.Add(il), f.Add(iq);
        Split(t, ip, io);
        for (int k = 0; k < 7; ++k) f.Add(io[k]);
        Split(t0, t1, ip, io), f.Add(io);
        LeftOf(t, ip, il), RightOf(t0, ip, iq), f.Add(il), f.Add(iq);
        Subsection(t0, t1, ip, il), f.Add(il);
        vector2dT<double, 1> a{}, b{}, c{}, e{};
        GetPowerBasis(p, a, b, c, e);
        f.Add(a), f.Add(b), f.Add(c), f.Add(e), f.Add(Evaluate(a, b, c, e, t)), f.Add(EvaluateDerivative(a, b, c, t));
        From3Points(il, p[0], p[1], p[2], i % 2 == 0), f.Add(il);
        tagPOINT keep[4] = {};
        f.Add(From3Points(keep, p[0], AsVector(p[1]), p[2], p[3], AsVector(o[5]))), f.Add(keep);
    }
}

void Flatten(Fingerprint& f) {
    Draw d;
    const double tols[] = {0, 1e-3, 0.25, 4, 100, -1};
    vector2dT<double, 1> p[4], out[1025];
    tagPOINT ip[4], iout[1025];
    for (int i = 0; i < 3000; ++i) {
        const double r = i % 4 ? 300 : 3;
        d.Four(p, [&] { return d.Point(r); });
        d.Four(ip, [&] { return d.IntPoint(r * 100); });
        if (i % 7 == 0) p[3] = p[0], ip[3] = ip[0];
        const int m = 2 + static_cast<int>(d.Unit() * 1023), n = i % 50;
        const double tol = tols[i % 6];
        f.Add(CalculateNumBezierLines(p, m)), f.Add(CalculateNumBezierLines(ip, m));
        f.Add(CalculateNumBezierLines(tagRECT{ip[0].x, ip[0].y, ip[1].x, ip[1].y}, m));
        BezierToLines(p, out, n), BezierToLines(ip, iout, n);
        for (int k = 0; k <= n; ++k) f.Add(out[k]), f.Add(iout[k]);
        const int c = AdaptiveBezierToLines(p, out, tol, m), ic = AdaptiveBezierToLines(ip, iout, tol, m);
        f.Add(c), f.Add(ic);
        for (int k = 0; k <= c; ++k) f.Add(out[k]);
        for (int k = 0; k <= ic; ++k) f.Add(iout[k]);
    }
}

// The internal solvers: polynomials with roots drawn in and around [0, 1], and
// with random coefficients.
void Roots(Fingerprint& f) {
    Draw d;
    double c[12], roots[14];
    for (int i = 0; i < 3000; ++i) {
        const int degree = 1 + i % 11;
        c[0] = d.In(0.5, 2);
        for (int k = 1; k <= degree; ++k) c[k] = 0;
        for (int k = 0; k < degree; ++k) {  // multiply by (t − r)
            const double r = i % 2 ? d.In(-0.2, 1.2) : d.In(-50, 50);
            for (int j = k + 1; j > 0; --j) c[j] -= r * c[j - 1];
        }
        const bool ends = i % 3 == 0;
        int n = 0;
        switch (degree) {
            case 1: n = FindLinearRoot(c, roots, ends); break;
            case 2: n = FindQuadraticRoots(c, roots, ends); break;
            case 3: n = FindCubicRoots(c, roots, ends); break;
            case 4: n = FindQuarticRoots(c, roots, ends); break;
            case 5: n = FindQuinticRoots(c, roots, ends); break;
            case 6: n = FindDegree6Roots(c, roots); break;
            case 7: n = FindDegree7Roots(c, roots); break;
            case 8: n = FindDegree8Roots(c, roots); break;
            case 9: n = FindDegree9Roots(c, roots); break;
            case 10: n = FindDegree10Roots(c, roots); break;
            default: n = FindDegree11Roots(c, roots); break;
        }
        f.Add(n);
        for (int k = 0; k < n; ++k) f.Add(roots[k]);
    }
}

// One segment's analysis: curvature, tangents, closest points, length, side, area and
// mapping, with degenerate segments mixed in. NaN results (inflections of a segment with no
// t² term) are hashed as one NaN: with two NaN operands of opposite sign, which one survives
// depends on the operand order a compiler picks for a commutative operation.
void Analysis(Fingerprint& f) {
    using namespace CubicBezier;
    Draw d;
    std::vector<double> ts, ds;
    std::vector<vector2dT<double, 1>> pts;
    std::vector<tagPOINT> ipts;
    for (int i = 0; i < 2000; ++i) {
        vector2dT<double, 1> p[4], a{}, b{}, c{}, e{}, n{};
        tagPOINT ip[4], in{};
        d.Four(p, [&] { return d.Point(100); });
        d.Four(ip, [&] { return d.IntPoint(10000); });
        if (i % 7 == 0) p[1] = p[0], ip[2] = ip[3];                                 // a zero handle
        if (i % 11 == 0) p[3] = p[2] = p[1] = p[0], ip[3] = ip[2] = ip[1] = ip[0];  // a point
        const vector2dT<double, 0> v = p[1] - p[0];
        if (i % 13 == 0) p[2] = p[1] + v, p[3] = p[2] + v;  // straight, the handles evenly spaced
        const vector2dT<double, 1> q = d.Point(150);
        const tagPOINT iq = d.IntPoint(15000);
        const double t = d.In(-0.1, 1.1), u = d.In(-0.1, 1.1), h = d.In(-0.15, 0.15);
        const auto accuracy = static_cast<LengthAccuracy>(i % 18);
        GetPowerBasis(p, a, b, c, e);
        double r[14], k = 0, dd = -1, tc = -1;
        f.Add(GetCurvatureAt(t, a, b, c, k)), f.Add(k), f.Add(GetCurvatureRadiusAt(t, a, b, c, k)), f.Add(k);
        f.Add(SafeBezierCurvature(t, a, b, c)), f.Add(SafeBezierTangent(t, a, b, c, e));
        int m = BezierInflectionPoints(a, b, c, r);
        f.Add(m);
        for (int j = 0; j < m; ++j) f.Add(r[j] == r[j] ? r[j] : std::numeric_limits<double>::quiet_NaN());
        m = FindCurvatureMinMax(a, b, c, r), f.Add(m);
        for (int j = 0; j < m; ++j) f.Add(r[j]);
        m = FindTangentsToPoint(a, b, c, e, q, r), f.Add(m);
        for (int j = 0; j < m; ++j) f.Add(r[j]);
        ts.clear(), ds.clear(), pts.clear(), ipts.clear();
        bool everywhere = false;
        GetVerticalTangents(a, b, c, ts), GetHorizontalTangents(a, b, c, ts);
        GetParallels(a, b, c, i % 13 ? AsVector(q) : v, ts, everywhere), f.Add(everywhere);
        f.Add(FindClosestPointOnBezier(a, b, c, e, q, tc, n, dd)), f.Add(tc), f.Add(n), f.Add(dd);
        f.Add(FindClosestPointOnBezier(ip, iq, tc, in, dd)), f.Add(tc), f.Add(in), f.Add(dd);
        f.Add(FindClosestPointOnBezier(ip, iq));
        f.Add(FindClosestPointsOnBezier(p, q, ts, pts, ds)), f.Add(FindClosestPointsOnBezier(ip, iq, ts, ipts, ds));
        const vector2dT<double, 1> on = Evaluate(a, b, c, e, t);
        f.Add(Invert(a, b, c, e, {on.x + h, on.y - h}, ts));
        for (double x : ts) f.Add(x);
        for (double x : ds) f.Add(x);
        for (const auto& x : pts) f.Add(x);
        for (const auto& x : ipts) f.Add(x);
        f.Add(Length(a, b, c, accuracy));
        f.Add(GetCurveRelativeLengthParameter(u, a, b, c, i % 2 ? 1e-6 : 0, accuracy));
        f.Add(LengthTo(t, p)), f.Add(LengthFrom(t, p)), f.Add(LengthTo(u, ip)), f.Add(LengthFrom(u, ip));
        Side side = Side::SideNone;
        f.Add(GetSide(a, b, c, e, q, tc, n, dd, side)), f.Add(tc), f.Add(n), f.Add(dd), f.Add(side);
        f.Add(GetSide(a, b, c, e, on)), f.Add(GetAreaUnderBezier(a, b, c, e)), f.Add(MapToBezier(p, t, h * 100, u));
    }
}

void Intersect(Fingerprint& f) {
    using namespace CubicBezier;
    Draw d;
    std::vector<double> s, t;
    std::vector<vector2dT<double, 1>> pts;
    for (int i = 0; i < 1500; ++i) {
        vector2dT<double, 1> p[4], q[4], a{}, b{}, c{}, e{}, at{};
        tagPOINT ip[4], iq[4];
        const double r = i % 4 ? 100 : 5000;
        d.Four(p, [&] { return d.Point(r); });
        d.Four(q, [&] { return d.Point(r); });
        d.Four(ip, [&] { return d.IntPoint(10000); });
        d.Four(iq, [&] { return d.IntPoint(10000); });
        if (i % 9 == 0) p[1] = p[0] + (p[3] - p[0]) * 0.25, p[2] = p[0] + (p[3] - p[0]) * 0.75;  // straight
        if (i % 10 == 0) q[0] = p[3];                                                           // shared end
        GetPowerBasis(p, a, b, c, e);
        double k[10];
        ConvertBezierToImplicit(a, b, c, e, k[0], k[1], k[2], k[3], k[4], k[5], k[6], k[7], k[8], k[9]);
        for (double x : k) f.Add(x);
        const vector2dT<double, 1> line[2] = {q[0], q[3]};
        f.Add(FindBezierLineIntersection(p, line, s, t, i % 2 == 0));
        f.Add(FindBezierIntersectionsAtX(p, q[1].x, s, i % 3 == 0));
        f.Add(DoesBezierIntersectLineSegment(p, line)), f.Add(DoesBezierIntersectLineSegment(ip, iq));
        for (double x : s) f.Add(x);
        for (double x : t) f.Add(x);
        FindBezierIntersections(p, q, s, t, pts);
        FindBezierIntersections(ip, iq, s, t, pts);
        for (double x : s) f.Add(x);
        for (double x : t) f.Add(x);
        for (const auto& x : pts) f.Add(x);
        f.Add(DoBeziersIntersect(p, q));
        f.Add(DoesFatlineIntersectBezier(p, q[0], q[1], d.In(0, r / 4)));
        f.Add(DoesFatlineIntersectLine(p[0], p[3], q[0], q[3], d.In(0, r / 10)));
        double t1a = -1, t1b = -1, t2a = -1, t2b = -1, u = -1, v = -1;
        f.Add(DoesBezierSelfIntersect(ip, t1a, t1b, t2a, t2b, i % 2 == 0)), f.Add(t1a), f.Add(t1b), f.Add(t2a);
        f.Add(t2b), f.Add(FindBezierSelfIntersection(ip, u, v, at)), f.Add(u), f.Add(v), f.Add(at);
        f.Add(FindOffsetCusps(a, b, c, d.In(-r, r), s));
        for (double x : s) f.Add(x);
    }
}

void Fit(Fingerprint& f) {
    Draw d;
    std::vector<double> u, coefficients;
    std::vector<vector2dT<double, 1>> offsets;
    for (int i = 0; i < 300; ++i) {
        vector2dT<double, 1> c[4], pts[24], out[4] = {}, out2[4] = {};
        d.Four(c, [&] { return d.Point(100); });
        vector2dT<double, 1> a{}, b{}, cc{}, e{};
        CubicBezier::GetPowerBasis(c, a, b, cc, e);
        const int count = 2 + i % 22;
        for (int j = 0; j < count; ++j) {
            const vector2dT<double, 1> p = CubicBezier::Evaluate(a, b, cc, e, double(j) / (count - 1));
            pts[j] = {p.x + d.In(-1, 1), p.y + d.In(-1, 1)};
        }
        const vector2dT<double, 0> t0 = c[1] - c[0], t1 = c[3] - c[2];
        double worst = -1;
        Calculate_u(pts, count, u);
        f.Add(LeastSquares(pts, u.data(), count, t0, t1, out, 1 + i % 12, &worst, i % 3 ? -1.0 : 0.5));
        f.Add(out), f.Add(worst);
        f.Add(LeastSquares(pts, count, out, 1 + i % 9)), f.Add(out);
        f.Add(LeastSquares(pts, count, count / 2, t0, t1, out, out2, 1 + i % 7)), f.Add(out), f.Add(out2);
        f.Add(LeastSquares(pts, static_cast<unsigned long long>(count), coefficients));
        TridiagonalMatrix m;
        std::vector<double> rhs;
        std::vector<vector2dT<double, 1>> points;
        for (int j = 0; j < count; ++j) {
            m.AddRow(d.In(-1, 1), d.In(3, 5), d.In(-1, 1));
            rhs.push_back(d.In(-10, 10)), points.push_back(d.Point(10));
        }
        for (double x : m.Solve(rhs, false)) f.Add(x);
        for (const auto& x : m.Solve(points, true)) f.Add(x);
        const double distance = d.In(-40, 40);
        f.Add(IsBezierValidForOffset(c, distance));
        double status = 0;
        f.Add(FindBezierOffsetCurve(c, out, distance, 0.01, status)), f.Add(out), f.Add(status);
        if (i % 5 == 0) f.Add(OffsetBezier(c, distance, 0.1, offsets));
    }
    for (double x : coefficients) f.Add(x);
    for (const auto& x : offsets) f.Add(x);
}

// Layouts of containers stored either way round, with every kind of quantity
// (unknown kinds included) and every alignment (invalid ones included), and the
// anchors, out-of-range locations too.
void Layouts(Fingerprint& f) {
    using Setter = void (Layout::*)(const Layout::Value&);
    const Setter setters[] = {&Layout::SetWidth,      &Layout::SetHeight,      &Layout::SetMinimumWidth,
                              &Layout::SetMinimumHeight, &Layout::SetLeftMargin, &Layout::SetRightMargin,
                              &Layout::SetTopMargin,  &Layout::SetBottomMargin};
    Draw d;
    for (int i = 0; i < 3000; ++i) {
        vector2dT<double, 1> p[4];
        d.Four(p, [&] { return d.Point(100); });
        const BoundsT<double> box{p[0].x, p[0].y, p[1].x, p[1].y}, object{p[2].x, p[2].y, p[3].x, p[3].y};
        Layout layout;
        for (const Setter set : setters) {
            const int k = static_cast<int>(d.Unit() * 8);  // Unset half the time
            const int32_t kind = k < 4 ? Layout::Unset : k - 3;
            const double amount = d.In(-1, 1) * (kind == Layout::Relative ? 1.5 : 150);
            (layout.*set)({kind, amount});
        }
        layout.SetHorizontalAlignment(static_cast<Horizontal::Alignment>(i % 4));
        layout.SetVerticalAlignment(static_cast<Vertical::Alignment>(i / 4 % 4));
        f.Add(layout.DoesLayout()), f.Add(layout.CanMaintainSkew());
        f.Add(LayoutObject(box, layout)), f.Add(GetLayoutTransformation(box, object, layout));
        const auto location = static_cast<AnchorLocation>(i % 12 - 1);
        f.Add(GetAnchorPoint(box, location)), f.Add(GetAnchorOffset(box, p[3] - p[2], location));
    }
}

// Scalar functions, quaternions and the fixed-point 3D interface (not the random
// numbers, which differ from run to run).
void Misc(Fingerprint& f) {
    Draw d;
    const auto Int = [&](double r) { return static_cast<int32_t>(d.In(-r, r)); };
    for (int i = 0; i < 3000; ++i) {
        const double x = d.In(-5, 5), mean = d.In(-5, 5), sigma = d.In(0.1, 4), t = d.In(0, 1);
        const double g = d.In(-1.5, 1.5), b = d.In(-0.5, 1.5), base = d.In(0.1, 20);
        f.Add(Gaussian(x, mean, sigma)), f.Add(CubeRoot(x * 100)), f.Add(Bias(t, b)), f.Add(Gain(t, g));
        f.Add(GetBiasGainBlendFactor(t, g, b)), f.Add(GetLogarithmicBlendFactor(t, base));
        f.Add(GetLinearBlendFactor(static_cast<size_t>(i), static_cast<size_t>(i % 17)));
        const int32_t a = i % 7 ? Int(2147483647.0) : INT32_MIN, c = Int(2147483647.0), k = Int(3000) | 1;
        f.Add(GCD(a, c)), f.Add(GCD(a % 100000 * k, c % 100000 * k));

        Quaternion q[3];
        for (Quaternion& e : q) e.x = d.In(-2, 2), e.y = d.In(-2, 2), e.z = d.In(-2, 2), e.w = d.In(-2, 2);
        vector3dT<double> v{d.In(-10, 10), d.In(-10, 10), d.In(-10, 10)}, w = v;
        f.Add(q[0] * q[1]), f.Add(q[0] + q[1]), f.Add(q[0] * x), f.Add(q[0] / sigma), f.Add(q[0].GetConjugate());
        f.Add(q[0].DotProduct(q[1])), f.Add(q[0].Magnitude()), f.Add(q[0].MagnitudeSqrd());
        q[0].Rotate(v), q[1].RotateQuick(w), f.Add(v), f.Add(w);
        q[2].RotationCreate(v, w), f.Add(q[2]);
        f.Add(Quaternion(x, v)), f.Add(q[0].Normalize()), f.Add(q[0]), f.Add(q[0].RotationTheta());
        q[1].Normalize();
        Quaternion out{};
        f.Add(Quaternion::Interpolate(q[0], q[1], d.In(-0.5, 1.5), out)), f.Add(out);
        Quaternion small(q[1].x * 1e-12, q[1].y * 1e-13, q[1].z * 1e-14, q[1].w * 1e-15);
        small.ForceZeros(), f.Add(small);

        MTH3DMATRIX m{};
        const double qa[4] = {q[0].x, q[0].y, q[0].z, i % 3 ? q[0].w : q[1].w * 1.5};  // not always unit
        f.Add(VECT_QuaternionToMat(qa, m));
        const int32_t dx = Int(1000), dy = Int(1000), dz = Int(1000);
        MTHTranslate3DMatrix(m, dx, dy, dz), f.Add(m);
        double back[4] = {};
        VECT_MatToQuaternion(m, back), f.Add(back);
        MTH3DPOINT pts[3];
        for (MTH3DPOINT& e : pts) e.x = Int(1e6), e.y = Int(1e6), e.z = Int(1e6);
        MTHTransform3DPoints(pts, m, 3), f.Add(pts);
        tagPOINT projected[3] = {};
        f.Add(MTHPerspective3DProjection(pts, projected, 3, {Int(1e4), Int(1e4), Int(3e6)})), f.Add(projected);
        MTHGet3DIdentityMatrix(m), f.Add(m);
    }
}

}  // namespace

int main() {
    const struct {
        const char* name;
        void (*run)(Fingerprint&);
    } families[] = {{"matrix", Matrices}, {"angles", Angles}, {"bounds", Bounds},
                    {"bezier", Bezier},  {"flatten", Flatten}, {"roots", Roots},
                    {"analysis", Analysis}, {"intersect", Intersect}, {"fit", Fit},
                    {"layout", Layouts}, {"misc", Misc}};
    for (const auto& family : families) {
        Fingerprint f;
        family.run(f);
        std::printf("%-8s %016llx\n", family.name, f.Value());
    }
    return 0;
}
