// Feeds arbitrary numbers (NaN, infinities, subnormals, huge and int32-extreme values) to every exported function of
// the rectangle, bounding-box, ellipse, point-set and line-fitting families. Nothing may crash, hang or trip a
// sanitizer; where two entry points must agree (a box and the points it bounds, a transformed box and its transformed
// corners) a disagreement aborts too.

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <vector>

#include "QorMath/bounds.h"
#include "QorMath/fitting.h"
#include "geometry_input.h"

namespace {
using namespace QorMath;
using P = vector2dT<double, 1>;
using V = vector2dT<double, 0>;
using Input = qfuzz::GeometryInput;
using qfuzz::Same;
using qfuzz::SameValue;

bool Contains(const tagRECT& r, const tagPOINT& p) {
    return r.left <= p.x && p.x <= r.right && r.bottom <= p.y && p.y <= r.top;
}

void Rectangles(Input& in) {
    tagRECT r = in.IRect(), s = in.IRect();
    const tagPOINT p = in.IPt();
    const std::vector<tagPOINT> pts = in.IPts();
    NormalizeRect(r);
    CHECK(r.left <= r.right && r.bottom <= r.top);
    tagRECT box = GetPointsBBox(pts.data(), int32_t(pts.size())), box2 = GetEmptyRect(), box3;
    GetPointsBBox(pts.data(), int32_t(pts.size()), box3);
    UnionPointsWithRect(box2, pts.data(), int32_t(pts.size()));
    CHECK(Same(box, box3) && (pts.empty() || Same(box, box2)));
    for (const tagPOINT& q : pts) CHECK(Contains(box, q));
    const tagPOINT* none = nullptr;
    CHECK(Same(GetPointsBBox(none, in.I()), GetEmptyRect()));
    CHECK(Same(GetPointsBBox(pts.data(), -int32_t(in.Byte())), GetEmptyRect()));
    (void)GetPointsBBox(in.Pts().data(), in.Byte() % 2 ? 0 : -1);
    const std::vector<P> dpts = in.Pts();
    (void)GetPointsBBox(dpts.data(), int32_t(dpts.size()));
    UnionPointWithRect(s, p);
    UnionPointWithRect(r, in.Pt());
    tagRECT u = in.IRect();
    const tagRECT other = in.IRect();
    const bool united = UnionRect(u, other);
    CHECK(united == (u.left < u.right && u.bottom < u.top));
    u = in.IRect();
    (void)IntersectRect(u, other);
    TranslateRect(u, in.I(), in.I()), TranslateValidRect(u, in.I(), in.I()), InflateRect(u, in.I(), in.I());
    tagPOINT corners[4];
    P dcorners[4];
    BoundsT<double> bd = in.Box();
    GetRectCorners(u, corners), GetRectCorners(bd, dcorners), (void)GetRectCenter(u);
    CHECK(GetRectArea(u) >= 0.0);
    (void)IsPointInRect(p, u), (void)IsPointInRect(in.Pt(), u), (void)IsAnyPointInRect(pts.data(), pts.size(), u);
    (void)GetPointRect(p, in.I()), (void)GetPointRect(p, in.I(), in.I());
    InitializeEmpty(u), InitializeEmpty(bd), (void)IdentityBounds();
}

void Boxes(Input& in) {
    const MATRIX m = in.M();
    const tagRECT r = in.IRect();
    const BoundsT<double> b = in.Box();
    tagPOINT corners[4];
    GetRectCorners(r, corners);
    m.TransformPoints(corners, 4);
    CHECK(Same(GetTransformedBBox(r, m), GetPointsBBox(corners, 4)));
    (void)GetTransformedBBox(b, m), (void)GetUntransformedBBox(r, m), (void)GetUntransformedBBox(b, m);
    const std::vector<tagPOINT> ipts = in.IPts();
    tagRECT grown = GetEmptyRect();
    for (const tagPOINT& q : ipts) UnionPointWithRect(grown, m(P{double(q.x), double(q.y)}));
    CHECK(Same(GetTransformedPointsBBox(ipts.data(), ipts.size(), m), grown));
    const std::vector<P> pts = in.Pts();
    (void)GetTransformedPointsBBox(pts.data(), pts.size(), m);
    (void)GetRemappedPoint(in.Pt(), in.Box(), in.Box());
    V major{}, minor{};
    double l1 = 0, l2 = 0;
    (void)GetTransformedCircleBBox(m, in.D(), in.Pt()), GetTransformedCircleAxisLengths(m, l1, l2);
    GetTransformedCircleAxes(m, major, minor), (void)GetNormalOnTransformedCircle(m, in.Pt());
    (void)FindPointOnEllipseThatHasNormal(in.Vec(), in.D(), in.D());
}

void PointSets(Input& in) {
    std::vector<P> pts = in.Pts();
    std::vector<tagPOINT> ipts = in.IPts();
    (void)AreCollinear(pts.data(), pts.size(), in.D()), (void)AreCollinear(ipts.data(), ipts.size(), in.D());
    (void)DistanceToLineSegmentSqrd(in.Pt(), in.Pt(), in.Pt());
    ReflectAcross(in.IPt(), in.IPt(), ipts.data(), ipts.size());
    ReflectAcross(in.IPt(), in.IPt(), nullptr, size_t(in.I()));
    TranslatePoints(pts.data(), pts.size(), in.Pt()), TranslatePoints(ipts.data(), ipts.size(), in.IPt());
    const P o0{in.D(), in.D()};
    const V d0{in.D(), in.D()};
    P o = o0;
    V d = d0;
    GetLeastSquaresLines(pts.data(), int(pts.size()), o, d);
    if (pts.size() < 2) CHECK(SameValue(o.x, o0.x) && SameValue(o.y, o0.y) && SameValue(d.x, d0.x) && SameValue(d.y, d0.y));
    GetLeastSquaresLines(in.D(), in.D(), in.D(), in.D(), in.D(), pts.data(), int(pts.size()), o, d);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static void (*const ops[])(Input&) = {Rectangles, Boxes, PointSets};
    return qfuzz::Run(data, size, ops, 64);
}
