// Feeds arbitrary numbers (NaN, infinities, subnormals, huge and int32-extreme values) to every exported function of
// the matrix family (members, builders, decomposition, the flat UTL interface), the angle functions in their three
// units and the value types' arithmetic. Nothing may crash, hang or trip a sanitizer; where two entry points must
// agree (a bulk path and its per-point form, the two orders of a symmetric operation) a disagreement aborts too.

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <vector>

#include "QorMath/angles.h"
#include "QorMath/matrix.h"
#include "geometry_input.h"

namespace {
using namespace QorMath;
using P = vector2dT<double, 1>;
using V = vector2dT<double, 0>;
using Input = qfuzz::GeometryInput;
using qfuzz::SameValue;
using qfuzz::Within;

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
    for (size_t i = 0; i < pts.size(); ++i) CHECK(SameValue(out[i].x, m(pts[i]).x) && SameValue(out[i].y, m(pts[i]).y));

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
    (void)Radians::Constrain(t, in.I(), in.D());
    (void)Degrees::VectorToAngle(u), (void)Degrees::AngleToVector(t), (void)Degrees::AngleToVector(t, in.D());
    (void)Degrees::NormalizeAngle(t), (void)Degrees::GetAngle(u, w), (void)Degrees::GetAngle(a, b, c);
    (void)Degrees::GetFineAngle(u, w), (void)Degrees::RotatePoint(a, t, b);
    (void)Degrees::GetRotatedSize(tagSIZE{in.I(), in.I()}, t);
    (void)TURNANGLE::VectorToAngle(u), (void)TURNANGLE::GetAngle(a, b, c), (void)TURNANGLE::GetFineAngle(a, b, c);
    const int32_t n = TURNANGLE::NormalizeAngle(in.I());
    CHECK(n >= 0 && n <= TurnAngleFullTurn);
    // The double ranges, NaN aside, closed at the full turn: reducing a tiny negative angle adds a turn that rounds
    // to the turn itself (NormalizeAngle(-1e-17) is 2π).
    CHECK(Within(Radians::NormalizeAngle(t), 0, TwoPi) && Within(Radians::NormalizeFineAngle(t), -Pi, Pi));
    CHECK(Within(Radians::VectorToAngle(u), 0, TwoPi) && Within(Radians::GetAngle(u, w), 0, TwoPi));
    CHECK(Within(Radians::GetFineAngle(u, w), -Pi, Pi) && Within(Degrees::NormalizeAngle(t), 0, 360));
    CHECK(Within(Degrees::VectorToAngle(u), 0, 360) && Within(Degrees::GetAngle(a, b, c), 0, 360));
    CHECK(Within(Degrees::GetFineAngle(u, w), -180, 180));
    const auto quadrant = static_cast<int32_t>(Radians::GetQuadrant(t));
    CHECK(quadrant >= 0 && quadrant <= 3);
    std::vector<tagPOINT> pts = in.IPts(), orig = pts;
    const double angle = in.D();
    Radians::RotatePoints(pts.data(), pts.size(), angle, c);
    if (std::fabs(angle) <= DBL_EPSILON) CHECK(pts.empty() || qfuzz::SameN(pts.data(), orig.data(), pts.size()));
    Degrees::RotatePoints(pts.data(), pts.size(), in.D(), c);
}

// The value types' arithmetic and the int32 store rule. The identities below hold in IEEE arithmetic for every
// input (products commute, x − y is x + (−y), a − b is −(b − a) up to the sign of a zero), so any disagreement is a
// fault, NaN aside.
bool Equal(double u, double w) { return u == w || (std::isnan(u) && std::isnan(w)); }
template <typename A, typename B>
bool SameV(const A& u, const B& w) { return SameValue(u.x, w.x) && SameValue(u.y, w.y); }
template <typename A, typename B>
bool EqualV(const A& u, const B& w) { return Equal(u.x, w.x) && Equal(u.y, w.y); }

void VectorAlgebra(Input& in) {
    const P p = in.Pt(), q = in.Pt();
    const V u = in.Vec(), w = in.Vec();
    const double s = in.D();
    CHECK(Equal(Cross(u, w), -Cross(w, u)) && SameValue(Dot(u, w), Dot(w, u)));
    CHECK(SameValue(Cross(p, u), Cross(AsVector(p), u)) && SameValue(Dot(p, q), Dot(AsVector(p), AsVector(q))));
    CHECK(SameValue(MagnitudeSqrd(u), Dot(u, u)) && SameValue(Magnitude(p), std::sqrt(MagnitudeSqrd(p))));
    CHECK(SameV(AsPoint(AsVector(p)), p) && SameV(AsVector(AsPoint(u)), u) && SameV(-(-u), u));
    CHECK(EqualV(p - q, -(q - p)) && EqualV(u - w, -(w - u)) && SameV(p - u, p + (-u)));
    CHECK(SameV(p + u, u + p) && SameV(u * s, s * u) && SameV(u / 1.0, u));
    (void)(u / s);
    P r = p;
    r += u;
    CHECK(SameV(r, p + u));
    r = p;
    r -= u;
    CHECK(SameV(r, p - u));
    const bool nan = std::isnan(p.x) || std::isnan(p.y);
    CHECK((p == p) == !nan && (p != p) == nan && (p == q) == !(p != q) && (u == w) == !(u != w));

    // Truncation: exact whenever the result fits; out of range (NaN included) the one indefinite value.
    const double v = in.D();
    const double t = std::trunc(v);
    const bool fits = t >= -2147483648.0 && t <= 2147483647.0;
    CHECK(TruncateToInt(v) == (fits ? int32_t(t) : IntegerIndefinite));
    // Rounding, half away from zero: std::round wherever v ± 0.5 is exact (off by one otherwise, from the
    // addition's own rounding).
    const double half = std::copysign(0.5, v), rounded = std::round(v);
    const int32_t ri = RoundToInt(v);
    if ((v + half) - half == v) {
        CHECK(ri == (rounded >= -2147483648.0 && rounded <= 2147483647.0 ? int32_t(rounded) : IntegerIndefinite));
    } else if (std::fabs(v) < 2147483647.0) {
        CHECK(std::fabs(ri - rounded) <= 1);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static void (*const ops[])(Input&) = {MatrixMembers, BulkTransforms, Builders, Angles, VectorAlgebra};
    return qfuzz::Run(data, size, ops, 64);
}
