// Feeds arbitrary curves, lines and distances (NaN, infinities, huge and subnormal values, int32 extremes, coarse
// integer coordinates that let the loop search recurse to the bottom) to the intersection family of the cubic Bezier:
// implicit form, line and vertical-line intersection, segment test, curve/curve intersection, fat lines,
// self-intersection and offset cusps. Nothing may crash, hang or trip a sanitizer. Beyond that only what the contracts
// promise is checked: result vectors kept parallel, cleared or appended to as promised, bool results that agree with
// the vectors; the integer forms equal to the double forms on the converted points, to the bit; loop intervals clamped
// and ordered, the double point's parameters in [0, 1]; offset cusps only on the side the offset moves to, none for
// d = 0; fat lines that only grow with w.

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "QorMath/bezier.h"
#include "fuzz_input.h"

namespace {
using namespace QorMath;
using namespace QorMath::CubicBezier;
using namespace qfuzz;
using P = vector2dT<double, 1>;

class Input : public qfuzz::Reader<Input> {
public:
    using Reader::Reader;
    double D() {
        static const double k[] = {0.0, -0.0, 1.0, -1.0, 0.5, 2.0, 1e-7, DBL_EPSILON, DBL_MIN, 4.9e-324,
                                   DBL_MAX, -DBL_MAX, kInf, -kInf, kNaN, 2147483647.0, -2147483648.0, 1e300,
                                   -1e300, 1e154, 1e-300, 1e16, 1000.0, 1.00000001, 0.1, 1.0 / 3.0};
        const uint8_t tag = Byte();
        if (tag < 48) return k[tag % (sizeof k / sizeof k[0])];
        if (tag < 128) return static_cast<int8_t>(Byte()) / 4.0;
        if (tag < 208) return double(Short());  // integer-like units
        return Raw<double>();
    }
    int32_t I() {
        static const int32_t k[] = {0, 1, -1, 2, INT32_MIN, INT32_MAX, INT32_MIN + 1, INT32_MAX - 1, 1073741824,
                                    -1073741824, 46341, -46341, 1000, 3};
        const uint8_t tag = Byte();
        if (tag < 48) return k[tag % (sizeof k / sizeof k[0])];
        if (tag < 208) return Short();
        return Raw<int32_t>();
    }
    int16_t Short() {
        const int low = Byte();
        return static_cast<int16_t>(low | Byte() << 8);
    }
};

// Points of either kind as doubles: the integer forms convert them so.
template <typename Pt, size_t N>
void ToDouble(const Pt (&q)[N], P (&p)[N]) {
    for (size_t i = 0; i < N; ++i) p[i] = {double(q[i].x), double(q[i].y)};
}
template <typename Pt>
constexpr bool kInteger = std::is_same_v<Pt, tagPOINT>;

// Root counts: a cubic gives at most 3 roots plus 2 end duplicates; the degree-9 substitution at most 9 (+2); the
// degree-12 cusp polynomial 14.
constexpr size_t kCubicMost = 5, kCurvesMost = 11, kCuspsMost = 14;

// The implicit form vanishes identically for a curve without a t³ term (as long as no product overflows).
void Implicit(Input& in) {
    P a = in.Pt(), b = in.Pt(), c = in.Pt(), d = in.Pt();
    if (in.Byte() & 1) a = {0.0, 0.0};
    double k[10];
    std::fill(k, k + 10, kMarker);
    ConvertBezierToImplicit(a, b, c, d, k[0], k[1], k[2], k[3], k[4], k[5], k[6], k[7], k[8], k[9]);
    bool moderate = true;
    for (const P& v : {a, b, c, d}) moderate = moderate && std::fabs(v.x) <= 1e40 && std::fabs(v.y) <= 1e40;
    if (a.x == 0 && a.y == 0 && moderate)
        for (double v : k) CHECK(v == 0);
}

struct LineResult {
    std::vector<double> t, s;
    bool any;
};
template <typename Pt>
LineResult Line(const Pt curve[4], const Pt line[2], bool ends, size_t before) {
    LineResult r{std::vector<double>(before, kMarker), std::vector<double>(before + 1, kMarker), false};
    r.any = FindBezierLineIntersection(curve, line, r.t, r.s, ends);
    CHECK(r.t.size() == r.s.size() && r.t.size() <= kCubicMost && r.any == !r.t.empty());
    return r;
}

template <typename Pt>
void Lines(Input& in) {
    Pt curve[4], line[2];
    in.Read(line, 2);
    in.Curve(curve);
    const uint8_t flags = in.Byte();
    if (flags & 1) line[1] = line[0];
    const bool ends = flags & 2;
    const size_t before = flags >> 6;
    P dc[4], dl[2];
    ToDouble(curve, dc), ToDouble(line, dl);
    const LineResult r = Line(dc, dl, ends, before);
    if (Finite(dl, 2) && dl[0].x == dl[1].x && dl[0].y == dl[1].y) CHECK(!r.any);
    // The segment test: a crossing with s in [0, 1], end points of the curve not counted.
    const LineResult open = Line(dc, dl, false, 0);
    const bool crossing = std::any_of(open.s.begin(), open.s.end(), [](double s) { return s >= 0 && s <= 1; });
    CHECK(DoesBezierIntersectLineSegment(curve, line) == crossing);
    if constexpr (kInteger<Pt>) {
        const LineResult ri = Line(curve, line, ends, before);
        CHECK(ri.any == r.any && SameAll(ri.t, r.t) && SameAll(ri.s, r.s));
    }
    // x crossings are appended after what the vector held.
    Appended(before, [&](std::vector<double>& ts) {
        CHECK(FindBezierIntersectionsAtX(dc, dl[0].x, ts, ends) == !ts.empty());
        return kCubicMost;
    }, -kInf, kInf, false);
}

struct CurvesResult {
    std::vector<double> first, second;
    std::vector<P> points;
};
template <typename Pt>
CurvesResult Curves(const Pt first[4], const Pt second[4], size_t before) {
    CurvesResult r{std::vector<double>(before, kMarker), std::vector<double>(before, kMarker),
                   std::vector<P>(before, P{kMarker, kMarker})};
    FindBezierIntersections(first, second, r.first, r.second, r.points);
    CHECK(r.first.size() == r.second.size() && r.first.size() == r.points.size());
    CHECK(r.first.size() <= before + kCurvesMost);
    return r;
}

// DoBeziersIntersect: true for a shared end point, otherwise whether anything is found.
template <typename Pt>
void CurvePairs(Input& in) {
    Pt p[4], q[4];
    in.Curve(p);
    in.Curve(q);
    if (in.Byte() & 1) std::swap(p, q);
    P dp[4], dq[4];
    ToDouble(p, dp), ToDouble(q, dq);
    Curves(dp, dq, in.Byte() % 3);
    const CurvesResult d = Curves(dp, dq, 0);
    bool shared = false;
    for (const P& u : {dp[0], dp[3]})
        for (const P& v : {dq[0], dq[3]}) shared = shared || (u.x == v.x && u.y == v.y);
    CHECK(DoBeziersIntersect(p, q) == (shared || !d.first.empty()));
    if constexpr (kInteger<Pt>) {
        const CurvesResult ri = Curves(p, q, 0);
        CHECK(SameAll(ri.first, d.first) && SameAll(ri.second, d.second) && SameAll(ri.points, d.points));
    }
}

// Fat lines: every point within w of the segment, so a wider one (0 <= w <= w2) touches whatever a narrower one
// touches. The curve test rejects when neither end of the segment lies in the control box grown by w (y in either
// order).
void FatLines(Input& in) {
    P curve[4];
    in.Curve(curve);
    const P a = in.Pt(), b = in.Pt(), c = in.Pt(), d = in.Pt();
    const double w = in.D(), w2 = std::fabs(w) * (1 + in.Byte() / 16.0);
    const bool hit = DoesFatlineIntersectBezier(curve, a, b, w), lines = DoesFatlineIntersectLine(a, b, c, d, w);
    CHECK(!DoesFatlineIntersectBezier(nullptr, a, b, w));
    const P ends[] = {a, b, c, d};
    if (!Finite(curve, 4) || !Finite(ends, 4) || !std::isfinite(w)) return;
    double left = curve[0].x, right = left, bottom = curve[0].y, top = bottom;
    for (const P& v : curve) {
        left = std::min(left, v.x), right = std::max(right, v.x);
        bottom = std::min(bottom, v.y), top = std::max(top, v.y);
    }
    auto inside = [&](const P& v) {  // a negative w may turn the box over in y, which counts either way
        return v.x >= left - w && v.x <= right + w && v.y >= std::min(bottom - w, top + w) &&
               v.y <= std::max(bottom - w, top + w);
    };
    if (!inside(a) && !inside(b)) CHECK(!hit);
    if (w >= 0 && std::isfinite(w2) && hit) CHECK(DoesFatlineIntersectBezier(curve, a, b, w2));
    if (lines && std::isfinite(w2)) CHECK(DoesFatlineIntersectLine(a, b, c, d, w2));
}

struct Loop {
    double t1a = kMarker, t1b = kMarker, t2a = kMarker, t2b = kMarker, s = kMarker, t = kMarker;
    P point{kMarker, kMarker};
    bool loop = false, found = false;
};
template <typename Pt>
Loop SelfIntersection(const Pt p[4], bool closedCurve) {
    Loop r;
    r.loop = DoesBezierSelfIntersect(p, r.t1a, r.t1b, r.t2a, r.t2b, closedCurve);
    if (r.loop) {
        for (double v : {r.t1a, r.t1b, r.t2a, r.t2b}) CHECK(Within(v, 0, 1));
        CHECK(!(r.t1a > r.t1b) && !(r.t2a > r.t2b));
    }
    const bool closed = std::fabs(double(p[0].x) - double(p[3].x)) <= DBL_EPSILON &&
                        std::fabs(double(p[0].y) - double(p[3].y)) <= DBL_EPSILON;
    if (closed && !closedCurve)
        CHECK(!r.loop && Same(r.t1a, kMarker) && Same(r.t1b, kMarker) && Same(r.t2a, kMarker) && Same(r.t2b, kMarker));
    // The double point: s and t on the curve's parameter range (each a blend of an interval's ends, so within
    // rounding of it); on failure t is never written.
    r.found = FindBezierSelfIntersection(p, r.s, r.t, r.point);
    if (r.found) CHECK(r.s >= -1e-12 && r.s <= 1 + 1e-12 && r.t >= -1e-12 && r.t <= 1 + 1e-12);
    if (!r.found) CHECK(Same(r.t, kMarker));
    return r;
}

template <typename Pt>
void SelfIntersections(Input& in) {
    Pt p[4];
    in.Curve(p);
    P d[4];
    ToDouble(p, d);
    const bool closed = in.Byte() & 1;
    const Loop e = SelfIntersection(d, closed);
    if constexpr (kInteger<Pt>) {
        const Loop r = SelfIntersection(p, closed);
        CHECK(r.loop == e.loop && r.found == e.found && Same(r.t1a, e.t1a) && Same(r.t1b, e.t1b) &&
              Same(r.t2a, e.t2a) && Same(r.t2b, e.t2b) && Same(r.s, e.s) && Same(r.t, e.t) && Same(r.point, e.point));
    }
}

// Offset cusps: the vector cleared, and every cusp kept on the side the offset moves to by the signed radius there (an
// uncomputable radius counting as 0).
void OffsetCusps(Input& in) {
    P a, b, c, d;
    if (in.Byte() & 1) {
        a = in.Pt(), b = in.Pt(), c = in.Pt();
    } else {
        P p[4];
        in.Curve(p);
        GetPowerBasis(p, a, b, c, d);
    }
    const double distance = in.Byte() & 1 ? 0.0 : in.D();
    std::vector<double> out(in.Byte() % 3, kMarker);
    const bool any = FindOffsetCusps(a, b, c, distance, out);
    CHECK(any == !out.empty() && out.size() <= kCuspsMost);
    if (!(distance > 0) && !(distance < 0)) CHECK(out.empty());
    for (double t : out) {
        double radius = 0;
        GetCurvatureRadiusAt(t, a, b, c, radius);
        CHECK((distance > 0 && radius >= 0) || (distance < 0 && radius < 0));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static void (*const ops[])(Input&) = {Implicit,         Lines<P>,          Lines<tagPOINT>,
                                          CurvePairs<P>,    CurvePairs<tagPOINT>, FatLines,
                                          SelfIntersections<P>, SelfIntersections<tagPOINT>, OffsetCusps};
    return Run(data, size, ops, 16);
}
