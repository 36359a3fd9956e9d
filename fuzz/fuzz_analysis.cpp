// Feeds arbitrary curves (coincident and collapsed control points, NaN,
// infinities, huge and subnormal values, int32 extremes) and arbitrary queries to
// every analysis function of the cubic Bezier: curvature, inflections, curvature
// extrema, tangents, closest points, inversion, arc length and its inverse,
// side, area and mapping. Nothing may crash, hang or trip a sanitizer. Beyond
// that only what the contracts promise is checked: root counts within the
// caller's capacity and nothing written past it; outputs left untouched on
// failure; appended parameters in range and ascending, the vectors' earlier
// contents kept; the exact end values of the length functions.

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "QorMath/bezier.h"
#include "fuzz_input.h"

namespace {
using namespace QorMath;
using namespace QorMath::CubicBezier;
using P = vector2dT<double, 1>;
using V = vector2dT<double, 0>;

class Input : public qfuzz::ByteReader {
public:
    using ByteReader::ByteReader;
    double D() {
        static const double k[] = {0.0, -0.0, 1.0, -1.0, 0.5, 2.0, 0.25, 0.75, 1e-7, 1e-9, DBL_EPSILON, DBL_MIN,
                                   4.9e-324, 1e-310, DBL_MAX, -DBL_MAX, kInf, -kInf, kNaN, 2147483647.0,
                                   -2147483648.0, 1e300, -1e300, 1e-300, 1e16, 1e154, 1e-17, 0.1, 1.0 / 3.0,
                                   1 - DBL_EPSILON / 2, 1 + DBL_EPSILON, 1e-5};
        return Tagged(k, 80, 176, 1 / 4.0);
    }
    int32_t I() {
        static const int32_t k[] = {0, 1, -1, 2, INT32_MIN, INT32_MAX, INT32_MIN + 1, INT32_MAX - 1, 1073741824,
                                    -1073741824, 46341, -46341, 100, 3, 65536, -65536};
        return Tagged(k, 64, 176, 8);
    }
    // A parameter: mostly inside [0, 1], sometimes anything.
    double T() {
        const uint8_t tag = Byte();
        return tag < 192 ? tag / 191.0 : D();
    }
    P Pt() { return {D(), D()}; }
    tagPOINT IPt() { return {I(), I()}; }
    // Four control points, then some of them made to coincide: the low six bits
    // of a byte say which point copies its predecessor's coordinates (or one of
    // them, for axis-aligned handles).
    template <typename Pt, typename Read>
    void Curve(Pt p[4], Read read) {
        for (int i = 0; i < 4; ++i) p[i] = read();
        const uint8_t mask = Byte();
        for (int i = 1; i < 4; ++i) {
            if (mask & (1 << i)) p[i] = p[i - 1];
            if (mask & (8 << i)) p[i].x = p[i - 1].x;
        }
        if (mask & 0x80) p[3] = p[0];  // closed
    }
    void Curve(P p[4]) { Curve(p, [this] { return Pt(); }); }
    void Curve(tagPOINT p[4]) { Curve(p, [this] { return IPt(); }); }
    LengthAccuracy Accuracy() {  // any int32, not only the tabulated counts
        const uint8_t tag = Byte();
        return static_cast<LengthAccuracy>(tag < 224 ? tag % 20 : I());
    }
};

template <typename T>
bool Same(const T& x, const T& y) {  // bitwise, so NaN matches NaN
    return std::memcmp(&x, &y, sizeof(T)) == 0;
}

bool Finite(const P* p, int n) {
    for (int i = 0; i < n; ++i)
        if (!std::isfinite(p[i].x) || !std::isfinite(p[i].y)) return false;
    return true;
}

// NaN passes: only a number outside [lo, hi] fails.
bool Within(double v, double lo, double hi) { return !(v < lo) && !(v > hi); }

constexpr int kGuards = 4;
constexpr double kGuard = -98765.4321;
constexpr double kMarker = 123.25;
constexpr double kInf = qfuzz::ByteReader::kInf;
// The root arrays and vectors filled by the solvers of degree 3 and up are not
// held to [0, 1] nor to ascending order: their Newton probe for a double root
// starts just left of 0 and may land on a root of p′ outside. So a curve whose
// speed vanishes at ±2.2e-5 gets the curvature-extremum candidate −2.2e-5, and
// P = (0, −0.25), (0.25, 0), (0, −1), (1, 0) with p = (0, 0), whose tangent
// quartic is −3/16·(t + 1)²·(3t − 1)², gets t = −1 alone from
// FindTangentsToPoint. Only the quadratic ones (vertical, horizontal, parallel)
// are checked for range and order.

// Room for `capacity` roots and guards after it that must survive.
struct Roots {
    explicit Roots(int capacity) : n(capacity), r(size_t(capacity + kGuards), kGuard) {}
    double* data() { return r.data(); }
    void Check(int count) const {
        CHECK(count >= 0 && count <= n);
        for (int i = n; i < n + kGuards; ++i) CHECK(Same(r[size_t(i)], kGuard));
    }
    int n;
    std::vector<double> r;
};

// A vector that held a marker before the call: kept, and what was appended is
// in [lo, hi] (NaN aside), at most `most` values, ascending if `sorted` (the
// quadratic solver's roots; a probed double root of the higher degrees comes
// after the others, wherever it lies).
void CheckAppended(const std::vector<double>& v, size_t before, size_t most, double lo, double hi,
                   bool sorted = true) {
    CHECK(v.size() >= before && v.size() - before <= most);
    for (size_t i = 0; i < before; ++i) CHECK(Same(v[i], kMarker));
    for (size_t i = before; i < v.size(); ++i) {
        CHECK(Within(v[i], lo, hi));
        CHECK(!sorted || i == before || !(v[i] < v[i - 1]));
    }
}

// The curve as control points and in power basis; the basis either from the
// points or read directly (so that a may be large while b, c are tiny, etc.).
struct Curve {
    P pts[4], a, b, c, d;
    bool finite;
    explicit Curve(Input& in) {
        in.Curve(pts);
        if (in.Byte() & 1) {
            a = in.Pt(), b = in.Pt(), c = in.Pt(), d = in.Pt();
        } else {
            GetPowerBasis(pts, a, b, c, d);
        }
        const P basis[4] = {a, b, c, d};
        finite = Finite(basis, 4);
    }
};

// ---- curvature, inflections, curvature extrema ------------------------------------

void Curvature(Input& in, const Curve& k) {
    const double t = in.T();
    double curvature = kMarker;
    if (!GetCurvatureAt(t, k.a, k.b, k.c, curvature)) CHECK(Same(curvature, kMarker));
    double radius = kMarker;
    if (!GetCurvatureRadiusAt(t, k.a, k.b, k.c, radius)) CHECK(radius == DBL_MAX || radius == -DBL_MAX);
    (void)SafeBezierCurvature(t, k.a, k.b, k.c);

    Roots inflections(2);
    const int n = BezierInflectionPoints(k.a, k.b, k.c, inflections.data());
    inflections.Check(n);
    CHECK(n == 0 || n == 2);

    Roots extrema(13);
    const int m = FindCurvatureMinMax(k.a, k.b, k.c, extrema.data());
    extrema.Check(m);
}

// ---- tangents ----------------------------------------------------------------------

void Tangents(Input& in, const Curve& k) {
    const V tangent = SafeBezierTangent(in.T(), k.a, k.b, k.c, k.d);
    CHECK(!(tangent.x == 0 && tangent.y == 0));

    const size_t before = in.Byte() % 3;
    std::vector<double> v(before, kMarker);
    GetVerticalTangents(k.a, k.b, k.c, v);
    CheckAppended(v, before, 2, 0, 1);
    v.assign(before, kMarker);
    GetHorizontalTangents(k.a, k.b, k.c, v);
    CheckAppended(v, before, 2, 0, 1);

    const V direction{in.D(), in.D()};
    v.assign(before, kMarker);
    bool everywhere = in.Byte() & 1;
    GetParallels(k.a, k.b, k.c, direction, v, everywhere);
    CheckAppended(v, before, everywhere ? 0 : 2, 0, 1);

    Roots roots(7);
    const int n = FindTangentsToPoint(k.a, k.b, k.c, k.d, in.Pt(), roots.data());
    roots.Check(n);
}

// ---- closest point and inversion -------------------------------------------------

void Closest(Input& in, const Curve& k) {
    const P p = in.Pt();
    const bool finite = k.finite && std::isfinite(p.x) && std::isfinite(p.y);
    const P kept{kMarker, -kMarker};
    double t = kMarker, dd = kMarker;
    P nearest = kept;
    if (FindClosestPointOnBezier(k.a, k.b, k.c, k.d, p, t, nearest, dd)) {
        // A root is taken only while its squared distance is below the last,
        // which starts at DBL_MAX: when every one overflows (or is NaN) the call
        // still succeeds, with t and nearest untouched and DBL_MAX.
        const bool noneBelowMax = Same(t, kMarker) && Same(nearest, kept) && dd == DBL_MAX;
        if (finite && !noneBelowMax) CHECK(std::isfinite(t) && !(dd < 0));
    } else {
        CHECK(Same(t, kMarker) && Same(dd, kMarker) && Same(nearest, kept));
    }
    t = kMarker, dd = kMarker, nearest = kept;
    if (!FindClosestPointOnBezier(k.pts, p, t, nearest, dd))
        CHECK(Same(t, kMarker) && Same(dd, kMarker) && Same(nearest, kept));

    const size_t before = in.Byte() % 2;
    std::vector<double> ts(before, kMarker), dds(before, kMarker);
    std::vector<P> points(before, kept);
    const bool any = FindClosestPointsOnBezier(k.pts, p, ts, points, dds);
    CHECK(any == (ts.size() > before) && points.size() == ts.size() && dds.size() == ts.size());
    CheckAppended(ts, before, 7, -kInf, kInf, false);

    std::vector<double> out(before, kMarker);
    const bool inverted = Invert(k.a, k.b, k.c, k.d, p, out);
    CHECK(inverted == !out.empty());
    CheckAppended(out, before, 1, 0, 1);
}

void ClosestInteger(Input& in) {
    tagPOINT pts[4];
    in.Curve(pts);
    const tagPOINT p = in.IPt(), kept{12345, -12345};
    double t = kMarker, dd = kMarker;
    tagPOINT nearest = kept;
    if (FindClosestPointOnBezier(pts, p, t, nearest, dd)) {
        CHECK(std::isfinite(t) && !(dd < 0));
    } else {
        CHECK(Same(t, kMarker) && Same(dd, kMarker) && Same(nearest, kept));
    }
    CHECK(std::isfinite(FindClosestPointOnBezier(pts, p)));

    std::vector<double> ts, dds;
    std::vector<tagPOINT> points;
    const bool any = FindClosestPointsOnBezier(pts, p, ts, points, dds);
    CHECK(any == !ts.empty() && points.size() == ts.size() && dds.size() == ts.size());
    CheckAppended(ts, 0, 7, -kInf, kInf, false);

    const double u = in.T();
    CHECK(LengthTo(0.0, pts) == 0.0 && LengthFrom(1.0, pts) == 0.0);
    CHECK(!(LengthTo(u, pts) < 0) && !(LengthFrom(u, pts) < 0));
}

// ---- length -----------------------------------------------------------------------

void Lengths(Input& in, const Curve& k) {
    const LengthAccuracy accuracy = in.Accuracy();
    CHECK(!(Length(k.a, k.b, k.c, accuracy) < 0));
    const double u = in.T();
    CHECK(LengthTo(0.0, k.pts) == 0.0 && LengthFrom(1.0, k.pts) == 0.0);
    // The pieces of a reversed or extrapolated range integrate over [0, 1] too,
    // so only NaN parameters are excused from a non-negative length.
    CHECK(!(LengthTo(u, k.pts) < 0) && !(LengthFrom(u, k.pts) < 0));

    const double fraction = in.Byte() < 200 ? in.T() : in.D();
    const double tolerance = in.Byte() & 1 ? 1e-9 : in.D();
    const double t = GetCurveRelativeLengthParameter(fraction, k.a, k.b, k.c, tolerance, accuracy);
    if (fraction <= 0) CHECK(t == 0.0);
    if (fraction >= 1) CHECK(t == 1.0);
    CHECK(Within(t, 0, 1));
}

// ---- side, area, mapping ---------------------------------------------------------

void SideAreaMap(Input& in, const Curve& k) {
    const P p = in.Pt();
    double t = kMarker, dd = kMarker;
    P nearest{kMarker, kMarker};
    // Whether the closest point is one at all: see Closest on squared distances
    // that all overflow. Then the five-output form sees the caller's t (here
    // outside [0, 1], so it fails), the one-result form its own starting values.
    const bool found = FindClosestPointOnBezier(k.a, k.b, k.c, k.d, p, t, nearest, dd) && !Same(t, kMarker);
    t = kMarker, dd = kMarker, nearest = {kMarker, kMarker};
    Side side = static_cast<Side>(7);
    const bool ok = GetSide(k.a, k.b, k.c, k.d, p, t, nearest, dd, side);
    const Side single = GetSide(k.a, k.b, k.c, k.d, p);
    CHECK(single == Side::SideNone || single == Side::SideLeft || single == Side::SideRight);
    if (ok) {
        CHECK(found && Within(t, 0, 1) && single == side);
    } else {
        CHECK(side == static_cast<Side>(7));
        if (found) CHECK(single == Side::SideNone);
    }
    (void)GetAreaUnderBezier(k.a, k.b, k.c, k.d);
    (void)MapToBezier(k.pts, in.T(), in.D(), in.D());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input in(data, size);
    for (int op = 0; op < 16 && in.Left() > 0; ++op) {
        const uint8_t which = in.Byte() % 7;
        if (which == 6) {
            ClosestInteger(in);
            continue;
        }
        const Curve k(in);
        switch (which) {
            case 0: Curvature(in, k); break;
            case 1: Tangents(in, k); break;
            case 2: Closest(in, k); break;
            case 3: Lengths(in, k); break;
            case 4: SideAreaMap(in, k); break;
            default:  // everything on one curve
                Curvature(in, k);
                Tangents(in, k);
                Closest(in, k);
                Lengths(in, k);
                SideAreaMap(in, k);
                break;
        }
    }
    return 0;
}
