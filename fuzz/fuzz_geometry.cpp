// Feeds arbitrary numbers (NaN, infinities, subnormals, huge and int32-extreme values) to every exported function of
// the matrix, angle, rectangle, box, ellipse, point-set and line-fitting families. Nothing may crash, hang or trip a
// sanitizer; where two entry points must agree (a bulk path and its per-point form, a box and the points it bounds) a
// disagreement aborts too.

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "QorMath/angles.h"
#include "QorMath/bounds.h"
#include "QorMath/fitting.h"
#include "QorMath/matrix.h"
#include "fuzz_input.h"

namespace {
using namespace QorMath;
using P = vector2dT<double, 1>;
using V = vector2dT<double, 0>;

class Input : public qfuzz::Reader<Input> {
public:
    using Reader::Reader;
    double D() {
        static const double k[] = {0.0, -0.0, 1.0, -1.0, 0.5, 2.0, Pi, TwoPi, Pi / 2, DBL_EPSILON, DBL_MIN,
                                   4.9e-324, DBL_MAX, -DBL_MAX, kInf, -kInf, kNaN, 2147483647.0, -2147483648.0,
                                   2147483647.5, -2147483648.5, 4294967296.0, 536870912.0, 1e300, -1e300, 1e-300,
                                   1e6, 360.0, 90.0, 1e-17, 0.1, 1e16};
        return Tagged(k, 96, 160, 1 / 4.0);
    }
    int32_t I() {
        static const int32_t k[] = {0, 1, -1, 2, INT32_MIN, INT32_MAX, INT32_MIN + 1, INT32_MAX - 1, 360000000,
                                    -360000000, 90000000, 180000000, 270000000, 450000000, 536870912, 46341};
        return Tagged(k, 96, 160, 1);
    }
    V Vec() { return {D(), D()}; }
    tagRECT IRect() { return {I(), I(), I(), I()}; }
    BoundsT<double> Box() { return {D(), D(), D(), D()}; }
    MATRIX M() { return {D(), D(), D(), D(), D(), D()}; }
    // Array lengths: at most 32, and never more than the bytes still unread.
    size_t Count() {
        const size_t n = Byte() % 33;
        return std::min(n, Left());
    }
    std::vector<P> Pts() { return Points<P>(Count()); }
    std::vector<tagPOINT> IPts() { return Points<tagPOINT>(Count()); }
};

using qfuzz::Same;
bool Same(double u, double w) { return (std::isnan(u) && std::isnan(w)) || std::memcmp(&u, &w, sizeof u) == 0; }
bool Contains(const tagRECT& r, const tagPOINT& p) {
    return r.left <= p.x && p.x <= r.right && r.bottom <= p.y && p.y <= r.top;
}

void MatrixMembers(Input& in) {
    MATRIX m = in.M();
    const P p = in.Pt();
    const V v = in.Vec();
    // Modified first (or not), so that the queries also see what the modifiers make.
    switch (in.Byte() % 8) {
        case 0: if (!m.Invert(in.D())) CHECK(IsZero(m, 0.0)); break;
        case 1: m.RemoveScaling(); break;
        case 2: m.ScaleMatrix(v); break;
        case 3: m.ScaleMatrix(v, p); break;
        case 4: m.Rotate(in.D()); break;
        case 5: m.RotateAroundPoint(in.D(), p); break;
        case 6: m.TransformAroundPoint(in.M(), p); break;
        default: break;
    }
    (void)m(p), (void)m(v), (void)(m * in.M()), (void)m.GetUntransformedVector(v);
    (void)m.GetTransformedRadians(in.D()), (void)m.GetUntransformedRadians(in.D());
    (void)m.GetMaximumMatrixVectorScale(), (void)m.IsMirrored();
    const double tol = in.D();
    (void)m.IsIdentity(in.Byte() & 1, tol), (void)m.IsRotated(tol), (void)m.IsScaledOnly(tol);
    (void)m.IsSkewedOrRotated(tol), (void)m.IsSkewedOrRotatedOrMirrored(tol), (void)m.IsScaledOrSkewedOrRotated(tol);
    (void)m.IsNonUniformScaledOrSkewedOrRotated(tol), (void)m.IsScaled(tol), (void)m.IsOrthogonal(tol);
    (void)m.IsOrthonormal(tol), (void)m.IsUniformOrthogonal(tol), (void)m.IsOrthonormalAxisAligned(tol);
    P c{in.D(), in.D()}, q{in.D(), in.D()};
    if (!m.GetCenterOfTransformation(c)) CHECK(c.x == 0 && c.y == 0);
    (void)m.GetLineOfTransformation(c, q);
}

// The bulk paths against the per-point definition: the same bits, or both NaN.
void BulkTransforms(Input& in) {
    const MATRIX m = in.M();
    const std::vector<P> pts = in.Pts();
    std::vector<P> out = pts;
    m.TransformPoints(out.data(), out.size());
    for (size_t i = 0; i < pts.size(); ++i) CHECK(Same(out[i].x, m(pts[i]).x) && Same(out[i].y, m(pts[i]).y));

    const std::vector<tagPOINT> ipts = in.IPts();
    std::vector<tagPOINT> r1 = ipts, r2 = ipts, r3 = ipts;
    m.TransformPoints(r1.data(), r1.size());
    m.TransformPointsWithRangeCheck(r2.data(), r2.size());
    UTLTransformPoint(r3.data(), &m, static_cast<int64_t>(r3.size()));
    const auto clamp = [](int32_t v) { return v < -536870912 ? -536870912 : v > 536870911 ? 536870911 : v; };
    for (size_t i = 0; i < ipts.size(); ++i) {
        const P q = m(P{double(ipts[i].x), double(ipts[i].y)});
        CHECK(r1[i].x == RoundToInt(q.x) && r1[i].y == RoundToInt(q.y));
        CHECK(r2[i].x == clamp(r1[i].x) && r2[i].y == clamp(r1[i].y));
        CHECK(r3[i].x == r1[i].x && r3[i].y == r1[i].y);
    }
    UTLTransformPoint(r3.data(), &m, -static_cast<int64_t>(in.Byte()));  // count < 1: nothing
}

void Builders(Input& in) {
    const P p = in.Pt(), q = in.Pt();
    (void)IdentityMatrix(), (void)SwapXYMatrix(), (void)ConstructMatrix(in.Vec(), in.Vec(), in.Vec());
    (void)ConstructTranslationMatrix(in.Vec()), (void)ConstructRotationMatrix(in.D());
    (void)ConstructRotateAroundMatrix(in.D(), p), (void)ConstructScaledRotationMatrix(in.D(), in.D(), in.D());
    (void)ConstructScaleAroundMatrix(in.D(), in.D(), p), (void)ConstructSkewAroundMatrix(in.D(), in.D(), q);
    (void)ConstructTransformAroundMatrix(in.M(), p), (void)ConstructVectorTransformMatrix(in.Vec(), in.Vec());
    (void)ConstructLineSegmentTransformMatrix(p, q, in.Pt(), in.Pt());
    (void)ConstructBBoxScaleMatrix(in.Box(), in.Byte() & 1);
    (void)ConstructRectTransformMatrix(in.Box(), in.Box(), static_cast<MapMode>(in.I()));
    V scale{in.D(), in.D()};
    (void)TransformMatrixAndSeparateScale(in.M(), in.M(), scale);
    (void)IsEqual(in.M(), in.M(), in.D()), (void)IsZero(in.M(), in.D());
    (void)GetScaleForSizeTransform(in.Vec(), in.Vec(), static_cast<MapMode>(in.I()));
    AFF_TRANSFORM aff{in.D(), in.D(), in.D(), in.D(), in.Pt()};
    MATRIX m = in.M();
    (void)DecomposeAffineTransform(aff, m), (void)DecomposeAffineTransformFromVectors(aff, p, in.Vec(), in.Vec());
    aff = {in.D(), in.D(), in.D(), in.D(), in.Pt()};
    (void)ComposeAffineTransform(m, aff);
    UTLGetIdentityMatrix(&m);
    for (int k = in.Byte() % 8; k-- > 0;) {
        switch (in.Byte() % 5) {
            case 0: UTLTranslateMatrix(&m, in.I(), in.I()); break;
            case 1: UTLRotateMatrix(&m, in.I()); break;
            case 2: UTLRotateMatrixAround(&m, in.I(), in.I(), in.I()); break;
            case 3: UTLStretchMatrix(&m, in.D(), in.D(), in.I(), in.I()); break;
            default: UTLSkewMatrix(&m, in.I(), in.I(), in.I(), in.I()); break;
        }
    }
}

void Angles(Input& in) {
    const V u = in.Vec(), w = in.Vec();
    const P a = in.Pt(), b = in.Pt(), c = in.Pt();
    const double t = in.D();
    (void)Radians::VectorToAngle(u), (void)Radians::AngleToVector(t), (void)Radians::AngleToVector(t, in.D());
    (void)Radians::NormalizeAngle(t), (void)Radians::NormalizeFineAngle(t), (void)Radians::GetAngle(u, w);
    (void)Radians::GetAngle(a, b, c), (void)Radians::GetFineAngle(u, w), (void)Radians::RotatePoint(a, t, b);
    (void)Radians::Constrain(t, in.I(), in.D()), (void)Radians::GetQuadrant(t);
    (void)Degrees::VectorToAngle(u), (void)Degrees::AngleToVector(t), (void)Degrees::AngleToVector(t, in.D());
    (void)Degrees::NormalizeAngle(t), (void)Degrees::GetAngle(u, w), (void)Degrees::GetAngle(a, b, c);
    (void)Degrees::GetFineAngle(u, w), (void)Degrees::RotatePoint(a, t, b);
    (void)Degrees::GetRotatedSize(tagSIZE{in.I(), in.I()}, t);
    (void)TURNANGLE::VectorToAngle(u), (void)TURNANGLE::GetAngle(a, b, c), (void)TURNANGLE::GetFineAngle(a, b, c);
    const int32_t n = TURNANGLE::NormalizeAngle(in.I());
    CHECK(n >= 0 && n <= TurnAngleFullTurn);
    std::vector<tagPOINT> pts = in.IPts(), orig = pts;
    const double angle = in.D();
    Radians::RotatePoints(pts.data(), pts.size(), angle, c);
    if (std::fabs(angle) <= DBL_EPSILON) CHECK(pts.empty() || qfuzz::SameN(pts.data(), orig.data(), pts.size()));
    Degrees::RotatePoints(pts.data(), pts.size(), in.D(), c);
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
    if (pts.size() < 2) CHECK(Same(o.x, o0.x) && Same(o.y, o0.y) && Same(d.x, d0.x) && Same(d.y, d0.y));
    GetLeastSquaresLines(in.D(), in.D(), in.D(), in.D(), in.D(), pts.data(), int(pts.size()), o, d);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static void (*const ops[])(Input&) = {MatrixMembers, BulkTransforms, Builders, Angles,
                                          Rectangles,    Boxes,          PointSets};
    return qfuzz::Run(data, size, ops, 64);
}
