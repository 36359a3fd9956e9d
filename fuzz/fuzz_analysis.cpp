// Feeds arbitrary curves (coincident and collapsed control points, NaN, infinities, huge and subnormal values, int32
// extremes) and arbitrary queries to every analysis function of the cubic Bezier: derivative, curvature, inflections,
// curvature extrema, tangents, closest points, inversion, arc length and its inverse, side, area and mapping. Nothing
// may crash, hang or trip a sanitizer. Beyond that only what the contracts promise is checked: root counts within the
// caller's capacity and nothing written past it; outputs left untouched on failure; appended parameters in range and
// ascending, the vectors' earlier contents kept; the exact end values of the length functions.

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <vector>

#include "QorMath/bezier.h"
#include "fuzz_input.h"

namespace {
using namespace QorMath;
using namespace QorMath::CubicBezier;
using P = vector2dT<double, 1>;
using V = vector2dT<double, 0>;
using namespace qfuzz;

class Input : public qfuzz::Reader<Input> {
public:
    using Reader::Reader;
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
    LengthAccuracy Accuracy() {  // any int32, not only the tabulated counts
        const uint8_t tag = Byte();
        return static_cast<LengthAccuracy>(tag < 224 ? tag % 20 : I());
    }
};

// The root arrays and vectors filled by the solvers of degree 3 and up are not held to [0, 1] nor to ascending order:
// their Newton probe for a double root starts just left of 0 and may land on a root of p′ outside. So a curve whose
// speed vanishes at ±2.2e-5 gets the curvature-extremum candidate −2.2e-5, and P = (0, −0.25), (0.25, 0), (0, −1),
// (1, 0) with p = (0, 0), whose tangent quartic is −3/16·(t + 1)²·(3t − 1)², gets t = −1 alone from
// FindTangentsToPoint. Only the quadratic ones (vertical, horizontal, parallel) are checked for range and order.

// call(t, nearest, dd) on outputs holding markers: on failure they are left untouched.
template <typename Pt>
struct Nearest {
    template <typename F>
    Nearest(const Pt& kept, F call) : at(kept), ok(call(t, at, dd)) {
        if (!ok) CHECK(Same(t, kMarker) && Same(dd, kMarker) && Same(at, kept));
    }
    double t = kMarker, dd = kMarker;
    Pt at;
    bool ok;
};

// The closest-point forms taking control points, double or integer: one result as above; all stationary points appended
// after `before` entries, the three vectors growing alike.
template <typename Pt>
void ClosestForms(const Pt pts[4], const Pt& p, size_t before, const Pt& kept) {
    const Nearest<Pt> one(kept, [&](double& t, Pt& at, double& dd) { return FindClosestPointOnBezier(pts, p, t, at, dd); });
    if constexpr (std::is_same_v<Pt, tagPOINT>) {
        if (one.ok) CHECK(std::isfinite(one.t) && !(one.dd < 0));
        CHECK(std::isfinite(FindClosestPointOnBezier(pts, p)));
    }
    Appended(before, [&](std::vector<double>& ts) {
        std::vector<double> dds(before, kMarker);
        std::vector<Pt> points(before, kept);
        const bool any = FindClosestPointsOnBezier(pts, p, ts, points, dds);
        CHECK(any == (ts.size() > before) && points.size() == ts.size() && dds.size() == ts.size());
        return 7;
    }, -kInf, kInf, false);
}
// The length functions' ends are exact zeros; the pieces of a reversed or extrapolated range integrate over [0, 1] too,
// so only NaN parameters are excused from a non-negative length.
template <typename Pt>
void LengthEnds(const Pt pts[4], double u) {
    CHECK(LengthTo(0.0, pts) == 0.0 && LengthFrom(1.0, pts) == 0.0);
    CHECK(!(LengthTo(u, pts) < 0) && !(LengthFrom(u, pts) < 0));
}

// The curve as control points and in power basis; the basis either from the points or read directly (so that a may be
// large while b, c are tiny, etc.).
struct Curve {
    P pts[4], a, b, c, d;
    bool finite = true;
    explicit Curve(Input& in) {
        in.Curve(pts);
        if (in.Byte() & 1) {
            a = in.Pt(), b = in.Pt(), c = in.Pt(), d = in.Pt();
        } else {
            GetPowerBasis(pts, a, b, c, d);
        }
        for (const P& v : {a, b, c, d}) finite = finite && std::isfinite(v.x) && std::isfinite(v.y);
    }
};

void Curvature(Input& in, const Curve& k) {
    const double t = in.T();
    double curvature = kMarker, radius = kMarker;
    if (!GetCurvatureAt(t, k.a, k.b, k.c, curvature)) CHECK(Same(curvature, kMarker));
    if (!GetCurvatureRadiusAt(t, k.a, k.b, k.c, radius)) CHECK(radius == DBL_MAX || radius == -DBL_MAX);
    (void)SafeBezierCurvature(t, k.a, k.b, k.c);
    const int n = Guarded(2, [&](double* out) { return BezierInflectionPoints(k.a, k.b, k.c, out); });
    CHECK(n == 0 || n == 2);
    Guarded(13, [&](double* out) { return FindCurvatureMinMax(k.a, k.b, k.c, out); });
}

void Tangents(Input& in, const Curve& k) {
    // B′(t) itself wherever its squared length reaches DBL_EPSILON; the fallbacks only below.
    const double t = in.T();
    const V tangent = SafeBezierTangent(t, k.a, k.b, k.c, k.d), derivative = EvaluateDerivative(k.a, k.b, k.c, t);
    CHECK(!(tangent.x == 0 && tangent.y == 0));
    if (MagnitudeSqrd(derivative) >= DBL_EPSILON) CHECK(Same(tangent, derivative));
    const size_t before = in.Byte() % 3;
    for (auto axis : {&GetVerticalTangents, &GetHorizontalTangents})
        Appended(before, [&](std::vector<double>& v) { return axis(k.a, k.b, k.c, v), 2; });
    const V direction{in.D(), in.D()};
    bool everywhere = in.Byte() & 1;
    Appended(before, [&](std::vector<double>& v) {
        GetParallels(k.a, k.b, k.c, direction, v, everywhere);
        return everywhere ? 0 : 2;
    });
    const P x = in.Pt();
    Guarded(7, [&](double* out) { return FindTangentsToPoint(k.a, k.b, k.c, k.d, x, out); });
}

void Closest(Input& in, const Curve& k) {
    const P p = in.Pt(), kept{kMarker, -kMarker};
    const Nearest<P> basis(kept, [&](double& t, P& at, double& dd) { return FindClosestPointOnBezier(k.a, k.b, k.c, k.d, p, t, at, dd); });
    // A root is taken only while its squared distance is below the last, which starts at DBL_MAX: when every one
    // overflows (or is NaN) the call still succeeds, with t and nearest untouched and DBL_MAX.
    const bool noneBelowMax = Same(basis.t, kMarker) && Same(basis.at, kept) && basis.dd == DBL_MAX;
    if (basis.ok && k.finite && std::isfinite(p.x) && std::isfinite(p.y) && !noneBelowMax)
        CHECK(std::isfinite(basis.t) && !(basis.dd < 0));
    const size_t before = in.Byte() % 2;
    ClosestForms(k.pts, p, before, kept);
    Appended(before, [&](std::vector<double>& v) {
        const bool inverted = Invert(k.a, k.b, k.c, k.d, p, v);
        return CHECK(inverted == !v.empty()), 1;
    });
}

void ClosestInteger(Input& in) {
    tagPOINT pts[4];
    in.Curve(pts);
    const tagPOINT p = in.IPt();
    ClosestForms(pts, p, 0, tagPOINT{12345, -12345});
    LengthEnds(pts, in.T());
}

void Lengths(Input& in, const Curve& k) {
    const LengthAccuracy accuracy = in.Accuracy();
    CHECK(!(Length(k.a, k.b, k.c, accuracy) < 0));
    LengthEnds(k.pts, in.T());
    const double fraction = in.Byte() < 200 ? in.T() : in.D();
    const double tolerance = in.Byte() & 1 ? 1e-9 : in.D();
    const double t = GetCurveRelativeLengthParameter(fraction, k.a, k.b, k.c, tolerance, accuracy);
    CHECK(Within(t, 0, 1) && (!(fraction <= 0) || t == 0.0) && (!(fraction >= 1) || t == 1.0));
}

void SideAreaMap(Input& in, const Curve& k) {
    const P p = in.Pt();
    // Whether the closest point is one at all: see Closest on squared distances that all overflow. Then the
    // five-output form sees the caller's t (here outside [0, 1], so it fails), the one-result form its own starting
    // values.
    const Nearest<P> n({kMarker, kMarker}, [&](double& t, P& at, double& dd) { return FindClosestPointOnBezier(k.a, k.b, k.c, k.d, p, t, at, dd); });
    const bool found = n.ok && !Same(n.t, kMarker);
    double t = kMarker, dd = kMarker;
    P nearest{kMarker, kMarker};
    Side side = static_cast<Side>(7);
    const bool ok = GetSide(k.a, k.b, k.c, k.d, p, t, nearest, dd, side);
    const Side single = GetSide(k.a, k.b, k.c, k.d, p);
    CHECK(single == Side::SideNone || single == Side::SideLeft || single == Side::SideRight);
    if (ok) CHECK(found && Within(t, 0, 1) && single == side);
    if (!ok) CHECK(side == static_cast<Side>(7) && (!found || single == Side::SideNone));
    (void)GetAreaUnderBezier(k.a, k.b, k.c, k.d);
    (void)MapToBezier(k.pts, in.T(), in.D(), in.D());
}

template <void (*F)(Input&, const Curve&)>
void On(Input& in) {
    F(in, Curve(in));
}
void All(Input& in) {  // everything on one curve
    const Curve k(in);
    for (auto f : {Curvature, Tangents, Closest, Lengths, SideAreaMap}) f(in, k);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static void (*const ops[])(Input&) = {On<Curvature>, On<Tangents>, On<Closest>,   On<Lengths>,
                                          On<SideAreaMap>, All,         ClosestInteger};
    return qfuzz::Run(data, size, ops, 16);
}
