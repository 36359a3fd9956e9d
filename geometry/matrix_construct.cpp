// Matrix builders, comparison, and decomposition into scale, skew, rotation and
// origin.

#include "QorMath/angles.h"
#include "QorMath/matrix.h"

namespace QorMath {

namespace {

constexpr double kEpsilon = DBL_EPSILON;
// 89.1° in radians: a skew this close to a right angle is treated as degenerate.
constexpr double kMaxSkewAngle = 1.5550883635269477;

// Fit takes the smaller magnitude, Stretch is handled by the callers, anything
// else takes the larger.
double UniformScale(double sx, double sy, MapMode mode) {
    const double ax = std::fabs(sx), ay = std::fabs(sy);
    if (mode == MapMode::Fit) return ax < ay ? ax : ay;
    return ax > ay ? ax : ay;
}

}  // namespace

MATRIX IdentityMatrix() {
    return {1, 0, 0, 0, 1, 0};
}

MATRIX SwapXYMatrix() {
    return {0, 1, 0, 1, 0, 0};
}

MATRIX ConstructMatrix(const vector2dT<double, 0>& xAxis, const vector2dT<double, 0>& yAxis,
                       const vector2dT<double, 0>& translation) {
    return {xAxis.x, yAxis.x, translation.x, xAxis.y, yAxis.y, translation.y};
}

MATRIX ConstructTranslationMatrix(const vector2dT<double, 0>& t) {
    return {1, 0, t.x, 0, 1, t.y};
}

MATRIX ConstructRotationMatrix(double angle) {
    const double cs = std::cos(angle), sn = std::sin(angle);
    return {cs, -sn, 0, sn, cs, 0};
}

MATRIX ConstructRotateAroundMatrix(double angle, const vector2dT<double, 1>& p) {
    const double cs = std::cos(angle), sn = std::sin(angle);
    return {cs, -sn, p.x - cs * p.x + sn * p.y, sn, cs, p.y - sn * p.x - cs * p.y};
}

MATRIX ConstructScaledRotationMatrix(double sx, double sy, double angle) {
    const double cs = std::cos(angle), sn = std::sin(angle);
    return {cs * sx, -sn * sy, 0, sn * sx, cs * sy, 0};
}

MATRIX ConstructScaleAroundMatrix(double sx, double sy, const vector2dT<double, 1>& p) {
    return {sx, 0, (1 - sx) * p.x, 0, sy, (1 - sy) * p.y};
}

MATRIX ConstructSkewAroundMatrix(double angleX, double angleY, const vector2dT<double, 1>& p) {
    // [1, 0; v, 1]·[1, -h; 0, 1] = [1, -h; v, 1 - v·h]; the translation keeps p fixed.
    const double h = std::tan(angleX), v = std::tan(angleY);
    return {1, -h, h * p.y, v, 1 - v * h, p.y - v * p.x - (1 - v * h) * p.y};
}

MATRIX ConstructTransformAroundMatrix(const MATRIX& m, const vector2dT<double, 1>& p) {
    MATRIX r = ConstructTranslationMatrix({-p.x, -p.y});
    r = m * r;
    r.tx += p.x;
    r.ty += p.y;
    return r;
}

MATRIX ConstructVectorTransformMatrix(const vector2dT<double, 0>& from, const vector2dT<double, 0>& to) {
    const double len = Magnitude(from);
    const double s = len > kEpsilon ? Magnitude(to) / len : 1.0;
    const double theta = Radians::GetAngle(from, to);
    const double cs = std::cos(theta), sn = std::sin(theta);
    return {cs * s, -sn * s, 0, sn * s, cs * s, 0};
}

MATRIX ConstructLineSegmentTransformMatrix(const vector2dT<double, 1>& p1, const vector2dT<double, 1>& p2,
                                           const vector2dT<double, 1>& q1, const vector2dT<double, 1>& q2) {
    MATRIX m = ConstructVectorTransformMatrix(p2 - p1, q2 - q1);
    m.tx = -(m.a * p1.x + m.b * p1.y) + q1.x;
    m.ty = -(m.c * p1.x + m.d * p1.y) + q1.y;
    return m;
}

MATRIX ConstructBBoxScaleMatrix(const BoundsT<double>& b, bool withOffset) {
    double w = b.right - b.left;
    double h = b.top - b.bottom;
    if (std::fabs(w) <= kEpsilon) w = 1;
    if (std::fabs(h) <= kEpsilon) h = 1;
    MATRIX m{w, 0, 0, 0, h, 0};
    if (withOffset) {
        m.tx = b.left;
        m.ty = b.bottom;
    }
    return m;
}

MATRIX ConstructRectTransformMatrix(const BoundsT<double>& from, const BoundsT<double>& to, MapMode mode) {
    double sx = (to.right - to.left) / (from.right - from.left);
    double sy = (to.top - to.bottom) / (from.top - from.bottom);
    if (mode != MapMode::Stretch) {
        const double m = UniformScale(sx, sy, mode);
        sx = std::copysign(m, sx);
        sy = std::copysign(m, sy);
    }
    const double fromX = (from.left + from.right) / 2, fromY = (from.top + from.bottom) / 2;
    const double toX = (to.left + to.right) / 2, toY = (to.top + to.bottom) / 2;
    return {sx, 0, toX - sx * fromX, 0, sy, toY - sy * fromY};
}

vector2dT<double, 0> GetScaleForSizeTransform(const vector2dT<double, 0>& fromSize, const vector2dT<double, 0>& toSize,
                                              MapMode mode) {
    const vector2dT<double, 0> s{toSize.x / fromSize.x, toSize.y / fromSize.y};
    if (mode == MapMode::Stretch) return s;
    const double m = UniformScale(s.x, s.y, mode);
    return {std::copysign(m, s.x), std::copysign(m, s.y)};
}

bool IsEqual(const MATRIX& m1, const MATRIX& m2, double tolerance) {
    return std::fabs(m1.a - m2.a) <= tolerance && std::fabs(m1.b - m2.b) <= tolerance &&
           std::fabs(m1.tx - m2.tx) <= tolerance && std::fabs(m1.c - m2.c) <= tolerance &&
           std::fabs(m1.d - m2.d) <= tolerance && std::fabs(m1.ty - m2.ty) <= tolerance;
}

bool IsZero(const MATRIX& m, double tolerance) {
    return std::fabs(m.a) <= tolerance && std::fabs(m.b) <= tolerance && std::fabs(m.tx) <= tolerance &&
           std::fabs(m.c) <= tolerance && std::fabs(m.d) <= tolerance && std::fabs(m.ty) <= tolerance;
}

bool DecomposeAffineTransform(AFF_TRANSFORM& out, const MATRIX& m) {
    return DecomposeAffineTransformFromVectors(out, {m.tx, m.ty}, {m.a, m.c}, {m.b, m.d});
}

bool DecomposeAffineTransformFromVectors(AFF_TRANSFORM& out, const vector2dT<double, 1>& origin,
                                         const vector2dT<double, 0>& xAxis, const vector2dT<double, 0>& yAxis) {
    out.origin = origin;
    // A left-pointing, orientation-reversing x axis is read as a mirror: the
    // rotation and the scale are taken from the negated axis.
    const bool mirrored = xAxis.x < 0 && Cross(xAxis, yAxis) < 0;
    const vector2dT<double, 0> x = mirrored ? -xAxis : xAxis;
    out.rotation = std::atan2(x.y, x.x);
    out.scaleX = mirrored ? -Magnitude(x) : Magnitude(x);

    const double yLength = Magnitude(yAxis);
    if (yLength <= 0) return false;
    // φ is the angle between the axes as passed; scaleY is the height of the y
    // axis over the x axis, skew the tangent of its lean from the perpendicular.
    const double phi = std::acos(Dot(xAxis, yAxis) / (yLength * out.scaleX));
    out.scaleY = std::fabs(std::sin(phi)) * yLength;
    if (!(out.scaleY > 0)) return false;
    const double psi = Pi / 2 - phi;
    if (std::fabs(psi) >= kMaxSkewAngle) return false;
    out.skew = std::tan(psi);

    const double theta = out.rotation;
    if (std::cos(-theta) * yAxis.y + std::sin(-theta) * yAxis.x < 0) {
        out.scaleY = -out.scaleY;
        out.skew = -out.skew;
    }
    return true;
}

bool ComposeAffineTransform(MATRIX& out, const AFF_TRANSFORM& in) {
    const double cs = std::cos(in.rotation), sn = std::sin(in.rotation);
    const double sx = in.scaleX, sy = in.scaleY;
    const double k = in.skew * sy;
    out.a = cs * sx;
    out.b = cs * k - sn * sy;
    out.c = sn * sx;
    out.d = sn * k + cs * sy;
    out.tx = in.origin.x;
    out.ty = in.origin.y;
    return sx != 0 && sy != 0;
}

MATRIX TransformMatrixAndSeparateScale(const MATRIX& m, const MATRIX& t, vector2dT<double, 0>& scaleOut) {
    const AFF_TRANSFORM start{1, 1, 0, 0, {0, 0}};
    AFF_TRANSFORM d1 = start, d2 = start;
    // Failed decompositions are deliberately ignored: unwritten fields keep the start values.
    (void)DecomposeAffineTransformFromVectors(d1, {m.tx, m.ty}, {m.a, m.c}, {m.b, m.d});
    const MATRIX p = t * m;
    (void)DecomposeAffineTransformFromVectors(d2, {p.tx, p.ty}, {p.a, p.c}, {p.b, p.d});
    scaleOut = {d2.scaleX / d1.scaleX, d2.scaleY / d1.scaleY};
    d2.scaleX = d1.scaleX;
    d2.scaleY = d1.scaleY;
    MATRIX result{};
    (void)ComposeAffineTransform(result, d2);
    return result;
}

}  // namespace QorMath
